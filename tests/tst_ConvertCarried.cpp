// What a source says besides of variables and labels: weights, notes, attributes, sets. It stands
// in the file that "tessel convert" makes, or the plan says that it does not.
#include "RunTessel.h"
#include "StatContents.h"
#include "StatFiles.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QtTest>

class tst_ConvertCarried : public QObject {
    Q_OBJECT

private slots:
    void init();
    void weight();
    void weightLeftOut();
    void extensions();
    void notesOfDictionary_data();
    void notesOfDictionary();
    void notesOfVariables();
    void tooManyNotes();

private:
    QString path(const QString& name) const
    {
        return m_folder->filePath(name);
    }
    Outcome convert(const QString& source, const QString& format, const QStringList& more = {})
    {
        return runTessel(
            QStringList { "convert", source, "--to", format, "--overwrite", "-o", path("out") }
            + more);
    }
    bool writeWeighted(const QString& name) const;

    std::unique_ptr<QTemporaryDir> m_folder;
};

bool tst_ConvertCarried::writeWeighted(const QString& name) const
{
    StatFileWriter writer;
    writer.add("T", READSTAT_TYPE_STRING, "A300", nullptr, 300);
    const readstat_variable_t* weight = writer.add("W", READSTAT_TYPE_DOUBLE, "F8.2");
    writer.add("X", READSTAT_TYPE_DOUBLE, "F8.2");
    readstat_writer_set_fweight_variable(writer.get(), weight);
    writer.setNumber(2);
    return writer.write(name, TStatFileKind::Spss, 2);
}

void tst_ConvertCarried::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    QVERIFY(m_folder->isValid());
}

void tst_ConvertCarried::weight()
{
    QVERIFY(writeWeighted(path("s.sav")));
    Outcome outcome = convert(path("s.sav"), "spss", { "--strict" });
    QVERIFY2(outcome.status == 0, outcome.errors.constData());
    QCOMPARE(readStatDescription(path("out/s.sav"), TStatFileKind::Spss).weight, 1);
    outcome = convert(path("s.sav"), "spss", { "--variables", "X,W" });
    QVERIFY2(outcome.status == 0, outcome.errors.constData());
    const TStatFileDescription part = readStatDescription(path("out/s.sav"), TStatFileKind::Spss);
    QCOMPARE(part.variables.at(part.weight).name, QString("W"));
}

void tst_ConvertCarried::weightLeftOut()
{
    QVERIFY(writeWeighted(path("s.sav")));
    Outcome outcome = convert(path("s.sav"), "stata");
    QVERIFY2(outcome.errors.contains("1 file loses its weight"), outcome.errors.constData());
    outcome = convert(path("s.sav"), "stata", { "--plan" });
    QVERIFY2(outcome.output.contains("changed: s.dta weight W left out: the rows count alike\n"),
        outcome.output.constData());
    QCOMPARE(convert(path("s.sav"), "stata", { "--strict" }).status, 1);
    outcome = convert(path("s.sav"), "spss", { "--variables", "X" });
    QVERIFY2(outcome.errors.contains("1 file loses its weight"), outcome.errors.constData());
    QCOMPARE(readStatDescription(path("out/s.sav"), TStatFileKind::Spss).weight, -1);
}

void tst_ConvertCarried::extensions()
{
    StatFileWriter writer;
    writer.add("a", READSTAT_TYPE_DOUBLE, "F8.2");
    writer.add("b", READSTAT_TYPE_DOUBLE, "F8.2");
    QVERIFY(writer.write(path("s.sav"), TStatFileKind::Spss, 1));
    QByteArray bytes = readFile(path("s.sav"));
    bytes = withSpssRecord(bytes, 5, "Both= a b\nFirst= a\n");
    bytes = withSpssRecord(bytes, 7, "$m=D1 1 5 multi a b\n");
    bytes = withSpssRecord(bytes, 17, "ver('2'\n)");
    bytes = withSpssRecord(bytes, 18, "a:$@Role('4'\n)src('x'\n)/b:$@Role('0'\n)");
    QVERIFY(writeFile(path("s.sav"), bytes));
    const QMap<QString, QByteArray> endings { { "spss", "sav" }, { "stata", "dta" },
        { "csv", "csv" } };
    for (const QString& format : endings.keys()) {
        const QByteArray file = "changed: s." + endings.value(format) + ' ';
        const Outcome outcome = convert(path("s.sav"), format, { "--plan" });
        QVERIFY2(outcome.output.contains(file + "1 multiple response set left out: $m\n"),
            outcome.output.constData());
        QVERIFY2(outcome.output.contains(file + "2 sets of variables left out: Both, First\n"),
            outcome.output.constData());
        QVERIFY2(outcome.output.contains(file + "1 attribute left out: ver\n"),
            outcome.output.constData());
        QVERIFY2(outcome.output.contains(file + "a 1 attribute left out: src\n"),
            outcome.output.constData());
        QVERIFY2(outcome.output.contains(file + "a role left out\n"), outcome.output.constData());
        QVERIFY2(!outcome.output.contains(file + "b "), outcome.output.constData());
        QCOMPARE(convert(path("s.sav"), format, { "--strict" }).status, 1);
    }
}

void tst_ConvertCarried::notesOfDictionary_data()
{
    QTest::addColumn<QString>("format");
    for (const char* format : { "stata", "spss", "csv" })
        QTest::newRow(format) << format;
}

