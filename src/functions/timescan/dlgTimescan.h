#pragma once
// "Setup Timescan-Fixed span": one dialog for both Timescan forms. "Fixed interval" chooses the
// form: ticked, the stop time and sampling interval show and OK opens the fixed-interval window.
#include <QDialog>
#include <array>
#include <functional>

class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QTabWidget;
class QWidget;

namespace lumora {

class dlgTimescan : public QDialog {
    Q_OBJECT
public:
    explicit dlgTimescan(QWidget* parent = nullptr);

    void reload_parameter();
    void cmbInst_LostFocus();
    void txtInst_LostFocus(int index);
    void cmbMeasure_Click();
    void Check2_Click();
    void cmdOk_Click();
    void cmdCancel_Click();
    void cmdClear_Click();

    QComboBox* cmbInst() const { return cmb_inst_; }
    QComboBox* cmbMeasure() const { return cmb_measure_; }
    QLineEdit* txtInst(int index) const { return txt_inst_[static_cast<std::size_t>(index)]; }
    QLabel* lblInst(int index) const { return index == 4 ? low_label_ : high_label_; }
    QCheckBox* chkStandard(int index) const { return chk_standard_[static_cast<std::size_t>(index)]; }
    QCheckBox* Check1(int index) const { return check1_[static_cast<std::size_t>(index)]; }
    QCheckBox* Check2() const { return check2_; }
    QLineEdit* txtReport(int index) const { return txt_report_[static_cast<std::size_t>(index)]; }
    QWidget* Frame2() const { return frame2_; }
    QWidget* Frame3() const { return frame3_; }
    QTabWidget* tsp1() const { return tabs_; }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void set_unit_texts(bool percent_t);
    bool span_ok();
    bool interval_ok();

    QTabWidget* tabs_ = nullptr;
    QComboBox* cmb_inst_ = nullptr;
    QComboBox* cmb_measure_ = nullptr;
    std::array<QLineEdit*, 6> txt_inst_{};
    QLabel* low_label_ = nullptr;
    QLabel* high_label_ = nullptr;
    QWidget* frame2_ = nullptr; // stop time and interval
    QWidget* frame3_ = nullptr; // span
    std::array<QCheckBox*, 2> chk_standard_{};
    std::array<QCheckBox*, 6> check1_{};
    QCheckBox* check2_ = nullptr;
    std::array<QLineEdit*, 4> txt_report_{};
};

// What the dialog reaches of the two windows; each window fills its own when it is created.
struct timescan_window_hooks {
    std::function<void()> span_clear_form;     // frmTimescan.clear_form
    std::function<void()> interval_clear_form; // frmTimescan2.clear_form
};
extern timescan_window_hooks timescan_windows;

} // namespace lumora
