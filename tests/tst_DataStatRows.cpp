// Every cell of SPSS and Stata files against libreadstat itself.
#include "StatFiles.h"

#include <tessel_data/DataError.h>
#include <tessel_data/Pipeline.h>
#include <tessel_data/StatSource.h>

#include <model_Tessel/DictionaryFile.h>

#include <QDateTime>
#include <QTemporaryDir>
#include <QtTest>

#include <functional>

using namespace tessel;

Q_DECLARE_METATYPE(tessel::DataError::Code)

namespace {

// A value as its kind and bytes: #bits of a number, 'text', .letter of a missing kind; * marks
// numbers that the file declares missing.
QByteArray numberText(double number)
{
    return '#' + QByteArray(reinterpret_cast<const char*>(&number), sizeof number).toHex();
}

QByteArray textText(QByteArray text)
{
    while (text.endsWith(' '))
        text.chop(1);
    return text.isEmpty() ? QByteArray(".") : "'" + text + '\'';
}

struct Table {
    QByteArrayList names;
    QVector<QByteArrayList> rows;
};

int takeVariable(int, readstat_variable_t* variable, const char*, void* context)
{
    static_cast<Table*>(context)->names.append(readstat_variable_get_name(variable));
    return READSTAT_HANDLER_OK;
}

QByteArray shown(const readstat_value_t& value, readstat_variable_t* variable)
{
    if (readstat_value_is_tagged_missing(value))
        return QByteArray(1, '.') + readstat_value_tag(value) + '*';
    if (readstat_value_type_class(value) == READSTAT_TYPE_CLASS_STRING)
        return textText(readstat_string_value(value));
    if (readstat_value_is_system_missing(value) || std::isnan(readstat_double_value(value)))
        return QByteArray(".");
    return numberText(readstat_double_value(value))
        + (readstat_value_is_defined_missing(value, variable) ? "*" : "");
}

int takeValue(int row, readstat_variable_t* variable, readstat_value_t value, void* context)
{
    auto& table = *static_cast<Table*>(context);
    while (table.rows.size() <= row)
        table.rows.append(QByteArrayList());
    table.rows.last().append(shown(value, variable));
    return READSTAT_HANDLER_OK;
}

// False when libreadstat does not read the file to its end.
bool readPlainly(const QString& path, Table& table)
{
    const std::unique_ptr<readstat_parser_t, decltype(&readstat_parser_free)> parser(
        readstat_parser_init(), readstat_parser_free);
    readstat_set_variable_handler(parser.get(), takeVariable);
    readstat_set_value_handler(parser.get(), takeValue);
    const auto parse =
        kindOf(path) == TStatFileKind::Spss ? readstat_parse_sav : readstat_parse_dta;
    return parse(parser.get(), QFile::encodeName(path).constData(), &table) == READSTAT_OK;
}

// What the source makes of the file, shown in the same way.
class TableConsumer : public DataConsumer {
public:
    explicit TableConsumer(const DataDictionary& dictionary)
    {
        for (const int column : dictionary.records.front().columns)
            table.names.append(dictionary.variables[std::size_t(column)].name.toUtf8());
    }

    void take(const DataBatch& batch) override
    {
        for (const DataBatch::Record& record : batch.records) {
            QByteArrayList row;
            for (int c = 0; c < table.names.size(); ++c)
                row.append(shownCell(batch, record.firstCell + quint32(c)));
            table.rows.append(row);
            isInOrder = isInOrder && record.line == table.rows.size();
        }
    }
    void finish(const DataSource&) override
    {
    }

