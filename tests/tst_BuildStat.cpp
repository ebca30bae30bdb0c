// Databases made of SPSS and Stata files, compared cell by cell with what libreadstat hands over,
// and with what R's haven reads.
#include "MissingFiles.h"
#include "RunTessel.h"
#include "SqliteRows.h"

#include <QStandardPaths>
#include <QtTest>

namespace {

QString quoted(QString name)
{
    return '"' + name.replace('"', "\"\"") + '"';
}

QString trimmedEnd(QString text)
{
    while (text.endsWith(' '))
        text.chop(1);
    return text;
}

// A number in the form that tells doubles apart; other texts as they are.
QString plainNumber(const QString& text)
{
    bool isNumber = false;
    const double number = text.toDouble(&isNumber);
    return isNumber ? QString::number(number, 'g', 17) : text;
}

struct Cell {
    QString value; // null: none
    QString kind; // of a missing value, for example ".a"
};

// What a file holds, by callbacks of libreadstat alone.
struct Contents {
    QStringList names;
    QStringList labels;
    QStringList sets; // by variable
    QVector<bool> areTexts;
    QMap<QString, QVector<QPair<QString, QString>>> codes; // by set
    QVector<QVector<Cell>> rows;
};

Cell cellOf(const readstat_value_t& value)
{
    const readstat_type_t type = readstat_value_type(value);
    if (type == READSTAT_TYPE_STRING || type == READSTAT_TYPE_STRING_REF) {
        const QString text = trimmedEnd(QString::fromUtf8(readstat_string_value(value)));
        return { text.isEmpty() ? QString() : text, {} };
    }
    if (readstat_value_is_tagged_missing(value))
        return { {}, QString(".") + readstat_value_tag(value) };
    if (readstat_value_is_system_missing(value))
        return {};
    return { QString::number(readstat_double_value(value), 'g', 17), {} };
}

int onVariable(int, readstat_variable_t* variable, const char* set, void* context)
{
    auto& contents = *static_cast<Contents*>(context);
    const readstat_type_t type = readstat_variable_get_type(variable);
    contents.names.append(readstat_variable_get_name(variable));
    contents.labels.append(readstat_variable_get_label(variable));
    contents.sets.append(set);
    contents.areTexts.append(type == READSTAT_TYPE_STRING || type == READSTAT_TYPE_STRING_REF);
    return READSTAT_HANDLER_OK;
}

int onValue(int row, readstat_variable_t*, readstat_value_t value, void* context)
{
    auto& contents = *static_cast<Contents*>(context);
    if (contents.rows.size() <= row)
        contents.rows.append(QVector<Cell>());
    contents.rows.last().append(cellOf(value));
    return READSTAT_HANDLER_OK;
}

int onLabel(const char* set, readstat_value_t value, const char* label, void* context)
{
    const Cell code = cellOf(value);
    static_cast<Contents*>(context)->codes[set].append(
        { code.kind.isEmpty() ? code.value : code.kind, QString::fromUtf8(label) });
    return READSTAT_HANDLER_OK;
}

Contents read(const QString& path)
{
    Contents contents;
    readstat_parser_t* parser = readstat_parser_init();
    readstat_set_variable_handler(parser, onVariable);
    readstat_set_value_handler(parser, onValue);
    readstat_set_value_label_handler(parser, onLabel);
    const auto parse =
        kindOf(path) == TStatFileKind::Stata ? readstat_parse_dta : readstat_parse_sav;
    parse(parser, QFile::encodeName(path).constData(), &contents);
    readstat_parser_free(parser);
    return contents;
}

// Columns of the rows' tables but their number, all parts side by side.
QVector<QStringList> rowsOf(const SqliteRows& database, const QString& suffix = QString())
{
    QVector<QStringList> all;
    for (const QStringList& table :
        database.rows("SELECT table_name FROM tessel_records ORDER BY rowid")) {
        const auto rows =
            database.rows("SELECT * FROM " + quoted(table.first() + suffix) + " ORDER BY row");
        all.resize(rows.size());
        for (int r = 0; r < rows.size(); ++r)
            all[r].append(rows.at(r).mid(1));
    }
    return all;
}

// The label that a view is to show; null where it shows the value.
QString labelOf(const Contents& contents, int column, const Cell& cell)
{
    const auto codes = contents.codes.value(contents.sets.at(column));
    for (const auto& [code, label] : codes) {
        const bool isText = contents.areTexts.at(column);
        const QString value = cell.kind.isEmpty() ? cell.value : cell.kind;
        if (!value.isNull() && (isText ? trimmedEnd(code) == value : code == value))
            return label.isEmpty() ? QString() : label;
    }
    return codes.isEmpty() ? QString() : cell.kind;
}

// Kinds of missing values by table column and row.
QVector<QStringList> missingOf(const SqliteRows& database)
{
    const bool isThere = database.value("SELECT count(*) FROM sqlite_master WHERE name = "
                                        "'tessel_missing'")
        == "1";
    return isThere ? database.rows(
               "SELECT v.name, m.row, m.kind FROM tessel_missing m JOIN "
               "tessel_variables v USING (table_name, column_name) ORDER BY m.row, v.rowid")
                   : QVector<QStringList>();
}

// Lines of fields divided by tabs, whose texts have their control characters as two characters.
const char havenScript[] = R"R(
suppressMessages(library(haven))
escaped <- function(text) {
  text <- gsub("\\", "\\\\", enc2utf8(text), fixed = TRUE)
  text <- gsub("\t", "\\t", text, fixed = TRUE)
  text <- gsub("\r", "\\r", text, fixed = TRUE)
  gsub("\n", "\\n", text, fixed = TRUE)
}
# Dates become what the file holds again; the way there and back rounds.
plain <- function(x) {
  if (inherits(x, "Date")) return((as.numeric(x) + ifelse(stata, 3653, 141428)) * ifelse(stata, 1, 86400))
  if (inherits(x, "POSIXct")) return(if (stata) (as.numeric(x) + 315619200) * 1000 else as.numeric(x) + 12219379200)
  if (inherits(x, "difftime")) return(as.numeric(x, units = "secs"))
  as.numeric(x)
}
shown <- function(x) {
  if (is.character(x)) {
    x <- as.vector(unclass(x)) # codes of missing values are values
    return(ifelse(is.na(x), "-", paste0("t", escaped(x))))
  }
  isDate <- inherits(x, c("Date", "POSIXct", "difftime"))
  tags <- if (is.double(x) && !isDate) na_tag(x) else rep(NA_character_, length(x))
  number <- suppressWarnings(plain(x))
  ifelse(!is.na(tags), paste0("m.", tags),
    ifelse(is.na(number), "-", paste0(ifelse(isDate, "d", "n"), sprintf("%.17g", number))))
}
put <- function(lines) writeLines(lines, out, useBytes = TRUE)
arguments <- commandArgs(TRUE)
for (i in seq(2, length(arguments))) {
  stata <- grepl("\\.dta$", arguments[i])
  data <- tryCatch(
    if (stata) read_dta(arguments[i]) else read_sav(arguments[i], user_na = TRUE),
    error = function(e) NULL)
  if (is.null(data)) next
  out <- file(file.path(arguments[1], paste0(i - 2, ".txt")), "wb")
  for (name in names(data)) {
    x <- data[[name]]
    label <- attr(x, "label", exact = TRUE)
    put(paste("V", escaped(name), escaped(if (is.null(label)) "" else label), sep = "\t"))
    labels <- attr(x, "labels", exact = TRUE)
    if (length(labels))
      put(paste("L", shown(unname(labels)), escaped(names(labels)), sep = "\t"))
    if (length(x)) put(paste("C", shown(x), sep = "\t"))
  }
  close(out)
}
)R";

