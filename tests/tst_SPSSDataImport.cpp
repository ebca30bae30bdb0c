#include "StatFiles.h"

#include <model_Tessel/SPSSDataImport.h>

#include <QTemporaryDir>
#include <QtTest>

#include <cmath>
#include <limits>
#include <memory>

namespace {

constexpr double NaN = std::numeric_limits<double>::quiet_NaN();

constexpr double Infinity = std::numeric_limits<double>::infinity();

// An importer that is filled by calling its callbacks.
class Importer : public TSPSSDataImport {
public:
    using TSPSSDataImport::TSPSSDataImport;

    int addLabel(const char* setName, readstat_value_t value, const char* label)
    {
        return handle_value_label_spss(setName, value, label, static_cast<TSPSSDataImport*>(this));
    }

    // The field that the variable became.
    TSPSSVariable* add(readstat_variable_t& variable, const char* setName = nullptr)
    {
        lastResult =
            handle_variable_spss(0, &variable, setName, static_cast<TSPSSDataImport*>(this));
        return static_cast<TSPSSVariable*>(collectedFields.back());
    }

    // Adds a variable of that type with the value labels of the set "S".
    TSPSSVariable* addLabelled(readstat_type_t type, int decimals)
    {
        const auto variable = newVariable("V", type);
        variable->decimals = decimals;
        return add(*variable, "S");
    }

    const TStatValueLabel& label(std::size_t index = 0) const
    {
        return *labelSets.at("S").at(index);
    }

    int lastResult = -1;
};

// "unsupported TYPE": hands over a value label of that type.
int childMain(const QStringList& arguments)
{
    if (arguments.value(0) != QLatin1String("unsupported"))
        return 1;
    TSPSSDataImport importer;
    handle_value_label_spss("S", valueOfType(arguments.value(1).toInt()), "label", &importer);
    std::puts("survived");
    return 0;
}

} // namespace

class TestSPSSDataImport : public QObject {
    Q_OBJECT

private slots:
    void init();
    void startsEmpty();
    void tellsItsProvider();
    void keepsTheBaseOperations();

    void valueLabelByType_data();
    void valueLabelByType();
    void floatLabelIsTakenAsEightBytes();
    void textsAreCopied();
    void labelsOfASetKeepTheirOrder();
    void labelWithoutTextIsDropped();
    void textValueWithoutTextStaysNull();
    void labelSetWithoutNameIsTheEmptyOne();
    void unsupportedTypeEndsTheProcess_data();
    void unsupportedTypeEndsTheProcess();

    void fieldTypeByType_data();
    void fieldTypeByType();
    void lengthByFormat_data();
    void lengthByFormat();
    void nameAndLabelAreUtf8();
    void nameWithoutEndIsBounded();
    void startsWithTheBaseDefaults();
    void fieldsAreIndexedByAddress();

    void valueTextWithDecimals_data();
    void valueTextWithDecimals();
    void valueTextWithoutDecimals_data();
    void valueTextWithoutDecimals();
    void longTextValueIsCut();
    void labelTextIsUtf8();
    void boundsFromLabels_data();
    void boundsFromLabels();
    void textFieldHasLabelsButNoBounds();
    void variableWithoutLabelsKeepsItsBounds_data();
    void variableWithoutLabelsKeepsItsBounds();
    void laterVariablesSeeWholeLabels();
    void earlierVariablesSawRealLabels();
    void foreignRecordsAreReadAndLeftAlone();

    void neverIsApplicableOrMissing();
    void blankIsForStringsOnly_data();
    void blankIsForStringsOnly();
    void metadataCallbackStoresTheRows();

private:
    QString path(const QString& name) const
    {
        return m_dir->filePath(name);
    }

    std::unique_ptr<QTemporaryDir> m_dir;
};

void TestSPSSDataImport::init()
{
    m_dir = std::make_unique<QTemporaryDir>();
    QVERIFY(m_dir->isValid());
}

void TestSPSSDataImport::startsEmpty()
{
    const TSPSSDataImport unnamed;
    QVERIFY(unnamed.sourceName.isEmpty());
    const TSPSSDataImport named(QStringLiteral("no such file.sav"));
    QCOMPARE(named.sourceName, QStringLiteral("no such file.sav"));
    for (const TSPSSDataImport* importer : { &unnamed, &named }) {
        QVERIFY(importer->collectedFields.empty());
        QVERIFY(importer->variablesByName.empty());
        QVERIFY(importer->labelSets.empty());
        QVERIFY(importer->fields->isEmpty());
    }
    const TStatValueLabel label;
    QCOMPARE(label.numValue, -1.0);
    QCOMPARE(label.intValue, -1);
    QVERIFY(!label.strValue && label.strLength == 0);
    QVERIFY(!label.label && label.labelLength == 0);
}

