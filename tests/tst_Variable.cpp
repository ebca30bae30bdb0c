#include "RecordFields.h"

#include <model_Tessel/Variable.h>

#include <QtTest>

#include <memory>
#include <type_traits>

namespace {

Owned own(const MetadataVariables& metadata)
{
    return ownedBy(metadata, &MetadataVariables::getRange);
}

Owned own(const TOxVariable& variable)
{
    Owned owned = own(*variable.getMetadataVariables());
    for (auto& object : ownedBy(
             variable, &TOxVariable::getValueLabelElementList, &TOxVariable::getMetadataVariables))
        owned.push_back(object);
    return owned;
}

VarWipChoice otherChoice()
{
    VarWipChoice choice;
    choice.setRecType("1");
    choice.setField("AGE");
    choice.setDataProvider("CSPRO_census.dcf");
    choice.setStart(56);
    choice.setFormat("F2");
    return choice;
}

bool areEqual(const VarWipChoice& a, const VarWipChoice& b)
{
    return a.getRecType() == b.getRecType() && a.getField() == b.getField()
        && a.getDataProvider() == b.getDataProvider() && a.getStart() == b.getStart()
        && a.getFormat() == b.getFormat();
}

} // namespace

class tst_Variable : public QObject {
    Q_OBJECT

private slots:
    void fields();
    void fieldsOfValueLabelElement();
    void fieldsOfVarWipChoice();
    void fieldsOfMetadataVariables();
    void fieldsOfRange();

    void startsUnchosen();
    void choiceIsCopied();
    void metadataComeEmpty();
    void addAppends();
    void copiesShareLabelsAndMetadata();
    void copiesShareRanges();
    void destructorLeavesLabelsAndMetadata();
};

void tst_Variable::fields()
{
    static_assert(!std::is_polymorphic_v<TOxVariable>, "a plain record");
    using V = TOxVariable;
    RecordFields<V> fields([](const V& variable) { return own(variable); });
    fields.add<const QString&>("entity", &V::getEntity, &V::setEntity, "");
    fields.add<const QString&>("path", &V::getPath, &V::setPath, "");
    fields.add<const QString&>("storage", &V::getStorage, &V::setStorage, "");
    fields.add<const QString&>("fullName", &V::getFullName, &V::setFullName, "");
    fields.add<QString>("name", &V::getName, &V::setName, "");
    fields.add<QString>("alias", &V::getAlias, &V::setAlias, "");
    fields.add<QString>("label", &V::getLabel, &V::setLabel, "");
    fields.add<QString>("group", &V::getGroup, &V::setGroup, "");
    fields.add<QString>("varType", &V::getVarType, &V::setVarType, "");
    fields.add<QString>("documentation", &V::getDocumentation, &V::setDocumentation, "");
    fields.add<QString>("recType", &V::getRecType, &V::setRecType, "");
    fields.add<QString>("field", &V::getField, &V::setField, "");
    fields.add<const QString&>("fieldName", &V::getFieldName, &V::setFieldName, "");
    fields.add<const bool&>("local", &V::getLocal, &V::setLocal, false);
    fields.add<int>("start", &V::getStart, &V::setStart, 0);
    fields.add<QString>("dataProvider", &V::getDataProvider, &V::setDataProvider, "");
    fields.add<int>("tag", &V::getTag, &V::setTag, 0);
    fields.add<double>("notappl", &V::getNotappl, &V::setNotappl, 0.0);
    fields.add<double>("missing", &V::getMissing, &V::setMissing, 0.0);
    fields.add<int>("decimals", &V::getDecimals, &V::setDecimals, 0);
    fields.add<int>("size", &V::getSize, &V::setSize, 0);
    fields.add<int>("fieldSize", &V::getFieldSize, &V::setFieldSize, 0);
    fields.add<int>(
        "fieldRelativePosition", &V::getFieldRelativePosition, &V::setFieldRelativePosition, 0);
    fields.add<QString>("datasetID", &V::getDatasetID, &V::setDatasetID, "");
    fields.addList<QList<ValueLabelElement*>>(
        "valueLabelElementList", &V::getValueLabelElementList, &V::setValueLabelElementList);
    fields.addObject<MetadataVariables>("metadataVariables", &V::getMetadataVariables,
        &V::setMetadataVariables,
        [](const MetadataVariables& metadata) { return metadata.getRange()->isEmpty(); });
    fields.add<int>("level", &V::getLevel, &V::setLevel, 1);
    fields.add<int>("checked", &V::getChecked, &V::setChecked, 0);
    fields.check();
    fields.checkCopies();
}

void tst_Variable::fieldsOfValueLabelElement()
{
    using E = ValueLabelElement;
    RecordFields<E> fields;
    fields.add<QString>("value", &E::getValue, &E::setValue, "");
    fields.add<QString>("label", &E::getLabel, &E::setLabel, "");
    fields.check();
    fields.checkCopies();
}

void tst_Variable::fieldsOfVarWipChoice()
{
    using C = VarWipChoice;
    RecordFields<C> fields;
    fields.add<QString>("recType", &C::getRecType, &C::setRecType, "");
    fields.add<QString>("field", &C::getField, &C::setField, "");
    fields.add<QString>("dataProvider", &C::getDataProvider, &C::setDataProvider, "");
    fields.add<int>("start", &C::getStart, &C::setStart, 0);
    fields.add<QString>("format", &C::getFormat, &C::setFormat, "");
    fields.check();
    fields.checkCopies();
}

