// The files that "tessel diff" writes beside its text, and dictionaries of real rounds.
#include "RunTessel.h"

#include <QDir>
#include <QFile>
#include <QSet>
#include <QTemporaryDir>
#include <QtTest>

#include <algorithm>

namespace {

const QStringList rounds { "diff_before.dcf", "diff_after.dcf" };

QStringList linesOf(const QByteArray& text)
{
    return QString::fromUtf8(text).split('\n', Qt::SkipEmptyParts);
}

// Two rounds of a census; empty: there are none here.
QStringList corpusRounds()
{
    const QDir corpus(qEnvironmentVariable("TESSEL_CORPUS") + "/cspro");
    const QStringList files { corpus.filePath("ethiopia-census2017-household.dcf"),
        corpus.filePath("ethiopia-household.dcf") };
    return QFile::exists(files.constFirst()) && QFile::exists(files.constLast()) ? files
                                                                                 : QStringList();
}

} // namespace

class tst_DiffCommand : public QObject {
    Q_OBJECT

private slots:
    void statusIsThatOfAllDifferences();
    void breakingLeavesOthersOut();
    void crosswalkOfRounds();
    void targetsReplaceNothing_data();
    void targetsReplaceNothing();
    void failedTargetIsTrouble();
    void corpusRoundsAreFolded();
    void corpusCrosswalk();
};

void tst_DiffCommand::statusIsThatOfAllDifferences()
{
    // A label alone differs, so that nothing breaks.
    QTemporaryDir folder;
    const QString other = folder.filePath("other.dcf");
    QByteArray text = readFile(dataFolder() + "/diff_before.dcf");
    QVERIFY(writeFile(other, text.replace("Label=Rooms", "Label=All rooms")));
    for (const char* format : { "text", "csv", "json" }) {
        const QStringList options { "diff", "--breaking", "-f", format, "diff_before.dcf" };
        QCOMPARE(runTessel(options + QStringList(other)).status, 1);
        QCOMPARE(runTessel(options + QStringList("diff_before.dcf")).status, 0);
        QCOMPARE(runTessel(options + QStringList("missing.dcf")).status, 2);
    }
}

void tst_DiffCommand::breakingLeavesOthersOut()
{
    const QByteArray all = runTessel(QStringList { "diff", "-f", "csv" } + rounds).output;
    const QStringList lines = linesOf(all);
    const QStringList breaking =
        linesOf(runTessel(QStringList { "diff", "--breaking", "-f", "csv" } + rounds).output);
    QStringList expected = lines.filter(QLatin1String(",yes,"));
    expected.prepend(lines.constFirst());
    QCOMPARE(breaking, expected);
    QVERIFY(breaking.size() > 1 && breaking.size() < lines.size());
    const QByteArray json =
        runTessel(QStringList { "diff", "--breaking", "-f", "json" } + rounds).output;
    QCOMPARE(json.count("\"breaks\":true"), breaking.size() - 1);
    QVERIFY(!json.contains("\"breaks\":false"));
    QVERIFY(json.contains(QString("\"fitting\":%1").arg(lines.size() - breaking.size()).toUtf8()));
}

void tst_DiffCommand::crosswalkOfRounds()
{
    QTemporaryDir folder;
    const QString path = folder.filePath("crosswalk.csv");
    const Outcome outcome = runTessel(QStringList { "diff", "--crosswalk", path } + rounds);
    QCOMPARE(outcome.status, 1);
    QCOMPARE(outcome.output, runTessel(QStringList("diff") + rounds).output);
    const QStringList lines = QString::fromUtf8(readFile(path)).split("\r\n");
    QVERIFY(lines.contains(
        "LANGUAGE,,LANGUAGE,,variable,Language spoken,Language spoken,PERSON,PERSON,"));
    QVERIFY(lines.contains("SEX,1,SEX,1,value,Male,Male,PERSON,PERSON,"));
    QVERIFY(lines.contains(",,SEX,3,value,,Other,,PERSON,"));
    QCOMPARE(lines.filter("LANGUAGE").size(), 1);
    QVERIFY(!QString::fromUtf8(readFile(path)).startsWith(QChar(QChar::ByteOrderMark)));
    QCOMPARE(
        runTessel(QStringList { "diff", "--spreadsheet", "--crosswalk", path } + rounds).status, 1);
    QVERIFY(readFile(path).startsWith("\xEF\xBB\xBF"));
}

