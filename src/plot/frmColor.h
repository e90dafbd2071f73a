#pragma once
// "Set Color": which curves are visible and which one is active. The colours themselves are
// fixed per column; the window shows them beside each row. It works on the state array of the
// window that opened it (curve_state[1..20]: 0 hidden or empty, 1 visible, 2 visible and active).
#include <QDialog>
#include <array>
#include <cstdint>
#include <functional>

class QCheckBox;
class QRadioButton;
class QButtonGroup;

namespace lumora {

struct color_hooks {
    std::function<void()> zoom_data;   // the window's whole redraw
    std::function<void()> clear_array; // the window's curve columns and screen curve to 0
    // Zeroes one curve column of the window's data; empty: column of shared.baseline_curves.
    std::function<void(int column)> zero_column;
};

class frmColor : public QDialog {
    Q_OBJECT
public:
    static constexpr int rows = 20;

    frmColor(std::array<std::int16_t, 21>& curve_state, std::int16_t& curve_count, std::int16_t& active_curve,
             color_hooks hooks, QWidget* parent = nullptr);

    // The rows from curve_state: the first curve_count rows enabled, the others disabled.
    void Form_Load();
    void optActive_Click(int index);
    void cmdOK_Click();
    void cmdReset_Click();
    void Command1_Click();

    QRadioButton* optActive(int index) const { return opt_[static_cast<std::size_t>(index)]; }
    QCheckBox* chkActive(int index) const { return chk_[static_cast<std::size_t>(index)]; }
    // The colour box of row `index`, in widget coordinates.
    QRect color_box(int index) const;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void select_active(int index); // -1: none

    std::array<std::int16_t, 21>& curve_state_;
    std::int16_t& curve_count_;
    std::int16_t& active_curve_;
    color_hooks hooks_;
    std::array<QRadioButton*, rows> opt_{};
    std::array<QCheckBox*, rows> chk_{};
    std::array<QWidget*, rows> swatch_{};
    QButtonGroup* group_ = nullptr;
};

} // namespace lumora
