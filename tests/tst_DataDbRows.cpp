// What tables of a CSPro DB hold beyond what a dictionary and the cases lead to, told row by row.
#include "DataRows.h"
#include "SurveyDb.h"

#include <tessel_data/CSProDbSource.h>
#include <tessel_data/DataError.h>
#include <tessel_data/SelectedSource.h>

#include <QRegularExpression>

using namespace tessel;

namespace {

QByteArray withoutPart(QByteArray text, const QByteArray& from, const QByteArray& to)
{
    const int start = text.indexOf(from);
    const int end = to.isEmpty() ? text.size() : text.indexOf(to, start);
    return start < 0 || end < start ? QByteArray() : text.remove(start, end - start);
}

// Counts and problems of a check, these as "kind line [case] variable 'value'".
struct Checked {
    explicit Checked(DataSource& source)
    {
        CheckOptions options;
        options.onProblem = [&](const DataProblem& problem) {
            problems.append(
                QStringLiteral("%1 %2 [%3] %4 '%5'")
                    .arg(problemKindName(problem.kind))
                    .arg(problem.line)
                    .arg(problem.caseKey,
                        problem.variable < 0
                            ? QString()
                            : source.dictionary().variables[std::size_t(problem.variable)].name,
                        problem.value));
        };
        Checker checker(source.dictionary(), options);
        runPipeline(source, checker);
        report = checker.report();
    }

    QStringList of(const char* kind) const
    {
        return problems.filter(QRegularExpression(QLatin1String("^") + QLatin1String(kind)));
    }

    QStringList problems;
    CheckReport report;
};

Checked checkedAll(const QString& file)
{
    CSProDbSource source(file);
    return Checked(source);
}

} // namespace

class TestDataDbRows : public QObject {
    Q_OBJECT

private slots:
    void recordLeftOut();
    void itemsLeftOut();
    void deeperLevelLeftOut();
    void ownDictionaryUnreadable();
    void wrongDictionary_data();
    void wrongDictionary();
    void belowOrphans();
    void belowDeletedCases();
    void unreachable_data();
    void unreachable();
    void tooWide();
    void keyDiffers();
    void keyDiffersInBlanks();
    void keyDiffersInText();
    void keyDiffersInTextItem();
    void caseOfPart();
    void specials();
    void emptyRow();

private:
    QString database(const char* name, const QByteArray& sql) const
    {
        const QString path = m_folder.filePath(QLatin1String(name));
        SqliteWriter(path).run(sql);
        return path;
    }
    DataDictionary dictionaryOf(const QByteArray& text) const
    {
        return DataDictionary::fromFile(writeFile(m_folder, QStringLiteral("given.dcf"), text));
    }
    QTemporaryDir m_folder;
};

// As the lines of a record type that is not known, each with all that it holds.
void TestDataDbRows::recordLeftOut()
{
    const QString file = database("r.csdb", surveyDb());
    const QByteArray given = withoutPart(surveyDictionary(), "[Record]\nLabel=Person", "");
    CSProDbSource source(file, dictionaryOf(given));
    const Checked checked(source);
    QCOMPARE(checked.of("not-in-dictionary"),
        QStringList { "not-in-dictionary 0 []  'record PERSON: 4 rows'" });
    const QStringList rejected = checked.of("unknown-record-type");
    QCOMPARE(rejected.size(), 4);
    QCOMPARE(rejected.first(),
        QStringLiteral("unknown-record-type 1 [0101]  'person: place=1 number=1 person-id=1 "
                       "level-1-id=1 occ=1 '"));
    QCOMPARE(rejected.last(),
        QStringLiteral("unknown-record-type 2 [0102]  'person: place=1 number=2 person-id=4 "
                       "level-1-id=2 occ=2 age=1.5 name='Al' first='Al' '"));
    QCOMPARE(checked.report.counts.records, 2LL);
    QCOMPARE(checked.report.counts.rejectedLines, 4LL);
    QVERIFY(checked.report.addsUp);
    QVERIFY(!checked.report.isClean());
    CSProDbSource own(file);
    QCOMPARE(Checked(own).of("not-in-dictionary"), QStringList());
}

