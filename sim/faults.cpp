#include "sim/faults.h"

#include "sim/samples.h"

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

std::string Faults::describe() const {
    std::string s;
    const auto add = [&](const std::string& item) { s += (s.empty() ? "" : ",") + item; };
    if (silent) add("silent");
    if (zero_fail) add("zero_fail");
    if (garbage) add("garbage");
    if (short_frames) add("short_frames");
    if (burst) add("burst");
    if (drop_every > 0) add("drop:" + std::to_string(drop_every));
    return s.empty() ? "none" : s;
}

} // namespace lumora::sim
