// Adds batches to databases with "tessel build --add" and compares them with databases that were
// made of everything at once.
#include "AddedTargets.h"

class tst_BuildAdd : public QObject, private AddedBuilds {
    Q_OBJECT

private slots:
    void initTestCase_data();
    void initTestCase();
    void init();
    void shuffledBatches_data();
    void shuffledBatches();
    void textCases();
    void duplicates();
    void severalFiles();
    void repeatsKnownCase();
    void blankIdentification();
    void partlyBlankIdentification();
    void rejects();
    void correctedText();
    void otherFileOfThePath();
    void csproDb();
    void otherTablet_data();
    void otherTablet();
    void uuidsMeetText();
    void otherIdentification();
    void firstGoes();
    void newColumns();
    void namedAsWorkingTables();
    void newDictionary_data();
    void newDictionary();
    void optionsOfTheFirst_data();
    void optionsOfTheFirst();
    void otherOptions_data();
    void otherOptions();
    void languagesOfTheFirst();
    void refused_data();
    void refused();
    void otherForm();

private:
    bool isServer() const
    {
        return dynamic_cast<ServerTargets*>(targets.get()) != nullptr;
    }
};

void tst_BuildAdd::initTestCase_data()
{
    QTest::addColumn<bool>("server");
    QTest::newRow("SQLite") << false;
    QTest::newRow("PostgreSQL") << true;
}

void tst_BuildAdd::initTestCase()
{
    startServer();
}

void tst_BuildAdd::init()
{
    QFETCH_GLOBAL(bool, server);
    const QString missing = start(server);
    if (!missing.isEmpty())
        QSKIP(qPrintable(missing));
}

const QString censusIds = QStringLiteral("PROVINCE, DISTRICT, EA, HOUSEHOLD_NUMBER");

void tst_BuildAdd::shuffledBatches_data()
{
    QTest::addColumn<int>("batches");
    QTest::addColumn<QStringList>("options");
    QTest::newRow("columns") << 10 << QStringList();
    QTest::newRow("repeat tables") << 3 << QStringList { "--repeats", "tables" };
    QTest::newRow("languages") << 3 << QStringList { "--languages", "all" };
}

void tst_BuildAdd::shuffledBatches()
{
    QFETCH(int, batches);
    QFETCH(QStringList, options);
    const QString dictionary = QStringLiteral(TESSEL_EXAMPLES "/census.dcf");
    const QString data = QStringLiteral(TESSEL_EXAMPLES "/census.dat");
    QCOMPARE(build(QStringList { dictionary, data } + options, "whole").status, 0);
    const QVector<QByteArray> cases = shuffledCases(14);
    int all = 0;
    for (int batch = 0; batch < batches; ++batch) {
        const int first = cases.size() * batch / batches;
        const int count = cases.size() * (batch + 1) / batches - first;
        QByteArray lines;
        const QVector<QByteArray> part = cases.mid(first, count);
        for (const QByteArray& one : part)
            lines += one;
        writeFile(path("batch.dat"), lines);
        options.removeAll("--add");
        if (batch > 0)
            options.append("--add");
        const Outcome outcome = build(options + QStringList { dictionary, path("batch.dat") });
        QVERIFY2(outcome.status == 0, outcome.errors.constData());
        all += count;
        QCOMPARE(rows("SELECT count(*) FROM cases"), QStringList(QString::number(all)));
    }
    QCOMPARE(contents(censusIds), contents(censusIds, "whole"));
    QCOMPARE(rows("SELECT count(*), sum(new_cases), max(build_id) FROM tessel_builds"),
        QStringList(QStringLiteral("%1|%2|%1").arg(batches).arg(cases.size())));
    QCOMPARE(rows("SELECT count(*) FROM tessel_sources WHERE build_id = source_id"),
        QStringList(QString::number(batches)));
}

