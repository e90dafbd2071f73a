#pragma once
// The program's shared state: one plain record, read and written directly by every window and
// routine, on the one GUI thread. Field comments carry units. `reset_shared_state` restores the
// values of program start; `apply_start_defaults` sets what the settings load ends with.
#include <QString>
#include <array>
#include <cstdint>

namespace lumora {

constexpr int wavelength_points = 791; // one per nm, 320..1110 nm: index = nm - 320
constexpr int first_index_nm = 320;
constexpr int curve_columns = 21; // baseline_curves: column 0 the baseline, 1..20 Spectrum's curves
constexpr int ring_slots = 1000;
constexpr double frame_seconds = 0.05053; // the instrument's intensity frame clock

// function_id values
enum function_ids : std::int16_t {
    fid_none_at_start = 0,
    fid_photometry = 1,
    fid_spectrum = 2,
    fid_timescan = 3,
    fid_kinetic = 4,
    fid_quantitative = 5,
    fid_verify = 6,
    fid_no_function = 8,
    fid_system = 9,
    fid_protein = 11,
    fid_timescan2 = 13,
    fid_startup = 24
};

// measure_mode values: where intensity frames go
enum measure_modes : std::int16_t {
    mm_lambda_panel = 1,
    mm_photometry = 2,
    mm_timescan = 3,
    mm_kinetic = 4,
    mm_spectrum = 5,
    mm_protein = 6,
    mm_quantitative = 7,
    mm_timescan2 = 8,
    mm_light_check = 9
};

// One mailbox slot of the command ring. An empty payload (length 0) marks the slot free.
struct ring_slot {
    std::array<std::uint8_t, 5> payload{};
    std::uint8_t payload_length = 0;
    std::int16_t reply_threshold = 0; // written to RThreshold at transmit
    std::int16_t reply_hint = 0;      // 200 for every queued command; a record only
    bool sent = false;
};

struct rgb {
    int r = 0, g = 0, b = 0;
    bool operator==(const rgb&) const = default;
};

struct shared_state {
    // Mode selectors
    std::int16_t function_id = fid_none_at_start;
    std::int16_t measure_mode = 0;

    // Wavelength [nm]
    double lambda_now = 0;
    double lambda_prev = 0;
    std::int16_t lambda_now_int = 0;
    bool lambda_rising = false; // written before each move, read by nothing so far
    double default_lambda = 0;  // "Default WL"
    double scan_start_lambda = 0, scan_end_lambda = 0;
    std::int16_t scan_speed = 0; // 0 High, 1 Normal, 2 Low

    // Link state: the ring and the ping handshake
    std::array<ring_slot, ring_slots> command_ring{};
    std::int16_t ring_head = 0;
    std::int16_t ring_tail = 0;
    bool link_ready = false;
    // A move has been queued and its arrival has not come back. Until it does, frames still belong
    // to the old position (or sat in a busy interface's buffer) and complete no function's reading.
    bool arrival_pending = false;
    std::int16_t ping_count = 0;
    std::int16_t com_port = 0;       // 1..4
    std::uint8_t last_command = 0;   // the last command queued: tells whether the instrument streams
    std::int16_t reply_hint_now = 0; // copied from the slot at transmit, never read

    // Photometric calibration [counts]
    std::array<double, wavelength_points> reference_intensity{}; // what 100 %T means at each nm
    std::array<std::array<double, curve_columns>, wavelength_points> baseline_curves{};
    bool baseline_missing = false;
    std::array<std::int32_t, 4> dark_by_gain{};
    std::array<std::int32_t, 5> dark_by_band{};

    // Latest reading, written by show_now_abs
    std::int32_t net_signal = 0; // [counts]
    double now_abs = 0;          // [A], -0.3..4.5
    double now_trans = 0;        // fraction
    double now_percent_t = 0;    // [%T], 0..120

    // Lambda panel
    std::uint16_t lambda_show_mode = 0; // 0 ABS, 1 %T, 2 Factor*ABS
    bool lambda_four_digits = false;
    bool zero_pending = false;
    float conc_factor = 1.0f;

    bool zero_failed = false;

    // Identification read from the store
    QString corporation_name, product_name, software_name;

    std::array<rgb, 20> curve_colors{};

    // Decoder state
    std::array<double, 10> readings{};
    std::int32_t reading_index = 0;
    std::int16_t dark_count = 0;
    std::int16_t baseline_count = 0;
    std::int16_t sample_count = 0;
    std::int16_t verify_count = 0;
    std::int32_t unknown_reply_count = 0;

    bool toolbar_locked = true;

    // Per function_id: a stored parameter batch was opened, so entering skips the setup dialog.
    std::array<bool, 25> parameters_loaded{};
};

extern shared_state shared;

// Restores every field to its value at program start.
void reset_shared_state();
// The values the settings load ends with: lambda_now and lambda_prev at default_lambda, the ring
// ready, the lambda panel in ABS with three digits and factor 1.
void apply_start_defaults();
// Fills curve_colors with the default 20 colours.
void set_default_colors();
// A measuring run has ended: frames go back to the lambda panel, and the zero that the run's own
// move armed is dropped. Taken by the next reading, it would make the sample in the beam the
// reference, and every later reading at that wavelength would be measured against the sample.
void end_run_on_blank();

} // namespace lumora
