#include "platform/numeric_text.h"

#include <clocale>
#include <cmath>
#include <gtest/gtest.h>
#include <string>

using lumora::cint;
using lumora::fix;
using lumora::format_number;
using lumora::format_text;
using lumora::val;

struct format_row {
    double x;
    const char* pattern;
    const char* expected;
};

class FormatNumber : public ::testing::TestWithParam<format_row> {};

TEST_P(FormatNumber, MatchesTheDisplayedText) {
    const auto& r = GetParam();
    EXPECT_EQ(format_number(r.x, r.pattern), r.expected) << r.x << " with \"" << r.pattern << '"';
}

INSTANTIATE_TEST_SUITE_P(
    Patterns, FormatNumber,
    ::testing::Values(
        // readings
        format_row{0.0, "#0.000", "0.000"}, format_row{0.1234, "#0.000", "0.123"},
        format_row{-0.3, "#0.000", "-0.300"}, format_row{4.5, "#0.0000", "4.5000"},
        format_row{12.3456, "#0.000", "12.346"}, format_row{-0.0004, "#0.000", "0.000"},
        format_row{0.0005, "#0.000", "0.001"}, format_row{-0.0005, "#0.000", "-0.001"},
        format_row{2.675, "0.00", "2.68"}, format_row{1.005, "0.00", "1.01"},
        format_row{99.95, "#0.0", "100.0"}, format_row{9.9999, "#0.00", "10.00"},
        format_row{100.0, "##0.00", "100.00"}, format_row{5.5, "##0.00", "5.50"},
        // '#' positions disappear when not significant
        format_row{0.5, "###.00", ".50"}, format_row{0.0, "###.00", ".00"},
        format_row{0.12345, "###.0000", ".1235"}, format_row{123.4, "###.00", "123.40"},
        // wider than the pattern: the integer part is never cut
        format_row{123456.78, "#0.0", "123456.8"}, format_row{12345.0, "###0nm", "12345nm"},
        // wavelengths and literals
        format_row{500.0, "###0nm", "500nm"}, format_row{656.1, "###0.00nm", "656.10nm"},
        format_row{-14.04, "0.0nm", "-14.0nm"}, format_row{499.5, "###0nm", "500nm"},
        format_row{500.4, "0nm", "500nm"}, format_row{0.123, "#0.000A", "0.123A"},
        format_row{5.0, "      ###0", "      5"}, format_row{1100.0, "      ###0", "      1100"},
        format_row{7.0, "000", "007"}, format_row{790.0, "000", "790"},
        // times
        format_row{12.25, "#0.0 sec", "12.3 sec"}, format_row{3.04, "###0.0sec", "3.0sec"},
        format_row{-2.5, "###0.0sec", "-2.5sec"}, format_row{30.0, "0 sec", "30 sec"},
        format_row{0.45, "0", "0"}, format_row{2.5, "0", "3"}, format_row{-2.5, "0", "-3"},
        format_row{1.23456, "0.0000", "1.2346"}, format_row{0.000049, "0.0000", "0.0000"}));

TEST(FormatNumber, IntoABufferOrAReusedTextWithoutLosingAnything) {
    // The buffer form tells the whole length and writes only as far as it has room.
    char small[4];
    EXPECT_EQ(format_number(small, 1234.5, "#0.00"), 7u);
    EXPECT_EQ(std::string_view(small, 4), "1234");
    // Extreme values keep every digit.
    EXPECT_EQ(format_number(1e70, "#0.00"), "1" + std::string(70, '0') + ".00");
    EXPECT_EQ(format_number(-1e-300, "0.000"), "0.000");
    EXPECT_EQ(format_number(0.5, "0.000000000000000000000"), "0.500000000000000000000");

    // A kept QString is rewritten in place while nobody else holds it; a copy taken before keeps
    // its own text.
    QString text;
    text.reserve(16);
    const QChar* buffer = text.constData();
    format_text(text, 0.30103, "#0.000A");
    EXPECT_EQ(text, QStringLiteral("0.301A"));
    EXPECT_EQ(text.constData(), buffer);
    const QString held = text;
    format_text(text, 12.5, "#0.0%T");
    EXPECT_EQ(text, QStringLiteral("12.5%T"));
    EXPECT_EQ(held, QStringLiteral("0.301A"));
    // Texts longer than the stack buffer, and literals beyond ASCII.
    format_text(text, -1e70, "#0.0");
    EXPECT_EQ(text, "-1" + QString(70, u'0') + ".0");
    format_text(text, 21.46, "#0.0 \u00b0C");
    EXPECT_EQ(text, QStringLiteral("21.5 \u00b0C"));
}

TEST(Val, ReadsTheLeadingNumberLikeTheInputFields) {
    EXPECT_DOUBLE_EQ(val(""), 0.0);
    EXPECT_DOUBLE_EQ(val("abc"), 0.0);
    EXPECT_DOUBLE_EQ(val("  500"), 500.0);
    EXPECT_DOUBLE_EQ(val("500nm"), 500.0);
    EXPECT_DOUBLE_EQ(val("1 100"), 1100.0);
    EXPECT_DOUBLE_EQ(val("-0.25A"), -0.25);
    EXPECT_DOUBLE_EQ(val(".5"), 0.5);
    EXPECT_DOUBLE_EQ(val("1.2.3"), 1.2);
    EXPECT_DOUBLE_EQ(val("1e3x"), 1000.0);
    EXPECT_DOUBLE_EQ(val("2E"), 2.0);
    EXPECT_DOUBLE_EQ(val("+7"), 7.0);
    EXPECT_DOUBLE_EQ(val("12000"), 12000.0);
}

// A comma locale in the C library (what QApplication installs for a German user) must change no
// number the program reads or writes: stored batches are read back with val.
TEST(Val, AndFormatKeepThePointUnderACommaLocale) {
    const std::string before = std::setlocale(LC_ALL, nullptr);
    if (!std::setlocale(LC_ALL, "de_DE.UTF-8")) GTEST_SKIP() << "locale de_DE.UTF-8 is not installed";
    const double read = val("0.25");
    const std::string shown = format_number(2.675, "#0.00");
    const double huge = val("1e999"), tiny = val("-1e-999");
    std::setlocale(LC_ALL, before.c_str());
    EXPECT_DOUBLE_EQ(read, 0.25);
    EXPECT_EQ(shown, "2.68");
    EXPECT_TRUE(std::isinf(huge));
    EXPECT_EQ(tiny, 0.0);
}

TEST(IntegerConversion, RoundsHalvesToEvenAndFixTruncates) {
    EXPECT_EQ(cint(0.5), 0);
    EXPECT_EQ(cint(1.5), 2);
    EXPECT_EQ(cint(2.5), 2);
    EXPECT_EQ(cint(-2.5), -2);
    EXPECT_EQ(cint(-3.5), -4);
    EXPECT_EQ(cint(2.500001), 3);
    EXPECT_EQ(cint(379.5), 380);
    EXPECT_EQ(cint(1e12), 2147483647);
    EXPECT_EQ(fix(2.9), 2);
    EXPECT_EQ(fix(-2.9), -2);
    EXPECT_EQ(fix(0.99999), 0);
    EXPECT_TRUE(lumora::fits_int16(32767.4));
    EXPECT_FALSE(lumora::fits_int16(32767.5));
    EXPECT_FALSE(lumora::fits_int16(-32769));
}
