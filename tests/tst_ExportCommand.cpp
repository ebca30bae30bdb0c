// Runs "tessel export" and hands what it writes to programs and parsers that read such files.
#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QXmlStreamReader>
#include <QtTest>

namespace {

struct Outcome {
    int status = -1;
    QByteArray output;
    QByteArray errors;
};

Outcome run(const QString& program, const QStringList& arguments, const QByteArray& input = {})
{
    QProcess process;
    process.setWorkingDirectory(QStringLiteral(TESSEL_TEST_DATA));
    process.start(program, arguments);
    process.write(input);
    process.closeWriteChannel();
    if (!process.waitForFinished(60000) || process.exitStatus() != QProcess::NormalExit)
        return {};
    return { process.exitCode(), process.readAllStandardOutput(), process.readAllStandardError() };
}

Outcome exportTo(const QString& target, const QString& file, const QStringList& more = {})
{
    return run(
        QStringLiteral(TESSEL_PROGRAM), QStringList { "export", file, "--to", target } + more);
}

// The fields as "tessel fields" lists them.
QJsonObject listed(const QString& file)
{
    const Outcome outcome =
        run(QStringLiteral(TESSEL_PROGRAM), { "fields", "--format", "json", "--values", file });
    const QJsonObject root = QJsonDocument::fromJson(outcome.output).object();
    return root.value("files").toArray().at(0).toObject();
}

QJsonObject listedField(const QString& file, const QString& name)
{
    for (const QJsonValue& field : listed(file).value("fields").toArray()) {
        if (field.toObject().value("name") == name)
            return field.toObject();
    }
    return {};
}

void addFiles()
{
    QTest::addColumn<QString>("file");
    const QDir examples(QStringLiteral(TESSEL_EXAMPLES));
    for (const char* name : { "census.dcf", "household.sav", "person.sav", "person.dta" })
        QTest::newRow(name) << examples.filePath(QString::fromLatin1(name));
    for (const char* name : { "basic.dcf", "decimals.dcf", "export_names.dcf", "no_items.dcf",
             "problems.dcf", "json_household.dcf", "written_household.dcf" })
        QTest::newRow(name) << QString::fromLatin1(name);
}

// The attribute of each element of one name.
QStringList attributesOf(const QByteArray& xml, const QString& element, const QString& attribute)
{
    QStringList values;
    QXmlStreamReader reader(xml);
    while (!reader.atEnd()) {
        if (reader.readNext() == QXmlStreamReader::StartElement && reader.name() == element
            && reader.attributes().hasAttribute(attribute))
            values.append(reader.attributes().value(attribute).toString());
    }
    return reader.hasError() ? QStringList { reader.errorString() } : values;
}

QString textOf(const QByteArray& xml)
{
    QString text;
    QXmlStreamReader reader(xml);
    while (!reader.atEnd()) {
        if (reader.readNext() == QXmlStreamReader::Characters)
            text += reader.text();
    }
    return reader.hasError() ? QString() : text;
}

QByteArray variable(const QByteArray& ddi, const QByteArray& name)
{
    const int start = ddi.indexOf("name=\"" + name + "\" files");
    return start < 0 ? QByteArray() : ddi.mid(start, ddi.indexOf("</var>", start) - start);
}

} // namespace

class tst_ExportCommand : public QObject {
    Q_OBJECT

private slots:
    void ddiListsEveryField_data();
    void ddiListsEveryField();
    void ddiIsValid_data();
    void ddiIsValid();
    void ddiVariables();
    void ddiRecords();
    void sqliteLoads_data();
    void sqliteLoads();
    void sqliteRows();
    void sqliteKeysOfLevels();
    void sqliteChecksValues();
    void postgresqlText();
    void namesAreTold();
    void htmlShowsEveryField_data();
    void htmlShowsEveryField();
    void htmlIsEscaped();
    void htmlOpensInABrowser();
    void csvAndJsonAreTheListing_data();
    void csvAndJsonAreTheListing();
    void outputIsWholeOrAbsent();
    void damagedFileFails();

private:
    QString sqlite(const QString& file, const QByteArray& query, QString* errors = nullptr) const;

    QString m_sqlite = QStandardPaths::findExecutable(QStringLiteral("sqlite3"));
};

void tst_ExportCommand::ddiListsEveryField_data()
{
    addFiles();
}

