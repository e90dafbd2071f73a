#include "dlgZoom.h"

#include "platform/numeric_text.h"
#include "platform/prompts.h"

#include <QEvent>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace lumora {

zoom_fields spectrum_zoom_fields(bool percent_t, double start_lambda, double stop_lambda) {
    zoom_fields f;
    const QString unit = percent_t ? QStringLiteral("(%T)=") : QStringLiteral("(ABS)=");
    f.labels = {QStringLiteral("Start wavelength(nm)="), QStringLiteral("Stop wavelength(nm)="),
                QStringLiteral("Low value") + unit, QStringLiteral("High value") + unit};
    f.x_format = "0";
    f.y_format = percent_t ? "0.00" : "0.000";
    f.percent_t = percent_t;
    f.clamp_x = true;
    f.x_first = start_lambda;
    f.x_last = stop_lambda;
    return f;
}

dlgZoom::dlgZoom(plot_view& view, zoom_fields fields, std::function<void()> on_ok, QWidget* parent)
    : QDialog(parent), view_(view), setup_(std::move(fields)), on_ok_(std::move(on_ok)) {
    setObjectName(QStringLiteral("dlgZoom"));
    setWindowTitle(QStringLiteral("Setup zoom parameter"));
    setModal(true);

    auto* form = new QGridLayout;
    for (int i = 0; i < 4; ++i) {
        auto* field = new QLineEdit(this);
        field->setObjectName(QStringLiteral("txtInst_%1").arg(i));
        field->installEventFilter(this);
        auto* label = new QLabel(setup_.labels[static_cast<std::size_t>(i)], this);
        label->setObjectName(QStringLiteral("Label1_%1").arg(i));
        label->setBuddy(field);
        form->addWidget(label, i, 0, Qt::AlignRight);
        form->addWidget(field, i, 1);
        fields_[static_cast<std::size_t>(i)] = field;
        labels_[static_cast<std::size_t>(i)] = label;
    }
    auto* ok = new QPushButton(QStringLiteral("OK"), this);
    ok->setObjectName(QStringLiteral("cmdOk"));
    ok->setDefault(true);
    auto* cancel = new QPushButton(QStringLiteral("Cancel"), this);
    cancel->setObjectName(QStringLiteral("cmdCancel"));
    connect(ok, &QPushButton::clicked, this, &dlgZoom::cmdOk_Click);
    connect(cancel, &QPushButton::clicked, this, &dlgZoom::cmdCancel_Click);

    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(ok);
    buttons->addWidget(cancel);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(form);
    layout->addLayout(buttons);
    reload();
}

void dlgZoom::reload() {
    fields_[0]->setText(format_text(view_.view_start, setup_.x_format));
    fields_[1]->setText(format_text(view_.view_stop, setup_.x_format));
    fields_[2]->setText(format_text(view_.view_low, setup_.y_format));
    fields_[3]->setText(format_text(view_.view_high, setup_.y_format));
}

double dlgZoom::field_value(int index) const {
    return val(fields_[static_cast<std::size_t>(index)]->text().toStdString());
}

void dlgZoom::txtInst_LostFocus(int index) {
    double v = field_value(index);
    switch (index) {
    case 0:
        if (setup_.clamp_x) {
            const double stop = field_value(1);
            if (v <= setup_.x_first) v = setup_.x_first;
            if (v > stop - 2) v = stop - 2;
        }
        fields_[0]->setText(format_text(v, setup_.x_format));
        break;
    case 1:
        if (setup_.clamp_x) {
            const double start = field_value(0);
            if (v <= start + 2) v = start + 2;
            if (v > setup_.x_last) v = setup_.x_last;
        }
        fields_[1]->setText(format_text(v, setup_.x_format));
        break;
    case 2:
    case 3:
        // The limits of the setup dialog do not apply to a view.
        fields_[static_cast<std::size_t>(index)]->setText(format_text(v, setup_.y_format));
        break;
    default:
        break;
    }
}

void dlgZoom::cmdOk_Click() {
    const double low = field_value(2);
    const double high = field_value(3);
    // The two messages are worded as the users of this system know them.
    if (setup_.percent_t && high - low < 0.01) {
        prompts::message_box(QStringLiteral("High vaule - low value must >=0.01!"), box_icon::critical,
                             QStringLiteral("Warning"));
        return;
    }
    if (!setup_.percent_t && high - low < 0.001) {
        prompts::message_box(QStringLiteral("High vaule - low value must >=0.001!"), box_icon::critical,
                             QStringLiteral("Warning"));
        return;
    }
    const double start = field_value(0);
    const double stop = field_value(1);
    if (!fits_int16(start) || !fits_int16(stop)) return; // an X beyond a 16-bit field ends here
    view_.view_start = static_cast<std::int16_t>(cint(start));
    view_.view_stop = static_cast<std::int16_t>(cint(stop));
    view_.view_low = low;
    view_.view_high = high;
    accept();
    if (on_ok_) on_ok_();
}

void dlgZoom::cmdCancel_Click() {
    reject();
}

bool dlgZoom::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::FocusOut) {
        for (int i = 0; i < 4; ++i)
            if (watched == fields_[static_cast<std::size_t>(i)]) txtInst_LostFocus(i);
    }
    return QDialog::eventFilter(watched, event);
}

} // namespace lumora
