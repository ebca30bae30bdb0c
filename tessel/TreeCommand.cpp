#include "TreeCommand.h"

#include "CommandLine.h"
#include "process/Console.h"
#include "process/FileNames.h"
#include "reading/DictionaryTree.h"
#include "reading/ReadInput.h"
#include "FormatOption.h"
#include "InputOptions.h"
#include "lookups/LookupFile.h"
#include "lookups/SeparatorGuess.h"
#include "process/Output.h"
#include "process/Supervisor.h"
#include "writers/TreeWriters.h"

#include <model_Tessel/Entity.h>
#include <model_Tessel/Lookup.h>
#include <model_Tessel/Variable.h>

#include <QCommandLineParser>

#include <algorithm>

using Console::Severity;

namespace {

struct LookupArgument {
    QString variable;
    QString file;
};

struct TreeOptions {
    QString file;
    InputOptions input;
    QVector<LookupArgument> lookups;
    QString entity; // null: all
    TreeFormat format;
    QString output;
};

const QCommandLineOption& valuesOption()
{
    static const QCommandLineOption option(
        QStringLiteral("values"), QStringLiteral("Print the value labels too."));
    return option;
}

const QCommandLineOption& entityOption()
{
    static const QCommandLineOption option(QStringLiteral("entity"),
        QStringLiteral("Print the entity of this name and what is below it."),
        QStringLiteral("name"));
    return option;
}

const QCommandLineOption& lookupOption()
{
    static const QCommandLineOption option(QStringLiteral("lookup"),
        QStringLiteral("Lookup file with the codes of a variable; may be given several times."),
        QStringLiteral("variable=file"));
    return option;
}

void describe(QCommandLineParser& parser)
{
    parser.setApplicationDescription(QStringLiteral(
        "Prints the tree of entities and variables that a database is made from: an\n"
        "entity for each record, the identification items above them.\n\n"
        "The tree goes to standard output. What was not read as written is told on\n"
        "standard error, by file and line.\n"
        "Exit status: 0 all was read, 1 an input failed, 2 wrong usage."));
    parser.addOptions({ textFormatOption(QStringLiteral("print")), valuesOption(), entityOption(),
        lookupOption(), Output::option() });
    parser.addOptions(inputOptions());
    parser.addPositionalArgument(QStringLiteral("file"),
        QStringLiteral(
            "CSPro dictionary (.dcf, .csdb), SPSS file (.sav, .zsav) or Stata file (.dta)."),
        QStringLiteral("FILE"));
}

QString readLookups(const QCommandLineParser& parser, QVector<LookupArgument>& lookups)
{
    const QStringList texts = parser.values(lookupOption());
    for (const QString& text : texts) {
        const int sign = text.indexOf(QLatin1Char('='));
        const LookupArgument lookup { text.left(std::max(sign, 0)),
            FileNames::path(text.mid(sign + 1)) };
        if (lookup.variable.isEmpty() || lookup.file.isEmpty())
            return QStringLiteral("--lookup takes VARIABLE=FILE, not '%1'").arg(text);
        lookups.append(lookup);
    }
    return QString();
}

QString readOptions(const QCommandLineParser& parser, TreeOptions& options)
{
    const QStringList files = FileNames::paths(parser.positionalArguments());
    if (files.size() != 1) {
        return files.isEmpty()
            ? QStringLiteral("no file given")
            : QStringLiteral("the tree of one file is printed, not of %1").arg(files.size());
    }
    options.file = files.constFirst();
    options.format.withValues = parser.isSet(valuesOption());
    options.format.width = Console::tableWidth();
    if (parser.isSet(entityOption()))
        options.entity = parser.value(entityOption());
    QString mistake = readTextFormat(parser, options.format.asJson);
    if (mistake.isNull())
        mistake = readLookups(parser, options.lookups);
    if (mistake.isNull())
        mistake = readInputOptions(parser, options.input);
    QStringList inputs { options.file };
    for (const LookupArgument& lookup : qAsConst(options.lookups))
        inputs.append(lookup.file);
    return mistake.isNull() ? Output::readOption(parser, inputs, options.output) : mistake;
}

// ---- lookups

bool describeLookup(const LookupArgument& argument, QVector<LookupDictionary>& lookups)
{
    LookupFile file;
    if (!examineLookup(argument.file, QByteArray(), file))
        return false;
    const int separator = guessSeparator(file.sampleLines);
    if (separator < 0) {
        return failInput(argument.file, 1,
            QStringLiteral("no separator is found from this line on; 'tessel lookup' tells more"));
    }
    LookupDictionary lookup;
    lookup.setName(argument.variable);
    lookup.setFile(argument.file);
    lookup.setSeparator(TOxLookup::separatorCharacter(separator));
    lookups.append(lookup);
    return true;
}

// True for the name of the variable itself, and for that of an item of which it is an occurrence.
bool isNamed(const TOxVariable& variable, const QString& name)
{
    const QString full = variable.getName();
    if (full == name)
        return true;
    const QStringView number = QStringView(full).mid(name.size() + 1);
    return full.startsWith(name + QLatin1Char('_')) && !number.isEmpty()
        && std::all_of(number.begin(), number.end(), [](QChar digit) { return digit.isDigit(); });
}

bool hasLookup(const TOxEntity& entity, const QString& name)
{
    const QList<TOxVariable*>& variables = *entity.getVariables();
    const QList<TOxEntity*>& children = *entity.getChildren();
    return std::any_of(variables.cbegin(), variables.cend(), [&](const TOxVariable* variable) {
        return variable->getMetadataVariables()->getLookup() && isNamed(*variable, name);
    }) || std::any_of(children.cbegin(), children.cend(), [&](const TOxEntity* child) {
        return hasLookup(*child, name);
    });
}

// A lookup for a variable that is not there would be lost.
bool checkLookups(const TreeOptions& options, const TOxEntity& root)
{
    for (const LookupArgument& lookup : options.lookups) {
        if (!hasLookup(root, lookup.variable)) {
            return failInput(options.file, 0,
                QStringLiteral("no variable %1 for the lookup %2; capitals count")
                    .arg(lookup.variable, lookup.file));
        }
    }
    return true;
}

// ---- entity

void addNames(const TOxEntity& entity, QStringList& names)
{
    names.append(entity.getName());
    for (const TOxEntity* child : qAsConst(*entity.getChildren()))
        addNames(*child, names);
}

// The whole tree, or the part that was asked for; null, and told, when there is none.
const TOxEntity* chooseTop(const TreeOptions& options, TOxEntity& root)
{
    if (options.entity.isNull())
        return &root;
    QStringList names;
    addNames(root, names);
    const int count = names.count(options.entity);
    if (count == 0) {
        failInput(options.file, 0,
            QStringLiteral("no entity %1; there are %2")
                .arg(options.entity, names.join(QLatin1String(", "))));
        return nullptr;
    }
    if (count > 1) {
        Console::tell(options.file, 0, Severity::Note,
            QStringLiteral("%1 entities are called %2; the first is printed")
                .arg(QString::number(count), options.entity));
    }
    return root.findEntity(options.entity);
}

// ---- work

int printTree(const TreeOptions& options, Supervisor& supervisor)
{
    QVector<LookupDictionary> lookups;
    for (const LookupArgument& lookup : options.lookups) {
        if (!describeLookup(lookup, lookups))
            return InputFailed;
    }
    if (!supervisor.beginFile(0))
        return InputFailed;
    bool isPartial = false;
    TreeFacts facts;
    const DictionaryPointer tree = readTree(options.file, options.input, lookups, facts, isPartial);
    supervisor.endFile();
    if (!tree || !checkLookups(options, *tree->getRoot()))
        return InputFailed;
    const TOxEntity* const top = chooseTop(options, *tree->getRoot());
    if (!top)
        return InputFailed;
    Output output(options.output);
    writeTree(options.file, *tree, *top, facts, options.format, output.sink());
    return output.finish() && !isPartial ? AllRead : InputFailed;
}

} // namespace

int runTree(const QStringList& arguments)
{
    QCommandLineParser parser;
    TreeOptions options;
    if (const auto status = readCommandLine(arguments, parser, describe, readOptions, options))
        return *status;
    return Supervisor({ options.file }).run([&](Supervisor& supervisor) {
        return printTree(options, supervisor);
    });
}
