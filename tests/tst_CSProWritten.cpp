// Reads dictionaries of real surveys as they were written, and the data files of some. They are
// kept apart from the sources: TESSEL_CORPUS names the folder whose sub-folders "cspro" (text form)
// and "cspro-json" (JSON form) hold them.
#include <model_Tessel/CSPro.h>
#include <model_Tessel/CSProDataImport.h>
#include <model_Tessel/CSProValueSet.h>
#include <model_Tessel/ErrorManager.h>

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLoggingCategory>
#include <QSet>
#include <QtTest>

#include <algorithm>
#include <cmath>

namespace {

QDir corpus(const QString& folder)
{
    return QDir(qEnvironmentVariable("TESSEL_CORPUS") + QLatin1Char('/') + folder);
}

QByteArray bytesOf(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        qFatal("No file %s", qPrintable(path));
    QByteArray bytes = file.readAll();
    return bytes.startsWith("\xEF\xBB\xBF") ? bytes.mid(3) : bytes;
}

QStringList linesOf(const QString& path)
{
    QStringList lines = QString::fromUtf8(bytesOf(path)).split(QLatin1Char('\n'));
    for (QString& line : lines) {
        if (line.endsWith(QLatin1Char('\r')))
            line.chop(1);
    }
    return lines;
}

// What a dictionary holds. Names, codes and bounds are in the order of the file.
struct Contents {
    int levels = 0;
    int languages = 0;
    int relations = 0;
    int values = 0;
    int specials = 0;
    int links = 0; // value sets without values of their own
    QStringList records;
    QStringList items;
    QStringList valueSets;
    QStringList codes; // single ones
    QStringList ranges;