QString unescaped(const QByteArray& bytes)
{
    QString text;
    const QString escaped = QString::fromUtf8(bytes);
    for (int i = 0; i < escaped.size(); ++i) {
        if (escaped.at(i) != '\\') {
            text += escaped.at(i);
            continue;
        }
        const QChar letter = escaped.at(++i);
        text += letter == 't' ? '\t' : letter == 'r' ? '\r' : letter == 'n' ? '\n' : letter;
    }
    return text;
}

// What haven reads of all files, in one run.
class HavenFiles {
public:
    HavenFiles()
        : m_files(samplePaths())
    {
        const QString program = QStandardPaths::findExecutable("Rscript");
        if (program.isEmpty() || runProgram(program, { "-e", "library(haven)" }).status != 0)
            return;
        m_files.append({ path("t.sav"), path("t.dta") });
        isThere = writeSpss(path("t.sav")) && writeStata(path("t.dta"))
            && writeFile(path("read.R"), havenScript)
            && runProgram(program, QStringList { path("read.R"), m_folder.path() } + m_files).status
                == 0;
        if (!isThere)
            qFatal("haven does not run");
    }

    QString path(const QString& name) const
    {
        return m_folder.filePath(name);
    }
    QString textOf(const QString& file) const
    {
        return path(QString::number(m_files.indexOf(file)) + ".txt");
    }
    bool isThere = false;

private:
    QTemporaryDir m_folder;
    QStringList m_files;
};

} // namespace

