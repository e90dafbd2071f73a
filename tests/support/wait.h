#pragma once
// Runs the event loop until a condition holds or the time is up; for tests only.
#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QThread>
#include <functional>

namespace lumora::test {

inline bool wait_until(const std::function<bool()>& done, int timeout_ms = 5000) {
    QDeadlineTimer deadline(timeout_ms);
    while (!done()) {
        if (deadline.hasExpired()) return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
        QThread::usleep(500);
    }
    return true;
}

} // namespace lumora::test
