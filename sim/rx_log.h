// Log of the bytes received from the PC, one JSON object a line: {"t":1.250031,"rx":"0601f4"}, t in
// seconds since the simulator started. Each line is flushed at once so a crash loses nothing.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

namespace lumora::sim {

class RxLog {
public:
    RxLog() = default;
    RxLog(const RxLog&) = delete;
    RxLog& operator=(const RxLog&) = delete;
    ~RxLog();

    // Opens the file for appending. Returns an empty string, or what went wrong.
    std::string open(const std::string& path);
    bool is_open() const { return file_ != nullptr; }
    void write(double t, const std::vector<std::uint8_t>& bytes);

    // The line written for one chunk, without the newline.
    static std::string format(double t, const std::vector<std::uint8_t>& bytes);

private:
    std::FILE* file_ = nullptr;
};

} // namespace lumora::sim
