// Runs "tessel export --to sql" and has databases carry out what it writes.
#include "ExportRun.h"
#include "HtmlIds.h"
#include "PostgreSqlServer.h"
#include "StatFiles.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonObject>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtTest>

namespace {

QJsonObject listedField(const QString& file, const QString& name)
{
    for (const QJsonValue& field : listed(file).value("fields").toArray()) {
        if (field.toObject().value("name") == name)
            return field.toObject();
    }
    return {};
}

QByteArray wideDictionary(int items)
{
    QByteArray text = dictionaryStart() + record("WIDE");
    for (int i = 0; i < items; ++i)
        text += item("V" + QByteArray::number(i), 11 + 2 * i, 2);
    return text + record("WIDE_2", "2") + item("OTHER", 11, 1);
}

} // namespace

class tst_ExportSql : public QObject {
    Q_OBJECT

private slots:
    void sqliteLoads_data();
    void sqliteLoads();
    void sqliteRows();
    void sqliteKeysOfLevels();
    void sqliteTakesAnyValue();
    void uniqueKeys();
    void sqliteDividesWideTables();
    void sqliteCodesThatAreOneNumber();
    void sqliteReservedWords();
    void referencesFollowTheRows();
    void unlabelledMissingGivesNoReference_data();
    void unlabelledMissingGivesNoReference();
    void unreadRowsGiveNoReferences();
    void postgresqlText();
    void postgresqlWideTables();
    void postgresqlLoads();
    void namesAreTold();
    void longNamesStayApart();
    void namesOfAnyLengthAreCut();
    void equalNamesTakeLinearTime();
    void manyRecordsTakeLinearTime_data();
    void manyRecordsTakeLinearTime();
    void sharedLabelsTakeLinearTime();
    void hostileTexts();

private:
    QString sqlite(const QString& file, const QByteArray& query, QString* errors = nullptr) const;

    QString m_sqlite = QStandardPaths::findExecutable(QStringLiteral("sqlite3"));
};

// What the query answers once the statements for file are carried out.
QString tst_ExportSql::sqlite(const QString& file, const QByteArray& query, QString* errors) const
{
    const QByteArray statements = exportTo("sql", file).output;
    const Outcome outcome = runProgram(m_sqlite, { "-batch", ":memory:" },
        "PRAGMA foreign_keys = ON;\n" + statements + query + "\n");
    if (errors)
        *errors = QString::fromUtf8(outcome.errors);
    const QString answer = QString::fromUtf8(outcome.output);
    return answer.endsWith('\n') ? answer.chopped(1) : answer;
}

void tst_ExportSql::sqliteLoads_data()
{
    addExportedFiles();
}

void tst_ExportSql::sqliteLoads()
{
    QFETCH(QString, file);
    if (m_sqlite.isEmpty())
        QSKIP("sqlite3 is not installed");
    QString errors;
    QCOMPARE(sqlite(file, "PRAGMA foreign_key_check;", &errors), QString());
    QCOMPARE(errors, QString());
}

void tst_ExportSql::sqliteRows()
{
    if (m_sqlite.isEmpty())
        QSKIP("sqlite3 is not installed");
    const QString census = TESSEL_EXAMPLES "/census.dcf";
    QCOMPARE(sqlite(census, "SELECT count(*) FROM pragma_table_info('HOUSEHOLD');"), QString("36"));
    QCOMPARE(sqlite(census, "SELECT count(*) FROM pragma_table_info('PERSON');"), QString("24"));
    QCOMPARE(sqlite(census, "SELECT group_concat(name) FROM pragma_index_info('HOUSEHOLD_key');"),
        QString("PROVINCE,DISTRICT,EA,HOUSEHOLD_NUMBER"));
    QCOMPARE(sqlite(census,
                 "SELECT type FROM pragma_table_info('HOUSEHOLD') "
                 "WHERE name IN ('ROOMS','WATER_HOURS','WATER_SOURCE');"),
        QString("INTEGER\nTEXT(2)\nREAL"));
    QCOMPARE(sqlite(census, "SELECT label FROM PROVINCE_VS1 WHERE code = 31;"),
        QString::fromUtf8("\u00c9tang Noir"));
    QCOMPARE(sqlite(census,
                 "SELECT count(*) FROM sqlite_master WHERE sql LIKE "
                 "'%EARLIER_PROVINCE INTEGER, -- % (values: PROVINCE_VS1)%';"),
        QString("1"));

    const int labels =
        listedField(TESSEL_EXAMPLES "/person.dta", "BIRTH_MONTH").value("valueLabelCount").toInt();
    const QString rows =
        sqlite(TESSEL_EXAMPLES "/person.dta", "SELECT count(*), count(code) FROM BIRTH_MONTH_VS1;");
    QCOMPARE(rows, QStringLiteral("%1|%2").arg(labels).arg(labels - 1));
}

