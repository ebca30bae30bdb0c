// Runs "tessel codebook" and looks at what its page says, as text; tst_CodebookBrowser opens it.
#include "ExportRun.h"
#include "HtmlIds.h"
#include "ManyVariables.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QtTest>

namespace {

QByteArray pageOf(const QString& file, const QStringList& more = {})
{
    return runTessel(QStringList { "codebook", file } + more).output;
}

// The page of a dictionary that is made of \a records.
QByteArray pageOfMade(const QByteArray& records)
{
    QTemporaryDir folder;
    const QString path = folder.filePath("made.dcf");
    return writeFile(path, dictionaryStart() + records) ? pageOf(path, { "--encoding", "UTF-8" })
                                                        : QByteArray();
}

// The line of the table that begins with \a name.
QByteArray rowOf(const QByteArray& page, const QByteArray& name)
{
    for (const QByteArray& line : page.split('\n')) {
        if (line.startsWith("<tr") && (line.contains('>' + name + '<')))
            return line;
    }
    return QByteArray();
}

QByteArray sectionOf(const QByteArray& page, const QByteArray& id)
{
    const int start = page.indexOf("<h3 id=" + id + '>');
    return start < 0 ? QByteArray() : page.mid(start, page.indexOf('\n', start) - start);
}

QByteArray valueSet(const QByteArray& name, const QByteArray& values)
{
    return "[ValueSet]\nLabel=" + name + "\nName=" + name + '\n' + values + '\n';
}

} // namespace

class tst_CodebookCommand : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void tellsEveryField_data();
    void tellsEveryField();
    void tellsValueSetsOnce();
    void tellsOccurrencesOnce();
    void putsSubitemsUnderTheirItem();
    void marksSpecialCodes();
    void tellsRangesAndDecimals();
    void tellsNotesAndUniverse();
    void hasAllLanguages();
    void hasOneLanguageWhenNamed();
    void keepsHostileTexts();
    void showsControlCharacters();
    void takesSeveralFiles();
    void tellsSourceDateAndVersion();
    void refusesAWrongDate();
    void failsAsOtherCommands();
    void isSmallForManyVariables();
    void tellsRealDictionaries();
};

void tst_CodebookCommand::initTestCase()
{
    qputenv("SOURCE_DATE_EPOCH", "1700000000");
}

void tst_CodebookCommand::tellsEveryField_data()
{
    addExportedFiles();
}

void tst_CodebookCommand::tellsEveryField()
{
    QFETCH(QString, file);
    const QByteArray page = pageOf(file, { "--no-figures" });
    QCOMPARE(brokenIds(page), QStringList());
    const QString text = shownText(page);
    QSet<QString> items;
    for (const QJsonValue& value : listed(file).value("fields").toArray()) {
        const QJsonObject field = value.toObject();
        items.insert(field.value("record").toString() + field.value("item").toString());
        QVERIFY(text.contains(field.value("label").toString()));
        for (const QJsonValue& valueSet : field.value("valueSets").toArray()) {
            for (const QJsonValue& code : valueSet.toObject().value("values").toArray())
                QVERIFY(text.contains(code.toObject().value("label").toString()));
        }
    }
    QCOMPARE(page.count("<th scope=row>"), items.size());
}

void tst_CodebookCommand::tellsValueSetsOnce()
{
    const QByteArray yesNo = "Value=1;Yes\nValue=2;No\n";
    const QByteArray page = pageOfMade(record("ONE") + item("FIRST", 11, 1)
        + valueSet("FIRST_VS1", yesNo) + item("SECOND", 12, 1) + valueSet("SECOND_VS1", yesNo)
        + item("THIRD", 13, 1) + valueSet("THIRD_VS1", "Value=1;Yes\nValue=2;Never\n"));
    QCOMPARE(page.count("<dt>1<dd>Yes"), 2);
    QCOMPARE(page.count("<h3 id=v-1>"), 1);
    QVERIFY(page.contains("<h3 id=v-1>Values 1 <i>FIRST_VS1</i></h3><dl><dt>1<dd>Yes<dt>2<dd>No"));
    for (const char* name : { "FIRST", "SECOND" })
        QVERIFY(rowOf(page, name).contains("1 to 2, <a href=#v-1>values 1</a>"));
    QVERIFY(!rowOf(page, "THIRD").contains("#v-"));
    QVERIFY(sectionOf(page, "THIRD").contains("<dt>2<dd>Never"));
    QCOMPARE(brokenIds(page), QStringList());
}

