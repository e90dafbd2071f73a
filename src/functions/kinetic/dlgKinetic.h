#pragma once
// "Setup Kinetic": the wavelength, fit points, lag, rate and delay times, the plot's range, the
// factor and unit of the rate; the auto zoom option and the report texts.
#include <QDialog>
#include <array>
#include <functional>

class QCheckBox;
class QComboBox;
class QLineEdit;
class QTabWidget;

namespace lumora {

class dlgKinetic : public QDialog {
    Q_OBJECT
public:
    explicit dlgKinetic(QWidget* parent = nullptr);

    void reload_parameter();
    void cmbInst_LostFocus();
    void txtInst_LostFocus(int index);
    // False when the range check refused OK: the dialog stays and nothing is stored.
    bool cmdOk_Click();
    void cmdCancel_Click();
    void cmdClear_Click();

    QComboBox* cmbInst() const { return cmb_inst_; }
    QComboBox* cmbUnit() const { return cmb_unit_; }
    QLineEdit* txtInst(int index) const { return txt_inst_[static_cast<std::size_t>(index)]; }
    QCheckBox* chkStandard(int index) const { return chk_standard_[static_cast<std::size_t>(index)]; }
    QCheckBox* Check1(int index) const { return check1_[static_cast<std::size_t>(index)]; }
    QLineEdit* txtReport(int index) const { return txt_report_[static_cast<std::size_t>(index)]; }
    QTabWidget* tsp1() const { return tabs_; }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    QTabWidget* tabs_ = nullptr;
    QComboBox* cmb_inst_ = nullptr;
    QComboBox* cmb_unit_ = nullptr;
    std::array<QLineEdit*, 7> txt_inst_{};
    std::array<QCheckBox*, 1> chk_standard_{};
    std::array<QCheckBox*, 6> check1_{};
    std::array<QLineEdit*, 4> txt_report_{};
};

// What the dialog reaches of the window; the window fills it when it is created.
struct kinetic_window_hooks {
    std::function<void()> clear_form;
};
extern kinetic_window_hooks kinetic_window;

} // namespace lumora
