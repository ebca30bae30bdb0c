#include <model_Tessel/STATADataImport.h>

#include "DebugLines.h"
#include "StatFiles.h"

#include <QTemporaryDir>
#include <QtTest>

#include <limits>
#include <memory>

namespace {

constexpr double NaN = std::numeric_limits<double>::quiet_NaN();

// An importer that is filled by calling its callbacks.
class Importer : public TSTATADataImport {
public:
    using TSTATADataImport::TSTATADataImport;

    int addLabel(const char* setName, readstat_value_t value, const char* label)
    {
        return handle_value_label_stata(
            setName, value, label, static_cast<TSTATADataImport*>(this));
    }

    // The field that the variable became.
    TSTATAVariable* add(readstat_variable_t& variable, const char* setName = nullptr)
    {
        lastResult =
            handle_variable_stata(0, &variable, setName, static_cast<TSTATADataImport*>(this));
        return static_cast<TSTATAVariable*>(collectedFields.back());
    }

    // Adds a variable of that type with the value labels of the set "S".
    TSTATAVariable* addLabelled(readstat_type_t type, int decimals = 0)
    {
        const auto variable = newVariable("v", type);
        variable->decimals = decimals;
        variable->storage_width = 4;
        return add(*variable, "S");
    }

    const TStatValueLabel& label(std::size_t index = 0) const
    {
        return *labelSets.at("S").at(index);
    }

    int lastResult = -1;
};

// "unsupported TYPE": hands over a value label of that type. "open FILE": opens the file.
int childMain(const QStringList& arguments)
{
    if (arguments.value(0) == QLatin1String("unsupported")) {
        TSTATADataImport importer;
        handle_value_label_stata("S", valueOfType(arguments.value(1).toInt()), "label", &importer);
        std::puts("survived");
        return 0;
    }
    TSTATADataImport importer(arguments.value(1));
    return importer.openFile() ? importer.fields->size() : -1;
}

// The bytes of a UTF-8 text, each taken for a character.
QString takenAsLatin1(const char* utf8)
{
    return QString::fromLatin1(utf8);
}

} // namespace

class TestSTATADataImport : public QObject {
    Q_OBJECT

private slots:
    void init();
    void startsEmpty();
    void tellsItsProvider();
    void keepsTheBaseOperations();

    void valueLabelByType_data();
    void valueLabelByType();
    void labelWithoutTextIsDropped();
    void unsupportedTypeEndsTheProcess_data();
    void unsupportedTypeEndsTheProcess();

    void fieldTypeByType_data();
    void fieldTypeByType();
    void lengthByStorageWidth_data();
    void lengthByStorageWidth();
    void nameIsUtf8AndLabelsAreLatin1();
    void fieldsAreIndexedByAddress();

    void valueText_data();
    void valueText();
    void longTextValueIsCut();
    void decimalsChangeNothing();
    void boundsFromLabels_data();
    void boundsFromLabels();
    void textFieldHasLabelsAndDefaultBounds();
    void recordsAreNeverRewritten();

    void neverIsMissing();
    void blankIsForStringsOnly_data();
    void blankIsForStringsOnly();
    void callbacksThatNoParserCalls();

    void opensAFile_data();
    void opensAFile();
    void openingTwiceReadsAnew();
    void openReadAppends();
    void unreadableFileIsTold_data();
    void unreadableFileIsTold();
    void failureOfTheLabelsIsSilent();
    void successIsSilent();
    void selectLayoutSourceListsTheNames();

private:
    QString path(const QString& name) const
    {
        return m_dir->filePath(name);
    }
    QString writtenFile(const QString& name) const;

    std::unique_ptr<QTemporaryDir> m_dir;
};

void TestSTATADataImport::init()
{
    m_dir = std::make_unique<QTemporaryDir>();
    QVERIFY(m_dir->isValid());
}

// A file of two variables, the first with value labels; empty when it could not be written.
QString TestSTATADataImport::writtenFile(const QString& name) const
{
    StatFileWriter writer;
    readstat_label_set_t* labels = writer.addLabels("sexes", READSTAT_TYPE_INT32);
    readstat_label_int32_value(labels, 1, "Male");
    readstat_label_int32_value(labels, 2, "Female");
    writer.add("sex", READSTAT_TYPE_INT8, "%8.0g", labels);
    writer.add("name", READSTAT_TYPE_STRING, "%5s", nullptr, 5);
    return writer.write(path(name), TStatFileKind::Stata, 2) ? path(name) : QString();
}

