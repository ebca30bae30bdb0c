// Reads dictionaries of real surveys. They are kept apart from the sources: TESSEL_CORPUS names the
// folder whose sub-folders "cspro" (text form) and "cspro-json" (JSON form) hold them.
#include <model_Tessel/CSProDataImport.h>
#include <model_Tessel/CSProValueSet.h>
#include <model_Tessel/ErrorManager.h>

#include <QDir>
#include <QFile>
#include <QHash>
#include <QLoggingCategory>
#include <QSet>
#include <QtTest>

#include <algorithm>
#include <map>
#include <memory>

namespace {

constexpr int Integer = TGenericField::IntegerType;
constexpr int Real = TGenericField::RealType;
constexpr int String = TGenericField::StringType;

// A field as a reader of its dictionary expects it.
struct Field {
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
    const auto row = [](const char* dictionary, const Field& field) {
        const QString tag = QLatin1String(dictionary) + QLatin1String(": ") + field.name;
        QTest::newRow(qPrintable(tag)) << QString::fromLatin1(dictionary) << field;
    };

    const char* dictionary = "popstan-census";
    row(dictionary,
        { "Common", "PROVINCE", "Province", Integer, 2, 2, 0, "1", "15", "PROV_VS1",
            { "1;Artesia", "2;Copal", "3;Dari", "4;Eris", "5;Girda", "6;Hali", "7;Kerac",
                "8;Lacuna", "9;Laya", "10;Lira", "11;Matanga", "12;Patan", "13;Rift", "14;Terra",
                "15;Tumar" } });
    // The set 1:18 is lost: the upper bound of a range without a label is no number.
    row(dictionary, { "Common", "DISTRICT", "District", Integer, 4, 2, 0, "0", "99", "", {} });
    row(dictionary,
        { "Common", "BUILDING", "Building number", Integer, 13, 3, 0, "1", "999", "BUILDING_VS1",
            { "1;Building", "998;Building", "999;Homeless" } });
    row(dictionary,
        { "PERSON", "P02_REL", "Relationship", Integer, 22, 1, 0, "1", "9", "P02_REL_VS1",
            { "1;Head", "2;Spouse", "3;Child", "4;Parent", "5;Other relative", "6;Nonrelative",
                "9;Not Reported" } });
    row(dictionary,
        { "PERSON", "P03_SEX", "Sex", Integer, 23, 1, 0, "1", "2", "P03_SEX_VS1",
            { "1;Male", "2;Female" } });
    // The first of the four sets of ages, 0:98, is lost, so the second one is kept, the others not.
    row(dictionary,
        { "PERSON", "P04_AGE", "Age", Integer, 24, 2, 0, "0", "98", "P04_AGE_VS2",
            { "0;0 to 4 years", "4;0 to 4 years", "45;45 to 49 years", "95;95 years and over",
                "98;95 years and over" },
            40 });
    row(dictionary,
        { "PERSON", "P05_MS", "Marital status", Integer, 26, 1, 0, "1", "5", "P05_MS_VS1",
            { "1;Married", "2;Divorced", "3;Separated", "4;Widowed", "5;Never Married" } });
    row(dictionary,
        { "PERSON", "P07_BIRTH", "Place of birth", Integer, 28, 2, 0, "0", "84", "P07_BIRTH_VS1",
            { "0;Not Reported", "1;Popstan", "15;Popstan", "21;Endar", "22;Victoria", "23;Africa",
                "27;Africa", "40;Middle East", "44;Middle East", "50;Asia", "53;Asia", "70;Europe",
                "74;Europe", "80;Americas", "84;Americas" } });
    // The blank code for "Not Applicable" loses the whole set, as that mark itself is not read.
    row(dictionary,
        { "PERSON", "P09_ATTEND", "Attending school", Integer, 32, 1, 0, "0", "9", "", {} });
    row(dictionary,
        { "PERSON", "P15A_OCC", "Occupation (major groups)", Integer, 39, 1, 0, "0", "9", "", {} });
    row(dictionary,
        { "HOUSING", "H01_TYPE", "Type of housing", Integer, 20, 1, 0, "1", "9", "H01_TYPE_VS1",
            { "1;Single family", "2;Multi-family", "3;Improvised", "4;Mobile",
                "5;Collective quarters", "6;Homeless (none)", "9;Not reported" } });
    row(dictionary,
        { "HOUSING", "H07_RENT", "Amount of rent paid", Integer, 27, 3, 0, "0", "999", "", {} });
    row(dictionary,
        { "HOUSING", "H13_PERSONS", "Number of persons in the household", Integer, 35, 4, 0, "0",
            "9999", "H13_PERSONS_VS1",
            { "0;None", "1;1 person", "2;2 persons", "3;3 persons", "4;4 persons", "5;5 persons",
                "6;6 persons", "7;7 persons", "8;8 persons", "9;9 persons", "10;10+ persons",
                "9999;10+ persons" } });
    row(dictionary,
        { "INTERVIEW_RECORD", "INTERVIEW_DATE", "Interview date", Integer, 20, 8, 0, "0",
            "99999999", "", {} });
    row(dictionary,
        { "INTERVIEW_RECORD", "INTERVIEW_MONTH", "Interview month", Integer, 24, 2, 0, "0", "99",
            "", {} });
    row(dictionary,
        { "INTERVIEW_RECORD", "ENUMERATOR", "Enumerator", String, 28, 20, 0, "", "", "", {} });
    row(dictionary,
        { "INTERVIEW_RECORD", "INTERVIEW_RESULT", "Interview result", Integer, 48, 1, 0, "1", "6",
            "INTERVIEW_RESULT_VS1",
            { "1;Completed", "2;No household member at home", "3;Dwelling vacant",
                "4;Dwelling destroyed", "5;Refused", "6;Interview incomplete" } });

