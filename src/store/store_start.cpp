#include "store_start.h"

#include "database.h"
#include "link/shared_state.h"
#include "platform/prompts.h"
#include "settings_store.h"

#include <QFileInfo>

namespace lumora {
namespace {

db_error open_and_load() {
    if (!db_open().isEmpty()) return db_open_failure();
    try {
        load_settings();
    } catch (const db_error& e) {
        db_close();
        return e;
    }
    return {};
}

// A lab's shared server takes the batches; one that cannot be reached now is tried again at the
// next batch action, and the program runs on (db_server_failure() says why).
void open_server() {
    const QString url = configured_server_url();
    if (!url.isEmpty()) db_open_server(url);
}

} // namespace

store_start open_store(QString& why, const std::function<void()>& before_box) {
    why.clear();
    open_server();
    const db_error first = open_and_load();
    if (first.what.isEmpty()) return store_start::ready;
    if (before_box) before_box();
    if (!first.unreadable()) {
        why = first.what;
        return store_start::quit;
    }

    const QString path = db_path();
    const QString name = QFileInfo(path).fileName();
    const QString target = db_aside_path(path);
    const box_answer answer = prompts::message_box(
        name + QStringLiteral(" in ") + QFileInfo(path).absolutePath() +
            QStringLiteral(" cannot be read as a database: ") + first.what +
            QStringLiteral(".\n\nRename it to ") + QFileInfo(target).fileName() +
            QStringLiteral(" (nothing is deleted) and start with a new database? No quits the program."),
        box_icon::question, QStringLiteral("System Message"), box_buttons::yes_no);
    if (answer != box_answer::yes) return store_start::quit;

    why = db_move_aside(path, target);
    if (!why.isEmpty()) {
        why = QStringLiteral("cannot move ") + name + QStringLiteral(" aside: ") + why;
        return store_start::quit;
    }
    reset_shared_state();
    const db_error again = open_and_load();
    why = again.what;
    return why.isEmpty() ? store_start::ready : store_start::quit;
}

} // namespace lumora
