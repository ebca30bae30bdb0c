#include "RecordFields.h"

// The host types are declared only: programs that never define them compile.
#include <model_Tessel/DtoReportRunCreation.h>
#include <model_Tessel/HostTypes.h>
#include <model_Tessel/SelectionTreeUnit.h>
#include <model_Tessel/StructVariableItem.h>

#include <QCoreApplication>
#include <QStringListModel>
#include <QTranslator>
#include <QtTest>

#include <memory>
#include <type_traits>
#include <utility>
#include <vector>

namespace {

Owned own(const SelectionTreeUnit& unit)
{
    return ownedBy(unit, &SelectionTreeUnit::getChildren);
}

Owned own(const TOxVariable& variable)
{
    Owned owned = ownedBy(*variable.getMetadataVariables(), &MetadataVariables::getRange);
    for (auto& object : ownedBy(
             variable, &TOxVariable::getValueLabelElementList, &TOxVariable::getMetadataVariables))
        owned.push_back(object);
    return owned;
}

Owned own(const StructVariableItem& item)
{
    Owned owned = own(item.getData());
    for (auto& object : ownedBy(item, &StructVariableItem::getChildren))
        owned.push_back(object);
    return owned;
}

// Puts the context before every text that it translates.
class ContextTranslator : public QTranslator {
public:
    QString translate(
        const char* context, const char* text, const char* disambiguation, int n) const override
    {
        Q_UNUSED(disambiguation)
        Q_UNUSED(n)
        return QString("%1: %2").arg(context, text);
    }
    bool isEmpty() const override
    {
        return false;
    }
};

// Shares ownership of a host object without a definition of its type.
template <typename Host> std::shared_ptr<Host> hostObject(const std::shared_ptr<int>& owner)
{
    return std::shared_ptr<Host>(owner, reinterpret_cast<Host*>(owner.get()));
}

} // namespace

class tst_ViewRecords : public QObject {
    Q_OBJECT

private slots:
    void fieldsOfSelectionTreeUnit();
    void addAppendsUnits();
    void copiesOfUnitsShareChildren();
    void viewIsAnOpaqueEnum();

    void fieldsOfStructVariableItem();
    void dataIsAVariable();
    void dataSharesLabelsAndMetadata();
    void addAppendsItems();
    void copiesOfItemsShareChildren();

    void fieldsOfReport();
    void captions();
    void captionsAreTranslated();
    void messagesAreTheHosts();
    void sharedPointersAreReleased();
    void reportIsAPlainObject();
};

void tst_ViewRecords::fieldsOfSelectionTreeUnit()
{
    using S = SelectionTreeUnit;
    using Area = std::pair<std::string, std::string>;
    using Properties = QList<QPair<QString, int>>;
    static_assert(!std::is_polymorphic_v<S>, "a plain record");
    const QStringListModel model({ "row" });
    RecordFields<S> fields([](const S& unit) { return own(unit); });
    fields.addList("children", &S::getChildren, &S::setChildren);
    fields.add<Properties>("infoProperties", &S::getInfoProperties, &S::setInfoProperties, {},
        Properties({ { "rows", 2 }, { "rows", 3 } }));
    fields.add<std::vector<Area>>("childAreas", &S::getChildAreas, &S::setChildAreas, {},
        std::vector<Area>({ { "11", "Alta" }, { "12", "Bassemer" } }));
    fields.add<Area>("area", &S::getArea, &S::setArea, Area(), Area("11", "Alta"));
    fields.add<TMavEntity*>("child", &S::getChild, &S::setChild, nullptr);
    fields.add<TMavEntity*>("parent", &S::getParent, &S::setParent, nullptr);
    fields.add<QString>("code", &S::getCode, &S::setCode, "");
    fields.add<QString>("codeEntity", &S::getCodeEntity, &S::setCodeEntity, "");
    fields.add<QString>("name", &S::getName, &S::setName, "");
    fields.add<int>("level", &S::getLevel, &S::setLevel, 0);
    fields.add<int>("counter", &S::getCounter, &S::setCounter, 1);
    fields.add<Qt::CheckState, const Qt::CheckState&>(
        "unitState", &S::getUnitState, &S::setUnitState, Qt::Unchecked, Qt::PartiallyChecked);
    fields.add<eSelectionView, const eSelectionView&>("unitView", &S::getUnitView, &S::setUnitView,
        static_cast<eSelectionView>(1), static_cast<eSelectionView>(0));
    fields.add<bool>("expanded", &S::getExpanded, &S::setExpanded, false);
    fields.add<QModelIndex, const QModelIndex&>(
        "index", &S::getIndex, &S::setIndex, QModelIndex(), model.index(0));
    fields.check();
    fields.checkCopies();
}

