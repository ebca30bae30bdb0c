#include "AddRow.h"
#include "CSProImporters.h"
#include "CSProTexts.h"

#include <model_Tessel/CSPro.h>
#include <model_Tessel/CSProDataImport.h>
#include <model_Tessel/ErrorManager.h>

#include <QLoggingCategory>
#include <QtTest>

#include <algorithm>
#include <stdexcept>

namespace {

// A field that fails while its text is looked at.
class FailingVariable : public TCSProVariable {
public:
    using TCSProVariable::TCSProVariable;

    bool isBlank() override
    {
        switch (failure) {
        case 1:
            throw std::runtime_error("no text");
        case 2:
            throw new OxErrorManager(QStringLiteral("Test"), ToDouble);
        case 3:
            throw 5;
        default:
            return TCSProVariable::isBlank();
        }
    }

    int failure = 0;
};

// A field of four characters, and its item with one special code.
struct CodedField {
    CodedField(QString TCSProItem::*kind, const QString& code, int type, const QString& value)
        : field(&importer)
    {
        item.*kind = code;
        field.item = &item;
        field.fieldType = type;
        field.length = 4;
        field.setAsString(value);
    }

    TCSProDataImport importer;
    TCSProItem item;
    TCSProVariable field;
};

} // namespace

class tst_CSProVariable : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();

    void specialCodesOfTheItem();
    void specialCodesOfAnyOtherField();
    void stringOfChar_data();
    void stringOfChar();

    void variableStartValues();
    void assignedText_data();
    void assignedText();
    void assignedThroughTheBase_data();
    void assignedThroughTheBase();
    void aShorterTextReplacesALongerOne();
    void parsedFieldsAreNotScaled_data();
    void parsedFieldsAreNotScaled();
    void missing_data();
    void missing();
    void notApplicable_data();
    void notApplicable();
    void blank_data();
    void blank();
    void specialTextsKeepTheNumbers_data();
    void specialTextsKeepTheNumbers();
    void aFailedConversion_data();
    void aFailedConversion();
    void conversionFailedIsLeftAlone();
    void specialTextsAsText();
};

void tst_CSProVariable::initTestCase()
{
    QLoggingCategory::setFilterRules(QStringLiteral("default.debug=false"));
}

void tst_CSProVariable::specialCodesOfTheItem()
{
    TCSProDataImport importer;
    TCSProItem item;
    item.missingCode = QStringLiteral(" 9");
    item.notApplicableCode = QStringLiteral("8 ");
    TCSProVariable field(&importer);
    field.item = &item;
    field.missingValue = QStringLiteral("old");
    field.notApplicableValue = QStringLiteral("old");
    importer.getVarMissingValue(&field);
    QCOMPARE(field.missingValue, QString(" 9"));
    QCOMPARE(field.notApplicableValue, QString("old"));
    importer.getNotApplicable(&field);
    QCOMPARE(field.notApplicableValue, QString("8 "));
    item.missingCode.clear();
    item.notApplicableCode.clear();
    importer.getVarMissingValue(&field);
    importer.getNotApplicable(&field);
    QCOMPARE(field.missingValue, QString());
    QCOMPARE(field.notApplicableValue, QString());
}

// A field without an item keeps what it has.
void tst_CSProVariable::specialCodesOfAnyOtherField()
{
    TCSProDataImport importer;
    TCSProVariable field(&importer);
    field.missingValue = QStringLiteral("9");
    field.notApplicableValue = QStringLiteral("8");
    importer.getVarMissingValue(&field);
    importer.getNotApplicable(&field);
    QCOMPARE(field.missingValue, QString("9"));
    QCOMPARE(field.notApplicableValue, QString("8"));
}

void tst_CSProVariable::stringOfChar_data()
{
    QTest::addColumn<int>("count");
    QTest::addColumn<QString>("text");
    row("three", 3, "xxx");
    row("one", 1, "x");
    row("none", 0, "");
    row("fewer than none", -1, "");
    row("far fewer", -2147483647, "");
}

