#include "frmPerformance.h"

#include "link/command_ring.h"
#include "link/protocol.h"
#include "link/shared_state.h"
#include "platform/numeric_text.h"
#include "platform/prompts.h"
#include "store/database.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QElapsedTimer>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPainter>
#include <QPushButton>
#include <QTabWidget>
#include <QTableWidget>
#include <QTimer>
#include <QVBoxLayout>

namespace lumora {

// The History tab's chart of the chosen check.
class trend_view : public QWidget {
public:
    explicit trend_view(QWidget* parent) : QWidget(parent) {
        setObjectName(QStringLiteral("picTrend"));
        setMinimumSize(560, 300);
    }
    QString title;
    std::vector<verification_row> rows;
    std::pair<double, double> band{0, 0};

protected:
    void paintEvent(QPaintEvent*) override {
        QPainter p(this);
        draw_trend(p, rect(), title, rows, band.first, band.second);
    }
};

namespace {

enum column { col_check, col_reference, col_tolerance, col_result, col_date, col_verdict, column_count };

const QString title_text = QStringLiteral("Performance verification");

QString summary_of(const check_result& r, QString check_item::*field) {
    if (r.items.empty()) return r.why;
    if (r.items.size() == 1) return r.items.front().*field;
    // The item that decided the verdict speaks for the check: the first failure, else the first item.
    for (const check_item& i : r.items)
        if (i.verdict != processing::verdict::pass) return i.*field;
    return r.items.front().*field;
}

QString reference_text(verification_check c, const verification_settings& s) {
    switch (c) {
    case verification_check::wavelength:
        return QStringLiteral("Holmium oxide, %1 bands, and %2 nm").arg(s.holmium_nm.size()).arg(s.line_nm);
    case verification_check::absorbance:
        return QStringLiteral("Neutral density filters, potassium dichromate");
    case verification_check::linearity:
        return QStringLiteral("Potassium dichromate series at %1 nm").arg(s.linearity_nm);
    case verification_check::stray_light:
        return QStringLiteral("Sodium nitrite 50 g/L");
    case verification_check::resolution:
        return QStringLiteral("%1 nm line").arg(s.line_nm);
    case verification_check::noise_flatness:
        return QStringLiteral("Blank at %1 nm; %2-%3 nm")
            .arg(s.noise_nm)
            .arg(s.flatness_first)
            .arg(s.flatness_last);
    case verification_check::drift:
        return QStringLiteral("Blank at %1 nm, %2 min").arg(s.drift_nm).arg(s.drift_minutes);
    }
    return {};
}

QString tolerance_text(verification_check c, const verification_settings& s) {
    switch (c) {
    case verification_check::wavelength:
        return QStringLiteral("+-%1 nm below 400 nm, +-%2 nm above")
            .arg(s.wavelength_tol_below_400)
            .arg(s.wavelength_tol_from_400);
    case verification_check::absorbance:
        return QStringLiteral("+-%1 A or +-%2 %, the larger")
            .arg(s.absorbance_tol)
            .arg(s.absorbance_tol_rel * 100);
    case verification_check::linearity:
        return QStringLiteral("r >= %1; warn above %2 A").arg(s.linearity_min_r).arg(s.linearity_warn_above);
    case verification_check::stray_light:
        return QStringLiteral("A >= %1").arg(s.stray_min_a);
    case verification_check::resolution:
        return QStringLiteral("%1 +-%2 nm").arg(s.bandwidth_nominal).arg(s.bandwidth_tol);
    case verification_check::noise_flatness:
        return QStringLiteral("RMS <= %1 A; +-%2 A").arg(s.noise_max_rms).arg(s.flatness_tol);
    case verification_check::drift:
        return QStringLiteral("<= %1 A/h").arg(s.drift_max);
    }
    return {};
}

} // namespace

frmPerformance::frmPerformance(QWidget* parent) : QDialog(parent) {
    setObjectName(QStringLiteral("frmPerformance"));
    setWindowTitle(title_text);
    tabs_ = new QTabWidget(this);

    // Checks
    auto* page = new QWidget;
    auto* v = new QVBoxLayout(page);
    auto* who = new QHBoxLayout;
    who->addWidget(new QLabel(QStringLiteral("Operator:")));
    operator_ = new QLineEdit;
    operator_->setObjectName(QStringLiteral("txtOperator"));
    who->addWidget(operator_);
    v->addLayout(who);
    checks_ = new QTableWidget(verification_check_count, column_count);
    checks_->setObjectName(QStringLiteral("tblChecks"));
    checks_->setHorizontalHeaderLabels({QStringLiteral("Check"), QStringLiteral("Reference"),
                                        QStringLiteral("Tolerance"), QStringLiteral("Last result"),
                                        QStringLiteral("Date"), QStringLiteral("Verdict")});
    checks_->verticalHeader()->hide();
    checks_->setWordWrap(false);
    checks_->horizontalHeader()->setStretchLastSection(true);
    for (int col = col_check; col < col_verdict; ++col)
        checks_->horizontalHeader()->setSectionResizeMode(col, QHeaderView::ResizeToContents);
    checks_->setEditTriggers(QAbstractItemView::NoEditTriggers);
    checks_->setSelectionBehavior(QAbstractItemView::SelectRows);
    v->addWidget(checks_);
    summary_ = new QLabel;
    summary_->setObjectName(QStringLiteral("lblSummary"));
    v->addWidget(summary_);
    auto* buttons = new QHBoxLayout;
    run_ = new QPushButton(QStringLiteral("Run"));
    run_->setObjectName(QStringLiteral("cmdRun"));
    stop_button_ = new QPushButton(QStringLiteral("Stop"));
    stop_button_->setObjectName(QStringLiteral("cmdStop"));
    print_ = new QPushButton(QStringLiteral("Print certificate"));
    print_->setObjectName(QStringLiteral("cmdPrint"));
    auto* close = new QPushButton(QStringLiteral("Close"));
    close->setObjectName(QStringLiteral("cmdClose"));
    for (QPushButton* b : {run_, stop_button_, print_, close})
        buttons->addWidget(b);
    v->addLayout(buttons);
    tabs_->addTab(page, QStringLiteral("Checks"));

    // History
    auto* history = new QWidget;
    auto* hv = new QVBoxLayout(history);
    trend_check_ = new QComboBox;
    trend_check_->setObjectName(QStringLiteral("cmbTrend"));
    for (int c = 0; c < verification_check_count; ++c)
        trend_check_->addItem(check_name(static_cast<verification_check>(c)));
    hv->addWidget(trend_check_);
    trend_ = new trend_view(history);
    hv->addWidget(trend_, 1);
    tabs_->addTab(history, QStringLiteral("History"));

    // Settings
    auto* setup = new QWidget;
    auto* sv = new QVBoxLayout(setup);
    settings_table_ = new QTableWidget(0, 2);
    settings_table_->setObjectName(QStringLiteral("tblSettings"));
    settings_table_->setHorizontalHeaderLabels({QStringLiteral("Setting"), QStringLiteral("Value")});
    settings_table_->verticalHeader()->hide();
    settings_table_->horizontalHeader()->setStretchLastSection(true);
    sv->addWidget(settings_table_);
    auto* save = new QPushButton(QStringLiteral("Save settings"));
    save->setObjectName(QStringLiteral("cmdSaveSettings"));
    sv->addWidget(save);
    tabs_->addTab(setup, QStringLiteral("Settings"));

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(tabs_);
    resize(1180, 520);

    connect(run_, &QPushButton::clicked, this, &frmPerformance::cmdRun_Click);
    connect(stop_button_, &QPushButton::clicked, this, &frmPerformance::cmdStop_Click);
    connect(print_, &QPushButton::clicked, this, &frmPerformance::cmdPrint_Click);
    connect(close, &QPushButton::clicked, this, &frmPerformance::reject);
    connect(save, &QPushButton::clicked, this, &frmPerformance::cmdSaveSettings_Click);
    connect(trend_check_, &QComboBox::currentIndexChanged, this, [this] { show_trend(); });

    make_instrument = [this] { return link_instrument(); };
    lambda_before_ = shared.lambda_now;
    QString why;
    try {
        settings_ = settings_from_text(load_verification_settings(), &why);
    } catch (const db_error& e) {
        why = e.what;
    }
    if (!why.isEmpty())
        prompts::message_box(QStringLiteral("The verification settings could not be read (") + why +
                                 QStringLiteral("); the defaults are used."),
                             box_icon::exclamation, QStringLiteral("System Message"));
    fill_checks();
    fill_settings();
    show_trend();
    set_running(false);
}

frmPerformance::~frmPerformance() = default;

QWidget* frmPerformance::picTrend() const {
    return trend_;
}

std::unique_ptr<verification_instrument> frmPerformance::link_instrument() {
    auto clock = std::make_shared<QElapsedTimer>();
    clock->start();
    auto now = [clock] { return clock->elapsed() / 1000.0; };
    auto prompt = [](const beam_material& m) {
        return prompts::message_box(beam_prompt(m), box_icon::information, title_text,
                                    box_buttons::ok_cancel) == box_answer::ok;
    };
    return std::make_unique<link_verification_instrument>(event_loop_waiter(), now, prompt);
}

void frmPerformance::fill_checks() {
    std::vector<verification_row> history;
    try {
        history = load_verification_history();
    } catch (const db_error&) {
        // No history to show; the list still runs.
    }
    for (int c = 0; c < verification_check_count; ++c) {
        const auto check = static_cast<verification_check>(c);
        auto* name = new QTableWidgetItem(check_name(check));
        name->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsUserCheckable);
        name->setCheckState(Qt::Checked);
        checks_->setItem(c, col_check, name);
        checks_->setItem(c, col_reference, new QTableWidgetItem(reference_text(check, settings_)));
        checks_->setItem(c, col_tolerance, new QTableWidgetItem(tolerance_text(check, settings_)));
        for (int col : {col_result, col_date, col_verdict})
            checks_->setItem(c, col, new QTableWidgetItem);
        for (auto it = history.rbegin(); it != history.rend(); ++it)
            if (it->check == check_name(check)) {
                checks_->item(c, col_result)->setText(QString::number(it->value, 'g', 5));
                checks_->item(c, col_date)->setText(it->time.toString(QStringLiteral("yyyy-MM-dd HH:mm")));
                checks_->item(c, col_verdict)->setText(it->verdict);
                break;
            }
    }
}

