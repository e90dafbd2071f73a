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
        // The first line out is the pty's path; the answers to control lines follow it.
        QByteArray path;
        wait_until(
            [&] {
                path += process.readAllStandardOutput();
                return path.contains('\n');
            },
            5000);
    }
    ~sim_process() {
        process.closeWriteChannel();
        process.terminate();
        if (!process.waitForFinished(3000)) process.kill();
    }
    // One control line, its one answer line.
    QString control(const QString& line) {
        process.write((line + "\n").toUtf8());
        QByteArray answer;
        wait_until(
            [&] {
                answer += process.readAllStandardOutput();
                return answer.endsWith('\n');
            },
            5000);
        return QString::fromUtf8(answer).trimmed();
    }
};

} // namespace lumora::test
