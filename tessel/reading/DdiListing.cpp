#include "reading/DdiListing.h"

#include "listing/CodeRange.h"
#include "reading/ReadInput.h"
#include "text/ShownText.h"

#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QUrl>
#include <QXmlStreamReader>

#include <algorithm>

namespace {

const QString& rootName()
{
    static const QString name = QStringLiteral("codeBook");
    return name;
}

// A text of which the document may have one in each language.
class DdiText {
public:
    // The first one that is met stays until that of the wanted language comes.
    void take(const QString& text, const QString& language, const QString& wanted)
    {
        if (!m_isThere || (!m_isWanted && language == wanted))
            m_text = text;
        m_isWanted = m_isWanted || language == wanted;
        m_isThere = true;
    }
    const QString& text() const
    {
        return m_text;
    }

private:
    QString m_text;
    bool m_isThere = false;
    bool m_isWanted = false;
};

struct DdiCategory {
    QString id;
    QString value;
    DdiText label;
    SpecialCode special = SpecialCode::None;
    ListedDetail detail;
};

struct DdiCategoryGroup {
    QStringList categories; // ids
    DdiText label;
    QString note;
};

struct DdiVariable {
    QString id;
    ListedField field;
    DdiText label;
    DdiText occurrence;
    QStringList valueSetNames;
    QVector<DdiCategoryGroup> groups;
    QVector<DdiCategory> categories;
    QHash<QString, int> categoryIds;
    QVector<ListedCode> invalid;
    QString typeNote;
};

struct DdiGroup {
    QString id;
    QString type;
    QString name;
    bool hasName = false; // a record; else identification items
    QStringList variables; // ids
    DdiText label;
    ListedRecord record;
};

struct DdiRecord {
    QString id;
    ListedRecord record;
};

SpecialCode specialOf(const QString& type)
{
    if (type == QLatin1String("missing"))
        return SpecialCode::Missing;
    if (type == QLatin1String("not-applicable") || type == QLatin1String("not applicable"))
        return SpecialCode::NotApplicable;
    if (type == QLatin1String("refused"))
        return SpecialCode::Refused;
    return type == QLatin1String("default") ? SpecialCode::Default : SpecialCode::Missing;
}

// The bounds of a range in numbers, "low:high"; false for a single code.
bool splitRange(const QString& value, QString& low, QString& high)
{
    const int colon = value.indexOf(QLatin1Char(':'), 1);
    if (colon < 0)
        return false;
    low = value.left(colon);
    high = value.mid(colon + 1);
    return true;
}

// Reads a document once, in one of its languages.
class DdiReader {
public:
    DdiReader(const QByteArray& bytes, const QString& language)
        : m_xml(bytes)
        , m_language(language)
    {
    }

    // False when it is no document that can be read to its end.
    bool read(Listing& listing);
    QString mistake() const
    {
        return m_xml.errorString();
    }
    int line() const
    {
        return int(m_xml.lineNumber());
    }
    // Tags that texts have, in the order of the document.
    const QStringList& languages() const
    {
        return m_languages;
    }

private:
    QString attribute(const char* name) const
    {
        return m_xml.attributes().value(QLatin1String(name)).toString();
    }
    QStringList ids(const char* name) const
    {
        return attribute(name).simplified().split(QLatin1Char(' '), Qt::SkipEmptyParts);
    }
    int number(const char* name) const
    {
        return std::max(0, attribute(name).toInt());
    }
    bool isAt(const char* name) const
    {
        return m_xml.name() == QLatin1String(name);
    }
    QString text()
    {
        return m_xml.readElementText(QXmlStreamReader::IncludeChildElements);
    }
    void takeText(DdiText& target);
    // Calls take for each element in the current one; what it does not read is passed over.
    template <typename Take> void each(Take take);