void TestSTATADataImport::startsEmpty()
{
    const TSTATADataImport unnamed;
    QVERIFY(unnamed.sourceName.isEmpty());
    const TSTATADataImport named(QStringLiteral("no such file.dta"));
    QCOMPARE(named.sourceName, QStringLiteral("no such file.dta"));
    for (const TSTATADataImport* importer : { &unnamed, &named }) {
        QVERIFY(importer->collectedFields.empty());
        QVERIFY(importer->variablesByName.empty());
        QVERIFY(importer->labelSets.empty());
        QVERIFY(importer->fields->isEmpty());
    }
}

void TestSTATADataImport::tellsItsProvider()
{
    TSTATADataImport importer(QStringLiteral("census2010"));
    QCOMPARE(importer.getDataProviderType(), QStringLiteral("STATA"));
    QCOMPARE(importer.getDataProviderId(), QStringLiteral("STATA_census2010"));
    QCOMPARE(TSTATADataImport().getDataProviderId(), QStringLiteral("STATA_"));
}

void TestSTATADataImport::keepsTheBaseOperations()
{
    TSTATADataImport importer(QStringLiteral("census2010"));
    TDataImport& base = importer;
    QVERIFY(!base.isMultiple());
    QCOMPARE(base.getGroupCount(), 0);
    QCOMPARE(base.getRecordTypeIndex(QStringLiteral("1")), -1);
    const std::unique_ptr<QStringList> sources(base.getLayoutSource());
    QVERIFY(sources->isEmpty());
}

void TestSTATADataImport::valueLabelByType_data()
{
    QTest::addColumn<QByteArray>("bytes"); // of the value's union
    QTest::addColumn<int>("type");
    QTest::addColumn<double>("numValue");
    QTest::addColumn<int>("intValue");

    const auto bytesOf = [](const auto& value) {
        return QByteArray(reinterpret_cast<const char*>(&value), sizeof value);
    };
    QTest::newRow("double") << bytesOf(2.5) << int(READSTAT_TYPE_DOUBLE) << 2.5 << -1;
    QTest::newRow("float taken as eight bytes")
        << bytesOf(2.5) << int(READSTAT_TYPE_FLOAT) << 2.5 << -1;
    QTest::newRow("int8 below 0") << QByteArray("\x80\x01\x01\x01") << int(READSTAT_TYPE_INT8)
                                  << -1.0 << -128;
    QTest::newRow("int16 below 0") << bytesOf(qint16(-300)) + QByteArray("\x01\x01")
                                   << int(READSTAT_TYPE_INT16) << -1.0 << -300;
    QTest::newRow("int32") << bytesOf(-70'000) << int(READSTAT_TYPE_INT32) << -1.0 << -70'000;
    QTest::newRow("reference to a long string")
        << bytesOf(5) << int(READSTAT_TYPE_STRING_REF) << -1.0 << -88;
}

void TestSTATADataImport::valueLabelByType()
{
    QFETCH(QByteArray, bytes);
    QFETCH(int, type);
    QFETCH(double, numValue);
    QFETCH(int, intValue);
    readstat_value_t value = valueOfType(type);
    std::memcpy(&value.v, bytes.constData(), static_cast<std::size_t>(bytes.size()));

    Importer importer;
    QCOMPARE(importer.addLabel("S", value, "label"), int(READSTAT_HANDLER_OK));
    QCOMPARE(importer.label().numValue, numValue);
    QCOMPARE(importer.label().intValue, intValue);
    QVERIFY(!importer.label().strValue);
    QCOMPARE(QByteArray(importer.label().label), QByteArray("label"));
    QCOMPARE(importer.label().labelLength, std::size_t(5));
}

void TestSTATADataImport::labelWithoutTextIsDropped()
{
    Importer importer;
    QCOMPARE(importer.addLabel("S", integerValue(1), nullptr), int(READSTAT_HANDLER_OK));
    QVERIFY(importer.labelSets.at("S").empty());
}

void TestSTATADataImport::unsupportedTypeEndsTheProcess_data()
{
    QTest::addColumn<QString>("type");
    QTest::newRow("first after the known") << QStringLiteral("7");
    QTest::newRow("far away") << QStringLiteral("1000");
}

void TestSTATADataImport::unsupportedTypeEndsTheProcess()
{
    QFETCH(QString, type);
    const ChildResult child = runChild({ QStringLiteral("unsupported"), type });
    QVERIFY(child.hasFinished && !child.hasCrashed);
    QCOMPARE(child.exitCode, 1);
    QCOMPARE(child.errors, QByteArray("STATADataImport:282 unsupported type!\n"));
    QCOMPARE(child.output, QByteArray());
}

void TestSTATADataImport::fieldTypeByType_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<int>("decimals");
    QTest::addColumn<int>("fieldType");

    QTest::newRow("string") << int(READSTAT_TYPE_STRING) << 0 << 3;
    QTest::newRow("int8") << int(READSTAT_TYPE_INT8) << 0 << 1;
    QTest::newRow("int16") << int(READSTAT_TYPE_INT16) << 0 << 1;
    QTest::newRow("int32") << int(READSTAT_TYPE_INT32) << 0 << 1;
    QTest::newRow("int32 with decimals") << int(READSTAT_TYPE_INT32) << 2 << 1;
    QTest::newRow("float") << int(READSTAT_TYPE_FLOAT) << 0 << 2;
    QTest::newRow("double") << int(READSTAT_TYPE_DOUBLE) << 0 << 2;
    QTest::newRow("double with decimals") << int(READSTAT_TYPE_DOUBLE) << 2 << 2;
    QTest::newRow("reference to a long string") << int(READSTAT_TYPE_STRING_REF) << 0 << 3;
}

