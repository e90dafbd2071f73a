// Splits a byte stream into text lines.
#pragma once

#include <string>
#include <vector>

namespace lumora::sim {

class LineBuffer {
public:
    static constexpr std::size_t kMaxLine = 4096; // a longer run without a newline counts as a line

    // Adds bytes; returns the lines they complete, without line ends ("\n" or "\r\n").
    std::vector<std::string> add(const char* data, std::size_t n);
    // Whatever is left when the stream ends, as a last line (empty if nothing).
    std::string rest();

private:
    std::string pending_;
};

} // namespace lumora::sim
