#pragma once

#include "PostgreSqlServer.h"
#include "RunTessel.h"

#include <QtTest>

#include <algorithm>
#include <memory>
#include <random>
#include <sqlite3.h>

// Databases of several names in one place, which "tessel build" makes and a test asks.
class AddedTargets {
public:
    virtual ~AddedTargets() = default;

    // What the command line says of one.
    virtual QStringList arguments(const QString& name) const = 0;
    // Rows as texts with strokes between the values; an error as its message.
    virtual QStringList rows(const QString& name, const QString& sql) const = 0;
    void run(const QString& name, const QString& sql) const
    {
        const QStringList answer = rows(name, sql);
        if (!answer.isEmpty())
            qFatal("%s: %s", qPrintable(sql), qPrintable(answer.first()));
    }
    // All that changes when anything does.
    virtual QStringList state(const QString& name) const = 0;
    // Tables, indexes and views, and what there is to know of them.
    virtual QStringList objects(const QString& name) const = 0;
    // Their names, as they are written in a query; that of case_id left out.
    virtual QStringList columns(const QString& name, const QString& table) const = 0;

    // All that a database holds of cases, by their identification.
    QStringList contents(const QString& name, const QString& ids) const
    {
        QStringList contents = objects(name);
        contents += rows(name,
            "SELECT uuid, records, partly_saved, duplicate_of IS NULL, content, " + ids
                + " FROM cases ORDER BY " + ids + ", content");
        for (const QString& table : rows(name, "SELECT table_name FROM tessel_records")) {
            const QString all = "t." + columns(name, table).join(",t.");
            contents += rows(name, "SELECT " + all + " FROM " + table + " t ORDER BY " + all);
            // Every row is of a case of its identification.
            contents += rows(name,
                "SELECT count(*) FROM " + table + " t JOIN cases USING (case_id, " + ids + ")");
        }
        for (const char* table : { "tessel_records", "tessel_variables", "tessel_values" })
            contents +=
                rows(name, QStringLiteral("SELECT * FROM ") + table + " ORDER BY 1, 2, 3, 4");
        contents += rows(name,
            "SELECT kind, case_key, record, variable, value FROM tessel_problems ORDER BY 1, 2, 3, "
            "4, 5");
        contents += rows(name, "SELECT reason, text FROM tessel_rejects ORDER BY 1, 2");
        return contents;
    }
};

// An SQLite file that stays open.
class Database {
public:
    explicit Database(const QString& path)
    {
        sqlite3_open(path.toUtf8().constData(), &m_database);
    }
    ~Database()
    {
        sqlite3_close(m_database);
    }

    // Rows as texts with points between the values; an error as its message.
    QStringList rows(const QString& sql) const
    {
        sqlite3_stmt* statement = nullptr;
        if (sqlite3_prepare_v2(m_database, sql.toUtf8().constData(), -1, &statement, nullptr)
            != SQLITE_OK)
            return { QString::fromUtf8(sqlite3_errmsg(m_database)) };
        QStringList found;
        while (sqlite3_step(statement) == SQLITE_ROW) {
            QStringList row;
            for (int c = 0; c < sqlite3_column_count(statement); ++c) {
                const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(statement, c));
                row.append(text ? QString::fromUtf8(text) : QStringLiteral("-"));
            }
            found.append(row.join('|'));
        }
        sqlite3_finalize(statement);
        return found;
    }
    QString value(const QString& sql) const
    {
        return rows(sql).value(0);
    }
    void run(const QByteArray& sql)
    {
        char* message = nullptr;
        sqlite3_exec(m_database, sql.constData(), nullptr, nullptr, &message);
        if (message)
            qFatal("%s: %s", sql.constData(), message);
    }

    bool isLocked() const
    {
        const int result = sqlite3_exec(m_database, "BEGIN IMMEDIATE", nullptr, nullptr, nullptr);
        return result == SQLITE_BUSY;
    }

private:
    Q_DISABLE_COPY(Database)

    sqlite3* m_database = nullptr;
};

// SQLite files in a folder.
class SqliteTargets : public AddedTargets {
public:
    explicit SqliteTargets(const QString& folder)
        : m_folder(folder)
    {
    }