void tst_ExportSql::sqliteKeysOfLevels()
{
    if (m_sqlite.isEmpty())
        QSKIP("sqlite3 is not installed");
    const QByteArray keys = "SELECT group_concat(name) FROM pragma_index_info('%1_key');";
    QCOMPARE(sqlite("export_levels.dcf", QByteArray(keys).replace("%1", "UPPER")), QString("AREA"));
    QCOMPARE(sqlite("export_levels.dcf", QByteArray(keys).replace("%1", "LOWER")),
        QString("AREA,HOUSE"));
}

// Codes outside their sets, keys that repeat and keys that are blank occur in every census.
void tst_ExportSql::sqliteTakesAnyValue()
{
    if (m_sqlite.isEmpty())
        QSKIP("sqlite3 is not installed");
    QString errors;
    QCOMPARE(sqlite("export_names.dcf",
                 "INSERT INTO \"ORDER\" (\"CASE\", \"SELECT\") VALUES (1, 3), (1, 2), (NULL, 1);"
                 "SELECT \"SELECT\" FROM \"ORDER\";"
                 "SELECT count(*) FROM pragma_foreign_key_list('ORDER');"
                 "SELECT count(*) FROM pragma_foreign_key_list('PERSON');",
                 &errors),
        QString("3\n2\n1\n0\n0"));
    QCOMPARE(errors, QString());
    QCOMPARE(
        sqlite("export_names.dcf", "SELECT code_from, code_to, special FROM AGE_VS1;", &errors),
        QString("0|120|\n999|999|missing"));
}

void tst_ExportSql::uniqueKeys()
{
    const QByteArray statements = exportTo("sql", "export_names.dcf", { "--unique-keys" }).output;
    QVERIFY(statements.contains("\n  \"CASE\" INTEGER NOT NULL, --"));
    QCOMPARE(statements.count("  UNIQUE (\"CASE\")\n"), 1);
    QVERIFY(exportTo("sql", "export_names.dcf", { "--unique-keys", "--dialect", "postgresql" })
                .output.contains("  PRIMARY KEY (\"CASE\")\n"));
    QCOMPARE(statements.count("NOT NULL, -- Number of the case"), 1); // PERSON has many rows
    QCOMPARE(statements.count("CREATE INDEX "), 1);
    QCOMPARE(exportTo("ddi", "export_names.dcf", { "--unique-keys" }).status, 2);
    if (m_sqlite.isEmpty())
        QSKIP("sqlite3 is not installed");
    const auto errorsOf = [&](const QByteArray& more) {
        return runProgram(m_sqlite, { "-batch", ":memory:" }, statements + more).errors;
    };
    const QByteArray insert = "INSERT INTO \"ORDER\" (\"CASE\") VALUES ";
    QCOMPARE(errorsOf(insert + "(1), (2); INSERT INTO PERSON (\"CASE\") VALUES (1), (1);"),
        QByteArray());
    QVERIFY(errorsOf(insert + "(1), (1);").contains("UNIQUE"));
    QVERIFY(errorsOf(insert + "(NULL);").contains("NOT NULL"));
}

