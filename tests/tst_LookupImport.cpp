#include "LookupTest.h"

#include <model_Tessel/Lookup.h>

#include <QFile>
#include <QTextCodec>
#include <QtTest>

#include <memory>
#include <utility>
#include <vector>

class tst_LookupImport : public LookupTest {
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanup();

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
};

void tst_LookupImport::initTestCase()
{
    QVERIFY(m_directory.isValid());
    QVERIFY(QDir(m_directory.path()).mkpath("folder"));
}

void tst_LookupImport::cleanup()
{
    QFile::remove(path("file"));
    MsgText.clear();
}

void tst_LookupImport::import_data()
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

void tst_LookupImport::import()
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

void tst_LookupImport::importReports_data()
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

void tst_LookupImport::importReports()
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

void tst_LookupImport::importWithoutChecksReportsNothing()
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

void tst_LookupImport::problemRecords()
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
    QCOMPARE(lookupProblemText(problems.at(0), "0..."), QString("Key [0...] already exists"));
    QCOMPARE(lookupProblemText(problems.at(1), "0..."), problems.at(1).text);
    QCOMPARE(lookupProblemText(problems.at(3), "%1"),
        QString("Key [%1] has a different key size [1] from the first record [2]"));

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

void tst_LookupImport::separatorCharacters()
{
    const QString characters = " \t,;:";
    for (int code = 0; code < characters.size(); ++code)
        QCOMPARE(TOxLookup::separatorCharacter(code), characters.at(code));
    for (const int code : { -1, 5, 7, 2147483647 })
        QCOMPARE(TOxLookup::separatorCharacter(code), QChar(' '));
    QCOMPARE(TOxLookup::separatorNames(),
        (QStringList { "space", "tab", "comma", "semicolon", "colon" }));
}

void tst_LookupImport::importToNobody()
{
    write("file", "01,a\n01,b\n");
    Checked checked(path("file"));
    QVERIFY(checked.lookup.consistencyCheck(checkOnly, checked.frequencies, nullptr));
    QCOMPARE(checked.lookup.errorCount, 1);
    QCOMPARE(MsgText, QString("Key [01] already exists"));
}

void tst_LookupImport::limitOfTheImport()
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

void tst_LookupImport::hundredThousandMessages()
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

void tst_LookupImport::stateAfterTheImport()
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

void tst_LookupImport::keepsTheLastPairOfTheImportBefore()
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

void tst_LookupImport::countsOnOverImports()
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

void tst_LookupImport::messageTextsAreFilledInTurn()
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

void tst_LookupImport::frequencies()
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

void tst_LookupImport::frequenciesKeepTheCountersThere()
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

void tst_LookupImport::frequenciesOnlyWhenCounting_data()
{
    QTest::addColumn<int>("mode");
    QTest::newRow("import only") << 0;
    QTest::newRow("check only") << 2;
    QTest::newRow("unknown mode") << 5;
}

void tst_LookupImport::frequenciesOnlyWhenCounting()
{
    QFETCH(int, mode);
    write("file", "01,rural\n");
    Checked checked(path("file"));
    checked.lookup.consistency = econsistencyCheck(mode);
    QVERIFY(checked.lookup.importAVL(checked.frequencies, &checked.messages));
    QVERIFY(checked.frequencies.empty());
    QCOMPARE(checked.pairs(), Pairs({ { "01", "rural" } }));
}

void tst_LookupImport::missingFile_data()
{
    addNoFiles();
}

void tst_LookupImport::missingFile()
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

void tst_LookupImport::missingFileLeavesItsMark()
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

void tst_LookupImport::fileThatCannotOpen()
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

void tst_LookupImport::valuesOutliveTheLookup()
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

void tst_LookupImport::longLines()
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

void tst_LookupImport::keyOrderBeyondTheBasicPlane()
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

void tst_LookupImport::textCodec_data()
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

void tst_LookupImport::textCodec()
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

void tst_LookupImport::localeCodec()
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

void tst_LookupImport::progress()
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

void tst_LookupImport::progressOfNothing()
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

QTEST_GUILESS_MAIN(tst_LookupImport)

#include "tst_LookupImport.moc"
