// What the listing of a CSPro dictionary tells, against a small reading of the file that the test
// does by itself. TESSEL_CORPUS names a folder whose sub-folders "cspro" and "cspro-json" hold
// dictionaries of real surveys.
#include "listing/Listing.h"
#include "reading/CSProListing.h"
#include "reading/StatListing.h"
#include "writers/ExportWriters.h"
#include "writers/FieldWriters.h"

#include <model_Tessel/CSProDataImport.h>
#include <model_Tessel/CSProValueSet.h>
#include <model_Tessel/DictionaryBuilder.h>
#include <model_Tessel/Entity.h>
#include <model_Tessel/Variable.h>

#include <QDir>
#include <QFile>
#include <QHash>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLoggingCategory>
#include <QTemporaryDir>
#include <QXmlStreamReader>
#include <QtTest>

#include <algorithm>
#include <memory>

namespace {

QByteArray bytesOf(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        qFatal("No file %s", qPrintable(path));
    const QByteArray bytes = file.readAll();
    return bytes.startsWith("\xEF\xBB\xBF") ? bytes.mid(3) : bytes;
}

// A dictionary and its listing.
class Read {
public:
    explicit Read(const QString& path, bool asWritten = true)
        : importer(new TCSProDataImport(path))
    {
        if (asWritten)
            importer->setReading(CSProReading::AsWritten);
        importer->openFile();
        listing = listFields(path, *importer);
    }

    const ListedField& field(const QString& name) const
    {
        for (const ListedField& field : listing.fields) {
            if (field.name == name)
                return field;
        }
        qFatal("no field %s", qPrintable(name));
    }

    std::unique_ptr<TCSProDataImport> importer;
    Listing listing;
};

class Made : public QTemporaryDir {
public:
    explicit Made(const QByteArray& text)
        : path(filePath("made.dcf"))
    {
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly) || file.write(text) != text.size())
            qFatal("cannot write %s", qPrintable(path));
    }

    const QString path;
};

QByteArray dictionary(const QByteArray& items)
{
    return "[Dictionary]\nVersion=CSPro 7.7\nName=D\nRecordTypeStart=1\nRecordTypeLen=1\n"
           "[Level]\nName=L\n[IdItems]\n[Record]\nName=R\nRecordTypeValue='1'\n"
        + items;
}

// ---- the test's own reading: what stands in a dictionary, a line for each thing

QString shown(const QString& text)
{
    return QString(text).replace('\n', "\\n");
}

void addNote(QStringList& facts, const QString& what, const QString& note)
{
    if (!note.isEmpty())
        facts.append(what + " note " + shown(note));
}

// The lines of a note of the text form: "\r\n" is written for a line break, another line end is a
// blank.
QString noteOf(const QStringList& lines)
{
    QString note;
    for (QString line : lines) {
        if (line.startsWith('~'))
            line = ' ' + line.mid(1);
        line.replace("\\r\\n", "\n");
        note += (note.isEmpty() || note.endsWith('\n') ? "" : " ") + line;
    }
    return note;
}

class TextFacts {
public:
    explicit TextFacts(const QString& path)
    {
        const QStringList lines = QString::fromUtf8(bytesOf(path)).split('\n');
        for (const QString& raw : lines) {
            const QString line = raw.trimmed();
            if (line.startsWith('['))
                begin(line.toUpper());
            else if (line.contains('='))
                take(line.section('=', 0, 0).trimmed().toUpper(), line.section('=', 1).trimmed());
        }
        begin(QString());
    }

    QStringList facts;

private:
    void begin(const QString& section)
    {
        finishValue();
        if (m_section == "[RECORD]") {
            facts.append(m_name + " required " + (m_keys["REQUIRED"] == "No" ? "no" : "yes"));
        } else if (m_section == "[ITEM]") {
            if (m_keys["ZEROFILL"] == "Yes")
                facts.append(m_name + " filled with zeros");
            if (m_isIdentification)
                facts.append(m_name + " level " + QString::number(m_level));
        }
        if (m_section == "[RECORD]" || m_section == "[ITEM]" || m_section == "[VALUESET]")
            addNote(facts, m_name, noteOf(m_notes));
        m_section = section;
        m_level += section == "[LEVEL]" ? 1 : 0;
        m_isIdentification = section == "[IDITEMS]"
            || (m_isIdentification && (section == "[ITEM]" || section == "[VALUESET]"));
        m_keys.clear();
        m_notes.clear();
        m_name.clear();
        m_value = 0;
    }

