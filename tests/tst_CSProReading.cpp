// The two readings of CSPro dictionaries, and where they differ.
#include "CSProDictionaries.h"

#include <QFile>
#include <QLoggingCategory>
#include <QTemporaryDir>
#include <QTextCodec>

#include <limits>

namespace {

// What the established reading fills of each object, in order, and a pointer to all else.

struct EstablishedEntry : QObject {
    QString label, code;
    int type;
    bool special;
};

struct EstablishedValueSet : QObject {
    QString label, name, reservedText;
    bool isNumeric;
    void* items;
    int sourceLine;
    void* detail;
};

struct EstablishedItem : QObject {
    int valueSetCount;
    QString label, missingCode, name, notApplicableCode;
    int isAlpha, decimal, isSubItem, len, occurrences, start;
    bool hasDecimalChar, isZeroFill;
    int firstOccurrenceIndex;
    void* record;
    void* valueSets;
    QString dictionaryName;
    int occurrence, sourceLine;
    void* detail;
};

} // namespace

class tst_CSProReading : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void establishedIsTheDefault();
    void importTakesTheReading();
    void establishedPaysForItselfAlone();
    void establishedMakesNoDetails();
    void differences_data();
    void differences();
    void plainDictionaryIsTheSame();
    void absentKeysHaveTheFormatsDefaults();
    void recordTypeValues_data();
    void recordTypeValues();
    void namesOfOccurrences();
    void scaledValues_data();
    void scaledValues();
    void foundEncoding_data();
    void foundEncoding();
    void lineEnds_data();
    void lineEnds();
    void json_data();
    void json();
    void malformedValues_data();
    void malformedValues();
    void malformedSections_data();
    void malformedSections();
    void largeNumbers_data();
    void largeNumbers();
};

void tst_CSProReading::initTestCase()
{
    QLoggingCategory::setFilterRules(QStringLiteral("default.debug=false"));
}

void tst_CSProReading::establishedIsTheDefault()
{
    TCSPro parser;
    QCOMPARE(parser.reading(), Reading::Established);
    const QString text = dictionary("[Item]\nLabel=Start time\nName=A\nStart=5\nLen=2\n");
    QStringList lines = text.split(QLatin1Char('\n'));
    parser.loadFromStr(&lines);
    QCOMPARE(parser.getItem(0)->start, 1);
    parser.setReading(Reading::AsWritten);
    QCOMPARE(parser.reading(), Reading::AsWritten);
    parser.loadFromStr(&lines);
    QCOMPARE(parser.getItem(1)->start, 5);
    parser.setReading(Reading::Established);
    parser.loadFromStr(&lines);
    QCOMPARE(parser.getItem(2)->start, 1);
}

void tst_CSProReading::importTakesTheReading()
{
    QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("census.dcf"));
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(dictionary("[Item]\nLabel=Start time\nName=A\nStart=5\nLen=2\n").toUtf8());
    file.close();

    TCSProDataImport import(path);
    QVERIFY(import.openFile());
    QCOMPARE(import.dictionary->reading(), Reading::Established);
    QCOMPARE(import.getField(0)->start, 1);
    const TCSPro* const before = import.dictionary;
    import.setReading(Reading::AsWritten);
    QCOMPARE(before->reading(), Reading::Established);
    QVERIFY(import.openFile());
    QCOMPARE(import.dictionary->reading(), Reading::AsWritten);
    QCOMPARE(import.getField(0)->start, 5);
    import.setReading(Reading::Established);
    QVERIFY(import.openFile());
    QCOMPARE(import.getField(0)->start, 1);
}

// The file's entries: "== name", the lines of a dictionary, "--" and what differs.
void tst_CSProReading::establishedPaysForItselfAlone()
{
    QCOMPARE(sizeof(TValueSetItem), sizeof(EstablishedEntry));
    QCOMPARE(sizeof(TCSProValueSet), sizeof(EstablishedValueSet));
    QCOMPARE(sizeof(TCSProItem), sizeof(EstablishedItem));
}

