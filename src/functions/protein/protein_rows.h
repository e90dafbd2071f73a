#pragma once
// The rows of the Protein tables. Each standard and each sample is read `rep` times: its rows are
// labelled k-1 .. k-rep and followed by an average row "Avgk". The grids are the store: every
// mean, Conc. and spread is computed from the cell texts as shown.
#include <QString>

namespace lumora {

class grid;
struct ProteinSetup;

// The label of replicate row r (1-based) with `rep` replicates: k-j, k = r / (rep + 1) + 1,
// j = r mod (rep + 1).
QString replicate_label(int r, int rep);
// The entry of std_abs an average row's label stores into: the one digit at position 4 ("Avg12"
// gives 0, as "Avg1" does), minus 1; -1 when that is no standard number.
int average_entry(const QString& label);

// The sample branch of a reading: the reading in the next row with its Conc., and after the
// group's last replicate its average row (mean ABS, mean Conc., %CV from 3 replicates on).
// The grid grows a row per reading.
void add_sample_reading(grid& table, ProteinSetup& p, double abs);

// The standard branch: the reading in the next row; after the standard's last replicate the mean
// goes to its average row and into std_abs. False, and nothing written, when the table has no
// row left for it.
bool add_standard_reading(grid& table, ProteinSetup& p, double abs);

// After a fit: Cal-Conc. and Diff of every filled row, then the %CV of each standard around its
// nominal Conc. (3 replicates and more). False when a standard of Conc. 0 meets its %CV: the
// columns written so far stay and the rest of the step is not done.
bool fill_fit_columns(grid& table, ProteinSetup& p);

// The plot limits from every filled row, replicate and average alike, and the Diff limits.
void protein_limits(const grid& table, ProteinSetup& p);

} // namespace lumora
