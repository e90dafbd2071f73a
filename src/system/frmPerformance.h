#pragma once
// "Performance verification": the list of checks with reference, tolerance, last result and date;
// "Run" takes the ticked checks one by one with a prompt for each material, judges them, stores the
// run and offers the certificate. The History tab draws each check's trend across runs, the
// Settings tab keeps the lab's own reference values and tolerances.
#include "verification_link.h"
#include "verification_print.h"

#include <QDialog>
#include <functional>
#include <memory>

class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QTableWidget;
class QTabWidget;

namespace lumora {

class trend_view;

class frmPerformance : public QDialog {
    Q_OBJECT
public:
    explicit frmPerformance(QWidget* parent = nullptr);
    ~frmPerformance() override;

    // How the checks reach the instrument; the program's own link unless a test puts its own.
    std::function<std::unique_ptr<verification_instrument>()> make_instrument;

    void cmdRun_Click();
    void cmdStop_Click();
    void cmdPrint_Click();
    void cmdSaveSettings_Click();

    QTabWidget* tabs() const { return tabs_; }
    QTableWidget* tblChecks() const { return checks_; }
    QTableWidget* tblSettings() const { return settings_table_; }
    QComboBox* cmbTrend() const { return trend_check_; }
    QLineEdit* txtOperator() const { return operator_; }
    QWidget* picTrend() const;
    const std::vector<check_result>& results() const { return results_; }
    const verification_settings& settings() const { return settings_; }
    // The certificate last written, "" before one.
    const QString& certificate_path() const { return certificate_path_; }

    void reject() override;

private:
    std::unique_ptr<verification_instrument> link_instrument();
    void fill_checks();
    void fill_settings();
    void show_result(const check_result& r, const QDateTime& when);
    void show_trend();
    void set_running(bool running);

    verification_settings settings_;
    std::vector<check_result> results_;
    QDateTime run_time_;
    QString certificate_path_;
    bool running_ = false;
    bool stop_ = false;
    bool ran_ = false;         // a run moved the grating
    double lambda_before_ = 0; // [nm] where it stood when the window opened

    QTabWidget* tabs_ = nullptr;
    QTableWidget* checks_ = nullptr;
    QTableWidget* settings_table_ = nullptr;
    QLineEdit* operator_ = nullptr;
    QLabel* summary_ = nullptr;
    QPushButton* run_ = nullptr;
    QPushButton* stop_button_ = nullptr;
    QPushButton* print_ = nullptr;
    QComboBox* trend_check_ = nullptr;
    trend_view* trend_ = nullptr;
};

} // namespace lumora

namespace lumora {

// After the start-up: one "Information" box when the last full verification is older than the
// interval in the settings. Once per `owner`, however often the link
// reconnects.
void remind_verification_if_due(QObject* owner);

} // namespace lumora
