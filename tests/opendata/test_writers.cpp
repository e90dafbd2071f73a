// The plain writers: JCAMP-DX files compared byte for byte with files written by hand from the
// format's rules, the reader on them and on another program's factors, CSV quoting and reading
// back, the decimal mark under a German locale, and file names and replacement on disk.
#include "opendata/csv.h"
#include "opendata/file_out.h"
#include "opendata/jcamp.h"
#include "opendata/number_text.h"

#include <QDir>
#include <QFile>
#include <QLocale>
#include <QTemporaryDir>
#include <clocale>
#include <gtest/gtest.h>

using namespace lumora::opendata;

namespace {

jcamp_spectrum short_spectrum() {
    jcamp_spectrum s;
    s.title = QStringLiteral("short");
    s.labels = {{QStringLiteral("ORIGIN"), QStringLiteral("Lab A")},
                {QStringLiteral("OWNER"), QStringLiteral("J. Doe")},
                {QStringLiteral("LONGDATE"), QStringLiteral("2026-11-24T18:30:00+01:00")},
                {QStringLiteral("SPECTROMETER/DATA SYSTEM"), QStringLiteral("UV/Vis spectrophotometer")},
                {QStringLiteral("$SCAN SPEED"), QStringLiteral("Normal")}};
    s.firstx = 400;
    s.y = {0.5, 0.25, 1.125, -0.0625, 2};
    return s;
}

QByteArray crlf(const char* text) {
    return QByteArray(text).replace("\n", "\r\n");
}

QByteArray read_all(const QString& path) {
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

} // namespace

TEST(Jcamp, ShortSpectrumIsTheHandWrittenFile) {
    EXPECT_EQ(jcamp_text(short_spectrum()), crlf("##TITLE=short\n"
                                                 "##JCAMP-DX=5.01\n"
                                                 "##DATA TYPE=UV/VIS SPECTRUM\n"
                                                 "##ORIGIN=Lab A\n"
                                                 "##OWNER=J. Doe\n"
                                                 "##LONGDATE=2026-11-24T18:30:00+01:00\n"
                                                 "##SPECTROMETER/DATA SYSTEM=UV/Vis spectrophotometer\n"
                                                 "##$SCAN SPEED=Normal\n"
                                                 "##XUNITS=NANOMETERS\n"
                                                 "##YUNITS=ABSORBANCE\n"
                                                 "##FIRSTX=400\n"
                                                 "##LASTX=404\n"
                                                 "##DELTAX=1\n"
                                                 "##NPOINTS=5\n"
                                                 "##XFACTOR=1\n"
                                                 "##YFACTOR=1\n"
                                                 "##FIRSTY=0.5\n"
                                                 "##XYDATA=(X++(Y..Y))\n"
                                                 "400 0.5 0.25 1.125 -0.0625 2\n"
                                                 "##END=\n"));
}

TEST(Jcamp, LongLinesWrapAt80WithTheXOfTheirFirstValueAndLabelsAreCut) {
    jcamp_spectrum s;
    s.title = QString(100, QLatin1Char('T'));
    s.yunits = QStringLiteral("TRANSMITTANCE");
    s.firstx = 400;
    s.y.assign(10, 0.0123456789012);
    const QByteArray text = jcamp_text(s);
    const QByteArray v = "0.0123456789012";
    EXPECT_TRUE(text.startsWith("##TITLE=" + QByteArray(72, 'T') + "\r\n"));
    EXPECT_TRUE(text.contains("##YUNITS=TRANSMITTANCE\r\n"));
    EXPECT_TRUE(text.contains("##XYDATA=(X++(Y..Y))\r\n"
                              "400 " +
                              v + " " + v + " " + v + " " + v +
                              "\r\n"
                              "404 " +
                              v + " " + v + " " + v + " " + v +
                              "\r\n"
                              "408 " +
                              v + " " + v +
                              "\r\n"
                              "##END=\r\n"));
    for (const QByteArray& line : text.split('\n'))
        EXPECT_LE(line.size(), 81) << line.constData(); // 80 and the CR
}

TEST(Jcamp, CompoundFileHoldsABlockPerCurveAndReadsBackAsThem) {
    jcamp_spectrum a = short_spectrum(), b = short_spectrum();
    a.labels.clear();
    b.labels.clear();
    b.title = QStringLiteral("second");
    b.y = {1, 2};
    const QByteArray text = jcamp_compound_text(
        QStringLiteral("both"), {{QStringLiteral("ORIGIN"), QStringLiteral("Lab A")}}, {a, b});
    EXPECT_TRUE(
        text.startsWith(crlf("##TITLE=both\n##JCAMP-DX=5.01\n##DATA TYPE=LINK\n##BLOCKS=2\n##ORIGIN=Lab A\n"
                             "##TITLE=short\n##JCAMP-DX=5.01\n##DATA TYPE=UV/VIS SPECTRUM\n##BLOCK_ID=1\n")));
    EXPECT_TRUE(text.endsWith(crlf("##XYDATA=(X++(Y..Y))\n400 1 2\n##END=\n##END=\n")));
    QString error;
    const auto blocks = read_jcamp(text, &error);
    EXPECT_EQ(error, QString());
    ASSERT_EQ(blocks.size(), 2u);
    EXPECT_EQ(blocks[0].y, a.y);
    EXPECT_EQ(blocks[1].label(QStringLiteral("BLOCK_ID")), QStringLiteral("2"));
    EXPECT_EQ(blocks[1].x, (std::vector<double>{400, 401}));
}

TEST(Jcamp, ReaderAppliesAnotherProgramsFactorsAndRefusesWhatItCannotRead) {
    const QByteArray other =
        crlf("##TITLE=other\n##JCAMP-DX=4.24\n##DATA TYPE=UV/VIS SPECTRUM\n"
             "##XUNITS=NANOMETERS\n##YUNITS=ABSORBANCE\n##XFACTOR=0.5\n##YFACTOR=0.001\n"
             "##DELTAX=2\n##XYDATA=(X++(Y..Y)) $$ checked\n1000 250 500\n1004,125\n##END=\n");
    const auto blocks = read_jcamp(other);
    ASSERT_EQ(blocks.size(), 1u);
    EXPECT_EQ(blocks[0].x, (std::vector<double>{500, 502, 502}));
    ASSERT_EQ(blocks[0].y.size(), 3u);
    EXPECT_DOUBLE_EQ(blocks[0].y[1], 0.5);
    EXPECT_DOUBLE_EQ(blocks[0].y[2], 0.125);

    QString error;
    EXPECT_TRUE(read_jcamp(crlf("##TITLE=x\n##XYDATA=(X++(Y..Y))\n400 1,5 ?\n##END=\n"), &error).empty());
    EXPECT_TRUE(error.contains(QStringLiteral("line 3"))) << error.toStdString();
    read_jcamp(crlf("##TITLE=x\n##XYDATA=(XY..XY)\n400, 1\n##END=\n"), &error);
    EXPECT_TRUE(error.contains(QStringLiteral("(XY..XY)"))) << error.toStdString();
    read_jcamp(crlf("##TITLE=x\n##XYDATA=(X++(Y..Y))\n400 1\n"), &error);
    EXPECT_TRUE(error.contains(QStringLiteral("##END="))) << error.toStdString();
}

TEST(Csv, FieldsAreQuotedAsTheRulesSayAndReadBackWhole) {
    csv_table t;
    t.context = {{QStringLiteral("laboratory"), QStringLiteral("O'Brien, 2nd floor")},
                 {QStringLiteral("remark"), QStringLiteral("two\nlines")}};
    t.header = {QStringLiteral("Wavelength (nm)"), QStringLiteral("Curve 1 Absorbance")};
    t.rows = {{QStringLiteral("400"), QStringLiteral("0.5")},
              {QStringLiteral("#1"), QStringLiteral("say \"hi\", then\r\nleave")},
              {QStringLiteral("Grüße"), QString()}};
    const QByteArray text = csv_text(t);
    EXPECT_EQ(text, QStringLiteral("# laboratory: O'Brien, 2nd floor\r\n# remark: two lines\r\n"
                                   "Wavelength (nm),Curve 1 Absorbance\r\n400,0.5\r\n"
                                   "\"#1\",\"say \"\"hi\"\", then\r\nleave\"\r\nGrüße,\r\n")
                        .toUtf8());
    QString error;
    const csv_table back = read_csv(text, &error);
    EXPECT_EQ(error, QString());
    EXPECT_EQ(back.header, t.header);
    EXPECT_EQ(back.rows, t.rows);
    ASSERT_EQ(back.context.size(), 2u);
    EXPECT_EQ(back.context[0].second, QStringLiteral("O'Brien, 2nd floor"));
    read_csv("a,\"open\r\n", &error);
    EXPECT_FALSE(error.isEmpty());
}

TEST(Numbers, KeepFullPrecisionAndAPointUnderAGermanLocale) {
    ASSERT_NE(std::setlocale(LC_ALL, "de_DE.UTF-8"), nullptr) << "scripts/install-deps makes de_DE.UTF-8";
    QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));
    const double values[] = {0.1, 1.0 / 3, -2.5e-7, 4.5, 123456.789, 1e-300};
    for (double v : values) {
        double back = 0;
        EXPECT_TRUE(parse_number(exact_text(v), back));
        EXPECT_EQ(back, v);
        EXPECT_TRUE(parse_number(plain_text(v), back));
        EXPECT_EQ(back, v);
        EXPECT_FALSE(exact_text(v).contains(QLatin1Char(',')));
    }
    EXPECT_EQ(exact_text(1.0 / 3), QStringLiteral("0.3333333333333333"));
    EXPECT_EQ(plain_text(-2.5e-7), QStringLiteral("-0.00000025"));
    EXPECT_EQ(seconds_text(3 * 0.1), QStringLiteral("0.3"));
    jcamp_spectrum s = short_spectrum();
    s.y = {1.25};
    EXPECT_TRUE(jcamp_text(s).contains("\r\n400 1.25\r\n"));
    double v = 0;
    EXPECT_FALSE(parse_number(QStringLiteral("1,25"), v));
    QLocale::setDefault(QLocale::c());
    std::setlocale(LC_ALL, "C");
}

