#include <model_Tessel/StatParser_p.h>

#include "StatFiles.h"

#include <QSet>
#include <QTemporaryDir>
#include <QVector>
#include <QtTest>

#include <cstdint>
#include <limits>
#include <stdexcept>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

enum class Input { Own, Buffered };

// All that one parse reports, in order, and its result. The values of the rows are counted and
// hashed, as they are many.
struct Report {
    QStringList lines;
    quint64 values = 0;
    uint hash = 0;
    int progressCalls = 0;
    readstat_error_t result = READSTAT_OK;
};

bool operator==(const Report& one, const Report& other)
{
    return one.lines == other.lines && one.values == other.values && one.hash == other.hash
        && one.progressCalls == other.progressCalls && one.result == other.result;
}

QString shown(const char* text)
{
    return text ? QString::fromUtf8(text) : QStringLiteral("(null)");
}

QString shown(readstat_value_t value)
{
    QString number;
    switch (readstat_value_type(value)) {
    case READSTAT_TYPE_STRING:
        number = shown(value.v.string_value);
        break;
    case READSTAT_TYPE_FLOAT:
        number = QString::number(double(value.v.float_value), 'g', 9);
        break;
    case READSTAT_TYPE_DOUBLE:
        number = QString::number(value.v.double_value, 'g', 17);
        break;
    default:
        number = QString::number(value.v.i32_value);
    }
    return QStringLiteral("%1:%2:%3:%4")
        .arg(value.type)
        .arg(number)
        .arg(int(value.tag))
        .arg(value.is_system_missing + 2 * value.is_tagged_missing);
}

int onMetadata(readstat_metadata_t* metadata, void* context)
{
    static_cast<Report*>(context)->lines.append(
        QStringLiteral("metadata %1 %2 %3 %4 %5 %6 %7")
            .arg(metadata->row_count)
            .arg(metadata->var_count)
            .arg(metadata->file_format_version)
            .arg(metadata->compression)
            .arg(metadata->endianness)
            .arg(shown(metadata->file_label), shown(metadata->file_encoding)));
    return READSTAT_HANDLER_OK;
}

int onNote(int index, const char* note, void* context)
{
    static_cast<Report*>(context)->lines.append(
        QStringLiteral("note %1 %2").arg(index).arg(shown(note)));
    return READSTAT_HANDLER_OK;
}

int onVariable(int index, readstat_variable_t* variable, const char* setName, void* context)
{
    QString line = QStringLiteral("variable %1 %2 %3 %4 %5 %6 %7 ")
                       .arg(index)
                       .arg(variable->type)
                       .arg(variable->storage_width)
                       .arg(variable->display_width)
                       .arg(variable->measure)
                       .arg(variable->alignment)
                       .arg(variable->offset);
    line += QStringList { shown(variable->name), shown(variable->label), shown(variable->format),
        shown(setName) }
                .join(QLatin1Char('|'));
    for (int range = 0; range < readstat_variable_get_missing_ranges_count(variable); ++range) {
        line += shown(readstat_variable_get_missing_range_lo(variable, range))
            + shown(readstat_variable_get_missing_range_hi(variable, range));
    }
    static_cast<Report*>(context)->lines.append(line);
    return READSTAT_HANDLER_OK;
}

int onValueLabel(const char* setName, readstat_value_t value, const char* label, void* context)
{
    static_cast<Report*>(context)->lines.append(
        QStringList { QStringLiteral("label"), shown(setName), shown(value), shown(label) }.join(
            QLatin1Char('|')));
    return READSTAT_HANDLER_OK;
}

int onValue(int row, readstat_variable_t* variable, readstat_value_t value, void* context)
{
    auto* report = static_cast<Report*>(context);
    ++report->values;
    report->hash = qHash(shown(value), report->hash) + uint(row) + uint(variable->index);
    return READSTAT_HANDLER_OK;
}

