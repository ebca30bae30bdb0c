// Runs "tessel export" to programs that read text data, has R and PSPP carry them out, and compares
// what these read with a slice of the lines.
#include "ComparedRecords.h"
#include "ExportRun.h"

#include <QRegularExpression>
#include <QTemporaryDir>
#include <QtTest>

#include <cmath>

class tst_ExportSetup : public QObject {
    Q_OBJECT

private slots:
    void init();
    void rReads_data();
    void rReads();
    void psppReads_data();
    void psppReads();
    void rReadsOddNumbers();
    void rKeepsLinesWithNull();
    void rTellsOneAsOne();
    void stataLooksAtWholeLines();
    void stataForgetsLabels();
    void psppPassesOverLines();
    void wideNumbersKeepTheirDigits();
    void stataColumns_data();
    void stataColumns();
    void sasColumns_data();
    void sasColumns();
    void labelsOfStataAreText();
    void labelsOfSasAreText();
    void nothingBecomesCode_data();
    void nothingBecomesCode();
    void otherFilesAreRefused_data();
    void otherFilesAreRefused();

private:
    void write(const QString& target, const QString& dictionary, const QString& name);
    ReadRecords readByR(const QString& data);
    ReadRecords readByPspp();

    QScopedPointer<QTemporaryDir> m_folder;
};

void tst_ExportSetup::init()
{
    m_folder.reset(new QTemporaryDir);
}

void tst_ExportSetup::write(const QString& target, const QString& dictionary, const QString& name)
{
    const Outcome outcome =
        exportTo(target, dictionary, { "-o", m_folder->filePath(name), "--all-warnings" });
    QVERIFY2(outcome.status == 0, outcome.errors.constData());
}

ReadRecords tst_ExportSetup::readByR(const QString& data)
{
    const Outcome outcome = runRScript(m_folder->path(), data);
    if (outcome.status != 0)
        qWarning("%s", outcome.errors.constData());
    return parsedRecords(outcome.output);
}

ReadRecords tst_ExportSetup::readByPspp()
{
    const Outcome run = runIn(m_folder->path(), "pspp", { "p.sps" });
    if (run.status != 0)
        qWarning("%s", run.output.right(2000).constData());
    QStringList arguments { TESSEL_TEST_DATA "/dump_records.R", "files" };
    arguments += QDir(m_folder->path()).entryList({ "*.sav" });
    const Outcome outcome = runIn(m_folder->path(), rscript(), arguments);
    if (outcome.status != 0)
        qWarning("%s", outcome.errors.constData());
    return parsedRecords(outcome.output);
}

void tst_ExportSetup::rReads_data()
{
    addPairs();
}

void tst_ExportSetup::rReads()
{
    QFETCH(QString, base);
    if (!hasR())
        QSKIP("R with its packages readr and haven is not installed");
    write("r-script", base + ".dcf", "p.R");
    compareRecords(readByR(base + ".dat"), base + ".dcf", base + ".dat", {});
}

void tst_ExportSetup::psppReads_data()
{
    addPairs();
}

void tst_ExportSetup::psppReads()
{
    QFETCH(QString, base);
    if (!hasR() || QStandardPaths::findExecutable("pspp").isEmpty())
        QSKIP("PSPP, or R with its packages readr and haven, is not installed");
    write("spss-syntax", base + ".dcf", "p.sps");
    QVERIFY(QFile::copy(
        base + ".dat", m_folder->filePath(QFileInfo(base).completeBaseName() + ".dat")));
    const bool hasOwnNames = !base.endsWith("/export_setup");
    compareRecords(readByPspp(), base + ".dcf", base + ".dat",
        { hasOwnNames, 255, 120 }); // PSPP writes labels of 255 bytes
}

namespace {

QByteArray oneItem(const QByteArray& more)
{
    return dictionaryStart(0) + record("R", "") + item("N", 1, 6, more);
}

} // namespace