void TestSPSSDataImport::tellsItsProvider()
{
    TSPSSDataImport importer(QStringLiteral("census2010"));
    QCOMPARE(importer.getDataProviderType(), QStringLiteral("SPSS"));
    QCOMPARE(importer.getDataProviderId(), QStringLiteral("SPSS_census2010"));
    QCOMPARE(TSPSSDataImport().getDataProviderId(), QStringLiteral("SPSS_"));
}

void TestSPSSDataImport::keepsTheBaseOperations()
{
    TSPSSDataImport importer(QStringLiteral("census2010"));
    TDataImport& base = importer;
    QVERIFY(!base.isMultiple());
    QCOMPARE(base.getGroupCount(), 0);
    QVERIFY(base.getGroupName(0).isEmpty());
    QVERIFY(base.getGroupValue(0).isEmpty());
    QCOMPARE(base.getRecordTypeIndex(QStringLiteral("1")), -1);
    QVERIFY(base.getRecordTypeCurrent().isEmpty());
    QCOMPARE(base.getRecordTypeStart(), 0);
    QCOMPARE(base.getRecordTypeSize(), 0);
    const std::unique_ptr<QStringList> sources(base.getLayoutSource());
    QVERIFY(sources->isEmpty());
    const auto variable = newVariable("V", READSTAT_TYPE_DOUBLE);
    Importer filled;
    QVERIFY(filled.add(*variable)->getGroup().isEmpty());
}

