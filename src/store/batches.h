#pragma once
// Stored batches: a function's results ("D", table data) or its setup ("P", table parameter) under
// a name the user chose. Each batch has one header row in `batches`, written with its rows in one
// transaction; the header is the test whether a name is taken and the load dialog's list. Names
// compare without case. The rows keep their positional layouts: the function folders write and
// read them, this file only moves them.
#include <QDateTime>
#include <QString>
#include <vector>

namespace lumora {

// One stored value. `type` is "P", "D" or "V" in a result batch; `set` the curve number of a curve
// row, 0 for none. `seq` is the position, or the wavelength in a Spectrum curve row.
struct batch_row {
    QString type;
    int seq = 0;
    QString value;
    int set = 0;
};

enum class batch_kind { data, parameter }; // "D" and "P" of the load dialog

// "PHOTOMETRY", "SPECTRUM", ... for a function that stores batches; "" for any other.
QString batch_function_name(int function_id);

// The rules of a new name. Up to 19 characters only 0-9, A-Z, a-z, "-" and "_" pass; exactly 20
// characters pass unchecked.
enum class name_verdict { ok, blank, over_20, not_alphanumeric };
name_verdict check_batch_name(const QString& name);
// The box text of a refused name; "" for ok.
QString name_verdict_text(name_verdict verdict);

struct batch_header {
    QString name;
    QString saved_by, host;
    QDateTime saved_at; // invalid for a batch that came from an older file
};

bool batch_exists(batch_kind kind, const QString& function, const QString& name);
// The names of one function, in the order of the name without case.
std::vector<batch_header> batch_list(batch_kind kind, const QString& function);

enum class save_result { saved, name_taken };
// Header and rows in one transaction. A name already taken writes nothing; a database fault
// throws db_error and leaves nothing behind. Rows of a parameter batch use seq and value only.
save_result batch_save(batch_kind kind, const QString& function, const QString& name,
                       const std::vector<batch_row>& rows);

// Every row of a batch, by type, then curve number, then position; empty when there is none.
std::vector<batch_row> batch_read(batch_kind kind, const QString& function, const QString& name);

// Removes the batches of this name under every function, or every batch of the kind. On a shared
// server they go, header and rows, into its trash with who deleted them and when; in the file they
// are gone.
void batch_delete(batch_kind kind, const QString& name);
void batch_delete_all(batch_kind kind);

// Brings the batch of this function and name that went into the server's trash last back, under
// its own name, in one transaction.
enum class restore_result { restored, not_in_trash, name_taken, no_trash };
struct restored_batch {
    restore_result result = restore_result::not_in_trash;
    batch_kind kind = batch_kind::data;
    QString name;       // as it was saved
    QString deleted_by; // user@host
    QDateTime deleted_at;
};
// no_trash: the batches are in the file, which keeps none. Throws db_error.
restored_batch batch_restore(const QString& function, const QString& name);

// Walks the values of one type of a read batch. Past the last row it gives "" and says so, so a
// batch cut short is never read past its rows.
class row_cursor {
public:
    row_cursor(const std::vector<batch_row>& rows, const QString& type);
    QString text();
    double number();
    int integer();
    bool at_end() const { return pos_ >= values_.size(); }
    std::size_t remaining() const { return at_end() ? 0 : values_.size() - pos_; }
    bool ran_short() const { return short_; }

private:
    std::vector<QString> values_;
    std::size_t pos_ = 0;
    bool short_ = false;
};

// Builds the rows of a layout: each value takes the next position of the current type.
class row_writer {
public:
    explicit row_writer(const QString& type = QStringLiteral("P")) : type_(type) {}
    void add(const QString& value) { rows.push_back({type_, ++seq_, value, 0}); }
    void add(double value);
    void add(int value);
    // A new type whose positions start again at 1, or go on from the last one.
    void restart(const QString& type) { type_ = type, seq_ = 0; }
    void go_on_as(const QString& type) { type_ = type; }
    // A curve row at an explicit position.
    void add_at(int seq, const QString& value, int set) { rows.push_back({type_, seq, value, set}); }
    std::vector<batch_row> rows;

private:
    QString type_;
    int seq_ = 0;
};

// Text of a value as stored: integers in plain decimals, doubles with up to 15 significant digits.
QString stored_text(double value);
QString stored_text(int value);

} // namespace lumora
