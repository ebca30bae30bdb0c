#include "BareField.h"
#include "DebugLines.h"

#include <model_Tessel/CSProDataImport.h>
#include <model_Tessel/DataImport.h>
#include <model_Tessel/GenericField.h>
#include <model_Tessel/SourceField.h>

#include <QFile>
#include <QLoggingCategory>
#include <QTemporaryDir>
#include <QtTest>

#include <algorithm>
#include <functional>
#include <limits>
#include <type_traits>
#include <vector>

namespace {

class Field : public BareField {
public:
    explicit Field(const QString& fieldName, int type = NoType)
        : BareField(nullptr)
    {
        name = fieldName;
        fieldType = type;
    }

    QString getGroup() override
    {
        return group;
    }

    QString group;
};

class Importer : public TDataImport {
public:
    explicit Importer(const QString& providerType = "STATA")
        : m_type(providerType)
    {
    }
    ~Importer() override
    {
        delete fields;
    }

    QString getDataProviderId() override
    {
        return m_type + "_id";
    }
    QString getDataProviderType() override
    {
        return m_type;
    }

private:
    QString m_type;
};

// The source fields of an importer, which it deletes.
class Dictionary {
public:
    explicit Dictionary(TDataImport& importer)
    {
        importer.getDictionary(&m_fields);
    }
    ~Dictionary()
    {
        qDeleteAll(m_fields);
    }

    int size() const
    {
        return m_fields.size();
    }
    const TOxSourceField& operator[](int index) const
    {
        return *m_fields.at(index);
    }

private:
    Q_DISABLE_COPY(Dictionary)

    QList<TOxSourceField*> m_fields;
};

} // namespace

class tst_SourceField : public QObject {
    Q_OBJECT

private slots:
    void defaults();
    void fieldsStandInDeclarationOrder();
    void listOfProviderTypesIsItsOwn();
    void fieldType();
    void isString_data();
    void isString();
    void setDataProviderType_data();
    void setDataProviderType();
    void setDataProviderTypeKeepsTheOlder_data();
    void setDataProviderTypeKeepsTheOlder();
    void setDataProviderTypeEndsAtFour();

    void getStringValue_data();
    void getStringValue();
    void lastValueMatches_data();
    void lastValueMatches();

    void dictionaryCopiesTheField();
    void dictionaryKeepsTheOrder();
    void dictionaryOfNoFields();
    void dictionaryAsksForEachField();
    void dictionaryTypeNames_data();
    void dictionaryTypeNames();
    void dictionaryDecimals_data();
    void dictionaryDecimals();
    void dictionaryProviderTypes_data();
    void dictionaryProviderTypes();
    void dictionaryLogs();
    void dictionaryIsSilentWhenLoggingIsOff();
    void dictionaryOfCSPro();
};

void tst_SourceField::defaults()
{
    static_assert(std::has_virtual_destructor<TOxSourceField>::value, "hosts derive from it");
    const TOxSourceField field;
    QVERIFY(field.providerTypeNames);
    QCOMPARE(*field.providerTypeNames, QStringList({ "NONE", "CSPRO", "CSV", "SSPS", "STATA" }));
    for (const QString& text :
        { field.fieldName, field.fieldLabel, field.valueLabels, field.minValue, field.maxValue,
            field.notApplicableValue, field.missingValue, field.compareValue, field.fieldTypeName,
            field.dataProviderTypeName, field.dataProviderId, field.record })
        QCOMPARE(text, QString());
    QCOMPARE(field.decimals, 0);
    QCOMPARE(field.length, 0);
    QCOMPARE(field.start, 0);
    QCOMPARE(field.lastValueMatches, false);
    QCOMPARE(field.flagB, true);
    QCOMPARE(field.fieldTypeIndex, 0);
    QCOMPARE(field.dataProviderTypeIndex, 0);
}

void tst_SourceField::fieldsStandInDeclarationOrder()
{
    const TOxSourceField f;
    const std::vector<const void*> addresses = { &f.providerTypeNames, &f.fieldName, &f.fieldLabel,
        &f.decimals, &f.length, &f.start, &f.valueLabels, &f.minValue, &f.maxValue,
        &f.notApplicableValue, &f.missingValue, &f.compareValue, &f.lastValueMatches, &f.flagB,
        &f.fieldTypeName, &f.fieldTypeIndex, &f.dataProviderTypeName, &f.dataProviderTypeIndex };
    QVERIFY(std::is_sorted(addresses.begin(), addresses.end(), std::less<>()));
}

