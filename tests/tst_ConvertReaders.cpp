// What R's haven and PSPP read of the files that "tessel convert" makes, compared cell by cell with
// what libreadstat reads, which other tests compare with slices of the data.
#include "CsvRows.h"
#include "RunTessel.h"
#include "StatContents.h"

#include <QStandardPaths>
#include <QtTest>

class tst_ConvertReaders : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void haven_data();
    void haven();
    void pspp_data();
    void pspp();
    void psppDictionary_data();
    void psppDictionary();
    void languages_data();
    void languages();
    void psppLongTexts();

private:
    static void addSources();
    // The files that become of the sources.
    QStringList made(const QStringList& sources, const QString& format, QTemporaryDir& folder);
    // What PSPP shows of the dictionary of a file.
    QVector<QStringList> shownByPspp(const QString& file, const QTemporaryDir& folder);

    QString m_r;
    QString m_pspp;
};

namespace {

const char script[] = R"R(
suppressMessages(library(haven))
plain <- function(x) gsub("\n", "\\n", gsub("\t", "\\t", gsub("\\", "\\\\", enc2utf8(x), fixed = TRUE), fixed = TRUE), fixed = TRUE)
shown <- function(x) {
    if (is.character(x)) return(ifelse(is.na(x), "", plain(sub(" +$", "", x))))
    x <- as.double(unclass(x))
    tags <- na_tag(x)
    ifelse(is.na(x), ifelse(is.na(tags), "", paste0(".", tags)), sprintf("%.17g", x))
}
# haven counts dates from 1970, the files from 1960 and from 1582
stored <- function(x, isStata) {
    number <- as.double(unclass(x))
    if (inherits(x, "Date")) return(if (isStata) number + 3653 else (number + 141428) * 86400)
    if (inherits(x, "POSIXct")) return(if (isStata) round((number + 3653 * 86400) * 1000) else number + 12219379200)
    if (inherits(x, "difftime")) return(if (isStata) number * 1000 else number)
    attributes(x) <- NULL
    x
}
files <- commandArgs(TRUE)
for (file in files) {
    data <- if (grepl("dta$", file)) read_dta(file) else read_sav(file, user_na = TRUE)
    out <- file(paste0(file, ".txt"), "wb")
    say <- function(...) writeLines(paste(..., sep = "\t"), out, useBytes = TRUE)
    for (name in names(data)) {
        x <- data[[name]]
        label <- attr(x, "label")
        say("V", name, if (is.null(label)) "" else plain(label))
        labels <- attr(x, "labels")
        if (!is.null(labels)) say("L", name, shown(unname(labels)), plain(names(labels)))
        if (!is.null(attr(x, "na_values"))) say("M", name, shown(attr(x, "na_values")))
        if (!is.null(attr(x, "na_range"))) say("R", name, paste(shown(attr(x, "na_range")), collapse = ":"))
    }
    if (nrow(data) > 0) {
        cells <- lapply(data, function(x) shown(stored(x, grepl("dta$", file))))
        do.call(say, c(list("C"), cells))
    }
    close(out)
}
)R";

QString unescaped(const QString& text)
{
    QString result;
    for (int i = 0; i < text.size(); ++i) {
        const bool isMark = text.at(i) == '\\' && i + 1 < text.size();
        const QChar next = isMark ? text.at(i + 1) : QChar();
        result += !isMark ? text.at(i)
            : next == 'n' ? QChar('\n')
            : next == 't' ? QChar('\t')
                          : next;
        i += isMark ? 1 : 0;
    }
    return result;
}

