#include "command_ring.h"

#include "link_context.h"
#include "photometric.h"
#include "platform/comm_port.h"
#include "platform/numeric_text.h"
#include "protocol.h"
#include "shared_state.h"
#include "trace.h"

namespace lumora {
namespace {

void port_write(const std::uint8_t* bytes, std::size_t n) {
    trace::tx(bytes, n);
    link_ctx.port->Output(QByteArray(reinterpret_cast<const char*>(bytes), static_cast<qsizetype>(n)));
}

bool port_open() {
    return link_ctx.port != nullptr && link_ctx.port->PortOpen();
}

struct command_row {
    std::int16_t threshold;
    const char* status;
};

// Threshold for the first reply and status at queue time, by code; threshold 0 = not a command.
command_row row_of(std::uint8_t code) {
    switch (code) {
    case cmd_ping:
        return {6, nullptr};
    case cmd_connect:
        return {1, "Connecting..."};
    case cmd_read_error_data:
        return {7, "Receiving error data..."};
    case cmd_search_zero:
        return {1, "Zero searching..."};
    case cmd_read_dark:
        return {1, "Receiving dark voltage..."};
    case cmd_scan_bandwidth:
        return {1, "Measuring bandwidth..."};
    case cmd_read_gain:
        return {6, nullptr};
    case cmd_scan_baseline:
    case cmd_goto_lambda:
    case cmd_read_lambda:
    case cmd_zero_here:
    case cmd_spare_9:
    case cmd_scan_baseline_range:
    case cmd_scan_sample:
        return {1, nullptr};
    default:
        return {0, nullptr};
    }
}

// The bytes of a ring command; false when a wavelength does not fit its byte pair (an overflow).
bool build_payload(std::uint8_t code, ring_slot& slot) {
    slot.payload[0] = code;
    slot.payload_length = 1;
    if (code == cmd_goto_lambda || code == cmd_read_lambda) {
        const auto pair = wavelength_pair(shared.lambda_now);
        if (!pair) return false;
        slot.payload[1] = (*pair)[0];
        slot.payload[2] = (*pair)[1];
        slot.payload_length = 3;
    } else if (code == cmd_scan_baseline_range || code == cmd_scan_sample) {
        const auto start = wavelength_pair(shared.scan_start_lambda);
        const auto end = wavelength_pair(shared.scan_end_lambda);
        if (!start || !end) return false;
        slot.payload[1] = (*start)[0];
        slot.payload[2] = (*start)[1];
        slot.payload[3] = static_cast<std::uint8_t>((*end)[0] | speed_bits(shared.scan_speed));
        slot.payload[4] = (*end)[1];
        slot.payload_length = 5;
    }
    return true;
}

void advance_head() {
    shared.ring_head = static_cast<std::int16_t>(shared.ring_head + 1);
    if (shared.ring_head >= ring_slots) shared.ring_head = 0;
}

} // namespace

const char* queue_status_text(std::uint8_t code) {
    return row_of(code).status;
}

void send_message(std::uint8_t code) {
    shared.last_command = code;
    if (!port_open()) return;
    if (shared.ring_head < 0 || shared.ring_head >= ring_slots) throw run_fault{"index out of range"};
    ring_slot& slot = shared.command_ring[static_cast<std::size_t>(shared.ring_head)];
    if (slot.payload_length != 0) return; // occupied: the caller is not told
    const command_row row = row_of(code);
    if (code == cmd_ping || code == cmd_connect) {
        if (code == cmd_connect) set_panel(6, QString::fromLatin1(row.status));
        link_ctx.port->RThreshold = row.threshold;
        port_write(&code, 1);
    } else if (row.threshold != 0) {
        ring_slot filled;
        if (!build_payload(code, filled)) throw run_fault{"overflow"};
        if (row.status) set_panel(6, QString::fromLatin1(row.status));
        filled.reply_hint = 200;
        filled.reply_threshold = row.threshold;
        filled.sent = false;
        slot = filled;
        if (code == cmd_goto_lambda) shared.arrival_pending = true;
    }
    advance_head();
}

bool begin_exchange() {
    if (port_open()) {
        shared.ping_count = 0;
        shared.link_ready = false;
        shared.arrival_pending = false; // a new exchange replaces a move that never came back
    }
    return true;
}

void Timer1_Timer() {
    if (!port_open()) return;
    if (shared.link_ready) {
        shared.ring_tail = static_cast<std::int16_t>(shared.ring_head - 1);
        if (shared.ring_tail < 0) shared.ring_tail = ring_slots - 1;
        ring_slot& slot = shared.command_ring[static_cast<std::size_t>(shared.ring_tail)];
        if (slot.sent) return;
        link_ctx.port->Input(); // whatever is still on its way from an earlier command is dropped
        shared.reply_hint_now = slot.reply_hint;
        link_ctx.port->RThreshold = slot.reply_threshold;
        if (slot.payload_length != 0) port_write(slot.payload.data(), slot.payload_length);
        slot.sent = true;
        slot.payload_length = 0;
        slot.reply_threshold = 0;
        slot.reply_hint = 0;
        shared.reading_index = 0;
    } else if (shared.ping_count < 20) {
        link_ctx.port->RThreshold = 6;
        const std::uint8_t ping = cmd_ping;
        port_write(&ping, 1);
        ++shared.ping_count;
    }
}

void set_target_lambda(double target) {
    shared.lambda_prev = shared.lambda_now;
    shared.lambda_now = target;
    shared.lambda_rising = !(shared.lambda_prev >= target);
    if (!fits_int16(target)) throw run_fault{"overflow"};
    shared.lambda_now_int = static_cast<std::int16_t>(cint(target));
}

} // namespace lumora
