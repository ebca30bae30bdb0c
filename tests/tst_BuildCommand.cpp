// Reads databases that "tessel build" made back cell by cell and compares them with a slice of
// their own: the layout from the dictionary's reader, columns cut out of decoded lines.
#include "RunTessel.h"
#include "SlicedData.h"
#include "SqliteRows.h"

#include <QtTest>

#include <csignal>

namespace {

QByteArray surveyOf(const QByteArray& name, const QByteArray& label)
{
    return "[Dictionary]\nVersion=CSPro 7.7\nLabel=D\nName=D\nRecordTypeStart=1\n"
           "RecordTypeLen=1\nPositions=Relative\nZeroFill=No\nDecimalChar=No\n\n[Level]\nLabel=Q\n"
           "Name=Q\n\n[IdItems]\n\n[Item]\nLabel=Place\nName=PLACE\nStart=2\nLen=2\n"
           "DataType=Numeric\n\n[Record]\nLabel="
        + label + "\nName=" + name + "\nRecordTypeValue='1'\nRecordLen=40\n\n[Item]\nLabel=" + label
        + "\nName=" + name + "\nStart=4\nLen=2\nDataType=Numeric\n\n[ValueSet]\nLabel=" + label
        + "\nName=" + name + "_VS1\nValue=1;" + label
        + "\nValue=99;Gone\nName=MISSING,Special\n\n[Item]\nLabel=T\nName=T\nStart=6\nLen=30\n"
          "DataType=Alpha\n";
}

} // namespace

class tst_BuildCommand : public QObject {
    Q_OBJECT

private slots:
    void init();
    void everyCell_data();
    void everyCell();
    void popstan();
    void views();
    void quantities_data();
    void quantities();
    void repeatTables();
    void problemsAndRejects();
    void hostile_data();
    void hostile();
    void existingTarget();
    void fullDisk();
    void missingFolder();
    void cancelled();
    void twoBuilds();

private:
    QString target() const
    {
        return m_folder->filePath("t.sqlite");
    }
    QStringList leftBehind() const
    {
        QStringList names = QDir(m_folder->path()).entryList(QDir::Files | QDir::Hidden);
        names.removeAll("d.dcf");
        names.removeAll("d.dat");
        return names;
    }
    Outcome build(
        const QByteArray& dictionary, const QByteArray& data, const QStringList& more = {})
    {
        writeFile(m_folder->filePath("d.dcf"), dictionary);
        writeFile(m_folder->filePath("d.dat"), data);
        return runTessel(QStringList { "build", m_folder->filePath("d.dcf"),
                             m_folder->filePath("d.dat"), "--to", target() }
            + more);
    }

    std::unique_ptr<QTemporaryDir> m_folder;
};

void tst_BuildCommand::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
}

void tst_BuildCommand::everyCell_data()
{
    QTest::addColumn<QString>("dictionary");
    QTest::addColumn<QString>("data");
    const QDir examples(QStringLiteral(TESSEL_EXAMPLES));
    QTest::newRow("example") << examples.filePath("census.dcf") << examples.filePath("census.dat");
    if (!qEnvironmentVariableIsSet("TESSEL_CORPUS"))
        return;
    for (const QString& folder : { QStringLiteral("cspro"), QStringLiteral("cspro-json") }) {
        const QDir corpus(qEnvironmentVariable("TESSEL_CORPUS") + '/' + folder);
        for (const QString& name : corpus.entryList({ "*.dcf" })) {
            const QString data = corpus.filePath(QFileInfo(name).completeBaseName() + ".dat");
            if (QFile::exists(data))
                QTest::newRow(qPrintable(name)) << corpus.filePath(name) << data;
        }
    }
}

void tst_BuildCommand::everyCell()
{
    QFETCH(QString, dictionary);
    QFETCH(QString, data);
    const Outcome outcome = runTessel({ "build", dictionary, data, "--to", target() });
    QVERIFY2(outcome.status == 0, outcome.errors.constData());
    QCOMPARE(leftBehind(), QStringList { "t.sqlite" });
    const Slice slice(dictionary, data);
    const SqliteRows database(target());
    QCOMPARE(database.value("PRAGMA integrity_check"), QStringLiteral("ok"));
    for (const QString& record : slice.recordNames()) {
        const auto rows = database.rows("SELECT * FROM \"" + record + "\" ORDER BY rowid");
        const auto expected = slice.rowsOf(record);
        QCOMPARE(rows.size(), expected.size());
        for (int r = 0; r < rows.size(); ++r)
            QCOMPARE(rows.at(r), expected.at(r));
        const auto labels = database.rows("SELECT * FROM \"" + record + "_labels\"");
        QCOMPARE(labels.size(), rows.size());
        for (int r = 0; r < rows.size(); ++r)
            QVERIFY2(areSameLabels(labels.at(r), slice.labelRowsOf(record).at(r)),
                qPrintable(
                    labels.at(r).join('|') + '\n' + slice.labelRowsOf(record).at(r).join('|')));
    }
    QCOMPARE(database.value("SELECT count(*) FROM tessel_rejects").toInt(), slice.rejected);
    QCOMPARE(database.value("SELECT sha256 FROM tessel_sources"),
        QString::fromLatin1(
            QCryptographicHash::hash(readFile(data), QCryptographicHash::Sha256).toHex()));
    QCOMPARE(
        database.value("SELECT dictionary FROM tessel_sources"), decoded(readFile(dictionary)));
}

