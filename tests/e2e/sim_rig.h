#pragma once
// The whole program against the simulator library on one virtual clock: the main window's port
// runs over an in-memory pipe into lumora::sim::Instrument, each reply is delivered at its time,
// and Timer1 ticks every 50 ms of virtual time. Deterministic and fast; no event loop runs.
#include "app/frmMain.h"
#include "link/link_context.h"
#include "link/shared_state.h"
#include "platform/comm_port.h"
#include "platform/prompts.h"
#include "platform/status_bar.h"
#include "sim/instrument.h"
#include "store/database.h"
#include "store/settings_store.h"

#include <QAction>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTimer>
#include <algorithm>
#include <limits>
#include <memory>
#include <random>
#include <vector>

namespace lumora::test {

struct panel_write {
    int panel;
    QString text;
};

// The texts of the boxes shown since the last call.
inline std::vector<QString> take_shown_texts() {
    std::vector<QString> out;
    for (const shown_box& b : prompts::shown())
        out.push_back(b.text);
    prompts::clear_shown();
    return out;
}

class sim_rig {
public:
    explicit sim_rig(sim::Options options = {}, const QString& data_dir = {}) : instrument(options) {
        if (data_dir.isEmpty()) {
            dir_ = std::make_unique<QTemporaryDir>();
            data_folder_ = dir_->path();
        } else {
            data_folder_ = data_dir;
        }
        start_program();
    }
    ~sim_rig() {
        window.reset();
        db_close();
    }

    // Program start as main() runs it, minus the splash: store, settings, main window, port dialog.
    void start_program() {
        window.reset();
        reset_shared_state();
        db_open_file(data_folder_ + "/Lumora.db", true);
        if (const QString url = configured_server_url(); !url.isEmpty()) db_open_server(url);
        load_settings();
        auto backend = std::make_unique<memory_backend>();
        pipe = backend.get();
        pipe->on_written = [this](const QByteArray& b) {
            instrument.receive(reinterpret_cast<const std::uint8_t*>(b.constData()),
                               static_cast<std::size_t>(b.size()));
        };
        window = std::make_unique<frmMain>(std::move(backend));
        QObject::connect(&window->sbStatusBar(), &status_bar::panel_written, [this](int n, const QString& t) {
            writes.push_back({n, t});
        });
        // Timer1 restarts when the port opens: its first tick comes a full interval later.
        auto start_timer = link_ctx.hooks.enable_timer;
        link_ctx.hooks.enable_timer = [this, start_timer] {
            start_timer();
            next_tick_ = instrument.now() + 0.05;
        };
        window->Form_Load();
        set_default_colors();
        window->show_port_dialog();
    }

    // Replies go to the port as a stalled interface would see them: everything that arrived
    // between two ticks of Timer1, handed over just before the tick in random pieces (several
    // replies merged, replies split in the middle, single bytes). Seeded, so a failure repeats.
    void chunk_replies(std::uint64_t seed, int largest_piece) {
        chunking_ = true;
        chunk_rng_.seed(seed);
        largest_piece_ = largest_piece;
    }

    // Runs virtual time forward, delivering replies and ticking Timer1 while it is enabled.
    void run_for(double seconds) {
        const double end = instrument.now() + seconds;
        for (;;) {
            const double reply_at = instrument.next_emission_time();
            const bool ticking = window->Timer1().isActive();
            if (!ticking) next_tick_ = std::max(next_tick_, instrument.now() + 0.05);
            const double tick_at = ticking ? next_tick_ : std::numeric_limits<double>::infinity();
            const double next = std::min(reply_at, tick_at);
            if (next > end) {
                instrument.advance_to(end);
                return;
            }
            if (reply_at <= tick_at) {
                for (const auto& e : instrument.advance_to(reply_at)) {
                    const QByteArray bytes(reinterpret_cast<const char*>(e.bytes.data()),
                                           static_cast<qsizetype>(e.bytes.size()));
                    if (chunking_) {
                        held_.append(bytes);
                    } else {
                        arrive(bytes, e.t);
                    }
                }
            } else {
                instrument.advance_to(tick_at);
                if (chunking_) deliver_held(tick_at);
                silence_check(tick_at);
                window->Timer1_Timer();
                next_tick_ = tick_at + 0.05;
            }
        }
    }

    // Runs until `done` holds, in steps of 50 ms; false when `limit` seconds pass first.
    template <class F> bool run_until(F&& done, double limit) {
        for (double t = 0; t < limit; t += 0.05) {
            if (done()) return true;
            run_for(0.05);
        }
        return done();
    }

    // Commands the instrument received, as their first bytes, pings left out.
    std::vector<int> commands_received() const {
        std::vector<int> out;
        for (const auto& e : instrument.received_log())
            for (std::size_t i = 0; i < e.bytes.size(); ++i) {
                const int code = e.bytes[i];
                if (code == 120) continue;
                out.push_back(code);
                if (code == 6 || code == 7) i += 2;
                if (code == 10 || code == 11) i += 4;
            }
        return out;
    }
    int pings_received() const {
        int n = 0;
        for (const auto& e : instrument.received_log())
            for (auto b : e.bytes)
                n += b == 120;
        return n;
    }
    // Index of the first write of `text` to `panel` at or after `from`, or -1.
    int find_write(int panel, const QString& text, int from = 0) const {
        for (int i = from; i < static_cast<int>(writes.size()); ++i)
            if (writes[static_cast<std::size_t>(i)].panel == panel &&
                writes[static_cast<std::size_t>(i)].text == text)
                return i;
        return -1;
    }
    QString panel(int n) const { return window->sbStatusBar().text(n); }
    // The start-up is over and the live reading runs in panel 2.
    bool live() const {
        return shared.function_id == fid_no_function && panel(2).endsWith('A') && panel(6).startsWith("OK.");
    }
    // No pass runs and Read is offered again.
    bool idle() const {
        return shared.measure_mode == mm_lambda_panel && window->toolbar_button(3)->isEnabled();
    }
    // "Port open" in the port dialog, then the start-up until the live reading shows.
    bool open_port_until_live(double limit = 120) {
        if (auto* open = window->findChild<QPushButton*>(QStringLiteral("cmdPortOpen"))) open->click();
        return run_until([this] { return live(); }, limit);
    }
    const QString& data_folder() const { return data_folder_; }

    sim::Instrument instrument;
    memory_backend* pipe = nullptr;
    std::unique_ptr<frmMain> window;
    std::vector<panel_write> writes;

private:
    // The port's silence rule on the virtual clock: an incomplete piece is dropped once the line
    // has been quiet for the silence time.
    void silence_check(double t) {
        if (t - last_arrival_ >= comm_port::silence_ms / 1000.0) window->MSComm1().drop_incomplete();
    }
    void arrive(const QByteArray& bytes, double t) {
        silence_check(t);
        last_arrival_ = t;
        pipe->inject(bytes);
    }
    void deliver_held(double t) {
        std::uniform_int_distribution<int> size(1, largest_piece_);
        for (qsizetype at = 0; at < held_.size();) {
            const qsizetype n = std::min<qsizetype>(size(chunk_rng_), held_.size() - at);
            arrive(held_.mid(at, n), t);
            at += n;
        }
        held_.clear();
    }

    std::unique_ptr<QTemporaryDir> dir_;
    QString data_folder_;
    double next_tick_ = 0.05;
    double last_arrival_ = 0;
    bool chunking_ = false;
    std::mt19937_64 chunk_rng_;
    int largest_piece_ = 1;
    QByteArray held_;
};

} // namespace lumora::test
