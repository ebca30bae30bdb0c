#include <tessel_data/SqliteTarget.h>

#include <tessel_data/BuildFile_p.h>
#include <tessel_data/DataError.h>
#include <tessel_data/DatabaseViews_p.h>
#include <tessel_data/SqlNames.h>

#include <QByteArray>

#include <cstdlib>
#include <new>
#include <optional>
#include <sqlite3.h>

namespace tessel {

namespace {

using Column = DatabaseColumn;
using Kind = DatabaseTable::Kind;

// Version of the tables that a build makes, in the header of the file.
constexpr int SchemaVersion = 1;

// The rows of a batch as a table that SQLite reads: much faster than a statement for each row.
struct BatchModule {
    const DatabaseTable* table = nullptr;
    const DatabaseRows* rows = nullptr; // while they are taken
};

struct BatchTable : sqlite3_vtab {
    const BatchModule* module = nullptr;
};

struct BatchCursor : sqlite3_vtab_cursor {
    std::size_t row = 0;
};

const BatchModule& moduleOf(sqlite3_vtab_cursor* cursor)
{
    return *static_cast<BatchTable*>(cursor->pVtab)->module;
}

int connectBatch(
    sqlite3* database, void* data, int, const char* const*, sqlite3_vtab** table, char**)
{
    const auto* module = static_cast<const BatchModule*>(data);
    QByteArray definition = "CREATE TABLE x(";
    for (int c = 0; c < module->table->columns.size(); ++c)
        definition += (c == 0 ? "c" : ",c") + QByteArray::number(c);
    const int result = sqlite3_declare_vtab(database, (definition + ')').constData());
    if (result != SQLITE_OK)
        return result;
    auto* made = new (std::nothrow) BatchTable;
    if (!made)
        return SQLITE_NOMEM;
    made->module = module;
    *table = made;
    return SQLITE_OK;
}

int disconnectBatch(sqlite3_vtab* table)
{
    delete static_cast<BatchTable*>(table);
    return SQLITE_OK;
}

int planBatch(sqlite3_vtab*, sqlite3_index_info*)
{
    return SQLITE_OK;
}

int openBatch(sqlite3_vtab*, sqlite3_vtab_cursor** cursor)
{
    *cursor = new (std::nothrow) BatchCursor;
    return *cursor ? SQLITE_OK : SQLITE_NOMEM;
}

int closeBatch(sqlite3_vtab_cursor* cursor)
{
    delete static_cast<BatchCursor*>(cursor);
    return SQLITE_OK;
}

int rewindBatch(sqlite3_vtab_cursor* cursor, int, const char*, int, sqlite3_value**)
{
    static_cast<BatchCursor*>(cursor)->row = 0;
    return SQLITE_OK;
}

int nextOfBatch(sqlite3_vtab_cursor* cursor)
{
    ++static_cast<BatchCursor*>(cursor)->row;
    return SQLITE_OK;
}

int isBatchAtEnd(sqlite3_vtab_cursor* cursor)
{
    return static_cast<BatchCursor*>(cursor)->row >= moduleOf(cursor).rows->count() ? 1 : 0;
}

int columnOfBatch(sqlite3_vtab_cursor* cursor, sqlite3_context* context, int column)
{
    const DatabaseValue value =
        moduleOf(cursor).rows->value(static_cast<BatchCursor*>(cursor)->row, column);
    switch (value.kind) {
    case DatabaseValue::Kind::Null:
        break;
    case DatabaseValue::Kind::Integer:
        sqlite3_result_int64(context, value.number);
        break;
    case DatabaseValue::Kind::Decimal:
        sqlite3_result_double(context, nearestDouble(value.number, value.decimals));
        break;
    case DatabaseValue::Kind::Real:
        sqlite3_result_double(context, value.real);
        break;
    case DatabaseValue::Kind::Text:
        sqlite3_result_text64(
            context, value.text.data(), value.text.size(), SQLITE_STATIC, SQLITE_UTF8);
        break;
    }
    return SQLITE_OK;
}

int rowOfBatch(sqlite3_vtab_cursor* cursor, sqlite3_int64* row)
{
    *row = sqlite3_int64(static_cast<BatchCursor*>(cursor)->row);
    return SQLITE_OK;
}

const sqlite3_module& batchModule()
{
    static const sqlite3_module module = [] {
        sqlite3_module made {};
        made.xConnect = connectBatch;
        made.xBestIndex = planBatch;
        made.xDisconnect = disconnectBatch;
        made.xOpen = openBatch;
        made.xClose = closeBatch;
        made.xFilter = rewindBatch;
        made.xNext = nextOfBatch;
        made.xEof = isBatchAtEnd;
        made.xColumn = columnOfBatch;
        made.xRowid = rowOfBatch;
        return made;
    }();
    return module;
}

struct CloseDatabase {
    void operator()(sqlite3* database) const
    {
        sqlite3_close_v2(database);
    }
};

struct FinalizeStatement {
    void operator()(sqlite3_stmt* statement) const
    {
        sqlite3_finalize(statement);
    }
};

using Statement = std::unique_ptr<sqlite3_stmt, FinalizeStatement>;

} // namespace

class SqliteTarget::Job {
public:
    Job(const QString& target, Existing existing)
        : path(target)
        , mayReplace(existing == Existing::Replace)
    {
    }

