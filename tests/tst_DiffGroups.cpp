// Differences by record and variable, and the text that tells them.
#include "ComparedListings.h"
#include "listing/DiffGroups.h"
#include "listing/ListingDiff.h"
#include "writers/DiffWriters.h"

#include <QtTest>

namespace {

QString diffText(const Listing& before, const Listing& after, bool onlyBreaking = false)
{
    const QVector<Difference> differences = compareListings(before, after);
    QByteArray text;
    writeDiffText({ before, after, differences, onlyBreaking },
        [&](const QByteArray& bytes) { text += bytes; });
    return QString::fromUtf8(text);
}

Difference value(const char* code, const char* highCode = nullptr)
{
    Difference difference;
    difference.kind = DifferenceKind::ValueAdded;
    difference.code = code;
    difference.highCode = highCode;
    return difference;
}

QVector<ListedCode> numbered(int first, int last)
{
    QVector<ListedCode> codes;
    for (int i = first; i <= last; ++i)
        codes.append({ QString::number(i), {}, QString("Label %1").arg(i) });
    return codes;
}

} // namespace

Q_DECLARE_METATYPE(Difference)

class tst_DiffGroups : public QObject {
    Q_OBJECT

private slots:
    void spans_data();
    void spans();
    void breakingComesFirst();
    void runsAreFolded();
    void runsOfSeveralSets();
    void eachDifferenceStandsOnce();
    void hostileNamesStayOnTheirLine();
};

void tst_DiffGroups::spans_data()
{
    QTest::addColumn<QVector<Difference>>("values");
    QTest::addColumn<QString>("expected");
    const auto row = [](const char* name, const QVector<Difference>& values, const char* expected) {
        QTest::newRow(name) << values << QString(expected);
    };
    row("one", { value("7") }, "7");
    row("two in a row", { value("1"), value("2") }, "1|2");
    row("three in a row", { value("1"), value("2"), value("3") }, "1 to 3");
    row("with zeros", { value("08"), value("09"), value("10") }, "08 to 10");
    row("negative", { value("-1"), value("0"), value("1") }, "-1 to 1");
    row("gap", { value("1"), value("2"), value("3"), value("5") }, "1 to 3|5");
    row("backwards", { value("3"), value("2"), value("1") }, "3|2|1");
    row("texts", { value("A"), value("B"), value("C") }, "A|B|C");
    row("range among them", { value("1"), value("2", "9"), value("3") }, "1|2:9|3");
    row("largest number", { value("9223372036854775807"), value("-9223372036854775808") },
        "9223372036854775807|-9223372036854775808");
}

void tst_DiffGroups::spans()
{
    QFETCH(QVector<Difference>, values);
    QFETCH(QString, expected);
    DifferenceRun run;
    for (const Difference& difference : qAsConst(values))
        run.append(&difference);
    QCOMPARE(codeSpans(run).join('|'), expected);
}

void tst_DiffGroups::breakingComesFirst()
{
    Listing before = survey();
    before.file = "a.dcf";
    Listing after = before;
    after.file = "b.dcf";
    named(after, "ROOMS").label = "Rooms";
    named(after, "ROOMS").length = 1;
    named(after, "AREA").length = 4;
    after.records[1].maxRecords = 3;
    after.records.append({ "EVENT", "Event", "3", 1, 1, 9 });
    const QString breaking = "These can break data that fits a.dcf:\n"
                             "  HOUSE\n"
                             "    ROOMS  length 2 -> 1\n"
                             "  PERSON\n"
                             "    maximum 20 -> 3\n"
                             "\n";
    const QString summary =
        "5 differences from a.dcf to b.dcf; 2 of them can break data that fits a.dcf.\n";
    QCOMPARE(diffText(before, after),
        breaking
            + "These break none:\n"
              "  Identification items\n"
              "    AREA  length 3 -> 4\n"
              "  HOUSE\n"
              "    ROOMS  label none -> \"Rooms\"\n"
              "  EVENT\n"
              "    record added\n"
              "\n"
            + summary);
    QCOMPARE(diffText(before, after, true), breaking + summary);
    after = before;
    after.file = "b.dcf";
    named(after, "AREA").length = 4;
    QCOMPARE(diffText(before, after, true),
        QString("1 difference from a.dcf to b.dcf; none breaks data that fits a.dcf.\n"));
}

