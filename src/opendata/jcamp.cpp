#include "jcamp.h"

#include "number_text.h"

#include <QRegularExpression>
#include <QStringList>

namespace lumora::opendata {
namespace {

constexpr int line_limit = 80;

void add_line(QByteArray& out, const QString& line) {
    QByteArray bytes = line.toUtf8();
    if (bytes.size() > line_limit) {
        // Cut on a character boundary: a UTF-8 continuation byte never starts the cut-off part.
        int cut = line_limit;
        while (cut > 0 && (static_cast<unsigned char>(bytes[cut]) & 0xC0) == 0x80)
            --cut;
        bytes.truncate(cut);
    }
    out += bytes;
    out += "\r\n";
}

void add_label(QByteArray& out, const QString& label, const QString& value) {
    QString flat = value;
    flat.replace(QLatin1Char('\r'), QLatin1Char(' ')).replace(QLatin1Char('\n'), QLatin1Char(' '));
    add_line(out, QStringLiteral("##") + label + QLatin1Char('=') + flat);
}

// The table: each line starts with the X of its first Y, then as many Y as fit in 80 characters.
void add_xydata(QByteArray& out, const jcamp_spectrum& s) {
    add_label(out, QStringLiteral("XYDATA"), QStringLiteral("(X++(Y..Y))"));
    const std::size_t n = s.y.size();
    std::size_t i = 0;
    while (i < n) {
        QString line = plain_text(s.firstx + static_cast<double>(i) * s.deltax);
        do {
            const QString y = plain_text(s.y[i]);
            if (line.size() + 1 + y.size() > line_limit && line.contains(QLatin1Char(' '))) break;
            line += QLatin1Char(' ') + y;
            ++i;
        } while (i < n);
        add_line(out, line);
    }
}

void add_spectrum(QByteArray& out, const jcamp_spectrum& s, int block_id) {
    add_label(out, QStringLiteral("TITLE"), s.title);
    add_label(out, QStringLiteral("JCAMP-DX"), QStringLiteral("5.01"));
    add_label(out, QStringLiteral("DATA TYPE"), s.data_type);
    if (block_id > 0) add_label(out, QStringLiteral("BLOCK_ID"), QString::number(block_id));
    for (const auto& [label, value] : s.labels)
        add_label(out, label, value);
    add_label(out, QStringLiteral("XUNITS"), s.xunits);
    add_label(out, QStringLiteral("YUNITS"), s.yunits);
    const std::size_t n = s.y.size();
    const double lastx = n ? s.firstx + static_cast<double>(n - 1) * s.deltax : s.firstx;
    add_label(out, QStringLiteral("FIRSTX"), plain_text(s.firstx));
    add_label(out, QStringLiteral("LASTX"), plain_text(lastx));
    add_label(out, QStringLiteral("DELTAX"), plain_text(s.deltax));
    add_label(out, QStringLiteral("NPOINTS"), QString::number(n));
    add_label(out, QStringLiteral("XFACTOR"), QStringLiteral("1"));
    add_label(out, QStringLiteral("YFACTOR"), QStringLiteral("1"));
    if (n) add_label(out, QStringLiteral("FIRSTY"), plain_text(s.y.front()));
    add_xydata(out, s);
    add_label(out, QStringLiteral("END"), QString());
}

} // namespace

QByteArray jcamp_text(const jcamp_spectrum& spectrum) {
    QByteArray out;
    out.reserve(static_cast<qsizetype>(spectrum.y.size() * 12 + 1024));
    add_spectrum(out, spectrum, 0);
    return out;
}

QByteArray jcamp_compound_text(const QString& title, const label_list& labels,
                               const std::vector<jcamp_spectrum>& spectra) {
    QByteArray out;
    add_label(out, QStringLiteral("TITLE"), title);
    add_label(out, QStringLiteral("JCAMP-DX"), QStringLiteral("5.01"));
    add_label(out, QStringLiteral("DATA TYPE"), QStringLiteral("LINK"));
    add_label(out, QStringLiteral("BLOCKS"), QString::number(spectra.size()));
    for (const auto& [label, value] : labels)
        add_label(out, label, value);
    int id = 0;
    for (const jcamp_spectrum& s : spectra)
        add_spectrum(out, s, ++id);
    add_label(out, QStringLiteral("END"), QString());
    return out;
}

QString jcamp_block::label(const QString& name) const {
    for (const auto& [l, v] : labels)
        if (l == name) return v;
    return {};
}

std::vector<jcamp_block> read_jcamp(const QByteArray& text, QString* error) {
    std::vector<jcamp_block> blocks;
    std::vector<jcamp_block> open; // nested: a LINK block holds the data blocks
    bool in_table = false;
    double xfactor = 1, yfactor = 1, deltax = 1;
    auto fail = [&](const QString& why) {
        if (error) *error = why;
        return blocks;
    };
    if (error) error->clear();
    const QList<QByteArray> lines = text.split('\n');
    int line_no = 0;
    for (const QByteArray& raw : lines) {
        ++line_no;
        const QString line = QString::fromUtf8(raw).trimmed();
        if (line.isEmpty()) continue;
        if (line.startsWith(QLatin1String("$$"))) continue; // a comment line
        if (line.startsWith(QLatin1String("##"))) {
            in_table = false;
            const qsizetype eq = line.indexOf(QLatin1Char('='));
            if (eq < 0) return fail(QStringLiteral("line %1: a label without '='").arg(line_no));
            const QString label = line.mid(2, eq - 2).trimmed().toUpper();
            QString value = line.mid(eq + 1);
            const qsizetype comment = value.indexOf(QLatin1String("$$"));
            if (comment >= 0) value.truncate(comment);
            value = value.trimmed();
            if (label == QLatin1String("TITLE")) {
                open.emplace_back();
                xfactor = yfactor = deltax = 1;
            } else if (open.empty()) {
                return fail(QStringLiteral("line %1: ##%2 before ##TITLE").arg(line_no).arg(label));
            }
            jcamp_block& b = open.back();
            if (label == QLatin1String("END")) {
                if (!b.y.empty()) blocks.push_back(std::move(b));
                open.pop_back();
                continue;
            }
            b.labels.emplace_back(label, value);
            if (label == QLatin1String("XFACTOR") && !parse_number(value, xfactor))
                return fail(QStringLiteral("line %1: XFACTOR %2").arg(line_no).arg(value));
            if (label == QLatin1String("YFACTOR") && !parse_number(value, yfactor))
                return fail(QStringLiteral("line %1: YFACTOR %2").arg(line_no).arg(value));
            if (label == QLatin1String("DELTAX") && !parse_number(value, deltax))
                return fail(QStringLiteral("line %1: DELTAX %2").arg(line_no).arg(value));
            if (label == QLatin1String("XYDATA")) {
                if (QString(value).remove(QLatin1Char(' ')) != QLatin1String("(X++(Y..Y))"))
                    return fail(QStringLiteral("line %1: table form %2 is not read").arg(line_no).arg(value));
                in_table = true;
            }
            continue;
        }
        if (!in_table || open.empty()) continue;
        jcamp_block& b = open.back();
        const QStringList fields =
            line.split(QRegularExpression(QStringLiteral("[\\s,;]+")), Qt::SkipEmptyParts);
        double x = 0;
        if (fields.isEmpty() || !parse_number(fields[0], x))
            return fail(QStringLiteral("line %1: not a number").arg(line_no));
        // X in the table is in units of XFACTOR; DELTAX is in real units.
        x *= xfactor;
        for (qsizetype i = 1; i < fields.size(); ++i) {
            double y = 0;
            if (!parse_number(fields[i], y))
                return fail(QStringLiteral("line %1: not a number: %2").arg(line_no).arg(fields[i]));
            b.x.push_back(x + static_cast<double>(i - 1) * deltax);
            b.y.push_back(y * yfactor);
        }
    }
    if (!open.empty()) return fail(QStringLiteral("the file ends without ##END="));
    return blocks;
}

} // namespace lumora::opendata
