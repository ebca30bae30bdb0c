#include "BareField.h"

#include <model_Tessel/DataImport.h>
#include <model_Tessel/ErrorManager.h>
#include <model_Tessel/GenericField.h>

#include <QCoreApplication>
#include <QProcess>
#include <QtTest>

#include <sys/resource.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <iterator>
#include <limits>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace {

constexpr double unset = 2.2250738585072014e-308;
constexpr wchar_t filler = 0x15151515;

enum Type { None = 0, Integer = 1, Real = 2, String = 3 };

// A field whose answers a test sets, and which notes what it is asked.
class Field : public TGenericField {
public:
    explicit Field(int type = None, int length = 20)
        : TGenericField(nullptr)
    {
        fieldType = type;
        this->length = length;
    }

    bool isMissing() override
    {
        return answer(QStringLiteral("missing"), missing);
    }
    bool isNotApplicable() override
    {
        return answer(QStringLiteral("notApplicable"), notApplicable);
    }
    bool isBlank() override
    {
        return answer(QStringLiteral("blank"), blank);
    }

    // The first characters of the buffer, nulls as dots.
    QString buffer(int size) const
    {
        std::wstring copy(text, text + size);
        std::replace(copy.begin(), copy.end(), L'\0', L'.');
        return QString::fromStdWString(copy);
    }

    bool missing = false;
    bool notApplicable = false;
    bool blank = false;
    QStringList asked;
    QString throwingQuestion;
    std::function<void()> thrower;

private:
    bool answer(const QString& question, bool value)
    {
        asked.append(question);
        if (question == throwingQuestion)
            thrower();
        return value;
    }
};

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

class Importer : public TDataImport {
public:
    QString getDataProviderId() override
    {
        return QStringLiteral("id");
    }
    QString getDataProviderType() override
    {
        return QStringLiteral("TYPE");
    }
};

// The two ways in; what holds for one holds for the other.
enum class Way { Text, WideText };

void assign(TGenericField& field, Way way, const QString& value)
{
    if (way == Way::Text)
        field.setAsString(value);
    else
        field.setAsStringChar(value.toStdWString().c_str());
}

// Runs in a process of its own: the assignment ends the process when the length is too large.
int assignWithLength(int length, Way way)
{
    const rlimit noCore = { 0, 0 };
    setrlimit(RLIMIT_CORE, &noCore);
    Field field(String, length);
    field.name = QStringLiteral("P12_OCCUPATION");
    assign(field, way, QStringLiteral("short"));
    return field.getAsString() == QStringLiteral("short") ? 0 : 1;
}

const char* const childArgument = "--assign-with-length";

} // namespace

Q_DECLARE_METATYPE(Way)

class tst_GenericField : public QObject {
    Q_OBJECT

private slots:
    void defaults();
    void constructorStoresOwner();
    void fieldsStandInDeclarationOrder();
    void baseOperations();
    void isString_data();
    void isString();

    void copyIntoBuffer_data();
    void copyIntoBuffer();
    void copyKeepsWhatLiesBeyond();
    void embeddedNullEndsTheCopy();
    void fullBuffer_data();
    void fullBuffer();
    void charactersBeyondTheBasicPlane_data();
    void charactersBeyondTheBasicPlane();
    void lengthAboveTheBufferStopsTheProcess_data();
    void lengthAboveTheBufferStopsTheProcess();

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

    void getAsString_data();
    void getAsString();
    void getAsStringOfSpecialValues_data();
    void getAsStringOfSpecialValues();
    void getAsFloat_data();
    void getAsFloat();
    void getAsInteger_data();
    void getAsInteger();
    void missingValueAsNumber_data();
    void missingValueAsNumber();
    void numbersIgnoreOtherSpecialValues_data();
    void numbersIgnoreOtherSpecialValues();

    void setAsFloatStoresTheRealValueOnly();
    void setAsIntegerStoresTheIntegerValueOnly();

    void valueLabel_data();
    void valueLabel();
    void valueLabelChangesTabsForGood();
};

