#include "frmReport.h"

#include "report_stats.h"

#include <QAction>
#include <QLabel>
#include <QPixmap>
#include <QScrollBar>
#include <QToolBar>
#include <QVBoxLayout>
#include <QWheelEvent>
#include <algorithm>

namespace lumora {

frmReport::frmReport(std::function<std::unique_ptr<report_page>(double scale)> make, QWidget* parent)
    : QWidget(parent, Qt::Window), make_(std::move(make)) {
    setObjectName(QStringLiteral("frmReport"));
    setWindowTitle(QStringLiteral("Report"));
    setAttribute(Qt::WA_DeleteOnClose);
    toolbar_ = new QToolBar(this);
    toolbar_->setObjectName(QStringLiteral("Toolbar1"));
    auto add = [this](const char* text, const char* tip, void (frmReport::*slot)()) {
        QAction* a = toolbar_->addAction(QString::fromLatin1(text));
        a->setObjectName(QString::fromLatin1(text));
        a->setToolTip(QString::fromLatin1(tip));
        connect(a, &QAction::triggered, this, slot);
    };
    add("Zoom in", "Zoom in data", &frmReport::zoom_in);
    add("Zoom out", "Zoom out data", &frmReport::zoom_out);
    add("PageDn", "Page down", &frmReport::page_down);
    add("PageUp", "Page up", &frmReport::page_up);
    QAction* stats = toolbar_->addAction(QStringLiteral("Print statistics"));
    stats->setObjectName(QStringLiteral("Print statistics"));
    stats->setToolTip(QStringLiteral("Adds the statistics after the report's own sections"));
    stats->setCheckable(true);
    stats->setChecked(report_print_statistics);
    connect(stats, &QAction::toggled, this, [this](bool on) {
        report_print_statistics = on;
        report_make();
    });

    scroll_ = new QWidget(this);
    scroll_->setObjectName(QStringLiteral("picScroll"));
    scroll_->setAutoFillBackground(true);
    picture_ = new QLabel(scroll_);
    picture_->setObjectName(QStringLiteral("picReport"));
    picture_->setAccessibleName(QStringLiteral("Report"));
    hscroll_ = new QScrollBar(Qt::Horizontal, this);
    hscroll_->setObjectName(QStringLiteral("HScroll1"));
    connect(hscroll_, &QScrollBar::valueChanged, this, [this](int v) { picture_->move(-v, picture_->y()); });

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(toolbar_);
    layout->addWidget(scroll_, 1);
    layout->addWidget(hscroll_);
    resize(860, 720);
    report_make();
}

void frmReport::report_make() {
    page_ = make_ ? make_(scale_) : nullptr;
    const QImage image = page_ ? page_->render() : QImage();
    picture_->setPixmap(QPixmap::fromImage(image));
    picture_->resize(image.size());
    picture_->move(-hscroll_->value(), 0);
    QString pages = page_ ? QString::number(page_->pages()) : QStringLiteral("0");
    picture_->setAccessibleDescription(pages + QStringLiteral(" page(s) at scale ") +
                                       QString::number(scale_));
    update_range();
}

void frmReport::zoom_in() {
    scale_ = std::min(1.0, scale_ + 0.25);
    report_make();
}

void frmReport::zoom_out() {
    scale_ = std::max(0.25, scale_ - 0.25);
    report_make();
}

void frmReport::move_picture(int top) {
    const int lowest = std::min(0, scroll_->height() - picture_->height());
    picture_->move(picture_->x(), std::clamp(top, lowest, 0));
}

void frmReport::page_down() {
    move_picture(picture_->y() - scroll_->height());
}

void frmReport::page_up() {
    move_picture(picture_->y() + scroll_->height());
}

void frmReport::update_range() {
    hscroll_->setRange(0, std::max(0, picture_->width() - scroll_->width()));
    hscroll_->setPageStep(std::max(1, scroll_->width()));
}

void frmReport::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    update_range();
}

void frmReport::wheelEvent(QWheelEvent* event) {
    move_picture(picture_->y() + event->angleDelta().y() / 2);
    event->accept();
}

} // namespace lumora
