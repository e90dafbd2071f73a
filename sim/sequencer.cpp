#include "sim/sequencer.h"

#include "sim/timing.h"
#include "sim/wire.h"

#include <cmath>
#include <limits>

namespace lumora::sim {

namespace {
template <class... F> struct Overload : F... { using F::operator()...; };
// Clang 14 does not deduce an aggregate's arguments from its initialisers yet.
template <class... F> Overload(F...) -> Overload<F...>;
} // namespace

Sequencer::Sequencer(double speed, double start_nm) : speed_(speed), from_nm_(start_nm), to_nm_(start_nm) {}

void Sequencer::run(double t, std::vector<Step> script) {
    stop(t);
    steps_ = std::move(script);
    enter(0, t);
}

void Sequencer::stop(double t) {
    from_nm_ = to_nm_ = grating_nm(t);
    move_start_ = move_end_ = t;
    steps_.clear();
    index_ = 0;
}

double Sequencer::grating_nm(double t) const {
    if (t >= move_end_ || move_end_ <= move_start_) return to_nm_;
    if (t <= move_start_) return from_nm_;
    return from_nm_ + (to_nm_ - from_nm_) * (t - move_start_) / (move_end_ - move_start_);
}

// Begins step `index` at time t. Steps that send nothing (a silent move, an empty sweep) pass their
// time on to the next one.
void Sequencer::enter(std::size_t index, double t) {
    for (index_ = index; index_ < steps_.size(); ++index_) {
        step_start_ = t;
        produced_ = 0;
        if (const Move* m = std::get_if<Move>(&steps_[index_])) {
            from_nm_ = grating_nm(t);
            to_nm_ = m->target_nm;
            move_start_ = t;
            move_end_ = t + std::abs(to_nm_ - from_nm_) / (kSlewRate * speed_);
            const double periods = (move_end_ - t) / (kMoveReportPeriod / speed_);
            reports_ = periods > 0.0 ? static_cast<std::size_t>(std::ceil(periods - 1e-9)) : 1;
            if (m->report) return;
            t = move_end_;
        } else if (const Sweep* s = std::get_if<Sweep>(&steps_[index_])) {
            if (s->count > 0) return;
        } else {
            return;
        }
    }
    steps_.clear();
    index_ = 0;
}

// [s] when frame k (0-based) of the current step is ready.
double Sequencer::frame_time(std::size_t k) const {
    const double n = static_cast<double>(k + 1);
    return std::visit(Overload{
                          [&](const Send& s) { return step_start_ + s.delay / speed_; },
                          [&](const Report& r) { return step_start_ + r.delay / speed_; },
                          [&](const Move&) {
                              return k + 1 < reports_ ? step_start_ + n * kMoveReportPeriod / speed_
                                                      : move_end_;
                          },
                          [&](const Sweep& s) { return step_start_ + n * s.interval / speed_; },
                          [&](const Stream& s) { return step_start_ + n * s.period / speed_; },
                      },
                      steps_[index_]);
}

double Sequencer::next_ready() const {
    return busy() ? frame_time(produced_) : std::numeric_limits<double>::infinity();
}

std::size_t Sequencer::next_size() const {
    if (!busy()) return 0;
    if (const Send* s = std::get_if<Send>(&steps_[index_])) return s->bytes.size();
    return kFrameSize;
}

Frame Sequencer::produce() {
    Frame f;
    f.ready = frame_time(produced_);
    bool last = true;
    std::visit(Overload{
                   [&](const Send& s) {
                       f.bytes = s.bytes;
                       f.data = s.data;
                   },
                   [&](const Report& r) {
                       f.bytes = frame(r.code, r.value(f.ready));
                       f.data = true;
                   },
                   [&](const Move& m) {
                       last = produced_ + 1 >= reports_;
                       const double nm = last ? m.target_nm : grating_nm(f.ready);
                       f.bytes = frame(kRspLambdaNow, static_cast<std::uint32_t>(std::lround(nm)));
                       f.data = true;
                   },
                   [&](const Sweep& s) {
                       const double nm = s.first_nm + static_cast<double>(produced_) * s.step_nm;
                       from_nm_ = to_nm_ = nm;
                       move_start_ = move_end_ = f.ready;
                       f.bytes = frame(s.code, s.meter(nm, f.ready));
                       f.data = true;
                       last = produced_ + 1 >= static_cast<std::size_t>(s.count);
                   },
                   [&](const Stream& s) {
                       f.bytes = frame(s.code, s.meter(grating_nm(f.ready), f.ready));
                       f.data = true;
                       last = false;
                   },
               },
               steps_[index_]);
    ++produced_;
    if (last) enter(index_ + 1, f.ready);
    return f;
}

std::string Sequencer::activity() const {
    if (!busy()) return "idle";
    return std::visit(Overload{
                          [](const Send&) { return "waiting"; },
                          [](const Report&) { return "waiting"; },
                          [](const Move&) { return "moving"; },
                          [](const Sweep&) { return "scanning"; },
                          [](const Stream&) { return "streaming"; },
                      },
                      steps_[index_]);
}

} // namespace lumora::sim
