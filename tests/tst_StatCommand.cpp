// "tessel fields" on SPSS and Stata files: real ones where TESSEL_CORPUS names a folder of them,
// whole and damaged, and the example census.
#include "RunTessel.h"
#include "StatFiles.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QtTest>

#include <random>

namespace {

QStringList corpusFiles()
{
    const QString corpus = qEnvironmentVariable("TESSEL_CORPUS");
    QStringList files;
    if (corpus.isEmpty())
        return files;
    for (const QString& kind : { QStringLiteral("sav"), QStringLiteral("dta") }) {
        const QDir folder(corpus + '/' + kind);
        for (const QString& name : folder.entryList(QDir::Files, QDir::Name))
            files.append(folder.filePath(name));
    }
    return files;
}

QJsonObject firstListing(const QByteArray& json)
{
    return QJsonDocument::fromJson(json).object().value("files").toArray().at(0).toObject();
}

QString example(const QString& name)
{
    return QStringLiteral(TESSEL_EXAMPLES "/") + name;
}

} // namespace

class tst_StatCommand : public QObject {
    Q_OBJECT

private slots:
    void realFiles_data();
    void realFiles();
    void damagedFiles_data();
    void damagedFiles();
    void contentDecidesNotTheName();
    void oneBadFileDoesNotStopTheOthers();
    void establishedRulesListTheFieldsOfTheImporters();
    void jsonTellsWhatTheFileHas();
    void missingValuesAndTagsAreShown();
    void allCommandsTellTheSame_data();
    void allCommandsTellTheSame();
    void assumedEncodingIsTold_data();
    void assumedEncodingIsTold();
    void soundFileThatIsNotSupported();
    void damagedTextIsDamage();
    void foreignDateIsNotSupported();
    void notesOfVariables();
    void longTextHasNoLength();
    void readFailureNamesTheFile_data();
    void readFailureNamesTheFile();
    void tooLittleMemory();
    void damagedLabelsEndWithAStatus_data();
    void damagedLabelsEndWithAStatus();
};

void tst_StatCommand::realFiles_data()
{
    const QStringList files = corpusFiles();
    if (files.isEmpty())
        QSKIP("TESSEL_CORPUS names no folder of real files");
    QTest::addColumn<QString>("file");
    for (const QString& file : files)
        QTest::newRow(qPrintable(QFileInfo(file).fileName())) << file;
}

void tst_StatCommand::realFiles()
{
    QFETCH(QString, file);
    const Outcome outcome = runTessel({ "fields", "--values", "-f", "json", file });
    QVERIFY(outcome.status >= 0);
    if (outcome.status == 0) {
        // An encoding that had to be assumed is all there is to tell of these files.
        const int told = outcome.errors.contains("windows-1252") ? 1 : 0;
        QCOMPARE(outcome.errors.count('\n'), told);
        const QJsonObject listing = firstListing(outcome.output);
        QCOMPARE(
            listing.value("kind").toString(), QString(file.contains("/sav/") ? "spss" : "stata"));
        QVERIFY(!listing.value("fields").toArray().isEmpty());
    } else {
        QCOMPARE(outcome.status, 1);
        QVERIFY(outcome.errors.startsWith(file.toUtf8() + ": error: "));
    }
}

void tst_StatCommand::damagedFiles_data()
{
    realFiles_data();
}

