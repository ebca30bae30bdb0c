#include "DataRows.h"
#include "PeakMemory.h"

#include <tessel_data/DataError.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

using namespace tessel;

Q_DECLARE_METATYPE(tessel::DataError::Code)
Q_DECLARE_METATYPE(tessel::LineEncoding)

namespace {

QString writtenDictionary(const QTemporaryDir& folder)
{
    return writeFile(folder, QStringLiteral("survey.dcf"), surveyDictionary());
}

// Counts what it gets, and asks after each batch whether to go on.
class BatchCounter : public BatchSink {
public:
    explicit BatchCounter(const std::function<bool()>& isWanted)
        : m_isWanted(isWanted)
    {
    }
    DataBatch& batch() override
    {
        return m_batch;
    }
    bool deliver() override
    {
        ++batches;
        records += qint64(m_batch.records.size());
        m_batch.clear();
        return m_isWanted();
    }

    int batches = 0;
    qint64 records = 0;

private:
    DataBatch m_batch;
    std::function<bool()> m_isWanted;
};

} // namespace

class TestDataText : public QObject {
    Q_OBJECT

private slots:
    void dictionary();
    void values_data();
    void values();
    void told_data();
    void told();
    void rejectedIsWhole();
    void widthsOfTexts();
    void cases_data();
    void cases();
    void anyValueSet();
    void encodings_data();
    void encodings();
    void encodingOfRejectedLines();
    void foreignFiles_data();
    void foreignFiles();
    void withoutIdentification();
    void pipeWithoutWriter();
    void severalFiles();
    void lineEnds();
    void stoppedInTheFirstFile();
    void growingFile();
    void standardInput();
    void fileWithoutSize();
    void pipe();
    void silentPipe();
    void hugeLine_data();
    void hugeLine();
    void levels();
    void repeats();
    void errors();
    void dictionaryErrors_data();
    void dictionaryErrors();
    void dictionaryOfDatabase();
    void cancelAndFailure();

private:
    QTemporaryDir m_folder;
};

void TestDataText::dictionary()
{
    const DataDictionary dictionary = DataDictionary::fromFile(writtenDictionary(m_folder));
    QCOMPARE(dictionary.records.size(), std::size_t(2));
    QCOMPARE(dictionary.ids.size(), 2);
    const DataRecord& person = dictionary.records[1];
    QCOMPARE(person.typeCode, QStringLiteral("2"));
    QVERIFY(!person.isRequired);
    QCOMPARE(person.maximum, 3LL);
    QCOMPARE(person.idCount, 2);
    QCOMPARE(person.columns.size(), 5);
    QCOMPARE(person.firstColumn, 5);
    const DataVariable& age = dictionary.variable(1, 2);
    QCOMPARE(age.start, 5);
    QCOMPARE(age.width, 3);
    const DataVariable& first = dictionary.variable(1, 4);
    QVERIFY(first.isSubItem);
    QCOMPARE(dictionary.variables[std::size_t(first.parent)].name, QStringLiteral("NAME"));
    QCOMPARE(dictionary.valueSets.size(), std::size_t(4));
    QCOMPARE(dictionary.columnCount(), 10);
}

void TestDataText::values_data()
{
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<QString>("expected");
    QTest::newRow("all there") << QByteArray("10101 3  250A ")
                               << QStringLiteral("1 1 3 2.50 \"A\"");
    QTest::newRow("second kind") << QByteArray("2010199 AB")
                                 << QStringLiteral("1 1 !99  \"AB\" \"AB\"");
    QTest::newRow("missing") << QByteArray("20101999Anna")
                             << QStringLiteral("1 1 M999 \"Anna\" \"An\"");
    QTest::newRow("blank that has a code")
        << QByteArray("20101   Anna") << QStringLiteral("1 1 N- \"Anna\" \"An\"");
    QTest::newRow("short line") << QByteArray("20101") << QStringLiteral("1 1 N- - -");
    QTest::newRow("cut in a number") << QByteArray("2010112") << QStringLiteral("1 1 !12 - -");
    QTest::newRow("outside") << QByteArray("10101 6") << QStringLiteral("1 1 ?6 - -");
    QTest::newRow("out of range") << QByteArray("1010110") << QStringLiteral("1 1 <>10 - -");
    QTest::newRow("point in the data")
        << QByteArray("10101 1 12.5BB") << QStringLiteral("1 1 1 12.50 \"BB\"");
    QTest::newRow("too many decimals")
        << QByteArray("10101 11.234") << QStringLiteral("1 1 1 ~1.234 -");
    QTest::newRow("text in no set")
        << QByteArray("10101 1     CC") << QStringLiteral("1 1 1 - ?\"CC\"");
    QTest::newRow("characters, not bytes")
        << QByteArray("20101 33\xC3\x89mil\xC3\xA9 ") << QStringLiteral("1 1 33 \"Émilé\" \"Ém\"");
    QTest::newRow("line break in a text") << QByteArray("20101 33a\xE2\x90\xA4"
                                                        "b")
                                          << QStringLiteral("1 1 33 \"a\nb\" \"a\n\"");
    QTest::newRow("leading blanks of a text stay")
        << QByteArray("20101 33 ab ") << QStringLiteral("1 1 33 \" ab\" \" a\"");
}

