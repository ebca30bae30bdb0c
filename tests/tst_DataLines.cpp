#include <tessel_data/LineReader_p.h>
#include <tessel_data/LineText_p.h>

#include <model_Tessel/TextEncoding.h>

#include <QtTest>

#include <algorithm>
#include <cstring>

using tessel::LineEncoding;
using tessel::LineReader;
using tessel::LineText;

namespace {

// Gives the bytes in pieces of step.
LineReader::Read readerOf(const QByteArray& bytes, qint64 step)
{
    return [bytes, step, at = qint64(0)](char* buffer, qint64 size) mutable {
        const qint64 count = std::min({ size, step, qint64(bytes.size()) - at });
        std::memcpy(buffer, bytes.constData() + at, std::size_t(count));
        at += count;
        return count;
    };
}

QByteArrayList linesOf(LineReader& reader)
{
    QByteArrayList lines;
    for (LineReader::Line line; reader.next(line);) {
        lines.append(QByteArray(line.text.data(), int(line.text.size())));
        if (line.isEndless)
            lines.last() += "...";
    }
    return lines;
}

QByteArray text(std::string_view view)
{
    return QByteArray(view.data(), int(view.size()));
}

} // namespace

class TestDataLines : public QObject {
    Q_OBJECT

private slots:
    void lines_data();
    void lines();
    void endless();
    void longStream();
    void failure();
    void utf8();
    void windows1252();
    void invalid_data();
    void invalid();
    void controls();
    void anyPlace();
};

void TestDataLines::lines_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QByteArrayList>("expected");
    QTest::newRow("nothing") << QByteArray() << QByteArrayList();
    QTest::newRow("LF") << QByteArray("a\nb\n") << QByteArrayList { "a", "b" };
    QTest::newRow("no line end at the end") << QByteArray("a\nb") << QByteArrayList { "a", "b" };
    QTest::newRow("CRLF") << QByteArray("a\r\nb\r\n") << QByteArrayList { "a", "b" };
    QTest::newRow("mixed") << QByteArray("a\r\nb\nc") << QByteArrayList { "a", "b", "c" };
    QTest::newRow("CR") << QByteArray("a\rb\r") << QByteArrayList { "a", "b" };
    QTest::newRow("CR alone, one line") << QByteArray("a\r") << QByteArrayList { "a" };
    QTest::newRow("CR inside") << QByteArray("a\rb\nc\n") << QByteArrayList { "a\rb", "c" };
    QTest::newRow("empty lines") << QByteArray("\n\r\n\na") << QByteArrayList { "", "", "", "a" };
    QTest::newRow("mark") << QByteArray("\xEF\xBB\xBF"
                                        "a\n")
                          << QByteArrayList { "a" };
    QTest::newRow("mark alone") << QByteArray("\xEF\xBB\xBF") << QByteArrayList();
    QTest::newRow("NUL") << QByteArray("a\0b\n", 4) << QByteArrayList { QByteArray("a\0b", 3) };
}

void TestDataLines::lines()
{
    QFETCH(QByteArray, bytes);
    for (const qint64 step : { 1, 2, 3, 1000 }) {
        LineReader reader(readerOf(bytes, step), 100);
        QTEST(linesOf(reader), "expected");
        QCOMPARE(reader.bytesRead(), qint64(bytes.size()));
        QCOMPARE(reader.hasMark(), bytes.startsWith("\xEF\xBB\xBF"));
    }
}

void TestDataLines::endless()
{
    const QByteArray endless(3 * int(LineReader::BlockSize), 'x');
    for (const QByteArray& bytes : { "a\n" + endless + "\nb\n", "a\n" + endless, endless + "\nb",
             QByteArray("a\nxxxxxxxxxxx\nb\n") }) {
        LineReader reader(readerOf(bytes, LineReader::BlockSize), 10);
        const QByteArrayList lines = linesOf(reader);
        QVERIFY(lines.contains("xxxxxxxxxx..."));
        QCOMPARE(lines.size(), 1 + int(bytes.startsWith('a')) + int(bytes.contains('b')));
        QCOMPARE(lines.contains("b"), bytes.contains('b'));
        QCOMPARE(reader.bytesRead(), qint64(bytes.size()));
    }
    LineReader reader(readerOf("a\r" + endless + "\rb", LineReader::BlockSize), 10);
    QCOMPARE(linesOf(reader), (QByteArrayList { "a", "xxxxxxxxxx...", "b" }));
    QCOMPARE(reader.crLines(), 2LL);
    QCOMPARE(reader.lfLines(), 0LL);
}