// As CSPro reads them: a sign with blanks behind it, a comma for the point.
void tst_ExportSetup::rReadsOddNumbers()
{
    if (!hasR())
        QSKIP("R with its packages readr and haven is not installed");
    const QString dictionary = m_folder->filePath("d.dcf");
    QVERIFY(writeFile(dictionary, oneItem("Decimal=2\n")));
    const QString data = m_folder->filePath("d.dat");
    QVERIFY(writeFile(data,
        "  1234   1\n-  5     2\n 12,5     3\n+12.25    4\n  1e3     5\n1 2       6\n  .       7\n"
        "    .5   8\n   12\xE9   9\n~  123  10\n  -1     1\xE9\n"));
    write("r-script", dictionary, "p.R");
    QStringList cells;
    for (const QStringList& row : readByR(data).value("R").rows)
        cells.append(sameCell(row.value(1)));
    QCOMPARE(
        cells, (QStringList { "12.34", "-0.05", "12.5", "12.25", "", "", "", "0.5", "", "-0.01" }));
    const Outcome outcome = runRScript(m_folder->path(), data);
    QVERIFY(outcome.errors.contains("2 lines are no UTF-8 and are read as Windows-1252"));
    QVERIFY(outcome.errors.contains("N: 4 values are no numbers and are missing"));
}

// A NUL is one character of its line.
void tst_ExportSetup::rKeepsLinesWithNull()
{
    if (!hasR())
        QSKIP("R with its packages readr and haven is not installed");
    const QString dictionary = m_folder->filePath("d.dcf");
    QVERIFY(writeFile(dictionary, oneItem("DataType=Alpha\n")));
    const QString data = m_folder->filePath("d.dat");
    for (const QByteArray& last : { QByteArray("last  \xC3\xA9"
                                               "006\n"),
             QByteArray("last  0006\n") }) {
        QVERIFY(writeFile(data,
            QByteArray("first 0001\n") + QByteArray("a\0b   0002\n", 11)
                + QByteArray("\0\0\0\0\0\0"
                             "0003\n",
                    11)
                + "mid   0004\n" + last));
        write("r-script", dictionary, "p.R");
        QStringList cells;
        QStringList ids;
        for (const QStringList& row : readByR(data).value("R").rows) {
            ids.append(row.value(0));
            cells.append(row.value(1));
        }
        QCOMPARE(cells, (QStringList { "first", "a?b", "??????", "mid", "last" }));
        QCOMPARE(ids.mid(0, 4), (QStringList { "1", "2", "3", "4" }));
    }
    QVERIFY(runRScript(m_folder->path(), data).errors.contains("7 NULs are read as \"?\""));
}

void tst_ExportSetup::rTellsOneAsOne()
{
    if (!hasR())
        QSKIP("R with its packages readr and haven is not installed");
    const QString dictionary = m_folder->filePath("d.dcf");
    QVERIFY(writeFile(dictionary, oneItem("")));
    const QString data = m_folder->filePath("d.dat");
    QVERIFY(writeFile(data, QByteArray("   1\0    1\n    \xE9 0002\n", 22)));
    write("r-script", dictionary, "p.R");
    const QByteArray errors = runRScript(m_folder->path(), data).errors;
    QVERIFY2(errors.contains("1 NUL is read as \"?\""), errors.constData());
    QVERIFY2(errors.contains("1 line is no UTF-8 and is read as Windows-1252"), errors.constData());
    QVERIFY2(!errors.contains("1 values"), errors.constData());
}

// A character that a column boundary cuts is none in either column: all of a line is looked at, and
// before columns are read.
void tst_ExportSetup::stataLooksAtWholeLines()
{
    const QByteArray program = exportTo("stata-do", TESSEL_EXAMPLES "/census.dcf").output;
    const int look = program.indexOf("max(codes) > 127");
    const int run =
        program.indexOf("\nmata: tessel_lines(st_local(\"file\"), st_local(\"data\"))\n");
    QVERIFY(look > 0);
    QVERIFY(run > look);
    QVERIFY(run < program.indexOf("\ninfix "));
    QVERIFY(!program.contains("ustrlen"));
    // the mark is one at the start only
    QVERIFY(!program.contains("filefilter"));
    QVERIFY(program.contains("number == 1 && substr(line, 1, 3) == char((239, 187, 191))"));
}