void frmPerformance::fill_settings() {
    const auto text = settings_to_text(settings_);
    settings_table_->setRowCount(static_cast<int>(text.size()));
    int row = 0;
    for (const auto& [name, value] : text) {
        auto* key = new QTableWidgetItem(name);
        key->setFlags(Qt::ItemIsEnabled);
        settings_table_->setItem(row, 0, key);
        settings_table_->setItem(row, 1, new QTableWidgetItem(value));
        ++row;
    }
    settings_table_->resizeColumnToContents(0);
}

void frmPerformance::cmdSaveSettings_Click() {
    std::map<QString, QString> text;
    for (int r = 0; r < settings_table_->rowCount(); ++r)
        text[settings_table_->item(r, 0)->text()] = settings_table_->item(r, 1)->text();
    QString why;
    const verification_settings s = settings_from_text(text, &why);
    if (!why.isEmpty()) {
        prompts::message_box(why, box_icon::exclamation, QStringLiteral("System Message"));
        return; // the table keeps what was typed, the settings in use stay
    }
    try {
        save_verification_settings(settings_to_text(s));
    } catch (const db_error& e) {
        prompts::message_box(QStringLiteral("The settings could not be saved: ") + e.what, box_icon::critical,
                             QStringLiteral("System Message"));
        return;
    }
    settings_ = s;
    fill_checks();
    show_trend();
    set_panel(6, QStringLiteral("Verification settings saved"));
}

