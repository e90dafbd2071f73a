// The arithmetic of a Spectrum point and the scan counters, apart from the window.
#include "functions/spectrum/spectrum_data.h"
#include "functions/spectrum/spectrum_setup.h"

#include <cmath>
#include <gtest/gtest.h>

using namespace lumora;

TEST(SpectrumPoint, AbsorbanceAndTransmittanceAreHeldToTheirLimits) {
    EXPECT_NEAR(convert_sample(1000 + 100, 100, 10000 + 100, false), 1.0, 1e-12);
    EXPECT_NEAR(convert_sample(5000, 0, 10000, true), 50.0, 1e-12);
    EXPECT_EQ(convert_sample(100.1, 100, 10100, false), 4.5) << "T of 0.00001 is A 5, held to 4.5";
    EXPECT_NEAR(convert_sample(15000, 0, 10000, false), -0.176, 0.0005) << "50 percent above the blank";
    EXPECT_EQ(convert_sample(15000, 0, 10000, true), 120.0);
    EXPECT_EQ(convert_sample(100, 100, 5000, false), 4.5) << "no net signal";
    EXPECT_EQ(convert_sample(50, 100, 5000, true), 0.0);
    EXPECT_EQ(convert_sample(3000, 100, 100, false), 4.5) << "a blank equal to its dark";
    EXPECT_EQ(convert_sample(3000, 100, 100, true), 0.0);
    EXPECT_EQ(convert_sample(40000, 0, 10000, false), -0.3);
}

TEST(SpectrumPoint, DarkComesFromTheBandOfTheWavelength) {
    reset_shared_state();
    shared.dark_by_band = {11, 22, 33, 44, 55};
    EXPECT_EQ(dark_for_nm(320), 11);
    EXPECT_EQ(dark_for_nm(379), 11);
    EXPECT_EQ(dark_for_nm(380), 22);
    EXPECT_EQ(dark_for_nm(559), 33);
    EXPECT_EQ(dark_for_nm(760), 55);
    EXPECT_EQ(dark_for_nm(1101), 0) << "the overscan past 1100 has no band";
}

TEST(SpectrumCounters, TheScanRunsTenNanometresBeyondBothEnds) {
    reset_spectrum_data();
    spectrum_setup = SpectrumSetup{};
    spectrum_setup.start_lambda = 330;
    spectrum_setup.stop_lambda = 1100;
    spectrum_init();
    EXPECT_EQ(spectrum.scan_first_nm, 320);
    EXPECT_EQ(spectrum.scan_last_nm, 1110);
    EXPECT_EQ(spectrum.scan_total, 790);
    EXPECT_EQ(spectrum.view.view_span, 770);
    EXPECT_DOUBLE_EQ(spectrum.view.view_nm_per_pixel, 770.0 / 280);
    EXPECT_EQ(speed_name(1), QStringLiteral("Normal"));
    EXPECT_EQ(speed_name(3), QString());
}
