// Spectrum's processing on a scanned holmium filter: peak and valley search, smoothing and
// "Original", the derivative window, the curve arithmetic with its refusal at 20 curves, and the
// mouse on the plot, all through the real window.
#include "functions/spectrum/spectrum_tools.h"
#include "platform/grid.h"
#include "platform/prompts.h"
#include "plot/palette.h"
#include "plot/plot_surface.h"
#include "spectrum_rig.h"

#include <QCoreApplication>
#include <QMouseEvent>
#include <QPushButton>
#include <QTest>

using namespace lumora;
using lumora::test::spectrum_rig;

namespace {

constexpr double holmium_bands[] = {416.3, 451.4, 467.8, 485.2, 536.6, 640.5};

// A holmium filter scanned over 400..700 nm in ABS.
struct holmium_rig : spectrum_rig {
    holmium_rig() {
        set_range(400, 700, false, 1.2);
        EXPECT_TRUE(scan(2));
        rig.instrument.control("sample holmium");
        EXPECT_TRUE(scan(3));
    }
};

double nm_of(const QString& cell) {
    return cell.left(cell.indexOf("nm")).toDouble();
}

// Whether anything is painted inside the derivative window below the plot.
bool lower_plot_painted(const plot_surface& plot) {
    for (int y = 351; y < 490; ++y)
        for (int x = 60; x <= 340; ++x)
            if (plot.logical_pixel(x, y) != plot_background()) return true;
    return false;
}

// The tool window that a toolbar button opens over the main window.
template <class T> T* open_tool(spectrum_rig& s, int button, const char* name) {
    s.rig.window->toolbar_button(button)->trigger();
    return s.rig.window->findChild<T*>(QString::fromLatin1(name));
}

void click(QWidget* parent, const char* name) {
    auto* button = parent ? parent->findChild<QPushButton*>(QString::fromLatin1(name)) : nullptr;
    ASSERT_NE(button, nullptr) << name;
    QTest::mouseClick(button, Qt::LeftButton);
}

// A mouse move with no button down, as the window system delivers it.
void move_to(QWidget& w, QPoint p) {
    QMouseEvent e(QEvent::MouseMove, QPointF(p), w.mapToGlobal(QPointF(p)), Qt::NoButton, Qt::NoButton, {});
    QCoreApplication::sendEvent(&w, &e);
}

} // namespace

TEST(SpectrumProcessing, PeakFindsTheHolmiumBandsAndDerivativeShowsThem) {
    holmium_rig h;
    h.rig.window->toolbar_button(9)->trigger(); // Peak
    const grid& peaks = h.window->fgdPeak();
    ASSERT_EQ(spectrum.peak_count, 6) << "the six bands of 400..700 nm";
    for (int r = 1; r <= spectrum.peak_count; ++r) {
        EXPECT_TRUE(peaks.TextMatrix(r, 0).startsWith("  V"));
        EXPECT_NEAR(nm_of(peaks.TextMatrix(r, 1)), holmium_bands[r - 1], 1.6) << "row " << r;
        EXPECT_EQ(spectrum.peak_marks[static_cast<std::size_t>(r - 1)].flag, -1);
    }
    EXPECT_GT(spectrum.valley_count, 0) << "the dips between the bands";

    // A click on a row takes it out of the report, a second click puts it back.
    h.window->table_row_click(1, 2);
    EXPECT_EQ(peaks.TextMatrix(2, 0), QStringLiteral("  X2"));
    EXPECT_EQ(spectrum.peak_marks[1].flag, 0);
    h.window->table_row_click(1, 2);
    EXPECT_EQ(peaks.TextMatrix(2, 0), QStringLiteral("  V2"));

    // The second derivative has a minimum at each band.
    h.window->derivative(2);
    EXPECT_EQ(spectrum.derivative_order, 2);
    EXPECT_EQ(h.window->fgdTrack().TextMatrix(0, 3), QStringLiteral("D-Value"));
    for (double band : holmium_bands) {
        const int p = static_cast<int>(std::lround(band)) - 320;
        double here = spectrum.derivative_curve[static_cast<std::size_t>(p)];
        for (int d = -2; d <= 2; ++d)
            here = std::min(here, spectrum.derivative_curve[static_cast<std::size_t>(p + d)]);
        EXPECT_LT(here, spectrum.derivative_curve[static_cast<std::size_t>(p - 6)]) << band;
        EXPECT_LT(here, spectrum.derivative_curve[static_cast<std::size_t>(p + 6)]) << band;
        EXPECT_LT(here, 0.0) << band;
    }
    EXPECT_LT(spectrum.derivative_low, 0.0);
    EXPECT_GT(spectrum.derivative_high, 0.0);
    const QString dir = qEnvironmentVariable("LUMORA_SHOT_DIR");
    if (!dir.isEmpty()) h.window->picSpectrum().grab_view().save(dir + "/holmium_derivative_plot.png");
}

