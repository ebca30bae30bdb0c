#include "CodebookCommand.h"

#include "CommandLine.h"
#include "process/FileNames.h"
#include "writers/HtmlBook.h"
#include "InputOptions.h"
#include "process/Output.h"
#include "process/Supervisor.h"

#include <QCommandLineParser>
#include <QDateTime>

namespace {

struct CodebookOptions {
    QStringList files;
    InputOptions input;
    QDate date;
    QString output;
};

void describe(QCommandLineParser& parser)
{
    parser.setApplicationDescription(QStringLiteral(
        "Makes one page of CSPro dictionaries, or of the variables of SPSS and Stata\nfiles, to "
        "be read in a browser or on paper. It needs no other file and no\nnetwork.\n\n"
        "All languages of a dictionary are in it, unless --language names one. The date\nit tells "
        "is today's, or that of SOURCE_DATE_EPOCH in the environment, in seconds.\n"
        "The page goes to standard output. What was not read as written is told on\nstandard "
        "error.\n"
        "Exit status: 0 all was read, 1 an input failed, 2 wrong usage."));
    parser.addOption(Output::option());
    parser.addOptions(inputOptions());
    parser.addPositionalArgument(QStringLiteral("source"),
        QStringLiteral(
            "CSPro dictionary (.dcf, .csdb), SPSS file (.sav, .zsav) or Stata file (.dta)."),
        QStringLiteral("SOURCE..."));
}

// So that a page can be made again byte by byte.
QString readDate(QDate& date)
{
    const QByteArray seconds = qgetenv("SOURCE_DATE_EPOCH");
    bool isNumber = true;
    date = seconds.isEmpty()
        ? QDateTime::currentDateTimeUtc().date()
        : QDateTime::fromSecsSinceEpoch(seconds.toLongLong(&isNumber), Qt::UTC).date();
    return isNumber && date.isValid()
        ? QString()
        : QStringLiteral("SOURCE_DATE_EPOCH takes a number of seconds, not '%1'")
              .arg(QString::fromLocal8Bit(seconds));
}

QString readOptions(const QCommandLineParser& parser, CodebookOptions& options)
{
    options.files = FileNames::paths(parser.positionalArguments());
    if (options.files.isEmpty())
        return QStringLiteral("no file given");
    QString mistake = readInputOptions(parser, options.input);
    if (mistake.isNull())
        mistake = readDate(options.date);
    return mistake.isNull() ? Output::readOption(parser, options.files, options.output) : mistake;
}

int makeBook(const CodebookOptions& options, Supervisor& supervisor)
{
    int status = AllRead;
    QVector<Book> books;
    for (int i = 0; i < options.files.size(); ++i) {
        if (!supervisor.beginFile(i))
            continue;
        QVector<Listing> languages;
        const bool isListed = readLanguages(options.files.at(i), options.input, languages);
        if (isListed)
            books.append(Book(languages));
        if (!isListed || languages.constFirst().isPartial)
            status = InputFailed;
        supervisor.endFile();
    }
    if (books.isEmpty())
        return status;
    return Output(options.output).write(writeBook(books, { true, options.date })) ? status
                                                                                  : InputFailed;
}

} // namespace

int runCodebook(const QStringList& arguments)
{
    QCommandLineParser parser;
    CodebookOptions options;
    if (const auto status = readCommandLine(arguments, parser, describe, readOptions, options))
        return *status;
    return Supervisor(options.files).run([&](Supervisor& supervisor) {
        return makeBook(options, supervisor);
    });
}
