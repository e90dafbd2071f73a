#pragma once
// The lambda panel: goes to a wavelength, zeroes there, and sets how the live reading in panel 2
// is shown (ABS, %T, Factor*ABS, one more digit). Modal over the main window; the reading goes on
// updating under it.
#include <QDialog>

class QComboBox;
class QLineEdit;
class QPushButton;

namespace lumora {

class frmLambda : public QDialog {
    Q_OBJECT
public:
    explicit frmLambda(QWidget* parent = nullptr);

    void cmbInst_LostFocus();
    void txtInst_Change();
    void txtInst_LostFocus();
    void cmbMeasure_Click();
    void cmdLambda_Click(int index);

    QComboBox* cmbInst() const { return cmb_inst_; }
    QComboBox* cmbMeasure() const { return cmb_measure_; }
    QLineEdit* txtInst() const { return txt_inst_; }
    QPushButton* cmdLambda(int index) const { return buttons_[index]; }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void set_factor_enabled(bool enabled);

    QComboBox* cmb_inst_ = nullptr;
    QComboBox* cmb_measure_ = nullptr;
    QLineEdit* txt_inst_ = nullptr;
    QPushButton* buttons_[4] = {};
};

} // namespace lumora