    QStringList counts() const
    {
        const auto count = [](const char* what, int number) -> QString {
            return QLatin1String(what) + ' ' + QString::number(number);
        };
        return { count("levels", levels), count("languages", languages),
            count("relations", relations), count("records", records.size()),
            count("items", items.size()), count("value sets", valueSets.size()),
            count("links", links), count("values", values), count("codes", codes.size()),
            count("ranges", ranges.size()), count("specials", specials) };
    }
};

QString withoutTrailingBlanks(QString text)
{
    while (text.endsWith(QLatin1Char(' ')))
        text.chop(1);
    return text;
}

// Codes in the lines' own notation: in quotes, or several and ranges between blanks.
void countCodes(const QString& value, bool isAlpha, Contents& contents)
{
    if (value.startsWith(QLatin1Char('\''))) {
        contents.codes.append(withoutTrailingBlanks(value.section(QLatin1Char('\''), 1, 1)));
        return;
    }
    const QStringList codes =
        value.section(QLatin1Char(';'), 0, 0).split(QLatin1Char(' '), Qt::SkipEmptyParts);
    for (const QString& code : codes)
        (!isAlpha && code.contains(QLatin1Char(':')) ? contents.ranges : contents.codes)
            .append(code);
}

// Counts the lines of a dictionary in text form.
Contents contentsOfText(const QString& path)
{
    Contents contents;
    QString section;
    bool isAlpha = false;
    bool isNamed = false;
    bool hasValues = true;
    const QStringList lines = linesOf(path);
    for (const QString& raw : lines) {
        const QString line = raw.trimmed();
        const QString key = line.section(QLatin1Char('='), 0, 0);
        const QString value = line.section(QLatin1Char('='), 1);
        if (line.startsWith(QLatin1Char('['))) {
            contents.links += hasValues ? 0 : 1;
            hasValues = line != QLatin1String("[ValueSet]");
            section = line;
            isNamed = false;
            if (section == QLatin1String("[Item]"))
                isAlpha = false;
            contents.levels += section == QLatin1String("[Level]") ? 1 : 0;
            contents.relations += section == QLatin1String("[Relation]") ? 1 : 0;
        } else if (section == QLatin1String("[Languages]") && !line.isEmpty()) {
            ++contents.languages;
        } else if (key == QLatin1String("DataType")) {
            isAlpha = value == QLatin1String("Alpha");
        } else if (key == QLatin1String("Value") && section == QLatin1String("[ValueSet]")) {
            ++contents.values;
            hasValues = true;
            countCodes(value, isAlpha, contents);
        } else if (key == QLatin1String("Name")) {
            if (value.endsWith(QLatin1String(",Special")))
                ++contents.specials;
            else if (!isNamed && section == QLatin1String("[Record]"))
                contents.records.append(value);
            else if (!isNamed && section == QLatin1String("[Item]"))
                contents.items.append(value);
            else if (!isNamed && section == QLatin1String("[ValueSet]"))
                contents.valueSets.append(value);
            isNamed = true;
        }
    }
    contents.links += hasValues ? 0 : 1;
    return contents;
}

void countItems(const QJsonArray& items, Contents& contents)
{
    for (const QJsonValue item : items) {
        contents.items.append(item.toObject()["name"].toString());
        for (const QJsonValue set : item.toObject()["valueSets"].toArray()) {
            contents.valueSets.append(set.toObject()["name"].toString());
            contents.links += set.toObject()["values"].toArray().isEmpty() ? 1 : 0;
            for (const QJsonValue value : set.toObject()["values"].toArray()) {
                ++contents.values;
                contents.specials += value.toObject().contains("special") ? 1 : 0;
                for (const QJsonValue pair : value.toObject()["pairs"].toArray()) {
                    const QJsonArray range = pair.toObject()["range"].toArray();
                    if (range.isEmpty())
                        contents.codes.append(pair.toObject()["value"].toString());
                    else
                        contents.ranges.append(range[0].toString() + ':' + range[1].toString());
                }
            }
        }
    }
}

// Counts the nodes of a dictionary in JSON form.
Contents contentsOfJson(const QString& path)
{
    Contents contents;
    const QJsonObject root = QJsonDocument::fromJson(bytesOf(path)).object();
    contents.languages = root["languages"].toArray().size();
    contents.relations = root["relations"].toArray().size();
    contents.levels = root["levels"].toArray().size();
    for (const QJsonValue level : root["levels"].toArray()) {
        countItems(level.toObject()["ids"].toObject()["items"].toArray(), contents);
        for (const QJsonValue record : level.toObject()["records"].toArray()) {
            contents.records.append(record.toObject()["name"].toString());
            countItems(record.toObject()["items"].toArray(), contents);
        }
    }
    return contents;
}

void countEntries(const TCSProValueSet& valueSet, Contents& contents)
{
    for (const TValueSetItem* entry : qAsConst(*valueSet.items)) {
        const CSProValueDetail& detail = valueSet.detail(entry);
        if (!detail.isFurtherCode) {
            ++contents.values;
            contents.specials += entry->special ? 1 : 0;
        }
        if (detail.highCode.isNull())
            contents.codes.append(withoutTrailingBlanks(entry->code));
        else
            contents.ranges.append(entry->code + ':' + detail.highCode);
    }
}

// Counts what was read. Occurrences of an item are one item, and shared values stand once.
Contents contentsOfModel(const TCSPro& parser)
{
    Contents contents;
    contents.levels = parser.levels().size();
    contents.languages = parser.languages().size();
    contents.relations = parser.relations().size();
    for (const TCSProRecord* record : qAsConst(*parser.records))
        contents.records.append(record->name);
    for (const TCSProItem* item : qAsConst(*parser.items)) {
        if (item->occurrence > 1)
            continue;
        contents.items.append(item->dictionaryName);
        for (const TCSProValueSet* valueSet : qAsConst(*item->valueSets)) {
            contents.valueSets.append(valueSet->name);
            if (valueSet->linkedSet() || valueSet->items->isEmpty())
                ++contents.links;
            else
                countEntries(*valueSet, contents);
        }
    }
    return contents;
}

QStringList problemsOf(const TCSPro& parser)
{
    QStringList texts;
    for (const CSProProblem& problem : parser.problems()) {
        texts.append(QStringLiteral("line %1, kind %2, %3, %4: %5")
                         .arg(problem.line)
                         .arg(static_cast<int>(problem.kind))
                         .arg(problem.name, problem.valueSet, problem.text));
    }
    return texts;
}

// An importer that has read a dictionary of the corpus as it was written.
class Opened : public TCSProDataImport {
public:
    explicit Opened(const QString& path)
        : TCSProDataImport(path)
    {
        setReading(CSProReading::AsWritten);
        openFile();
    }
};

// Names, positions, lengths and codes, of which a later save of a dictionary changes none.
QStringList layoutOf(const TCSPro& parser)
{
    QStringList texts;
    for (const TCSProRecord* record : qAsConst(*parser.records)) {
        texts.append("record " + record->name + ' ' + record->recordTypeValue + ' '
            + QString::number(record->maxRecords));
    }
    for (const TCSProItem* item : qAsConst(*parser.items)) {
        texts.append(item->record->name + '/' + item->name + ' ' + QString::number(item->start)
            + '+' + QString::number(item->len) + (item->isAlpha != 0 ? " text" : " number")
            + (item->isZeroFill ? " zeros" : "") + (item->hasDecimalChar ? " point" : "") + ' '
            + QString::number(item->decimal) + ' ' + item->detail().occurrenceLabel);
        for (const TCSProValueSet* valueSet : qAsConst(*item->valueSets)) {
            for (const TValueSetItem* entry : qAsConst(*valueSet->items)) {
                texts.append(item->name + '/' + valueSet->name + ' '
                    + withoutTrailingBlanks(entry->code) + ':' + valueSet->detail(entry).highCode
                    + ' ' + entry->label + ' ' + QString::number(entry->type));
            }
        }
    }
    return texts;
}

QString differences(const QStringList& first, const QStringList& second)
{
    QStringList found;
    for (const QString& line : first) {
        if (!second.contains(line))
            found.append("text: " + line);
    }
    for (const QString& line : second) {
        if (!first.contains(line))
            found.append("JSON: " + line);
    }
    return found.join(QLatin1Char('\n'));
}

// A text form of a number that data may hold: a sign, digits and one point.
bool isNumber(const QString& text)
{
    bool isNumber = false;
    text.trimmed().toDouble(&isNumber);
    return isNumber;
}

bool isInValueSet(const TCSProItem& item, const QString& text, double number)
{
    // Codes have as many decimals as the item, so whole multiples compare exactly.
    const double scale = std::pow(10.0, item.decimal);
    const auto steps = [scale](double value) { return std::llround(value * scale); };
    for (const TCSProValueSet* valueSet : qAsConst(*item.valueSets)) {
        for (const TValueSetItem* entry : qAsConst(*valueSet->items)) {
            if (item.isAlpha != 0) {
                if (withoutTrailingBlanks(entry->code) == withoutTrailingBlanks(text))
                    return true;
                continue;
            }
            if (!isNumber(entry->code))
                continue;
            const QString& highCode = valueSet->detail(entry).highCode;
            const double high = (highCode.isNull() ? entry->code : highCode).toDouble();
            if (steps(number) >= steps(entry->code.toDouble()) && steps(number) <= steps(high))
                return true;
        }
    }
    return false;
}

bool fits(TCSProVariable& field, const QString& text)
{
    const TCSProItem& item = *field.item;
    if (item.valueSets->isEmpty() || text.trimmed().isEmpty())
        return true;
    field.setAsString(text);
    if (field.isMissing() || field.isNotApplicable())
        return true;
    if (item.isAlpha == 0 && !isNumber(text))
        return false;
    return isInValueSet(item, text, field.realValue);
}

// The record that a line belongs to; null for a type that the dictionary does not have.
const TCSProRecord* recordOf(const TCSPro& parser, const QString& line)
{
    if (parser.recordTypeLen == 0)
        return parser.getRecord(0);
    const QString type = line.mid(parser.recordTypeStart - 1, parser.recordTypeLen);
    for (const TCSProRecord* record : qAsConst(*parser.records)) {
        if (record->recordTypeValue.leftJustified(parser.recordTypeLen) == type)
            return record;
    }
    return nullptr;
}

} // namespace

