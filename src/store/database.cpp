#include "database.h"

#include <QDir>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QSqlRecord>
#include <QStandardPaths>

namespace lumora {
namespace {

const QString connection_name = QStringLiteral("lumora");

QSqlDatabase connection() {
    return QSqlDatabase::database(connection_name, false);
}

void exec_or_throw(QSqlQuery& q, const QString& sql, const std::vector<QVariant>& values) {
    if (!q.prepare(sql)) throw db_error{q.lastError().text()};
    for (std::size_t i = 0; i < values.size(); ++i)
        q.bindValue(static_cast<int>(i), values[i]);
    if (!q.exec()) throw db_error{q.lastError().text()};
}

void create_tables(QSqlDatabase& db, bool seed_delivery) {
    QSqlQuery q(db);
    const bool had_system = db.tables().contains(QStringLiteral("system"));
    exec_or_throw(
        q, QStringLiteral("CREATE TABLE IF NOT EXISTS system (ParaName TEXT COLLATE NOCASE, ParaValue TEXT)"),
        {});
    exec_or_throw(
        q,
        QStringLiteral(
            "CREATE TABLE IF NOT EXISTS data (BatchName TEXT, FunctionName TEXT, ParaSeqNo INTEGER, "
            "ParaValue TEXT, ParaType TEXT, DataSet INTEGER)"),
        {});
    exec_or_throw(q,
                  QStringLiteral("CREATE TABLE IF NOT EXISTS parameter (BatchName TEXT, FunctionName TEXT, "
                                 "ParaSeqNo INTEGER, ParaValue TEXT)"),
                  {});
    exec_or_throw(
        q, QStringLiteral("CREATE INDEX IF NOT EXISTS data_batch ON data (FunctionName, BatchName)"), {});
    exec_or_throw(
        q,
        QStringLiteral("CREATE INDEX IF NOT EXISTS parameter_batch ON parameter (FunctionName, BatchName)"),
        {});
    exec_or_throw(q, QStringLiteral("CREATE INDEX IF NOT EXISTS system_name ON system (ParaName)"), {});
    if (!had_system && seed_delivery) {
        // The rows a delivered database carries.
        const std::pair<const char*, const char*> delivered[] = {
            {"Corporation Name", "Lumora Instruments"},
            {"Product Name", "Lumora UV/Vis Spectrophotometer"},
            {"Software Name", "Lumora"},
            {"Default WL", "500"}};
        for (const auto& [name, value] : delivered)
            exec_or_throw(q, QStringLiteral("INSERT INTO system (ParaName,ParaValue) VALUES (?,?)"),
                          {QString::fromLatin1(name), QString::fromLatin1(value)});
    }
}

} // namespace

QString record_set::Fields(int i) const {
    if (pos_ >= rows_.size() || i < 0 || static_cast<std::size_t>(i) >= rows_[pos_].size()) return {};
    return rows_[pos_][static_cast<std::size_t>(i)].toString();
}

QString data_folder() {
    QString dir = qEnvironmentVariable("LUMORA_DATA_DIR");
    if (dir.isEmpty()) {
        dir = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation);
        if (dir.isEmpty()) dir = QDir::homePath() + QStringLiteral("/.local/share");
        dir += QStringLiteral("/Lumora");
    }
    QDir().mkpath(dir);
    return dir;
}

QString db_open() {
    return db_open_file(data_folder() + QStringLiteral("/Lumora.db"), true);
}

QString db_open_file(const QString& path, bool seed_delivery) {
    db_close();
    {
        QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), connection_name);
        db.setDatabaseName(path);
        if (!db.open())
            return db.lastError().text().isEmpty() ? QStringLiteral("cannot open ") + path
                                                   : db.lastError().text();
        try {
            QSqlQuery q(db);
            exec_or_throw(q, QStringLiteral("PRAGMA journal_mode=WAL"), {});
            exec_or_throw(q, QStringLiteral("PRAGMA busy_timeout=3000"), {});
            create_tables(db, seed_delivery);
        } catch (const db_error& e) {
            db.close();
            return e.what;
        }
    }
    return {};
}

void db_close() {
    if (!QSqlDatabase::contains(connection_name)) return;
    {
        QSqlDatabase db = connection();
        if (db.isOpen()) db.close();
    }
    QSqlDatabase::removeDatabase(connection_name);
}

bool db_is_open() {
    return QSqlDatabase::contains(connection_name) && connection().isOpen();
}

record_set db_query(const QString& sql, const std::vector<QVariant>& values) {
    QSqlDatabase db = connection();
    if (!db.isOpen()) throw db_error{QStringLiteral("the database is not open")};
    QSqlQuery q(db);
    q.setForwardOnly(true);
    exec_or_throw(q, sql, values);
    record_set rs;
    const int fields = q.record().count();
    while (q.next()) {
        std::vector<QVariant> row;
        row.reserve(static_cast<std::size_t>(fields));
        for (int i = 0; i < fields; ++i)
            row.push_back(q.value(i));
        rs.rows_.push_back(std::move(row));
    }
    return rs;
}

void db_execute(const QString& sql, const std::vector<QVariant>& values) {
    QSqlDatabase db = connection();
    if (!db.isOpen()) throw db_error{QStringLiteral("the database is not open")};
    QSqlQuery q(db);
    exec_or_throw(q, sql, values);
}

void db_begin() {
    if (!connection().transaction()) throw db_error{connection().lastError().text()};
}
void db_commit() {
    if (!connection().commit()) {
        const QString why = connection().lastError().text();
        connection().rollback();
        throw db_error{why};
    }
}
void db_rollback() {
    connection().rollback();
}

} // namespace lumora
