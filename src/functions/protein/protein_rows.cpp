#include "protein_rows.h"

#include "platform/grid.h"
#include "platform/numeric_text.h"
#include "processing/replicate_stats.h"
#include "protein_setup.h"

#include <algorithm>
#include <array>
#include <vector>

namespace lumora {
namespace {

double number(const QString& text) {
    return val(text.toStdString());
}

double cell(const grid& g, int r, int c) {
    return number(g.TextMatrix(r, c));
}

QString percent(double cv) {
    return format_text(cv, "#0.000") + QStringLiteral("%");
}

} // namespace

QString replicate_label(int r, int rep) {
    return QStringLiteral("%1-%2").arg(r / (rep + 1) + 1).arg(r % (rep + 1));
}

int average_entry(const QString& label) {
    if (label.size() < 4 || !label.at(3).isDigit()) return -1;
    const int k = label.at(3).digitValue();
    return k >= 1 && k <= 21 ? k - 1 : -1;
}

void add_sample_reading(grid& table, ProteinSetup& p, double abs) {
    const int rep = std::clamp<int>(p.sample_reps, 1, max_replicates);
    const int r = p.sample_rows + 1;
    if (table.Rows() < r + 2) table.setRows(r + 2);
    table.setTextMatrix(r, 1, format_text(abs, "#0.000"));
    const calibration_set& s = p.cal;
    const double conc = conc_from_abs(s.fit_type, s.fit_ka, s.fit_kb, s.fit_kc, cell(table, r, 1));
    table.setTextMatrix(r, 2, format_text(conc, "0.000"));
    p.sample_rows = static_cast<std::int16_t>(r);
    table.setTextMatrix(r, 0, replicate_label(r, rep));
    if ((r + 1) % (rep + 1) == 0) {
        const int avg = r + 1;
        std::array<double, max_replicates> abs_x{}, conc_x{};
        double abs_sum = 0, conc_sum = 0;
        for (int j = 0; j < rep; ++j) {
            const int row = avg - rep + j;
            abs_x[static_cast<std::size_t>(j)] = cell(table, row, 1);
            conc_x[static_cast<std::size_t>(j)] = cell(table, row, 2);
            abs_sum += abs_x[static_cast<std::size_t>(j)];
            conc_sum += conc_x[static_cast<std::size_t>(j)];
        }
        table.setTextMatrix(avg, 0, QStringLiteral("Avg%1").arg(avg / (rep + 1)));
        table.setTextMatrix(avg, 1, format_text(abs_sum / rep, "#0.000"));
        table.setTextMatrix(avg, 2, format_text(conc_sum / rep, "#0.000"));
        p.sample_rows = static_cast<std::int16_t>(avg);
        if (rep >= 3) {
            // The spread of the shown values around the shown mean.
            const double m = cell(table, avg, 2);
            const auto x = std::span<const double>(conc_x.data(), static_cast<std::size_t>(rep));
            table.setTextMatrix(avg, 3, percent(replicate_cv(x, m)));
        }
    }
    table.setRows(rep + p.sample_rows + 2);
}

bool add_standard_reading(grid& table, ProteinSetup& p, double abs) {
    const int rep = std::clamp<int>(p.std_reps, 1, max_replicates);
    const int r = p.data_rows + 1;
    if (r >= table.Rows()) return false;
    table.setTextMatrix(r, 2, format_text(abs, "#0.000"));
    ++p.std_read;
    ++p.data_rows;
    const int next = r + 1;
    if (next < table.Rows() && table.TextMatrix(next, 0).startsWith(QLatin1String("Avg")) && r >= rep) {
        double sum = 0;
        for (int row = next - rep; row < next; ++row)
            sum += cell(table, row, 2);
        const QString mean = format_text(sum / rep, "#0.000");
        table.setTextMatrix(next, 2, mean);
        const int entry = average_entry(table.TextMatrix(next, 0));
        if (entry >= 0) p.cal.std_abs[static_cast<std::size_t>(entry)] = number(mean);
        ++p.data_rows;
    }
    return true;
}

bool fill_fit_columns(grid& table, ProteinSetup& p) {
    const calibration_set& s = p.cal;
    const int rows = std::min<int>(p.data_rows, table.Rows() - 1);
    for (int r = 1; r <= rows; ++r) {
        const double cal_conc = conc_from_abs(s.fit_type, s.fit_ka, s.fit_kb, s.fit_kc, cell(table, r, 2));
        table.setTextMatrix(r, 3, format_text(cal_conc, "#0.000"));
        table.setTextMatrix(r, 4, format_text(cal_conc - cell(table, r, 1), "#0.000"));
    }
    const int rep = std::clamp<int>(p.std_reps, 1, max_replicates);
    if (rep < 3) return true;
    const int n = std::clamp<int>(s.std_count, 1, max_standards);
    for (int i = 0; i < n; ++i) {
        const int first = i * (rep + 1) + 1, avg = first + rep;
        if (avg >= table.Rows()) break;
        std::array<double, max_replicates> x{};
        for (int j = 0; j < rep; ++j)
            x[static_cast<std::size_t>(j)] = cell(table, first + j, 3);
        const auto cv = standard_cv(std::span<const double>(x.data(), static_cast<std::size_t>(rep)),
                                    s.std_conc[static_cast<std::size_t>(i)]);
        if (!cv) return false;
        table.setTextMatrix(avg, 5, percent(*cv));
    }
    return true;
}

void protein_limits(const grid& table, ProteinSetup& p) {
    const int rows = std::min<int>(p.data_rows, table.Rows() - 1);
    std::vector<double> conc(static_cast<std::size_t>(std::max(rows, 0)));
    std::vector<double> abs(conc.size()), diff(conc.size());
    for (int r = 1; r <= rows; ++r) {
        const auto i = static_cast<std::size_t>(r - 1);
        conc[i] = cell(table, r, 1);
        abs[i] = cell(table, r, 2);
        diff[i] = cell(table, r, 4);
    }
    calcu_conc_limite(p.cal, conc, abs);
    p.diff_max = diff_limit(diff);
    p.diff_min = -p.diff_max;
}

} // namespace lumora
