// Any file, opened as what it is. TESSEL_CORPUS names a folder of real files in sub-folders by
// kind.
#include "StatFiles.h"

#include <model_Tessel/CSProDataImport.h>
#include <model_Tessel/DictionaryFile.h>
#include <model_Tessel/Entity.h>
#include <model_Tessel/STATADataImport.h>
#include <model_Tessel/StatInput.h>

#include <QMessageBox>
#include <QTemporaryDir>
#include <QtTest>

#include <sys/stat.h>
#include <unistd.h>

using Kind = DictionaryFileProblem::Kind;
using Severity = DictionaryFileProblem::Severity;
using FileKind = DictionaryFileKind;

Q_DECLARE_METATYPE(Kind)
Q_DECLARE_METATYPE(FileKind)

namespace {

QString fixture(const QString& name)
{
    return QString(TESSEL_TEST_DATA "/") + name;
}

QString example(const QString& name)
{
    return QString(TESSEL_EXAMPLES "/") + name;
}

QByteArray bytesOf(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        qFatal("no file %s", qPrintable(path));
    return file.readAll();
}

DictionaryFileOptions asWritten()
{
    DictionaryFileOptions options;
    options.reading = CSProReading::AsWritten;
    return options;
}

DictionaryFile read(const QString& path)
{
    return readDictionaryFile(path, asWritten());
}

const DictionaryFileProblem* problemOf(const DictionaryFile& file, Kind kind)
{
    for (const DictionaryFileProblem& problem : file.problems) {
        if (problem.kind == kind)
            return &problem;
    }
    return nullptr;
}

QStringList texts(const DictionaryFile& file)
{
    QStringList list;
    for (const DictionaryFileProblem& problem : file.problems)
        list.append(problem.text);
    return list;
}

// What the process writes to standard output while it lives.
class OutputCapture {
public:
    explicit OutputCapture(const QString& path)
        : m_path(path)
        , m_output(dup(STDOUT_FILENO))
    {
        std::fflush(stdout);
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly))
            qFatal("cannot write %s", qPrintable(path));
        dup2(file.handle(), STDOUT_FILENO);
    }

    ~OutputCapture()
    {
        end();
        close(m_output);
    }

    QByteArray end()
    {
        std::fflush(stdout);
        dup2(m_output, STDOUT_FILENO);
        return bytesOf(m_path);
    }

private:
    Q_DISABLE_COPY(OutputCapture)

    QString m_path;
    int m_output;
};

} // namespace

class tst_DictionaryFile : public QObject {
    Q_OBJECT

private slots:
    void init();
    void kinds_data();
    void kinds();
    void failures_data();
    void failures();
    void pipe();
    void unreadable();
    void otherKind_data();
    void otherKind();
    void unusedOptions();
    void encodings_data();
    void encodings();
    void languages();
    void oddities();
    void decimalQuestion();
    void jsonByTheEstablishedRules();
    void readingThatStops();
    void db();
    void damagedLabels();
    void statImporters();
    void importersKeepTheirOwnReport();
    void olderStataEncoding();
    void everyCut_data();
    void everyCut();
    void corpus_data();
    void corpus();

private:
    QString write(const QByteArray& bytes, const QString& name = QStringLiteral("file"));

    std::unique_ptr<QTemporaryDir> m_folder;
};

void tst_DictionaryFile::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
}

QString tst_DictionaryFile::write(const QByteArray& bytes, const QString& name)
{
    QFile file(m_folder->filePath(name));
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        qFatal("cannot write %s", qPrintable(name));
    return file.fileName();
}

void tst_DictionaryFile::kinds_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<FileKind>("kind");
    QTest::addColumn<QString>("encoding");

    QTest::newRow("text form") << fixture("basic.dcf") << FileKind::CSPro << "UTF-8";
    QTest::newRow("JSON") << fixture("json_household.dcf") << FileKind::CSPro << "UTF-8";
    QTest::newRow("SPSS") << example("household.sav") << FileKind::Spss << "UTF-8";
    QTest::newRow("Stata") << example("person.dta") << FileKind::Stata << "UTF-8";
}

