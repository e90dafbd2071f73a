#include "prompts.h"

#include <QInputDialog>
#include <QMessageBox>
#include <QPointer>

namespace lumora {
namespace {

struct script_state {
    bool active = false;
    std::deque<box_answer> answers;
    std::deque<QString> inputs;
    std::vector<shown_box> shown;
    QPointer<QWidget> parent;
};

script_state& state() {
    static script_state s;
    return s;
}

QMessageBox::Icon qt_icon(box_icon icon) {
    switch (icon) {
    case box_icon::critical:
        return QMessageBox::Critical;
    case box_icon::question:
        return QMessageBox::Question;
    case box_icon::exclamation:
        return QMessageBox::Warning;
    case box_icon::information:
        return QMessageBox::Information;
    case box_icon::none:
        break;
    }
    return QMessageBox::NoIcon;
}

} // namespace

box_answer prompts::message_box(const QString& text, box_icon icon, const QString& title,
                                box_buttons buttons) {
    auto& s = state();
    if (s.active) {
        s.shown.push_back({title, text, icon, buttons, false, {}});
        const box_answer fallback = buttons == box_buttons::yes_no ? box_answer::yes : box_answer::ok;
        if (s.answers.empty()) return fallback;
        const box_answer a = s.answers.front();
        s.answers.pop_front();
        return a;
    }
    QMessageBox box(qt_icon(icon), title, text, QMessageBox::NoButton, s.parent);
    box.setObjectName(QStringLiteral("MsgBox"));
    switch (buttons) {
    case box_buttons::ok:
        box.setStandardButtons(QMessageBox::Ok);
        break;
    case box_buttons::ok_cancel:
        box.setStandardButtons(QMessageBox::Ok | QMessageBox::Cancel);
        break;
    case box_buttons::yes_no:
        box.setStandardButtons(QMessageBox::Yes | QMessageBox::No);
        break;
    }
    // The one place where the program waits for the user's answer.
    switch (box.exec()) {
    case QMessageBox::Cancel:
        return box_answer::cancel;
    case QMessageBox::Yes:
        return box_answer::yes;
    case QMessageBox::No:
        return box_answer::no;
    default:
        return box_answer::ok;
    }
}

QString prompts::input_box(const QString& text, const QString& title, const QString& default_text) {
    auto& s = state();
    if (s.active) {
        s.shown.push_back({title, text, box_icon::none, box_buttons::ok_cancel, true, default_text});
        if (s.inputs.empty()) return default_text;
        QString a = s.inputs.front();
        s.inputs.pop_front();
        return a;
    }
    bool ok = false;
    const QString answer = QInputDialog::getText(s.parent, title, text, QLineEdit::Normal, default_text, &ok);
    return ok ? answer : QString();
}

void prompts::script(std::deque<box_answer> answers, std::deque<QString> inputs) {
    auto& s = state();
    s.active = true;
    s.answers = std::move(answers);
    s.inputs = std::move(inputs);
}

void prompts::unscript() {
    state().active = false;
}
bool prompts::scripted() {
    return state().active;
}
const std::vector<shown_box>& prompts::shown() {
    return state().shown;
}
void prompts::clear_shown() {
    state().shown.clear();
}
void prompts::set_parent(QWidget* parent) {
    state().parent = parent;
}

} // namespace lumora