// Missing values as PSPP shows them: "1 THRU 5; 9", or texts in quotes, each as wide as it is.
QStringList psppMissing(const QString& shown, bool isText)
{
    QStringList codes;
    if (isText && !shown.isEmpty()) {
        for (QString text : shown.mid(1, shown.size() - 2).split("\"; \"")) {
            while (text.endsWith(' '))
                text.chop(1);
            codes.append(text.replace("\"\"", "\""));
        }
    } else if (!shown.isEmpty()) {
        for (const QString& part : shown.split("; ")) {
            QStringList bounds;
            for (const QString& bound : part.split(" THRU "))
                bounds.append(StatContents::numberText(bound.toDouble()));
            codes.append(bounds.join(':'));
        }
    }
    codes.sort();
    return codes;
}

} // namespace

void tst_ConvertReaders::initTestCase()
{
    m_r = QStandardPaths::findExecutable("Rscript");
    if (!m_r.isEmpty() && runProgram(m_r, { "-e", "library(haven)" }).status != 0)
        m_r.clear();
    m_pspp = QStandardPaths::findExecutable("pspp");
}

void tst_ConvertReaders::addSources()
{
    QTest::addColumn<QStringList>("sources");
    const QDir examples(QStringLiteral(TESSEL_EXAMPLES));
    QTest::newRow("census") << QStringList { examples.filePath("census.dcf"),
        examples.filePath("census.dat") };
    QTest::newRow("household.sav") << QStringList { examples.filePath("household.sav") };
    QTest::newRow("person.dta") << QStringList { examples.filePath("person.dta") };
    if (!qEnvironmentVariableIsSet("TESSEL_CORPUS"))
        return;
    const QString corpus = qEnvironmentVariable("TESSEL_CORPUS");
    const QString popstan = corpus + "/cspro-json/popstan-census-full";
    QTest::newRow("popstan") << QStringList { popstan + ".dcf", popstan + ".dat" };
    for (const QString& name : QDir(corpus + "/csdb").entryList({ "*.csdb" }))
        QTest::newRow(qPrintable(name)) << QStringList { corpus + "/csdb/" + name };
}

QStringList tst_ConvertReaders::made(
    const QStringList& sources, const QString& format, QTemporaryDir& folder)
{
    const Outcome outcome = runTessel(
        QStringList { "convert" } + sources + QStringList { "--to", format, "-o", folder.path() });
    if (outcome.status != 0)
        qWarning("%s", outcome.errors.constData());
    QStringList files;
    for (const QString& name : QDir(folder.path()).entryList({ "*.sav", "*.dta" }))
        files.append(folder.filePath(name));
    return files;
}

void tst_ConvertReaders::haven_data()
{
    addSources();
}

void tst_ConvertReaders::haven()
{
    if (m_r.isEmpty())
        QSKIP("r-cran-haven is not installed");
    QFETCH(QStringList, sources);
    QTemporaryDir folder;
    const QStringList files = made(sources, "spss", folder) + made(sources, "stata", folder);
    QVERIFY(files.size() >= 2);
    QVERIFY(writeFile(folder.filePath("read.R"), script));
    QStringList known = files;
    known.removeDuplicates();
    const Outcome read = runProgram(m_r, QStringList { folder.filePath("read.R") } + known);
    QVERIFY2(read.status == 0, read.errors.constData());
    for (const QString& file : qAsConst(known)) {
        const StatContents expected = StatContents::read(file);
        const bool isStata = file.endsWith(".dta");
        int variable = -1;
        int row = 0;
        QMap<QString, QMap<QString, QString>> labels;
        QMap<QString, QStringList> missing;
        for (const QString& line : QString::fromUtf8(readFile(file + ".txt")).split('\n')) {
            QStringList cells = line.split('\t');
            for (QString& cell : cells)
                cell = unescaped(cell);
            if (cells.first() == "V") {
                ++variable;
                QCOMPARE(cells.at(1), expected.variables.at(variable).name);
                QCOMPARE(cells.at(2), expected.variables.at(variable).label);
            } else if (cells.first() == "L") {
                labels[cells.at(1)].insert(cells.at(2), cells.at(3));
            } else if (cells.first() == "M" || cells.first() == "R") {
                missing[cells.at(1)].append(cells.at(2));
            } else if (cells.first() == "C") {
                QCOMPARE(cells.size() - 1, expected.variables.size());
                for (int c = 1; c < cells.size(); ++c) {
                    const QString& cell = expected.rows.at(row).at(c - 1);
                    if (cells.at(c) != (cell.isNull() ? QString("") : cell))
                        QFAIL(qPrintable(
                            QString("%1 row %2 %3: %4, %5")
                                .arg(file, QString::number(row + 1),
                                    expected.variables.at(c - 1).name, cells.at(c), cell)));
                }
                ++row;
            }
        }
        QCOMPARE(variable + 1, expected.variables.size());
        QCOMPARE(row, expected.rows.size());
        for (const StatContents::Variable& one : expected.variables) {
            QCOMPARE(labels.value(one.name), expected.labelsOf(one.name));
            if (!isStata) {
                QStringList codes = one.missing;
                codes.sort();
                QStringList found = missing.value(one.name);
                found.sort();
                QCOMPARE(found, codes);
            }
        }
    }
}

