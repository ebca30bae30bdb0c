#include "reading/CSProFile.h"

#include "process/Console.h"
#include "text/ShownText.h"
#include "reading/DictionaryProblems.h"
#include "reading/InputFile.h"

#include <model_Tessel/CSProDataImport.h>
#include <model_Tessel/ErrorManager.h>

#include <QFile>
#include <QMessageBox>
#include <QSet>
#include <QTextCodec>

#include <algorithm>
#include <new>

using Console::Severity;

namespace {

// The largest real dictionary is half a megabyte; decoded, a file of this size still fits.
constexpr qint64 MebiByte = 1'048'576;
constexpr qint64 LargestFile = 256 * MebiByte;

constexpr int ShownLines = 3;
constexpr int ShownColumns = 60;

bool readBytes(const QString& path, QByteArray& bytes)
{
    QFile file(path);
    if (file.size() > LargestFile) {
        return failInput(path, 0,
            QStringLiteral("is larger than %1 MiB, which no dictionary is")
                .arg(LargestFile / MebiByte));
    }
    if (file.open(QIODevice::ReadOnly))
        bytes = file.readAll();
    return file.error() == QFileDevice::NoError
        || failInput(path, 0, QStringLiteral("cannot be read: %1").arg(file.errorString()));
}

bool isValid(const QTextCodec& codec, const QByteArray& bytes)
{
    QTextCodec::ConverterState state;
    codec.toUnicode(bytes.constData(), bytes.size(), &state);
    return state.invalidChars == 0 && state.remainingChars == 0;
}

// Line, from 1, of the first byte that is no UTF-8; a line end is never part of a character.
int firstInvalidLine(const QTextCodec& codec, const QByteArray& bytes)
{
    int line = 1;
    for (int start = 0; start < bytes.size(); ++line) {
        const int end = bytes.indexOf('\n', start);
        const int size = (end < 0 ? bytes.size() : end + 1) - start;
        if (!isValid(codec, QByteArray::fromRawData(bytes.constData() + start, size)))
            return line;
        start += size;
    }
    return line;
}

// The codec to read with: what a byte-order mark says, else the wanted one, else UTF-8.
QTextCodec* chooseCodec(const QByteArray& bytes, const QByteArray& wanted)
{
    QTextCodec* const fallback = QTextCodec::codecForName(wanted.isEmpty() ? "UTF-8" : wanted);
    return QTextCodec::codecForUtfText(bytes, fallback);
}

// Null when the text cannot be decoded. Text of before UTF-8 is most likely Windows-1252.
const QTextCodec* checkEncoding(
    const QString& path, const QByteArray& bytes, const QTextCodec* codec, bool isWanted)
{
    if (isValid(*codec, bytes))
        return codec;
    if (isWanted || codec->name() != "UTF-8") {
        failInput(path, 0,
            QStringLiteral("the text is not valid %1; name another encoding with --encoding")
                .arg(QString::fromLatin1(codec->name())));
        return nullptr;
    }
    return QTextCodec::codecForName("windows-1252");
}

void tellAssumedEncoding(const QString& path, const QByteArray& bytes, const QTextCodec& codec)
{
    Console::tell(path, firstInvalidLine(codec, bytes), Severity::Warning,
        QStringLiteral("the text is not valid UTF-8 and was read as windows-1252; if letters look "
                       "wrong, name its encoding with --encoding"));
}

// Headers of the sections that hold a dictionary's fields.
bool isDictionaryHeader(QStringView line)
{
    for (const char* header : { "[Dictionary]", "[Record]", "[Item]" }) {
        if (line.startsWith(QLatin1String(header), Qt::CaseInsensitive))
            return true;
    }
    return false;
}

bool hasDictionaryHeader(const QString& text)
{
    const QVector<QStringRef> lines = text.splitRef(QLatin1Char('\n'));
    return std::any_of(lines.cbegin(), lines.cend(),
        [](const QStringRef& line) { return isDictionaryHeader(QStringView(line).trimmed()); });
}

void showFirstLines(const QString& text)
{
    const QVector<QStringRef> lines = text.leftRef(ShownLines * 1024).split(QLatin1Char('\n'));
    for (int i = 0; i < std::min(lines.size(), ShownLines); ++i) {
        QString line = lines.at(i).trimmed().toString();
        if (line.size() > ShownColumns)
            line = line.left(ShownColumns) + QStringLiteral("...");
        Console::print(QStringLiteral("  %1 | ").arg(i + 1) + printable(line) + QLatin1Char('\n'));
    }
}

bool isJsonText(const QString& text)
{
    return QStringView(text).left(4096).trimmed().startsWith(QLatin1Char('{'));
}

bool checkKind(const QString& path, const QString& text, const QTextCodec& codec, bool asWritten)
{
    if (isJsonText(text)) {
        if (!asWritten) {
            return failInput(path, 0,
                QStringLiteral("is a JSON dictionary of CSPro 8 or later, which --rules "
                               "established does not read"));
        }
        if (codec.name() != "UTF-8") {
            return failInput(path, 0,
                QStringLiteral("is a JSON dictionary in %1; JSON dictionaries are UTF-8")
                    .arg(QString::fromLatin1(codec.name())));
        }
        return true;
    }
    if (hasDictionaryHeader(text))
        return true;
    const FileKind kind = kindOfContent(path);
    if (kind != FileKind::CSPro) {
        return failInput(path, 0,
            QStringLiteral("is no CSPro dictionary but a file for --type %1").arg(kindName(kind)));
    }
    failInput(path, 0, QStringLiteral("is no CSPro dictionary, SPSS or Stata file; it begins:"));
    showFirstLines(text);
    return false;
}

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

void tellLanguage(const QString& path, const TCSPro& dictionary, const QString& wanted)
{
    QStringList names;
    for (const CSProLanguage& language : dictionary.languages())
        names.append(language.name);
    if (wanted.isEmpty() || names.contains(wanted, Qt::CaseInsensitive))
        return;
    Console::tell(path, 0, Severity::Warning,
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
    const QString& path, const DictionaryOptions& options)
{
    QByteArray bytes;
    if (!readBytes(path, bytes))
        return nullptr;
    const QTextCodec* const chosen = chooseCodec(bytes, options.encoding);
    const QTextCodec* const codec = checkEncoding(path, bytes, chosen, !options.encoding.isEmpty());
    if (!codec)
        return nullptr;
    const QString text = codec->toUnicode(bytes);
    if (!checkKind(path, text, *codec, options.asWritten))
        return nullptr;
    if (codec != chosen)
        tellAssumedEncoding(path, bytes, *chosen);

    auto importer = std::make_unique<TCSProDataImport>(path);
    if (options.asWritten)
        importer->setReadingRules(CSProReadingRules::asWritten());
    importer->setTextCodec(codec->name());
    importer->setLanguage(options.language);
    importer->setDecimalQuestion(decimalQuestion(path, options.decimals));
    bool isRead = true;
    try {
        importer->openFile();
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
    tellOddRecords(path, *importer->dictionary);
    tellOddItems(path, *importer->dictionary);
    tellLanguage(path, *importer->dictionary, options.language);
    if (importer->fields->isEmpty())
        Console::tell(path, 0, Severity::Warning, QStringLiteral("the dictionary has no items"));
    return importer;
}
