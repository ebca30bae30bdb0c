// Runs "tessel tree" and compares what it prints with what "tessel fields" lists of the same files:
// the examples, fixtures, and real dictionaries where TESSEL_CORPUS names a folder of them.
#include "ListedFields.h"
#include "StatFiles.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QtTest>

#include <algorithm>

namespace {

QJsonObject objectOf(const Outcome& outcome)
{
    QJsonParseError error {};
    const QJsonObject object = QJsonDocument::fromJson(outcome.output, &error).object();
    if (error.error != QJsonParseError::NoError)
        qWarning("not JSON: %s", qPrintable(error.errorString()));
    return object;
}

QJsonObject listing(const QString& file, const QStringList& options = {})
{
    return listedFile(QStringList { file } + options);
}

QJsonObject treeOf(const QString& file, const QStringList& options = {})
{
    return objectOf(runTessel(QStringList { "tree", "-f", "json", "--values", file } + options));
}

// All variables, those of an entity before those below it.
QJsonArray variablesOf(const QJsonObject& entity)
{
    QJsonArray variables = entity.value("variables").toArray();
    for (const QJsonValue& child : entity.value("children").toArray()) {
        for (const QJsonValue& variable : variablesOf(child.toObject()))
            variables.append(variable);
    }
    return variables;
}

QJsonObject named(const QJsonArray& objects, const QString& name)
{
    for (const QJsonValue& object : objects) {
        if (object.toObject().value("name") == name)
            return object.toObject();
    }
    return {};
}

QString example(const QString& name)
{
    return QStringLiteral(TESSEL_EXAMPLES "/") + name;
}

// The label as a table shows it.
QString labelOf(const QJsonObject& field)
{
    const QString label = field.value("label").toString();
    const QString occurrence = field.value("occurrenceLabel").toString();
    return occurrence.isEmpty() ? label : QString("%1 (%2)").arg(label, occurrence);
}

QStringList codesOf(const QJsonObject& field)
{
    QStringList codes;
    for (const QJsonValue& entry :
        field.value("valueSets").toArray().at(0).toObject().value("values").toArray()) {
        const QJsonObject value = entry.toObject();
        QString code = value.value("code").toString();
        if (!value.value("to").isNull())
            code += ':' + value.value("to").toString();
        codes.append(code + '=' + value.value("label").toString());
    }
    return codes;
}

QStringList labelsOf(const QJsonObject& variable)
{
    QStringList labels;
    for (const QJsonValue& entry : variable.value("valueLabels").toArray()) {
        const QJsonObject label = entry.toObject();
        labels.append(label.value("value").toString() + '=' + label.value("label").toString());
    }
    return labels;
}

// What a field and the variable made of it have in common.
QStringList summaryOf(const QJsonObject& field)
{
    return { field.value("record").toString(), field.value("name").toString(), labelOf(field),
        field.value("type").toString(), QString::number(field.value("start").toInt()),
        QString::number(field.value("length").toInt()),
        QString::number(field.value("decimals").toInt()), codesOf(field).join('|') };
}

QStringList summaryOf(const QJsonObject& variable, const QString& root)
{
    const QString entity = variable.value("entity").toString();
    return { entity == root ? QString() : entity, variable.value("name").toString(),
        variable.value("label").toString(), variable.value("type").toString(),
        QString::number(variable.value("start").toInt()),
        QString::number(variable.value("size").toInt()),
        QString::number(variable.value("decimals").toInt()), labelsOf(variable).join('|') };
}

QStringList corpusFiles()
{
    QStringList files;
    const QString corpus = qEnvironmentVariable("TESSEL_CORPUS");
    if (corpus.isEmpty())
        return files;
    QDirIterator iterator(
        corpus, { "*.dcf", "*.sav", "*.zsav", "*.dta" }, QDir::Files, QDirIterator::Subdirectories);
    while (iterator.hasNext())
        files.append(iterator.next());
    files.sort();
    return files;
}

} // namespace

class tst_TreeCommand : public QObject {
    Q_OBJECT

private slots:
    void variablesAreTheFields_data();
    void variablesAreTheFields();
    void realVariablesAreTheFields_data();
    void realVariablesAreTheFields();
    void entitiesAreTheRecords();
    void ranges();
    void missingCodes();
    void establishedImporters();
    void textsWithBlanksAndLongTexts();
    void textShowsCodesAndNumbers();
    void textHasNoControlCharacters();
    void typeOfTheFile();
    void lookups();
    void entityIsAPartOfTheTree();
    void entitiesOfOneName();
    void notFoundIsNoEntity();
    void damagedLabels();
    void encryptedFile();
    void outputFile();
};

