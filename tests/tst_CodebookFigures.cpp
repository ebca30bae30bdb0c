// Runs "tessel codebook" with data: the figures as JSON, in DDI and in the page.
#include "ExportRun.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QLocale>
#include <QStandardPaths>
#include <QTemporaryDir>

namespace {

const QString& census()
{
    static const QString path = QStringLiteral(TESSEL_EXAMPLES "/census.dcf");
    return path;
}

const QString& data()
{
    static const QString path = QStringLiteral(TESSEL_EXAMPLES "/census.dat");
    return path;
}

Outcome figures(const QStringList& arguments)
{
    return runTessel(QStringList { "codebook", "--to", "json" } + arguments);
}

QJsonObject figuresOf(const QStringList& arguments)
{
    const Outcome outcome = figures(arguments);
    if (outcome.status != 0)
        qFatal("%s", outcome.errors.constData());
    return QJsonDocument::fromJson(outcome.output).object();
}

QJsonObject variable(const QJsonObject& figures, const QString& name)
{
    for (const QJsonValue& one : figures.value("variables").toArray()) {
        if (one.toObject().value("name").toString() == name)
            return one.toObject();
    }
    return {};
}

// Counts of single codes in columns of the lines of a record type.
QMap<QByteArray, qint64> sliced(char type, int start, int width)
{
    QMap<QByteArray, qint64> counts;
    for (const QByteArray& line : readFile(data()).split('\n')) {
        const QString text = QString::fromUtf8(line);
        const int shift = text.startsWith(QChar(0xFEFF)) ? 1 : 0;
        if (text.size() > shift && text.at(shift) == QLatin1Char(type))
            ++counts[text.mid(start - 1 + shift, width).toUtf8()];
    }
    return counts;
}

// All counts below a limit in the text of a document.
QStringList smallCounts(const QJsonValue& value, double limit)
{
    QStringList found;
    if (value.isArray()) {
        for (const QJsonValue& one : value.toArray())
            found += smallCounts(one, limit);
    }
    const QJsonObject object = value.toObject();
    for (auto member = object.begin(); member != object.end(); ++member) {
        const double count = member.value().toDouble();
        if (member.key() == "count" && count > 0 && count < limit)
            found.append(QJsonDocument(object).toJson(QJsonDocument::Compact));
        found += smallCounts(member.value(), limit);
    }
    return found;
}

} // namespace

class tst_CodebookFigures : public QObject {
    Q_OBJECT

private slots:
    void frequencies();
    void weighted();
    void hidden();
    void crossed();
    void statFile();
    void ddi();
    void ddiLanguages();
    void wrongUsage_data();
    void wrongUsage();
    void rejectedLines();
    void rowsWithoutWeight();
    void selection();
    void page();
    void pageHidesCells();
    void pageIsWeighted();
};

void tst_CodebookFigures::frequencies()
{
    const QJsonObject all = figuresOf({ census(), data() });
    QCOMPARE(all.value("rejectedLines").toInt(), 0);
    const QJsonObject sex = variable(all, "SEX");
    const QMap<QByteArray, qint64> counts = sliced('2', 47, 1);
    int found = 0;
    for (const QJsonValue& code :
        sex.value("valueSets").toArray().at(0).toObject().value("codes").toArray()) {
        const QJsonObject object = code.toObject();
        QCOMPARE(qint64(object.value("count").toDouble()),
            counts.value(object.value("code").toString().toUtf8()));
        ++found;
    }
    QVERIFY(found >= 2);
    QCOMPARE(variable(all, "DEATH_SEX").value("occurrences").toInt(), 3);
    QVERIFY(variable(all, "AGE").value("isQuantity").toBool());
    QVERIFY(variable(all, "AGE").value("histogram").toArray().size() > 5);
    QVERIFY(all.value("weight").isNull());
    const QJsonObject each = figuresOf({ census(), data(), "--occurrences" });
    QVERIFY(variable(each, "DEATH_SEX_2").value("isOccurrence").toBool());
}