void tst_BuildAdd::textCases()
{
    make("101011ann\n20101 30\n20101 31\n101022bob\n101032cat\n");
    const QByteArray batch = "101022bob\n101031cat\n20103 50\n102011dan\n";
    QCOMPARE(changes(add(batch)), QByteArray("1 new, 1 changed, 0 deleted (1 as they were)"));
    QCOMPARE(rows("SELECT PLACE, NUMBER, ROOF, NAME FROM HOUSE ORDER BY case_id"),
        (QStringList { "1|1|1|ann", "1|2|2|bob", "1|3|1|cat", "2|1|1|dan" }));
    QCOMPARE(rows("SELECT case_id, row, AGE FROM PERSON ORDER BY 1, 2"),
        (QStringList { "1|1|30", "1|2|31", "3|1|50" }));
    QCOMPARE(rows("SELECT case_id, source_id, line, records FROM cases ORDER BY 1"),
        (QStringList { "1|1|1|3", "2|1|4|1", "3|2|2|2", "4|2|4|1" }));
    QCOMPARE(rows("SELECT DISTINCT partly_saved FROM cases"), QStringList("-")); // text tells not
    QCOMPARE(rows("SELECT table_name, row_count FROM tessel_records ORDER BY 1"),
        (QStringList { "HOUSE|4", "PERSON|3" }));
    QCOMPARE(rows("SELECT build_id, cases, new_cases, changed_cases, unchanged_cases, "
                  "withdrawn_cases FROM tessel_builds ORDER BY 1"),
        (QStringList { "1|3|3|0|0|0", "2|3|1|1|1|0" }));
    const QStringList before = contents();
    QCOMPARE(changes(add(batch)), QByteArray("0 new, 0 changed, 0 deleted (3 as they were)"));
    QCOMPARE(contents(), before);
}

void tst_BuildAdd::duplicates()
{
    make("101011ann\n");
    const QByteArray batch = "102011ann\n102021bob\n102011cat\n102031fay\n102011dan\n";
    QCOMPARE(changes(add(batch)), QByteArray("5 new, 0 changed, 0 deleted (0 as they were)"));
    const QString cases =
        "SELECT case_id, duplicate_of, NUMBER FROM cases WHERE PLACE = 2 ORDER BY case_id";
    const QStringList marked { "2|-|1", "3|-|2", "4|2|1", "5|-|3", "6|2|1" };
    QCOMPARE(rows(cases), marked);
    QCOMPARE(rows("SELECT kind, case_id, first_case_id FROM tessel_problems ORDER BY 2"),
        (QStringList { "duplicate-case|4|2", "duplicate-case|6|2" }));
    const QStringList before = contents();
    QCOMPARE(changes(add(batch)), QByteArray("0 new, 0 changed, 0 deleted (5 as they were)"));
    QCOMPARE(contents(), before);
    // One of them alone is known by its content.
    QCOMPARE(
        changes(add("102011dan\n")), QByteArray("0 new, 0 changed, 0 deleted (1 as they were)"));
    QCOMPARE(changes(add("102011ann\n102031fay\n102011cat\n102021bob\n102011eve\n")),
        QByteArray("0 new, 1 changed, 0 deleted (4 as they were)"));
    QCOMPARE(rows(cases), marked);
    QCOMPARE(rows("SELECT NAME FROM HOUSE ORDER BY case_id"),
        (QStringList { "ann", "ann", "bob", "cat", "fay", "eve" }));
}

// What is told of a case names its file, line and number, and those of the first one.
void tst_BuildAdd::severalFiles()
{
    const auto write = [this](const char* first, const char* second) {
        writeFile(path("a.dat"), first);
        writeFile(path("b.dat"), second);
        return QStringList { path("d.dcf"), path("a.dat"), path("b.dat") };
    };
    writeFile(path("d.dcf"), plainSurvey());
    QCOMPARE(build(write("101011ann\n101021bob\n", "101031cat\n101011dan\n9\n")).status, 0);
    const QString problems = "SELECT kind, source_id, line, case_id, first_source_id, first_line, "
                             "first_case_id FROM tessel_problems ORDER BY source_id, line";
    const QStringList first { "duplicate-case|2|2|4|1|1|1", "unknown-record-type|2|3|-|-|-|-" };
    QCOMPARE(rows(problems), first);
    const QStringList batch = write("102011eve\n", "102021fay\n102011gus\n8\n");
    QCOMPARE(changes(build(batch + QStringList { "--add" })),
        QByteArray("3 new, 0 changed, 0 deleted (0 as they were)"));
    QCOMPARE(rows(problems),
        first + (QStringList { "duplicate-case|4|2|7|3|1|5", "unknown-record-type|4|3|-|-|-|-" }));
    QCOMPARE(rows("SELECT source_id, build_id, lines FROM tessel_sources ORDER BY 1"),
        (QStringList { "1|1|2", "2|1|3", "3|2|1", "4|2|3" }));
    QCOMPARE(rows("SELECT count(DISTINCT sha256) FROM tessel_sources"), QStringList("4"));
    QCOMPARE(rows("SELECT source_id, line, text, is_whole FROM tessel_rejects ORDER BY 1"),
        (QStringList { "2|3|9|1", "4|3|8|1" }));
    QCOMPARE(rows("SELECT build_id, problems, rejected_lines FROM tessel_builds ORDER BY 1"),
        (QStringList { "1|2|1", "2|2|1" }));
    QCOMPARE(rows("SELECT case_id, source_id, line, duplicate_of FROM cases ORDER BY 1"),
        (QStringList {
            "1|1|1|-", "2|1|2|-", "3|2|1|-", "4|2|2|1", "5|3|1|-", "6|4|1|-", "7|4|2|5" }));
}

