#include "lookups/ValueCounts.h"

#include "text/Prefetch.h"

#include <model_Tessel/Lookup.h>

#include <algorithm>
#include <utility>
#include <vector>

namespace {

struct Entry {
    quint64 head; // the characters that are compared next
    QString text;
};

using Place = std::vector<Entry>::iterator;

constexpr int FewEntries = 16;
constexpr int Ahead = 12;

// How many characters a head has: all of Latin-1, or any.
constexpr int LatinLength = 8;
constexpr int WideLength = 4;
constexpr ushort LatinLast = 0xFF;

// The texts of neighbours are far apart in memory, so one that comes soon is fetched ahead.
void prefetchText(Place entry, Place last)
{
    if (last - entry > Ahead)
        prefetch(entry[Ahead].text);
}

// The characters from start on as a number that orders as they do; behind the end of a text there
// are zeros. Their bits are added to bits.
template <int Length> quint64 headOf(const QString& text, int start, ushort& bits)
{
    constexpr int Width = 64 / Length;
    quint64 head = 0;
    for (int index = start; index < start + Length; ++index) {
        const ushort character = index < text.size() ? text.at(index).unicode() : 0;
        bits |= character;
        head = head << Width | character;
    }
    return head;
}

// False when some character is too large for a head of that length.
template <int Length> bool takeHeads(Place first, Place last, int start)
{
    ushort bits = 0;
    for (Place entry = first; entry < last; ++entry) {
        prefetchText(entry, last);
        entry->head = headOf<Length>(entry->text, start, bits);
    }
    return Length == WideLength || bits <= LatinLast;
}

// How many characters all of the texts begin with; known: that many at least.
int commonLength(Place first, Place last, int known)
{
    const QString& text = first->text;
    int length = text.size();
    for (Place entry = first + 1; entry < last && length > known; ++entry) {
        prefetchText(entry, last);
        const QString& other = entry->text;
        const int limit = std::min(length, other.size());
        int common = known;
        while (common < limit && text.at(common) == other.at(common))
            ++common;
        length = common;
    }
    return length;
}

bool endBefore(Place first, Place last, int length)
{
    return std::all_of(
        first, last, [length](const Entry& entry) { return entry.text.size() <= length; });
}

/*
 * Counts texts in their order. Millions of them are far apart in memory, so they are compared by
 * their heads as far as possible, and one whose head no other has is not looked at again.
 */
class TextCounter {
public:
    explicit TextCounter(QVector<ValueCount>& counts)
        : m_counts(counts)
    {
    }

    // All texts are the same up to known.
    void count(Place first, Place last, int known)
    {
        if (last - first == 1) {
            m_counts.append({ std::move(first->text), 1 });
        } else if (last - first <= FewEntries || endBefore(first, last, known)) {
            std::sort(first, last, [](const Entry& a, const Entry& b) { return a.text < b.text; });
            countSorted(first, last);
        } else {
            countByHeads(first, last, std::max(known, commonLength(first, last, known)));
        }
    }

private:
    void countByHeads(Place first, Place last, int start)
    {
        const bool isLatin = takeHeads<LatinLength>(first, last, start);
        if (!isLatin)
            takeHeads<WideLength>(first, last, start);
        const auto isBefore = [](const Entry& a, const Entry& b) { return a.head < b.head; };
        std::stable_sort(first, last, isBefore);
        while (first < last) {
            const Place next = std::find_if(
                first, last, [first](const Entry& entry) { return entry.head != first->head; });
            count(first, next, start + (isLatin ? LatinLength : WideLength));
            first = next;
        }
    }

    // Each text once; none of them is counted yet.
    void countSorted(Place first, Place last)
    {
        while (first < last) {
            const Place next = std::find_if(
                first, last, [first](const Entry& entry) { return entry.text != first->text; });
            m_counts.append({ first->text, static_cast<int>(next - first) });
            first = next;
        }
    }

    QVector<ValueCount>& m_counts;
};

} // namespace

QVector<ValueCount> countValues(const std::map<QString, TOxLookupValue*>& records)
{
    std::vector<Entry> texts;
    texts.reserve(records.size());
    for (const auto& [key, value] : records) {
        if (!key.isEmpty())
            texts.push_back({ 0, value->value });
    }
    QVector<ValueCount> counts;
    TextCounter(counts).count(texts.begin(), texts.end(), 0);
    const auto isMoreFrequent = [](const ValueCount& a, const ValueCount& b) {
        return a.keys > b.keys;
    };
    if (!std::is_sorted(counts.cbegin(), counts.cend(), isMoreFrequent))
        std::stable_sort(counts.begin(), counts.end(), isMoreFrequent);
    return counts;
}
