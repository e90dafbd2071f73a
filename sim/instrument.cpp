#include "sim/instrument.h"

#include "sim/timing.h"
#include "sim/wire.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace lumora::sim {

namespace {

constexpr double kPowerOnNm = 500.0;  // [nm] where the grating rests after power-on
constexpr double kClockSlack = 1e-9;  // [s] rounding allowance when a caller advances to a due time
constexpr unsigned kGarbageOneIn = 8; // a garbage burst before one frame in this many
constexpr std::uint64_t kFaultSeedMix = 0x9E3779B97F4A7C15ULL; // keeps fault and noise streams apart

// The error data block: code 2 and six bytes of the firmware's error log, all clear.
const std::vector<std::uint8_t> kErrorData{kCmdReadErrorData, 0, 0, 0, 0, 0, 0};

double wavelength(std::uint8_t hi, std::uint8_t lo) {
    return std::clamp(static_cast<double>(hi * 256 + lo), kRangeLow, kRangeHigh);
}

} // namespace

Instrument::Instrument(Options opts)
    : opts_(std::move(opts)), model_(std::make_unique<Model>(opts_.seed, opts_.noise_counts, opts_.sample)),
      sequencer_(opts_.speed > 0.0 ? opts_.speed : 1.0, kPowerOnNm),
      transmitter_(opts_.speed > 0.0 ? opts_.speed : 1.0), fault_rng_(opts_.seed ^ kFaultSeedMix) {
    if (!(opts_.speed > 0.0) || !std::isfinite(opts_.speed))
        throw std::invalid_argument("speed must be a positive number");
}

// ---- Clock -------------------------------------------------------------------------------------------

std::vector<Emission> Instrument::advance(double seconds) {
    if (!(seconds >= 0.0)) throw std::invalid_argument("the clock only runs forward");
    return advance_to(now_ + seconds);
}

std::vector<Emission> Instrument::advance_to(double t) {
    if (!std::isfinite(t)) throw std::invalid_argument("advance to a finite time");
    const double target = std::max(t, now_);
    while (sequencer_.next_ready() <= target + kClockSlack)
        deliver(sequencer_.produce());
    now_ = target;
    parser_.expire(now_);
    return hold_for_burst(transmitter_.take_until(target + kClockSlack));
}

std::vector<Emission> Instrument::hold_for_burst(std::vector<Emission> out) {
    if (!faults_.burst && held_.empty()) return out;
    for (Emission& e : out)
        held_.push_back(std::move(e));
    out.clear();
    const auto release = [&](std::size_t n) {
        Emission burst{held_[n - 1].t, {}};
        for (std::size_t i = 0; i < n; ++i)
            burst.bytes.insert(burst.bytes.end(), held_[i].bytes.begin(), held_[i].bytes.end());
        held_.erase(held_.begin(), held_.begin() + static_cast<std::ptrdiff_t>(n));
        out.push_back(std::move(burst));
    };
    for (;;) {
        if (burst_size_ == 0) burst_size_ = 2 + fault_rng_() % 4;
        if (!faults_.burst || held_.size() < burst_size_) break;
        release(burst_size_);
        burst_size_ = 0;
    }
    // Nothing more on its way (a scan has ended, an answer came alone), or the fault is off:
    // what is held leaves now, so nobody waits for a reply that never comes.
    const bool quiet = !std::isfinite(transmitter_.next_time()) && !std::isfinite(sequencer_.next_ready());
    if (!held_.empty() && (quiet || !faults_.burst)) release(held_.size());
    return out;
}

double Instrument::next_emission_time() const {
    const double queued = transmitter_.next_time();
    if (std::isfinite(queued)) return queued;
    const double ready = sequencer_.next_ready();
    if (!std::isfinite(ready)) return ready;
    return std::max(ready, transmitter_.busy_until()) +
           static_cast<double>(sequencer_.next_size()) * transmitter_.byte_time();
}

// ---- Input -------------------------------------------------------------------------------------------

void Instrument::receive(const std::uint8_t* data, std::size_t n) {
    if (n == 0) return;
    received_.push_back(Emission{now_, std::vector<std::uint8_t>(data, data + n)});
    if (faults_.silent) return;
    for (std::size_t i = 0; i < n; ++i)
        if (auto cmd = parser_.feed(data[i], now_)) dispatch(*cmd);
}

