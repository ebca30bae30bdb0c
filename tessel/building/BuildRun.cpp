#include "building/BuildRun.h"

#include "building/BuildConfigFile.h"
#include "building/BuildTexts.h"
#include "building/DictionaryChange.h"
#include "building/Interruption.h"
#include "process/Console.h"
#include "process/Output.h"
#include "process/Progress.h"
#include "reading/ReadInput.h"

#include <tessel_data/DataError.h>
#include <tessel_data/PostgresTarget.h>
#include <tessel_data/SqliteTarget.h>

using namespace tessel;

namespace {

std::unique_ptr<DatabaseTarget> targetOf(const BuildSettings& settings)
{
    if (PostgresTarget::isConnection(settings.target)) {
        return std::make_unique<PostgresTarget>(
            PostgresOptions { settings.target, settings.schema, settings.replacesTarget });
    }
    return std::make_unique<SqliteTarget>(settings.target,
        settings.replacesTarget ? SqliteTarget::Existing::Replace : SqliteTarget::Existing::Refuse);
}

// False, and told, when the data do not go into the database that is there.
bool openExisting(const DataSource& source, const BuildSettings& settings, DatabaseTarget& target,
    BuildOptions& options)
{
    if (!source.hasCases()) {
        failInput(settings.input.first, 0,
            QStringLiteral("has no cases that could be known again, so that nothing can be added; "
                           "make the database anew"));
        return false;
    }
    // What a part of the cases lacks is not gone.
    const DataSelection& part = settings.selected.selection;
    const bool hasAllCases = part.where.isEmpty() && part.sample == 0 && part.every == 0;
    const bool isDb = settings.input.kind == DataKind::CSProDb;
    options.plan.addition = isDb && hasAllCases ? Addition::Withdrawing : Addition::Cases;
    const QByteArray before = target.openExisting();
    const QStringList breaking = before == options.dictionaryText
        ? QStringList()
        : changesThatBreak(before, options.dictionaryText);
    if (!breaking.isEmpty()) {
        failInput(targetName(settings), 0,
            QStringLiteral("is as it was: the dictionary changed since it was made, and data of it "
                           "do not fit; make the database anew\n  ")
                + breaking.join(QLatin1String("\n  ")));
    }
    return breaking.isEmpty();
}

// Those of the labels, by index. That there is one of the wanted name was found when the dictionary
// was opened.
QVector<int> chosenLanguages(const BuildSettings& settings, const DataDictionary& dictionary)
{
    const QString& wanted = settings.input.reading.language;
    QVector<int> chosen;
    for (int l = 0; l < dictionary.languages.size(); ++l) {
        if (dictionary.languages.at(l).name.compare(wanted, Qt::CaseInsensitive) == 0)
            chosen.prepend(l);
        else if (settings.hasAllLanguages)
            chosen.append(l);
    }
    return chosen;
}

bool fill(const OpenedData& data, const BuildSettings& settings, BuildReport& report)
{
    DataSource& source = *data.source;
    BuildOptions options;
    options.plan.hasRepeatTables = settings.hasRepeatTables();
    options.plan.languages = chosenLanguages(settings, source.dictionary());
    options.dictionaryText = data.dictionaryText;
    options.options = QString::fromUtf8(configText(settings, source.dictionary(), false));
    options.version = QStringLiteral(TESSEL_VERSION);
    const std::unique_ptr<DatabaseTarget> target = targetOf(settings);
    if (settings.addsToTarget && !openExisting(source, settings, *target, options))
        return false;
    const Interruption interruption;
    Progress progress(targetName(settings), source.countsRows() ? WorkUnit::Rows : WorkUnit::Bytes);
    const bool isDone =
        buildDatabase(source, *target, options, report, [&](qint64 done, qint64 size) {
            progress.show(done, size);
            return !Interruption::isWanted();
        });
    if (!isDone)
        failInput(targetName(settings), 0,
            settings.addsToTarget ? QStringLiteral("is as it was: the build was stopped")
                                  : QStringLiteral("is not made: the build was stopped"));
    return isDone;
}

// The part of the data that the settings want, which are then written down. Null, with the status
// that the command ends with, when that fails.
OpenedData openSource(BuildSettings& settings, int& status)
{
    status = InputFailed;
    OpenedData data = openData(settings.input);
    if (!data.source)
        return {};
    QString mistake;
    settings.selected.selection.needsWholeItems = settings.hasRepeatTables();
    data.source = selectedData(std::move(data.source), settings.selected, mistake);
    if (!data.source) {
        status = Console::wrongUsage(mistake);
        return {};
    }
    if (!settings.configFile.isEmpty()) {
        Output output(settings.configFile);
        if (!output.write(configText(settings, data.source->dictionary(), true)))
            return {};
    }
    return data;
}

} // namespace

QString targetName(const BuildSettings& settings)
{
    return PostgresTarget::isConnection(settings.target) ? PostgresTarget::nameOf(settings.target)
                                                         : settings.target;
}

int build(BuildSettings settings)
{
    int status = AllRead;
    const OpenedData data = openSource(settings, status);
    if (!data.source)
        return status;
    BuildReport report;
    try {
        if (!fill(data, settings, report))
            return InputFailed;
    } catch (const DataError& error) {
        failInput(error.file, 0, error.text);
        return InputFailed;
    }
    tellAssumptions(settings.input, report.check.files);
    return Console::show(buildSummary(*data.source, settings, report));
}

int printPlan(BuildSettings settings)
{
    int status = AllRead;
    const OpenedData data = openSource(settings, status);
    if (!data.source)
        return status;
    const DataSource& source = *data.source;
    PlanOptions options;
    options.hasRepeatTables = settings.hasRepeatTables();
    options.hasCases = source.hasCases();
    options.hasWidths = source.hasWidths();
    options.languages = chosenLanguages(settings, source.dictionary());
    if (PostgresTarget::isConnection(settings.target))
        options.dialect = SqlDialect::PostgreSql;
    return Console::show(planText(DatabasePlan(source.dictionary(), options)));
}