class tst_BuildStat : public QObject {
    Q_OBJECT

private slots:
    void init();
    void missingCodes();
    void missingKinds();
    void corpus_data();
    void corpus();
    void haven_data();
    void haven();

private:
    QString path(const QString& name) const
    {
        return m_folder->filePath(name);
    }
    Outcome build(const QString& file) const
    {
        return runTessel({ "build", file, "--to", path("t.sqlite") });
    }
    static void compareHaven(const SqliteRows& database, const QByteArray& text);

    std::unique_ptr<QTemporaryDir> m_folder;
};

void tst_BuildStat::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
}

// Codes of missing values stay values; the view without them knows ranges with open ends.
void tst_BuildStat::missingCodes()
{
    QVERIFY(writeSpss(path("t.sav")));
    const Outcome outcome = build(path("t.sav"));
    QVERIFY2(outcome.status == 0, outcome.errors.constData());
    const SqliteRows database(path("t.sqlite"));
    const QString none;
    QCOMPARE(rowsOf(database),
        (QVector<QStringList> { { "1", "-2", "89", "5", "2", "x'" },
            { "99", "-1", "90", "6.5", "0", "y" },
            { "0.10000000000000001", "7", "1.0000000000000001e+300", "4.9000000000000004", "-9",
                "y" },
            { "3", "0", "0", "7", "1", "y" } }));
    QCOMPARE(rowsOf(database, "_valid"),
        (QVector<QStringList> { { "1", none, "89", none, none, none },
            { none, none, none, none, none, "y" },
            { none, none, none, "4.9000000000000004", none, "y" },
            { "3", "0", "0", "7", none, "y" } }));
    QCOMPARE(database.rows("SELECT CODED FROM t_labels"),
        (QVector<QStringList> { { "Yes" }, { "Refused" }, { "0.1" }, { "3.0" } }));
    QCOMPARE(database.rows("SELECT WHOLE FROM t_labels"),
        (QVector<QStringList> { { "No" }, { "0" }, { "-9" }, { "Yes" } }));
    QCOMPARE(database.value("SELECT count(*) FROM sqlite_master WHERE name LIKE 'tessel_missing%'"),
        QStringLiteral("0"));
}

void tst_BuildStat::missingKinds()
{
    QVERIFY(writeStata(path("t.dta")));
    const Outcome outcome = build(path("t.dta"));
    QVERIFY2(outcome.status == 0, outcome.errors.constData());
    const SqliteRows database(path("t.sqlite"));
    const QString none;
    const QVector<QStringList> values { { none, none }, { none, none }, { none, none },
        { "1", "1.5" }, { "2", "2.5" } };
    QCOMPARE(rowsOf(database), values);
    QCOMPARE(rowsOf(database, "_valid"), values);
    QCOMPARE(database.rows("SELECT * FROM tessel_missing ORDER BY row, column_name"),
        (QVector<QStringList> { { "t", "coded", "1", ".a" }, { "t", "plain", "1", ".a" },
            { "t", "coded", "2", ".z" }, { "t", "plain", "2", ".z" } }));
    QCOMPARE(rowsOf(database, "_labels"),
        (QVector<QStringList> { { "Won't say", none }, { ".z", none }, { none, none },
            { "Yes", "1.5" }, { "2", "2.5" } }));
    QString plan;
    for (const QStringList& step : database.rows("EXPLAIN QUERY PLAN SELECT coded FROM t_labels"))
        plan += step.last() + '\n';
    QVERIFY2(plan.contains("SEARCH m USING COVERING INDEX tessel_missing_place"), qPrintable(plan));
}

