#include "DebugLines.h"
#include "ErrorOf.h"

#include <model_Tessel/BoundedSort_p.h>
#include <model_Tessel/CSPro.h>
#include <model_Tessel/CSProValueSet.h>
#include <model_Tessel/ErrorManager.h>

#include <QApplication>
#include <QElapsedTimer>
#include <QLoggingCategory>
#include <QMessageBox>
#include <QPushButton>
#include <QRandomGenerator>
#include <QRegExp>
#include <QTimer>
#include <QtTest>

#include <algorithm>
#include <cmath>
#include <memory>
#include <stdexcept>
#include <vector>

namespace {

// Adds a row to a table of test data.
template <typename... Values> void row(const char* name, const Values&... values)
{
    (QTest::newRow(name) << ... << values);
}

QString character(int code)
{
    return QString(QChar(static_cast<ushort>(code)));
}

void parse(TCSPro& parser, const QString& text)
{
    QStringList lines = text.split(QLatin1Char('\n'));
    parser.loadFromStr(&lines);
}

// A dictionary of one item with one value set.
QString dictionary(const QString& dataType, const QString& valueLines)
{
    return QStringLiteral("[Record]\nName=R\nRecordTypeValue='1'\n[Item]\nName=A\nLen=5\nDataType=")
        + dataType + QStringLiteral("\n[ValueSet]\nLabel=The codes\nName=V\n") + valueLines;
}

// The entries as "code|label".
QStringList entriesOf(const TCSProValueSet& set)
{
    QStringList texts;
    for (int i = 0; i < set.getCount(); ++i) {
        const TValueSetItem* entry = set.getValueSetItem(i);
        texts.append(entry->code + QLatin1Char('|') + entry->label);
    }
    return texts;
}

// The entries of the last item's value set; "none" when it has no value set.
QStringList entriesOf(const TCSPro& parser)
{
    return parser.lastItem->getHasValueSet() ? entriesOf(*parser.lastItem->getValueSet(0))
                                             : QStringList { "none" };
}

QStringList codesOf(const TCSProValueSet& set)
{
    QStringList codes;
    for (const TValueSetItem* entry : qAsConst(*set.items))
        codes.append(entry ? entry->code : QStringLiteral("null"));
    return codes;
}

// A value set whose entries go with it.
class OwnedValueSet : public TCSProValueSet {
public:
    explicit OwnedValueSet(const QStringList& codes = QStringList(), bool numeric = true)
    {
        isNumeric = numeric;
        for (const QString& code : codes)
            add(code);
    }

    TValueSetItem* add(const QString& code)
    {
        auto* entry = new TValueSetItem;
        entry->setParent(this);
        entry->code = code;
        addItem(entry);
        return entry;
    }
};

// Answers every modal message box with the next of its buttons and counts the boxes.
class BoxUser : public QObject {
public:
    explicit BoxUser(const QList<int>& buttons)
        : m_buttons(buttons)
    {
        m_timer.setInterval(1);
        connect(&m_timer, &QTimer::timeout, this, [this] {
            auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
            if (!box)
                return;
            text = box->text();
            informativeText = box->informativeText();
            title = box->windowTitle();
            isWholeQuestion = box->textFormat() == Qt::RichText
                && box->standardButtons()
                    == (QMessageBox::Yes | QMessageBox::YesToAll | QMessageBox::No
                        | QMessageBox::NoToAll)
                && box->standardButton(box->defaultButton()) == QMessageBox::No;
            const int button = m_buttons.value(boxes, QMessageBox::No);
            ++boxes;
            box->button(static_cast<QMessageBox::StandardButton>(button))->click();
        });
        m_timer.start();
    }

    int boxes = 0;
    QString text;
    QString informativeText;
    QString title;
    bool isWholeQuestion = false;

private:
    QList<int> m_buttons;
    QTimer m_timer;
};

/*
 * std::sort over a list with guards on both sides. Returns false, and leaves the list alone, when
 * the algorithm compares a guard, which is where it would leave the list.
 */
template <typename List, typename Compare>
bool sortedInside(List& list, const typename List::value_type& guard, Compare before)
{
    using Element = typename List::value_type;
    struct LeftList { };
    constexpr int guards = 4;
    std::vector<Element> padded(guards, guard);
    padded.insert(padded.end(), list.begin(), list.end());
    padded.insert(padded.end(), guards, guard);
    try {
        std::sort(padded.begin() + guards, padded.end() - guards,
            [&](const Element& first, const Element& second) -> bool {
                if (first == guard || second == guard)
                    throw LeftList();
                return before(first, second);
            });
    } catch (const LeftList&) {
        return false;
    }
    std::copy(padded.begin() + guards, padded.end() - guards, list.begin());
    return true;
}

bool isPermutation(QList<TValueSetItem*> first, QList<TValueSetItem*> second)
{
    std::sort(first.begin(), first.end(), std::less<>());
    std::sort(second.begin(), second.end(), std::less<>());
    return first == second;
}

} // namespace

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

    void sortsNumbers_data();
    void sortsNumbers();
    void sortsNumbersAsStdSort_data();
    void sortsNumbersAsStdSort();
    void sortsFewTextsIntoTheirReverse_data();
    void sortsFewTextsIntoTheirReverse();
    void sortsTextsAsStdSort_data();
    void sortsTextsAsStdSort();
    void sortKeepsEveryEntry_data();
    void sortKeepsEveryEntry();
    void sortsManyTextsInTime_data();
    void sortsManyTextsInTime();
    void boundedSortComparesLittle_data();
    void boundedSortComparesLittle();

    void valueLines_data();
    void valueLines();
    void valueLinesOfNumbers_data();
    void valueLinesOfNumbers();
    void theLastEntryIsNotSplit();
    void processOtherRanges_data();
    void processOtherRanges();
    void entriesAreNewOnes();
    void nameLines_data();
    void nameLines();
    void nameLinesKeepTheCodeOfADroppedSet();
    void specialCodesBelongToTheLastOccurrence();
    void keysOfTheSection_data();
    void keysOfTheSection();
    void debugLines_data();
    void debugLines();

    void theSetOfAnItem_data();
    void theSetOfAnItem();
    void occurrencesShareTheirSet();
    void theFirstItemOfTheFileGivesItsSetToItsLastOccurrence();
    void onlyOccurrencesInARowShareTheirSet();
    void theWalkOverOccurrencesBeginsAtTheLastItem();
    void theWalkOverOccurrencesWalkedAgain();
    void aSecondSetIsPassedOver_data();
    void aSecondSetIsPassedOver();
    void manySetsThatArePassedOver_data();
    void manySetsThatArePassedOver();
    void aSetBeforeAnyItem();
    void aDroppedSetLeavesRoomForTheNext();

    void decimalQuestion_data();
    void decimalQuestion();
    void decimalQuestionThroughAHandler_data();
    void decimalQuestionThroughAHandler();
    void theHandlerGetsTheCase();
    void theAnswerForAllIsRemembered_data();
    void theAnswerForAllIsRemembered();
    void noQuestion_data();
    void noQuestion();
    void showMessageBoxDecimal_data();
    void showMessageBoxDecimal();
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

