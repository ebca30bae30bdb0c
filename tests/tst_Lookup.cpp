#include "LineByLineLookup.h"

#include <model_Tessel/Lookup.h>

#include <QFile>
#include <QTemporaryDir>
#include <QTextCodec>
#include <QtTest>

#include <sys/resource.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <random>
#include <type_traits>
#include <utility>
#include <vector>

namespace {

using Pairs = QVector<QPair<QString, QString>>;

// Until it dies no file can be opened, though it can be seen; modes would not stop root.
class NoMoreFiles {
public:
    NoMoreFiles()
    {
        getrlimit(RLIMIT_NOFILE, &m_before);
        const rlimit none = { 0, m_before.rlim_max };
        m_active = setrlimit(RLIMIT_NOFILE, &none) == 0;
    }
    ~NoMoreFiles()
    {
        setrlimit(RLIMIT_NOFILE, &m_before);
    }

    bool isActive() const
    {
        return m_active;
    }

private:
    Q_DISABLE_COPY(NoMoreFiles)

    rlimit m_before = {};
    bool m_active = false;
};

// A lookup, its messages and its counters, with a host's duties at the end of them.
class Checked {
public:
    explicit Checked(const QString& path = QString(), int separator = 2)
    {
        lookup.setFfileName(path);
        lookup.setSeparator(separator);
        lookup.setTextCodec("UTF-8");
        lookup.maxMessages = 1000000;
    }
    ~Checked()
    {
        deleteValues();
        for (const auto& frequency : frequencies)
            delete frequency.second;
    }

    bool run(econsistencyCheck mode)
    {
        return lookup.consistencyCheck(mode, frequencies, &messages);
    }

    void deleteValues()
    {
        for (const auto& record : lookup.values)
            delete record.second;
        lookup.values.clear();
    }

    Pairs pairs() const
    {
        Pairs result;
        for (const auto& record : lookup.values)
            result.append({ record.first, record.second->value });
        return result;
    }

    TOxLookup lookup;
    std::map<QString, int*> frequencies;
    QStringList messages;

private:
    Q_DISABLE_COPY(Checked)
};

QString asCharacter(int number)
{
    return QString(QChar(ushort(number)));
}

QString limitNotice(int count, int limit)
{
    return "Too many error messages [" + asCharacter(count) + "], only the first ["
        + asCharacter(limit) + "] will be shown";
}

const QByteArray utf8Mark = "\xEF\xBB\xBF";

QByteArray encoded(const char* codec, const QString& text)
{
    QTextCodec::ConverterState withoutMark(QTextCodec::IgnoreHeader);
    return QTextCodec::codecForName(codec)->fromUnicode(
        text.constData(), text.size(), &withoutMark);
}

} // namespace

class tst_Lookup : public QObject {
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

    void import_data();
    void import();
    void importReports_data();
    void importReports();
    void importWithoutChecksReportsNothing();
    void importToNobody();
    void problemRecords();
    void separatorCharacters();
    void limitOfTheImport();
    void hundredThousandMessages();
    void stateAfterTheImport();
    void keepsTheLastPairOfTheImportBefore();
    void countsOnOverImports();
    void messageTextsAreFilledInTurn();
    void frequencies();
    void frequenciesKeepTheCountersThere();
    void frequenciesOnlyWhenCounting_data();
    void frequenciesOnlyWhenCounting();
    void missingFile_data();
    void missingFile();
    void missingFileLeavesItsMark();
    void fileThatCannotOpen();
    void valuesOutliveTheLookup();
    void longLines();
    void keyOrderBeyondTheBasicPlane();
    void textCodec_data();
    void textCodec();
    void localeCodec();

    void progress();
    void progressOfNothing();
    void cancelledImport_data();
    void cancelledImport();

    void sameAsLineByLine_data();
    void sameAsLineByLine();
    void sameAsLineByLineAtTheReadBuffer();
    void sameAsLineByLineAtRandom();

private:
    QString path(const QString& name) const;
    void write(const QString& name, const QByteArray& bytes) const;
    void compareWithData(const QByteArray& bytes, const TOxLookup& expected);
    void compareWithLineByLine(Checked& checked, LineByLineLookup& plain, const QByteArray& bytes);

    QTemporaryDir m_directory;
};

QString tst_Lookup::path(const QString& name) const
{
    return m_directory.filePath(name);
}

