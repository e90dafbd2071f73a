#pragma once
// The per-application settings store, section "Settings" under the application's title.
#include <QString>

namespace lumora::app_settings {

QString get(const QString& key, const QString& fallback = {});
void set(const QString& key, const QString& value);

} // namespace lumora::app_settings