void tst_BuildCommand::popstan()
{
    if (!qEnvironmentVariableIsSet("TESSEL_CORPUS"))
        QSKIP("TESSEL_CORPUS is not set");
    const QString path = qEnvironmentVariable("TESSEL_CORPUS") + "/cspro-json/popstan-census-full";
    const Outcome outcome = runTessel({ "build", path + ".dcf", path + ".dat", "--to", target() });
    QVERIFY2(outcome.output.contains("29143 lines read = 29143 rows + 0 rejects"),
        outcome.output.constData());
    const SqliteRows database(target());
    QCOMPARE(database.value("SELECT group_concat(row_count) FROM tessel_records"),
        QStringLiteral("24271,4872"));
    QCOMPARE(database.value("SELECT count(*) FROM cases"), QStringLiteral("4872"));
}

void tst_BuildCommand::views()
{
    const QByteArray lines = "101 1a\n10299\n103  c\n104 7\n";
    QCOMPARE(build(surveyOf("SEX", "One's"), lines).status, 0);
    const SqliteRows database(target());
    QCOMPARE(database.rows("SELECT SEX FROM SEX_labels"),
        (QVector<QStringList> { { "One's" }, { "Gone" }, { QString() }, { "7" } }));
    QCOMPARE(database.rows("SELECT SEX FROM SEX_valid"),
        (QVector<QStringList> { { "1" }, { QString() }, { QString() }, { "7" } }));
    QCOMPARE(database.rows("SELECT SEX FROM SEX"),
        (QVector<QStringList> { { "1" }, { "99" }, { QString() }, { "7" } }));
    QCOMPARE(database.rows("SELECT * FROM SEX_VS1"),
        (QVector<QStringList> { { "1", "One's", QString() }, { "99", "Gone", "missing" } }));
}

void tst_BuildCommand::quantities_data()
{
    QTest::addColumn<QByteArray>("values");
    QTest::addColumn<QStringList>("labels"); // of 0, 7, 40, 98, 99 and none
    QTest::addColumn<QString>("type");

    QTest::newRow("a quantity stands for itself")
        << QByteArray("Value=1:97;Years") << QStringList { "0", "7", "40", "98", "Gone", QString() }
        << "text";
    QTest::newRow("in several ranges")
        << QByteArray("Value=1:10;Years\nValue=20:97;Years\nValue=0;None\nValue=98;Old")
        << QStringList { "None", "7", "40", "Old", "Gone", QString() } << "text";
    QTest::newRow("a code that cuts the range in two")
        << QByteArray("Value=39;Thirty-nine\nValue=1:40;Years")
        << QStringList { "0", "7", "40", "98", "Gone", QString() } << "text";
    QTest::newRow("groups have their labels")
        << QByteArray("Value=1:10;Young\nValue=11:97;Old")
        << QStringList { "0", "Young", "Old", "98", "Gone", QString() } << "text";
    QTest::newRow("a set of nothing else leaves numbers")
        << QByteArray("Value=0:98;Years\n\n[ValueSet]\nLabel=Other\nName=OTHER")
        << QStringList { "0", "7", "40", "98", "99", QString() } << "integer";
}

void tst_BuildCommand::quantities()
{
    QFETCH(QByteArray, values);
    QFETCH(QStringList, labels);
    QFETCH(QString, type);
    const QByteArray dictionary = surveyOf("AGE", "Age").replace("Value=1;Age", values);
    QCOMPARE(build(dictionary, "101 0\n102 7\n10340\n10498\n10599\n106\n").status, 0);
    const SqliteRows database(target());
    QStringList shown;
    for (const QStringList& row : database.rows("SELECT AGE FROM AGE_labels"))
        shown.append(row.first());
    QCOMPARE(shown, labels);
    QCOMPARE(database.value("SELECT typeof(AGE) FROM AGE_labels LIMIT 1"), type);
}