void tst_Lookup::write(const QString& name, const QByteArray& bytes) const
{
    QFile file(path(name));
    QVERIFY2(file.open(QIODevice::WriteOnly), qPrintable(file.fileName()));
    QCOMPARE(file.write(bytes), qint64(bytes.size()));
}

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
    QTest::addColumn<QString>("name");
    QTest::newRow("missing") << path("nothing");
    QTest::newRow("directory") << path("folder");
    QTest::newRow("no name") << QString();
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
    openLookupOfNoFile_data();
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

void tst_Lookup::import_data()
{
    QTest::addColumn<int>("separator");
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<Pairs>("pairs");
    const auto row = [](const char* name, int separator, const QByteArray& bytes,
                         const Pairs& pairs) {
        QTest::newRow(name) << separator << bytes << pairs;
    };

    const QByteArray blanks = "01 North\n02   South\n";
    row("space", 0, blanks, { { "01", "North" }, { "02", "South" } });
    row("code 7 keeps leading blanks", 7, blanks, { { "01", "North" }, { "02", "  South" } });
    row("tab", 1, "01\tA\tB\n", { { "01", "A\tB" } });
    row("comma", 2, "A,B,C\n", { { "A", "B,C" } });
    row("semicolon", 3, "A;B,C\n", { { "A", "B,C" } });
    row("colon", 4, "A:B:C\n", { { "A", "B:C" } });
    row("empty file", 2, "", {});
    row("no line end at the end", 2, "1,a\n2,b", { { "1", "a" }, { "2", "b" } });
    row("carriage returns and line feeds", 2, "1,a\r\n2,b\r\n", { { "1", "a" }, { "2", "b" } });
    row("every carriage return is dropped", 2, "\r1\r,a\rb\r\r\n2,b\r",
        { { "1", "ab" }, { "2", "b" } });
    row("carriage returns end no line", 2, "1,a\r2,b\r", { { "1", "a2,b" } });
    row("put in order", 2, "3,c\n1,a\n2,b\n", { { "1", "a" }, { "2", "b" }, { "3", "c" } });
    row("the first record of a key stays", 2, "2,first\n1,first\n2,second\n1,second\n2,third\n",
        { { "1", "first" }, { "2", "first" } });
    row("order by characters, not numbers", 2, "9,i\n10,j\nB,1\na,2\n",
        { { "10", "j" }, { "9", "i" }, { "B", "1" }, { "a", "2" } });
    row("short keys before the longer ones that begin alike", 2,
        "zzz,0\n100000000,1\n10000000,2\n1000000000,3\n1,4\n",
        { { "1", "4" }, { "10000000", "2" }, { "100000000", "1" }, { "1000000000", "3" },
            { "zzz", "0" } });
    row("order beyond Latin-1", 2,
        "\u20AC,9\n\u0100b,1\n\u00FFa,2\n\u0100a,3\n\u00FF,4\n\u00FEb,5\n",
        { { "\u00FEb", "5" }, { "\u00FF", "4" }, { "\u00FFa", "2" }, { "\u0100a", "3" },
            { "\u0100b", "1" }, { "\u20AC", "9" } });
    row("keys are not trimmed", 2, "1,a\n 1,b\n1 ,c\n",
        { { " 1", "b" }, { "1", "a" }, { "1 ", "c" } });
    row("keys with different case are different", 2, "a,1\nA,2\n", { { "A", "2" }, { "a", "1" } });
    row("no separator at all", 2, "one\ntwo\n", { { "", "" } });
    row("no separator on a later line", 2, "1,a\ntwo\n", { { "1", "a" } });
    row("empty first line", 2, "\n1,a\n", { { "", "" }, { "1", "a" } });
    row("UTF-8 mark", 2, utf8Mark + "1,\u00E9\n", { { "1", "\u00E9" } });
    row("UTF-16 mark, little end", 2, "\xFF\xFE" + encoded("UTF-16LE", "1,\u20AC\r\n2,b"),
        { { "1", "\u20AC" }, { "2", "b" } });
    row("UTF-16 mark, big end", 2, "\xFE\xFF" + encoded("UTF-16BE", "1,\u20AC\r\n2,b\n"),
        { { "1", "\u20AC" }, { "2", "b" } });
    row("a mark elsewhere belongs to the key", 2, "1,a\n" + utf8Mark + "2,b\n",
        { { "1", "a" }, { QString(QChar(0xFEFF)) + "2", "b" } });
    row("nothing but a mark", 2, utf8Mark, { { "", "" } });
    row("a zero in a key", 2, QByteArray("a\0b,1\na,2\n", 10),
        { { "a", "2" }, { QString("a") + QChar(0) + "b", "1" } });
}

