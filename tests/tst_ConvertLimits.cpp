// Labels, names and texts that files of statistics programs do not take as they are, and data of
// unusual shape: read back by libreadstat, and by PSPP where it is installed.
#include "RunTessel.h"
#include "StatContents.h"

#include <QStandardPaths>
#include <QtTest>

namespace {

QByteArray item(const QByteArray& name, const QByteArray& label, int start, int width,
    const char* type = "Numeric", const QByteArray& more = QByteArray())
{
    return "\n[Item]\nLabel=" + label + "\nName=" + name + "\nStart=" + QByteArray::number(start)
        + "\nLen=" + QByteArray::number(width) + "\nDataType=" + type + "\n" + more;
}

QByteArray survey(const QByteArray& items, const QByteArray& more = QByteArray())
{
    return "\xEF\xBB\xBF[Dictionary]\nVersion=CSPro 7.7\nLabel=D\nName=D\nRecordTypeStart=1\n"
           "RecordTypeLen=1\nPositions=Relative\nZeroFill=No\nDecimalChar=No\n\n[Level]\nLabel=Q\n"
           "Name=Q\n\n[IdItems]\n"
        + item("PLACE", "Place", 2, 2) + "\n[Record]\nLabel=R\nName=R\nRecordTypeValue='1'\n"
        + "MaxRecords=99\nRecordLen=40000\n" + items + more;
}

QString ending(const QString& format)
{
    return format == "stata" ? QStringLiteral(".dta") : QStringLiteral(".sav");
}

} // namespace

class tst_ConvertLimits : public QObject {
    Q_OBJECT

private slots:
    void init();
    void hostile_data();
    void hostile();
    void longNames_data();
    void longNames();
    void longText_data();
    void longText();
    void cutText();
    void manyVariables_data();
    void manyVariables();
    void noRows_data();
    void noRows();
    void noItems();
    void wideNumbers_data();
    void wideNumbers();
    void missingKinds();
    void missingCodesOfSpss();
    void mergedHouseholds();
    void mergedLevels();
    void repeatTables();

private:
    // The file of record R.
    StatContents made(const QByteArray& dictionary, const QByteArray& data, const QString& format,
        const QStringList& more = {}, const QString& record = QStringLiteral("R"))
    {
        writeFile(m_folder->filePath("d.dcf"), dictionary);
        writeFile(m_folder->filePath("d.dat"), data);
        m_outcome = runTessel(
            QStringList { "convert", m_folder->filePath("d.dcf"), m_folder->filePath("d.dat"),
                "--to", format, "--overwrite", "-o", m_folder->filePath("out") }
            + more);
        return m_outcome.status == 0
            ? StatContents::read(m_folder->filePath("out/" + record + ending(format)))
            : StatContents();
    }
    static void addFormats()
    {
        QTest::addColumn<QString>("format");
        QTest::newRow("stata") << "stata";
        QTest::newRow("spss") << "spss";
    }

    Outcome m_outcome;
    std::unique_ptr<QTemporaryDir> m_folder;
};

void tst_ConvertLimits::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
}

void tst_ConvertLimits::hostile_data()
{
    QTest::addColumn<QString>("format");
    QTest::addColumn<QString>("text");
    for (const char* format : { "stata", "spss" }) {
        const auto add = [format](const char* name, const QString& text) {
            QTest::newRow(qPrintable(QString(format) + ' ' + name)) << format << text;
        };
        add("quotes", "it's \"said\" `so' $x");
        add("emoji", QString::fromUtf8("\xF0\x9F\x98\x80 \xF0\x9F\x91\x8D"));
        add("arabic", QString::fromUtf8("\xD8\xA7\xD9\x84\xD9\x85\xD8\xBA\xD8\xB1\xD8\xA8"));
        add("markup", "<stata_dta>&amp;</value_labels>");
        add("percent", "100% %s %n \\n");
    }
}