void tst_SourceField::listOfProviderTypesIsItsOwn()
{
    TOxSourceField field;
    const TOxSourceField other;
    QVERIFY(field.providerTypeNames != other.providerTypeNames);
    field.providerTypeNames->clear();
    QCOMPARE(other.providerTypeNames->size(), 5);
    field.setDataProviderType("CSPRO");
    QCOMPARE(field.getDataProviderType(), QString());
}

void tst_SourceField::fieldType()
{
    TOxSourceField field;
    QCOMPARE(field.getFieldType(), QString());
    field.setFieldType("STRING");
    QCOMPARE(field.getFieldType(), QString("STRING"));
    QCOMPARE(field.fieldTypeName, QString("STRING"));
    QCOMPARE(field.getFieldTypeIndex(), 0);
    QVERIFY(!field.isString());
    field.setFieldType("no type at all");
    QCOMPARE(field.getFieldType(), QString("no type at all"));
    field.fieldTypeIndex = 2;
    field.setFieldType("STRING");
    QCOMPARE(field.getFieldTypeIndex(), 2);
}

void tst_SourceField::isString_data()
{
    QTest::addColumn<int>("index");
    QTest::addColumn<bool>("expected");

    QTest::newRow("none") << 0 << false;
    QTest::newRow("integer") << 1 << false;
    QTest::newRow("real") << 2 << false;
    QTest::newRow("string") << 3 << true;
    QTest::newRow("unknown") << 4 << false;
}

void tst_SourceField::isString()
{
    QFETCH(int, index);
    TOxSourceField field;
    field.fieldTypeIndex = index;
    QTEST(field.isString(), "expected");
    QCOMPARE(field.getFieldTypeIndex(), index);
}

void tst_SourceField::setDataProviderType_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("index");
    QTest::addColumn<QString>("stored");

    QTest::newRow("CSPRO") << "CSPRO" << 1 << "CSPRO";
    QTest::newRow("CSV") << "CSV" << 2 << "CSV";
    QTest::newRow("SSPS, as the list has it") << "SSPS" << 3 << "SSPS";
    QTest::newRow("STATA") << "STATA" << 4 << "STATA";
    QTest::newRow("SPSS, not in the list") << "SPSS" << 0 << "";
    QTest::newRow("NONE") << "NONE" << 0 << "";
    QTest::newRow("other case") << "cspro" << 0 << "";
    QTest::newRow("blank behind") << "CSPRO " << 0 << "";
    QTest::newRow("unknown") << "ODS" << 0 << "";
    QTest::newRow("empty") << "" << 0 << "";
}

void tst_SourceField::setDataProviderType()
{
    QFETCH(QString, name);
    TOxSourceField field;
    field.setDataProviderType(name);
    QTEST(field.getDataProviderTypeIndex(), "index");
    QTEST(field.getDataProviderType(), "stored");
    QTEST(field.dataProviderTypeIndex, "index");
    QTEST(field.dataProviderTypeName, "stored");
}

void tst_SourceField::setDataProviderTypeKeepsTheOlder_data()
{
    QTest::addColumn<QString>("name");

    for (const char* name : { "NONE", "SPSS", "", "csv" })
        QTest::addRow("\"%s\"", name) << name;
}

void tst_SourceField::setDataProviderTypeKeepsTheOlder()
{
    QFETCH(QString, name);
    TOxSourceField field;
    field.setDataProviderType("CSV");
    field.setDataProviderType(name);
    QCOMPARE(field.getDataProviderTypeIndex(), 2);
    QCOMPARE(field.getDataProviderType(), QString("CSV"));
}

void tst_SourceField::setDataProviderTypeEndsAtFour()
{
    TOxSourceField field;
    field.providerTypeNames->append("ODS");
    field.setDataProviderType("ODS");
    QCOMPARE(field.getDataProviderTypeIndex(), 0);
    QCOMPARE(field.getDataProviderType(), QString());
}

