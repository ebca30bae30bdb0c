#include "BareField.h"
#include "GenericFields.h"

#include <model_Tessel/DataImport.h>
#include <model_Tessel/GenericField.h>

#include <QCoreApplication>
#include <QProcess>
#include <QtTest>

#include <sys/resource.h>

#include <algorithm>
#include <cstring>
#include <functional>
#include <iterator>
#include <limits>
#include <string>
#include <vector>

namespace {

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
