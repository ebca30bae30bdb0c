// Builds parts of the example census and builds again from the settings that were kept.
#include "RunTessel.h"
#include "SqliteRows.h"

#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QtTest>

namespace {

const QStringList census { "../../examples/census.dcf", "../../examples/census.dat" };

} // namespace

class tst_BuildSettings : public QObject {
    Q_OBJECT

private slots:
    void init();
    void conditions();
    void noCases();
    void columns();
    void repeats();
    void sample();
    void row();
    void counts();
    void keptInDatabase();
    void again_data();
    void again();
    void relativeNames();
    void namesThatStay();
    void commandLineWins();
    void dictionaryOptions();
    void uselessDictionaryOptions();
    void plan();
    void notSaved();
    void mistakes_data();
    void mistakes();
    void files_data();
    void files();

private:
    QString pathOf(const QString& name) const
    {
        return m_folder->filePath(name);
    }
    // Builds name.sqlite of the census.
    Outcome build(const QString& name, const QStringList& options) const
    {
        return runTessel(QStringList { "build" } + census + options
            + QStringList { "--to", pathOf(name + QStringLiteral(".sqlite")) });
    }

    // A small survey, d.dcf and d.dat, in a folder with one for settings.
    void writeSurvey(const QString& folder) const
    {
        QVERIFY(QDir(pathOf(folder)).mkpath("set"));
        QVERIFY(writeFile(pathOf(folder + "/d.dcf"),
            "[Dictionary]\nVersion=CSPro 7.7\nName=D\nRecordTypeStart=0\nRecordTypeLen=0\n\n"
            "[Level]\nName=L\n\n[IdItems]\n\n[Item]\nName=I\nStart=1\nLen=2\n\n[Record]\n"
            "Name=R\n\n[Item]\nName=V\nStart=3\nLen=1\n"));
        QVERIFY(writeFile(pathOf(folder + "/d.dat"), "011\n"));
    }
    // In a folder of the test.
    Outcome runIn(
        const QString& folder, const QStringList& arguments, const QByteArray& input = {}) const
    {
        return runProgram("env",
            QStringList { "-C", pathOf(folder), QStringLiteral(TESSEL_PROGRAM) } + arguments,
            input);
    }
    static QJsonObject settingsOf(const QByteArray& json)
    {
        return QJsonDocument::fromJson(json).object();
    }

    std::unique_ptr<QTemporaryDir> m_folder;
};

void tst_BuildSettings::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
}

void tst_BuildSettings::conditions()
{
    QCOMPARE(build("all", {}).status, 0);
    QCOMPARE(build("part", { "--where", "PROVINCE=11..13,40", "--where", "DISTRICT=1" }).status, 0);
    const SqliteRows all(pathOf("all.sqlite"));
    const SqliteRows part(pathOf("part.sqlite"));
    for (const QString table : { "HOUSEHOLD", "PERSON", "LIVESTOCK" }) {
        const QString columns = QStringLiteral("SELECT PROVINCE, DISTRICT, EA, HOUSEHOLD_NUMBER, "
                                               "row FROM %1%2 ORDER BY rowid");
        const auto wanted = all.rows(columns.arg(table,
            QStringLiteral(" WHERE (PROVINCE BETWEEN 11 AND 13 OR PROVINCE = 40) AND DISTRICT = "
                           "1")));
        QVERIFY(!wanted.isEmpty());
        QCOMPARE(part.rows(columns.arg(table, QString())), wanted);
    }
    QCOMPARE(
        part.value("SELECT count(*) FROM cases"), part.value("SELECT max(case_id) FROM cases"));
}

// A database without cases is made all the same.
void tst_BuildSettings::noCases()
{
    const Outcome outcome = build("none", { "--where", "PROVINCE=98" });
    QCOMPARE(outcome.status, 0);
    QVERIFY2(outcome.errors.contains("census.dcf: warning: none of the cases is taken: --where "
                                     "PROVINCE=98 leaves all out\n"),
        outcome.errors.constData());
    QVERIFY(!build("some", { "--where", "PROVINCE=11" }).errors.contains("leaves all out"));
}

