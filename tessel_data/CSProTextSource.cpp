#include <tessel_data/CSProTextSource.h>

#include <tessel_data/DataError.h>
#include <tessel_data/LineReader_p.h>
#include <tessel_data/RecordParser_p.h>

#include <QFile>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>

namespace tessel {

namespace {

// A record of the format has 32,000 columns; lines much longer than their record are damage.
constexpr qint64 LongestLine = 1'048'576;

QString systemError(int number)
{
    return QString::fromLocal8Bit(std::strerror(number));
}

// A file opened for reading; closed with it, unless it is standard input.
class InputFile {
public:
    explicit InputFile(const QString& path)
        : m_path(path)
    {
        const bool isStandardInput = path == QLatin1String("-");
        m_file = isStandardInput
            ? STDIN_FILENO
            : ::open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
        struct stat status { };
        if (m_file < 0 || ::fstat(m_file, &status) != 0)
            throw DataError(DataError::Code::CannotOpen, path,
                QStringLiteral("cannot be opened: ") + systemError(errno));
        if (S_ISDIR(status.st_mode)) {
            ::close(m_file);
            throw DataError(
                DataError::Code::CannotOpen, path, QStringLiteral("is a folder, not a data file"));
        }
        m_isRegular = S_ISREG(status.st_mode);
        m_first = status;
        m_ownsFile = !isStandardInput;
        // Some files of the system have contents, but no size.
        if (m_isRegular && status.st_size > 0)
            m_left = std::max<qint64>(0, status.st_size - ::lseek(m_file, 0, SEEK_CUR));
    }
    ~InputFile()
    {
        if (m_ownsFile)
            ::close(m_file);
    }

    // Waits for a pipe, its writer or a terminal to have something; false when that is wanted no
    // more.
    bool wait(BatchSink& sink) const
    {
        constexpr int milliseconds = 100;
        pollfd file { m_file, POLLIN, 0 };
        while (!m_isRegular && sink.goesOn()) {
            if (::poll(&file, 1, milliseconds) > 0)
                return true;
        }
        return m_isRegular;
    }

    // No more than there was when it was opened, as a file that is being written may never end.
    // -1: there is nothing yet.
    qint64 read(char* buffer, qint64 size)
    {
        const qint64 wanted = m_left < 0 ? size : std::min(size, m_left);
        for (;;) {
            const ssize_t count = ::read(m_file, buffer, std::size_t(wanted));
            if (count >= 0) {
                m_left -= m_left < 0 ? 0 : count;
                return count;
            }
            if (errno == EAGAIN)
                return -1;
            if (errno != EINTR)
                throw DataError(DataError::Code::CannotRead, m_path,
                    QStringLiteral("cannot be read on: ") + systemError(errno));
        }
    }

    // By another program, once it was read to its end.
    bool hasChanged() const
    {
        struct stat now { };
        return m_isRegular && ::fstat(m_file, &now) == 0
            && (m_left > 0 || now.st_size != m_first.st_size
                || now.st_mtim.tv_sec != m_first.st_mtim.tv_sec
                || now.st_mtim.tv_nsec != m_first.st_mtim.tv_nsec);
    }

private:
    Q_DISABLE_COPY(InputFile)

    QString m_path;
    int m_file = -1;
    bool m_ownsFile = false;
    bool m_isRegular = false;
    qint64 m_left = -1; // bytes to read; -1: until the end
    struct stat m_first { };
};

// Size of a file that can be opened later; -1 for what has none.
qint64 sizeOf(const QString& path)
{
    struct stat status { };
    if (path == QLatin1String("-"))
        return ::fstat(STDIN_FILENO, &status) == 0 && S_ISREG(status.st_mode) ? status.st_size : -1;
    const QByteArray name = QFile::encodeName(path);
    if (::stat(name.constData(), &status) != 0 || ::access(name.constData(), R_OK) != 0) {
        throw DataError(DataError::Code::CannotOpen, path,
            QStringLiteral("cannot be opened: ") + systemError(errno));
    }
    return S_ISREG(status.st_mode) ? status.st_size : -1;
}

// How a file begins that is no text of bytes, and what to say of it.
struct Foreign {
    std::string_view begin;
    const char* text;
};

constexpr const char* inUtf16 = "is text in UTF-16, which data of this kind never are; save it as "
                                "UTF-8, for example with: iconv -f UTF-16 -t UTF-8";

constexpr Foreign foreigns[] = {
    { "\xFF\xFE", inUtf16 },
    { "\xFE\xFF", inUtf16 },
    { "\x1F\x8B", "is compressed with gzip; unpack it first, with gunzip" },
    { "PK\x03\x04", "is a zip archive; unpack it first" },
    { "\xFD\x37zXZ", "is compressed with xz; unpack it first, with unxz" },
    { "BZh91AY&SY", "is compressed with bzip2; unpack it first, with bunzip2" },
};

// UTF-16 without a mark: of ASCII characters every other byte is a NUL.
bool isUnmarkedUtf16(std::string_view head)
{
    constexpr std::size_t fewest = 4;
    constexpr std::size_t enough = 4096;
    std::size_t nulls[2] = {};
    const std::size_t size = std::min(head.size(), enough) / 2 * 2;
    for (std::size_t i = 0; i < size; ++i)
        nulls[i % 2] += head[i] == '\0' ? 1 : 0;
    const std::size_t most = std::max(nulls[0], nulls[1]);
    return size >= fewest && std::min(nulls[0], nulls[1]) == 0 && most * 10 >= size / 2 * 9;
}

void refuseForeign(std::string_view head, const QString& path)
{
    const char* found = isUnmarkedUtf16(head) ? inUtf16 : nullptr;
    for (const Foreign& foreign : foreigns) {
        if (head.substr(0, foreign.begin.size()) == foreign.begin)
            found = foreign.text;
    }
    if (found)
        throw DataError(DataError::Code::NotThisFormat, path, QLatin1String(found));
}

QString nameOf(LineEncoding encoding)
{
    switch (encoding) {
    case LineEncoding::Utf8:
        return QStringLiteral("UTF-8");
    case LineEncoding::Windows1252:
        return QStringLiteral("windows-1252");
    case LineEncoding::Unknown:
        break;
    }
    return QStringLiteral("ASCII");
}

} // namespace

class CSProTextSource::Job {
public:
    Job(const DataDictionary& data, const QStringList& paths, LineEncoding known)
        : dictionary(data)
        , parser(dictionary)
        , encoding(known)
    {
        for (const QString& path : paths) {
            SourceFile file;
            file.path = path;
            files.push_back(file);
            const qint64 bytes = sizeOf(path);
            size = size < 0 || bytes < 0 ? -1 : size + bytes;
        }
        for (const DataRecord& record : dictionary.records)
            longestLine = std::max(longestLine, qint64(record.width) * 4);
    }

