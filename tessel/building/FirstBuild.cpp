#include "building/FirstBuild.h"

#include "building/BuildConfigFile.h"

#include <tessel_data/DataError.h>

#include <QLocale>

using tessel::DataDictionary;
using tessel::DataSelection;
using tessel::SelectedColumns;

namespace {

QString shareText(double share)
{
    return share > 0 ? QString::number(share, 'g', QLocale::FloatingPointShortest) : QString();
}

QString countText(qint64 count)
{
    return count > 0 ? QString::number(count) : QString();
}

QString namesOf(const DataSelection& selection)
{
    QStringList names;
    for (const tessel::SelectedRecord& record : selection.records)
        names.append(record.name);
    return names.join(QLatin1Char(','));
}

} // namespace

QString FirstBuild::read(const QByteArray& json)
{
    const QString mistake = takeConfig(json, m_first);
    if (m_first.repeats.isEmpty())
        m_first.repeats = QStringLiteral("columns");
    return mistake;
}

void FirstBuild::addUnfit(const char* option, const QString& given, const QString& first)
{
    m_unfit.append(
        QStringLiteral("--%1 %2 does not fit: the first build was made %3")
            .arg(QLatin1String(option), given,
                first.isEmpty() ? QStringLiteral("without it") : QStringLiteral("with ") + first));
}

void FirstBuild::completeText(const char* option, QString& given, const QString& first)
{
    if (given.trimmed().isEmpty())
        given = first;
    else if (given.trimmed() != first.trimmed())
        addUnfit(option, given, first);
}

void FirstBuild::complete(BuildSettings& settings)
{
    completeText("repeats", settings.repeats, m_first.repeats);
    if (settings.hasAllLanguages && !m_first.hasAllLanguages)
        addUnfit("languages", QStringLiteral("all"), QString());
    settings.hasAllLanguages = m_first.hasAllLanguages;
    if (settings.input.reading.language.isEmpty())
        settings.input.reading.language = m_first.input.reading.language;
    completeText("where", settings.selected.selection.where, m_first.selected.selection.where);
    completeSample(settings.selected);
}

void FirstBuild::completeSample(SelectionRequest& given)
{
    const DataSelection& first = m_first.selected.selection;
    DataSelection& selection = given.selection;
    const bool isGiven = selection.sample > 0 || selection.every > 0;
    if (isGiven && selection.sample != first.sample && selection.sample > 0)
        addUnfit("sample", shareText(selection.sample), shareText(first.sample));
    if (isGiven && selection.every != first.every && selection.every > 0)
        addUnfit("every", countText(selection.every), countText(first.every));
    if (isGiven && given.hasSeed && first.sample > 0 && selection.seed != first.seed)
        addUnfit("seed", QString::number(selection.seed), QString::number(first.seed));
    selection.sample = first.sample;
    selection.every = first.every;
    selection.seed = first.seed;
}

// Without a name the labels are in the first language of the dictionary.
void FirstBuild::complete(BuildSettings& settings, const DataDictionary& dictionary)
{
    const QString wanted = settings.input.reading.language;
    QString first = m_first.input.reading.language;
    if (first.isEmpty() && !dictionary.languages.isEmpty())
        first = dictionary.languages.constFirst().name;
    if (!wanted.isEmpty() && wanted.compare(first, Qt::CaseInsensitive) != 0)
        addUnfit("language", wanted, first);
    completeColumns(settings.selected, dictionary);
}

void FirstBuild::completeColumns(SelectionRequest& given, const DataDictionary& dictionary)
{
    const DataSelection& first = m_first.selected.selection;
    try {
        DataSelection chosen = given.selection;
        if (chosen.records.isEmpty())
            chosen.records = first.records;
        if (!given.records.isEmpty())
            chosen.chooseRecords(dictionary, given.records);
        if (!given.variables.isEmpty())
            chosen.chooseVariables(dictionary, given.variables);
        compareColumns(chosen, dictionary);
    } catch (const tessel::DataError& error) {
        m_unfit.append(error.text);
    }
    given.selection.records = first.records;
    given.records.clear();
    given.variables.clear();
}

void FirstBuild::compareColumns(const DataSelection& given, const DataDictionary& dictionary)
{
    const DataSelection& first = m_first.selected.selection;
    const QVector<SelectedColumns> wanted = given.columns(dictionary);
    const QVector<SelectedColumns> made = first.columns(dictionary);
    for (int record = 0; record < made.size(); ++record) {
        if (wanted.at(record).isTaken != made.at(record).isTaken)
            return addUnfit("records", namesOf(given), namesOf(first));
    }
    for (int record = 0; record < made.size(); ++record) {
        if (wanted.at(record).columns != made.at(record).columns) {
            return addUnfit("variables",
                QLatin1String("of ") + dictionary.records[std::size_t(record)].name,
                first.records.isEmpty() ? QString() : QStringLiteral("others"));
        }
    }
}