void tst_BuildSettings::columns()
{
    QCOMPARE(build("part", { "--records", "PERSON", "--variables", "AGE,PERSON.SEX" }).status, 0);
    const SqliteRows part(pathOf("part.sqlite"));
    QCOMPARE(part.value("SELECT group_concat(name) FROM pragma_table_info('PERSON')"),
        QStringLiteral("case_id,row,PROVINCE,DISTRICT,EA,HOUSEHOLD_NUMBER,SEX,AGE"));
    QCOMPARE(part.value("SELECT count(*) FROM PERSON"), QStringLiteral("4299"));
    QCOMPARE(part.value("SELECT count(*) FROM cases"), QStringLiteral("1000"));
    QCOMPARE(part.value("SELECT count(*) FROM sqlite_master WHERE name = 'HOUSEHOLD'"),
        QStringLiteral("0"));
    QCOMPARE(part.value("SELECT count(*) FROM tessel_records WHERE name = 'HOUSEHOLD'"),
        QStringLiteral("0"));
}

void tst_BuildSettings::repeats()
{
    const QStringList tables { "--repeats", "tables", "--plan" };
    const auto planOf = [&](const QString& variable) {
        return runTessel(
            QStringList { "build" } + census + tables + QStringList { "--variables", variable });
    };
    const Outcome outcome = planOf(QStringLiteral("LANGUAGE_2"));
    QCOMPARE(outcome.status, 2);
    QVERIFY(outcome.errors.contains("'LANGUAGE_2' is one occurrence"));
    const Outcome item = planOf(QStringLiteral("LANGUAGE"));
    QCOMPARE(item.status, 0);
    QVERIFY(item.output.contains("table LANGUAGE"));
    QCOMPARE(build("part", { "--variables", "LANGUAGE_2", "--records", "PERSON" }).status, 0);
    QCOMPARE(SqliteRows(pathOf("part.sqlite"))
                 .value("SELECT group_concat(name) FROM pragma_table_info('PERSON')"),
        QStringLiteral("case_id,row,PROVINCE,DISTRICT,EA,HOUSEHOLD_NUMBER,LANGUAGE_2"));
}

void tst_BuildSettings::sample()
{
    const auto casesOf = [&](const QString& name) {
        return SqliteRows(pathOf(name + ".sqlite"))
            .rows("SELECT PROVINCE, DISTRICT, EA, HOUSEHOLD_NUMBER FROM cases");
    };
    QCOMPARE(build("one", { "--sample", "0.2" }).status, 0);
    QCOMPARE(build("same", { "--sample", "0.2", "--seed", "1" }).status, 0);
    QCOMPARE(build("two", { "--sample", "0.2", "--seed", "2" }).status, 0);
    QVERIFY(casesOf("one").size() > 150 && casesOf("one").size() < 250);
    QCOMPARE(casesOf("same"), casesOf("one"));
    QVERIFY(casesOf("two") != casesOf("one"));
    QCOMPARE(build("tenth", { "--every", "10" }).status, 0);
    QCOMPARE(casesOf("tenth").size(), 100);
}

// Rows without cases keep their numbers in the file.
void tst_BuildSettings::row()
{
    const Outcome outcome = runTessel(
        { "build", "../../examples/person.sav", "--every", "100", "--to", pathOf("rows.sqlite") });
    QCOMPARE(outcome.status, 0);
    QVERIFY(outcome.output.contains(
        "4299 rows read = 42 rows + 0 rejects + 0 deleted + 0 blank + 4257 left out\n"));
    QCOMPARE(
        SqliteRows(pathOf("rows.sqlite")).value("SELECT min(row) || ' ' || max(row) FROM person"),
        QStringLiteral("100 4200"));
}

