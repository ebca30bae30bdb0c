#include "AddRow.h"
#include "CSProImporters.h"

#include <model_Tessel/CSPro.h>
#include <model_Tessel/CSProDataImport.h>
#include <model_Tessel/CSProValueSet.h>

#include <QLoggingCategory>
#include <QRandomGenerator>
#include <QtTest>

class tst_CSProDataImportValueSets : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();

    void valueSets_data();
    void valueSets();
    void severalValueSets_data();
    void severalValueSets();
    void anEmptyListOfValueSets();
    void parsedValueSets_data();
    void parsedValueSets();
    void missingCodeOfADictionary();
    void valueSetsAsAPlainLoopReadsThem();
    void occurrencesShareTheirLabels();
    void itemsOfOneSetAndSeveralTypes();
};

void tst_CSProDataImportValueSets::initTestCase()
{
    QLoggingCategory::setFilterRules(QStringLiteral("default.debug=false"));
}

void tst_CSProDataImportValueSets::valueSets_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<QStringList>("entries"); // codes and labels; "!" marks a special code
    QTest::addColumn<QString>("labels");
    QTest::addColumn<QString>("min");
    QTest::addColumn<QString>("max"); // "999": what it is without a value set

    const int integer = 1;
    const int real = 2;
    const int text = 3;
    row("codes and labels", integer, QStringList { "1", "Yes", "2", "No" }, "1 Yes\t2 No\t", "1",
        "2");
    row("special last entry still bounds the range", integer,
        QStringList { "1", "Yes", "2", "No", "!9", "Missing" }, "1 Yes\t2 No\t", "1", "9");
    row("special first entry still bounds the range", integer,
        QStringList { "!-5", "Missing", "1", "Yes", "2", "No" }, "1 Yes\t2 No\t", "-5", "2");
    row("special entry in the middle does not", integer,
        QStringList { "1", "Yes", "!99", "Missing", "2", "No" }, "1 Yes\t2 No\t", "1", "2");
    row("only special entries", integer, QStringList { "!8", "a", "!9", "b" }, "", "8", "9");
    row("one entry", integer, QStringList { "4", "Four" }, "4 Four\t", "4", "4");
    row("no entry", integer, QStringList(), "", "0", "999");
    row("entries out of order", integer, QStringList { "5", "a", "1", "b", "9", "c", "4", "d" },
        "5 a\t1 b\t9 c\t4 d\t", "1", "9");
    row("low bound above the high one", integer, QStringList { "9", "a", "1", "b" }, "9 a\t1 b\t",
        "1", "9");
    row("codes below zero", integer, QStringList { "-9", "a", "-2", "b" }, "-9 a\t-2 b\t", "-9",
        "-2");
    row("empty label", integer, QStringList { "1", "" }, "1 \t", "1", "1");
    row("tab and blank in a label", integer, QStringList { "1", "a\tb c" }, "1 a\tb c\t", "1", "1");
    row("leading zeros go", integer, QStringList { "007", "a", "+8", "b" }, "7 a\t8 b\t", "7", "8");
    row("blanks around go", integer, QStringList { " 7", "a", "8 ", "b" }, "7 a\t8 b\t", "7", "8");
    row("six digits", integer, QStringList { "0", "a", "999999", "b" }, "0 a\t999999 b\t", "0",
        "999999");
    row("seven digits", integer, QStringList { "1000000", "a", "1234567", "b" },
        "1e+06 a\t1.23457e+06 b\t", "1e+06", "1.23457e+06");
    row("seven digits below zero", integer, QStringList { "-1234567", "a", "-999999", "b" },
        "-1.23457e+06 a\t-999999 b\t", "-1.23457e+06", "-999999");
    row("decimal codes of an integer field", integer, QStringList { "1.5", "a", "2.25", "b" },
        "1.5 a\t2.25 b\t", "1.5", "2.25");
    row("code that is no number is left out", integer, QStringList { "1", "a", "x", "b", "3", "c" },
        "1 a\t3 c\t", "1", "3");
    row("first code is no number", integer, QStringList { "x", "a", "5", "b", "7", "c" },
        "5 b\t7 c\t", "0", "999");
    row("last code is no number", integer, QStringList { "-5", "a", "-7", "b", "x", "c" },
        "-5 a\t-7 b\t", "-7", "999");
    row("no code is a number", integer, QStringList { "x", "a", "", "b" }, "", "0", "999");
    row("special last code is no number", integer, QStringList { "5", "a", "!x", "b" }, "5 a\t",
        "0", "999");
    row("start value of a code", integer, QStringList { "\x03", "a" }, "", "0", "999");

    row("real field keeps its codes as written", real,
        QStringList { "007", "a", "+8", "b", " 9", "c", "12345678", "d" },
        "007 a\t+8 b\t 9 c\t12345678 d\t", "7", "1.23457e+07");
    row("real field, code that is no number is left out", real,
        QStringList { "1", "a", "x", "b", "2", "c" }, "1 a\t2 c\t", "1", "2");
    row("real field, decimal codes", real, QStringList { "0.5", "a", "1.50", "b" },
        "0.5 a\t1.50 b\t", "0.5", "1.5");
    row("real field, special last entry", real, QStringList { "1", "a", "!99", "b" }, "1 a\t", "1",
        "99");

    row("text field keeps every code", text, QStringList { "A", "a", "007", "b", "", "c" },
        "A a\t007 b\t c\t", "0", "");
    row("text field leaves special entries out", text, QStringList { "A", "a", "!X", "b" }, "A a\t",
        "0", "");
    row("text field without entries", text, QStringList(), "", "0", "");
    row("text field of numbers has no bounds", text, QStringList { "5", "a", "9", "b" },
        "5 a\t9 b\t", "0", "");
}

