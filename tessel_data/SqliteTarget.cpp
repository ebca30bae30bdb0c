#include <tessel_data/SqliteTarget.h>

#include <tessel_data/BuildFile_p.h>
#include <tessel_data/DataError.h>
#include <tessel_data/DatabaseMerge_p.h>
#include <tessel_data/DatabaseViews_p.h>
#include <tessel_data/SqlNames.h>
#include <tessel_data/TargetForm_p.h>

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <cstdlib>
#include <new>
#include <optional>
#include <sqlite3.h>

namespace tessel {

namespace {

using Column = DatabaseColumn;
using Kind = DatabaseTable::Kind;

constexpr int PatienceMs = 5000; // with other programs

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

class SqliteTarget::Job : public MergeSession {
public:
    Job(const QString& target, Existing existing)
        : path(target)
        , mayReplace(existing == Existing::Replace)
    {
    }

    ExistingDatabase openExisting();
    void begin(const DatabasePlan& databasePlan);
    qint64 append(int table, const DatabaseRows& rows);
    void markDuplicate(qint64 caseId, qint64 firstCaseId);
    bool finish(const GoesOn& goesOn);
    void close() noexcept;

    QString name() const override
    {
        return path;
    }
    QString prefix(Place place) const override
    {
        return place == Place::Kept ? QStringLiteral("main.") : QStringLiteral("temp.");
    }
    qint64 run(const QString& sql) override;
    std::vector<QStringList> rows(const QString& sql) override;
    std::vector<TableColumn> columns(Place place, const QString& table) override;
    void makeTable(const DatabaseTable& table) override
    {
        run(definition(table, Place::Kept));
    }
    void makeIndex(const DatabaseIndex& index) override;
    void makeViews(const DatabaseTable& table) override;

    QString path;
    bool mayReplace;
    DatabaseChanges changes;

private:
    struct Insertion {
        BatchModule module;
        Statement statement;
    };

    [[noreturn]] void fail(int result) const;
    void open();
    void openFile(const QByteArray& file, int flags);
    void complete();
    Statement prepare(const QString& sql) const;
    QString definition(const DatabaseTable& table, Place place) const;
    void prepareInsertion(int table);