void TestSPSSDataImport::valueLabelByType_data()
{
    QTest::addColumn<QByteArray>("bytes"); // of the value's union
    QTest::addColumn<int>("type");
    QTest::addColumn<double>("numValue");
    QTest::addColumn<int>("intValue");

    const auto bytesOf = [](const auto& value) {
        return QByteArray(reinterpret_cast<const char*>(&value), sizeof value);
    };
    QTest::newRow("double") << bytesOf(2.5) << int(READSTAT_TYPE_DOUBLE) << 2.5 << -1;
    QTest::newRow("double -1") << bytesOf(-1.0) << int(READSTAT_TYPE_DOUBLE) << -1.0 << -1;
    QTest::newRow("float") << bytesOf(2.5) << int(READSTAT_TYPE_FLOAT) << 2.5 << -1;
    QTest::newRow("int8") << QByteArray("\x7f\x7f\x7f\x7f") << int(READSTAT_TYPE_INT8) << -1.0
                          << 127;
    QTest::newRow("int8 below 0") << QByteArray("\x80\x01\x01\x01") << int(READSTAT_TYPE_INT8)
                                  << -1.0 << -128;
    QTest::newRow("int16") << bytesOf(qint16(300)) << int(READSTAT_TYPE_INT16) << -1.0 << 300;
    QTest::newRow("int16 below 0") << bytesOf(qint16(-300)) + QByteArray("\x01\x01")
                                   << int(READSTAT_TYPE_INT16) << -1.0 << -300;
    QTest::newRow("int32") << bytesOf(70'000) << int(READSTAT_TYPE_INT32) << -1.0 << 70'000;
    QTest::newRow("int32 below 0")
        << bytesOf(-70'000) << int(READSTAT_TYPE_INT32) << -1.0 << -70'000;
    QTest::newRow("reference to a long string")
        << bytesOf(5) << int(READSTAT_TYPE_STRING_REF) << -1.0 << -88;
}

void TestSPSSDataImport::valueLabelByType()
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
    QCOMPARE(importer.label().strLength, std::size_t(0));
    QCOMPARE(QByteArray(importer.label().label), QByteArray("label"));
    QCOMPARE(importer.label().labelLength, std::size_t(5));
}

void TestSPSSDataImport::floatLabelIsTakenAsEightBytes()
{
    readstat_value_t value = valueOfType(READSTAT_TYPE_FLOAT);
    value.v.float_value = 2.5F;
    double eightBytes = 0;
    std::memcpy(&eightBytes, &value.v, sizeof eightBytes);
    Importer importer;
    importer.addLabel("S", value, "label");
    QCOMPARE(importer.label().numValue, eightBytes);
    QVERIFY(importer.label().numValue != 2.5);
}

void TestSPSSDataImport::textsAreCopied()
{
    char setName[] = "S";
    char text[] = "ab";
    char label[] = "Label";
    Importer importer;
    importer.addLabel(setName, textValue(text), label);
    setName[0] = text[0] = label[0] = '?';
    QCOMPARE(importer.labelSets.begin()->first, std::string("S"));
    QCOMPARE(QByteArray(importer.label().strValue), QByteArray("ab"));
    QCOMPARE(importer.label().strLength, std::size_t(2));
    QCOMPARE(importer.label().numValue, -1.0);
    QCOMPARE(importer.label().intValue, -1);
    QCOMPARE(QByteArray(importer.label().label), QByteArray("Label"));
}

void TestSPSSDataImport::labelsOfASetKeepTheirOrder()
{
    Importer importer;
    importer.addLabel("S", integerValue(2), "two");
    importer.addLabel("T", integerValue(7), "seven");
    importer.addLabel("S", integerValue(1), "one");
    importer.addLabel("S", integerValue(2), "two again");
    QCOMPARE(importer.labelSets.size(), std::size_t(2));
    QCOMPARE(importer.labelSets.at("S").size(), std::size_t(3));
    QCOMPARE(importer.labelSets.at("T").size(), std::size_t(1));
    QCOMPARE(importer.label(0).intValue, 2);
    QCOMPARE(importer.label(1).intValue, 1);
    QCOMPARE(QByteArray(importer.label(2).label), QByteArray("two again"));
}

void TestSPSSDataImport::labelWithoutTextIsDropped()
{
    Importer importer;
    QCOMPARE(importer.addLabel("S", integerValue(1), nullptr), int(READSTAT_HANDLER_OK));
    QCOMPARE(importer.labelSets.size(), std::size_t(1));
    QVERIFY(importer.labelSets.at("S").empty());
    importer.addLabel("S", integerValue(2), "");
    QCOMPARE(importer.labelSets.at("S").size(), std::size_t(1));
    QCOMPARE(importer.label().labelLength, std::size_t(0));
}

void TestSPSSDataImport::textValueWithoutTextStaysNull()
{
    Importer importer;
    importer.addLabel("S", textValue(nullptr), "nothing");
    importer.addLabel("S", textValue(""), "empty");
    QVERIFY(!importer.label(0).strValue);
    QCOMPARE(QByteArray(importer.label(1).strValue), QByteArray(""));
    QCOMPARE(
        importer.addLabelled(READSTAT_TYPE_STRING, 0)->valueLabels, QStringLiteral(" empty\t"));
}

void TestSPSSDataImport::labelSetWithoutNameIsTheEmptyOne()
{
    Importer importer;
    importer.addLabel(nullptr, integerValue(1), "one");
    QCOMPARE(importer.labelSets.at("").size(), std::size_t(1));
}

void TestSPSSDataImport::unsupportedTypeEndsTheProcess_data()
{
    QTest::addColumn<QString>("type");
    QTest::newRow("first after the known") << QStringLiteral("7");
    QTest::newRow("far away") << QStringLiteral("1000");
}

void TestSPSSDataImport::unsupportedTypeEndsTheProcess()
{
    QFETCH(QString, type);
    const ChildResult child = runChild({ QStringLiteral("unsupported"), type });
    QVERIFY(child.hasFinished && !child.hasCrashed);
    QCOMPARE(child.exitCode, 1);
    QCOMPARE(child.errors, QByteArray("SPSSDataImport:304 unsupported type!\n"));
    QCOMPARE(child.output, QByteArray());
}

void TestSPSSDataImport::fieldTypeByType_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<int>("decimals");
    QTest::addColumn<int>("fieldType");
    QTest::addColumn<bool>("hasBounds");

    QTest::newRow("string") << int(READSTAT_TYPE_STRING) << 0 << 3 << false;
    QTest::newRow("string with decimals") << int(READSTAT_TYPE_STRING) << 2 << 3 << false;
    QTest::newRow("int8") << int(READSTAT_TYPE_INT8) << 0 << 1 << true;
    QTest::newRow("int16") << int(READSTAT_TYPE_INT16) << 0 << 1 << true;
    QTest::newRow("int32") << int(READSTAT_TYPE_INT32) << 0 << 1 << true;
    QTest::newRow("int32 with decimals") << int(READSTAT_TYPE_INT32) << 2 << 1 << true;
    QTest::newRow("float") << int(READSTAT_TYPE_FLOAT) << 0 << 1 << true;
    QTest::newRow("float with decimals") << int(READSTAT_TYPE_FLOAT) << 1 << 2 << true;
    QTest::newRow("double") << int(READSTAT_TYPE_DOUBLE) << 0 << 1 << true;
    QTest::newRow("double with decimals") << int(READSTAT_TYPE_DOUBLE) << 2 << 2 << true;
    QTest::newRow("double with decimals below 0") << int(READSTAT_TYPE_DOUBLE) << -1 << 2 << true;
    QTest::newRow("reference to a long string") << int(READSTAT_TYPE_STRING_REF) << 0 << 3 << true;
}