// Whatever the name of the file is.
void tst_DictionaryFile::kinds()
{
    QFETCH(QString, path);
    const DictionaryFile file = read(write(bytesOf(path), "name.without_meaning"));
    QVERIFY2(file.isWhole(), qPrintable(texts(file).join('\n')));
    QTEST(file.kind, "kind");
    QTEST(file.encoding, "encoding");
    QVERIFY(!file.isEncodingAssumed);
    QCOMPARE(file.csproImporter() != nullptr, file.kind == FileKind::CSPro);
    QCOMPARE(file.description != nullptr, file.kind != FileKind::CSPro);
    QCOMPARE(file.text().isEmpty(), file.kind != FileKind::CSPro);
    QCOMPARE(file.input != nullptr, file.kind != FileKind::CSPro);
    const DictionaryPointer tree = file.buildTree();
    QVERIFY(tree);
    QVERIFY(!tree->getRoot()->getVariables()->isEmpty());
}

void tst_DictionaryFile::failures_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("name");
    QTest::addColumn<Kind>("kind");
    QTest::addColumn<QString>("text");

    QTest::newRow("empty") << QByteArray() << "a.dcf" << Kind::UnreadableFile << "is empty";
    QTest::newRow("other text") << QByteArray("first\r\n\nthird") + QByteArray(70, 'x') << "a.dcf"
                                << Kind::NoDictionary
                                << "is no CSPro dictionary, SPSS or Stata file; it begins:";
    QTest::newRow("zero") << QByteArray("[Dictionary]\nName=A\0\n", 21) << "a.dcf" << Kind::Binary
                          << "is a binary file and no CSPro dictionary, CSPro DB, SPSS or Stata "
                             "file; if it is text, name its encoding";
    QTest::newRow("control characters")
        << QByteArray("\x01\x02text") << "a.dcf" << Kind::Binary << "is a binary file";
    QTest::newRow("encrypted CSPro DB") << QByteArray(200, '\x01') << "a.CSDB" << Kind::UnreadableDb
                                        << "is no CSPro DB that can be read";
    QTest::newRow("encrypted SPSS")
        << QByteArray("12345678ENCRYPTEDSAV") << "a.sav" << Kind::Encrypted << "is encrypted";
    QTest::newRow("CSPro DB") << QByteArray("SQLite format 3\0", 16) << "a.csdb"
                              << Kind::DbNotOpened << "is a CSPro DB or other SQLite file";
    QTest::newRow("SPSS header alone")
        << QByteArray("$FL2") << "a.sav" << Kind::Damaged << "cannot be read as SPSS file: ";
    QTest::newRow("Stata header alone") << QByteArray("\x72\x02\x01\x00", 4) << "a.dta"
                                        << Kind::Damaged << "cannot be read as Stata file: ";
    QTest::newRow("UTF-16 cut in a character")
        << QByteArray("\xFF\xFE[\0D", 5) << "a.dcf" << Kind::InvalidEncoding
        << "the text is not valid UTF-16LE; name another encoding";
}

void tst_DictionaryFile::failures()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QString, name);
    QFETCH(Kind, kind);
    QFETCH(QString, text);
    const QString path = write(bytes, name);
    const DictionaryFile file = read(path);
    QCOMPARE(file.path, path);
    QVERIFY(!file.hasDictionary());
    QVERIFY(!file.isWhole());
    QVERIFY(!file.buildTree());
    QVERIFY(!file.importer);
    QVERIFY(!file.problems.isEmpty());
    QCOMPARE(file.problems.first().kind, kind);
    QCOMPARE(file.problems.first().severity, Severity::Error);
    QVERIFY2(file.problems.first().text.startsWith(text), qPrintable(texts(file).join('\n')));
    if (kind == Kind::NoDictionary) {
        QCOMPARE(file.kind, FileKind::Unknown);
        QCOMPARE(file.problems.first().details,
            QStringList({ "first", "", "third" + QString(55, 'x') + "..." }));
    }
}

