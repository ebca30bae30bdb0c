// The lines of a dictionary file, beside those that a text stream reads.
#include <model_Tessel/TextLines_p.h>

#include <QBuffer>
#include <QRandomGenerator>
#include <QTextCodec>
#include <QTextStream>
#include <QtTest>

#include <functional>

namespace {

using Ends = TextLines::Ends;

QStringList linesOf(const QByteArray& bytes, const QByteArray& codecName, Ends ends)
{
    const QTextCodec* codec = QTextCodec::codecForName(codecName);
    codec = QTextCodec::codecForUtfText(bytes, const_cast<QTextCodec*>(codec));
    const TextLines text(bytes, *codec, ends);
    QStringList lines;
    for (const QStringView line : text.lines())
        lines.append(line.toString());
    return lines;
}

QStringList streamLinesOf(QByteArray bytes, const QByteArray& codecName)
{
    QBuffer buffer(&bytes);
    if (!buffer.open(QIODevice::ReadOnly | QIODevice::Text))
        return { QStringLiteral("cannot be opened") };
    QTextStream stream(&buffer);
    stream.setCodec(codecName.constData());
    QStringList lines;
    while (!stream.atEnd())
        lines.append(stream.readLine());
    return lines;
}

// All three ends, one character after the other.
QStringList linesByCharacter(const QString& text)
{
    QStringList lines { QString() };
    for (int i = 0; i < text.size(); ++i) {
        const bool isPair = text.at(i) == '\r' && i + 1 < text.size() && text.at(i + 1) == '\n';
        if (isPair)
            ++i;
        if (text.at(i) == '\r' || text.at(i) == '\n')
            lines.append(QString());
        else
            lines.last() += text.at(i);
    }
    return lines;
}

// Empty lines at the end say nothing.
QStringList withoutEmptyEnd(QStringList lines)
{
    while (!lines.isEmpty() && lines.constLast().isEmpty())
        lines.removeLast();
    return lines;
}

class Writer {
public:
    explicit Writer(quint32 seed)
        : m_random(seed)
    {
    }

    int below(int bound)
    {
        return m_random.bounded(bound);
    }

    // Pieces one after the other up to size, the last of them cut.
    QByteArray text(const QList<QByteArray>& pieces, int size)
    {
        QByteArray bytes;
        while (bytes.size() < size)
            bytes += pieces.at(below(pieces.size()));
        bytes.truncate(size);
        return bytes;
    }

private:
    QRandomGenerator m_random;
};

const QList<QByteArray>& brokenPieces()
{
    static const QList<QByteArray> pieces { "\xC3", "\xA9", "\xE2\x82", "\xE2", "\x82", "\xF0\x9F",
        "\xF0\x9F\x98", "\x98\x80", "\xFF", "\xFE", "\xC0\x80", "\xED\xA0\x80", "\xEF\xBB\xBF",
        "\xF8\x88\x80\x80\x80", "\xC3\xA9", "\xE2\x82\xAC", "\xF0\x9F\x98\x80", "a", "Name=", "\n",
        "\r\n", "\r", QByteArray("\0", 1) };
    return pieces;
}

} // namespace

class tst_TextLines : public QObject {
    Q_OBJECT

private slots:
    void fewBytes_data();
    void fewBytes();
    void aSequenceCutAtTheEdgeOfAPiece_data();
    void aSequenceCutAtTheEdgeOfAPiece();
    void brokenTextAsAStreamReadsIt_data();
    void brokenTextAsAStreamReadsIt();
    void whatFollowsTheLastLineEnd_data();
    void whatFollowsTheLastLineEnd();
    void allEnds_data();
    void allEnds();
    void allEndsCharacterByCharacter();
};

void tst_TextLines::fewBytes_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QStringList>("lines");
    QTest::newRow("none") << QByteArray() << QStringList();
    QTest::newRow("a mark") << QByteArray("\xEF\xBB\xBF") << QStringList { "" };
    QTest::newRow("half a character") << QByteArray("\xC3") << QStringList { "" };
    QTest::newRow("a carriage return") << QByteArray("\r") << QStringList { "" };
    QTest::newRow("a line") << QByteArray("a") << QStringList { "a" };
    QTest::newRow("a line and its end") << QByteArray("a\n") << QStringList { "a" };
    QTest::newRow("a return behind it") << QByteArray("a\n\r") << QStringList { "a" };
    QTest::newRow("returns anywhere") << QByteArray("a\rb\r\r\nc\r") << QStringList { "ab", "c" };
    QTest::newRow("empty lines") << QByteArray("\n\r\n\n") << QStringList { "", "", "" };
}

void tst_TextLines::fewBytes()
{
    QFETCH(QByteArray, bytes);
    QTEST(linesOf(bytes, "UTF-8", Ends::LineFeeds), "lines");
    QTEST(streamLinesOf(bytes, "UTF-8"), "lines");
}

