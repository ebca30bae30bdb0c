#include "LookupTest.h"

#include <model_Tessel/Lookup.h>

#include <QFile>
#include <QtTest>

#include <algorithm>
#include <functional>
#include <vector>

class tst_Lookup : public LookupTest {
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanup();

    void defaults();
    void fieldsStandInDeclarationOrder();
    void accessors();
    void updateFileName_data();
    void updateFileName();
    void openLookup();
    void openLookupOfNoFile_data();
    void openLookupOfNoFile();
    void readLookup_data();
    void readLookup();
    void readLookupCountsOnce();
    void readLookupCancelled();
    void readLookupOfNoFile_data();
    void readLookupOfNoFile();
    void readLookupThatCannotOpen();

    void split_data();
    void split();
    void splitReports_data();
    void splitReports();
    void splitReportsNothing_data();
    void splitReportsNothing();
    void issueErrorMessage_data();
    void issueErrorMessage();
    void issueErrorMessageGoesOn();
    void issueErrorMessageToNobody();
};

void tst_Lookup::initTestCase()
{
    QVERIFY(m_directory.isValid());
    QVERIFY(QDir(m_directory.path()).mkpath("folder"));
}

void tst_Lookup::cleanup()
{
    QFile::remove(path("file"));
    MsgText.clear();
}

void tst_Lookup::defaults()
{
    static_assert(std::has_virtual_destructor<TOxLookup>::value, "hosts derive from it");
    static_assert(sizeof(econsistencyCheck) == sizeof(int), "stored as int");
    static_assert(importOnly == 0 && countFrequencies == 1 && checkOnly == 2 && checkAndCount == 3,
        "the numbers are stored");
    const TOxLookup lookup;
    QCOMPARE(lookup.id, QString());
    QCOMPARE(lookup.label, QString());
    QCOMPARE(lookup.errorText, QString());
    QCOMPARE(lookup.status, -1);
    QCOMPARE(lookup.separator, 0);
    QCOMPARE(lookup.maxMessages, 0);
    QVERIFY(lookup.values.empty());
    QCOMPARE(lookup.cancelled, false);
    QCOMPARE(lookup.fileNameSet, false);
    QCOMPARE(lookup.key, QString());
    QCOMPARE(lookup.value, QString());
    QCOMPARE(lookup.consistency, importOnly);
    QCOMPARE(lookup.fileName, QString());
    QCOMPARE(lookup.lineNumber, 0);
    QCOMPARE(lookup.errorCount, 0);
    QCOMPARE(lookup.limitNoticeIssued, false);
    QCOMPARE(lookup.line, QString());
    QCOMPARE(lookup.fileSize, qint64(0));
    QCOMPARE(lookup.position, qint64(0));
    QCOMPARE(TOxLookupValue().value, QString());
}

void tst_Lookup::fieldsStandInDeclarationOrder()
{
    const TOxLookup l;
    const std::vector<const void*> addresses = { &l.id, &l.label, &l.errorText, &l.status,
        &l.separator, &l.maxMessages, &l.values, &l.cancelled, &l.fileNameSet, &l.key, &l.value,
        &l.consistency, &l.fileName, &l.lineNumber, &l.errorCount, &l.limitNoticeIssued, &l.line,
        &l.fileSize, &l.position };
    QVERIFY(std::is_sorted(addresses.begin(), addresses.end(), std::less<>()));
}

void tst_Lookup::accessors()
{
    TOxLookup lookup;
    lookup.setId("EA");
    lookup.setLabel("Areas");
    lookup.setFfileName("nowhere/areas.txt");
    lookup.setSeparator(9);
    const TOxLookup& constant = lookup;
    QCOMPARE(constant.getId(), QString("EA"));
    QCOMPARE(constant.getLabel(), QString("Areas"));
    QCOMPARE(constant.getFfileName(), QString("nowhere/areas.txt"));
    QCOMPARE(constant.getSeparator(), 9);
    QCOMPARE(lookup.id, QString("EA"));
    QCOMPARE(lookup.label, QString("Areas"));
    QCOMPARE(lookup.fileName, QString("nowhere/areas.txt"));
    QCOMPARE(lookup.separator, 9);
    QCOMPARE(lookup.fileNameSet, false);
}

void tst_Lookup::updateFileName_data()
{
    QTest::addColumn<QString>("before");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("after");
    QTest::addColumn<bool>("isSet");
    const auto row = [](const char* title, const QString& before, const QString& name,
                         const QString& after,
                         bool isSet) { QTest::newRow(title) << before << name << after << isSet; };

    const QString file = path("file");
    row("existing file", "", file, file, true);
    row("existing file over another", "old", file, file, true);
    row("missing file", "old", path("nothing"), "old", false);
    row("directory", "old", path("folder"), "old", false);
    row("empty name, none before", "", "", "", false);
    row("empty name confirms the one before", file, "", file, true);
    row("even if that does not exist", path("nothing"), "", path("nothing"), true);
}