void TestSTATADataImport::fieldTypeByType()
{
    QFETCH(int, type);
    QFETCH(int, decimals);
    QFETCH(int, fieldType);
    const auto variable = newVariable("v", static_cast<readstat_type_t>(type));
    variable->decimals = decimals;
    variable->storage_width = 5;
    setFormat(*variable, "%9.0g");
    Importer importer;
    const TSTATAVariable* field = importer.add(*variable);
    QCOMPARE(importer.lastResult, int(READSTAT_HANDLER_OK));
    QCOMPARE(field->fieldType, fieldType);
    QCOMPARE(field->length, 5);
    QCOMPARE(field->minValue, QStringLiteral("0"));
    QCOMPARE(field->maxValue, QStringLiteral("99999"));
    QVERIFY(field->notApplicableValue.isEmpty());
    QVERIFY(field->valueLabels.isEmpty());
    QCOMPARE(field->owner, static_cast<TDataImport*>(&importer));
    QVERIFY(field->auxFlag);
}

void TestSTATADataImport::lengthByStorageWidth_data()
{
    QTest::addColumn<quint64>("width");
    QTest::addColumn<int>("length");
    QTest::addColumn<int>("nines");

    QTest::newRow("none") << quint64(0) << 0 << 0;
    QTest::newRow("one") << quint64(1) << 1 << 1;
    QTest::newRow("widest string") << quint64(2045) << 2045 << 2045;
    QTest::newRow("beyond any string") << quint64(2'000'000'000) << 2'000'000'000 << 65'535;
    QTest::newRow("below 0 in 32 bits") << quint64(0xFFFFFFFF) << -1 << 0;
    QTest::newRow("more than 32 bits") << quint64(0x1'0000'0007) << 7 << 7;
}

void TestSTATADataImport::lengthByStorageWidth()
{
    QFETCH(quint64, width);
    QFETCH(int, length);
    QFETCH(int, nines);
    const auto variable = newVariable("v", READSTAT_TYPE_STRING);
    variable->storage_width = width;
    Importer importer;
    const TSTATAVariable* field = importer.add(*variable);
    QCOMPARE(field->length, length);
    QCOMPARE(field->maxValue, QString(nines, QLatin1Char('9')));
}

void TestSTATADataImport::nameIsUtf8AndLabelsAreLatin1()
{
    const auto variable = newVariable(u8"año", READSTAT_TYPE_INT8);
    setLabel(*variable, u8"año de nacimiento");
    Importer importer;
    importer.addLabel("S", integerValue(1), u8"más");
    const TSTATAVariable* field = importer.add(*variable, "S");
    QCOMPARE(field->name, QString::fromUtf8(u8"año"));
    QCOMPARE(field->label, takenAsLatin1(u8"año de nacimiento"));
    QCOMPARE(field->valueLabels, takenAsLatin1(u8"1 más\t"));
}

void TestSTATADataImport::fieldsAreIndexedByAddress()
{
    const auto one = newVariable("same", READSTAT_TYPE_INT8);
    const auto other = newVariable("same", READSTAT_TYPE_INT8);
    Importer importer;
    importer.add(*one);
    TSTATAVariable* second = importer.add(*other);
    TSTATAVariable* third = importer.add(*one);
    QCOMPARE(importer.variablesByName.size(), std::size_t(2));
    QCOMPARE(importer.variablesByName.at(one->name), third);
    QCOMPARE(importer.variablesByName.at(other->name), second);
    QCOMPARE(importer.collectedFields.size(), std::size_t(3));
}

void TestSTATADataImport::valueText_data()
{
    QTest::addColumn<bool>("isInteger");
    QTest::addColumn<double>("number");
    QTest::addColumn<QString>("text");
    QTest::newRow("integer") << true << 1.0 << QStringLiteral("1 x\t");
    QTest::newRow("0") << true << 0.0 << QStringLiteral("0 x\t");
    QTest::newRow("below 0") << true << -7.0 << QStringLiteral("-7 x\t");
    QTest::newRow("-1") << true << -1.0 << QString();
    QTest::newRow("smallest") << true << -2147483648.0 << QStringLiteral("-2147483648 x\t");
    QTest::newRow("real") << false << 1.0 << QStringLiteral("1.000000 x\t");
    QTest::newRow("real fraction") << false << 2.25 << QStringLiteral("2.250000 x\t");
    QTest::newRow("real -1") << false << -1.0 << QString();
    QTest::newRow("not a number") << false << NaN << QStringLiteral("nan x\t");
}

void TestSTATADataImport::valueText()
{
    QFETCH(bool, isInteger);
    QFETCH(double, number);
    QFETCH(QString, text);
    Importer importer;
    importer.addLabel(
        "S", isInteger ? integerValue(static_cast<int>(number)) : realValue(number), "x");
    QCOMPARE(importer.addLabelled(READSTAT_TYPE_INT32)->valueLabels, text);
}

void TestSTATADataImport::longTextValueIsCut()
{
    const QByteArray text(600, 'a');
    Importer importer;
    importer.addLabel("S", textValue(text.constData()), "long");
    importer.addLabel("S", textValue(u8"ñ"), "short");
    QCOMPARE(importer.addLabelled(READSTAT_TYPE_STRING)->valueLabels,
        QString(511, QLatin1Char('a')) + QString::fromUtf8(u8" long\tñ short\t"));
}

void TestSTATADataImport::decimalsChangeNothing()
{
    Importer importer;
    importer.addLabel("S", realValue(1.5), "real");
    importer.addLabel("S", integerValue(4), "whole");
    for (const int decimals : { 0, 2, 0 }) {
        const TSTATAVariable* field = importer.addLabelled(READSTAT_TYPE_DOUBLE, decimals);
        QCOMPARE(field->valueLabels, QStringLiteral("1.500000 real\t4 whole\t"));
        QCOMPARE(field->minValue, QStringLiteral("1.5"));
        QCOMPARE(field->maxValue, QStringLiteral("4"));
    }
}

void TestSTATADataImport::boundsFromLabels_data()
{
    QTest::addColumn<QVector<int>>("numbers");
    QTest::addColumn<QString>("minValue");
    QTest::addColumn<QString>("maxValue");

    using Numbers = QVector<int>;
    QTest::newRow("two") << Numbers { 1, 2 } << QStringLiteral("1") << QStringLiteral("2");
    QTest::newRow("falling") << Numbers { 9, 5, 7 } << QStringLiteral("5") << QStringLiteral("9");
    QTest::newRow("-1 is skipped")
        << Numbers { -1 } << QStringLiteral("0") << QStringLiteral("9999");
    QTest::newRow("seven digits") << Numbers { 1234567 } << QStringLiteral("1.23457e+06")
                                  << QStringLiteral("1.23457e+06");
    QTest::newRow("minimum never seen")
        << Numbers { 2147483622 } << QStringLiteral("0") << QStringLiteral("2.14748e+09");
    QTest::newRow("maximum never seen")
        << Numbers { -2147483647 } << QStringLiteral("-2.14748e+09") << QStringLiteral("9999");
}

void TestSTATADataImport::boundsFromLabels()
{
    QFETCH(QVector<int>, numbers);
    QFETCH(QString, minValue);
    QFETCH(QString, maxValue);
    Importer importer;
    for (const int number : qAsConst(numbers))
        importer.addLabel("S", integerValue(number), "x");
    const TSTATAVariable* field = importer.addLabelled(READSTAT_TYPE_INT32);
    QCOMPARE(field->minValue, minValue);
    QCOMPARE(field->maxValue, maxValue);
}

void TestSTATADataImport::textFieldHasLabelsAndDefaultBounds()
{
    Importer importer;
    importer.addLabel("S", integerValue(3), "three");
    for (const readstat_type_t type : { READSTAT_TYPE_STRING, READSTAT_TYPE_STRING_REF }) {
        const TSTATAVariable* field = importer.addLabelled(type);
        QCOMPARE(field->valueLabels, QStringLiteral("3 three\t"));
        QCOMPARE(field->minValue, QStringLiteral("0"));
        QCOMPARE(field->maxValue, QStringLiteral("9999"));
    }
}

void TestSTATADataImport::recordsAreNeverRewritten()
{
    Importer importer;
    importer.addLabel("S", realValue(2.75), "x");
    importer.addLabelled(READSTAT_TYPE_DOUBLE);
    QCOMPARE(importer.label().numValue, 2.75);
    QCOMPARE(importer.label().intValue, -1);
}

void TestSTATADataImport::neverIsMissing()
{
    Importer importer;
    TSTATAVariable* number = importer.addLabelled(READSTAT_TYPE_INT32);
    QVERIFY(!number->missing);
    number->setAsString(QStringLiteral("12"));
    QVERIFY(!number->isMissing());
    QVERIFY(!number->isNotApplicable());
    QCOMPARE(number->getAsInteger(), 12);
    QCOMPARE(number->getAsString(), QStringLiteral("12"));
    number->missing = true;
    QVERIFY(number->isMissing());

    TSTATAVariable* text = importer.addLabelled(READSTAT_TYPE_STRING);
    text->setAsString(QStringLiteral("abcdef"));
    QVERIFY(!text->isMissing() && !text->isNotApplicable());
    QCOMPARE(text->getAsString(), QStringLiteral("abcd"));
}

void TestSTATADataImport::blankIsForStringsOnly_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<QString>("value");
    QTest::addColumn<bool>("blank");
    QTest::newRow("empty text") << int(READSTAT_TYPE_STRING) << QString() << true;
    QTest::newRow("white space") << int(READSTAT_TYPE_STRING) << QStringLiteral(" \t ") << true;
    QTest::newRow("text") << int(READSTAT_TYPE_STRING) << QStringLiteral("  a ") << false;
    QTest::newRow("empty number") << int(READSTAT_TYPE_DOUBLE) << QString() << false;
    QTest::newRow("white number") << int(READSTAT_TYPE_INT8) << QStringLiteral("  ") << false;
}

