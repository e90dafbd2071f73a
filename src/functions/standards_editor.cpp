#include "standards_editor.h"

#include "platform/grid.h"
#include "platform/numeric_text.h"
#include "processing/calibration_fit.h"

#include <QKeyEvent>
#include <QLineEdit>
#include <QPainter>
#include <QPixmap>
#include <QTabBar>

namespace lumora {
namespace {

// The picture of a fit tab: a straight line or a curve, through the origin or above it.
QIcon fit_picture(int fit_type) {
    QPixmap pm(32, 24);
    pm.fill(Qt::white);
    QPainter p(&pm);
    p.setPen(Qt::black);
    p.drawLine(3, 21, 30, 21);
    p.drawLine(3, 21, 3, 2);
    p.setPen(QPen(QColor(200, 0, 0), 2));
    const int y0 = fit_type == 2 || fit_type == 4 ? 15 : 21;
    QPointF last(3, y0);
    for (int x = 4; x <= 29; ++x) {
        const double t = (x - 3) / 26.0;
        const double rise = fit_type <= 2 ? t : t * t;
        const QPointF now(x, y0 - rise * (y0 - 3));
        p.drawLine(last, now);
        last = now;
    }
    return QIcon(pm);
}

} // namespace

QTabBar* make_fit_tabs(QWidget* parent) {
    auto* tabs = new QTabBar(parent);
    tabs->setObjectName(QStringLiteral("tspFit"));
    tabs->setToolTip(QStringLiteral("Select fit type"));
    tabs->setIconSize(QSize(32, 24));
    tabs->setUsesScrollButtons(false); // all four pictures in sight
    tabs->setExpanding(false);
    for (int t = 1; t <= 4; ++t) {
        tabs->addTab(fit_picture(t), QString());
        tabs->setTabToolTip(t - 1, QString::fromLatin1(fit_equation_setup(t)));
        tabs->setAccessibleTabName(t - 1, QString::fromLatin1(fit_equation_setup(t)));
    }
    return tabs;
}

bool hold_standard_number(QLineEdit* field) {
    const double v = val(field->text().toStdString());
    QString text;
    if (v < 1) text = QStringLiteral("1");
    if (v > max_standards) text = QString::number(max_standards);
    if (text.isEmpty() || text == field->text()) return false;
    field->setText(text);
    return true;
}

standards_keying::standards_keying(grid* g, std::function<void()> on_key)
    : QObject(g), g_(g), on_key_(std::move(on_key)) {
    g->installEventFilter(this);
    // Writing a cell may re-announce the same current cell: only a move to another cell counts.
    connect(g, &QTableWidget::currentCellChanged, this, [this](int row, int col) {
        if (row != entered_row_ || col != entered_col_) enter_cell();
    });
}

void standards_keying::enter_cell() {
    entered_row_ = g_->currentRow();
    entered_col_ = g_->currentColumn();
    first_key_ = true;
}

void standards_keying::key_press(QChar key) {
    const int r = g_->currentRow(), c = g_->currentColumn();
    if (r < 1 || c < 1) return;
    if (first_key_) {
        g_->setTextMatrix(r, c, QString());
        first_key_ = false;
    }
    if (key == QLatin1Char('-') || key == QLatin1Char('.') ||
        (key >= QLatin1Char('0') && key <= QLatin1Char('9')))
        g_->setTextMatrix(r, c, g_->TextMatrix(r, c) + key);
}

void standards_keying::key_down(int key_code) {
    if (on_key_) on_key_();
    if (key_code != 46) return;
    const int r = g_->currentRow(), c = g_->currentColumn();
    if (r < 1 || c < 1) return;
    const QString t = g_->TextMatrix(r, c);
    if (!t.isEmpty()) g_->setTextMatrix(r, c, t.left(t.size() - 1));
}

bool standards_keying::eventFilter(QObject* watched, QEvent* event) {
    if (watched != g_ || event->type() != QEvent::KeyPress) return false;
    auto* key = static_cast<QKeyEvent*>(event);
    // Only Delete has the key code 46 here; Qt's code of the full stop is 46 too.
    key_down(key->key() == Qt::Key_Delete ? 46 : 0);
    // Backspace and the other control keys arrive as characters too, and are refused there.
    const QString text = key->key() == Qt::Key_Backspace ? QString(QChar(8)) : key->text();
    if (!text.isEmpty() && key->key() != Qt::Key_Delete) key_press(text.at(0));
    const bool navigation = key->key() == Qt::Key_Up || key->key() == Qt::Key_Down ||
                            key->key() == Qt::Key_Left || key->key() == Qt::Key_Right ||
                            key->key() == Qt::Key_Tab || key->key() == Qt::Key_Backtab;
    return !navigation;
}

} // namespace lumora