    const DatabasePlan* m_plan = nullptr;
    std::unique_ptr<BuildFile> m_file;
    std::unique_ptr<sqlite3, CloseDatabase> m_database;
    std::vector<Insertion> m_insertions; // by table
    Statement m_duplicate;
    Place m_place = Place::Kept; // where the rows go
    bool m_isAdded = false; // to a database that was there
};

void SqliteTarget::Job::fail(int result) const
{
    if ((result & 0xFF) == SQLITE_BUSY || (result & 0xFF) == SQLITE_LOCKED) {
        throw DataError(DataError::Code::Busy, path,
            QStringLiteral("is in use by another program, and as it was; close it there, or wait "
                           "for its end, and try again"));
    }
    if ((result & 0xFF) == SQLITE_NOTADB) {
        throw DataError(DataError::Code::NotThisFormat, path,
            QStringLiteral("is no SQLite database and cannot be added to"));
    }
    const QString reason = result == SQLITE_FULL
        ? QStringLiteral("the disk or the quota is full")
        : QString::fromUtf8(m_database ? sqlite3_errmsg(m_database.get()) : sqlite3_errstr(result));
    throw DataError(
        DataError::Code::CannotWrite, path, QStringLiteral("cannot be written: ") + reason);
}

qint64 SqliteTarget::Job::run(const QString& sql)
{
    const int result =
        sqlite3_exec(m_database.get(), sql.toUtf8().constData(), nullptr, nullptr, nullptr);
    if (result != SQLITE_OK)
        fail(result);
    return sqlite3_changes64(m_database.get());
}

std::vector<QStringList> SqliteTarget::Job::rows(const QString& sql)
{
    std::vector<QStringList> found;
    const Statement statement = prepare(sql);
    int result = sqlite3_step(statement.get());
    for (; result == SQLITE_ROW; result = sqlite3_step(statement.get())) {
        QStringList row;
        for (int c = 0; c < sqlite3_column_count(statement.get()); ++c) {
            const auto* text =
                reinterpret_cast<const char*>(sqlite3_column_text(statement.get(), c));
            row.append(QString::fromUtf8(text, sqlite3_column_bytes(statement.get(), c)));
        }
        found.push_back(row);
    }
    if (result != SQLITE_DONE)
        fail(result);
    return found;
}

std::vector<MergeSession::TableColumn> SqliteTarget::Job::columns(Place place, const QString& table)
{
    std::vector<TableColumn> found;
    const QString schema = place == Place::Kept ? QStringLiteral("main") : QStringLiteral("temp");
    for (const QStringList& row :
        rows(QStringLiteral("SELECT name, type FROM pragma_table_info(%1, %2)")
                 .arg(sqlText(table), sqlText(schema))))
        found.push_back({ row.at(0), row.at(1) });
    return found;
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

void SqliteTarget::Job::openFile(const QByteArray& file, int flags)
{
    sqlite3* database = nullptr;
    const int result = sqlite3_open_v2(
        file.constData(), &database, SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX | flags, nullptr);
    m_database.reset(database);
    if (result != SQLITE_OK)
        fail(result);
}

// Nobody else sees the file before it is whole, so that it needs no journal.
void SqliteTarget::Job::open()
{
    openFile(m_file->temporaryPath(), SQLITE_OPEN_CREATE);
    run(QStringLiteral("PRAGMA page_size = 32768; PRAGMA encoding = 'UTF-8';"
                       "PRAGMA journal_mode = OFF; PRAGMA synchronous = OFF;"
                       "PRAGMA locking_mode = EXCLUSIVE; PRAGMA cache_size = -16384;"
                       "PRAGMA user_version = %1; BEGIN")
            .arg(DatabaseForm));
}

// The batch goes to temporary tables, which need no journal.
ExistingDatabase SqliteTarget::Job::openExisting()
{
    if (!QFileInfo(path).isFile()) {
        throw DataError(DataError::Code::CannotWrite, path,
            QFileInfo(path).dir().exists()
                ? QStringLiteral("is not there to be added to; build it without --add first")
                : QStringLiteral(
                    "is not there to be added to, nor is its folder; correct the name, "
                    "or make the folder and build without --add first"));
    }
    m_isAdded = true;
    m_place = Place::Staged;
    openFile(QFile::encodeName(path), 0);
    sqlite3_busy_timeout(m_database.get(), PatienceMs);
    run(QStringLiteral("PRAGMA temp.journal_mode = OFF; PRAGMA temp.cache_size = -16384;"
                       "PRAGMA main.cache_size = -16384; BEGIN IMMEDIATE"));
    BuildFile::checkNotMade(path);
    QStringList tables;
    for (const QStringList& table : rows(QStringLiteral("SELECT name FROM sqlite_master")))
        tables.append(table.first());
    if (!areOfBuild(tables)) {
        throw DataError(DataError::Code::NotThisFormat, path,
            QStringLiteral("was not made by tessel build and cannot be added to"));
    }
    return existingDatabase([this](const QString& query) { return rows(query); });
}

void SqliteTarget::Job::begin(const DatabasePlan& databasePlan)
{
    m_plan = &databasePlan;
    if (!m_isAdded) {
        m_file = std::make_unique<BuildFile>(path, mayReplace);
        open();
    }
    m_insertions.resize(m_plan->tables.size());
    for (std::size_t t = 0; t < m_plan->tables.size(); ++t) {
        run(definition(m_plan->tables[t], m_place));
        prepareInsertion(int(t));
    }
    if (m_plan->hasCases) {
        m_duplicate = prepare(QStringLiteral("UPDATE %1cases SET duplicate_of = ?2 WHERE case_id "
                                             "= ?1 AND duplicate_of IS NULL")
                                  .arg(prefix(m_place)));
    }
    if (m_isAdded)
        DatabaseMerge(*this, *m_plan).check();
}

QString SqliteTarget::Job::definition(const DatabaseTable& table, Place place) const
{
    const bool hasKey = isKeyed(*m_plan, table);
    QStringList columns;
    for (int c = 0; c < table.columns.size(); ++c) {
        const Column& column = table.columns.at(c);
        QString text = sqlIdentifier(column.name) + QLatin1Char(' ') + column.sqlType;
        if (c == 0 && hasKey)
            text += QLatin1String(" PRIMARY KEY");
        else if (column.role != Column::Role::Value)
            text += QLatin1String(" NOT NULL");
        else if (c == 0 && table.kind == Kind::Values)
            text += QLatin1String(" UNIQUE");
        columns.append(text);
    }
    return QStringLiteral("CREATE TABLE %1 (\n  %2\n)")
        .arg(prefix(place) + sqlIdentifier(table.name), columns.join(QLatin1String(",\n  ")));
}

void SqliteTarget::Job::prepareInsertion(int table)
{
    const DatabaseTable& definition = m_plan->tables[std::size_t(table)];
    Insertion& insertion = m_insertions[std::size_t(table)];
    insertion.module.table = &definition;
    const QString batch =
        freePrefix(*m_plan, QStringLiteral("tessel_batch_")) + QString::number(table);
    const int result = sqlite3_create_module_v2(
        m_database.get(), batch.toUtf8().constData(), &batchModule(), &insertion.module, nullptr);
    if (result != SQLITE_OK)
        fail(result);
    insertion.statement =
        prepare(QStringLiteral("INSERT INTO %1 SELECT * FROM %2")
                    .arg(prefix(m_place) + sqlIdentifier(definition.name), batch));
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

void SqliteTarget::Job::makeIndex(const DatabaseIndex& index)
{
    QStringList columns;
    for (const QString& column : index.columns)
        columns.append(sqlIdentifier(column));
    const QString condition =
        index.skipsNull ? QStringLiteral(" WHERE %1 IS NOT NULL").arg(columns.first()) : QString();
    run(QStringLiteral("CREATE INDEX main.%1 ON %2 (%3)%4")
            .arg(sqlIdentifier(index.name),
                sqlIdentifier(m_plan->tables[std::size_t(index.table)].name),
                columns.join(QLatin1String(", ")), condition));
}

void SqliteTarget::Job::makeViews(const DatabaseTable& table)
{
    if (!table.labelView.isEmpty())
        run(labelViewSql(*m_plan, table));
    if (!table.validView.isEmpty())
        run(validViewSql(table));
}

// All that is done when the rows are there, and the end of the transaction.
void SqliteTarget::Job::complete()
{
    if (m_isAdded) {
        changes = DatabaseMerge(*this, *m_plan).run();
    } else {
        for (const DatabaseIndex& index : m_plan->indexes)
            makeIndex(index);
        for (const DatabaseTable& table : m_plan->tables)
            makeViews(table);
    }
    run(QStringLiteral("COMMIT"));
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
        complete();
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
    if (!m_isAdded)
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

ExistingDatabase SqliteTarget::openExisting()
{
    return m_job->openExisting();
}

DatabaseChanges SqliteTarget::changes() const
{
    return m_job->changes;
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
