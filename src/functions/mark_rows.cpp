#include "mark_rows.h"

#include "platform/grid.h"

namespace lumora {

void toggle_mark_row(grid& table, processing::mark* marks, int count, int row, bool number_first) {
    if (marks == nullptr || row < 1 || row > count) return;
    processing::mark& m = marks[row - 1];
    m.flag = m.flag == 0 ? -1 : 0;
    const QString sign = m.flag ? QStringLiteral("  V") : QStringLiteral("  X");
    const QString number = QString::number(row);
    table.setTextMatrix(row, 0, number_first ? number + sign : sign + number);
}

} // namespace lumora
