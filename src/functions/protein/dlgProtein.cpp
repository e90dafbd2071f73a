#include "dlgProtein.h"

#include "functions/dialog_parts.h"
#include "functions/quantitative/quant_setup.h"
#include "functions/standards_editor.h"
#include "platform/grid.h"
#include "platform/numeric_text.h"
#include "platform/prompts.h"
#include "protein_setup.h"

#include <QCheckBox>
#include <QComboBox>
#include <QEvent>
#include <QFormLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QTabBar>
#include <QTabWidget>
#include <QVBoxLayout>
#include <algorithm>

namespace lumora {
namespace {

double number(const QString& text) {
    return val(text.toStdString());
}

void refuse(const QString& text) {
    prompts::message_box(text, box_icon::critical, QStringLiteral("Warning"));
}

const QString kAgain = QStringLiteral("\nPlease key in again.");
const QString kGrey = QStringLiteral("background-color: #C0C0C0;");

// The limits of txtInst 2..4 (replicates, replicates, delay).
constexpr std::array<int, 3> inst_low = {1, 1, 0};
constexpr std::array<int, 3> inst_high = {max_replicates, max_replicates, 50};

} // namespace

dlgProtein::dlgProtein(QWidget* parent) : QDialog(parent) {
    setObjectName(QStringLiteral("dlgProtein"));
    setWindowTitle(QStringLiteral("Setup Protein Analysis"));
    tabs_ = new QTabWidget(this);
    tabs_->setObjectName(QStringLiteral("tsp1"));

    // Instrument
    auto* instrument = new QWidget;
    instrument->setObjectName(QStringLiteral("Frame1_0"));
    auto* inst_layout = new QVBoxLayout(instrument);
    auto* form = new QFormLayout;
    cmb_inst_ = new QComboBox(instrument);
    cmb_inst_->setObjectName(QStringLiteral("cmbInst"));
    for (const protein_assay& a : protein_assays())
        cmb_inst_->addItem(QString::fromLatin1(a.name));
    cmb_inst_->setToolTip(QStringLiteral("Select assay type"));
    connect(cmb_inst_, &QComboBox::activated, this, &dlgProtein::cmbInst_Click);
    form->addRow(
        buddy_label(QStringLiteral("Assay type="), cmb_inst_, instrument, QStringLiteral("lblAssay")),
        cmb_inst_);
    cmb_unit_ = new QComboBox(instrument);
    cmb_unit_->setObjectName(QStringLiteral("cmbUnit"));
    for (const char* u : quant_units())
        cmb_unit_->addItem(QString::fromLatin1(u));
    cmb_unit_->setToolTip(QStringLiteral("Select unit"));
    form->addRow(buddy_label(QStringLiteral("Unit="), cmb_unit_, instrument, QStringLiteral("lblUnit")),
                 cmb_unit_);
    txt_lambda_ = new QLineEdit(instrument);
    txt_lambda_->setObjectName(QStringLiteral("txtLambda"));
    txt_lambda_->setToolTip(QStringLiteral("Number from 330 to 1100"));
    txt_lambda_->installEventFilter(this);
    form->addRow(
        buddy_label(QStringLiteral("Wavelength(nm)="), txt_lambda_, instrument, QStringLiteral("lblLambda")),
        txt_lambda_);
    const char* inst_labels[4] = {
        "Low value(ABS)=", "High value(ABS)=", "No. of standard replicates=", "No. of sample replicates="};
    for (int i = 0; i < 5; ++i) {
        auto* t = new QLineEdit(instrument);
        t->setObjectName(QStringLiteral("txtInst_%1").arg(i));
        t->installEventFilter(this);
        txt_inst_[static_cast<std::size_t>(i)] = t;
        if (i < 2) {
            // The plot's range follows the standards; the dialog only shows it.
            t->setToolTip(QStringLiteral("Number from -0.300 to 3.000"));
            t->setStyleSheet(kGrey);
            t->setEnabled(false);
        } else {
            t->setToolTip(i == 4 ? QStringLiteral("Number from 0 to 50")
                                 : QStringLiteral("Number from 1 to 5"));
        }
        if (i < 4)
            form->addRow(buddy_label(QString::fromLatin1(inst_labels[i]), t, instrument,
                                     QStringLiteral("lblInst_%1").arg(i)),
                         t);
    }
    inst_layout->addLayout(form);
    auto* delay = new QGroupBox(instrument);
    delay->setObjectName(QStringLiteral("fra_protein_delay"));
    auto* delay_form = new QFormLayout(delay);
    delay_form->addRow(
        buddy_label(QStringLiteral("Delay time(sec)="), txt_inst_[4], delay, QStringLiteral("lblInst_4")),
        txt_inst_[4]);
    inst_layout->addWidget(delay);
    inst_layout->addStretch();
    tabs_->addTab(instrument, QStringLiteral("Instrument"));

    // Standard
    auto* standard = new QWidget;
    standard->setObjectName(QStringLiteral("Frame1_1"));
    auto* std_layout = new QVBoxLayout(standard);
    auto* std_form = new QFormLayout;
    txt_standard_ = new QLineEdit(standard);
    txt_standard_->setObjectName(QStringLiteral("txtStandard"));
    txt_standard_->setToolTip(QStringLiteral("Number from 1 to 20"));
    connect(txt_standard_, &QLineEdit::textChanged, this, &dlgProtein::txtStandard_Change);
    std_form->addRow(buddy_label(QStringLiteral("Standard number="), txt_standard_, standard,
                                 QStringLiteral("lblStandard_0")),
                     txt_standard_);
    tsp_fit_ = make_fit_tabs(standard);
    std_form->addRow(
        buddy_label(QStringLiteral("Fit type="), tsp_fit_, standard, QStringLiteral("lblStandard_1")),
        tsp_fit_);
    std_layout->addLayout(std_form);
    fgd_standard_ = new grid(standard);
    fgd_standard_->setObjectName(QStringLiteral("fgdStandard"));
    fgd_standard_->setAccessibleName(QStringLiteral("Standards"));
    keying_ = new standards_keying(fgd_standard_, [] { protein.changed = true; });
    std_layout->addWidget(fgd_standard_, 1);
    tabs_->addTab(standard, QStringLiteral("Standard"));

    const char* prints[4] = {"Print present date.", "Print page number.", "Print parameter setup.",
                             "Print standard data."};
    add_report_tab(tabs_, txt_report_, prints, check1_);

    lay_out_setup_dialog(this, tabs_, {nullptr, [this] { cmdOk_Click(); }, [this] { cmdCancel_Click(); }});
    resize(440, 460);
    reload_parameter();
}

bool dlgProtein::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::FocusOut) {
        if (watched == txt_lambda_) txtLambda_LostFocus();
        for (int i = 2; i < 5; ++i)
            if (watched == txt_inst_[static_cast<std::size_t>(i)]) txtInst_LostFocus(i);
    }
    if (event->type() == QEvent::FocusIn)
        for (QLineEdit* t : txt_inst_)
            if (watched == t) t->selectAll();
    return QDialog::eventFilter(watched, event);
}

