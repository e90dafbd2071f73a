#pragma once
// The main window: menus, the 16-button toolbar, the six-panel status bar, the transmit tick
// Timer1 and the serial port. Its client area holds at most one function window.
#include <QDialog>
#include <QMainWindow>
#include <QPointer>
#include <QString>
#include <array>
#include <memory>

class QAction;
class QMdiArea;
class QMenu;
class QTimer;
class QToolBar;

namespace lumora {

class comm_backend;
class comm_port;
class frmLambda;
class function_window;
class frmPortSet;
class status_bar;
struct db_error;

class frmMain : public QMainWindow {
    Q_OBJECT
public:
    // The port runs over `backend` (QSerialPort in the program, an in-memory pipe in tests).
    explicit frmMain(std::unique_ptr<comm_backend> backend, QWidget* parent = nullptr);
    ~frmMain() override;

    // Load handler: status font, toolbar off, ring at 0, Timer1 stopped, caption.
    void Form_Load();
    // Shows the port dialog modally over the main window (not waiting for it).
    void show_port_dialog();

    // Toolbar states
    void toolbar_disable_function();
    void toolbar_enable_function();
    void toolbar_enable_stop();
    void toolbar_enable_photometry();
    void toolbar_enable_quant();
    void toolbar_enable_spectrum();
    void toolbar_enable_timescan();
    void toolbar_enable_timescan2();
    void toolbar_enable_kinetic();
    void toolbar_enable_656();
    // The ready state of the function in hand.
    void toolbar_enable_for(int function_id);
    void set_toolbar_buttons(bool all, std::initializer_list<int> exceptions, bool status_bar_enabled);
    // The two menu routines: every visible menu item off or on.
    void disable_menus();
    void enable_menus();
    // Unloads every function window.
    void unload_form();

    void Timer1_Timer();

    // Entering and leaving functions
    void enter_function(int function_id);
    void mnuFuncSysSetup_Click();
    void mnuFuncSysVerify_Click();
    function_window* current_function() const;
    QDialog* current_setup_dialog() const { return setup_; }
    // A toolbar click, by the button's key.
    void tbToolBar_ButtonClick(const QString& key);
    // File menu handlers that need a function with data.
    void mnuFilePrintPreview_Click();
    void mnuFilePrint_Click();
    void mnuFileExport_Click();
    // Stored batches: ask a name and save, or pick one in DlgLoadData and load it.
    void mnuFileSaveD_Click();
    void mnuFileSaveP_Click();
    void mnuFileOpenD_Click();
    void mnuFileOpenP_Click();
    void GetBatchName(const QString& name);
    // Panel 6 says where the batches go when a lab's server takes them, or why it cannot be reached.
    void show_database_state();
    void data_save(const QString& name);
    void data_load(const QString& name);
    void parameter_save(const QString& name);
    void parameter_load(const QString& name);
    QDialog* load_dialog() const { return load_dialog_; }
    comm_port& MSComm1() { return *port_; }
    status_bar& sbStatusBar() { return *status_; }
    QTimer& Timer1() { return *timer_; }
    frmPortSet& port_dialog();
    // Opens the lambda panel modally over the main window.
    frmLambda& show_lambda_panel();
    frmLambda* lambda_panel() const;
    QAction* toolbar_button(int index) const { return buttons_[static_cast<std::size_t>(index)]; }
    QAction* menu_action(const QString& name) const;
    QMdiArea* client_area() const { return client_; }
    bool scan_locked() const { return scan_locked_; }

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void build_menus();
    void build_toolbar();
    void connect_link();
    void set_scan_lock(bool locked);
    bool expecting_replies() const;
    void begin_silence();
    void end_silence();
    void port_failed(const QString& why);
    void mnuHelpAbout_Click();
    void restore_position();
    void show_setup_dialog(function_window& window);
    bool function_with_data_check();
    bool batch_function_check();
    void save_batch(bool data);
    void open_batch(bool data);
    void back_to_lambda();
    void save_fault(const db_error& e);

    std::unique_ptr<comm_port> port_;
    status_bar* status_ = nullptr;
    QTimer* timer_ = nullptr;
    QToolBar* toolbar_ = nullptr;
    QMdiArea* client_ = nullptr;
    std::array<QAction*, 17> buttons_{}; // 1..16, the separators 5 and 14 included
    QList<QMenu*> menus_;
    frmPortSet* port_set_ = nullptr;
    QPointer<frmLambda> lambda_;
    QPointer<function_window> function_;
    QPointer<QDialog> setup_;
    QPointer<QDialog> system_;
    QPointer<QDialog> load_dialog_;
    bool scan_locked_ = false;
    static constexpr int scan_lock_silence_ticks = 60; // 3 s of Timer1
    int quiet_ticks_ = 0;                              // ticks since the port last raised its event
    static constexpr int silence_warning_ticks = 40;   // 2 s of Timer1
    int silent_ticks_ = 0;                             // ticks without a reply while one is due
    bool silence_shown_ = false;
    QString activity_before_silence_;

public:
    bool silence_shown() const { return silence_shown_; }
};

} // namespace lumora
