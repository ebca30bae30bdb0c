#include "writers/TreeWriters.h"

#include "text/JsonWriter.h"
#include "text/ShownText.h"
#include "text/TextTable.h"
#include "writers/ListingNames.h"

#include <model_Tessel/Config.h>
#include <model_Tessel/Entity.h>
#include <model_Tessel/Variable.h>

#include <QJsonObject>

#include <algorithm>
#include <cmath>

namespace {

// Changes only when a reader of the JSON has to change.
constexpr int JsonVersion = 1;

struct Counts {
    int entities = 0;
    int variables = 0;
    int labelled = 0;
};

void count(const TOxEntity& entity, Counts& counts)
{
    ++counts.entities;
    counts.variables += entity.getVariables()->size();
    counts.labelled += int(std::count_if(entity.getVariables()->cbegin(),
        entity.getVariables()->cend(), [](const TOxVariable* variable) {
            return !variable->getValueLabelElementList()->isEmpty();
        }));
    for (const TOxEntity* child : qAsConst(*entity.getChildren()))
        count(*child, counts);
}

// ---- text

// In digits where that is exact, else the shortest text that reads back as the same number.
QString numberText(double number)
{
    constexpr double LargestExact = 1e15;
    const bool isWhole = std::abs(number) < LargestExact && std::trunc(number) == number;
    return isWhole ? QString::number(qint64(number))
                   : QString::number(number, 'g', QLocale::FloatingPointShortest);
}

QString rangeText(const QList<Range*>& ranges)
{
    double lowest = ranges.constFirst()->getRangeMin();
    double highest = ranges.constFirst()->getRangeMax();
    for (const Range* range : ranges) {
        lowest = std::min(lowest, range->getRangeMin());
        highest = std::max(highest, range->getRangeMax());
    }
    return numberText(lowest) + QLatin1String("..") + numberText(highest);
}

// Of a code 0 the model cannot tell whether it is one.
QString valuesText(const TOxVariable& variable, const VariableFacts& facts)
{
    QStringList parts;
    const QList<Range*>& ranges = *variable.getMetadataVariables()->getRange();
    if (!ranges.isEmpty() && facts.rangeSource != RangeSource::Length) {
        parts.append(QStringLiteral("range ") + rangeText(ranges));
        if (!facts.rangeValueSet.isEmpty())
            parts.last() += QStringLiteral(" of %1").arg(facts.rangeValueSet);
    }
    if (variable.getMissing() != 0)
        parts.append(QStringLiteral("missing ") + numberText(variable.getMissing()));
    if (variable.getNotappl() != 0)
        parts.append(QStringLiteral("not applicable ") + numberText(variable.getNotappl()));
    return parts.join(QLatin1String(", "));
}

class TextWriter {
public:
    TextWriter(const TreeFacts& facts, bool withValues)
        : m_facts(facts)
        , m_withValues(withValues)
    {
    }

    void write(const TOxEntity& top, int width, const ByteSink& sink)
    {
        Counts counts;
        count(top, counts);
        m_table.beginGroup(
            QStringLiteral("%1, %2, %3 with value labels")
                .arg(plural(counts.entities, QStringLiteral("entity"), QStringLiteral("entities")),
                    plural(counts.variables, QStringLiteral("variable")),
                    QString::number(counts.labelled)));
        add(top, 0);
        m_table.write(width, sink);
    }

private:
    static QString indented(int depth, const QString& name)
    {
        constexpr int Step = 2;
        return QString(depth * Step, QLatin1Char(' ')) + name;
    }

    static QString kindOf(const TOxEntity& entity)
    {
        return entity.getRecType().isEmpty()
            ? QStringLiteral("entity")
            : QStringLiteral("record %1").arg(shownCode(entity.getRecType()));
    }

    void addRow(QStringList cells)
    {
        for (QString& cell : cells)
            cell = printable(cell);
        m_table.addRow(cells);
    }

    void add(const TOxEntity& entity, int depth)
    {
        addRow({ indented(depth, entity.getName()), kindOf(entity), QString(), QString(), QString(),
            QString(), QString(), entity.getLabel() });
        for (const TOxVariable* variable : qAsConst(*entity.getVariables()))
            add(*variable, depth + 1);
        for (const TOxEntity* child : qAsConst(*entity.getChildren()))
            add(*child, depth + 1);
    }

