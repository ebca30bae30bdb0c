#include "building/BuildRun.h"

#include "building/BuildConfigFile.h"
#include "building/BuildTexts.h"
#include "building/DictionaryChange.h"
#include "building/Interruption.h"
#include "process/Console.h"
#include "process/Output.h"
#include "process/Progress.h"
#include "reading/ReadInput.h"

#include <model_Tessel/TextEncoding.h>

#include <tessel_data/CSProDb.h>
#include <tessel_data/DataError.h>
#include <tessel_data/PostgresTarget.h>
#include <tessel_data/SqliteTarget.h>

#include <QFile>
#include <QTextCodec>

using namespace tessel;

namespace {

// As UTF-8, whatever it was.
QByteArray asUtf8(const QByteArray& bytes)
{
    const QTextCodec* const marked = QTextCodec::codecForUtfText(bytes, nullptr);
    return (marked ? marked : likelyCodec(bytes))->toUnicode(bytes).toUtf8();
}

QByteArray dictionaryText(const DataInput& input)
{
    const DataKind kind = dataKindOf(input.first);
    const QString path = input.dictionary.isEmpty() ? input.first : input.dictionary;
    if (kind == DataKind::CSProDb && input.dictionary.isEmpty())
        return CSProDb(path).dictionary();
    QFile file(path);
    const bool isText = kind == DataKind::Text || kind == DataKind::CSProDb;
    return isText && file.open(QIODevice::ReadOnly) ? asUtf8(file.readAll()) : QByteArray();
}

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
    const bool isDb = dataKindOf(settings.input.first) == DataKind::CSProDb;
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

bool fill(DataSource& source, const BuildSettings& settings, BuildReport& report)
{
    BuildOptions options;
    options.plan.hasRepeatTables = settings.hasRepeatTables();
    if (!chooseLanguages(settings, source.dictionary(), options.plan))
        return false;
    options.dictionaryText = dictionaryText(settings.input);
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
std::unique_ptr<DataSource> openSource(BuildSettings& settings, int& status)
{
    status = InputFailed;
    std::unique_ptr<DataSource> source = openDataSource(settings.input);
    if (!source)
        return nullptr;
    QString mistake;
    settings.selected.selection.needsWholeItems = settings.hasRepeatTables();
    source = selectedData(std::move(source), settings.selected, mistake);
    if (!source) {
        status = Console::wrongUsage(mistake);
        return nullptr;
    }
    if (!settings.configFile.isEmpty()) {
        Output output(settings.configFile);
        if (!output.write(configText(settings, source->dictionary(), true)))
            return nullptr;
    }
    return source;
}

} // namespace

bool chooseLanguages(
    const BuildSettings& settings, const DataDictionary& dictionary, PlanOptions& options)
{
    const auto& languages = dictionary.languages;
    QStringList names;
    for (int l = 0; l < languages.size(); ++l) {
        names.append(languages.at(l).name);
        if (languages.at(l).name.compare(settings.language, Qt::CaseInsensitive) == 0)
            options.languages.prepend(l);
        else if (settings.hasAllLanguages)
            options.languages.append(l);
    }
    const bool isKnown =
        settings.language.isEmpty() || names.contains(settings.language, Qt::CaseInsensitive);
    if (!isKnown) {
        failInput(settings.input.first, 0,
            names.isEmpty()
                ? QStringLiteral("has labels in one language only; leave --language away")
                : QStringLiteral("has no labels in '%1'; its languages are %2")
                      .arg(settings.language, names.join(QLatin1String(", "))));
    }
    return isKnown;
}

QString targetName(const BuildSettings& settings)
{
    return PostgresTarget::isConnection(settings.target) ? PostgresTarget::nameOf(settings.target)
                                                         : settings.target;
}

int build(BuildSettings settings)
{
    int status = AllRead;
    const std::unique_ptr<DataSource> source = openSource(settings, status);
    if (!source)
        return status;
    BuildReport report;
    try {
        if (!fill(*source, settings, report))
            return InputFailed;
    } catch (const DataError& error) {
        failInput(error.file, 0, error.text);
        return InputFailed;
    }
    tellAssumptions(report.check.files);
    return Console::show(buildSummary(*source, settings, report));
}

int printPlan(BuildSettings settings)
{
    int status = AllRead;
    const std::unique_ptr<DataSource> source = openSource(settings, status);
    if (!source)
        return status;
    PlanOptions options;
    options.hasRepeatTables = settings.hasRepeatTables();
    options.hasCases = source->hasCases();
    if (PostgresTarget::isConnection(settings.target))
        options.dialect = SqlDialect::PostgreSql;
    if (!chooseLanguages(settings, source->dictionary(), options))
        return InputFailed;
    return Console::show(planText(DatabasePlan(source->dictionary(), options)));
}