// The first one is where the database has it, not where the batch has it again.
void tst_BuildAdd::repeatsKnownCase()
{
    make("101021bob\n101011ann\n");
    QCOMPARE(changes(add("101011ann\n101031cat\n101011dan\n")),
        QByteArray("2 new, 0 changed, 0 deleted (1 as they were)"));
    QCOMPARE(rows("SELECT kind, source_id, line, case_id, first_source_id, first_line, "
                  "first_case_id FROM tessel_problems"),
        QStringList("duplicate-case|2|3|4|1|2|2"));
}

// A blank identification names no case, so that none of them is replaced.
void tst_BuildAdd::blankIdentification()
{
    make("1    1ann\n");
    QCOMPARE(
        changes(add("1    1bob\n")), QByteArray("1 new, 0 changed, 0 deleted (0 as they were)"));
    QCOMPARE(
        changes(add("1    1ann\n")), QByteArray("0 new, 0 changed, 0 deleted (1 as they were)"));
    QCOMPARE(rows("SELECT NAME FROM HOUSE ORDER BY 1"), (QStringList { "ann", "bob" }));
}

// A blank in it is a value like others.
void tst_BuildAdd::partlyBlankIdentification()
{
    make("1  011ann\n101011bob\n1  021cat\n");
    QCOMPARE(changes(add("1  012ann\n1  021cat\n101  1dan\n1  011eve\n")),
        QByteArray("2 new, 1 changed, 0 deleted (1 as they were)"));
    QCOMPARE(rows("SELECT PLACE, NUMBER, ROOF, NAME FROM HOUSE ORDER BY case_id"),
        (QStringList { "-|1|2|ann", "1|1|1|bob", "-|2|1|cat", "1|-|1|dan", "-|1|1|eve" }));
    QCOMPARE(rows("SELECT case_id, duplicate_of FROM cases WHERE duplicate_of IS NOT NULL"),
        QStringList("5|1"));
}

void tst_BuildAdd::rejects()
{
    make("101011ann\n9lost\n10xx1no\n");
    QCOMPARE(add("101011ann\n9lost\n9more\n", "first.dat").status, 0);
    const QStringList lines { "9lost", "9more" };
    QCOMPARE(rows("SELECT text FROM tessel_rejects ORDER BY 1"), lines);
    QCOMPARE(add("101011ann\n9lost\n9more\n", "other.dat").status, 0);
    QCOMPARE(rows("SELECT text FROM tessel_rejects ORDER BY 1"), lines);
    QCOMPARE(rows("SELECT value FROM tessel_problems WHERE case_id IS NULL ORDER BY 1"), lines);
}

// What was wrong with the former version of a file is not told of the new one.
void tst_BuildAdd::correctedText()
{
    make("101011ann\n9lost\n10xx1no\n101021bob\n101031cat\n");
    const Outcome outcome = add("101011ann\n101022bob\n", "first.dat");
    QCOMPARE(changes(outcome), QByteArray("0 new, 1 changed, 0 deleted (1 as they were)"));
    QVERIFY2(outcome.errors.contains("first.dat: note: 1 case that came from this file before is "
                                     "not in it; it stays\n"),
        outcome.errors.constData());
    QCOMPARE(rows("SELECT text FROM tessel_rejects"), QStringList());
    QCOMPARE(rows("SELECT kind FROM tessel_problems"), QStringList());
    QCOMPARE(rows("SELECT NAME FROM HOUSE ORDER BY 1"), (QStringList { "ann", "bob", "cat" }));
    QCOMPARE(add("101011ann\n101022bob\n101031cat\n", "first.dat").errors, QByteArray());
}

// A file without any of the former cases may be another one, which says nothing of the lines of the
// first.
void tst_BuildAdd::otherFileOfThePath()
{
    make("101011ann\n9lost\n101021bob\n");
    const Outcome outcome = add("102011cat\n9more\n", "first.dat");
    QCOMPARE(changes(outcome), QByteArray("1 new, 0 changed, 0 deleted (0 as they were)"));
    QVERIFY2(outcome.errors.contains("note: 2 cases that came from this file before are not in it; "
                                     "they stay\n"),
        outcome.errors.constData());
    QCOMPARE(
        rows("SELECT text FROM tessel_rejects ORDER BY 1"), (QStringList { "9lost", "9more" }));
}

