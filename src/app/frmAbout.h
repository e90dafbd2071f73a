#pragma once
#include <QDialog>

namespace lumora {

// The about box: a picture and the version line.
class frmAbout : public QDialog {
    Q_OBJECT
public:
    explicit frmAbout(QWidget* parent = nullptr);
    void cmdOk_Click() { close(); }
};

// "Version " major.minor.revision of the program.
QString version_text();
// The program's picture: a beam through a cuvette, drawn at the requested size.
QPixmap program_picture(int size, qreal device_pixel_ratio);

} // namespace lumora
