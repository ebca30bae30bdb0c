// The schema of a server that a build goes into: its name, the rights of the user, and what others
// have in it or beside it.
#include "DataRows.h"
#include "PostgresBuilds.h"

#include <QtTest>

class tst_PostgresSchema : public QObject, private PostgresBuilds {
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void schemas_data();
    void schemas();
    void noRights();
    void othersInTheSchema();
    void ownTables();
    void ownViews();
    void otherSchemas();
    void ownConstraints();
    void noSchema();
    void readOnly();
};

void tst_PostgresSchema::initTestCase()
{
    const QString missing = m_server.start();
    if (!missing.isEmpty())
        QSKIP(qPrintable(missing));
}

void tst_PostgresSchema::init()
{
    QCOMPARE(ask("SET client_min_messages = error; DROP SCHEMA IF EXISTS b, other CASCADE;"),
        QByteArray());
}

void tst_PostgresSchema::schemas_data()
{
    QTest::addColumn<QString>("schema");
    QTest::addColumn<QByteArray>("name");
    QTest::newRow("capitals") << "North" << QByteArray("north");
    QTest::newRow("quotes") << "It's \"North\"" << QByteArray("It's \"North\"");
    QTest::newRow("reserved") << "select" << QByteArray("select");
}

// As in a statement without quotes, where it can stand so.
void tst_PostgresSchema::schemas()
{
    QFETCH(QString, schema);
    QFETCH(QByteArray, name);
    const QString dictionary = writeFile(m_folder, "survey.dcf", surveyDictionary());
    const QString first = writeFile(m_folder, "one.dat", "10101 3\n");
    const QString second = writeFile(m_folder, "two.dat", "10102 4\n");
    QCOMPARE(build({ dictionary, first }, { "--schema", schema }).status, 0);
    const Outcome refused = build({ dictionary, first }, { "--schema", schema });
    QVERIFY2(
        refused.errors.contains("schema \"" + QByteArray(name).replace('"', "\"\"") + "\" has"),
        refused.errors.constData());
    QCOMPARE(build({ dictionary, first }, { "--schema", schema, "--overwrite" }).status, 0);
    const Outcome added = build({ dictionary, second }, { "--schema", schema, "--add" });
    QVERIFY2(added.status == 0, added.errors.constData());
    const QByteArray quotedName = '"' + QByteArray(name).replace('"', "\"\"") + '"';
    QCOMPARE(ask("SELECT rooms FROM " + quotedName + ".house ORDER BY 1;"), QByteArray("3\n4"));
    QCOMPARE(ask("SET client_min_messages = error; DROP SCHEMA " + quotedName + " CASCADE;"),
        QByteArray());
}

void tst_PostgresSchema::noRights()
{
    QCOMPARE(ask("SET client_min_messages = error; DROP ROLE IF EXISTS guest; CREATE ROLE guest "
                 "LOGIN; CREATE SCHEMA b;"),
        QByteArray());
    for (const char* schema : { "b", "fresh" }) {
        const Outcome outcome = runTessel({ "build", m_dictionary, m_data, "--to",
            m_server.connection("postgres", "guest"), "--schema", schema });
        QCOMPARE(outcome.status, 1);
        QVERIFY2(outcome.errors.contains("permission denied"), outcome.errors.constData());
        QVERIFY2(outcome.errors.contains("granted by the owner"), outcome.errors.constData());
    }
    // Rights on the schema do not make the tables of another one's build replaceable.
    QCOMPARE(build({ m_dictionary, m_data }).status, 0);
    QCOMPARE(
        ask("GRANT ALL ON SCHEMA b TO guest; GRANT SELECT ON ALL TABLES IN SCHEMA b TO guest;"),
        QByteArray());
    const Outcome outcome = runTessel({ "build", m_dictionary, m_data, "--overwrite", "--to",
        m_server.connection("postgres", "guest"), "--schema", "b" });
    QCOMPARE(outcome.status, 1);
    QVERIFY2(outcome.errors.contains("belongs to another user"), outcome.errors.constData());
}

// Tables of others beside those of the build are in nobody's way.
void tst_PostgresSchema::othersInTheSchema()
{
    QCOMPARE(ask("SET client_min_messages = error; DROP ROLE IF EXISTS guest; CREATE ROLE guest "
                 "LOGIN; CREATE SCHEMA b AUTHORIZATION guest; CREATE TABLE b.mine (x TEXT);"),
        QByteArray());
    for (int i = 0; i < 2; ++i) {
        const Outcome outcome = runTessel({ "build", m_dictionary, m_data, "--overwrite", "--to",
            m_server.connection("postgres", "guest"), "--schema", "b" });
        QVERIFY2(outcome.status == 0, outcome.errors.constData());
    }
    QCOMPARE(ask("SELECT count(*) FROM b.mine;"), QByteArray("0"));
}

