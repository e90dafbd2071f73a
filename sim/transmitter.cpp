#include "sim/transmitter.h"

#include "sim/timing.h"

#include <algorithm>
#include <limits>

namespace lumora::sim {

Transmitter::Transmitter(double speed) : byte_time_(kByteTime / speed) {}

void Transmitter::send(double ready, std::vector<std::uint8_t> bytes) {
    if (bytes.empty()) return;
    busy_until_ = std::max(ready, busy_until_) + static_cast<double>(bytes.size()) * byte_time_;
    queue_.push_back(Emission{busy_until_, std::move(bytes)});
}

std::vector<Emission> Transmitter::take_until(double t) {
    std::vector<Emission> out;
    while (!queue_.empty() && queue_.front().t <= t) {
        out.push_back(std::move(queue_.front()));
        queue_.pop_front();
    }
    return out;
}

double Transmitter::next_time() const {
    return queue_.empty() ? std::numeric_limits<double>::infinity() : queue_.front().t;
}

} // namespace lumora::sim