TEST(Files, NamesStayInsideTheFolder) {
    EXPECT_EQ(safe_file_name(QStringLiteral("../../etc/passwd")), QStringLiteral("______etc_passwd"));
    EXPECT_EQ(safe_file_name(QStringLiteral(".hidden")), QStringLiteral("hidden"));
    EXPECT_EQ(safe_file_name(QStringLiteral("..")), QStringLiteral("__"));
    EXPECT_EQ(safe_file_name(QStringLiteral("a\\b:c\nd")), QStringLiteral("a_b_c_d"));
    EXPECT_EQ(safe_file_name(QStringLiteral("  ")), QStringLiteral("data"));
    EXPECT_EQ(safe_file_name(QStringLiteral("scan-1.jdx")), QStringLiteral("scan-1.jdx"));

    QTemporaryDir dir;
    ASSERT_EQ(write_atomic(dir.path() + "/inner", {QStringLiteral("x.csv"), "a"}).isEmpty(), false);
    ASSERT_TRUE(QDir(dir.path()).mkdir(QStringLiteral("inner")));
    EXPECT_EQ(write_atomic(dir.path() + "/inner", {QStringLiteral("../x.csv"), "inside"}), QString());
    EXPECT_EQ(read_all(dir.path() + "/inner/___x.csv"), "inside");
    EXPECT_FALSE(QFile::exists(dir.path() + "/x.csv"));
}

