// Reads dictionaries of real surveys. They are kept apart from the sources: TESSEL_CORPUS names the
// folder whose sub-folders "cspro" (text form) and "cspro-json" (JSON form) hold them.
#include <model_Tessel/CSProDataImport.h>
#include <model_Tessel/CSProValueSet.h>
#include <model_Tessel/ErrorManager.h>

#include <QDir>
#include <QFile>
#include <QHash>
#include <QLoggingCategory>
#include <QMap>
#include <QSet>
#include <QtTest>

#include <algorithm>
#include <map>
#include <memory>
#include <vector>

namespace {

constexpr int Integer = TGenericField::IntegerType;
constexpr int Real = TGenericField::RealType;
constexpr int String = TGenericField::StringType;

// A field as a reader of its dictionary expects it.
struct Field {
    QString dictionary;
    QString group;
    QString name;
    QString label;
    int type = 0;
    int start = 0;
    int length = 0;
    int decimals = 0;
    QString minValue;
    QString maxValue;
    QString valueSet; // name of the value set kept; empty: none was
    QStringList codes; // "code;label", as in the dictionary
    int codeCount = -1; // -1: \c codes are all there are, in order; else some of so many
};

struct Section {
    QString header;
    QStringList lines;
};

// An "[Item]" section with the names of the value sets that follow it.
struct ItemSection {
    QString name;
    QString label;
    int start = 1;
    int length = 0;
    int occurrences = 1;
    QStringList valueSets;
};

QDir corpus(const QString& folder)
{
    return QDir(qEnvironmentVariable("TESSEL_CORPUS") + QLatin1Char('/') + folder);
}

QString dictionaryPath(const QString& name)
{
    return corpus(QStringLiteral("cspro")).filePath(name + QStringLiteral(".dcf"));
}

QStringList dictionariesIn(const QString& folder)
{
    return corpus(folder).entryList({ QStringLiteral("*.dcf") }, QDir::Files, QDir::Name);
}

QVector<Section> sectionsOf(const QString& path)
{
    QVector<Section> sections;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return sections;
    QString text = QString::fromUtf8(file.readAll());
    if (text.startsWith(QChar(QChar::ByteOrderMark)))
        text.remove(0, 1);
    const QStringList lines = text.split(QLatin1Char('\n'));
    for (const QString& raw : lines) {
        const QString line = raw.trimmed();
        if (line.startsWith(QLatin1Char('[')))
            sections.append({ line, {} });
        else if (!sections.isEmpty() && !line.isEmpty())
            sections.last().lines.append(line);
    }
    return sections;
}

int countOf(const QVector<Section>& sections, const QString& header)
{
    return static_cast<int>(std::count_if(sections.begin(), sections.end(),
        [&](const Section& section) { return section.header == header; }));
}

// A key stands on the first line that contains it anywhere, and a second "=" makes the line empty.
// That matters here: dozens of real labels hold the words "Name" or "Start" or a "=", and the items
// below them have another name, another column or no label.
QString valueOf(const Section& section, const QString& key)
{
    const QStringList lines = section.lines.filter(key);
    const QStringList parts = lines.value(0).split(QLatin1Char('='));
    return parts.size() == 2 ? parts.at(1) : QString();
}

int numberOf(const Section& section, const QString& key, int defaultValue)
{
    bool isNumber = false;
    const int number = valueOf(section, key).toInt(&isNumber);
    return isNumber ? number : defaultValue;
}

QVector<ItemSection> itemsOf(const QVector<Section>& sections)
{
    QVector<ItemSection> items;
    for (const Section& section : sections) {
        if (section.header == QLatin1String("[Item]")) {
            items.append({ valueOf(section, QStringLiteral("Name")),
                valueOf(section, QStringLiteral("Label")),
                numberOf(section, QStringLiteral("Start"), 1),
                numberOf(section, QStringLiteral("Len"), 0),
                numberOf(section, QStringLiteral("Occurrences"), 1), {} });
        } else if (section.header == QLatin1String("[ValueSet]") && !items.isEmpty()) {
            items.last().valueSets.append(valueOf(section, QStringLiteral("Name")));
        }
    }
    return items;
}

bool losesValueSet(const CSProProblem& problem)
{
    using Kind = CSProProblem::Kind;
    return problem.kind == Kind::ValueSetIgnored || problem.kind == Kind::ValueSetWithoutItem
        || problem.kind == Kind::DecimalCodesDropped || problem.kind == Kind::CodesNotInteger;
}

int countOfProblems(const TCSPro& dictionary, CSProProblem::Kind kind)
{
    const QVector<CSProProblem>& problems = dictionary.problems();
    return static_cast<int>(std::count_if(problems.begin(), problems.end(),
        [kind](const CSProProblem& problem) { return problem.kind == kind; }));
}

int countOfLostValueSets(const TCSPro& dictionary)
{
    const QVector<CSProProblem>& problems = dictionary.problems();
    return static_cast<int>(std::count_if(problems.begin(), problems.end(), losesValueSet));
}

// Occurrences of an item share one value set, which counts once.
QSet<const TCSProValueSet*> keptValueSets(const TCSPro& dictionary)
{
    QSet<const TCSProValueSet*> valueSets;
    for (const TCSProItem* item : qAsConst(*dictionary.items)) {
        for (const TCSProValueSet* valueSet : qAsConst(*item->valueSets))
            valueSets.insert(valueSet);
    }
    return valueSets;
}

QStringList codesOf(const TCSProValueSet& valueSet)
{
    QStringList codes;
    for (const TValueSetItem* entry : qAsConst(*valueSet.items))
        codes.append(entry->code + QLatin1Char(';') + entry->label);
    return codes;
}

// Value labels of a field with exactly these codes.
QString valueLabelsOf(const QStringList& codes)
{
    QString labels;
    for (const QString& code : codes) {
        const int end = code.indexOf(QLatin1Char(';'));
        labels += code.left(end) + QLatin1Char(' ') + code.mid(end + 1) + QLatin1Char('\t');
    }
    return labels;
}

// Name of occurrence \a number of a repeated item.
QString occurrenceName(const QString& name, int number)
{
    return name + QLatin1Char('_') + QChar(number);
}

Field fieldOf(const QStringList& columns)
{
    static const QMap<QString, int> types { { "integer", Integer }, { "real", Real },
        { "string", String } };
    if (columns.size() != 12 || !types.contains(columns.at(4)))
        qFatal("Not a field: %s", qPrintable(columns.join(QLatin1Char('|'))));
    const auto number = [&](int column) { return columns.at(column).toInt(); };
    return { columns.at(0), columns.at(1), columns.at(2), columns.at(3), types.value(columns.at(4)),
        number(5), number(6), number(7), columns.at(8), columns.at(9), columns.at(10), {},
        number(11) };
}

// A line for each field, and after a tab one for each of its codes.
std::vector<Field> expectedFields()
{
    QFile file(QStringLiteral(TESSEL_TEST_DATA "/corpus_fields.txt"));
    if (!file.open(QIODevice::ReadOnly))
        qFatal("The expected fields cannot be read");
    std::vector<Field> fields;
    const QStringList lines = QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'));
    for (const QString& line : lines) {
        if (line.startsWith(QLatin1Char('\t')))
            fields.back().codes.append(line.mid(1));
        else if (!line.isEmpty() && !line.startsWith(QLatin1Char('#')))
            fields.push_back(fieldOf(line.split(QLatin1Char('\t'))));
    }
    return fields;
}

} // namespace

