#include "writers/ExportWriters.h"

#include "writers/ExportText.h"
#include "writers/LanguageTag.h"
#include "writers/ListingNames.h"

#include <QFileInfo>
#include <QPair>
#include <QSet>
#include <QUrl>
#include <QXmlStreamWriter>

#include <algorithm>
#include <optional>

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

QString numberText(double number)
{
    return tessel::realText(number);
}

class DdiWriter {
public:
    DdiWriter(const QVector<Listing>& languages, const DataFigures* figures)
        : m_languages(languages)
        , m_data(figures)
        , m_listing(languages.constFirst())
        , m_groups(groupsOf(m_listing))
        , m_keys(m_listing)
        , m_xml(&m_bytes)
    {
        for (const ListedRecord& record : m_listing.records) {
            if (!m_recordTypes.contains(record.name))
                m_recordTypes.insert(record.name, record.recordType);
        }
        if (languages.size() > 1)
            m_tags = languageTags(m_listing.languages, m_listing.languageLabels);
        if (figures)
            m_figures.emplace(*figures);
    }

    QByteArray write();

private:
    void attribute(const char* name, const QString& text);
    void element(const char* name, const QString& text);
    // A text in each language: what get makes of its listing.
    template <typename Get> void texts(const char* name, Get get);
    template <typename Get> void texts(const char* name, const char* otherName, Get get);
    void note(const char* type, const QString& text);
    void open(const char* name);
    void close();
    void writeStudy();
    void writeFile();
    void writeDimensions();
    std::optional<qint64> rowsOf(const QString& record) const;
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
    void writeNotes(int index);
    void findWeight();
    void writeSummary(const tessel::VariableStatistics& figures);
    void writeMoments(const tessel::StatisticsMoments& moments, bool isWeighted);
    void summary(const char* type, const QString& number, bool isWeighted);
    void frequency(const tessel::StatisticsCell& cell, const tessel::VariableStatistics& figures);
    const tessel::VariableStatistics* figuresOf(int index) const;
    const tessel::StatisticsCell* cellOf(const tessel::VariableStatistics* figures,
        const ListedField& field, int set, int code) const;

