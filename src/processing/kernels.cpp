#include "processing/kernels.h"

#include <array>

namespace lumora::processing {
namespace {

// One kernel: c[0..reach] from the centre outwards. A symmetric kernel uses c[d] at -d and +d; an
// antisymmetric one has c[0] = 0 and c[-d] = -c[d], c[d] being the weight of the point at the
// higher wavelength.
struct kernel {
    int reach;
    bool antisymmetric;
    double norm; // the sum is divided by this last
    std::array<double, 13> c;
};

// These rows are this program's own and differ in places from the published tables
// (Smooth25Point has 322 at d = 5 and norm 5135; Derivate25Point1st has 11649 at d = 2;
// Derivate17Point4th runs the other way round). They are kept as they are.
constexpr kernel smooth9{4, false, 231, {59, 54, 39, 14, -21}};
constexpr kernel smooth17{8, false, 4199, {883, 825, 660, 415, 135, -117, -260, -195, 195}};
constexpr kernel smooth25{
    12, false, 5135, {467, 462, 447, 422, 387, 322, 287, 222, 147, 62, -33, -138, -253}};

constexpr kernel derivate17_1st{8, true, 23256, {0, 358, 673, 902, 1002, 930, 643, 98, -748}};
constexpr kernel derivate17_2nd{8, false, 3876, {-24, -23, -20, -15, -8, 1, 12, 25, 40}};
constexpr kernel derivate17_3rd{8, true, 3876, {0, -7, -13, -17, -18, -15, -7, 7, 28}};
// Negated sum: divided by -8398.
constexpr kernel derivate17_4th{8, false, -8398, {52, -13, -31, -39, -24, -3, 17, 31, 36}};

constexpr kernel derivate25_1st{
    12,
    true,
    1776060,
    {0, 8558, 11649, 23806, 29562, 33450, 35003, 33754, 29236, 20982, 8525, -8602, -30866}};
constexpr kernel derivate25_2nd{
    12, false, 26910, {-52, -51, -48, -43, -36, -27, -16, -3, 12, 29, 48, 69, 92}};
constexpr kernel derivate25_3rd{
    12, true, 296010, {0, -77, -149, -211, -258, -285, -287, -259, -196, -93, 55, 253, 506}};

// Checks that the column exists and that the working range, if it holds any point, reads only
// points 0..790.
bool reachable(const kernel& k, int column, point_range r) {
    if (r.first > r.last) return true;
    if (column < 0 || column >= spectrum_columns) return false;
    return r.first - k.reach >= 0 && r.last + k.reach < spectrum_points;
}

// The convolution over the range into `out`, which the caller has zeroed. The products of each
// pair of points at -d and +d are added together, then to the running sum, from the centre out.
void convolve(const kernel& k, const curve_array& curves, int column, point_range r, point_array& out) {
    const auto col = static_cast<std::size_t>(column);
    for (int i = r.first; i <= r.last; ++i) {
        const auto at = [&](int p) { return curves[static_cast<std::size_t>(p)][col]; };
        double sum = k.antisymmetric ? 0.0 : k.c[0] * at(i);
        for (int d = 1; d <= k.reach; ++d) {
            const double c = k.c[static_cast<std::size_t>(d)];
            if (k.antisymmetric)
                sum += c * at(i + d) - c * at(i - d);
            else
                sum += c * at(i - d) + c * at(i + d);
        }
        out[static_cast<std::size_t>(i)] = sum / k.norm;
    }
}

bool smooth(const kernel& k, curve_array& curves, int column, int scan_first_nm, int scan_last_nm) {
    const point_range r = working_range(k.reach, scan_first_nm, scan_last_nm);
    if (!reachable(k, column, r)) return false;
    point_array result{};
    convolve(k, curves, column, r, result);
    const auto col = static_cast<std::size_t>(column);
    for (int i = r.first; i <= r.last; ++i)
        curves[static_cast<std::size_t>(i)][col] = result[static_cast<std::size_t>(i)];
    return true;
}

bool derivate(const kernel& k, const curve_array& curves, int column, int scan_first_nm, int scan_last_nm,
              point_array& derivative_curve) {
    const point_range r = working_range(k.reach, scan_first_nm, scan_last_nm);
    if (!reachable(k, column, r)) return false;
    point_array result{};
    convolve(k, curves, column, r, result);
    derivative_curve = result;
    return true;
}

} // namespace

point_range working_range(int reach, int scan_first_nm, int scan_last_nm) {
    return {scan_first_nm - spectrum_first_nm + reach + 1, scan_last_nm - spectrum_first_nm - reach};
}

bool Smooth9Point(curve_array& curves, int column, int scan_first_nm, int scan_last_nm) {
    return smooth(smooth9, curves, column, scan_first_nm, scan_last_nm);
}
bool Smooth17Point(curve_array& curves, int column, int scan_first_nm, int scan_last_nm) {
    return smooth(smooth17, curves, column, scan_first_nm, scan_last_nm);
}
bool Smooth25Point(curve_array& curves, int column, int scan_first_nm, int scan_last_nm) {
    return smooth(smooth25, curves, column, scan_first_nm, scan_last_nm);
}

bool Derivate17Point1st(const curve_array& curves, int column, int scan_first_nm, int scan_last_nm,
                        point_array& derivative_curve) {
    return derivate(derivate17_1st, curves, column, scan_first_nm, scan_last_nm, derivative_curve);
}
bool Derivate17Point2nd(const curve_array& curves, int column, int scan_first_nm, int scan_last_nm,
                        point_array& derivative_curve) {
    return derivate(derivate17_2nd, curves, column, scan_first_nm, scan_last_nm, derivative_curve);
}
bool Derivate17Point3rd(const curve_array& curves, int column, int scan_first_nm, int scan_last_nm,
                        point_array& derivative_curve) {
    return derivate(derivate17_3rd, curves, column, scan_first_nm, scan_last_nm, derivative_curve);
}
bool Derivate17Point4th(const curve_array& curves, int column, int scan_first_nm, int scan_last_nm,
                        point_array& derivative_curve) {
    return derivate(derivate17_4th, curves, column, scan_first_nm, scan_last_nm, derivative_curve);
}
bool Derivate25Point1st(const curve_array& curves, int column, int scan_first_nm, int scan_last_nm,
                        point_array& derivative_curve) {
    return derivate(derivate25_1st, curves, column, scan_first_nm, scan_last_nm, derivative_curve);
}
bool Derivate25Point2nd(const curve_array& curves, int column, int scan_first_nm, int scan_last_nm,
                        point_array& derivative_curve) {
    return derivate(derivate25_2nd, curves, column, scan_first_nm, scan_last_nm, derivative_curve);
}
bool Derivate25Point3rd(const curve_array& curves, int column, int scan_first_nm, int scan_last_nm,
                        point_array& derivative_curve) {
    return derivate(derivate25_3rd, curves, column, scan_first_nm, scan_last_nm, derivative_curve);
}

} // namespace lumora::processing
