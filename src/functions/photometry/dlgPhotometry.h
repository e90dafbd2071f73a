#pragma once
// "Setup Photometry": the wavelengths, the measure mode and unit, the cycles, the equation of
// column R, and the report texts. Bad numbers are held to their ranges silently.
#include <QDialog>
#include <array>

class QCheckBox;
class QComboBox;
class QFrame;
class QLineEdit;
class QTabWidget;

namespace lumora {

class dlgPhotometry : public QDialog {
    Q_OBJECT
public:
    explicit dlgPhotometry(QWidget* parent = nullptr);

    void reload_parameter();
    void txtInst_Change(int index);
    void txtInst_LostFocus(int index);
    void txtLambda_LostFocus(int index);
    void cmbMeasure_Click();
    void Check2_Click();
    void cmbWL_GotFocus(int index);
    void cmdOk_Click();
    void cmdCancel_Click();
    void cmdClear_Click();

    QLineEdit* txtInst(int index) const { return txt_inst_[static_cast<std::size_t>(index)]; }
    QLineEdit* txtLambda(int index) const { return txt_lambda_[static_cast<std::size_t>(index)]; }
    QComboBox* cmbMeasure() const { return cmb_measure_; }
    QComboBox* cmbUnit() const { return cmb_unit_; }
    QCheckBox* Check2() const { return check2_; }
    QFrame* Frame2() const { return frame2_; }
    QComboBox* cmbWL(int index) const { return cmb_wl_[static_cast<std::size_t>(index)]; }
    QComboBox* cmbEqu(int index) const { return cmb_equ_[static_cast<std::size_t>(index)]; }
    QCheckBox* Check1(int index) const { return check1_[static_cast<std::size_t>(index)]; }
    QLineEdit* txtReport(int index) const { return txt_report_[static_cast<std::size_t>(index)]; }
    QTabWidget* tsp1() const { return tabs_; }

signals:
    // A measuring setting changed: the window clears its grid.
    void setup_changed();
    // "Clear data": the window empties itself.
    void clear_requested();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void enable_lambdas(int count);
    void set_factor_enabled(bool enabled);
    // The wavelength picks: "None", then the first `count` boxes as "450 nm".
    void fill_wl_list(int list, int count);

    QTabWidget* tabs_ = nullptr;
    std::array<QLineEdit*, 6> txt_inst_{};
    std::array<QLineEdit*, 10> txt_lambda_{};
    QComboBox* cmb_measure_ = nullptr;
    QComboBox* cmb_unit_ = nullptr;
    QCheckBox* check2_ = nullptr;
    QFrame* frame2_ = nullptr;
    std::array<QComboBox*, 4> cmb_wl_{};
    std::array<QComboBox*, 3> cmb_equ_{};
    std::array<QCheckBox*, 4> check1_{};
    std::array<QLineEdit*, 4> txt_report_{};
};

} // namespace lumora