void tst_CSProVariable::stringOfChar()
{
    QFETCH(int, count);
    QFETCH(QString, text);
    TCSProDataImport importer;
    QCOMPARE(importer.StringOfChar('x', count), text);
}

void tst_CSProVariable::variableStartValues()
{
    TCSProDataImport importer;
    TCSProVariable field(&importer);
    QCOMPARE(field.group, QString());
    QVERIFY(!field.item);
    QCOMPARE(field.owner, &importer);
    QCOMPARE(field.getGroup(), QString());
    field.group = QStringLiteral("PERSON");
    TGenericField& base = field;
    QCOMPARE(base.getGroup(), QString("PERSON"));
    QCOMPARE(field.fieldType, 0);
    QCOMPARE(field.realValue, NoValue);
    base.addValueLabel("1", "one");
    QCOMPARE(field.valueLabels, QString());
}

void tst_CSProVariable::assignedText_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<QString>("decimals");
    QTest::addColumn<bool>("itemHasDecimalChar");
    QTest::addColumn<QString>("value");
    QTest::addColumn<double>("real");
    QTest::addColumn<double>("integer"); // 77 before

    const int integer = 1;
    const int real = 2;
    const int text = 3;
    row("integer sets both numbers", integer, "0", false, "12", 12.0, 12.0);
    row("integer with blanks around", integer, "0", false, " 12 ", 12.0, 12.0);
    row("integer below zero", integer, "0", false, "-4", -4.0, -4.0);
    row("integer with a point", integer, "0", false, "1.5", 1.5, 1.5);
    row("integer with an exponent", integer, "0", false, "1e3", 1000.0, 1000.0);
    row("integer is never scaled", integer, "2", false, "1234", 1234.0, 1234.0);
    row("integer that is no number", integer, "0", false, "abc", 0.0, 0.0);
    row("integer of zeros", integer, "0", false, "000", 0.0, 0.0);
    row("integer too large for any number", integer, "0", false, "1e999", 0.0, 0.0);
    row("real too large for any number", real, "0", false, "1e999", 0.0, 77.0);
    row("real", real, "0", false, "12.5", 12.5, 77.0);
    row("real that is no number", real, "0", false, "abc", 0.0, 77.0);
    row("real with blanks around", real, "0", false, "  1234 ", 1234.0, 77.0);
    row("real scaled by its decimals", real, "2", false, "1234", 12.34, 77.0);
    row("real with its own point is not scaled", real, "2", true, "1234", 1234.0, 77.0);
    row("real without decimals", real, "", false, "1234", 1234.0, 77.0);
    row("real with one character for decimals", real, character(2), false, "1234", 1234.0, 77.0);
    row("real with negative decimals", real, "-1", false, "5", 50.0, 77.0);
    row("text leaves the numbers alone", text, "", false, "12", 99.0, 77.0);
    row("type 0 leaves the numbers alone", 0, "", false, "12", 99.0, 77.0);
}

void tst_CSProVariable::assignedText()
{
    QFETCH(int, type);
    QFETCH(QString, decimals);
    QFETCH(bool, itemHasDecimalChar);
    QFETCH(QString, value);
    QFETCH(double, real);
    QFETCH(double, integer);
    // The item decides about the point; the field's own flag does not count.
    for (bool fieldHasDecimalChar : { true, false }) {
        TCSProDataImport importer;
        TCSProItem item;
        item.hasDecimalChar = itemHasDecimalChar;
        TCSProVariable field(&importer);
        field.item = &item;
        field.fieldType = type;
        field.decimals = decimals;
        field.hasDecimalChar = fieldHasDecimalChar;
        field.length = 8;
        field.realValue = 99;
        field.integerValue = 77;
        field.setAsString(value);
        QCOMPARE(field.realValue, real);
        QCOMPARE(field.integerValue, integer);
        QCOMPARE(field.conversionFailed, false);
        if (type != 0) {
            QCOMPARE(textOf(field), value);
        } else {
            QCOMPARE(static_cast<unsigned>(field.text[0]), 0x15151515U);
            QCOMPARE(static_cast<unsigned>(field.text[1]), 0x15151515U);
            QCOMPARE(static_cast<unsigned>(field.text[2]), 0U);
        }
    }
}

