#include "LineByLineLookup.h"
#include "LookupTest.h"

#include <model_Tessel/Lookup.h>

#include <QFile>
#include <QtTest>

#include <algorithm>
#include <random>
#include <utility>
#include <vector>

class tst_LookupSameAsLineByLine : public LookupTest {
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanup();

    void cancelledImport_data();
    void cancelledImport();

    void sameAsLineByLine_data();
    void sameAsLineByLine();
    void sameAsLineByLineAtTheReadBuffer();
    void sameAsLineByLineAtRandom();

private:
    void compareWithData(const QByteArray& bytes, const TOxLookup& expected);
    void compareWithLineByLine(Checked& checked, LineByLineLookup& plain, const QByteArray& bytes);
};

void tst_LookupSameAsLineByLine::initTestCase()
{
    QVERIFY(m_directory.isValid());
    QVERIFY(QDir(m_directory.path()).mkpath("folder"));
}

void tst_LookupSameAsLineByLine::cleanup()
{
    QFile::remove(path("file"));
    MsgText.clear();
}

void tst_LookupSameAsLineByLine::cancelledImport_data()
{
    QTest::addColumn<bool>("inOrder");
    QTest::newRow("lines in order") << true;
    QTest::newRow("lines out of order") << false;
}

void tst_LookupSameAsLineByLine::cancelledImport()
{
    QFETCH(bool, inOrder);
    QByteArrayList lines;
    for (int number = 0; number < 20000; ++number) {
        const int key = inOrder ? 100000 + number : 100000 + number * 7919 % 10007;
        lines << QByteArray::number(key) + ",value " + QByteArray::number(number);
    }
    const QByteArray bytes = lines.join('\n');
    write("file", bytes);
    Checked checked(path("file"));
    checked.lookup.setImportProgress(
        [](qint64 bytesRead, qint64 size) { return bytesRead < size / 2; });
    QVERIFY(!checked.run(checkAndCount));
    QCOMPARE(checked.lookup.cancelled, true);
    QCOMPARE(checked.lookup.status, -1);
    const int read = checked.lookup.lineNumber;
    QVERIFY(read > 1000 && read < 19000);

    LineByLineLookup plain;
    plain.separator = 2;
    plain.consistency = checkAndCount;
    plain.maxMessages = checked.lookup.maxMessages;
    const QStringList messages = std::exchange(checked.messages, QStringList());
    Checked shorter(path("file"));
    compareWithLineByLine(shorter, plain, lines.mid(0, read).join('\n'));
    QCOMPARE(checked.pairs(), shorter.pairs());
    QCOMPARE(messages, shorter.messages);
    QCOMPARE(checked.frequencies.size(), shorter.frequencies.size());
    QCOMPARE(checked.lookup.line, shorter.lookup.line);
    QCOMPARE(checked.lookup.key, shorter.lookup.key);
    QCOMPARE(checked.lookup.position, shorter.lookup.position);

    write("file", bytes);
    checked.deleteValues();
    checked.lookup.setImportProgress(LookupProgress());
    QVERIFY(checked.run(checkOnly));
    QCOMPARE(checked.lookup.cancelled, false);
    QCOMPARE(checked.lookup.lineNumber, 20000);
}

// The same bytes without a file give the same records and messages.
void tst_LookupSameAsLineByLine::compareWithData(const QByteArray& bytes, const TOxLookup& expected)
{
    Checked ofFile(path("file"), expected.separator);
    Checked ofData(path("none"), expected.separator);
    QVERIFY(ofFile.run(expected.consistency));
    ofData.lookup.consistency = expected.consistency;
    QVERIFY(ofData.lookup.importData(bytes, ofData.frequencies, &ofData.messages));
    QCOMPARE(ofData.pairs(), ofFile.pairs());
    QCOMPARE(ofData.messages, ofFile.messages);
    QCOMPARE(ofData.lookup.line, ofFile.lookup.line);
    QCOMPARE(ofData.lookup.lineNumber, ofFile.lookup.lineNumber);
    QCOMPARE(ofData.lookup.position, ofFile.lookup.position);
    QCOMPARE(ofData.lookup.fileSize, ofFile.lookup.fileSize);
    QCOMPARE(ofData.lookup.status, -1);
    QCOMPARE(ofData.frequencies.size(), ofFile.frequencies.size());
}