void tst_ExportSql::sqliteDividesWideTables()
{
    if (m_sqlite.isEmpty())
        QSKIP("sqlite3 is not installed");
    QTemporaryDir folder;
    const QString path = folder.filePath("wide.dcf");
    const QByteArray counts = "SELECT (SELECT count(*) FROM pragma_table_info('WIDE')), "
                              "(SELECT count(*) FROM pragma_table_info('WIDE_3'));";
    QVERIFY(writeFile(path, wideDictionary(1999)));
    QCOMPARE(sqlite(path, counts), QString("2000|0"));
    QVERIFY(!exportTo("sql", path).errors.contains("parts"));

    // The second part does not take the name of a record.
    QVERIFY(writeFile(path, wideDictionary(2000)));
    const QByteArray errors = exportTo("sql", path).errors;
    QVERIFY(errors.contains("note: part 2 of table WIDE is called WIDE_2_2: its name is taken\n"));
    QVERIFY(errors.contains(
        "note: table WIDE has 2001 columns, more than the database takes, and is in "
        "2 parts, to WIDE_2_2; column row_number tells which rows belong together\n"));
    QString failure;
    QCOMPARE(sqlite(path,
                 "INSERT INTO WIDE (row_number, ID, V0) VALUES (5, 1, 7);\n"
                 "INSERT INTO WIDE_2_2 (row_number, V1999) VALUES (5, 8);\n"
                 "SELECT V0, V1999 FROM WIDE JOIN WIDE_2_2 USING (row_number);",
                 &failure),
        QString("7|8"));
    QCOMPARE(failure, QString());
    sqlite(path, "INSERT INTO WIDE_2_2 (row_number, V1999) VALUES (6, 8);", &failure);
    QVERIFY2(failure.contains("FOREIGN KEY"), qPrintable(failure));
}

void tst_ExportSql::sqliteCodesThatAreOneNumber()
{
    if (m_sqlite.isEmpty())
        QSKIP("sqlite3 is not installed");
    QTemporaryDir folder;
    const QString path = folder.filePath("codes.dcf");
    QVERIFY(writeFile(path,
        dictionaryStart() + record("CODES")
            + item("WEIGHT", 11, 15,
                "Decimal=2\n\n[ValueSet]\nLabel=Codes\nName=WEIGHT_VS1\nValue=20000000;First\n"
                "Value=20000000.00;Again\nValue=-0;Zero\nValue=0.0;Zero again\nValue=1.50;Other\n"
                "Value=1e1;Ten\n")
            + item("WORD", 30, 999,
                "DataType=Alpha\n\n[ValueSet]\nLabel=Codes\nName=WORD_VS1\nValue='A';Short\nValue='"
                    + QByteArray(600, 'x') + "';Long\nValue='" + QByteArray(601, 'y')
                    + "';Too long\n")));
    QString errors;
    QCOMPARE(sqlite(path,
                 "SELECT group_concat(code, ' ') FROM (SELECT ifnull(code, 'null') AS code FROM "
                 "WEIGHT_VS1 ORDER BY rowid);"
                 "SELECT count(*), count(code) FROM WORD_VS1;",
                 &errors),
        QString("20000000.0 null 0.0 null 1.5 10.0\n3|2"));
    QCOMPARE(errors, QString());
}

