#include "DataRows.h"
#include "PeakMemory.h"
#include "SqliteRows.h"
#include "SurveyDb.h"

#include <tessel_data/CSProDb.h>
#include <tessel_data/CSProDbSource.h>
#include <tessel_data/DataError.h>

#include <QDir>
#include <QtEndian>

using namespace tessel;

namespace {

// What is told: line, kind, variable, case and text.
class ToldCollector : public DataConsumer {
public:
    explicit ToldCollector(const DataDictionary& dictionary)
        : m_dictionary(dictionary)
    {
    }
    void take(const DataBatch& batch) override
    {
        for (const DataBatch::Told& one : batch.told) {
            const std::string_view text = batch.text(one.text);
            told.append(
                QStringLiteral("%1 %2 %3 %4 %5")
                    .arg(one.line)
                    .arg(int(one.problem))
                    .arg(one.variable < 0 ? QStringLiteral("-")
                                          : m_dictionary.variables[std::size_t(one.variable)].name)
                    .arg(one.caseNumber)
                    .arg(QString::fromUtf8(text.data(), int(text.size()))));
        }
    }
    void finish(const DataSource&) override
    {
    }

    QStringList told;

private:
    const DataDictionary& m_dictionary;
};

QStringList toldOf(const QString& path)
{
    CSProDbSource source(path);
    ToldCollector collector(source.dictionary());
    runPipeline(source, collector);
    return source.counts().addUp() ? collector.told : QStringList();
}

QString fixture(const QString& name)
{
    return QStringLiteral(TESSEL_TEST_DATA "/") + name;
}

struct Contents {
    QStringList rows; // without their places
    QStringList told; // kinds
    qint64 records = 0;
    qint64 rejected = 0;
};

Contents contentsOf(DataSource& source)
{
    RowCollector rows(source.dictionary());
    runPipeline(source, rows);
    Contents contents { {}, {}, source.counts().records, source.counts().rejectedLines };
    for (const QString& row : qAsConst(rows.rows))
        contents.rows.append(row.section(QLatin1Char(' '), 2));
    for (const QString& told : qAsConst(rows.told))
        contents.told.append(told.section(QLatin1Char(':'), 1));
    return contents;
}

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

QByteArray bigEndian(quint32 number)
{
    const quint32 swapped = qToBigEndian(number);
    return QByteArray(reinterpret_cast<const char*>(&swapped), sizeof swapped);
}

// A number as SQLite writes it in its records, seven bits in each byte.
QByteArray packed(quint64 number)
{
    constexpr int bits = 7;
    QByteArray bytes(1, char(number & 0x7F));
    for (number >>= bits; number > 0; number >>= bits)
        bytes.prepend(char(0x80 | (number & 0x7F)));
    return bytes;
}

constexpr quint32 PageSize = 4096;

// The page of a table with one row of the table meta, whose dictionary has that many bytes. Most
// of them stand on further pages, from firstPage on.
QByteArray metaPage(quint32 size, quint32 firstPage)
{
    constexpr quint32 least = (PageSize - 12) * 32 / 255 - 23; // bytes that a page keeps of a row
    constexpr quint32 most = PageSize - 35;
    const QByteArray types = packed(1) + packed(13 + 2 * 3) + packed(13 + 2 * quint64(size));
    const QByteArray begin = packed(quint64(types.size()) + 1) + types + "\x03" + "8.0";
    const quint32 row = quint32(begin.size()) + size;
    quint32 kept = least + (row - least) % (PageSize - 4);
    kept = kept > most ? least : kept;
    const QByteArray cell = packed(row) + packed(1) + begin
        + QByteArray(int(kept) - begin.size(), 'x') + bigEndian(firstPage);
    const QByteArray start = bigEndian(PageSize - quint32(cell.size())).right(2);
    const QByteArray head = QByteArray("\x0D\0\0\0\x01", 5) + start + '\0' + start;
    return head + QByteArray(int(PageSize) - head.size() - cell.size(), '\0') + cell;
}

// Makes the dictionary of the file that large, with a hole where most of it would stand.
bool enlargeDictionary(const QString& path, quint32 size)
{
    const int page = SqliteRows(path)
                         .value(QStringLiteral("SELECT rootpage FROM sqlite_master "
                                               "WHERE name = 'meta'"))
                         .toInt();
    QFile file(path);
    if (page < 2 || !file.open(QIODevice::ReadWrite))
        return false;
    const auto pages = quint32(file.size() / PageSize);
    const quint32 newPages = pages + size / (PageSize - 4) + 1;
    constexpr int pagesPlace = 28;
    return file.seek(pagesPlace) && file.write(bigEndian(newPages)) == 4
        && file.seek(qint64(page - 1) * PageSize)
        && file.write(metaPage(size, pages + 1)) == PageSize
        && file.resize(qint64(newPages) * PageSize);
}

} // namespace

