#include "batches.h"

#include "database.h"
#include "platform/numeric_text.h"

#include <QSysInfo>

namespace lumora {
namespace {

QString table_of(batch_kind kind) {
    return kind == batch_kind::data ? QStringLiteral("data") : QStringLiteral("parameter");
}
QString type_of(batch_kind kind) {
    return kind == batch_kind::data ? QStringLiteral("D") : QStringLiteral("P");
}

QString user_name() {
    QString who = qEnvironmentVariable("USER");
    if (who.isEmpty()) who = qEnvironmentVariable("USERNAME");
    return who;
}

QString now_text() {
    return QDateTime::currentDateTimeUtc().toString(Qt::ISODate);
}

// A batch name compared without case, the way the index of each database knows it: the file's
// columns compare without case themselves, the server compares the names in lower case.
QString name_is(const char* column = "BatchName") {
    const QString c = QString::fromLatin1(column);
    return db_target_is_server() ? QStringLiteral("lower(%1)=lower(?)").arg(c)
                                 : QStringLiteral("%1=? COLLATE NOCASE").arg(c);
}

// Moves the batches that `where` picks out of `batches` (with its values after `kind`'s type),
// header and rows, into the server's trash in one statement.
void move_to_trash(batch_kind kind, const QString& where, std::vector<QVariant> values) {
    const bool data = kind == batch_kind::data;
    const QString rows = data ? QStringLiteral("d.ParaSeqNo, d.ParaValue, d.ParaType, d.DataSet")
                              : QStringLiteral("d.ParaSeqNo, d.ParaValue");
    const QString sql =
        QStringLiteral(
            "WITH moved AS (DELETE FROM batches WHERE ParaType=? %1 RETURNING FunctionName, BatchName, "
            "ParaType, SavedBy, Host, SavedAt), "
            "heads AS (INSERT INTO trash_batches (FunctionName,BatchName,ParaType,SavedBy,Host,SavedAt,"
            "DeletedBy,DeletedHost,DeletedAt) SELECT FunctionName,BatchName,ParaType,SavedBy,Host,SavedAt,"
            "?,?,? FROM moved RETURNING TrashId, FunctionName, BatchName), "
            "gone AS (DELETE FROM %2 d USING heads h WHERE d.FunctionName=h.FunctionName AND "
            "lower(d.BatchName)=lower(h.BatchName) RETURNING h.TrashId, %3) "
            "INSERT INTO trash_%2 (TrashId,%4) SELECT * FROM gone")
            .arg(where, table_of(kind), rows,
                 data ? QStringLiteral("ParaSeqNo,ParaValue,ParaType,DataSet")
                      : QStringLiteral("ParaSeqNo,ParaValue"));
    // The type first, then the picks, then who and when: the order of the placeholders.
    values.insert(values.begin(), type_of(kind));
    values.insert(values.end(), {user_name(), QSysInfo::machineHostName(), now_text()});
    db_execute(sql, values);
}

} // namespace

QString batch_function_name(int function_id) {
    switch (function_id) {
    case 1:
        return QStringLiteral("PHOTOMETRY");
    case 2:
        return QStringLiteral("SPECTRUM");
    case 3:
        return QStringLiteral("TIMESCAN");
    case 4:
        return QStringLiteral("KINETIC");
    case 5:
        return QStringLiteral("QUANTITATIVE");
    case 11:
        return QStringLiteral("PROTEIN");
    case 13:
        return QStringLiteral("TIMESCAN2");
    default:
        return {};
    }
}

name_verdict check_batch_name(const QString& name) {
    if (name.isEmpty()) return name_verdict::blank;
    if (name.size() > 20) return name_verdict::over_20;
    if (name.size() == 20) return name_verdict::ok;
    for (const QChar c : name) {
        const ushort u = c.unicode();
        const bool fits = (u >= '0' && u <= '9') || (u >= 'A' && u <= 'Z') || (u >= 'a' && u <= 'z') ||
                          u == '-' || u == '_';
        if (!fits) return name_verdict::not_alphanumeric;
    }
    return name_verdict::ok;
}

QString name_verdict_text(name_verdict verdict) {
    switch (verdict) {
    case name_verdict::blank:
        return QStringLiteral("The batch name is blank or operation canceled!");
    case name_verdict::over_20:
        return QStringLiteral("The batch name is over 20 characters!");
    case name_verdict::not_alphanumeric:
        return QStringLiteral("The batch name is not a-z or 0-9");
    case name_verdict::ok:
        break;
    }
    return {};
}

bool batch_exists(batch_kind kind, const QString& function, const QString& name) {
    batch_scope scope;
    const record_set rs = db_query(
        QStringLiteral("SELECT BatchName FROM batches WHERE FunctionName=? AND ParaType=? AND ") + name_is(),
        {function, type_of(kind), name});
    return rs.RecordCount() > 0;
}

std::vector<batch_header> batch_list(batch_kind kind, const QString& function) {
    batch_scope scope;
    const QString order = db_target_is_server() ? QStringLiteral("lower(BatchName) COLLATE \"C\", BatchId")
                                                : QStringLiteral("BatchName, rowid");
    record_set rs = db_query(QStringLiteral("SELECT BatchName,SavedBy,Host,SavedAt FROM batches WHERE "
                                            "FunctionName=? AND ParaType=? ORDER BY ") +
                                 order,
                             {function, type_of(kind)});
    std::vector<batch_header> list;
    for (; !rs.EOF_(); rs.MoveNext())
        list.push_back(
            {rs.Fields(0), rs.Fields(1), rs.Fields(2), QDateTime::fromString(rs.Fields(3), Qt::ISODate)});
    return list;
}

save_result batch_save(batch_kind kind, const QString& function, const QString& name,
                       const std::vector<batch_row>& rows) {
    batch_scope scope;
    save_result result = save_result::saved;
    try {
        db_transaction([&] {
            // The header goes first: the unique key turns a name taken meanwhile into no write at all.
            if (batch_exists(kind, function, name)) {
                result = save_result::name_taken;
                return;
            }
            db_execute(
                QStringLiteral("INSERT INTO batches (FunctionName,BatchName,ParaType,SavedBy,Host,SavedAt) "
                               "VALUES (?,?,?,?,?,?)"),
                {function, name, type_of(kind), user_name(), QSysInfo::machineHostName(), now_text()});
            const std::vector<fixed_column> fixed{{QStringLiteral("BatchName"), name},
                                                  {QStringLiteral("FunctionName"), function}};
            if (kind == batch_kind::parameter) {
                db_insert_rows(QStringLiteral("parameter"), fixed,
                               {QStringLiteral("ParaSeqNo"), QStringLiteral("ParaValue")}, rows.size(),
                               [&](std::size_t r, int c) -> QVariant {
                                   return c == 0 ? QVariant(rows[r].seq) : QVariant(rows[r].value);
                               });
            } else {
                const QVariant no_set{QMetaType(QMetaType::Int)};
                db_insert_rows(QStringLiteral("data"), fixed,
                               {QStringLiteral("ParaSeqNo"), QStringLiteral("ParaValue"),
                                QStringLiteral("ParaType"), QStringLiteral("DataSet")},
                               rows.size(), [&](std::size_t r, int c) -> QVariant {
                                   switch (c) {
                                   case 0:
                                       return rows[r].seq;
                                   case 1:
                                       return rows[r].value;
                                   case 2:
                                       return rows[r].type;
                                   default:
                                       return rows[r].set > 0 ? QVariant(rows[r].set) : no_set;
                                   }
                               });
            }
        });
    } catch (const db_error& e) {
        // Another program took the name between the look and the header: its save stands.
        if (e.duplicate()) return save_result::name_taken;
        throw;
    }
    return result;
}

std::vector<batch_row> batch_read(batch_kind kind, const QString& function, const QString& name) {
    batch_scope scope;
    // Rows without a curve number come first in their type, on either database.
    const QString set_order = db_target_is_server()
                                  ? QStringLiteral("ParaType COLLATE \"C\", DataSet NULLS FIRST")
                                  : QStringLiteral("ParaType, DataSet");
    std::vector<batch_row> rows;
    record_set rs =
        kind == batch_kind::data
            ? db_query(
                  QStringLiteral("SELECT ParaType,ParaSeqNo,ParaValue,DataSet FROM data WHERE FunctionName=? "
                                 "AND %1 ORDER BY %2, ParaSeqNo")
                      .arg(name_is(), set_order),
                  {function, name})
            : db_query(QStringLiteral("SELECT 'P',ParaSeqNo,ParaValue,0 FROM parameter WHERE FunctionName=? "
                                      "AND %1 ORDER BY ParaSeqNo")
                           .arg(name_is()),
                       {function, name});
    rows.reserve(static_cast<std::size_t>(rs.RecordCount()));
    for (const auto& r : rs.rows_)
        rows.push_back({r[0].toString(), r[1].toInt(), r[2].toString(), r[3].toInt()});
    return rows;
}

void batch_delete(batch_kind kind, const QString& name) {
    batch_scope scope;
    db_transaction([&] {
        if (db_target_is_server()) return move_to_trash(kind, QStringLiteral("AND ") + name_is(), {name});
        db_execute(QStringLiteral("DELETE FROM %1 WHERE BatchName=? COLLATE NOCASE").arg(table_of(kind)),
                   {name});
        db_execute(QStringLiteral("DELETE FROM batches WHERE ParaType=? AND BatchName=?"),
                   {type_of(kind), name});
    });
}

void batch_delete_all(batch_kind kind) {
    batch_scope scope;
    db_transaction([&] {
        if (db_target_is_server()) return move_to_trash(kind, {}, {});
        db_execute(QStringLiteral("DELETE FROM %1").arg(table_of(kind)));
        db_execute(QStringLiteral("DELETE FROM batches WHERE ParaType=?"), {type_of(kind)});
    });
}

restored_batch batch_restore(const QString& function, const QString& name) {
    batch_scope scope;
    restored_batch back;
    if (!db_target_is_server()) {
        back.result = restore_result::no_trash;
        return back;
    }
    try {
        db_transaction([&] {
            const record_set rs = db_query(
                QStringLiteral("SELECT TrashId,BatchName,ParaType,SavedBy,Host,SavedAt,DeletedBy,DeletedHost,"
                               "DeletedAt FROM trash_batches WHERE FunctionName=? AND ") +
                    name_is() + QStringLiteral(" ORDER BY TrashId DESC LIMIT 1 FOR UPDATE"),
                {function, name});
            if (rs.rows_.empty()) return;
            const auto& r = rs.rows_.front();
            const qlonglong id = r[0].toLongLong();
            back.name = r[1].toString();
            back.kind = r[2].toString() == QLatin1String("P") ? batch_kind::parameter : batch_kind::data;
            back.deleted_by = r[6].toString();
            if (!r[7].toString().isEmpty()) back.deleted_by += QLatin1Char('@') + r[7].toString();
            back.deleted_at = QDateTime::fromString(r[8].toString(), Qt::ISODate);
            // The header first: a name taken again since the delete refuses the whole restore.
            db_execute(
                QStringLiteral("INSERT INTO batches (FunctionName,BatchName,ParaType,SavedBy,Host,SavedAt) "
                               "VALUES (?,?,?,?,?,?)"),
                {function, back.name, r[2], r[3], r[4], r[5]});
            const QString table = table_of(back.kind);
            const QString columns = back.kind == batch_kind::data
                                        ? QStringLiteral("ParaSeqNo,ParaValue,ParaType,DataSet")
                                        : QStringLiteral("ParaSeqNo,ParaValue");
            db_execute(
                QStringLiteral("INSERT INTO %1 (BatchName,FunctionName,%2) SELECT ?,?,%2 FROM trash_%1 "
                               "WHERE TrashId=?")
                    .arg(table, columns),
                {back.name, function, id});
            db_execute(QStringLiteral("DELETE FROM trash_%1 WHERE TrashId=?").arg(table), {id});
            db_execute(QStringLiteral("DELETE FROM trash_batches WHERE TrashId=?"), {id});
            back.result = restore_result::restored;
        });
    } catch (const db_error& e) {
        if (!e.duplicate()) throw;
        back.result = restore_result::name_taken;
    }
    return back;
}

row_cursor::row_cursor(const std::vector<batch_row>& rows, const QString& type) {
    for (const batch_row& r : rows)
        if (r.type == type) values_.push_back(r.value);
}

QString row_cursor::text() {
    if (at_end()) {
        short_ = true;
        return {};
    }
    return values_[pos_++];
}

double row_cursor::number() {
    return val(text().toStdString());
}

int row_cursor::integer() {
    return cint(number());
}

void row_writer::add(double value) {
    add(stored_text(value));
}
void row_writer::add(int value) {
    add(stored_text(value));
}

QString stored_text(double value) {
    return QString::number(value, 'g', 15);
}

QString stored_text(int value) {
    return QString::number(value);
}

} // namespace lumora
