#include "spectrum_tools.h"

#include "platform/numeric_text.h"
#include "platform/prompts.h"
#include "processing/scan_arithmetic.h"
#include "spectrum_data.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFormLayout>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace lumora {
namespace {

QPushButton* key_button(const QString& text, const QString& key, QWidget* parent) {
    auto* b = new QPushButton(text, parent);
    b->setObjectName(QStringLiteral("tb_") + QString(key).replace(' ', '_'));
    b->setProperty("key", key);
    b->setAutoDefault(false);
    return b;
}

} // namespace

frmPopup::frmPopup(std::function<void(int)> smooth, QWidget* parent)
    : QDialog(parent), smooth_(std::move(smooth)) {
    setObjectName(QStringLiteral("frmPopup"));
    setWindowTitle(QStringLiteral("Smooth"));
    auto* layout = new QHBoxLayout(this);
    for (const char* key : {"Smooth low", "Smooth high", "Exit"}) {
        QPushButton* b = key_button(QString::fromLatin1(key), QString::fromLatin1(key), this);
        connect(b, &QPushButton::clicked, this,
                [this, b] { tbPopup_ButtonClick(b->property("key").toString()); });
        layout->addWidget(b);
    }
}

void frmPopup::tbPopup_ButtonClick(const QString& key) {
    const QString k = key.toLower();
    if (k == QLatin1String("smooth low")) smooth_(9);
    if (k == QLatin1String("smooth high")) smooth_(17);
    close();
}

frmDerv::frmDerv(std::function<void(int)> derive, QWidget* parent)
    : QDialog(parent), derive_(std::move(derive)) {
    setObjectName(QStringLiteral("frmDerv"));
    setWindowTitle(QStringLiteral("Derivative"));
    auto* layout = new QHBoxLayout(this);
    const std::pair<const char*, const char*> buttons[] = {{"1st derivative", "17 point 1st"},
                                                           {"2nd derivative", "17 point 2nd"},
                                                           {"3rd derivative", "17 point 3rd"},
                                                           {"4th derivative", "17 point 4th"},
                                                           {"Exit", "Exit"}};
    for (const auto& [text, key] : buttons) {
        QPushButton* b = key_button(QString::fromLatin1(text), QString::fromLatin1(key), this);
        connect(b, &QPushButton::clicked, this,
                [this, b] { tbDerv_ButtonClick(b->property("key").toString()); });
        layout->addWidget(b);
    }
}

void frmDerv::tbDerv_ButtonClick(const QString& key) {
    static const char* const keys[4] = {"17 point 1st", "17 point 2nd", "17 point 3rd", "17 point 4th"};
    for (int order = 1; order <= 4; ++order)
        if (key == QLatin1String(keys[order - 1])) derive_(order);
    close();
}

