// The instrument's firmware loop: runs the reply script of the latest command on the clock and keeps
// track of the grating. Frames are produced one at a time, when due, so that a measurement sees the
// sample that is in the beam at that moment.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <variant>
#include <vector>

namespace lumora::sim {

// One reply on its way out: `ready` [s] is when the instrument hands it to its UART.
struct Frame {
    double ready = 0.0;
    std::vector<std::uint8_t> bytes;
    bool data = false; // a frame of a scan or stream, as opposed to an answer to a command
};

// A measurement [counts] at a grating position [nm] and a time [s].
using Meter = std::function<std::uint32_t(double nm, double t)>;

// Steps of a reply script. Delays and intervals are in seconds at speed factor 1, counted from the
// last frame of the step before.
struct Send { // fixed bytes
    double delay = 0.0;
    std::vector<std::uint8_t> bytes;
    bool data = false;
};
struct Report { // a 6-byte frame whose value is taken when it is due
    double delay = 0.0;
    std::uint8_t code = 0;
    std::function<std::uint32_t(double t)> value;
};
struct Move { // slew the grating, reporting the position passed and, on arrival, the target
    double target_nm = 0.0;
    bool report = true;
};
struct Sweep { // one measured frame per point, the grating stepping between them
    std::uint8_t code = 0;
    double first_nm = 0.0;
    double step_nm = 1.0;
    int count = 0;
    double interval = 0.0;
    Meter meter;
};
struct Stream { // measured frames at the present position, endlessly
    std::uint8_t code = 0;
    double period = 0.0;
    Meter meter;
};
using Step = std::variant<Send, Report, Move, Sweep, Stream>;

class Sequencer {
public:
    Sequencer(double speed, double start_nm);

    // Starts a script at time t, cancelling whatever ran.
    void run(double t, std::vector<Step> script);
    // Cancels the running script at time t; the grating stops where it is.
    void stop(double t);

    // [s] when the next frame is ready; +infinity when idle.
    double next_ready() const;
    // Size of the next frame in bytes; 0 when idle.
    std::size_t next_size() const;
    // Produces the next frame. Only while next_ready() is finite.
    Frame produce();

    // [nm] grating position at time t (not before the latest event).
    double grating_nm(double t) const;
    bool busy() const { return index_ < steps_.size(); }
    bool streaming() const { return busy() && std::holds_alternative<Stream>(steps_[index_]); }
    // What the firmware is doing: idle, waiting, moving, scanning or streaming.
    std::string activity() const;

private:
    void enter(std::size_t index, double t);
    double frame_time(std::size_t k) const;

    double speed_;
    std::vector<Step> steps_;
    std::size_t index_ = 0;    // step being run; steps_.size() when idle
    std::size_t produced_ = 0; // frames sent by the current step
    std::size_t reports_ = 0;  // frames a Move step sends: the positions passed, then the arrival
    double step_start_ = 0.0;  // [s]
    double from_nm_ = 0.0;     // grating motion: from, to, start and end [nm, nm, s, s]
    double to_nm_ = 0.0;
    double move_start_ = 0.0;
    double move_end_ = 0.0;
};

} // namespace lumora::sim
