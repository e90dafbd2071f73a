#pragma once
// Files written for other programs: names that stay inside the chosen folder, and each file
// replaced only by a complete one (written beside it under a temporary name, then renamed).
#include <QByteArray>
#include <QString>
#include <vector>

namespace lumora::opendata {

// A name that is one plain file name: separators, ".." and control characters become "_", leading
// dots and spaces go, and an empty result is "data".
QString safe_file_name(const QString& name);

struct out_file {
    QString name; // a file name, passed through safe_file_name when written
    QByteArray bytes;
};

// Writes the file into `folder`. Returns "" or "<path>: <reason>"; on a failure the file that was
// there before is left as it was and no temporary file stays behind.
QString write_atomic(const QString& folder, const out_file& file);
// Writes the files in order and stops at the first failure, which it returns.
QString write_all(const QString& folder, const std::vector<out_file>& files);

} // namespace lumora::opendata
