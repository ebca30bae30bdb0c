// Codes of files of statistics programs that stand for something: kinds of missing values, missing
// codes, and texts with labels.
#include "RunTessel.h"
#include "StatContents.h"

#include <tessel_data/ConversionPlan.h>

#include <QtTest>

namespace {

// A Stata file, variable by variable.
class StataFile {
public:
    struct Cell {
        double number = 0;
        char tag = '\0';
    };
    struct Variable {
        QByteArray name;
        QByteArray format;
        readstat_type_t type = READSTAT_TYPE_DOUBLE;
        QVector<Cell> cells;
        QVector<QPair<int, QByteArray>> labels;
        QVector<QPair<char, QByteArray>> kindLabels;
    };

    static QByteArray bytes(const QVector<Variable>& variables)
    {
        QByteArray result;
        readstat_writer_t* const writer = readstat_writer_init();
        readstat_set_data_writer(writer, onData);
        readstat_writer_set_file_format_version(writer, 118);
        QVector<readstat_variable_t*> added;
        for (const Variable& variable : variables)
            added.append(add(writer, variable));
        const int rows = variables.first().cells.size();
        readstat_begin_writing_dta(writer, &result, rows);
        for (int row = 0; row < rows; ++row) {
            readstat_begin_row(writer);
            for (int v = 0; v < variables.size(); ++v)
                insert(writer, added.at(v), variables.at(v).cells.at(row));
            readstat_end_row(writer);
        }
        readstat_end_writing(writer);
        readstat_writer_free(writer);
        return result;
    }

private:
    static ssize_t onData(const void* data, size_t size, void* context)
    {
        static_cast<QByteArray*>(context)->append(static_cast<const char*>(data), int(size));
        return ssize_t(size);
    }
    static readstat_variable_t* add(readstat_writer_t* writer, const Variable& variable)
    {
        readstat_variable_t* const added =
            readstat_add_variable(writer, variable.name.constData(), variable.type, 9);
        if (!variable.format.isEmpty())
            readstat_variable_set_format(added, variable.format.constData());
        if (variable.labels.isEmpty() && variable.kindLabels.isEmpty())
            return added;
        readstat_label_set_t* const set =
            readstat_add_label_set(writer, READSTAT_TYPE_INT32, (variable.name + "_l").constData());
        for (const auto& label : variable.labels)
            readstat_label_int32_value(set, label.first, label.second.constData());
        for (const auto& label : variable.kindLabels)
            readstat_label_tagged_value(set, label.first, label.second.constData());
        readstat_variable_set_label_set(added, set);
        return added;
    }
    static void insert(readstat_writer_t* writer, readstat_variable_t* variable, const Cell& cell)
    {
        if (readstat_variable_get_type(variable) == READSTAT_TYPE_STRING)
            readstat_insert_string_value(writer, variable, "text");
        else if (cell.tag != '\0')
            readstat_insert_tagged_missing_value(writer, variable, cell.tag);
        else if (readstat_variable_get_type(variable) == READSTAT_TYPE_INT8)
            readstat_insert_int8_value(writer, variable, std::int8_t(cell.number));
        else
            readstat_insert_double_value(writer, variable, cell.number);
    }
};

using Cell = StataFile::Cell;
using Variable = StataFile::Variable;

} // namespace