void tst_Lookup::import()
{
    QFETCH(int, separator);
    QFETCH(QByteArray, bytes);
    write("file", bytes);
    Checked checked(path("file"), separator);
    for (const econsistencyCheck mode :
        { importOnly, countFrequencies, checkOnly, checkAndCount }) {
        checked.lookup.key.clear();
        checked.lookup.value.clear();
        QVERIFY(checked.run(mode));
        QTEST(checked.pairs(), "pairs");
        QCOMPARE(checked.lookup.consistency, mode);
        checked.deleteValues();
    }
}

void tst_Lookup::importReports_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QStringList>("messages");
    const auto row = [](const char* name, const QByteArray& bytes, const QStringList& messages) {
        QTest::newRow(name) << bytes << messages;
    };

    row("nothing wrong", "01,a\n02,b\n", {});
    row("empty file", "", {});
    row("key of another length", "01,a\n02,b\n003,c\n",
        { "3_Key [003] has a different key size [3] from the first record [2]" });
    row("length in 16-bit units", "\xF0\x9F\x98\x80,a\nb,b\n",
        { "2_Key [b] has a different key size [1] from the first record [2]" });
    row("key twice", "01,a\n02,b\n01,a\n", { "3_Key [01] already exists" });
    row("key twice in a row", "01,a\n01,b\n", { "2_Key [01] already exists" });
    row("key three times, out of order", "09,x\n02,a\n01,b\n02,c\n01,d\n02,e\n",
        { "4_Key [02] already exists", "5_Key [01] already exists", "6_Key [02] already exists" });
    row("key of another length twice", "01,a\n2,b\n2,c\n",
        { "2_Key [2] has a different key size [1] from the first record [2]",
            "3_Key [2] has a different key size [1] from the first record [2]",
            "3_Key [2] already exists" });
    row("no separator on the first line", "one\n", { "1_Separator [,] does not exist" });
    row("no separator at all", "one\ntwo\n\n",
        { "1_Separator [,] does not exist", "2_Separator [,] does not exist",
            "2_Key [] already exists", "3_Separator [,] does not exist",
            "3_Key [] already exists" });
    row("the first key with a length counts", "one\n01,a\n2,b\n",
        { "1_Separator [,] does not exist",
            "3_Key [2] has a different key size [1] from the first record [2]" });
    row("no separator on a later line", "01,a\n02,b\ntwo\n03,c\n",
        { "3_Separator [,] does not exist", "3_Key [02] already exists" });
    row("separator at the start", "01,a\n,b\n",
        { "2_Separator [,] does not exist", "2_Key [01] already exists" });
    row("all three on one line", "01,a\n2,b\nthree\n01,c\n",
        { "2_Key [2] has a different key size [1] from the first record [2]",
            "3_Separator [,] does not exist",
            "3_Key [2] has a different key size [1] from the first record [2]",
            "3_Key [2] already exists", "4_Key [01] already exists" });
    row("nothing but a mark", utf8Mark, { "1_Separator [,] does not exist" });
    row("empty line at the end", "01,a\n\n",
        { "2_Separator [,] does not exist", "2_Key [01] already exists" });
}

void tst_Lookup::importReports()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QStringList, messages);
    write("file", bytes);
    for (const econsistencyCheck mode : { checkOnly, checkAndCount }) {
        MsgText = "text of before";
        Checked checked(path("file"));
        QVERIFY(checked.run(mode));
        QCOMPARE(checked.messages, messages);
        QCOMPARE(checked.lookup.errorCount, messages.size());
        QCOMPARE(checked.lookup.limitNoticeIssued, false);
        QCOMPARE(MsgText, messages.isEmpty() ? "text of before" : messages.last().mid(2));
    }
}