void TestSPSSDataImport::fieldTypeByType()
{
    QFETCH(int, type);
    QFETCH(int, decimals);
    QFETCH(int, fieldType);
    QFETCH(bool, hasBounds);
    const auto variable = newVariable("V", static_cast<readstat_type_t>(type));
    variable->decimals = decimals;
    setFormat(*variable, "F3.0");
    Importer importer;
    const TSPSSVariable* field = importer.add(*variable);
    QCOMPARE(importer.lastResult, int(READSTAT_HANDLER_OK));
    QCOMPARE(field->fieldType, fieldType);
    QCOMPARE(field->minValue, hasBounds ? QStringLiteral("0") : QString());
    QCOMPARE(field->maxValue, hasBounds ? QStringLiteral("999") : QString());
    QVERIFY(field->notApplicableValue.isEmpty());
    QVERIFY(field->valueLabels.isEmpty());
}

void TestSPSSDataImport::lengthByFormat_data()
{
    QTest::addColumn<QByteArray>("format");
    QTest::addColumn<int>("length");
    QTest::addColumn<QString>("maxValue");

    QTest::newRow("one digit") << QByteArray("F8.2") << 8 << QStringLiteral("99999999");
    QTest::newRow("three") << QByteArray("F3.0") << 3 << QStringLiteral("999");
    QTest::newRow("two digits") << QByteArray("F10.2") << 1 << QStringLiteral("9");
    QTest::newRow("two digits, another first")
        << QByteArray("F40.0") << 4 << QStringLiteral("9999");
    QTest::newRow("text") << QByteArray("A20") << 2 << QStringLiteral("99");
    QTest::newRow("two letters") << QByteArray("DATE11") << 0 << QString();
    QTest::newRow("letters only") << QByteArray("EDATE") << 0 << QString();
    QTest::newRow("zero") << QByteArray("F0.2") << 0 << QString();
    QTest::newRow("one letter") << QByteArray("F") << 0 << QString();
    QTest::newRow("none") << QByteArray("") << 0 << QString();
    QTest::newRow("digit first") << QByteArray("8") << 0 << QString();
    QTest::newRow("second is no ASCII digit") << QByteArray("F\xd9\xa3") << 0 << QString();
}

void TestSPSSDataImport::lengthByFormat()
{
    QFETCH(QByteArray, format);
    QFETCH(int, length);
    QFETCH(QString, maxValue);
    const auto variable = newVariable("V", READSTAT_TYPE_DOUBLE);
    setFormat(*variable, format.constData());
    Importer importer;
    const TSPSSVariable* field = importer.add(*variable);
    QCOMPARE(field->length, length);
    QCOMPARE(field->minValue, QStringLiteral("0"));
    QCOMPARE(field->maxValue, maxValue);
}

void TestSPSSDataImport::nameAndLabelAreUtf8()
{
    const auto variable = newVariable(u8"Población", READSTAT_TYPE_DOUBLE);
    setLabel(*variable, u8"Größe in €");
    Importer importer;
    const TSPSSVariable* field = importer.add(*variable);
    setLabel(*variable, "gone");
    QCOMPARE(field->name, QString::fromUtf8(u8"Población"));
    QCOMPARE(field->label, QString::fromUtf8(u8"Größe in €"));
}

void TestSPSSDataImport::nameWithoutEndIsBounded()
{
    const auto variable = newVariable("V", READSTAT_TYPE_DOUBLE);
    std::memset(variable->name, 'n', sizeof variable->name);
    std::memset(variable->label, 'l', sizeof variable->label);
    Importer importer;
    const TSPSSVariable* field = importer.add(*variable);
    QCOMPARE(field->name, QString(300, QLatin1Char('n')));
    QCOMPARE(field->label, QString(1024, QLatin1Char('l')));
}