void tst_BuildSettings::counts()
{
    const Outcome outcome = build("part", { "--where", "PROVINCE=11" });
    QVERIFY(outcome.output.contains("1000 cases read = 161 cases + 0 deleted + 839 left out\n"));
    const SqliteRows part(pathOf("part.sqlite"));
    for (const QString table : { "tessel_builds", "tessel_sources" }) {
        QCOMPARE(part.value(QStringLiteral("SELECT left_out_cases FROM ") + table),
            QStringLiteral("839"));
        QVERIFY(part.value(QStringLiteral("SELECT left_out_lines FROM ") + table).toInt() > 839);
    }
    QCOMPARE(part.value("SELECT lines - row_count - rejected_lines - deleted_lines - blank_lines - "
                        "left_out_lines FROM tessel_builds"),
        QStringLiteral("0"));
}

void tst_BuildSettings::keptInDatabase()
{
    QCOMPARE(
        build("part", { "--where", "PROVINCE=11", "--seed", "5", "--sample", "0.5" }).status, 0);
    const QString json =
        SqliteRows(pathOf("part.sqlite")).value("SELECT options FROM tessel_builds");
    const QJsonObject settings = QJsonDocument::fromJson(json.toUtf8()).object();
    QCOMPARE(settings.value("tessel_build").toInt(), 1);
    QCOMPARE(settings.value("seed").toInt(), 5);
    QCOMPARE(settings.value("dataBase").toObject().value("filter").toString(),
        QStringLiteral("PROVINCE=11"));
    QCOMPARE(settings.value("dataBase").toObject().value("sourceFile").toString(),
        QDir(dataFolder() + "/../../examples").canonicalPath() + "/census.dcf");
}

void tst_BuildSettings::again_data()
{
    QTest::addColumn<QStringList>("options");
    QTest::newRow("all") << QStringList {};
    QTest::newRow("records") << QStringList { "--records", "PERSON,HOUSEHOLD" };
    QTest::newRow("variables") << QStringList { "--variables", "SEX,AGE" };
    QTest::newRow("where") << QStringList { "--where", "PROVINCE=11 and EA=1..20" };
    QTest::newRow("sample") << QStringList { "--sample", "0.3", "--seed", "8" };
    QTest::newRow("every") << QStringList { "--every", "7" };
    QTest::newRow("repeats") << QStringList { "--repeats", "tables" };
    QTest::newRow("together") << QStringList { "--records", "PERSON", "--variables", "AGE",
        "--where", "PROVINCE=11..22", "--sample", "0.5", "--repeats", "tables" };
}

void tst_BuildSettings::again()
{
    QFETCH(QStringList, options);
    const QString file = pathOf("settings.json");
    const Outcome first = build("first", options + QStringList { "--save-config", file });
    QCOMPARE(first.status, 0);
    const Outcome second =
        runTessel({ "build", "--config", file, "--to", pathOf("second.sqlite") });
    QCOMPARE(second.status, 0);
    QCOMPARE(second.output.mid(second.output.indexOf('\n')),
        first.output.mid(first.output.indexOf('\n')));
    const SqliteRows one(pathOf("first.sqlite"));
    const SqliteRows other(pathOf("second.sqlite"));
    const auto schema = one.rows("SELECT type, name, sql FROM sqlite_master ORDER BY name");
    QCOMPARE(other.rows("SELECT type, name, sql FROM sqlite_master ORDER BY name"), schema);
    for (const QStringList& object : schema) {
        const QString& name = object.at(1);
        if (object.at(0) != "table" || name == "tessel_builds")
            continue;
        const QString all = QStringLiteral("SELECT * FROM \"%1\"").arg(name);
        QCOMPARE(other.rows(all), one.rows(all));
    }
    // And over the first one, with nothing on the command line but leave to do so.
    QCOMPARE(runTessel({ "build", "--config", file, "--overwrite" }).output, first.output);
    const QString kept = QStringLiteral("SELECT options FROM tessel_builds");
    QCOMPARE(SqliteRows(pathOf("first.sqlite")).value(kept), one.value(kept));
}