void tst_Lookup::importWithoutChecksReportsNothing()
{
    write("file", "01,a\n2,b\nthree\n01,c\n");
    MsgText = "text of before";
    for (const int mode : { 0, 1, 4, -1 }) {
        Checked checked(path("file"));
        QVERIFY(checked.run(econsistencyCheck(mode)));
        QCOMPARE(checked.messages, QStringList());
        QCOMPARE(checked.lookup.errorCount, 0);
        QCOMPARE(checked.pairs(), Pairs({ { "01", "a" }, { "2", "b" } }));
        QCOMPARE(checked.frequencies.size(), std::size_t(mode == 1 ? 2 : 0));
    }
    QCOMPARE(MsgText, QString("text of before"));
}

void tst_Lookup::problemRecords()
{
    using Kind = TOxLookupProblem::Kind;
    write("file", "01,a\n01,b\nbad\n2,b\n00,c\n01,d\n");
    Checked checked(path("file"));
    std::vector<TOxLookupProblem> problems;
    checked.lookup.setProblemSink(
        [&](const TOxLookupProblem& problem) { problems.push_back(problem); });
    QVERIFY(checked.run(checkOnly));
    QStringList lines;
    QVector<QPair<Kind, QString>> kinds;
    for (const TOxLookupProblem& problem : problems) {
        lines.append(QString::number(problem.line) + '_' + problem.text);
        kinds.append({ problem.kind, problem.key });
    }
    QCOMPARE(lines, checked.messages);
    QCOMPARE(kinds,
        (QVector<QPair<Kind, QString>> { { Kind::DuplicateKey, "01" }, { Kind::NoSeparator, "" },
            { Kind::DuplicateKey, "01" }, { Kind::WrongKeySize, "2" },
            { Kind::DuplicateKey, "01" } }));

    // No limit holds for the records, and nobody needs the messages.
    checked.lookup.maxMessages = 1;
    std::map<QString, int*> none;
    checked.deleteValues();
    QVERIFY(checked.lookup.importAVL(none, nullptr));
    QCOMPARE(problems.size(), std::size_t(10));
    QCOMPARE(problems.at(9).text, problems.at(4).text);
    checked.lookup.line = "none";
    checked.lookup.lineNumber = 77;
    checked.lookup.splitKeyValueAVL(nullptr);
    QCOMPARE(problems.size(), std::size_t(11));
    QCOMPARE(problems.back().line, 77);
    QVERIFY(problems.back().kind == Kind::NoSeparator);
    checked.lookup.setProblemSink({});
    checked.deleteValues();
    QVERIFY(checked.lookup.importAVL(none, nullptr));
    QCOMPARE(problems.size(), std::size_t(11));
}

void tst_Lookup::separatorCharacters()
{
    const QString characters = " \t,;:";
    for (int code = 0; code < characters.size(); ++code)
        QCOMPARE(TOxLookup::separatorCharacter(code), characters.at(code));
    for (const int code : { -1, 5, 7, 2147483647 })
        QCOMPARE(TOxLookup::separatorCharacter(code), QChar(' '));
}

void tst_Lookup::importToNobody()
{
    write("file", "01,a\n01,b\n");
    Checked checked(path("file"));
    QVERIFY(checked.lookup.consistencyCheck(checkOnly, checked.frequencies, nullptr));
    QCOMPARE(checked.lookup.errorCount, 1);
    QCOMPARE(MsgText, QString("Key [01] already exists"));
}

void tst_Lookup::limitOfTheImport()
{
    write("file", "09,z\n01,a\n2,b\n01,c\nfive\n01,d\n");
    Checked checked(path("file"));
    checked.lookup.maxMessages = 2;
    QVERIFY(checked.run(checkOnly));
    const QStringList expected = {
        "3_Key [2] has a different key size [1] from the first record [2]",
        "4_Key [01] already exists", "5_" + limitNotice(3, 2), "5_Key [01] already exists",
        "6_Key [01] already exists"
    };
    QCOMPARE(checked.messages, expected);
    QCOMPARE(checked.lookup.errorCount, 5);
    QCOMPARE(checked.lookup.limitNoticeIssued, true);

    TOxLookup untouched;
    untouched.setFfileName(path("file"));
    untouched.setSeparator(2);
    QStringList messages;
    QVERIFY(untouched.consistencyCheck(checkOnly, checked.frequencies, &messages));
    QCOMPARE(messages.first(), "3_" + limitNotice(1, 0));
    QCOMPARE(messages.mid(1, 2),
        QStringList({ "4_Key [01] already exists", "5_Separator [,] does not exist" }));
    for (const auto& record : untouched.values)
        delete record.second;

    write("file", "01,a\n01,b\n");
    Checked last(path("file"));
    last.lookup.maxMessages = 0;
    QVERIFY(last.run(checkOnly));
    QCOMPARE(last.messages, QStringList({ "2_" + limitNotice(1, 0) }));
    QCOMPARE(MsgText, QString("Key [01] already exists"));
}

