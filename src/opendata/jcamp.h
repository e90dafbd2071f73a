#pragma once
// JCAMP-DX 5.01 spectra: the writer of evenly spaced curves in the (X++(Y..Y)) table with plain
// decimal numbers, alone or as the blocks of one compound file, and a small reader of what the
// writer (and most other programs) put in such a file.
#include <QByteArray>
#include <QString>
#include <utility>
#include <vector>

namespace lumora::opendata {

using label_list = std::vector<std::pair<QString, QString>>; // label without "##", value

struct jcamp_spectrum {
    QString title;
    QString data_type = QStringLiteral("UV/VIS SPECTRUM");
    // Written after ##DATA TYPE in this order: ORIGIN, OWNER, LONGDATE, ... and the "$" labels.
    label_list labels;
    QString xunits = QStringLiteral("NANOMETERS");
    QString yunits = QStringLiteral("ABSORBANCE");
    double firstx = 0, deltax = 1;
    std::vector<double> y;
};

// One file: ##TITLE ... ##END=. Lines end with CRLF and run to at most 80 characters; a label's
// value that would run longer is cut there.
QByteArray jcamp_text(const jcamp_spectrum& spectrum);
// A compound file: a LINK block with ##BLOCKS=n around each spectrum as a block of its own.
QByteArray jcamp_compound_text(const QString& title, const label_list& labels,
                               const std::vector<jcamp_spectrum>& spectra);

struct jcamp_block {
    label_list labels; // as found, the label in upper case without "##"
    std::vector<double> x, y;
    QString label(const QString& name) const; // "" when absent
};

// Every block that holds data, in file order. A malformed number or an unknown table form ends the
// read with `error` set and returns what was read before it.
std::vector<jcamp_block> read_jcamp(const QByteArray& text, QString* error = nullptr);

} // namespace lumora::opendata
