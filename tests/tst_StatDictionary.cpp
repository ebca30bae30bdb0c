#include <model_Tessel/StatDictionary.h>

#include <model_Tessel/SPSSDataImport.h>

#include "StatFiles.h"

#include <QTemporaryDir>
#include <QtTest>

#include <cmath>
#include <limits>
#include <memory>

namespace {

constexpr double Infinity = std::numeric_limits<double>::infinity();

QStringList textsOf(const QVector<TStatLabelledValue>& labels)
{
    QStringList texts;
    for (const TStatLabelledValue& entry : labels)
        texts.append(entry.value.text + QLatin1Char('=') + entry.label);
    return texts;
}

QStringList textsOf(const QVector<TStatMissingRange>& ranges)
{
    QStringList texts;
    for (const TStatMissingRange& range : ranges)
        texts.append(range.low.text + QLatin1String("..") + range.high.text);
    return texts;
}

int childMain(const QStringList& arguments)
{
    const TStatFileDescription description =
        readStatDescription(arguments.value(1), kindOf(arguments.value(1)));
    return description.isWhole() ? 0 : 3;
}

} // namespace

Q_DECLARE_METATYPE(TStatFileKind)
Q_DECLARE_METATYPE(readstat_type_t)

class TestStatDictionary : public QObject {
    Q_OBJECT

private slots:
    void init();
    void startsEmpty();
    void describesAnSpssFile();
    void describesAStataFile();
    void countsTheRows_data();
    void countsTheRows();
    void rowsThatAreNotTold();
    void widthsAndFormats_data();
    void widthsAndFormats();
    void variableTypesOfStata_data();
    void variableTypesOfStata();
    void typesWidthsAndDecimals_data();
    void typesWidthsAndDecimals();
    void missingValues();
    void labelValuesAreExact_data();
    void labelValuesAreExact();
    void taggedValuesKeepTheirTags();
    void missingRanges();
    void missingTexts();
    void labelsOfLongTexts();
    void damagedLabelsLeaveTheVariables();
    void sharedSetIsKeptOnce();
    void setsOutOfUseAreKept();
    void setThatTheFileLacks();
    void textsAreDecodedAsWhatTheyAre();
    void characteristics_data();
    void characteristics();
    void leavesTheImporterAlone();
    void fileThatCannotBeRead_data();
    void fileThatCannotBeRead();
    void cutFileKeepsWhatStandsBefore_data();
    void cutFileKeepsWhatStandsBefore();
    void cutLabelsAreNoticed_data();
    void cutLabelsAreNoticed();
    void printsNothing();

private:
    QString path(const QString& name) const
    {
        return m_dir->filePath(name);
    }
    TStatFileDescription written(
        const StatFileWriter& writer, TStatFileKind kind, int rows = 0) const;

    std::unique_ptr<QTemporaryDir> m_dir;
};

void TestStatDictionary::init()
{
    m_dir = std::make_unique<QTemporaryDir>();
    QVERIFY(m_dir->isValid());
}

TStatFileDescription TestStatDictionary::written(
    const StatFileWriter& writer, TStatFileKind kind, int rows) const
{
    const QString file = path(QStringLiteral("written"));
    return writer.write(file, kind, rows) ? readStatDescription(file, kind)
                                          : TStatFileDescription();
}

void TestStatDictionary::startsEmpty()
{
    const TStatFileDescription description;
    QVERIFY(description.isWhole());
    QCOMPARE(description.rowCount, qint64(-1));
    QCOMPARE(TStatVariableDescription().labelSet, -1);
}

