// Photometry apart from the instrument: readings fed to the window as the decoder hands them
// over, the grid read back as the store, and the setup dialog's silent holding of its boxes.
#include "functions/function_catalog.h"
#include "functions/photometry/dlgPhotometry.h"
#include "functions/photometry/frmPhotometry.h"
#include "functions/photometry/photometry_rules.h"
#include "link/link_context.h"
#include "link/shared_state.h"
#include "platform/grid.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QSignalBlocker>
#include <cmath>
#include <gtest/gtest.h>
#include <memory>

using namespace lumora;

namespace {

// A window with a reference of 100000 counts at every wavelength and no dark.
struct PhotometryWindow : ::testing::Test {
    std::unique_ptr<frmPhotometry> window;
    QString panel2;

    void SetUp() override {
        reset_shared_state();
        reset_photometry();
        link_ctx.hooks = {};
        link_ctx.hooks.set_panel = [this](int panel, const QString& text) {
            if (panel == 2) panel2 = text;
        };
        shared.reference_intensity.fill(100000);
        photometry_setup.ph_lambda = {450, 550, 650, 700, 750, 0, 0, 0, 0, 0};
    }
    void TearDown() override {
        window.reset();
        link_ctx.hooks = {};
    }
    void open(int n, int mode = 0, bool advanced = false) {
        photometry_setup.ph_lambda_count = static_cast<std::int16_t>(n);
        photometry_setup.ph_mode = static_cast<std::int16_t>(mode);
        photometry_setup.ph_advanced = advanced ? 1 : 0;
        window = std::make_unique<frmPhotometry>(*function_by_id(fid_photometry));
    }
    // One reading of absorbance `a` as the decoder delivers it.
    void reading(double a) {
        window->show_data(static_cast<std::int32_t>(std::lround(1e5 * std::pow(10.0, -a))));
    }
    QString cell(int row, int col) const { return window->fgdData().TextMatrix(row, col); }
};

} // namespace

TEST(PhotometryConversion, AbsorbanceStopsAtThreeAndTransmittanceAt120) {
    EXPECT_EQ(ph_absorbance(0.0), 3.0) << "no light";
    EXPECT_EQ(ph_absorbance(-0.01), 3.0) << "below the dark";
    EXPECT_EQ(ph_absorbance(std::pow(10.0, -3.5)), 3.0) << "this function's ceiling, not 4.5";
    EXPECT_NEAR(ph_absorbance(std::pow(10.0, -2.5)), 2.5, 1e-12);
    EXPECT_EQ(ph_absorbance(3.0), -0.3);
    EXPECT_EQ(ph_percent(-0.2), 0.0);
    EXPECT_EQ(ph_percent(1.25), 120.0);
}

TEST_F(PhotometryWindow, ReadContinuesWhereTheGridStandsAndZeroRowsAreData) {
    open(3);
    photometry_setup.ph_cycle_number = 2;
    window->read();
    for (double a : {0.1, 0.2, 0.3, 0.4})
        reading(a);
    EXPECT_EQ(cell(1, 3), QStringLiteral("0.300"));
    EXPECT_EQ(cell(2, 1), QStringLiteral("0.400"));
    EXPECT_EQ(shared.lambda_now_int, 550) << "next: the second wavelength of row 2";
    // A Zero starts in the middle of row 2: one reading per wavelength, each the new reference.
    window->set_zero_flag(true);
    window->read();
    EXPECT_EQ(shared.lambda_now_int, 550);
    reading(0.7);
    EXPECT_EQ(cell(2, 2), QStringLiteral("0.000"));
    EXPECT_EQ(cell(2, 0), QStringLiteral("2  V Zero"));
    reading(0.7);
    reading(0.7);
    EXPECT_FALSE(photometry_run.ph_zeroing);
    EXPECT_EQ(shared.measure_mode, mm_lambda_panel);
    EXPECT_EQ(cell(3, 0), QStringLiteral("3  V Zero"));
    EXPECT_EQ(photometry_run.ph_marks[3].zero, 0) << "row 2's first reading came before the Zero";

    // Only full rows react to a click, and the row's first reading decides its mark.
    window->fgdData_Click(2);
    EXPECT_EQ(cell(2, 0), QStringLiteral("2  X")) << "its first reading was no Zero";
    EXPECT_EQ(photometry_run.ph_marks[5].selected, 0);
    EXPECT_EQ(photometry_run.ph_marks[6].selected, 1);
    window->fgdData_Click(2);
    EXPECT_EQ(cell(2, 0), QStringLiteral("2  V"));
    window->fgdData_Click(3);
    EXPECT_EQ(cell(3, 0), QStringLiteral("3  V Zero")) << "row 3 holds one reading of three";
}

