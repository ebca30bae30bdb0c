#include "process/Console.h"

#include "process/Output.h"
#include "text/ShownText.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QFile>
#include <QHash>
#include <QVector>

#include <algorithm>
#include <cstdio>
#include <sys/ioctl.h>
#include <unistd.h>

namespace {

constexpr int DefaultWidth = 80;
constexpr int NarrowestTable = 40;

constexpr int ToldAlike = 3;
constexpr int LongestEnd = 200; // of a text that is cut

bool silent = false;
bool tellsAll = false;

// Messages of one kind on one file.
struct Alike {
    QString place; // of the last one that was told
    Console::Severity severity;
    qint64 count = 0;
};

struct Alikes {
    QVector<Alike> list; // in the order of their first messages
    QHash<QString, int> byKind; // index of them
};

Alikes& alikes()
{
    static Alikes alikes;
    return alikes;
}

QString severityName(Console::Severity severity)
{
    switch (severity) {
    case Console::Severity::Note:
        return QStringLiteral("note");
    case Console::Severity::Warning:
        return QStringLiteral("warning");
    case Console::Severity::Error:
        break;
    }
    return QStringLiteral("error");
}

const QCommandLineOption& allWarningsOption()
{
    static const QCommandLineOption option(QStringLiteral("all-warnings"),
        QStringLiteral("Tell every warning; those alike of one file are else told three times and "
                       "then counted."));
    return option;
}

QString cut(const QString& text)
{
    return text.size() <= 2 * LongestEnd
        ? text
        : text.left(LongestEnd) + QStringLiteral(" ... ") + text.right(LongestEnd);
}

void write(const QString& place, Console::Severity severity, const QString& text)
{
    const QString line =
        place + QLatin1String(": ") + severityName(severity) + QLatin1String(": ") + text;
    Console::print(printable(line) + QLatin1Char('\n'));
}

// False when so many like it were told that this one is only counted.
bool isTold(const QString& place, Console::Severity severity, const QString& kindOfFile)
{
    Alikes& told = alikes();
    auto known = told.byKind.find(kindOfFile);
    if (known == told.byKind.end()) {
        known = told.byKind.insert(kindOfFile, told.list.size());
        told.list.append({ place, severity });
    }
    Alike& alike = told.list[*known];
    const bool isTold = ++alike.count <= ToldAlike;
    if (isTold)
        alike.place = place;
    return isTold;
}

} // namespace

void Console::tell(
    const QString& file, int line, Severity severity, const QString& text, const QString& kind)
{
    const QString place = line > 0 ? QStringLiteral("%1:%2").arg(file).arg(line) : file;
    if (tellsAll || kind.isNull() || isTold(place, severity, file + QLatin1Char('\n') + kind))
        write(place, severity, cut(text));
}

void Console::tellCounts()
{
    for (const Alike& alike : qAsConst(alikes().list)) {
        if (alike.count > ToldAlike) {
            write(alike.place, alike.severity,
                QStringLiteral("%1 more like this; --all-warnings shows them")
                    .arg(grouped(alike.count - ToldAlike)));
        }
    }
    alikes() = {};
}

int Console::wrongUsage(const QString& text)
{
    const QString program = QCoreApplication::arguments().constFirst();
    print(printable(program + QLatin1String(": ") + text) + QLatin1String("\nSee '") + program
        + QLatin1String(" --help'.\n"));
    return WrongUsage;
}

const QCommandLineOption& Console::helpOption()
{
    static const QCommandLineOption option(
        { QStringLiteral("h"), QStringLiteral("help") }, QStringLiteral("Show this help."));
    return option;
}

std::optional<int> Console::parseArguments(QCommandLineParser& parser, const QStringList& arguments)
{
    parser.addOption(allWarningsOption());
    if (!parser.parse(arguments))
        return wrongUsage(parser.errorText());
    tellsAll = parser.isSet(allWarningsOption());
    if (!parser.isSet(helpOption()))
        return std::nullopt;
    return show(parser.helpText());
}

int Console::show(const QString& text)
{
    return Output(QString()).write(text.toUtf8()) ? AllRead : InputFailed;
}

void Console::setSilent(bool isSilent)
{
    silent = isSilent;
}

void Console::print(const QString& text)
{
    if (silent)
        return;
    const QByteArray bytes = text.toUtf8();
    std::fwrite(bytes.constData(), 1, static_cast<std::size_t>(bytes.size()), stderr);
}

bool Console::canAsk()
{
    return isatty(STDIN_FILENO) != 0 && isatty(STDERR_FILENO) != 0;
}

QString Console::ask(const QString& question)
{
    print(question);
    static QFile input;
    if (!input.isOpen() && !input.open(stdin, QIODevice::ReadOnly | QIODevice::Text))
        return QString();
    const QByteArray answer = input.readLine();
    return answer.isEmpty() ? QString() : QString::fromLocal8Bit(answer).trimmed();
}

int Console::tableWidth()
{
    winsize size {};
    int width = DefaultWidth;
    bool isNumber = false;
    const int columns = qEnvironmentVariableIntValue("COLUMNS", &isNumber);
    if (isatty(STDOUT_FILENO) != 0 && ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0
        && size.ws_col > 0) {
        width = size.ws_col;
    } else if (isNumber) {
        width = columns;
    }
    return std::max(width, NarrowestTable);
}
