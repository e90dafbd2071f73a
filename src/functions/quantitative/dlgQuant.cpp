#include "dlgQuant.h"

#include "functions/dialog_parts.h"
#include "functions/standards_editor.h"

#include "platform/grid.h"
#include "platform/numeric_text.h"
#include "platform/prompts.h"
#include "quant_setup.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QEvent>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTabBar>
#include <QTabWidget>
#include <QVBoxLayout>

namespace lumora {
namespace {

double number(const QString& text) {
    return val(text.toStdString());
}

const QString kWarning = QStringLiteral("Warning");
const QString kAgain = QStringLiteral("\nPlease key in again.");

void refuse(const QString& text) {
    prompts::message_box(text, box_icon::critical, kWarning);
}

} // namespace

dlgQuant::dlgQuant(QWidget* parent) : QDialog(parent) {
    setObjectName(QStringLiteral("dlgQuant"));
    setWindowTitle(QStringLiteral("Setup Quantitative"));
    tabs_ = new QTabWidget(this);
    tabs_->setObjectName(QStringLiteral("tsp1"));

    // Instrument
    auto* instrument = new QWidget;
    instrument->setObjectName(QStringLiteral("Frame1_0"));
    auto* form = new QFormLayout(instrument);
    cmb_inst_ = new QComboBox(instrument);
    cmb_inst_->setObjectName(QStringLiteral("cmbInst"));
    cmb_inst_->setEditable(true);
    cmb_inst_->setInsertPolicy(QComboBox::NoInsert);
    cmb_inst_->setToolTip(QStringLiteral("Number from 330 to 1100"));
    cmb_inst_->installEventFilter(this);
    cmb_inst_->lineEdit()->installEventFilter(this);
    connect(cmb_inst_->lineEdit(), &QLineEdit::returnPressed, this, &dlgQuant::cmbInst_LostFocus);
    form->addRow(
        buddy_label(QStringLiteral("Wavelength(nm)="), cmb_inst_, instrument, QStringLiteral("lblInst")),
        cmb_inst_);
    const char* inst_labels[2] = {"Low value(ABS)=", "High value(ABS)="};
    for (int i = 0; i < 2; ++i) {
        auto* t = new QLineEdit(instrument);
        t->setObjectName(QStringLiteral("txtInst_%1").arg(i));
        t->setToolTip(QStringLiteral("Number from -0.300 to 3.000"));
        t->setStyleSheet(QStringLiteral("background-color: #C0C0C0;"));
        t->setEnabled(false);
        t->installEventFilter(this);
        txt_inst_[static_cast<std::size_t>(i)] = t;
        form->addRow(buddy_label(QString::fromLatin1(inst_labels[i]), t, instrument,
                                 QStringLiteral("lblInst_%1").arg(i)),
                     t);
    }
    cmb_unit_ = new QComboBox(instrument);
    cmb_unit_->setObjectName(QStringLiteral("cmbUnit"));
    for (const char* u : quant_units())
        cmb_unit_->addItem(QString::fromLatin1(u));
    cmb_unit_->setToolTip(QStringLiteral("Select unit"));
    form->addRow(buddy_label(QStringLiteral("Unit="), cmb_unit_, instrument, QStringLiteral("lblUnit")),
                 cmb_unit_);
    tabs_->addTab(instrument, QStringLiteral("Instrument"));

    // Standard
    auto* standard = new QWidget;
    standard->setObjectName(QStringLiteral("Frame1_1"));
    auto* std_layout = new QVBoxLayout(standard);
    auto* group = new QButtonGroup(standard);
    const char* options[3] = {"Known Conc. and read ABS", "Known Conc. and keyin ABS", "Known factor"};
    for (int i = 0; i < 3; ++i) {
        auto* r = new QRadioButton(QString::fromLatin1(options[i]), standard);
        r->setObjectName(QStringLiteral("Option1_%1").arg(i));
        group->addButton(r, i);
        option1_[static_cast<std::size_t>(i)] = r;
        std_layout->addWidget(r);
    }
    connect(group, &QButtonGroup::idClicked, this, &dlgQuant::Option1_Click);
    auto* std_form = new QFormLayout;
    txt_standard_ = new QLineEdit(standard);
    txt_standard_->setObjectName(QStringLiteral("txtStandard"));
    txt_standard_->setToolTip(QStringLiteral("Number from 1 to 20"));
    connect(txt_standard_, &QLineEdit::textChanged, this, &dlgQuant::txtStandard_Change);
    std_form->addRow(buddy_label(QStringLiteral("Standard number="), txt_standard_, standard,
                                 QStringLiteral("lblStandard_0")),
                     txt_standard_);
    tsp_fit_ = make_fit_tabs(standard);
    connect(tsp_fit_, &QTabBar::currentChanged, this, &dlgQuant::tspFit_Click);
    std_form->addRow(
        buddy_label(QStringLiteral("Fit type="), tsp_fit_, standard, QStringLiteral("lblStandard_1")),
        tsp_fit_);
    std_layout->addLayout(std_form);
    lbl_standard3_ = new QLabel(standard);
    lbl_standard3_->setObjectName(QStringLiteral("lblStandard_3"));
    lbl_standard3_->hide();
    std_layout->addWidget(lbl_standard3_);
    fgd_standard_ = new grid(standard);
    fgd_standard_->setObjectName(QStringLiteral("fgdStandard"));
    fgd_standard_->setAccessibleName(QStringLiteral("Standards"));
    keying_ = new standards_keying(fgd_standard_, [this] { changed_ = true; });
    std_layout->addWidget(fgd_standard_, 1);
    auto* clear = new QPushButton(QStringLiteral("Clear data"), standard);
    clear->setObjectName(QStringLiteral("cmdClear"));
    connect(clear, &QPushButton::clicked, this, &dlgQuant::cmdClear_Click);
    std_layout->addWidget(clear, 0, Qt::AlignLeft);
    tabs_->addTab(standard, QStringLiteral("Standard"));

    const char* prints[4] = {"Print present date.", "Print page number.", "Print parameter setup.",
                             "Print standard data."};
    add_report_tab(tabs_, txt_report_, prints, check1_);

    lay_out_setup_dialog(this, tabs_, {nullptr, [this] { cmdOk_Click(); }, [this] { cmdCancel_Click(); }});
    resize(440, 440);
    reload_parameter();
}

bool dlgQuant::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::FocusOut) {
        if (watched == cmb_inst_ || watched == cmb_inst_->lineEdit()) cmbInst_LostFocus();
        if (watched == txt_inst_[0]) txtInst_LostFocus(0);
        if (watched == txt_inst_[1]) txtInst_LostFocus(1);
    }
    if (event->type() == QEvent::FocusIn)
        for (QLineEdit* t : txt_inst_)
            if (watched == t) t->selectAll();
    return QDialog::eventFilter(watched, event);
}