// Records may have the same value sets, and labels stay when other data are read.
void tst_ExportSetup::stataForgetsLabels()
{
    const QByteArray program = exportTo("stata-do", TESSEL_EXAMPLES "/census.dcf").output;
    QVERIFY(program.count("\ninfix ") > 1);
    QCOMPARE(program.count("\nclear\ninfix "), program.count("\ninfix "));
}

// Without record types a deleted line, and a blank one, look like others.
void tst_ExportSetup::psppPassesOverLines()
{
    if (!hasR() || QStandardPaths::findExecutable("pspp").isEmpty())
        QSKIP("PSPP, or R with its packages readr and haven, is not installed");
    const QString dictionary = m_folder->filePath("d.dcf");
    QVERIFY(writeFile(dictionary, oneItem("")));
    QVERIFY(writeFile(m_folder->filePath("d.dat"),
        "\xEF\xBB\xBF    12   1\r\n~   13   2\r\n\r\n       \r\n    14   3\r\n"));
    write("spss-syntax", dictionary, "p.sps");
    QStringList cells;
    for (const QStringList& row : readByPspp().value("R").rows)
        cells.append(row.value(1));
    QCOMPARE(cells, (QStringList { "12", "14" }));
}

void tst_ExportSetup::wideNumbersKeepTheirDigits()
{
    if (!hasR())
        QSKIP("R with its packages readr and haven is not installed");
    write("r-script", TESSEL_TEST_DATA "/export_setup.dcf", "p.R");
    const ReadRecord person = readByR(TESSEL_TEST_DATA "/export_setup.dat").value("PERSON");
    QCOMPARE(person.rows.at(0).at(6), QString("1234567890123456"));
    QCOMPARE(person.rows.at(2).at(6).trimmed(), QString("-123456789012345"));
}