class TestDataDb : public QObject {
    Q_OBJECT

private slots:
    void tables();
    void text();
    void anotherDictionary();
    void formsAgree_data();
    void formsAgree();
    void levels();
    void unreadableIds();
    void orphans();
    void manyOrphans();
    void leavesNothing();
    void openElsewhere();
    void changedWhileRead_data();
    void changedWhileRead();
    void stops();
    void errors_data();
    void errors();
    void hugeDictionary();
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
    SqliteWriter(path("t.csdb")).run(metaSql("3") + casesSql + tablesSql + rowsSql);
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
    SqliteWriter(path("x.csdb"))
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
    SqliteWriter(path("a.csdb")).run(metaSql("3") + casesSql + tablesSql + rowsSql);
    QByteArray dictionary = surveyDictionary();
    dictionary.replace("Value=7 9;Odd", "Value=6 9;Odd");
    const QString other = writeFile(m_folder, QStringLiteral("other.dcf"), dictionary);
    CSProDbSource source(path("a.csdb"), DataDictionary::fromFile(other));
    RowCollector rows(source.dictionary());
    QVERIFY(runPipeline(source, rows));
    QVERIFY2(rows.rows.at(3).contains(QStringLiteral(" 6 ")), qPrintable(rows.rows.at(3)));
}

void TestDataDb::formsAgree_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("text") << QString();
    QTest::newRow("schema 2") << QStringLiteral("levels_schema2.csdb");
    QTest::newRow("schema 3") << QStringLiteral("levels_schema3.csdb");
}

// The same cases as text, as text in a database, and as tables.
void TestDataDb::formsAgree()
{
    QFETCH(QString, name);
    const CSProDb db(fixture(QStringLiteral("levels_schema3.csdb")));
    const DataDictionary dictionary =
        DataDictionary::fromBytes(db.dictionary(), QStringLiteral("levels"));
    std::unique_ptr<DataSource> source;
    if (name.isEmpty())
        source = std::make_unique<CSProTextSource>(
            dictionary, QStringList { fixture(QStringLiteral("data_levels.dat")) });
    else
        source = std::make_unique<CSProDbSource>(fixture(name));
    const Contents contents = contentsOf(*source);
    QCOMPARE(contents.rows,
        (QStringList { "HOUSE: 1 \"A\" 1.5 M9.9 5 9 \"Zoë\"", "WOMAN: 1 \"A\" 1 2",
            "BIRTH: 1 \"A\" 1 1 \"199912\" 1999 12", "BIRTH: 1 \"A\" 1 2 \"2001 7\" 2001 7",
            "WOMAN: 1 \"A\" 2 0", "WOMAN: 1 \"A\" 2 -", "HOUSE: - \"B\" <>4.0 0.5 0 5 \"mud\"",
            "WOMAN: - \"B\" - 1", "BIRTH: - \"B\" - - \"1980 7\" 1980 7", "HOUSE: 4 - - - - - -",
            "WOMAN: 4 - 2 1", "BIRTH: 4 - 2 2 \"1992 2\" 1992 2" }));
    const QString unreadable = QString::number(int(LineProblem::IdNotANumber));
    QCOMPARE(contents.told,
        (QStringList { unreadable, unreadable, unreadable, unreadable, unreadable, unreadable }));
    QCOMPARE(contents.records, 12LL);
    QCOMPARE(contents.rejected, 6LL);
}

