#include "writers/FieldWriters.h"

#include "text/CsvText.h"
#include "text/JsonWriter.h"
#include "text/ShownText.h"
#include "text/TextTable.h"
#include "writers/ListingNames.h"

#include <QHash>
#include <QJsonArray>
#include <QJsonObject>
#include <QStringList>

#include <algorithm>

namespace {

// Changes only when a reader of the JSON has to change.
constexpr int JsonVersion = 2;

// ---- table

QString rangeText(const ListedField& field)
{
    return field.hasRange() ? field.min + QLatin1String("..") + field.max : QString();
}

QString shownRange(const ListedCode& entry)
{
    return entry.isRange() ? entry.text() : shownCode(entry.code);
}

void addCodes(QStringList& lines, const QVector<ListedCode>& codes, const QString& indent)
{
    int width = 0;
    for (const ListedCode& entry : codes)
        width = qMax(width, displayWidth(shownRange(entry)));
    for (const ListedCode& entry : codes) {
        const QString code = shownRange(entry);
        const QString gap(width - displayWidth(code) + 2, QLatin1Char(' '));
        lines.append(printable(indent + code + gap + shownLabel(entry)));
    }
}

// A single set needs no name; several are alternatives, each under its own. One has the range.
QStringList valueLines(const ListedField& field)
{
    QStringList lines;
    if (field.valueSets.size() == 1) {
        addCodes(lines, field.valueSets.constFirst().codes, QString());
        return lines;
    }
    for (const ListedValueSet& valueSet : field.valueSets) {
        QString title = valueSet.name + QLatin1String(": ") + valueSet.label;
        if (field.hasRange() && valueSet.name == field.rangeValueSet)
            title += QStringLiteral(" (range %1)").arg(rangeText(field));
        lines.append(printable(title));
        addCodes(lines, valueSet.codes, QStringLiteral("  "));
    }
    return lines;
}

int labelledFields(const Listing& listing)
{
    return int(std::count_if(listing.fields.cbegin(), listing.fields.cend(),
        [](const ListedField& field) { return field.valueLabelCount() > 0; }));
}

QString summary(const Listing& listing)
{
    const QString labelled = QStringLiteral("%1 with value labels").arg(labelledFields(listing));
    if (!listing.hasRecords()) {
        const QString rows = listing.rowCount < 0 ? QStringLiteral("number of rows not told")
                                                  : plural(listing.rowCount, QStringLiteral("row"));
        return QStringLiteral("%1, %2; %3")
            .arg(plural(listing.fields.size(), QStringLiteral("variable")), labelled, rows);
    }
    const QString recordType = listing.recordTypeLength > 0
        ? QStringLiteral("record type at column %1, length %2")
              .arg(listing.recordTypeStart)
              .arg(listing.recordTypeLength)
        : QStringLiteral("no record types");
    return QStringLiteral("%1, %2, %3; %4")
        .arg(plural(listing.records.size(), QStringLiteral("record")),
            plural(listing.fields.size(), QStringLiteral("field")), labelled, recordType);
}

// Consecutive fields of one record stand under its name.
QString groupTitle(const ListedField& field, const QHash<QString, const ListedRecord*>& records)
{
    if (field.isIdentification)
        return QStringLiteral("Identification items");
    if (field.record.isNull())
        return QStringLiteral("Variables");
    QString title = field.record;
    if (const ListedRecord* record = records.value(field.record)) {
        title += QLatin1String("  ") + record->label;
        if (!record->recordType.isEmpty())
            title += QStringLiteral(" (record type %1)").arg(record->recordType);
    }
    return printable(title);
}

QStringList tableCells(const ListedField& field)
{
    QStringList cells { field.name, nameOf(field.type), field.format, shownNumber(field.start),
        shownNumber(field.length), shownDecimals(field.decimals, field.decimalPoint()),
        rangeText(field), shownCodes(field.missing), shownCodes(field.notApplicable),
        shownNumber(field.valueLabelCount()), field.fullLabel() };
    for (QString& cell : cells)
        cell = printable(cell);
    return cells;
}

void writeTable(const Listing& listing, const ListingFormat& format, const ByteSink& sink)
{
    using Align = TextTable::Align;
    TextTable table({ { QStringLiteral("Name"), Align::Left },
        { QStringLiteral("Type"), Align::Left }, { QStringLiteral("Format"), Align::Left },
        { QStringLiteral("Start"), Align::Right }, { QStringLiteral("Len"), Align::Right },
        { QStringLiteral("Dec"), Align::Right }, { QStringLiteral("Range"), Align::Left },
        { QStringLiteral("Missing"), Align::Left }, { QStringLiteral("N/A"), Align::Left },
        { QStringLiteral("Labels"), Align::Right }, { QStringLiteral("Label"), Align::Left } });

    QHash<QString, const ListedRecord*> records;
    for (const ListedRecord& record : listing.records)
        records.insert(record.name, &record);
    const ListedField* previous = nullptr;
    QStringList lines; // of the values that field told has, and later occurrences share
    int told = -1;
    for (int i = 0; i < listing.fields.size(); ++i) {
        const ListedField& field = listing.fields.at(i);
        if (!previous || previous->record != field.record
            || previous->isIdentification != field.isIdentification)
            table.beginGroup(groupTitle(field, records));
        previous = &field;
        table.addRow(tableCells(field));
        if (!format.withValues)
            continue;
        const int first = listing.firstWithValuesOf(i);
        if (first != told)
            lines = valueLines(field);
        told = first;
        table.addDetails(lines);
    }

    QStringList heading { listing.name, listing.version };
    heading.removeAll(QString());
    QStringList top { listing.file + QLatin1String(": ") + heading.join(QLatin1String(", ")) };
    if (!listing.label.isEmpty())
        top.append(listing.label);
    top.append(summary(listing));
    QString text;
    for (const QString& line : qAsConst(top)) {
        const QStringList parts = wrapped(printable(line), format.width);
        text += parts.join(QLatin1Char('\n')) + QLatin1Char('\n');
    }
    sink(text.toUtf8());
    table.write(format.width, sink);
}

void writeTables(
    const QVector<Listing>& listings, const ListingFormat& format, const ByteSink& sink)
{
    for (int i = 0; i < listings.size(); ++i) {
        if (i > 0)
            sink("\n");
        writeTable(listings.at(i), format, sink);
    }
}

// ---- CSV

QStringList fieldHeadings()
{
    return { QStringLiteral("file"), QStringLiteral("record"), QStringLiteral("name"),
        QStringLiteral("label"), QStringLiteral("type"), QStringLiteral("start"),
        QStringLiteral("length"), QStringLiteral("decimals"), QStringLiteral("missing"),
        QStringLiteral("not_applicable"), QStringLiteral("min"), QStringLiteral("max"),
        QStringLiteral("value_labels"), QStringLiteral("format"), QStringLiteral("measure"),
        QStringLiteral("item"), QStringLiteral("occurrence"), QStringLiteral("parent"),
        QStringLiteral("decimal_point"), QStringLiteral("range_from"),
        QStringLiteral("range_value_set") };
}

QStringList fieldCells(const QString& file, const ListedField& field)
{
    return { file, field.record, field.name, field.fullLabel(), nameOf(field.type),
        shownNumber(field.start), shownNumber(field.length), QString::number(field.decimals),
        field.missing, field.notApplicable, field.min, field.max,
        QString::number(field.valueLabelCount()), field.format, nameOf(field.measure), field.item,
        shownNumber(field.occurrence), field.parent, nameOf(field.decimalPoint()),
        nameOf(field.rangeSource), field.rangeValueSet };
}

QStringList valueHeadings()
{
    return { QStringLiteral("value_set"), QStringLiteral("code"), QStringLiteral("code_to"),
        QStringLiteral("value_label"), QStringLiteral("special") };
}

// The cells of each code; those of none for a field without codes.
QVector<QByteArray> valueTexts(const CsvWriter& csv, const ListedField& field)
{
    QVector<QByteArray> texts;
    for (const ListedValueSet& valueSet : field.valueSets) {
        for (const ListedCode& entry : valueSet.codes) {
            texts.append(csv.textOf(
                { valueSet.name, entry.code, entry.highCode, entry.label, nameOf(entry.special) }));
        }
    }
    if (texts.isEmpty())
        texts.append(QByteArray(valueHeadings().size() - 1, ','));
    return texts;
}

void addValueLines(const CsvWriter& csv, const Listing& listing)
{
    QVector<QByteArray> texts; // of the values that field told has, and later occurrences share
    int told = -1;
    for (int i = 0; i < listing.fields.size(); ++i) {
        const ListedField& field = listing.fields.at(i);
        const QByteArray cells = csv.textOf(fieldCells(listing.file, field));
        const int first = listing.firstWithValuesOf(i);
        if (first != told)
            texts = valueTexts(csv, field);
        told = first;
        for (const QByteArray& text : qAsConst(texts))
            csv.addLine(cells, text);
    }
}

void addFieldLines(const CsvWriter& csv, const Listing& listing)
{
    for (const ListedField& field : listing.fields)
        csv.addLine(fieldCells(listing.file, field));
}

void writeCsv(const QVector<Listing>& listings, const ListingFormat& format, const ByteSink& sink)
{
    const CsvWriter csv(sink, format.forSpreadsheet);
    csv.addLine(format.withValues ? fieldHeadings() + valueHeadings() : fieldHeadings());
    for (const Listing& listing : listings) {
        if (format.withValues)
            addValueLines(csv, listing);
        else
            addFieldLines(csv, listing);
    }
}

// ---- JSON

QJsonValue numberOrNull(int number)
{
    return number > 0 ? QJsonValue(number) : QJsonValue();
}

QJsonObject jsonOf(const ListedRecord& record)
{
    return { { QStringLiteral("name"), record.name }, { QStringLiteral("label"), record.label },
        { QStringLiteral("recordType"), record.recordType },
        { QStringLiteral("level"), numberOrNull(record.level) },
        { QStringLiteral("maximum"), record.maxRecords },
        { QStringLiteral("required"), record.isRequired },
        { QStringLiteral("note"), textOrNull(record.note) },
        { QStringLiteral("length"), record.length } };
}

QJsonArray jsonOf(const QVector<ListedCode>& ranges)
{
    QJsonArray array;
    for (const ListedCode& range : ranges) {
        array.append(QJsonObject { { QStringLiteral("code"), range.code },
            { QStringLiteral("to"), textOrNull(range.highCode) } });
    }
    return array;
}

QJsonObject jsonOf(const ListedField& field)
{
    return { { QStringLiteral("name"), field.name }, { QStringLiteral("item"), field.item },
        { QStringLiteral("occurrence"), numberOrNull(field.occurrence) },
        { QStringLiteral("occurrenceLabel"), textOrNull(field.occurrenceLabel) },
        { QStringLiteral("label"), field.label },
        { QStringLiteral("record"), textOrNull(field.record) },
        { QStringLiteral("identification"), field.isIdentification },
        { QStringLiteral("level"), numberOrNull(field.level) },
        { QStringLiteral("type"), nameOf(field.type) },
        { QStringLiteral("start"), numberOrNull(field.start) },
        { QStringLiteral("format"), textOrNull(field.format) },
        { QStringLiteral("measure"), textOrNull(nameOf(field.measure)) },
        { QStringLiteral("length"), numberOrNull(field.length) },
        { QStringLiteral("decimals"), field.decimals },
        { QStringLiteral("decimalChar"), field.hasDecimalChar },
        { QStringLiteral("zeroFill"), field.isZeroFilled },
        { QStringLiteral("subitem"), field.isSubItem },
        { QStringLiteral("parent"), textOrNull(field.parent) },
        { QStringLiteral("missing"), textOrNull(field.missing) },
        { QStringLiteral("missingRanges"), jsonOf(field.missingRanges) },
        { QStringLiteral("notApplicable"), textOrNull(field.notApplicable) },
        { QStringLiteral("min"), textOrNull(field.min) },
        { QStringLiteral("max"), textOrNull(field.max) },
        { QStringLiteral("rangeFrom"), textOrNull(nameOf(field.rangeSource)) },
        { QStringLiteral("rangeValueSet"), textOrNull(field.rangeValueSet) },
        { QStringLiteral("note"), textOrNull(field.note) },
        { QStringLiteral("valueSetCount"), field.valueSets.size() },
        { QStringLiteral("valueLabelCount"), field.valueLabelCount() } };
}

QJsonObject jsonOf(const Listing& listing)
{
    return { { QStringLiteral("file"), listing.file },
        { QStringLiteral("kind"), nameOf(listing.kind) }, { QStringLiteral("name"), listing.name },
        { QStringLiteral("label"), listing.label }, { QStringLiteral("version"), listing.version },
        { QStringLiteral("encoding"), listing.encoding },
        { QStringLiteral("recordTypeStart"), listing.recordTypeStart },
        { QStringLiteral("recordTypeLength"), listing.recordTypeLength },
        { QStringLiteral("languages"), QJsonArray::fromStringList(listing.languages) },
        { QStringLiteral("levels"), QJsonArray::fromStringList(listing.levels) },
        { QStringLiteral("rows"),
            listing.rowCount < 0 ? QJsonValue() : QJsonValue(listing.rowCount) },
        { QStringLiteral("notes"), QJsonArray::fromStringList(listing.notes) } };
}

void addValueSets(JsonWriter& json, const QVector<ListedValueSet>& valueSets)
{
    json.beginList("valueSets");
    for (const ListedValueSet& valueSet : valueSets) {
        json.beginObject({ { QStringLiteral("name"), valueSet.name },
            { QStringLiteral("label"), valueSet.label },
            { QStringLiteral("note"), textOrNull(valueSet.note) } });
        json.beginList("values");
        for (int i = 0; i < valueSet.codes.size(); ++i) {
            const ListedCode& entry = valueSet.codes.at(i);
            const ListedDetail detail = valueSet.details.value(i);
            json.add({ { QStringLiteral("code"), entry.code },
                { QStringLiteral("to"), textOrNull(entry.highCode) },
                { QStringLiteral("label"), entry.label },
                { QStringLiteral("special"), textOrNull(nameOf(entry.special)) },
                { QStringLiteral("note"), textOrNull(detail.note) },
                { QStringLiteral("image"), textOrNull(detail.image) } });
        }
        json.endList();
        json.endObject();
    }
    json.endList();
}

// A later occurrence names the first, which has its value sets.
void addField(JsonWriter& json, const Listing& listing, int index, bool withValues)
{
    const ListedField& field = listing.fields.at(index);
    const int first = listing.firstWithValuesOf(index);
    const bool namesFirst = withValues && first < index && !field.valueSets.isEmpty();
    QJsonObject members = jsonOf(field);
    if (namesFirst)
        members.insert(QStringLiteral("valueSetsOf"), listing.fields.at(first).name);
    json.beginObject(members);
    if (withValues && !namesFirst)
        addValueSets(json, field.valueSets);
    json.endObject();
}

void addJson(JsonWriter& json, const Listing& listing, bool withValues)
{
    json.beginObject(jsonOf(listing));
    json.beginList("records");
    for (const ListedRecord& record : listing.records)
        json.add(jsonOf(record));
    json.endList();
    json.beginList("fields");
    for (int i = 0; i < listing.fields.size(); ++i)
        addField(json, listing, i, withValues);
    json.endList();
    json.endObject();
}

void writeJson(const QVector<Listing>& listings, const ListingFormat& format, const ByteSink& sink)
{
    JsonWriter json(sink);
    json.beginObject({ { QStringLiteral("tesselFields"), JsonVersion } });
    json.beginList("files");
    for (const Listing& listing : listings)
        addJson(json, listing, format.withValues);
    json.endList();
    json.endObject();
    json.finish();
}

} // namespace

void writeListings(
    const QVector<Listing>& listings, const ListingFormat& format, const ByteSink& sink)
{
    switch (format.kind) {
    case ListingFormat::Kind::Csv:
        return writeCsv(listings, format, sink);
    case ListingFormat::Kind::Json:
        return writeJson(listings, format, sink);
    case ListingFormat::Kind::Table:
        return writeTables(listings, format, sink);
    }
}
