#include "pg_test_server.h"

#include <QCoreApplication>
#include <QFile>
#include <QProcess>
#include <QRandomGenerator>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>

namespace pg_test {
namespace {

const QString admin_name = QStringLiteral("pg-test-admin");
const QString work_name = QStringLiteral("pg-test-work");

struct script_result {
    int code = -1;
    QString err;
};

script_result run_script(const QString& command, const QString& state) {
    QProcess p;
    p.start(QStringLiteral(LUMORA_PG_TEST_SERVER), {command, state});
    if (!p.waitForFinished(120000)) {
        p.kill();
        p.waitForFinished();
        return {-1, QStringLiteral("pg-test-server did not finish")};
    }
    return {p.exitStatus() == QProcess::NormalExit ? p.exitCode() : -1,
            QString::fromLocal8Bit(p.readAllStandardError()).trimmed()};
}

QString read_url(const QString& state) {
    QFile f(state);
    if (!f.open(QIODevice::ReadOnly)) return {};
    const QStringList lines = QString::fromUtf8(f.readAll()).split(QLatin1Char('\n'));
    return lines.size() >= 2 ? lines[1].trimmed() : QString();
}

// The socket folder of a URL of the form the script writes.
QString host_of(const QString& url) {
    const qsizetype at = url.indexOf(QLatin1String("host="));
    return at < 0 ? QString() : url.mid(at + 5);
}

bool open_on(const QString& name, const QString& host, const QString& dbname) {
    QSqlDatabase db = QSqlDatabase::contains(name) ? QSqlDatabase::database(name, false)
                                                   : QSqlDatabase::addDatabase(QStringLiteral("QPSQL"), name);
    db.setHostName(host);
    db.setUserName(QStringLiteral("lumora"));
    db.setDatabaseName(dbname);
    return db.open();
}

struct server_state {
    bool tried = false;
    QString url, why, host, dbname;
    QTemporaryDir own_dir;
    QString own_state; // set when this process started the server
};
server_state& state() {
    static server_state s;
    return s;
}

void set_up() {
    server_state& s = state();
    s.tried = true;
    if (!QSqlDatabase::isDriverAvailable(QStringLiteral("QPSQL"))) {
        s.why = QStringLiteral("QtSql's PostgreSQL driver (libqt6sql6-psql) is not installed");
        return;
    }
    QString base = read_url(QStringLiteral(LUMORA_PG_TEST_STATE));
    if (base.isEmpty() || !open_on(admin_name, host_of(base), QStringLiteral("postgres"))) {
        s.own_state = s.own_dir.path() + QStringLiteral("/state");
        const script_result r = run_script(QStringLiteral("start"), s.own_state);
        if (r.code != 0) {
            s.why = r.err.isEmpty() ? QStringLiteral("the test server did not start") : r.err;
            s.own_state.clear();
            return;
        }
        base = read_url(s.own_state);
        if (!open_on(admin_name, host_of(base), QStringLiteral("postgres"))) {
            s.why = QSqlDatabase::database(admin_name, false).lastError().text();
            return;
        }
    }
    s.host = host_of(base);
    s.dbname = QStringLiteral("lumora_%1_%2")
                   .arg(QCoreApplication::applicationPid())
                   .arg(QRandomGenerator::global()->bounded(1000000));
    QSqlQuery q(QSqlDatabase::database(admin_name, false));
    if (!q.exec(QStringLiteral("CREATE DATABASE ") + s.dbname) || !open_on(work_name, s.host, s.dbname)) {
        s.why = q.lastError().text();
        return;
    }
    s.url = QStringLiteral("postgresql://lumora@/%1?host=%2").arg(s.dbname, s.host);
}

class environment : public ::testing::Environment {
public:
    void TearDown() override {
        server_state& s = state();
        if (QSqlDatabase::contains(work_name)) {
            QSqlDatabase::database(work_name, false).close();
            QSqlDatabase::removeDatabase(work_name);
        }
        if (!s.url.isEmpty() && QSqlDatabase::contains(admin_name)) {
            QSqlQuery q(QSqlDatabase::database(admin_name, false));
            q.exec(QStringLiteral("DROP DATABASE IF EXISTS %1 WITH (FORCE)").arg(s.dbname));
        }
        if (QSqlDatabase::contains(admin_name)) {
            QSqlDatabase::database(admin_name, false).close();
            QSqlDatabase::removeDatabase(admin_name);
        }
        if (!s.own_state.isEmpty()) run_script(QStringLiteral("stop"), s.own_state);
    }
};
[[maybe_unused]] const auto* const registered = ::testing::AddGlobalTestEnvironment(new environment);

} // namespace

QString url() {
    if (!state().tried) set_up();
    return state().url;
}

QString why_not() {
    return state().why;
}

void wipe() {
    exec({QStringLiteral("SET client_min_messages TO warning"), QStringLiteral("DROP SCHEMA public CASCADE"),
          QStringLiteral("CREATE SCHEMA public")});
}

void exec(const QStringList& statements) {
    ASSERT_FALSE(url().isEmpty());
    QSqlQuery q(QSqlDatabase::database(work_name, false));
    for (const QString& sql : statements)
        ASSERT_TRUE(q.exec(sql)) << sql.toStdString() << ": " << q.lastError().text().toStdString();
}

own_server::own_server() {
    state_ = dir_.path() + QStringLiteral("/state");
    const script_result r = run_script(QStringLiteral("start"), state_);
    if (r.code == 0)
        url_ = read_url(state_);
    else
        why_ = r.err;
}

own_server::~own_server() {
    if (!url_.isEmpty()) run_script(QStringLiteral("stop"), state_);
}

bool own_server::halt() {
    return run_script(QStringLiteral("halt"), state_).code == 0;
}

bool own_server::resume() {
    return run_script(QStringLiteral("resume"), state_).code == 0;
}

} // namespace pg_test
