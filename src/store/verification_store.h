#pragma once
// The performance verification's history in the verification table, one row a check of a run, and
// the lab's own reference values and tolerances as "PV ..." rows of the system table.
#include <QDateTime>
#include <QString>
#include <map>
#include <optional>
#include <vector>

namespace lumora {

struct verification_row {
    QDateTime time; // when the run started, the run's identity
    QString operator_name;
    QString check;         // the check's name as the window lists it
    QString reference;     // as shown: "361.3 nm", "0.500 A"
    QString tolerance;     // as shown: "+-1.0 nm"
    double value = 0;      // the measured value the verdict judged (for a trend)
    QString verdict;       // "Pass", "Warn" or "Fail"
    bool full_run = false; // every check of the list ran
    QString raw;           // the measured points behind the value, space separated
};

// Writes one run's rows in one transaction; throws db_error.
void save_verification_run(const std::vector<verification_row>& rows);
// Every row, oldest first; only those of `check` when it is given.
std::vector<verification_row> load_verification_history(const QString& check = {});
// The start of the newest run that took every check; empty when there has been none.
std::optional<QDateTime> last_full_verification();

// The "PV <name>" rows of the system table, without the prefix.
std::map<QString, QString> load_verification_settings();
// Replaces the "PV ..." rows with these, in one transaction.
void save_verification_settings(const std::map<QString, QString>& values);

} // namespace lumora
