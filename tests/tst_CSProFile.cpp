#include "AddRow.h"
#include "CSProProblemTexts.h"
#include "CSProTexts.h"
#include "DescribedDictionary.h"
#include "GeneratedDictionary.h"
#include "PlainCSProReader.h"

#include <model_Tessel/CSPro.h>
#include <model_Tessel/CSProValueSet.h>
#include <model_Tessel/ErrorManager.h>

#include <QDir>
#include <QFile>
#include <QLoggingCategory>
#include <QMessageBox>
#include <QTemporaryDir>
#include <QTextCodec>
#include <QTextStream>
#include <QtTest>

#include <functional>

namespace {

// All that a parser says of a dictionary, errors included.
QStringList contentsOf(TCSPro& parser, bool asWritten, const std::function<void()>& load)
{
    if (asWritten)
        parser.setReading(CSProReading::AsWritten);
    parser.setDecimalQuestion([](const CSProProblem&) { return int(QMessageBox::NoToAll); });
    QStringList result;
    try {
        load();
    } catch (OxErrorManager* error) {
        result.append(QString::number(error->code));
        delete error;
    }
    result << parser.name << parser.label << QString::fromLatin1(parser.textEncoding());
    for (const TCSProItem* item : *parser.items)
        result << item->name << item->label << QString::number(item->valueSets->size());
    for (const CSProProblem& problem : parser.problems())
        result << QString::number(problem.line) << problem.text;
    return result;
}

} // namespace

class tst_CSProFile : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();

    void loadFromFile_data();
    void loadFromFile();
    void loadFromData_data();
    void loadFromData();
    void loadFromFileUsesTheLocaleCodec();
    void loadFromFileReadsTheLinesOfATextStream_data();
    void loadFromFileReadsTheLinesOfATextStream();
    void brokenTextAsATextStreamReadsIt();
    void partsOfAFileJoinWithoutATrace_data();
    void partsOfAFileJoinWithoutATrace();
    void aMissingFileIsAnEmptyDictionary_data();
    void aMissingFileIsAnEmptyDictionary();
    void loadFromCSDBLoadsNothing();
};

void tst_CSProFile::initTestCase()
{
    QLoggingCategory::setFilterRules(QStringLiteral("default.debug=false"));
}

void tst_CSProFile::loadFromFile_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QByteArray>("codec");
    QTest::addColumn<QString>("name"); // of the one item

    const QString text = QStringLiteral("[Item]\nName=A\u00e9\u20ac\nLen=2\n");
    const auto encoded = [](const char* codecName, const QString& content) {
        QTextCodec::ConverterState withoutMark(QTextCodec::IgnoreHeader);
        return QTextCodec::codecForName(codecName)->fromUnicode(
            content.constData(), content.size(), &withoutMark);
    };
    const QString name = QStringLiteral("A\u00e9\u20ac");
    const QString windowsText = QString(text).replace(QLatin1Char('\n'), QLatin1String("\r\n"));
    const QByteArray mark("\xEF\xBB\xBF");

    row("line feeds", QByteArray("[Item]\nName=A\nLen=2\n"), QByteArray(), "A");
    row("carriage returns and line feeds", QByteArray("[Item]\r\nName=A\r\nLen=2\r\n"),
        QByteArray(), "A");
    row("no end of the last line", QByteArray("[Item]\nLen=2\nName=A"), QByteArray(), "A");
    row("carriage return at the very end", QByteArray("[Item]\nLen=2\nName=A\r"), QByteArray(),
        "A");
    row("blank lines at the end", QByteArray("[Item]\nLen=2\nName=A\n\n\n"), QByteArray(), "A");
    row("byte-order mark before the first header", QByteArray(mark + text.toUtf8()), QByteArray(),
        name);
    row("byte-order mark and carriage returns", QByteArray(mark + windowsText.toUtf8()),
        QByteArray(), name);
    row("UTF-8 by its name", text.toUtf8(), QByteArray("UTF-8"), name);
    row("UTF-8 by its name, carriage returns", windowsText.toUtf8(), QByteArray("UTF-8"), name);
    row("UTF-8 by its name, with its mark", QByteArray(mark + text.toUtf8()), QByteArray("UTF-8"),
        name);
    row("the mark wins over the name", QByteArray(mark + text.toUtf8()), QByteArray("ISO-8859-1"),
        name);
    row("Latin 1 by its name", QByteArray("[Item]\r\nLen=2\r\nName=A\xE9\r\n"),
        QByteArray("ISO-8859-1"), QStringLiteral("A\u00e9"));
    row("Windows code page by its name", QByteArray("[Item]\nLen=2\nName=A\xE9\x80\n"),
        QByteArray("windows-1252"), name);
    row("UTF-16 by its name, with its mark",
        encoded("UTF-16LE", QChar(QChar::ByteOrderMark) + windowsText), QByteArray("UTF-16"), name);
    row("UTF-16 by its name, big end first, with its mark",
        encoded("UTF-16BE", QChar(QChar::ByteOrderMark) + windowsText), QByteArray("UTF-16"), name);
    row("UTF-16 without a mark, little end first", encoded("UTF-16LE", windowsText),
        QByteArray("UTF-16LE"), name);
    row("UTF-16 without a mark, big end first", encoded("UTF-16BE", windowsText),
        QByteArray("UTF-16BE"), name);
    row("UTF-16 with a byte that looks like a carriage return",
        encoded("UTF-16LE", QStringLiteral("[Item]\r\nLen=2\r\nName=\u010d\u0d0a\r\n")),
        QByteArray("UTF-16LE"), QStringLiteral("\u010d\u0d0a"));
    row("UTF-16 by its mark alone", encoded("UTF-16LE", QChar(QChar::ByteOrderMark) + text),
        QByteArray(), name);
    row("UTF-16 by its mark alone, carriage returns",
        encoded("UTF-16LE", QChar(QChar::ByteOrderMark) + windowsText), QByteArray(), name);
    row("UTF-16 by its mark alone, big end first, bytes that look like carriage returns",
        encoded("UTF-16BE",
            QChar(QChar::ByteOrderMark)
                + QStringLiteral("[Item]\r\nLen=2\r\nName=\u010d\u0d0a\r\n")),
        QByteArray(), QStringLiteral("\u010d\u0d0a"));
    row("UTF-32 by its name", encoded("UTF-32BE", windowsText), QByteArray("UTF-32BE"), name);
    row("a codec that does not exist", QByteArray("[Item]\r\nName=A\r\nLen=2"),
        QByteArray("no-such-codec"), "A");
}