void tst_CSProValueSet::sortsNumbers_data()
{
    QTest::addColumn<QStringList>("codes");
    QTest::addColumn<QStringList>("sorted");

    row("no entry", QStringList(), QStringList());
    row("one entry", QStringList { "5" }, QStringList { "5" });
    row("in order", QStringList { "1", "2", "9" }, QStringList { "1", "2", "9" });
    row("by number, not by text", QStringList { "10", "9", "100", "-1" },
        QStringList { "-1", "9", "10", "100" });
    row("as written", QStringList { "+3", "002", "1" }, QStringList { "1", "002", "+3" });
    row("ends of the range", QStringList { "2147483647", "0", "-2147483648" },
        QStringList { "-2147483648", "0", "2147483647" });
}

void tst_CSProValueSet::sortsNumbers()
{
    QFETCH(QStringList, codes);
    QFETCH(QStringList, sorted);
    OwnedValueSet set(codes);
    QList<TValueSetItem*>* const list = set.items;
    set.sortItems();
    QCOMPARE(codesOf(set), sorted);
    QCOMPARE(set.items, list);
}

void tst_CSProValueSet::sortsNumbersAsStdSort_data()
{
    QTest::addColumn<int>("differentCodes");
    QTest::addColumn<int>("odd"); // of a hundred codes, how many are no integer
    row("all alike", 1, 0);
    row("two codes", 2, 0);
    row("many of each", 7, 0);
    row("some of each", 100, 0);
    row("hardly any twice", 1'000'000, 0);
    row("few that are no integer", 1000, 3);
    row("many that are no integer", 5, 12);
}

// Which of two entries with one number comes first depends on every single step of the sort.
void tst_CSProValueSet::sortsNumbersAsStdSort()
{
    QFETCH(int, differentCodes);
    QFETCH(int, odd);
    QRandomGenerator random(static_cast<quint32>(differentCodes + odd));
    const QStringList oddCodes { "x", "", "1.5", "9999999999", "null" };
    const QStringList forms { "%1", "%1", "%1", "%1", " %1", "%1 ", "\t%1" };
    int compared = 0;
    int comparedLong = 0;
    for (int turn = 0; turn < 400; ++turn) {
        const int size = turn < 200 ? random.bounded(60) : random.bounded(600);
        OwnedValueSet set;
        for (int i = 0; i < size; ++i) {
            if (random.bounded(100) >= odd) {
                const int number = random.bounded(differentCodes) - differentCodes / 2;
                set.add(forms.at(random.bounded(forms.size())).arg(number));
                continue;
            }
            const QString& code = oddCodes.at(random.bounded(oddCodes.size()));
            if (code == QLatin1String("null"))
                set.addItem(nullptr);
            else
                set.add(code);
        }
        const QList<TValueSetItem*> before = *set.items;
        TValueSetItem guard;
        QList<TValueSetItem*> wanted = before;
        const bool stayedInside = sortedInside(wanted, &guard,
            [](TValueSetItem* a, TValueSetItem* b) { return CompareCodesNumeric(a, b); });
        set.sortItems();
        QVERIFY(isPermutation(*set.items, before));
        if (!stayedInside)
            continue;
        QCOMPARE(*set.items, wanted);
        ++compared;
        comparedLong += size > 16 ? 1 : 0;
    }
    if (odd == 0)
        QCOMPARE(compared, 400);
    QVERIFY2(comparedLong > 10, qPrintable(QString::number(comparedLong)));
}

void tst_CSProValueSet::sortsFewTextsIntoTheirReverse_data()
{
    QTest::addColumn<int>("size");
    for (int size = 0; size <= 16; ++size)
        QTest::addRow("%d codes", size) << size;
}

void tst_CSProValueSet::sortsFewTextsIntoTheirReverse()
{
    QFETCH(int, size);
    QStringList codes;
    for (int i = 0; i < size; ++i)
        codes.append(QString::number((i * 7) % 17));
    OwnedValueSet set(codes, false);
    set.sortItems();
    std::reverse(codes.begin(), codes.end());
    QCOMPARE(codesOf(set), codes);
}

void tst_CSProValueSet::sortsTextsAsStdSort_data()
{
    QTest::addColumn<int>("differentCodes");
    QTest::addColumn<int>("mostEntries");
    QTest::addColumn<int>("nulls"); // of a hundred entries
    row("one code", 1, 500, 0);
    row("two codes, short lists", 2, 40, 0);
    row("two codes", 2, 500, 0);
    row("three codes", 3, 500, 0);
    row("five codes", 5, 300, 0);
    row("ten codes", 10, 100, 0);
    row("as many codes as entries, short lists", 20, 24, 0);
    row("two codes, long lists", 2, 4000, 0);
    row("two codes and some nulls", 2, 60, 3);
}

void tst_CSProValueSet::sortsTextsAsStdSort()
{
    QFETCH(int, differentCodes);
    QFETCH(int, mostEntries);
    QFETCH(int, nulls);
    QRandomGenerator random(static_cast<quint32>(differentCodes * 1000 + mostEntries));
    int compared = 0;
    int comparedLong = 0;
    const int turns = mostEntries > 1000 ? 60 : 600;
    for (int turn = 0; turn < turns; ++turn) {
        const int size = random.bounded(mostEntries) + 1;
        OwnedValueSet set(QStringList(), false);
        // Runs of one code as well as codes drawn one by one.
        const int longestRun = random.bounded(4) + 1;
        while (set.getCount() < size) {
            const QString code = QString::number(random.bounded(differentCodes));
            for (int run = random.bounded(longestRun) + 1; run > 0; --run) {
                if (random.bounded(100) < nulls)
                    set.addItem(nullptr);
                else
                    set.add(code);
            }
        }
        const QList<TValueSetItem*> before = *set.items;
        TValueSetItem guard;
        QList<TValueSetItem*> wanted = before;
        const bool stayedInside = sortedInside(wanted, &guard,
            [](TValueSetItem* a, TValueSetItem* b) { return CompareCodes(a, b) != 0; });
        set.sortItems();
        QVERIFY(isPermutation(*set.items, before));
        if (!stayedInside)
            continue;
        QCOMPARE(*set.items, wanted);
        ++compared;
        comparedLong += size > 16 ? 1 : 0;
    }
    QVERIFY2(compared > turns / 50, qPrintable(QString::number(compared)));
    QVERIFY2(comparedLong > 0, qPrintable(QString::number(comparedLong)));
}

