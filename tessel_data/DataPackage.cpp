#include <tessel_data/DataPackage_p.h>

#include <tessel_data/WriteBytes_p.h>

#include <model_Tessel/StatDictionary.h>
#include <model_Tessel/UtilStrings.h>

#include <QJsonDocument>

#include <algorithm>

namespace tessel {

namespace {

QString profile(const char* name)
{
    return QStringLiteral("https://datapackage.org/profiles/2.0/%1.json").arg(QLatin1String(name));
}

// Small letters, digits, ".", "_" and "-", as names of packages and resources are.
QString slugOf(const QString& name)
{
    QString slug;
    const QString small = name.toLower();
    for (const QChar character : small) {
        const ushort code = character.unicode();
        const bool isPlain = (code >= 'a' && code <= 'z') || (code >= '0' && code <= '9')
            || code == '.' || code == '_' || code == '-';
        slug += isPlain ? character : QLatin1Char('-');
    }
    return slug.isEmpty() ? QStringLiteral("data") : slug;
}

QString shown(const QString& text)
{
    return QString(text).replace(QChar(u'\0'), QChar(u'\u2400'));
}

void insertText(QJsonObject& object, const char* key, const QString& text)
{
    if (!text.isEmpty())
        object.insert(QLatin1String(key), shown(text));
}

QString nameOf(Special special)
{
    switch (special) {
    case Special::Missing:
        return QStringLiteral("missing");
    case Special::NotApplicable:
        return QStringLiteral("not applicable");
    case Special::Refused:
        return QStringLiteral("refused");
    case Special::Default:
        return QStringLiteral("default");
    case Special::None:
        break;
    }
    return QString();
}

QJsonObject dialect()
{
    return { { QStringLiteral("$schema"), profile("tabledialect") },
        { QStringLiteral("header"), true }, { QStringLiteral("delimiter"), QStringLiteral(",") },
        { QStringLiteral("lineTerminator"), QStringLiteral("\r\n") },
        { QStringLiteral("quoteChar"), QStringLiteral("\"") },
        { QStringLiteral("doubleQuote"), true } };
}

QJsonObject labelled(const QJsonValue& value, const QString& label)
{
    QJsonObject object { { QStringLiteral("value"), value } };
    insertText(object, "label", label);
    return object;
}

} // namespace

DataPackage::DataPackage(const DataDictionary& dictionary, const CsvForm& form, CsvCodeSets& codes)
    : m_dictionary(dictionary)
    , m_form(form)
    , m_codes(codes)
{
}

// Of the types of Stata some are whole; a number of SPSS may have decimals that are not shown.
bool DataPackage::areWhole(const ConversionColumn& column) const
{
    const TStatFileDescription* const description = m_dictionary.description.get();
    if (!description || description->kind != TStatFileKind::Stata)
        return false;
    const readstat_type_t type = description->variables.at(column.variable).type;
    return type == READSTAT_TYPE_INT8 || type == READSTAT_TYPE_INT16 || type == READSTAT_TYPE_INT32;
}

QString DataPackage::typeOf(const ConversionColumn& column, const DataVariable* variable) const
{
    const bool hasLabels = m_form.hasLabels && variable && !variable->valueSets.isEmpty();
    if (column.isText() || hasLabels)
        return QStringLiteral("string");
    if (variable && variable->type == DataVariable::Type::Real)
        return areWhole(column) ? QStringLiteral("integer") : QStringLiteral("number");
    return column.decimals > 0 ? QStringLiteral("number") : QStringLiteral("integer");
}

// Of codes that are one value each, as cells have them; a range has no list of its values.
QJsonArray DataPackage::missingValues(int index) const
{
    const std::shared_ptr<const CsvCodes> codes = m_codes.of(index);
    QString blankLabel;
    std::vector<std::pair<QString, QString>> values; // and their labels
    QSet<QString> known; // codes that the set has
    for (const CsvCode& code : codes->codes()) {
        const bool isBlank = code.low.isEmpty();
        if (code.high.isNull())
            known.insert(code.low);
        if (isBlank && codes->labelCell(code).isNull())
            blankLabel = codes->labelOf(code);
        else if (code.isMissing && (code.high.isNull() || !codes->labelCell(code).isNull()))
            values.emplace_back(codes->cell(code), codes->labelOf(code));
    }
    const QStringList inFile = missingInFile(index);
    for (const QString& value : inFile) {
        if (!known.contains(value))
            values.emplace_back(value, QString());
    }
    QJsonArray result { labelled(QString(), blankLabel) };
    QSet<QString> cells; // several codes may have one label
    for (const auto& [cell, label] : values) {
        if (!cells.contains(cell))
            result.append(labelled(cell, label));
        cells.insert(cell);
    }
    return result;
}

// Single values, and the kinds of Stata.
QStringList DataPackage::missingInFile(int index) const
{
    QStringList values;
    if (!m_dictionary.description)
        return values;
    const bool isText = m_dictionary.variables[std::size_t(index)].type == DataVariable::Type::Text;
    for (const TStatMissingRange& range :
        m_dictionary.description->variables.at(index).missingRanges) {
        if (isText)
            values.append(csvText(withoutTrailingBlanks(range.low.text), m_form.forSpreadsheet));
        else if (range.low.number == range.high.number)
            values.append(realText(range.low.number));
    }
    for (char kind = 'a'; m_dictionary.hasMissingKinds && !isText && kind <= 'z'; ++kind)
        values.append(QStringLiteral(".%1").arg(QLatin1Char(kind)));
    return values;
}

QJsonArray DataPackage::categories(int index, const QString& type) const
{
    const std::shared_ptr<const CsvCodes> codes = m_codes.of(index);
    QJsonArray values;
    QSet<QString> cells; // several codes may have one label
    for (const CsvCode& code : codes->codes()) {
        const QString cell = codes->cell(code);
        if (!code.high.isNull())
            return {};
        if (code.isMissing || cells.contains(cell))
            continue;
        cells.insert(cell);
        const QJsonValue value =
            type == QLatin1String("integer") ? QJsonValue(code.number) : QJsonValue(cell);
        values.append(labelled(value, codes->labelOf(code)));
    }
    return values;
}

// Categories are all values that there may be, so data that have others have none.
void DataPackage::addCodes(QJsonObject& field, int index, const CsvColumn& values)
{
    const DataVariable& variable = m_dictionary.variables[std::size_t(index)];
    const QString type = field.value(QLatin1String("type")).toString();
    if (type != QLatin1String("number") && variable.codes && variable.codes->isClosed()
        && !variable.valueSets.isEmpty() && !values.hasOthers()) {
        const QJsonArray list = categories(index, type);
        if (!list.isEmpty())
            field.insert(QStringLiteral("categories"), list);
    }
    const QJsonArray missing = missingValues(index);
    if (missing.size() > 1 || missing.at(0).toObject().size() > 1)
        field.insert(QStringLiteral("missingValues"), missing);
    QJsonArray sets;
    for (const int set : variable.valueSets)
        sets.append(valueSetName(set));
    if (!sets.isEmpty())
        field.insert(QStringLiteral("tessel:valueSets"), sets);
    const QJsonArray ranges = missingRanges(index);
    if (!ranges.isEmpty())
        field.insert(QStringLiteral("tessel:missingRanges"), ranges);
}

QJsonArray DataPackage::missingRanges(int index) const
{
    const DataVariable& variable = m_dictionary.variables[std::size_t(index)];
    QJsonArray ranges;
    const auto add = [&ranges](const QString& from, const QString& to) {
        ranges.append(
            QJsonObject { { QStringLiteral("from"), from }, { QStringLiteral("to"), to } });
    };
    const std::shared_ptr<const CsvCodes> codes = m_codes.of(index);
    for (const CsvCode& code : codes->codes()) {
        if (code.isMissing && !code.high.isNull())
            add(code.low, code.high);
    }
    if (!m_dictionary.description || variable.type == DataVariable::Type::Text)
        return ranges;
    for (const TStatMissingRange& range :
        m_dictionary.description->variables.at(index).missingRanges) {
        if (range.low.number != range.high.number)
            add(realText(range.low.number), realText(range.high.number));
    }
    return ranges;
}

QString DataPackage::valueSetName(int set)
{
    QString& name = m_sets[set];
    if (name.isNull()) {
        const QString& wanted = m_dictionary.valueSets[std::size_t(set)].name;
        name = shown(m_setNames.take(wanted.isEmpty() ? QStringLiteral("values") : wanted));
        QJsonObject object = valueSet(set);
        object.insert(QStringLiteral("name"), name);
        m_valueSets.append(object);
    }
    return name;
}

// All codes as the dictionary has them.
QJsonObject DataPackage::valueSet(int set) const
{
    const DataValueSet& source = m_dictionary.valueSets[std::size_t(set)];
    QJsonArray values;
    for (const DataCode& code : source.codes) {
        QJsonObject value { { QStringLiteral("value"), shown(code.code) } };
        if (!code.highCode.isNull())
            value.insert(QStringLiteral("to"), shown(code.highCode));
        insertText(value, "label", m_dictionary.labelText(code.label));
        insertText(value, "special", nameOf(code.special));
        values.append(value);
    }
    QJsonObject object { { QStringLiteral("values"), values } };
    insertText(object, "title", m_dictionary.labelText(source.label));
    return object;
}

QJsonObject DataPackage::field(const ConversionColumn& column, const CsvColumn& values)
{
    const DataVariable* const variable =
        column.variable < 0 ? nullptr : &m_dictionary.variables[std::size_t(column.variable)];
    QJsonObject field { { QStringLiteral("name"), column.name },
        { QStringLiteral("type"), typeOf(column, variable) },
        { QStringLiteral("format"), QStringLiteral("default") } };
    insertText(field, "title", column.label);
    insertText(field, "tessel:format", column.format);
    QJsonObject constraints;
    if (column.isId && values.isComplete())
        constraints.insert(QStringLiteral("required"), true);
    const bool isAsItIs = !m_form.hasLabels && !m_form.forSpreadsheet;
    if (column.isText() && isAsItIs && column.width > 0 && values.longest() <= column.width)
        constraints.insert(QStringLiteral("maxLength"), column.width);
    if (!constraints.isEmpty())
        field.insert(QStringLiteral("constraints"), constraints);
    if (variable)
        addCodes(field, column.variable, values);
    return field;
}

// As the dictionary says it: a case has one row at most. No part of a key may be missing.
QStringList DataPackage::primaryKey(
    const ConversionFile& file, const std::vector<CsvColumn>& columns) const
{
    QStringList names;
    bool hasRow = false;
    for (int c = 0; c < file.columns.size(); ++c) {
        const ConversionColumn& column = file.columns.at(c);
        if (column.isId && !columns[std::size_t(c)].isComplete())
            return {};
        const bool isRow = column.role != ConversionColumn::Role::Value;
        hasRow = hasRow || column.role == ConversionColumn::Role::Row;
        if ((column.isId && column.source == 0) || isRow)
            names.append(column.name);
    }
    const DataRecord& record = m_dictionary.records[std::size_t(file.records.constFirst())];
    return record.maximum == 1 || hasRow ? names : QStringList();
}

void DataPackage::addFile(
    const ConversionFile& file, const std::vector<CsvColumn>& columns, qint64 rows, qint64 bytes)
{
    QJsonArray fields;
    for (std::size_t c = 0; c < columns.size(); ++c)
        fields.append(field(file.columns.at(int(c)), columns[c]));
    QJsonObject schema { { QStringLiteral("$schema"), profile("tableschema") },
        { QStringLiteral("fields"), fields },
        { QStringLiteral("fieldsMatch"), QJsonArray { QStringLiteral("exact") } },
        { QStringLiteral("missingValues"), QJsonArray { QString() } } };
    const QStringList key = primaryKey(file, columns);
    if (!key.isEmpty())
        schema.insert(QStringLiteral("primaryKey"), QJsonArray::fromStringList(key));
    QJsonObject resource { { QStringLiteral("name"),
                               m_resourceNames.take(
                                   slugOf(file.name.section(QLatin1Char('.'), 0, -2))) },
        { QStringLiteral("type"), QStringLiteral("table") }, { QStringLiteral("path"), file.name },
        { QStringLiteral("scheme"), QStringLiteral("file") },
        { QStringLiteral("format"), QStringLiteral("csv") },
        { QStringLiteral("mediatype"), QStringLiteral("text/csv") },
        { QStringLiteral("encoding"), QStringLiteral("utf-8") }, { QStringLiteral("bytes"), bytes },
        { QStringLiteral("tessel:rows"), rows },
        { QStringLiteral("tessel:record"), file.recordName },
        { QStringLiteral("dialect"), dialect() }, { QStringLiteral("schema"), schema } };
    insertText(resource, "title", file.label);
    insertText(resource, "description", file.notes.join(QLatin1Char('\n')));
    m_resources.append(resource);
}

void DataPackage::write(int descriptor, const QString& path) const
{
    QJsonObject package { { QStringLiteral("$schema"), profile("datapackage") },
        { QStringLiteral("name"), slugOf(m_dictionary.name) },
        { QStringLiteral("resources"), m_resources } };
    insertText(package, "title", m_dictionary.labelText(m_dictionary.label));
    insertText(package, "description",
        m_dictionary.description ? m_dictionary.description->notes.join(QLatin1Char('\n'))
                                 : m_dictionary.note);
    if (!m_valueSets.isEmpty())
        package.insert(QStringLiteral("tessel:valueSets"), m_valueSets);
    const QByteArray text = QJsonDocument(package).toJson();
    writeBytes(descriptor, text.constData(), std::size_t(text.size()), path);
}

} // namespace tessel