void tst_CSProFile::loadFromFile()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QByteArray, codec);
    QFETCH(QString, name);
    QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("census.dcf"));
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(bytes), bytes.size());
    file.close();

    TCSPro parser;
    parser.setTextCodec(codec);
    parser.loadFromFile(path);
    QCOMPARE(parser.getItemsCount(), 1);
    QCOMPARE(parser.getItem(0)->name, name);
    QCOMPARE(parser.getItem(0)->len, 2);
    QCOMPARE(parser.getItem(0)->sourceLine, 1);
}

void tst_CSProFile::loadFromData_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("asWritten");
    const QStringList names = QDir(TESSEL_TEST_DATA).entryList({ "*.dcf" }, QDir::Files);
    QVERIFY(names.contains("basic_utf16.dcf"));
    for (const QString& name : names) {
        QTest::addRow("%s, established", qPrintable(name)) << name << false;
        QTest::addRow("%s, as written", qPrintable(name)) << name << true;
    }
}

void tst_CSProFile::loadFromData()
{
    QFETCH(QString, name);
    QFETCH(bool, asWritten);
    const QString path = QStringLiteral(TESSEL_TEST_DATA "/") + name;
    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QByteArray bytes = file.readAll();
    TCSPro ofFile;
    TCSPro ofBytes;
    const QStringList expected = contentsOf(ofFile, asWritten, [&] { ofFile.loadFromFile(path); });
    QCOMPARE(contentsOf(ofBytes, asWritten, [&] { ofBytes.loadFromData(bytes); }), expected);
}

void tst_CSProFile::loadFromFileUsesTheLocaleCodec()
{
    QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("census.dcf"));
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("[Item]\nName=\xC1\n");
    file.close();

    QTextCodec* before = QTextCodec::codecForLocale();
    QStringList names;
    for (const char* codec : { "ISO-8859-1", "windows-1251" }) {
        QTextCodec::setCodecForLocale(QTextCodec::codecForName(codec));
        TCSPro parser;
        parser.loadFromFile(path);
        names.append(parser.getItem(0)->name);
    }
    QTextCodec::setCodecForLocale(before);
    QCOMPARE(names, (QStringList { QStringLiteral("\u00c1"), QStringLiteral("\u0411") }));
}

void tst_CSProFile::loadFromFileReadsTheLinesOfATextStream_data()
{
    QTest::addColumn<QByteArray>("codec");
    QTest::addColumn<QByteArray>("writtenAs");
    QTest::addColumn<bool>("withMark");

    row("no codec, plain text", QByteArray(), QByteArray("ISO-8859-1"), false);
    row("no codec, UTF-8 mark", QByteArray(), QByteArray("UTF-8"), true);
    row("no codec, UTF-16 mark", QByteArray(), QByteArray("UTF-16LE"), true);
    row("UTF-8", QByteArray("UTF-8"), QByteArray("UTF-8"), false);
    row("UTF-8, UTF-16 mark", QByteArray("UTF-8"), QByteArray("UTF-16BE"), true);
    row("UTF-16", QByteArray("UTF-16"), QByteArray("UTF-16LE"), true);
    row("UTF-16, big end first", QByteArray("UTF-16BE"), QByteArray("UTF-16BE"), false);
    row("Latin 1", QByteArray("ISO-8859-1"), QByteArray("ISO-8859-1"), false);
}

