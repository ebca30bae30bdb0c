// Has Python read the CSV files that "tessel convert" made as their datapackage.json says, and
// compares them with a slice of their own.
#include "ComparedRecords.h"
#include "RunTessel.h"
#include "StatFiles.h"
#include "StatContents.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtTest>

namespace {

bool hasPython()
{
    return !QStandardPaths::findExecutable("python3").isEmpty();
}

QString specialOf(const TValueSetItem& entry)
{
    static const QStringList names { "", "missing", "not applicable", "refused", "default" };
    return entry.special ? names.value(entry.type) : QString();
}

QString withoutNull(const QString& text)
{
    return QString(text).replace(QChar(0), QChar(0x2400));
}

QByteArray oneItem(const QByteArray& more, int length = 6)
{
    return "[Dictionary]\nVersion=CSPro 7.7\nLabel=Made\nName=MADE\nRecordTypeStart=0\n"
           "RecordTypeLen=0\nPositions=Absolute\nZeroFill=No\nDecimalChar=No\n\n[Level]\n"
           "Label=Level\nName=LEVEL\n\n[IdItems]\n\n[Record]\nLabel=R\nName=R\n"
           "RecordTypeValue=''\nRecordLen=9\n\n[Item]\nLabel=N\nName=N\nStart=1\nLen="
        + QByteArray::number(length) + "\n" + more + "\n";
}

} // namespace

class tst_ConvertCsv : public QObject {
    Q_OBJECT

private slots:
    void init();
    void everyCell_data();
    void everyCell();
    void valueSetsAreWhole_data();
    void valueSetsAreWhole();
    void labels();
    void labelsThatMeanSeveral();
    void valuesLikeLabels();
    void labelsOfKinds();
    void labelLikeMissingValue();
    void statFiles_data();
    void statFiles();
    void dbs_data();
    void dbs();
    void numbers();
    void texts();
    void oneEmptyCell();
    void spreadsheet();
    void categoriesFollowTheData();
    void openSetsHaveNoCategories();
    void spreadsheetCodes();
    void blankIdentificationIsNoKey_data();
    void blankIdentificationIsNoKey();
    void infiniteNumbers();
    void datesStayNumbers();
    void missingKinds();
    void manyColumns();
    void nothingIsLeftBehind();
    void usage_data();
    void usage();

private:
    QString path(const QString& name) const
    {
        return m_folder->filePath("out/" + name);
    }
    Outcome convert(const QStringList& sources, const QStringList& more = {}) const
    {
        return runTessel(QStringList { "convert" } + sources
            + QStringList { "--to", "csv", "-o", m_folder->filePath("out") } + more);
    }
    ReadRecords readBack();
    QJsonObject package() const
    {
        return QJsonDocument::fromJson(readFile(path("datapackage.json"))).object();
    }
    QJsonObject field(const QString& name, int resource = 0) const;
    QByteArray convertItem(const QByteArray& item, const QByteArray& data,
        const QStringList& more = {}, int length = 6);

    QScopedPointer<QTemporaryDir> m_folder;
    QByteArray m_errors; // of Python
};

void tst_ConvertCsv::init()
{
    m_folder.reset(new QTemporaryDir);
}

ReadRecords tst_ConvertCsv::readBack()
{
    const Outcome outcome =
        runProgram("python3", { TESSEL_TEST_DATA "/check_package.py", m_folder->filePath("out") });
    m_errors = outcome.errors;
    return parsedRecords(outcome.output);
}

QJsonObject tst_ConvertCsv::field(const QString& name, int resource) const
{
    const QJsonObject schema =
        package().value("resources").toArray().at(resource).toObject().value("schema").toObject();
    for (const QJsonValue& value : schema.value("fields").toArray()) {
        if (value.toObject().value("name") == name)
            return value.toObject();
    }
    return {};
}

