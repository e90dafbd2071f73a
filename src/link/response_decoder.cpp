#include "response_decoder.h"

#include "command_ring.h"
#include "link_context.h"
#include "photometric.h"
#include "platform/comm_port.h"
#include "platform/numeric_text.h"
#include "platform/prompts.h"
#include "protocol.h"
#include "shared_state.h"
#include "trace.h"

#include <array>
#include <vector>

namespace lumora {
namespace {

template <class F, class... A> void call(const F& hook, A... args) {
    if (hook) hook(args...);
}

void set_threshold(int n) {
    if (link_ctx.port) link_ctx.port->RThreshold = n;
}

// "###0nm" texts of whole wavelengths, built once: scan points and moves then write panel 1
// without building a string per frame.
const QString& nm_text(std::int32_t nm) {
    static const std::vector<QString> texts = [] {
        std::vector<QString> t;
        t.reserve(1200);
        for (int i = 0; i < 1200; ++i)
            t.push_back(QString::number(i) + QStringLiteral("nm"));
        return t;
    }();
    static QString other;
    if (nm >= 0 && nm < static_cast<std::int32_t>(texts.size())) return texts[static_cast<std::size_t>(nm)];
    other = QString::fromStdString(format_number(nm, "###0nm"));
    return other;
}

void increment16(std::int16_t& counter) {
    if (counter == INT16_MAX) throw run_fault{"overflow"};
    ++counter;
}

void raise_scan_lock() {
    call(link_ctx.hooks.scan_lock, true);
}

void heartbeat() {
    if (!shared.zero_pending) {
        lambda_show_data(get_now_data());
    } else {
        const std::int32_t index = cint(shared.lambda_now - 320);
        if (index < wavelength_points) {
            if (index < 0) throw run_fault{"index out of range"};
            shared.reference_intensity[static_cast<std::size_t>(index)] = get_now_data();
        }
        lambda_show_data(get_now_data());
        shared.zero_pending = false;
    }
    // A dot a reading after "OK", up to six characters; the texts of that series are built once.
    static const std::array<QString, 5> ok_dots = {QStringLiteral("OK"), QStringLiteral("OK."),
                                                   QStringLiteral("OK.."), QStringLiteral("OK..."),
                                                   QStringLiteral("OK....")};
    const QString t = panel_text(6);
    if (t.size() >= 6) {
        set_panel(6, ok_dots[0]);
        return;
    }
    for (std::size_t i = 0; i + 1 < ok_dots.size(); ++i)
        if (t == ok_dots[i]) {
            set_panel(6, ok_dots[i + 1]);
            return;
        }
    set_panel(6, t + QLatin1Char('.'));
}

void intensity_frame(std::int32_t value) {
    // A function's reading starts after its own move has arrived: frames that came in between the
    // ping's echo and the arrival are from before the move.
    if (shared.measure_mode != mm_lambda_panel && shared.arrival_pending) return;
    const std::int32_t i = shared.reading_index;
    if (i >= 0 && i < 10) shared.readings[static_cast<std::size_t>(i)] = value;
    if (i == INT32_MAX) throw run_fault{"overflow"};
    shared.reading_index = i + 1;
    const std::int32_t n = shared.reading_index;
    const auto& h = link_ctx.hooks;
    const int mode = shared.measure_mode;
    switch (mode) {
    case mm_lambda_panel:
        if (n >= 10) heartbeat();
        break;
    case mm_photometry:
        if (shared.link_ready && n >= 10) call(h.show_data[mm_photometry], get_now_data());
        break;
    case mm_timescan:
    case mm_kinetic:
    case mm_timescan2:
        if (shared.link_ready) timed_steps(mode, value);
        break;
    case mm_protein:
    case mm_quantitative: {
        if (!shared.link_ready) break;
        const auto& flag = h.reading_flag[static_cast<std::size_t>(mode)];
        if (!(flag && flag())) {
            call(h.show_zero[static_cast<std::size_t>(mode)], value);
            shared.reading_index = 0;
        } else if (n >= 10) {
            call(h.show_data[static_cast<std::size_t>(mode)], get_now_data());
        }
        break;
    }
    case mm_light_check:
        if (shared.link_ready && n >= 10) {
            shared.measure_mode = mm_lambda_panel;
            call(h.system_check_light_level, get_now_data());
        }
        break;
    default:
        break; // Spectrum ignores the stream; other values route nowhere
    }
    if (shared.reading_index >= 10) shared.reading_index = 0;
}

void gain_reply(const std::uint8_t* b, std::size_t size) {
    for (int i = 0; i < 5; ++i) {
        const std::int32_t index = bytes_to_long(i + 1, 1, b, size);
        if (index >= 4) return; // an impossible gain stalls the start-up, with no text
        shared.dark_by_band[static_cast<std::size_t>(i)] =
            shared.dark_by_gain[static_cast<std::size_t>(index)];
    }
    set_panel(6, QStringLiteral("Read gain OK"));
    const bool scan_baseline =
        link_ctx.hooks.scan_baseline_at_start && link_ctx.hooks.scan_baseline_at_start();
    if (shared.function_id == fid_startup) {
        if (scan_baseline)
            send_message(cmd_scan_baseline);
        else
            startup_finish();
    }
    if (shared.function_id == fid_system) send_message(cmd_scan_baseline);
}

void dark_value(std::int32_t v) {
    if (shared.dark_count < 0 || shared.dark_count >= 4) throw run_fault{"index out of range"};
    shared.dark_by_gain[static_cast<std::size_t>(shared.dark_count)] = v;
    increment16(shared.dark_count);
    if (shared.dark_count != 4) return;
    const auto& h = link_ctx.hooks;
    if (h.photometry_zero_flag && h.photometry_zero_flag() && shared.measure_mode == mm_photometry)
        call(h.photometry_read);
    if (shared.function_id == fid_startup || shared.function_id == fid_system) send_message(cmd_read_gain);
}

void baseline_point(std::int32_t v) {
    if (shared.measure_mode == mm_spectrum) {
        call(link_ctx.hooks.spectrum_show_base_line, v);
    } else {
        const int i = shared.baseline_count;
        if (i < 0 || i >= wavelength_points) throw run_fault{"index out of range"};
        shared.baseline_curves[static_cast<std::size_t>(i)][0] = v;
        shared.reference_intensity[static_cast<std::size_t>(i)] = v;
        const int nm = i + 320;
        if (nm >= 330 && nm <= 1100) set_panel(1, nm_text(nm));
    }
    increment16(shared.baseline_count);
}

void scan_end() {
    const auto& h = link_ctx.hooks;
    if (shared.function_id == fid_system) {
        set_panel(6, QStringLiteral("Scanning completed..."));
        call(h.save_baseline);
        call(h.system_enable_function, true);
    }
    if (shared.function_id == fid_startup) {
        call(h.save_baseline);
        startup_finish();
    }
    call(h.scan_lock, false);
}

void zero_failed() {
    set_panel(6, QStringLiteral("Zero searching failed!"));
    if (shared.function_id == fid_system) {
        shared.zero_failed = true;
        prompts::message_box(
            QStringLiteral("Zero searching failed, please check light source or sample compartment, "
                           "then repeat this procedure again."),
            box_icon::critical, QStringLiteral("Warning"));
        call(link_ctx.hooks.system_enable_zero_search);
    }
    if (shared.function_id == fid_startup) {
        prompts::message_box(
            QStringLiteral("Zero searching failed, please check light source or sample compartment, "
                           "then execute ") +
                shared.software_name + QStringLiteral(" again."),
            box_icon::critical, QStringLiteral("Warning"));
    }
}

void dispatch(const std::uint8_t* b, std::size_t size) {
    const auto value = [&] { return bytes_to_long(1, 3, b, size); };
    const auto& h = link_ctx.hooks;
    switch (b[0]) {
    case rsp_ping:
        shared.link_ready = true;
        break;
    case rsp_scan_end:
        scan_end();
        break;
    case cmd_connect:
        set_panel(4, QStringLiteral("On-line"));
        set_panel(6, QStringLiteral("OK"));
        call(h.save_com_port);
        if (shared.function_id == fid_startup) send_message(cmd_search_zero);
        break;
    case cmd_read_error_data:
        set_panel(6, QStringLiteral("OK"));
        if (shared.function_id == fid_startup) send_message(cmd_read_dark);
        break;
    case cmd_search_zero:
        set_panel(6, QStringLiteral("Zero searching..."));
        break;
    case cmd_read_dark:
        set_threshold(6);
        shared.dark_count = 0;
        break;
    case cmd_scan_baseline:
        set_panel(6, QStringLiteral("Baseline scanning..."));
        shared.baseline_count = 0;
        set_panel(2, QStringLiteral("0.000A"));
        set_threshold(6);
        raise_scan_lock();
        break;
    case cmd_goto_lambda:
    case cmd_read_lambda:
    case cmd_zero_here:
    case cmd_spare_9:
        set_threshold(6);
        break;
    case cmd_scan_baseline_range: {
        shared.dark_count = 0;
        const std::int32_t start = cint(shared.scan_start_lambda) - 320;
        if (start < INT16_MIN || start > INT16_MAX) throw run_fault{"overflow"};
        shared.baseline_count = static_cast<std::int16_t>(start);
        set_panel(2, QStringLiteral("0.000A"));
        set_threshold(6);
        raise_scan_lock();
        break;
    }
    case cmd_scan_sample: {
        const double start_nm =
            h.spectrum_start_lambda ? h.spectrum_start_lambda() : shared.scan_start_lambda;
        const std::int32_t start = cint(start_nm) - 320;
        if (start < INT16_MIN || start > INT16_MAX) throw run_fault{"overflow"};
        shared.sample_count = static_cast<std::int16_t>(start);
        set_threshold(6);
        raise_scan_lock();
        break;
    }
    case cmd_scan_bandwidth:
        shared.verify_count = 0;
        set_threshold(6);
        raise_scan_lock();
        break;
    case rsp_gain:
        gain_reply(b, size);
        break;
    case rsp_baseline_point:
        baseline_point(value());
        break;
    case rsp_sample_point:
        call(h.spectrum_show_data, value());
        increment16(shared.sample_count);
        break;
    case rsp_bandwidth_point:
        call(h.verify_show_data, value());
        increment16(shared.verify_count);
        break;
    case rsp_lambda_now: {
        const std::int32_t w = value();
        if (shared.measure_mode == mm_spectrum || w < 1101) set_panel(1, nm_text(w));
        break;
    }
    case rsp_read_begin:
        shared.reading_index = 0;
        if (shared.function_id == fid_photometry) set_panel(6, QStringLiteral("Reading..."));
        if (shared.function_id == fid_spectrum && shared.measure_mode != mm_lambda_panel) {
            const bool sample = h.spectrum_in_sample_pass && h.spectrum_in_sample_pass();
            set_panel(6,
                      sample ? QStringLiteral("Sample scanning...") : QStringLiteral("Baseline scanning..."));
        }
        break;
    case rsp_arrived: {
        shared.reading_index = 0;
        shared.arrival_pending = false;
        const int band = band_of(shared.lambda_now);
        if (band >= 0) shared.dark_by_band[static_cast<std::size_t>(band)] = value();
        shared.zero_pending = true;
        set_panel(6, QStringLiteral("OK"));
        break;
    }
    case rsp_zero_found:
        set_panel(6, QStringLiteral("Zero found..."));
        if (shared.function_id == fid_system) {
            shared.zero_failed = false;
            call(h.system_enable_function, true);
        }
        if (shared.function_id == fid_startup) send_message(cmd_read_error_data);
        break;
    case rsp_zero_failed:
        zero_failed();
        break;
    case rsp_intensity:
        intensity_frame(value());
        break;
    case rsp_dark_value:
        dark_value(value());
        break;
    default:
        if (shared.unknown_reply_count < INT32_MAX) ++shared.unknown_reply_count;
        break;
    }
}

} // namespace

void recv_message(const std::uint8_t* bytes, std::size_t size) {
    if (bytes == nullptr || size == 0) return;
    try {
        dispatch(bytes, size);
    } catch (const run_fault&) {
        // The fault ends this reply's handling; what was done before it stands.
    }
}

void on_comm_event() {
    comm_port* port = link_ctx.port;
    if (!port) return;
    switch (port->CommEvent()) {
    case comm_port::comEvReceive: {
        const QByteArray bytes = port->Input();
        const auto* data = reinterpret_cast<const std::uint8_t*>(bytes.constData());
        trace::rx(data, static_cast<std::size_t>(bytes.size()));
        recv_message(data, static_cast<std::size_t>(bytes.size()));
        break;
    }
    case comm_port::comEventRxOver:
        port->Input();
        break;
    default:
        break;
    }
}

void lambda_show_data(std::int32_t intensity) {
    if (!show_now_abs(intensity)) return;
    // The panel keeps at most one of these two texts (a label keeps its own when the new one is
    // equal), so the other is held by nobody else and is rewritten in place: a reading costs no
    // allocation.
    static std::array<QString, 2> texts = [] {
        std::array<QString, 2> t;
        for (QString& s : t)
            s.reserve(16);
        return t;
    }();
    QString& text = texts[0].isDetached() ? texts[0] : texts[1];
    reading_text(text, shared.lambda_show_mode, shared.lambda_four_digits, shared.now_abs,
                 shared.now_percent_t, shared.conc_factor);
    set_panel(2, text);
}

void startup_finish() {
    if (link_ctx.hooks.enable_menus) link_ctx.hooks.enable_menus(true);
    // After a reconnect the function window that stayed open keeps its function and toolbar.
    const int resumed = link_ctx.hooks.resume_function ? link_ctx.hooks.resume_function() : 0;
    shared.function_id = static_cast<std::int16_t>(resumed != 0 ? resumed : fid_no_function);
    shared.lambda_now = shared.default_lambda;
    if (!fits_int16(shared.default_lambda)) throw run_fault{"overflow"};
    shared.lambda_now_int = static_cast<std::int16_t>(cint(shared.default_lambda));
    set_panel(6, QStringLiteral("Running to preset position..."));
    send_message(cmd_goto_lambda);
}

} // namespace lumora
