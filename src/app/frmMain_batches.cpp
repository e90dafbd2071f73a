// The File menu's stored batches: a new name asked and checked, the active function's rows saved
// in one transaction, or a batch picked in DlgLoadData and the function rebuilt from it.
#include "frmMain.h"
#include "functions/function_window.h"
#include "link/command_ring.h"
#include "link/protocol.h"
#include "link/shared_state.h"
#include "platform/comm_port.h"
#include "platform/prompts.h"
#include "platform/status_bar.h"
#include "store/DlgLoadData.h"
#include "store/database.h"

namespace lumora {
namespace {

const QString system_message = QStringLiteral("System Message");

void inform(const QString& text) {
    prompts::message_box(text, box_icon::information, system_message);
}

} // namespace

void frmMain::show_database_state() {
    if (!db_on_server()) return;
    const QString failure = db_server_failure();
    status_->set_text(6, failure.isEmpty() ? QStringLiteral("Batches on ") + db_server_display()
                                           : QStringLiteral("The database is not reachable: ") + failure);
}

void frmMain::GetBatchName(const QString& name) {
    batch_name = name;
}

void frmMain::back_to_lambda() {
    if (!port_->PortOpen()) return;
    shared.measure_mode = mm_lambda_panel;
    send_message(cmd_goto_lambda);
}

bool frmMain::batch_function_check() {
    const QString function = batch_function_name(shared.function_id);
    if (function.isEmpty() || !function_ || !function_->keeps_batches()) {
        inform(QStringLiteral("The function is not available!"));
        back_to_lambda();
        return false;
    }
    return begin_exchange();
}

void frmMain::mnuFileSaveD_Click() {
    if (!batch_function_check()) return;
    if (!function_->batch_data()) {
        inform(QStringLiteral("The data is empty!"));
        back_to_lambda();
        return;
    }
    save_batch(true);
}

void frmMain::mnuFileSaveP_Click() {
    if (batch_function_check()) save_batch(false);
}

void frmMain::save_batch(bool data) {
    const QString name = prompts::input_box(
        QStringLiteral("Key in a batch name less than 20 characters.\n(Ex., myscan20030902)"),
        data ? QStringLiteral("Save data") : QStringLiteral("Save parameter"));
    const name_verdict verdict = check_batch_name(name);
    if (verdict != name_verdict::ok) {
        inform(name_verdict_text(verdict));
    } else {
        GetBatchName(name);
        status_->set_text(6, data ? QStringLiteral("Saving data, please wait...")
                                  : QStringLiteral("Saving parameter, please wait..."));
        setCursor(Qt::WaitCursor);
        if (data)
            data_save(name);
        else
            parameter_save(name);
        unsetCursor();
    }
    batch_name.clear();
    back_to_lambda();
}

void frmMain::save_fault(const db_error& e) {
    // The window keeps its data either way: the user saves it again once the store answers.
    const QString text =
        store_fault_text(e, QStringLiteral("The batch could not be saved, nothing of it was kept: "));
    status_->set_text(6, text);
    prompts::message_box(text, box_icon::exclamation, system_message);
}

void frmMain::data_save(const QString& name) {
    if (!function_) return;
    const QString function = batch_function_name(shared.function_id);
    if (function.isEmpty()) return;
    try {
        if (batch_save(batch_kind::data, function, name, function_->result_rows()) ==
            save_result::name_taken) {
            inform(QStringLiteral("The batch name has already existed, please try another!"));
            return;
        }
    } catch (const db_error& e) {
        return save_fault(e);
    }
    status_->set_text(6, QStringLiteral("Save data completed!"));
}

void frmMain::parameter_save(const QString& name) {
    if (!function_) return;
    const QString function = batch_function_name(shared.function_id);
    if (function.isEmpty()) return;
    try {
        if (batch_save(batch_kind::parameter, function, name, function_->parameter_rows()) ==
            save_result::name_taken) {
            inform(QStringLiteral("The batch name has already existed, please try another!"));
            return;
        }
    } catch (const db_error& e) {
        return save_fault(e);
    }
    status_->set_text(6, QStringLiteral("Save parameter completed!"));
}

void frmMain::mnuFileOpenD_Click() {
    open_batch(true);
}

void frmMain::mnuFileOpenP_Click() {
    open_batch(false);
}

void frmMain::open_batch(bool data) {
    if (!batch_function_check()) return;
    batch_name.clear();
    batch_mode = data ? QStringLiteral("D") : QStringLiteral("P");
    auto* dlg = new DlgLoadData(batch_function_name(shared.function_id), this);
    load_dialog_ = dlg;
    connect(dlg, &QDialog::finished, this, [this, data] {
        if (batch_name.isEmpty()) return; // a cancelled pick sends nothing
        const QString name = batch_name;
        setCursor(Qt::WaitCursor);
        if (data) {
            status_->set_text(6, QStringLiteral("Loading data, please wait..."));
            data_load(name);
        } else {
            parameter_load(name);
        }
        back_to_lambda();
        unsetCursor();
    });
    dlg->setWindowModality(Qt::WindowModal);
    dlg->show();
}

void frmMain::data_load(const QString& name) {
    if (!function_) return;
    std::vector<batch_row> rows;
    try {
        rows = batch_read(batch_kind::data, batch_function_name(shared.function_id), name);
    } catch (const db_error& e) {
        prompts::message_box(store_fault_text(e, QStringLiteral("The batch could not be read: ")),
                             box_icon::exclamation, system_message);
        return;
    }
    const bool has_parameters = std::any_of(rows.begin(), rows.end(),
                                            [](const batch_row& r) { return r.type == QLatin1String("P"); });
    if (!has_parameters) return;
    function_->load_result(rows);
    status_->set_text(6, QStringLiteral("Load data completed!"));
}

void frmMain::parameter_load(const QString& name) {
    if (!function_) return;
    std::vector<batch_row> rows;
    try {
        rows = batch_read(batch_kind::parameter, batch_function_name(shared.function_id), name);
    } catch (const db_error& e) {
        prompts::message_box(store_fault_text(e, QStringLiteral("The batch could not be read: ")),
                             box_icon::exclamation, system_message);
        return;
    }
    if (rows.empty()) return;
    function_->read_parameters(rows);
    toolbar_enable_for(shared.function_id);
    function_->parameters_loaded();
}

} // namespace lumora
