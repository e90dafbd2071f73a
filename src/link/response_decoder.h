#pragma once
// The one place where bytes from the instrument turn into meaning. A reply is known by its first
// byte alone; only the bytes that reply carries are read, and anything behind them in the same
// buffer is dropped with it.
#include <cstddef>
#include <cstdint>

namespace lumora {

// Handles one buffer from the port. Never throws: a run-time fault (division by zero, index out
// of range, overflow) ends the handling of that buffer where it happened.
void recv_message(const std::uint8_t* bytes, std::size_t size);
// The receive event of the port: reads Input and hands it to recv_message, or discards the
// buffer after an overflow.
void on_comm_event();
// Formats and writes the live reading in panel 2 (mode 1, complete readings).
void lambda_show_data(std::int32_t intensity);
// The end of the start-up: menus on, function_id 8, off to the preset wavelength.
void startup_finish();

} // namespace lumora