void tst_SourceField::getStringValue_data()
{
    QTest::addColumn<int>("start");
    QTest::addColumn<int>("length");
    QTest::addColumn<QString>("line");
    QTest::addColumn<QString>("value");

    constexpr int most = std::numeric_limits<int>::max();
    QTest::newRow("begins one behind the column") << 1 << 2 << "12345"
                                                  << "23";
    QTest::newRow("column 0") << 0 << 2 << "12345"
                              << "12";
    QTest::newRow("up to the end") << 3 << 2 << "12345"
                                   << "45";
    QTest::newRow("last column, cut short") << 4 << 2 << "12345"
                                            << "5";
    QTest::newRow("behind the end, one column") << 5 << 1 << "12345"
                                                << "";
    QTest::newRow("behind the end") << 6 << 2 << "12345"
                                    << "";
    QTest::newRow("longer than the line") << 1 << 9 << "12345"
                                          << "2345";
    QTest::newRow("whole line and more") << 0 << 7 << "12345"
                                         << "12345";
    QTest::newRow("no length") << 1 << 0 << "12345"
                               << "";
    QTest::newRow("no length, behind the end") << 6 << 0 << "12345"
                                               << "";
    QTest::newRow("blanks stay") << 0 << 4 << "  7 9"
                                 << "  7 ";
    QTest::newRow("empty line") << 1 << 2 << ""
                                << "";
    QTest::newRow("empty line, column 0") << 0 << 0 << ""
                                          << "";
    QTest::newRow("longest length") << 1 << most << "12345"
                                    << "2345";
    QTest::newRow("last start and longest length") << most << most << "12345"
                                                   << "";
}

void tst_SourceField::getStringValue()
{
    QFETCH(int, start);
    QFETCH(int, length);
    QFETCH(QString, line);
    TOxSourceField field;
    field.start = start;
    field.length = length;
    QTEST(field.getStringValue(line), "value");
}

void tst_SourceField::lastValueMatches_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<QString>("compareValue");
    QTest::addColumn<bool>("matches");

    QTest::newRow("same") << "xAB"
                          << "AB" << true;
    QTest::newRow("other") << "xAC"
                           << "AB" << false;
    QTest::newRow("other case") << "xab"
                                << "AB" << false;
    QTest::newRow("shortened") << "xA"
                               << "A" << true;
    QTest::newRow("shortened is another") << "xA"
                                          << "AB" << false;
    QTest::newRow("nothing cut, nothing compared") << ""
                                                   << "" << true;
    QTest::newRow("nothing cut, something compared") << ""
                                                     << "AB" << false;
    QTest::newRow("something cut, nothing compared") << "xAB"
                                                     << "" << false;
}

void tst_SourceField::lastValueMatches()
{
    QFETCH(QString, line);
    QFETCH(QString, compareValue);
    QFETCH(bool, matches);
    TOxSourceField field;
    field.start = 1;
    field.length = 2;
    field.compareValue = compareValue;
    field.lastValueMatches = !matches;
    field.getStringValue(line);
    QCOMPARE(field.lastValueMatches, matches);
}

void tst_SourceField::dictionaryCopiesTheField()
{
    Field field("AGE", TGenericField::IntegerType);
    field.label = "Age in years";
    field.length = 3;
    field.start = 17;
    field.valueLabels = "1 one\t2 two\t";
    field.missingValue = "999";
    field.notApplicableValue = "998";
    field.minValue = "0";
    field.maxValue = "120";
    field.decimals = "2";
    field.group = "PERSON";
    Importer importer;
    importer.addField(&field);
    const Dictionary dictionary(importer);
    QCOMPARE(dictionary.size(), 1);
    const TOxSourceField& copy = dictionary[0];
    QCOMPARE(copy.fieldName, QString("AGE"));
    QCOMPARE(copy.fieldLabel, QString("Age in years"));
    QCOMPARE(copy.decimals, 2);
    QCOMPARE(copy.length, 3);
    QCOMPARE(copy.start, 17);
    QCOMPARE(copy.valueLabels, QString("1 one\t2 two\t"));
    QCOMPARE(copy.minValue, QString("0"));
    QCOMPARE(copy.maxValue, QString("120"));
    QCOMPARE(copy.notApplicableValue, QString("998"));
    QCOMPARE(copy.missingValue, QString("999"));
    QCOMPARE(copy.compareValue, QString());
    QCOMPARE(copy.lastValueMatches, false);
    QCOMPARE(copy.flagB, true);
    QCOMPARE(copy.getFieldType(), QString("INTEGER"));
    QCOMPARE(copy.getDataProviderType(), QString("STATA"));
    QCOMPARE(copy.getDataProviderTypeIndex(), 4);
    QCOMPARE(copy.dataProviderId, QString("STATA_id"));
    QCOMPARE(copy.record, QString("PERSON"));
}