TEST(SpectrumProcessing, SmoothingActsOnTheCurveAndOriginalBringsTheScanBack) {
    holmium_rig h;
    const auto scanned = shared.baseline_curves;
    frmPopup popup([&](int points) { h.window->smooth(points); });
    popup.tbPopup_ButtonClick("Smooth low");
    frmPopup again([&](int points) { h.window->smooth(points); });
    again.tbPopup_ButtonClick("SMOOTH LOW");
    const int band = 451 - 320;
    EXPECT_LT(shared.baseline_curves[band][1], scanned[band][1]) << "a narrow band loses height";
    EXPECT_EQ(shared.baseline_curves[band][0], scanned[band][0]) << "the baseline is not smoothed";
    h.rig.window->toolbar_button(8)->trigger(); // Original
    for (int p = 0; p < wavelength_points; ++p)
        ASSERT_EQ(shared.baseline_curves[static_cast<std::size_t>(p)][1],
                  scanned[static_cast<std::size_t>(p)][1])
            << p;
}

TEST(SpectrumProcessing, ArithmeticMakesADifferenceCurveAndRefusesAtTwentyCurves) {
    holmium_rig h;
    h.rig.instrument.control("sample blank");
    ASSERT_TRUE(h.scan(3));
    frmAdvance advance([&] { h.window->zoom_data(); });
    advance.cmbScan(0)->setCurrentIndex(0);
    advance.cmbScan(1)->setCurrentIndex(1);
    advance.cmbOperator(0)->setCurrentIndex(1); // "-"
    advance.txtScan(2)->setText("0");
    advance.cmdOK_Click();
    ASSERT_EQ(spectrum.curve_count, 3);
    EXPECT_EQ(spectrum.active_curve, 2);
    EXPECT_EQ(spectrum.curve_state[3], 2);
    for (int nm = 390; nm < 710; ++nm) {
        const auto p = static_cast<std::size_t>(nm - 320);
        ASSERT_NEAR(shared.baseline_curves[p][3], shared.baseline_curves[p][1] - shared.baseline_curves[p][2],
                    1e-12);
        ASSERT_EQ(spectrum.org_curves[p][3], shared.baseline_curves[p][3]);
    }
    EXPECT_EQ(shared.baseline_curves[380 - 320][3], 0.0) << "outside the scan range stays 0";

    spectrum.curve_count = 20;
    prompts::script();
    prompts::clear_shown();
    frmAdvance full([] {});
    const auto before = shared.baseline_curves;
    full.cmdOK_Click();
    prompts::unscript();
    ASSERT_EQ(prompts::shown().size(), 1u);
    EXPECT_EQ(prompts::shown()[0].title, QStringLiteral("Warning"));
    EXPECT_EQ(spectrum.curve_count, 20);
    EXPECT_EQ(shared.baseline_curves, before) << "nothing is written past the arrays";
}

TEST(SpectrumProcessing, ARightClickOnThePlotWritesOneRowAndTheQuestionComesOnceAtTheHundredAndFirst) {
    holmium_rig h;
    plot_surface& plot = h.window->picSpectrum();
    prompts::script({box_answer::cancel});
    prompts::clear_shown();
    QTest::mouseClick(&plot, Qt::RightButton, {}, QPoint(130, 100));
    EXPECT_EQ(spectrum.tracks.track_count, 1);
    EXPECT_EQ(h.window->fgdTrack().TextMatrix(1, 0), QStringLiteral("  V1"));
    EXPECT_TRUE(h.window->fgdTrack().TextMatrix(2, 0).isEmpty()) << "one click, one row";
    EXPECT_EQ(spectrum.tracks.track_marks[1].flag, 0) << "one click, one mark";
    for (int i = 1; i < 100; ++i)
        QTest::mouseClick(&plot, Qt::RightButton, {}, QPoint(130 + i, 100));
    EXPECT_EQ(spectrum.tracks.track_count, 100);
    EXPECT_TRUE(prompts::shown().empty()) << "100 rows take 100 clicks";
    QTest::mouseClick(&plot, Qt::RightButton, {}, QPoint(300, 100));
    prompts::unscript();
    EXPECT_EQ(prompts::shown().size(), 1u) << "the question is asked once";
    EXPECT_EQ(spectrum.tracks.track_count, 100);
}

