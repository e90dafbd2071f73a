#pragma once
// Smoothing and derivative kernels on one column of the spectrum's curve array.
//
// Every kernel is a convolution with integer coefficients and one integer norm over the 1 nm grid:
// result[i] = (sum over d of c[d] * data[i + d]) / norm. A derivative is in data units per
// nanometre to the power of its order, since the points are one nanometre apart.
//
// The working range comes from the scan's margins, not from the data: with m the kernel's reach,
// it runs from point scan_first_nm - 320 + m + 1 to point scan_last_nm - 320 - m. The first point
// is one further in than the reach needs; the last is not. A smoothing writes its result back over
// that range only, so the points outside keep their values; a derivative writes all 791 points of
// derivative_curve, 0 where the kernel did not reach. The caller redraws afterwards.
//
// Each routine returns false, and changes nothing, when the column is not 0..20 or the working
// range would read outside the 791 points (counters that no scan has set). An empty range is no
// fault: a smoothing then changes nothing and a derivative writes zeros.
#include "processing/curve_arrays.h"

namespace lumora::processing {

// The points that a kernel of reach m computes, inclusive; empty when first > last.
struct point_range {
    int first = 0;
    int last = -1;
};
point_range working_range(int reach, int scan_first_nm, int scan_last_nm);

// Smoothing, in place on curves[.][column].
bool Smooth9Point(curve_array& curves, int column, int scan_first_nm, int scan_last_nm);  // reach 4
bool Smooth17Point(curve_array& curves, int column, int scan_first_nm, int scan_last_nm); // reach 8
bool Smooth25Point(curve_array& curves, int column, int scan_first_nm, int scan_last_nm); // reach 12

// Derivatives of curves[.][column] into derivative_curve; the curve itself is left alone.
bool Derivate17Point1st(const curve_array& curves, int column, int scan_first_nm, int scan_last_nm,
                        point_array& derivative_curve);
bool Derivate17Point2nd(const curve_array& curves, int column, int scan_first_nm, int scan_last_nm,
                        point_array& derivative_curve);
bool Derivate17Point3rd(const curve_array& curves, int column, int scan_first_nm, int scan_last_nm,
                        point_array& derivative_curve);
// Not a true fourth derivative: its row is the window's own, and the sum is negated before the
// division (an effective norm of -8398).
bool Derivate17Point4th(const curve_array& curves, int column, int scan_first_nm, int scan_last_nm,
                        point_array& derivative_curve);
bool Derivate25Point1st(const curve_array& curves, int column, int scan_first_nm, int scan_last_nm,
                        point_array& derivative_curve);
bool Derivate25Point2nd(const curve_array& curves, int column, int scan_first_nm, int scan_last_nm,
                        point_array& derivative_curve);
bool Derivate25Point3rd(const curve_array& curves, int column, int scan_first_nm, int scan_last_nm,
                        point_array& derivative_curve);

} // namespace lumora::processing
