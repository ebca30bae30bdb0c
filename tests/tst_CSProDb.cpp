// CSPro DB files: made here through SQLite in all their shapes, forged and damaged, and real ones
// where TESSEL_CORPUS names a folder of them in whose sub-folder "csdb".
#include "ListedFields.h"

#include <tessel_data/CSProDb.h>
#include <tessel_data/DataError.h>

#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QtTest>

#include <sqlite3.h>

#include <sys/stat.h>

namespace {

const char schema2[] = "CREATE TABLE meta (schema_version INTEGER NOT NULL, cspro_version TEXT NOT "
                       "NULL, dictionary TEXT NOT NULL)";
const char schema3[] =
    "CREATE TABLE meta (schema_version INTEGER NOT NULL, cspro_version TEXT NOT NULL, dictionary "
    "TEXT NOT NULL, dictionary_structure TEXT NOT NULL, dictionary_timestamp INT NOT NULL)";

// A connection that makes or holds a database.
class Database {
public:
    explicit Database(const QString& path)
    {
        sqlite3_open_v2(QFile::encodeName(path).constData(), &m_connection,
            SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE, nullptr);
    }

    ~Database()
    {
        sqlite3_close(m_connection);
    }

    bool run(const QByteArray& statements)
    {
        return sqlite3_exec(m_connection, statements.constData(), nullptr, nullptr, nullptr)
            == SQLITE_OK;
    }

private:
    Q_DISABLE_COPY(Database)

    sqlite3* m_connection = nullptr;
};

// What comes of opening a file: what it says of itself, or what is wrong.
class CSProDb {
public:
    bool open(const QString& path)
    {
        m_error = QString();
        try {
            m_db.reset();
            m_db = std::make_unique<tessel::CSProDb>(path);
        } catch (const tessel::DataError& error) {
            m_error = error.text;
        }
        return m_error.isNull();
    }
    QString errorText() const
    {
        return m_error;
    }
    const tessel::CSProDb* operator->() const
    {
        return m_db.get();
    }

private:
    std::unique_ptr<tessel::CSProDb> m_db;
    QString m_error;
};

bool make(const QString& path, const QByteArray& statements)
{
    return Database(path).run(statements);
}

QByteArray quoted(QByteArray text)
{
    return '\'' + text.replace('\'', "''") + '\'';
}

QByteArray textForm()
{
    return "\xEF\xBB\xBF" + readFile(TESSEL_TEST_DATA "/basic.dcf").replace('\n', "\r\n");
}

// A CSPro DB of schema 2, with a dictionary.
QByteArray statementsFor(const QByteArray& dictionary)
{
    return QByteArray(schema2) + "; INSERT INTO meta VALUES (2, '7.2.0', " + quoted(dictionary)
        + ");";
}

QString corpusFile(const QString& name)
{
    return qEnvironmentVariable("TESSEL_CORPUS") + "/csdb/" + name;
}

} // namespace

class tst_CSProDb : public QObject {
    Q_OBJECT

private slots:
    void init();
    void readsAllForms_data();
    void readsAllForms();
    void refuses_data();
    void refuses();
    void anyName_data();
    void anyName();
    void link();
    void leavesNothingBeside_data();
    void leavesNothingBeside();
    void changesBesideTheFile();
    void interruptedChange();
    void lockedByAnotherProgram();
    void damage();
    void readsTwice();

    void listsAsTheDictionary_data();
    void listsAsTheDictionary();
    void allCommands();
    void notADatabase_data();
    void notADatabase();
    void encodingDoesNothing();
    void jsonNeedsTheRulesAsWritten();
    void realFiles_data();
    void realFiles();

private:
    QString m_path;
    std::unique_ptr<QTemporaryDir> m_folder;
};

void tst_CSProDb::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    m_path = m_folder->filePath("cases.csdb");
}