// Imports the bytes both ways; what the two objects held before may show in the outcome.
void tst_LookupSameAsLineByLine::compareWithLineByLine(
    Checked& checked, LineByLineLookup& plain, const QByteArray& bytes)
{
    write("file", bytes);
    TOxLookup& lookup = checked.lookup;
    lookup.setSeparator(plain.separator);
    lookup.maxMessages = plain.maxMessages;
    MsgText = plain.lastMessage;
    checked.deleteValues();
    QVERIFY(checked.run(econsistencyCheck(plain.consistency)));
    plain.import(path("file"), "UTF-8");

    Pairs pairs;
    for (const auto& [key, value] : plain.values)
        pairs.append({ key, value });
    QCOMPARE(checked.pairs(), pairs);
    QCOMPARE(checked.messages, plain.messages);
    QCOMPARE(MsgText, plain.lastMessage);
    QCOMPARE(checked.frequencies.size(), plain.frequencies.size());
    for (const auto& [value, count] : plain.frequencies)
        QCOMPARE(*checked.frequencies.at(value), count);
    QCOMPARE(lookup.key, plain.key);
    QCOMPARE(lookup.value, plain.value);
    QCOMPARE(lookup.line, plain.line);
    QCOMPARE(lookup.lineNumber, plain.lineNumber);
    QCOMPARE(lookup.position, plain.position);
    QCOMPARE(lookup.fileSize, qint64(bytes.size()));
    QCOMPARE(lookup.errorCount, plain.errorCount);
    QCOMPARE(lookup.limitNoticeIssued, plain.limitNoticeIssued);
    compareWithData(bytes, lookup);
}

void tst_LookupSameAsLineByLine::sameAsLineByLine_data()
{
    QTest::addColumn<int>("disorder"); // lines of a hundred that change places
    QTest::addColumn<int>("dirt"); // lines of a hundred that are wrong
    QTest::addColumn<QString>("start"); // of every key
    const auto row = [](const char* name, int disorder, int dirt, const QString& start) {
        QTest::newRow(name) << disorder << dirt << start;
    };

    row("sorted", 0, 0, "");
    row("sorted, dirty", 0, 2, "");
    row("a few out of order", 1, 2, "");
    row("many out of order", 30, 2, "");
    row("shuffled", 100, 0, "");
    row("shuffled, dirty", 100, 30, "");
    row("shuffled, all keys begin alike", 100, 5, "district/");
}

void tst_LookupSameAsLineByLine::sameAsLineByLine()
{
    QFETCH(int, disorder);
    QFETCH(int, dirt);
    QFETCH(QString, start);
    constexpr int Lines = 8000;
    std::mt19937 random(1);
    const auto upTo = [&random](int limit) { return int(random() % unsigned(limit)); };
    std::vector<QByteArray> lines;
    for (int number = 0; number < Lines; ++number) {
        const int key = upTo(100) < dirt ? upTo(Lines) : number;
        const char* const separator = upTo(100) < dirt ? " " : ",";
        lines.push_back(start.toLatin1() + QByteArray::number(100000 + key) + separator + "Place "
            + QByteArray::number(key % 700) + (upTo(100) < dirt ? "\r\n" : "\n"));
        if (upTo(100) < dirt)
            lines.back().prepend("0");
    }
    for (std::size_t index = 0; index < lines.size(); ++index) {
        if (upTo(100) < disorder)
            std::swap(lines[index], lines[std::size_t(upTo(Lines))]);
    }
    QByteArray bytes;
    for (const QByteArray& line : lines)
        bytes.append(line);
    for (int mode = 0; mode <= 3; ++mode) {
        Checked checked(path("file"));
        LineByLineLookup plain;
        plain.separator = 2;
        plain.consistency = mode;
        plain.maxMessages = 100;
        compareWithLineByLine(checked, plain, bytes);
        if (QTest::currentTestFailed())
            return;
    }
}