void tst_Lookup::updateFileName()
{
    QFETCH(QString, before);
    QFETCH(QString, name);
    write("file", "01 North\n");
    TOxLookup lookup;
    lookup.setFfileName(before);
    lookup.updateFileName(name);
    QTEST(lookup.fileName, "after");
    QTEST(lookup.fileNameSet, "isSet");
}

void tst_Lookup::openLookup()
{
    write("file", "01 North\r\n");
    TOxLookup lookup;
    lookup.setFfileName(path("file"));
    lookup.position = 5;
    lookup.cancelled = true;
    lookup.lineNumber = 3;
    lookup.line = "x";
    QVERIFY(lookup.openLookup());
    QCOMPARE(lookup.fileSize, qint64(10));
    QCOMPARE(lookup.position, qint64(0));
    QCOMPARE(lookup.cancelled, false);
    QCOMPARE(lookup.lineNumber, 3);
    QCOMPARE(lookup.line, QString("x"));
    QCOMPARE(lookup.status, -1);
}

void tst_Lookup::openLookupOfNoFile_data()
{
    addNoFiles();
}

void tst_Lookup::openLookupOfNoFile()
{
    QFETCH(QString, name);
    TOxLookup lookup;
    lookup.setFfileName(name);
    lookup.fileSize = 7;
    lookup.position = 5;
    lookup.cancelled = true;
    QVERIFY(!lookup.openLookup());
    QCOMPARE(lookup.fileSize, qint64(7));
    QCOMPARE(lookup.position, qint64(5));
    QCOMPARE(lookup.cancelled, true);
    QCOMPARE(lookup.status, -1);
    QCOMPARE(lookup.errorText, QString());
}

void tst_Lookup::readLookup_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("line");
    const auto row = [](const char* name, const QByteArray& bytes, const QString& line) {
        QTest::newRow(name) << bytes << line;
    };

    row("empty file", "", "");
    row("lines", "01 North\n02 South\n", "01 North02 South");
    row("no line end at the end", "01 North\n02 South", "01 North02 South");
    row("carriage returns", "0\r1 North\r\n02 South\r\n\r", "01 North02 South");
    row("empty lines", "\n\n01 North\n\n", "01 North");
    row("blanks stay", " 01 \n 02 \n", " 01  02 ");
    row("UTF-8 mark", utf8Mark + "01 \xC3\x89t\xC3\xA9\n", "01 \u00C9t\u00E9");
    row("UTF-16 mark", "\xFF\xFE" + encoded("UTF-16LE", "01\n02"), "0102");
    row("nothing but a mark", utf8Mark, "");
}

void tst_Lookup::readLookup()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QString, line);
    write("file", bytes);
    TOxLookup lookup;
    lookup.setFfileName(path("file"));
    lookup.line = "text of before";
    lookup.position = 99;
    QVERIFY(lookup.readLookup());
    QCOMPARE(lookup.line, line);
    QCOMPARE(lookup.position, qint64(line.size()));
    QCOMPARE(lookup.lineNumber, 1);
    QCOMPARE(lookup.fileSize, qint64(0));
}

void tst_Lookup::readLookupCountsOnce()
{
    write("file", "01 North\n02 South\n03 East\n");
    TOxLookup lookup;
    lookup.setFfileName(path("file"));
    lookup.lineNumber = 41;
    QVERIFY(lookup.readLookup());
    QCOMPARE(lookup.lineNumber, 42);
    QVERIFY(lookup.readLookup());
    QCOMPARE(lookup.lineNumber, 43);
    QCOMPARE(lookup.line, QString("01 North02 South03 East"));
}

void tst_Lookup::readLookupCancelled()
{
    write("file", "01 North\n02 South\n");
    TOxLookup lookup;
    lookup.setFfileName(path("file"));
    QVERIFY(lookup.openLookup());
    lookup.cancelled = true;
    lookup.position = 5;
    QVERIFY(!lookup.readLookup());
    QCOMPARE(lookup.line, QString("01 North02 South"));
    QCOMPARE(lookup.lineNumber, 0);
    QCOMPARE(lookup.position, qint64(5));
    QCOMPARE(lookup.cancelled, true);

    lookup.setFfileName(path("nothing"));
    QVERIFY(!lookup.readLookup());
    QCOMPARE(lookup.line, QString());
    QCOMPARE(lookup.lineNumber, 0);

    lookup.setFfileName(path("file"));
    QVERIFY(lookup.openLookup());
    QVERIFY(lookup.readLookup());
    QCOMPARE(lookup.lineNumber, 1);
}

