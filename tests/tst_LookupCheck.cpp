#include "lookups/LookupCheck.h"
#include "text/ShownText.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTextCodec>
#include <QtTest>

namespace {

constexpr int Chunk = 1'048'576; // bytes that are decoded at a time

LookupTask task(const QByteArray& bytes, int separator = 2)
{
    LookupTask result;
    result.file.path = "lookup.txt";
    result.file.bytes = bytes;
    result.file.encoding = "UTF-8";
    result.separator = separator;
    return result;
}

void deleteValues(TOxLookup& lookup)
{
    for (const auto& entry : lookup.values)
        delete entry.second;
    lookup.values.clear();
}

} // namespace

class tst_LookupCheck : public QObject {
    Q_OBJECT

private slots:
    void counts();
    void longKeys();
    void noKeys();
    void wideCharactersOverChunks();
    void encodings_data();
    void encodings();
    void refused_data();
    void refused();
    void samples();

private:
    QString write(const QByteArray& bytes)
    {
        QFile file(m_folder.filePath("lookup.txt"));
        if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
            qFatal("No lookup could be written");
        return file.fileName();
    }

    QTemporaryDir m_folder;
};

void tst_LookupCheck::counts()
{
    TOxLookup lookup;
    LookupOutcome outcome;
    QVERIFY(checkLookup(task("01,a\n02,b\n01,c\nbad\n3,d\n"), lookup, outcome));
    QCOMPARE(outcome.lines, 5);
    QCOMPARE(outcome.keys, 3);
    QCOMPARE(outcome.duplicateKeys, 2); // the line without a separator keeps the key before it
    QCOMPARE(outcome.repeatedBySeparator, 1);
    QCOMPARE(outcome.withoutSeparator, 1);
    QCOMPARE(outcome.wrongKeyLengths, 1);
    QVERIFY(!outcome.isConsistent());
    QVERIFY(!outcome.frequencies);
    QVERIFY(!outcome.comparison);
    deleteValues(lookup);
}

// The record keeps all of a key, its text only as much as a message shows.
void tst_LookupCheck::longKeys()
{
    const QString key(5000, 'k');
    TOxLookup lookup;
    LookupOutcome outcome;
    QVERIFY(checkLookup(task((key + ",a\n" + key + ",b\nk,c\n").toUtf8()), lookup, outcome));
    QCOMPARE(outcome.problems.size(), 2);
    QCOMPARE(outcome.problems.at(0).key, key);
    QCOMPARE(outcome.problems.at(0).text, QString("Key [%1] already exists").arg(shortened(key)));
    QCOMPARE(outcome.problems.at(1).text,
        QString("Key [k] has a different key size [1] from the first record [5000]"));
    deleteValues(lookup);
}

void tst_LookupCheck::noKeys()
{
    TOxLookup lookup;
    LookupOutcome outcome;
    QVERIFY(!checkLookup(task("one\ntwo\n"), lookup, outcome));
    QVERIFY(outcome.path.isNull());
    deleteValues(lookup);
}

// A character of two units that lies over the end of a chunk stays whole.
void tst_LookupCheck::wideCharactersOverChunks()
{
    const QString house = QString::fromUtf8("\xF0\x9F\x8F\xA0");
    const QString text = "1," + QString(Chunk / 2 - 3, 'x') + house + "\n2,b\n";
    LookupTask wide = task(
        QByteArray(reinterpret_cast<const char*>(text.utf16()), text.size() * int(sizeof(QChar))));
    wide.file.encoding = "UTF-16LE";
    TOxLookup lookup;
    LookupOutcome outcome;
    QVERIFY(checkLookup(wide, lookup, outcome));
    QVERIFY(lookup.values.at("1")->value.endsWith('x' + house));
    QCOMPARE(outcome.encoding, QString("UTF-16LE"));
    QVERIFY(outcome.isConsistent());
    deleteValues(lookup);
}

void tst_LookupCheck::encodings_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QByteArray>("wanted");
    QTest::addColumn<QByteArray>("encoding");
    const QByteArray start = "1," + QByteArray(Chunk - 3, 'x');
    const QByteArray none;
    QTest::newRow("a character over the end of a chunk") << start + "\xC3\xA9\n2,b\n"
                                                         << none << QByteArray("UTF-8");
    QTest::newRow("half a character there") << start + "\xC3x\n2,b\n"
                                            << none << QByteArray("windows-1252");
    QTest::newRow("half a character at the end")
        << QByteArray("1,a\n2,\xC3") << none << QByteArray("windows-1252");
    QTest::newRow("another one wanted")
        << QByteArray("1,\xC3\xA9\n") << QByteArray("ISO-8859-2") << QByteArray("ISO-8859-2");
    QTest::newRow("a mark goes first") << QByteArray("\xEF\xBB\xBF"
                                                     "1,\xC3\xA9\n")
                                       << QByteArray("ISO-8859-2") << QByteArray("UTF-8");
}

void tst_LookupCheck::encodings()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QByteArray, wanted);
    LookupFile file;
    QVERIFY(examineLookup(write(bytes), wanted, file));
    QTEST(file.encoding, "encoding");
    QCOMPARE(file.bytes, bytes);
}

void tst_LookupCheck::refused_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QByteArray>("wanted");
    const QByteArray start = "1," + QByteArray(Chunk, 'x');
    const QByteArray none;
    QTest::newRow("a zero behind the first chunk") << start + '\0' + "\n" << none;
    QTest::newRow("not what is wanted") << QByteArray("1,\xE9\n") << QByteArray("UTF-8");
    QTest::newRow("not what its mark says") << QByteArray("\xEF\xBB\xBF"
                                                          "1,\xE9\n")
                                            << none;
    QTest::newRow("nothing") << QByteArray() << none;
}

void tst_LookupCheck::refused()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QByteArray, wanted);
    LookupFile file;
    QVERIFY(!examineLookup(write(bytes), wanted, file));
    QVERIFY(file.encoding.isNull());
}

void tst_LookupCheck::samples()
{
    LookupFile file;
    QVERIFY(examineLookup(write("\n1;a\n \n2;b"), {}, file));
    QCOMPARE(file.sampleLines, (QStringList { "1;a", "2;b" }));
}

QTEST_APPLESS_MAIN(tst_LookupCheck)

#include "tst_LookupCheck.moc"
