#pragma once
// The File menu's stored batches driven as a user drives them: a name typed into the input box,
// a row picked in "Select a batch name", and the leave-and-return between save and load.
#include "app/frmMain.h"
#include "functions/function_window.h"
#include "link/protocol.h"
#include "platform/grid.h"
#include "platform/prompts.h"
#include "sim_rig.h"
#include "store/DlgLoadData.h"

#include <QAction>
#include <gtest/gtest.h>

namespace lumora::test {

struct file_menu {
    sim_rig& rig;

    // "Save data" or "Save parameter" with `name` typed in; the boxes shown are in prompts::shown().
    void save(const char* entry, const QString& name) {
        prompts::script({}, {name});
        prompts::clear_shown();
        rig.window->menu_action(entry)->trigger();
    }
    // "Load data" or "Load parameter": the row of `name` clicked (none for ""), then OK; or Cancel.
    bool load(const char* entry, const QString& name, bool ok = true) {
        prompts::clear_shown();
        rig.window->menu_action(entry)->trigger();
        auto* dlg = qobject_cast<DlgLoadData*>(rig.window->load_dialog());
        if (!dlg) return false;
        for (int row = 1; row < dlg->msgData().Rows(); ++row)
            if (!name.isEmpty() && dlg->msgData().TextMatrix(row, 0) == name) dlg->msgData_Click(row);
        if (ok)
            dlg->OKButton_Click();
        else
            dlg->CancelButton_Click();
        return true;
    }
    // Another function and back again, its setup dialog closed with Cancel each time: the window
    // of the function comes back empty.
    void leave_and_return(const char* function_menu) {
        rig.window->menu_action("mnuFuncPhotometry")->trigger();
        if (QDialog* d = rig.window->current_setup_dialog()) d->reject();
        rig.window->menu_action(function_menu)->trigger();
        if (QDialog* d = rig.window->current_setup_dialog()) d->reject();
    }
    // The commands the instrument receives over the next second.
    std::vector<int> commands_after(const std::function<void()>& action) {
        const std::size_t before = rig.commands_received().size();
        action();
        rig.run_for(1.0);
        const auto all = rig.commands_received();
        return {all.begin() + static_cast<std::ptrdiff_t>(std::min(before, all.size())), all.end()};
    }
};

// With LUMORA_SHOT_DIR set, keeps a picture of the main window for a look by eye.
inline void keep_shot(sim_rig& rig, const QString& name) {
    const QString dir = qEnvironmentVariable("LUMORA_SHOT_DIR");
    if (dir.isEmpty()) return;
    rig.window->resize(1000, 760);
    rig.window->grab().save(dir + "/" + name + ".png");
}

inline std::string rows_text(const std::vector<batch_row>& rows) {
    QStringList out;
    for (const batch_row& r : rows)
        out << r.type + QString::number(r.seq) + "/" + QString::number(r.set) + "=" + r.value;
    return out.join(' ').toStdString();
}

// The rows of a stored batch, in the store's order.
inline std::string stored(batch_kind kind, const char* function, const QString& name) {
    return rows_text(batch_read(kind, QString::fromLatin1(function), name));
}

} // namespace lumora::test
