// The real serial path: lumora-sim serves a pseudo-terminal, the program opens it as "Com 1"
// through QSerialPort, and the start-up runs on the real clock and the real event loop.
#include "app/frmMain.h"
#include "link/frmPortSet.h"
#include "link/shared_state.h"
#include "link/trace.h"
#include "platform/comm_port.h"
#include "platform/status_bar.h"
#include "store/database.h"
#include "store/settings_store.h"
#include "sim_process.h"
#include "support/wait.h"

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QPushButton>
#include <QTemporaryDir>
#include <gtest/gtest.h>

using namespace lumora;
using lumora::test::sim_process;


TEST(SerialPath, StartupOverARealPseudoTerminalReachesTheLiveReading) {
    QTemporaryDir dir;
    sim_process sim(dir.path(), {"--speed", "2"});
    ASSERT_TRUE(QFile::exists(sim.link)) << sim.process.readAllStandardError().toStdString();
    qputenv("LUMORA_COM1", sim.link.toLocal8Bit());
    const QString trace_path = qEnvironmentVariable("KEEP_TRACE", dir.path() + "/trace.jsonl");
    trace::open(trace_path);

    reset_shared_state();
    ASSERT_EQ(db_open_file(dir.path() + "/Lumora.db", true), QString());
    load_settings();
    {
        frmMain window(make_serial_backend());
        window.Form_Load();
        set_default_colors();
        window.show_port_dialog();
        window.port_dialog().findChild<QPushButton*>("cmdPortOpen")->click();
        ASSERT_TRUE(window.MSComm1().PortOpen());

        const bool live = test::wait_until(
            [&] {
                return shared.function_id == fid_no_function &&
                       window.sbStatusBar().text(6).startsWith("OK.") &&
                       window.sbStatusBar().text(2).endsWith('A');
            },
            60000);
        ASSERT_TRUE(live) << "panel 6: " << window.sbStatusBar().text(6).toStdString();
        EXPECT_EQ(window.sbStatusBar().text(4), QStringLiteral("On-line"));
        EXPECT_EQ(window.sbStatusBar().text(1), QStringLiteral("500nm"));
        EXPECT_FALSE(shared.baseline_missing);
        // The blank reads close to 0 A. On a busy machine the arrival may share a read with the
        // last move report and its zero be lost; the stored baseline then still holds within a few mA.
        EXPECT_LT(std::abs(shared.now_abs), 0.01);
        window.close();
    }
    trace::open({});
    db_close();
    qunsetenv("LUMORA_COM1");

    // The trace holds bytes out, bytes in and panel writes, one JSON object a line.
    QFile f(trace_path);
    ASSERT_TRUE(f.open(QIODevice::ReadOnly));
    int tx = 0, rx = 0, panels = 0;
    double last_t = -1;
    bool connect_seen = false;
    while (!f.atEnd()) {
        const QByteArray line = f.readLine().trimmed();
        const QJsonObject o = QJsonDocument::fromJson(line).object();
        ASSERT_TRUE(o.contains("t")) << line.toStdString();
        EXPECT_GE(o["t"].toDouble(), last_t);
        last_t = o["t"].toDouble();
        if (o.contains("tx")) {
            ++tx;
            connect_seen |= o["tx"].toString() == "01";
        }
        if (o.contains("rx")) ++rx;
        if (o.contains("panel")) ++panels;
    }
    EXPECT_TRUE(connect_seen);
    EXPECT_GE(tx, 6);
    EXPECT_GT(rx, 791) << "every baseline point came in as its own buffer";
    EXPECT_GT(panels, 20);
}
