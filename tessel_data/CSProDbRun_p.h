#pragma once

#include <tessel_data/DataDictionary.h>
#include <tessel_data/DataSource.h>
#include <tessel_data/Sqlite_p.h>

#include <string_view>

namespace tessel {

/* What the readers of both schemas share: the file, where its cases go, and what is counted. */
class CSProDbRun {
public:
    CSProDbRun(const SqliteFile& sqliteFile, SourceFile& sourceFile);

    // The batch to fill; a full one is handed on first.
    DataBatch& batch();
    SourceCounts& counts() const;
    // Of the current case.
    DataBatch::Told told(LineProblem problem, int variable = -1) const;
    void tell(DataBatch::Told told, std::string_view text);
    // Tells of a row, which is counted as rejected.
    void reject(const DataBatch::Told& told, std::string_view text);

    const SqliteFile& file;
    SourceFile& source;
    DataDictionary dictionary;
    BatchSink* sink = nullptr;
    bool isWanted = true;
    qint64 row = 0; // of the table of cases, from 1
    qint64 caseNumber = -1;
};

// Reads the cases of one schema.
class CSProDbCases {
public:
    enum Column { Id, Key, IsDeleted, PartialSaveMode, Questionnaire };

    virtual ~CSProDbCases();

    // Before the first case.
    virtual void begin();
    virtual void readCase(const SqliteQuery& caseRow, std::string_view key) = 0;
    virtual void passDeleted(const SqliteQuery& caseRow);
    // Behind the last one.
    virtual void end();
};

} // namespace tessel
