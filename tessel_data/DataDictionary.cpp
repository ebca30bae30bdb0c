#include <tessel_data/DataDictionary.h>

#include <tessel_data/CSProDb.h>
#include <tessel_data/DataError.h>
#include <tessel_data/DictionaryErrors_p.h>

#include <model_Tessel/CSPro.h>
#include <model_Tessel/CSProDataImport.h>
#include <model_Tessel/CSProValueSet.h>
#include <model_Tessel/DictionaryFile.h>
#include <model_Tessel/DictionaryRelease.h>
#include <model_Tessel/ErrorManager.h>
#include <model_Tessel/ProblemText.h>
#include <model_Tessel/StatDictionary.h>
#include <model_Tessel/UtilStrings.h>

#include <QFileInfo>
#include <QHash>

#include <algorithm>
#include <cmath>
#include <limits>

namespace tessel {

namespace {

// What lies behind is damage; no line is read so far.
constexpr int LastColumn = 100'000'000;

constexpr int MostDecimals = 18;

// The reader never frees what it made; here it is copied, so nobody else has it.
class CSProDictionary {
public:
    CSProDictionary() = default;
    ~CSProDictionary()
    {
        releaseModel(reader);
    }

    TCSPro reader;

private:
    Q_DISABLE_COPY(CSProDictionary)
};

// In UTF-8, without the blanks at its end.
QByteArray bytesOf(const QString& text)
{
    return withoutTrailingBlanks(text).toUtf8();
}

std::string_view view(const QByteArray& bytes)
{
    return { bytes.constData(), std::size_t(bytes.size()) };
}

// Bounds of a range may have more decimals than the data: the numbers inside count.
bool boundOf(const QString& code, int decimals, bool isLow, qint64& bound)
{
    const QByteArray text = code.trimmed().toLatin1();
    const NumberStatus status = readCode(view(text), decimals, bound);
    if (status != NumberStatus::Unfit)
        return status == NumberStatus::Number;
    const double exact = text.toDouble() * std::pow(10.0, decimals);
    constexpr double most = 1e18;
    const double whole = isLow ? std::ceil(exact) : std::floor(exact);
    bound = qint64(std::clamp(whole, -most, most));
    return true;
}

void addCode(CodeTable& table, const DataCode& code, const DataVariable& variable, int entry)
{
    const QByteArray text = bytesOf(code.code);
    if (text.isEmpty()) {
        table.addBlank(code.special, entry);
        return;
    }
    if (variable.type != DataVariable::Type::Number) {
        table.addText(view(text), code.special, entry);
        return;
    }
    qint64 low = 0;
    qint64 high = 0;
    if (code.highCode.isNull()) {
        if (readCode(view(text), variable.decimals, low) == NumberStatus::Number)
            table.addNumbers(low, low, code.special, entry);
    } else if (boundOf(code.code, variable.decimals, true, low)
        && boundOf(code.highCode, variable.decimals, false, high)) {
        table.addNumbers(low, high, code.special, entry);
    }
}

Special specialOf(const TValueSetItem& entry)
{
    return entry.special && entry.type >= 1 && entry.type <= 4 ? Special(entry.type)
                                                               : Special::None;
}

} // namespace

// Copies what the reader of CSPro dictionaries found.
class DictionaryResolver {
public:
    DictionaryResolver(const TCSPro& source, ValueSetChoice choice)
        : m_source(source)
        , m_choice(choice)
    {
    }

    DataDictionary resolve();

private:
    void addRecords();
    void addItem(const TCSProItem& item);
    QVector<int> valueSetsOf(const TCSProItem& item);
    int valueSet(const TCSProValueSet* valueSet);
    std::shared_ptr<const CodeTable> codesOf(const DataVariable& variable);

