#include "csv.h"

namespace lumora::opendata {
namespace {

QString flat(QString text) {
    return text.replace(QLatin1Char('\r'), QLatin1Char(' ')).replace(QLatin1Char('\n'), QLatin1Char(' '));
}

void add_row(QString& out, const QStringList& fields) {
    for (qsizetype i = 0; i < fields.size(); ++i) {
        if (i) out += QLatin1Char(',');
        out += csv_field(fields[i]);
    }
    out += QLatin1String("\r\n");
}

} // namespace

QString csv_field(const QString& text) {
    const bool quote = text.contains(QLatin1Char(',')) || text.contains(QLatin1Char('"')) ||
                       text.contains(QLatin1Char('\n')) || text.contains(QLatin1Char('\r')) ||
                       text.startsWith(QLatin1Char('#'));
    if (!quote) return text;
    QString q = text;
    q.replace(QLatin1Char('"'), QLatin1String("\"\""));
    return QLatin1Char('"') + q + QLatin1Char('"');
}

QByteArray csv_text(const csv_table& table) {
    QString out;
    out.reserve(static_cast<qsizetype>(table.rows.size() * 32 + 512));
    for (const auto& [key, value] : table.context)
        out += QLatin1String("# ") + flat(key) + QLatin1String(": ") + flat(value) + QLatin1String("\r\n");
    add_row(out, table.header);
    for (const QStringList& row : table.rows)
        add_row(out, row);
    return out.toUtf8();
}

csv_table read_csv(const QByteArray& bytes, QString* error) {
    csv_table table;
    if (error) error->clear();
    const QString text = QString::fromUtf8(bytes);
    const qsizetype n = text.size();
    qsizetype i = 0;
    bool header_read = false;
    while (i < n) {
        if (!header_read && text[i] == QLatin1Char('#')) {
            qsizetype end = text.indexOf(QLatin1Char('\n'), i);
            if (end < 0) end = n;
            QString line = text.mid(i + 1, end - i - 1);
            if (line.endsWith(QLatin1Char('\r'))) line.chop(1);
            const qsizetype colon = line.indexOf(QLatin1String(": "));
            if (colon >= 0)
                table.context.emplace_back(line.left(colon).trimmed(), line.mid(colon + 2));
            else
                table.context.emplace_back(line.trimmed(), QString());
            i = end + 1;
            continue;
        }
        QStringList row;
        QString field;
        bool ended = false;
        while (i < n && !ended) {
            const QChar c = text[i];
            if (c == QLatin1Char('"') && field.isEmpty()) {
                // A quoted field runs to the quote that is not doubled.
                ++i;
                bool closed = false;
                while (i < n) {
                    if (text[i] == QLatin1Char('"')) {
                        if (i + 1 < n && text[i + 1] == QLatin1Char('"')) {
                            field += QLatin1Char('"');
                            i += 2;
                            continue;
                        }
                        ++i;
                        closed = true;
                        break;
                    }
                    field += text[i++];
                }
                if (!closed) {
                    if (error) *error = QStringLiteral("a quoted field is not closed");
                    return table;
                }
                continue;
            }
            if (c == QLatin1Char(',')) {
                row << field;
                field.clear();
            } else if (c == QLatin1Char('\n')) {
                ended = true;
            } else if (c != QLatin1Char('\r')) {
                field += c;
            }
            ++i;
        }
        row << field;
        if (!header_read) {
            table.header = row;
            header_read = true;
        } else {
            table.rows.push_back(row);
        }
    }
    return table;
}

} // namespace lumora::opendata