void TestStatDictionary::describesAnSpssFile()
{
    StatFileWriter writer;
    readstat_writer_set_file_label(writer.get(), u8"Población 2010");
    readstat_add_note(writer.get(), "First line");
    readstat_add_note(writer.get(), u8"Línea dos");
    readstat_label_set_t* sexes = writer.addLabels("sexes", READSTAT_TYPE_DOUBLE);
    readstat_label_double_value(sexes, 2, "Female");
    readstat_label_double_value(sexes, 1, "Male");
    readstat_label_double_value(sexes, -1, "Unknown");
    readstat_variable_t* sex = writer.add("SEX", READSTAT_TYPE_DOUBLE, "F3.0", sexes);
    readstat_variable_set_label(sex, u8"Sex of the señor");
    readstat_variable_set_measure(sex, READSTAT_MEASURE_NOMINAL);
    readstat_variable_set_display_width(sex, 17);
    writer.add("BIRTH", READSTAT_TYPE_DOUBLE, "DATE11");
    writer.add("NAME", READSTAT_TYPE_STRING, "A300", nullptr, 300);

    const TStatFileDescription description = written(writer, TStatFileKind::Spss, 3);
    QVERIFY(description.isWhole());
    QCOMPARE(description.outcome.error, READSTAT_OK);
    QVERIFY(description.outcome.errorText.isEmpty() && description.outcome.errorDetails.isEmpty());
    QCOMPARE(description.fileLabel, QString::fromUtf8(u8"Población 2010"));
    QCOMPARE(description.encoding, QStringLiteral("UTF-8"));
    QCOMPARE(description.formatVersion, 2);
    QCOMPARE(description.rowCount, qint64(3));
    QCOMPARE(description.notes,
        QStringList({ QStringLiteral("First line"), QString::fromUtf8(u8"Línea dos") }));

    QCOMPARE(description.variables.size(), 3);
    const TStatVariableDescription& first = description.variables.at(0);
    QCOMPARE(first.name, QStringLiteral("SEX"));
    QCOMPARE(first.label, QString::fromUtf8(u8"Sex of the señor"));
    QCOMPARE(first.type, READSTAT_TYPE_DOUBLE);
    QCOMPARE(first.storageWidth, quint64(8));
    QCOMPARE(first.displayWidth, 17);
    QCOMPARE(first.format, QStringLiteral("F3.0"));
    QCOMPARE(first.measure, READSTAT_MEASURE_NOMINAL);
    QVERIFY(first.missingRanges.isEmpty());
    QCOMPARE(first.labelSetName, QStringLiteral("labels0"));
    QCOMPARE(first.labelSet, 0);
    QCOMPARE(description.variables.at(1).format, QStringLiteral("DATE11"));
    QVERIFY(description.variables.at(1).labelSetName.isEmpty());
    QCOMPARE(description.variables.at(1).labelSet, -1);
    QCOMPARE(description.variables.at(2).type, READSTAT_TYPE_STRING);
    QCOMPARE(description.variables.at(2).format, QStringLiteral("A300"));

    QCOMPARE(description.labelSets.size(), 1);
    QCOMPARE(description.labelSets.at(0).name, QStringLiteral("labels0"));
    QCOMPARE(textsOf(description.labelSets.at(0).labels),
        QStringList({ QStringLiteral("2=Female"), QStringLiteral("1=Male"),
            QStringLiteral("-1=Unknown") }));
    const TStatValue& value = description.labelSets.at(0).labels.at(0).value;
    QCOMPARE(value.type, READSTAT_TYPE_DOUBLE);
    QCOMPARE(value.number, 2.0);
    QVERIFY(!value.isSystemMissing && value.tag == '\0');
}

void TestStatDictionary::describesAStataFile()
{
    StatFileWriter writer;
    readstat_writer_set_file_label(writer.get(), u8"Población 2010");
    readstat_add_note(writer.get(), "First note");
    readstat_add_note(writer.get(), u8"Nota dos");
    readstat_add_note(writer.get(), "Third note");
    readstat_label_set_t* sexes = writer.addLabels("sexes", READSTAT_TYPE_INT32);
    readstat_label_int32_value(sexes, -1, "Unknown");
    readstat_label_int32_value(sexes, 1, u8"Varón");
    readstat_variable_t* sex = writer.add("sex", READSTAT_TYPE_INT8, "%-8.0g", sexes);
    readstat_variable_set_label(sex, u8"Sex of the señor");
    writer.add("day", READSTAT_TYPE_INT32, "%td");

    const TStatFileDescription description = written(writer, TStatFileKind::Stata, 7);
    QVERIFY(description.isWhole());
    QCOMPARE(description.fileLabel, QString::fromUtf8(u8"Población 2010"));
    QVERIFY(description.encoding.isEmpty());
    QCOMPARE(description.formatVersion, 118);
    QCOMPARE(description.rowCount, qint64(7));
    QCOMPARE(description.notes,
        QStringList({ QStringLiteral("First note"), QStringLiteral("Nota dos"),
            QStringLiteral("Third note") }));
    QCOMPARE(description.variables.size(), 2);
    const TStatVariableDescription& first = description.variables.at(0);
    QCOMPARE(first.name, QStringLiteral("sex"));
    QCOMPARE(first.label, QString::fromUtf8(u8"Sex of the señor"));
    QCOMPARE(first.type, READSTAT_TYPE_INT8);
    QCOMPARE(first.storageWidth, quint64(1));
    QCOMPARE(first.displayWidth, -8);
    QCOMPARE(first.format, QStringLiteral("%-8.0g"));
    QCOMPARE(first.alignment, READSTAT_ALIGNMENT_LEFT);
    QCOMPARE(first.labelSetName, QStringLiteral("sexes"));
    QCOMPARE(first.labelSet, 0);
    QCOMPARE(description.variables.at(1).format, QStringLiteral("%td"));
    QCOMPARE(description.variables.at(1).alignment, READSTAT_ALIGNMENT_RIGHT);
    QCOMPARE(textsOf(description.labelSets.at(0).labels),
        QStringList({ QStringLiteral("-1=Unknown"), QString::fromUtf8(u8"1=Varón") }));
}

void TestStatDictionary::countsTheRows_data()
{
    QTest::addColumn<int>("kind");
    QTest::addColumn<int>("rows");
    for (const int rows : { 0, 1, 300 }) {
        QTest::addRow("SPSS, %d", rows) << int(TStatFileKind::Spss) << rows;
        QTest::addRow("Stata, %d", rows) << int(TStatFileKind::Stata) << rows;
    }
}

