#include <tessel_data/CaseFilter.h>

#include <tessel_data/DataError.h>
#include <tessel_data/NearestNames_p.h>
#include <tessel_data/RowWriter_p.h>

#include <model_Tessel/UtilStrings.h>

#include <algorithm>

namespace tessel {

namespace {

// One condition: a column and the values that it may have.
struct Condition {
    int column = 0;
    CodeTable values;
};

[[noreturn]] void fail(const QString& condition, const QString& text)
{
    throw DataError(DataError::Code::UnfitSelection, QString(),
        QStringLiteral("condition '%1': %2").arg(condition, text));
}

// Parts of a text between separators that are not in quotes.
QStringList splitOutsideQuotes(const QString& text, const QString& separator)
{
    QStringList parts { QString() };
    bool isQuoted = false;
    for (int i = 0; i < text.size();) {
        if (!isQuoted && text.midRef(i, separator.size()).compare(separator) == 0) {
            parts.append(QString());
            i += separator.size();
            continue;
        }
        isQuoted = isQuoted != (text.at(i) == QLatin1Char('"'));
        parts.last() += text.at(i++);
    }
    return parts;
}

bool isQuoted(const QString& value)
{
    return value.size() >= 2 && value.startsWith(QLatin1Char('"'))
        && value.endsWith(QLatin1Char('"'));
}

QString withoutQuotes(const QString& value)
{
    if (!isQuoted(value))
        return value;
    return value.mid(1, value.size() - 2).replace(QLatin1String("\"\""), QLatin1String("\""));
}

quint64 mixed(quint64 hash)
{
    hash = (hash ^ (hash >> 30)) * 0xBF58476D1CE4E5B9U;
    hash = (hash ^ (hash >> 27)) * 0x94D049BB133111EBU;
    return hash ^ (hash >> 31);
}

// A number from 0 up to below 1 that stays the same from version to version: users repeat samples.
double drawOf(std::string_view key, quint32 seed)
{
    constexpr int numberBits = 53; // of a double
    quint64 hash = mixed(quint64(seed) + 0x9E3779B97F4A7C15U);
    for (const char byte : key)
        hash = (hash ^ uchar(byte)) * 0x100000001B3U;
    return double(mixed(hash) >> (64 - numberBits)) / double(1ULL << numberBits);
}

bool holds(
    const CodeTable& values, ValueKind kind, qint64 number, double real, std::string_view text)
{
    switch (kind) {
    case ValueKind::Blank:
        return values.blank().isCode;
    case ValueKind::Number:
        return values.find(number).isCode;
    case ValueKind::Real:
        return values.find(real).isCode;
    case ValueKind::Text:
        return values.find(text).isCode;
    default:
        return false;
    }
}

} // namespace

class CaseFilter::Job {
public:
    Job(const DataDictionary& data, const DataSelection& dataSelection, bool areCases)
        : dictionary(data)
        , selection(dataSelection)
        , hasCases(areCases)
    {
        for (const int id : dictionary.ids)
            caseIds += dictionary.variables[std::size_t(id)].level == 1 ? 1 : 0;
        if (selection.where.trimmed().isEmpty())
            return;
        const QStringList parts = splitOutsideQuotes(selection.where, QStringLiteral(" and "));
        for (const QString& part : parts)
            addCondition(part.trimmed());
    }

    void addCondition(const QString& text);
    int columnOf(const QString& condition, const QString& name) const;
    [[noreturn]] void failName(const QString& condition, const QString& name) const;
    const DataVariable& variable(int column) const;
    QStringList names() const;
    static void addValue(const QString& condition, const QString& value,
        const DataVariable& variable, CodeTable& table);
    static QString textOf(
        const QString& condition, const QString& value, const DataVariable& variable);
    static qint64 numberOf(
        const QString& condition, const QString& value, const DataVariable& variable);
    static double realOf(
        const QString& condition, const QString& value, const DataVariable& variable);
    bool fulfilsConditions(const DataBatch& batch, const DataBatch::Record& record) const;
    bool fulfilsConditions(std::string_view key) const;
    bool isDrawn(std::string_view key);