// The CSV file of a record R without a header, of lines that one item describes.
QByteArray tst_ConvertCsv::convertItem(
    const QByteArray& item, const QByteArray& data, const QStringList& more, int length)
{
    const QString dictionary = m_folder->filePath("d.dcf");
    const QString file = m_folder->filePath("d.dat");
    if (!writeFile(dictionary, oneItem(item, length)) || !writeFile(file, data))
        return "cannot be written";
    const Outcome outcome = convert({ dictionary, file }, more + QStringList { "--overwrite" });
    if (outcome.status != 0)
        return outcome.errors;
    const QByteArray csv = readFile(path("R.csv"));
    return csv.mid(csv.indexOf('\n') + 1);
}

void tst_ConvertCsv::everyCell_data()
{
    addPairs();
}

void tst_ConvertCsv::everyCell()
{
    QFETCH(QString, base);
    if (!hasPython())
        QSKIP("python3 is not installed");
    const Outcome outcome = convert({ base + ".dcf", base + ".dat" });
    QVERIFY2(outcome.status == 0, outcome.errors.constData());
    const ReadRecords found = readBack();
    QVERIFY2(m_errors.isEmpty(), m_errors.constData());
    const Slice slice(base + ".dcf", base + ".dat");
    TCSPro reader;
    reader.setReading(CSProReading::AsWritten);
    reader.loadFromFile(base + ".dcf");
    int rows = 0;
    for (const TCSProRecord* record : qAsConst(*reader.records)) {
        const auto items = itemsOf(reader, *record);
        const ReadRecord& read = found[record->name];
        QCOMPARE(read.columns.size(), items.size());
        QVector<QStringList> expected;
        for (QStringList row : slice.rowsOf(record->name)) {
            row = row.mid(2);
            for (int i = 0; i < items.size(); ++i) {
                if (!items.at(i)->detail().contentType.isEmpty())
                    row[i].clear(); // text does not hold it
            }
            expected.append(row);
        }
        expected = sameRows(expected);
        const auto rowsRead = sameRows(read.rows);
        QCOMPARE(rowsRead.size(), expected.size());
        for (int i = 0; i < expected.size(); ++i)
            QCOMPARE(rowsRead.at(i), expected.at(i));
        for (int i = 0; i < items.size(); ++i) {
            const ReadColumn& column = read.columns.at(i);
            QCOMPARE(column.name, items.at(i)->name);
            QCOMPARE(column.label, fullLabelOf(*items.at(i)));
            QCOMPARE(missingOf(column), expectedOf(*items.at(i), false).missing);
        }
        rows += read.rows.size();
    }
    QVERIFY(rows > 0);
}

void tst_ConvertCsv::valueSetsAreWhole_data()
{
    addPairs();
}

// Each set as the dictionary has it: ranges, special values, further sets.
void tst_ConvertCsv::valueSetsAreWhole()
{
    QFETCH(QString, base);
    QCOMPARE(convert({ base + ".dcf", base + ".dat" }).status, 0);
    QHash<QString, QJsonArray> sets;
    for (const QJsonValue& set : package().value("tessel:valueSets").toArray()) {
        sets.insert(
            set.toObject().value("name").toString(), set.toObject().value("values").toArray());
    }
    TCSPro reader;
    reader.setReading(CSProReading::AsWritten);
    reader.loadFromFile(base + ".dcf");
    int resource = -1;
    for (const TCSProRecord* record : qAsConst(*reader.records)) {
        const auto items = itemsOf(reader, *record);
        resource += items.isEmpty() ? 0 : 1;
        for (const TCSProItem* item : items) {
            const QJsonArray names =
                field(item->name, resource).value("tessel:valueSets").toArray();
            QCOMPARE(names.size(), item->valueSets->size());
            for (int i = 0; i < names.size(); ++i) {
                const TCSProValueSet& set = *item->getValueSet(i);
                QJsonArray expected;
                for (const TValueSetItem* entry : qAsConst(*set.items)) {
                    QJsonObject value { { "value", entry->code } };
                    if (!set.detail(entry).highCode.isNull())
                        value.insert("to", set.detail(entry).highCode);
                    const QString label = labelText(reader, entry->label);
                    if (!label.isEmpty())
                        value.insert("label", withoutNull(label));
                    if (!specialOf(*entry).isEmpty())
                        value.insert("special", specialOf(*entry));
                    expected.append(value);
                }
                QCOMPARE(sets.value(names.at(i).toString()), expected);
            }
        }
    }
    QVERIFY(resource >= 0);
}