void tst_BuildAdd::csproDb()
{
    const QString db = path("s.csdb");
    writeDb(db,
        { { "u1", "101011ann" }, { "u2", "101021bob", false, true }, { "u3", "101031cat" },
            { "u4", "101041dan" }, { "u5", "101051eve" } });
    QCOMPARE(build({ db }).status, 0);
    writeDb(db,
        { { "u1", "101011ann" }, { "u2", "101021bob" }, { "u3", "101032cat" },
            { "u4", "101041dan", true }, { "u6", "101061fay" }, { "u7", "101041new" } });
    QCOMPARE(changes(build({ "--add", db })),
        QByteArray("2 new, 2 changed, 2 deleted (1 as they were)"));
    QCOMPARE(rows("SELECT uuid, NUMBER, partly_saved, duplicate_of FROM cases ORDER BY uuid"),
        (QStringList { "u1|1|0|-", "u2|2|0|-", "u3|3|0|-", "u6|6|0|-", "u7|4|0|-" }));
    QCOMPARE(rows("SELECT NAME, ROOF FROM HOUSE ORDER BY 1"),
        (QStringList { "ann|1", "bob|1", "cat|2", "fay|1", "new|1" }));
    QCOMPARE(rows("SELECT kind FROM tessel_problems"), QStringList());
    const QStringList before = contents();
    QCOMPARE(changes(build({ "--add", db })),
        QByteArray("0 new, 0 changed, 0 deleted (5 as they were)"));
    QCOMPARE(contents(), before);
    // What another file lacks is not gone.
    writeDb(path("other.csdb"), { { "u9", "102011gus" } });
    QCOMPARE(changes(build({ "--add", path("other.csdb") })),
        QByteArray("1 new, 0 changed, 0 deleted (0 as they were)"));
    QCOMPARE(rows("SELECT count(*) FROM cases"), QStringList("6"));
}

void tst_BuildAdd::otherTablet_data()
{
    QTest::addColumn<QByteArray>("uuid");
    QTest::addColumn<bool>("isDeleted");
    QTest::addColumn<QByteArray>("told"); // empty: what is gone is withdrawn
    QTest::newRow("other") << QByteArray("v1") << false
                           << QByteArray("holds none of the 2 cases that came from this path "
                                         "before");
    QTest::newRow("same") << QByteArray("u1") << false << QByteArray();
    QTest::newRow("deleted") << QByteArray("u1") << true << QByteArray();
    QTest::newRow("other, deleted")
        << QByteArray("v1") << true << QByteArray("holds none of the 2 cases");
}

// Tablets give their files one name: what another one lacks is not gone.
void tst_BuildAdd::otherTablet()
{
    QFETCH(QByteArray, uuid);
    QFETCH(bool, isDeleted);
    QFETCH(QByteArray, told);
    const QString db = path("s.csdb");
    writeDb(db, { { "u1", "101011ann" }, { "u2", "101021bob" } });
    QCOMPARE(build({ db }).status, 0);
    const QStringList before = state();
    writeDb(db, { { uuid, "102011ann", isDeleted }, { "v2", "102021gus" } });
    const Outcome outcome = build({ "--add", db });
    if (told.isEmpty()) {
        QCOMPARE(outcome.status, 0);
        QCOMPARE(rows("SELECT uuid FROM cases WHERE uuid <> 'u1'"), QStringList("v2"));
        return;
    }
    QCOMPARE(outcome.status, 1);
    QVERIFY2(outcome.errors.contains(told), outcome.errors.constData());
    QVERIFY2(outcome.errors.contains("another name"), outcome.errors.constData());
    QCOMPARE(state(), before);
    QVERIFY(QFile::rename(db, path("other.csdb")));
    QCOMPARE(build({ "--add", path("other.csdb") }).status, 0);
    QCOMPARE(rows("SELECT count(*) FROM cases WHERE uuid LIKE 'u%'"), QStringList("2"));
}

void tst_BuildAdd::uuidsMeetText()
{
    make("101011ann\n101021bob\n101031cat\n");
    writeDb(path("s.csdb"),
        { { "u1", "101011ann" }, { "u2", "101022bob" }, { "u3", "101031cat", true } });
    QCOMPARE(changes(build({ "--add", path("s.csdb") })),
        QByteArray("0 new, 1 changed, 1 deleted (1 as they were)"));
    QCOMPARE(rows("SELECT uuid, NUMBER FROM cases ORDER BY 1"), (QStringList { "u1|1", "u2|2" }));
    QCOMPARE(
        changes(add("101012ann\n")), QByteArray("0 new, 1 changed, 0 deleted (0 as they were)"));
    QCOMPARE(rows("SELECT uuid, NUMBER FROM cases ORDER BY 1"), (QStringList { "u1|1", "u2|2" }));
    // Another UUID is another case, which repeats the identification.
    writeDb(path("o.csdb"), { { "u8", "101011oli" } });
    QCOMPARE(changes(build({ "--add", path("o.csdb") })),
        QByteArray("1 new, 0 changed, 0 deleted (0 as they were)"));
    QCOMPARE(rows("SELECT c.uuid, d.uuid FROM cases c JOIN cases d ON d.case_id = c.duplicate_of"),
        QStringList("u8|u1"));
    QCOMPARE(rows("SELECT c.uuid, p.kind FROM tessel_problems p JOIN cases c USING (case_id)"),
        QStringList("u8|duplicate-case"));
}

