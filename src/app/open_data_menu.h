#pragma once
// File > "Export data (CSV, JCAMP-DX)...": the active function's results as files for other
// programs, in the folder and format the user picks in a standard file dialog.
#include <QString>
#include <functional>

class QWidget;

namespace lumora {

class frmMain;

void export_open_data(frmMain& main);

// The save dialog: the proposed path and the filters in, the chosen path out ("" on Cancel) and the
// chosen filter in `filter`. Tests put their own answer here.
using save_dialog =
    std::function<QString(QWidget* parent, const QString& proposed, const QString& filters, QString* filter)>;
extern save_dialog open_data_dialog;

} // namespace lumora