void tst_BuildStat::corpus_data()
{
    QTest::addColumn<QString>("file");
    for (const QString& file : samplePaths())
        QTest::newRow(qPrintable(QFileInfo(file).fileName())) << file;
    if (!qEnvironmentVariableIsSet("TESSEL_CORPUS"))
        QTest::newRow("none") << QString();
}

void tst_BuildStat::corpus()
{
    SKIP_WITHOUT_SAMPLES();
    QFETCH(QString, file);
    const Outcome outcome = build(file);
    if (!readStatDescription(file, kindOf(file)).isWhole()) {
        QCOMPARE(outcome.status, 1);
        QVERIFY(!QFile::exists(path("t.sqlite")));
        return;
    }
    QVERIFY2(outcome.status == 0, outcome.errors.constData());
    const Contents contents = read(file);
    const SqliteRows database(path("t.sqlite"));
    QCOMPARE(database.value("PRAGMA integrity_check"), QStringLiteral("ok"));
    const auto variables = database.rows(
        "SELECT name, label, coalesce(value_set, '') FROM tessel_variables ORDER BY rowid");
    QCOMPARE(variables.size(), contents.names.size());
    QStringList sets;
    for (int v = 0; v < variables.size(); ++v) {
        const bool isThere = contents.codes.contains(contents.sets.at(v));
        QCOMPARE(variables.at(v),
            (QStringList { contents.names.at(v), contents.labels.at(v),
                isThere ? contents.sets.at(v) : QLatin1String("") }));
    }
    for (auto set = contents.codes.begin(); set != contents.codes.end(); ++set) {
        auto found = database.rows("SELECT DISTINCT code, label, position FROM tessel_values WHERE "
                                   "value_set = '"
            + set.key() + "' ORDER BY position");
        QCOMPARE(found.size(), set->size());
        for (int i = 0; i < found.size(); ++i) {
            const bool isSame = found.at(i).at(0) == set->at(i).first
                || plainNumber(found.at(i).at(0)) == set->at(i).first;
            QVERIFY2(isSame, qPrintable(set.key() + ' ' + found.at(i).at(0)));
            QCOMPARE(found.at(i).at(1), set->at(i).second);
        }
    }
    const auto rows = rowsOf(database);
    const auto labels = rowsOf(database, "_labels");
    QVector<QStringList> kinds;
    QCOMPARE(contents.names.isEmpty() ? 0 : rows.size(), contents.rows.size());
    for (int r = 0; r < contents.rows.size(); ++r) {
        for (int v = 0; v < variables.size(); ++v) {
            const Cell& cell = contents.rows.at(r).at(v);
            const QString found = rows.at(r).at(v);
            const QByteArray place = QStringLiteral("row %1 %2: '%3', not '%4'")
                                         .arg(r + 1)
                                         .arg(contents.names.at(v), found, cell.value)
                                         .toUtf8();
            const QString plain = contents.areTexts.at(v) ? found : plainNumber(found);
            QVERIFY2(
                plain == cell.value && plain.isNull() == cell.value.isNull(), place.constData());
            if (!cell.kind.isEmpty())
                kinds.append({ contents.names.at(v), QString::number(r + 1), cell.kind });
            const QString label = labelOf(contents, v, cell);
            const QString shown = labels.at(r).at(v);
            QVERIFY2(label.isEmpty() ? plainNumber(shown) == plainNumber(found)
                        || plainNumber(shown).toDouble()
                            == QString::number(found.toDouble(), 'g', 15).toDouble()
                                     : shown == label,
                (place + " " + shown.toUtf8() + " " + label.toUtf8()).constData());
        }
    }
    QCOMPARE(missingOf(database), kinds);
}

