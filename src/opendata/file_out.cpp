#include "file_out.h"

#include <QDir>
#include <QFileInfo>
#include <QSaveFile>

namespace lumora::opendata {

QString safe_file_name(const QString& name) {
    QString out;
    out.reserve(name.size());
    for (const QChar c : name) {
        const bool bad = c == QLatin1Char('/') || c == QLatin1Char('\\') || c == QLatin1Char(':') ||
                         c == QLatin1Char('*') || c == QLatin1Char('?') || c == QLatin1Char('"') ||
                         c == QLatin1Char('<') || c == QLatin1Char('>') || c == QLatin1Char('|') ||
                         c.category() == QChar::Other_Control;
        out += bad ? QLatin1Char('_') : c;
    }
    out.replace(QLatin1String(".."), QLatin1String("__"));
    while (!out.isEmpty() && (out[0] == QLatin1Char('.') || out[0] == QLatin1Char(' ')))
        out.remove(0, 1);
    out = out.trimmed();
    return out.isEmpty() ? QStringLiteral("data") : out;
}

QString write_atomic(const QString& folder, const out_file& file) {
    const QString path = QDir(folder).filePath(safe_file_name(file.name));
    const QString shown = QDir::toNativeSeparators(path);
    if (!QFileInfo(folder).isDir()) return shown + QStringLiteral(": the folder does not exist");
    QSaveFile out(path);
    // Without a temporary beside the target there would be no safe replace: refuse instead.
    out.setDirectWriteFallback(false);
    if (!out.open(QIODevice::WriteOnly)) return shown + QStringLiteral(": ") + out.errorString();
    if (out.write(file.bytes) != file.bytes.size()) {
        const QString why = out.errorString();
        out.cancelWriting();
        return shown + QStringLiteral(": ") + why;
    }
    if (!out.commit()) return shown + QStringLiteral(": ") + out.errorString();
    return {};
}

QString write_all(const QString& folder, const std::vector<out_file>& files) {
    for (const out_file& f : files) {
        const QString why = write_atomic(folder, f);
        if (!why.isEmpty()) return why;
    }
    return {};
}

} // namespace lumora::opendata