void tst_ExportSql::sqliteReservedWords()
{
    if (m_sqlite.isEmpty())
        QSKIP("sqlite3 is not installed");
    // All that SQLite knows, reserved or not.
    const QByteArrayList words = QByteArray(
        "ABORT ACTION ADD AFTER ALL ALTER ALWAYS ANALYZE AND AS ASC ATTACH AUTOINCREMENT BEFORE "
        "BEGIN BETWEEN BY CASCADE CASE CAST CHECK COLLATE COLUMN COMMIT CONFLICT CONSTRAINT CREATE "
        "CROSS CURRENT CURRENT_DATE CURRENT_TIME CURRENT_TIMESTAMP DATABASE DEFAULT DEFERRABLE "
        "DEFERRED DELETE DESC DETACH DISTINCT DO DROP EACH ELSE END ESCAPE EXCEPT EXCLUDE "
        "EXCLUSIVE "
        "EXISTS EXPLAIN FAIL FILTER FIRST FOLLOWING FOR FOREIGN FROM FULL GENERATED GLOB GROUP "
        "GROUPS HAVING IF IGNORE IMMEDIATE IN INDEX INDEXED INITIALLY INNER INSERT INSTEAD "
        "INTERSECT "
        "INTO IS ISNULL JOIN KEY LAST LEFT LIKE LIMIT MATCH MATERIALIZED NATURAL NO NOT NOTHING "
        "NOTNULL NULL NULLS OF OFFSET ON OR ORDER OTHERS OUTER OVER PARTITION PLAN PRAGMA "
        "PRECEDING "
        "PRIMARY QUERY RAISE RANGE RECURSIVE REFERENCES REGEXP REINDEX RELEASE RENAME REPLACE "
        "RESTRICT RETURNING RIGHT ROLLBACK ROW ROWS SAVEPOINT SELECT SET TABLE TEMP TEMPORARY THEN "
        "TIES TO TRANSACTION TRIGGER UNBOUNDED UNION UNIQUE UPDATE USING VACUUM VALUES VIEW "
        "VIRTUAL "
        "WHEN WHERE WINDOW WITH WITHOUT ROWID OID ROW_NUMBER CODE LABEL WRITTEN")
                                     .split(' ');
    QByteArray text = dictionaryStart(3);
    for (int i = 0; i < words.size(); ++i) {
        text += record(words.at(i), QByteArray::number(100 + i));
        text += item(words.at(i), 11, 1);
    }
    QTemporaryDir folder;
    const QString path = folder.filePath("words.dcf");
    QVERIFY(writeFile(path, text));
    QString errors;
    QCOMPARE(sqlite(path, "SELECT count(*) FROM sqlite_master WHERE type = 'table';", &errors),
        QString::number(words.size()));
    QCOMPARE(errors, QString());
}

// Columns of the only table of a file that refer to a table of values.
QStringList references(const QByteArray& sql)
{
    QStringList names;
    QRegularExpression expression(
        "^  (\\w+) [^\n]* REFERENCES ", QRegularExpression::MultilineOption);
    auto match = expression.globalMatch(QString::fromUtf8(sql));
    while (match.hasNext())
        names.append(match.next().captured(1));
    return names;
}

// VISIT_DAY is nominal and its labels have no gap, but its rows hold values without one.
void tst_ExportSql::referencesFollowTheRows()
{
    const QStringList household =
        references(exportTo("sql", TESSEL_EXAMPLES "/household.sav").output);
    QVERIFY(household.contains("PROVINCE"));
    QVERIFY(household.contains("WATER_SOURCE"));
    QVERIFY(household.contains("WALLS"));
    QVERIFY(!household.contains("VISIT_DAY"));
    QVERIFY(!household.contains("LAND_SHARE")); // a measure
    QVERIFY(!household.contains("ROOMS"));
    // Blanks, and missing codes of Stata, need no label.
    QVERIFY(
        references(exportTo("sql", TESSEL_EXAMPLES "/person.sav").output).contains("OCCUPATION"));
    QVERIFY(
        references(exportTo("sql", TESSEL_EXAMPLES "/person.dta").output).contains("EDUCATION"));
    const QByteArray stata =
        exportTo("sql", TESSEL_EXAMPLES "/household.dta", { "--dialect", "postgresql" }).output;
    QVERIFY(references(stata).contains("PROVINCE"));
    QVERIFY(!references(stata).contains("VISIT_DAY"));
    QVERIFY(!references(stata).contains("WATER_HOURS"));
    QVERIFY(stata.contains(
        "COMMENT ON COLUMN household.VISIT_DAY IS 'Day of the week of the visit (values: "));
}

// Missing values may come with the next rows.
void tst_ExportSql::unlabelledMissingGivesNoReference_data()
{
    QTest::addColumn<double>("low");
    QTest::addColumn<double>("high");
    QTest::addColumn<QStringList>("expected");
    QTest::newRow("labelled") << 9.0 << 9.0 << QStringList { "PLAIN", "CODED" };
    QTest::newRow("unlabelled") << 8.0 << 8.0 << QStringList { "PLAIN" };
    QTest::newRow("range") << 9.0 << 10.0 << QStringList { "PLAIN" };
}

