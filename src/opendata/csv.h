#pragma once
// Tables as CSV (RFC 4180): UTF-8, CRLF line ends, a field quoted when it holds a comma, a quote,
// a line break or starts with "#". The context leads as "# key: value" lines, which common readers
// skip as comments; then one header row, then the rows.
#include <QByteArray>
#include <QString>
#include <QStringList>
#include <utility>
#include <vector>

namespace lumora::opendata {

struct csv_table {
    std::vector<std::pair<QString, QString>> context;
    QStringList header;
    std::vector<QStringList> rows;
};

QByteArray csv_text(const csv_table& table);
// A field as written: quoted where it must be.
QString csv_field(const QString& text);

// The reader of such a file: the "#" lines before the header as context, the header and the rows.
// A quote left open at the end sets `error`.
csv_table read_csv(const QByteArray& text, QString* error = nullptr);

} // namespace lumora::opendata
