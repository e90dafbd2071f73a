#include "dlgTimescan.h"

#include "functions/dialog_parts.h"

#include "functions/function_window.h"
#include "functions/timescan_interval/timescan_interval_data.h"
#include "link/shared_state.h"
#include "platform/numeric_text.h"
#include "platform/prompts.h"
#include "timescan_data.h"
#include "timescan_plot.h"
#include "timescan_setup.h"

#include <QCheckBox>
#include <QComboBox>
#include <QEvent>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTabWidget>
#include <QVBoxLayout>

namespace lumora {

timescan_window_hooks timescan_windows;

namespace {

double number(const QString& text) {
    return val(text.toStdString());
}

struct field_rule {
    const char* label;
    const char* tip;
    double low, high;
    const char* format;
};
// txtInst(0), (1), (4), (5); the low and high values go by the measure mode.
constexpr field_rule span_rule{"Span time(sec)=", "Number from 15 to 9999", 15, 9999, "0"};
constexpr field_rule delay_rule{"Delay time(sec)=", "Number from 0 to 50", 0, 50, "0"};
constexpr field_rule stop_rule{"Stop time(sec)=", "Number from 1 to 999999", 1, 999999, "0"};
constexpr field_rule interval_rule{"Sampling Interval (sec)=", "Number from 0.1 to 9999", 0.1, 9999, "0.0"};

QLineEdit* field(const field_rule& r, int index, QWidget* parent, QFormLayout* form) {
    auto* t = new QLineEdit(parent);
    t->setObjectName(QStringLiteral("txtInst_%1").arg(index));
    t->setToolTip(QString::fromLatin1(r.tip));
    form->addRow(
        buddy_label(QString::fromLatin1(r.label), t, parent, QStringLiteral("lblInst_%1").arg(index)), t);
    return t;
}

} // namespace

dlgTimescan::dlgTimescan(QWidget* parent) : QDialog(parent) {
    setObjectName(QStringLiteral("dlgTimescan"));
    setWindowTitle(QStringLiteral("Setup Timescan-Fixed span"));
    tabs_ = new QTabWidget(this);
    tabs_->setObjectName(QStringLiteral("tsp1"));

    // Instrument
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
    connect(cmb_inst_->lineEdit(), &QLineEdit::returnPressed, this, &dlgTimescan::cmbInst_LostFocus);
    form->addRow(
        buddy_label(QStringLiteral("Wavelength(nm)="), cmb_inst_, instrument, QStringLiteral("lblInst_0")),
        cmb_inst_);
    cmb_measure_ = new QComboBox(instrument);
    cmb_measure_->setObjectName(QStringLiteral("cmbMeasure"));
    cmb_measure_->addItems({QStringLiteral("ABS"), QStringLiteral("%T")});
    connect(cmb_measure_, &QComboBox::activated, this, &dlgTimescan::cmbMeasure_Click);
    form->addRow(
        buddy_label(QStringLiteral("Measure mode="), cmb_measure_, instrument, QStringLiteral("lblMeasure")),
        cmb_measure_);
    frame3_ = new QWidget(instrument);
    frame3_->setObjectName(QStringLiteral("Frame3"));
    auto* form3 = new QFormLayout(frame3_);
    form3->setContentsMargins(0, 0, 0, 0);
    txt_inst_[0] = field(span_rule, 0, frame3_, form3);
    layout_inst->addWidget(frame3_);
    auto* form_rest = new QFormLayout;
    layout_inst->addLayout(form_rest);
    txt_inst_[1] = field(delay_rule, 1, instrument, form_rest);
    for (int i = 2; i <= 3; ++i) {
        auto* t = new QLineEdit(instrument);
        t->setObjectName(QStringLiteral("txtInst_%1").arg(i));
        txt_inst_[static_cast<std::size_t>(i)] = t;
    }
    low_label_ = buddy_label(QString(), txt_inst_[2], instrument, QStringLiteral("lblInst_4"));
    high_label_ = buddy_label(QString(), txt_inst_[3], instrument, QStringLiteral("lblInst_5"));
    form_rest->addRow(low_label_, txt_inst_[2]);
    form_rest->addRow(high_label_, txt_inst_[3]);
    frame2_ = new QWidget(instrument);
    frame2_->setObjectName(QStringLiteral("Frame2"));
    auto* form2 = new QFormLayout(frame2_);
    form2->setContentsMargins(0, 0, 0, 0);
    txt_inst_[4] = field(stop_rule, 4, frame2_, form2);
    txt_inst_[5] = field(interval_rule, 5, frame2_, form2);
    layout_inst->addWidget(frame2_);
    check2_ = new QCheckBox(QStringLiteral("Fixed interval"), instrument);
    check2_->setObjectName(QStringLiteral("Check2"));
    connect(check2_, &QCheckBox::clicked, this, &dlgTimescan::Check2_Click);
    layout_inst->addWidget(check2_);
    layout_inst->addStretch();
    for (QLineEdit* t : txt_inst_)
        t->installEventFilter(this);
    tabs_->addTab(instrument, QStringLiteral("Instrument"));

    // Option
    auto* option = new QWidget;
    option->setObjectName(QStringLiteral("Frame1_1"));
    auto* option_layout = new QVBoxLayout(option);
    const char* options[2] = {"Auto zoom in/out data", "Overlay screen"};
    for (int i = 0; i < 2; ++i) {
        auto* c = new QCheckBox(QString::fromLatin1(options[i]), option);
        c->setObjectName(QStringLiteral("chkStandard_%1").arg(i));
        chk_standard_[static_cast<std::size_t>(i)] = c;
        option_layout->addWidget(c);
    }
    option_layout->addStretch();
    tabs_->addTab(option, QStringLiteral("Option"));

    const char* prints[6] = {"Print present date.",    "Print page number.", "Print parameter setup.",
                             "Print track/read data.", "Print peak data.",   "Print valley data."};
    add_report_tab(tabs_, txt_report_, prints, check1_);

    lay_out_setup_dialog(
        this, tabs_,
        {[this] { cmdClear_Click(); }, [this] { cmdOk_Click(); }, [this] { cmdCancel_Click(); }});
    resize(420, 440);
    reload_parameter();
}

bool dlgTimescan::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::FocusOut) {
        if (watched == cmb_inst_ || watched == cmb_inst_->lineEdit()) cmbInst_LostFocus();
        for (int i = 0; i < 6; ++i)
            if (watched == txt_inst_[static_cast<std::size_t>(i)]) txtInst_LostFocus(i);
    }
    return QDialog::eventFilter(watched, event);
}

