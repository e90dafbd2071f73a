#pragma once
#include <QColor>

namespace lumora {

// Standard colour n (0..15) of the classic 16-colour palette: 0 black, 1 blue, 2 green, 3 cyan,
// 4 red, 5 magenta, 6 brown, 7 light grey, 8 dark grey, 9 light blue, 10 light green,
// 11 light cyan, 12 light red, 13 light magenta, 14 yellow, 15 white.
QColor standard_color(int n);
// The colour of curve column `column` (1..20) from curve_colors.
QColor curve_color(int column);
// The plot interior.
inline QColor plot_interior() {
    return QColor(255, 255, 224);
}
// Around the plot square: the face colour of the window, against which the white bottom and
// right frame lines give the sunken look.
inline QColor plot_background() {
    return QColor(212, 208, 200);
}

} // namespace lumora
