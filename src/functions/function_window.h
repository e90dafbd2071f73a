#pragma once
// A measuring function's result window inside the main window, and its setup dialog. Each
// function's own window derives from this and overrides the routines it has; the base keeps the
// routines every function window answers to by name, so the toolbar reaches them all the same way.
#include "function_catalog.h"
#include "store/batches.h"
#include "toolbar_dispatch.h"

#include <QDialog>
#include <QWidget>
#include <functional>
#include <vector>

namespace lumora {

// What the function windows reach of the main window; it fills these when it is created.
struct main_window_hooks {
    std::function<void()> toolbar_disable_function;
    std::function<void()> toolbar_enable_function;
    std::function<void()> toolbar_enable_stop;
    std::function<void(int function_id)> toolbar_enable_for;
    std::function<void(int function_id)> enter_function; // the function's window in place of the open one
};
extern main_window_hooks main_hooks;

// The result window of a function: the function's own window for those that have one, the
// common window otherwise.
class function_window;
function_window* make_function_window(const function_entry& entry);

class function_window : public QWidget {
    Q_OBJECT
public:
    explicit function_window(const function_entry& entry, QWidget* parent = nullptr);

    const function_entry& entry() const { return entry_; }
    virtual void set_form_visible(bool visible);
    // A toolbar routine of this function (Zero, Read, Stop, zoom, peak, ...).
    virtual void run(toolbar_routine routine);
    // Quantitative's question at 100 samples; false drops the action.
    virtual bool batch_check() { return true; }
    // In single-curve mode a Read starts from an empty plot.
    virtual void curve_check() {}
    virtual void set_zero_flag(bool) {}
    virtual bool has_data() const { return false; }
    // A new setup dialog of this function, or nullptr when it has none.
    virtual QDialog* make_setup_dialog(QWidget* parent);

    // Stored batches, in this function's own row layout (its folder's *_batches.cpp). A function
    // without a layout keeps these defaults and the File entries tell the user it is not available.
    virtual bool keeps_batches() const { return false; }
    // Something to keep in a result batch; "The data is empty!" otherwise.
    virtual bool batch_data() const { return has_data(); }
    // The rows of a result batch ("P", then "D" or "V") and of a parameter batch ("P").
    virtual std::vector<batch_row> result_rows() const { return {}; }
    virtual std::vector<batch_row> parameter_rows() const { return {}; }
    // Rebuilds the window from a result batch as it stood after the run.
    virtual void load_result(const std::vector<batch_row>&) {}
    // A parameter batch into the setup record; then, after the toolbar's ready state, the setup
    // dialog refreshed and the window cleared (parameters_loaded).
    virtual void read_parameters(const std::vector<batch_row>&) {}
    virtual void parameters_loaded() {}

    // What reached this window, in order: the routines of the toolbar clicks.
    const std::vector<toolbar_routine>& routines_run() const { return routines_run_; }

signals:
    void unloading();

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    const function_entry& entry_;
    std::vector<toolbar_routine> routines_run_;
};

// The setup dialog of a function: named and titled, OK and Cancel.
class setup_dialog : public QDialog {
    Q_OBJECT
public:
    setup_dialog(const char* name, const char* caption, QWidget* parent = nullptr);
};

} // namespace lumora
