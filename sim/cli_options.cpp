#include "sim/cli_options.h"

#include "sim/samples.h"

#include <charconv>
#include <stdexcept>

namespace lumora::sim {

std::string usage() {
    return "usage: lumora-sim [--link PATH] [--speed X] [--seed N] [--noise C] [--sample NAME]\n"
           "                  [--control PATH] [--log FILE]\n"
           "\n"
           "Simulated spectrophotometer on a pseudo-terminal. Prints the terminal's path as its first line,\n"
           "then serves until interrupted.\n"
           "\n"
           "  --link PATH     also reach the terminal through a symlink at PATH\n"
           "  --speed X       run X times faster than the real instrument (default 1)\n"
           "  --seed N        seed of the noise and the fault randomness (default 1)\n"
           "  --noise C       detector noise, standard deviation in counts (default 0)\n"
           "  --sample NAME   sample in the beam: blank, neutral:<A>, dye, holmium, standard:<c>,\n"
           "                  reaction:<rate per second>, line656, dichromate:<mg/L>, nitrite,\n"
           "                  changer:<s1>,<s2>,... (default blank)\n"
           "  --control PATH  UNIX socket taking control lines, as stdin does\n"
           "  --log FILE      append received bytes as JSON lines {\"t\":seconds,\"rx\":\"hex\"}\n"
           "\n"
           "Control lines (stdin or socket), one answer line each:\n"
           "  sample NAME | position N | fault silent|zero_fail|garbage|short_frames|burst|drop:N on|off |\n"
           "  fault wavelength_offset NM | fault stray FRACTION | fault drift A_PER_HOUR (or off) |\n"
           "  fwhm NM | absorbance NM | state | help\n"
           "\n"
           "The optics faults: wavelength_offset shifts the grating against its drive (-10 to 10 nm);\n"
           "stray lets a fraction of the open beam (0 to 0.1) reach the detector from the near infrared;\n"
           "drift creeps the baseline by that absorbance an hour from the moment it is set.\n";
}

CliOptions parse_cli(const std::vector<std::string>& args) {
    CliOptions o;
    for (std::size_t i = 0; i < args.size(); ++i) {
        const std::string& a = args[i];
        if (a == "--help" || a == "-h") {
            o.help = true;
            continue;
        }
        const auto value = [&]() -> const std::string& {
            if (i + 1 >= args.size()) throw std::invalid_argument(a + " needs a value");
            return args[++i];
        };
        if (a == "--link") {
            o.link = value();
        } else if (a == "--control") {
            o.control = value();
        } else if (a == "--log") {
            o.log = value();
        } else if (a == "--sample") {
            o.instrument.sample = value();
        } else if (a == "--speed") {
            const std::string& v = value();
            if (!parse_number(v, o.instrument.speed) || o.instrument.speed <= 0.0 ||
                o.instrument.speed > 1000.0)
                throw std::invalid_argument("--speed must be a number above 0 and at most 1000, not '" + v +
                                            "'");
        } else if (a == "--noise") {
            const std::string& v = value();
            if (!parse_number(v, o.instrument.noise_counts) || o.instrument.noise_counts < 0.0)
                throw std::invalid_argument("--noise must be a number of counts of 0 or more, not '" + v +
                                            "'");
        } else if (a == "--seed") {
            const std::string& v = value();
            const auto r = std::from_chars(v.data(), v.data() + v.size(), o.instrument.seed);
            if (v.empty() || r.ec != std::errc() || r.ptr != v.data() + v.size())
                throw std::invalid_argument("--seed must be a whole number of 0 or more, not '" + v + "'");
        } else {
            throw std::invalid_argument("unknown option '" + a + "'");
        }
    }
    return o;
}

} // namespace lumora::sim
