#include "CodebookCommand.h"

#include "CommandLine.h"
#include "process/FileNames.h"
#include "writers/ExportWriters.h"
#include "writers/FiguresJson.h"
#include "writers/HtmlBook.h"
#include "FiguresOptions.h"
#include "InputOptions.h"
#include "SelectionOptions.h"
#include "process/Output.h"
#include "process/Supervisor.h"
#include "reading/DdiListing.h"

#include <QCommandLineParser>
#include <QDateTime>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <memory>

namespace {

enum class Form { Html, Ddi, Json };

// A dictionary, with the files that hold its data where it does not itself.
struct BookSource {
    QString file;
    QStringList data;
};

struct CodebookOptions {
    QVector<BookSource> sources;
    InputOptions input;
    Form form = Form::Html;
    FiguresRequest figures; // of each source
    bool hasFigures = true; // of sources with data
    QDate date;
    QString output;
};

const QCommandLineOption& formOption()
{
    static const QCommandLineOption option(QStringLiteral("to"),
        QStringLiteral("What to write: a page (html), DDI-Codebook 2.5 with the figures (ddi), or "
                       "the figures alone (json)."),
        QStringLiteral("html|ddi|json"), QStringLiteral("html"));
    return option;
}

const QCommandLineOption& noFiguresOption()
{
    static const QCommandLineOption option(QStringLiteral("no-figures"),
        QStringLiteral("Leave the data of CSPro DB, SPSS and Stata files unread."));
    return option;
}

void describe(QCommandLineParser& parser)
{
    parser.setApplicationDescription(QStringLiteral(
        "Makes one page of CSPro dictionaries, or of the variables of SPSS and Stata\nfiles, to "
        "be read in a browser or on paper. It needs no other file and no\nnetwork. With text "
        "data behind their dictionary, and of files that hold data,\nit has figures of them.\n\n"
        "All languages of a dictionary are in it, unless --language names one. The date\nit tells "
        "is today's, or that of SOURCE_DATE_EPOCH in the environment, in seconds.\n"
        "The page goes to standard output. What was not read as written is told on\nstandard "
        "error.\n"
        "Exit status: 0 all was read, 1 an input failed, 2 wrong usage."));
    parser.addOptions({ formOption(), noFiguresOption() });
    parser.addOptions(figuresOptions());
    parser.addOptions(selectionOptions());
    parser.addOption(dataEncodingOption());
    parser.addOption(Output::option());
    parser.addOptions(inputOptions());
    parser.addPositionalArgument(QStringLiteral("source"),
        QStringLiteral("CSPro dictionary (.dcf), which text files with its data may follow; CSPro "
                       "DB (.csdb), SPSS file (.sav, .zsav) or Stata file (.dta)."),
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

// A text that holds a dictionary, by its beginning; no other text has data.
bool isDictionary(const QString& path)
{
    if (path.endsWith(QLatin1String(".dcf"), Qt::CaseInsensitive) || isDdiFile(path))
        return true;
    QFile file(path);
    if (!QFileInfo(path).isFile() || !file.open(QIODevice::ReadOnly))
        return false;
    constexpr int longest = 4096;
    QByteArray head = file.read(longest);
    if (head.startsWith("\xEF\xBB\xBF"))
        head.remove(0, 3);
    return dictionaryFileKind(head) != DictionaryFileKind::CSPro || head.trimmed().startsWith('{')
        || head.toLower().contains("[dictionary]");
}

QVector<BookSource> sourcesOf(const QStringList& files)
{
    QVector<BookSource> sources;
    for (const QString& file : files) {
        if (sources.isEmpty() || isDictionary(file))
            sources.append({ file, {} });
        else
            sources.last().data.append(file);
    }
    return sources;
}

// The data of a source, which were checked; a mistake where its files do not go together.
QString readDataInput(const CodebookOptions& options, const BookSource& source, DataInput& input)
{
    input = options.figures.input;
    input.first = source.file;
    input.data = source.data;
    input.reading = options.input.dictionary;
    return checkDataInput(input);
}

QString readFigures(const QCommandLineParser& parser, CodebookOptions& options)
{
    options.hasFigures = !parser.isSet(noFiguresOption());
    QString mistake = readFiguresOptions(parser, options.figures);
    if (mistake.isNull())
        mistake = readSelectionOptions(parser, options.figures.selected);
    if (mistake.isNull())
        mistake = readDataEncoding(parser, options.figures.input.dataEncoding);
    if (!mistake.isNull())
        return mistake;
    bool hasData = false;
    for (const BookSource& source : qAsConst(options.sources)) {
        DataInput input;
        mistake = source.data.isEmpty() ? QString() : readDataInput(options, source, input);
        if (!mistake.isNull())
            return mistake;
        hasData = hasData || !source.data.isEmpty();
    }
    if (hasData && !options.hasFigures)
        return QStringLiteral(
            "--no-figures leaves data files without a use; leave one of them out");
    if (hasData && !options.input.dictionary.asWritten)
        return QStringLiteral("data are read with dictionaries as they are written; leave --rules "
                              "out");
    return QString();
}

QString readForm(const QCommandLineParser& parser, CodebookOptions& options)
{
    const QString name = parser.value(formOption());
    if (name == QLatin1String("ddi"))
        options.form = Form::Ddi;
    else if (name == QLatin1String("json"))
        options.form = Form::Json;
    else if (name != QLatin1String("html"))
        return QStringLiteral("--to takes html, ddi or json, not '%1'").arg(name);
    if (options.form != Form::Html && options.sources.size() > 1) {
        return QStringLiteral("--to %1 takes one source at a time, not %2")
            .arg(name)
            .arg(options.sources.size());
    }
    return QString();
}

QString readOptions(const QCommandLineParser& parser, CodebookOptions& options)
{
    const QStringList files = FileNames::paths(parser.positionalArguments());
    if (files.isEmpty())
        return QStringLiteral("no file given");
    options.sources = sourcesOf(files);
    QString mistake = readInputOptions(parser, options.input);
    if (mistake.isNull())
        mistake = readForm(parser, options);
    if (mistake.isNull())
        mistake = readFigures(parser, options);
    if (mistake.isNull())
        mistake = readDate(options.date);
    return mistake.isNull() ? Output::readOption(parser, files, options.output) : mistake;
}

// Files that hold their own dictionary hold data as well.
bool hasData(const CodebookOptions& options, const BookSource& source, DataInput& input)
{
    if (!options.hasFigures || !options.input.dictionary.asWritten)
        return false;
    return readDataInput(options, source, input).isNull()
        && (input.kind != DataKind::Text || !input.data.isEmpty());
}

// An ExitStatus; the figures stay null where there are no data.
int addFigures(const CodebookOptions& options, const BookSource& source,
    std::shared_ptr<const DataFigures>& figures)
{
    FiguresRequest request = options.figures;
    if (!hasData(options, source, request.input))
        return AllRead;
    request.input.isDictionaryTold = true;
    if (options.form == Form::Ddi) // which has a variable for each
        request.options.hasEachOccurrence = true;
    const auto made = std::make_shared<DataFigures>();
    const int status = makeFigures(request, *made);
    if (status == AllRead)
        figures = made;
    return status;
}

QByteArray writtenBook(const CodebookOptions& options, const QVector<Book>& books)
{
    const Book& first = books.constFirst();
    switch (options.form) {
    case Form::Ddi:
        return writeDdi(first.languages(), first.figures());
    case Form::Html:
        return writeBook(books, { true, options.date });
    case Form::Json:
        break;
    }
    QByteArray bytes;
    if (first.figures())
        writeFigures(*first.figures(), [&](const QByteArray& piece) { bytes += piece; });
    return bytes;
}

// Adds the book of a source; an ExitStatus.
int addBook(const CodebookOptions& options, const BookSource& source, QVector<Book>& books)
{
    QVector<Listing> languages;
    if (!readLanguages(source.file, options.input, languages))
        return InputFailed;
    Book book(languages);
    if (languages.constFirst().isPartial) { // nor are its data read
        books.append(book);
        return InputFailed;
    }
    std::shared_ptr<const DataFigures> figures;
    const int status = addFigures(options, source, figures);
    if (status == WrongUsage)
        return status;
    if (status == AllRead && !figures && options.form == Form::Json) // which has nothing else
        return Console::wrongUsage(
            QStringLiteral("--to json writes figures; give the data behind the dictionary"));
    // A page without the figures that were asked for would look whole.
    if (status != AllRead)
        return status;
    book.setFigures(figures);
    books.append(book);
    return AllRead;
}

int makeBook(const CodebookOptions& options, Supervisor& supervisor)
{
    int status = AllRead;
    QVector<Book> books;
    for (int i = 0; i < options.sources.size(); ++i) {
        const BookSource& source = options.sources.at(i);
        DataInput input;
        const auto time = hasData(options, source, input) ? Supervisor::Time::Unlimited
                                                          : Supervisor::Time::Limited;
        if (!supervisor.beginFile(i, time))
            continue;
        const int added = addBook(options, source, books);
        supervisor.endFile();
        if (added == WrongUsage)
            return added;
        status = std::max(status, added);
    }
    if (books.isEmpty())
        return status;
    return Output(options.output).write(writtenBook(options, books)) ? status : InputFailed;
}

QStringList filesOf(const CodebookOptions& options)
{
    QStringList files;
    for (const BookSource& source : options.sources)
        files.append(source.file);
    return files;
}

} // namespace

int runCodebook(const QStringList& arguments)
{
    QCommandLineParser parser;
    CodebookOptions options;
    if (const auto status = readCommandLine(arguments, parser, describe, readOptions, options))
        return *status;
    return Supervisor(filesOf(options)).run([&](Supervisor& supervisor) {
        return makeBook(options, supervisor);
    });
}
