#include "process/Progress.h"

#include "process/Console.h"
#include "text/ShownText.h"
#include "text/TextTable.h"

#include <algorithm>
#include <unistd.h>

namespace {

constexpr int PatienceInMilliseconds = 400;
constexpr int BarWidth = 30;

} // namespace

Progress::Progress(const QString& title)
    : m_title(printable(title))
    , m_isTerminal(isatty(STDERR_FILENO) != 0)
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
    if (!m_isTerminal || total <= 0 || m_time.elapsed() < PatienceInMilliseconds)
        return;
    const int percentage = static_cast<int>(std::min(done, total) * 100 / total);
    const int filled = percentage * BarWidth / 100;
    const QString line = QStringLiteral("%1 [%2%3] %4%")
                             .arg(m_title, QString(filled, QLatin1Char('#')),
                                 QString(BarWidth - filled, QLatin1Char('.')))
                             .arg(percentage, 3);
    m_shownWidth = std::max(m_shownWidth, displayWidth(line));
    Console::print(QLatin1Char('\r') + line);
}
