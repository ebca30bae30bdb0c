#include "GenericFields.h"

#include <model_Tessel/ErrorManager.h>
#include <model_Tessel/GenericField.h>

#include <QtTest>

#include <limits>
#include <stdexcept>
#include <utility>

namespace {

constexpr wchar_t filler = 0x15151515;

// A field that compares its current text with its codes, as the importers' fields do.
class CodedField : public TGenericField {
public:
    explicit CodedField(int type)
        : TGenericField(nullptr)
    {
        fieldType = type;
        length = 4;
        missingValue = QStringLiteral("99");
        notApplicableValue = QStringLiteral("98");
    }

    bool isMissing() override
    {
        return current() == missingValue;
    }
    bool isNotApplicable() override
    {
        return current() == notApplicableValue;
    }
    bool isBlank() override
    {
        return current().trimmed().isEmpty();
    }

private:
    QString current() const
    {
        return QString::fromWCharArray(text);
    }
};

} // namespace

class tst_GenericFieldAssignment : public QObject {
    Q_OBJECT

private slots:
    void assignNumber_data();
    void assignNumber();
    void scaling_data();
    void scaling();
    void numberIsReadFromTheWholeArgument();
    void stringAssignmentLeavesNumbers();
    void unknownTypeIsMarkedInTheBuffer_data();
    void unknownTypeIsMarkedInTheBuffer();
    void specialValuesKeepNumbers_data();
    void specialValuesKeepNumbers();
    void assignmentAsksInOrder_data();
    void assignmentAsksInOrder();
    void questionsSeeTheNewText();
    void assignmentOfAnOwnText();
    void throwingQuestion_data();
    void throwingQuestion();
    void nextAssignmentClearsTheFlag_data();
    void nextAssignmentClearsTheFlag();

    void setAsFloatStoresTheRealValueOnly();
    void setAsIntegerStoresTheIntegerValueOnly();
};

void tst_GenericFieldAssignment::assignNumber_data()
{
    QTest::addColumn<QString>("value");
    QTest::addColumn<double>("number");

    QTest::newRow("whole number") << "1234" << 1234.0;
    QTest::newRow("decimals") << "12.75" << 12.75;
    QTest::newRow("negative") << "-12.75" << -12.75;
    QTest::newRow("plus sign") << "+5" << 5.0;
    QTest::newRow("exponent") << "1.5e3" << 1500.0;
    QTest::newRow("leading zeros") << "00012" << 12.0;
    QTest::newRow("leading blanks") << "  1234" << 1234.0;
    QTest::newRow("trailing blanks") << "1234  " << 1234.0;
    QTest::newRow("tab and line end around it") << "\t1234\r\n" << 1234.0;
    QTest::newRow("fifteen digits") << "123456789012345" << 123456789012345.0;
    QTest::newRow("beyond 32 bits") << "4294967297" << 4294967297.0;
    QTest::newRow("tiny") << "1e-300" << 1e-300;
    QTest::newRow("zero") << "0" << 0.0;
    QTest::newRow("empty") << "" << 0.0;
    QTest::newRow("blanks") << "    " << 0.0;
    QTest::newRow("letters") << "abc" << 0.0;
    QTest::newRow("letters behind a number") << "12x" << 0.0;
    QTest::newRow("blank inside") << "12 34" << 0.0;
    QTest::newRow("decimal comma") << "12,5" << 0.0;
    QTest::newRow("grouped digits") << "1,234" << 0.0;
    QTest::newRow("two points") << "1.2.3" << 0.0;
    QTest::newRow("sign alone") << "-" << 0.0;
    QTest::newRow("hexadecimal") << "0x10" << 0.0;
    QTest::newRow("too large for a double") << "1e400" << 0.0;
    QTest::newRow("too small for a double") << "1e-400" << 0.0;
}