void tst_GenericField::defaults()
{
    const BareField field(nullptr);
    QCOMPARE(field.auxFlag, false);
    QVERIFY(field.name.isEmpty());
    QVERIFY(field.label.isEmpty());
    QCOMPARE(field.fieldType, 0);
    QCOMPARE(field.length, 0);
    QCOMPARE(field.start, 0);
    QVERIFY(field.valueLabels.isEmpty());
    QVERIFY(field.missingValue.isEmpty());
    QVERIFY(field.notApplicableValue.isEmpty());
    QVERIFY(field.minValue.isEmpty());
    QVERIFY(field.maxValue.isEmpty());
    QVERIFY(field.decimals.isEmpty());
    QCOMPARE(field.hasDecimalChar, true);
    QCOMPARE(field.conversionFailed, false);
    QVERIFY(std::all_of(std::begin(field.text), std::end(field.text),
        [](wchar_t character) { return character == 0; }));
    QVERIFY(field.realValue == unset);
    QVERIFY(field.realValue == std::numeric_limits<double>::min());
    QVERIFY(field.integerValue == 0);
    QVERIFY(!field.owner);

    static_assert(std::is_same<decltype(field.text), wchar_t[255]>::value);
    static_assert(std::is_same<decltype(field.realValue), double>::value);
    static_assert(std::is_same<decltype(field.integerValue), double>::value);
    static_assert(std::is_same<decltype(field.decimals), QString>::value);
    static_assert(std::is_abstract<TGenericField>::value);
    static_assert(std::has_virtual_destructor<TGenericField>::value);
}

void tst_GenericField::constructorStoresOwner()
{
    Importer importer;
    {
        const BareField field(&importer);
        QCOMPARE(field.owner, static_cast<TDataImport*>(&importer));
    }
    // A field neither registers with its owner nor takes it along.
    QVERIFY(importer.fields->isEmpty());
    QCOMPARE(importer.getDataProviderType(), QStringLiteral("TYPE"));
}

void tst_GenericField::fieldsStandInDeclarationOrder()
{
    const Field f;
    const std::vector<const void*> addresses = { &f.auxFlag, &f.name, &f.label, &f.fieldType,
        &f.length, &f.start, &f.valueLabels, &f.missingValue, &f.notApplicableValue, &f.minValue,
        &f.maxValue, &f.decimals, &f.hasDecimalChar, &f.conversionFailed, &f.text, &f.realValue,
        &f.integerValue, &f.owner };
    QVERIFY(std::is_sorted(addresses.begin(), addresses.end(), std::less<>()));
}

void tst_GenericField::baseOperations()
{
    Field field(Integer);
    field.valueLabels = QStringLiteral("\t1 Male");
    field.addValueLabel(QStringLiteral("2"), QStringLiteral("Female"));
    QCOMPARE(field.valueLabels, QStringLiteral("\t1 Male"));
    QCOMPARE(field.label, QString());
    QVERIFY(field.getGroup().isEmpty());
    QVERIFY(field.asked.isEmpty());
}

void tst_GenericField::isString_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<bool>("expected");

    QTest::newRow("none") << 0 << false;
    QTest::newRow("integer") << 1 << false;
    QTest::newRow("real") << 2 << false;
    QTest::newRow("string") << 3 << true;
    QTest::newRow("unknown") << 4 << false;
    QTest::newRow("negative") << -1 << false;
}

void tst_GenericField::isString()
{
    QFETCH(int, type);
    QFETCH(bool, expected);

    QCOMPARE(Field(type).isString(), expected);
}

void tst_GenericField::copyIntoBuffer_data()
{
    QTest::addColumn<int>("length");
    QTest::addColumn<QStringList>("values");
    QTest::addColumn<QString>("buffer");
    QTest::addColumn<QString>("asString");

    const auto row = [](const char* name, int length, const QStringList& values, const char* buffer,
                         const char* asString) {
        QTest::newRow(name) << length << values << QString::fromUtf8(buffer)
                            << QString::fromUtf8(asString);
    };
    row("shorter than the length", 5, { "abc" }, "abc.....", "abc");
    row("as long as the length", 5, { "abcde" }, "abcde...", "abcde");
    row("longer than the length", 3, { "abcde" }, "abc.....", "abc");
    row("empty text", 5, { "" }, "........", "");
    row("blanks are kept", 6, { "  ab  " }, "  ab  ..", "  ab  ");
    row("length 1", 1, { "xyz" }, "x.......", "x");
    row("length 0 copies nothing", 0, { "abc" }, "........", "");
    row("shorter text clears the rest of the width", 5, { "abcde", "xy" }, "xy......", "xy");
    row("empty text clears the whole width", 5, { "abcde", "" }, "........", "");
    row("full width replaces full width", 5, { "abcde", "vwxyz" }, "vwxyz...", "vwxyz");
    row("overlong text replaces full width", 5, { "abcde", "tuvwxyz" }, "tuvwx...", "tuvwx");
}

