// The toolbar's dispatch table: by key and function_id, what runs and what comes first.
#include "functions/toolbar_dispatch.h"
#include "link/shared_state.h"

#include <gtest/gtest.h>

using namespace lumora;
using R = toolbar_routine;

TEST(ToolbarDispatch, ZeroAndReadSetTheModeOfTheirFunction) {
    const auto spectrum_zero = toolbar_action_for("Zero", fid_spectrum);
    EXPECT_EQ(spectrum_zero.routine, R::read_base_line);
    EXPECT_TRUE(spectrum_zero.preparing);
    EXPECT_TRUE(spectrum_zero.disable);
    EXPECT_EQ(spectrum_zero.measure_mode, mm_spectrum);

    const auto photometry_zero = toolbar_action_for("Zero", fid_photometry);
    EXPECT_TRUE(photometry_zero.zero_flag_set);
    EXPECT_EQ(photometry_zero.measure_mode, mm_photometry);
    const auto photometry_read = toolbar_action_for("Read", fid_photometry);
    EXPECT_TRUE(photometry_read.zero_flag_clear);
    EXPECT_FALSE(photometry_read.disable);

    const auto timescan_zero = toolbar_action_for("Zero", fid_timescan);
    EXPECT_FALSE(timescan_zero.preparing) << "Timescan's Zero writes no Preparing";
    EXPECT_EQ(toolbar_action_for("Read", fid_timescan2).measure_mode, mm_timescan2);
    EXPECT_TRUE(toolbar_action_for("Read", fid_timescan2).curve_check);

    const auto quant_read = toolbar_action_for("Read", fid_quantitative);
    EXPECT_EQ(quant_read.routine, R::read_standard_or_sample);
    EXPECT_TRUE(quant_read.batch_check);
    EXPECT_FALSE(quant_read.preparing);
    EXPECT_TRUE(toolbar_action_for("Read", fid_protein).preparing);
    EXPECT_EQ(toolbar_action_for("Read", fid_verify).routine, R::read_656);
    EXPECT_EQ(toolbar_action_for("Zero", fid_verify).routine, R::none);
}

TEST(ToolbarDispatch, KeysAFunctionDoesNotServeDoNothing) {
    for (const char* key : {"Setup", "Zero", "Read", "Stop", "Auto", "Peak", "Smooth", "Color"}) {
        EXPECT_EQ(toolbar_action_for(key, fid_no_function).routine, R::none) << key;
        EXPECT_EQ(toolbar_action_for(key, fid_startup).routine, R::none) << key;
    }
    EXPECT_EQ(toolbar_action_for("Setup", fid_verify).routine, R::none);
    EXPECT_EQ(toolbar_action_for("Stop", fid_quantitative).routine, R::none);
    EXPECT_EQ(toolbar_action_for("Stop", fid_protein).routine, R::none);
    EXPECT_EQ(toolbar_action_for("Auto", fid_photometry).routine, R::none);
    EXPECT_EQ(toolbar_action_for("Zoom", fid_kinetic).routine, R::zoom_dialog);
    EXPECT_EQ(toolbar_action_for("Peak", fid_timescan).routine, R::peak);
    EXPECT_EQ(toolbar_action_for("Peak", fid_kinetic).routine, R::none);
    EXPECT_EQ(toolbar_action_for("Derivative", fid_timescan).routine, R::none);
    EXPECT_EQ(toolbar_action_for("Scan add", fid_spectrum).routine, R::scan_add);
    EXPECT_EQ(toolbar_action_for("Nonsense", fid_spectrum).routine, R::none);
    EXPECT_EQ(toolbar_action_for("Stop", fid_kinetic).routine, R::stop_kinetic);
    EXPECT_EQ(toolbar_action_for("Stop", fid_timescan2).routine, R::stop_now);
}
