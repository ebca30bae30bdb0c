#include "process/Console.h"

#include "process/Output.h"
#include "text/ShownText.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QFile>

#include <algorithm>
#include <cstdio>
#include <sys/ioctl.h>
#include <unistd.h>

namespace {

constexpr int DefaultWidth = 80;
constexpr int NarrowestTable = 40;

bool silent = false;

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

} // namespace

void Console::tell(const QString& file, int line, Severity severity, const QString& text)
{
    const QString place = line > 0 ? QStringLiteral("%1:%2").arg(file).arg(line) : file;
    print(
        printable(place + QLatin1String(": ") + severityName(severity) + QLatin1String(": ") + text)
        + QLatin1Char('\n'));
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
    if (!parser.parse(arguments))
        return wrongUsage(parser.errorText());
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
