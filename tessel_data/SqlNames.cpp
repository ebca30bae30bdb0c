#include <tessel_data/SqlNames.h>

#include <QSet>

namespace tessel {

namespace {

constexpr int LongestName = 63; // PostgreSQL cuts longer ones, in bytes
constexpr int RoomForNumber = 8;

// Of both databases, so that a name is the same in both.
const QSet<QString>& reservedWords()
{
    static const QSet<QString> words = [] {
        const QStringList list = QStringLiteral(
            "ADD ALL ALTER ANALYSE ANALYZE AND ANY ARRAY AS ASC ASYMMETRIC AUTHORIZATION "
            "AUTOINCREMENT BETWEEN BINARY BOTH CASE CAST CHECK COLLATE COLLATION COLUMN COMMIT "
            "CONCURRENTLY CONSTRAINT CREATE CROSS CURRENT_CATALOG CURRENT_DATE CURRENT_ROLE "
            "CURRENT_SCHEMA CURRENT_TIME CURRENT_TIMESTAMP CURRENT_USER DEFAULT DEFERRABLE DELETE "
            "DESC DISTINCT DO DROP ELSE END ESCAPE EXCEPT EXISTS FALSE FETCH FOR FOREIGN FREEZE "
            "FROM FULL GRANT GROUP HAVING IF ILIKE IN INDEX INITIALLY INNER INSERT INTERSECT INTO "
            "IS "
            "ISNULL JOIN LATERAL LEADING LEFT LIKE LIMIT LOCALTIME LOCALTIMESTAMP NATURAL NOT "
            "NOTHING NOTNULL NULL OFFSET ON ONLY OR ORDER OUTER OVERLAPS PLACING PRIMARY "
            "REFERENCES RETURNING RIGHT SELECT SESSION_USER SET SIMILAR SOME SYMMETRIC "
            "SYSTEM_USER TABLE TABLESAMPLE THEN TO TRAILING TRANSACTION TRUE UNION UNIQUE UPDATE "
            "USER USING VALUES VARIADIC VERBOSE WHEN WHERE WINDOW WITH")
                                     .split(QLatin1Char(' '));
        return QSet<QString>(list.cbegin(), list.cend());
    }();
    return words;
}

// The databases have columns and tables of these names of their own; quotes do not help.
bool isForbidden(const QString& name)
{
    static const QSet<QString> columns { QStringLiteral("tableoid"), QStringLiteral("xmin"),
        QStringLiteral("cmin"), QStringLiteral("xmax"), QStringLiteral("cmax"),
        QStringLiteral("ctid") };
    const QString lower = name.toLower();
    return columns.contains(lower) || lower.startsWith(QLatin1String("sqlite_"))
        || lower.startsWith(QLatin1String("pg_"));
}

bool isReserved(const QString& name)
{
    return reservedWords().contains(name.toUpper());
}

bool isPlain(const QString& name)
{
    for (int i = 0; i < name.size(); ++i) {
        const ushort code = name.at(i).unicode();
        const bool isLetter = (code >= 'A' && code <= 'Z') || (code >= 'a' && code <= 'z');
        const bool isDigit = code >= '0' && code <= '9';
        if (!isLetter && code != '_' && (i == 0 || !isDigit))
            return false;
    }
    return !name.isEmpty();
}

QString shortened(const QString& name, int bytes)
{
    QString result = name.left(bytes); // no character takes less than a byte
    if (result.size() < name.size() && name.at(result.size() - 1).isHighSurrogate())
        result.chop(1);
    while (result.toUtf8().size() > bytes)
        result.chop(result.size() > 1 && result.at(result.size() - 2).isHighSurrogate() ? 2 : 1);
    return result;
}

QString cleaned(const QString& wanted)
{
    QString name = visibleText(wanted.trimmed());
    for (QChar& character : name) {
        if (character.unicode() < 0x20)
            character = QLatin1Char('_');
    }
    if (name.isEmpty())
        name = QStringLiteral("unnamed");
    if (isForbidden(name))
        name.prepend(QLatin1Char('_'));
    return shortened(name, LongestName);
}

} // namespace

QString sqlIdentifier(const QString& name)
{
    if (isPlain(name) && !isReserved(name))
        return name;
    return QLatin1Char('"') + QString(name).replace(QLatin1Char('"'), QLatin1String("\"\""))
        + QLatin1Char('"');
}

QString sqlText(const QString& text)
{
    // No database takes a null character, and half a surrogate pair is no character.
    QString content = text;
    for (int i = 0; i < content.size(); ++i) {
        const bool isPair = content.at(i).isHighSurrogate() && i + 1 < content.size()
            && content.at(i + 1).isLowSurrogate();
        if (isPair)
            ++i;
        else if (content.at(i).isNull() || content.at(i).isSurrogate())
            content[i] = QChar::ReplacementCharacter;
    }
    content.replace(QLatin1Char('\''), QLatin1String("''"));
    return QLatin1Char('\'') + content + QLatin1Char('\'');
}

QString sqlComment(const QString& text)
{
    return QLatin1String("-- ") + visibleText(text).simplified();
}

QString shortSqlName(const QString& name)
{
    return shortened(name, LongestName - RoomForNumber);
}

QString SqlNames::take(const QString& wanted, const SqlThing& thing)
{
    const QString clean = cleaned(wanted);
    QString name = m_taken.take(clean);
    if (name.toUtf8().size() > LongestName)
        name = m_taken.take(shortened(clean, LongestName - RoomForNumber));
    if (name != wanted) {
        tell(SqlNote::Kind::Renamed, thing, name,
            clean != wanted ? SqlNote::Reason::NotAllowed : SqlNote::Reason::Taken);
    } else if (sqlIdentifier(name) != name) {
        tell(SqlNote::Kind::Quoted, thing, name,
            isReserved(name) ? SqlNote::Reason::ReservedWord : SqlNote::Reason::OtherCharacters);
    }
    return name;
}

void SqlNames::tell(
    SqlNote::Kind kind, const SqlThing& thing, const QString& name, SqlNote::Reason reason)
{
    if (thing.kind != SqlThing::Kind::Own)
        m_notes.append({ kind, thing, name, reason, 0, 0, QStringList() });
}

} // namespace tessel