void tst_Lookup::readLookupOfNoFile_data()
{
    addNoFiles();
}

void tst_Lookup::readLookupOfNoFile()
{
    QFETCH(QString, name);
    TOxLookup lookup;
    lookup.setFfileName(name);
    lookup.line = "text of before";
    lookup.position = 5;
    QVERIFY(lookup.readLookup());
    QCOMPARE(lookup.line, QString());
    QCOMPARE(lookup.position, qint64(0));
    QCOMPARE(lookup.lineNumber, 1);
}

void tst_Lookup::readLookupThatCannotOpen()
{
    write("file", "01 North\n");
    TOxLookup lookup;
    lookup.setFfileName(path("file"));
    bool isRead = false;
    {
        const NoMoreFiles noMoreFiles;
        QVERIFY(noMoreFiles.isActive());
        isRead = lookup.readLookup();
    }
    QVERIFY(isRead);
    QCOMPARE(lookup.line, QString());
    QCOMPARE(lookup.lineNumber, 1);
}

void tst_Lookup::split_data()
{
    QTest::addColumn<int>("separator");
    QTest::addColumn<QString>("line");
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("value");
    const auto row = [](const char* name, int separator, const QString& line, const QString& key,
                         const QString& value) {
        QTest::newRow(name) << separator << line << key << value;
    };

    const QString none = "no key";
    const QString no = "no value";
    row("space", 0, "01 North", "01", "North");
    row("space, several", 0, "02   South", "02", "South");
    row("space, white space of all kinds", 0, "02 \t\u00A0\u2003\u3000\v South\t", "02", "South\t");
    row("space, spaces within the value", 0, "02 New  Market ", "02", "New  Market ");
    row("space, value of white space", 0, "02  \t ", "02", "");
    row("space, no value", 0, "02 ", "02", "");
    row("space, tab is none", 0, "02\tSouth", none, no);
    row("space, the key keeps its tab", 0, "\t02\t South", "\t02\t", "South");
    row("space, at the start", 0, " 02 South", none, no);
    row("tab", 1, "01\tNorth", "01", "North");
    row("tab, several", 1, "01\t\t North", "01", "\t North");
    row("tab, the key is not trimmed", 1, " 01 \tNorth", " 01 ", "North");
    row("tab, at the start", 1, "\t01\tNorth", none, no);
    row("tab, space is none", 1, "01 North", none, no);
    row("comma", 2, "A,B,C", "A", "B,C");
    row("comma, white space stays", 2, " A , B", " A ", " B");
    row("comma, no value", 2, "A,", "A", "");
    row("comma alone", 2, ",", none, no);
    row("comma at the start", 2, ",A,B", none, no);
    row("comma missing", 2, "A;B", none, no);
    row("semicolon", 3, "A;B;C", "A", "B;C");
    row("semicolon, white space stays", 3, "A; B", "A", " B");
    row("semicolon missing", 3, "A:B", none, no);
    row("colon", 4, "A:B:C", "A", "B:C");
    row("colon, white space stays", 4, "A: B", "A", " B");
    row("colon missing", 4, "A,B", none, no);
    row("code 5", 5, "02   South", "02", "  South");
    row("code 7", 7, "02   South", "02", "  South");
    row("code -1", -1, "02   South", "02", "  South");
    row("smallest code", INT_MIN, "02  South", "02", " South");
    row("largest code", INT_MAX, "02  South", "02", " South");
    row("code 5, comma is none", 5, "A,B", none, no);
    row("empty line", 0, "", none, no);
}

void tst_Lookup::split()
{
    QFETCH(int, separator);
    QFETCH(QString, line);
    TOxLookup lookup;
    lookup.setSeparator(separator);
    lookup.key = "no key";
    lookup.value = "no value";
    lookup.line = line;
    QStringList messages;
    lookup.splitKeyValueAVL(&messages);
    QTEST(lookup.key, "key");
    QTEST(lookup.value, "value");
    QCOMPARE(lookup.line, line);
    QCOMPARE(messages, QStringList());
}

void tst_Lookup::splitReports_data()
{
    QTest::addColumn<int>("separator");
    QTest::addColumn<QString>("line");
    QTest::addColumn<QString>("text");
    const auto row = [](const char* name, int separator, const QString& line, const QString& text) {
        QTest::newRow(name) << separator << line << text;
    };

    row("space", 0, "01,North", "Separator [ ] does not exist");
    row("tab", 1, "01 North", "Separator [\t] does not exist");
    row("comma", 2, "01 North", "Separator [,] does not exist");
    row("semicolon", 3, "01 North", "Separator [;] does not exist");
    row("colon", 4, "01 North", "Separator [:] does not exist");
    row("unknown code", 5, "01,North", "Separator [ ] does not exist");
    row("at the start", 2, ",North", "Separator [,] does not exist");
    row("empty line", 2, "", "Separator [,] does not exist");
}

