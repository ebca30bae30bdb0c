#include "process/Progress.h"

#include "process/Console.h"
#include "text/ShownText.h"
#include "text/TextTable.h"

#include <algorithm>
#include <cmath>
#include <unistd.h>

namespace {

constexpr int PatienceInMilliseconds = 400;
constexpr int PauseInMilliseconds = 100;
constexpr int BarWidth = 30;
constexpr qint64 Thousand = 1000;

// "850", "12 k", "3.4 M": three digits at most, so that the line keeps its width.
QString amount(double number, const QString& unit)
{
    const char* const prefixes[] = { "", "k", "M", "G", "T" };
    int prefix = 0;
    while (number >= 999.5 && prefix < 4) {
        number /= double(Thousand);
        ++prefix;
    }
    const int decimals = prefix > 0 && number < 9.95 ? 1 : 0;
    return QString::number(number, 'f', decimals) + QLatin1Char(' ')
        + QLatin1String(prefixes[prefix]) + unit;
}

QString nameOf(WorkUnit unit)
{
    return unit == WorkUnit::Bytes ? QStringLiteral("B") : QStringLiteral("rows");
}

// "0:42", "1:03:20".
QString timeText(qint64 seconds)
{
    constexpr int Sixty = 60;
    const qint64 hours = seconds / Sixty / Sixty;
    const int minutes = int(seconds / Sixty % Sixty);
    const QString rest = QStringLiteral("%1").arg(seconds % Sixty, 2, 10, QLatin1Char('0'));
    if (hours == 0)
        return QStringLiteral("%1:%2").arg(minutes).arg(rest);
    return QStringLiteral("%1:%2:%3").arg(hours).arg(minutes, 2, 10, QLatin1Char('0')).arg(rest);
}

QString bar(qint64 done, qint64 total)
{
    const int percentage = static_cast<int>(double(std::min(done, total)) * 100 / double(total));
    const int filled = percentage * BarWidth / 100;
    return QStringLiteral("[%1%2] %3%")
        .arg(QString(filled, QLatin1Char('#')), QString(BarWidth - filled, QLatin1Char('.')))
        .arg(percentage, 3);
}

} // namespace

QString progressText(qint64 done, qint64 total, qint64 milliseconds, WorkUnit unit)
{
    QString text = total > 0 ? bar(done, total) : amount(double(done), nameOf(unit));
    if (unit == WorkUnit::None || milliseconds <= 0 || done <= 0)
        return text;
    const double rate = double(done) / double(milliseconds);
    text +=
        QLatin1String("  ") + amount(rate * double(Thousand), nameOf(unit)) + QLatin1String("/s");
    if (total > 0) {
        const double left = double(std::max<qint64>(total - done, 0)) / rate / double(Thousand);
        text += QStringLiteral("  %1 left").arg(timeText(std::llround(left)));
    }
    return text;
}

Progress::Progress(const QString& title, WorkUnit unit)
    : m_title(printable(title))
    , m_unit(unit)
    , m_isTerminal(isatty(STDERR_FILENO) != 0)
    , m_nextShow(PatienceInMilliseconds)
{
    m_time.start();
}

Progress::~Progress()
{
    if (m_shownWidth > 0)
        Console::print(
            QLatin1Char('\r') + QString(m_shownWidth, QLatin1Char(' ')) + QLatin1Char('\r'));
}

void Progress::show(qint64 done, qint64 total)
{
    if (!m_isTerminal || (total <= 0 && m_unit == WorkUnit::None) || m_time.elapsed() < m_nextShow)
        return;
    const qint64 elapsed = m_time.elapsed();
    m_nextShow = elapsed + PauseInMilliseconds;
    QString line = m_title + QLatin1Char(' ') + progressText(done, total, elapsed, m_unit);
    const int width = displayWidth(line);
    m_shownWidth = std::max(m_shownWidth, width);
    line += QString(m_shownWidth - width, QLatin1Char(' '));
    Console::print(QLatin1Char('\r') + line);
}