void TestSTATADataImport::blankIsForStringsOnly()
{
    QFETCH(int, type);
    QFETCH(QString, value);
    QFETCH(bool, blank);
    Importer importer;
    TSTATAVariable* field = importer.addLabelled(static_cast<readstat_type_t>(type));
    field->setAsString(value);
    QCOMPARE(field->isBlank(), blank);
}

void TestSTATADataImport::callbacksThatNoParserCalls()
{
    readstat_metadata_t metadata = {};
    metadata.row_count = 4711;
    metadata.var_count = 12;
    const auto variable = newVariable("v", READSTAT_TYPE_INT8);
    TSTATADataImport importer;
    QCOMPARE(handle_metadata(&metadata, &importer), 0);
    QCOMPARE(handle_variable(0, variable.get(), "S", &importer), 0);
    QCOMPARE(handle_variablexx(0, variable.get(), "S", &importer), 0);
    QVERIFY(importer.collectedFields.empty());
    QCOMPARE(importer.importSlotA, qint64(0));
    QCOMPARE(handle_metadata_stata(&metadata, &importer), 0);
    QCOMPARE(importer.importSlotA, qint64(4711));
    QCOMPARE(importer.importSlotB, qint64(12));
    QVERIFY(importer.collectedFields.empty());
}

void TestSTATADataImport::opensAFile_data()
{
    QTest::addColumn<int>("version");
    for (const int version : { 105, 108, 110, 111, 113, 114, 115, 117, 118, 119 })
        QTest::addRow("format %d", version) << version;
}