void tst_CSProDataImportValueSets::valueSets()
{
    QFETCH(int, type);
    QFETCH(QStringList, entries);
    QFETCH(QString, labels);
    QFETCH(QString, min);
    QFETCH(QString, max);
    HandMade importer;
    TCSProItem* item = importer.addItem(QStringLiteral("A"), 3, type == 3);
    item->decimal = type == 2 ? 1 : 0;
    importer.addSet(item, entries);
    importer.copyDataFromDictionary();
    const TCSProVariable* field = importer.variable(0);
    QCOMPARE(field->fieldType, type);
    QCOMPARE(field->valueLabels, labels);
    QCOMPARE(field->minValue, min);
    QCOMPARE(field->maxValue, max);
}

void tst_CSProDataImportValueSets::severalValueSets_data()
{
    QTest::addColumn<QStringList>("first");
    QTest::addColumn<QStringList>("second");
    QTest::addColumn<QString>("labels");
    QTest::addColumn<QString>("min");
    QTest::addColumn<QString>("max");

    row("the second one widens the range", QStringList { "3", "a", "5", "b" },
        QStringList { "1", "c", "9", "d" }, "3 a\t5 b\t1 c\t9 d\t", "1", "9");
    row("special entries of the second one do not", QStringList { "3", "a", "5", "b" },
        QStringList { "!1", "c", "!9", "d" }, "3 a\t5 b\t", "3", "5");
    row("empty first one: the range starts at 0", QStringList(), QStringList { "5", "c", "9", "d" },
        "5 c\t9 d\t", "0", "999");
    row("empty first one, codes below zero", QStringList(), QStringList { "-5", "c" }, "-5 c\t",
        "-5", "999");
    row("first one without numbers", QStringList { "x", "a" }, QStringList { "-5", "c" }, "-5 c\t",
        "-5", "999");
    row("empty second one", QStringList { "3", "a" }, QStringList(), "3 a\t", "3", "3");
}

void tst_CSProDataImportValueSets::severalValueSets()
{
    QFETCH(QStringList, first);
    QFETCH(QStringList, second);
    QFETCH(QString, labels);
    QFETCH(QString, min);
    QFETCH(QString, max);
    HandMade importer;
    TCSProItem* item = importer.addItem(QStringLiteral("A"), 3);
    importer.addSet(item, first);
    importer.addSet(item, second);
    importer.copyDataFromDictionary();
    QCOMPARE(importer.getField(0)->valueLabels, labels);
    QCOMPARE(importer.getField(0)->minValue, min);
    QCOMPARE(importer.getField(0)->maxValue, max);
}

void tst_CSProDataImportValueSets::anEmptyListOfValueSets()
{
    HandMade importer;
    TCSProItem* item = importer.addItem(QStringLiteral("A"), 5);
    item->decimal = 2;
    TCSProItem* described = importer.addItem(QStringLiteral("B"), 5);
    described->decimal = 2;
    importer.addSet(described, {});
    importer.copyDataFromDictionary();
    // Decimals shorten the range of an item without value sets only.
    QCOMPARE(importer.getField(0)->maxValue, QString("999"));
    QCOMPARE(importer.getField(1)->maxValue, QString("99999"));
}

