#pragma once
// The track, peak and valley tables of the plotting functions: a click on a filled row selects it
// for the report ("  V") or takes it out ("  X").
#include "processing/peak_search.h"

namespace lumora {

class grid;

// Flips the mark of `row` (1-based) when it holds one of the `count` marks and rewrites its
// number cell: "1  V" with `number_first`, else "  V1".
void toggle_mark_row(grid& table, processing::mark* marks, int count, int row, bool number_first);

} // namespace lumora
