// The lambda panel against the simulator: go to a wavelength, zero there, the modes of the live
// reading, and typed input held to its range as the boxes show it.
#include "functions/frmLambda.h"
#include "link/frmPortSet.h"
#include "sim_rig.h"

#include <QComboBox>
#include <QCoreApplication>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>
#include <QTimer>
#include <gtest/gtest.h>
#include <tuple>

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

namespace {

// Makes `w` the active window, as a click on it would, so that the focus moves for real. Timer1
// rests meanwhile: the rig ticks it on its own clock.
void activate(sim_rig& rig, QWidget& w) {
    QTimer& timer = rig.window->Timer1();
    const bool ticking = timer.isActive();
    timer.stop();
    w.activateWindow();
    EXPECT_TRUE(QTest::qWaitForWindowActive(&w));
    if (ticking) timer.start();
}

// Selects the field's text and types `text` into it, as the user does.
void type_into(QWidget* field, const QString& text) {
    QTest::mouseClick(field, Qt::LeftButton);
    QTest::keyClick(field, Qt::Key_A, Qt::ControlModifier);
    QTest::keyClicks(field, text);
}

} // namespace

TEST(LambdaPanel, TypedFactorAndWavelengthTakeEffectAsTheBoxesShowThem) {
    sim_rig rig;
    ASSERT_TRUE(rig.open_port_until_live());
    rig.instrument.control("sample neutral:0.3");
    rig.run_for(1.0);
    ASSERT_EQ(rig.panel(2), QStringLiteral("0.300A"));

    frmLambda& panel = rig.window->show_lambda_panel();
    activate(rig, panel);
    auto* measure = panel.findChild<QComboBox*>("cmbMeasure");
    auto* factor = panel.findChild<QLineEdit*>("txtInst");
    auto* wavelength = panel.findChild<QComboBox*>("cmbInst");
    ASSERT_TRUE(measure && factor && wavelength);
    measure->setFocus();
    QTest::keyClick(measure, Qt::Key_Down);
    QTest::keyClick(measure, Qt::Key_Down);
    ASSERT_EQ(measure->currentText(), QStringLiteral("Factor*ABS"));
    ASSERT_TRUE(factor->isEnabled());

    // The factor in force is the one the box shows once the focus has left it.
    for (const auto& [typed, shown, reading] :
         {std::tuple{"12000", "10000.000", "3000.000C"}, std::tuple{"-5", "0.000", "0.000C"},
          std::tuple{"2.5", "2.500", "0.750C"}}) {
        type_into(factor, QString::fromLatin1(typed));
        QTest::keyClick(factor, Qt::Key_Tab);
        EXPECT_FALSE(factor->hasFocus());
        EXPECT_EQ(factor->text(), QString::fromLatin1(shown));
        rig.run_for(1.0);
        EXPECT_EQ(rig.panel(2), QString::fromLatin1(reading)) << typed;
    }

    // Enter in the wavelength box: the list takes the held value, never the raw text.
    const int listed = wavelength->count();
    for (const auto& [typed, held] : {std::pair{"1200", "1100"}, std::pair{"abc", "330"}}) {
        type_into(wavelength->lineEdit(), QString::fromLatin1(typed));
        QTest::keyClick(wavelength->lineEdit(), Qt::Key_Return);
        EXPECT_EQ(wavelength->currentText(), QString::fromLatin1(held));
        EXPECT_EQ(wavelength->findText(QString::fromLatin1(typed)), -1) << typed;
        EXPECT_NE(wavelength->findText(QString::fromLatin1(held)), -1) << held;
    }
    EXPECT_EQ(wavelength->count(), listed + 2);
}
