#pragma once
// What a toolbar click does in each function: the toolbar belongs to the main window, and every
// click is selected by key and function_id. A key that a function does not serve does nothing.
#include <cstdint>
#include <string_view>

namespace lumora {

enum class toolbar_routine {
    none,
    setup,          // the function's setup dialog (after reload_parameter where the function has one)
    zero,           // the function's Zero step
    read_base_line, // Spectrum's Zero: a baseline scan
    read,           // the function's Read
    read_656,       // the bandwidth scan
    read_standard_or_sample,
    stop_now,
    enable_toolbar, // Stop where it only gives the toolbar back
    stop_kinetic,   // measure_mode 1, counters 0, toolbar back
    zoom_auto,      // zoom_auto then zoom_data
    zoom_dialog,
    zoom_original,
    peak,
    smooth,
    derivative,
    scan_add,
    color,
    report_preview,
    report_print
};

struct toolbar_action {
    toolbar_routine routine = toolbar_routine::none;
    bool preparing = false;        // "Preparing..." to panel 6 first
    bool disable = false;          // toolbar_disable_function before the routine
    std::int16_t measure_mode = 0; // set before the routine when not 0
    bool zero_flag_set = false;    // Photometry's zero flag before Zero (true) or Read (false)
    bool zero_flag_clear = false;
    bool batch_check = false; // Quantitative's 100-sample question
    bool curve_check = false; // single-curve mode starts from an empty plot
    // measure_mode set before the batch check rather than after it (Quantitative's Read)
    bool mode_before_check = false;
};

toolbar_action toolbar_action_for(std::string_view key, int function_id);

} // namespace lumora