void tst_ExportSql::unlabelledMissingGivesNoReference()
{
    QFETCH(double, low);
    QFETCH(double, high);
    QFETCH(QStringList, expected);
    QTemporaryDir folder;
    const QString path = folder.filePath("made.sav");
    StatFileWriter writer;
    readstat_label_set_t* labels = writer.addLabels("codes", READSTAT_TYPE_DOUBLE);
    readstat_label_double_value(labels, 1, "One");
    readstat_label_double_value(labels, 9, "Unknown");
    writer.add("PLAIN", READSTAT_TYPE_DOUBLE, "F1.0", labels);
    readstat_variable_t* coded = writer.add("CODED", READSTAT_TYPE_DOUBLE, "F1.0", labels);
    readstat_variable_add_missing_double_range(coded, low, high);
    readstat_label_set_t* words = writer.addLabels("words", READSTAT_TYPE_STRING);
    readstat_label_string_value(words, "A", "First");
    writer.add("WORD", READSTAT_TYPE_STRING, "A8", words, 8);
    writer.setNumber(1);
    writer.setFirstText("A"); // blanks follow
    QVERIFY(writer.write(path, TStatFileKind::Spss, 3));
    QCOMPARE(references(exportTo("sql", path).output), expected + QStringList("WORD"));

    // Without rows nothing shows that the labels are all values.
    QVERIFY(writeFile(path, {}));
    StatFileWriter empty;
    readstat_label_set_t* sameLabels = empty.addLabels("codes", READSTAT_TYPE_DOUBLE);
    readstat_label_double_value(sameLabels, 1, "One");
    empty.add("PLAIN", READSTAT_TYPE_DOUBLE, "F1.0", sameLabels);
    QVERIFY(empty.write(path, TStatFileKind::Spss));
    QCOMPARE(references(exportTo("sql", path).output), QStringList());
}

void tst_ExportSql::unreadRowsGiveNoReferences()
{
    QTemporaryDir folder;
    const QString path = folder.filePath("cut.sav");
    const QByteArray bytes = readFile(TESSEL_EXAMPLES "/household.sav");
    QVERIFY(writeFile(path, bytes.left(bytes.size() - 1000)));
    const Outcome outcome = exportTo("sql", path);
    QVERIFY(outcome.output.contains("CREATE TABLE cut ("));
    QCOMPARE(references(outcome.output), QStringList());
    QVERIFY(outcome.errors.contains(
        "cut.sav: note: not all rows were read, so no column refers to a table of value labels\n"));
    QCOMPARE(outcome.status, 0);
    QVERIFY(exportTo("ddi", path).errors.isEmpty());
}

void tst_ExportSql::postgresqlText()
{
    const Outcome outcome = exportTo("sql", "export_names.dcf", { "--dialect", "postgresql" });
    QCOMPARE(outcome.status, 0);
    const QString text = QString::fromUtf8(outcome.output);
    QVERIFY(text.contains("\n  \"CASE\" BIGINT, -- Number of the case; it's a key\n"));
    QVERIFY(text.contains(
        "\n  LETTERS VARCHAR(1), -- The same codes of another type (values: SAME_VS1_2)\n"));
    QVERIFY(text.contains("\n  WEIGHT NUMERIC(6, 2) --"));
    QVERIFY(text.contains("\n  LONG_NUMBER BIGINT -- "));
    QVERIFY(text.contains("COMMENT ON TABLE \"ORDER\" IS 'A reserved word';\n"));
    QVERIFY(
        text.contains("COMMENT ON COLUMN PERSON.\"CASE\" IS 'Number of the case; it''s a key';\n"));
    QVERIFY(text.contains("  (1, '1', 'It''s <one>', NULL),\n"));
    QVERIFY(text.contains("CREATE INDEX PERSON_key ON PERSON (\"CASE\");\n"));
    QCOMPARE(text.count("CREATE TABLE "), 6);
    QCOMPARE(text.count("BEGIN;\n"), 1);
    QVERIFY(text.endsWith("COMMIT;\n"));
    QVERIFY(!text.contains(QRegularExpression(",\\s*\\)")));
    QCOMPARE(text.count('('), text.count(')'));
}

