// The simulated spectrophotometer as one object on a virtual clock: bytes from the PC go in, replies come
// out as timed emissions. Nothing here reads the wall clock or an unseeded random source, so a run is
// reproducible from its options and inputs. An Instrument can be moved, not copied.
#pragma once

#include "sim/command_parser.h"
#include "sim/emission.h"
#include "sim/faults.h"
#include "sim/model.h"
#include "sim/sequencer.h"
#include "sim/transmitter.h"

#include <cstdint>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace lumora::sim {

struct Options {
    double speed = 1.0;        // divides every delay of the instrument (frame clock, scans, moves, bytes)
    std::uint64_t seed = 1;    // noise and fault randomness
    double noise_counts = 0.0; // standard deviation of the detector noise [counts]
    std::string sample = "blank";
};

class Instrument {
public:
    // Throws std::invalid_argument for a speed that is not positive, negative noise or a bad sample.
    explicit Instrument(Options opts = {});

    double now() const { return now_; }
    // Bytes from the PC, arriving at now().
    void receive(const std::uint8_t* data, std::size_t n);
    // Runs the clock forward; returns what went out meanwhile, one emission per reply, in time order.
    std::vector<Emission> advance(double seconds);
    // The same, to an absolute time; a time in the past only collects what is due.
    std::vector<Emission> advance_to(double t);
    // When the next reply will be on the wire; +infinity when nothing is scheduled. With a fault that
    // swallows or shortens replies, this is when the next one was due.
    double next_emission_time() const;

    // One control line in, one answer line out (no newline). See control.cpp for the commands.
    std::string control(const std::string& line);

    // The model's absorbance of the sample in the beam now.
    double true_absorbance(double nm) const;
    // Every chunk received, with its arrival time.
    const std::vector<Emission>& received_log() const { return received_; }
    void clear_received_log() { received_.clear(); }

    // [nm] where the grating is now.
    double grating_nm() const { return sequencer_.grating_nm(now_); }
    bool streaming() const { return sequencer_.streaming(); }

    struct Counters {
        std::uint64_t commands = 0;           // complete commands acted on, pings included
        std::uint64_t ignored_bytes = 0;      // bytes that were no command
        std::uint64_t discarded_commands = 0; // commands whose payload never completed
        std::uint64_t dropped_frames = 0;     // frames swallowed by the drop fault
    };
    Counters counters() const;

private:
    void dispatch(const ParsedCommand& cmd);
    void deliver(Frame f);
    std::vector<Step> scan_script(std::uint8_t echo, std::uint8_t point_code, double first, double last,
                                  double interval);
    std::vector<Step> goto_script(std::uint8_t echo, double target);
    std::vector<Step> stream_script(std::uint8_t echo);

    std::uint32_t measure(double mean_counts);        // adds the detector noise, clamps to 24 bits
    std::uint32_t sample_counts(double nm, double t); // the detector through the sample in the beam

    std::string control_answer(const std::string& line);
    // The burst fault: holds replies back and lets them go several at a time, as one write.
    std::vector<Emission> hold_for_burst(std::vector<Emission> out);
    std::string state_line() const;

    Options opts_;
    double now_ = 0.0;
    std::unique_ptr<Model> model_; // held apart so the reply scripts can keep a pointer to it
    Faults faults_;
    CommandParser parser_;
    Sequencer sequencer_;
    Transmitter transmitter_;
    std::mt19937_64 fault_rng_;
    std::vector<Emission> received_;
    std::vector<Emission> held_;    // replies the burst fault holds back
    std::size_t burst_size_ = 0;    // how many replies the next burst lets go
    std::uint64_t commands_ = 0;
    std::uint64_t data_frames_ = 0;
    std::uint64_t dropped_frames_ = 0;
};

} // namespace lumora::sim