void TestDataText::values()
{
    QFETCH(QByteArray, line);
    const QString dictionary = writtenDictionary(m_folder);
    for (const QByteArray end : { "", "\n", "\r\n" }) {
        CSProTextSource source(DataDictionary::fromFile(dictionary),
            { writeFile(m_folder, QStringLiteral("v.dat"), line + end) });
        RowCollector rows(source.dictionary());
        QVERIFY(runPipeline(source, rows));
        QCOMPARE(rows.rows.size(), 1);
        const QString values = rows.rows.first().section(QStringLiteral(": "), 1);
        QTEST(values, "expected");
        QVERIFY(source.counts().addUp());
    }
}

void TestDataText::told_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QStringList>("expected"); // line:problem
    QTest::addColumn<QVector<qint64>>("counts"); // lines, records, deleted, blank, rejected
    using Counts = QVector<qint64>;
    const auto told = [](int line, LineProblem problem) {
        return QStringLiteral("%1:%2").arg(line).arg(int(problem));
    };
    const QByteArray good = "10101 3\n";
    QTest::newRow("nothing") << QByteArray() << QStringList() << Counts { 0, 0, 0, 0, 0 };
    QTest::newRow("good") << good << QStringList() << Counts { 1, 1, 0, 0, 0 };
    QTest::newRow("deleted and blank")
        << good + "~0101 3\n\n   \n" + good << QStringList() << Counts { 5, 2, 1, 2, 0 };
    QTest::newRow("unknown record type")
        << good + "90101\n"
        << QStringList { told(2, LineProblem::UnknownRecordType) } << Counts { 2, 1, 0, 0, 1 };
    QTest::newRow("blank record type")
        << QByteArray(" 0101\n") << QStringList { told(1, LineProblem::UnknownRecordType) }
        << Counts { 1, 0, 0, 0, 1 };
    QTest::newRow("ends too early")
        << QByteArray("101\n") << QStringList { told(1, LineProblem::EndsInIdentification) }
        << Counts { 1, 0, 0, 0, 1 };
    QTest::newRow("ends within an identification item")
        << QByteArray("1010\n") << QStringList { told(1, LineProblem::EndsInIdentification) }
        << Counts { 1, 0, 0, 0, 1 };
    QTest::newRow("identification is no number")
        << QByteArray("10x01 3\n") << QStringList { told(1, LineProblem::IdNotANumber) }
        << Counts { 1, 0, 0, 0, 1 };
    QTest::newRow("identification has decimals")
        << QByteArray("1.501 3\n") << QStringList { told(1, LineProblem::IdNotANumber) }
        << Counts { 1, 0, 0, 0, 1 };
    QTest::newRow("identification is blank")
        << QByteArray("1  01 3\n") << QStringList() << Counts { 1, 1, 0, 0, 0 };
    QTest::newRow("text beyond") << QByteArray("10101 3       zz\n")
                                 << QStringList { told(1, LineProblem::TextBeyondRecord) }
                                 << Counts { 1, 1, 0, 0, 0 };
    QTest::newRow("blanks beyond")
        << QByteArray("10101 3           \n") << QStringList() << Counts { 1, 1, 0, 0, 0 };
    QTest::newRow("NUL") << QByteArray("20101 33a\0b\n", 12)
                         << QStringList { told(1, LineProblem::ControlCharacters) }
                         << Counts { 1, 1, 0, 0, 0 };
    QTest::newRow("endless") << good + "1" + QByteArray(2'000'000, '0') + "\n" + good
                             << QStringList { told(2, LineProblem::EndlessLine) }
                             << Counts { 3, 2, 0, 0, 1 };
    QTest::newRow("half a character at the end")
        << QByteArray("20101 33\xC3\xA9\n20101 33\xC3")
        << QStringList { told(2, LineProblem::OtherEncoding) } << Counts { 2, 2, 0, 0, 0 };
}

void TestDataText::told()
{
    QFETCH(QByteArray, text);
    QFETCH(QVector<qint64>, counts);
    CSProTextSource source(DataDictionary::fromFile(writtenDictionary(m_folder)),
        { writeFile(m_folder, QStringLiteral("t.dat"), text) });
    RowCollector rows(source.dictionary());
    QVERIFY(runPipeline(source, rows));
    QTEST(rows.told, "expected");
    const SourceCounts found = source.counts();
    QCOMPARE((QVector<qint64> { found.lines, found.records, found.deletedLines, found.blankLines,
                 found.rejectedLines }),
        counts);
    QVERIFY(found.addUp());
    QCOMPARE(source.files().front().bytes, qint64(text.size()));
}

