#include "figures/FiguresRun.h"

#include "process/Console.h"
#include "process/Interruption.h"
#include "process/Progress.h"
#include "reading/ReadInput.h"
#include "text/ShownText.h"

#include <tessel_data/DataError.h>

using namespace tessel;

namespace {

void warn(const QString& file, const QString& text)
{
    Console::tell(file, 0, Console::Severity::Warning, text);
}

// Lines that are in no figure.
void tellRejected(const StatisticsReport& report)
{
    for (const SourceFile& file : report.files) {
        if (file.counts.rejectedLines > 0) {
            warn(file.path,
                QStringLiteral(
                    "%1 in no figure, as reading failed; 'tessel check' lists what is wrong")
                    .arg(plural(file.counts.rejectedLines, QStringLiteral("line is"),
                        QStringLiteral("lines are"))));
        }
    }
}

void tellWeights(const QString& file, const DataFigures& figures)
{
    const std::vector<SourceFile>& files = figures.report.files;
    const QString data = files.size() == 1 ? files.front().path : file;
    const auto tell = [&](const DataRecord& record, qint64 count, const QString& why) {
        if (count > 0) {
            warn(data,
                QStringLiteral("%1 of %2 without weight: it is %3")
                    .arg(plural(count, QStringLiteral("row")), record.name, why));
        }
    };
    for (std::size_t r = 0; r < figures.report.records.size(); ++r) {
        const RecordStatistics& rows = figures.report.records[r];
        const DataRecord& record = figures.dictionary.records[r];
        tell(record, rows.negativeWeights, QStringLiteral("negative"));
        tell(record, rows.missingWeights, QStringLiteral("missing"));
        tell(record, rows.unreadableWeights, QStringLiteral("no number"));
        tell(record, rows.absentWeights, QStringLiteral("in a record that the case has not"));
        if (figures.report.weight >= 0 && !rows.isWeighted && !record.columns.isEmpty()) {
            Console::tell(file, 0, Console::Severity::Note,
                QStringLiteral("the figures of %1 are not weighted, as the weight is of a record "
                               "below or beside it")
                    .arg(record.name));
        }
    }
}

// A file that another program wrote to may have been read half.
bool isSound(const QString& file, const StatisticsReport& report)
{
    for (const SourceFile& read : report.files) {
        if (read.changedWhileRead) {
            return failInput(read.path, 0,
                QStringLiteral("changed while it was read, so no figures are made of it; wait "
                               "until no other program writes to it"));
        }
    }
    return report.addsUp
        || failInput(file, 0,
            QStringLiteral("no figures are made: what was counted is not what was read; this is an "
                           "error of the program"));
}

int run(DataSource& source, const FiguresRequest& request, DataFigures& figures)
{
    const QString& file = request.input.first;
    const Interruption interruption;
    Progress progress(file, source.countsRows() ? WorkUnit::Rows : WorkUnit::Bytes);
    DataStatistics statistics(source, request.options);
    const bool isDone = runPipeline(source, statistics, [&](qint64 done, qint64 size) {
        progress.show(done, size);
        return !Interruption::isWanted();
    });
    if (!isDone) {
        failInput(file, 0, QStringLiteral("no figures are made: the reading was stopped"));
        return InputFailed;
    }
    figures = { source.dictionary(), statistics.report() };
    return isSound(file, figures.report) ? AllRead : InputFailed;
}

} // namespace

int makeFigures(FiguresRequest& request, DataFigures& figures)
{
    std::unique_ptr<DataSource> source = openData(request.input).source;
    if (!source)
        return InputFailed;
    QString mistake;
    source = selectedData(std::move(source), request.selected, mistake);
    if (!source)
        return Console::wrongUsage(mistake);
    int status = InputFailed;
    try {
        status = run(*source, request, figures);
    } catch (const DataError& error) {
        if (error.code == DataError::Code::UnfitSelection)
            return Console::wrongUsage(error.text);
        failInput(error.file, error.text, error.items);
        return InputFailed;
    }
    if (status != AllRead)
        return status;
    tellAssumptions(request.input, figures.report.files);
    tellRejected(figures.report);
    tellWeights(request.input.first, figures);
    figures.report.suppress(request.hiddenBelow);
    return AllRead;
}
