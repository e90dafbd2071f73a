#pragma once
// The small tool windows of Spectrum: smoothing ("frmPopup"), derivatives ("frmDerv") and curve
// arithmetic ("frmAdvance", "+-* scan"). Each works on the Spectrum data through the window
// that opened it.
#include <QDialog>
#include <array>
#include <functional>

class QCheckBox;
class QComboBox;
class QLineEdit;
class QPushButton;

namespace lumora {

// "Smooth low" (9 points) and "Smooth high" (17 points) replace the active curve; "Exit".
class frmPopup : public QDialog {
    Q_OBJECT
public:
    frmPopup(std::function<void(int points)> smooth, QWidget* parent = nullptr);
    // The button's key, compared in lower case: "smooth low", "smooth high", anything else closes.
    void tbPopup_ButtonClick(const QString& key);

private:
    std::function<void(int)> smooth_;
};

// "1st derivative" .. "4th derivative" show the derivative of the active curve below the plot.
class frmDerv : public QDialog {
    Q_OBJECT
public:
    frmDerv(std::function<void(int order)> derive, QWidget* parent = nullptr);
    // Keys "17 point 1st" .. "17 point 4th", compared exactly; "Exit" closes.
    void tbDerv_ButtonClick(const QString& key);

private:
    std::function<void(int)> derive_;
};

// "+-* scan": result = (a times scan p) op1 (b times scan q) op2 c, into the next free column.
class frmAdvance : public QDialog {
    Q_OBJECT
public:
    // `done` runs after a result was stored (the window redraws and zooms).
    frmAdvance(std::function<void()> done, QWidget* parent = nullptr);

    void cmdOK_Click();
    QLineEdit* txtScan(int index) const { return txt_[static_cast<std::size_t>(index)]; }
    QComboBox* cmbScan(int index) const { return scan_[static_cast<std::size_t>(index)]; }
    QComboBox* cmbOperator(int index) const { return op_[static_cast<std::size_t>(index)]; }
    QCheckBox* chkActive(int index) const { return chk_[static_cast<std::size_t>(index)]; }

private:
    std::function<void()> done_;
    std::array<QLineEdit*, 3> txt_{};
    std::array<QComboBox*, 2> scan_{};
    std::array<QComboBox*, 2> op_{};
    std::array<QCheckBox*, 20> chk_{};
};

} // namespace lumora
