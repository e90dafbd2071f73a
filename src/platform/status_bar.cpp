#include "status_bar.h"

#include <QMouseEvent>

namespace lumora {

void status_panel::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton && isEnabled() && rect().contains(event->position().toPoint()))
        emit clicked();
    QLabel::mouseReleaseEvent(event);
}

status_bar::status_bar(QWidget* parent) : QStatusBar(parent) {
    setObjectName(QStringLiteral("sbStatusBar"));
    setSizeGripEnabled(false);
    static const int stretch[panel_count] = {2, 3, 2, 2, 2, 4};
    static const char* const tips[panel_count] = {"Wavelength",
                                                  "Reading",
                                                  "Click to set the wavelength and the reading",
                                                  "Instrument state",
                                                  "Click to set the com port",
                                                  "Activity"};
    for (int i = 0; i < panel_count; ++i) {
        auto* p = new status_panel(this);
        p->setObjectName(QStringLiteral("Panel%1").arg(i + 1));
        p->setFrameStyle(QFrame::Panel | QFrame::Sunken);
        p->setMinimumWidth(60);
        p->setToolTip(QString::fromLatin1(tips[i]));
        p->setAccessibleName(QString::fromLatin1(tips[i]));
        addPermanentWidget(p, stretch[i]);
        panels_[static_cast<std::size_t>(i)] = p;
        const int number = i + 1;
        connect(p, &status_panel::clicked, this, [this, number] { emit panel_clicked(number); });
    }
    panels_[2]->setCursor(Qt::PointingHandCursor);
    panels_[4]->setCursor(Qt::PointingHandCursor);
}

status_panel* status_bar::panel(int n) const {
    return n >= 1 && n <= panel_count ? panels_[static_cast<std::size_t>(n - 1)] : nullptr;
}

QString status_bar::text(int n) const {
    const auto* p = panel(n);
    return p ? p->text() : QString();
}

void status_bar::set_text(int n, const QString& text) {
    auto* p = panel(n);
    if (!p) return;
    p->setText(text);
    emit panel_written(n, text);
}

} // namespace lumora
