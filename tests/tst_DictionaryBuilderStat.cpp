#include "BuiltDictionaries.h"

#include <model_Tessel/DictionaryBuilder.h>
#include <model_Tessel/StatDictionary.h>
#include <model_Tessel/Variable.h>

#include <QDir>
#include <QLoggingCategory>
#include <QtTest>

namespace {

TStatValue statNumber(double number)
{
    TStatValue value;
    value.number = number;
    value.text = QString::number(number);
    return value;
}

TStatValue statText(const QString& text)
{
    TStatValue value;
    value.type = READSTAT_TYPE_STRING;
    value.text = text;
    return value;
}

TStatFileDescription statDescription()
{
    TStatFileDescription file;
    file.path = "folder/wave.2.sav";
    file.fileLabel = "Second wave";
    return file;
}

TStatVariableDescription& addVariable(TStatFileDescription& file, const QString& name,
    const QString& format, readstat_type_t type = READSTAT_TYPE_DOUBLE)
{
    TStatVariableDescription variable;
    variable.name = name;
    variable.type = type;
    variable.format = format;
    file.variables.append(variable);
    return file.variables.last();
}

} // namespace

Q_DECLARE_METATYPE(TStatMissingRange)

class tst_DictionaryBuilderStat : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();

    void statFile();
    void statFileVariables();
    void statFileLabels();
    void statFileBounds_data();
    void statFileBounds();
    void statFileLookups();
    void statFileOfManyVariables();
};

void tst_DictionaryBuilderStat::initTestCase()
{
    QLoggingCategory::setFilterRules("default.debug=false");
}

void tst_DictionaryBuilderStat::statFile()
{
    TStatFileDescription file = statDescription();
    file.rowCount = 1234;
    file.notes = QStringList { "First", "Second" };
    const DictionaryPointer dictionary(buildDictionary(file));
    const TOxEntity& root = *dictionary->getRoot();
    QCOMPARE(root.getName(), QString("wave.2"));
    QCOMPARE(root.getLabel(), QString("Second wave"));
    QCOMPARE(root.getDocumentationEntity(), QString("First\nSecond"));
    QCOMPARE(root.getNrElements(), qint64(1234));
    QVERIFY(root.getChildren()->isEmpty());
    const Datasource& source = *dictionary->getMetadataDictionary()->getDatasource();
    QCOMPARE(source.getType(), QString("SPSS"));
    QCOMPARE(source.getFile(), QDir::toNativeSeparators("folder/wave.2.sav"));
    file.kind = TStatFileKind::Stata;
    file.rowCount = -1; // not told
    const DictionaryPointer other(buildDictionary(file));
    QCOMPARE(other->getMetadataDictionary()->getDatasource()->getType(), QString("STATA"));
    QCOMPARE(other->getRoot()->getNrElements(), qint64(0));
}

void tst_DictionaryBuilderStat::statFileVariables()
{
    TStatFileDescription file = statDescription();
    TStatVariableDescription& weight = addVariable(file, "WEIGHT", "F12.3");
    weight.label = "Weight";
    weight.missingRanges = { { statNumber(90), statNumber(98) },
        { statNumber(99.5), statNumber(99.5) }, { statNumber(7), statNumber(7) } };
    addVariable(file, "ID", "F10.0");
    TStatVariableDescription& name = addVariable(file, "NAME", "A300", READSTAT_TYPE_STRING);
    name.userWidth = 300;
    name.missingRanges = { { statText("NA"), statText("NA") } };
    const DictionaryPointer dictionary(buildDictionary(file));
    QStringList variables;
    for (const TOxVariable* variable : *dictionary->getRoot()->getVariables()) {
        variables << QString("%1 %2 %3 %4 %5 %6 %7")
                         .arg(variable->getName(), variable->getLabel(), variable->getVarType())
                         .arg(variable->getSize())
                         .arg(variable->getDecimals())
                         .arg(variable->getStart())
                         .arg(variable->getMissing());
        QCOMPARE(variable->getField(), variable->getName());
        QCOMPARE(variable->getEntity(), QString("wave.2"));
        QCOMPARE(variable->getDataProvider(), QString("SPSS_folder/wave.2.sav"));
        QCOMPARE(variable->getMetadataVariables()->getLength(), variable->getSize());
        QVERIFY(variable->getMetadataVariables()->getRange()->isEmpty());
    }
    QCOMPARE(variables,
        QStringList({ "WEIGHT Weight REAL 12 3 0 99.5", "ID  INTEGER 10 0 0 0",
            "NAME  STRING 300 0 0 0" }));
}

