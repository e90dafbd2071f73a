#include "dlgPhotometry.h"

#include "functions/dialog_parts.h"

#include "photometry_setup.h"
#include "platform/numeric_text.h"

#include <QCheckBox>
#include <QComboBox>
#include <QEvent>
#include <QFormLayout>
#include <QFrame>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalBlocker>
#include <QTabWidget>
#include <QTimer>
#include <QVBoxLayout>

namespace lumora {
namespace {

// The tab in hand when the dialog last closed.
int remembered_tab = 0;

const char* const unit_list[] = {"None", "G/dL", "U/L",   "G/L",   "ug/dL",  "ABS",    "mg/dL", "OD",
                                 "mABS", "U/mL", "ug/mL", "mEq/L", "mmol/L", "umol/L", "ng/mL"};

// How each txtInst box is held and written on leaving.
struct box_rule {
    double low, high;
    const char* pattern;
    const char* tip;
};
constexpr box_rule inst_rules[6] = {
    {1, 10, "0", "Number from 1 to 10"},           {1, 99, "0", "Number from 1 to 99"},
    {0, 10000, "0.000", "Number from 0 to 10000"}, {0, 9999, "0", "Number from 0 to 9999"},
    {0, 10000, "0.000", "Number from 0 to 10000"}, {0, 10000, "0.000", "Number from 0 to 10000"}};
constexpr box_rule lambda_rule{330, 1100, "0", "Number from 330 to 1100"};

double number(const QString& text) {
    return val(text.toStdString());
}

QString held_text(const QString& text, const box_rule& rule) {
    double v = number(text);
    if (v < rule.low) v = rule.low;
    if (v > rule.high) v = rule.high;
    return format_text(v, rule.pattern);
}

QLineEdit* number_box(QWidget* parent, const QString& name, const char* tip) {
    auto* t = new QLineEdit(parent);
    t->setObjectName(name);
    t->setToolTip(QString::fromLatin1(tip));
    return t;
}

// White when the box takes input, the grey of 192, 192, 192 when it does not.
void paint_box(QWidget* w, bool enabled) {
    w->setEnabled(enabled);
    QPalette p = w->palette();
    const QColor c = enabled ? QColor(Qt::white) : QColor(192, 192, 192);
    p.setColor(QPalette::Active, QPalette::Base, c);
    p.setColor(QPalette::Inactive, QPalette::Base, c);
    p.setColor(QPalette::Disabled, QPalette::Base, c);
    w->setPalette(p);
}

int count_of(const QString& text) {
    const int n = cint(number(text));
    return n < 1 ? 1 : n > ph_max_lambdas ? ph_max_lambdas : n;
}

} // namespace

dlgPhotometry::dlgPhotometry(QWidget* parent) : QDialog(parent) {
    setObjectName(QStringLiteral("dlgPhotometry"));
    setWindowTitle(QStringLiteral("Setup Photometry"));
    tabs_ = new QTabWidget(this);
    tabs_->setObjectName(QStringLiteral("tsp1"));

    // Instrument
    auto* instrument = new QWidget;
    instrument->setObjectName(QStringLiteral("Frame1_0"));
    auto* inst_layout = new QVBoxLayout(instrument);
    for (int i = 0; i < 6; ++i)
        txt_inst_[static_cast<std::size_t>(i)] =
            number_box(instrument, QStringLiteral("txtInst_%1").arg(i), inst_rules[i].tip);
    auto* form = new QFormLayout;
    form->addRow(buddy_label(QStringLiteral("Number of lambda="), txt_inst_[0], instrument,
                             QStringLiteral("lblInst_0")),
                 txt_inst_[0]);
    auto* lambdas = new QGridLayout;
    for (int i = 0; i < ph_max_lambdas; ++i) {
        auto* t = number_box(instrument, QStringLiteral("txtLambda_%1").arg(i), lambda_rule.tip);
        t->setAccessibleName(QStringLiteral("Lambda %1 (nm)").arg(i + 1));
        txt_lambda_[static_cast<std::size_t>(i)] = t;
        auto* label = buddy_label(QStringLiteral("%1:").arg(i + 1), t, instrument,
                                  QStringLiteral("lblLambda_%1").arg(i));
        lambdas->addWidget(label, i / 5, (i % 5) * 2);
        lambdas->addWidget(t, i / 5, (i % 5) * 2 + 1);
    }
    form->addRow(lambdas);
    cmb_measure_ = new QComboBox(instrument);
    cmb_measure_->setObjectName(QStringLiteral("cmbMeasure"));
    cmb_measure_->addItems({QStringLiteral("ABS"), QStringLiteral("%T"), QStringLiteral("Factor*ABS")});
    cmb_measure_->setToolTip(QStringLiteral("Select measure mode"));
    form->addRow(
        buddy_label(QStringLiteral("Measure mode="), cmb_measure_, instrument, QStringLiteral("lblMeasure")),
        cmb_measure_);
    cmb_unit_ = new QComboBox(instrument);
    cmb_unit_->setObjectName(QStringLiteral("cmbUnit"));
    for (const char* u : unit_list)
        cmb_unit_->addItem(QString::fromLatin1(u));
    cmb_unit_->setToolTip(QStringLiteral("Select unit"));
    form->addRow(buddy_label(QStringLiteral("Unit="), cmb_unit_, instrument, QStringLiteral("lblUnit")),
                 cmb_unit_);
    form->addRow(
        buddy_label(QStringLiteral("Factor="), txt_inst_[2], instrument, QStringLiteral("lblInst_2")),
        txt_inst_[2]);
    form->addRow(
        buddy_label(QStringLiteral("Cycle number="), txt_inst_[1], instrument, QStringLiteral("lblInst_1")),
        txt_inst_[1]);
    form->addRow(buddy_label(QStringLiteral("Cycle interval(sec)="), txt_inst_[3], instrument,
                             QStringLiteral("lblInst_3")),
                 txt_inst_[3]);
    inst_layout->addLayout(form);

    check2_ = new QCheckBox(QStringLiteral("Enable advanced equation"), instrument);
    check2_->setObjectName(QStringLiteral("Check2"));
    inst_layout->addWidget(check2_);
    frame2_ = new QFrame(instrument);
    frame2_->setObjectName(QStringLiteral("Frame2"));
    frame2_->setFrameShape(QFrame::StyledPanel);
    auto* eq_layout = new QVBoxLayout(frame2_);
    auto* line = new QLabel(QStringLiteral("R = K1 * ( WL1 +/- WL2 ) +/- K2 * ( WL3 +/- WL4 )"), frame2_);
    line->setObjectName(QStringLiteral("lblEquation"));
    eq_layout->addWidget(line);
    for (int i = 0; i < 4; ++i) {
        auto* c = new QComboBox(frame2_);
        c->setObjectName(QStringLiteral("cmbWL_%1").arg(i));
        c->setAccessibleName(QStringLiteral("WL%1").arg(i + 1));
        c->setSizeAdjustPolicy(QComboBox::AdjustToContents);
        c->installEventFilter(this);
        cmb_wl_[static_cast<std::size_t>(i)] = c;
    }
    for (int i = 0; i < 3; ++i) {
        auto* c = new QComboBox(frame2_);
        c->setObjectName(QStringLiteral("cmbEqu_%1").arg(i));
        c->setAccessibleName(QStringLiteral("Sign %1").arg(i + 1));
        c->addItems({QStringLiteral("+"), QStringLiteral("-")});
        cmb_equ_[static_cast<std::size_t>(i)] = c;
    }
    txt_inst_[4]->setMaximumWidth(80);
    txt_inst_[5]->setMaximumWidth(80);
    auto text = [this](const char* t) { return new QLabel(QString::fromLatin1(t), frame2_); };
    // The controls in the order of the equation: K1 ( WL1 +/- WL2 ) +/- K2 ( WL3 +/- WL4 )
    auto* first = new QHBoxLayout;
    first->addWidget(buddy_label(QStringLiteral("K1"), txt_inst_[4], frame2_, QStringLiteral("lblInst_4")));
    first->addWidget(txt_inst_[4]);
    first->addWidget(text("* ("));
    first->addWidget(cmb_wl_[0]);
    first->addWidget(cmb_equ_[0]);
    first->addWidget(cmb_wl_[1]);
    first->addWidget(text(")"));
    first->addWidget(cmb_equ_[1]);
    first->addStretch();
    auto* second = new QHBoxLayout;
    second->addWidget(buddy_label(QStringLiteral("K2"), txt_inst_[5], frame2_, QStringLiteral("lblInst_5")));
    second->addWidget(txt_inst_[5]);
    second->addWidget(text("* ("));
    second->addWidget(cmb_wl_[2]);
    second->addWidget(cmb_equ_[2]);
    second->addWidget(cmb_wl_[3]);
    second->addWidget(text(")"));
    second->addStretch();
    eq_layout->addLayout(first);
    eq_layout->addLayout(second);
    inst_layout->addWidget(frame2_);
    inst_layout->addStretch();
    tabs_->addTab(instrument, QStringLiteral("Instrument"));

    // Option
    auto* option = new QWidget;
    option->setObjectName(QStringLiteral("Frame1_1"));
    auto* option_layout = new QVBoxLayout(option);
    option_layout->addWidget(new QLabel(QStringLiteral("The option is not available."), option));
    option_layout->addStretch();
    tabs_->addTab(option, QStringLiteral("Option"));

    const char* prints[4] = {"Print present date.", "Print page number.", "Print parameter setup.",
                             "Print selected data."};
    add_report_tab(tabs_, txt_report_, prints, check1_, true);
    for (QLineEdit* t : txt_report_)
        t->installEventFilter(this);

    lay_out_setup_dialog(
        this, tabs_,
        {[this] { cmdClear_Click(); }, [this] { cmdOk_Click(); }, [this] { cmdCancel_Click(); }});

    for (int i = 0; i < 6; ++i) {
        QLineEdit* t = txt_inst_[static_cast<std::size_t>(i)];
        t->installEventFilter(this);
        connect(t, &QLineEdit::textChanged, this, [this, i] { txtInst_Change(i); });
    }
    for (QLineEdit* t : txt_lambda_)
        t->installEventFilter(this);
    connect(cmb_measure_, &QComboBox::activated, this, &dlgPhotometry::cmbMeasure_Click);
    connect(check2_, &QCheckBox::toggled, this, &dlgPhotometry::Check2_Click);
    connect(tabs_, &QTabWidget::currentChanged, this, [](int index) { remembered_tab = index; });

    reload_parameter();
    tabs_->setCurrentIndex(remembered_tab);
    resize(560, 500);
}

bool dlgPhotometry::eventFilter(QObject* watched, QEvent* event) {
    const auto type = event->type();
    if (type == QEvent::FocusOut) {
        for (int i = 0; i < 6; ++i)
            if (watched == txt_inst_[static_cast<std::size_t>(i)]) txtInst_LostFocus(i);
        for (int i = 0; i < ph_max_lambdas; ++i)
            if (watched == txt_lambda_[static_cast<std::size_t>(i)]) txtLambda_LostFocus(i);
    } else if (type == QEvent::FocusIn) {
        for (int i = 0; i < 4; ++i)
            if (watched == cmb_wl_[static_cast<std::size_t>(i)]) cmbWL_GotFocus(i);
        if (auto* edit = qobject_cast<QLineEdit*>(watched))
            QTimer::singleShot(0, edit, &QLineEdit::selectAll);
    }
    return QDialog::eventFilter(watched, event);
}

void dlgPhotometry::enable_lambdas(int count) {
    for (int i = 0; i < ph_max_lambdas; ++i)
        paint_box(txt_lambda_[static_cast<std::size_t>(i)], i < count);
}

void dlgPhotometry::set_factor_enabled(bool enabled) {
    paint_box(cmb_unit_, enabled);
    paint_box(txt_inst_[2], enabled);
}

void dlgPhotometry::fill_wl_list(int list, int count) {
    QComboBox* c = cmb_wl_[static_cast<std::size_t>(list)];
    const int pick = c->currentIndex();
    const QSignalBlocker block(c);
    c->clear();
    c->addItem(QStringLiteral("None"));
    for (int k = 0; k < count; ++k)
        c->addItem(format_text(number(txt_lambda_[static_cast<std::size_t>(k)]->text()), "0") +
                   QStringLiteral(" nm"));
    // A pick that has gone with a lowered count falls back to "None".
    c->setCurrentIndex(pick >= 0 && pick <= count ? pick : 0);
}

void dlgPhotometry::reload_parameter() {
    const PhotometrySetup& s = photometry_setup;
    for (int i = 0; i < ph_max_lambdas; ++i)
        txt_lambda_[static_cast<std::size_t>(i)]->setText(
            format_text(s.ph_lambda[static_cast<std::size_t>(i)], "0"));
    txt_inst_[0]->setText(QString::number(s.ph_lambda_count));
    txt_inst_[1]->setText(QString::number(s.ph_cycle_number));
    txt_inst_[2]->setText(format_text(s.ph_factor, "0.000"));
    txt_inst_[3]->setText(QString::number(s.ph_cycle_interval));
    txt_inst_[4]->setText(format_text(s.ph_k1, "0.000"));
    txt_inst_[5]->setText(format_text(s.ph_k2, "0.000"));
    enable_lambdas(count_of(txt_inst_[0]->text()));
    cmb_measure_->setCurrentIndex(s.ph_mode >= 0 && s.ph_mode <= 2 ? s.ph_mode : 0);
    set_factor_enabled(cmb_measure_->currentIndex() == 2);
    int unit = 0;
    for (int i = 0; i < cmb_unit_->count(); ++i)
        if (cmb_unit_->itemText(i) == s.ph_unit) unit = i;
    cmb_unit_->setCurrentIndex(unit);
    const int count = count_of(txt_inst_[0]->text());
    for (int i = 0; i < 4; ++i) {
        QComboBox* c = cmb_wl_[static_cast<std::size_t>(i)];
        const QSignalBlocker block(c);
        c->clear();
        c->addItem(QStringLiteral("None"));
        for (int k = 0; k < count; ++k)
            c->addItem(format_text(s.ph_lambda[static_cast<std::size_t>(k)], "0") + QStringLiteral(" nm"));
        const int pick = s.ph_wl_pick[static_cast<std::size_t>(i)];
        // A pick past the count stays what it was, shown as an empty choice until the list is rebuilt.
        while (c->count() <= pick)
            c->addItem(QString());
        c->setCurrentIndex(pick >= 0 ? pick : 0);
    }
    for (int i = 0; i < 3; ++i)
        cmb_equ_[static_cast<std::size_t>(i)]->setCurrentIndex(
            s.ph_sign[static_cast<std::size_t>(i)] == 0 ? 0 : 1);
    check2_->setChecked(s.ph_advanced == 1);
    Check2_Click();
    for (int i = 0; i < 4; ++i) {
        txt_report_[static_cast<std::size_t>(i)]->setText(s.ph_report_text[static_cast<std::size_t>(i)]);
        check1_[static_cast<std::size_t>(i)]->setChecked(s.ph_print_flag[static_cast<std::size_t>(i)] == 1);
    }
}

void dlgPhotometry::txtInst_Change(int index) {
    // Box 0 is held to 1..10 on every change of any box.
    QLineEdit* box = txt_inst_[0];
    const QString text_before = box->text();
    const double v = number(text_before);
    if (v <= 1 && box->text() != QStringLiteral("1")) {
        const QSignalBlocker block(box);
        box->setText(QStringLiteral("1"));
    } else if (v >= 10 && box->text() != QStringLiteral("10")) {
        const QSignalBlocker block(box);
        box->setText(QStringLiteral("10"));
    }
    // A rewritten box keeps its text selected while it has the focus, so the next key replaces it.
    if (box->hasFocus() && box->text() != text_before) box->selectAll();
    if (index == 0) enable_lambdas(count_of(box->text()));
}

void dlgPhotometry::txtInst_LostFocus(int index) {
    QLineEdit* t = txt_inst_[static_cast<std::size_t>(index)];
    const QString text = held_text(t->text(), inst_rules[index]);
    if (text != t->text()) t->setText(text);
}

void dlgPhotometry::txtLambda_LostFocus(int index) {
    QLineEdit* t = txt_lambda_[static_cast<std::size_t>(index)];
    const QString text = held_text(t->text(), lambda_rule);
    if (text != t->text()) t->setText(text);
}

void dlgPhotometry::cmbMeasure_Click() {
    set_factor_enabled(cmb_measure_->currentIndex() == 2);
}

void dlgPhotometry::Check2_Click() {
    frame2_->setEnabled(check2_->isChecked());
}

void dlgPhotometry::cmbWL_GotFocus(int index) {
    fill_wl_list(index, count_of(txt_inst_[0]->text()));
}

void dlgPhotometry::cmdOk_Click() {
    // What is typed counts as if the box had been left: held to its range, never refused.
    for (int i = 0; i < 6; ++i)
        txtInst_LostFocus(i);
    const int n = count_of(txt_inst_[0]->text());
    for (int i = 0; i < n; ++i)
        txtLambda_LostFocus(i);

    PhotometrySetup& s = photometry_setup;
    bool& dirty = photometry_run.ph_dirty;
    dirty = false;
    const auto take = [](auto& field, auto value) {
        if (field != value) {
            field = value;
            photometry_run.ph_dirty = true;
        }
    };
    const auto whole = [this](int box) {
        return static_cast<std::int16_t>(cint(number(txt_inst_[box]->text())));
    };
    take(s.ph_lambda_count, static_cast<std::int16_t>(n));
    for (int i = 0; i < n; ++i)
        take(s.ph_lambda[static_cast<std::size_t>(i)],
             number(txt_lambda_[static_cast<std::size_t>(i)]->text()));
    take(s.ph_mode, static_cast<std::int16_t>(cmb_measure_->currentIndex()));
    take(s.ph_unit, cmb_unit_->currentText());
    take(s.ph_factor, static_cast<float>(number(txt_inst_[2]->text())));
    take(s.ph_cycle_number, whole(1));
    take(s.ph_cycle_interval, whole(3));
    take(s.ph_advanced, static_cast<std::int16_t>(check2_->isChecked() ? 1 : 0));
    take(s.ph_k1, number(txt_inst_[4]->text()));
    take(s.ph_k2, number(txt_inst_[5]->text()));
    for (int i = 0; i < 4; ++i)
        take(s.ph_wl_pick[static_cast<std::size_t>(i)],
             static_cast<std::int16_t>(std::max(0, cmb_wl_[static_cast<std::size_t>(i)]->currentIndex())));
    for (int i = 0; i < 3; ++i)
        take(s.ph_sign[static_cast<std::size_t>(i)],
             static_cast<std::int16_t>(std::max(0, cmb_equ_[static_cast<std::size_t>(i)]->currentIndex())));
    // Report texts and print flags never clear the grid.
    for (int i = 0; i < 4; ++i) {
        s.ph_print_flag[static_cast<std::size_t>(i)] =
            check1_[static_cast<std::size_t>(i)]->isChecked() ? 1 : 0;
        s.ph_report_text[static_cast<std::size_t>(i)] = txt_report_[static_cast<std::size_t>(i)]->text();
    }
    if (dirty) emit setup_changed();
    accept();
}

void dlgPhotometry::cmdCancel_Click() {
    reject();
}

void dlgPhotometry::cmdClear_Click() {
    emit clear_requested();
}

} // namespace lumora