void tst_ConvertReaders::pspp_data()
{
    addSources();
}

// Values and, in place of values that have one, labels.
void tst_ConvertReaders::pspp()
{
    if (m_pspp.isEmpty())
        QSKIP("pspp is not installed");
    QFETCH(QStringList, sources);
    QTemporaryDir folder;
    for (const QString& file : made(sources, "spss", folder)) {
        QByteArray syntax = "SET MXWARNS=1000000.\nGET FILE='" + file.toUtf8() + "'.\n";
        for (const char* cells : { "VALUES", "LABELS" }) {
            syntax += "SAVE TRANSLATE /OUTFILE='" + file.toUtf8() + '.' + cells
                + "' /TYPE=CSV /REPLACE /FIELDNAMES /MISSING=IGNORE /CELLS=" + cells
                + " /TEXTOPTIONS FORMAT=PLAIN.\n";
        }
        QVERIFY(writeFile(folder.filePath("read.sps"), syntax));
        const Outcome read =
            runProgram(m_pspp, { "-o", folder.filePath("log.txt"), folder.filePath("read.sps") });
        QVERIFY2(read.status == 0, readFile(folder.filePath("log.txt")).constData());
        QVERIFY2(!readFile(folder.filePath("log.txt")).contains("warning"),
            readFile(folder.filePath("log.txt")).constData());
        const StatContents expected = StatContents::read(file);
        const auto values = csvRows(QString::fromUtf8(readFile(file + ".VALUES")));
        const auto labels = csvRows(QString::fromUtf8(readFile(file + ".LABELS")));
        QCOMPARE(values.size(), expected.rows.size() + 1);
        QCOMPARE(labels.size(), values.size());
        for (int v = 0; v < expected.variables.size(); ++v) {
            const StatContents::Variable& variable = expected.variables.at(v);
            const QMap<QString, QString> set = expected.labels.value(variable.set);
            QCOMPARE(values.at(0).at(v), variable.name);
            for (int r = 0; r < expected.rows.size(); ++r) {
                const QString& cell = expected.rows.at(r).at(v);
                QString found = values.at(r + 1).at(v);
                const bool isNumber = variable.type != READSTAT_TYPE_STRING;
                while (!isNumber && found.endsWith(' '))
                    found.chop(1);
                const bool isSame = isNumber && !cell.isNull() && found.trimmed() != "."
                    ? std::abs(found.toDouble() - cell.toDouble())
                        <= std::abs(cell.toDouble()) * 1e-14
                    : found.trimmed().isEmpty() || found.trimmed() == "." ? cell.isNull()
                                                                          : found == cell;
                const bool isDate =
                    variable.format.contains("DATE") || variable.format.contains("TIME");
                if (!isSame && !isDate)
                    QFAIL(qPrintable(
                        QString("%1 row %2 %3: %4, %5")
                            .arg(file, QString::number(r + 1), variable.name, found, cell)));
                if (set.contains(cell) && !cell.isNull())
                    QCOMPARE(labels.at(r + 1).at(v), set.value(cell));
            }
        }
    }
}