    // False when the sink wants no more.
    bool readFile(int index, BatchSink& sink);
    void addLine(const LineReader::Line& line, int index, DataBatch& batch);

    DataDictionary dictionary;
    RecordParser parser;
    LineEncoding encoding; // of files without a mark
    std::vector<SourceFile> files;
    qint64 size = 0;
    qint64 doneBytes = 0;
    qint64 longestLine = LongestLine;
};

bool CSProTextSource::Job::readFile(int index, BatchSink& sink)
{
    SourceFile& file = files[std::size_t(index)];
    InputFile input(file.path);
    LineReader reader(
        [&](char* buffer, qint64 bytes) -> qint64 {
            while (input.wait(sink)) {
                const qint64 count = input.read(buffer, bytes);
                if (count >= 0)
                    return count;
            }
            return 0;
        },
        longestLine);
    refuseForeign(reader.head(), file.path);
    parser.beginFile(reader.hasMark() ? LineEncoding::Utf8 : encoding);
    const qint64 casesBefore = parser.caseCount();
    LineReader::Line line;
    bool isWanted = true;
    while (isWanted && reader.next(line)) {
        DataBatch& batch = sink.batch();
        addLine(line, index, batch);
        batch.doneBytes = doneBytes + reader.bytesRead();
        if (batch.isFull())
            isWanted = sink.deliver();
    }
    doneBytes += reader.bytesRead();
    file.bytes = reader.bytesRead();
    file.hasByteOrderMark = reader.hasMark();
    file.encoding = nameOf(parser.encoding());
    file.lfLines = reader.lfLines();
    file.crlfLines = reader.crlfLines();
    file.crLines = reader.crLines();
    file.linesWithCr = parser.linesWithCr();
    isWanted = isWanted && sink.goesOn();
    file.changedWhileRead = isWanted && input.hasChanged();
    file.counts.cases = file.counts.casesRead = parser.caseCount() - casesBefore;
    return isWanted;
}

void CSProTextSource::Job::addLine(const LineReader::Line& line, int index, DataBatch& batch)
{
    SourceCounts& counts = files[std::size_t(index)].counts;
    ++counts.lines;
    if (line.isEndless) {
        ++counts.rejectedLines;
        batch.told.push_back(
            { LineProblem::EndlessLine, index, -1, counts.lines, -1, batch.keep(line.text) });
        return;
    }
    countLine(parser.parse(line.text, counts.lines, index, batch), counts);
}

CSProTextSource::CSProTextSource(
    const DataDictionary& dictionary, const QStringList& paths, LineEncoding encoding)
{
    if (dictionary.recordTypeWidth == 0 && dictionary.records.size() > 1) {
        throw DataError(DataError::Code::UnfitDictionary, dictionary.name,
            QStringLiteral("has several records but no record types, so that lines of text cannot "
                           "be told apart"));
    }
    m_job = std::make_unique<Job>(dictionary, paths, encoding);
}

CSProTextSource::~CSProTextSource() = default;

const DataDictionary& CSProTextSource::dictionary() const
{
    return m_job->dictionary;
}

void CSProTextSource::read(BatchSink& sink)
{
    for (int index = 0; index < int(m_job->files.size()); ++index) {
        if (!m_job->readFile(index, sink))
            return;
    }
    if (!sink.batch().isEmpty())
        sink.deliver();
}

qint64 CSProTextSource::size() const
{
    return m_job->size;
}

bool CSProTextSource::countsRows() const
{
    return false;
}

const std::vector<SourceFile>& CSProTextSource::files() const
{
    return m_job->files;
}

bool CSProTextSource::hasCases() const
{
    return true;
}

bool CSProTextSource::knowsPartlySaved() const
{
    return false;
}

bool CSProTextSource::hasWidths() const
{
    return true;
}

} // namespace tessel