// What stands behind a full buffer may decode to nothing and still count as a line.
void tst_LookupSameAsLineByLine::sameAsLineByLineAtTheReadBuffer()
{
    constexpr int BufferSize = 16384;
    for (int size = BufferSize - 2; size <= BufferSize + 2; ++size) {
        for (const char* end : { "", "\n", "\r", "\r\r", "\n\r", "\r\n", "\r2,b", "\n2,b" }) {
            Checked checked(path("file"));
            LineByLineLookup plain;
            plain.separator = 2;
            plain.consistency = checkOnly;
            QByteArray bytes = "1," + QByteArray(size - 3, 'x') + "\n";
            compareWithLineByLine(checked, plain, bytes + end);
            if (QTest::currentTestFailed())
                return;
        }
    }
}

void tst_LookupSameAsLineByLine::sameAsLineByLineAtRandom()
{
    std::mt19937 random(2);
    const auto upTo = [&random](int limit) { return int(random() % unsigned(limit)); };
    const QStringList pieces = { "0", "1", "2", "00000000", "a", "A", " ", "\t", ",", ";", ":",
        QString(QChar(0)), "\u00FE", "\u00FF", "\u0100", "\uFF5E", "\u00A0", "%2",
        QString::fromUtf8("\xF0\x9F\x98\x80"), "district" };
    const QStringList separators = { " ", "\t", ",", ";", ":", " , ", "  ", "" };
    const QStringList ends = { "\n", "\n", "\n", "\r\n", "\n\n", "\r", "\n\r" };
    const auto text = [&](int longest, int kinds) {
        QString result;
        for (int length = upTo(longest + 1); length > 0; --length)
            result += pieces.at(upTo(kinds));
        return result;
    };
    const std::vector<std::pair<QByteArray, const char*>> encodings = { { "", "UTF-8" },
        { "", "UTF-8" }, { utf8Mark, "UTF-8" }, { "\xFF\xFE", "UTF-16LE" },
        { "\xFE\xFF", "UTF-16BE" } };

    for (int turn = 0; turn < 1500; ++turn) {
        Checked checked(path("file"));
        LineByLineLookup plain;
        plain.maxMessages = upTo(6) - 1;
        for (int import = 0; import < 2; ++import) {
            plain.separator = upTo(8) - 1;
            plain.consistency = upTo(4);
            const QString separator =
                upTo(4) > 0 ? separators.value(plain.separator, " ") : separators.at(upTo(8));
            const int kinds = upTo(2) == 0 ? 4 : pieces.size();
            QStringList lines;
            for (int count = upTo(40); count > 0; --count) {
                lines << text(4, kinds) + (upTo(12) > 0 ? separator : QString())
                        + text(2, pieces.size());
            }
            if (upTo(3) == 0)
                std::sort(lines.begin(), lines.end());
            QString content;
            for (const QString& line : qAsConst(lines))
                content += line + (upTo(5) > 0 ? QString("\n") : ends.at(upTo(ends.size())));
            if (upTo(3) == 0)
                content.chop(1);
            const auto& [mark, codec] = encodings[std::size_t(upTo(int(encodings.size())))];
            compareWithLineByLine(checked, plain, mark + encoded(codec, content));
            if (QTest::currentTestFailed()) {
                qWarning() << "turn" << turn << "separator" << plain.separator << "mode"
                           << plain.consistency << content;
                return;
            }
        }
    }
}

QTEST_GUILESS_MAIN(tst_LookupSameAsLineByLine)

#include "tst_LookupSameAsLineByLine.moc"