void tst_CodebookCommand::tellsOccurrencesOnce()
{
    const QByteArray page = pageOf(TESSEL_EXAMPLES "/census.dcf");
    const QByteArray row = rowOf(page, "ASSET");
    QVERIFY2(row.contains("<td>54\u2013"
                          "57<td>integer, \u00d7 4"),
        row.constData());
    const QByteArray section = sectionOf(page, "ASSET");
    QVERIFY(section.contains("4 occurrences, ASSET_1 to ASSET_4"));
    QVERIFY(section.contains("<ol><li><i>Radio</i><li><i>Television</i>"));
    QVERIFY(!page.contains("id=ASSET_2"));
    // Others stand between the occurrences of a subitem.
    QVERIFY(rowOf(pageOf("written_household.dcf"), "BIRTH_YEAR")
                .contains("12\u2013"
                          "15, 18\u2013"
                          "21, 24\u2013"
                          "27"));
}

void tst_CodebookCommand::putsSubitemsUnderTheirItem()
{
    const QByteArray page = pageOf(TESSEL_EXAMPLES "/census.dcf");
    const int item = page.indexOf(rowOf(page, "START_TIME"));
    const int part = page.indexOf(rowOf(page, "START_HOUR"));
    QVERIFY(item > 0 && part > item);
    QVERIFY(rowOf(page, "START_HOUR").contains("class=part"));
    QVERIFY(!rowOf(page, "START_TIME").contains("class=part"));
    QVERIFY(!rowOf(page, "PERSONS").contains("class=part"));
    QVERIFY(sectionOf(page, "START_HOUR").contains("part of START_TIME"));
}

void tst_CodebookCommand::marksSpecialCodes()
{
    const QByteArray page = pageOf("written_household.dcf");
    QVERIFY(rowOf(page, "ROOF").contains("<small>missing 99</small> <small>n/a '  '</small>"));
    QVERIFY(page.contains("<dt>'  ' <small>not applicable</small>"));
    QVERIFY(page.contains("<dt>9.998 <small>refused</small>"));
    QVERIFY(page.contains("<dt>9.999 <small>default</small>"));
    QVERIFY(rowOf(pageOf(TESSEL_EXAMPLES "/household.sav"), "INCOME")
                .contains("<small>missing 999998, 999999</small>"));
}

void tst_CodebookCommand::tellsRangesAndDecimals()
{
    const QByteArray page = pageOf("written_household.dcf");
    QVERIFY(rowOf(page, "WEIGHT")
                .contains("<td>18\u2013"
                          "23<td>real, 3 implied"));
    QVERIFY(rowOf(page, "HEIGHT").contains("<td>real, 1 in data"));
    QVERIFY(sectionOf(page, "WEIGHT").contains("3 decimals, implied: the point is in no column"));
    QVERIFY(sectionOf(page, "WEIGHT").contains("range -0.500 to 9.997"));
    // Of several sets the one that has the range is named.
    QVERIFY(rowOf(page, "ROOF").contains("1 to 8 (ROOF_VS1), <a href="));
    QVERIFY(rowOf(page, "PROVINCE").contains("integer, zeros"));
    QVERIFY(rowOf(pageOf(TESSEL_EXAMPLES "/household.sav"), "ALTITUDE")
                .contains("<td>integer, F5.0, scale"));
    // A range without a label is no list of values.
    const QByteArray made =
        pageOfMade(record("ONE") + item("EA", 11, 2) + valueSet("EA_VS1", "Value=1:9\n"));
    QVERIFY(rowOf(made, "EA").contains("<td>1 to 9"));
    QVERIFY(!made.contains("<dl>"));
}

