// The page model shared by the preview and the printer: where pages break, what the footers
// say, and how the scale reaches geometry and fonts.
#include "plot/palette.h"
#include "report/report_page.h"
#include "report/report_parts.h"

#include <QDateTime>
#include <gtest/gtest.h>

namespace lumora {
namespace {

const QDateTime when(QDate(2026, 3, 9), QTime(14, 5));

// Lines of text at 50 with the break test before each, as the report's rows go.
void rows(report_page& page, int count) {
    page.set_font_size(12);
    page.y = 580.0 * page.k();
    for (int i = 0; i < count; ++i) {
        page.break_test();
        page.print_line(50.0 * page.k(), QString::number(i + 1));
    }
    page.finish();
}

TEST(ReportPage, EachEndedPageGetsItsFooterBeforeTheNextPageFills) {
    report_page page(1.0, {true, true}, when);
    rows(page, 200);
    ASSERT_GE(page.pages(), 3);
    ASSERT_EQ(static_cast<int>(page.footers().size()), page.pages());
    const QString date = page.date_time();
    for (int p = 0; p < page.pages(); ++p)
        EXPECT_EQ(page.footers()[static_cast<std::size_t>(p)],
                  QString::number(p + 1) + QString(55, ' ') + date);
    // Every row lies inside one page and at least 100 units above its bottom; the first row of a
    // new page starts 100 units plus a line under the page's top.
    const double page_height = 975.0 * 16;
    const auto texts = page.texts();
    int rows_seen = 0, page_before = 0;
    for (const auto& t : texts) {
        if (t.text.contains(QString(55, ' '))) continue; // a footer
        ++rows_seen;
        const int on_page = static_cast<int>(t.at.y() / page_height);
        const double top_of_page = on_page * page_height;
        EXPECT_LT(t.at.y() + 100 * 16, top_of_page + page_height) << t.text.toStdString();
        if (on_page != page_before) {
            EXPECT_NEAR(t.at.y(), top_of_page + 100 * 16 + page.text_height(), 0.5);
        }
        page_before = on_page;
    }
    EXPECT_EQ(rows_seen, 200);
    // The footer of page 1 comes before any row of page 2 in the drawing.
    int footer_index = -1, first_row_page2 = -1;
    for (std::size_t i = 0; i < texts.size(); ++i) {
        if (footer_index < 0 && texts[i].text.startsWith(QLatin1String("1 ")))
            footer_index = static_cast<int>(i);
        if (first_row_page2 < 0 && texts[i].at.y() >= page_height) first_row_page2 = static_cast<int>(i);
    }
    EXPECT_LT(footer_index, first_row_page2);
}

TEST(ReportPage, PageNumberOffPrintsNoFooterAndSoNoDate) {
    report_page page(1.0, {true, false}, when);
    rows(page, 200);
    EXPECT_GE(page.pages(), 3);
    EXPECT_TRUE(page.footers().empty());
    for (const auto& t : page.texts())
        EXPECT_FALSE(t.text.contains(page.date_time())) << t.text.toStdString();

    report_page undated(1.0, {false, true}, when);
    rows(undated, 10);
    ASSERT_EQ(undated.footers().size(), 1u);
    EXPECT_EQ(undated.footers()[0], QStringLiteral("1"));
}

TEST(ReportPage, ScaleSetsTheUnitAndTruncatesFontSizes) {
    const double scales[] = {0.25, 0.5, 0.75, 1.0};
    const int units[] = {4, 8, 12, 16};
    for (int i = 0; i < 4; ++i) {
        report_page page(scales[i]);
        EXPECT_EQ(page.k(), units[i]);
        EXPECT_DOUBLE_EQ(page.height(), 975.0 * units[i]);
    }
    // 12 and 14 points at 0.25 are both 3 points; at 1.0 they differ.
    report_page small(0.25), full(1.0);
    small.set_font_size(12);
    const double h12 = small.text_height();
    small.set_font_size(14);
    EXPECT_DOUBLE_EQ(small.text_height(), h12);
    full.set_font_size(12);
    const double f12 = full.text_height();
    full.set_font_size(14);
    EXPECT_GT(full.text_height(), f12);
}

TEST(ReportPage, PreviewShowsGreyBandsBetweenPages) {
    report_page page(0.5, {true, true}, when);
    rows(page, 150);
    ASSERT_GE(page.pages(), 2);
    const QImage image = page.render(96);
    const double px = 96.0 / 1440;
    EXPECT_EQ(image.height(), static_cast<int>(std::ceil(page.height() * px)));
    EXPECT_EQ(image.width(), static_cast<int>(std::ceil(720 * 8 * px)));
    // Under each page bottom a band of standard colour 8 across the whole width.
    for (int p = 1; p < page.pages(); ++p) {
        const int y = static_cast<int>((p * 975 * 8 + 25 * 8) * px);
        EXPECT_EQ(image.pixelColor(2, y), standard_color(8));
        EXPECT_EQ(image.pixelColor(image.width() - 3, y), standard_color(8));
    }
    EXPECT_EQ(image.pixelColor(2, static_cast<int>(400 * 8 * px)), QColor(Qt::white));
}

// The longest assay name runs past the right margin beside the graph: it must go on in the next
// line, broken where a reader expects it, with nothing lost and nothing past the margin.
TEST(ReportPage, LongParameterLinesWrapInsideTheMargin) {
    const auto chars = [](const QString& t) { return double(t.size()); };
    EXPECT_EQ(wrap_line(QStringLiteral("Assay type = Lowry Protein Analysis,high sensitivity"), 30, chars),
              (QStringList{"Assay type = Lowry Protein", "  Analysis,high sensitivity"}));
    EXPECT_EQ(wrap_line(QStringLiteral("Unit = ug/mL"), 30, chars), QStringList{"Unit = ug/mL"});
    // No blank to break at: cut inside the word, and never loop on a piece that cannot fit.
    EXPECT_EQ(wrap_line(QStringLiteral("abcdefgh"), 3, chars),
              (QStringList{"abc", "  d", "  e", "  f", "  g", "  h"}));

    report_page page(1.0, {}, when);
    report_parameters(page, 430, {QStringLiteral("Assay type = Lowry Protein Analysis,high sensitivity")});
    QStringList texts;
    for (const auto& op : page.texts())
        if (op.text != QStringLiteral("Parameter settings")) {
            texts << op.text.trimmed();
            EXPECT_LE(op.at.x() + page.text_width(op.text), (report_page_width - 40) * page.k()) << op.text.toStdString();
        }
    EXPECT_GE(texts.size(), 2);
    EXPECT_EQ(texts.join(' ').replace(QStringLiteral(", "), QStringLiteral(",")),
              QStringLiteral("Assay type = Lowry Protein Analysis,high sensitivity"));
}

} // namespace
} // namespace lumora