TEST(Files, AFileIsReplacedOnlyByACompleteOneAndAFailureSaysWhereAndWhy) {
    QTemporaryDir dir;
    const QString folder = dir.path();
    ASSERT_EQ(write_all(folder, {{QStringLiteral("a.csv"), "old"}}), QString());
    EXPECT_EQ(write_all(folder, {{QStringLiteral("a.csv"), "new and longer"}}), QString());
    EXPECT_EQ(read_all(folder + "/a.csv"), "new and longer");

    // A name taken by a folder cannot be replaced; nothing is left half-written beside it.
    ASSERT_TRUE(QDir(folder).mkdir(QStringLiteral("b.csv")));
    const QString why =
        write_all(folder, {{QStringLiteral("a.csv"), "third"}, {QStringLiteral("b.csv"), "x"}});
    EXPECT_TRUE(why.startsWith(QDir::toNativeSeparators(folder + "/b.csv") + ": ")) << why.toStdString();
    EXPECT_EQ(QDir(folder).entryList(QDir::Files), QStringList{QStringLiteral("a.csv")});

    // A folder without write permission (root writes anyway: then only the first part holds).
    ASSERT_TRUE(QFile::setPermissions(folder, QFileDevice::ReadOwner | QFileDevice::ExeOwner));
    const QString refused = write_all(folder, {{QStringLiteral("a.csv"), "fourth"}});
    const bool root_writes = refused.isEmpty();
    QFile::setPermissions(folder, QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
    if (!root_writes) {
        EXPECT_TRUE(refused.contains(QDir::toNativeSeparators(folder + "/a.csv"))) << refused.toStdString();
        EXPECT_EQ(read_all(folder + "/a.csv"), "third");
    }
}
