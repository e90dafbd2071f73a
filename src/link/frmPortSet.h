#pragma once
// "COM Port Setting": the modal dialog that opens the serial line and so starts the instrument.
#include <QDialog>

class QCheckBox;
class QPushButton;
class QRadioButton;

namespace lumora {

class frmPortSet : public QDialog {
    Q_OBJECT
public:
    explicit frmPortSet(QWidget* parent = nullptr);

    // Selects the stored port and forces the baseline scan when none is stored.
    void Form_Activate();
    void Option1_Click(int index);
    void cmdPortOpen_Click();
    void cmdPortClose_Click();
    void cmdCancel_Click();

    bool scan_baseline_at_start() const;
    QRadioButton* Option1(int index) const { return options_[index]; }
    QCheckBox* Check1() const { return check1_; }

signals:
    // "Port close" and "Cancel" hand the menus back to the user (the status bar keeps its state);
    // the window that owns the menus connects this to its menu routine.
    void enable_menus();

protected:
    void showEvent(QShowEvent* event) override;

private:
    QRadioButton* options_[4] = {};
    QCheckBox* check1_ = nullptr;
    QPushButton* open_ = nullptr;
};

} // namespace lumora
