#include <model_Tessel/SPSSDataImport.h>
#include <model_Tessel/STATADataImport.h>
#include <model_Tessel/StatDictionary.h>

#include "StatFiles.h"

#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QtTest>

#include <algorithm>
#include <array>
#include <memory>

// Damages files in many ways and has a child read them. What a sanitizer reports of the child is a
// failure unless it is libreadstat that does it. Every run makes the same files;
// TESSEL_MUTATIONS tells how many.

namespace {

constexpr int UsualMutations = 600;
constexpr quint32 Seed = 117'118;
constexpr qint64 LargestOriginal = 60'000;

struct Original {
    TStatFileKind kind;
    QByteArray bytes;
};

QByteArray bytesOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// With notes, labels and missing values; the formats of Stata differ in the sizes of their parts.
QByteArray writtenFile(const QTemporaryDir& folder, TStatFileKind kind, int format)
{
    const bool isSpss = kind == TStatFileKind::Spss;
    const readstat_type_t type = isSpss ? READSTAT_TYPE_DOUBLE : READSTAT_TYPE_INT32;
    StatFileWriter writer;
    if (format > 0)
        readstat_writer_set_file_format_version(writer.get(), static_cast<quint8>(format));
    readstat_add_note(writer.get(), "A note");
    readstat_label_set_t* labels = writer.addLabels("set", type);
    for (const int code : { 1, 2, 9 }) {
        if (isSpss)
            readstat_label_double_value(labels, code, "a label");
        else
            readstat_label_int32_value(labels, code, "a label");
    }
    writer.add("FIRST", type, nullptr, labels);
    if (isSpss) {
        readstat_label_set_t* texts = writer.addLabels("texts", READSTAT_TYPE_STRING);
        readstat_label_string_value(texts, "abcdefghijkl", "a long text");
        writer.add("TEXT", READSTAT_TYPE_STRING, "A20", texts, 20);
        readstat_variable_t* missing = writer.add("MISSING", type, "F4.1");
        readstat_variable_add_missing_double_range(missing, 90, 99);
        writer.add("LONG", READSTAT_TYPE_STRING, "A300", nullptr, 300);
    }
    writer.add("LAST", type, nullptr, labels);
    const QString path = folder.filePath(QStringLiteral("written"));
    return writer.write(path, kind, 3) ? bytesOf(path) : QByteArray();
}

QVector<Original> originals()
{
    const QTemporaryDir folder;
    QVector<Original> files;
    for (const int format : { 104, 105, 108, 110, 111, 114, 115, 117, 118, 119 })
        files.append({ TStatFileKind::Stata, writtenFile(folder, TStatFileKind::Stata, format) });
    files.append({ TStatFileKind::Spss, writtenFile(folder, TStatFileKind::Spss, 0) });
    QStringList paths = samplePaths();
    const QDir examples(QStringLiteral(TESSEL_EXAMPLES));
    for (const QString& name :
        examples.entryList({ QStringLiteral("*.sav"), QStringLiteral("*.dta") }, QDir::Files))
        paths.append(examples.filePath(name));
    for (const QString& path : qAsConst(paths)) {
        if (QFileInfo(path).size() <= LargestOriginal)
            files.append({ kindOf(path), bytesOf(path) });
    }
    return files;
}

// Most of what is read without the rows stands at the beginning.
int placeIn(const QByteArray& bytes, QRandomGenerator& random)
{
    const int most = random.bounded(2) == 0 ? bytes.size() : std::min(bytes.size(), 3000);
    return random.bounded(std::max(1, most));
}

void mutate(QByteArray& bytes, QRandomGenerator& random)
{
    static const std::array<QByteArray, 6> numbers { QByteArray(4, '\xff'), QByteArray(4, '\0'),
        QByteArray("\xff\xff\xff\x7f", 4), QByteArray("\0\0\0\x80", 4), QByteArray("\0\1\0\0", 4),
        QByteArray("\1\0\0\0", 4) };
    const int place = placeIn(bytes, random);
    switch (random.bounded(7)) {
    case 0:
        bytes.truncate(place);
        break;
    case 1:
        bytes[place] = static_cast<char>(bytes.at(place) ^ (1 << random.bounded(8)));
        break;
    case 2: // no nulls for a while: texts run on
        for (int end = std::min(bytes.size(), place + random.bounded(400)), i = place; i < end; ++i)
            bytes[i] = 'x';
        break;
    case 3:
        bytes.replace(place, 4, numbers[random.bounded(quint32(numbers.size()))]);
        break;
    case 4:
        bytes.remove(place, 1 + random.bounded(40));
        break;
    case 5:
        bytes.insert(place, bytes.mid(placeIn(bytes, random), random.bounded(60)));
        break;
    default:
        bytes[place] = static_cast<char>(random.bounded(256));
    }
    if (bytes.isEmpty())
        bytes = "x";
}

QByteArray mutation(const QByteArray& original, int index)
{
    QRandomGenerator random(Seed + quint32(index));
    QByteArray bytes = original;
    for (int changes = 1 + random.bounded(4); changes > 0; --changes)
        mutate(bytes, random);
    return bytes;
}

// As the command reads it, in the library's two ways.
void readAll(const QString& path, TStatFileKind kind)
{
    TStatInput input;
    input.open(path);
    readStatDescription(input, kind);
    readStatOutcome(input, kind);
    std::unique_ptr<TDataImport> importer;
    if (kind == TStatFileKind::Spss)
        importer = std::make_unique<TSPSSDataImport>(path);
    else
        importer = std::make_unique<TSTATADataImport>(path);
    importer->openFile();
    qDeleteAll(*importer->fields);
}

int childMain(const QStringList& arguments)
{
    const int count = arguments.value(2).toInt();
    const QVector<Original> files = originals();
    const QTemporaryDir folder;
    for (int index = arguments.value(1).toInt(); index < count; ++index) {
        const Original& original = files.at(index % files.size());
        QFile file(folder.filePath(QStringLiteral("mutation")));
        if (!file.open(QIODevice::WriteOnly))
            return 1;
        file.write(mutation(original.bytes, index));
        file.close();
        std::fprintf(stderr, "begin %d\n", index);
        readAll(file.fileName(), original.kind);
    }
    std::fprintf(stderr, "finished\n");
    return 0;
}

int mutationCount()
{
    bool isSet = false;
    const int count = qEnvironmentVariableIntValue("TESSEL_MUTATIONS", &isSet);
    return isSet ? count : UsualMutations;
}

// The stack of a report begins with a function that the sanitizer stands in for; the one behind it
// is whose fault it is.
bool isLibreadstatsOwn(const QByteArray& errors)
{
    const int report = errors.indexOf("ERROR: AddressSanitizer");
    const QList<QByteArray> lines = errors.mid(std::max(0, report)).split('\n');
    for (const QByteArray& line : lines) {
        const QByteArray frame = line.trimmed();
        if (!frame.startsWith('#') || frame.contains("sanitizer") || frame.contains("libasan")
            || frame.contains("libc.so"))
            continue;
        return frame.contains("libreadstat");
    }
    return report < 0; // died without a report: none of the instrumented code did it
}

} // namespace