void tst_TextLines::aSequenceCutAtTheEdgeOfAPiece_data()
{
    QTest::addColumn<QByteArray>("sequence");
    QTest::newRow("whole") << QByteArray("\xF0\x9F\x98\x80");
    QTest::newRow("without its end") << QByteArray("\xF0\x9F\x98z");
    QTest::newRow("without its end, twice") << QByteArray("\xF0\x9F\xF0\x9F\x98z");
    QTest::newRow("three bytes, two of them") << QByteArray("\xE2\x82z");
    QTest::newRow("a surrogate") << QByteArray("\xED\xA0\x80z");
    QTest::newRow("longer than it may be") << QByteArray("\xC0\x80z");
    QTest::newRow("of five bytes") << QByteArray("\xF8\x88\x80\x80\x80z");
    QTest::newRow("a mark within the text") << QByteArray("\xEF\xBB\xBFz");
}

void tst_TextLines::aSequenceCutAtTheEdgeOfAPiece()
{
    QFETCH(QByteArray, sequence);
    for (int edge : { 16'384, 32'768, 65'536, 81'920 }) {
        for (int before = 0; before <= sequence.size() + 1; ++before) {
            const QByteArray bytes = QByteArray(edge - before, 'x') + sequence + "\nnext";
            QCOMPARE(linesOf(bytes, "UTF-8", Ends::LineFeeds), streamLinesOf(bytes, "UTF-8"));
        }
    }
}

void tst_TextLines::brokenTextAsAStreamReadsIt_data()
{
    QTest::addColumn<QByteArray>("codec");
    for (const char* codec :
        { "UTF-8", "UTF-16", "UTF-16LE", "UTF-16BE", "UTF-32", "ISO-8859-1", "windows-1252" })
        QTest::newRow(codec) << QByteArray(codec);
}

void tst_TextLines::brokenTextAsAStreamReadsIt()
{
    QFETCH(QByteArray, codec);
    for (quint32 seed = 0; seed < 150; ++seed) {
        Writer writer(seed);
        const int size = seed % 2 == 0 ? writer.below(60) : 16'370 + writer.below(60'000);
        const QByteArray bytes = writer.text(brokenPieces(), size);
        const QStringList found = linesOf(bytes, codec, Ends::LineFeeds);
        QVERIFY2(found == streamLinesOf(bytes, codec), qPrintable(QString::number(seed)));
    }
}

void tst_TextLines::whatFollowsTheLastLineEnd_data()
{
    QTest::addColumn<QByteArray>("rest");
    QTest::newRow("nothing") << QByteArray();
    QTest::newRow("a carriage return") << QByteArray("\r");
    QTest::newRow("carriage returns") << QByteArray("\r\r\r");
    QTest::newRow("half a character") << QByteArray("\xE2\x82");
    QTest::newRow("a line end") << QByteArray("\r\n");
    QTest::newRow("a line") << QByteArray("x");
}

// A piece that ends in a line end, and what stands behind it in the next piece or in the same.
void tst_TextLines::whatFollowsTheLastLineEnd()
{
    QFETCH(QByteArray, rest);
    for (int size = 16'384 - 4; size <= 16'384 + 1; ++size) {
        const QByteArray bytes = QByteArray(size - 1, 'x') + '\n' + rest;
        QCOMPARE(linesOf(bytes, "UTF-8", Ends::LineFeeds), streamLinesOf(bytes, "UTF-8"));
    }
}

void tst_TextLines::allEnds_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QStringList>("lines");
    QTest::newRow("carriage returns")
        << QByteArray("a\rb\r\rc\r") << QStringList { "a", "b", "", "c" };
    QTest::newRow("no end") << QByteArray("a\rb") << QStringList { "a", "b" };
    QTest::newRow("line feeds") << QByteArray("a\nb\n\nc\n") << QStringList { "a", "b", "", "c" };
    QTest::newRow("both") << QByteArray("a\r\nb\r\n\r\nc\r\n") << QStringList { "a", "b", "", "c" };
    QTest::newRow("one after the other")
        << QByteArray("a\rb\nc\r\nd\n\re") << QStringList { "a", "b", "c", "d", "", "e" };
    QTest::newRow("two returns and a feed")
        << QByteArray("a\r\r\nb") << QStringList { "a", "", "b" };
}

void tst_TextLines::allEnds()
{
    QFETCH(QByteArray, bytes);
    QTEST(withoutEmptyEnd(linesOf(bytes, "UTF-8", Ends::All)), "lines");
}

void tst_TextLines::allEndsCharacterByCharacter()
{
    const QList<QByteArray> pieces { "a", "bc", "\r", "\n", "\r\n", "\r\r", "\n\n" };
    for (quint32 seed = 0; seed < 2000; ++seed) {
        Writer writer(seed);
        const QByteArray bytes = writer.text(pieces, writer.below(seed % 50 == 0 ? 40'000 : 30));
        const QStringList expected = withoutEmptyEnd(linesByCharacter(QString::fromLatin1(bytes)));
        QVERIFY2(withoutEmptyEnd(linesOf(bytes, "UTF-8", Ends::All)) == expected,
            qPrintable(QString::number(seed)));
    }
}

QTEST_GUILESS_MAIN(tst_TextLines)

#include "tst_TextLines.moc"
