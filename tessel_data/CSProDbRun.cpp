#include <tessel_data/CSProDbRun_p.h>

namespace tessel {

CSProDbRun::CSProDbRun(const SqliteFile& sqliteFile, SourceFile& sourceFile)
    : file(sqliteFile)
    , source(sourceFile)
{
}

DataBatch& CSProDbRun::batch()
{
    if (sink->batch().isFull() && isWanted)
        isWanted = sink->deliver();
    sink->batch().doneBytes = row;
    return sink->batch();
}

SourceCounts& CSProDbRun::counts() const
{
    return source.counts;
}

DataBatch::Told CSProDbRun::told(LineProblem problem, int variable) const
{
    return { problem, 0, variable, row, caseNumber, {} };
}

void CSProDbRun::tell(DataBatch::Told told, std::string_view text)
{
    DataBatch& current = batch();
    told.text = current.keep(text);
    current.told.push_back(told);
}

void CSProDbRun::reject(const DataBatch::Told& told, std::string_view text)
{
    ++counts().lines;
    ++counts().rejectedLines;
    tell(told, text);
}

CSProDbCases::~CSProDbCases() = default;

void CSProDbCases::begin()
{
}

void CSProDbCases::passDeleted(const SqliteQuery&)
{
}

void CSProDbCases::end()
{
}

} // namespace tessel
