#include <tessel_data/CodeTable.h>
#include <tessel_data/DataValue.h>

#include <QtTest>

#include <limits>
#include <random>

using tessel::CodeTable;
using tessel::NumberStatus;
using tessel::Special;
using tessel::ValueKind;
using tessel::ValueState;

Q_DECLARE_METATYPE(tessel::NumberStatus)

class TestDataValue : public QObject {
    Q_OBJECT

private slots:
    void number_data();
    void number();
    void code();
    void text();
    void state();
    void firstCodeThatFits();
    void wideAndFarCodes();
    void onlySpecials();
    void texts();
    void reals();
    void everyNumber();
    void realTexts_data();
    void realTexts();
};

void TestDataValue::number_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<int>("decimals");
    QTest::addColumn<NumberStatus>("status");
    QTest::addColumn<qint64>("number");

    const auto good = NumberStatus::Number;
    const auto bad = NumberStatus::NotANumber;
    const auto unfit = NumberStatus::Unfit;
    QTest::newRow("plain") << QByteArray("123") << 0 << good << 123LL;
    QTest::newRow("leading blanks") << QByteArray("  7") << 0 << good << 7LL;
    QTest::newRow("zero-filled") << QByteArray("007") << 0 << good << 7LL;
    QTest::newRow("blank") << QByteArray("   ") << 0 << NumberStatus::Blank << 0LL;
    QTest::newRow("empty") << QByteArray("") << 0 << NumberStatus::Blank << 0LL;
    QTest::newRow("minus") << QByteArray("-12") << 0 << good << -12LL;
    QTest::newRow("minus before zeros") << QByteArray("-002") << 0 << good << -2LL;
    QTest::newRow("blanks behind the sign") << QByteArray("-  2") << 0 << good << -2LL;
    QTest::newRow("plus") << QByteArray(" +4") << 0 << good << 4LL;
    QTest::newRow("sign alone") << QByteArray(" - ") << 0 << bad << 0LL;
    QTest::newRow("blank behind a digit") << QByteArray("12 ") << 0 << bad << 0LL;
    QTest::newRow("blank between digits") << QByteArray("1 2") << 0 << bad << 0LL;
    QTest::newRow("letter") << QByteArray("1x") << 0 << bad << 0LL;
    QTest::newRow("stars") << QByteArray("***") << 0 << bad << 0LL;
    QTest::newRow("NUL") << QByteArray("1\0", 2) << 0 << bad << 0LL;
    QTest::newRow("tabulator") << QByteArray("\t1") << 0 << bad << 0LL;
    QTest::newRow("two points") << QByteArray("1.2.3") << 2 << bad << 0LL;
    QTest::newRow("point alone") << QByteArray(" . ") << 2 << bad << 0LL;
    QTest::newRow("implied") << QByteArray(" 12345") << 4 << good << 12345LL;
    QTest::newRow("point") << QByteArray("12.5") << 2 << good << 1250LL;
    QTest::newRow("comma") << QByteArray("12,5") << 2 << good << 1250LL;
    QTest::newRow("no digits behind the point") << QByteArray("12.") << 2 << good << 1200LL;
    QTest::newRow("no digits before the point") << QByteArray(".5") << 1 << good << 5LL;
    QTest::newRow("zeros beyond the decimals") << QByteArray("1.5000") << 1 << good << 15LL;
    QTest::newRow("more decimals") << QByteArray("1.55") << 1 << unfit << 0LL;
    QTest::newRow("decimals of a whole item") << QByteArray("1.5") << 0 << unfit << 0LL;
    QTest::newRow("whole with a point") << QByteArray("15.0") << 0 << good << 15LL;
    QTest::newRow("18 digits") << QByteArray("999999999999999999") << 0 << good
                               << 999999999999999999LL;
    QTest::newRow("19 digits") << QByteArray("1000000000000000000") << 0 << unfit << 0LL;
    QTest::newRow("19 digits, one a zero")
        << QByteArray("0999999999999999999") << 0 << good << 999999999999999999LL;
    QTest::newRow("scaled too far") << QByteArray("99999999999999999.") << 9 << unfit << 0LL;
    QTest::newRow("zero scaled far") << QByteArray("0.") << 18 << good << 0LL;
}

