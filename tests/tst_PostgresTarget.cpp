// Builds databases on a server of the test's own and compares them with those that SQLite gets from
// the same data, cell by cell.
#include "DataRows.h"
#include "MissingFiles.h"
#include "PostgresBuilds.h"

#include <QDirIterator>
#include <QtTest>

#include <sqlite3.h>

using namespace tessel;

namespace {

struct Cell {
    QByteArray text;
    bool isNull = false;
    bool isText = false;
};

using Rows = QVector<QVector<Cell>>;

// An SQLite file, read without the program.
class SqliteFile {
public:
    explicit SqliteFile(const QString& path)
    {
        sqlite3_open_v2(
            QFile::encodeName(path).constData(), &m_database, SQLITE_OPEN_READONLY, nullptr);
    }
    ~SqliteFile()
    {
        sqlite3_close(m_database);
    }
    SqliteFile(const SqliteFile&) = delete;
    SqliteFile& operator=(const SqliteFile&) = delete;

    Rows rows(const QByteArray& query) const
    {
        Rows found;
        sqlite3_stmt* statement = nullptr;
        sqlite3_prepare_v2(m_database, query.constData(), -1, &statement, nullptr);
        while (statement && sqlite3_step(statement) == SQLITE_ROW) {
            QVector<Cell> row;
            for (int c = 0; c < sqlite3_column_count(statement); ++c)
                row.append(cell(statement, c));
            found.append(row);
        }
        sqlite3_finalize(statement);
        return found;
    }

private:
    static Cell cell(sqlite3_stmt* statement, int column)
    {
        const int type = sqlite3_column_type(statement, column);
        if (type == SQLITE_NULL)
            return { {}, true, false };
        if (type == SQLITE_FLOAT)
            return { QByteArray::number(sqlite3_column_double(statement, column), 'g', 17) };
        const char* text = reinterpret_cast<const char*>(sqlite3_column_text(statement, column));
        return { QByteArray(text, sqlite3_column_bytes(statement, column)), false,
            type == SQLITE_TEXT };
    }

    sqlite3* m_database = nullptr;
};

QByteArray unescaped(const QByteArray& text)
{
    QByteArray result;
    for (int i = 0; i < text.size(); ++i) {
        if (text.at(i) != '\\') {
            result += text.at(i);
            continue;
        }
        const char letter = text.at(++i);
        const int place = QByteArray("bfnrtv").indexOf(letter);
        result += place < 0 ? letter : "\b\f\n\r\t\v"[place];
    }
    return result;
}

// The text that COPY writes, cut into its values.
Rows rowsOf(const QByteArray& copied)
{
    Rows rows;
    for (const QByteArray& line : copied.split('\n')) {
        QVector<Cell> row;
        for (const QByteArray& value : line.split('\t'))
            row.append({ unescaped(value), value == "\\N", false });
        rows.append(row);
    }
    rows.removeLast();
    return rows;
}

// Without the zeros that change nothing.
QByteArray shortest(QByteArray number)
{
    const bool isNegative = number.startsWith('-');
    number = number.mid(isNegative ? 1 : 0);
    while (number.size() > 1 && number.startsWith('0'))
        number = number.mid(1);
    return isNegative ? '-' + number : number;
}

bool areEqual(const Cell& lite, const Cell& server)
{
    if (lite.isNull || server.isNull)
        return lite.isNull && server.isNull;
    if (lite.text == server.text || shortest(lite.text) == server.text)
        return true;
    bool isLiteNumber = false;
    bool isServerNumber = false;
    const double first = lite.text.toDouble(&isLiteNumber);
    const double second = server.text.toDouble(&isServerNumber);
    return !lite.isText && isLiteNumber && isServerNumber && !(first < second) && !(first > second);
}

// As PostgreSQL has a name of the plan.
QByteArray quoted(const QByteArray& name)
{
    bool isPlain = true;
    for (const char c : name)
        isPlain = isPlain && (QByteArray("_").contains(c) || (isalnum(uchar(c)) != 0 && c > 0));
    return '"' + (isPlain ? name.toLower() : QByteArray(name).replace('"', "\"\"")) + '"';
}

void writeDatabase(const QString& path, const QByteArray& statements)
{
    QFile::remove(path);
    sqlite3* database = nullptr;
    sqlite3_open(QFile::encodeName(path).constData(), &database);
    QCOMPARE(sqlite3_exec(database, statements.constData(), nullptr, nullptr, nullptr), SQLITE_OK);
    sqlite3_close(database);
}

// A case whose values are all wider than their items; one text is not in UTF-8.
QByteArray wideCase()
{
    return "CREATE TABLE meta (schema_version INTEGER, cspro_version TEXT, dictionary TEXT);"
           "INSERT INTO meta VALUES (3, '8.0', '"
        + surveyDictionary().replace("'", "''")
        + "');CREATE TABLE cases (id TEXT, key TEXT, label TEXT, questionnaire TEXT, deleted "
          "INTEGER, file_order REAL UNIQUE, partial_save_mode TEXT);"
          "CREATE TABLE `level-1` (`level-1-id` INTEGER PRIMARY KEY, `case-id` TEXT, place "
          "INTEGER, "
          "number INTEGER);CREATE UNIQUE INDEX i0 ON `level-1`(`case-id`);"
          "CREATE TABLE house (`house-id` INTEGER PRIMARY KEY, `level-1-id` INTEGER, rooms "
          "INTEGER, "
          "weight REAL, kind TEXT);CREATE INDEX i1 ON house(`level-1-id`);"
          "CREATE TABLE person (`person-id` INTEGER PRIMARY KEY, `level-1-id` INTEGER, occ "
          "INTEGER, "
          "age INTEGER, name TEXT, first TEXT);CREATE INDEX i2 ON person(`level-1-id`);"
          "INSERT INTO cases VALUES ('u1', '0101', '', '', 0, 1.0, NULL);"
          "INSERT INTO `level-1` VALUES (1, 'u1', 1, 1);"
          "INSERT INTO house VALUES (1, 1, 123456789012345, 123456.78, 'longer than two');"
          "INSERT INTO person VALUES (1, 1, 1, 1234, CAST(X'C9746F696C65' AS TEXT), 'First');";
}

// What differs between two builds of the same data.
QByteArray columnsOf(const QByteArray& table)
{
    return table == "tessel_builds" ? "build_id, version, lines, row_count, rejected_lines, "
                                      "deleted_lines, blank_lines, cases, deleted_cases, problems"
                                    : "*";
}

} // namespace

