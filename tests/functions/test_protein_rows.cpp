// The Protein tables: replicate and average rows, means and %CV from the cell texts, the entry an
// average lands on, and the columns a fit fills.
#include "functions/protein/protein_rows.h"
#include "functions/protein/protein_setup.h"
#include "platform/grid.h"

#include <cmath>
#include <gtest/gtest.h>
#include <vector>

using namespace lumora;

namespace {

// A standards table as a fresh setup lays it out: k-j rows and Avgk, Conc. in every row.
void lay_out_standards(grid& g, ProteinSetup& p, const std::vector<double>& conc) {
    const int rep = p.std_reps;
    p.cal.std_count = static_cast<std::int16_t>(conc.size());
    g.setCols(6);
    g.setRows((rep + 1) * static_cast<int>(conc.size()) + 1);
    for (int k = 1; k <= static_cast<int>(conc.size()); ++k) {
        const int first = (k - 1) * (rep + 1) + 1;
        p.cal.std_conc[static_cast<std::size_t>(k - 1)] = conc[static_cast<std::size_t>(k - 1)];
        for (int r = first; r <= first + rep; ++r)
            g.setTextMatrix(r, 1, QString::number(conc[static_cast<std::size_t>(k - 1)], 'f', 3));
        for (int j = 0; j < rep; ++j)
            g.setTextMatrix(first + j, 0, replicate_label(first + j, rep));
        g.setTextMatrix(first + rep, 0, QStringLiteral("Avg%1").arg(k));
    }
}

ProteinSetup setup_with(int std_reps, int sample_reps) {
    ProteinSetup p;
    p.std_reps = static_cast<std::int16_t>(std_reps);
    p.sample_reps = static_cast<std::int16_t>(sample_reps);
    p.cal.fit_type = 1;
    p.cal.fit_ka = 2.0;
    p.cal.fit_kb = p.cal.fit_kc = 0;
    return p;
}

} // namespace

TEST(ProteinRows, LabelsAndTheEntryOfAnAverage) {
    EXPECT_EQ(replicate_label(1, 3), "1-1");
    EXPECT_EQ(replicate_label(3, 3), "1-3");
    EXPECT_EQ(replicate_label(5, 3), "2-1");
    EXPECT_EQ(replicate_label(3, 1), "2-1");
    EXPECT_EQ(average_entry("Avg1"), 0);
    EXPECT_EQ(average_entry("Avg9"), 8);
    // One character only: standards 10 to 19 land on entry 0, standard 20 on entry 1.
    EXPECT_EQ(average_entry("Avg10"), 0);
    EXPECT_EQ(average_entry("Avg12"), 0);
    EXPECT_EQ(average_entry("Avg19"), 0);
    EXPECT_EQ(average_entry("Avg20"), 1);
    EXPECT_EQ(average_entry("Avg"), -1);
    EXPECT_EQ(average_entry("1-1"), -1);
}

