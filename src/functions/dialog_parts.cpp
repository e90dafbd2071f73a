#include "dialog_parts.h"

#include "platform/grid.h"

#include <QBoxLayout>
#include <QCheckBox>
#include <QDialog>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTabBar>
#include <QTabWidget>

namespace lumora {

quick_print_hooks quick_print;

QLabel* buddy_label(const QString& text, QWidget* field, QWidget* parent, const QString& name) {
    auto* label = new QLabel(text, parent);
    label->setObjectName(name);
    label->setBuddy(field);
    return label;
}

void add_print_checks(const char* const* texts, std::size_t count, QWidget* parent, QBoxLayout* layout,
                      QCheckBox** out) {
    for (std::size_t i = 0; i < count; ++i) {
        auto* c = new QCheckBox(QString::fromLatin1(texts[i]), parent);
        c->setObjectName(QStringLiteral("Check1_%1").arg(i));
        out[i] = c;
        layout->addWidget(c);
    }
}

void add_report_tab(QTabWidget* tabs, std::array<QLineEdit*, 4>& texts, const char* const* prints,
                    std::size_t count, QCheckBox** checks, bool heading) {
    auto* report = new QWidget;
    report->setObjectName(QStringLiteral("Frame1_2"));
    auto* layout = new QVBoxLayout(report);
    auto* form = new QFormLayout;
    const char* labels[4] = {"Laboratory=", "Subject=", "Operator=", "Remark="};
    for (std::size_t i = 0; i < 4; ++i) {
        auto* t = new QLineEdit(report);
        t->setObjectName(QStringLiteral("txtReport_%1").arg(i));
        t->setToolTip(QStringLiteral("Enter text"));
        texts[i] = t;
        form->addRow(
            buddy_label(QString::fromLatin1(labels[i]), t, report, QStringLiteral("lblReport_%1").arg(i)), t);
    }
    layout->addLayout(form);
    if (heading) layout->addWidget(new QLabel(QStringLiteral("Additional printing:"), report));
    add_print_checks(prints, count, report, layout, checks);
    layout->addStretch();
    tabs->addTab(report, QStringLiteral("Report"));
}

void lay_out_setup_dialog(QDialog* dialog, QTabWidget* tabs, const dialog_buttons& b) {
    const auto button = [dialog](const char* text, const char* name, const std::function<void()>& action) {
        auto* p = new QPushButton(QString::fromLatin1(text), dialog);
        p->setObjectName(QString::fromLatin1(name));
        if (action) QObject::connect(p, &QPushButton::clicked, dialog, action);
        return p;
    };
    auto* row = new QHBoxLayout;
    row->addWidget(button("Quick print", "cmdQuickPrint", [dialog] {
        if (quick_print.parameter) quick_print.parameter(dialog);
    }));
    if (b.clear) row->addWidget(button("Clear data", "cmdClear", b.clear));
    row->addStretch();
    QPushButton* ok = button("OK", "cmdOk", b.ok);
    ok->setDefault(true);
    row->addWidget(ok);
    row->addWidget(button("Cancel", "cmdCancel", b.cancel));
    auto* layout = new QVBoxLayout(dialog);
    layout->addWidget(tabs);
    layout->addLayout(row);
}

QBoxLayout* quick_print_buttons(QWidget* window, bool graph) {
    auto* row = new QHBoxLayout;
    const auto add = [&](int index, const QString& purpose, void (*print)(QWidget*)) {
        auto* p = new QPushButton(QStringLiteral("Quick print"), window);
        p->setObjectName(QStringLiteral("cmdQuickPrint_%1").arg(index));
        p->setAccessibleDescription(purpose); // two buttons share the caption
        QObject::connect(p, &QPushButton::clicked, window, [window, print] { print(window); });
        row->addWidget(p);
    };
    if (graph)
        add(0, QStringLiteral("Prints the graph alone"), [](QWidget* w) {
            if (quick_print.graph) quick_print.graph(w);
        });
    add(1, QStringLiteral("Prints the tables alone"), [](QWidget* w) {
        if (quick_print.data) quick_print.data(w);
    });
    row->addStretch();
    return row;
}

void add_table_frames(QWidget* window, QTabBar* tabs, QBoxLayout* layout, int stretch, std::size_t count,
                      const char* const* captions, const char* const* names, grid** tables,
                      QWidget** frames) {
    for (std::size_t i = 0; i < count; ++i) {
        if (captions) tabs->addTab(QString::fromLatin1(captions[i]));
        auto* frame = new QWidget(window);
        frame->setObjectName(QStringLiteral("Frame1_%1").arg(i));
        auto* frame_layout = new QVBoxLayout(frame);
        frame_layout->setContentsMargins(0, 0, 0, 0);
        auto* g = new grid(frame);
        g->setObjectName(QString::fromLatin1(names[i]));
        frame_layout->addWidget(g);
        tables[i] = g;
        frames[i] = frame;
        layout->addWidget(frame, stretch);
    }
}

void show_only_frame(QWidget* const* frames, std::size_t count, int index) {
    for (std::size_t i = 0; i < count; ++i)
        frames[i]->setVisible(static_cast<int>(i) == index);
}

} // namespace lumora
