#include <tessel_data/BuildFile_p.h>

#include <tessel_data/DataError.h>

#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <sqlite3.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tessel {

namespace {

bool exists(const QByteArray& path)
{
    struct stat status { };
    return ::lstat(path.constData(), &status) == 0;
}

} // namespace

BuildFile::BuildFile(const QString& path, bool mayReplace, Kind kind)
    : m_path(path)
    , m_mayReplace(mayReplace)
    , m_kind(kind)
{
    findPlace();
    checkPlace();
    open();
    try {
        checkPlace(); // again: now who adds to it would have seen this build
    } catch (...) {
        remove();
        throw;
    }
}

BuildFile::BuildFile(const QString& path)
    : m_path(path)
    , m_mayReplace(true)
{
    findPlace();
    if (exists(m_temporary))
        open();
}

void BuildFile::checkNotMade(const QString& path)
{
    BuildFile left(path);
    left.remove();
}

// A link stays one: what it points to is replaced.
void BuildFile::findPlace()
{
    const QFileInfo given(m_path);
    const QFileInfo info(given.exists() ? given.canonicalFilePath() : given.absoluteFilePath());
    m_place = QFile::encodeName(info.filePath());
    m_folder = QFile::encodeName(info.path());
    m_temporary =
        m_folder + "/." + QFile::encodeName(info.fileName()) + QByteArray(".tessel-build");
}

BuildFile::~BuildFile()
{
    remove();
}

void BuildFile::fail(int error) const
{
    throw DataError(DataError::Code::CannotWrite, m_path,
        QStringLiteral("cannot be written: ") + QString::fromLocal8Bit(std::strerror(error)));
}

void BuildFile::checkPlace() const
{
    struct stat status { };
    if (::stat(m_place.constData(), &status) != 0)
        return;
    if (!S_ISREG(status.st_mode)) {
        throw DataError(
            DataError::Code::CannotWrite, m_path, QStringLiteral("is no file; name another"));
    }
    if (!m_mayReplace) {
        throw DataError(DataError::Code::TargetExists, m_path,
            m_kind == Kind::Database
                ? QStringLiteral("is there already; name another file, or replace it with "
                                 "--overwrite, or add to it with --add")
                : QStringLiteral("is there already; name another folder, or replace it with "
                                 "--overwrite"));
    }
    if (status.st_size > 0 && m_kind == Kind::Database)
        checkUnused();
}

// Only a database is replaced, and none that another program has open for writing: a journal that
// it leaves would be taken for one of the new file. What a dead one left is undone first.
void BuildFile::checkUnused() const
{
    QFile file(QFile::decodeName(m_place));
    constexpr int headSize = 16;
    if (!file.open(QIODevice::ReadOnly))
        fail(EACCES);
    if (file.read(headSize) != QByteArray("SQLite format 3\0", headSize)) {
        throw DataError(DataError::Code::TargetExists, m_path,
            QStringLiteral("is no SQLite database and is not replaced; name another file"));
    }
    file.close();
    sqlite3* database = nullptr;
    int result = sqlite3_open_v2(m_place.constData(), &database, SQLITE_OPEN_READWRITE, nullptr);
    if (result == SQLITE_OK)
        result = sqlite3_exec(database, "BEGIN EXCLUSIVE", nullptr, nullptr, nullptr);
    // A journal that is there still never took effect.
    if (result == SQLITE_OK && !exists(m_place + "-wal"))
        ::unlink((m_place + "-journal").constData());
    sqlite3_close(database);
    const bool isUsed = (result & 0xFF) == SQLITE_BUSY;
    if (isUsed || exists(m_place + "-wal") || exists(m_place + "-journal")) {
        throw DataError(DataError::Code::Busy, m_path,
            QStringLiteral("is open in another program; close it there and try again"));
    }
}

// True when the name still leads to the file that is locked.
bool BuildFile::isStillOurs() const
{
    struct stat opened { };
    struct stat named { };
    return ::fstat(m_file, &opened) == 0 && ::stat(m_temporary.constData(), &named) == 0
        && opened.st_dev == named.st_dev && opened.st_ino == named.st_ino;
}

void BuildFile::open()
{
    constexpr int mode = 0666; // less what the user's mask takes away
    for (;;) {
        m_file = ::open(m_temporary.constData(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, mode);
        if (m_file < 0)
            fail(errno);
        if (::flock(m_file, LOCK_EX | LOCK_NB) != 0) {
            ::close(m_file);
            m_file = -1;
            throw DataError(DataError::Code::Busy, m_path,
                QStringLiteral("is being made by another build; wait for its end"));
        }
        if (isStillOurs())
            break;
        ::close(m_file);
        m_file = -1;
    }
    if (::ftruncate(m_file, 0) != 0)
        fail(errno);
}

void BuildFile::rename()
{
    if (m_mayReplace) {
        if (::rename(m_temporary.constData(), m_place.constData()) != 0)
            fail(errno);
        return;
    }
    if (::renameat2(
            AT_FDCWD, m_temporary.constData(), AT_FDCWD, m_place.constData(), RENAME_NOREPLACE)
        == 0)
        return;
    if (errno == EEXIST)
        checkPlace();
    if (errno != EINVAL && errno != ENOSYS)
        fail(errno);
    checkPlace(); // where the file system has no such rename
    if (::rename(m_temporary.constData(), m_place.constData()) != 0)
        fail(errno);
}

void BuildFile::syncFolder() const
{
    const int folder = ::open(m_folder.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (folder < 0)
        return;
    ::fsync(folder);
    ::close(folder);
}

void BuildFile::sync()
{
    if (::fsync(m_file) != 0)
        fail(errno);
}

// Swaps it with what stands in its place; false where the file system does not, or nothing does.
bool BuildFile::exchange()
{
    return ::renameat2(
               AT_FDCWD, m_temporary.constData(), AT_FDCWD, m_place.constData(), RENAME_EXCHANGE)
        == 0;
}

void BuildFile::place()
{
    m_hasFormer = m_mayReplace && exchange();
    if (!m_hasFormer)
        rename();
    m_isPlaced = true;
}

void BuildFile::undo() noexcept
{
    if (m_isPlaced && m_hasFormer)
        exchange();
    else if (m_isPlaced)
        ::unlink(m_place.constData());
    m_isPlaced = m_hasFormer = false;
}

void BuildFile::finish() noexcept
{
    if (m_hasFormer)
        ::unlink(m_temporary.constData());
    m_isPlaced = m_hasFormer = false;
    ::close(m_file);
    m_file = -1;
    syncFolder();
}

void BuildFile::publish()
{
    sync();
    rename();
    ::close(m_file);
    m_file = -1;
    syncFolder();
}

void BuildFile::remove() noexcept
{
    if (m_file < 0)
        return;
    undo();
    ::unlink(m_temporary.constData());
    ::close(m_file);
    m_file = -1;
}

} // namespace tessel
