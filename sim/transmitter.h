// The instrument's UART: replies leave one after another at the line's byte rate, never overlapping.
#pragma once

#include "sim/emission.h"

#include <deque>

namespace lumora::sim {

class Transmitter {
public:
    explicit Transmitter(double speed);

    // Queues a reply that is ready at time t [s]; it goes out once the line is free.
    void send(double ready, std::vector<std::uint8_t> bytes);
    // Removes and returns the replies complete by time t, in order.
    std::vector<Emission> take_until(double t);

    double next_time() const; // completion of the first queued reply; +infinity when none
    double busy_until() const { return busy_until_; }
    double byte_time() const { return byte_time_; }

private:
    std::deque<Emission> queue_;
    double busy_until_ = 0.0; // [s] when the last queued byte has left
    double byte_time_;        // [s]
};

} // namespace lumora::sim