void tst_ConvertCsv::labels()
{
    if (!hasPython())
        QSKIP("python3 is not installed");
    const QString base = TESSEL_EXAMPLES "/census";
    QCOMPARE(convert({ base + ".dcf", base + ".dat" }, { "--labels" }).status, 0);
    const ReadRecords found = readBack();
    QVERIFY2(m_errors.isEmpty(), m_errors.constData());
    const Slice slice(base + ".dcf", base + ".dat");
    for (const QString& record : slice.recordNames()) {
        QVector<QStringList> expected;
        for (const QStringList& row : slice.labelRowsOf(record))
            expected.append(row.mid(2));
        const auto rows = sameRows(found[record].rows);
        expected = sameRows(expected);
        QCOMPARE(rows.size(), expected.size());
        for (int i = 0; i < rows.size(); ++i)
            QCOMPARE(rows.at(i), expected.at(i));
    }
    QCOMPARE(field("SEX", 1).value("type").toString(), QString("string"));
}

// No cell of a missing value reads like one of another value, and no code like a label.
void tst_ConvertCsv::labelsThatMeanSeveral()
{
    if (!hasPython())
        QSKIP("python3 is not installed");
    const QByteArray set = "\n[ValueSet]\nLabel=S\nName=S\nValue=1;Yes\nValue=2;Yes\nValue=3;None\n"
                           "Value=4;5\nValue=5;\nValue=8;Gone\nName=MISSING,Special\n"
                           "Value=9;None\nName=MISSING,Special\nValue=90:99;Gone\n"
                           "Name=MISSING,Special\n";
    const QByteArray lines = "     1\n     2\n     3\n     4\n     5\n     8\n     9\n    95\n";
    QCOMPARE(convertItem(set, lines, { "--labels" }),
        QByteArray("Yes\r\nYes\r\n3\r\n4\r\n5\r\nGone\r\n9\r\nGone\r\n"));
    QStringList missing;
    for (const QJsonValue& value : field("N").value("missingValues").toArray())
        missing.append(value.toObject().value("value").toString());
    QCOMPARE(missing, (QStringList { "", "Gone", "9" }));
    readBack();
    QVERIFY2(m_errors.isEmpty(), m_errors.constData());
    const QStringList sources { m_folder->filePath("d.dcf"), m_folder->filePath("d.dat") };
    const Outcome plan = convert(sources, { "--labels", "--plan" });
    for (const char* line : { "changed: R.csv N label \"None\" of 3, 9 left out: missing and other "
                              "codes share it\n",
             "changed: R.csv N label \"5\" of 4 left out: it reads like a code without label\n",
             "changed: R.csv N all of 1, 2 become \"Yes\"\n",
             "changed: R.csv N all of 8, 90:99 become \"Gone\"\n" })
        QVERIFY2(plan.output.contains(line), plan.output.constData());
    const Outcome strict = convert(sources, { "--labels", "--strict", "--overwrite" });
    QCOMPARE(strict.status, 1);
    QVERIFY2(strict.errors.contains("plan: error: 2 labels stand for several values"),
        strict.errors.constData());
    QCOMPARE(convert(sources, { "--strict", "--overwrite" }).status, 0);
}

// What only the data show is counted.
void tst_ConvertCsv::valuesLikeLabels()
{
    const QByteArray set = "\n[ValueSet]\nLabel=S\nName=S\nValue=1;7\nValue=2;Two\n";
    const QByteArray lines = "     1\n     7\n     8\n";
    QCOMPARE(convertItem(set, lines, { "--labels" }), QByteArray("7\r\n7\r\n8\r\n"));
    QVERIFY2(convertItem(set, lines, { "--labels", "--strict" })
                 .contains("R.csv: error: N: 1 value without label reads like the label of a code"),
        "it is not told");
    const QByteArray texts = "DataType=Alpha\n\n[ValueSet]\nLabel=S\nName=S\nValue='a';b\n";
    QVERIFY2(convertItem(texts, "a\nb\n", { "--labels", "--strict" }, 2)
                 .contains("N: 1 value without label reads like the label of a code"),
        "it is not told");
    QCOMPARE(convertItem(texts, "a\nc\n", { "--labels", "--strict" }, 2), QByteArray("b\r\nc\r\n"));
}