void TestSPSSDataImport::startsWithTheBaseDefaults()
{
    const auto variable = newVariable("V", READSTAT_TYPE_DOUBLE);
    Importer importer;
    const TSPSSVariable* field = importer.add(*variable);
    QCOMPARE(field->owner, static_cast<TDataImport*>(&importer));
    QVERIFY(field->auxFlag);
    QCOMPARE(field->start, 0);
    QVERIFY(field->missingValue.isEmpty());
    QVERIFY(field->decimals.isEmpty());
    QVERIFY(field->hasDecimalChar);
    QVERIFY(!field->conversionFailed);
}

void TestSPSSDataImport::fieldsAreIndexedByAddress()
{
    const auto one = newVariable("SAME", READSTAT_TYPE_DOUBLE);
    const auto other = newVariable("SAME", READSTAT_TYPE_DOUBLE);
    Importer importer;
    TSPSSVariable* first = importer.add(*one);
    TSPSSVariable* second = importer.add(*other);
    QCOMPARE(importer.variablesByName.size(), std::size_t(2));
    QCOMPARE(importer.variablesByName.at(one->name), first);
    QCOMPARE(importer.variablesByName.at(other->name), second);

    std::strcpy(one->name, "CHANGED");
    TSPSSVariable* third = importer.add(*one);
    QCOMPARE(importer.variablesByName.size(), std::size_t(2));
    QCOMPARE(importer.variablesByName.at(one->name), third);
    const std::vector<TGenericField*> all { first, second, third };
    QVERIFY(importer.collectedFields == all);
    QVERIFY(importer.fields->isEmpty());
}

void TestSPSSDataImport::valueTextWithDecimals_data()
{
    QTest::addColumn<double>("number");
    QTest::addColumn<QString>("text");
    QTest::newRow("whole") << 1.0 << QStringLiteral("1.000000 x\t");
    QTest::newRow("fraction") << 2.25 << QStringLiteral("2.250000 x\t");
    QTest::newRow("rounded") << 1.0 / 3 << QStringLiteral("0.333333 x\t");
    QTest::newRow("rounded up") << 0.9999999 << QStringLiteral("1.000000 x\t");
    QTest::newRow("below 0") << -7.5 << QStringLiteral("-7.500000 x\t");
    QTest::newRow("0") << 0.0 << QStringLiteral("0.000000 x\t");
    QTest::newRow("-0") << -0.0 << QStringLiteral("-0.000000 x\t");
    QTest::newRow("-1") << -1.0 << QString();
    QTest::newRow("near -1") << -1.0000001 << QStringLiteral("-1.000000 x\t");
    QTest::newRow("not a number") << NaN << QStringLiteral("nan x\t");
    QTest::newRow("negative not a number")
        << std::copysign(NaN, -1.0) << QStringLiteral("-nan x\t");
    QTest::newRow("infinite") << Infinity << QStringLiteral("inf x\t");
    QTest::newRow("below infinite") << -Infinity << QStringLiteral("-inf x\t");
    QTest::newRow("large") << 1e22 << QStringLiteral("10000000000000000000000.000000 x\t");
    QTest::newRow("largest") << std::numeric_limits<double>::max()
                             << QString::asprintf("%f x\t", std::numeric_limits<double>::max());
}

void TestSPSSDataImport::valueTextWithDecimals()
{
    QFETCH(double, number);
    QFETCH(QString, text);
    Importer importer;
    importer.addLabel("S", realValue(number), "x");
    QCOMPARE(importer.addLabelled(READSTAT_TYPE_DOUBLE, 2)->valueLabels, text);
    QCOMPARE(std::isnan(importer.label().numValue), std::isnan(number));
    QCOMPARE(importer.label().intValue, -1);
}