void tst_DictionaryBuilderStat::statFileLabels()
{
    TStatFileDescription file = statDescription();
    file.labelSets = { { "A",
                           { { statText("a b"), "Code with a blank" }, { statText(""), "" },
                               { statText("LONGER THAN EIGHT"), "Long\tlabel\n" } } },
        { "B", { { statNumber(0.5), "Half" }, { statNumber(-1), "Minus one" } } },
        { "unused", {} } };
    addVariable(file, "TEXT", "A20", READSTAT_TYPE_STRING).labelSet = 0;
    addVariable(file, "FIRST", "F4.1").labelSet = 1;
    addVariable(file, "NONE", "F4.1");
    addVariable(file, "SECOND", "F1.0").labelSet = 1;
    addVariable(file, "EMPTY", "F1.0").labelSet = 2;
    const DictionaryPointer dictionary(buildDictionary(file));
    const QList<TOxVariable*>& variables = *dictionary->getRoot()->getVariables();
    QCOMPARE(labels(*variables.at(0)),
        QString("a b=Code with a blank|=|LONGER THAN EIGHT=Long\tlabel\n"));
    QCOMPARE(labels(*variables.at(1)), QString("0.5=Half|-1=Minus one"));
    QCOMPARE(labels(*variables.at(2)), QString());
    QCOMPARE(
        variables.at(3)->getValueLabelElementList(), variables.at(1)->getValueLabelElementList());
    QCOMPARE(labels(*variables.at(4)), QString());
    QVERIFY(
        variables.at(2)->getValueLabelElementList() != variables.at(4)->getValueLabelElementList());
}

void tst_DictionaryBuilderStat::statFileBounds_data()
{
    QTest::addColumn<QVector<TStatMissingRange>>("missing");
    QTest::addColumn<QString>("expected");
    using Ranges = QVector<TStatMissingRange>;
    QTest::newRow("none missing") << Ranges() << "-2..99";
    QTest::newRow("highest missing") << Ranges({ { statNumber(99), statNumber(99) } }) << "-2..8.5";
    QTest::newRow("range missing") << Ranges({ { statNumber(5), statNumber(100) } }) << "-2..1";
    QTest::newRow("one left") << Ranges({ { statNumber(1), statNumber(100) } }) << "";
    QTest::newRow("all missing") << Ranges({ { statNumber(-10), statNumber(100) } }) << "";
}

void tst_DictionaryBuilderStat::statFileBounds()
{
    QFETCH(QVector<TStatMissingRange>, missing);
    QFETCH(QString, expected);
    TStatFileDescription file = statDescription();
    TStatLabelledValue tagged { statNumber(1000), "Tagged" };
    tagged.value.tag = 'a';
    file.labelSets = { { "A",
        { { statNumber(1), "One" }, { statNumber(99), "Unknown" }, tagged,
            { statNumber(-2), "Minus two" }, { statNumber(8.5), "More" } } } };
    TStatVariableDescription& first = addVariable(file, "FIRST", "F4.1");
    first.labelSet = 0;
    first.missingRanges = missing;
    TStatVariableDescription& second = addVariable(file, "SECOND", "F4.1");
    second.labelSet = 0;
    TStatVariableDescription& text = addVariable(file, "TEXT", "A4", READSTAT_TYPE_STRING);
    text.labelSet = 0;
    TStatVariableDescription& scale = addVariable(file, "SCALE", "F4.1");
    scale.labelSet = 0;
    scale.measure = READSTAT_MEASURE_SCALE;
    const DictionaryPointer dictionary(buildDictionary(file));
    const QList<TOxVariable*>& variables = *dictionary->getRoot()->getVariables();
    QCOMPARE(ranges(*variables.at(0)), expected);
    QCOMPARE(ranges(*variables.at(1)), QString("-2..99")); // its missing values are its own
    QCOMPARE(ranges(*variables.at(2)), QString());
    QCOMPARE(ranges(*variables.at(3)), QString());
}

void tst_DictionaryBuilderStat::statFileLookups()
{
    TStatFileDescription file = statDescription();
    addVariable(file, "PLACE", "F4.0");
    addVariable(file, "OTHER", "F4.0");
    LookupDictionary places;
    places.setName("PLACE");
    const DictionaryPointer dictionary(buildDictionary(file, { places }));
    QCOMPARE(dictionary->getMetadataDictionary()->getLookUp()->size(), 1);
    const QList<TOxVariable*>& variables = *dictionary->getRoot()->getVariables();
    QVERIFY(variables.at(0)->getMetadataVariables()->getLookup());
    QVERIFY(!variables.at(1)->getMetadataVariables()->getLookup());
}

// Were labels or bounds made for each variable, this would not end.
void tst_DictionaryBuilderStat::statFileOfManyVariables()
{
    TStatFileDescription file = statDescription();
    TStatLabelSet set;
    for (int code = 0; code < 50'000; ++code)
        set.labels.append({ statNumber(code), "Label" });
    file.labelSets = { set };
    for (int i = 0; i < 20'000; ++i) {
        TStatVariableDescription& variable = addVariable(file, QString("V%1").arg(i), "F5.0");
        variable.labelSet = 0;
        variable.missingRanges = { { statNumber(99), statNumber(99) } };
    }
    const DictionaryPointer dictionary(buildDictionary(file));
    QCOMPARE(dictionary->getRoot()->getVariables()->size(), 20'000);
    QCOMPARE(ranges(*dictionary->getRoot()->getVariables()->last()), QString("0..49999"));
}

QTEST_GUILESS_MAIN(tst_DictionaryBuilderStat)

#include "tst_DictionaryBuilderStat.moc"
