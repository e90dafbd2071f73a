// Protein's stored batches: the setup with its standards and coefficients, and in a result batch
// the filled rows of both tables as fixed-width records, ten characters a cell. The wavelength is
// not kept: a load leaves it as it stands.
#include "frmProtein.h"
#include "link/shared_state.h"
#include "platform/grid.h"
#include "platform/prompts.h"
#include "protein_rows.h"
#include "protein_setup.h"

#include <QTabBar>
#include <algorithm>

namespace lumora {
namespace {

constexpr int cell_width = 10;
constexpr int data_cells = 5;   // fgdData columns 1 to 5
constexpr int sample_cells = 3; // fgdSample columns 1 to 3

row_writer setup_rows(bool result) {
    const ProteinSetup& p = protein;
    const calibration_set& s = p.cal;
    const int n = std::clamp<int>(s.std_count, 0, max_standards);
    row_writer w;
    w.add(int{p.assay});
    w.add(int{p.std_reps});
    w.add(int{p.sample_reps});
    w.add(int{p.delay});
    w.add(p.unit);
    w.add(n);
    w.add(int{s.fit_type});
    for (const auto* values : {&s.std_conc, &s.std_abs})
        for (int i = 0; i < n; ++i)
            w.add((*values)[static_cast<std::size_t>(i)]);
    w.add(s.fit_ka);
    w.add(s.fit_kb);
    w.add(s.fit_kc);
    if (result) {
        w.add(int{p.data_rows});
        w.add(int{p.sample_rows});
    }
    for (const QString& text : {p.report_laboratory, p.report_subject, p.report_operator, p.report_remark})
        w.add(text);
    for (int flag : p.print_flags)
        w.add(flag);
    return w;
}

// Reads the setup; in a result batch also the row counts, returned as {data rows, sample rows}.
std::pair<int, int> read_setup(row_cursor& r, bool result) {
    ProteinSetup& p = protein;
    calibration_set& s = p.cal;
    const int assays = static_cast<int>(protein_assays().size());
    p.assay = static_cast<std::int16_t>(std::clamp(r.integer(), 0, assays - 1));
    p.std_reps = static_cast<std::int16_t>(std::clamp(r.integer(), 1, max_replicates));
    p.sample_reps = static_cast<std::int16_t>(std::clamp(r.integer(), 1, max_replicates));
    p.delay = static_cast<std::int16_t>(std::clamp(r.integer(), 0, 50));
    p.unit = r.text();
    const int n = std::clamp(r.integer(), 1, max_standards);
    s.std_count = static_cast<std::int16_t>(n);
    s.fit_type = static_cast<std::int16_t>(std::clamp(r.integer(), 1, 4));
    for (auto* values : {&s.std_conc, &s.std_abs})
        for (int i = 0; i < n; ++i)
            (*values)[static_cast<std::size_t>(i)] = r.number();
    s.fit_ka = r.number();
    s.fit_kb = r.number();
    s.fit_kc = r.number();
    std::pair<int, int> counts{0, 0};
    if (result) {
        counts.first = std::max(r.integer(), 0);
        counts.second = std::max(r.integer(), 0);
    }
    for (QString* text : {&p.report_laboratory, &p.report_subject, &p.report_operator, &p.report_remark})
        *text = r.text();
    for (auto& flag : p.print_flags)
        flag = static_cast<std::int16_t>(r.integer());
    return counts;
}

// A table row as one record: each cell trimmed and padded to ten; a longer cell is kept whole and
// shifts the rest.
QString record(const grid& table, int row, int cells) {
    QString out;
    for (int c = 1; c <= cells; ++c)
        out += table.TextMatrix(row, c).trimmed().leftJustified(cell_width, QLatin1Char(' '));
    return out;
}

void fill_row(grid& table, int row, const QString& record, int cells) {
    for (int c = 1; c <= cells; ++c)
        table.setTextMatrix(row, c, record.mid((c - 1) * cell_width, cell_width).trimmed());
}

} // namespace

bool frmProtein::batch_data() const {
    return !tables_[0]->TextMatrix(1, 1).isEmpty();
}

std::vector<batch_row> frmProtein::result_rows() const {
    row_writer w = setup_rows(true);
    w.restart(QStringLiteral("D"));
    const grid& data = fgdData();
    const grid& sample = fgdSample();
    for (int r = 1; r <= std::min<int>(protein.data_rows, data.Rows() - 1); ++r)
        w.add(record(data, r, data_cells));
    for (int r = 1; r <= std::min<int>(protein.sample_rows, sample.Rows() - 1); ++r)
        w.add(record(sample, r, sample_cells));
    return w.rows;
}

std::vector<batch_row> frmProtein::parameter_rows() const {
    return setup_rows(false).rows;
}

void frmProtein::load_result(const std::vector<batch_row>& rows) {
    ProteinSetup& p = protein;
    row_cursor setup(rows, QStringLiteral("P"));
    const auto [data_rows, sample_rows] = read_setup(setup, true);
    p.loading = true;
    clear_form();
    // A batch cut short holds no more rows than it has records for.
    row_cursor d(rows, QStringLiteral("D"));
    const int have = static_cast<int>(d.remaining());
    p.data_rows = static_cast<std::int16_t>(std::min(data_rows, have));
    p.sample_rows = static_cast<std::int16_t>(std::clamp(sample_rows, 0, have - p.data_rows));
    grid& data = fgdData();
    grid& sample = fgdSample();
    data.setRows(p.data_rows + 1);
    sample.setRows(p.sample_reps + p.sample_rows + 2);
    for (int r = 1; r <= p.data_rows; ++r)
        fill_row(data, r, d.text(), data_cells);
    const int group = p.sample_reps + 1;
    for (int i = 1; i <= p.sample_rows; ++i) {
        fill_row(sample, i, d.text(), sample_cells);
        sample.setTextMatrix(i, 0,
                             i % group == 0 ? QStringLiteral("Avg%1").arg(i / group)
                                            : replicate_label(i, p.sample_reps));
    }
    // The standards count as read: "Read" goes on with the samples.
    p.std_read = static_cast<std::int16_t>(p.data_rows - p.data_rows / (p.std_reps + 1));
    p.reading_std = false;
    refit_standards();
    p.loading = false;
    if (p.sample_rows > 0 && main_hooks.toolbar_enable_for) main_hooks.toolbar_enable_for(fid_protein);
    prompts::message_box(QStringLiteral("Please press RUN to read samples!"), box_icon::information,
                         QStringLiteral("Information"));
    tabs_->setCurrentIndex(1);
}

void frmProtein::read_parameters(const std::vector<batch_row>& rows) {
    row_cursor p(rows, QStringLiteral("P"));
    read_setup(p, false);
}

void frmProtein::parameters_loaded() {
    clear_form();
}

} // namespace lumora
