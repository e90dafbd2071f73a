#pragma once
#include <QWidget>

namespace lumora {

// The splash: product name and version over the program's picture, shown while settings load.
class frmSplash : public QWidget {
    Q_OBJECT
public:
    explicit frmSplash(QWidget* parent = nullptr);
};

} // namespace lumora