int onFrequencyWeight(readstat_variable_t* variable, void* context)
{
    static_cast<Report*>(context)->lines.append(QStringLiteral("weight ") + shown(variable->name));
    return READSTAT_HANDLER_OK;
}

void onError(const char* text, void* context)
{
    static_cast<Report*>(context)->lines.append(QStringLiteral("error ") + shown(text));
}

int onProgress(double progress, void* context)
{
    auto* report = static_cast<Report*>(context);
    ++report->progressCalls;
    report->hash = qHash(progress, report->hash);
    return READSTAT_HANDLER_OK;
}

int onProgressAbort(double progress, void* context)
{
    onProgress(progress, context);
    return READSTAT_HANDLER_ABORT;
}

Report reportOf(readstat_parser_t* parser, const QString& path, TStatFileKind kind,
    readstat_progress_handler progress = onProgress)
{
    readstat_set_metadata_handler(parser, onMetadata);
    readstat_set_note_handler(parser, onNote);
    readstat_set_variable_handler(parser, onVariable);
    readstat_set_value_label_handler(parser, onValueLabel);
    readstat_set_value_handler(parser, onValue);
    readstat_set_fweight_handler(parser, onFrequencyWeight);
    readstat_set_error_handler(parser, onError);
    readstat_set_progress_handler(parser, progress);
    Report report;
    const StatParse parse = kind == TStatFileKind::Spss ? readstat_parse_sav : readstat_parse_dta;
    report.result = parse(parser, QFile::encodeName(path).constData(), &report);
    return report;
}

Report reportOf(Input input, const QString& path, TStatFileKind kind,
    readstat_progress_handler progress = onProgress)
{
    if (input == Input::Buffered) {
        StatParser parser;
        return reportOf(parser.get(), path, kind, progress);
    }
    readstat_parser_t* parser = readstat_parser_init();
    Report report = reportOf(parser, path, kind, progress);
    readstat_parser_free(parser);
    return report;
}

int openDescriptors()
{
    return QDir(QStringLiteral("/proc/self/fd"))
        .entryList(QDir::NoDotAndDotDot | QDir::AllEntries)
        .size();
}

// The handlers of a buffered input, called as libreadstat calls them.
struct BufferedFile {
    explicit BufferedFile(const QString& path)
        : io(parser.get()->io)
    {
        opened = io->open(QFile::encodeName(path).constData(), io->io_ctx);
    }

    qint64 seek(qint64 offset, readstat_io_flags_t whence) const
    {
        return io->seek(offset, whence, io->io_ctx);
    }

    QByteArray read(int size) const
    {
        QByteArray bytes(size, '\0');
        const auto count = io->read(bytes.data(), static_cast<size_t>(size), io->io_ctx);
        return count < 0 ? QByteArray("failed") : bytes.left(static_cast<int>(count));
    }

    StatParser parser;
    readstat_io_t* io;
    int opened = 0;
};

struct PlainFile {
    explicit PlainFile(const QString& path)
        : file(::open(QFile::encodeName(path).constData(), O_RDONLY))
    {
    }
    ~PlainFile()
    {
        ::close(file);
    }

    qint64 seek(qint64 offset, readstat_io_flags_t whence) const
    {
        return ::lseek(file, offset,
            whence == READSTAT_SEEK_SET       ? SEEK_SET
                : whence == READSTAT_SEEK_CUR ? SEEK_CUR
                                              : SEEK_END);
    }

    QByteArray read(int size) const
    {
        std::vector<char> bytes(static_cast<std::size_t>(size));
        const auto count = ::read(file, bytes.data(), bytes.size());
        return count < 0 ? QByteArray("failed") : QByteArray(bytes.data(), static_cast<int>(count));
    }

    int file;
};

} // namespace

Q_DECLARE_METATYPE(TStatFileKind)