    QString path(const QString& name) const
    {
        return m_folder.filePath(name + ".sqlite");
    }
    QStringList arguments(const QString& name) const override
    {
        return { "--to", path(name) };
    }
    QStringList rows(const QString& name, const QString& sql) const override
    {
        return Database(path(name)).rows(sql);
    }
    QStringList state(const QString& name) const override
    {
        return { QFile::exists(path(name)) ? "there" : "gone",
            QString::fromLatin1(readFile(path(name)).toHex()) };
    }
    QStringList objects(const QString& name) const override
    {
        return rows(name, "PRAGMA integrity_check")
            + rows(name, "SELECT type, name, tbl_name FROM sqlite_master ORDER BY 1, 2");
    }
    QStringList columns(const QString& name, const QString& table) const override
    {
        return rows(name,
            "SELECT '\"' || name || '\"' FROM pragma_table_info('" + table
                + "') WHERE cid > 0 ORDER BY name");
    }

private:
    QDir m_folder;
};

// Schemas of a server.
class ServerTargets : public AddedTargets {
public:
    explicit ServerTargets(const PostgreSqlServer& server)
        : m_server(server)
    {
    }

    QStringList arguments(const QString& name) const override
    {
        return { "--to", m_server.connection(), "--schema", name };
    }
    QStringList rows(const QString& name, const QString& sql) const override
    {
        const Outcome outcome = m_server.ask(
            "\\pset null -\nSET search_path = " + name.toUtf8() + ";\n" + sql.toUtf8() + ";\n");
        const QByteArray text = outcome.status == 0 ? outcome.output : outcome.errors;
        return text.isEmpty() ? QStringList() : QString::fromUtf8(text).chopped(1).split('\n');
    }
    QStringList state(const QString& name) const override
    {
        return objects(name) + rows(name, "SELECT * FROM tessel_builds ORDER BY 1")
            + rows(name, "SELECT case_id, content FROM cases ORDER BY 1");
    }
    QStringList objects(const QString& name) const override
    {
        const QString here = " WHERE relnamespace = '" + name + "'::regnamespace ";
        return rows(name,
                   "SELECT relkind, relname, obj_description(oid), replace(pg_get_indexdef(oid), ' "
                       + name
                       + ".', ' ') FROM "
                         "pg_class"
                       + here + "AND relkind <> 't' ORDER BY 1, 2")
            + rows(name,
                "SELECT relname, attname, format_type(atttypid, atttypmod), col_description(c.oid, "
                "attnum) FROM pg_class c JOIN pg_attribute ON attrelid = c.oid"
                    + here + "AND NOT attisdropped AND attnum > 0 ORDER BY 1, 2")
            + rows(name,
                "SELECT viewname, definition FROM pg_views WHERE schemaname = '" + name
                    + "' ORDER BY 1");
    }
    QStringList columns(const QString& name, const QString& table) const override
    {
        return rows(name,
            "SELECT DISTINCT quote_ident(attname) FROM pg_attribute WHERE attrelid = '" + table
                + "'::regclass AND attnum > 1 AND NOT attisdropped ORDER BY 1");
    }

private:
    const PostgreSqlServer& m_server;
};

inline QByteArray item(
    const QByteArray& name, int start, int length, const QByteArray& type = "Numeric")
{
    return "[Item]\nLabel=" + name + "\nName=" + name + "\nStart=" + QByteArray::number(start)
        + "\nLen=" + QByteArray::number(length) + "\nDataType=" + type + "\n\n";
}

inline QByteArray survey(const QByteArray& items, const QByteArray& records = QByteArray())
{
    return "[Dictionary]\nVersion=CSPro 7.7\nLabel=S\nName=S\nRecordTypeStart=1\n"
           "RecordTypeLen=1\nPositions=Relative\nZeroFill=No\nDecimalChar=No\n\n"
           "[Level]\nLabel=Q\nName=Q\n\n[IdItems]\n\n"
        + item("PLACE", 2, 2) + item("NUMBER", 4, 2)
        + "[Record]\nLabel=House\nName=HOUSE\nRecordTypeValue='1'\nMaxRecords=1\nRecordLen=30\n\n"
        + items
        + "[Record]\nLabel=Person\nName=PERSON\nRecordTypeValue='2'\nRequired=No\nMaxRecords=9\n"
          "RecordLen=30\n\n"
        + item("AGE", 6, 3) + records;
}

inline const QByteArray roofs =
    "[ValueSet]\nLabel=Roof\nName=ROOF_VS1\nValue=1;Tiles\nValue=2;Straw\n\n";

inline QByteArray plainSurvey()
{
    return survey(item("ROOF", 6, 1) + roofs + item("NAME", 7, 5, "Alpha"));
}

// A CSPro DB of schema 2. Rows: UUID, deleted, partly saved, lines.
struct DbCase {
    QByteArray uuid;
    QByteArray lines;
    bool isDeleted = false;
    bool isPartlySaved = false;
};

