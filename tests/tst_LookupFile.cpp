// How lookup files are decoded, and what is told of those that are no text, wherever in a long file
// it shows.
#include "RunTessel.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QTextCodec>
#include <QtTest>

namespace {

// Beyond what is looked at in one piece; its lines are of one length.
QByteArray lines(int count)
{
    QByteArray text;
    for (int i = 0; i < count; ++i)
        text += QByteArray::number(100'000 + i) + ";name\n";
    return text;
}

constexpr int Many = 150'000;

QByteArray encoded(const char* codec, const QByteArray& text)
{
    return QTextCodec::codecForName(codec)->fromUnicode(QString::fromUtf8(text));
}

} // namespace

class tst_LookupFile : public QObject {
    Q_OBJECT

private slots:
    void encoding_data();
    void encoding();
    void refused_data();
    void refused();
    void firstLineIsLong();
    void blankLinesStandFirst();

private:
    QString fileOf(const QByteArray& bytes) const
    {
        const QString path = m_folder.filePath("lookup.txt");
        return writeFile(path, bytes) ? path : QString();
    }

    QTemporaryDir m_folder;
};

void tst_LookupFile::encoding_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QStringList>("options");
    QTest::addColumn<QString>("encoding");
    QTest::addColumn<int>("keys");
    QTest::addColumn<int>("assumedFrom"); // line from which on it is told to be no UTF-8; 0: it is
    const QByteArray many = lines(Many);
    const auto row = [](const char* name, const QByteArray& bytes, const QStringList& options,
                         const char* encoding, int keys, int assumedFrom) {
        QTest::newRow(name) << bytes << options << encoding << keys << assumedFrom;
    };
    row("UTF-8", "1;\xC3\xA9\n2;b\n", {}, "UTF-8", 2, 0);
    row("not UTF-8 in the first line", "1;\xE9\n2;b\n", {}, "windows-1252", 2, 1);
    row("not UTF-8 in the second", "1;a\n2;\xE9\n", {}, "windows-1252", 2, 2);
    row("not UTF-8 in a later piece", many + "300000;\xE9 b\n300001;\xE9\n", {}, "windows-1252",
        Many + 2, Many + 1);
    row("half a character at the end", many + "300000;\xC3", {}, "windows-1252", Many + 1,
        Many + 1);
    row("a replacement character that is meant", "1;\xEF\xBF\xBD\n2;b\n", {}, "UTF-8", 2, 0);
    row("named", "1;\xE9\n", { "--encoding", "ISO-8859-1" }, "ISO-8859-1", 1, 0);
    row("UTF-16 by its mark", encoded("UTF-16", "1;a\n2;b\n"), {}, "UTF-16LE", 2, 0);
    row("UTF-16 by its mark, many lines", encoded("UTF-16", many), {}, "UTF-16LE", Many, 0);
    row("UTF-16LE by name", encoded("UTF-16LE", "1;a\n2;b\n").mid(2), { "--encoding", "UTF-16LE" },
        "UTF-16LE", 2, 0);
    row("UTF-32", encoded("UTF-32", "1;a\n2;b\n"), {}, "UTF-32LE", 2, 0);
    row("escape and end-of-file mark of old", "1;a\x1B\n2;b\n\x1A", {}, "UTF-8", 2, 0);
}

void tst_LookupFile::encoding()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QStringList, options);
    QFETCH(int, assumedFrom);
    const QString path = fileOf(bytes);
    const Outcome outcome = runTessel(
        QStringList { "lookup", "--separator", "semicolon", "--format", "json", path } + options);
    const QJsonObject json = QJsonDocument::fromJson(outcome.output).object();
    QTEST(json.value("encoding").toString(), "encoding");
    QTEST(json.value("keys").toInt(), "keys");
    const QByteArray warning = assumedFrom == 0
        ? QByteArray()
        : path.toUtf8() + ':' + QByteArray::number(assumedFrom)
            + ": warning: the text is not valid UTF-8 and was read as windows-1252; if letters "
              "look "
              "wrong, name its encoding with --encoding\n";
    QCOMPARE(outcome.errors, warning);
}

void tst_LookupFile::refused_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QStringList>("options");
    QTest::addColumn<QByteArray>("message"); // behind the file's name
    const QByteArray many = lines(Many);
    const QByteArray line = QByteArray::number(Many + 2);
    const QByteArray noText =
        ": error: is no text; if it is, name its encoding with --encoding, for "
        "example UTF-16\n";
    const auto row = [](const char* name, const QByteArray& bytes, const QStringList& options,
                         const QByteArray& message) {
        QTest::newRow(name) << bytes << options << message;
    };
    row("empty", "", {}, ": error: is empty\n");
    row("zero", QByteArray("1;a\0\n", 5), {}, ":1" + noText);
    row("zero in a later piece", many + QByteArray("1;a\n2;\0\n", 8), {}, ":" + line + noText);
    for (const int code : { 0x01, 0x07, 0x0E, 0x19, 0x1C, 0x1F })
        row(qPrintable("control " + QString::number(code)), QByteArray("1;a\n2;") + char(code), {},
            ":2" + noText);
    row("not in the encoding named", "1;a\n2;\xE9\n", { "--encoding", "UTF-8" },
        ":2: error: the text is not valid UTF-8; name another encoding with --encoding\n");
    row("not in the encoding of its mark",
        "\xEF\xBB\xBF"
        "1;a\n2;\xE9\n",
        {}, ":2: error: the text is not valid UTF-8, as its byte-order mark says it is\n");
    row("mark and half a character",
        "\xEF\xBB\xBF"
        "1;a\n2;\xC3",
        {}, ":2: error: the text is not valid UTF-8, as its byte-order mark says it is\n");
    row("UTF-16 with half a character", encoded("UTF-16", "1;a\n2;b\n") + 'x', {},
        ":3: error: the text is not valid UTF-16LE, as its byte-order mark says it is\n");
}

void tst_LookupFile::refused()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QStringList, options);
    QFETCH(QByteArray, message);
    const QString path = fileOf(bytes);
    const Outcome outcome = runTessel(QStringList { "lookup", path } + options);
    QCOMPARE(outcome.status, 1);
    QCOMPARE(outcome.output, QByteArray());
    QCOMPARE(outcome.errors, path.toUtf8() + message);
}

// Its separator is found though its end is not.
void tst_LookupFile::firstLineIsLong()
{
    const Outcome outcome = runTessel({ "lookup", fileOf("1;" + QByteArray(100'000, 'x') + "\n") });
    QCOMPARE(outcome.status, 0);
    QVERIFY2(outcome.errors.contains("taken to be semicolon"), outcome.errors.constData());
}

void tst_LookupFile::blankLinesStandFirst()
{
    const Outcome outcome =
        runTessel({ "lookup", fileOf(QByteArray(500, '\n') + "  \r\n1\ta\r\n2\tb\r\n") });
    QVERIFY2(outcome.errors.contains("taken to be tab"), outcome.errors.constData());
}

QTEST_GUILESS_MAIN(tst_LookupFile)
#include "tst_LookupFile.moc"
