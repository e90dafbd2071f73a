#include "sim/command_parser.h"

#include "sim/timing.h"
#include "sim/wire.h"

namespace lumora::sim {

int CommandParser::payload_length(std::uint8_t code) {
    switch (code) {
    case kCmdGotoLambda:
    case kCmdReadLambda:
        return 2;
    case kCmdScanBaselineRange:
    case kCmdScanSample:
        return 4;
    case kCmdPing:
        return 0;
    default:
        return code >= kCmdConnect && code <= kCmdReadGain ? 0 : -1;
    }
}

void CommandParser::expire(double t) {
    if (need_ > 0 && t - started_ > kPayloadTimeout) {
        ++discarded_;
        need_ = 0;
    }
}

std::optional<ParsedCommand> CommandParser::feed(std::uint8_t byte, double t) {
    expire(t); // the rest of a payload that never came: this byte starts afresh
    if (need_ > 0) {
        partial_.payload.push_back(byte);
        if (--need_ > 0) return std::nullopt;
        return std::move(partial_);
    }
    const int length = payload_length(byte);
    if (length < 0) {
        ++ignored_;
        return std::nullopt;
    }
    partial_ = ParsedCommand{byte, {}};
    if (length == 0) return std::move(partial_);
    need_ = static_cast<std::size_t>(length);
    started_ = t;
    return std::nullopt;
}

} // namespace lumora::sim