void TestSTATADataImport::opensAFile()
{
    QFETCH(int, version);
    StatFileWriter writer;
    QCOMPARE(readstat_writer_set_file_format_version(writer.get(), static_cast<quint8>(version)),
        READSTAT_OK);
    readstat_label_set_t* sexes = writer.addLabels("sexes", READSTAT_TYPE_INT32);
    readstat_label_int32_value(sexes, -1, "unset");
    readstat_label_int32_value(sexes, 1, "Male");
    readstat_label_int32_value(sexes, 2, "Female");
    readstat_variable_set_label(
        writer.add("sex", READSTAT_TYPE_INT8, "%8.0g", sexes), "Sex of the person");
    writer.add("age", READSTAT_TYPE_INT16, "%8.0g");
    writer.add("income", READSTAT_TYPE_DOUBLE, "%10.2f", sexes);
    writer.add("share", READSTAT_TYPE_FLOAT, "%9.0g");
    writer.add("name", READSTAT_TYPE_STRING, "%5s", nullptr, 5);
    const QString file = path(QStringLiteral("people.dta"));
    QVERIFY(writer.write(file, TStatFileKind::Stata, 3));

    TSTATADataImport importer(file);
    importer.importRatio = 0;
    QVERIFY(importer.openFile());
    QCOMPARE(importer.importRatio, 1.0);
    QCOMPARE(importer.fields->size(), 5);
    QCOMPARE(importer.variablesByName.size(), std::size_t(5));

    const TGenericField* sex = importer.getField(0);
    QVERIFY(dynamic_cast<const TSTATAVariable*>(sex));
    QCOMPARE(sex->name, QStringLiteral("sex"));
    QCOMPARE(sex->label, QStringLiteral("Sex of the person"));
    QCOMPARE(sex->fieldType, 1);
    QCOMPARE(sex->length, 1);
    QCOMPARE(importer.getField(1)->length, 2);
    QCOMPARE(importer.getField(1)->maxValue, QStringLiteral("99"));
    QCOMPARE(importer.getField(2)->fieldType, 2);
    QCOMPARE(importer.getField(2)->length, 8);
    QCOMPARE(importer.getField(3)->fieldType, 2);
    QCOMPARE(importer.getField(3)->length, 4);
    const TGenericField* name = importer.fieldByName(QStringLiteral("name"));
    QCOMPARE(name, importer.getField(4));
    QCOMPARE(name->fieldType, 3);
    QCOMPARE(name->minValue, QStringLiteral("0"));
    QCOMPARE(name->maxValue, QString(name->length, QLatin1Char('9')));
    QVERIFY(name->length >= 5);
    QCOMPARE(sex->valueLabels, QStringLiteral("1 Male\t2 Female\t"));
    QCOMPARE(importer.getField(2)->valueLabels, sex->valueLabels);
    QCOMPARE(sex->minValue, QStringLiteral("1"));
    QCOMPARE(importer.getField(2)->maxValue, QStringLiteral("2"));
}