void tst_BuildCommand::repeatTables()
{
    const QDir examples(QStringLiteral(TESSEL_EXAMPLES));
    const QStringList files { examples.filePath("census.dcf"), examples.filePath("census.dat") };
    QCOMPARE(
        runTessel(QStringList { "build" } + files + QStringList { "--to", target() }).status, 0);
    const QString second = m_folder->filePath("r.sqlite");
    QCOMPARE(runTessel(QStringList { "build" } + files
                 + QStringList { "--to", second, "--repeats", "tables" })
                 .status,
        0);
    const SqliteRows wide(target());
    const SqliteRows deep(second);
    for (int occurrence = 1; occurrence <= 3; ++occurrence) {
        QCOMPARE(deep.rows(QStringLiteral("SELECT case_id, row, DEATH, DEATH_SEX, DEATH_AGE FROM "
                                          "DEATH WHERE occurrence = %1")
                               .arg(occurrence)),
            wide.rows(QStringLiteral("SELECT case_id, row, DEATH_%1, DEATH_SEX_%1, DEATH_AGE_%1 "
                                     "FROM HOUSEHOLD WHERE DEATH_%1 IS NOT NULL")
                          .arg(occurrence)));
    }
    QVERIFY(deep.value("SELECT count(*) FROM DEATH").toInt() > 0);
}

void tst_BuildCommand::problemsAndRejects()
{
    const QByteArray lines = "101xxa\n9xx\n102 1\n101 1\n~03 1\n\n";
    const Outcome outcome = build(surveyOf("SEX", "S"), lines);
    QCOMPARE(outcome.status, 0);
    QVERIFY2(outcome.output.contains("6 lines read = 3 rows + 1 reject + 1 deleted + 1 blank"),
        outcome.output.constData());
    const SqliteRows database(target());
    QCOMPARE(database.rows("SELECT line, reason, text FROM tessel_rejects"),
        (QVector<QStringList> { { "2", "unknown-record-type", "9xx" } }));
    QCOMPARE(database.rows("SELECT line, case_id, variable, value FROM tessel_problems WHERE kind "
                           "= 'not-a-number'"),
        (QVector<QStringList> { { "1", "1", "SEX", "xx" } }));
    QCOMPARE(database.rows("SELECT case_id, line, records, duplicate_of, PLACE FROM cases"),
        (QVector<QStringList> { { "1", "1", "1", QString(), "1" },
            { "2", "3", "1", QString(), "2" }, { "3", "4", "1", "1", "1" } }));
}

void tst_BuildCommand::hostile_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<QByteArray>("text");
    QTest::newRow("quotes") << QByteArray("A\"B") << QByteArray("it's \"so\"");
    QTest::newRow("statement") << QByteArray("X'); DROP TABLE cases; --")
                               << QByteArray("'); DROP TABLE cases; --");
    QTest::newRow("long") << QByteArray(70, 'N') << QByteArray("long");
    QTest::newRow("reserved") << QByteArray("SELECT") << QByteArray("NULL");
    QTest::newRow("Arabic") << QByteArray("\xD8\xB9\xD9\x85\xD8\xB1")
                            << QByteArray("\xD8\xB9\xD9\x85\xD8\xB1");
    QTest::newRow("emoji") << QByteArray("\xF0\x9F\x98\x80") << QByteArray("\xF0\x9F\x98\x80");
    QTest::newRow("NUL") << QByteArray("N") << QByteArray("a\0b", 3);
    QTest::newRow("system table") << QByteArray("tessel_builds") << QByteArray("x");
}

void tst_BuildCommand::hostile()
{
    QFETCH(QByteArray, name);
    QFETCH(QByteArray, text);
    const Outcome outcome = build(surveyOf(name, "L'); \"x"), "101 1" + text + "\n");
    QVERIFY2(outcome.status == 0, outcome.errors.constData());
    const SqliteRows database(target());
    const QString table = database.value("SELECT table_name FROM tessel_records");
    const QString column =
        database.value("SELECT column_name FROM tessel_variables WHERE table_name <> 'cases' AND "
                       "NOT is_id AND column_name <> 'T'");
    const auto quoted = [](QString plain) { return '"' + plain.replace('"', "\"\"") + '"'; };
    QCOMPARE(database.value("SELECT T FROM " + quoted(table)),
        QString::fromUtf8(text.constData(), text.size()));
    QCOMPARE(
        database.value("SELECT " + quoted(column) + " FROM " + quoted(table)), QStringLiteral("1"));
    QCOMPARE(database.value("SELECT name FROM tessel_records"), QString::fromUtf8(name));
    QCOMPARE(database.value("SELECT label FROM tessel_records"), QStringLiteral("L'); \"x"));
    const QString view =
        database.value("SELECT name FROM sqlite_master WHERE type = 'view' ORDER BY rowid LIMIT 1");
    QCOMPARE(database.value("SELECT " + quoted(column) + " FROM " + quoted(view)),
        QStringLiteral("L'); \"x"));
    QCOMPARE(database.value("SELECT count(*) FROM cases"), QStringLiteral("1"));
}