// What is not among the records can be kept elsewhere.
void TestDataText::rejectedIsWhole()
{
    struct Texts : DataConsumer {
        void take(const DataBatch& batch) override
        {
            for (const DataBatch::Told& one : batch.told) {
                const std::string_view text = batch.text(one.text);
                lines.append(QByteArray(text.data(), int(text.size())));
            }
        }
        void finish(const DataSource&) override
        {
        }
        QByteArrayList lines;
    } texts;
    const QByteArrayList rejected { "9" + QByteArray(100'000, 'a'),
        "1xx01" + QByteArray(100'000, 'b'), "101" };
    CSProTextSource source(DataDictionary::fromFile(writtenDictionary(m_folder)),
        { writeFile(m_folder, QStringLiteral("w.dat"), rejected.join('\n')) });
    QVERIFY(runPipeline(source, texts));
    QCOMPARE(texts.lines, rejected);
}

// Blanks behind a text are left out however many there are; others are not blank.
void TestDataText::widthsOfTexts()
{
    constexpr int widest = 20;
    const QByteArray item = "[Item]\nLabel=T\nName=T\nStart=6\nDataType=Alpha\nLen=";
    const QByteArray dictionary = surveyDictionary().left(surveyDictionary().indexOf("[Record]"))
        + "[Record]\nLabel=H\nName=H\nRecordTypeValue='1'\nRecordLen=30\n\n" + item;
    for (int width = 1; width <= widest; ++width) {
        QByteArray data;
        QStringList expected;
        for (int size = 0; size <= width; ++size) {
            for (const char last : { 'a', '!', '\x1F', '0' }) {
                const QByteArray text = size == 0 ? QByteArray() : QByteArray(size - 1, ' ') + last;
                data += "10101" + text.leftJustified(width) + "  \n";
                expected.append(size == 0 ? QStringLiteral("1 1 -")
                                          : "1 1 \"" + QString::fromLatin1(text) + '"');
            }
        }
        CSProTextSource source(
            DataDictionary::fromBytes(dictionary + QByteArray::number(width) + '\n', "t.dcf"),
            { writeFile(m_folder, QStringLiteral("t.dat"), data) });
        RowCollector rows(source.dictionary());
        QVERIFY(runPipeline(source, rows));
        QStringList values;
        for (const QString& row : qAsConst(rows.rows))
            values.append(row.section(QStringLiteral(": "), 1));
        QCOMPARE(values, expected);
    }
}

void TestDataText::cases_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QStringList>("keys");
    QTest::newRow("two") << QByteArray("10101\n20101\n10102\n") << QStringList { "0101", "0102" };
    QTest::newRow("records in any order")
        << QByteArray("20101\n10101\n20101\n") << QStringList { "0101" };
    QTest::newRow("equal numbers")
        << QByteArray("10101\n2 1 1\n201 1\n10102\n") << QStringList { "0101", "0102" };
    QTest::newRow("rejected lines are in no case")
        << QByteArray("10101\n90107\n20101\n") << QStringList { "0101" };
    QTest::newRow("blank identification")
        << QByteArray("101  \n10101\n") << QStringList { "01  ", "0101" };
    QTest::newRow("blank is not zero")
        << QByteArray("10100\n201  \n10100\n") << QStringList { "0100", "01  ", "0100" };
    QTest::newRow("only one number differs")
        << QByteArray("10101\n20201\n20101\n") << QStringList { "0101", "0201", "0101" };
}

void TestDataText::cases()
{
    QFETCH(QByteArray, text);
    CSProTextSource source(DataDictionary::fromFile(writtenDictionary(m_folder)),
        { writeFile(m_folder, QStringLiteral("c.dat"), text) });
    RowCollector rows(source.dictionary());
    QVERIFY(runPipeline(source, rows));
    QTEST(rows.keys, "keys");
    QCOMPARE(source.counts().cases, qint64(rows.keys.size()));
}

void TestDataText::anyValueSet()
{
    const QString data = writeFile(m_folder, QStringLiteral("a.dat"), "10101 6\n1010221\n");
    CSProTextSource source(
        DataDictionary::fromFile(writtenDictionary(m_folder), ValueSetChoice::Any), { data });
    RowCollector rows(source.dictionary());
    QVERIFY(runPipeline(source, rows));
    QVERIFY2(rows.rows.at(0).contains(QStringLiteral(" 6 ")), qPrintable(rows.rows.at(0)));
    QVERIFY2(rows.rows.at(1).contains(QStringLiteral(" <>21 ")), qPrintable(rows.rows.at(1)));
}

void TestDataText::encodings_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<LineEncoding>("stated");
    QTest::addColumn<QString>("encoding");
    QTest::addColumn<QStringList>("names"); // value of NAME in each line
    QTest::addColumn<QStringList>("told");
    const QByteArray mark = "\xEF\xBB\xBF";
    const QByteArray line = "20101 33"; // NAME follows, of six columns
    const auto found = LineEncoding::Unknown;
    const auto utf8 = QStringLiteral("UTF-8");
    const auto windows = QStringLiteral("windows-1252");
    const auto other = QString::number(int(LineProblem::OtherEncoding));
    const auto bad = QString::number(int(LineProblem::NotUtf8));
    const QStringList none;
    QTest::newRow("ASCII") << line + "ab" << found << "ASCII" << QStringList { "ab" } << none;
    QTest::newRow("UTF-8") << line + "\xC3\xA9" << found << utf8 << QStringList { "é" } << none;
    QTest::newRow("mark, ASCII") << mark + line + "ab" << found << utf8 << QStringList { "ab" }
                                 << none;
    QTest::newRow("Windows-1252") << line + "\xE9\n" + line + "ab\n" + line + "\xFC" << found
                                  << windows << QStringList { "é", "ab", "ü" } << none;
    QTest::newRow("bad byte behind a mark")
        << mark + line + "\xC3\xA9\xE9xyz9beyond" << found << utf8 << QStringList { "é\uFFFDxyz9" }
        << QStringList { "1:" + QString::number(int(LineProblem::TextBeyondRecord)), "1:" + bad };
    QTest::newRow("Windows-1252 behind a mark")
        << mark + line + "\xE9x" << found << utf8 << QStringList { "\uFFFDx" }
        << QStringList { "1:" + bad };
    QTest::newRow("bad byte in UTF-8")
        << line + "\xC3\xA9\n" + line + "\xC3\xA9\xE9xyz9" << found << utf8
        << QStringList { "é", "é\uFFFDxyz9" } << QStringList { "2:" + bad };
    QTest::newRow("half a character in the first line")
        << line + "\xC3\xA9xyz1\xC3" << found << utf8 << QStringList { "éxyz1\uFFFD" }
        << QStringList { "1:" + bad };
    QTest::newRow("a line without any UTF-8 in UTF-8")
        << line + "\xC3\xA9\n" + line + "\xE9x" << found << utf8 << QStringList { "é", "éx" }
        << QStringList { "2:" + other };
    QTest::newRow("a line that happens to be UTF-8 in Windows-1252")
        << line + "\xE9\n" + line + "\xC3\xA9" << found << windows << QStringList { "é", "Ã©" }
        << QStringList { "2:" + other };
    QTest::newRow("a pair that happens to be UTF-8 in Windows-1252")
        << line + "\xE9\n" + line + "\xE9\xC3\xA9" << found << windows << QStringList { "é", "éÃ©" }
        << none;
    QTest::newRow("UTF-8, stated") << line + "\xE9x" << LineEncoding::Utf8 << utf8
                                   << QStringList { "\uFFFDx" } << QStringList { "1:" + bad };
    QTest::newRow("Windows-1252, stated")
        << line + "\xC3\xA9\n" + line + "\xE9" << LineEncoding::Windows1252 << windows
        << QStringList { "Ã©", "é" } << none;
    QTest::newRow("Windows-1252, stated, behind a mark")
        << mark + line + "\xC3\xA9" << LineEncoding::Windows1252 << utf8 << QStringList { "é" }
        << none;
}

void TestDataText::encodings()
{
    QFETCH(QByteArray, text);
    QFETCH(LineEncoding, stated);
    QFETCH(QStringList, names);
    CSProTextSource source(DataDictionary::fromFile(writtenDictionary(m_folder)),
        { writeFile(m_folder, QStringLiteral("e.dat"), text) }, stated);
    RowCollector rows(source.dictionary());
    QVERIFY(runPipeline(source, rows));
    QTEST(source.files().front().encoding, "encoding");
    QTEST(rows.told, "told");
    QStringList found;
    for (const QString& row : qAsConst(rows.rows))
        found.append(row.section(QLatin1Char('"'), 1, 1));
    QCOMPARE(found, names);
}

// What a rejected line holds counts for the encoding, and is told before the line is.
void TestDataText::encodingOfRejectedLines()
{
    const DataDictionary dictionary = DataDictionary::fromFile(writtenDictionary(m_folder));
    const auto toldOf = [&](const QByteArray& text, QString& encoding) {
        CSProTextSource source(dictionary, { writeFile(m_folder, QStringLiteral("r.dat"), text) });
        RowCollector rows(source.dictionary());
        if (!runPipeline(source, rows))
            qFatal("cancelled");
        encoding = source.files().front().encoding;
        return rows.told;
    };
    const auto told = [](LineProblem problem) { return QStringLiteral("1:%1").arg(int(problem)); };
    QString encoding;
    QCOMPARE(
        toldOf("90101 \xE9x\n", encoding), QStringList { told(LineProblem::UnknownRecordType) });
    QCOMPARE(encoding, QStringLiteral("windows-1252"));
    QCOMPARE(toldOf("~0101 \xC3\xA9\n", encoding), QStringList());
    QCOMPARE(encoding, QStringLiteral("UTF-8"));
    QCOMPARE(toldOf("\xEF\xBB\xBF"
                    "201\xE9"
                    "1 33\n",
                 encoding),
        (QStringList { told(LineProblem::NotUtf8), told(LineProblem::IdNotANumber) }));
}

void TestDataText::foreignFiles_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("says");
    const auto wide = [](bool isBig) {
        QByteArray bytes;
        for (const char byte : QByteArray("20101 33ab\r\n"))
            bytes.append(isBig ? '\0' : byte).append(isBig ? byte : '\0');
        return bytes;
    };
    QTest::newRow("UTF-16 LE") << "\xFF\xFE" + wide(false) << "UTF-16";
    QTest::newRow("UTF-16 BE") << "\xFE\xFF" + wide(true) << "UTF-16";
    QTest::newRow("UTF-16 LE without a mark") << wide(false) << "UTF-16";
    QTest::newRow("UTF-16 BE without a mark") << wide(true) << "UTF-16";
    QTest::newRow("gzip") << QByteArray("\x1F\x8B\x08\0\0\0", 6) << "gunzip";
    QTest::newRow("zip") << QByteArray("PK\x03\x04\x14") << "zip archive";
    QTest::newRow("xz") << QByteArray("\xFD\x37zXZ\0\0", 7) << "unxz";
    QTest::newRow("bzip2") << QByteArray("BZh91AY&SY\x12") << "bunzip2";
}