void Instrument::dispatch(const ParsedCommand& cmd) {
    ++commands_;
    const std::vector<std::uint8_t>& p = cmd.payload;
    std::vector<Step> script;
    switch (cmd.code) {
    case kCmdPing:
        // Answered between two frames; whatever runs goes on.
        deliver(Frame{now_, frame(kRspPing), false});
        return;
    case kCmdConnect:
        script = {Send{0.0, {kCmdConnect}}};
        break;
    case kCmdReadErrorData:
        script = {Send{0.0, kErrorData}};
        break;
    case kCmdSearchZero:
        script = {Send{0.0, {kCmdSearchZero}},
                  Send{kZeroSearchTime, {faults_.zero_fail ? kRspZeroFailed : kRspZeroFound}}};
        break;
    case kCmdReadDark:
        script = {Send{0.0, {kCmdReadDark}}};
        for (int g = 0; g < kGainCount; ++g)
            script.push_back(Report{kDarkPeriod, kRspDarkValue,
                                    [m = model_.get(), g](double) { return m->dark_counts(g); }});
        break;
    case kCmdReadGain: {
        std::vector<std::uint8_t> reply{kCmdReadGain};
        for (int b = 0; b < kBandCount; ++b)
            reply.push_back(static_cast<std::uint8_t>(model_->optics().gain_of_band(b)));
        script = {Send{0.0, reply}};
        break;
    }
    case kCmdScanBaseline:
        script = scan_script(cmd.code, kRspBaselinePoint, kRangeLow, kRangeHigh, kPointNormal);
        break;
    case kCmdScanBaselineRange:
    case kCmdScanSample: {
        // Byte 3 carries the speed bits above the high byte of the end wavelength.
        const double interval = (p[2] & 32) ? kPointLow : (p[2] & 16) ? kPointNormal : kPointHigh;
        const std::uint8_t code = cmd.code == kCmdScanSample ? kRspSamplePoint : kRspBaselinePoint;
        script = scan_script(cmd.code, code, wavelength(p[0], p[1]), wavelength(p[2] & 0x0F, p[3]), interval);
        break;
    }
    case kCmdGotoLambda:
    case kCmdReadLambda:
        script = goto_script(cmd.code, wavelength(p[0], p[1]));
        break;
    case kCmdZeroHere:
    case kCmdSpare9:
        script = stream_script(cmd.code);
        break;
    case kCmdScanBandwidth: {
        const double first = EmissionLine::point_nm(0);
        const Meter line = [m = model_.get()](double nm, double) { return m->line_counts(nm); };
        script = {Send{0.0, {kCmdScanBandwidth}}, Move{first, false},
                  Sweep{kRspBandwidthPoint, first, EmissionLine::kStep, EmissionLine::kPoints,
                        kBandwidthPoint, line},
                  Send{kScanEndDelay, frame(kRspScanEnd), true}};
        break;
    }
    default:
        return;
    }
    sequencer_.run(now_, std::move(script));
}

// ---- Reply scripts -----------------------------------------------------------------------------------

std::vector<Step> Instrument::scan_script(std::uint8_t echo, std::uint8_t point_code, double first,
                                          double last, double interval) {
    // A range given backwards scans nothing, but still opens and closes the scan so the PC is not left
    // waiting.
    const int count = last >= first ? static_cast<int>(last - first) + 1 : 0;
    const Meter meter = [m = model_.get()](double nm, double t) { return m->sample_counts(nm, t); };
    return {Send{0.0, {echo}}, Move{first, true}, Send{kSettleTime, frame(kRspReadBegin), true},
            Sweep{point_code, first, 1.0, count, interval, meter},
            Send{kScanEndDelay, frame(kRspScanEnd), true}};
}

std::vector<Step> Instrument::goto_script(std::uint8_t echo, double target) {
    const Meter meter = [m = model_.get()](double nm, double t) { return m->sample_counts(nm, t); };
    // On arrival the firmware reports the dark value of the gain that the band it reached uses.
    const int gain = model_->optics().gain_at(target);
    return {
        Send{0.0, {echo}}, Move{target, true},
        Report{kSettleTime, kRspArrived, [m = model_.get(), gain](double) { return m->dark_counts(gain); }},
        Stream{kRspIntensity, kFramePeriod, meter}};
}

std::vector<Step> Instrument::stream_script(std::uint8_t echo) {
    const Meter meter = [m = model_.get()](double nm, double t) { return m->sample_counts(nm, t); };
    return {Send{0.0, {echo}}, Stream{kRspIntensity, kFramePeriod, meter}};
}

// ---- Output ------------------------------------------------------------------------------------------

void Instrument::deliver(Frame f) {
    if (faults_.silent) return;
    if (f.data) {
        ++data_frames_;
        if (faults_.drop_every > 0 && data_frames_ % faults_.drop_every == 0) {
            ++dropped_frames_;
            return;
        }
        if (faults_.short_frames && f.bytes.size() == kFrameSize)
            f.bytes.resize(1 + fault_rng_() % (kFrameSize - 1));
        if (faults_.garbage && fault_rng_() % kGarbageOneIn == 0) {
            std::vector<std::uint8_t> junk(1 + fault_rng_() % 5);
            for (auto& b : junk)
                b = static_cast<std::uint8_t>(fault_rng_());
            transmitter_.send(f.ready, std::move(junk));
        }
    }
    transmitter_.send(f.ready, std::move(f.bytes));
}

// ---- Model -------------------------------------------------------------------------------------------

double Instrument::true_absorbance(double nm) const {
    return model_->absorbance(nm, now_);
}

Instrument::Counters Instrument::counters() const {
    return Counters{commands_, parser_.ignored_bytes(), parser_.discarded_commands(), dropped_frames_};
}

} // namespace lumora::sim