void tst_GenericFieldAssignment::assignNumber()
{
    QFETCH(QString, value);
    QFETCH(double, number);

    for (Way way : { Way::Text, Way::WideText }) {
        Field real(Real);
        real.realValue = 77;
        real.integerValue = 88;
        assign(real, way, value);
        QVERIFY2(real.realValue == number, qPrintable(QString::number(real.realValue, 'g', 17)));
        QVERIFY(real.integerValue == 88);
        QVERIFY(!real.conversionFailed);

        // An integer field sets both numbers, and keeps a fraction.
        Field integer(Integer);
        integer.realValue = 77;
        integer.integerValue = 88;
        assign(integer, way, value);
        QVERIFY2(
            integer.realValue == number, qPrintable(QString::number(integer.realValue, 'g', 17)));
        QVERIFY2(integer.integerValue == number,
            qPrintable(QString::number(integer.integerValue, 'g', 17)));
        QVERIFY(!integer.conversionFailed);
        if (number == 0)
            QCOMPARE(integer.getAsString(), QStringLiteral("0"));

        // The raw text is there whatever the type.
        const QString trimmed = value.left(20);
        QCOMPARE(QString::fromWCharArray(real.text), trimmed);
        QCOMPARE(QString::fromWCharArray(integer.text), trimmed);
    }
}

void tst_GenericFieldAssignment::scaling_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<bool>("hasDecimalChar");
    QTest::addColumn<QString>("decimals");
    QTest::addColumn<QString>("value");
    QTest::addColumn<double>("number");

    QTest::newRow("two implied decimals") << int(Real) << false << "2"
                                          << "  1234" << 12.34;
    QTest::newRow("own decimal point") << int(Real) << true << "2"
                                       << "  1234" << 1234.0;
    QTest::newRow("no decimals given") << int(Real) << false << ""
                                       << "1234" << 1234.0;
    QTest::newRow("null decimals") << int(Real) << false << QString() << "1234" << 1234.0;
    QTest::newRow("zero decimals") << int(Real) << false << "0"
                                   << "1234" << 1234.0;
    QTest::newRow("one decimal") << int(Real) << false << "1"
                                 << "1234" << 123.4;
    QTest::newRow("more decimals than digits") << int(Real) << false << "5"
                                               << "12" << 0.00012;
    QTest::newRow("ten decimals") << int(Real) << false << "10"
                                  << "5e10" << 5.0;
    QTest::newRow("a point in the text is scaled too") << int(Real) << false << "2"
                                                       << "1234.5" << 12.345;
    QTest::newRow("negative number") << int(Real) << false << "3"
                                     << "-1500" << -1.5;
    QTest::newRow("no number stays zero") << int(Real) << false << "2"
                                          << "abc" << 0.0;
    QTest::newRow("integers are not scaled") << int(Integer) << false << "2"
                                             << "1234" << 1234.0;
    QTest::newRow("integers are not scaled, own decimal point") << int(Integer) << true << "2"
                                                                << "1234" << 1234.0;
}

void tst_GenericFieldAssignment::scaling()
{
    QFETCH(int, type);
    QFETCH(bool, hasDecimalChar);
    QFETCH(QString, decimals);
    QFETCH(QString, value);
    QFETCH(double, number);

    for (Way way : { Way::Text, Way::WideText }) {
        Field field(type);
        field.hasDecimalChar = hasDecimalChar;
        field.decimals = decimals;
        assign(field, way, value);
        QCOMPARE(field.realValue, number);
        QCOMPARE(field.integerValue, type == Integer ? number : 0.0);
        QCOMPARE(field.getAsString(), QString::number(number, 'g', 6));
        // The settings of the scale are left as they were.
        QCOMPARE(field.decimals, decimals);
        QCOMPARE(field.hasDecimalChar, hasDecimalChar);
    }
}

