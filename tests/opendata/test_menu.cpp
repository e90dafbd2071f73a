// File > "Export data (CSV, JCAMP-DX)...": where it sits, what it says when there is nothing to
// write, the format from the chosen filter, and a folder that refuses the file.
#include "app/frmMain.h"
#include "app/open_data_menu.h"
#include "functions/function_window.h"
#include "functions/spectrum/spectrum_data.h"
#include "functions/spectrum/spectrum_setup.h"
#include "link/shared_state.h"
#include "opendata/jcamp.h"
#include "platform/comm_port.h"
#include "platform/prompts.h"

#include <QAction>
#include <QDir>
#include <QFile>
#include <QMenu>
#include <QTemporaryDir>
#include <gtest/gtest.h>

using namespace lumora;

namespace {

struct export_menu : ::testing::Test {
    std::unique_ptr<frmMain> window;
    QTemporaryDir dir;
    QString answer;        // the path the dialog gives
    QString answer_filter; // and its filter
    QStringList offered;
    void SetUp() override {
        reset_shared_state();
        shared.function_id = fid_no_function;
        window = std::make_unique<frmMain>(std::make_unique<memory_backend>());
        window->Form_Load();
        window->enable_menus();
        prompts::script();
        prompts::clear_shown();
        open_data_dialog = [this](QWidget*, const QString&, const QString& filters, QString* filter) {
            offered = filters.split(QStringLiteral(";;"));
            if (!answer_filter.isEmpty()) *filter = answer_filter;
            return answer;
        };
    }
    void TearDown() override {
        prompts::unscript();
        window.reset();
    }
    void spectrum_with_two_curves() {
        window->menu_action("mnuFuncSpectrum")->trigger();
        window->current_setup_dialog()->accept();
        spectrum_setup.spectrum_mode = 0;
        spectrum_setup.start_lambda = 500;
        spectrum_setup.stop_lambda = 504;
        std::vector<batch_row> rows;
        for (const batch_row& r : window->current_function()->parameter_rows())
            rows.push_back(r);
        for (int set = 1; set <= 2; ++set)
            for (int nm = 500; nm <= 504; ++nm)
                rows.push_back({QStringLiteral("D"), nm, stored_text(set / 4.0), set});
        window->current_function()->load_result(rows);
    }
    QAction* item() const { return window->menu_action(QStringLiteral("mnuFileOpenData")); }
};

} // namespace

TEST_F(export_menu, SitsUnderTheWorkbookExportAndTellsWhenThereIsNothingToWrite) {
    ASSERT_NE(item(), nullptr);
    EXPECT_EQ(item()->text(), QStringLiteral("Export data (CSV, JCAMP-DX)..."));
    const QList<QAction*> file = window->findChild<QMenu*>(QStringLiteral("mnuFile"))->actions();
    const qsizetype at = file.indexOf(window->menu_action(QStringLiteral("mnuFileExport")));
    ASSERT_GE(at, 0);
    EXPECT_EQ(file.value(at + 1), item());

    item()->trigger();
    window->menu_action("mnuFuncSpectrum")->trigger();
    window->current_setup_dialog()->accept();
    item()->trigger();
    ASSERT_EQ(prompts::shown().size(), 2u);
    EXPECT_EQ(prompts::shown()[0].text, QStringLiteral("The function is not available!"));
    EXPECT_EQ(prompts::shown()[1].text, QStringLiteral("The data is empty!"));
    EXPECT_TRUE(offered.isEmpty()); // no dialog without data
}

TEST_F(export_menu, TheChosenFilterGivesTheFormatAndTheNameTheFiles) {
    spectrum_with_two_curves();
    answer = dir.path() + "/../" + QDir(dir.path()).dirName() + "/scan.jdx";
    answer_filter = QStringLiteral("JCAMP-DX, all curves in one file (*.jdx)");
    item()->trigger();
    EXPECT_EQ(offered.size(), 3);
    EXPECT_TRUE(prompts::shown().empty());
    QFile f(dir.path() + "/scan.jdx");
    ASSERT_TRUE(f.open(QIODevice::ReadOnly));
    const auto blocks = opendata::read_jcamp(f.readAll());
    ASSERT_EQ(blocks.size(), 2u);
    EXPECT_EQ(blocks[1].y, (std::vector<double>(5, 0.5)));

    answer_filter = QStringLiteral("JCAMP-DX, a file per curve (*.jdx)");
    answer = dir.path() + "/each";
    item()->trigger();
    EXPECT_TRUE(QFile::exists(dir.path() + "/each-1.jdx"));
    EXPECT_TRUE(QFile::exists(dir.path() + "/each-2.jdx"));
}

TEST_F(export_menu, AFileThatCannotBeWrittenIsAWarningWithItsPath) {
    spectrum_with_two_curves();
    ASSERT_TRUE(QDir(dir.path()).mkdir(QStringLiteral("taken.csv")));
    answer = dir.path() + "/taken.csv";
    answer_filter = QStringLiteral("CSV table (*.csv)");
    item()->trigger();
    ASSERT_EQ(prompts::shown().size(), 1u);
    EXPECT_EQ(prompts::shown()[0].title, QStringLiteral("Warning"));
    EXPECT_TRUE(prompts::shown()[0].text.contains(QDir::toNativeSeparators(dir.path() + "/taken.csv")));
    EXPECT_EQ(QDir(dir.path()).entryList(QDir::Files), QStringList());
}
