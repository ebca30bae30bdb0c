// DDI that "tessel export" wrote, and that of others, read as dictionaries.
#include "ExportRun.h"

#include <QJsonArray>
#include <QTemporaryDir>

namespace {

QByteArray smallDocument(const QByteArray& variables)
{
    return "<?xml version=\"1.0\"?>\n<codeBook xmlns=\"ddi:codebook:2_5\" version=\"2.5\">\n"
           "<stdyDscr><citation><titlStmt><titl>Survey of others</titl></titlStmt></citation>"
           "</stdyDscr>\n<dataDscr>\n"
        + variables + "</dataDscr>\n</codeBook>\n";
}

// The fields of a document in a file of its own.
QJsonObject listedDocument(const QTemporaryDir& folder, const QByteArray& document)
{
    const QString path = folder.filePath("book.xml");
    if (!writeFile(path, document))
        qFatal("cannot write %s", qPrintable(path));
    return listed(path);
}

} // namespace

class tst_DdiDocuments : public QObject {
    Q_OBJECT

private slots:
    void sameAsItsSource_data();
    void sameAsItsSource();
    void sameListing();
    void documentOfOthers();
    void languages();
    void damaged_data();
    void damaged();
};

void tst_DdiDocuments::sameAsItsSource_data()
{
    addExportedFiles();
    QTest::newRow("record without items") << "export_setup.dcf";
    QTest::newRow("missing codes") << "missing_codes.dcf";
    const QDir corpus(qEnvironmentVariable("TESSEL_CORPUS"));
    for (const char* name : { "cspro/ethiopia-household.dcf", "cspro/barbados-census2020.dcf",
             "cspro/kenya-census-main.dcf", "cspro-json/csmap-test.dcf", "sav/greetings.sav",
             "dta/haven-tagged-na-int.dta" }) {
        if (qEnvironmentVariableIsSet("TESSEL_CORPUS"))
            QTest::newRow(name) << corpus.filePath(QLatin1String(name));
    }
}

// But for characters that XML cannot hold.
void tst_DdiDocuments::sameAsItsSource()
{
    QFETCH(QString, file);
    const QTemporaryDir folder;
    const QString path = folder.filePath("book.xml");
    QCOMPARE(exportTo("ddi", file, { "-o", path }).status, 0);
    const Outcome outcome = runTessel({ "diff", file, path, "-f", "json" });
    QJsonArray differences =
        QJsonDocument::fromJson(outcome.output).object().value("differences").toArray();
    for (int i = differences.size() - 1; i >= 0; --i) {
        if (differences.at(i).toObject().value("before").toString().contains(QChar(0)))
            differences.removeAt(i);
    }
    const bool hasNull = file == QLatin1String("export_setup.dcf");
    QVERIFY2(hasNull || differences.isEmpty(), outcome.output.constData());
    QVERIFY(differences.size() <= 1);
    QVERIFY2(outcome.status < 2, outcome.errors.constData());
}

// Not only what a comparison looks at.
void tst_DdiDocuments::sameListing()
{
    const QTemporaryDir folder;
    const QString source = TESSEL_EXAMPLES "/census.dcf";
    const QJsonObject before = listed(source);
    const QJsonObject after = listedDocument(folder, exportTo("ddi", source).output);
    for (const char* member :
        { "name", "label", "version", "records", "recordTypeStart", "recordTypeLength", "type" })
        QCOMPARE(after.value(QLatin1String(member)), before.value(QLatin1String(member)));
    const QJsonArray first = before.value("fields").toArray();
    const QJsonArray second = after.value("fields").toArray();
    QCOMPARE(second.size(), first.size());
    for (int i = 0; i < first.size(); ++i) {
        QStringList members { "name", "item", "occurrence", "occurrenceLabel", "label", "record",
            "type", "start", "length", "decimals", "decimalChar", "missing", "notApplicable",
            "subitem", "parent", "zeroFill", "note", "identification", "level" };
        // What fits the columns is no range of the variable.
        if (first.at(i).toObject().value("rangeFrom").toString() != "length")
            members += QStringList { "min", "max", "rangeValueSet" };
        for (const QString& member : qAsConst(members)) {
            const QJsonValue expected = first.at(i).toObject().value(member);
            QVERIFY2(second.at(i).toObject().value(member) == expected, qPrintable(member));
        }
    }
}

