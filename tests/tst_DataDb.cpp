#include "DataRows.h"

#include <tessel_data/CSProDbSource.h>
#include <tessel_data/DataError.h>

#include <QDir>

#include <sqlite3.h>

using namespace tessel;

namespace {

// An SQLite file that stays open for more statements.
class Database {
public:
    explicit Database(const QString& path)
    {
        QFile::remove(path);
        sqlite3_open(path.toUtf8().constData(), &m_database);
    }
    ~Database()
    {
        sqlite3_close(m_database);
    }
    void run(const QByteArray& sql)
    {
        char* message = nullptr;
        sqlite3_exec(m_database, sql.constData(), nullptr, nullptr, &message);
        if (message)
            qFatal("%s: %s", sql.constData(), message);
    }

private:
    sqlite3* m_database = nullptr;
};

QByteArray metaSql(const char* version)
{
    return QByteArray("CREATE TABLE meta (schema_version INTEGER, cspro_version TEXT, dictionary "
                      "TEXT);INSERT INTO meta VALUES (")
        + version + ", '8.0', '" + surveyDictionary().replace("'", "''") + "');";
}

const char casesSql[] = "CREATE TABLE cases (id TEXT, key TEXT, label TEXT, questionnaire TEXT, "
                        "deleted INTEGER, file_order REAL UNIQUE, partial_save_mode TEXT);";

const char tablesSql[] =
    "CREATE TABLE `level-1` (`level-1-id` INTEGER PRIMARY KEY, `case-id` TEXT, place INTEGER, "
    "number INTEGER);CREATE UNIQUE INDEX i0 ON `level-1`(`case-id`);"
    "CREATE TABLE house (`house-id` INTEGER PRIMARY KEY, `level-1-id` INTEGER, rooms INTEGER, "
    "weight REAL, kind TEXT);CREATE INDEX i1 ON house(`level-1-id`);"
    "CREATE TABLE person (`person-id` INTEGER PRIMARY KEY, `level-1-id` INTEGER, occ INTEGER, "
    "age INTEGER, name TEXT, first TEXT);CREATE INDEX i2 ON person(`level-1-id`);";

const char rowsSql[] =
    "INSERT INTO cases VALUES ('u2', '0102', '', '', 0, 2.0, 'add'), "
    "('u1', '0101', '', '', 0, 1.0, NULL), ('u3', '0101', '', '', 1, 3.0, NULL);"
    "INSERT INTO `level-1` VALUES (1, 'u1', 1, 1), (2, 'u2', 1, 2), (3, 'u3', 1, 1);"
    "INSERT INTO house VALUES (1, 1, 3, 12.34, 'A '), (2, 2, 6, 1e51, 'CC'), (3, 3, 1, 1, 'A');"
    "INSERT INTO person VALUES (2, 1, 2, 999, 'Zoë   ', 'Zo'), (1, 1, 1, NULL, NULL, NULL), "
    "(3, 2, 1, 'old', 'Bob', 'Bo'), (4, 2, 2, 1.5, 'Al', 'Al');";

int codeOf(const QString& path)
{
    try {
        CSProDbSource source(path);
        RowCollector rows(source.dictionary());
        runPipeline(source, rows);
    } catch (const DataError& error) {
        return int(error.code);
    }
    return -1;
}

} // namespace

class TestDataDb : public QObject {
    Q_OBJECT

private slots:
    void tables();
    void text();
    void anotherDictionary();
    void orphans();
    void leavesNothing();
    void errors_data();
    void errors();
    void busy();

private:
    QString path(const char* name) const
    {
        return m_folder.filePath(QLatin1String(name));
    }
    QTemporaryDir m_folder;
};