void tst_GenericField::copyIntoBuffer()
{
    QFETCH(int, length);
    QFETCH(QStringList, values);
    QFETCH(QString, buffer);
    QFETCH(QString, asString);

    for (Way way : { Way::Text, Way::WideText }) {
        Field field(String, length);
        for (const QString& value : qAsConst(values))
            assign(field, way, value);
        QCOMPARE(field.buffer(8), buffer);
        QCOMPARE(field.buffer(255).mid(8), QString(247, QLatin1Char('.')));
        QCOMPARE(field.getAsString(), asString);
    }
}

void tst_GenericField::copyKeepsWhatLiesBeyond()
{
    for (Way way : { Way::Text, Way::WideText }) {
        Field field(String, 6);
        assign(field, way, QStringLiteral("abcdef"));

        // No terminator is written at the full width, so the older end shows up behind it.
        field.length = 3;
        assign(field, way, QStringLiteral("xyz"));
        QCOMPARE(field.buffer(8), QStringLiteral("xyzdef.."));
        QCOMPARE(field.getAsString(), QStringLiteral("xyzdef"));
        assign(field, way, QStringLiteral("uvwxyz"));
        QCOMPARE(field.buffer(8), QStringLiteral("uvwdef.."));

        // A shorter text ends itself, but clears no further than the width.
        assign(field, way, QStringLiteral("q"));
        QCOMPARE(field.buffer(8), QStringLiteral("q..def.."));
        QCOMPARE(field.getAsString(), QStringLiteral("q"));

        field.length = 0;
        assign(field, way, QStringLiteral("t"));
        QCOMPARE(field.buffer(8), QStringLiteral("q..def.."));

        field.length = 5;
        assign(field, way, QString());
        QCOMPARE(field.buffer(8), QStringLiteral(".....f.."));
        QCOMPARE(field.getAsString(), QString());
    }
}

// The copy is one of a text that ends at its first null; the width behind it is cleared.
void tst_GenericField::embeddedNullEndsTheCopy()
{
    QString value = QStringLiteral("12.34");
    value[2] = QChar(0);
    Field field(String, 5);
    field.setAsString(QStringLiteral("abcdefg"));
    field.setAsString(value);
    QCOMPARE(field.getAsString(), QStringLiteral("12"));
    QCOMPARE(field.buffer(8), QStringLiteral("12......"));
}

void tst_GenericField::fullBuffer_data()
{
    QTest::addColumn<int>("size");
    QTest::addColumn<int>("kept");

    QTest::newRow("one less leaves a terminator") << 254 << 254;
    QTest::newRow("the last place is used") << 255 << 255;
    QTest::newRow("one more is cut") << 256 << 255;
    QTest::newRow("far more is cut") << 5000 << 255;
}

void tst_GenericField::fullBuffer()
{
    QFETCH(int, size);
    QFETCH(int, kept);

    for (Way way : { Way::Text, Way::WideText }) {
        Field field(String, 255);
        // Values right behind the buffer, which no copy may touch.
        field.realValue = 1.5;
        field.integerValue = 2.5;
        assign(field, way, QString(size, QLatin1Char('7')));
        QCOMPARE(field.buffer(255), QString(kept, '7') + QString(255 - kept, '.'));
        QCOMPARE(field.getAsString(), QString(kept, '7'));
        QCOMPARE(field.realValue, 1.5);
        QCOMPARE(field.integerValue, 2.5);

        assign(field, way, QStringLiteral("42"));
        QCOMPARE(field.buffer(255), QStringLiteral("42") + QString(253, '.'));
        QCOMPARE(field.getAsInteger(), 42);
    }
}