void TestStatDictionary::countsTheRows()
{
    QFETCH(int, kind);
    QFETCH(int, rows);
    StatFileWriter writer;
    writer.add("A", READSTAT_TYPE_DOUBLE, nullptr);
    QCOMPARE(written(writer, static_cast<TStatFileKind>(kind), rows).rowCount, qint64(rows));
}

void TestStatDictionary::rowsThatAreNotTold()
{
    constexpr int RowCountPosition = 80; // in the header of a system file
    StatFileWriter writer;
    writer.add("A", READSTAT_TYPE_DOUBLE, nullptr);
    QVERIFY(written(writer, TStatFileKind::Spss, 3).isWhole());
    QFile file(path(QStringLiteral("written")));
    QVERIFY(file.open(QIODevice::ReadWrite));
    QVERIFY(file.seek(RowCountPosition));
    file.write(QByteArray(4, '\xff'));
    file.close();
    const TStatFileDescription description =
        readStatDescription(file.fileName(), TStatFileKind::Spss);
    QVERIFY(description.isWhole());
    QCOMPARE(description.rowCount, qint64(-1));
}

void TestStatDictionary::widthsAndFormats_data()
{
    QTest::addColumn<QByteArray>("format");
    for (const char* format : { "F1.0", "F10.2", "F40.16", "DATE11", "DATETIME20", "DOLLAR12",
             "COMMA9.2", "E12.3", "N6", "PCT5.1" })
        QTest::newRow(format) << QByteArray(format);
}

void TestStatDictionary::widthsAndFormats()
{
    QFETCH(QByteArray, format);
    StatFileWriter writer;
    writer.add("A", READSTAT_TYPE_DOUBLE, format.constData());
    const TStatFileDescription description = written(writer, TStatFileKind::Spss);
    QCOMPARE(description.variables.size(), 1);
    QVERIFY2(description.variables.at(0).format.startsWith(QString::fromLatin1(format)),
        qPrintable(description.variables.at(0).format));
}

void TestStatDictionary::variableTypesOfStata_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<int>("storageWidth");
    QTest::newRow("byte") << int(READSTAT_TYPE_INT8) << 1;
    QTest::newRow("int") << int(READSTAT_TYPE_INT16) << 2;
    QTest::newRow("long") << int(READSTAT_TYPE_INT32) << 4;
    QTest::newRow("float") << int(READSTAT_TYPE_FLOAT) << 4;
    QTest::newRow("double") << int(READSTAT_TYPE_DOUBLE) << 8;
}

void TestStatDictionary::variableTypesOfStata()
{
    QFETCH(int, type);
    QFETCH(int, storageWidth);
    StatFileWriter writer;
    writer.add("a", static_cast<readstat_type_t>(type), nullptr);
    const TStatFileDescription description = written(writer, TStatFileKind::Stata);
    QCOMPARE(int(description.variables.at(0).type), type);
    QCOMPARE(description.variables.at(0).storageWidth, quint64(storageWidth));
}

void TestStatDictionary::typesWidthsAndDecimals_data()
{
    QTest::addColumn<TStatFileKind>("kind");
    QTest::addColumn<readstat_type_t>("type");
    QTest::addColumn<QString>("format");
    QTest::addColumn<QString>("typeName");
    QTest::addColumn<int>("width");
    QTest::addColumn<int>("decimals");
    constexpr auto Spss = TStatFileKind::Spss;
    constexpr auto Stata = TStatFileKind::Stata;
    const auto row = [](TStatFileKind kind, readstat_type_t type,
                         const char* format) -> QTestData& {
        return QTest::addRow("%s of %s, type %d", format, kind == Spss ? "SPSS" : "Stata", type)
            << kind << type << QString(format);
    };
    row(Spss, READSTAT_TYPE_DOUBLE, "F3.0") << "INTEGER" << 3 << 0;
    row(Spss, READSTAT_TYPE_DOUBLE, "F10.0") << "INTEGER" << 10 << 0;
    row(Spss, READSTAT_TYPE_DOUBLE, "F3") << "INTEGER" << 3 << 0;
    row(Spss, READSTAT_TYPE_DOUBLE, "N6") << "INTEGER" << 6 << 0;
    row(Spss, READSTAT_TYPE_DOUBLE, "F8.2") << "REAL" << 8 << 2;
    row(Spss, READSTAT_TYPE_DOUBLE, "F40.16") << "REAL" << 40 << 16;
    row(Spss, READSTAT_TYPE_DOUBLE, "DATE11") << "REAL" << 11 << 0;
    row(Spss, READSTAT_TYPE_DOUBLE, "COMMA9.2") << "REAL" << 9 << 2;
    row(Spss, READSTAT_TYPE_DOUBLE, "") << "REAL" << 7 << 0; // the screen's
    row(Spss, READSTAT_TYPE_STRING, "A20") << "STRING" << 20 << 0;
    row(Stata, READSTAT_TYPE_INT8, "%8.0g") << "INTEGER" << 8 << 0;
    row(Stata, READSTAT_TYPE_INT16, "%8.0g") << "INTEGER" << 8 << 0;
    row(Stata, READSTAT_TYPE_INT32, "%12.0g") << "INTEGER" << 12 << 0;
    row(Stata, READSTAT_TYPE_FLOAT, "%9.0g") << "REAL" << 9 << 0;
    row(Stata, READSTAT_TYPE_DOUBLE, "%10.2f") << "REAL" << 10 << 2;
    row(Stata, READSTAT_TYPE_DOUBLE, "%10,2f") << "REAL" << 10 << 2;
    row(Stata, READSTAT_TYPE_DOUBLE, "%td") << "REAL" << 7 << 0;
    row(Stata, READSTAT_TYPE_STRING, "%-9.5s") << "STRING" << 41 << 0;
    row(Stata, READSTAT_TYPE_STRING_REF, "%9s") << "STRING" << 0 << 0; // as long as it likes
}