void tst_ConvertCsv::labelsOfKinds()
{
    StatFileWriter writer;
    readstat_label_set_t* const labels = writer.addLabels("labels0", READSTAT_TYPE_INT32);
    readstat_label_int32_value(labels, 1, "Unknown");
    readstat_label_int32_value(labels, 2, ".b");
    readstat_label_tagged_value(labels, 'a', "Unknown");
    readstat_label_tagged_value(labels, 'c', "Gone");
    writer.add("N", READSTAT_TYPE_DOUBLE, "%9.0g", labels);
    writer.setNumber(2);
    const QString file = m_folder->filePath("kinds.dta");
    QVERIFY(writer.write(file, TStatFileKind::Stata, 1));
    const Outcome outcome = convert({ file }, { "--labels", "--plan" });
    QVERIFY2(
        outcome.output.contains("label \"Unknown\" of 1, .a left out"), outcome.output.constData());
    QVERIFY2(outcome.output.contains("label \".b\" of 2 left out"), outcome.output.constData());
    QCOMPARE(convert({ file }, { "--labels" }).status, 0);
    QCOMPARE(readFile(path("kinds.csv")), QByteArray("N\r\n2\r\n"));
    QStringList missing;
    for (const QJsonValue& value : field("N").value("missingValues").toArray())
        missing.append(value.toObject().value("value").toString());
    QCOMPARE(missing.mid(0, 3), (QStringList { "", ".a", "Gone" }));
    QCOMPARE(missing.size(), 27);
}

// That of the file has no label, and would be taken for it.
void tst_ConvertCsv::labelLikeMissingValue()
{
    StatFileWriter writer;
    readstat_label_set_t* const labels = writer.addLabels("labels0", READSTAT_TYPE_DOUBLE);
    readstat_label_double_value(labels, 1, "9");
    readstat_label_double_value(labels, 2, "10");
    readstat_variable_t* const number = writer.add("N", READSTAT_TYPE_DOUBLE, "F8.2", labels);
    readstat_variable_add_missing_double_value(number, 9);
    writer.setNumber(1);
    const QString file = m_folder->filePath("missing.sav");
    QVERIFY(writer.write(file, TStatFileKind::Spss, 1));
    const Outcome outcome = convert({ file }, { "--labels", "--plan" });
    QVERIFY2(
        outcome.output.contains("label \"9\" of 1 left out: it reads like a code without label"),
        outcome.output.constData());
    QVERIFY2(!outcome.output.contains("\"10\""), outcome.output.constData());
    QCOMPARE(convert({ file }, { "--labels" }).status, 0);
    QCOMPARE(readFile(path("missing.csv")), QByteArray("N\r\n1\r\n"));
}

void tst_ConvertCsv::statFiles_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QString>("csv");
    const QDir examples(QStringLiteral(TESSEL_EXAMPLES));
    for (const char* name : { "household.sav", "person.sav", "household.dta", "person.dta" }) {
        QTest::newRow(name) << examples.filePath(QString::fromLatin1(name))
                            << QString::fromLatin1(name).section('.', 0, 0) + ".csv";
    }
    if (!qEnvironmentVariableIsSet("TESSEL_CORPUS"))
        return;
    for (const char* kind : { "sav", "dta" }) {
        const QDir folder(qEnvironmentVariable("TESSEL_CORPUS") + '/' + QString::fromLatin1(kind));
        for (const QString& name : folder.entryList({ "*.sav", "*.zsav", "*.dta" }))
            QTest::newRow(qPrintable(name))
                << folder.filePath(name) << QFileInfo(name).completeBaseName() + ".csv";
    }
}

