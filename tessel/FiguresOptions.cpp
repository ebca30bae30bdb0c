#include "FiguresOptions.h"

#include <QCommandLineParser>

#include <algorithm>

namespace {

QString weight()
{
    return QStringLiteral("weight");
}

QString cross()
{
    return QStringLiteral("cross");
}

QString occurrences()
{
    return QStringLiteral("occurrences");
}

QString suppress()
{
    return QStringLiteral("suppress");
}

QString readCrosses(const QCommandLineParser& parser, FiguresRequest& request)
{
    const QStringList texts = parser.values(cross());
    for (const QString& text : texts) {
        const QStringList names = text.split(QLatin1Char(','));
        const bool isPair = names.size() == 2 && !names.contains(QString());
        if (!isPair)
            return QStringLiteral("--cross takes two names, A,B, not '%1'").arg(text);
        request.options.crosses.append({ names.first().trimmed(), names.last().trimmed() });
    }
    return QString();
}

} // namespace

QList<QCommandLineOption> figuresOptions()
{
    return { { weight(),
                 QStringLiteral("Weigh rows by a number of theirs, of a record that there is once "
                                "for them, or of the case; NAME or RECORD.NAME."),
                 QStringLiteral("variable") },
        { cross(),
            QStringLiteral("Count how often the codes of two variables come together; may be given "
                           "several times."),
            QStringLiteral("A,B") },
        { occurrences(),
            QStringLiteral("Figures of each occurrence of repeated items, besides those of all "
                           "together.") },
        { suppress(),
            QStringLiteral("Hide what fewer than so many values are in, and what would tell of "
                           "it."),
            QStringLiteral("N") } };
}

bool hasFiguresOption(const QCommandLineParser& parser)
{
    const QStringList names { weight(), cross(), occurrences(), suppress() };
    return std::any_of(
        names.begin(), names.end(), [&](const QString& name) { return parser.isSet(name); });
}

QString readFiguresOptions(const QCommandLineParser& parser, FiguresRequest& request)
{
    request.options.weight = parser.value(weight());
    if (parser.isSet(weight()) && request.options.weight.isEmpty())
        return QStringLiteral("--weight needs the name of a variable");
    request.options.hasEachOccurrence = parser.isSet(occurrences());
    if (parser.isSet(suppress())) {
        bool isNumber = false;
        request.hiddenBelow = parser.value(suppress()).toLongLong(&isNumber);
        if (!isNumber || request.hiddenBelow < 1) {
            return QStringLiteral("--suppress takes a number from 1, not '%1'")
                .arg(parser.value(suppress()));
        }
    }
    return readCrosses(parser, request);
}