void tst_DiffCommand::targetsReplaceNothing_data()
{
    QTest::addColumn<QStringList>("options");
    QTest::addColumn<QByteArray>("error");
    QTest::newRow("crosswalk over an input")
        << QStringList { "--crosswalk", "diff_after.dcf" } << QByteArray("would replace an input");
    QTest::newRow("crosswalk over the output") << QStringList { "--crosswalk", "x.csv", "-o",
        "x.csv" } << QByteArray("--crosswalk names the file of another option");
    QTest::newRow("crosswalk without a name")
        << QStringList { "--crosswalk", "" } << QByteArray("--crosswalk needs the name of a file");
    QTest::newRow("spreadsheet without CSV")
        << QStringList { "--spreadsheet" }
        << QByteArray("--spreadsheet goes with --format csv or --crosswalk only");
}

void tst_DiffCommand::targetsReplaceNothing()
{
    QFETCH(QStringList, options);
    QFETCH(QByteArray, error);
    const QByteArray input = readFile(dataFolder() + "/diff_after.dcf");
    const Outcome outcome = runTessel(QStringList("diff") + options + rounds);
    QCOMPARE(outcome.status, 2);
    QVERIFY2(outcome.errors.contains(error), outcome.errors.constData());
    QCOMPARE(readFile(dataFolder() + "/diff_after.dcf"), input);
    QVERIFY(!QFile::exists(dataFolder() + "/x.csv"));
}

void tst_DiffCommand::failedTargetIsTrouble()
{
    QTemporaryDir folder;
    const QString nowhere = folder.filePath("missing/file");
    QCOMPARE(runTessel(QStringList { "diff", "--crosswalk", nowhere } + rounds).status, 2);
}

void tst_DiffCommand::corpusRoundsAreFolded()
{
    if (corpusRounds().isEmpty())
        QSKIP("needs the dictionaries of TESSEL_CORPUS");
    const QStringList text = linesOf(runTessel(QStringList("diff") + corpusRounds()).output);
    const QStringList csv =
        linesOf(runTessel(QStringList { "diff", "-f", "csv" } + corpusRounds()).output);
    QVERIFY2(text.size() < 300, qPrintable(QString::number(text.size())));
    QVERIFY2(csv.size() > 1800, qPrintable(QString::number(csv.size())));
    QVERIFY(text.contains("    P305       237 values added: 67, 1 to 66, 68 to 237"));
    QVERIFY(text.constLast().startsWith(QString("%1 differences").arg(csv.size() - 1)));
}

// Each old code of a variable once, so that a join multiplies no case.
void tst_DiffCommand::corpusCrosswalk()
{
    if (corpusRounds().isEmpty())
        QSKIP("needs the dictionaries of TESSEL_CORPUS");
    QTemporaryDir folder;
    const QString path = folder.filePath("crosswalk.csv");
    QCOMPARE(runTessel(QStringList { "diff", "--crosswalk", path } + corpusRounds()).status, 1);
    const QStringList lines = QString::fromUtf8(readFile(path)).split("\r\n", Qt::SkipEmptyParts);
    QVERIFY(lines.size() > 2000);
    QVERIFY(lines.contains("P313,3,,,value,Don't know,,INDIVIDUAL,,8"));
    QVERIFY(
        lines.contains("P304A,14,P304A,14,value,Diredawa,Addis Ababa,INDIVIDUAL,INDIVIDUAL,15"));
    QSet<QString> known;
    for (const QString& line : lines) {
        const QStringList cells = line.split(',');
        const bool hasOldCode = !cells.at(0).isEmpty();
        const QString key = cells.at(0) + ',' + cells.at(1);
        QVERIFY2(!hasOldCode || !known.contains(key), qPrintable(line));
        known.insert(key);
    }
}

QTEST_GUILESS_MAIN(tst_DiffCommand)
#include "tst_DiffCommand.moc"