class tst_PostgresTarget : public QObject, private PostgresBuilds {
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void sameAsSqlite_data();
    void sameAsSqlite();
    void popstan();
    void comments();
    void objects();
    void views();
    void exact();
    void manyDigits();
    void longCodes();
    void hostile();
    void nullCharacters();
    void widerThanItems();
    void widerThanBefore();
    void notUtf8();
    void missingRanges();
    void missingKinds();
    void wideRows_data();
    void wideRows();
    void duplicates();

private:
    // Says that it is UTF-8, which its first text is not.
    QByteArray notUtf8Data() const
    {
        QByteArray bytes = readFile(QStringLiteral(TESSEL_EXAMPLES "/person.dta"));
        const QByteArray name("C\xC3\xA9sar");
        return bytes.replace(bytes.indexOf(name), name.size(), QByteArray("C\xE9sar\0", 6));
    }

    QString m_corpus = qEnvironmentVariable("TESSEL_CORPUS");
};

void tst_PostgresTarget::initTestCase()
{
    const QString missing = m_server.start();
    if (!missing.isEmpty())
        QSKIP(qPrintable(missing));
}

void tst_PostgresTarget::init()
{
    QCOMPARE(
        ask("SET client_min_messages = error; DROP SCHEMA IF EXISTS b CASCADE;"), QByteArray());
}

void tst_PostgresTarget::sameAsSqlite_data()
{
    QTest::addColumn<QStringList>("source");
    QTest::addColumn<QStringList>("options");
    const QString examples = QStringLiteral(TESSEL_EXAMPLES "/");
    const QStringList census { m_dictionary, m_data };
    QTest::newRow("census") << census << QStringList();
    QTest::newRow("tables of repeats") << census << QStringList { "--repeats", "tables" };
    QTest::newRow("problems") << QStringList { m_dictionary, examples + "census_problems.dat" }
                              << QStringList();
    for (const char* name : { "person.sav", "household.sav", "person.dta", "household.dta" })
        QTest::newRow(name) << QStringList { examples + name } << QStringList();
    const QString wide = m_folder.filePath("wide.csdb");
    writeDatabase(wide, wideCase());
    QTest::newRow("wider than items") << QStringList { wide } << QStringList();
    const QString other = writeFile(m_folder, "other.dta", notUtf8Data());
    QTest::newRow("not UTF-8") << QStringList { other } << QStringList();
    if (m_corpus.isEmpty())
        return;
    // Two of many: the real files are all read back from SQLite.
    const QString pair = QDir(m_corpus).filePath("cspro-json/popstan-census-full");
    QTest::newRow("pair") << QStringList { pair + ".dcf", pair + ".dat" } << QStringList();
    QDirIterator stored(
        m_corpus, { "popstan-household-8.0.csdb" }, QDir::Files, QDirIterator::Subdirectories);
    if (stored.hasNext())
        QTest::newRow("csdb") << QStringList { stored.next() } << QStringList();
}

