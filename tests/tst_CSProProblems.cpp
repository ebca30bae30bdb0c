#include "AddRow.h"
#include "CSProProblemTexts.h"
#include "CSProTexts.h"
#include "DebugLines.h"
#include "ErrorOf.h"

#include <model_Tessel/CSPro.h>
#include <model_Tessel/ErrorManager.h>

#include <QLoggingCategory>
#include <QMessageBox>
#include <QtTest>

#include <stdexcept>

class tst_CSProProblems : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();

    void exceptionsBecomeOneError_data();
    void exceptionsBecomeOneError();
    void theErrorTellsTheIndexAsOneCharacter_data();
    void theErrorTellsTheIndexAsOneCharacter();
    void tooManyItems_data();
    void tooManyItems();
    void tooManyItemsOfOneLoad();

    void problems_data();
    void problems();
};

void tst_CSProProblems::initTestCase()
{
    QLoggingCategory::setFilterRules(QStringLiteral("default.debug=false"));
}

void tst_CSProProblems::exceptionsBecomeOneError_data()
{
    QTest::addColumn<int>("kind");
    row("standard exception", 0);
    row("error object", 1);
    row("anything else", 2);
}

void tst_CSProProblems::exceptionsBecomeOneError()
{
    QFETCH(int, kind);
    TCSPro parser;
    parser.setDecimalQuestion([kind](const CSProProblem&) -> int {
        if (kind == 0)
            throw std::runtime_error("no answer");
        if (kind == 1)
            throw new OxErrorManager(QStringLiteral("Other"), 7, QStringLiteral("no answer"));
        throw 5;
    });
    QStringList log;
    ErrorPointer error;
    {
        const DebugOn debugOn;
        const DebugLines debugLines;
        error = errorOf([&] {
            parse(parser,
                "[Record]\nName=R\n[Item]\nName=A\n[ValueSet]\nName=V\nValue=1.5;x\n"
                "[Item]\nName=B");
        });
        log = debugLines.lines();
    }
    QVERIFY(error);
    QCOMPARE(error->className, QString("CSPro"));
    QCOMPARE(error->code, 242);
    QCOMPARE(error->code, int(InvalidContents));
    QCOMPARE(error->line, 0);
    QCOMPARE(error->text, character(6));
    QCOMPARE(error->getErrorMessage(),
        QStringLiteral(
            "Class : CSPro\r\nError : \u00f2\r\n\r\nMessage : Invalid contents in line\r\n"
            "[\u0006 ]"));

    // The error is logged once, when it is made.
    QCOMPARE(log.filter(QStringLiteral("Class : CSPro")).size(), 1);

    // What stood before the value set is there.
    QCOMPARE(parser.getRecordsCount(), 1);
    QCOMPARE(parser.getItemsCount(), 1);
    QCOMPARE(parser.getItem(0)->name, QString("A"));
    QVERIFY(!parser.getItem(0)->getHasValueSet());

    // The parser goes on with what it is given next.
    parser.setDecimalQuestion({});
    parse(parser, "[Item]\nName=B");
    QCOMPARE(parser.getItemsCount(), 2);
}