void tst_DictionaryFile::pipe()
{
    const QString path = m_folder->filePath("pipe");
    QCOMPARE(mkfifo(QFile::encodeName(path).constData(), 0600), 0);
    for (const QString& name : { path, m_folder->path() }) {
        const DictionaryFile file = read(name);
        QVERIFY(!file.hasDictionary());
        QCOMPARE(texts(file),
            QStringList("is a directory, a pipe or a device; give the name of a file"));
    }
}

void tst_DictionaryFile::unreadable()
{
    const QString missing = m_folder->filePath("missing.dcf");
    QCOMPARE(texts(read(missing)), QStringList("no such file"));
    QCOMPARE(texts(read(QString())), QStringList("no such file"));
    QFile large(m_folder->filePath("large.dcf"));
    QVERIFY(large.open(QIODevice::WriteOnly));
    QVERIFY(large.write("[Dictionary]\n") > 0);
    QVERIFY(large.resize(qint64(257) * 1'048'576)); // takes no room
    QCOMPARE(texts(read(large.fileName())),
        QStringList("is larger than 256 MiB, which no dictionary is"));
    const QString path = write(bytesOf(fixture("basic.dcf")));
    QVERIFY(QFile::setPermissions(path, QFileDevice::Permissions()));
    if (geteuid() != 0)
        QVERIFY(texts(read(path)).value(0).startsWith("cannot be read: "));
}

void tst_DictionaryFile::otherKind_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<FileKind>("wanted");
    QTest::addColumn<QString>("text");

    QTest::newRow("SPSS for CSPro")
        << example("person.sav") << FileKind::CSPro << "is no CSPro dictionary but an SPSS file";
    QTest::newRow("Stata for CSPro")
        << example("person.dta") << FileKind::CSPro << "is no CSPro dictionary but a Stata file";
    QTest::newRow("CSPro for SPSS") << fixture("basic.dcf") << FileKind::Spss << "is no SPSS file";
    QTest::newRow("SPSS for Stata")
        << example("person.sav") << FileKind::Stata << "is no Stata file";
}

void tst_DictionaryFile::otherKind()
{
    QFETCH(QString, path);
    QFETCH(FileKind, wanted);
    QFETCH(QString, text);
    DictionaryFileOptions options = asWritten();
    options.kind = wanted;
    const DictionaryFile file = readDictionaryFile(path, options);
    QVERIFY(!file.hasDictionary());
    const DictionaryFileProblem* problem = problemOf(file, Kind::OtherKind);
    QVERIFY(problem);
    QCOMPARE(problem->text, text);
    QVERIFY(file.kind != wanted);
}

void tst_DictionaryFile::unusedOptions()
{
    DictionaryFileOptions options = asWritten();
    options.encoding = "windows-1252";
    options.language = "FR";
    const DictionaryFile stat = readDictionaryFile(example("person.sav"), options);
    QVERIFY(stat.isWhole());
    QCOMPARE(stat.problems.size(), 2);
    QCOMPARE(stat.problems.at(0).kind, Kind::EncodingUnused);
    QCOMPARE(stat.problems.at(1).kind, Kind::LanguageUnused);
    QCOMPARE(stat.problems.at(1).severity, Severity::Note);
    options.language.clear();
    const DictionaryFile db =
        readDictionaryFile(fixture("basic.csdb"), bytesOf(fixture("basic.dcf")), options);
    QVERIFY(db.isWhole());
    QCOMPARE(db.problems.first().kind, Kind::DbEncodingUnused);
    QCOMPARE(db.encoding, QString("UTF-8"));
}

void tst_DictionaryFile::encodings_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QByteArray>("wanted");
    QTest::addColumn<QString>("encoding");
    QTest::addColumn<int>("assumedLine"); // 0: not assumed

    const QByteArray head = "[Dictionary]\nName=D\n[Record]\nName=R\n";
    const QByteArray item = "[Item]\nName=A\nStart=1\nLen=1\nLabel=\xC4ge\n";
    QTest::newRow("ASCII") << head << QByteArray() << "UTF-8" << 0;
    QTest::newRow("mark") << "\xEF\xBB\xBF" + head << QByteArray("windows-1252") << "UTF-8" << 0;
    QTest::newRow("assumed") << head + item << QByteArray() << "windows-1252" << 9;
    QTest::newRow("named") << head + item << QByteArray("ISO-8859-1") << "ISO-8859-1" << 0;
}