void tst_StatCommand::damagedFiles()
{
    QFETCH(QString, file);
    const QByteArray whole = readFile(file);
    std::mt19937 random(unsigned(whole.size()));
    const auto below = [&](int limit) { return int(random() % unsigned(limit)); };
    QTemporaryDir folder;
    QStringList copies;
    for (int number = 0; number < 12; ++number) {
        QByteArray bytes = whole;
        if (number < 4) {
            bytes.truncate(below(whole.size()));
        } else {
            const int reach = number < 8 ? std::min(whole.size(), 2000) : whole.size();
            for (int flips = 0; flips < 8; ++flips) {
                const int place = below(reach);
                bytes[place] = char(bytes.at(place) ^ (1 << below(8)));
            }
        }
        copies.append(folder.filePath(QString::number(number)));
        QVERIFY(writeFile(copies.constLast(), bytes));
    }
    for (const char* rules : { "written", "established" }) {
        const Outcome outcome =
            runTessel(QStringList { "fields", "--rules", rules, "--format", "json" } + copies);
        QVERIFY(outcome.status >= 0);
        QVERIFY2(outcome.status == 0 || outcome.status == 1, outcome.errors.constData());
        QCOMPARE(outcome.status == 1, outcome.errors.contains(": error: "));
        QVERIFY2(outcome.output.isEmpty() || !firstListing(outcome.output).isEmpty(),
            outcome.output.left(200).constData());
    }
}

void tst_StatCommand::contentDecidesNotTheName()
{
    QTemporaryDir folder;
    const QString spss = folder.filePath("census.dta");
    const QString stata = folder.filePath("census.dcf");
    const QString cspro = folder.filePath("census.sav");
    QVERIFY(QFile::copy(example("household.sav"), spss));
    QVERIFY(QFile::copy(example("household.dta"), stata));
    QVERIFY(QFile::copy(example("census.dcf"), cspro));
    const QMap<QString, QString> kinds { { spss, "spss" }, { stata, "stata" }, { cspro, "cspro" } };
    for (auto entry = kinds.begin(); entry != kinds.end(); ++entry) {
        const Outcome outcome = runTessel({ "fields", "-f", "json", entry.key() });
        QCOMPARE(outcome.status, 0);
        QCOMPARE(firstListing(outcome.output).value("kind").toString(), entry.value());
    }
    QCOMPARE(runTessel({ "fields", "--type", "stata", spss }).status, 1);
}

void tst_StatCommand::oneBadFileDoesNotStopTheOthers()
{
    QTemporaryDir folder;
    const QString bad = folder.filePath("bad.sav");
    QVERIFY(writeFile(bad, "$FL2@(#) nothing more"));
    const Outcome outcome = runTessel({ "fields", "-f", "csv", example("person.sav"), bad,
        example("person.dta"), example("census.dcf") });
    QCOMPARE(outcome.status, 1);
    QVERIFY(outcome.errors.startsWith(bad.toUtf8() + ": error: cannot be read as SPSS file: "));
    QCOMPARE(outcome.errors.count('\n'), 1);
    for (const char* name : { "person.sav", "person.dta", "census.dcf" })
        QVERIFY2(outcome.output.contains("\n" + example(name).toUtf8() + ","), name);
    QVERIFY(!outcome.output.contains("bad.sav"));
}

void tst_StatCommand::establishedRulesListTheFieldsOfTheImporters()
{
    const Outcome outcome =
        runTessel({ "fields", "--rules", "established", "-f", "json", example("person.sav") });
    QCOMPARE(outcome.status, 0);
    QVERIFY(outcome.errors.isEmpty());
    const QJsonArray fields = firstListing(outcome.output).value("fields").toArray();
    const QJsonArray written =
        firstListing(runTessel({ "fields", "-f", "json", example("person.sav") }).output)
            .value("fields")
            .toArray();
    QCOMPARE(fields.size(), written.size());
    for (int i = 0; i < fields.size(); ++i) {
        QCOMPARE(fields.at(i).toObject().value("name"), written.at(i).toObject().value("name"));
        QVERIFY(fields.at(i).toObject().value("length").toInt() < 10); // the width's first digit
    }
}

void tst_StatCommand::jsonTellsWhatTheFileHas()
{
    for (const QString& name :
        { QStringLiteral("household.sav"), QStringLiteral("household.dta") }) {
        const Outcome outcome = runTessel({ "fields", "-f", "json", example(name) });
        QCOMPARE(outcome.status, 0);
        const QJsonObject listing = firstListing(outcome.output);
        QCOMPARE(listing.value("rows").toInt(), 1000);
        QVERIFY(!listing.value("label").toString().isEmpty());
        QVERIFY(listing.value("records").toArray().isEmpty());
        for (const QJsonValue& field : listing.value("fields").toArray()) {
            QVERIFY(field.toObject().value("start").isNull());
            QVERIFY(!field.toObject().value("format").toString().isEmpty());
        }
    }
}

