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
    const record_set rs = db_query(
        QStringLiteral("SELECT BatchName FROM batches WHERE FunctionName=? AND ParaType=? AND BatchName=?"),
        {function, type_of(kind), name});
    return rs.RecordCount() > 0;
}

std::vector<batch_header> batch_list(batch_kind kind, const QString& function) {
    record_set rs = db_query(QStringLiteral("SELECT BatchName,SavedBy,Host,SavedAt FROM batches WHERE "
                                            "FunctionName=? AND ParaType=? ORDER BY BatchName, rowid"),
                             {function, type_of(kind)});
    std::vector<batch_header> list;
    for (; !rs.EOF_(); rs.MoveNext())
        list.push_back(
            {rs.Fields(0), rs.Fields(1), rs.Fields(2), QDateTime::fromString(rs.Fields(3), Qt::ISODate)});
    return list;
}

save_result batch_save(batch_kind kind, const QString& function, const QString& name,
                       const std::vector<batch_row>& rows) {
    save_result result = save_result::saved;
    db_transaction([&] {
        // The header goes first: the unique key turns a name taken meanwhile into no write at all.
        if (batch_exists(kind, function, name)) {
            result = save_result::name_taken;
            return;
        }
        db_execute(
            QStringLiteral("INSERT INTO batches (FunctionName,BatchName,ParaType,SavedBy,Host,SavedAt) "
                           "VALUES (?,?,?,?,?,?)"),
            {function, name, type_of(kind), user_name(), QSysInfo::machineHostName(),
             QDateTime::currentDateTimeUtc().toString(Qt::ISODate)});
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
    return result;
}

std::vector<batch_row> batch_read(batch_kind kind, const QString& function, const QString& name) {
    std::vector<batch_row> rows;
    record_set rs =
        kind == batch_kind::data
            ? db_query(
                  QStringLiteral("SELECT ParaType,ParaSeqNo,ParaValue,DataSet FROM data WHERE FunctionName=? "
                                 "AND BatchName=? COLLATE NOCASE ORDER BY ParaType, DataSet, ParaSeqNo"),
                  {function, name})
            : db_query(QStringLiteral("SELECT 'P',ParaSeqNo,ParaValue,0 FROM parameter WHERE FunctionName=? "
                                      "AND BatchName=? COLLATE NOCASE ORDER BY ParaSeqNo"),
                       {function, name});
    rows.reserve(static_cast<std::size_t>(rs.RecordCount()));
    for (const auto& r : rs.rows_)
        rows.push_back({r[0].toString(), r[1].toInt(), r[2].toString(), r[3].toInt()});
    return rows;
}

void batch_delete(batch_kind kind, const QString& name) {
    db_transaction([&] {
        db_execute(QStringLiteral("DELETE FROM %1 WHERE BatchName=? COLLATE NOCASE").arg(table_of(kind)),
                   {name});
        db_execute(QStringLiteral("DELETE FROM batches WHERE ParaType=? AND BatchName=?"),
                   {type_of(kind), name});
    });
}

void batch_delete_all(batch_kind kind) {
    db_transaction([&] {
        db_execute(QStringLiteral("DELETE FROM %1").arg(table_of(kind)));
        db_execute(QStringLiteral("DELETE FROM batches WHERE ParaType=?"), {type_of(kind)});
    });
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