void tst_PostgresTarget::sameAsSqlite()
{
    QFETCH(QStringList, source);
    QFETCH(QStringList, options);
    const QString path = m_folder.filePath("same.sqlite");
    const Outcome lite = runTessel(
        QStringList { "build" } + source + options + QStringList { "--overwrite", "--to", path });
    const Outcome server = build(source, options);
    QCOMPARE(server.status, lite.status);
    QVERIFY2(server.status == 0, (server.errors + lite.errors).constData());
    QCOMPARE(
        server.output.mid(server.output.indexOf('\n')), lite.output.mid(lite.output.indexOf('\n')));
    const SqliteFile file(path);
    const Rows names =
        file.rows("SELECT name FROM sqlite_master WHERE type = 'table' ORDER BY rowid");
    QVERIFY(names.size() > 7);
    for (const QVector<Cell>& row : names) {
        const QByteArray name = row.at(0).text;
        const QByteArray columns = columnsOf(name);
        const Rows expected = file.rows("SELECT " + columns + " FROM \""
            + QByteArray(name).replace('"', "\"\"") + "\" ORDER BY rowid");
        const QByteArray order = name == "cases" ? "case_id" : "ctid";
        const Outcome copied = m_server.ask("COPY (SELECT " + columns + " FROM b." + quoted(name)
            + " ORDER BY " + order + ") TO STDOUT;");
        QVERIFY2(copied.status == 0, copied.errors.constData());
        const Rows rows = rowsOf(copied.output);
        QCOMPARE(rows.size(), expected.size());
        for (int r = 0; r < rows.size(); ++r) {
            QCOMPARE(rows.at(r).size(), expected.at(r).size());
            for (int c = 0; c < rows.at(r).size(); ++c) {
                const Cell& here = rows.at(r).at(c);
                QVERIFY2(areEqual(expected.at(r).at(c), here),
                    (name + ' ' + QByteArray::number(r) + ' ' + QByteArray::number(c) + ": "
                        + here.text + ", not " + expected.at(r).at(c).text)
                        .constData());
            }
        }
    }
}

void tst_PostgresTarget::popstan()
{
    if (m_corpus.isEmpty())
        QSKIP("TESSEL_CORPUS names no folder with real dictionaries and data");
    const QString base = QDir(m_corpus).filePath("cspro-json/popstan-census-full");
    const Outcome built = build({ base + ".dcf", base + ".dat" });
    QVERIFY2(built.status == 0, built.errors.constData());
    QCOMPARE(ask("SELECT count(*) FROM b.person;"), QByteArray("24271"));
    QCOMPARE(ask("SELECT count(*) FROM b.housing;"), QByteArray("4872"));
    QCOMPARE(ask("SELECT count(*) FROM b.tessel_rejects;"), QByteArray("0"));
}

void tst_PostgresTarget::comments()
{
    QCOMPARE(build({ m_dictionary, m_data }).status, 0);
    QCOMPARE(ask("SELECT obj_description('b.person'::regclass);"), QByteArray("Person"));
    QCOMPARE(ask("SELECT col_description(attrelid, attnum) FROM pg_attribute WHERE attrelid = "
                 "'b.person'::regclass AND attname = 'sex';"),
        QByteArray("Sex"));
    QCOMPARE(ask("SELECT obj_description('b.person_labels'::regclass);"),
        QByteArray("PERSON with labels in place of codes"));
    QCOMPARE(ask("SELECT obj_description('b.person_valid'::regclass);"),
        QByteArray("PERSON without missing and not-applicable codes"));
    // ANALYZE has run, the key and the indexes are there.
    QCOMPARE(ask("SELECT tablename FROM pg_stats WHERE schemaname = 'b' AND attname = 'sex';"),
        QByteArray("person"));
    QCOMPARE(
        ask("SELECT indexrelid::regclass FROM pg_index WHERE indrelid IN "
            "('b.cases'::regclass, 'b.person'::regclass) ORDER BY indexrelid::regclass::text;"),
        QByteArray("b.cases_key\nb.cases_pkey\nb.cases_uuid\nb.person_case"));
    QCOMPARE(ask("SELECT count(*) FROM pg_class WHERE relname LIKE 'tessel\\_build\\_%';"),
        QByteArray("0"));
}