void tst_CSProDb::readsAllForms_data()
{
    QTest::addColumn<QByteArray>("table");
    QTest::addColumn<QByteArray>("encoding");
    QTest::addColumn<QByteArray>("dictionary");
    QTest::addColumn<int>("schema");
    QTest::addColumn<QString>("version");
    const QByteArray text = textForm();
    const QByteArray json = readFile(TESSEL_TEST_DATA "/json_household.dcf");
    QTest::newRow("schema 2, text")
        << QByteArray(schema2) << QByteArray("UTF-8") << text << 2 << "7.2.0";
    QTest::newRow("schema 3, text")
        << QByteArray(schema2) << QByteArray("UTF-8") << text << 3 << "7.4.0";
    QTest::newRow("schema 3, JSON")
        << QByteArray(schema3) << QByteArray("UTF-8") << json << 3 << "8.0.0";
    QTest::newRow("UTF-16") << QByteArray(schema3) << QByteArray("UTF-16le") << text << 3
                            << "8.0.0";
}

void tst_CSProDb::readsAllForms()
{
    QFETCH(QByteArray, table);
    QFETCH(QByteArray, encoding);
    QFETCH(QByteArray, dictionary);
    QFETCH(int, schema);
    QFETCH(QString, version);
    QVERIFY(make(m_path,
        "PRAGMA encoding = '" + encoding + "'; " + table
            + "; CREATE TABLE cases (id TEXT, key TEXT);"
              "INSERT INTO meta (schema_version, cspro_version, dictionary"
            + (table == schema3 ? ", dictionary_structure, dictionary_timestamp" : "")
            + ") VALUES (" + QByteArray::number(schema) + ", '" + version.toLatin1() + "', "
            + quoted(dictionary) + (table == schema3 ? ", '', 0" : "") + ")"));
    CSProDb db;
    QVERIFY2(db.open(m_path), qPrintable(db.errorText()));
    QVERIFY(db.errorText().isNull());
    QCOMPARE(db->dictionary(), dictionary);
    QCOMPARE(db->schemaVersion(), schema);
    QCOMPARE(db->csproVersion(), version);
}

void tst_CSProDb::refuses_data()
{
    QTest::addColumn<QByteArray>("statements");
    QTest::addColumn<QString>("reason");
    const QString noTable = "it has no table meta";
    const QByteArray table = QByteArray(schema2).replace(" NOT NULL", "") + ';';
    const auto row = [](const char* name, const QByteArray& statements, const QString& reason) {
        QTest::newRow(name) << statements << reason;
    };
    row("another database", "CREATE TABLE a (b)", noTable);
    row("a view",
        "CREATE VIEW meta AS SELECT 1 AS schema_version, '8' AS cspro_version, 'x' AS dictionary",
        noTable);
    row("a trigger",
        "CREATE TABLE a (b); CREATE TRIGGER meta AFTER INSERT ON a BEGIN SELECT 1; END", noTable);
    row("a virtual table",
        "CREATE VIRTUAL TABLE meta USING fts4(schema_version, cspro_version, dictionary)", noTable);
    row("other columns", "CREATE TABLE meta (schema_version, cspro_version)", "has no columns");
    row("no row", table, "its table meta is empty");
    row("null", table + "INSERT INTO meta VALUES (2, '7', NULL)", "is no text");
    row("no text", table + "INSERT INTO meta VALUES (2, '7', '')", "is no text");
    row("bytes", table + "INSERT INTO meta VALUES (2, '7', x'5B44')", "is no text");
    row("a number",
        "CREATE TABLE meta (schema_version, cspro_version, dictionary);"
        "INSERT INTO meta VALUES (2, '7', 12)",
        "is no text");
    row("several rows",
        table + "INSERT INTO meta VALUES (2, '7', '[Dictionary]'), (3, '8', '[Dictionary]')",
        "several rows");
    row("a column that is worked out",
        "CREATE TABLE meta (schema_version, cspro_version, dictionary AS "
        "(zeroblob(300000000)));"
        "INSERT INTO meta VALUES (3, '8')",
        noTable);
}

