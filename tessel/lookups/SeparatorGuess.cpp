#include "lookups/SeparatorGuess.h"

#include <model_Tessel/Lookup.h>

#include <QHash>
#include <QVector>

#include <algorithm>
#include <tuple>

namespace {

constexpr int MostLines = 1000;
constexpr int LongestLine = 4096;

bool isNearlyAll(int part, int whole)
{
    return part * 10 >= whole * 9;
}

/* How well one separator divides lines. */
struct Fit {
    int lines = 0; // that it divides
    int regularLines = 0; // of them with a key of the length that most have
    qint64 keyLengths = 0; // together

    bool isBetterThan(const Fit& other) const
    {
        const auto rank = [](const Fit& fit) {
            const double keyLength = double(fit.keyLengths) / fit.lines;
            return std::make_tuple(isNearlyAll(fit.regularLines, fit.lines), -keyLength);
        };
        return rank(*this) > rank(other);
    }
};

Fit fitOf(QChar separator, const QStringList& lines)
{
    Fit fit;
    QHash<int, int> lengths;
    for (const QString& line : lines) {
        const int length = line.indexOf(separator);
        if (length <= 0)
            continue;
        ++fit.lines;
        fit.keyLengths += length;
        fit.regularLines = std::max(fit.regularLines, ++lengths[length]);
    }
    return fit;
}

} // namespace

QString separatorWords()
{
    QStringList names = TOxLookup::separatorNames();
    const QString last = names.takeLast();
    return names.join(QLatin1String(", ")) + QLatin1String(" or ") + last;
}

void LineSample::add(const QString& text)
{
    int start = 0;
    for (int end = text.indexOf(QLatin1Char('\n')); end >= 0;
         end = text.indexOf(QLatin1Char('\n'), start)) {
        const QStringRef line = text.midRef(start, end - start);
        if (m_rest.isEmpty()) {
            addLine(line);
        } else {
            m_rest += line;
            addLine(QStringRef(&m_rest));
            m_rest.clear();
        }
        start = end + 1;
    }
    if (m_rest.size() < LongestLine)
        m_rest += text.midRef(start);
}

QStringList LineSample::lines()
{
    addLine(QStringRef(&m_rest));
    m_rest.clear();
    return m_lines;
}

void LineSample::addLine(const QStringRef& line)
{
    if (line.trimmed().isEmpty())
        return;
    ++m_seen;
    if (m_seen <= MostLines) {
        m_lines.append(line.left(LongestLine).toString());
        return;
    }
    const qint64 place = m_random() % m_seen;
    if (place < MostLines)
        m_lines[int(place)] = line.left(LongestLine).toString();
}

int guessSeparator(const QStringList& lines)
{
    QVector<Fit> fits;
    int most = 0;
    for (int code = 0; code < TOxLookup::separatorNames().size(); ++code) {
        fits.append(fitOf(TOxLookup::separatorCharacter(code), lines));
        most = std::max(most, fits.constLast().lines);
    }
    int best = -1;
    for (int code = 0; code < fits.size() && most > 0; ++code) {
        const Fit& fit = fits.at(code);
        if (isNearlyAll(fit.lines, most) && (best < 0 || fit.isBetterThan(fits.at(best))))
            best = code;
    }
    return best;
}