TEST_F(PhotometryWindow, TheCountHoldsAtAThousandAndTheLastCellIsRewritten) {
    open(3);
    photometry_setup.ph_cycle_number = 99;
    for (int i = 0; i < 1000; ++i) {
        if (shared.measure_mode != mm_photometry) { // a run of 297 ended: Read again
            shared.measure_mode = mm_photometry;
            window->read();
        }
        reading(0.5);
    }
    EXPECT_EQ(photometry_run.ph_data_count, 1000);
    EXPECT_EQ(cell(334, 1), QStringLiteral("0.500"));
    EXPECT_EQ(window->fgdData().Rows() % 20, 0) << "the grid grew by 20 rows at a time";
    reading(0.8);
    reading(0.9);
    EXPECT_EQ(photometry_run.ph_data_count, 1000);
    EXPECT_EQ(cell(334, 2), QStringLiteral("0.900")) << "reading 1000, written again";
    EXPECT_EQ(cell(334, 3), QString());
    EXPECT_EQ(photometry_run.ph_marks.size(), 1001u);
    EXPECT_EQ(photometry_run.ph_marks[1000].selected, 1);
}

TEST_F(PhotometryWindow, TheEquationReadsTheShownCellsOfItsRow) {
    PhotometrySetup& s = photometry_setup;
    s.ph_k1 = 2;
    s.ph_k2 = 0.5;
    s.ph_wl_pick = {1, 2, 3, 0};
    s.ph_sign = {1, 0, 0}; // 2 * (WL1 - WL2) + 0.5 * (WL3 + None)
    open(3, 0, true);
    s.ph_cycle_number = 2;
    window->read();
    reading(0.8);
    reading(0.3);
    EXPECT_EQ(cell(1, 4), QString()) << "R waits for the row's last reading";
    reading(0.2004); // shown as 0.200
    EXPECT_EQ(cell(1, 4), QStringLiteral("1.100"));
    // Picks past a lowered count: column R of the row (still empty) and a column beyond the grid.
    s.ph_wl_pick = {1, 4, 5, 0};
    for (double a : {0.8, 0.3, 0.2})
        reading(a);
    EXPECT_EQ(cell(2, 4), QStringLiteral("1.600"));
}

TEST_F(PhotometryWindow, FactorTimesTheRoundedAbsorbanceAndRFollowsTheLastCell) {
    PhotometrySetup& s = photometry_setup;
    s.ph_factor = 10000;
    s.ph_unit = QStringLiteral("mg/dL");
    s.ph_wl_pick = {1, 0, 0, 0};
    s.ph_sign = {0, 0, 0};
    s.ph_k1 = 0.0001;
    open(2, 2, true);
    s.ph_cycle_number = 2;
    EXPECT_EQ(cell(0, 0), QStringLiteral("No. (Unit=mg/dL)"));
    window->read();
    reading(1.23449); // 1.234 shown: 12340, not 12344.9
    EXPECT_EQ(cell(1, 1), QStringLiteral("12340.00"));
    EXPECT_EQ(panel2, QStringLiteral("12340.00C"));
    reading(0.05);
    EXPECT_EQ(cell(1, 3), QStringLiteral("1.234")) << "the last cell is 500: three places";
    reading(0.05);
    reading(1.5);
    EXPECT_EQ(cell(2, 3), QStringLiteral("0.05")) << "the last cell is 15000: two places";
}

