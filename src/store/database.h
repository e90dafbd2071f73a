#pragma once
// The database: one SQLite file, Lumora.db, in the data folder, one connection kept open.
// Statements keep their shape and take their values as bound parameters, never pasted in.
#include <QString>
#include <QVariant>
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

// Opens (creating if needed) the database in the data folder. A new file gets the tables and the
// delivered rows of the system table. Returns "" or why it failed.
QString db_open();
// Opens a database file at an explicit path; `seed_delivery` false leaves a new file's tables empty.
QString db_open_file(const QString& path, bool seed_delivery);
void db_close();
bool db_is_open();

// A query with bound values; a failing statement throws db_error.
record_set db_query(const QString& sql, const std::vector<QVariant>& values = {});
// A statement with bound values; throws db_error when it fails.
void db_execute(const QString& sql, const std::vector<QVariant>& values = {});

struct db_error {
    QString what;
};

// All statements run inside `body` commit together, or none of them does (body threw).
template <class F> void db_transaction(F&& body);
void db_begin();
void db_commit();
void db_rollback();

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
