#include <tessel_data/SqlNames.h>

#include <QtTest>

using namespace tessel;

namespace {

const QString grin = QString::fromUtf8("\xF0\x9F\x98\x80"); // four bytes, two characters

// The name for wanted after others were taken, and the last note.
QStringList taken(const QString& wanted, const QStringList& before = {})
{
    SqlNotes notes;
    SqlNames names(notes);
    for (const QString& name : before)
        names.take(name, { SqlThing::Kind::Table, "x", {} });
    const int count = notes.size();
    const QString name = names.take(wanted, { SqlThing::Kind::Column, "C", "T" });
    return { name, notes.size() > count ? noteText(notes.constLast()) : QString() };
}

} // namespace

Q_DECLARE_METATYPE(SqlNote)

class tst_SqlNames : public QObject {
    Q_OBJECT

private slots:
    void identifiers_data();
    void identifiers();
    void texts();
    void comments();
    void names_data();
    void names();
    void cutNames_data();
    void cutNames();
    void equalNames();
    void ownNamesAreNotTold();
    void notes_data();
    void notes();
};

void tst_SqlNames::identifiers_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("identifier");
    QTest::newRow("plain") << "Age_2"
                           << "Age_2";
    QTest::newRow("underscore first") << "_a"
                                      << "_a";
    QTest::newRow("ends of the letters") << "azAZ09"
                                         << "azAZ09";
    QTest::newRow("digit first") << "2nd"
                                 << "\"2nd\"";
    QTest::newRow("reserved") << "Select"
                              << "\"Select\"";
    QTest::newRow("blank") << "a b"
                           << "\"a b\"";
    QTest::newRow("quote") << "a\"b"
                           << "\"a\"\"b\"";
    QTest::newRow("no letter of the alphabet")
        << QString::fromUtf8("\u00e4") << QString::fromUtf8("\"\u00e4\"");
    QTest::newRow("beside the letters") << "a["
                                        << "\"a[\"";
    QTest::newRow("empty") << ""
                           << "\"\"";
}

void tst_SqlNames::identifiers()
{
    QFETCH(QString, name);
    QTEST(sqlIdentifier(name), "identifier");
}

void tst_SqlNames::texts()
{
    const QString mark(QChar::ReplacementCharacter);
    QCOMPARE(sqlText("it's"), QString("'it''s'"));
    QCOMPARE(sqlText(QString()), QString("''"));
    QCOMPARE(sqlText("a" + grin + "b"), "'a" + grin + "b'");
    QCOMPARE(sqlText(QString("a") + QChar(0) + 'b'), "'a" + mark + "b'");
    QCOMPARE(sqlText(grin.left(1) + 'b'), '\'' + mark + "b'");
    QCOMPARE(sqlText("a" + grin.left(1)), "'a" + mark + '\'');
    QCOMPARE(sqlText(grin.mid(1) + grin), '\'' + mark + grin + '\'');
}

void tst_SqlNames::comments()
{
    QCOMPARE(sqlComment(" a \n -- b\r\tc "), QString("-- a -- b c"));
    QCOMPARE(sqlComment(QString()), QString("-- "));
}

void tst_SqlNames::names_data()
{
    QTest::addColumn<QString>("wanted");
    QTest::addColumn<QStringList>("result");
    const QString notTaken = ": the databases do not take its name";
    QTest::newRow("plain") << "AGE" << QStringList { "AGE", "" };
    QTest::newRow("reserved")
        << "ORDER"
        << QStringList { "ORDER",
               "column C of table T is quoted, \"ORDER\": its name is a reserved word" };
    QTest::newRow("other characters") << "A-B"
                                      << QStringList { "A-B",
                                             "column C of table T is quoted, \"A-B\": its name has "
                                             "other characters than letters, digits "
                                             "and _" };
    QTest::newRow("empty") << ""
                           << QStringList { "unnamed",
                                  "column C of table T is called unnamed" + notTaken };
    QTest::newRow("blanks") << " A "
                            << QStringList { "A", "column C of table T is called A" + notTaken };
    QTest::newRow("line break") << "A\nB\tC"
                                << QStringList { "A_B_C",
                                       "column C of table T is called A_B_C" + notTaken };
    for (const QString name :
        { "tableoid", "XMIN", "cmin", "xmax", "cmax", "ctid", "sqlite_a", "PG_a" })
        QTest::newRow(qPrintable(name))
            << name
            << QStringList { '_' + name, "column C of table T is called _" + name + notTaken };
}

void tst_SqlNames::names()
{
    QFETCH(QString, wanted);
    QTEST(taken(wanted), "result");
}