namespace {

// Columns of a line that a program names, from 1, and how it reads them.
struct ProgramColumn {
    QString name;
    QString how;
    int start = 0;
    int width = 0;
};

// The data of a dictionary in ASCII, where bytes are columns.
QByteArray asciiData(const QString& path)
{
    QString text = QString::fromUtf8(readFile(path));
    for (QChar& character : text) {
        if (character.unicode() >= 0x80 && character.unicode() != 0xFEFF)
            character = 'x';
    }
    return text.toUtf8();
}

// What a numeric cell is read as: a point in the text stands, else it is implied.
QString numberOf(const QString& text, int decimals)
{
    bool isNumber = false;
    const double number = text.trimmed().toDouble(&isNumber);
    if (!isNumber)
        return QString();
    return QString::number(text.contains('.') ? number : number / std::pow(10, decimals), 'g', 15);
}

// Programs by the record that they save or make, as their lines.
QMap<QString, QStringList> partsOf(
    const QByteArray& program, const QRegularExpression& end, const QRegularExpression& begin)
{
    QMap<QString, QStringList> parts;
    QStringList lines;
    for (const QString& line : QString::fromUtf8(program).split('\n')) {
        if (begin.match(line).hasMatch())
            lines.clear();
        lines.append(line);
        const auto match = end.match(line);
        if (match.hasMatch())
            parts.insert(match.captured(1), lines);
    }
    return parts;
}

// The lines of a file without what every program drops, which is in its text too.
QStringList dataLines(const QByteArray& data)
{
    QStringList lines;
    QString text = QString::fromUtf8(data);
    if (text.startsWith(QChar(0xFEFF)))
        text.remove(0, 1);
    for (QString line : text.split('\n')) {
        if (line.endsWith('\r'))
            line.chop(1);
        if (!line.startsWith('~'))
            lines.append(line);
    }
    return lines;
}

struct ColumnTest {
    QVector<ProgramColumn> columns;
    QHash<QString, int> decimals; // of those that are read as such; texts are in none
    QSet<QString> texts;
    QString typeCode; // null: any line that is not blank
    int typeStart = 0;
    int typeWidth = 0;
};

QVector<QStringList> readColumns(const ColumnTest& test, const QStringList& lines)
{
    QVector<QStringList> rows;
    for (const QString& line : lines) {
        const QString type = line.mid(test.typeStart - 1, test.typeWidth).trimmed();
        if (test.typeCode.isNull() ? line.trimmed().isEmpty() : type != test.typeCode)
            continue;
        QStringList row;
        for (const ProgramColumn& column : test.columns) {
            QString text = line.mid(column.start - 1, column.width);
            while (text.endsWith(' '))
                text.chop(1);
            row.append(test.texts.contains(column.name)
                    ? sameCell(text)
                    : sameCell(numberOf(text, test.decimals.value(column.name))));
        }
        rows.append(row);
    }
    return rows;
}

ColumnTest stataTest(const QStringList& lines)
{
    static const QRegularExpression column("^    (\\w+) (\\w+) (\\d+)-(\\d+) ///$");
    static const QRegularExpression decimals("^tessel_decimals (\\w+) (\\d+)$");
    static const QRegularExpression type("strtrim\\(record_type\\) == \"([^\"]*)\"");
    ColumnTest test;
    for (const QString& line : lines) {
        auto match = column.match(line);
        const int start = match.captured(3).toInt();
        const ProgramColumn read { match.captured(2), match.captured(1), start,
            match.captured(4).toInt() - start + 1 };
        if (read.name == "record_type") {
            test.typeStart = read.start;
            test.typeWidth = read.width;
        } else if (match.hasMatch() && read.name != "first_column" && read.name != "whole_line") {
            test.columns.append(read);
            if (read.how.startsWith("str"))
                test.texts.insert(read.name);
        }
        match = decimals.match(line);
        if (match.hasMatch()) {
            test.decimals.insert(match.captured(1), match.captured(2).toInt());
            test.texts.remove(match.captured(1));
        }
        match = type.match(line);
        if (match.hasMatch())
            test.typeCode = match.captured(1);
    }
    return test;
}

ColumnTest sasTest(const QStringList& lines)
{
    static const QRegularExpression column("^    @(\\d+) (\\w+) (\\$char)?(\\d+)\\.(\\d*)$");
    static const QRegularExpression type(
        "substr\\(_infile_, (\\d+), (\\d+)\\) ne '([^']*)' then delete");
    ColumnTest test;
    for (const QString& line : lines) {
        auto match = column.match(line);
        if (match.hasMatch()) {
            test.columns.append({ match.captured(2), QString(), match.captured(1).toInt(),
                match.captured(4).toInt() });
            if (match.captured(3).isEmpty())
                test.decimals.insert(match.captured(2), match.captured(5).toInt());
            else
                test.texts.insert(match.captured(2));
        }
        match = type.match(line);
        if (match.hasMatch()) {
            test.typeStart = match.captured(1).toInt();
            test.typeWidth = match.captured(2).toInt();
            test.typeCode = match.captured(3);
        }
    }
    return test;
}

void compareColumns(const QMap<QString, QStringList>& parts,
    ColumnTest (*testOf)(const QStringList&), const QString& dictionary, const QString& data)
{
    int rows = 0;
    eachRecord(dictionary, data, [&](const QString& name, const auto& items, const auto& expected) {
        if (items.isEmpty())
            return;
        QVERIFY2(parts.contains(name), qPrintable(name));
        const auto read = readColumns(testOf(parts.value(name)), dataLines(readFile(data)));
        compareRows(read, expected, items);
        rows += read.size();
    });
    QVERIFY(rows > 0);
}

} // namespace

void tst_ExportSetup::stataColumns_data()
{
    addPairs();
}

// There is no Stata here: the test reads the columns that the program names.
void tst_ExportSetup::stataColumns()
{
    QFETCH(QString, base);
    const QString data = m_folder->filePath("d.dat");
    QVERIFY(writeFile(data, asciiData(base + ".dat")));
    const Outcome program = exportTo("stata-do", base + ".dcf");
    QCOMPARE(program.status, 0);
    compareColumns(partsOf(program.output, QRegularExpression("^save \"(.*)\\.dta\", replace"),
                       QRegularExpression("^infix ")),
        stataTest, base + ".dcf", data);
}

void tst_ExportSetup::sasColumns_data()
{
    addPairs();
}

