// Fault switches that make the instrument misbehave the way real links and firmware do.
#pragma once

#include <string>

namespace lumora::sim {

struct Faults {
    bool silent = false;       // nothing is answered, input is lost: a dead instrument or a pulled cable
    bool zero_fail = false;    // the zero search reports failure
    bool garbage = false;      // now and then a few random bytes between frames
    bool short_frames = false; // scan and stream frames lose some of their bytes
    unsigned drop_every = 0;   // every Nth scan or stream frame is lost; 0 for none
    bool burst = false;        // replies are held back and leave in bursts of 2 to 5, back to back
    // Faults of the optics, each a number, 0 for none:
    double wavelength_offset_nm = 0.0; // the grating stands this far above where the drive says
    double stray = 0.0;                // fraction of the open beam that reaches the detector off-wavelength
    double drift_a_per_hour = 0.0;     // the baseline creeps by this much absorbance an hour

    // The optics faults by name: wavelength_offset NM (-10 to 10), stray FRACTION (0 to 0.1), drift
    // A_PER_HOUR (-1 to 1); "off" for 0. Throws std::invalid_argument for other names or values.
    static bool is_optics(const std::string& name);
    void set_optics(const std::string& name, const std::string& value);

    // Switches a fault by name: silent, zero_fail, garbage, short_frames, burst, drop:N ("drop:N off" or any
    // "drop:..." off ends dropping). Throws std::invalid_argument for anything else.
    void set(const std::string& name, bool on);
    // The faults that are on, comma separated, or "none".
    std::string describe() const;
};

} // namespace lumora::sim