class tst_CSProWritten : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();

    void textDictionaries_data();
    void textDictionaries();
    void jsonDictionaries_data();
    void jsonDictionaries();
    void bothForms_data();
    void bothForms();
    void dataFiles_data();
    void dataFiles();
};

void tst_CSProWritten::initTestCase()
{
    QLoggingCategory::setFilterRules(QStringLiteral("default.debug=false"));
    if (!qEnvironmentVariableIsSet("TESSEL_CORPUS"))
        QSKIP("TESSEL_CORPUS does not name a folder of real dictionaries");
}

static void addDictionaries(const QString& folder)
{
    QTest::addColumn<QString>("path");
    const QStringList files = corpus(folder).entryList({ "*.dcf" }, QDir::Files, QDir::Name);
    if (files.isEmpty())
        qFatal("No dictionaries in %s", qPrintable(folder));
    for (const QString& file : files)
        QTest::newRow(qPrintable(file)) << corpus(folder).filePath(file);
}

static void compareContents(const Contents& expected, const QString& path)
{
    const Opened import(path);
    const Contents found = contentsOfModel(*import.dictionary);
    QCOMPARE(found.counts().join(QLatin1String(", ")), expected.counts().join(QLatin1String(", ")));
    QCOMPARE(found.records, expected.records);
    QCOMPARE(found.items, expected.items);
    QCOMPARE(found.valueSets, expected.valueSets);
    QCOMPARE(found.codes, expected.codes);
    QCOMPARE(found.ranges, expected.ranges);
    QCOMPARE(problemsOf(*import.dictionary).join(QLatin1Char('\n')), QString());
}

