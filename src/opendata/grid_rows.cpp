#include "grid_rows.h"

namespace lumora::opendata {

row_label split_row_label(const QString& text) {
    row_label l;
    const QString t = text.trimmed();
    const qsizetype gap = t.indexOf(QLatin1String("  "));
    if (gap < 0) {
        l.number = t;
        return l;
    }
    l.number = t.left(gap);
    const QString rest = t.mid(gap).trimmed();
    if (rest.startsWith(QLatin1Char('V')) || rest.startsWith(QLatin1Char('X'))) {
        l.mark = rest.left(1);
        l.note = rest.mid(1).trimmed();
    } else {
        l.note = rest;
    }
    return l;
}

} // namespace lumora::opendata
