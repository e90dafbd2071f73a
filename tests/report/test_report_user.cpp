// The user's way on a holmium Spectrum with peaks, through the main window's menu and toolbar:
// the preview at 0.5, Print to a PDF in the data folder with no printer installed, and the export.
#include "report/frmReport.h"
#include "report_fixture.h"
#include "spectrum_rig.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QLabel>
#include <QPrinterInfo>

namespace lumora::test {
namespace {

frmReport* open_preview() {
    for (QWidget* w : QApplication::topLevelWidgets())
        if (auto* r = qobject_cast<frmReport*>(w); r && r->isVisible()) return r;
    return nullptr;
}

TEST(ReportUser, HolmiumSpectrumToPreviewPaperAndWorkbook) {
    QTemporaryDir data;
    qputenv("LUMORA_DATA_DIR", data.path().toLocal8Bit());
    prompts::script({}, {"holmium"});
    spectrum_rig s;
    s.set_range(330, 1100, false, 1.2);
    ASSERT_TRUE(s.scan(2));
    s.rig.instrument.control("sample holmium");
    ASSERT_TRUE(s.scan(3));
    s.window->search_peak();
    ASSERT_GE(spectrum.peak_count, 4);
    spectrum_setup.print_flags.fill(1);

    // "Report" from the menu: the preview at 0.5, grey bands between its pages.
    s.rig.window->menu_action("mnuFilePrintPreview")->trigger();
    frmReport* preview = open_preview();
    ASSERT_NE(preview, nullptr);
    EXPECT_EQ(preview->windowTitle(), "Report");
    EXPECT_DOUBLE_EQ(preview->report_scale(), 0.5);
    EXPECT_GE(preview->page()->pages(), 5);
    preview->zoom_in();
    preview->page_down();
    EXPECT_LT(preview->picReport()->y(), 0);
    preview->close();
    QApplication::processEvents();

    // "Print": with no printer installed, a PDF in the data folder, its path in panel 6.
    if (!QPrinterInfo::defaultPrinter().isNull()) GTEST_SKIP() << "a printer is installed here";
    s.rig.window->menu_action("mnuFilePrint")->trigger();
    const QString panel = s.rig.panel(6);
    ASSERT_TRUE(panel.startsWith("Printed to " + data.path())) << panel.toStdString();
    const QString pdf = panel.mid(QStringLiteral("Printed to ").size());
    EXPECT_EQ(pdf_pages(pdf), report_make(*s.window, 1.0)->pages());
    keep_for_look(pdf, "holmium_report.pdf");
    const QString text = pdf_page_texts(pdf).join('\n');
    EXPECT_TRUE(text.contains("Peak data"));
    EXPECT_TRUE(text.contains("1100nm"));

    // File > "Data export to Excel".
    prompts::clear_shown();
    s.rig.window->menu_action("mnuFileExport")->trigger();
    const QString path = QDir(data.path()).filePath("holmium.xlsx");
    ASSERT_EQ(prompts::shown().size(), 2u);
    EXPECT_EQ(prompts::shown()[1].text, "File export to Excel completed.\nFile path " + path);
    EXPECT_EQ(s.rig.panel(6), "OK");
    bool exporting_said = false;
    for (const auto& w : s.rig.writes)
        exporting_said |= w.panel == 6 && w.text == "Exporting data, please wait...";
    EXPECT_TRUE(exporting_said);
    const QJsonArray book = read_workbook(path);
    EXPECT_EQ(sheet_names(book), (QStringList{"Read data1", "Track data", "Peak data", "Valley data"}));
    const QJsonArray read = sheet(book, "Read data1")["rows"].toArray();
    ASSERT_EQ(read.size(), 771);
    EXPECT_EQ(read[0].toArray()[0].toString(), "330nm");
    EXPECT_EQ(read[770].toArray()[0].toString(), "1100nm");

    // A printer that cannot start (here: the PDF's folder cannot be made) answers through the menu.
    QFile blocker(data.filePath("not_a_folder"));
    ASSERT_TRUE(blocker.open(QIODevice::WriteOnly));
    blocker.close();
    qputenv("LUMORA_DATA_DIR", data.filePath("not_a_folder/sub").toLocal8Bit());
    prompts::clear_shown();
    s.rig.window->toolbar_button(16)->trigger(); // "Print"
    ASSERT_EQ(prompts::shown().size(), 1u);
    EXPECT_EQ(prompts::shown()[0].title, "Warning");
    EXPECT_EQ(prompts::shown()[0].text, "Printer failed, please check the printer!");
    qputenv("LUMORA_DATA_DIR", data.path().toLocal8Bit());
    prompts::unscript();
}

} // namespace
} // namespace lumora::test