void tst_GenericFieldAssignment::numberIsReadFromTheWholeArgument()
{
    for (Way way : { Way::Text, Way::WideText }) {
        Field integer(Integer, 2);
        assign(integer, way, QStringLiteral("12345"));
        QCOMPARE(integer.integerValue, 12345.0);
        QCOMPARE(integer.buffer(4), QStringLiteral("12.."));

        Field real(Real, 0);
        assign(real, way, QStringLiteral("2.5"));
        QCOMPARE(real.realValue, 2.5);
        QCOMPARE(real.buffer(4), QStringLiteral("...."));
    }
}

void tst_GenericFieldAssignment::stringAssignmentLeavesNumbers()
{
    for (Way way : { Way::Text, Way::WideText }) {
        Field field(String);
        assign(field, way, QStringLiteral("12"));
        QVERIFY(field.realValue == unset);
        QVERIFY(field.integerValue == 0);

        field.realValue = 1.5;
        field.integerValue = 2.5;
        field.hasDecimalChar = false;
        field.decimals = QStringLiteral("1");
        assign(field, way, QStringLiteral("abc"));
        QCOMPARE(field.realValue, 1.5);
        QCOMPARE(field.integerValue, 2.5);
        QVERIFY(!field.conversionFailed);
    }
}

void tst_GenericFieldAssignment::unknownTypeIsMarkedInTheBuffer_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<int>("length");
    QTest::addColumn<QString>("value");
    QTest::addColumn<QString>("rest");

    QTest::newRow("none") << 0 << 6 << "abcdef"
                          << "cdef..";
    QTest::newRow("none, short text") << 0 << 6 << "a"
                                      << "......";
    QTest::newRow("none, empty text") << 0 << 6 << ""
                                      << "......";
    QTest::newRow("none, length 0") << 0 << 0 << "abcdef"
                                    << "......";
    QTest::newRow("none, length 1") << 0 << 1 << "abcdef"
                                    << "......";
    QTest::newRow("none, a number") << 0 << 6 << "123456"
                                    << "3456..";
    QTest::newRow("type 4") << 4 << 6 << "abcdef"
                            << "cdef..";
    QTest::newRow("type -1") << -1 << 6 << "abcdef"
                             << "cdef..";
}

void tst_GenericFieldAssignment::unknownTypeIsMarkedInTheBuffer()
{
    QFETCH(int, type);
    QFETCH(int, length);
    QFETCH(QString, value);
    QFETCH(QString, rest);

    for (Way way : { Way::Text, Way::WideText }) {
        Field field(type, length);
        assign(field, way, value);
        QCOMPARE(field.text[0], filler);
        QCOMPARE(field.text[1], filler);
        QCOMPARE(field.buffer(8).right(6), rest);
        QVERIFY(field.realValue == unset);
        QVERIFY(field.integerValue == 0);
        QVERIFY(!field.conversionFailed);
        QVERIFY(field.getAsString().isEmpty());
    }
}

void tst_GenericFieldAssignment::specialValuesKeepNumbers_data()
{
    QTest::addColumn<bool>("missing");
    QTest::addColumn<bool>("notApplicable");
    QTest::addColumn<bool>("blank");
    QTest::addColumn<int>("type");

    const std::pair<const char*, int> types[] = { { "none", None }, { "integer", Integer },
        { "real", Real }, { "string", String } };
    for (const auto& [name, type] : types) {
        QTest::addRow("missing, %s", name) << true << false << false << type;
        QTest::addRow("not applicable, %s", name) << false << true << false << type;
        QTest::addRow("blank, %s", name) << false << false << true << type;
    }
}

void tst_GenericFieldAssignment::specialValuesKeepNumbers()
{
    QFETCH(bool, missing);
    QFETCH(bool, notApplicable);
    QFETCH(bool, blank);
    QFETCH(int, type);

    for (Way way : { Way::Text, Way::WideText }) {
        Field field(type);
        field.realValue = 1.5;
        field.integerValue = 2.5;
        field.conversionFailed = true;
        field.missing = missing;
        field.notApplicable = notApplicable;
        field.blank = blank;
        assign(field, way, QStringLiteral("99"));
        QCOMPARE(field.realValue, 1.5);
        QCOMPARE(field.integerValue, 2.5);
        QVERIFY(!field.conversionFailed);
        // The text is copied before the questions, and no mark is put over it after them.
        QCOMPARE(field.buffer(4), QStringLiteral("99.."));
    }
}

