#pragma once

#include <cstdint>
#include <vector>

namespace lumora::sim {

// One reply as it leaves the instrument. t: virtual seconds at which the bytes are on the wire, that is
// when the last of them has been clocked out at the line's byte rate.
struct Emission {
    double t;
    std::vector<std::uint8_t> bytes;
};

} // namespace lumora::sim