class TestStatMutations : public QObject {
    Q_OBJECT

private slots:
    void mutationsAreTheSameInEveryRun();
    void damagedFilesAreReadWithinTheirBounds();
    void unendedSetNames_data();
    void unendedSetNames();
};

void TestStatMutations::mutationsAreTheSameInEveryRun()
{
    const QVector<Original> files = originals();
    QVERIFY(files.size() >= 15);
    for (const Original& file : files)
        QVERIFY(!file.bytes.isEmpty());
    QVERIFY(mutation(files.first().bytes, 3) == mutation(files.first().bytes, 3));
    QVERIFY(mutation(files.first().bytes, 3) != mutation(files.first().bytes, 4));
}

void TestStatMutations::damagedFilesAreReadWithinTheirBounds()
{
    const int count = mutationCount();
    int deaths = 0;
    for (int next = 0; next < count;) {
        const ChildResult child = runChild(
            { QStringLiteral("read"), QString::number(next), QString::number(count) }, 1'200'000);
        QVERIFY2(!child.errors.contains("runtime error:"), child.errors.right(4000).constData());
        const int begun = child.errors.lastIndexOf("begin ");
        const bool isFinished = child.errors.contains("\nfinished");
        QVERIFY(child.hasFinished && (isFinished || begun >= 0));
        if (isFinished) {
            QVERIFY2(
                child.exitCode == 0 && !child.hasCrashed, child.errors.right(4000).constData());
            break;
        }
        const QByteArray rest = child.errors.mid(begun);
        QVERIFY2(isLibreadstatsOwn(rest), rest.left(4000).constData());
        ++deaths;
        next = rest.mid(6, rest.indexOf('\n') - 6).toInt() + 1;
    }
    qInfo("%d mutations, libreadstat died %d times", count, deaths);
}

void TestStatMutations::unendedSetNames_data()
{
    QTest::addColumn<int>("format");
    QTest::addColumn<int>("size");
    QTest::newRow("105") << 105 << 9;
    QTest::newRow("108") << 108 << 9;
    QTest::newRow("110") << 110 << 33;
    QTest::newRow("115") << 115 << 33;
    QTest::newRow("117") << 117 << 33;
    QTest::newRow("118") << 118 << 129;
    QTest::newRow("119") << 119 << 129;
}

// Names that fill their places, of the last variable and of the set itself.
void TestStatMutations::unendedSetNames()
{
    QFETCH(int, format);
    QFETCH(int, size);
    const QTemporaryDir folder;
    QByteArray bytes = writtenFile(folder, TStatFileKind::Stata, format);
    const QByteArray written = QByteArray("set").leftJustified(size, '\0');
    const QByteArray unended(size, 'x');
    const int first = bytes.indexOf(written);
    const int last = bytes.indexOf(written, first + size);
    const int table = bytes.indexOf(written, last + size);
    QVERIFY(first > 0 && last == first + size && table > last);
    bytes.replace(last, size, unended);
    bytes.replace(table, size, unended);
    QFile file(folder.filePath(QStringLiteral("unended.dta")));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(bytes);
    file.close();

    const QString name(size, QLatin1Char('x'));
    const TStatFileDescription description =
        readStatDescription(file.fileName(), TStatFileKind::Stata);
    QVERIFY(description.isWhole());
    QCOMPARE(description.variables.at(1).labelSetName, name);
    QCOMPARE(description.variables.at(1).labelSet, 0);
    QCOMPARE(description.labelSets.at(0).name, name);

    TSTATADataImport importer(file.fileName());
    importer.openFile();
    QCOMPARE(importer.labelSets.size(), std::size_t(1));
    QCOMPARE(QString::fromStdString(importer.labelSets.begin()->first), name);
    QCOMPARE(importer.getField(1)->valueLabels.count(QLatin1Char('\t')), 3);
    qDeleteAll(*importer.fields);
}

STAT_TEST_MAIN(TestStatMutations, childMain)
#include "tst_StatMutations.moc"
