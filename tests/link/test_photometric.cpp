// The conversions every function shares: dark by band, the mean of ten frames, intensity to
// absorbance and %T with their limits, and the text of the live reading.
#include "link/photometric.h"
#include "link_fixture.h"

#include <cmath>

using namespace lumora;
using Photometric = lumora::test::link_test;

TEST_F(Photometric, AbsorbanceAndTransmittanceStayWithinTheirLimits) {
    shared.lambda_now = 600; // index 280, band 3
    shared.dark_by_band[3] = 1000;
    shared.reference_intensity[280] = 101000; // 100000 counts above the dark
    struct row {
        std::int32_t intensity;
        double abs, percent_t;
    };
    const row rows[] = {
        {101000, 0.0, 100.0},
        {11000, 1.0, 10.0},
        // No signal at all, and below the dark.
        {1000, 4.5, 0.0},
        {400, 4.5, 0.0},
        // 4 A is kept, 5 A is limited to 4.5.
        {1010, 4.0, 0.01},
        {1001, 4.5, 0.001},
        // %T is limited at 120; a factor of 1.995 is not yet the absorbance limit of -0.3.
        {120900, -0.07882, 119.9},
        {121500, -0.08099, 120.0},
        {200500, -0.29994, 120.0},
        {200600, -0.3, 120.0},
    };
    for (const row& r : rows) {
        SCOPED_TRACE(r.intensity);
        EXPECT_TRUE(show_now_abs(r.intensity));
        EXPECT_EQ(shared.net_signal, r.intensity - 1000);
        EXPECT_NEAR(shared.now_abs, r.abs, 1e-5);
        EXPECT_NEAR(shared.now_percent_t, r.percent_t, 1e-9);
    }

    // Below 320 nm the transmittance of the last reading stands; no band, so no dark either.
    shared.lambda_now = 300;
    shared.now_trans = 0.5;
    show_now_abs(7);
    EXPECT_EQ(shared.net_signal, 7);
    EXPECT_NEAR(shared.now_abs, std::log10(2.0), 1e-12);
    EXPECT_EQ(shared.now_percent_t, 50);

    shared.lambda_now = 1111; // past the arrays
    EXPECT_THROW(show_now_abs(7), run_fault);
    shared.lambda_now = 1110.5; // rounds to the last index
    shared.reference_intensity[790] = 70;
    show_now_abs(7);
    EXPECT_EQ(shared.now_percent_t, 10);
}

TEST(ReadingText, PanelTwoFormatsByModeAndDigits) {
    struct row {
        std::uint16_t mode;
        bool four;
        double abs, percent_t;
        float factor;
        const char* text;
    };
    const row rows[] = {
        {0, false, 0.12345, 0, 1, "0.123A"},   {0, true, 0.12345, 0, 1, "0.1235A"},
        {1, false, 0, 0.5, 1, "0.500%T"},      {1, true, 0, 0.5, 1, "0.5000%T"},
        {1, false, 0, 0.9996, 1, "1.000%T"}, // the row goes by the value, not by its text
        {1, false, 0, 1.0, 1, "1.00%T"},       {1, true, 0, 9.99, 1, "9.990%T"},
        {1, false, 0, 10.0, 1, "10.0%T"},      {1, true, 0, 10.0, 1, "10.00%T"},
        {2, false, 0.1234, 0, 2.5f, "0.308C"}, // 2.5 x 0.123 as shown, not 2.5 x 0.1234
        {2, true, 0.1234, 0, 2.5f, "0.3085C"}, {2, false, 0.12349, 0, 10, "1.230C"},
        {2, true, 0.12349, 0, 10, "1.2350C"},
    };
    QString reused; // the form the live reading takes, written in place
    for (const row& r : rows) {
        SCOPED_TRACE(r.text);
        EXPECT_EQ(reading_text(r.mode, r.four, r.abs, r.percent_t, r.factor), r.text);
        reading_text(reused, r.mode, r.four, r.abs, r.percent_t, r.factor);
        EXPECT_EQ(reused, QString::fromLatin1(r.text));
    }
    EXPECT_EQ(reading_text(3, false, 0.5, 50, 1), "");
    reading_text(reused, 3, false, 0.5, 50, 1);
    EXPECT_TRUE(reused.isEmpty());
}

TEST_F(Photometric, LambdaPanelTextsStayAsWrittenWhileTheNextOnesAreBuilt) {
    // Panel 2's texts are rewritten in place between readings; every text handed out before, here
    // kept in the panel log, must still read as it was. Panel 6 counts dots after any short text.
    shared.measure_mode = mm_lambda_panel;
    shared.lambda_now = 500; // index 180, band 2
    shared.dark_by_band[2] = 500;
    shared.reference_intensity[180] = 80500;
    panels[6] = QStringLiteral("Idle");
    const std::int32_t signal[] = {40500, 40500, 8500, 80500, 500 + 80000 / 3};
    for (std::int32_t s : signal)
        frames(10, s);
    shared.lambda_show_mode = 1;
    frames(10, 40500);
    std::vector<QString> shown[7];
    for (const auto& [n, text] : panel_log)
        shown[n].push_back(text);
    EXPECT_EQ(shown[2], (std::vector<QString>{"0.301A", "0.301A", "1.000A", "0.000A", "0.477A", "50.0%T"}));
    EXPECT_EQ(shown[6], (std::vector<QString>{"Idle.", "Idle..", "OK", "OK.", "OK..", "OK..."}));
}

TEST_F(Photometric, MeanOfTenReadingsIsTruncatedTowardZero) {
    for (const auto& [first, mean] : {std::pair{64, 10}, std::pair{-119, -7}}) {
        shared.readings = {double(first), 5, 5, 5, 5, 5, 5, 5, 5, 5};
        EXPECT_EQ(get_now_data(), mean) << first;
    }
    shared.readings.fill(16777215);
    EXPECT_EQ(get_now_data(), 16777215);
}

TEST_F(Photometric, DarkComesFromTheBandOfLambdaNowAndGapsHaveNone) {
    shared.dark_by_band = {10, 20, 30, 40, 50};
    const std::pair<double, std::int32_t> rows[] = {
        {319.9, 0}, {320, 10}, {379, 10},  {379.5, 0},  {380, 20}, {459, 20},
        {459.5, 0}, {460, 30}, {559, 30},  {559.2, 0},  {560, 40}, {759, 40},
        {759.9, 0}, {760, 50}, {1100, 50}, {1100.5, 0}, {1110, 0},
    };
    for (const auto& [nm, dark] : rows) {
        shared.lambda_now = nm;
        EXPECT_EQ(get_dark(), dark) << nm << " nm";
    }
}
