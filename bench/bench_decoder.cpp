// The intensity stream: one rsp_intensity frame through the decoder, the way the lambda panel
// takes it at the preset wavelength.
#include "alloc_counter.h"
#include "bench_link.h"

#include "link/protocol.h"
#include "link/response_decoder.h"
#include "platform/comm_port.h"

#include <memory>
#include <vector>

using namespace lumora;
using namespace lumora::bench;

namespace {

// Idle at 546 nm in the lambda panel, dark and reference in place, ten slightly different frames.
struct lambda_panel_link {
    std::array<std::array<std::uint8_t, 6>, 10> frames{};
    lambda_panel_link() {
        reset_shared_state();
        apply_start_defaults();
        link_ctx = link_context{};
        use_panels();
        shared.measure_mode = mm_lambda_panel;
        shared.function_id = fid_no_function;
        shared.lambda_now = 546;
        shared.dark_by_band = {1200, 1300, 1400, 1500, 1600};
        shared.reference_intensity[226] = 6000000;
        panels[6] = QStringLiteral("OK");
        for (int i = 0; i < 10; ++i)
            frames[static_cast<std::size_t>(i)] = frame(rsp_intensity, 3000000 + 37 * i);
    }
    ~lambda_panel_link() { link_ctx = link_context{}; }
};

// Every tenth frame completes a reading: the mean, ABS, the panel 2 text and the heartbeat.
void BM_IntensityFrame_LambdaPanel(benchmark::State& state) {
    lambda_panel_link link;
    std::size_t i = 0;
    const long long before = allocations();
    for (auto _ : state) {
        recv_message(link.frames[i].data(), 6);
        i = i == 9 ? 0 : i + 1;
    }
    report(state, allocations() - before);
    state.counters["last_reading"] = shared.now_abs;
}
BENCHMARK(BM_IntensityFrame_LambdaPanel);

// A frame that does not complete a reading: the decoder alone.
void BM_IntensityFrame_DecoderOnly(benchmark::State& state) {
    lambda_panel_link link;
    const long long before = allocations();
    for (auto _ : state) {
        shared.reading_index = 0;
        recv_message(link.frames[3].data(), 6);
    }
    report(state, allocations() - before);
    benchmark::DoNotOptimize(shared.readings);
}
BENCHMARK(BM_IntensityFrame_DecoderOnly);

// The tenth frame on its own: what one live reading costs, shown as ABS ("0.301A"), %T
// ("50.0%T") or concentration ("0.903C").
void BM_IntensityFrame_CompletingReading(benchmark::State& state) {
    lambda_panel_link link;
    shared.lambda_show_mode = static_cast<std::uint16_t>(state.range(0));
    shared.conc_factor = 3.0f;
    for (std::size_t k = 0; k < 10; ++k)
        recv_message(link.frames[k].data(), 6);
    const long long before = allocations();
    for (auto _ : state) {
        shared.reading_index = 9;
        recv_message(link.frames[9].data(), 6);
    }
    report(state, allocations() - before);
}
BENCHMARK(BM_IntensityFrame_CompletingReading)->Arg(0)->Arg(1)->Arg(2);

// The whole receive path: bytes into the port's buffer, the receive event, Input, the decoder.
// Argument: frames per arrival; 5 is a busy interface, where the port cuts one buffer into five
// receive events.
void BM_IntensityFrame_ThroughPort(benchmark::State& state) {
    lambda_panel_link link;
    auto backend = std::make_unique<memory_backend>();
    memory_backend* pipe = backend.get();
    comm_port port(std::move(backend));
    port.setPortOpen(true);
    port.RThreshold = 6;
    link_ctx.port = &port;
    QObject::connect(&port, &comm_port::OnComm, [] { on_comm_event(); });
    const auto per_arrival = static_cast<std::size_t>(state.range(0));
    std::vector<QByteArray> wire(10 / per_arrival);
    for (std::size_t k = 0; k < 10; ++k)
        wire[k / per_arrival].append(reinterpret_cast<const char*>(link.frames[k].data()), 6);
    std::size_t i = 0;
    const long long before = allocations();
    for (auto _ : state) {
        pipe->inject(wire[i]);
        i = i + 1 == wire.size() ? 0 : i + 1;
    }
    report(state, allocations() - before, static_cast<long long>(per_arrival));
    if (port.InBufferCount() != 0) state.SkipWithError("frames were left in the port's buffer");
}
BENCHMARK(BM_IntensityFrame_ThroughPort)->Arg(1)->Arg(5);

} // namespace

BENCHMARK_MAIN();
