#include "text/PlainNumber.h"

#include <QtTest>

class tst_PlainNumber : public QObject {
    Q_OBJECT

private slots:
    void numbers_data();
    void numbers();
    void otherTexts_data();
    void otherTexts();
    void keys();
};

void tst_PlainNumber::numbers_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("plain");
    QTest::newRow("digits") << "42"
                            << "42";
    QTest::newRow("leading zeros") << "0042"
                                   << "42";
    QTest::newRow("trailing zeros of a whole number count") << "4200"
                                                            << "4200";
    QTest::newRow("zeros behind the point") << "4.20"
                                            << "4.2";
    QTest::newRow("nothing behind the point") << "4."
                                              << "4";
    QTest::newRow("zeros alone behind the point") << "40.00"
                                                  << "40";
    QTest::newRow("nothing before the point") << ".50"
                                              << "0.5";
    QTest::newRow("zeros after the point count") << "00.05"
                                                 << "0.05";
    QTest::newRow("plus") << "+7"
                          << "7";
    QTest::newRow("minus") << "-07.0"
                           << "-7";
    QTest::newRow("minus before the point") << "-.5"
                                            << "-0.5";
    QTest::newRow("zero") << "000"
                          << "0";
    QTest::newRow("zero with a point") << "0.0"
                                       << "0";
    QTest::newRow("zero with point alone") << ".0"
                                           << "0";
    QTest::newRow("minus zero") << "-0.0"
                                << "0";
    QTest::newRow("more digits than fit a number") << "0123456789012345678901234567890.10"
                                                   << "123456789012345678901234567890.1";
}

void tst_PlainNumber::numbers()
{
    QFETCH(QString, text);
    QFETCH(QString, plain);
    QCOMPARE(plainNumber(text), plain);
    QCOMPARE(plainNumber(plain), plain);
}

void tst_PlainNumber::otherTexts_data()
{
    QTest::addColumn<QString>("text");
    for (const char* text :
        { "", ".", "-", "+.", "+-5", "1.2.3", "1e5", "0x1F", "1,5", " 1", "A1", "\u0661" })
        QTest::addRow("'%s'", text) << QString::fromUtf8(text);
}

void tst_PlainNumber::otherTexts()
{
    QFETCH(QString, text);
    QVERIFY(plainNumber(text).isNull());
    QCOMPARE(numberKey(text), text.trimmed());
}

void tst_PlainNumber::keys()
{
    QCOMPARE(numberKey(" 01 "), QString("1"));
    QCOMPARE(numberKey(" A 1 "), QString("A 1"));
    QCOMPARE(numberKey("  "), QString(""));
}

QTEST_GUILESS_MAIN(tst_PlainNumber)
#include "tst_PlainNumber.moc"