// They count from the folder of the settings, so that the program may run anywhere, and all of it
// may be moved.
void tst_BuildSettings::relativeNames()
{
    writeSurvey("work");
    const Outcome first = runIn(
        "work", { "build", "d.dcf", "d.dat", "--to", "out.sqlite", "--save-config", "set/s.json" });
    QVERIFY2(first.status == 0, first.errors.constData());
    const QJsonObject settings = settingsOf(readFile(pathOf("work/set/s.json")));
    const QJsonObject database = settings.value("dataBase").toObject();
    QCOMPARE(database.value("sourceFile").toString(), QStringLiteral("../d.dcf"));
    QCOMPARE(database.value("folder").toString(), QStringLiteral(".."));
    QCOMPARE(database.value("name").toString(), QStringLiteral("out.sqlite"));
    QCOMPARE(settings.value("data").toArray().first().toString(), QStringLiteral("../d.dat"));
    QVERIFY(QDir().rename(pathOf("work"), pathOf("moved")));
    QVERIFY(QFile::link(pathOf("moved/set"), pathOf("link")));
    for (const char* folder : { ".", "moved", "moved/set" }) {
        QVERIFY(QFile::remove(pathOf("moved/out.sqlite")));
        const QString name = QDir(pathOf(folder)).relativeFilePath(pathOf("moved/set/s.json"));
        const Outcome again = runIn(folder, { "build", "--config", name });
        QVERIFY2(again.status == 0, again.errors.constData());
        QCOMPARE(
            SqliteRows(pathOf("moved/out.sqlite")).value("SELECT V FROM R"), QStringLiteral("1"));
    }
    const Outcome linked = runIn(".", { "build", "--config", "link/s.json", "--overwrite" });
    QVERIFY2(linked.output.startsWith("moved/out.sqlite is made"), linked.output.constData());
    const Outcome saved = runIn(".",
        { "convert", "--config", "link/s.json", "--to", "csv", "-o", "moved/csv", "--save-config",
            "link/c.json" });
    QVERIFY2(saved.status == 0, saved.errors.constData());
    QVERIFY(QFile::remove(pathOf("moved/csv/R.csv")));
    const Outcome converted =
        runIn("moved", { "convert", "--config", "set/c.json", "--overwrite" });
    QVERIFY2(converted.status == 0, converted.errors.constData());
    QVERIFY(QFile::exists(pathOf("moved/csv/R.csv")));
    // A database may be anywhere.
    const QString folder = QDir(pathOf("moved")).canonicalPath();
    const QJsonObject kept = settingsOf(
        SqliteRows(pathOf("moved/out.sqlite")).value("SELECT options FROM tessel_builds").toUtf8());
    const QJsonObject keptDatabase = kept.value("dataBase").toObject();
    QCOMPARE(keptDatabase.value("sourceFile").toString(), folder + "/d.dcf");
    QCOMPARE(keptDatabase.value("folder").toString(), folder);
    QCOMPARE(kept.value("data").toArray().first().toString(), folder + "/d.dat");
}