inline void writeDb(const QString& path, const QVector<DbCase>& cases)
{
    QFile::remove(path);
    Database database(path);
    database.run("CREATE TABLE meta (schema_version INTEGER, cspro_version TEXT, dictionary TEXT);"
                 "INSERT INTO meta VALUES (2, '7.7', '"
        + plainSurvey().replace("'", "''")
        + "');CREATE TABLE cases (id TEXT, key TEXT, label TEXT, questionnaire TEXT, deleted "
          "INTEGER, file_order REAL UNIQUE, partial_save_mode TEXT);");
    for (int c = 0; c < cases.size(); ++c) {
        const DbCase& one = cases.at(c);
        database.run("INSERT INTO cases VALUES ('" + one.uuid + "', '" + one.lines.mid(1, 4)
            + "', '', '" + one.lines + "', " + (one.isDeleted ? "1" : "0") + ", "
            + QByteArray::number(c) + ", " + (one.isPartlySaved ? "'add'" : "NULL") + ");");
    }
}

// The cases of the example, in an order of their own.
inline QVector<QByteArray> shuffledCases(unsigned seed)
{
    constexpr int end = 14; // of the identification
    QByteArray text = readFile(QStringLiteral(TESSEL_EXAMPLES "/census.dat"));
    text.remove(0, text.startsWith("\xEF\xBB\xBF") ? 3 : 0);
    QVector<QByteArray> cases;
    QByteArray key;
    for (const QByteArray& line : text.split('\n')) {
        if (line.trimmed().isEmpty())
            continue;
        if (line.mid(1, end - 2) != key)
            cases.append(QByteArray());
        key = line.mid(1, end - 2);
        cases.last() += line + '\n';
    }
    std::shuffle(cases.begin(), cases.end(), std::mt19937(seed));
    return cases;
}

// What tests of additions do: a database "t" in a target of their choice, sources in a folder.
class AddedBuilds {
protected:
    // Before the first of them; what is missing of it is told by start().
    void startServer()
    {
        m_missing = m_server.start();
    }
    // Nothing is there yet; why there is no server, or null.
    QString start(bool isOnServer)
    {
        folder = std::make_unique<QTemporaryDir>();
        targets.reset();
        if (!isOnServer) {
            targets = std::make_unique<SqliteTargets>(folder->path());
            return QString();
        }
        if (m_missing.isEmpty()) {
            targets = std::make_unique<ServerTargets>(m_server);
            m_server.ask("SET client_min_messages = error;DROP SCHEMA IF EXISTS t, whole CASCADE;");
        }
        return m_missing;
    }
    QString path(const QString& name) const
    {
        return folder->filePath(name);
    }
    QStringList buildArguments(const QStringList& arguments, const QString& name = "t") const
    {
        return QStringList("build") + targets->arguments(name) + arguments;
    }
    Outcome build(const QStringList& arguments, const QString& name = "t") const
    {
        return runTessel(buildArguments(arguments, name));
    }
    Outcome add(const QByteArray& lines, const QString& name = "d.dat") const
    {
        writeFile(path(name), lines);
        return build({ "--add", path("d.dcf"), path(name) });
    }
    // Makes the first database.
    void make(const QByteArray& lines, const QByteArray& dictionary = plainSurvey()) const
    {
        writeFile(path("d.dcf"), dictionary);
        writeFile(path("first.dat"), lines);
        const Outcome outcome = build({ path("d.dcf"), path("first.dat"), "--overwrite" });
        QVERIFY2(outcome.status == 0, outcome.errors.constData());
    }
    QStringList rows(const QString& sql) const
    {
        return targets->rows("t", sql);
    }
    QStringList contents(
        const QString& ids = QStringLiteral("PLACE, NUMBER"), const QString& name = "t") const
    {
        return targets->contents(name, ids);
    }
    QStringList state() const
    {
        return targets->state("t");
    }
    // More than a pipe holds.
    static QByteArray manyLines()
    {
        return QByteArray("101021abcd\n").repeated(100'000);
    }
    // What became of the cases, or what is wrong.
    static QByteArray changes(const Outcome& outcome)
    {
        const QByteArray line = outcome.output.left(outcome.output.indexOf('\n'));
        return outcome.status == 0 ? line.mid(line.lastIndexOf(": ") + 2) : outcome.errors;
    }

    PostgreSqlServer m_server;
    std::unique_ptr<QTemporaryDir> folder;
    std::unique_ptr<AddedTargets> targets;

private:
    QString m_missing; // why there is no server
};
