// Scripted prompts, the grid as a store of cell texts and the status panels.
#include "platform/grid.h"
#include "platform/prompts.h"
#include "platform/status_bar.h"

#include <QAccessible>
#include <QSignalSpy>
#include <QTest>
#include <gtest/gtest.h>

using namespace lumora;

TEST(Prompts, ScriptedAnswersAreUsedInOrderAndEveryBoxIsRecorded) {
    prompts::script({box_answer::cancel}, {QStringLiteral("batch_1")});
    prompts::clear_shown();
    EXPECT_EQ(prompts::message_box("Data number >100, restart from 1 ?", box_icon::critical, "Warning",
                                   box_buttons::ok_cancel),
              box_answer::cancel);
    EXPECT_EQ(prompts::message_box("next", box_icon::information, "Information"), box_answer::ok)
        << "an empty script answers OK";
    EXPECT_EQ(prompts::input_box("Name?", "Save", "x"), QStringLiteral("batch_1"));
    EXPECT_EQ(prompts::input_box("Name?", "Save", "dflt"), QStringLiteral("dflt"));
    ASSERT_EQ(prompts::shown().size(), 4u);
    EXPECT_EQ(prompts::shown()[0].title, QStringLiteral("Warning"));
    EXPECT_EQ(prompts::shown()[0].icon, box_icon::critical);
    EXPECT_TRUE(prompts::shown()[2].is_input);
    prompts::unscript();
}

TEST(Grid, CellsActAsTheStoreOfResults) {
    grid g;
    g.setRows(2);
    g.setCols(3);
    g.setTextMatrix(0, 0, "No.");
    g.setTextMatrix(1, 2, "0.123");
    g.setTextMatrix(5, 0, "ignored");
    EXPECT_EQ(g.TextMatrix(1, 2), QStringLiteral("0.123"));
    EXPECT_EQ(g.TextMatrix(1, 1), QString());
    g.AddItem("2\t0.456\t1.5\textra");
    EXPECT_EQ(g.Rows(), 3);
    EXPECT_EQ(g.TextMatrix(2, 1), QStringLiteral("0.456"));
    g.Clear();
    EXPECT_EQ(g.Rows(), 3);
    EXPECT_EQ(g.TextMatrix(0, 0), QString());
}

TEST(StatusBar, SixNumberedPanelsReportWritesAndClicks) {
    status_bar bar;
    std::vector<std::pair<int, QString>> writes;
    QObject::connect(&bar, &status_bar::panel_written,
                     [&](int n, const QString& t) { writes.emplace_back(n, t); });
    bar.set_text(2, "0.000A");
    bar.set_text(6, "OK");
    bar.set_text(7, "nowhere");
    EXPECT_EQ(bar.text(2), QStringLiteral("0.000A"));
    EXPECT_EQ(bar.text(7), QString());
    ASSERT_EQ(writes.size(), 2u);
    EXPECT_EQ(writes[1], std::make_pair(6, QStringLiteral("OK")));
    QSignalSpy spy(&bar, &status_bar::panel_clicked);
    bar.resize(800, 30);
    bar.show();
    QTest::mouseClick(bar.panel(5), Qt::LeftButton);
    ASSERT_EQ(spy.count(), 1);
    EXPECT_EQ(spy.at(0).at(0).toInt(), 5);
    bar.setEnabled(false);
    QTest::mouseClick(bar.panel(3), Qt::LeftButton);
    EXPECT_EQ(spy.count(), 1) << "a disabled status bar takes no clicks";
}

TEST(StatusBar, AScreenReaderHearsEachPanelByItsTextAndPressesTheClickableOnes) {
    status_bar bar;
    bar.set_text(2, "0.123A");
    bar.set_text(2, "0.124A");
    bar.set_text(3, "Lambda...");
    QAccessibleInterface* reading = QAccessible::queryAccessibleInterface(bar.panel(2));
    ASSERT_NE(reading, nullptr);
    EXPECT_EQ(reading->text(QAccessible::Name), QStringLiteral("0.124A")) << "named by the last write";
    EXPECT_EQ(reading->text(QAccessible::Description), QStringLiteral("Reading"));
    EXPECT_NE(reading->role(), QAccessible::Button);
    EXPECT_EQ(reading->actionInterface()
                  ? reading->actionInterface()->actionNames().count(QAccessibleActionInterface::pressAction())
                  : 0,
              0);

    QSignalSpy spy(&bar, &status_bar::panel_clicked);
    QAccessibleInterface* lambda = QAccessible::queryAccessibleInterface(bar.panel(3));
    ASSERT_NE(lambda, nullptr);
    EXPECT_EQ(lambda->role(), QAccessible::Button);
    EXPECT_EQ(lambda->text(QAccessible::Name), QStringLiteral("Lambda..."));
    EXPECT_TRUE(lambda->state().focusable);
    ASSERT_NE(lambda->actionInterface(), nullptr);
    lambda->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    // Enter and Space on a clickable panel click it; other keys and other panels do nothing.
    QTest::keyClick(bar.panel(5), Qt::Key_Space);
    QTest::keyClick(bar.panel(5), Qt::Key_Enter, Qt::KeypadModifier);
    QTest::keyClick(bar.panel(5), Qt::Key_X);
    QTest::keyClick(bar.panel(6), Qt::Key_Return);
    ASSERT_EQ(spy.count(), 3);
    EXPECT_EQ(spy.at(0).at(0).toInt(), 3);
    EXPECT_EQ(spy.at(2).at(0).toInt(), 5);
    EXPECT_EQ(bar.panel(6)->focusPolicy(), Qt::NoFocus);
}
