#include "sim/wire.h"

namespace lumora::sim {

std::vector<std::uint8_t> frame(std::uint8_t code, std::uint32_t value) {
    if (value > kMaxCount) value = kMaxCount;
    return {code,
            static_cast<std::uint8_t>(value >> 16),
            static_cast<std::uint8_t>(value >> 8),
            static_cast<std::uint8_t>(value),
            0,
            0};
}

std::uint32_t frame_value(const std::vector<std::uint8_t>& bytes) {
    if (bytes.size() < 4) return 0;
    return (std::uint32_t{bytes[1]} << 16) | (std::uint32_t{bytes[2]} << 8) | bytes[3];
}

} // namespace lumora::sim