void tst_DictionaryFile::encodings()
{
    QFETCH(QByteArray, bytes);
    QFETCH(int, assumedLine);
    DictionaryFileOptions options = asWritten();
    QFETCH(QByteArray, wanted);
    options.encoding = wanted;
    const DictionaryFile file = readDictionaryFile(write(bytes), options);
    QVERIFY2(file.hasDictionary(), qPrintable(texts(file).join('\n')));
    QTEST(file.encoding, "encoding");
    QCOMPARE(file.isEncodingAssumed, assumedLine > 0);
    const DictionaryFileProblem* problem = problemOf(file, Kind::AssumedEncoding);
    QCOMPARE(problem ? problem->line : 0, assumedLine);
    QByteArray utf8 = bytes.startsWith('\xEF') ? bytes.mid(3) : bytes;
    QCOMPARE(file.text(), utf8.replace("\xC4", "\xC3\x84"));

    options.encoding = "UTF-8";
    const DictionaryFile named = readDictionaryFile(write(bytes), options);
    const bool isUtf8 = !bytes.contains('\xC4');
    QCOMPARE(named.hasDictionary(), isUtf8);
    QCOMPARE(problemOf(named, Kind::InvalidEncoding) == nullptr, isUtf8);
}

void tst_DictionaryFile::languages()
{
    DictionaryFileOptions options = asWritten();
    options.language = "XX";
    const DictionaryFile written = readDictionaryFile(fixture("basic.dcf"), options);
    QVERIFY(!written.hasDictionary());
    QCOMPARE(written.problems.last().kind, Kind::NoSuchLanguage);
    QCOMPARE(
        written.problems.last().text, QString("the dictionary has no languages, so none is XX"));
    options.reading = CSProReading::Established;
    const DictionaryFile established = readDictionaryFile(fixture("basic.dcf"), options);
    QVERIFY(!established.hasDictionary());
    QCOMPARE(established.problems.last().kind, Kind::LanguageByEstablishedRules);
}

void tst_DictionaryFile::oddities()
{
    const DictionaryFile file = read(write(
        "[Dictionary]\nName=D\nColour=red\n[Record]\nName=R\n[Item]\nName=A\nStart=0\nLen=1\n"
        "DataType=Numeric\nDecimal=2\n[Item]\nName=A\nStart=1\nLen=1\n[Item]\nStart=1\nLen=1\n"
        "[Record]\nName=r\n"));
    QVERIFY(file.isWhole());
    QStringList found;
    for (const DictionaryFileProblem& problem : file.problems) {
        QCOMPARE(problem.severity, Severity::Warning);
        if (problem.kind == Kind::OddItem || problem.kind == Kind::OddRecord)
            found.append(problem.group);
    }
    found.sort();
    QCOMPARE(found,
        QStringList({ "column below 1", "no item name", "repeated item", "repeated record",
            "too many decimals" }));
    const DictionaryFileProblem* key = problemOf(file, Kind::Dictionary);
    QVERIFY(key);
    QCOMPARE(key->line, 3);
    QCOMPARE(key->text, QString("the key 'Colour' is unknown and was passed over"));
    const DictionaryFile bare = read(fixture("no_items.dcf"));
    QVERIFY(bare.hasDictionary());
    QVERIFY(problemOf(bare, Kind::NoItems));
}

void tst_DictionaryFile::decimalQuestion()
{
    DictionaryFileOptions options = asWritten();
    options.reading = CSProReading::Established;
    int questions = 0;
    options.decimalQuestion = [&](const CSProProblem&) {
        ++questions;
        return int(QMessageBox::No);
    };
    const DictionaryFile file = readDictionaryFile(fixture("decimals.dcf"), options);
    QCOMPARE(questions, 2);
    QVERIFY(file.hasDictionary());
    const DictionaryFileProblem* problem = problemOf(file, Kind::DecimalCodesDropped);
    QVERIFY(problem);
    QVERIFY(problem->text.contains("was dropped: it has decimal codes"));
}

