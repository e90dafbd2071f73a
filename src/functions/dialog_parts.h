#pragma once
// Pieces every function's setup dialog is built from: a caption label that names its field, the
// "Report" tab's print boxes, and the row of buttons under the tabs.
#include <QString>
#include <array>
#include <cstddef>
#include <functional>

class QBoxLayout;
class QCheckBox;
class QDialog;
class QLabel;
class QLineEdit;
class QTabBar;
class QTabWidget;
class QWidget;

namespace lumora {

class grid;

// A caption label with `field` as its buddy, so screen readers name the field by it.
QLabel* buddy_label(const QString& text, QWidget* field, QWidget* parent, const QString& name);

// One check box per text, named Check1_<i>, added to `layout` in order.
void add_print_checks(const char* const* texts, std::size_t count, QWidget* parent, QBoxLayout* layout,
                      QCheckBox** out);
template <std::size_t N>
void add_print_checks(const char* const (&texts)[N], QWidget* parent, QBoxLayout* layout,
                      std::array<QCheckBox*, N>& out) {
    add_print_checks(texts, N, parent, layout, out.data());
}

// The "Report" tab: the four report texts "Laboratory=" ... "Remark=" (txtReport_0..3) and under
// them the print boxes, with "Additional printing:" above the boxes when `heading` is set.
void add_report_tab(QTabWidget* tabs, std::array<QLineEdit*, 4>& texts, const char* const* prints,
                    std::size_t count, QCheckBox** checks, bool heading = false);
template <std::size_t N>
void add_report_tab(QTabWidget* tabs, std::array<QLineEdit*, 4>& texts, const char* const (&prints)[N],
                    std::array<QCheckBox*, N>& checks, bool heading = false) {
    add_report_tab(tabs, texts, prints, N, checks.data(), heading);
}

// The dialog's layout: the tabs above "Quick print", "Clear data" (only when `clear` is given),
// "OK" (the default) and "Cancel".
struct dialog_buttons {
    std::function<void()> clear;
    std::function<void()> ok;
    std::function<void()> cancel;
};
void lay_out_setup_dialog(QDialog* dialog, QTabWidget* tabs, const dialog_buttons& buttons);

// A result window's tables, one per tab of `tabs`: tab i gets `captions[i]` (none when `captions`
// is null) and a frame "Frame1_<i>" holding the grid `names[i]`, added to `layout` with `stretch`.
void add_table_frames(QWidget* window, QTabBar* tabs, QBoxLayout* layout, int stretch, std::size_t count,
                      const char* const* captions, const char* const* names, grid** tables, QWidget** frames);
template <std::size_t N>
void add_table_frames(QWidget* window, QTabBar* tabs, QBoxLayout* layout, int stretch,
                      const char* const (&captions)[N], const char* const (&names)[N],
                      std::array<grid*, N>& tables, std::array<QWidget*, N>& frames) {
    add_table_frames(window, tabs, layout, stretch, N, captions, names, tables.data(), frames.data());
}
// Only the frame of tab `index` in sight; -1 hides them all.
void show_only_frame(QWidget* const* frames, std::size_t count, int index);
template <std::size_t N> void show_only_frame(const std::array<QWidget*, N>& frames, int index) {
    show_only_frame(frames.data(), N, index);
}

// A result window's "Quick print" buttons in a row: cmdQuickPrint_0 prints the graph alone,
// cmdQuickPrint_1 the tables alone. Without `graph` only the second (Photometry's one button).
QBoxLayout* quick_print_buttons(QWidget* window, bool graph);

// What the "Quick print" buttons reach; the report library fills it, so the functions never
// include its headers. An empty hook leaves the button without effect.
struct quick_print_hooks {
    // The setup dialog's settings as its boxes stand.
    std::function<void(QDialog* dialog)> parameter;
    // A result window's graph alone, and its tables alone (its cmdQuickPrint(0) and (1)).
    std::function<void(QWidget* window)> graph;
    std::function<void(QWidget* window)> data;
};
extern quick_print_hooks quick_print;

} // namespace lumora
