// Compares listings made by hand: each row changes one thing of a small dictionary.
#include "ComparedListings.h"
#include "listing/ListingDiff.h"
#include "writers/DiffTexts.h"

#include <QtTest>

#include <algorithm>
#include <functional>

namespace {

using Change = std::function<void(Listing&)>;

QString shown(const Difference& difference)
{
    const QStringList parts { difference.breaks ? "breaks" : "fits", nameOf(difference.kind),
        difference.record, difference.variable, difference.code, nameOf(difference.property),
        textOf(difference.before), textOf(difference.after) };
    return parts.join(' ').simplified();
}

QStringList shown(const QVector<Difference>& differences)
{
    QStringList lines;
    for (const Difference& difference : differences)
        lines.append(shown(difference));
    return lines;
}

} // namespace

Q_DECLARE_METATYPE(Change)

class tst_ListingDiff : public QObject {
    Q_OBJECT

private slots:
    void oneChange_data();
    void oneChange();
    void isEqualToItself();
    void swappedFilesSwapAdditions_data();
    void swappedFilesSwapAdditions();
    void additionsFollowTheirRecord();
    void numberWithCodesToText_data();
    void numberWithCodesToText();
    void kindsMatchByName();
    void statisticsFilesLabelNoRanges();
    void repeatedNamesHaveNoPartnerElsewhere();
    void renamedVariables_data();
    void renamedVariables();
    void renamedVariablesOfRows();
    void repeatedItemsAreOnePair();
    void widerPartsTakeTheNext();
    void displayWidthBindsNoNumber();
    void manyVariables();

private:
    void addRecordRows();
    void addVariableRows();
    void addSizeRows();
    void addValueRows();
    void addEqualRows();
};

void tst_ListingDiff::oneChange_data()
{
    QTest::addColumn<Change>("change");
    QTest::addColumn<QStringList>("expected");
    addRecordRows();
    addVariableRows();
    addSizeRows();
    addValueRows();
    addEqualRows();
}

void tst_ListingDiff::addRecordRows()
{
    const auto row = [](const char* name, const Change& change, const QStringList& expected) {
        QTest::newRow(name) << change << expected;
    };
    row("record type elsewhere", [](Listing& l) { l.recordTypeStart = 2; },
        { "breaks dictionary-changed recordTypeStart 1 2" });
    row("record type longer", [](Listing& l) { l.recordTypeLength = 2; },
        { "breaks dictionary-changed recordTypeLength 1 2" });
    row("record added",
        [](Listing& l) {
            l.records.append({ "EVENT", "Event", "3", 1, 1, 9 });
        },
        { "fits record-added EVENT" });
    row("record renamed",
        [](Listing& l) {
            l.records[0].name = "HOME";
            named(l, "ROOMS").record = named(l, "PLACE").record = "HOME";
        },
        { "fits record-changed HOUSE name HOUSE HOME" });
    row("record relabelled", [](Listing& l) { l.records[0].label = "Home"; },
        { "fits record-changed HOUSE label House Home" });
    row("record type", [](Listing& l) { l.records[1].recordType = "P"; },
        { "breaks record-changed PERSON recordType 2 P" });
    row("fewer records", [](Listing& l) { l.records[1].maxRecords = 10; },
        { "breaks record-changed PERSON maximum 20 10" });
    row("more records", [](Listing& l) { l.records[1].maxRecords = 30; },
        { "fits record-changed PERSON maximum 20 30" });
    row("other level", [](Listing& l) { l.records[1].level = 2; },
        { "breaks record-changed PERSON level 1 2" });
    row("record removed",
        [](Listing& l) {
            l.records.remove(0);
            l.fields.remove(1);
            l.fields.removeLast();
        },
        { "breaks record-removed HOUSE", "breaks variable-removed HOUSE ROOMS",
            "breaks variable-removed HOUSE PLACE" });
}

