// Adds batches to databases with "tessel build --add" and compares them with databases that were
// made of everything at once.
#include "RunTessel.h"

#include <QtTest>

#include <algorithm>
#include <csignal>
#include <random>
#include <sqlite3.h>

namespace {

// An SQLite file that stays open.
class Database {
public:
    explicit Database(const QString& path)
    {
        sqlite3_open(path.toUtf8().constData(), &m_database);
    }
    ~Database()
    {
        sqlite3_close(m_database);
    }

    // Rows as texts with points between the values; an error as its message.
    QStringList rows(const QString& sql) const
    {
        sqlite3_stmt* statement = nullptr;
        if (sqlite3_prepare_v2(m_database, sql.toUtf8().constData(), -1, &statement, nullptr)
            != SQLITE_OK)
            return { QString::fromUtf8(sqlite3_errmsg(m_database)) };
        QStringList found;
        while (sqlite3_step(statement) == SQLITE_ROW) {
            QStringList row;
            for (int c = 0; c < sqlite3_column_count(statement); ++c) {
                const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(statement, c));
                row.append(text ? QString::fromUtf8(text) : QStringLiteral("-"));
            }
            found.append(row.join('|'));
        }
        sqlite3_finalize(statement);
        return found;
    }
    QString value(const QString& sql) const
    {
        return rows(sql).value(0);
    }
    void run(const QByteArray& sql)
    {
        char* message = nullptr;
        sqlite3_exec(m_database, sql.constData(), nullptr, nullptr, &message);
        if (message)
            qFatal("%s: %s", sql.constData(), message);
    }

    bool isLocked() const
    {
        const int result = sqlite3_exec(m_database, "BEGIN IMMEDIATE", nullptr, nullptr, nullptr);
        return result == SQLITE_BUSY;
    }

private:
    Q_DISABLE_COPY(Database)

    sqlite3* m_database = nullptr;
};

// All that a database holds of cases, by their identification.
QStringList contentsOf(const QString& path, const QString& ids)
{
    const Database database(path);
    QStringList contents = database.rows("PRAGMA integrity_check");
    const QString order = " ORDER BY " + ids + ", content";
    contents += database.rows("SELECT uuid, records, partly_saved, duplicate_of IS NULL, content, "
        + ids + " FROM cases" + order);
    for (const QString& table : database.rows("SELECT table_name FROM tessel_records")) {
        QStringList columns;
        for (const QString& column : database.rows(
                 "SELECT name FROM pragma_table_info('" + table + "') WHERE cid > 0 ORDER BY name"))
            columns.append("t.\"" + column + '"');
        contents += database.rows("SELECT " + columns.join(',') + " FROM \"" + table
            + "\" t ORDER BY " + columns.join(','));
        // Every row is of a case of its identification.
        contents += database.rows(
            "SELECT count(*) FROM \"" + table + "\" t JOIN cases USING (case_id, " + ids + ")");
    }
    for (const char* table : { "tessel_records", "tessel_variables", "tessel_values" })
        contents +=
            database.rows(QStringLiteral("SELECT * FROM ") + table + " ORDER BY 1, 2, 3, 4");
    contents += database.rows("SELECT type, name, tbl_name FROM sqlite_master ORDER BY 1, 2");
    contents += database.rows("SELECT kind, case_key, record, variable, value FROM tessel_problems "
                              "ORDER BY 1, 2, 3, 4, 5");
    contents += database.rows("SELECT reason, text FROM tessel_rejects ORDER BY 1, 2");
    return contents;
}

QByteArray item(const QByteArray& name, int start, int length, const QByteArray& type = "Numeric")
{
    return "[Item]\nLabel=" + name + "\nName=" + name + "\nStart=" + QByteArray::number(start)
        + "\nLen=" + QByteArray::number(length) + "\nDataType=" + type + "\n\n";
}