QVector<QStringList> tst_ConvertReaders::shownByPspp(
    const QString& file, const QTemporaryDir& folder)
{
    const QString syntax = folder.filePath("show.sps");
    const QString shown = folder.filePath("shown.csv");
    writeFile(syntax, "GET FILE='" + file.toUtf8() + "'.\nDISPLAY DICTIONARY.\n");
    const Outcome read = runProgram(m_pspp, { "-o", shown, syntax });
    return read.status == 0 ? csvRows(QString::fromUtf8(readFile(shown))) : QVector<QStringList>();
}

void tst_ConvertReaders::psppDictionary_data()
{
    addSources();
}

// Variable labels and missing values.
void tst_ConvertReaders::psppDictionary()
{
    if (m_pspp.isEmpty())
        QSKIP("pspp is not installed");
    QFETCH(QStringList, sources);
    QTemporaryDir folder;
    int missing = 0;
    for (const QString& file : made(sources, "spss", folder)) {
        const StatContents expected = StatContents::read(file);
        QVector<QStringList> shown = shownByPspp(file, folder);
        while (!shown.isEmpty() && shown.first().first() != "Table: Variables")
            shown.removeFirst();
        const QStringList heading = shown.value(1);
        QCOMPARE(heading.value(0), QString("Name")); // a column that is empty is not shown
        for (int v = 0; v < expected.variables.size(); ++v) {
            const StatContents::Variable& variable = expected.variables.at(v);
            const QStringList row = shown.value(v + 2);
            QCOMPARE(row.value(0), variable.name);
            QCOMPARE(row.value(heading.indexOf("Label")), variable.label);
            QStringList codes = variable.missing;
            codes.sort();
            QCOMPARE(psppMissing(row.value(heading.indexOf("Missing Values")),
                         variable.type == READSTAT_TYPE_STRING),
                codes);
            missing += codes.size();
        }
    }
    QVERIFY(missing > 0 || qstrcmp(QTest::currentDataTag(), "census") != 0);
}

void tst_ConvertReaders::languages_data()
{
    QTest::addColumn<QString>("language");
    QTest::addColumn<QStringList>("labels"); // of the variable, its codes and the file
    QTest::newRow("EN") << "EN" << QStringList { "Sex", "Male", "Unknown" };
    QTest::newRow("FR") << "FR" << QStringList { "Sexe", "Homme", "Inconnu" };
    QTest::newRow("JA") << "JA"
                        << QStringList { QString::fromUtf8("\xE6\x80\xA7\xE5\x88\xA5"),
                               QString::fromUtf8("\xE7\x94\xB7"),
                               QString::fromUtf8("\xE4\xB8\x8D\xE6\x98\x8E") };
}

