// "Setup Quantitative": the standards grid edited by keys, the standard number held to 1..20,
// the grids of the three standard types, and the checks of OK in their order.
#include "functions/quantitative/dlgQuant.h"
#include "functions/quantitative/quant_setup.h"
#include "platform/grid.h"
#include "platform/prompts.h"

#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QRadioButton>
#include <QTabBar>
#include <QTest>
#include <gtest/gtest.h>

namespace lumora {
namespace {

class QuantSetupDialog : public ::testing::Test {
protected:
    void SetUp() override {
        quant = QuantSetup{};
        prompts::script();
        prompts::clear_shown();
        dlg = std::make_unique<dlgQuant>();
    }
    void TearDown() override { prompts::unscript(); }

    void choose(int option) {
        dlg->Option1(option)->setChecked(true);
        dlg->Option1_Click(option);
    }
    // Keys typed into a cell, as the user enters it and types.
    void key_in(int row, int col, const QString& keys) {
        dlg->fgdStandard().setCurrentCell(row, col);
        dlg->fgdStandard_EnterCell();
        for (QChar k : keys)
            dlg->fgdStandard_KeyPress(k);
    }
    QString cell(int row, int col) const { return dlg->fgdStandard().TextMatrix(row, col); }
    // OK, and the one refusal it showed ("" when it passed).
    QString ok_refusal() {
        prompts::clear_shown();
        dlg->cmdOk_Click();
        for (const shown_box& b : prompts::shown())
            if (b.title == QLatin1String("Warning")) {
                EXPECT_EQ(b.icon, box_icon::critical);
                return b.text;
            }
        return {};
    }