void TestDataDb::tables()
{
    Database(path("t.csdb")).run(metaSql("3") + casesSql + tablesSql + rowsSql);
    CSProDbSource source(path("t.csdb"));
    RowCollector rows(source.dictionary());
    QVERIFY(runPipeline(source, rows));
    QCOMPARE(rows.rows,
        (QStringList { "0 1 HOUSE: 1 1 3 12.34 \"A\"", "0 1 PERSON: 1 1 N- - -",
            "0 1 PERSON: 1 1 M999 \"Zoë\" \"Zo\"", "1 2 HOUSE: 1 2 ?6 M- ?\"CC\"",
            "1 2 PERSON: 1 2 !old \"Bob\" \"Bo\"", "1 2 PERSON: 1 2 ~1.5 \"Al\" \"Al\"" }));
    QCOMPARE(rows.keys, (QStringList { "0101", "0102" }));
    const SourceCounts counts = source.counts();
    QVERIFY(counts.addUp());
    QCOMPARE(counts.casesRead, 3LL);
    QCOMPARE(counts.deletedCases, 1LL);
    QCOMPARE(counts.partlySavedCases, 1LL);
    QCOMPARE(counts.records, 6LL);
    QCOMPARE(source.size(), 3LL);
}

void TestDataDb::text()
{
    Database(path("x.csdb"))
        .run(metaSql("2") + casesSql
            + "INSERT INTO cases VALUES ('u1', '0101', '', '10101 3 1234A \r\n20101   Zoë\r\n', 0, "
              "1.0, NULL), ('u2', '0102', '', '10102 1\r\n90102\r\n\r\n', 0, 2.0, 'add'), "
              "('u3', '0103', '', '10103 1', 1, 3.0, NULL);");
    CSProDbSource source(path("x.csdb"));
    RowCollector rows(source.dictionary());
    QVERIFY(runPipeline(source, rows));
    QCOMPARE(rows.rows,
        (QStringList { "0 1 HOUSE: 1 1 3 12.34 \"A\"", "0 1 PERSON: 1 1 N- \"Zoë\" \"Zo\"",
            "1 2 HOUSE: 1 2 1 - -" }));
    QCOMPARE(rows.told, QStringList { QStringLiteral("2:0") });
    QVERIFY(source.counts().addUp());
    QCOMPARE(source.counts().blankLines, 1LL);
    QCOMPARE(source.counts().partlySavedCases, 1LL);
}

void TestDataDb::anotherDictionary()
{
    Database(path("a.csdb")).run(metaSql("3") + casesSql + tablesSql + rowsSql);
    QByteArray dictionary = surveyDictionary();
    dictionary.replace("Value=7 9;Odd", "Value=6 9;Odd");
    const QString other = writeFile(m_folder, QStringLiteral("other.dcf"), dictionary);
    CSProDbSource source(path("a.csdb"), DataDictionary::fromFile(other));
    RowCollector rows(source.dictionary());
    QVERIFY(runPipeline(source, rows));
    QVERIFY2(rows.rows.at(3).contains(QStringLiteral(" 6 ")), qPrintable(rows.rows.at(3)));
}

void TestDataDb::orphans()
{
    Database(path("o.csdb"))
        .run(metaSql("3") + casesSql + tablesSql + rowsSql
            + "INSERT INTO person VALUES (9, 77, 1, 1, '', '');"
              "INSERT INTO cases VALUES ('u4', '0104', '', '', 0, 4.0, NULL);"
              "INSERT INTO `level-1` VALUES (8, 'gone', 1, 1);");
    CSProDbSource source(path("o.csdb"));
    Checker checker(source.dictionary());
    QVERIFY(runPipeline(source, checker));
    const CheckReport& report = checker.report();
    QCOMPARE(report.problemCount(ProblemKind::DamagedRecord), 3LL);
    QCOMPARE(report.counts.rejectedLines, 3LL);
    QVERIFY(report.addsUp);
    QVERIFY(!report.isClean());
}

void TestDataDb::leavesNothing()
{
    const QTemporaryDir folder;
    const QString file = folder.filePath(QStringLiteral("n ö?%41.csdb"));
    {
        Database database(file);
        database.run("PRAGMA journal_mode = WAL;" + metaSql("3") + casesSql + tablesSql + rowsSql);
    }
    QFile opened(file);
    QVERIFY(opened.open(QIODevice::ReadOnly));
    const QByteArray before = opened.readAll();
    QCOMPARE(codeOf(file), -1);
    QCOMPARE(QDir(folder.path()).entryList(QDir::Files).size(), 1);
    opened.seek(0);
    QCOMPARE(opened.readAll(), before);
}

