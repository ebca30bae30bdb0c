#pragma once

#include "DataRows.h"

#include <tessel_data/DataStatistics.h>

// The figures of text data.
inline tessel::StatisticsReport figuresOf(const QByteArray& dictionary, const QByteArray& lines,
    const tessel::StatisticsOptions& options = {})
{
    const QTemporaryDir folder;
    tessel::CSProTextSource source(tessel::DataDictionary::fromBytes(dictionary, "d.dcf"),
        { writeFile(folder, "data.dat", lines) });
    tessel::DataStatistics statistics(source, options);
    tessel::runPipeline(source, statistics);
    return statistics.report();
}

// Count and weight; "#" where it is hidden.
inline QString shownCell(const tessel::StatisticsCell& cell)
{
    if (!cell.count() || !cell.weight())
        return QStringLiteral("#");
    const QString count = QString::number(*cell.count());
    const QString weight = QString::number(*cell.weight(), 'g', 12);
    return weight == count ? count : count + QLatin1Char('/') + weight;
}

template <typename Cells> QString shownCells(const Cells& cells)
{
    QStringList texts;
    for (const tessel::StatisticsCell& cell : cells)
        texts.append(shownCell(cell));
    return texts.join(QLatin1Char(' '));
}

inline QString shownNumber(const std::optional<double>& number)
{
    return number ? QString::number(*number, 'g', 12) : QStringLiteral("-");
}

// Mean, deviation and quartiles.
inline QString shownMoments(const tessel::StatisticsMoments& moments)
{
    return QStringList { shownNumber(moments.mean), shownNumber(moments.deviation),
        shownNumber(moments.lowerQuartile), shownNumber(moments.median),
        shownNumber(moments.upperQuartile) }
        .join(QLatin1Char(' '));
}

inline QString shownBins(const std::vector<tessel::StatisticsBin>& bins)
{
    QStringList texts;
    for (const tessel::StatisticsBin& bin : bins)
        texts.append(
            QStringLiteral("%1:%2=%3").arg(bin.low).arg(bin.high).arg(shownCell(bin.cell)));
    return texts.join(QLatin1Char(' '));
}