    void take(const QString& key, const QString& value)
    {
        if (key == "NOTE") {
            (m_value > 0 ? m_valueNotes : m_notes).append(value);
        } else if (key == "NAME" && m_name.isEmpty()) {
            m_name = value;
        } else if (key == "IMAGE") {
            m_image = value;
        } else if (key == "VALUE") {
            finishValue();
            ++m_value;
        } else {
            m_keys[key] = value;
        }
    }

    void finishValue()
    {
        const QString what = m_name + " value " + QString::number(m_value);
        addNote(facts, what, noteOf(m_valueNotes));
        if (!m_image.isEmpty())
            facts.append(what + " image " + m_image);
        m_valueNotes.clear();
        m_image.clear();
    }

    QString m_section;
    QString m_name;
    QHash<QString, QString> m_keys;
    QStringList m_notes;
    QStringList m_valueNotes;
    QString m_image;
    int m_value = 0;
    int m_level = 0;
    bool m_isIdentification = false;
};

class JsonFacts {
public:
    explicit JsonFacts(const QString& path)
    {
        const QJsonObject root = QJsonDocument::fromJson(bytesOf(path)).object();
        m_zeroFill = root["defaults"].toObject()["zeroFill"].toBool();
        const QJsonArray levels = root["levels"].toArray();
        for (int i = 0; i < levels.size(); ++i) {
            const QJsonObject level = levels.at(i).toObject();
            for (const QJsonValue item : level["ids"].toObject()["items"].toArray())
                addItem(item.toObject(), i + 1);
            for (const QJsonValue record : level["records"].toArray())
                addRecord(record.toObject());
        }
    }

    QStringList facts;

private:
    void addRecord(const QJsonObject& record)
    {
        const QString name = record["name"].toString();
        const bool isRequired = record["occurrences"].toObject()["required"].toBool(true);
        facts.append(name + " required " + (isRequired ? "yes" : "no"));
        addNote(facts, name, record["note"].toString());
        for (const QJsonValue item : record["items"].toArray())
            addItem(item.toObject(), 0);
    }

    void addItem(const QJsonObject& item, int level)
    {
        const QString name = item["name"].toString();
        if (item["contentType"].toString() == "numeric" && item["zeroFill"].toBool(m_zeroFill))
            facts.append(name + " filled with zeros");
        if (level > 0)
            facts.append(name + " level " + QString::number(level));
        addNote(facts, name, item["note"].toString());
        for (const QJsonValue set : item["valueSets"].toArray()) {
            const QString setName = set.toObject()["name"].toString();
            addNote(facts, setName, set.toObject()["note"].toString());
            int number = 0;
            for (const QJsonValue value : set.toObject()["values"].toArray())
                addValue(setName + " value " + QString::number(++number), value.toObject());
        }
    }

    void addValue(const QString& what, const QJsonObject& value)
    {
        addNote(facts, what, value["note"].toString());
        if (value.contains("image"))
            facts.append(what + " image " + value["image"].toString());
    }

    bool m_zeroFill = false; // of items that do not tell
};

// The same of a listing; of the occurrences of an item the first is told.
class ListingFacts {
public:
    explicit ListingFacts(const TCSPro& dictionary, const Listing& listing)
    {
        for (const ListedRecord& record : listing.records) {
            facts.append(record.name + " required " + (record.isRequired ? "yes" : "no"));
            addNote(facts, record.name, record.note);
        }
        for (int i = 0; i < listing.fields.size(); ++i) {
            if (listing.fields.at(i).occurrence <= 1)
                addField(*dictionary.getItem(i), listing.fields.at(i));
        }
    }

    QStringList facts;

private:
    void addField(const TCSProItem& item, const ListedField& field)
    {
        if (field.isZeroFilled)
            facts.append(field.item + " filled with zeros");
        if (field.isIdentification)
            facts.append(field.item + " level " + QString::number(field.level));
        addNote(facts, field.item, field.note);
        for (int i = 0; i < field.valueSets.size(); ++i)
            addValueSet(*item.getValueSet(i), field.valueSets.at(i));
    }