void tst_TreeCommand::variablesAreTheFields_data()
{
    QTest::addColumn<QString>("file");
    for (const char* name :
        { "census.dcf", "household.sav", "person.sav", "household.dta", "person.dta" })
        QTest::newRow(name) << example(QString::fromLatin1(name));
    for (const char* name : { "basic.dcf", "decimals.dcf", "export_names.dcf", "export_levels.dcf",
             "json_household.dcf", "written_household.dcf", "first_item_repeated.dcf" })
        QTest::newRow(name) << QString::fromLatin1(name);
}

void tst_TreeCommand::variablesAreTheFields()
{
    QFETCH(QString, file);
    const QJsonObject root = treeOf(file).value("tree").toObject();
    const QString rootName = root.value("name").toString();
    QStringList expected;
    for (const QJsonValue& field : listing(file).value("fields").toArray())
        expected.append(summaryOf(field.toObject()).join(QChar(0x1F)));
    QStringList actual;
    for (const QJsonValue& variable : variablesOf(root))
        actual.append(summaryOf(variable.toObject(), rootName).join(QChar(0x1F)));
    QVERIFY(!expected.isEmpty());
    // Fields come in the file's order; the identification items of a second level come late there.
    expected.sort();
    actual.sort();
    QCOMPARE(actual, expected);
}

void tst_TreeCommand::realVariablesAreTheFields_data()
{
    const QStringList files = corpusFiles();
    if (files.isEmpty())
        QSKIP("TESSEL_CORPUS names no folder of real files");
    QTest::addColumn<QString>("file");
    for (const QString& file : files)
        QTest::newRow(qPrintable(QFileInfo(file).fileName())) << file;
}

void tst_TreeCommand::realVariablesAreTheFields()
{
    QFETCH(QString, file);
    const Outcome fields = runTessel({ "fields", "-f", "json", file });
    const Outcome tree = runTessel({ "tree", "-f", "json", file });
    QVERIFY(tree.status >= 0);
    QCOMPARE(tree.status, fields.status);
    QCOMPARE(tree.errors, fields.errors);
    if (fields.output.isEmpty()) {
        QVERIFY(tree.output.isEmpty());
        return;
    }
    variablesAreTheFields();
}

void tst_TreeCommand::entitiesAreTheRecords()
{
    const QJsonObject tree = treeOf(example("census.dcf"));
    QCOMPARE(tree.value("tesselTree").toInt(), 1);
    QCOMPARE(tree.value("file").toString(), example("census.dcf"));
    QCOMPARE(tree.value("source").toObject().value("type").toString(), QString("CSPRO"));
    QCOMPARE(tree.value("source").toObject().value("file").toString(), example("census.dcf"));
    const QJsonObject root = tree.value("tree").toObject();
    QCOMPARE(root.value("name").toString(), QString("CENSUS_DICT"));
    QCOMPARE(root.value("label").toString(), QString("Population and housing census of Velmora"));
    QCOMPARE(root.value("parent").toString(), QString());
    QCOMPARE(root.value("variables").toArray().at(0).toObject().value("name").toString(),
        QString("PROVINCE"));
    QStringList children;
    for (const QJsonValue& value : root.value("children").toArray()) {
        const QJsonObject child = value.toObject();
        children.append(
            QString("%1 %2 %3 %4")
                .arg(child.value("name").toString(), child.value("recordType").toString(),
                    child.value("parent").toString(),
                    QString::number(child.value("level").toInt())));
    }
    QCOMPARE(children,
        QStringList({ "HOUSEHOLD 1 CENSUS_DICT 1", "PERSON 2 CENSUS_DICT 1",
            "LIVESTOCK 3 CENSUS_DICT 1" }));
    const QJsonObject person = treeOf(example("person.sav")).value("tree").toObject();
    QCOMPARE(person.value("name").toString(), QString("person"));
    QCOMPARE(
        person.value("elements").toInt(), listing(example("person.sav")).value("rows").toInt());
    QVERIFY(person.value("children").toArray().isEmpty());
}

