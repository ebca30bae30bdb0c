#pragma once

#include "DataRows.h"

#include <QFile>

#include <sqlite3.h>

// An SQLite file that stays open for more statements.
class SqliteWriter {
public:
    enum class Existing { Remove, Keep };

    explicit SqliteWriter(const QString& path, Existing existing = Existing::Remove)
    {
        if (existing == Existing::Remove)
            QFile::remove(path);
        sqlite3_open(path.toUtf8().constData(), &m_database);
    }
    ~SqliteWriter()
    {
        sqlite3_close(m_database);
    }
    void run(const QByteArray& sql)
    {
        char* message = nullptr;
        sqlite3_exec(m_database, sql.constData(), nullptr, nullptr, &message);
        if (message)
            qFatal("%s: %s", sql.constData(), message);
    }

private:
    sqlite3* m_database = nullptr;
};

// The beginning of a CSPro DB of the survey.
inline QByteArray metaSql(const char* version)
{
    return QByteArray("CREATE TABLE meta (schema_version INTEGER, cspro_version TEXT, dictionary "
                      "TEXT);INSERT INTO meta VALUES (")
        + version + ", '8.0', '" + surveyDictionary().replace("'", "''") + "');";
}

inline const char casesSql[] =
    "CREATE TABLE cases (id TEXT, key TEXT, label TEXT, questionnaire TEXT, "
    "deleted INTEGER, file_order REAL UNIQUE, partial_save_mode TEXT);";

inline const char tablesSql[] =
    "CREATE TABLE `level-1` (`level-1-id` INTEGER PRIMARY KEY, `case-id` TEXT, place INTEGER, "
    "number INTEGER);CREATE UNIQUE INDEX i0 ON `level-1`(`case-id`);"
    "CREATE TABLE house (`house-id` INTEGER PRIMARY KEY, `level-1-id` INTEGER, rooms INTEGER, "
    "weight REAL, kind TEXT);CREATE INDEX i1 ON house(`level-1-id`);"
    "CREATE TABLE person (`person-id` INTEGER PRIMARY KEY, `level-1-id` INTEGER, occ INTEGER, "
    "age INTEGER, name TEXT, first TEXT);CREATE INDEX i2 ON person(`level-1-id`);";

inline const char rowsSql[] =
    "INSERT INTO cases VALUES ('u2', '0102', '', '', 0, 2.0, 'add'), "
    "('u1', '0101', '', '', 0, 1.0, NULL), ('u3', '0101', '', '', 1, 3.0, NULL);"
    "INSERT INTO `level-1` VALUES (1, 'u1', 1, 1), (2, 'u2', 1, 2), (3, 'u3', 1, 1);"
    "INSERT INTO house VALUES (1, 1, 3, 12.34, 'A '), (2, 2, 6, 1e51, 'CC'), (3, 3, 1, 1, 'A');"
    "INSERT INTO person VALUES (2, 1, 2, 999, 'Zoë   ', 'Zo'), (1, 1, 1, NULL, NULL, NULL), "
    "(3, 2, 1, 'old', 'Bob', 'Bo'), (4, 2, 2, 1.5, 'Al', 'Al');";

// Schema 3, with rows of three cases.
inline QByteArray surveyDb()
{
    return metaSql("3") + casesSql + tablesSql + rowsSql;
}