void tst_CSProVariable::assignedThroughTheBase_data()
{
    QTest::addColumn<bool>("fieldHasDecimalChar");
    QTest::addColumn<bool>("itemHasDecimalChar");
    QTest::addColumn<double>("real");
    row("the field's flag counts: no scaling", true, false, 1234.0);
    row("the field's flag counts: scaling", false, true, 12.34);
}

// Text from a wide string, or through the base, goes the base's way.
void tst_CSProVariable::assignedThroughTheBase()
{
    QFETCH(bool, fieldHasDecimalChar);
    QFETCH(bool, itemHasDecimalChar);
    QFETCH(double, real);
    TCSProDataImport importer;
    TCSProItem item;
    item.hasDecimalChar = itemHasDecimalChar;
    TCSProVariable field(&importer);
    field.item = &item;
    field.fieldType = 2;
    field.decimals = QStringLiteral("2");
    field.hasDecimalChar = fieldHasDecimalChar;
    field.length = 6;
    field.setAsStringChar(L"  1234");
    QCOMPARE(field.realValue, real);
    field.realValue = 0;
    TGenericField& base = field;
    base.setAsString("  1234");
    QCOMPARE(field.realValue, real);
    field.conversionFailed = true;
    field.setAsStringChar(L"5");
    QCOMPARE(field.conversionFailed, false);
}

void tst_CSProVariable::aShorterTextReplacesALongerOne()
{
    TCSProDataImport importer;
    TCSProItem item;
    TCSProVariable field(&importer);
    field.item = &item;
    field.fieldType = 3;
    field.length = 5;
    field.setAsString("abcdefgh");
    QCOMPARE(textOf(field), QString("abcde"));
    field.setAsString("xy");
    QCOMPARE(textOf(field), QString("xy"));
    QVERIFY(std::all_of(field.text + 2, field.text + 5, [](wchar_t c) { return c == L'\0'; }));
    field.setAsString(QString::fromLatin1("ab\0cd", 5));
    QCOMPARE(textOf(field), QString("ab"));
    QVERIFY(std::all_of(field.text + 2, field.text + 5, [](wchar_t c) { return c == L'\0'; }));
    field.length = 3;
    field.setAsString(QString());
    QCOMPARE(textOf(field), QString());

    // A number is read from the whole text, not from what was kept of it.
    field.fieldType = 1;
    field.setAsString("12345");
    QCOMPARE(textOf(field), QString("123"));
    QCOMPARE(field.integerValue, 12345.0);
}

void tst_CSProVariable::parsedFieldsAreNotScaled_data()
{
    QTest::addColumn<QByteArray>("item");
    QTest::addColumn<QString>("value");
    QTest::addColumn<int>("type");
    QTest::addColumn<double>("number");
    QTest::addColumn<QString>("text");

    row("implied decimals", QByteArray("Len=5\nDecimal=2"), "12345", 2, 12345.0, "12345");
    row("written decimals", QByteArray("Len=6\nDecimal=2\nDecimalChar=Yes"), "123.45", 2, 123.45,
        "123.45");
    row("written decimals without the flag", QByteArray("Len=6\nDecimal=2"), "123.45", 2, 123.45,
        "123.45");
    row("long number", QByteArray("Len=10"), "0012345678", 2, 12345678.0, "1.23457e+07");
    row("nine digits", QByteArray("Len=9"), "001200000", 1, 1200000.0, "1.2e+06");
    row("short number", QByteArray("Len=3"), " 42", 1, 42.0, "42");
    row("text", QByteArray("Len=3\nDataType=Alpha"), "4.5", 3, 4.5, "4.5");
}