void tst_ExportSetup::sasColumns()
{
    QFETCH(QString, base);
    const QString data = m_folder->filePath("d.dat");
    QVERIFY(writeFile(data, asciiData(base + ".dat")));
    const Outcome program = exportTo("sas", base + ".dcf");
    QCOMPARE(program.status, 0);
    QMap<QString, QStringList> parts;
    for (const QString& step : QString::fromUtf8(program.output).split("\ndata ").mid(1))
        parts.insert(step.section(QRegularExpression("[ ;]"), 0, 0), step.split('\n'));
    compareColumns(parts, sasTest, base + ".dcf", data);
}

namespace {

// The text that an expression of Stata or Mata makes.
QString stataValue(const QString& expression)
{
    static const QRegularExpression part("\\G(?:\"([^\"`$\\\\]*)\"|char\\((\\d+)\\))(?: \\+ |$)");
    QString text;
    int at = 0;
    while (at < expression.size()) {
        const auto match = part.match(expression, at);
        if (!match.hasMatch())
            return QString();
        text += match.captured(2).isEmpty() ? match.captured(1)
                                            : QString(QChar(match.captured(2).toUShort()));
        at = match.capturedEnd();
    }
    return text;
}

const TCSProItem* itemNamed(const TCSPro& reader, const QString& name)
{
    for (const TCSProItem* item : qAsConst(*reader.items)) {
        if (item->name == name)
            return item;
    }
    return nullptr;
}

} // namespace

void tst_ExportSetup::labelsOfStataAreText()
{
    TCSPro reader;
    reader.setReading(CSProReading::AsWritten);
    reader.loadFromFile(TESSEL_TEST_DATA "/export_setup.dcf");
    const QString program =
        QString::fromUtf8(exportTo("stata-do", TESSEL_TEST_DATA "/export_setup.dcf").output);
    const QRegularExpression label(
        "\n(?:label variable (\\w+) (.*)|mata: st_varlabel\\(\"(\\w+)\", "
        "(.*)\\))(?=\n)");
    int count = 0;
    for (auto it = label.globalMatch(program); it.hasNext();) {
        const auto match = it.next();
        const bool isPlain = !match.captured(1).isEmpty();
        const TCSProItem* const item =
            itemNamed(reader, isPlain ? match.captured(1) : match.captured(3));
        const QString text = stataValue(isPlain ? match.captured(2) : match.captured(4));
        QVERIFY2(!text.isEmpty(), qPrintable(match.captured(0)));
        if (!item || item->occurrence > 0)
            continue;
        QCOMPARE(text, item->label);
        ++count;
    }
    QVERIFY(count > 10);
    const QRegularExpression value("\n(?:label define WITH (-?\\d+) (.*), add|mata: "
                                   "st_vlmodify\\(\"WITH\", (-?\\d+), (.*)\\))(?=\n)");
    QMap<QString, QString> labels;
    for (auto it = value.globalMatch(program); it.hasNext();) {
        const auto match = it.next();
        labels.insert(match.captured(1) + match.captured(3),
            stataValue(match.captured(2) + match.captured(4)));
    }
    QCOMPARE(labels, expectedOf(*itemNamed(reader, "WITH")).labels);
}

void tst_ExportSetup::labelsOfSasAreText()
{
    TCSPro reader;
    reader.setReading(CSProReading::AsWritten);
    reader.loadFromFile(TESSEL_TEST_DATA "/export_setup.dcf");
    const QString program =
        QString::fromUtf8(exportTo("sas", TESSEL_TEST_DATA "/export_setup.dcf").output);
    const QRegularExpression label("\n  label (\\w+) = '((?:[^']|'')*)';(?=\n)");
    int count = 0;
    for (auto it = label.globalMatch(program); it.hasNext();) {
        const auto match = it.next();
        const TCSProItem* const item = itemNamed(reader, match.captured(1));
        if (!item || item->occurrence > 0)
            continue;
        QCOMPARE(match.captured(2).replace("''", "'"), item->label);
        ++count;
    }
    QVERIFY(count > 10);
    const QString format = program.section("\n  value WITHF\n", 1).section("\n  ;", 0, 0);
    const QRegularExpression value("    (-?\\d+) = '((?:[^']|'')*)'(?=\n|$)");
    QMap<QString, QString> labels;
    for (auto it = value.globalMatch(format); it.hasNext();) {
        const auto match = it.next();
        labels.insert(match.captured(1), match.captured(2).replace("''", "'"));
    }
    QMap<QString, QString> expected = expectedOf(*itemNamed(reader, "WITH")).labels;
    for (QString& text : expected)
        text.replace('\n', ' ').replace('\t', ' ');
    QCOMPARE(labels, expected);
}