    std::unique_ptr<dlgQuant> dlg;
};

TEST_F(QuantSetupDialog, GridKeys) {
    choose(1);
    dlg->txtStandard()->setText(QStringLiteral("2"));
    key_in(1, 1, QStringLiteral("12"));
    EXPECT_EQ(cell(1, 1), "12");
    // Entering the cell again: the first key blanks it even when the key itself is refused.
    key_in(1, 1, QStringLiteral("x"));
    EXPECT_EQ(cell(1, 1), "");
    key_in(1, 1, QStringLiteral("7"));
    dlg->fgdStandard_KeyPress(QChar(8)); // backspace is no edit
    dlg->fgdStandard_KeyPress(QLatin1Char('a'));
    EXPECT_EQ(cell(1, 1), "7");
    key_in(1, 2, QStringLiteral("-1.2.3"));
    EXPECT_EQ(cell(1, 2), "-1.2.3");
    dlg->fgdStandard_KeyDown(46);
    EXPECT_EQ(cell(1, 2), "-1.2.");
    // Delete on an empty cell, and keys in the header column, change nothing.
    dlg->fgdStandard().setCurrentCell(2, 2);
    dlg->fgdStandard_KeyDown(46);
    EXPECT_EQ(cell(2, 2), "");
    key_in(1, 0, QStringLiteral("9"));
    EXPECT_EQ(cell(1, 0), "Std1");
    EXPECT_TRUE(dlg->changed_flag());

    // Real key events reach the same routines.
    dlg->fgdStandard().setCurrentCell(2, 1);
    QTest::keyClicks(&dlg->fgdStandard(), QStringLiteral("3.5"));
    QTest::keyClick(&dlg->fgdStandard(), Qt::Key_Backspace);
    EXPECT_EQ(cell(2, 1), "3.5");
    QTest::keyClick(&dlg->fgdStandard(), Qt::Key_Delete);
    EXPECT_EQ(cell(2, 1), "3.");
}

TEST_F(QuantSetupDialog, StandardNumberAndGrids) {
    choose(0);
    dlg->txtStandard()->setText(QStringLiteral("0"));
    EXPECT_EQ(dlg->txtStandard()->text(), "1");
    dlg->txtStandard()->setText(QStringLiteral("25"));
    EXPECT_EQ(dlg->txtStandard()->text(), "20");
    EXPECT_EQ(dlg->fgdStandard().Rows(), 21);
    EXPECT_EQ(cell(20, 0), "Std20");
    EXPECT_EQ(cell(0, 1), "Conc.");
    EXPECT_EQ(cell(0, 2), "");

    choose(1);
    EXPECT_EQ(cell(0, 2), "ABS");
    dlg->cmbInst()->setEditText(QStringLiteral("1200"));
    dlg->cmbInst_LostFocus();
    EXPECT_EQ(dlg->cmbInst()->currentText(), "1100");

    // Known factor: one row of factors, headed by the fit's coefficients.
    choose(2);
    EXPECT_FALSE(dlg->txtStandard()->isEnabled());
    EXPECT_EQ(dlg->fgdStandard().Rows(), 2);
    EXPECT_EQ(cell(1, 0), "Factor=");
    dlg->tspFit()->setCurrentIndex(0);
    EXPECT_EQ(dlg->fgdStandard().Cols(), 2);
    EXPECT_EQ(dlg->lblStandard3()->text(), "Conc.=Ka*ABS");
    dlg->tspFit()->setCurrentIndex(3);
    EXPECT_EQ(dlg->fgdStandard().Cols(), 4);
    EXPECT_EQ(cell(0, 3), "Kc");
    EXPECT_EQ(dlg->lblStandard3()->text(), "Conc.=Ka*ABS^2 + Kb*ABS + Kc");
    EXPECT_FALSE(dlg->lblStandard3()->isHidden());
    choose(0);
    EXPECT_TRUE(dlg->lblStandard3()->isHidden());
    EXPECT_TRUE(dlg->txtStandard()->isEnabled());
}

TEST_F(QuantSetupDialog, OkChecksInOrder) {
    const QString again = QStringLiteral("\nPlease key in again.");
    // The number of standards against the fit comes first, and not with a known factor.
    choose(1);
    dlg->tspFit()->setCurrentIndex(3);
    dlg->txtStandard()->setText(QStringLiteral("2"));
    EXPECT_EQ(ok_refusal(), "The standard number must >=3!");
    dlg->tspFit()->setCurrentIndex(1);
    dlg->txtStandard()->setText(QStringLiteral("1"));
    EXPECT_EQ(ok_refusal(), "The standard number must >=2!");

    // Conc. out of range is told before ABS out of range, that before all ABS 0.
    dlg->txtStandard()->setText(QStringLiteral("3"));
    key_in(1, 1, QStringLiteral("40000"));
    key_in(2, 2, QStringLiteral("3.5"));
    EXPECT_EQ(ok_refusal(), "The Conc. number must >=0 or <=30000!" + again);
    key_in(1, 1, QStringLiteral("-")); // reads as 0
    EXPECT_EQ(ok_refusal(), "The Abs number must >=0.000 or <=3.000!" + again);
    key_in(2, 2, QStringLiteral("0"));
    EXPECT_EQ(ok_refusal(), "There must be one ABS value >0 at least!" + again);
    key_in(2, 2, QStringLiteral("0.5"));
    EXPECT_EQ(ok_refusal(), "There must be one Conc. value >0 at least!" + again);
    // Some ABS 0 pass; a malformed cell counts as far as it reads.
    key_in(3, 1, QStringLiteral("1.2.3"));
    EXPECT_EQ(ok_refusal(), "");
    EXPECT_EQ(cell(3, 1), "1.2.3");
    EXPECT_EQ(dlg->result(), QDialog::Accepted);
}

TEST_F(QuantSetupDialog, KnownFactorChecks) {
    choose(2);
    const QString refused =
        QStringLiteral("There must be one Factor value <>0 at least!\nPlease key in again.");
    dlg->tspFit()->setCurrentIndex(2);
    key_in(1, 1, QStringLiteral("0"));
    key_in(1, 2, QStringLiteral("0"));
    EXPECT_EQ(ok_refusal(), refused);
    key_in(1, 2, QStringLiteral("0.5"));
    EXPECT_EQ(ok_refusal(), "");
    // Tab 2 counts Ka alone, so it never meets two zeros: Ka 0 with Kb 5 goes through.
    dlg = std::make_unique<dlgQuant>();
    choose(2);
    dlg->tspFit()->setCurrentIndex(1);
    key_in(1, 1, QStringLiteral("0"));
    key_in(1, 2, QStringLiteral("5"));
    EXPECT_EQ(ok_refusal(), "");
    EXPECT_EQ(quant.std_type, 2);
    EXPECT_EQ(quant.cal.fit_type, 2);
}

} // namespace
} // namespace lumora