void TestDataText::foreignFiles()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QString, says);
    CSProTextSource source(DataDictionary::fromFile(writtenDictionary(m_folder)),
        { writeFile(m_folder, QStringLiteral("f.dat"), bytes) });
    RowCollector rows(source.dictionary());
    try {
        runPipeline(source, rows);
        QFAIL("it was read");
    } catch (const DataError& error) {
        QCOMPARE(int(error.code), int(DataError::Code::NotThisFormat));
        QVERIFY2(error.text.contains(says), qPrintable(error.text));
    }
}

// Without identification items nothing says which records belong together.
void TestDataText::withoutIdentification()
{
    const QByteArray dictionary =
        "[Dictionary]\nVersion=CSPro 7.7\nName=D\nRecordTypeStart=0\nRecordTypeLen=0\n\n"
        "[Level]\nName=L\n\n[IdItems]\n\n[Record]\nName=R\nRecordTypeValue=''\n\n"
        "[Item]\nName=V\nStart=1\nLen=1\n\n";
    CSProTextSource source(DataDictionary::fromBytes(dictionary, QStringLiteral("none")),
        { writeFile(m_folder, QStringLiteral("none.dat"), "1\n2\n2\n3\n") });
    RowCollector rows(source.dictionary());
    QVERIFY(runPipeline(source, rows));
    QCOMPARE(rows.rows.last(), QStringLiteral("3 4 R: 3"));
    QCOMPARE(source.counts().cases, 4LL);
}