// By its UUID a case is known also under another identification.
void tst_BuildAdd::otherIdentification()
{
    const QString db = path("s.csdb");
    writeDb(db, { { "u1", "101011ann" }, { "u2", "101011bob" } });
    QCOMPARE(build({ db }).status, 0);
    QCOMPARE(
        rows("SELECT uuid, duplicate_of FROM cases ORDER BY 1"), (QStringList { "u1|-", "u2|1" }));
    writeDb(db, { { "u1", "101011ann" }, { "u2", "101021bob" } });
    QCOMPARE(changes(build({ "--add", db })),
        QByteArray("0 new, 1 changed, 0 deleted (1 as they were)"));
    QCOMPARE(rows("SELECT case_id, uuid, NUMBER, duplicate_of FROM cases ORDER BY 1"),
        (QStringList { "1|u1|1|-", "2|u2|2|-" }));
    QCOMPARE(rows("SELECT NUMBER, NAME FROM HOUSE ORDER BY 1"), (QStringList { "1|ann", "2|bob" }));
    QCOMPARE(rows("SELECT count(*) FROM tessel_problems"), QStringList("0"));
}

// What is told of those that repeated it is told of the next one.
void tst_BuildAdd::firstGoes()
{
    const QString db = path("s.csdb");
    writeDb(db, { { "u1", "101011ann" }, { "u2", "101011bob" }, { "u3", "101011cat" } });
    QCOMPARE(build({ db }).status, 0);
    const QString problems =
        "SELECT kind, case_id, first_case_id FROM tessel_problems ORDER BY case_id";
    QCOMPARE(rows(problems), (QStringList { "duplicate-case|2|1", "duplicate-case|3|1" }));
    writeDb(db, { { "u1", "101021ann" }, { "u2", "101011bob" }, { "u3", "101011cat" } });
    QCOMPARE(changes(build({ "--add", db })),
        QByteArray("0 new, 1 changed, 0 deleted (2 as they were)"));
    QCOMPARE(rows("SELECT case_id, duplicate_of FROM cases ORDER BY 1"),
        (QStringList { "1|-", "2|-", "3|2" }));
    QCOMPARE(rows(problems), QStringList("duplicate-case|3|2"));
}

void tst_BuildAdd::newColumns()
{
    make("101011ann\n");
    QByteArray codes = roofs;
    codes.replace("Straw", "Thatch").replace("Value=1", "Value=3;Slate\nValue=1");
    writeFile(path("d.dcf"),
        survey(item("ROOMS", 6, 2) + item("ROOF", 8, 1) + codes + item("NAME", 9, 7, "Alpha"),
            "[Record]\nLabel=Cow\nName=COW\nRecordTypeValue='3'\nRequired=No\nMaxRecords=9\n"
            "RecordLen=30\n\n"
                + item("MILK", 6, 2)));
    QCOMPARE(changes(add("10101 41ann\n10102 73beatrix\n3010212\n")),
        QByteArray("1 new, 1 changed, 0 deleted (0 as they were)"));
    QCOMPARE(rows("SELECT NUMBER, ROOMS, ROOF, NAME FROM HOUSE_labels ORDER BY 1"),
        (QStringList { "1|4|Tiles|ann", "2|7|Slate|beatrix" }));
    QCOMPARE(rows("SELECT case_id, MILK FROM COW_valid"), QStringList("2|12"));
    QCOMPARE(rows("SELECT code, label FROM ROOF_VS1 ORDER BY 1"),
        (QStringList { "1|Tiles", "2|Thatch", "3|Slate" }));
    QVERIFY(targets->objects("t").join(' ').contains("COW_case", Qt::CaseInsensitive));
    QCOMPARE(build({ path("d.dcf"), path("d.dat") }, "whole").status, 0);
    QCOMPARE(contents(), contents("PLACE, NUMBER", "whole"));
    // New variables without values change no case.
    writeFile(path("d.dcf"), plainSurvey());
    make("101011ann\n");
    writeFile(path("d.dcf"),
        survey(item("ROOF", 6, 1) + roofs + item("NAME", 7, 5, "Alpha") + item("LATER", 12, 2)));
    QCOMPARE(
        changes(add("101011ann\n")), QByteArray("0 new, 0 changed, 0 deleted (1 as they were)"));
    QCOMPARE(rows("SELECT LATER FROM HOUSE"), QStringList("-"));
}

