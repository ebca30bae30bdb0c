// The building of databases as a host uses it: progress, cancelling, errors, and what is left
// behind.
#include "DataRows.h"
#include "SqliteRows.h"

#include <tessel_data/DataError.h>
#include <tessel_data/DatabaseBuilder.h>
#include <tessel_data/SqliteTarget.h>

#include <QProcess>

#include <stdexcept>

using namespace tessel;

namespace {

const int lineCount = 20'000;

QByteArray linesOf(int count)
{
    QByteArray lines;
    for (int i = 0; i < count; ++i)
        lines += QStringLiteral("1%1%2 3\n")
                     .arg(i / 100 % 100, 2, 10, QLatin1Char('0'))
                     .arg(i % 100, 2, 10, QLatin1Char('0'))
                     .toLatin1();
    return lines;
}

// Passes everything on, and does what a test wants in the place of one step.
class OddTarget : public SqliteTarget {
public:
    using SqliteTarget::SqliteTarget;

    qint64 append(int table, const DatabaseRows& rows) override
    {
        ++appends;
        if (throwsAt == appends)
            throw std::runtime_error("no more");
        return SqliteTarget::append(table, rows) - (table == losesIn ? 1 : 0);
    }

    int appends = 0;
    int throwsAt = -1;
    int losesIn = -1;
};

} // namespace

class TestSqliteTarget : public QObject {
    Q_OBJECT

private slots:
    void init();
    void progress();
    void cancelInTheMiddle();
    void cancelInTheIndexes();
    void abandon();
    void destroyed();
    void exceptions();
    void countThatIsWrong_data();
    void countThatIsWrong();
    void existing();
    void example();
    void objects();

private:
    QString path(const char* name) const
    {
        return m_folder->filePath(QLatin1String(name));
    }
    // Files in the folder but the data.
    QStringList left() const
    {
        QStringList names = QDir(m_folder->path()).entryList(QDir::Files | QDir::Hidden);
        names.removeAll(QStringLiteral("d.dat"));
        return names;
    }
    CSProTextSource source() const
    {
        return CSProTextSource(
            DataDictionary::fromBytes(surveyDictionary(), QStringLiteral("d.dcf")),
            { path("d.dat") });
    }

    std::unique_ptr<QTemporaryDir> m_folder;
};

void TestSqliteTarget::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    writeFile(*m_folder, QStringLiteral("d.dat"), linesOf(lineCount));
}

void TestSqliteTarget::progress()
{
    CSProTextSource data = source();
    SqliteTarget target(path("t.sqlite"));
    QCOMPARE(target.name(), path("t.sqlite"));
    QCOMPARE(target.dialect(), SqlDialect::Sqlite);
    BuildReport report;
    qint64 last = -1;
    bool isInOrder = true;
    const qint64 bytes = linesOf(lineCount).size();
    QVERIFY(buildDatabase(data, target, BuildOptions(), report, [&](qint64 done, qint64 size) {
        isInOrder = isInOrder && done >= last && size == bytes;
        last = done;
        return true;
    }));
    QVERIFY(isInOrder);
    QCOMPARE(last, bytes);
    QCOMPARE(report.check.counts.lines, qint64(lineCount));
    const SqliteRows database(path("t.sqlite"));
    QCOMPARE(database.value("SELECT count(*) FROM HOUSE").toInt(), lineCount);
    QCOMPARE(database.value("SELECT count(*) FROM cases").toLongLong(), report.cases);
    QCOMPARE(database.value("PRAGMA user_version"), QStringLiteral("1"));
    QCOMPARE(left(), QStringList { QStringLiteral("t.sqlite") });
}

void TestSqliteTarget::cancelInTheMiddle()
{
    CSProTextSource data = source();
    SqliteTarget target(path("t.sqlite"));
    BuildReport report;
    int calls = 0;
    QVERIFY(!buildDatabase(
        data, target, BuildOptions(), report, [&](qint64, qint64) { return ++calls < 2; }));
    QCOMPARE(calls, 2);
    QCOMPARE(left(), QStringList());
}

void TestSqliteTarget::cancelInTheIndexes()
{
    CSProTextSource data = source();
    SqliteTarget target(path("t.sqlite"));
    DatabaseBuilder builder(data, target, BuildOptions());
    QVERIFY(runPipeline(data, builder));
    QCOMPARE(left(), QStringList { QStringLiteral(".t.sqlite.tessel-build") });
    int calls = 0;
    QVERIFY(!target.finish([&] { return ++calls < 1; }));
    QCOMPARE(calls, 1);
    QCOMPARE(left(), QStringList());
}