// Items of which nothing more is said share one empty detail.
void tst_CSProReading::establishedMakesNoDetails()
{
    const QString text = dictionary("[Level]\nName=L\n"
                                    "[Item]\nName=A\nStart=1\nLen=1\nOccurrences=2\nNote=N\n"
                                    "OccurrenceLabel=1,First\n"
                                    "[ValueSet]\nName=V\nLink=1\nNote=N\nValue=1;One\n"
                                    "[Item]\nName=B\nStart=3\nLen=1\nItemType=SubItem\n"
                                    "[ValueSet]\nName=W\nLink=1\n");
    const TCSProItem unread;
    const Model established(Reading::Established, text);
    QCOMPARE(established.parser.getItemsCount(), 3);
    for (const TCSProItem* item : qAsConst(*established.parser.items)) {
        QCOMPARE(&item->detail(), &unread.detail());
        for (const TCSProValueSet* valueSet : qAsConst(*item->valueSets)) {
            QCOMPARE(valueSet->link(), QString());
            QCOMPARE(valueSet->note(), QString());
            QCOMPARE(valueSet->linkedSet(), nullptr);
        }
    }
    const Model written(Reading::AsWritten, text);
    for (const TCSProItem* item : qAsConst(*written.parser.items))
        QVERIFY(&item->detail() != &unread.detail());
    QCOMPARE(written.parser.getItem(0)->getValueSet(0)->link(), QString("1"));
    QCOMPARE(written.parser.getItem(0)->getValueSet(0)->note(), QString("N"));
}

void tst_CSProReading::differences_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("expected");
    QFile file(QStringLiteral(TESSEL_TEST_DATA "/readings.txt"));
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QStringList entries = QString::fromUtf8(file.readAll()).split(QStringLiteral("== "));
    QVERIFY(entries.size() > 40);
    for (const QString& entry : entries.mid(1)) {
        const QString name = entry.section(QLatin1Char('\n'), 0, 0);
        const int end = entry.indexOf(QLatin1String("\n--\n"));
        QVERIFY2(end > 0, qPrintable(name));
        row(qPrintable(name), entry.mid(name.size() + 1, end - name.size()),
            entry.mid(end + 4).trimmed());
    }
}

void tst_CSProReading::differences()
{
    QFETCH(QString, text);
    QFETCH(QString, expected);
    const Model established(Reading::Established, text);
    const Model written(Reading::AsWritten, text);
    QCOMPARE(Description::differences(established.description(), written.description())
                 .join(QLatin1Char('\n')),
        expected);
}

void tst_CSProReading::plainDictionaryIsTheSame()
{
    const QString text = QStringLiteral(
        "[Dictionary]\nVersion=CSPro 7.7\nLabel=Survey\nName=D\nRecordTypeStart=1\n"
        "RecordTypeLen=1\nPositions=Relative\nZeroFill=No\nDecimalChar=No\n"
        "[Level]\nLabel=Levels\nName=L\n[IdItems]\n[Item]\nLabel=Number\nName=ID\nStart=2\nLen=4\n"
        "[Record]\nLabel=Person\nName=R\nRecordTypeValue='1'\nMaxRecords=9\nRecordLen=9\n"
        "[Item]\nLabel=Sex\nName=A\nStart=6\nLen=1\nZeroFill=Yes\n"
        "[ValueSet]\nLabel=Sexes\nName=V\nValue=1;Man\nValue=2;Woman\n"
        "[Item]\nLabel=Given\nName=B\nStart=7\nLen=3\nDataType=Alpha\n");
    const Model established(Reading::Established, text);
    const Model written(Reading::AsWritten, text);
    const QStringList levels { "f0.from: 0 -> -999", "i0.level: - -> 1", "i1.level: - -> 1",
        "i2.level: - -> 1", "level0: - -> L|Levels|", "r0.level: - -> 1" };
    QCOMPARE(Description::differences(established.description(), written.description()), levels);
}

void tst_CSProReading::absentKeysHaveTheFormatsDefaults()
{
    const QString text = QStringLiteral(
        "[Dictionary]\nName=D\n[Level]\nName=L\n[IdItems]\n[Record]\nName=R\nRecordTypeValue=''\n"
        "[Item]\nName=A\nStart=1\nLen=1\n");
    const Model established(Reading::Established, text);
    QCOMPARE(established.parser.recordTypeStart, 1);
    QCOMPARE(established.parser.recordTypeLen, 1);
    QCOMPARE(established.parser.getRecord(0)->maxRecords, 100);

    const Model written(Reading::AsWritten, text);
    QCOMPARE(written.parser.recordTypeStart, 0);
    QCOMPARE(written.parser.recordTypeLen, 0);
    QCOMPARE(written.parser.getRecord(0)->maxRecords, 1);
    QCOMPARE(problemsOf(written.parser), QStringList());
}