int dlgProtein::fit_type() const {
    return tsp_fit_->currentIndex() + 1;
}

int dlgProtein::standard_number() const {
    return cint(number(txt_standard_->text()));
}

void dlgProtein::reload_parameter() {
    const ProteinSetup& p = protein;
    const int assay = std::clamp<int>(p.assay, 0, static_cast<int>(protein_assays().size()) - 1);
    cmb_inst_->setCurrentIndex(assay);
    txt_lambda_->setText(p.lambda);
    const bool general = assay == static_cast<int>(protein_assays().size()) - 1;
    txt_lambda_->setEnabled(general);
    txt_lambda_->setStyleSheet(general ? QString() : kGrey);
    const int unit = cmb_unit_->findText(p.unit);
    cmb_unit_->setCurrentIndex(unit < 0 ? 0 : unit);
    txt_inst_[0]->setText(format_text(p.cal.abs_min, "0.000"));
    txt_inst_[1]->setText(format_text(p.cal.abs_max, "0.000"));
    txt_inst_[2]->setText(QString::number(p.std_reps));
    txt_inst_[3]->setText(QString::number(p.sample_reps));
    txt_inst_[4]->setText(QString::number(p.delay));
    rebuilding_ = true;
    tsp_fit_->setCurrentIndex(p.cal.fit_type >= 1 && p.cal.fit_type <= 4 ? p.cal.fit_type - 1 : 0);
    txt_standard_->setText(QString::number(p.cal.std_count));
    rebuilding_ = false;
    rebuild_grid();
    for (int r = 1; r <= p.cal.std_count && r <= max_standards; ++r)
        fgd_standard_->setTextMatrix(r, 1,
                                     format_text(p.cal.std_conc[static_cast<std::size_t>(r - 1)], "0.000"));
    txt_report_[0]->setText(p.report_laboratory);
    txt_report_[1]->setText(p.report_subject);
    txt_report_[2]->setText(p.report_operator);
    txt_report_[3]->setText(p.report_remark);
    for (std::size_t i = 0; i < 4; ++i)
        check1_[i]->setChecked(p.print_flags[i] == 1);
}

void dlgProtein::cmbInst_Click() {
    const int index = cmb_inst_->currentIndex();
    const auto& assays = protein_assays();
    if (index < 0 || index >= static_cast<int>(assays.size())) return;
    txt_lambda_->setText(QString::fromLatin1(assays[static_cast<std::size_t>(index)].lambda));
    const bool general = index == static_cast<int>(assays.size()) - 1;
    txt_lambda_->setEnabled(general);
    txt_lambda_->setStyleSheet(general ? QString() : kGrey);
}

