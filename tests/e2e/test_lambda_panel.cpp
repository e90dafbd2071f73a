// The lambda panel against the simulator: go to a wavelength, zero there, and the modes of the
// live reading.
#include "functions/frmLambda.h"
#include "link/frmPortSet.h"
#include "sim_rig.h"

#include <QComboBox>
#include <QCoreApplication>
#include <QLineEdit>
#include <QPushButton>
#include <gtest/gtest.h>

using namespace lumora;
using lumora::test::sim_rig;

TEST(LambdaPanel, GotoMovesTheInstrumentAndZeroesOnArrival) {
    sim_rig rig;
    ASSERT_TRUE(rig.open_port_until_live());
    rig.instrument.control("sample dye");
    rig.run_for(1.0);
    EXPECT_NE(rig.panel(2), QStringLiteral("0.000A")) << "the dye absorbs at 500 nm";

    frmLambda& panel = rig.window->show_lambda_panel();
    EXPECT_EQ(panel.cmbInst()->currentText(), QStringLiteral("500"));
    EXPECT_FALSE(panel.txtInst()->isEnabled()) << "the factor is only for Factor*ABS";
    rig.instrument.control("sample blank");
    panel.cmbInst()->setEditText("400");
    panel.cmdLambda(0)->click();
    EXPECT_EQ(rig.panel(6), QStringLiteral("Preparing..."));
    rig.run_for(3.0);
    EXPECT_EQ(rig.instrument.grating_nm(), 400.0);
    EXPECT_EQ(rig.panel(1), QStringLiteral("400nm"));
    EXPECT_EQ(rig.panel(2), QStringLiteral("0.000A")) << "the arrival re-arms the zero";
    EXPECT_TRUE(panel.isVisible()) << "the panel stays open while the reading updates";

    panel.cmbMeasure()->setCurrentIndex(1);
    panel.cmbMeasure_Click();
    rig.run_for(1.0);
    EXPECT_EQ(rig.panel(2), QStringLiteral("100.0%T"));
    panel.cmdLambda(2)->click();
    rig.run_for(1.0);
    EXPECT_EQ(rig.panel(2), QStringLiteral("100.00%T"));
    panel.cmdLambda(2)->click();

    // A neutral filter of 0.3 A, then Zero re-zeroes in place.
    rig.instrument.control("sample neutral:0.3");
    panel.cmbMeasure()->setCurrentIndex(0);
    panel.cmbMeasure_Click();
    rig.run_for(1.0);
    EXPECT_EQ(rig.panel(2), QStringLiteral("0.300A"));
    panel.cmbMeasure()->setCurrentIndex(2);
    panel.cmbMeasure_Click();
    EXPECT_TRUE(panel.txtInst()->isEnabled());
    panel.txtInst()->setText("2.5");
    panel.txtInst_Change();
    rig.run_for(1.0);
    EXPECT_EQ(rig.panel(2), QStringLiteral("0.750C"));
    panel.cmdLambda(1)->click();
    rig.run_for(2.0);
    EXPECT_EQ(rig.panel(2), QStringLiteral("0.000C"));
    const std::vector<int> sent = rig.commands_received();
    const std::vector<int> tail(sent.end() - 2, sent.end());
    EXPECT_EQ(tail, (std::vector<int>{6, 8}));

    panel.cmdLambda(3)->click();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_EQ(rig.window->lambda_panel(), nullptr) << "Exit unloads the panel";
    EXPECT_EQ(shared.lambda_show_mode, 2) << "the settings stay in force";
}