void TestSTATADataImport::openingTwiceReadsAnew()
{
    const QString file = writtenFile(QStringLiteral("two.dta"));
    TSTATADataImport importer(file);
    QVERIFY(importer.openFile());
    const TGenericField* first = importer.getField(0);
    importer.variablesByName[""] = nullptr;
    QVERIFY(importer.openFile());
    QCOMPARE(importer.collectedFields.size(), std::size_t(2));
    QCOMPARE(importer.variablesByName.size(), std::size_t(2));
    QCOMPARE(importer.fields->size(), 2);
    QCOMPARE(importer.labelSets.at("sexes").size(), std::size_t(2));
    QVERIFY(importer.getField(0) != first);
    QCOMPARE(importer.getField(0)->name, first->name); // still alive
}

void TestSTATADataImport::openReadAppends()
{
    const QString file = writtenFile(QStringLiteral("any name"));
    TSTATADataImport importer;
    importer.openRead(file);
    QCOMPARE(importer.fields->size(), 2);
    importer.openRead(file);
    QCOMPARE(importer.collectedFields.size(), std::size_t(4));
    QCOMPARE(importer.fields->size(), 6);
    QCOMPARE(importer.labelSets.at("sexes").size(), std::size_t(2));
}

void TestSTATADataImport::unreadableFileIsTold_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("code");
    QTest::newRow("missing") << QStringLiteral("missing.dta") << int(READSTAT_ERROR_OPEN);
    QTest::newRow("percent in the name") << QStringLiteral("50%d.dta") << int(READSTAT_ERROR_OPEN);
    QTest::newRow("empty") << QStringLiteral("empty") << int(READSTAT_ERROR_READ);
    QTest::newRow("other kind") << QStringLiteral("text")
                                << int(READSTAT_ERROR_UNSUPPORTED_FILE_FORMAT_VERSION);
    QTest::newRow("cut in the names") << QStringLiteral("cut") << int(READSTAT_ERROR_READ);
}