TEST(ProteinRows, SampleGroupsGetAnAverageRowAndTheirSpread) {
    grid g;
    g.setCols(4);
    ProteinSetup p = setup_with(1, 3);
    g.setRows(p.sample_reps + 2);
    // 0.1004 shows as 0.100; Conc. is taken from the shown ABS: 0.200, 0.202, 0.198... .
    for (double a : {0.1004, 0.101, 0.099})
        add_sample_reading(g, p, a);
    EXPECT_EQ(g.TextMatrix(1, 0), "1-1");
    EXPECT_EQ(g.TextMatrix(3, 0), "1-3");
    EXPECT_EQ(g.TextMatrix(1, 1), "0.100");
    EXPECT_EQ(g.TextMatrix(1, 2), "0.200");
    EXPECT_EQ(g.TextMatrix(4, 0), "Avg1");
    EXPECT_EQ(g.TextMatrix(4, 1), "0.100");
    EXPECT_EQ(g.TextMatrix(4, 2), "0.200");
    // sd = sqrt((0 + 0.002^2 + 0.002^2) / 2) = 0.002 around 0.200: 1 %.
    EXPECT_EQ(g.TextMatrix(4, 3), "1.000%");
    EXPECT_EQ(p.sample_rows, 4);
    EXPECT_EQ(g.Rows(), 3 + 4 + 2) << "a row more than the readings need, per reading";
    add_sample_reading(g, p, 0.5);
    EXPECT_EQ(g.TextMatrix(5, 0), "2-1");
    EXPECT_EQ(g.Rows(), 3 + 5 + 2);

    // A group whose mean Conc. is 0 shows 0 with its sign, not a division.
    ProteinSetup z = setup_with(1, 3);
    grid zg;
    zg.setCols(4);
    for (double a : {0.0, 0.001, -0.001})
        add_sample_reading(zg, z, a);
    EXPECT_EQ(zg.TextMatrix(4, 2), "0.000");
    EXPECT_EQ(zg.TextMatrix(4, 3), "0.000%");

    // Below three replicates the %CV cell stays empty; one replicate still gets its average row.
    for (int rep : {1, 2}) {
        ProteinSetup q = setup_with(1, rep);
        grid qg;
        qg.setCols(4);
        for (int i = 0; i < rep; ++i)
            add_sample_reading(qg, q, 0.3 + 0.01 * i);
        EXPECT_EQ(qg.TextMatrix(rep + 1, 0), "Avg1") << rep;
        EXPECT_EQ(qg.TextMatrix(rep + 1, 3), "") << rep;
        EXPECT_EQ(qg.TextMatrix(1, 0), "1-1");
    }
}

TEST(ProteinRows, StandardAveragesAndTheEntriesTheyFill) {
    grid g;
    ProteinSetup p = setup_with(2, 1);
    std::vector<double> conc;
    for (int k = 1; k <= 12; ++k)
        conc.push_back(k);
    lay_out_standards(g, p, conc);
    p.cal.std_abs.fill(-1);
    for (int k = 1; k <= 12; ++k) {
        ASSERT_TRUE(add_standard_reading(g, p, 0.1 * k));
        ASSERT_TRUE(add_standard_reading(g, p, 0.1 * k + 0.002));
    }
    EXPECT_EQ(p.data_rows, 36);
    EXPECT_EQ(g.TextMatrix(3, 2), "0.101") << "mean of 0.100 and 0.102 as shown";
    EXPECT_DOUBLE_EQ(p.cal.std_abs[0], 1.201) << "standard 12's average, last on entry 0";
    EXPECT_DOUBLE_EQ(p.cal.std_abs[8], 0.901);
    for (std::size_t i = 9; i <= 11; ++i)
        EXPECT_EQ(p.cal.std_abs[i], -1) << "entry " << i << " keeps its value";
    EXPECT_FALSE(add_standard_reading(g, p, 0.5)) << "no row left";
}

TEST(ProteinRows, FitColumnsAndTheirLimits) {
    grid g;
    ProteinSetup p = setup_with(3, 1);
    lay_out_standards(g, p, {0.5, 1.0});
    for (double a : {0.25, 0.26, 0.24, 0.5, 0.5, 0.5})
        add_standard_reading(g, p, a);
    ASSERT_TRUE(fill_fit_columns(g, p));
    EXPECT_EQ(g.TextMatrix(3, 4), "-0.020");
    protein_limits(g, p);
    EXPECT_NEAR(p.diff_max, 0.022, 1e-12);
    EXPECT_EQ(p.diff_min, -p.diff_max);
    EXPECT_NEAR(p.cal.abs_max, 0.55, 1e-12) << "over replicate rows too";

    // Every Diff 0: the limits still open to +-0.001.
    p.cal.fit_ka = 2.0;
    for (int r = 1; r <= p.data_rows; ++r)
        g.setTextMatrix(r, 2, QString::number(g.TextMatrix(r, 1).toDouble() / 2, 'f', 3));
    ASSERT_TRUE(fill_fit_columns(g, p));
    protein_limits(g, p);
    EXPECT_EQ(p.diff_max, 0.001);
    EXPECT_EQ(p.diff_min, -0.001);
}
