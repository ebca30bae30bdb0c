#include "AddRow.h"
#include "CSProTexts.h"
#include "ErrorOf.h"
#include "ValueSetEntries.h"

#include <model_Tessel/CSPro.h>
#include <model_Tessel/CSProValueSet.h>
#include <model_Tessel/ErrorManager.h>

#include <QLoggingCategory>
#include <QRandomGenerator>
#include <QRegExp>
#include <QtTest>

class tst_CSProValueSet : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();

    void startValues();
    void addItem();
    void setValueSetItem_data();
    void setValueSetItem();
    void setValueSetItemOutside_data();
    void setValueSetItemOutside();

    void isNumeric2_data();
    void isNumeric2();
    void isNumeric2IsToInt();
    void isDecimal_data();
    void isDecimal();
    void isDecimalIsTheExpression();
    void compareCodes_data();
    void compareCodes();
    void compareCodesWithNull();
    void compareCodesNumeric_data();
    void compareCodesNumeric();

    void validateItems_data();
    void validateItems();
    void itemsAsNumberZero_data();
    void itemsAsNumberZero();
    void itemsAsInteger_data();
    void itemsAsInteger();
    void aNullEntryIsError101_data();
    void aNullEntryIsError101();
    void aNullEntryOfATextSetIsNoError();
};

void tst_CSProValueSet::initTestCase()
{
    QLoggingCategory::setFilterRules(QStringLiteral("default.debug=false"));
}

void tst_CSProValueSet::startValues()
{
    const TCSProValueSet set;
    QCOMPARE(set.label, QString());
    QCOMPARE(set.name, QString());
    QCOMPARE(set.reservedText, QString());
    QCOMPARE(set.isNumeric, true);
    QVERIFY(set.items && set.items->isEmpty());
    QCOMPARE(set.getCount(), 0);
    QCOMPARE(set.metaObject()->className(), "TCSProValueSet");
    QVERIFY(!set.parent());

    const TValueSetItem entry;
    QCOMPARE(entry.label, QString());
    QCOMPARE(entry.code, character(3));
    QCOMPARE(entry.type, 0);
    QCOMPARE(entry.special, false);
    QCOMPARE(entry.metaObject()->className(), "QObject");
    QVERIFY(!entry.parent());
}

void tst_CSProValueSet::addItem()
{
    TCSProValueSet set;
    TValueSetItem first;
    TValueSetItem second;
    set.addItem(&first);
    set.addItem(&second);
    set.addItem(&first);
    QCOMPARE(set.getCount(), 3);
    QCOMPARE(*set.items, (QList<TValueSetItem*> { &first, &second, &first }));
    QCOMPARE(set.getValueSetItem(1), &second);
    QVERIFY(!first.parent());
}

void tst_CSProValueSet::setValueSetItem_data()
{
    QTest::addColumn<QStringList>("codes");
    QTest::addColumn<int>("position");
    QTest::addColumn<QStringList>("result");

    row("before the first", QStringList { "1", "2" }, 0, QStringList { "x", "1", "2" });
    row("in the middle, nothing is replaced", QStringList { "1", "2" }, 1,
        QStringList { "1", "x", "2" });
    row("behind the last", QStringList { "1", "2" }, 2, QStringList { "1", "2", "x" });
    row("into an empty set", QStringList(), 0, QStringList { "x" });
}

void tst_CSProValueSet::setValueSetItem()
{
    QFETCH(QStringList, codes);
    QFETCH(int, position);
    QFETCH(QStringList, result);
    OwnedValueSet set(codes);
    TValueSetItem entry;
    entry.code = QStringLiteral("x");
    set.setValueSetItem(position, &entry);
    QCOMPARE(codesOf(set), result);
    QCOMPARE(set.getValueSetItem(position), &entry);
}

void tst_CSProValueSet::setValueSetItemOutside_data()
{
    QTest::addColumn<int>("position");
    row("just behind the end", 3);
    row("far behind the end", 1000);
    row("before the start", -1);
    row("far before the start", -1000);
}

void tst_CSProValueSet::setValueSetItemOutside()
{
    QFETCH(int, position);
    OwnedValueSet set({ "1", "2" });
    TValueSetItem entry;
    const ErrorPointer error = errorOf([&] { set.setValueSetItem(position, &entry); });
    QVERIFY(error);
    QCOMPARE(error->className, QString("CSProValueSet"));
    QCOMPARE(error->code, 211);
    QCOMPARE(error->text, QString::number(position));
    QCOMPARE(error->line, 0);
    QVERIFY(error->getErrorMessage().endsWith(
        QStringLiteral("Message : Unknow or not set error\r\n[%1 ]").arg(position)));
    QCOMPARE(codesOf(set), (QStringList { "1", "2" }));
}

