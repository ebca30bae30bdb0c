// Databases made of CSPro DB files, compared cell by cell with what queries on these files give.
#include "RunTessel.h"
#include "SlicedData.h"
#include "SqliteRows.h"

#include <QStandardPaths>
#include <QtTest>

namespace {

QString trimmedEnd(QString text)
{
    while (text.endsWith(' '))
        text.chop(1);
    return text;
}

} // namespace

class tst_BuildDb : public QObject {
    Q_OBJECT

private slots:
    void init();
    void corpus_data();
    void corpus();
    void python();

private:
    void compareTables(
        const SqliteRows& source, const SqliteRows& built, const QString& dictionary);
    void compareTexts(const SqliteRows& source, const SqliteRows& built, const QString& dictionary);

    std::unique_ptr<QTemporaryDir> m_folder;
};

void tst_BuildDb::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
}

void tst_BuildDb::corpus_data()
{
    QTest::addColumn<QString>("file");
    const QDir folder(qEnvironmentVariable("TESSEL_CORPUS") + "/csdb");
    const bool isThere = qEnvironmentVariableIsSet("TESSEL_CORPUS");
    for (const QString& name : isThere ? folder.entryList({ "*.csdb" }) : QStringList())
        QTest::newRow(qPrintable(name)) << folder.filePath(name);
    if (!isThere)
        QTest::newRow("none") << QString();
}

void tst_BuildDb::corpus()
{
    QFETCH(QString, file);
    if (file.isEmpty())
        QSKIP("TESSEL_CORPUS is not set");
    const QString target = m_folder->filePath("t.sqlite");
    const Outcome outcome = runTessel({ "build", file, "--to", target });
    QVERIFY2(outcome.status == 0, outcome.errors.constData());
    const SqliteRows source(file);
    const SqliteRows built(target);
    QCOMPARE(built.value("PRAGMA integrity_check"), QStringLiteral("ok"));
    const QString dictionary = source.value("SELECT dictionary FROM meta");
    QCOMPARE(built.value("SELECT dictionary FROM tessel_sources"), dictionary);
    QCOMPARE(built.rows("SELECT uuid, partly_saved FROM cases ORDER BY case_id"),
        source.rows(
            "SELECT id, partial_save_mode IS NOT NULL FROM cases WHERE deleted = 0 ORDER BY "
            "file_order"));
    QVERIFY(writeFile(m_folder->filePath("d.dcf"), dictionary.toUtf8()));
    if (source.value("SELECT schema_version FROM meta") == "2")
        compareTexts(source, built, m_folder->filePath("d.dcf"));
    else
        compareTables(source, built, m_folder->filePath("d.dcf"));
}

// Cases are kept as lines of text.
void tst_BuildDb::compareTexts(
    const SqliteRows& source, const SqliteRows& built, const QString& dictionary)
{
    QByteArray lines;
    for (const QStringList& row :
        source.rows("SELECT questionnaire FROM cases WHERE deleted = 0 ORDER BY file_order"))
        lines += row.first().toUtf8() + '\n';
    QVERIFY(writeFile(m_folder->filePath("d.dat"), lines));
    const Slice slice(dictionary, m_folder->filePath("d.dat"));
    int count = 0;
    for (const QString& record : slice.recordNames()) {
        const auto rows = built.rows("SELECT * FROM \"" + record + "\" ORDER BY rowid");
        const auto labels = built.rows("SELECT * FROM \"" + record + "_labels\"");
        QCOMPARE(rows.size(), slice.rowsOf(record).size());
        for (int r = 0; r < rows.size(); ++r) {
            QCOMPARE(rows.at(r), slice.rowsOf(record).at(r));
            QVERIFY(areSameLabels(labels.at(r), slice.labelRowsOf(record).at(r)));
        }
        count += rows.size();
    }
    QVERIFY(count > 200);
}