    dictionary = "dhs-hivanonym";
    row(dictionary,
        { "", "HIVSEQNO", "Sequential number (ID)", Integer, 1, 6, 0, "0", "999999", "", {} });
    row(dictionary,
        { "", "HIVSEX", "Sex of household member", Integer, 7, 1, 0, "1", "2", "HIVSEX_VS1",
            { "1;Male", "2;Female" } });
    row(dictionary,
        { "", "HIVAGE18", "Age 15-17, 18+", Integer, 10, 1, 0, "1", "2", "HIVAGE18_VS1",
            { "1;15-17", "2;18+" } });
    row(dictionary,
        { "", "HIVLINEP", "Line number of parent/responsible", Integer, 11, 2, 0, "0", "99", "",
            {} });
    // "Name=MISSING,Special" is not recognised, so 9 is an ordinary code and no missing value.
    row(dictionary,
        { "", "HIVCONS", "Consent statement from respondent/parent/caretaker", Integer, 14, 1, 0,
            "1", "9", "HIVCONS_VS1",
            { "1;Granted", "2;Parent/other responsible adult resfused", "3;Respondent refused",
                "9;Missing" } });
    row(dictionary,
        { "", "HIVRES", "Sample result", Integer, 15, 1, 0, "1", "9", "HIVRES_VS1",
            { "1;Blood taken", "2;Not present", "3;Refused", "6;Other", "9;Missing" } });
    row(dictionary,
        { "", "HIVTYPE", "Urban/rural", Integer, 17, 1, 0, "1", "2", "HIVTYPE_VS1",
            { "1;Urban", "2;Rural" } });
    row(dictionary, { "", "HIVBARC", "Sample bar code", String, 22, 5, 0, "", "", "", {} });
    row(dictionary, { "", "HIVWEIGH", "HIV weight", Integer, 28, 8, 0, "0", "99999999", "", {} });
    // Its nine codes go with the blank one on the last line.
    row(dictionary, { "", "HIVTESTR", "HIV test result", Integer, 36, 1, 0, "0", "9", "", {} });

    dictionary = "three-levels";
    row(dictionary, { "Common", "VILLAGE", "Village", String, 6, 3, 0, "", "", "", {} });
    // The identification of the second level is common to all records as well.
    row(dictionary,
        { "Common", "HOUSING_UNIT_NUMBER", "Housing unit number", Integer, 15, 2, 0, "0", "99", "",
            {} });
    row(dictionary,
        { "Common", "HOUSEHOLD_NUMBER", "Household number", Integer, 17, 1, 0, "0", "9", "", {} });
    row(dictionary,
        { "COMPOUND_INFO_REC", "LATITUDE", "Latitude", Real, 18, 15, 5, "0", "99999999999999", "",
            {} });
    row(dictionary,
        { "HOUSING_UNIT_REC", "HU01_TYPE", "Type of housing", Integer, 18, 1, 0, "1", "9",
            "HU01_TYPE_VS1",
            { "1;Single family", "2;Multi-family", "3;Improvised", "4;Mobile",
                "5;Collective quarters", "6;Homeless (none)", "9;Not reported" } });
    row(dictionary,
        { "HOUSEHOLD_REC", "H06_TENURE", "Tenure", Integer, 18, 1, 0, "0", "9", "", {} });
    row(dictionary,
        { "PERSON_REC", "FIRST_NAME", "First name", String, 18, 50, 0, "", "", "", {} });
    // Both special codes, 9 and 8, become ordinary ones.
    row(dictionary,
        { "PERSON_REC", "P03_SEX", "Sex", Integer, 119, 1, 0, "1", "9", "P03_SEX_VS1",
            { "1;Male", "2;Female", "8;Refused", "9;Mssing" } });
    row(dictionary,
        { "PERSON_REC", "P04_DOB", "Date of birth", Integer, 120, 8, 0, "0", "99999999", "", {} });
    row(dictionary,
        { "PERSON_REC", "P04DOB_YEAR", "Year of birth", Integer, 120, 4, 0, "1896", "9999",
            "P04DOB_YEAR_VS1", { "1896;Known", "2017;Known", "9999;Unknown" } });
    row(dictionary,
        { "PERSON_REC", "P04DOB_DAY", "Day of birth", Integer, 126, 2, 0, "1", "99",
            "P04DOB_DAY_VS1", { "1;Known", "31;Known", "99;Unknown" } });
    row(dictionary,
        { "PERSON_REC", "P06_MOTHER", "Mother living", Integer, 131, 1, 0, "1", "3",
            "P06_MOTHER_VS1", { "1;Yes", "2;No", "3;Don't know" } });
    // A subitem of a repeated item stands once: its columns in the second occurrence are lost.
    row(dictionary, { "PERSON_REC", "SUB_ONE", "sub one", Integer, 158, 1, 0, "0", "9", "", {} });
    row(dictionary,
        { "PERSON_REC", "P25_MORE", "More?", Integer, 162, 1, 0, "1", "2", "P25_MORE_VS1",
            { "1;Yes", "2;No" } });