void TestDataValue::number()
{
    QFETCH(QByteArray, text);
    QFETCH(int, decimals);
    QFETCH(NumberStatus, status);
    qint64 number = 0;
    const std::string_view view(text.constData(), std::size_t(text.size()));
    QCOMPARE(tessel::readNumber(view, decimals, number), status);
    if (status == NumberStatus::Number)
        QTEST(number, "number");
}

void TestDataValue::code()
{
    qint64 number = 0;
    QCOMPARE(tessel::readCode("5", 2, number), NumberStatus::Number);
    QCOMPARE(number, 500LL); // a code has no implied decimals
    QCOMPARE(tessel::readCode("9.98", 2, number), NumberStatus::Number);
    QCOMPARE(number, 998LL);
}

void TestDataValue::text()
{
    QCOMPARE(tessel::numberText(12345, 0), QStringLiteral("12345"));
    QCOMPARE(tessel::numberText(12345, 4), QStringLiteral("1.2345"));
    QCOMPARE(tessel::numberText(5, 2), QStringLiteral("0.05"));
    QCOMPARE(tessel::numberText(-5, 2), QStringLiteral("-0.05"));
    QCOMPARE(tessel::numberText(std::numeric_limits<qint64>::min(), 0),
        QStringLiteral("-9223372036854775808"));
    QCOMPARE(tessel::numberText(std::numeric_limits<qint64>::min(), 1),
        QStringLiteral("-922337203685477580.8"));
}

void TestDataValue::state()
{
    const ValueState state(ValueKind::Unfit, Special::Default, true, true);
    QCOMPARE(state.kind(), ValueKind::Unfit);
    QCOMPARE(state.special(), Special::Default);
    QVERIFY(state.isOutside());
    QVERIFY(state.isOutOfRange());
    QVERIFY(ValueState() == ValueState(ValueKind::Blank));
    QCOMPARE(int(sizeof(ValueState)), 1);
}

void TestDataValue::firstCodeThatFits()
{
    CodeTable table;
    table.addNumbers(5, 5, Special::Missing, 0);
    table.addNumbers(0, 9, Special::None, 1);
    table.addNumbers(8, 20, Special::Refused, 2);
    table.finish();
    QCOMPARE(table.find(qint64(5)).entry, 0);
    QCOMPARE(table.find(qint64(4)).entry, 1);
    QCOMPARE(table.find(qint64(9)).entry, 1);
    QCOMPARE(table.find(qint64(10)).entry, 2);
    QVERIFY(!table.find(qint64(21)).isCode);
    QCOMPARE(table.stateOf(qint64(5)), ValueState(ValueKind::Number, Special::Missing));
    QCOMPARE(table.stateOf(qint64(10)), ValueState(ValueKind::Number, Special::Refused));
    QCOMPARE(table.stateOf(qint64(21)), ValueState(ValueKind::Number, Special::None, true, true));
    QCOMPARE(table.stateOf(qint64(-1)), ValueState(ValueKind::Number, Special::None, true, true));
}

void TestDataValue::wideAndFarCodes()
{
    constexpr qint64 far = 900'000'000'000'000'000;
    CodeTable table;
    table.addNumbers(-far, -far, Special::None, 0);
    table.addNumbers(3, 1'000'000, Special::None, 1);
    table.addNumbers(far, far, Special::None, 2);
    table.finish();
    const ValueState inside(ValueKind::Number);
    const ValueState between(ValueKind::Number, Special::None, true);
    QCOMPARE(table.stateOf(-far), inside);
    QCOMPARE(table.stateOf(-far + 1), between);
    QCOMPARE(table.stateOf(qint64(1'000'000)), inside);
    QCOMPARE(table.stateOf(qint64(1'000'001)), between);
    QCOMPARE(table.stateOf(far), inside);
    QCOMPARE(table.stateOf(far + 1), ValueState(ValueKind::Number, Special::None, true, true));
}

void TestDataValue::onlySpecials()
{
    CodeTable table;
    table.addNumbers(99, 99, Special::Missing, 0);
    table.addBlank(Special::NotApplicable, 1);
    table.addBlank(Special::Missing, 2); // the first counts
    table.finish();
    QCOMPARE(table.stateOf(qint64(99)), ValueState(ValueKind::Number, Special::Missing));
    QCOMPARE(table.stateOf(qint64(98)), ValueState(ValueKind::Number)); // nothing says it is wrong
    QCOMPARE(table.stateOfBlank(), ValueState(ValueKind::Blank, Special::NotApplicable));
    CodeTable texts;
    texts.addText("99", Special::Missing, 0);
    texts.finish();
    QVERIFY(texts.stateOf("99").special() == Special::Missing);
    QVERIFY(!texts.stateOf("a").isOutside());
}

