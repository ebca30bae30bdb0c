// Checks real data against a slice of their own: the layout from the dictionary's reader, columns
// cut out of decoded lines, codes looked at one by one. TESSEL_CORPUS names the folder.
#include "DataRows.h"

#include <tessel_data/CSProDbSource.h>
#include <tessel_data/DataError.h>
#include <tessel_data/StatSource.h>

#include <model_Tessel/CSPro.h>
#include <model_Tessel/CSProValueSet.h>

#include <QDir>
#include <QProcess>
#include <QtTest>

#include <sqlite3.h>

using namespace tessel;

namespace {

// What a column holds, counted anew.
struct Sliced {
    qint64 rows = 0;
    qint64 blank = 0; // special or not
    qint64 notANumber = 0;
    qint64 special = 0; // codes that are not blank
    qint64 outside = 0;
    double sum = 0;
};

QString corpus(const QString& path)
{
    return qEnvironmentVariable("TESSEL_CORPUS") + QLatin1Char('/') + path;
}

// The number of a field as a text without blanks; false for none.
bool numberOf(QString text, const TCSProItem& item, double& number)
{
    while (text.startsWith(QLatin1Char(' ')))
        text.remove(0, 1);
    bool isNumber = false;
    number = text.toDouble(&isNumber);
    if (!text.contains(QLatin1Char('.')))
        number /= std::pow(10.0, item.decimal);
    return isNumber && !text.contains(QLatin1Char(' '));
}

bool fits(const TCSProValueSet& set, const TValueSetItem& entry, double number)
{
    const double low = entry.code.toDouble();
    const QString highCode = set.detail(&entry).highCode;
    const double high = highCode.isNull() ? low : highCode.toDouble();
    return !entry.code.trimmed().isEmpty() && low - 1e-9 <= number && number <= high + 1e-9;
}

void slice(const QString& field, const TCSProItem& item, Sliced& sliced)
{
    ++sliced.rows;
    if (field.trimmed().isEmpty()) {
        ++sliced.blank;
        return;
    }
    double number = 0;
    if (item.isAlpha == 0 && !numberOf(field, item, number)) {
        ++sliced.notANumber;
        return;
    }
    const TCSProValueSet* set = item.getHasValueSet() ? item.getValueSet(0) : nullptr;
    bool hasCodes = false;
    for (const TValueSetItem* entry : set ? *set->items : QList<TValueSetItem*>()) {
        const bool isBlank = entry->code.trimmed().isEmpty();
        hasCodes = hasCodes || (!isBlank && !entry->special);
        const bool isFound = item.isAlpha == 0 ? fits(*set, *entry, number)
                                               : !isBlank
                && QString(entry->code + QString(99, QLatin1Char(' '))).leftRef(99)
                    == QString(field + QString(99, QLatin1Char(' '))).leftRef(99);
        if (!isFound)
            continue;
        if (entry->special)
            ++sliced.special;
        else
            sliced.sum += number;
        return;
    }
    sliced.sum += number;
    sliced.outside += hasCodes ? 1 : 0;
}

CheckReport checked(DataSource& source)
{
    Checker checker(source.dictionary());
    runPipeline(source, checker);
    return checker.report();
}

QStringList rowsOf(DataSource& source)
{
    RowCollector rows(source.dictionary());
    runPipeline(source, rows);
    return rows.rows;
}

QString valueOf(sqlite3* database, const QString& sql)
{
    sqlite3_stmt* statement = nullptr;
    const QByteArray bytes = sql.toUtf8();
    if (sqlite3_prepare_v2(database, bytes.constData(), -1, &statement, nullptr) != SQLITE_OK)
        qFatal("%s: %s", bytes.constData(), sqlite3_errmsg(database));
    QString value;
    while (sqlite3_step(statement) == SQLITE_ROW) {
        value +=
            QString::fromUtf8(reinterpret_cast<const char*>(sqlite3_column_text(statement, 0)));
    }
    sqlite3_finalize(statement);
    return value;
}

} // namespace

class TestDataCorpus : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void text_data();
    void text();
    void census();
    void schema2_data();
    void schema2();
    void schema3_data();
    void schema3();
    void statFiles_data();
    void statFiles();
};

void TestDataCorpus::initTestCase()
{
    if (qEnvironmentVariableIsEmpty("TESSEL_CORPUS"))
        QSKIP("TESSEL_CORPUS names no folder with real files");
}

void TestDataCorpus::text_data()
{
    QTest::addColumn<QString>("base");
    for (const QString& folder : { QStringLiteral("cspro"), QStringLiteral("cspro-json") }) {
        const QDir dir(corpus(folder));
        for (const QString& name : dir.entryList({ QStringLiteral("*.dat") })) {
            const QString base = folder + QLatin1Char('/') + name.chopped(4);
            QTest::newRow(qPrintable(base)) << corpus(base);
        }
    }
    QTest::newRow("example") << QStringLiteral(TESSEL_EXAMPLES "/census");
}