// Tables that only a build or an addition needs give way.
void tst_BuildAdd::namedAsWorkingTables()
{
    QByteArray records;
    QByteArray lines;
    char type = 'A';
    for (const char* name : { "TESSEL_ADD_MATCH", "TESSEL_ADD_GONE", "tessel_add_x_path",
             "TESSEL_BATCH_0", "TESSEL_BATCH_1", "TESSEL_BUILD_T3", "TESSEL_BUILD_DUPLICATES" }) {
        records += "[Record]\nLabel=R\nName=" + QByteArray(name) + "\nRecordTypeValue='" + type
            + "'\nRequired=No\nMaxRecords=9\nRecordLen=30\n\n" + item(QByteArray("V") + type, 6, 2);
        lines += type++ + QByteArray("010112\n");
    }
    const QByteArray dictionary =
        survey(item("ROOF", 6, 1) + roofs + item("NAME", 7, 5, "Alpha"), records);
    make("101011ann\n" + lines + "101021bob\n", dictionary);
    QCOMPARE(rows("SELECT VE FROM TESSEL_BATCH_1"), QStringList("12"));
    const QByteArray changed = "101012ann\n" + QByteArray(lines).replace("12\n", "34\n");
    QCOMPARE(changes(add(
                 changed + "101021bob\n101031cat\n" + QByteArray(lines).replace("0101", "0103"))),
        QByteArray("1 new, 1 changed, 0 deleted (1 as they were)"));
    QCOMPARE(
        rows("SELECT VA FROM TESSEL_ADD_MATCH ORDER BY case_id"), (QStringList { "34", "12" }));
    QCOMPARE(build({ path("d.dcf"), path("d.dat") }, "whole").status, 0);
    QCOMPARE(contents(), contents("PLACE, NUMBER", "whole"));
    QCOMPARE(build({ path("d.dcf"), path("d.dat"), "--overwrite" }).status, 0);
}

void tst_BuildAdd::newDictionary_data()
{
    QTest::addColumn<QByteArray>("items");
    QTest::addColumn<QByteArray>("told");
    const QByteArray name = item("NAME", 7, 5, "Alpha");
    const QByteArray roof = item("ROOF", 6, 1);
    QByteArray swapped = roofs;
    swapped.replace("Tiles", "X").replace("Straw", "Tiles").replace("X", "Straw");
    QTest::newRow("variable gone") << QByteArray(roof + roofs) << QByteArray("NAME");
    QTest::newRow("narrower") << QByteArray(roof + roofs + item("NAME", 7, 4, "Alpha"))
                              << QByteArray("NAME");
    QTest::newRow("other type") << QByteArray(roof + roofs + item("NAME", 7, 5))
                                << QByteArray("NAME");
    QTest::newRow("labels swapped") << QByteArray(roof + swapped + name) << QByteArray("ROOF");
    QTest::newRow("code gone") << QByteArray(roof + QByteArray(roofs).replace("Value=2;Straw\n", "")
        + name) << QByteArray("ROOF");
    QTest::newRow("code now missing") << QByteArray(
        roof + QByteArray(roofs).replace("Straw\n", "Straw\nName=MISSING,Special\n") + name)
                                      << QByteArray("ROOF");
}

void tst_BuildAdd::newDictionary()
{
    QFETCH(QByteArray, items);
    QFETCH(QByteArray, told);
    make("101011ann\n");
    const QStringList before = state();
    writeFile(path("d.dcf"), survey(items));
    const Outcome outcome = add("101021bob\n");
    QCOMPARE(outcome.status, 1);
    QVERIFY2(outcome.errors.contains("the dictionary changed"), outcome.errors.constData());
    QVERIFY2(outcome.errors.contains(told), outcome.errors.constData());
    QVERIFY2(outcome.errors.count("\n") > 1 && !outcome.errors.contains("\xE2\x90\x8A"),
        outcome.errors.constData()); // a line each
    QCOMPARE(state(), before);
}