void tst_CSProDataImportValueSets::parsedValueSets_data()
{
    QTest::addColumn<QByteArray>("item");
    QTest::addColumn<QString>("labels");
    QTest::addColumn<QString>("min");
    QTest::addColumn<QString>("max");
    QTest::addColumn<QString>("missing");

    row("missing code is no entry",
        QByteArray("Len=1\n[ValueSet]\nValue=1;Yes\nValue=2;No\nValue=9;x\nName=MISSING ,Special"),
        "1 Yes\t2 No\t", "1", "2", "9");
    row("missing code without the blank is an entry",
        QByteArray("Len=1\n[ValueSet]\nValue=1;Yes\nValue=2;No\nValue=9;x\nName=MISSING,Special"),
        "1 Yes\t2 No\t9 x\t", "1", "9", "");
    row("range", QByteArray("Len=3\n[ValueSet]\nValue=20:30;b\nValue=1;a"), "1 a\t20 b\t30 b\t",
        "1", "30", "");
    row("dropped set", QByteArray("Len=3\n[ValueSet]\nValue=x;b"), "", "0", "999", "");
    row("long codes", QByteArray("Len=10\n[ValueSet]\nValue=0012345678;a"), "0012345678 a\t",
        "1.23457e+07", "1.23457e+07", "");
    row("text", QByteArray("Len=3\nDataType=Alpha\n[ValueSet]\nValue='A';a\nValue='B';b"),
        "B b\tA a\t", "0", "", "");
}

void tst_CSProDataImportValueSets::parsedValueSets()
{
    QFETCH(QByteArray, item);
    QFETCH(QString, labels);
    QFETCH(QString, min);
    QFETCH(QString, max);
    QFETCH(QString, missing);
    const Opened importer("[Item]\nName=A\n" + item);
    const TCSProVariable* field = importer.variable(0);
    QCOMPARE(field->valueLabels, labels);
    QCOMPARE(field->minValue, min);
    QCOMPARE(field->maxValue, max);
    QCOMPARE(field->missingValue, missing);
}

// The missing entry of a set that keeps it bounds the range, but is not among the labels.
void tst_CSProDataImportValueSets::missingCodeOfADictionary()
{
    HandMade importer;
    TCSProItem* item = importer.addItem(QStringLiteral("A"), 1);
    item->missingCode = QStringLiteral("9");
    importer.addSet(item, { "1", "Yes", "2", "No", "!9", "Missing" });
    item->getValueSet(0)->getValueSetItem(2)->type = 1;
    importer.copyDataFromDictionary();
    TCSProVariable* field = importer.variable(0);
    QCOMPARE(field->valueLabels, QString("1 Yes\t2 No\t"));
    QCOMPARE(field->minValue, QString("1"));
    QCOMPARE(field->maxValue, QString("9"));
    QCOMPARE(field->missingValue, QString("9"));
    field->setAsString("9");
    QVERIFY(field->isMissing());
}

void tst_CSProDataImportValueSets::valueSetsAsAPlainLoopReadsThem()
{
    QRandomGenerator random(3);
    const QStringList odd { "x", "", "-0", "0", "1e3", "1.5e-7", "123456.7", "0.0000123", "-1e15",
        "999999", "1000000", "-999999.5", "2147483648", "1 2", "1:5", " 12", ".", "5." };
    for (int turn = 0; turn < 3000; ++turn) {
        HandMade importer;
        TCSProItem* item = importer.addItem(QStringLiteral("A"), 4);
        item->isAlpha = random.bounded(4) == 0 ? 1 : 0;
        item->decimal = random.bounded(3) == 0 ? 1 : 0;
        for (int sets = random.bounded(3) + 1; sets > 0; --sets) {
            QStringList entries;
            for (int i = random.bounded(turn % 10 == 0 ? 60 : 6); i > 0; --i) {
                const QString code = random.bounded(3) == 0
                    ? odd.at(random.bounded(odd.size()))
                    : QString::number(static_cast<int>(random.generate()) >> random.bounded(32));
                entries.append((random.bounded(5) == 0 ? QStringLiteral("!") : QString()) + code);
                entries.append(QStringLiteral("label %1").arg(i));
            }
            importer.addSet(item, entries);
        }
        importer.copyDataFromDictionary();
        const TCSProVariable* field = importer.variable(0);

        double min = 0;
        double max = 0;
        bool hasBounds = false;
        const TCSProValueSet* first = item->getValueSet(0);
        if (item->isAlpha == 0 && first->getCount() > 0) {
            bool isLow = false;
            bool isHigh = false;
            const double low = first->getValueSetItem(0)->code.toDouble(&isLow);
            const double high =
                first->getValueSetItem(first->getCount() - 1)->code.toDouble(&isHigh);
            hasBounds = isLow && isHigh;
            min = hasBounds ? low : 0;
            max = hasBounds ? high : 0;
        }
        QString labels;
        for (int set = 0; set < item->getCount(); ++set) {
            for (int i = 0; i < item->getValueSet(set)->getCount(); ++i) {
                const TValueSetItem* entry = item->getValueSet(set)->getValueSetItem(i);
                if (entry->special)
                    continue;
                QString code = entry->code;
                if (item->isAlpha == 0) {
                    bool isNumber = false;
                    const double number = code.toDouble(&isNumber);
                    if (!isNumber)
                        continue;
                    if (number > max)
                        max = number;
                    if (number < min)
                        min = number;
                    if (item->decimal == 0)
                        code = QString::number(number, 'g', 6);
                }
                labels += code + QStringLiteral(" ") + entry->label + QStringLiteral("\t");
            }
        }
        QCOMPARE(field->valueLabels, labels);
        QCOMPARE(field->minValue, QString::number(min, 'g', 6));
        QCOMPARE(field->maxValue,
            hasBounds                ? QString::number(max, 'g', 6)
                : item->isAlpha == 0 ? QStringLiteral("9999")
                                     : QString());
    }
}

