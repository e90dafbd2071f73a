#include "status_bar.h"

#include <QAccessible>
#include <QAccessibleWidget>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QStyleOptionFocusRect>
#include <QStylePainter>

namespace lumora {
namespace {

// A clickable panel is a push button to assistive tools, named by its text, with a press action.
class clickable_panel_accessible : public QAccessibleWidget {
public:
    explicit clickable_panel_accessible(status_panel* panel)
        : QAccessibleWidget(panel, QAccessible::Button) {}

    QString text(QAccessible::Text t) const override {
        const auto* panel = static_cast<const status_panel*>(widget());
        if (t == QAccessible::Name)
            return panel->accessibleName().isEmpty() ? panel->text() : panel->accessibleName();
        return QAccessibleWidget::text(t);
    }
    QStringList actionNames() const override {
        return QStringList{pressAction()} + QAccessibleWidget::actionNames();
    }
    void doAction(const QString& action) override {
        if (action == pressAction() && widget()->isEnabled())
            static_cast<status_panel*>(widget())->press();
        else
            QAccessibleWidget::doAction(action);
    }
};

QAccessibleInterface* panel_accessible(const QString& class_name, QObject* object) {
    if (class_name != QLatin1String("lumora::status_panel")) return nullptr;
    auto* panel = static_cast<status_panel*>(object);
    // Panels that only show text are labels, as QLabel makes them.
    return panel->clickable() ? new clickable_panel_accessible(panel) : nullptr;
}

} // namespace

void status_panel::set_clickable(bool clickable) {
    clickable_ = clickable;
    setFocusPolicy(clickable ? Qt::StrongFocus : Qt::NoFocus);
    if (clickable)
        setCursor(Qt::PointingHandCursor);
    else
        unsetCursor();
}

void status_panel::press() {
    if (isEnabled()) emit clicked();
}

void status_panel::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton && rect().contains(event->position().toPoint())) press();
    QLabel::mouseReleaseEvent(event);
}

void status_panel::keyPressEvent(QKeyEvent* event) {
    const bool plain = event->modifiers() == Qt::NoModifier || event->modifiers() == Qt::KeypadModifier;
    const int key = event->key();
    if (clickable_ && plain && (key == Qt::Key_Return || key == Qt::Key_Enter || key == Qt::Key_Space)) {
        press();
        event->accept();
        return;
    }
    QLabel::keyPressEvent(event);
}

void status_panel::paintEvent(QPaintEvent* event) {
    QLabel::paintEvent(event);
    if (!hasFocus()) return;
    QStylePainter p(this);
    QStyleOptionFocusRect focus;
    focus.initFrom(this);
    focus.rect = contentsRect().adjusted(1, 1, -1, -1);
    p.drawPrimitive(QStyle::PE_FrameFocusRect, focus);
}

status_bar::status_bar(QWidget* parent) : QStatusBar(parent) {
    static const bool factory_installed = [] {
        QAccessible::installFactory(panel_accessible);
        return true;
    }();
    (void)factory_installed;
    setObjectName(QStringLiteral("sbStatusBar"));
    setSizeGripEnabled(false);
    static const int stretch[panel_count] = {2, 3, 2, 2, 2, 4};
    static const char* const descriptions[panel_count] = {"Wavelength",
                                                          "Reading",
                                                          "Click to set the wavelength and the reading",
                                                          "Instrument state",
                                                          "Click to set the com port",
                                                          "Activity"};
    for (int i = 0; i < panel_count; ++i) {
        auto* p = new status_panel(this);
        // Clickable first: the accessible interface is made, and kept, at the first property change.
        p->set_clickable(i == 2 || i == 4);
        p->setObjectName(QStringLiteral("Panel%1").arg(i + 1));
        p->setFrameStyle(QFrame::Panel | QFrame::Sunken);
        p->setMinimumWidth(60);
        p->setToolTip(QString::fromLatin1(descriptions[i]));
        p->setAccessibleDescription(QString::fromLatin1(descriptions[i]));
        addPermanentWidget(p, stretch[i]);
        panels_[static_cast<std::size_t>(i)] = p;
        const int number = i + 1;
        connect(p, &status_panel::clicked, this, [this, number] { emit panel_clicked(number); });
    }
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
    // A screen reader hears the panel by its text: the reading, the wavelength, the activity.
    if (p->accessibleName() != text) p->setAccessibleName(text);
    emit panel_written(n, text);
}

} // namespace lumora