void tst_CSProProblems::theErrorTellsTheIndexAsOneCharacter_data()
{
    QTest::addColumn<int>("linesBefore");
    row("one line before", 1);
    row("sixty lines before: a visible character", 60);
    row("three hundred lines before: beyond one byte", 300);
    row("forty thousand lines before", 40'000);
}

// The index is the one that the section has reached: its last line.
void tst_CSProProblems::theErrorTellsTheIndexAsOneCharacter()
{
    QFETCH(int, linesBefore);
    QStringList lines;
    for (int i = 0; i < linesBefore; ++i)
        lines.append(QStringLiteral("; comment"));
    lines << "[Item]"
          << "Name=A"
          << ""
          << "Occurrences=100000000"
          << ""
          << "[Item]"
          << "Name=B";
    TCSPro parser;
    const ErrorPointer error = errorOf([&] { parser.loadFromStr(&lines); });
    QVERIFY(error);
    QCOMPARE(error->text.size(), 1);
    QCOMPARE(static_cast<int>(error->text.at(0).unicode()), linesBefore + 4);
    QCOMPARE(parser.getItemsCount(), 0);
    QVERIFY(!parser.lastItem);
}

void tst_CSProProblems::tooManyItems_data()
{
    QTest::addColumn<int>("before");
    QTest::addColumn<int>("occurrences");
    QTest::addColumn<bool>("loads");
    row("as many as there may be", 0, 500'000, true);
    row("one too many", 0, 500'001, false);
    row("the last item is one too many", 500'000, 1, false);
    row("the rest of the room", 499'990, 10, true);
    row("more than the rest of the room", 499'990, 11, false);
    row("the largest number there is", 1, 2147483647, false);
}

void tst_CSProProblems::tooManyItems()
{
    QFETCH(int, before);
    QFETCH(int, occurrences);
    QFETCH(bool, loads);
    const QString item = QStringLiteral("[Item]\nName=A\nLen=1\nOccurrences=%1\n");
    TCSPro parser;
    const ErrorPointer error =
        errorOf([&] { parse(parser, item.arg(before) + item.arg(occurrences)); });
    QCOMPARE(!error, loads);
    QCOMPARE(parser.getItemsCount(), loads ? before + occurrences : before);
    QStringList problems;
    if (before == 0)
        problems << "ItemDropped|1|A||0";
    if (!loads) {
        QCOMPARE(error->code, 242);
        problems << "TooManyItems|5|A||500000";
    }
    QCOMPARE(problemTexts(parser), problems);
    qDeleteAll(*parser.items);
    parser.items->clear();
}

// What earlier loads made, or a host put in, counts in no later load.
void tst_CSProProblems::tooManyItemsOfOneLoad()
{
    const QString item = QStringLiteral("[Item]\nName=A\nLen=1\nOccurrences=%1\n");
    TCSPro parser;
    TCSProItem other;
    parser.items->append(&other);
    parse(parser, item.arg(500'000));
    QCOMPARE(parser.getItemsCount(), 500'001);
    parse(parser, item.arg(1) + item.arg(2));
    QCOMPARE(parser.getItemsCount(), 500'004);
    QCOMPARE(parser.getItem(500'002)->firstOccurrenceIndex, 500'002);

    QStringList lines = item.arg(3).split(QLatin1Char('\n'));
    int index = 0;
    parser.processItem(&lines, index);
    QCOMPARE(parser.getItemsCount(), 500'007);

    QVERIFY(parser.problems().isEmpty());
    const ErrorPointer error = errorOf([&] { parse(parser, item.arg(500'001)); });
    QVERIFY(error);
    QCOMPARE(error->code, 242);
    QCOMPARE(parser.getItemsCount(), 500'007);
    qDeleteAll(parser.items->begin() + 1, parser.items->end());
    parser.items->clear();
}

void tst_CSProProblems::problems_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("answer");
    QTest::addColumn<QStringList>("problems");

    const int no = QMessageBox::No;
    row("none",
        "[Dictionary]\n[Record]\nRecordTypeValue='1'\n[Record]\n"
        "RecordTypeValue='2'\n[Item]\nName=A\nLen=1\n[ValueSet]\nValue=1;x",
        no, QStringList());
    row("odd lines, keys and values are none",
        "Name=lost\n[Other]\nKey=1\n[Dictionary]\nRecordTypeLen=one\nno key\n[Record]\n"
        "RecordTypeValue=1\nMaxRecords=x\n[Item]\nName=A\nLen=1\nStart=first\nDataType=Date\n"
        "ItemType=Other\nDecimalChar=Maybe\nUnknown=1\n[ValueSet]\nValue=1;x\nName=OTHER,Special\n"
        "Colour=red",
        no, QStringList());
    row("item without a length", "\n[Item]\nName=A", no,
        QStringList { "ItemWithoutLength|2|A||0" });
    row("item with a length below zero", "[Item]\nName=A\nLen=-3", no,
        QStringList { "ItemWithoutLength|1|A||-3" });
    row("item that does not occur", "[Record]\n\n[Item]\nName=A\nLen=1\nOccurrences=-1", no,
        QStringList { "ItemDropped|3|A||-1" });
    row("record type once more",
        "[Record]\nName=A\nRecordTypeValue='1'\n[Record]\nName=B\nRecordTypeValue='1'\n"
        "[Record]\nName=C\nRecordTypeValue='1'",
        no, QStringList { "RecordTypeRepeated|4|B||1", "RecordTypeRepeated|7|C||1" });
    row("second value set",
        "[Item]\nName=A\nLen=1\n[ValueSet]\nName=V\nValue=1;x\n[ValueSet]\nName=W\nValue=2;y", no,
        QStringList { "ValueSetIgnored|7|A|W|" });
    row("second value set of a repeated item",
        "[Item]\nName=X\nLen=1\n[Item]\nName=A\nLen=1\nOccurrences=3\n"
        "[ValueSet]\nName=V\nValue=1;x\n[ValueSet]\nLabel=no name",
        no, QStringList { "ValueSetIgnored|11|A||" });
    row("value set before any item", "[Record]\nName=R\n[ValueSet]\nName=V\nValue=1;x", no,
        QStringList { "ValueSetWithoutItem|3||V|" });
    row("first item of the file is repeated",
        "[Item]\nName=A\nLen=1\nOccurrences=2\n[ValueSet]\nName=V\nValue=1;x", no,
        QStringList { "ValueSetOnLastOccurrence|5|A|V|" });
    row("decimal codes are dropped",
        "[Item]\nName=A\nLen=1\n[ValueSet]\nName=V\nValue=1;x\nValue=2.5;y\nValue=3.5;z", no,
        QStringList { "DecimalCodesDropped|4|A|V|2.5" });
    row("decimal codes become zero",
        "[Item]\nName=A\nLen=1\n[ValueSet]\nName=V\nValue=1;x\nValue=2.5;y\nValue=3.5;z",
        int(QMessageBox::Yes), QStringList { "DecimalCodesConverted|4|A|V|2.5" });
    row("code is no integer",
        "[Item]\nName=A\nLen=1\n[ValueSet]\nName=V\nValue=1;x\nValue='B';y\nValue=C;z", no,
        QStringList { "CodesNotInteger|4|A|V|B" });
    row("no answer to the decimal question",
        "[Item]\nName=A\nLen=1\n[ValueSet]\nName=V\nValue=2.5;y", int(QMessageBox::Cancel),
        QStringList { "CodesNotInteger|4|A|V|2.5" });
    row("in order of the lines",
        "[ValueSet]\nName=V\n[Item]\nName=A\n[Item]\nName=B\nLen=1\nOccurrences=0\n"
        "[ValueSet]\nName=W\nValue=1.0;x\n[ValueSet]\nName=U\nValue=1;x\n[ValueSet]\nName=T",
        no,
        QStringList { "ValueSetWithoutItem|1||V|", "ItemWithoutLength|3|A||0", "ItemDropped|5|B||0",
            "DecimalCodesDropped|9|A|W|1.0", "ValueSetIgnored|15|A|T|" });
}

void tst_CSProProblems::problems()
{
    QFETCH(QString, text);
    QFETCH(int, answer);
    QFETCH(QStringList, problems);
    TCSPro parser;
    parser.setDecimalQuestion([answer](const CSProProblem&) { return answer; });
    parse(parser, text);
    QCOMPARE(problemTexts(parser), problems);
}

QTEST_MAIN(tst_CSProProblems)

#include "tst_CSProProblems.moc"