Q_DECLARE_METATYPE(Field)

class tst_CSProCorpus : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();

    void textDictionary_data();
    void textDictionary();
    void jsonDictionary_data();
    void jsonDictionary();

    void counts_data();
    void counts();
    void fields_data();
    void fields();
    void occurrences_data();
    void occurrences();
    void quotedCodesWithBlanks_data();
    void quotedCodesWithBlanks();
    void problems_data();
    void problems();

private:
    TCSProDataImport* load(const QString& path);

    std::map<QString, std::unique_ptr<TCSProDataImport>> m_importers;
    QHash<QString, int> m_questions; // how often the decimal question was put, by path
};

void tst_CSProCorpus::initTestCase()
{
    QLoggingCategory::setFilterRules(QStringLiteral("default.debug=false"));
    if (qEnvironmentVariableIsEmpty("TESSEL_CORPUS"))
        QSKIP("TESSEL_CORPUS does not name a folder of real dictionaries");
    QVERIFY(!dictionariesIn(QStringLiteral("cspro")).isEmpty());
    QVERIFY(!dictionariesIn(QStringLiteral("cspro-json")).isEmpty());
}

// Null when the load ended in an error; every dictionary is loaded once.
TCSProDataImport* tst_CSProCorpus::load(const QString& path)
{
    std::unique_ptr<TCSProDataImport>& known = m_importers[path];
    if (known)
        return known.get();
    auto importer = std::make_unique<TCSProDataImport>(path);
    importer->setTextCodec(QByteArrayLiteral("UTF-8"));
    importer->setDecimalQuestion([this, path](const CSProProblem&) {
        ++m_questions[path];
        return static_cast<int>(QMessageBox::No);
    });
    try {
        importer->openFile();
    } catch (OxErrorManager* error) {
        delete error;
        return nullptr;
    }
    known = std::move(importer);
    return known.get();
}

