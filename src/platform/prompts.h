#pragma once
// Message and input boxes. Program logic asks through these routines and never runs a dialog's
// loop itself; tests replace the answers with a script and read back what was shown.
#include <QString>
#include <QStringList>
#include <deque>
#include <functional>
#include <vector>

class QWidget;

namespace lumora {

enum class box_icon { none, critical, question, exclamation, information };
enum class box_buttons { ok, ok_cancel, yes_no };
enum class box_answer { ok, cancel, yes, no };

struct shown_box {
    QString title;
    QString text;
    box_icon icon = box_icon::none;
    box_buttons buttons = box_buttons::ok;
    bool is_input = false;
    QString default_text; // input boxes
};

class prompts {
public:
    // Shows a message box and returns the user's answer.
    static box_answer message_box(const QString& text, box_icon icon, const QString& title,
                                  box_buttons buttons = box_buttons::ok);
    // Shows an input box; Cancel gives "".
    static QString input_box(const QString& text, const QString& title, const QString& default_text = {});

    // Scripting for tests: once `script` is called, boxes are not shown; answers come from the
    // queues (ok / the default text when a queue is empty) and every box is recorded.
    static void script(std::deque<box_answer> answers = {}, std::deque<QString> inputs = {});
    static void unscript();
    static bool scripted();
    static const std::vector<shown_box>& shown();
    static void clear_shown();

    static void set_parent(QWidget* parent);
};

} // namespace lumora
