// libFuzzer target for the response decoder behind the port's receive event. The first bytes of
// an input set the state a reply may meet (measure_mode, function_id, the receive threshold and a
// few flags); the rest is cut into buffers that arrive through the in-memory port, each optionally
// behind a Timer1 tick or a new command. After every buffer the shared state must be inside its
// ranges; a violation aborts with the state named.
#include "link/command_ring.h"
#include "link/link_context.h"
#include "link/photometric.h"
#include "link/response_decoder.h"
#include "link/shared_state.h"
#include "platform/comm_port.h"
#include "platform/prompts.h"

#include <QCoreApplication>
#include <QObject>
#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <memory>

using namespace lumora;

namespace {

// Every value the program uses, and a few it never sets.
constexpr std::int16_t modes[] = {-1, 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10};
constexpr std::int16_t functions[] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 11, 13, 24, 99};

void check(bool ok, const char* what) {
    if (ok) return;
    std::fprintf(stderr, "range violated: %s\n", what);
    std::abort();
}

void check_ranges(const comm_port& port) {
    check(shared.dark_count >= 0 && shared.dark_count <= 4, "dark_count in 0..4");
    check(shared.ring_head >= 0 && shared.ring_head < ring_slots, "ring_head in 0..ring_slots-1");
    check(shared.ring_tail >= 0 && shared.ring_tail < ring_slots, "ring_tail in 0..ring_slots-1");
    check(shared.ping_count >= 0, "ping_count not negative");
    check(shared.reading_index >= 0, "reading_index not negative");
    check(shared.unknown_reply_count >= 0, "unknown_reply_count not negative");
    check(std::isfinite(shared.now_trans), "now_trans finite");
    check(shared.now_abs >= -0.3 && shared.now_abs <= 4.5, "now_abs in -0.3..4.5");
    check(shared.now_percent_t >= 0 && shared.now_percent_t <= 120, "now_percent_t in 0..120");
    check(port.RThreshold >= 0, "RThreshold not negative");
    check(port.InBufferCount() >= 0 && port.InBufferCount() <= comm_port::in_buffer_size,
          "port buffer within its size");
}

struct flags {
    bool baseline_at_start = false;
    bool reading_flag = false;
};
flags input_flags;

void set_hooks() {
    auto& h = link_ctx.hooks;
    static std::array<QString, 7> panels; // the status bar's six, numbered from 1
    h.set_panel = [](int n, const QString& t) {
        if (n >= 1 && n <= 6) panels[static_cast<std::size_t>(n)] = t;
    };
    h.panel_text = [](int n) { return n >= 1 && n <= 6 ? panels[static_cast<std::size_t>(n)] : QString(); };
    h.scan_baseline_at_start = [] { return input_flags.baseline_at_start; };
    h.spectrum_start_lambda = [] { return 400.0; };
    h.spectrum_in_sample_pass = [] { return input_flags.reading_flag; };
    h.photometry_zero_flag = [] { return input_flags.reading_flag; };
    for (auto& f : h.reading_flag)
        f = [] { return input_flags.reading_flag; };
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv) {
    // Timers and posted events of the port need an application object; no window is made.
    static QCoreApplication app(*argc, *argv);
    prompts::script();
    set_hooks();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 4) return 0;
    reset_shared_state();
    apply_start_defaults();
    shared.measure_mode = modes[data[0] % std::size(modes)];
    shared.function_id = functions[data[1] % std::size(functions)];
    const std::uint8_t f = data[3];
    shared.link_ready = f & 1;
    shared.zero_pending = f & 2;
    input_flags.baseline_at_start = f & 4;
    input_flags.reading_flag = f & 8;
    shared.lambda_show_mode = static_cast<std::uint16_t>((f >> 4) % 3);
    shared.lambda_four_digits = f & 64;
    prompts::clear_shown();

    auto backend = std::make_unique<memory_backend>();
    memory_backend* pipe = backend.get();
    comm_port port(std::move(backend));
    if (!port.setPortOpen(true).isEmpty()) std::abort();
    port.RThreshold = data[2] % 9;
    link_ctx.port = &port;
    QObject::connect(&port, &comm_port::OnComm, [] { on_comm_event(); });

    // Buffers: a head byte (low five bits the length; bit 7 a Timer1 tick first; bit 6 a new
    // exchange whose command code is the next byte), then the bytes.
    std::size_t at = 4;
    while (at < size) {
        const std::uint8_t head = data[at++];
        if (head & 0x80) Timer1_Timer();
        if ((head & 0x40) && at < size) {
            begin_exchange();
            try {
                send_message(data[at]);
            } catch (const run_fault&) {
                // a wavelength that does not fit its bytes ends the caller's handler
            }
            ++at;
        }
        const std::size_t n = std::min<std::size_t>(head & 0x1f, size - at);
        pipe->inject(QByteArray(reinterpret_cast<const char*>(data + at), static_cast<qsizetype>(n)));
        at += n;
        check_ranges(port);
    }
    link_ctx.port = nullptr;
    return 0;
}