void tst_CSProValueSet::isNumeric2_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("result");

    row("digit", "7", true);
    row("zero", "0", true);
    row("leading zeros", "007", true);
    row("negative", "-5", true);
    row("with a plus", "+5", true);
    row("blanks around", " 5 ", true);
    row("largest", "2147483647", true);
    row("smallest", "-2147483648", true);
    row("too large", "2147483648", false);
    row("too small", "-2147483649", false);
    row("nothing", "", false);
    row("blank", " ", false);
    row("sign alone", "-", false);
    row("decimal point", "1.5", false);
    row("decimal point without decimals", "1.", false);
    row("exponent", "1e3", false);
    row("hexadecimal", "0x10", false);
    row("hexadecimal digit", "A", false);
    row("grouped", "1,000", false);
    row("letters", "1a", false);
    row("two numbers", "1 2", false);
    row("range", "1:5", false);
    row("start value of a code", "\x03", false);
}

void tst_CSProValueSet::isNumeric2()
{
    QFETCH(QString, text);
    QFETCH(bool, result);
    QCOMPARE(IsNumeric2(text), result);
}

void tst_CSProValueSet::isNumeric2IsToInt()
{
    const QString letters =
        QStringLiteral("01234567890123456789+-. ,ea\t\n\u0663\u00a0\u2212\uff15\u0000'xX");
    QRandomGenerator random(21);
    int integers = 0;
    for (int i = 0; i < 50'000; ++i) {
        const int alphabet = random.bounded(2) == 0 ? 22 : letters.size();
        QString text;
        for (int size = random.bounded(13); size > 0; --size)
            text += letters.at(random.bounded(alphabet));
        bool wanted = false;
        const int number = text.toInt(&wanted, 10);
        QVERIFY2(IsNumeric2(text) == wanted, qPrintable(text));
        integers += wanted ? 1 : 0;

        TValueSetItem entry;
        TValueSetItem one;
        entry.code = text;
        one.code = QStringLiteral("1");
        QCOMPARE(CompareCodesNumeric(&entry, &one), !wanted || number < 1);
        QCOMPARE(CompareCodesNumeric(&one, &entry), !wanted || 1 < number);
    }
    QVERIFY(integers > 1000);
}

void tst_CSProValueSet::isDecimal_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("result");

    row("digits on both sides", "1.5", true);
    row("digits before the point", "12.", true);
    row("digits behind the point", ".25", true);
    row("point alone", ".", true);
    row("zeros", "0.0", true);
    row("nothing", "", false);
    row("integer", "15", false);
    row("negative", "-1.5", false);
    row("with a plus", "+1.5", false);
    row("two points", "1.2.3", false);
    row("two points side by side", "..", false);
    row("blank before", " 1.5", false);
    row("blank behind", "1.5 ", false);
    row("comma", "1,5", false);
    row("exponent", "1.5e3", false);
    row("letter", "1.a", false);
    row("line end behind", "1.5\n", false);
    row("digits of another script", QStringLiteral("\u0661.\u0665"), true);
}

void tst_CSProValueSet::isDecimal()
{
    QFETCH(QString, text);
    QFETCH(bool, result);
    QCOMPARE(IsDecimal(text), result);
    QCOMPARE(QRegExp(QStringLiteral("\\d*\\.\\d*$")).exactMatch(text), result);
}

void tst_CSProValueSet::isDecimalIsTheExpression()
{
    const QString letters =
        QStringLiteral("0123456789......+- ea\n\u0663\u00b2\u2460\uff15\u0000'$");
    QRegExp expression(QStringLiteral("\\d*\\.\\d*$"), Qt::CaseSensitive);
    QRandomGenerator random(20);
    int decimals = 0;
    for (int i = 0; i < 50'000; ++i) {
        const int alphabet = random.bounded(2) == 0 ? 12 : letters.size();
        QString text;
        for (int size = random.bounded(7); size > 0; --size)
            text += letters.at(random.bounded(alphabet));
        const bool wanted = expression.exactMatch(text);
        QVERIFY2(IsDecimal(text) == wanted, qPrintable(text));
        decimals += wanted ? 1 : 0;
    }
    QVERIFY(decimals > 1000);
}

