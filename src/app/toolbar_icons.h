#pragma once
#include <QIcon>
#include <QString>

namespace lumora {

// The toolbar's icons, drawn as vector shapes at whatever size and pixel ratio the screen asks
// for, so they stay crisp on a high-DPI screen.
QIcon toolbar_icon(const QString& key);

} // namespace lumora