// A subitem is in its item; the number of values that are not read is told of others.
void TestDataDbRows::itemsLeftOut()
{
    const QString file = database("i.csdb", surveyDb());
    QByteArray given =
        withoutPart(surveyDictionary(), "[Item]\nLabel=Weight", "[Item]\nLabel=Kind");
    given = withoutPart(given, "[Item]\nLabel=First", "");
    given = withoutPart(given, "[Item]\nLabel=Number", "[Record]");
    CSProDbSource source(file, dictionaryOf(given));
    const Checked checked(source);
    QCOMPARE(checked.of("not-in-dictionary"),
        (QStringList { "not-in-dictionary 0 []  'item NUMBER of level 1: 3 values'",
            "not-in-dictionary 0 []  'item WEIGHT of HOUSE: 3 values'" }));
    QCOMPARE(checked.of("key-differs"), QStringList());
    QVERIFY(checked.report.addsUp);
    QVERIFY(!checked.report.isClean());
    // What is told of the file stays with a part of it.
    DataSelection persons;
    persons.chooseRecords(dictionaryOf(given), { QStringLiteral("PERSON") });
    SelectedSource part(std::make_unique<CSProDbSource>(file, dictionaryOf(given)), persons);
    QCOMPARE(Checked(part).of("not-in-dictionary").size(), 2);
}

void TestDataDbRows::deeperLevelLeftOut()
{
    const QString file = QStringLiteral(TESSEL_TEST_DATA "/levels_schema3.csdb");
    CSProDbSource whole(file);
    const Checked all(whole);
    DataDictionary given = whole.dictionary();
    const auto isDeeper = [](const DataRecord& record) { return record.level > 1; };
    given.records.erase(
        std::remove_if(given.records.begin(), given.records.end(), isDeeper), given.records.end());
    CSProDbSource source(file, given);
    const Checked checked(source);
    QCOMPARE(checked.report.counts.lines, all.report.counts.lines);
    QCOMPARE(checked.report.counts.records, 3LL);
    QVERIFY(checked.report.addsUp);
    QCOMPARE(checked.of("not-in-dictionary").size(), 2);
}

void TestDataDbRows::ownDictionaryUnreadable()
{
    const QString file = database("u.csdb", surveyDb() + "UPDATE meta SET dictionary = 'nothing';");
    CSProDbSource source(file, dictionaryOf(surveyDictionary()));
    const Checked checked(source);
    QCOMPARE(checked.report.counts.records, 6LL);
    QCOMPARE(checked.of("not-in-dictionary").size(), 1);
}

void TestDataDbRows::wrongDictionary_data()
{
    QTest::addColumn<QByteArray>("before");
    QTest::addColumn<QByteArray>("after");
    QTest::addColumn<QString>("text");
    const QString given = QStringLiteral(
        ", which the dictionary SURVEY_DICT that was given asks for; give one of these data");
    QTest::newRow("record") << QByteArray("Name=PERSON") << QByteArray("Name=PEOPLE")
                            << QStringLiteral("has no table people") + given;
    QTest::newRow("item") << QByteArray("Name=ROOMS\n") << QByteArray("Name=CHAMBERS\n")
                          << QStringLiteral("has no column chambers in its table house") + given;
    QTest::newRow("identification item")
        << QByteArray("Name=PLACE\n") << QByteArray("Name=TOWN\n")
        << QStringLiteral("has no column town in its table level-1") + given;
}

// The file is not to blame for what only the dictionary given asks for.
void TestDataDbRows::wrongDictionary()
{
    QFETCH(QByteArray, before);
    QFETCH(QByteArray, after);
    const QString file = database("w.csdb", surveyDb());
    const DataDictionary given = dictionaryOf(surveyDictionary().replace(before, after));
    try {
        const CSProDbSource source(file, given);
        QFAIL("a dictionary of other data was taken");
    } catch (const DataError& error) {
        QCOMPARE(error.code, DataError::Code::UnfitDictionary);
        QTEST(error.text, "text");
    }
}

// Every row of every table is read, rejected, or of a deleted case.
void TestDataDbRows::belowOrphans()
{
    const QString file = database("o.csdb",
        surveyDb()
            + "INSERT INTO `level-1` VALUES (8, 'gone', 1, 1);"
              "INSERT INTO house VALUES (8, 8, 4, 1, 'A');"
              "INSERT INTO person VALUES (8, 8, 1, 30, 'Eve', 'Ev'), (9, 99, 1, 31, 'Ann', 'An');");
    CSProDbSource source(file);
    const Checked checked(source);
    QCOMPARE(checked.of("damaged-record"),
        (QStringList { "damaged-record 0 []  'a row of level-1 belongs to no case: level-1-id=8 "
                       "case-id='gone' place=1 number=1 '",
            "damaged-record 0 []  'a row of house belongs to no case: house-id=8 level-1-id=8 "
            "rooms=4 weight=1.0 kind='A' '",
            "damaged-record 0 []  'a row of person belongs to no case: person-id=8 level-1-id=8 "
            "occ=1 age=30 name='Eve' first='Ev' '",
            "damaged-record 0 []  'a row of person belongs to no case: person-id=9 level-1-id=99 "
            "occ=1 age=31 name='Ann' first='An' '" }));
    QVERIFY(checked.report.addsUp);
    QCOMPARE(checked.report.counts.rejectedLines, 4LL);
}