void tst_CSProVariable::parsedFieldsAreNotScaled()
{
    QFETCH(QByteArray, item);
    QFETCH(QString, value);
    QFETCH(int, type);
    QFETCH(double, number);
    QFETCH(QString, text);
    const Opened importer("[Item]\nName=A\n" + item);
    TCSProVariable* field = importer.variable(0);
    QCOMPARE(field->fieldType, type);
    field->setAsString(value);
    QCOMPARE(field->getAsFloat(), number);
    QCOMPARE(field->getAsInteger(), type == 3 ? 0 : static_cast<int>(number));
    QCOMPARE(field->getAsString(), text);
}

void tst_CSProVariable::missing_data()
{
    QTest::addColumn<QString>("code");
    QTest::addColumn<QString>("value");
    QTest::addColumn<bool>("isSpecial");

    row("the code", "9", "9", true);
    row("another value", "9", "8", false);
    row("blank before", "9", " 9", false);
    row("blank behind", "9", "9 ", false);
    row("code with a blank", " 9", " 9", true);
    row("code with a blank, value without", " 9", "9", false);
    row("same number, other digits", "9", "09", false);
    row("case counts", "na", "NA", false);
    row("letters", "NA", "NA", true);
    row("no code, no value", "", "", false);
    row("no code", "", "9", false);
    row("longer value", "9", "99", false);
    row("value cut to the length", "9999", "99999", true);
    row("blank code", " ", " ", true);
}

void tst_CSProVariable::missing()
{
    QFETCH(QString, code);
    QFETCH(QString, value);
    QFETCH(bool, isSpecial);
    for (int type : { 1, 2, 3 }) {
        CodedField coded(&TCSProItem::missingCode, code, type, value);
        TCSProVariable& field = coded.field;
        QCOMPARE(field.isMissing(), isSpecial);
        QCOMPARE(field.isNotApplicable(), false);
        // The item's code counts, not the field's copy.
        field.missingValue = QStringLiteral("x");
        QCOMPARE(field.isMissing(), isSpecial);
        field.conversionFailed = true;
        QCOMPARE(field.isMissing(), true);
        QCOMPARE(field.isNotApplicable(), false);
    }
}

void tst_CSProVariable::notApplicable_data()
{
    missing_data();
}

void tst_CSProVariable::notApplicable()
{
    QFETCH(QString, code);
    QFETCH(QString, value);
    QFETCH(bool, isSpecial);
    for (int type : { 1, 2, 3 }) {
        CodedField coded(&TCSProItem::notApplicableCode, code, type, value);
        TCSProVariable& field = coded.field;
        QCOMPARE(field.isNotApplicable(), isSpecial);
        QCOMPARE(field.isMissing(), false);
        field.notApplicableValue = QStringLiteral("x");
        QCOMPARE(field.isNotApplicable(), isSpecial);
    }
}

void tst_CSProVariable::blank_data()
{
    QTest::addColumn<QString>("value");
    QTest::addColumn<bool>("blank");

    row("nothing", "", true);
    row("blanks", "   ", true);
    row("tab", "\t", true);
    row("no-break space", QStringLiteral("\u00a0"), true);
    row("value", "1", false);
    row("value among blanks", "  1", false);
    row("blanks as far as the length", "    1", true);
}

void tst_CSProVariable::blank()
{
    QFETCH(QString, value);
    QFETCH(bool, blank);
    TCSProDataImport importer;
    TCSProItem item;
    TCSProVariable field(&importer);
    QCOMPARE(field.isBlank(), true);
    field.item = &item;
    field.fieldType = 3;
    field.length = 4;
    field.setAsString(value);
    QCOMPARE(field.isBlank(), blank);
}

void tst_CSProVariable::specialTextsKeepTheNumbers_data()
{
    QTest::addColumn<QString>("value");
    row("missing", "9");
    row("not applicable", "8");
    row("blank", " ");
    row("nothing", "");
}

