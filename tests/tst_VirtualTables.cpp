// The virtual tables of the exported classes, which programs built against the library rely on.
// What is read here is laid out as the Itanium C++ ABI says.
#include <model_Tessel/CSPro.h>
#include <model_Tessel/CSProDataImport.h>
#include <model_Tessel/CSProValueSet.h>
#include <model_Tessel/DataImport.h>
#include <model_Tessel/DataProvider.h>
#include <model_Tessel/DtoReportRunCreation.h>
#include <model_Tessel/Entity.h>
#include <model_Tessel/ErrorManager.h>
#include <model_Tessel/GenericField.h>
#include <model_Tessel/LoaderManager.h>
#include <model_Tessel/Lookup.h>
#include <model_Tessel/QuestIndex.h>
#include <model_Tessel/Record.h>
#include <model_Tessel/ReportLookup.h>
#include <model_Tessel/SPSSDataImport.h>
#include <model_Tessel/STATADataImport.h>
#include <model_Tessel/SourceField.h>
#include <model_Tessel/UtilStrings.h>
#include <model_Tessel/Variable.h>

#include <QFile>
#include <QMap>
#include <QtTest>

#include <cstring>
#include <type_traits>

#include <dlfcn.h>
#include <link.h>

namespace {

constexpr int WordSize = sizeof(void*);
constexpr int WordsBeforeSlots = 2; // offset to the top, type information
constexpr int NotVirtual = -1;
constexpr int Destructors = 2; // the complete and the deleting one
constexpr int ObjectSlots = 12; // of QObject with its destructors

// A pointer to a virtual member holds the slot's offset; a bit that no other has marks it.
template <typename Member> int slotOf(Member member)
{
    std::ptrdiff_t words[2];
    static_assert(sizeof member == sizeof words, "pointer and adjustment");
    std::memcpy(words, &member, sizeof words);
#if defined(__aarch64__) || defined(__arm__)
    const bool isVirtual = (words[1] & 1) != 0;
#else
    const bool isVirtual = (words[0] & 1) != 0;
#endif
    return isVirtual ? static_cast<int>(words[0] / WordSize) : NotVirtual;
}

// A symbol's address in the library; null when it exports none of that name.
void* addressOf(const QByteArray& symbol)
{
    return ::dlsym(RTLD_DEFAULT, symbol.constData());
}

QString libraryPath()
{
    Dl_info info = {};
    return ::dladdr(&ErrorNumber, &info) != 0 ? QFile::decodeName(info.dli_fname) : QString();
}

// The library's file: the names of the virtual tables it defines, and their sizes in bytes.
QMap<QByteArray, qulonglong> tablesIn(const QString& path)
{
    QMap<QByteArray, qulonglong> tables;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return tables;
    const QByteArray bytes = file.readAll();
    const auto* header = reinterpret_cast<const ElfW(Ehdr)*>(bytes.constData());
    const auto* sections = reinterpret_cast<const ElfW(Shdr)*>(bytes.constData() + header->e_shoff);
    for (int i = 0; i < header->e_shnum; ++i) {
        if (sections[i].sh_type != SHT_DYNSYM)
            continue;
        const char* names = bytes.constData() + sections[sections[i].sh_link].sh_offset;
        const auto* symbols =
            reinterpret_cast<const ElfW(Sym)*>(bytes.constData() + sections[i].sh_offset);
        const auto count = sections[i].sh_size / sizeof(ElfW(Sym));
        for (ElfW(Xword) symbol = 0; symbol < count; ++symbol) {
            const QByteArray name(names + symbols[symbol].st_name);
            if (name.startsWith("_ZTV") && !name.startsWith("_ZTVSt") // the standard library's own
                && symbols[symbol].st_shndx != SHN_UNDEF)
                tables.insert(name, symbols[symbol].st_size);
        }
    }
    return tables;
}

QByteArray mangled(const QByteArray& className)
{
    return QByteArray::number(className.size()) + className;
}

} // namespace

