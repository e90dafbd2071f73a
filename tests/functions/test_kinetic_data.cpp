// Kinetic's plain arithmetic: the crosses' own rounding beside the fit's, and where the text block
// under the plot puts its pieces and glyphs.
#include "functions/kinetic/kinetic_data.h"

#include <gtest/gtest.h>

using namespace lumora;

TEST(KineticData, CrossesRoundHalvesUpWhereTheFitGoesToEven) {
    KineticSetup s;
    s.kn_rate = 15;
    s.derive();
    std::array<double, kn_samples_count> flat{};
    const processing::kinetic_result fit = processing::kinetic_fit(flat, {5, 15, 2, 1.0});
    const int expected[5] = {35, 88, 140, 193, 245};
    for (int i = 0; i < 5; ++i)
        EXPECT_EQ(cross_sample(s, i, 5), expected[i]) << i;
    EXPECT_EQ(fit.sample[3], 192) << "the fit's pick is the even neighbour";
    // Sample 35 stands for the lag time, 245 for its end, whatever the delay.
    s.kn_lag = 30;
    s.kn_rate = 60;
    s.kn_delay = 30;
    s.derive();
    EXPECT_DOUBLE_EQ(s.sample_time(35), 30.0);
    EXPECT_DOUBLE_EQ(s.sample_time(245), 90.0);
    EXPECT_DOUBLE_EQ(s.kn_start_time, 50.0);
}

TEST(KineticData, TextBlockKeepsTheUnitsInOneColumnAndTheGlyphsOnTheirBlanks) {
    KineticSetup s;
    s.kn_rate = 60;
    s.kn_factor = 1000;
    s.kn_unit = QStringLiteral("U/L");
    processing::kinetic_result r;
    r.dabs_dt = 0.12f;
    r.dc_dt = 120.0f;
    r.ka = 0.002f;
    r.kb = 0.05f;
    const auto width = [](const QString& t) { return 7 * static_cast<int>(t.size()); };
    const fit_block b = fit_text_block(s, r, width, 15);
    ASSERT_EQ(b.texts.size(), 9u);
    const int units = 60 + width(QStringLiteral("dABS/dT = 99999.9999"));
    auto find = [&b](const QString& start) {
        for (const fit_text& t : b.texts)
            if (t.text.startsWith(start)) return t;
        ADD_FAILURE() << start.toStdString();
        return fit_text{};
    };
    EXPECT_EQ(find(QStringLiteral("   T = ")).text, QStringLiteral("   T = 60.0 sec"));
    EXPECT_EQ(find(QStringLiteral("Factor = ")).text, QStringLiteral("Factor = 1000.000"));
    EXPECT_EQ(find(QStringLiteral("Factor = ")).x, 200);
    EXPECT_EQ(find(QStringLiteral("   ABS/")).text, QStringLiteral("   ABS/   T = 0.1200"));
    EXPECT_EQ(find(QStringLiteral(" (   ABS)/min")).x, units);
    EXPECT_EQ(find(QStringLiteral(" (U/L)/min")).x, units);
    EXPECT_EQ(find(QStringLiteral(" (U/L)/min")).y, 370);
    EXPECT_EQ(find(QStringLiteral("   C/")).text, QStringLiteral("   C/   T = 120.0000"));
    EXPECT_EQ(find(QStringLiteral("Ka = ")).y, 400);
    EXPECT_EQ(find(QStringLiteral("Kb = ")).text, QStringLiteral("Kb = 0.0500"));
    EXPECT_EQ(find(QStringLiteral("Kb = ")).y, 415);
    // Each glyph stands on a blank of its line: at 60, after "   ABS/" or "   C/", and after the
    // units' opening bracket.
    ASSERT_EQ(b.glyphs.size(), 6u);
    const int expected[6][2] = {{60, 340},
                                {60, 355},
                                {60 + width(QStringLiteral("   ABS/")), 355},
                                {60 + width(QStringLiteral("dABS/dT = 99999.9999 (")), 355},
                                {60, 370},
                                {60 + width(QStringLiteral("   C/")), 370}};
    for (std::size_t i = 0; i < 6; ++i) {
        EXPECT_EQ(b.glyphs[i].x, expected[i][0]) << i;
        EXPECT_EQ(b.glyphs[i].y, expected[i][1]) << i;
    }
}
