#include "grid.h"

#include <QHeaderView>

namespace lumora {

grid::grid(QWidget* parent) : QTableWidget(parent) {
    horizontalHeader()->hide();
    verticalHeader()->hide();
    setEditTriggers(QAbstractItemView::NoEditTriggers);
    setSelectionMode(QAbstractItemView::SingleSelection);
    verticalHeader()->setDefaultSectionSize(fontMetrics().height() + 4);
}

void grid::setRows(int rows) {
    setRowCount(rows < 0 ? 0 : rows);
}
void grid::setCols(int cols) {
    setColumnCount(cols < 0 ? 0 : cols);
}

QString grid::TextMatrix(int row, int col) const {
    const QTableWidgetItem* it = item(row, col);
    return it ? it->text() : QString();
}

void grid::setTextMatrix(int row, int col, const QString& text) {
    if (row < 0 || col < 0 || row >= rowCount() || col >= columnCount()) return;
    QTableWidgetItem* it = item(row, col);
    if (!it) {
        it = new QTableWidgetItem;
        setItem(row, col, it);
    }
    it->setText(text);
}

void grid::setColWidth(int col, int width_px) {
    if (col >= 0 && col < columnCount()) setColumnWidth(col, width_px);
}

void grid::Clear() {
    for (int r = 0; r < rowCount(); ++r)
        for (int c = 0; c < columnCount(); ++c)
            if (QTableWidgetItem* it = item(r, c)) it->setText(QString());
}

void grid::AddItem(const QString& line) {
    const int row = rowCount();
    setRowCount(row + 1);
    const QStringList cells = line.split(QLatin1Char('\t'));
    for (int c = 0; c < cells.size() && c < columnCount(); ++c)
        setTextMatrix(row, c, cells[c]);
}

} // namespace lumora
