#pragma once

#include <algorithm>
#include <iterator>
#include <utility>

// An introspective sort: quicksort with a median of three, heap sort when the recursion
// gets too deep, and one pass of insertion sort over ranges left below 32 elements.
template <class It, class Less> void CM_IntroSortLoop(It first, It last, int depth, Less less) {
    constexpr std::ptrdiff_t kCutOver = 32;
    while (last - first > kCutOver) {
        if (depth-- == 0) {
            std::make_heap(first, last, less);
            std::sort_heap(first, last, less);
            return;
        }
        It mid = first + (last - first) / 2;
        // Median of the first, middle and last element, moved to the front as the pivot.
        if (less(*mid, *first))
            std::iter_swap(mid, first);
        if (less(*(last - 1), *mid)) {
            std::iter_swap(last - 1, mid);
            if (less(*mid, *first))
                std::iter_swap(mid, first);
        }
        std::iter_swap(first, mid);
        It lo = first + 1, hi = last;
        for (;;) {
            while (less(*lo, *first))
                ++lo;
            --hi;
            while (less(*first, *hi))
                --hi;
            if (!(lo < hi))
                break;
            std::iter_swap(lo, hi);
            ++lo;
        }
        std::iter_swap(first, lo - 1);
        CM_IntroSortLoop(lo, last, depth, less);
        last = lo - 1;
    }
}

template <class It, class Less> void CM_IntroSort(It first, It last, Less less) {
    if (last - first < 2)
        return;
    int depth = 0;
    for (auto n = last - first; n > 1; n >>= 1)
        depth += 2;
    CM_IntroSortLoop(first, last, depth, less);
    // Insertion sort over the whole range finishes the short runs the loop left.
    for (It i = first + 1; i < last; ++i) {
        auto value = std::move(*i);
        It j = i;
        for (; j > first && less(value, *(j - 1)); --j)
            *j = std::move(*(j - 1));
        *j = std::move(value);
    }
}