void tst_BuildCommand::existingTarget()
{
    QCOMPARE(build(surveyOf("A", "A"), "101 1\n").status, 0);
    const QByteArray before = readFile(target());
    const Outcome refused = build(surveyOf("A", "A"), "102 1\n");
    QCOMPARE(refused.status, 1);
    QVERIFY(refused.errors.contains("is there already"));
    QCOMPARE(readFile(target()), before);
    QCOMPARE(build(surveyOf("A", "A"), "102 1\n", { "--overwrite" }).status, 0);
    QCOMPARE(SqliteRows(target()).value("SELECT PLACE FROM A"), QStringLiteral("2"));
    QVERIFY(writeFile(target(), "no database"));
    QCOMPARE(build(surveyOf("A", "A"), "102 1\n", { "--overwrite" }).status, 1);
    QCOMPARE(readFile(target()), QByteArray("no database"));
    QCOMPARE(leftBehind(), QStringList { "t.sqlite" });
}

void tst_BuildCommand::fullDisk()
{
    QVERIFY(writeFile(m_folder->filePath("d.dcf"), surveyOf("A", "A")));
    QByteArray lines;
    for (int i = 0; i < 100'000; ++i)
        lines += "101 1abcdefghijklmnopqrstuvwxyz\n";
    QVERIFY(writeFile(m_folder->filePath("d.dat"), lines));
    const Outcome outcome = runProgram("bash",
        { "-c", "ulimit -f 2000; exec \"$@\"", "bash", QStringLiteral(TESSEL_PROGRAM), "build",
            m_folder->filePath("d.dcf"), m_folder->filePath("d.dat"), "--to", target() });
    QCOMPARE(outcome.status, 1);
    QVERIFY2(outcome.errors.contains("cannot be written"), outcome.errors.constData());
    QCOMPARE(leftBehind(), QStringList());
}

void tst_BuildCommand::missingFolder()
{
    QVERIFY(writeFile(m_folder->filePath("d.dcf"), surveyOf("A", "A")));
    const Outcome outcome = runTessel(
        { "build", m_folder->filePath("d.dcf"), "-", "--to", m_folder->filePath("none/t.sqlite") },
        "101 1\n");
    QCOMPARE(outcome.status, 1);
    QVERIFY2(
        outcome.errors.contains("cannot be written: No such file"), outcome.errors.constData());
}

void tst_BuildCommand::cancelled()
{
    QVERIFY(writeFile(m_folder->filePath("d.dcf"), surveyOf("A", "A")));
    QProcess process;
    process.start(QStringLiteral(TESSEL_PROGRAM),
        { "build", m_folder->filePath("d.dcf"), "-", "--to", target() });
    QVERIFY(process.waitForStarted());
    QByteArray lines;
    for (int i = 0; i < 100'000; ++i)
        lines += "101 1abcdefghijklmnopqrstuvwxyz\n";
    process.write(lines);
    QTRY_VERIFY(process.bytesToWrite() == 0);
    QTRY_COMPARE(leftBehind(), QStringList { ".t.sqlite.tessel-build" });
    ::kill(pid_t(process.processId()), SIGINT); // nothing more comes
    QVERIFY(process.waitForFinished(60'000));
    QCOMPARE(process.exitStatus(), QProcess::NormalExit);
    QCOMPARE(process.exitCode(), 1);
    QVERIFY(process.readAllStandardError().contains("the build was stopped"));
    QCOMPARE(leftBehind(), QStringList());
}

void tst_BuildCommand::twoBuilds()
{
    QVERIFY(writeFile(m_folder->filePath("d.dcf"), surveyOf("A", "A")));
    QProcess process;
    process.start(QStringLiteral(TESSEL_PROGRAM),
        { "build", m_folder->filePath("d.dcf"), "-", "--to", target() });
    QVERIFY(process.waitForStarted());
    QTRY_COMPARE(leftBehind(), QStringList { ".t.sqlite.tessel-build" });
    QTest::qWait(200); // until it has its lock
    const Outcome second = build(surveyOf("A", "A"), "101 1\n");
    QCOMPARE(second.status, 1);
    QVERIFY2(second.errors.contains("is being made by another build"), second.errors.constData());
    process.kill();
    QVERIFY(process.waitForFinished());
    QCOMPARE(leftBehind(), QStringList { ".t.sqlite.tessel-build" });
    QCOMPARE(build(surveyOf("A", "A"), "101 1\n").status, 0);
    QCOMPARE(leftBehind(), QStringList { "t.sqlite" });
}

QTEST_GUILESS_MAIN(tst_BuildCommand)
#include "tst_BuildCommand.moc"