void TestDataDb::errors_data()
{
    QTest::addColumn<QByteArray>("sql");
    QTest::addColumn<int>("code");
    const int damaged = int(DataError::Code::Damaged);
    const int notThis = int(DataError::Code::NotThisFormat);
    const QByteArray meta = metaSql("3");
    const QByteArray tables = tablesSql;
    const QByteArray good = meta + casesSql + tables;
    QTest::newRow("good") << good << -1;
    QTest::newRow("another database") << QByteArray("CREATE TABLE t (a);") << notThis;
    QTest::newRow("later schema") << metaSql("4") + casesSql + tables << notThis;
    QTest::newRow("earlier schema") << metaSql("1") + casesSql + tables << notThis;
    QTest::newRow("schema is a text") << metaSql("'three'") + casesSql + tables << notThis;
    QTest::newRow("no dictionary") << good + "DELETE FROM meta;" << damaged;
    QTest::newRow("empty dictionary") << good + "UPDATE meta SET dictionary = '';" << damaged;
    QTest::newRow("no text of a dictionary")
        << good + "UPDATE meta SET dictionary = 'cases';" << int(DataError::Code::NoDictionary);
    QTest::newRow("huge dictionary")
        << good + "UPDATE meta SET dictionary = zeroblob(70000000);" << damaged;
    QTest::newRow("no table of a record") << good + "DROP TABLE person;" << damaged;
    QTest::newRow("view for a table")
        << good + "ALTER TABLE person RENAME TO p; CREATE VIEW person AS SELECT * FROM p;"
        << damaged;
    QTest::newRow("view for meta")
        << good + "ALTER TABLE meta RENAME TO m; CREATE VIEW meta AS SELECT * FROM m;" << notThis;
    QByteArray narrower = tables;
    QTest::newRow("column missing")
        << meta + casesSql + narrower.replace("weight REAL, ", "") << damaged;
    QByteArray slower = tables;
    QTest::newRow("index missing")
        << meta + casesSql + slower.replace("CREATE INDEX i2 ON person(`level-1-id`);", "")
        << damaged;
    QTest::newRow("columns of cases missing")
        << good + "DROP TABLE cases; CREATE TABLE cases (id TEXT);" << damaged;
}

void TestDataDb::errors()
{
    QFETCH(QByteArray, sql);
    Database(path("e.csdb")).run(sql);
    QTEST(codeOf(path("e.csdb")), "code");
}

void TestDataDb::busy()
{
    const QString file = path("b.csdb");
    Database database(file);
    database.run(metaSql("3") + casesSql + tablesSql + rowsSql);
    database.run("BEGIN EXCLUSIVE; UPDATE cases SET label = 'x';");
    QCOMPARE(codeOf(file), int(DataError::Code::Busy));
    database.run("COMMIT");
    QCOMPARE(codeOf(file), -1);
    QCOMPARE(codeOf(path("missing.csdb")), int(DataError::Code::CannotOpen));
    QCOMPARE(codeOf(writeFile(m_folder, QStringLiteral("c.csdbe"), QByteArray(5000, 'x'))),
        int(DataError::Code::Encrypted));
    QCOMPARE(codeOf(writeFile(m_folder, QStringLiteral("z.csdb"), "")),
        int(DataError::Code::NotThisFormat));
    QFile whole(file);
    QVERIFY(whole.open(QIODevice::ReadOnly));
    QByteArray bytes = whole.readAll();
    std::fill(bytes.begin() + 100, bytes.begin() + 5000, '\x7f');
    QCOMPARE(codeOf(writeFile(m_folder, QStringLiteral("d.csdb"), bytes)),
        int(DataError::Code::Damaged));
}

QTEST_GUILESS_MAIN(TestDataDb)
#include "tst_DataDb.moc"
