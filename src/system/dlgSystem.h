#pragma once
// "Property Setup": the instrument's upkeep. It keeps the initial wavelength and runs three
// operations on demand: the zero search, the baseline scan and the light check. The outcome of each
// arrives through the decoder, which reaches this dialog by the link's hooks. After a failed zero
// search the dialog can only repeat the search; it cannot be left until one succeeds.
#include <QDialog>
#include <array>
#include <cstddef>
#include <cstdint>

class QFrame;
class QLabel;
class QLineEdit;
class QPushButton;
class QTabWidget;

namespace lumora {

class dlgSystem : public QDialog {
    Q_OBJECT
public:
    explicit dlgSystem(QWidget* parent = nullptr);
    ~dlgSystem() override;

    void enable_function(bool enabled);
    void enable_ZeroSearch();
    // The ten-frame mean at 500 nm, after "Check light intensity ".
    void check_light_level(std::int32_t intensity);
    // The lamp counters of a lamp-hour reply (bytes 4..7 visible, 8..11 UV, ten-minute units).
    void show_lamp_hour(const std::uint8_t* bytes, std::size_t size);

    void cmdOption_Click(int index);
    void txtOption_LostFocus();

    QTabWidget* tsp1() const { return tabs_; }
    QLineEdit* txtOption() const { return option_; }
    QPushButton* cmdOption(int index) const { return buttons_[static_cast<std::size_t>(index)]; }
    QPushButton* cmdOk() const { return ok_; }
    double lambda_before() const { return lambda_before_; }

    void reject() override; // Escape closes as the title bar does

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void Form_Load();
    void Form_Unload();
    void send_wavelength();
    void search_zero();
    void scan_baseline();
    void check_light();

    QTabWidget* tabs_ = nullptr;
    QLineEdit* option_ = nullptr;
    std::array<QPushButton*, 4> buttons_{};
    QPushButton* ok_ = nullptr;
    std::array<QLabel*, 2> lamp_labels_{};
    double lambda_before_ = 0;
};

} // namespace lumora
