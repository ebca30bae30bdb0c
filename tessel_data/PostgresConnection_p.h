#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <functional>
#include <memory>
#include <string_view>
#include <vector>

struct pg_conn;
struct pg_result;

namespace tessel {

/*
 * A connection to PostgreSQL. No message has a password. All but close() throw DataError, after
 * which only close() makes sense.
 */
class PostgresConnection {
public:
    using GoesOn = std::function<bool()>;

    explicit PostgresConnection(const QString& connection);
    ~PostgresConnection();

    // What is wrong with a connection string; null when nothing is.
    static QString mistakeIn(const QString& connection);
    // Whether a text begins as a connection of keywords and values does.
    static bool hasKeyword(const QString& text);
    // The same connection, as a URL.
    static QString withoutPasswords(const QString& connection);

    const QString& name() const
    {
        return m_name;
    }

    void open();
    // Gives up what is not committed, and waits until the server has done so.
    void close() noexcept;
    // Carries out statements; false when goesOn stopped them. changed: the rows that the last one
    // changed.
    bool run(const QString& statements, const GoesOn& goesOn = {}, qint64* changed = nullptr);
    // The rows of a query, as texts; null for null.
    std::vector<QStringList> query(const QString& statement);
    // Commits; its loss is told apart, since nobody knows then whether it was done.
    void commit();

    void beginCopy(const QString& statement);
    void copy(std::string_view bytes);
    // The number of rows that arrived.
    qint64 endCopy();

    [[noreturn]] void fail(const QString& text) const;

private:
    Q_DISABLE_COPY(PostgresConnection)

    struct CloseConnection {
        void operator()(pg_conn* connection) const;
    };
    struct ClearResult {
        void operator()(pg_result* result) const;
    };
    using Result = std::unique_ptr<pg_result, ClearResult>;

    void parse();
    void checkServer() const;
    void send(const QString& statements);
    bool waitFor(const GoesOn& goesOn);
    // The last result, or the first that is an error.
    Result result();
    Result succeeded(Result result) const;
    void cancel() noexcept;
    [[noreturn]] void fail(const pg_result* result) const;
    QString safe(const char* message) const;

    QString m_connection;
    QString m_name;
    QStringList m_secrets;
    std::unique_ptr<pg_conn, CloseConnection> m_server;
};

} // namespace tessel
