// Codes of files of statistics programs that stand for something: kinds of missing values, missing
// codes, and texts with labels.
#include "RunTessel.h"
#include "StatContents.h"

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
            readstat_add_variable(writer, variable.name.constData(), variable.type, 0);
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
        if (cell.tag != '\0')
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
    static QStringList column(const StatContents& contents, int index)
    {
        QStringList found;
        for (const QStringList& row : contents.rows)
            found.append(row.at(index));
        return found;
    }

    Outcome m_outcome;
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
    QVERIFY2(plan().contains("1 code of Z_l without label: they have a label already"),
        qPrintable(plan()));
}

QTEST_GUILESS_MAIN(tst_ConvertCodes)
#include "tst_ConvertCodes.moc"
