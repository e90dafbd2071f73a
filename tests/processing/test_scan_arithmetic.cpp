// Scan arithmetic: (a * scan p) op1 (b * scan q) op2 c into the next free column, over the scan
// range only, and a refusal when all 20 columns are taken.
#include "processing/scan_arithmetic.h"

#include <gtest/gtest.h>
#include <memory>

using namespace lumora::processing;

namespace {

struct scan_arithmetic_test : ::testing::Test {
    std::unique_ptr<curve_array> curves = std::make_unique<curve_array>();
    void SetUp() override {
        for (std::size_t p = 0; p < curves->size(); ++p)
            (*curves)[p][1] = 0.5 + static_cast<double>(p) / 1000, (*curves)[p][2] = 0.25;
    }
};

} // namespace

TEST_F(scan_arithmetic_test, TheDifferenceSpectrumAndAFlatLineComeOutOverTheScanRange) {
    scan_arithmetic_result r = scan_arithmetic(
        *curves, 2, 320, 1110, {1.0, 1.0, 0.0, 1, 2, scan_operator::subtract, scan_operator::add});
    ASSERT_EQ(r.status, scan_arithmetic_status::done);
    ASSERT_EQ(r.column, 3);
    for (std::size_t p = 0; p < spectrum_points; ++p)
        ASSERT_DOUBLE_EQ((*curves)[p][3], 0.25 + static_cast<double>(p) / 1000) << p;

    // 2 * scan 1 * (0 * scan 2) + 1 on a scan of 400..500 nm: 1 at points 70..190, 0 elsewhere.
    r = scan_arithmetic(*curves, 3, 390, 510,
                        {2.0, 0.0, 1.0, 1, 2, scan_operator::multiply, scan_operator::add});
    ASSERT_EQ(r.column, 4);
    for (std::size_t p = 0; p < spectrum_points; ++p)
        ASSERT_EQ((*curves)[p][4], p >= 70 && p <= 190 ? 1.0 : 0.0) << p;
}

TEST_F(scan_arithmetic_test, EachOperatorAndAnUnknownOneThatLeavesTheColumn) {
    EXPECT_EQ(scan_operator_from_text("-"), scan_operator::subtract);
    EXPECT_EQ(scan_operator_from_text("*"), scan_operator::multiply);
    EXPECT_EQ(scan_operator_from_text("/"), scan_operator::none);
    (*curves)[100][3] = 7.0;
    scan_arithmetic(*curves, 2, 320, 1110,
                    {1.0, 1.0, 3.0, 1, 2, scan_operator::none, scan_operator::multiply});
    EXPECT_DOUBLE_EQ((*curves)[100][3], 21.0); // the column kept its 7, then * 3
    scan_arithmetic(*curves, 2, 320, 1110,
                    {2.0, 4.0, 0.5, 1, 2, scan_operator::add, scan_operator::subtract});
    EXPECT_DOUBLE_EQ((*curves)[100][3], 2 * 0.6 + 4 * 0.25 - 0.5);
}

TEST_F(scan_arithmetic_test, TwentyCurvesAreRefusedAndNothingIsWritten) {
    const scan_formula f{1.0, 1.0, 1.0, 1, 2, scan_operator::add, scan_operator::add};
    EXPECT_EQ(scan_arithmetic(*curves, 19, 320, 1110, f).column, 20); // the last free column
    const curve_array before = *curves;
    EXPECT_EQ(scan_arithmetic(*curves, 20, 320, 1110, f).status, scan_arithmetic_status::curves_full);
    EXPECT_EQ(scan_arithmetic(*curves, 2, 320, 1110, {1, 1, 1, 0, 2}).status,
              scan_arithmetic_status::no_such_curve);
    EXPECT_EQ(scan_arithmetic(*curves, 2, 320, 1111, f).status, scan_arithmetic_status::range_outside);
    EXPECT_EQ(*curves, before);
}