void tst_PostgresTarget::objects()
{
    const QString dictionary = writeFile(m_folder, "survey.dcf", surveyDictionary());
    QCOMPARE(build({ dictionary, writeFile(m_folder, "one.dat", "10101 3\n") }).status, 0);
    QCOMPARE(ask("SELECT replace(pg_get_indexdef(indexrelid), 'USING btree ', '') FROM pg_index "
                 "JOIN pg_class ON oid = indrelid WHERE relnamespace = 'b'::regnamespace ORDER BY "
                 "indexrelid::regclass::text;"),
        QByteArray("CREATE UNIQUE INDEX age_vs1_code ON b.age_vs1 (code_from)\n"
                   "CREATE INDEX cases_key ON b.cases (place, number)\n"
                   "CREATE UNIQUE INDEX cases_pkey ON b.cases (case_id)\n"
                   "CREATE INDEX cases_uuid ON b.cases (uuid) WHERE (uuid IS NOT NULL)\n"
                   "CREATE INDEX house_case ON b.house (case_id)\n"
                   "CREATE UNIQUE INDEX kind_vs1_code ON b.kind_vs1 (code)\n"
                   "CREATE INDEX person_case ON b.person (case_id)\n"
                   "CREATE UNIQUE INDEX rooms_vs1_code ON b.rooms_vs1 (code_from)\n"
                   "CREATE UNIQUE INDEX rooms_vs2_code ON b.rooms_vs2 (code_from)"));
    QCOMPARE(ask("SELECT attrelid::regclass, attname FROM pg_attribute JOIN pg_class c ON c.oid = "
                 "attrelid WHERE relnamespace = 'b'::regnamespace AND attnotnull AND attnum > 0;"),
        QByteArray("b.cases|case_id"));
    QCOMPARE(ask("SELECT conrelid::regclass, conname FROM pg_constraint WHERE connamespace = "
                 "'b'::regnamespace;"),
        QByteArray("b.cases|cases_pkey"));
    QCOMPARE(ask("SELECT viewname FROM pg_views WHERE schemaname = 'b' ORDER BY 1;"),
        QByteArray("house_labels\nhouse_valid\nperson_labels\nperson_valid"));
}

void tst_PostgresTarget::views()
{
    QCOMPARE(build({ m_dictionary, m_data }).status, 0);
    const QByteArray labels =
        ask("SELECT sex, count(*) FROM b.person_labels GROUP BY 1 ORDER BY 1;");
    const QByteArray joined = ask("SELECT v.label, count(*) FROM b.person p JOIN b.sex_vs1 v ON "
                                  "v.code = p.sex GROUP BY 1 ORDER BY 1;");
    const bool hasTable = !joined.contains("ERROR");
    QVERIFY2(labels.contains("Female|"), labels.constData());
    if (hasTable)
        QCOMPARE(labels, joined);
    // Without their codes for missing and not applicable, values are fewer, and never others.
    QCOMPARE(ask("SELECT count(*) FROM b.person_valid v JOIN b.person p USING (case_id, row) WHERE "
                 "v.birth_month <> p.birth_month;"),
        QByteArray("0"));
    QVERIFY(ask("SELECT count(birth_month) FROM b.person_valid;").toInt()
        < ask("SELECT count(birth_month) FROM b.person;").toInt());
}

QByteArray exactDictionary()
{
    return "[Dictionary]\nVersion=CSPro 7.7\nName=EXACT\nRecordTypeStart=0\nRecordTypeLen=0\n"
           "[Level]\nName=L\n[IdItems]\n[Item]\nName=ID\nStart=1\nLen=2\nDataType=Numeric\n"
           "[Record]\nName=R\nRecordLen=76\n"
           "[Item]\nName=WHOLE\nStart=3\nLen=18\nDataType=Numeric\n"
           "[Item]\nName=SHARE\nStart=21\nLen=18\nDataType=Numeric\nDecimal=4\n"
           "[Item]\nName=SMALL\nStart=39\nLen=6\nDataType=Numeric\nDecimal=5\n"
           "[Item]\nName=ZEROS\nStart=45\nLen=4\nDataType=Alpha\n";
}