void dlgProtein::txtLambda_LostFocus() {
    const double v = std::clamp(number(txt_lambda_->text()), 330.0, 1100.0);
    txt_lambda_->setText(format_text(v, "0"));
}

void dlgProtein::txtInst_LostFocus(int index) {
    if (index < 2 || index > 4) return;
    QLineEdit* t = txt_inst_[static_cast<std::size_t>(index)];
    const auto k = static_cast<std::size_t>(index - 2);
    const double v = std::clamp(number(t->text()), double(inst_low[k]), double(inst_high[k]));
    t->setText(format_text(v, "0"));
}

void dlgProtein::txtStandard_Change() {
    if (rebuilding_) return;
    if (hold_standard_number(txt_standard_)) return; // comes back here with the corrected text
    rebuild_grid();
}

void dlgProtein::rebuild_grid() {
    grid& g = *fgd_standard_;
    const int n = std::clamp(standard_number(), 1, max_standards);
    // Conc. already keyed in stays in its row.
    std::array<QString, max_standards + 1> kept;
    for (int r = 1; r < g.Rows() && r <= max_standards; ++r)
        kept[static_cast<std::size_t>(r)] = g.TextMatrix(r, 1);
    g.Clear();
    g.setCols(2);
    g.setRows(n + 1);
    g.Clear();
    g.setTextMatrix(0, 0, QStringLiteral("No."));
    g.setTextMatrix(0, 1, QStringLiteral("Conc."));
    for (int r = 1; r <= n; ++r) {
        g.setTextMatrix(r, 0, QStringLiteral("Std%1").arg(r));
        g.setTextMatrix(r, 1, kept[static_cast<std::size_t>(r)]);
    }
}

void dlgProtein::fgdStandard_EnterCell() {
    keying_->enter_cell();
}

void dlgProtein::fgdStandard_KeyPress(QChar key) {
    keying_->key_press(key);
}

void dlgProtein::fgdStandard_KeyDown(int key_code) {
    keying_->key_down(key_code);
}

bool dlgProtein::validate() {
    const int fit = fit_type();
    if (standard_number() < fit_least_standards(fit)) {
        refuse(QStringLiteral("The standard number must >=%1!").arg(fit_least_standards(fit)));
        return false;
    }
    const int n = std::clamp(standard_number(), 1, max_standards);
    int zeros = 0;
    for (int r = 1; r <= n; ++r) {
        const double c = number(fgd_standard_->TextMatrix(r, 1));
        if (c < 0 || c > 30000) {
            refuse(QStringLiteral("The Conc. number must >=0 or <=30000!") + kAgain);
            return false;
        }
        zeros += c == 0;
    }
    if (zeros == n) {
        refuse(QStringLiteral("There must be one Conc. value >0 at least!") + kAgain);
        return false;
    }
    return true;
}

void dlgProtein::cmdOk_Click() {
    // A field still being edited is taken as it would be on leaving it.
    txtLambda_LostFocus();
    for (int i = 2; i < 5; ++i)
        txtInst_LostFocus(i);
    if (!validate()) return;
    ProteinSetup& p = protein;
    p.assay = static_cast<std::int16_t>(cmb_inst_->currentIndex());
    p.lambda = txt_lambda_->text();
    p.unit = cmb_unit_->currentText();
    p.std_reps = static_cast<std::int16_t>(cint(number(txt_inst_[2]->text())));
    p.sample_reps = static_cast<std::int16_t>(cint(number(txt_inst_[3]->text())));
    p.delay = static_cast<std::int16_t>(cint(number(txt_inst_[4]->text())));
    p.cal.fit_type = static_cast<std::int16_t>(fit_type());
    p.cal.std_count = static_cast<std::int16_t>(std::clamp(standard_number(), 1, max_standards));
    for (int r = 1; r <= p.cal.std_count; ++r)
        p.cal.std_conc[static_cast<std::size_t>(r - 1)] = number(fgd_standard_->TextMatrix(r, 1));
    for (std::size_t i = 0; i < 4; ++i)
        p.print_flags[i] = check1_[i]->isChecked() ? 1 : 0;
    p.report_laboratory = txt_report_[0]->text();
    p.report_subject = txt_report_[1]->text();
    p.report_operator = txt_report_[2]->text();
    p.report_remark = txt_report_[3]->text();
    p.changed = true; // never cleared: every OK starts afresh
    emit setup_taken();
    accept();
    emit setup_done();
}

void dlgProtein::cmdCancel_Click() {
    reject();
}

} // namespace lumora