void tst_PostgresSchema::ownTables()
{
    QCOMPARE(ask("CREATE SCHEMA b; CREATE TABLE b.person (mine TEXT);"), QByteArray());
    const Outcome taken = build({ m_dictionary, m_data }, { "--overwrite" });
    QCOMPARE(taken.status, 1);
    QVERIFY2(taken.errors.contains("table or view \"person\" that is of no build"),
        taken.errors.constData());
    QCOMPARE(ask("SELECT count(mine) FROM b.person; DROP TABLE b.person; CREATE TABLE b.mine (x "
                 "TEXT);"),
        QByteArray("0"));
    QCOMPARE(build({ m_dictionary, m_data }).status, 0);
    QCOMPARE(ask("CREATE VIEW b.ages AS SELECT age FROM b.person;"), QByteArray());
    const Outcome used = build({ m_dictionary, m_data }, { "--overwrite" });
    QCOMPARE(used.status, 1);
    QVERIFY2(used.errors.contains("view ages depends on the tables of the former build"),
        used.errors.constData());
    QCOMPARE(ask("DROP VIEW b.ages;"), QByteArray());
    QCOMPARE(build({ m_dictionary, m_data }, { "--overwrite" }).status, 0);
    QCOMPARE(ask("SELECT count(*) FROM b.mine;"), QByteArray("0"));
}

void tst_PostgresSchema::ownViews()
{
    for (const QByteArray view : { "person_labels", "person_valid" }) {
        QCOMPARE(
            ask("CREATE SCHEMA b; CREATE VIEW b." + view + " AS SELECT 1 AS mine;"), QByteArray());
        const Outcome outcome = build({ m_dictionary, m_data }, { "--overwrite" });
        QCOMPARE(outcome.status, 1);
        QVERIFY2(outcome.errors.contains("table or view \"" + view + "\" that is of no build"),
            outcome.errors.constData());
        QCOMPARE(ask("SELECT mine FROM b." + view + "; DROP SCHEMA b CASCADE;").left(1),
            QByteArray("1"));
    }
}

// Tables and views of the same names in another schema are others, but may depend on these.
void tst_PostgresSchema::otherSchemas()
{
    QCOMPARE(ask("CREATE SCHEMA other; CREATE TABLE other.person (age INTEGER); CREATE VIEW "
                 "other.ages AS SELECT age FROM other.person;"),
        QByteArray());
    const Outcome first = build({ m_dictionary, m_data });
    QVERIFY2(first.status == 0, first.errors.constData());
    const Outcome second = build({ m_dictionary, m_data }, { "--overwrite" });
    QVERIFY2(second.status == 0, second.errors.constData());
    QCOMPARE(ask("SELECT count(*) FROM other.person;"), QByteArray("0"));
    QCOMPARE(
        ask("CREATE VIEW other.person_labels AS SELECT age FROM b.person_labels;"), QByteArray());
    const QByteArray before = state();
    const Outcome used = build({ m_dictionary, m_data }, { "--overwrite" });
    QCOMPARE(used.status, 1);
    QVERIFY2(
        used.errors.contains("view other.person_labels depends on the tables of the former build"),
        used.errors.constData());
    QCOMPARE(state(), before);
}

// What else depends on the former tables keeps them.
void tst_PostgresSchema::ownConstraints()
{
    QCOMPARE(build({ m_dictionary, m_data }).status, 0);
    QCOMPARE(ask("CREATE TABLE b.notes (case_id BIGINT REFERENCES b.cases);"), QByteArray());
    const QByteArray before = state();
    const Outcome outcome = build({ m_dictionary, m_data }, { "--overwrite" });
    QCOMPARE(outcome.status, 1);
    QVERIFY2(outcome.errors.contains("; drop what depends on the former tables, then build again"),
        outcome.errors.constData());
    QCOMPARE(state(), before);
}

void tst_PostgresSchema::noSchema()
{
    const Outcome outcome = buildWith({ "search_path=none" });
    QCOMPARE(outcome.status, 1);
    QVERIFY2(outcome.errors.contains("has none of the schemas of the search path"),
        outcome.errors.constData());
}

void tst_PostgresSchema::readOnly()
{
    const Outcome outcome = buildWith({ "default_transaction_read_only=on" }, { "--schema", "b" });
    QCOMPARE(outcome.status, 1);
    QVERIFY2(outcome.errors.contains("; the server takes no changes"), outcome.errors.constData());
}

QTEST_GUILESS_MAIN(tst_PostgresSchema)
#include "tst_PostgresSchema.moc"
