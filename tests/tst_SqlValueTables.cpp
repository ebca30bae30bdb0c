#include "writers/SqlValueTables.h"

#include <QtTest>

namespace {

ListedField field(const QString& name, const QVector<ListedCode>& codes,
    ValueType type = ValueType::Integer, const QString& valueSet = "VS")
{
    ListedField result;
    result.name = name;
    result.item = name;
    result.type = type;
    result.length = 2;
    result.areValuesListed = true;
    result.valueSets.append({ valueSet, "Label", codes });
    return result;
}

QVector<ListedCode> yesAndNo()
{
    return { { "1", {}, "Yes" }, { "2", {}, "No" } };
}

QVector<ListedCode> missingCode(const QString& code, const QString& highCode = {})
{
    return { { code, highCode, {} } };
}

} // namespace

Q_DECLARE_METATYPE(ListedCode)

class tst_SqlValueTables : public QObject {
    Q_OBJECT

private slots:
    void sharedTables();
    void references_data();
    void references();
    void referenceNeedsOneTable();
    void repeatedCodes();
    void roundedCodes();
    void manyRows();
};

void tst_SqlValueTables::sharedTables()
{
    tessel::SqlNotes notes;
    SqlNames names(notes);
    SqlValueTables tables(SqlDialect::Sqlite, names);
    const ListedField a = field("A", yesAndNo());
    const ListedField b = field("B", yesAndNo(), ValueType::Integer, "OTHER");
    const ListedField text = field("T", yesAndNo(), ValueType::String);
    const ListedField relabelled = field("R", { { "1", {}, "Yes" }, { "2", {}, "Never" } });
    const ListedField none = field("N", {});
    for (const ListedField& each : { a, b, a, text, relabelled, none })
        tables.add(each);
    QCOMPARE(tables.tablesOf(a), QStringList { "VS" });
    QCOMPARE(tables.tablesOf(b), QStringList { "VS" });
    QCOMPARE(tables.tablesOf(text), QStringList { "VS_2" });
    QCOMPARE(tables.tablesOf(relabelled), QStringList { "VS_3" });
    QCOMPARE(tables.tablesOf(none), QStringList());
    const QString statements = tables.statements();
    QCOMPARE(statements.count("CREATE TABLE"), 3);
    QVERIFY(statements.contains("(A, B)"));
    QVERIFY(!statements.contains("A, B, A"));
}

void tst_SqlValueTables::references_data()
{
    QTest::addColumn<QVector<ListedCode>>("codes");
    QTest::addColumn<QVector<ListedCode>>("missing");
    QTest::addColumn<bool>("isReferenced");
    const SpecialCode special = SpecialCode::Missing;
    const QVector<ListedCode> none;
    QTest::newRow("codes") << yesAndNo() << none << true;
    QTest::newRow("range") << QVector<ListedCode> { { "1", "5", "Few" } } << none << false;
    QTest::newRow("all special") << QVector<ListedCode> { { "9", {}, "Missing", special } } << none
                                 << false;
    QTest::newRow("no number") << QVector<ListedCode> { { "1", {}, "One" }, { "x", {}, "X" } }
                               << none << false;
    QTest::newRow("a special that is no number") << QVector<ListedCode> { { "1", {}, "One" },
        { ".a", {}, "Lost", special } } << none << true;
    QTest::newRow("blank") << QVector<ListedCode> { { "1", {}, "One" }, { " ", {}, "None" } }
                           << none << true;
    QTest::newRow("missing with a label") << yesAndNo() << missingCode("2") << true;
    QTest::newRow("written otherwise") << yesAndNo() << missingCode("02") << true;
    QTest::newRow("missing without") << yesAndNo() << missingCode("9") << false;
    QTest::newRow("missing range") << yesAndNo() << missingCode("1", "2") << false;
    QTest::newRow("missing blank") << yesAndNo() << missingCode(" ") << true;
}

void tst_SqlValueTables::references()
{
    QFETCH(QVector<ListedCode>, codes);
    QFETCH(QVector<ListedCode>, missing);
    ListedField listed = field("A", codes);
    listed.missingRanges = missing;
    tessel::SqlNotes notes;
    SqlNames names(notes);
    SqlValueTables tables(SqlDialect::PostgreSql, names);
    tables.add(listed);
    QFETCH(bool, isReferenced);
    QCOMPARE(tables.referenceOf(listed), isReferenced ? QString("VS") : QString());
    listed.areValuesListed = false;
    QCOMPARE(tables.referenceOf(listed), QString());
    listed.areValuesListed = true;
    listed.measure = Measure::Scale;
    QCOMPARE(tables.referenceOf(listed), QString());
}

void tst_SqlValueTables::referenceNeedsOneTable()
{
    ListedField listed = field("A", yesAndNo());
    listed.valueSets.append({ "SECOND", "Label", { { "1", {}, "Agrees" } } });
    tessel::SqlNotes notes;
    SqlNames names(notes);
    SqlValueTables tables(SqlDialect::Sqlite, names);
    QCOMPARE(tables.referenceOf(listed), QString());
    tables.add(listed);
    QCOMPARE(tables.tablesOf(listed), (QStringList { "VS", "SECOND" }));
    QCOMPARE(tables.referenceOf(listed), QString());
}

// Rows with the same code would not go into the table; the second keeps what was written.
void tst_SqlValueTables::repeatedCodes()
{
    tessel::SqlNotes notes;
    SqlNames names(notes);
    SqlValueTables tables(SqlDialect::Sqlite, names);
    tables.add(field("A", { { "1", {}, "One" }, { "01", {}, "It's one" } }));
    const QString statements = tables.statements();
    QVERIFY(statements.contains("(1, '1', 'One', NULL)"));
    QVERIFY(statements.contains("(NULL, '01', 'It''s one', NULL)"));
}

// SQLite takes both for one number, PostgreSQL does not.
void tst_SqlValueTables::roundedCodes()
{
    const QVector<ListedCode> codes { { "0.1", {}, "One" },
        { "0.10000000000000000001", {}, "Two" } };
    for (const SqlDialect dialect : { SqlDialect::Sqlite, SqlDialect::PostgreSql }) {
        tessel::SqlNotes notes;
        SqlNames names(notes);
        SqlValueTables tables(dialect, names);
        tables.add(field("A", codes, ValueType::Real));
        QCOMPARE(tables.statements().contains("(NULL, '0.10000000000000000001', 'Two', NULL)"),
            dialect == SqlDialect::Sqlite);
    }
}

void tst_SqlValueTables::manyRows()
{
    QVector<ListedCode> codes;
    for (int code = 0; code < 401; ++code)
        codes.append({ QString::number(code), {}, "Label" });
    tessel::SqlNotes notes;
    SqlNames names(notes);
    SqlValueTables tables(SqlDialect::Sqlite, names);
    tables.add(field("A", codes));
    const QString statements = tables.statements();
    QCOMPARE(statements.count("INSERT INTO"), 3);
    QCOMPARE(statements.count("'Label'"), 401);
    QCOMPARE(statements.count(';'), 4);
}

QTEST_APPLESS_MAIN(tst_SqlValueTables)

#include "tst_SqlValueTables.moc"
