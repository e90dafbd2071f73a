// The checks run on the simulator's instrument model, every reading converted by the program's own
// photometric routine: each optics fault fails its own check and no other. Then the history as it
// lands in a real SQLite file.
#include "link/photometric.h"
#include "link/protocol.h"
#include "link/shared_state.h"
#include "sim/emission_line.h"
#include "sim/model.h"
#include "store/database.h"
#include "store/verification_store.h"
#include "system/verification_run.h"

#include <QTemporaryDir>
#include <cmath>
#include <gtest/gtest.h>
#include <map>

namespace lumora {
namespace {

using processing::verdict;

// The instrument as the checks reach it, on the simulator's model and a virtual clock: counts come
// from the model, and absorbance from show_now_abs against the reference the program keeps.
class model_instrument : public verification_instrument {
public:
    model_instrument() : model(7, 0, "blank") {
        reset_shared_state();
        for (int b = 0; b < 5; ++b)
            shared.dark_by_band[static_cast<std::size_t>(b)] =
                static_cast<std::int32_t>(model.dark_counts(model.optics().gain_of_band(b)));
    }

    bool put_in_beam(const beam_material& m) override {
        static const std::map<beam_material::kind, std::string> names{{beam_material::blank, "blank"},
                                                                      {beam_material::holmium, "holmium"},
                                                                      {beam_material::nitrite, "nitrite"}};
        std::string sample = m.what == beam_material::neutral      ? "neutral:" + std::to_string(m.amount)
                             : m.what == beam_material::dichromate ? "dichromate:" + std::to_string(m.amount)
                                                                   : names.at(m.what);
        model.compartment().load(sample, t);
        return true;
    }
    bool reference_scan(int first, int last) override {
        for (int nm = first; nm <= last; ++nm)
            shared.reference_intensity[static_cast<std::size_t>(nm - 320)] = counts(nm, 0.04);
        return true;
    }
    std::vector<double> sample_scan(int first, int last) override {
        std::vector<double> a;
        for (int nm = first; nm <= last; ++nm)
            a.push_back(convert(nm, counts(nm, 0.04)));
        return a;
    }
    bool zero_at(double nm) override {
        zero_nm = nm;
        double sum = 0;
        for (int i = 0; i < 10; ++i)
            sum += counts(nm, 0.05);
        shared.reference_intensity[static_cast<std::size_t>(nm - 320)] = sum / 10;
        return true;
    }
    std::vector<double> readings(int count) override {
        std::vector<double> a;
        for (int i = 0; i < count; ++i)
            a.push_back(convert(zero_nm, counts(zero_nm, 0.05)));
        return a;
    }
    std::vector<std::pair<double, double>> readings_for(double seconds,
                                                        const std::function<bool(double)>& tick) override {
        std::vector<std::pair<double, double>> out;
        for (double s = 0; s <= seconds; s += 5) {
            if (!tick(seconds - s)) break;
            out.emplace_back(s, convert(zero_nm, counts(zero_nm, 5)));
        }
        return out;
    }
    std::optional<verify_points_array> bandwidth_scan() override {
        verify_points_array p{};
        for (int i = 0; i <= verify_last_point; ++i)
            p[static_cast<std::size_t>(i)] = model.line_counts(sim::EmissionLine::point_nm(i));
        t += 79 * 0.02;
        return p;
    }

