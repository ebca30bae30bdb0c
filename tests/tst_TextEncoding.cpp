#include <model_Tessel/TextEncoding.h>

#include <QTextCodec>
#include <QtTest>

namespace {

// "Café" in each encoding.
const QByteArray utf8 = "Caf\xC3\xA9";
const QByteArray windows1252 = "Caf\xE9";
const QString text = QString::fromUtf8(utf8);

const QTextCodec& codec(const QByteArray& name)
{
    return *QTextCodec::codecForName(name);
}

QByteArray nameOf(const QTextCodec* codec)
{
    return codec ? codec->name() : QByteArray("none");
}

} // namespace

class tst_TextEncoding : public QObject {
    Q_OBJECT

private slots:
    void codecOfBefore();
    void validTexts_data();
    void validTexts();
    void likelyCodecs_data();
    void likelyCodecs();
    void firstInvalidLines_data();
    void firstInvalidLines();
    void decodes_data();
    void decodes();
    void firstCodecs();
    void binaryCharacters();
};

void tst_TextEncoding::codecOfBefore()
{
    QCOMPARE(nameOf(codecBeforeUtf8()), QByteArray("windows-1252"));
}

void tst_TextEncoding::validTexts_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<bool>("isValid");

    QTest::newRow("empty") << QByteArray("UTF-8") << QByteArray() << true;
    QTest::newRow("UTF-8") << QByteArray("UTF-8") << utf8 << true;
    QTest::newRow("a byte that is no UTF-8") << QByteArray("UTF-8") << windows1252 << false;
    QTest::newRow("cut in a character") << QByteArray("UTF-8") << utf8.left(4) << false;
    QTest::newRow("any bytes of before") << QByteArray("windows-1252") << windows1252 << true;
    QTest::newRow("half a unit") << QByteArray("UTF-16LE") << QByteArray("a\0b", 3) << false;
}

void tst_TextEncoding::validTexts()
{
    QFETCH(const QByteArray, name);
    QFETCH(const QByteArray, bytes);
    QTEST(isValidText(codec(name), bytes), "isValid");
}

void tst_TextEncoding::likelyCodecs_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QByteArray>("name");

    QTest::newRow("empty") << QByteArray() << QByteArray("UTF-8");
    QTest::newRow("ASCII") << QByteArray("Cafe") << QByteArray("UTF-8");
    QTest::newRow("UTF-8") << utf8 << QByteArray("UTF-8");
    QTest::newRow("of before") << windows1252 << QByteArray("windows-1252");
    QTest::newRow("one wrong byte") << utf8 + utf8 + windows1252 << QByteArray("windows-1252");
    QTest::newRow("a mark does not count")
        << "\xFF\xFE" + QByteArray("a\0", 2) << QByteArray("windows-1252");
}

void tst_TextEncoding::likelyCodecs()
{
    QFETCH(const QByteArray, bytes);
    QTEST(nameOf(likelyCodec(bytes)), "name");
}

void tst_TextEncoding::firstInvalidLines_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<int>("line");

    QTest::newRow("empty") << QByteArray() << 1;
    QTest::newRow("first") << windows1252 + "\nb\n" << 1;
    QTest::newRow("in the middle") << "a\n" + windows1252 + "\nb" << 2;
    QTest::newRow("last, without an end") << "a\nb\n" + windows1252 << 3;
    QTest::newRow("the first of two") << "a\n" + windows1252 + "\n" + windows1252 << 2;
    QTest::newRow("none, with an end") << "a\n" + utf8 + "\n" << 3;
    QTest::newRow("none, without an end") << "a\n" + utf8 << 3;
    QTest::newRow("cut at the line's end") << "a\n" + utf8.left(4) + "\n" << 2;
}

void tst_TextEncoding::firstInvalidLines()
{
    QFETCH(const QByteArray, bytes);
    QTEST(firstInvalidLine(codec("UTF-8"), bytes), "line");
}

void tst_TextEncoding::decodes_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QByteArray>("wanted");
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<QString>("decoded");
    QTest::addColumn<bool>("isValid");
    QTest::addColumn<bool>("isAssumed");

    const QByteArray none;
    const QByteArray mark = "\xEF\xBB\xBF";
    const QByteArray utf16 = "\xFF\xFE" + QByteArray("C\0a\0f\0\xE9\0", 8);
    QTest::newRow("UTF-8") << utf8 << none << QByteArray("UTF-8") << text << true << false;
    QTest::newRow("marked UTF-8") << mark + utf8 << none << QByteArray("UTF-8") << text << true
                                  << false;
    QTest::newRow("assumed") << windows1252 << none << QByteArray("windows-1252") << text << true
                             << true;
    QTest::newRow("marked, so nothing is assumed but that it is no text of before")
        << mark + windows1252 << none << QByteArray("windows-1252")
        << QString::fromUtf8("\xC3\xAF\xC2\xBB\xC2\xBF") + text << true << true;
    QTest::newRow("wanted") << windows1252 << QByteArray("windows-1252")
                            << QByteArray("windows-1252") << text << true << false;
    QTest::newRow("not what is wanted")
        << windows1252 << QByteArray("UTF-8") << QByteArray("UTF-8") << QString() << false << false;
    QTest::newRow("the mark goes first") << mark + utf8 << QByteArray("windows-1252")
                                         << QByteArray("UTF-8") << text << true << false;
    QTest::newRow("UTF-16") << utf16 << none << QByteArray("UTF-16LE") << text << true << false;
    QTest::newRow("cut UTF-16") << utf16.chopped(1) << none << QByteArray("UTF-16LE") << QString()
                                << false << false;
    QTest::newRow("an unknown name")
        << utf8 << QByteArray("no codec") << QByteArray("none") << QString() << false << false;
    QTest::newRow("a mark needs no name")
        << mark + utf8 << QByteArray("no codec") << QByteArray("UTF-8") << text << true << false;
}

void tst_TextEncoding::decodes()
{
    QFETCH(const QByteArray, bytes);
    QFETCH(const QByteArray, wanted);
    const DecodedText result = decodeText(bytes, wanted);
    QTEST(nameOf(result.codec), "name");
    QTEST(result.text, "decoded");
    QTEST(result.isValid, "isValid");
    QTEST(result.isAssumed, "isAssumed");
}

void tst_TextEncoding::firstCodecs()
{
    const QByteArray mark = "\xEF\xBB\xBF";
    QCOMPARE(nameOf(firstCodec("abc")), QByteArray("UTF-8"));
    QCOMPARE(nameOf(firstCodec("\xE9")), QByteArray("UTF-8")); // before it is tried
    QCOMPARE(nameOf(firstCodec("abc", "ISO-8859-1")), QByteArray("ISO-8859-1"));
    QCOMPARE(nameOf(firstCodec(mark + "abc", "ISO-8859-1")), QByteArray("UTF-8"));
    QVERIFY(!firstCodec("abc", "no codec"));
    QVERIFY(assumedEncodingText().contains("read as windows-1252;"));
}

void tst_TextEncoding::binaryCharacters()
{
    QByteArray binary;
    for (int code = 0; code < 256; ++code) {
        if (isBinaryCharacter(QChar(code)))
            binary += char(code);
    }
    QCOMPARE(binary,
        QByteArray(
            "\0\1\2\3\4\5\6\7\x0E\x0F\x10\x11\x12\x13\x14\x15\x16\x17\x18\x19\x1C\x1D\x1E\x1F",
            24));
    QVERIFY(!isBinaryCharacter(QChar(0x2028)));
}

QTEST_APPLESS_MAIN(tst_TextEncoding)

#include "tst_TextEncoding.moc"