void tst_GenericField::charactersBeyondTheBasicPlane_data()
{
    QTest::addColumn<QString>("value");
    QTest::addColumn<int>("length");
    QTest::addColumn<QString>("kept");
    QTest::addColumn<int>("places");

    const QString face = QString::fromUtf8("\U0001f600");
    const QString clef = QString::fromUtf8("\U0001d11e");
    QTest::newRow("one such character takes one place") << face << 1 << face << 1;
    QTest::newRow("the cut counts characters")
        << QString(face + clef + face) << 2 << QString(face + clef) << 2;
    QTest::newRow("mixed with others") << QString(QStringLiteral("a") + face + QStringLiteral("bc"))
                                       << 3 << QString(QStringLiteral("a") + face + 'b') << 3;
    QTest::newRow("shorter than the width") << QString(clef + 'x') << 9 << QString(clef + 'x') << 2;
    QTest::newRow("the whole buffer") << face.repeated(300) << 255 << face.repeated(255) << 255;
    QTest::newRow("basic plane") << QString::fromUtf8("\u00f1\u4e2d\u20ac") << 2
                                 << QString::fromUtf8("\u00f1\u4e2d") << 2;
}

void tst_GenericField::charactersBeyondTheBasicPlane()
{
    QFETCH(QString, value);
    QFETCH(int, length);
    QFETCH(QString, kept);
    QFETCH(int, places);

    const std::wstring wide = kept.toStdWString();
    QCOMPARE(int(wide.size()), places);
    for (Way way : { Way::Text, Way::WideText }) {
        Field field(String, length);
        assign(field, way, value);
        QVERIFY(std::equal(wide.begin(), wide.end(), field.text));
        QVERIFY(std::all_of(field.text + places, std::end(field.text),
            [](wchar_t character) { return character == 0; }));
        QCOMPARE(field.getAsString(), kept);
    }
}

void tst_GenericField::lengthAboveTheBufferStopsTheProcess_data()
{
    QTest::addColumn<int>("length");
    QTest::addColumn<QString>("way");
    QTest::addColumn<bool>("survives");

    QTest::newRow("255 from text") << 255 << "text" << true;
    QTest::newRow("255 from wide text") << 255 << "wide" << true;
    QTest::newRow("256 from text") << 256 << "text" << false;
    QTest::newRow("256 from wide text") << 256 << "wide" << false;
    QTest::newRow("70000 from text") << 70000 << "text" << false;
}

void tst_GenericField::lengthAboveTheBufferStopsTheProcess()
{
    QFETCH(int, length);
    QFETCH(QString, way);
    QFETCH(bool, survives);

    QProcess child;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("QT_LOGGING_TO_CONSOLE"), QStringLiteral("1"));
    environment.remove(QStringLiteral("QT_MESSAGE_PATTERN"));
    child.setProcessEnvironment(environment);
    child.start(QCoreApplication::applicationFilePath(),
        { QString::fromLatin1(childArgument), QString::number(length), way });
    QVERIFY2(child.waitForFinished(), qPrintable(child.errorString()));
    const QString output = QString::fromLocal8Bit(child.readAllStandardError());

    if (survives) {
        QCOMPARE(child.exitStatus(), QProcess::NormalExit);
        QCOMPARE(child.exitCode(), 0);
        QVERIFY2(!output.contains(QStringLiteral("P12_OCCUPATION")), qPrintable(output));
    } else {
        QCOMPARE(child.exitStatus(), QProcess::CrashExit);
        QVERIFY2(output.contains(QStringLiteral("P12_OCCUPATION")), qPrintable(output));
        QVERIFY2(output.contains(QString::number(length)), qPrintable(output));
        QVERIFY2(output.contains(QStringLiteral("255")), qPrintable(output));
    }
}

void tst_GenericField::assignNumber_data()
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

void tst_GenericField::assignNumber()
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

void tst_GenericField::scaling_data()
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

void tst_GenericField::scaling()
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

void tst_GenericField::numberIsReadFromTheWholeArgument()
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

void tst_GenericField::stringAssignmentLeavesNumbers()
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

void tst_GenericField::unknownTypeIsMarkedInTheBuffer_data()
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