void tst_SqlNames::cutNames_data()
{
    QTest::addColumn<QString>("wanted");
    QTest::addColumn<QString>("name");
    const QString umlaut = QString::fromUtf8("\u00e4");
    QTest::newRow("fits") << QString(63, 'N') << QString(63, 'N');
    QTest::newRow("one more") << QString(64, 'N') << QString(63, 'N');
    QTest::newRow("two bytes each") << QString(40, umlaut.at(0)) << QString(31, umlaut.at(0));
    QTest::newRow("pairs") << grin.repeated(20) << grin.repeated(15);
    QTest::newRow("pair at the cut") << QString(62, 'P') + grin << QString(62, 'P');
    QTest::newRow("pair before the cut") << QString(61, 'P') + grin + 'P' << QString(61, 'P');
    QTest::newRow("bytes end behind a pair")
        << umlaut.repeated(2) + grin.repeated(30) << umlaut.repeated(2) + grin.repeated(14);
    QTest::newRow("forbidden and long") << "pg_" + QString(70, 'x') << "_pg_" + QString(59, 'x');
}

void tst_SqlNames::cutNames()
{
    QFETCH(QString, wanted);
    const QString name = taken(wanted).constFirst();
    QTEST(name, "name");
    QVERIFY(name.toUtf8().size() <= 63);
}

// A number does not make a name longer than the databases take.
void tst_SqlNames::equalNames()
{
    QCOMPARE(taken("age", { "AGE" }),
        QStringList({ "age_2", "column C of table T is called age_2: its name is taken" }));
    const QString longest(63, 'N');
    QCOMPARE(taken(longest, { longest }).constFirst(), QString(55, 'N'));
    QCOMPARE(taken(longest, { longest, longest }).constFirst(), QString(55, 'N') + "_2");
    const QString pairs = grin.repeated(15);
    QCOMPARE(taken(pairs, { pairs }).constFirst(), pairs + "_2");
    QCOMPARE(taken("ab" + pairs, { "ab" + pairs }).constFirst(), "ab" + grin.repeated(13));
}

void tst_SqlNames::ownNamesAreNotTold()
{
    SqlNotes notes;
    SqlNames names(notes);
    QCOMPARE(names.take("row"), QString("row"));
    QCOMPARE(names.take("ROW"), QString("ROW_2"));
    QCOMPARE(names.take("order"), QString("order"));
    QVERIFY(notes.isEmpty());
    names.take("Row", { SqlThing::Kind::Column, "Row", "T" });
    QCOMPARE(notes.size(), 1);
    const SqlNote& note = notes.constFirst();
    QCOMPARE(note.kind, SqlNote::Kind::Renamed);
    QCOMPARE(note.reason, SqlNote::Reason::Taken);
    QCOMPARE(note.thing.kind, SqlThing::Kind::Column);
    QCOMPARE(note.thing.name, QString("Row"));
    QCOMPARE(note.thing.owner, QString("T"));
    QCOMPARE(note.newName, QString("Row_3"));
}

void tst_SqlNames::notes_data()
{
    QTest::addColumn<SqlNote>("note");
    QTest::addColumn<QString>("text");
    using Kind = SqlThing::Kind;
    const auto renamed = [](const SqlThing& thing) {
        return SqlNote { SqlNote::Kind::Renamed, thing, "N", SqlNote::Reason::Taken, 0, 0, {} };
    };
    const QString end = " is called N: its name is taken";
    QTest::newRow("table") << renamed({ Kind::Table, "A", {} }) << "table A" + end;
    QTest::newRow("part") << renamed({ Kind::Part, "2", "A" }) << "part 2 of table A" + end;
    QTest::newRow("value table") << renamed({ Kind::ValueTable, "V", "SEX" })
                                 << "the table of value set V of SEX" + end;
    QTest::newRow("column") << renamed({ Kind::Column, "C", "A" }) << "column C of table A" + end;
    QTest::newRow("index") << renamed({ Kind::Index, "I", {} }) << "index I" + end;
    QTest::newRow("index of the keys")
        << renamed({ Kind::KeyIndex, {}, "A" }) << "the index of table A" + end;
    QTest::newRow("view") << renamed({ Kind::View, "W", {} }) << "view W" + end;
    QTest::newRow("no columns") << SqlNote { SqlNote::Kind::NoColumns, { Kind::Table, "A", {} }, {},
        SqlNote::Reason::None, 0, 0, {} }
                                << "table A has no columns and is left out";
    const SqlNote counted { SqlNote::Kind::InParts, { Kind::Table, "A", {} }, "A_3",
        SqlNote::Reason::None, 4000, 3, { "row_number" } };
    const QString parts = "table A has 4000 columns, more than the database takes, and is in ";
    QTest::newRow("parts that are counted")
        << counted << parts + "3 parts, to A_3; column row_number tells which rows belong together";
    const SqlNote uncounted { SqlNote::Kind::InParts, { Kind::Table, "A", {} }, {},
        SqlNote::Reason::None, 4000, 0, { "case_id", "row" } };
    QTest::newRow("parts") << uncounted
                           << parts + "parts; case_id and row tell which rows belong together";
}

void tst_SqlNames::notes()
{
    QFETCH(SqlNote, note);
    QTEST(noteText(note), "text");
}

QTEST_GUILESS_MAIN(tst_SqlNames)
#include "tst_SqlNames.moc"
