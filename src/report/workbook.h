#pragma once
// A workbook of named sheets of text cells in font size 9, written as a real .xlsx. Sheets are
// kept in the order they were made and written with the last made first, as the export lays them
// out. The file appears only once it is complete: it is written beside its target under a
// temporary name and then renamed over it, so a failed write leaves an existing workbook alone.
#include <QString>
#include <string>
#include <vector>

namespace lumora {

class grid;

class workbook {
public:
    struct sheet {
        std::string name;
        // Cells by row and column, 0-based; a missing or empty text is a blank cell.
        std::vector<std::vector<std::string>> rows;
        void set(int row, int col, std::string text);
    };

    sheet& add_sheet(const QString& name);
    const std::vector<sheet>& sheets() const { return sheets_; }

    // Writes the workbook to `path`. On failure returns false and says why in `reason`.
    bool save(const QString& path, QString& reason) const;

private:
    std::vector<sheet> sheets_;
};

// Grid cell (r, c) to sheet cell (r + 1, c + 1) in spreadsheet terms, for rows 0..last_row
// (all rows when negative) and columns 0..last_col (all when negative).
void copy_grid(const grid& table, workbook::sheet& sheet, int last_row = -1, int last_col = -1);

} // namespace lumora