void TestStatDictionary::typesWidthsAndDecimals()
{
    QFETCH(TStatFileKind, kind);
    TStatVariableDescription variable;
    QFETCH(readstat_type_t, type);
    QFETCH(QString, format);
    variable.type = type;
    variable.format = format;
    variable.storageWidth = 42; // with the null that libreadstat counts in strings of Stata
    variable.displayWidth = 7;
    QTEST(variable.typeName(kind), "typeName");
    QTEST(variable.width(kind), "width");
    QTEST(variable.decimals(), "decimals");
    QCOMPARE(variable.isString(), variable.typeName(kind) == QLatin1String("STRING"));
    variable.userWidth = 300; // longer than a format of SPSS can tell
    if (variable.isString() && kind == TStatFileKind::Spss)
        QCOMPARE(variable.width(kind), 300);
}

void TestStatDictionary::missingValues()
{
    const auto number = [](double value) {
        TStatValue result;
        result.number = value;
        return result;
    };
    const auto text = [](const char* value) {
        TStatValue result;
        result.type = READSTAT_TYPE_STRING;
        result.text = QString::fromUtf8(value);
        return result;
    };
    TStatVariableDescription variable;
    QVERIFY(!variable.isMissing(number(9)));
    variable.missingRanges = { { number(9), number(9) }, { number(-Infinity), number(-1) } };
    QVERIFY(variable.isMissing(number(9)));
    QVERIFY(variable.isMissing(number(-1)));
    QVERIFY(variable.isMissing(number(-1e300)));
    QVERIFY(!variable.isMissing(number(-0.5)));
    QVERIFY(!variable.isMissing(number(8.5)));
    TStatValue tagged = number(5);
    tagged.tag = 'a';
    QVERIFY(variable.isMissing(tagged));
    TStatValue system = number(5);
    system.isSystemMissing = true;
    QVERIFY(variable.isMissing(system));
    variable.missingRanges = { { text("NA"), text("NA") } };
    QVERIFY(variable.isMissing(text("NA   "))); // strings are padded
    QVERIFY(!variable.isMissing(text("N")));
}

void TestStatDictionary::labelValuesAreExact_data()
{
    QTest::addColumn<double>("number");
    QTest::addColumn<QString>("text");
    QTest::newRow("0") << 0.0 << QStringLiteral("0");
    QTest::newRow("-0") << -0.0 << QStringLiteral("-0");
    QTest::newRow("-1") << -1.0 << QStringLiteral("-1");
    QTest::newRow("a hundred thousand") << 100000.0 << QStringLiteral("100000");
    QTest::newRow("twelve digits") << 123456789012.0 << QStringLiteral("123456789012");
    QTest::newRow("largest of all odd ones")
        << 9007199254740991.0 << QStringLiteral("9007199254740991");
    QTest::newRow("tenth") << 0.1 << QStringLiteral("0.1");
    QTest::newRow("sum of tenths") << 0.1 + 0.2 << QStringLiteral("0.30000000000000004");
    QTest::newRow("third") << 1.0 / 3 << QStringLiteral("0.3333333333333333");
    QTest::newRow("small") << 0.00001 << QStringLiteral("0.00001");
    QTest::newRow("smaller") << 0.000001 << QStringLiteral("1e-06");
    QTest::newRow("smallest") << std::numeric_limits<double>::denorm_min()
                              << QStringLiteral("5e-324");
    QTest::newRow("large") << 99999999999999984.0 << QStringLiteral("99999999999999984");
    QTest::newRow("larger") << 1e17 << QStringLiteral("1e+17");
    QTest::newRow("largest") << 1.7976931348623155e308 << QStringLiteral("1.7976931348623155e+308");
    QTest::newRow("infinite") << Infinity << QStringLiteral("inf");
}