void frmPerformance::set_running(bool running) {
    running_ = running;
    run_->setEnabled(!running);
    stop_button_->setEnabled(running);
    print_->setEnabled(!running && !results_.empty());
    settings_table_->setEnabled(!running);
}

void frmPerformance::show_result(const check_result& r, const QDateTime& when) {
    const int row = static_cast<int>(r.check);
    checks_->item(row, col_result)->setText(r.items.empty() ? r.why : summary_of(r, &check_item::value));
    checks_->item(row, col_date)->setText(when.toString(QStringLiteral("yyyy-MM-dd HH:mm")));
    checks_->item(row, col_verdict)->setText(verdict_text(r.verdict));
    checks_->item(row, col_verdict)
        ->setForeground(r.verdict == processing::verdict::pass   ? QColor(0, 128, 0)
                        : r.verdict == processing::verdict::warn ? QColor(200, 120, 0)
                                                                 : QColor(192, 0, 0));
}

void frmPerformance::cmdRun_Click() {
    if (running_) return;
    std::vector<verification_check> chosen;
    for (int c = 0; c < verification_check_count; ++c)
        if (checks_->item(c, col_check)->checkState() == Qt::Checked)
            chosen.push_back(static_cast<verification_check>(c));
    if (chosen.empty()) {
        prompts::message_box(QStringLiteral("Tick the checks to run."), box_icon::information, title_text);
        return;
    }
    results_.clear();
    stop_ = false;
    run_time_ = QDateTime::currentDateTime();
    set_running(true);
    ran_ = true;
    {
        const std::unique_ptr<verification_instrument> inst = make_instrument();
        for (verification_check c : chosen) {
            if (stop_) break;
            checks_->selectRow(static_cast<int>(c));
            set_panel(6, check_name(c) + QStringLiteral("..."));
            check_result r = run_check(c, settings_, *inst, [this](double) { return !stop_; });
            if (stop_ && r.why.isEmpty() && c != verification_check::drift)
                r.why = QStringLiteral("Stopped.");
            show_result(r, run_time_);
            results_.push_back(std::move(r));
        }
    }
    const bool full = !stop_ && chosen.size() == static_cast<std::size_t>(verification_check_count);
    std::vector<verification_row> rows;
    int passed = 0;
    for (const check_result& r : results_) {
        if (r.verdict != processing::verdict::fail) ++passed;
        rows.push_back({run_time_, operator_->text(), check_name(r.check),
                        summary_of(r, &check_item::reference), summary_of(r, &check_item::tolerance), r.trend,
                        verdict_text(r.verdict), full, r.raw});
    }
    QString stored;
    try {
        save_verification_run(rows);
    } catch (const db_error& e) {
        stored = QStringLiteral(" The results could not be stored: ") + e.what;
    }
    set_running(false);
    const QString summary = QStringLiteral("%1 of %2 checks passed. Overall: %3.")
                                .arg(passed)
                                .arg(results_.size())
                                .arg(verdict_text(overall_verdict(results_))) +
                            stored;
    summary_->setText(summary);
    set_panel(6, QStringLiteral("Verification finished"));
    show_trend();
    prompts::message_box(summary, box_icon::information, title_text);
}