void tst_CSProReading::recordTypeValues_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<QString>("written");
    QTest::addColumn<QString>("established");
    row("quoted", "RecordTypeValue='HH1'", "HH1", "HH1");
    row("quoted with blanks", "RecordTypeValue=' 1 '", " 1 ", " 1 ");
    row("in the other quotes", "RecordTypeValue=\"1\"", "1", "1");
    row("nothing in the quotes", "RecordTypeValue=''", "", "");
    row("no quotes", "RecordTypeValue=012", "012", "1");
    row("one character", "RecordTypeValue=1", "1", "");
    row("nothing", "RecordTypeValue=", "", "");
    row("no line", "Label=x", "", "");
}

void tst_CSProReading::recordTypeValues()
{
    QFETCH(QString, line);
    QFETCH(QString, written);
    QFETCH(QString, established);
    const QString text = "[Record]\nName=R\n" + line + '\n';
    QCOMPARE(Model(Reading::AsWritten, text).parser.getRecord(0)->recordTypeValue, written);
    QCOMPARE(Model(Reading::Established, text).parser.getRecord(0)->recordTypeValue, established);
}

void tst_CSProReading::namesOfOccurrences()
{
    const QByteArray text = "[Dictionary]\nName=D\n[Record]\nName=R\nRecordTypeValue='1'\n"
                            "[Item]\nName=SEX\nStart=1\nLen=1\nOccurrences=2\n"
                            "[Item]\nName=AGE\nStart=3\nLen=1\n";
    for (const CSProReading reading : { CSProReading::Established, CSProReading::AsWritten }) {
        TCSPro dictionary;
        dictionary.setReading(reading);
        dictionary.loadFromData(text);
        QStringList names;
        for (const TCSProItem* item : qAsConst(*dictionary.items))
            names.append(dictionary.nameOfOccurrence(*item, QStringLiteral("FIELD")));
        QCOMPARE(names,
            reading == CSProReading::Established ? (QStringList { "SEX_1", "SEX_2", "FIELD" })
                                                 : (QStringList { "FIELD", "FIELD", "FIELD" }));
    }
}

void tst_CSProReading::scaledValues_data()
{
    QTest::addColumn<QString>("keys");
    QTest::addColumn<QString>("data");
    QTest::addColumn<double>("scaled");
    QTest::addColumn<double>("established");

    const QString implied = QStringLiteral("Decimal=2\n");
    const QString pointed = QStringLiteral("Decimal=2\nDecimalChar=Yes\n");
    row("implied decimals", implied, "12345", 123.45, 12345.0);
    row("implied decimals and blanks", implied, "   45", 0.45, 45.0);
    row("implied decimals and zeros", implied, "00045", 0.45, 45.0);
    row("implied decimals, negative", implied, " -150", -1.5, -150.0);
    row("a point although the decimals are implied", implied, " 12.5", 12.5, 12.5);
    row("a point in the data", pointed, "12.34", 12.34, 12.34);
    row("no point where the dictionary has one", pointed, " 1234", 12.34, 1234.0);
    row("no decimals", "Len=10\n", " 1234", 1234.0, 1234.0);
}

void tst_CSProReading::scaledValues()
{
    QFETCH(QString, keys);
    QFETCH(QString, data);
    QFETCH(double, scaled);
    QFETCH(double, established);
    const QString text = dictionary("[Item]\nName=A\nStart=2\n" + keys + "Len=5\n");
    const Model written(Reading::AsWritten, text);
    QCOMPARE(assigned(written.variable("A"), data).realValue, scaled);
    const Model model(Reading::Established, text);
    QCOMPARE(assigned(model.variable("A"), data).realValue, established);

    const Model comma(Reading::AsWritten, text);
    const QString withComma = QString(data).replace(QLatin1Char('.'), QLatin1Char(','));
    QCOMPARE(assigned(comma.variable("A"), withComma).realValue, scaled);
    QCOMPARE(QString::fromWCharArray(comma.variable("A").text), withComma);
}