void tst_CSProValueSet::sortKeepsEveryEntry_data()
{
    QTest::addColumn<bool>("numeric");
    QTest::addColumn<int>("size");
    QTest::addColumn<int>("nulls"); // of a hundred entries
    for (bool numeric : { false, true }) {
        const char* const kind = numeric ? "numbers" : "texts";
        for (int size : { 16, 17, 18, 31, 33, 100, 1000 }) {
            for (int nulls : { 0, 20, 100 })
                QTest::addRow("%d %s, %d%% null", size, kind, nulls) << numeric << size << nulls;
        }
    }
}

// Different codes and nulls, with which the sort would leave the list if it could.
void tst_CSProValueSet::sortKeepsEveryEntry()
{
    QFETCH(bool, numeric);
    QFETCH(int, size);
    QFETCH(int, nulls);
    QRandomGenerator random(static_cast<quint32>(size));
    for (int turn = 0; turn < 20; ++turn) {
        OwnedValueSet set(QStringList(), numeric);
        for (int i = 0; i < size; ++i) {
            if (random.bounded(100) < nulls)
                set.addItem(nullptr);
            else
                set.add(QString::number(i * 7919 % 10007) + (i % 3 == 0 ? "x" : ""));
        }
        const QList<TValueSetItem*> before = *set.items;
        set.sortItems();
        QVERIFY(isPermutation(*set.items, before));
    }
}