    dictionary = "kenya-census-main";
    row(dictionary,
        { "Common", "COUNTY", "County", Integer, 3, 2, 0, "1", "47", "COUNTY_VS1",
            { "1;Mombasa", "6;Taita-Taveta", "21;Murang'a", "47;Nairobi City" }, 47 });
    row(dictionary,
        { "Common", "ENUMERATOR_ID", "Enumerator ID", String, 23, 36, 0, "", "", "", {} });
    row(dictionary,
        { "Common", "TYPE_OF_QUESTIONNAIRE", "Type of questionnaire", Integer, 68, 1, 0, "1", "8",
            "TYPE_OF_QUESTIONNAIRE_VS1",
            { "1;Main form", "3;Hotel/Lodge Residents", "4;Hospital In-Patients",
                "5;Prison/Police Cells", "6;Schools/Children homes",
                "7;Travelers and Persons On-Transit", "8;Street Persons/Outdoor Sleepers" } });
    // The name P00 is lost: the label above it contains "Name".
    row(dictionary, { "POP_REC", "P00. Name", "P00. Name", String, 73, 50, 0, "", "", "", {} });
    row(dictionary,
        { "POP_REC", "P10", "P10. Relationship", Integer, 123, 2, 0, "1", "99", "P10_VS3",
            { "1;Head", "2;Spouse", "3;Son/Daughter", "4;Grandchild", "5;Brother/Sister",
                "6;Father/Mother", "7;Nephew/Niece", "8;In-Law", "9;Grandparent",
                "10;Other Relative", "11;Non-relative", "99;DK" } });
    // The notes between the values change nothing.
    row(dictionary,
        { "POP_REC", "P11", "P11. Sex", Integer, 125, 1, 0, "1", "3", "P11_VS1",
            { "1;Male", "2;Female", "3;Intersex" } });
    row(dictionary,
        { "POP_REC", "P12", "P12. Age", Integer, 126, 3, 0, "0", "999", "P12_VS2",
            { "0;0 - 4", "4;0 - 4", "99;95 - 99", "100;100+", "120;100+", "999;Not Stated" }, 43 });
    row(dictionary,
        { "POP_REC", "P49", "P49. Last 7 Days Economic Activity", Integer, 225, 2, 0, "1", "98",
            "P49_VS1",
            { "1; Worked for pay", "4; Apprentice – paid", "8; Volunteer – paid",
                "11; Seeking work – action taken", "19;Too Young to work", "98;Not Stated" },
            20 });
    // The names of the item and of its set are lost: both labels contain "Name".
    row(dictionary,
        { "POP_REC", "P60. Has (Name) registered for Huduma number?",
            "P60. Has (Name) registered for Huduma number?", Integer, 342, 1, 0, "1", "9",
            "P60. Has (Name) registered for Huduma number?", { "1;Yes", "2;No", "9;DK" } });
    // Its first set, 0:15 without a label, gives way to the second one.
    row(dictionary,
        { "HOUSING_REC", "H10", "H10. Live Births Last 12 Months", Integer, 69, 2, 0, "0", "15",
            "H10_VS2",
            { "0;0", "1;1", "2;2", "3;3", "4;4", "5;5", "6;6", "7;7", "8;8", "9;9", "10;10",
                "11;11", "12;12", "13;13", "14;14", "15;15" } });
    // All three sets hold decimals, which the answer No drops.
    row(dictionary,
        { "HOUSING_REC", "H21",
            "H21. What is the area of agriculture holding operated by this household in acres?",
            Real, 77, 10, 3, "0", "999999999", "", {} });
    // The column 337 is lost: the label contains "Start".
    row(dictionary, { "HOUSING_REC", "STARTTIME", "Starttime", String, 1, 8, 0, "", "", "", {} });
    row(dictionary, { "HOUSING_REC", "ENDTIME", "Endtime", String, 345, 8, 0, "", "", "", {} });
    // The set is lost too: its upper bound 9999999999 is no int.
    row(dictionary,
        { "HOUSING_REC", "HH_START_INTERVIEW_TIME", "Start Interview Time", Real, 1, 10, 0, "0",
            "9999999999", "", {} });
    row(dictionary,
        { "HOUSING_REC", "AGE_OF_HH_HEAD", "Age of HH head", Integer, 721, 2, 0, "-1", "99",
            "AGE_OF_HH_HEAD_VS1",
            { "-1;Above 99", "0;Under 25", "24;Under 25", "25;25 - 34", "34;25 - 34", "35;35 - 44",
                "44;35 - 44", "45;45 - 54", "54;45 - 54", "55;55 - 64", "64;55 - 64", "65;65+",
                "99;65+" } });
    row(dictionary,
        { "DEATH_REC", "H12. 1st Name of dead Member", "H12. 1st Name of dead Member", String, 71,
            25, 0, "", "", "", {} });
    row(dictionary,
        { "MISCELLENEOUS_DATA", "MAIN_TRAINING_MODE", "Training Mode", Integer, 70, 1, 0, "0", "1",
            "MAIN_TRAINING_MODE_VS1", { "0;Production Mode", "1;Training Mode" } });
    row(dictionary,
        { "MAIN_AREA_RECORD", "SQUARE_KM", "Square Km.", Real, 69, 15, 6, "0", "99999999999999", "",
            {} });
    row(dictionary,
        { "TOWNS", "TOWN_CODE", "Town code", Integer, 69, 4, 0, "101", "4701", "TOWN_CODE_VS21",
            { "101;Mombasa", "407;Garissa", "1002;Moyale", "4701;Nairobi City" }, 390 });
    row(dictionary,
        { "WEALTH_INDEX_CALCULATED", "CENSUS_WEALTH_QUINTILE", "Wealth quintile", Integer, 84, 1, 0,
            "1", "9", "CENSUS_WEALTH_QUINTILE_VS2",
            { "1;Poorest", "2;Poor", "3;Middle", "4;Rich", "5;Richest", "9;Not Stated" } });

