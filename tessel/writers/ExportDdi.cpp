#include "writers/ExportWriters.h"

#include "writers/ExportText.h"
#include "writers/ListingNames.h"

#include <QFileInfo>
#include <QPair>
#include <QSet>
#include <QUrl>
#include <QXmlStreamWriter>

#include <algorithm>

namespace {

// The field tells the first code of the kind; it and further ones stand in the value sets.
void addSpecialCodes(
    QVector<ListedCode>& codes, const ListedField& field, const QString& first, SpecialCode special)
{
    if (first.isNull())
        return;
    QSet<QPair<QString, QString>> known;
    for (const ListedValueSet& valueSet : field.valueSets) {
        for (const ListedCode& entry : valueSet.codes) {
            const auto bounds = qMakePair(entry.code, entry.highCode);
            if (entry.special == special && !known.contains(bounds)) {
                known.insert(bounds);
                codes.append(entry);
            }
        }
    }
    if (known.isEmpty())
        codes.append({ first, QString(), QString(), special });
}

const QString& ddiNamespace()
{
    static const QString name = QStringLiteral("ddi:codebook:2_5");
    return name;
}

const QString& fileId()
{
    static const QString id = QStringLiteral("F1");
    return id;
}

// Numbers make ids that are valid and unique whatever the names are.
QString variableId(int field)
{
    return QStringLiteral("V%1").arg(field + 1);
}

QString variableIds(const QVector<int>& fields)
{
    QStringList ids;
    for (const int field : fields)
        ids.append(variableId(field));
    return ids.join(QLatin1Char(' '));
}

bool hasRanges(const ListedValueSet& valueSet)
{
    return std::any_of(valueSet.codes.cbegin(), valueSet.codes.cend(),
        [](const ListedCode& entry) { return entry.isRange(); });
}

bool isContinuous(const ListedField& field)
{
    if (field.isText())
        return false;
    return field.measure == Measure::Scale || field.valueSets.isEmpty()
        || hasRanges(field.valueSets.constFirst());
}

// A path of Windows, relative to the dictionary, as a reference.
QString linkTo(const QString& path)
{
    const QString slashed = QString(path).replace(QLatin1Char('\\'), QLatin1Char('/'));
    return QString::fromLatin1(QUrl::toPercentEncoding(slashed, "/:"));
}

class DdiWriter {
public:
    explicit DdiWriter(const Listing& listing)
        : m_listing(listing)
        , m_groups(groupsOf(listing))
        , m_keys(listing)
        , m_xml(&m_bytes)
    {
        for (const ListedRecord& record : listing.records) {
            if (!m_recordTypes.contains(record.name))
                m_recordTypes.insert(record.name, record.recordType);
        }
    }

    QByteArray write();

private:
    void attribute(const char* name, const QString& text);
    void element(const char* name, const QString& text);
    void note(const char* type, const QString& text);
    void open(const char* name);
    void close();
    void writeStudy();
    void writeFile();
    void writeDimensions();
    void writeRecordGroup(int index);
    void writeRecordVariables();
    void writeRecordNotes(const ListedRecord& record);
    void writeOccurrences();
    void writeVariable(int index);
    void writeLocation(int index);
    void writeRange(const ListedField& field);
    void writeInvalid(const ListedField& field);
    void writeBounds(const ListedField& field, const QString& min, const QString& max);
    void writeUnits(const ListedField& field);
    void writeCode(const ListedField& field, const ListedCode& entry);
    void writeValueSets(int index);
    void writeDetail(const ListedDetail& detail);
    void writeCategoryGroups(int index);
    void writeFormat(const ListedField& field);
    void writeNotes(const ListedField& field);