// A table for each record, a column for each item.
void tst_BuildDb::compareTables(
    const SqliteRows& source, const SqliteRows& built, const QString& dictionary)
{
    TCSPro reader;
    reader.setReading(CSProReading::AsWritten);
    reader.loadFromFile(dictionary);
    int count = 0;
    for (const TCSProRecord* record : qAsConst(*reader.records)) {
        QStringList columns { "c.file_order", "r.rowid" };
        QVector<const TCSProItem*> items;
        for (const bool isId : { true, false }) {
            for (const TCSProItem* item : qAsConst(*reader.items)) {
                if (isId ? reader.records->contains(item->record) : item->record != record)
                    continue;
                QString name = item->dictionaryName.toLower();
                if (item->occurrence > 0)
                    name += QStringLiteral("(%1)").arg(item->occurrence);
                columns.append((isId ? "l.`" : "r.`") + name + '`');
                items.append(item);
            }
        }
        const bool hasNumbers = source.value(QStringLiteral("SELECT count(*) FROM "
                                                            "pragma_table_info('%1') WHERE name = "
                                                            "'occ'")
                                                 .arg(record->name.toLower()))
            == "1";
        const auto expected = source.rows(
            QStringLiteral(
                "SELECT %1 FROM `%2` r JOIN `level-1` l USING (`level-1-id`) JOIN cases c "
                "ON c.id = l.`case-id` WHERE c.deleted = 0 ORDER BY c.file_order, %3")
                .arg(columns.join(", "), record->name.toLower(), hasNumbers ? "r.occ" : "r.rowid"));
        const auto rows = built.rows("SELECT * FROM \"" + record->name + "\" ORDER BY rowid");
        const auto labels = built.rows("SELECT * FROM \"" + record->name + "_labels\"");
        QCOMPARE(rows.size(), expected.size());
        for (int r = 0; r < rows.size(); ++r) {
            QCOMPARE(rows.at(r).size(), items.size() + 2);
            QStringList labelled = rows.at(r).mid(0, 2);
            for (int i = 0; i < items.size(); ++i) {
                QString cell = expected.at(r).at(i + 2);
                if (items.at(i)->isAlpha)
                    cell = trimmedEnd(cell);
                if (cell.isEmpty())
                    cell = QString();
                const bool isSame =
                    rows.at(r).at(i + 2) == cell && rows.at(r).at(i + 2).isNull() == cell.isNull();
                QVERIFY2(isSame,
                    qPrintable(QStringLiteral("%1 row %2 %3: '%4', not '%5'")
                                   .arg(record->name)
                                   .arg(r)
                                   .arg(items.at(i)->name, rows.at(r).at(i + 2), cell)));
                labelled.append(Slice::labelOf(*items.at(i), cell));
            }
            QVERIFY2(areSameLabels(labels.at(r), labelled),
                qPrintable(labels.at(r).join('|') + '\n' + labelled.join('|')));
        }
        count += rows.size();
    }
    QVERIFY(count > 0);
}

// Another program of another language reads the same cells.
void tst_BuildDb::python()
{
    const QString program = QStandardPaths::findExecutable("python3");
    if (program.isEmpty() || runProgram(program, { "-c", "import sqlite3" }).status != 0)
        QSKIP("python3 with its module sqlite3 is not here to read with");
    const QDir examples(QStringLiteral(TESSEL_EXAMPLES));
    const QString target = m_folder->filePath("t.sqlite");
    QCOMPARE(runTessel({ "build", examples.filePath("census.dcf"), examples.filePath("census.dat"),
                           "--to", target })
                 .status,
        0);
    QVERIFY(writeFile(m_folder->filePath("read.py"), R"(
import sqlite3, sys
database = sqlite3.connect("file:" + sys.argv[1] + "?mode=ro", uri=True)
for row in database.execute(f'SELECT * FROM "{sys.argv[2]}" ORDER BY rowid'):
    print("\t".join("" if cell is None else f"{cell:.17g}" if isinstance(cell, float) else str(cell)
        for cell in row))
)"));
    const Slice slice(examples.filePath("census.dcf"), examples.filePath("census.dat"));
    QCOMPARE(slice.recordNames().size(), 3);
    for (const QString& record : slice.recordNames()) {
        const Outcome outcome =
            runProgram(program, { m_folder->filePath("read.py"), target, record });
        QVERIFY2(outcome.status == 0, outcome.errors.constData());
        QStringList expected;
        for (const QStringList& row : slice.rowsOf(record))
            expected.append(row.join('\t'));
        QCOMPARE(QString::fromUtf8(outcome.output), expected.join('\n') + '\n');
    }
}

QTEST_GUILESS_MAIN(tst_BuildDb)
#include "tst_BuildDb.moc"
