// Test main for everything that touches Qt: a QApplication on the offscreen platform, so window
// code runs in CI with no display, and a private settings and data area per run.
#include <QApplication>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <gtest/gtest.h>

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QTemporaryDir home;
    qputenv("XDG_CONFIG_HOME", (home.path() + "/config").toLocal8Bit());
    qputenv("XDG_DATA_HOME", (home.path() + "/data").toLocal8Bit());
    QStandardPaths::setTestModeEnabled(true);
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("LumoraTest"));
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