    const Listing& m_listing;
    QVector<FieldGroup> m_groups;
    KeyFields m_keys;
    QHash<QString, QString> m_recordTypes; // by the names of records
    QByteArray m_bytes;
    QXmlStreamWriter m_xml;
};

void DdiWriter::attribute(const char* name, const QString& text)
{
    m_xml.writeAttribute(QLatin1String(name), xmlText(text));
}

void DdiWriter::element(const char* name, const QString& text)
{
    m_xml.writeTextElement(ddiNamespace(), QLatin1String(name), xmlText(text));
}

// What the standard has no element for.
void DdiWriter::note(const char* type, const QString& text)
{
    open("notes");
    attribute("type", QLatin1String(type));
    m_xml.writeCharacters(xmlText(text));
    close();
}

void DdiWriter::open(const char* name)
{
    m_xml.writeStartElement(ddiNamespace(), QLatin1String(name));
}

void DdiWriter::close()
{
    m_xml.writeEndElement();
}

QByteArray DdiWriter::write()
{
    m_xml.setAutoFormatting(true);
    m_xml.setAutoFormattingIndent(2);
    m_xml.writeStartDocument();
    m_xml.writeDefaultNamespace(ddiNamespace());
    open("codeBook");
    attribute("version", QStringLiteral("2.5"));
    writeStudy();
    writeFile();
    open("dataDscr");
    writeRecordVariables();
    writeOccurrences();
    for (int i = 0; i < m_listing.fields.size(); ++i)
        writeVariable(i);
    close();
    m_xml.writeEndDocument();
    return m_bytes;
}

void DdiWriter::writeStudy()
{
    open("stdyDscr");
    open("citation");
    open("titlStmt");
    element("titl", titleOf(m_listing));
    if (!m_listing.name.isEmpty())
        element("IDNo", m_listing.name);
    close();
    close();
    for (const QString& note : m_listing.notes)
        element("notes", note);
    close();
}

void DdiWriter::writeFile()
{
    open("fileDscr");
    attribute("ID", fileId());
    open("fileTxt");
    element("fileName", QFileInfo(m_listing.file).fileName());
    open("fileStrc");
    attribute("type",
        m_listing.records.size() > 1 ? QStringLiteral("hierarchical")
                                     : QStringLiteral("rectangular"));
    for (int i = 0; i < m_groups.size(); ++i) {
        if (m_groups.at(i).record)
            writeRecordGroup(i);
    }
    close();
    writeDimensions();
    element("fileType", m_listing.version);
    close();
    close();
}

void DdiWriter::writeDimensions()
{
    open("dimensns");
    if (m_listing.rowCount >= 0)
        element("caseQnty", QString::number(m_listing.rowCount));
    element("varQnty", QString::number(m_listing.fields.size()));
    close();
}

void DdiWriter::writeRecordGroup(int index)
{
    const FieldGroup& group = m_groups.at(index);
    const ListedRecord& record = *group.record;
    const QVector<int> keys = m_keys.of(record);
    open("recGrp");
    attribute("ID", QStringLiteral("R%1").arg(index + 1));
    attribute("rectype", record.recordType);
    if (!keys.isEmpty())
        attribute("keyvar", variableIds(keys));
    if (m_listing.recordTypeLength > 0) {
        bool isNumber = false;
        record.recordType.toLongLong(&isNumber);
        attribute("rtypeloc", QString::number(m_listing.recordTypeStart));
        attribute("rtypewidth", QString::number(m_listing.recordTypeLength));
        attribute("rtypevtype", isNumber ? QStringLiteral("numeric") : QStringLiteral("character"));
    }
    element("labl", record.label.isEmpty() ? record.name : record.label);
    open("recDimnsn");
    attribute("level", QStringLiteral("record"));
    element("varQnty", QString::number(group.fields.size()));
    element("logRecL", QString::number(record.length));
    close();
    close();
}

void DdiWriter::writeRecordVariables()
{
    for (int i = 0; i < m_groups.size(); ++i) {
        const FieldGroup& group = m_groups.at(i);
        if (m_listing.records.isEmpty() || group.fields.isEmpty())
            continue;
        open("varGrp");
        attribute("ID", QStringLiteral("G%1").arg(i + 1));
        attribute("type", QStringLiteral("record"));
        attribute("var", variableIds(group.fields));
        if (group.record)
            attribute("name", group.record->name);
        element(
            "labl", group.record ? group.record->label : QStringLiteral("Identification items"));
        if (group.record)
            writeRecordNotes(*group.record);
        close();
    }
}

void DdiWriter::writeRecordNotes(const ListedRecord& record)
{
    if (record.level > 0 && m_listing.levels.size() > 1)
        note("level", QString::number(record.level));
    note("required", record.isRequired ? QStringLiteral("yes") : QStringLiteral("no"));
    note("maximum", QString::number(record.maxRecords));
    if (!record.note.isNull())
        element("notes", record.note);
}

// The occurrences of an item follow each other.
void DdiWriter::writeOccurrences()
{
    int number = 0;
    for (int i = 0; i < m_listing.fields.size(); ++i) {
        const ListedField& first = m_listing.fields.at(i);
        QVector<int> fields { i };
        for (int j = i + 1; first.occurrence > 0 && j < m_listing.fields.size(); ++j) {
            const ListedField& next = m_listing.fields.at(j);
            if (next.item != first.item || next.record != first.record)
                break;
            fields.append(j);
        }
        i = fields.constLast();
        if (fields.size() < 2)
            continue;
        open("varGrp");
        attribute("ID", QStringLiteral("O%1").arg(++number));
        attribute("type", QStringLiteral("repetition"));
        attribute("var", variableIds(fields));
        attribute("name", first.item);
        element("labl", first.label);
        close();
    }
}

void DdiWriter::writeVariable(int index)
{
    const ListedField& field = m_listing.fields.at(index);
    open("var");
    attribute("ID", variableId(index));
    attribute("name", field.name);
    attribute("files", fileId());
    if (!field.isText())
        attribute("dcml", QString::number(field.decimals));
    attribute(
        "intrvl", isContinuous(field) ? QStringLiteral("contin") : QStringLiteral("discrete"));
    const QString recordType = m_recordTypes.value(field.record);
    if (!recordType.isEmpty())
        attribute("rectype", recordType);
    writeLocation(index);
    element("labl", field.fullLabel());
    writeRange(field);
    writeInvalid(field);
    writeCategoryGroups(index);
    writeValueSets(index);
    writeFormat(field);
    writeNotes(field);
    close();
}

// Without columns a position is the variable's number.
void DdiWriter::writeLocation(int index)
{
    const ListedField& field = m_listing.fields.at(index);
    open("location");
    if (field.start > 0) {
        attribute("StartPos", QString::number(field.start));
        attribute("EndPos", QString::number(field.start + field.length - 1));
        attribute("width", QString::number(field.length));
    } else {
        attribute("StartPos", QString::number(index + 1));
    }
    attribute("fileid", fileId());
    close();
}

void DdiWriter::writeRange(const ListedField& field)
{
    if (!field.hasRange())
        return;
    open("valrng");
    writeBounds(field, field.min, field.max);
    if (field.valueSets.size() > 1 && !field.rangeValueSet.isNull())
        note("value set", field.rangeValueSet);
    close();
}

// An open end has no bound.
void DdiWriter::writeBounds(const ListedField& field, const QString& min, const QString& max)
{
    open("range");
    writeUnits(field);
    if (!min.isNull() && min != QLatin1String("-inf"))
        attribute("min", min);
    if (!max.isNull() && max != QLatin1String("inf"))
        attribute("max", max);
    close();
}

void DdiWriter::writeUnits(const ListedField& field)
{
    attribute(
        "UNITS", field.type == ValueType::Real ? QStringLiteral("REAL") : QStringLiteral("INT"));
}

void DdiWriter::writeInvalid(const ListedField& field)
{
    QVector<ListedCode> codes = field.missingRanges;
    if (codes.isEmpty())
        addSpecialCodes(codes, field, field.missing, SpecialCode::Missing);
    addSpecialCodes(codes, field, field.notApplicable, SpecialCode::NotApplicable);
    if (codes.isEmpty())
        return;
    open("invalrng");
    for (const ListedCode& code : qAsConst(codes))
        writeCode(field, code);
    close();
}

void DdiWriter::writeCode(const ListedField& field, const ListedCode& entry)
{
    if (entry.isRange()) {
        writeBounds(field, entry.code, entry.highCode);
        return;
    }
    open("item");
    writeUnits(field);
    attribute("VALUE", entry.code);
    close();
}

// Several value sets are alternatives: each is a group of categories then. So is one with a note.
void DdiWriter::writeCategoryGroups(int index)
{
    const ListedField& field = m_listing.fields.at(index);
    if (field.valueSets.isEmpty()
        || (field.valueSets.size() == 1 && field.valueSets.constFirst().note.isNull()))
        return;
    int category = 0;
    for (int i = 0; i < field.valueSets.size(); ++i) {
        const ListedValueSet& valueSet = field.valueSets.at(i);
        QStringList ids;
        for (int j = 0; j < valueSet.codes.size(); ++j)
            ids.append(QStringLiteral("%1C%2").arg(variableId(index)).arg(++category));
        open("catgryGrp");
        attribute("ID", QStringLiteral("%1S%2").arg(variableId(index)).arg(i + 1));
        if (!ids.isEmpty())
            attribute("catgry", ids.join(QLatin1Char(' ')));
        element("labl", valueSet.label.isEmpty() ? valueSet.name : valueSet.label);
        if (!valueSet.note.isNull())
            element("txt", valueSet.note);
        close();
    }
}

void DdiWriter::writeValueSets(int index)
{
    const ListedField& field = m_listing.fields.at(index);
    int category = 0;
    for (const ListedValueSet& valueSet : field.valueSets) {
        for (int i = 0; i < valueSet.codes.size(); ++i) {
            const ListedCode& entry = valueSet.codes.at(i);
            open("catgry");
            attribute("ID", QStringLiteral("%1C%2").arg(variableId(index)).arg(++category));
            if (entry.isSpecial()) {
                attribute("missing", QStringLiteral("Y"));
                attribute("missType", nameOf(entry.special));
            }
            element("catValu", entry.text());
            element("labl", entry.label);
            writeDetail(valueSet.details.value(i));
            close();
        }
    }
}

void DdiWriter::writeDetail(const ListedDetail& detail)
{
    if (!detail.note.isNull())
        element("txt", detail.note);
    if (detail.image.isNull())
        return;
    open("txt");
    open("ExtLink");
    attribute("URI", linkTo(detail.image));
    attribute("role", QStringLiteral("image"));
    close();
    close();
}

void DdiWriter::writeFormat(const ListedField& field)
{
    open("varFormat");
    attribute("type", field.isText() ? QStringLiteral("character") : QStringLiteral("numeric"));
    if (!field.format.isEmpty()) {
        attribute("formatname", field.format);
        if (m_listing.kind == ListingKind::Spss) {
            attribute("schema", QStringLiteral("SPSS"));
        } else {
            attribute("schema", QStringLiteral("other"));
            attribute("otherSchema", QStringLiteral("Stata"));
        }
    }
    close();
}

void DdiWriter::writeNotes(const ListedField& field)
{
    if (!field.parent.isNull())
        note("part of", field.parent);
    if (field.isIdentification && field.level > 0 && m_listing.levels.size() > 1)
        note("level", QString::number(field.level));
    if (field.decimalPoint() != DecimalPoint::Untold)
        note("decimal point",
            field.hasDecimalChar ? QStringLiteral("in the data") : QStringLiteral("implied"));
    if (field.isZeroFilled)
        note("fill", QStringLiteral("zeros"));
    if (!field.note.isNull())
        element("notes", field.note);
}

} // namespace

QByteArray writeDdi(const Listing& listing)
{
    return DdiWriter(listing).write();
}