void TestStatDictionary::labelValuesAreExact()
{
    QFETCH(double, number);
    QFETCH(QString, text);
    StatFileWriter writer;
    readstat_label_set_t* labels = writer.addLabels("L", READSTAT_TYPE_DOUBLE);
    readstat_label_double_value(labels, number, "label");
    writer.add("A", READSTAT_TYPE_DOUBLE, nullptr, labels);
    const TStatFileDescription description = written(writer, TStatFileKind::Spss);
    QCOMPARE(description.labelSets.size(), 1);
    const TStatValue& value = description.labelSets.at(0).labels.at(0).value;
    QCOMPARE(value.text, text);
    QVERIFY(value.number == number);
    QVERIFY(value.text.toDouble() == number);
}

void TestStatDictionary::taggedValuesKeepTheirTags()
{
    StatFileWriter writer;
    readstat_label_set_t* labels = writer.addLabels("L", READSTAT_TYPE_INT32);
    readstat_label_int32_value(labels, 5, "five");
    for (char tag = 'a'; tag <= 'z'; ++tag) {
        const char text[] = { tag, tag, '\0' };
        readstat_label_tagged_value(labels, tag, text);
    }
    readstat_label_int32_value(labels, 2147483621, "system missing");
    writer.add("a", READSTAT_TYPE_INT32, nullptr, labels);
    const TStatFileDescription description = written(writer, TStatFileKind::Stata);
    const QVector<TStatLabelledValue>& found = description.labelSets.at(0).labels;
    QCOMPARE(found.size(), 28);
    int tagged = 0;
    for (const TStatLabelledValue& entry : found) {
        if (entry.value.tag == '\0')
            continue;
        const char expected = static_cast<char>('a' + tagged++);
        QCOMPARE(entry.value.tag, expected);
        QCOMPARE(entry.value.text, QLatin1Char('.') + QString(QLatin1Char(expected)));
        QCOMPARE(entry.label, QString(2, QLatin1Char(expected)));
        QVERIFY(!entry.value.isSystemMissing);
        QCOMPARE(entry.value.number, 0.0);
    }
    QCOMPARE(tagged, 26);
    QCOMPARE(textsOf({ found.at(0), found.at(1) }),
        QStringList({ QStringLiteral("5=five"), QStringLiteral(".=system missing") }));
    QVERIFY(found.at(1).value.isSystemMissing);
}

void TestStatDictionary::missingRanges()
{
    StatFileWriter writer;
    readstat_variable_t* values = writer.add("VALUES", READSTAT_TYPE_DOUBLE, nullptr);
    readstat_variable_add_missing_double_value(values, 8.5);
    readstat_variable_add_missing_double_value(values, 9);
    readstat_variable_add_missing_double_value(values, -1);
    readstat_variable_t* range = writer.add("RANGE", READSTAT_TYPE_DOUBLE, nullptr);
    readstat_variable_add_missing_double_range(range, 90, 99);
    readstat_variable_add_missing_double_value(range, 0);
    readstat_variable_t* lowest = writer.add("LOWEST", READSTAT_TYPE_DOUBLE, nullptr);
    readstat_variable_add_missing_double_range(lowest, -HUGE_VAL, -1);
    readstat_variable_t* highest = writer.add("HIGHEST", READSTAT_TYPE_DOUBLE, nullptr);
    readstat_variable_add_missing_double_range(highest, 100, HUGE_VAL);
    writer.add("NONE", READSTAT_TYPE_DOUBLE, nullptr);

    const TStatFileDescription description = written(writer, TStatFileKind::Spss);
    QCOMPARE(description.variables.size(), 5);
    const auto missingOf = [&](int index) {
        return textsOf(description.variables.at(index).missingRanges).join(QLatin1Char(' '));
    };
    QCOMPARE(missingOf(0), QStringLiteral("8.5..8.5 9..9 -1..-1"));
    QCOMPARE(missingOf(1), QStringLiteral("90..99 0..0"));
    QCOMPARE(missingOf(2), QStringLiteral("-inf..-1"));
    QCOMPARE(missingOf(3), QStringLiteral("100..inf"));
    QCOMPARE(missingOf(4), QString());
    QCOMPARE(description.variables.at(1).missingRanges.at(0).low.number, 90.0);
    QCOMPARE(description.variables.at(1).missingRanges.at(0).high.number, 99.0);
}

void TestStatDictionary::missingTexts()
{
    StatFileWriter writer;
    readstat_variable_t* variable = writer.add("A", READSTAT_TYPE_STRING, "A5", nullptr, 5);
    readstat_variable_add_missing_string_value(variable, "NA");
    readstat_variable_add_missing_string_value(variable, u8"ñ");
    const TStatFileDescription description = written(writer, TStatFileKind::Spss);
    QCOMPARE(textsOf(description.variables.at(0).missingRanges),
        QStringList({ QStringLiteral("NA..NA"), QString::fromUtf8(u8"ñ..ñ") }));
    QCOMPARE(description.variables.at(0).missingRanges.at(0).low.type, READSTAT_TYPE_STRING);
}