void tst_PostgresTarget::exact()
{
    const QString dictionary = writeFile(m_folder, "exact.dcf", exactDictionary());
    const QString data = writeFile(m_folder, "exact.dat",
        "01999999999999999999123456789012345678012345 007\n"
        "02-9999999999999999900000000000000012300000100 0\n"
        "03000000000000000001-0000000000000000100000 0000\n"
        "04                  000010000000000000100000\n"
        "05     -123456789012 99999999999999999-1234500a0\n");
    const Outcome built = build({ dictionary, data });
    QVERIFY2(built.status == 0, built.errors.constData());
    QCOMPARE(ask("SELECT id, whole, share, small, zeros FROM b.r ORDER BY id;"),
        QByteArray("1|999999999999999999|12345678901234.5678|0.12345| 007\n"
                   "2|-99999999999999999|0.0123|0.00001|00 0\n"
                   "3|1|-0.0001||0000\n"
                   "4||1000000000.0000|1.00000|\n"
                   "5|-123456789012|9999999999999.9999|-0.12345|00a0"));
    QCOMPARE(ask("SELECT sum(share) FROM b.r WHERE id < 3;"), QByteArray("12345678901234.5801"));
}

void tst_PostgresTarget::manyDigits()
{
    const QString dictionary = writeFile(m_folder, "digits.dcf",
        "[Dictionary]\nVersion=CSPro 7.7\nName=DIGITS\nRecordTypeStart=0\nRecordTypeLen=0\n"
        "[Level]\nName=L\n[IdItems]\n[Item]\nName=ID\nStart=1\nLen=1\nDataType=Numeric\n"
        "[Record]\nName=R\nRecordLen=26\n[Item]\nName=V\nStart=2\nLen=25\nDataType=Numeric\n");
    const QString data = writeFile(m_folder, "digits.dat",
        "1-123456789012345678901234\n21234567890123456789012345\n3-000000000000000000000000\n"
        "4    -10000000000000000000\n5                       -7\n6\n");
    const Outcome built = build({ dictionary, data });
    QVERIFY2(built.status == 0, built.errors.constData());
    QCOMPARE(ask("SELECT id, v FROM b.r ORDER BY 1;"),
        QByteArray("1|-123456789012345678901234\n2|1234567890123456789012345\n3|0\n"
                   "4|-10000000000000000000\n5|-7\n6|"));
}

// Longer than an index takes, and such that they do not get shorter when they are compressed.
void tst_PostgresTarget::longCodes()
{
    QByteArray code;
    for (int i = 0; code.size() < 9000; ++i)
        code += QCryptographicHash::hash(QByteArray::number(i), QCryptographicHash::Sha256)
                    .toBase64(QByteArray::OmitTrailingEquals);
    const QByteArray width = QByteArray::number(code.size());
    const QString dictionary = writeFile(m_folder, "codes.dcf",
        "[Dictionary]\nVersion=CSPro 7.7\nName=CODES\nRecordTypeStart=0\nRecordTypeLen=0\n"
        "[Level]\nName=L\n[IdItems]\n[Item]\nName=ID\nStart=1\nLen=1\nDataType=Numeric\n"
        "[Record]\nName=R\nRecordLen="
            + QByteArray::number(code.size() + 1) + "\n[Item]\nName=V\nStart=2\nLen=" + width
            + "\nDataType=Alpha\n[ValueSet]\nName=VS\nValue='" + code + "';Long\n");
    const Outcome built =
        build({ dictionary, writeFile(m_folder, "codes.dat", '1' + code + "\n2other\n") });
    QVERIFY2(built.status == 0, built.errors.constData());
    QCOMPARE(ask("SELECT v FROM b.r_labels ORDER BY id;"), QByteArray("Long\nother"));
}