QByteArray survey(const QByteArray& items, const QByteArray& records = QByteArray())
{
    return "[Dictionary]\nVersion=CSPro 7.7\nLabel=S\nName=S\nRecordTypeStart=1\n"
           "RecordTypeLen=1\nPositions=Relative\nZeroFill=No\nDecimalChar=No\n\n"
           "[Level]\nLabel=Q\nName=Q\n\n[IdItems]\n\n"
        + item("PLACE", 2, 2) + item("NUMBER", 4, 2)
        + "[Record]\nLabel=House\nName=HOUSE\nRecordTypeValue='1'\nMaxRecords=1\nRecordLen=30\n\n"
        + items
        + "[Record]\nLabel=Person\nName=PERSON\nRecordTypeValue='2'\nRequired=No\nMaxRecords=9\n"
          "RecordLen=30\n\n"
        + item("AGE", 6, 3) + records;
}

const QByteArray roofs = "[ValueSet]\nLabel=Roof\nName=ROOF_VS1\nValue=1;Tiles\nValue=2;Straw\n\n";

QByteArray plainSurvey()
{
    return survey(item("ROOF", 6, 1) + roofs + item("NAME", 7, 5, "Alpha"));
}

// A CSPro DB of schema 2. Rows: UUID, deleted, partly saved, lines.
struct DbCase {
    QByteArray uuid;
    QByteArray lines;
    bool isDeleted = false;
    bool isPartlySaved = false;
};

void writeDb(const QString& path, const QVector<DbCase>& cases)
{
    QFile::remove(path);
    Database database(path);
    database.run("CREATE TABLE meta (schema_version INTEGER, cspro_version TEXT, dictionary TEXT);"
                 "INSERT INTO meta VALUES (2, '7.7', '"
        + plainSurvey().replace("'", "''")
        + "');CREATE TABLE cases (id TEXT, key TEXT, label TEXT, questionnaire TEXT, deleted "
          "INTEGER, file_order REAL UNIQUE, partial_save_mode TEXT);");
    for (int c = 0; c < cases.size(); ++c) {
        const DbCase& one = cases.at(c);
        database.run("INSERT INTO cases VALUES ('" + one.uuid + "', '" + one.lines.mid(1, 4)
            + "', '', '" + one.lines + "', " + (one.isDeleted ? "1" : "0") + ", "
            + QByteArray::number(c) + ", " + (one.isPartlySaved ? "'add'" : "NULL") + ");");
    }
}

} // namespace

class tst_BuildAdd : public QObject {
    Q_OBJECT

private slots:
    void init();
    void tenBatches_data();
    void tenBatches();
    void killed();
    void textCases();
    void duplicates();
    void sameIdentificationTwice();
    void rejects();
    void csproDb();
    void uuidsMeetText();
    void otherIdentification();
    void newColumns();
    void newDictionary_data();
    void newDictionary();
    void repeatTables();
    void refused_data();
    void refused();
    void locked();
    void alreadyMade();
    void fullDisk_data();
    void fullDisk();
    void othersRead();
    void stopped();

private:
    QString path(const QString& name) const
    {
        return m_folder->filePath(name);
    }
    QString target() const
    {
        return path("t.sqlite");
    }
    Outcome build(const QStringList& arguments, const QByteArray& input = {}) const
    {
        return runTessel(QStringList { "build", "--to", target() } + arguments, input);
    }
    Outcome add(const QByteArray& lines, const QString& name = "d.dat") const
    {
        writeFile(path(name), lines);
        return build({ "--add", path("d.dcf"), path(name) });
    }
    // Makes the first database.
    void make(const QByteArray& lines, const QByteArray& dictionary = plainSurvey()) const
    {
        writeFile(path("d.dcf"), dictionary);
        writeFile(path("first.dat"), lines);
        const Outcome outcome = build({ path("d.dcf"), path("first.dat"), "--overwrite" });
        QVERIFY2(outcome.status == 0, outcome.errors.constData());
    }
    QStringList rows(const QString& sql) const
    {
        return Database(target()).rows(sql);
    }
    // Whether another program keeps others from writing.
    bool isLocked() const
    {
        return Database(target()).isLocked();
    }
    QStringList leftBehind() const
    {
        return QDir(m_folder->path()).entryList({ "*t.sqlite*" }, QDir::Files | QDir::Hidden);
    }
    // More than a pipe holds.
    static QByteArray manyLines()
    {
        return QByteArray("101021abcd\n").repeated(100'000);
    }
    static QByteArray firstLine(const Outcome& outcome)
    {
        const QByteArray line = outcome.output.left(outcome.output.indexOf('\n'));
        return outcome.status == 0 ? line.mid(line.lastIndexOf(": ") + 2) : outcome.errors;
    }

    std::unique_ptr<QTemporaryDir> m_folder;
};

void tst_BuildAdd::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
}

