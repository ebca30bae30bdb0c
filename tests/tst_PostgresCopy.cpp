// Rows on their way to a PostgreSQL server of the test's own: many of them, long ones, numbers of
// every size, and a server that takes no more.
#include "DataErrorOf.h"
#include "PostgreSqlServer.h"

#include <tessel_data/CSProTextSource.h>
#include <tessel_data/DataError.h>
#include <tessel_data/DatabaseBuilder.h>
#include <tessel_data/PostgresTarget.h>

#include <QCryptographicHash>
#include <QtTest>

#include <random>

using namespace tessel;

namespace {

constexpr int PlotWidth = 30'000;
constexpr int Households = 1200; // two plots each: more than one COPY takes

QByteArray item(const char* name, int start, int width, const char* more = "")
{
    return "[Item]\nLabel=x\nName=" + QByteArray(name) + "\nStart=" + QByteArray::number(start)
        + "\nLen=" + QByteArray::number(width) + "\n" + more;
}

QByteArray beginning()
{
    return "[Dictionary]\nVersion=CSPro 7.7\nName=MANY\nLabel=x\nRecordTypeStart=1\n"
           "RecordTypeLen=1\nZeroFill=Yes\n[Level]\nLabel=x\nName=L\n[IdItems]\n";
}

// A household has a short record and two long ones.
QByteArray longDictionary()
{
    return beginning() + item("ID", 2, 5)
        + "[Record]\nLabel=x\nName=HOUSE\nRecordTypeValue='1'\nRecordLen=10\n" + item("ROOMS", 7, 2)
        + "[Record]\nLabel=x\nName=PLOT\nRecordTypeValue='2'\nMaxRecords=9\nRecordLen=32000\n"
        + item("LINE", 7, 1) + item("TEXT", 8, PlotWidth, "DataType=Alpha\n");
}

QByteArray randomText(std::mt19937& random, int size)
{
    static const char letters[] =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-+";
    QByteArray text(size, Qt::Uninitialized);
    for (char& letter : text)
        letter = letters[random() % (sizeof letters - 1)];
    return text;
}

QByteArray longData(int households, QByteArray& allTexts)
{
    std::mt19937 random(1);
    QByteArray data;
    for (int id = 1; id <= households; ++id) {
        const QByteArray key = QByteArray::number(id).rightJustified(5, '0');
        data += '1' + key + "07\n";
        for (const char line : { '1', '2' }) {
            const QByteArray text = randomText(random, PlotWidth - id % 7);
            data += '2' + key + line + text + '\n';
            allTexts += text;
        }
    }
    return data;
}

// A record of one number with so many decimals, of 18 digits and the sign.
QByteArray decimalsDictionary(int most)
{
    QByteArray text = beginning() + item("ID", 2, 5)
        + "[Record]\nLabel=x\nName=NUMBERS\nRecordTypeValue='1'\nRecordLen=900\n";
    for (int d = 0; d <= most; ++d) {
        const QByteArray name = "D" + QByteArray::number(d);
        const QByteArray decimals = d > 0 ? "Decimal=" + QByteArray::number(d) + '\n' : "";
        text += item(name.constData(), 7 + 19 * d, 19, decimals.constData());
    }
    return text;
}

} // namespace

class tst_PostgresCopy : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void numbers();
    void smallIntegers();
    void longRows();
    void rowsThatAreNotTaken_data();
    void rowsThatAreNotTaken();
    void lostInTheMiddle();
    void stoppedInTheMiddle();
    void fullDisk();
    void settings();

private:
    Outcome build(const QStringList& source, const QStringList& options = {}) const
    {
        return runTessel(QStringList { "build" } + source
            + QStringList { "--to", m_server.connection() } + options);
    }
    QByteArray ask(const QByteArray& statement) const
    {
        return m_server.answer(statement);
    }
    QByteArray state() const
    {
        return ask("SELECT string_agg(relname || relkind::text, ' ' ORDER BY relname) FROM "
                   "pg_class "
                   "WHERE relnamespace::regnamespace::text = 'public';")
            + ask("SELECT count(*) FROM person;");
    }
    QString write(const char* name, const QByteArray& bytes) const
    {
        const QString path = m_folder.filePath(name);
        return writeFile(path, bytes) ? path : QString();
    }
    QStringList longSource() const
    {
        return { m_folder.filePath("long.dcf"), m_folder.filePath("long.dat") };
    }

    // As long as progress goes on.
    bool buildLong(const DataProgress& progress) const
    {
        CSProTextSource source(
            DataDictionary::fromFile(longSource().first()), { longSource().last() });
        PostgresTarget target({ m_server.connection(), QString(), true });
        BuildReport report;
        return buildDatabase(source, target, BuildOptions(), report, progress);
    }

    PostgreSqlServer m_server;
    QTemporaryDir m_folder;
    QByteArray m_texts; // of all long rows
    QStringList m_census { QStringLiteral(TESSEL_EXAMPLES "/census.dcf"),
        QStringLiteral(TESSEL_EXAMPLES "/census.dat") };
};