QByteArray hostileDictionary()
{
    const QByteArray longName(70, 'L');
    return "\xEF\xBB\xBF[Dictionary]\nVersion=CSPro 7.7\nName=HOSTILE\nLabel=x\nRecordTypeStart=1\n"
           "RecordTypeLen=1\n[Level]\nName=L\n[IdItems]\n"
           "[Item]\nLabel=It's \"the\" id'); DROP TABLE cases;--\nName=SELECT\nStart=2\nLen=1\n"
           "DataType=Numeric\n"
           "[Record]\nLabel=O'Brien\\\nName=TABLE\nRecordTypeValue='1'\nRecordLen=90\n"
           "[Item]\nLabel=\xD8\xA7\xD9\x84\xD8\xA7\xD8\xB3\xD9\x85 \xF0\x9F\x98\x80\nName="
        + longName
        + "_1\nStart=3\nLen=20\nDataType=Alpha\n"
          "[ValueSet]\nName=USER\nValue='a''b                ';it's\n"
          "Value='\xF0\x9F\x98\x80                   ';\xD8\xA7'); DROP TABLE cases;--\n"
          "[Item]\nLabel=b\nName="
        + longName
        + "_2\nStart=23\nLen=20\nDataType=Alpha\n"
          "[Item]\nLabel=c\nName=CTID\nStart=43\nLen=1\nDataType=Numeric\n"
          "[ValueSet]\nName=ORDER\nValue=1;\\N\nValue=2:3;c\nValue=4;\\.\n";
}

void tst_PostgresTarget::hostile()
{
    const QString dictionary = writeFile(m_folder, "hostile.dcf", hostileDictionary());
    const QString emoji = QString::fromUtf8("\xF0\x9F\x98\x80");
    const auto line = [](const QString& id, const QString& first, const QString& second,
                          const QString& third) {
        return ('1' + id + first.leftJustified(20) + second.leftJustified(20) + third + '\n');
    };
    const QString data = writeFile(m_folder, "hostile.dat",
        (line("1", "'); DROP TABLE cases", "\\N", "1") + line("2", "\\.", "tab\there", "4")
            + line("3", emoji.leftJustified(21), QString::fromUtf8("\xD8\xA7\xD9\x84"), "9")
            + line("4", "a\"b''c", "\\\\", " "))
            .toUtf8());
    const Outcome built = build({ dictionary, data });
    QVERIFY2(built.status == 0, built.errors.constData());
    const QByteArray columns = ask("SELECT string_agg(quote_ident(attname), ',' ORDER BY attnum) "
                                   "FROM pg_attribute WHERE attrelid = 'b.\"TABLE\"'::regclass AND "
                                   "attnum > 3;");
    QCOMPARE(columns.split(',').size(), 3);
    for (const QByteArray& column : columns.split(','))
        QVERIFY2(column.size() <= 65, column.constData());
    const QByteArray first = columns.split(',').at(0);
    const QByteArray second = columns.split(',').at(1);
    const QByteArray third = columns.split(',').at(2);
    QCOMPARE(ask("SELECT \"SELECT\", " + first + ", " + second + ", " + third
                 + " FROM b.\"TABLE\" ORDER BY 1;"),
        QByteArray("1|'); DROP TABLE cases|\\N|1\n2|\\.|tab\there|4\n3|" + emoji.toUtf8()
            + "|\xD8\xA7\xD9\x84|9\n4|a\"b''c|\\\\|"));
    QCOMPARE(ask("SELECT " + third + " FROM b.table_labels ORDER BY \"SELECT\";"),
        QByteArray("\\N\n\\.\n9\n").trimmed());
    QCOMPARE(ask("SELECT col_description('b.\"TABLE\"'::regclass, 3), "
                 "obj_description('b.\"TABLE\"'::regclass);"),
        QByteArray("It's \"the\" id'); DROP TABLE cases;--|O'Brien\\"));
    // Also where a backslash in quotes meant something else.
    const Outcome other = runTessel({ "build", dictionary, data, "--to",
        withSettings({ "standard_conforming_strings=off" }), "--schema", "b", "--overwrite" });
    QVERIFY2(other.status == 0, other.errors.constData());
    QCOMPARE(ask("SELECT obj_description('b.\"TABLE\"'::regclass);"), QByteArray("O'Brien\\"));
}