// Nobody ever writes into the pipe.
void TestDataText::pipeWithoutWriter()
{
    const QString path = m_folder.filePath(QStringLiteral("silent"));
    QCOMPARE(::mkfifo(QFile::encodeName(path).constData(), 0600), 0);
    CSProTextSource source(DataDictionary::fromFile(writtenDictionary(m_folder)), { path });
    RowCollector rows(source.dictionary());
    int asked = 0;
    QVERIFY(!runPipeline(source, rows, [&](qint64, qint64) { return ++asked < 3; }));
    QVERIFY(rows.rows.isEmpty() && !rows.isFinished);
}

void TestDataText::severalFiles()
{
    const QString first = writeFile(m_folder, QStringLiteral("1.dat"), "10101 3\n20101 33a");
    const QString second = writeFile(m_folder, QStringLiteral("2.dat"), "20101 44b\r\n");
    CSProTextSource source(
        DataDictionary::fromFile(writtenDictionary(m_folder)), { first, second });
    QCOMPARE(source.size(), QFile(first).size() + QFile(second).size());
    RowCollector rows(source.dictionary());
    qint64 done = 0;
    QVERIFY(runPipeline(source, rows, [&done](qint64 bytes, qint64) {
        done = bytes;
        return true;
    }));
    QCOMPARE(done, source.size());
    QCOMPARE(source.files()[1].counts.cases, 1LL);
    QCOMPARE(rows.keys, (QStringList { "0101", "0101" })); // no case goes on in another file
    QCOMPARE(rows.rows.last(), QStringLiteral("1 1 PERSON: 1 1 44 \"b\" \"b\""));
    QCOMPARE(source.files()[0].counts.lines, 2LL);
    QCOMPARE(source.files()[1].crlfLines, 1LL);
}

void TestDataText::lineEnds()
{
    const QString mixed =
        writeFile(m_folder, QStringLiteral("mixed.dat"), "10101\r\n10102\n10103\n10104");
    const QString old =
        writeFile(m_folder, QStringLiteral("old.dat"), "10105\r10106\r10107\r10108\r");
    CSProTextSource source(DataDictionary::fromFile(writtenDictionary(m_folder)), { mixed, old });
    RowCollector rows(source.dictionary());
    QVERIFY(runPipeline(source, rows));
    QCOMPARE(rows.keys.size(), 8);
    const auto endsOf = [&source](std::size_t index) {
        const SourceFile& file = source.files()[index];
        return QVector<qint64> { file.lfLines, file.crlfLines, file.crLines };
    };
    QCOMPARE(endsOf(0), (QVector<qint64> { 2, 1, 0 }));
    QCOMPARE(endsOf(1), (QVector<qint64> { 0, 0, 4 }));
}