void tst_CSProCorpus::textDictionary_data()
{
    QTest::addColumn<QString>("path");
    const QStringList names = dictionariesIn(QStringLiteral("cspro"));
    for (const QString& name : names) {
        QTest::newRow(qPrintable(name)) << corpus(QStringLiteral("cspro")).filePath(name);
    }
}

// What the importer makes of a dictionary agrees with a plain count of its sections.
void tst_CSProCorpus::textDictionary()
{
    QFETCH(QString, path);
    TCSProDataImport* importer = load(path);
    QVERIFY(importer);
    TCSPro& dictionary = *importer->dictionary;
    const QVector<Section> sections = sectionsOf(path);
    const QVector<ItemSection> items = itemsOf(sections);

    const int recordCount = countOf(sections, QStringLiteral("[Record]"));
    QVERIFY(recordCount > 0);
    QCOMPARE(dictionary.getRecordsCount(), recordCount);
    QCOMPARE(importer->getGroupCount(), recordCount);

    int fieldCount = 0;
    QHash<const TCSProValueSet*, int> itemOfValueSet;
    for (int number = 0; number < items.size(); ++number) {
        const ItemSection& item = items.at(number);
        QVERIFY(item.occurrences > 0);
        for (int occurrence = 1; occurrence <= item.occurrences; ++occurrence, ++fieldCount) {
            const auto* field = dynamic_cast<const TCSProVariable*>(importer->getField(fieldCount));
            QVERIFY2(field, qPrintable(item.name));
            QCOMPARE(field->name,
                item.occurrences == 1 ? item.name : occurrenceName(item.name, occurrence));
            QCOMPARE(field->label, item.label);
            QCOMPARE(field->start, item.start + (occurrence - 1) * item.length);
            QCOMPARE(field->length, item.length);
            QVERIFY2(field->start > 0, qPrintable(item.name));
            QVERIFY2(field->length > 0, qPrintable(item.name));

            QVERIFY(field->item);
            QCOMPARE(field->item, dictionary.getItem(fieldCount));
            QVERIFY(field->item->getCount() <= 1);
            if (field->item->getHasValueSet()) {
                const TCSProValueSet* valueSet = field->item->getValueSet(0);
                QVERIFY2(item.valueSets.contains(valueSet->name), qPrintable(valueSet->name));
                QCOMPARE(itemOfValueSet.value(valueSet, number), number);
                itemOfValueSet.insert(valueSet, number);
                QCOMPARE(valueSet->isNumeric, field->item->isAlpha == 0);
            }
        }
    }
    QCOMPARE(dictionary.getItemsCount(), fieldCount);
    QCOMPARE(importer->fields->size(), fieldCount);

    // A value set is kept or listed as a problem, whether it has values of its own or a link only.
    QCOMPARE(keptValueSets(dictionary).size() + countOfLostValueSets(dictionary),
        countOf(sections, QStringLiteral("[ValueSet]")));
    QCOMPARE(m_questions.value(path),
        countOfProblems(dictionary, CSProProblem::Kind::DecimalCodesDropped));
}

void tst_CSProCorpus::jsonDictionary_data()
{
    QTest::addColumn<QString>("path");
    const QStringList names = dictionariesIn(QStringLiteral("cspro-json"));
    for (const QString& name : names)
        QTest::newRow(qPrintable(name)) << corpus(QStringLiteral("cspro-json")).filePath(name);
}

// The JSON form has no section headers, so such a file reads as an empty dictionary.
void tst_CSProCorpus::jsonDictionary()
{
    QFETCH(QString, path);
    TCSProDataImport* importer = load(path);
    QVERIFY(importer);
    QCOMPARE(importer->dictionary->getRecordsCount(), 0);
    QCOMPARE(importer->dictionary->getItemsCount(), 0);
    QCOMPARE(importer->dictionary->name, QString());
    QCOMPARE(importer->dictionary->problems().size(), 0);
    QCOMPARE(importer->getGroupCount(), 0);
    QCOMPARE(importer->fields->size(), 0);
    QCOMPARE(m_questions.value(path), 0);
}