void tst_ViewRecords::addAppendsUnits()
{
    SelectionTreeUnit unit;
    SelectionTreeUnit first;
    SelectionTreeUnit second;
    const Owned owned[] = { own(unit), own(first), own(second) };
    unit.addChildren(&first);
    unit.addChildren(&second);
    unit.addChildren(&first);
    QCOMPARE(*unit.getChildren(), QList<SelectionTreeUnit*>({ &first, &second, &first }));
    QVERIFY(first.getChildren()->isEmpty());
    QVERIFY(!first.getParent());
}

void tst_ViewRecords::copiesOfUnitsShareChildren()
{
    SelectionTreeUnit unit;
    const Owned owned = own(unit);
    unit.setInfoProperties({ { "rows", 1 } });
    SelectionTreeUnit copy = unit;
    copy.addChildren(&unit);
    copy.setInfoProperties({});
    QCOMPARE(*unit.getChildren(), QList<SelectionTreeUnit*>({ &unit }));
    QCOMPARE(unit.getInfoProperties().size(), 1);
}

void tst_ViewRecords::viewIsAnOpaqueEnum()
{
    static_assert(std::is_same_v<std::underlying_type_t<eSelectionView>, int>, "the host's");
    static_assert(std::is_convertible_v<eSelectionView, int>, "unscoped");
    SelectionTreeUnit unit;
    const Owned owned = own(unit);
    QCOMPARE(static_cast<int>(unit.getUnitView()), 1);
    unit.setUnitView(static_cast<eSelectionView>(1000));
    QCOMPARE(static_cast<int>(unit.getUnitView()), 1000);
}

void tst_ViewRecords::fieldsOfStructVariableItem()
{
    using S = StructVariableItem;
    static_assert(!std::is_polymorphic_v<S>, "a plain record");
    RecordFields<S> fields([](const S& item) { return own(item); });
    fields.add<int>("level", &S::getLevel, &S::setLevel, 0);
    fields.add<bool>("checked", &S::getChecked, &S::setChecked, false);
    fields.addList("children", &S::getChildren, &S::setChildren);
    fields.check();
    fields.checkCopies();
}

void tst_ViewRecords::dataIsAVariable()
{
    const StructVariableItem item;
    const Owned owned = own(item);
    const TOxVariable variable = item.getData();
    QCOMPARE(variable.getName(), QString());
    QCOMPARE(variable.getLevel(), 1);
    QCOMPARE(variable.getChecked(), 0);
    QVERIFY(variable.getValueLabelElementList()->isEmpty());
    QVERIFY(variable.getMetadataVariables()->getRange()->isEmpty());
    const StructVariableItem other;
    const Owned ownedByOther = own(other);
    QVERIFY(other.getData().getMetadataVariables() != variable.getMetadataVariables());
}

void tst_ViewRecords::dataSharesLabelsAndMetadata()
{
    static_assert(std::is_same_v<decltype(&StructVariableItem::getData),
                      TOxVariable (StructVariableItem::*)() const>,
        "a copy, no reference");
    StructVariableItem item;
    const Owned owned = own(item);
    TOxVariable variable;
    const Owned ownedByVariable = own(variable);
    ValueLabelElement element;
    VarWipChoice choice;
    choice.setField("AGE");
    variable.setName("AGE");
    variable.setMissing(99);
    variable.setChecked(2);
    variable.setVarWipChoice(choice);
    item.setData(variable);
    variable.setName("SEX");
    variable.addValueLabelElement(&element);

    const TOxVariable data = item.getData();
    QCOMPARE(data.getName(), QString("AGE"));
    QCOMPARE(data.getMissing(), 99.0);
    QCOMPARE(data.getChecked(), 2);
    QCOMPARE(data.getVarWipChoice().getField(), QString("AGE"));
    QCOMPARE(*data.getValueLabelElementList(), QList<ValueLabelElement*>({ &element }));
    QCOMPARE(data.getMetadataVariables(), variable.getMetadataVariables());
    auto&& given = item.getData(); // a copy
    given.setName("X");
    QCOMPARE(item.getData().getName(), QString("AGE"));

    const StructVariableItem copy = item;
    QCOMPARE(copy.getData().getName(), QString("AGE"));
    QCOMPARE(copy.getData().getMetadataVariables(), variable.getMetadataVariables());
}

void tst_ViewRecords::addAppendsItems()
{
    StructVariableItem item;
    StructVariableItem first;
    StructVariableItem second;
    const Owned owned[] = { own(item), own(first), own(second) };
    StructVariableItem* child = &first;
    item.addChildren(child);
    child = &second;
    item.addChildren(child);
    QCOMPARE(child, &second);
    QCOMPARE(*item.getChildren(), QList<StructVariableItem*>({ &first, &second }));
}

