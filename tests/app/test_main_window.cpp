// The main window without an instrument: menus, entering and leaving functions, the toolbar's
// states and clicks, and the window position across starts.
#include "app/frmMain.h"
#include "functions/function_window.h"
#include "link/frmPortSet.h"
#include "link/shared_state.h"
#include "platform/app_settings.h"
#include "platform/comm_port.h"
#include "platform/prompts.h"
#include "platform/status_bar.h"

#include <QAction>
#include <QCoreApplication>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMenu>
#include <QPushButton>
#include <QTest>
#include <gtest/gtest.h>

using namespace lumora;

namespace {

struct main_window_fixture : ::testing::Test {
    std::unique_ptr<frmMain> window;
    void SetUp() override {
        reset_shared_state();
        shared.function_id = fid_no_function;
        window = std::make_unique<frmMain>(std::make_unique<memory_backend>());
        window->Form_Load();
        window->enable_menus();
        prompts::script();
        prompts::clear_shown();
    }
    void TearDown() override {
        prompts::unscript();
        window.reset();
    }
    void settle() { QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete); }
    std::vector<int> enabled_buttons() const {
        std::vector<int> on;
        for (int i = 1; i <= 16; ++i)
            if (i != 5 && i != 14 && window->toolbar_button(i)->isEnabled()) on.push_back(i);
        return on;
    }
};

} // namespace

TEST_F(main_window_fixture, EnteringAFunctionShowsItsWindowAndSetupThenItsToolbar) {
    window->menu_action("mnuFuncSpectrum")->trigger();
    EXPECT_EQ(shared.function_id, fid_spectrum);
    ASSERT_NE(window->current_function(), nullptr);
    EXPECT_EQ(window->current_function()->objectName(), QStringLiteral("frmSpectrum"));
    EXPECT_EQ(window->current_function()->windowTitle(), QStringLiteral("Spectrum"));
    ASSERT_NE(window->current_setup_dialog(), nullptr);
    EXPECT_EQ(window->current_setup_dialog()->objectName(), QStringLiteral("dlgSpectrum"));
    EXPECT_EQ(window->current_setup_dialog()->windowTitle(), QStringLiteral("Setup Spectrum"));
    // The setup dialog is modal; under it the toolbar and status bar stay as unload_form left them.
    EXPECT_TRUE(window->current_setup_dialog()->isModal());
    EXPECT_EQ(enabled_buttons(), (std::vector<int>{1, 2, 3}));
    EXPECT_TRUE(window->sbStatusBar().isEnabled());

    window->current_setup_dialog()->accept();
    const std::vector<int> spectrum{1, 2, 3, 6, 7, 8, 9, 10, 11, 12, 13, 15, 16};
    EXPECT_EQ(enabled_buttons(), spectrum);
    EXPECT_FALSE(shared.toolbar_locked);

    // Entering another function unloads the first.
    window->menu_action("mnuFuncKinetic")->trigger();
    settle();
    EXPECT_EQ(shared.function_id, fid_kinetic);
    ASSERT_EQ(window->client_area()->subWindowList().size(), 1);
    EXPECT_EQ(window->current_function()->objectName(), QStringLiteral("frmKinetic"));
    window->current_setup_dialog()->reject();
    const std::vector<int> kinetic{1, 2, 3, 6, 7, 8, 15, 16};
    EXPECT_EQ(enabled_buttons(), kinetic);

    // A stored parameter batch skips the setup dialog once.
    shared.parameters_loaded[fid_photometry] = true;
    window->menu_action("mnuFuncPhotometry")->trigger();
    EXPECT_EQ(window->current_setup_dialog(), nullptr);
    EXPECT_FALSE(shared.parameters_loaded[fid_photometry]);
    const std::vector<int> photometry{1, 2, 3, 15, 16};
    EXPECT_EQ(enabled_buttons(), photometry);

    window->unload_form();
    settle();
    EXPECT_EQ(shared.function_id, fid_no_function);
    EXPECT_TRUE(window->client_area()->subWindowList().isEmpty());
    EXPECT_EQ(enabled_buttons(), (std::vector<int>{1, 2, 3}));
}

