#include "lookups/SeparatorGuess.h"

#include <model_Tessel/Lookup.h>

#include <QtTest>

namespace {

QString numbered(int lines)
{
    QString text;
    for (int i = 0; i < lines; ++i)
        text += QString::number(i) + '\n';
    return text;
}

QStringList sampleOf(const QString& text, int pieceSize)
{
    LineSample sample;
    for (int start = 0; start < text.size(); start += pieceSize)
        sample.add(text.mid(start, pieceSize));
    return sample.lines();
}

} // namespace

class tst_SeparatorGuess : public QObject {
    Q_OBJECT

private slots:
    void fewLines();
    void piecesDoNotMatter();
    void spreadOverTheText();
    void longLines();
    void words();
    void guess_data();
    void guess();
};

void tst_SeparatorGuess::fewLines()
{
    QCOMPARE(sampleOf("", 1), QStringList());
    QCOMPARE(sampleOf("a\n\n \t\r\nb", 100), QStringList({ "a", "b" }));
    QCOMPARE(sampleOf(numbered(1000), 100'000).size(), 1000);
}

void tst_SeparatorGuess::piecesDoNotMatter()
{
    const QString text = numbered(5000);
    const QStringList whole = sampleOf(text, text.size());
    QCOMPARE(whole.size(), 1000);
    for (const int size : { 1, 2, 3, 1024 })
        QCOMPARE(sampleOf(text, size), whole);
}

void tst_SeparatorGuess::spreadOverTheText()
{
    constexpr int Lines = 100'000;
    QVector<int> tenths(10, 0);
    for (const QString& line : sampleOf(numbered(Lines), 65'536))
        ++tenths[line.toInt() / (Lines / 10)];
    for (const int count : tenths)
        QVERIFY2(count > 60 && count < 140, qPrintable(QString::number(count)));
}

void tst_SeparatorGuess::longLines()
{
    const QString line(1'000'000, 'x');
    for (const int size : { 1000, 2'000'000 }) {
        const QStringList lines = sampleOf(line + '\n' + line, size);
        QCOMPARE(lines.size(), 2);
        for (const QString& start : lines)
            QCOMPARE(start.size(), 4096);
    }
}

void tst_SeparatorGuess::words()
{
    QCOMPARE(separatorWords(), QString("space, tab, comma, semicolon or colon"));
}

void tst_SeparatorGuess::guess_data()
{
    QTest::addColumn<QStringList>("lines");
    QTest::addColumn<QString>("separator");
    QTest::newRow("none") << QStringList() << QString();
    QTest::newRow("empty keys") << QStringList({ ",a", ",b" }) << QString();
    QTest::newRow("most lines") << QStringList({ "1 a", "2,b", "3,c" }) << "comma";
    QTest::newRow("one length") << QStringList({ "1;a b", "2;bb b" }) << "semicolon";
    QTest::newRow("first") << QStringList({ "1;a b", "22;b b", "3;ccc b" }) << "semicolon";
    const QStringList nine = QVector<QString>(9, "01:a b").toList();
    QTest::newRow("nine in ten") << nine + QStringList("02 c") << "colon";
    QTest::newRow("eight in nine") << nine.mid(1) + QStringList("02 c") << "space";
    QTest::newRow("nine keys in ten of one length")
        << QVector<QString>(9, "01:ab x").toList() + QStringList("001:a x") << "colon";
}

void tst_SeparatorGuess::guess()
{
    QFETCH(QStringList, lines);
    QTEST(TOxLookup::separatorNames().value(guessSeparator(lines)), "separator");
}

QTEST_GUILESS_MAIN(tst_SeparatorGuess)
#include "tst_SeparatorGuess.moc"