void tst_ConvertReaders::languages()
{
    QFETCH(QString, language);
    QFETCH(QStringList, labels);
    QTemporaryDir folder;
    QVERIFY(writeFile(folder.filePath("d.dcf"),
        "\xEF\xBB\xBF[Dictionary]\nVersion=CSPro 7.7\nLabel=D\nName=D\nRecordTypeStart=0\n"
        "RecordTypeLen=0\nPositions=Absolute\nZeroFill=No\nDecimalChar=No\n\n[Languages]\n"
        "EN=English\nFR=French\nJA=Japanese\n\n[Level]\nLabel=L\nName=L\n\n[IdItems]\n\n[Record]\n"
        "Label=R\nName=R\nRecordTypeValue=''\nRecordLen=1\n\n[Item]\n"
        "Label=Sex|Sexe|\xE6\x80\xA7\xE5\x88\xA5\nName=SEX\nStart=1\nLen=1\n\n[ValueSet]\nLabel=S\n"
        "Name=S\nValue=1;Male|Homme|\xE7\x94\xB7\nValue=9;Unknown|Inconnu|"
        "\xE4\xB8\x8D\xE6\x98\x8E\n"
        "Name=MISSING,Special\n"));
    QVERIFY(writeFile(folder.filePath("d.dat"), "1\n9\n"));
    const QStringList sources { folder.filePath("d.dcf"), folder.filePath("d.dat"), "--language",
        language };
    QStringList files = made(sources, "spss", folder) + made(sources, "stata", folder);
    files.removeDuplicates();
    QCOMPARE(files.size(), 2);
    if (!m_pspp.isEmpty()) {
        QString shown;
        for (const QStringList& row : shownByPspp(folder.filePath("R.sav"), folder))
            shown += row.join('\t') + '\n';
        for (const QString& label : labels)
            QVERIFY2(shown.contains(label), qPrintable(shown));
        QVERIFY2(shown.contains("SEX\t1\t" + labels.first() + '\t'), qPrintable(shown));
    }
    if (m_r.isEmpty())
        QSKIP("r-cran-haven is not installed");
    QVERIFY(writeFile(folder.filePath("read.R"), script));
    QCOMPARE(runProgram(m_r, QStringList { folder.filePath("read.R") } + files).status, 0);
    for (const QString& file : qAsConst(files)) {
        const QString read = QString::fromUtf8(readFile(file + ".txt"));
        const QString code = file.endsWith(".dta") ? ".a" : "9";
        for (const QString& line : { "V\tSEX\t" + labels.at(0), "L\tSEX\t1\t" + labels.at(1),
                 "L\tSEX\t" + code + '\t' + labels.at(2) })
            QVERIFY2(read.contains(line + '\n'), qPrintable(read));
    }
}

void tst_ConvertReaders::psppLongTexts()
{
    if (m_pspp.isEmpty())
        QSKIP("pspp is not installed");
    QTemporaryDir folder;
    const QByteArray dictionary =
        "[Dictionary]\nVersion=CSPro 7.7\nLabel=D\nName=D\nRecordTypeStart=1\nRecordTypeLen=1\n"
        "Positions=Relative\nZeroFill=No\nDecimalChar=No\n\n[Level]\nLabel=Q\nName=Q\n\n[IdItems]\n"
        "\n[Item]\nLabel=P\nName=P\nStart=2\nLen=2\nDataType=Numeric\n\n[Record]\nLabel=R\nName=R\n"
        "RecordTypeValue='1'\nRecordLen=9000\n\n[Item]\nLabel=T\nName=T\nStart=4\nLen=8000\n"
        "DataType=Alpha\n";
    QVERIFY(writeFile(folder.filePath("d.dcf"), dictionary));
    QVERIFY(writeFile(folder.filePath("d.dat"), "101" + QByteArray(8000, 'x') + "\n102y\n"));
    const QStringList files =
        made({ folder.filePath("d.dcf"), folder.filePath("d.dat") }, "spss", folder);
    QCOMPARE(files.size(), 1);
    QVERIFY(writeFile(folder.filePath("read.sps"),
        "SET MXWARNS=100000.\nGET FILE='" + files.first().toUtf8()
            + "'.\nCOMPUTE N=LENGTH(RTRIM(T)).\nSAVE TRANSLATE /OUTFILE='"
            + folder.filePath("n.csv").toUtf8() + "' /TYPE=CSV /REPLACE /KEEP=N.\n"));
    QCOMPARE(runProgram(m_pspp, { "-o", folder.filePath("log.txt"), folder.filePath("read.sps") })
                 .status,
        0);
    QCOMPARE(csvRows(readFile(folder.filePath("n.csv"))),
        (QVector<QStringList> { { "8000" }, { "1" } }));
}

QTEST_GUILESS_MAIN(tst_ConvertReaders)
#include "tst_ConvertReaders.moc"