void tst_ExportCommand::ddiListsEveryField()
{
    QFETCH(QString, file);
    const Outcome outcome = exportTo("ddi", file);
    QVERIFY(outcome.status == 0);
    QStringList names;
    for (const QJsonValue& field : listed(file).value("fields").toArray())
        names.append(field.toObject().value("name").toString());
    QCOMPARE(attributesOf(outcome.output, "var", "name"), names);

    const QStringList ids =
        attributesOf(outcome.output, "var", "ID") + attributesOf(outcome.output, "catgry", "ID");
    QCOMPARE(QSet<QString>(ids.cbegin(), ids.cend()).size(), ids.size());
}

void tst_ExportCommand::ddiIsValid_data()
{
    addFiles();
}

void tst_ExportCommand::ddiIsValid()
{
    QFETCH(QString, file);
    const QString schema = qEnvironmentVariable("TESSEL_DDI_SCHEMA");
    if (schema.isEmpty())
        QSKIP("TESSEL_DDI_SCHEMA does not name the folder of codebook.xsd");
    if (QStandardPaths::findExecutable("xmllint").isEmpty())
        QSKIP("xmllint is not installed");
    const Outcome checked = run("xmllint",
        { "--nonet", "--noout", "--schema", QDir(schema).filePath("codebook.xsd"), "-" },
        exportTo("ddi", file).output);
    QVERIFY2(checked.status == 0, checked.errors.constData());
}

void tst_ExportCommand::ddiVariables()
{
    const QByteArray ddi = exportTo("ddi", TESSEL_EXAMPLES "/census.dcf").output;
    const QByteArray birth = variable(ddi, "BIRTH_YEAR");
    QVERIFY(birth.contains("<location StartPos=\"48\" EndPos=\"51\" width=\"4\" fileid=\"F1\"/>"));
    QVERIFY(birth.contains("<range UNITS=\"INT\" min=\"1927\" max=\"2023\"/>"));
    QVERIFY(birth.contains("<item UNITS=\"INT\" VALUE=\"9999\"/>"));
    QVERIFY(birth.contains("missing=\"Y\" missType=\"missing\""));
    QVERIFY(birth.contains("intrvl=\"contin\""));
    QVERIFY(variable(ddi, "SEX").contains("intrvl=\"discrete\""));
    QCOMPARE(variable(ddi, "WALLS").count("<catgryGrp "), 2);
    const QByteArray spss = exportTo("ddi", TESSEL_EXAMPLES "/household.sav").output;
    QVERIFY(variable(spss, "PROVINCE").contains("schema=\"SPSS\""));
    QVERIFY(spss.contains("<invalrng>"));
    const QByteArray stata = exportTo("ddi", TESSEL_EXAMPLES "/person.dta").output;
    QVERIFY(stata.contains("formatname=\"%8.0g\" schema=\"other\" otherSchema=\"Stata\""));
    QVERIFY(stata.contains("<caseQnty>4299</caseQnty>"));
}

void tst_ExportCommand::ddiRecords()
{
    const QByteArray ddi = exportTo("ddi", TESSEL_EXAMPLES "/census.dcf").output;
    QCOMPARE(attributesOf(ddi, "recGrp", "rectype"), QStringList({ "1", "2", "3" }));
    QCOMPARE(attributesOf(ddi, "recGrp", "keyvar").constFirst(), QString("V1 V2 V3 V4"));
    QVERIFY(attributesOf(ddi, "varGrp", "type").contains("repetition"));
    QVERIFY(attributesOf(ddi, "varGrp", "name").contains("LIVESTOCK"));
}

// What the query answers once the statements for file are carried out.
QString tst_ExportCommand::sqlite(
    const QString& file, const QByteArray& query, QString* errors) const
{
    const QByteArray statements = exportTo("sql", file).output;
    const Outcome outcome = run(m_sqlite, { "-batch", ":memory:" },
        "PRAGMA foreign_keys = ON;\n" + statements + query + "\n");
    if (errors)
        *errors = QString::fromUtf8(outcome.errors);
    const QString answer = QString::fromUtf8(outcome.output);
    return answer.endsWith('\n') ? answer.chopped(1) : answer;
}

void tst_ExportCommand::sqliteLoads_data()
{
    addFiles();
}

void tst_ExportCommand::sqliteLoads()
{
    QFETCH(QString, file);
    if (m_sqlite.isEmpty())
        QSKIP("sqlite3 is not installed");
    QString errors;
    QCOMPARE(sqlite(file, "PRAGMA foreign_key_check;", &errors), QString());
    QCOMPARE(errors, QString());
}

