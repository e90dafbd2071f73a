// The reference materials of a performance verification and the optics faults that spoil it, seen
// through the wire as the program sees them.
#include "sim_helpers.h"

#include <gtest/gtest.h>

#include <cmath>

namespace lumora::sim {
namespace {

using testing::exchange;
using testing::values;
using testing::with_code;

// A sample scan over first..last against a baseline scan of the same range taken with a blank.
std::vector<double> absorbance_scan(Instrument& inst, const std::string& sample, int first, int last) {
    const std::vector<double> dark = testing::dark_by_band(inst);
    const auto scan = [&](std::uint8_t cmd, std::uint8_t code) {
        return values(with_code(
            exchange(inst,
                     {cmd, static_cast<std::uint8_t>(first >> 8), static_cast<std::uint8_t>(first & 255),
                      static_cast<std::uint8_t>(last >> 8), static_cast<std::uint8_t>(last & 255)}),
            code));
    };
    inst.control("sample blank");
    const auto ref = scan(kCmdScanBaselineRange, kRspBaselinePoint);
    inst.control("sample " + sample);
    const auto smp = scan(kCmdScanSample, kRspSamplePoint);
    std::vector<double> a;
    for (std::size_t i = 0; i < smp.size() && i < ref.size(); ++i) {
        const double d = dark[testing::band(first + static_cast<int>(i))];
        a.push_back(-std::log10(std::max(smp[i] - d, 0.5) / (ref[i] - d)));
    }
    return a;
}

TEST(SimVerificationSamples, DichromateAndNitriteHaveTheirCertifiedShapes) {
    Instrument inst;
    // Dichromate: about 0.0107 A per mg/L at its 350 nm maximum, a sixth of that at 430 nm, and
    // Beer-Lambert in concentration.
    ASSERT_EQ(inst.control("sample dichromate:60"), "ok sample dichromate:60");
    const double a350 = inst.true_absorbance(350), a430 = inst.true_absorbance(430);
    EXPECT_NEAR(a350, 0.640, 0.01);
    EXPECT_NEAR(a430, 0.095, 0.01);
    EXPECT_GT(a350, inst.true_absorbance(340));
    EXPECT_GT(a350, inst.true_absorbance(360));
    inst.control("sample dichromate:20");
    EXPECT_NEAR(inst.true_absorbance(350), a350 / 3, 1e-9);
    // Nitrite: black from the ultraviolet edge to 390 nm, clear in the visible.
    ASSERT_EQ(inst.control("sample nitrite"), "ok sample nitrite");
    for (double nm : {330.0, 340.0, 370.0, 385.0})
        EXPECT_GT(inst.true_absorbance(nm), 4.0) << nm;
    EXPECT_LT(inst.true_absorbance(450), 0.01);
    EXPECT_LT(inst.true_absorbance(800), 1e-6);

    for (const char* bad :
         {"sample dichromate", "sample dichromate:x", "sample dichromate:-1", "sample nitrite:2"})
        EXPECT_EQ(inst.control(bad).rfind("error: ", 0), 0u) << bad;
    EXPECT_NE(inst.control("sample bogus").find("dichromate:<mg/L>, nitrite"), std::string::npos);
}

TEST(SimVerificationFaults, OpticsFaultsTakeNumbersAndShowInTheState) {
    Instrument inst;
    EXPECT_EQ(inst.control("fault wavelength_offset 1.5"), "ok fault wavelength_offset 1.5");
    EXPECT_EQ(inst.control("fault stray 0.005"), "ok fault stray 0.005");
    EXPECT_EQ(inst.control("fault drift 0.01"), "ok fault drift 0.01");
    EXPECT_NE(inst.control("state").find("faults=wavelength_offset:1.5,stray:0.005,drift:0.01"),
              std::string::npos);
    for (const char* bad : {"fault wavelength_offset 11", "fault stray -0.1", "fault stray 0.2",
                            "fault drift x", "fault wavelength_offset", "fault offset 1"})
        EXPECT_EQ(inst.control(bad).rfind("error: ", 0), 0u) << bad;
    EXPECT_EQ(inst.control("fault wavelength_offset off"), "ok fault wavelength_offset off");
    inst.control("fault stray 0");
    inst.control("fault drift off");
    EXPECT_NE(inst.control("state").find("faults=none"), std::string::npos);
    EXPECT_NE(inst.control("help").find("fault wavelength_offset NM"), std::string::npos);
}

TEST(SimVerificationFaults, EachFaultSpoilsWhatItShould) {
    // The grating offset moves the holmium band at 536.6 nm by the offset on the drive's scale.
    const auto lowest_nm = [](const std::vector<double>& a, int first) {
        return first + static_cast<int>(std::max_element(a.begin(), a.end()) - a.begin());
    };
    Instrument inst;
    EXPECT_EQ(lowest_nm(absorbance_scan(inst, "holmium", 530, 545), 530), 537);
    inst.control("fault wavelength_offset 3");
    EXPECT_EQ(lowest_nm(absorbance_scan(inst, "holmium", 530, 545), 530), 534);
    inst.control("fault wavelength_offset off");

    // Stray light caps what a black sample shows at about -log10(fraction), while a grey filter,
    // which dims the stray light as much as the rest, reads true.
    inst.control("fault stray 0.005");
    EXPECT_NEAR(absorbance_scan(inst, "nitrite", 340, 340).at(0), -std::log10(0.005), 0.05);
    EXPECT_NEAR(absorbance_scan(inst, "neutral:1", 546, 546).at(0), 1.0, 0.001);
    inst.control("fault stray off");
    EXPECT_GT(absorbance_scan(inst, "nitrite", 340, 340).at(0), 4.0);

    // Drift: after a virtual hour a blank reads the rate as absorbance against a reference of then.
    Instrument drifting;
    const std::vector<double> dark = testing::dark_by_band(drifting);
    const auto read = [&] {
        return values(with_code(exchange(drifting, {kCmdGotoLambda, 1, 244}, 0.5), kRspIntensity));
    };
    const double before = read().at(0) - dark[testing::band(500)];
    drifting.control("fault drift 0.01");
    drifting.advance(3600);
    const double after = read().at(0) - dark[testing::band(500)];
    EXPECT_NEAR(-std::log10(after / before), 0.01, 0.0005);
}

} // namespace
} // namespace lumora::sim
