#include "DataRows.h"

#include <tessel_data/DatabasePlan.h>

using namespace tessel;

namespace {

QStringList notesOf(const DatabasePlan& plan)
{
    QStringList texts;
    for (const SqlNote& note : plan.notes)
        texts.append(noteText(note));
    return texts;
}

QStringList columnsOf(const DatabasePlan& plan, const QString& table)
{
    QStringList names;
    for (const DatabaseColumn& column : plan.tables[std::size_t(plan.table(table))].columns)
        names.append(column.name + QLatin1Char(' ') + column.sqlType);
    return names;
}

QByteArray item(const QByteArray& name, int start, int width, const QByteArray& more = {})
{
    return "[Item]\nLabel=" + name + "\nName=" + name + "\nStart=" + QByteArray::number(start)
        + "\nLen=" + QByteArray::number(width) + "\nDataType=Numeric\n" + more + "\n";
}

QByteArray dictionaryOf(const QByteArray& items, const QByteArray& record = "PERSON")
{
    return "[Dictionary]\nVersion=CSPro 7.7\nLabel=D\nName=D\nRecordTypeStart=0\nRecordTypeLen=0\n"
           "Positions=Relative\nZeroFill=No\nDecimalChar=No\n\n[Level]\nLabel=Q\nName=Q\n\n"
           "[IdItems]\n\n"
        + item("PLACE", 1, 2) + "[Record]\nLabel=R\nName=" + record
        + "\nRecordTypeValue=''\nRecordLen=900\n\n" + items;
}

DatabasePlan planOf(const QByteArray& dictionary, const PlanOptions& options = {})
{
    return DatabasePlan(DataDictionary::fromBytes(dictionary, QStringLiteral("d.dcf")), options);
}

} // namespace

class TestDatabasePlan : public QObject {
    Q_OBJECT

private slots:
    void tables();
    void withoutCases();
    void types();
    void repeats();
    void namesThatAreTaken();
    void valueTables();
    void wideTables();
    void indexes();
};

void TestDatabasePlan::tables()
{
    const DatabasePlan plan = planOf(surveyDictionary());
    QCOMPARE(columnsOf(plan, QStringLiteral("HOUSE")),
        (QStringList { "case_id INTEGER", "row INTEGER", "PLACE INTEGER", "NUMBER INTEGER",
            "ROOMS INTEGER", "WEIGHT REAL", "KIND TEXT(2)" }));
    QCOMPARE(columnsOf(plan, QStringLiteral("PERSON")),
        (QStringList { "case_id INTEGER", "row INTEGER", "PLACE INTEGER", "NUMBER INTEGER",
            "AGE INTEGER", "NAME TEXT(6)", "FIRST TEXT(2)" }));
    QCOMPARE(columnsOf(plan, QStringLiteral("cases")).mid(8),
        (QStringList { "PLACE INTEGER", "NUMBER INTEGER" }));
    for (const QString& name :
        { SystemTable::records, SystemTable::variables, SystemTable::values, SystemTable::sources,
            SystemTable::builds, SystemTable::problems, SystemTable::rejects })
        QVERIFY2(plan.table(name) >= 0, qPrintable(name));
    QCOMPARE(plan.tables[std::size_t(plan.table(QStringLiteral("PERSON")))].labelView,
        QStringLiteral("PERSON_labels"));
    QCOMPARE(notesOf(plan), QStringList());
}

void TestDatabasePlan::withoutCases()
{
    PlanOptions options;
    options.hasCases = false;
    const DatabasePlan plan = planOf(surveyDictionary(), options);
    QCOMPARE(plan.table(SystemTable::cases), -1);
    QCOMPARE(columnsOf(plan, QStringLiteral("HOUSE")).constFirst(), QStringLiteral("row INTEGER"));
    QVERIFY(plan.indexes.empty());
}

void TestDatabasePlan::types()
{
    const QByteArray dictionary = dictionaryOf(item("A", 3, 18) + item("B", 21, 19)
        + item("C", 40, 5, "Decimal=2\n") + item("E", 45, 5, "Decimal=1\nDecimalChar=Yes\n"));
    QCOMPARE(columnsOf(planOf(dictionary), QStringLiteral("PERSON")).mid(3),
        (QStringList { "A INTEGER", "B TEXT", "C REAL", "E REAL" }));
    PlanOptions options;
    options.dialect = SqlDialect::PostgreSql;
    QCOMPARE(columnsOf(planOf(dictionary, options), QStringLiteral("PERSON")).mid(3),
        (QStringList { "A BIGINT", "B NUMERIC", "C NUMERIC", "E NUMERIC" }));
    const QByteArray whole = dictionaryOf(item("A", 3, 1) + item("B", 4, 4) + item("C", 8, 5)
        + item("E", 13, 9) + item("F", 22, 10) + item("G", 32, 2, "Decimal=1\n"));
    const QString bigint = QStringLiteral(" BIGINT");
    QCOMPARE(columnsOf(planOf(whole, options), QStringLiteral("PERSON")).mid(3),
        (QStringList {
            "A" + bigint, "B" + bigint, "C" + bigint, "E" + bigint, "F" + bigint, "G NUMERIC" }));
    options.hasWidths = true;
    QCOMPARE(columnsOf(planOf(whole, options), QStringLiteral("PERSON")).mid(3),
        (QStringList {
            "A SMALLINT", "B SMALLINT", "C INTEGER", "E INTEGER", "F BIGINT", "G NUMERIC" }));
}

