#include "writers/SetupMissing.h"

#include <algorithm>

using tessel::StatProgram;

namespace {

constexpr int ShortText = 8; // bytes of a missing text in SPSS

// Whole numbers beside each other as one range.
QVector<SetupLabel> joined(const QVector<SetupLabel>& missing, const SetupLabels& labels)
{
    QVector<SetupLabel> sorted = missing;
    std::sort(sorted.begin(), sorted.end(),
        [](const SetupLabel& a, const SetupLabel& b) { return a.low < b.low; });
    QVector<SetupLabel> result;
    for (const SetupLabel& label : qAsConst(sorted)) {
        if (labels.decimals == 0 && !result.isEmpty() && result.constLast().high + 1 == label.low)
            result.last().high = label.high;
        else
            result.append(label);
    }
    return result;
}

// The first ones, as far as there is room for ranges, and for single values beside them.
QVector<SetupLabel> chosen(
    const QVector<SetupLabel>& missing, int ranges, int singles, int singlesBesideRange)
{
    QVector<SetupLabel> result;
    int takenRanges = 0;
    for (const SetupLabel& label : missing) {
        if (label.isRange() && takenRanges < ranges) {
            ++takenRanges;
            result.append(label);
        }
    }
    const int most = takenRanges > 0 ? singlesBesideRange : singles;
    for (const SetupLabel& label : missing) {
        if (!label.isRange() && result.size() - takenRanges < most)
            result.append(label);
    }
    return result;
}

QVector<SetupLabel> missingForSpss(const QVector<SetupLabel>& all, const SetupLabels& labels)
{
    if (labels.isText) {
        QVector<SetupLabel> shortOnes;
        for (const SetupLabel& label : all) {
            if (label.text.toUtf8().size() <= ShortText)
                shortOnes.append(label);
        }
        return chosen(shortOnes, 0, 3, 0);
    }
    const QVector<SetupLabel> together = joined(all, labels);
    const QVector<SetupLabel> chosenTogether = chosen(together, 1, 3, 1);
    const QVector<SetupLabel> asWritten = chosen(all, 1, 3, 1);
    return asWritten.size() < all.size() && chosenTogether.size() == together.size()
        ? chosenTogether
        : asWritten;
}

} // namespace

QVector<SetupLabel> missingFor(
    StatProgram program, const QVector<SetupLabel>& all, const SetupLabels& labels)
{
    constexpr int letters = 26; // ".a" to ".z"
    switch (program) {
    case StatProgram::Spss:
        return missingForSpss(all, labels);
    case StatProgram::R:
        return chosen(all, 1, all.size(), all.size());
    case StatProgram::Stata:
    case StatProgram::Sas:
        break;
    }
    return all.mid(0, letters);
}

bool isAmong(const SetupLabel& label, const QVector<SetupLabel>& missing)
{
    return std::any_of(missing.begin(), missing.end(), [&label](const SetupLabel& other) {
        return other.low <= label.low && label.high <= other.high && other.text == label.text;
    });
}
