// SPSS and Stata files made of each other and of themselves: what the plan does not speak of is as
// it was.
#include "RunTessel.h"
#include "StatContents.h"

#include <QDate>
#include <QtTest>

#include <cmath>

class tst_ConvertStat : public QObject {
    Q_OBJECT

private slots:
    void init();
    void itself_data();
    void itself();
    void thereAndBack_data();
    void thereAndBack();
    void dates();
    void kindsBecomeCodes();

private:
    QString path(const QString& name) const
    {
        return m_folder->filePath(name);
    }
    // The file that becomes of another.
    QString made(const QString& file, const QString& format, const QString& folder = "out")
    {
        m_outcome =
            runTessel({ "convert", file, "--to", format, "--overwrite", "-o", path(folder) });
        return path(folder) + '/' + QFileInfo(file).completeBaseName()
            + (format == "stata" ? ".dta" : ".sav");
    }

    Outcome m_outcome;
    std::unique_ptr<QTemporaryDir> m_folder;
};

namespace {

void addFiles(const QStringList& endings)
{
    QTest::addColumn<QString>("file");
    QDir examples(QStringLiteral(TESSEL_EXAMPLES));
    for (const QString& name : examples.entryList(endings))
        QTest::newRow(qPrintable(name)) << examples.filePath(name);
    if (!qEnvironmentVariableIsSet("TESSEL_CORPUS"))
        return;
    for (const char* folder : { "sav", "dta" }) {
        const QDir corpus(qEnvironmentVariable("TESSEL_CORPUS") + '/' + folder);
        for (const QString& name : corpus.entryList(endings))
            QTest::newRow(qPrintable(name)) << corpus.filePath(name);
    }
}

// A change of unit may round what has no end in binary numbers.
bool isSame(const QString& found, const QString& expected)
{
    bool areNumbers[2] {};
    const double first = found.toDouble(&areNumbers[0]);
    const double second = expected.toDouble(&areNumbers[1]);
    return found == expected
        || (areNumbers[0] && areNumbers[1] && std::abs(first - second) <= std::abs(second) * 1e-15);
}

} // namespace

void tst_ConvertStat::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
}

void tst_ConvertStat::itself_data()
{
    addFiles({ "*.sav", "*.zsav", "*.dta" });
}

// Of each file that is read one of the same format is made.
void tst_ConvertStat::itself()
{
    QFETCH(QString, file);
    const bool isStata = file.endsWith(".dta");
    const QString copy = made(file, isStata ? "stata" : "spss");
    if (m_outcome.status != 0)
        QSKIP(qPrintable("not read: " + QString::fromUtf8(m_outcome.errors).section('\n', 0, 0)));
    const StatContents before = StatContents::read(file);
    const StatContents after = StatContents::read(copy);
    QCOMPARE(after.error, 0);
    QCOMPARE(after.variables.size(), before.variables.size());
    QCOMPARE(after.rows.size(), before.rows.size());
    for (int v = 0; v < before.variables.size(); ++v) {
        const StatContents::Variable& variable = before.variables.at(v);
        const QString& name = variable.name;
        QCOMPARE(after.variables.at(v).label, variable.label);
        if (!isStata) {
            QCOMPARE(after.variables.at(v).missing, variable.missing);
            if (variable.measure != READSTAT_MEASURE_UNKNOWN)
                QCOMPARE(after.variables.at(v).measure, variable.measure);
        }
        if (variable.type != READSTAT_TYPE_STRING && variable.type != READSTAT_TYPE_STRING_REF)
            QCOMPARE(after.variables.at(v).format, variable.format);
        QMap<QString, QString> labels = before.labelsOf(name);
        if (!m_outcome.errors.contains("value label"))
            QCOMPARE(after.labels.value(after.variables.at(v).set), labels);
        for (int r = 0; r < before.rows.size(); ++r) {
            const QString& expected = before.rows.at(r).at(v);
            if (expected.endsWith("inf")) // told, and missing
                QVERIFY2(m_outcome.errors.contains("too large"), m_outcome.errors.constData());
            else
                QCOMPARE(after.rows.at(r).at(v), expected);
        }
    }
}

void tst_ConvertStat::thereAndBack_data()
{
    addFiles({ "*.sav" });
}

// To Stata and back: codes that became kinds of missing values come back as other codes.
void tst_ConvertStat::thereAndBack()
{
    QFETCH(QString, file);
    const QString stata = made(file, "stata", "stata");
    if (m_outcome.status != 0)
        QSKIP(qPrintable("not read: " + QString::fromUtf8(m_outcome.errors).section('\n', 0, 0)));
    const bool isCut = m_outcome.errors.contains("cut");
    const bool isRounded = m_outcome.errors.contains("rounded");
    const QString spss = made(stata, "spss", "spss");
    QVERIFY2(m_outcome.status == 0, m_outcome.errors.constData());
    const StatContents before = StatContents::read(file);
    const StatContents between = StatContents::read(stata);
    const StatContents after = StatContents::read(spss);
    QCOMPARE(after.rows.size(), before.rows.size());
    QCOMPARE(after.variables.size(), before.variables.size());
    for (int v = 0; v < before.variables.size(); ++v) {
        if (!isCut)
            QCOMPARE(after.variables.at(v).label, before.variables.at(v).label);
        for (int r = 0; r < before.rows.size(); ++r) {
            const bool isKind = between.rows.at(r).at(v).size() == 2
                && between.rows.at(r).at(v).startsWith('.')
                && between.variables.at(v).type != READSTAT_TYPE_STRING;
            const QString& found = after.rows.at(r).at(v);
            const QString& expected = before.rows.at(r).at(v);
            if (isKind)
                QVERIFY(!found.isNull() && !expected.isNull());
            else if (!isCut && !isRounded)
                QVERIFY2(isSame(found, expected),
                    qPrintable(QString("%1 row %2: %3, %4")
                                   .arg(before.variables.at(v).name, QString::number(r + 1), found,
                                       expected)));
        }
    }
}

