#include "frmMain.h"
#include "report/quick_print.h"

#include "frmAbout.h"
#include "functions/frmLambda.h"
#include "functions/function_window.h"
#include "link/command_ring.h"
#include "link/frmPortSet.h"
#include "link/link_context.h"
#include "link/photometric.h"
#include "link/protocol.h"
#include "link/response_decoder.h"
#include "link/shared_state.h"
#include "link/trace.h"
#include "open_data_menu.h"
#include "platform/app_settings.h"
#include "platform/comm_port.h"
#include "platform/numeric_text.h"
#include "platform/prompts.h"
#include "platform/status_bar.h"
#include "store/settings_store.h"
#include "system/frmPerformance.h"
#include "toolbar_icons.h"

#include <QAction>
#include <QCloseEvent>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMenuBar>
#include <QTimer>
#include <QToolBar>

namespace lumora {
namespace {

struct button_row {
    int index;
    const char* key;
    const char* tip;
};

constexpr button_row toolbar_rows[] = {
    {1, "Setup", "Parameter setup"},  {2, "Zero", "Zero/Baseline"},
    {3, "Read", "Data reading"},      {4, "Stop", "Stop data reading"},
    {6, "Auto", "Auto zoom data"},    {7, "Zoom", "Zoom in/out data"},
    {8, "Original", "Original data"}, {9, "Peak", "Peak/valley search"},
    {10, "Smooth", "Data smoothing"}, {11, "Derivative", "Data derivative"},
    {12, "Scan add", "+-* Scan"},     {13, "Color", "Color setup"},
    {15, "Report", "Report preview"}, {16, "Print", "Report print"}};

// Runs a handler body; a run-time fault ends it there, as it ends a reply's handling.
template <class F> void guarded(F&& body) {
    try {
        body();
    } catch (const run_fault&) {
    }
}

} // namespace

frmMain::frmMain(std::unique_ptr<comm_backend> backend, QWidget* parent)
    : QMainWindow(parent), port_(std::make_unique<comm_port>(std::move(backend))) {
    setObjectName(QStringLiteral("frmMain"));
    install_quick_print(); // the setup dialogs' "Quick print"
    setWindowIcon(QIcon(program_picture(64, 2.0)));
    client_ = new QMdiArea(this);
    client_->setObjectName(QStringLiteral("mdiClient"));
    client_->setBackground(palette().dark());
    setCentralWidget(client_);
    status_ = new status_bar(this);
    setStatusBar(status_);
    timer_ = new QTimer(this);
    timer_->setObjectName(QStringLiteral("Timer1"));
    build_menus();
    build_toolbar();
    connect_link();
    prompts::set_parent(this);
    resize(1100, 820);
    restore_position();
}

frmMain::~frmMain() {
    if (link_ctx.port == port_.get()) {
        link_ctx.port = nullptr;
        link_ctx.hooks = {};
        main_hooks = {};
    }
}

void frmMain::build_menus() {
    struct item {
        const char* name;
        const char* caption;
    };
    auto add_menu = [this](const char* name, const char* caption) {
        QMenu* m = menuBar()->addMenu(QString::fromLatin1(caption));
        m->setObjectName(QString::fromLatin1(name));
        m->menuAction()->setObjectName(QString::fromLatin1(name));
        menus_.push_back(m);
        return m;
    };
    auto add_item = [this](QMenu* m, const char* name, const char* caption) {
        QAction* a = m->addAction(QString::fromLatin1(caption));
        a->setObjectName(QString::fromLatin1(name));
        a->setParent(this);
        return a;
    };
    QMenu* file = add_menu("mnuFile", "&File");
    connect(add_item(file, "mnuFileOpenP", "Load parameter"), &QAction::triggered, this,
            &frmMain::mnuFileOpenP_Click);
    connect(add_item(file, "mnuFileOpenD", "Load data"), &QAction::triggered, this,
            &frmMain::mnuFileOpenD_Click);
    connect(add_item(file, "mnuFileSaveP", "Save parameter"), &QAction::triggered, this,
            &frmMain::mnuFileSaveP_Click);
    connect(add_item(file, "mnuFileSaveD", "Save data"), &QAction::triggered, this,
            &frmMain::mnuFileSaveD_Click);
    file->addSeparator()->setObjectName(QStringLiteral("mnuFileBar1"));
    connect(add_item(file, "mnuFileExport", "Data export to Excel"), &QAction::triggered, this,
            &frmMain::mnuFileExport_Click);
    connect(add_item(file, "mnuFileOpenData", "Export data (CSV, JCAMP-DX)..."), &QAction::triggered, this,
            [this] { export_open_data(*this); });
    file->addSeparator()->setObjectName(QStringLiteral("mnuFileBar2"));
    connect(add_item(file, "mnuFilePrintPreview", "Report preview"), &QAction::triggered, this,
            &frmMain::mnuFilePrintPreview_Click);
    connect(add_item(file, "mnuFilePrint", "Print"), &QAction::triggered, this, &frmMain::mnuFilePrint_Click);
    file->addSeparator()->setObjectName(QStringLiteral("mnuFileBar4"));
    QAction* exit = add_item(file, "mnuFileExit", "Exit");
    connect(exit, &QAction::triggered, this, &QWidget::close);

    QMenu* set = add_menu("mnuSet", "&Setting");
    QAction* com = add_item(set, "mnuSetComPort", "Set com port");
    connect(com, &QAction::triggered, this, &frmMain::show_port_dialog);

    QMenu* func = add_menu("mnuFnuc", "F&unction");
    const std::pair<const char*, const char*> functions[] = {
        {"mnuFuncPhotometry", "Photometry"}, {"mnuFuncSpectrum", "Spectrum"},
        {"mnuFuncTimescan", "Time scan"},    {"mnuFuncKinetic", "Kinetic"},
        {"mnuFuncQuant", "Quantitative"},    {"mnuFuncProtein", "Protein analysis"}};
    const std::int16_t ids[] = {fid_photometry, fid_spectrum,     fid_timescan,
                                fid_kinetic,    fid_quantitative, fid_protein};
    for (int i = 0; i < 6; ++i) {
        QAction* a = add_item(func, functions[i].first, functions[i].second);
        const std::int16_t id = ids[i];
        connect(a, &QAction::triggered, this, [this, id] { enter_function(id); });
    }
    QMenu* sys = func->addMenu(QStringLiteral("System"));
    sys->setObjectName(QStringLiteral("mnuFuncSys"));
    sys->menuAction()->setObjectName(QStringLiteral("mnuFuncSys"));
    connect(add_item(sys, "mnuFuncSysSetup", "Property setup"), &QAction::triggered, this,
            &frmMain::mnuFuncSysSetup_Click);
    connect(add_item(sys, "mnuFuncSysVerify", "Verify bandwidth"), &QAction::triggered, this,
            &frmMain::mnuFuncSysVerify_Click);
    connect(add_item(sys, "mnuFuncSysPerformance", "Performance verification"), &QAction::triggered, this,
            [this] {
                if (!port_->PortOpen()) {
                    prompts::message_box(QStringLiteral("The function is not available!"),
                                         box_icon::information, QStringLiteral("System Message"));
                    return;
                }
                unload_form();
                shared.function_id = fid_no_function;
                auto* dlg = new frmPerformance(this);
                dlg->setAttribute(Qt::WA_DeleteOnClose);
                dlg->setWindowModality(Qt::WindowModal);
                dlg->show();
            });

    QMenu* help = add_menu("mnuHelp", "&Help");
    QAction* about = add_item(help, "mnuHelpAbout", "About");
    connect(about, &QAction::triggered, this, &frmMain::mnuHelpAbout_Click);
}

void frmMain::build_toolbar() {
    toolbar_ = addToolBar(QStringLiteral("Toolbar"));
    toolbar_->setObjectName(QStringLiteral("tbToolBar"));
    toolbar_->setMovable(false);
    toolbar_->setToolButtonStyle(Qt::ToolButtonIconOnly);
    toolbar_->setIconSize(QSize(24, 24));
    int next = 1;
    for (const auto& row : toolbar_rows) {
        for (; next < row.index; ++next) {
            buttons_[static_cast<std::size_t>(next)] = toolbar_->addSeparator();
        }
        QAction* a = toolbar_->addAction(QString::fromLatin1(row.key));
        a->setObjectName(QStringLiteral("tbToolBar_") + QString::fromLatin1(row.key).remove(' '));
        a->setData(QString::fromLatin1(row.key));
        a->setToolTip(QString::fromLatin1(row.tip));
        a->setIcon(toolbar_icon(QString::fromLatin1(row.key)));
        const QString key = QString::fromLatin1(row.key);
        connect(a, &QAction::triggered, this, [this, key] { tbToolBar_ButtonClick(key); });
        buttons_[static_cast<std::size_t>(row.index)] = a;
        next = row.index + 1;
    }
}

QAction* frmMain::menu_action(const QString& name) const {
    return findChild<QAction*>(name);
}

frmPortSet& frmMain::port_dialog() {
    if (!port_set_) port_set_ = new frmPortSet(this);
    return *port_set_;
}

frmLambda& frmMain::show_lambda_panel() {
    if (!lambda_) {
        lambda_ = new frmLambda(this);
        lambda_->setAttribute(Qt::WA_DeleteOnClose);
    }
    lambda_->setWindowModality(Qt::WindowModal);
    lambda_->show();
    lambda_->raise();
    return *lambda_;
}

frmLambda* frmMain::lambda_panel() const {
    return lambda_;
}

void frmMain::connect_link() {
    link_ctx.port = port_.get();
    auto& h = link_ctx.hooks;
    h.set_panel = [this](int n, const QString& t) { status_->set_text(n, t); };
    h.panel_text = [this](int n) { return status_->text(n); };
    // The end of the start-up gives back the menus and the status bar.
    h.enable_menus = [this](bool on) {
        if (on) {
            enable_menus();
            status_->setEnabled(true);
        } else {
            disable_menus();
        }
    };
    h.scan_lock = [this](bool locked) { set_scan_lock(locked); };
    h.scan_baseline_at_start = [this] { return port_set_ && port_set_->scan_baseline_at_start(); };
    h.toolbar_disable_function = [this] { toolbar_disable_function(); };
    h.enable_timer = [this] { timer_->start(); };
    h.busy_cursor = [this](bool busy) {
        if (busy)
            setCursor(Qt::WaitCursor);
        else
            unsetCursor();
    };
    h.save_baseline = [] { save_baseline(); };
    main_hooks.toolbar_disable_function = [this] { toolbar_disable_function(); };
    main_hooks.toolbar_enable_function = [this] { toolbar_enable_function(); };
    main_hooks.toolbar_enable_stop = [this] { toolbar_enable_stop(); };
    main_hooks.toolbar_enable_for = [this](int id) { toolbar_enable_for(id); };
    main_hooks.enter_function = [this](int id) { enter_function(id); };
    h.save_com_port = [] { save_com_port(); };

    h.resume_function = [this]() -> int {
        // The reminder follows the start-up's last status text.
        QTimer::singleShot(0, this, [this] { remind_verification_if_due(this); });
        if (!function_) return 0;
        const int id = function_->entry().function_id;
        toolbar_enable_for(id);
        return id;
    };
    connect(port_.get(), &comm_port::OnComm, this, [this] {
        quiet_ticks_ = 0;
        silent_ticks_ = 0;
        if (silence_shown_) end_silence();
        on_comm_event();
    });
    connect(port_.get(), &comm_port::framing_counted, this, [this](const char* what) {
        const comm_port::framing_counts& c = port_->counts();
        trace::framing(what, c.cut, c.joined, c.dropped, c.dropped_bytes);
    });
    connect(port_.get(), &comm_port::port_failed, this, &frmMain::port_failed);
    connect(timer_, &QTimer::timeout, this, &frmMain::Timer1_Timer);
    connect(status_, &status_bar::panel_written, this, [](int n, const QString& t) { trace::panel(n, t); });
    connect(status_, &status_bar::panel_clicked, this, [this](int n) {
        if (n == 3) show_lambda_panel();
        if (n == 5) {
            shared.reading_index = 0;
            show_port_dialog();
        }
    });
}

void frmMain::Form_Load() {
    QFont f = status_->font();
    f.setPointSize(12);
    status_->setFont(f);
    toolbar_disable_function();
    disable_menus();
    shared.ring_head = 0;
    shared.ring_tail = 0;
    timer_->setInterval(50);
    timer_->stop();
    // The caption is the stored software name, and stays empty without one. The platform would
    // show the application's name in an empty title, so an empty name becomes a blank.
    setWindowTitle(shared.software_name.isEmpty() ? QStringLiteral(" ") : shared.software_name);
    shared.reading_index = 0;
    status_->set_text(4, QStringLiteral("Off-line"));
    // The two clickable panels say what a click does.
    status_->set_text(3, QStringLiteral("Lambda..."));
    status_->set_text(5, QStringLiteral("Port..."));
    // "Port close" and "Cancel" of the port dialog give the menus back, and only the menus.
    connect(&port_dialog(), &frmPortSet::enable_menus, this, &frmMain::enable_menus, Qt::UniqueConnection);
    show_database_state();
}

void frmMain::show_port_dialog() {
    frmPortSet& dlg = port_dialog();
    dlg.setWindowModality(Qt::WindowModal);
    dlg.show();
    dlg.raise();
    dlg.activateWindow();
}

void frmMain::Timer1_Timer() {
    guarded([] { lumora::Timer1_Timer(); });
    // A scan end lost on the line must not keep the user locked out for good: after a silence of
    // three seconds the lock lifts, and the function's Stop is there to get its toolbar back.
    const bool expecting = expecting_replies();
    if (scan_locked_ && ++quiet_ticks_ >= scan_lock_silence_ticks) set_scan_lock(false);
    if (!expecting) {
        silent_ticks_ = 0;
    } else if (++silent_ticks_ >= silence_warning_ticks && !silence_shown_) {
        begin_silence();
    }
}

bool frmMain::expecting_replies() const {
    // While it streams (after a move or a zero at a wavelength) or scans, the instrument sends a
    // frame at least every 0.05 s; at other times (a zero search, between a scan's end and the
    // next command) silence is normal.
    if (!port_->PortOpen() || (shared.function_id == fid_startup && !scan_locked_)) return false;
    if (scan_locked_) return true;
    switch (shared.last_command) {
    case cmd_goto_lambda:
    case cmd_read_lambda:
    case cmd_zero_here:
    case cmd_spare_9:
        return shared.function_id != fid_system;
    default:
        return false;
    }
}

// The reading in panel 2 goes grey and panel 6 says why; nothing is sent and nothing pops up.
void frmMain::begin_silence() {
    silence_shown_ = true;
    activity_before_silence_ = status_->text(6);
    status_->panel(2)->setEnabled(false);
    status_->set_text(6, QStringLiteral("No reply from the instrument..."));
}

void frmMain::end_silence() {
    silence_shown_ = false;
    status_->panel(2)->setEnabled(true);
    if (status_->text(6) == QLatin1String("No reply from the instrument..."))
        status_->set_text(6, activity_before_silence_);
}

void frmMain::port_failed(const QString& why) {
    // The windows keep their data; the user reconnects with "Port open" when the device is back.
    if (silence_shown_) end_silence();
    silent_ticks_ = 0;
    if (scan_locked_) set_scan_lock(false);
    shared.link_ready = false;
    status_->set_text(4, QStringLiteral("Off-line"));
    status_->set_text(6, QStringLiteral("Port closed: ") + why);
    enable_menus();
    status_->setEnabled(true);
}

void frmMain::set_toolbar_buttons(bool all, std::initializer_list<int> exceptions, bool status_bar_enabled) {
    for (int i = 1; i <= 16; ++i)
        if (buttons_[static_cast<std::size_t>(i)]) buttons_[static_cast<std::size_t>(i)]->setEnabled(all);
    for (int i : exceptions)
        if (i >= 1 && i <= 16 && buttons_[static_cast<std::size_t>(i)])
            buttons_[static_cast<std::size_t>(i)]->setEnabled(!all);
    status_->setEnabled(status_bar_enabled);
}

void frmMain::toolbar_disable_function() {
    set_toolbar_buttons(false, {}, false);
    shared.toolbar_locked = true;
}

void frmMain::disable_menus() {
    for (QMenu* m : menus_)
        m->menuAction()->setEnabled(false);
}

void frmMain::enable_menus() {
    for (QMenu* m : menus_)
        m->menuAction()->setEnabled(true);
}

void frmMain::unload_form() {
    if (lambda_) delete lambda_.data();
    if (setup_) delete setup_.data();
    if (system_) delete system_.data();
    for (QMdiSubWindow* w : client_->subWindowList()) {
        // The window's close hands function_id back to 8 before it goes.
        if (auto* f = qobject_cast<function_window*>(w->widget())) f->close();
        delete w;
    }
    toolbar_enable_function();
    status_->set_text(1, QString::fromStdString(format_number(shared.lambda_now, "###0nm")));
}

void frmMain::set_scan_lock(bool locked) {
    // The user is kept away from menus, toolbar and function window while replies go on.
    scan_locked_ = locked;
    quiet_ticks_ = 0;
    menuBar()->setEnabled(!locked);
    toolbar_->setEnabled(!locked);
    client_->setEnabled(!locked);
}

void frmMain::mnuHelpAbout_Click() {
    auto* about = new frmAbout(this);
    about->setAttribute(Qt::WA_DeleteOnClose);
    about->setWindowModality(Qt::WindowModal);
    about->show();
}

void frmMain::restore_position() {
    bool ok[4] = {};
    const int left = app_settings::get(QStringLiteral("MainLeft")).toInt(&ok[0]);
    const int top = app_settings::get(QStringLiteral("MainTop")).toInt(&ok[1]);
    const int width = app_settings::get(QStringLiteral("MainWidth")).toInt(&ok[2]);
    const int height = app_settings::get(QStringLiteral("MainHeight")).toInt(&ok[3]);
    if (ok[0] && ok[1] && ok[2] && ok[3] && width > 200 && height > 150)
        setGeometry(left, top, width, height);
}

void frmMain::closeEvent(QCloseEvent* event) {
    if (!isMinimized()) {
        const QRect g = geometry();
        app_settings::set(QStringLiteral("MainLeft"), QString::number(g.left()));
        app_settings::set(QStringLiteral("MainTop"), QString::number(g.top()));
        app_settings::set(QStringLiteral("MainWidth"), QString::number(g.width()));
        app_settings::set(QStringLiteral("MainHeight"), QString::number(g.height()));
    }
    unload_form();
    if (port_set_) port_set_->hide();
    event->accept();
}

} // namespace lumora