    // The codes of one value have what is told of it; a linked set has that of another one.
    void addValueSet(const TCSProValueSet& valueSet, const ListedValueSet& listed)
    {
        addNote(facts, listed.name, listed.note);
        int number = 0;
        for (int i = 0; i < listed.codes.size() && !valueSet.linkedSet(); ++i) {
            if (valueSet.detail(valueSet.getValueSetItem(i)).isFurtherCode)
                continue;
            ++number;
            const QString what = listed.name + " value " + QString::number(number);
            addNote(facts, what, listed.details.value(i).note);
            if (!listed.details.value(i).image.isNull())
                facts.append(what + " image " + listed.details.value(i).image);
        }
    }
};

QStringList sorted(QStringList texts)
{
    texts.sort();
    return texts;
}

void addCorpus()
{
    QTest::addColumn<QString>("path");
    const QString corpus = qEnvironmentVariable("TESSEL_CORPUS");
    for (const char* folder : { "cspro", "cspro-json" }) {
        const QDir files(corpus + '/' + folder);
        for (const QString& name : files.entryList({ "*.dcf" }, QDir::Files, QDir::Name))
            QTest::newRow(qPrintable(folder + ('/' + name))) << files.filePath(name);
    }
}

// The notes of variables in a Stata file of format 117 and later: "<ch>", a size, the names of the
// variable and of the characteristic at a fixed width, and the text.
QStringList variableNotesOf(const QByteArray& bytes)
{
    const int width = bytes.contains("<release>117") ? 33 : 129;
    QStringList notes;
    for (int at = bytes.indexOf("<ch>"); at >= 0; at = bytes.indexOf("<ch>", at + 4)) {
        const char* const start = bytes.constData() + at + 8;
        const QByteArray variable(start);
        const QByteArray name(start + width);
        const QByteArray text(start + width + width);
        if (variable != "_dta" && name.startsWith("note") && name != "note0")
            notes.append(QString::fromUtf8(variable + ": " + text));
    }
    return notes;
}

// Lowest and highest of the ranges that the tree has for a variable.
QPair<double, double> boundsOf(const QList<Range*>& ranges)
{
    QPair<double, double> bounds { ranges.at(0)->getRangeMin(), ranges.at(0)->getRangeMax() };
    for (const Range* range : ranges) {
        bounds.first = std::min(bounds.first, range->getRangeMin());
        bounds.second = std::max(bounds.second, range->getRangeMax());
    }
    return bounds;
}

void addVariables(const TOxEntity& entity, QHash<QString, const TOxVariable*>& variables)
{
    for (const TOxVariable* variable : qAsConst(*entity.getVariables()))
        variables.insert(entity.getName() + '/' + variable->getName(), variable);
    for (const TOxEntity* child : qAsConst(*entity.getChildren()))
        addVariables(*child, variables);
}

QByteArray writtenListing(const Listing& listing, const ListingFormat& format)
{
    QByteArray bytes;
    writeListings({ listing }, format, [&bytes](const QByteArray& piece) { bytes += piece; });
    return bytes;
}

} // namespace

class tst_Listing : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();

    void rangeOfLength_data();
    void rangeOfLength();
    void rangeOfEstablishedRules();
    void rangeOfFirstSetWithNumbers();
    void lengthIsShownAsNoRange();
    void parentIsTheItem();
    void decimalPoint();
    void levelsOfIdentificationItems();
    void fixtureFacts_data();
    void fixtureFacts();
    void outputsTellNotes();
    void valueSetsOfOccurrencesStandOnce();
    void valuesOfOccurrencesInTablesAndCsv();
    void occurrencesWithOtherValueSets();

    void corpusFacts_data();
    void corpusFacts();
    void corpusHasAll();
    void notesOfStataVariables();
    void treeHasTheSameRanges_data();
    void treeHasTheSameRanges();
};

void tst_Listing::initTestCase()
{
    QLoggingCategory::setFilterRules("default.debug=false");
}

