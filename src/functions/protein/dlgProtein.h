#pragma once
// "Setup Protein Analysis": the assay with its wavelength, the replicate counts, the standards
// with the fit, and the report texts. The standards grid is edited by keys straight into the cell
// that has the focus, as in the Quantitative setup.
#include <QDialog>
#include <array>

class QCheckBox;
class QComboBox;
class QLineEdit;
class QTabBar;
class QTabWidget;

namespace lumora {

class grid;
class standards_keying;

class dlgProtein : public QDialog {
    Q_OBJECT
public:
    explicit dlgProtein(QWidget* parent = nullptr);

    void reload_parameter();
    // Writes the assay's wavelength; only "General" leaves the field free.
    void cmbInst_Click();
    void txtLambda_LostFocus();
    void txtInst_LostFocus(int index);
    void txtStandard_Change();
    void fgdStandard_KeyPress(QChar key);
    void fgdStandard_KeyDown(int key_code);
    void fgdStandard_EnterCell();
    void cmdOk_Click();
    void cmdCancel_Click();

    int fit_type() const;        // 1..4
    int standard_number() const; // as the field holds it

    QTabWidget* tsp1() const { return tabs_; }
    QComboBox* cmbInst() const { return cmb_inst_; }
    QComboBox* cmbUnit() const { return cmb_unit_; }
    QLineEdit* txtLambda() const { return txt_lambda_; }
    QLineEdit* txtInst(int index) const { return txt_inst_[static_cast<std::size_t>(index)]; }
    QLineEdit* txtStandard() const { return txt_standard_; }
    QTabBar* tspFit() const { return tsp_fit_; }
    grid& fgdStandard() const { return *fgd_standard_; }
    QCheckBox* Check1(int index) const { return check1_[static_cast<std::size_t>(index)]; }
    QLineEdit* txtReport(int index) const { return txt_report_[static_cast<std::size_t>(index)]; }

signals:
    // Every OK that passes: the window starts afresh from the setup.
    void setup_taken();
    // The dialog has closed after the take-over: the window tells the next step.
    void setup_done();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void rebuild_grid();
    bool validate();

    QTabWidget* tabs_ = nullptr;
    QComboBox* cmb_inst_ = nullptr;
    QComboBox* cmb_unit_ = nullptr;
    QLineEdit* txt_lambda_ = nullptr;
    std::array<QLineEdit*, 5> txt_inst_{};
    QLineEdit* txt_standard_ = nullptr;
    QTabBar* tsp_fit_ = nullptr;
    grid* fgd_standard_ = nullptr;
    std::array<QCheckBox*, 4> check1_{};
    std::array<QLineEdit*, 4> txt_report_{};
    standards_keying* keying_ = nullptr;
    bool rebuilding_ = false;
};

} // namespace lumora
