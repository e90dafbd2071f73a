#include "functions/lambda_panel_rules.h"

#include <gtest/gtest.h>

using namespace lumora;

TEST(LambdaPanelRules, WavelengthIsCutToAnIntegerAndHeldToTheRange) {
    EXPECT_EQ(clamp_goto_wavelength("1200"), 1100);
    EXPECT_EQ(clamp_goto_wavelength("abc"), 330);
    EXPECT_EQ(clamp_goto_wavelength("329.9"), 330);
    EXPECT_EQ(clamp_goto_wavelength("656.9"), 656) << "cut, not rounded";
    EXPECT_EQ(clamp_goto_wavelength(" 400nm"), 400);
    EXPECT_EQ(clamp_goto_wavelength("-5"), 330);
}

TEST(LambdaPanelRules, FactorIsHeldToTheRangeInThreeDecimals) {
    EXPECT_EQ(clamp_factor_text("12000"), "10000.000");
    EXPECT_EQ(clamp_factor_text("2.5"), "2.500");
    EXPECT_EQ(clamp_factor_text("-1"), "0.000");
    EXPECT_EQ(clamp_factor_text("x"), "0.000");
    EXPECT_EQ(clamp_factor_text("1.23456"), "1.235");
}
