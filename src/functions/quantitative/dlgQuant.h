#pragma once
// "Setup Quantitative": the wavelength and unit, the standards (read, keyed in, or a known
// factor) with the fit, and the report texts. The standards grid is edited by keys straight into
// the cell that has the focus.
#include <QDialog>
#include <array>

class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QRadioButton;
class QTabBar;
class QTabWidget;

namespace lumora {

class grid;
class standards_keying;

class dlgQuant : public QDialog {
    Q_OBJECT
public:
    explicit dlgQuant(QWidget* parent = nullptr);

    void reload_parameter();
    void cmbInst_LostFocus();
    void txtInst_LostFocus(int index);
    void txtStandard_Change();
    void Option1_Click(int index);
    void tspFit_Click();
    // The grid's keys: a typed character, and a key down by its code (46 is Delete).
    void fgdStandard_KeyPress(QChar key);
    void fgdStandard_KeyDown(int key_code);
    void fgdStandard_EnterCell();
    void cmdOk_Click();
    void cmdCancel_Click();
    void cmdClear_Click();

    // The option chosen: 0 read ABS, 1 keyed ABS, 2 Known factor.
    int standard_type() const;
    // The fit tab chosen, 1..4.
    int fit_type() const;
    // The number of standards the field holds.
    int standard_number() const;

    QTabWidget* tsp1() const { return tabs_; }
    QComboBox* cmbInst() const { return cmb_inst_; }
    QLineEdit* txtInst(int index) const { return txt_inst_[static_cast<std::size_t>(index)]; }
    QComboBox* cmbUnit() const { return cmb_unit_; }
    QRadioButton* Option1(int index) const { return option1_[static_cast<std::size_t>(index)]; }
    QLineEdit* txtStandard() const { return txt_standard_; }
    QTabBar* tspFit() const { return tsp_fit_; }
    QLabel* lblStandard3() const { return lbl_standard3_; }
    grid& fgdStandard() const { return *fgd_standard_; }
    QCheckBox* Check1(int index) const { return check1_[static_cast<std::size_t>(index)]; }
    QLineEdit* txtReport(int index) const { return txt_report_[static_cast<std::size_t>(index)]; }
    bool changed_flag() const { return changed_; }

signals:
    // The setup was taken over (every OK that passes): the window starts afresh from it.
    void setup_taken();
    // The dialog has closed after the take-over: the window tells the next step.
    void setup_done();
    // "Clear data".
    void clear_requested();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void rebuild_grid();
    void factor_grid();
    bool validate();

    QTabWidget* tabs_ = nullptr;
    QComboBox* cmb_inst_ = nullptr;
    std::array<QLineEdit*, 2> txt_inst_{};
    QComboBox* cmb_unit_ = nullptr;
    std::array<QRadioButton*, 3> option1_{};
    QLineEdit* txt_standard_ = nullptr;
    QTabBar* tsp_fit_ = nullptr;
    QLabel* lbl_standard3_ = nullptr;
    grid* fgd_standard_ = nullptr;
    std::array<QCheckBox*, 4> check1_{};
    std::array<QLineEdit*, 4> txt_report_{};
    bool changed_ = false; // a key went down in the grid
    standards_keying* keying_ = nullptr;
    bool rebuilding_ = false;
};

} // namespace lumora