TEST(SpectrumProcessing, TheDerivativeIsPaintedByItsButtonOnlyAndGoesWithTheNextRedraw) {
    holmium_rig h;
    plot_surface& plot = h.window->picSpectrum();
    move_to(plot, QPoint(150, 200));
    ASSERT_EQ(plot.overlay_line(0).x1(), 150);

    click(open_tool<frmDerv>(h, 11, "frmDerv"), "tb_17_point_2nd");
    EXPECT_TRUE(lower_plot_painted(plot));
    EXPECT_EQ(plot.overlay_line(0).x1(), 150) << "the cross-hair stays where it was";
    EXPECT_TRUE(plot.overlay_visible(2));
    EXPECT_EQ(plot.overlay_line(2).x1(), 150) << "the derivative's line goes in under it";
    EXPECT_EQ(h.window->fgdTrack().Cols(), 4);
    EXPECT_EQ(plot.accessibleDescription(),
              QStringLiteral(
                  "400 to 700 nm, 0.0000 to 1.2000 ABS. 1 curve, curve 1 active. 2nd derivative below."));

    h.rig.window->toolbar_button(8)->trigger(); // Original
    EXPECT_FALSE(lower_plot_painted(plot));
    EXPECT_EQ(h.window->fgdTrack().Cols(), 3);

    // Painted again, then a new Read: the lower plot does not carry the gone curve's derivative.
    click(open_tool<frmDerv>(h, 11, "frmDerv"), "tb_17_point_1st");
    ASSERT_TRUE(lower_plot_painted(plot));
    h.rig.instrument.control("sample dye");
    ASSERT_TRUE(h.scan(3));
    EXPECT_FALSE(lower_plot_painted(plot));
    EXPECT_EQ(plot.accessibleDescription(),
              QStringLiteral("400 to 700 nm, 0.0000 to 1.2000 ABS. 2 curves, curve 2 active."));
}

TEST(SpectrumProcessing, ScanArithmeticWithNoCurvesTakesScanOneAndMakesTheFirstCurve) {
    spectrum_rig s;
    // The setup's wavelength box holds the value on Enter too, and lists only held values.
    QComboBox* stop = s.setup().findChild<QComboBox*>(QStringLiteral("cmbInst_1"));
    ASSERT_NE(stop, nullptr);
    QTest::mouseClick(stop->lineEdit(), Qt::LeftButton);
    QTest::keyClick(stop->lineEdit(), Qt::Key_A, Qt::ControlModifier);
    QTest::keyClicks(stop->lineEdit(), QStringLiteral("1200"));
    QTest::keyClick(stop->lineEdit(), Qt::Key_Return);
    EXPECT_EQ(stop->currentText(), QStringLiteral("1100"));
    EXPECT_EQ(stop->findText(QStringLiteral("1200")), -1);

    s.set_range(400, 700, false);
    prompts::script();
    prompts::clear_shown();
    click(open_tool<frmAdvance>(s, 12, "frmAdvance"), "cmdOK");
    prompts::unscript();
    EXPECT_TRUE(prompts::shown().empty()) << "no refusal: the boxes hold scan 1";
    ASSERT_EQ(spectrum.curve_count, 1);
    EXPECT_EQ(spectrum.active_curve, 0);
    EXPECT_EQ(spectrum.curve_state[1], 2);
    // (1 x 0) + (1 x 0) + 1 over the scan range, 390..710 nm.
    EXPECT_EQ(shared.baseline_curves[390 - 320][1], 1.0);
    EXPECT_EQ(shared.baseline_curves[710 - 320][1], 1.0);
    EXPECT_EQ(shared.baseline_curves[389 - 320][1], 0.0);
    EXPECT_EQ(spectrum.org_curves[550 - 320][1], 1.0);
}