void tst_CSProReading::foundEncoding_data()
{
    QTest::addColumn<QByteArray>("mark");
    QTest::addColumn<QByteArray>("writtenAs");
    QTest::addColumn<QByteArray>("codec");
    QTest::addColumn<QString>("label");
    QTest::addColumn<QByteArray>("encoding");

    const auto add = [](const char* name, const char* mark, const char* writtenAs,
                         const char* codec, const QString& label, const char* encoding) {
        row(name, QByteArray(mark), QByteArray(writtenAs), QByteArray(codec), label,
            QByteArray(encoding));
    };
    const QString western = QStringLiteral("Âge révolu");
    const QString greek = QStringLiteral("Ηλικία");
    add("a mark", "\xEF\xBB\xBF", "UTF-8", "", greek, "UTF-8");
    add("a mark and plain text", "\xEF\xBB\xBF", "UTF-8", "", "Age", "UTF-8");
    add("a mark of two bytes", "\xFF\xFE", "UTF-16LE", "", greek, "UTF-16LE");
    add("a mark of two bytes, the other way round", "\xFE\xFF", "UTF-16BE", "", greek, "UTF-16BE");
    add("no mark, valid", "", "UTF-8", "", greek, "UTF-8");
    add("no mark, plain text", "", "UTF-8", "", "Age", "UTF-8");
    add("no mark, invalid", "", "windows-1252", "", western, "windows-1252");
    add("a codec and invalid text", "", "ISO-8859-7", "ISO-8859-7", greek, "ISO-8859-7");
    add("a codec wins over valid text", "", "windows-1251", "windows-1251",
        QStringLiteral("Возраст"), "windows-1251");
    add("a codec that does not exist", "", "windows-1252", "no-such-codec", western,
        "windows-1252");
}

void tst_CSProReading::foundEncoding()
{
    QFETCH(QByteArray, mark);
    QFETCH(QByteArray, writtenAs);
    QFETCH(QByteArray, codec);
    QFETCH(QString, label);
    QFETCH(QByteArray, encoding);
    QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("census.dcf"));
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QTextCodec::ConverterState withoutMark(QTextCodec::IgnoreHeader);
    const QString text = "[Dictionary]\r\nName=D\r\nLabel=" + label + "\r\n";
    file.write(mark);
    file.write(QTextCodec::codecForName(writtenAs)->fromUnicode(
        text.constData(), text.size(), &withoutMark));
    file.close();
    TCSPro parser;
    QCOMPARE(parser.textEncoding(), QByteArray());
    parser.setReading(Reading::AsWritten);
    parser.setTextCodec(codec);
    parser.loadFromFile(path);
    QCOMPARE(parser.label, label);
    QCOMPARE(parser.textEncoding(), encoding);
}

void tst_CSProReading::lineEnds_data()
{
    QTest::addColumn<QByteArray>("end");
    QTest::addColumn<QByteArray>("codec");
    QTest::addColumn<bool>("isRead"); // by the established reading

    row("line feeds", QByteArray("\n"), QByteArray("UTF-8"), true);
    row("both", QByteArray("\r\n"), QByteArray("UTF-8"), true);
    row("carriage returns", QByteArray("\r"), QByteArray("UTF-8"), false);
    row("carriage returns, UTF-16", QByteArray("\r"), QByteArray("UTF-16"), false);
    row("carriage returns, Windows-1252", QByteArray("\r"), QByteArray("windows-1252"), false);
}

void tst_CSProReading::lineEnds()
{
    QFETCH(QByteArray, end);
    QFETCH(QByteArray, codec);
    QFETCH(bool, isRead);
    QString text = "[Dictionary]\nName=D\n\n[Record]\nName=R\nRecordTypeValue='1'\n[Item]\n"
                   "Name=A\nLabel=S\u00e9x\nStart=2\nLen=1\n[ValueSet]\nName=V\nValue=1;Man\n"
                   "Value=2;Woman\nColour=red\n";
    text.replace(QLatin1Char('\n'), QString::fromLatin1(end));
    QTemporaryDir folder;
    QFile file(folder.filePath(QStringLiteral("census.dcf")));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(QTextCodec::codecForName(codec)->fromUnicode(text));
    file.close();

    TCSPro established;
    established.setTextCodec(codec);
    established.loadFromFile(file.fileName());
    QCOMPARE(established.getItemsCount(), isRead ? 1 : 0);
    TCSPro parser;
    parser.setReading(Reading::AsWritten);
    parser.setTextCodec(codec);
    parser.loadFromFile(file.fileName());
    QCOMPARE(parser.getRecordsCount(), 1);
    QCOMPARE(parser.getItemsCount(), 1);
    QCOMPARE(parser.getItem(0)->label, QStringLiteral("S\u00e9x"));
    QCOMPARE(parser.getItem(0)->sourceLine, 7);
    QCOMPARE(parser.getItem(0)->getValueSet(0)->getCount(), 2);
    QCOMPARE(parser.problems().size(), 1);
    QCOMPARE(parser.problems().first().line, 16);
}

