#include "reading/CSProDb.h"

#include <QFile>

#include <sqlite3.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

namespace {

constexpr int MebiByte = 1'048'576;
constexpr int LargestDictionary = 256 * MebiByte;
constexpr int PatienceInMilliseconds = 1000; // with a program that is just writing

struct Finalizer {
    void operator()(sqlite3_stmt* statement) const
    {
        sqlite3_finalize(statement);
    }
};

using Statement = std::unique_ptr<sqlite3_stmt, Finalizer>;

// Null, with the connection's error, when the database has not what the query asks for.
Statement prepare(sqlite3* connection, const char* query)
{
    sqlite3_stmt* statement = nullptr;
    sqlite3_prepare_v2(connection, query, -1, &statement, nullptr);
    return Statement(statement);
}

QByteArray textOf(sqlite3_stmt* statement, int column)
{
    const void* const text = sqlite3_column_text(statement, column);
    return { static_cast<const char*>(text), sqlite3_column_bytes(statement, column) };
}

QString systemError(int number)
{
    return QString::fromLocal8Bit(std::strerror(number));
}

// Without links, as the files that SQLite keeps beside a database stand beside the file itself.
QByteArray realPath(const QString& path)
{
    const std::unique_ptr<char, void (*)(void*)> real(
        ::realpath(QFile::encodeName(path).constData(), nullptr), std::free);
    return QByteArray(real.get());
}

QByteArray headOf(const QByteArray& path)
{
    constexpr qint64 HeadSize = 100;
    QFile file(QFile::decodeName(path));
    return file.open(QIODevice::ReadOnly) ? file.read(HeadSize) : QByteArray();
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
    sqlite3_limit(connection, SQLITE_LIMIT_LENGTH, LargestDictionary);
    sqlite3_exec(connection, "PRAGMA cell_size_check = ON", nullptr, nullptr, nullptr);
}

} // namespace

void CSProDb::Closer::operator()(sqlite3* connection) const
{
    sqlite3_close_v2(connection);
}

CSProDb::CSProDb() = default;

CSProDb::~CSProDb() = default;

bool CSProDb::open(const QString& path)
{
    m_error = QString();
    const QByteArray real = realPath(path);
    if (real.isEmpty())
        return fail(QStringLiteral("cannot be read: %1").arg(systemError(errno)));
    return connect(real) && findMeta() && readMeta();
}

QString CSProDb::errorText() const
{
    return m_error;
}

QByteArray CSProDb::dictionary() const
{
    return m_dictionary;
}

int CSProDb::schemaVersion() const
{
    return m_schemaVersion;
}

QString CSProDb::csproVersion() const
{
    return m_csproVersion;
}

bool CSProDb::connect(const QByteArray& path)
{
    const bool hasLog = hasWriteAheadLog(headOf(path));
    if (hasLog && QFile(QFile::decodeName(path + "-wal")).size() > 0) {
        return fail(QStringLiteral("has changes that are not yet in it (the file of its name and "
                                   "-wal); close the program that has it open, or open and close "
                                   "it in CSPro"));
    }
    sqlite3* connection = nullptr;
    const int status = sqlite3_open_v2(addressOf(path, hasLog).constData(), &connection,
        SQLITE_OPEN_READONLY | SQLITE_OPEN_URI, nullptr);
    m_connection.reset(connection);
    if (status != SQLITE_OK)
        return failBySQLite();
    sqlite3_extended_result_codes(connection, 1);
    sqlite3_busy_timeout(connection, PatienceInMilliseconds);
    distrust(connection);
    return true;
}

// False unless the meta that a query would read is an ordinary table.
bool CSProDb::findMeta()
{
    const Statement tables = prepare(m_connection.get(),
        "SELECT 1 FROM sqlite_master WHERE lower(name) = 'meta' AND type = 'table' "
        "AND sql LIKE 'CREATE TABLE%'");
    if (!tables)
        return failBySQLite();
    switch (sqlite3_step(tables.get())) {
    case SQLITE_ROW:
        return true;
    case SQLITE_DONE:
        return fail(QStringLiteral("is an SQLite file but no CSPro DB: it has no table meta"));
    default:
        return failBySQLite();
    }
}

bool CSProDb::readMeta()
{
    const Statement rows = prepare(
        m_connection.get(), "SELECT schema_version, cspro_version, dictionary FROM main.meta");
    if (!rows) {
        return sqlite3_errcode(m_connection.get()) == SQLITE_ERROR ? fail(QStringLiteral(
                   "is an SQLite file but no CSPro DB: its table meta has no columns "
                   "schema_version, cspro_version and dictionary"))
                                                                   : failBySQLite();
    }
    const int status = sqlite3_step(rows.get());
    if (status == SQLITE_DONE)
        return fail(QStringLiteral("holds no dictionary: its table meta is empty"));
    if (status != SQLITE_ROW)
        return failBySQLite();
    const bool isText = sqlite3_column_type(rows.get(), 2) == SQLITE_TEXT;
    m_schemaVersion = sqlite3_column_int(rows.get(), 0);
    m_csproVersion = QString::fromUtf8(textOf(rows.get(), 1));
    m_dictionary = textOf(rows.get(), 2);
    if (!isText || m_dictionary.isEmpty())
        return fail(QStringLiteral("holds no dictionary: what its table meta has is no text"));
    const int next = sqlite3_step(rows.get());
    if (next == SQLITE_ROW)
        return fail(QStringLiteral("holds several dictionaries: its table meta has several rows"));
    return next == SQLITE_DONE || failBySQLite();
}

bool CSProDb::fail(const QString& text)
{
    m_error = text;
    return false;
}

bool CSProDb::failBySQLite()
{
    constexpr int PrimaryCode = 0xFF;
    sqlite3* const connection = m_connection.get();
    const QString message = QString::fromUtf8(sqlite3_errmsg(connection));
    switch (sqlite3_errcode(connection) & PrimaryCode) {
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
    case SQLITE_PROTOCOL:
        return fail(QStringLiteral("is being changed by another program; close it there and try "
                                   "again"));
    case SQLITE_READONLY:
        return fail(QStringLiteral("was left in the middle of a change (the file of its name and "
                                   "-journal); open and close it in CSPro, then try again"));
    case SQLITE_TOOBIG:
        return fail(QStringLiteral("holds a dictionary larger than %1 MiB, which no dictionary is")
                        .arg(LargestDictionary / MebiByte));
    case SQLITE_CORRUPT:
    case SQLITE_NOTADB:
    case SQLITE_FORMAT:
        return fail(QStringLiteral("is a damaged CSPro DB or other SQLite file (%1); get it anew")
                        .arg(message));
    default:
        return fail(QStringLiteral("cannot be read: %1").arg(message));
    }
}
