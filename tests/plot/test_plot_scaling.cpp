// The mappings from data values to plot rows: holding, single-precision scaling, rounding half
// to even, and the once-only division-by-zero warning of each mapping.
#include "platform/prompts.h"
#include "plot/plot_scaling.h"

#include <cmath>
#include <gtest/gtest.h>

using namespace lumora;

namespace {
struct scaling_fixture : ::testing::Test {
    void SetUp() override {
        reset_pixel_warnings();
        prompts::script();
        prompts::clear_shown();
    }
    void TearDown() override { prompts::unscript(); }
};
} // namespace

TEST_F(scaling_fixture, ValuesAreHeldScaledInSinglePrecisionAndRoundedHalfToEven) {
    EXPECT_EQ(y_to_pixel(7.5, 3.0, 0.0), 20);
    EXPECT_EQ(y_to_pixel(-1.0, 3.0, 0.0), 300);
    // With high 280 and low 0 a value is its own scale step: halves go to the even neighbour.
    EXPECT_EQ(y_to_pixel(0.5, 280, 0), 300);
    EXPECT_EQ(y_to_pixel(1.5, 280, 0), 298);
    EXPECT_EQ(y_to_pixel(2.5, 280, 0), 298);
    EXPECT_EQ(y_to_pixel(55.0, 100.0, 50.0), 272);
    EXPECT_EQ(y_to_pixel(0.0, 0.3, -0.3), 160);
    // (value - low) * 280 is 141.49999999999997 in double, which single precision makes 141.5,
    // and that rounds to the even 142; a double all the way would give 141.
    const double value = std::nextafter(141.5 / 280.0, 0.0);
    ASSERT_LT(value * 280.0, 141.5);
    EXPECT_EQ(y_to_pixel(value, 1.0, 0.0), 300 - 142);

    EXPECT_EQ(report_y_to_pixel(1.5, 3.0, 0.0), 520 - 140);
    EXPECT_EQ(report_y_to_pixel(9.0, 3.0, 0.0), 240);
    EXPECT_EQ(DerivateGetPixelY(1.5, 3.0, 0.0), 490 - 70);
    EXPECT_EQ(DerivateGetPixelY(9.0, 3.0, 0.0), 350);
    EXPECT_EQ(PrtDerivateGetPixelY(1.5, 3.0, 0.0), 720 - 70);
    EXPECT_EQ(PrtDerivateGetPixelY(-9.0, 3.0, 0.0), 720);
    EXPECT_TRUE(prompts::shown().empty());
}

TEST_F(scaling_fixture, EqualHighAndLowWarnsOnceUntilAGoodCallAndGivesTheBottomRow) {
    EXPECT_EQ(y_to_pixel(1.0, 2.0, 2.0), 300);
    EXPECT_EQ(y_to_pixel(5.0, 2.0, 2.0), 300);
    ASSERT_EQ(prompts::shown().size(), 1u);
    EXPECT_EQ(prompts::shown()[0].title, QStringLiteral("Warning"));
    EXPECT_EQ(prompts::shown()[0].text, QStringLiteral("Divide by zero. The data may be wrong!"));
    EXPECT_EQ(prompts::shown()[0].icon, box_icon::critical);

    // Each mapping has its own flag: the others warn although the plot has.
    EXPECT_EQ(DerivateGetPixelY(1.0, 2.0, 2.0), 490);
    EXPECT_EQ(report_y_to_pixel(1.0, 2.0, 2.0), 520);
    EXPECT_EQ(PrtDerivateGetPixelY(1.0, 2.0, 2.0), 720);
    EXPECT_EQ(prompts::shown().size(), 4u);

    // A good call re-arms the plot's warning only.
    EXPECT_EQ(y_to_pixel(1.0, 2.0, 0.0), 160);
    y_to_pixel(1.0, 2.0, 2.0);
    DerivateGetPixelY(1.0, 2.0, 2.0);
    EXPECT_EQ(prompts::shown().size(), 5u);
}
