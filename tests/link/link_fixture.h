#pragma once
// A link on the in-memory pipe with every hook recording what it was given: panel writes, the scan
// lock, the store's saves and the calls into the function windows.
#include "link/command_ring.h"
#include "link/link_context.h"
#include "link/protocol.h"
#include "link/response_decoder.h"
#include "link/shared_state.h"
#include "platform/comm_port.h"
#include "platform/prompts.h"

#include <QByteArray>
#include <QString>
#include <functional>
#include <gtest/gtest.h>
#include <initializer_list>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace lumora::test {

class link_test : public ::testing::Test {
protected:
    memory_backend* pipe = nullptr;
    std::unique_ptr<comm_port> port;

    std::map<int, QString> panels;                           // latest text per panel
    std::vector<std::pair<int, QString>> panel_log;          // every write, in order
    std::vector<bool> locks;                                 // scan_lock calls
    std::vector<std::pair<std::string, std::int32_t>> calls; // calls into the windows and the store
    bool baseline_at_start = false;
    bool reading_flag = false; // the function's reading flag for modes 6 and 7
    std::array<std::int32_t, 10> timed_ticks{};
    std::array<std::int16_t, 10> timed_taken{};

    // Hooks that record their call under `name`, with the value they were given or 0.
    std::function<void(std::int32_t)> record(const std::string& name) {
        return [this, name](std::int32_t v) { calls.emplace_back(name, v); };
    }
    std::function<void()> note(const std::string& name) {
        return [this, name] { calls.emplace_back(name, 0); };
    }

    void SetUp() override {
        reset_shared_state();
        apply_start_defaults();
        auto backend = std::make_unique<memory_backend>();
        pipe = backend.get();
        port = std::make_unique<comm_port>(std::move(backend));
        ASSERT_EQ(port->setPortOpen(true), QString());
        link_ctx.port = port.get();
        auto& h = link_ctx.hooks;
        h.set_panel = [this](int n, const QString& t) {
            panels[n] = t;
            panel_log.emplace_back(n, t);
        };
        h.panel_text = [this](int n) { return panels[n]; };
        h.scan_lock = [this](bool on) { locks.push_back(on); };
        h.scan_baseline_at_start = [this] { return baseline_at_start; };
        h.enable_menus = record("enable_menus");
        h.save_baseline = note("save_baseline");
        h.save_com_port = note("save_com_port");
        h.spectrum_show_base_line = record("show_base_line");
        h.spectrum_show_data = record("spectrum_show_data");
        h.spectrum_start_lambda = [] { return 400.0; };
        h.verify_show_data = record("verify_show_data");
        h.system_enable_function = record("system_enable_function");
        h.system_enable_zero_search = note("system_enable_zero_search");
        h.system_check_light_level = record("check_light_level");
        h.photometry_zero_flag = [] { return true; };
        h.photometry_read = note("photometry_read");
        for (std::size_t m = 0; m < 10; ++m) {
            h.show_data[m] = record("show_data " + std::to_string(m));
            h.show_zero[m] = record("show_zero " + std::to_string(m));
            // A timed function whose every frame is a due sample.
            h.timed[m].ticks = &timed_ticks[m];
            h.timed[m].taken = &timed_taken[m];
            h.timed[m].reading = [] { return true; };
            h.timed[m].plan = [] { return timed_plan{}; };
            h.timed[m].show_data = record("timed_frame " + std::to_string(m));
            h.reading_flag[m] = [this] { return reading_flag; };
        }
        prompts::script();
        prompts::clear_shown();
    }

    void TearDown() override {
        link_ctx = link_context{};
        port.reset();
        reset_shared_state();
        prompts::clear_shown();
        prompts::unscript();
    }

    // A reply as the port hands it over.
    static void reply(std::initializer_list<int> bytes) {
        std::vector<std::uint8_t> b;
        for (int v : bytes)
            b.push_back(static_cast<std::uint8_t>(v));
        recv_message(b.data(), b.size());
    }
    // A 6-byte frame with a 24-bit value in bytes 1 to 3, `n` times.
    static void frame(int code, std::int32_t value, int n = 1) {
        for (int i = 0; i < n; ++i)
            reply({code, (value >> 16) & 0xff, (value >> 8) & 0xff, value & 0xff, 0, 0});
    }
    static void frames(int n, std::int32_t value) { frame(rsp_intensity, value, n); }

    // The bytes waiting in the slot just behind ring_head: what the next tick would transmit.
    static QByteArray queued() {
        const int tail = shared.ring_head == 0 ? ring_slots - 1 : shared.ring_head - 1;
        const ring_slot& s = shared.command_ring[static_cast<std::size_t>(tail)];
        return QByteArray(reinterpret_cast<const char*>(s.payload.data()), s.payload_length);
    }
    static QByteArray bytes(std::initializer_list<int> list) {
        QByteArray b;
        for (int v : list)
            b.append(static_cast<char>(v));
        return b;
    }

    int count_calls(const std::string& name) const {
        int n = 0;
        for (const auto& c : calls)
            n += c.first == name;
        return n;
    }
};

} // namespace lumora::test
