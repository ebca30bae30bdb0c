// Runs "tessel export" and hands what it writes to programs and parsers that read such files.
#include "ExportRun.h"
#include "HtmlIds.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtTest>

namespace {

QByteArray variable(const QByteArray& ddi, const QByteArray& name)
{
    const int start = ddi.indexOf("name=\"" + name + "\" files");
    return start < 0 ? QByteArray() : ddi.mid(start, ddi.indexOf("</var>", start) - start);
}

} // namespace

class tst_ExportCommand : public QObject {
    Q_OBJECT

private slots:
    void ddiListsEveryField_data();
    void ddiListsEveryField();
    void ddiIsValid_data();
    void ddiIsValid();
    void ddiVariables();
    void ddiRecords();
    void htmlShowsEveryField_data();
    void htmlShowsEveryField();
    void htmlIsEscaped();
    void csvAndJsonAreTheListing_data();
    void csvAndJsonAreTheListing();
    void outputIsWholeOrAbsent();
    void damagedFileFails();
    void lostLabelsFail();
};

void tst_ExportCommand::ddiListsEveryField_data()
{
    addExportedFiles();
}

void tst_ExportCommand::ddiListsEveryField()
{
    QFETCH(QString, file);
    const Outcome outcome = exportTo("ddi", file);
    QVERIFY(outcome.status == 0);
    QStringList names;
    for (const QJsonValue& field : listed(file).value("fields").toArray())
        names.append(field.toObject().value("name").toString());
    QCOMPARE(attributesOf(outcome.output, "var", "name"), names);

    const QStringList ids =
        attributesOf(outcome.output, "var", "ID") + attributesOf(outcome.output, "catgry", "ID");
    QCOMPARE(QSet<QString>(ids.cbegin(), ids.cend()).size(), ids.size());
}

void tst_ExportCommand::ddiIsValid_data()
{
    addExportedFiles();
}

void tst_ExportCommand::ddiIsValid()
{
    QFETCH(QString, file);
    const QString schema = qEnvironmentVariable("TESSEL_DDI_SCHEMA");
    if (schema.isEmpty())
        QSKIP("TESSEL_DDI_SCHEMA does not name the folder of codebook.xsd");
    if (QStandardPaths::findExecutable("xmllint").isEmpty())
        QSKIP("xmllint is not installed");
    const Outcome checked = runProgram("xmllint",
        { "--nonet", "--noout", "--schema", QDir(schema).filePath("codebook.xsd"), "-" },
        exportTo("ddi", file).output);
    QVERIFY2(checked.status == 0, checked.errors.constData());
}

void tst_ExportCommand::ddiVariables()
{
    const QByteArray ddi = exportTo("ddi", TESSEL_EXAMPLES "/census.dcf").output;
    const QByteArray birth = variable(ddi, "BIRTH_YEAR");
    QVERIFY(birth.contains("<location StartPos=\"48\" EndPos=\"51\" width=\"4\" fileid=\"F1\"/>"));
    QVERIFY(birth.contains("<range UNITS=\"INT\" min=\"1927\" max=\"2023\"/>"));
    QVERIFY(birth.contains("<item UNITS=\"INT\" VALUE=\"9999\"/>"));
    QVERIFY(birth.contains("missing=\"Y\" missType=\"missing\""));
    QVERIFY(birth.contains("intrvl=\"contin\""));
    QVERIFY(variable(ddi, "SEX").contains("intrvl=\"discrete\""));
    QCOMPARE(variable(ddi, "WALLS").count("<catgryGrp "), 2);
    const QByteArray spss = exportTo("ddi", TESSEL_EXAMPLES "/household.sav").output;
    QVERIFY(variable(spss, "PROVINCE").contains("schema=\"SPSS\""));
    QVERIFY(variable(spss, "INCOME").contains("<item UNITS=\"INT\" VALUE=\"999998\"/>"));
    QVERIFY(variable(spss, "INCOME").contains("<item UNITS=\"INT\" VALUE=\"999999\"/>"));
    QVERIFY(variable(ddi, "ASSET_2").contains(" (Television)</labl>"));
    const QByteArray stata = exportTo("ddi", TESSEL_EXAMPLES "/person.dta").output;
    QVERIFY(stata.contains("formatname=\"%8.0g\" schema=\"other\" otherSchema=\"Stata\""));
    QVERIFY(stata.contains("<caseQnty>4299</caseQnty>"));
}

void tst_ExportCommand::ddiRecords()
{
    const QByteArray ddi = exportTo("ddi", TESSEL_EXAMPLES "/census.dcf").output;
    QCOMPARE(attributesOf(ddi, "recGrp", "rectype"), QStringList({ "1", "2", "3" }));
    QCOMPARE(attributesOf(ddi, "recGrp", "keyvar").constFirst(), QString("V1 V2 V3 V4"));
    QVERIFY(attributesOf(ddi, "varGrp", "type").contains("repetition"));
    QVERIFY(attributesOf(ddi, "varGrp", "name").contains("LIVESTOCK"));

    // Items of one name in two records are not the occurrences of one.
    QTemporaryDir folder;
    const QString path = folder.filePath("same.dcf");
    QVERIFY(writeFile(path,
        dictionaryStart() + record("ONE") + item("SAME", 11, 1, "Occurrences=2\n")
            + record("TWO", "2") + item("SAME", 11, 1, "Occurrences=2\n")));
    const QByteArray same = exportTo("ddi", path).output;
    QCOMPARE(same.count("<varGrp ID=\"O"), 2);
    QVERIFY(same.contains("type=\"repetition\" var=\"V2 V3\" name=\"SAME\""));
}