void tst_GenericFieldAssignment::assignmentAsksInOrder_data()
{
    QTest::addColumn<bool>("missing");
    QTest::addColumn<bool>("notApplicable");
    QTest::addColumn<bool>("blank");
    QTest::addColumn<QStringList>("asked");

    const QStringList all = { "missing", "notApplicable", "blank" };
    QTest::newRow("nothing holds") << false << false << false << all;
    QTest::newRow("blank") << false << false << true << all;
    QTest::newRow("not applicable and blank")
        << false << true << true << QStringList(all.mid(0, 2));
    QTest::newRow("all hold") << true << true << true << QStringList(all.mid(0, 1));
}

void tst_GenericFieldAssignment::assignmentAsksInOrder()
{
    QFETCH(bool, missing);
    QFETCH(bool, notApplicable);
    QFETCH(bool, blank);
    QFETCH(QStringList, asked);

    for (Way way : { Way::Text, Way::WideText }) {
        Field field(Integer);
        field.missing = missing;
        field.notApplicable = notApplicable;
        field.blank = blank;
        assign(field, way, QStringLiteral("12"));
        QCOMPARE(field.asked, asked);
    }
}

void tst_GenericFieldAssignment::questionsSeeTheNewText()
{
    for (Way way : { Way::Text, Way::WideText }) {
        CodedField field(Integer);
        assign(field, way, QStringLiteral("12"));
        QCOMPARE(field.getAsString(), QStringLiteral("12"));

        assign(field, way, QStringLiteral("99"));
        QCOMPARE(field.integerValue, 12.0);
        QCOMPARE(field.realValue, 12.0);
        QCOMPARE(field.getAsString(), QStringLiteral("99"));
        QCOMPARE(field.getAsFloat(), 99.0);
        QCOMPARE(field.getAsInteger(), 99);

        assign(field, way, QStringLiteral("98"));
        QCOMPARE(field.integerValue, 12.0);
        QCOMPARE(field.getAsString(), QStringLiteral("98"));
        QCOMPARE(field.getAsInteger(), 12);

        assign(field, way, QStringLiteral("  "));
        QCOMPARE(field.integerValue, 12.0);
        QCOMPARE(field.getAsString(), QString(""));
        QCOMPARE(field.getAsFloat(), 12.0);

        assign(field, way, QStringLiteral("7"));
        QCOMPARE(field.getAsString(), QStringLiteral("7"));
        QCOMPARE(field.getAsInteger(), 7);
    }
}

// An answer may change the text that was assigned; what was assigned stays.
void tst_GenericFieldAssignment::assignmentOfAnOwnText()
{
    Field field(Integer);
    field.label = QStringLiteral("12");
    field.throwingQuestion = QStringLiteral("missing");
    field.thrower = [&field] { field.label = QStringLiteral("99"); };
    field.setAsString(field.label);
    QCOMPARE(field.label, QStringLiteral("99"));
    QCOMPARE(field.integerValue, 12.0);
    QCOMPARE(field.buffer(3), QStringLiteral("12."));
}

void tst_GenericFieldAssignment::throwingQuestion_data()
{
    QTest::addColumn<QString>("question");
    QTest::addColumn<QString>("what");
    QTest::addColumn<int>("type");

    QTest::newRow("missing, error object") << "missing"
                                           << "error" << int(Integer);
    QTest::newRow("missing, standard exception") << "missing"
                                                 << "standard" << int(Integer);
    QTest::newRow("missing, number") << "missing"
                                     << "number" << int(Integer);
    QTest::newRow("not applicable, error object") << "notApplicable"
                                                  << "error" << int(Integer);
    QTest::newRow("not applicable, standard exception") << "notApplicable"
                                                        << "standard" << int(Real);
    QTest::newRow("blank, error object") << "blank"
                                         << "error" << int(Real);
    QTest::newRow("blank, number") << "blank"
                                   << "number" << int(String);
    QTest::newRow("missing in a field without a type") << "missing"
                                                       << "error" << int(None);
}