// Standard input and absolute names are the same everywhere; a pipe has no folder.
void tst_BuildSettings::namesThatStay()
{
    writeSurvey("work");
    const QString dictionary = pathOf("work/d.dcf");
    const Outcome first = runIn("work",
        { "build", dictionary, "-", "--to", ":out.sqlite", "--save-config", "set/s.json" },
        "012\n");
    QVERIFY2(first.status == 0, first.errors.constData());
    const QJsonObject settings = settingsOf(readFile(pathOf("work/set/s.json")));
    const QJsonObject database = settings.value("dataBase").toObject();
    QCOMPARE(database.value("sourceFile").toString(), dictionary);
    QCOMPARE(settings.value("data").toArray().first().toString(), QStringLiteral("-"));
    QCOMPARE(database.value("name").toString(), QStringLiteral(":out.sqlite"));
    const Outcome again =
        runIn("work/set", { "build", "--config", "s.json", "--overwrite" }, "013\n");
    QVERIFY2(again.status == 0, again.errors.constData());
    const SqliteRows rows(pathOf("work/:out.sqlite"));
    QCOMPARE(rows.value("SELECT V FROM R"), QStringLiteral("3"));
    const Outcome piped =
        runIn("work", { "build", "d.dcf", "d.dat", "--plan", "--save-config", "/dev/stdout" });
    QVERIFY2(piped.output.contains("\"sourceFile\": \"d.dcf\""), piped.output.constData());
    // A connection is no name of a file, not even one that is refused.
    QVERIFY(writeFile(pathOf("work/set/server.json"),
        "{ \"tessel_build\": 1, \"dataBase\": { \"sourceFile\": \"../d.dcf\", \"name\": \"host=h "
        "password=x\" }, \"data\": [ \"../d.dat\" ] }"));
    const Outcome refused = runIn(".", { "build", "--config", "work/set/server.json" });
    QCOMPARE(refused.status, 2);
    QVERIFY2(refused.errors.contains("--to takes a server as"), refused.errors.constData());
}

void tst_BuildSettings::commandLineWins()
{
    const QString file = pathOf("settings.json");
    QCOMPARE(build("first",
                 { "--where", "PROVINCE=11", "--every", "2", "--records", "PERSON", "--variables",
                     "AGE", "--save-config", file })
                 .status,
        0);
    const QString saved = pathOf("other.json");
    QCOMPARE(runTessel({ "build", "--config", file, "--to", pathOf("second.sqlite"), "--where",
                           "PROVINCE=12", "--sample", "0.5", "--records", "HOUSEHOLD,PERSON",
                           "--repeats", "tables", "--save-config", saved })
                 .status,
        0);
    const QJsonObject settings = QJsonDocument::fromJson(readFile(saved)).object();
    QCOMPARE(settings.value("dataBase").toObject().value("filter").toString(),
        QStringLiteral("PROVINCE=12"));
    QCOMPARE(settings.value("split").toObject().value("factor").toDouble(), 0.5);
    QVERIFY(!settings.value("split").toObject().value("radioOutEveryX").toBool());
    QCOMPARE(settings.value("repeats").toString(), QStringLiteral("tables"));
    const SqliteRows second(pathOf("second.sqlite"));
    QCOMPARE(
        second.value("SELECT group_concat(DISTINCT PROVINCE) FROM cases"), QStringLiteral("12"));
    QCOMPARE(second.value("SELECT group_concat(name) FROM pragma_table_info('PERSON')"),
        QStringLiteral("case_id,row,PROVINCE,DISTRICT,EA,HOUSEHOLD_NUMBER,AGE"));
}