    void add(const TOxVariable& variable, int depth)
    {
        const QList<ValueLabelElement*>& labels = *variable.getValueLabelElementList();
        const VariableFacts facts = m_facts.value(&variable);
        addRow({ indented(depth, variable.getName()), variable.getVarType().toLower(),
            shownNumber(variable.getStart()), shownNumber(variable.getSize()),
            shownDecimals(variable.getDecimals(), facts.decimalPoint),
            variable.getMetadataVariables()->getLookup() ? QStringLiteral("yes") : QString(),
            shownNumber(labels.size()), variable.getLabel() });
        if (!m_withValues)
            return;
        const QString values = valuesText(variable, facts);
        if (!values.isEmpty())
            m_table.addDetail(printable(QLatin1Char('(') + values + QLatin1Char(')')));
        addLabels(labels);
    }

    // Variables of one value set share its labels.
    void addLabels(const QList<ValueLabelElement*>& labels)
    {
        if (labels != m_labels) {
            m_labels = labels;
            m_labelLines = linesOf(labels);
        }
        m_table.addDetails(m_labelLines);
    }

    static QStringList linesOf(const QList<ValueLabelElement*>& labels)
    {
        int width = 0;
        for (const ValueLabelElement* element : labels)
            width = std::max(width, displayWidth(shownCode(element->getValue())));
        QStringList lines;
        for (const ValueLabelElement* element : labels) {
            const QString code = shownCode(element->getValue());
            const QString gap(width - displayWidth(code) + 2, QLatin1Char(' '));
            lines.append(printable(code + gap + element->getLabel()));
        }
        return lines;
    }