// Blocks end anywhere in lines of many lengths.
void TestDataLines::longStream()
{
    QByteArray bytes;
    QByteArrayList expected;
    for (int i = 0; i < 20'000; ++i) {
        expected.append(QByteArray(i * 7 % 331, char('a' + i % 26)));
        bytes += expected.last() + (i % 3 == 0 ? "\r\n" : "\n");
    }
    LineReader reader(readerOf(bytes, 4099), 1000);
    QCOMPARE(linesOf(reader), expected);
    QCOMPARE(reader.crlfLines(), 6667);
    QCOMPARE(reader.lfLines(), 13333);
}

void TestDataLines::failure()
{
    int calls = 0;
    LineReader reader(
        [&calls](char* buffer, qint64) -> qint64 {
            if (++calls > 1)
                throw std::runtime_error("broken");
            buffer[0] = 'a';
            return 1;
        },
        10);
    LineReader::Line line;
    QVERIFY_EXCEPTION_THROWN(reader.next(line), std::runtime_error);
}

void TestDataLines::utf8()
{
    LineText line;
    line.set("a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80z");
    QCOMPARE(line.encoding(), LineEncoding::Utf8);
    QVERIFY(!line.isAscii());
    QCOMPARE(line.columnCount(), 5); // an emoji is one character
    QCOMPARE(text(line.columns(1, 2)), QByteArray("\xC3\xA9\xE2\x82\xAC"));
    QCOMPARE(text(line.columns(3, 1)), QByteArray("\xF0\x9F\x98\x80"));
    QCOMPARE(text(line.columns(4, 9)), QByteArray("z"));
    QCOMPARE(text(line.columns(5, 1)), QByteArray());
    line.set("plain");
    QVERIFY(line.isAscii());
    QCOMPARE(line.encoding(), LineEncoding::Unknown);
    QCOMPARE(text(line.columns(3, std::numeric_limits<int>::max())), QByteArray("in"));
}

void TestDataLines::windows1252()
{
    LineText line;
    line.set("a\xE9\x80z");
    QCOMPARE(line.encoding(), LineEncoding::Windows1252);
    QCOMPARE(text(line.text()), QByteArray("a\xC3\xA9\xE2\x82\xACz"));
    QCOMPARE(line.columnCount(), 4);
    QCOMPARE(text(line.columns(2, 1)), QByteArray("\xE2\x82\xAC"));

    // Bytes without a character stay control characters, and all others are what files of text say.
    QByteArray bytes;
    for (int byte = 0x80; byte < 0x100; ++byte)
        bytes += char(byte);
    line.set({ bytes.constData(), std::size_t(bytes.size()) });
    QCOMPARE(text(line.text()), decodeText(bytes).text.toUtf8());
    QCOMPARE(text(line.columns(1, 1)), QByteArray("\xC2\x81"));
    QCOMPARE(line.columnCount(), 128);
}

void TestDataLines::invalid_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("half a character at the end") << QByteArray("a\xC3");
    QTest::newRow("follower alone") << QByteArray("a\xA9");
    QTest::newRow("overlong") << QByteArray("\xC0\xAF");
    QTest::newRow("overlong, three bytes") << QByteArray("\xE0\x80\xAF");
    QTest::newRow("surrogate") << QByteArray("\xED\xA0\x80");
    QTest::newRow("beyond the last") << QByteArray("\xF4\x90\x80\x80");
    QTest::newRow("five bytes") << QByteArray("\xF8\x88\x80\x80\x80");
}

void TestDataLines::invalid()
{
    QFETCH(QByteArray, bytes);
    LineText line;
    line.set({ bytes.constData(), std::size_t(bytes.size()) });
    QCOMPARE(line.encoding(), LineEncoding::Windows1252);
    QCOMPARE(line.columnCount(), bytes.size()); // a column for each byte
}

void TestDataLines::controls()
{
    LineText line;
    line.set(std::string_view("a\0b", 3));
    QVERIFY(line.hasControlCharacters());
    line.set("a b~");
    QVERIFY(!line.hasControlCharacters());
}

// Whatever the length of the line, and wherever the byte stands in it.
void TestDataLines::anyPlace()
{
    constexpr std::size_t longest = 40;
    LineText line;
    for (std::size_t size = 0; size <= longest; ++size) {
        const std::string plain(size, '~');
        line.set(plain);
        QVERIFY(line.isAscii() && !line.hasControlCharacters());
        for (std::size_t place = 0; place < size; ++place) {
            for (const char byte : { '\0', '\x1F', ' ', '\x7F', '\x80', '\xFF' }) {
                std::string text = plain;
                text[place] = byte;
                line.set(text);
                const auto value = uchar(byte);
                QCOMPARE(line.isAscii(), value < 0x80);
                QCOMPARE(line.hasControlCharacters(), value < 0x20);
            }
        }
    }
}

QTEST_GUILESS_MAIN(TestDataLines)
#include "tst_DataLines.moc"
