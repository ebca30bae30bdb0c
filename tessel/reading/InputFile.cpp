#include "reading/InputFile.h"

#include "process/Console.h"

#include <QFileInfo>

namespace {

struct KindName {
    FileKind kind;
    const char* name;
};

// The first of two names of a kind, and of two kinds of a name, is the one given.
constexpr KindName kindNames[] = { { FileKind::CSPro, "cspro" }, { FileKind::CSProDb, "cspro" },
    { FileKind::Spss, "spss" }, { FileKind::Stata, "stata" } };

constexpr qint64 HeadSize = 32;

// What one array of bytes holds, with room for what is made of it.
constexpr qint64 LargestSize = 2'000'000'000;

QByteArray headOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.read(HeadSize) : QByteArray();
}

// Said behind eight bytes.
bool isEncryptedSpss(const QByteArray& head)
{
    return head.mid(8, 12) == "ENCRYPTEDSAV";
}

// "$FL2", or "$FL3" for a compressed file.
bool isSpss(const QByteArray& head)
{
    return head.startsWith("$FL2") || head.startsWith("$FL3") || isEncryptedSpss(head);
}

// Marked text since format 117; before it the number of the format, the byte order (1 or 2), and 1.
bool isStata(const QByteArray& head)
{
    if (head.startsWith("<stata_dta>"))
        return true;
    if (head.size() < 4)
        return false;
    const auto format = static_cast<unsigned char>(head.at(0));
    return format >= 102 && format <= 116 && (head.at(1) == 1 || head.at(1) == 2)
        && head.at(2) == 1;
}

bool isSQLite(const QByteArray& head)
{
    return head.startsWith(QByteArray("SQLite format 3", 16)); // the zero at its end included
}

FileKind kindOfHead(const QByteArray& head)
{
    if (isSQLite(head))
        return FileKind::CSProDb;
    if (isSpss(head))
        return FileKind::Spss;
    return isStata(head) ? FileKind::Stata : FileKind::CSPro;
}

} // namespace

QString kindName(FileKind kind)
{
    for (const KindName& entry : kindNames) {
        if (entry.kind == kind)
            return QLatin1String(entry.name);
    }
    return QStringLiteral("unknown");
}

FileKind kindOfName(const QString& name)
{
    for (const KindName& entry : kindNames) {
        if (name == QLatin1String(entry.name))
            return entry.kind;
    }
    return FileKind::Unknown;
}

FileKind kindOfContent(const QString& path)
{
    return kindOfHead(headOf(path));
}

bool isEncrypted(const QString& path)
{
    return isEncryptedSpss(headOf(path));
}

bool failInput(const QString& path, int line, const QString& text)
{
    Console::tell(path, line, Console::Severity::Error, text);
    return false;
}

InputFile::InputFile(const QString& path)
    : m_path(path)
    , m_file(path)
{
}

bool InputFile::open()
{
    const QFileInfo info(m_path);
    if (!info.exists())
        return failInput(m_path, 0, QStringLiteral("no such file"));
    if (!info.isFile()) {
        return failInput(m_path, 0,
            QStringLiteral("is a directory, a pipe or a device; give the name of a file"));
    }
    if (!m_file.open(QIODevice::ReadOnly))
        return failReading();
    m_size = m_file.size();
    m_head = m_file.peek(HeadSize);
    if (m_file.error() != QFileDevice::NoError)
        return failReading();
    return !m_head.isEmpty() || failInput(m_path, 0, QStringLiteral("is empty"));
}

FileKind InputFile::kind() const
{
    return kindOfHead(m_head);
}

bool InputFile::readAll(QByteArray& bytes)
{
    if (m_size > LargestSize) {
        return failInput(m_path, 0,
            QStringLiteral("is larger than %1 bytes, more than can be read").arg(LargestSize));
    }
    // Short of the end readAll() stops without saying why; reading on says it.
    bytes.clear();
    for (QByteArray more = m_file.readAll(); !more.isEmpty(); more = m_file.readAll())
        bytes += more;
    if (m_file.error() != QFileDevice::NoError)
        return failReading();
    return bytes.size() >= m_size
        || failInput(m_path, 0,
            QStringLiteral("became shorter while it was read; try again when nothing writes it"));
}

qint64 InputFile::size() const
{
    return m_size;
}

const QString& InputFile::path() const
{
    return m_path;
}

bool InputFile::failReading() const
{
    return failInput(m_path, 0, QStringLiteral("cannot be read: %1").arg(m_file.errorString()));
}
