#include "verification_link.h"

#include "link/command_ring.h"
#include "link/photometric.h"
#include "link/protocol.h"
#include "link/shared_state.h"
#include "platform/numeric_text.h"

#include <QElapsedTimer>
#include <QEventLoop>
#include <QTimer>
#include <cmath>

namespace lumora {
namespace {

// A scan point takes 40 ms at the lowest speed; the limits leave room for the grating's moves.
constexpr double scan_seconds_per_point = 0.06;
constexpr double scan_slack_seconds = 20;
constexpr double reading_limit_seconds = 10; // one ten-frame mean comes every half second
// Frames already under way when the material changed still carry the one before; readings start
// this long after the prompt was answered.
constexpr double settle_seconds = 0.6;

} // namespace

link_verification_instrument::waiter event_loop_waiter() {
    return [](const std::function<bool()>& done, double seconds) {
        QElapsedTimer clock;
        clock.start();
        QEventLoop loop;
        QTimer poll;
        poll.setInterval(20);
        QObject::connect(&poll, &QTimer::timeout, &loop, [&] {
            if (done() || clock.elapsed() > seconds * 1000) loop.quit();
        });
        poll.start();
        if (!done()) loop.exec();
        return done();
    };
}

link_verification_instrument::link_verification_instrument(waiter wait, clock now, prompter prompt)
    : wait_(std::move(wait)), now_(std::move(now)), prompt_(std::move(prompt)), saved_(link_ctx.hooks),
      saved_speed_(shared.scan_speed), saved_start_(shared.scan_start_lambda),
      saved_end_(shared.scan_end_lambda) {
    auto& h = link_ctx.hooks;
    h.scan_lock = [this, lock = saved_.scan_lock](bool locked) {
        if (lock) lock(locked);
        if (!locked) scan_ended_ = true;
    };
    h.spectrum_show_data = [this](std::int32_t raw) { points_.push_back(raw); };
    h.spectrum_start_lambda = nullptr;
    h.spectrum_in_sample_pass = nullptr;
    h.verify_show_data = [this](std::int32_t raw) { points_.push_back(raw); };
    h.show_data[mm_photometry] = [this](std::int32_t mean) { means_.push_back(mean); };
    h.photometry_zero_flag = nullptr;
    h.photometry_read = nullptr;
}

link_verification_instrument::~link_verification_instrument() {
    auto& h = link_ctx.hooks;
    h.scan_lock = saved_.scan_lock;
    h.spectrum_show_data = saved_.spectrum_show_data;
    h.spectrum_start_lambda = saved_.spectrum_start_lambda;
    h.spectrum_in_sample_pass = saved_.spectrum_in_sample_pass;
    h.verify_show_data = saved_.verify_show_data;
    h.show_data[mm_photometry] = saved_.show_data[mm_photometry];
    h.photometry_zero_flag = saved_.photometry_zero_flag;
    h.photometry_read = saved_.photometry_read;
    shared.measure_mode = mm_lambda_panel;
    shared.scan_speed = saved_speed_;
    shared.scan_start_lambda = saved_start_;
    shared.scan_end_lambda = saved_end_;
}

bool link_verification_instrument::put_in_beam(const beam_material& m) {
    set_panel(6, beam_prompt(m));
    const bool ok = prompt_(m);
    beam_changed_at_ = now_();
    return ok;
}

bool link_verification_instrument::scan(std::uint8_t command, int first_nm, int last_nm) {
    shared.measure_mode = mm_lambda_panel;
    shared.scan_start_lambda = first_nm;
    shared.scan_end_lambda = last_nm;
    shared.scan_speed = 2; // Low
    points_.clear();
    scan_ended_ = false;
    begin_exchange();
    send_message(command);
    const double limit = (last_nm - first_nm + 1) * scan_seconds_per_point + scan_slack_seconds;
    return wait_([this] { return scan_ended_; }, limit);
}

bool link_verification_instrument::reference_scan(int first_nm, int last_nm) {
    set_panel(6, QStringLiteral("Reference scanning..."));
    if (!scan(cmd_scan_baseline_range, first_nm, last_nm)) return false;
    // The points land in reference_intensity from first_nm on; a short scan lost some.
    return shared.baseline_count == last_nm - 320 + 1;
}

double link_verification_instrument::absorbance_of(double nm, double intensity) {
    shared.lambda_now = nm;
    try {
        show_now_abs(static_cast<std::int32_t>(intensity));
    } catch (const run_fault&) {
        return NAN; // a reference equal to the dark: no reading at this wavelength
    }
    return shared.now_abs;
}

std::vector<double> link_verification_instrument::sample_scan(int first_nm, int last_nm) {
    set_panel(6, QStringLiteral("Sample scanning..."));
    const double lambda_before = shared.lambda_now;
    if (!scan(cmd_scan_sample, first_nm, last_nm)) return {};
    if (static_cast<int>(points_.size()) != last_nm - first_nm + 1) return {};
    std::vector<double> a;
    for (std::size_t i = 0; i < points_.size(); ++i)
        a.push_back(absorbance_of(first_nm + static_cast<double>(i), points_[i]));
    shared.lambda_now = lambda_before;
    return a;
}

bool link_verification_instrument::zero_at(double nm) {
    set_panel(6, QStringLiteral("Zeroing at ") + QString::number(nm) + QStringLiteral(" nm..."));
    zero_nm_ = nm;
    shared.lambda_now = nm;
    shared.lambda_now_int = static_cast<std::int16_t>(cint(nm));
    shared.measure_mode = mm_photometry;
    // Frames still streaming from the last wavelength must not count: the readings start once the
    // grating has arrived, which the decoder marks with zero_pending.
    shared.zero_pending = false;
    begin_exchange();
    send_message(cmd_goto_lambda);
    if (!wait_([] { return shared.zero_pending; }, reading_limit_seconds)) return false;
    // Ours to use: left set, the lambda panel would take its next reading as a new zero.
    shared.zero_pending = false;
    means_.clear();
    // The first mean after arriving is the blank's: it becomes 100 %T there.
    if (!wait_([this] { return !means_.empty(); }, reading_limit_seconds)) return false;
    const int index = cint(nm) - 320;
    if (index < 0 || index >= wavelength_points) return false;
    shared.reference_intensity[static_cast<std::size_t>(index)] = means_.back();
    return true;
}

std::vector<double> link_verification_instrument::readings(int count) {
    set_panel(6, QStringLiteral("Reading..."));
    if (!wait_([this] { return now_() >= beam_changed_at_ + settle_seconds; }, settle_seconds + 1)) return {};
    // The mean on its way now began before the light settled: it is dropped.
    const std::size_t from = means_.size() + 1;
    if (!wait_([&] { return means_.size() >= from + static_cast<std::size_t>(count); },
               reading_limit_seconds + count))
        return {};
    std::vector<double> a;
    for (std::size_t i = from; i < from + static_cast<std::size_t>(count); ++i)
        a.push_back(absorbance_of(zero_nm_, means_[i]));
    return a;
}

std::vector<std::pair<double, double>>
link_verification_instrument::readings_for(double seconds, const std::function<bool(double)>& tick) {
    std::vector<std::pair<double, double>> out;
    const double start = now_();
    std::size_t seen = means_.size();
    bool stopped = false;
    const bool ok = wait_(
        [&] {
            const double elapsed = now_() - start;
            for (; seen < means_.size(); ++seen)
                out.emplace_back(elapsed, absorbance_of(zero_nm_, means_[seen]));
            const double left = std::max(0.0, seconds - elapsed);
            set_panel(1,
                      QString::asprintf("%d:%02d", static_cast<int>(left) / 60, static_cast<int>(left) % 60));
            if (tick && !tick(left)) stopped = true;
            return stopped || elapsed >= seconds;
        },
        seconds + reading_limit_seconds);
    if (!ok) return {};
    return out;
}

std::optional<verify_points_array> link_verification_instrument::bandwidth_scan() {
    shared.measure_mode = mm_lambda_panel;
    points_.clear();
    scan_ended_ = false;
    begin_exchange();
    send_message(cmd_scan_bandwidth);
    if (!wait_([this] { return scan_ended_; }, 79 * 0.02 + scan_slack_seconds)) return std::nullopt;
    if (points_.size() < static_cast<std::size_t>(verify_last_point + 1)) return std::nullopt;
    verify_points_array p{};
    for (int i = 0; i <= verify_last_point; ++i)
        p[static_cast<std::size_t>(i)] = points_[static_cast<std::size_t>(i)];
    return p;
}

} // namespace lumora
