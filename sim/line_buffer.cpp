#include "sim/line_buffer.h"

namespace lumora::sim {

std::vector<std::string> LineBuffer::add(const char* data, std::size_t n) {
    std::vector<std::string> lines;
    for (std::size_t i = 0; i < n; ++i) {
        if (data[i] != '\n') {
            pending_.push_back(data[i]);
            if (pending_.size() < kMaxLine) continue;
        }
        if (!pending_.empty() && pending_.back() == '\r') pending_.pop_back();
        lines.push_back(std::move(pending_));
        pending_.clear();
    }
    return lines;
}

std::string LineBuffer::rest() {
    std::string s = std::move(pending_);
    pending_.clear();
    if (!s.empty() && s.back() == '\r') s.pop_back();
    return s;
}

} // namespace lumora::sim
