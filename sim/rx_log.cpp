#include "sim/rx_log.h"

#include <cerrno>
#include <charconv>
#include <cstring>

namespace lumora::sim {

RxLog::~RxLog() {
    if (file_ != nullptr) std::fclose(file_);
}

std::string RxLog::open(const std::string& path) {
    file_ = std::fopen(path.c_str(), "a");
    if (file_ == nullptr) return "cannot open log " + path + ": " + std::strerror(errno);
    return {};
}

std::string RxLog::format(double t, const std::vector<std::uint8_t>& bytes) {
    static const char kHex[] = "0123456789abcdef";
    char num[32];
    const auto r = std::to_chars(num, num + sizeof num, t, std::chars_format::fixed, 6);
    std::string line = "{\"t\":" + std::string(num, r.ptr) + ",\"rx\":\"";
    for (std::uint8_t b : bytes) {
        line.push_back(kHex[b >> 4]);
        line.push_back(kHex[b & 15]);
    }
    return line + "\"}";
}

void RxLog::write(double t, const std::vector<std::uint8_t>& bytes) {
    if (file_ == nullptr) return;
    const std::string line = format(t, bytes) + "\n";
    std::fwrite(line.data(), 1, line.size(), file_);
    std::fflush(file_);
}

} // namespace lumora::sim
