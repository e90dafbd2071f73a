#include "frmAbout.h"

#include "link/shared_state.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QLinearGradient>
#include <QPainter>
#include <QPixmap>
#include <QPushButton>
#include <QVBoxLayout>

#ifndef LUMORA_VERSION
#define LUMORA_VERSION "1.0.0"
#endif

namespace lumora {

QString version_text() {
    return QStringLiteral("Version ") + QStringLiteral(LUMORA_VERSION);
}

QPixmap program_picture(int size, qreal dpr) {
    QPixmap pm(static_cast<int>(size * dpr), static_cast<int>(size * dpr));
    pm.setDevicePixelRatio(dpr);
    pm.fill(Qt::transparent);
    QPainter p(&pm);
    p.setRenderHint(QPainter::Antialiasing);
    const qreal s = size;
    // Light entering from the left, dispersed into a spectrum after the cuvette.
    QLinearGradient rainbow(0.55 * s, 0, 0.95 * s, 0);
    const QColor stops[] = {QColor(120, 0, 200), QColor(0, 80, 255),  QColor(0, 200, 80),
                            QColor(255, 220, 0), QColor(255, 120, 0), QColor(220, 0, 0)};
    for (int i = 0; i < 6; ++i)
        rainbow.setColorAt(i / 5.0, stops[i]);
    p.setPen(Qt::NoPen);
    p.setBrush(QColor(255, 250, 220));
    p.drawRect(QRectF(0.05 * s, 0.46 * s, 0.35 * s, 0.08 * s));
    p.setBrush(rainbow);
    QPolygonF fan;
    fan << QPointF(0.55 * s, 0.46 * s) << QPointF(0.95 * s, 0.2 * s) << QPointF(0.95 * s, 0.8 * s)
        << QPointF(0.55 * s, 0.54 * s);
    p.drawPolygon(fan);
    p.setBrush(QColor(180, 220, 255, 200));
    p.setPen(QPen(QColor(40, 60, 90), 0.02 * s));
    p.drawRoundedRect(QRectF(0.38 * s, 0.25 * s, 0.18 * s, 0.5 * s), 0.03 * s, 0.03 * s);
    return pm;
}

frmAbout::frmAbout(QWidget* parent) : QDialog(parent) {
    setObjectName(QStringLiteral("frmAbout"));
    setWindowTitle(QStringLiteral("About ") + shared.software_name);
    auto* picture = new QLabel(this);
    picture->setObjectName(QStringLiteral("picIcon"));
    picture->setPixmap(program_picture(96, devicePixelRatioF()));
    auto* title =
        new QLabel(shared.product_name.isEmpty() ? shared.software_name : shared.product_name, this);
    title->setObjectName(QStringLiteral("lblTitle"));
    QFont f = title->font();
    f.setPointSize(f.pointSize() + 3);
    f.setBold(true);
    title->setFont(f);
    auto* version = new QLabel(version_text(), this);
    version->setObjectName(QStringLiteral("lblVersion"));
    auto* corp = new QLabel(shared.corporation_name, this);
    corp->setObjectName(QStringLiteral("lblCorporation"));
    auto* ok = new QPushButton(QStringLiteral("OK"), this);
    ok->setObjectName(QStringLiteral("cmdOk"));
    ok->setDefault(true);
    connect(ok, &QPushButton::clicked, this, &frmAbout::cmdOk_Click);
    auto* text = new QVBoxLayout;
    text->addWidget(title);
    text->addWidget(version);
    text->addWidget(corp);
    text->addStretch();
    text->addWidget(ok, 0, Qt::AlignRight);
    auto* layout = new QHBoxLayout(this);
    layout->addWidget(picture, 0, Qt::AlignTop);
    layout->addLayout(text);
}

} // namespace lumora