void tst_Listing::rangeOfLength_data()
{
    QTest::addColumn<QByteArray>("keys");
    QTest::addColumn<QString>("min");
    QTest::addColumn<QString>("max");
    const auto row = [](const char* keys, const char* min, const char* max) {
        QTest::newRow(keys) << QByteArray(keys).replace(' ', '\n') << min << max;
    };
    row("Len=1", "0", "9"); // no column for a sign
    row("Len=3", "-99", "999");
    row("Len=10", "-999999999", "9999999999");
    row("Len=6 Decimal=4", "-9.9999", "99.9999");
    row("Len=6 Decimal=4 DecimalChar=No", "-9.9999", "99.9999");
    row("Len=6 Decimal=4 DecimalChar=Yes", "-0.9999", "9.9999");
    row("Len=8 Decimal=2 DecimalChar=Yes", "-9999.99", "99999.99");
    row("Len=4 Decimal=1 DecimalChar=Yes", "-9.9", "99.9");
    row("Len=4 Decimal=0 DecimalChar=Yes", "-999", "9999"); // a point without decimals is none
    row("Len=5 Decimal=5", "-0.09999", "0.99999");
    row("Len=2 Decimal=4", "-0.0009", "0.0099");
    row("Len=3 Decimal=3 DecimalChar=Yes", "-0.9", "0.99");
    row("Len=2 Decimal=1 DecimalChar=Yes", "0", "0.9");
    row("Len=1 Decimal=1 DecimalChar=Yes", "0", "0");
    row("Len=0", "0", "0");
    row("Len=-5", "0", "0");
    row("Len=3 Decimal=-2", "-99", "999");
}

void tst_Listing::rangeOfLength()
{
    QFETCH(QByteArray, keys);
    QFETCH(QString, min);
    QFETCH(QString, max);
    const Made made(dictionary("[Item]\nName=A\nStart=2\n" + keys + "\n"));
    const Read read(made.path);
    const ListedField& field = read.field("A");
    QCOMPARE(field.min, min);
    QCOMPARE(field.max, max);
    QVERIFY(field.rangeSource == RangeSource::Length);
    QCOMPARE(field.rangeValueSet, QString());
    QVERIFY(!field.hasRange());
    QCOMPARE(read.importer->getField(0)->minValue, min);
    QCOMPARE(read.importer->getField(0)->maxValue, max);
}

// Kept: nines from 0 on.
void tst_Listing::rangeOfEstablishedRules()
{
    const Made made(dictionary("[Item]\nName=A\nStart=2\nLen=6\nDecimal=4\n"));
    const Read read(made.path, false);
    QCOMPARE(read.field("A").min, QString("0"));
    QCOMPARE(read.field("A").max, QString("99"));
    QVERIFY(read.field("A").rangeSource == RangeSource::Untold);
    QVERIFY(read.field("A").hasRange()); // what a program sees that uses the default
}

void tst_Listing::rangeOfFirstSetWithNumbers()
{
    const Made made(dictionary("[Item]\nName=A\nStart=2\nLen=3\n"
                               "[ValueSet]\nName=V1\nValue=900;x\nName=MISSING,Special\n"
                               "[ValueSet]\nName=V2\nValue=7:12;y\nValue=3;z\nValue=nan;n\n"
                               "[ValueSet]\nName=V3\nValue=1:99;w\n"));
    const Read read(made.path);
    const ListedField& field = read.field("A");
    QCOMPARE(field.min + ' ' + field.max, QString("3 12"));
    QVERIFY(field.rangeSource == RangeSource::ValueSet);
    QCOMPARE(field.rangeValueSet, QString("V2"));
    QCOMPARE(read.importer->getField(0)->minValue, QString("3"));
    QCOMPARE(read.importer->getField(0)->maxValue, QString("12"));
    const QByteArray ddi = writeDdi({ read.listing });
    QVERIFY(ddi.contains("<range UNITS=\"INT\" min=\"3\" max=\"12\"/>"));
    QVERIFY(ddi.contains("<notes type=\"value set\">V2</notes>"));
}

void tst_Listing::lengthIsShownAsNoRange()
{
    const Made made(dictionary("[Item]\nName=A\nStart=2\nLen=4\nDecimal=2\n"));
    const Read read(made.path);
    const auto written = [&](ListingFormat::Kind kind) {
        ListingFormat format;
        format.kind = kind;
        return writtenListing(read.listing, format);
    };
    for (const QByteArray& text :
        { writeDdi({ read.listing }), written(ListingFormat::Kind::Table) }) {
        QVERIFY(!text.isEmpty());
        QVERIFY2(!text.contains("99"), text.constData());
    }
    QVERIFY(written(ListingFormat::Kind::Csv).contains(",-9.99,99.99,"));
    QVERIFY(written(ListingFormat::Kind::Csv).contains(",implied,length,"));
    QVERIFY(written(ListingFormat::Kind::Json).contains("\"rangeFrom\":\"length\""));
}

