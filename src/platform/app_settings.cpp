#include "app_settings.h"

#include <QCoreApplication>
#include <QSettings>

namespace lumora::app_settings {
namespace {
QSettings store() {
    const QString app = QCoreApplication::applicationName().isEmpty() ? QStringLiteral("Lumora")
                                                                      : QCoreApplication::applicationName();
    return QSettings(QSettings::IniFormat, QSettings::UserScope, app, app);
}
} // namespace

QString get(const QString& key, const QString& fallback) {
    QSettings s = store();
    return s.value(QStringLiteral("Settings/") + key, fallback).toString();
}

void set(const QString& key, const QString& value) {
    QSettings s = store();
    s.setValue(QStringLiteral("Settings/") + key, value);
}

} // namespace lumora::app_settings