void tst_DdiDocuments::documentOfOthers()
{
    const QTemporaryDir folder;
    const QJsonObject listing = listedDocument(folder,
        smallDocument("<var name=\"SEX\" ID=\"V1\"><labl>Sex</labl><catgry><catValu>1</catValu>"
                      "<labl>Man</labl><catStat>12</catStat></catgry><catgry missing=\"Y\">"
                      "<catValu>9</catValu><labl>None</labl></catgry></var>\n"
                      "<var name=\"NAME\" ID=\"V2\"><location width=\"20\"/><labl>Name</labl>"
                      "<qstn><qstnLit>Who?</qstnLit></qstn><varFormat type=\"character\"/></var>\n"
                      "<var name=\"INCOME\" dcml=\"2\"><labl>Income</labl></var>\n"));
    QCOMPARE(listing.value("label").toString(), QString("Survey of others"));
    const QJsonArray fields = listing.value("fields").toArray();
    QCOMPARE(fields.size(), 3);
    QCOMPARE(fields.at(0).toObject().value("type").toString(), QString("integer"));
    QCOMPARE(fields.at(1).toObject().value("type").toString(), QString("string"));
    QCOMPARE(fields.at(1).toObject().value("length").toInt(), 20);
    QCOMPARE(fields.at(2).toObject().value("type").toString(), QString("real"));
    const Outcome values = runTessel({ "fields", "--values", folder.filePath("book.xml") });
    QVERIFY(values.output.contains("Man") && values.output.contains("None"));
}

void tst_DdiDocuments::languages()
{
    const QTemporaryDir folder;
    const QByteArray variable = "<var name=\"SEX\" ID=\"V1\"><labl xml:lang=\"en\">Sex</labl>"
                                "<labl xml:lang=\"fr\">Sexe</labl></var>\n";
    const QJsonObject first = listedDocument(folder, smallDocument(variable));
    QCOMPARE(
        first.value("fields").toArray().at(0).toObject().value("label").toString(), QString("Sex"));
    const QString path = folder.filePath("book.xml");
    const Outcome french = runTessel({ "fields", path, "-f", "csv", "--language", "fr" });
    QVERIFY(french.output.contains("Sexe"));
    const Outcome none = runTessel({ "fields", path, "--language", "de" });
    QCOMPARE(none.status, 1);
    QVERIFY(none.errors.contains("has no texts in the language 'de'"));
}

void tst_DdiDocuments::damaged_data()
{
    QTest::addColumn<QByteArray>("document");
    const QByteArray whole = smallDocument("<var name=\"A\"><labl>Label</labl></var>\n");
    QTest::newRow("cut") << whole.left(whole.indexOf("Label") + 2);
    QTest::newRow("wrong end") << QByteArray(whole).replace("</labl>", "</label>");
    QTest::newRow("entities without end") << QByteArray(
        "<!DOCTYPE codeBook [<!ENTITY a \"aaaaaaaaaa\"><!ENTITY b \"&a;&a;&a;&a;&a;&a;&a;&a;\">"
        "<!ENTITY c \"&b;&b;&b;&b;&b;&b;&b;&b;\"><!ENTITY d \"&c;&c;&c;&c;&c;&c;&c;&c;\">"
        "<!ENTITY e \"&d;&d;&d;&d;&d;&d;&d;&d;\"><!ENTITY f \"&e;&e;&e;&e;&e;&e;&e;&e;\">]>"
        "<codeBook><dataDscr><var "
        "name=\"A\"><labl>&f;&f;&f;&f;</labl></var></dataDscr></codeBook>");
}

void tst_DdiDocuments::damaged()
{
    QFETCH(QByteArray, document);
    const QTemporaryDir folder;
    const QString path = folder.filePath("book.xml");
    QVERIFY(writeFile(path, document));
    const Outcome outcome = runTessel({ "fields", path });
    QCOMPARE(outcome.status, 1);
    QVERIFY2(outcome.errors.contains("book.xml:") && outcome.errors.contains("is damaged XML: "),
        outcome.errors.constData());
    QVERIFY(outcome.output.isEmpty());
}

QTEST_GUILESS_MAIN(tst_DdiDocuments)
#include "tst_DdiDocuments.moc"