void tst_CSProValueSet::compareCodes_data()
{
    QTest::addColumn<QString>("first");
    QTest::addColumn<QString>("second");
    QTest::addColumn<int>("sign");

    row("equal", "A", "A", 0);
    row("smaller", "A", "B", -1);
    row("larger", "B", "A", 1);
    row("case counts", "a", "A", 1);
    row("prefix is smaller", "A", "AA", -1);
    row("text order of numbers", "10", "9", -1);
    row("blanks count", "1 ", "1", 1);
    row("empty is smallest", "", "0", -1);
    row("both empty", "", "", 0);
    row("by character code", QStringLiteral("z"), QStringLiteral("\u00e9"), -1);
}

void tst_CSProValueSet::compareCodes()
{
    QFETCH(QString, first);
    QFETCH(QString, second);
    QFETCH(int, sign);
    TValueSetItem a;
    TValueSetItem b;
    a.code = first;
    b.code = second;
    a.label = second;
    const auto signOf = [](int order) { return order < 0 ? -1 : order > 0 ? 1 : 0; };
    QCOMPARE(signOf(CompareCodes(&a, &b)), sign);
    QCOMPARE(signOf(CompareCodes(&b, &a)), -sign);
    QCOMPARE(CompareCodes(&a, &a), 0);
}

void tst_CSProValueSet::compareCodesWithNull()
{
    TValueSetItem entry;
    entry.code = QStringLiteral("1");
    QCOMPARE(CompareCodes(nullptr, &entry), -1);
    QCOMPARE(CompareCodes(&entry, nullptr), -1);
    QCOMPARE(CompareCodes(nullptr, nullptr), -1);
    QCOMPARE(CompareCodesNumeric(nullptr, &entry), true);
    QCOMPARE(CompareCodesNumeric(&entry, nullptr), true);
    QCOMPARE(CompareCodesNumeric(nullptr, nullptr), true);
}

void tst_CSProValueSet::compareCodesNumeric_data()
{
    QTest::addColumn<QString>("first");
    QTest::addColumn<QString>("second");
    QTest::addColumn<bool>("forward");
    QTest::addColumn<bool>("backward");

    row("smaller", "1", "2", true, false);
    row("equal", "2", "2", false, false);
    row("equal, written otherwise", "2", "+02", false, false);
    row("by number, not by text", "9", "10", true, false);
    row("negative", "-3", "-2", true, false);
    row("the ends of the range", "-2147483648", "2147483647", true, false);
    row("first is no integer", "x", "1", true, true);
    row("second is no integer", "1", "x", true, true);
    row("neither is", "x", "y", true, true);
    row("same text that is no integer", "x", "x", true, true);
    row("a decimal is no integer", "1.5", "1", true, true);
    row("empty is no integer", "", "", true, true);
    row("too large is no integer", "2147483648", "1", true, true);
}

void tst_CSProValueSet::compareCodesNumeric()
{
    QFETCH(QString, first);
    QFETCH(QString, second);
    QFETCH(bool, forward);
    QFETCH(bool, backward);
    TValueSetItem a;
    TValueSetItem b;
    a.code = first;
    b.code = second;
    QCOMPARE(CompareCodesNumeric(&a, &b), forward);
    QCOMPARE(CompareCodesNumeric(&b, &a), backward);
}

void tst_CSProValueSet::validateItems_data()
{
    QTest::addColumn<QStringList>("codes");
    QTest::addColumn<bool>("noDecimals"); // mode 0
    QTest::addColumn<bool>("integersOnly"); // mode 1

    row("no entry", QStringList(), true, true);
    row("integers", QStringList { "1", "-2", "003" }, true, true);
    row("one decimal among integers", QStringList { "1", "2.5", "3" }, false, false);
    row("decimal last", QStringList { "1", "3", "." }, false, false);
    row("text", QStringList { "1", "A" }, true, false);
    row("negative decimal is no decimal but no integer either", QStringList { "-2.5" }, true,
        false);
    row("range", QStringList { "1:5" }, true, false);
    row("two codes in one", QStringList { "1 2" }, true, false);
    row("empty code", QStringList { "" }, true, false);
    row("too large a number", QStringList { "2147483648" }, true, false);
}

