#include <tessel_data/CSProDbSource.h>

#include <tessel_data/CSProDb.h>
#include <tessel_data/CSProDbTables_p.h>
#include <tessel_data/CSProDbText_p.h>
#include <tessel_data/DataError.h>

#include <optional>

namespace tessel {

namespace {

constexpr int OldestSchema = 2;
constexpr int NewestSchema = 3;

QString schemaProblem(int version)
{
    return version > NewestSchema
        ? QStringLiteral("was written by a later version of CSPro (schema %1)").arg(version)
        : QStringLiteral("has schema %1, which is not read").arg(version);
}

} // namespace

class CSProDbSource::Job {
public:
    explicit Job(const QString& path)
        : db(path)
        , file(*db.m_file)
        , schema(db.schemaVersion())
        , files(1)
        , run(file, files.front())
        , texts(run)
    {
        files.front().path = path;
        files.front().encoding = QStringLiteral("UTF-8");
        if (schema < OldestSchema || schema > NewestSchema)
            throw DataError(DataError::Code::NotThisFormat, path, schemaProblem(schema));
        if (!file.hasTable(QStringLiteral("cases"))) {
            throw DataError(DataError::Code::Damaged, path,
                QStringLiteral("is a CSPro DB without its table of cases"));
        }
        SqliteQuery count(file, QStringLiteral("SELECT count(*) FROM cases"));
        caseRows = count.step() ? count.integer(0) : 0;
    }

    void use(const DataDictionary& dictionary, const DataDictionary& ofFile)
    {
        run.dictionary = dictionary;
        if (schema == OldestSchema)
            cases = std::make_unique<CSProDbText>(run, ofFile);
        else
            cases = std::make_unique<CSProDbTables>(run, ofFile);
    }

    // None when it cannot be read, which another one may make up for.
    std::optional<DataDictionary> ownDictionary() const
    {
        try {
            return DataDictionary::fromBytes(db.dictionary(), db.m_file->path());
        } catch (const DataError&) {
            return std::nullopt;
        }
    }

    void readCases(BatchSink& output);

private:
    void readCase(const SqliteQuery& caseRow);
    void beginCase(const SqliteQuery& caseRow);
    void passDeleted(const SqliteQuery& caseRow);

public:
    CSProDb db;
    SqliteFile& file;
    int schema;
    qint64 caseRows = 0;
    std::vector<SourceFile> files;
    CSProDbRun run;
    bool isOwnUnreadable = false;
    std::unique_ptr<CSProDbCases> cases;

private:
    CSProDbCells texts; // of the table of cases
    std::string m_key;
};

void CSProDbSource::Job::readCases(BatchSink& output)
{
    run.sink = &output;
    if (isOwnUnreadable) {
        run.tell(run.told(LineProblem::NotInDictionary),
            "the file's own dictionary cannot be read, so that what the one given lacks is not "
            "known");
    }
    cases->begin();
    SqliteQuery rows(file,
        QStringLiteral("SELECT t.id, t.key, t.deleted, t.partial_save_mode, t.questionnaire "
                       "FROM cases t ORDER BY t.file_order"));
    while (run.isWanted && rows.step())
        readCase(rows);
    if (run.isWanted)
        cases->end();
    if (run.isWanted && !run.sink->batch().isEmpty())
        run.sink->deliver();
}

void CSProDbSource::Job::readCase(const SqliteQuery& caseRow)
{
    ++run.row;
    ++run.counts().casesRead;
    texts.beginRow();
    m_key = texts.textOf(caseRow, CSProDbCases::Key);
    if (caseRow.integer(CSProDbCases::IsDeleted) != 0)
        return passDeleted(caseRow);
    beginCase(caseRow);
    cases->readCase(caseRow, m_key);
}

void CSProDbSource::Job::beginCase(const SqliteQuery& caseRow)
{
    const bool isPartlySaved = !caseRow.isNull(CSProDbCases::PartialSaveMode);
    run.counts().partlySavedCases += isPartlySaved ? 1 : 0;
    run.caseNumber = run.counts().cases++;
    DataBatch& batch = run.batch();
    const TextRef key = batch.keep(m_key);
    const TextRef uuid = batch.keep(texts.textOf(caseRow, CSProDbCases::Id));
    batch.cases.push_back(
        { run.caseNumber, quint32(batch.records.size()), 0, run.row, key, uuid, isPartlySaved });
}

void CSProDbSource::Job::passDeleted(const SqliteQuery& caseRow)
{
    ++run.counts().deletedCases;
    DataBatch& batch = run.batch();
    const TextRef key = batch.keep(m_key);
    batch.deleted.push_back({ key, batch.keep(texts.textOf(caseRow, CSProDbCases::Id)) });
    cases->passDeleted(caseRow);
}

CSProDbSource::CSProDbSource(const QString& path, ValueSetChoice choice)
    : m_job(std::make_unique<Job>(path))
{
    const auto own = DataDictionary::fromBytes(m_job->db.dictionary(), path, choice);
    m_job->use(own, own);
}

CSProDbSource::CSProDbSource(const QString& path, const DataDictionary& dictionary)
    : m_job(std::make_unique<Job>(path))
{
    const auto own = m_job->ownDictionary();
    m_job->isOwnUnreadable = !own;
    m_job->use(dictionary, own ? *own : dictionary);
}

CSProDbSource::~CSProDbSource() = default;

const DataDictionary& CSProDbSource::dictionary() const
{
    return m_job->run.dictionary;
}

void CSProDbSource::read(BatchSink& sink)
{
    SqliteFile& file = m_job->file;
    file.stopUnless([&sink] { return sink.goesOn(); });
    try {
        m_job->readCases(sink);
    } catch (const SqliteStopped&) {
        return;
    } catch (const DataError& error) {
        if (error.code != DataError::Code::Damaged || !file.hasChanged())
            throw;
        throw DataError(DataError::Code::Busy, error.file,
            QStringLiteral("was changed by another program while it was read; wait until no other "
                           "program writes to it"));
    }
    m_job->files.front().changedWhileRead = file.hasChanged();
}

qint64 CSProDbSource::size() const
{
    return m_job->caseRows;
}

bool CSProDbSource::countsRows() const
{
    return true;
}

const std::vector<SourceFile>& CSProDbSource::files() const
{
    return m_job->files;
}

bool CSProDbSource::hasCases() const
{
    return true;
}

int CSProDbSource::schemaVersion() const
{
    return m_job->schema;
}

} // namespace tessel