void tst_ExportCommand::sqliteRows()
{
    if (m_sqlite.isEmpty())
        QSKIP("sqlite3 is not installed");
    const QString census = TESSEL_EXAMPLES "/census.dcf";
    QCOMPARE(sqlite(census, "SELECT count(*) FROM pragma_table_info('HOUSEHOLD');"), QString("36"));
    QCOMPARE(sqlite(census, "SELECT count(*) FROM pragma_table_info('PERSON');"), QString("24"));
    QCOMPARE(sqlite(census,
                 "SELECT group_concat(name) FROM pragma_table_info('HOUSEHOLD') WHERE pk > 0;"),
        QString("PROVINCE,DISTRICT,EA,HOUSEHOLD_NUMBER"));
    QCOMPARE(sqlite(census,
                 "SELECT type FROM pragma_table_info('HOUSEHOLD') "
                 "WHERE name IN ('ROOMS','WATER_HOURS','WATER_SOURCE');"),
        QString("INTEGER\nTEXT(2)\nREAL"));
    QCOMPARE(sqlite(census, "SELECT label FROM PROVINCE_VS1 WHERE code = 31;"),
        QString::fromUtf8("\u00c9tang Noir"));
    QCOMPARE(sqlite(census,
                 "SELECT count(*) FROM sqlite_master WHERE sql LIKE "
                 "'%EARLIER_PROVINCE INTEGER REFERENCES PROVINCE_VS1 (code)%';"),
        QString("1"));

    const int labels =
        listedField(TESSEL_EXAMPLES "/person.dta", "BIRTH_MONTH").value("valueLabelCount").toInt();
    const QString rows =
        sqlite(TESSEL_EXAMPLES "/person.dta", "SELECT count(*), count(code) FROM BIRTH_MONTH_VS1;");
    QCOMPARE(rows, QStringLiteral("%1|%2").arg(labels).arg(labels - 1));
}

void tst_ExportCommand::sqliteKeysOfLevels()
{
    if (m_sqlite.isEmpty())
        QSKIP("sqlite3 is not installed");
    const QByteArray keys = "SELECT group_concat(name) FROM pragma_table_info('%1') WHERE pk > 0;";
    QCOMPARE(sqlite("export_levels.dcf", QByteArray(keys).replace("%1", "UPPER")), QString("AREA"));
    QCOMPARE(sqlite("export_levels.dcf", QByteArray(keys).replace("%1", "LOWER")),
        QString("AREA,HOUSE"));
}

void tst_ExportCommand::sqliteChecksValues()
{
    if (m_sqlite.isEmpty())
        QSKIP("sqlite3 is not installed");
    QString errors;
    const QByteArray row = "INSERT INTO \"ORDER\" (\"CASE\", \"SELECT\") VALUES (1, %1);";
    QCOMPARE(sqlite("export_names.dcf",
                 QByteArray(row).replace("%1", "2") + "SELECT \"SELECT\" FROM \"ORDER\";", &errors),
        QString("2"));
    QCOMPARE(errors, QString());
    sqlite("export_names.dcf", QByteArray(row).replace("%1", "3"), &errors);
    QVERIFY2(errors.contains("FOREIGN KEY"), qPrintable(errors));
    QCOMPARE(
        sqlite("export_names.dcf", "SELECT code_from, code_to, special FROM AGE_VS1;", &errors),
        QString("0|120|\n999|999|missing"));
    QCOMPARE(sqlite("export_names.dcf", "SELECT count(*) FROM pragma_foreign_key_list('PERSON');"),
        QString("0"));
}