// The second file is not begun, and the first one, left in its middle, has not changed.
void TestDataText::stoppedInTheFirstFile()
{
    const QString first = writeFile(
        m_folder, QStringLiteral("s1.dat"), QByteArray("20101 33abcdef\n").repeated(200'000));
    const QString second = writeFile(m_folder, QStringLiteral("s2.dat"), "10102 3\n");
    CSProTextSource source(
        DataDictionary::fromFile(writtenDictionary(m_folder)), { first, second });
    BatchCounter sink([] { return false; });
    source.read(sink);
    QCOMPARE(sink.batches, 1);
    QCOMPARE(source.files()[0].counts.records, sink.records);
    QCOMPARE(source.files()[1].counts.lines, 0LL);
    QVERIFY(!source.files()[0].changedWhileRead);
}

// A file to which another program adds as fast as it is read comes to an end.
void TestDataText::growingFile()
{
    constexpr int lines = 200'000;
    const QByteArray line = "20101 33abcdef\n";
    const QString data = writeFile(m_folder, QStringLiteral("g.dat"), line.repeated(lines));
    CSProTextSource source(DataDictionary::fromFile(writtenDictionary(m_folder)), { data });
    BatchCounter sink([&] {
        QFile file(data);
        return file.open(QIODevice::Append) && file.write(line.repeated(10)) > 0;
    });
    source.read(sink);
    QVERIFY(sink.batches > 1);
    QCOMPARE(sink.records, qint64(lines));
    QVERIFY(source.files()[0].changedWhileRead);
}

// From where it stands: a program before may have read its first lines.
void TestDataText::standardInput()
{
    QFile file(writeFile(m_folder, QStringLiteral("in.dat"), "10101 3\n10102 3\n10103 3\n"));
    QVERIFY(file.open(QIODevice::ReadOnly | QIODevice::Unbuffered) && file.seek(8));
    const int kept = ::dup(STDIN_FILENO);
    QVERIFY(::dup2(file.handle(), STDIN_FILENO) >= 0);
    CSProTextSource source(DataDictionary::fromFile(writtenDictionary(m_folder)), { "-" });
    RowCollector rows(source.dictionary());
    const bool isRead = runPipeline(source, rows);
    ::dup2(kept, STDIN_FILENO);
    ::close(kept);
    QVERIFY(isRead);
    QCOMPARE(rows.keys, (QStringList { "0102", "0103" }));
    QVERIFY(!source.files().front().changedWhileRead);
}

// Files that the system makes up have contents, but no size.
void TestDataText::fileWithoutSize()
{
    const QString path = QStringLiteral("/proc/self/status");
    if (!QFile::exists(path) || QFileInfo(path).size() > 0)
        QSKIP("the system has no such file");
    CSProTextSource source(DataDictionary::fromFile(writtenDictionary(m_folder)), { path });
    RowCollector rows(source.dictionary());
    QVERIFY(runPipeline(source, rows));
    QVERIFY(source.counts().lines > 1);
}

// A pipe that is open and gives nothing does not keep a reader that is to stop.
void TestDataText::silentPipe()
{
    const QString path = m_folder.filePath(QStringLiteral("silent.fifo"));
    const QString file = writeFile(m_folder, QStringLiteral("f.dat"), "10101 3\n");
    QCOMPARE(::mkfifo(QFile::encodeName(path).constData(), 0600), 0);
    std::atomic<bool> hasStopped { false };
    std::atomic<bool> wasInTime { false };
    std::thread writer([&] {
        constexpr int most = 1000; // rounds, so that the test ends in any case
        QFile pipe(path);
        if (!pipe.open(QIODevice::ReadWrite))
            return;
        for (int round = 0; round < most && !hasStopped; ++round)
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        wasInTime = hasStopped.load();
    });
    CSProTextSource source(DataDictionary::fromFile(writtenDictionary(m_folder)), { path, file });
    const qint64 size = source.size();
    RowCollector rows(source.dictionary());
    const bool isRead = runPipeline(source, rows, [](qint64, qint64) { return false; });
    hasStopped = true;
    writer.join();
    QVERIFY(!isRead);
    QVERIFY(wasInTime);
    QCOMPARE(size, -1LL);
}

void TestDataText::pipe()
{
    const QString path = m_folder.filePath(QStringLiteral("fifo"));
    QCOMPARE(::mkfifo(QFile::encodeName(path).constData(), 0600), 0);
    std::thread writer([&path] {
        QFile file(path);
        if (file.open(QIODevice::WriteOnly))
            file.write("10101 3\n20101 33a\n");
    });
    CSProTextSource source(DataDictionary::fromFile(writtenDictionary(m_folder)), { path });
    QCOMPARE(source.size(), -1LL);
    RowCollector rows(source.dictionary());
    const bool isRead = runPipeline(source, rows);
    writer.join();
    QVERIFY(isRead);
    QCOMPARE(rows.rows.size(), 2);
    QVERIFY(!source.files().front().changedWhileRead);
}

void TestDataText::hugeLine_data()
{
    QTest::addColumn<bool>("isPipe");
    QTest::newRow("file with a hole") << false;
    QTest::newRow("pipe whose writer ends in it") << true;
}

// A line of 1 GiB takes no memory of that size.
void TestDataText::hugeLine()
{
    QFETCH(bool, isPipe);
    constexpr qint64 huge = 1'073'741'824;
    const QString path = m_folder.filePath(isPipe ? "huge.fifo" : "huge.dat");
    std::thread writer;
    if (isPipe) {
        QCOMPARE(::mkfifo(QFile::encodeName(path).constData(), 0600), 0);
        writer = std::thread([&path] {
            QFile file(path);
            const QByteArray block(1'048'576, '1');
            if (!file.open(QIODevice::WriteOnly | QIODevice::Unbuffered)
                || file.write("10101 3\n") != 8)
                return;
            for (qint64 done = 0; done < huge; done += block.size())
                file.write(block);
        });
    } else {
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        QVERIFY(
            file.write("10101 3\n") == 8 && file.seek(huge + 8) && file.write("\n10102 3\n") == 9);
    }
    const auto before = peakMemory();
    CSProTextSource source(DataDictionary::fromFile(writtenDictionary(m_folder)), { path });
    RowCollector rows(source.dictionary());
    const bool isRead = runPipeline(source, rows);
    if (isPipe)
        writer.join();
    QVERIFY(isRead);
    QVERIFY2(peakMemory() - before < 100'000, qPrintable(QString::number(peakMemory() - before)));
    QCOMPARE(rows.told, QStringList { QStringLiteral("2:%1").arg(int(LineProblem::EndlessLine)) });
    QCOMPARE(source.counts().records, isPipe ? 1LL : 2LL);
    QCOMPARE(source.files().front().bytes, huge + (isPipe ? 8 : 17));
    QVERIFY(source.counts().addUp());
    QFile::remove(path);
}

void TestDataText::levels()
{
    const QByteArray dictionary =
        "[Dictionary]\nVersion=CSPro 7.7\nName=D\nRecordTypeStart=1\nRecordTypeLen=2\n\n"
        "[Level]\nName=L1\n\n[IdItems]\n\n[Item]\nName=H\nStart=3\nLen=2\n\n"
        "[Record]\nName=HOUSE\nRecordTypeValue='H'\nRequired=No\n\n"
        "[Item]\nName=ROOF\nStart=7\nLen=1\n\n"
        "[Level]\nName=L2\n\n[IdItems]\n\n[Item]\nName=W\nStart=5\nLen=2\n\n"
        "[Record]\nName=WOMAN\nRecordTypeValue='WW'\n\n[Item]\nName=KIDS\nStart=7\nLen=1\n\n";
    CSProTextSource source(
        DataDictionary::fromFile(writeFile(m_folder, QStringLiteral("l.dcf"), dictionary)),
        { writeFile(m_folder, QStringLiteral("l.dat"), "H  1  5\nWW 1 13\nWW 1 2\nWW 2 14\n") });
    RowCollector rows(source.dictionary());
    QVERIFY(runPipeline(source, rows));
    QCOMPARE(rows.rows,
        (QStringList {
            "0 1 HOUSE: 1 5", "0 2 WOMAN: 1 1 3", "0 3 WOMAN: 1 2 -", "1 4 WOMAN: 2 1 4" }));
}

void TestDataText::repeats()
{
    const QByteArray dictionary =
        "[Dictionary]\nVersion=CSPro 7.7\nName=D\n\n[Level]\nName=L\n\n[IdItems]\n\n"
        "[Item]\nName=K\nStart=1\nLen=1\n\n[Record]\nName=R\nRecordTypeValue=''\n\n"
        "[Item]\nName=P\nStart=2\nLen=2\nOccurrences=2\nDataType=Alpha\n\n"
        "[Item]\nName=Q\nStart=3\nLen=1\nItemType=SubItem\n\n";
    CSProTextSource source(
        DataDictionary::fromFile(writeFile(m_folder, QStringLiteral("r.dcf"), dictionary)),
        { writeFile(m_folder, QStringLiteral("r.dat"), "1a2b3\n") });
    RowCollector rows(source.dictionary());
    QVERIFY(runPipeline(source, rows));
    QCOMPARE(rows.rows, QStringList { QStringLiteral("0 1 R: 1 \"a2\" \"b3\" 2 3") });
    QCOMPARE(source.dictionary().variable(0, 4).parent, 2);
}

void TestDataText::errors()
{
    const auto codeOf = [](auto step) {
        try {
            step();
        } catch (const DataError& error) {
            return int(error.code);
        }
        return -1;
    };
    const DataDictionary dictionary = DataDictionary::fromFile(writtenDictionary(m_folder));
    const QString missing = m_folder.filePath(QStringLiteral("missing"));
    QCOMPARE(codeOf([&] { CSProTextSource(dictionary, { missing }); }),
        int(DataError::Code::CannotOpen));
    QCOMPARE(codeOf([&] { DataDictionary::fromFile(missing); }), int(DataError::Code::CannotOpen));
    const QString empty = writeFile(m_folder, QStringLiteral("empty.dcf"), "");
    QCOMPARE(codeOf([&] { DataDictionary::fromFile(empty); }), int(DataError::Code::NoDictionary));
    QCOMPARE(codeOf([&] {
        CSProTextSource source(dictionary, { m_folder.path() });
        RowCollector rows(source.dictionary());
        runPipeline(source, rows);
    }),
        int(DataError::Code::CannotOpen));
    QByteArray untyped = surveyDictionary();
    untyped.replace("RecordTypeLen=1", "RecordTypeLen=0");
    const QString several = writeFile(m_folder, QStringLiteral("several.dcf"), untyped);
    QCOMPARE(codeOf([&] { CSProTextSource(DataDictionary::fromFile(several), {}); }),
        int(DataError::Code::UnfitDictionary));
}

void TestDataText::dictionaryErrors_data()
{
    QTest::addColumn<QByteArray>("bytes"); // of d.dcf; null: there is none
    QTest::addColumn<DataError::Code>("code");
    QTest::addColumn<QString>("text");
    using Code = DataError::Code;
    QTest::newRow("missing") << QByteArray() << Code::CannotOpen << QStringLiteral("no such file");
    QTest::newRow("empty") << QByteArray("") << Code::NoDictionary << QStringLiteral("is empty");
    QTest::newRow("broken JSON") << QByteArray("{\n\"software\": \"CSPro\",\n\"name\": 1 2\n}\n")
                                 << Code::NoDictionary << QStringLiteral("line 3: ");
    QTest::newRow("another text") << QByteArray("Dear all,\nnothing here\n") << Code::NoDictionary
                                  << QStringLiteral("it begins: \"Dear all,\", \"nothing here\"");
    QTest::newRow("SPSS") << QByteArray("$FL2@(#) and so on") << Code::NotThisFormat
                          << QStringLiteral("is no CSPro dictionary but an SPSS file");
    QTest::newRow("no CSPro DB") << QByteArrayLiteral("SQLite format 3\0 and so on")
                                 << Code::Damaged << QStringLiteral("is a damaged CSPro DB");
    QTest::newRow("no records") << QByteArray("[Dictionary]\nName=D\n") << Code::NoDictionary
                                << QStringLiteral("has no records");
}

// What is wrong is told, and nothing but a dictionary is taken for one.
void TestDataText::dictionaryErrors()
{
    QFETCH(QByteArray, bytes);
    QFETCH(DataError::Code, code);
    QFETCH(QString, text);
    const QTemporaryDir folder;
    const QString path = bytes.isNull() ? folder.filePath(QStringLiteral("d.dcf"))
                                        : writeFile(folder, QStringLiteral("d.dcf"), bytes);
    try {
        DataDictionary::fromFile(path);
        QFAIL("it was taken for a dictionary");
    } catch (const DataError& error) {
        QVERIFY2(error.text.contains(text), qPrintable(error.text));
        QCOMPARE(error.file, path);
        QCOMPARE(error.code, code);
    }
}

void TestDataText::dictionaryOfDatabase()
{
    const QString data = QStringLiteral(TESSEL_TEST_DATA "/basic");
    const DataDictionary found = DataDictionary::fromFile(data + QStringLiteral(".csdb"));
    const DataDictionary expected = DataDictionary::fromFile(data + QStringLiteral(".dcf"));
    QCOMPARE(found.name, expected.name);
    QCOMPARE(found.columnCount(), expected.columnCount());
    QCOMPARE(found.records.size(), expected.records.size());
}

void TestDataText::cancelAndFailure()
{
    QByteArray many;
    for (int i = 0; i < 200'000; ++i)
        many += "20101 33abcdef\n";
    const QString data = writeFile(m_folder, QStringLiteral("many.dat"), many);
    const DataDictionary dictionary = DataDictionary::fromFile(writtenDictionary(m_folder));
    {
        CSProTextSource source(dictionary, { data });
        RowCollector rows(source.dictionary());
        qint64 last = -1;
        const bool isDone = runPipeline(source, rows, [&](qint64 done, qint64 size) {
            const bool isRising = done >= last && size == many.size();
            last = done;
            return isRising && rows.batches < 2;
        });
        QVERIFY(!isDone);
        QVERIFY(!rows.isFinished);
        QCOMPARE(rows.batches, 2);
    }
    struct Failing : DataConsumer {
        void take(const DataBatch&) override
        {
            throw std::runtime_error("full");
        }
        void finish(const DataSource&) override
        {
        }
    } failing;
    CSProTextSource source(dictionary, { data });
    QVERIFY_EXCEPTION_THROWN(runPipeline(source, failing), std::runtime_error);
    CSProTextSource whole(dictionary, { data });
    RowCollector rows(whole.dictionary());
    QVERIFY(runPipeline(whole, rows));
    QCOMPARE(rows.rows.size(), 200'000);
    QVERIFY(rows.batches > 4);
    QVERIFY(rows.rows.at(199'999).startsWith(QStringLiteral("0 200000 PERSON"))); // in order
}

QTEST_GUILESS_MAIN(TestDataText)
#include "tst_DataText.moc"