void tst_CSProDb::refuses()
{
    QFETCH(QByteArray, statements);
    QFETCH(QString, reason);
    QVERIFY(make(m_path, statements));
    CSProDb db;
    QVERIFY(!db.open(m_path));
    QVERIFY2(db.errorText().contains(reason), qPrintable(db.errorText()));
}

void tst_CSProDb::anyName_data()
{
    QTest::addColumn<QString>("name");
    for (const char* name :
        { "a?b", "a#b", "a%41b", "a:b", "a&mode=rwc", "file:a", "a b", "a+b", "é;'\"" })
        QTest::newRow(name) << QString::fromUtf8(name);
}

void tst_CSProDb::anyName()
{
    QFETCH(QString, name);
    QVERIFY(make(m_path, statementsFor(textForm())));
    const QString path = m_folder->filePath(name);
    QVERIFY(QFile::rename(m_path, path));
    CSProDb db;
    QVERIFY2(db.open(path), qPrintable(db.errorText()));
    QCOMPARE(db->dictionary(), textForm());
    const QString before = QDir::currentPath();
    QVERIFY(QDir::setCurrent(m_folder->path()));
    CSProDb relative;
    const bool isOpen = relative.open(name);
    QDir::setCurrent(before);
    QVERIFY2(isOpen, qPrintable(relative.errorText()));
    QCOMPARE(QDir(m_folder->path()).entryList(QDir::Files), QStringList { name });
}

void tst_CSProDb::link()
{
    QVERIFY(make(m_path, statementsFor(textForm())));
    QVERIFY(QDir(m_folder->path()).mkdir("links"));
    const QString link = m_folder->filePath("links/cases.csdb");
    QVERIFY(QFile::link("../cases.csdb", link));
    CSProDb db;
    QVERIFY2(db.open(link), qPrintable(db.errorText()));
    QCOMPARE(
        QDir(m_folder->filePath("links")).entryList(QDir::Files), QStringList { "cases.csdb" });
}

void tst_CSProDb::leavesNothingBeside_data()
{
    QTest::addColumn<QByteArray>("mode");
    for (const char* mode : { "delete", "truncate", "persist", "wal" })
        QTest::newRow(mode) << QByteArray(mode);
}