void tst_PostgresCopy::initTestCase()
{
    const QString missing = m_server.start();
    if (!missing.isEmpty())
        QSKIP(qPrintable(missing));
    QVERIFY(!write("long.dcf", longDictionary()).isEmpty());
    QVERIFY(!write("long.dat", longData(Households, m_texts)).isEmpty());
}

void tst_PostgresCopy::init()
{
    QCOMPARE(m_server.carryOut("").errors, QByteArray());
}

void tst_PostgresCopy::numbers()
{
    constexpr int most = 18; // decimals
    std::mt19937_64 random(1);
    QByteArray data;
    QByteArray expected;
    for (int id = 0; id < 300; ++id) {
        data += '1' + QByteArray::number(id).rightJustified(5, '0');
        expected += QByteArray::number(id);
        for (int d = 0; d <= most; ++d) {
            // Of any number of digits, zeros at either end among them.
            const qint64 cut = powerOfTen(int(random() % 19));
            const qint64 digits = qint64(random() % quint64(powerOfTen(18)));
            qint64 number = random() % 2 == 0 ? digits % cut : digits - digits % cut;
            number = random() % 3 == 0 ? -(number / 10) : number;
            data += QByteArray::number(number).rightJustified(19, ' ');
            expected += '|' + numberText(number, d).toLatin1();
        }
        data += '\n';
        expected += '\n';
    }
    const Outcome built =
        build({ write("decimals.dcf", decimalsDictionary(most)), write("decimals.dat", data) });
    QVERIFY2(built.status == 0, built.errors.constData());
    QByteArray columns = "id";
    for (int d = 0; d <= most; ++d)
        columns += ", d" + QByteArray::number(d);
    const QByteArray found = ask("SELECT " + columns + " FROM numbers ORDER BY id;");
    QCOMPARE(found.split('\n'), expected.trimmed().split('\n'));
}

// The greatest and the least that items of 4, 5, 9 and 10 columns can hold.
void tst_PostgresCopy::smallIntegers()
{
    const QByteArray dictionary = beginning() + item("ID", 2, 5)
        + "[Record]\nLabel=x\nName=NUMBERS\nRecordTypeValue='1'\nRecordLen=40\n" + item("A", 7, 4)
        + item("B", 11, 5) + item("C", 16, 9) + item("D", 25, 10);
    const QByteArray data = "1000019999999999999999999999999999\n"
                            "100002-999-9999-99999999-999999999\n"
                            "100003        7  x  \n";
    const Outcome built = build({ write("small.dcf", dictionary), write("small.dat", data) });
    QVERIFY2(built.status == 0, built.errors.constData());
    QCOMPARE(ask("SELECT id, a, b, c, d FROM numbers ORDER BY id;"),
        QByteArray("1|9999|99999|999999999|9999999999\n2|-999|-9999|-99999999|-999999999\n3||7||"));
    QCOMPARE(ask("SELECT string_agg(format_type(atttypid, NULL), ',' ORDER BY attnum) FROM "
                 "pg_attribute WHERE attrelid = 'numbers'::regclass AND attnum > 2;"),
        QByteArray("integer,smallint,integer,integer,bigint"));
}

// Rows of several tables in turn, longer than what is sent at once, and more than one COPY takes.
void tst_PostgresCopy::longRows()
{
    const Outcome built = build(longSource());
    QVERIFY2(built.status == 0, built.errors.constData());
    QCOMPARE(ask("SELECT count(*), sum(rooms), min(id), max(id) FROM house;"),
        QByteArray("1200|8400|1|1200"));
    QCOMPARE(ask("SELECT encode(sha256(string_agg(text::bytea, '' ORDER BY case_id, row)), 'hex') "
                 "FROM plot;"),
        QCryptographicHash::hash(m_texts, QCryptographicHash::Sha256).toHex());
    QCOMPARE(ask("SELECT count(*) FROM cases WHERE records = 3;"), QByteArray("1200"));
}

void tst_PostgresCopy::rowsThatAreNotTaken_data()
{
    QTest::addColumn<QByteArray>("column"); // of the table that takes none
    QTest::newRow("record") << QByteArray("age");
    QTest::newRow("cases") << QByteArray("duplicate_of");
}

