// Helpers for driving the simulated instrument on its virtual clock.
#pragma once

#include "sim/instrument.h"
#include "sim/wire.h"

#include <algorithm>
#include <cstdint>
#include <vector>

namespace lumora::sim::testing {

inline void send(Instrument& inst, std::vector<std::uint8_t> bytes) {
    inst.receive(bytes.data(), bytes.size());
}

// The emissions whose first byte is `code`.
inline std::vector<Emission> with_code(const std::vector<Emission>& all, std::uint8_t code) {
    std::vector<Emission> out;
    std::copy_if(all.begin(), all.end(), std::back_inserter(out),
                 [&](const Emission& e) { return !e.bytes.empty() && e.bytes[0] == code; });
    return out;
}

inline std::vector<std::uint32_t> values(const std::vector<Emission>& frames) {
    std::vector<std::uint32_t> v;
    for (const Emission& e : frames)
        v.push_back(frame_value(e.bytes));
    return v;
}

// Sends a command and runs the clock until its reply script is done (or `limit` seconds have passed).
inline std::vector<Emission> exchange(Instrument& inst, std::vector<std::uint8_t> bytes,
                                      double limit = 30.0) {
    send(inst, std::move(bytes));
    std::vector<Emission> out;
    const double end = inst.now() + limit;
    while (inst.next_emission_time() <= end) {
        for (Emission& e : inst.advance_to(inst.next_emission_time()))
            out.push_back(std::move(e));
        if (!out.empty() && out.back().bytes[0] == kRspScanEnd) break;
    }
    return out;
}

// The dark value of each band, read from the dark and gain replies the way the PC does.
inline std::vector<double> dark_by_band(Instrument& inst) {
    const std::vector<std::uint32_t> dark =
        values(with_code(exchange(inst, {kCmdReadDark}, 0.5), kRspDarkValue));
    const std::vector<Emission> gain = exchange(inst, {kCmdReadGain}, 0.1);
    std::vector<double> by_band;
    for (int b = 1; b <= 5; ++b)
        by_band.push_back(dark.at(gain.at(0).bytes.at(b)));
    return by_band;
}

inline int band(int nm) {
    return nm < 380 ? 0 : nm < 460 ? 1 : nm < 560 ? 2 : nm < 760 ? 3 : 4;
}

} // namespace lumora::sim::testing