    Table table;
    bool isInOrder = true;

private:
    static QByteArray shownCell(const DataBatch& batch, quint32 cell)
    {
        const ValueState state = batch.states[cell];
        const QByteArray mark = state.special() == Special::Missing ? "*" : "";
        switch (state.kind()) {
        case ValueKind::Real:
            return numberText(batch.realOf(cell)) + mark;
        case ValueKind::Text: {
            const std::string_view text = batch.textOf(cell);
            return textText(QByteArray(text.data(), int(text.size())));
        }
        case ValueKind::Blank:
            return mark.isEmpty() ? QByteArray(".")
                                  : QByteArray(1, '.') + char(batch.numbers[cell]) + mark;
        default:
            return "no such kind";
        }
    }
};

void compare(const QString& path)
{
    StatSource source(path, kindOf(path));
    TableConsumer found(source.dictionary());
    qint64 done = 0;
    QVERIFY(runPipeline(source, found, [&done](qint64 rows, qint64) {
        done = rows;
        return true;
    }));
    Table expected;
    QVERIFY(readPlainly(path, expected));
    QVERIFY(found.isInOrder);
    QCOMPARE(found.table.names, expected.names);
    QCOMPARE(found.table.rows.size(), expected.rows.size());
    for (int row = 0; row < expected.rows.size(); ++row)
        QCOMPARE(found.table.rows.at(row), expected.rows.at(row));
    const SourceCounts counts = source.counts();
    QVERIFY(counts.addUp());
    QCOMPARE(counts.records, qint64(expected.rows.size()));
    QCOMPARE(done, counts.lines);
}

// A file of 50,000 rows of four numbers, which are more than a batch takes.
QString writeNumbers(const QTemporaryDir& folder, const QString& name)
{
    const QString path = folder.filePath(name);
    StatFileWriter writer;
    for (const char* variable : { "a", "b", "c", "d" })
        writer.add(variable, READSTAT_TYPE_DOUBLE, nullptr);
    writer.setNumber(0.1);
    return writer.write(path, kindOf(path), 50'000) ? path : QString();
}

// Ends after the first batch, and keeps what is told.
class OneBatch : public BatchSink {
public:
    DataBatch& batch() override
    {
        return m_batch;
    }
    bool deliver() override
    {
        ++deliveries;
        rows += qint64(m_batch.records.size());
        m_batch.clear();
        return false;
    }

    int deliveries = 0;
    qint64 rows = 0;

private:
    DataBatch m_batch;
};

QString errorOfReading(const QString& path, const std::function<void()>& beforeRows = {})
{
    try {
        StatSource source(path, kindOf(path));
        if (beforeRows)
            beforeRows();
        TableConsumer found(source.dictionary());
        runPipeline(source, found);
    } catch (const DataError& error) {
        return error.file == path ? error.text : QString();
    }
    return QString();
}

} // namespace

class TestDataStatRows : public QObject {
    Q_OBJECT

private slots:
    void examples_data();
    void examples();
    void samples_data();
    void samples();
    void missingKinds();
    void errors_data();
    void errors();
    void opened();
    void texts_data();
    void texts();
    void otherEncoding();
    void stopped_data();
    void stopped();
    void changed_data();
    void changed();
    void cut_data();
    void cut();
};

void TestDataStatRows::examples_data()
{
    QTest::addColumn<QString>("path");
    for (const char* name : { "household.sav", "person.sav", "household.dta", "person.dta" })
        QTest::newRow(name) << QStringLiteral(TESSEL_EXAMPLES "/") + QLatin1String(name);
}

void TestDataStatRows::examples()
{
    QFETCH(QString, path);
    compare(path);
}

void TestDataStatRows::samples_data()
{
    SKIP_WITHOUT_SAMPLES();
    QTest::addColumn<QString>("path");
    const QStringList paths = samplePaths();
    for (const QString& path : paths)
        QTest::newRow(qPrintable(QFileInfo(path).fileName())) << path;
}

void TestDataStatRows::samples()
{
    QFETCH(QString, path);
    const TStatFileDescription description = readStatDescription(path, kindOf(path));
    Table plain;
    if (!description.isWhole() || !readPlainly(path, plain)) {
        try { // is refused, or read to where it breaks off, but never taken for whole
            StatSource source(path, kindOf(path));
            TableConsumer found(source.dictionary());
            runPipeline(source, found);
            QFAIL("a damaged file was read");
        } catch (const DataError& error) {
            QVERIFY(!error.text.isEmpty());
        }
        return;
    }
    compare(path);
}

// All 27 kinds of Stata, each of them told apart.
void TestDataStatRows::missingKinds()
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("kinds.dta"));
    {
        const std::unique_ptr<readstat_writer_t, decltype(&readstat_writer_free)> writer(
            readstat_writer_init(), readstat_writer_free);
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        readstat_set_data_writer(writer.get(), [](const void* bytes, size_t size, void* context) {
            return ssize_t(
                static_cast<QFile*>(context)->write(static_cast<const char*>(bytes), qint64(size)));
        });
        QVector<readstat_variable_t*> variables;
        for (const readstat_type_t type : { READSTAT_TYPE_INT8, READSTAT_TYPE_INT16,
                 READSTAT_TYPE_INT32, READSTAT_TYPE_FLOAT, READSTAT_TYPE_DOUBLE }) {
            const QByteArray name = "v" + QByteArray::number(int(type));
            variables.append(readstat_add_variable(writer.get(), name.constData(), type, 0));
        }
        QCOMPARE(readstat_begin_writing_dta(writer.get(), &file, 27), READSTAT_OK);
        for (int row = 0; row < 27; ++row) {
            readstat_begin_row(writer.get());
            for (const readstat_variable_t* variable : qAsConst(variables)) {
                if (row == 26)
                    readstat_insert_missing_value(writer.get(), variable);
                else
                    readstat_insert_tagged_missing_value(writer.get(), variable, char('a' + row));
            }
            QCOMPARE(readstat_end_row(writer.get()), READSTAT_OK);
        }
        QCOMPARE(readstat_end_writing(writer.get()), READSTAT_OK);
    }
    StatSource source(path, TStatFileKind::Stata);
    TableConsumer found(source.dictionary());
    QVERIFY(runPipeline(source, found));
    QCOMPARE(found.table.rows.size(), 27);
    for (int row = 0; row < 27; ++row) {
        const QByteArray kind =
            row == 26 ? QByteArray(".") : '.' + QByteArray(1, char('a' + row)) + '*';
        for (const QByteArray& cell : found.table.rows.at(row))
            QCOMPARE(cell, kind);
    }
}