void tst_StatCommand::missingValuesAndTagsAreShown()
{
    const Outcome spss = runTessel({ "fields", "--values", example("household.sav") });
    QVERIFY(spss.output.contains("Not stated [missing]"));
    const Outcome persons = runTessel({ "fields", "-f", "json", example("person.sav") });
    QVERIFY(persons.output.contains("\"missing\":\"Z, ''\"")); // a blank code among others
    const Outcome stata = runTessel({ "fields", "--values", example("household.dta") });
    QVERIFY(stata.output.contains(".a "));
    QVERIFY(stata.output.contains("Not stated [missing]"));
}

void tst_StatCommand::assumedEncodingIsTold_data()
{
    QTest::addColumn<int>("format");
    QTest::addColumn<QByteArray>("label");
    QTest::addColumn<QByteArray>("shown");
    QTest::addColumn<bool>("isTold");
    QTest::newRow("letters of a code page") << 115
                                            << QByteArray("Stra\xDF"
                                                          "e")
                                            << QByteArray("Stra\xC3\x9F"
                                                          "e")
                                            << true;
    QTest::newRow("ASCII") << 115 << QByteArray("Street") << QByteArray("Street") << false;
    QTest::newRow("Unicode") << 118
                             << QByteArray("Stra\xC3\x9F"
                                           "e")
                             << QByteArray("Stra\xC3\x9F"
                                           "e")
                             << false;
}

void tst_StatCommand::assumedEncodingIsTold()
{
    QFETCH(int, format);
    QFETCH(QByteArray, label);
    QFETCH(QByteArray, shown);
    QFETCH(bool, isTold);
    QTemporaryDir folder;
    const QString path = folder.filePath("made.dta");
    StatFileWriter writer;
    readstat_writer_set_file_format_version(writer.get(), quint8(format));
    readstat_variable_set_label(
        writer.add("STREET", READSTAT_TYPE_DOUBLE, "%9.0g"), label.constData());
    QVERIFY(writer.write(path, TStatFileKind::Stata));
    for (const char* command : { "fields", "tree" }) {
        const Outcome outcome = runTessel({ command, path });
        QCOMPARE(outcome.status, 0);
        QVERIFY2(outcome.output.contains(shown), outcome.output.constData());
        QCOMPARE(outcome.errors.contains("windows-1252"), isTold);
    }
    const QByteArray told = runTessel({ "fields", path }).errors;
    QCOMPARE(runTessel({ "check", path }).errors, told);
    QCOMPARE(runTessel({ "build", path, "--to", folder.filePath("t.sqlite") }).errors, told);
    const QString encoding = format < 118 ? "windows-1252" : "UTF-8";
    const Outcome listed = runTessel({ "fields", "-f", "json", path });
    QCOMPARE(firstListing(listed.output).value("encoding").toString(), encoding);
    const Outcome checked = runTessel({ "check", "-f", "json", path });
    QCOMPARE(firstListing(checked.output).value("encoding").toString(), encoding);
}

void tst_StatCommand::allCommandsTellTheSame_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QByteArray>("advice");
    QTest::newRow("encrypted") << "a.sav" << QByteArray("\x1C\0\0\0\0\0\0\0ENCRYPTEDSAV", 20)
                               << QByteArray("save it without a password");
    for (const QString name : { "household.sav", "household.dta" }) {
        const QByteArray whole = readFile(example(name));
        QTest::newRow(qPrintable("cut " + name))
            << name << whole.left(700) << QByteArray("get it anew");
    }
}