void tst_ExportCommand::htmlShowsEveryField_data()
{
    addExportedFiles();
}

void tst_ExportCommand::htmlShowsEveryField()
{
    QFETCH(QString, file);
    const Outcome outcome = exportTo("html", file);
    QCOMPARE(outcome.status, 0);
    QVERIFY(!outcome.output.contains("src="));
    QVERIFY(!outcome.output.contains("<script"));
    QCOMPARE(brokenIds(outcome.output), QStringList());
    const QString text = shownText(outcome.output);
    for (const QJsonValue& field : listed(file).value("fields").toArray()) {
        const QJsonObject object = field.toObject();
        QVERIFY2(text.contains(object.value("item").toString()),
            qPrintable(object.value("item").toString()));
        for (const QJsonValue& valueSet : object.value("valueSets").toArray()) {
            for (const QJsonValue& value : valueSet.toObject().value("values").toArray())
                QVERIFY(text.contains(value.toObject().value("label").toString()));
        }
    }
}

void tst_ExportCommand::htmlIsEscaped()
{
    const QByteArray page = exportTo("html", "export_names.dcf").output;
    QVERIFY(page.contains("Names &amp; &lt;labels&gt; that"));
    QVERIFY(page.contains("A reserved word &lt;b&gt;and&lt;/b&gt; markup &amp; such"));
    QVERIFY(page.contains("It's &lt;one&gt;"));
    QVERIFY(!page.contains("<b>"));
}

void tst_ExportCommand::csvAndJsonAreTheListing_data()
{
    addExportedFiles();
}

void tst_ExportCommand::csvAndJsonAreTheListing()
{
    QFETCH(QString, file);
    const QByteArray json = exportTo("json", file).output;
    QVERIFY(QJsonDocument::fromJson(json).isObject());
    QCOMPARE(json, runTessel({ "fields", "--format", "json", "--values", file }).output);
    const QByteArray csv = exportTo("csv", file).output;
    QVERIFY(csv.startsWith("file,record,name,label,type,"));
    QVERIFY(csv.endsWith("\r\n"));
    QCOMPARE(csv, runTessel({ "fields", "--format", "csv", "--values", file }).output);
}

void tst_ExportCommand::outputIsWholeOrAbsent()
{
    QTemporaryDir folder;
    const QString path = folder.filePath("out.sql");
    QCOMPARE(exportTo("sql", "basic.dcf", { "-o", path }).status, 0);
    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QByteArray written = file.readAll();
    QCOMPARE(written, exportTo("sql", "basic.dcf").output);
    QCOMPARE(exportTo("sql", "empty.dcf", { "-o", path }).status, 1);
    QVERIFY(file.seek(0));
    QCOMPARE(file.readAll(), written);
    QCOMPARE(exportTo("sql", "basic.dcf", { "-o", folder.filePath("none/out.sql") }).status, 1);
    QCOMPARE(QDir(folder.path()).entryList(QDir::Files), QStringList("out.sql"));
}

void tst_ExportCommand::damagedFileFails()
{
    QTemporaryDir folder;
    QFile whole(TESSEL_EXAMPLES "/person.dta");
    QVERIFY(whole.open(QIODevice::ReadOnly));
    QFile cut(folder.filePath("cut.dta"));
    QVERIFY(cut.open(QIODevice::WriteOnly));
    cut.write(whole.read(300));
    cut.close();
    for (const char* target : { "ddi", "sql", "csv", "json", "html" }) {
        const Outcome outcome = exportTo(target, cut.fileName());
        QCOMPARE(outcome.status, 1);
        QVERIFY(outcome.output.isEmpty());
        QVERIFY(outcome.errors.contains("cut.dta: error: "));
    }
}

// The value labels of Stata files stand at the end.
void tst_ExportCommand::lostLabelsFail()
{
    QTemporaryDir folder;
    const QString path = folder.filePath("cut.dta");
    const QByteArray bytes = readFile(TESSEL_EXAMPLES "/household.dta");
    QVERIFY(writeFile(path, bytes.left(bytes.size() - 400)));
    for (const char* target : { "ddi", "sql", "csv", "json", "html" }) {
        const Outcome outcome = exportTo(target, path);
        QCOMPARE(outcome.status, 1);
        QVERIFY(outcome.output.contains("PROVINCE"));
        QVERIFY(outcome.errors.contains("cut.dta: error: the value labels cannot be read"));
    }
    // What was not read is no difference.
    const Outcome compared = runTessel({ "diff", TESSEL_EXAMPLES "/household.dta", path });
    QCOMPARE(compared.status, 2);
    QVERIFY(compared.output.isEmpty());
    QVERIFY(compared.errors.contains("cut.dta: error: "));
}

QTEST_GUILESS_MAIN(tst_ExportCommand)
#include "tst_ExportCommand.moc"
