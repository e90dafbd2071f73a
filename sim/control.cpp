// The control channel: one command a line, one answer line each.
//   sample NAME            put a sample in the beam           -> ok sample NAME
//   position N             changer position N into the beam   -> ok position N
//   fault NAME on|off      silent, zero_fail, garbage, short_frames, burst, drop:N -> ok fault NAME on|off
//   fault NAME VALUE|off   wavelength_offset NM, stray FRACTION, drift A_PER_HOUR -> ok fault NAME VALUE
//   fwhm NM                bandwidth of the emission line     -> ok fwhm NM
//   absorbance NM          the model's absorbance in the beam -> the number, 6 decimals
//   state                  wavelength, sample, faults, what runs
//   help                   the list of commands
// Anything else answers "error: ..." and changes nothing.
#include "sim/instrument.h"

#include <charconv>
#include <sstream>
#include <stdexcept>

namespace lumora::sim {

namespace {

std::string fixed(double value, int decimals) {
    char buf[64];
    const auto r = std::to_chars(buf, buf + sizeof buf, value, std::chars_format::fixed, decimals);
    return std::string(buf, r.ptr);
}

double number(const std::string& text, const char* what) {
    double value = 0.0;
    if (!parse_number(text, value))
        throw std::invalid_argument(std::string(what) + " '" + text + "' is not a number");
    return value;
}

void expect_args(const std::vector<std::string>& words, std::size_t n, const char* usage) {
    if (words.size() != n + 1) throw std::invalid_argument(std::string("usage: ") + usage);
}

} // namespace

std::string Instrument::control(const std::string& line) {
    // Answers quote what was typed; keep them one line of printable text whatever came in.
    std::string answer = control_answer(line);
    for (char& c : answer)
        if (static_cast<unsigned char>(c) < 0x20 || static_cast<unsigned char>(c) > 0x7e) c = '?';
    return answer;
}

std::string Instrument::control_answer(const std::string& line) {
    std::istringstream in(line);
    std::vector<std::string> words;
    for (std::string w; in >> w;)
        words.push_back(w);
    if (words.empty()) return "error: empty command";
    const std::string& cmd = words[0];
    try {
        if (cmd == "sample") {
            expect_args(words, 1, "sample NAME");
            model_->compartment().load(words[1], now_);
            return "ok sample " + words[1];
        }
        if (cmd == "position") {
            expect_args(words, 1, "position N");
            int n = 0;
            const std::string& w = words[1];
            const auto r = std::from_chars(w.data(), w.data() + w.size(), n);
            if (r.ec == std::errc::result_out_of_range)
                n = 0; // not a position the changer has
            else if (r.ec != std::errc() || r.ptr != w.data() + w.size())
                throw std::invalid_argument("position '" + w + "' is not a whole number");
            model_->compartment().select(n);
            return "ok position " + words[1];
        }
        if (cmd == "fault") {
            expect_args(words, 2, "fault NAME on|off");
            if (Faults::is_optics(words[1])) {
                faults_.set_optics(words[1], words[2]);
                model_->set_wavelength_offset(faults_.wavelength_offset_nm);
                model_->set_stray(faults_.stray);
                if (words[1] == "drift") model_->set_drift(faults_.drift_a_per_hour, now_);
                return "ok fault " + words[1] + " " + words[2];
            }
            if (words[2] != "on" && words[2] != "off")
                throw std::invalid_argument("fault state must be on or off");
            faults_.set(words[1], words[2] == "on");
            if (words[1].starts_with("drop")) data_frames_ = 0; // count the Nth frame from now on
            return "ok fault " + words[1] + " " + words[2];
        }
        if (cmd == "fwhm") {
            expect_args(words, 1, "fwhm NM");
            model_->line().set_fwhm(number(words[1], "bandwidth"));
            return "ok fwhm " + fixed(model_->line().fwhm(), 3);
        }
        if (cmd == "absorbance") {
            expect_args(words, 1, "absorbance NM");
            const double nm = number(words[1], "wavelength");
            if (nm < kRangeLow || nm > kRangeHigh)
                throw std::invalid_argument("wavelength must be 320 to 1110 nm");
            return fixed(true_absorbance(nm), 6);
        }
        if (cmd == "state") {
            expect_args(words, 0, "state");
            return state_line();
        }
        if (cmd == "help") {
            return "commands: sample NAME | position N | fault "
                   "silent|zero_fail|garbage|short_frames|burst|drop:N "
                   "on|off | fault wavelength_offset NM | fault stray FRACTION | fault drift A_PER_HOUR "
                   "(each "
                   "also off) | "
                   "fwhm NM | absorbance NM | state";
        }
    } catch (const std::invalid_argument& e) {
        return std::string("error: ") + e.what();
    }
    return "error: unknown command '" + cmd + "' (try help)";
}

std::string Instrument::state_line() const {
    std::string s = "wavelength=" + fixed(grating_nm(), 1) + " sample=" + model_->compartment().name();
    if (model_->compartment().is_changer())
        s += " position=" + std::to_string(model_->compartment().position()) + "/" +
             std::to_string(model_->compartment().positions());
    s += " faults=" + faults_.describe() + " activity=" + sequencer_.activity() +
         " streaming=" + (sequencer_.streaming() ? "yes" : "no") +
         " fwhm=" + fixed(model_->line().fwhm(), 3) + " t=" + fixed(now_, 3);
    return s;
}

} // namespace lumora::sim