void TestSPSSDataImport::valueTextWithoutDecimals_data()
{
    constexpr int Lowest = std::numeric_limits<int>::min();
    QTest::addColumn<double>("number");
    QTest::addColumn<int>("whole"); // what the record holds afterwards
    QTest::addColumn<QString>("text");
    QTest::newRow("whole") << 1.0 << 1 << QStringLiteral("1 x\t");
    QTest::newRow("fraction") << 2.75 << 2 << QStringLiteral("2 x\t");
    QTest::newRow("fraction below 0") << -2.75 << -2 << QStringLiteral("-2 x\t");
    QTest::newRow("-1") << -1.0 << -1 << QString();
    QTest::newRow("truncated to -1") << -1.75 << -1 << QString();
    QTest::newRow("truncated to 0") << -0.5 << 0 << QStringLiteral("0 x\t");
    QTest::newRow("largest") << 2147483647.0 << 2147483647 << QStringLiteral("2147483647 x\t");
    QTest::newRow("largest with a fraction")
        << 2147483647.5 << 2147483647 << QStringLiteral("2147483647 x\t");
    QTest::newRow("too large") << 2147483648.0 << Lowest << QStringLiteral("-2147483648 x\t");
    QTest::newRow("too small") << -2147483649.0 << Lowest << QStringLiteral("-2147483648 x\t");
    QTest::newRow("infinite") << Infinity << Lowest << QStringLiteral("-2147483648 x\t");
    QTest::newRow("not a number") << NaN << Lowest << QStringLiteral("-2147483648 x\t");
}

void TestSPSSDataImport::valueTextWithoutDecimals()
{
    QFETCH(double, number);
    QFETCH(int, whole);
    QFETCH(QString, text);
    Importer importer;
    importer.addLabel("S", realValue(number), "x");
    QCOMPARE(importer.addLabelled(READSTAT_TYPE_DOUBLE, 0)->valueLabels, text);
    QCOMPARE(importer.label().numValue, -1.0);
    QCOMPARE(importer.label().intValue, whole);
    QCOMPARE(importer.addLabelled(READSTAT_TYPE_DOUBLE, 0)->valueLabels, text);
}

void TestSPSSDataImport::longTextValueIsCut()
{
    const QByteArray ascii(600, 'a');
    const QByteArray umlauts = QString(300, QChar(0xe4)).toUtf8();
    Importer importer;
    importer.addLabel("S", textValue(ascii.constData()), "ascii");
    importer.addLabel("S", textValue(umlauts.constData()), "umlauts");
    QCOMPARE(importer.label(0).strLength, std::size_t(600));
    const QString expected = QString(511, QLatin1Char('a')) + QStringLiteral(" ascii\t")
        + QString(255, QChar(0xe4)) + QChar(QChar::ReplacementCharacter)
        + QStringLiteral(" umlauts\t");
    QCOMPARE(importer.addLabelled(READSTAT_TYPE_STRING, 0)->valueLabels, expected);
}

void TestSPSSDataImport::labelTextIsUtf8()
{
    Importer importer;
    importer.addLabel("S", realValue(1), u8"señor");
    importer.addLabel("S", textValue(u8"ñ"), u8"สวัสดี");
    QCOMPARE(importer.addLabelled(READSTAT_TYPE_DOUBLE, 0)->valueLabels,
        QString::fromUtf8(u8"1 señor\tñ สวัสดี\t"));
}

void TestSPSSDataImport::boundsFromLabels_data()
{
    QTest::addColumn<QVector<double>>("numbers");
    QTest::addColumn<int>("decimals");
    QTest::addColumn<QString>("minValue");
    QTest::addColumn<QString>("maxValue");

    using Numbers = QVector<double>;
    const QString zero = QStringLiteral("0");
    const QString nines = QStringLiteral("999");
    QTest::newRow("two") << Numbers { 1, 2 } << 0 << QStringLiteral("1") << QStringLiteral("2");
    QTest::newRow("falling") << Numbers { 9, 5, 7 } << 0 << QStringLiteral("5")
                             << QStringLiteral("9");
    QTest::newRow("one") << Numbers { 4 } << 0 << QStringLiteral("4") << QStringLiteral("4");
    QTest::newRow("fractions") << Numbers { 1.5, 2.25 } << 2 << QStringLiteral("1.5")
                               << QStringLiteral("2.25");
    QTest::newRow("fractions become whole")
        << Numbers { 1.5, 2.25 } << 0 << QStringLiteral("1") << QStringLiteral("2");
    QTest::newRow("below 0") << Numbers { -5, -3 } << 0 << QStringLiteral("-5")
                             << QStringLiteral("-3");
    QTest::newRow("-1 is skipped") << Numbers { -1 } << 0 << zero << nines;
    QTest::newRow("-1 is skipped among others")
        << Numbers { -1, 3 } << 2 << QStringLiteral("3") << QStringLiteral("3");
    QTest::newRow("six digits") << Numbers { 123456, 999999 } << 0 << QStringLiteral("123456")
                                << QStringLiteral("999999");
    QTest::newRow("seven digits") << Numbers { 1234567, 7654321 } << 0
                                  << QStringLiteral("1.23457e+06") << QStringLiteral("7.65432e+06");
    QTest::newRow("minimum never seen")
        << Numbers { 999999999 } << 0 << zero << QStringLiteral("1e+09");
    QTest::newRow("minimum just seen")
        << Numbers { 999999998 } << 0 << QStringLiteral("1e+09") << QStringLiteral("1e+09");
    QTest::newRow("maximum never seen")
        << Numbers { -999999999 } << 0 << QStringLiteral("-1e+09") << nines;
    QTest::newRow("maximum just seen")
        << Numbers { -999999998 } << 0 << QStringLiteral("-1e+09") << QStringLiteral("-1e+09");
    QTest::newRow("not a number") << Numbers { NaN } << 2 << zero << nines;
    QTest::newRow("not a number among others")
        << Numbers { 3, NaN, 8 } << 2 << QStringLiteral("3") << QStringLiteral("8");
    QTest::newRow("infinite") << Numbers { -Infinity, Infinity } << 2 << QStringLiteral("-inf")
                              << QStringLiteral("inf");
}