void tst_ViewRecords::copiesOfItemsShareChildren()
{
    StructVariableItem item;
    const Owned owned = own(item);
    StructVariableItem copy = item;
    StructVariableItem* child = &item;
    copy.addChildren(child);
    copy.setLevel(3);
    QCOMPARE(*item.getChildren(), QList<StructVariableItem*>({ &item }));
    QCOMPARE(item.getLevel(), 0);
}

void tst_ViewRecords::fieldsOfReport()
{
    using D = DtoReportRunCreation;
    const auto owner = std::make_shared<int>(1);
    RecordFields<D> fields;
    fields.add<QString>(
        "titleReport", &D::titleReport, &D::setTitleReport, "Pelix Lookup Checking");
    fields.add<QString>("idLabel", &D::idLabel, &D::setIdLabel, "Lookup Identification");
    fields.add<QString>("labelLabel", &D::labelLabel, &D::setLabelLabel, "Lookup Label");
    fields.add<QString>("dataFileLabel", &D::dataFileLabel, &D::setDataFileLabel, "Lookup File");
    fields.add<QString>("idValue", &D::idValue, &D::setIdValue, "");
    fields.add<QString>("labelValue", &D::labelValue, &D::setLabelValue, "");
    fields.add<QString>("dataFileValue", &D::dataFileValue, &D::setDataFileValue, "");
    fields.add<QStringList*>("errorMessages", &D::errorMessages, &D::setErrorMessages, nullptr);
    fields.add<std::shared_ptr<TMavDataset>>(
        "report", &D::getReport, &D::setReport, nullptr, hostObject<TMavDataset>(owner));
    fields.add<std::shared_ptr<TMavDictionary>>(
        "dic", &D::getDic, &D::setDic, nullptr, hostObject<TMavDictionary>(owner));
    fields.add<std::shared_ptr<TMavDatabaseCreationInfo>>(
        "info", &D::getInfo, &D::setInfo, nullptr, hostObject<TMavDatabaseCreationInfo>(owner));
    fields.check();
}

void tst_ViewRecords::captions()
{
    const DtoReportRunCreation report;
    QCOMPARE(report.titleReport(), QString("Pelix Lookup Checking"));
    QCOMPARE(report.idLabel(), QString("Lookup Identification"));
    QCOMPARE(report.labelLabel(), QString("Lookup Label"));
    QCOMPARE(report.dataFileLabel(), QString("Lookup File"));
}

void tst_ViewRecords::captionsAreTranslated()
{
    const DtoReportRunCreation before;
    ContextTranslator translator;
    QVERIFY(QCoreApplication::installTranslator(&translator));
    const DtoReportRunCreation report;
    QVERIFY(QCoreApplication::removeTranslator(&translator));
    QCOMPARE(report.titleReport(), QString("QObject: Pelix Lookup Checking"));
    QCOMPARE(report.idLabel(), QString("QObject: Lookup Identification"));
    QCOMPARE(report.labelLabel(), QString("QObject: Lookup Label"));
    QCOMPARE(report.dataFileLabel(), QString("QObject: Lookup File"));
    QCOMPARE(report.idValue(), QString());
    QCOMPARE(before.titleReport(), QString("Pelix Lookup Checking"));
}

void tst_ViewRecords::messagesAreTheHosts()
{
    QStringList messages({ "1. Duplicate key" });
    {
        DtoReportRunCreation report;
        report.setErrorMessages(&messages);
        report.errorMessages()->append("2. No separator");
    }
    QCOMPARE(messages, QStringList({ "1. Duplicate key", "2. No separator" }));
}

void tst_ViewRecords::sharedPointersAreReleased()
{
    const auto owner = std::make_shared<int>(1);
    {
        DtoReportRunCreation report;
        report.setReport(hostObject<TMavDataset>(owner));
        report.setDic(hostObject<TMavDictionary>(owner));
        report.setInfo(hostObject<TMavDatabaseCreationInfo>(owner));
        QCOMPARE(owner.use_count(), 4L);
        report.setDic(nullptr);
        QCOMPARE(owner.use_count(), 3L);
    }
    QCOMPARE(owner.use_count(), 1L);
}

void tst_ViewRecords::reportIsAPlainObject()
{
    static_assert(std::is_base_of_v<QObject, DtoReportRunCreation>, "hosts pass it as one");
    const DtoReportRunCreation report;
    QVERIFY(!report.parent());
    QCOMPARE(report.metaObject(), &QObject::staticMetaObject);
}

QTEST_GUILESS_MAIN(tst_ViewRecords)

#include "tst_ViewRecords.moc"