int dlgQuant::standard_type() const {
    for (int i = 0; i < 3; ++i)
        if (option1_[static_cast<std::size_t>(i)]->isChecked()) return i;
    return 0;
}

int dlgQuant::fit_type() const {
    return tsp_fit_->currentIndex() + 1;
}

int dlgQuant::standard_number() const {
    return cint(number(txt_standard_->text()));
}

void dlgQuant::reload_parameter() {
    const QuantSetup& q = quant;
    cmb_inst_->setEditText(q.lambda);
    if (cmb_inst_->findText(q.lambda) < 0) cmb_inst_->addItem(q.lambda);
    txt_inst_[0]->setText(format_text(q.low_abs, "0.000"));
    txt_inst_[1]->setText(format_text(q.high_abs, "0.000"));
    const int unit = cmb_unit_->findText(q.unit);
    cmb_unit_->setCurrentIndex(unit < 0 ? 0 : unit);
    rebuilding_ = true;
    tsp_fit_->setCurrentIndex(q.cal.fit_type >= 1 && q.cal.fit_type <= 4 ? q.cal.fit_type - 1 : 0);
    txt_standard_->setText(QString::number(q.cal.std_count));
    rebuilding_ = false;
    const int type = q.std_type >= 0 && q.std_type <= 2 ? q.std_type : 0;
    option1_[static_cast<std::size_t>(type)]->setChecked(true);
    Option1_Click(type);
    grid& g = *fgd_standard_;
    if (type == 2) {
        g.setTextMatrix(1, 1, format_text(q.cal.fit_ka, "0.0000"));
        g.setTextMatrix(1, 2, format_text(q.cal.fit_kb, "0.0000"));
        g.setTextMatrix(1, 3, format_text(q.cal.fit_kc, "0.0000"));
    } else {
        for (int r = 1; r <= q.cal.std_count && r <= max_standards; ++r) {
            const auto i = static_cast<std::size_t>(r - 1);
            g.setTextMatrix(r, 1, format_text(q.cal.std_conc[i], "0.000"));
            if (type == 1) g.setTextMatrix(r, 2, format_text(q.cal.std_abs[i], "0.000"));
        }
    }
    txt_report_[0]->setText(q.report_laboratory);
    txt_report_[1]->setText(q.report_subject);
    txt_report_[2]->setText(q.report_operator);
    txt_report_[3]->setText(q.report_remark);
    for (std::size_t i = 0; i < 4; ++i)
        check1_[i]->setChecked(q.print_flags[i] == 1);
    changed_ = false;
}