void tst_Listing::parentIsTheItem()
{
    const Made made(dictionary("[Item]\nName=A\nStart=2\nLen=4\nOccurrences=2\n"
                               "[Item]\nName=B\nStart=2\nLen=2\nItemType=SubItem\n"));
    const Read read(made.path);
    QCOMPARE(read.listing.fields.size(), 4);
    QCOMPARE(read.field("B_1").parent, QString("A"));
    QCOMPARE(read.field("B_2").parent, QString("A"));
    QCOMPARE(read.field("A_1").parent, QString());
}

void tst_Listing::decimalPoint()
{
    const Made made(dictionary("[Item]\nName=A\nStart=2\nLen=4\nDecimal=2\n"
                               "[Item]\nName=B\nStart=6\nLen=4\nDecimal=2\nDecimalChar=Yes\n"
                               "[Item]\nName=C\nStart=10\nLen=4\nDecimalChar=Yes\n"));
    const Read read(made.path);
    QCOMPARE(read.field("A").decimalPoint(), DecimalPoint::Implied);
    QCOMPARE(read.field("B").decimalPoint(), DecimalPoint::InData);
    QCOMPARE(read.field("C").decimalPoint(), DecimalPoint::Untold);
    const QByteArray table = writtenListing(read.listing, {});
    QVERIFY2(table.contains("2 implied"), table.constData());
    QVERIFY2(table.contains("2 in data"), table.constData());
    const QByteArray ddi = writeDdi({ read.listing });
    QCOMPARE(ddi.count("<notes type=\"decimal point\">implied</notes>"), 1);
    QCOMPARE(ddi.count("<notes type=\"decimal point\">in the data</notes>"), 1);
}

void tst_Listing::levelsOfIdentificationItems()
{
    const Read read(QStringLiteral(TESSEL_TEST_DATA "/export_levels.dcf"));
    QVERIFY(read.listing.levels.size() > 1);
    QVector<int> levels;
    for (const ListedField& field : read.listing.fields) {
        if (field.isIdentification)
            levels.append(field.level);
    }
    QVERIFY(levels.contains(1) && levels.contains(2));
    QVERIFY(std::is_sorted(levels.cbegin(), levels.cend()));
    QVERIFY(writeDdi({ read.listing }).contains("<notes type=\"level\">2</notes>"));
}

void tst_Listing::fixtureFacts_data()
{
    QTest::addColumn<QString>("name");
    for (const char* name : { "written_household.dcf", "json_household.dcf" })
        QTest::newRow(name) << name;
}

void tst_Listing::fixtureFacts()
{
    QFETCH(QString, name);
    const QString path = QStringLiteral(TESSEL_TEST_DATA "/") + name;
    const Read read(path);
    const QStringList expected =
        name.startsWith("json") ? JsonFacts(path).facts : TextFacts(path).facts;
    QVERIFY(expected.size() > 10);
    QCOMPARE(
        sorted(ListingFacts(*read.importer->dictionary, read.listing).facts), sorted(expected));
}

// Every fact that the listing has is in the outputs that have a place for it.
void tst_Listing::outputsTellNotes()
{
    const Made made(dictionary("Required=No\nMaxRecords=7\nNote=of the record\n"
                               "[Item]\nName=A\nStart=2\nLen=2\nZeroFill=Yes\nNote=of the item\n"
                               "[ValueSet]\nName=V\nLabel=Set\nNote=of the set\n"
                               "Value=1 2;one\nNote=of the value\nImage=..\\p\\a b.jpg\n"
                               "Value=3;three\n"));
    const Read read(made.path);
    ListingFormat format;
    format.kind = ListingFormat::Kind::Json;
    format.withValues = true;
    const QJsonObject json = QJsonDocument::fromJson(writtenListing(read.listing, format))
                                 .object()["files"]
                                 .toArray()[0]
                                 .toObject();
    const QJsonObject record = json["records"].toArray()[0].toObject();
    QCOMPARE(record["required"].toBool(true), false);
    QCOMPARE(record["note"].toString(), QString("of the record"));
    const QJsonObject field = json["fields"].toArray()[0].toObject();
    QCOMPARE(field["zeroFill"].toBool(), true);
    QCOMPARE(field["note"].toString(), QString("of the item"));
    QCOMPARE(field["level"].toInt(), 1);
    const QJsonObject set = field["valueSets"].toArray()[0].toObject();
    QCOMPARE(set["note"].toString(), QString("of the set"));
    for (const int code : { 0, 1 }) {
        const QJsonObject value = set["values"].toArray()[code].toObject();
        QCOMPARE(value["note"].toString(), QString("of the value"));
        QCOMPARE(value["image"].toString(), QString("..\\p\\a b.jpg"));
    }
    QVERIFY(set["values"].toArray()[2].toObject()["note"].isNull());
    QVERIFY(set["values"].toArray()[2].toObject()["image"].isNull());

    const QByteArray ddi = writeDdi({ read.listing });
    for (const char* text : { "<notes type=\"required\">no</notes>", "<notes>of the record</notes>",
             "<notes type=\"fill\">zeros</notes>", "<notes>of the item</notes>",
             "<txt>of the set</txt>", "<txt>of the value</txt>",
             "<ExtLink URI=\"../p/a%20b.jpg\" role=\"image\"/>" })
        QVERIFY2(ddi.contains(text), text);
    QCOMPARE(ddi.count("of the value"), 2);
}

