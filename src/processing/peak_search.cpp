#include "processing/peak_search.h"

#include <cmath>

namespace lumora::processing {
namespace {

constexpr int last_column = screen_columns - 1; // 280
constexpr int right_sentinel = 279;             // the right-hand base that ends the walks

// Nearest integer, halves to the even neighbour.
double round_half_even(double x) {
    const double lower = std::floor(x);
    const double rest = x - lower;
    if (rest > 0.5) return lower + 1;
    if (rest < 0.5) return lower;
    return std::fmod(lower, 2.0) == 0 ? lower : lower + 1;
}

// `toward` tells the kind: +1 a peak (above its neighbours and its bases), -1 a valley.
search_result search(const screen_array& s, const search_setup& setup, mark_array& marks, int toward) {
    search_result result;
    const int n = setup.half_width;
    if (n < 1) return result;
    const double h = setup.threshold;
    const auto at = [&](int c) { return s[static_cast<std::size_t>(c)] * toward; };

    // Candidates and bases: strictly beyond both columns n away. Ties are neither.
    std::array<bool, screen_columns> candidate{};
    std::array<bool, screen_columns> base{};
    for (int i = n; i <= last_column - n; ++i) {
        const double left = at(i - n), right = at(i + n), here = at(i);
        if (here > left && here > right) candidate[static_cast<std::size_t>(i)] = true;
        if (here < left && here < right) base[static_cast<std::size_t>(i)] = true;
    }
    base[0] = true;
    base[right_sentinel] = true;

    // Height against the nearest base on each side, not the lowest. A peak must stand above both
    // by more than h; a valley need only differ from them by more than h.
    const auto high_enough = [&](int i, int j) {
        const double diff = s[static_cast<std::size_t>(i)] - s[static_cast<std::size_t>(j)];
        return toward > 0 ? diff > h : std::abs(diff) > h;
    };
    for (int i = 0; i <= last_column; ++i) {
        if (!candidate[static_cast<std::size_t>(i)]) continue;
        int left = i - 1;
        while (left > 0 && !base[static_cast<std::size_t>(left)])
            --left;
        int right = i + 1;
        while (right <= right_sentinel && !base[static_cast<std::size_t>(right)])
            ++right;
        if (!(high_enough(i, left) && high_enough(i, right))) candidate[static_cast<std::size_t>(i)] = false;
    }

    // Thinning, left to right: a candidate whose right neighbour is at least as far out gives way to
    // it (even when that neighbour is no candidate); otherwise the neighbour is dropped.
    for (int i = 0; i < last_column; ++i) {
        if (!candidate[static_cast<std::size_t>(i)]) continue;
        if (at(i + 1) >= at(i))
            candidate[static_cast<std::size_t>(i)] = false;
        else
            candidate[static_cast<std::size_t>(i + 1)] = false;
    }

    std::int16_t k = 0;
    for (int i = 0; i <= last_column; ++i) {
        if (!candidate[static_cast<std::size_t>(i)]) continue;
        search_find& f = result.finds[static_cast<std::size_t>(result.boxes)];
        f.column = static_cast<std::int16_t>(i);
        f.value = s[static_cast<std::size_t>(i)];
        f.row = static_cast<std::int16_t>(setup.row_of ? setup.row_of(f.value) : 0);
        f.lambda = round_half_even(i * static_cast<double>(setup.view_span) / 280.0 + setup.view_start);
        ++result.boxes;
        // The box is drawn before the limit is tested: a 101st find is marked but not tabulated.
        if (k == search_row_limit) {
            result.limit_reached = true;
            break;
        }
        marks[static_cast<std::size_t>(k)] = mark{-1, f.column, f.row};
        ++k;
    }
    result.count = k;
    return result;
}

} // namespace

double search_threshold(bool percent_t) {
    return percent_t ? 0.05 : 0.005;
}

int search_half_width(double start_lambda, double stop_lambda) {
    const double range = stop_lambda - start_lambda;
    if (range >= 40) return 2;
    if (range >= 25) return 4;
    return 6;
}

search_result search_peak(const screen_array& screen_curve, const search_setup& setup, mark_array& marks) {
    return search(screen_curve, setup, marks, +1);
}

search_result search_valley(const screen_array& screen_curve, const search_setup& setup, mark_array& marks) {
    return search(screen_curve, setup, marks, -1);
}

} // namespace lumora::processing
