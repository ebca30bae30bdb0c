#include "writers/TreeWriters.h"

#include <model_Tessel/Config.h>
#include <model_Tessel/DictionaryRelease.h>
#include <model_Tessel/Entity.h>
#include <model_Tessel/Variable.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QtTest>

namespace {

TOxVariable* addVariable(TOxEntity& entity, const QString& name)
{
    auto* variable = new TOxVariable;
    variable->setName(name);
    variable->setVarType("NUMBER");
    entity.addVariables(variable);
    return variable;
}

void addRange(TOxVariable& variable, double low, double high)
{
    auto* range = new Range;
    range->setRangeMin(low);
    range->setRangeMax(high);
    variable.getMetadataVariables()->getRange()->append(range);
}

void addLabel(TOxVariable& variable, const QString& value, const QString& label)
{
    auto* element = new ValueLabelElement;
    element->setValue(value);
    element->setLabel(label);
    variable.getValueLabelElementList()->append(element);
}

QByteArray written(const Dictionary& dictionary, TreeFormat format, const TreeFacts& facts = {})
{
    QByteArray text;
    writeTree("file.dcf", dictionary, *dictionary.getRoot(), facts, format,
        [&](const QByteArray& piece) { text += piece; });
    return text;
}

QJsonObject writtenVariable(const Dictionary& dictionary, bool withValues)
{
    const QJsonDocument json = QJsonDocument::fromJson(written(dictionary, { true, withValues }));
    return json["tree"]["variables"][0].toObject();
}

} // namespace

class tst_TreeWriters : public QObject {
    Q_OBJECT

private slots:
    void init();
    void numbers_data();
    void numbers();
    void rangesOfColumnsAreNotTold();
    void labelsOfAnotherVariable();
    void hostileTexts();
    void jsonNumbers();
    void emptyTree();

private:
    DictionaryPointer m_dictionary;
    TOxVariable* m_variable = nullptr;
};

void tst_TreeWriters::init()
{
    m_dictionary.reset(new Dictionary);
    m_dictionary->getRoot()->setName("ROOT");
    m_variable = addVariable(*m_dictionary->getRoot(), "V");
}

void tst_TreeWriters::numbers_data()
{
    QTest::addColumn<double>("low");
    QTest::addColumn<double>("high");
    QTest::addColumn<QByteArray>("text");
    QTest::newRow("whole") << 0.0 << 99.0 << QByteArray("(range 0..99)");
    QTest::newRow("below zero") << -5.0 << -1.0 << QByteArray("(range -5..-1)");
    QTest::newRow("parts") << 0.1 << 2.5 << QByteArray("(range 0.1..2.5)");
    QTest::newRow("largest in digits")
        << 0.0 << 999999999999999.0 << QByteArray("(range 0..999999999999999)");
    QTest::newRow("larger") << 0.0 << 1e20 << QByteArray("(range 0..1e+20)");
    QTest::newRow("largest") << -1.7976931348623157e308 << 1.7976931348623157e308
                             << QByteArray("(range -1.7976931348623157e+308.."
                                           "1.7976931348623157e+308)");
}

void tst_TreeWriters::numbers()
{
    QFETCH(double, low);
    QFETCH(double, high);
    QFETCH(QByteArray, text);
    addRange(*m_variable, low, low);
    addRange(*m_variable, high, high);
    const QByteArray shown = written(*m_dictionary, { false, true, 200 });
    QVERIFY2(shown.contains(text), shown.constData());
    QVERIFY(!written(*m_dictionary, { false, false, 200 }).contains("range"));
}

// A range that only says what the columns can hold says nothing.
void tst_TreeWriters::rangesOfColumnsAreNotTold()
{
    addRange(*m_variable, 0, 99);
    m_variable->setMissing(98);
    TreeFacts facts;
    facts[m_variable].rangeSource = RangeSource::Length;
    QVERIFY(written(*m_dictionary, { false, true }, facts).contains("(missing 98)"));
    facts[m_variable].rangeSource = RangeSource::ValueSet;
    facts[m_variable].rangeValueSet = "AGES";
    QVERIFY(written(*m_dictionary, { false, true }, facts)
                .contains("(range 0..99 of AGES, missing 98)"));
}

// Labels that variables share are written under each of them, and others' are not mixed up.
void tst_TreeWriters::labelsOfAnotherVariable()
{
    TOxEntity& root = *m_dictionary->getRoot();
    addLabel(*m_variable, "1", "Shared");
    TOxVariable* sharing = addVariable(root, "W");
    delete sharing->getValueLabelElementList();
    sharing->setValueLabelElementList(m_variable->getValueLabelElementList());
    addLabel(*addVariable(root, "X"), "1", "Own");
    addVariable(root, "Y");
    for (const bool asJson : { false, true }) {
        const QByteArray text = written(*m_dictionary, { asJson, true });
        QCOMPARE(text.count("Shared"), 2);
        QCOMPARE(text.count("Own"), 1);
    }
}

void tst_TreeWriters::hostileTexts()
{
    addLabel(*m_variable, "1\x1B[31m", QString("a\x1B[0m") + QChar(0x202E));
    const QByteArray text = written(*m_dictionary, { false, true });
    QVERIFY(!text.contains('\x1B'));
    QVERIFY(!text.contains(QString(QChar(0x202E)).toUtf8()));
    const QJsonObject variable = writtenVariable(*m_dictionary, true);
    QCOMPARE(variable["valueLabels"].toArray().at(0)["value"].toString(), QString("1\x1B[31m"));
}

// Of a code 0 the model cannot tell whether it is one.
void tst_TreeWriters::jsonNumbers()
{
    addRange(*m_variable, 0.1, 1e20);
    m_variable->setMissing(0);
    m_variable->setNotappl(-0.5);
    const QJsonObject variable = writtenVariable(*m_dictionary, true);
    QVERIFY(variable["missing"].isNull());
    QCOMPARE(variable["notApplicable"].toDouble(), -0.5);
    QCOMPARE(variable["rangeCount"].toInt(), 1);
    QCOMPARE(variable["ranges"].toArray().at(0)["min"].toDouble(), 0.1);
    QCOMPARE(variable["ranges"].toArray().at(0)["max"].toDouble(), 1e20);
    QVERIFY(!writtenVariable(*m_dictionary, false).contains("ranges"));
}

void tst_TreeWriters::emptyTree()
{
    const DictionaryPointer empty(new Dictionary);
    QVERIFY(
        written(*empty, { false, true }).contains("1 entity, 0 variables, 0 with value labels"));
    const QJsonDocument json = QJsonDocument::fromJson(written(*empty, { true, true }));
    QCOMPARE(json["tree"]["variables"].toArray().size(), 0);
    QVERIFY(json["tree"]["children"].isArray());
}

QTEST_APPLESS_MAIN(tst_TreeWriters)

#include "tst_TreeWriters.moc"
