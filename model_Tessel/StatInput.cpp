#include <model_Tessel/StatInput.h>

#include <QFile>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <limits>
#include <utility>

#include <fcntl.h>
#include <unistd.h>

namespace {

constexpr readstat_off_t WindowSize = readstat_off_t(64) * 1024;

int originOf(readstat_io_flags_t whence)
{
    switch (whence) {
    case READSTAT_SEEK_SET:
        return SEEK_SET;
    case READSTAT_SEEK_CUR:
        return SEEK_CUR;
    case READSTAT_SEEK_END:
        return SEEK_END;
    }
    return -1;
}

// A .dta file of format 117 or later.
const QByteArray mark = QByteArrayLiteral("<stata_dta>"); // clazy:exclude=non-pod-global-static

// The number behind "<stata_dta><header><release>", or the first byte of older files.
int stataFormat(const QByteArray& head)
{
    constexpr int ReleasePosition = 28;
    if (head.startsWith(mark))
        return head.mid(ReleasePosition, 3).toInt();
    return head.isEmpty() ? 0 : static_cast<unsigned char>(head.at(0));
}

bool isSame(const timespec& one, const timespec& other)
{
    return one.tv_sec == other.tv_sec && one.tv_nsec == other.tv_nsec;
}

} // namespace

TStatInput::TStatInput() = default;

TStatInput::~TStatInput()
{
    close();
}

bool TStatInput::open(const QString& path)
{
    close();
    m_path = path;
    m_isKept = openNamed(QFile::encodeName(path).constData());
    return m_isKept;
}

void TStatInput::attachTo(readstat_parser_t* parser)
{
    readstat_set_open_handler(parser, openFile);
    readstat_set_close_handler(parser, closeFile);
    readstat_set_seek_handler(parser, seek);
    readstat_set_read_handler(parser, read);
    readstat_set_update_handler(parser, update);
    readstat_set_io_ctx(parser, this);
}

QByteArray TStatInput::bytes(qint64 position, int size)
{
    const qint64 left = std::max<qint64>(m_size - position, 0);
    QByteArray result(static_cast<int>(std::min<qint64>(size, left)), '\0');
    if (position < 0 || !copyOut(result.data(), static_cast<size_t>(result.size()), position))
        result.clear();
    return result;
}

size_t TStatInput::setNameLimit() const
{
    const int format = stataFormat(m_head);
    if (m_head.startsWith("$FL") || format == 0) // libreadstat makes the names of SPSS files
        return std::numeric_limits<size_t>::max();
    if (format < 110)
        return 9;
    return format < 118 ? 33 : 129;
}

QString TStatInput::failure() const
{
    if (m_error != 0)
        return qt_error_string(m_error);
    struct stat now = {};
    const bool hasChanged = m_hasShrunk
        || (m_size > 0 && m_file >= 0
            && (::fstat(m_file, &now) != 0 || now.st_size != m_info.st_size
                || !isSame(now.st_mtim, m_info.st_mtim)));
    return hasChanged ? QStringLiteral("it was changed while it was read") : QString();
}

int TStatInput::openFile(const char* path, void* context)
{
    auto* input = static_cast<TStatInput*>(context);
    if (!input->m_isKept) {
        input->close();
        if (!input->openNamed(path))
            return -1;
    }
    input->startParse();
    return 0;
}

int TStatInput::closeFile(void* context)
{
    auto* input = static_cast<TStatInput*>(context);
    return input->m_isKept || input->close() ? 0 : -1;
}

readstat_off_t TStatInput::seek(readstat_off_t offset, readstat_io_flags_t whence, void* context)
{
    auto* input = static_cast<TStatInput*>(context);
    const int origin = originOf(whence);
    return input->m_size > 0 ? input->seekInFile(offset, origin)
                             : ::lseek(input->m_file, offset, origin);
}