void tst_StatCommand::allCommandsTellTheSame()
{
    QFETCH(QString, name);
    QFETCH(QByteArray, bytes);
    QFETCH(QByteArray, advice);
    const QTemporaryDir folder;
    const QString path = folder.filePath(name);
    QVERIFY(writeFile(path, bytes));
    const QByteArray told = runTessel({ "fields", path }).errors;
    QVERIFY2(told.contains(advice), told.constData());
    for (const QStringList& command :
        { QStringList { "check", path }, { "build", path, "--to", folder.filePath("t.sqlite") } }) {
        const Outcome outcome = runTessel(command);
        QCOMPARE(outcome.status, 1);
        QCOMPARE(outcome.errors, told);
    }
}

// Of structures in order, one with a text, one with a set of labels larger than libreadstat takes.
void tst_StatCommand::soundFileThatIsNotSupported()
{
    QTemporaryDir folder;
    QStringList paths;
    for (const int format : { 117, 118 }) {
        paths.append(folder.filePath(QStringLiteral("text%1.dta").arg(format)));
        StatFileWriter texts;
        readstat_writer_set_file_format_version(texts.get(), quint8(format));
        texts.add("remarks", READSTAT_TYPE_STRING_REF, nullptr);
        readstat_add_string_ref(texts.get(), QByteArray(17 << 20, 'x').constData());
        QVERIFY(texts.write(paths.constLast(), TStatFileKind::Stata));
    }
    const QString spss = folder.filePath("labels.sav");
    StatFileWriter labels;
    readstat_label_set_t* places = labels.addLabels("places", READSTAT_TYPE_DOUBLE);
    for (int code = 0; code < 1'000'000; ++code)
        readstat_label_double_value(places, code, "x");
    readstat_variable_set_label(
        labels.add("PLACE", READSTAT_TYPE_DOUBLE, "F8.0", places), "Place"); // not of whole words
    readstat_label_set_t* names = labels.addLabels("names", READSTAT_TYPE_STRING);
    readstat_label_string_value(names, "abcdefghijkl", "First");
    labels.add("NAME", READSTAT_TYPE_STRING, "A20", names, 20);
    paths.append(spss);
    QVERIFY(labels.write(spss, TStatFileKind::Spss));

    for (const QString& path : qAsConst(paths)) {
        const Outcome outcome = runTessel({ "fields", path });
        QCOMPARE(outcome.status, 1);
        QVERIFY2(
            outcome.errors.contains("not supported by libreadstat"), outcome.errors.constData());
        QVERIFY(!outcome.errors.contains("damaged"));
        QFile file(path);
        QVERIFY(file.resize(file.size() / 2));
        const QByteArray errors = runTessel({ "fields", path }).errors;
        QVERIFY2(
            errors.contains("damaged") && !errors.contains("not supported"), errors.constData());
    }
}

// The structure is sound, and yet there is nothing to save in another way.
void tst_StatCommand::damagedTextIsDamage()
{
    QTemporaryDir folder;
    const QString path = folder.filePath("text.sav");
    StatFileWriter writer;
    readstat_variable_set_label(writer.add("AGE", READSTAT_TYPE_DOUBLE, "F8.0"), "Age in years");
    QVERIFY(writer.write(path, TStatFileKind::Spss));
    QByteArray bytes = readFile(path);
    bytes[bytes.indexOf("Age in years")] = '\xff';
    QVERIFY(writeFile(path, bytes));
    const Outcome outcome = runTessel({ "fields", path });
    QCOMPARE(outcome.status, 1);
    QVERIFY2(outcome.errors.contains("damaged"), outcome.errors.constData());
    QVERIFY2(!outcome.errors.contains("not supported"), outcome.errors.constData());
}

void tst_StatCommand::foreignDateIsNotSupported()
{
    QTemporaryDir folder;
    const QString path = folder.filePath("date.sav");
    StatFileWriter writer;
    writer.add("AGE", READSTAT_TYPE_DOUBLE, "F8.0");
    QVERIFY(writer.write(path, TStatFileKind::Spss));
    QByteArray bytes = readFile(path);
    bytes.replace(92, 9, "03 Xyz 17");
    QVERIFY(writeFile(path, bytes));
    const Outcome outcome = runTessel({ "fields", path });
    QCOMPARE(outcome.status, 1);
    QVERIFY2(outcome.errors.contains("not supported by libreadstat"), outcome.errors.constData());
    QVERIFY2(outcome.errors.contains("save it anew"), outcome.errors.constData());
}