void tst_Lookup::hundredThousandMessages()
{
    constexpr int Lines = 100001;
    constexpr int Limit = 50000;
    write("file", QByteArray("key,value\n").repeated(Lines));
    Checked checked(path("file"));
    checked.lookup.maxMessages = Limit;
    QVERIFY(checked.run(checkOnly));
    QCOMPARE(checked.messages.size(), Lines - 1);
    for (int index = 0; index < checked.messages.size(); ++index) {
        const QString text =
            index == Limit ? limitNotice(Limit + 1, Limit) : QString("Key [key] already exists");
        QCOMPARE(checked.messages.at(index), QString::number(index + 2) + "_" + text);
    }
    QCOMPARE(checked.lookup.errorCount, Lines - 1);
    QCOMPARE(checked.lookup.lineNumber, Lines);
    QCOMPARE(checked.pairs(), Pairs({ { "key", "value" } }));
}

void tst_Lookup::stateAfterTheImport()
{
    const QByteArray bytes = "02,b\r\n01,a\r\n02,c\r\nlast line";
    write("file", bytes);
    Checked checked(path("file"));
    TOxLookup& lookup = checked.lookup;
    lookup.setId("id");
    lookup.setLabel("label");
    lookup.cancelled = true;
    QVERIFY(checked.run(checkOnly));
    QCOMPARE(lookup.id, QString("id"));
    QCOMPARE(lookup.label, QString("label"));
    QCOMPARE(lookup.errorText, QString());
    QCOMPARE(lookup.status, -1);
    QCOMPARE(lookup.separator, 2);
    QCOMPARE(lookup.cancelled, false);
    QCOMPARE(lookup.fileNameSet, false);
    QCOMPARE(lookup.key, QString("02"));
    QCOMPARE(lookup.value, QString("c"));
    QCOMPARE(lookup.consistency, checkOnly);
    QCOMPARE(lookup.fileName, path("file"));
    QCOMPARE(lookup.lineNumber, 4);
    QCOMPARE(lookup.errorCount, 3);
    QCOMPARE(lookup.line, QString("last line"));
    QCOMPARE(lookup.fileSize, qint64(bytes.size()));
    QCOMPARE(lookup.position, qint64(9));
    QCOMPARE(checked.messages,
        QStringList({ "3_Key [02] already exists", "4_Separator [,] does not exist",
            "4_Key [02] already exists" }));

    write("file", QByteArray());
    checked.deleteValues();
    QVERIFY(checked.run(checkOnly));
    QCOMPARE(lookup.lineNumber, 0);
    QCOMPARE(lookup.line, QString());
    QCOMPARE(lookup.fileSize, qint64(0));
    QCOMPARE(lookup.position, qint64(0));
    QCOMPARE(lookup.key, QString("02"));
    QCOMPARE(lookup.value, QString("c"));
    QCOMPARE(lookup.errorCount, 3);
}

void tst_Lookup::keepsTheLastPairOfTheImportBefore()
{
    write("file", "01,a\n02,b\n");
    Checked checked(path("file"));
    QVERIFY(checked.run(checkOnly));
    checked.deleteValues();
    write("file", "no separator\n03,c\n");
    QVERIFY(checked.run(checkOnly));
    QCOMPARE(checked.pairs(), Pairs({ { "02", "b" }, { "03", "c" } }));
    QCOMPARE(checked.messages, QStringList({ "1_Separator [,] does not exist" }));
}

void tst_Lookup::countsOnOverImports()
{
    write("file", "01,a\n01,b\n");
    Checked checked(path("file"));
    checked.lookup.maxMessages = 1;
    QVERIFY(checked.run(checkOnly));
    checked.deleteValues();
    QVERIFY(checked.run(checkOnly));
    checked.deleteValues();
    QVERIFY(checked.run(checkOnly));
    QCOMPARE(checked.messages,
        QStringList({ "2_Key [01] already exists", "2_" + limitNotice(2, 1),
            "2_Key [01] already exists" }));
    QCOMPARE(checked.lookup.errorCount, 3);
}