class tst_VirtualTables : public QObject {
    Q_OBJECT

private slots:
    void everyTableHasItsSize();
    void destructorsInTheirSlots_data();
    void destructorsInTheirSlots();
    void hooksWithoutAVirtualDestructor();
    void recordsWithoutATable();
    void operationsOfImporters_data();
    void operationsOfImporters();
    void operationsOfFields_data();
    void operationsOfFields();
    void operationsOfTheErrorObject();
};

// Every class whose table the library defines; one more, or one less, is told as well.
void tst_VirtualTables::everyTableHasItsSize()
{
    const QMap<QByteArray, int> slotsOfClass {
        { "OxErrorManager", Destructors + 3 },
        { "TOxList", 1 },
        { "TOxEntity", 1 },
        { "TLoaderManager", ObjectSlots },
        { "TDataImport", Destructors + 14 },
        { "TCSProDataImport", Destructors + 14 },
        { "TSPSSDataImport", Destructors + 14 },
        { "TSTATADataImport", Destructors + 14 },
        { "TGenericField", Destructors + 5 },
        { "TCSProVariable", Destructors + 5 },
        { "TSPSSVariable", Destructors + 5 },
        { "TSTATAVariable", Destructors + 5 },
        { "TOxSourceField", Destructors },
        { "TOxDataProvider", Destructors },
        { "TCSPro", ObjectSlots },
        { "TCSProItem", ObjectSlots },
        { "TCSProValueSet", ObjectSlots },
        { "TValueSetItem", ObjectSlots },
        { "DtoReportRunCreation", ObjectSlots },
        { "ReportLookup", ObjectSlots },
        { "TOxLookup", Destructors },
        { "TQuestIndex", Destructors },
        { "TOxRecord", Destructors },
    };
    QMap<QByteArray, qulonglong> expected;
    for (auto it = slotsOfClass.begin(); it != slotsOfClass.end(); ++it)
        expected.insert(
            "_ZTV" + mangled(it.key()), qulonglong(WordsBeforeSlots + it.value()) * WordSize);
    const auto found = tablesIn(libraryPath());
    QCOMPARE(found.keys(), expected.keys());
    for (const QByteArray& name : found.keys())
        QVERIFY2(found.value(name) == expected.value(name),
            (name + ": " + QByteArray::number(found.value(name))).constData());
}

void tst_VirtualTables::destructorsInTheirSlots_data()
{
    QTest::addColumn<QByteArray>("className");
    QTest::addColumn<int>("slot");
    // Without the abstract bases, whose own tables no object has.
    for (const char* name : { "OxErrorManager", "TCSProDataImport", "TSPSSDataImport",
             "TSTATADataImport", "TCSProVariable", "TSPSSVariable", "TSTATAVariable",
             "TOxSourceField", "TOxDataProvider", "TOxLookup", "TQuestIndex", "TOxRecord" })
        QTest::newRow(name) << QByteArray(name) << 0;
    for (const char* name : { "TLoaderManager", "TCSPro", "TCSProItem", "TCSProValueSet",
             "TValueSetItem", "DtoReportRunCreation", "ReportLookup" })
        QTest::newRow(name) << QByteArray(name) << 3; // behind the three of the meta-object
}

void tst_VirtualTables::destructorsInTheirSlots()
{
    QFETCH(QByteArray, className);
    QFETCH(int, slot);
    const QByteArray name = mangled(className);
    void* const* table = static_cast<void**>(addressOf("_ZTV" + name));
    QVERIFY(table);
    QVERIFY(addressOf("_ZN" + name + "D1Ev"));
    QCOMPARE(table[WordsBeforeSlots + slot], addressOf("_ZN" + name + "D1Ev"));
    QCOMPARE(table[WordsBeforeSlots + slot + 1], addressOf("_ZN" + name + "D0Ev"));
}