// A row of PostgreSQL takes some 8000 bytes.
void tst_ExportSql::postgresqlWideTables()
{
    QTemporaryDir folder;
    const QString path = folder.filePath("wide.dcf");
    QVERIFY(writeFile(path, wideDictionary(1500)));
    const Outcome outcome = exportTo("sql", path, { "--dialect", "postgresql" });
    QVERIFY(outcome.errors.contains(
        "table WIDE has 1501 columns, more than the database takes, and is in 2 parts"));
    const QList<int> columns = [&] {
        QList<int> counts;
        for (const QString& table : QString::fromUtf8(outcome.output).split("CREATE TABLE ").mid(1))
            counts.append(table.left(table.indexOf("\n);")).count(" BIGINT"));
        return counts;
    }();
    QCOMPARE(columns, QList<int>({ 987, 516, 2 }));
    QByteArray keys = dictionaryStart();
    for (int i = 0; i < 32; ++i)
        keys += item("KEY" + QByteArray::number(i), 11 + i, 1);
    QVERIFY(writeFile(path, keys + record("MANY_KEYS") + item("V", 50, 1)));
    QVERIFY(!exportTo("sql", path, { "--dialect", "postgresql", "--unique-keys" })
                 .output.contains("PRIMARY KEY"));
    QVERIFY(!exportTo("sql", path, { "--dialect", "postgresql" }).output.contains("INDEX"));
    QVERIFY(exportTo("sql", path, { "--unique-keys" }).output.contains("  UNIQUE (ID, KEY0, "));
    QVERIFY(exportTo("sql", path).output.contains("MANY_KEYS_key ON MANY_KEYS (ID, KEY0, "));
}

void tst_ExportSql::postgresqlLoads()
{
    PostgreSqlServer server;
    const QString missing = server.start();
    if (!missing.isEmpty())
        QSKIP(qPrintable(missing));
    const auto statements = [](const QString& file) {
        return exportTo("sql", file, { "--dialect", "postgresql" }).output;
    };
    const QDir examples(QStringLiteral(TESSEL_EXAMPLES));
    QStringList files { "export_names.dcf", "export_levels.dcf", "json_household.dcf" };
    for (const char* name : { "census.dcf", "household.sav", "person.dta" })
        files.append(examples.filePath(name));
    for (const QString& file : qAsConst(files)) {
        const Outcome loaded = server.carryOut(statements(file));
        QVERIFY2(loaded.status == 0, qPrintable(file + ": " + loaded.errors));
    }
    QCOMPARE(
        server
            .carryOut(statements(examples.filePath("census.dcf"))
                + "SELECT count(*) FROM information_schema.columns WHERE table_name = 'person';"
                  "SELECT label FROM PROVINCE_VS1 WHERE code = 31;"
                  "SELECT obj_description('person'::regclass);")
            .output,
        QByteArray("24\n\u00c9tang Noir\nPerson\n"));

    // Every word that is reserved names a table and a column, and a row has all that columns hold.
    QTemporaryDir folder;
    const QString path = folder.filePath("made.dcf");
    const QByteArrayList words =
        server.carryOut("SELECT upper(word) FROM pg_get_keywords();").output.trimmed().split('\n');
    QVERIFY(words.contains("SELECT"));
    QByteArray text = dictionaryStart(3);
    for (int i = 0; i < words.size(); ++i) {
        text += record(words.at(i), QByteArray::number(100 + i));
        text += item(words.at(i), 11, 1);
    }
    QVERIFY(writeFile(path, text));
    Outcome loaded = server.carryOut(statements(path));
    QVERIFY2(loaded.status == 0, loaded.errors.constData());

    QVERIFY(writeFile(path, wideDictionary(1500)));
    QByteArray row = "1, 1";
    for (int i = 0; i < 985; ++i)
        row += ", 99";
    loaded = server.carryOut(statements(path) + "INSERT INTO WIDE VALUES (" + row + ");");
    QVERIFY2(loaded.status == 0, loaded.errors.constData());
}

