#include "process/Output.h"

#include "process/Console.h"
#include "process/FileNames.h"
#include "text/ShownText.h"

#include <QCommandLineParser>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr int PieceSize = 1 << 16;
constexpr int MostLinks = 40; // as many as the system follows

QString systemError()
{
    return QString::fromLocal8Bit(std::strerror(errno));
}

// A descriptor that does not block is waited for.
bool canGoOn(int descriptor)
{
    if (errno == EAGAIN) {
        pollfd wanted { descriptor, POLLOUT, 0 };
        return poll(&wanted, 1, -1) >= 0 || errno == EINTR;
    }
    return errno == EINTR;
}

bool writeFully(int descriptor, const QByteArray& bytes)
{
    int done = 0;
    while (done < bytes.size()) {
        const ssize_t count =
            write(descriptor, bytes.constData() + done, std::size_t(bytes.size() - done));
        if (count < 0 && !canGoOn(descriptor))
            return false;
        done += int(std::max<ssize_t>(count, 0));
    }
    return true;
}

bool isSame(const struct stat& one, const struct stat& other)
{
    return one.st_dev == other.st_dev && one.st_ino == other.st_ino;
}

bool isFile(const QByteArray& path, const struct stat& status)
{
    struct stat found { };
    return stat(path.constData(), &found) == 0 && isSame(found, status);
}

bool isStandardOutput(const struct stat& status)
{
    struct stat standard { };
    return fstat(STDOUT_FILENO, &standard) == 0 && isSame(standard, status);
}

// The file behind the symbolic links of \a path, which need not exist; bytes throughout.
QByteArray behindLinks(const QByteArray& path)
{
    namespace fs = std::filesystem;
    fs::path result(path.toStdString());
    std::error_code error;
    for (int links = 0; links < MostLinks && fs::is_symlink(result, error); ++links)
        result = result.parent_path() / fs::read_symlink(result, error);
    return QByteArray::fromStdString(result.string());
}

// Text of whole lines with all but their ends made visible.
QByteArray shownLines(const QByteArray& bytes)
{
    QStringList lines = QString::fromUtf8(bytes).split(QLatin1Char('\n'));
    for (QString& line : lines) {
        if (line.endsWith(QLatin1Char('\r')))
            line.chop(1);
        line = printable(line);
    }
    return lines.join(QLatin1Char('\n')).toUtf8();
}

// Under another name, too, as a hard link gives it one.
bool isSameFile(const QString& first, const QString& second)
{
    if (first.isEmpty() || second.isEmpty())
        return false;
    struct stat one { };
    struct stat other { };
    const bool isOne = stat(QFile::encodeName(first).constData(), &one) == 0;
    const bool isOther = stat(QFile::encodeName(second).constData(), &other) == 0;
    if (isOne && isOther)
        return isSame(one, other);
    return QDir::cleanPath(QFileInfo(first).absoluteFilePath())
        == QDir::cleanPath(QFileInfo(second).absoluteFilePath());
}

} // namespace

const QCommandLineOption& Output::option()
{
    static const QCommandLineOption option({ QStringLiteral("o"), QStringLiteral("output") },
        QStringLiteral("Write to a file, whole or not at all."), QStringLiteral("file"));
    return option;
}

QString Output::readOption(
    const QCommandLineParser& parser, const QStringList& inputs, QString& path)
{
    path = FileNames::path(parser.value(option()));
    if (parser.isSet(option()) && path.isEmpty())
        return QStringLiteral("--output needs the name of a file");
    return checkPath(QStringLiteral("--output"), path, inputs);
}

QString Output::checkPath(const QString& option, const QString& path, const QStringList& others)
{
    for (const QString& other : others) {
        if (isSameFile(path, other))
            return QStringLiteral("%1 %2 would replace an input").arg(option, path);
    }
    return QString();
}

Output::Output(const QString& path)
    : m_name(path)
{
    if (path.isEmpty()) {
        m_name = QStringLiteral("standard output");
        m_descriptor = STDOUT_FILENO;
    } else {
        open();
    }
    m_isTerminal = m_descriptor >= 0 && isatty(m_descriptor) != 0;
}

Output::~Output()
{
    if (!m_file && m_descriptor > STDERR_FILENO)
        close(m_descriptor);
}

// What exists and is no file is written into; a file is replaced once the new one is whole.
void Output::open()
{
    const QByteArray path = QFile::encodeName(m_name);
    struct stat status { };
    const bool isFound = stat(path.constData(), &status) == 0;
    if (isFound && isStandardOutput(status))
        m_descriptor = STDOUT_FILENO;
    else if (isFound && !S_ISREG(status.st_mode))
        openSpecial(path);
    else if (isFound || errno == ENOENT)
        openFile(behindLinks(path), isFound ? &status : nullptr);
    else
        fail(systemError());
}

void Output::openSpecial(const QByteArray& path)
{
    m_descriptor = ::open(path.constData(), O_WRONLY | O_NOCTTY | O_CLOEXEC);
    if (m_descriptor < 0)
        fail(systemError());
}

void Output::openFile(const QByteArray& path, const struct stat* status)
{
    if (status && !isFile(path, *status)) { // as behind /proc/self/fd
        fail(QStringLiteral("the file behind the link has no name any more"));
        return;
    }
    if (!FileNames::isExpressible(path.constData())) {
        fail(FileNames::mistake(path.constData()));
        return;
    }
    m_file = std::make_unique<QSaveFile>(FileNames::path(QFile::decodeName(path)));
    if (m_file->open(QIODevice::WriteOnly))
        m_descriptor = m_file->handle();
    else
        fail(m_file->errorString());
}

void Output::fail(const QString& reason)
{
    if (!m_hasFailed) {
        Console::tell(m_name, 0, Console::Severity::Error,
            QStringLiteral("cannot be written: %1").arg(reason));
    }
    m_hasFailed = true;
}

void Output::put(const QByteArray& bytes)
{
    if (!m_hasFailed && !writeFully(m_descriptor, bytes))
        fail(systemError());
}

// Writes the first \a size of the waiting bytes.
void Output::flush(int size)
{
    put(m_isTerminal ? shownLines(m_waiting.left(size)) : m_waiting.left(size));
    m_waiting.remove(0, size);
}

void Output::add(const QByteArray& bytes)
{
    if (bytes.size() >= PieceSize && !m_isTerminal) {
        flush(m_waiting.size());
        put(bytes);
        return;
    }
    m_waiting += bytes;
    if (m_waiting.size() >= PieceSize) // no line of a terminal is torn
        flush(m_isTerminal ? m_waiting.lastIndexOf('\n') + 1 : m_waiting.size());
}

ByteSink Output::sink()
{
    return [this](const QByteArray& bytes) { add(bytes); };
}

bool Output::finish()
{
    flush(m_waiting.size());
    if (m_file && !m_hasFailed && !m_file->commit())
        fail(m_file->errorString());
    return !m_hasFailed;
}

bool Output::write(const QByteArray& bytes)
{
    add(bytes);
    return finish();
}