void tst_ConvertStat::dates()
{
    const double day = 86400;
    const double first = double(QDate(1582, 10, 14).daysTo(QDate(2020, 2, 29))) * day;
    readstat_writer_t* writer = readstat_writer_init();
    QByteArray bytes;
    readstat_set_data_writer(writer, [](const void* data, size_t size, void* context) -> ssize_t {
        static_cast<QByteArray*>(context)->append(static_cast<const char*>(data), int(size));
        return ssize_t(size);
    });
    const char* formats[] = { "DATE11", "DATETIME24.3", "TIME8", "ADATE10", "F8.2" };
    const double values[] = { first, first + 3661.123, 3661, first, 1.5 };
    readstat_variable_t* variables[5];
    for (int i = 0; i < 5; ++i) {
        variables[i] = readstat_add_variable(
            writer, QByteArray("V").append(char('1' + i)).constData(), READSTAT_TYPE_DOUBLE, 0);
        readstat_variable_set_format(variables[i], formats[i]);
    }
    readstat_begin_writing_sav(writer, &bytes, 1);
    readstat_begin_row(writer);
    for (int i = 0; i < 5; ++i)
        readstat_insert_double_value(writer, variables[i], values[i]);
    readstat_end_row(writer);
    readstat_end_writing(writer);
    readstat_writer_free(writer);
    QVERIFY(writeFile(path("d.sav"), bytes));
    const StatContents found = StatContents::read(made(path("d.sav"), "stata"));
    QVERIFY2(m_outcome.status == 0, m_outcome.errors.constData());
    const double days = double(QDate(1960, 1, 1).daysTo(QDate(2020, 2, 29)));
    QCOMPARE(found.rows.at(0),
        (QStringList { StatContents::numberText(days),
            StatContents::numberText((days * day + 3661.123) * 1000), "3661000",
            StatContents::numberText(days), "1.5" }));
    QStringList shown;
    for (const StatContents::Variable& variable : found.variables)
        shown.append(variable.format);
    QCOMPARE(shown, (QStringList { "%td", "%tc", "%tcHH:MM:SS", "%td", "%8.2f" }));
    const StatContents back = StatContents::read(made(path("out/d.dta"), "spss", "back"));
    for (int i = 0; i < 5; ++i)
        QCOMPARE(back.rows.at(0).at(i), StatContents::numberText(values[i]));
}

// Three kinds are three codes, more are a range; those without a label are called by their names,
// and where a value is one of the codes others are taken.
void tst_ConvertStat::kindsBecomeCodes()
{
    readstat_writer_t* writer = readstat_writer_init();
    QByteArray bytes;
    readstat_set_data_writer(writer, [](const void* data, size_t size, void* context) -> ssize_t {
        static_cast<QByteArray*>(context)->append(static_cast<const char*>(data), int(size));
        return ssize_t(size);
    });
    readstat_label_set_t* labels = readstat_add_label_set(writer, READSTAT_TYPE_INT32, "few");
    readstat_label_int32_value(labels, 1, "One");
    readstat_label_tagged_value(labels, 'b', "Refused");
    readstat_variable_t* few = readstat_add_variable(writer, "few", READSTAT_TYPE_INT8, 0);
    readstat_variable_set_label_set(few, labels);
    readstat_variable_t* many = readstat_add_variable(writer, "many", READSTAT_TYPE_INT16, 0);
    readstat_variable_t* taken = readstat_add_variable(writer, "taken", READSTAT_TYPE_DOUBLE, 0);
    readstat_writer_set_file_format_version(writer, 118);
    readstat_begin_writing_dta(writer, &bytes, 5);
    const char kinds[] = { 'a', 'b', 'd', 'z' };
    for (const char kind : kinds) {
        readstat_begin_row(writer);
        readstat_insert_tagged_missing_value(writer, few, kind == 'a' ? 'a' : 'b');
        readstat_insert_tagged_missing_value(writer, many, kind);
        readstat_insert_tagged_missing_value(writer, taken, 'c');
        readstat_end_row(writer);
    }
    readstat_begin_row(writer);
    readstat_insert_int8_value(writer, few, 1);
    readstat_insert_missing_value(writer, many);
    readstat_insert_double_value(writer, taken, 2147483630.0);
    readstat_end_row(writer);
    QCOMPARE(int(readstat_end_writing(writer)), int(READSTAT_OK));
    readstat_writer_free(writer);
    QVERIFY(writeFile(path("k.dta"), bytes));
    const StatContents found = StatContents::read(made(path("k.dta"), "spss"));
    QVERIFY2(m_outcome.status == 0, m_outcome.errors.constData());
    QCOMPARE(found.rows.at(0), (QStringList { "102", "32742", "2147483650" }));
    QCOMPARE(found.rows.at(3), (QStringList { "103", "32767", "2147483650" }));
    QCOMPARE(found.rows.at(4), (QStringList { "1", QString(), "2147483630" }));
    QCOMPARE(found.variables.at(0).missing, (QStringList { "102", "103" }));
    QCOMPARE(found.variables.at(1).missing, QStringList { "32742:32767" });
    QCOMPARE(found.labelsOf("few"),
        (QMap<QString, QString> { { "1", "One" }, { "102", ".a" }, { "103", "Refused" } }));
    QCOMPARE(found.labelsOf("many").value("32745"), QString(".d"));
}

QTEST_GUILESS_MAIN(tst_ConvertStat)
#include "tst_ConvertStat.moc"