void tst_ConvertCsv::statFiles()
{
    QFETCH(QString, file);
    QFETCH(QString, csv);
    if (!hasPython())
        QSKIP("python3 is not installed");
    const Outcome outcome = convert({ file });
    const StatContents contents = StatContents::read(file);
    QCOMPARE(outcome.status, contents.error == 0 ? 0 : 1);
    QCOMPARE(QFile::exists(path(csv)), contents.error == 0);
    if (contents.error != 0)
        return; // encrypted or damaged
    const ReadRecords found = readBack();
    QVERIFY2(m_errors.isEmpty(), m_errors.constData());
    QCOMPARE(found.size(), 1);
    const ReadRecord record = *found.begin();
    QCOMPARE(sameRows(record.rows), sameRows(contents.rows));
    QCOMPARE(record.columns.size(), contents.variables.size());
    for (int i = 0; i < record.columns.size(); ++i) {
        QCOMPARE(record.columns.at(i).name, contents.variables.at(i).name);
        QCOMPARE(record.columns.at(i).label, contents.variables.at(i).label);
        QCOMPARE(field(contents.variables.at(i).name).value("tessel:format").toString(),
            contents.variables.at(i).format);
        QSet<QString> missing = missingOf(record.columns.at(i));
        for (const QString& value : contents.variables.at(i).missing) {
            const bool isListed = value.isEmpty() || value.contains(':')
                ? true // blanks are missing anyway, and ranges are not listed one by one
                : missing.contains(sameCell(value));
            QVERIFY2(isListed, qPrintable(value));
        }
    }
}

void tst_ConvertCsv::dbs_data()
{
    QTest::addColumn<QString>("file");
    QTest::newRow("schema 2") << QString(TESSEL_TEST_DATA "/levels_schema2.csdb");
    QTest::newRow("schema 3") << QString(TESSEL_TEST_DATA "/levels_schema3.csdb");
}

// The cases of both stand as text in a file, too.
void tst_ConvertCsv::dbs()
{
    QFETCH(QString, file);
    if (!hasPython())
        QSKIP("python3 is not installed");
    const QByteArray script = "import sqlite3, sys\n"
                              "sys.stdout.write(sqlite3.connect('file:' + sys.argv[1] + "
                              "'?mode=ro', uri=True).execute("
                              "'SELECT dictionary FROM meta').fetchone()[0])\n";
    const QString dictionary = m_folder->filePath("d.dcf");
    QVERIFY(writeFile(dictionary, runProgram("python3", { "-c", script, file }).output));
    const Outcome outcome = convert({ file });
    QVERIFY2(outcome.status == 0, outcome.errors.constData());
    const ReadRecords found = readBack();
    QVERIFY2(m_errors.isEmpty(), m_errors.constData());
    QVERIFY(!found.isEmpty());
    const QString lines = QStringLiteral(TESSEL_TEST_DATA "/data_levels.dat");
    const Outcome text = runTessel(
        { "convert", dictionary, lines, "--to", "csv", "-o", m_folder->filePath("text") });
    QVERIFY2(text.status == 0, text.errors.constData());
    for (const QString& name : QDir(path("")).entryList({ "*.csv" }))
        QCOMPARE(readFile(path(name)), readFile(m_folder->filePath("text/" + name)));
}

void tst_ConvertCsv::numbers()
{
    QCOMPARE(convertItem("Decimal=2\n", "  1234\n    -5\n   1.5\n 12,25\n-    7\n     0\n     x\n"),
        QByteArray("12.34\r\n-0.05\r\n1.50\r\n12.25\r\n-0.07\r\n0.00\r\n\"\"\r\n"));
    QCOMPARE(field("N").value("type").toString(), QString("number"));
    QCOMPARE(convertItem("", "000007\n -0012\n"), QByteArray("7\r\n-12\r\n"));
    QCOMPARE(field("N").value("type").toString(), QString("integer"));
    QCOMPARE(convertItem("", "00012345678901234567890\n", {}, 23),
        QByteArray("12345678901234567890\r\n"));
    QCOMPARE(convertItem("Decimal=3\n", "  -12345678901234567890\n                     .5", {}, 23),
        QByteArray("-12345678901234567.890\r\n0.500\r\n"));
}

