#include "report_stats.h"

#include "platform/numeric_text.h"
#include "report_page.h"
#include "report_parts.h"

namespace lumora {

bool report_print_statistics = false;

namespace {

// One row across the page at the given offsets, the break test first.
void print_row(report_page& page, const QStringList& cells, std::initializer_list<int> offsets) {
    page.break_test();
    int i = 0;
    for (int x : offsets) {
        if (i < cells.size()) page.text(x * page.k(), page.y, cells[i]);
        ++i;
    }
    page.y += page.text_height();
}

// A label at 50 and its text at 235, the text going on in further lines where the page ends.
void print_wrapped(report_page& page, const QString& label, const QString& text) {
    const double width = (report_page_width - report_right_margin - 235) * page.k();
    const auto measure = [&page](const QString& t) { return page.text_width(t); };
    QString first = label;
    for (const QString& piece : wrap_line(text, width, measure)) {
        print_row(page, {first, piece}, {50, 235});
        first.clear();
    }
}

void sheet_rows(workbook::sheet& sheet, int& row, const QList<QStringList>& rows) {
    for (const QStringList& cells : rows) {
        for (int c = 0; c < cells.size(); ++c)
            sheet.set(row, c, cells[c].toStdString());
        ++row;
    }
}

} // namespace

void report_calibration_statistics(report_page& page, const calibration_stats& s, const QString& unit,
                                   const std::vector<labelled_prediction>& samples) {
    report_section(page, QStringLiteral("Statistics"));
    page.set_font_size(12);
    for (const QStringList& row : stats_rows(s, unit)) {
        // A verdict is long: its figures go on a line of their own.
        if (row[1].size() > 28 && !row[2].isEmpty()) {
            print_wrapped(page, row[0], row[1]);
            print_wrapped(page, QString(), row[2]);
        } else {
            print_row(page, row, {50, 235, 490});
        }
    }
    if (samples.empty()) return;
    page.y += page.text_height();
    print_row(page, prediction_head(), {50, 110, 220, 330, 440});
    for (const labelled_prediction& p : samples)
        print_row(page, prediction_cells(p), {50, 110, 220, 330, 440});
}

void report_rate_statistics(report_page& page, const processing::rate_stats& r) {
    report_section(page, QStringLiteral("Statistics"));
    page.set_font_size(12);
    for (const QStringList& row : rate_rows(r))
        print_row(page, row, {50, 250});
}

void calibration_statistics_sheet(workbook& book, const calibration_stats& s, const QString& unit,
                                  const std::vector<labelled_prediction>& samples) {
    workbook::sheet& sheet = book.add_sheet(QStringLiteral("Statistics"));
    int row = 0;
    sheet_rows(sheet, row,
               {{QStringLiteral("Statistic"), QStringLiteral("Value"), QStringLiteral("SE / note")}});
    sheet_rows(sheet, row, stats_rows(s, unit));
    ++row;
    QList<QStringList> rows{prediction_head()};
    for (const labelled_prediction& p : samples)
        rows.append(prediction_cells(p));
    sheet_rows(sheet, row, rows);
}

void rate_statistics_sheet(workbook& book, const processing::rate_stats& r) {
    workbook::sheet& sheet = book.add_sheet(QStringLiteral("Statistics"));
    int row = 0;
    sheet_rows(sheet, row, rate_rows(r));
}

} // namespace lumora