void tst_TreeCommand::ranges()
{
    const QJsonArray variables =
        variablesOf(treeOf(example("census.dcf")).value("tree").toObject());
    const QJsonArray ranges = named(variables, "ROOMS").value("ranges").toArray();
    QCOMPARE(ranges.size(), 1);
    QCOMPARE(ranges.at(0).toObject().value("min").toDouble(), 1.0);
    QCOMPARE(ranges.at(0).toObject().value("max").toDouble(), 20.0);
    QCOMPARE(named(variables, "ROOMS").value("rangeCount").toInt(), 1);
    QCOMPARE(named(variables, "PROVINCE").value("rangeCount").toInt(), 6);
    // Without --values neither is listed, but counted.
    const QJsonObject plain = objectOf(runTessel({ "tree", "-f", "json", example("census.dcf") }));
    const QJsonObject rooms = named(variablesOf(plain.value("tree").toObject()), "ROOMS");
    QCOMPARE(rooms.value("rangeCount").toInt(), 1);
    QCOMPARE(rooms.value("valueLabelCount").toInt(), 2);
    QVERIFY(!rooms.contains("ranges"));
    QVERIFY(!rooms.contains("valueLabels"));
}

void tst_TreeCommand::missingCodes()
{
    const QJsonArray variables = variablesOf(treeOf("basic.dcf").value("tree").toObject());
    QCOMPARE(named(variables, "ROOMS").value("missing").toDouble(), 99.0);
    QCOMPARE(named(variables, "ROOMS").value("notApplicable").toDouble(), 77.0);
    QVERIFY(named(variables, "CLUSTER").value("missing").isNull());
    QVERIFY(named(variables, "CLUSTER").value("notApplicable").isNull());
    const QString text =
        QString::fromUtf8(runTessel({ "tree", "--values", example("census.dcf") }).output);
    QVERIFY(text.contains("missing 99.9"));
    QVERIFY(text.contains("(range 0.25..1 of "));
    QVERIFY(!text.contains("999999999")); // what nine columns hold is no range
}

void tst_TreeCommand::establishedImporters()
{
    for (const QString& name : { QString("household.sav"), QString("household.dta") }) {
        const QStringList established { "--rules", "established" };
        const QJsonObject listed = listing(example(name), established);
        const QJsonArray variables =
            variablesOf(treeOf(example(name), established).value("tree").toObject());
        const QJsonArray fields = listed.value("fields").toArray();
        QCOMPARE(variables.size(), fields.size());
        for (int i = 0; i < fields.size(); ++i) {
            const QJsonObject field = fields.at(i).toObject();
            const QJsonObject variable = variables.at(i).toObject();
            QCOMPARE(variable.value("name"), field.value("name"));
            QCOMPARE(variable.value("type"), field.value("type"));
            QCOMPARE(variable.value("size").toInt(), field.value("length").toInt());
            QCOMPARE(labelsOf(variable), codesOf(field));
        }
    }
    // Kept: the importer takes the first digit of a width alone.
    const QJsonArray variables = variablesOf(
        treeOf(example("person.sav"), { "--rules", "established" }).value("tree").toObject());
    QCOMPARE(named(variables, "GIVEN_NAME").value("size").toInt(), 1);
}

// Codes that the importers' joined texts cannot hold.
void tst_TreeCommand::textsWithBlanksAndLongTexts()
{
    const QTemporaryDir folder;
    const QString path = folder.filePath("texts.dta");
    const StatFileWriter writer;
    readstat_label_set_t* halves = writer.addLabels("halves", READSTAT_TYPE_INT32);
    readstat_label_int32_value(halves, -1, "Minus one");
    readstat_label_int32_value(halves, 2, "Two\tand a tab");
    readstat_label_int32_value(halves, 3, "");
    writer.add("half", READSTAT_TYPE_INT32, "%8.0g", halves);
    QVERIFY(writer.write(path, TStatFileKind::Stata));
    const QJsonObject root = treeOf(path).value("tree").toObject();
    QCOMPARE(labelsOf(named(variablesOf(root), "half")),
        QStringList({ "-1=Minus one", "2=Two\tand a tab", "3=" }));
    const QByteArray text = runTessel({ "tree", "--values", path }).output;
    QVERIFY2(!text.contains('\t'), text.constData()); // a terminal's columns stay
}

