#pragma once
// What the link routines reach outside themselves: the port, and hooks into the windows. The
// windows fill the hooks when they are created; an empty hook is a dispatch point that does
// nothing, so the link never includes a window.
#include "timed_steps.h"

#include <QString>
#include <array>
#include <cstdint>
#include <functional>
#include <vector>

namespace lumora {

class comm_port;

struct link_hooks {
    // Main window
    std::function<void(int panel, const QString& text)> set_panel;
    std::function<QString(int panel)> panel_text;
    std::function<void(bool enabled)> enable_menus; // menus and the status bar
    std::function<void(bool locked)> scan_lock;     // keeps the user away during a scan
    std::function<bool()> scan_baseline_at_start;   // "Scan baseline at the start" ticked
    std::function<void()> toolbar_disable_function;
    std::function<void()> enable_timer;         // Timer1 on
    std::function<void(bool busy)> busy_cursor; // the main window's hourglass
    // The function window still open when a start-up ends (a reconnect): its toolbar comes back
    // and its function_id is returned; 0 when none is open.
    std::function<int()> resume_function;
    // Defaults of the functions' parameter records, run at the end of the settings load
    std::vector<std::function<void()>> start_defaults;
    // Store
    std::function<void()> save_baseline;
    std::function<void()> save_com_port;
    // Spectrum
    std::function<void(std::int32_t raw)> spectrum_show_base_line;
    std::function<void(std::int32_t raw)> spectrum_show_data;
    std::function<bool()> spectrum_in_sample_pass;
    std::function<double()> spectrum_start_lambda;
    // Bandwidth verification
    std::function<void(std::int32_t raw)> verify_show_data;
    // System setup
    std::function<void(bool enabled)> system_enable_function;
    std::function<void()> system_enable_zero_search;
    std::function<void(std::int32_t mean)> system_check_light_level;
    // Photometry: its zero flag, and read after the dark values of its Zero
    std::function<bool()> photometry_zero_flag;
    std::function<void()> photometry_read;
    // Per measure_mode (index 0..9): a complete reading, a zero-stage frame, the function's
    // reading flag (clear during its Zero step), and the schedules of the timed functions.
    std::array<std::function<void(std::int32_t mean)>, 10> show_data;
    std::array<std::function<void(std::int32_t value)>, 10> show_zero;
    std::array<std::function<bool()>, 10> reading_flag;
    std::array<timed_schedule, 10> timed;

    // The three hooks of a reading that zeroes first (Quantitative, Protein), set and cleared together.
    void set_reading(int mode, std::function<void(std::int32_t mean)> data,
                     std::function<void(std::int32_t value)> zero, std::function<bool()> flag);
    void clear_reading(int mode) { set_reading(mode, nullptr, nullptr, nullptr); }
};

struct link_context {
    comm_port* port = nullptr;
    link_hooks hooks;
};

extern link_context link_ctx;

// Panel helpers that go through the hooks.
void set_panel(int panel, const QString& text);
QString panel_text(int panel);

} // namespace lumora