class tst_ConvertCodes : public QObject {
    Q_OBJECT

private slots:
    void init();
    void planned();
    void valuesInTheirPlace();
    void labelsInTheirPlace();
    void farValues();
    void noneFree();
    void repeatedKind();
    void stataFormats();
    void timesBeyondDay();
    void missingRuns();
    void endlessRanges();
    void wideCodes();
    void roundedDecimals();
    void ownNames();

private:
    QString path(const QString& name) const
    {
        return m_folder->filePath(name);
    }
    // The file that becomes of d.dta.
    StatContents made(const QVector<Variable>& variables, const QString& format = "spss")
    {
        writeFile(path("d.dta"), StataFile::bytes(variables));
        m_outcome =
            runTessel({ "convert", path("d.dta"), "--to", format, "--overwrite", "-o", path("o") });
        return StatContents::read(path(format == "spss" ? "o/d.sav" : "o/d.dta"));
    }
    QString plan(const QString& format = "spss") const
    {
        return QString::fromUtf8(
            runTessel({ "convert", path("d.dta"), "--to", format, "--plan" }).output);
    }
    // The file of record R that becomes of text data.
    StatContents surveyed(const QByteArray& items, const QByteArray& data,
        const QString& format = "spss", const QStringList& more = {})
    {
        const QByteArray text =
            "\xEF\xBB\xBF[Dictionary]\nVersion=CSPro 7.7\nLabel=D\nName=D\nRecordTypeStart=1\n"
            "RecordTypeLen=1\nPositions=Relative\nZeroFill=No\nDecimalChar=No\n\n[Level]\nLabel=Q\n"
            "Name=Q\n\n[IdItems]\n\n[Item]\nLabel=Row\nName=ROW\nStart=2\nLen=2\n"
            "DataType=Numeric\n\n[Record]\nLabel=R\nName=R\nRecordTypeValue='1'\nMaxRecords=99\n"
            "RecordLen=400\n\n"
            + items;
        writeFile(path("s.dcf"), text);
        writeFile(path("s.dat"), data);
        const QStringList arguments { "convert", path("s.dcf"), path("s.dat"), "--to", format };
        m_plan = QString::fromUtf8(runTessel(arguments + more + QStringList { "--plan" }).output);
        m_outcome = runTessel(arguments + more + QStringList { "--overwrite", "-o", path("o") });
        return StatContents::read(path(format == "spss" ? "o/R.sav" : "o/R.dta"));
    }
    static QStringList column(const StatContents& contents, int index)
    {
        QStringList found;
        for (const QStringList& row : contents.rows)
            found.append(row.at(index));
        return found;
    }

    Outcome m_outcome;
    QString m_plan;
    std::unique_ptr<QTemporaryDir> m_folder;
};

void tst_ConvertCodes::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
}

// Values on both sides of the planned codes leave them as they are; 0 and 1 stay values.
void tst_ConvertCodes::planned()
{
    const StatContents found = made({ { "X", "", READSTAT_TYPE_DOUBLE,
        { { -1e10 }, { 0 }, { 1 }, { 2 }, { 1e16 }, { 0, 'a' }, { 0, 'b' } }, {}, {} } });
    QVERIFY2(m_outcome.status == 0, m_outcome.errors.constData());
    QCOMPARE(column(found, 0),
        (QStringList {
            "-10000000000", "0", "1", "2", "10000000000000000", "2147483622", "2147483623" }));
    QCOMPARE(found.variables.at(0).missing, (QStringList { "2147483622", "2147483623" }));
    QCOMPARE(found.labelsOf("X"),
        (QMap<QString, QString> { { "2147483622", ".a" }, { "2147483623", ".b" } }));
    QVERIFY2(m_outcome.errors.contains("of 1 variable became the codes that are planned"),
        m_outcome.errors.constData());
    QVERIFY2(plan().contains(
                 "note: d.sav X .a to .z without a label become codes of 2147483622 to 2147483647"),
        qPrintable(plan()));
}

void tst_ConvertCodes::valuesInTheirPlace()
{
    const StatContents found = made({ { "Y", "", READSTAT_TYPE_DOUBLE,
        { { 2147483630 }, { 2147483648.5 }, { 5 }, { 0, 'c' } }, {}, { { 'a', "Ref" } } } });
    QVERIFY2(m_outcome.status == 0, m_outcome.errors.constData());
    QCOMPARE(column(found, 0), (QStringList { "2147483630", "2147483648.5", "5", "2147483676" }));
    QCOMPARE(found.variables.at(0).missing, QStringList { "2147483676" });
    QCOMPARE(found.labelsOf("Y"),
        (QMap<QString, QString> { { "2147483674", "Ref" }, { "2147483676", ".c" } }));
    QVERIFY2(m_outcome.errors.contains("Y: missing values became other codes than planned, as the "
                                       "data have those: .a 2147483674, .c 2147483676"),
        m_outcome.errors.constData());
}

