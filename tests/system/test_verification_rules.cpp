// The arithmetic behind the performance verification: band centres on known Gaussian bands, the
// tolerance rules at their edges, the fits, the settings as the lab edits them, and when a run is due.
#include "processing/verification_checks.h"
#include "system/verification_plan.h"
#include "system/verification_run.h"

#include <cmath>
#include <gtest/gtest.h>

namespace lumora {
namespace {

using processing::verdict;

// A transmittance scan at 1 nm points through a Gaussian absorption band on a sloping background.
struct band_scan {
    std::vector<double> nm, t;
    band_scan(double centre, double fwhm, double peak, int first, int last) {
        for (int w = first; w <= last; ++w) {
            const double u = (w - centre) / fwhm;
            const double a = 0.05 + 0.0002 * (w - first) + peak * std::exp(-4 * std::log(2.0) * u * u);
            nm.push_back(w);
            t.push_back(std::pow(10.0, -a));
        }
    }
};

TEST(BandCentre, FoundToATenthOfANanometreWhereverTheBandFallsBetweenPoints) {
    for (double fwhm : {4.0, 6.0, 10.0})
        for (double centre = 450.0; centre < 451.0; centre += 0.1) {
            const band_scan s(centre, fwhm, 0.8, 440, 462);
            const auto c = processing::band_centre(s.nm, s.t, 451.0, 5);
            ASSERT_TRUE(c.has_value()) << centre;
            EXPECT_NEAR(*c, centre, 0.1) << "fwhm " << fwhm << " centre " << centre;
        }
    // A wider point spacing is read from the neighbours.
    std::vector<double> nm{448, 450, 452}, t{0.5, 0.2, 0.5};
    EXPECT_DOUBLE_EQ(*processing::band_centre(nm, t, 450, 3), 450.0);
    t = {0.3, 0.2, 0.5};
    EXPECT_NEAR(*processing::band_centre(nm, t, 450, 3), 449.5, 1e-12);
}

TEST(BandCentre, NoBandOrABandOffTheWindowGivesNothing) {
    const band_scan flat(451.0, 5, 0.0, 440, 462);
    // On a flat record the lowest transmittance sits at the sloping end, the window's edge.
    EXPECT_FALSE(processing::band_centre(flat.nm, flat.t, 451, 5).has_value());
    const band_scan far(470.0, 5, 0.8, 440, 480);
    EXPECT_FALSE(processing::band_centre(far.nm, far.t, 451, 5).has_value());
    const band_scan edge(451.0, 5, 0.8, 451, 460); // the band's minimum is the first point of the scan
    EXPECT_FALSE(processing::band_centre(edge.nm, edge.t, 451, 5).has_value());
    EXPECT_FALSE(processing::band_centre({}, {}, 451, 5).has_value());
}

TEST(LineCentre, TheEmissionLinePeakOnTheBandwidthScale) {
    std::vector<double> signal;
    const double first = 656.1 - 39 * 0.36;
    for (int i = 0; i < 79; ++i) {
        const double u = (first + i * 0.36 - 656.3) / 2.0;
        signal.push_back(1e5 + 5e6 * std::exp(-4 * std::log(2.0) * u * u));
    }
    EXPECT_NEAR(*processing::line_centre(signal, first, 0.36), 656.3, 0.02);
    signal.assign(79, 1.0);
    signal[0] = 2.0; // the highest point on the edge: no line in the scan
    EXPECT_FALSE(processing::line_centre(signal, first, 0.36).has_value());
}

TEST(ToleranceRules, WavelengthSwitchesAt400AndAbsorbanceTakesTheLarger) {
    EXPECT_EQ(processing::wavelength_tolerance(399.9, 1, 3), 1);
    EXPECT_EQ(processing::wavelength_tolerance(400.0, 1, 3), 3);
    // 0.01 A or 1 %, the larger: the absolute bound rules below 1 A, the relative above.
    EXPECT_DOUBLE_EQ(processing::absorbance_tolerance(0.5, 0.01, 0.01), 0.01);
    EXPECT_DOUBLE_EQ(processing::absorbance_tolerance(2.0, 0.01, 0.01), 0.02);
    EXPECT_EQ(processing::within(362.3, 361.3, 1.0), verdict::pass);
    EXPECT_EQ(processing::within(360.2, 361.3, 1.0), verdict::fail);
    EXPECT_EQ(processing::within(0.5101, 0.5, 0.01), verdict::fail);
    EXPECT_EQ(processing::within(NAN, 0.5, 0.01), verdict::fail);
}

TEST(Statistics, FitsNoiseAndDriftOnKnownNumbers) {
    const auto fit = processing::fit_line({0.2, 0.4, 0.6, 0.8, 1.0}, {0.21, 0.41, 0.61, 0.81, 1.01});
    ASSERT_TRUE(fit.has_value());
    EXPECT_NEAR(fit->slope, 1.0, 1e-12);
    EXPECT_NEAR(fit->intercept, 0.01, 1e-12);
    EXPECT_NEAR(fit->r, 1.0, 1e-12);
    EXPECT_FALSE(processing::fit_line({1, 1, 1}, {1, 2, 3}).has_value());
    // A bent response: r falls below 0.999 and fails; a straight one above 2 A warns.
    const auto bent = processing::fit_line({0.5, 1, 1.5, 2, 2.5}, {0.5, 1, 1.45, 1.8, 2.0});
    EXPECT_EQ(processing::linearity_verdict(*bent, {0.5, 1, 1.45, 1.8, 2.0}, 0.999, 2.0), verdict::fail);
    EXPECT_EQ(processing::linearity_verdict(*fit, {0.5, 2.1}, 0.999, 2.0), verdict::warn);

    EXPECT_NEAR(processing::rms_noise({0.001, -0.001, 0.001, -0.001}), 0.001, 1e-15);
    EXPECT_NEAR(processing::largest_departure({0.0005, -0.0021, 0.001}), 0.0021, 1e-15);
    // 0.0001 A every 36 s is 0.01 A/h, whatever the offset.
    std::vector<double> t, a;
    for (int i = 0; i < 20; ++i) {
        t.push_back(36.0 * i);
        a.push_back(0.3 + 0.0001 * i);
    }
    EXPECT_NEAR(*processing::drift_per_hour(t, a), 0.01, 1e-12);
    EXPECT_FALSE(processing::drift_per_hour({5}, {0.1}).has_value());
    const auto sd = processing::mean_and_sd({361.2, 361.4});
    EXPECT_NEAR(sd.mean, 361.3, 1e-12);
    EXPECT_NEAR(sd.sd, 0.141421356, 1e-8);
}

TEST(Judgements, OneItemOutOfToleranceFailsTheCheckAndTheTrendShowsTheWorst) {
    verification_settings s;
    std::vector<std::vector<double>> centres;
    for (double nm : s.holmium_nm)
        centres.push_back({nm + 0.2, nm + 0.3});
    EXPECT_EQ(judge_wavelength(s, centres, 656.2).verdict, verdict::pass);
    centres[0] = {s.holmium_nm[0] - 1.5}; // 361.3 nm: 1.5 nm off with +-1 below 400 nm
    const check_result bad = judge_wavelength(s, centres, 656.2);
    EXPECT_EQ(bad.verdict, verdict::fail);
    EXPECT_EQ(bad.items.at(0).verdict, verdict::fail);
    EXPECT_EQ(bad.items.at(1).verdict, verdict::pass);
    EXPECT_NEAR(bad.trend, -1.5, 1e-9);
    centres[0].clear(); // a band not found is a fail, not a pass by silence
    EXPECT_EQ(judge_wavelength(s, centres, std::nullopt).items.back().verdict, verdict::fail);
    EXPECT_EQ(judge_wavelength(s, centres, std::nullopt).verdict, verdict::fail);

    EXPECT_EQ(judge_stray(s, {3.2, 2.9}).verdict, verdict::fail);
    EXPECT_EQ(judge_stray(s, {3.2, 3.0}).verdict, verdict::pass);
    EXPECT_EQ(judge_drift(s, {{0, 0}, {300, 0.0001}, {600, 0.0002}}).verdict, verdict::pass); // 0.0012 A/h
    EXPECT_EQ(judge_drift(s, {{0, 0}, {300, 0.0004}, {600, 0.0008}}).verdict, verdict::fail); // 0.0048 A/h
    EXPECT_EQ(judge_resolution(s, std::nullopt).verdict, verdict::fail);
    EXPECT_EQ(judge_resolution(s, 2.3).verdict, verdict::pass);
    EXPECT_EQ(judge_noise(s, {0.0005, -0.0005}, {0.0025}).items.at(1).verdict, verdict::fail);
}

TEST(VerificationSettings, TheLabsValuesRoundTripAndBadOnesAreNamed) {
    verification_settings s;
    s.holmium_nm = {361.5, 536.4};
    s.wavelength_tol_from_400 = 2.5;
    s.absorbance_materials[0].points[2].value = 0.512;
    s.interval_days = 30;
    QString why;
    const verification_settings back = settings_from_text(settings_to_text(s), &why);
    EXPECT_TRUE(why.isEmpty()) << why.toStdString();
    EXPECT_EQ(back.holmium_nm, s.holmium_nm);
    EXPECT_EQ(back.wavelength_tol_from_400, 2.5);
    EXPECT_EQ(back.absorbance_materials[0].points[2].value, 0.512);
    EXPECT_EQ(back.interval_days, 30);

    auto text = settings_to_text(s);
    text[QStringLiteral("Holmium bands")] = QStringLiteral("361.3 abc");
    text[QStringLiteral("Interval days")] = QStringLiteral("0");
    settings_from_text(text, &why);
    EXPECT_TRUE(why.contains(QStringLiteral("Holmium bands")) &&
                why.contains(QStringLiteral("Interval days")))
        << why.toStdString();
    text = settings_to_text(s);
    text[QStringLiteral("Stray light minimum")] = QStringLiteral("3");
    text[QStringLiteral("Flatness tolerance")] = QStringLiteral("-0.002");
    settings_from_text(text, &why);
    EXPECT_EQ(why, QStringLiteral("Tolerances must be greater than 0."));
}

TEST(DueReminder, DueWhenTheLastFullRunIsOlderThanTheInterval) {
    const QDateTime now(QDate(2026, 6, 1), QTime(9, 0));
    EXPECT_FALSE(verification_due(std::nullopt, now, 90));
    EXPECT_FALSE(verification_due(now.addDays(-90), now, 90));
    EXPECT_TRUE(verification_due(now.addDays(-90).addSecs(-60), now, 90));
    EXPECT_FALSE(verification_due(now.addDays(-29), now, 30));
    EXPECT_EQ(verification_due_text(QDateTime(QDate(2026, 2, 27), QTime(14, 5))),
              QStringLiteral("Performance verification is due (last run: 2026-02-27)."));
    EXPECT_EQ(verification_due_text(std::nullopt),
              QStringLiteral("Performance verification is due (last run: never)."));
}

} // namespace
} // namespace lumora
