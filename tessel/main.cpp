#include "BuildCommand.h"
#include "CheckCommand.h"
#include "CodebookCommand.h"
#include "process/Console.h"
#include "process/FileNames.h"
#include "ConvertCommand.h"
#include "DiffCommand.h"
#include "ExportCommand.h"
#include "FieldsCommand.h"
#include "LookupCommand.h"
#include "TreeCommand.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QLoggingCategory>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <exception>
#include <new>
#include <string>

#include <fcntl.h>
#include <unistd.h>

namespace {

struct Command {
    const char* name;
    const char* summary;
    int (*run)(const QStringList& arguments);
};

constexpr Command commands[] = {
    { "build", "make a database of data and their dictionary", runBuild },
    { "check", "check data against their dictionary", runCheck },
    { "codebook", "make a page to read of dictionaries", runCodebook },
    { "convert", "make files of statistics programs of data and their dictionary", runConvert },
    { "diff", "compare two dictionaries", runDiff },
    { "export", "write a dictionary as DDI, SQL, CSV, JSON or a web page", runExport },
    { "fields", "list the fields of dictionaries", runFields },
    { "lookup", "check a lookup file of keys and values", runLookup },
    { "tree", "print the tree of entities and variables", runTree },
};

const Command* findCommand(const char* name)
{
    for (const Command& command : commands) {
        if (qstrcmp(command.name, name) == 0)
            return &command;
    }
    return nullptr;
}

QString commandList()
{
    QString text = QStringLiteral("\nCommands:\n");
    for (const Command& command : commands) {
        text += QStringLiteral("  %1  %2\n")
                    .arg(QLatin1String(command.name), -8)
                    .arg(QLatin1String(command.summary));
    }
    return text + QStringLiteral("\n'tessel COMMAND --help' tells more of each.\n");
}

// The program without a command: help, the version, or a mistake.
int runProgram(const QStringList& arguments)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("Reads the dictionaries of census and survey data."));
    parser.addOption(Console::helpOption());
    parser.addVersionOption();
    parser.addPositionalArgument(QStringLiteral("command"),
        QStringLiteral("What to do; see below."), QStringLiteral("COMMAND [ARGUMENTS]"));
    const bool isParsed = parser.parse(arguments);
    const QStringList words = parser.positionalArguments();
    const bool wantsHelp = parser.isSet(Console::helpOption());
    if (wantsHelp || parser.isSet(QStringLiteral("version"))) {
        return Console::show(wantsHelp ? parser.helpText() + commandList()
                                       : QStringLiteral("tessel " TESSEL_VERSION "\n"));
    }
    if (!words.isEmpty() && words.constFirst() != QLatin1String("help"))
        return Console::wrongUsage(QStringLiteral("unknown command '%1'").arg(words.constFirst()));
    if (!isParsed)
        return Console::wrongUsage(parser.errorText());
    const QString help = parser.helpText() + commandList();
    if (words.isEmpty()) {
        Console::print(help);
        return WrongUsage;
    }
    return Console::show(help);
}

// A descriptor that is closed would be that of the next file opened, and be written to.
void holdStandardDescriptors()
{
    for (int descriptor : { STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO }) {
        if (fcntl(descriptor, F_GETFD) < 0)
            open("/dev/null", O_RDONLY | O_CLOEXEC);
    }
}

void prepareProcess()
{
    holdStandardDescriptors();
    std::signal(SIGXFSZ, SIG_IGN); // a file that grows too large is a failure to write
    FileNames::useLocale();
}

// The first argument that would not name the file it says; null when all do.
const char* findInexpressible(int argc, char** argv)
{
    const auto* found = std::find_if_not(argv, argv + argc, FileNames::isExpressible);
    return found == argv + argc ? nullptr : *found;
}

int run(int argc, char** argv, const Command* command)
{
    // "tessel fields" is the name that usage lines and messages show.
    std::string name = "tessel";
    if (command) {
        name += std::string(" ") + command->name;
        std::copy(argv + 2, argv + argc, argv + 1);
        --argc;
        argv[argc] = nullptr;
    }
    argv[0] = name.data();
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationVersion(QStringLiteral(TESSEL_VERSION));
    // The library's tracing is for its developers; standard error is for what a user must know.
    if (!qEnvironmentVariableIsSet("TESSEL_TRACE"))
        QLoggingCategory::setFilterRules(QStringLiteral("default.debug=false"));
    if (const char* argument = findInexpressible(argc, argv))
        return Console::wrongUsage(FileNames::mistake(argument));
    const QStringList arguments = QCoreApplication::arguments();
    return command ? command->run(arguments) : runProgram(arguments);
}

} // namespace

int main(int argc, char** argv)
{
    // "tessel help fields" is "tessel fields --help".
    char helpWord[] = "--help";
    if (argc == 3 && qstrcmp(argv[1], "help") == 0 && findCommand(argv[2])) {
        argv[1] = argv[2];
        argv[2] = helpWord;
    }
    prepareProcess();
    try {
        return run(argc, argv, argc > 1 ? findCommand(argv[1]) : nullptr);
    } catch (const std::bad_alloc&) {
        std::fputs("tessel: stopped: there is too little memory\n", stderr);
        return InputFailed;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "tessel: stopped: %s\n", error.what());
        return InputFailed;
    }
}