void TestSTATADataImport::unreadableFileIsTold()
{
    QFETCH(QString, name);
    QFETCH(int, code);
    QVERIFY(QFile(path(QStringLiteral("empty"))).open(QIODevice::WriteOnly));
    QFile text(path(QStringLiteral("text")));
    QVERIFY(text.open(QIODevice::WriteOnly));
    text.write(QByteArray(2000, 'x'));
    text.close();
    QVERIFY(QFile::resize(writtenFile(QStringLiteral("cut")), 600));

    const ChildResult child = runChild({ QStringLiteral("open"), path(name) });
    QVERIFY(child.hasFinished && !child.hasCrashed);
    QCOMPARE(child.exitCode, 0); // fields
    QCOMPARE(child.errors, QByteArray());
    QCOMPARE(child.output,
        QByteArray("Error processing ") + path(name).toLocal8Bit() + ": " + QByteArray::number(code)
            + '\n');
}

void TestSTATADataImport::failureOfTheLabelsIsSilent()
{
    const QString file = writtenFile(QStringLiteral("cut.dta"));
    const qint64 size = QFile(file).size();
    QVERIFY(QFile::resize(file, size - 100)); // into the text of the labels, which end the file
    const ChildResult child = runChild({ QStringLiteral("open"), file });
    QVERIFY(child.hasFinished && !child.hasCrashed);
    QCOMPARE(child.exitCode, 2);
    QCOMPARE(child.errors, QByteArray());
    QCOMPARE(child.output, QByteArray());
    QVERIFY(!readStatDescription(file, TStatFileKind::Stata).isWhole());
}

void TestSTATADataImport::successIsSilent()
{
    const ChildResult child =
        runChild({ QStringLiteral("open"), writtenFile(QStringLiteral("good.dta")) });
    QCOMPARE(child.exitCode, 2);
    QCOMPARE(child.errors, QByteArray());
    QCOMPARE(child.output, QByteArray());
}

void TestSTATADataImport::selectLayoutSourceListsTheNames()
{
    TSTATADataImport importer(writtenFile(QStringLiteral("names.dta")));
    const DebugLines debugLines;
    const std::unique_ptr<QStringList> names(importer.selectLayoutSource());
    QCOMPARE(*names, QStringList({ QStringLiteral("sex"), QStringLiteral("name") }));
    QCOMPARE(debugLines.lines(),
        QStringList({ QStringLiteral("TSTATADataImport - selectLayoutSource"),
            QStringLiteral("DataImport - selectLayoutSource") }));
}

STAT_TEST_MAIN(TestSTATADataImport, childMain)
#include "tst_STATADataImport.moc"
