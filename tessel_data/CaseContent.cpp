#include <tessel_data/CaseContent_p.h>

#include <QtEndian>

#include <algorithm>
#include <climits>
#include <cstring>

namespace tessel {

namespace {

// Odd numbers without a pattern in their bits.
constexpr quint64 First = 0x9E3779B97F4A7C15;
constexpr quint64 Second = 0xD6E8FEB86659FD93;
constexpr quint64 WholeCase = 0xA0761D6478BD642F;
constexpr quint64 PartlySavedCase = 0xE7037ED1A0B428DB;

__extension__ using Product = unsigned __int128;

// Every bit of both takes part in every bit of the outcome.
quint64 mixed(quint64 first, quint64 second)
{
    const Product product = Product(first ^ First) * (second ^ Second);
    return quint64(product) ^ quint64(product >> 64);
}

// The same on machines of either byte order, since databases move between them.
quint64 mixed(quint64 hash, std::string_view text)
{
    hash = mixed(hash, text.size());
    while (!text.empty()) {
        const std::size_t size = std::min(text.size(), sizeof(quint64));
        quint64 piece = 0;
        std::memcpy(&piece, text.data(), size);
        hash = mixed(hash, qFromLittleEndian(piece));
        text.remove_prefix(size);
    }
    return hash;
}

quint64 hashOf(const QString& name)
{
    return mixed(WholeCase, name.toUtf8().toStdString());
}

// 12.50 is 12.5, also where a later dictionary has more decimals. One step, since most values are
// numbers.
quint64 mixedNumber(quint64 hash, quint64 column, qint64 number, int decimals)
{
    constexpr int ten = 10;
    while (decimals > 0 && number % ten == 0) {
        number /= ten;
        --decimals;
    }
    return mixed(hash ^ quint64(number), column + (quint64(decimals) << CHAR_BIT));
}

} // namespace

CaseContent::CaseContent(const DataDictionary& dictionary)
    : m_dictionary(dictionary)
{
    for (int r = 0; r < int(dictionary.records.size()); ++r) {
        const DataRecord& record = dictionary.records[std::size_t(r)];
        m_records.push_back(hashOf(record.name));
        for (int c = 0; c < record.columns.size(); ++c) {
            m_columns.push_back(hashOf(dictionary.variable(r, c).name));
            m_decimals.push_back(dictionary.variable(r, c).decimals);
        }
    }
}

void CaseContent::begin(bool isPartlySaved, std::string_view key)
{
    m_start = isPartlySaved ? PartlySavedCase : WholeCase;
    m_key = mixed(m_start, key);
    m_sum = 0;
    m_hasRecords = false;
}

void CaseContent::add(const DataBatch& batch, const DataBatch::Record& record, qint64 number)
{
    const DataRecord& type = m_dictionary.records[std::size_t(record.record)];
    quint64 hash = mixed(m_records[std::size_t(record.record)], quint64(number));
    for (int c = 0; c < type.columns.size(); ++c) {
        const quint32 cell = record.firstCell + quint32(c);
        const auto column = std::size_t(type.firstColumn + c);
        const ValueKind kind = batch.states[cell].kind();
        if (kind == ValueKind::Blank)
            continue;
        const quint64 place = m_columns[column] + quint64(kind);
        if (kind == ValueKind::Number)
            hash = mixedNumber(hash, place, batch.numbers[cell], m_decimals[column]);
        else if (kind == ValueKind::Real)
            hash = mixed(hash ^ quint64(batch.numbers[cell]), place);
        else
            hash = mixed(mixed(hash, place), batch.textOf(cell));
    }
    m_sum += mixed(hash, WholeCase);
    m_hasRecords = true;
}

qint64 CaseContent::value() const
{
    return qint64(m_hasRecords ? mixed(m_start, m_sum) : m_key);
}

} // namespace tessel
