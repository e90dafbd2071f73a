#include "palette.h"

#include "link/shared_state.h"

namespace lumora {

QColor standard_color(int n) {
    static constexpr int table[16][3] = {{0, 0, 0},       {0, 0, 128},   {0, 128, 0},   {0, 128, 128},
                                         {128, 0, 0},     {128, 0, 128}, {128, 128, 0}, {192, 192, 192},
                                         {128, 128, 128}, {0, 0, 255},   {0, 255, 0},   {0, 255, 255},
                                         {255, 0, 0},     {255, 0, 255}, {255, 255, 0}, {255, 255, 255}};
    if (n < 0 || n > 15) return QColor(0, 0, 0);
    return QColor(table[n][0], table[n][1], table[n][2]);
}

QColor curve_color(int column) {
    if (column < 1 || column > static_cast<int>(shared.curve_colors.size())) return QColor(0, 0, 0);
    const rgb& c = shared.curve_colors[static_cast<std::size_t>(column - 1)];
    return QColor(c.r, c.g, c.b);
}

} // namespace lumora