// The encoding and the language of the dictionary, from the command line and from settings.
void tst_BuildSettings::dictionaryOptions()
{
    const QString dictionary = pathOf("d.dcf");
    const QString settings = pathOf("settings.json");
    QVERIFY(writeFile(dictionary,
        "[Dictionary]\nVersion=CSPro 7.7\nName=D\nRecordTypeStart=0\nRecordTypeLen=0\n\n"
        "[Languages]\nEN=English\nFR=French\n\n[Level]\nName=L\n\n[IdItems]\n\n[Item]\nName=I\n"
        "Start=1\nLen=2\n\n[Record]\nName=R\nLabel=\xC5ge|\xCAtre\n\n[Item]\nName=V\nStart=3\n"
        "Len=1\n"));
    QVERIFY(writeFile(pathOf("d.dat"), "011\n"));
    const auto labelIn = [&](const QString& database) {
        return SqliteRows(pathOf(database)).value("SELECT label FROM tessel_records");
    };
    const QStringList files { "build", dictionary, pathOf("d.dat") };
    const Outcome first = runTessel(files
        + QStringList { "--encoding", "ISO-8859-7", "--language", "fr", "--save-config", settings,
            "--to", pathOf("first.sqlite") });
    QVERIFY2(first.errors.isEmpty(), first.errors.constData());
    QCOMPARE(labelIn("first.sqlite"), QStringLiteral("\u039Atre"));
    const QString text =
        SqliteRows(pathOf("first.sqlite")).value("SELECT dictionary FROM tessel_sources");
    QVERIFY2(text.contains(QStringLiteral("Label=\u0395ge|\u039Atre\n")), qPrintable(text));
    const Outcome again =
        runTessel({ "build", "--config", settings, "--to", pathOf("again.sqlite") });
    QVERIFY2(again.errors.isEmpty(), again.errors.constData());
    QCOMPARE(labelIn("again.sqlite"), labelIn("first.sqlite"));
    const Outcome other = runTessel({ "build", "--config", settings, "--encoding", "windows-1252",
        "--language", "EN", "--to", pathOf("other.sqlite") });
    QCOMPARE(labelIn("other.sqlite"), QStringLiteral("\u00C5ge"));
    QCOMPARE(other.status, 0);
    const Outcome found = runTessel(files + QStringList { "--to", pathOf("found.sqlite") });
    QVERIFY2(found.errors.contains("name its encoding with --encoding"), found.errors.constData());
    const Outcome unknown =
        runTessel(files + QStringList { "--language", "DE", "--to", pathOf("none.sqlite") });
    QCOMPARE(unknown.status, 1);
    QVERIFY2(
        unknown.errors.contains("has no language DE; it has EN, FR"), unknown.errors.constData());
}

// They are told where they do nothing.
void tst_BuildSettings::uselessDictionaryOptions()
{
    const Outcome outcome = runTessel({ "build", "../../examples/person.dta", "--plan",
        "--encoding", "windows-1252", "--language", "FR" });
    QCOMPARE(outcome.status, 0);
    QVERIFY2(outcome.errors.contains("note: --encoding "), outcome.errors.constData());
    QVERIFY2(outcome.errors.contains("note: --language "), outcome.errors.constData());
}

void tst_BuildSettings::plan()
{
    const QString file = pathOf("settings.json");
    const Outcome outcome = runTessel(QStringList { "build" } + census
        + QStringList { "--plan", "--records", "LIVESTOCK", "--save-config", file });
    QCOMPARE(outcome.status, 0);
    QVERIFY(outcome.output.contains("table LIVESTOCK"));
    QVERIFY(!outcome.output.contains("PERSON"));
    QCOMPARE(runTessel({ "build", "--config", file, "--plan" }).output, outcome.output);
    QCOMPARE(runTessel({ "build", "--config", file }).status, 2); // no database is named
}

void tst_BuildSettings::notSaved()
{
    const QString file = pathOf("missing/settings.json");
    const Outcome outcome = build("first", { "--save-config", file });
    QCOMPARE(outcome.status, 1);
    QVERIFY(outcome.errors.contains("settings.json"));
    QVERIFY(!QFileInfo::exists(pathOf("first.sqlite")));
    const QString input = dataFolder() + QStringLiteral("/") + census.first();
    const QByteArray before = readFile(input);
    QCOMPARE(build("first", { "--save-config", census.first() }).status, 2);
    QCOMPARE(readFile(input), before);
}