void tst_DictionaryFile::jsonByTheEstablishedRules()
{
    DictionaryFileOptions options = asWritten();
    options.reading = CSProReading::Established;
    const DictionaryFile file = readDictionaryFile(fixture("json_household.dcf"), options);
    QVERIFY(!file.hasDictionary());
    QCOMPARE(file.kind, FileKind::CSPro);
    QCOMPARE(file.problems.first().kind, Kind::JsonByEstablishedRules);
    const DictionaryFile wide = read(write(QByteArray("\xFF\xFE{\0}\0", 6)));
    QVERIFY(!wide.hasDictionary());
    QCOMPARE(wide.problems.first().kind, Kind::JsonEncoding);
}

void tst_DictionaryFile::readingThatStops()
{
    const DictionaryFile file = read(write("{\n\"name\": "));
    QVERIFY(!file.hasDictionary());
    QCOMPARE(file.problems.size(), 2);
    QVERIFY(file.problems.first().text.startsWith("the JSON cannot be read: "));
    QCOMPARE(file.problems.first().line, 2);
    QCOMPARE(file.problems.first().severity, Severity::Error);
    QCOMPARE(file.problems.last().kind, Kind::ReadingStopped);
}

void tst_DictionaryFile::db()
{
    const QString path = fixture("basic.csdb");
    const DictionaryFile refused = read(path);
    QVERIFY(!refused.hasDictionary());
    QCOMPARE(refused.kind, FileKind::CSProDb);
    QCOMPARE(refused.problems.last().kind, Kind::DbNotOpened);
    const DictionaryFile file =
        readDictionaryFile(path, bytesOf(fixture("basic.dcf")), asWritten());
    QVERIFY(file.isWhole());
    QCOMPARE(file.kind, FileKind::CSProDb);
    QCOMPARE(file.path, path);
    const DictionaryFile plain = read(fixture("basic.dcf"));
    QCOMPARE(file.csproImporter()->fields->size(), plain.csproImporter()->fields->size());
    QVERIFY(!file.csproImporter()->fields->empty());
    QVERIFY(!readDictionaryFile(path, QByteArray("no dictionary")).hasDictionary());
    QVERIFY(!readDictionaryFile(path, QByteArray()).hasDictionary());
}

void tst_DictionaryFile::damagedLabels()
{
    const QByteArray bytes = bytesOf(example("person.dta"));
    const QString path = write(bytes.left(bytes.indexOf("<value_labels>") + 40));
    const DictionaryFile file = read(path);
    QVERIFY(file.hasDictionary());
    QVERIFY(!file.isWhole());
    QCOMPARE(file.problems.first().kind, Kind::LabelsMissing);
    QVERIFY(file.buildTree());
    QVERIFY(!file.description->variables.isEmpty());
}

void tst_DictionaryFile::statImporters()
{
    DictionaryFileOptions options = asWritten();
    options.withStatImporter = true;
    for (const QString name : { "person.sav", "person.dta" }) {
        const DictionaryFile described = read(example(name));
        QVERIFY(!described.importer);
        const DictionaryFile file = readDictionaryFile(example(name), options);
        QVERIFY(file.isWhole());
        QVERIFY(file.importer);
        QVERIFY(!file.csproImporter());
        QCOMPARE(file.importer->fields->size(), file.description->variables.size());
        QVERIFY(file.buildTree());
    }
}

// The importer of Stata files tells failures on standard output, unless this reads with it.
void tst_DictionaryFile::importersKeepTheirOwnReport()
{
    const QString path = write(bytesOf(example("person.dta")).left(300));
    OutputCapture byImporter(m_folder->filePath("output"));
    TSTATADataImport importer(path);
    importer.openFile();
    const QByteArray own = byImporter.end();
    QVERIFY2(own.startsWith("Error processing "), own.constData());
    OutputCapture byFile(m_folder->filePath("output"));
    DictionaryFileOptions options = asWritten();
    options.withStatImporter = true;
    const DictionaryFile file = readDictionaryFile(path, options);
    QCOMPARE(byFile.end(), QByteArray());
    QCOMPARE(file.problems.first().kind, Kind::Damaged);
}