void tst_Lookup::messageTextsAreFilledInTurn()
{
    write("file", "%2,a\n%2%3 %1,b\n%2%3 %1,b\n");
    Checked checked(path("file"));
    QVERIFY(checked.run(checkOnly));
    QCOMPARE(checked.messages,
        QStringList({ "2_Key [72 %1] has a different key size [7] from the first record [2]",
            "3_Key [72 %1] has a different key size [7] from the first record [2]",
            "3_Key [ %1] already exists" }));
    Checked missing(path("%2file%6"));
    QVERIFY(!missing.run(checkOnly));
    QCOMPARE(missing.lookup.errorText, "Input data file [" + path("file") + "] was not found");
}

void tst_Lookup::frequencies()
{
    write("file", "05,urban\n01,rural\n02,rural\n03,\n04,urban\n05,lost\nnone\n");
    for (const econsistencyCheck mode : { countFrequencies, checkAndCount }) {
        Checked checked(path("file"));
        QVERIFY(checked.run(mode));
        QStringList values;
        for (const auto& frequency : checked.frequencies) {
            values << frequency.first;
            QVERIFY(frequency.second);
            QCOMPARE(*frequency.second, 1);
        }
        QCOMPARE(values, QStringList({ "", "rural", "urban" }));
    }
}

void tst_Lookup::frequenciesKeepTheCountersThere()
{
    write("file", "01,rural\n02,rural\n03,urban\n");
    Checked checked(path("file"));
    int* const counter = new int(7);
    checked.frequencies["rural"] = counter;
    checked.frequencies["elsewhere"] = nullptr;
    QVERIFY(checked.run(countFrequencies));
    checked.deleteValues();
    QVERIFY(checked.run(countFrequencies));
    QCOMPARE(checked.frequencies.size(), std::size_t(3));
    QCOMPARE(checked.frequencies.at("rural"), counter);
    QCOMPARE(*counter, 7);
    QCOMPARE(checked.frequencies.at("elsewhere"), nullptr);
    QCOMPARE(*checked.frequencies.at("urban"), 1);
}

void tst_Lookup::frequenciesOnlyWhenCounting_data()
{
    QTest::addColumn<int>("mode");
    QTest::newRow("import only") << 0;
    QTest::newRow("check only") << 2;
    QTest::newRow("unknown mode") << 5;
}

void tst_Lookup::frequenciesOnlyWhenCounting()
{
    QFETCH(int, mode);
    write("file", "01,rural\n");
    Checked checked(path("file"));
    checked.lookup.consistency = econsistencyCheck(mode);
    QVERIFY(checked.lookup.importAVL(checked.frequencies, &checked.messages));
    QVERIFY(checked.frequencies.empty());
    QCOMPARE(checked.pairs(), Pairs({ { "01", "rural" } }));
}

void tst_Lookup::missingFile_data()
{
    openLookupOfNoFile_data();
}

void tst_Lookup::missingFile()
{
    QFETCH(QString, name);
    MsgText = "text of before";
    write("file", "01,a\n02,b\n");
    Checked checked(path("file"));
    QVERIFY(checked.run(importOnly));
    const auto imported = checked.lookup.values;
    checked.messages = QStringList({ "before" });
    checked.lookup.setFfileName(name);
    QVERIFY(!checked.run(checkAndCount));
    QVERIFY(checked.lookup.values.empty());
    QCOMPARE(checked.lookup.errorText, "Input data file [" + name + "] was not found");
    QCOMPARE(checked.lookup.status, 1);
    QCOMPARE(checked.lookup.lineNumber, 0);
    QCOMPARE(checked.lookup.line, QString());
    QCOMPARE(checked.lookup.key, QString("02"));
    QCOMPARE(checked.lookup.errorCount, 0);
    QCOMPARE(checked.lookup.consistency, checkAndCount);
    QCOMPARE(checked.messages, QStringList({ "before" }));
    QVERIFY(checked.frequencies.empty());
    QCOMPARE(MsgText, QString("text of before"));
    for (const auto& record : imported)
        delete record.second;
}