// Two items may have the same note, and occurrences of one have it once.
void tst_ConvertCarried::notesOfDictionary()
{
    QFETCH(QString, format);
    QVERIFY(writeFile(path("d.dcf"),
        "[Dictionary]\nVersion=CSPro 7.7\nLabel=D\nName=D\nNote=Of all.\nRecordTypeStart=1\n"
        "RecordTypeLen=1\nPositions=Relative\nZeroFill=No\nDecimalChar=Yes\n\n[Level]\nLabel=L\n"
        "Name=L\n\n[IdItems]\n\n[Item]\nLabel=I\nName=I\nNote=Key.\nStart=2\nLen=2\n"
        "DataType=Numeric\n\n[Record]\nLabel=R\nName=R\nNote=Of the record.\nRecordTypeValue='1'\n"
        "RecordLen=9\n\n[Item]\nLabel=N\nName=N\nNote=Same.\nStart=4\nLen=1\nDataType=Numeric\n\n"
        "[ValueSet]\nLabel=S\nName=N_SET\nNote=Of the set.\nValue=1;One\nNote=Of the code.\n\n"
        "[Item]\nLabel=M\nName=M\nNote=Same.\nNote= More.\nStart=5\nLen=1\n"
        "DataType=Numeric\nOccurrences=3\n"));
    QVERIFY(writeFile(path("d.dat"), "1011123\n"));
    const Outcome outcome = runTessel(
        { "convert", path("d.dcf"), path("d.dat"), "--to", format, "-o", path("out"), "--strict" });
    QVERIFY2(outcome.status == 0, outcome.errors.constData());
    QVERIFY2(outcome.errors.contains("1 file has notes of variables among its own"),
        outcome.errors.constData());
    QStringList notes;
    if (format == "csv") {
        const QJsonObject package =
            QJsonDocument::fromJson(readFile(path("out/datapackage.json"))).object();
        notes = QStringList(package["description"].toString())
            + package["resources"][0]["description"].toString().split('\n');
    } else {
        notes = StatContents::read(path(format == "stata" ? "out/R.dta" : "out/R.sav")).notes;
    }
    const QString last = notes.takeLast();
    QCOMPARE(notes,
        (QStringList { "Of all.", "R: Of the record.", "I: Key.", "N: Same.", "N_SET: Of the set.",
            "N_SET: 1: Of the code." }));
    QVERIFY2(last.startsWith("M_1: Same."), qPrintable(last));
}

// SPSS has none for variables, and libreadstat writes none of Stata.
void tst_ConvertCarried::notesOfVariables()
{
    StatFileWriter writer;
    readstat_writer_set_file_format_version(writer.get(), 118);
    const QByteArray longNote = QByteArray("x").repeated(100);
    for (const QByteArray& note : { QByteArray("Of the file"), QByteArray("Of age"), longNote })
        readstat_add_note(writer.get(), note.constData());
    writer.add("age", READSTAT_TYPE_INT32, nullptr);
    QVERIFY(writer.write(path("s.dta"), TStatFileKind::Stata, 1));
    QByteArray bytes = readFile(path("s.dta"));
    for (const QByteArray& note : { QByteArray("note2"), QByteArray("note3") }) {
        const int at = bytes.indexOf(note + '\0');
        bytes.replace(bytes.lastIndexOf(QByteArray("_dta\0", 5), at), 5, QByteArray("age\0\0", 5));
    }
    QVERIFY(writeFile(path("s.dta"), bytes));
    Outcome outcome = convert(path("s.dta"), "spss");
    QVERIFY2(outcome.errors.contains("1 file has notes of variables among its own"),
        outcome.errors.constData());
    const QString whole = "age: " + QString(longNote);
    QCOMPARE(StatContents::read(path("out/s.sav")).notes,
        (QStringList { "Of the file", "age: Of age", whole.left(80), whole.mid(80) }));
    outcome = convert(path("s.dta"), "stata");
    QCOMPARE(StatContents::read(path("out/s.dta")).notes,
        (QStringList { "Of the file", "age: Of age", whole }));
    outcome = convert(path("s.dta"), "stata", { "--plan" });
    QVERIFY2(outcome.output.contains("note: s.dta 2 notes of variables, records and value sets "
                                     "stand among the notes of the file, behind the name\n"),
        outcome.output.constData());
    QVERIFY2(!outcome.output.contains("note left out"), outcome.output.constData());
}

// Stata takes 9,999.
void tst_ConvertCarried::tooManyNotes()
{
    StatFileWriter writer;
    writer.add("a", READSTAT_TYPE_DOUBLE, "F8.2");
    for (int note = 0; note < 10'005; ++note)
        readstat_add_note(writer.get(), ("Note " + QByteArray::number(note)).constData());
    QVERIFY(writer.write(path("s.sav"), TStatFileKind::Spss, 1));
    Outcome outcome = convert(path("s.sav"), "stata", { "--plan" });
    QVERIFY2(outcome.output.contains("changed: 6 notes left out: there are too many\n"),
        outcome.output.constData());
    QCOMPARE(convert(path("s.sav"), "stata", { "--strict" }).status, 1);
    QCOMPARE(convert(path("s.sav"), "stata").status, 0);
    const QStringList notes = StatContents::read(path("out/s.dta")).notes;
    QCOMPARE(notes.size(), 9'999);
    QCOMPARE(notes.last(), QString("Note 9998"));
    outcome = convert(path("s.sav"), "csv", { "--strict" });
    QVERIFY2(outcome.status == 0, outcome.errors.constData());
}

QTEST_GUILESS_MAIN(tst_ConvertCarried)
#include "tst_ConvertCarried.moc"
