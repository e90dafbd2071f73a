#include "frmSplash.h"

#include "frmAbout.h"

#include <QLabel>
#include <QVBoxLayout>

namespace lumora {

frmSplash::frmSplash(QWidget* parent) : QWidget(parent, Qt::SplashScreen | Qt::FramelessWindowHint) {
    setObjectName(QStringLiteral("frmSplash"));
    setAttribute(Qt::WA_DeleteOnClose);
    setStyleSheet(
        QStringLiteral("frmSplash, QWidget#frmSplash { background: #10223a; } QLabel { color: white; }"));
    auto* picture = new QLabel(this);
    picture->setPixmap(program_picture(160, devicePixelRatioF()));
    picture->setAlignment(Qt::AlignCenter);
    auto* product = new QLabel(QStringLiteral("Lumora UV/Vis"), this);
    product->setObjectName(QStringLiteral("lblProductName"));
    auto* version = new QLabel(version_text(), this);
    version->setObjectName(QStringLiteral("lblVersion"));
    QFont f(QStringLiteral("Verdana"));
    f.setPointSize(20);
    f.setBold(true);
    product->setFont(f);
    f.setPointSize(11);
    f.setBold(false);
    version->setFont(f);
    product->setAlignment(Qt::AlignCenter);
    version->setAlignment(Qt::AlignCenter);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(picture);
    layout->addWidget(product);
    layout->addWidget(version);
    setAutoFillBackground(true);
    QPalette pal = palette();
    pal.setColor(QPalette::Window, QColor(16, 34, 58));
    setPalette(pal);
    resize(420, 300);
}

} // namespace lumora