namespace {

QByteArray repeated()
{
    return dictionary("[Item]\nName=A\nStart=2\nLen=1\nOccurrences=3\n"
                      "[ValueSet]\nName=V\nValue=1;one\nValue=2;two\n"
                      "[Item]\nName=B\nStart=5\nLen=1\nOccurrences=2\n"
                      "[Item]\nName=C\nStart=7\nLen=1\n"
                      "[ValueSet]\nName=W\nValue=3;three\n");
}

ListingFormat withValues(ListingFormat::Kind kind)
{
    ListingFormat format;
    format.kind = kind;
    format.withValues = true;
    return format;
}

QJsonArray jsonFields(const Listing& listing)
{
    const QByteArray json = writtenListing(listing, withValues(ListingFormat::Kind::Json));
    const QJsonObject root = QJsonDocument::fromJson(json).object();
    return root["files"].toArray()[0].toObject()["fields"].toArray();
}

} // namespace

void tst_Listing::valueSetsOfOccurrencesStandOnce()
{
    const Made made(repeated());
    const QJsonArray fields = jsonFields(Read(made.path).listing);
    QCOMPARE(fields.size(), 6);
    QStringList told;
    for (const QJsonValue& value : fields) {
        const QJsonObject field = value.toObject();
        const QJsonArray sets = field["valueSets"].toArray();
        const QString code =
            sets[0].toObject()["values"].toArray()[0].toObject()["code"].toString();
        told.append(field["name"].toString() + (field.contains("valueSets") ? " sets " : " of ")
            + code + field["valueSetsOf"].toString());
    }
    QCOMPARE(told,
        QStringList(
            { "A_1 sets 1", "A_2 of A_1", "A_3 of A_1", "B_1 sets ", "B_2 sets ", "C sets 3" }));
}

void tst_Listing::valuesOfOccurrencesInTablesAndCsv()
{
    const Made made(repeated());
    const Listing listing = Read(made.path).listing;
    const QByteArray csv = writtenListing(listing, withValues(ListingFormat::Kind::Csv));
    QStringList cells;
    for (const QByteArray& line : csv.split('\n')) {
        const QList<QByteArray> parts = line.trimmed().split(',');
        if (parts.size() > 5)
            cells.append(parts.at(2) + ' ' + parts.mid(parts.size() - 4).join(' '));
    }
    QCOMPARE(cells.mid(1),
        QStringList({ "A_1 1  one ", "A_1 2  two ", "A_2 1  one ", "A_2 2  two ", "A_3 1  one ",
            "A_3 2  two ", "B_1    ", "B_2    ", "C 3  three " }));
    const QByteArray table = writtenListing(listing, withValues(ListingFormat::Kind::Table));
    QCOMPARE(table.count("    1  one\n    2  two\n"), 3);
    QCOMPARE(table.count("    3  three\n"), 1);
    QVERIFY(table.indexOf("A_3") < table.lastIndexOf("1  one"));
}

