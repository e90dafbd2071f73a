#pragma once
// "Setup zoom parameter": the view of a curve window typed in as numbers. One dialog for every
// curve window; the labels, formats and clamps come with zoom_fields.
#include "plot_view.h"

#include <QDialog>
#include <QString>
#include <array>
#include <functional>

class QLabel;
class QLineEdit;
class QPushButton;

namespace lumora {

struct zoom_fields {
    std::array<QString, 4> labels{QStringLiteral("Start value(X axis)="),
                                  QStringLiteral("Stop value(X axis)="), QStringLiteral("Low value(Y axis)="),
                                  QStringLiteral("High value(Y axis)=")};
    const char* x_format = "0";
    const char* y_format = "0.000";
    bool percent_t = false; // OK wants high - low >= 0.01 in %T, >= 0.001 in ABS
    // X held inside the setup's range, start at least 2 below stop; off: no limits on X.
    bool clamp_x = false;
    double x_first = 0, x_last = 0;
};

// Spectrum: wavelengths held to start_lambda..stop_lambda of the setup.
zoom_fields spectrum_zoom_fields(bool percent_t, double start_lambda, double stop_lambda);

class dlgZoom : public QDialog {
    Q_OBJECT
public:
    // `on_ok` redraws the window (zoom_data) after OK has taken the four values into `view`.
    dlgZoom(plot_view& view, zoom_fields fields, std::function<void()> on_ok, QWidget* parent = nullptr);

    // The fields from the view, with their formats.
    void reload();
    // A field has lost the focus: clamp and rewrite it.
    void txtInst_LostFocus(int index);
    void cmdOk_Click();
    void cmdCancel_Click();

    QLineEdit* txtInst(int index) const { return fields_[static_cast<std::size_t>(index)]; }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    double field_value(int index) const;

    plot_view& view_;
    zoom_fields setup_;
    std::function<void()> on_ok_;
    std::array<QLineEdit*, 4> fields_{};
    std::array<QLabel*, 4> labels_{};
};

} // namespace lumora