void TestDataDb::levels()
{
    const QString unreadable = QString::number(int(LineProblem::IdNotANumber));
    QCOMPARE(toldOf(fixture(QStringLiteral("levels_schema3.csdb"))),
        (QStringList { "2 " + unreadable
                + " HOUSEHOLD 1 house: household='x1' part='A' roof(1)=1.0 tenths(1)=0 ",
            "2 " + unreadable
                + " HOUSEHOLD 1 woman: household='x1' part='A' woman_number=1 kids=3 ",
            "2 " + unreadable
                + " HOUSEHOLD 1 birth: household='x1' part='A' woman_number=1 birth_number=1 "
                  "born='2000 1' born_year=2000 born_month=1 ",
            "4 " + unreadable + " WOMAN_NUMBER 3 woman: household=4 woman_number='y' kids=1 ",
            "4 " + unreadable
                + " WOMAN_NUMBER 3 birth: household=4 woman_number='y' birth_number=1 born='1990 "
                  "1' "
                  "born_year=1990 born_month=1 ",
            "4 " + unreadable
                + " BIRTH_NUMBER 3 birth: household=4 woman_number=2 birth_number='z' born='1991 "
                  "1' "
                  "born_year=1991 born_month=1 " }));
    QCOMPARE(toldOf(fixture(QStringLiteral("levels_schema2.csdb"))),
        (QStringList { "2 " + unreadable + " HOUSEHOLD 1 1x1A  10",
            "2 " + unreadable + " HOUSEHOLD 1 2x1A1  3",
            "2 " + unreadable + " HOUSEHOLD 1 3x1A112000 1",
            "4 " + unreadable + " WOMAN_NUMBER 3 2 4 y  1",
            "4 " + unreadable + " WOMAN_NUMBER 3 3 4 y11990 1",
            "4 " + unreadable + " BIRTH_NUMBER 3 3 4 2z1991 1" }));
}

// A number that does not fit is none either; a row without records is told itself; a blank is kept.
void TestDataDb::unreadableIds()
{
    SqliteWriter(path("i.csdb"))
        .run(metaSql("3") + casesSql + tablesSql + rowsSql
            + "UPDATE `level-1` SET place = 1.5 WHERE `level-1-id` = 1;"
              "UPDATE `level-1` SET number = NULL WHERE `level-1-id` = 2;"
              "INSERT INTO cases VALUES ('u4', '01xx', '', '', 0, 4.0, NULL);"
              "INSERT INTO `level-1` VALUES (4, 'u4', 1, 'xx');");
    CSProDbSource source(path("i.csdb"));
    QStringList keys;
    CheckOptions options;
    options.onProblem = [&](const DataProblem& problem) {
        if (problem.kind == ProblemKind::IdNotANumber)
            keys.append(problem.caseKey + QLatin1Char(' ') + problem.value);
    };
    Checker checker(source.dictionary(), options);
    QVERIFY(runPipeline(source, checker));
    QCOMPARE(keys,
        (QStringList { "0101 house: place=1.5 number=1 rooms=3 weight=12.34 kind='A ' ",
            "0101 person: place=1.5 number=1 ",
            "0101 person: place=1.5 number=1 age=999 name='Zoë   ' first='Zo' ",
            "01xx level-1: place=1 number='xx' " }));
    const CheckReport& report = checker.report();
    QVERIFY(report.addsUp);
    QCOMPARE(report.counts.rejectedLines, 4LL);
    QCOMPARE(report.counts.cases, 3LL);
    QCOMPARE(report.problemCount(ProblemKind::IdBlank), 3LL);
}

void TestDataDb::orphans()
{
    SqliteWriter(path("o.csdb"))
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
    const QString damaged = QString::number(int(LineProblem::DamagedRecord));
    const QStringList told = toldOf(path("o.csdb"));
    QCOMPARE(told.last(),
        "0 " + damaged
            + " - -1 a row of person belongs to no case: person-id=9 level-1-id=77 occ=1 age=1 "
              "name='' first='' ");
    QVERIFY(told.contains("4 " + damaged + " - 2 the case has no row in level-1"));
}