void tst_GenericField::unknownTypeIsMarkedInTheBuffer()
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

void tst_GenericField::specialValuesKeepNumbers_data()
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

void tst_GenericField::specialValuesKeepNumbers()
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

void tst_GenericField::assignmentAsksInOrder_data()
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

void tst_GenericField::assignmentAsksInOrder()
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

void tst_GenericField::questionsSeeTheNewText()
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
void tst_GenericField::assignmentOfAnOwnText()
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

void tst_GenericField::throwingQuestion_data()
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

void tst_GenericField::throwingQuestion()
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

void tst_GenericField::nextAssignmentClearsTheFlag_data()
{
    QTest::addColumn<QString>("value");
    QTest::addColumn<bool>("missing");
    QTest::addColumn<double>("integerValue");

    QTest::newRow("a number") << "34" << false << 34.0;
    QTest::newRow("no number") << "abc" << false << 0.0;
    QTest::newRow("a missing value") << "99" << true << 0.0;
}

void tst_GenericField::nextAssignmentClearsTheFlag()
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

void tst_GenericField::getAsString_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<double>("number");
    QTest::addColumn<QString>("expected");

    const double nan = std::numeric_limits<double>::quiet_NaN();
    const double infinity = std::numeric_limits<double>::infinity();
    const std::pair<const char*, int> types[] = { { "integer", Integer }, { "real", Real } };
    for (const auto& [name, type] : types) {
        const auto row = [name = name, type = type](double number, const char* expected) {
            QTest::addRow("%s %s", name, expected)
                << type << number << QString::fromLatin1(expected);
        };
        row(0, "0");
        row(7, "7");
        row(-7, "-7");
        row(12.34, "12.34");
        row(0.5, "0.5");
        row(-2.75, "-2.75");
        row(100000, "100000");
        row(999999, "999999");
        row(-999999, "-999999");
        row(1000000, "1e+06");
        row(-1000000, "-1e+06");
        row(1200000, "1.2e+06");
        row(1234567, "1.23457e+06");
        row(123456.7, "123457");
        row(999999.5, "1e+06");
        row(3.14159265, "3.14159");
        row(0.0001, "0.0001");
        row(0.00001, "1e-05");
        row(4294967296.0, "4.29497e+09");
        row(1e300, "1e+300");
        row(unset, "2.22507e-308");
        row(nan, "nan");
        row(infinity, "inf");
        row(-infinity, "-inf");
        QTest::addRow("%s negative zero", name) << type << -0.0 << QString::number(-0.0, 'g', 6);
    }
    QTest::newRow("none") << int(None) << 7.0 << "";
    QTest::newRow("unknown type") << 4 << 7.0 << "";
    QTest::newRow("negative type") << -1 << 7.0 << "";
    QTest::newRow("string") << int(String) << 7.0 << "text";
}

void tst_GenericField::getAsString()
{
    QFETCH(int, type);
    QFETCH(double, number);
    QFETCH(QString, expected);

    Field field(String);
    field.setAsString(QStringLiteral("text"));
    field.missingValue = QStringLiteral("99");
    field.notApplicableValue = QStringLiteral("98");
    field.fieldType = type;
    // Each type has its own number, and the other one must not show.
    field.realValue = type == Real ? number : 111;
    field.integerValue = type == Integer ? number : 222;
    QCOMPARE(field.getAsString(), expected);
}

void tst_GenericField::getAsStringOfSpecialValues_data()
{
    QTest::addColumn<bool>("missing");
    QTest::addColumn<bool>("notApplicable");
    QTest::addColumn<bool>("blank");
    QTest::addColumn<QString>("expected");
    QTest::addColumn<QStringList>("asked");

    const QStringList all = { "missing", "notApplicable", "blank" };
    QTest::newRow("missing") << true << false << false << " 99x" << QStringList(all.mid(0, 1));
    QTest::newRow("missing comes first")
        << true << true << true << " 99x" << QStringList(all.mid(0, 1));
    QTest::newRow("not applicable")
        << false << true << false << "98 " << QStringList(all.mid(0, 2));
    QTest::newRow("not applicable before blank")
        << false << true << true << "98 " << QStringList(all.mid(0, 2));
    QTest::newRow("blank") << false << false << true << "" << all;
}