void tst_ExportSetup::nothingBecomesCode_data()
{
    QTest::addColumn<QString>("target");
    QTest::addColumn<QString>("comment");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("words"); // that lines begin with once texts and comments are gone
    QTest::newRow("Stata") << "stata-do"
                           << "\\* [^\n`$/*]*"
                           << "\"[^\"`$\\\\\n]*\""
                           << "label variable|label define|label values|label data|mata: "
                              "st_varlabel|mata: st_vlmodify";
    QTest::newRow("SPSS") << "spss-syntax"
                          << "\\* [^\n'\"]*\\."
                          << "'(?:[^'\n]|'')*'"
                          << "VARIABLE LABELS|VALUE LABELS|MISSING VALUES";
    QTest::newRow("SAS") << "sas"
                         << "/\\* [^\n/*]*\\*/"
                         << "'(?:[^'\n]|'')*'"
                         << "  label|    [-.0-9A-Z]+( - [0-9]+)? = |    = ";
}

// Without what is in quotes, and comments, nothing of the labels is left.
void tst_ExportSetup::nothingBecomesCode()
{
    QFETCH(QString, target);
    QFETCH(QString, comment);
    QFETCH(QString, text);
    QString program =
        QString::fromUtf8(exportTo(target, TESSEL_TEST_DATA "/export_setup.dcf").output);
    program = program.mid(program.indexOf("PERSON:"));
    program.prepend(target == "sas" ? "/* " : "* ");
    program.remove(QRegularExpression("^" + comment + "$", QRegularExpression::MultilineOption));
    program.replace(QRegularExpression(text), "TEXT");
    for (const char* part : { "so", "date", "HOME", "macro", "Persons", "Quotes", "Null", "House.",
             "Subitem", "///\\", "MMMM", "LLLL", "\xE2\x90\x80" })
        QVERIFY2(!program.contains(QString::fromUtf8(part)), part);
    QFETCH(QString, words);
    QVERIFY(program.contains(QRegularExpression("\n(" + words + ")")));
}

void tst_ExportSetup::otherFilesAreRefused_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<int>("status");
    QTest::addColumn<QByteArray>("text");
    QTest::newRow("SPSS") << QStringList { TESSEL_EXAMPLES "/person.sav", "--to", "stata-do" } << 1
                          << QByteArray("'tessel convert'");
    QTest::newRow("Stata") << QStringList { TESSEL_EXAMPLES "/person.dta", "--to", "r-script" } << 1
                           << QByteArray("'tessel convert'");
    QTest::newRow("established rules") << QStringList {
        QStringLiteral(TESSEL_EXAMPLES "/census.dcf"), "--to", "sas", "--rules", "established"
    } << 2 << QByteArray("--to sas reads dictionaries as they are written");
    QTest::newRow("no dictionary") << QStringList { TESSEL_TEST_DATA "/empty.dcf", "--to",
        "spss-syntax" } << 1 << QByteArray("empty.dcf");
}

void tst_ExportSetup::otherFilesAreRefused()
{
    QFETCH(QStringList, arguments);
    const Outcome outcome = runTessel(QStringList { "export" } + arguments);
    QTEST(outcome.status, "status");
    QFETCH(QByteArray, text);
    QVERIFY2(outcome.errors.contains(text), outcome.errors.constData());
    QVERIFY(outcome.output.isEmpty());
}

QTEST_GUILESS_MAIN(tst_ExportSetup)
#include "tst_ExportSetup.moc"
