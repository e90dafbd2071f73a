#pragma once
// The whole program over the real serial path: lumora-sim serves a pseudo-terminal that the
// program opens as "Com 1" through QSerialPort, with a fresh store in a folder of its own, and
// "Port open" pressed in the port dialog. Runs on the real clock and the real event loop.
#include "app/frmMain.h"
#include "link/frmPortSet.h"
#include "link/shared_state.h"
#include "platform/comm_port.h"
#include "platform/status_bar.h"
#include "sim_process.h"
#include "store/database.h"
#include "store/settings_store.h"
#include "support/wait.h"

#include <QAction>
#include <QPushButton>
#include <QTemporaryDir>
#include <functional>
#include <gtest/gtest.h>
#include <memory>

namespace lumora::test {

struct pty_program {
    QTemporaryDir dir;
    std::unique_ptr<sim_process> sim;
    std::unique_ptr<frmMain> window;

    // `prepare` runs once the store is open and before the main window exists.
    explicit pty_program(const QStringList& sim_args, const std::function<void(pty_program&)>& prepare = {}) {
        sim = std::make_unique<sim_process>(dir.path(), sim_args);
        EXPECT_TRUE(QFile::exists(sim->link)) << sim->process.readAllStandardError().toStdString();
        qputenv("LUMORA_COM1", sim->link.toLocal8Bit());
        reset_shared_state();
        EXPECT_EQ(db_open_file(dir.path() + "/Lumora.db", true), QString());
        load_settings();
        if (prepare) prepare(*this);
        window = std::make_unique<frmMain>(make_serial_backend());
        window->Form_Load();
        set_default_colors();
        window->show_port_dialog();
        window->port_dialog().findChild<QPushButton*>("cmdPortOpen")->click();
    }
    ~pty_program() {
        window.reset();
        db_close();
        qunsetenv("LUMORA_COM1");
    }
    QString panel(int n) const { return window->sbStatusBar().text(n); }
    // The start-up is over and the live reading runs in panel 2.
    bool live(int timeout_ms = 60000) const {
        return wait_until(
            [this] {
                return shared.function_id == fid_no_function && panel(6).startsWith("OK.") &&
                       panel(2).endsWith('A');
            },
            timeout_ms);
    }
    // No pass runs and Read is offered again.
    bool idle() const {
        return shared.measure_mode == mm_lambda_panel && window->toolbar_button(3)->isEnabled();
    }
};

} // namespace lumora::test