void tst_Lookup::splitReports()
{
    QFETCH(int, separator);
    QFETCH(QString, line);
    QFETCH(QString, text);
    for (const econsistencyCheck mode : { checkOnly, checkAndCount }) {
        TOxLookup lookup;
        lookup.consistency = mode;
        lookup.maxMessages = 9;
        lookup.setSeparator(separator);
        lookup.line = line;
        lookup.lineNumber = 17;
        QStringList messages = { "before" };
        lookup.splitKeyValueAVL(&messages);
        QCOMPARE(messages, QStringList({ "before", "17_" + text }));
        QCOMPARE(MsgText, text);
        QCOMPARE(lookup.errorCount, 1);
        MsgText.clear();
    }
}

void tst_Lookup::splitReportsNothing_data()
{
    QTest::addColumn<int>("mode");
    QTest::addColumn<QString>("line");
    const auto row = [](const char* name, int mode, const QString& line) {
        QTest::newRow(name) << mode << line;
    };
    row("import only", 0, "01");
    row("counting", 1, "01");
    row("unknown mode", 4, "01");
    row("checking, separator there", 2, "01,North");
    row("checking and counting, separator there", 3, "01,North");
}

void tst_Lookup::splitReportsNothing()
{
    QFETCH(int, mode);
    QFETCH(QString, line);
    MsgText = "text of before";
    TOxLookup lookup;
    lookup.consistency = econsistencyCheck(mode);
    lookup.setSeparator(2);
    lookup.line = line;
    QStringList messages;
    lookup.splitKeyValueAVL(&messages);
    QCOMPARE(messages, QStringList());
    QCOMPARE(MsgText, QString("text of before"));
    QCOMPARE(lookup.errorCount, 0);
}

void tst_Lookup::issueErrorMessage_data()
{
    QTest::addColumn<int>("limit");
    QTest::addColumn<QStringList>("messages");
    const auto row = [](const char* name, int limit, const QStringList& messages) {
        QTest::newRow(name) << limit << messages;
    };

    row("limit 0 hits the first", 0, { "8_" + limitNotice(1, 0), "8_two", "8_three", "8_four" });
    row("limit 1", 1, QStringList({ "8_one", "8_" + limitNotice(2, 1), "8_three", "8_four" }));
    row("limit 3", 3, QStringList({ "8_one", "8_two", "8_three", "8_" + limitNotice(4, 3) }));
    row("limit 4 is not passed", 4, { "8_one", "8_two", "8_three", "8_four" });
    row("limit below 0", -1, { "8_" + limitNotice(1, -1), "8_two", "8_three", "8_four" });
}

void tst_Lookup::issueErrorMessage()
{
    QFETCH(int, limit);
    MsgText = "text of before";
    TOxLookup lookup;
    lookup.maxMessages = limit;
    lookup.lineNumber = 8;
    QStringList messages;
    for (const char* text : { "one", "two", "three", "four" })
        lookup.issueErrorMessage(&messages, text);
    QTEST(messages, "messages");
    QCOMPARE(lookup.errorCount, 4);
    QCOMPARE(lookup.limitNoticeIssued, limit < 4);
    QCOMPARE(MsgText, QString("text of before"));
}

void tst_Lookup::issueErrorMessageGoesOn()
{
    TOxLookup lookup;
    lookup.maxMessages = 65;
    lookup.errorCount = 65;
    QStringList messages;
    lookup.issueErrorMessage(&messages, "lost");
    QCOMPARE(messages.last(),
        QString("0_Too many error messages [B], only the first [A] will be shown"));
    lookup.lineNumber = 2147483647;
    lookup.issueErrorMessage(&messages, "shown");
    QCOMPARE(messages.last(), QString("2147483647_shown"));
    lookup.limitNoticeIssued = false;
    lookup.maxMessages = 65536 + 'x';
    lookup.errorCount = 65536 + 'x';
    lookup.issueErrorMessage(&messages, "lost");
    QCOMPARE(messages.last(),
        QString("2147483647_Too many error messages [y], only the first [x] will be shown"));
    QCOMPARE(messages.size(), 3);
}

void tst_Lookup::issueErrorMessageToNobody()
{
    TOxLookup lookup;
    lookup.issueErrorMessage(nullptr, "text");
    QCOMPARE(lookup.errorCount, 1);
    QCOMPARE(lookup.limitNoticeIssued, true);
}

QTEST_GUILESS_MAIN(tst_Lookup)

#include "tst_Lookup.moc"
