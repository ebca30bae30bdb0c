#include <tessel_data/CsvCodes_p.h>

#include <tessel_data/CsvBytes_p.h>
#include <tessel_data/QuantityLabel_p.h>

#include <model_Tessel/UtilStrings.h>

#include <algorithm>

namespace tessel {

namespace {

using Kind = ConversionNote::Kind;

constexpr int NoEntry = -1;
constexpr int OtherMissing = -2; // a missing value that has no label

bool isKind(const QString& code)
{
    return code.size() == 2 && code.at(0) == QLatin1Char('.') && code.at(1) >= QLatin1Char('a')
        && code.at(1) <= QLatin1Char('z');
}

} // namespace

QString csvText(const QString& text, bool forSpreadsheet)
{
    const QString shown = QString(text).replace(QChar(u'\0'), QChar(u'\u2400'));
    const QByteArray bytes = text.toUtf8();
    const bool isGuarded =
        forSpreadsheet && CsvBytes::isFormula({ bytes.constData(), std::size_t(bytes.size()) });
    return isGuarded ? QLatin1Char('\'') + shown : shown;
}

CsvCodes::CsvCodes(const DataDictionary& dictionary, int variable, const CsvForm& form)
    : m_form(form)
    , m_hasKinds(dictionary.hasMissingKinds)
    , m_type(dictionary.variables[std::size_t(variable)].type)
    , m_decimals(dictionary.variables[std::size_t(variable)].decimals)
{
    const DataVariable& source = dictionary.variables[std::size_t(variable)];
    if (source.valueSets.isEmpty())
        return;
    const DataValueSet& set = dictionary.valueSets[std::size_t(source.valueSets.constFirst())];
    m_table = dictionary.codesOf(source.valueSets.constFirst(), source);
    m_labels.resize(std::size_t(set.codes.size()));
    addCodes(dictionary, source);
    addKinds(set);
    std::stable_sort(m_codes.begin(), m_codes.end(),
        [](const CsvCode& first, const CsvCode& second) { return first.entry < second.entry; });
    markMissing(dictionary, variable);
    setLabels(dictionary, set);
    dropShared();
    dropReadable();
    tellAlike();
}

void CsvCodes::addCodes(const DataDictionary& dictionary, const DataVariable& variable)
{
    const QVector<DataCode>& source =
        dictionary.valueSets[std::size_t(variable.valueSets.constFirst())].codes;
    const auto add = [&](int entry, const QString& low, const QString& high, qint64 number) {
        CsvCode code;
        code.entry = entry;
        code.low = low;
        code.high = high;
        code.number = number;
        code.isMissing = isMissing(source.at(entry).special);
        m_codes.push_back(code);
    };
    for (const auto& segment : m_table.numbers()) {
        add(segment.entry, numberText(segment.low, m_decimals),
            segment.low == segment.high ? QString() : numberText(segment.high, m_decimals),
            segment.low);
    }
    for (const auto& segment : m_table.reals()) {
        add(segment.entry, realText(segment.low),
            segment.low == segment.high ? QString() : realText(segment.high), qint64(segment.low));
    }
    for (const auto& [text, match] : m_table.texts()) {
        const QString code = QString::fromUtf8(text.data(), int(text.size()));
        add(match.entry, csvText(code, m_form.forSpreadsheet), QString(), 0);
        m_texts.insert(m_codes.back().low, match.entry);
    }
    if (m_table.blank().isCode) {
        add(m_table.blank().entry, QString(), QString(), 0);
        m_codes.back().isMissing = true;
    }
}

// The first label of a kind counts.
void CsvCodes::addKinds(const DataValueSet& set)
{
    if (!m_hasKinds || m_type == DataVariable::Type::Text)
        return;
    for (int entry = 0; entry < set.codes.size(); ++entry) {
        const DataCode& source = set.codes.at(entry);
        if (source.special != Special::Missing || !isKind(source.code)
            || m_texts.contains(source.code))
            continue;
        CsvCode code;
        code.entry = entry;
        code.low = source.code;
        code.kind = source.code.at(1).toLatin1();
        code.isMissing = true;
        m_codes.push_back(code);
        m_texts.insert(code.low, entry);
    }
}

// The file of SPSS tells it apart from the labels.
void CsvCodes::markMissing(const DataDictionary& dictionary, int variable)
{
    if (!dictionary.description)
        return;
    m_missing = dictionary.description->variables.at(variable).missingRanges;
    for (CsvCode& code : m_codes)
        code.isMissing = code.isMissing || (code.kind == '\0' && isMissingInFile(code.low));
}

bool CsvCodes::isMissingInFile(const QString& cell) const
{
    if (m_type == DataVariable::Type::Text) {
        return std::any_of(m_missing.begin(), m_missing.end(), [&](const TStatMissingRange& range) {
            return csvText(withoutTrailingBlanks(range.low.text), m_form.forSpreadsheet) == cell;
        });
    }
    const double number = cell.toDouble();
    return std::any_of(m_missing.begin(), m_missing.end(), [&](const TStatMissingRange& range) {
        return range.low.number <= number && number <= range.high.number;
    });
}

// A quantity has no labels.
void CsvCodes::setLabels(const DataDictionary& dictionary, const DataValueSet& set)
{
    const QString quantity = quantityLabelOf(set);
    for (const CsvCode& code : m_codes) {
        Label& label = m_labels[std::size_t(code.entry)];
        const QString& source = set.codes.at(code.entry).label;
        label.text = dictionary.labelText(source);
        label.cell = csvText(label.text, m_form.forSpreadsheet);
        label.isSeveral = label.isSeveral || !label.codes.isEmpty() || !code.high.isNull();
        label.isMissing = label.isMissing || code.isMissing;
        label.isUsed =
            m_form.hasLabels && !label.text.isEmpty() && (quantity.isNull() || source != quantity);
        const QString shown = code.low.isEmpty() ? QStringLiteral("blank") : code.low;
        label.codes.append(code.high.isNull() ? shown : shown + QLatin1Char(':') + code.high);
    }
}

// Entries whose labels make one cell, in the order of the set.
std::vector<std::vector<int>> CsvCodes::alike() const
{
    std::vector<std::vector<int>> groups;
    QHash<QString, std::size_t> places;
    for (int entry = 0; entry < int(m_labels.size()); ++entry) {
        const Label& label = m_labels[std::size_t(entry)];
        if (!label.isUsed)
            continue;
        const auto known = places.constFind(label.cell);
        if (known != places.constEnd()) {
            groups[*known].push_back(entry);
            continue;
        }
        places.insert(label.cell, groups.size());
        groups.push_back({ entry });
    }
    return groups;
}

void CsvCodes::dropShared()
{
    for (const std::vector<int>& entries : alike()) {
        const auto missing = std::count_if(entries.begin(), entries.end(),
            [this](int entry) { return m_labels[std::size_t(entry)].isMissing; });
        if (missing == 0 || missing == qint64(entries.size()))
            continue;
        for (const int entry : entries)
            m_labels[std::size_t(entry)].isUsed = false;
        tell(Kind::LabelShared, entries);
    }
}

// A code that loses its label is one that others may read like.
void CsvCodes::dropReadable()
{
    QHash<int, std::vector<int>> readers; // by the entry that they read like
    std::vector<int> plain { OtherMissing };
    for (int entry = 0; entry < int(m_labels.size()); ++entry) {
        const Label& label = m_labels[std::size_t(entry)];
        if (!label.isUsed) {
            plain.push_back(entry);
            continue;
        }
        const int other = entryOf(label.cell);
        if (other != NoEntry && other != entry)
            readers[other].push_back(entry);
    }
    while (!plain.empty()) {
        const std::vector<int> dropped = readers.take(plain.back());
        plain.pop_back();
        for (const int entry : dropped) {
            m_labels[std::size_t(entry)].isUsed = false;
            tell(Kind::LabelLikeCode, { entry });
            plain.push_back(entry);
        }
    }
}

void CsvCodes::tellAlike()
{
    for (const std::vector<int>& entries : alike()) {
        if (entries.size() > 1 || m_labels[std::size_t(entries.front())].isSeveral)
            tell(Kind::LabelsAlike, entries);
    }
}

// The entry whose values read so.
int CsvCodes::entryOf(const QString& cell) const
{
    const auto text = m_texts.constFind(cell);
    if (text != m_texts.constEnd())
        return *text;
    if (m_hasKinds && m_type != DataVariable::Type::Text && isKind(cell))
        return OtherMissing;
    if (!isReadable(cell))
        return NoEntry;
    const int other = isMissingInFile(cell) ? OtherMissing : NoEntry;
    if (m_type == DataVariable::Type::Text)
        return other;
    if (m_type == DataVariable::Type::Real) {
        const CodeTable::Match match = m_table.find(cell.toDouble());
        return match.isCode ? match.entry : other;
    }
    qint64 number = 0;
    const QByteArray bytes = cell.toLatin1();
    readCode({ bytes.constData(), std::size_t(bytes.size()) }, m_decimals, number);
    return m_table.find(number).entry;
}

bool CsvCodes::isReadable(const QString& cell) const
{
    if (m_type == DataVariable::Type::Text)
        return true;
    if (m_type == DataVariable::Type::Real) {
        bool isNumber = false;
        const double number = cell.toDouble(&isNumber);
        return isNumber && realText(number) == cell;
    }
    qint64 number = 0;
    const QByteArray bytes = cell.toUtf8();
    return readCode({ bytes.constData(), std::size_t(bytes.size()) }, m_decimals, number)
        == NumberStatus::Number
        && numberText(number, m_decimals) == cell;
}

QString CsvCodes::codesOf(const std::vector<int>& entries) const
{
    constexpr int mostNamed = 5;
    QStringList codes;
    for (const int entry : entries) {
        codes.append(m_labels[std::size_t(entry)].codes);
        if (codes.size() > mostNamed)
            break;
    }
    if (codes.size() > mostNamed)
        codes = codes.mid(0, mostNamed) + QStringList { QStringLiteral("...") };
    return codes.join(QLatin1String(", "));
}

void CsvCodes::tell(Kind kind, const std::vector<int>& entries)
{
    ConversionNote note;
    note.kind = kind;
    note.text = codesOf(entries);
    note.newText = m_labels[std::size_t(entries.front())].text;
    note.count = int(entries.size());
    m_notes.push_back(note);
}

// Of a file of statistics programs each variable has missing values of its own.
std::shared_ptr<const CsvCodes> CsvCodeSets::of(int variable)
{
    const DataVariable& source = m_dictionary.variables[std::size_t(variable)];
    const bool isOwn = m_dictionary.description || source.valueSets.isEmpty();
    const int decimals = source.type == DataVariable::Type::Number ? source.decimals : -1;
    const QPair<int, int> key =
        isOwn ? qMakePair(variable, -2) : qMakePair(source.valueSets.constFirst(), decimals);
    std::shared_ptr<const CsvCodes>& codes = m_known[key];
    if (!codes)
        codes = std::make_shared<CsvCodes>(m_dictionary, variable, m_form);
    return codes;
}

} // namespace tessel