void tst_CSProCorpus::counts_data()
{
    QTest::addColumn<QString>("version");
    QTest::addColumn<QString>("label");
    QTest::addColumn<int>("recordTypeStart");
    QTest::addColumn<int>("recordTypeLen");
    QTest::addColumn<QStringList>("groups");
    QTest::addColumn<int>("identification"); // items common to all records
    QTest::addColumn<int>("items");
    QTest::addColumn<int>("fields");
    QTest::addColumn<int>("valueSets");
    QTest::addColumn<int>("kept");

    // Blank codes and ranges without a label cost 34 of the sets, second sets the other two.
    QTest::newRow("popstan-census") << "CSPro 6.1"
                                    << "Popstan Census" << 1 << 1
                                    << QStringList { "PERSON=1", "HOUSING=2", "INTERVIEW_RECORD=3" }
                                    << 8 << 50 << 50 << 48 << 12;
    QTest::newRow("dhs-hivanonym") << "CSPro 2.6"
                                   << "HIV dictionary for preliminary report tables" << 0 << 0
                                   << QStringList { "HIVRECORD=" } << 1 << 16 << 16 << 13 << 6;
    QTest::newRow("three-levels") << "CSPro 7.4"
                                  << "household" << 1 << 1
                                  << QStringList { "COMPOUND_INFO_REC=2", "HOUSING_UNIT_REC=3",
                                         "HOUSEHOLD_REC=1", "PERSON_REC=4" }
                                  << 8 << 60 << 67 << 46 << 15;
    QTest::newRow("kenya-census-main")
        << "CSPro 7.6"
        << "Census main form" << 1 << 2
        << QStringList { "POP_REC=70", "HOUSING_REC=11", "DEATH_REC=12", "EMIGRANTS_DATA=13",
               "MISCELLENEOUS_DATA=14", "MAIN_AREA_RECORD=77", "SHORT_TOTALS=71", "TOWNS=80",
               "WEALTH_INDEX_CALCULATED=90" }
        << 14 << 388 << 388 << 747 << 281;
    QTest::newRow("barbados-census2020")
        << "CSPro 7.3"
        << "Census2020" << 1 << 1
        << QStringList { "HOUSING=1", "EMIGRATION=2", "POPULATION=3", "METADATA=4" } << 5 << 219
        << 219 << 159 << 144;
    QTest::newRow("ethiopia-household")
        << "CSPro 6.3"
        << "Household" << 1 << 1
        << QStringList { "INDIVIDUAL=I", "REMITTANCE=R", "NO_OF_DEATH=m", "MORTALITY=M",
               "HOUSING=H", "AXULLARY=A" }
        << 11 << 123 << 161 << 119 << 79;
    QTest::newRow("ipums") << "CSPro 5.0"
                           << "IPUMS Data" << 1 << 1
                           << QStringList { "HOUSING_REC=H", "POPULATION_REC=P" } << 4 << 107 << 107
                           << 92 << 92;
    QTest::newRow("pilot-household-fr")
        << "CSPro 7.2"
        << "DENOMBREMENT" << 1 << 2
        << QStringList { "LOGEMENT=AA", "LISTING=BB", "INDIVIDU=CC", "EMIGRATION=DD",
               "MORTALITE=EE", "CONTROLE_QUALITE=FF" }
        << 14 << 264 << 264 << 307 << 149;
    QTest::newRow("simple-capi") << "CSPro 6.3"
                                 << "Simple CAPI Dictionary" << 1 << 1
                                 << QStringList { "PERSON_REC=P" } << 1 << 9 << 9 << 7 << 6;
    QTest::newRow("enquete-menage-3")
        << "CSPro 6.0"
        << "enquete-menage" << 1 << 1 << QStringList { "HABITATION=H", "POPULATION=P" } << 4 << 23
        << 23 << 17 << 17;
    QTest::newRow("cpi") << "CSPro 7.5"
                         << "CPI" << 1 << 1 << QStringList { "COVERPAGE_REC=1", "PROD_REC=2" } << 7
                         << 23 << 23 << 6 << 0;
    QTest::newRow("dhs-afreq") << "CSPro 4.0"
                               << "vfreq" << 0 << 0 << QStringList { "AFREQ_REC=" } << 1 << 11
                               << 113 << 3 << 3;
    QTest::newRow("dhs-testlog") << "CSPro 7.7"
                                 << "testlog" << 0 << 0 << QStringList { "TESTLOG_REC=" } << 1 << 33
                                 << 42 << 21 << 7;
    QTest::newRow("dhs-wrkfact") << "CSPro 2.6"
                                 << "Working dictionary for factors" << 2 << 2
                                 << QStringList { "WS1=AA" } << 1 << 6 << 6 << 5 << 4;
    QTest::newRow("idb-population") << "CSPro 7.0"
                                    << "IDB Population Data" << 1 << 1
                                    << QStringList { "COUNTRY_METADATA_REC=1",
                                           "MIDYEAR_POPULATION_REC=2", "AGESEX_POPULATION_REC=3" }
                                    << 1 << 8 << 108 << 1 << 1;
    QTest::newRow("feature-showcase-6.2")
        << "CSPro 6.2"
        << "CSPro 6.2.0 New Features Showcase|CSPro 6.2.0 Nouvelles fonctionnalités Showcase|"
           "CSPROは、新機能のショーケースを6.2.0"
        << 1 << 1 << QStringList { "SHOWCASE_REC=1" } << 1 << 8 << 8 << 7 << 6;
    QTest::newRow("tajikistan-household")
        << "CSPro 7.7"
        << "DHS-8 Core 06-19-2020 - Tajikistan DHS 2023" << 9 << 3
        << QStringList { "QHSECOVER=H00", "QHSEC01X=H1X", "QHSEC01=H01", "QHSEC02=H02",
               "QHSEC04=H04", "QHSECCD=HCD", "QBSECOVER=B00", "QBSEC01=B01", "QBSEC02=B02" }
        << 2 << 323 << 327 << 457 << 170;
    // A header without record-type columns counts as one character in the first column.
    QTest::newRow("tiny-test-dict")
        << "CSPro 7.6"
        << "Test Dictionary" << 1 << 1 << QStringList { "POP_REC=70" } << 0 << 2 << 2 << 1 << 1;
}