void tst_ExportSql::equalNamesTakeLinearTime()
{
    QByteArray text = dictionaryStart() + record("MANY");
    for (int i = 0; i < 40000; ++i) {
        const QByteArray number = QByteArray::number(i);
        text += item("V" + number, 11, 1,
            "\n[ValueSet]\nLabel=Codes\nName=SAME\nValue=1;Code " + number + '\n');
    }
    QTemporaryDir folder;
    const QString path = folder.filePath("many.dcf");
    QVERIFY(writeFile(path, text));
    const Outcome outcome = exportTo("sql", path);
    QCOMPARE(outcome.status, 0);
    QVERIFY(outcome.output.contains("CREATE TABLE SAME_40000 ("));
}

void tst_ExportSql::manyRecordsTakeLinearTime_data()
{
    QTest::addColumn<QString>("target");
    for (const char* target : { "ddi", "sql", "html" })
        QTest::newRow(target) << QString(target);
}

void tst_ExportSql::manyRecordsTakeLinearTime()
{
    QFETCH(QString, target);
    constexpr int Count = 25000;
    QByteArray text = dictionaryStart(5);
    for (int i = 0; i < Count; ++i) {
        const QByteArray number = QByteArray::number(10000 + i);
        text += record("R" + number, number) + item("V" + number, 11, 1);
    }
    QTemporaryDir folder;
    const QString path = folder.filePath("many.dcf");
    QVERIFY(writeFile(path, text));
    const Outcome outcome = exportTo(target, path);
    QCOMPARE(outcome.status, 0);
    QVERIFY(outcome.output.contains("R" + QByteArray::number(10000 + Count - 1)));
}

void tst_ExportSql::sharedLabelsTakeLinearTime()
{
    constexpr int Count = 40000;
    QByteArray text = dictionaryStart() + record("MANY");
    for (int i = 0; i < Count; ++i) {
        const QByteArray name = "V" + QByteArray::number(i);
        text += item(name, 11, 1,
            "\n[ValueSet]\nLabel=Codes\nName=" + name + "_VS1\nValue=1;Yes\nValue=2;No\n");
    }
    QTemporaryDir folder;
    const QString path = folder.filePath("many.dcf");
    QVERIFY(writeFile(path, text));
    const Outcome outcome = exportTo("sql", path);
    QCOMPARE(outcome.status, 0);
    QCOMPARE(outcome.output.count("INSERT INTO "), 1);
    QCOMPARE(outcome.output.count("(values: V0_VS1)"), Count);
}

void tst_ExportSql::hostileTexts()
{
    // A text of JSON may name any character, and half of one.
    const QByteArray hostile =
        "]]></script><!-- \\u0000\\u0001\\u000b\\u001f \\ud800 \\udfff "
        "\\ufffe\\uffff\\u007f\\u0085 \\\"q\\\" 's' %1%2 \\\\ \\n.quit\\n; --\\r\\t";
    QTemporaryDir folder;
    const QString path = folder.filePath("hostile.dcf");
    QByteArray text = readFile(TESSEL_TEST_DATA "/json_household.dcf");
    QVERIFY(text.contains("\"text\": \"North\""));
    text.replace("\"text\": \"", "\"text\": \"" + hostile);
    text.replace("\"name\": \"TIME\"", "\"name\": \"TI%2\\n\\u0000\\\"ME\"");
    QVERIFY(writeFile(path, text));
    const int fields = listed(path).value("fields").toArray().size();
    QVERIFY(fields > 0);
    const QByteArray ddi = exportTo("ddi", path).output;
    QCOMPARE(attributesOf(ddi, "var", "ID").size(), fields);
    const QByteArray page = exportTo("html", path).output;
    QCOMPARE(brokenIds(page), QStringList());
    const QString shown =
        QString::fromUtf8("]]></script><!-- \u2400\u2401\u240b\u241f \ufffd \ufffd "
                          "\ufffd\ufffd\ufffd\ufffd \"q\" 's' %1%2 \\ ");
    QVERIFY(textOf(ddi).contains(shown + "\n.quit\n; --"));
    QVERIFY(textOf(ddi).contains("North"));
    QVERIFY(shownText(page).contains(shown + QString::fromUtf8("\u240a.quit\u240a; --")));
    QVERIFY(shownText(page).contains("North"));
    QVERIFY(!ddi.contains("<!-- "));
    QVERIFY(!page.contains("<!-- "));
    QVERIFY(exportTo("csv", path).output.contains("%1%2 \\ \n.quit\n; --"));
    if (m_sqlite.isEmpty())
        QSKIP("sqlite3 is not installed");
    QString errors;
    QCOMPARE(
        sqlite(path,
            "SELECT substr(label, 18, 6) || substr(label, -5) FROM PROVINCE_VS1 WHERE code = 1;",
            &errors),
        QString::fromUtf8("\ufffd\x01\x0b\x1f \ufffdNorth"));
    QCOMPARE(errors, QString());
}