    dictionary = "barbados-census2020";
    row(dictionary,
        { "Common", "PARISH", "Parish", Integer, 2, 2, 0, "1", "11", "PARISH_VS1",
            { "1;St. Michael", "2;Christ Church", "3;St. George", "4;St. Philip", "5;St. John",
                "6;St. James", "7;St. Thomas", "8;St. Joseph", "9;St. Andrew", "10;St. Peter",
                "11;St. Lucy" } });
    row(dictionary,
        { "Common", "ED", "ED", Integer, 4, 3, 0, "1", "583", "ED_VS1",
            { "1;St. Michael", "181;St. Michael", "182;Christ Church", "560;St. Lucy",
                "583;St. Lucy" },
            22 });
    row(dictionary,
        { "HOUSING", "H8", "H8 – What type of dwelling unit is this?", Integer, 18, 2, 0, "1", "9",
            "H8_VS1",
            { "1;Separate house\\detached\\undivided",
                "2;Rented room in a separate\\detached house", "3;Apartment",
                "4;Government terrace unit\\Apartment", "5;Townhouse\\Condominium",
                "6;Double house\\Duplex", "7;Part of a commercial building", "8;Group Dwelling",
                "9;Other" } });
    row(dictionary, { "HOUSING", "H8_OTHER", "H8 – Other", String, 20, 50, 0, "", "", "", {} });
    row(dictionary,
        { "HOUSING", "H17D", "H17(d) – What is the rental period for this dwelling?", Integer, 394,
            1, 0, "1", "6", "H17D_VS1",
            { "1;Weekly", "2;Fortnightly", "3;Monthly", "4;Quarterly", "5;Half yearly",
                "6;Annually" } });
    row(dictionary,
        { "HOUSING", "H17E", "H17(e) – How much rent are you now paying?", Integer, 395, 5, 0, "0",
            "99999", "H17E_VS1",
            { "0;Under $100", "99;Under $100", "600;$600-699", "5000;$5000 & Over",
                "70000;$5000 & Over", "99999;Not Stated" },
            29 });
    // A set with a link and no values stays empty; the values of the linked set are not taken over.
    row(dictionary,
        { "HOUSING", "H19E", "H19(e) – What is the rental period for this land?", Integer, 508, 1,
            0, "0", "9", "H19E_VS1", {} });
    row(dictionary,
        { "HOUSING", "H23BII",
            "H23(b)ii – Which of these appliances\\household equipment does your household share? "
            "(Score as many as are applicable)",
            String, 801, 25, 0, "0", "", "H23BII_VS1", {} });
    row(dictionary, { "POPULATION", "Name", "Name", String, 18, 61, 0, "", "", "", {} });
    row(dictionary, { "POPULATION", "Last Name", "Last Name", String, 18, 30, 0, "", "", "", {} });
    row(dictionary,
        { "POPULATION", "DOB_MONTH", "Month", Integer, 85, 2, 0, "1", "99", "DOB_MONTH_VS1",
            { "1;January", "2;February", "3;March", "4;April", "5;May", "6;June", "7;July",
                "8;August", "9;September", "10;October", "11;November", "12;December",
                "99;Not stated" } });
    // The bounds of ranges that overlap are sorted one by one, so the ranges come apart.
    row(dictionary,
        { "POPULATION", "P16B", "P16(b) - In which year did you first arrive in Barbados to live?",
            Integer, 342, 4, 0, "1900", "2020", "P16B_VS1",
            { "1900;Before 1999", "1998;Before 1999", "1999;1999-2009", "2000;2010-14",
                "2004;2010-14", "2009;1999-2009", "2015;2015", "2016;2016", "2017;2017",
                "2018;2018", "2019;2019", "2020;2020" } });
    row(dictionary,
        { "METADATA", "START_YEAR", "Interview Start Year", Integer, 1, 4, 0, "0", "9999", "",
            {} });
    row(dictionary,
        { "METADATA", "START_HOUR", "Interview Start Hour", Integer, 1, 2, 0, "0", "23",
            "START_HOUR_VS1", { "0;Value", "23;Value" } });
    row(dictionary,
        { "METADATA", "END_DATE", "Interview End Date", Integer, 28, 8, 0, "0", "99999999", "",
            {} });
    row(dictionary,
        { "METADATA", "LATITUDE", "Latitude", Real, 40, 13, 9, "0", "999999999999", "", {} });

