// Spectrum's report in the preview and on paper: which rows print, what the sections read, and
// that the PDF holds the pages of the preview at scale 1.
#include "platform/grid.h"
#include "platform/numeric_text.h"
#include "report/frmReport.h"
#include "report/report_make.h"
#include "report_fixture.h"

#include <QLabel>
#include <QScrollBar>

namespace lumora::test {
namespace {

using ReportSpectrum = spectrum_fixture;

// The texts of the section that starts with `head`, up to the next section head.
QStringList section(const report_page& page, const QString& head) {
    const QStringList all = texts_of(page);
    static const QStringList heads{"Track data", "Peak data", "Valley data", "Read data"};
    const int from = all.indexOf(head);
    if (from < 0) return {};
    QStringList out;
    for (int i = from + 1; i < all.size() && !heads.contains(all[i]); ++i)
        if (!all[i].contains(QString(55, ' '))) out << all[i];
    return out;
}

TEST_F(ReportSpectrum, ReadDataFollowsTheActiveCurveAsStoredAndFillsPages) {
    add_curve(1);
    all_flags(1);
    auto page = report_make(*window_, 1.0);
    ASSERT_NE(page, nullptr);
    const QStringList read = section(*page, "Read data");
    // Two header rows, then 771 rows of three cells.
    ASSERT_EQ(read.size(), 6 + 771 * 3);
    EXPECT_EQ(read.mid(6, 3), (QStringList{"1", "330nm", format_text(holmium_like(330), "###.0000")}));
    EXPECT_EQ(read.mid(read.size() - 3),
              (QStringList{"771", "1100nm", format_text(holmium_like(1100), "###.0000")}));
    EXPECT_GE(page->pages(), 6);
    EXPECT_EQ(static_cast<int>(page->footers().size()), page->pages());

    // A smoothing rewrites the stored curve: the report shows the new values.
    shared.baseline_curves[451 - 320][1] = 0.1234;
    const QStringList again = section(*report_make(*window_, 1.0), "Read data");
    const int row451 = 6 + (451 - 330) * 3;
    EXPECT_EQ(again.mid(row451, 3), (QStringList{"122", "451nm", ".1234"}));
}

TEST_F(ReportSpectrum, OnlyMarkedPeaksPrintAndTheirNumbersCloseUp) {
    add_curve(1);
    window_->search_peak();
    const int peaks = spectrum.peak_count;
    ASSERT_GE(peaks, 5);
    const QString second = window_->fgdPeak().TextMatrix(2, 1);
    window_->table_row_click(1, 2); // untick the second peak
    ASSERT_TRUE(window_->fgdPeak().TextMatrix(2, 0).startsWith("  X"));
    auto page = report_make(*window_, 1.0);
    const QStringList rows = section(*page, "Peak data").mid(6);
    ASSERT_EQ(rows.size(), (peaks - 1) * 3);
    for (int i = 0; i < peaks - 1; ++i)
        EXPECT_EQ(rows[i * 3], QString::number(i + 1));
    EXPECT_FALSE(rows.contains(second));
    EXPECT_EQ(rows[1], window_->fgdPeak().TextMatrix(1, 1));
    EXPECT_EQ(rows[4], window_->fgdPeak().TextMatrix(3, 1));
    // The graph numbers the marks the same way: 1 .. peaks - 1 above the plot's marks.
    spectrum_setup.print_flags = {0, 0, 0, 0, 0, 0, 0};
    QStringList numbers;
    for (const QString& t : texts_of(*report_make(*window_, 1.0))) {
        bool is_number = false;
        if (t.toInt(&is_number) < 100 && is_number) numbers << t;
    }
    QStringList expected;
    for (int i = 1; i < peaks; ++i)
        expected << QString::number(i);
    EXPECT_EQ(numbers, expected);
}

TEST_F(ReportSpectrum, FlagsOffLeaveTitleAndGraphOnOnePageWithoutFooter) {
    add_curve(1);
    window_->search_peak();
    all_flags(0);
    spectrum_setup.report_laboratory = "Holmium lab";
    auto page = report_make(*window_, 0.5);
    const QStringList all = texts_of(*page);
    EXPECT_EQ(page->pages(), 1);
    EXPECT_TRUE(page->footers().empty());
    EXPECT_TRUE(all.contains("Holmium lab"));
    EXPECT_TRUE(all.contains("Date:"));
    EXPECT_TRUE(all.contains("Graph"));
    for (const char* head : {"Parameter settings", "Track data", "Peak data", "Valley data", "Read data"})
        EXPECT_FALSE(all.contains(head)) << head;
    // Parameter lines when asked for.
    spectrum_setup.print_flags[2] = 1;
    const QStringList with = texts_of(*report_make(*window_, 0.5));
    EXPECT_TRUE(with.contains("Function = SPECTRUM"));
    EXPECT_TRUE(with.contains("Start wavelength = 330 nm"));
    EXPECT_TRUE(with.contains("Low value = 0.0000 ABS"));
    EXPECT_TRUE(with.contains("Scan speed = Normal"));
}

TEST_F(ReportSpectrum, TheGraphShowsTheZoomedView) {
    add_curve(1);
    spectrum.view.view_start = 400;
    spectrum.view.view_stop = 700;
    window_->zoom_data();
    const QStringList all = texts_of(*report_make(*window_, 1.0));
    EXPECT_TRUE(all.contains("400")) << all.join('|').toStdString();
    EXPECT_TRUE(all.contains("700"));
    EXPECT_FALSE(all.contains("1100"));
}

TEST_F(ReportSpectrum, PreviewZoomsInStepsAndPagesWithinThePicture) {
    add_curve(1);
    all_flags(1);
    frmReport preview([this](double s) { return report_make(*window_, s); });
    preview.resize(800, 600);
    preview.show();
    EXPECT_DOUBLE_EQ(preview.report_scale(), 0.5);
    for (int i = 0; i < 4; ++i)
        preview.zoom_out();
    EXPECT_DOUBLE_EQ(preview.report_scale(), 0.25);
    keep_for_look(preview.grab().toImage(), "preview_025.png");
    EXPECT_EQ(preview.page()->k(), 4);
    for (int i = 0; i < 5; ++i)
        preview.zoom_in();
    EXPECT_DOUBLE_EQ(preview.report_scale(), 1.0);
    const int height = preview.picReport()->height();
    EXPECT_EQ(height, static_cast<int>(std::ceil(preview.page()->height() * 96 / 1440)));
    keep_for_look(preview.grab().toImage(), "preview_100.png");
    preview.page_up();
    EXPECT_EQ(preview.picReport()->y(), 0);
    for (int i = 0; i < 100; ++i)
        preview.page_down();
    EXPECT_EQ(preview.picReport()->y(), preview.picScroll()->height() - height);
}

TEST_F(ReportSpectrum, PdfHoldsThePreviewsPagesWithTheirFootersAndSelectedRows) {
    add_curve(1);
    window_->search_peak();
    all_flags(1);
    const QString path = data_.filePath("report.pdf");
    const print_result printed = print_report(*window_, path);
    ASSERT_TRUE(printed.ok);
    EXPECT_EQ(printed.pdf_path, path);
    keep_for_look(path, "spectrum_report.pdf");
    const auto page = report_make(*window_, 1.0);
    EXPECT_EQ(pdf_pages(path), page->pages());
    const QStringList pages = pdf_page_texts(path);
    ASSERT_EQ(pages.size(), page->pages());
    // Each page ends with its own number and the date of the header line.
    const int date_at = pages[0].indexOf("Date:");
    ASSERT_GE(date_at, 0);
    const QString date = pages[0].mid(date_at + 5, pages[0].indexOf('\n', date_at) - date_at - 5).trimmed();
    ASSERT_FALSE(date.isEmpty());
    for (int p = 0; p < pages.size(); ++p) {
        const QStringList lines = pages[p].split('\n', Qt::SkipEmptyParts);
        const QString last = lines.last().simplified();
        EXPECT_EQ(last, QString::number(p + 1) + " " + date) << "page " << p + 1;
    }
    const QString all = pages.join('\n');
    EXPECT_TRUE(all.contains("Function = SPECTRUM"));
    EXPECT_TRUE(all.contains("1100nm"));
    EXPECT_TRUE(all.contains("Peak data"));
}

} // namespace
} // namespace lumora::test