// Without any index that helps, and with links and numbers that are null.
void TestDataDb::manyOrphans()
{
    const QByteArray many = "WITH RECURSIVE n(i) AS (SELECT 1000 UNION ALL SELECT i + 1 FROM n "
                            "WHERE i < 200999) ";
    SqliteWriter(path("q.csdb"))
        .run(metaSql("3") + casesSql + tablesSql + many
            + "INSERT INTO cases SELECT i, '', '', '', 1, i, NULL FROM n;" + many
            + "INSERT INTO `level-1` SELECT i, 'x' || i, 1, 1 FROM n;"
              "INSERT INTO `level-1` VALUES (1, NULL, 1, 1);"
              "INSERT INTO cases VALUES (NULL, '', '', '', 1, 1.0, NULL);"
              "INSERT INTO person VALUES (1, NULL, 1, 1, '', '');");
    CSProDbSource source(path("q.csdb"));
    RowCollector rows(source.dictionary());
    QVERIFY(runPipeline(source, rows));
    QCOMPARE(rows.told.size(), 200'002);
    QVERIFY(source.counts().addUp());
}

void TestDataDb::leavesNothing()
{
    const QTemporaryDir folder;
    const QString file = folder.filePath(QStringLiteral("n ö?%41.csdb"));
    {
        SqliteWriter database(file);
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

// With a log beside it a file is only read when nobody has it open.
void TestDataDb::openElsewhere()
{
    const QString file = path("w.csdb");
    {
        SqliteWriter writer(file);
        writer.run("PRAGMA journal_mode = WAL;" + metaSql("3") + casesSql + tablesSql + rowsSql);
        QCOMPARE(codeOf(file), int(DataError::Code::Busy));
        writer.run("PRAGMA wal_checkpoint(TRUNCATE)");
        QCOMPARE(QFileInfo(file + QStringLiteral("-wal")).size(), 0LL);
        QCOMPARE(codeOf(file), int(DataError::Code::Busy));
    }
    QCOMPARE(codeOf(file), -1);
    QVERIFY(QFile(file + QStringLiteral("-shm")).open(QIODevice::WriteOnly));
    QCOMPARE(codeOf(file), int(DataError::Code::Busy));
    QVERIFY(QFile::remove(file + QStringLiteral("-shm")));
    QCOMPARE(codeOf(file), -1);
}

void TestDataDb::changedWhileRead_data()
{
    QTest::addColumn<QByteArray>("mode");
    QTest::addColumn<QByteArray>("change");
    QTest::addColumn<bool>("isTold");
    const QByteArray wal = "PRAGMA journal_mode = WAL;";
    QTest::newRow("not") << QByteArray() << QByteArray() << false;
    QTest::newRow("not, with a log") << wal << QByteArray() << false;
    QTest::newRow("with a log") << wal << QByteArray("UPDATE person SET age = 2;") << true;
}

void TestDataDb::changedWhileRead()
{
    QFETCH(QByteArray, mode);
    QFETCH(QByteArray, change);
    const QString file = path("v.csdb");
    SqliteWriter(file).run(mode + metaSql("3") + casesSql + tablesSql + rowsSql);
    CSProDbSource source(file);
    if (!change.isEmpty())
        SqliteWriter(file, SqliteWriter::Existing::Keep).run(change);
    Checker checker(source.dictionary());
    QVERIFY(runPipeline(source, checker));
    QTEST(source.files().front().changedWhileRead, "isTold");
    QTEST(checker.report().problemCount(ProblemKind::FileChanged) == 1, "isTold");
}

// What is slow before the first case ends too when nobody wants the outcome.
void TestDataDb::stops()
{
    class Unwanted : public BatchSink {
    public:
        DataBatch& batch() override
        {
            return m_batch;
        }
        bool deliver() override
        {
            return false;
        }
        bool goesOn() override
        {
            ++questions;
            return false;
        }
        int questions = 0;

    private:
        DataBatch m_batch;
    };
    SqliteWriter(path("l.csdb"))
        .run(metaSql("3") + casesSql + tablesSql
            + "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 100000) "
              "INSERT INTO cases SELECT i, '', '', '', 1, i, NULL FROM n;");
    CSProDbSource source(path("l.csdb"));
    Unwanted sink;
    source.read(sink);
    QVERIFY(sink.questions > 0);
    QCOMPARE(source.counts().casesRead, 0LL);
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
    QTest::newRow("dictionary is no text")
        << good + "UPDATE meta SET dictionary = zeroblob(7000);" << damaged;
    QTest::newRow("huge dictionary")
        << good + "UPDATE meta SET dictionary = CAST(zeroblob(300000000) AS TEXT);" << damaged;
    QTest::newRow("no table of a record") << good + "DROP TABLE person;" << damaged;
    QTest::newRow("view for a table")
        << good + "ALTER TABLE person RENAME TO p; CREATE VIEW person AS SELECT * FROM p;"
        << damaged;
    QTest::newRow("virtual table for a table")
        << good + "DROP TABLE person; CREATE VIRTUAL TABLE person USING fts3(age, name, first);"
        << damaged;
    QByteArray computed = tables;
    QTest::newRow("computed column") << meta + casesSql
            + computed.replace(
                "rooms INTEGER", "rooms INTEGER AS (length(hex(zeroblob(99999999))))")
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
    QTest::newRow("cases with one id") << good
            + "INSERT INTO cases VALUES ('u', '', '', '', 0, 1, NULL), ('u', '', '', '', 1, 2, "
              "NULL);" << damaged;
    QByteArray loose = tables;
    loose.replace("`level-1-id` INTEGER PRIMARY KEY", "`level-1-id`");
    const QByteArray oneCase = "INSERT INTO cases VALUES ('u', '', '', '', 0, 1, NULL);";
    QTest::newRow("rows of a level with one id")
        << meta + casesSql + loose + "INSERT INTO `level-1` VALUES (1, 'u', 1, 1), (1, 'v', 1, 1);"
        << damaged;
    QTest::newRow("text for the id of a level")
        << meta + casesSql + loose + oneCase + "INSERT INTO `level-1` VALUES ('a', 'u', 1, 1);"
        << damaged;
    QTest::newRow("endless text in a row") << good + oneCase
            + "INSERT INTO `level-1` VALUES (1, 'u', 1, 1);"
              "INSERT INTO person VALUES (1, 1, 1, 1, hex(zeroblob(10000000)), '');"
                                           << damaged;
    QTest::newRow("columns of cases missing")
        << good + "DROP TABLE cases; CREATE TABLE cases (id TEXT);" << damaged;
}

void TestDataDb::errors()
{
    QFETCH(QByteArray, sql);
    SqliteWriter(path("e.csdb")).run(sql);
    QTEST(codeOf(path("e.csdb")), "code");
}

// The length is asked first: reading on would find no further page, and call the file damaged.
void TestDataDb::hugeDictionary()
{
    constexpr quint32 size = 999'000'000;
    const QString file = path("h.csdb");
    SqliteWriter(file).run(
        "PRAGMA page_size = 4096;" + metaSql("3") + casesSql + tablesSql + rowsSql);
    QVERIFY(enlargeDictionary(file, size));
    QVERIFY(QFileInfo(file).size() > size);
    const SqliteRows plain(file);
    QCOMPARE(plain.value("SELECT schema_version || cspro_version || typeof(dictionary) FROM meta"),
        QStringLiteral("38.0text"));
    const auto before = peakMemory();
    try {
        const CSProDbSource source(file);
        QFAIL("a dictionary of nearly a gigabyte was read");
    } catch (const DataError& error) {
        QCOMPARE(error.code, DataError::Code::Damaged);
        QCOMPARE(error.text,
            QStringLiteral("holds a text, such as its dictionary, larger than 256 MiB"));
    }
    QVERIFY2(peakMemory() - before < 10'000, qPrintable(QString::number(peakMemory() - before)));
}

void TestDataDb::busy()
{
    const QString file = path("b.csdb");
    SqliteWriter database(file);
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
