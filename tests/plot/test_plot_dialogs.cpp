// The two small windows of the plot: "Set Color" (visible and active curves, reset) and
// "Setup zoom parameter" (the view typed in, its clamps and its refusal).
#include "link/shared_state.h"
#include "platform/prompts.h"
#include "plot/dlgZoom.h"
#include "plot/frmColor.h"

#include <QCheckBox>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <gtest/gtest.h>

using namespace lumora;

namespace {

struct color_fixture : ::testing::Test {
    std::array<std::int16_t, 21> state{0, 1, 2, 0};
    std::int16_t count = 3, active = 1;
    int redraws = 0, clears = 0;
    void SetUp() override { reset_shared_state(); }
    std::unique_ptr<frmColor> open() {
        return std::make_unique<frmColor>(state, count, active,
                                          color_hooks{[this] { ++redraws; }, [this] { ++clears; }, {}});
    }
};

struct zoom_dialog_fixture : ::testing::Test {
    plot_view view;
    int redraws = 0;
    void SetUp() override {
        prompts::script();
        prompts::clear_shown();
        init_view(view, 450, 700, 2.0, 0.1);
    }
    void TearDown() override { prompts::unscript(); }
    std::unique_ptr<dlgZoom> open(bool percent_t) {
        return std::make_unique<dlgZoom>(view, spectrum_zoom_fields(percent_t, 400, 800),
                                         [this] { ++redraws; });
    }
    static QString type(dlgZoom& d, int i, const char* text) {
        d.txtInst(i)->setText(QString::fromLatin1(text));
        d.txtInst_LostFocus(i);
        return d.txtInst(i)->text();
    }
};

} // namespace

TEST_F(color_fixture, RowsFollowTheCurveStatesAndTheRadioDecidesLast) {
    auto form = open();
    for (int i = 0; i < 20; ++i)
        EXPECT_EQ(form->optActive(i)->isEnabled() + form->chkActive(i)->isEnabled(), i < 3 ? 2 : 0) << i;
    EXPECT_TRUE(form->chkActive(0)->isChecked());
    EXPECT_TRUE(form->chkActive(1)->isChecked());
    EXPECT_FALSE(form->chkActive(2)->isChecked());
    EXPECT_TRUE(form->optActive(1)->isChecked());

    // Unticking the active row keeps it active.
    form->chkActive(1)->setChecked(false);
    form->chkActive(0)->setChecked(false);
    form->findChild<QPushButton*>(QStringLiteral("cmdOK"))->click();
    EXPECT_EQ(state, (std::array<std::int16_t, 21>{0, 0, 2, 0}));
    EXPECT_EQ(active, 1);
    EXPECT_EQ(redraws, 1);

    // Choosing an active row makes it visible as well; the row it leaves stays visible.
    form = open();
    form->optActive(2)->click();
    EXPECT_TRUE(form->chkActive(2)->isChecked());
    form->cmdOK_Click();
    EXPECT_EQ(state, (std::array<std::int16_t, 21>{0, 0, 1, 2}));
    EXPECT_EQ(active, 2);
    EXPECT_EQ(count, 3);
}

TEST_F(color_fixture, ResetEmptiesTheCurvesAndLeavesNoActiveCurveWhileCancelChangesNothing) {
    for (auto& row : shared.baseline_curves)
        row.fill(1.5);
    auto form = open();
    form->chkActive(0)->setChecked(false);
    form->Command1_Click();
    EXPECT_EQ(state, (std::array<std::int16_t, 21>{0, 1, 2, 0}));
    EXPECT_EQ(redraws, 0);

    form->cmdReset_Click();
    EXPECT_EQ(count, 0);
    EXPECT_EQ(active, 0);
    EXPECT_EQ(state, (std::array<std::int16_t, 21>{})) << "no curve is left active";
    EXPECT_EQ(clears, 1);
    EXPECT_EQ(redraws, 1);
    for (const auto& row : shared.baseline_curves) {
        ASSERT_EQ(row[0], 1.5) << "the baseline stays";
        ASSERT_EQ(row[1] + row[2] + row[3], 0.0);
        ASSERT_EQ(row[4], 1.5) << "only the columns in use are zeroed";
    }
}

TEST_F(zoom_dialog_fixture, FieldsShowTheViewAndAreHeldToTheSetupRange) {
    auto d = open(false);
    const char* texts[4] = {"450", "700", "0.100", "2.000"};
    for (int i = 0; i < 4; ++i)
        EXPECT_EQ(d->txtInst(i)->text(), QString::fromLatin1(texts[i]));
    EXPECT_EQ(type(*d, 0, "300"), QStringLiteral("400"));
    EXPECT_EQ(type(*d, 0, "699.4"), QStringLiteral("698"));
    type(*d, 0, "500");
    EXPECT_EQ(type(*d, 1, "501"), QStringLiteral("502"));
    EXPECT_EQ(type(*d, 1, "950"), QStringLiteral("800"));
    EXPECT_EQ(type(*d, 2, "-7"), QStringLiteral("-7.000")) << "no limits on Y";
    type(*d, 3, "5.5");
    d->cmdOk_Click();
    EXPECT_EQ(view.view_start, 500);
    EXPECT_EQ(view.view_stop, 800);
    EXPECT_DOUBLE_EQ(view.view_low, -7.0);
    EXPECT_DOUBLE_EQ(view.view_high, 5.5);
    EXPECT_EQ(redraws, 1);
    EXPECT_TRUE(prompts::shown().empty());
}

TEST_F(zoom_dialog_fixture, OkRefusesAYRangeUnderTheNarrowestOfTheUnit) {
    auto d = open(false);
    type(*d, 2, "1.0");
    type(*d, 3, "1.0005");
    d->cmdOk_Click();
    ASSERT_EQ(prompts::shown().size(), 1u);
    EXPECT_EQ(prompts::shown()[0].text, QStringLiteral("High vaule - low value must >=0.001!"));
    EXPECT_EQ(redraws, 0);
    EXPECT_DOUBLE_EQ(view.view_low, 0.1) << "the view stays as it was";

    auto pt = open(true);
    EXPECT_EQ(pt->txtInst(2)->text(), QStringLiteral("0.10"));
    type(*pt, 2, "50");
    pt->txtInst(3)->setText(QStringLiteral("50.005")); // typed, the field not yet left
    pt->cmdOk_Click();
    ASSERT_EQ(prompts::shown().size(), 2u);
    EXPECT_EQ(prompts::shown()[1].text, QStringLiteral("High vaule - low value must >=0.01!"));
    EXPECT_EQ(redraws, 0);
}
