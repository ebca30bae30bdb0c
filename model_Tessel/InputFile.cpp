#include <model_Tessel/InputFile.h>

#include <QFileInfo>

namespace {

constexpr qint64 HeadSize = 32;

// What one array of bytes holds, with room for what is made of it.
constexpr qint64 LargestSize = 2'000'000'000;

} // namespace

TInputFile::TInputFile(const QString& path)
    : m_path(path)
    , m_file(path)
{
}

bool TInputFile::open()
{
    const QFileInfo info(m_path);
    if (!info.exists())
        return fail(QStringLiteral("no such file"));
    if (!info.isFile())
        return fail(QStringLiteral("is a directory, a pipe or a device; give the name of a file"));
    if (!m_file.open(QIODevice::ReadOnly))
        return failReading();
    m_size = m_file.size();
    m_head = m_file.peek(HeadSize);
    if (m_file.error() != QFileDevice::NoError)
        return failReading();
    return !m_head.isEmpty() || fail(QStringLiteral("is empty"));
}

bool TInputFile::readAll(QByteArray& bytes)
{
    if (m_size > LargestSize) {
        return fail(
            QStringLiteral("is larger than %1 bytes, more than can be read").arg(LargestSize));
    }
    // Short of the end readAll() stops without saying why; reading on says it.
    bytes.clear();
    for (QByteArray more = m_file.readAll(); !more.isEmpty(); more = m_file.readAll())
        bytes += more;
    if (m_file.error() != QFileDevice::NoError)
        return failReading();
    return bytes.size() >= m_size
        || fail(
            QStringLiteral("became shorter while it was read; try again when nothing writes it"));
}

QString TInputFile::errorText() const
{
    return m_error;
}

QByteArray TInputFile::head() const
{
    return m_head;
}

qint64 TInputFile::size() const
{
    return m_size;
}

const QString& TInputFile::path() const
{
    return m_path;
}

bool TInputFile::fail(const QString& text)
{
    m_error = text;
    return false;
}

bool TInputFile::failReading()
{
    return fail(QStringLiteral("cannot be read: %1").arg(m_file.errorString()));
}