void tst_BuildStat::haven_data()
{
    corpus_data();
    QTest::newRow("own SPSS") << QStringLiteral("sav");
    QTest::newRow("own Stata") << QStringLiteral("dta");
}

void tst_BuildStat::compareHaven(const SqliteRows& database, const QByteArray& text)
{
    const auto variables =
        database.rows("SELECT name, label, coalesce(value_set, '') FROM tessel_variables ORDER BY "
                      "rowid");
    const auto rows = rowsOf(database);
    QMap<QPair<QString, int>, QString> kinds;
    for (const QStringList& missing : missingOf(database))
        kinds.insert({ missing.at(0), missing.at(1).toInt() }, missing.at(2));
    int variable = -1;
    int row = 0;
    int labelled = 0;
    QVector<QStringList> codes;
    QVERIFY(text.endsWith('\n') || text.isEmpty());
    for (const QByteArray& line : text.split('\n')) {
        const QList<QByteArray> fields = line.split('\t');
        const QString value = unescaped(fields.value(1)).mid(1);
        const char type = fields.value(1).isEmpty() ? '\0' : fields.at(1).at(0);
        const QString name = variables.value(variable).value(0);
        if (fields.first() == "V" || line.isEmpty()) {
            QVERIFY2(variable < 0 || row == rows.size(), qPrintable(name));
            QVERIFY2(labelled == 0 || labelled == codes.size(), qPrintable(name));
            if (line.isEmpty())
                break;
            ++variable;
            row = labelled = 0;
            QCOMPARE(unescaped(fields.at(1)), variables.at(variable).at(0));
            QCOMPARE(unescaped(fields.at(2)), variables.at(variable).at(1));
            codes = database.rows("SELECT DISTINCT code, label, position FROM tessel_values WHERE "
                                  "value_set = '"
                + variables.at(variable).at(2) + "' ORDER BY position");
        } else if (fields.first() == "L") {
            ++labelled;
            const bool isThere = std::any_of(codes.begin(), codes.end(), [&](const auto& code) {
                const bool isSame = type == 'n' ? plainNumber(code.at(0)) == plainNumber(value)
                                                : trimmedEnd(code.at(0)) == trimmedEnd(value);
                return isSame && code.at(1) == unescaped(fields.at(2));
            });
            QVERIFY2(isThere, (name.toUtf8() + ' ' + line).constData());
        } else {
            const QString found = rows.at(row++).at(variable);
            const QString kind = kinds.value({ name, row });
            const QByteArray place = name.toUtf8() + ' ' + QByteArray::number(row) + ' ' + line
                + " '" + found.toUtf8() + '\'';
            QVERIFY2(kind == (type == 'm' ? value : QString()), place.constData());
            if (type == 't')
                QVERIFY2(found == trimmedEnd(value), place.constData());
            else if (type == 'n')
                QVERIFY2(plainNumber(found) == plainNumber(value), place.constData());
            else if (type == 'd')
                QVERIFY2(std::abs(found.toDouble() - value.toDouble())
                        <= 1e-3 + 1e-9 * std::abs(value.toDouble()),
                    place.constData());
            else
                QVERIFY2(found.isNull(), place.constData());
        }
    }
    QCOMPARE(variable + 1, variables.size());
}

void tst_BuildStat::haven()
{
    static const HavenFiles haven;
    if (!haven.isThere)
        QSKIP("R with its package haven (Debian: r-cran-haven) is not here to compare with");
    QFETCH(QString, file);
    if (file.isEmpty())
        QSKIP("TESSEL_CORPUS does not name the folder of the sample files");
    if (!file.contains('/'))
        file = haven.path("t." + file);
    if (!readStatDescription(file, kindOf(file)).isWhole())
        QSKIP("the file is damaged or encrypted");
    if (!QFile::exists(haven.textOf(file)))
        QSKIP("haven does not read this file");
    QCOMPARE(build(file).status, 0);
    compareHaven(SqliteRows(path("t.sqlite")), readFile(haven.textOf(file)));
}

QTEST_GUILESS_MAIN(tst_BuildStat)
#include "tst_BuildStat.moc"
