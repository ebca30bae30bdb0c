#include "AddRow.h"
#include "CSProTexts.h"
#include "MessageBoxUser.h"
#include "ValueSetEntries.h"

#include <model_Tessel/CSPro.h>
#include <model_Tessel/CSProValueSet.h>

#include <QLoggingCategory>
#include <QMessageBox>
#include <QtTest>

#include <algorithm>

class tst_CSProDecimalQuestion : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();

    void decimalQuestion_data();
    void decimalQuestion();
    void decimalQuestionThroughAHandler_data();
    void decimalQuestionThroughAHandler();
    void theHandlerGetsTheCase();
    void theAnswerForAllIsRemembered_data();
    void theAnswerForAllIsRemembered();
    void noQuestion_data();
    void noQuestion();
};

void tst_CSProDecimalQuestion::initTestCase()
{
    QLoggingCategory::setFilterRules(QStringLiteral("default.debug=false"));
}

void tst_CSProDecimalQuestion::decimalQuestion_data()
{
    QTest::addColumn<int>("button");
    QTest::addColumn<int>("answer");
    QTest::addColumn<QStringList>("entries");

    const QStringList zeros { "0|b", "0|d", "1|a", "7|c" };
    const QStringList none { "none" };
    row("yes", int(QMessageBox::Yes), 0, zeros);
    row("yes to all", int(QMessageBox::YesToAll), 1, zeros);
    row("no", int(QMessageBox::No), 0, none);
    row("no to all", int(QMessageBox::NoToAll), 2, none);
}

void tst_CSProDecimalQuestion::decimalQuestion()
{
    QFETCH(int, button);
    QFETCH(int, answer);
    QFETCH(QStringList, entries);
    TCSPro parser;
    BoxUser user({ button });
    parse(parser, dictionary("Numeric", "Value=7;c\nValue=1.5;b\nValue=X;d\nValue=1;a"));
    QCOMPARE(user.boxes, 1);
    QVERIFY(user.isWholeQuestion());
    QCOMPARE(user.text, QString("<b>A decimal number was found</b>"));
    QCOMPARE(user.informativeText, QString("Would you like to convert it to an integer number?"));
    QCOMPARE(user.title, QString("Caution"));
    QCOMPARE(parser.decimalButton, button);
    QCOMPARE(parser.decimalAnswer, answer);
    QCOMPARE(parser.undefinedAnswer, 0);
    QCOMPARE(parser.undefinedButton, 0);
    QStringList found = entriesOf(parser);
    std::sort(found.begin(), found.end());
    QCOMPARE(found, entries);
    QCOMPARE(entriesOf(parser).mid(2), entries.mid(2));
}

void tst_CSProDecimalQuestion::decimalQuestionThroughAHandler_data()
{
    QTest::addColumn<int>("button");
    QTest::addColumn<int>("answer");
    QTest::addColumn<QStringList>("entries");

    row("yes", int(QMessageBox::Yes), 0, QStringList { "0|b", "1|a" });
    row("yes to all", int(QMessageBox::YesToAll), 1, QStringList { "0|b", "1|a" });
    row("no", int(QMessageBox::No), 0, QStringList { "none" });
    row("no to all", int(QMessageBox::NoToAll), 2, QStringList { "none" });
    row("no answer: the codes are no integers", int(QMessageBox::Cancel), 0,
        QStringList { "none" });
}

void tst_CSProDecimalQuestion::decimalQuestionThroughAHandler()
{
    QFETCH(int, button);
    QFETCH(int, answer);
    QFETCH(QStringList, entries);
    TCSPro parser;
    int asked = 0;
    parser.setDecimalQuestion([&](const CSProProblem&) {
        ++asked;
        return button;
    });
    BoxUser user({});
    parse(parser, dictionary("Numeric", "Value=1;a\nValue=1.5;b"));
    QCOMPARE(user.boxes, 0);
    QCOMPARE(asked, 1);
    QCOMPARE(parser.decimalButton, button);
    QCOMPARE(parser.decimalAnswer, answer);
    QCOMPARE(entriesOf(parser), entries);
}

void tst_CSProDecimalQuestion::theHandlerGetsTheCase()
{
    TCSPro parser;
    QList<CSProProblem> cases;
    parser.setDecimalQuestion([&](const CSProProblem& problem) {
        cases.append(problem);
        return int(QMessageBox::No);
    });
    parse(parser,
        "[Item]\nName=X\n[Item]\nName=A\nOccurrences=2\n[ValueSet]\nName=V\nValue=1;a\n"
        "Value=.5;b\nValue=2.5;c\n[Item]\nName=B\n\n[ValueSet]\nValue=7.;d");
    QCOMPARE(cases.size(), 2);
    QCOMPARE(cases.at(0).kind, CSProProblem::Kind::DecimalCodesDropped);
    QCOMPARE(cases.at(0).line, 6);
    QCOMPARE(cases.at(0).name, QString("A"));
    QCOMPARE(cases.at(0).valueSet, QString("V"));
    QCOMPARE(cases.at(0).text, QString(".5"));
    QCOMPARE(cases.at(1).line, 14);
    QCOMPARE(cases.at(1).name, QString("B"));
    QCOMPARE(cases.at(1).valueSet, QString());
    QCOMPARE(cases.at(1).text, QString("7."));
}

