#pragma once
// "Setup Spectrum": the range, unit, Y limits and speed of a scan, the options after a scan, and
// the report texts.
#include <QDialog>
#include <array>

class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QTabWidget;

namespace lumora {

class dlgSpectrum : public QDialog {
    Q_OBJECT
public:
    explicit dlgSpectrum(QWidget* parent = nullptr);

    void reload_parameter();
    void cmbInst_LostFocus(int index);
    void txtInst_LostFocus(int index);
    void cmbMeasure_Click();
    void cmdOk_Click();
    void cmdCancel_Click();
    void cmdClear_Click();

    QComboBox* cmbInst(int index) const { return cmb_inst_[static_cast<std::size_t>(index)]; }
    QLineEdit* txtInst(int index) const { return index == 3 ? low_ : high_; }
    QComboBox* cmbMeasure() const { return cmb_measure_; }
    QComboBox* cmbSpeed() const { return cmb_speed_; }
    QCheckBox* chkStandard(int index) const { return chk_standard_[static_cast<std::size_t>(index)]; }
    QCheckBox* Check1(int index) const { return check1_[static_cast<std::size_t>(index)]; }
    QLineEdit* txtReport(int index) const { return txt_report_[static_cast<std::size_t>(index)]; }
    QTabWidget* tsp1() const { return tabs_; }

signals:
    // The measuring settings changed: the window discards its curves.
    void setup_changed();
    // OK finished (changed or not).
    void accepted_setup();
    // "Clear data": the window empties itself.
    void clear_requested();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void set_unit_texts(bool percent_t);

    QTabWidget* tabs_ = nullptr;
    std::array<QComboBox*, 2> cmb_inst_{};
    QComboBox* cmb_measure_ = nullptr;
    QComboBox* cmb_speed_ = nullptr;
    QLineEdit* low_ = nullptr;
    QLineEdit* high_ = nullptr;
    QLabel* low_label_ = nullptr;
    QLabel* high_label_ = nullptr;
    std::array<QCheckBox*, 4> chk_standard_{};
    std::array<QCheckBox*, 7> check1_{};
    std::array<QLineEdit*, 4> txt_report_{};
};

} // namespace lumora
