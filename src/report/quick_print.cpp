#include "quick_print.h"

#include "functions/dialog_parts.h"
#include "functions/function_window.h"
#include "link/link_context.h"
#include "link/shared_state.h"
#include "report_make.h"
#include "report_parts.h"
#include "report_registry.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QLabel>
#include <QLineEdit>
#include <QPrinter>
#include <QPrinterInfo>
#include <QTabWidget>

namespace lumora {

namespace {

QString box_text(const QWidget* w) {
    if (auto* e = qobject_cast<const QLineEdit*>(w)) return e->text();
    if (auto* c = qobject_cast<const QComboBox*>(w)) return c->currentText();
    if (auto* c = qobject_cast<const QCheckBox*>(w))
        return c->isChecked() ? QStringLiteral("Yes") : QStringLiteral("No");
    return {};
}

QString child_text(const QDialog& dialog, const QString& name) {
    return box_text(dialog.findChild<QWidget*>(name));
}

} // namespace

QStringList quick_parameter_lines(const QDialog& dialog) {
    const QString name = dialog.objectName();
    const auto* check2 = dialog.findChild<QCheckBox*>(QStringLiteral("Check2"));
    QStringList lines;
    if (name == QLatin1String("dlgPhotometry"))
        lines << QStringLiteral("Function = PHOTOMETRY");
    else if (name == QLatin1String("dlgTimescan"))
        lines << (check2 && check2->isChecked() ? QStringLiteral("Function = TIMESCAN-Fixed Interval")
                                                : QStringLiteral("Function = TIMESCAN-Fixed Span"));
    else if (name == QLatin1String("dlgKinetic"))
        lines << QStringLiteral("Function = KINETIC");
    else if (name == QLatin1String("dlgSpectrum"))
        lines << QStringLiteral("Function = SPECTRUM");
    else if (name == QLatin1String("dlgQuant"))
        lines << QStringLiteral("Function = QUANTITATIVE");
    const auto* tabs = dialog.findChild<QTabWidget*>();
    const QWidget* page = tabs ? tabs->widget(0) : nullptr;
    if (!page) return lines;
    // The captions in the order they were made, each with the box it names.
    for (const QLabel* label : page->findChildren<QLabel*>()) {
        const QWidget* box = label->buddy();
        if (!box) continue;
        const QString box_name = box->objectName();
        if (box_name.startsWith(QLatin1String("txtLambda_"))) {
            // Only the wavelengths in use: their boxes are enabled.
            if (!box->isEnabled()) continue;
            lines << QStringLiteral("WL") + QString::number(box_name.mid(10).toInt() + 1) +
                         QStringLiteral("=") + box_text(box);
            continue;
        }
        if (box_name == QLatin1String("txtInst_4") || box_name == QLatin1String("txtInst_5")) continue;
        lines << label->text() + box_text(box);
    }
    if (name == QLatin1String("dlgPhotometry") && check2 && check2->isChecked()) {
        lines << QStringLiteral("Advanced equation");
        lines << QStringLiteral("R=") + child_text(dialog, QStringLiteral("txtInst_4")) +
                     QStringLiteral("*(") + child_text(dialog, QStringLiteral("cmbWL_0")) +
                     child_text(dialog, QStringLiteral("cmbEqu_0")) +
                     child_text(dialog, QStringLiteral("cmbWL_1")) + QStringLiteral(")") +
                     child_text(dialog, QStringLiteral("cmbEqu_1")) +
                     child_text(dialog, QStringLiteral("txtInst_5")) + QStringLiteral("*(") +
                     child_text(dialog, QStringLiteral("cmbWL_2")) +
                     child_text(dialog, QStringLiteral("cmbEqu_2")) +
                     child_text(dialog, QStringLiteral("cmbWL_3")) + QStringLiteral(")");
    }
    return lines;
}

std::unique_ptr<report_page> quick_parameter_page(const QDialog& dialog) {
    auto page = std::make_unique<report_page>(1.0, report_flags{false, false});
    page->set_font_size(12);
    page->y = 100.0 * page->k();
    for (const QString& l : quick_parameter_lines(dialog)) {
        page->break_test();
        page->print_line(100.0 * page->k(), l);
    }
    return page;
}

std::unique_ptr<report_page> quick_graph_page(function_window& window) {
    auto page = std::make_unique<report_page>(1.0, report_flags{false, false});
    const report_piece* piece = report_piece_for(window.entry().function_id);
    if (piece && piece->graph) piece->graph(window, *page);
    return page;
}

std::unique_ptr<report_page> quick_data_page(function_window& window) {
    auto page = std::make_unique<report_page>(1.0, report_flags{false, false});
    page->y = 100.0 * page->k();
    const report_piece* piece = report_piece_for(window.entry().function_id);
    if (piece && piece->tables) piece->tables(window, *page);
    return page;
}

QString send_to_printer(const report_page& page, const QString& what, bool& ok, const QString& pdf_path) {
    QPrinter printer(QPrinter::HighResolution);
    QString path;
    if (!pdf_path.isEmpty() || QPrinterInfo::defaultPrinter().isNull()) {
        path = pdf_path.isEmpty() ? pdf_path_for(what) : pdf_path;
        printer.setOutputFormat(QPrinter::PdfFormat);
        printer.setOutputFileName(path);
    }
    ok = print_pages(page, printer);
    return path;
}

namespace {

void send(const report_page& page, const QString& what) {
    bool ok = false;
    const QString path = send_to_printer(page, what, ok);
    if (ok && !path.isEmpty()) set_panel(6, QStringLiteral("Printed to ") + path);
}

} // namespace

void QuickPrintParameter(QDialog* dialog) {
    if (dialog) send(*quick_parameter_page(*dialog), QStringLiteral("parameter"));
}

void QuickPrintGraph(function_window& window) {
    send(*quick_graph_page(window), QStringLiteral("graph"));
}

void QuickPrintData(function_window& window) {
    send(*quick_data_page(window), QStringLiteral("data"));
}

void install_quick_print() {
    quick_print.parameter = [](QDialog* dialog) { QuickPrintParameter(dialog); };
    quick_print.graph = [](QWidget* window) {
        if (auto* w = qobject_cast<function_window*>(window)) QuickPrintGraph(*w);
    };
    quick_print.data = [](QWidget* window) {
        if (auto* w = qobject_cast<function_window*>(window)) QuickPrintData(*w);
    };
}

} // namespace lumora
