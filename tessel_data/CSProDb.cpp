#include <tessel_data/CSProDb.h>

#include <tessel_data/DataError.h>
#include <tessel_data/Sqlite_p.h>

#include <sqlite3.h>

#include <limits>

namespace tessel {

CSProDb::CSProDb(const QString& path)
    : m_file(std::make_unique<SqliteFile>(path))
{
    if (!m_file->hasTable(QStringLiteral("meta"))) {
        throw DataError(DataError::Code::NotThisFormat, path,
            QStringLiteral("is an SQLite file but no CSPro DB: it has no table meta"));
    }
    readMeta();
}

CSProDb::~CSProDb() = default;

const QByteArray& CSProDb::dictionary() const
{
    return m_dictionary;
}

int CSProDb::schemaVersion() const
{
    return m_schemaVersion;
}

const QString& CSProDb::csproVersion() const
{
    return m_csproVersion;
}

void CSProDb::readMeta()
{
    const auto fail = [this](DataError::Code code, const QString& text) {
        throw DataError(code, m_file->path(), text);
    };
    const auto damaged = DataError::Code::Damaged;
    const QSet<QString> needed { QStringLiteral("schema_version"), QStringLiteral("cspro_version"),
        QStringLiteral("dictionary") };
    if (!m_file->columnsOf(QStringLiteral("meta")).contains(needed)) {
        fail(DataError::Code::NotThisFormat,
            QStringLiteral("is an SQLite file but no CSPro DB: its table meta has no columns "
                           "schema_version, cspro_version and dictionary"));
    }
    SqliteQuery row(*m_file,
        QStringLiteral("SELECT t.schema_version, t.cspro_version, t.dictionary FROM main.meta t"));
    if (!row.step())
        fail(damaged, QStringLiteral("holds no dictionary: its table meta is empty"));
    const qint64 schema = row.type(0) == SQLITE_INTEGER ? row.integer(0) : 0;
    m_schemaVersion = schema > std::numeric_limits<int>::max() ? 0 : int(schema);
    const std::string_view version = row.text(1);
    m_csproVersion = QString::fromUtf8(version.data(), int(version.size()));
    const bool isText = row.type(2) == SQLITE_TEXT;
    const std::string_view text = row.text(2);
    if (!isText || text.empty())
        fail(damaged, QStringLiteral("holds no dictionary: what its table meta has is no text"));
    m_dictionary = QByteArray(text.data(), int(text.size()));
    if (row.step())
        fail(
            damaged, QStringLiteral("holds several dictionaries: its table meta has several rows"));
}

} // namespace tessel