void tst_DictionaryFile::olderStataEncoding()
{
    for (const char* label : { "plain", "\xC3\xA4" }) {
        StatFileWriter writer;
        readstat_variable_t* variable = writer.add("v", READSTAT_TYPE_DOUBLE, "%9.0g");
        readstat_variable_set_label(variable, label);
        readstat_writer_set_file_format_version(writer.get(), 114);
        QVERIFY(writer.write(m_folder->filePath("old.dta"), TStatFileKind::Stata));
        const DictionaryFile file = read(m_folder->filePath("old.dta"));
        QVERIFY(file.isWhole());
        const bool isAscii = qstrcmp(label, "plain") == 0;
        QCOMPARE(file.isEncodingAssumed, !isAscii);
        QCOMPARE(file.encoding, QString("windows-1252"));
        QCOMPARE(problemOf(file, Kind::AssumedStataEncoding) == nullptr, isAscii);
    }
}

void tst_DictionaryFile::everyCut_data()
{
    QTest::addColumn<QString>("path");
    QTest::newRow("text form") << fixture("basic.dcf");
    QTest::newRow("JSON") << fixture("json_household.dcf");
    QTest::newRow("SPSS") << example("household.sav");
    QTest::newRow("Stata") << example("household.dta");
}

// However much of a file is left, there is a dictionary or an error that says why there is none.
void tst_DictionaryFile::everyCut()
{
    QFETCH(QString, path);
    const QByteArray bytes = bytesOf(path);
    const int step = qMax(1, bytes.size() / 150);
    for (int size = 0; size < bytes.size(); size += step) {
        const DictionaryFile file = read(write(bytes.left(size)));
        QVERIFY2(
            file.hasDictionary() || !file.problems.isEmpty(), qPrintable(QString::number(size)));
        QCOMPARE(file.buildTree() != nullptr, file.hasDictionary());
        for (const DictionaryFileProblem& problem : file.problems)
            QVERIFY(!problem.text.isEmpty());
    }
}

void tst_DictionaryFile::corpus_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<FileKind>("kind");
    if (!qEnvironmentVariableIsSet("TESSEL_CORPUS"))
        QSKIP("TESSEL_CORPUS is not set");
    const std::pair<const char*, FileKind> folders[] = { { "cspro", FileKind::CSPro },
        { "cspro-json", FileKind::CSPro }, { "csdb", FileKind::CSProDb }, { "sav", FileKind::Spss },
        { "dta", FileKind::Stata } };
    for (const auto& [name, kind] : folders) {
        const QFileInfoList files = sampleFolder(name).entryInfoList(
            { "*.dcf", "*.csdb", "*.sav", "*.zsav", "*.dta" }, QDir::Files);
        QVERIFY2(!files.isEmpty(), name);
        for (const QFileInfo& file : files)
            QTest::newRow(qPrintable(file.fileName())) << file.filePath() << kind;
    }
}

void tst_DictionaryFile::corpus()
{
    QFETCH(QString, path);
    QFETCH(FileKind, kind);
    const DictionaryFile file = read(path);
    QCOMPARE(file.kind, kind);
    const bool isReadable = problemOf(file, Kind::Unsupported) == nullptr
        && problemOf(file, Kind::Damaged) == nullptr && problemOf(file, Kind::Encrypted) == nullptr
        && kind != FileKind::CSProDb;
    QCOMPARE(file.hasDictionary(), isReadable);
    QCOMPARE(problemOf(file, Kind::DbNotOpened) != nullptr, kind == FileKind::CSProDb);
    QVERIFY(file.isWhole() || !file.problems.isEmpty());
}

QTEST_MAIN(tst_DictionaryFile)

#include "tst_DictionaryFile.moc"
