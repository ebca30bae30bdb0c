#include "reading/CSProFile.h"

#include "process/Console.h"
#include "text/ShownText.h"
#include "reading/DictionaryProblems.h"
#include "reading/DictionaryText.h"
#include "reading/InputFile.h"

#include <model_Tessel/CSProDataImport.h>
#include <model_Tessel/ErrorManager.h>

#include <QMessageBox>
#include <QSet>

#include <algorithm>
#include <new>

using Console::Severity;

namespace {

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

bool checkLanguage(const QString& path, const TCSPro& dictionary, const DictionaryOptions& options)
{
    QStringList names;
    for (const CSProLanguage& language : dictionary.languages())
        names.append(language.name);
    const QString& wanted = options.language;
    if (wanted.isEmpty() || names.contains(wanted, Qt::CaseInsensitive))
        return true;
    if (!options.asWritten) {
        return failInput(path, 0,
            QStringLiteral("--rules established reads no languages; leave --language out"));
    }
    return failInput(path, 0,
        names.isEmpty()
            ? QStringLiteral("the dictionary has no languages, so none is %1").arg(wanted)
            : QStringLiteral("the dictionary has no language %1; it has %2")
                  .arg(wanted, names.join(QLatin1String(", "))));
}

// What is odd in itself, but was read as it is written.
void tellOddItem(const QString& path, const TCSProItem& item, bool isRepeatedName)
{
    const QString name = shortened(item.dictionaryName);
    const auto tell = [&](const char* kind, const QString& text) {
        Console::tell(path, item.sourceLine, Severity::Warning, text, QLatin1String(kind));
    };
    if (item.dictionaryName.isEmpty())
        tell("no item name", QStringLiteral("an item has no name"));
    else if (isRepeatedName)
        tell("repeated item", QStringLiteral("item %1 has the name of an earlier item").arg(name));
    if (item.start < 1) {
        tell("column below 1",
            QStringLiteral("item %1 begins at column %2; columns count from 1")
                .arg(name, QString::number(item.start)));
    }
    if (item.len > 0 && item.decimal > item.len) {
        tell("too many decimals",
            QStringLiteral("item %1 has more decimals, %2, than columns, %3")
                .arg(name, QString::number(item.decimal), QString::number(item.len)));
    }
}

void tellOddRecords(const QString& path, const TCSPro& dictionary)
{
    QSet<QString> names;
    for (const TCSProRecord* record : qAsConst(*dictionary.records)) {
        const QString name = record->name.toUpper();
        if (name.isEmpty() || names.contains(name)) {
            Console::tell(path, record->sourceLine, Severity::Warning,
                name.isEmpty()
                    ? QStringLiteral("a record has no name")
                    : QStringLiteral("record %1 has the name of an earlier record, so their "
                                     "items cannot be told apart")
                          .arg(shortened(record->name)),
                name.isEmpty() ? QStringLiteral("no record name")
                               : QStringLiteral("repeated record"));
        }
        names.insert(name);
    }
}

void tellOddItems(const QString& path, const TCSPro& dictionary)
{
    QSet<QString> names;
    for (const TCSProItem* item : qAsConst(*dictionary.items)) {
        if (item->occurrence > 1)
            continue;
        const QString name = item->dictionaryName.toUpper();
        tellOddItem(path, *item, names.contains(name));
        names.insert(name);
    }
}

// What ends a load without a problem of the text is that there is no memory for it.
bool lacksMemory(const TCSPro& dictionary)
{
    const QVector<CSProProblem>& problems = dictionary.problems();
    return std::none_of(problems.cbegin(), problems.cend(),
        [](const CSProProblem& problem) { return endsReading(problem.kind); });
}

void tellProblems(const QString& path, const TCSPro& dictionary)
{
    for (const CSProProblem& problem : dictionary.problems()) {
        Console::tell(path, problem.line,
            endsReading(problem.kind) ? Severity::Error : Severity::Warning,
            describeProblem(problem), QString::number(int(problem.kind)));
    }
}

} // namespace

std::unique_ptr<TCSProDataImport> openDictionary(
    const QString& path, const DictionaryText& text, const DictionaryOptions& options)
{
    auto importer = std::make_unique<TCSProDataImport>(path);
    if (options.asWritten)
        importer->setReading(CSProReading::AsWritten);
    importer->setTextCodec(text.encoding);
    importer->setLanguage(options.language);
    importer->setDecimalQuestion(decimalQuestion(path, options.decimals));
    bool isRead = true;
    try {
        importer->openData(text.bytes);
    } catch (OxErrorManager* error) {
        delete error; // its text has the line as one character; the problems have it in digits
        isRead = false;
    }
    tellProblems(path, *importer->dictionary);
    if (!isRead && lacksMemory(*importer->dictionary))
        throw std::bad_alloc();
    if (!isRead) {
        failInput(path, 0, QStringLiteral("reading stopped; the dictionary is not listed"));
        return nullptr;
    }
    if (!checkLanguage(path, *importer->dictionary, options))
        return nullptr;
    tellOddRecords(path, *importer->dictionary);
    tellOddItems(path, *importer->dictionary);
    if (importer->fields->isEmpty())
        Console::tell(path, 0, Severity::Warning, QStringLiteral("the dictionary has no items"));
    return importer;
}
