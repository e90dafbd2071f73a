#pragma once
// The database: one SQLite file, Lumora.db, in the data folder, one connection kept open; and, when
// a lab shares its batches, a PostgreSQL server that holds the batch tables (batches, data,
// parameter and their trash) for every program pointed at it. The system table (baseline, default
// wavelength, port) and the verification runs belong to one instrument and stay in the file.
// Statements keep their shape and take their values as bound parameters, never pasted in.
#include <QString>
#include <QVariant>
#include <functional>
#include <vector>

namespace lumora {

// A static, read-only result: every row fetched at once, walked forward.
class record_set {
public:
    int RecordCount() const { return static_cast<int>(rows_.size()); }
    bool EOF_() const { return pos_ >= rows_.size(); }
    void MoveNext() { ++pos_; }
    // Field i of the current row, as text; "" past the end.
    QString Fields(int i) const;
    std::vector<std::vector<QVariant>> rows_;

private:
    std::size_t pos_ = 0;
};

// The data folder: LUMORA_DATA_DIR, else the per-user application data folder. Created if missing.
QString data_folder();

// Lumora.db in the data folder.
QString db_path();

struct db_error {
    db_error() = default;
    db_error(QString what_, int code_ = 0, QString state_ = {}, bool no_server_ = false)
        : what(std::move(what_)), code(code_), state(std::move(state_)), no_server(no_server_) {}
    QString what;           // the database's own words: "database is locked", "file is not a database"
    int code = 0;           // SQLite's result code, 0 when the fault is not the file's
    QString state;          // the server's SQLSTATE ("23505"), "" when the fault is not the server's
    bool no_server = false; // the server could not be reached, or the connection was lost
    // Another program holds a lock on the file: the same write may succeed a moment later.
    bool locked() const { return state.isEmpty() && ((code & 0xff) == 5 || (code & 0xff) == 6); }
    // The file is not a database, or a damaged one: nothing in it can be trusted.
    bool unreadable() const { return state.isEmpty() && ((code & 0xff) == 11 || (code & 0xff) == 26); }
    // A unique key refused the row: another program took the same key first.
    bool duplicate() const { return state == QLatin1String("23505") || code == 2067 || code == 1555; }
    bool unreachable() const { return no_server; }
};

// Opens (creating if needed) the database in the data folder. A new file gets the tables and the
// delivered rows of the system table. Returns "" or why it failed.
QString db_open();
// Opens a database file at an explicit path; `seed_delivery` false leaves a new file's tables empty.
// `read_only` opens it as a file that cannot be written (the tables are then not created).
QString db_open_file(const QString& path, bool seed_delivery, bool read_only = false);
// The fault of the last failed open, with its code.
const db_error& db_open_failure();
// Closes the file's connection (and drops every pending retry, db_write_retrying) and the server's.
void db_close();
bool db_is_open();

// The shared server: a postgresql:// (or postgres://) URL, libpq's form. The password comes the
// libpq way (~/.pgpass, PGPASSFILE, PGPASSWORD); one written in the URL is used but never shown.
bool is_server_url(const QString& text);
// The URL as it may be shown: without its password.
QString url_for_display(const QString& url);
// LUMORA_DATABASE when it is a server URL, else `url` in the [database] section of the settings
// file; "" when neither names a server (the batches stay in the file).
QString configured_server_url();
// Points the batch tables at the server of `url` and connects: the tables are created when missing
// and brought up to date. Returns "" or why it could not connect; the URL stays in force either
// way, and every later batch action connects again when there is no connection.
QString db_open_server(const QString& url);
bool db_on_server();         // a server URL is in force
QString db_server_display(); // its URL without the password, "" for none
QString db_server_failure(); // why the last connection failed, "" once connected

// While one is alive, the statements of this thread go to where the batches live: the server when
// one is in force, else the file. The batch functions open one; everything else stays on the file.
class batch_scope {
public:
    batch_scope();
    ~batch_scope();
    batch_scope(const batch_scope&) = delete;
    batch_scope& operator=(const batch_scope&) = delete;
};
// The statements of the moment go to the server.
bool db_target_is_server();

// What the user reads of a fault of the batch store: "The database is not reachable: <reason>"
// for a server that cannot be reached, else `otherwise` followed by the reason.
QString store_fault_text(const db_error& e, const QString& otherwise);

// Where a file that cannot be used is moved: "<name>-<yyyy-MM-dd>.db" beside it, or
// "<name>-<yyyy-MM-dd>-2.db" and so on when that is taken.
QString db_aside_path(const QString& path);
// Renames the file at `path` and its -wal and -shm companions to `target`; nothing is deleted.
// Returns "" or why it failed.
QString db_move_aside(const QString& path, const QString& target);

// A query with bound values; a failing statement throws db_error.
record_set db_query(const QString& sql, const std::vector<QVariant>& values = {});
// A statement with bound values; throws db_error when it fails.
void db_execute(const QString& sql, const std::vector<QVariant>& values = {});

// Inserts `rows` rows into `table`, many rows to a statement: the `fixed` columns take the same
// value in every row (bound once a statement), the `varying` columns of row r and column c take
// `value(r, c)`. The server gets each varying column as one array in one statement. Throws at the
// first failure; run it inside a transaction to keep it whole.
struct fixed_column {
    QString name;
    QVariant value;
};
void db_insert_rows(const QString& table, const std::vector<fixed_column>& fixed, const QStringList& varying,
                    std::size_t rows, const std::function<QVariant(std::size_t row, int column)>& value);

// All statements run inside `body` commit together, or none of them does (body threw).
template <class F> void db_transaction(F&& body);
void db_begin();
void db_commit();
void db_rollback();

// Runs `body` in one transaction now and, while another program's lock keeps the file busy, again
// from the event loop every few hundred milliseconds for up to five seconds; the window stays live
// in between. `done` gets "" once written, or the reason of the last failure. A new write under the
// same `key` replaces one still waiting.
void db_write_retrying(const QString& key, std::function<void()> body,
                       std::function<void(const QString& why)> done);
bool db_write_pending(const QString& key);

template <class F> void db_transaction(F&& body) {
    db_begin();
    try {
        body();
    } catch (...) {
        db_rollback();
        throw;
    }
    db_commit();
}

} // namespace lumora