void tst_ListingDiff::addVariableRows()
{
    const auto row = [](const char* name, const Change& change, const QStringList& expected) {
        QTest::newRow(name) << change << expected;
    };
    row("variable added", [](Listing& l) { l.fields.append(field("HOUSE", "WALLS", 20, 1)); },
        { "fits variable-added HOUSE WALLS" });
    row("variable removed", [](Listing& l) { l.fields.remove(1); },
        { "breaks variable-removed HOUSE ROOMS" });
    row("moved column", [](Listing& l) { named(l, "ROOMS").start = 7; },
        { "breaks variable-moved HOUSE ROOMS start 5 7" });
    row("moved occurrence", [](Listing& l) { named(l, "LANGUAGE_3").start = 17; },
        { "breaks variable-moved PERSON LANGUAGE_3 start 12 17" });
    row("moved to another record", [](Listing& l) { named(l, "ROOMS").record = "PERSON"; },
        { "breaks variable-moved HOUSE ROOMS record HOUSE PERSON" });
    row("moved to the identification items",
        [](Listing& l) { named(l, "ROOMS").record = QString(); },
        { "breaks variable-moved HOUSE ROOMS record HOUSE" });
    row("other name in the same columns, no label",
        [](Listing& l) { named(l, "ROOMS").item = "CHAMBERS"; },
        { "breaks variable-removed HOUSE ROOMS", "fits variable-added HOUSE CHAMBERS" });
    row("number to text", [](Listing& l) { named(l, "ROOMS").type = ValueType::String; },
        { "fits variable-retyped HOUSE ROOMS type integer string" });
    row("text to number", [](Listing& l) { named(l, "PLACE").type = ValueType::Integer; },
        { "breaks variable-retyped HOUSE PLACE type string integer" });
    row("relabelled", [](Listing& l) { named(l, "ROOMS").label = "All rooms"; },
        { "fits variable-relabelled HOUSE ROOMS label All rooms" });
    row("occurrence relabelled",
        [](Listing& l) { named(l, "LANGUAGE_2").occurrenceLabel = "Second"; },
        { "fits variable-relabelled PERSON LANGUAGE_2 occurrenceLabel Second" });
}

void tst_ListingDiff::addSizeRows()
{
    const auto row = [](const char* name, const Change& change, const QStringList& expected) {
        QTest::newRow(name) << change << expected;
    };
    row("wider", [](Listing& l) { named(l, "ROOMS").length = 3; },
        { "fits variable-resized HOUSE ROOMS length 2 3" });
    row("narrower", [](Listing& l) { named(l, "ROOMS").length = 1; },
        { "breaks variable-resized HOUSE ROOMS length 2 1" });
    row("wider occurrences",
        [](Listing& l) {
            for (int i = 4; i < 7; ++i) {
                l.fields[i].length = 2;
                l.fields[i].start += i - 4;
            }
        },
        { "breaks variable-resized PERSON LANGUAGE length 1 2" });
    row("implied decimals", [](Listing& l) { named(l, "WEIGHT").decimals = 3; },
        { "breaks variable-resized PERSON WEIGHT decimals 2 3" });
    row("first decimals, implied", [](Listing& l) { named(l, "AGE").decimals = 1; },
        { "breaks variable-resized PERSON AGE decimals 0 1" });
    row("first decimals, written",
        [](Listing& l) {
            named(l, "AGE").decimals = 1;
            named(l, "AGE").hasDecimalChar = true;
        },
        { "fits variable-resized PERSON AGE decimals 0 1" });
    row("decimal point", [](Listing& l) { named(l, "WEIGHT").hasDecimalChar = true; },
        { "breaks variable-resized PERSON WEIGHT decimalChar no yes" });
    row("fewer occurrences", [](Listing& l) { l.fields.remove(6); },
        { "breaks variable-resized PERSON LANGUAGE occurrences 3 2" });
    row("more occurrences",
        [](Listing& l) {
            ListedField next = named(l, "LANGUAGE_3");
            next.occurrence = 4;
            next.start = 13;
            l.fields.append(next);
        },
        { "fits variable-resized PERSON LANGUAGE occurrences 3 4" });
}

