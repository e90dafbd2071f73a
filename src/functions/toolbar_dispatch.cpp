#include "toolbar_dispatch.h"

#include "link/shared_state.h"

namespace lumora {
namespace {

using R = toolbar_routine;

toolbar_action setup_action(int fid) {
    switch (fid) {
    case fid_photometry:
    case fid_spectrum:
    case fid_timescan:
    case fid_kinetic:
    case fid_quantitative:
    case fid_protein:
    case fid_timescan2:
        return {R::setup};
    default:
        return {};
    }
}

toolbar_action zero_action(int fid) {
    toolbar_action a;
    switch (fid) {
    case fid_photometry:
        a = {R::zero, true, true, mm_photometry};
        a.zero_flag_set = true;
        return a;
    case fid_spectrum:
        return {R::read_base_line, true, true, mm_spectrum};
    case fid_timescan:
        return {R::zero, false, true, mm_timescan};
    case fid_kinetic:
        return {R::zero, true, true, mm_kinetic};
    case fid_quantitative:
        a = {R::zero, false, true, mm_quantitative};
        a.batch_check = true;
        return a;
    case fid_protein:
        return {R::zero, false, true, mm_protein};
    case fid_timescan2:
        return {R::zero, true, true, mm_timescan2};
    default:
        return {};
    }
}

toolbar_action read_action(int fid) {
    toolbar_action a;
    switch (fid) {
    case fid_photometry:
        a = {R::read, true, false, mm_photometry};
        a.zero_flag_clear = true;
        return a;
    case fid_spectrum:
        a = {R::read, true, false, mm_spectrum};
        a.curve_check = true;
        return a;
    case fid_timescan:
        a = {R::read, true, false, mm_timescan};
        a.curve_check = true;
        return a;
    case fid_kinetic:
        return {R::read, true, false, mm_kinetic};
    case fid_quantitative:
        a = {R::read_standard_or_sample, false, false, mm_quantitative};
        a.batch_check = true;
        a.mode_before_check = true; // a Read dropped at the question leaves the mode set
        return a;
    case fid_verify:
        return {R::read_656, true, false, 0};
    case fid_protein:
        return {R::read_standard_or_sample, true, false, mm_protein};
    case fid_timescan2:
        a = {R::read, true, false, mm_timescan2};
        a.curve_check = true;
        return a;
    default:
        return {};
    }
}

toolbar_action stop_action(int fid) {
    switch (fid) {
    case fid_photometry:
    case fid_spectrum:
        return {R::enable_toolbar};
    case fid_timescan:
    case fid_timescan2:
        return {R::stop_now};
    case fid_kinetic:
        return {R::stop_kinetic};
    default:
        return {};
    }
}

bool has_curves(int fid) {
    return fid == fid_spectrum || fid == fid_timescan || fid == fid_kinetic || fid == fid_timescan2;
}

} // namespace

toolbar_action toolbar_action_for(std::string_view key, int fid) {
    if (key == "Setup") return setup_action(fid);
    if (key == "Zero") return zero_action(fid);
    if (key == "Read") return read_action(fid);
    if (key == "Stop") return stop_action(fid);
    if (key == "Auto") return has_curves(fid) ? toolbar_action{R::zoom_auto} : toolbar_action{};
    if (key == "Zoom") return has_curves(fid) ? toolbar_action{R::zoom_dialog} : toolbar_action{};
    if (key == "Original") return has_curves(fid) ? toolbar_action{R::zoom_original} : toolbar_action{};
    if (key == "Peak")
        return fid == fid_spectrum || fid == fid_timescan ? toolbar_action{R::peak} : toolbar_action{};
    if (key == "Smooth")
        return fid == fid_spectrum || fid == fid_timescan ? toolbar_action{R::smooth} : toolbar_action{};
    if (key == "Derivative") return fid == fid_spectrum ? toolbar_action{R::derivative} : toolbar_action{};
    if (key == "Scan add") return fid == fid_spectrum ? toolbar_action{R::scan_add} : toolbar_action{};
    if (key == "Color") return has_curves(fid) ? toolbar_action{R::color} : toolbar_action{};
    // Report and Print go to the menu handlers, which tell the user when a function has no data.
    if (key == "Report") return toolbar_action{R::report_preview};
    if (key == "Print") return toolbar_action{R::report_print};
    return {};
}

} // namespace lumora