void tst_CSProCorpus::counts()
{
    TCSProDataImport* importer = load(dictionaryPath(QTest::currentDataTag()));
    QVERIFY(importer);
    const TCSPro& dictionary = *importer->dictionary;

    QTEST(dictionary.version, "version");
    QTEST(dictionary.label, "label");
    QTEST(importer->getRecordTypeStart(), "recordTypeStart");
    QTEST(importer->getRecordTypeSize(), "recordTypeLen");
    QTEST(*importer->groups, "groups");
    QFETCH(QStringList, groups);
    QCOMPARE(dictionary.records->size(), groups.size());

    int identification = 0;
    int items = 0;
    for (const TCSProItem* item : qAsConst(*dictionary.items)) {
        if (item->occurrence > 1)
            continue;
        ++items;
        if (item->record == dictionary.commonRecord)
            ++identification;
    }
    QTEST(identification, "identification");
    QTEST(items, "items");
    QTEST(importer->fields->size(), "fields");
    QTEST(keptValueSets(dictionary).size(), "kept");
    QTEST(keptValueSets(dictionary).size() + countOfLostValueSets(dictionary), "valueSets");
}

void tst_CSProCorpus::fields_data()
{
    QTest::addColumn<QString>("dictionary");
    QTest::addColumn<Field>("expected");
    const std::vector<Field> fields = expectedFields();
    QCOMPARE(fields.size(), std::size_t(147));
    for (const Field& field : fields) {
        QTest::newRow(qPrintable(field.dictionary + QLatin1String(": ") + field.name))
            << field.dictionary << field;
    }
}