void TestStatDictionary::labelsOfLongTexts()
{
    StatFileWriter writer;
    readstat_label_set_t* labels = writer.addLabels("L", READSTAT_TYPE_STRING);
    readstat_label_string_value(labels, "abcdefghijkl", "first");
    readstat_label_string_value(labels, u8"ñ", "second");
    writer.add("A", READSTAT_TYPE_STRING, "A20", labels, 20);
    const TStatFileDescription description = written(writer, TStatFileKind::Spss);
    QCOMPARE(description.variables.at(0).labelSet, 0);
    QCOMPARE(textsOf(description.labelSets.at(0).labels),
        QStringList({ QStringLiteral("abcdefghijkl=first"), QString::fromUtf8(u8"ñ=second") }));
}

void TestStatDictionary::damagedLabelsLeaveTheVariables()
{
    StatFileWriter writer;
    readstat_label_set_t* labels = writer.addLabels("L", READSTAT_TYPE_STRING);
    readstat_label_string_value(labels, "abcdefghijkl", "first");
    writer.add("A", READSTAT_TYPE_STRING, "A20", labels, 20);
    QVERIFY(written(writer, TStatFileKind::Spss, 4).isWhole());
    QFile file(path(QStringLiteral("written")));
    QVERIFY(file.open(QIODevice::ReadWrite));
    const int label = file.readAll().indexOf("first");
    QVERIFY(label > 4);
    QVERIFY(file.seek(label - 4)); // the length of the label
    file.write(QByteArray(4, '\x7f'));
    file.close();

    const TStatFileDescription description =
        readStatDescription(file.fileName(), TStatFileKind::Spss);
    QVERIFY(!description.isWhole());
    QVERIFY(description.outcome.error != READSTAT_OK);
    QVERIFY(!description.outcome.errorText.isEmpty());
    QVERIFY(description.variablesOutcome.isWhole());
    QVERIFY(description.variablesOutcome.errorText.isEmpty());
    QCOMPARE(description.variables.size(), 1);
    QCOMPARE(description.variables.at(0).name, QStringLiteral("A"));
    QCOMPARE(description.rowCount, qint64(4));
}

void TestStatDictionary::sharedSetIsKeptOnce()
{
    StatFileWriter writer;
    readstat_label_set_t* one = writer.addLabels("one", READSTAT_TYPE_INT32);
    readstat_label_int32_value(one, 1, "a");
    readstat_label_set_t* two = writer.addLabels("two", READSTAT_TYPE_INT32);
    readstat_label_int32_value(two, 2, "b");
    for (int index = 0; index < 6; ++index)
        writer.add(qPrintable(QStringLiteral("v%1").arg(index)), READSTAT_TYPE_INT32, nullptr,
            index % 2 == 0 ? two : one);
    const TStatFileDescription description = written(writer, TStatFileKind::Stata);
    QCOMPARE(description.labelSets.size(), 2);
    for (int index = 0; index < 6; ++index) {
        const TStatVariableDescription& variable = description.variables.at(index);
        const TStatLabelSet& set = description.labelSets.at(variable.labelSet);
        QCOMPARE(set.name, variable.labelSetName);
        QCOMPARE(set.name, index % 2 == 0 ? QStringLiteral("two") : QStringLiteral("one"));
        QCOMPARE(set.labels.size(), 1);
    }
}

void TestStatDictionary::setsOutOfUseAreKept()
{
    StatFileWriter writer;
    readstat_label_int32_value(writer.addLabels("idle", READSTAT_TYPE_INT32), 1, "one");
    writer.add("a", READSTAT_TYPE_INT32, nullptr);
    const TStatFileDescription description = written(writer, TStatFileKind::Stata);
    QCOMPARE(description.labelSets.size(), 1);
    QCOMPARE(description.labelSets.at(0).name, QStringLiteral("idle"));
    QCOMPARE(description.variables.at(0).labelSet, -1);
}

void TestStatDictionary::setThatTheFileLacks()
{
    StatFileWriter writer;
    writer.add("a", READSTAT_TYPE_INT32, nullptr, writer.addLabels("lost", READSTAT_TYPE_INT32));
    const QString file = path(QStringLiteral("written"));
    QVERIFY(written(writer, TStatFileKind::Stata).isWhole());
    // The set is there, but empty; without its name the variable's stays alone.
    const TStatFileDescription description = readStatDescription(file, TStatFileKind::Stata);
    QCOMPARE(description.variables.at(0).labelSetName, QStringLiteral("lost"));
    QCOMPARE(description.variables.at(0).labelSet, -1);
    QVERIFY(description.labelSets.isEmpty());
}

void TestStatDictionary::textsAreDecodedAsWhatTheyAre()
{
    StatFileWriter writer; // format 114 has no declared encoding: its texts are windows-1252
    QCOMPARE(readstat_writer_set_file_format_version(writer.get(), 114), READSTAT_OK);
    readstat_label_set_t* labels = writer.addLabels("L", READSTAT_TYPE_INT32);
    readstat_label_int32_value(labels, 1, "se\xf1or");
    readstat_variable_set_label(
        writer.add("a", READSTAT_TYPE_INT32, nullptr, labels), "a\xf1o in \x80");
    const TStatFileDescription description = written(writer, TStatFileKind::Stata);
    QCOMPARE(description.formatVersion, 114);
    QCOMPARE(description.variables.at(0).label, QString::fromUtf8(u8"año in €"));
    QCOMPARE(
        textsOf(description.labelSets.at(0).labels), QStringList(QString::fromUtf8(u8"1=señor")));
}