    dictionary = "ethiopia-household";
    row(dictionary,
        { "Common", "ID101", "101 Region|101 ክልል/ከ/አስተዳደር", Integer, 2, 2, 0, "0", "99", "", {} });
    row(dictionary,
        { "INDIVIDUAL", "302 Name of Usual  member and Visitors|302 የቤተሰብ መደበኛ አባላትና የእንግዶች ሙሉ ስም",
            "302 Name of Usual  member and Visitors|302 የቤተሰብ መደበኛ አባላትና የእንግዶች ሙሉ ስም", String, 28,
            40, 0, "", "", "", {} });
    row(dictionary,
        { "INDIVIDUAL", "P304A", "304A Region|304A ክልል", Integer, 69, 2, 0, "1", "15", "P304A_VS1",
            { "1;Tigray|ትግራይ", "2;Afar|አፋር", "3;Amhara|አማራ", "4;Oromia|ኦሮምያ", "5;Somalie|ሶማሌ",
                "6;Benshangul _Gumuz|ቢኒሻንጉል ጉምዝ", "7;SNNP|የደቡብ ህዝቦችና ቢሄር ቢሄረሰቦች",
                "12;Gambella|ጋምቤላ", "13;Harari|ሐራሪ", "14;Addis Ababa|አዲስ አባባ",
                "15;Diredawa|ድሬደዋ" } });
    // Twelve sets give the zones of a region each; the zones of the first region alone are kept.
    row(dictionary,
        { "INDIVIDUAL", "P304B", "304B Zone|304B ዞን", Integer, 71, 2, 0, "1", "7", "P304B_VS1",
            { "1;ሰሜን ምዕራባዊ", "2;መሀከለኛው", "3;ምሥራቃዊ", "4;ደቡባዊ ምስራቅ", "5;ደቡባዊ", "6;ምዕራባዊ",
                "7;መቀሌ" } });
    row(dictionary,
        { "REMITTANCE", "R803",
            "803  Receive any money or goods|803  ከወጭ ሀገር ከሚኖሩ ቤተሰቦች እቃ ወይንም ገንዘብ መቀበል", Integer,
            92, 1, 0, "1", "4", "R803_VS1",
            { "1;Yes, both goods and money|አዎ ገንዘብና እቃ|እወ ገንዘብ ን ኣቅሓን|Eeyyee ,qarshii fi "
              "meeshaa|Haa,  lacag ama hadiyad labaduba|Yeey maalu kee duyye",
                "4;No|የለም|የለን |Hin jiru|maya|matana" },
            4 });
    row(dictionary,
        { "NO_OF_DEATH", "P701T",
            "701 Total number of death since november 2015|701 ከህዳር 2008 እስከ ህዳር 2009 የሞቱ ሰዎች",
            Integer, 26, 2, 0, "0", "99", "", {} });
    row(dictionary,
        { "MORTALITY", "P703", "703 Sex of Deceased|703  የሟች  ፆታ", Integer, 56, 1, 0, "1", "2",
            "P703_VS1",
            { "1;Male|ወንድ|ወዲ ተባዕታይ  |Dhiira|Lab|Labih",
                "2;Female|ሴት|ጋል ኣንስተይቲ   |Dhalaa|Dhedig|Sayih" } });
    row(dictionary,
        { "MORTALITY", "P704", "704 Age at death|704 ሲሞቱ የነበራቸው እድሜ", Integer, 57, 2, 0, "0", "99",
            "P704_VS1", { "0;Valid", "98;Valid", "99;NS" } });
    row(dictionary,
        { "HOUSING", "H902", "902 Type of housing unit|902 የቤት ሁኔታ", Integer, 29, 1, 0, "1", "4",
            "H902_VS1",
            { "1;Conventional|ቋሚ|ቀዋሚ|Kan Dhaabbataa|Caadi ah|kulli waqdih",
                "2;Improvised|ጊዜየዊ|ጊዝያዊ|Kan yeroo|ku meel gadh| Elle sugah",
                "3;Mobile|ተንቀሳቃሽ|ተንቀሳቃሲ|Kan bakkaa bakkatti socho’u|Aqal Guur guura|angagayyuk",
                "4;Other|ሌላ|ካልእ|Kanbiraa\t|Noc kale| gersim/qaddoysaanah/" } });
    row(dictionary,
        { "HOUSING", "H903", "903 Rooms in the housing unit|903 የቤቱ ክፍሎች ቁጥር", Integer, 30, 2, 0,
            "0", "99", "", {} });
    row(dictionary,
        { "AXULLARY", "DATE_OF_INTERVIEX", "Date of interview", String, 26, 8, 0, "", "", "", {} });
    row(dictionary, { "AXULLARY", "MONTH", "month", Integer, 28, 2, 0, "0", "99", "", {} });
    row(dictionary,
        { "AXULLARY", "START_MINUTE", "Start minute|መነሻ ደቂቃ", Integer, 1, 2, 0, "0", "59",
            "START_MINUTE_VS1", { "0;minute", "59;minute" } });
    row(dictionary,
        { "AXULLARY", "END_MINUTE", "End minute|ማጠናቀቂያ ደቂቃ", Integer, 40, 2, 0, "0", "99",
            "END_MINUTE_VS1", {} });