void TestDatabasePlan::repeats()
{
    const QByteArray dictionary =
        dictionaryOf(item("SEX", 3, 1) + item("CHILD", 4, 3, "Occurrences=2\n")
            + item("AGE", 4, 2, "ItemType=SubItem\n") + item("BORN", 6, 1, "ItemType=SubItem\n"));
    const DatabasePlan wide = planOf(dictionary);
    QCOMPARE(columnsOf(wide, QStringLiteral("PERSON")).size(), 3 + 1 + 6);
    PlanOptions options;
    options.hasRepeatTables = true;
    const DatabasePlan plan = planOf(dictionary, options);
    QCOMPARE(columnsOf(plan, QStringLiteral("PERSON")).mid(3), QStringList { "SEX INTEGER" });
    QCOMPARE(columnsOf(plan, QStringLiteral("CHILD")),
        (QStringList { "case_id INTEGER", "row INTEGER", "occurrence INTEGER", "CHILD INTEGER",
            "AGE INTEGER", "BORN INTEGER" }));
    const DatabaseTable& child = plan.tables[std::size_t(plan.table(QStringLiteral("CHILD")))];
    QCOMPARE(child.cells.size(), std::size_t(2));
    QCOMPARE(child.kind, DatabaseTable::Kind::Repeat);
    QCOMPARE(plan.tablesOf(0).size(), 2);
}

void TestDatabasePlan::namesThatAreTaken()
{
    const DatabasePlan plan =
        planOf(dictionaryOf(item("ROW", 3, 1) + item("CASE_ID", 4, 1), "CASES"));
    QCOMPARE(plan.table(QStringLiteral("CASES_2")) >= 0, true);
    QCOMPARE(columnsOf(plan, QStringLiteral("CASES_2")).mid(3),
        (QStringList { "ROW_2 INTEGER", "CASE_ID_2 INTEGER" }));
    QCOMPARE(notesOf(plan),
        (QStringList { "table CASES is called CASES_2: its name is taken",
            "column ROW of table CASES_2 is called ROW_2: its name is taken",
            "column CASE_ID of table CASES_2 is called CASE_ID_2: its name is taken" }));
}

void TestDatabasePlan::valueTables()
{
    const QByteArray set = "[ValueSet]\nLabel=S\nName=S_VS1\nValue=1;One\nValue=2;Two\n\n";
    const QByteArray other = "[ValueSet]\nLabel=S\nName=S_VS2\nValue=1;One\nValue=2:5;More\n\n";
    const DatabasePlan plan =
        planOf(dictionaryOf(item("A", 3, 1) + set + item("B", 4, 1) + set + other));
    QCOMPARE(plan.valueTables.size(), std::size_t(2)); // that of A and B is shared
    QVERIFY(!plan.valueTables[0].hasRanges);
    QCOMPARE(columnsOf(plan, QStringLiteral("S_VS1")),
        (QStringList { "code INTEGER", "label TEXT", "special TEXT" }));
    QCOMPARE(columnsOf(plan, QStringLiteral("S_VS2")),
        (QStringList { "code_from INTEGER", "code_to INTEGER", "label TEXT", "special TEXT" }));
    QCOMPARE(plan.valueTables[1].entries.at(1).high, 5LL);
    QCOMPARE(plan.valueTables[1].entries.at(1).labels, QStringList { "More" });
}

void TestDatabasePlan::wideTables()
{
    const QByteArray dictionary = dictionaryOf(item("A", 3, 1, "Occurrences=2500\n"));
    const DatabasePlan plan = planOf(dictionary);
    QCOMPARE(columnsOf(plan, QStringLiteral("PERSON")).size(), 2000);
    QCOMPARE(columnsOf(plan, QStringLiteral("PERSON_2")).size(), 2 + 2501 - 1998);
    QCOMPARE(columnsOf(plan, QStringLiteral("PERSON_2")).constFirst(),
        QStringLiteral("case_id INTEGER"));
    QCOMPARE(notesOf(plan),
        QStringList("table PERSON has 2501 columns, more than the database takes, and is in parts; "
                    "case_id and row tell which rows belong together"));
}

void TestDatabasePlan::indexes()
{
    const DatabasePlan plan = planOf(surveyDictionary());
    QStringList found;
    for (const DatabaseIndex& index : plan.indexes)
        found.append(index.name + QLatin1Char(' ') + index.columns.join(','));
    QCOMPARE(found,
        (QStringList { "HOUSE_case case_id", "PERSON_case case_id", "cases_key PLACE,NUMBER",
            "cases_uuid uuid" }));
}

QTEST_APPLESS_MAIN(TestDatabasePlan)
#include "tst_DatabasePlan.moc"