// The cases of the example, in an order of their own.
QVector<QByteArray> shuffledCases(unsigned seed)
{
    constexpr int end = 14; // of the identification
    QByteArray text = readFile(QStringLiteral(TESSEL_EXAMPLES "/census.dat"));
    text.remove(0, text.startsWith("\xEF\xBB\xBF") ? 3 : 0);
    QVector<QByteArray> cases;
    QByteArray key;
    for (const QByteArray& line : text.split('\n')) {
        if (line.trimmed().isEmpty())
            continue;
        if (line.mid(1, end - 2) != key)
            cases.append(QByteArray());
        key = line.mid(1, end - 2);
        cases.last() += line + '\n';
    }
    std::shuffle(cases.begin(), cases.end(), std::mt19937(seed));
    return cases;
}

const QString censusIds = QStringLiteral("PROVINCE, DISTRICT, EA, HOUSEHOLD_NUMBER");

void tst_BuildAdd::tenBatches_data()
{
    QTest::addColumn<QStringList>("options");
    QTest::newRow("columns") << QStringList();
    QTest::newRow("repeat tables") << QStringList { "--repeats", "tables" };
    QTest::newRow("languages") << QStringList { "--languages", "all" };
}

void tst_BuildAdd::tenBatches()
{
    QFETCH(QStringList, options);
    const QString dictionary = QStringLiteral(TESSEL_EXAMPLES "/census.dcf");
    const QString whole = path("whole.sqlite");
    QCOMPARE(runTessel(QStringList { "build", dictionary,
                           QStringLiteral(TESSEL_EXAMPLES "/census.dat"), "--to", whole }
                 + options)
                 .status,
        0);
    const QVector<QByteArray> cases = shuffledCases(14);
    int all = 0;
    for (int batch = 0; batch < 10; ++batch) {
        const int first = cases.size() * batch / 10;
        const int count = cases.size() * (batch + 1) / 10 - first;
        QByteArray lines;
        for (const QByteArray& one : cases.mid(first, count))
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
    QCOMPARE(contentsOf(target(), censusIds), contentsOf(whole, censusIds));
    QCOMPARE(rows("SELECT count(*), sum(new_cases), max(build_id) FROM tessel_builds"),
        QStringList(QStringLiteral("10|%1|10").arg(cases.size())));
    QCOMPARE(rows("SELECT group_concat(build_id) FROM tessel_sources"),
        QStringList("1,2,3,4,5,6,7,8,9,10"));
}

// A batch that is killed while it changes the database leaves the former state, and repeated the
// same as without.
void tst_BuildAdd::killed()
{
    make("10101 1ann\n20101 30\n");
    QByteArray lines = "101011bob\n";
    for (int i = 0; i < 8100; ++i) {
        const QByteArray id = QByteArray::number(1010 + i / 90 * 100 + i % 90);
        lines += '1' + id + "1abc\n";
        for (int person = 10; person < 14; ++person)
            lines += '2' + id + ' ' + QByteArray::number(person) + '\n';
    }
    writeFile(path("big.dat"), lines);
    const QStringList before = contentsOf(target(), "PLACE, NUMBER");
    QProcess process;
    process.start(QStringLiteral(TESSEL_PROGRAM),
        { "build", "--add", path("d.dcf"), path("big.dat"), "--to", target() });
    QVERIFY(process.waitForStarted());
    const QString journal = target() + "-journal";
    while (QFileInfo(journal).size() == 0 && process.state() == QProcess::Running)
        process.waitForFinished(1);
    process.kill();
    QVERIFY(process.waitForFinished());
    QCOMPARE(process.exitStatus(), QProcess::CrashExit);
    QCOMPARE(leftBehind(), (QStringList { "t.sqlite", "t.sqlite-journal" }));
    for (const char* name : { "copy.sqlite", "other.sqlite" }) {
        QFile::copy(target(), path(name));
        QFile::copy(journal, path(name + QString("-journal")));
    }
    QCOMPARE(contentsOf(path("copy.sqlite"), "PLACE, NUMBER"), before);
    const Outcome replaced = runTessel(
        { "build", path("d.dcf"), path("first.dat"), "--overwrite", "--to", path("other.sqlite") });
    QVERIFY2(replaced.status == 0, replaced.errors.constData());
    QCOMPARE(contentsOf(path("other.sqlite"), "PLACE, NUMBER"), before);
    const Outcome again = build({ "--add", path("d.dcf"), path("big.dat") });
    QVERIFY2(again.status == 0, again.errors.constData());
    QCOMPARE(leftBehind(), QStringList("t.sqlite"));
    const QStringList added = contentsOf(target(), "PLACE, NUMBER");
    QCOMPARE(build({ path("d.dcf"), path("big.dat"), "--overwrite" }).status, 0);
    QCOMPARE(added, contentsOf(target(), "PLACE, NUMBER"));
}

void tst_BuildAdd::textCases()
{
    make("101011ann\n20101 30\n20101 31\n101022bob\n101032cat\n");
    const QByteArray batch = "101022bob\n101031cat\n20103 50\n102011dan\n";
    QCOMPARE(firstLine(add(batch)), QByteArray("1 new, 1 changed, 0 deleted (1 as they were)"));
    QCOMPARE(rows("SELECT PLACE, NUMBER, ROOF, NAME FROM HOUSE ORDER BY case_id"),
        (QStringList { "1|1|1|ann", "1|2|2|bob", "1|3|1|cat", "2|1|1|dan" }));
    QCOMPARE(rows("SELECT case_id, row, AGE FROM PERSON ORDER BY 1, 2"),
        (QStringList { "1|1|30", "1|2|31", "3|1|50" }));
    QCOMPARE(rows("SELECT case_id, source_id, line, records FROM cases"),
        (QStringList { "1|1|1|3", "2|1|4|1", "3|2|2|2", "4|2|4|1" }));
    QCOMPARE(rows("SELECT table_name, row_count FROM tessel_records"),
        (QStringList { "HOUSE|4", "PERSON|3" }));
    QCOMPARE(rows("SELECT build_id, cases, new_cases, changed_cases, unchanged_cases, "
                  "withdrawn_cases FROM tessel_builds"),
        (QStringList { "1|3|3|0|0|0", "2|3|1|1|1|0" }));
    const QStringList before = contentsOf(target(), "PLACE, NUMBER");
    QCOMPARE(firstLine(add(batch)), QByteArray("0 new, 0 changed, 0 deleted (3 as they were)"));
    QCOMPARE(contentsOf(target(), "PLACE, NUMBER"), before);
}

void tst_BuildAdd::duplicates()
{
    make("101011ann\n");
    const QByteArray batch = "102011ann\n102021bob\n102011cat\n102031fay\n102011dan\n";
    QCOMPARE(firstLine(add(batch)), QByteArray("5 new, 0 changed, 0 deleted (0 as they were)"));
    const QString cases =
        "SELECT case_id, duplicate_of, NUMBER FROM cases WHERE PLACE = 2 ORDER BY case_id";
    const QStringList marked { "2|-|1", "3|-|2", "4|2|1", "5|-|3", "6|2|1" };
    QCOMPARE(rows(cases), marked);
    QCOMPARE(rows("SELECT kind, case_id, first_case_id FROM tessel_problems"),
        (QStringList { "duplicate-case|4|2", "duplicate-case|6|2" }));
    const QStringList before = contentsOf(target(), "PLACE, NUMBER");
    QCOMPARE(firstLine(add(batch)), QByteArray("0 new, 0 changed, 0 deleted (5 as they were)"));
    QCOMPARE(contentsOf(target(), "PLACE, NUMBER"), before);
    // One of them alone is known by its content.
    QCOMPARE(
        firstLine(add("102011dan\n")), QByteArray("0 new, 0 changed, 0 deleted (1 as they were)"));
    QCOMPARE(firstLine(add("102011ann\n102031fay\n102011cat\n102021bob\n102011eve\n")),
        QByteArray("0 new, 1 changed, 0 deleted (4 as they were)"));
    QCOMPARE(rows(cases), marked);
    QCOMPARE(rows("SELECT NAME FROM HOUSE ORDER BY case_id"),
        (QStringList { "ann", "ann", "bob", "cat", "fay", "eve" }));
}

// A blank identification names no case, so that none of them is replaced.
void tst_BuildAdd::sameIdentificationTwice()
{
    make("1    1ann\n");
    QCOMPARE(
        firstLine(add("1    1bob\n")), QByteArray("1 new, 0 changed, 0 deleted (0 as they were)"));
    QCOMPARE(
        firstLine(add("1    1ann\n")), QByteArray("0 new, 0 changed, 0 deleted (1 as they were)"));
    QCOMPARE(rows("SELECT NAME FROM HOUSE ORDER BY 1"), (QStringList { "ann", "bob" }));
}

void tst_BuildAdd::rejects()
{
    make("101011ann\n9lost\n10xx1no\n");
    QCOMPARE(add("101011ann\n9lost\n9more\n", "first.dat").status, 0);
    const QStringList lines { "10xx1no", "9lost", "9more" };
    QCOMPARE(rows("SELECT text FROM tessel_rejects ORDER BY 1"), lines);
    QCOMPARE(add("101011ann\n9lost\n9more\n", "other.dat").status, 0);
    QCOMPARE(rows("SELECT text FROM tessel_rejects ORDER BY 1"), lines);
    QCOMPARE(rows("SELECT value FROM tessel_problems WHERE case_id IS NULL ORDER BY 1"), lines);
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
    QCOMPARE(firstLine(build({ "--add", db })),
        QByteArray("2 new, 2 changed, 2 deleted (1 as they were)"));
    QCOMPARE(rows("SELECT uuid, NUMBER, partly_saved, duplicate_of FROM cases ORDER BY uuid"),
        (QStringList { "u1|1|0|-", "u2|2|0|-", "u3|3|0|-", "u6|6|0|-", "u7|4|0|-" }));
    QCOMPARE(rows("SELECT NAME, ROOF FROM HOUSE ORDER BY 1"),
        (QStringList { "ann|1", "bob|1", "cat|2", "fay|1", "new|1" }));
    QCOMPARE(rows("SELECT kind FROM tessel_problems"), QStringList());
    const QStringList before = contentsOf(target(), "PLACE, NUMBER");
    QCOMPARE(firstLine(build({ "--add", db })),
        QByteArray("0 new, 0 changed, 0 deleted (5 as they were)"));
    QCOMPARE(contentsOf(target(), "PLACE, NUMBER"), before);
    // What another file lacks is not gone.
    writeDb(path("other.csdb"), { { "u9", "102011gus" } });
    QCOMPARE(firstLine(build({ "--add", path("other.csdb") })),
        QByteArray("1 new, 0 changed, 0 deleted (0 as they were)"));
    QCOMPARE(rows("SELECT count(*) FROM cases"), QStringList("6"));
    // Nor is what a part leaves out.
    QCOMPARE(firstLine(build({ "--add", db, "--where", "NUMBER=1" })),
        QByteArray("0 new, 0 changed, 0 deleted (1 as they were)"));
}

void tst_BuildAdd::uuidsMeetText()
{
    make("101011ann\n101021bob\n101031cat\n");
    writeDb(path("s.csdb"),
        { { "u1", "101011ann" }, { "u2", "101022bob" }, { "u3", "101031cat", true } });
    QCOMPARE(firstLine(build({ "--add", path("s.csdb") })),
        QByteArray("0 new, 1 changed, 1 deleted (1 as they were)"));
    QCOMPARE(rows("SELECT uuid, NUMBER FROM cases ORDER BY 1"), (QStringList { "u1|1", "u2|2" }));
    QCOMPARE(
        firstLine(add("101012ann\n")), QByteArray("0 new, 1 changed, 0 deleted (0 as they were)"));
    QCOMPARE(rows("SELECT uuid, NUMBER FROM cases ORDER BY 1"), (QStringList { "u1|1", "u2|2" }));
    // Another UUID is another case, which repeats the identification.
    writeDb(path("o.csdb"), { { "u8", "101011oli" } });
    QCOMPARE(firstLine(build({ "--add", path("o.csdb") })),
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
    QCOMPARE(rows("SELECT uuid, duplicate_of FROM cases"), (QStringList { "u1|-", "u2|1" }));
    writeDb(db, { { "u1", "101011ann" }, { "u2", "101021bob" } });
    QCOMPARE(firstLine(build({ "--add", db })),
        QByteArray("0 new, 1 changed, 0 deleted (1 as they were)"));
    QCOMPARE(rows("SELECT case_id, uuid, NUMBER, duplicate_of FROM cases"),
        (QStringList { "1|u1|1|-", "2|u2|2|-" }));
    QCOMPARE(rows("SELECT NUMBER, NAME FROM HOUSE ORDER BY 1"), (QStringList { "1|ann", "2|bob" }));
    QCOMPARE(rows("SELECT count(*) FROM tessel_problems"), QStringList("0"));
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
    QCOMPARE(firstLine(add("10101 41ann\n10102 73beatrix\n3010212\n")),
        QByteArray("1 new, 1 changed, 0 deleted (0 as they were)"));
    QCOMPARE(rows("SELECT NUMBER, ROOMS, ROOF, NAME FROM HOUSE_labels ORDER BY 1"),
        (QStringList { "1|4|Tiles|ann", "2|7|Slate|beatrix" }));
    QCOMPARE(rows("SELECT case_id, MILK FROM COW_valid"), QStringList("2|12"));
    QCOMPARE(rows("SELECT code, label FROM ROOF_VS1 ORDER BY 1"),
        (QStringList { "1|Tiles", "2|Thatch", "3|Slate" }));
    QCOMPARE(
        rows("SELECT name FROM sqlite_master WHERE name = 'COW_case'"), QStringList("COW_case"));
    QCOMPARE(
        runTessel({ "build", path("d.dcf"), path("d.dat"), "--to", path("whole.sqlite") }).status,
        0);
    QCOMPARE(
        contentsOf(target(), "PLACE, NUMBER"), contentsOf(path("whole.sqlite"), "PLACE, NUMBER"));
    // New variables without values change no case.
    writeFile(path("d.dcf"), plainSurvey());
    make("101011ann\n");
    writeFile(path("d.dcf"),
        survey(item("ROOF", 6, 1) + roofs + item("NAME", 7, 5, "Alpha") + item("LATER", 12, 2)));
    QCOMPARE(
        firstLine(add("101011ann\n")), QByteArray("0 new, 0 changed, 0 deleted (1 as they were)"));
    QCOMPARE(rows("SELECT LATER FROM HOUSE"), QStringList("-"));
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
    const QByteArray before = readFile(target());
    writeFile(path("d.dcf"), survey(items));
    const Outcome outcome = add("101021bob\n");
    QCOMPARE(outcome.status, 1);
    QVERIFY2(outcome.errors.contains("the dictionary changed"), outcome.errors.constData());
    QVERIFY2(outcome.errors.contains(told), outcome.errors.constData());
    QCOMPARE(readFile(target()), before);
}

// What the first build chose holds for all.
void tst_BuildAdd::repeatTables()
{
    const QString dictionary = QStringLiteral(TESSEL_EXAMPLES "/census.dcf");
    const QString data = QStringLiteral(TESSEL_EXAMPLES "/census.dat");
    QCOMPARE(build({ dictionary, data }).status, 0);
    const QByteArray before = readFile(target());
    const Outcome outcome = build({ dictionary, data, "--add", "--repeats", "tables" });
    QCOMPARE(outcome.status, 1);
    QVERIFY2(outcome.errors.contains("HOUSEHOLD.ASSET_1 would get no values"),
        outcome.errors.constData());
    QCOMPARE(readFile(target()), before);
}

void tst_BuildAdd::refused_data()
{
    QTest::addColumn<QByteArray>("sql"); // of the target; empty: there is none
    QTest::addColumn<QString>("source");
    QTest::addColumn<QByteArray>("told");
    const QString text;
    QTest::newRow("not there") << QByteArray() << text << QByteArray("is not there");
    QTest::newRow("another program's") << QByteArray("CREATE TABLE cases (id)") << text
                                       << QByteArray("was not made by tessel build");
    QTest::newRow("no database") << QByteArray("-") << text << QByteArray("is no SQLite database");
    QTest::newRow("rows") << QByteArray("CREATE TABLE a (id)")
                          << QStringLiteral(TESSEL_EXAMPLES "/person.sav")
                          << QByteArray("has no cases");
}

void tst_BuildAdd::refused()
{
    QFETCH(QByteArray, sql);
    QFETCH(QString, source);
    QFETCH(QByteArray, told);
    writeFile(path("d.dcf"), plainSurvey());
    writeFile(path("d.dat"), "101011ann\n");
    if (sql == "-")
        writeFile(target(), QByteArray(4096, 'x'));
    else if (!sql.isEmpty())
        Database(target()).run(sql);
    const QByteArray before = readFile(target());
    const Outcome outcome = source.isEmpty() ? build({ "--add", path("d.dcf"), path("d.dat") })
                                             : build({ "--add", source });
    QCOMPARE(outcome.status, 1);
    QVERIFY2(outcome.errors.contains(told), outcome.errors.constData());
    QCOMPARE(readFile(target()), before);
    QCOMPARE(QFile::exists(target()), !sql.isEmpty());
}

void tst_BuildAdd::locked()
{
    make("101011ann\n");
    Database other(target());
    other.run("BEGIN IMMEDIATE");
    const Outcome outcome = add("101021bob\n");
    QCOMPARE(outcome.status, 1);
    QVERIFY2(outcome.errors.contains("is in use by another program"), outcome.errors.constData());
    other.run("ROLLBACK");
    QCOMPARE(add("101021bob\n").status, 0);
    // A database of another form is none of this version.
    other.run("UPDATE tessel_builds SET form = 99");
    const Outcome later = add("101021bob\n");
    QCOMPARE(later.status, 1);
    QVERIFY2(later.errors.contains("another version of tessel build (form 99"),
        later.errors.constData());
}

// Another build that is about to take its place has the right of way; a dead one has not.
void tst_BuildAdd::alreadyMade()
{
    make("101011ann\n");
    QProcess process;
    process.start(QStringLiteral(TESSEL_PROGRAM),
        { "build", "--overwrite", path("d.dcf"), "-", "--to", target() });
    QVERIFY(process.waitForStarted());
    process.write(manyLines());
    QTRY_VERIFY(process.bytesToWrite() == 0); // the data are read
    const Outcome outcome = add("101021bob\n");
    QCOMPARE(outcome.status, 1);
    QVERIFY2(outcome.errors.contains("is being made by another build"), outcome.errors.constData());
    process.kill();
    QVERIFY(process.waitForFinished());
    QCOMPARE(leftBehind(), (QStringList { ".t.sqlite.tessel-build", "t.sqlite" }));
    QCOMPARE(add("101021bob\n").status, 0);
    QCOMPARE(leftBehind(), QStringList("t.sqlite"));
}

void tst_BuildAdd::fullDisk_data()
{
    QTest::addColumn<int>("before"); // cases of the first build
    QTest::addColumn<int>("added");
    QTest::newRow("while it is read") << 1000 << 100'000;
    QTest::newRow("while it is merged") << 20'000 << 20'000;
}

// The limit of the size of files stands for the end of the disk.
void tst_BuildAdd::fullDisk()
{
    QFETCH(int, before);
    QFETCH(int, added);
    const auto lines = [](int from, int count) {
        QByteArray text;
        for (int i = from; i < from + count; ++i)
            text += "1" + QByteArray::number(100'000'000 + i).mid(1) + "1abcdefghij\n";
        return text;
    };
    QByteArray dictionary = survey(item("ROOF", 10, 1) + item("NAME", 11, 10, "Alpha"));
    dictionary.replace("Start=4\nLen=2", "Start=4\nLen=6");
    make(lines(0, before), dictionary);
    const qint64 size = QFileInfo(target()).size();
    const QStringList contents = contentsOf(target(), "PLACE, NUMBER");
    writeFile(path("d.dat"), lines(before, added));
    const qint64 limit = (before > added / 2 ? size + size / 4 : 3'000'000) / 1024;
    const Outcome outcome = runProgram("bash",
        { "-c", "ulimit -f " + QString::number(limit) + "; exec \"$@\"", "bash",
            QStringLiteral(TESSEL_PROGRAM), "build", "--add", path("d.dcf"), path("d.dat"), "--to",
            target() });
    QCOMPARE(outcome.status, 1);
    QVERIFY2(outcome.errors.contains("cannot be written"), outcome.errors.constData());
    QCOMPARE(contentsOf(target(), "PLACE, NUMBER"), contents);
    QCOMPARE(leftBehind(), QStringList("t.sqlite"));
    QCOMPARE(build({ "--add", path("d.dcf"), path("d.dat") }).status, 0);
    QCOMPARE(rows("SELECT count(*) FROM cases"), QStringList(QString::number(before + added)));
}

// They see the former state until the batch is whole.
void tst_BuildAdd::othersRead()
{
    make("101011ann\n");
    QProcess process;
    process.start(
        QStringLiteral(TESSEL_PROGRAM), { "build", "--add", path("d.dcf"), "-", "--to", target() });
    QVERIFY(process.waitForStarted());
    QTRY_VERIFY(isLocked());
    process.write("101021bob\n");
    QCOMPARE(rows("SELECT count(*) FROM cases"), QStringList("1"));
    const Outcome second = add("101031cat\n");
    QCOMPARE(second.status, 1);
    QVERIFY2(second.errors.contains("is in use by another program"), second.errors.constData());
    const Outcome replacing = build({ path("d.dcf"), path("d.dat"), "--overwrite" });
    QCOMPARE(replacing.status, 1);
    QVERIFY2(replacing.errors.contains("is open in another program"), replacing.errors.constData());
    process.closeWriteChannel();
    QVERIFY(process.waitForFinished());
    QCOMPARE(process.exitCode(), 0);
    QCOMPARE(rows("SELECT count(*) FROM cases"), QStringList("2"));
    QCOMPARE(leftBehind(), QStringList("t.sqlite"));
}

void tst_BuildAdd::stopped()
{
    make("101011ann\n");
    const QByteArray before = readFile(target());
    QProcess process;
    process.start(
        QStringLiteral(TESSEL_PROGRAM), { "build", "--add", path("d.dcf"), "-", "--to", target() });
    QVERIFY(process.waitForStarted());
    process.write(manyLines());
    QTRY_VERIFY(process.bytesToWrite() == 0);
    QTRY_VERIFY(isLocked());
    ::kill(pid_t(process.processId()), SIGINT);
    process.write(manyLines());
    process.closeWriteChannel();
    QVERIFY(process.waitForFinished());
    QCOMPARE(process.exitStatus(), QProcess::NormalExit);
    QCOMPARE(process.exitCode(), 1);
    QVERIFY(process.readAllStandardError().contains("is as it was: the build was stopped"));
    QCOMPARE(readFile(target()), before);
    QCOMPARE(leftBehind(), QStringList("t.sqlite"));
}

QTEST_GUILESS_MAIN(tst_BuildAdd)
#include "tst_BuildAdd.moc"
