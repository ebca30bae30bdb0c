#include "text/TextTable.h"

#include <QtTest>

#include <random>

class tst_TextTable : public QObject {
    Q_OBJECT

private slots:
    void displayWidths_data();
    void displayWidths();
    void wrapping_data();
    void wrapping();
    void wrappingKeepsAllButBlanks();
    void columns();
    void emptyColumnsAreLeftOut();
    void longCells();
    void lastColumnGoesUnderTheRow();
    void details();
    void sharedDetails();
    void sharedDetailsAreLaidOutOnce();
    void linesFit();
};

void tst_TextTable::displayWidths_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("width");
    QTest::newRow("nothing") << QString() << 0;
    QTest::newRow("letters") << QString("abc") << 3;
    QTest::newRow("accents") << QString::fromUtf8(u8"é") << 1;
    QTest::newRow("combining accent") << QString::fromUtf8(u8"e\u0301") << 1;
    QTest::newRow("wide") << QString::fromUtf8(u8"漢字") << 4;
    QTest::newRow("full width") << QString::fromUtf8(u8"Ａ") << 2;
    QTest::newRow("beyond 16 bits") << QString::fromUtf8(u8"\U0001F3E0") << 2;
    QTest::newRow("zero-width joiner") << QString::fromUtf8(u8"a\u200Db") << 2;
}

void tst_TextTable::displayWidths()
{
    QFETCH(QString, text);
    QFETCH(int, width);
    QCOMPARE(displayWidth(text), width);
}

void tst_TextTable::wrapping_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("lines");
    QTest::newRow("nothing") << QString() << QString();
    QTest::newRow("fits") << QString("123456789") << QString("123456789");
    QTest::newRow("two words") << QString("12345 123456") << QString("12345|123456");
    QTest::newRow("blank behind the line")
        << QString("1234567890 1234") << QString("1234567890|1234");
    QTest::newRow("long word") << QString("123456789012345") << QString("1234567890|12345");
    QTest::newRow("long word behind another")
        << QString("12 123456789012345") << QString("12|1234567890|12345");
    QTest::newRow("several lines") << QString("aa bb cc dd ee ff") << QString("aa bb cc|dd ee ff");
    QTest::newRow("indented") << QString("  aa bb cc dd") << QString("  aa bb cc|dd");
    QTest::newRow("indented long word")
        << QString("    123456789012") << QString("    123456|789012");
    QTest::newRow("wide characters")
        << QString::fromUtf8(u8"漢漢漢漢漢漢") << QString::fromUtf8(u8"漢漢漢漢漢|漢");
    QTest::newRow("beyond 16 bits") << QString::fromUtf8(u8"123456789\U0001F3E0")
                                    << QString::fromUtf8(u8"123456789|\U0001F3E0");
}

void tst_TextTable::wrapping()
{
    QFETCH(QString, text);
    QFETCH(QString, lines);
    QCOMPARE(wrapped(text, 10).join('|'), lines);
}

void tst_TextTable::wrappingKeepsAllButBlanks()
{
    std::mt19937 random(1);
    const QString characters = QString::fromUtf8(u8"ab  é漢\u0301");
    for (int turn = 0; turn < 2000; ++turn) {
        QString text;
        for (int length = int(random() % 60); length > 0; --length)
            text += characters.at(int(random() % uint(characters.size())));
        const int width = 2 + int(random() % 20);
        const QStringList lines = wrapped(text, width);
        for (const QString& line : lines)
            QVERIFY2(displayWidth(line) <= width, qPrintable(line));
        QCOMPARE(lines.join(QString()).remove(' '), QString(text).remove(' '));
    }
}

void tst_TextTable::columns()
{
    TextTable table({ { "Name", TextTable::Align::Left }, { "Len", TextTable::Align::Right },
        { "Label", TextTable::Align::Left } });
    table.beginGroup("First");
    table.addRow({ "A", "1", "One" });
    table.addRow({ "LONGER", "1000", "" });
    table.beginGroup("Second");
    table.addRow({ "B", "", "Two" });
    QCOMPARE(table.toText(40),
        QString("\nFirst\n"
                "Name    Len Label\n"
                "A         1 One\n"
                "LONGER 1000\n"
                "\nSecond\n"
                "Name    Len Label\n"
                "B           Two\n"));
}

void tst_TextTable::emptyColumnsAreLeftOut()
{
    TextTable table({ { "Name", TextTable::Align::Left }, { "Empty", TextTable::Align::Right },
        { "Label", TextTable::Align::Left } });
    table.beginGroup("Group");
    table.addRow({ "A", "", "One" });
    QCOMPARE(table.toText(40), QString("\nGroup\nName Label\nA    One\n"));
}

