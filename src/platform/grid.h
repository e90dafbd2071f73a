#pragma once
// A result grid: rows and columns of cell texts with a fixed header row and column, as the
// function windows use them. Where a function keeps its results only in a grid, the grid is the
// store, and numbers are read back out of the cell texts.
#include <QStringList>
#include <QTableWidget>

namespace lumora {

class grid : public QTableWidget {
    Q_OBJECT
public:
    explicit grid(QWidget* parent = nullptr);

    int Rows() const { return rowCount(); }
    int Cols() const { return columnCount(); }
    void setRows(int rows);
    void setCols(int cols);
    QString TextMatrix(int row, int col) const;
    void setTextMatrix(int row, int col, const QString& text);
    void setColWidth(int col, int width_px);
    // Empties every cell, keeping the size.
    void Clear();
    // Appends a row whose cells are the tab-separated parts of `line`.
    void AddItem(const QString& line);
};

} // namespace lumora