void tst_Lookup::missingFileLeavesItsMark()
{
    write("file", "01,a\n");
    Checked checked(path("nothing"));
    QVERIFY(!checked.run(importOnly));
    checked.lookup.setFfileName(path("file"));
    QVERIFY(checked.run(importOnly));
    QCOMPARE(checked.lookup.status, 1);
    QCOMPARE(checked.lookup.errorText, "Input data file [" + path("nothing") + "] was not found");
    QCOMPARE(checked.pairs(), Pairs({ { "01", "a" } }));
}

void tst_Lookup::fileThatCannotOpen()
{
    write("file", "01,a\n02,b\n");
    Checked checked(path("file"));
    QVERIFY(checked.run(importOnly));
    const auto imported = checked.lookup.values;
    bool isImported = false;
    {
        const NoMoreFiles noMoreFiles;
        QVERIFY(noMoreFiles.isActive());
        isImported = checked.run(checkAndCount);
    }
    QVERIFY(isImported);
    QVERIFY(checked.lookup.values.empty());
    QCOMPARE(checked.lookup.lineNumber, 0);
    QCOMPARE(checked.lookup.line, QString());
    QCOMPARE(checked.lookup.fileSize, qint64(10));
    QCOMPARE(checked.lookup.position, qint64(0));
    QCOMPARE(checked.lookup.status, -1);
    QCOMPARE(checked.lookup.errorText, QString());
    QCOMPARE(checked.messages, QStringList());
    for (const auto& record : imported)
        delete record.second;
}

void tst_Lookup::valuesOutliveTheLookup()
{
    write("file", "01,a\n");
    std::map<QString, int*> none;
    auto lookup = std::make_unique<TOxLookup>();
    lookup->setFfileName(path("file"));
    lookup->setSeparator(2);
    QVERIFY(lookup->importAVL(none, nullptr));
    const std::unique_ptr<TOxLookupValue> first(lookup->values.at("01"));
    QVERIFY(lookup->importAVL(none, nullptr));
    const std::unique_ptr<TOxLookupValue> second(lookup->values.at("01"));
    QVERIFY(first != second);
    const TOxLookup copy = *lookup;
    QCOMPARE(copy.values.at("01"), second.get());
    lookup.reset();
    QCOMPARE(first->value, QString("a"));
    QCOMPARE(second->value, QString("a"));
}

void tst_Lookup::longLines()
{
    const QString key(100000, 'k');
    const QString value(1000000, 'v');
    write("file", (key + "," + value + "\n" + key + "2," + value).toUtf8());
    Checked checked(path("file"));
    QVERIFY(checked.run(checkOnly));
    QCOMPARE(checked.pairs(), Pairs({ { key, value }, { key + "2", value } }));
    QCOMPARE(checked.lookup.position, qint64(1100002));
    QCOMPARE(checked.messages,
        QStringList({ "2_Key [" + key
            + "2] has a different key size [100001] from the first record "
              "[100000]" }));
}

void tst_Lookup::keyOrderBeyondTheBasicPlane()
{
    const QString face = QString::fromUtf8("\xF0\x9F\x98\x80");
    write("file",
        ("\uFF5E,1\n" + face + ",2\na" + face + ",3\n" + face + "a,4\n" + face + ",5\n").toUtf8());
    Checked checked(path("file"));
    QVERIFY(checked.run(checkOnly));
    QCOMPARE(checked.pairs(),
        Pairs({ { "a" + face, "3" }, { face, "2" }, { face + "a", "4" }, { "\uFF5E", "1" } }));
    QCOMPARE(checked.messages.last(), "5_Key [" + face + "] already exists");
}

void tst_Lookup::textCodec_data()
{
    QTest::addColumn<QByteArray>("codec");
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("value");
    const auto row = [](const char* name, const QByteArray& codec, const QByteArray& bytes,
                         const QString& value) { QTest::newRow(name) << codec << bytes << value; };

    row("UTF-8", "UTF-8", "1,\xC3\xA9", "\u00E9");
    row("Windows-1252", "windows-1252", "1,\x80\xE9", "\u20AC\u00E9");
    row("UTF-16 without a mark", "UTF-16BE", encoded("UTF-16BE", "1,\u20AC"), "\u20AC");
    row("a mark wins", "windows-1252", utf8Mark + "1,\xC3\xA9", "\u00E9");
    row("a UTF-16 mark wins", "UTF-8", "\xFE\xFF" + encoded("UTF-16BE", "1,\u20AC"), "\u20AC");
}

