#include "frmLambda.h"

#include "lambda_panel_rules.h"
#include "link/command_ring.h"
#include "link/link_context.h"
#include "link/photometric.h"
#include "link/protocol.h"
#include "link/shared_state.h"
#include "platform/numeric_text.h"

#include <QComboBox>
#include <QEvent>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>

namespace lumora {

frmLambda::frmLambda(QWidget* parent) : QDialog(parent) {
    setObjectName(QStringLiteral("frmLambda"));
    setWindowTitle(QStringLiteral("Lambda"));
    setModal(true);

    cmb_inst_ = new QComboBox(this);
    cmb_inst_->setObjectName(QStringLiteral("cmbInst"));
    cmb_inst_->setEditable(true);
    // Enter must not put the raw text in the list: only the held value goes there (on leaving).
    cmb_inst_->setInsertPolicy(QComboBox::NoInsert);
    cmb_inst_->addItems({QStringLiteral("500"), QStringLiteral("400")});
    cmb_inst_->setToolTip(QStringLiteral("Number from 330 to 1100"));
    cmb_measure_ = new QComboBox(this);
    cmb_measure_->setObjectName(QStringLiteral("cmbMeasure"));
    cmb_measure_->addItems({QStringLiteral("ABS"), QStringLiteral("%T"), QStringLiteral("Factor*ABS")});
    txt_inst_ = new QLineEdit(QStringLiteral("1.000"), this);
    txt_inst_->setObjectName(QStringLiteral("txtInst"));
    txt_inst_->setToolTip(QStringLiteral("Number from 0 to 10000"));

    auto* form = new QFormLayout;
    const auto add_row = [&](const char* caption, QWidget* field, const char* name) {
        auto* label = new QLabel(QString::fromLatin1(caption), this);
        label->setObjectName(QString::fromLatin1(name));
        label->setBuddy(field);
        form->addRow(label, field);
    };
    add_row("Wavelength(nm)=", cmb_inst_, "lblInst");
    add_row("Measure mode=", cmb_measure_, "lblMeasure");
    add_row("Factor=", txt_inst_, "lblFactor");

    static const char* const captions[4] = {"Goto lambda", "Zero", "Toggle digits", "Exit"};
    auto* row = new QHBoxLayout;
    for (int i = 0; i < 4; ++i) {
        buttons_[i] = new QPushButton(QString::fromLatin1(captions[i]), this);
        buttons_[i]->setObjectName(QStringLiteral("cmdLambda_%1").arg(i));
        buttons_[i]->setAutoDefault(false);
        row->addWidget(buttons_[i]);
        connect(buttons_[i], &QPushButton::clicked, this, [this, i] { cmdLambda_Click(i); });
    }
    buttons_[0]->setDefault(true);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(form);
    layout->addLayout(row);

    cmb_inst_->installEventFilter(this);
    txt_inst_->installEventFilter(this);
    connect(cmb_inst_->lineEdit(), &QLineEdit::returnPressed, this, &frmLambda::cmbInst_LostFocus);
    // Every change of the text, typed or rewritten on leaving, sets the factor in force.
    connect(txt_inst_, &QLineEdit::textChanged, this, &frmLambda::txtInst_Change);
    connect(cmb_measure_, &QComboBox::activated, this, &frmLambda::cmbMeasure_Click);

    // Form load
    set_factor_enabled(false);
    cmb_inst_->setEditText(QString::fromStdString(format_number(shared.lambda_now, "0")));
    cmb_measure_->setCurrentIndex(shared.lambda_show_mode <= 2 ? shared.lambda_show_mode : 0);
    cmbMeasure_Click();
}

bool frmLambda::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::FocusOut) {
        if (watched == cmb_inst_) cmbInst_LostFocus();
        if (watched == txt_inst_) txtInst_LostFocus();
    } else if (event->type() == QEvent::FocusIn && watched == txt_inst_) {
        QTimer::singleShot(0, txt_inst_, &QLineEdit::selectAll);
    }
    return QDialog::eventFilter(watched, event);
}

void frmLambda::cmbInst_LostFocus() {
    const QString text = QString::number(clamp_goto_wavelength(cmb_inst_->currentText().toStdString()));
    cmb_inst_->setEditText(text);
    // The list keeps the wavelengths used.
    if (cmb_inst_->findText(text) < 0) cmb_inst_->addItem(text);
}

void frmLambda::txtInst_Change() {
    shared.conc_factor =
        static_cast<float>(val(format_number(val(txt_inst_->text().toStdString()), "0.000")));
}

void frmLambda::txtInst_LostFocus() {
    txt_inst_->setText(QString::fromStdString(clamp_factor_text(txt_inst_->text().toStdString())));
}

void frmLambda::set_factor_enabled(bool enabled) {
    txt_inst_->setEnabled(enabled);
    QPalette pal = txt_inst_->palette();
    if (enabled)
        pal = QPalette();
    else
        pal.setColor(QPalette::Base, QColor(0xC0, 0xC0, 0xC0)); // grey, 12632256
    txt_inst_->setPalette(pal);
}

void frmLambda::cmbMeasure_Click() {
    const int index = cmb_measure_->currentIndex();
    shared.lambda_show_mode = static_cast<std::uint16_t>(index < 0 ? 0 : index);
    set_factor_enabled(index == 2);
}

void frmLambda::cmdLambda_Click(int index) {
    try {
        switch (index) {
        case 0: {
            cmbInst_LostFocus();
            txtInst_LostFocus();
            shared.conc_factor = static_cast<float>(val(txt_inst_->text().toStdString()));
            const double target = val(cmb_inst_->currentText().toStdString());
            shared.lambda_prev = shared.lambda_now;
            shared.lambda_now = target;
            shared.lambda_now_int = static_cast<std::int16_t>(cint(target));
            begin_exchange();
            shared.measure_mode = mm_lambda_panel;
            send_message(cmd_goto_lambda);
            set_panel(6, QStringLiteral("Preparing..."));
            break;
        }
        case 1:
            shared.zero_pending = true;
            begin_exchange();
            shared.measure_mode = mm_lambda_panel;
            send_message(cmd_zero_here);
            set_panel(6, QStringLiteral("Preparing..."));
            break;
        case 2:
            shared.lambda_four_digits = !shared.lambda_four_digits;
            break;
        case 3:
            close();
            break;
        default:
            break;
        }
    } catch (const run_fault&) {
    }
}

} // namespace lumora
