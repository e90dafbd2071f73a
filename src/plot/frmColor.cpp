#include "frmColor.h"

#include "link/shared_state.h"
#include "palette.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>

namespace lumora {
namespace {

constexpr int block_rows = 10;

// Room for one colour box beside the row's check: the box itself is painted by the form.
QWidget* make_swatch_space(QWidget* parent) {
    auto* w = new QWidget(parent);
    w->setFixedSize(28, 14);
    return w;
}

} // namespace

frmColor::frmColor(std::array<std::int16_t, 21>& curve_state, std::int16_t& curve_count,
                   std::int16_t& active_curve, color_hooks hooks, QWidget* parent)
    : QDialog(parent), curve_state_(curve_state), curve_count_(curve_count), active_curve_(active_curve),
      hooks_(std::move(hooks)) {
    setObjectName(QStringLiteral("frmColor"));
    setWindowTitle(QStringLiteral("Set Color"));
    setModal(true);
    group_ = new QButtonGroup(this);

    auto* blocks = new QHBoxLayout;
    for (int block = 0; block < 2; ++block) {
        auto* grid = new QGridLayout;
        grid->setVerticalSpacing(2);
        grid->setHorizontalSpacing(10);
        auto* head = new QLabel(QStringLiteral("Active  Visible  color"), this);
        head->setObjectName(block == 0 ? QStringLiteral("Label1") : QStringLiteral("Label2"));
        grid->addWidget(head, 0, 0, 1, 4);
        for (int r = 0; r < block_rows; ++r) {
            const int i = block * block_rows + r;
            auto* number = new QLabel(QString::number(i + 1), this);
            number->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
            auto* opt = new QRadioButton(this);
            opt->setObjectName(QStringLiteral("optActive_%1").arg(i));
            opt->setAccessibleName(QStringLiteral("Curve %1 active").arg(i + 1));
            auto* chk = new QCheckBox(this);
            chk->setObjectName(QStringLiteral("chkActive_%1").arg(i));
            chk->setAccessibleName(QStringLiteral("Curve %1 visible").arg(i + 1));
            group_->addButton(opt, i);
            connect(opt, &QRadioButton::toggled, this, [this, i](bool on) {
                if (on) optActive_Click(i);
            });
            auto* swatch = make_swatch_space(this);
            grid->addWidget(number, r + 1, 0);
            grid->addWidget(opt, r + 1, 1);
            grid->addWidget(chk, r + 1, 2);
            grid->addWidget(swatch, r + 1, 3);
            opt_[static_cast<std::size_t>(i)] = opt;
            chk_[static_cast<std::size_t>(i)] = chk;
            swatch_[static_cast<std::size_t>(i)] = swatch;
        }
        blocks->addLayout(grid);
        if (block == 0) blocks->addSpacing(24);
    }

    auto* ok = new QPushButton(QStringLiteral("OK"), this);
    ok->setObjectName(QStringLiteral("cmdOK"));
    ok->setDefault(true);
    auto* cancel = new QPushButton(QStringLiteral("Cancel"), this);
    cancel->setObjectName(QStringLiteral("Command1"));
    auto* reset = new QPushButton(QStringLiteral("Reset curve"), this);
    reset->setObjectName(QStringLiteral("cmdReset"));
    connect(ok, &QPushButton::clicked, this, &frmColor::cmdOK_Click);
    connect(cancel, &QPushButton::clicked, this, &frmColor::Command1_Click);
    connect(reset, &QPushButton::clicked, this, &frmColor::cmdReset_Click);
    auto* buttons = new QHBoxLayout;
    buttons->addWidget(reset);
    buttons->addStretch();
    buttons->addWidget(ok);
    buttons->addWidget(cancel);

    auto* layout = new QVBoxLayout(this);
    layout->addLayout(blocks);
    layout->addLayout(buttons);
    Form_Load();
}

void frmColor::select_active(int index) {
    // An exclusive group cannot be emptied by unchecking its button.
    group_->setExclusive(false);
    for (int i = 0; i < rows; ++i)
        opt_[static_cast<std::size_t>(i)]->setChecked(i == index);
    group_->setExclusive(true);
}

void frmColor::Form_Load() {
    select_active(-1);
    for (int i = 0; i < rows; ++i) {
        opt_[static_cast<std::size_t>(i)]->setEnabled(false);
        chk_[static_cast<std::size_t>(i)]->setEnabled(false);
        chk_[static_cast<std::size_t>(i)]->setChecked(false);
    }
    for (int i = 0; i < curve_count_ && i < rows; ++i) {
        const std::int16_t state = curve_state_[static_cast<std::size_t>(i + 1)];
        opt_[static_cast<std::size_t>(i)]->setEnabled(true);
        chk_[static_cast<std::size_t>(i)]->setEnabled(true);
        chk_[static_cast<std::size_t>(i)]->setChecked(state == 1 || state == 2);
        if (state == 2) opt_[static_cast<std::size_t>(i)]->setChecked(true);
    }
}

// The active curve is always visible.
void frmColor::optActive_Click(int index) {
    QCheckBox* chk = chk_[static_cast<std::size_t>(index)];
    if (!chk->isChecked()) chk->setChecked(true);
}

void frmColor::cmdOK_Click() {
    for (int i = 0; i < rows; ++i) {
        std::int16_t& state = curve_state_[static_cast<std::size_t>(i + 1)];
        state = chk_[static_cast<std::size_t>(i)]->isChecked() ? 1 : 0;
        // The radio decides last: unticking the active row's check leaves it active.
        if (opt_[static_cast<std::size_t>(i)]->isChecked()) {
            state = 2;
            active_curve_ = static_cast<std::int16_t>(i);
        }
    }
    if (hooks_.zoom_data) hooks_.zoom_data();
    accept();
}

void frmColor::cmdReset_Click() {
    for (int column = 1; column <= curve_count_; ++column) {
        if (hooks_.zero_column) {
            hooks_.zero_column(column);
        } else if (column < curve_columns) {
            for (auto& row : shared.baseline_curves)
                row[static_cast<std::size_t>(column)] = 0;
        }
    }
    curve_count_ = 0;
    if (hooks_.clear_array) hooks_.clear_array();
    select_active(0);
    active_curve_ = 0;
    // Curve 1 is made active and then cleared with the rest: after a reset no curve is active
    // until the next scan sets one.
    curve_state_[1] = 2;
    for (int i = 0; i < rows; ++i) {
        chk_[static_cast<std::size_t>(i)]->setChecked(false);
        curve_state_[static_cast<std::size_t>(i + 1)] = 0;
    }
    if (hooks_.zoom_data) hooks_.zoom_data();
    accept();
}

void frmColor::Command1_Click() {
    reject();
}

QRect frmColor::color_box(int index) const {
    const QWidget* w = swatch_[static_cast<std::size_t>(index)];
    return QRect(w->mapTo(this, QPoint(0, 0)), w->size());
}

void frmColor::paintEvent(QPaintEvent* event) {
    QDialog::paintEvent(event);
    QPainter p(this);
    for (int i = 0; i < rows; ++i) {
        const QRect r = color_box(i);
        p.fillRect(r, curve_color(i + 1));
        p.setPen(Qt::black);
        p.drawRect(r.adjusted(0, 0, -1, -1));
    }
}

} // namespace lumora
