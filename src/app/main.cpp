// The program's entry. The command line is ignored.
#include "frmMain.h"
#include "frmSplash.h"
#include "link/shared_state.h"
#include "link/trace.h"
#include "platform/comm_port.h"
#include "platform/prompts.h"
#include "store/database.h"
#include "store/store_start.h"

#include <QApplication>
#include <QScreen>
#include <QTimer>
#include <clocale>

using namespace lumora;

int main(int argc, char** argv) {
    QApplication app(argc, argv);
    // QApplication takes the user's locale for the C library too; numbers read and written through
    // it keep a point, so that a batch saved under one locale loads under another.
    std::setlocale(LC_NUMERIC, "C");
    QApplication::setApplicationName(QStringLiteral("Lumora"));
    QApplication::setApplicationVersion(QStringLiteral(LUMORA_VERSION));
    trace::open_from_environment();

    auto* splash = new frmSplash;
    splash->move(splash->screen()->availableGeometry().center() - splash->rect().center());
    splash->show();

    frmMain* main_window = nullptr;
    // The splash stays a second, then the settings load and the main window comes up.
    QTimer::singleShot(1000, [&] {
        QString why;
        // Hidden, not closed, before a question: closing the only window would end the program.
        if (open_store(why, [&] { splash->hide(); }) != store_start::ready) {
            splash->close();
            if (!why.isEmpty())
                prompts::message_box(QStringLiteral("The database cannot be opened: ") + why,
                                     box_icon::critical, QStringLiteral("Warning"));
            QApplication::exit(why.isEmpty() ? 0 : 1);
            return;
        }
        main_window = new frmMain(make_serial_backend());
        main_window->setAttribute(Qt::WA_DeleteOnClose);
        main_window->Form_Load();
        splash->close();
        set_default_colors();
        main_window->show();
        main_window->show_port_dialog();
    });
    const int rc = QApplication::exec();
    db_close();
    return rc;
}