void tst_GenericField::getAsStringOfSpecialValues()
{
    QFETCH(bool, missing);
    QFETCH(bool, notApplicable);
    QFETCH(bool, blank);
    QFETCH(QString, expected);
    QFETCH(QStringList, asked);

    for (int type : { 0, 1, 2, 3, 4 }) {
        Field field(type);
        field.text[0] = L'q';
        field.realValue = 1.5;
        field.integerValue = 2;
        field.missingValue = QStringLiteral(" 99x");
        field.notApplicableValue = QStringLiteral("98 ");
        field.missing = missing;
        field.notApplicable = notApplicable;
        field.blank = blank;
        QCOMPARE(field.getAsString(), expected);
        QCOMPARE(field.asked, asked);
    }
}

void tst_GenericField::getAsFloat_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<QString>("text");
    QTest::addColumn<double>("expected");

    QTest::newRow("real") << int(Real) << "5" << 1.75;
    QTest::newRow("integer") << int(Integer) << "5" << -2.75;
    QTest::newRow("none") << int(None) << "5" << 0.0;
    QTest::newRow("unknown type") << 4 << "5" << 0.0;
    QTest::newRow("string, whole number") << int(String) << "12" << 12.0;
    QTest::newRow("string, decimals") << int(String) << "-12.5" << -12.5;
    QTest::newRow("string, exponent") << int(String) << "2.5e3" << 2500.0;
    QTest::newRow("string, blanks around it") << int(String) << " \t12.5  " << 12.5;
    QTest::newRow("string, letters") << int(String) << "abc" << 0.0;
    QTest::newRow("string, letters behind it") << int(String) << "12abc" << 0.0;
    QTest::newRow("string, decimal comma") << int(String) << "12,5" << 0.0;
    QTest::newRow("string, empty") << int(String) << "" << 0.0;
    QTest::newRow("string, cut to the width") << int(String) << "1234567890123" << 1234567890.0;
}

void tst_GenericField::getAsFloat()
{
    QFETCH(int, type);
    QFETCH(QString, text);
    QFETCH(double, expected);

    Field field(String, 10);
    field.setAsString(text);
    field.fieldType = type;
    field.realValue = 1.75;
    field.integerValue = -2.75;
    // Scale and special codes belong to the assignment, not to reading.
    field.hasDecimalChar = false;
    field.decimals = QStringLiteral("1");
    field.missingValue = QStringLiteral("99");
    QCOMPARE(field.getAsFloat(), expected);
}

void tst_GenericField::getAsInteger_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<QString>("text");
    QTest::addColumn<double>("number");
    QTest::addColumn<int>("expected");

    const std::pair<const char*, int> types[] = { { "integer", Integer }, { "real", Real } };
    for (const auto& [name, type] : types) {
        QTest::addRow("%s", name) << type << "5" << 12.0 << 12;
        QTest::addRow("%s, fraction cut", name) << type << "5" << 2.999 << 2;
        QTest::addRow("%s, negative fraction cut toward zero", name) << type << "5" << -2.999 << -2;
        QTest::addRow("%s, less than one", name) << type << "5" << 0.999 << 0;
        QTest::addRow("%s, above minus one", name) << type << "5" << -0.999 << 0;
        QTest::addRow("%s, never set", name) << type << "5" << unset << 0;
        QTest::addRow("%s, highest", name) << type << "5" << 2147483647.0 << 2147483647;
        QTest::addRow("%s, highest with a fraction", name)
            << type << "5" << 2147483647.5 << 2147483647;
        QTest::addRow("%s, lowest", name)
            << type << "5" << -2147483648.0 << std::numeric_limits<int>::min();
        QTest::addRow("%s, lowest with a fraction", name)
            << type << "5" << -2147483648.5 << std::numeric_limits<int>::min();
        QTest::addRow("%s, seven digits", name) << type << "5" << 1234567.0 << 1234567;
    }
    QTest::newRow("none") << int(None) << "5" << 12.0 << 0;
    QTest::newRow("unknown type") << 4 << "5" << 12.0 << 0;
    QTest::newRow("string") << int(String) << "42" << 12.0 << 42;
    QTest::newRow("string, negative") << int(String) << "-42" << 12.0 << -42;
    QTest::newRow("string, plus sign") << int(String) << "+42" << 12.0 << 42;
    QTest::newRow("string, blanks around it") << int(String) << "\t 42 " << 12.0 << 42;
    QTest::newRow("string, leading zeros are not octal") << int(String) << "010" << 12.0 << 10;
    QTest::newRow("string, hexadecimal") << int(String) << "0x1f" << 12.0 << 0;
    QTest::newRow("string, decimal point") << int(String) << "42.5" << 12.0 << 0;
    QTest::newRow("string, decimal point and zero") << int(String) << "42.0" << 12.0 << 0;
    QTest::newRow("string, exponent") << int(String) << "4e1" << 12.0 << 0;
    QTest::newRow("string, letters") << int(String) << "abc" << 12.0 << 0;
    QTest::newRow("string, empty") << int(String) << "" << 12.0 << 0;
    QTest::newRow("string, highest") << int(String) << "2147483647" << 12.0 << 2147483647;
    QTest::newRow("string, above the highest") << int(String) << "2147483648" << 12.0 << 0;
    QTest::newRow("string, cut to the width")
        << int(String) << "123456789099" << 12.0 << 1234567890;
}