    const QVector<Listing>& m_languages;
    const DataFigures* m_data; // null: none
    QStringList m_tags; // of the languages; empty: there is one
    const Listing& m_listing; // in the first language
    std::optional<FieldFigures> m_figures;
    QString m_weight; // id of the variable that weighs; empty: none
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

template <typename Get> void DdiWriter::texts(const char* name, Get get)
{
    texts(name, name, get);
}

template <typename Get> void DdiWriter::texts(const char* name, const char* otherName, Get get)
{
    for (int i = 0; i < m_languages.size(); ++i) {
        open(i == 0 ? name : otherName);
        if (!m_tags.isEmpty())
            m_xml.writeAttribute(QStringLiteral("xml:lang"), m_tags.at(i));
        m_xml.writeCharacters(xmlText(get(m_languages.at(i))));
        close();
    }
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
    if (!m_tags.isEmpty())
        m_xml.writeAttribute(QStringLiteral("xml:lang"), m_tags.constFirst());
    findWeight();
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
    texts("titl", "parTitl", titleOf);
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
    const auto cases =
        m_data && m_data->report.hasCases ? m_data->report.cases.count() : std::nullopt;
    if (m_listing.rowCount >= 0 || cases)
        element("caseQnty", QString::number(cases.value_or(m_listing.rowCount)));
    element("varQnty", QString::number(m_listing.fields.size()));
    close();
}

std::optional<qint64> DdiWriter::rowsOf(const QString& record) const
{
    if (!m_data)
        return std::nullopt;
    const auto& records = m_data->dictionary.records;
    const auto found = std::find_if(records.begin(), records.end(),
        [&](const tessel::DataRecord& one) { return one.name == record; });
    return found == records.end()
        ? std::nullopt
        : m_data->report.records[std::size_t(found - records.begin())].rows.count();
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
    const int place = int(&record - m_listing.records.constData());
    texts("labl", [place](const Listing& listing) {
        const ListedRecord& labelled = listing.records.at(place);
        return labelled.label.isEmpty() ? labelled.name : labelled.label;
    });
    open("recDimnsn");
    attribute("level", QStringLiteral("record"));
    element("varQnty", QString::number(group.fields.size()));
    if (const auto rows = rowsOf(record.name))
        element("caseQnty", QString::number(*rows));
    element("logRecL", QString::number(record.length));
    close();
    close();
}

void DdiWriter::writeRecordVariables()
{
    for (int i = 0; i < m_groups.size(); ++i) {
        const FieldGroup& group = m_groups.at(i);
        if (m_listing.records.isEmpty() || (group.fields.isEmpty() && !group.record))
            continue;
        open("varGrp");
        attribute("ID", QStringLiteral("G%1").arg(i + 1));
        attribute("type", QStringLiteral("record"));
        if (!group.fields.isEmpty())
            attribute("var", variableIds(group.fields));
        if (group.record)
            attribute("name", group.record->name);
        if (group.record) {
            const int place = int(group.record - m_listing.records.constData());
            texts("labl",
                [place](const Listing& listing) { return listing.records.at(place).label; });
            writeRecordNotes(*group.record);
        } else {
            element("labl", QStringLiteral("Identification items"));
        }
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
        texts("labl", [first = fields.constFirst()](const Listing& listing) {
            return listing.fields.at(first).label;
        });
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
    const tessel::VariableStatistics* const figures = figuresOf(index);
    if (variableId(index) == m_weight)
        attribute("wgt", QStringLiteral("wgt"));
    else if (figures && figures->isWeighted)
        attribute("wgt-var", m_weight);
    writeLocation(index);
    texts("labl", [index](const Listing& listing) { return listing.fields.at(index).fullLabel(); });
    writeRange(field);
    writeInvalid(field);
    if (figures)
        writeSummary(*figures);
    writeCategoryGroups(index);
    writeValueSets(index);
    writeFormat(field);
    writeNotes(index);
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
        if (field.length > 0)
            attribute("width", QString::number(field.length));
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
        texts("labl", [index, i](const Listing& listing) {
            const ListedValueSet& labelled = listing.fields.at(index).valueSets.at(i);
            return labelled.label.isEmpty() ? labelled.name : labelled.label;
        });
        if (!valueSet.note.isNull())
            element("txt", valueSet.note);
        close();
    }
}

void DdiWriter::writeValueSets(int index)
{
    const ListedField& field = m_listing.fields.at(index);
    const tessel::VariableStatistics* const figures = figuresOf(index);
    int category = 0;
    for (int set = 0; set < field.valueSets.size(); ++set) {
        const ListedValueSet& valueSet = field.valueSets.at(set);
        for (int i = 0; i < valueSet.codes.size(); ++i) {
            const ListedCode& entry = valueSet.codes.at(i);
            open("catgry");
            attribute("ID", QStringLiteral("%1C%2").arg(variableId(index)).arg(++category));
            if (entry.isSpecial()) {
                attribute("missing", QStringLiteral("Y"));
                attribute("missType", nameOf(entry.special));
            }
            element("catValu", entry.text());
            texts("labl", [index, set, i](const Listing& listing) {
                return listing.fields.at(index).valueSets.at(set).codes.at(i).label;
            });
            writeDetail(valueSet.details.value(i));
            if (const auto* cell = cellOf(figures, field, set, i))
                frequency(*cell, *figures);
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

// What reading the document again needs besides.
void DdiWriter::writeNotes(int index)
{
    const ListedField& field = m_listing.fields.at(index);
    if (!field.parent.isNull())
        note("part of", field.parent);
    if (field.isIdentification && field.level > 0 && m_listing.levels.size() > 1)
        note("level", QString::number(field.level));
    if (field.decimalPoint() != DecimalPoint::Untold)
        note("decimal point",
            field.hasDecimalChar ? QStringLiteral("in the data") : QStringLiteral("implied"));
    if (field.isZeroFilled)
        note("fill", QStringLiteral("zeros"));
    if (!field.isText() && (field.type == ValueType::Real) != (field.decimals > 0))
        note("type", nameOf(field.type));
    if (field.measure != Measure::Untold)
        note("measure", nameOf(field.measure));
    if (field.missingRanges.isEmpty() && !field.missing.isNull())
        note("missing", field.missing);
    if (!field.notApplicable.isNull())
        note("not applicable", field.notApplicable);
    for (const ListedValueSet& valueSet : field.valueSets)
        note("value set name", valueSet.name);
    if (!field.occurrenceLabel.isNull()) {
        for (int i = 0; i < m_languages.size(); ++i) {
            open("notes");
            attribute("type", QStringLiteral("occurrence"));
            if (!m_tags.isEmpty())
                m_xml.writeAttribute(QStringLiteral("xml:lang"), m_tags.at(i));
            m_xml.writeCharacters(xmlText(m_languages.at(i).fields.at(index).occurrenceLabel));
            close();
        }
    }
    if (m_data && m_data->report.hiddenBelow > 1 && figuresOf(index)) {
        note("hidden",
            QStringLiteral("figures of fewer than %1 values, and what would tell of them")
                .arg(m_data->report.hiddenBelow));
    }
    if (!field.note.isNull())
        element("notes", field.note);
}

// ---- figures

const tessel::VariableStatistics* DdiWriter::figuresOf(int index) const
{
    return m_figures ? m_figures->ofOne(m_listing.fields.at(index)) : nullptr;
}

void DdiWriter::findWeight()
{
    for (int i = 0; m_figures && i < m_listing.fields.size(); ++i) {
        const tessel::VariableStatistics* const figures = figuresOf(i);
        if (figures && figures->variable == m_data->report.weight)
            m_weight = variableId(i);
    }
}

void DdiWriter::summary(const char* type, const QString& number, bool isWeighted)
{
    const bool isOther = qstrcmp(type, "lowerQuartile") == 0 || qstrcmp(type, "upperQuartile") == 0;
    open("sumStat");
    attribute("type", isOther ? QStringLiteral("other") : QString::fromLatin1(type));
    if (isOther)
        attribute("otherType", QString::fromLatin1(type));
    if (isWeighted) {
        attribute("wgtd", QStringLiteral("wgtd"));
        if (!m_weight.isEmpty())
            attribute("wgt-var", m_weight);
    }
    m_xml.writeCharacters(number);
    close();
}

void DdiWriter::writeMoments(const tessel::StatisticsMoments& moments, bool isWeighted)
{
    const auto write = [&](const char* type, const std::optional<double>& number) {
        if (number)
            summary(type, numberText(*number), isWeighted);
    };
    write("mean", moments.mean);
    write("medn", moments.median);
    write("stdev", moments.deviation);
    write("lowerQuartile", moments.lowerQuartile);
    write("upperQuartile", moments.upperQuartile);
}

// What is hidden is left out.
void DdiWriter::writeSummary(const tessel::VariableStatistics& figures)
{
    const tessel::StatisticsCell& valid = figures.of(tessel::StatisticsKind::Valid);
    const auto count = valid.count();
    const auto weight = valid.weight();
    const auto total = figures.total.count();
    if (count && weight && total) {
        summary("vald", QString::number(*count), false);
        summary("invd", QString::number(*total - *count), false);
        if (figures.isWeighted)
            summary("vald", numberText(*weight), true);
    }
    if (!figures.hasNumbers || !figures.isQuantity)
        return;
    if (!figures.lowest.isNull())
        summary("min", figures.lowest, false);
    if (!figures.highest.isNull())
        summary("max", figures.highest, false);
    writeMoments(figures.moments, false);
    if (figures.isWeighted)
        writeMoments(figures.weightedMoments, true);
}

void DdiWriter::frequency(
    const tessel::StatisticsCell& cell, const tessel::VariableStatistics& figures)
{
    const auto count = cell.count();
    const auto weight = cell.weight();
    if (!count || !weight) // hidden
        return;
    open("catStat");
    attribute("type", QStringLiteral("freq"));
    m_xml.writeCharacters(QString::number(*count));
    close();
    if (!figures.isWeighted)
        return;
    open("catStat");
    attribute("type", QStringLiteral("freq"));
    attribute("wgtd", QStringLiteral("wgtd"));
    if (!m_weight.isEmpty())
        attribute("wgt-var", m_weight);
    m_xml.writeCharacters(numberText(*weight));
    close();
}

// Null where the data were read with other value sets.
const tessel::StatisticsCell* DdiWriter::cellOf(
    const tessel::VariableStatistics* figures, const ListedField& field, int set, int code) const
{
    if (!figures || figures->valueSets.size() != std::size_t(field.valueSets.size()))
        return nullptr;
    const auto& cells = figures->valueSets[std::size_t(set)].codes;
    const bool isSame = cells.size() == std::size_t(field.valueSets.at(set).codes.size());
    return isSame ? &cells[std::size_t(code)] : nullptr;
}

} // namespace

QByteArray writeDdi(const QVector<Listing>& languages, const DataFigures* figures)
{
    return DdiWriter(languages, figures).write();
}
