#pragma once

#include "process/Console.h"

#include <QCommandLineParser>

#include <optional>

/*!
 * The steps that a command begins with: \a describe tells \a parser the options beside --help,
 * the arguments are parsed, and \a read makes \a options of them; what it returns is null or what
 * is wrong. \return null when the command goes on, else the status with which it ends
 */
template <typename Options>
std::optional<int> readCommandLine(const QStringList& arguments, QCommandLineParser& parser,
    void (*describe)(QCommandLineParser&), QString (*read)(const QCommandLineParser&, Options&),
    Options& options)
{
    parser.addOption(Console::helpOption());
    describe(parser);
    if (const std::optional<int> status = Console::parseArguments(parser, arguments))
        return status;
    const QString mistake = read(parser, options);
    if (mistake.isNull())
        return std::nullopt;
    return Console::wrongUsage(mistake);
}
