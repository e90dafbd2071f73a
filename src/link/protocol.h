#pragma once
// The instrument's command and reply codes, and the byte layouts of the commands. There is no
// frame marker and no checksum on the wire: a reply is known by its first byte and framed only by
// how many bytes the receive threshold waits for.
#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

namespace lumora {

enum command_code : std::uint8_t {
    cmd_connect = 1,
    cmd_read_error_data = 2,
    cmd_search_zero = 3,
    cmd_read_dark = 4,
    cmd_scan_baseline = 5,
    cmd_goto_lambda = 6,
    cmd_read_lambda = 7,
    cmd_zero_here = 8,
    cmd_spare_9 = 9,
    cmd_scan_baseline_range = 10,
    cmd_scan_sample = 11,
    cmd_scan_bandwidth = 12,
    cmd_read_gain = 13,
    cmd_ping = 120
};

enum reply_code : std::uint8_t {
    rsp_gain = 13,
    rsp_zero_found = 17,
    rsp_zero_failed = 34,
    rsp_arrived = 51,
    rsp_intensity = 68,
    rsp_dark_value = 85,
    rsp_baseline_point = 102,
    rsp_lambda_now = 119,
    rsp_ping = 120,
    rsp_scan_end = 121,
    rsp_sample_point = 136,
    rsp_read_begin = 187,
    rsp_bandwidth_point = 204
};

// The (hi, lo) pair of a wavelength: hi the integer part of x / 256, lo x rounded (halves to even)
// modulo 256. 500 nm gives (1, 244). Empty when x does not fit a byte pair (negative or too large).
std::optional<std::array<std::uint8_t, 2>> wavelength_pair(double x);

// Speed bits of byte 3 of a range scan: 0 "High" none, 1 "Normal" 16, 2 "Low" 32.
std::uint8_t speed_bits(int scan_speed);

// The big-endian integer of `count` bytes from `start`; 0 when the buffer ends before the last.
std::int32_t bytes_to_long(int start, int count, const std::uint8_t* bytes, std::size_t size);

// Wavelength band for dark correction: 0 for 320-379 nm, 1 for 380-459, 2 for 460-559,
// 3 for 560-759, 4 for 760-1100, inclusive at both ends; -1 outside them (also 379.5).
int band_of(double nm);

} // namespace lumora