void tst_ListingDiff::addValueRows()
{
    const auto row = [](const char* name, const Change& change, const QStringList& expected) {
        QTest::newRow(name) << change << expected;
    };
    const auto codes = [](Listing& l, const char* name) -> QVector<ListedCode>& {
        return named(l, name).valueSets[0].codes;
    };
    row("code added",
        [=](Listing& l) {
            codes(l, "SEX").append({ "3", {}, "Other" });
        },
        { "fits value-added PERSON SEX 3 Other" });
    row("code removed", [=](Listing& l) { codes(l, "SEX").removeLast(); },
        { "breaks value-removed PERSON SEX 2 Female" });
    row("code goes into a range",
        [=](Listing& l) {
            codes(l, "SEX") = { { "1", "9", "Any" } };
        },
        { "fits value-removed PERSON SEX 1 Male", "fits value-removed PERSON SEX 2 Female",
            "fits value-added PERSON SEX 1 Any" });
    row("range goes into two that overlap",
        [=](Listing& l) {
            codes(l, "AGE").replace(0, { "0", "70", "Years" });
            codes(l, "AGE").append({ "60", "130", "Years" });
        },
        { "fits value-removed PERSON AGE 0 Years", "fits value-added PERSON AGE 0 Years",
            "fits value-added PERSON AGE 60 Years" });
    row("range goes into two that do not meet",
        [=](Listing& l) {
            codes(l, "AGE").replace(0, { "0", "50", "Years" });
            codes(l, "AGE").append({ "60", "130", "Years" });
        },
        { "breaks value-removed PERSON AGE 0 Years", "fits value-added PERSON AGE 0 Years",
            "fits value-added PERSON AGE 60 Years" });
    row("code stays in another set",
        [=](Listing& l) {
            named(l, "SEX").valueSets.append(named(l, "SEX").valueSets[0]);
            named(l, "SEX").valueSets[1].name = "SEX_VS2";
            codes(l, "SEX").removeFirst();
        },
        { "fits value-removed PERSON SEX 1 Male", "fits value-added PERSON SEX 1 Male",
            "fits value-added PERSON SEX 2 Female" });
    row("code relabelled", [=](Listing& l) { codes(l, "SEX")[0].label = "Man"; },
        { "fits value-changed PERSON SEX 1 label Male Man" });
    row("code becomes missing",
        [=](Listing& l) { codes(l, "SEX")[1].special = SpecialCode::Missing; },
        { "breaks value-changed PERSON SEX 2 special missing" });
    row("missing code changed", [](Listing& l) { named(l, "AGE").missing = "998"; },
        { "breaks missing-changed PERSON AGE missing 999 998" });
    row("missing code removed", [](Listing& l) { named(l, "AGE").missing = QString(); },
        { "breaks missing-changed PERSON AGE missing 999" });
    row("missing code added", [](Listing& l) { named(l, "SEX").missing = "9"; },
        { "fits missing-changed PERSON SEX missing 9" });
    row("not applicable added", [](Listing& l) { named(l, "SEX").notApplicable = "8"; },
        { "fits not-applicable-changed PERSON SEX notApplicable 8" });
}

void tst_ListingDiff::addEqualRows()
{
    const auto row = [](const char* name, const Change& change) {
        QTest::newRow(name) << change << QStringList();
    };
    row("names in small letters", [](Listing& l) {
        for (ListedField& field : l.fields)
            field.item = field.item.toLower();
    });
    row("codes written otherwise", [](Listing& l) {
        named(l, "SEX").valueSets[0].codes[0].code = "01.0";
        named(l, "AGE").valueSets[0].codes[0].code = "-0";
        named(l, "AGE").missing = "0999";
    });
    row("text codes without blanks",
        [](Listing& l) { named(l, "PLACE").valueSets[0].codes[0].code = "A"; });
    row("value set renamed", [](Listing& l) { named(l, "SEX").valueSets[0].name = "SEXES"; });
    row("many digits", [](Listing& l) { named(l, "ROOMS").type = ValueType::Real; });
    row("fields in another order", [](Listing& l) { l.fields.move(0, 3); });
}

void tst_ListingDiff::oneChange()
{
    QFETCH(Change, change);
    QFETCH(QStringList, expected);
    const Listing before = survey();
    Listing after = before;
    change(after);
    QCOMPARE(shown(compareListings(before, after)), expected);
    QCOMPARE(shown(compareListings(after, after)), QStringList());
}

void tst_ListingDiff::isEqualToItself()
{
    Listing listing = survey();
    listing.fields.append(listing.fields);
    listing.records.append(listing.records);
    named(listing, "SEX").valueSets[0].codes.append({ "1", {}, "Man" });
    named(listing, "SEX").valueSets.append(ListedValueSet());
    QCOMPARE(shown(compareListings(listing, listing)), QStringList());
    for (const ListingKind kind : { ListingKind::Spss, ListingKind::Stata })
        QCOMPARE(shown(compareListings(variables(kind), variables(kind))), QStringList());
    QCOMPARE(shown(compareListings(Listing(), Listing())), QStringList());
}