    const TreeFacts& m_facts;
    bool m_withValues;
    QList<ValueLabelElement*> m_labels; // of the variable before
    QStringList m_labelLines;
    TextTable m_table { { { QStringLiteral("Name"), TextTable::Align::Left },
        { QStringLiteral("Type"), TextTable::Align::Left },
        { QStringLiteral("Start"), TextTable::Align::Right },
        { QStringLiteral("Len"), TextTable::Align::Right },
        { QStringLiteral("Dec"), TextTable::Align::Right },
        { QStringLiteral("Lookup"), TextTable::Align::Left },
        { QStringLiteral("Labels"), TextTable::Align::Right },
        { QStringLiteral("Label"), TextTable::Align::Left } } };
};

void writeText(const QString& file, const Dictionary& dictionary, const TOxEntity& top,
    const TreeFacts& facts, TreeFormat format, const ByteSink& sink)
{
    QStringList heading { file + QLatin1String(": ") + top.getName() };
    heading.append(top.getLabel());
    for (const LookupDictionary* lookup :
        qAsConst(*dictionary.getMetadataDictionary()->getLookUp()))
        heading.append(
            QStringLiteral("Lookup of %1: %2").arg(lookup->getName(), lookup->getFile()));
    heading.removeAll(QString());
    QString text;
    for (const QString& line : qAsConst(heading)) {
        text += wrapped(printable(line), format.width).join(QLatin1Char('\n')) + QLatin1Char('\n');
    }
    sink(text.toUtf8());
    TextWriter(facts, format.withValues).write(top, format.width, sink);
}

// ---- JSON

// A code 0 would be one that the variable may not have.
QJsonValue codeOrNull(double code)
{
    return code == 0 ? QJsonValue() : QJsonValue(code);
}

QJsonValue rangeSourceOf(const TOxVariable& variable, const VariableFacts& facts)
{
    if (variable.getMetadataVariables()->getRange()->isEmpty())
        return {};
    return textOrNull(nameOf(facts.rangeSource));
}

QJsonObject jsonOf(const TOxVariable& variable, const VariableFacts& facts)
{
    const MetadataVariables& metadata = *variable.getMetadataVariables();
    return { { QStringLiteral("name"), variable.getName() },
        { QStringLiteral("label"), variable.getLabel() },
        { QStringLiteral("type"), variable.getVarType().toLower() },
        { QStringLiteral("entity"), variable.getEntity() },
        { QStringLiteral("recordType"), variable.getRecType() },
        { QStringLiteral("field"), variable.getField() },
        { QStringLiteral("start"), variable.getStart() },
        { QStringLiteral("size"), variable.getSize() },
        { QStringLiteral("decimals"), variable.getDecimals() },
        { QStringLiteral("decimalPoint"), textOrNull(nameOf(facts.decimalPoint)) },
        { QStringLiteral("level"), variable.getLevel() },
        { QStringLiteral("missing"), codeOrNull(variable.getMissing()) },
        { QStringLiteral("notApplicable"), codeOrNull(variable.getNotappl()) },
        { QStringLiteral("documentation"), variable.getDocumentation() },
        { QStringLiteral("lookup"), metadata.getLookup() },
        { QStringLiteral("rangeCount"), metadata.getRange()->size() },
        { QStringLiteral("rangeFrom"), rangeSourceOf(variable, facts) },
        { QStringLiteral("rangeValueSet"), textOrNull(facts.rangeValueSet) },
        { QStringLiteral("valueLabelCount"), variable.getValueLabelElementList()->size() } };
}

QJsonObject jsonOf(const TOxEntity& entity)
{
    return { { QStringLiteral("name"), entity.getName() },
        { QStringLiteral("label"), entity.getLabel() },
        { QStringLiteral("parent"), entity.parent() },
        { QStringLiteral("recordType"), entity.getRecType() },
        { QStringLiteral("level"), entity.getLevel() },
        { QStringLiteral("elements"), entity.getNrElements() },
        { QStringLiteral("documentation"), entity.getDocumentationEntity() } };
}

void addValues(JsonWriter& json, const TOxVariable& variable)
{
    json.beginList("ranges");
    for (const Range* range : qAsConst(*variable.getMetadataVariables()->getRange())) {
        json.add({ { QStringLiteral("min"), range->getRangeMin() },
            { QStringLiteral("max"), range->getRangeMax() } });
    }
    json.endList();
    json.beginList("valueLabels");
    for (const ValueLabelElement* element : qAsConst(*variable.getValueLabelElementList())) {
        json.add({ { QStringLiteral("value"), element->getValue() },
            { QStringLiteral("label"), element->getLabel() } });
    }
    json.endList();
}

// Variables of one value set share its labels, whose text is made once; of one entity, as all of
// them stand as deep.
class ValueTexts {
public:
    void add(JsonWriter& json, const TOxVariable& variable)
    {
        const QList<ValueLabelElement*>& labels = *variable.getValueLabelElementList();
        const QList<Range*>& ranges = *variable.getMetadataVariables()->getRange();
        if (m_text.isEmpty() || labels != m_labels || ranges != m_ranges) {
            m_labels = labels;
            m_ranges = ranges;
            m_text = json.recorded([&] { addValues(json, variable); });
        }
        json.addRecorded(m_text);
    }

private:
    QList<ValueLabelElement*> m_labels; // of the variable before
    QList<Range*> m_ranges;
    QByteArray m_text;
};

void addJson(JsonWriter& json, const TOxEntity& entity, const TreeFacts& facts, bool withValues,
    const char* name = nullptr)
{
    ValueTexts values;
    json.beginObject(jsonOf(entity), name);
    json.beginList("variables");
    for (const TOxVariable* variable : qAsConst(*entity.getVariables())) {
        json.beginObject(jsonOf(*variable, facts.value(variable)));
        if (withValues)
            values.add(json, *variable);
        json.endObject();
    }
    json.endList();
    json.beginList("children");
    for (const TOxEntity* child : qAsConst(*entity.getChildren()))
        addJson(json, *child, facts, withValues);
    json.endList();
    json.endObject();
}

void writeJson(const QString& file, const Dictionary& dictionary, const TOxEntity& top,
    const TreeFacts& facts, bool withValues, const ByteSink& sink)
{
    const MetadataDictionary& metadata = *dictionary.getMetadataDictionary();
    const Datasource& source = *metadata.getDatasource();
    JsonWriter json(sink);
    json.beginObject(
        { { QStringLiteral("tesselTree"), JsonVersion }, { QStringLiteral("file"), file },
            { QStringLiteral("source"),
                QJsonObject { { QStringLiteral("type"), source.getType() },
                    { QStringLiteral("file"), source.getFile() } } } });
    json.beginList("lookups");
    for (const LookupDictionary* lookup : qAsConst(*metadata.getLookUp())) {
        json.add({ { QStringLiteral("name"), lookup->getName() },
            { QStringLiteral("label"), lookup->getLabel() },
            { QStringLiteral("file"), lookup->getFile() },
            { QStringLiteral("separator"), lookup->getSeparator() } });
    }
    json.endList();
    addJson(json, top, facts, withValues, "tree");
    json.endObject();
    json.finish();
}

} // namespace

void writeTree(const QString& file, const Dictionary& dictionary, const TOxEntity& top,
    const TreeFacts& facts, TreeFormat format, const ByteSink& sink)
{
    if (format.asJson)
        writeJson(file, dictionary, top, facts, format.withValues, sink);
    else
        writeText(file, dictionary, top, facts, format, sink);
}