class TestStatParser : public QObject {
    Q_OBJECT

private slots:
    void init();
    void realFileReadsTheSame_data();
    void realFileReadsTheSame();
    void truncatedFileReadsTheSame_data();
    void truncatedFileReadsTheSame();
    void whatIsNoFileIsRefusedTheSame_data();
    void whatIsNoFileIsRefusedTheSame();
    void pipeIsRefusedTheSame();
    void progressCanEndTheParse_data();
    void progressCanEndTheParse();
    void seekAndReadAsAFile_data();
    void seekAndReadAsAFile();
    void unknownOriginOfASeekFails();
    void updateWithoutHandlerIsFine();
    void earlyEndIsNoticed_data();
    void earlyEndIsNoticed();
    void filesAreClosed();
    void openingAgainStartsAnew();
    void changeIsNoticed();
    void guardKeepsExceptionsBack();

private:
    QString path(const QString& name) const
    {
        return m_dir->filePath(name);
    }
    void writeBytes(const QString& name, const QByteArray& bytes) const
    {
        QFile file(path(name));
        QVERIFY(file.open(QIODevice::WriteOnly));
        QCOMPARE(file.write(bytes), qint64(bytes.size()));
    }

    std::unique_ptr<QTemporaryDir> m_dir;
};

void TestStatParser::init()
{
    m_dir = std::make_unique<QTemporaryDir>();
    QVERIFY(m_dir->isValid());
}

void TestStatParser::realFileReadsTheSame_data()
{
    SKIP_WITHOUT_SAMPLES();
    QTest::addColumn<QString>("file");
    const QStringList paths = samplePaths();
    for (const QString& file : paths)
        QTest::newRow(qPrintable(QFileInfo(file).fileName())) << file;
}

void TestStatParser::realFileReadsTheSame()
{
    QFETCH(QString, file);
    const TStatFileKind kind = kindOf(file);
    const Report own = reportOf(Input::Own, file, kind);
    const Report buffered = reportOf(Input::Buffered, file, kind);
    QCOMPARE(buffered.result, own.result);
    QCOMPARE(buffered.lines, own.lines);
    QVERIFY(buffered == own);
    QVERIFY(own.result != READSTAT_OK || !own.lines.isEmpty());
}

void TestStatParser::truncatedFileReadsTheSame_data()
{
    realFileReadsTheSame_data();
}

void TestStatParser::truncatedFileReadsTheSame()
{
    constexpr int Cuts = 12;
    QFETCH(QString, file);
    QFile original(file);
    QVERIFY(original.open(QIODevice::ReadOnly));
    const QByteArray bytes = original.read(20'000);
    const TStatFileKind kind = kindOf(file);
    QSet<int> results;
    for (int cut = 0; cut < Cuts; ++cut) {
        const QString copy = path(QString::number(cut));
        writeBytes(QString::number(cut), bytes.left(bytes.size() * cut / Cuts));
        const Report own = reportOf(Input::Own, copy, kind);
        const Report buffered = reportOf(Input::Buffered, copy, kind);
        QCOMPARE(buffered.result, own.result);
        QVERIFY(buffered == own);
        results.insert(own.result);
    }
    QVERIFY(results.size() > 1 || !results.contains(READSTAT_OK));
}

void TestStatParser::whatIsNoFileIsRefusedTheSame_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<int>("spss");
    QTest::addColumn<int>("stata");

    QTest::newRow("missing file") << QStringLiteral("missing") << int(READSTAT_ERROR_OPEN)
                                  << int(READSTAT_ERROR_OPEN);
    QTest::newRow("no name") << QString() << int(READSTAT_ERROR_OPEN) << int(READSTAT_ERROR_OPEN);
    QTest::newRow("folder") << QStringLiteral("/tmp") << -1 << -1;
    QTest::newRow("empty file") << QStringLiteral("empty") << int(READSTAT_ERROR_READ)
                                << int(READSTAT_ERROR_READ);
    QTest::newRow("one byte") << QStringLiteral("byte") << int(READSTAT_ERROR_READ)
                              << int(READSTAT_ERROR_READ);
    QTest::newRow("file without a size") << QStringLiteral("/proc/self/status") << -1 << -1;
    QTest::newRow("device") << QStringLiteral("/dev/null") << -1 << -1;
}