    const DataDictionary& dictionary;
    DataSelection selection;
    bool hasCases;
    std::vector<Condition> conditions;
    int caseIds = 0;
    qint64 count = 0; // of those that fulfil the conditions
};

const DataVariable& CaseFilter::Job::variable(int column) const
{
    return hasCases ? dictionary.variables[std::size_t(dictionary.ids.at(column))]
                    : dictionary.variable(0, column);
}

QStringList CaseFilter::Job::names() const
{
    const int count =
        hasCases || dictionary.records.empty() ? caseIds : dictionary.records[0].columns.size();
    QStringList result;
    for (int column = 0; column < count; ++column)
        result.append(variable(column).name);
    return result;
}

int CaseFilter::Job::columnOf(const QString& condition, const QString& name) const
{
    const int column = names().indexOf(name);
    if (column < 0)
        failName(condition, name);
    if (variable(column).type == DataVariable::Type::Binary)
        fail(condition, QStringLiteral("'%1' is neither a number nor a text").arg(name));
    return column;
}

void CaseFilter::Job::failName(const QString& condition, const QString& name) const
{
    const QString near = nearestNamesText(name, names());
    if (!hasCases)
        fail(condition, QStringLiteral("there is no variable '%1'%2").arg(name, near));
    for (const DataVariable& known : dictionary.variables) {
        if (known.name == name) {
            fail(condition,
                QStringLiteral("cases are chosen by their identification, which '%1' is no item "
                               "of%2")
                    .arg(name, near));
        }
    }
    fail(condition, QStringLiteral("there is no identification item '%1'%2").arg(name, near));
}

void CaseFilter::Job::addCondition(const QString& text)
{
    const int sign = text.indexOf(QLatin1Char('='));
    if (sign <= 0 || sign == text.size() - 1) {
        fail(text,
            QStringLiteral("it is to be NAME=VALUE, with several values as VALUE,VALUE and a range "
                           "as LOW..HIGH"));
    }
    if (text.count(QLatin1Char('"')) % 2 != 0)
        fail(text, QStringLiteral("a quote is not closed"));
    Condition condition;
    condition.column = columnOf(text, text.left(sign).trimmed());
    const QStringList values = splitOutsideQuotes(text.mid(sign + 1), QStringLiteral(","));
    for (const QString& value : values)
        addValue(text, value.trimmed(), variable(condition.column), condition.values);
    condition.values.finish();
    conditions.push_back(std::move(condition));
}

void CaseFilter::Job::addValue(
    const QString& condition, const QString& value, const DataVariable& variable, CodeTable& table)
{
    if (value.isEmpty())
        fail(condition, QStringLiteral("a value is missing; \"\" stands for a blank"));
    if (isQuoted(value) && withoutQuotes(value).trimmed().isEmpty())
        return table.addBlank(Special::None, 0);
    if (variable.type == DataVariable::Type::Text)
        return table.addText(textOf(condition, value, variable).toStdString(), Special::None, 0);
    const int dots = value.indexOf(QLatin1String(".."));
    const QString low = dots < 0 ? value : value.left(dots).trimmed();
    const QString high = dots < 0 ? value : value.mid(dots + 2).trimmed();
    bool isInOrder = true;
    if (variable.type == DataVariable::Type::Real) {
        const double first = realOf(condition, low, variable);
        const double last = realOf(condition, high, variable);
        isInOrder = first <= last;
        table.addReals(first, last, Special::None, 0);
    } else {
        const qint64 first = numberOf(condition, low, variable);
        const qint64 last = numberOf(condition, high, variable);
        isInOrder = first <= last;
        table.addNumbers(first, last, Special::None, 0);
    }
    if (!isInOrder)
        fail(condition, QStringLiteral("the range '%1' ends before it begins").arg(value));
}

QString CaseFilter::Job::textOf(
    const QString& condition, const QString& value, const DataVariable& variable)
{
    if (!isQuoted(value) && value.contains(QLatin1String(".."))) {
        fail(condition,
            QStringLiteral("%1 is a text, which has no ranges; a text with '..' in it stands in "
                           "quotes")
                .arg(variable.name));
    }
    const QString text = withoutTrailingBlanks(withoutQuotes(value));
    if (variable.width > 0 && text.toUcs4().size() > variable.width) {
        fail(condition,
            QStringLiteral("'%1' is no value of %2, a text of %3 columns")
                .arg(text, variable.name)
                .arg(variable.width));
    }
    return text;
}

qint64 CaseFilter::Job::numberOf(
    const QString& condition, const QString& value, const DataVariable& variable)
{
    qint64 number = 0;
    const QByteArray text = value.toUtf8();
    const NumberStatus status =
        readCode({ text.constData(), std::size_t(text.size()) }, variable.decimals, number);
    if (status == NumberStatus::Number) {
        const int digits = QString::number(std::abs(number)).size() + (number < 0 ? 1 : 0);
        if (digits <= std::max(variable.width, variable.decimals))
            return number;
    }
    fail(condition,
        QStringLiteral("'%1' is no value of %2, a number of %3 columns%4")
            .arg(value, variable.name)
            .arg(variable.width)
            .arg(variable.decimals > 0 ? QStringLiteral(" and %1 decimals").arg(variable.decimals)
                                       : QString()));
}

double CaseFilter::Job::realOf(
    const QString& condition, const QString& value, const DataVariable& variable)
{
    bool isNumber = false;
    const double number = value.toDouble(&isNumber);
    if (!isNumber)
        fail(condition,
            QStringLiteral("'%1' is no value of %2, a number").arg(value, variable.name));
    return number;
}

bool CaseFilter::Job::fulfilsConditions(
    const DataBatch& batch, const DataBatch::Record& record) const
{
    return std::all_of(conditions.begin(), conditions.end(), [&](const Condition& condition) {
        const quint32 cell = record.firstCell + quint32(condition.column);
        const ValueKind kind = batch.states[cell].kind();
        return holds(condition.values, kind, batch.numbers[cell], batch.realOf(cell),
            kind == ValueKind::Text ? batch.textOf(cell) : std::string_view());
    });
}

// A case without records has its identification in its key only.
bool CaseFilter::Job::fulfilsConditions(std::string_view key) const
{
    const QString text = QString::fromUtf8(key.data(), int(key.size()));
    return std::all_of(conditions.begin(), conditions.end(), [&](const Condition& condition) {
        int start = 0;
        for (int id = 0; id < condition.column; ++id)
            start += variable(id).width;
        const DataVariable& item = variable(condition.column);
        const OwnValue value = OwnValue::read(text.mid(start, item.width).toUtf8(), item);
        return holds(condition.values, value.state.kind(), value.number, 0, value.text);
    });
}

bool CaseFilter::Job::isDrawn(std::string_view key)
{
    ++count;
    if (selection.every > 0 && count % selection.every != 0)
        return false;
    return selection.sample <= 0 || drawOf(key, selection.seed) < selection.sample;
}

CaseFilter::CaseFilter(
    const DataDictionary& dictionary, const DataSelection& selection, bool hasCases)
    : m_job(std::make_unique<Job>(dictionary, selection, hasCases))
{
}

CaseFilter::~CaseFilter() = default;

bool CaseFilter::takesCase(
    const DataBatch& batch, const DataBatch::Case& begun, const DataBatch::Record* first)
{
    const std::string_view key = batch.text(begun.key);
    const bool isWanted =
        first ? m_job->fulfilsConditions(batch, *first) : m_job->fulfilsConditions(key);
    return isWanted && m_job->isDrawn(key);
}

bool CaseFilter::takesRow(const DataBatch& batch, const DataBatch::Record& row)
{
    return m_job->fulfilsConditions(batch, row) && m_job->isDrawn(std::to_string(row.line));
}

} // namespace tessel
