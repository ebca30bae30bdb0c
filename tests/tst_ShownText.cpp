#include "text/ShownText.h"

#include <QtTest>

class tst_ShownText : public QObject {
    Q_OBJECT

private slots:
    void printableShowsControls();
    void printableShowsTurnsOfDirection();
    void printableKeepsPairs();
    void shortenedCutsToALine();
    void groupedByThousands();
};

void tst_ShownText::printableShowsControls()
{
    for (ushort code = 0; code < 0x20; ++code)
        QCOMPARE(printable(QChar(code)), QString(QChar(ushort(0x2400 + code))));
    for (ushort code = 0x7F; code < 0xA0; ++code)
        QCOMPARE(printable(QChar(code)), QString(QChar::ReplacementCharacter));
    for (const ushort code : { 0x20, 0x7E, 0xA0, 0xE9, 0x0639, 0x6F22 })
        QCOMPARE(printable(QChar(code)), QString(QChar(code)));
}

void tst_ShownText::printableShowsTurnsOfDirection()
{
    for (const ushort code :
        { 0x202A, 0x202B, 0x202C, 0x202D, 0x202E, 0x2066, 0x2067, 0x2068, 0x2069 })
        QCOMPARE(printable(QStringLiteral("a") + QChar(code) + QStringLiteral("b")),
            QString::fromUtf8("a\uFFFDb"));
    for (const ushort code : { 0x061C, 0x200E, 0x200F, 0x2010, 0x2029, 0x202F, 0x2065, 0x206A })
        QCOMPARE(printable(QChar(code)), QString(QChar(code)));
}

void tst_ShownText::printableKeepsPairs()
{
    const QString pair = QString::fromUcs4(U"\U0001F600", 1);
    QCOMPARE(printable(pair + '\n'), pair + QChar(0x240A));
    const QString mark(QChar::ReplacementCharacter);
    QCOMPARE(printable(QString(pair.at(0))), mark);
    QCOMPARE(printable(pair.at(1) + QString("x") + pair.at(0)), mark + "x" + mark);
}

void tst_ShownText::shortenedCutsToALine()
{
    const QString line(80, 'x');
    QCOMPARE(shortened(line), line);
    QCOMPARE(shortened(line + 'y'), line + "...");
    QCOMPARE(shortened(QString()), QString());
    const QString pair = QString::fromUcs4(U"\U0001F600", 1);
    QCOMPARE(shortened(QString(79, 'x') + pair), QString(79, 'x') + "..."); // no half of a pair
    QCOMPARE(shortened(QString(78, 'x') + pair), QString(78, 'x') + pair);
}

void tst_ShownText::groupedByThousands()
{
    QCOMPARE(grouped(7), QString("7"));
    QCOMPARE(grouped(2997), QString("2,997"));
    QCOMPARE(grouped(Q_INT64_C(12345678901)), QString("12,345,678,901"));
}

QTEST_APPLESS_MAIN(tst_ShownText)

#include "tst_ShownText.moc"
