// Files that "tessel convert" reads are never replaced by those that it makes.
#include "RunTessel.h"

#include <QtTest>

#include <unistd.h>

class tst_ConvertInputs : public QObject {
    Q_OBJECT

private slots:
    void init();
    void kept_data();
    void kept();
    void dictionary();
    void problems();
    void settings();
    void otherFiles();

private:
    QString path(const QString& name) const
    {
        return m_folder->filePath(name);
    }

    std::unique_ptr<QTemporaryDir> m_folder;
};

void tst_ConvertInputs::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    QVERIFY(m_folder->isValid());
    QVERIFY(QDir().mkpath(path("out")));
    QVERIFY(QFile::copy(QStringLiteral(TESSEL_EXAMPLES "/household.sav"), path("s.sav")));
}

void tst_ConvertInputs::kept_data()
{
    QTest::addColumn<QString>("kind");
    for (const char* kind : { "itself", "hard", "symbolic", "symbolic source" })
        QTest::newRow(kind) << kind;
}

void tst_ConvertInputs::kept()
{
    QFETCH(QString, kind);
    const QByteArray source = path("s.sav").toUtf8();
    const QByteArray target = path("out/s.sav").toUtf8();
    const QByteArray before = readFile(path("s.sav"));
    QString given = path("s.sav");
    if (kind == "itself") {
        QVERIFY(QFile::rename(path("s.sav"), path("out/s.sav")));
        given = path("out/s.sav");
    } else if (kind == "hard") {
        QCOMPARE(::link(source.constData(), target.constData()), 0);
    } else if (kind == "symbolic") {
        QCOMPARE(::symlink(source.constData(), target.constData()), 0);
    } else {
        QVERIFY(QFile::rename(path("s.sav"), path("out/s.sav")));
        QCOMPARE(::symlink(target.constData(), source.constData()), 0);
    }
    for (const QStringList& more : { QStringList(), QStringList { "--overwrite" } }) {
        const Outcome outcome =
            runTessel(QStringList { "convert", given, "--to", "spss", "-o", path("out") } + more);
        QCOMPARE(outcome.status, 1);
        QVERIFY2(outcome.errors.contains("s.sav: error: nothing is made: it is a file that the"),
            outcome.errors.constData());
        QCOMPARE(
            QDir(path("out")).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
            QStringList { "s.sav" });
        QCOMPARE(readFile(given), before);
    }
}

// Whatever it is called.
void tst_ConvertInputs::dictionary()
{
    const QString examples = QStringLiteral(TESSEL_EXAMPLES "/");
    QVERIFY(QFile::copy(examples + "census.dcf", path("out/PERSON.dta")));
    QVERIFY(QFile::copy(examples + "census.dat", path("out/HOUSEHOLD.sav")));
    const QByteArray described = readFile(path("out/PERSON.dta"));
    const QByteArray data = readFile(path("out/HOUSEHOLD.sav"));
    for (const char* format : { "stata", "spss" }) {
        const Outcome outcome = runTessel({ "convert", path("out/PERSON.dta"),
            path("out/HOUSEHOLD.sav"), "--to", format, "-o", path("out"), "--overwrite" });
        QVERIFY(outcome.status != 0);
    }
    QVERIFY(QFile::rename(path("out/PERSON.dta"), path("d.dcf")));
    const Outcome outcome = runTessel({ "convert", path("d.dcf"), path("out/HOUSEHOLD.sav"), "--to",
        "spss", "-o", path("out"), "--overwrite" });
    QCOMPARE(outcome.status, 1);
    QVERIFY2(outcome.errors.contains("HOUSEHOLD.sav: error: nothing is made"),
        outcome.errors.constData());
    QCOMPARE(readFile(path("d.dcf")), described);
    QCOMPARE(readFile(path("out/HOUSEHOLD.sav")), data);
}

void tst_ConvertInputs::problems()
{
    const QStringList command { "convert", path("s.sav"), "--to", "csv", "-o", path("out") };
    for (const char* name : { "out/s.csv", "out/datapackage.json" }) {
        const Outcome outcome = runTessel(command + QStringList { "--problems", path(name) });
        QCOMPARE(outcome.status, 1);
        QVERIFY2(outcome.errors.contains(": error: nothing is made: it is a file that the"),
            outcome.errors.constData());
        QVERIFY(!QFileInfo::exists(path(name)));
    }
}

void tst_ConvertInputs::settings()
{
    const Outcome saved = runTessel({ "build", path("s.sav"), "--to", path("d.db"), "--save-config",
        path("out/datapackage.json") });
    QVERIFY2(saved.status == 0, saved.errors.constData());
    const QByteArray before = readFile(path("out/datapackage.json"));
    QVERIFY(!before.isEmpty());
    const QStringList command { "convert", path("s.sav"), "--to", "csv", "-o", path("out"),
        "--config", path("out/datapackage.json"), "--overwrite" };
    const Outcome outcome = runTessel(command);
    QCOMPARE(outcome.status, 1);
    QVERIFY2(outcome.errors.contains("datapackage.json: error: nothing is made"),
        outcome.errors.constData());
    QVERIFY(runTessel(command + QStringList { "--problems", path("out/datapackage.json") }).status
        == 2);
    QCOMPARE(readFile(path("out/datapackage.json")), before);
}

void tst_ConvertInputs::otherFiles()
{
    QVERIFY(writeFile(path("out/s.sav"), "former"));
    const QByteArray before = readFile(path("s.sav"));
    const Outcome outcome =
        runTessel({ "convert", path("s.sav"), "--to", "spss", "-o", path("out"), "--overwrite" });
    QVERIFY2(outcome.status == 0, outcome.errors.constData());
    QVERIFY(readFile(path("out/s.sav")).startsWith("$FL2"));
    QCOMPARE(readFile(path("s.sav")), before);
}

QTEST_GUILESS_MAIN(tst_ConvertInputs)
#include "tst_ConvertInputs.moc"