void TestSqliteTarget::abandon()
{
    CSProTextSource data = source();
    SqliteTarget target(path("t.sqlite"));
    target.abandon(); // nothing was begun
    const DatabaseBuilder builder(data, target, BuildOptions());
    QVERIFY(!left().isEmpty());
    target.abandon();
    target.abandon();
    QCOMPARE(left(), QStringList());
}

void TestSqliteTarget::destroyed()
{
    CSProTextSource data = source();
    {
        SqliteTarget target(path("t.sqlite"));
        const DatabaseBuilder builder(data, target, BuildOptions());
        QCOMPARE(left(), QStringList { QStringLiteral(".t.sqlite.tessel-build") });
    }
    QCOMPARE(left(), QStringList());
}

// Whatever is thrown on the way comes out, with nothing left.
void TestSqliteTarget::exceptions()
{
    BuildReport report;
    CSProTextSource data = source();
    OddTarget target(path("t.sqlite"));
    target.throwsAt = 3;
    QVERIFY_EXCEPTION_THROWN(
        buildDatabase(data, target, BuildOptions(), report), std::runtime_error);
    QCOMPARE(left(), QStringList());
    CSProTextSource other = source();
    SqliteTarget good(path("t.sqlite"));
    const auto failing = [](qint64, qint64) -> bool { throw std::runtime_error("a host's"); };
    QVERIFY_EXCEPTION_THROWN(
        buildDatabase(other, good, BuildOptions(), report, failing), std::runtime_error);
    QCOMPARE(left(), QStringList());
    CSProTextSource third = source();
    SqliteTarget nowhere(path("none/t.sqlite"));
    try {
        buildDatabase(third, nowhere, BuildOptions(), report);
        QFAIL("there is no such folder");
    } catch (const DataError& error) {
        QCOMPARE(error.code, DataError::Code::CannotWrite);
        QCOMPARE(error.file, path("none/t.sqlite"));
    }
}

void TestSqliteTarget::countThatIsWrong_data()
{
    QTest::addColumn<QString>("table");
    QTest::newRow("record") << QStringLiteral("HOUSE");
    QTest::newRow("second record") << QStringLiteral("PERSON");
    QTest::newRow("cases") << QStringLiteral("cases");
    QTest::newRow("rejects") << QStringLiteral("tessel_rejects");
}

// A row that the database did not take fails the build, and the former database stays.
void TestSqliteTarget::countThatIsWrong()
{
    QFETCH(QString, table);
    const QString data =
        writeFile(*m_folder, QStringLiteral("d.dat"), linesOf(10) + "20101  3\n9rejected\n");
    QVERIFY(!data.isEmpty());
    BuildReport report;
    CSProTextSource first = source();
    OddTarget good(path("t.sqlite"));
    QVERIFY(buildDatabase(first, good, BuildOptions(), report));
    QCOMPARE(report.rejects, 1LL);
    QFile file(path("t.sqlite"));
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QByteArray before = file.readAll();
    CSProTextSource second = source();
    OddTarget target(path("t.sqlite"), SqliteTarget::Existing::Replace);
    target.losesIn = DatabasePlan(second.dictionary()).table(table);
    QVERIFY(target.losesIn >= 0);
    try {
        buildDatabase(second, target, BuildOptions(), report);
        QFAIL("a row is missing");
    } catch (const DataError& error) {
        QCOMPARE(error.code, DataError::Code::DoesNotAddUp);
        QVERIFY2(error.text.contains(QLatin1String("12 lines were read")), error.what());
    }
    QCOMPARE(left(), QStringList { QStringLiteral("t.sqlite") });
    QVERIFY(file.seek(0));
    QCOMPARE(file.readAll(), before);
}

void TestSqliteTarget::existing()
{
    BuildReport report;
    CSProTextSource first = source();
    SqliteTarget target(path("t.sqlite"));
    QVERIFY(buildDatabase(first, target, BuildOptions(), report));
    CSProTextSource second = source();
    SqliteTarget refused(path("t.sqlite"));
    try {
        buildDatabase(second, refused, BuildOptions(), report);
        QFAIL("the file is there");
    } catch (const DataError& error) {
        QCOMPARE(error.code, DataError::Code::TargetExists);
    }
    CSProTextSource third = source();
    SqliteTarget replacing(path("t.sqlite"), SqliteTarget::Existing::Replace);
    QVERIFY(buildDatabase(third, replacing, BuildOptions(), report));
    QCOMPARE(left(), QStringList { QStringLiteral("t.sqlite") });
}