TEST_F(main_window_fixture, ToolbarClicksReachTheFunctionsRoutinesAndDisabledButtonsDoNot) {
    window->menu_action("mnuFuncSpectrum")->trigger();
    window->current_setup_dialog()->accept();
    function_window* fn = window->current_function();

    window->toolbar_button(2)->trigger(); // Zero
    ASSERT_EQ(fn->routines_run().size(), 1u);
    EXPECT_EQ(fn->routines_run()[0], toolbar_routine::read_base_line);
    EXPECT_EQ(shared.measure_mode, mm_spectrum);
    EXPECT_EQ(window->sbStatusBar().text(6), QStringLiteral("Preparing..."));
    EXPECT_EQ(enabled_buttons(), std::vector<int>{4}) << "only Stop while the baseline scans";
    EXPECT_TRUE(shared.toolbar_locked);

    window->toolbar_button(3)->trigger(); // Read, disabled now
    EXPECT_EQ(fn->routines_run().size(), 1u) << "a disabled button never reaches the handler";

    window->toolbar_enable_spectrum();
    window->toolbar_button(9)->trigger();  // Peak
    window->toolbar_button(11)->trigger(); // Derivative
    ASSERT_EQ(fn->routines_run().size(), 3u);
    EXPECT_EQ(fn->routines_run()[1], toolbar_routine::peak);
    EXPECT_EQ(fn->routines_run()[2], toolbar_routine::derivative);

    // A key the function does not serve does nothing, even if the button were live.
    window->menu_action("mnuFuncQuant")->trigger();
    window->current_setup_dialog()->accept();
    window->set_toolbar_buttons(true, {}, true);
    function_window* quant = window->current_function();
    window->toolbar_button(4)->trigger(); // Stop
    window->toolbar_button(6)->trigger(); // Auto
    EXPECT_TRUE(quant->routines_run().empty());
}

TEST_F(main_window_fixture, PortDialogCancelAndCloseGiveBackTheMenusButNotTheStatusBar) {
    QAction* file = window->findChild<QMenu*>(QStringLiteral("mnuFile"))->menuAction();
    frmPortSet& dlg = window->port_dialog();
    for (const char* button : {"cmdCancel", "cmdPortClose"}) {
        window->disable_menus();
        window->toolbar_disable_function();
        window->show_port_dialog();
        QTest::mouseClick(dlg.findChild<QPushButton*>(QString::fromLatin1(button)), Qt::LeftButton);
        EXPECT_TRUE(file->isEnabled()) << button;
        EXPECT_FALSE(window->sbStatusBar().isEnabled()) << button;
    }
    EXPECT_EQ(window->sbStatusBar().text(4), QStringLiteral("Off-line"));
    EXPECT_TRUE(dlg.isVisible()) << "Port close leaves the dialog open";
}

TEST(MainWindowLoad, WritesTheClickablePanelsThroughTheStatusBarAndTheCaptionFromTheStore) {
    reset_shared_state();
    frmMain window(std::make_unique<memory_backend>());
    std::vector<std::pair<int, QString>> writes;
    QObject::connect(&window.sbStatusBar(), &status_bar::panel_written,
                     [&](int n, const QString& t) { writes.emplace_back(n, t); });
    window.Form_Load();
    const std::vector<std::pair<int, QString>> load{{4, "Off-line"}, {3, "Lambda..."}, {5, "Port..."}};
    EXPECT_EQ(writes, load) << "the trace sees every panel write";
    EXPECT_TRUE(window.windowTitle().trimmed().isEmpty()) << "no Software Name, no caption";
    shared.software_name = QStringLiteral("Lumora");
    window.Form_Load();
    EXPECT_EQ(window.windowTitle(), QStringLiteral("Lumora"));
}