/*
 * Long files, whose characters and line ends fall across the borders of whatever is read at once,
 * and every kind of line end.
 */
void tst_CSProFile::loadFromFileReadsTheLinesOfATextStream()
{
    QFETCH(QByteArray, codec);
    QFETCH(QByteArray, writtenAs);
    QFETCH(bool, withMark);
    QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("census.dcf"));
    QStringList pieces { "[Item]\n", "Name=A", "\u00e9", "\u010d", "\u20ac", "\r\n", "\n", "\n\n",
        "Len=", "1", "Label=", "\u2028", "\U0001F600", "Decimal=2\r\n", "[Record]\r\n",
        "RecordTypeValue='1'\n", "\t", " ", "\x0c", "\u0d0a", "\u0a0d" };
    if (codec.isEmpty())
        pieces.append(QStringLiteral("\r"));
    for (quint32 seed = 0; seed < 60; ++seed) {
        DictionaryWriter writer(seed);
        QString text = withMark ? QString(QChar(QChar::ByteOrderMark)) : QString();
        const int length = seed % 3 == 0 ? 70'000 : writer.below(200);
        while (text.size() < length)
            text += writer.oneOf(pieces);
        QTextCodec::ConverterState state(QTextCodec::IgnoreHeader);
        const QByteArray bytes =
            QTextCodec::codecForName(writtenAs)->fromUnicode(text.constData(), text.size(), &state);
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        file.write(bytes);
        file.close();

        QStringList lines;
        QVERIFY(file.open(codec.isEmpty() ? QIODevice::ReadOnly | QIODevice::Text
                                          : QIODevice::OpenMode(QIODevice::ReadOnly)));
        QTextStream stream(&file);
        if (!codec.isEmpty())
            stream.setCodec(codec.constData());
        while (!stream.atEnd())
            lines.append(stream.readLine());
        TCSPro expected;
        expected.loadFromStr(&lines);

        TCSPro parser;
        parser.setTextCodec(codec);
        parser.loadFromFile(path);
        const QStringList found = described(parser);
        const QStringList wanted = described(expected);
        for (int i = 0; i < wanted.size(); ++i) {
            QVERIFY2(found.value(i) == wanted.at(i),
                qPrintable(
                    QStringLiteral("seed %1\n%2\n%3").arg(seed).arg(found.value(i), wanted.at(i))));
        }
        QCOMPARE(found.size(), wanted.size());
        QCOMPARE(problemTexts(parser), problemTexts(expected));
    }
}

