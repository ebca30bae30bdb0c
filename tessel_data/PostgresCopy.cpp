#include <tessel_data/PostgresCopy_p.h>

#include <tessel_data/DataError.h>

#include <algorithm>

namespace tessel {

namespace {

constexpr std::size_t PieceSize = 64 << 10; // sent at once; a row more, at most
constexpr std::size_t PieceRoom = PieceSize + (16 << 10);
constexpr std::size_t WaitingBytes = 8 << 20; // of all tables together
constexpr std::size_t SentPieces = 64; // on their way to the server
constexpr qint64 CopiedAtMost = 64 << 20; // in one COPY: an error is told at its end only

} // namespace

PostgresCopy::PostgresCopy(PostgresConnection& server)
    : m_server(server)
{
}

PostgresCopy::~PostgresCopy()
{
    stop();
}

// The rows need no freezing later: nobody sees the table before they are there.
int PostgresCopy::addTable(const QString& name)
{
    m_tables.emplace_back();
    m_tables.back().statement =
        QStringLiteral("COPY %1 FROM STDIN (FORMAT binary, FREEZE)").arg(name);
    return int(m_tables.size()) - 1;
}

qint64 PostgresCopy::rows(int table) const
{
    return m_tables[std::size_t(table)].rows;
}

void PostgresCopy::append(int table, PostgresRows& form, const DatabaseRows& rows)
{
    m_tables[std::size_t(table)].rows += qint64(rows.count());
    for (std::size_t row = 0; row < rows.count();)
        fill(table, [&](PostgresBytes& bytes) { row = form.append(bytes, rows, row, PieceSize); });
}

void PostgresCopy::append(int table, const std::vector<qint64>& numbers)
{
    ++m_tables[std::size_t(table)].rows;
    fill(table, [&](PostgresBytes& bytes) { PostgresRows::append(bytes, numbers); });
}

template <typename Fill> void PostgresCopy::fill(int table, Fill addRows)
{
    std::deque<PostgresBytes>& pieces = m_tables[std::size_t(table)].pieces;
    if (pieces.empty() || pieces.back().size() >= PieceSize)
        pieces.push_back(freeBytes());
    const std::size_t before = pieces.back().size();
    addRows(pieces.back());
    m_waiting += pieces.back().size() - before;
    handOverWhenDue(table);
}

// Rows of the table with most of them go to the server at once, the others now and then.
void PostgresCopy::handOverWhenDue(int table)
{
    if (m_last == table && m_tables[std::size_t(table)].pieces.back().size() >= PieceSize)
        handOver(table);
    if (m_waiting >= WaitingBytes)
        handOverAll();
}

void PostgresCopy::handOver(int table)
{
    Table& from = m_tables[std::size_t(table)];
    m_last = table;
    for (; !from.pieces.empty(); from.pieces.pop_front()) {
        m_waiting -= from.pieces.front().size();
        push({ table, std::move(from.pieces.front()) });
    }
}

void PostgresCopy::handOverAll()
{
    std::vector<int> order;
    for (int table = 0; table < int(m_tables.size()); ++table) {
        if (!m_tables[std::size_t(table)].pieces.empty())
            order.push_back(table);
    }
    std::stable_sort(order.begin(), order.end(), [this](int first, int second) {
        return m_tables[std::size_t(first)].pieces.size()
            < m_tables[std::size_t(second)].pieces.size();
    });
    for (const int table : order)
        handOver(table);
}

// Waits while the server has enough to do.
void PostgresCopy::push(Piece piece)
{
    if (!m_thread.joinable())
        m_thread = std::thread([this] { run(); });
    std::unique_lock<std::mutex> lock(m_mutex);
    m_changed.wait(lock, [this] { return m_failure || m_pieces.size() < SentPieces; });
    if (m_failure)
        std::rethrow_exception(m_failure);
    m_pieces.push_back(std::move(piece));
    m_changed.notify_all();
}

PostgresBytes PostgresCopy::freeBytes()
{
    const std::scoped_lock lock(m_mutex);
    if (m_free.empty())
        return PostgresBytes(PieceRoom);
    PostgresBytes bytes = std::move(m_free.back());
    m_free.pop_back();
    return bytes;
}

void PostgresCopy::end()
{
    {
        const std::scoped_lock lock(m_mutex);
        m_isWhole = true;
        m_changed.notify_all();
    }
    if (m_thread.joinable())
        m_thread.join();
}

void PostgresCopy::finish()
{
    handOverAll();
    end();
    if (m_failure)
        std::rethrow_exception(m_failure);
    for (const Table& table : m_tables) {
        if (table.copied != table.rows) {
            throw DataError(DataError::Code::DoesNotAddUp, m_server.name(),
                QStringLiteral("is not made: the server took %1 of %2 rows of a table; this is an "
                               "error of the program")
                    .arg(table.copied)
                    .arg(table.rows));
        }
    }
}

void PostgresCopy::stop() noexcept
{
    {
        const std::scoped_lock lock(m_mutex);
        m_isStopped = true;
    }
    end();
}

void PostgresCopy::run() noexcept
{
    try {
        Piece piece;
        while (next(piece)) {
            send(piece);
            giveBack(std::move(piece.bytes));
        }
        endCopy();
    } catch (...) {
        const std::scoped_lock lock(m_mutex);
        m_failure = std::current_exception();
        m_changed.notify_all();
    }
}

// What one long row needed is freed.
void PostgresCopy::giveBack(PostgresBytes bytes)
{
    if (bytes.size() > PieceRoom)
        return;
    bytes.clear();
    const std::scoped_lock lock(m_mutex);
    m_free.push_back(std::move(bytes));
}

// False when there is none any more, after stop() with the COPY still under way.
bool PostgresCopy::next(Piece& piece)
{
    std::unique_lock<std::mutex> lock(m_mutex);
    m_changed.wait(lock, [this] { return m_isWhole || !m_pieces.empty(); });
    if (m_isStopped)
        m_current.reset();
    if (m_isStopped || m_pieces.empty())
        return false;
    piece = std::move(m_pieces.front());
    m_pieces.pop_front();
    m_changed.notify_all();
    return true;
}

void PostgresCopy::send(const Piece& piece)
{
    if (m_current != piece.table || m_sent >= CopiedAtMost)
        begin(piece.table);
    m_server.copy(piece.bytes.view());
    m_sent += qint64(piece.bytes.size());
}

void PostgresCopy::begin(int table)
{
    endCopy();
    m_server.beginCopy(m_tables[std::size_t(table)].statement);
    m_server.copy(PostgresRows::header());
    m_current = table;
    m_sent = 0;
}

void PostgresCopy::endCopy()
{
    if (!m_current)
        return;
    m_server.copy(PostgresRows::trailer());
    m_tables[std::size_t(*m_current)].copied += m_server.endCopy();
    m_current.reset();
}

} // namespace tessel