    dictionary = "ipums";
    row(dictionary,
        { "Common", "CNTRY", "Country", Integer, 2, 3, 0, "32", "862", "CNTRY_VS1",
            { "32;Argentina", "276;Germany", "704;Vietnam", "840;United States", "862;Venezuela" },
            68 });
    row(dictionary,
        { "Common", "SERIAL", "Serial Number", Real, 13, 10, 0, "0", "9999999999", "", {} });
    row(dictionary,
        { "HOUSING_REC", "PERSONS", "Persons in Household", Integer, 23, 3, 0, "0", "999", "",
            {} });
    row(dictionary,
        { "HOUSING_REC", "WTHH", "Household Weight", Real, 26, 8, 2, "0", "999999", "", {} });
    row(dictionary,
        { "HOUSING_REC", "URBAN", "Urban-rural status", Integer, 34, 1, 0, "1", "9", "URBAN_VS1",
            { "1;Rural", "2;Urban", "9;Unknown" } });
    // A code and a range that begins with it are two entries.
    row(dictionary,
        { "HOUSING_REC", "REGIONW", "Continent and region of country", Integer, 35, 2, 0, "11",
            "44", "REGIONW_VS1",
            { "11;AFRICA", "11;Eastern Africa", "15;AFRICA", "15;Western Africa", "44;EUROPE",
                "44;Western Europe" },
            26 });
    row(dictionary,
        { "HOUSING_REC", "PROVAR", "Province, Argentina", Integer, 37, 2, 0, "2", "99",
            "PROVAR_VS1",
            { "2;City of Buenos Aires", "6;Buenos Aires province", "10;Catamarca", "14;Córdoba",
                "18;Corrientes", "22;Chaco", "26;Chubut", "30;Entre Ríos", "34;Formosa", "38;Jujuy",
                "42;La Pampa", "46;La Rioja", "50;Mendoza", "54;Misiones", "58;Neuquén",
                "62;Río Negro", "66;Salta", "70;San Juan", "74;San Luis", "78;Santa Cruz",
                "82;Santa Fe", "86;Santiago del Estero", "90;Tucumán", "94;Tierra del Fuego",
                "99;Unknown" } });
    row(dictionary,
        { "HOUSING_REC", "HEADLOC", "Head's location in household", Integer, 103, 3, 0, "0", "999",
            "", {} });
    row(dictionary,
        { "POPULATION_REC", "RESIDENT", "Residence status: de facto, de jure", Integer, 34, 1, 0,
            "1", "9", "RESIDENT_VS1",
            { "1;Present resident", "2;Absent resident", "3;Visitor/non-resident",
                "4;De facto population (present persons)", "9;Unknown/missing" } });
    row(dictionary,
        { "POPULATION_REC", "AGE", "Age", Integer, 51, 3, 0, "0", "94", "AGE_VS1",
            { "0;0", "50;50", "94;94+" }, 95 });
    row(dictionary,
        { "POPULATION_REC", "MARST", "Marital status [general version]", Integer, 55, 1, 0, "1",
            "4", "MARST_VS1",
            { "1;Single/never married", "2;Married/in union", "3;Separated/divorced/spouse absent",
                "4;Widowed" } });

    dictionary = "pilot-household-fr";
    row(dictionary,
        { "Common", "REGION", "District/Région", Integer, 3, 2, 0, "1", "31", "REGION_VS1",
            { "1;DISTRICT AUTONOME D'ABIDJAN", "6;TONKPI", "13;SUD-COMOE", "15;LÔH-DJIBOUA",
                "20;BAGOUE", "23;BOUNKANI", "26;GRANDS-PONTS", "31;NAWA" } });
    // The full list is lost with its first line, 101:999 without a label; the next set has one
    // code.
    row(dictionary,
        { "Common", "DEPART", "Département", Integer, 5, 3, 0, "2", "2", "DEPART_VS1",
            { "2;ABIDJAN" } });
    row(dictionary,
        { "Common", "P04", "Commune", Integer, 13, 2, 0, "11", "20", "P04_VS2",
            { "11;ABIDJAN(ABOBO)", "12;ABIDJAN(ADJAME)", "13;ABIDJAN(ATTECOUBE)",
                "14;ABIDJAN(COCODY)", "15;ABIDJAN(KOUMASSI)", "16;ABIDJAN(MARCORY)",
                "17;ABIDJAN(PLATEAU)", "18;ABIDJAN(PORT-BOUET)", "19;ABIDJAN(TREICHVILLE)",
                "20;ABIDJAN(YOPOUGON)" } });
    row(dictionary,
        { "Common", "P05", "Zone de Dénombrement (ZD)", Integer, 15, 4, 0, "0", "9999", "", {} });
    row(dictionary,
        { "Common", "P07", "Quartier/campement", Integer, 23, 4, 0, "1", "9999", "P07_VS1",
            { "1;Quartier", "4999;Quartier", "5001;Campement", "5999;Campement",
                "8001;Autre quartier", "8999;Autre quartier", "9001;Autre campement",
                "9999;Autre campement" } });
    // Up to sixteen alphanumeric codes come out in reverse.
    row(dictionary,
        { "Common", "FINTERVIEW", "Fin interview", String, 45, 1, 0, "0", "", "FINTERVIEW_VS1",
            { "P;Partielle", "T;Terminée" } });
    row(dictionary,
        { "LOGEMENT", "SOUSPREF", "Sous-préfecture", Integer, 46, 2, 0, "99", "99",
            "SOUSPREF_VS109", { "99;NOMSOUSPREF" } });
    row(dictionary,
        { "LOGEMENT", "CHOIX_GPS", "Options GPS", Integer, 174, 1, 0, "1", "3", "CHOIX_GPS_VS3",
            { "1;Prendre coordonnées GPS", "2;Prendre les coordonnées plutard",
                "3;Coordonnées GPS Acceptées" } });
    row(dictionary,
        { "LOGEMENT", "LATITUDE", "Latitude du point", Real, 175, 14, 9, "0", "9999999999999", "",
            {} });
    row(dictionary,
        { "LOGEMENT", "TAILMEN", "ALLEZ AU NUMERO D'ORDRE N°...", Integer, 1027, 3, 0, "0", "999",
            "", {} });
    row(dictionary,
        { "LISTING", "DX3", "Lien de parenté avec chef de ménage", Integer, 111, 2, 0, "1", "96",
            "DX3_VS1",
            { "1;Chef de ménage (CM)", "2;Femme/Mari du  (CM)", "3;Fils/Fille du  (CM)",
                "4;Gendre/Belle-fille du  (CM)", "5;Petit-fils/Petite-fille du  (CM)",
                "6;Mère/Père du  (CM)", "7;Beau-père/Belle-mère du  (CM)", "8;Frère/Sœur du  (CM)",
                "9;Cousin/Cousine du  (CM)", "10;Beau-frère/Belle-sœur du  (CM)",
                "11;Oncle/Tante du  (CM)", "12; Nièce/Neveu du  (CM)", "13;Autres parents du  (CM)",
                "14;Domestique du  (CM)", "96;Sans lien de parenté avec le CM" } });
    row(dictionary,
        { "LISTING", "DX4", "Sexe de", Integer, 113, 1, 0, "1", "2", "DX4_VS1",
            { "1;Masculin", "2;Féminin" } });
    row(dictionary,
        { "INDIVIDU", "P18A3A", "Date de naissance (année)", Integer, 119, 4, 0, "0", "9999", "",
            {} });
    row(dictionary,
        { "CONTROLE_QUALITE", "LONGITUDE_X", "Longitude du point", Real, 178, 14, 9, "0",
            "9999999999999", "", {} });