void tst_StatCommand::notesOfVariables()
{
    QTemporaryDir folder;
    const QString path = folder.filePath("notes.dta");
    StatFileWriter writer;
    readstat_writer_set_file_format_version(writer.get(), 118);
    readstat_add_note(writer.get(), "To be moved");
    writer.add("age", READSTAT_TYPE_INT32, nullptr);
    QVERIFY(writer.write(path, TStatFileKind::Stata));
    QByteArray bytes = readFile(path);
    const int owner = bytes.indexOf(QByteArray("_dta\0", 5));
    QVERIFY(owner > 0);
    bytes.replace(owner, 5, QByteArray("age\0\0", 5));
    QVERIFY(writeFile(path, bytes));
    const Outcome outcome = runTessel({ "fields", "-f", "json", path });
    QCOMPARE(outcome.status, 0);
    const QJsonObject field =
        firstListing(outcome.output).value("fields").toArray().at(0).toObject();
    QCOMPARE(field.value("note").toString(), QStringLiteral("To be moved"));
    QVERIFY(firstListing(outcome.output).value("notes").toArray().isEmpty());
}

void tst_StatCommand::longTextHasNoLength()
{
    QTemporaryDir folder;
    const QString path = folder.filePath("text.dta");
    StatFileWriter writer;
    readstat_writer_set_file_format_version(writer.get(), 118);
    writer.add("remarks", READSTAT_TYPE_STRING_REF, "%9s");
    QVERIFY(writer.write(path, TStatFileKind::Stata));
    const Outcome outcome = runTessel({ "fields", "-f", "json", path });
    QCOMPARE(outcome.status, 0);
    const QJsonObject field =
        firstListing(outcome.output).value("fields").toArray().at(0).toObject();
    QCOMPARE(field.value("type").toString(), QStringLiteral("string"));
    QVERIFY(field.contains("length") && field.value("length").isNull());
}