TEST_F(main_window_fixture, SystemItemsNeedTheOpenPort) {
    window->menu_action("mnuFuncSysSetup")->trigger();
    window->menu_action("mnuFuncSysVerify")->trigger();
    ASSERT_EQ(prompts::shown().size(), 2u);
    for (const auto& box : prompts::shown()) {
        EXPECT_EQ(box.title, QStringLiteral("System Message"));
        EXPECT_EQ(box.text, QStringLiteral("The function is not available!"));
        EXPECT_EQ(box.icon, box_icon::information);
    }
    EXPECT_EQ(shared.function_id, fid_no_function);

    ASSERT_EQ(window->MSComm1().setPortOpen(true), QString());
    window->menu_action("mnuFuncSysVerify")->trigger();
    EXPECT_EQ(shared.function_id, fid_verify);
    EXPECT_EQ(window->current_function()->windowTitle(), QStringLiteral("Verify Bandwidth"));
    EXPECT_EQ(enabled_buttons(), (std::vector<int>{3, 16}));
    window->menu_action("mnuFuncSysSetup")->trigger();
    settle();
    EXPECT_EQ(shared.function_id, fid_system);
    EXPECT_TRUE(window->client_area()->subWindowList().isEmpty());
}

TEST_F(main_window_fixture, ReportAndPrintTellWhenThereIsNothingToShow) {
    window->menu_action("mnuFilePrint")->trigger();
    window->menu_action("mnuFuncTimescan")->trigger();
    window->current_setup_dialog()->accept();
    window->toolbar_button(15)->trigger();
    ASSERT_EQ(prompts::shown().size(), 2u);
    EXPECT_EQ(prompts::shown()[0].text, QStringLiteral("The function is not available!"));
    EXPECT_EQ(prompts::shown()[1].text, QStringLiteral("The data is empty!"));
}

TEST_F(main_window_fixture, MenusAndToolbarCarryTheirNamesCaptionsAndTips) {
    const std::pair<const char*, const char*> items[] = {{"mnuFileOpenP", "Load parameter"},
                                                         {"mnuFileOpenD", "Load data"},
                                                         {"mnuFileSaveP", "Save parameter"},
                                                         {"mnuFileSaveD", "Save data"},
                                                         {"mnuFileExport", "Data export to Excel"},
                                                         {"mnuFilePrintPreview", "Report preview"},
                                                         {"mnuFilePrint", "Print"},
                                                         {"mnuFileExit", "Exit"},
                                                         {"mnuSetComPort", "Set com port"},
                                                         {"mnuFuncTimescan", "Time scan"},
                                                         {"mnuFuncProtein", "Protein analysis"},
                                                         {"mnuFuncSysSetup", "Property setup"},
                                                         {"mnuFuncSysVerify", "Verify bandwidth"},
                                                         {"mnuHelpAbout", "About"}};
    for (const auto& [name, caption] : items) {
        QAction* a = window->menu_action(QString::fromLatin1(name));
        ASSERT_NE(a, nullptr) << name;
        EXPECT_EQ(a->text(), QString::fromLatin1(caption));
    }
    EXPECT_EQ(window->toolbar_button(12)->toolTip(), QStringLiteral("+-* Scan"));
    EXPECT_EQ(window->toolbar_button(2)->toolTip(), QStringLiteral("Zero/Baseline"));
    EXPECT_TRUE(window->toolbar_button(5)->isSeparator());
    EXPECT_TRUE(window->toolbar_button(14)->isSeparator());
    EXPECT_FALSE(window->toolbar_button(16)->icon().pixmap(QSize(24, 24), 2.0).isNull());
}

TEST(MainWindowPosition, IsStoredAtCloseAndRestoredAtTheNextStart) {
    reset_shared_state();
    {
        frmMain first(std::make_unique<memory_backend>());
        first.setGeometry(70, 90, 812, 633);
        first.close();
    }
    EXPECT_EQ(app_settings::get("MainWidth"), QStringLiteral("812"));
    EXPECT_EQ(app_settings::get("Missing", "d"), QStringLiteral("d"));
    frmMain second(std::make_unique<memory_backend>());
    EXPECT_EQ(second.geometry().size(), QSize(812, 633));
    EXPECT_EQ(second.geometry().topLeft(), QPoint(70, 90));
}