    dictionary = "simple-capi";
    row(dictionary, { "PERSON_REC", "Name", "Name", String, 6, 50, 0, "", "", "", {} });
    // The relationships of women, a second set, are lost.
    row(dictionary,
        { "PERSON_REC", "RELATIONSHIP", "Relationship", Integer, 56, 1, 0, "1", "9",
            "RELATIONSHIP_MALE_VS",
            { "1;Head of Household", "2;Spouse / Partner", "3;Son", "4;Brother", "5;Father",
                "6;Grandfather", "7;Grandson", "8;Other Relative", "9;Non-Relative" } });
    row(dictionary,
        { "PERSON_REC", "AGE", "Age", Integer, 58, 3, 0, "-99", "115", "AGE_VS1",
            { "-99;Don't Know", "0;0 - 115", "115;0 - 115" } });
    row(dictionary,
        { "PERSON_REC", "MAIN_LANGUAGE", "Main Language", Integer, 110, 2, 0, "1", "27",
            "MAIN_LANGUAGE_VS1",
            { "1;Arabic (العربية)", "2;Bengali (বাংলা)", "3;Cantonese (粵語)", "4;English",
                "5;French (Français)", "6;German (Deutsch)", "7;Gujarati (ગુજરાતી)",
                "8;Hindi (हिन्दी)", "9;Italian (Italiano)", "10;Japanese (日本語)",
                "11;Javanese (ꦧꦱꦗꦮ)", "12;Korean (한국어)", "13;Malay (Bahasa Melayu)",
                "14;Mandarin (官話)", "15;Marathi (मराठी)", "16;Persian (فارسی)",
                "17;Portuguese (Português)", "18;Punjabi (ਪੰਜਾਬੀ)", "19;Russian (Русский)",
                "20;Spanish (Español)", "21;Tamil (தமிழ்)", "22;Telugu (తెలుగు)", "23;Thai (ภาษาไทย)",
                "24;Turkish (Türkçe)", "25;Urdu (اُردُو)", "26;Vietnamese (Tiếng Việt)",
                "27;Wu (吳語)" } });

    dictionary = "enquete-menage-3";
    row(dictionary,
        { "HABITATION", "MOIS_INTERVIEW", "Mois de l'interview", Integer, 19, 2, 0, "1", "12",
            "MOIS_INTERVIEW_VS1",
            { "1;janvier", "2;février", "3;mars", "4;avril", "5;mai", "6;juin", "7;juillet",
                "8;août", "9;septembre", "10;octobre", "11;novembre", "12;décembre" } });
    row(dictionary,
        { "HABITATION", "MONTANT_DU_LOYER", "Montant du loyer", Integer, 32, 1, 0, "1", "9",
            "MONTANT_DU_LOYER_VS1",
            { "1;moins de 25 000", "2;25 000 - 49 999", "3;50 000 - 99 999", "4;100 000 - 199 999",
                "5;200 000 ou plus", "9;inconnu" } });
    row(dictionary,
        { "POPULATION", "LIEN_DE_PARENTE", "Lien de parenté", Integer, 45, 1, 0, "1", "6",
            "LIEN_DE_PARENTE_VS1",
            { "1;Chef", "2;Époux/Épouse", "3;Fils/Fille", "4;Mère/Père", "5;Autre relation",
                "6;Sans lien de parenté" } });

    dictionary = "cpi";
    row(dictionary, { "Common", "OBLAST_NO", "State|Регіон", Integer, 2, 2, 0, "0", "99", "", {} });
    row(dictionary,
        { "Common", "SHOP", "Shop|Магазин", Real, 12, 12, 0, "0", "999999999999", "", {} });
    // The label is lost: it contains "=" itself.
    row(dictionary, { "Common", "SHOP_TYPE", "", Integer, 24, 1, 0, "0", "9", "", {} });
    row(dictionary,
        { "PROD_REC", "PROD_PRICE", "product price|Ціна на товар (послугу)", Real, 147, 10, 2, "0",
            "999999999", "", {} });
    row(dictionary,
        { "PROD_REC", "PROD_COMMENTS", "Reason for change in price|Причина зміни ціни", Integer,
            175, 2, 0, "0", "99", "", {} });