void tst_CSProReading::json_data()
{
    QTest::addColumn<QByteArray>("before");
    row("at once", QByteArray());
    row("behind white space", QByteArray(" \r\n\t"));
    row("behind a byte-order mark", QByteArray("\xEF\xBB\xBF"));
    row("behind both", QByteArray("\xEF\xBB\xBF\n"));
}

void tst_CSProReading::json()
{
    QFETCH(QByteArray, before);
    QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("census.dcf"));
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(before + "{ \"name\": \"D\", \"levels\": [] }\n[Item]\nName=A\nLen=1\n");
    file.close();
    // The established reading finds the sections of the text form, wherever they stand.
    TCSPro established;
    established.loadFromFile(path);
    QCOMPARE(established.name, QString());
    QCOMPARE(namesOf(established), QStringList { "A" });
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(before + "{ \"name\": \"D\", \"levels\": [] }\n");
    file.close();
    TCSPro written;
    written.setReading(Reading::AsWritten);
    written.loadFromFile(path);
    QCOMPARE(written.name, QStringLiteral("D"));
}

void tst_CSProReading::malformedValues_data()
{
    QTest::addColumn<QString>("lines");
    QTest::addColumn<QStringList>("numeric");
    QTest::addColumn<QStringList>("text");
    QTest::addColumn<bool>("isToldOfNumeric");
    QTest::addColumn<bool>("isToldOfText");

    const QStringList none { "" };
    row("an unclosed quote", "Value='abc", QStringList { "abc" }, QStringList { "abc" }, true,
        true);
    row("an unclosed quote before a label", "Value='abc;Label", QStringList { "abc" },
        QStringList { "abc" }, true, true);
    row("an unclosed quote of the other kind", "Value=\"12;Label", QStringList { "12" },
        QStringList { "12" }, true, true);
    row("a quote alone", "Value='", none, none, true, true);
    row("a quote and a separator", "Value=';", none, none, true, true);
    row("nothing", "Value=", none, none, true, false);
    row("a label alone", "Value=;Label", none, none, true, false);
    row("two separators", "Value=;;", none, none, true, false);
    row("two separators behind a code", "Value=1;;", QStringList { "1" }, QStringList { "1" },
        false, false);
    row("a colon", "Value=:", QStringList { ":" }, QStringList { ":" }, true, false);
    row("no low bound", "Value=:5;x", QStringList { ":5" }, QStringList { ":5" }, true, false);
    row("no high bound", "Value=5:;x", QStringList { "5.." }, QStringList { "5:" }, true, false);
    row("two colons", "Value=1:2:3;x", QStringList { "1..2:3" }, QStringList { "1:2:3" }, true,
        false);
    row("a name line without a mark", "Value=1;x\nName=", QStringList { "1" }, QStringList { "1" },
        true, true);
    row("a comma for a name", "Value=1;x\nName=,", QStringList { "1" }, QStringList { "1" }, true,
        true);
    row("a name line twice", "Value=1;x\nName=MISSING,Special\nName=ODD", QStringList { "1" },
        QStringList { "1" }, true, true);
    row("a special name before any value", "Name=MISSING,Special\nValue=1;x", QStringList { "1" },
        QStringList { "1" }, true, true);
    row("an image before any value", "Image=x.jpg\nValue=1;x", QStringList { "1" },
        QStringList { "1" }, true, true);
    row("no values", "", QStringList(), QStringList(), false, false);
    row("a key without a sign", "Value\nValue=1;x", QStringList { "1" }, QStringList { "1" }, true,
        true);
}

