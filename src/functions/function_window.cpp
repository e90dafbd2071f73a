#include "function_window.h"

#include "link/shared_state.h"

#include <QCloseEvent>
#include <QDialogButtonBox>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace lumora {

main_window_hooks main_hooks;

function_window::function_window(const function_entry& entry, QWidget* parent)
    : QWidget(parent), entry_(entry) {
    setObjectName(QString::fromLatin1(entry.window));
    setWindowTitle(QString::fromLatin1(entry.caption));
    setAttribute(Qt::WA_DeleteOnClose);
    setMinimumSize(480, 360);
}

void function_window::set_form_visible(bool visible) {
    setVisible(visible);
}

void function_window::run(toolbar_routine routine) {
    routines_run_.push_back(routine);
}

QDialog* function_window::make_setup_dialog(QWidget* parent) {
    if (!entry_.setup) return nullptr;
    return new setup_dialog(entry_.setup, entry_.setup_caption, parent);
}

void function_window::closeEvent(QCloseEvent* event) {
    // Leaving a function hands the main window back to "no function".
    shared.function_id = fid_no_function;
    emit unloading();
    event->accept();
}

setup_dialog::setup_dialog(const char* name, const char* caption, QWidget* parent) : QDialog(parent) {
    setObjectName(QString::fromLatin1(name));
    setWindowTitle(QString::fromLatin1(caption));
    setAttribute(Qt::WA_DeleteOnClose);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    buttons->button(QDialogButtonBox::Ok)->setObjectName(QStringLiteral("cmdOk"));
    buttons->button(QDialogButtonBox::Cancel)->setObjectName(QStringLiteral("cmdCancel"));
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(buttons);
}

} // namespace lumora
