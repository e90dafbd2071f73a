// The physical model seen through the wire: counts, samples, the emission line, noise.
#include "sim/emission_line.h"
#include "sim_helpers.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numeric>
#include <set>

namespace lumora::sim {
namespace {

using testing::exchange;
using testing::values;
using testing::with_code;

std::vector<std::uint32_t> scan(Instrument& inst, std::uint8_t command, std::uint8_t point_code, int from,
                                int to) {
    return values(with_code(
        exchange(inst, {command, static_cast<std::uint8_t>(from >> 8), static_cast<std::uint8_t>(from & 255),
                        static_cast<std::uint8_t>(to >> 8), static_cast<std::uint8_t>(to & 255)}),
        point_code));
}

TEST(SimModel, SampleScanAgainstBaselineGivesTheTrueAbsorbanceAtEveryNanometre) {
    Instrument inst;
    const std::vector<double> dark = testing::dark_by_band(inst);
    const auto baseline = values(with_code(exchange(inst, {kCmdScanBaseline}), kRspBaselinePoint));
    ASSERT_EQ(baseline.size(), 791u);

    // The dense filter makes a dark value from the wrong band show; the holmium bands test the shape
    // (their positions are found by the program's peak search in an end-to-end test).
    for (const std::string name : {"neutral:2", "holmium"}) {
        ASSERT_EQ(inst.control("sample " + name), "ok sample " + name);
        const auto sample = scan(inst, kCmdScanSample, kRspSamplePoint, 320, 1100);
        ASSERT_EQ(sample.size(), 781u);
        for (int nm = 320; nm <= 1100; ++nm) {
            const double d = dark[testing::band(nm)];
            const std::size_t i = nm - 320;
            ASSERT_NEAR(-std::log10((sample[i] - d) / (baseline[i] - d)), inst.true_absorbance(nm), 0.001)
                << name << " at " << nm << " nm";
        }
    }
}

TEST(SimModel, BlankCountsStayInsideTheConverterRangeWithTheirPeakNearSixMillion) {
    Instrument inst;
    const std::vector<double> dark = testing::dark_by_band(inst);
    const auto counts = values(with_code(exchange(inst, {kCmdScanBaseline}), kRspBaselinePoint));
    ASSERT_EQ(counts.size(), 791u);
    EXPECT_NEAR(*std::max_element(counts.begin(), counts.end()), 6.0e6, 0.2e6);
    for (int nm = 320; nm <= 1110; ++nm) {
        const double signal = counts[nm - 320] - dark[testing::band(std::min(nm, 1100))];
        EXPECT_GT(signal, 1.0e5) << nm; // enough light to read 2 A with fine resolution
        EXPECT_LT(counts[nm - 320], 8.0e6) << nm;
    }
}

TEST(SimModel, SamplesFollowTheirLaws) {
    Instrument inst;
    // Beer-Lambert: 0.5 A per unit at the peak, linear in concentration at every wavelength.
    inst.control("sample standard:1");
    const double peak = inst.true_absorbance(540), side = inst.true_absorbance(600);
    EXPECT_NEAR(peak, 0.5, 1e-9);
    EXPECT_LT(side, peak);
    inst.control("sample standard:3");
    EXPECT_NEAR(inst.true_absorbance(540), 3 * peak, 1e-9);
    EXPECT_NEAR(inst.true_absorbance(600), 3 * side, 1e-9);

    inst.control("sample dye");
    EXPECT_GT(inst.true_absorbance(520), 0.95);
    EXPECT_LT(inst.true_absorbance(700), 0.1);

    inst.control("sample reaction:0.01");
    const double start = inst.true_absorbance(500);
    inst.advance(20.0);
    EXPECT_NEAR(inst.true_absorbance(500) - start, 0.2, 1e-9);
    inst.advance(1000.0);
    EXPECT_DOUBLE_EQ(inst.true_absorbance(500), 4.0);

    EXPECT_EQ(inst.control("sample changer:blank,neutral:1,holmium"),
              "ok sample changer:blank,neutral:1,holmium");
    EXPECT_DOUBLE_EQ(inst.true_absorbance(600), 0.0);
    EXPECT_EQ(inst.control("position 2"), "ok position 2");
    EXPECT_DOUBLE_EQ(inst.true_absorbance(600), 1.0);
    EXPECT_EQ(inst.control("absorbance 600"), "1.000000");
    EXPECT_NE(inst.control("position 4").find("error: "), std::string::npos);
}

TEST(SimModel, BandwidthScanShowsTheLineWithItsSetWidth) {
    for (const double fwhm : {2.0, 5.0}) {
        Instrument inst;
        inst.control("fwhm " + std::to_string(fwhm));
        const auto replies = exchange(inst, {kCmdScanBandwidth});
        EXPECT_EQ(replies.at(0).bytes, std::vector<std::uint8_t>{kCmdScanBandwidth});
        EXPECT_EQ(replies.back().bytes[0], kRspScanEnd);
        const auto p = values(with_code(replies, kRspBandwidthPoint));
        ASSERT_EQ(p.size(), 79u);
        EXPECT_EQ(std::max_element(p.begin(), p.end()) - p.begin(), 39);
        EXPECT_LT(p[39], 8388608u);
        // Width at half height between the shoulders, interpolated as the PC does.
        const double base = (p[13] + p[65]) / 2.0, h = (p[39] + base) / 2.0;
        int i = 0, j = 78;
        while (p[i] <= h)
            ++i;
        while (p[j] <= h)
            --j;
        const double left = i - 1 + (h - p[i - 1]) / (p[i] - double(p[i - 1]));
        const double right = j + 1 - (h - p[j + 1]) / (p[j] - double(p[j + 1]));
        EXPECT_NEAR((right - left) * EmissionLine::kStep, fwhm, 0.1 * fwhm);
    }
}

TEST(SimModel, NoiseIsGaussianOfTheSetSizeAndRepeatsWithTheSeed) {
    const auto stream = [](std::uint64_t seed, double noise) {
        Instrument inst({1.0, seed, noise, "blank"});
        return values(with_code(exchange(inst, {kCmdGotoLambda, 2, 0x58}, 15.0), kRspIntensity));
    };
    const auto quiet = stream(1, 0.0);
    EXPECT_EQ(std::set<std::uint32_t>(quiet.begin(), quiet.end()).size(), 1u);

    const auto a = stream(7, 500.0);
    EXPECT_EQ(a, stream(7, 500.0));
    EXPECT_NE(a, stream(8, 500.0));
    const double mean = std::accumulate(a.begin(), a.end(), 0.0) / a.size();
    double var = 0.0;
    for (const auto v : a)
        var += (v - mean) * (v - mean);
    EXPECT_NEAR(std::sqrt(var / (a.size() - 1)), 500.0, 50.0);
    EXPECT_NEAR(mean, quiet[0], 100.0);
}

TEST(SimModel, BadOptionsAndSampleNamesAreRefusedWithAReason) {
    EXPECT_THROW(Instrument({0.0}), std::invalid_argument);
    EXPECT_THROW(Instrument({1.0, 1, -1.0}), std::invalid_argument);
    EXPECT_THROW(Instrument({1.0, 1, 0.0, "neutral:x"}), std::invalid_argument);
    Instrument inst({1.0, 1, 0.0, "dye"});
    for (const char* bad :
         {"sample", "sample water", "sample standard", "sample standard:-1",
          "sample changer:", "sample changer:blank,,dye", "sample changer:changer:blank", "position 1",
          "fwhm 0", "fwhm abc", "absorbance 200", "frobnicate", "state now"}) {
        EXPECT_EQ(inst.control(bad).rfind("error: ", 0), 0u) << bad;
    }
    EXPECT_GT(inst.true_absorbance(520), 0.9); // still the dye
}

} // namespace
} // namespace lumora::sim
