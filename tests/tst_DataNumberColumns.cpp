#include "DataRows.h"

#include <QRandomGenerator>

using namespace tessel;

// Numbers of any width at any place of a line, and what stands in them, beside readNumber().
class TestDataNumberColumns : public QObject {
    Q_OBJECT

private slots:
    void digits_data();
    void digits();
    void sameAsReadNumber();
    void codesOfOneDigit();

private:
    QTemporaryDir m_folder;
};

namespace {

constexpr int FirstStart = 2; // behind the record type and the identification, from 0
constexpr int LastStart = 12;
constexpr int Widest = 10;

QByteArray item(const QByteArray& name, int start, int width, const QByteArray& type)
{
    return "[Item]\nLabel=" + name + "\nName=" + name + "\nStart=" + QByteArray::number(start + 1)
        + "\nLen=" + QByteArray::number(width) + "\nDataType=" + type + "\n\n";
}

QByteArray head()
{
    return "[Dictionary]\nVersion=CSPro 7.7\nLabel=N\nName=N_DICT\nRecordTypeStart=1\n"
           "RecordTypeLen=1\nPositions=Absolute\nZeroFill=No\nDecimalChar=No\n\n"
           "[Level]\nLabel=Q\nName=Q\n\n[IdItems]\n\n"
        + item("PLACE", 1, 1, "Alpha")
        + "[Record]\nLabel=R\nName=R\nRecordTypeValue='1'\nRecordLen=30\n\n";
}

// A dictionary of one column, so that none stands in another.
QByteArray dictionaryOf(int start, int width)
{
    return head() + item("NUMBER", start, width, "Numeric");
}

// What the column of a line is to be.
QString expected(const QByteArray& line, int start, int width)
{
    const QByteArray cut = line.mid(start, width);
    qint64 number = 0;
    const NumberStatus status = readNumber({ cut.constData(), std::size_t(cut.size()) }, 0, number);
    if (status == NumberStatus::Blank)
        return QStringLiteral("-");
    const bool isWhole = start + width <= line.size();
    if (status == NumberStatus::Number && isWhole)
        return QString::number(number);
    const bool isUnfit = status == NumberStatus::Unfit && isWhole;
    return QLatin1String(isUnfit ? "~" : "!") + QString::fromLatin1(cut);
}

QByteArray randomLine(QRandomGenerator& random)
{
    const QByteArray any = "\t !*+,-./:;09?@Aa~\x7F"; // those beside the digits, too
    QByteArray line = "1a";
    const int size = FirstStart + random.bounded(LastStart + Widest);
    const int oddness = random.bounded(3);
    while (line.size() < size) {
        const int kind = random.bounded(12);
        if (kind < oddness)
            line += any.at(random.bounded(any.size()));
        else
            line += kind < 6 ? char('0' + random.bounded(10)) : ' ';
    }
    return line;
}

} // namespace

void TestDataNumberColumns::digits_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QString>("expected");
    QTest::newRow("one") << QByteArray("7") << QStringLiteral("7");
    QTest::newRow("eight") << QByteArray("12345678") << QStringLiteral("12345678");
    QTest::newRow("the largest") << QByteArray("99999999") << QStringLiteral("99999999");
    QTest::newRow("nine") << QByteArray("123456789") << QStringLiteral("123456789");
    QTest::newRow("behind blanks") << QByteArray("    5678") << QStringLiteral("5678");
    QTest::newRow("zeros") << QByteArray("000120") << QStringLiteral("120");
    QTest::newRow("blank") << QByteArray("     ") << QStringLiteral("-");
    QTest::newRow("negative") << QByteArray("  -12") << QStringLiteral("-12");
    QTest::newRow("blank inside") << QByteArray(" 1 2") << QStringLiteral("! 1 2");
    QTest::newRow("blank behind") << QByteArray("12 ") << QStringLiteral("!12 ");
    QTest::newRow("colon") << QByteArray("1:2") << QStringLiteral("!1:2");
    QTest::newRow("slash") << QByteArray("/") << QStringLiteral("!/");
    QTest::newRow("letter of one") << QByteArray("p") << QStringLiteral("!p");
}

void TestDataNumberColumns::digits()
{
    QFETCH(QByteArray, text);
    for (int start = FirstStart; start <= LastStart; ++start) {
        const DataDictionary dictionary = DataDictionary::fromFile(
            writeFile(m_folder, QStringLiteral("n.dcf"), dictionaryOf(start, text.size())));
        const QByteArray line = QByteArray("1a").leftJustified(start, '8') + text;
        CSProTextSource source(dictionary,
            { writeFile(m_folder, QStringLiteral("n.dat"), line + '\n' + line + "99") });
        RowCollector rows(source.dictionary());
        QVERIFY(runPipeline(source, rows));
        QCOMPARE(rows.rows.size(), 2);
        for (const QString& row : qAsConst(rows.rows))
            QTEST(row.section(QStringLiteral("\"a\" "), 1), "expected");
    }
}

void TestDataNumberColumns::sameAsReadNumber()
{
    constexpr int lines = 2000;
    QRandomGenerator random(15);
    QByteArray text;
    QList<QByteArray> all;
    for (int i = 0; i < lines; ++i) {
        all.append(randomLine(random));
        text += all.constLast() + '\n';
    }
    const QString data = writeFile(m_folder, QStringLiteral("r.dat"), text);
    for (int width = 1; width <= Widest; ++width) {
        for (int start = FirstStart; start <= LastStart; ++start) {
            CSProTextSource source(DataDictionary::fromFile(writeFile(m_folder,
                                       QStringLiteral("r.dcf"), dictionaryOf(start, width))),
                { data });
            RowCollector rows(source.dictionary());
            QVERIFY(runPipeline(source, rows));
            QCOMPARE(rows.rows.size(), lines);
            for (int i = 0; i < lines; ++i)
                QCOMPARE(rows.rows.at(i).section(QStringLiteral("\"a\" "), 1),
                    expected(all.at(i), start, width));
        }
    }
}

void TestDataNumberColumns::codesOfOneDigit()
{
    const QByteArray codes = "[ValueSet]\nLabel=V\nName=NUMBER_VS1\nValue=1:3;Some\nValue=5;Five\n"
                             "Value=9;None\nName=MISSING,Special\nValue=' ';NA\n"
                             "Name=NOTAPPL,Special\n";
    const QString dictionary =
        writeFile(m_folder, QStringLiteral("c.dcf"), dictionaryOf(FirstStart, 1) + codes);
    CSProTextSource source(DataDictionary::fromFile(dictionary),
        { writeFile(
            m_folder, QStringLiteral("c.dat"), "1a1\n1a3\n1a4\n1a5\n1a9\n1a0\n1a \n1a\n1a-\n") });
    RowCollector rows(source.dictionary());
    QVERIFY(runPipeline(source, rows));
    QStringList values;
    for (const QString& row : qAsConst(rows.rows))
        values.append(row.section(QStringLiteral("\"a\" "), 1));
    QCOMPARE(values, (QStringList { "1", "3", "?4", "5", "M9", "<>0", "N-", "N-", "!-" }));
}

QTEST_GUILESS_MAIN(TestDataNumberColumns)
#include "tst_DataNumberColumns.moc"
