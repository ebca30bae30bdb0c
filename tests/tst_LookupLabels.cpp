#include "lookups/LookupLabels.h"

#include <model_Tessel/Lookup.h>

#include <QtTest>

#include <memory>
#include <vector>

namespace {

using Pairs = QVector<QPair<QString, QString>>;

ListedField field(ValueType type, const QVector<ListedCode>& codes)
{
    ListedField result;
    result.name = "SEX";
    result.type = type;
    result.valueSets.append({ "SEX_VS", "Sex", codes });
    return result;
}

LabelComparison compare(const Pairs& records, const ListedField& variable)
{
    std::vector<std::unique_ptr<TOxLookupValue>> owned;
    std::map<QString, TOxLookupValue*> values;
    for (const auto& [key, value] : records) {
        owned.push_back(std::make_unique<TOxLookupValue>(TOxLookupValue { value }));
        values.emplace(key, owned.back().get());
    }
    return compareLabels(values, variable);
}

// "keys without a label / codes without a key / keys with other texts".
QString summary(const LabelComparison& comparison)
{
    const auto keys = [](const QVector<LabelDifference>& differences) {
        QStringList texts;
        for (const LabelDifference& difference : differences)
            texts.append(difference.key);
        return texts.join(' ');
    };
    return QStringList { keys(comparison.keysWithoutLabel), keys(comparison.labelsWithoutKey),
        keys(comparison.differentTexts) }
        .join('/');
}

} // namespace

class tst_LookupLabels : public QObject {
    Q_OBJECT

private slots:
    void numbers();
    void texts();
    void differentTexts();
    void repeatedCodes();
    void ranges_data();
    void ranges();
    void unknownVariables();
};

void tst_LookupLabels::numbers()
{
    const ListedField sex =
        field(ValueType::Integer, { { "1", {}, "Male" }, { "02", {}, "Female" } });
    QVERIFY(compare({ { "01", "Male" }, { "2.0", " Female " } }, sex).isEqual());
    QCOMPARE(summary(compare({ { "1", "Male" }, { "x", "Other" } }, sex)), QString("x/02/"));
    // Lines without a separator stand under the empty key.
    QCOMPARE(summary(compare({ { "", "rest" } }, sex)), QString("/1 02/"));
}

void tst_LookupLabels::texts()
{
    const ListedField code = field(ValueType::String, { { "A ", {}, "Ash" }, { "01", {}, "One" } });
    QVERIFY(compare({ { "A", "Ash" }, { "01 ", "One" } }, code).isEqual());
    QCOMPARE(summary(compare({ { "a", "Ash" }, { "1", "One" } }, code)), QString("1 a/A  01/"));
}

void tst_LookupLabels::differentTexts()
{
    const LabelComparison comparison =
        compare({ { "1", "man" } }, field(ValueType::Integer, { { "1", {}, "Male" } }));
    QCOMPARE(comparison.variable, QString("SEX"));
    QCOMPARE(comparison.differentTexts.size(), 1);
    QCOMPARE(comparison.differentTexts.constFirst().text, QString("man"));
    QCOMPARE(comparison.differentTexts.constFirst().label, QString("Male"));
}

// The first of two equal codes is the one that a key falls to; the other is told, not lost.
void tst_LookupLabels::repeatedCodes()
{
    const ListedField sex = field(ValueType::Integer, { { "1", {}, "Male" }, { "01", {}, "Man" } });
    QCOMPARE(summary(compare({ { "1", "Male" } }, sex)), QString("/01/"));
    QCOMPARE(summary(compare({ { "1", "Man" } }, sex)), QString("/01/1"));
}

void tst_LookupLabels::ranges_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<bool>("isFound");
    QTest::newRow("low end") << "10" << true;
    QTest::newRow("high end") << "19.5" << true;
    QTest::newRow("within both") << "13" << true;
    QTest::newRow("behind a range within another") << "16" << true;
    QTest::newRow("below all") << "9.99" << false;
    QTest::newRow("between two") << "20" << false;
    QTest::newRow("above all") << "31" << false;
    QTest::newRow("below zero") << "-5" << true;
    QTest::newRow("no number") << "1O" << false;
}

void tst_LookupLabels::ranges()
{
    QFETCH(QString, key);
    const ListedField age = field(ValueType::Real,
        { { "25", "30", "Old" }, { "10", "19.5", "Young" }, { "12", "14", "Youngest" },
            { "-9", "-1", "Unborn" } });
    const LabelComparison comparison = compare({ { key, "any text" } }, age);
    QTEST(comparison.keysWithoutLabel.isEmpty(), "isFound");
    QVERIFY(comparison.differentTexts.isEmpty());
}

void tst_LookupLabels::unknownVariables()
{
    const QString file = QStringLiteral(TESSEL_EXAMPLES "/census.dcf");
    ListedField variable;
    QVERIFY(!readVariable({ file, "NOBODY", {} }, variable));
    QVERIFY(!readVariable({ file + ".missing", "SEX", {} }, variable));
    QVERIFY(variable.name.isNull());
    QVERIFY(readVariable({ file, "sex", {} }, variable));
    QCOMPARE(variable.name, QString("SEX"));
}

QTEST_APPLESS_MAIN(tst_LookupLabels)

#include "tst_LookupLabels.moc"