void TestStatDictionary::characteristics_data()
{
    QTest::addColumn<int>("format");
    for (const int format : { 105, 108, 110, 114, 115, 117, 118, 119 })
        QTest::addRow("%d", format) << format;
}

// Of the file and of variables, in the encoding of the format. libreadstat writes notes of the file
// alone, so others are made of those.
void TestStatDictionary::characteristics()
{
    QFETCH(int, format);
    const bool isUnicode = format >= 118;
    const QByteArray text = isUnicode ? u8"se\u00f1or \u20ac" : "se\xf1or \x80";
    const QString expected = QString::fromUtf8(u8"se\u00f1or \u20ac");
    StatFileWriter writer;
    QCOMPARE(readstat_writer_set_file_format_version(writer.get(), quint8(format)), READSTAT_OK);
    for (int number = 1; number <= 5; ++number) {
        const QByteArray note = text + ' ' + QByteArray::number(number);
        readstat_add_note(writer.get(), note.constData());
    }
    writer.add("age", READSTAT_TYPE_INT32, nullptr);
    writer.add("sex", READSTAT_TYPE_INT32, nullptr);
    const QString name = path(QStringLiteral("written"));
    QVERIFY(writer.write(name, TStatFileKind::Stata));

    QFile file(name);
    QVERIFY(file.open(QIODevice::ReadWrite));
    QByteArray bytes = file.readAll();
    const auto rename = [&bytes](const QByteArray& note, const QByteArray& owner,
                            const QByteArray& newNote) {
        const int at = bytes.indexOf(note + '\0');
        const int ownerAt = bytes.lastIndexOf(QByteArray("_dta\0", 5), at);
        bytes.replace(ownerAt, 5, owner.leftJustified(5, '\0'));
        bytes.replace(at, 6, newNote.leftJustified(6, '\0'));
    };
    rename("note2", "_dta", "lang");
    rename("note3", "age", "note2");
    rename("note4", "age", "note1");
    rename("note5", "age", "unit");
    file.seek(0);
    file.write(bytes);
    file.close();

    const TStatFileDescription description = readStatDescription(name, TStatFileKind::Stata);
    QVERIFY(description.isWhole());
    QCOMPARE(description.formatVersion, format);
    QCOMPARE(description.notes, QStringList(expected + " 1"));
    QCOMPARE(description.characteristics.size(), 1);
    QCOMPARE(description.characteristics.at(0).name, QStringLiteral("lang"));
    QCOMPARE(description.characteristics.at(0).text, expected + " 2");
    const TStatVariableDescription& age = description.variables.at(0);
    QCOMPARE(age.notes, QStringList({ expected + " 4", expected + " 3" }));
    QCOMPARE(age.characteristics.size(), 1);
    QCOMPARE(age.characteristics.at(0).name, QStringLiteral("unit"));
    QCOMPARE(age.characteristics.at(0).text, expected + " 5");
    QVERIFY(description.variables.at(1).notes.isEmpty());
    QVERIFY(description.variables.at(1).characteristics.isEmpty());
}

void TestStatDictionary::leavesTheImporterAlone()
{
    StatFileWriter writer;
    readstat_label_set_t* labels = writer.addLabels("L", READSTAT_TYPE_DOUBLE);
    readstat_label_double_value(labels, 1, "one");
    writer.add("A", READSTAT_TYPE_DOUBLE, "F5.0", labels);
    TSPSSDataImport importer(path(QStringLiteral("written")));
    QVERIFY(written(writer, TStatFileKind::Spss).isWhole());
    importer.openFile();
    readStatDescription(importer.sourceName, TStatFileKind::Spss);
    QCOMPARE(importer.fields->size(), 1);
    QCOMPARE(importer.getField(0)->valueLabels, QStringLiteral("1 one\t"));
}

void TestStatDictionary::fileThatCannotBeRead_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("kind");
    QTest::addColumn<int>("error");
    QTest::addColumn<QString>("text");

    const int spss = int(TStatFileKind::Spss);
    const int stata = int(TStatFileKind::Stata);
    const QString open = QStringLiteral("Unable to open file");
    const QString read = QStringLiteral("Unable to read from file");
    QTest::newRow("missing, SPSS")
        << QStringLiteral("missing") << spss << int(READSTAT_ERROR_OPEN) << open;
    QTest::newRow("missing, Stata")
        << QStringLiteral("missing") << stata << int(READSTAT_ERROR_OPEN) << open;
    QTest::newRow("empty, SPSS") << QStringLiteral("empty") << spss << int(READSTAT_ERROR_READ)
                                 << read;
    QTest::newRow("empty, Stata") << QStringLiteral("empty") << stata << int(READSTAT_ERROR_READ)
                                  << read;
    QTest::newRow("text, SPSS") << QStringLiteral("text") << spss << int(READSTAT_ERROR_PARSE)
                                << QStringLiteral("Invalid file, or file has unsupported features");
    QTest::newRow("text, Stata") << QStringLiteral("text") << stata
                                 << int(READSTAT_ERROR_UNSUPPORTED_FILE_FORMAT_VERSION)
                                 << QStringLiteral(
                                        "This version of the file format is not supported");
}