void frmPerformance::cmdStop_Click() {
    stop_ = true;
}

void frmPerformance::cmdPrint_Click() {
    if (results_.empty()) return;
    const QString path =
        QDir(data_folder())
            .filePath(QStringLiteral("Verification-") +
                      run_time_.toString(QStringLiteral("yyyyMMdd-HHmmss")) + QStringLiteral(".pdf"));
    certificate c;
    c.instrument =
        shared.product_name.isEmpty() ? QStringLiteral("UV/Vis spectrophotometer") : shared.product_name;
    c.date = run_time_;
    c.operator_name = operator_->text();
    c.results = results_;
    const QString why = write_certificate(path, c);
    if (!why.isEmpty()) {
        prompts::message_box(QStringLiteral("The certificate could not be written: ") + why,
                             box_icon::critical, QStringLiteral("System Message"));
        return;
    }
    certificate_path_ = path;
    set_panel(6, path);
}

void frmPerformance::show_trend() {
    const auto check = static_cast<verification_check>(std::max(0, trend_check_->currentIndex()));
    trend_->title = check_name(check);
    try {
        trend_->rows = load_verification_history(check_name(check));
    } catch (const db_error&) {
        trend_->rows.clear();
    }
    trend_->band = trend_band(check, settings_);
    trend_->update();
}

void frmPerformance::reject() {
    if (running_) {
        stop_ = true; // the run ends at its next step; the window closes after
        return;
    }
    if (ran_ && link_ctx.port) {
        // The checks leave the grating where the last one stood: it goes back as the other windows do.
        set_panel(6, QStringLiteral("Running to previous position..."));
        shared.lambda_now = lambda_before_;
        shared.lambda_now_int = static_cast<std::int16_t>(cint(lambda_before_));
        shared.measure_mode = mm_lambda_panel;
        begin_exchange();
        send_message(cmd_goto_lambda);
    }
    QDialog::reject();
}

} // namespace lumora

namespace lumora {

void remind_verification_if_due(QObject* owner) {
    static const char* const reminded = "verification_reminded";
    if (owner->property(reminded).toBool()) return;
    owner->setProperty(reminded, true);
    std::optional<QDateTime> last;
    verification_settings s;
    try {
        s = settings_from_text(load_verification_settings());
        last = last_full_verification();
    } catch (const db_error&) {
        return; // a database that cannot be read has said so already
    }
    if (verification_due(last, QDateTime::currentDateTime(), s.interval_days))
        prompts::message_box(verification_due_text(last), box_icon::information,
                             QStringLiteral("Information"));
}

} // namespace lumora