void TestDataCorpus::text()
{
    QFETCH(QString, base);
    TCSPro layout;
    layout.setReading(CSProReading::AsWritten);
    layout.loadFromFile(base + QStringLiteral(".dcf"));
    QFile file(base + QStringLiteral(".dat"));
    QVERIFY(file.open(QIODevice::ReadOnly));
    QString text = QString::fromUtf8(file.readAll());
    QStringList lines = text.remove(QLatin1Char('\r')).split(QLatin1Char('\n'));
    lines.removeAll(QString());

    QMap<QString, Sliced> expected; // by "RECORD.ITEM"
    QMap<QString, qint64> records;
    int cases = 0;
    QString before;
    for (const QString& line : qAsConst(lines)) {
        const QString type = line.mid(layout.recordTypeStart - 1, layout.recordTypeLen);
        const TCSProRecord* record = layout.recordTypeLen > 0
            ? layout.findRecordByValue(type.trimmed())
            : layout.getRecord(0);
        QVERIFY2(record, qPrintable(line));
        ++records[record->name];
        QString key;
        for (int i = 0; i < layout.getItemsCount(); ++i) {
            const TCSProItem& item = *layout.getItem(i);
            const bool isId =
                item.record == layout.commonRecord && item.detail().level <= record->level;
            if (isId && item.detail().level == 1)
                key += line.mid(item.start - 1, item.len) + QLatin1Char('/');
            if (isId || item.record == record)
                slice(line.mid(item.start - 1, item.len), item,
                    expected[record->name + QLatin1Char('.') + item.name]);
        }
        cases += key != before || key.isEmpty() ? 1 : 0;
        before = key;
    }

    CSProTextSource source(
        DataDictionary::fromFile(base + QStringLiteral(".dcf")), { base + QStringLiteral(".dat") });
    const DataDictionary& dictionary = source.dictionary();
    const CheckReport report = checked(source);
    QVERIFY(report.addsUp);
    QCOMPARE(report.counts.records, qint64(lines.size()));
    QCOMPARE(report.counts.rejectedLines, 0LL);
    QCOMPARE(report.counts.cases, qint64(cases));
    int columns = 0;
    for (const ColumnReport& column : report.columns) {
        const DataRecord& record = dictionary.records[std::size_t(column.record)];
        const DataVariable& variable = dictionary.variables[std::size_t(column.variable)];
        QCOMPARE(report.recordCounts[std::size_t(column.record)], records.value(record.name));
        const QString name = record.name + QLatin1Char('.') + variable.name;
        const Sliced sliced = expected.value(name);
        columns += expected.contains(name) ? 1 : 0;
        const QByteArray where = name.toUtf8();
        QVERIFY2(column.rows == sliced.rows, where.constData());
        QVERIFY2(column.notANumber + column.unfit == sliced.notANumber, where.constData());
        QVERIFY2(column.outside == sliced.outside, where.constData());
        QVERIFY2(
            column.blank + column.missing + column.notApplicable + column.refused + column.defaults
                == sliced.blank + sliced.special,
            where.constData());
        if (column.hasNumbers) {
            const double sum = column.mean * double(column.values);
            QVERIFY2(std::abs(sum - sliced.sum) <= 1e-9 * (1 + std::abs(sum)), where.constData());
        }
    }
    QCOMPARE(columns, expected.size());
}

