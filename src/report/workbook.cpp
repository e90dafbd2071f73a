#include "workbook.h"

#include "platform/grid.h"

#include <QFile>
#include <QFileInfo>
#include <xlsxwriter.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>

namespace lumora {

void workbook::sheet::set(int row, int col, std::string text) {
    if (row < 0 || col < 0) return;
    if (static_cast<int>(rows.size()) <= row) rows.resize(static_cast<std::size_t>(row) + 1);
    auto& cells = rows[static_cast<std::size_t>(row)];
    if (static_cast<int>(cells.size()) <= col) cells.resize(static_cast<std::size_t>(col) + 1);
    cells[static_cast<std::size_t>(col)] = std::move(text);
}

workbook::sheet& workbook::add_sheet(const QString& name) {
    sheets_.push_back({name.toStdString(), {}});
    return sheets_.back();
}

bool workbook::save(const QString& path, QString& reason) const {
    const QFileInfo target(path);
    const QString temp =
        target.absolutePath() + QStringLiteral("/.") + target.fileName() + QStringLiteral(".part");
    const QByteArray temp_name = QFile::encodeName(temp);
    // Constant memory: rows go straight to the file in order, so a long run costs no more than
    // its text; every cell is an inline string.
    lxw_workbook_options options{};
    options.constant_memory = LXW_TRUE;
    lxw_workbook* book = workbook_new_opt(temp_name.constData(), &options);
    if (!book) {
        reason = QStringLiteral("The file cannot be created.");
        return false;
    }
    lxw_format* size9 = workbook_add_format(book);
    format_set_font_size(size9, 9);
    lxw_error err = LXW_NO_ERROR;
    for (auto it = sheets_.rbegin(); it != sheets_.rend() && err == LXW_NO_ERROR; ++it) {
        lxw_worksheet* ws = workbook_add_worksheet(book, it->name.c_str());
        if (!ws) {
            err = LXW_ERROR_SHEETNAME_ALREADY_USED;
            break;
        }
        for (std::size_t r = 0; r < it->rows.size() && err == LXW_NO_ERROR; ++r) {
            const auto& cells = it->rows[r];
            for (std::size_t c = 0; c < cells.size(); ++c) {
                const auto row = static_cast<lxw_row_t>(r);
                const auto col = static_cast<lxw_col_t>(c);
                err = cells[c].empty() ? worksheet_write_blank(ws, row, col, size9)
                                       : worksheet_write_string(ws, row, col, cells[c].c_str(), size9);
                if (err != LXW_NO_ERROR) break;
            }
        }
    }
    const lxw_error closed = workbook_close(book);
    if (err == LXW_NO_ERROR) err = closed;
    if (err != LXW_NO_ERROR) {
        reason = QString::fromUtf8(lxw_strerror(err));
        QFile::remove(temp);
        return false;
    }
    // rename(2) replaces the target in one step.
    if (std::rename(temp_name.constData(), QFile::encodeName(path).constData()) != 0) {
        reason = QString::fromLocal8Bit(std::strerror(errno));
        QFile::remove(temp);
        return false;
    }
    return true;
}

void copy_grid(const grid& table, workbook::sheet& sheet, int last_row, int last_col) {
    const int rows = last_row < 0 ? table.Rows() - 1 : std::min(last_row, table.Rows() - 1);
    const int cols = last_col < 0 ? table.Cols() - 1 : std::min(last_col, table.Cols() - 1);
    sheet.rows.reserve(static_cast<std::size_t>(rows) + 1);
    for (int r = 0; r <= rows; ++r)
        for (int c = 0; c <= cols; ++c)
            sheet.set(r, c, table.TextMatrix(r, c).toStdString());
}

} // namespace lumora