// How many characters stand for a broken one depends on the pieces in which a text is decoded.
void tst_CSProFile::brokenTextAsATextStreamReadsIt()
{
    QTemporaryDir folder;
    QFile file(folder.filePath(QStringLiteral("census.dcf")));
    const QByteArray head("[Item]\nLen=2\nName=");
    for (const QByteArray broken :
        { "\xE2\x82z", "\xF0\x9F\x98z", "\xF0\x9F\xF0\x9Fz", "\xED\xA0\x80z" }) {
        for (int before = 0; before <= broken.size(); ++before) {
            const QByteArray filling(16'384 - head.size() - before - 1, 'x');
            QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
            file.write(filling + '\n' + head + broken);
            file.close();
            QVERIFY(file.open(QIODevice::ReadOnly | QIODevice::Text));
            QTextStream stream(&file);
            stream.setCodec("UTF-8");
            QStringList lines;
            while (!stream.atEnd())
                lines.append(stream.readLine());
            file.close();
            TCSPro parser;
            parser.setTextCodec("UTF-8");
            parser.loadFromFile(file.fileName());
            QCOMPARE(parser.getItemsCount(), 1);
            QCOMPARE("Name=" + parser.getItem(0)->name, lines.last());
        }
    }
}

void tst_CSProFile::partsOfAFileJoinWithoutATrace_data()
{
    QTest::addColumn<QByteArray>("codec");
    QTest::addColumn<QString>("name");
    row("two, three and four bytes", QByteArray("UTF-8"), QStringLiteral("\u00e9\u20ac\U0001F600"));
    row("surrogates", QByteArray("UTF-16LE"), QStringLiteral("\u20ac\U0001F600\U0001F600"));
    row("surrogates, big end first", QByteArray("UTF-16BE"), QStringLiteral("\U0001F600\u0d0a"));
    row("bytes that look like a mark", QByteArray("ISO-8859-1"), QStringLiteral("\u00ff\u00fea"));
    row("bytes that look like another mark", QByteArray("ISO-8859-1"),
        QStringLiteral("\u00ef\u00bb\u00bfa"));
}

// A character, a line end or a mark across the border of two parts that are read one by one.
void tst_CSProFile::partsOfAFileJoinWithoutATrace()
{
    QFETCH(QByteArray, codec);
    QFETCH(QString, name);
    QTemporaryDir folder;
    QFile file(folder.filePath(QStringLiteral("census.dcf")));
    QTextCodec* textCodec = QTextCodec::codecForName(codec);
    const auto encoded = [&](const QString& text) {
        QTextCodec::ConverterState withoutMark(QTextCodec::IgnoreHeader);
        return textCodec->fromUnicode(text.constData(), text.size(), &withoutMark);
    };
    const QByteArray head = encoded(QStringLiteral("\n[Item]\r\nName="));
    const QByteArray rest = encoded(name + QStringLiteral("\r\nLen=2\r\n"));
    const int unit = encoded(QStringLiteral("x")).size();
    for (int border : { 4096, 16'384, 65'536 }) {
        for (int shift = 0; shift <= rest.size(); shift += unit) {
            const int before = border - shift - head.size();
            const QByteArray bytes = encoded(QString(before / unit, 'x')) + head + rest;
            QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
            file.write(bytes);
            file.close();
            TCSPro parser;
            parser.setTextCodec(codec);
            parser.loadFromFile(file.fileName());
            QCOMPARE(parser.getItemsCount(), 1);
            QCOMPARE(parser.getItem(0)->name, name);
            QCOMPARE(parser.getItem(0)->len, 2);
            QCOMPARE(parser.getItem(0)->sourceLine, 2);
        }
    }
}

void tst_CSProFile::aMissingFileIsAnEmptyDictionary_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("codec");

    row("no such file", QByteArray(), "missing.dcf", QByteArray());
    row("no such file, with a codec", QByteArray(), "missing.dcf", QByteArray("UTF-16"));
    row("no name", QByteArray(), "", QByteArray());
    row("a folder", QByteArray(), ".", QByteArray());
    row("empty file", QByteArray(), "census.dcf", QByteArray());
    row("empty file, with a codec", QByteArray(), "census.dcf", QByteArray("UTF-8"));
    row("only a byte-order mark", QByteArray("\xEF\xBB\xBF"), "census.dcf", QByteArray());
    row("only a byte-order mark, with a codec", QByteArray("\xFF\xFE"), "census.dcf",
        QByteArray("UTF-16"));
    row("only a line end", QByteArray("\r\n"), "census.dcf", QByteArray());
    row("null bytes", QByteArray(100, '\0'), "census.dcf", QByteArray());
    row("no dictionary", QByteArray("\x89PNG\r\n\x1a\n"), "census.dcf", QByteArray());
}

void tst_CSProFile::aMissingFileIsAnEmptyDictionary()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QString, name);
    QFETCH(QByteArray, codec);
    QTemporaryDir folder;
    QFile file(folder.filePath(QStringLiteral("census.dcf")));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(bytes);
    file.close();

    TCSPro parser;
    parser.setTextCodec(codec);
    parser.loadFromFile(name.isEmpty() ? QString() : folder.filePath(name));
    QCOMPARE(parser.getRecordsCount(), 0);
    QCOMPARE(parser.getItemsCount(), 0);
    QVERIFY(!parser.lastItem);
    QCOMPARE(parser.recordTypeStart, 1);
    QCOMPARE(parser.recordTypeLen, 1);
    QCOMPARE(parser.currentRecord, parser.commonRecord);
    QVERIFY(parser.problems().isEmpty());
}

void tst_CSProFile::loadFromCSDBLoadsNothing()
{
    QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("census.csdb"));
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("[Dictionary]\nName=E\n[IdItems]\n[Record]\n[Item]\nName=B\n");
    file.close();

    TCSPro parser;
    parse(parser, "[Dictionary]\nName=D\n[Record]\nName=R\n[Item]\nName=A");
    const QStringList before = described(parser);
    parser.loadFromCSDB(path);
    QCOMPARE(described(parser), before);
    parser.loadFromCSDB(QString());
    parser.loadFromCSDB(folder.filePath(QStringLiteral("missing")));
    QCOMPARE(described(parser), before);
    QCOMPARE(parser.currentRecord, parser.getRecord(0));
}

QTEST_MAIN(tst_CSProFile)

#include "tst_CSProFile.moc"