void TestDataCorpus::census()
{
    const QString base = corpus(QStringLiteral("cspro-json/popstan-census-full"));
    CSProTextSource source(
        DataDictionary::fromFile(base + QStringLiteral(".dcf")), { base + QStringLiteral(".dat") });
    const CheckReport report = checked(source);
    QMap<QString, qint64> outside;
    for (const ColumnReport& column : report.columns) {
        if (column.outside > 0)
            outside.insert(
                source.dictionary().variables[std::size_t(column.variable)].name, column.outside);
    }
    QCOMPARE(outside,
        (QMap<QString, qint64> {
            { QStringLiteral("P16_IND"), 8313 }, { QStringLiteral("P15_OCC"), 691 } }));
    QCOMPARE(report.recordCounts, (std::vector<qint64> { 24'271, 4872 }));
    QCOMPARE(report.counts.cases, 4872LL);
    QVERIFY(report.isClean());
    QVERIFY(!report.isClean(true));
}

void TestDataCorpus::schema2_data()
{
    QTest::addColumn<QString>("path");
    for (const char* name : { "industry-codes-7.2", "occupation-isco-7.1" })
        QTest::newRow(name) << corpus(QStringLiteral("csdb/%1.csdb").arg(QLatin1String(name)));
}

// The cases of the file, cut out into text, say the same.
void TestDataCorpus::schema2()
{
    QFETCH(QString, path);
    sqlite3* database = nullptr;
    sqlite3_open_v2(path.toUtf8().constData(), &database, SQLITE_OPEN_READONLY, nullptr);
    const QString dictionary = valueOf(database, QStringLiteral("SELECT dictionary FROM meta"));
    const QString text = valueOf(database,
        QStringLiteral("SELECT questionnaire FROM cases WHERE deleted = 0 ORDER BY file_order"));
    sqlite3_close(database);
    const QTemporaryDir folder;
    CSProTextSource cut(DataDictionary::fromBytes(dictionary.toUtf8(), path),
        { writeFile(folder, QStringLiteral("cut.dat"), text.toUtf8()) });
    CSProDbSource source(path);
    QCOMPARE(source.schemaVersion(), 2);
    const auto withoutPlace = [](QStringList rows) {
        for (QString& row : rows)
            row.remove(0, row.indexOf(QLatin1Char(':')));
        return rows;
    };
    const QStringList rows = withoutPlace(rowsOf(source));
    QVERIFY(rows.size() > 200);
    QCOMPARE(rows, withoutPlace(rowsOf(cut)));
    QCOMPARE(source.counts().records, cut.counts().records);
    QCOMPARE(source.counts().cases, cut.counts().cases);
}

void TestDataCorpus::schema3_data()
{
    QTest::addColumn<QString>("path");
    for (const char* name :
        { "popstan-geocodes-8.0", "popstan-household-8.0", "popstan-lfs-sample-7.4" })
        QTest::newRow(name) << corpus(QStringLiteral("csdb/%1.csdb").arg(QLatin1String(name)));
}

// Against what SQLite itself counts in each column.
void TestDataCorpus::schema3()
{
    QFETCH(QString, path);
    CSProDbSource source(path);
    QCOMPARE(source.schemaVersion(), 3);
    const CheckReport report = checked(source);
    QVERIFY(report.addsUp);
    sqlite3* database = nullptr;
    sqlite3_open_v2(path.toUtf8().constData(), &database, SQLITE_OPEN_READONLY, nullptr);
    QCOMPARE(report.counts.cases,
        valueOf(database, QStringLiteral("SELECT count(*) FROM cases WHERE deleted = 0"))
            .toLongLong());
    QCOMPARE(report.counts.partlySavedCases,
        valueOf(database,
            QStringLiteral("SELECT count(*) FROM cases WHERE deleted = 0 AND partial_save_mode IS "
                           "NOT NULL"))
            .toLongLong());
    for (const ColumnReport& column : report.columns) {
        const DataRecord& record = source.dictionary().records[std::size_t(column.record)];
        const DataVariable& variable = source.dictionary().variables[std::size_t(column.variable)];
        if (variable.record < 0)
            continue;
        QString name = variable.itemName.toLower();
        if (variable.occurrence > 0)
            name += QStringLiteral("(%1)").arg(variable.occurrence);
        const QString join = QStringLiteral(
            " FROM `%1` r JOIN `level-1` l ON l.`level-1-id` = r.`level-1-id` JOIN cases c "
            "ON c.id = l.`case-id` WHERE c.deleted = 0")
                                 .arg(record.name.toLower());
        QCOMPARE(QString::number(column.rows), valueOf(database, "SELECT count(*)" + join));
        const QString field = QStringLiteral("r.`%1`").arg(name);
        const QString blank = valueOf(database,
            QStringLiteral("SELECT count(*)%1 AND (%2 IS NULL OR trim(%2) = '')").arg(join, field));
        const qint64 filled = column.values + column.notANumber + column.unfit;
        QVERIFY(column.rows - filled >= blank.toLongLong()); // special codes are no values
        if (column.hasNumbers && column.missing + column.refused == 0) {
            const double mean =
                valueOf(database, QStringLiteral("SELECT avg(%2)%1").arg(join, field)).toDouble();
            QVERIFY2(std::abs(mean - column.mean) <= 1e-9 * std::max(1.0, std::abs(mean)),
                qPrintable(name));
        }
    }
    sqlite3_close(database);
    QVERIFY(!QFile::exists(path + QStringLiteral("-journal")));
    QVERIFY(!QFile::exists(path + QStringLiteral("-wal")));
}

void TestDataCorpus::statFiles_data()
{
    QTest::addColumn<QString>("path");
    for (const QString& folder : { QStringLiteral("sav"), QStringLiteral("dta") }) {
        const QDir dir(corpus(folder));
        for (const QString& name : dir.entryList(QDir::Files))
            QTest::newRow(qPrintable(name)) << dir.filePath(name);
    }
}

void TestDataCorpus::statFiles()
{
    QFETCH(QString, path);
    const auto kind =
        path.endsWith(QLatin1String(".dta")) ? TStatFileKind::Stata : TStatFileKind::Spss;
    const bool isWhole = readStatDescription(path, kind).isWhole();
    try {
        StatSource source(path, kind);
        const CheckReport report = checked(source);
        QVERIFY(isWhole);
        QVERIFY(report.addsUp);
        if (source.size() >= 0 && !source.dictionary().variables.empty())
            QCOMPARE(report.counts.records, source.size());
    } catch (const DataError& error) {
        QVERIFY(!error.text.isEmpty());
    }
}

QTEST_GUILESS_MAIN(TestDataCorpus)
#include "tst_DataCorpus.moc"