frmAdvance::frmAdvance(std::function<void()> done, QWidget* parent)
    : QDialog(parent), done_(std::move(done)) {
    setObjectName(QStringLiteral("frmAdvance"));
    setWindowTitle(QStringLiteral("+-* scan"));
    auto* formula = new QHBoxLayout;
    for (int i = 0; i < 3; ++i) {
        auto* t = new QLineEdit(QStringLiteral("1.000"), this);
        t->setObjectName(QStringLiteral("txtScan_%1").arg(i));
        t->setToolTip(QStringLiteral("Number from 0 to 9999"));
        t->setMaximumWidth(70);
        txt_[static_cast<std::size_t>(i)] = t;
    }
    for (int i = 0; i < 2; ++i) {
        auto* c = new QComboBox(this);
        c->setObjectName(QStringLiteral("cmbScan_%1").arg(i));
        c->setToolTip(QStringLiteral("Select a number"));
        for (int n = 1; n <= spectrum.curve_count; ++n)
            c->addItem(QString::number(n));
        scan_[static_cast<std::size_t>(i)] = c;
        auto* o = new QComboBox(this);
        o->setObjectName(QStringLiteral("cmbOperator_%1").arg(i));
        o->setToolTip(QStringLiteral("Select a symbol"));
        o->addItems({QStringLiteral("+"), QStringLiteral("-"), QStringLiteral("*")});
        op_[static_cast<std::size_t>(i)] = o;
    }
    const auto label = [this](const QString& text, QWidget* buddy) {
        auto* l = new QLabel(text, this);
        l->setBuddy(buddy);
        return l;
    };
    formula->addWidget(label(QStringLiteral("("), txt_[0]));
    formula->addWidget(txt_[0]);
    formula->addWidget(label(QStringLiteral("* scan"), scan_[0]));
    formula->addWidget(scan_[0]);
    formula->addWidget(new QLabel(QStringLiteral(")"), this));
    formula->addWidget(op_[0]);
    formula->addWidget(label(QStringLiteral("("), txt_[1]));
    formula->addWidget(txt_[1]);
    formula->addWidget(label(QStringLiteral("* scan"), scan_[1]));
    formula->addWidget(scan_[1]);
    formula->addWidget(new QLabel(QStringLiteral(")"), this));
    formula->addWidget(op_[1]);
    formula->addWidget(txt_[2]);

    auto* available = new QGroupBox(QStringLiteral("Available  scan"), this);
    auto* checks = new QGridLayout(available);
    for (int i = 0; i < 20; ++i) {
        auto* c = new QCheckBox(QString::number(i + 1), available);
        c->setObjectName(QStringLiteral("chkActive_%1").arg(i));
        c->setEnabled(false);
        const int state = spectrum.curve_state[static_cast<std::size_t>(i + 1)];
        c->setChecked(i < spectrum.curve_count && (state == 1 || state == 2));
        c->setVisible(i < spectrum.curve_count);
        checks->addWidget(c, i / 10, i % 10);
        chk_[static_cast<std::size_t>(i)] = c;
    }
    auto* ok = new QPushButton(QStringLiteral("OK"), this);
    ok->setObjectName(QStringLiteral("cmdOK"));
    auto* cancel = new QPushButton(QStringLiteral("Cancel"), this);
    cancel->setObjectName(QStringLiteral("Command1"));
    connect(ok, &QPushButton::clicked, this, &frmAdvance::cmdOK_Click);
    connect(cancel, &QPushButton::clicked, this, &QDialog::close);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(ok);
    buttons->addWidget(cancel);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(formula);
    layout->addWidget(available);
    layout->addLayout(buttons);
}

void frmAdvance::cmdOK_Click() {
    const auto number = [this](int i) {
        // Read through "0.000": at most three decimals take part.
        return val(format_number(val(txt_[static_cast<std::size_t>(i)]->text().toStdString()), "0.000"));
    };
    processing::scan_formula f;
    f.a = number(0);
    f.b = number(1);
    f.c = number(2);
    // Each scan number starts at 1; with no curves to list, the boxes keep that default.
    const auto scan_number = [this](int i) {
        const QString text = scan_[static_cast<std::size_t>(i)]->currentText();
        return text.isEmpty() ? 1 : static_cast<int>(val(text.toStdString()));
    };
    f.p = scan_number(0);
    f.q = scan_number(1);
    f.op1 = processing::scan_operator_from_text(op_[0]->currentText().toStdString());
    f.op2 = processing::scan_operator_from_text(op_[1]->currentText().toStdString());
    const auto result = processing::scan_arithmetic(shared.baseline_curves, spectrum.curve_count,
                                                    spectrum.scan_first_nm, spectrum.scan_last_nm, f);
    using status = processing::scan_arithmetic_status;
    if (result.status == status::curves_full) {
        prompts::message_box(QStringLiteral("20 curves are in the window: there is no room for another one."),
                             box_icon::critical, QStringLiteral("Warning"));
        return;
    }
    // The lists offer only curve columns, and init has set the scan range: anything else is a
    // range fault, which ends the routine here.
    if (result.status != status::done) return;
    spectrum.active_curve = spectrum.curve_count;
    ++spectrum.curve_count;
    spectrum.curve_state[static_cast<std::size_t>(spectrum.curve_count)] = 2;
    QCheckBox* added = chk_[static_cast<std::size_t>(spectrum.curve_count - 1)];
    added->setChecked(true);
    added->setEnabled(true);
    added->setVisible(true);
    save_org_data(spectrum.curve_count);
    if (done_) done_();
    close();
}

} // namespace lumora