void tst_CSProCorpus::fields()
{
    QFETCH(QString, dictionary);
    QFETCH(Field, expected);
    TCSProDataImport* importer = load(dictionaryPath(dictionary));
    QVERIFY(importer);
    auto* field = dynamic_cast<TCSProVariable*>(importer->fieldByName(expected.name));
    QVERIFY(field);

    QCOMPARE(field->getGroup(), expected.group);
    QCOMPARE(field->label, expected.label);
    QCOMPARE(field->fieldType, expected.type);
    QCOMPARE(field->start, expected.start);
    QCOMPARE(field->length, expected.length);
    QString decimals; // of a real field one character, whose code is the number
    if (expected.decimals > 0)
        decimals = QChar(expected.decimals);
    else if (expected.type != String)
        decimals = QLatin1Char('0');
    QCOMPARE(field->decimals, decimals);
    QCOMPARE(field->item->decimal, expected.decimals);
    QCOMPARE(field->minValue, expected.minValue);
    QCOMPARE(field->maxValue, expected.maxValue);
    // Real dictionaries write "MISSING,Special" without a blank, which is not recognised.
    QCOMPARE(field->missingValue, QString());
    QCOMPARE(field->notApplicableValue, QString());

    QCOMPARE(field->item->getHasValueSet(), !expected.valueSet.isEmpty());
    if (expected.valueSet.isEmpty()) {
        QCOMPARE(field->valueLabels, QString());
        return;
    }
    QCOMPARE(field->item->getValueSet(0)->name, expected.valueSet);
    const QStringList codes = codesOf(*field->item->getValueSet(0));
    if (expected.codeCount < 0) {
        QCOMPARE(codes, expected.codes);
        QCOMPARE(field->valueLabels, valueLabelsOf(expected.codes));
        return;
    }
    QCOMPARE(codes.size(), expected.codeCount);
    for (const QString& code : qAsConst(expected.codes)) {
        QVERIFY2(codes.contains(code), qPrintable(code));
        QVERIFY2(field->valueLabels.contains(valueLabelsOf({ code })), qPrintable(code));
    }
}

void tst_CSProCorpus::occurrences_data()
{
    QTest::addColumn<QString>("dictionary");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("group");
    QTest::addColumn<QString>("label");
    QTest::addColumn<int>("type");
    QTest::addColumn<int>("length");
    QTest::addColumn<int>("count");
    QTest::addColumn<int>("firstIndex"); // number of fields before the first occurrence
    QTest::addColumn<int>("firstStart");
    QTest::addColumn<int>("lastStart");
    QTest::addColumn<QString>("valueSet");
    QTest::addColumn<int>("codeCount");

    QTest::newRow("housing units") << "three-levels"
                                   << "HOUSING_UNITS"
                                   << "COMPOUND_INFO_REC"
                                   << "Number of housing unit types" << Integer << 2 << 5 << 8 << 48
                                   << 56 << "HOUSING_UNITS_VS1" << 2;
    QTest::newRow("repeated subitem")
        << "three-levels"
        << "REPEATING_SUBITEM"
        << "PERSON_REC"
        << "Repeating subitem" << Integer << 1 << 3 << 58 << 154 << 156 << "" << 0;
    QTest::newRow("repeated parent")
        << "three-levels"
        << "REPEATING_PARENT"
        << "PERSON_REC"
        << "Repeating parent" << String << 2 << 2 << 62 << 158 << 160 << "" << 0;
    QTest::newRow("countries of residence")
        << "ethiopia-household"
        << "R802"
        << "REMITTANCE"
        << "802 Country of residence|802 በየትኛው ሀገር ይኖራሉ" << Integer << 3 << 20 << 80 << 32 << 89
        << "R802_VS1" << 238;
    QTest::newRow("countries of origin")
        << "ethiopia-household"
        << "R804"
        << "REMITTANCE"
        << "804 Country of origin|804 ገንዘቡ ወይም እቃው የተላከው ከየትኛው ሀገር ነው" << Integer << 3 << 20 << 101
        << 93 << 150 << "R804_VS1" << 239;
    // Where there is one record type, no field has a group.
    QTest::newRow("frequency table")
        << "dhs-afreq"
        << "AFREQS"
        << ""
        << "Frequency table" << String << 77 << 103 << 5 << 96 << 7950 << "" << 0;
    QTest::newRow("populations by age")
        << "idb-population"
        << "AGESEX_POPULATION"
        << "AGESEX_POPULATION_REC"
        << "Age/Sex Population" << Integer << 8 << 101 << 7 << 9 << 809 << "" << 0;
    QTest::newRow("groups of plates") << "dhs-testlog"
                                      << "LTEST"
                                      << ""
                                      << "Grouips of a to 10 plates for a sample" << String << 88
                                      << 10 << 7 << 56 << 848 << "" << 0;
    QTest::newRow("visits") << "tajikistan-household"
                            << "QHCONTVISIT"
                            << "QHSECOVER"
                            << "Group to control visits" << String << 14 << 5 << 7 << 95 << 151
                            << "" << 0;
}

