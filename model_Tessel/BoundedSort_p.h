#pragma once

#include <algorithm>
#include <cstddef>
#include <utility>
#include <vector>

/*!
 * Introsort for comparators that are no order, with the result of libstdc++'s std::sort wherever
 * that stays inside the list.
 *
 * Median-of-three quicksort with unguarded partitions, heap sort below a depth of twice the floor
 * of log2 of the count, and a final insertion sort with runs of 16. A comparator that answers yes
 * in both directions lets the unguarded loops run out of the list; here they stop at its ends, and
 * from then on every step keeps to its own range, so that O(n log n) comparisons are enough.
 */
template <typename Element, typename Compare> class BoundedSort {
public:
    BoundedSort(std::vector<Element>& list, Compare before)
        : m_begin(list.data())
        , m_end(list.data() + list.size())
        , m_before(before)
    {
    }

    void sort()
    {
        if (m_begin == m_end)
            return;
        int depth = 0;
        for (auto count = m_end - m_begin; count > 1; count >>= 1)
            depth += 2;
        quickSort(m_begin, m_end, depth);
        insertionSort();
    }

private:
    static constexpr std::ptrdiff_t RunLength = 16;

    void quickSort(Element* first, Element* last, int depth)
    {
        while (last - first > RunLength) {
            if (depth == 0) {
                std::partial_sort(first, last, last, m_before);
                return;
            }
            --depth;
            moveMedianToFirst(first, last);
            Element* cut = partition(first, last);
            if (m_leftList)
                cut = std::min(cut, last);
            quickSort(cut, last, depth);
            last = cut;
        }
    }

    void moveMedianToFirst(Element* first, Element* last)
    {
        Element* a = first + 1;
        Element* b = first + (last - first) / 2;
        Element* c = last - 1;
        if (m_before(*a, *b)) {
            if (m_before(*b, *c))
                std::swap(*first, *b);
            else
                std::swap(*first, m_before(*a, *c) ? *c : *a);
        } else if (m_before(*a, *c)) {
            std::swap(*first, *a);
        } else {
            std::swap(*first, m_before(*b, *c) ? *c : *b);
        }
    }

    // Around the pivot at first; may go past last, but not past the list.
    Element* partition(Element* first, Element* last)
    {
        Element* pivot = first++;
        while (true) {
            while (first != m_end && m_before(*first, *pivot))
                ++first;
            m_leftList = m_leftList || first == m_end;
            --last;
            while (m_before(*pivot, *last)) {
                if (last == m_begin) {
                    m_leftList = true;
                    break;
                }
                --last;
            }
            if (!(first < last))
                return first;
            std::swap(*first, *last);
            ++first;
        }
    }

    void insertionSort()
    {
        Element* const firstRun = m_begin + std::min(RunLength, m_end - m_begin);
        for (Element* next = m_begin + 1; next < firstRun; ++next) {
            if (m_before(*next, *m_begin))
                std::rotate(m_begin, next, next + 1);
            else
                insert(next, m_begin);
        }
        for (Element* next = firstRun; next < m_end; ++next)
            insert(next, m_leftList ? next - RunLength : m_begin);
    }

    // Moves *last down to its place, which is not below floor.
    void insert(Element* last, Element* floor)
    {
        Element value = std::move(*last);
        Element* hole = last;
        while (hole != floor && m_before(value, hole[-1])) {
            *hole = std::move(hole[-1]);
            --hole;
        }
        m_leftList = m_leftList || hole == m_begin;
        *hole = std::move(value);
    }

    Element* m_begin;
    Element* m_end;
    Compare m_before;
    bool m_leftList = false; // std::sort would have left the list
};

template <typename Element, typename Compare>
void boundedSort(std::vector<Element>& list, Compare before)
{
    BoundedSort<Element, Compare>(list, before).sort();
}