void tst_Lookup::textCodec()
{
    QFETCH(QByteArray, codec);
    QFETCH(QByteArray, bytes);
    QFETCH(QString, value);
    write("file", bytes);
    Checked checked(path("file"));
    checked.lookup.setTextCodec(codec);
    QVERIFY(checked.run(importOnly));
    QCOMPARE(checked.pairs(), Pairs({ { "1", value } }));
    QVERIFY(checked.lookup.readLookup());
    QCOMPARE(checked.lookup.line, "1," + value);
}

void tst_Lookup::localeCodec()
{
    write("file", "1,\xE9");
    QTextCodec* const before = QTextCodec::codecForLocale();
    const std::vector<std::pair<const char*, QString>> values = { { "ISO-8859-1", "\u00E9" },
        { "windows-1251", "\u0439" } };
    for (const auto& [locale, value] : values) {
        QTextCodec::setCodecForLocale(QTextCodec::codecForName(locale));
        for (const char* codec : { "", "no-such-codec" }) {
            Checked checked(path("file"));
            checked.lookup.setTextCodec(codec);
            const bool isImported = checked.run(importOnly);
            const bool isRead = checked.lookup.readLookup();
            QTextCodec::setCodecForLocale(before);
            QVERIFY(isImported && isRead);
            QCOMPARE(checked.pairs(), Pairs({ { "1", value } }));
            QCOMPARE(checked.lookup.line, "1," + value);
            QTextCodec::setCodecForLocale(QTextCodec::codecForName(locale));
        }
    }
    QTextCodec::setCodecForLocale(before);
}

void tst_Lookup::progress()
{
    QByteArrayList lines;
    for (int number = 100000; number < 180000; ++number)
        lines << QByteArray::number(number) + ",value";
    const QByteArray bytes = lines.join('\n');
    write("file", bytes);
    Checked checked(path("file"));
    std::vector<std::pair<qint64, qint64>> calls;
    checked.lookup.setImportProgress([&calls](qint64 bytesRead, qint64 size) {
        calls.emplace_back(bytesRead, size);
        return true;
    });
    QVERIFY(checked.run(checkOnly));
    QCOMPARE(checked.lookup.values.size(), std::size_t(80000));
    QCOMPARE(checked.lookup.cancelled, false);
    QVERIFY(calls.size() > 10 && calls.size() <= 100);
    qint64 percentage = 0;
    for (const auto& [bytesRead, size] : calls) {
        QCOMPARE(size, qint64(bytes.size()));
        QVERIFY(bytesRead <= size);
        QVERIFY(bytesRead * 100 / size > percentage);
        percentage = bytesRead * 100 / size;
    }
    QCOMPARE(percentage, qint64(100));

    const std::size_t callsBefore = calls.size();
    checked.deleteValues();
    checked.lookup.setImportProgress(LookupProgress());
    QVERIFY(checked.run(checkOnly));
    QCOMPARE(calls.size(), callsBefore);
}

void tst_Lookup::progressOfNothing()
{
    int calls = 0;
    Checked checked(path("file"));
    checked.lookup.setImportProgress([&calls](qint64, qint64) {
        ++calls;
        return false;
    });
    QVERIFY(!checked.run(checkOnly));
    QCOMPARE(checked.lookup.cancelled, false);
    write("file", QByteArray());
    QVERIFY(checked.run(checkOnly));
    QCOMPARE(checked.lookup.cancelled, false);
    QCOMPARE(calls, 0);
}

void tst_Lookup::cancelledImport_data()
{
    QTest::addColumn<bool>("inOrder");
    QTest::newRow("lines in order") << true;
    QTest::newRow("lines out of order") << false;
}

void tst_Lookup::cancelledImport()
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

// Imports the bytes both ways; what the two objects held before may show in the outcome.
void tst_Lookup::compareWithLineByLine(
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

// The same bytes without a file give the same records and messages.
void tst_Lookup::compareWithData(const QByteArray& bytes, const TOxLookup& expected)
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

void tst_Lookup::sameAsLineByLine_data()
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

void tst_Lookup::sameAsLineByLine()
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
void tst_Lookup::sameAsLineByLineAtTheReadBuffer()
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

void tst_Lookup::sameAsLineByLineAtRandom()
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

QTEST_GUILESS_MAIN(tst_Lookup)

#include "tst_Lookup.moc"
