#include "lookups/ValueCounts.h"

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

constexpr int HeadLength = 4; // characters
constexpr int FewEntries = 16;

// As a number that orders as the characters do; behind the end of a text there are zeros.
quint64 headOf(const QString& text, int start)
{
    quint64 head = 0;
    for (int index = start; index < start + HeadLength; ++index)
        head = head << 16 | (index < text.size() ? text.at(index).unicode() : 0);
    return head;
}

// How many characters all of the texts begin with; known: that many at least.
int commonLength(Place first, Place last, int known)
{
    const QString& text = first->text;
    int length = text.size();
    for (Place entry = first + 1; entry < last && length > known; ++entry) {
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

// Millions of texts are far apart in memory, so they are compared by their heads as far as
// possible. All of them are the same up to known.
void sortTexts(Place first, Place last, int known)
{
    if (last - first <= FewEntries || endBefore(first, last, known)) {
        std::sort(first, last, [](const Entry& a, const Entry& b) { return a.text < b.text; });
        return;
    }
    const int start = std::max(known, commonLength(first, last, known));
    for (Place entry = first; entry < last; ++entry)
        entry->head = headOf(entry->text, start);
    std::stable_sort(first, last, [](const Entry& a, const Entry& b) { return a.head < b.head; });
    while (first < last) {
        const Place next = std::find_if(
            first, last, [first](const Entry& entry) { return entry.head != first->head; });
        sortTexts(first, next, start + HeadLength);
        first = next;
    }
}

// Each text once.
QVector<ValueCount> counted(std::vector<Entry> texts)
{
    QVector<ValueCount> counts;
    for (Entry& entry : texts) {
        if (!counts.isEmpty() && counts.constLast().value == entry.text)
            ++counts.last().keys;
        else
            counts.append({ std::move(entry.text), 1 });
    }
    return counts;
}

} // namespace

QVector<ValueCount> countValues(const std::map<QString, TOxLookupValue*>& records)
{
    std::vector<Entry> texts;
    texts.reserve(records.size());
    for (const auto& [key, value] : records) {
        if (!key.isEmpty())
            texts.push_back({ 0, value->value });
    }
    sortTexts(texts.begin(), texts.end(), 0);
    QVector<ValueCount> counts = counted(std::move(texts));
    const auto isMoreFrequent = [](const ValueCount& a, const ValueCount& b) {
        return a.keys > b.keys;
    };
    if (!std::is_sorted(counts.cbegin(), counts.cend(), isMoreFrequent))
        std::stable_sort(counts.begin(), counts.end(), isMoreFrequent);
    return counts;
}