// Every occurrence is a field of its own, beside the one before it; all share one value set.
void tst_CSProCorpus::occurrences()
{
    QFETCH(QString, dictionary);
    QFETCH(QString, name);
    QFETCH(int, count);
    QFETCH(int, firstIndex);
    QFETCH(int, firstStart);
    QFETCH(int, length);
    TCSProDataImport* importer = load(dictionaryPath(dictionary));
    QVERIFY(importer);

    const auto* first = dynamic_cast<TCSProVariable*>(importer->getField(firstIndex));
    QVERIFY(first);
    for (int number = 1; number <= count; ++number) {
        auto* field = dynamic_cast<TCSProVariable*>(importer->getField(firstIndex + number - 1));
        QVERIFY(field);
        QCOMPARE(field->name, occurrenceName(name, number));
        QTEST(field->getGroup(), "group");
        QTEST(field->label, "label");
        QTEST(field->fieldType, "type");
        QTEST(field->length, "length");
        QCOMPARE(field->start, firstStart + (number - 1) * length);
        QCOMPARE(field->item->firstOccurrenceIndex, firstIndex);
        QVERIFY(!field->item->isZeroFill);
        QCOMPARE(*field->item->valueSets, *first->item->valueSets);
        QCOMPARE(field->valueLabels, first->valueLabels);
    }
    QTEST(importer->getField(firstIndex + count - 1)->start, "lastStart");
    QVERIFY(!importer->fieldByName(name));
    QVERIFY(!importer->fieldByName(occurrenceName(name, count + 1)));

    QFETCH(QString, valueSet);
    QCOMPARE(first->item->getHasValueSet(), !valueSet.isEmpty());
    if (!valueSet.isEmpty()) {
        QCOMPARE(first->item->getValueSet(0)->name, valueSet);
        QTEST(first->item->getValueSet(0)->getCount(), "codeCount");
    }
}

void tst_CSProCorpus::quotedCodesWithBlanks_data()
{
    QTest::addColumn<QString>("dictionary");
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("start");
    QTest::addColumn<int>("length");
    QTest::addColumn<int>("values"); // lines of the value set
    QTest::addColumn<QStringList>(
        "codes"); // those of the first, of some other and of the last line

    QTest::newRow("water treatment")
        << "pilot-household-fr"
        << "P50" << 526 << 8 << 8
        << QStringList { "A;La faire bouillir",
               "D;Utiliser un filtre (céramique, sable, composite, etc.)", "E;Désinfection solaire",
               "H       ;Autre (à préciser)" };
    QTest::newRow("devices") << "pilot-household-fr"
                             << "P55C" << 897 << 12 << 12
                             << QStringList { "A;Radio", "B;Télévision",
                                    "I;Antenne parabolique /Câble",
                                    "L           ;Autres à préciser" };
    QTest::newRow("appliances") << "barbados-census2020"
                                << "H23BI" << 776 << 25 << 22
                                << QStringList { "A;Air Conditioner", "L;DVD Player\\VCR",
                                       "V                        ;Home Security Equipment" };
    QTest::newRow("languages spoken")
        << "simple-capi"
        << "LANGUAGES_SPOKEN" << 62 << 28 << 28
        << QStringList { "A;Arabic (العربية)", "K;Javanese (ꦧꦱꦗꦮ)", "0;Wu (吳語)",
               "1                           ;Other Language" };
    QTest::newRow("fuels")
        << "ethiopia-household"
        << "H914" << 43 << 11 << 9
        << QStringList { "A;Electricity|ኤሌክትሪክ|ኤሌክትሪክ ካብ ውለቀ ቆፃሪ|Elektirikii|Koronto /meter u "
                         "gaar ah|Elektiriik",
               "I          ;they donot use at all|ምንም አይመቀሞም|||waxba dhaman loma isticmaalo" };
}