    void readRoot();
    void readStudy();
    void readCitation();
    void readFile();
    void readRecordGroup();
    void readVariables();
    void readGroup();
    void readGroupNote(DdiGroup& group);
    void readVariable();
    void readLocation(DdiVariable& variable);
    void readFormat(DdiVariable& variable);
    void readInvalid(DdiVariable& variable);
    void readCategoryGroup(DdiVariable& variable);
    void readCategory(DdiVariable& variable);
    void readNote(DdiVariable& variable);

    void finish(Listing& listing);
    void addRecords(Listing& listing);
    void placeVariables();
    void finishField(DdiVariable& variable, bool hasColumns) const;
    void addValueSets(DdiVariable& variable) const;

    QXmlStreamReader m_xml;
    QString m_language;
    QStringList m_languages;
    Listing m_listing;
    DdiText m_title;
    QVector<DdiRecord> m_records;
    QVector<DdiGroup> m_groups;
    QVector<DdiVariable> m_variables;
    QHash<QString, int> m_variableIds;
};

template <typename Take> void DdiReader::each(Take take)
{
    while (m_xml.readNextStartElement()) {
        if (!take())
            m_xml.skipCurrentElement();
    }
}

void DdiReader::takeText(DdiText& target)
{
    const QString language =
        m_xml.attributes()
            .value(QStringLiteral("http://www.w3.org/XML/1998/namespace"), QStringLiteral("lang"))
            .toString();
    if (!language.isEmpty() && !m_languages.contains(language))
        m_languages.append(language);
    target.take(text(), language, m_language);
}

bool DdiReader::read(Listing& listing)
{
    if (m_xml.readNextStartElement() && m_xml.name() == rootName())
        readRoot();
    if (m_xml.hasError())
        return false;
    finish(listing);
    return true;
}

void DdiReader::readRoot()
{
    each([this] {
        if (isAt("stdyDscr"))
            readStudy();
        else if (isAt("fileDscr"))
            readFile();
        else if (isAt("dataDscr"))
            readVariables();
        else
            return false;
        return true;
    });
}

void DdiReader::readStudy()
{
    each([this] {
        if (isAt("citation"))
            readCitation();
        else if (isAt("notes"))
            m_listing.notes.append(text());
        else
            return false;
        return true;
    });
}

void DdiReader::readCitation()
{
    each([this] {
        if (!isAt("titlStmt"))
            return false;
        each([this] {
            if (isAt("titl") || isAt("parTitl"))
                takeText(m_title);
            else if (isAt("IDNo"))
                m_listing.name = text();
            else
                return false;
            return true;
        });
        return true;
    });
}

// Records, rows and the kind of the file stand some elements below.
void DdiReader::readFile()
{
    each([this] {
        if (isAt("fileTxt") || isAt("fileStrc") || isAt("dimensns"))
            readFile();
        else if (isAt("recGrp"))
            readRecordGroup();
        else if (isAt("caseQnty"))
            m_listing.rowCount = text().toLongLong();
        else if (isAt("fileType"))
            m_listing.version = text();
        else
            return false;
        return true;
    });
}

void DdiReader::readRecordGroup()
{
    DdiRecord record;
    record.id = attribute("ID");
    record.record.recordType = attribute("rectype");
    m_listing.recordTypeStart = std::max(m_listing.recordTypeStart, number("rtypeloc"));
    m_listing.recordTypeLength = std::max(m_listing.recordTypeLength, number("rtypewidth"));
    DdiText label;
    each([&] {
        if (isAt("labl")) {
            takeText(label);
        } else if (isAt("recDimnsn")) {
            each([&] {
                if (!isAt("logRecL"))
                    return false;
                record.record.length = std::max(0, text().toInt());
                return true;
            });
        } else {
            return false;
        }
        return true;
    });
    record.record.label = label.text();
    m_records.append(record);
}

void DdiReader::readVariables()
{
    each([this] {
        if (isAt("varGrp"))
            readGroup();
        else if (isAt("var"))
            readVariable();
        else
            return false;
        return true;
    });
}

void DdiReader::readGroup()
{
    DdiGroup group;
    group.id = attribute("ID");
    group.type = attribute("type");
    group.name = attribute("name");
    group.hasName = m_xml.attributes().hasAttribute(QLatin1String("name"));
    group.variables = ids("var");
    each([&] {
        if (isAt("labl"))
            takeText(group.label);
        else if (isAt("notes"))
            readGroupNote(group);
        else
            return false;
        return true;
    });
    m_groups.append(group);
}

void DdiReader::readGroupNote(DdiGroup& group)
{
    const QString type = attribute("type");
    const QString note = text();
    if (type == QLatin1String("level"))
        group.record.level = note.toInt();
    else if (type == QLatin1String("required"))
        group.record.isRequired = note != QLatin1String("no");
    else if (type == QLatin1String("maximum"))
        group.record.maxRecords = note.toInt();
    else if (type.isEmpty())
        group.record.note = note;
}

void DdiReader::readVariable()
{
    DdiVariable variable;
    variable.id = attribute("ID");
    variable.field.name = variable.field.item = attribute("name");
    variable.field.decimals = number("dcml");
    variable.field.type = ValueType::Integer; // unless its format is of letters
    each([&] {
        if (isAt("location"))
            readLocation(variable);
        else if (isAt("labl"))
            takeText(variable.label);
        else if (isAt("invalrng"))
            readInvalid(variable);
        else if (isAt("catgryGrp"))
            readCategoryGroup(variable);
        else if (isAt("catgry"))
            readCategory(variable);
        else if (isAt("varFormat"))
            readFormat(variable);
        else if (isAt("notes"))
            readNote(variable);
        else
            return false;
        return true;
    });
    m_variableIds.insert(variable.id, m_variables.size());
    m_variables.append(variable);
}

void DdiReader::readLocation(DdiVariable& variable)
{
    variable.field.start = number("StartPos");
    const int end = number("EndPos");
    const int width = number("width");
    variable.field.length =
        width > 0 ? width : std::max(0, end > 0 ? end - variable.field.start + 1 : 0);
    m_xml.skipCurrentElement();
}

void DdiReader::readFormat(DdiVariable& variable)
{
    if (attribute("type") == QLatin1String("character"))
        variable.field.type = ValueType::String;
    variable.field.format = orNull(attribute("formatname"));
    m_xml.skipCurrentElement();
}

void DdiReader::readInvalid(DdiVariable& variable)
{
    each([&] {
        if (isAt("item")) {
            variable.invalid.append({ attribute("VALUE"), QString(), QString() });
        } else if (isAt("range")) {
            const QString low = attribute("min");
            const QString high = attribute("max");
            variable.invalid.append({ low.isEmpty() ? QStringLiteral("-inf") : low,
                high.isEmpty() ? QStringLiteral("inf") : high, QString() });
        }
        return false;
    });
}

void DdiReader::readCategoryGroup(DdiVariable& variable)
{
    DdiCategoryGroup group;
    group.categories = ids("catgry");
    each([&] {
        if (isAt("labl"))
            takeText(group.label);
        else if (isAt("txt"))
            group.note = text();
        else
            return false;
        return true;
    });
    variable.groups.append(group);
}

void DdiReader::readCategory(DdiVariable& variable)
{
    DdiCategory category;
    category.id = attribute("ID");
    if (category.id.isEmpty())
        category.id = QString::number(variable.categories.size());
    if (attribute("missing") == QLatin1String("Y"))
        category.special = specialOf(attribute("missType"));
    each([&] {
        if (isAt("catValu")) {
            category.value = text();
        } else if (isAt("labl")) {
            takeText(category.label);
        } else if (isAt("txt")) {
            QString note;
            while (m_xml.readNext() != QXmlStreamReader::EndElement && !m_xml.hasError()) {
                if (m_xml.isCharacters()) {
                    note += m_xml.text();
                } else if (m_xml.isStartElement()) {
                    if (isAt("ExtLink"))
                        category.detail.image =
                            QUrl::fromPercentEncoding(attribute("URI").toLatin1());
                    m_xml.skipCurrentElement();
                }
            }
            if (!note.trimmed().isEmpty())
                category.detail.note = note;
        } else {
            return false;
        }
        return true;
    });
    variable.categoryIds.insert(category.id, variable.categories.size());
    variable.categories.append(category);
}

void DdiReader::readNote(DdiVariable& variable)
{
    ListedField& field = variable.field;
    const QString type = attribute("type");
    if (type == QLatin1String("occurrence"))
        return takeText(variable.occurrence);
    const QString note = text();
    if (type == QLatin1String("part of"))
        field.parent = note;
    else if (type == QLatin1String("level"))
        field.level = note.toInt();
    else if (type == QLatin1String("decimal point"))
        field.hasDecimalChar = note == QLatin1String("in the data");
    else if (type == QLatin1String("fill"))
        field.isZeroFilled = true;
    else if (type == QLatin1String("type"))
        variable.typeNote = note;
    else if (type == QLatin1String("measure"))
        field.measure = note == QLatin1String("nominal") ? Measure::Nominal
            : note == QLatin1String("ordinal")           ? Measure::Ordinal
                                                         : Measure::Scale;
    else if (type == QLatin1String("missing"))
        field.missing = note;
    else if (type == QLatin1String("not applicable"))
        field.notApplicable = note;
    else if (type == QLatin1String("value set name"))
        variable.valueSetNames.append(note);
    else if (type.isEmpty())
        field.note = note;
}

// ---- what was read, as a listing

void DdiReader::finish(Listing& listing)
{
    const QString& version = m_listing.version;
    m_listing.kind = version.startsWith(QLatin1String("Stata"))            ? ListingKind::Stata
        : version.startsWith(QLatin1String("SPSS")) || m_records.isEmpty() ? ListingKind::Spss
                                                                           : ListingKind::CSPro;
    if (m_title.text() != m_listing.name)
        m_listing.label = m_title.text();
    if (m_listing.kind == ListingKind::CSPro) {
        m_listing.rowCount = -1;
        addRecords(m_listing);
    }
    placeVariables();
    for (DdiVariable& variable : m_variables) {
        finishField(variable, m_listing.hasRecords());
        m_listing.fields.append(variable.field);
    }
    m_listing.languages = m_languages;
    for (int i = 0; i < m_languages.size(); ++i)
        m_listing.languageLabels.append(QString());
    listing = std::move(m_listing);
}

// Those of a file and of a group of variables have the same number behind "R" and "G".
void DdiReader::addRecords(Listing& listing)
{
    for (const DdiRecord& record : qAsConst(m_records)) {
        ListedRecord listed = record.record;
        const auto group =
            std::find_if(m_groups.cbegin(), m_groups.cend(), [&](const DdiGroup& one) {
                return one.type == QLatin1String("record") && one.hasName
                    && one.id.mid(1) == record.id.mid(1);
            });
        listed.name = group == m_groups.cend() ? listed.label : group->name;
        if (group != m_groups.cend()) {
            listed.label = group->label.text();
            listed.level = std::max(1, group->record.level);
            listed.maxRecords = group->record.maxRecords;
            listed.isRequired = group->record.isRequired;
            listed.note = group->record.note;
        }
        listing.records.append(listed);
    }
}

void DdiReader::placeVariables()
{
    for (const DdiGroup& group : qAsConst(m_groups)) {
        const bool isRecord = group.type == QLatin1String("record");
        const bool isRepetition = group.type == QLatin1String("repetition");
        for (int i = 0; i < group.variables.size(); ++i) {
            const int index = m_variableIds.value(group.variables.at(i), -1);
            if (index < 0 || (!isRecord && !isRepetition))
                continue;
            ListedField& field = m_variables[index].field;
            if (isRecord) {
                field.record = group.hasName ? group.name : QString();
                field.isIdentification = !group.hasName;
                field.level = std::max({ 1, field.level, group.record.level });
            } else {
                field.item = group.name;
                field.occurrence = i + 1;
                m_variables[index].label = group.label;
            }
        }
    }
}

void DdiReader::finishField(DdiVariable& variable, bool hasColumns) const
{
    ListedField& field = variable.field;
    field.label = variable.label.text();
    field.occurrenceLabel = orNull(variable.occurrence.text());
    field.isSubItem = !field.parent.isNull();
    if (!field.isText()) {
        const bool isReal = field.decimals > 0;
        const bool isOther = !variable.typeNote.isEmpty();
        field.type = isReal != isOther ? ValueType::Real : ValueType::Integer;
    }
    if (!hasColumns) {
        field.start = 0;
        field.missingRanges = variable.invalid;
        QStringList texts;
        for (const ListedCode& code : qAsConst(variable.invalid)) {
            texts.append(
                code.isRange() ? code.code + QLatin1String("..") + code.highCode : code.code);
        }
        field.missing = joinedCodes(texts);
    }
    addValueSets(variable);
    if (!field.isText())
        CodeRange::of(field.valueSets).applyTo(field);
}

// Without groups all categories are of one value set.
void DdiReader::addValueSets(DdiVariable& variable) const
{
    ListedField& field = variable.field;
    QVector<DdiCategoryGroup> groups = variable.groups;
    if (groups.isEmpty() && (!variable.categories.isEmpty() || !variable.valueSetNames.isEmpty())) {
        groups.append(DdiCategoryGroup());
        for (const DdiCategory& category : qAsConst(variable.categories))
            groups.last().categories.append(category.id);
    }
    for (int g = 0; g < groups.size(); ++g) {
        ListedValueSet set;
        set.name = variable.valueSetNames.value(g);
        set.label = groups.at(g).label.text();
        set.note = orNull(groups.at(g).note);
        for (const QString& id : qAsConst(groups[g].categories)) {
            const int index = variable.categoryIds.value(id, -1);
            if (index < 0)
                continue;
            const DdiCategory& category = variable.categories.at(index);
            ListedCode code { category.value, QString(), category.label.text(), category.special };
            if (!field.isText())
                splitRange(category.value, code.code, code.highCode);
            if (!category.detail.note.isNull() || !category.detail.image.isNull())
                set.details.insert(set.codes.size(), category.detail);
            set.codes.append(code);
        }
        field.valueSets.append(set);
    }
}

} // namespace

bool isDdiFile(const QString& path)
{
    if (!QFileInfo(path).isFile()) // a pipe gives its bytes only once
        return false;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return false;
    constexpr int longest = 65'536;
    QXmlStreamReader xml(file.read(longest));
    return xml.readNextStartElement() && xml.name() == rootName();
}

bool listDdi(const QString& path, const QString& language, QVector<Listing>& languages)
{
    QByteArray bytes;
    if (!readInput(path, bytes))
        return false;
    QStringList wanted { language };
    for (int i = 0; i < wanted.size(); ++i) {
        DdiReader reader(bytes, wanted.at(i));
        Listing listing;
        if (!reader.read(listing)) {
            return failInput(
                path, reader.line(), QStringLiteral("is damaged XML: %1").arg(reader.mistake()));
        }
        if (!language.isEmpty() && !reader.languages().contains(language)) {
            return failInput(
                path, 0, QStringLiteral("has no texts in the language '%1'").arg(language));
        }
        if (i == 0 && language.isEmpty())
            wanted = reader.languages().isEmpty() ? wanted : reader.languages();
        listing.file = path;
        languages.append(listing);
    }
    return true;
}