void tst_CodebookCommand::tellsNotesAndUniverse()
{
    const QByteArray page = pageOfMade(record("ONE")
        + item("AGE", 11, 2, "Note=Universe: all <persons>\\r\\n\nNote=In years.\n")
        + item("SEX", 13, 1, "Note=The universe is vast\n"));
    const int start = page.indexOf("<h3 id=AGE>");
    const QByteArray section = page.mid(start, page.indexOf("<h3 id=SEX>") - start);
    QVERIFY2(section.contains("<p>Universe: all &lt;persons&gt;<p class=note>In years."),
        section.constData());
    QVERIFY(page.contains("<p class=note>The universe is vast"));
    QCOMPARE(page.count("<p>Universe"), 1);
}

void tst_CodebookCommand::hasAllLanguages()
{
    const QByteArray page = pageOf("written_household.dcf");
    QVERIFY(page.contains(
        "<h1><i lang=en>Household survey</i><i lang=fr>Enqu\u00eate m\u00e9nage</i></h1>"));
    QVERIFY(page.contains("<option value=en>English<option value=fr>Fran\u00e7ais"));
    QVERIFY(rowOf(page, "ROOF").contains("<td><i lang=en>Roof</i><i lang=fr>Toit</i><td>"));
    QVERIFY(page.contains("<dt>1<dd lang=en>North<dd lang=fr>Nord"));
    QVERIFY(page.contains("<li><i lang=en>First</i><i lang=fr>Premier</i>"));
    // What has no text of its own in a language is told in the first alone.
    QVERIFY(rowOf(page, "CLUSTER").contains("<td><i lang=en>Cluster</i><td>"));
}

void tst_CodebookCommand::hasOneLanguageWhenNamed()
{
    const QByteArray page = pageOf("written_household.dcf", { "--language", "fr" });
    QVERIFY(page.contains("<h1><i>Enqu\u00eate m\u00e9nage</i></h1>"));
    QVERIFY(rowOf(page, "ROOF").contains("<td>Toit<td>"));
    QVERIFY(!page.contains("id=language"));
    QVERIFY(!shownText(page).contains("Household survey"));
}

void tst_CodebookCommand::keepsHostileTexts()
{
    const QByteArray longWord(400, 'w');
    const QByteArray record =
        "[Record]\nLabel=<script>alert(1)</script>\nName=A><b>\nRecordTypeValue='1'\n"
        "RecordLen=99\n\n";
    const QByteArray page =
        pageOfMade(record + item("X\"'>", 11, 1, "Note=</script><img src=x onerror=alert(1)>\n")
            + valueSet("VS", "Value=2;\u202Eevil\nValue=3;" + longWord + "\n"));
    QCOMPARE(page.count("<script"), 1);
    QCOMPARE(page.count("</script"), 1);
    QVERIFY(!page.contains("<img"));
    QVERIFY(!page.contains("<b>"));
    QVERIFY(!page.contains("\u202E"));
    QVERIFY(page.contains("&lt;script&gt;alert(1)&lt;/script&gt;"));
    QVERIFY(page.contains("<dd>\uFFFDevil"));
    QVERIFY(page.contains(longWord));
    QCOMPARE(brokenIds(page), QStringList());
}

void tst_CodebookCommand::showsControlCharacters()
{
    QTemporaryDir folder;
    const QString path = folder.filePath("nul.dcf");
    QByteArray dictionary = readFile(QStringLiteral(TESSEL_TEST_DATA "/json_household.dcf"));
    dictionary.replace("\"Household survey\"", "\"A\\u0000B\\u0007\"");
    QVERIFY(writeFile(path, dictionary));
    const QByteArray page = pageOf(path);
    QVERIFY(page.contains("<h1><i lang=en>A\u2400B\u2407</i>"));
    QVERIFY(!page.contains('\0'));
}