    dictionary = "dhs-testlog";
    row(dictionary,
        { "", "LSTAGE", "Testing stage", Integer, 19, 1, 0, "1", "9", "LSTAGE_VS1",
            { "1;A1 = Murex HIV Ag/Ab Combination", "2;A2=  Genscreen™ HIV-1/2 Version 2",
                "3;Repeat A1 and A2", "4;A3 = Geenius HIV 1/2 Supplementary Assay", "5;not used",
                "7;Indeterminate", "9;Testing completed" } });
    // A blank code of an alphanumeric item is kept, as wide as the item.
    row(dictionary,
        { "", "LTYPET", "Test type", String, 57, 25, 0, "0", "", "LTYPET_VS1",
            { "                         ;" } });
    row(dictionary,
        { "", "LDETERM2", "Pepti Lav test result", Integer, 937, 1, 0, "1", "9", "LDETERM2_VS1",
            { "1;Positive : HIV Type I", "2;Positive : HIV Type II", "3;Positive : Dual reactive",
                "7;Indeterminate", "9;Inconclusive" } });

    dictionary = "dhs-wrkfact";
    row(dictionary,
        { "Common", "LEVEL1ID", "Level1 Identification", String, 1, 1, 0, "", "", "", {} });
    row(dictionary, { "WS1", "AGEHH", "Age in household", Integer, 6, 3, 0, "0", "999", "", {} });
    row(dictionary,
        { "WS1", "EDUCAT2", "Education standard", Integer, 11, 1, 0, "0", "4", "EDUCAT2_VS1",
            { "0;No education", "1;Primary", "2;Secondary", "3;Higher", "4;DK/Missing" } });

    dictionary = "idb-population";
    row(dictionary,
        { "COUNTRY_METADATA_REC", "Country Name", "Country Name", String, 4, 35, 0, "", "", "",
            {} });
    row(dictionary,
        { "MIDYEAR_POPULATION_REC", "MIDYEAR_POPULATION", "Midyear Population", Real, 8, 10, 0, "0",
            "9999999999", "", {} });

    dictionary = "feature-showcase-6.2";
    row(dictionary,
        { "Common", "SHOWCASE_ID", "Showcase ID||ショーケースID", Integer, 2, 1, 0, "0", "9", "",
            {} });
    row(dictionary,
        { "SHOWCASE_REC", "PROMPT_FUNCTION", "Prompt Function|Fonction Prompt|プロンプト機能",
            Integer, 4, 1, 0, "1", "4", "PROMPT_FUNCTION_VS1",
            { "1;Password Protected|Mot de passe protégé|パスワード保護",
                "2;Numeric|Numérique|数値の", "3;Multiline|Multiligne|複数行",
                "4;Continue|Continuer|続けます" } });
    // Five codes on the last line are kept as one text, which is no number, and the set is lost.
    row(dictionary,
        { "SHOWCASE_REC", "CUSTOM_ERROR_MESSAGE",
            "Custom Error Message|Message d'erreur personnalisé|カスタムエラーメッセージ", Integer,
            5, 1, 0, "0", "9", "", {} });
    row(dictionary,
        { "SHOWCASE_REC", "VALUE_SET_IMAGES", "Value Set Images|Valeur Set Images|値セットの画像",
            Integer, 9, 1, 0, "1", "4", "VALUE_SET_IMAGES_VS1",
            { "1;Jimmy Carter", "2;George H.W. Bush", "3;Bill Clinton", "4;George W. Bush" } });

    dictionary = "tajikistan-household";
    row(dictionary,
        { "Common", "QHCLUST", "Cluster number", Integer, 1, 4, 0, "0", "9999", "", {} });
    row(dictionary,
        { "QHSECOVER", "QHTYPE", "Type of place of residence|Type de résidence", Integer, 54, 1, 0,
            "1", "2", "QHTYPE_VS1", { "1;Urban|Urbain", "2;Rural|Rural" } });
    row(dictionary,
        { "QHSECOVER", "QHINTY", "Interview year|Année de l'enquête", Integer, 169, 4, 0, "2023",
            "2023", "QHINTY_VS1", { "2023;" } });
    // The Russian labels, a second set, are lost.
    row(dictionary,
        { "QBSEC01", "QB103Y", "Year of birth|Année de naissance", Integer, 20, 4, 0, "2018",
            "9998", "QB103Y_VS1",
            { "2018;2018|2015", "2019;2019|2016", "2020;2020|2017", "2021;2021|2018",
                "2022;2022|2019", "2023;2023|2020",
                "9998;Don’t know year|Ne connaît pas l'année" } });
    row(dictionary,
        { "QHSECOVER", "GHLATPOLE",
            "Pole north-south for latitude|Pôle nord-sud pour la latitude|Polo de latitud "
            "norte-sur",
            String, 283, 1, 0, "0", "", "GHLATPOLE_VS1",
            { "S;South|Sud|Sur", "N;North|Nord|Norte" } });
    row(dictionary,
        { "QBSEC01", "QB106", "Weight in kilograms|Poids en Kilogramme", Real, 25, 5, 2, "0",
            "9999", "", {} });

    dictionary = "tiny-test-dict";
    row(dictionary,
        { "POP_REC", "P11", "P11. Sex", Integer, 125, 1, 0, "1", "2", "P11_VS1",
            { "1;Male", "2;Female" } });
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
