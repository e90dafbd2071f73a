#pragma once
// The standards part shared by the Quantitative and Protein setups: the fit type tabs with their
// pictures, the standard number field held to 1..20, and keying straight into the standards grid
// (the first character blanks the cell, only digits, "-" and "." are taken, Delete takes off the
// last character; the header row and column are not for keying).
#include <QChar>
#include <QObject>
#include <functional>

class QEvent;
class QLineEdit;
class QTabBar;
class QWidget;

namespace lumora {

class grid;

// The four fit tabs, each with its picture and its equation as tool tip.
QTabBar* make_fit_tabs(QWidget* parent);

// Holds the standard number field to 1..20. True when it wrote a corrected text: the field's
// change handler then runs again with it and this call's caller should stop.
bool hold_standard_number(QLineEdit* field);

class standards_keying : public QObject {
public:
    // `on_key` runs on every key that goes down in the grid (the setup counts as changed).
    standards_keying(grid* g, std::function<void()> on_key);

    void enter_cell();
    void key_press(QChar key);
    void key_down(int key_code); // 46 is Delete

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    grid* g_;
    std::function<void()> on_key_;
    bool first_key_ = true;                   // the next character blanks the cell first
    int entered_row_ = -1, entered_col_ = -1; // the cell the first-key flag belongs to
};

} // namespace lumora