    sim::Model model;
    double t = 0; // [s] virtual
    double zero_nm = 500;

private:
    double counts(double nm, double takes) {
        t += takes;
        return model.sample_counts(nm, t);
    }
    double convert(double nm, double intensity) {
        shared.lambda_now = nm;
        show_now_abs(static_cast<std::int32_t>(intensity));
        return shared.now_abs;
    }
};

std::map<verification_check, verdict> run_all(model_instrument& inst) {
    const verification_settings s;
    std::map<verification_check, verdict> out;
    for (int c = 0; c < verification_check_count; ++c) {
        const check_result r = run_check(static_cast<verification_check>(c), s, inst);
        out[r.check] = r.verdict;
    }
    return out;
}

TEST(VerificationOnTheModel, EachFaultFailsItsOwnCheckAndNoOther) {
    struct fault_case {
        const char* name;
        std::function<void(model_instrument&)> set;
        verification_check fails;
    };
    const fault_case cases[] = {
        {"wavelength offset 1.5 nm", [](model_instrument& m) { m.model.set_wavelength_offset(1.5); },
         verification_check::wavelength},
        {"stray light 0.5 %", [](model_instrument& m) { m.model.set_stray(0.005); },
         verification_check::stray_light},
        {"drift 0.01 A/h", [](model_instrument& m) { m.model.set_drift(0.01, 0); },
         verification_check::drift},
        {"bandwidth 3 nm", [](model_instrument& m) { m.model.line().set_fwhm(3.0); },
         verification_check::resolution},
    };
    for (const fault_case& fc : cases) {
        model_instrument inst;
        fc.set(inst);
        for (const auto& [check, v] : run_all(inst))
            EXPECT_EQ(v, check == fc.fails ? verdict::fail : verdict::pass)
                << fc.name << ": " << check_name(check).toStdString();
    }
}

TEST(VerificationHistory, RunsLandInTheTableAndOnlyAFullRunCountsForTheReminder) {
    QTemporaryDir dir;
    ASSERT_EQ(db_open_file(dir.path() + QStringLiteral("/Lumora.db"), true), QString());
    EXPECT_FALSE(last_full_verification().has_value());
    const QDateTime first(QDate(2026, 1, 10), QTime(9, 30));
    const QDateTime partial(QDate(2026, 3, 2), QTime(11, 0));
    save_verification_run(
        {{first, QStringLiteral("A. Lab"), QStringLiteral("Stray light"), QStringLiteral("340 nm"),
          QStringLiteral(">= 3.0 A"), 4.5, QStringLiteral("Pass"), true, QStringLiteral("4.5 4.5")},
         {first,
          QStringLiteral("A. Lab"),
          QStringLiteral("Drift"),
          QStringLiteral("500 nm"),
          QStringLiteral("<= 0.002 A/h"),
          0.0004,
          QStringLiteral("Pass"),
          true,
          {}}});
    save_verification_run({{partial,
                            QStringLiteral("B. Lab"),
                            QStringLiteral("Drift"),
                            QStringLiteral("500 nm"),
                            QStringLiteral("<= 0.002 A/h"),
                            0.011,
                            QStringLiteral("Fail"),
                            false,
                            {}}});
    EXPECT_EQ(last_full_verification(), first);
    const auto drift = load_verification_history(QStringLiteral("Drift"));
    ASSERT_EQ(drift.size(), 2u);
    EXPECT_EQ(drift[0].time, first);
    EXPECT_EQ(drift[1].operator_name, QStringLiteral("B. Lab"));
    EXPECT_DOUBLE_EQ(drift[1].value, 0.011);
    EXPECT_EQ(drift[1].verdict, QStringLiteral("Fail"));
    EXPECT_EQ(load_verification_history().size(), 3u);

    // The lab's settings live beside the other system rows and replace each other whole.
    save_verification_settings({{QStringLiteral("Interval days"), QStringLiteral("30")}});
    save_verification_settings({{QStringLiteral("Drift maximum"), QStringLiteral("0.003")}});
    const auto settings = load_verification_settings();
    ASSERT_EQ(settings.size(), 1u);
    EXPECT_EQ(settings.at(QStringLiteral("Drift maximum")), QStringLiteral("0.003"));
    db_close();

    // A database from before the table existed gets it on opening, its rows untouched.
    const QString old = dir.path() + QStringLiteral("/old.db");
    ASSERT_EQ(db_open_file(old, true), QString());
    db_execute(QStringLiteral("DROP TABLE verification"));
    db_close();
    ASSERT_EQ(db_open_file(old, true), QString());
    EXPECT_TRUE(load_verification_history().empty());
    EXPECT_EQ(db_query(QStringLiteral("SELECT ParaValue FROM system WHERE ParaName='Default WL'")).Fields(0),
              QStringLiteral("500"));
    db_close();
}

} // namespace
} // namespace lumora