// As by a trigger of the database's owner.
void tst_PostgresCopy::rowsThatAreNotTaken()
{
    QFETCH(QByteArray, column);
    QCOMPARE(build(m_census).status, 0);
    const QByteArray before = state();
    QCOMPARE(
        ask("CREATE FUNCTION lose() RETURNS trigger LANGUAGE plpgsql AS $$ BEGIN RETURN NULL; "
            "END $$; CREATE FUNCTION losing() RETURNS event_trigger LANGUAGE plpgsql AS $$ "
            "DECLARE made oid; BEGIN FOR made IN SELECT objid FROM "
            "pg_event_trigger_ddl_commands() WHERE objsubid = 0 AND EXISTS (SELECT 1 FROM "
            "pg_attribute WHERE attrelid = objid AND attname = '"
            + column
            + "') LOOP EXECUTE format('CREATE TRIGGER lose BEFORE INSERT ON %s FOR EACH ROW "
              "EXECUTE FUNCTION public.lose()', made::regclass); END LOOP; END $$; CREATE EVENT "
              "TRIGGER losing ON ddl_command_end WHEN TAG IN ('CREATE TABLE') EXECUTE FUNCTION "
              "losing();"),
        QByteArray());
    const Outcome outcome = build(m_census, { "--overwrite" });
    QCOMPARE(ask("DROP EVENT TRIGGER losing; DROP FUNCTION losing, lose;"), QByteArray());
    QCOMPARE(outcome.status, 1);
    QVERIFY2(
        outcome.errors.contains("is not made: the server took 0 of "), outcome.errors.constData());
    QCOMPARE(state(), before);
}

void tst_PostgresCopy::lostInTheMiddle()
{
    QCOMPARE(build(m_census).status, 0);
    const QByteArray before = state();
    const QString error = dataErrorOf([&] {
        buildLong([&](qint64 done, qint64 size) {
            if (done > size / 2)
                ask("SELECT pg_terminate_backend(pid) FROM pg_stat_activity WHERE "
                    "application_name = 'tessel';");
            return true;
        });
    });
    QVERIFY2(error.contains("the connection to the server was lost"), qPrintable(error));
    QCOMPARE(state(), before);
}

void tst_PostgresCopy::stoppedInTheMiddle()
{
    QCOMPARE(build(m_census).status, 0);
    const QByteArray before = state();
    QVERIFY(!buildLong([](qint64 done, qint64 size) { return done <= size / 2; }));
    QCOMPARE(state(), before);
    QCOMPARE(build(m_census, { "--overwrite" }).status, 0);
}

void tst_PostgresCopy::fullDisk()
{
    constexpr int most = (24 << 20) + 4096; // within a page, as a disk may be full
    QCOMPARE(build(m_census).status, 0);
    const QByteArray before = state();
    ask("CHECKPOINT;"); // so that no large file of before is written again
    m_server.stop();
    QVERIFY(m_server.resume(most));
    const Outcome outcome = build(longSource(), { "--overwrite" });
    QCOMPARE(outcome.status, 1);
    QVERIFY2(outcome.errors.contains("cannot be written: could not extend file"),
        outcome.errors.constData());
    QVERIFY2(outcome.errors.contains("; the server's disk is full"), outcome.errors.constData());
    QCOMPARE(state(), before);
    m_server.stop();
    QVERIFY(m_server.resume());
    QCOMPARE(state(), before);
    QCOMPARE(build(longSource(), { "--overwrite" }).status, 0);
}

// Settings that were saved make the same database again, of the named server too.
void tst_PostgresCopy::settings()
{
    const QString file = m_folder.filePath("settings.json");
    const Outcome first = build(m_census,
        { "--records", "PERSON", "--where", "PROVINCE=11..22", "--schema", "first", "--save-config",
            file });
    QVERIFY2(first.status == 0, first.errors.constData());
    const QByteArray rows = ask("SELECT md5(string_agg(p::text, '' ORDER BY case_id, row)), "
                                "count(*) FROM first.person p;");
    QVERIFY2(!rows.endsWith("|0") && rows.contains('|'), rows.constData());
    const Outcome second = runTessel({ "build", "--config", file, "--schema", "second" });
    QVERIFY2(second.status == 0, second.errors.constData());
    QCOMPARE(ask("SELECT md5(string_agg(p::text, '' ORDER BY case_id, row)), count(*) FROM "
                 "second.person p;"),
        rows);
    QCOMPARE(ask("SELECT to_regclass('second.housing') IS NULL;"), QByteArray("t"));
    const Outcome again = runTessel({ "build", "--config", file });
    QCOMPARE(again.status, 1);
    QVERIFY2(again.errors.contains("schema \"first\" has the tables of a build already"),
        again.errors.constData());
    QCOMPARE(runTessel({ "build", "--config", file, "--overwrite" }).status, 0);
}

QTEST_GUILESS_MAIN(tst_PostgresCopy)

#include "tst_PostgresCopy.moc"