void tst_CSProReading::malformedValues()
{
    QFETCH(QString, lines);
    QFETCH(QStringList, numeric);
    QFETCH(QStringList, text);
    QFETCH(bool, isToldOfNumeric);
    QFETCH(bool, isToldOfText);
    QCOMPARE(Model(Reading::Established, values(lines)).parser.getItemsCount(), 1);
    QCOMPARE(Model(Reading::Established, ::textValues(lines)).parser.getItemsCount(), 1);
    const Model numbers(Reading::AsWritten, values(lines));
    QCOMPARE(codesOf(numbers.item("A")), numeric);
    QCOMPARE(!numbers.parser.problems().isEmpty(), isToldOfNumeric);
    const Model texts(Reading::AsWritten, ::textValues(lines));
    QCOMPARE(codesOf(texts.item("A")), text);
    QCOMPARE(!texts.parser.problems().isEmpty(), isToldOfText);
}

void tst_CSProReading::malformedSections_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QStringList>("items");
    QTest::addColumn<bool>("isTold");
    const QString item = QStringLiteral("[Item]\nName=A\nLen=1\nStart=1\n");
    row("a bracket", "[\n" + item, QStringList { "A" }, true);
    row("empty brackets", "[]\n" + item, QStringList { "A" }, true);
    row("no closing bracket", "[Item\nName=A\nLen=1\nStart=1\n", QStringList { "A" }, false);
    row("nothing but headers",
        "[Dictionary]\n[Languages]\n[Level]\n[IdItems]\n[Relation]\n[NoEdit]", QStringList(),
        false);
    row("an empty record", "[Record]\n" + item, QStringList { "A" }, false);
    row("an empty item", "[Item]\n" + item, QStringList { "", "A" }, true);
    row("an empty value set first", "[ValueSet]\n" + item, QStringList { "A" }, true);
    row("an empty value set last", item + "[ValueSet]", QStringList { "A" }, false);
    row("signs alone", "[Item]\nName=A\nLen=1\n=\n==\n", QStringList { "A" }, true);
    row("lines before any section", "Name=B\nnonsense\n" + item, QStringList { "A" }, true);
    row("occurrence labels of no occurrence",
        item + "OccurrenceLabel=0,x\nOccurrenceLabel=99999999,y\nOccurrenceLabel=,\n",
        QStringList { "A" }, true);
    row("a relation without its parts", "[Relation]\nSecondaryLink=X\n[Relation]\n" + item,
        QStringList { "A" }, false);
    row("languages without names", "[Languages]\n=English\n" + item, QStringList { "A" }, true);
}

void tst_CSProReading::malformedSections()
{
    QFETCH(QString, text);
    QFETCH(QStringList, items);
    QFETCH(bool, isTold);
    QCOMPARE(Model(Reading::Established, text).parser.getItemsCount(), items.size());
    const Model model(Reading::AsWritten, text);
    QCOMPARE(namesOf(model.parser), items);
    QVERIFY2(model.parser.problems().isEmpty() != isTold,
        qPrintable(problemsOf(model.parser).join(QLatin1Char('\n'))));
}

void tst_CSProReading::largeNumbers_data()
{
    QTest::addColumn<QString>("keys");
    const QString most = QString::number(std::numeric_limits<int>::max());
    const QString least = QString::number(std::numeric_limits<int>::min());
    for (const QString& number : { most, least }) {
        for (const char* keys : { "Len=%1\n", "Start=%1\nLen=1\nOccurrences=2\n",
                 "Start=%1\nLen=%1\nOccurrences=2\n", "Decimal=%1\nLen=5\n", "Decimal=1\nLen=%1\n",
                 "Decimal=1\nDecimalChar=Yes\nLen=%1\n", "Decimal=5\nLen=-2147483648\nStart=%1\n",
                 "Decimal=%1\nLen=-2\n" }) {
            const QString text = QString::fromLatin1(keys).arg(number);
            QTest::newRow(qPrintable(QString(text).replace(QLatin1Char('\n'), QLatin1Char(' '))))
                << text;
        }
    }
}

void tst_CSProReading::largeNumbers()
{
    QFETCH(QString, keys);
    const QString text = dictionary("[Item]\nName=A\n" + keys
        + "[Item]\nName=S\nItemType=SubItem\nStart=1\nLen=1\n[Item]\nName=Z\nStart=1\nLen=1\n");
    for (const Reading reading : { Reading::Established, Reading::AsWritten }) {
        const Model model(reading, text);
        QCOMPARE(model.parser.items->constLast()->name, QStringLiteral("Z"));
    }
}

QTEST_GUILESS_MAIN(tst_CSProReading)
#include "tst_CSProReading.moc"
