#pragma once
// The performance verification on paper and on screen: the certificate as a PDF page, and the
// trend of one check across runs with its tolerance band.
#include "store/verification_store.h"
#include "verification_plan.h"

#include <QRect>
#include <QString>
#include <vector>

class QPainter;

namespace lumora {

struct certificate {
    QString instrument; // "Lumora UV/Vis Spectrophotometer"
    QDateTime date;
    QString operator_name;
    std::vector<check_result> results;
};

// The overall verdict: a failed check fails the instrument, a warning leaves it passed with a remark.
processing::verdict overall_verdict(const std::vector<check_result>& results);

// Writes the certificate to `path` as a PDF. Returns "" or why it could not be written.
QString write_certificate(const QString& path, const certificate& c);

// The trend of one check: its values across runs, oldest left, the tolerance band shaded, each
// point coloured by its verdict. Draws "No runs yet." when there are none.
void draw_trend(QPainter& p, const QRect& area, const QString& title,
                const std::vector<verification_row>& rows, double band_low, double band_high);

} // namespace lumora