void tst_VirtualTables::hooksWithoutAVirtualDestructor()
{
    QCOMPARE(slotOf(&TOxEntity::toString), 0);
    QCOMPARE(slotOf(&TOxEntity::findEntity), NotVirtual);
    QCOMPARE(slotOf(&TOxEntity::getName), NotVirtual);
    QCOMPARE(slotOf(&TOxList::Notify), 0);
    QCOMPARE(slotOf(&TOxList::Remove1), NotVirtual);
    static_assert(!std::has_virtual_destructor<TOxEntity>::value, "toString() is its whole table");
    static_assert(!std::has_virtual_destructor<TOxList>::value, "Notify() is its whole table");
    static_assert(
        std::is_same<decltype(&TOxEntity::toString), std::string (TOxEntity::*)() const>::value,
        "asked of constant entities");
}

void tst_VirtualTables::recordsWithoutATable()
{
    static_assert(!std::is_polymorphic<TOxVariable>::value, "a plain record");
    static_assert(!std::is_polymorphic<TCSProRecord>::value, "a plain record");
    static_assert(!std::is_polymorphic<TOxLookupValue>::value, "a plain record");
    QVERIFY(!addressOf("_ZTV11TOxVariable"));
    QVERIFY(!addressOf("_ZTV12TCSProRecord"));
    QVERIFY(!addressOf("_ZTV14TOxLookupValue"));
}

void tst_VirtualTables::operationsOfImporters_data()
{
    QTest::addColumn<int>("found");
    QTest::addColumn<int>("slot");

    using Base = TDataImport;
    using CSPro = TCSProDataImport;
    const auto dictionary =
        static_cast<void (Base::*)(QList<TOxSourceField*>*, QStringList*)>(&Base::getDictionary);
    const auto fields = static_cast<void (Base::*)(QList<TOxSourceField*>*)>(&Base::getDictionary);
    const auto index = static_cast<int (CSPro::*)(QString)>(&CSPro::getRecordTypeIndex);
    const auto currentIndex = static_cast<int (CSPro::*)()>(&CSPro::getRecordTypeIndex);
    int slot = Destructors;
    QTest::newRow("getDataProviderId") << slotOf(&Base::getDataProviderId) << slot++;
    QTest::newRow("getDataProviderType") << slotOf(&Base::getDataProviderType) << slot++;
    QTest::newRow("openFile") << slotOf(&Base::openFile) << slot++;
    QTest::newRow("getDictionary") << slotOf(dictionary) << slot++;
    QTest::newRow("selectLayoutSource") << slotOf(&Base::selectLayoutSource) << slot++;
    QTest::newRow("isMultiple") << slotOf(&Base::isMultiple) << slot++;
    QTest::newRow("getGroupCount") << slotOf(&Base::getGroupCount) << slot++;
    QTest::newRow("getGroupName") << slotOf(&Base::getGroupName) << slot++;
    QTest::newRow("getGroupValue") << slotOf(&Base::getGroupValue) << slot++;
    QTest::newRow("getRecordTypeIndex") << slotOf(&Base::getRecordTypeIndex) << slot++;
    QTest::newRow("getRecordTypeCurrent") << slotOf(&Base::getRecordTypeCurrent) << slot++;
    QTest::newRow("getLayoutSource") << slotOf(&Base::getLayoutSource) << slot++;
    QTest::newRow("getRecordTypeStart") << slotOf(&Base::getRecordTypeStart) << slot++;
    QTest::newRow("getRecordTypeSize") << slotOf(&Base::getRecordTypeSize) << slot++;
    QTest::newRow("all of them") << slot << Destructors + 14;

    QTest::newRow("CSPro: getDataProviderId") << slotOf(&CSPro::getDataProviderId) << 2;
    QTest::newRow("CSPro: selectLayoutSource") << slotOf(&CSPro::selectLayoutSource) << 6;
    QTest::newRow("CSPro: getRecordTypeIndex") << slotOf(index) << 11;
    QTest::newRow("CSPro: getRecordTypeSize") << slotOf(&CSPro::getRecordTypeSize) << 15;
    QTest::newRow("SPSS: openFile") << slotOf(&TSPSSDataImport::openFile) << 4;
    QTest::newRow("Stata: openFile") << slotOf(&TSTATADataImport::openFile) << 4;

    QTest::newRow("getDictionary of a list alone") << slotOf(fields) << NotVirtual;
    QTest::newRow("initDataImport") << slotOf(&Base::initDataImport) << NotVirtual;
    QTest::newRow("openDataImport") << slotOf(&Base::openDataImport) << NotVirtual;
    QTest::newRow("closeDataImport") << slotOf(&Base::closeDataImport) << NotVirtual;
    QTest::newRow("addField") << slotOf(&Base::addField) << NotVirtual;
    QTest::newRow("registerIOFormat") << slotOf(&Base::registerIOFormat) << NotVirtual;
    QTest::newRow("CSPro: openRead") << slotOf(&CSPro::openRead) << NotVirtual;
    QTest::newRow("SPSS: openRead") << slotOf(&TSPSSDataImport::openRead) << NotVirtual;
    QTest::newRow("Stata: openRead") << slotOf(&TSTATADataImport::openRead) << NotVirtual;
    QTest::newRow("CSPro: current type") << slotOf(currentIndex) << NotVirtual;
}

