#include "reading/InputDictionary.h"

#include "process/Console.h"
#include "reading/ReadInput.h"
#include "text/ShownText.h"

#include <tessel_data/CSProDb.h>
#include <tessel_data/DataError.h>

#include <QMessageBox>

#include <new>

namespace {

// ---- the question about decimal codes

// Says what a value set holds and where, so that the question can be answered without the file.
int askAboutDecimals(const QString& path, const CSProProblem& problem)
{
    const QString question =
        QStringLiteral("%1:%2: value set %3 of item %4 has decimal codes, the first is %5.\n"
                       "Keep the set, with 0 in place of such codes? "
                       "[y]es, yes to [a]ll, [n]o, no to al[l] (no): ")
            .arg(printable(path), QString::number(problem.line),
                printable(shortened(problem.valueSet)), printable(shortened(problem.name)),
                printable(shortened(problem.text)));
    while (true) {
        const QString answer = Console::ask(question).toLower();
        if (answer.isEmpty() || answer == QLatin1String("n") || answer == QLatin1String("no"))
            return QMessageBox::No;
        if (answer == QLatin1String("y") || answer == QLatin1String("yes"))
            return QMessageBox::Yes;
        if (answer == QLatin1String("a"))
            return QMessageBox::YesToAll;
        if (answer == QLatin1String("l"))
            return QMessageBox::NoToAll;
    }
}

CSProDecimalQuestion decimalQuestion(const QString& path, DictionaryOptions::Decimals decimals)
{
    switch (decimals) {
    case DictionaryOptions::Decimals::Yes:
        return [](const CSProProblem&) { return int(QMessageBox::YesToAll); };
    case DictionaryOptions::Decimals::Ask:
        return [path](const CSProProblem& problem) { return askAboutDecimals(path, problem); };
    case DictionaryOptions::Decimals::No:
        break;
    }
    return [](const CSProProblem&) { return int(QMessageBox::NoToAll); };
}

// ---- what is told

using Kind = DictionaryFileProblem::Kind;

// What the library says in general, in words of the command line.
struct Wording {
    Kind kind;
    const char* text; // %1: the library's text
};

constexpr Wording wordings[] = {
    { Kind::EncodingUnused, "--encoding is for CSPro dictionaries and does nothing here" },
    { Kind::LanguageUnused, "--language is for CSPro dictionaries and does nothing here" },
    { Kind::DbEncodingUnused,
        "--encoding does nothing here, as the texts of a CSPro DB are UTF-8" },
    { Kind::InvalidEncoding, "%1 with --encoding" },
    { Kind::AssumedEncoding, "%1 with --encoding" },
    { Kind::Binary, "%1 with --encoding" },
    { Kind::JsonByEstablishedRules,
        "is a JSON dictionary of CSPro 8 or later, which --rules established does not read" },
    { Kind::LanguageByEstablishedRules,
        "--rules established reads no languages; leave --language out" },
    { Kind::DecimalCodesDropped, "%1; --decimals yes keeps it with 0 in their place" },
};

QString otherKindText(const DictionaryFile& file, const InputOptions& options, const QString& text)
{
    const bool isCSProWanted = kindName(options.kind) == QLatin1String("cspro");
    return isCSProWanted
        ? QStringLiteral("is no CSPro dictionary but a file for --type %1").arg(kindName(file.kind))
        : text + QStringLiteral("; without --type its kind is found by its content");
}

QString textOf(
    const DictionaryFile& file, const DictionaryFileProblem& problem, const InputOptions& options)
{
    if (problem.kind == Kind::OtherKind)
        return otherKindText(file, options, problem.text);
    for (const Wording& wording : wordings) {
        if (wording.kind == problem.kind)
            return QString::fromLatin1(wording.text)
                .replace(QLatin1String("--encoding"), options.encodingOption)
                .replace(QLatin1String("%1"), problem.text);
    }
    return problem.text;
}

Console::Severity severityOf(const DictionaryFileProblem& problem)
{
    switch (problem.severity) {
    case DictionaryFileProblem::Severity::Note:
        return Console::Severity::Note;
    case DictionaryFileProblem::Severity::Warning:
        return Console::Severity::Warning;
    case DictionaryFileProblem::Severity::Error:
        break;
    }
    return Console::Severity::Error;
}

void tellProblems(const DictionaryFile& file, const InputOptions& options)
{
    for (const DictionaryFileProblem& problem : file.problems) {
        if (problem.kind == Kind::OutOfMemory)
            throw std::bad_alloc(); // which main() tells for every file
        Console::tell(file.path, problem.line, severityOf(problem), textOf(file, problem, options),
            problem.group);
        for (int i = 0; i < problem.details.size(); ++i) {
            Console::print(QStringLiteral("  %1 | ").arg(i + 1) + printable(problem.details.at(i))
                + QLatin1Char('\n'));
        }
    }
}

DictionaryFileOptions libraryOptions(const QString& path, const InputOptions& options)
{
    const DictionaryOptions& dictionary = options.dictionary;
    DictionaryFileOptions result;
    result.kind = options.kind;
    result.reading = dictionary.asWritten ? CSProReading::AsWritten : CSProReading::Established;
    result.encoding = dictionary.encoding;
    result.language = dictionary.language;
    result.decimalQuestion = decimalQuestion(path, dictionary.decimals);
    result.withStatImporter = !dictionary.asWritten;
    return result;
}

// What follows the name of a CSPro DB that was not opened replaces the file.
void readDb(const DictionaryFileOptions& options, InputDictionary& dictionary)
{
    const QString path = dictionary.file.path;
    try {
        const tessel::CSProDb db(path);
        dictionary.file = readDictionaryFile(path, db.dictionary(), options);
        dictionary.origin = QStringLiteral("Dictionary of a CSPro DB (CSPro %1, schema %2)")
                                .arg(db.csproVersion(), QString::number(db.schemaVersion()));
    } catch (const tessel::DataError& error) {
        DictionaryFileProblem& problem = dictionary.file.problems.last();
        problem.kind = Kind::UnreadableDb;
        problem.text = error.text;
    }
}

bool needsDb(const DictionaryFile& file)
{
    return !file.problems.isEmpty() && file.problems.constLast().kind == Kind::DbNotOpened;
}

} // namespace

InputDictionary readInputDictionary(const QString& path, const InputOptions& options)
{
    const DictionaryFileOptions how = libraryOptions(path, options);
    InputDictionary result { readDictionaryFile(path, how), QString() };
    if (needsDb(result.file))
        readDb(how, result);
    if (!options.isTold)
        tellProblems(result.file, options);
    return result;
}
