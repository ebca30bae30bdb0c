#include <tessel_data/RowSpool_p.h>

#include <tessel_data/DataError.h>

#include <QFile>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <limits>
#include <unistd.h>

namespace tessel {

namespace {

constexpr std::size_t BufferSize = 1 << 20;

int openUnnamed(const QByteArray& folder)
{
    constexpr int mode = 0600;
    const int file = ::open(folder.constData(), O_TMPFILE | O_RDWR | O_CLOEXEC, mode);
    if (file >= 0 || (errno != EOPNOTSUPP && errno != EISDIR && errno != ENOENT))
        return file;
    QByteArray name = folder + "/.tessel-rows-XXXXXX"; // where the file system has no such files
    const int named = ::mkostemp(name.data(), O_CLOEXEC);
    if (named >= 0)
        ::unlink(name.constData());
    return named;
}

} // namespace

RowSpool::RowSpool(const QString& folder)
    : m_folder(folder)
    , m_buffer(BufferSize, '\0')
{
    m_file = openUnnamed(QFile::encodeName(folder));
    if (m_file < 0)
        fail(errno);
}

RowSpool::~RowSpool()
{
    if (m_file >= 0)
        ::close(m_file);
}

void RowSpool::fail(int error) const
{
    throw DataError(DataError::Code::CannotWrite, m_folder,
        QStringLiteral("rows cannot be kept in it: ")
            + QString::fromLocal8Bit(std::strerror(error)));
}

void RowSpool::addLarge(std::int64_t number)
{
    if (number == std::int16_t(number))
        add(Int16, std::int16_t(number));
    else if (number == std::int32_t(number))
        add(Int32, std::int32_t(number));
    else
        add(Int64, number);
}

void RowSpool::addText(std::string_view text)
{
    constexpr std::size_t longestShort = std::numeric_limits<unsigned char>::max();
    if (text.size() <= longestShort)
        add(ShortText, static_cast<unsigned char>(text.size()));
    else
        add(LongText, std::uint32_t(text.size()));
    addBytes(text);
}

void RowSpool::addBytes(std::string_view bytes)
{
    while (!bytes.empty()) {
        const std::size_t space = m_buffer.size() - LongestHead - m_at;
        const std::string_view part = bytes.substr(0, space);
        std::memcpy(&m_buffer[m_at], part.data(), part.size());
        m_at += part.size();
        bytes.remove_prefix(part.size());
        if (m_at + LongestHead >= m_buffer.size())
            flush();
    }
}

void RowSpool::flush()
{
    for (std::size_t done = 0; done < m_at;) {
        const ssize_t written = ::write(m_file, &m_buffer[done], m_at - done);
        if (written < 0 && errno != EINTR)
            fail(errno);
        done += written > 0 ? std::size_t(written) : 0;
    }
    m_at = 0;
}

void RowSpool::rewind()
{
    if (m_end == 0)
        flush();
    if (::lseek(m_file, 0, SEEK_SET) != 0)
        fail(errno);
    m_at = m_end = 0;
}

std::size_t RowSpool::readSome(char* bytes, std::size_t size)
{
    for (;;) {
        const ssize_t count = ::read(m_file, bytes, size);
        if (count >= 0)
            return std::size_t(count);
        if (errno != EINTR)
            fail(errno);
    }
}

void RowSpool::refill()
{
    const std::size_t left = m_end - m_at;
    std::memmove(m_buffer.data(), &m_buffer[m_at], left);
    m_at = 0;
    m_end = left;
    while (m_end < m_buffer.size()) {
        const std::size_t count = readSome(&m_buffer[m_end], m_buffer.size() - m_end);
        if (count == 0)
            break;
        m_end += count;
    }
    if (m_end == 0)
        fail(EIO);
}

void RowSpool::readLarge(unsigned char mark, Value& value)
{
    value.kind = Value::Kind::Whole;
    switch (mark) {
    case Real:
        value.kind = Value::Kind::Real;
        value.real = take<double>();
        break;
    case Int16:
        value.number = take<std::int16_t>();
        break;
    case Int32:
        value.number = take<std::int32_t>();
        break;
    case Int64:
        value.number = take<std::int64_t>();
        break;
    case ShortText:
        return readText(take<unsigned char>(), value);
    case LongText:
        return readText(take<std::uint32_t>(), value);
    default:
        fail(EIO);
    }
}

void RowSpool::readText(std::size_t size, Value& value)
{
    m_text.clear();
    while (m_text.size() < size) {
        if (m_at == m_end)
            refill();
        const std::size_t part = std::min(size - m_text.size(), m_end - m_at);
        m_text.append(&m_buffer[m_at], part);
        m_at += part;
    }
    value.kind = Value::Kind::Text;
    value.text = m_text;
}

} // namespace tessel
