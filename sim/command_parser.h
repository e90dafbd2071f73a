// Collects the bytes from the PC into commands: a code, then a payload of 0, 2 or 4 bytes.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

namespace lumora::sim {

struct ParsedCommand {
    std::uint8_t code = 0;
    std::vector<std::uint8_t> payload;
};

class CommandParser {
public:
    // One byte arriving at time t [s]. Returns a command once its last byte is in.
    std::optional<ParsedCommand> feed(std::uint8_t byte, double t);

    // Drops a partial command whose payload has not completed by time t.
    void expire(double t);

    // Payload length of a command code, or -1 for a byte that is no command.
    static int payload_length(std::uint8_t code);

    std::uint64_t ignored_bytes() const { return ignored_; }        // bytes that were no command
    std::uint64_t discarded_commands() const { return discarded_; } // payloads that never completed
    bool pending() const { return need_ > 0; }

private:
    ParsedCommand partial_;
    std::size_t need_ = 0;
    double started_ = 0.0; // [s] arrival of the code byte of the partial command
    std::uint64_t ignored_ = 0;
    std::uint64_t discarded_ = 0;
};

} // namespace lumora::sim