void tst_CodebookFigures::weighted()
{
    const QJsonObject all = figuresOf({ census(), data(), "--weight", "HOUSEHOLD_WEIGHT" });
    QCOMPARE(all.value("weight").toString(), QString("HOUSEHOLD_WEIGHT"));
    QVERIFY(variable(all, "SEX").value("isWeighted").toBool());
    const QJsonObject total = variable(all, "SEX").value("total").toObject();
    QVERIFY(total.value("weighted").toDouble() > 0);
    QVERIFY(variable(all, "AGE").contains("weightedNumbers"));
    const Outcome below = figures({ census(), data(), "--weight", "PERSON_WEIGHT" });
    QCOMPARE(below.status, 0);
    QVERIFY2(below.errors.contains("the figures of HOUSEHOLD are not weighted"),
        below.errors.constData());
}

void tst_CodebookFigures::hidden()
{
    const QStringList arguments { census(), data(), "--cross", "SEX,MARITAL_STATUS", "--cross",
        "URBAN_RURAL,SEX" };
    QVERIFY(!smallCounts(figuresOf(arguments), 10).isEmpty());
    const QJsonObject all = figuresOf(arguments + QStringList { "--suppress", "10" });
    QCOMPARE(all.value("hiddenBelow").toInt(), 10);
    QCOMPARE(smallCounts(all, 10), QStringList());
}

void tst_CodebookFigures::crossed()
{
    const QJsonObject all = figuresOf({ census(), data(), "--cross", "URBAN_RURAL,SEX" });
    const QJsonObject cross = all.value("crosses").toArray().at(0).toObject();
    QCOMPARE(cross.value("record").toString(), QString("PERSON"));
    const QJsonArray lines = cross.value("cells").toArray();
    QCOMPARE(lines.size(), cross.value("lines").toArray().size() + 1);
    double sum = 0;
    for (const QJsonValue& line : lines)
        sum += line.toObject().value("line").toArray().last().toObject().value("count").toDouble();
    QCOMPARE(sum, variable(all, "SEX").value("total").toObject().value("count").toDouble());
}

// What files of SPSS and Stata hold is figured without another file, unless that is not wanted.
void tst_CodebookFigures::statFile()
{
    const QJsonObject all = figuresOf({ TESSEL_EXAMPLES "/person.dta" });
    QVERIFY(all.value("variables").toArray().size() > 5);
    QVERIFY(all.value("cases").isNull());
    const Outcome none = runTessel({ "codebook", "--no-figures", TESSEL_EXAMPLES "/person.dta" });
    QCOMPARE(none.status, 0);
}

void tst_CodebookFigures::ddi()
{
    const Outcome outcome = runTessel({ "codebook", "--to", "ddi", census(), data(), "--weight",
        "PERSON_WEIGHT", "--suppress", "5" });
    QCOMPARE(outcome.status, 0);
    const QByteArray& book = outcome.output;
    QVERIFY(book.contains("<catStat type=\"freq\">"));
    QVERIFY(book.contains("<catStat type=\"freq\" wgtd=\"wgtd\" wgt-var="));
    QVERIFY(book.contains("<sumStat type=\"mean\">"));
    QVERIFY(book.contains("wgt=\"wgt\""));
    QVERIFY(book.contains("<caseQnty>"));
    QXmlStreamReader xml(book);
    while (!xml.atEnd()) {
        if (xml.readNext() != QXmlStreamReader::StartElement || xml.name() != "catStat"
            || xml.attributes().hasAttribute("wgtd"))
            continue;
        const int count = xml.readElementText().toInt();
        QVERIFY(count == 0 || count >= 5);
    }
    const QTemporaryDir folder;
    QVERIFY(writeFile(folder.filePath("book.xml"), book));
    const Outcome same = runTessel({ "diff", census(), folder.filePath("book.xml") });
    QVERIFY2(same.output.startsWith("No differences"), same.output.constData());
    const QString schema = qEnvironmentVariable("TESSEL_DDI_SCHEMA");
    if (schema.isEmpty() || QStandardPaths::findExecutable("xmllint").isEmpty())
        QSKIP("TESSEL_DDI_SCHEMA does not name the folder of codebook.xsd, or xmllint is missing");
    const Outcome checked = runProgram("xmllint",
        { "--nonet", "--noout", "--schema", QDir(schema).filePath("codebook.xsd"), "-" }, book);
    QVERIFY2(checked.status == 0, checked.errors.constData());
}