    const TCSPro& m_source;
    ValueSetChoice m_choice;
    DataDictionary m_result;
    QHash<const TCSProRecord*, int> m_records;
    QHash<const TCSProItem*, int> m_variables;
    QHash<const TCSProValueSet*, int> m_valueSets;
    // Occurrences, and items of linked sets, share their tables.
    QHash<QPair<QVector<int>, int>, std::shared_ptr<const CodeTable>> m_tables;
};

DataDictionary DictionaryResolver::resolve()
{
    m_result.name = m_source.name;
    m_result.label = m_source.label;
    m_result.note = m_source.note();
    m_result.recordTypeStart = std::clamp(m_source.recordTypeStart - 1, 0, LastColumn);
    m_result.recordTypeWidth = std::clamp(m_source.recordTypeLen, 0, LastColumn);
    m_result.languages = m_source.languages();
    m_result.levels = m_source.levels();
    m_result.problems = m_source.problems();
    addRecords();
    for (const TCSProItem* item : qAsConst(*m_source.items))
        addItem(*item);
    m_result.placeColumns();
    return std::move(m_result);
}

void DictionaryResolver::addRecords()
{
    for (const TCSProRecord* source : qAsConst(*m_source.records)) {
        DataRecord record;
        record.name = source->name;
        record.label = source->label;
        record.note = source->note;
        record.typeCode = withoutTrailingBlanks(source->recordTypeValue);
        record.level = std::max(1, source->level);
        record.isRequired = source->required.compare(QLatin1String("No"), Qt::CaseInsensitive) != 0;
        record.maximum = source->maxRecords;
        m_records.insert(source, int(m_result.records.size()));
        m_result.records.push_back(record);
    }
}

void DictionaryResolver::addItem(const TCSProItem& item)
{
    DataVariable variable;
    variable.name = item.name;
    variable.itemName = item.dictionaryName;
    variable.label = item.label;
    variable.note = item.detail().note;
    variable.occurrenceLabel = item.detail().occurrenceLabel;
    variable.type = !item.detail().contentType.isEmpty() ? DataVariable::Type::Binary
        : item.isAlpha != 0                              ? DataVariable::Type::Text
                                                         : DataVariable::Type::Number;
    variable.level = std::max(1, item.detail().level);
    variable.record = m_records.value(item.record, -1);
    variable.start = std::clamp(item.start - 1, 0, LastColumn);
    variable.width = std::clamp(item.len, 0, LastColumn);
    variable.decimals = std::clamp(item.decimal, 0, MostDecimals);
    variable.hasDecimalMark = item.hasDecimalChar;
    variable.isZeroFilled = item.isZeroFill;
    variable.isSubItem = item.isSubItem != 0;
    variable.parent = m_variables.value(item.detail().parent, -1);
    variable.occurrence = item.occurrence;
    variable.valueSets = valueSetsOf(item);
    variable.codes = codesOf(variable);
    const int index = int(m_result.variables.size());
    m_variables.insert(&item, index);
    if (variable.record < 0)
        m_result.ids.append(index);
    m_result.variables.push_back(std::move(variable));
}

QVector<int> DictionaryResolver::valueSetsOf(const TCSProItem& item)
{
    QVector<int> indexes;
    for (const TCSProValueSet* set : qAsConst(*item.valueSets))
        indexes.append(valueSet(set));
    return indexes;
}

int DictionaryResolver::valueSet(const TCSProValueSet* source)
{
    const auto known = m_valueSets.constFind(source);
    if (known != m_valueSets.constEnd())
        return known.value();
    DataValueSet set { source->name, source->label, {}, {} };
    if (!source->note().isEmpty())
        set.notes.append(source->note());
    set.codes.reserve(source->items->size());
    for (const TValueSetItem* entry : qAsConst(*source->items)) {
        set.codes.append(
            { entry->code, source->detail(entry).highCode, entry->label, specialOf(*entry) });
        const QString& note = source->detail(entry).note;
        if (!note.isEmpty())
            set.notes.append(entry->code.trimmed() + QLatin1String(": ") + note);
    }
    const int index = int(m_result.valueSets.size());
    m_valueSets.insert(source, index);
    m_result.valueSets.push_back(std::move(set));
    return index;
}

std::shared_ptr<const CodeTable> DictionaryResolver::codesOf(const DataVariable& variable)
{
    if (variable.valueSets.isEmpty() || variable.type == DataVariable::Type::Binary)
        return nullptr;
    QVector<int> sets = variable.valueSets;
    if (m_choice == ValueSetChoice::First)
        sets.resize(1);
    const bool isNumber = variable.type == DataVariable::Type::Number;
    std::shared_ptr<const CodeTable>& shared =
        m_tables[{ sets, isNumber ? variable.decimals : -1 }];
    if (shared)
        return shared;
    auto table = std::make_shared<CodeTable>();
    int entry = 0;
    for (const int set : qAsConst(sets)) {
        for (const DataCode& code : qAsConst(m_result.valueSets[std::size_t(set)].codes))
            addCode(*table, code, variable, entry++);
    }
    table->finish();
    if (!table->isEmpty())
        shared = table;
    return shared;
}

namespace {

// The importer of an opened dictionary leaves what it read, which nobody else has here.
class OwnedImport {
public:
    explicit OwnedImport(TCSProDataImport& importer)
        : m_importer(importer)
    {
    }
    ~OwnedImport()
    {
        releaseModel(*m_importer.dictionary);
        qDeleteAll(*m_importer.fields);
        delete m_importer.fields;
    }

private:
    Q_DISABLE_COPY(OwnedImport)

