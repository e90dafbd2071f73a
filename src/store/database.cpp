#include "database.h"

#include "database_server.h"

#include <QDate>
#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSqlDatabase>
#include <QSqlDriver>
#include <QSqlError>
#include <QSqlQuery>
#include <QSqlRecord>
#include <QStandardPaths>
#include <QTimer>
#include <algorithm>
#include <map>

namespace lumora {
namespace {

const QString connection_name = QStringLiteral("lumora");
const QString server_connection_name = QStringLiteral("lumora-server");

// A statement waits this long for another program's lock before it gives up; longer waits are
// retries from the event loop (db_write_retrying), so the window never hangs on a lock.
constexpr int busy_timeout_ms = 100;
constexpr int retry_interval_ms = 250;
constexpr int retry_for_ms = 5000;

db_error last_open_failure;

QSqlDatabase connection() {
    return QSqlDatabase::database(connection_name, false);
}

using server_detail::exec_or_throw;

db_error to_error(const QSqlError& e, const QSqlDatabase& db) {
    return server_detail::to_error(e, db.driver());
}

// Creates the tables and indexes that are missing; a complete file is not written at all, so a
// read-only one opens as well.
void create_tables(QSqlDatabase& db, bool seed_delivery) {
    QSqlQuery q(db);
    exec_or_throw(q, QStringLiteral("SELECT name FROM sqlite_master"), {});
    QStringList present;
    while (q.next())
        present << q.value(0).toString();
    const std::pair<const char*, const char*> schema[] = {
        {"system", "CREATE TABLE system (ParaName TEXT COLLATE NOCASE, ParaValue TEXT)"},
        {"data", "CREATE TABLE data (BatchName TEXT, FunctionName TEXT, ParaSeqNo INTEGER, ParaValue TEXT, "
                 "ParaType TEXT, DataSet INTEGER)"},
        {"parameter",
         "CREATE TABLE parameter (BatchName TEXT, FunctionName TEXT, ParaSeqNo INTEGER, ParaValue TEXT)"},
        {"system_name", "CREATE INDEX system_name ON system (ParaName)"},
        // Batch names compare without case, as the rows are looked up by them.
        {"data_batch_name", "CREATE INDEX data_batch_name ON data (FunctionName, BatchName COLLATE NOCASE)"},
        {"parameter_batch_name",
         "CREATE INDEX parameter_batch_name ON parameter (FunctionName, BatchName COLLATE NOCASE)"},
        {"verification", "CREATE TABLE verification (RunTime TEXT, Operator TEXT, CheckName TEXT, "
                         "Reference TEXT, Tolerance TEXT, Value REAL, Verdict TEXT, FullRun INTEGER, "
                         "RawPoints TEXT)"}};
    for (const auto& [name, sql] : schema)
        if (!present.contains(QString::fromLatin1(name), Qt::CaseInsensitive))
            exec_or_throw(q, QString::fromLatin1(sql), {});
    // The batch indexes of an older file compared names with case; the ones above replace them,
    // and each index less is one less to keep on every row a save writes.
    for (const char* old_index : {"data_batch", "parameter_batch"})
        if (present.contains(QString::fromLatin1(old_index), Qt::CaseInsensitive))
            exec_or_throw(q, QStringLiteral("DROP INDEX %1").arg(QString::fromLatin1(old_index)), {});
    if (!present.contains(QStringLiteral("batches"), Qt::CaseInsensitive)) {
        // One header per stored batch. A file from before the headers gets one for every batch its
        // rows hold, so the names already used stay taken and listed.
        exec_or_throw(q,
                      QStringLiteral("CREATE TABLE batches (FunctionName TEXT COLLATE NOCASE, BatchName TEXT "
                                     "COLLATE NOCASE, ParaType TEXT, SavedBy TEXT, Host TEXT, SavedAt TEXT, "
                                     "UNIQUE (FunctionName, ParaType, BatchName))"),
                      {});
        exec_or_throw(q,
                      QStringLiteral("INSERT OR IGNORE INTO batches (FunctionName,BatchName,ParaType) SELECT "
                                     "FunctionName, min(BatchName), 'D' FROM data GROUP BY FunctionName, "
                                     "BatchName COLLATE NOCASE"),
                      {});
        exec_or_throw(
            q,
            QStringLiteral("INSERT OR IGNORE INTO batches (FunctionName,BatchName,ParaType) SELECT "
                           "FunctionName, min(BatchName), 'P' FROM parameter GROUP BY FunctionName, "
                           "BatchName COLLATE NOCASE"),
            {});
        // The version row names the shape for other tools; a bare test file keeps an empty system table.
        if (seed_delivery || present.contains(QStringLiteral("system"), Qt::CaseInsensitive)) {
            exec_or_throw(q, QStringLiteral("DELETE FROM system WHERE ParaName='Store Version'"), {});
            exec_or_throw(
                q, QStringLiteral("INSERT INTO system (ParaName,ParaValue) VALUES ('Store Version','2')"),
                {});
        }
    }
    if (!present.contains(QStringLiteral("system"), Qt::CaseInsensitive) && seed_delivery) {
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

struct pending_write {
    std::uint64_t id = 0;
    QDeadlineTimer give_up;
    std::function<void()> body;
    std::function<void(const QString&)> done;
};
std::map<QString, pending_write>& pending_writes() {
    static std::map<QString, pending_write> writes;
    return writes;
}
std::uint64_t next_write_id = 0;

void attempt_write(const QString& key, std::uint64_t id) {
    auto& writes = pending_writes();
    auto it = writes.find(key);
    if (it == writes.end() || it->second.id != id) return; // replaced, or the database was closed
    const auto body = it->second.body;
    const bool last_try = it->second.give_up.hasExpired();
    QString why;
    try {
        db_transaction(body);
    } catch (const db_error& e) {
        if (e.locked() && !last_try) {
            QTimer::singleShot(retry_interval_ms, [key, id] { attempt_write(key, id); });
            return;
        }
        why = e.what.isEmpty() ? QStringLiteral("unknown database fault") : e.what;
    }
    it = writes.find(key);
    if (it == writes.end() || it->second.id != id) return;
    const auto done = std::move(it->second.done);
    writes.erase(it);
    if (done) done(why);
}

void insert_rows_file(QSqlDatabase& db, const QString& table, const std::vector<fixed_column>& fixed,
                      const QStringList& varying, std::size_t rows,
                      const std::function<QVariant(std::size_t row, int column)>& value) {
    const int width = static_cast<int>(varying.size());
    // Well below the 999 parameters an older SQLite allows in one statement.
    const std::size_t per_statement = static_cast<std::size_t>(std::max(1, 900 / width));
    QStringList names, picks;
    for (const fixed_column& f : fixed) {
        names << f.name;
        picks << QStringLiteral("?");
    }
    for (int c = 1; c <= width; ++c) {
        names << varying[c - 1];
        picks << QStringLiteral("column%1").arg(c);
    }
    // INSERT ... SELECT ?, ?, column1, column2 FROM (VALUES (?,?),(?,?),...): the fixed values
    // once, the rows after them.
    const QString head = QStringLiteral("INSERT INTO %1 (%2) SELECT %3 FROM (VALUES ")
                             .arg(table, names.join(QLatin1Char(',')), picks.join(QLatin1Char(',')));
    const QString tuple =
        QLatin1Char('(') + QStringList(width, QStringLiteral("?")).join(QLatin1Char(',')) + QLatin1Char(')');
    QSqlQuery q(db);
    std::size_t prepared_for = 0;
    for (std::size_t first = 0; first < rows; first += per_statement) {
        const std::size_t n = std::min(per_statement, rows - first);
        if (n != prepared_for) {
            if (!q.prepare(head + QStringList(static_cast<int>(n), tuple).join(QLatin1Char(',')) +
                           QLatin1Char(')')))
                throw to_error(q.lastError(), db);
            prepared_for = n;
        }
        int at = 0;
        for (const fixed_column& f : fixed)
            q.bindValue(at++, f.value);
        for (std::size_t r = first; r < first + n; ++r)
            for (int c = 0; c < width; ++c)
                q.bindValue(at++, value(r, c));
        if (!q.exec()) throw to_error(q.lastError(), db);
    }
}

// The types of a server table's columns by lower-case name, read once per connection.
std::map<QString, std::map<QString, QString>> server_column_types;

const std::map<QString, QString>& column_types(QSqlDatabase& db, const QString& table) {
    auto it = server_column_types.find(table);
    if (it != server_column_types.end()) return it->second;
    QSqlQuery q(db);
    exec_or_throw(q,
                  QStringLiteral("SELECT attname, format_type(atttypid, atttypmod) FROM pg_attribute WHERE "
                                 "attrelid = to_regclass(?) AND attnum > 0 AND NOT attisdropped"),
                  {table.toLower()});
    std::map<QString, QString> types;
    while (q.next())
        types[q.value(0).toString().toLower()] = q.value(1).toString();
    return server_column_types[table] = std::move(types);
}

// One element of an array literal: NULL, or the text in double quotes with \ and " escaped.
void append_element(QString& out, const QVariant& v) {
    if (v.isNull()) {
        out += QLatin1String("NULL");
        return;
    }
    const QString text =
        v.typeId() == QMetaType::Double ? QString::number(v.toDouble(), 'g', 17) : v.toString();
    out += QLatin1Char('"');
    for (const QChar c : text) {
        if (c == QLatin1Char('"') || c == QLatin1Char('\\')) out += QLatin1Char('\\');
        out += c;
    }
    out += QLatin1Char('"');
}

// The server takes every row of a column as one array, and unnest() turns the arrays back into
// rows: one statement and a handful of bound values however many rows there are, instead of a
// value per cell for the server to parse.
void insert_rows_server(QSqlDatabase& db, const QString& table, const std::vector<fixed_column>& fixed,
                        const QStringList& varying, std::size_t rows,
                        const std::function<QVariant(std::size_t row, int column)>& value) {
    const int width = static_cast<int>(varying.size());
    const auto& types = column_types(db, table);
    QStringList names, picks, arrays;
    for (const fixed_column& f : fixed) {
        names << f.name;
        picks << QStringLiteral("?");
    }
    for (int c = 0; c < width; ++c) {
        const auto type = types.find(varying[c].toLower());
        if (type == types.end())
            throw db_error{QStringLiteral("the server's table %1 has no column %2").arg(table, varying[c])};
        names << varying[c];
        arrays << QStringLiteral("?::%1[]").arg(type->second);
    }
    const QString sql = QStringLiteral("INSERT INTO %1 (%2) SELECT %3 FROM unnest(%4)")
                            .arg(table, names.join(QLatin1Char(',')),
                                 (picks + QStringList{QStringLiteral("*")}).join(QLatin1Char(',')),
                                 arrays.join(QLatin1Char(',')));
    std::vector<QVariant> values;
    for (const fixed_column& f : fixed)
        values.push_back(f.value);
    for (int c = 0; c < width; ++c) {
        QString array;
        array.reserve(static_cast<qsizetype>(rows) * 12);
        array += QLatin1Char('{');
        for (std::size_t r = 0; r < rows; ++r) {
            if (r) array += QLatin1Char(',');
            append_element(array, value(r, c));
        }
        array += QLatin1Char('}');
        values.push_back(array);
    }
    QSqlQuery q(db);
    exec_or_throw(q, sql, values);
}

// The file's connection goes, and with it every retry still waiting for it.
void close_file() {
    pending_writes().clear();
    if (!QSqlDatabase::contains(connection_name)) return;
    {
        QSqlDatabase db = connection();
        if (db.isOpen()) db.close();
    }
    QSqlDatabase::removeDatabase(connection_name);
}

// The shared server, when a URL names one.
struct server_link {
    QString url, display;
    QString failure; // why the last connection failed
    bool in_transaction = false;
};
server_link server;
int scope_depth = 0;

bool db_target_is_server_now() {
    return scope_depth > 0 && !server.url.isEmpty();
}

QString first_line(const QString& text) {
    const QString t = text.trimmed();
    const qsizetype nl = t.indexOf(QLatin1Char('\n'));
    return (nl < 0 ? t : t.left(nl)).trimmed();
}

void close_server() {
    server = {};
    if (!QSqlDatabase::contains(server_connection_name)) return;
    {
        QSqlDatabase db = QSqlDatabase::database(server_connection_name, false);
        if (db.isOpen()) db.close();
    }
    QSqlDatabase::removeDatabase(server_connection_name);
}

// Connects to the server of the URL in force, or throws why not (as one that cannot be reached).
void connect_server() {
    QSqlDatabase db;
    if (QSqlDatabase::contains(server_connection_name)) {
        db = QSqlDatabase::database(server_connection_name, false);
    } else {
        if (!QSqlDatabase::isDriverAvailable(QStringLiteral("QPSQL"))) {
            server.failure = QStringLiteral("QtSql's PostgreSQL driver (QPSQL) is not installed");
            throw db_error{server.failure, 0, {}, true};
        }
        const server_detail::url_parts parts = server_detail::parse_url(server.url);
        if (!parts.error.isEmpty()) {
            server.failure = server.display + QStringLiteral(": ") + parts.error;
            throw db_error{server.failure, 0, {}, true};
        }
        db = QSqlDatabase::addDatabase(QStringLiteral("QPSQL"), server_connection_name);
        db.setHostName(parts.host);
        if (parts.port > 0) db.setPort(parts.port);
        db.setUserName(parts.user);
        db.setPassword(parts.password);
        db.setDatabaseName(parts.dbname);
        db.setConnectOptions(parts.options);
    }
    if (!db.open()) {
        QString why = first_line(db.lastError().databaseText());
        if (why.isEmpty()) why = first_line(db.lastError().text());
        server.failure = why + QStringLiteral(" (") + server.display + QLatin1Char(')');
        throw db_error{server.failure, 0, db.lastError().nativeErrorCode(), true};
    }
    try {
        server_detail::server_tables(db);
    } catch (const db_error& e) {
        db.close();
        server.failure = e.what;
        throw;
    }
    server.failure.clear();
    server.in_transaction = false;
    server_column_types.clear();
}

// A statement that failed for want of a connection: the server went away or threw this session
// out. Neither says anything about the statement itself.
bool looks_lost(const db_error& e) {
    return e.no_server || e.state.isEmpty() || e.state.startsWith(QLatin1String("08")) ||
           e.state.startsWith(QLatin1String("57P0"));
}

// Closes a connection found dead; the next database action connects again.
void lose_server(db_error& e) {
    e.no_server = true;
    e.what = first_line(e.what);
    if (e.what.isEmpty()) e.what = QStringLiteral("the connection to the server was lost");
    server.failure = e.what;
    if (!QSqlDatabase::contains(server_connection_name)) return;
    QSqlDatabase db = QSqlDatabase::database(server_connection_name, false);
    if (db.isOpen()) db.close();
}

QSqlDatabase current_connection() {
    return db_target_is_server_now() ? QSqlDatabase::database(server_connection_name, false) : connection();
}

QSqlDatabase open_target() {
    if (!db_target_is_server_now()) {
        QSqlDatabase db = connection();
        if (!db.isOpen()) throw db_error{QStringLiteral("the database is not open")};
        return db;
    }
    QSqlDatabase db = QSqlDatabase::database(server_connection_name, false);
    if (db.isValid() && db.isOpen()) return db;
    connect_server();
    return QSqlDatabase::database(server_connection_name, false);
}

// Runs `statement` on where the statements of the moment go. On the server a connection found
// dead is opened again and the statement tried once more, unless a transaction was under way
// (its first statements went with the old connection).
void on_target(const std::function<void(QSqlDatabase&)>& statement) {
    QSqlDatabase db = open_target();
    if (!db_target_is_server_now()) return statement(db);
    try {
        return statement(db);
    } catch (db_error& e) {
        if (!looks_lost(e)) throw;
        lose_server(e);
        if (server.in_transaction) throw;
    }
    QSqlDatabase again = open_target();
    try {
        statement(again);
    } catch (db_error& e) {
        if (looks_lost(e)) lose_server(e);
        throw;
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

QString db_path() {
    return data_folder() + QStringLiteral("/Lumora.db");
}

QString db_open() {
    return db_open_file(db_path(), true);
}

QString db_open_file(const QString& path, bool seed_delivery, bool read_only) {
    close_file();
    last_open_failure = {};
    {
        QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), connection_name);
        db.setDatabaseName(path);
        if (read_only) db.setConnectOptions(QStringLiteral("QSQLITE_OPEN_READONLY"));
        if (!db.open()) {
            last_open_failure = to_error(db.lastError(), db);
            if (last_open_failure.what.isEmpty())
                last_open_failure.what = QStringLiteral("cannot open ") + path;
            return last_open_failure.what;
        }
        try {
            QSqlQuery q(db);
            exec_or_throw(q, QStringLiteral("PRAGMA busy_timeout=%1").arg(busy_timeout_ms), {});
            // Reading the schema first tells a file that is not a database from one that is.
            exec_or_throw(q, QStringLiteral("SELECT count(*) FROM sqlite_master"), {});
            if (!read_only) {
                try {
                    exec_or_throw(q, QStringLiteral("PRAGMA journal_mode=WAL"), {});
                } catch (const db_error& e) {
                    // A file that cannot be written keeps its journal; reading it is still fine.
                    if (e.unreadable()) throw;
                }
                try {
                    create_tables(db, seed_delivery);
                } catch (const db_error& e) {
                    // A file that cannot be written opens as it is, for reading; what it lacks
                    // (the batch headers of an older file) makes saves fail with their reason.
                    if ((e.code & 0xff) != 8) throw;
                }
            }
        } catch (const db_error& e) {
            db.close();
            last_open_failure = e;
            return e.what;
        }
    }
    return {};
}

const db_error& db_open_failure() {
    return last_open_failure;
}

QString db_aside_path(const QString& path) {
    const QFileInfo file(path);
    const QString stem = file.dir().filePath(file.completeBaseName() + QLatin1Char('-') +
                                             QDate::currentDate().toString(QStringLiteral("yyyy-MM-dd")));
    const QString suffix = file.suffix().isEmpty() ? QString() : QLatin1Char('.') + file.suffix();
    QString target = stem + suffix;
    for (int n = 2; QFileInfo::exists(target) || QFileInfo::exists(target + QStringLiteral("-wal")) ||
                    QFileInfo::exists(target + QStringLiteral("-shm"));
         ++n)
        target = stem + QLatin1Char('-') + QString::number(n) + suffix;
    return target;
}

QString db_move_aside(const QString& path, const QString& target) {
    QFile db_file(path);
    if (!db_file.rename(target)) return db_file.errorString();
    // A journal left beside a new file would be replayed into it: the companions move too.
    for (const char* companion : {"-wal", "-shm"}) {
        const QString from = path + QLatin1String(companion);
        if (QFileInfo::exists(from) && !QFile::rename(from, target + QLatin1String(companion)))
            return QStringLiteral("cannot rename ") + from;
    }
    return {};
}

void db_close() {
    close_file();
    close_server();
}

bool db_is_open() {
    return QSqlDatabase::contains(connection_name) && connection().isOpen();
}

QString db_open_server(const QString& url) {
    close_server();
    server.url = url.trimmed();
    server.display = url_for_display(server.url);
    try {
        connect_server();
    } catch (const db_error& e) {
        return e.what;
    }
    return {};
}

bool db_on_server() {
    return !server.url.isEmpty();
}
QString db_server_display() {
    return server.display;
}
QString db_server_failure() {
    return server.failure;
}

batch_scope::batch_scope() {
    ++scope_depth;
}
batch_scope::~batch_scope() {
    --scope_depth;
}
bool db_target_is_server() {
    return db_target_is_server_now();
}

QString store_fault_text(const db_error& e, const QString& otherwise) {
    const QString why = e.what.isEmpty() ? QStringLiteral("unknown database fault") : e.what;
    return (e.unreachable() ? QStringLiteral("The database is not reachable: ") : otherwise) + why;
}

record_set db_query(const QString& sql, const std::vector<QVariant>& values) {
    record_set rs;
    on_target([&](QSqlDatabase& db) {
        QSqlQuery q(db);
        q.setForwardOnly(true);
        exec_or_throw(q, sql, values);
        rs.rows_.clear();
        const int fields = q.record().count();
        while (q.next()) {
            std::vector<QVariant> row;
            row.reserve(static_cast<std::size_t>(fields));
            for (int i = 0; i < fields; ++i)
                row.push_back(q.value(i));
            rs.rows_.push_back(std::move(row));
        }
    });
    return rs;
}

void db_execute(const QString& sql, const std::vector<QVariant>& values) {
    on_target([&](QSqlDatabase& db) {
        QSqlQuery q(db);
        exec_or_throw(q, sql, values);
    });
}

void db_insert_rows(const QString& table, const std::vector<fixed_column>& fixed, const QStringList& varying,
                    std::size_t rows, const std::function<QVariant(std::size_t row, int column)>& value) {
    const int width = static_cast<int>(varying.size());
    if (width == 0 || rows == 0) return;
    on_target([&](QSqlDatabase& db) {
        if (db.driver()->dbmsType() == QSqlDriver::PostgreSQL)
            insert_rows_server(db, table, fixed, varying, rows, value);
        else
            insert_rows_file(db, table, fixed, varying, rows, value);
    });
}

void db_begin() {
    on_target([](QSqlDatabase& db) {
        if (!db.transaction()) throw to_error(db.lastError(), db);
    });
    if (db_target_is_server()) server.in_transaction = true;
}
void db_commit() {
    QSqlDatabase db = current_connection();
    const bool on_server = db_target_is_server();
    if (!db.commit()) {
        db_error why = to_error(db.lastError(), db);
        if (db.isOpen()) db.rollback();
        if (on_server) {
            server.in_transaction = false;
            if (looks_lost(why)) lose_server(why);
        }
        throw why;
    }
    if (on_server) server.in_transaction = false;
}
void db_rollback() {
    QSqlDatabase db = current_connection();
    if (db.isOpen()) db.rollback();
    if (db_target_is_server()) server.in_transaction = false;
}

void db_write_retrying(const QString& key, std::function<void()> body,
                       std::function<void(const QString& why)> done) {
    const std::uint64_t id = ++next_write_id;
    pending_writes()[key] = pending_write{id, QDeadlineTimer(retry_for_ms), std::move(body), std::move(done)};
    attempt_write(key, id);
}

bool db_write_pending(const QString& key) {
    return pending_writes().count(key) > 0;
}

} // namespace lumora