// What is not the same is told, whatever the occurrences are called.
void tst_Listing::occurrencesWithOtherValueSets()
{
    const Made made(repeated());
    Listing listing = Read(made.path).listing;
    listing.fields[1].valueSets[0].codes[1].label = "zwei";
    const QJsonArray fields = jsonFields(listing);
    QVERIFY(fields[1].toObject().contains("valueSets"));
    QVERIFY(!fields[1].toObject().contains("valueSetsOf"));
    QCOMPARE(fields[2].toObject()["valueSetsOf"].toString(), QString("A_1"));
    QVERIFY(writtenListing(listing, withValues(ListingFormat::Kind::Table)).contains("2  zwei"));
    QCOMPARE(writtenListing(listing, withValues(ListingFormat::Kind::Csv)).count(",V,2,,two,"), 2);
}

void tst_Listing::corpusFacts_data()
{
    addCorpus();
}

void tst_Listing::corpusFacts()
{
    if (!qEnvironmentVariableIsSet("TESSEL_CORPUS"))
        QSKIP("TESSEL_CORPUS is not set");
    QFETCH(QString, path);
    const QStringList expected =
        bytesOf(path).trimmed().startsWith('{') ? JsonFacts(path).facts : TextFacts(path).facts;
    const Read read(path);
    QCOMPARE(
        sorted(ListingFacts(*read.importer->dictionary, read.listing).facts), sorted(expected));
}

// Dictionaries without any note would prove nothing.
void tst_Listing::corpusHasAll()
{
    if (!qEnvironmentVariableIsSet("TESSEL_CORPUS"))
        QSKIP("TESSEL_CORPUS is not set");
    QStringList all;
    for (const char* folder : { "cspro", "cspro-json" }) {
        const QDir files(qEnvironmentVariable("TESSEL_CORPUS") + '/' + folder);
        for (const QString& name : files.entryList({ "*.dcf" }, QDir::Files, QDir::Name)) {
            const QString path = files.filePath(name);
            all += bytesOf(path).trimmed().startsWith('{') ? JsonFacts(path).facts
                                                           : TextFacts(path).facts;
        }
    }
    for (const char* word :
        { " note ", " image ", " filled with zeros", " required no", " required yes", " level 2" })
        QVERIFY2(!all.filter(word).isEmpty(), word);
}

// No file has such notes, but one has characteristics of the same form.
void tst_Listing::notesOfStataVariables()
{
    if (!qEnvironmentVariableIsSet("TESSEL_CORPUS"))
        QSKIP("TESSEL_CORPUS is not set");
    QByteArray bytes = bytesOf(qEnvironmentVariable("TESSEL_CORPUS") + "/dta/texas13.dta");
    bytes.replace(QByteArray("destring\0", 9), QByteArray("note1\0\0\0\0", 9));
    const QStringList expected = variableNotesOf(bytes);
    QVERIFY(expected.size() > 1);
    const Made made(bytes);
    const DictionaryFile file = readDictionaryFile(made.path);
    QCOMPARE(file.kind, DictionaryFileKind::Stata);
    const Listing listing = listStatFile(file);
    QStringList found;
    for (const ListedField& field : qAsConst(listing.fields)) {
        if (!field.note.isNull())
            found.append(field.name + ": " + field.note);
    }
    QCOMPARE(sorted(found), sorted(expected));
}

void tst_Listing::treeHasTheSameRanges_data()
{
    addCorpus();
}

void tst_Listing::treeHasTheSameRanges()
{
    if (!qEnvironmentVariableIsSet("TESSEL_CORPUS"))
        QSKIP("TESSEL_CORPUS is not set");
    QFETCH(QString, path);
    const Read read(path);
    const DictionaryPointer tree(buildDictionary(*read.importer));
    QHash<QString, const TOxVariable*> variables;
    addVariables(*tree->getRoot(), variables);
    for (const ListedField& field : read.listing.fields) {
        const QString entity = field.isIdentification ? tree->getRoot()->getName() : field.record;
        const TOxVariable* variable = variables.value(entity + '/' + field.name);
        QVERIFY2(variable, qPrintable(entity + '/' + field.name));
        const QList<Range*>& ranges = *variable->getMetadataVariables()->getRange();
        QCOMPARE(ranges.isEmpty(), field.isText());
        if (field.isText())
            continue;
        QVERIFY(field.rangeSource != RangeSource::Untold);
        QCOMPARE(boundsOf(ranges), qMakePair(field.min.toDouble(), field.max.toDouble()));
    }
}

QTEST_MAIN(tst_Listing)
#include "tst_Listing.moc"