void tst_Variable::fieldsOfMetadataVariables()
{
    using M = MetadataVariables;
    RecordFields<M> fields([](const M& metadata) { return own(metadata); });
    fields.add<QString>("record", &M::getRecord, &M::setRecord, "");
    fields.add<QString>("field", &M::getField, &M::setField, "");
    fields.add<int>("start", &M::getStart, &M::setStart, 0);
    fields.add<int>("length", &M::getLength, &M::setLength, 0);
    fields.add<bool>("lookup", &M::getLookup, &M::setLookup, false);
    fields.addList<QList<Range*>>("range", &M::getRange, &M::setRange);
    fields.check();
    fields.checkCopies();
}

void tst_Variable::fieldsOfRange()
{
    RecordFields<Range> fields;
    fields.add<double>("rangeMin", &Range::getRangeMin, &Range::setRangeMin, 0.0);
    fields.add<double>("rangeMax", &Range::getRangeMax, &Range::setRangeMax, 0.0);
    fields.check();
    fields.checkCopies();
}

void tst_Variable::startsUnchosen()
{
    const TOxVariable variable;
    const Owned owned = own(variable);
    QVERIFY(areEqual(variable.getVarWipChoice(), VarWipChoice()));
}

void tst_Variable::choiceIsCopied()
{
    static_assert(std::is_same_v<decltype(&TOxVariable::getVarWipChoice),
                      VarWipChoice (TOxVariable::*)() const>,
        "a copy, no reference");
    TOxVariable variable;
    const Owned owned = own(variable);
    VarWipChoice choice = otherChoice();
    variable.setVarWipChoice(choice);
    choice.setField("SEX");
    QVERIFY(areEqual(variable.getVarWipChoice(), otherChoice()));
    auto&& given = variable.getVarWipChoice(); // the member itself, were it no copy
    given.setField("SEX");
    QVERIFY(areEqual(variable.getVarWipChoice(), otherChoice()));
    const TOxVariable copy = variable;
    variable.setVarWipChoice(choice);
    QVERIFY(areEqual(copy.getVarWipChoice(), otherChoice()));
    QCOMPARE(variable.getVarWipChoice().getField(), QString("SEX"));
    QCOMPARE(variable.getRecType(), QString());
    QCOMPARE(variable.getField(), QString());
    QCOMPARE(variable.getStart(), 0);
}

void tst_Variable::metadataComeEmpty()
{
    const TOxVariable variable;
    const Owned owned = own(variable);
    const MetadataVariables& metadata = *variable.getMetadataVariables();
    QCOMPARE(metadata.getRecord(), QString());
    QCOMPARE(metadata.getField(), QString());
    QCOMPARE(metadata.getStart(), 0);
    QCOMPARE(metadata.getLength(), 0);
    QVERIFY(!metadata.getLookup());
}

void tst_Variable::addAppends()
{
    TOxVariable variable;
    const Owned owned = own(variable);
    ValueLabelElement male;
    ValueLabelElement female;
    variable.addValueLabelElement(&male);
    variable.addValueLabelElement(&female);
    variable.addValueLabelElement(&male);
    QCOMPARE(
        *variable.getValueLabelElementList(), QList<ValueLabelElement*>({ &male, &female, &male }));

    MetadataVariables& metadata = *variable.getMetadataVariables();
    Range low;
    Range high;
    metadata.addItemRange(&high);
    metadata.addItemRange(&low);
    QCOMPARE(*metadata.getRange(), QList<Range*>({ &high, &low }));
}

void tst_Variable::copiesShareLabelsAndMetadata()
{
    TOxVariable variable;
    const Owned owned = own(variable);
    TOxVariable copy = variable;
    ValueLabelElement element;
    copy.addValueLabelElement(&element);
    copy.getMetadataVariables()->setRecord("PERSON");
    copy.setName("AGE");
    QCOMPARE(*variable.getValueLabelElementList(), QList<ValueLabelElement*>({ &element }));
    QCOMPARE(variable.getMetadataVariables()->getRecord(), QString("PERSON"));
    QCOMPARE(variable.getName(), QString());
}

void tst_Variable::copiesShareRanges()
{
    MetadataVariables metadata;
    const Owned owned = own(metadata);
    MetadataVariables copy = metadata;
    Range range;
    copy.addItemRange(&range);
    copy.setLength(2);
    QCOMPARE(*metadata.getRange(), QList<Range*>({ &range }));
    QCOMPARE(metadata.getLength(), 0);
}

void tst_Variable::destructorLeavesLabelsAndMetadata()
{
    auto variable = std::make_unique<TOxVariable>();
    const Owned owned = own(*variable);
    ValueLabelElement element;
    Range range;
    variable->addValueLabelElement(&element);
    variable->getMetadataVariables()->addItemRange(&range);
    const QList<ValueLabelElement*>& labels = *variable->getValueLabelElementList();
    const MetadataVariables& metadata = *variable->getMetadataVariables();
    variable.reset();
    QCOMPARE(labels, QList<ValueLabelElement*>({ &element }));
    QCOMPARE(*metadata.getRange(), QList<Range*>({ &range }));
}

QTEST_APPLESS_MAIN(tst_Variable)

#include "tst_Variable.moc"