// A letter padded with blanks to the item's width is cut at every blank, which leaves an entry
// without a code for each of them; the last line of a set alone keeps its blanks.
void tst_CSProCorpus::quotedCodesWithBlanks()
{
    QFETCH(QString, dictionary);
    QFETCH(QString, name);
    QFETCH(QStringList, codes);
    QFETCH(int, length);
    QFETCH(int, values);
    TCSProDataImport* importer = load(dictionaryPath(dictionary));
    QVERIFY(importer);
    const auto* field = dynamic_cast<TCSProVariable*>(importer->fieldByName(name));
    QVERIFY(field);

    QCOMPARE(field->fieldType, String);
    QTEST(field->start, "start");
    QTEST(field->length, "length");
    QCOMPARE(field->minValue, QStringLiteral("0"));
    QCOMPARE(field->maxValue, QString());
    QVERIFY(field->item->getHasValueSet());
    QStringList entries = codesOf(*field->item->getValueSet(0));
    for (const QString& code : qAsConst(codes)) {
        QCOMPARE(entries.count(code), 1);
        QVERIFY2(field->valueLabels.contains(valueLabelsOf({ code })), qPrintable(code));
    }
    const int blanks = (values - 1) * (length - 1);
    QCOMPARE(entries.size(), values + blanks);
    QCOMPARE(entries.filter(QRegularExpression(QStringLiteral("^;"))).size(), blanks);
}

void tst_CSProCorpus::problems_data()
{
    using Kind = CSProProblem::Kind;
    QTest::addColumn<int>("ignored");
    QTest::addColumn<int>("notInteger");
    QTest::addColumn<int>("decimal");
    QTest::addColumn<int>("kind"); // of one problem, which the next columns tell of
    QTest::addColumn<int>("line");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("valueSet");
    QTest::addColumn<QString>("text");

    QTest::newRow("popstan-census")
        << 2 << 34 << 0 << int(Kind::CodesNotInteger) << 50 << "DISTRICT"
        << "DIST_VS1"
        << ":18";
    QTest::newRow("dhs-hivanonym") << 0 << 7 << 0 << int(Kind::CodesNotInteger) << 229 << "HIVTESTR"
                                   << "HIVTESTR_VS1"
                                   << " ";
    QTest::newRow("three-levels") << 2 << 29 << 0 << int(Kind::ValueSetIgnored) << 560 << "P04_AGE"
                                  << "P04_AGE_VS3"
                                  << "";
    QTest::newRow("kenya-census-main")
        << 433 << 25 << 8 << int(Kind::CodesNotInteger) << 12562 << "HH_START_INTERVIEW_TIME"
        << "HH_START_INTERVIEW_TIME_VS1"
        << "9999999999";
    QTest::newRow("barbados-census2020")
        << 13 << 0 << 2 << int(Kind::DecimalCodesDropped) << 3509 << "LATITUDE"
        << "LATITUDE_VS1"
        << "90.000000000";
    QTest::newRow("ethiopia-household")
        << 35 << 5 << 0 << int(Kind::CodesNotInteger) << 2977 << "H903"
        << "H903_VS1"
        << ":50";
    QTest::newRow("pilot-household-fr")
        << 143 << 15 << 0 << int(Kind::CodesNotInteger) << 3208 << "TAILMEN"
        << "TAILMEN_VS1"
        << "   ";
    QTest::newRow("simple-capi") << 1 << 0 << 0 << int(Kind::ValueSetIgnored) << 59
                                 << "RELATIONSHIP"
                                 << "RELATIONSHIP_FEMALE_VS"
                                 << "";
    QTest::newRow("cpi") << 0 << 3 << 3 << int(Kind::DecimalCodesDropped) << 184 << "PROD_PRICE"
                         << "PROD_PRICE_VS1"
                         << "1.00";
}

// Every value set that was lost is told of, with its line and the code that lost it.
void tst_CSProCorpus::problems()
{
    using Kind = CSProProblem::Kind;
    TCSProDataImport* importer = load(dictionaryPath(QTest::currentDataTag()));
    QVERIFY(importer);
    const TCSPro& dictionary = *importer->dictionary;
    QTEST(countOfProblems(dictionary, Kind::ValueSetIgnored), "ignored");
    QTEST(countOfProblems(dictionary, Kind::CodesNotInteger), "notInteger");
    QTEST(countOfProblems(dictionary, Kind::DecimalCodesDropped), "decimal");

    QFETCH(int, line);
    const QVector<CSProProblem>& list = dictionary.problems();
    const auto problem = std::find_if(list.begin(), list.end(),
        [line](const CSProProblem& candidate) { return candidate.line == line; });
    QVERIFY(problem != list.end());
    QTEST(int(problem->kind), "kind");
    QTEST(problem->name, "name");
    QTEST(problem->valueSet, "valueSet");
    QTEST(problem->text, "text");
}

QTEST_GUILESS_MAIN(tst_CSProCorpus)
#include "tst_CSProCorpus.moc"
