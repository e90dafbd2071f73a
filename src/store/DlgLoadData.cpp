#include "DlgLoadData.h"

#include "database.h"
#include "platform/grid.h"
#include "platform/prompts.h"

#include <QCloseEvent>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLocale>
#include <QPushButton>
#include <QVBoxLayout>

namespace lumora {

QString batch_name;
QString batch_mode;

DlgLoadData::DlgLoadData(const QString& function, QWidget* parent) : QDialog(parent), function_(function) {
    setObjectName(QStringLiteral("DlgLoadData"));
    setWindowTitle(QStringLiteral("Select a batch name"));
    setAttribute(Qt::WA_DeleteOnClose);
    list_ = new grid(this);
    list_->setObjectName(QStringLiteral("msgData"));
    list_->setAccessibleName(QStringLiteral("Batch Name"));
    list_->setCols(1);
    list_->horizontalHeader()->setStretchLastSection(true);
    list_->setSelectionBehavior(QAbstractItemView::SelectRows);
    connect(list_, &QTableWidget::cellClicked, this, [this](int row, int) { msgData_Click(row); });

    auto make_button = [this](const char* name, const char* caption) {
        auto* b = new QPushButton(QString::fromLatin1(caption), this);
        b->setObjectName(QString::fromLatin1(name));
        return b;
    };
    QPushButton* ok = make_button("OKButton", "OK");
    QPushButton* cancel = make_button("CancelButton", "Cancel");
    QPushButton* remove = make_button("Command1_0", "Delete");
    QPushButton* remove_all = make_button("Command1_1", "Delete all");
    ok->setDefault(true);
    connect(ok, &QPushButton::clicked, this, &DlgLoadData::OKButton_Click);
    connect(cancel, &QPushButton::clicked, this, &DlgLoadData::CancelButton_Click);
    connect(remove, &QPushButton::clicked, this, [this] { Command1_Click(0); });
    connect(remove_all, &QPushButton::clicked, this, [this] { Command1_Click(1); });

    auto* buttons = new QVBoxLayout;
    for (QPushButton* b : {ok, cancel, remove, remove_all})
        buttons->addWidget(b);
    buttons->addStretch();
    auto* layout = new QHBoxLayout(this);
    layout->addWidget(list_, 1);
    layout->addLayout(buttons);
    resize(420, 300);
    fill_list();
}

batch_kind DlgLoadData::kind() const {
    return batch_mode == QLatin1String("P") ? batch_kind::parameter : batch_kind::data;
}

void DlgLoadData::fill_list() {
    std::vector<batch_header> names;
    try {
        names = batch_list(kind(), function_);
    } catch (const db_error& e) {
        report_fault(e);
    }
    list_->setRows(1);
    list_->setTextMatrix(0, 0, QStringLiteral("Batch Name"));
    if (QTableWidgetItem* heading = list_->item(0, 0)) {
        heading->setTextAlignment(Qt::AlignLeft | Qt::AlignVCenter);
        heading->setFlags(Qt::ItemIsEnabled);
        QFont bold = heading->font();
        bold.setBold(true);
        heading->setFont(bold);
    }
    selection_.clear();
    batch_name.clear();
    if (names.empty()) return;
    selection_ = names.front().name;
    batch_name = selection_;
    for (const batch_header& h : names) {
        list_->AddItem(h.name);
        QString tip;
        if (!h.saved_by.isEmpty() || !h.host.isEmpty())
            tip = QStringLiteral("Saved by %1 on %2").arg(h.saved_by, h.host);
        if (h.saved_at.isValid())
            tip += QStringLiteral(", %1").arg(
                QLocale().toString(h.saved_at.toLocalTime(), QLocale::ShortFormat));
        if (tip.isEmpty()) tip = QStringLiteral("Saved before the program kept who saved a batch");
        if (QTableWidgetItem* it = list_->item(list_->Rows() - 1, 0)) it->setToolTip(tip);
    }
    list_->selectRow(1);
}

void DlgLoadData::msgData_Click(int row) {
    if (row < 1 || row >= list_->Rows()) return;
    selection_ = list_->TextMatrix(row, 0);
    batch_name = selection_;
}

void DlgLoadData::OKButton_Click() {
    ok_pressed_ = true;
    close();
}

void DlgLoadData::CancelButton_Click() {
    batch_name.clear();
    selection_.clear();
    close();
}

void DlgLoadData::closeEvent(QCloseEvent* event) {
    if (!ok_pressed_) {
        batch_name.clear();
        selection_.clear();
    }
    QDialog::closeEvent(event);
}

void DlgLoadData::Command1_Click(int index) {
    const QString title = QStringLiteral("System Message");
    try {
        if (index == 0) {
            if (list_->Rows() <= 1 || selection_.isEmpty()) return;
            if (prompts::message_box(QStringLiteral("Are you sure to delete this batch name ?"),
                                     box_icon::question, title, box_buttons::ok_cancel) != box_answer::ok)
                return;
            batch_delete(kind(), selection_);
        } else {
            if (prompts::message_box(QStringLiteral("Are you sure to delete entire batch ?"),
                                     box_icon::question, title, box_buttons::ok_cancel) != box_answer::ok)
                return;
            batch_delete_all(kind());
        }
    } catch (const db_error& e) {
        report_fault(e);
        return;
    }
    fill_list();
}

void DlgLoadData::report_fault(const db_error& e) {
    prompts::message_box(store_fault_text(e, QStringLiteral("The batch store could not be used: ")),
                         box_icon::exclamation, QStringLiteral("System Message"));
}

} // namespace lumora