// Up to three values are told one by one.
void tst_DiffGroups::runsAreFolded()
{
    Listing before = survey();
    Listing after = before;
    named(after, "SEX").valueSets[0].codes += numbered(3, 5);
    QVERIFY(diffText(before, after)
                .contains("    SEX  value 3 \"Label 3\" added\n"
                          "         value 4 \"Label 4\" added\n"
                          "         value 5 \"Label 5\" added\n"));
    named(after, "SEX").valueSets[0].codes += numbered(6, 8) + numbered(11, 12);
    QVERIFY(diffText(before, after).contains("    SEX  8 values added: 3 to 8, 11, 12\n"));
    QVERIFY(diffText(after, before).contains("    SEX  8 values removed: 3 to 8, 11, 12\n"));
    for (int i = 20; i < 40; i += 2)
        named(after, "SEX").valueSets[0].codes += numbered(i, i);
    QVERIFY(diffText(before, after)
                .contains("    SEX  18 values added: 3 to 8, 11, 12, 20, 22, 24, ..., 38\n"));
}

void tst_DiffGroups::runsOfSeveralSets()
{
    const Listing before = survey();
    Listing after = before;
    named(after, "SEX").valueSets[0].codes += numbered(3, 9);
    named(after, "SEX").valueSets.append({ "SEX_VS2", "More", numbered(3, 12) });
    QVERIFY(diffText(before, after)
                .contains("    SEX  7 values of SEX_VS1 added: 3 to 9\n"
                          "         10 values of SEX_VS2 added: 3 to 12\n"));
    named(after, "SEX").valueSets[1].codes = numbered(4, 4);
    QVERIFY(diffText(before, after).contains("value 4 \"Label 4\" of SEX_VS2 added\n"));
}

void tst_DiffGroups::eachDifferenceStandsOnce()
{
    Listing before = survey();
    Listing after = survey();
    named(before, "SEX").valueSets[0].codes += numbered(10, 40);
    named(after, "AGE").valueSets[0].codes += numbered(200, 240);
    named(after, "LANGUAGE_2").occurrenceLabel = "Second";
    named(after, "LANGUAGE_1").label = "Language";
    after.fields.remove(1);
    after.fields.append(field("PERSON", "ZONE", 50, 1));
    const QVector<Difference> differences = compareListings(before, after);
    QSet<const Difference*> told;
    int count = 0;
    for (const bool breaking : { true, false }) {
        for (const RecordDifferences& record : groupDifferences(differences, breaking)) {
            for (const VariableDifferences& variable : record.variables) {
                for (const DifferenceRun& run : variable.runs) {
                    for (const Difference* difference : run) {
                        QCOMPARE(difference->breaks, breaking);
                        QCOMPARE(difference->record, record.record);
                        QCOMPARE(difference->variable, variable.variable);
                        told.insert(difference);
                        ++count;
                    }
                }
            }
        }
    }
    QCOMPARE(count, differences.size());
    QCOMPARE(told.size(), differences.size());
}

void tst_DiffGroups::hostileNamesStayOnTheirLine()
{
    const Listing before = survey();
    Listing after = before;
    named(after, "SEX").valueSets[0].codes.append({ "3\n4", {}, "A\x1b[31m\nB" });
    const QString text = diffText(before, after);
    QCOMPARE(text.count('\n'), 5);
    QVERIFY(!text.contains('\x1b'));
}

QTEST_APPLESS_MAIN(tst_DiffGroups)
#include "tst_DiffGroups.moc"
