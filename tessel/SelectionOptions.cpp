#include "SelectionOptions.h"

#include <QCommandLineParser>

#include <limits>

namespace {

QString records()
{
    return QStringLiteral("records");
}

QString variables()
{
    return QStringLiteral("variables");
}

QString where()
{
    return QStringLiteral("where");
}

QString sample()
{
    return QStringLiteral("sample");
}

QString seed()
{
    return QStringLiteral("seed");
}

QString every()
{
    return QStringLiteral("every");
}

// Names between commas, of all times that the option is given.
QString readNames(const QCommandLineParser& parser, const QString& option, QStringList& names)
{
    const QStringList given = parser.values(option);
    for (const QString& list : given) {
        const QStringList parts = list.split(QLatin1Char(','));
        for (const QString& name : parts) {
            if (name.trimmed().isEmpty())
                return QStringLiteral("--%1 needs names with commas between them").arg(option);
            names.append(name.trimmed());
        }
    }
    names.removeDuplicates();
    return QString();
}

QString readWhere(const QCommandLineParser& parser, tessel::DataSelection& selection)
{
    if (!parser.isSet(where()))
        return QString();
    const QStringList conditions = parser.values(where());
    for (const QString& condition : conditions) {
        if (condition.trimmed().isEmpty())
            return QStringLiteral("--where needs a condition, for example PROVINCE=11..13");
    }
    selection.where = conditions.join(QLatin1String(" and "));
    return QString();
}

QString readShare(const QCommandLineParser& parser, tessel::DataSelection& selection)
{
    if (parser.isSet(sample()) && parser.isSet(every()))
        return QStringLiteral("--sample and --every exclude each other");
    if (parser.isSet(sample())) {
        selection.every = 0;
        selection.sample = parser.value(sample()).toDouble();
        if (!(selection.sample > 0 && selection.sample <= 1))
            return QStringLiteral("--sample takes a share above 0 and up to 1, not '%1'")
                .arg(parser.value(sample()));
    }
    if (parser.isSet(every())) {
        selection.sample = 0;
        selection.every = parser.value(every()).toInt();
        if (selection.every < 1)
            return QStringLiteral("--every takes a whole number from 1 to %1, not '%2'")
                .arg(std::numeric_limits<int>::max())
                .arg(parser.value(every()));
    }
    return QString();
}

QString readSeed(const QCommandLineParser& parser, tessel::DataSelection& selection)
{
    if (!parser.isSet(seed()))
        return QString();
    if (selection.sample <= 0)
        return QStringLiteral("--seed is for --sample");
    bool isNumber = false;
    selection.seed = parser.value(seed()).toUInt(&isNumber);
    return isNumber ? QString()
                    : QStringLiteral("--seed takes a whole number from 0 to %1, not '%2'")
                          .arg(std::numeric_limits<quint32>::max())
                          .arg(parser.value(seed()));
}

} // namespace

QList<QCommandLineOption> selectionOptions()
{
    const QString names = QStringLiteral("names");
    const QString number = QStringLiteral("number");
    return {
        { records(), QStringLiteral("Take these records only, for example HOUSE,PERSON."), names },
        { variables(),
            QStringLiteral("Take these variables only, as 'tessel fields' lists them or "
                           "RECORD.NAME. Identification items are always taken."),
            names },
        { where(),
            QStringLiteral("Take the cases whose identification is so, for example "
                           "PROVINCE=11..13,21; several conditions must all hold."),
            QStringLiteral("condition") },
        { sample(), QStringLiteral("Take a sample of the cases, for example 0.01."),
            QStringLiteral("share") },
        { seed(), QStringLiteral("Take another sample; 1 without this option."), number },
        { every(), QStringLiteral("Take each so many-th case."), number },
    };
}

QString readSelectionOptions(const QCommandLineParser& parser, SelectionRequest& request)
{
    QString mistake = readNames(parser, records(), request.records);
    if (mistake.isNull())
        mistake = readNames(parser, variables(), request.variables);
    if (mistake.isNull())
        mistake = readWhere(parser, request.selection);
    if (mistake.isNull())
        mistake = readShare(parser, request.selection);
    request.hasSeed = request.hasSeed || parser.isSet(seed());
    return mistake.isNull() ? readSeed(parser, request.selection) : mistake;
}
