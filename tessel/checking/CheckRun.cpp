#include "checking/CheckRun.h"

#include "checking/ProblemFile.h"
#include "process/Progress.h"
#include "reading/ReadInput.h"

#include <tessel_data/Checker.h>
#include <tessel_data/DataError.h>

namespace {

QString titleOf(const tessel::DataSource& source)
{
    const auto& files = source.files();
    return files.size() == 1 ? files.front().path : QStringLiteral("%1 files").arg(files.size());
}

} // namespace

bool checkData(CheckOutcome& outcome, ProblemFile* problems)
{
    tessel::DataSource& source = *outcome.source;
    tessel::CheckOptions options;
    if (problems) {
        options.onProblem = [&](const tessel::DataProblem& problem) {
            problems->add({ problem, source.dictionary(), source.files() });
        };
    }
    tessel::Checker checker(source.dictionary(), options);
    Progress progress(titleOf(source), source.countsRows() ? WorkUnit::Rows : WorkUnit::Bytes);
    try {
        tessel::runPipeline(source, checker, [&](qint64 done, qint64 size) {
            progress.show(done, size);
            return true;
        });
    } catch (const tessel::DataError& error) {
        return failInput(error.file, 0, error.text);
    }
    outcome.report = checker.report();
    return true;
}