void tst_CSProDecimalQuestion::theAnswerForAllIsRemembered_data()
{
    QTest::addColumn<bool>("throughHandler");
    QTest::addColumn<QList<int>>("buttons");
    QTest::addColumn<int>("questions");
    QTest::addColumn<QStringList>("codes"); // of three items; "none": the set was dropped

    const int yes = QMessageBox::Yes;
    const int yesToAll = QMessageBox::YesToAll;
    const int no = QMessageBox::No;
    const int noToAll = QMessageBox::NoToAll;
    for (bool handler : { false, true }) {
        const char* const way = handler ? "handler" : "dialog";
        const auto add = [&](const char* name, const QList<int>& buttons, int questions,
                             const QStringList& codes) {
            QTest::addRow("%s: %s", way, name) << handler << buttons << questions << codes;
        };
        add("one by one", { yes, no, yes }, 3, { "0", "none", "0" });
        add("yes to all at once", { yesToAll }, 1, { "0", "0", "0" });
        add("no to all at once", { noToAll }, 1, { "none", "none", "none" });
        add("yes to all after a no", { no, yesToAll }, 2, { "none", "0", "0" });
        add("no to all after a yes", { yes, noToAll }, 2, { "0", "none", "none" });
        add("to all for the last", { no, yes, noToAll }, 3, { "none", "0", "none" });
    }
}

void tst_CSProDecimalQuestion::theAnswerForAllIsRemembered()
{
    QFETCH(bool, throughHandler);
    QFETCH(QList<int>, buttons);
    QFETCH(int, questions);
    QFETCH(QStringList, codes);
    TCSPro parser;
    int asked = 0;
    if (throughHandler)
        parser.setDecimalQuestion([&](const CSProProblem&) { return buttons.value(asked++); });
    BoxUser user(buttons);
    parse(parser,
        "[Item]\nName=A\n[ValueSet]\nValue=1.5;a\n[Item]\nName=W\n[ValueSet]\nValue=1;whole\n"
        "[Item]\nName=B\n[ValueSet]\nValue=2.5;b\n[Item]\nName=T\nDataType=Alpha\n[ValueSet]\n"
        "Value=4.5;text");
    // A second load remembers too.
    parse(parser, "[Item]\nName=C\n[ValueSet]\nValue=3.5;c");
    QCOMPARE(asked + user.boxes, questions);
    QCOMPARE(throughHandler ? user.boxes : asked, 0);
    QStringList found;
    for (int index : { 0, 2, 4 }) {
        TCSProItem* item = parser.getItem(index);
        found.append(item->getHasValueSet() ? item->getValueSet(0)->getValueSetItem(0)->code
                                            : QStringLiteral("none"));
    }
    QCOMPARE(found, codes);
    QCOMPARE(codesOf(*parser.getItem(1)->getValueSet(0)), QStringList { "1" });
    QCOMPARE(codesOf(*parser.getItem(3)->getValueSet(0)), QStringList { "4.5" });
    const int last = buttons.last();
    QCOMPARE(parser.decimalButton, last);
    QCOMPARE(parser.decimalAnswer,
        last == QMessageBox::YesToAll      ? 1
            : last == QMessageBox::NoToAll ? 2
                                           : 0);
}

void tst_CSProDecimalQuestion::noQuestion_data()
{
    QTest::addColumn<QString>("dataType");
    QTest::addColumn<QString>("lines");
    QTest::addColumn<QStringList>("entries");

    row("no decimal code", "Numeric", "Value=1;a\nValue=2;b", QStringList { "1|a", "2|b" });
    row("decimal code of an alphanumeric item", "Alpha", "Value=1.5;a\nValue=2.5;b",
        QStringList { "2.5|b", "1.5|a" });
    row("special decimal code", "Numeric", "Value=1;a\nValue=9.5;b\nName=MISSING ,Special",
        QStringList { "1|a" });
    row("code that is no number at all", "Numeric", "Value=A;a", QStringList { "none" });
    row("negative decimal code", "Numeric", "Value=-1.5;a", QStringList { "none" });
}

void tst_CSProDecimalQuestion::noQuestion()
{
    QFETCH(QString, dataType);
    QFETCH(QString, lines);
    QFETCH(QStringList, entries);
    TCSPro parser;
    BoxUser user({});
    parse(parser, dictionary(dataType, lines));
    QCOMPARE(user.boxes, 0);
    QCOMPARE(entriesOf(parser), entries);
    QCOMPARE(parser.decimalButton, 0);
}

QTEST_MAIN(tst_CSProDecimalQuestion)

#include "tst_CSProDecimalQuestion.moc"
