#pragma once
// Windows of the functions with results in them, made without an instrument, and the readers of
// what the report and the export produce: texts of the page model, PDFs through poppler, and
// workbooks through openpyxl.
#include "functions/function_catalog.h"
#include "functions/spectrum/frmSpectrum.h"
#include "functions/spectrum/spectrum_data.h"
#include "functions/spectrum/spectrum_setup.h"
#include "link/link_context.h"
#include "link/shared_state.h"
#include "platform/prompts.h"
#include "plot/palette.h"
#include "report/report_make.h"
#include "report/report_page.h"

#include <QFile>
#include <QImage>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>
#include <cmath>
#include <gtest/gtest.h>
#include <memory>

namespace lumora::test {

// With LUMORA_REPORT_PICTURES set, a copy of a PDF or a preview picture is kept there for a look.
inline void keep_for_look(const QString& path, const QString& name) {
    const QString dir = qEnvironmentVariable("LUMORA_REPORT_PICTURES");
    if (dir.isEmpty()) return;
    QFile::remove(dir + "/" + name);
    QFile::copy(path, dir + "/" + name);
}
inline void keep_for_look(const QImage& image, const QString& name) {
    const QString dir = qEnvironmentVariable("LUMORA_REPORT_PICTURES");
    if (!dir.isEmpty()) image.save(dir + "/" + name);
}

// The texts of a page model in drawing order.
inline QStringList texts_of(const report_page& page) {
    QStringList out;
    for (const auto& t : page.texts())
        out << t.text;
    return out;
}

inline QString run_tool(const QString& program, const QStringList& args) {
    QProcess p;
    p.start(program, args);
    if (!p.waitForFinished(60000) || p.exitCode() != 0) return {};
    return QString::fromUtf8(p.readAllStandardOutput());
}

inline int pdf_pages(const QString& path) {
    const QString info = run_tool(QStringLiteral("pdfinfo"), {path});
    for (const QString& line : info.split('\n'))
        if (line.startsWith(QLatin1String("Pages:"))) return line.mid(6).trimmed().toInt();
    return -1;
}

// The text of each page of a PDF.
inline QStringList pdf_page_texts(const QString& path) {
    return run_tool(QStringLiteral("pdftotext"), {QStringLiteral("-layout"), path, QStringLiteral("-")})
        .split(QChar('\f'), Qt::SkipEmptyParts);
}

// The sheets of a workbook as openpyxl reads them.
inline QJsonArray read_workbook(const QString& path) {
    return QJsonDocument::fromJson(
               run_tool(QStringLiteral("/usr/bin/python3"), {QStringLiteral(READ_WORKBOOK_PY), path})
                   .toUtf8())
        .array();
}

inline QStringList sheet_names(const QJsonArray& book) {
    QStringList names;
    for (const auto& s : book)
        names << s.toObject()["name"].toString();
    return names;
}

inline QJsonObject sheet(const QJsonArray& book, const QString& name) {
    for (const auto& s : book)
        if (s.toObject()["name"].toString() == name) return s.toObject();
    return {};
}

// The report of `window` on paper as a PDF: as many pages as the model at scale 1.0, kept for a look.
inline void expect_pdf_like_preview(function_window& window, const QTemporaryDir& dir, const QString& name) {
    const QString path = dir.filePath(name);
    const print_result printed = print_report(window, path);
    ASSERT_TRUE(printed.ok);
    EXPECT_EQ(pdf_pages(path), report_make(window, 1.0)->pages());
    keep_for_look(path, name);
}

// A spectrum of a holmium filter's kind: six bands over a low background, 330..1100 nm, ABS.
inline double holmium_like(int nm) {
    constexpr double bands[] = {416.3, 451.4, 467.8, 485.2, 536.6, 640.5};
    double a = 0.05;
    for (double b : bands)
        a += 0.8 * std::exp(-(nm - b) * (nm - b) / 18.0);
    return a;
}

class spectrum_fixture : public ::testing::Test {
protected:
    void SetUp() override {
        reset_shared_state();
        set_default_colors();
        link_ctx = link_context{};
        qputenv("LUMORA_DATA_DIR", data_.path().toLocal8Bit());
        spectrum_setup = SpectrumSetup{};
        spectrum_setup.start_lambda = 330;
        spectrum_setup.stop_lambda = 1100;
        spectrum_setup.high_value = 1.0;
        reset_spectrum_data();
        spectrum_init();
        prompts::script();
        prompts::clear_shown();
        window_ = std::make_unique<frmSpectrum>(*function_by_id(fid_spectrum));
        shared.function_id = fid_spectrum;
    }
    void TearDown() override {
        window_.reset();
        prompts::unscript();
    }
    // A curve in column `column`, made active, and the plot redrawn with it.
    void add_curve(int column, double scale = 1.0) {
        for (int nm = 320; nm <= 1110; ++nm)
            shared.baseline_curves[static_cast<std::size_t>(nm - 320)][static_cast<std::size_t>(column)] =
                scale * holmium_like(nm);
        spectrum.curve_count = static_cast<std::int16_t>(std::max<int>(spectrum.curve_count, column));
        for (auto& s : spectrum.curve_state)
            if (s == 2) s = 1;
        spectrum.curve_state[static_cast<std::size_t>(column)] = 2;
        spectrum.active_curve = static_cast<std::int16_t>(column - 1);
        window_->zoom_data();
    }
    void all_flags(std::int16_t on) { spectrum_setup.print_flags.fill(on); }

    QTemporaryDir data_;
    std::unique_ptr<frmSpectrum> window_;
};

} // namespace lumora::test
