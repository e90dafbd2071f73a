#pragma once
// The checks' instrument on the serial link: scans and readings go out as the program's own
// commands, and what comes back is turned into absorbance by the program's photometric routine.
// While it lives it holds the link's scan, reading and line-scan hooks, and gives them back after.
#include "link/link_context.h"
#include "verification_run.h"

#include <functional>

namespace lumora {

class link_verification_instrument : public verification_instrument {
public:
    // Runs the program until `done` holds or `seconds` pass; false on the time running out.
    using waiter = std::function<bool(const std::function<bool()>& done, double seconds)>;
    // [s] a clock for the drift readings.
    using clock = std::function<double()>;
    // Shows the prompt for a material; false when the user cancels.
    using prompter = std::function<bool(const beam_material&)>;

    link_verification_instrument(waiter wait, clock now, prompter prompt);
    ~link_verification_instrument() override;

    bool put_in_beam(const beam_material& m) override;
    bool reference_scan(int first_nm, int last_nm) override;
    std::vector<double> sample_scan(int first_nm, int last_nm) override;
    bool zero_at(double nm) override;
    std::vector<double> readings(int count) override;
    std::vector<std::pair<double, double>> readings_for(double seconds,
                                                        const std::function<bool(double)>& tick) override;
    std::optional<verify_points_array> bandwidth_scan() override;

private:
    bool scan(std::uint8_t command, int first_nm, int last_nm);
    double absorbance_of(double nm, double intensity);

    waiter wait_;
    clock now_;
    prompter prompt_;
    link_hooks saved_;
    // The scan fields belong to the Spectrum function's setup: given back as they were.
    std::int16_t saved_speed_ = 0;
    double saved_start_ = 0, saved_end_ = 0;
    bool scan_ended_ = false;
    std::vector<std::int32_t> points_; // sample or line scan points as they came
    std::vector<std::int32_t> means_;  // ten-frame means at the zeroed wavelength
    double zero_nm_ = 500;
    double beam_changed_at_ = 0; // [s] on now_, when the user last answered a prompt
};

// The program's own waiter: runs the event loop, the link's replies and Timer1 with it, until `done`
// holds or the time is up.
link_verification_instrument::waiter event_loop_waiter();

} // namespace lumora
