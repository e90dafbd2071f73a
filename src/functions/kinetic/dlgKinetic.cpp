#include "dlgKinetic.h"

#include "functions/dialog_parts.h"
#include "functions/function_window.h"
#include "kinetic_data.h"
#include "link/shared_state.h"
#include "platform/numeric_text.h"
#include "platform/prompts.h"

#include <QCheckBox>
#include <QComboBox>
#include <QEvent>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QTabWidget>
#include <QVBoxLayout>
#include <algorithm>

namespace lumora {

kinetic_window_hooks kinetic_window;

namespace {

// The units of the concentration, the same list as Photometry's.
const char* const unit_list[] = {"None", "G/dL", "U/L",   "G/L",   "ug/dL",  "ABS",    "mg/dL", "OD",
                                 "mABS", "U/mL", "ug/mL", "mEq/L", "mmol/L", "umol/L", "ng/mL"};

struct field_rule {
    const char* label;
    const char* tip;
    double low, high;
    const char* format;
};
constexpr field_rule rules[7] = {
    {"Sampling number=", "Number from 2 to 99", 2, 99, "0"},
    {"Lag time(sec)=", "Number from 2 to 9999", 2, 9999, "0"},
    {"Rate time(sec)=", "Number from 15 to 9999", 15, 9999, "0"},
    {"Delay time(sec)=", "Number from 0 to 50", 0, 50, "0"},
    {"Low value(ABS)=", "Number from -0.300 to 3.000", -0.3, 3.0, "0.000"},
    {"High value(ABS)=", "Number from -0.300 to 3.000", -0.3, 3.0, "0.000"},
    {"Factor=", "Number from 0 to 10000", 0, 10000, "0.000"},
};

double number(const QString& text) {
    return val(text.toStdString());
}

} // namespace

dlgKinetic::dlgKinetic(QWidget* parent) : QDialog(parent) {
    setObjectName(QStringLiteral("dlgKinetic"));
    setWindowTitle(QStringLiteral("Setup Kinetic"));
    tabs_ = new QTabWidget(this);
    tabs_->setObjectName(QStringLiteral("tsp1"));

    auto* instrument = new QWidget;
    instrument->setObjectName(QStringLiteral("Frame1_0"));
    auto* layout_inst = new QVBoxLayout(instrument);
    auto* form = new QFormLayout;
    layout_inst->addLayout(form);
    cmb_inst_ = new QComboBox(instrument);
    cmb_inst_->setObjectName(QStringLiteral("cmbInst"));
    cmb_inst_->setEditable(true);
    cmb_inst_->setInsertPolicy(QComboBox::NoInsert);
    cmb_inst_->addItem(QStringLiteral("500"));
    cmb_inst_->setToolTip(QStringLiteral("Number from 330 to 1100"));
    cmb_inst_->installEventFilter(this);
    cmb_inst_->lineEdit()->installEventFilter(this);
    connect(cmb_inst_->lineEdit(), &QLineEdit::returnPressed, this, &dlgKinetic::cmbInst_LostFocus);
    form->addRow(
        buddy_label(QStringLiteral("Wavelength(nm)="), cmb_inst_, instrument, QStringLiteral("lblInst")),
        cmb_inst_);
    for (int i = 0; i < 7; ++i) {
        const field_rule& r = rules[i];
        auto* t = new QLineEdit(instrument);
        t->setObjectName(QStringLiteral("txtInst_%1").arg(i));
        t->setToolTip(QString::fromLatin1(r.tip));
        t->installEventFilter(this);
        connect(t, &QLineEdit::returnPressed, this, [this, i] { txtInst_LostFocus(i); });
        form->addRow(
            buddy_label(QString::fromLatin1(r.label), t, instrument, QStringLiteral("lblInst_%1").arg(i)), t);
        txt_inst_[static_cast<std::size_t>(i)] = t;
    }
    cmb_unit_ = new QComboBox(instrument);
    cmb_unit_->setObjectName(QStringLiteral("cmbUnit"));
    for (const char* u : unit_list)
        cmb_unit_->addItem(QString::fromLatin1(u));
    cmb_unit_->setToolTip(QStringLiteral("Select unit"));
    form->addRow(buddy_label(QStringLiteral("Unit="), cmb_unit_, instrument, QStringLiteral("lblUnit")),
                 cmb_unit_);
    layout_inst->addStretch();
    tabs_->addTab(instrument, QStringLiteral("Instrument"));

    auto* option = new QWidget;
    option->setObjectName(QStringLiteral("Frame1_1"));
    auto* option_layout = new QVBoxLayout(option);
    chk_standard_[0] = new QCheckBox(QStringLiteral("Auto zoom in/out data"), option);
    chk_standard_[0]->setObjectName(QStringLiteral("chkStandard_0"));
    option_layout->addWidget(chk_standard_[0]);
    option_layout->addStretch();
    tabs_->addTab(option, QStringLiteral("Option"));

    const char* prints[6] = {"Print present date.", "Print page number.",  "Print parameter setup.",
                             "Print track data.",   "Print sampled data.", "Print output data."};
    add_report_tab(tabs_, txt_report_, prints, check1_);

    lay_out_setup_dialog(
        this, tabs_,
        {[this] { cmdClear_Click(); }, [this] { cmdOk_Click(); }, [this] { cmdCancel_Click(); }});
    resize(420, 460);
    reload_parameter();
}

bool dlgKinetic::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::FocusOut) {
        if (watched == cmb_inst_ || watched == cmb_inst_->lineEdit()) cmbInst_LostFocus();
        for (int i = 0; i < 7; ++i)
            if (watched == txt_inst_[static_cast<std::size_t>(i)]) txtInst_LostFocus(i);
    }
    return QDialog::eventFilter(watched, event);
}

