#include "stats_panel.h"

#include "dialog_parts.h"
#include "platform/grid.h"
#include "platform/numeric_text.h"
#include "plot/difference_plot.h"
#include "plot/plot_surface.h"

#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QSignalBlocker>
#include <QTabBar>
#include <QVBoxLayout>

namespace lumora {

stats_panel::stats_panel(QWidget* parent) : QWidget(parent) {
    weighting_ = new QComboBox(this);
    weighting_->setObjectName(QStringLiteral("cboWeighting"));
    for (auto w : {stats_weighting::none, stats_weighting::inverse_x, stats_weighting::inverse_x2})
        weighting_->addItem(QString::fromLatin1(weighting_name(w)));
    auto* label = new QLabel(QStringLiteral("Weighting"), this);
    label->setBuddy(weighting_);
    auto* top = new QHBoxLayout;
    top->addWidget(label);
    top->addWidget(weighting_);
    top->addStretch(1);

    table_ = new grid(this);
    table_->setObjectName(QStringLiteral("fgdStats"));
    table_->setCols(3);
    table_->setRows(1);
    table_->setColWidth(0, 150);
    table_->setColWidth(1, 330);
    table_->setColWidth(2, 280);
    table_->setTextMatrix(0, 0, QStringLiteral("Statistic"));
    table_->setTextMatrix(0, 1, QStringLiteral("Value"));
    table_->setTextMatrix(0, 2, QStringLiteral("SE / note"));

    warning_ = new QLabel(this);
    warning_->setObjectName(QStringLiteral("lblStatsWarning"));
    warning_->setStyleSheet(QStringLiteral("color: #c00000"));
    warning_->setWordWrap(true);
    warning_->hide();

    plot_ = new plot_surface(QSize(400, 200), this);
    plot_->setObjectName(QStringLiteral("picResidual"));
    plot_->setAccessibleName(QStringLiteral("Residual plot"));

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addLayout(top);
    layout->addWidget(table_, 1);
    layout->addWidget(warning_);
    layout->addWidget(plot_, 0, Qt::AlignLeft);
    connect(weighting_, &QComboBox::currentIndexChanged, this, &stats_panel::weighting_changed);
}

stats_weighting stats_panel::chosen() const {
    return static_cast<stats_weighting>(weighting_->currentIndex());
}

void stats_panel::set_chosen(stats_weighting w) {
    const QSignalBlocker quiet(weighting_);
    weighting_->setCurrentIndex(static_cast<int>(w));
}

void stats_panel::show_stats(const calibration_stats& s, const QString& unit) {
    weighting_->setEnabled(s.fit_type <= 2);
    const QList<QStringList> rows = stats_rows(s, unit);
    table_->setRows(static_cast<int>(rows.size()) + 1);
    for (int r = 0; r < rows.size(); ++r)
        for (int c = 0; c < 3; ++c)
            table_->setTextMatrix(r + 1, c, rows[r][c]);
    QString warning;
    if (!s.ok)
        warning = QStringLiteral("Statistics: not enough data (%1).").arg(QString::fromStdString(s.why));
    else if (s.turns)
        warning = QStringLiteral("The calibration curve turns at Conc. %1 within the standards' range: "
                                 "a reading there has two concentrations.")
                      .arg(QString::fromStdString(stats_number(s.turn_conc, 4)));
    warning_->setText(warning);
    warning_->setVisible(!warning.isEmpty());
    if (s.ok)
        draw_residual_plot(*plot_, s.conc, s.residuals, s.s_yx, s.conc_min, s.conc_max, unit);
    else
        draw_residual_plot(*plot_, {}, {}, 0, 0, 1, unit);
    plot_->setAccessibleDescription(s.ok ? QStringLiteral("%1 residuals, s(y/x) %2 A")
                                               .arg(s.n)
                                               .arg(QString::fromStdString(stats_number(s.s_yx, 4)))
                                         : QStringLiteral("not enough data"));
}

QStringList prediction_head() {
    return {QStringLiteral("No."), QStringLiteral("Conc."), QStringLiteral("Conc. low 95%"),
            QStringLiteral("Conc. high 95%"), QStringLiteral("Flag")};
}

QStringList prediction_cells(const labelled_prediction& row) {
    const sample_prediction& p = row.p;
    const auto figure = [&p](double v) {
        return p.ok ? QString::fromStdString(stats_number(v, 4)) : QString();
    };
    return {row.label, figure(p.conc), figure(p.low), figure(p.high),
            QString::fromStdString(sample_flags(p))};
}

QList<QStringList> stats_rows(const calibration_stats& s, const QString& unit) {
    QList<QStringList> out;
    for (const stats_line& l : stats_lines(s, unit.toStdString()))
        out.append(
            {QString::fromStdString(l.label), QString::fromStdString(l.value), QString::fromStdString(l.se)});
    return out;
}

QList<QStringList> rate_rows(const processing::rate_stats& r) {
    if (!r.ok) return {{QStringLiteral("Rate SE (A/min)"), QString::fromLatin1(not_enough_data)}};
    return {{QStringLiteral("Points"), QString::number(r.n)},
            {QStringLiteral("Rate SE (A/min)"), QString::fromStdString(stats_number(r.rate_se, 3))},
            {QStringLiteral("R^2 of the rate window"), format_text(r.r2, "0.0000")},
            {QStringLiteral("Straightness"), r.curved ? QStringLiteral("not straight: R^2 < 0.998")
                                                      : QStringLiteral("straight: R^2 >= 0.998")}};
}

void sample_stats_headers(grid& table, int first) {
    if (table.Cols() < first + sample_stats_columns) table.setCols(first + sample_stats_columns);
    table.setTextMatrix(0, first, QStringLiteral("Conc. low 95%"));
    table.setTextMatrix(0, first + 1, QStringLiteral("Conc. high 95%"));
    table.setTextMatrix(0, first + 2, QStringLiteral("Flag"));
    for (int c = first; c < first + sample_stats_columns; ++c)
        table.setColWidth(c, c == first + 2 ? 130 : 100);
}

void show_sample_prediction(grid& table, int row, int first, const sample_prediction& p) {
    if (row < 1 || row >= table.Rows()) return;
    table.setTextMatrix(row, first, p.ok ? QString::fromStdString(stats_number(p.low, 4)) : QString());
    table.setTextMatrix(row, first + 1, p.ok ? QString::fromStdString(stats_number(p.high, 4)) : QString());
    table.setTextMatrix(row, first + 2, QString::fromStdString(sample_flags(p)));
}

stats_panel* add_calibration_tables(QWidget* window, QTabBar* tabs, QBoxLayout* layout,
                                    std::array<grid*, 2>& tables, std::array<QWidget*, 3>& frames,
                                    stats_weighting& weighting, std::function<void()> on_pick) {
    const char* captions[3] = {"Standard data", "Sample data", "Statistics"};
    for (const char* c : captions)
        tabs->addTab(QString::fromLatin1(c));
    const char* names[2] = {"fgdData", "fgdSample"};
    add_table_frames(window, tabs, layout, 1, 2, nullptr, names, tables.data(), frames.data());
    auto* panel = new stats_panel(window);
    panel->setObjectName(QStringLiteral("Frame1_2"));
    frames[2] = panel;
    layout->addWidget(panel, 1);
    panel->set_chosen(weighting);
    QObject::connect(panel, &stats_panel::weighting_changed, window, [panel, &weighting, on_pick] {
        weighting = panel->chosen();
        on_pick();
    });
    return panel;
}

} // namespace lumora