void tst_CSProValueSet::validateItems()
{
    QFETCH(QStringList, codes);
    QFETCH(bool, noDecimals);
    QFETCH(bool, integersOnly);
    OwnedValueSet numbers(codes);
    QCOMPARE(numbers.validateItems(0), noDecimals);
    QCOMPARE(numbers.validateItems(1), integersOnly);
    QCOMPARE(numbers.validateItems(2), true);
    QCOMPARE(numbers.validateItems(-1), true);
    OwnedValueSet texts(codes, false);
    QCOMPARE(texts.validateItems(0), true);
    QCOMPARE(texts.validateItems(1), true);
    QCOMPARE(codesOf(numbers), codes);
}

void tst_CSProValueSet::itemsAsNumberZero_data()
{
    QTest::addColumn<QStringList>("codes");
    QTest::addColumn<QStringList>("zeros");

    row("no entry", QStringList(), QStringList());
    row("integers stay as written", QStringList { "1", " 2", "+03" },
        QStringList { "1", " 2", "+03" });
    row("all that is no integer becomes 0", QStringList { "1.5", "A", "", "-1.5", "1:5", "7" },
        QStringList { "0", "0", "0", "0", "0", "7" });
    row("too large becomes 0", QStringList { "9999999999" }, QStringList { "0" });
}

void tst_CSProValueSet::itemsAsNumberZero()
{
    QFETCH(QStringList, codes);
    QFETCH(QStringList, zeros);
    OwnedValueSet numbers(codes);
    numbers.itemsAsNumberZero();
    QCOMPARE(codesOf(numbers), zeros);
    OwnedValueSet texts(codes, false);
    texts.itemsAsNumberZero();
    QCOMPARE(codesOf(texts), codes);
}

void tst_CSProValueSet::itemsAsInteger_data()
{
    QTest::addColumn<QStringList>("codes");
    QTest::addColumn<QStringList>("integers");

    row("no entry", QStringList(), QStringList());
    row("rounded down and up", QStringList { "1.4", "1.6", "2.49" }, QStringList { "1", "2", "2" });
    row("digits on one side", QStringList { "7.", ".7", "." }, QStringList { "7", "1", "0" });
    row("what is no decimal stays", QStringList { "1", "-1.6", "A", "1.5 ", "" },
        QStringList { "1", "-1.6", "A", "1.5 ", "" });
    row("leading zeros go with a decimal", QStringList { "007.0", "007" },
        QStringList { "7", "007" });
    row("as a single-precision number", QStringList { "16777217.0" }, QStringList { "16777216" });
    row("no exponent", QStringList { "1000000000.0" }, QStringList { "1000000000" });
}

void tst_CSProValueSet::itemsAsInteger()
{
    QFETCH(QStringList, codes);
    QFETCH(QStringList, integers);
    OwnedValueSet numbers(codes);
    numbers.itemsAsInteger();
    QCOMPARE(codesOf(numbers), integers);
    OwnedValueSet texts(codes, false);
    texts.itemsAsInteger();
    QCOMPARE(codesOf(texts), codes);
}

void tst_CSProValueSet::aNullEntryIsError101_data()
{
    QTest::addColumn<int>("operation");
    row("check for decimals", 0);
    row("check for integers", 1);
    row("codes to zero", 2);
    row("codes to integers", 3);
}

void tst_CSProValueSet::aNullEntryIsError101()
{
    QFETCH(int, operation);
    OwnedValueSet set({ "1" });
    set.addItem(nullptr);
    const ErrorPointer error = errorOf([&] {
        switch (operation) {
        case 0:
        case 1:
            set.validateItems(operation);
            break;
        case 2:
            set.itemsAsNumberZero();
            break;
        default:
            set.itemsAsInteger();
        }
    });
    QVERIFY(error);
    QCOMPARE(error->className, QString("CSProValueSet"));
    QCOMPARE(error->code, 101);
    QCOMPARE(error->text, QString());
    QCOMPARE(error->line, 0);
}

void tst_CSProValueSet::aNullEntryOfATextSetIsNoError()
{
    TCSProValueSet set;
    set.isNumeric = false;
    set.addItem(nullptr);
    QVERIFY(!errorOf([&] {
        QCOMPARE(set.validateItems(0), true);
        QCOMPARE(set.validateItems(1), true);
        set.itemsAsNumberZero();
        set.itemsAsInteger();
    }));
    set.isNumeric = true;
    QVERIFY(!errorOf([&] { QCOMPARE(set.validateItems(2), true); }));
    QCOMPARE(set.getCount(), 1);
    QVERIFY(!set.getValueSetItem(0));
}

QTEST_MAIN(tst_CSProValueSet)

#include "tst_CSProValueSet.moc"