void dlgQuant::cmbInst_LostFocus() {
    double v = number(cmb_inst_->currentText());
    if (v < 330) v = 330;
    if (v > 1100) v = 1100;
    const QString text = format_text(v, "0");
    cmb_inst_->setEditText(text);
    if (cmb_inst_->findText(text) < 0) cmb_inst_->addItem(text);
}

void dlgQuant::txtInst_LostFocus(int index) {
    QLineEdit* t = txt_inst_[static_cast<std::size_t>(index)];
    double v = number(t->text());
    if (index == 0 && v < -0.3) v = -0.3;
    if (index == 1 && v > 3.0) v = 3.0;
    t->setText(format_text(v, "0.000"));
}

void dlgQuant::txtStandard_Change() {
    if (rebuilding_) return;
    if (hold_standard_number(txt_standard_)) return; // comes back here with the corrected text
    if (standard_type() != 2) rebuild_grid();
}

void dlgQuant::rebuild_grid() {
    grid& g = *fgd_standard_;
    const int n = std::clamp(standard_number(), 1, max_standards);
    const bool keyed = standard_type() == 1;
    g.Clear();
    g.setCols(keyed ? 3 : 2);
    g.setRows(n + 1);
    g.Clear();
    g.setTextMatrix(0, 0, QStringLiteral("No."));
    for (int r = 1; r <= n; ++r)
        for (int c = 0; c < g.Cols(); ++c)
            g.setTextMatrix(r, c, c == 0 ? QStringLiteral("Std%1").arg(r) : QString());
    g.setTextMatrix(0, 1, QStringLiteral("Conc."));
    if (keyed) g.setTextMatrix(0, 2, QStringLiteral("ABS"));
}

void dlgQuant::factor_grid() {
    grid& g = *fgd_standard_;
    const int type = fit_type();
    g.Clear();
    g.setRows(2);
    g.setCols(type == 1 ? 2 : (type == 4 ? 4 : 3));
    g.Clear();
    g.setTextMatrix(1, 0, QStringLiteral("Factor="));
    const char* heads[3] = {"Ka", "Kb", "Kc"};
    for (int c = 1; c < g.Cols(); ++c)
        g.setTextMatrix(0, c, QString::fromLatin1(heads[c - 1]));
    lbl_standard3_->setText(QString::fromLatin1(fit_equation_setup(type)));
}

void dlgQuant::Option1_Click(int index) {
    if (index == 2) {
        factor_grid();
        txt_standard_->setStyleSheet(QStringLiteral("background-color: #C0C0C0;"));
        txt_standard_->setEnabled(false);
        lbl_standard3_->show();
    } else {
        txt_standard_->setStyleSheet(QString());
        txt_standard_->setEnabled(true);
        lbl_standard3_->hide();
        rebuild_grid();
    }
}

