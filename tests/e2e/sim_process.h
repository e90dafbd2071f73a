#pragma once
// lumora-sim as a child process serving a pseudo-terminal behind a symlink, with control lines
// on its standard input.
#include "support/wait.h"

#include <QFile>
#include <QProcess>
#include <QStringList>

namespace lumora::test {

struct sim_process {
    QProcess process;
    QString link;
    sim_process(const QString& dir, const QStringList& extra) : link(dir + "/com1") {
        process.setProgram(QStringLiteral(LUMORA_SIM_EXE));
        process.setArguments(QStringList{"--link", link} + extra);
        process.start();
        process.waitForStarted(5000);
        wait_until([&] { return QFile::exists(link); }, 5000);
    }
    void control(const char* line) { process.write(QByteArray(line) + '\n'); }
    ~sim_process() {
        process.terminate();
        if (!process.waitForFinished(3000)) process.kill();
    }
};

} // namespace lumora::test