void tst_CodebookCommand::takesSeveralFiles()
{
    const QByteArray page =
        pageOf(TESSEL_EXAMPLES "/household.sav", { TESSEL_EXAMPLES "/person.sav" });
    QVERIFY(page.contains("<h1>Codebook</h1>"));
    QCOMPARE(page.count("<h1>"), 1);
    QCOMPARE(page.count("<section id=record-"), 2);
    QCOMPARE(brokenIds(page), QStringList());
    QVERIFY(page.contains("<li>household.sav; "));
    QVERIFY(page.contains("<li>person.sav; "));
}

void tst_CodebookCommand::tellsSourceDateAndVersion()
{
    const QByteArray page = pageOf(TESSEL_EXAMPLES "/census.dcf");
    QVERIFY(page.contains(
        "<li>census.dcf; CENSUS_DICT; CSPro 7.7; UTF-8; record type at column 1, length 1\n"));
    QVERIFY(page.contains("<p>Made on 2023-11-14 with tessel "));
    QCOMPARE(pageOf(TESSEL_EXAMPLES "/census.dcf"), page);
    QVERIFY(!exportTo("html", TESSEL_EXAMPLES "/census.dcf").output.contains("Made on"));
}

void tst_CodebookCommand::refusesAWrongDate()
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("SOURCE_DATE_EPOCH", "today");
    const Outcome outcome = runTessel({ "codebook", "basic.dcf" }, {}, environment);
    QCOMPARE(outcome.status, 2);
    QVERIFY(outcome.errors.contains("SOURCE_DATE_EPOCH takes a number of seconds, not 'today'"));
}

void tst_CodebookCommand::failsAsOtherCommands()
{
    QTemporaryDir folder;
    const QString path = folder.filePath("book.html");
    QCOMPARE(runTessel({ "codebook" }).status, 2);
    QCOMPARE(runTessel({ "codebook", "missing.dcf", "-o", path }).status, 1);
    QVERIFY(!QFile::exists(path));
    QCOMPARE(runTessel({ "codebook", "basic.dcf", "-o", "basic.dcf" }).status, 2);
    // The others are told of all the same.
    QCOMPARE(runTessel({ "codebook", "missing.dcf", "basic.dcf", "-o", path }).status, 1);
    QVERIFY(readFile(path).contains("basic.dcf"));
}

void tst_CodebookCommand::isSmallForManyVariables()
{
    QTemporaryDir folder;
    const QString path = folder.filePath("many.dcf");
    QVERIFY(writeFile(path, manyVariables()));
    const QByteArray page = pageOf(path);
    QCOMPARE(page.count("<th scope=row>"), ManyVariables + 1);
    QVERIFY(page.contains("<i lang=am>\u1325\u12eb\u1244 5999</i>"));
    QVERIFY2(page.size() < 3'000'000, qPrintable(QString::number(page.size())));
}

void tst_CodebookCommand::tellsRealDictionaries()
{
    const QString corpus = qEnvironmentVariable("TESSEL_CORPUS");
    if (corpus.isEmpty())
        QSKIP("TESSEL_CORPUS names no folder of real dictionaries");
    const QDir folder(corpus + "/cspro");
    for (const QString& name : folder.entryList({ "*.dcf" }, QDir::Files)) {
        const QByteArray page = pageOf(folder.filePath(name));
        QVERIFY2(page.endsWith("</html>\n"), qPrintable(name));
        QCOMPARE(brokenIds(page), QStringList());
    }
    const QByteArray six = pageOf(folder.filePath("ethiopia-household.dcf"));
    for (const char* tag : { "en", "am", "und-x-som" })
        QVERIFY(six.contains(QByteArray("<option value=") + tag + '>'));
    QCOMPARE(six.count("<option value="), 7);
    const Outcome large = exportTo("html", folder.filePath("dhs-core-iq80-two-levels.dcf"));
    QVERIFY2(large.output.size() < 383'000, qPrintable(QString::number(large.output.size())));
}

QTEST_GUILESS_MAIN(tst_CodebookCommand)
#include "tst_CodebookCommand.moc"
