// What the variables and codes of one dictionary are in another.
#include "ComparedListings.h"
#include "listing/Crosswalk.h"
#include "listing/ListingDiff.h"
#include "writers/CrosswalkWriter.h"

#include <QRandomGenerator>
#include <QSet>
#include <QtTest>

namespace {

// The rows of a variable, without the columns of its records.
QStringList rowsOf(const Listing& before, const Listing& after, const QString& variable)
{
    QStringList lines;
    for (const CrosswalkRow& row : makeCrosswalk(before, after)) {
        if (row.before.variable != variable && row.after.variable != variable)
            continue;
        lines.append(QStringList { row.before.variable, row.before.code, row.before.label,
            row.after.variable, row.after.code, row.after.label }
                         .join('|'));
    }
    return lines;
}

ListedField coded(const QVector<ListedCode>& codes)
{
    ListedField coded = field("HOUSE", "ROOMS", 5, 2);
    coded.valueSets.append({ "ROOMS_VS1", "Rooms", codes });
    return coded;
}

QVector<ListedCode> someCodes(QRandomGenerator& random)
{
    QVector<ListedCode> codes;
    for (int count = random.bounded(6); count > 0; --count) {
        const int low = random.bounded(12);
        const bool isRange = random.bounded(4) == 0;
        codes.append({ QString::number(low),
            isRange ? QString::number(low + random.bounded(1, 5)) : QString(), "Label" });
    }
    return codes;
}

} // namespace

class tst_Crosswalk : public QObject {
    Q_OBJECT

private slots:
    void codes();
    void codesInRanges();
    void codesOfSeveralSets();
    void addedAndRemoved();
    void renamedAndMoved();
    void repeatedItemsOnce();
    void variablesOfRows();
    void generated();
    void labelsThatMoved();
    void csv();
};

void tst_Crosswalk::codes()
{
    const Listing before = survey();
    Listing after = before;
    named(after, "SEX").valueSets[0].codes = { { "01", {}, "Man" }, { "3", {}, "Other" } };
    QCOMPARE(rowsOf(before, after, "SEX"),
        QStringList(
            { "SEX|||SEX||", "SEX|1|Male|SEX|01|Man", "SEX|2|Female|||", "|||SEX|3|Other" }));
}

// It stays what it is, as the comparison says that it breaks nothing.
void tst_Crosswalk::codesInRanges()
{
    Listing before = survey();
    Listing after = survey();
    before.fields[1] = coded({ { "1", "9", "Rooms" }, { "10", {}, "Ten" }, { "99", {}, "None" } });
    after.fields[1] = coded({ { "1", "10", "Rooms" }, { "5", "20", "More" } });
    QCOMPARE(rowsOf(before, after, "ROOMS"),
        QStringList({ "ROOMS|||ROOMS||", "ROOMS|1:9|Rooms|ROOMS|1:9|", "ROOMS|10|Ten|ROOMS|10|",
            "ROOMS|99|None|||", "|||ROOMS|1:10|Rooms", "|||ROOMS|5:20|More" }));
}

// Data that is joined by variable and code meets each code once.
void tst_Crosswalk::codesOfSeveralSets()
{
    Listing before = survey();
    named(before, "SEX")
        .valueSets.append({ "SEX_VS2", "Again", { { "1", {}, "Man" }, { "3", {}, "Other" } } });
    Listing after = survey();
    named(after, "SEX").valueSets.prepend({ "SEX_VS0", "New", { { "3", {}, "Third" } } });
    QCOMPARE(rowsOf(before, after, "SEX"),
        QStringList({ "SEX|||SEX||", "SEX|1|Male|SEX|1|Male", "SEX|2|Female|SEX|2|Female",
            "SEX|3|Other|SEX|3|Third" }));
}

void tst_Crosswalk::addedAndRemoved()
{
    const Listing before = survey();
    Listing after = before;
    after.fields.remove(2);
    after.fields.append(field("HOUSE", "WALLS", 20, 1));
    after.fields.last().label = "Walls";
    QCOMPARE(rowsOf(before, after, "SEX"),
        QStringList({ "SEX|||||", "SEX|1|Male|||", "SEX|2|Female|||" }));
    QCOMPARE(rowsOf(before, after, "WALLS"), QStringList("|||WALLS||Walls"));
    QCOMPARE(rowsOf(after, before, "SEX"),
        QStringList({ "|||SEX||", "|||SEX|1|Male", "|||SEX|2|Female" }));
}

void tst_Crosswalk::renamedAndMoved()
{
    Listing before = survey();
    named(before, "SEX").label = "Sex";
    Listing after = before;
    named(after, "SEX").item = "GENDER";
    named(after, "ROOMS").record = "PERSON";
    QCOMPARE(rowsOf(before, after, "GENDER"),
        QStringList({ "SEX||Sex|GENDER||Sex", "SEX|1|Male|GENDER|1|Male",
            "SEX|2|Female|GENDER|2|Female" }));
    for (const CrosswalkRow& row : makeCrosswalk(before, after)) {
        if (row.before.variable != "ROOMS")
            continue;
        QCOMPARE(row.before.record, QString("HOUSE"));
        QCOMPARE(row.after.record, QString("PERSON"));
    }
}