namespace {

struct PhotometryDialog : PhotometryWindow {
    std::unique_ptr<dlgPhotometry> dlg;
    void open_dialog() {
        dlg = std::make_unique<dlgPhotometry>();
        QObject::connect(dlg.get(), &dlgPhotometry::setup_changed, window.get(), &frmPhotometry::clear_form);
    }
};

} // namespace

TEST_F(PhotometryDialog, BoxesAreHeldSilentlyAndBoxZeroOnAnyChange) {
    open(3);
    open_dialog();
    EXPECT_FALSE(dlg->txtLambda(3)->isEnabled());
    EXPECT_EQ(dlg->txtLambda(3)->palette().color(QPalette::Disabled, QPalette::Base), QColor(192, 192, 192));
    dlg->txtInst(0)->setText(QStringLiteral("25"));
    EXPECT_EQ(dlg->txtInst(0)->text(), QStringLiteral("10"));
    EXPECT_TRUE(dlg->txtLambda(9)->isEnabled());
    {
        const QSignalBlocker quiet(dlg->txtInst(0));
        dlg->txtInst(0)->setText(QStringLiteral("0"));
    }
    dlg->txtInst(3)->setText(QStringLiteral("5"));
    EXPECT_EQ(dlg->txtInst(0)->text(), QStringLiteral("1")) << "held on a change of another box";
    dlg->txtInst(1)->setText(QStringLiteral("250"));
    dlg->txtInst_LostFocus(1);
    EXPECT_EQ(dlg->txtInst(1)->text(), QStringLiteral("99"));
    dlg->txtInst(4)->setText(QStringLiteral("-3abc"));
    dlg->txtInst_LostFocus(4);
    EXPECT_EQ(dlg->txtInst(4)->text(), QStringLiteral("0.000"));
    dlg->cmbMeasure()->setCurrentIndex(2);
    dlg->cmbMeasure_Click();
    EXPECT_TRUE(dlg->cmbUnit()->isEnabled() && dlg->txtInst(2)->isEnabled());
}

TEST_F(PhotometryDialog, TypedValuesCountAtOkAndPicksFollowTheBoxesOnFocus) {
    open(3);
    open_dialog();
    dlg->txtInst(0)->setText(QStringLiteral("4"));
    dlg->txtLambda(3)->setText(QStringLiteral("12")); // never left: OK holds it all the same
    dlg->txtLambda(1)->setText(QStringLiteral("600"));
    dlg->Check2()->setChecked(true);
    dlg->cmbWL_GotFocus(2);
    ASSERT_EQ(dlg->cmbWL(2)->count(), 5);
    EXPECT_EQ(dlg->cmbWL(2)->itemText(4), QStringLiteral("12 nm")) << "the box as it stands";
    dlg->cmbWL(2)->setCurrentIndex(2);
    dlg->cmdOk_Click();
    EXPECT_EQ(photometry_setup.ph_lambda[3], 330.0);
    EXPECT_EQ(photometry_setup.ph_wl_pick[2], 2);
    EXPECT_EQ(window->fgdData().Cols(), 6);
    EXPECT_EQ(cell(0, 2), QStringLiteral("      600nm"));
}

TEST_F(PhotometryDialog, ReportTextsKeepTheGridAndAMeasuringChangeClearsIt) {
    open(2);
    window->read();
    reading(0.4);
    open_dialog();
    dlg->txtReport(0)->setText(QStringLiteral("Lab's bench 2"));
    dlg->Check1(3)->setChecked(false);
    dlg->cmdOk_Click();
    EXPECT_EQ(cell(1, 1), QStringLiteral("0.400"));
    EXPECT_EQ(photometry_setup.ph_report_text[0], QStringLiteral("Lab's bench 2"));
    open_dialog();
    dlg->cmbEqu(1)->setCurrentIndex(0);
    dlg->cmdOk_Click();
    EXPECT_EQ(photometry_run.ph_data_count, 0);
    EXPECT_EQ(cell(1, 1), QString());
}