void TestDataStatRows::errors_data()
{
    QTest::addColumn<QByteArray>("bytes"); // null: no file
    QTest::addColumn<DataError::Code>("code");
    QTest::addColumn<QString>("text");
    using Code = DataError::Code;
    QFile file(QStringLiteral(TESSEL_EXAMPLES "/household.sav"));
    QVERIFY(file.open(QIODevice::ReadOnly));
    QTest::newRow("missing") << QByteArray() << Code::CannotOpen << QStringLiteral("no such file");
    QTest::newRow("cut") << file.read(1000) << Code::Damaged
                         << QStringLiteral("if it is damaged or cut off, get it anew");
    QTest::newRow("encrypted") << QByteArray("\x1C\0\0\0\0\0\0\0ENCRYPTEDSAV", 20)
                               << Code::Encrypted << QStringLiteral("save it without a password");
    QTest::newRow("another kind") << QByteArray("[Dictionary]\nName=D\n") << Code::NotThisFormat
                                  << QStringLiteral("is no SPSS file");
}

void TestDataStatRows::errors()
{
    QFETCH(QByteArray, bytes);
    QFETCH(DataError::Code, code);
    QFETCH(QString, text);
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("s.sav"));
    QFile file(path);
    QVERIFY(bytes.isNull() || (file.open(QIODevice::WriteOnly) && file.write(bytes) > 0));
    file.close();
    try {
        const StatSource source(path, TStatFileKind::Spss);
        QFAIL("it was read");
    } catch (const DataError& error) {
        QVERIFY2(error.text.contains(text), qPrintable(error.text));
        QCOMPARE(error.code, code);
    }
}

// The rows come from what was opened, whatever stands under its name by then.
void TestDataStatRows::opened()
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("s.sav"));
    QVERIFY(QFile::copy(QStringLiteral(TESSEL_EXAMPLES "/household.sav"), path));
    const DictionaryFile file = readDictionaryFile(path);
    QVERIFY(QFile::remove(path));
    StatSource source(file);
    TableConsumer found(source.dictionary());
    QVERIFY(runPipeline(source, found));
    QCOMPARE(qint64(found.table.rows.size()), file.description->rowCount);
    const DictionaryFile none = readDictionaryFile(path);
    QVERIFY_EXCEPTION_THROWN(StatSource { none }, DataError);
    const DictionaryFile text = readDictionaryFile(QStringLiteral(TESSEL_TEST_DATA "/basic.dcf"));
    QVERIFY_EXCEPTION_THROWN(StatSource { text }, DataError);
}

void TestDataStatRows::texts_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("width");
    QTest::newRow("SPSS") << QStringLiteral("t.sav") << 40;
    QTest::newRow("SPSS, in several parts") << QStringLiteral("t.sav") << 2000;
    QTest::newRow("Stata") << QStringLiteral("t.dta") << 40;
    QTest::newRow("Stata, long") << QStringLiteral("t.dta") << 2000;
}