void tst_ListingDiff::swappedFilesSwapAdditions_data()
{
    oneChange_data();
}

void tst_ListingDiff::swappedFilesSwapAdditions()
{
    QFETCH(Change, change);
    const Listing before = survey();
    Listing after = before;
    change(after);
    const auto count = [](const QVector<Difference>& differences, const char* kind) {
        return std::count_if(differences.begin(), differences.end(),
            [&](const Difference& d) { return nameOf(d.kind) == QLatin1String(kind); });
    };
    const QVector<Difference> there = compareListings(before, after);
    const QVector<Difference> back = compareListings(after, before);
    QCOMPARE(there.size(), back.size());
    QCOMPARE(count(there, "record-added"), count(back, "record-removed"));
    QCOMPARE(count(there, "record-removed"), count(back, "record-added"));
    QCOMPARE(count(there, "variable-added"), count(back, "variable-removed"));
    QCOMPARE(count(there, "variable-removed"), count(back, "variable-added"));
    QCOMPARE(count(there, "value-added"), count(back, "value-removed"));
    QCOMPARE(count(there, "value-removed"), count(back, "value-added"));
}

void tst_ListingDiff::additionsFollowTheirRecord()
{
    const Listing before = survey();
    Listing after = before;
    after.records.append({ "EVENT", "Event", "3", 1, 1, 9 });
    after.fields.prepend(field("EVENT", "DATE", 5, 8));
    after.fields.prepend(field("HOUSE", "WALLS", 20, 1));
    after.fields.prepend(field(nullptr, "ZONE", 25, 1));
    named(after, "PLACE").label = "Place";
    named(after, "SEX").label = "Sex";
    QCOMPARE(shown(compareListings(before, after)),
        QStringList(
            { "fits variable-added ZONE", "fits variable-relabelled HOUSE PLACE label Place",
                "fits variable-added HOUSE WALLS", "fits variable-relabelled PERSON SEX label Sex",
                "fits record-added EVENT", "fits variable-added EVENT DATE" }));
}

// The data hold a number at the right end of its columns; a text begins at their left end.
void tst_ListingDiff::numberWithCodesToText_data()
{
    QTest::addColumn<Change>("number");
    QTest::addColumn<QString>("code");
    QTest::addColumn<QString>("textCode");
    QTest::addColumn<bool>("breaks");
    const auto row = [](const char* name, const Change& number, const char* code,
                         const char* textCode, bool breaks) {
        QTest::newRow(name) << number << QString(code) << QString(textCode) << breaks;
    };
    const Change plain = [](Listing&) {};
    const auto change = [](const std::function<void(ListedField&)>& edit) -> Change {
        return [edit](Listing& l) { edit(named(l, "ROOMS")); };
    };
    const Change zeros = change([](ListedField& f) { f.isZeroFilled = true; });
    const Change implied = change([](ListedField& f) { f.decimals = 1; });
    const Change inData = change([](ListedField& f) {
        f.decimals = 1;
        f.length = 4;
        f.hasDecimalChar = true;
    });
    const Change fraction = change([](ListedField& f) {
        f.decimals = 2;
        f.length = 4;
        f.isZeroFilled = true;
    });
    const Change range = change([](ListedField& f) { f.valueSets[0].codes[0].highCode = "13"; });
    row("as wide as the columns", plain, "12", "12", false);
    row("behind a blank", plain, "1", "1", true);
    row("with the blank", plain, "1", " 1", false);
    row("zero that is not there", plain, "1", "01", true);
    row("behind a zero", zeros, "1", "01", false);
    row("zero that is missing", zeros, "1", "1", true);
    row("other code", plain, "12", "13", true);
    row("negative", plain, "-1", "-1", false);
    row("negative behind zeros", fraction, "-0.5", "-050", false);
    row("implied point", implied, "1.5", "15", false);
    row("implied point that is not there", implied, "1.5", "1.5", true);
    row("implied fraction", implied, "0.5", " 5", false);
    row("point in the data", inData, "10.5", "10.5", false);
    row("point in the data, blank", inData, "0.5", " 0.5", false);
    row("blanks", plain, "  ", "12", false);
    row("range", range, "12", "12", true);
}