// Every label in every language, and each language read back.
void tst_CodebookFigures::ddiLanguages()
{
    const QByteArray dictionary =
        "[Dictionary]\nVersion=CSPro 7.7\nLabel=Survey|Enqu\xC3\xAAte\nName=D\nRecordTypeStart=1\n"
        "RecordTypeLen=1\n\n[Languages]\nEN=English\nFR=Fran\xC3\xA7"
        "ais\n\n"
        "[Level]\nLabel=L|N\nName=L\n\n[IdItems]\n\n"
        "[Item]\nLabel=House|Maison\nName=H\nStart=2\nLen=1\n\n"
        "[Record]\nLabel=Person|Personne\nName=P\nRecordTypeValue='1'\n\n"
        "[Item]\nLabel=Sex|Sexe\nName=SEX\nStart=3\nLen=1\n\n"
        "[ValueSet]\nLabel=Sex|Sexe\nName=SEX_VS1\nValue=1;Man|Homme\nValue=2;Woman|Femme\n";
    const QTemporaryDir folder;
    const QString path = folder.filePath("d.dcf");
    const QString book = folder.filePath("book.xml");
    QVERIFY(writeFile(path, dictionary));
    QVERIFY(writeFile(folder.filePath("d.dat"), "111\n122\n"));
    QCOMPARE(
        runTessel({ "codebook", "--to", "ddi", path, folder.filePath("d.dat"), "-o", book }).status,
        0);
    const QByteArray xml = readFile(book);
    for (const char* text : { "<labl xml:lang=\"en\">Woman</labl>",
             "<labl xml:lang=\"fr\">Femme</labl>", "<parTitl xml:lang=\"fr\">",
             "<labl xml:lang=\"fr\">Personne</labl>", "<catStat type=\"freq\">1</catStat>" })
        QVERIFY2(xml.contains(text), text);
    for (const QString& language : { QStringLiteral("EN"), QStringLiteral("FR") }) {
        const Outcome before =
            runTessel({ "fields", path, "--language", language, "-f", "csv", "--values" });
        const Outcome after = runTessel(
            { "fields", book, "--language", language.toLower(), "-f", "csv", "--values" });
        QCOMPARE(before.status, 0);
        QCOMPARE(after.status, 0);
        for (const char* text : { "Sexe", "Femme", "Woman", "Maison" })
            QCOMPARE(after.output.contains(text), before.output.contains(text));
    }
}

void tst_CodebookFigures::wrongUsage_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QByteArray>("text");
    const QStringList both { census(), data() };
    QTest::newRow("no data") << QStringList { census() } << QByteArray("--to json writes figures");
    QTest::newRow("no such weight") << both + QStringList { "--weight", "AGES" }
                                    << QByteArray("there is no variable 'AGES'; did you mean AGE");
    QTest::newRow("no pair") << both + QStringList { "--cross", "SEX" }
                             << QByteArray("--cross takes");
    QTest::newRow("no limit") << both + QStringList { "--suppress", "0" }
                              << QByteArray("--suppress takes a number from 1");
    QTest::newRow("no figures") << both + QStringList { "--no-figures" }
                                << QByteArray("--no-figures leaves data files without a use");
    QTest::newRow("two sources") << QStringList { census(), census() }
                                 << QByteArray("--to json takes one source at a time, not 2");
    QTest::newRow("data of a file with its own") << QStringList { TESSEL_EXAMPLES "/person.sav",
        data() } << QByteArray("holds its own dictionary; give it alone");
    QTest::newRow("form") << both + QStringList { "--to", "xml" } << QByteArray("--to takes html");
    QTest::newRow("established") << both + QStringList { "--rules", "established" }
                                 << QByteArray("leave --rules out");
}

void tst_CodebookFigures::wrongUsage()
{
    QFETCH(QStringList, arguments);
    QFETCH(QByteArray, text);
    const Outcome outcome = figures(arguments);
    QCOMPARE(outcome.status, 2);
    QVERIFY2(outcome.errors.contains(text), outcome.errors.constData());
    QVERIFY(outcome.output.isEmpty());
}