void TestSPSSDataImport::boundsFromLabels()
{
    QFETCH(QVector<double>, numbers);
    QFETCH(int, decimals);
    QFETCH(QString, minValue);
    QFETCH(QString, maxValue);
    Importer importer;
    for (const double number : qAsConst(numbers))
        importer.addLabel("S", realValue(number), "x");
    importer.addLabel("S", textValue("5"), "a text has no number");
    const auto variable = newVariable("V", READSTAT_TYPE_DOUBLE);
    variable->decimals = decimals;
    setFormat(*variable, "F3.0");
    const TSPSSVariable* field = importer.add(*variable, "S");
    QCOMPARE(field->minValue, minValue);
    QCOMPARE(field->maxValue, maxValue);
}

void TestSPSSDataImport::textFieldHasLabelsButNoBounds()
{
    Importer importer;
    importer.addLabel("S", textValue("F"), "Female");
    importer.addLabel("S", realValue(2), "two");
    const auto variable = newVariable("V", READSTAT_TYPE_STRING);
    setFormat(*variable, "A1");
    const TSPSSVariable* field = importer.add(*variable, "S");
    QCOMPARE(field->valueLabels, QStringLiteral("F Female\t2 two\t"));
    QVERIFY(field->minValue.isEmpty());
    QVERIFY(field->maxValue.isEmpty());
    QCOMPARE(importer.label(1).intValue, 2); // a string variable has no decimals either
    const TSPSSVariable* reference = importer.addLabelled(READSTAT_TYPE_STRING_REF, 2);
    QCOMPARE(reference->valueLabels, QStringLiteral("F Female\t2 two\t"));
    QCOMPARE(reference->minValue, QStringLiteral("0"));
}

void TestSPSSDataImport::variableWithoutLabelsKeepsItsBounds_data()
{
    QTest::addColumn<QByteArray>("setName");
    QTest::newRow("no set") << QByteArray();
    QTest::newRow("unknown set") << QByteArray("other");
    QTest::newRow("empty set") << QByteArray("empty");
    QTest::newRow("name in other letters") << QByteArray("s");
}

void TestSPSSDataImport::variableWithoutLabelsKeepsItsBounds()
{
    QFETCH(QByteArray, setName);
    Importer importer;
    importer.addLabel("S", realValue(1), "one");
    importer.addLabel("empty", realValue(1), nullptr);
    const auto variable = newVariable("V", READSTAT_TYPE_DOUBLE);
    setFormat(*variable, "F2.0");
    const TSPSSVariable* field =
        importer.add(*variable, setName.isNull() ? nullptr : setName.constData());
    QVERIFY(field->valueLabels.isEmpty());
    QCOMPARE(field->minValue, QStringLiteral("0"));
    QCOMPARE(field->maxValue, QStringLiteral("99"));
    QCOMPARE(importer.labelSets.size(), std::size_t(2));
    QCOMPARE(importer.label().numValue, 1.0);
}

