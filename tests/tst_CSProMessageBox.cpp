#include "AddRow.h"
#include "CSProTexts.h"
#include "MessageBoxUser.h"

#include <model_Tessel/CSPro.h>

#include <QLoggingCategory>
#include <QMessageBox>
#include <QTranslator>
#include <QtTest>

namespace {

// Translates every text into itself between angle quotes.
class MarkingTranslator : public QTranslator {
public:
    QString translate(const char*, const char* sourceText, const char*, int) const override
    {
        return QLatin1Char('<') + QString::fromLatin1(sourceText) + QLatin1Char('>');
    }

    bool isEmpty() const override
    {
        return false;
    }
};

} // namespace

class tst_CSProMessageBox : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();

    void messageBox_data();
    void messageBox();
    void theMessageBoxIsReused();
    void undefinedQuestion_data();
    void undefinedQuestion();
    void theDecimalQuestionIsTranslated();
};

void tst_CSProMessageBox::initTestCase()
{
    QLoggingCategory::setFilterRules(QStringLiteral("default.debug=false"));
}

void tst_CSProMessageBox::messageBox_data()
{
    QTest::addColumn<int>("button");
    row("yes", int(QMessageBox::Yes));
    row("yes to all", int(QMessageBox::YesToAll));
    row("no", int(QMessageBox::No));
    row("no to all", int(QMessageBox::NoToAll));
}

void tst_CSProMessageBox::messageBox()
{
    QFETCH(int, button);
    TCSPro parser;
    BoxUser user({ button });
    QCOMPARE(
        parser.showMessageBox("<b>text</b>", "more", "title", QMessageBox::Warning), int(button));
    QCOMPARE(user.boxes, 1);
    QCOMPARE(user.box, parser.msgBox);
    QVERIFY(user.isModal);
    QCOMPARE(user.text, QString("<b>text</b>"));
    QCOMPARE(user.informativeText, QString("more"));
    QCOMPARE(user.title, QString("title"));
    QCOMPARE(user.icon, QMessageBox::Warning);
    QCOMPARE(user.format, Qt::RichText);
    QCOMPARE(user.minimumSize, QSize(300, 200));
    QCOMPARE(user.buttons,
        QMessageBox::Yes | QMessageBox::YesToAll | QMessageBox::No | QMessageBox::NoToAll);
    QCOMPARE(user.defaultButton, QMessageBox::No);
    QCOMPARE(parser.decimalButton, 0);
    QCOMPARE(parser.undefinedButton, 0);
}

void tst_CSProMessageBox::theMessageBoxIsReused()
{
    TCSPro parser;
    const QMessageBox* box = parser.msgBox;
    BoxUser user({ QMessageBox::No });
    parser.showMessageBox("one", "1", "first", QMessageBox::Question);
    parser.showMessageBox("two", "2", "second", QMessageBox::Critical);
    QCOMPARE(user.boxes, 2);
    QCOMPARE(parser.msgBox, box);
    QCOMPARE(user.text, QString("two"));
    QCOMPARE(user.informativeText, QString("2"));
    QCOMPARE(user.title, QString("second"));
    QCOMPARE(user.icon, QMessageBox::Critical);
}

void tst_CSProMessageBox::undefinedQuestion_data()
{
    QTest::addColumn<int>("answer");
    QTest::addColumn<int>("boxes");
    row("not answered yet", 0, 1);
    row("yes to all", 1, 0);
    row("no to all", 2, 0);
    row("asked every time", 3, 1);
}

// Nothing but the button is stored: who asks stores the answer for all.
void tst_CSProMessageBox::undefinedQuestion()
{
    QFETCH(int, answer);
    QFETCH(int, boxes);
    TCSPro parser;
    parser.undefinedAnswer = answer;
    parser.undefinedButton = -1;
    parser.decimalButton = -2;
    parser.decimalAnswer = 1;
    BoxUser user({ QMessageBox::YesToAll });
    parser.showMessageBoxUndefined("text", "more", "title", QMessageBox::Information);
    QCOMPARE(user.boxes, boxes);
    QCOMPARE(parser.undefinedButton, boxes > 0 ? int(QMessageBox::YesToAll) : -1);
    QCOMPARE(parser.undefinedAnswer, answer);
    QCOMPARE(parser.decimalButton, -2);
    QCOMPARE(parser.decimalAnswer, 1);
    if (boxes > 0) {
        QCOMPARE(user.text, QString("text"));
        QCOMPARE(user.informativeText, QString("more"));
        QCOMPARE(user.title, QString("title"));
        QCOMPARE(user.icon, QMessageBox::Information);
    }
}

void tst_CSProMessageBox::theDecimalQuestionIsTranslated()
{
    MarkingTranslator translator;
    QVERIFY(QCoreApplication::installTranslator(&translator));
    TCSPro parser;
    BoxUser user({ QMessageBox::No });
    parse(parser, "[Item]\nName=A\n[ValueSet]\nValue=1.5;x");
    QCoreApplication::removeTranslator(&translator);
    QCOMPARE(user.boxes, 1);
    QCOMPARE(user.text, QString("<<b>A decimal number was found</b>>"));
    QCOMPARE(user.informativeText, QString("<Would you like to convert it to an integer number?>"));
    QCOMPARE(user.title, QString("<Caution>"));
}

QTEST_MAIN(tst_CSProMessageBox)

#include "tst_CSProMessageBox.moc"
