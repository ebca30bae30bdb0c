#include <model_Tessel/DictionaryFile_p.h>

#include <model_Tessel/CSProDataImport.h>
#include <model_Tessel/CSProJsonReader_p.h>
#include <model_Tessel/ErrorManager.h>
#include <model_Tessel/ProblemText.h>
#include <model_Tessel/TextEncoding.h>

#include <QSet>
#include <QTextCodec>

#include <algorithm>
#include <new>

namespace DictionaryFiles {

namespace {

constexpr int ShownLines = 3;
constexpr int ShownColumns = 60;

// ---- the text

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
    const auto isLineEnd = [](QChar character) {
        return character == QLatin1Char('\n') || character == QLatin1Char('\r');
    };
    for (auto start = text.begin(); start != text.end();) {
        const auto end = std::find_if(start, text.end(), isLineEnd);
        if (isDictionaryHeader(QStringView(start, end).trimmed()))
            return true;
        start = std::find_if_not(end, text.end(), isLineEnd);
    }
    return false;
}

// A dictionary may have a stray control character in a label; no text has a zero.
bool isBinary(const QString& text, bool isDictionary)
{
    return text.contains(QChar::Null)
        || (!isDictionary && std::any_of(text.begin(), text.end(), isBinaryCharacter));
}

bool failBinary(DictionaryFile& file)
{
    const QString& path = file.path;
    if (path.endsWith(QLatin1String(".csdb"), Qt::CaseInsensitive)
        || path.endsWith(QLatin1String(".csdbe"), Qt::CaseInsensitive)) {
        return fail(file, Kind::UnreadableDb,
            QStringLiteral("is no CSPro DB that can be read: it is encrypted or damaged; get it "
                           "unencrypted, or its dictionary (.dcf)"));
    }
    return fail(file, Kind::Binary,
        QStringLiteral("is a binary file and no CSPro dictionary, CSPro DB, SPSS or Stata file; "
                       "if it is text, name its encoding"));
}

QStringList firstLines(const QString& text)
{
    QStringList shown;
    const QVector<QStringRef> lines =
        text.leftRef(ShownLines * 1024).split(QLatin1Char('\n')).mid(0, ShownLines);
    for (const QStringRef& line : lines) {
        const QStringRef trimmed = line.trimmed();
        shown.append(trimmed.size() > ShownColumns
                ? trimmed.left(ShownColumns) + QLatin1String("...")
                : trimmed.toString());
    }
    return shown;
}

bool failNoDictionary(DictionaryFile& file, const QString& text)
{
    fail(file, Kind::NoDictionary,
        QStringLiteral("is no CSPro dictionary, SPSS or Stata file; it begins:"));
    file.problems.last().details = firstLines(text);
    return false;
}

bool checkJson(DictionaryFile& file, const QTextCodec& codec, CSProReading reading)
{
    if (reading != CSProReading::AsWritten) {
        return fail(file, Kind::JsonByEstablishedRules,
            QStringLiteral("is a JSON dictionary of CSPro 8 or later, which the established rules "
                           "do not read"));
    }
    return codec.name() == "UTF-8"
        || fail(file, Kind::JsonEncoding,
            QStringLiteral("is a JSON dictionary in %1; JSON dictionaries are UTF-8")
                .arg(QString::fromLatin1(codec.name())));
}

// Whether the text is a dictionary that can be read; if it is none at all, its kind is unknown.
bool checkKind(DictionaryFile& file, const DecodedText& decoded, CSProReading reading)
{
    const bool isDb = file.kind == DictionaryFileKind::CSProDb;
    const DictionaryFileKind kind = file.kind;
    file.kind = isDb ? kind : DictionaryFileKind::Unknown;
    const bool hasJson = isJson(decoded.text.left(4096).toUtf8());
    const bool isDictionary = hasJson || hasDictionaryHeader(decoded.text);
    if (isBinary(decoded.text, isDictionary))
        return failBinary(file);
    if (!isDictionary)
        return failNoDictionary(file, decoded.text);
    file.kind = kind;
    return !hasJson || checkJson(file, *decoded.codec, reading);
}

void warnOfEncoding(DictionaryFile& file, const QByteArray& bytes)
{
    warn(file, Kind::AssumedEncoding, assumedEncodingText());
    file.problems.last().line = firstInvalidLine(*QTextCodec::codecForName("UTF-8"), bytes);
}

// The name of the codec to read with; empty when the text cannot be read.
QByteArray checkText(DictionaryFile& file, const QByteArray& bytes, const QByteArray& wanted,
    const DictionaryFileOptions& options)
{
    const DecodedText decoded = decodeText(bytes, wanted);
    if (!decoded.isValid) {
        const QByteArray name = decoded.codec ? decoded.codec->name() : wanted;
        fail(file, Kind::InvalidEncoding,
            QStringLiteral("the text is not valid %1; name another encoding")
                .arg(QString::fromLatin1(name)));
        return {};
    }
    if (!checkKind(file, decoded, options.reading))
        return {};
    file.isEncodingAssumed = decoded.isAssumed;
    if (decoded.isAssumed)
        warnOfEncoding(file, bytes);
    return decoded.codec->name();
}

// ---- the dictionary

Kind kindOf(const CSProProblem& problem)
{
    return problem.kind == CSProProblem::Kind::DecimalCodesDropped ? Kind::DecimalCodesDropped
                                                                   : Kind::Dictionary;
}

void addProblems(DictionaryFile& file, const TCSPro& dictionary)
{
    for (const CSProProblem& problem : dictionary.problems()) {
        file.problems.append(
            { endsReading(problem.kind) ? Severity::Error : Severity::Warning, kindOf(problem),
                describeProblem(problem), problem.line, QString::number(int(problem.kind)) });
    }
}

// What ends a load without a problem of the text is that there is no memory for it.
bool lacksMemory(const TCSPro& dictionary)
{
    const QVector<CSProProblem>& problems = dictionary.problems();
    return std::none_of(problems.cbegin(), problems.cend(),
        [](const CSProProblem& problem) { return endsReading(problem.kind); });
}

bool load(DictionaryFile& file, TCSProDataImport& importer, const QByteArray& bytes)
{
    bool isRead = true;
    try {
        importer.openData(bytes);
    } catch (OxErrorManager* error) {
        delete error; // its text has the line as one character; the problems have it in digits
        isRead = false;
    }
    addProblems(file, *importer.dictionary);
    if (!isRead && lacksMemory(*importer.dictionary))
        throw std::bad_alloc();
    return isRead
        || fail(file, Kind::ReadingStopped,
            QStringLiteral("reading stopped, so there is no dictionary"));
}

bool checkLanguage(
    DictionaryFile& file, const TCSPro& dictionary, const DictionaryFileOptions& options)
{
    QStringList names;
    for (const CSProLanguage& language : dictionary.languages())
        names.append(language.name);
    const QString& wanted = options.language;
    if (wanted.isEmpty() || names.contains(wanted, Qt::CaseInsensitive))
        return true;
    if (options.reading != CSProReading::AsWritten) {
        return fail(file, Kind::LanguageByEstablishedRules,
            QStringLiteral("the established rules read no languages; name none"));
    }
    return fail(file, Kind::NoSuchLanguage,
        names.isEmpty()
            ? QStringLiteral("the dictionary has no languages, so none is %1").arg(wanted)
            : QStringLiteral("the dictionary has no language %1; it has %2")
                  .arg(wanted, names.join(QLatin1String(", "))));
}

// ---- what is odd in itself, but was read as it is written

void addOddItem(DictionaryFile& file, const TCSProItem& item, bool isRepeatedName)
{
    const QString name = quotedText(item.dictionaryName);
    const auto add = [&](const char* group, const QString& text) {
        file.problems.append({ Severity::Warning, Kind::OddItem, text, item.sourceLine,
            QString::fromLatin1(group) });
    };
    if (item.dictionaryName.isEmpty())
        add("no item name", QStringLiteral("an item has no name"));
    else if (isRepeatedName)
        add("repeated item", QStringLiteral("item %1 has the name of an earlier item").arg(name));
    if (item.start < 1) {
        add("column below 1",
            QStringLiteral("item %1 begins at column %2; columns count from 1")
                .arg(name, QString::number(item.start)));
    }
    if (item.len > 0 && item.decimal > item.len) {
        add("too many decimals",
            QStringLiteral("item %1 has more decimals, %2, than columns, %3")
                .arg(name, QString::number(item.decimal), QString::number(item.len)));
    }
}

void addOddItems(DictionaryFile& file, const TCSPro& dictionary)
{
    QSet<QString> names;
    for (const TCSProItem* item : qAsConst(*dictionary.items)) {
        if (item->occurrence > 1)
            continue;
        const QString name = item->dictionaryName.toUpper();
        addOddItem(file, *item, names.contains(name));
        names.insert(name);
    }
}

void addOddRecords(DictionaryFile& file, const TCSPro& dictionary)
{
    QSet<QString> names;
    const auto add = [&](const TCSProRecord& record, const char* group, const QString& text) {
        file.problems.append({ Severity::Warning, Kind::OddRecord, text, record.sourceLine,
            QString::fromLatin1(group) });
    };
    for (const TCSProRecord* record : qAsConst(*dictionary.records)) {
        const QString name = record->name.toUpper();
        if (name.isEmpty()) {
            add(*record, "no record name", QStringLiteral("a record has no name"));
        } else if (names.contains(name)) {
            add(*record, "repeated record",
                QStringLiteral("record %1 has the name of an earlier record, so their items cannot "
                               "be told apart")
                    .arg(quotedText(record->name)));
        }
        names.insert(name);
    }
}

void addOddities(DictionaryFile& file, const TCSProDataImport& importer)
{
    addOddRecords(file, *importer.dictionary);
    addOddItems(file, *importer.dictionary);
    if (importer.fields->isEmpty())
        warn(file, Kind::NoItems, QStringLiteral("the dictionary has no items"));
}

std::unique_ptr<TCSProDataImport, DictionaryImporterDeleter> newImporter(
    const QString& path, const QByteArray& encoding, const DictionaryFileOptions& options)
{
    std::unique_ptr<TCSProDataImport, DictionaryImporterDeleter> importer(
        new TCSProDataImport(path));
    importer->setReading(options.reading);
    importer->setTextCodec(encoding);
    importer->setLanguage(options.language);
    importer->setDecimalQuestion(options.decimalQuestion);
    return importer;
}

} // namespace

void readCSPro(DictionaryFile& file, const QByteArray& bytes, const DictionaryFileOptions& options)
{
    const bool isDb = file.kind == DictionaryFileKind::CSProDb; // its texts are UTF-8
    const QByteArray encoding =
        checkText(file, bytes, isDb ? QByteArray() : options.encoding, options);
    if (encoding.isEmpty())
        return;
    auto importer = newImporter(file.path, encoding, options);
    if (!load(file, *importer, bytes) || !checkLanguage(file, *importer->dictionary, options))
        return;
    file.encoding = QString::fromLatin1(importer->dictionary->textEncoding());
    addOddities(file, *importer);
    file.importer = std::move(importer);
    file.bytes = bytes;
}

} // namespace DictionaryFiles
