#include <tessel_data/VariableCollector_p.h>

#include <algorithm>

namespace tessel {

namespace {

bool hasRange(const DataValueSet& set)
{
    return std::any_of(set.codes.begin(), set.codes.end(), [](const DataCode& code) {
        return code.special == Special::None && !code.highCode.isNull();
    });
}

bool isSpecialAlone(const DataValueSet& set)
{
    return std::all_of(set.codes.begin(), set.codes.end(),
        [](const DataCode& code) { return code.special != Special::None; });
}

// Numbers that are no mere codes.
bool isQuantity(const DataDictionary& dictionary, const DataVariable& variable)
{
    if (variable.record < 0)
        return false;
    if (variable.type == DataVariable::Type::Real)
        return !variable.codes || !variable.codes->isClosed();
    if (variable.type != DataVariable::Type::Number)
        return false;
    if (variable.valueSets.isEmpty())
        return true;
    const DataValueSet& set = dictionary.valueSets[std::size_t(variable.valueSets.first())];
    return hasRange(set) || isSpecialAlone(set);
}

bool isReal(const DataVariable& variable)
{
    return variable.type == DataVariable::Type::Real;
}

double finestOf(const DataVariable& variable)
{
    return isReal(variable) ? 0 : 1 / double(powerOfTen(variable.decimals));
}

StatisticsCell cellOf(const NumberSummary::End& end)
{
    return { end.count, double(end.count) };
}

constexpr StatisticsKind kindOf(Special special)
{
    return StatisticsKind(special);
}
static_assert(kindOf(Special::None) == StatisticsKind::Valid);
static_assert(kindOf(Special::Missing) == StatisticsKind::Missing);
static_assert(kindOf(Special::NotApplicable) == StatisticsKind::NotApplicable);
static_assert(kindOf(Special::Refused) == StatisticsKind::Refused);
static_assert(kindOf(Special::Default) == StatisticsKind::Default);

double realOf(qint64 bits)
{
    double number = 0;
    std::memcpy(&number, &bits, sizeof number);
    return number;
}

} // namespace

std::shared_ptr<const CodePlaces> CollectorShare::codesOf(
    int valueSet, const DataVariable& variable)
{
    auto& shared = codes[{ valueSet, int(variable.type), variable.decimals }];
    if (!shared)
        shared = std::make_shared<CodePlaces>(dictionary, valueSet, variable);
    return shared;
}

VariableCollector::VariableCollector(CollectorShare& share, int variable, int occurrences)
    : m_share(share)
    , m_variable(share.dictionary.variables[std::size_t(variable)])
    , m_index(variable)
    , m_occurrences(occurrences)
    , m_isReal(isReal(m_variable))
    , m_isQuantity(isQuantity(share.dictionary, m_variable))
    , m_values(m_isReal ? -1 : m_variable.decimals)
    , m_specials(m_isReal ? -1 : m_variable.decimals)
    , m_numbers(finestOf(m_variable), share.pointLimit)
{
    if (m_variable.type == DataVariable::Type::Binary)
        return;
    for (const int set : m_variable.valueSets) {
        const auto codes = share.codesOf(set, m_variable);
        m_sets.push_back({ set, codes, std::vector<Tally>(std::size_t(codes->rest()) + 1) });
    }
}

void VariableCollector::add(const DataBatch& batch, quint32 cell, double weight)
{
    const ValueState state = batch.states[cell];
    if (state.isOutside())
        addOutside(batch, cell, weight);
    switch (state.kind()) {
    case ValueKind::Number:
        return addNumber(batch.numbers[cell], state.special(), weight);
    case ValueKind::Real: {
        const double number = batch.realOf(cell);
        if (std::isfinite(number))
            return addNumber(number, state.special(), weight);
        return addRest(StatisticsKind::NotANumber, weight);
    }
    case ValueKind::Text:
        tallyOf(kindOf(state.special())).add(weight);
        return addText(batch.textOf(cell), weight);
    case ValueKind::Blank:
        return addBlank(batch, cell, weight);
    case ValueKind::NotANumber:
        return addRest(StatisticsKind::NotANumber, weight);
    case ValueKind::Unfit:
        return addRest(StatisticsKind::Unfit, weight);
    }
}

void VariableCollector::addRest(StatisticsKind kind, double weight)
{
    tallyOf(kind).add(weight);
    for (Set& set : m_sets)
        set.tallies.back().add(weight);
}

void VariableCollector::addText(std::string_view text, double weight)
{
    for (Set& set : m_sets)
        set.tallies[std::size_t(set.codes->of(text))].add(weight);
}

void VariableCollector::addBlank(const DataBatch& batch, quint32 cell, double weight)
{
    const Special special = batch.states[cell].special();
    tallyOf(special == Special::None ? StatisticsKind::Blank : kindOf(special)).add(weight);
    const char letter = batch.missingKind(cell);
    if (letter >= 'a' && letter <= 'z')
        m_missingKinds[letter].add(weight);
    else
        m_blanks[std::size_t(special)].add(weight);
}

void VariableCollector::addOutside(const DataBatch& batch, quint32 cell, double weight)
{
    m_outside.add(weight);
    const ValueKind kind = batch.states[cell].kind();
    const auto width = std::size_t(std::max(0, m_variable.width));
    if (kind == ValueKind::Number || kind == ValueKind::Real) {
        m_outsideNumbers.add(batch.numbers[cell], 0, m_share.outsideCodes, m_share.outsideBytes);
        return;
    }
    const std::string text(batch.textOf(cell));
    m_outsideTexts.add(
        text, std::max(width, text.size()), m_share.outsideCodes, m_share.outsideBytes);
}

template <typename Number>
void VariableCollector::addNumber(Number number, Special special, double weight)
{
    tallyOf(kindOf(special)).add(weight);
    const bool isSpecial = special != Special::None;
    NumberTable& table = isSpecial ? m_specials : m_values;
    if (table.add(number, weight, m_share.room))
        return;
    empty(table, isSpecial);
    table.add(number, weight, m_share.room);
}

// What special codes there are is counted; they are no numbers.
void VariableCollector::empty(NumberTable& table, bool isSpecial)
{
    const std::vector<CountedNumber> numbers = table.take(m_share.room);
    countCodes(numbers);
    if (!isSpecial)
        m_numbers.add(numbers);
}

void VariableCollector::countCodes(const std::vector<CountedNumber>& numbers)
{
    for (Set& set : m_sets) {
        for (const CountedNumber& one : numbers) {
            const int place = m_isReal ? set.codes->of(one.number) : set.codes->of(one.key);
            set.tallies[std::size_t(place)].add(one.tally);
        }
    }
}

void VariableCollector::countBlanks()
{
    for (Set& set : m_sets) {
        for (std::size_t special = 0; special < m_blanks.size(); ++special) {
            const int place = set.codes->ofBlank(Special(special));
            set.tallies[std::size_t(place)].add(m_blanks[special]);
        }
        for (const auto& [letter, tally] : m_missingKinds)
            set.tallies[std::size_t(set.codes->ofKind(letter))].add(tally);
    }
}

VariableStatistics VariableCollector::counted(bool isWeighted) const
{
    VariableStatistics result;
    result.record = m_variable.record;
    result.variable = m_index;
    result.occurrences = m_occurrences;
    result.isOccurrence = m_occurrences == 0 && m_variable.occurrence > 0;
    result.isWeighted = isWeighted;
    result.isQuantity = m_isQuantity;
    Tally total;
    for (const Tally& tally : m_kinds)
        total.add(tally);
    result.total = total.cell(isWeighted);
    for (std::size_t kind = 0; kind < m_kinds.size(); ++kind)
        result.kinds[kind] = m_kinds[kind].cell(isWeighted);
    result.outside = m_outside.cell(isWeighted);
    return result;
}

QVector<StatisticsCode> VariableCollector::missingKinds(bool isWeighted) const
{
    QVector<StatisticsCode> kinds;
    for (const auto& [letter, tally] : m_missingKinds)
        kinds.append({ QStringLiteral(".") + QLatin1Char(letter), tally.cell(isWeighted), 0 });
    return kinds;
}

// Those that come most often for certain are the first ones.
QVector<StatisticsCode> VariableCollector::outsideCodes(int shownCodes) const
{
    struct Found {
        QString code;
        qint64 count;
        qint64 uncertain;
    };
    std::vector<Found> found;
    for (const auto& one : m_outsideNumbers.counts()) {
        const QString code =
            m_isReal ? realText(realOf(one.code())) : numberText(one.code(), m_variable.decimals);
        found.push_back({ code, one.count - one.taken, one.taken });
    }
    for (const auto& one : m_outsideTexts.counts())
        found.push_back({ QString::fromStdString(one.code()), one.count - one.taken, one.taken });
    std::sort(found.begin(), found.end(), [](const Found& first, const Found& second) {
        return first.count != second.count ? first.count > second.count : first.code < second.code;
    });
    QVector<StatisticsCode> codes;
    for (std::size_t i = 0; i < found.size() && int(i) < shownCodes; ++i) {
        const StatisticsCell cell(found[i].count, double(found[i].count));
        codes.append({ found[i].code, cell, found[i].uncertain });
    }
    return codes;
}

QString VariableCollector::textOf(const NumberSummary::End& end) const
{
    return m_isReal ? realText(end.number) : numberText(end.key, m_variable.decimals);
}

void VariableCollector::addNumbers(VariableStatistics& result, bool isWeighted) const
{
    result.hasNumbers = !m_numbers.isEmpty();
    if (!result.hasNumbers)
        return;
    result.lowest = textOf(m_numbers.lowest());
    result.lowestCell = cellOf(m_numbers.lowest());
    result.highest = textOf(m_numbers.highest());
    result.highestCell = cellOf(m_numbers.highest());
    result.moments = m_numbers.moments();
    if (isWeighted)
        result.weightedMoments = m_numbers.weightedMoments();
    if (m_isQuantity)
        result.histogram = m_numbers.histogram(isWeighted);
}

StatisticsValueSet VariableCollector::cellsOf(const Set& set, bool isWeighted) const
{
    StatisticsValueSet cells;
    cells.valueSet = set.index;
    for (std::size_t i = 0; i + 1 < set.tallies.size(); ++i)
        cells.codes.push_back(set.tallies[i].cell(isWeighted));
    for (const DataCode& code : m_share.dictionary.valueSets[std::size_t(set.index)].codes)
        cells.kinds.push_back(kindOf(code.special));
    const int blank = set.codes->ofBlank(Special::None);
    if (blank < set.codes->rest())
        cells.kinds[std::size_t(blank)] = StatisticsKind::Blank;
    cells.rest = set.tallies.back().cell(isWeighted);
    return cells;
}

VariableStatistics VariableCollector::finish(bool isWeighted, int shownCodes)
{
    empty(m_values, false);
    empty(m_specials, true);
    countBlanks();
    VariableStatistics result = counted(isWeighted);
    result.missingKinds = missingKinds(isWeighted);
    result.outsideCodes = outsideCodes(shownCodes);
    const std::size_t known = m_outsideNumbers.counts().size() + m_outsideTexts.counts().size();
    result.hasAllOutsideCodes = m_outsideNumbers.hasAll() && m_outsideTexts.hasAll()
        && known == std::size_t(result.outsideCodes.size());
    for (const Set& set : m_sets)
        result.valueSets.push_back(cellsOf(set, isWeighted));
    addNumbers(result, isWeighted);
    return result;
}

std::size_t VariableCollector::keptCount() const
{
    return m_values.size() + m_specials.size() + m_outsideNumbers.counts().size()
        + m_outsideTexts.counts().size() + m_numbers.pointCount();
}

} // namespace tessel