void tst_CSProDb::leavesNothingBeside()
{
    QFETCH(QByteArray, mode);
    QVERIFY(make(m_path, "PRAGMA journal_mode = " + mode + "; " + statementsFor(textForm())));
    const QByteArray bytes = readFile(m_path);
    const QDir folder(m_folder->path());
    const QStringList before = folder.entryList(QDir::Files);
    QFile::setPermissions(m_path, QFile::ReadOwner);
    QFile::setPermissions(m_folder->path(), QFile::ReadOwner | QFile::ExeOwner);
    {
        CSProDb db;
        QVERIFY2(db.open(m_path), qPrintable(db.errorText()));
        QCOMPARE(db->dictionary(), textForm());
        QCOMPARE(folder.entryList(QDir::Files), before);
    }
    QFile::setPermissions(m_folder->path(), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    QCOMPARE(folder.entryList(QDir::Files), before);
    QCOMPARE(readFile(m_path), bytes);
}

// What stands in the log is newer than the file, which is not read without it; a log that is empty
// belongs to a program that may write on.
void tst_CSProDb::changesBesideTheFile()
{
    CSProDb db;
    {
        Database writer(m_path);
        QVERIFY(writer.run("PRAGMA journal_mode = wal; " + statementsFor(textForm())));
        QVERIFY(!db.open(m_path));
        QVERIFY2(db.errorText().contains("may have changes that are not yet in it"),
            qPrintable(db.errorText()));
        QVERIFY(writer.run("PRAGMA wal_checkpoint(TRUNCATE)"));
        QVERIFY(!db.open(m_path));
        QVERIFY2(db.errorText().contains("is open in another program"), qPrintable(db.errorText()));
    }
    QVERIFY2(db.open(m_path), qPrintable(db.errorText()));
    QCOMPARE(db->dictionary(), textForm());
}

// As after a crash of the program that changed it.
void tst_CSProDb::interruptedChange()
{
    const QString original = m_folder->filePath("original.csdb");
    Database writer(original);
    QVERIFY(writer.run(statementsFor(textForm()) + "CREATE TABLE cases (id);"));
    QVERIFY(
        writer.run("PRAGMA cache_size = 1; BEGIN; UPDATE meta SET cspro_version = '9';"
                   "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 99)"
                   "INSERT INTO cases SELECT randomblob(5000) FROM n;"));
    QVERIFY(QFile::copy(original, m_path));
    QVERIFY(QFile::copy(original + "-journal", m_path + "-journal"));
    const QByteArray bytes = readFile(m_path);
    const QByteArray journal = readFile(m_path + "-journal");
    QVERIFY(!journal.isEmpty());
    CSProDb db;
    QVERIFY(!db.open(m_path));
    QVERIFY2(db.errorText().contains("in the middle of a change"), qPrintable(db.errorText()));
    QCOMPARE(readFile(m_path), bytes);
    QCOMPARE(readFile(m_path + "-journal"), journal);
}

void tst_CSProDb::lockedByAnotherProgram()
{
    Database writer(m_path);
    QVERIFY(writer.run(statementsFor(textForm())));
    QVERIFY(writer.run("BEGIN EXCLUSIVE"));
    const Outcome busy = runTessel({ "fields", m_path });
    QCOMPARE(busy.status, 1);
    QVERIFY2(busy.errors.contains(m_path.toUtf8() + ": error: is being changed by another program"),
        busy.errors.constData());
    QVERIFY(writer.run("COMMIT"));
    QCOMPARE(runTessel({ "fields", m_path }).status, 0);
}

// Bytes are changed and ends cut off at random: the dictionary, or what is wrong, always one.
void tst_CSProDb::damage()
{
    QVERIFY(make(m_path, "PRAGMA page_size = 512; " + statementsFor(textForm())));
    const QByteArray whole = readFile(m_path);
    QRandomGenerator random(7);
    int refused = 0;
    for (int round = 0; round < 1000; ++round) {
        QByteArray bytes = whole;
        const int changes = random.bounded(1, 8);
        for (int i = 0; i < changes; ++i)
            bytes[16 + random.bounded(bytes.size() - 16)] = char(random.bounded(256));
        if (round % 4 == 0)
            bytes.truncate(random.bounded(1, bytes.size()));
        QVERIFY(writeFile(m_path, bytes));
        CSProDb db;
        const bool isOpen = db.open(m_path);
        QCOMPARE(isOpen, db.errorText().isNull());
        refused += isOpen ? 0 : 1;
    }
    QVERIFY(refused > 250);
    QVERIFY(writeFile(m_path, whole.left(whole.size() / 2)));
    CSProDb cut;
    QVERIFY(!cut.open(m_path));
    QVERIFY2(cut.errorText().contains("is a damaged"), qPrintable(cut.errorText()));
}

void tst_CSProDb::readsTwice()
{
    QVERIFY(make(m_path, statementsFor(textForm())));
    CSProDb db;
    QVERIFY(!db.open(m_folder->filePath("none.csdb")));
    QVERIFY2(db.errorText().contains("No such file"), qPrintable(db.errorText()));
    QVERIFY(db.open(m_path));
    QVERIFY(db.errorText().isNull());
}

void tst_CSProDb::listsAsTheDictionary_data()
{
    QTest::addColumn<QString>("dictionary");
    for (const char* name : { "basic_bom_crlf.dcf", "written_household.dcf", "json_household.dcf",
             "export_levels.dcf", "problems.dcf" })
        QTest::newRow(name) << name;
}

void tst_CSProDb::listsAsTheDictionary()
{
    QFETCH(QString, dictionary);
    QVERIFY(make(m_path, statementsFor(readFile(TESSEL_TEST_DATA "/" + dictionary))));
    QJsonObject fromDictionary = listedFile({ dictionary });
    QJsonObject fromDb = listedFile({ m_path });
    QJsonArray notes = fromDb.take("notes").toArray();
    QCOMPARE(notes.takeAt(0).toString(), "Dictionary of a CSPro DB (CSPro 7.2.0, schema 2)");
    QCOMPARE(notes, fromDictionary.take("notes").toArray());
    QCOMPARE(fromDb.take("file").toString(), m_path);
    fromDictionary.remove("file");
    QVERIFY(!fromDictionary.value("fields").toArray().isEmpty());
    QCOMPARE(fromDb, fromDictionary);
    QCOMPARE(runTessel({ "diff", dictionary, m_path }).status, 0);
}

void tst_CSProDb::allCommands()
{
    QVERIFY(make(m_path, statementsFor(textForm())));
    const auto replaced = [this](QByteArray text) {
        return text.replace(m_path.toUtf8(), "basic.dcf").replace("cases.csdb", "basic.dcf");
    };
    for (const QStringList& arguments : { QStringList { "tree" }, QStringList { "fields" },
             QStringList { "fields", "--type", "cspro" },
             QStringList { "fields", "--rules", "established" },
             QStringList { "export", "--to", "sql" } }) {
        const Outcome expected = runTessel(arguments + QStringList { "basic.dcf" });
        const Outcome outcome = runTessel(arguments + QStringList { m_path });
        QCOMPARE(outcome.status, expected.status);
        QCOMPARE(replaced(outcome.output), expected.output);
        QCOMPARE(replaced(outcome.errors), expected.errors);
        QVERIFY(!outcome.output.isEmpty());
    }
    const QString lookup = m_folder->filePath("rooms.txt");
    QVERIFY(writeFile(lookup, "01,One\n77,Not applicable\n"));
    const Outcome against = runTessel({ "lookup", "--against", m_path + ":ROOMS", lookup });
    QCOMPARE(against.status, 1);
    QVERIFY2(against.output.contains("Not stated"), against.output.constData());
}

void tst_CSProDb::notADatabase_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QByteArray>("reason");
    QByteArray noise(100'000, '\0');
    QRandomGenerator random(11);
    for (char& byte : noise)
        byte = char(random.bounded(256));
    const QByteArray encrypted = "is no CSPro DB that can be read: it is encrypted or damaged";
    const QByteArray binary = "is a binary file";
    QTest::newRow("encrypted") << "a.csdbe" << noise << encrypted;
    QTest::newRow("no SQLite file") << "a.csdb" << noise << encrypted;
    QTest::newRow("noise") << "a.dcf" << noise << binary;
    QTest::newRow("dictionary amid noise") << "a.dcf" << noise + "\n[Dictionary]\n" << binary;
    QTest::newRow("few bytes") << "a.dcf"
                               << QByteArray("\x7F"
                                             "ELF\x02\x01\x01")
                               << binary;
    QTest::newRow("brace and noise") << "a.dcf" << '{' + noise << binary;
    QTest::newRow("head of an SQLite file alone")
        << "a.csdb" << QByteArray("SQLite format 3\0", 16) << QByteArray("is a damaged");
}

// One line on standard error, without bytes of the file.
void tst_CSProDb::notADatabase()
{
    QFETCH(QString, name);
    QFETCH(QByteArray, bytes);
    QFETCH(QByteArray, reason);
    const QString path = m_folder->filePath(name);
    QVERIFY(writeFile(path, bytes));
    for (const char* command : { "fields", "tree" }) {
        const Outcome outcome = runTessel({ command, path });
        QCOMPARE(outcome.status, 1);
        QCOMPARE(outcome.output, QByteArray());
        QVERIFY2(outcome.errors.startsWith(path.toUtf8() + ": error: " + reason),
            outcome.errors.constData());
        QCOMPARE(outcome.errors.count('\n'), 1);
        QVERIFY(outcome.errors.size() < 400);
    }
}

void tst_CSProDb::encodingDoesNothing()
{
    QVERIFY(make(m_path, statementsFor(readFile(TESSEL_TEST_DATA "/written_household.dcf"))));
    const Outcome outcome = runTessel({ "fields", "--encoding", "windows-1252", m_path });
    QCOMPARE(outcome.status, 0);
    QVERIFY2(outcome.errors.contains("--encoding does nothing here"), outcome.errors.constData());
    QCOMPARE(outcome.output, runTessel({ "fields", m_path }).output);
}

void tst_CSProDb::jsonNeedsTheRulesAsWritten()
{
    QVERIFY(make(m_path, statementsFor(readFile(TESSEL_TEST_DATA "/json_household.dcf"))));
    const Outcome outcome = runTessel({ "fields", "--rules", "established", m_path });
    QCOMPARE(outcome.status, 1);
    QVERIFY2(outcome.errors.contains("which --rules established does not read"),
        outcome.errors.constData());
}

void tst_CSProDb::realFiles_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("dictionary");
    QTest::addColumn<QString>("origin");
    QTest::addColumn<int>("records");
    QTest::addColumn<int>("fields");
    QTest::addColumn<int>("sets"); // value sets
    const auto row = [](const char* name, const char* dictionary, const char* origin, int records,
                         int fields, int sets) {
        QTest::newRow(name) << name << dictionary << origin << records << fields << sets;
    };
    row("popstan-geocodes-8.0.csdb", "PSC_GEOCODES_DICT", "8.0.0, schema 3", 1, 5, 0);
    row("popstan-household-8.0.csdb", "PSC_HOUSEHOLD_DICT", "8.0.0, schema 3", 3, 51, 39);
    row("popstan-lfs-sample-7.4.csdb", "SAMPLE_DICT", "7.4.0, schema 3", 1, 13, 0);
    row("industry-codes-7.2.csdb", "INDUSTRY_CODES_DICT", "7.2.0, schema 2", 1, 2, 0);
    row("occupation-isco-7.1.csdb", "OCCUPATION_CODES_DICT", "7.1.3, schema 2", 1, 2, 0);
}