void tst_CSProVariable::specialTextsKeepTheNumbers()
{
    QFETCH(QString, value);
    for (int type : { 0, 1, 2, 3 }) {
        TCSProDataImport importer;
        TCSProItem item;
        item.missingCode = QStringLiteral("9");
        item.notApplicableCode = QStringLiteral("8");
        TCSProVariable field(&importer);
        field.item = &item;
        field.fieldType = type;
        field.length = 1;
        field.realValue = 5.5;
        field.integerValue = 6;
        field.setAsString(value);
        QCOMPARE(field.realValue, 5.5);
        QCOMPARE(field.integerValue, 6.0);
        QCOMPARE(textOf(field), value);
    }
}

void tst_CSProVariable::aFailedConversion_data()
{
    QTest::addColumn<int>("failure");
    row("standard exception", 1);
    row("error object", 2);
    row("anything else", 3);
}

void tst_CSProVariable::aFailedConversion()
{
    QFETCH(int, failure);
    TCSProDataImport importer;
    TCSProItem item;
    for (bool flag : { false, true }) {
        FailingVariable field(&importer);
        field.item = &item;
        field.fieldType = 1;
        field.length = 4;
        field.realValue = 5.5;
        field.integerValue = 6;
        field.conversionFailed = flag;
        field.failure = failure;
        field.setAsString("12");
        QCOMPARE(textOf(field), QString("12"));
        QCOMPARE(field.conversionFailed, flag);
        // A field that counts as missing is not even looked at.
        QCOMPARE(field.integerValue, flag ? 6.0 : 0.0);
        QCOMPARE(field.realValue, flag ? 5.5 : NoValue);

        field.conversionFailed = false;
        field.setAsStringChar(L"12");
        QCOMPARE(field.conversionFailed, true);
        QCOMPARE(field.integerValue, 0.0);
    }
}

void tst_CSProVariable::conversionFailedIsLeftAlone()
{
    TCSProDataImport importer;
    TCSProItem item;
    TCSProVariable field(&importer);
    field.item = &item;
    field.fieldType = 1;
    field.length = 3;
    field.missingValue = QStringLiteral("99");
    field.conversionFailed = true;
    field.integerValue = 6;
    field.setAsString("12");
    QCOMPARE(field.conversionFailed, true);
    QCOMPARE(textOf(field), QString("12"));
    QCOMPARE(field.integerValue, 6.0);
    QCOMPARE(field.getAsString(), QString("99"));
    QCOMPARE(field.getAsInteger(), 99);
    field.conversionFailed = false;
    field.setAsString("abc");
    QCOMPARE(field.conversionFailed, false);
    QCOMPARE(field.getAsString(), QString("0"));
}

void tst_CSProVariable::specialTextsAsText()
{
    const Opened importer("[Item]\nName=A\nLen=2\n[ValueSet]\nValue=1;x\nValue=99;m\n"
                          "Name=MISSING ,Special\nValue=88;n\nName=NOTAPPL ,Special\n");
    TCSProVariable* field = importer.variable(0);
    field->setAsString("99");
    QCOMPARE(field->getAsString(), QString("99"));
    QCOMPARE(field->getAsInteger(), 99);
    QCOMPARE(field->getAsFloat(), 99.0);
    field->setAsString("1");
    QCOMPARE(field->getAsString(), QString("1"));
    QVERIFY(!field->isMissing());
    field->setAsString("88");
    QCOMPARE(field->getAsString(), QString("88"));
    QVERIFY(field->isNotApplicable());
    // The number is that of the assignment before.
    QCOMPARE(field->getAsInteger(), 1);
    field->setAsString("  ");
    QCOMPARE(field->getAsString(), QString());
    QVERIFY(field->isBlank());
}

QTEST_MAIN(tst_CSProVariable)

#include "tst_CSProVariable.moc"
