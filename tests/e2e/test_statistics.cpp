// The statistics a user validates a method with, on the simulator with its detector noise on:
// the "Statistics" tab of Quantitative and Protein reached by a click, the weighting chosen with
// its box's list, the sample tables' prediction intervals and flags, and Kinetic's rate
// statistics with its "Linear range" offer.
#include "functions/protein/dlgProtein.h"
#include "functions/protein/frmProtein.h"
#include "functions/protein/protein_setup.h"
#include "functions/stats_panel.h"
#include "kinetic_rig.h"
#include "opendata/exporters.h"
#include "platform/numeric_text.h"
#include "plot/palette.h"
#include "plot/plot_surface.h"
#include "protein_rig.h"
#include "quant_rig.h"
#include "report/frmReport.h"
#include "report/report_make.h"
#include "report/report_registry.h"
#include "report/report_stats.h"
#include "report/workbook.h"

#include <QAbstractItemView>
#include <QComboBox>
#include <QLabel>
#include <QPointer>
#include <QPushButton>
#include <QTest>

namespace lumora::test {
namespace {

// The value beside `label` on the statistics tab, or "" when the row is missing.
QString stat(const stats_panel& panel, const QString& label, int col = 1) {
    const grid& g = panel.fgdStats();
    for (int r = 1; r < g.Rows(); ++r)
        if (g.TextMatrix(r, 0) == label) return g.TextMatrix(r, col);
    return {};
}

QStringList texts_of(const report_page& page) {
    QStringList out;
    for (const auto& t : page.texts())
        out << t.text;
    return out;
}

double number(const QString& text) {
    return val(text.toStdString());
}

int pixels_of(const plot_surface& pic, const QColor& color) {
    int n = 0;
    for (int y = 0; y < pic.logical_size().height(); ++y)
        for (int x = 0; x < pic.logical_size().width(); ++x)
            n += pic.logical_pixel(x, y) == color;
    return n;
}

// With LUMORA_SHOT_DIR set, keeps a picture of the window on its statistics tab.
void keep_picture(QWidget& window, const plot_surface& residuals, const QString& name) {
    const QString dir = qEnvironmentVariable("LUMORA_SHOT_DIR");
    if (dir.isEmpty()) return;
    window.resize(1100, 640);
    window.grab().save(dir + "/" + name + "_window.png");
    residuals.grab_view().save(dir + "/" + name + "_residuals.png");
}

void click_tab(QTabBar* tabs, int index) {
    QTest::mouseClick(tabs, Qt::LeftButton, {}, tabs->tabRect(index).center());
}

} // namespace

TEST(Statistics, QuantitativeTabWeightingAndSampleIntervals) {
    sim::Options noisy;
    noisy.noise_counts = 3000;
    noisy.seed = 23;
    quant_rig q(noisy);
    q.key_setup(540, "mg/dL", 0, 2, {{"0.5"}, {"1"}, {"1.5"}, {"2"}, {"2.5"}});
    q.setup().cmdOk_Click();
    ASSERT_TRUE(q.zero());
    for (const char* c : {"0.5", "1", "1.5", "2", "2.5"})
        ASSERT_TRUE(q.read(std::string("standard:") + c)) << c;
    for (const char* c : {"1.2", "0.1", "4"})
        ASSERT_TRUE(q.read(std::string("standard:") + c)) << c;
    q.boxes();
    frmQuant& w = *q.window;
    w.resize(1100, 640);
    w.show();
    const grid& samples = w.fgdSample();
    EXPECT_EQ(samples.TextMatrix(0, 2), "Conc.") << "the function's own columns stay in place";
    EXPECT_EQ(samples.TextMatrix(0, 3), "Conc. low 95%");
    EXPECT_EQ(samples.TextMatrix(0, 5), "Flag");
    const QString conc_before = samples.TextMatrix(1, 2);
    const double ka_before = quant.cal.fit_ka;

    click_tab(w.tspData(), 2);
    ASSERT_EQ(w.tspData()->currentIndex(), 2);
    stats_panel& panel = w.Statistics();
    EXPECT_TRUE(panel.isVisibleTo(&w));
    EXPECT_FALSE(w.fgdSample().isVisibleTo(&w));
    EXPECT_EQ(stat(panel, "Model"), "ABS = a + b * Conc.");
    EXPECT_EQ(stat(panel, "n"), "5");
    EXPECT_EQ(stat(panel, "Degrees of freedom"), "3");
    // The simulator's standard absorbs 0.5 A per unit at its 540 nm peak.
    EXPECT_NEAR(number(stat(panel, "b (slope) [A per unit]")), 0.5, 0.02);
    EXPECT_GT(number(stat(panel, "b (slope) [A per unit]", 2)), 0) << "a standard error";
    EXPECT_GT(number(stat(panel, "R^2")), 0.99);
    EXPECT_EQ(stat(panel, "Mandel's test"), "The straight line is adequate");
    // LOD from s(y/x) with five standards: 3.3 s / b.
    EXPECT_NEAR(number(stat(panel, "LOD (mg/dL)")),
                3.3 * number(stat(panel, "s(y/x) [A]")) / number(stat(panel, "b (slope) [A per unit]")),
                1e-3);
    EXPECT_GT(pixels_of(panel.picResidual(), standard_color(1)), 0) << "the residual crosses";
    EXPECT_GT(pixels_of(panel.picResidual(), standard_color(12)), 0) << "the 2 s band";

    // In range the interval holds the true concentration; out of range the row says so.
    EXPECT_LE(number(samples.TextMatrix(1, 3)), 1.2);
    EXPECT_GE(number(samples.TextMatrix(1, 4)), 1.2);
    EXPECT_EQ(samples.TextMatrix(1, 5), "");
    EXPECT_TRUE(samples.TextMatrix(2, 5).startsWith("below range")) << samples.TextMatrix(2, 5).toStdString();
    EXPECT_EQ(samples.TextMatrix(3, 5), "above range");
    keep_picture(w, panel.picResidual(), "quant_statistics");

    // 1/x picked from the weighting box's list: the tab and the intervals follow, the
    // function's own calibration and Conc. do not.
    const QString high_before = samples.TextMatrix(1, 4);
    QComboBox* box = panel.cboWeighting();
    ASSERT_TRUE(box->isEnabled());
    QTest::mouseClick(box, Qt::LeftButton); // the list drops down; Down and Return pick 1/x
    QTest::keyClick(box->view(), Qt::Key_Down);
    QTest::keyClick(box->view(), Qt::Key_Return);
    EXPECT_EQ(box->currentText(), "1/x");
    EXPECT_EQ(stat(panel, "Weighting"), "1/x");
    EXPECT_NE(samples.TextMatrix(1, 4), high_before);
    EXPECT_EQ(samples.TextMatrix(1, 2), conc_before);
    EXPECT_EQ(quant.cal.fit_ka, ka_before);

    // The report and the workbook take the statistics only once "Print statistics" is ticked in
    // the preview; the open-data export always carries them beside the calibration.
    report_print_statistics = false;
    EXPECT_FALSE(texts_of(*report_make(w, 1.0)).contains("Statistics"));
    {
        frmReport preview([&w](double scale) { return report_make(w, scale); });
        preview.findChild<QAction*>("Print statistics")->trigger();
        const QStringList t = texts_of(*preview.page());
        EXPECT_GT(t.indexOf("Statistics"), t.indexOf("Sample data"));
        EXPECT_TRUE(t.contains("Mandel's test"));
        EXPECT_TRUE(t.contains("above range"));
        if (const QString dir = qEnvironmentVariable("LUMORA_SHOT_DIR"); !dir.isEmpty())
            preview.page()->render().save(dir + "/quant_statistics_report.png");
    }
    workbook book;
    report_piece_for(fid_quantitative)->sheets(w, book);
    report_print_statistics = false;
    QStringList names;
    for (const workbook::sheet& sh : book.sheets())
        names << QString::fromStdString(sh.name);
    EXPECT_EQ(names, (QStringList{"Statistics", "Equation", "Sample data", "Standard data"}));
    EXPECT_EQ(book.sheets()[2].rows[0].size(), 3u) << "the sample sheet keeps its own columns";
    opendata::export_source source;
    source.name = QStringLiteral("run");
    const auto files = opendata::quant_export(w, opendata::export_format::csv, source);
    ASSERT_EQ(files.size(), 2u);
    const QString standards = QString::fromUtf8(files[0].bytes);
    EXPECT_TRUE(standards.contains("statistics Weighting: 1/x")) << standards.toStdString();
    EXPECT_TRUE(QString::fromUtf8(files[1].bytes).contains("statistics sample 3: "))
        << "each sample's interval";

    // The choice outlives the window for the session; back to 1 for whatever comes next.
    const QPointer<frmQuant> first(&w);
    for (const char* menu : {"mnuFuncPhotometry", "mnuFuncQuant"}) {
        q.rig.window->menu_action(menu)->trigger();
        if (QDialog* d = q.rig.window->current_setup_dialog()) d->reject();
    }
    auto* again = qobject_cast<frmQuant*>(q.rig.window->current_function());
    ASSERT_NE(again, nullptr);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_TRUE(first.isNull()) << "a new window";
    QComboBox* box2 = again->Statistics().cboWeighting();
    EXPECT_EQ(box2->currentText(), "1/x");
    QTest::mouseClick(box2, Qt::LeftButton);
    QTest::keyClick(box2->view(), Qt::Key_Up);
    QTest::keyClick(box2->view(), Qt::Key_Return);
    EXPECT_EQ(box2->currentText(), "1");
}

TEST(Statistics, ProteinReplicatesGiveALackOfFitTestAndIntervalsOnAverages) {
    sim::Options noisy;
    noisy.noise_counts = 3000;
    noisy.seed = 29;
    protein_rig p(noisy);
    p.key_setup(6, 2, 2, 2, {"0.4", "0.8", "1.2", "1.6"});
    p.setup().txtLambda()->setText(QStringLiteral("540"));
    p.setup().txtLambda_LostFocus();
    p.setup().cmdOk_Click();
    ASSERT_TRUE(p.zero());
    for (const char* c : {"0.4", "0.8", "1.2", "1.6"})
        for (int j = 0; j < 2; ++j)
            ASSERT_TRUE(p.read(std::string("standard:") + c)) << c;
    for (int j = 0; j < 2; ++j)
        ASSERT_TRUE(p.read("standard:1"));
    p.boxes();
    frmProtein& w = *p.window;
    w.resize(1100, 640);
    w.show();
    click_tab(w.tspData(), 2);
    stats_panel& panel = w.Statistics();
    ASSERT_TRUE(panel.isVisibleTo(&w));
    EXPECT_EQ(stat(panel, "n"), "8") << "every replicate is a point";
    EXPECT_EQ(stat(panel, "Degrees of freedom"), "6");
    EXPECT_FALSE(stat(panel, "Lack-of-fit test").isEmpty());
    EXPECT_TRUE(stat(panel, "Lack-of-fit test", 2).contains("F(0.95; 2, 4)"));
    // The sample's two readings are inverse-predicted together on its average row.
    EXPECT_EQ(p.sample(3, 0), "Avg1");
    EXPECT_EQ(p.sample(1, 4), "") << "replicate rows carry no interval";
    EXPECT_LE(number(p.sample(3, 4)), 1.0);
    EXPECT_GE(number(p.sample(3, 5)), 1.0);
    EXPECT_EQ(p.sample(3, 6), "");
    keep_picture(w, panel.picResidual(), "protein_statistics");
    w.close();
}

TEST(Statistics, KineticRateStatisticsAndTheLinearRangeOffer) {
    prompts::script();
    kinetic_rig t;
    kinetic_setup_values v;
    v.lag = 30, v.rate = 60, v.points = 11;
    ASSERT_TRUE(t.apply(*t.setup(), v));
    ASSERT_TRUE(t.zero());
    // Straight up to the top of the photometer's range, then flat there: the window bends.
    t.rig.instrument.control("sample reaction:0.05");
    ASSERT_TRUE(t.read(200));
    frmKinetic* w = t.window();
    const QString text = w->lblRateStats()->text();
    EXPECT_TRUE(text.startsWith("Rate SE = ")) << text.toStdString();
    EXPECT_TRUE(w->rate_statistics().curved) << w->rate_statistics().r2;
    EXPECT_TRUE(text.contains("not straight")) << text.toStdString();
    if (const QString dir = qEnvironmentVariable("LUMORA_SHOT_DIR"); !dir.isEmpty())
        w->grab().save(dir + "/kinetic_statistics_window.png");

    prompts::clear_shown();
    prompts::script({box_answer::yes});
    QTest::mouseClick(w->cmdLinearRange(), Qt::LeftButton);
    ASSERT_EQ(prompts::shown().size(), 1u);
    EXPECT_TRUE(prompts::shown()[0].text.contains("Use lag time")) << prompts::shown()[0].text.toStdString();
    EXPECT_GE(kinetic_setup.kn_lag, 20);
    EXPECT_GE(kinetic_setup.kn_rate, 15);
    EXPECT_LT(kinetic_setup.kn_rate, 60);
    EXPECT_TRUE(w->lblRateStats()->text().isEmpty()) << "cleared for the next Read";
    prompts::unscript();
}

} // namespace lumora::test