void tst_Crosswalk::repeatedItemsOnce()
{
    QCOMPARE(rowsOf(survey(), survey(), "LANGUAGE"), QStringList("LANGUAGE|||LANGUAGE||"));
    QCOMPARE(rowsOf(survey(), variables(ListingKind::Spss), "LANGUAGE_2"),
        QStringList("LANGUAGE_2|||LANGUAGE_2||"));
}

void tst_Crosswalk::variablesOfRows()
{
    const Listing before = variables(ListingKind::Spss);
    Listing after = variables(ListingKind::Stata);
    named(after, "SEX").valueSets[0].codes.removeLast();
    QCOMPARE(rowsOf(before, after, "SEX"),
        QStringList({ "SEX|||SEX||", "SEX|1|Male|SEX|1|Male", "SEX|2|Female|||" }));
}

// Each code of both sides is there, an old one once, and without a counterpart where the comparison
// says that its removal breaks data.
void tst_Crosswalk::generated()
{
    QRandomGenerator random(16);
    for (int round = 0; round < 500; ++round) {
        Listing before = survey();
        Listing after = survey();
        before.fields[1] = coded(someCodes(random));
        after.fields[1] = coded(someCodes(random));
        QSet<QString> lost;
        for (const Difference& difference : compareListings(before, after)) {
            if (difference.kind == DifferenceKind::ValueRemoved && difference.breaks) {
                lost.insert(difference.highCode.isNull()
                        ? difference.code
                        : difference.code + ':' + difference.highCode);
            }
        }
        QStringList oldCodes;
        QSet<QString> newCodes;
        QSet<QString> alone;
        for (const CrosswalkRow& row : makeCrosswalk(before, after)) {
            const bool isRooms = row.before.variable == "ROOMS" || row.after.variable == "ROOMS";
            if (!isRooms || row.kind == CrosswalkRow::Kind::Variable)
                continue;
            QVERIFY(!row.before.code.isNull() || !row.after.code.isNull());
            if (!row.before.code.isNull() && !row.before.label.isNull())
                oldCodes.append(row.before.code);
            if (row.after.code.isNull())
                alone.insert(row.before.code);
            else
                newCodes.insert(row.after.code);
        }
        QCOMPARE(alone, lost);
        QCOMPARE(QSet<QString>(oldCodes.cbegin(), oldCodes.cend()).size(), oldCodes.size());
        for (const ListedCode& code : before.fields[1].valueSets[0].codes)
            QVERIFY(oldCodes.contains(code.text()));
        for (const ListedCode& code : after.fields[1].valueSets[0].codes)
            QVERIFY(newCodes.contains(code.text()));
    }
}

void tst_Crosswalk::labelsThatMoved()
{
    Listing before = survey();
    Listing after = survey();
    before.fields[1] = coded({ { "1", {}, "East" }, { "2", {}, "West" }, { "3", {}, "Unknown" },
        { "4", {}, "Other" }, { "5", {}, "" } });
    after.fields[1] = coded({ { "1", {}, "West" }, { "2", {}, "East" }, { "8", {}, "Unknown" },
        { "4", {}, "Others" }, { "6", {}, "Same" }, { "7", {}, "Same" }, { "9", {}, "" } });
    QStringList moved;
    for (const CrosswalkRow& row : makeCrosswalk(before, after)) {
        if (!row.labelAt.isNull())
            moved.append(row.before.code + '-' + row.after.code + '-' + row.labelAt);
    }
    QCOMPARE(moved, QStringList({ "1-1-2", "2-2-1", "3--8" }));
    before.fields[1] = coded({ { "1", {}, "Same" } });
    for (const CrosswalkRow& row : makeCrosswalk(before, after))
        QVERIFY(row.labelAt.isNull());
}

void tst_Crosswalk::csv()
{
    Listing before = survey();
    before.fields = { coded({ { "1", {}, "=1+1" } }) };
    before.fields[0].label = "Rooms, \"all\"";
    const QByteArray head = "old_variable,old_code,new_variable,new_code,kind,old_label,new_label,"
                            "old_record,new_record,old_label_at\r\n";
    const auto written = [&](bool forSpreadsheet) {
        QByteArray text;
        writeCrosswalk(makeCrosswalk(before, before), forSpreadsheet,
            [&](const QByteArray& bytes) { text += bytes; });
        return text;
    };
    QCOMPARE(written(false),
        head
            + "ROOMS,,ROOMS,,variable,\"Rooms, \"\"all\"\"\",\"Rooms, "
              "\"\"all\"\"\",HOUSE,HOUSE,\r\n"
              "ROOMS,1,ROOMS,1,value,=1+1,=1+1,HOUSE,HOUSE,\r\n");
    QVERIFY(written(true).contains(",value,'=1+1,'=1+1,"));
    QVERIFY(written(true).startsWith("\xEF\xBB\xBF"));
}

QTEST_APPLESS_MAIN(tst_Crosswalk)
#include "tst_Crosswalk.moc"
