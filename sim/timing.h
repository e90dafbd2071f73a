// Timing of the instrument: every delay it makes, in seconds at speed factor 1.
#pragma once

namespace lumora::sim {

inline constexpr double kBaud = 57600.0;                  // [bit/s] the serial line
inline constexpr double kBitsPerByte = 10.0;              // start bit, 8 data bits, stop bit
inline constexpr double kByteTime = kBitsPerByte / kBaud; // [s] one byte on the wire

inline constexpr double kFramePeriod = 0.05053;   // [s] between intensity frames of the endless stream
inline constexpr double kSlewRate = 500.0;        // [nm/s] grating drive
inline constexpr double kMoveReportPeriod = 0.05; // [s] between position reports while the grating moves
inline constexpr double kSettleTime = 0.060;      // [s] the grating settles before the next report
inline constexpr double kDarkPeriod = 0.030;      // [s] between the four dark values
inline constexpr double kZeroSearchTime = 1.5;    // [s] from the echo to the zero search result
inline constexpr double kPointHigh = 0.010;       // [s] per scan point at High speed
inline constexpr double kPointNormal = 0.020; // [s] per scan point at Normal speed (also the full baseline)
inline constexpr double kPointLow = 0.040;    // [s] per scan point at Low speed
inline constexpr double kBandwidthPoint = 0.020; // [s] per point of the emission line scan
inline constexpr double kScanEndDelay = 0.010;   // [s] from the last point to the scan end frame

// The PC writes a command and its payload in one go; a payload still incomplete after this long is a
// broken command. This is a tolerance on the PC's bytes, so the speed factor does not shorten it.
inline constexpr double kPayloadTimeout = 0.100; // [s]

} // namespace lumora::sim