void tst_CSProValueSet::sortsManyTextsInTime_data()
{
    QTest::addColumn<int>("different");
    row("all different", 20'000);
    row("each a hundred times", 200);
    row("two codes", 2);
}

void tst_CSProValueSet::sortsManyTextsInTime()
{
    QFETCH(int, different);
    OwnedValueSet set(QStringList(), false);
    for (int i = 0; i < 20'000; ++i)
        set.add(QString::number(i * 7919 % different));
    const QList<TValueSetItem*> before = *set.items;
    QElapsedTimer timer;
    timer.start();
    set.sortItems();
    QVERIFY2(timer.elapsed() < 30'000, qPrintable(QString::number(timer.elapsed())));
    QVERIFY(isPermutation(*set.items, before));
}

void tst_CSProValueSet::boundedSortComparesLittle_data()
{
    QTest::addColumn<int>("different");
    QTest::addColumn<bool>("shuffled");
    for (int different : { 1, 2, 10, 100, 1000, 100'000 }) {
        QTest::addRow("%d different, shuffled", different) << different << true;
        QTest::addRow("%d different, in turn", different) << different << false;
    }
}

// As many comparisons as std::sort where that stays inside the list, O(n log n) where it does not.
void tst_CSProValueSet::boundedSortComparesLittle()
{
    QFETCH(int, different);
    QFETCH(bool, shuffled);
    for (int size : { 1000, 3000, 10'000 }) {
        QRandomGenerator random(5);
        std::vector<int> list;
        for (int i = 0; i < size; ++i)
            list.push_back(shuffled ? random.bounded(different) : i % different);
        std::vector<int> wanted = list;
        std::vector<int> all = list;

        qint64 comparisons = 0;
        const auto before = [&](int first, int second) {
            ++comparisons;
            return first != second;
        };
        const bool stayedInside = sortedInside(wanted, -1, before);
        const qint64 ofStdSort = comparisons;
        comparisons = 0;
        boundedSort(list, before);
        if (stayedInside) {
            QVERIFY(list == wanted);
            QCOMPARE(comparisons, ofStdSort);
        } else {
            const auto most = static_cast<qint64>(16 * size * std::log2(size));
            QVERIFY2(comparisons < most, qPrintable(QString::number(comparisons)));
        }
        std::sort(list.begin(), list.end());
        std::sort(all.begin(), all.end());
        QVERIFY(list == all);
    }
}

// For an alphanumeric item, whose different codes come out in the reverse of their order.
void tst_CSProValueSet::valueLines_data()
{
    QTest::addColumn<QString>("lines");
    QTest::addColumn<QStringList>("entries"); // in the order in which they are stored

    row("no line", "", QStringList());
    row("code and label", "Value=1;Yes", QStringList { "1|Yes" });
    row("code alone", "Value=7", QStringList { "7|" });
    row("nothing behind the sign", "Value=", QStringList { "|" });
    row("empty label", "Value=1;", QStringList { "1|" });
    row("capitals", "VALUE=1;Yes", QStringList { "1|Yes" });
    row("any case", "vAlUe=1;Yes", QStringList { "1|Yes" });
    row("indented", "   Value=1;Yes  ", QStringList { "1|Yes" });
    row("blanks inside stay", "Value=1; Yes and no", QStringList { "1| Yes and no" });
    row("blank before the sign: no value line", "Value =1;Yes", QStringList());
    row("text before the key: no value line", "xValue=1;Yes", QStringList());
    row("the key once more belongs to the code", "Value=VALUE=3;x", QStringList { "VALUE=3|x" });
    row("sign in the label", "Value=3;a=b", QStringList { "3|a=b" });
    row("several lines", "Value=1;a\nValue=2;b\nValue=3;c", QStringList { "1|a", "2|b", "3|c" });
    row("lines of other keys between", "Value=1;a\nNote=x\n\nLink=y\nValue=2;b",
        QStringList { "1|a", "2|b" });

    row("quotes go", "Value='A';Alpha", QStringList { "A|Alpha" });
    row("quotes go without a label", "Value='A'", QStringList { "A|" });
    row("quotes around blanks", "Value='A B';x", QStringList { "A B|x" });
    row("quotes with nothing inside", "Value='';x", QStringList { "|x" });
    row("one quote alone", "Value=';x", QStringList { "|x" });
    row("opening quote takes the last character with it", "Value='AB;x", QStringList { "A|x" });
    row("closing quote alone stays", "Value=AB';x", QStringList { "AB'|x" });
    row("quotes inside stay", "Value=A'B'C;x", QStringList { "A'B'C|x" });
    row("only the outer quotes go", "Value=''A'';x", QStringList { "'A'|x" });
    row("double quotes stay", "Value=\"A\";x", QStringList { "\"A\"|x" });
    row("blank before the quotes keeps them", "Value= 'A';x", QStringList { " 'A'|x" });

    row("range with a label", "Value=1:5;Low", QStringList { "1|Low", "5|Low" });
    row("range with an empty label", "Value=1:5;", QStringList { "1|", "5|" });
    row("range without a label keeps the colon", "Value=1:5", QStringList { "1|", ":5|" });
    row("open range without a label", "Value=1:", QStringList { "1|", ":|" });
    row("open range with a label", "Value=1:;x", QStringList { "1|x", "|x" });
    row("colon in the label is no range", "Value=1;a:b", QStringList { "1|a:b" });
    row("second colon belongs to the high bound", "Value=1:2:3;x", QStringList { "1|x", "2:3|x" });
    row("second colon without a label", "Value=1:2:3", QStringList { "1|", ":2:3|" });
    row("range and a colon in the label", "Value=1:5;a:b", QStringList { "1|a:b", "5|a:b" });
    row("quotes of a range stay", "Value='A':'C';x", QStringList { "'A'|x", "'C'|x" });
    row("quotes of a range without a label stay", "Value='A':'C'", QStringList { "'A'|", ":'C'|" });
    row("range before other lines", "Value=1:5;x\nValue=9;y", QStringList { "1|x", "5|x", "9|y" });
    row("range without a label before other lines", "Value=1:5\nValue=9;y",
        QStringList { "1|", ":5|", "9|y" });

    row("second semicolon belongs to the label", "Value=1;a;b", QStringList { "1|a;b" });
    row("second semicolon of a range belongs to the label", "Value=1:5;a;b",
        QStringList { "1|a;b", "5|a;b" });
    row("semicolon at the start is none", "Value=;a", QStringList { ";a|" });
    row("semicolon at the start, another later, is none", "Value=;a;b", QStringList { ";a;b|" });
    row("semicolon at the start of a range", "Value=;1:5", QStringList { ";1|", ":5|" });
    row("colon at the start is none", "Value=:5", QStringList { ":5|" });
    row("colon at the start with a label is none", "Value=:5;x", QStringList { ":5|x" });
    row("colon at the start, another later, is none", "Value=:5:6;x", QStringList { ":5:6|x" });
    row("semicolon alone", "Value=;", QStringList { ";|" });
    row("colon alone", "Value=:", QStringList { ":|" });

    row("two codes on the last line stay one", "Value=1 2;x", QStringList { "1 2|x" });
    row("two codes before another line are two", "Value=1 2;x\nValue=9;y",
        QStringList { "1|x", "2|x", "9|y" });
    row("many codes", "Value=1 2 3 4 5;x\nValue=9;y",
        QStringList { "1|x", "2|x", "3|x", "4|x", "5|x", "9|y" });
    row("two codes without a label", "Value=1 2\nValue=9;y", QStringList { "1|", "2|", "9|y" });
    row("two blanks make an empty code", "Value=1  2;x\nValue=9;y",
        QStringList { "1|x", "|x", "2|x", "9|y" });
    row("blank before the code makes an empty code", "Value= 1;x\nValue=9;y",
        QStringList { "|x", "1|x", "9|y" });
    row("blank behind the code makes an empty code", "Value=1 ;x\nValue=9;y",
        QStringList { "1|x", "|x", "9|y" });
    row("blank before the code stays on the last line", "Value= 1;x", QStringList { " 1|x" });
    row("tab is no blank", "Value=1\t2;x\nValue=9;y", QStringList { "1\t2|x", "9|y" });
    row("pieces are trimmed", "Value=1 \t2;x\nValue=9;y", QStringList { "1|x", "2|x", "9|y" });
    row("quotes around two codes", "Value='A' 'B';x\nValue=9;y",
        QStringList { "A'|x", "'B|x", "9|y" });
    row("quoted code with a blank is split", "Value='A B';x\nValue=9;y",
        QStringList { "A|x", "B|x", "9|y" });

    row("codes before a range", "Value=1 3 5:9;x", QStringList { "1|x", "3|x", "5|x", "9|x" });
    row("two blanks before a range", "Value=1  5:9;x", QStringList { "1|x", "|x", "5|x", "9|x" });
    row("blank before a range", "Value= 5:9;x", QStringList { "|x", "5|x", "9|x" });
    row("blank before the colon", "Value=5 :9;x", QStringList { "5|x", "|x", "9|x" });
    row("low bounds are not trimmed", "Value=1 \t5:9;x", QStringList { "1|x", "\t5|x", "9|x" });
    row("codes before a range without a label stay one", "Value=1 3 5:9",
        QStringList { "1 3 5|", ":9|" });
    row("codes behind a range stay one on the last line", "Value=1:5 7;x",
        QStringList { "1|x", "5 7|x" });
    row("codes behind a range before another line", "Value=1:5 7;x\nValue=9;y",
        QStringList { "1|x", "5|x", "7|x", "9|y" });
    row("codes behind a range without a label", "Value=1:5 7\nValue=9;y",
        QStringList { "1|", ":5|", "7|", "9|y" });
    row("range behind a range stays one entry", "Value=1:2 4:5;x\nValue=9;y",
        QStringList { "1|x", "2|x", "4:5|x", "9|y" });
}

void tst_CSProValueSet::valueLines()
{
    QFETCH(QString, lines);
    QFETCH(QStringList, entries);
    TCSPro parser;
    parse(parser, dictionary("Alpha", lines));
    QVERIFY(parser.lastItem->getHasValueSet());
    const TCSProValueSet* set = parser.lastItem->getValueSet(0);
    QCOMPARE(set->isNumeric, false);
    std::reverse(entries.begin(), entries.end());
    QCOMPARE(entriesOf(*set), entries);
    for (const TValueSetItem* entry : qAsConst(*set->items)) {
        QCOMPARE(entry->type, 0);
        QCOMPARE(entry->special, false);
    }
    QCOMPARE(parser.lastItem->missingCode, QString());
    QCOMPARE(parser.lastItem->notApplicableCode, QString());
}

void tst_CSProValueSet::valueLinesOfNumbers_data()
{
    QTest::addColumn<QString>("lines");
    QTest::addColumn<QStringList>("entries"); // "none": the set was dropped

    row("in order", "Value=1;a\nValue=2;b\nValue=9;c", QStringList { "1|a", "2|b", "9|c" });
    row("sorted by number", "Value=10;a\nValue=9;b\nValue=-1;c",
        QStringList { "-1|c", "9|b", "10|a" });
    row("range among codes", "Value=20:30;a\nValue=25;b", QStringList { "20|a", "25|b", "30|a" });
    row("quoted numbers", "Value='2';a\nValue='1';b", QStringList { "1|b", "2|a" });
    row("codes stay as written", "Value=007;a\nValue=+3;b", QStringList { "+3|b", "007|a" });
    row("blank before the last code", "Value=1;a\nValue= 0;b", QStringList { " 0|b", "1|a" });
    row("no value line at all", "", QStringList());
    row("one code is no number", "Value=1;a\nValue=X;b", QStringList { "none" });
    row("empty code", "Value=1;a\nValue=", QStringList { "none" });
    row("range without a label", "Value=1:5\nValue=9;c", QStringList { "none" });
    row("open range", "Value=1:;a", QStringList { "none" });
    row("two codes on the last line", "Value=1;a\nValue=2 3;b", QStringList { "none" });
    row("two codes before another line", "Value=2 3;b\nValue=1;a",
        QStringList { "1|a", "2|b", "3|b" });
    row("range in a list", "Value=1:2 4:5;x\nValue=9;y", QStringList { "none" });
    row("blank before a code that is not the last", "Value= 1;x\nValue=9;y",
        QStringList { "none" });
    row("too large a code", "Value=1;a\nValue=99999999999;b", QStringList { "none" });
    row("negative decimal", "Value=-1.5;a", QStringList { "none" });
    row("special code that is no number is not looked at",
        "Value=1;a\nValue=X;b\nName=MISSING ,Special", QStringList { "1|a" });
}

void tst_CSProValueSet::valueLinesOfNumbers()
{
    QFETCH(QString, lines);
    QFETCH(QStringList, entries);
    TCSPro parser;
    parser.setDecimalQuestion(
        [](const CSProProblem&) -> int { throw std::logic_error("nothing to ask about"); });
    parse(parser, dictionary("Numeric", lines));
    QCOMPARE(entriesOf(parser), entries);
    QCOMPARE(parser.decimalAnswer, 0);
    QCOMPARE(parser.decimalButton, 0);
    if (parser.lastItem->getHasValueSet())
        QCOMPARE(parser.lastItem->getValueSet(0)->isNumeric, true);
}

void tst_CSProValueSet::theLastEntryIsNotSplit()
{
    TCSPro parser;
    parse(parser, dictionary("Alpha", "Value=1 2;x\nValue=3 4;y"));
    QCOMPARE(entriesOf(parser), (QStringList { "3 4|y", "2|x", "1|x" }));
}

void tst_CSProValueSet::processOtherRanges_data()
{
    QTest::addColumn<QString>("code");
    QTest::addColumn<QStringList>("codes");

    row("two codes", "1 2", QStringList { "1", "2" });
    row("codes and a range", "1 3:5 7", QStringList { "1", "3:5", "7" });
    row("one code", "1", QStringList { "1" });
    row("nothing", "", QStringList { "" });
    row("blanks only", "  ", QStringList { "", "", "" });
    row("tabs and line ends are trimmed", "1 \t2\t \n3", QStringList { "1", "2", "3" });
    row("quotes stay", "'A' 'B'", QStringList { "'A'", "'B'" });
}

void tst_CSProValueSet::processOtherRanges()
{
    QFETCH(QString, code);
    QFETCH(QStringList, codes);
    TCSPro parser;
    OwnedValueSet set({ "0" });
    TValueSetItem entry;
    entry.code = code;
    entry.label = QStringLiteral("label");
    entry.type = 1;
    entry.special = true;
    parser.processOtherRanges(&set, &entry);
    QCOMPARE(codesOf(set), QStringList { "0" } + codes);
    for (int i = 1; i < set.getCount(); ++i) {
        TValueSetItem* added = set.getValueSetItem(i);
        QVERIFY(added != &entry);
        QCOMPARE(added->label, QString("label"));
        QCOMPARE(added->type, 0);
        QCOMPARE(added->special, false);
        added->setParent(&set);
    }
    QCOMPARE(entry.code, code);
}

void tst_CSProValueSet::entriesAreNewOnes()
{
    TCSPro parser;
    parse(parser, dictionary("Numeric", "Value=1:5;x\nValue=7;y"));
    const TCSProValueSet* set = parser.lastItem->getValueSet(0);
    QCOMPARE(set->getCount(), 3);
    QVERIFY(set->getValueSetItem(0) != set->getValueSetItem(1));
    QVERIFY(set->getValueSetItem(1) != set->getValueSetItem(2));
}

void tst_CSProValueSet::nameLines_data()
{
    QTest::addColumn<QString>("lines");
    QTest::addColumn<QStringList>("entries");
    QTest::addColumn<QString>("missing");
    QTest::addColumn<QString>("notApplicable");

    const QStringList kept { "1|a", "9|b" };
    const QStringList left { "1|a" };
    const auto behind9 = [](const char* nameLines) -> QString {
        return QStringLiteral("Value=1;a\nValue=9;b\n") + QLatin1String(nameLines);
    };
    row("missing", behind9("Name=MISSING ,Special"), left, "9", "");
    row("not applicable", behind9("Name=NOTAPPL ,Special"), left, "", "9");
    row("any case", behind9("nAmE=missing ,SPECIAL"), left, "9", "");
    row("not applicable in any case", behind9("NAME=NotAppl ,special"), left, "", "9");
    row("no character before the comma", behind9("Name=MISSING,Special"), kept, "", "");
    row("not applicable, no character before the comma", behind9("Name=NOTAPPL,Special"), kept, "",
        "");
    row("any character before the comma", behind9("Name=MISSINGx,Special"), left, "9", "");
    row("two characters before the comma", behind9("Name=MISSING  ,Special"), kept, "", "");
    row("another word behind the comma", behind9("Name=MISSING ,x"), left, "9", "");
    row("nothing behind the comma", behind9("Name=NOTAPPL ,"), left, "", "9");
    row("another name is never special", behind9("Name=DEFAULT ,Special"), kept, "", "");
    row("refused is never special", behind9("Name=REFUSED ,Special"), kept, "", "");
    row("no comma", behind9("Name=MISSING"), kept, "", "");
    row("no comma, blank behind", behind9("Name=MISSING Special"), kept, "", "");
    row("comma first", behind9("Name=,Special"), kept, "", "");
    row("one character before the comma", behind9("Name=M,Special"), kept, "", "");
    row("blank before the name", behind9("Name= MISSING ,Special"), kept, "", "");
    row("blank before the sign: no name line", behind9("Name =MISSING ,Special"), kept, "", "");
    row("second comma", behind9("Name=MISSING ,Special,x"), left, "9", "");
    row("indented", behind9("   Name=MISSING ,Special  "), left, "9", "");
    row("line of another key between", behind9("Note=x\nName=MISSING ,Special"), left, "9", "");
    row("another name behind does not undo it", behind9("Name=MISSING ,Special\nName=OTHER ,x"),
        left, "9", "");
    row("a name without a comma behind does not undo it",
        behind9("Name=MISSING ,Special\nName=OTHER"), left, "9", "");
    row("both names", behind9("Name=MISSING ,Special\nName=NOTAPPL ,Special"), left, "9", "9");
    row("two special codes",
        "Value=8;x\nName=NOTAPPL ,Special\nValue=1;a\nValue=9;b\nName=MISSING ,Special", left, "9",
        "8");
    row("the later missing code counts",
        "Value=8;x\nName=MISSING ,Special\nValue=1;a\nValue=9;b\nName=MISSING ,Special", left, "9",
        "");
    row("before the first value", "Name=MISSING ,Special\nValue=1;a\nValue=9;b", kept, "", "");
    row("special code first", "Value=9;x\nName=MISSING ,Special\nValue=1;a", left, "9", "");
    row("several codes", "Value=1;a\nValue=8 9;b\nName=MISSING ,Special", left, "8 9", "");
    row("several codes before another value", "Value=8 9;b\nName=MISSING ,Special\nValue=1;a", left,
        "8 9", "");
    row("range: the low bound was stored before", "Value=1:9;a\nName=MISSING ,Special", left, "9",
        "");
    row("quoted code", "Value=1;a\nValue=' 9';b\nName=MISSING ,Special", left, " 9", "");
    row("only special codes", "Value=9;x\nName=MISSING ,Special", QStringList(), "9", "");
    row("empty special code", "Value=1;a\nValue=\nName=MISSING ,Special", left, "", "");
}

void tst_CSProValueSet::nameLines()
{
    QFETCH(QString, lines);
    QFETCH(QStringList, entries);
    QFETCH(QString, missing);
    QFETCH(QString, notApplicable);
    TCSPro parser;
    parse(parser, dictionary("Numeric", lines));
    QCOMPARE(entriesOf(parser), entries);
    QCOMPARE(parser.lastItem->missingCode, missing);
    QCOMPARE(parser.lastItem->notApplicableCode, notApplicable);
    for (const TValueSetItem* entry : qAsConst(*parser.lastItem->getValueSet(0)->items)) {
        QCOMPARE(entry->special, false);
        QCOMPARE(entry->type, 0);
    }
}

void tst_CSProValueSet::nameLinesKeepTheCodeOfADroppedSet()
{
    TCSPro parser;
    parse(parser, dictionary("Numeric", "Value=X;a\nValue=9;b\nName=MISSING ,Special"));
    QVERIFY(!parser.lastItem->getHasValueSet());
    QCOMPARE(parser.lastItem->missingCode, QString("9"));
}

void tst_CSProValueSet::specialCodesBelongToTheLastOccurrence()
{
    TCSPro parser;
    parse(parser,
        "[Item]\nName=X\n[Item]\nName=A\nOccurrences=3\n[ValueSet]\nValue=1;a\nValue=9;b\n"
        "Name=MISSING ,Special\nValue=8;c\nName=NOTAPPL ,Special");
    QCOMPARE(parser.getItemsCount(), 4);
    for (int i = 0; i < 4; ++i) {
        QCOMPARE(parser.getItem(i)->missingCode, QString(i == 3 ? "9" : ""));
        QCOMPARE(parser.getItem(i)->notApplicableCode, QString(i == 3 ? "8" : ""));
    }
}

void tst_CSProValueSet::keysOfTheSection_data()
{
    QTest::addColumn<QString>("body");
    QTest::addColumn<QString>("label");
    QTest::addColumn<QString>("name");

    row("both keys", "Label=The codes\nName=V\nValue=1;x", "The codes", "V");
    row("no key", "Value=1;x", "", "");
    row("behind the values", "Value=1;x\nLabel=L\nName=V", "L", "V");
    row("label with a sign", "Label=a=b\nName=V\nValue=1;x", "", "V");
    row("a word in a value answers for its key", "Value=1;Name and Label\nName=V\nLabel=L",
        "1;Name and Label", "1;Name and Label");
    row("other case is no key", "LABEL=L\nNAME=V\nValue=1;x", "", "");
}

void tst_CSProValueSet::keysOfTheSection()
{
    QFETCH(QString, body);
    QFETCH(QString, label);
    QFETCH(QString, name);
    TCSPro parser;
    parse(parser, QStringLiteral("[Item]\nName=A\n[ValueSet]\n") + body);
    QVERIFY(parser.lastItem->getHasValueSet());
    const TCSProValueSet* set = parser.lastItem->getValueSet(0);
    QCOMPARE(set->label, label);
    QCOMPARE(set->name, name);
    QCOMPARE(set->reservedText, QString());
    QCOMPARE(set->getCount(), 1);
    QCOMPARE(set->getValueSetItem(0)->code, QString("1"));
}

void tst_CSProValueSet::debugLines_data()
{
    QTest::addColumn<QString>("lines");
    QTest::addColumn<QStringList>("log");

    row("code and label", "Value=1;Yes", QStringList { "4. myValueSetItem->name \"Yes\"" });
    row("code alone", "Value=1", QStringList { "4. myValueSetItem->name \"\"" });
    row("range with a label", "Value=1:5;Low",
        QStringList { "1. myValueSetItemMin->name \"Low\"", "4. myValueSetItem->name \"Low\"" });
    row("codes before a range", "Value=1 3 5:9;x",
        QStringList { "2. myValueSetItemMin->name \"x\"", "2. myValueSetItemMin->name \"x\"",
            "1. myValueSetItemMin->name \"x\"", "4. myValueSetItem->name \"x\"" });
    row("range without a label", "Value=1:5",
        QStringList { "3. myValueSetItemMin->name \"\"", "4. myValueSetItem->name \"\"" });
    row("several codes before another line", "Value=1 2;x\nValue=3;y",
        QStringList { "4. myValueSetItem->name \"x\"", "PROCESAR OTROS RANGOS",
            "4. myValueSetItem->name \"y\"" });
    row("several codes on the last line", "Value=1 2;x",
        QStringList { "4. myValueSetItem->name \"x\"" });
    row("missing", "Value=9;x\nName=MISSING ,Special",
        QStringList { "4. myValueSetItem->name \"x\"", "5. myValueSetItem->special  true",
            "5. myValueSetItem->type  1" });
    row("not applicable", "Value=9;x\nName=NOTAPPL ,Special",
        QStringList { "4. myValueSetItem->name \"x\"", "5. myValueSetItem->special  true",
            "5. myValueSetItem->type  2" });
    row("another name", "Value=9;x\nName=DEFAULT ,Special",
        QStringList { "4. myValueSetItem->name \"x\"", "5. myValueSetItem->special  false",
            "5. myValueSetItem->type  0" });
    row("another name behind a special one", "Value=9;x\nName=MISSING ,Special\nName=OTHER ,y",
        QStringList { "4. myValueSetItem->name \"x\"", "5. myValueSetItem->special  true",
            "5. myValueSetItem->type  1", "5. myValueSetItem->special  true",
            "5. myValueSetItem->type  0" });
    row("name before the first value", "Name=MISSING ,Special", QStringList());
}

void tst_CSProValueSet::debugLines()
{
    QFETCH(QString, lines);
    QFETCH(QStringList, log);
    TCSPro parser;
    QStringList records;
    {
        const DebugOn debugOn;
        const DebugLines debugLines;
        parse(parser, dictionary("Alpha", lines));
        records = debugLines.lines();
    }
    QCOMPARE(records, log);
}

void tst_CSProValueSet::theSetOfAnItem_data()
{
    QTest::addColumn<QString>("dataType");
    QTest::addColumn<QStringList>("entries");

    row("numeric", "Numeric", QStringList { "1|a", "2|b", "9|c" });
    row("alphanumeric", "Alpha", QStringList { "9|c", "1|a", "2|b" });
}

void tst_CSProValueSet::theSetOfAnItem()
{
    QFETCH(QString, dataType);
    QFETCH(QStringList, entries);
    TCSPro parser;
    parse(parser, dictionary(dataType, "Value=2;b\nValue=1;a\nValue=9;c"));
    QCOMPARE(parser.lastItem->getCount(), 1);
    QCOMPARE(entriesOf(parser), entries);
    const TCSProValueSet* set = parser.lastItem->getValueSet(0);
    QCOMPARE(set->name, QString("V"));
    QCOMPARE(set->label, QString("The codes"));
    QCOMPARE(set->isNumeric, dataType == QLatin1String("Numeric"));
}

void tst_CSProValueSet::occurrencesShareTheirSet()
{
    TCSPro parser;
    parse(parser,
        "[Item]\nName=X\n[Item]\nName=A\nOccurrences=3\n[Item]\nName=B\nOccurrences=2\n"
        "[ValueSet]\nName=V\nValue=1;a\n[Item]\nName=C\nOccurrences=3\n[ValueSet]\nName=W\n"
        "Value=1;a");
    QCOMPARE(parser.getItemsCount(), 9);
    for (int index : { 0, 1, 2, 3 })
        QVERIFY(!parser.getItem(index)->getHasValueSet());
    TCSProValueSet* const ofB = parser.getItem(4)->getValueSet(0);
    TCSProValueSet* const ofC = parser.getItem(6)->getValueSet(0);
    QCOMPARE(ofB->name, QString("V"));
    QCOMPARE(ofC->name, QString("W"));
    for (int index : { 4, 5, 6, 7, 8 }) {
        TCSProItem* item = parser.getItem(index);
        QCOMPARE(item->getCount(), 1);
        QCOMPARE(item->getValueSet(0), index < 6 ? ofB : ofC);
    }
    // Each item has a list of its own.
    parser.getItem(6)->valueSets->clear();
    QVERIFY(!parser.getItem(6)->getHasValueSet());
    QVERIFY(parser.getItem(7)->getHasValueSet());
}

void tst_CSProValueSet::theFirstItemOfTheFileGivesItsSetToItsLastOccurrence()
{
    TCSPro parser;
    parse(parser, "[Item]\nName=A\nOccurrences=3\n[ValueSet]\nName=V\nValue=1;a");
    QVERIFY(!parser.getItem(0)->getHasValueSet());
    QVERIFY(!parser.getItem(1)->getHasValueSet());
    QVERIFY(parser.getItem(2)->getHasValueSet());
}

// The walk from the last item back ends at the first one that is no occurrence.
void tst_CSProValueSet::onlyOccurrencesInARowShareTheirSet()
{
    TCSPro parser;
    parse(parser, "[Item]\nName=A\n[Item]\nName=B\n[Item]\nName=C\n[Item]\nName=D\nOccurrences=2");
    parser.getItem(1)->firstOccurrenceIndex = parser.lastItem->firstOccurrenceIndex;
    parse(parser, "[ValueSet]\nName=V\nValue=1;a");
    QList<bool> described;
    for (const TCSProItem* item : qAsConst(*parser.items))
        described.append(item->getHasValueSet());
    QCOMPARE(described, (QList<bool> { false, false, false, true, true }));
}

// Where a host put another item behind the one added last, nobody gets the set.
void tst_CSProValueSet::theWalkOverOccurrencesBeginsAtTheLastItem()
{
    TCSPro parser;
    parse(parser, "[Item]\nName=A\n[Item]\nName=B\nOccurrences=2");
    TCSProItem other;
    parser.items->append(&other);
    parse(parser, "[ValueSet]\nName=V\nValue=1;a");
    for (const TCSProItem* item : qAsConst(*parser.items))
        QVERIFY(!item->getHasValueSet());

    // The item added last need not be among them.
    other.firstOccurrenceIndex = parser.lastItem->firstOccurrenceIndex;
    TCSProItem* last = parser.items->takeAt(2);
    QCOMPARE(last, parser.lastItem);
    parse(parser, "[ValueSet]\nName=V\nValue=1;a");
    QVERIFY(!last->getHasValueSet());
    QVERIFY(!parser.getItem(0)->getHasValueSet());
    QCOMPARE(parser.getItem(1)->getCount(), 1);
    QCOMPARE(other.getCount(), 1);
    QCOMPARE(other.getValueSet(0), parser.getItem(1)->getValueSet(0));
    parser.items->append(last);
}

// Any list of items, any of them added last, against the walk as it is told.
void tst_CSProValueSet::theWalkOverOccurrencesWalkedAgain()
{
    QRandomGenerator random(5);
    int described = 0;
    for (int run = 0; run < 3000; ++run) {
        std::vector<TCSProItem> items(static_cast<std::size_t>(1 + random.bounded(6)));
        TCSProValueSet older;
        TCSPro parser;
        for (TCSProItem& item : items) {
            item.firstOccurrenceIndex = random.bounded(3);
            if (random.bounded(8) == 0)
                item.addValueSet(&older);
            if (random.bounded(8) != 0)
                parser.items->append(&item);
        }
        TCSProItem& last = items[static_cast<std::size_t>(random.bounded(int(items.size())))];
        parser.lastItem = &last;
        parser.lastItemNumeric = true;

        QList<const TCSProItem*> expected;
        if (!last.getHasValueSet() && last.firstOccurrenceIndex == 0) {
            expected.append(&last);
        } else if (!last.getHasValueSet()) {
            for (int i = parser.items->size() - 1; i >= 0; --i) {
                TCSProItem* item = parser.items->at(i);
                if (item->firstOccurrenceIndex != last.firstOccurrenceIndex)
                    break;
                if (!item->getHasValueSet())
                    expected.prepend(item);
            }
        }

        QStringList lines { "[ValueSet]", "Name=V", "Value=1;a" };
        int index = 0;
        parser.processValueSet(&lines, index);
        QList<const TCSProItem*> found;
        const TCSProValueSet* set = nullptr;
        for (TCSProItem& item : items) {
            if (!item.getHasValueSet() || item.getValueSet(0) == &older)
                continue;
            found.append(&item);
            QVERIFY(!set || set == item.getValueSet(0));
            set = item.getValueSet(0);
            QCOMPARE(item.getCount(), 1);
        }
        QCOMPARE(found, expected);
        described += found.isEmpty() ? 0 : 1;
        for (TCSProItem& item : items)
            delete item.valueSets;
    }
    QVERIFY(described > 100);
}

void tst_CSProValueSet::aSecondSetIsPassedOver_data()
{
    QTest::addColumn<QString>("second");
    QTest::addColumn<QStringList>("itemNames");

    row("complete", "[ValueSet]\nName=W\nValue=2;b\nValue=8;c\nName=MISSING ,Special",
        QStringList { "A" });
    row("with codes that would be asked about", "[ValueSet]\nValue=1.5;b", QStringList { "A" });
    row("with codes that are no numbers", "[ValueSet]\nValue=X;b", QStringList { "A" });
    row("a third one too", "[ValueSet]\nValue=2;b\n[ValueSet]\nValue=3;c", QStringList { "A" });
    // The lines of a set that is not read are left to the loop over all lines, which trims them.
    row("an indented header in it opens a section", "[ValueSet]\nName=W\n  [Item]\nName=B",
        QStringList { "A", "B" });
}

void tst_CSProValueSet::aSecondSetIsPassedOver()
{
    QFETCH(QString, second);
    QFETCH(QStringList, itemNames);
    TCSPro parser;
    parser.setDecimalQuestion(
        [](const CSProProblem&) -> int { throw std::logic_error("nothing to ask about"); });
    parse(parser, dictionary("Numeric", "Value=1;a\n") + second);
    QStringList names;
    for (const TCSProItem* item : qAsConst(*parser.items))
        names.append(item->name);
    QCOMPARE(names, itemNames);
    TCSProItem* item = parser.getItem(0);
    QCOMPARE(item->getCount(), 1);
    QCOMPARE(entriesOf(*item->getValueSet(0)), QStringList { "1|a" });
    QCOMPARE(item->getValueSet(0)->name, QString("V"));
    QCOMPARE(item->missingCode, QString());
}

void tst_CSProValueSet::manySetsThatArePassedOver_data()
{
    QTest::addColumn<QString>("lines");
    QTest::addColumn<int>("ignored"); // of one round of lines

    row("headers alone", "  [ValueSet]\n", 1);
    row("with names and values", " [ValueSet]\nName=W\nValue=1;a\n", 1);
    row("with other headers between", "\t[Other]\n [ValueSet]\nValue=1;a\n", 1);
    row("after lines that are no headers", "Value=1;a\nName=W\n  [ValueSet]\n", 1);
}

/*
 * Each indented header is one to the loop over all lines, behind which the whole rest of the file
 * stands as one section. Were that read for each of them, this would run for hours.
 */
void tst_CSProValueSet::manySetsThatArePassedOver()
{
    QFETCH(QString, lines);
    QFETCH(int, ignored);
    constexpr int rounds = 400'000;
    TCSPro parser;
    parse(parser, dictionary("Numeric", "Value=1;a\n[ValueSet]\n") + lines.repeated(rounds));
    QCOMPARE(parser.getItemsCount(), 1);
    QCOMPARE(parser.getItem(0)->getCount(), 1);
    QCOMPARE(entriesOf(parser), QStringList { "1|a" });
    QCOMPARE(parser.problems().size(), 1 + ignored * rounds);
    for (const CSProProblem& problem : parser.problems())
        QCOMPARE(problem.kind, CSProProblem::Kind::ValueSetIgnored);
}

void tst_CSProValueSet::aSetBeforeAnyItem()
{
    TCSPro parser;
    parse(parser,
        "[ValueSet]\nName=V\nValue=X;a\nName=MISSING ,Special\nValue=1;b\n[Item]\nName=A\n"
        "[ValueSet]\nName=W\nValue=2;c");
    QCOMPARE(parser.getItemsCount(), 1);
    QCOMPARE(entriesOf(parser), QStringList { "2|c" });
    QCOMPARE(parser.lastItem->missingCode, QString());
}

void tst_CSProValueSet::aDroppedSetLeavesRoomForTheNext()
{
    TCSPro parser;
    parse(parser,
        dictionary("Numeric", "Value=X;a\n[ValueSet]\nName=W\nValue=2;c\n[ValueSet]\nValue=3;d"));
    QCOMPARE(entriesOf(parser), QStringList { "2|c" });
    QCOMPARE(parser.lastItem->getValueSet(0)->name, QString("W"));
}

void tst_CSProValueSet::decimalQuestion_data()
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

void tst_CSProValueSet::decimalQuestion()
{
    QFETCH(int, button);
    QFETCH(int, answer);
    QFETCH(QStringList, entries);
    TCSPro parser;
    BoxUser user({ button });
    parse(parser, dictionary("Numeric", "Value=7;c\nValue=1.5;b\nValue=X;d\nValue=1;a"));
    QCOMPARE(user.boxes, 1);
    QVERIFY(user.isWholeQuestion);
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

void tst_CSProValueSet::decimalQuestionThroughAHandler_data()
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

void tst_CSProValueSet::decimalQuestionThroughAHandler()
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

void tst_CSProValueSet::theHandlerGetsTheCase()
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

void tst_CSProValueSet::theAnswerForAllIsRemembered_data()
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

void tst_CSProValueSet::theAnswerForAllIsRemembered()
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

void tst_CSProValueSet::noQuestion_data()
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

void tst_CSProValueSet::noQuestion()
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

void tst_CSProValueSet::showMessageBoxDecimal_data()
{
    QTest::addColumn<int>("answer");
    QTest::addColumn<int>("boxes");
    row("not answered yet", 0, 1);
    row("yes to all", 1, 0);
    row("no to all", 2, 0);
    row("asked every time", 3, 1);
}

// Nothing but the button is stored: who asks stores the answer for all.
void tst_CSProValueSet::showMessageBoxDecimal()
{
    QFETCH(int, answer);
    QFETCH(int, boxes);
    TCSPro parser;
    parser.decimalAnswer = answer;
    parser.decimalButton = -1;
    parser.undefinedButton = -2;
    parser.undefinedAnswer = 1;
    BoxUser user({ QMessageBox::NoToAll });
    parser.showMessageBoxDecimal("text", "more", "title", QMessageBox::Information);
    QCOMPARE(user.boxes, boxes);
    QCOMPARE(parser.decimalButton, boxes > 0 ? int(QMessageBox::NoToAll) : -1);
    QCOMPARE(parser.decimalAnswer, answer);
    QCOMPARE(parser.undefinedButton, -2);
    QCOMPARE(parser.undefinedAnswer, 1);
    if (boxes > 0) {
        QCOMPARE(user.text, QString("text"));
        QCOMPARE(user.informativeText, QString("more"));
        QCOMPARE(user.title, QString("title"));
    }
}

QTEST_MAIN(tst_CSProValueSet)

#include "tst_CSProValueSet.moc"
