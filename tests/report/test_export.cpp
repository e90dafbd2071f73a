// The workbook export read back by openpyxl: sheets and their order, text cells in size 9, the
// name rule, and a failed write that leaves an existing workbook alone.
#include "platform/grid.h"
#include "platform/numeric_text.h"
#include "report/export_excel.h"
#include "report_fixture.h"

#include <QDir>
#include <QFile>

namespace lumora::test {
namespace {

class Export : public spectrum_fixture {
protected:
    QString export_as(const QString& answer) {
        prompts::script({}, {answer});
        prompts::clear_shown();
        return export_excel(*window_);
    }
    QString last_box() const { return prompts::shown().empty() ? QString() : prompts::shown().back().text; }
};

TEST_F(Export, SpectrumSheetsComeLastMadeFirstAsTextInSizeNine) {
    add_curve(1, 0.5);
    add_curve(2);
    window_->search_peak();
    window_->table_row_click(1, 1); // unticked rows travel all the same
    const QString path = export_as("holmium");
    ASSERT_EQ(path, QDir(data_.path()).filePath("holmium.xlsx"));
    EXPECT_EQ(last_box(), "File export to Excel completed.\nFile path " + path);
    EXPECT_EQ(prompts::shown().front().title, "Export data");
    EXPECT_EQ(prompts::shown().front().text, "Key in a file name to export.\n(Ex., myscan20030902)");

    const QJsonArray book = read_workbook(path);
    ASSERT_EQ(sheet_names(book),
              (QStringList{"Read data2", "Read data1", "Track data", "Peak data", "Valley data"}));
    for (const auto& s : book) {
        const QJsonObject o = s.toObject();
        if (o["rows"].toArray().isEmpty()) continue;
        EXPECT_EQ(o["sizes"].toArray(), QJsonArray{9}) << o["name"].toString().toStdString();
        EXPECT_EQ(o["types"].toArray(), QJsonArray{"str"}) << o["name"].toString().toStdString();
    }
    const QJsonArray read1 = sheet(book, "Read data1")["rows"].toArray();
    ASSERT_EQ(read1.size(), 771);
    EXPECT_EQ(read1[0].toArray(), (QJsonArray{"330nm", format_text(0.5 * holmium_like(330), "###.0000")}));
    EXPECT_EQ(read1[770].toArray()[0].toString(), "1100nm");
    const QJsonArray peak = sheet(book, "Peak data")["rows"].toArray();
    ASSERT_EQ(peak.size(), spectrum.peak_count + 1);
    const grid& g = window_->fgdPeak();
    for (int r = 0; r <= spectrum.peak_count; ++r)
        for (int c = 0; c < g.Cols(); ++c)
            EXPECT_EQ(peak[r].toArray()[c].toString(), g.TextMatrix(r, c)) << r << "," << c;
    EXPECT_TRUE(peak[1].toArray()[0].toString().startsWith("  X"));
}

TEST_F(Export, NameRuleCutsTrimsAndRefuses) {
    EXPECT_EQ(export_name(" run1.XLSX "), "run1");
    EXPECT_EQ(export_name("a.xls.more"), "a");
    EXPECT_EQ(export_name("  b  "), "b");
    EXPECT_EQ(export_name(".Xls"), "");
    add_curve(1);
    EXPECT_EQ(export_as("scan.XLS"), QDir(data_.path()).filePath("scan.xlsx"));
    EXPECT_TRUE(QFile::exists(data_.filePath("scan.xlsx")));

    for (const char* refused : {"   ", "", "a/b", "../up", ".hidden"}) {
        EXPECT_EQ(export_as(refused), QString()) << refused;
        ASSERT_EQ(prompts::shown().size(), 2u) << refused;
        EXPECT_EQ(prompts::shown().back().title, "System Message");
    }
    EXPECT_EQ(last_box(), "The file name may not hold \"/\" or \"\\\" or begin with \".\"!");
    export_as("  ");
    EXPECT_EQ(last_box(), "The batch name is blank or operation canceled!");
    EXPECT_EQ(QDir(data_.path()).entryList({"*.xlsx"}, QDir::Files | QDir::Hidden), QStringList{"scan.xlsx"});
}

TEST_F(Export, AFailedWriteWarnsAndKeepsTheOldWorkbook) {
    add_curve(1);
    ASSERT_FALSE(export_as("keep").isEmpty());
    QFile f(data_.filePath("keep.xlsx"));
    ASSERT_TRUE(f.open(QIODevice::ReadOnly));
    const QByteArray before = f.readAll();
    f.close();
    // Something in the way of the file being written: the export cannot complete.
    ASSERT_TRUE(QDir(data_.path()).mkdir(".keep.xlsx.part"));
    QFile(data_.filePath(".keep.xlsx.part/x")).open(QIODevice::WriteOnly);
    add_curve(2);
    EXPECT_EQ(export_as("keep"), QString());
    ASSERT_FALSE(prompts::shown().empty());
    EXPECT_EQ(prompts::shown().back().title, "Warning");
    EXPECT_TRUE(last_box().contains(data_.filePath("keep.xlsx")));
    QFile after(data_.filePath("keep.xlsx"));
    ASSERT_TRUE(after.open(QIODevice::ReadOnly));
    EXPECT_EQ(after.readAll(), before);
    EXPECT_EQ(sheet_names(read_workbook(data_.filePath("keep.xlsx"))).first(), "Read data1");
}

} // namespace
} // namespace lumora::test