void TestDataStatRows::texts()
{
    QFETCH(QString, name);
    QFETCH(int, width);
    const QTemporaryDir folder;
    const QString path = folder.filePath(name);
    const QByteArray text = "  Zoë " + QByteArray(width - 20, 'x') + " é";
    StatFileWriter writer;
    writer.add("before", READSTAT_TYPE_DOUBLE, nullptr);
    writer.add("text", READSTAT_TYPE_STRING, nullptr, nullptr, std::size_t(width));
    writer.add("behind", READSTAT_TYPE_DOUBLE, nullptr);
    writer.setNumber(-0.1);
    writer.setFirstText(text.constData());
    QVERIFY(writer.write(path, kindOf(path), 2));
    StatSource source(path, kindOf(path));
    TableConsumer found(source.dictionary());
    QVERIFY(runPipeline(source, found));
    const QByteArray number = numberText(-0.1);
    QCOMPARE(found.table.names, (QByteArrayList { "before", "text", "behind" }));
    QCOMPARE(found.table.rows.value(0), (QByteArrayList { number, "'" + text + '\'', number }));
    QCOMPARE(found.table.rows.value(1), (QByteArrayList { number, ".", number }));
}

// A file that says it is UTF-8 and has another text in its first row only.
void TestDataStatRows::otherEncoding()
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("e.dta"));
    StatFileWriter writer;
    writer.add("number", READSTAT_TYPE_DOUBLE, nullptr);
    writer.add("name", READSTAT_TYPE_STRING, nullptr, nullptr, 9);
    writer.setFirstText("Zo\xEB");
    QVERIFY(writer.write(path, TStatFileKind::Stata, 2));
    struct Told : DataConsumer {
        void take(const DataBatch& batch) override
        {
            for (const DataBatch::Told& one : batch.told) {
                const std::string_view text = batch.text(one.text);
                lines.append(QStringLiteral("%1 %2 %3 %4")
                                 .arg(one.line)
                                 .arg(int(one.problem))
                                 .arg(one.variable)
                                 .arg(QString::fromUtf8(text.data(), int(text.size()))));
            }
        }
        void finish(const DataSource&) override
        {
        }
        QStringList lines;
    } told;
    StatSource source(path, TStatFileKind::Stata);
    QVERIFY(runPipeline(source, told));
    QCOMPARE(told.lines,
        QStringList { QStringLiteral("1 %1 1 Zo\u00EB").arg(int(LineProblem::OtherEncoding)) });
}

void TestDataStatRows::stopped_data()
{
    QTest::addColumn<QString>("name");
    for (const char* name : { "n.sav", "n.dta" })
        QTest::newRow(name) << QString::fromLatin1(name);
}

// To be stopped is no error, and what was read until then is counted.
void TestDataStatRows::stopped()
{
    QFETCH(QString, name);
    const QTemporaryDir folder;
    const QString path = writeNumbers(folder, name);
    StatSource source(path, kindOf(path));
    OneBatch sink;
    source.read(sink);
    QCOMPARE(sink.deliveries, 1);
    QVERIFY(sink.rows > 0 && sink.rows < 50'000);
    QCOMPARE(source.counts().lines, sink.rows);
    QVERIFY(source.counts().addUp());
}

void TestDataStatRows::changed_data()
{
    stopped_data();
}

// Another program writes to the file when its dictionary is read and its rows are not.
void TestDataStatRows::changed()
{
    QFETCH(QString, name);
    const QTemporaryDir folder;
    const QString path = writeNumbers(folder, name);
    const QString text = errorOfReading(path, [&path] {
        QFile file(path);
        QVERIFY(file.open(QIODevice::ReadWrite) && file.seek(file.size() - 300'000));
        QVERIFY(file.setFileTime(
            QDateTime::currentDateTime().addSecs(5), QFileDevice::FileModificationTime));
    });
    QVERIFY2(text.contains(QLatin1String("it was changed while it was read")), qPrintable(text));
}

void TestDataStatRows::cut_data()
{
    QTest::addColumn<int>("bytes");
    QTest::addColumn<int>("rows");
    QTest::newRow("between rows") << 64 << 49'998;
    QTest::newRow("in a row") << 40 << 49'998;
    QTest::newRow("in the last value") << 1 << 49'999;
}

void TestDataStatRows::cut()
{
    QFETCH(int, bytes);
    QFETCH(int, rows);
    const QTemporaryDir folder;
    const QString path = writeNumbers(folder, QStringLiteral("n.sav"));
    QFile file(path);
    QVERIFY(file.resize(file.size() - bytes));
    const QString text = errorOfReading(path);
    QVERIFY2(text.startsWith(QStringLiteral("cannot be read on behind row %1: ").arg(rows)),
        qPrintable(text));
}

QTEST_GUILESS_MAIN(TestDataStatRows)
#include "tst_DataStatRows.moc"