void tst_ExportCommand::postgresqlText()
{
    const Outcome outcome = exportTo("sql", "export_names.dcf", { "--dialect", "postgresql" });
    QCOMPARE(outcome.status, 0);
    const QString text = QString::fromUtf8(outcome.output);
    QVERIFY(text.contains("\n  \"CASE\" BIGINT NOT NULL, -- Number of the case; it's a key\n"));
    QVERIFY(text.contains("\n  LETTERS VARCHAR(1) REFERENCES SAME_VS1_2 (code), --"));
    QVERIFY(text.contains("\n  WEIGHT NUMERIC(6, 2) --"));
    QVERIFY(text.contains("\n  LONG_NUMBER BIGINT, --"));
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

void tst_ExportCommand::namesAreTold()
{
    const Outcome outcome = exportTo("sql", "export_names.dcf");
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

void tst_ExportCommand::htmlShowsEveryField_data()
{
    addFiles();
}

void tst_ExportCommand::htmlShowsEveryField()
{
    QFETCH(QString, file);
    const Outcome outcome = exportTo("html", file);
    QCOMPARE(outcome.status, 0);
    QVERIFY(!outcome.output.contains("http"));
    QVERIFY(!outcome.output.contains("src="));
    const QJsonArray fields = listed(file).value("fields").toArray();
    const QStringList ids = attributesOf(outcome.output, "article", "id");
    QCOMPARE(ids.size(), fields.size());
    QCOMPARE(QSet<QString>(ids.cbegin(), ids.cend()).size(), ids.size());
    const QStringList links = attributesOf(outcome.output, "a", "href");
    for (const QString& id : ids)
        QVERIFY2(links.contains('#' + id), qPrintable(id));
    const QString text = textOf(outcome.output);
    QVERIFY(!text.isEmpty());
    for (const QJsonValue& field : fields) {
        const QJsonObject object = field.toObject();
        QVERIFY2(text.contains(object.value("name").toString()),
            qPrintable(object.value("name").toString()));
        for (const QJsonValue& valueSet : object.value("valueSets").toArray()) {
            for (const QJsonValue& value : valueSet.toObject().value("values").toArray())
                QVERIFY(text.contains(value.toObject().value("label").toString()));
        }
    }
}

void tst_ExportCommand::htmlIsEscaped()
{
    const QByteArray page = exportTo("html", "export_names.dcf").output;
    QVERIFY(page.contains("Names &amp; &lt;labels&gt; that"));
    QVERIFY(page.contains("A reserved word &lt;b&gt;and&lt;/b&gt; markup &amp; such"));
    QVERIFY(page.contains("It's &lt;one&gt;"));
    QVERIFY(!page.contains("<b>"));
}

void tst_ExportCommand::htmlOpensInABrowser()
{
    const QString browser = QStringLiteral("/usr/bin/chromium");
    if (!QFile::exists(browser))
        QSKIP("Chromium is not installed");
    QTemporaryDir folder;
    const QString path = folder.filePath("census.html");
    QCOMPARE(exportTo("html", TESSEL_EXAMPLES "/census.dcf", { "-o", path }).status, 0);
    const Outcome shown = run(browser,
        { "--headless", "--no-sandbox", "--disable-gpu", "--user-data-dir=" + folder.filePath("u"),
            "--dump-dom", "file://" + path });
    QCOMPARE(shown.status, 0);
    const int fields = listed(TESSEL_EXAMPLES "/census.dcf").value("fields").toArray().size();
    QCOMPARE(shown.output.count("<article "), fields);
    QCOMPARE(shown.output.count("<h2>"), 5);
}

void tst_ExportCommand::csvAndJsonAreTheListing_data()
{
    addFiles();
}

void tst_ExportCommand::csvAndJsonAreTheListing()
{
    QFETCH(QString, file);
    const QByteArray json = exportTo("json", file).output;
    QCOMPARE(QJsonDocument::fromJson(json).object().value("files").toArray().at(0).toObject(),
        listed(file));
    const QByteArray csv = exportTo("csv", file).output;
    QVERIFY(csv.startsWith("file,record,name,label,type,"));
    QVERIFY(csv.endsWith("\r\n"));
    QCOMPARE(csv, run(TESSEL_PROGRAM, { "fields", "--format", "csv", "--values", file }).output);
}

void tst_ExportCommand::outputIsWholeOrAbsent()
{
    QTemporaryDir folder;
    const QString path = folder.filePath("out.sql");
    QCOMPARE(exportTo("sql", "basic.dcf", { "-o", path }).status, 0);
    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QByteArray written = file.readAll();
    QCOMPARE(written, exportTo("sql", "basic.dcf").output);
    QCOMPARE(exportTo("sql", "empty.dcf", { "-o", path }).status, 1);
    QVERIFY(file.seek(0));
    QCOMPARE(file.readAll(), written);
    QCOMPARE(exportTo("sql", "basic.dcf", { "-o", folder.filePath("none/out.sql") }).status, 1);
    QCOMPARE(QDir(folder.path()).entryList(QDir::Files), QStringList("out.sql"));
}

void tst_ExportCommand::damagedFileFails()
{
    QTemporaryDir folder;
    QFile whole(TESSEL_EXAMPLES "/person.dta");
    QVERIFY(whole.open(QIODevice::ReadOnly));
    QFile cut(folder.filePath("cut.dta"));
    QVERIFY(cut.open(QIODevice::WriteOnly));
    cut.write(whole.read(300));
    cut.close();
    for (const char* target : { "ddi", "sql", "csv", "json", "html" }) {
        const Outcome outcome = exportTo(target, cut.fileName());
        QCOMPARE(outcome.status, 1);
        QVERIFY(outcome.output.isEmpty());
        QVERIFY(outcome.errors.contains("cut.dta: error: "));
    }
}

QTEST_GUILESS_MAIN(tst_ExportCommand)
#include "tst_ExportCommand.moc"
