#pragma once
// The "Statistics" tab of the calibration functions (Quantitative, Protein): the weighting of
// the straight lines, the table of the calibration's statistics, a warning where the curve
// turns, and the residual plot. Beside it, the extra columns of the sample table that hold each
// sample's 95 % prediction interval and its flags.
#include "processing/calibration_stats.h"
#include "processing/rate_stats.h"

#include <QStringList>
#include <QWidget>
#include <array>
#include <functional>

class QBoxLayout;
class QComboBox;
class QLabel;
class QTabBar;

namespace lumora {

class grid;
class plot_surface;

class stats_panel : public QWidget {
    Q_OBJECT
public:
    explicit stats_panel(QWidget* parent = nullptr);

    // The statistics in the table and the plot; the weighting box is only offered for the
    // straight-line fits (types 1 and 2).
    void show_stats(const calibration_stats& s, const QString& unit);
    // The box's choice; a second-order fit leaves it aside (see calibration_statistics). Setting
    // it sends no signal: the choice outlives the window for the rest of the session.
    stats_weighting chosen() const;
    void set_chosen(stats_weighting w);

    QComboBox* cboWeighting() const { return weighting_; }
    grid& fgdStats() const { return *table_; }
    plot_surface& picResidual() const { return *plot_; }
    QLabel* lblStatsWarning() const { return warning_; }

signals:
    void weighting_changed();

private:
    QComboBox* weighting_ = nullptr;
    grid* table_ = nullptr;
    QLabel* warning_ = nullptr;
    plot_surface* plot_ = nullptr;
};

// The right side of a calibration window: the tabs "Standard data", "Sample data" and
// "Statistics" over the tables fgdData and fgdSample and the statistics panel (Frame1_2). The
// panel starts on `weighting`, which takes the user's later picks before `on_pick` runs.
stats_panel* add_calibration_tables(QWidget* window, QTabBar* tabs, QBoxLayout* layout,
                                    std::array<grid*, 2>& tables, std::array<QWidget*, 3>& frames,
                                    stats_weighting& weighting, std::function<void()> on_pick);

// The sample table's statistics columns from column `first` on: "Conc. low 95%", "Conc. high
// 95%", "Flag". The table keeps its other columns as they are.
constexpr int sample_stats_columns = 3;
// A sample's prediction under the label of its row ("3", "Avg2"), for the report and the exports.
struct labelled_prediction {
    QString label;
    sample_prediction p;
};
// No., Conc., Conc. low 95%, Conc. high 95%, Flag.
QStringList prediction_head();
QStringList prediction_cells(const labelled_prediction& row);
// The statistics rows as label, value and SE or note.
QList<QStringList> stats_rows(const calibration_stats& s, const QString& unit);
// Kinetic's rate statistics as label and value rows.
QList<QStringList> rate_rows(const processing::rate_stats& r);
void sample_stats_headers(grid& table, int first);
void show_sample_prediction(grid& table, int row, int first, const sample_prediction& p);

} // namespace lumora