void tst_StatCommand::readFailureNamesTheFile_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<int>("bytes");
    QTest::addColumn<QString>("way");
    // What the kind is found by is read first, then the file itself, which fails in each pass.
    const QVector<QStringList> commands { { "fields" }, { "fields", "--rules", "established" },
        { "tree" }, { "tree", "--rules", "established" }, { "export", "--to", "sql" } };
    for (const int bytes : { 20'000, 70'000, 200'000 }) {
        for (const QStringList& command : commands) {
            for (const QString& way : { QString(), QString("ENDS"), QString("GROWS") }) {
                if (!way.isEmpty() && bytes != 70'000)
                    continue;
                QTest::addRow(
                    "%s, %d bytes %s", qPrintable(command.join(' ')), bytes, qPrintable(way))
                    << command << bytes << way;
            }
        }
    }
}

// A disk that fails, and a file that becomes shorter or longer meanwhile.
void tst_StatCommand::readFailureNamesTheFile()
{
    QFETCH(QStringList, arguments);
    QFETCH(int, bytes);
    QFETCH(QString, way);
    QTemporaryDir folder;
    const QString path = folder.filePath("person.dta");
    QVERIFY(writeFile(path, readFile(example("person.dta"))));
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("LD_PRELOAD", environment.value("LD_PRELOAD") + " " TESSEL_FAILING_READ);
    environment.insert("ASAN_OPTIONS", "verify_asan_link_order=0");
    environment.insert("FAILING_READ_FILE", QFileInfo(path).canonicalFilePath());
    environment.insert("FAILING_READ_BYTES", QString::number(bytes));
    if (!way.isEmpty())
        environment.insert("FAILING_READ_" + way, "1");
    const Outcome outcome = runTessel(arguments + QStringList { path }, {}, environment);
    QCOMPARE(outcome.status, 1);
    QCOMPARE(outcome.output, QByteArray());
    const QByteArray reason =
        way.isEmpty() ? "Input/output error" : "it was changed while it was read";
    QVERIFY2(outcome.errors.contains(path.toUtf8() + ": error: cannot be read: " + reason),
        outcome.errors.constData());
}

// libreadstat tells it as it tells damage, or does not notice it and crashes.
void tst_StatCommand::tooLittleMemory()
{
#ifdef __SANITIZE_ADDRESS__
    QSKIP("the sanitizer's own memory has no limit");
#endif
    QTemporaryDir folder;
    for (const TStatFileKind kind : { TStatFileKind::Spss, TStatFileKind::Stata }) {
        const bool isSpss = kind == TStatFileKind::Spss;
        const auto type = isSpss ? READSTAT_TYPE_DOUBLE : READSTAT_TYPE_INT32;
        const QString path = folder.filePath(isSpss ? "labels.sav" : "labels.dta");
        StatFileWriter writer;
        readstat_label_set_t* labels = writer.addLabels("places", type);
        for (int code = 0; code < 150'000; ++code) {
            const QByteArray label = "Place " + QByteArray::number(code);
            if (isSpss)
                readstat_label_double_value(labels, code, label.constData());
            else
                readstat_label_int32_value(labels, code, label.constData());
        }
        writer.add("PLACE", type, isSpss ? "F8.0" : nullptr, labels);
        QVERIFY(writer.write(path, kind));
        bool isTold = false;
        for (int limit = 60'000; limit <= 130'000; limit += 5'000) {
            const QString script =
                QStringLiteral("ulimit -v %1; exec \"$0\" fields \"$1\"").arg(limit);
            const Outcome outcome = runProgram("sh", { "-c", script, TESSEL_PROGRAM, path });
            const bool isStarted = outcome.errors.startsWith(path.toUtf8());
            if (outcome.status == 0 || !isStarted)
                continue;
            isTold = true;
            QCOMPARE(outcome.output, QByteArray());
            QVERIFY2(outcome.errors.contains("more memory than there is; end other programs")
                    || outcome.errors.contains("too little memory may cause that"),
                outcome.errors.constData());
        }
        QVERIFY(isTold);
    }
}

void tst_StatCommand::damagedLabelsEndWithAStatus_data()
{
    QTest::addColumn<QString>("rules");
    QTest::newRow("as written") << QStringLiteral("written");
    QTest::newRow("established") << QStringLiteral("established");
}

// The variables are listed, what is missing is told, and once only.
void tst_StatCommand::damagedLabelsEndWithAStatus()
{
    QFETCH(QString, rules);
    QTemporaryDir folder;
    const QString path = folder.filePath("labels.sav");
    StatFileWriter writer;
    readstat_label_set_t* labels = writer.addLabels("L", READSTAT_TYPE_STRING);
    readstat_label_string_value(labels, "abcdefghijkl", "first");
    writer.add("A", READSTAT_TYPE_STRING, "A20", labels, 20);
    QVERIFY(writer.write(path, TStatFileKind::Spss));
    QByteArray bytes = readFile(path);
    bytes.replace(bytes.indexOf("first") - 4, 4, QByteArray(4, '\x7f')); // the label's length
    QVERIFY(writeFile(path, bytes));
    const Outcome outcome = runTessel({ "fields", "--rules", rules, "-f", "json", path });
    QCOMPARE(outcome.status, 1);
    QCOMPARE(outcome.errors.count(": error: "), 1);
    QCOMPARE(firstListing(outcome.output).value("fields").toArray().size(), 1);
    // No data are taken for checked that could not be.
    for (const QStringList& command :
        { QStringList { "check", path }, { "build", path, "--to", folder.filePath("t.sqlite") } }) {
        const Outcome refused = runTessel(command);
        QCOMPARE(refused.status, 1);
        QVERIFY(refused.output.isEmpty());
        QVERIFY2(refused.errors.contains("the value labels cannot be read")
                && refused.errors.contains("its data are not read"),
            refused.errors.constData());
    }
}

QTEST_GUILESS_MAIN(tst_StatCommand)
#include "tst_StatCommand.moc"