void tst_PostgresTarget::nullCharacters()
{
    const QString dictionary = writeFile(m_folder, "survey.dcf", surveyDictionary());
    const QByteArray line("20101 30ab\0cd\n", 14);
    const QByteArray rejected("X0101 \0\n", 8);
    const QString data = writeFile(m_folder, "null.dat", line + rejected + "20102 31plain\n");
    const Outcome built = build({ dictionary, data });
    QVERIFY2(built.status == 0, built.errors.constData());
    QVERIFY2(built.output.contains("2 texts hold a null character"), built.output.constData());
    QCOMPARE(ask("SELECT name FROM b.person ORDER BY case_id;"),
        QByteArray("ab\xE2\x90\x80"
                   "cd\nplain"));
    QCOMPARE(ask("SELECT text FROM b.tessel_rejects;"), QByteArray("X0101 \xE2\x90\x80"));
    QCOMPARE(ask("SELECT line, case_id, record, variable, value FROM b.tessel_problems WHERE "
                 "variable = 'NAME';"),
        QByteArray("1|1|PERSON|NAME|ab\xE2\x90\x80"
                   "cd"));
    QCOMPARE(
        ask("SELECT problems = (SELECT count(*) FROM b.tessel_problems) FROM b.tessel_builds;"),
        QByteArray("t"));
}

void tst_PostgresTarget::widerThanItems()
{
    const QString path = m_folder.filePath("wide.csdb");
    writeDatabase(path, wideCase());
    const Outcome built = build({ path });
    QVERIFY2(built.status == 0, built.errors.constData());
    QCOMPARE(ask("SELECT rooms, weight, kind FROM b.house;"),
        QByteArray("123456789012345|123456.78|longer than two"));
    QCOMPARE(ask("SELECT age, name, first FROM b.person;"), QByteArray("1234|\xC3\x89toile|First"));
    QCOMPARE(ask("SELECT line, case_id, variable, value FROM b.tessel_problems WHERE kind = "
                 "'other-encoding';"),
        QByteArray("1|1|NAME|\xC3\x89toile"));
}

// Columns of text data hold no more than their items do, until a CSPro DB has more.
void tst_PostgresTarget::widerThanBefore()
{
    const QString path = m_folder.filePath("wide.csdb");
    writeDatabase(path, wideCase());
    const QString data = writeFile(m_folder, "survey.dat", "10203 5\n20203 33Anna\n");
    QCOMPARE(build({ writeFile(m_folder, "survey.dcf", surveyDictionary()), data }).status, 0);
    const QByteArray types = "SELECT format_type(atttypid, NULL) FROM pg_attribute WHERE attrelid "
                             "= 'b.house'::regclass AND attname = 'rooms';";
    QCOMPARE(ask(types), QByteArray("smallint"));
    const Outcome added = build({ path }, { "--add" });
    QVERIFY2(added.status == 0, added.errors.constData());
    QCOMPARE(ask(types), QByteArray("bigint"));
    QCOMPARE(ask("SELECT rooms FROM b.house ORDER BY case_id;"), QByteArray("5\n123456789012345"));
    QCOMPARE(ask("SELECT age FROM b.person_valid ORDER BY case_id;"), QByteArray("33\n1234"));
}

void tst_PostgresTarget::notUtf8()
{
    const Outcome built = build({ writeFile(m_folder, "other.dta", notUtf8Data()) });
    QVERIFY2(built.status == 0, built.errors.constData());
    QCOMPARE(ask("SELECT line, value, variable IS NOT NULL FROM b.tessel_problems WHERE kind = "
                 "'other-encoding';"),
        QByteArray("1|C\xC3\xA9sar|t"));
}

// Also those from the lowest or to the highest number; labels are those of what is in no range too.
void tst_PostgresTarget::missingRanges()
{
    const QString file = m_folder.filePath("t.sav");
    QVERIFY(writeSpss(file));
    const Outcome built = build({ file });
    QVERIFY2(built.status == 0, built.errors.constData());
    QCOMPARE(ask("SELECT * FROM b.t ORDER BY row;"),
        QByteArray("1|1|-2|89|5|2|x'\n2|99|-1|90|6.5|0|y\n3|0.1|7|1e+300|4.9|-9|y\n"
                   "4|3|0|0|7|1|y"));
    QCOMPARE(ask("SELECT * FROM b.t_valid ORDER BY row;"),
        QByteArray("1|1||89|||\n2||||||y\n3||||4.9||y\n4|3|0|0|7||y"));
    QCOMPARE(ask("SELECT coded, low, whole FROM b.t_labels ORDER BY row;"),
        QByteArray("Yes|-2|No\nRefused|-1|0\n0.1|7|-9\n3|0|Yes"));
}

