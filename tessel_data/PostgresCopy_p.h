#pragma once

#include <tessel_data/PostgresBytes_p.h>
#include <tessel_data/PostgresConnection_p.h>
#include <tessel_data/PostgresRows_p.h>

#include <condition_variable>
#include <deque>
#include <exception>
#include <mutex>
#include <optional>
#include <thread>

namespace tessel {

/*
 * Copies rows of several tables through one connection. A thread of its own sends them and waits
 * for the server, while more rows are made. One COPY at a time can be under way, so that rows of
 * all tables but one wait until they are many. All but stop() throw DataError.
 *
 * Until finish() the connection belongs to that thread.
 */
class PostgresCopy {
public:
    explicit PostgresCopy(PostgresConnection& server);
    ~PostgresCopy();

    // Rows of a table, which is new in this transaction; its number, from 0.
    int addTable(const QString& name);

    void append(int table, PostgresRows& form, const DatabaseRows& rows);
    // A row of whole numbers.
    void append(int table, const std::vector<qint64>& numbers);
    // That were appended so far.
    qint64 rows(int table) const;

    // Waits until the server has all rows; fails when it does not say so.
    void finish();
    // Sends nothing any more.
    void stop() noexcept;

private:
    Q_DISABLE_COPY(PostgresCopy)

    // Bytes of some rows.
    struct Piece {
        int table = 0;
        PostgresBytes bytes;
    };
    struct Table {
        QString statement;
        std::deque<PostgresBytes> pieces; // that wait
        qint64 rows = 0; // given to it
        qint64 copied = 0; // that the server took; of the other thread until it ended
    };

    template <typename Fill> void fill(int table, Fill addRows);
    void handOver(int table);
    void handOverAll();
    void handOverWhenDue(int table);
    void push(Piece piece);
    PostgresBytes freeBytes();
    void end();

    void run() noexcept;
    bool next(Piece& piece);
    void giveBack(PostgresBytes bytes);
    void send(const Piece& piece);
    void begin(int table);
    void endCopy();

    PostgresConnection& m_server;
    std::deque<Table> m_tables;
    int m_last = -1; // table whose rows were handed over last
    std::size_t m_waiting = 0; // bytes, of all tables

    std::optional<int> m_current; // whose COPY is under way; of the thread
    qint64 m_sent = 0; // bytes, in this COPY; of the thread

    std::mutex m_mutex; // of what follows
    std::condition_variable m_changed;
    std::deque<Piece> m_pieces; // that are to be sent
    std::deque<PostgresBytes> m_free;
    std::exception_ptr m_failure;
    bool m_isWhole = false;
    bool m_isStopped = false;
    std::thread m_thread;
};

} // namespace tessel