void tst_ListingDiff::numberWithCodesToText()
{
    QFETCH(Change, number);
    QFETCH(QString, code);
    QFETCH(QString, textCode);
    QFETCH(bool, breaks);
    Listing before = survey();
    named(before, "ROOMS").valueSets.append({ "V", "", { { code, {}, "Some" } } });
    number(before);
    Listing after = before;
    ListedField& text = named(after, "ROOMS");
    text.type = ValueType::String;
    text.valueSets[0].codes = { { textCode, {}, "Some" } };
    const auto retyped = [](const QVector<Difference>& differences) {
        return std::find_if(differences.cbegin(), differences.cend(),
            [](const Difference& d) { return d.kind == DifferenceKind::Retyped; });
    };
    const QVector<Difference> found = compareListings(before, after);
    QVERIFY(retyped(found) != found.cend());
    QCOMPARE(retyped(found)->breaks, breaks);
    text.valueSets.clear(); // takes any text
    const QVector<Difference> free = compareListings(before, after);
    QCOMPARE(retyped(free)->breaks, false);
}

void tst_ListingDiff::kindsMatchByName()
{
    Listing after = variables(ListingKind::Spss);
    QCOMPARE(shown(compareListings(survey(), after)), QStringList());
    QCOMPARE(shown(compareListings(after, survey())), QStringList());
    after.fields.removeFirst();
    after.fields.prepend(field(nullptr, "EXTRA", 0, 1));
    QCOMPARE(shown(compareListings(survey(), after)),
        QStringList({ "breaks variable-removed AREA", "fits variable-added EXTRA" }));
    // What is not applicable is missing there.
    Listing before = survey();
    named(before, "SEX").notApplicable = "9";
    named(after, "SEX").missing = "9";
    QVERIFY(!shown(compareListings(before, after)).join(' ').contains("SEX"));
}

void tst_ListingDiff::statisticsFilesLabelNoRanges()
{
    Listing before = survey();
    named(before, "AGE").notApplicable = "   ";
    named(before, "AGE")
        .valueSets[0]
        .codes.append({ "   ", {}, "Absent", SpecialCode::NotApplicable });
    Listing after = variables(ListingKind::Spss);
    named(after, "AGE").valueSets[0].codes.removeFirst();
    QCOMPARE(shown(compareListings(before, after)),
        QStringList(
            { "fits value-removed PERSON AGE 0 Years", "fits value-removed PERSON AGE Absent" }));
}

void tst_ListingDiff::repeatedNamesHaveNoPartnerElsewhere()
{
    Listing before = survey();
    before.fields.append(field("HOUSE", "LINE", 20, 1));
    before.fields.append(field("PERSON", "LINE", 27, 1));
    Listing after = variables(ListingKind::Spss);
    after.fields.append(field(nullptr, "LINE", 0, 1));
    QCOMPARE(shown(compareListings(before, after)),
        QStringList({ "breaks variable-removed HOUSE LINE", "breaks variable-removed PERSON LINE",
            "fits variable-added LINE" }));
}

// A label and a place tell that it is the same under another name.
void tst_ListingDiff::renamedVariables_data()
{
    QTest::addColumn<Change>("change");
    QTest::addColumn<QStringList>("expected");
    const auto renamed = [](const Change& further) -> Change {
        return [further](Listing& l) {
            named(l, "AGE").item = "YEARS";
            further(l);
        };
    };
    const QStringList lost { "breaks variable-removed PERSON AGE",
        "fits variable-added PERSON YEARS" };
    QTest::newRow("same columns") << renamed([](Listing&) {})
                                  << QStringList("fits variable-renamed PERSON AGE name AGE YEARS");
    QTest::newRow("same columns, elsewhere in the record")
        << renamed([](Listing& l) { l.fields.move(3, 7); })
        << QStringList("fits variable-renamed PERSON AGE name AGE YEARS");
    QTest::newRow("other columns, behind the same")
        << renamed([](Listing& l) { named(l, "AGE").start = 40; })
        << QStringList({ "fits variable-renamed PERSON AGE name AGE YEARS",
               "breaks variable-moved PERSON AGE start 6 40" });
    QTest::newRow("other columns, elsewhere") << renamed([](Listing& l) {
        named(l, "AGE").start = 40;
        l.fields.move(3, 7);
    }) << lost;
    QTest::newRow("other label") << renamed([](Listing& l) { named(l, "AGE").label = "Years"; })
                                 << lost;
    QTest::newRow("other kind of value")
        << renamed([](Listing& l) { named(l, "AGE").type = ValueType::String; }) << lost;
    QTest::newRow("other record") << renamed([](Listing& l) {
        named(l, "AGE").record = "HOUSE";
    }) << QStringList({ "fits variable-added HOUSE YEARS", "breaks variable-removed PERSON AGE" });
    QTest::newRow("old name elsewhere")
        << renamed([](Listing& l) {
               ListedField other = field("PERSON", "AGE", 40, 3);
               other.label = "Age at marriage";
               other.valueSets = named(l, "AGE").valueSets;
               other.missing = "999";
               l.fields.append(other);
           })
        << QStringList({ "breaks variable-moved PERSON AGE start 6 40",
               "fits variable-relabelled PERSON AGE label Age Age at marriage",
               "fits variable-added PERSON YEARS" });
}