// A label of a code that no value of the type can be.
void tst_ConvertCodes::labelsInTheirPlace()
{
    const StatContents found = made({ { "Z", "", READSTAT_TYPE_INT8, { { 1 }, { 0, 'a' } },
        { { 1, "One" }, { 102, "Big" } }, { { 'a', "Ref" } } } });
    QVERIFY2(m_outcome.status == 0, m_outcome.errors.constData());
    QCOMPARE(column(found, 0), (QStringList { "1", "128" }));
    QCOMPARE(found.labelsOf("Z"),
        (QMap<QString, QString> { { "1", "One" }, { "102", "Big" }, { "128", "Ref" } }));
    QVERIFY2(plan().contains("note: d.sav Z .a becomes 128\n"), qPrintable(plan()));
    QVERIFY2(m_outcome.errors.contains("the codes that are planned"), m_outcome.errors.constData());
}

namespace {

// One value in each of the blocks that are looked at first.
Variable crowded(double low, double high)
{
    Variable variable { "X", "", READSTAT_TYPE_DOUBLE, { { low }, { high }, { 0, 'b' } }, {}, {} };
    for (int block = 0; block < 64; ++block)
        variable.cells.append(Cell { 2147483622 + block * 26.0 });
    return variable;
}

} // namespace

void tst_ConvertCodes::farValues()
{
    QCOMPARE(column(made({ crowded(-5, 1e15 + 0.5) }), 0).at(2), QString("1000000000000002"));
    QCOMPARE(column(made({ crowded(-5.5, 1e16) }), 0).at(2), QString("-30"));
    QVERIFY2(m_outcome.status == 0, m_outcome.errors.constData());
}

void tst_ConvertCodes::noneFree()
{
    made({ crowded(-1e16, 1e16) });
    QCOMPARE(m_outcome.status, 1);
    QVERIFY2(m_outcome.errors.contains("X has so many values that no codes are free"),
        m_outcome.errors.constData());
    QVERIFY(!QFile::exists(path("o/d.sav")));
}

void tst_ConvertCodes::repeatedKind()
{
    const StatContents found = made({ { "Z", "", READSTAT_TYPE_INT8, { { 1 }, { 0, 'a' } }, {},
        { { 'a', "First" }, { 'a', "Second" } } } });
    QCOMPARE(found.labelsOf("Z"), (QMap<QString, QString> { { "102", "First" } }));
    QCOMPARE(plan().count(".a becomes"), 1);
    QVERIFY2(
        plan().contains("1 code of Z_l without label: it has a label already"), qPrintable(plan()));
}

// A text keeps its format, and only plain days are shown as they were.
void tst_ConvertCodes::stataFormats()
{
    const QVector<Variable> variables {
        { "A", "%td", READSTAT_TYPE_DOUBLE, { { 21000 } }, {}, {} },
        { "B", "%tdCCYY-NN-dd", READSTAT_TYPE_DOUBLE, { { 21000 } }, {}, {} },
        { "C", "%tcHH:MM", READSTAT_TYPE_DOUBLE, { { 1.9e12 } }, {}, {} },
        { "D", "%9s", READSTAT_TYPE_STRING, { {} }, {}, {} },
    };
    const StatContents same = made(variables, "stata");
    QVERIFY2(m_outcome.status == 0, m_outcome.errors.constData());
    QCOMPARE(same.variables.value(3).format, QString("%9s"));
    const StatContents found = made(variables);
    QCOMPARE(found.variables.value(2).format, QString("DATETIME24.3"));
    QCOMPARE(found.rows.at(0).at(2).toDouble(), 1.9e9 + 11903760000.0);
    QVERIFY2(!plan().contains("A shown as"), qPrintable(plan()));
    QVERIFY2(plan().contains("B shown as DATE11 in place of %tdCCYY-NN-dd"), qPrintable(plan()));
    QVERIFY2(plan().contains("C shown as DATETIME24.3"), qPrintable(plan()));
}

void tst_ConvertCodes::timesBeyondDay()
{
    made({ { "T", "%tcHH:MM:SS", READSTAT_TYPE_DOUBLE, { { 3661000 }, { 86399999 } }, {}, {} } });
    QVERIFY2(!m_outcome.errors.contains("beyond one day"), m_outcome.errors.constData());
    made({ { "T", "%tcHH:MM:SS", READSTAT_TYPE_DOUBLE, { { 3661000 }, { 1.9e12 } }, {}, {} } });
    QVERIFY2(
        m_outcome.errors.contains("T: 1 value is beyond one day"), m_outcome.errors.constData());
}