void tst_CSProWritten::textDictionaries_data()
{
    addDictionaries(QStringLiteral("cspro"));
}

void tst_CSProWritten::textDictionaries()
{
    QFETCH(QString, path);
    const Contents expected = contentsOfText(path);
    QVERIFY(!expected.items.isEmpty());
    compareContents(expected, path);
}

void tst_CSProWritten::jsonDictionaries_data()
{
    addDictionaries(QStringLiteral("cspro-json"));
}

void tst_CSProWritten::jsonDictionaries()
{
    QFETCH(QString, path);
    const Contents expected = contentsOfJson(path);
    QVERIFY(!expected.items.isEmpty());
    compareContents(expected, path);
}

void tst_CSProWritten::bothForms_data()
{
    QTest::addColumn<QString>("name");
    for (const char* name : { "feature-showcase-6.2.dcf", "idb-population.dcf" })
        QTest::newRow(name) << QString(name);
}

void tst_CSProWritten::bothForms()
{
    QFETCH(QString, name);
    const Opened text(corpus(QStringLiteral("cspro")).filePath(name));
    const Opened json(corpus(QStringLiteral("cspro-json")).filePath(name));
    const QStringList textLayout = layoutOf(*text.dictionary);
    const QStringList jsonLayout = layoutOf(*json.dictionary);
    QVERIFY2(textLayout == jsonLayout, qPrintable(differences(textLayout, jsonLayout)));
}