void tst_GenericFieldAssignment::throwingQuestion()
{
    QFETCH(QString, question);
    QFETCH(QString, what);
    QFETCH(int, type);

    for (Way way : { Way::Text, Way::WideText }) {
        Field field(type);
        field.realValue = 1.5;
        field.integerValue = 2.5;
        field.throwingQuestion = question;
        field.thrower = [&what] {
            if (what == QStringLiteral("error"))
                throw new OxErrorManager(QStringLiteral("Range"), 101);
            if (what == QStringLiteral("standard"))
                throw std::runtime_error("no answer");
            throw 5;
        };
        try {
            assign(field, way, QStringLiteral("12"));
        } catch (...) {
            QFAIL("the exception left the assignment");
        }
        QCOMPARE(field.conversionFailed, true);
        QVERIFY(field.integerValue == 0);
        QCOMPARE(field.realValue, 1.5);
        QCOMPARE(field.asked.last(), question);
        QCOMPARE(field.buffer(4), QStringLiteral("12.."));
    }
}

void tst_GenericFieldAssignment::nextAssignmentClearsTheFlag_data()
{
    QTest::addColumn<QString>("value");
    QTest::addColumn<bool>("missing");
    QTest::addColumn<double>("integerValue");

    QTest::newRow("a number") << "34" << false << 34.0;
    QTest::newRow("no number") << "abc" << false << 0.0;
    QTest::newRow("a missing value") << "99" << true << 0.0;
}

void tst_GenericFieldAssignment::nextAssignmentClearsTheFlag()
{
    QFETCH(QString, value);
    QFETCH(bool, missing);
    QFETCH(double, integerValue);

    for (Way way : { Way::Text, Way::WideText }) {
        Field field(Integer);
        field.thrower = [] { throw std::runtime_error("no answer"); };
        field.throwingQuestion = QStringLiteral("blank");
        assign(field, way, QStringLiteral("12"));
        QVERIFY(field.conversionFailed);

        field.throwingQuestion.clear();
        field.missing = missing;
        assign(field, way, value);
        QVERIFY(!field.conversionFailed);
        QCOMPARE(field.integerValue, integerValue);
    }
}

void tst_GenericFieldAssignment::setAsFloatStoresTheRealValueOnly()
{
    for (int type : { 0, 1, 2, 3 }) {
        Field field(type);
        field.text[0] = L'q';
        field.integerValue = 2;
        field.conversionFailed = true;
        field.hasDecimalChar = false;
        field.decimals = QStringLiteral("2");
        field.setAsFloat(-1234.5);
        QCOMPARE(field.realValue, -1234.5);
        QCOMPARE(field.integerValue, 2.0);
        QCOMPARE(field.buffer(4), QStringLiteral("q..."));
        QVERIFY(field.conversionFailed);
        QVERIFY(field.asked.isEmpty());
    }
}

void tst_GenericFieldAssignment::setAsIntegerStoresTheIntegerValueOnly()
{
    for (int type : { 0, 1, 2, 3 }) {
        Field field(type);
        field.text[0] = L'q';
        field.realValue = 1.5;
        field.conversionFailed = true;
        field.hasDecimalChar = false;
        field.decimals = QStringLiteral("2");
        field.setAsInteger(std::numeric_limits<int>::min());
        QCOMPARE(field.integerValue, -2147483648.0);
        QCOMPARE(field.realValue, 1.5);
        QCOMPARE(field.buffer(4), QStringLiteral("q..."));
        QVERIFY(field.conversionFailed);
        QVERIFY(field.asked.isEmpty());
    }
}

QTEST_GUILESS_MAIN(tst_GenericFieldAssignment)

#include "tst_GenericFieldAssignment.moc"