void TestStatDictionary::fileThatCannotBeRead()
{
    QFETCH(QString, name);
    QFETCH(int, kind);
    QFETCH(int, error);
    QFETCH(QString, text);
    QVERIFY(QFile(path(QStringLiteral("empty"))).open(QIODevice::WriteOnly));
    QFile other(path(QStringLiteral("text")));
    QVERIFY(other.open(QIODevice::WriteOnly));
    other.write(QByteArray(2000, 'x'));
    other.close();
    const TStatFileDescription description =
        readStatDescription(path(name), static_cast<TStatFileKind>(kind));
    QVERIFY(!description.isWhole());
    QCOMPARE(int(description.outcome.error), error);
    QCOMPARE(description.outcome.errorText, text);
    QVERIFY(description.variables.isEmpty());
    QCOMPARE(description.rowCount, qint64(-1));
    QCOMPARE(int(description.variablesOutcome.error), error);
    QCOMPARE(description.variablesOutcome.errorText, text);
}

void TestStatDictionary::cutFileKeepsWhatStandsBefore_data()
{
    QTest::addColumn<int>("kind");
    QTest::newRow("SPSS") << int(TStatFileKind::Spss);
    QTest::newRow("Stata") << int(TStatFileKind::Stata);
}

void TestStatDictionary::cutFileKeepsWhatStandsBefore()
{
    QFETCH(int, kind);
    StatFileWriter writer;
    for (int index = 0; index < 20; ++index)
        writer.add(qPrintable(QStringLiteral("v%1").arg(index)), READSTAT_TYPE_DOUBLE, nullptr);
    QVERIFY(written(writer, static_cast<TStatFileKind>(kind), 50).isWhole());
    const QString file = path(QStringLiteral("written"));
    const qint64 size = QFile(file).size();
    int refused = 0;
    for (qint64 left = size - size % 100; left >= 0; left -= 100) {
        QVERIFY(QFile::resize(file, left));
        const TStatFileDescription description =
            readStatDescription(file, static_cast<TStatFileKind>(kind));
        QVERIFY(description.variables.size() == 20 || !description.isWhole());
        QCOMPARE(description.outcome.errorText.isEmpty(), description.outcome.error == READSTAT_OK);
        refused += description.outcome.error == READSTAT_OK ? 0 : 1;
    }
    QVERIFY(refused > 0);
}

void TestStatDictionary::cutLabelsAreNoticed_data()
{
    QTest::addColumn<int>("version");
    QTest::newRow("format 114") << 114;
    QTest::newRow("format 118") << 118;
}

void TestStatDictionary::cutLabelsAreNoticed()
{
    QFETCH(int, version);
    StatFileWriter writer;
    QCOMPARE(readstat_writer_set_file_format_version(writer.get(), static_cast<quint8>(version)),
        READSTAT_OK);
    readstat_label_set_t* labels = writer.addLabels("L", READSTAT_TYPE_INT32);
    for (int number = 0; number < 50; ++number)
        readstat_label_int32_value(labels, number, "label");
    writer.add("a", READSTAT_TYPE_INT32, nullptr, labels);
    QVERIFY(written(writer, TStatFileKind::Stata, 20).isWhole());
    const QString file = path(QStringLiteral("written"));
    const qint64 size = QFile(file).size();
    // The end marks of format 118 tell nothing of what stands before them.
    const int marks = version == 118 ? int(qstrlen("</lbl></value_labels></stata_dta>")) : 0;
    for (qint64 left = size - marks - 1; left > size - 700; --left) {
        QVERIFY(QFile::resize(file, left));
        const TStatFileDescription description = readStatDescription(file, TStatFileKind::Stata);
        QCOMPARE(description.variables.size(), 1);
        QVERIFY(!description.isWhole());
        QVERIFY(description.outcome.endsEarly);
    }
}

void TestStatDictionary::printsNothing()
{
    for (const QString& name : { QStringLiteral("missing.sav"), QStringLiteral("missing.dta") }) {
        const ChildResult child = runChild({ QStringLiteral("describe"), path(name) });
        QVERIFY(child.hasFinished && !child.hasCrashed);
        QCOMPARE(child.exitCode, 3);
        QCOMPARE(child.output, QByteArray());
        QCOMPARE(child.errors, QByteArray());
    }
}

STAT_TEST_MAIN(TestStatDictionary, childMain)
#include "tst_StatDictionary.moc"