void dlgTimescan::set_unit_texts(bool percent_t) {
    low_label_->setText(percent_t ? QStringLiteral("Low value(%T)=") : QStringLiteral("Low value(ABS)="));
    high_label_->setText(percent_t ? QStringLiteral("High value(%T)=") : QStringLiteral("High value(ABS)="));
    const QString tip = percent_t ? QStringLiteral("Number from 0.00 to 120.00")
                                  : QStringLiteral("Number from -0.300 to 3.000");
    txt_inst_[2]->setToolTip(tip);
    txt_inst_[3]->setToolTip(tip);
}

void dlgTimescan::reload_parameter() {
    const TimescanSetup& s = timescan_setup;
    const TimescanIntervalSetup& i = timescan_interval_setup;
    const bool span_form = shared.function_id != fid_timescan2;
    const bool pt = span_form ? s.percent_t() : i.percent_t();
    cmb_inst_->setEditText(span_form ? s.ts_wavelength : i.ti_wavelength);
    cmb_measure_->setCurrentIndex(pt ? 1 : 0);
    set_unit_texts(pt);
    txt_inst_[0]->setText(format_text(s.ts_span, "0"));
    txt_inst_[1]->setText(format_text(span_form ? s.ts_delay : i.ti_delay, "0"));
    const char* pattern = pt ? "0.00" : "0.000";
    txt_inst_[2]->setText(format_text(span_form ? s.ts_low : i.ti_low, pattern));
    txt_inst_[3]->setText(format_text(span_form ? s.ts_high : i.ti_high, pattern));
    txt_inst_[4]->setText(format_text(i.ti_stop_time, "0"));
    txt_inst_[5]->setText(format_text(i.ti_interval, "0.0"));
    chk_standard_[0]->setChecked((span_form ? s.ts_auto_zoom : i.ti_auto_zoom) == 1);
    chk_standard_[1]->setChecked((span_form ? s.ts_overlay : i.ti_overlay) == 1);
    for (std::size_t k = 0; k < 4; ++k)
        txt_report_[k]->setText(span_form ? s.ts_report_text[k] : i.ti_report_text[k]);
    for (std::size_t k = 0; k < 6; ++k)
        check1_[k]->setChecked((span_form ? s.ts_print_flag[k] : i.ti_print_flag[k]) == 1);
    check2_->setChecked(!span_form);
    Check2_Click();
}

void dlgTimescan::cmbInst_LostFocus() {
    // Within the range the text stays as typed, a fraction too.
    const double v = number(cmb_inst_->currentText());
    QString text = cmb_inst_->currentText().trimmed();
    if (v < 330 || text.isEmpty()) text = QStringLiteral("330");
    if (v > 1100) text = QStringLiteral("1100");
    cmb_inst_->setEditText(text);
    if (cmb_inst_->findText(text) < 0) cmb_inst_->addItem(text);
}

void dlgTimescan::txtInst_LostFocus(int index) {
    QLineEdit* t = txt_inst_[static_cast<std::size_t>(index)];
    double v = number(t->text());
    const field_rule* rule = nullptr;
    switch (index) {
    case 0:
        rule = &span_rule;
        break;
    case 1:
        rule = &delay_rule;
        break;
    case 4:
        rule = &stop_rule;
        break;
    case 5:
        rule = &interval_rule;
        break;
    default:
        break;
    }
    if (rule) {
        v = std::clamp(v, rule->low, rule->high);
        t->setText(format_text(v, rule->format));
        return;
    }
    if (cmb_measure_->currentIndex() == 1) {
        v = std::clamp(v, 0.0, 120.0);
        t->setText(format_text(v, "0.00"));
    } else {
        v = std::clamp(v, -0.3, 3.0);
        t->setText(format_text(v, "0.000"));
    }
}