void dlgQuant::tspFit_Click() {
    if (rebuilding_) return;
    if (standard_type() == 2) factor_grid();
}

void dlgQuant::fgdStandard_EnterCell() {
    keying_->enter_cell();
}

void dlgQuant::fgdStandard_KeyPress(QChar key) {
    keying_->key_press(key);
}

void dlgQuant::fgdStandard_KeyDown(int key_code) {
    keying_->key_down(key_code);
}

bool dlgQuant::validate() {
    const int type = standard_type();
    const int fit = fit_type();
    if (type != 2 && standard_number() < fit_least_standards(fit)) {
        refuse(QStringLiteral("The standard number must >=%1!").arg(fit_least_standards(fit)));
        return false;
    }
    const grid& g = *fgd_standard_;
    const auto cell = [&g](int r, int c) { return number(g.TextMatrix(r, c)); };
    const int n = std::clamp(standard_number(), 1, max_standards);
    bool conc_bad = false, abs_bad = false, factor_bad = false, abs_all_zero = false;
    if (type == 2) {
        // Zero cells are counted among Ka (tabs 1 and 2) or Ka and Kb (tabs 3 and 4), and two of
        // them refuse the factor: with one cell counted, tabs 1 and 2 take any Ka.
        int zeros = cell(1, 1) == 0;
        if (fit >= 3) zeros += cell(1, 2) == 0;
        factor_bad = zeros == 2;
    } else {
        int abs_zeros = 0;
        for (int r = 1; r <= n; ++r) {
            const double c = cell(r, 1);
            if (c < 0 || c > 30000) conc_bad = true;
            if (type == 1) {
                const double a = cell(r, 2);
                if (a < 0 || a > 3.0) abs_bad = true;
                if (a == 0) ++abs_zeros;
            }
        }
        abs_all_zero = type == 1 && abs_zeros == n;
    }
    if (conc_bad) {
        refuse(QStringLiteral("The Conc. number must >=0 or <=30000!") + kAgain);
        return false;
    }
    if (abs_bad) {
        refuse(QStringLiteral("The Abs number must >=0.000 or <=3.000!") + kAgain);
        return false;
    }
    if (factor_bad) {
        refuse(QStringLiteral("There must be one Factor value <>0 at least!") + kAgain);
        return false;
    }
    if (abs_all_zero) {
        refuse(QStringLiteral("There must be one ABS value >0 at least!") + kAgain);
        return false;
    }
    if (type != 2) {
        int conc_zeros = 0;
        for (int r = 1; r <= n; ++r)
            conc_zeros += cell(r, 1) == 0;
        if (conc_zeros == n) {
            refuse(QStringLiteral("There must be one Conc. value >0 at least!") + kAgain);
            return false;
        }
    }
    return true;
}

void dlgQuant::cmdOk_Click() {
    if (!validate()) return;
    QuantSetup& q = quant;
    const auto take = [](auto& field, auto value) {
        if (field != value) {
            field = value;
            quant.changed = true;
        }
    };
    take(q.lambda, QString::number(number(cmb_inst_->currentText())));
    if (standard_type() != 2)
        take(q.cal.std_count, static_cast<std::int16_t>(std::clamp(standard_number(), 1, max_standards)));
    take(q.unit, cmb_unit_->currentText());
    take(q.cal.fit_type, static_cast<std::int16_t>(fit_type()));
    take(q.std_type, static_cast<std::int16_t>(standard_type()));
    if (changed_) q.changed = true;
    for (std::size_t i = 0; i < 4; ++i)
        q.print_flags[i] = check1_[i]->isChecked() ? 1 : 0;
    q.report_laboratory = txt_report_[0]->text();
    q.report_subject = txt_report_[1]->text();
    q.report_operator = txt_report_[2]->text();
    q.report_remark = txt_report_[3]->text();
    if (!q.changed) {
        accept();
        return;
    }
    emit setup_taken();
    accept();
    emit setup_done();
}

void dlgQuant::cmdCancel_Click() {
    reject();
}

void dlgQuant::cmdClear_Click() {
    emit clear_requested();
}

} // namespace lumora
