#pragma once

#include "DataRows.h"

#include <tessel_data/DataStatistics.h>

#include <limits>

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

// -1 where it is hidden.
inline qint64 countOf(const tessel::StatisticsCell& cell)
{
    return cell.count().value_or(-1);
}

inline double weightOf(const tessel::StatisticsCell& cell)
{
    return cell.weight().value_or(-1);
}

// No number where there is none.
inline double numberOf(const std::optional<double>& number)
{
    return number.value_or(std::numeric_limits<double>::quiet_NaN());
}

// Count and weight; "#" where it is hidden.
inline QString shownCell(const tessel::StatisticsCell& cell)
{
    if (cell.isHidden())
        return QStringLiteral("#");
    const QString count = QString::number(countOf(cell));
    const QString weight = QString::number(weightOf(cell), 'g', 12);
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
    return number ? QString::number(numberOf(number), 'g', 12) : QStringLiteral("-");
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