void tst_TreeCommand::textShowsCodesAndNumbers()
{
    const QTemporaryDir folder;
    const QString path = folder.filePath("codes.dcf");
    QVERIFY(writeFile(path,
        "[Dictionary]\nName=D\nRecordTypeStart=1\nRecordTypeLen=2\n"
        "[Record]\nName=R\nRecordTypeValue='1 '\n"
        "[Item]\nName=BACKWARDS\nLen=1\n[ValueSet]\nName=V\nValue=5:6\nValue=3\nValue=4\n"
        "[Item]\nName=LONG\nLen=20\n[ValueSet]\nName=W\nValue=0:99999999999999999999\n"));
    const QByteArray text = runTessel({ "tree", "--values", path }).output;
    QVERIFY2(text.contains("record '1 '"), text.constData());
    QVERIFY2(text.contains("(range 3..6 of "), text.constData());
    QVERIFY2(text.contains("(range 0..1e+20 of W)"), text.constData());
}

void tst_TreeCommand::textHasNoControlCharacters()
{
    const QTemporaryDir folder;
    const QString path = folder.filePath("escapes.dcf");
    QVERIFY(writeFile(path,
        "[Dictionary]\nName=D\x1b[2J\nLabel=\x1b[31mRed\n[Record]\nName=R\x07\nLabel=\x1b]0;x\n"
        "[Item]\nName=A\tB\nLen=1\nLabel=\x7f\n[ValueSet]\nName=V\nValue=1;\x1b[1mBold\n"));
    const QByteArray text = runTessel({ "tree", "--values", path }).output;
    QVERIFY(text.contains("Bold"));
    QVERIFY2(text.contains("A␉B"), text.constData());
    for (const char character : text)
        QVERIFY2(character == '\n' || uchar(character) >= ' ', text.constData());
}

void tst_TreeCommand::typeOfTheFile()
{
    QCOMPARE(runTessel({ "tree", "--type", "spss", example("person.sav") }).status, 0);
    const Outcome outcome = runTessel({ "tree", "--type", "stata", example("person.sav") });
    QCOMPARE(outcome.status, 1);
    QVERIFY2(outcome.errors.contains("is no Stata file"), outcome.errors.constData());
}

void tst_TreeCommand::lookups()
{
    const QStringList options { "--lookup", "LANGUAGE=lookup_comma.txt", "--lookup",
        "DWELLING=lookup_tab.txt" };
    const QJsonObject tree = treeOf("basic.dcf", options);
    const QJsonArray lookups = tree.value("lookups").toArray();
    QCOMPARE(lookups.size(), 2);
    QCOMPARE(named(lookups, "LANGUAGE").value("file").toString(), QString("lookup_comma.txt"));
    QCOMPARE(named(lookups, "LANGUAGE").value("separator").toString(), QString(","));
    QCOMPARE(named(lookups, "DWELLING").value("separator").toString(), QString("\t"));
    QStringList marked;
    for (const QJsonValue& variable : variablesOf(tree.value("tree").toObject())) {
        if (variable.toObject().value("lookup").toBool())
            marked.append(variable.toObject().value("name").toString());
    }
    QCOMPARE(marked, QStringList({ "DWELLING", "LANGUAGE_1", "LANGUAGE_2", "LANGUAGE_3" }));
    const Outcome ofOccurrence =
        runTessel({ "tree", "--lookup", "LANGUAGE_2=lookup_comma.txt", "basic.dcf" });
    QCOMPARE(ofOccurrence.status, 0);
    QCOMPARE(ofOccurrence.output.count(" yes "), 1);
    // An item whose name alone looks like that of an occurrence.
    const QTemporaryDir folder;
    const QString path = folder.filePath("names.dcf");
    QVERIFY(writeFile(path, "[Dictionary]\nName=D\n[Record]\nName=R\n[Item]\nName=A_\nLen=1\n"));
    const Outcome ofNone = runTessel(
        { "tree", "--lookup", "A_=lookup_comma.txt", "--lookup", "A=lookup_comma.txt", path });
    QCOMPARE(ofNone.status, 1);
    QVERIFY2(ofNone.errors.contains("no variable A "), ofNone.errors.constData());
}