void tst_SourceField::dictionaryKeepsTheOrder()
{
    Field second("B");
    Field first("A");
    Field again("B");
    Importer importer;
    importer.addField(&second);
    importer.addField(&first);
    importer.addField(&again);
    TOxSourceField older;
    QList<TOxSourceField*> list = { &older };
    importer.getDictionary(&list);
    QCOMPARE(list.size(), 4);
    QCOMPARE(list.takeFirst(), &older);
    QStringList names;
    for (const TOxSourceField* field : qAsConst(list))
        names << field->fieldName;
    QCOMPARE(names, QStringList({ "B", "A", "B" }));
    QVERIFY(list.at(0) != list.at(2));
    qDeleteAll(list);
}

void tst_SourceField::dictionaryOfNoFields()
{
    Importer importer;
    QCOMPARE(Dictionary(importer).size(), 0);
    importer.getDictionary(nullptr);
}

// An importer may answer otherwise for the next field.
void tst_SourceField::dictionaryAsksForEachField()
{
    class Changing : public Importer {
    public:
        QString getDataProviderId() override
        {
            return QStringLiteral("id") + QString::number(++ids);
        }
        QString getDataProviderType() override
        {
            return ++types == 2 ? QStringLiteral("STATA") : QStringLiteral("CSPRO");
        }
        int ids = 0;
        int types = 0;
    };

    Changing importer;
    const Dictionary untouched { importer };
    Q_UNUSED(untouched)
    QCOMPARE(importer.ids, 0);
    QCOMPARE(importer.types, 0);
    Field fields[] = { Field("A"), Field("B"), Field("C") };
    for (Field& field : fields)
        importer.addField(&field);
    const Dictionary dictionary(importer);
    QCOMPARE(importer.ids, 3);
    QCOMPARE(importer.types, 3);
    QStringList told;
    for (int i = 0; i < 3; ++i)
        told << dictionary[i].dataProviderId << dictionary[i].getDataProviderType();
    QCOMPARE(told, QStringList({ "id1", "CSPRO", "id2", "STATA", "id3", "CSPRO" }));
}

void tst_SourceField::dictionaryTypeNames_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<QString>("name");

    QTest::newRow("none") << 0 << "";
    QTest::newRow("integer") << 1 << "INTEGER";
    QTest::newRow("real") << 2 << "REAL";
    QTest::newRow("string") << 3 << "STRING";
    QTest::newRow("unknown") << 4 << "";
}

void tst_SourceField::dictionaryTypeNames()
{
    QFETCH(int, type);
    Field field("X", type);
    Importer importer;
    importer.addField(&field);
    const Dictionary dictionary(importer);
    QTEST(dictionary[0].getFieldType(), "name");
    QCOMPARE(dictionary[0].getFieldTypeIndex(), 0);
    QVERIFY(!dictionary[0].isString());
}

void tst_SourceField::dictionaryDecimals_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("decimals");

    QTest::newRow("number") << "2" << 2;
    QTest::newRow("two digits") << "12" << 12;
    QTest::newRow("zero") << "0" << 0;
    QTest::newRow("empty") << "" << 0;
    QTest::newRow("control character") << QString(QChar(2)) << 0;
    QTest::newRow("no integer") << "2.5" << 0;
    QTest::newRow("letters") << "two" << 0;
}

void tst_SourceField::dictionaryDecimals()
{
    QFETCH(QString, text);
    Field field("X", TGenericField::RealType);
    field.decimals = text;
    Importer importer;
    importer.addField(&field);
    const Dictionary dictionary(importer);
    QTEST(dictionary[0].decimals, "decimals");
}