void tst_ConvertLimits::hostile()
{
    QFETCH(QString, format);
    QFETCH(QString, text);
    const QByteArray bytes = text.toUtf8();
    const QByteArray values =
        "\n[ValueSet]\nLabel=V\nName=N_VS1\nValue=1;" + bytes + "\nValue=2;Two\n";
    const StatContents found =
        made(survey(item("N", bytes, 4, 1, "Numeric", values) + item("T", "Text", 5, 40, "Alpha")),
            "1011" + bytes + "\n1022 plain\n", format);
    QVERIFY2(m_outcome.status == 0, m_outcome.errors.constData());
    QCOMPARE(found.error, 0);
    QCOMPARE(found.variables.at(1).label, text);
    QCOMPARE(found.labelsOf("N"), (QMap<QString, QString> { { "1", text }, { "2", "Two" } }));
    QCOMPARE(found.rows, (QVector<QStringList> { { "1", "1", text }, { "2", "2", " plain" } }));
}

void tst_ConvertLimits::longNames_data()
{
    addFormats();
}

// Names of 70 characters that differ at their ends, and a reserved word.
void tst_ConvertLimits::longNames()
{
    QFETCH(QString, format);
    const QByteArray stem(69, 'N');
    const QByteArray label(300, 'L');
    const StatContents found =
        made(survey(item(stem + "A", label, 4, 1) + item(stem + "B", "B", 5, 1)
                 + item("WITH", "C", 6, 1) + item("if", "D", 7, 1)),
            "1011234\n", format);
    QVERIFY2(m_outcome.status == 0, m_outcome.errors.constData());
    const int most = format == "stata" ? 32 : 64;
    QCOMPARE(found.variables.size(), 5);
    QCOMPARE(found.variables.at(1).name, QString(most, 'N'));
    QVERIFY(found.variables.at(2).name != found.variables.at(1).name);
    QVERIFY(found.variables.at(2).name.size() <= most);
    QCOMPARE(found.variables.at(1).label, QString(format == "stata" ? 80 : 256, 'L'));
    QCOMPARE(found.rows, (QVector<QStringList> { { "1", "1", "2", "3", "4" } }));
    QVERIFY2(m_outcome.errors.contains("3 variables are renamed"), m_outcome.errors.constData());
    QVERIFY2(
        m_outcome.errors.contains("1 label of a variable is cut"), m_outcome.errors.constData());
}