void tst_GenericField::getAsInteger()
{
    QFETCH(int, type);
    QFETCH(QString, text);
    QFETCH(double, number);
    QFETCH(int, expected);

    Field field(String, 10);
    field.setAsString(text);
    field.fieldType = type;
    field.realValue = type == Real ? number : 111;
    field.integerValue = type == Integer ? number : 222;
    field.missingValue = QStringLiteral("99");
    QCOMPARE(field.getAsInteger(), expected);
}

void tst_GenericField::missingValueAsNumber_data()
{
    QTest::addColumn<QString>("missingValue");
    QTest::addColumn<double>("asFloat");
    QTest::addColumn<int>("asInteger");

    QTest::newRow("whole number") << "99" << 99.0 << 99;
    QTest::newRow("negative") << "-9" << -9.0 << -9;
    QTest::newRow("decimals") << "9.75" << 9.75 << 0;
    QTest::newRow("zero decimals") << "9.0" << 9.0 << 0;
    QTest::newRow("exponent") << "1e2" << 100.0 << 0;
    QTest::newRow("leading zeros") << "0099" << 99.0 << 99;
    QTest::newRow("hexadecimal") << "0x10" << 0.0 << 0;
    QTest::newRow("letters") << "DEFAULT" << 0.0 << 0;
    QTest::newRow("empty") << "" << 0.0 << 0;
    QTest::newRow("beyond an integer") << "9999999999" << 9999999999.0 << 0;
}

void tst_GenericField::missingValueAsNumber()
{
    QFETCH(QString, missingValue);
    QFETCH(double, asFloat);
    QFETCH(int, asInteger);

    for (int type : { 0, 1, 2, 3, 4 }) {
        Field field(type);
        field.setAsString(QStringLiteral("5"));
        field.realValue = 1.5;
        field.integerValue = 2;
        field.missing = true;
        field.missingValue = missingValue;
        // The scale of a real field does not reach its missing value.
        field.hasDecimalChar = false;
        field.decimals = QStringLiteral("1");
        QCOMPARE(field.getAsFloat(), asFloat);
        QCOMPARE(field.getAsInteger(), asInteger);
        QCOMPARE(field.getAsString(), missingValue);
    }
}

void tst_GenericField::numbersIgnoreOtherSpecialValues_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<double>("asFloat");
    QTest::addColumn<int>("asInteger");

    QTest::newRow("none") << int(None) << 0.0 << 0;
    QTest::newRow("integer") << int(Integer) << 2.0 << 2;
    QTest::newRow("real") << int(Real) << 1.5 << 1;
    QTest::newRow("string") << int(String) << 7.0 << 7;
}

void tst_GenericField::numbersIgnoreOtherSpecialValues()
{
    QFETCH(int, type);
    QFETCH(double, asFloat);
    QFETCH(int, asInteger);

    Field field(type);
    field.text[0] = L'7';
    field.realValue = 1.5;
    field.integerValue = 2;
    field.notApplicable = true;
    field.notApplicableValue = QStringLiteral("98");
    field.blank = true;
    QCOMPARE(field.getAsFloat(), asFloat);
    QCOMPARE(field.getAsInteger(), asInteger);
    QCOMPARE(field.asked, QStringList({ "missing", "missing" }));
}

