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

// A question that remembers the answer for all, and the button of its last box.
struct Question {
    void (TCSPro::*ask)(const QString&, const QString&, const QString&, QMessageBox::Icon);
    int TCSPro::*answer;
    int TCSPro::*button;
};

const Question decimalQuestion { &TCSPro::showMessageBoxDecimal, &TCSPro::decimalAnswer,
    &TCSPro::decimalButton };
const Question undefinedQuestion { &TCSPro::showMessageBoxUndefined, &TCSPro::undefinedAnswer,
    &TCSPro::undefinedButton };

} // namespace

class tst_CSProMessageBox : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();

    void messageBox_data();
    void messageBox();
    void theMessageBoxIsReused();
    void questions_data();
    void questions();
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

void tst_CSProMessageBox::questions_data()
{
    QTest::addColumn<bool>("isDecimal");
    QTest::addColumn<int>("answer");
    QTest::addColumn<int>("boxes");
    for (const bool isDecimal : { true, false }) {
        const char* const name = isDecimal ? "decimal" : "undefined";
        QTest::addRow("%s: not answered yet", name) << isDecimal << 0 << 1;
        QTest::addRow("%s: yes to all", name) << isDecimal << 1 << 0;
        QTest::addRow("%s: no to all", name) << isDecimal << 2 << 0;
        QTest::addRow("%s: asked every time", name) << isDecimal << 3 << 1;
    }
}

// Nothing but the button is stored, and nothing of the other question: who asks stores the answer
// for all.
void tst_CSProMessageBox::questions()
{
    QFETCH(bool, isDecimal);
    QFETCH(int, answer);
    QFETCH(int, boxes);
    const Question& asked = isDecimal ? decimalQuestion : undefinedQuestion;
    const Question& other = isDecimal ? undefinedQuestion : decimalQuestion;
    TCSPro parser;
    parser.*asked.answer = answer;
    parser.*asked.button = -1;
    parser.*other.answer = 1;
    parser.*other.button = -2;
    BoxUser user({ QMessageBox::YesToAll });
    (parser.*asked.ask)("text", "more", "title", QMessageBox::Information);
    QCOMPARE(user.boxes, boxes);
    QCOMPARE(parser.*asked.button, boxes > 0 ? int(QMessageBox::YesToAll) : -1);
    QCOMPARE(parser.*asked.answer, answer);
    QCOMPARE(parser.*other.button, -2);
    QCOMPARE(parser.*other.answer, 1);
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
