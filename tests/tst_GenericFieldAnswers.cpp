#include "GenericFields.h"

#include <model_Tessel/GenericField.h>

#include <QtTest>

#include <limits>
#include <utility>

class tst_GenericFieldAnswers : public QObject {
    Q_OBJECT

private slots:
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

    void valueLabel_data();
    void valueLabel();
    void valueLabelChangesTabsForGood();
};

void tst_GenericFieldAnswers::getAsString_data()
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

void tst_GenericFieldAnswers::getAsString()
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

void tst_GenericFieldAnswers::getAsStringOfSpecialValues_data()
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

void tst_GenericFieldAnswers::getAsStringOfSpecialValues()
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

void tst_GenericFieldAnswers::getAsFloat_data()
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

void tst_GenericFieldAnswers::getAsFloat()
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

void tst_GenericFieldAnswers::getAsInteger_data()
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

void tst_GenericFieldAnswers::getAsInteger()
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

void tst_GenericFieldAnswers::missingValueAsNumber_data()
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

void tst_GenericFieldAnswers::missingValueAsNumber()
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

void tst_GenericFieldAnswers::numbersIgnoreOtherSpecialValues_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<double>("asFloat");
    QTest::addColumn<int>("asInteger");

    QTest::newRow("none") << int(None) << 0.0 << 0;
    QTest::newRow("integer") << int(Integer) << 2.0 << 2;
    QTest::newRow("real") << int(Real) << 1.5 << 1;
    QTest::newRow("string") << int(String) << 7.0 << 7;
}

void tst_GenericFieldAnswers::numbersIgnoreOtherSpecialValues()
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

void tst_GenericFieldAnswers::valueLabel_data()
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

void tst_GenericFieldAnswers::valueLabel()
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

void tst_GenericFieldAnswers::valueLabelChangesTabsForGood()
{
    Field field(Integer);
    field.valueLabels = QStringLiteral("\t1 Male\t\t2 Female");
    QVERIFY(field.getValueLabel(QStringLiteral("5")).isEmpty());
    QCOMPARE(field.valueLabels, QStringLiteral("\n1 Male\n\n2 Female"));
}

QTEST_GUILESS_MAIN(tst_GenericFieldAnswers)

#include "tst_GenericFieldAnswers.moc"