// Lines that are in no figure are told.
void tst_CodebookFigures::rejectedLines()
{
    const QTemporaryDir folder;
    const QString path = folder.filePath("data.dat");
    QVERIFY(writeFile(path, "9x\n" + readFile(data()).mid(3)));
    const Outcome outcome = figures({ census(), path });
    QCOMPARE(outcome.status, 0);
    QVERIFY2(outcome.errors.contains("data.dat: warning: 1 line is in no figure"),
        outcome.errors.constData());
    const Outcome missing = figures({ census(), folder.filePath("none.dat") });
    QCOMPARE(missing.status, 1);
    QVERIFY(missing.output.isEmpty());
}

// Rows whose weight is of no use are told by its fault.
void tst_CodebookFigures::rowsWithoutWeight()
{
    const QTemporaryDir folder;
    const QString path = folder.filePath("data.dat");
    QByteArray lines;
    for (const char* weight : { "00100", "-0100", "     ", "     ", "12x45" })
        lines += QByteArray("211001000100101").leftJustified(57) + weight + '\n';
    QVERIFY(writeFile(path, lines));
    const Outcome outcome = figures({ census(), path, "--weight", "PERSON_WEIGHT" });
    QCOMPARE(outcome.status, 0);
    for (const char* told : { "1 row of PERSON without weight: it is negative\n",
             "2 rows of PERSON without weight: it is missing\n",
             "1 row of PERSON without weight: it is no number\n" })
        QVERIFY2(outcome.errors.contains(QByteArray("data.dat: warning: ") + told),
            outcome.errors.constData());
}

void tst_CodebookFigures::selection()
{
    const QJsonObject some = figuresOf({ census(), data(), "--where", "PROVINCE=11" });
    const QJsonObject all = figuresOf({ census(), data() });
    const auto rows = [](const QJsonObject& figures) {
        return figures.value("records")
            .toArray()
            .at(0)
            .toObject()
            .value("rows")
            .toObject()
            .value("count")
            .toInt();
    };
    QVERIFY(rows(some) > 0 && rows(some) < rows(all));
}

void tst_CodebookFigures::page()
{
    const QByteArray page =
        runTessel({ "codebook", census(), data(), "--cross", "SEX,URBAN_RURAL" }).output;
    const QMap<QByteArray, qint64> counts = sliced('2', 47, 1);
    const QByteArray sex = page.mid(page.indexOf("<h3 id=SEX>"), 2000);
    QVERIFY2(sex.contains("<tr><th scope=row>1<td>Male<td class=number>"
                 + QLocale(QLocale::English).toString(counts.value("1")).toUtf8()),
        sex.constData());
    QVERIFY(sex.contains("<b style=width:"));
    QVERIFY(page.contains("<p>In the data: 4,299 rows"));
    QVERIFY(page.contains("<th scope=col class=number>Lower quartile"));
    QVERIFY(page.contains("aria-label=\"Histogram. "));
    QVERIFY(page.contains("<h3>SEX by URBAN_RURAL</h3>"));
    QVERIFY(page.contains("Data: census.dat; 1,000 cases"));
    // Without data there are none.
    QVERIFY(!runTessel({ "codebook", census() }).output.contains("class=figures"));
}

void tst_CodebookFigures::pageHidesCells()
{
    const QStringList arguments { "codebook", census(), data(), "--where", "PROVINCE=11",
        "--variables", "RELATIONSHIP" };
    QVERIFY(!runTessel(arguments).output.contains("<small>hidden</small>"));
    const QByteArray page = runTessel(arguments + QStringList { "--suppress", "50" }).output;
    QVERIFY(
        page.contains("<td class=number><small>hidden</small><td class=number><td class=bar>\n"));
    QVERIFY(page.contains("figures of fewer than 50 values are hidden"));
}

void tst_CodebookFigures::pageIsWeighted()
{
    const QByteArray page =
        runTessel({ "codebook", census(), data(), "--weight", "PERSONS" }).output;
    QVERIFY(page.contains("<th scope=col class=number>Weighted %"));
    QVERIFY(page.contains("weighted by PERSONS"));
    QVERIFY(page.contains("<tr><th scope=row>Weighted<td class=number>"));
}

QTEST_GUILESS_MAIN(tst_CodebookFigures)
#include "tst_CodebookFigures.moc"