void TestSqliteTarget::example()
{
    QProcess process;
    const QDir examples(QStringLiteral(TESSEL_EXAMPLES));
    const QStringList files { examples.filePath(QStringLiteral("census.dcf")),
        examples.filePath(QStringLiteral("census.dat")), path("t.sqlite") };
    process.start(QStringLiteral(TESSEL_BUILD_DATABASE), files);
    QVERIFY(process.waitForFinished());
    QCOMPARE(process.exitCode(), 0);
    const SqliteRows database(path("t.sqlite"));
    QCOMPARE(QString::fromLocal8Bit(process.readAllStandardOutput()),
        QStringLiteral("%1 cases, %2 problems\n")
            .arg(database.value("SELECT count(*) FROM cases"),
                database.value("SELECT count(*) FROM tessel_problems")));
    QVERIFY(process.readAllStandardError().contains(" of "));
    process.start(
        QStringLiteral(TESSEL_BUILD_DATABASE), { files.at(0), path("none.dat"), files.at(2) });
    QVERIFY(process.waitForFinished());
    QCOMPARE(process.exitCode(), 1);
    QVERIFY(process.readAllStandardOutput().contains("none.dat cannot be opened"));
    // Half a dictionary is none.
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("LD_PRELOAD", environment.value("LD_PRELOAD") + " " TESSEL_FAILING_READ);
    environment.insert("ASAN_OPTIONS", "verify_asan_link_order=0");
    environment.insert("FAILING_READ_FILE", QFileInfo(files.at(0)).canonicalFilePath());
    environment.insert("FAILING_READ_BYTES", "3000");
    process.setProcessEnvironment(environment);
    process.start(QStringLiteral(TESSEL_BUILD_DATABASE), files);
    QVERIFY(process.waitForFinished());
    QCOMPARE(process.exitCode(), 1);
    const QByteArray told = process.readAllStandardOutput();
    QVERIFY2(told.contains("census.dcf cannot be read: "), told.constData());
}

// Tables, indexes and views, with all that SQLite keeps by them.
void TestSqliteTarget::objects()
{
    CSProTextSource data = source();
    SqliteTarget target(path("t.sqlite"));
    BuildReport report;
    QVERIFY(buildDatabase(data, target, BuildOptions(), report));
    const SqliteRows database(path("t.sqlite"));
    const auto listed = [&](const QString& sql) {
        QStringList lines;
        for (const QStringList& row : database.rows(sql))
            lines.append(row.join(QLatin1Char(' ')));
        return lines;
    };
    QCOMPARE(listed("SELECT name FROM sqlite_master WHERE type = 'view' ORDER BY 1"),
        (QStringList { "HOUSE_labels", "HOUSE_valid", "PERSON_labels", "PERSON_valid" }));
    QCOMPARE(listed("SELECT sql FROM sqlite_master WHERE type = 'index' AND sql IS NOT NULL ORDER "
                    "BY name"),
        (QStringList { "CREATE INDEX HOUSE_case ON HOUSE (case_id)",
            "CREATE INDEX PERSON_case ON PERSON (case_id)",
            "CREATE INDEX cases_key ON cases (PLACE, NUMBER)",
            "CREATE INDEX cases_uuid ON cases (uuid) WHERE uuid IS NOT NULL" }));
    // Of the keys, that of cases is the table's own order.
    QCOMPARE(listed("SELECT m.name, c.name, c.pk, c.\"notnull\" FROM sqlite_master m JOIN "
                    "pragma_table_info(m.name) c WHERE m.type = 'table' AND (c.pk > 0 OR "
                    "c.\"notnull\" > 0) ORDER BY 1, 2"),
        (QStringList { "HOUSE case_id 0 1", "HOUSE row 0 1", "PERSON case_id 0 1", "PERSON row 0 1",
            "cases case_id 1 0" }));
    QCOMPARE(listed("SELECT tbl_name FROM sqlite_master WHERE type = 'index' AND sql IS NULL ORDER "
                    "BY 1"),
        (QStringList { "AGE_VS1", "KIND_VS1", "ROOMS_VS1", "ROOMS_VS2" }));
}

QTEST_GUILESS_MAIN(TestSqliteTarget)
#include "tst_SqliteTarget.moc"