// Where the columns are too wide together a long first cell has its own line, and others wrap.
void tst_TextTable::longCells()
{
    TextTable table({ { "Name", TextTable::Align::Left }, { "Codes", TextTable::Align::Left },
        { "Label", TextTable::Align::Left } });
    table.beginGroup("Group");
    table.addRow(
        { "A_NAME_OF_MORE_THAN_18", "one two three four five six seven eight", "Label of it" });
    table.addRow({ "B", "1", "Label" });
    QCOMPARE(table.toText(55),
        QString("\nGroup\n"
                "Name               Codes              Label\n"
                "A_NAME_OF_MORE_THAN_18\n"
                "                   one two three four Label of it\n"
                "                   five six seven\n"
                "                   eight\n"
                "B                  1                  Label\n"));
}

void tst_TextTable::lastColumnGoesUnderTheRow()
{
    TextTable table({ { "Name", TextTable::Align::Left }, { "Label", TextTable::Align::Left } });
    table.beginGroup("Group");
    table.addRow({ "A_NAME", "A label in words" });
    QCOMPARE(table.toText(20), QString("\nGroup\nName\n    Label\nA_NAME\n    A label in words\n"));
}

void tst_TextTable::details()
{
    TextTable table({ { "Name", TextTable::Align::Left }, { "Label", TextTable::Align::Left } });
    table.beginGroup("Group");
    table.addRow({ "A", "Label" });
    table.addDetail("1  Yes");
    table.addDetail("2  A label that is longer than a line");
    table.addRow({ "B", "Other" });
    QCOMPARE(table.toText(30),
        QString("\nGroup\nName Label\nA    Label\n    1  Yes\n    2  A label that is longer\n"
                "    than a line\nB    Other\n"));
}

void tst_TextTable::sharedDetails()
{
    const QStringList shared { "first  ", "second is long enough to wrap" };
    const auto filled = [&](bool isShared) {
        TextTable table(
            { { "Name", TextTable::Align::Left }, { "Label", TextTable::Align::Left } });
        table.beginGroup("Group");
        for (const char* name : { "A", "B", "C" }) {
            table.addRow({ name, "label" });
            if (*name == 'C')
                table.addDetail("of its own");
            if (isShared) {
                table.addDetails(shared);
                continue;
            }
            for (const QString& detail : shared)
                table.addDetail(detail);
        }
        table.addRow({ "D", "none" });
        table.addRow({ "E", "the same" });
        table.addDetails(shared);
        return table.toText(24);
    };
    QCOMPARE(filled(true), filled(false));
    QCOMPARE(filled(true).count("    first\n    second is long\n"), 4);
    QCOMPARE(filled(true).count("of its own"), 1);
}

void tst_TextTable::sharedDetailsAreLaidOutOnce()
{
    const QStringList shared { "first", "second" };
    TextTable table({ { "Name", TextTable::Align::Left }, { "Label", TextTable::Align::Left } });
    table.beginGroup("Group");
    for (int row = 0; row < 20; ++row) {
        table.addRow({ QString::number(row), "label" });
        table.addDetail("of its own");
        table.addDetails(shared);
    }
    QVector<QByteArray> pieces;
    table.write(80, [&](const QByteArray& piece) {
        if (piece.contains("second"))
            pieces.append(piece);
    });
    QCOMPARE(pieces.size(), 20);
    for (const QByteArray& piece : qAsConst(pieces))
        QVERIFY(piece.isSharedWith(pieces.constFirst()));
}

void tst_TextTable::linesFit()
{
    std::mt19937 random(2);
    const auto cell = [&random](int longest) {
        QString text;
        for (int length = int(random() % uint(longest)); length > 0; --length)
            text += random() % 6 == 0 ? ' ' : QChar('a' + char(random() % 26));
        return text;
    };
    for (int turn = 0; turn < 300; ++turn) {
        TextTable table({ { "Name", TextTable::Align::Left }, { "Type", TextTable::Align::Left },
            { "Len", TextTable::Align::Right }, { "Label", TextTable::Align::Left } });
        table.beginGroup(cell(90));
        for (int row = 0; row < 8; ++row)
            table.addRow({ cell(60), cell(12), cell(5), cell(200) });
        const QStringList lines = table.toText(60).split('\n');
        for (const QString& line : lines)
            QVERIFY2(displayWidth(line) <= 60, qPrintable(line));
    }
}

QTEST_APPLESS_MAIN(tst_TextTable)

#include "tst_TextTable.moc"