void dlgKinetic::reload_parameter() {
    const KineticSetup& s = kinetic_setup;
    cmb_inst_->setEditText(s.kn_wavelength);
    const double values[7] = {double(s.kn_sampling_number),
                              double(s.kn_lag),
                              double(s.kn_rate),
                              double(s.kn_delay),
                              s.kn_low,
                              s.kn_high,
                              s.kn_factor};
    for (std::size_t i = 0; i < 7; ++i)
        txt_inst_[i]->setText(format_text(values[i], rules[i].format));
    const int unit = cmb_unit_->findText(s.kn_unit);
    cmb_unit_->setCurrentIndex(unit < 0 ? 0 : unit);
    chk_standard_[0]->setChecked(s.kn_auto_zoom == 1);
    for (std::size_t k = 0; k < 4; ++k)
        txt_report_[k]->setText(s.kn_report_text[k]);
    for (std::size_t k = 0; k < 6; ++k)
        check1_[k]->setChecked(s.kn_print_flag[k] == 1);
}

void dlgKinetic::cmbInst_LostFocus() {
    // Within the range the text stays as typed, a fraction too.
    const double v = number(cmb_inst_->currentText());
    QString text = cmb_inst_->currentText().trimmed();
    if (v < 330 || text.isEmpty()) text = QStringLiteral("330");
    if (v > 1100) text = QStringLiteral("1100");
    cmb_inst_->setEditText(text);
    if (cmb_inst_->findText(text) < 0) cmb_inst_->addItem(text);
}

void dlgKinetic::txtInst_LostFocus(int index) {
    if (index < 0 || index >= 7) return;
    const field_rule& r = rules[index];
    QLineEdit* t = txt_inst_[static_cast<std::size_t>(index)];
    t->setText(format_text(std::clamp(number(t->text()), r.low, r.high), r.format));
}

bool dlgKinetic::cmdOk_Click() {
    // Boxes still holding a value typed past the range are held to it first, as on leaving them.
    cmbInst_LostFocus();
    for (int i = 0; i < 7; ++i)
        txtInst_LostFocus(i);
    const double low = number(txt_inst_[4]->text());
    const double high = number(txt_inst_[5]->text());
    if (high - low < 0.001) {
        prompts::message_box(QStringLiteral("High vaule - low value must >=0.001!"), box_icon::critical,
                             QStringLiteral("Warning"));
        return false;
    }
    KineticSetup& s = kinetic_setup;
    bool dirty = false;
    const auto take = [&dirty](auto& field, auto value) {
        if (field != value) {
            field = value;
            dirty = true;
        }
    };
    const double nm = number(cmb_inst_->currentText());
    if (val(s.kn_wavelength.toStdString()) != nm) dirty = true;
    s.kn_wavelength = QString::number(nm);
    const auto whole = [this](int i) {
        return static_cast<std::int16_t>(number(txt_inst_[static_cast<std::size_t>(i)]->text()));
    };
    take(s.kn_sampling_number, whole(0));
    take(s.kn_lag, whole(1));
    take(s.kn_rate, whole(2));
    take(s.kn_delay, whole(3));
    take(s.kn_low, low);
    take(s.kn_high, high);
    take(s.kn_factor, number(txt_inst_[6]->text()));
    take(s.kn_unit, cmb_unit_->currentText());
    s.kn_auto_zoom = static_cast<std::int16_t>(chk_standard_[0]->isChecked());
    s.derive();
    for (std::size_t k = 0; k < 6; ++k)
        s.kn_print_flag[k] = static_cast<std::int16_t>(check1_[k]->isChecked());
    for (std::size_t k = 0; k < 4; ++k)
        s.kn_report_text[k] = txt_report_[k]->text();
    kinetic.kn_dirty = dirty;
    // A changed setup empties the window, the output rows too, whether it is open or not.
    if (dirty && shared.function_id != fid_kinetic) clear_kinetic_data();
    accept();
    if (shared.function_id == fid_kinetic) {
        if (dirty && kinetic_window.clear_form) kinetic_window.clear_form();
        if (main_hooks.toolbar_enable_for) main_hooks.toolbar_enable_for(fid_kinetic);
        return true;
    }
    // Opened from another function: the Kinetic window replaces it; its form load starts empty.
    shared.parameters_loaded[static_cast<std::size_t>(fid_kinetic)] = true;
    if (main_hooks.enter_function) main_hooks.enter_function(fid_kinetic);
    return true;
}

void dlgKinetic::cmdCancel_Click() {
    reject();
}

void dlgKinetic::cmdClear_Click() {
    if (kinetic_window.clear_form) kinetic_window.clear_form();
}

} // namespace lumora
