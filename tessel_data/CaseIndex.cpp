#include <tessel_data/CaseIndex_p.h>

#include <tessel_data/DataError.h>

#include <QCryptographicHash>

#include <algorithm>
#include <cstring>
#include <numeric>
#include <queue>

namespace tessel {

namespace {

// Longer keys are known by their begin and a digest of all.
constexpr std::size_t LongestKey = 96;
constexpr std::size_t ShortestKey = 40;
constexpr std::size_t DigestSize = 16;

constexpr char IsCut = char(0xFF); // in place of the size of a key

constexpr std::size_t RunBuffer = 4096; // entries

[[noreturn]] void failTemporary(const QFileDevice& file)
{
    throw DataError(DataError::Code::CannotRead, file.fileName(),
        QStringLiteral("the temporary list of cases cannot be written or read: ")
            + file.errorString());
}

} // namespace

// Entries of one sorted run, read bit by bit.
class CaseIndex::Run {
public:
    Run(QTemporaryFile* file, qint64 offset, qint64 count, std::size_t entrySize)
        : m_file(file)
        , m_offset(offset)
        , m_left(count)
        , m_entrySize(entrySize)
    {
    }
    Run(const std::vector<char>& entries, std::size_t entrySize)
        : m_entries(entries)
        , m_entrySize(entrySize)
    {
    }

    // Null at the end.
    const char* entry()
    {
        if (m_at == m_entries.size() && m_left > 0)
            fill();
        return m_at == m_entries.size() ? nullptr : &m_entries[m_at];
    }
    void next()
    {
        m_at += m_entrySize;
    }

private:
    void fill()
    {
        const qint64 count = std::min(m_left, qint64(RunBuffer));
        const qint64 size = count * qint64(m_entrySize);
        m_entries.resize(std::size_t(size));
        m_at = 0;
        if (!m_file->seek(m_offset) || m_file->read(m_entries.data(), size) != size)
            failTemporary(*m_file);
        m_offset += size;
        m_left -= count;
    }

    std::vector<char> m_entries;
    QTemporaryFile* m_file = nullptr;
    qint64 m_offset = 0;
    qint64 m_left = 0; // in the file
    std::size_t m_entrySize;
    std::size_t m_at = 0;
};

CaseIndex::CaseIndex(std::size_t keySize, std::size_t memory)
    : m_mostKey(std::clamp(keySize, ShortestKey, LongestKey))
    , m_keySize(m_mostKey + 1)
    , m_entrySize(m_keySize + sizeof(Place))
    , m_mostEntries(std::max<std::size_t>(2, memory / m_entrySize))
{
}

CaseIndex::~CaseIndex() = default;

void CaseIndex::write(char* entry, std::string_view key, const Place& place) const
{
    if (key.size() <= m_mostKey) {
        std::memset(entry, 0, m_mostKey);
        std::memcpy(entry, key.data(), key.size());
        entry[m_mostKey] = char(key.size());
    } else {
        const QByteArray digest = QCryptographicHash::hash(
            QByteArray::fromRawData(key.data(), int(key.size())), QCryptographicHash::Sha256);
        const std::size_t shown = m_mostKey - DigestSize;
        std::memcpy(entry, key.data(), shown);
        std::memcpy(entry + shown, digest.constData(), DigestSize);
        entry[m_mostKey] = IsCut;
    }
    std::memcpy(entry + m_keySize, &place, sizeof place);
}

// What an entry holds of its key, which ends with a whole character.
std::string_view CaseIndex::shownKey(std::string_view entry) const
{
    const char size = entry[m_mostKey];
    if (size != IsCut)
        return entry.substr(0, std::size_t(size));
    const std::string_view shown = entry.substr(0, m_mostKey - DigestSize);
    constexpr uchar firstLead = 0xC0;
    constexpr uchar firstOther = 0x80;
    std::size_t last = shown.size() - 1;
    while (last > 0 && uchar(shown[last]) >= firstOther && uchar(shown[last]) < firstLead)
        --last;
    return shown.substr(0, uchar(shown[last]) < firstOther ? shown.size() : last);
}

CaseIndex::Place CaseIndex::placeOf(const char* entry) const
{
    Place place;
    std::memcpy(&place, entry + m_keySize, sizeof place);
    return place;
}

void CaseIndex::add(std::string_view key, const Place& place)
{
    if (m_entries.size() == m_mostEntries * m_entrySize)
        spill();
    m_entries.resize(m_entries.size() + m_entrySize);
    write(&m_entries[m_entries.size() - m_entrySize], key, place);
}

// By key; cases with one key stay in the order of the source.
void CaseIndex::sortEntries()
{
    const std::size_t count = m_entries.size() / m_entrySize;
    const auto isBefore = [this](quint32 first, quint32 second) {
        return std::memcmp(
                   &m_entries[first * m_entrySize], &m_entries[second * m_entrySize], m_keySize)
            < 0;
    };
    std::vector<quint32> order(count);
    std::iota(order.begin(), order.end(), 0U);
    if (std::is_sorted(order.begin(), order.end(), isBefore))
        return; // as most files are
    std::stable_sort(order.begin(), order.end(), isBefore);
    std::vector<char> sorted;
    sorted.reserve(m_entries.size());
    for (const quint32 index : order) {
        const char* const entry = &m_entries[index * m_entrySize];
        sorted.insert(sorted.end(), entry, entry + m_entrySize);
    }
    m_entries.swap(sorted);
}

void CaseIndex::spill()
{
    sortEntries();
    if (!m_file) {
        m_file = std::make_unique<QTemporaryFile>();
        if (!m_file->open())
            failTemporary(*m_file);
    }
    if (m_file->write(m_entries.data(), qint64(m_entries.size())) != qint64(m_entries.size())
        || !m_file->flush())
        failTemporary(*m_file);
    m_runSizes.push_back(qint64(m_entries.size() / m_entrySize));
    m_entries.clear();
}

bool CaseIndex::finish(const Report& report, const GoesOn& goesOn)
{
    sortEntries();
    std::vector<Run> runs;
    qint64 offset = 0;
    for (const qint64 size : m_runSizes) {
        runs.emplace_back(m_file.get(), offset, size, m_entrySize);
        offset += size * qint64(m_entrySize);
    }
    runs.emplace_back(m_entries, m_entrySize);
    std::vector<char>().swap(m_entries);
    const auto isLater = [&](std::size_t first, std::size_t second) {
        const int order = std::memcmp(runs[first].entry(), runs[second].entry(), m_keySize);
        return order != 0 ? order > 0 : first > second;
    };
    std::priority_queue<std::size_t, std::vector<std::size_t>, decltype(isLater)> heads(isLater);
    for (std::size_t i = 0; i < runs.size(); ++i) {
        if (runs[i].entry())
            heads.push(i);
    }
    std::string key;
    Place first;
    for (std::size_t asked = 1; !heads.empty(); ++asked) {
        if (asked % RunBuffer == 0 && goesOn && !goesOn())
            return false;
        const std::size_t head = heads.top();
        heads.pop();
        const char* const entry = runs[head].entry();
        if (key.empty() || std::memcmp(key.data(), entry, m_keySize) != 0) {
            key.assign(entry, m_keySize);
            first = placeOf(entry);
        } else {
            const Place next = placeOf(entry);
            report({ shownKey(key), first, next });
            first.singles |= next.singles;
        }
        runs[head].next();
        if (runs[head].entry())
            heads.push(head);
    }
    m_runSizes.clear();
    m_file.reset();
    return true;
}

} // namespace tessel