void TestDataDbRows::belowDeletedCases()
{
    const QString file =
        database("d.csdb", surveyDb() + "INSERT INTO person VALUES (8, 3, 1, 30, 'Eve', 'Ev');");
    CSProDbSource source(file);
    const Checked checked(source);
    QCOMPARE(checked.report.counts.deletedCases, 1LL);
    QCOMPARE(checked.report.counts.lines, 6LL);
    QVERIFY(checked.report.addsUp);
}

void TestDataDbRows::unreachable_data()
{
    QTest::addColumn<QStringList>("columns"); // that lose their types
    QTest::addColumn<QByteArray>("added");
    QTest::addColumn<QString>("text");
    QTest::newRow("record")
        << QStringList { "`person-id` INTEGER PRIMARY KEY, `level-1-id` INTEGER" }
        << QByteArray("INSERT INTO person VALUES (8, '1', 1, 30, 'Eve', 'Ev');")
        << QStringLiteral("has 5 rows of person, but the links between its "
                          "tables lead to 4 of them");
    QTest::newRow("level") << QStringList { "(id TEXT", "`case-id` TEXT" }
                           << QByteArray(
                                  "INSERT INTO cases VALUES (7, '0105', '', '', 0, 4.0, NULL);"
                                  "INSERT INTO `level-1` VALUES (8, 7, 1, 5);")
                           << QStringLiteral("has 4 rows of level-1, but the links between its "
                                             "tables lead to 3 of them");
}

// A link in a column of no type equals nothing of another type, but is in a list of them.
void TestDataDbRows::unreachable()
{
    QFETCH(QStringList, columns);
    QFETCH(QByteArray, added);
    QByteArray sql = surveyDb();
    for (const QString& column : columns) {
        QCOMPARE(sql.count(column.toUtf8()), 1);
        sql.replace(column.toUtf8(), column.left(column.lastIndexOf(' ')).toUtf8());
    }
    CSProDbSource source(database("l.csdb", sql + added));
    Checker checker(source.dictionary());
    try {
        runPipeline(source, checker);
        QFAIL("a row that is not reached was lost");
    } catch (const DataError& error) {
        QCOMPARE(error.code, DataError::Code::Damaged);
        QTEST(error.text, "text");
    }
}

// At their width they are not told; wider ones are kept as they are.
void TestDataDbRows::tooWide()
{
    const QString file = database("w.csdb",
        surveyDb()
            + "UPDATE house SET rooms = 99, weight = 999.99, kind = 'éé' WHERE `house-id` = 1;"
              "UPDATE house SET rooms = 100, weight = 1000.0, kind = 'ééé' WHERE `house-id` = 2;"
              "UPDATE person SET age = -99 WHERE `person-id` = 1;"
              "UPDATE person SET age = -100 WHERE `person-id` = 2;");
    CSProDbSource source(file);
    RowCollector rows(source.dictionary());
    QVERIFY(runPipeline(source, rows));
    QVERIFY2(rows.rows.contains("1 2 HOUSE: 1 2 <>100 1000.00 ?\"ééé\""),
        qPrintable(rows.rows.join(QLatin1Char('\n'))));
    CSProDbSource again(file);
    const Checked checked(again);
    QCOMPARE(checked.of("too-wide-value"),
        (QStringList { "too-wide-value 1 [0101] AGE '-100'", "too-wide-value 2 [0102] ROOMS '100'",
            "too-wide-value 2 [0102] WEIGHT '1000.0'", "too-wide-value 2 [0102] KIND 'ééé'" }));
    QVERIFY(!checked.report.isClean());
}

void TestDataDbRows::keyDiffers()
{
    const QString file = database("k.csdb",
        surveyDb()
            + "UPDATE cases SET key = ' 1 1' WHERE id = 'u1';"
              "UPDATE `level-1` SET number = 7 WHERE `level-1-id` = 2;");
    CSProDbSource source(file);
    const Checked checked(source);
    QCOMPARE(checked.of("key-differs"), QStringList { "key-differs 2 [0102]  'PLACE=1 NUMBER=7'" });
    QVERIFY(!checked.report.isClean());
    QVERIFY(checked.report.addsUp);
}