void tst_PostgresTarget::missingKinds()
{
    const QString file = m_folder.filePath("t.dta");
    QVERIFY(writeStata(file));
    const Outcome built = build({ file });
    QVERIFY2(built.status == 0, built.errors.constData());
    QCOMPARE(ask("SELECT * FROM b.tessel_missing ORDER BY row, column_name;"),
        QByteArray("t|coded|1|.a\nt|plain|1|.a\nt|coded|2|.z\nt|plain|2|.z"));
    QCOMPARE(ask("SELECT coded, plain FROM b.t_labels ORDER BY row;"),
        QByteArray("Won't say|\n.z|\n|\nYes|1.5\n2|2.5"));
    QVERIFY(build({ file }, { "--overwrite" }).status == 0);
}

void tst_PostgresTarget::wideRows_data()
{
    QTest::addColumn<int>("columns");
    QTest::addColumn<int>("width");
    QTest::addColumn<QByteArray>("type");
    QTest::addColumn<int>("tables");
    QTest::newRow("numbers") << 1500 << 8 << QByteArray("DataType=Numeric") << 2;
    QTest::newRow("decimals") << 1500 << 18 << QByteArray("DataType=Numeric\nDecimal=9") << 4;
    QTest::newRow("many digits") << 700 << 40 << QByteArray("DataType=Numeric") << 3;
    QTest::newRow("texts") << 700 << 23 << QByteArray("DataType=Alpha") << 3;
    QTest::newRow("long texts") << 700 << 100 << QByteArray("DataType=Alpha") << 3;
}

// Every column is filled, with values that do not get shorter when they are compressed.
void tst_PostgresTarget::wideRows()
{
    QFETCH(int, columns);
    QFETCH(int, width);
    QFETCH(QByteArray, type);
    QFETCH(int, tables);
    QByteArray text = "[Dictionary]\nVersion=CSPro 7.7\nName=WIDE\nRecordTypeStart=0\n"
                      "RecordTypeLen=0\n[Level]\nName=L\n[IdItems]\n[Item]\nName=ID\nStart=1\n"
                      "Len=1\nDataType=Numeric\n[Record]\nName=R\nRecordLen="
        + QByteArray::number(1 + columns * width) + '\n';
    QByteArray data = "1";
    quint64 random = 88172645463325252ULL;
    for (int c = 0; c < columns; ++c) {
        text += "[Item]\nName=V" + QByteArray::number(c)
            + "\nStart=" + QByteArray::number(2 + c * width) + "\nLen=" + QByteArray::number(width)
            + '\n' + type + '\n';
        for (int i = 0; i < width; ++i) {
            random ^= random << 13;
            random ^= random >> 7;
            random ^= random << 17;
            data += char('1' + random % 9);
        }
    }
    const Outcome built = build(
        { writeFile(m_folder, "rows.dcf", text), writeFile(m_folder, "rows.dat", data + '\n') });
    QVERIFY2(built.status == 0, built.errors.constData());
    QCOMPARE(ask("SELECT count(*) FROM b.tessel_records WHERE row_count = 1;").toInt(), tables);
    // The parts side by side are the line.
    QByteArray found = ask("SELECT id FROM b.r;");
    for (int part = 1; part <= tables; ++part) {
        const QByteArray table = part == 1 ? "r" : "r_" + QByteArray::number(part);
        QByteArray row = ask("SELECT * FROM b." + table + ';');
        row = row.mid(row.indexOf('|', row.indexOf('|') + 1) + (part == 1 ? 3 : 1));
        found += row.replace("|", "").replace(".", "");
    }
    QCOMPARE(found, data);
}

void tst_PostgresTarget::duplicates()
{
    const QString dictionary = writeFile(m_folder, "survey.dcf", surveyDictionary());
    const QString data =
        writeFile(m_folder, "twice.dat", "10101 3\n10102 3\n10101 4\n10102 3\n10101 5\n10103 1\n");
    QCOMPARE(build({ dictionary, data }).status, 0);
    QCOMPARE(ask("SELECT case_id, duplicate_of FROM b.cases ORDER BY 1;"),
        QByteArray("1|\n2|\n3|1\n4|2\n5|1\n6|"));
}

QTEST_GUILESS_MAIN(tst_PostgresTarget)
#include "tst_PostgresTarget.moc"