void tst_ExportSql::namesAreTold()
{
    const Outcome outcome = exportTo("sql", "export_names.dcf", { "--all-warnings" });
    const QString note = QStringLiteral("export_names.dcf: note: ");
    QStringList told;
    for (const QString& line : QString::fromUtf8(outcome.errors).split('\n')) {
        if (line.startsWith(note))
            told.append(line.mid(note.size()));
    }
    const QStringList expected {
        "table ORDER is quoted, \"ORDER\": its name is a reserved word",
        "column CASE of table ORDER is quoted, \"CASE\": its name is a reserved word",
        "column SELECT of table ORDER is quoted, \"SELECT\": its name is a reserved word",
        "column CTID of table ORDER is called _CTID: the databases do not take its name",
        "column TIMES_2 of table ORDER is called TIMES_2_2: its name is taken",
        "column CASE of table PERSON is quoted, \"CASE\": its name is a reserved word",
        "the table of value set ORDER of SELECT is called ORDER_2: its name is taken",
        "the table of value set SAME_VS1 of LETTERS is called SAME_VS1_2: its name is taken",
    };
    QCOMPARE(told, expected);
    QVERIFY(exportTo("sql", TESSEL_EXAMPLES "/census.dcf").errors.isEmpty());
}

void tst_ExportSql::longNamesStayApart()
{
    const QByteArray start(70, 'X');
    QTemporaryDir folder;
    const QString path = folder.filePath("long.dcf");
    QVERIFY(writeFile(path,
        dictionaryStart() + record("LONG") + item(start + "A", 11, 1) + item(start + "B", 12, 1)
            + item("PG_TYPE", 13, 1) + item("TINY", 14, 2, "Decimal=3\n")));
    const Outcome outcome = exportTo("sql", path, { "--dialect", "postgresql" });
    QVERIFY(outcome.output.contains("\n  " + start.left(63) + " BIGINT, -- " + start + "A\n"));
    QVERIFY(outcome.output.contains("\n  " + start.left(55) + " BIGINT, -- " + start + "B\n"));
    QVERIFY(outcome.output.contains("\n  _PG_TYPE BIGINT, -- PG_TYPE\n"));
    QCOMPARE(outcome.errors.count(": the databases do not take its name\n"), 3);
    QVERIFY(outcome.output.contains("\n  TINY NUMERIC -- TINY\n"));
}

void tst_ExportSql::namesOfAnyLengthAreCut()
{
    const QByteArray pairAtTheCut = QByteArray(62, 'P') + "\xF0\x9F\x98\x80";
    QTemporaryDir folder;
    const QString path = folder.filePath("long.dcf");
    QVERIFY(writeFile(path,
        dictionaryStart() + record("LONG") + item(QByteArray(3'000'000, 'N'), 11, 1)
            + item(pairAtTheCut, 12, 1)));
    const Outcome outcome = exportTo("sql", path);
    QVERIFY(outcome.output.contains("\n  " + QByteArray(63, 'N') + " INTEGER"));
    QVERIFY(outcome.output.contains("\n  " + QByteArray(62, 'P') + " INTEGER"));
}

QTEST_GUILESS_MAIN(tst_ExportSql)
#include "tst_ExportSql.moc"
