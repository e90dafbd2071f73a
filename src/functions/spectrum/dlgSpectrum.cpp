#include "dlgSpectrum.h"

#include "functions/dialog_parts.h"

#include "platform/numeric_text.h"
#include "platform/prompts.h"
#include "spectrum_setup.h"

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
namespace {

double number(const QString& text) {
    return val(text.toStdString());
}
} // namespace

dlgSpectrum::dlgSpectrum(QWidget* parent) : QDialog(parent) {
    setObjectName(QStringLiteral("dlgSpectrum"));
    setWindowTitle(QStringLiteral("Setup Spectrum"));
    tabs_ = new QTabWidget(this);
    tabs_->setObjectName(QStringLiteral("tsp1"));

    // Instrument
    auto* instrument = new QWidget;
    instrument->setObjectName(QStringLiteral("Frame1_0"));
    auto* form = new QFormLayout(instrument);
    const char* range_labels[2] = {"Start wavelength(nm)=", "Stop wavelength(nm)="};
    const char* range_lists[2] = {"400", "800"};
    for (int i = 0; i < 2; ++i) {
        auto* c = new QComboBox(instrument);
        c->setObjectName(QStringLiteral("cmbInst_%1").arg(i));
        c->setEditable(true);
        // Enter holds the value to its range as leaving does; the raw text never joins the list.
        c->setInsertPolicy(QComboBox::NoInsert);
        connect(c->lineEdit(), &QLineEdit::returnPressed, this, [this, i] { cmbInst_LostFocus(i); });
        c->addItem(QString::fromLatin1(range_lists[i]));
        c->setToolTip(QStringLiteral("Number from 330 to 1100"));
        c->installEventFilter(this);
        c->lineEdit()->installEventFilter(this);
        cmb_inst_[static_cast<std::size_t>(i)] = c;
        form->addRow(buddy_label(QString::fromLatin1(range_labels[i]), c, instrument,
                                 QStringLiteral("lblInst_%1").arg(i)),
                     c);
    }
    cmb_measure_ = new QComboBox(instrument);
    cmb_measure_->setObjectName(QStringLiteral("cmbMeasure"));
    cmb_measure_->addItems({QStringLiteral("ABS"), QStringLiteral("%T")});
    cmb_measure_->setToolTip(QStringLiteral("Select measure mode"));
    connect(cmb_measure_, &QComboBox::activated, this, &dlgSpectrum::cmbMeasure_Click);
    form->addRow(
        buddy_label(QStringLiteral("Measure mode="), cmb_measure_, instrument, QStringLiteral("lblMeasure")),
        cmb_measure_);
    low_ = new QLineEdit(instrument);
    low_->setObjectName(QStringLiteral("txtInst_3"));
    high_ = new QLineEdit(instrument);
    high_->setObjectName(QStringLiteral("txtInst_4"));
    low_->installEventFilter(this);
    high_->installEventFilter(this);
    low_label_ = buddy_label(QString(), low_, instrument, QStringLiteral("lblInst_3"));
    high_label_ = buddy_label(QString(), high_, instrument, QStringLiteral("lblInst_4"));
    form->addRow(low_label_, low_);
    form->addRow(high_label_, high_);
    cmb_speed_ = new QComboBox(instrument);
    cmb_speed_->setObjectName(QStringLiteral("cmbSpeed"));
    cmb_speed_->addItems({speed_name(0), speed_name(1), speed_name(2)});
    cmb_speed_->setToolTip(QStringLiteral("Select measure mode"));
    form->addRow(
        buddy_label(QStringLiteral("Scan speed="), cmb_speed_, instrument, QStringLiteral("lblSpeed")),
        cmb_speed_);
    tabs_->addTab(instrument, QStringLiteral("Instrument"));

    // Option
    auto* option = new QWidget;
    option->setObjectName(QStringLiteral("Frame1_1"));
    auto* option_layout = new QVBoxLayout(option);
    const char* options[4] = {"Auto zoom in/out data", "Auto search peak point", "Auto search valley point",
                              "Overlay screen"};
    for (int i = 0; i < 4; ++i) {
        auto* c = new QCheckBox(QString::fromLatin1(options[i]), option);
        c->setObjectName(QStringLiteral("chkStandard_%1").arg(i));
        chk_standard_[static_cast<std::size_t>(i)] = c;
        option_layout->addWidget(c);
    }
    option_layout->addStretch();
    tabs_->addTab(option, QStringLiteral("Option"));

    const char* prints[7] = {"Print present date.", "Print page number.", "Print parameter setup.",
                             "Print track data.",   "Print peak data.",   "Print valley data.",
                             "Print read data."};
    add_report_tab(tabs_, txt_report_, prints, check1_, true);

    lay_out_setup_dialog(
        this, tabs_,
        {[this] { cmdClear_Click(); }, [this] { cmdOk_Click(); }, [this] { cmdCancel_Click(); }});
    resize(420, 420);
    reload_parameter();
}

bool dlgSpectrum::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::FocusOut) {
        for (int i = 0; i < 2; ++i)
            if (watched == cmb_inst_[static_cast<std::size_t>(i)] ||
                watched == cmb_inst_[static_cast<std::size_t>(i)]->lineEdit())
                cmbInst_LostFocus(i);
        if (watched == low_) txtInst_LostFocus(3);
        if (watched == high_) txtInst_LostFocus(4);
    }
    return QDialog::eventFilter(watched, event);
}