void TestSPSSDataImport::laterVariablesSeeWholeLabels()
{
    Importer importer;
    importer.addLabel("S", realValue(1.5), "low");
    importer.addLabel("S", realValue(2.5), "high");
    importer.addLabel("S", realValue(-1.5), "lost");
    importer.addLabelled(READSTAT_TYPE_DOUBLE, 0);
    const TSPSSVariable* field = importer.addLabelled(READSTAT_TYPE_DOUBLE, 2);
    QCOMPARE(field->fieldType, 2);
    QCOMPARE(field->valueLabels, QStringLiteral("1 low\t2 high\t"));
    QCOMPARE(field->minValue, QStringLiteral("1"));
    QCOMPARE(field->maxValue, QStringLiteral("2"));
}

void TestSPSSDataImport::earlierVariablesSawRealLabels()
{
    Importer importer;
    importer.addLabel("S", realValue(1.5), "low");
    importer.addLabel("S", realValue(-1.5), "lost");
    const TSPSSVariable* real = importer.addLabelled(READSTAT_TYPE_DOUBLE, 2);
    const TSPSSVariable* whole = importer.addLabelled(READSTAT_TYPE_DOUBLE, 0);
    QCOMPARE(real->valueLabels, QStringLiteral("1.500000 low\t-1.500000 lost\t"));
    QCOMPARE(real->minValue, QStringLiteral("-1.5"));
    QCOMPARE(whole->valueLabels, QStringLiteral("1 low\t"));
    QCOMPARE(whole->minValue, QStringLiteral("1"));
}

void TestSPSSDataImport::foreignRecordsAreReadAndLeftAlone()
{
    char label[] = "mine";
    TStatValueLabel record;
    record.numValue = 3;
    record.label = label;
    {
        Importer importer;
        importer.labelSets["S"].push_back(&record);
        QCOMPARE(importer.addLabelled(READSTAT_TYPE_DOUBLE, 2)->valueLabels,
            QStringLiteral("3.000000 mine\t"));
        importer.openRead(path(QStringLiteral("missing")));
        QVERIFY(importer.labelSets.empty());
        importer.labelSets["S"].push_back(&record);
    }
    QCOMPARE(record.label, label);
}

void TestSPSSDataImport::neverIsApplicableOrMissing()
{
    Importer importer;
    TSPSSVariable* number = importer.addLabelled(READSTAT_TYPE_DOUBLE, 0);
    TSPSSVariable* text = importer.addLabelled(READSTAT_TYPE_STRING, 0);
    for (TSPSSVariable* field : { number, text }) {
        field->length = 5;
        for (const QString& value : { QString(), QStringLiteral("1") }) {
            field->setAsString(value);
            QVERIFY(field->isMissing());
            QVERIFY(!field->isNotApplicable());
            QVERIFY(field->getAsString().isEmpty()); // the missing value
            QCOMPARE(field->getAsInteger(), 0);
        }
    }
    QCOMPARE(number->integerValue, 0.0); // a missing value is not converted
}

void TestSPSSDataImport::blankIsForStringsOnly_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<QString>("value");
    QTest::addColumn<bool>("blank");
    QTest::newRow("empty text") << int(READSTAT_TYPE_STRING) << QString() << true;
    QTest::newRow("white space") << int(READSTAT_TYPE_STRING) << QStringLiteral(" \t ") << true;
    QTest::newRow("text") << int(READSTAT_TYPE_STRING) << QStringLiteral("  a ") << false;
    QTest::newRow("reference") << int(READSTAT_TYPE_STRING_REF) << QStringLiteral("  ") << true;
    QTest::newRow("empty number") << int(READSTAT_TYPE_DOUBLE) << QString() << false;
    QTest::newRow("white number") << int(READSTAT_TYPE_INT8) << QStringLiteral("  ") << false;
}

void TestSPSSDataImport::blankIsForStringsOnly()
{
    QFETCH(int, type);
    QFETCH(QString, value);
    QFETCH(bool, blank);
    Importer importer;
    TSPSSVariable* field = importer.addLabelled(static_cast<readstat_type_t>(type), 0);
    field->length = 5;
    field->setAsString(value);
    QCOMPARE(field->isBlank(), blank);
}

void TestSPSSDataImport::metadataCallbackStoresTheRows()
{
    readstat_metadata_t metadata = {};
    metadata.row_count = 4711;
    metadata.var_count = 12;
    int context[2] = { 5, 6 };
    QCOMPARE(handle_metadata_spss(&metadata, context), 0);
    QCOMPARE(context[0], 4711);
    QCOMPARE(context[1], 6);
}

STAT_TEST_MAIN(TestSPSSDataImport, childMain)
#include "tst_SPSSDataImport.moc"