// A blank item is the same as blanks in the key, and as nothing else.
void TestDataDbRows::keyDiffersInBlanks()
{
    const Checked checked = checkedAll(database("n.csdb",
        surveyDb()
            + "UPDATE cases SET key = '01' WHERE id = 'u1';"
              "UPDATE `level-1` SET number = NULL WHERE `level-1-id` < 3;"));
    QCOMPARE(checked.of("key-differs"), QStringList { "key-differs 2 [0102]  'PLACE=1 NUMBER='" });
}

// Once for each case.
void TestDataDbRows::keyDiffersInText()
{
    const QString file = database("t.csdb",
        metaSql("2") + casesSql
            + "INSERT INTO cases VALUES ('u1', '0101', '', '10101 3\r\n20109\r\n20108\r\n', 0, "
              "1.0, NULL), ('u2', '0102-x', '', '10102 1\r\n', 0, 2.0, NULL), "
              "('u3', '01', '', '101   1\r\n', 0, 3.0, NULL);");
    CSProDbSource source(file);
    QCOMPARE(Checked(source).of("key-differs"),
        (QStringList { "key-differs 1 [0101]  'PLACE=1 NUMBER=9'",
            "key-differs 2 [0102-x]  'PLACE=1 NUMBER=2'" }));
}

void TestDataDbRows::keyDiffersInTextItem()
{
    const QString file = m_folder.filePath(QStringLiteral("p.csdb"));
    QVERIFY(QFile::copy(QStringLiteral(TESSEL_TEST_DATA "/levels_schema3.csdb"), file));
    SqliteWriter(file, SqliteWriter::Existing::Keep)
        .run("UPDATE cases SET key = '01B' WHERE id = 'v1';");
    QCOMPARE(checkedAll(file).of("key-differs"),
        QStringList { "key-differs 1 [01B]  'HOUSEHOLD=1 PART=A'" });
}

// The numbers of cases are those of the part, also where something is told of one.
void TestDataDbRows::caseOfPart()
{
    const QString file =
        database("c.csdb", surveyDb() + "UPDATE house SET rooms = 100 WHERE `house-id` = 2;");
    DataSelection second;
    second.where = QStringLiteral("NUMBER=2");
    SelectedSource source(std::make_unique<CSProDbSource>(file), second);
    QVector<qint64> cases;
    CheckOptions options;
    options.onProblem = [&](const DataProblem& problem) {
        if (problem.kind == ProblemKind::TooWideValue)
            cases.append(problem.caseNumber);
    };
    Checker checker(source.dictionary(), options);
    QVERIFY(runPipeline(source, checker));
    QCOMPARE(cases, QVector<qint64> { 1 });
}

// Which special value it is, its number tells.
void TestDataDbRows::specials()
{
    const QString file =
        database("s.csdb", surveyDb() + "UPDATE house SET rooms = 1e53 WHERE `house-id` = 1;");
    CSProDbSource source(file);
    const Checked checked(source);
    QCOMPARE(checked.of("special-without-code"),
        (QStringList { "special-without-code 1 [0101] ROOMS '1.0e+53'",
            "special-without-code 2 [0102] WEIGHT '1.0e+51'" }));
    QVERIFY(isTolerated(ProblemKind::SpecialWithoutCode));
}

// A row of a deeper level has its identification in its records only; that of a case is in its key.
void TestDataDbRows::emptyRow()
{
    const QString file = m_folder.filePath(QStringLiteral("e.csdb"));
    QVERIFY(QFile::copy(QStringLiteral(TESSEL_TEST_DATA "/levels_schema3.csdb"), file));
    const Checked whole = checkedAll(file);
    QCOMPARE(whole.of("damaged-record"), QStringList());
    SqliteWriter(file, SqliteWriter::Existing::Keep)
        .run("INSERT INTO `level-2` VALUES (77, 1, 9, 8);"
             "INSERT INTO cases VALUES ('bare', '09Z', '', '', 0, 99.0, NULL);"
             "INSERT INTO `level-1` VALUES (77, 'bare', 9, 'Z');");
    const Checked checked = checkedAll(file);
    QCOMPARE(checked.of("damaged-record"),
        QStringList { "damaged-record 1 [01A]  'a row with neither records nor rows below it: "
                      "level-2: household=1 part='A' woman_number=8 '" });
    QCOMPARE(checked.report.counts.lines, whole.report.counts.lines + 1);
    QVERIFY(checked.report.addsUp);
}

QTEST_GUILESS_MAIN(TestDataDbRows)
#include "tst_DataDbRows.moc"