void dlgSpectrum::set_unit_texts(bool percent_t) {
    low_label_->setText(percent_t ? QStringLiteral("Low value(%T)=") : QStringLiteral("Low value(ABS)="));
    high_label_->setText(percent_t ? QStringLiteral("High value(%T)=") : QStringLiteral("High value(ABS)="));
    const QString tip = percent_t ? QStringLiteral("Number from 0.00 to 120.00")
                                  : QStringLiteral("Number from -0.300 to 3.000");
    low_->setToolTip(tip);
    high_->setToolTip(tip);
}

void dlgSpectrum::reload_parameter() {
    const SpectrumSetup& s = spectrum_setup;
    cmb_inst_[0]->setEditText(format_text(s.start_lambda, "0"));
    cmb_inst_[1]->setEditText(format_text(s.stop_lambda, "0"));
    cmb_measure_->setCurrentIndex(s.percent_t() ? 1 : 0);
    set_unit_texts(s.percent_t());
    const char* pattern = s.percent_t() ? "0.00" : "0.000";
    low_->setText(format_text(s.low_value, pattern));
    high_->setText(format_text(s.high_value, pattern));
    cmb_speed_->setCurrentIndex(s.scan_speed >= 0 && s.scan_speed <= 2 ? s.scan_speed : 1);
    chk_standard_[0]->setChecked(s.auto_zoom == 1);
    chk_standard_[1]->setChecked(s.auto_peak == 1);
    chk_standard_[2]->setChecked(s.auto_valley == 1);
    chk_standard_[3]->setChecked(s.overlay_screen == 1);
    txt_report_[0]->setText(s.report_laboratory);
    txt_report_[1]->setText(s.report_subject);
    txt_report_[2]->setText(s.report_operator);
    txt_report_[3]->setText(s.report_remark);
    for (std::size_t i = 0; i < 7; ++i)
        check1_[i]->setChecked(s.print_flags[i] == 1);
}

void dlgSpectrum::cmbInst_LostFocus(int index) {
    QComboBox* c = cmb_inst_[static_cast<std::size_t>(index)];
    double v = number(c->currentText());
    if (index == 0) {
        const double stop = number(cmb_inst_[1]->currentText());
        if (v < 330) v = 330;
        if (v > stop - 2) v = stop - 2;
    } else {
        const double start = number(cmb_inst_[0]->currentText());
        if (v < start + 2) v = start + 2;
        if (v >= 1100) v = 1100;
    }
    const QString text = format_text(v, "0");
    c->setEditText(text);
    if (c->findText(text) < 0) c->addItem(text);
}

void dlgSpectrum::txtInst_LostFocus(int index) {
    QLineEdit* t = txtInst(index);
    double v = number(t->text());
    if (cmb_measure_->currentIndex() == 1) {
        if (v < 0) v = 0;
        if (v >= 120) v = 120;
        t->setText(format_text(v, "0.00"));
    } else {
        if (v <= -0.3) v = -0.3;
        if (v >= 3.0) v = 3.0;
        t->setText(format_text(v, "0.000"));
    }
}

void dlgSpectrum::cmbMeasure_Click() {
    const bool percent_t = cmb_measure_->currentIndex() == 1;
    set_unit_texts(percent_t);
    low_->setText(percent_t ? QStringLiteral("0.00") : QStringLiteral("0.000"));
    high_->setText(percent_t ? QStringLiteral("100.00") : QStringLiteral("3.000"));
}

void dlgSpectrum::cmdOk_Click() {
    SpectrumSetup& s = spectrum_setup;
    const bool percent_t = cmb_measure_->currentIndex() == 1;
    const double low = number(low_->text());
    const double high = number(high_->text());
    if (percent_t && high - low < 0.01) {
        prompts::message_box(QStringLiteral("High vaule - low value must >=0.01!"), box_icon::critical,
                             QStringLiteral("Warning"));
        return;
    }
    if (!percent_t && high - low < 0.001) {
        prompts::message_box(QStringLiteral("High vaule - low value must >=0.001!"), box_icon::critical,
                             QStringLiteral("Warning"));
        return;
    }
    bool changed = false;
    const auto take = [&changed](auto& field, auto value) {
        if (field != value) {
            field = value;
            changed = true;
        }
    };
    take(s.start_lambda, number(cmb_inst_[0]->currentText()));
    take(s.stop_lambda, number(cmb_inst_[1]->currentText()));
    take(s.spectrum_mode, static_cast<std::int16_t>(percent_t ? 1 : 0));
    take(s.low_value, low);
    take(s.high_value, high);
    take(s.scan_speed, static_cast<std::int16_t>(cmb_speed_->currentIndex()));
    take(s.overlay_screen, static_cast<std::int16_t>(chk_standard_[3]->isChecked() ? 1 : 0));
    // Options, print flags and report texts never count as a change.
    s.auto_zoom = chk_standard_[0]->isChecked() ? 1 : 0;
    s.auto_peak = chk_standard_[1]->isChecked() ? 1 : 0;
    s.auto_valley = chk_standard_[2]->isChecked() ? 1 : 0;
    for (std::size_t i = 0; i < 7; ++i)
        s.print_flags[i] = check1_[i]->isChecked() ? 1 : 0;
    s.report_laboratory = txt_report_[0]->text();
    s.report_subject = txt_report_[1]->text();
    s.report_operator = txt_report_[2]->text();
    s.report_remark = txt_report_[3]->text();
    if (changed) emit setup_changed();
    emit accepted_setup();
    accept();
}

void dlgSpectrum::cmdCancel_Click() {
    reject();
}

void dlgSpectrum::cmdClear_Click() {
    emit clear_requested();
}

} // namespace lumora
