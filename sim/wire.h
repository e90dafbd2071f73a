// Reply codes and the byte layout of replies on the serial line.
#pragma once

#include <cstdint>
#include <vector>

namespace lumora::sim {

// Commands from the PC.
enum Command : std::uint8_t {
    kCmdConnect = 1,
    kCmdReadErrorData = 2,
    kCmdSearchZero = 3,
    kCmdReadDark = 4,
    kCmdScanBaseline = 5,
    kCmdGotoLambda = 6,
    kCmdReadLambda = 7,
    kCmdZeroHere = 8,
    kCmdSpare9 = 9,
    kCmdScanBaselineRange = 10,
    kCmdScanSample = 11,
    kCmdScanBandwidth = 12,
    kCmdReadGain = 13,
    kCmdPing = 120,
};

// Replies that are not echoes.
enum Reply : std::uint8_t {
    kRspZeroFound = 17,
    kRspZeroFailed = 34,
    kRspArrived = 51,
    kRspIntensity = 68,
    kRspDarkValue = 85,
    kRspBaselinePoint = 102,
    kRspLambdaNow = 119,
    kRspPing = 120,
    kRspScanEnd = 121,
    kRspSamplePoint = 136,
    kRspReadBegin = 187,
    kRspBandwidthPoint = 204,
};

inline constexpr std::uint32_t kMaxCount = 0xFFFFFF; // 24-bit full scale
inline constexpr std::size_t kFrameSize = 6;

// A 6-byte frame: the code, a 24-bit big-endian value, two zero bytes.
std::vector<std::uint8_t> frame(std::uint8_t code, std::uint32_t value = 0);

// The 24-bit value of a frame built by frame().
std::uint32_t frame_value(const std::vector<std::uint8_t>& bytes);

} // namespace lumora::sim