void tst_VirtualTables::operationsOfImporters()
{
    QFETCH(int, slot);
    QTEST(slot, "found");
}

void tst_VirtualTables::operationsOfFields_data()
{
    QTest::addColumn<int>("found");
    QTest::addColumn<int>("slot");

    using Base = TGenericField;
    int slot = Destructors;
    QTest::newRow("isMissing") << slotOf(&Base::isMissing) << slot++;
    QTest::newRow("isNotApplicable") << slotOf(&Base::isNotApplicable) << slot++;
    QTest::newRow("isBlank") << slotOf(&Base::isBlank) << slot++;
    QTest::newRow("addValueLabel") << slotOf(&Base::addValueLabel) << slot++;
    QTest::newRow("getGroup") << slotOf(&Base::getGroup) << slot++;
    QTest::newRow("all of them") << slot << Destructors + 5;

    QTest::newRow("CSPro: isBlank") << slotOf(&TCSProVariable::isBlank) << 4;
    QTest::newRow("CSPro: getGroup") << slotOf(&TCSProVariable::getGroup) << 6;
    QTest::newRow("SPSS: isMissing") << slotOf(&TSPSSVariable::isMissing) << 2;
    QTest::newRow("Stata: isNotApplicable") << slotOf(&TSTATAVariable::isNotApplicable) << 3;

    QTest::newRow("setAsString") << slotOf(&Base::setAsString) << NotVirtual;
    QTest::newRow("CSPro: setAsString") << slotOf(&TCSProVariable::setAsString) << NotVirtual;
    QTest::newRow("getValueLabel") << slotOf(&Base::getValueLabel) << NotVirtual;
    QTest::newRow("isString") << slotOf(&Base::isString) << NotVirtual;
}

void tst_VirtualTables::operationsOfFields()
{
    QFETCH(int, slot);
    QTEST(slot, "found");
}

void tst_VirtualTables::operationsOfTheErrorObject()
{
    QCOMPARE(slotOf(&OxErrorManager::what), Destructors);
    QCOMPARE(slotOf(&OxErrorManager::raise), Destructors + 1);
    QCOMPARE(slotOf(&OxErrorManager::clone), Destructors + 2);
    QCOMPARE(slotOf(&OxErrorManager::init), NotVirtual);
    QCOMPARE(slotOf(&OxErrorManager::getErrorMessage), NotVirtual);
    QCOMPARE(slotOf(&OxErrorManager::displayMessageBox), NotVirtual);
    void* const* table = static_cast<void**>(addressOf("_ZTV14OxErrorManager"));
    QVERIFY(table);
    QCOMPARE(table[WordsBeforeSlots + 2], addressOf("_ZNKSt9exception4whatEv"));
    QCOMPARE(table[WordsBeforeSlots + 3], addressOf("_ZNK10QException5raiseEv"));
    QCOMPARE(table[WordsBeforeSlots + 4], addressOf("_ZNK10QException5cloneEv"));
}

QTEST_GUILESS_MAIN(tst_VirtualTables)

#include "tst_VirtualTables.moc"
