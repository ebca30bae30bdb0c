#include "text/CsvText.h"

#include <QtTest>

namespace {

QByteArray written(const QStringList& cells, bool forSpreadsheet)
{
    QByteArray text;
    const CsvWriter csv([&](const QByteArray& bytes) { text += bytes; }, forSpreadsheet);
    csv.addLine(cells);
    return text;
}

} // namespace

class tst_CsvText : public QObject {
    Q_OBJECT

private slots:
    void cells_data();
    void cells();
    void lines();
    void linesOfTwoParts();
};

void tst_CsvText::cells_data()
{
    QTest::addColumn<QString>("cell");
    QTest::addColumn<QByteArray>("plain");
    QTest::addColumn<QByteArray>("harmless"); // null: as plain
    const auto row = [](const char* name, const QString& cell, const char* plain,
                         const char* harmless = nullptr) {
        QTest::newRow(name) << cell << QByteArray(plain) << QByteArray(harmless);
    };
    row("nothing", "", "");
    row("text", "Head of household", "Head of household");
    row("comma", "a,b", "\"a,b\"");
    row("quote", "a\"b", "\"a\"\"b\"");
    row("line end", "a\nb", "\"a\nb\"");
    row("formula", "=1+1", "=1+1", "'=1+1");
    row("formula with commas", "=HYPERLINK(\"x\",1)", "\"=HYPERLINK(\"\"x\"\",1)\"",
        "\"'=HYPERLINK(\"\"x\"\",1)\"");
    row("plus", "+1+cmd|' /C calc'!A0", "+1+cmd|' /C calc'!A0", "'+1+cmd|' /C calc'!A0");
    row("at", "@SUM(A1)", "@SUM(A1)", "'@SUM(A1)");
    row("tab", "\t=1", "\t=1", "'\t=1");
    row("carriage return", "\r=1", "\"\r=1\"", "\"'\r=1\"");
    row("line feed", "\n=1", "\"\n=1\"", "\"'\n=1\"");
    row("wide plus", QString::fromUtf8("\uFF0B"), "\xEF\xBC\x8B", "'\xEF\xBC\x8B");
    row("wide minus", QString::fromUtf8("\uFF0D"), "\xEF\xBC\x8D", "'\xEF\xBC\x8D");
    row("wide at", QString::fromUtf8("\uFF20"), "\xEF\xBC\xA0", "'\xEF\xBC\xA0");
    row("wide sign", QString::fromUtf8("\uFF1D1"),
        "\xEF\xBC\x9D"
        "1",
        "'\xEF\xBC\x9D"
        "1");
    row("sign inside", "1=1", "1=1");
    row("negative number", "-9", "-9");
    row("negative decimal", "-9.9999", "-9.9999");
    row("negative without whole part", "-.5", "-.5");
    row("calculation", "-9+1", "-9+1", "'-9+1");
    row("two points", "-1.2.3", "-1.2.3", "'-1.2.3");
    row("minus alone", "-", "-", "'-");
    row("minus and point", "-.", "-.", "'-.");
    row("several numbers", "-9, -8", "\"-9, -8\"", "\"'-9, -8\"");
    row("minus before text", "-a", "-a", "'-a");
    row("other digits", QString::fromUtf8("-\u0661"), "-\xD9\xA1", "'-\xD9\xA1");
}

void tst_CsvText::cells()
{
    QFETCH(QString, cell);
    QFETCH(QByteArray, plain);
    QFETCH(QByteArray, harmless);
    QCOMPARE(written({ cell, "x" }, false), plain + ",x\r\n");
    const QByteArray expected = harmless.isNull() ? plain : harmless;
    QCOMPARE(written({ cell, "x" }, true), "\xEF\xBB\xBF" + expected + ",x\r\n");
}

void tst_CsvText::lines()
{
    QByteArray text;
    const CsvWriter csv([&](const QByteArray& bytes) { text += bytes; }, true);
    csv.addLine({ "a", "b" });
    csv.addLine({});
    csv.addLine({ "=c" });
    QCOMPARE(text,
        QByteArray("\xEF\xBB\xBF"
                   "a,b\r\n\r\n'=c\r\n"));
}

void tst_CsvText::linesOfTwoParts()
{
    for (const bool forSpreadsheet : { false, true }) {
        const QStringList first { "a,b", "=1" };
        const QStringList second { QString(), "c\"d", "e" };
        QByteArray text;
        const CsvWriter csv([&](const QByteArray& bytes) { text += bytes; }, forSpreadsheet);
        csv.addLine(csv.textOf(first), csv.textOf(second));
        QCOMPARE(text, written(first + second, forSpreadsheet));
    }
}

QTEST_APPLESS_MAIN(tst_CsvText)
#include "tst_CsvText.moc"
