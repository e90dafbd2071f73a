#pragma once
// "Select a batch name": the stored batches of one function, to pick one for loading, or to delete
// one name (under every function) or all batches of the kind (for every function).
#include "batches.h"
#include "database.h"

#include <QDialog>

class QPushButton;

namespace lumora {

class grid;

// The name just chosen ("" for none) and the table the dialog works on ("D" data, "P" parameter).
extern QString batch_name;
extern QString batch_mode;

class DlgLoadData : public QDialog {
    Q_OBJECT
public:
    // Lists the batches of `function` in the table of batch_mode.
    explicit DlgLoadData(const QString& function, QWidget* parent = nullptr);

    grid& msgData() const { return *list_; }
    QString selection() const { return selection_; }
    // A click on row `row` of the list (row 0 is the heading).
    void msgData_Click(int row);
    void OKButton_Click();
    void CancelButton_Click();
    void Command1_Click(int index); // 0 "Delete", 1 "Delete all"
    // Reads the names again.
    void fill_list();

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    batch_kind kind() const;
    // A store fault while deleting: the list stays as it was and the user is told.
    void report_fault(const db_error& e);

    QString function_;
    grid* list_ = nullptr;
    QString selection_;
    bool ok_pressed_ = false;
};

} // namespace lumora