void tst_GenericField::setAsFloatStoresTheRealValueOnly()
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

void tst_GenericField::setAsIntegerStoresTheIntegerValueOnly()
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

void tst_GenericField::valueLabel_data()
{
    QTest::addColumn<QString>("valueLabels");
    QTest::addColumn<QString>("code");
    QTest::addColumn<QString>("label");

    QTest::newRow("entry behind a tab") << "\t1 Male"
                                        << "1"
                                        << "Male";
    QTest::newRow("another code") << "\t1 Male"
                                  << "2"
                                  << "";
    QTest::newRow("empty code") << "\t1 Male"
                                << ""
                                << "";
    QTest::newRow("label of several words") << "\t1 Head of household"
                                            << "1"
                                            << "Head of household";
    QTest::newRow("longer code") << "\t1001 North West"
                                 << "1001"
                                 << "North West";
    QTest::newRow("start of the code") << "\t1001 North"
                                       << "10"
                                       << "";
    QTest::newRow("code in another spelling") << "\t01 Male"
                                              << "1"
                                              << "";
    QTest::newRow("case matters") << "\ta Yes"
                                  << "A"
                                  << "";
    QTest::newRow("code is not trimmed") << "\t1 Male"
                                         << " 1"
                                         << "";
    QTest::newRow("first character is not part of the code") << "=1 Male"
                                                             << "1"
                                                             << "=Male";
    QTest::newRow("first character is no key") << "1 Male"
                                               << "1"
                                               << "";
    QTest::newRow("code of one character falls away") << "1 Male"
                                                      << ""
                                                      << "1Male";
    QTest::newRow("key is trimmed") << "\t\t1 Male"
                                    << "1"
                                    << "Male";
    QTest::newRow("label is trimmed") << "\t1   Male  "
                                      << "1"
                                      << "Male";
    QTest::newRow("only the first entry is found") << "\t1 Male\t2 Female"
                                                   << "2"
                                                   << "";
    QTest::newRow("the label runs to the end") << "\t1 Male\t2 Female"
                                               << "1"
                                               << "Male\n2 Female";
    QTest::newRow("lines are not split") << "\n1 Male\n2 Female"
                                         << "1"
                                         << "Male\n2 Female";
    QTest::newRow("no label") << "\t1 "
                              << "1"
                              << "";
    QTest::newRow("nothing") << ""
                             << "1"
                             << "";
    QTest::newRow("nothing and no code") << ""
                                         << ""
                                         << "";
}

void tst_GenericField::valueLabel()
{
    QFETCH(QString, valueLabels);
    QFETCH(QString, code);
    QFETCH(QString, label);

    Field field(Integer);
    field.valueLabels = valueLabels;
    QCOMPARE(field.getValueLabel(code), label);
    QCOMPARE(field.valueLabels, QString(valueLabels).replace('\t', '\n'));
    // Asking again finds the same: only the tabs were changed.
    QCOMPARE(field.getValueLabel(code), label);
    QVERIFY(field.asked.isEmpty());
}

void tst_GenericField::valueLabelChangesTabsForGood()
{
    Field field(Integer);
    field.valueLabels = QStringLiteral("\t1 Male\t\t2 Female");
    QVERIFY(field.getValueLabel(QStringLiteral("5")).isEmpty());
    QCOMPARE(field.valueLabels, QStringLiteral("\n1 Male\n\n2 Female"));
}

int main(int argc, char** argv)
{
    if (argc == 4 && std::strcmp(argv[1], childArgument) == 0) {
        return assignWithLength(QByteArray(argv[2]).toInt(),
            std::strcmp(argv[3], "wide") == 0 ? Way::WideText : Way::Text);
    }
    QCoreApplication application(argc, argv);
    tst_GenericField test;
    QTEST_SET_MAIN_SOURCE_PATH
    return QTest::qExec(&test, argc, argv);
}

#include "tst_GenericField.moc"