ssize_t TStatInput::read(void* buffer, size_t size, void* context)
{
    auto* input = static_cast<TStatInput*>(context);
    if (input->m_size == 0)
        return ::read(input->m_file, buffer, size);
    const auto left =
        static_cast<size_t>(std::max<readstat_off_t>(input->m_size - input->m_position, 0));
    const size_t count = std::min(size, left);
    // Nothing more at the very end, where a length could stand, is how old .dta files tell that all
    // was read; those of today have a mark there.
    const bool isEnd = input->m_position == input->m_size && size <= sizeof(qint32)
        && !input->m_head.startsWith(mark);
    if (count < size && (count > 0 || !isEnd))
        input->m_endedEarly = true;
    if (!input->copyOut(static_cast<char*>(buffer), count, input->m_position))
        return -1;
    input->m_position += static_cast<readstat_off_t>(count);
    return static_cast<ssize_t>(count);
}

readstat_error_t TStatInput::update(
    long fileSize, readstat_progress_handler progress, void* userContext, void* context)
{
    if (!progress)
        return READSTAT_OK;
    const readstat_off_t position = seek(0, READSTAT_SEEK_CUR, context);
    if (position < 0)
        return READSTAT_ERROR_SEEK;
    const double done = static_cast<double>(position) / static_cast<double>(fileSize);
    return progress(done, userContext) == READSTAT_HANDLER_OK ? READSTAT_OK
                                                              : READSTAT_ERROR_USER_ABORT;
}

bool TStatInput::openNamed(const char* path)
{
    constexpr int HeadSize = 32;
    m_error = 0;
    m_hasShrunk = false;
    m_window.reserve(WindowSize); // an exception for want of it may not cross libreadstat's frames
    m_file = ::open(path, O_RDONLY | O_CLOEXEC);
    if (m_file < 0) {
        m_error = errno;
        return false;
    }
    if (::fstat(m_file, &m_info) == 0 && S_ISREG(m_info.st_mode))
        m_size = m_info.st_size;
    m_head = bytes(0, HeadSize);
    return true;
}

void TStatInput::startParse()
{
    m_position = 0;
    m_endedEarly = false;
    if (m_size == 0)
        ::lseek(m_file, 0, SEEK_SET);
}

bool TStatInput::close()
{
    m_isKept = false;
    m_size = 0;
    m_position = 0;
    m_window.clear();
    const int file = std::exchange(m_file, -1);
    return file < 0 || ::close(file) == 0;
}

readstat_off_t TStatInput::seekInFile(readstat_off_t offset, int origin)
{
    readstat_off_t start = 0;
    switch (origin) {
    case SEEK_SET:
        break;
    case SEEK_CUR:
        start = m_position;
        break;
    case SEEK_END:
        start = m_size;
        break;
    default:
        return -1;
    }
    readstat_off_t target = 0;
    if (__builtin_add_overflow(start, offset, &target) || target < 0)
        return -1;
    // How far beyond its end a file may be positioned depends on the file system.
    if (target > m_size && ::lseek(m_file, target, SEEK_SET) != target)
        return -1;
    m_position = target;
    return target;
}

// All of the bytes, which are there unless the file has shrunk; else -1.
ssize_t TStatInput::readPiece(char* buffer, size_t size, readstat_off_t position)
{
    if (::lseek(m_file, position, SEEK_SET) != position) {
        m_error = errno;
        return -1;
    }
    for (size_t done = 0; done < size;) {
        const ssize_t count = ::read(m_file, buffer + done, size - done);
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            m_error = errno;
        m_hasShrunk = m_hasShrunk || count == 0;
        if (count <= 0)
            return -1;
        done += static_cast<size_t>(count);
    }
    return static_cast<ssize_t>(size);
}

bool TStatInput::fillWindow(readstat_off_t position)
{
    m_window.resize(static_cast<int>(std::min(WindowSize, m_size - position)));
    m_windowStart = position;
    if (readPiece(m_window.data(), static_cast<size_t>(m_window.size()), position) >= 0)
        return true;
    m_window.resize(0);
    return false;
}

// The bytes are within the file.
bool TStatInput::copyOut(char* buffer, size_t size, readstat_off_t position)
{
    if (size == 0) // libreadstat asks for nothing at a null pointer
        return true;
    if (size >= static_cast<size_t>(WindowSize))
        return readPiece(buffer, size, position) >= 0;
    const readstat_off_t end = position + static_cast<readstat_off_t>(size);
    const bool isInWindow = position >= m_windowStart && end <= m_windowStart + m_window.size();
    if (!isInWindow && !fillWindow(position))
        return false;
    std::memcpy(buffer, m_window.constData() + (position - m_windowStart), size);
    return true;
}