void tst_BuildAdd::optionsOfTheFirst_data()
{
    QTest::addColumn<QStringList>("options");
    QTest::addColumn<QStringList>("further"); // of the addition
    QTest::newRow("variables") << QStringList { "--variables", "SEX,AGE" } << QStringList();
    QTest::newRow("variables again")
        << QStringList { "--variables", "SEX,AGE" } << QStringList { "--variables", "AGE,SEX" };
    QTest::newRow("records") << QStringList { "--records", "PERSON" } << QStringList();
    QTest::newRow("records of both") << QStringList { "--records", "PERSON", "--variables", "SEX" }
                                     << QStringList { "--records", "PERSON" };
    QTest::newRow("repeats") << QStringList { "--repeats", "tables" } << QStringList();
    QTest::newRow("where") << QStringList { "--where", "PROVINCE=11..12" } << QStringList();
    QTest::newRow("where again") << QStringList { "--where", "PROVINCE=11..12" }
                                 << QStringList { "--where", "PROVINCE=11..12" };
    QTest::newRow("sample") << QStringList { "--sample", "0.3", "--seed", "7" } << QStringList();
    QTest::newRow("sample again") << QStringList { "--sample", "0.3", "--seed", "7" }
                                  << QStringList { "--sample", "0.3" };
}

// They hold for what is added, so that two halves make the whole.
void tst_BuildAdd::optionsOfTheFirst()
{
    QFETCH(QStringList, options);
    QFETCH(QStringList, further);
    const QString dictionary = QStringLiteral(TESSEL_EXAMPLES "/census.dcf");
    const QVector<QByteArray> cases = shuffledCases(3);
    QByteArray first;
    QByteArray second;
    for (int c = 0; c < cases.size(); ++c)
        (c % 2 == 0 ? first : second) += cases.at(c);
    writeFile(path("first.dat"), first);
    writeFile(path("second.dat"), second);
    writeFile(path("both.dat"), first + second);
    QCOMPARE(build(options + QStringList { dictionary, path("both.dat") }, "whole").status, 0);
    QCOMPARE(build(options + QStringList { dictionary, path("first.dat") }).status, 0);
    const Outcome outcome =
        build(further + QStringList { "--add", dictionary, path("second.dat") });
    QVERIFY2(outcome.status == 0, outcome.errors.constData());
    QCOMPARE(contents(censusIds), contents(censusIds, "whole"));
}

void tst_BuildAdd::otherOptions_data()
{
    QTest::addColumn<QStringList>("first");
    QTest::addColumn<QStringList>("options");
    QTest::addColumn<QByteArray>("told");
    const auto row = [](const char* name, const QStringList& first, const QStringList& options,
                         const QByteArray& told) {
        QTest::newRow(name) << first << options << told;
    };
    const QByteArray without(" does not fit: the first build was made without it\n");
    row("repeats", {}, { "--repeats", "tables" },
        "--repeats tables does not fit: the first build was made with columns\n");
    row("columns", { "--repeats", "tables" }, { "--repeats", "columns" },
        "--repeats columns does not fit: the first build was made with tables\n");
    row("languages", {}, { "--languages", "all" }, "--languages all" + without);
    row("where", {}, { "--where", "PROVINCE=11" }, "--where PROVINCE=11" + without);
    row("other where", { "--where", "PROVINCE=12" }, { "--where", "PROVINCE=11" },
        "--where PROVINCE=11 does not fit: the first build was made with PROVINCE=12\n");
    row("sample", {}, { "--sample", "0.5" }, "--sample 0.5" + without);
    row("other sample", { "--sample", "0.2" }, { "--sample", "0.5" },
        "--sample 0.5 does not fit: the first build was made with 0.2\n");
    row("seed", { "--sample", "0.2" }, { "--sample", "0.2", "--seed", "4" },
        "--seed 4 does not fit: the first build was made with 1\n");
    row("every", { "--every", "2" }, { "--every", "3" },
        "--every 3 does not fit: the first build was made with 2\n");
    row("records", {}, { "--records", "PERSON" }, "--records PERSON" + without);
    row("other records", { "--records", "PERSON" }, { "--records", "HOUSEHOLD,PERSON" },
        "--records HOUSEHOLD,PERSON does not fit: the first build was made with PERSON\n");
    row("variables", { "--variables", "SEX,AGE" }, { "--variables", "SEX" },
        "--variables of PERSON does not fit: the first build was made with others\n");
    row("no variable", { "--records", "PERSON" }, { "--variables", "SXE" },
        "there is no variable 'SXE' in PERSON; did you mean SEX?\n");
}

void tst_BuildAdd::otherOptions()
{
    QFETCH(QStringList, first);
    QFETCH(QStringList, options);
    QFETCH(QByteArray, told);
    const QStringList census { QStringLiteral(TESSEL_EXAMPLES "/census.dcf"),
        QStringLiteral(TESSEL_EXAMPLES "/census.dat") };
    QCOMPARE(build(census + first).status, 0);
    const QStringList before = state();
    const Outcome outcome = build(census + options + QStringList { "--add" });
    QCOMPARE(outcome.status, 1);
    QVERIFY2(outcome.errors.contains("error: " + told), outcome.errors.constData());
    QVERIFY2(outcome.errors.contains("is as it was: the options of its first build hold"),
        outcome.errors.constData());
    QCOMPARE(state(), before);
}

