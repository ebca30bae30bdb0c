#include "converting/ConvertRun.h"

#include "checking/ProblemFile.h"
#include "converting/ConvertConfigFile.h"
#include "converting/ConvertTexts.h"
#include "process/Console.h"
#include "process/Interruption.h"
#include "process/Output.h"
#include "process/Progress.h"
#include "reading/ReadInput.h"

#include <tessel_data/Checker.h>
#include <tessel_data/Converter.h>
#include <tessel_data/CsvTarget.h>
#include <tessel_data/DataError.h>
#include <tessel_data/StatTarget.h>

#include <QDir>

#include <optional>

using namespace tessel;

namespace {

std::unique_ptr<ConversionTarget> targetOf(
    const ConvertSettings& settings, const DataDictionary& dictionary)
{
    if (settings.options.format == ConversionFormat::Csv) {
        return std::make_unique<CsvTarget>(settings.folder, dictionary, settings.replacesFiles);
    }
    return std::make_unique<StatTarget>(
        settings.folder, settings.options.format, settings.replacesFiles);
}

// The part of the data that the settings want. Null, with the status that the command ends with,
// when that fails.
std::unique_ptr<DataSource> openSource(ConvertSettings& settings, int& status)
{
    status = InputFailed;
    OpenedData data = openData(settings.input);
    if (!data.source)
        return nullptr;
    QString mistake;
    settings.selected.selection.needsWholeItems = settings.options.hasRepeatTables;
    auto source = selectedData(std::move(data.source), settings.selected, mistake);
    if (!source) {
        status = Console::wrongUsage(mistake);
        return nullptr;
    }
    settings.options.hasCases = source->hasCases();
    if (!settings.savedConfig.isEmpty() && !writeConfig(settings, source->dictionary()))
        return nullptr;
    return source;
}

// False, and told, when a file that is made would take the place of one that is read or of that of
// the problems.
bool sparesInputs(const ConvertSettings& settings, const ConversionPlan& plan)
{
    const QStringList others = settings.input.data
        + QStringList { settings.input.first, settings.input.dictionary, settings.config,
              settings.savedConfig, settings.problems };
    QStringList names;
    for (const ConversionFile& file : plan.files)
        names.append(file.name);
    if (plan.format == ConversionFormat::Csv)
        names.append(QStringLiteral("datapackage.json"));
    for (const QString& name : qAsConst(names)) {
        const QString path = QDir(settings.folder).filePath(name);
        if (Output::checkPath(QString(), path, others).isNull())
            continue;
        return failInput(path, 0,
            QStringLiteral("nothing is made: it is a file that the conversion reads or tells "
                           "problems in; name another folder"));
    }
    return true;
}

// All problems of the data, as a check finds them.
class ProblemList {
public:
    ProblemList(const DataSource& source, const ConvertSettings& settings)
    {
        if (settings.problems.isEmpty())
            return;
        m_file.emplace(settings.problems, settings.forSpreadsheet);
        CheckOptions options;
        options.onProblem = [this, &source](const DataProblem& problem) {
            m_file->add({ problem, source.dictionary(), source.files() });
        };
        m_checker.emplace(source.dictionary(), options);
    }

    DataConsumer* consumer()
    {
        return m_checker ? &*m_checker : nullptr;
    }
    bool finish()
    {
        return !m_file || m_file->finish();
    }

private:
    std::optional<ProblemFile> m_file;
    std::optional<Checker> m_checker;
};

bool fill(DataSource& source, const ConvertSettings& settings, const ConversionPlan& plan,
    ConversionReport& report)
{
    ProblemList problems(source, settings);
    const std::unique_ptr<ConversionTarget> target = targetOf(settings, source.dictionary());
    const Interruption interruption;
    Progress progress(settings.folder, source.countsRows() ? WorkUnit::Rows : WorkUnit::Bytes);
    ConversionRun run;
    run.isStrict = settings.isStrict;
    run.beside = problems.consumer();
    run.progress = [&](qint64 done, qint64 size) {
        progress.show(done, size);
        return !Interruption::isWanted();
    };
    try {
        if (!convertData(source, *target, plan, report, run)) {
            return failInput(
                settings.folder, 0, QStringLiteral("nothing is made: the conversion was stopped"));
        }
    } catch (const DataError& error) {
        if (settings.isStrict && report.hasLosses())
            tellReport(plan, report, Console::Severity::Error);
        problems.finish();
        return failInput(error.file, error.text, error.items);
    }
    return problems.finish();
}

} // namespace

int convert(ConvertSettings settings)
{
    int status = InputFailed;
    const std::unique_ptr<DataSource> source = openSource(settings, status);
    if (!source)
        return status;
    settings.options.hasByteWidths = hasByteWidths(*source);
    const ConversionPlan plan(source->dictionary(), settings.options);
    if (!sparesInputs(settings, plan))
        return InputFailed;
    tellPlan(plan, settings.isStrict ? Console::Severity::Error : Console::Severity::Note);
    if (settings.isStrict && plan.hasLosses()) {
        failInput(settings.folder, 0,
            QStringLiteral("nothing is made, as --strict wants nothing changed; --plan tells what "
                           "would be"));
        return InputFailed;
    }
    ConversionReport report;
    if (!fill(*source, settings, plan, report))
        return InputFailed;
    tellAssumptions(settings.input, report.files);
    tellReport(plan, report, Console::Severity::Warning);
    return Console::show(conversionSummary(*source, settings, plan, report));
}

int printConversionPlan(ConvertSettings settings)
{
    int status = AllRead;
    const std::unique_ptr<DataSource> source = openSource(settings, status);
    if (!source)
        return status;
    const ConversionPlan plan(source->dictionary(), settings.options);
    Console::show(conversionPlanText(plan));
    return settings.isStrict && plan.hasLosses() ? InputFailed : AllRead;
}
