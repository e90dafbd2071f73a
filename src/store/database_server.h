#pragma once
// Inside the store: the server URL taken apart, and the server's tables.
#include "database.h"

#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QString>

namespace lumora::server_detail {

// The fault of a statement or a connection: SQLite's result code from the file, the SQLSTATE from
// the server.
db_error to_error(const QSqlError& e, const QSqlDriver* driver);
// Prepares `sql`, binds `values` in order and runs it; throws db_error.
void exec_or_throw(QSqlQuery& q, const QString& sql, const std::vector<QVariant>& values);

// The parts of a postgresql:// URL, percent-decoding done. `options` are the other libpq keywords
// ("sslmode=require;connect_timeout=5"), as QtSql's driver takes them.
struct url_parts {
    QString host, user, password, dbname, options;
    int port = -1;
    QString error; // "" for a URL that could be read
};
url_parts parse_url(const QString& url);

// Creates the batch tables, their keys and the trash on the server when missing, and brings an
// older set of tables up to date. Throws db_error.
void server_tables(QSqlDatabase& db);

} // namespace lumora::server_detail
