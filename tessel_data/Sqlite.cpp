#include <tessel_data/Sqlite_p.h>

#include <tessel_data/DataError.h>

#include <QFile>

#include <sqlite3.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

namespace tessel {

namespace {

// The largest real dictionary is half a megabyte; decoded, a text of this size still fits.
constexpr int MebiByte = 1'048'576;
constexpr int LongestText = 256 * MebiByte;

// In the head: the number of changes.
constexpr int CounterPlace = 24;
constexpr int CounterSize = 4;

constexpr int StepsBetweenQuestions = 100'000; // a millisecond or so

constexpr int PatienceInMilliseconds = 1000; // with a program that is just writing

// Without links, as the files that SQLite keeps beside a database stand beside the file itself.
QByteArray realPath(const QString& path)
{
    const std::unique_ptr<char, void (*)(void*)> real(
        ::realpath(QFile::encodeName(path).constData(), nullptr), std::free);
    return QByteArray(real.get());
}

// Its changes go to a file beside it first, for which SQLite makes files even to read.
bool hasWriteAheadLog(const QByteArray& head)
{
    constexpr int WriteVersion = 18;
    constexpr int ReadVersion = 19;
    constexpr char WriteAhead = 2;
    return head.size() > ReadVersion
        && (head.at(WriteVersion) == WriteAhead || head.at(ReadVersion) == WriteAhead);
}

// A program that has the file open keeps both; after a crash the log holds changes.
bool hasLogBeside(const QByteArray& path)
{
    return QFile::exists(QFile::decodeName(path + "-wal"))
        || QFile::exists(QFile::decodeName(path + "-shm"));
}

// A path holds any character, also those that mean something in an address.
QByteArray addressOf(const QByteArray& path, bool isImmutable)
{
    return "file://" + path.toPercentEncoding("/") + "?mode=ro"
        + (isImmutable ? "&immutable=1" : "");
}

// What a forged file could make of a plain query is turned off.
void distrust(sqlite3* connection)
{
    for (const int setting : { SQLITE_DBCONFIG_ENABLE_TRIGGER, SQLITE_DBCONFIG_ENABLE_VIEW,
             SQLITE_DBCONFIG_TRUSTED_SCHEMA })
        sqlite3_db_config(connection, setting, 0, nullptr);
    sqlite3_db_config(connection, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
    sqlite3_limit(connection, SQLITE_LIMIT_LENGTH, LongestText);
    sqlite3_exec(connection, "PRAGMA cell_size_check = ON", nullptr, nullptr, nullptr);
}

} // namespace

SqliteFile::SqliteFile(const QString& path)
    : m_path(path)
{
    try {
        open();
    } catch (...) {
        sqlite3_close(m_database);
        throw;
    }
}

SqliteFile::~SqliteFile()
{
    sqlite3_close_v2(m_database);
}

void SqliteFile::open()
{
    m_realPath = realPath(m_path);
    QFile file(QFile::decodeName(m_realPath));
    if (m_realPath.isEmpty() || ::stat(m_realPath.constData(), &m_first) != 0
        || !file.open(QIODevice::ReadOnly)) {
        const QString reason = file.error() == QFile::NoError
            ? QString::fromLocal8Bit(std::strerror(errno))
            : file.errorString();
        throw DataError(
            DataError::Code::CannotOpen, m_path, QStringLiteral("cannot be read: ") + reason);
    }
    constexpr qint64 headSize = 100;
    const QByteArray head = file.read(headSize);
    file.close();
    checkHead(head);
    const bool hasLog = hasWriteAheadLog(head);
    if (hasLog && hasLogBeside(m_realPath)) {
        throw DataError(DataError::Code::Busy, m_path,
            QStringLiteral("is open in another program or was left so (a file of its name and -wal "
                           "or -shm is beside it), and may have changes that are not yet in it; "
                           "close it there, or open and close it in CSPro"));
    }
    const int result = sqlite3_open_v2(addressOf(m_realPath, hasLog).constData(), &m_database,
        SQLITE_OPEN_READONLY | SQLITE_OPEN_URI | SQLITE_OPEN_NOMUTEX, nullptr);
    if (result != SQLITE_OK)
        fail(result);
    m_firstCounter = head.mid(CounterPlace, CounterSize);
    sqlite3_busy_timeout(m_database, PatienceInMilliseconds);
    distrust(m_database);
    run("BEGIN");
    run("SELECT count(*) FROM sqlite_master"); // takes the lock
}

void SqliteFile::checkHead(const QByteArray& head) const
{
    if (head.startsWith(QByteArray("SQLite format 3\0", 16)))
        return;
    if (m_path.endsWith(QLatin1String(".csdbe"), Qt::CaseInsensitive)) {
        throw DataError(DataError::Code::Encrypted, m_path,
            QStringLiteral("is encrypted; save it without a password in CSPro first"));
    }
    throw DataError(DataError::Code::NotThisFormat, m_path,
        head.isEmpty()
            ? QStringLiteral("is empty: no CSPro DB")
            : QStringLiteral("is no CSPro DB that can be read: it is encrypted or damaged"));
}

void SqliteFile::run(const char* sql) const
{
    const int result = sqlite3_exec(m_database, sql, nullptr, nullptr, nullptr);
    if (result != SQLITE_OK)
        fail(result);
}

bool SqliteFile::hasTable(const QString& name) const
{
    SqliteQuery query(*this,
        QStringLiteral("SELECT 1 FROM sqlite_master WHERE type = 'table' AND name = ?1 COLLATE "
                       "NOCASE AND sql LIKE 'CREATE TABLE%' AND NOT EXISTS (SELECT 1 FROM "
                       "pragma_table_xinfo(?1) WHERE hidden <> 0)"));
    const QByteArray bytes = name.toUtf8();
    query.bind(1, std::string_view(bytes.constData(), std::size_t(bytes.size())));
    return query.step();
}

QSet<QString> SqliteFile::columnsOf(const QString& table) const
{
    SqliteQuery query(*this, QStringLiteral("SELECT name FROM pragma_table_xinfo(?1)"));
    const QByteArray bytes = table.toUtf8();
    query.bind(1, std::string_view(bytes.constData(), std::size_t(bytes.size())));
    QSet<QString> names;
    while (query.step()) {
        const std::string_view name = query.text(0);
        names.insert(QString::fromUtf8(name.data(), int(name.size())).toLower());
    }
    return names;
}

bool SqliteFile::hasChanged() const
{
    struct stat now { };
    return ::stat(m_realPath.constData(), &now) != 0 || now.st_ino != m_first.st_ino
        || now.st_size != m_first.st_size || now.st_mtim.tv_sec != m_first.st_mtim.tv_sec
        || now.st_mtim.tv_nsec != m_first.st_mtim.tv_nsec || changeCounter() != m_firstCounter;
}

// Through SQLite's own file: to close another one would give up its locks.
QByteArray SqliteFile::changeCounter() const
{
    sqlite3_file* file = nullptr;
    QByteArray counter(CounterSize, '\0');
    const int status = sqlite3_file_control(
        m_database, "main", SQLITE_FCNTL_FILE_POINTER, static_cast<void*>(&file));
    const bool isRead = status == SQLITE_OK
        && file->pMethods->xRead(file, counter.data(), CounterSize, CounterPlace) == SQLITE_OK;
    return isRead ? counter : QByteArray();
}

void SqliteFile::stopUnless(const std::function<bool()>& goesOn)
{
    m_goesOn = goesOn;
    sqlite3_progress_handler(
        m_database, StepsBetweenQuestions,
        [](void* self) { return static_cast<SqliteFile*>(self)->m_goesOn() ? 0 : 1; }, this);
}

void SqliteFile::fail(int result) const
{
    constexpr int primaryCode = 0xFF;
    if ((result & primaryCode) == SQLITE_INTERRUPT)
        throw SqliteStopped();
    const QString message = QString::fromUtf8(sqlite3_errmsg(m_database));
    // SQLite takes a disk that fails for a damaged file, too.
    int diskError = 0;
    sqlite3_file_control(m_database, "main", SQLITE_FCNTL_LAST_ERRNO, &diskError);
    if (diskError == EIO) {
        throw DataError(DataError::Code::CannotRead, m_path,
            QStringLiteral("cannot be read: ") + QString::fromLocal8Bit(std::strerror(diskError)));
    }
    switch (result & primaryCode) {
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
    case SQLITE_PROTOCOL:
        throw DataError(DataError::Code::Busy, m_path,
            QStringLiteral("is being changed by another program; close it there and try again"));
    case SQLITE_READONLY:
        throw DataError(DataError::Code::Busy, m_path,
            QStringLiteral("was left in the middle of a change (the file of its name and "
                           "-journal); open and close it in CSPro, then try again"));
    case SQLITE_TOOBIG:
        throw DataError(DataError::Code::Damaged, m_path,
            QStringLiteral("holds a text, such as its dictionary, larger than %1 MiB")
                .arg(LongestText / MebiByte));
    case SQLITE_CORRUPT:
    case SQLITE_NOTADB:
    case SQLITE_FORMAT:
    case SQLITE_ERROR:
        throw DataError(DataError::Code::Damaged, m_path,
            QStringLiteral("is a damaged CSPro DB or other SQLite file (%1); get it anew")
                .arg(message));
    case SQLITE_CANTOPEN:
    case SQLITE_PERM:
        throw DataError(
            DataError::Code::CannotOpen, m_path, QStringLiteral("cannot be read: ") + message);
    default:
        throw DataError(
            DataError::Code::CannotRead, m_path, QStringLiteral("cannot be read: ") + message);
    }
}

void SqliteQuery::Finalize::operator()(sqlite3_stmt* statement) const
{
    sqlite3_finalize(statement);
}

SqliteQuery::SqliteQuery(const SqliteFile& file, const QString& sql, Plan plan)
    : m_file(file)
{
    if (plan == Plan::ByIndex) {
        SqliteQuery explained(file, QLatin1String("EXPLAIN QUERY PLAN ") + sql);
        while (explained.step()) {
            const std::string_view detail = explained.text(3);
            if (detail.substr(0, 4) == "SCAN") {
                throw DataError(DataError::Code::Damaged, file.path(),
                    QStringLiteral("lacks an index that CSPro makes (%1)")
                        .arg(QString::fromUtf8(detail.data(), int(detail.size()))));
            }
        }
    }
    sqlite3_stmt* statement = nullptr;
    const QByteArray bytes = sql.toUtf8();
    const int result =
        sqlite3_prepare_v2(file.get(), bytes.constData(), bytes.size(), &statement, nullptr);
    m_statement.reset(statement);
    if (result != SQLITE_OK)
        file.fail(result);
}

void SqliteQuery::bind(int place, qint64 number)
{
    sqlite3_bind_int64(m_statement.get(), place, number);
}

void SqliteQuery::bind(int place, std::string_view text)
{
    sqlite3_bind_text(m_statement.get(), place, text.data(), int(text.size()), SQLITE_TRANSIENT);
}

bool SqliteQuery::step()
{
    const int result = sqlite3_step(m_statement.get());
    if (result == SQLITE_ROW)
        return true;
    sqlite3_reset(m_statement.get());
    if (result != SQLITE_DONE)
        m_file.fail(result);
    return false;
}

void SqliteQuery::reset()
{
    sqlite3_reset(m_statement.get());
}

int SqliteQuery::columnCount() const
{
    return sqlite3_column_count(m_statement.get());
}

QString SqliteQuery::columnName(int column) const
{
    return QString::fromUtf8(sqlite3_column_name(m_statement.get(), column));
}

int SqliteQuery::type(int column) const
{
    return sqlite3_column_type(m_statement.get(), column);
}

bool SqliteQuery::isNull(int column) const
{
    return type(column) == SQLITE_NULL;
}

qint64 SqliteQuery::integer(int column) const
{
    return sqlite3_column_int64(m_statement.get(), column);
}

double SqliteQuery::real(int column) const
{
    return sqlite3_column_double(m_statement.get(), column);
}

std::string_view SqliteQuery::text(int column) const
{
    const auto* bytes = sqlite3_column_text(m_statement.get(), column);
    const auto size = std::size_t(sqlite3_column_bytes(m_statement.get(), column));
    return bytes ? std::string_view(reinterpret_cast<const char*>(bytes), size)
                 : std::string_view();
}

// Between double quotes a name that is missing would be taken for a text.
QString quotedName(const QString& name)
{
    QString quoted = name;
    quoted.replace(QLatin1Char('`'), QLatin1String("``"));
    return QLatin1Char('`') + quoted + QLatin1Char('`');
}

} // namespace tessel
