#pragma once
// The PostgreSQL server of the store tests. The ctest run starts one for every test binary
// (tests/support/pg-test-server, a ctest fixture); a binary run on its own starts its own at the
// first test that needs it and stops it at the end. Each test process works in a database of its
// own on that server, so tests running side by side never see each other's batches.
#include <QString>
#include <QStringList>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace pg_test {

// The URL of this process's database, or "" when there is no server (why_not says why).
QString url();
QString why_not();
// Every table of this process's database goes: the next test starts with an empty server.
void wipe();
// Raw statements on this process's database, as another program would run them.
void exec(const QStringList& statements);

// A server of a test's own, for a test that stops and starts it.
class own_server {
public:
    own_server();
    ~own_server();
    bool started() const { return !url_.isEmpty(); }
    QString url() const { return url_; }
    QString why_not() const { return why_; }
    bool halt();   // stops it, keeping its data
    bool resume(); // starts it again

private:
    QTemporaryDir dir_;
    QString state_, url_, why_;
};

} // namespace pg_test

// Skips a test on the server where this machine has no server binaries, saying so.
#define LUMORA_NEED_SERVER()                                                                                 \
    do {                                                                                                     \
        if (pg_test::url().isEmpty())                                                                        \
            GTEST_SKIP() << "no PostgreSQL server: " << pg_test::why_not().toStdString();                    \
    } while (0)