void tst_CSProDataImportValueSets::occurrencesShareTheirLabels()
{
    const Opened importer("[Item]\nName=ID\nLen=1\n[Item]\nName=C\nLen=1\nOccurrences=20\n"
                          "[ValueSet]\nValue=1;Yes\nValue=2;No\nValue=9;x\nName=MISSING ,Special\n"
                          "[Item]\nName=D\nLen=1\n[ValueSet]\nValue=3;three\n");
    QCOMPARE(importer.fields->size(), 22);
    const TGenericField* first = importer.getField(1);
    QCOMPARE(first->valueLabels, QString("1 Yes\t2 No\t"));
    for (int i = 2; i <= 20; ++i) {
        QCOMPARE(importer.getField(i)->valueLabels, first->valueLabels);
        QVERIFY(importer.getField(i)->valueLabels.isSharedWith(first->valueLabels));
        QCOMPARE(importer.getField(i)->minValue, QString("1"));
        QCOMPARE(importer.getField(i)->maxValue, QString("2"));
        QCOMPARE(importer.getField(i)->missingValue, QString(i == 20 ? "9" : ""));
    }
    QCOMPARE(importer.getField(21)->valueLabels, QString("3 three\t"));
    QCOMPARE(importer.getField(21)->minValue, QString("3"));
    QCOMPARE(importer.getField(21)->maxValue, QString("3"));
}

// One set means something else to each type of field.
void tst_CSProDataImportValueSets::itemsOfOneSetAndSeveralTypes()
{
    HandMade importer;
    TCSProItem* integer = importer.addItem(QStringLiteral("I"), 3);
    TCSProItem* real = importer.addItem(QStringLiteral("R"), 3);
    real->decimal = 1;
    TCSProItem* text = importer.addItem(QStringLiteral("T"), 3, true);
    TCSProItem* integerAgain = importer.addItem(QStringLiteral("J"), 5);
    TCSProItem* undescribed = importer.addItem(QStringLiteral("U"), 2);
    TCSProItem* longer = importer.addItem(QStringLiteral("L"), 3);
    TCSProValueSet* set = importer.addSet(integer, { "01", "a", "x", "b", "02", "c" });
    for (TCSProItem* item : { real, text, integerAgain, longer })
        item->valueSets->append(set);
    importer.addSet(longer, { "7", "d" });
    importer.copyDataFromDictionary();
    QStringList found;
    for (const TGenericField* field : qAsConst(*importer.fields))
        found.append(field->valueLabels + field->minValue + QLatin1Char('-') + field->maxValue);
    QCOMPARE(found,
        (QStringList { "1 a\t2 c\t1-2", "01 a\t02 c\t1-2", "01 a\tx b\t02 c\t0-", "1 a\t2 c\t1-2",
            "0-99", "1 a\t2 c\t7 d\t1-7" }));
    QVERIFY(undescribed->valueSets->isEmpty());
}

QTEST_MAIN(tst_CSProDataImportValueSets)

#include "tst_CSProDataImportValueSets.moc"
