// "Performance verification" on the simulator through the program's link, on the rig's virtual
// clock: the entry refused with the port closed, a run of every check with its prompts, the list,
// the stored run and its certificate; a grating offset fails the wavelength check alone.
#include "platform/prompts.h"
#include "sim_rig.h"
#include "store/verification_store.h"
#include "system/frmPerformance.h"

#include <QAction>
#include <QCoreApplication>
#include <QFile>
#include <QLineEdit>
#include <QTableWidget>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace lumora::test {
namespace {

// The simulator's name of a material: the kinds in their order, an amount where there is one.
std::string sim_sample(const beam_material& m) {
    static const char* names[] = {"blank", "holmium", "neutral:", "dichromate:", "nitrite"};
    const std::string name = names[m.what];
    return name.back() == ':' ? name + std::to_string(m.amount) : name;
}

struct performance_rig {
    sim_rig rig;
    frmPerformance* window = nullptr;
    std::vector<QString> prompted;

    explicit performance_rig(const std::string& fault = {}, sim::Options options = {}) : rig(options) {
        prompts::script();
        EXPECT_TRUE(rig.open_port_until_live());
        if (!fault.empty()) {
            EXPECT_EQ(rig.instrument.control(fault).rfind("ok", 0), 0u);
        }
        rig.window->menu_action(QStringLiteral("mnuFuncSysPerformance"))->trigger();
        window = rig.window->findChild<frmPerformance*>();
        window->make_instrument = [this] {
            return std::make_unique<link_verification_instrument>(
                [this](const std::function<bool()>& done, double seconds) {
                    return rig.run_until(done, seconds);
                },
                [this] { return rig.instrument.now(); },
                [this](const beam_material& m) {
                    prompted.push_back(beam_prompt(m));
                    return rig.instrument.control("sample " + sim_sample(m)).rfind("ok", 0) == 0;
                });
        };
    }
    ~performance_rig() { prompts::unscript(); }
    QString cell(int row, int col) const { return window->tblChecks()->item(row, col)->text(); }
};

TEST(PerformanceWindow, RefusedWithThePortClosed) {
    sim_rig rig;
    prompts::script();
    rig.window->menu_action(QStringLiteral("mnuFuncSysPerformance"))->trigger();
    EXPECT_EQ(rig.window->findChild<frmPerformance*>(), nullptr);
    ASSERT_FALSE(prompts::shown().empty());
    EXPECT_EQ(prompts::shown().back().text, QStringLiteral("The function is not available!"));
    prompts::unscript();
}

TEST(PerformanceWindow, ATrueInstrumentPassesEveryCheckAndTheRunIsStoredAndCertified) {
    sim::Options noisy;
    noisy.noise_counts = 20; // a detector with a little noise, as a real one has
    performance_rig r({}, noisy);
    ASSERT_NE(r.window, nullptr);
    r.window->txtOperator()->setText(QStringLiteral("A. Analyst"));
    const double started = r.rig.instrument.now();
    r.window->cmdRun_Click();
    EXPECT_GE(r.rig.instrument.now() - started, 600.0) << "the drift check reads for its ten minutes";
    ASSERT_EQ(r.window->results().size(), 7u);
    for (const check_result& c : r.window->results())
        EXPECT_EQ(c.verdict, processing::verdict::pass)
            << check_name(c.check).toStdString() << " " << c.why.toStdString();
    for (int row = 0; row < 7; ++row)
        EXPECT_EQ(r.cell(row, 5), QStringLiteral("Pass")) << row;
    // The band centres the program found lie within 0.1 nm of the simulator's bands.
    for (const check_item& item : r.window->results().front().items)
        EXPECT_LT(std::abs(item.number), 0.1)
            << item.reference.toStdString() << " " << item.value.toStdString();
    EXPECT_NE(
        std::find(r.prompted.begin(), r.prompted.end(),
                  QStringLiteral("Put the holmium oxide filter in the sample position, then press OK.")),
        r.prompted.end());
    EXPECT_TRUE(
        prompts::shown().back().text.startsWith(QStringLiteral("7 of 7 checks passed. Overall: Pass.")))
        << prompts::shown().back().text.toStdString();

    const auto stored = load_verification_history();
    ASSERT_EQ(stored.size(), 7u);
    EXPECT_EQ(stored.front().operator_name, QStringLiteral("A. Analyst"));
    EXPECT_TRUE(last_full_verification().has_value());

    r.window->cmdPrint_Click();
    QFile pdf(r.window->certificate_path());
    ASSERT_TRUE(pdf.open(QIODevice::ReadOnly)) << r.window->certificate_path().toStdString();
    EXPECT_TRUE(pdf.read(5) == "%PDF-");
    EXPECT_EQ(r.rig.panel(6), r.window->certificate_path());
    pdf.remove();
}

TEST(PerformanceWindow, TheSettingsTabRefusesABadValueAndKeepsAGoodOneForTheNextWindow) {
    performance_rig r;
    QTableWidget* t = r.window->tblSettings();
    const auto row_of = [t](const QString& name) {
        for (int i = 0; i < t->rowCount(); ++i)
            if (t->item(i, 0)->text() == name) return i;
        return -1;
    };
    const int drift = row_of(QStringLiteral("Drift maximum"));
    ASSERT_GE(drift, 0);
    t->item(drift, 1)->setText(QStringLiteral("two"));
    r.window->cmdSaveSettings_Click();
    EXPECT_EQ(prompts::shown().back().text, QStringLiteral("Not a valid value: Drift maximum."));
    EXPECT_EQ(r.window->settings().drift_max, 0.002);
    EXPECT_TRUE(load_verification_settings().empty());

    t->item(drift, 1)->setText(QStringLiteral("0.005"));
    r.window->cmdSaveSettings_Click();
    EXPECT_EQ(r.window->settings().drift_max, 0.005);
    EXPECT_EQ(r.cell(6, 2), QStringLiteral("<= 0.005 A/h"));
    r.window->close();
    frmPerformance again;
    EXPECT_EQ(again.settings().drift_max, 0.005);
}

TEST(PerformanceWindow, AGratingOffsetFailsTheWavelengthCheckAloneAndClosingReturnsTheGrating) {
    performance_rig r("fault wavelength_offset 1.5");
    // Without the two checks at 500 nm the run ends on the line scan, away from where it began.
    r.window->tblChecks()->item(5, 0)->setCheckState(Qt::Unchecked);
    r.window->tblChecks()->item(6, 0)->setCheckState(Qt::Unchecked);
    r.window->cmdRun_Click();
    ASSERT_EQ(r.window->results().size(), 5u);
    for (const check_result& c : r.window->results())
        EXPECT_EQ(c.verdict, c.check == verification_check::wavelength ? processing::verdict::fail
                                                                       : processing::verdict::pass)
            << check_name(c.check).toStdString();
    EXPECT_EQ(r.cell(0, 5), QStringLiteral("Fail"));
    EXPECT_TRUE(
        prompts::shown().back().text.startsWith(QStringLiteral("4 of 5 checks passed. Overall: Fail.")));
    EXPECT_GT(r.rig.instrument.grating_nm(), 600);
    r.window->reject();
    ASSERT_TRUE(r.rig.run_until([&] { return r.rig.panel(6).startsWith(QStringLiteral("OK")); }, 10));
    EXPECT_NEAR(r.rig.instrument.grating_nm(), 500.0, 0.5);
}

TEST(PerformanceReminder, OneInformationBoxAfterStartUpWhenTheLastFullRunIsOverdue) {
    const auto start_with_run_days_ago = [](int days) {
        QTemporaryDir dir;
        EXPECT_EQ(db_open_file(dir.path() + QStringLiteral("/Lumora.db"), true), QString());
        const QDateTime then = QDateTime::currentDateTime().addDays(-days);
        save_verification_run({{then,
                                QStringLiteral("A. Analyst"),
                                QStringLiteral("Drift"),
                                QStringLiteral("500 nm"),
                                QStringLiteral("<= 0.002 A/h"),
                                0.0003,
                                QStringLiteral("Pass"),
                                true,
                                {}}});
        db_close();
        prompts::script();
        prompts::clear_shown();
        std::vector<shown_box> boxes;
        {
            sim_rig rig({}, dir.path());
            EXPECT_TRUE(rig.open_port_until_live());
            QCoreApplication::processEvents();
            rig.run_for(1);
            QCoreApplication::processEvents();
            boxes = prompts::shown();
        }
        prompts::unscript();
        return std::make_pair(boxes, then);
    };
    const auto [overdue, then] = start_with_run_days_ago(91);
    ASSERT_EQ(overdue.size(), 1u);
    EXPECT_EQ(overdue[0].title, QStringLiteral("Information"));
    EXPECT_EQ(overdue[0].icon, box_icon::information);
    EXPECT_EQ(overdue[0].text, QStringLiteral("Performance verification is due (last run: ") +
                                   then.toString(QStringLiteral("yyyy-MM-dd")) + QStringLiteral(")."));
    EXPECT_TRUE(start_with_run_days_ago(30).first.empty());
}

} // namespace
} // namespace lumora::test
