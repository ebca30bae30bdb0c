#include <tessel_data/DataBatch.h>

#include <cstring>

namespace tessel {

namespace {

// About 2 MB of cells and as much text: a batch fits the cache, handing it on costs nothing.
constexpr std::size_t MostCells = 131'072;
constexpr std::size_t MostBytes = 1'048'576;
constexpr std::size_t MostTold = 4096;

} // namespace

bool isRejected(LineProblem problem)
{
    return problem <= LineProblem::DamagedRecord;
}

void DataBatch::clear()
{
    // What one long line needed is given back.
    if (bytes.capacity() > 4 * MostBytes)
        std::string().swap(bytes);
    records.clear();
    cases.clear();
    deleted.clear();
    told.clear();
    states.clear();
    numbers.clear();
    bytes.clear();
    doneBytes = 0;
}

bool DataBatch::isEmpty() const
{
    return records.empty() && cases.empty() && deleted.empty() && told.empty();
}

bool DataBatch::isFull() const
{
    return states.size() >= MostCells || bytes.size() >= MostBytes || told.size() >= MostTold;
}

double DataBatch::realOf(quint32 cell) const
{
    double number = 0;
    static_assert(sizeof(number) == sizeof(numbers[cell]), "a double's bits fit");
    std::memcpy(&number, &numbers[cell], sizeof number);
    return number;
}

void DataBatch::setReal(quint32 cell, ValueState state, double number)
{
    qint64 bits = 0;
    std::memcpy(&bits, &number, sizeof bits);
    set(cell, state, bits);
}

TextRef DataBatch::keep(std::string_view text)
{
    const TextRef ref { quint32(bytes.size()), quint32(text.size()) };
    bytes.append(text);
    return ref;
}

SourceCounts& SourceCounts::operator+=(const SourceCounts& other)
{
    lines += other.lines;
    records += other.records;
    deletedLines += other.deletedLines;
    blankLines += other.blankLines;
    rejectedLines += other.rejectedLines;
    leftOutLines += other.leftOutLines;
    casesRead += other.casesRead;
    cases += other.cases;
    deletedCases += other.deletedCases;
    leftOutCases += other.leftOutCases;
    partlySavedCases += other.partlySavedCases;
    return *this;
}

} // namespace tessel
