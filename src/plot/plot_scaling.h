#pragma once
// The one mapping from data values to plot rows, and its twins for the report and the
// derivative windows. Each holds the value to [low, high], scales in single precision, rounds
// half to even, and clamps the row to its window. high == low is a division by zero: the first
// time since the last good call a "Warning" box says "Divide by zero. The data may be wrong!"
// and the bottom row is returned.

namespace lumora {

int y_to_pixel(double value, double high, double low);           // rows 20..300 (300 - r), 280 steps
int report_y_to_pixel(double value, double high, double low);    // rows 240..520 (520 - r), 280 steps
int DerivateGetPixelY(double value, double high, double low);    // rows 350..490 (490 - r), 140 steps
int PrtDerivateGetPixelY(double value, double high, double low); // rows 580..720 (720 - r), 140 steps

// Re-arms the once-only warnings (program start; tests).
void reset_pixel_warnings();

} // namespace lumora
