#pragma once
// A link as the main window drives it: status panels that keep their texts, and a 6-byte frame
// builder. The wire carries at most 57600 / 10 / 6 = 960 six-byte frames a second.
#include "link/link_context.h"
#include "link/shared_state.h"

#include <QString>
#include <array>
#include <benchmark/benchmark.h>
#include <cstdint>

namespace lumora::bench {

constexpr double wire_frames_per_second = 57600.0 / 10.0 / 6.0;

inline std::array<QString, 7> panels;

inline void use_panels() {
    link_ctx.hooks.set_panel = [](int n, const QString& text) { panels[static_cast<std::size_t>(n)] = text; };
    link_ctx.hooks.panel_text = [](int n) { return panels[static_cast<std::size_t>(n)]; };
}

inline std::array<std::uint8_t, 6> frame(std::uint8_t code, std::int32_t value) {
    return {code,
            static_cast<std::uint8_t>(value >> 16),
            static_cast<std::uint8_t>(value >> 8),
            static_cast<std::uint8_t>(value),
            0,
            0};
}

// Frames per second, how many times the wire's limit that is, and heap allocations per frame;
// each iteration handled `frames_per_iteration` frames.
inline void report(benchmark::State& state, long long allocations, long long frames_per_iteration = 1) {
    const auto n = static_cast<double>(state.iterations() * frames_per_iteration);
    state.SetItemsProcessed(state.iterations() * frames_per_iteration);
    state.counters["x_wire"] = benchmark::Counter(n / wire_frames_per_second, benchmark::Counter::kIsRate);
    state.counters["allocs_per_frame"] = benchmark::Counter(static_cast<double>(allocations) / n);
}

} // namespace lumora::bench