void tst_ConvertLimits::longText_data()
{
    QTest::addColumn<QString>("format");
    QTest::addColumn<int>("characters");
    QTest::addColumn<QString>("letter");
    for (const char* format : { "stata", "spss" }) {
        for (const int size : { 1, 8, 9, 255, 256, 2045, 2046, 32'000 }) {
            QTest::addRow("%s %d", format, size) << format << size << "x";
            QTest::addRow("%s %d bytes2", format, size)
                << format << size / 2 + 1 << QString(QChar(0xE9));
        }
    }
}

void tst_ConvertLimits::longText()
{
    QFETCH(QString, format);
    QFETCH(int, characters);
    QFETCH(QString, letter);
    const QString text = letter.repeated(characters);
    const StatContents found =
        made(survey(item("N", "N", 4, 1) + item("T", "T", 5, characters, "Alpha")
                 + item("U", "U", 5 + characters, 2, "Alpha")),
            "1011" + text.toUtf8() + "zz\n1022short\n1033\n", format);
    QVERIFY2(m_outcome.status == 0, m_outcome.errors.constData());
    QCOMPARE(found.error, 0);
    QCOMPARE(found.rows.size(), 3);
    QCOMPARE(found.rows.at(0), (QStringList { "1", "1", text, "zz" }));
    QCOMPARE(found.rows.at(1).at(2), QString("short").left(characters));
    QCOMPARE(found.rows.at(2), (QStringList { "3", "3", QString(), QString() }));
}

// SPSS holds no more, and half a character never.
void tst_ConvertLimits::cutText()
{
    const QString letter(QChar(0x20AC)); // three bytes
    const QByteArray line = "1011x" + letter.repeated(11'999).toUtf8() + "\n1021short\n";
    const QByteArray dictionary = survey(item("N", "N", 4, 1) + item("T", "T", 5, 12'000, "Alpha"));
    const StatContents found = made(dictionary, line, "spss");
    QVERIFY2(m_outcome.status == 0, m_outcome.errors.constData());
    QCOMPARE(found.rows.at(0).at(2), 'x' + letter.repeated(32'765 / 3));
    QCOMPARE(found.rows.at(1).at(2), QString("short"));
    QVERIFY2(m_outcome.errors.contains("R.sav: warning: T: 1 text was cut"),
        m_outcome.errors.constData());
    const StatContents stata = made(dictionary, line, "stata");
    QCOMPARE(stata.rows.at(0).at(2), 'x' + letter.repeated(11'999));
    QCOMPARE(made(dictionary, line, "spss", { "--strict" }).variables.size(), 0);
    QCOMPARE(m_outcome.status, 1);
}

void tst_ConvertLimits::manyVariables_data()
{
    QTest::addColumn<QString>("format");
    QTest::addColumn<int>("count");
    QTest::newRow("stata, as many as it takes") << "stata" << 32'767;
    QTest::newRow("stata, too many") << "stata" << 32'768;
    QTest::newRow("spss") << "spss" << 32'767;
}

void tst_ConvertLimits::manyVariables()
{
    QFETCH(QString, format);
    QFETCH(int, count);
    const int own = count - 1;
    QByteArray line = "101";
    for (int i = 0; i < own; ++i)
        line += char('0' + i % 10);
    const StatContents found = made(survey(item("N", "Number", 4, 1, "Numeric",
                                        "Occurrences=" + QByteArray::number(own) + "\n")),
        line + "\n", format);
    if (format == "stata" && count > 32'767) {
        QCOMPARE(m_outcome.status, 1);
        QVERIFY2(m_outcome.errors.contains("would have 32768 variables, and Stata takes 32767"),
            m_outcome.errors.constData());
        QVERIFY(!QFileInfo::exists(m_folder->filePath("out")));
        return;
    }
    QVERIFY2(m_outcome.status == 0, m_outcome.errors.constData());
    QCOMPARE(found.variables.size(), count);
    QCOMPARE(found.variables.last().name, QString("N_%1").arg(own));
    for (int i = 0; i < own; ++i)
        QCOMPARE(found.rows.at(0).at(i + 1), QString::number(i % 10));
}

void tst_ConvertLimits::noRows_data()
{
    addFormats();
}

void tst_ConvertLimits::noRows()
{
    QFETCH(QString, format);
    const StatContents found = made(survey(item("N", "N", 4, 1)), "", format);
    QVERIFY2(m_outcome.status == 0, m_outcome.errors.constData());
    QCOMPARE(found.error, 0);
    QCOMPARE(found.variables.size(), 2);
    QCOMPARE(found.rows.size(), 0);
}

void tst_ConvertLimits::noItems()
{
    const StatContents found = made(survey(item("N", "N", 4, 1),
                                        "\n[Record]\nLabel=Empty\nName=EMPTY\nRecordTypeValue='2'\n"
                                        "RecordLen=3\n"),
        "1011\n201\n", "stata", {}, "EMPTY");
    QVERIFY2(m_outcome.status == 0, m_outcome.errors.constData());
    QCOMPARE(found.rows, QVector<QStringList> { { "1" } });
}

void tst_ConvertLimits::wideNumbers_data()
{
    addFormats();
}

// Each width at the ends of what it holds; from 16 digits on a double rounds.
void tst_ConvertLimits::wideNumbers()
{
    QFETCH(QString, format);
    QByteArray items;
    QByteArray largest = "101";
    QByteArray lowest = "102";
    int start = 4;
    for (int width = 1; width <= 15; ++width) {
        const QByteArray name = "N" + QByteArray::number(width);
        items += item(name, name, start, width);
        largest += QByteArray(width, '9');
        lowest += width == 1 ? QByteArray("0") : '-' + QByteArray(width - 1, '9');
        start += width;
    }
    items += item("N18", "N18", start, 18);
    largest += "999999999999999999";
    lowest += "000000000000000001";
    const StatContents found = made(survey(items), largest + "\n" + lowest + "\n", format);
    QVERIFY2(m_outcome.status == 0, m_outcome.errors.constData());
    for (int width = 1; width <= 15; ++width) {
        QCOMPARE(found.rows.at(0).at(width), QString(width, '9'));
        QCOMPARE(found.rows.at(1).at(width), width == 1 ? "0" : '-' + QString(width - 1, '9'));
    }
    QCOMPARE(found.rows.at(0).at(16).toDouble(), 1e18);
    QVERIFY2(m_outcome.errors.contains("1 variable may be rounded"), m_outcome.errors.constData());
    QVERIFY2(m_outcome.errors.contains("N18: 1 value was rounded"), m_outcome.errors.constData());
    const QVector<readstat_type_t> types { READSTAT_TYPE_INT8, READSTAT_TYPE_INT8,
        READSTAT_TYPE_INT16, READSTAT_TYPE_INT16, READSTAT_TYPE_INT32 };
    for (int i = 0; format == "stata" && i < types.size(); ++i)
        QCOMPARE(found.variables.at(i + 1).type, types.at(i));
}

// Codes in the order of the dictionary, a range among them.
void tst_ConvertLimits::missingKinds()
{
    const QByteArray values = "\n[ValueSet]\nLabel=V\nName=N_VS1\nValue=1;One\nValue=98;Refused\n"
                              "Name=REFUSED,Special\nValue=90:95;Odd\nName=MISSING,Special\n"
                              "Value=97;Not asked\nName=NOTAPPL,Special\n";
    const QByteArray dictionary = survey(item("N", "N", 4, 2, "Numeric", values));
    const QByteArray data = "101 1\n10198\n10193\n10197\n101  \n101xx\n";
    const StatContents kinds = made(dictionary, data, "stata");
    QVERIFY2(m_outcome.status == 0, m_outcome.errors.constData());
    QStringList found;
    for (const QStringList& row : kinds.rows)
        found.append(row.at(1));
    QCOMPARE(found, (QStringList { "1", ".a", ".b", ".c", QString(), QString() }));
    QCOMPARE(kinds.labelsOf("N"),
        (QMap<QString, QString> {
            { "1", "One" }, { ".a", "Refused" }, { ".b", "Odd" }, { ".c", "Not asked" } }));
    QVERIFY2(m_outcome.errors.contains("1 value that is no number became missing"),
        m_outcome.errors.constData());
    const StatContents codes = made(dictionary, data, "stata", { "--missing", "code" });
    found.clear();
    for (const QStringList& row : codes.rows)
        found.append(row.at(1));
    QCOMPARE(found, (QStringList { "1", "98", "93", "97", QString(), QString() }));
}

// At most three codes, or a range and a code.
void tst_ConvertLimits::missingCodesOfSpss()
{
    const auto missing = [this](const QByteArray& codes) {
        const QByteArray values = "\n[ValueSet]\nLabel=V\nName=N_VS1\nValue=1;One\n" + codes;
        const StatContents found =
            made(survey(item("N", "N", 4, 2, "Numeric", values)), "101 1\n", "spss");
        return found.variables.value(1).missing;
    };
    const auto code = [](const QByteArray& value) {
        return "Value=" + value + ";M\nName=MISSING,Special\n";
    };
    QCOMPARE(missing(code("99")), QStringList { "99" });
    QCOMPARE(missing(code("99") + code("7") + code("88")), (QStringList { "99", "7", "88" }));
    QCOMPARE(missing(code("96") + code("97") + code("98") + code("99")), QStringList { "96:99" });
    QCOMPARE(
        missing(code("7") + code("97") + code("98") + code("99")), (QStringList { "97:99", "7" }));
    QCOMPARE(missing(code("90:95") + code("99")), (QStringList { "90:95", "99" }));
    QCOMPARE(missing(code("5") + code("7") + code("9") + code("99")).size(), 3);
    QVERIFY2(m_outcome.errors.contains("no longer missing"), m_outcome.errors.constData());
}

// The household's record may follow those of its persons, or lack.
void tst_ConvertLimits::mergedHouseholds()
{
    const QByteArray house = "\n[Record]\nLabel=H\nName=H\nRecordTypeValue='2'\nMaxRecords=1\n"
                             "RecordLen=9\n"
        + item("ROOMS", "Rooms", 4, 1) + item("N", "Other", 5, 1);
    const QByteArray dictionary = survey(item("N", "N", 4, 1), house);
    const QByteArray data = "1011\n201 34\n1012\n1021\n202 56\n20256\n1031\n";
    const QByteArray lines = QByteArray(data).replace("201 34", "20134").replace("202 56", "20256");
    const StatContents found = made(dictionary, lines, "stata", { "--merge" });
    QVERIFY2(m_outcome.status == 0, m_outcome.errors.constData());
    QStringList names;
    for (const StatContents::Variable& variable : found.variables)
        names.append(variable.name);
    QCOMPARE(names, (QStringList { "PLACE", "N", "ROOMS", "N_2" }));
    QCOMPARE(found.rows,
        (QVector<QStringList> { { "1", "1", "3", "4" }, { "1", "2", "3", "4" },
            { "2", "1", "5", "6" }, { "3", "1", QString(), QString() } }));
    QVERIFY2(m_outcome.errors.contains("1 record is in a case that has one already"),
        m_outcome.errors.constData());
}

// What a case has once stands on the rows of each level below; what a part of it has once does not.
void tst_ConvertLimits::mergedLevels()
{
    const auto level = [](const char* name, int column, char type) {
        const QByteArray own(name);
        return "\n[Level]\nLabel=" + own + "\nName=" + own + "_LEVEL\n\n[IdItems]\n"
            + item(own + "_ID", own, column, 1) + "\n[Record]\nLabel=" + own + "\nName=" + own
            + "\nRecordTypeValue='" + type + "'\nMaxRecords=1\nRecordLen=9\n"
            + item(own + "_V", own, 5, 1);
    };
    const QByteArray dictionary =
        "[Dictionary]\nVersion=CSPro 7.7\nLabel=D\nName=D\nRecordTypeStart=1\nRecordTypeLen=1\n"
        "Positions=Absolute\nZeroFill=No\nDecimalChar=No\n"
        + level("UP", 2, '1') + level("MID", 3, '2') + level("LOW", 4, '3');
    const QByteArray lines = "11  5\n211 6\n31117\n31128\n212 9\n31211\n12  2\n221 3\n32114\n";
    const StatContents low = made(dictionary, lines, "spss", { "--merge" }, "LOW");
    QVERIFY2(m_outcome.status == 0, m_outcome.errors.constData());
    QStringList names;
    for (const StatContents::Variable& variable : low.variables)
        names.append(variable.name);
    QCOMPARE(names, (QStringList { "UP_ID", "MID_ID", "LOW_ID", "LOW_V", "UP_V" }));
    QCOMPARE(low.rows,
        (QVector<QStringList> { { "1", "1", "1", "7", "5" }, { "1", "1", "2", "8", "5" },
            { "1", "2", "1", "1", "5" }, { "2", "1", "1", "4", "2" } }));
    const StatContents mid = StatContents::read(m_folder->filePath("out/MID.sav"));
    QCOMPARE(mid.rows,
        (QVector<QStringList> {
            { "1", "1", "6", "5" }, { "1", "2", "9", "5" }, { "2", "1", "3", "2" } }));
    const StatContents up = StatContents::read(m_folder->filePath("out/UP.sav"));
    QCOMPARE(up.rows, (QVector<QStringList> { { "1", "5" }, { "2", "2" } }));
}

void tst_ConvertLimits::repeatTables()
{
    const QByteArray dictionary =
        survey(item("N", "N", 4, 1) + item("CROP", "Crop", 5, 2, "Numeric", "Occurrences=3\n"));
    const StatContents found =
        made(dictionary, "101111  33\n1012\n1013 1 2\n", "spss", { "--repeats", "tables" }, "CROP");
    QVERIFY2(m_outcome.status == 0, m_outcome.errors.constData());
    QCOMPARE(found.rows,
        (QVector<QStringList> { { "1", "1", "1", "11" }, { "1", "1", "3", "33" },
            { "1", "3", "1", "1" }, { "1", "3", "2", "2" } }));
    const StatContents record = StatContents::read(m_folder->filePath("out/R.sav"));
    QCOMPARE(record.rows,
        (QVector<QStringList> { { "1", "1", "1" }, { "1", "2", "2" }, { "1", "3", "3" } }));
}

QTEST_GUILESS_MAIN(tst_ConvertLimits)
#include "tst_ConvertLimits.moc"