void tst_CSProDb::realFiles()
{
    if (!qEnvironmentVariableIsSet("TESSEL_CORPUS"))
        QSKIP("TESSEL_CORPUS does not name a folder of real files");
    QFETCH(QString, name);
    QFETCH(QString, origin);
    const Outcome outcome = runTessel({ "fields", corpusFile(name) });
    QCOMPARE(outcome.status, 0);
    QCOMPARE(outcome.errors, QByteArray());
    const QJsonObject json = listedFile({ corpusFile(name) });
    QTEST(json.value("name").toString(), "dictionary");
    QCOMPARE(json.value("kind").toString(), "cspro");
    QCOMPARE(json.value("notes").toArray().first().toString(),
        "Dictionary of a CSPro DB (CSPro " + origin + ')');
    QTEST(json.value("records").toArray().size(), "records");
    const QJsonArray fields = json.value("fields").toArray();
    QTEST(fields.size(), "fields");
    int sets = 0;
    for (const QJsonValue& field : fields)
        sets += field.toObject().value("valueSets").toArray().size();
    QTEST(sets, "sets");
    // The dictionary in it, as a file of its own, says the same.
    CSProDb db;
    QVERIFY(db.open(corpusFile(name)));
    const QString alone = m_folder->filePath("alone.dcf");
    QVERIFY(writeFile(alone, db->dictionary()));
    QCOMPARE(listedFile({ alone }).value("fields").toArray(), fields);
}

QTEST_GUILESS_MAIN(tst_CSProDb)
#include "tst_CSProDb.moc"
