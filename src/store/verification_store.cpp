#include "verification_store.h"

#include "database.h"

namespace lumora {
namespace {

const QString time_format = QStringLiteral("yyyy-MM-ddTHH:mm:ss");
const QString settings_prefix = QStringLiteral("PV ");

verification_row row_of(const std::vector<QVariant>& r) {
    verification_row v;
    v.time = QDateTime::fromString(r[0].toString(), time_format);
    v.operator_name = r[1].toString();
    v.check = r[2].toString();
    v.reference = r[3].toString();
    v.tolerance = r[4].toString();
    v.value = r[5].toDouble();
    v.verdict = r[6].toString();
    v.full_run = r[7].toInt() != 0;
    v.raw = r[8].toString();
    return v;
}

} // namespace

void save_verification_run(const std::vector<verification_row>& rows) {
    db_transaction([&] {
        for (const verification_row& v : rows)
            db_execute(
                QStringLiteral("INSERT INTO verification (RunTime,Operator,CheckName,Reference,Tolerance,"
                               "Value,Verdict,FullRun,RawPoints) VALUES (?,?,?,?,?,?,?,?,?)"),
                {v.time.toString(time_format), v.operator_name, v.check, v.reference, v.tolerance, v.value,
                 v.verdict, v.full_run ? 1 : 0, v.raw});
    });
}

std::vector<verification_row> load_verification_history(const QString& check) {
    const QString columns = QStringLiteral(
        "SELECT RunTime,Operator,CheckName,Reference,Tolerance,Value,Verdict,FullRun,RawPoints "
        "FROM verification");
    const record_set rs =
        check.isEmpty()
            ? db_query(columns + QStringLiteral(" ORDER BY RunTime, rowid"))
            : db_query(columns + QStringLiteral(" WHERE CheckName = ? ORDER BY RunTime, rowid"), {check});
    std::vector<verification_row> out;
    out.reserve(rs.rows_.size());
    for (const auto& r : rs.rows_)
        out.push_back(row_of(r));
    return out;
}

std::optional<QDateTime> last_full_verification() {
    const record_set rs = db_query(QStringLiteral("SELECT MAX(RunTime) FROM verification WHERE FullRun = 1"));
    if (rs.rows_.empty() || rs.rows_[0][0].isNull()) return std::nullopt;
    const QDateTime t = QDateTime::fromString(rs.rows_[0][0].toString(), time_format);
    if (!t.isValid()) return std::nullopt;
    return t;
}

std::map<QString, QString> load_verification_settings() {
    const record_set rs =
        db_query(QStringLiteral("SELECT ParaName,ParaValue FROM system WHERE ParaName LIKE 'PV %'"));
    std::map<QString, QString> out;
    for (const auto& r : rs.rows_)
        out[r[0].toString().mid(settings_prefix.size())] = r[1].toString();
    return out;
}

void save_verification_settings(const std::map<QString, QString>& values) {
    db_transaction([&] {
        db_execute(QStringLiteral("DELETE FROM system WHERE ParaName LIKE 'PV %'"));
        for (const auto& [name, value] : values)
            db_execute(QStringLiteral("INSERT INTO system (ParaName,ParaValue) VALUES (?,?)"),
                       {settings_prefix + name, value});
    });
}

} // namespace lumora