void tst_CSProWritten::dataFiles_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<int>("lines");
    QTest::addColumn<QStringList>("misfits");

    const auto row = [](const char* folder, const char* name, int lines,
                         const QStringList& misfits = {}) {
        QTest::newRow(name) << corpus(QLatin1String(folder)).filePath(QLatin1String(name)) << lines
                            << misfits;
    };
    row("cspro", "popstan-census", 1796,
        { "PERSON/P15_OCC/23", "PERSON/P15_OCC/24", "PERSON/P15_OCC/93", "PERSON/P16_IND/00",
            "PERSON/P16_IND/01", "PERSON/P16_IND/14", "PERSON/P16_IND/15", "PERSON/P16_IND/17",
            "PERSON/P16_IND/18", "PERSON/P16_IND/29", "PERSON/P16_IND/45", "PERSON/P16_IND/52",
            "PERSON/P16_IND/55", "PERSON/P16_IND/64", "PERSON/P16_IND/65", "PERSON/P16_IND/75",
            "PERSON/P16_IND/85" });
    row("cspro", "expected-counts", 5);
    row("cspro", "three-levels", 4, { "PERSON_REC/P04DOB_YEAR/0200" });
    row("cspro", "us-states", 50);
    row("cspro", "industry-codes", 711);
    row("cspro-json", "enumerator-information", 14);
    row("cspro-json", "lookup", 212);
    row("cspro-json", "occupation", 14);
    row("cspro-json", "popstan-census-full", 29143,
        { "PERSON/P15_OCC/00", "PERSON/P15_OCC/22", "PERSON/P15_OCC/23", "PERSON/P15_OCC/24",
            "PERSON/P15_OCC/93", "PERSON/P16_IND/00", "PERSON/P16_IND/01", "PERSON/P16_IND/02",
            "PERSON/P16_IND/05", "PERSON/P16_IND/14", "PERSON/P16_IND/15", "PERSON/P16_IND/17",
            "PERSON/P16_IND/18", "PERSON/P16_IND/19", "PERSON/P16_IND/21", "PERSON/P16_IND/22",
            "PERSON/P16_IND/23", "PERSON/P16_IND/24", "PERSON/P16_IND/25", "PERSON/P16_IND/26",
            "PERSON/P16_IND/28", "PERSON/P16_IND/29", "PERSON/P16_IND/45", "PERSON/P16_IND/51",
            "PERSON/P16_IND/52", "PERSON/P16_IND/55", "PERSON/P16_IND/63", "PERSON/P16_IND/64",
            "PERSON/P16_IND/65", "PERSON/P16_IND/66", "PERSON/P16_IND/73", "PERSON/P16_IND/74",
            "PERSON/P16_IND/75", "PERSON/P16_IND/85" });
    row("cspro-json", "popstan2-weights", 305);
    row("cspro-json", "relations", 997);
}

void tst_CSProWritten::dataFiles()
{
    QFETCH(QString, path);
    QFETCH(int, lines);
    QFETCH(QStringList, misfits);
    const Opened import(path + QStringLiteral(".dcf"));
    const TCSPro& parser = *import.dictionary;
    int records = 0;
    QSet<QString> found;
    const QStringList data = linesOf(path + QStringLiteral(".dat"));
    for (const QString& line : data) {
        if (line.trimmed().isEmpty() || line.startsWith(QLatin1Char('~')))
            continue;
        ++records;
        const TCSProRecord* record = recordOf(parser, line);
        QVERIFY2(record, qPrintable(line));
        for (TGenericField* each : qAsConst(*import.fields)) {
            auto& field = *dynamic_cast<TCSProVariable*>(each);
            const TCSProItem& item = *field.item;
            if (item.record != record && item.record != parser.commonRecord)
                continue;
            const QString text = line.mid(item.start - 1, item.len).leftJustified(item.len);
            if (!fits(field, text))
                found.insert(item.record->name + '/' + item.name + '/' + text);
        }
    }
    QStringList sorted = found.values();
    sorted.sort();
    QVERIFY2(sorted == misfits, qPrintable(sorted.join(QLatin1Char(' '))));
    QCOMPARE(records, lines);
}

QTEST_GUILESS_MAIN(tst_CSProWritten)
#include "tst_CSProWritten.moc"