void TestStatParser::whatIsNoFileIsRefusedTheSame()
{
    QFETCH(QString, file);
    QFETCH(int, spss);
    QFETCH(int, stata);
    writeBytes(QStringLiteral("empty"), QByteArray());
    writeBytes(QStringLiteral("byte"), QByteArray("<"));
    if (!file.isEmpty() && !file.startsWith(QLatin1Char('/')))
        file = path(file);
    for (const TStatFileKind kind : { TStatFileKind::Spss, TStatFileKind::Stata }) {
        const Report own = reportOf(Input::Own, file, kind);
        const Report buffered = reportOf(Input::Buffered, file, kind);
        QVERIFY(own.result != READSTAT_OK);
        QCOMPARE(buffered.result, own.result);
        QCOMPARE(buffered.lines, own.lines);
        const int expected = kind == TStatFileKind::Spss ? spss : stata;
        if (expected >= 0)
            QCOMPARE(int(buffered.result), expected);
    }
}

void TestStatParser::pipeIsRefusedTheSame()
{
    const QByteArray name = QFile::encodeName(path(QStringLiteral("pipe")));
    QCOMPARE(::mkfifo(name.constData(), 0600), 0);
    const int writer = ::open(name.constData(), O_RDWR); // lets readers open it at once
    QVERIFY(writer >= 0);
    const QString pipe = path(QStringLiteral("pipe"));
    const Report own = reportOf(Input::Own, pipe, TStatFileKind::Spss);
    const Report buffered = reportOf(Input::Buffered, pipe, TStatFileKind::Spss);
    QCOMPARE(own.result, READSTAT_ERROR_SEEK);
    QVERIFY(buffered == own);
    ::close(writer);
}

void TestStatParser::progressCanEndTheParse_data()
{
    QTest::addColumn<TStatFileKind>("kind");
    QTest::newRow("SPSS") << TStatFileKind::Spss;
    QTest::newRow("Stata") << TStatFileKind::Stata;
}

void TestStatParser::progressCanEndTheParse()
{
    QFETCH(TStatFileKind, kind);
    StatFileWriter writer;
    writer.add("A", READSTAT_TYPE_DOUBLE, nullptr);
    const QString file = path(QStringLiteral("rows"));
    QVERIFY(writer.write(file, kind, 100));

    const Report whole = reportOf(Input::Buffered, file, kind);
    QVERIFY(whole == reportOf(Input::Own, file, kind));
    QCOMPARE(whole.result, READSTAT_OK);
    QCOMPARE(whole.values, quint64(100));
    QVERIFY(whole.progressCalls > 0);

    const Report aborted = reportOf(Input::Buffered, file, kind, onProgressAbort);
    QVERIFY(aborted == reportOf(Input::Own, file, kind, onProgressAbort));
    QCOMPARE(aborted.result, READSTAT_ERROR_USER_ABORT);
    QCOMPARE(aborted.progressCalls, 1);
}

