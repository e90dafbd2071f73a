#pragma once
// Everything that leaves for the instrument. The ring is a mailbox with a history, not a queue:
// each transmit tick looks only at the slot just behind ring_head, so of two commands queued
// between two ticks only the later one leaves, and the earlier slot stays occupied for good. When
// ring_head comes round to an occupied slot again, send_message refuses it and every later
// command. That is how the link has always behaved and the instrument's timing is built on it.
#include <cstdint>

namespace lumora {

// Queues (or, for ping and connect, writes at once) one command. Callers that start an exchange
// call begin_exchange first and set the wavelength fields or scan limits beforehand.
void send_message(std::uint8_t command_code);
// Makes the next ticks ping the instrument first: a queued command leaves only after rsp_ping.
bool begin_exchange();
// The 50 ms transmit tick.
void Timer1_Timer();
// The status text written to panel 6 when a command is queued, or nullptr.
const char* queue_status_text(std::uint8_t command_code);
// The same four steps before every move: lambda_prev, lambda_now, lambda_rising, lambda_now_int.
void set_target_lambda(double target);

} // namespace lumora
