// Files made of CSPro DB files, compared cell by cell with the databases that "tessel build" makes
// of them, whose cells are compared with queries on these files elsewhere.
#include "CsvRows.h"
#include "RunTessel.h"
#include "SqliteRows.h"
#include "StatContents.h"

#include <QtTest>

namespace {

// Cells of a CSV file in the form that those of the others have.
StatContents csvContents(const QString& path)
{
    StatContents contents;
    QVector<QStringList> rows = csvRows(QString::fromUtf8(readFile(path)));
    contents.error = rows.isEmpty() ? 1 : 0;
    for (const QString& name : rows.isEmpty() ? QStringList() : rows.takeFirst()) {
        StatContents::Variable variable;
        variable.name = name;
        contents.variables.append(variable);
    }
    for (QStringList& row : rows) {
        for (QString& cell : row)
            cell = cell.isEmpty() ? QString() : cell;
    }
    contents.rows = rows;
    return contents;
}

} // namespace

class tst_ConvertDb : public QObject {
    Q_OBJECT

private slots:
    void corpus_data();
    void corpus();
};

void tst_ConvertDb::corpus_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QString>("format");
    const QDir folder(qEnvironmentVariable("TESSEL_CORPUS") + "/csdb");
    const bool isThere = qEnvironmentVariableIsSet("TESSEL_CORPUS");
    for (const QString& name : isThere ? folder.entryList({ "*.csdb" }) : QStringList()) {
        for (const char* format : { "stata", "spss", "csv" })
            QTest::newRow(qPrintable(name + ' ' + format)) << folder.filePath(name) << format;
    }
    if (!isThere)
        QTest::newRow("none") << QString() << QString();
}

void tst_ConvertDb::corpus()
{
    QFETCH(QString, file);
    QFETCH(QString, format);
    if (file.isEmpty())
        QSKIP("TESSEL_CORPUS is not set");
    const QTemporaryDir folder;
    const QString target = folder.filePath("t.sqlite");
    QCOMPARE(runTessel({ "build", file, "--to", target }).status, 0);
    QStringList arguments { "convert", file, "--to", format, "-o", folder.filePath("out") };
    if (format == "stata")
        arguments += { "--missing", "code" };
    const Outcome outcome = runTessel(arguments);
    QVERIFY2(outcome.status == 0, outcome.errors.constData());
    const SqliteRows database(target);
    const QString ending = format == "stata" ? ".dta" : format == "spss" ? ".sav" : ".csv";
    int compared = 0;
    for (const QStringList& record : database.rows("SELECT DISTINCT record FROM tessel_variables "
                                                   "WHERE record IS NOT NULL")) {
        const QString name = record.first();
        const QString path = folder.filePath("out/" + name + ending);
        const StatContents found = format == "csv" ? csvContents(path) : StatContents::read(path);
        QCOMPARE(found.error, 0);
        const auto variables = database.rows("SELECT table_name, column_name, label, type FROM "
                                             "tessel_variables WHERE record = '"
            + name + "' ORDER BY rowid");
        QCOMPARE(found.variables.size(), variables.size());
        for (int v = 0; v < variables.size(); ++v) {
            const QStringList& variable = variables.at(v);
            if (variable.at(1).size() <= 32)
                QCOMPARE(found.variables.at(v).name, variable.at(1));
            if (variable.at(2).size() <= 60 && format != "csv")
                QVERIFY(found.variables.at(v).label.startsWith(variable.at(2)));
            const auto cells = database.rows(
                "SELECT \"" + variable.at(1) + "\" FROM \"" + variable.at(0) + "\" ORDER BY rowid");
            QCOMPARE(found.rows.size(), cells.size());
            for (int r = 0; r < cells.size(); ++r) {
                QString expected = cells.at(r).first();
                QString cell = found.rows.at(r).at(v);
                if (variable.at(3) == "number" && !cell.isNull())
                    cell = StatContents::numberText(cell.toDouble());
                if (variable.at(3) == "number" && !expected.isNull())
                    expected = StatContents::numberText(expected.toDouble());
                expected.replace(QChar(0), QChar(0x2400));
                if (cell != expected)
                    QFAIL(qPrintable(
                        QString("%1 row %2 %3: %4 in place of %5")
                            .arg(name, QString::number(r + 1), variable.at(1), cell, expected)));
                ++compared;
            }
        }
    }
    QVERIFY(compared > 0);
}

QTEST_GUILESS_MAIN(tst_ConvertDb)
#include "tst_ConvertDb.moc"