    TCSProDataImport& m_importer;
};

// Why the reading ended, to follow what it means; empty when it is not told.
QString reasonOf(const TCSPro& reader)
{
    for (const CSProProblem& problem : reader.problems()) {
        if (endsReading(problem.kind))
            return QStringLiteral(": line %1: ").arg(problem.line) + describeProblem(problem);
    }
    return QString();
}

DictionaryFile openDictionary(const QString& path)
{
    DictionaryFileOptions options;
    options.kind = DictionaryFileKind::CSPro;
    options.reading = CSProReading::AsWritten;
    DictionaryFile file = readDictionaryFile(path, options);
    return file.kind == DictionaryFileKind::CSProDb
        ? readDictionaryFile(path, CSProDb(path).dictionary(), options)
        : std::move(file);
}

} // namespace

DataDictionary DataDictionary::fromReader(
    const TCSPro& reader, const QString& name, ValueSetChoice choice)
{
    if (reader.records->isEmpty()) {
        throw DataError(DataError::Code::NoDictionary, name,
            QStringLiteral("its dictionary has no records, so it describes no data"));
    }
    return DictionaryResolver(reader, choice).resolve();
}

DataDictionary DataDictionary::fromFile(const QString& path, ValueSetChoice choice)
{
    const DictionaryFile file = openDictionary(path);
    TCSProDataImport* const importer = file.csproImporter();
    if (!importer)
        throw errorOf(file);
    const OwnedImport owned(*importer);
    return fromReader(*importer->dictionary, path, choice);
}

DataDictionary DataDictionary::fromBytes(
    const QByteArray& bytes, const QString& name, ValueSetChoice choice, const QByteArray& encoding)
{
    CSProDictionary dictionary;
    dictionary.reader.setReading(CSProReading::AsWritten);
    dictionary.reader.setTextCodec(encoding);
    try {
        dictionary.reader.loadFromData(bytes);
    } catch (OxErrorManager* error) {
        const std::unique_ptr<OxErrorManager> owned(error);
        throw DataError(DataError::Code::NoDictionary, name,
            QStringLiteral("holds no CSPro dictionary that can be read")
                + reasonOf(dictionary.reader));
    }
    return fromReader(dictionary.reader, name, choice);
}

namespace {

// Labels of a few values of a measurement, or of missing values alone, do not say which values
// there are.
bool areValueSet(
    const TStatVariableDescription& variable, const QVector<TStatLabelledValue>& labels)
{
    if (variable.measure == READSTAT_MEASURE_SCALE)
        return false;
    const auto ordinary = std::count_if(labels.begin(), labels.end(),
        [&](const TStatLabelledValue& labelled) { return !variable.isMissing(labelled.value); });
    return ordinary >= 2;
}

void addLabelled(CodeTable& table, const QVector<TStatLabelledValue>& labels, int entry)
{
    for (const TStatLabelledValue& labelled : labels) {
        const TStatValue& value = labelled.value;
        if (value.type == READSTAT_TYPE_STRING || value.type == READSTAT_TYPE_STRING_REF)
            table.addText(view(bytesOf(value.text)), Special::None, entry++);
        else if (value.tag == '\0' && !value.isSystemMissing)
            table.addReals(value.number, value.number, Special::None, entry++);
    }
}

} // namespace

DataDictionary DataDictionary::fromDescription(const TStatFileDescription& description)
{
    using Type = DataVariable::Type;
    DataDictionary result;
    result.description = std::make_shared<TStatFileDescription>(description);
    result.hasMissingKinds = description.kind == TStatFileKind::Stata;
    result.label = description.fileLabel;
    result.name = QFileInfo(description.path).completeBaseName();
    for (const TStatLabelSet& source : description.labelSets) {
        DataValueSet set { source.name, QString(), {}, {} };
        for (const TStatLabelledValue& labelled : source.labels)
            set.codes.append({ labelled.value.text, QString(), labelled.label,
                labelled.value.tag != '\0' ? Special::Missing : Special::None });
        result.valueSets.push_back(std::move(set));
    }
    DataRecord record;
    record.name = result.name;
    record.maximum = std::numeric_limits<qint64>::max();
    for (const TStatVariableDescription& source : description.variables) {
        DataVariable variable;
        variable.name = variable.itemName = source.name;
        variable.label = source.label;
        variable.type = source.isString() ? Type::Text : Type::Real;
        variable.record = 0;
        variable.width = source.width(description.kind);
        variable.decimals = source.decimals();
        auto table = std::make_shared<CodeTable>();
        int entry = 0;
        for (const TStatMissingRange& range : source.missingRanges) {
            if (source.isString())
                table->addText(view(bytesOf(range.low.text)), Special::Missing, entry++);
            else
                table->addReals(range.low.number, range.high.number, Special::Missing, entry++);
        }
        if (source.labelSet >= 0) {
            variable.valueSets.append(source.labelSet);
            const auto& labels = description.labelSets.at(source.labelSet).labels;
            if (areValueSet(source, labels))
                addLabelled(*table, labels, entry);
        }
        table->finish();
        if (!table->isEmpty())
            variable.codes = table;
        result.variables.push_back(std::move(variable));
    }
    result.records.push_back(record);
    result.placeColumns();
    return result;
}

// Identification items go by level; a record has those of its level and above, then its own.
void DataDictionary::placeColumns()
{
    const auto levelOf = [this](int id) { return variables[std::size_t(id)].level; };
    std::stable_sort(ids.begin(), ids.end(),
        [&](int first, int second) { return levelOf(first) < levelOf(second); });
    for (DataRecord& record : records) {
        for (const int id : qAsConst(ids)) {
            if (levelOf(id) <= record.level)
                record.columns.append(id);
        }
        record.idCount = record.columns.size();
    }
    for (std::size_t i = 0; i < variables.size(); ++i) {
        if (variables[i].record >= 0)
            records[std::size_t(variables[i].record)].columns.append(int(i));
    }
    int first = 0;
    for (DataRecord& record : records) {
        record.firstColumn = first;
        first += record.columns.size();
        record.width = recordTypeWidth > 0 ? recordTypeStart + recordTypeWidth : 0;
        for (const int column : qAsConst(record.columns)) {
            const DataVariable& variable = variables[std::size_t(column)];
            record.width = std::max(record.width, variable.start + variable.width);
        }
        for (const int id : qAsConst(ids)) { // deeper ones leave their columns blank
            const DataVariable& variable = variables[std::size_t(id)];
            record.width = std::max(record.width, variable.start + variable.width);
        }
    }
}

QString DataDictionary::labelText(const QString& text) const
{
    return labelText(text, language);
}

QString DataDictionary::labelText(const QString& text, int language) const
{
    if (languages.isEmpty())
        return text;
    const QString chosen = text.section(QLatin1Char('|'), language, language);
    return chosen.isEmpty() ? text.section(QLatin1Char('|'), 0, 0) : chosen;
}

QString DataDictionary::fullLabel(const DataVariable& variable) const
{
    const QString label = labelText(variable.label);
    const QString own = labelText(variable.occurrenceLabel);
    return own.isEmpty() ? label : QStringLiteral("%1 (%2)").arg(label, own);
}

const DataVariable& DataDictionary::variable(int record, int column) const
{
    return variables[std::size_t(records[std::size_t(record)].columns.at(column))];
}

CodeTable DataDictionary::codesOf(int set, const DataVariable& variable) const
{
    CodeTable table;
    int entry = 0;
    for (const DataCode& code : valueSets[std::size_t(set)].codes) {
        bool isNumber = false;
        const double number = code.code.toDouble(&isNumber);
        if (variable.type != DataVariable::Type::Real)
            addCode(table, code, variable, entry);
        else if (isNumber)
            table.addReals(number, number, code.special, entry);
        ++entry;
    }
    table.finish();
    return table;
}

int DataDictionary::columnCount() const
{
    return records.empty() ? 0 : records.back().firstColumn + records.back().columns.size();
}

} // namespace tessel