void tst_ListingDiff::renamedVariables()
{
    QFETCH(Change, change);
    QFETCH(QStringList, expected);
    Listing before = survey();
    named(before, "AGE").label = "Age";
    Listing after = before;
    change(after);
    QCOMPARE(shown(compareListings(before, after)), expected);
}

void tst_ListingDiff::renamedVariablesOfRows()
{
    Listing before = variables(ListingKind::Spss);
    named(before, "SEX").label = "Sex";
    named(before, "AGE").label = "Age";
    Listing after = before;
    after.kind = ListingKind::Stata;
    named(after, "SEX").name = "sex_";
    named(after, "AGE").name = "age_";
    QCOMPARE(shown(compareListings(before, after)),
        QStringList({ "breaks variable-renamed SEX name SEX sex_",
            "breaks variable-renamed AGE name AGE age_" }));
}

void tst_ListingDiff::repeatedItemsAreOnePair()
{
    const Listing before = survey();
    Listing after = before;
    after.fields.remove(6);
    after.fields.append(field("HOUSE", "WALLS", 20, 1));
    QStringList pairs;
    for (const VariablePair& pair : pairVariables(before, after)) {
        pairs.append((pair.before ? pair.before->name : QString("-")) + '/'
            + (pair.after ? pair.after->name : QString("-")));
    }
    QCOMPARE(pairs.join(' '),
        QString("AREA/AREA ROOMS/ROOMS PLACE/PLACE -/WALLS SEX/SEX AGE/AGE LANGUAGE_1/LANGUAGE_1 "
                "WEIGHT/WEIGHT"));
    QCOMPARE(pairVariables(before, variables(ListingKind::Spss)).size(), before.fields.size());
}

void tst_ListingDiff::widerPartsTakeTheNext()
{
    Listing before = survey();
    named(before, "ROOMS").isSubItem = true;
    Listing after = before;
    named(after, "ROOMS").length = 3;
    QCOMPARE(shown(compareListings(before, after)),
        QStringList("breaks variable-resized HOUSE ROOMS length 2 3"));
}

void tst_ListingDiff::displayWidthBindsNoNumber()
{
    Listing after = variables(ListingKind::Spss);
    named(after, "AGE").length = 2;
    named(after, "PLACE").length = 2;
    QCOMPARE(shown(compareListings(variables(ListingKind::Spss), after)),
        QStringList({ "fits variable-resized AGE length 3 2",
            "breaks variable-resized PLACE length 4 2" }));
    after.kind = ListingKind::Stata;
    QCOMPARE(shown(compareListings(variables(ListingKind::Spss), after)),
        QStringList({ "breaks variable-resized PLACE length 4 2" }));
}

void tst_ListingDiff::manyVariables()
{
    constexpr int Count = 100000;
    Listing before = variables(ListingKind::Spss);
    for (int i = 0; i < Count; ++i)
        before.fields.append(field(nullptr, qPrintable(QString("V%1").arg(i)), 0, 1));
    Listing after = before;
    std::reverse(after.fields.begin(), after.fields.end());
    QCOMPARE(compareListings(before, after).size(), 0);
    after.fields.resize(Count / 2);
    QCOMPARE(compareListings(before, after).size(), before.fields.size() - Count / 2);
}

QTEST_GUILESS_MAIN(tst_ListingDiff)
#include "tst_ListingDiff.moc"
