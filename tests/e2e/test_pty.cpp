// The real serial path: lumora-sim serves a pseudo-terminal, the program opens it as "Com 1"
// through QSerialPort, and the start-up runs on the real clock and the real event loop.
#include "link/trace.h"
#include "pty_program.h"

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <gtest/gtest.h>

using namespace lumora;

TEST(SerialPath, StartupOverARealPseudoTerminalReachesTheLiveReading) {
    QTemporaryDir keep;
    const QString trace_path = qEnvironmentVariable("KEEP_TRACE", keep.path() + "/trace.jsonl");
    {
        test::pty_program p({"--speed", "2"}, [&](test::pty_program&) { trace::open(trace_path); });
        ASSERT_TRUE(p.window->MSComm1().PortOpen());
        ASSERT_TRUE(p.live()) << "panel 6: " << p.panel(6).toStdString();
        EXPECT_EQ(p.panel(4), QStringLiteral("On-line"));
        EXPECT_EQ(p.panel(1), QStringLiteral("500nm"));
        EXPECT_FALSE(shared.baseline_missing);
        // The blank reads close to 0 A. On a busy machine the arrival may share a read with the
        // last move report and its zero be lost; the stored baseline then still holds within a few mA.
        EXPECT_LT(std::abs(shared.now_abs), 0.01);
    }
    trace::open({});

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
