#include "building/BuildRun.h"

#include "building/BuildConfigFile.h"
#include "building/BuildTexts.h"
#include "building/DictionaryChange.h"
#include "building/FirstBuild.h"
#include "process/Interruption.h"
#include "process/Console.h"
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

const QString& asItWas()
{
    static const QString text = QStringLiteral("is as it was: ");
    return text;
}

bool hasFittingOptions(const FirstBuild& first, const BuildSettings& settings)
{
    return first.unfit().isEmpty()
        || failInput(targetName(settings),
            asItWas()
                + QLatin1String("the options of its first build hold for what is added; leave "
                                "others out, or make the database anew"),
            first.unfit());
}

// A database that is added to.
class AddedTo {
public:
    // False, and told, when nothing can be added to it; else the settings are completed.
    bool open(DatabaseTarget& target, BuildSettings& settings);
    // False, and told, when data with this dictionary do not go into it.
    bool takes(const OpenedData& data, BuildSettings& settings);

private:
    FirstBuild m_first;
    bool m_hasOptions = false; // a host may keep none
    QByteArray m_dictionary;
};

bool AddedTo::open(DatabaseTarget& target, BuildSettings& settings)
{
    const DataKind kind = settings.input.kind;
    if (kind == DataKind::Spss || kind == DataKind::Stata) {
        return failInput(settings.input.first, 0,
            QStringLiteral("has no cases that could be known again, so that nothing can be added; "
                           "make the database anew"));
    }
    const ExistingDatabase existing = target.openExisting();
    m_dictionary = existing.dictionary;
    m_hasOptions = !existing.options.isEmpty();
    if (!m_hasOptions)
        return true;
    const QString mistake = m_first.read(existing.options);
    if (!mistake.isNull()) {
        return failInput(targetName(settings), 0,
            asItWas() + QLatin1String("the settings of its first build, in tessel_builds, ")
                + mistake + QLatin1String("; make the database anew"));
    }
    m_first.complete(settings);
    return hasFittingOptions(m_first, settings);
}

bool AddedTo::takes(const OpenedData& data, BuildSettings& settings)
{
    const QStringList breaking = m_dictionary == data.dictionaryText
        ? QStringList()
        : changesThatBreak(m_dictionary, data.dictionaryText);
    if (!breaking.isEmpty()) {
        return failInput(targetName(settings),
            asItWas()
                + QLatin1String("the dictionary changed since it was made, and data of it do not "
                                "fit; make the database anew"),
            breaking);
    }
    if (m_hasOptions)
        m_first.complete(settings, data.source->dictionary());
    return hasFittingOptions(m_first, settings);
}

// What a part of the cases lacks is not gone.
tessel::Addition kindOfAddition(const BuildSettings& settings)
{
    const DataSelection& part = settings.selected.selection;
    const bool hasAllCases = part.where.isEmpty() && part.sample == 0 && part.every == 0;
    if (!settings.addsToTarget)
        return tessel::Addition::None;
    return settings.input.kind == DataKind::CSProDb && hasAllCases ? tessel::Addition::Withdrawing
                                                                   : tessel::Addition::Cases;
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

bool fill(const OpenedData& data, const BuildSettings& settings, DatabaseTarget& target,
    BuildReport& report)
{
    DataSource& source = *data.source;
    BuildOptions options;
    options.plan.addition = kindOfAddition(settings);
    options.plan.hasRepeatTables = settings.hasRepeatTables();
    options.plan.languages = chosenLanguages(settings, source.dictionary());
    options.dictionaryText = data.dictionaryText;
    options.options = QString::fromUtf8(keptConfig(settings, source.dictionary()));
    options.version = QStringLiteral(TESSEL_VERSION);
    const Interruption interruption;
    Progress progress(targetName(settings), source.countsRows() ? WorkUnit::Rows : WorkUnit::Bytes);
    const bool isDone =
        buildDatabase(source, target, options, report, [&](qint64 done, qint64 size) {
            progress.show(done, size);
            return !Interruption::isWanted();
        });
    if (!isDone)
        failInput(targetName(settings), 0,
            settings.addsToTarget ? asItWas() + QLatin1String("the build was stopped")
                                  : QStringLiteral("is not made: the build was stopped"));
    return isDone;
}

// The part of the data that the settings want, which are then written down. Null, with the status
// that the command ends with, when that fails. target: what it is added to, or null.
OpenedData openSource(BuildSettings& settings, AddedTo* target, int& status)
{
    status = InputFailed;
    OpenedData data = openData(settings.input);
    if (!data.source || (target && !target->takes(data, settings)))
        return {};
    QString mistake;
    if (settings.repeats.isEmpty())
        settings.repeats = QStringLiteral("columns");
    settings.selected.selection.needsWholeItems = settings.hasRepeatTables();
    data.source = selectedData(std::move(data.source), settings.selected, mistake);
    if (!data.source) {
        status = Console::wrongUsage(mistake);
        return {};
    }
    if (!settings.configFile.isEmpty() && !writeConfig(settings, data.source->dictionary()))
        return {};
    return data;
}

// Each so many-th case is another one when the file changed.
void tellAbsent(const BuildSettings& settings, const DatabaseChanges& changes)
{
    if (settings.selected.selection.every > 0)
        return;
    for (const DatabaseChanges::Absent& file : changes.absent) {
        Console::tell(file.file, 0, Console::Severity::Note,
            file.cases == 1
                ? QStringLiteral("1 case that came from this file before is not in it; it stays")
                : QStringLiteral(
                    "%1 cases that came from this file before are not in it; they stay")
                      .arg(file.cases));
    }
}

void tellNothingTaken(
    const BuildSettings& settings, const DataSource& source, const SourceCounts& read)
{
    const DataSelection& part = settings.selected.selection;
    const bool isNothing = source.hasCases() ? read.cases == 0 && read.leftOutCases > 0
                                             : read.records == 0 && read.leftOutLines > 0;
    if (part.where.isEmpty() || !isNothing)
        return;
    const bool isDrawn = part.sample > 0 || part.every > 0;
    Console::tell(settings.input.first, 0, Console::Severity::Warning,
        QStringLiteral("none of the %1 is taken: --where %2%3 leaves all out")
            .arg(source.hasCases() ? QStringLiteral("cases") : QStringLiteral("rows"), part.where,
                isDrawn ? QStringLiteral(", with the sample,") : QString()));
}

} // namespace

QString targetName(const BuildSettings& settings)
{
    return PostgresTarget::isConnection(settings.target) ? PostgresTarget::nameOf(settings.target)
                                                         : settings.target;
}

int build(BuildSettings settings)
{
    int status = InputFailed;
    OpenedData data;
    BuildReport report;
    try {
        const std::unique_ptr<DatabaseTarget> target = targetOf(settings);
        AddedTo existing;
        if (settings.addsToTarget && !existing.open(*target, settings))
            return InputFailed;
        data = openSource(settings, settings.addsToTarget ? &existing : nullptr, status);
        if (!data.source)
            return status;
        if (!fill(data, settings, *target, report))
            return InputFailed;
    } catch (const DataError& error) {
        failInput(error.file, error.text, error.items);
        return InputFailed;
    }
    tellAssumptions(settings.input, report.check.files);
    tellAbsent(settings, report.changes);
    tellNothingTaken(settings, *data.source, report.check.counts);
    return Console::show(buildSummary(*data.source, settings, report));
}

int printPlan(BuildSettings settings)
{
    int status = AllRead;
    const OpenedData data = openSource(settings, nullptr, status);
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
