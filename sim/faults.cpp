#include "sim/faults.h"

#include "sim/samples.h"

#include <cmath>
#include <stdexcept>

namespace lumora::sim {

void Faults::set(const std::string& name, bool on) {
    if (name == "silent") {
        silent = on;
    } else if (name == "zero_fail") {
        zero_fail = on;
    } else if (name == "garbage") {
        garbage = on;
    } else if (name == "short_frames") {
        short_frames = on;
    } else if (name == "burst") {
        burst = on;
    } else if (name.starts_with("drop:") || name == "drop") {
        if (!on) {
            drop_every = 0;
            return;
        }
        double n = 0.0;
        if (!parse_number(std::string_view(name).substr(name.find(':') + 1), n) || n < 1.0 || n > 1e6 ||
            n != static_cast<double>(static_cast<unsigned>(n)))
            throw std::invalid_argument("drop needs a whole number of 1 or more, as in drop:5");
        drop_every = static_cast<unsigned>(n);
    } else {
        throw std::invalid_argument("unknown fault '" + name +
                                    "' (silent, zero_fail, garbage, short_frames, burst, drop:N)");
    }
}

bool Faults::is_optics(const std::string& name) {
    return name == "wavelength_offset" || name == "stray" || name == "drift";
}

void Faults::set_optics(const std::string& name, const std::string& value) {
    double v = 0.0;
    if (value != "off" && !parse_number(value, v))
        throw std::invalid_argument("fault " + name + ": '" + value + "' is not a number");
    if (name == "wavelength_offset") {
        if (std::abs(v) > 10.0) throw std::invalid_argument("wavelength_offset must be -10 to 10 nm");
        wavelength_offset_nm = v;
    } else if (name == "stray") {
        if (v < 0.0 || v > 0.1) throw std::invalid_argument("stray must be a fraction of 0 to 0.1");
        stray = v;
    } else if (name == "drift") {
        if (std::abs(v) > 1.0) throw std::invalid_argument("drift must be -1 to 1 A per hour");
        drift_a_per_hour = v;
    } else {
        throw std::invalid_argument("unknown fault '" + name + "' (wavelength_offset, stray, drift)");
    }
}

std::string Faults::describe() const {
    std::string s;
    const auto add = [&](const std::string& item) { s += (s.empty() ? "" : ",") + item; };
    if (silent) add("silent");
    if (zero_fail) add("zero_fail");
    if (garbage) add("garbage");
    if (short_frames) add("short_frames");
    if (burst) add("burst");
    if (drop_every > 0) add("drop:" + std::to_string(drop_every));
    const auto number = [](double v) {
        std::string t = std::to_string(v);
        t.erase(t.find_last_not_of('0') + 1);
        if (t.back() == '.') t.pop_back();
        return t;
    };
    if (wavelength_offset_nm != 0.0) add("wavelength_offset:" + number(wavelength_offset_nm));
    if (stray != 0.0) add("stray:" + number(stray));
    if (drift_a_per_hour != 0.0) add("drift:" + number(drift_a_per_hour));
    return s.empty() ? "none" : s;
}

} // namespace lumora::sim
