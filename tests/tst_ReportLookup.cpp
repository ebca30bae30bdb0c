#include <model_Tessel/ReportLookup.h>

#include <QCoreApplication>
#include <QTemporaryDir>
#include <QTranslator>
#include <QtTest>

#include <type_traits>

class tst_ReportLookup : public QObject {
    Q_OBJECT

private slots:
    void defaults();
    void captions();
    void captionsAreTranslated();
    void accessors();
    void gettersReturnByValue();
    void sharesTheCounters();
    void sharesTheMessages();
    void showsACheck();
};

namespace {

class Translator : public QTranslator {
public:
    bool isEmpty() const override
    {
        return false;
    }

    QString translate(const char* context, const char* text, const char*, int) const override
    {
        return QString::fromLatin1(context) + "/" + QString::fromLatin1(text);
    }
};

} // namespace

void tst_ReportLookup::defaults()
{
    static_assert(std::is_base_of<QObject, ReportLookup>::value, "a QObject to its hosts");
    const ReportLookup report;
    QCOMPARE(report.metaObject(), &QObject::staticMetaObject);
    QCOMPARE(report.parent(), nullptr);
    QCOMPARE(report.idValue(), QString());
    QCOMPARE(report.labelValue(), QString());
    QCOMPARE(report.dataFileValue(), QString());
    QVERIFY(report.frequenciesTree().empty());
    QCOMPARE(report.errorMessages(), nullptr);
    QCOMPARE(report.getConsistency(), importOnly);
}

void tst_ReportLookup::captions()
{
    const ReportLookup report;
    QCOMPARE(report.titleReport(), QString("Pelix Lookup Checking"));
    QCOMPARE(report.idLabel(), QString("Lookup Identification"));
    QCOMPARE(report.labelLabel(), QString("Lookup Label"));
    QCOMPARE(report.getLabelLabel(), QString("Lookup Label"));
    QCOMPARE(report.dataFileLabel(), QString("Lookup File"));
}

void tst_ReportLookup::captionsAreTranslated()
{
    const ReportLookup before;
    Translator translator;
    QVERIFY(QCoreApplication::installTranslator(&translator));
    const ReportLookup report;
    QCOMPARE(report.titleReport(), QString("QObject/Pelix Lookup Checking"));
    QCOMPARE(report.idLabel(), QString("QObject/Lookup Identification"));
    QCOMPARE(report.labelLabel(), QString("QObject/Lookup Label"));
    QCOMPARE(report.getLabelLabel(), QString("QObject/Lookup Label"));
    QCOMPARE(report.dataFileLabel(), QString("QObject/Lookup File"));
    QCOMPARE(before.titleReport(), QString("Pelix Lookup Checking"));
}

void tst_ReportLookup::accessors()
{
    QStringList messages;
    int counter = 1;
    ReportLookup report;
    report.setIdValue("id");
    report.setLabelValue("label");
    report.setDataFileValue("file");
    report.setFrequenciesTree({ { "value", &counter } });
    report.setErrorMessages(&messages);
    report.setConsistency(checkAndCount);
    const ReportLookup& constant = report;
    QCOMPARE(constant.idValue(), QString("id"));
    QCOMPARE(constant.labelValue(), QString("label"));
    QCOMPARE(constant.dataFileValue(), QString("file"));
    QCOMPARE(constant.frequenciesTree().size(), std::size_t(1));
    QCOMPARE(constant.frequenciesTree().at("value"), &counter);
    QCOMPARE(constant.errorMessages(), &messages);
    QCOMPARE(constant.getConsistency(), checkAndCount);
    QCOMPARE(constant.labelLabel(), QString("Lookup Label"));
    QCOMPARE(constant.titleReport(), QString("Pelix Lookup Checking"));
    report.setErrorMessages(nullptr);
    QCOMPARE(constant.errorMessages(), nullptr);
}

void tst_ReportLookup::gettersReturnByValue()
{
    const auto isValueOf = [](auto getter, auto value) {
        return std::is_same_v<std::invoke_result_t<decltype(getter), const ReportLookup&>,
            decltype(value)>;
    };
    QVERIFY(isValueOf(&ReportLookup::titleReport, QString()));
    QVERIFY(isValueOf(&ReportLookup::idLabel, QString()));
    QVERIFY(isValueOf(&ReportLookup::labelLabel, QString()));
    QVERIFY(isValueOf(&ReportLookup::getLabelLabel, QString()));
    QVERIFY(isValueOf(&ReportLookup::dataFileLabel, QString()));
    QVERIFY(isValueOf(&ReportLookup::idValue, QString()));
    QVERIFY(isValueOf(&ReportLookup::labelValue, QString()));
    QVERIFY(isValueOf(&ReportLookup::dataFileValue, QString()));
    QVERIFY(isValueOf(&ReportLookup::frequenciesTree, std::map<QString, int*>()));
    QVERIFY(isValueOf(&ReportLookup::getConsistency, importOnly));
}

void tst_ReportLookup::sharesTheCounters()
{
    int rural = 1;
    int urban = 1;
    std::map<QString, int*> frequencies = { { "rural", &rural }, { "urban", &urban } };
    {
        ReportLookup report;
        report.setFrequenciesTree(frequencies);
        const std::map<QString, int*> copy = report.frequenciesTree();
        *frequencies["rural"] = 12;
        QCOMPARE(*report.frequenciesTree().at("rural"), 12);
        QCOMPARE(*copy.at("rural"), 12);
        frequencies.erase("urban");
        QCOMPARE(report.frequenciesTree().size(), std::size_t(2));
    }
    QCOMPARE(rural, 12);
    QCOMPARE(urban, 1);
}

void tst_ReportLookup::sharesTheMessages()
{
    QStringList messages;
    {
        ReportLookup report;
        report.setErrorMessages(&messages);
        messages << "1_Key [01] already exists";
        QCOMPARE(*report.errorMessages(), messages);
        report.errorMessages()->append("2_text");
    }
    QCOMPARE(messages, QStringList({ "1_Key [01] already exists", "2_text" }));
}

void tst_ReportLookup::showsACheck()
{
    const QTemporaryDir directory;
    QFile file(directory.filePath("areas.txt"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("01 rural\n01 urban\n");
    file.close();
    TOxLookup lookup;
    lookup.setId("EA");
    lookup.setLabel("Areas");
    lookup.setFfileName(file.fileName());
    lookup.maxMessages = 10;
    std::map<QString, int*> frequencies;
    QStringList messages;
    QVERIFY(lookup.consistencyCheck(checkAndCount, frequencies, &messages));

    ReportLookup report;
    report.setIdValue(lookup.getId());
    report.setLabelValue(lookup.getLabel());
    report.setDataFileValue(lookup.getFfileName());
    report.setConsistency(lookup.consistency);
    report.setFrequenciesTree(frequencies);
    report.setErrorMessages(&messages);
    QCOMPARE(report.idValue(), QString("EA"));
    QCOMPARE(report.labelValue(), QString("Areas"));
    QCOMPARE(report.dataFileValue(), file.fileName());
    QCOMPARE(report.getConsistency(), checkAndCount);
    QCOMPARE(*report.errorMessages(), QStringList({ "2_Key [01] already exists" }));
    QCOMPARE(report.frequenciesTree().size(), std::size_t(1));
    QCOMPARE(*report.frequenciesTree().at("rural"), 1);

    delete frequencies.at("rural");
    delete lookup.values.at("01");
}

QTEST_GUILESS_MAIN(tst_ReportLookup)

#include "tst_ReportLookup.moc"