// Value tables keep the language that the first build chose.
void tst_BuildAdd::languagesOfTheFirst()
{
    writeFile(path("d.dcf"),
        plainSurvey()
            .replace("[Level]", "[Languages]\nEN=English\nFR=French\n\n[Level]")
            .replace("Tiles", "Tiles|Tuiles"));
    writeFile(path("d.dat"), "101011ann\n");
    const QStringList survey { path("d.dcf"), path("d.dat") };
    QCOMPARE(build(survey + QStringList { "--language", "FR" }).status, 0);
    const QStringList before = contents();
    for (const QStringList& options : { QStringList(), QStringList { "--language", "fr" } }) {
        const Outcome outcome = build(survey + options + QStringList { "--add" });
        QVERIFY2(outcome.status == 0, outcome.errors.constData());
        QCOMPARE(contents(), before);
        QCOMPARE(rows("SELECT ROOF FROM HOUSE_labels"), QStringList("Tuiles"));
    }
    const Outcome outcome = build(survey + QStringList { "--language", "EN", "--add" });
    QCOMPARE(outcome.status, 1);
    QVERIFY2(outcome.errors.contains("error: --language EN does not fit: the first build was made "
                                     "with FR\n"),
        outcome.errors.constData());
    QCOMPARE(build(survey + QStringList { "--overwrite" }).status, 0);
    QCOMPARE(build(survey + QStringList { "--language", "EN", "--add" }).status, 0);
    QCOMPARE(build(survey + QStringList { "--language", "FR", "--add" }).status, 1);
    QCOMPARE(build(survey + QStringList { "--languages", "all", "--overwrite" }).status, 0);
    QCOMPARE(build(survey + QStringList { "--add" }).status, 0);
    QCOMPARE(rows("SELECT label_fr FROM ROOF_VS1 ORDER BY code LIMIT 1"), QStringList("Tuiles"));
}

void tst_BuildAdd::refused_data()
{
    QTest::addColumn<QByteArray>("sql"); // of the target; empty: there is none
    QTest::addColumn<QString>("source");
    QTest::addColumn<QByteArray>("told");
    QTest::addColumn<QByteArray>("toldByServer");
    const QString text;
    const QByteArray none("schema \"t\" has no tables of a build");
    QTest::newRow("not there") << QByteArray() << text << QByteArray("is not there") << none;
    QTest::newRow("another program's") << QByteArray("CREATE TABLE cases (id INTEGER)") << text
                                       << QByteArray("was not made by tessel build") << none;
    QTest::newRow("no database") << QByteArray("-") << text << QByteArray("is no SQLite database")
                                 << none;
    QTest::newRow("rows") << QByteArray("CREATE TABLE a (id INTEGER)")
                          << QStringLiteral(TESSEL_EXAMPLES "/person.sav")
                          << QByteArray("has no cases") << QByteArray("has no cases");
}

void tst_BuildAdd::refused()
{
    QFETCH(QByteArray, sql);
    QFETCH(QString, source);
    QFETCH(QByteArray, told);
    QFETCH(QByteArray, toldByServer);
    writeFile(path("d.dcf"), plainSurvey());
    writeFile(path("d.dat"), "101011ann\n");
    if (isServer())
        m_server.ask("CREATE SCHEMA t;");
    if (sql == "-")
        writeFile(path("t.sqlite"), QByteArray(4096, 'x'));
    else if (!sql.isEmpty())
        targets->run("t", sql);
    const QStringList before = state();
    const Outcome outcome = source.isEmpty() ? build({ "--add", path("d.dcf"), path("d.dat") })
                                             : build({ "--add", source });
    QCOMPARE(outcome.status, 1);
    QVERIFY2(outcome.errors.contains(isServer() ? toldByServer : told), outcome.errors.constData());
    QCOMPARE(state(), before);
}

// Only databases of this version's form are added to.
void tst_BuildAdd::otherForm()
{
    make("101011ann\n");
    targets->run("t", "UPDATE tessel_builds SET form = 99");
    const QStringList before = state();
    const Outcome outcome = add("101021bob\n");
    QCOMPARE(outcome.status, 1);
    QVERIFY2(outcome.errors.contains("another version of tessel build (form 99"),
        outcome.errors.constData());
    QCOMPARE(state(), before);
}

QTEST_GUILESS_MAIN(tst_BuildAdd)
#include "tst_BuildAdd.moc"
