#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <memory>
#include <string_view>

struct sqlite3;
struct sqlite3_stmt;

namespace tessel {

/*
 * An SQLite file of another program, opened for reading only. Its schema is not trusted: nothing in
 * it runs, and texts are bounded. One transaction lasts as long as the object, so that all that is
 * read belongs together. Throws DataError.
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
    bool hasColumns(const QString& table, const QStringList& names) const;
    [[noreturn]] void fail(int result) const;
    const QString& path() const
    {
        return m_path;
    }

private:
    Q_DISABLE_COPY(SqliteFile)

    void open();
    void checkHead(const QByteArray& head) const;
    void run(const char* sql) const;

    QString m_path;
    sqlite3* m_database = nullptr;
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
