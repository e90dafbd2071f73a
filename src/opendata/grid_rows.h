#pragma once
// Reading a result grid for an export: a row label split from its mark ("3  V" is row 3,
// selected), and cell texts without the padding the grid aligns them with.
#include <QString>

namespace lumora::opendata {

struct row_label {
    QString number;
    QString mark; // "V" selected, "X" not, "" none
    QString note; // what follows the mark: "Zero"
};
row_label split_row_label(const QString& text);

} // namespace lumora::opendata