void TestDataValue::texts()
{
    CodeTable table;
    table.addText("A", Special::None, 0);
    table.addText("ZZ", Special::Refused, 1);
    table.addText("A", Special::Missing, 2);
    table.finish();
    QCOMPARE(table.stateOf(std::string_view("A")), ValueState(ValueKind::Text));
    QCOMPARE(table.stateOf(std::string_view("ZZ")), ValueState(ValueKind::Text, Special::Refused));
    QCOMPARE(
        table.stateOf(std::string_view("a")), ValueState(ValueKind::Text, Special::None, true));
}

void TestDataValue::reals()
{
    CodeTable table;
    table.addReals(-std::numeric_limits<double>::infinity(), -1, Special::Missing, 0);
    table.addReals(0.5, 0.5, Special::None, 1);
    table.finish();
    QCOMPARE(table.stateOf(-7.5), ValueState(ValueKind::Real, Special::Missing));
    QCOMPARE(table.stateOf(0.5), ValueState(ValueKind::Real));
    QCOMPARE(table.stateOf(0.6), ValueState(ValueKind::Real, Special::None, true));
    CodeTable open;
    open.addReals(7, std::numeric_limits<double>::infinity(), Special::Missing, 0);
    open.addNumbers(7, std::numeric_limits<qint64>::max(), Special::Missing, 1);
    open.finish(); // both end at the last number there is
    QCOMPARE(open.stateOf(1e300), ValueState(ValueKind::Real, Special::Missing));
    QCOMPARE(open.stateOf(std::numeric_limits<qint64>::max()),
        ValueState(ValueKind::Number, Special::Missing));
}

// Against a look at each code in its turn.
void TestDataValue::everyNumber()
{
    struct Code {
        qint64 low;
        qint64 high;
        Special special;
    };
    std::mt19937 random(7);
    for (int round = 0; round < 300; ++round) {
        CodeTable table;
        std::vector<Code> codes;
        for (int i = int(random() % 8); i >= 0; --i) {
            const qint64 low = qint64(random() % 60) - 20;
            codes.push_back(
                { low, low + qint64(random() % 3 ? 0 : random() % 15), Special(random() % 5) });
            table.addNumbers(
                codes.back().low, codes.back().high, codes.back().special, int(codes.size()) - 1);
        }
        table.finish();
        for (qint64 number = -30; number < 70; ++number) {
            const auto found = std::find_if(codes.begin(), codes.end(),
                [&](const Code& code) { return code.low <= number && number <= code.high; });
            const CodeTable::Match match = table.find(number);
            QCOMPARE(match.isCode, found != codes.end());
            if (match.isCode) {
                QCOMPARE(match.entry, int(found - codes.begin()));
                QCOMPARE(match.special, found->special);
                QCOMPARE(table.stateOf(number), ValueState(ValueKind::Number, found->special));
            }
        }
    }
}

void TestDataValue::realTexts_data()
{
    QTest::addColumn<double>("number");
    QTest::addColumn<QString>("text");
    QTest::newRow("zero") << 0.0 << "0";
    QTest::newRow("negative zero") << -0.0 << "0";
    QTest::newRow("round") << 1000000.0 << "1000000";
    QTest::newRow("more than 15 digits") << 1234567890123457.0 << "1234567890123457";
    QTest::newRow("negative") << -9007199254740993.0 << "-9007199254740992";
    QTest::newRow("decimals") << 0.1 << "0.1";
    QTest::newRow("as a float") << double(0.1F) << "0.10000000149011612";
    QTest::newRow("large") << 1e300 << "1e+300";
    QTest::newRow("small") << 2.5e-7 << "2.5e-07";
}

void TestDataValue::realTexts()
{
    QFETCH(double, number);
    QTEST(tessel::realText(number), "text");
    QCOMPARE(tessel::realText(number).toDouble(), number);
}

QTEST_GUILESS_MAIN(TestDataValue)
#include "tst_DataValue.moc"