void TestStatParser::seekAndReadAsAFile_data()
{
    QTest::addColumn<qint64>("offset");
    QTest::addColumn<int>("whence");

    constexpr qint64 Far = std::numeric_limits<qint64>::max();
    QTest::newRow("start") << qint64(0) << int(READSTAT_SEEK_SET);
    QTest::newRow("inside") << qint64(4) << int(READSTAT_SEEK_SET);
    QTest::newRow("before the start") << qint64(-1) << int(READSTAT_SEEK_SET);
    QTest::newRow("at the end") << qint64(10) << int(READSTAT_SEEK_SET);
    QTest::newRow("beyond the end") << qint64(11) << int(READSTAT_SEEK_SET);
    QTest::newRow("far beyond the end") << (qint64(1) << 40) << int(READSTAT_SEEK_SET);
    QTest::newRow("beyond any file") << Far << int(READSTAT_SEEK_SET);
    QTest::newRow("forward") << qint64(5) << int(READSTAT_SEEK_CUR);
    QTest::newRow("backward") << qint64(-2) << int(READSTAT_SEEK_CUR);
    QTest::newRow("backward before the start") << qint64(-4) << int(READSTAT_SEEK_CUR);
    QTest::newRow("forward beyond any file") << Far << int(READSTAT_SEEK_CUR);
    QTest::newRow("the end") << qint64(0) << int(READSTAT_SEEK_END);
    QTest::newRow("before the end") << qint64(-3) << int(READSTAT_SEEK_END);
    QTest::newRow("after the end") << qint64(3) << int(READSTAT_SEEK_END);
    QTest::newRow("before the start from the end") << qint64(-11) << int(READSTAT_SEEK_END);
    QTest::newRow("beyond any file from the end") << Far << int(READSTAT_SEEK_END);
}

void TestStatParser::seekAndReadAsAFile()
{
    QFETCH(qint64, offset);
    QFETCH(int, whence);
    writeBytes(QStringLiteral("ten"), QByteArray("0123456789"));
    const BufferedFile buffered(path(QStringLiteral("ten")));
    const PlainFile plain(path(QStringLiteral("ten")));
    QCOMPARE(buffered.opened, 0);
    QCOMPARE(buffered.read(3), plain.read(3));

    const auto origin = static_cast<readstat_io_flags_t>(whence);
    QCOMPARE(buffered.seek(offset, origin), plain.seek(offset, origin));
    QCOMPARE(buffered.seek(0, READSTAT_SEEK_CUR), plain.seek(0, READSTAT_SEEK_CUR));
    QCOMPARE(buffered.read(4), plain.read(4));
    QCOMPARE(buffered.read(100), plain.read(100));
    QCOMPARE(buffered.read(100), plain.read(100));
}

void TestStatParser::unknownOriginOfASeekFails()
{
    writeBytes(QStringLiteral("ten"), QByteArray("0123456789"));
    const BufferedFile buffered(path(QStringLiteral("ten")));
    QCOMPARE(buffered.seek(0, static_cast<readstat_io_flags_t>(3)), qint64(-1));
    QCOMPARE(buffered.read(2), QByteArray("01"));
}

void TestStatParser::updateWithoutHandlerIsFine()
{
    writeBytes(QStringLiteral("ten"), QByteArray("0123456789"));
    const BufferedFile buffered(path(QStringLiteral("ten")));
    QCOMPARE(buffered.io->update(10, nullptr, nullptr, buffered.io->io_ctx), READSTAT_OK);

    Report report;
    buffered.read(5);
    QCOMPARE(buffered.io->update(10, onProgress, &report, buffered.io->io_ctx), READSTAT_OK);
    QCOMPARE(report.progressCalls, 1);
    QCOMPARE(report.hash, qHash(0.5, 0));
}

void TestStatParser::earlyEndIsNoticed_data()
{
    QTest::addColumn<qint64>("position");
    QTest::addColumn<int>("size");
    QTest::addColumn<bool>("early");
    QTest::newRow("inside") << qint64(2) << 4 << false;
    QTest::newRow("up to the end") << qint64(6) << 4 << false;
    QTest::newRow("over the end") << qint64(6) << 5 << true;
    QTest::newRow("at the end") << qint64(10) << 1 << false;
    QTest::newRow("a length at the end") << qint64(10) << 4 << false;
    QTest::newRow("more than a length at the end") << qint64(10) << 5 << true;
    QTest::newRow("beyond the end") << qint64(11) << 1 << true;
    QTest::newRow("nothing beyond the end") << qint64(11) << 0 << false;
}

