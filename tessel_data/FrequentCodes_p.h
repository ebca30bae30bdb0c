#pragma once

#include <QtGlobal>

#include <algorithm>
#include <unordered_map>
#include <utility>
#include <vector>

namespace tessel {

/*
 * The most frequent of any number of codes, in bounded memory (Metwally's space-saving): a code
 * for which there is no room takes the place of the rarest one, and its count. So a code that is
 * more frequent than that count is always here.
 */
template <typename Code> class FrequentCodes {
    using Node = std::pair<const Code, std::size_t>; // a code and its place in m_counts

public:
    struct Count {
        Node* node;
        qint64 count; // at most
        qint64 taken; // of it, what others in its place had

        const Code& code() const
        {
            return node->first;
        }
    };

    // longest: bytes of the longest code; room: bytes that are left for those of this and other
    // columns.
    void add(const Code& code, std::size_t longest, std::size_t limit, std::size_t& room)
    {
        const auto found = m_places.find(code);
        raise(found != m_places.end() ? found->second : place(code, longest, limit, room));
    }
    bool hasAll() const
    {
        return m_hasAll;
    }
    // The one with the highest count first.
    const std::vector<Count>& counts() const
    {
        return m_counts;
    }

private:
    static constexpr std::size_t Fewest = 8; // for which there is always room

    std::size_t place(const Code& code, std::size_t longest, std::size_t limit, std::size_t& room)
    {
        const std::size_t size = NodeSize + longest; // as a longer one may take the place
        const std::size_t index = m_counts.size();
        if (index < Fewest || (index < limit && size <= room)) {
            room -= std::min(size, room);
            m_counts.push_back({ &*m_places.emplace(code, index).first, 0, 0 });
            return index;
        }
        m_hasAll = false;
        Count& rarest = m_counts.back();
        m_places.erase(m_places.find(rarest.code()));
        rarest = { &*m_places.emplace(code, index - 1).first, rarest.count, rarest.count };
        return index - 1;
    }

    // The counts stay in order when the first of those that are equal is the one to grow.
    void raise(std::size_t place)
    {
        const auto at = m_counts.begin() + std::ptrdiff_t(place);
        const auto first = std::lower_bound(m_counts.begin(), at, at->count,
            [](const Count& one, qint64 count) { return one.count > count; });
        std::swap(*at, *first);
        at->node->second = place;
        first->node->second = std::size_t(first - m_counts.begin());
        ++first->count;
    }

    static constexpr std::size_t NodeSize = 96; // what a map and a vector take for an entry

    std::unordered_map<Code, std::size_t> m_places;
    std::vector<Count> m_counts;
    bool m_hasAll = true;
};

} // namespace tessel