void dlgTimescan::cmbMeasure_Click() {
    const bool percent_t = cmb_measure_->currentIndex() == 1;
    set_unit_texts(percent_t);
    txt_inst_[2]->setText(percent_t ? QStringLiteral("0.00") : QStringLiteral("0.000"));
    txt_inst_[3]->setText(percent_t ? QStringLiteral("100.00") : QStringLiteral("3.000"));
}

void dlgTimescan::Check2_Click() {
    const bool interval = check2_->isChecked();
    frame2_->setVisible(interval);
    frame3_->setVisible(!interval);
    for (std::size_t k = 4; k <= 5; ++k) {
        QCheckBox* c = check1_[k];
        if (interval) {
            c->setTristate(true);
            c->setCheckState(Qt::PartiallyChecked);
        } else {
            c->setCheckState(timescan_setup.ts_print_flag[k] == 1 ? Qt::Checked : Qt::Unchecked);
            c->setTristate(false);
        }
        c->setEnabled(!interval);
    }
}

void dlgTimescan::cmdOk_Click() {
    const bool percent_t = cmb_measure_->currentIndex() == 1;
    const double low = number(txt_inst_[2]->text());
    const double high = number(txt_inst_[3]->text());
    const QString problem = range_problem(low, high, percent_t);
    if (!problem.isEmpty()) {
        prompts::message_box(problem, box_icon::critical, QStringLiteral("Warning"));
        return;
    }
    const double nm = number(cmb_inst_->currentText());
    const auto mode = static_cast<std::int16_t>(percent_t ? 1 : 0);
    const auto checked = [](QCheckBox* c) {
        return static_cast<std::int16_t>(c->checkState() == Qt::Checked);
    };
    bool dirty = false;
    const auto take = [&dirty](auto& field, auto value) {
        if (field != value) {
            field = value;
            dirty = true;
        }
    };
    const auto take_wavelength = [&dirty, nm](QString& field) {
        if (val(field.toStdString()) != nm) dirty = true;
        field = QString::number(nm);
    };
    const bool interval = check2_->isChecked();
    if (!interval) {
        TimescanSetup& s = timescan_setup;
        take_wavelength(s.ts_wavelength);
        take(s.ts_span, number(txt_inst_[0]->text()));
        take(s.ts_delay, number(txt_inst_[1]->text()));
        take(s.ts_mode, mode);
        take(s.ts_low, low);
        take(s.ts_high, high);
        take(s.ts_overlay, checked(chk_standard_[1]));
        // Options, print flags and report texts never count as a change.
        s.ts_auto_zoom = checked(chk_standard_[0]);
        for (std::size_t k = 0; k < 6; ++k)
            s.ts_print_flag[k] = checked(check1_[k]);
        for (std::size_t k = 0; k < 4; ++k)
            s.ts_report_text[k] = txt_report_[k]->text();
    } else {
        TimescanIntervalSetup& i = timescan_interval_setup;
        take_wavelength(i.ti_wavelength);
        take(i.ti_interval, number(txt_inst_[5]->text()));
        take(i.ti_delay, number(txt_inst_[1]->text()));
        take(i.ti_mode, mode);
        take(i.ti_low, low);
        take(i.ti_high, high);
        take(i.ti_stop_time, number(txt_inst_[4]->text()));
        // The Option tab only shows this form's auto zoom and overlay: OK leaves them.
        for (std::size_t k = 0; k < 4; ++k)
            i.ti_print_flag[k] = checked(check1_[k]);
        for (std::size_t k = 0; k < 4; ++k)
            i.ti_report_text[k] = txt_report_[k]->text();
    }
    if (interval)
        timescan_interval.ti_dirty = dirty;
    else
        timescan.ts_dirty = dirty;
    const int id = interval ? fid_timescan2 : fid_timescan;
    accept();
    if (shared.function_id == id) {
        if (dirty) {
            const auto& clear =
                interval ? timescan_windows.interval_clear_form : timescan_windows.span_clear_form;
            if (clear) clear();
        }
        if (main_hooks.toolbar_enable_for) main_hooks.toolbar_enable_for(id);
        return;
    }
    // The other form: its window replaces this one, which goes with this dialog. Nothing of
    // this dialog is touched after the switch.
    shared.parameters_loaded[static_cast<std::size_t>(id)] = true;
    if (main_hooks.enter_function) main_hooks.enter_function(id);
}

void dlgTimescan::cmdCancel_Click() {
    reject();
}

void dlgTimescan::cmdClear_Click() {
    const auto& clear = shared.function_id == fid_timescan2 ? timescan_windows.interval_clear_form
                                                            : timescan_windows.span_clear_form;
    if (clear) clear();
}

} // namespace lumora