void TestStatParser::earlyEndIsNoticed()
{
    QFETCH(qint64, position);
    QFETCH(int, size);
    QFETCH(bool, early);
    writeBytes(QStringLiteral("ten"), QByteArray("0123456789"));
    const QByteArray name = QFile::encodeName(path(QStringLiteral("ten")));
    const BufferedFile buffered(path(QStringLiteral("ten")));
    QVERIFY(!buffered.parser.fileEndedEarly());
    buffered.seek(position, READSTAT_SEEK_SET);
    buffered.read(size);
    QCOMPARE(buffered.parser.fileEndedEarly(), early);
    buffered.seek(0, READSTAT_SEEK_SET);
    buffered.read(2);
    buffered.io->close(buffered.io->io_ctx);
    QCOMPARE(buffered.parser.fileEndedEarly(), early);
    buffered.io->open(name.constData(), buffered.io->io_ctx);
    QVERIFY(!buffered.parser.fileEndedEarly());
}

void TestStatParser::filesAreClosed()
{
    writeBytes(QStringLiteral("ten"), QByteArray("0123456789"));
    const int before = openDescriptors();
    {
        const BufferedFile buffered(path(QStringLiteral("ten")));
        QCOMPARE(openDescriptors(), before + 1);
        QCOMPARE(buffered.io->close(buffered.io->io_ctx), 0);
        QCOMPARE(openDescriptors(), before);
        const BufferedFile left(path(QStringLiteral("ten")));
    }
    QCOMPARE(openDescriptors(), before);
    reportOf(Input::Buffered, path(QStringLiteral("ten")), TStatFileKind::Spss);
    QCOMPARE(openDescriptors(), before);
}

void TestStatParser::openingAgainStartsAnew()
{
    writeBytes(QStringLiteral("ten"), QByteArray("0123456789"));
    writeBytes(QStringLiteral("three"), QByteArray("abc"));
    const int before = openDescriptors();
    const BufferedFile buffered(path(QStringLiteral("ten")));
    QCOMPARE(buffered.read(5), QByteArray("01234"));
    const QByteArray other = QFile::encodeName(path(QStringLiteral("three")));
    QCOMPARE(buffered.io->open(other.constData(), buffered.io->io_ctx), 0);
    QCOMPARE(openDescriptors(), before + 1);
    QCOMPARE(buffered.read(5), QByteArray("abc"));
    QCOMPARE(buffered.io->open("", buffered.io->io_ctx), -1);
}

// In place as well, where the size stays: by the time of the last change.
void TestStatParser::changeIsNoticed()
{
    writeBytes(QStringLiteral("ten"), QByteArray("0123456789"));
    TStatInput input;
    QVERIFY(input.open(path(QStringLiteral("ten"))));
    QCOMPARE(input.failure(), QString());
    QFile file(path(QStringLiteral("ten")));
    QVERIFY(file.open(QIODevice::ReadWrite));
    QCOMPARE(file.write("X"), qint64(1));
    QVERIFY(file.setFileTime(file.fileTime(QFileDevice::FileModificationTime).addSecs(5),
        QFileDevice::FileModificationTime));
    file.close();
    QCOMPARE(input.failure(), QStringLiteral("it was changed while it was read"));
    QVERIFY(input.open(path(QStringLiteral("ten"))));
    QCOMPARE(input.failure(), QString());
}

void TestStatParser::guardKeepsExceptionsBack()
{
    CallbackGuard guard;
    int steps = 0;
    QCOMPARE(guard.run([&] { ++steps; }), int(READSTAT_HANDLER_OK));
    guard.rethrow();
    QCOMPARE(guard.run([] { throw std::runtime_error("broken"); }), int(READSTAT_HANDLER_ABORT));
    QCOMPARE(steps, 1);
    QVERIFY_EXCEPTION_THROWN(guard.rethrow(), std::runtime_error);
    guard.rethrow(); // only once
}

QTEST_GUILESS_MAIN(TestStatParser)
#include "tst_StatParser.moc"