namespace {

QByteArray withCodes(const QByteArray& item, const QByteArrayList& missing)
{
    QByteArray result = item + "\n[ValueSet]\nLabel=V\nName=V_VS1\n";
    for (const QByteArray& code : missing)
        result += "Value=" + code + ";M\nName=MISSING,Special\n";
    return result;
}

const char threeDigits[] = "[Item]\nLabel=N\nName=N\nStart=4\nLen=3\nDataType=Numeric\n";

} // namespace

// Of equal runs the first one of the dictionary; each code that is left counts.
void tst_ConvertCodes::missingRuns()
{
    const QByteArrayList codes { "90", "92", "94", "7", "8", "9", "997", "998", "999" };
    StatContents found = surveyed(withCodes(threeDigits, codes), "101  1\n");
    QVERIFY2(m_outcome.status == 0, m_outcome.errors.constData());
    QCOMPARE(found.variables.value(1).missing, (QStringList { "7:9", "90" }));
    QVERIFY2(m_plan.contains("5 codes of V_VS1 not marked as missing (92, 94, 997, 998, 999)"),
        qPrintable(m_plan));
    found = surveyed(
        withCodes(threeDigits, { "997", "998", "7", "8", "90", "92", "94", "96" }), "101  1\n");
    QCOMPARE(found.variables.value(1).missing, (QStringList { "997:998", "7" }));
    QVERIFY2(m_plan.contains("5 codes of V_VS1 not marked as missing (8, 90, 92, 94, 96)"),
        qPrintable(m_plan));
}

void tst_ConvertCodes::endlessRanges()
{
    const double endless = std::numeric_limits<double>::infinity();
    QCOMPARE(tessel::rangeText(-endless, -1), QString("-1 and lower"));
    QCOMPARE(tessel::rangeText(97, endless), QString("97 and higher"));
    QCOMPARE(tessel::rangeText(-endless, endless), QString("all numbers"));
    QCOMPARE(tessel::rangeText(7, 9), QString("7:9"));
    QCOMPARE(tessel::rangeText(7, 7), QString("7"));
}

// A code of six characters and twelve bytes, where no value is as long.
void tst_ConvertCodes::wideCodes()
{
    const QByteArray code = QByteArray("\xC3\xA9").repeated(6);
    const QByteArray item = "[Item]\nLabel=T\nName=T\nStart=4\nLen=6\nDataType=Alpha\n"
                            "\n[ValueSet]\nLabel=V\nName=V_VS1\nValue='"
        + code + "';Label\nValue='abc';A\n";
    const StatContents found = surveyed(item, "101abc\n");
    QVERIFY2(m_outcome.status == 0, m_outcome.errors.constData());
    QCOMPARE(found.variables.value(1).format, QString("A12"));
    QCOMPARE(found.labelsOf("T").value(QString::fromUtf8(code)), QString("Label"));
}

// Sixteen digits with two decimals, of which doubles give back only some.
void tst_ConvertCodes::roundedDecimals()
{
    const QByteArray item =
        "[Item]\nLabel=N\nName=N\nStart=4\nLen=16\nDataType=Numeric\nDecimal=2\n";
    surveyed(item, "101  12345678901234\n1018999999999999950\n");
    QVERIFY2(m_outcome.status == 0, m_outcome.errors.constData());
    QVERIFY2(!m_outcome.errors.contains(" rounded, as"), m_outcome.errors.constData());
    surveyed(item, "1018999999999999951\n1018999999999999953\n1018999999999999949\n");
    QVERIFY2(m_outcome.errors.contains("N: 2 values were rounded"), m_outcome.errors.constData());
}

// The column of a number of rows gives way to an identification item of its name.
void tst_ConvertCodes::ownNames()
{
    const QByteArray items =
        "[Item]\nLabel=A\nName=A\nStart=4\nLen=1\nOccurrences=2\nDataType=Numeric\n";
    surveyed(items, "10112\n", "spss", { "--repeats", "tables" });
    QVERIFY2(m_outcome.status == 0, m_outcome.errors.constData());
    QVERIFY2(m_plan.contains("was ROW: "), qPrintable(m_plan));
}

QTEST_GUILESS_MAIN(tst_ConvertCodes)
#include "tst_ConvertCodes.moc"