void tst_BuildSettings::mistakes_data()
{
    QTest::addColumn<QStringList>("options");
    QTest::addColumn<QByteArray>("mistake");
    QTest::newRow("record") << QStringList { "--records", "PERSONS" }
                            << QByteArray("there is no record 'PERSONS'; did you mean PERSON?");
    QTest::newRow("variable") << QStringList { "--variables", "SXE" }
                              << QByteArray("there is no variable 'SXE' in HOUSEHOLD, PERSON, "
                                            "LIVESTOCK; did you mean SEX?");
    QTest::newRow("no names") << QStringList { "--records", "PERSON," }
                              << QByteArray("--records needs names with commas between them");
    QTest::newRow("no variables") << QStringList { "--variables", "" }
                                  << QByteArray("--variables needs names with commas between them");
    QTest::newRow("where") << QStringList { "--where", "PROVINC=11" }
                           << QByteArray("condition 'PROVINC=11': there is no identification item "
                                         "'PROVINC'; did you mean PROVINCE?");
    QTest::newRow("value") << QStringList { "--where", "PROVINCE=north" }
                           << QByteArray("condition 'PROVINCE=north': 'north' is no value of "
                                         "PROVINCE, a number of 2 columns");
    QTest::newRow("no condition") << QStringList { "--where",
        " " } << QByteArray("--where needs a condition, for example PROVINCE=11..13");
    QTest::newRow("share") << QStringList { "--sample", "1.5" }
                           << QByteArray("--sample takes a share above 0 and up to 1, not '1.5'");
    QTest::newRow("no share") << QStringList { "--sample", "0" }
                              << QByteArray("--sample takes a share above 0 and up to 1, not '0'");
    QTest::newRow("every") << QStringList { "--every",
        "0" } << QByteArray("--every takes a whole number from 1 to 2147483647, not '0'");
    QTest::newRow("both") << QStringList { "--every", "2", "--sample", "0.1" }
                          << QByteArray("--sample and --every exclude each other");
    QTest::newRow("seed alone") << QStringList { "--seed", "2" }
                                << QByteArray("--seed is for --sample");
    QTest::newRow("seed") << QStringList { "--sample", "0.1", "--seed",
        "-1" } << QByteArray("--seed takes a whole number from 0 to 4294967295, not '-1'");
    QTest::newRow("encoding") << QStringList { "--encoding", "none" }
                              << QByteArray("unknown encoding 'none'; names are for example UTF-8, "
                                            "windows-1252, ISO-8859-1 and UTF-16");
    QTest::newRow("no file") << QStringList { "--save-config", "" }
                             << QByteArray("--save-config needs the name of a file");
}

void tst_BuildSettings::mistakes()
{
    QFETCH(QStringList, options);
    QFETCH(QByteArray, mistake);
    const Outcome outcome = build("first", options);
    QCOMPARE(outcome.status, 2);
    QCOMPARE(
        outcome.errors, QByteArray("tessel build: " + mistake + "\nSee 'tessel build --help'.\n"));
    QVERIFY(!QFileInfo::exists(pathOf("first.sqlite")));
}

void tst_BuildSettings::files_data()
{
    QTest::addColumn<QByteArray>("json");
    QTest::addColumn<int>("status");
    QTest::addColumn<QByteArray>("mistake");
    QTest::newRow("no JSON") << QByteArray("x") << 1 << QByteArray("is no JSON");
    QTest::newRow("unknown") << QByteArray("{\"tessel_build\": 1, \"wher\": \"\"}") << 1
                             << QByteArray("there is no setting 'wher'");
    QTest::newRow("record") << QByteArray(
        "{\"tessel_build\": 1, \"entities\": [{\"name\": \"PERSN\"}]}")
                            << 2 << QByteArray("there is no record 'PERSN'; did you mean PERSON?");
    QTest::newRow("encoding") << QByteArray("{\"tessel_build\": 1, \"encoding\": \"none\"}") << 2
                              << QByteArray("unknown encoding 'none'");
    QTest::newRow("repeats") << QByteArray("{\"tessel_build\": 1, \"repeats\": \"rows\"}") << 2
                             << QByteArray("--repeats takes columns or tables, not 'rows'");
}

void tst_BuildSettings::files()
{
    QFETCH(QByteArray, json);
    QFETCH(QByteArray, mistake);
    QVERIFY(writeFile(pathOf("settings.json"), json));
    const Outcome outcome = build("first", { "--config", pathOf("settings.json") });
    QTEST(outcome.status, "status");
    QVERIFY2(outcome.errors.contains(mistake), outcome.errors.constData());
    QVERIFY(!QFileInfo::exists(pathOf("first.sqlite")));
}

QTEST_GUILESS_MAIN(tst_BuildSettings)
#include "tst_BuildSettings.moc"
