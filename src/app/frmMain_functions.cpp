// frmMain: entering and leaving the measuring functions, the toolbar states and the toolbar's
// dispatch by function_id.
#include "frmMain.h"
#include "functions/function_window.h"
#include "link/command_ring.h"
#include "link/link_context.h"
#include "link/shared_state.h"
#include "platform/comm_port.h"
#include "platform/prompts.h"
#include "platform/status_bar.h"
#include "report/export_excel.h"
#include "report/frmReport.h"
#include "report/quick_print.h"
#include "report/report_make.h"
#include "system/dlgSystem.h"
#include "system/frmVerify.h"

#include <QAction>
#include <QMdiArea>
#include <QMdiSubWindow>

namespace lumora {

void frmMain::toolbar_enable_function() {
    set_toolbar_buttons(false, {1, 2, 3}, true);
    shared.toolbar_locked = false;
}
void frmMain::toolbar_enable_stop() {
    set_toolbar_buttons(false, {4}, false);
    shared.toolbar_locked = true;
}
void frmMain::toolbar_enable_photometry() {
    set_toolbar_buttons(false, {1, 2, 3, 15, 16}, true);
    shared.toolbar_locked = false;
}
void frmMain::toolbar_enable_quant() {
    set_toolbar_buttons(false, {1, 2, 3, 15, 16}, true);
    shared.toolbar_locked = false;
}
void frmMain::toolbar_enable_spectrum() {
    set_toolbar_buttons(true, {4}, true);
    shared.toolbar_locked = false;
}
void frmMain::toolbar_enable_timescan() {
    set_toolbar_buttons(true, {4, 11, 12}, true);
    shared.toolbar_locked = false;
}
void frmMain::toolbar_enable_timescan2() {
    set_toolbar_buttons(false, {1, 2, 3, 6, 7, 8, 15, 16}, true);
    shared.toolbar_locked = false;
}
void frmMain::toolbar_enable_kinetic() {
    set_toolbar_buttons(false, {1, 2, 3, 6, 7, 8, 15, 16}, true);
    shared.toolbar_locked = false;
}
void frmMain::toolbar_enable_656() {
    // The status bar keeps its state here.
    set_toolbar_buttons(false, {3, 16}, status_->isEnabled());
    shared.toolbar_locked = false;
}

void frmMain::toolbar_enable_for(int function_id) {
    switch (function_id) {
    case fid_photometry:
        toolbar_enable_photometry();
        break;
    case fid_spectrum:
        toolbar_enable_spectrum();
        break;
    case fid_timescan:
        toolbar_enable_timescan();
        break;
    case fid_timescan2:
        toolbar_enable_timescan2();
        break;
    case fid_kinetic:
        toolbar_enable_kinetic();
        break;
    case fid_quantitative:
    case fid_protein:
        toolbar_enable_quant();
        break;
    case fid_verify:
        toolbar_enable_656();
        break;
    default:
        toolbar_enable_function();
        break;
    }
}

function_window* frmMain::current_function() const {
    return function_;
}

void frmMain::enter_function(int function_id) {
    const function_entry* entry = function_by_id(function_id);
    if (!entry) return;
    unload_form();
    shared.function_id = static_cast<std::int16_t>(function_id);
    function_window* window =
        function_id == fid_verify ? new frmVerify(*entry) : make_function_window(*entry);
    function_ = window;
    QMdiSubWindow* sub = client_->addSubWindow(window);
    sub->setAttribute(Qt::WA_DeleteOnClose);
    sub->setWindowTitle(window->windowTitle());
    sub->setWindowIcon(windowIcon());
    sub->showMaximized();
    window->set_form_visible(true);
    if (function_id == fid_verify) {
        toolbar_enable_656();
        return;
    }
    auto& loaded = shared.parameters_loaded[static_cast<std::size_t>(function_id)];
    if (loaded) {
        loaded = false;
        toolbar_enable_for(function_id);
    } else {
        // The toolbar stays as unload_form left it: the modal dialog keeps the user away.
        show_setup_dialog(*window);
    }
}

void frmMain::show_setup_dialog(function_window& window) {
    QDialog* dlg = window.make_setup_dialog(this);
    if (!dlg) return;
    setup_ = dlg;
    const int id = window.entry().function_id;
    connect(dlg, &QDialog::finished, this, [this, id] {
        if (shared.function_id == id) toolbar_enable_for(id);
    });
    dlg->setWindowModality(Qt::WindowModal);
    dlg->show();
}

void frmMain::mnuFuncSysSetup_Click() {
    if (!port_->PortOpen()) {
        prompts::message_box(QStringLiteral("The function is not available!"), box_icon::information,
                             QStringLiteral("System Message"));
        return;
    }
    unload_form();
    shared.function_id = fid_system;
    auto* dlg = new dlgSystem(this);
    system_ = dlg;
    dlg->setWindowModality(Qt::WindowModal);
    dlg->show();
}

void frmMain::mnuFuncSysVerify_Click() {
    if (!port_->PortOpen()) {
        prompts::message_box(QStringLiteral("The function is not available!"), box_icon::information,
                             QStringLiteral("System Message"));
        return;
    }
    enter_function(fid_verify);
}

bool frmMain::function_with_data_check() {
    const function_entry* entry = function_by_id(shared.function_id);
    if (!entry || !entry->type_word || !function_) {
        prompts::message_box(QStringLiteral("The function is not available!"), box_icon::information,
                             QStringLiteral("System Message"));
        return false;
    }
    if (!function_->has_data()) {
        prompts::message_box(QStringLiteral("The data is empty!"), box_icon::information,
                             QStringLiteral("System Message"));
        return false;
    }
    return true;
}

namespace {

// The one report preview; a new one replaces it.
QPointer<frmReport> report_window;

} // namespace

void frmMain::mnuFilePrintPreview_Click() {
    if (!function_with_data_check()) return;
    if (report_window) report_window->close();
    QPointer<function_window> fn = function_;
    // The preview draws the function's report at its scale, which starts at 0.5.
    report_window = new frmReport(
        [fn](double scale) { return fn ? report_make(*fn, scale) : std::unique_ptr<report_page>(); }, this);
    report_window->show();
}

void frmMain::mnuFilePrint_Click() {
    if (!function_with_data_check()) return;
    const print_result printed = print_report(*function_);
    if (!printed.ok) {
        prompts::message_box(QStringLiteral("Printer failed, please check the printer!"),
                             box_icon::exclamation, QStringLiteral("Warning"));
        return;
    }
    if (!printed.pdf_path.isEmpty()) status_->set_text(6, QStringLiteral("Printed to ") + printed.pdf_path);
}

void frmMain::mnuFileExport_Click() {
    if (!function_with_data_check()) return;
    begin_exchange();
    export_excel(*function_);
    shared.measure_mode = mm_lambda_panel;
    toolbar_enable_for(shared.function_id);
}

void frmMain::tbToolBar_ButtonClick(const QString& key) {
    const toolbar_action a = toolbar_action_for(key.toStdString(), shared.function_id);
    if (a.routine == toolbar_routine::none || !function_) return;
    function_window& fn = *function_;
    if (a.routine == toolbar_routine::report_preview) return mnuFilePrintPreview_Click();
    if (a.routine == toolbar_routine::report_print) return mnuFilePrint_Click();
    if (a.routine == toolbar_routine::setup) return show_setup_dialog(fn);
    if (a.routine == toolbar_routine::enable_toolbar) return toolbar_enable_for(shared.function_id);
    if (a.mode_before_check) shared.measure_mode = a.measure_mode;
    if (a.batch_check && !fn.batch_check()) {
        toolbar_enable_quant();
        shared.link_ready = true;
        return;
    }
    if (a.preparing) status_->set_text(6, QStringLiteral("Preparing..."));
    if (a.disable) toolbar_disable_function();
    if (a.zero_flag_set) fn.set_zero_flag(true);
    if (a.zero_flag_clear) fn.set_zero_flag(false);
    if (a.curve_check) fn.curve_check();
    if (a.measure_mode != 0) shared.measure_mode = a.measure_mode;
    if (a.routine == toolbar_routine::stop_kinetic) {
        shared.measure_mode = mm_lambda_panel;
        toolbar_enable_kinetic();
    }
    fn.run(a.routine);
}

} // namespace lumora