    void begin(const DatabasePlan& databasePlan);
    qint64 append(int table, const DatabaseRows& rows);
    void markDuplicate(qint64 caseId, qint64 firstCaseId);
    bool finish(const GoesOn& goesOn);
    void close() noexcept;

    QString path;
    bool mayReplace;

private:
    struct Insertion {
        BatchModule module;
        Statement statement;
    };

    [[noreturn]] void fail(int result) const;
    void open();
    void run(const QString& sql) const;
    Statement prepare(const QString& sql) const;
    QString definition(const DatabaseTable& table) const;
    void prepareInsertion(int table);
    void makeIndexes() const;
    void makeViews() const;

    const DatabasePlan* m_plan = nullptr;
    std::unique_ptr<BuildFile> m_file;
    std::unique_ptr<sqlite3, CloseDatabase> m_database;
    std::vector<Insertion> m_insertions; // by table
    Statement m_duplicate;
};

void SqliteTarget::Job::fail(int result) const
{
    const QString reason = result == SQLITE_FULL
        ? QStringLiteral("the disk or the quota is full")
        : QString::fromUtf8(m_database ? sqlite3_errmsg(m_database.get()) : sqlite3_errstr(result));
    throw DataError(
        DataError::Code::CannotWrite, path, QStringLiteral("cannot be written: ") + reason);
}

void SqliteTarget::Job::run(const QString& sql) const
{
    const int result =
        sqlite3_exec(m_database.get(), sql.toUtf8().constData(), nullptr, nullptr, nullptr);
    if (result != SQLITE_OK)
        fail(result);
}

Statement SqliteTarget::Job::prepare(const QString& sql) const
{
    sqlite3_stmt* statement = nullptr;
    const QByteArray bytes = sql.toUtf8();
    const int result = sqlite3_prepare_v3(m_database.get(), bytes.constData(), bytes.size(),
        SQLITE_PREPARE_PERSISTENT, &statement, nullptr);
    if (result != SQLITE_OK)
        fail(result);
    return Statement(statement);
}

// Nobody else sees the file before it is whole, so that it needs no journal.
void SqliteTarget::Job::open()
{
    sqlite3* database = nullptr;
    const int result = sqlite3_open_v2(m_file->temporaryPath().constData(), &database,
        SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX, nullptr);
    m_database.reset(database);
    if (result != SQLITE_OK)
        fail(result);
    run(QStringLiteral("PRAGMA page_size = 32768; PRAGMA encoding = 'UTF-8';"
                       "PRAGMA journal_mode = OFF; PRAGMA synchronous = OFF;"
                       "PRAGMA locking_mode = EXCLUSIVE; PRAGMA cache_size = -16384;"
                       "PRAGMA user_version = %1; BEGIN")
            .arg(SchemaVersion));
}

void SqliteTarget::Job::begin(const DatabasePlan& databasePlan)
{
    m_plan = &databasePlan;
    m_file = std::make_unique<BuildFile>(path, mayReplace);
    open();
    m_insertions.resize(m_plan->tables.size());
    for (std::size_t t = 0; t < m_plan->tables.size(); ++t) {
        run(definition(m_plan->tables[t]));
        prepareInsertion(int(t));
    }
    if (m_plan->hasCases) {
        m_duplicate = prepare(QStringLiteral("UPDATE cases SET duplicate_of = ?2 WHERE case_id = "
                                             "?1 AND duplicate_of IS NULL"));
    }
}

QString SqliteTarget::Job::definition(const DatabaseTable& table) const
{
    const bool isKeyed = table.kind == Kind::Cases || !m_plan->hasCases;
    QStringList columns;
    for (int c = 0; c < table.columns.size(); ++c) {
        const Column& column = table.columns.at(c);
        QString text = sqlIdentifier(column.name) + QLatin1Char(' ') + column.sqlType;
        if (c == 0 && isKeyed && column.role != Column::Role::Value && table.kind != Kind::Repeat)
            text += QLatin1String(" PRIMARY KEY");
        else if (column.role != Column::Role::Value)
            text += QLatin1String(" NOT NULL");
        else if (c == 0 && table.kind == Kind::Values)
            text += QLatin1String(" UNIQUE");
        columns.append(text);
    }
    return QStringLiteral("CREATE TABLE %1 (\n  %2\n)")
        .arg(sqlIdentifier(table.name), columns.join(QLatin1String(",\n  ")));
}

void SqliteTarget::Job::prepareInsertion(int table)
{
    const DatabaseTable& definition = m_plan->tables[std::size_t(table)];
    Insertion& insertion = m_insertions[std::size_t(table)];
    insertion.module.table = &definition;
    const QString batch = QStringLiteral("tessel_batch_%1").arg(table);
    const int result = sqlite3_create_module_v2(
        m_database.get(), batch.toUtf8().constData(), &batchModule(), &insertion.module, nullptr);
    if (result != SQLITE_OK)
        fail(result);
    insertion.statement = prepare(QStringLiteral("INSERT INTO %1 SELECT * FROM %2")
                                      .arg(sqlIdentifier(definition.name), batch));
}

qint64 SqliteTarget::Job::append(int table, const DatabaseRows& rows)
{
    if (rows.count() == 0)
        return 0;
    Insertion& insertion = m_insertions[std::size_t(table)];
    insertion.module.rows = &rows;
    const int result = sqlite3_step(insertion.statement.get());
    insertion.module.rows = nullptr;
    if (result != SQLITE_DONE)
        fail(result);
    const qint64 count = sqlite3_changes64(m_database.get());
    sqlite3_reset(insertion.statement.get());
    return count;
}

void SqliteTarget::Job::markDuplicate(qint64 caseId, qint64 firstCaseId)
{
    sqlite3_bind_int64(m_duplicate.get(), 1, caseId);
    sqlite3_bind_int64(m_duplicate.get(), 2, firstCaseId);
    const int result = sqlite3_step(m_duplicate.get());
    sqlite3_reset(m_duplicate.get());
    if (result != SQLITE_DONE)
        fail(result);
}

void SqliteTarget::Job::makeIndexes() const
{
    for (const DatabaseIndex& index : m_plan->indexes) {
        QStringList columns;
        for (const QString& column : index.columns)
            columns.append(sqlIdentifier(column));
        run(QStringLiteral("CREATE INDEX %1 ON %2 (%3)")
                .arg(sqlIdentifier(index.name),
                    sqlIdentifier(m_plan->tables[std::size_t(index.table)].name),
                    columns.join(QLatin1String(", "))));
    }
}

void SqliteTarget::Job::makeViews() const
{
    for (const DatabaseTable& table : m_plan->tables) {
        if (!table.labelView.isEmpty())
            run(labelViewSql(*m_plan, table));
        if (!table.validView.isEmpty())
            run(validViewSql(table));
    }
}

bool SqliteTarget::Job::finish(const GoesOn& goesOn)
{
    constexpr int instructions = 200'000; // a few milliseconds
    GoesOn asked = goesOn;
    if (asked) {
        sqlite3_progress_handler(
            m_database.get(), instructions,
            [](void* data) { return (*static_cast<GoesOn*>(data))() ? 0 : 1; }, &asked);
    }
    try {
        makeIndexes();
        makeViews();
        run(QStringLiteral("COMMIT"));
    } catch (const DataError&) {
        const bool isStopped = (sqlite3_errcode(m_database.get()) & 0xFF) == SQLITE_INTERRUPT;
        close();
        if (isStopped)
            return false;
        throw;
    }
    m_insertions.clear();
    m_duplicate.reset();
    const int result = sqlite3_close(m_database.release());
    if (result != SQLITE_OK)
        fail(result);
    m_file->publish();
    m_file.reset();
    return true;
}

void SqliteTarget::Job::close() noexcept
{
    m_insertions.clear();
    m_duplicate.reset();
    m_database.reset();
    m_file.reset();
}

SqliteTarget::SqliteTarget(const QString& path, Existing existing)
    : m_job(std::make_unique<Job>(path, existing))
{
}

SqliteTarget::~SqliteTarget()
{
    m_job->close();
}

SqlDialect SqliteTarget::dialect() const
{
    return SqlDialect::Sqlite;
}

QString SqliteTarget::name() const
{
    return m_job->path;
}

void SqliteTarget::begin(const DatabasePlan& plan)
{
    m_job->begin(plan);
}

qint64 SqliteTarget::append(int table, const DatabaseRows& rows)
{
    return m_job->append(table, rows);
}

void SqliteTarget::markDuplicate(qint64 caseId, qint64 firstCaseId)
{
    m_job->markDuplicate(caseId, firstCaseId);
}

bool SqliteTarget::finish(const GoesOn& goesOn)
{
    return m_job->finish(goesOn);
}

void SqliteTarget::abandon() noexcept
{
    m_job->close();
}

} // namespace tessel