void tst_ConvertCsv::texts()
{
    const QByteArray line = "a,\"b\" \xE2\x90\xA4 c\n plain\n=1+1\n\xC3\xA9\n";
    QCOMPARE(convertItem("DataType=Alpha\n", line, {}, 20),
        QByteArray("\"a,\"\"b\"\" \n c\"\r\n plain\r\n=1+1\r\n\xC3\xA9\r\n"));
    const QString dictionary = m_folder->filePath("d.dcf");
    const Outcome outcome = [&] {
        writeFile(m_folder->filePath("d.dat"), QByteArray("a\0b\n", 4));
        return convert({ dictionary, m_folder->filePath("d.dat") }, { "--overwrite" });
    }();
    QVERIFY2(outcome.errors.contains("null character"), outcome.errors.constData());
    QVERIFY(readFile(path("R.csv"))
                .contains("a\xE2\x90\x80"
                          "b\r\n"));
    const QByteArray large(30'000, 'x');
    QCOMPARE(convertItem("DataType=Alpha\n", large + '\n', {}, 30'000), large + "\r\n");
}

// An empty line would be no row.
void tst_ConvertCsv::oneEmptyCell()
{
    if (!hasPython())
        QSKIP("python3 is not installed");
    QCOMPARE(convertItem("", "     1\n~\n     x\n     2\n"), QByteArray("1\r\n\"\"\r\n2\r\n"));
    QCOMPARE(readBack().value("R").rows.size(), 3);
    QVERIFY2(m_errors.isEmpty(), m_errors.constData());
}

void tst_ConvertCsv::spreadsheet()
{
    const QByteArray lines = "=1+1\n+5\n-5.5\n-x\n@a\n\xEF\xBC\x9D"
                             "1\n\"=\n";
    const QByteArray csv = convertItem("DataType=Alpha\n", lines, { "--spreadsheet" }, 8);
    QCOMPARE(csv,
        QByteArray("'=1+1\r\n'+5\r\n-5.5\r\n'-x\r\n'@a\r\n'\xEF\xBC\x9D"
                   "1\r\n\"\"\"=\"\r\n"));
    QVERIFY(readFile(path("R.csv")).startsWith("\xEF\xBB\xBFN\r\n"));
    if (hasPython())
        readBack();
    QVERIFY2(m_errors.isEmpty(), m_errors.constData());
}

// Data that leave their value set have no categories, as these are all values there are.
void tst_ConvertCsv::categoriesFollowTheData()
{
    const QByteArray set = "\n[ValueSet]\nLabel=S\nName=S\nValue=1;One\nValue=2;Two\nValue=9;None\n"
                           "Name=MISSING,Special\n";
    convertItem(set, "     1\n     9\n      \n");
    QCOMPARE(field("N").value("categories").toArray(),
        (QJsonArray { QJsonObject { { "value", 1 }, { "label", "One" } },
            QJsonObject { { "value", 2 }, { "label", "Two" } } }));
    QCOMPARE(field("N").value("missingValues").toArray(),
        (QJsonArray { QJsonObject { { "value", "" } },
            QJsonObject { { "value", "9" }, { "label", "None" } } }));
    convertItem(set, "     1\n     3\n");
    QVERIFY(!field("N").contains("categories"));
    QVERIFY(field("N").contains("tessel:valueSets"));
    QCOMPARE(convertItem(set, "     1\n     3\n     9\n", { "--labels" }),
        QByteArray("One\r\n3\r\nNone\r\n"));
    QCOMPARE(field("N").value("missingValues").toArray().at(1).toObject().value("value").toString(),
        QString("None"));
}

// A label of one value beside a missing one does not say which values there are.
void tst_ConvertCsv::openSetsHaveNoCategories()
{
    if (!hasPython())
        QSKIP("python3 is not installed");
    StatFileWriter writer;
    readstat_label_set_t* const labels = writer.addLabels("labels0", READSTAT_TYPE_STRING);
    readstat_label_string_value(labels, "a", "One");
    readstat_variable_t* const variable = writer.add("T", READSTAT_TYPE_STRING, "A4", labels, 4);
    readstat_variable_add_missing_string_value(variable, "zz");
    writer.setFirstText("c");
    const QString file = m_folder->filePath("open.sav");
    QVERIFY(writer.write(file, TStatFileKind::Spss, 2));
    const Outcome outcome = convert({ file });
    QVERIFY2(outcome.status == 0, outcome.errors.constData());
    QVERIFY(!field("T").contains("categories"));
    QVERIFY(field("T").contains("missingValues"));
    readBack();
    QVERIFY2(m_errors.isEmpty(), m_errors.constData());
}

// The description names values as their cells have them.
void tst_ConvertCsv::spreadsheetCodes()
{
    if (!hasPython())
        QSKIP("python3 is not installed");
    const QByteArray set = "DataType=Alpha\n\n[ValueSet]\nLabel=S\nName=S\nValue='=1';=One\n"
                           "Value='b';Two\nValue='@x';-None\nName=MISSING,Special\n";
    QCOMPARE(
        convertItem(set, "=1\nb\n@x\n", { "--spreadsheet" }, 2), QByteArray("'=1\r\nb\r\n'@x\r\n"));
    const auto valueAt = [this](const char* list, int place) {
        return field("N")
            .value(QLatin1String(list))
            .toArray()
            .at(place)
            .toObject()
            .value("value")
            .toString();
    };
    QCOMPARE(valueAt("categories", 0), QString("'=1"));
    QCOMPARE(valueAt("missingValues", 1), QString("'@x"));
    readBack();
    QVERIFY2(m_errors.isEmpty(), m_errors.constData());
    QCOMPARE(convertItem(set, "=1\nb\n@x\n", { "--spreadsheet", "--labels" }, 2),
        QByteArray("'=One\r\nTwo\r\n'-None\r\n"));
    QCOMPARE(valueAt("categories", 0), QString("'=One"));
    QCOMPARE(valueAt("missingValues", 1), QString("'-None"));
    readBack();
    QVERIFY2(m_errors.isEmpty(), m_errors.constData());
}

void tst_ConvertCsv::blankIdentificationIsNoKey_data()
{
    QTest::addColumn<QByteArray>("data");
    QTest::addColumn<bool>("isKey");
    QTest::newRow("whole") << QByteArray("1  1\n2  2\n") << true;
    QTest::newRow("blank") << QByteArray("1  1\n   2\n") << false;
    QTest::newRow("missing") << QByteArray("1  1\n9  2\n") << false;
}

void tst_ConvertCsv::blankIdentificationIsNoKey()
{
    QFETCH(QByteArray, data);
    QFETCH(bool, isKey);
    if (!hasPython())
        QSKIP("python3 is not installed");
    QByteArray text = oneItem("", 3);
    text.replace("[Item]\nLabel=N\nName=N\nStart=1", "[Item]\nLabel=N\nName=N\nStart=2");
    text.replace("[IdItems]\n",
        "[IdItems]\n\n[Item]\nLabel=I\nName=I\nStart=1\nLen=1\n\n[ValueSet]\nLabel=V\nName=V\n"
        "Value=1:8;Known\nValue=9;None\nName=MISSING,Special\n");
    const QString dictionary = m_folder->filePath("d.dcf");
    const QString file = m_folder->filePath("d.dat");
    QVERIFY(writeFile(dictionary, text));
    QVERIFY(writeFile(file, data));
    const Outcome outcome = convert({ dictionary, file });
    QVERIFY2(outcome.status == 0, outcome.errors.constData());
    const QJsonObject schema =
        package().value("resources").toArray().at(0).toObject().value("schema").toObject();
    QCOMPARE(schema.value("primaryKey").toArray(), isKey ? QJsonArray { "I" } : QJsonArray());
    QCOMPARE(field("I").value("constraints").toObject().contains("required"), isKey);
    readBack();
    QVERIFY2(m_errors.isEmpty(), m_errors.constData());
}

void tst_ConvertCsv::infiniteNumbers()
{
    const QString file = m_folder->filePath("infinite.sav");
    for (const double number :
        { std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity() }) {
        StatFileWriter writer;
        writer.add("N", READSTAT_TYPE_DOUBLE, "F8.2");
        writer.setNumber(number);
        QVERIFY(writer.write(file, TStatFileKind::Spss, 1));
        const Outcome outcome = convert({ file }, { "--overwrite" });
        QVERIFY2(outcome.status == 0, outcome.errors.constData());
        QCOMPARE(readFile(path("infinite.csv")),
            QByteArray("N\r\n") + (number < 0 ? "-INF" : "INF") + "\r\n");
    }
}

// The plan says so, and how they count.
void tst_ConvertCsv::datesStayNumbers()
{
    StatFileWriter writer;
    writer.add("D", READSTAT_TYPE_DOUBLE, "DATE11");
    writer.add("N", READSTAT_TYPE_DOUBLE, "F8.2");
    const QString file = m_folder->filePath("dates.sav");
    QVERIFY(writer.write(file, TStatFileKind::Spss, 1));
    const Outcome outcome = convert({ file }, { "--plan", "--strict" });
    QCOMPARE(outcome.status, 0);
    QCOMPARE(outcome.output,
        QByteArray("file dates.csv\n  D number DATE11\n  N number F8.2\n"
                   "note: dates.csv D numbers as DATE11 counts them\n"
                   "note: dates.csv measures, widths and alignments of 2 variables left out\n"));
}

void tst_ConvertCsv::missingKinds()
{
    QCOMPARE(convert({ QString(TESSEL_EXAMPLES "/person.dta") }).status, 0);
    bool isFound = false;
    const QJsonArray fields = package()
                                  .value("resources")
                                  .toArray()
                                  .at(0)
                                  .toObject()
                                  .value("schema")
                                  .toObject()
                                  .value("fields")
                                  .toArray();
    for (const QJsonValue& value : fields) {
        for (const QJsonValue& missing : value.toObject().value("missingValues").toArray())
            isFound = isFound || missing.toObject().value("value").toString() == ".a";
    }
    QVERIFY(isFound);
}

void tst_ConvertCsv::manyColumns()
{
    QByteArray line;
    for (int i = 0; i < 10'000; ++i)
        line += char('0' + i % 10);
    convertItem("Occurrences=10000\n", line + '\n' + line + '\n', {}, 1);
    const QList<QByteArray> rows = readFile(path("R.csv")).split('\n');
    QCOMPARE(rows.size(), 4);
    for (int row = 1; row < 3; ++row) {
        QCOMPARE(rows.at(row).count(','), 9999);
        QCOMPARE(QByteArray(rows.at(row)).replace(",", "").trimmed(), line);
    }
}

void tst_ConvertCsv::nothingIsLeftBehind()
{
    const QString base = TESSEL_EXAMPLES "/census";
    QVERIFY(QDir().mkpath(path("")));
    QVERIFY(writeFile(path("datapackage.json"), "mine"));
    const Outcome outcome = convert({ base + ".dcf", base + ".dat" });
    QCOMPARE(outcome.status, 1);
    QCOMPARE(QDir(path("")).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
        QStringList { "datapackage.json" });
    QCOMPARE(readFile(path("datapackage.json")), QByteArray("mine"));
}

void tst_ConvertCsv::usage_data()
{
    QTest::addColumn<QStringList>("more");
    QTest::addColumn<QByteArray>("text");
    QTest::newRow("labels of Stata")
        << QStringList { "--to", "stata", "--labels" } << QByteArray("--labels is for --to csv");
    QTest::newRow("spreadsheet of SPSS")
        << QStringList { "--to", "spss", "--spreadsheet" }
        << QByteArray("--spreadsheet goes with --to csv or --problems FILE.csv only");
}

void tst_ConvertCsv::usage()
{
    QFETCH(QStringList, more);
    QFETCH(QByteArray, text);
    const Outcome outcome =
        runTessel(QStringList { "convert", TESSEL_EXAMPLES "/person.sav", "-o", path("") } + more);
    QCOMPARE(outcome.status, 2);
    QVERIFY2(outcome.errors.contains(text), outcome.errors.constData());
}

QTEST_GUILESS_MAIN(tst_ConvertCsv)
#include "tst_ConvertCsv.moc"