void tst_SourceField::dictionaryProviderTypes_data()
{
    QTest::addColumn<QString>("type");
    QTest::addColumn<int>("index");
    QTest::addColumn<QString>("stored");

    QTest::newRow("CSPro") << "CSPRO" << 1 << "CSPRO";
    QTest::newRow("SPSS, without a type") << "SPSS" << 0 << "";
    QTest::newRow("Stata") << "STATA" << 4 << "STATA";
    QTest::newRow("none") << "NONE" << 0 << "";
}

void tst_SourceField::dictionaryProviderTypes()
{
    QFETCH(QString, type);
    Field field("X");
    Importer importer(type);
    importer.addField(&field);
    const Dictionary dictionary(importer);
    QTEST(dictionary[0].getDataProviderTypeIndex(), "index");
    QTEST(dictionary[0].getDataProviderType(), "stored");
    QCOMPARE(dictionary[0].dataProviderId, type + "_id");
}

void tst_SourceField::dictionaryLogs()
{
    Field age("AGE", TGenericField::IntegerType);
    Field name("NAME", TGenericField::StringType);
    Importer importer;
    importer.addField(&age);
    importer.addField(&name);
    const DebugLines debugLines;
    const Dictionary dictionary(importer);
    QCOMPARE(debugLines.lines(),
        QStringList({ "getDictionary FIELDS", "mySF->fieldName \"AGE\"",
            "mySF->FieldType \"INTEGER\"", "mySF->DataProviderType \"STATA\"", "\n\n\n",
            "getDictionary FIELDS", "mySF->fieldName \"NAME\"", "mySF->FieldType \"STRING\"",
            "mySF->DataProviderType \"STATA\"", "\n\n\n" }));
}

void tst_SourceField::dictionaryIsSilentWhenLoggingIsOff()
{
    Field field("X");
    Importer importer;
    importer.addField(&field);
    QLoggingCategory::setFilterRules("default.debug=false");
    const DebugLines debugLines;
    const Dictionary dictionary(importer);
    QLoggingCategory::setFilterRules(QString());
    QCOMPARE(dictionary.size(), 1);
    QCOMPARE(debugLines.lines(), QStringList());
}

void tst_SourceField::dictionaryOfCSPro()
{
    const QTemporaryDir directory;
    QVERIFY(directory.isValid());
    const QString path = directory.filePath("survey.dcf");
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("[Dictionary]\nLabel=Survey\nName=SURVEY\nRecordTypeStart=1\nRecordTypeLen=1\n\n"
               "[Record]\nLabel=Person\nName=PERSON\nRecordTypeValue='1'\nRecordLen=12\n\n"
               "[Item]\nLabel=Income\nName=INCOME\nStart=2\nLen=6\nDecimal=2\n\n"
               "[Item]\nLabel=Age\nName=AGE\nStart=8\nLen=3\n\n"
               "[Item]\nLabel=Initials\nName=INITIALS\nStart=11\nLen=2\nDataType=Alpha\n\n");
    file.close();

    TCSProDataImport importer(path);
    QVERIFY(importer.openFile());
    QCOMPARE(importer.fieldByName("INCOME")->decimals, QString(QChar(2)));
    const Dictionary dictionary(importer);
    QCOMPARE(dictionary.size(), 3);
    const TOxSourceField& income = dictionary[0];
    QCOMPARE(income.fieldName, QString("INCOME"));
    QCOMPARE(income.fieldLabel, QString("Income"));
    QCOMPARE(income.getFieldType(), QString("REAL"));
    QCOMPARE(income.decimals, 0);
    QCOMPARE(income.start, 2);
    QCOMPARE(income.length, 6);
    QCOMPARE(income.getDataProviderTypeIndex(), 1);
    QCOMPARE(income.dataProviderId, "CSPRO_" + path);
    QCOMPARE(income.record, QString("PERSON"));
    QCOMPARE(dictionary[1].getFieldType(), QString("INTEGER"));
    QCOMPARE(dictionary[1].decimals, 0);
    QCOMPARE(dictionary[2].getFieldType(), QString("STRING"));
    QCOMPARE(dictionary[2].decimals, 0);
}

QTEST_MAIN(tst_SourceField)

#include "tst_SourceField.moc"
