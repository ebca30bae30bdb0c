#pragma once

#include <QByteArray>
#include <QSet>
#include <QString>
#include <QStringList>

#include <functional>
#include <memory>
#include <string_view>

#include <sys/stat.h>

struct sqlite3;
struct sqlite3_stmt;

namespace tessel {

// Thrown when a statement was stopped, as nobody wants its outcome any more.
struct SqliteStopped { };

/*
 * An SQLite file of another program, opened for reading only. Its schema is not trusted: nothing in
 * it runs, and texts are bounded. One transaction lasts as long as the object, so that all that is
 * read belongs together. Throws DataError, and SqliteStopped.
 */
class SqliteFile {
public:
    explicit SqliteFile(const QString& path);
    ~SqliteFile();

    sqlite3* get() const
    {
        return m_database;
    }
    // True for a table that is neither a view nor virtual, and computes none of its columns.
    bool hasTable(const QString& name) const;
    // Of all columns, in small letters.
    QSet<QString> columnsOf(const QString& table) const;
    // True when another program wrote to the file since it was opened, so that what was read may
    // be torn. No lock keeps it from doing so where there is a log of changes beside the file.
    bool hasChanged() const;
    // Statements end with SqliteStopped soon after goesOn() says false.
    void stopUnless(const std::function<bool()>& goesOn);
    [[noreturn]] void fail(int result) const;
    const QString& path() const
    {
        return m_path;
    }

private:
    Q_DISABLE_COPY(SqliteFile)

    void open();
    void checkHead(const QByteArray& head) const;
    QByteArray changeCounter() const;
    void run(const char* sql) const;

    QString m_path;
    QByteArray m_realPath;
    sqlite3* m_database = nullptr;
    struct stat m_first { }; // when it was opened
    QByteArray m_firstCounter;
    std::function<bool()> m_goesOn;
};

// A prepared statement.
class SqliteQuery {
public:
    enum class Plan { Any, ByIndex };

    // ByIndex: throws when all rows would have to be looked at each time.
    SqliteQuery(const SqliteFile& file, const QString& sql, Plan plan = Plan::Any);

    void bind(int place, qint64 number);
    void bind(int place, std::string_view text);
    // False at the end, and ready to be bound again.
    bool step();
    // Makes it ready to be bound again before its end.
    void reset();

    int columnCount() const;
    // Of a column of a table its name there.
    QString columnName(int column) const;
    int type(int column) const;
    bool isNull(int column) const;
    qint64 integer(int column) const;
    double real(int column) const;
    std::string_view text(int column) const;

private:
    struct Finalize {
        void operator()(sqlite3_stmt* statement) const;
    };

    const SqliteFile& m_file;
    std::unique_ptr<sqlite3_stmt, Finalize> m_statement;
};

// The name as SQLite takes it for a table or column and for nothing else.
QString quotedName(const QString& name);

} // namespace tessel
