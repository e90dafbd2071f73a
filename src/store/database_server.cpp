#include "database_server.h"

#include <QRegularExpression>
#include <QSettings>
#include <QSqlDriver>
#include <QUrl>

namespace lumora {
namespace server_detail {

db_error to_error(const QSqlError& e, const QSqlDriver* driver) {
    const QString why = e.databaseText().isEmpty() ? e.text() : e.databaseText();
    if (driver && driver->dbmsType() == QSqlDriver::PostgreSQL)
        return db_error{why.trimmed(), 0, e.nativeErrorCode(), false};
    return db_error{why, e.nativeErrorCode().toInt()};
}

void exec_or_throw(QSqlQuery& q, const QString& sql, const std::vector<QVariant>& values) {
    // The server prepares only queries and row changes; a statement with nothing to bind (SET,
    // CREATE) runs as it is.
    if (values.empty()) {
        if (!q.exec(sql)) throw to_error(q.lastError(), q.driver());
        return;
    }
    if (!q.prepare(sql)) throw to_error(q.lastError(), q.driver());
    for (std::size_t i = 0; i < values.size(); ++i)
        q.bindValue(static_cast<int>(i), values[i]);
    if (!q.exec()) throw to_error(q.lastError(), q.driver());
}

url_parts parse_url(const QString& url) {
    url_parts p;
    const qsizetype scheme_end = url.indexOf(QLatin1String("://"));
    if (scheme_end < 0 || !is_server_url(url)) {
        p.error = QStringLiteral("not a postgresql:// URL");
        return p;
    }
    QString rest = url.mid(scheme_end + 3);
    QString query;
    if (const qsizetype q = rest.indexOf(QLatin1Char('?')); q >= 0) {
        query = rest.mid(q + 1);
        rest.truncate(q);
    }
    QString authority = rest;
    if (const qsizetype slash = rest.indexOf(QLatin1Char('/')); slash >= 0) {
        authority = rest.left(slash);
        p.dbname = QUrl::fromPercentEncoding(rest.mid(slash + 1).toUtf8());
    }
    if (const qsizetype at = authority.lastIndexOf(QLatin1Char('@')); at >= 0) {
        const QString user_info = authority.left(at);
        authority = authority.mid(at + 1);
        const qsizetype colon = user_info.indexOf(QLatin1Char(':'));
        p.user = QUrl::fromPercentEncoding(user_info.left(colon < 0 ? user_info.size() : colon).toUtf8());
        if (colon >= 0) p.password = QUrl::fromPercentEncoding(user_info.mid(colon + 1).toUtf8());
    }
    // host, host:port, [v6]:port, or a socket folder written %2Fpath.
    QString port_text;
    if (authority.startsWith(QLatin1Char('['))) {
        const qsizetype close = authority.indexOf(QLatin1Char(']'));
        if (close < 0) {
            p.error = QStringLiteral("an unclosed [ in the host");
            return p;
        }
        p.host = authority.mid(1, close - 1);
        if (authority.mid(close + 1).startsWith(QLatin1Char(':'))) port_text = authority.mid(close + 2);
    } else {
        const qsizetype colon = authority.lastIndexOf(QLatin1Char(':'));
        p.host = QUrl::fromPercentEncoding(authority.left(colon < 0 ? authority.size() : colon).toUtf8());
        if (colon >= 0) port_text = authority.mid(colon + 1);
    }
    QStringList options;
    bool has_timeout = false;
    for (const QString& pair : query.split(QLatin1Char('&'), Qt::SkipEmptyParts)) {
        const qsizetype eq = pair.indexOf(QLatin1Char('='));
        const QString key = QUrl::fromPercentEncoding(pair.left(eq < 0 ? pair.size() : eq).toUtf8());
        const QString value = eq < 0 ? QString() : QUrl::fromPercentEncoding(pair.mid(eq + 1).toUtf8());
        if (key == QLatin1String("host"))
            p.host = value;
        else if (key == QLatin1String("port"))
            port_text = value;
        else if (key == QLatin1String("user"))
            p.user = value;
        else if (key == QLatin1String("password"))
            p.password = value;
        else if (key == QLatin1String("dbname"))
            p.dbname = value;
        else {
            if (value.contains(QLatin1Char(';')) || value.contains(QLatin1Char(' ')) ||
                key.contains(QLatin1Char(' '))) {
                p.error = QStringLiteral("the option ") + key +
                          QStringLiteral(" has a value that cannot be passed on");
                return p;
            }
            has_timeout = has_timeout || key == QLatin1String("connect_timeout");
            options << key + QLatin1Char('=') + value;
        }
    }
    // A server that does not answer is given up after a few seconds, not after the system's minutes.
    if (!has_timeout) options << QStringLiteral("connect_timeout=5");
    p.options = options.join(QLatin1Char(';'));
    if (!port_text.isEmpty()) {
        bool ok = false;
        p.port = port_text.toInt(&ok);
        if (!ok || p.port < 1 || p.port > 65535) {
            p.error =
                QStringLiteral("the port ") + port_text + QStringLiteral(" is not a number from 1 to 65535");
            return p;
        }
    }
    return p;
}

namespace {

// Raised each time the tables change shape; a server at this version is not touched on connect.
constexpr int server_version = 1;

int present_version(QSqlQuery& q) {
    exec_or_throw(q, QStringLiteral("SELECT to_regclass('store_version') IS NOT NULL"), {});
    if (!q.next() || !q.value(0).toBool()) return 0;
    exec_or_throw(q, QStringLiteral("SELECT max(Version) FROM store_version"), {});
    return q.next() ? q.value(0).toInt() : 0;
}

} // namespace

void server_tables(QSqlDatabase& db) {
    QSqlQuery q(db);
    // The notes of IF NOT EXISTS ("already exists, skipping") are no news.
    exec_or_throw(q, QStringLiteral("SET client_min_messages TO warning"), {});
    if (present_version(q) >= server_version) return;
    if (!db.transaction()) throw to_error(db.lastError(), db.driver());
    try {
        // Two programs starting at once against a new server: one builds, the other waits and
        // then finds everything in place.
        exec_or_throw(q, QStringLiteral("SELECT pg_advisory_xact_lock(7305210)"), {});
        if (present_version(q) >= server_version) {
            db.commit();
            return;
        }
        exec_or_throw(q, QStringLiteral("SELECT to_regclass('batches') IS NULL"), {});
        const bool new_headers = q.next() && q.value(0).toBool();
        const char* const schema[] = {
            "CREATE TABLE IF NOT EXISTS data (BatchName TEXT, FunctionName TEXT, ParaSeqNo INTEGER, "
            "ParaValue TEXT, ParaType TEXT, DataSet INTEGER)",
            "CREATE TABLE IF NOT EXISTS parameter (BatchName TEXT, FunctionName TEXT, ParaSeqNo INTEGER, "
            "ParaValue TEXT)",
            "CREATE INDEX IF NOT EXISTS data_batch_name ON data (FunctionName, lower(BatchName))",
            "CREATE INDEX IF NOT EXISTS parameter_batch_name ON parameter (FunctionName, lower(BatchName))",
            "CREATE TABLE IF NOT EXISTS batches (BatchId BIGSERIAL PRIMARY KEY, FunctionName TEXT NOT NULL, "
            "BatchName TEXT NOT NULL, ParaType TEXT NOT NULL)",
            // Columns a table from an older program may lack.
            "ALTER TABLE batches ADD COLUMN IF NOT EXISTS SavedBy TEXT",
            "ALTER TABLE batches ADD COLUMN IF NOT EXISTS Host TEXT",
            "ALTER TABLE batches ADD COLUMN IF NOT EXISTS SavedAt TEXT",
            // Deleted batches, header and rows, with who deleted them and when.
            "CREATE TABLE IF NOT EXISTS trash_batches (TrashId BIGSERIAL PRIMARY KEY, FunctionName TEXT, "
            "BatchName TEXT, ParaType TEXT, SavedBy TEXT, Host TEXT, SavedAt TEXT, DeletedBy TEXT, "
            "DeletedHost TEXT, DeletedAt TEXT)",
            "CREATE TABLE IF NOT EXISTS trash_data (TrashId BIGINT, ParaSeqNo INTEGER, ParaValue TEXT, "
            "ParaType TEXT, DataSet INTEGER)",
            "CREATE TABLE IF NOT EXISTS trash_parameter (TrashId BIGINT, ParaSeqNo INTEGER, ParaValue TEXT)",
            "CREATE INDEX IF NOT EXISTS trash_data_id ON trash_data (TrashId)",
            "CREATE INDEX IF NOT EXISTS trash_parameter_id ON trash_parameter (TrashId)",
            "CREATE INDEX IF NOT EXISTS trash_batch_name ON trash_batches (FunctionName, lower(BatchName))",
            "CREATE TABLE IF NOT EXISTS store_version (Version INTEGER)"};
        for (const char* sql : schema)
            exec_or_throw(q, QString::fromLatin1(sql), {});
        if (new_headers) {
            // Rows put on the server before it kept headers get one per batch, so their names
            // stay taken and listed.
            for (
                const char* sql :
                {"INSERT INTO batches (FunctionName,BatchName,ParaType) SELECT FunctionName, min(BatchName), "
                 "'D' FROM data GROUP BY FunctionName, lower(BatchName)",
                 "INSERT INTO batches (FunctionName,BatchName,ParaType) SELECT FunctionName, min(BatchName), "
                 "'P' FROM parameter GROUP BY FunctionName, lower(BatchName)"})
                exec_or_throw(q, QString::fromLatin1(sql), {});
        }
        // The key that decides between two programs saving the same name.
        exec_or_throw(
            q,
            QStringLiteral("CREATE UNIQUE INDEX IF NOT EXISTS batches_key ON batches (FunctionName, "
                           "ParaType, lower(BatchName))"),
            {});
        exec_or_throw(q, QStringLiteral("DELETE FROM store_version"), {});
        exec_or_throw(q, QStringLiteral("INSERT INTO store_version (Version) VALUES (?)"), {server_version});
    } catch (...) {
        db.rollback();
        throw;
    }
    if (!db.commit()) {
        const db_error why = to_error(db.lastError(), db.driver());
        db.rollback();
        throw why;
    }
}

} // namespace server_detail

bool is_server_url(const QString& text) {
    const QString t = text.trimmed();
    return t.startsWith(QLatin1String("postgresql://"), Qt::CaseInsensitive) ||
           t.startsWith(QLatin1String("postgres://"), Qt::CaseInsensitive);
}

QString url_for_display(const QString& url) {
    QString shown = url.trimmed();
    // user:password@ keeps the user; password=... leaves the query.
    static const QRegularExpression user_info(QStringLiteral("^([a-zA-Z]+://[^@/?]*?):[^@/?]*@"));
    shown.replace(user_info, QStringLiteral("\\1@"));
    static const QRegularExpression password_option(QStringLiteral("([?&])password=[^&]*(&|$)"),
                                                    QRegularExpression::CaseInsensitiveOption);
    shown.replace(password_option, QStringLiteral("\\1"));
    if (shown.endsWith(QLatin1Char('&')) || shown.endsWith(QLatin1Char('?'))) shown.chop(1);
    return shown;
}

QString configured_server_url() {
    const QString env = qEnvironmentVariable("LUMORA_DATABASE").trimmed();
    // The environment wins over the settings file; a file path there is the file of the data tool.
    if (!env.isEmpty()) return is_server_url(env) ? env : QString();
    QSettings settings(QSettings::IniFormat, QSettings::UserScope, QStringLiteral("Lumora"),
                       QStringLiteral("Lumora"));
    // A value there that is no server URL is not ignored: connecting to it says what is wrong.
    return settings.value(QStringLiteral("database/url")).toString().trimmed();
}

} // namespace lumora