void tst_TreeCommand::entityIsAPartOfTheTree()
{
    const QJsonObject root = treeOf(example("census.dcf")).value("tree").toObject();
    const QJsonObject part =
        treeOf(example("census.dcf"), { "--entity", "PERSON" }).value("tree").toObject();
    QCOMPARE(part, named(root.value("children").toArray(), "PERSON"));
    QCOMPARE(treeOf(example("census.dcf"), { "--entity", "CENSUS_DICT" }).value("tree").toObject(),
        root);
    const Outcome none = runTessel({ "tree", "--entity", "person", example("census.dcf") });
    QCOMPARE(none.status, 1);
    QVERIFY(none.output.isEmpty());
    QVERIFY2(none.errors.contains("PERSON, LIVESTOCK"), none.errors.constData());
}

void tst_TreeCommand::entitiesOfOneName()
{
    QFile whole(example("census.dcf"));
    QVERIFY(whole.open(QIODevice::ReadOnly));
    const QTemporaryDir folder;
    QFile changed(folder.filePath("twins.dcf"));
    QVERIFY(changed.open(QIODevice::WriteOnly));
    changed.write(whole.readAll()
                      .replace("Name=LIVESTOCK\r\n", "Name=PERSON\r\n")
                      .replace("Name=LIVESTOCK\n", "Name=PERSON\n"));
    changed.close();
    const Outcome outcome =
        runTessel({ "tree", "-f", "json", "--entity", "PERSON", changed.fileName() });
    QCOMPARE(outcome.status, 0);
    QVERIFY2(outcome.errors.contains("note: 2 entities are called PERSON; the first is printed"),
        outcome.errors.constData());
    QCOMPARE(
        objectOf(outcome).value("tree").toObject().value("recordType").toString(), QString("2"));
}

void tst_TreeCommand::notFoundIsNoEntity()
{
    const Outcome outcome = runTessel({ "tree", "--entity", "nullEntity", "basic.dcf" });
    QCOMPARE(outcome.status, 1);
    QVERIFY(outcome.output.isEmpty());
    QVERIFY(outcome.errors.contains("no entity nullEntity"));
}

void tst_TreeCommand::damagedLabels()
{
    QFile whole(example("person.dta"));
    QVERIFY(whole.open(QIODevice::ReadOnly));
    const QByteArray bytes = whole.readAll();
    const QTemporaryDir folder;
    QFile cut(folder.filePath("cut.dta"));
    QVERIFY(cut.open(QIODevice::WriteOnly));
    cut.write(bytes.left(bytes.indexOf("<value_labels>") + 40));
    cut.close();
    for (const QString& rules : { QString("written"), QString("established") }) {
        const Outcome outcome = runTessel({ "tree", "--rules", rules, cut.fileName() });
        QCOMPARE(outcome.status, 1);
        QVERIFY(outcome.output.contains("SEX"));
        QCOMPARE(outcome.errors.count("error:"), 1);
        QVERIFY2(
            outcome.errors.contains("the value labels cannot be read"), outcome.errors.constData());
    }
    QVERIFY(QFile::resize(cut.fileName(), 300));
    const Outcome outcome = runTessel({ "tree", cut.fileName() });
    QCOMPARE(outcome.status, 1);
    QVERIFY(outcome.output.isEmpty());
    QVERIFY(outcome.errors.contains("cannot be read as Stata file"));
}

void tst_TreeCommand::encryptedFile()
{
    const QTemporaryDir folder;
    QFile file(folder.filePath("secret.sav"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    QByteArray bytes(64, '\0');
    bytes.replace(8, 16, "ENCRYPTEDSAV\0\0\0\0");
    file.write(bytes);
    file.close();
    const Outcome outcome = runTessel({ "tree", file.fileName() });
    QCOMPARE(outcome.status, 1);
    QVERIFY(outcome.output.isEmpty());
    QVERIFY2(outcome.errors.contains("encrypted"), outcome.errors.constData());
}

void tst_TreeCommand::outputFile()
{
    const QTemporaryDir folder;
    const QString path = folder.filePath("tree.txt");
    const Outcome outcome = runTessel({ "tree", "basic.dcf", "-o", path });
    QCOMPARE(outcome.status, 0);
    QVERIFY(outcome.output.isEmpty());
    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(file.readAll(), runTessel({ "tree", "basic.dcf" }).output);
    const Outcome failed =
        runTessel({ "tree", "basic.dcf", "-o", folder.filePath("nowhere/tree.txt") });
    QCOMPARE(failed.status, 1);
    QVERIFY(failed.errors.contains("cannot be written"));
}

QTEST_GUILESS_MAIN(tst_TreeCommand)

#include "tst_TreeCommand.moc"
