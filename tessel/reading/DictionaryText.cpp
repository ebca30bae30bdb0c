#include "reading/DictionaryText.h"

#include "process/Console.h"
#include "text/ShownText.h"
#include "reading/CSProDb.h"
#include "reading/InputFile.h"

#include <QTextCodec>

#include <algorithm>

namespace {

// The largest real dictionary is half a megabyte; decoded, a file of this size still fits.
constexpr qint64 MebiByte = 1'048'576;
constexpr qint64 LargestFile = 256 * MebiByte;

constexpr int ShownLines = 3;
constexpr int ShownColumns = 60;

// ---- the bytes

bool readFile(InputFile& file, QByteArray& bytes)
{
    if (file.size() > LargestFile) {
        return failInput(file.path(), 0,
            QStringLiteral("is larger than %1 MiB, which no dictionary is")
                .arg(LargestFile / MebiByte));
    }
    return file.readAll(bytes);
}

bool readDb(const QString& path, DictionaryText& text)
{
    CSProDb db;
    if (!db.open(path))
        return failInput(path, 0, db.errorText());
    text.bytes = db.dictionary();
    text.origin = QStringLiteral("Dictionary of a CSPro DB (CSPro %1, schema %2)")
                      .arg(db.csproVersion(), QString::number(db.schemaVersion()));
    return true;
}

// ---- the encoding

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
const QTextCodec* chooseCodec(const QByteArray& bytes, const QByteArray& wanted)
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
    Console::tell(path, firstInvalidLine(codec, bytes), Console::Severity::Warning,
        QStringLiteral("the text is not valid UTF-8 and was read as windows-1252; if letters look "
                       "wrong, name its encoding with --encoding"));
}

// ---- the kind

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

bool isJsonText(const QString& text)
{
    return QStringView(text).left(4096).trimmed().startsWith(QLatin1Char('{'));
}

bool isDictionaryText(const QString& text)
{
    return isJsonText(text) || hasDictionaryHeader(text);
}

// A dictionary may have a stray control character in a label; no text has a zero.
bool isBinary(const QString& text)
{
    return text.contains(QChar::Null)
        || (!isDictionaryText(text) && std::any_of(text.begin(), text.end(), isBinaryCharacter));
}

bool failBinary(const QString& path)
{
    if (path.endsWith(QLatin1String(".csdb"), Qt::CaseInsensitive)
        || path.endsWith(QLatin1String(".csdbe"), Qt::CaseInsensitive)) {
        return failInput(path, 0,
            QStringLiteral("is no CSPro DB that can be read: it is encrypted or damaged; get it "
                           "unencrypted, or its dictionary (.dcf)"));
    }
    return failInput(path, 0,
        QStringLiteral("is a binary file and no CSPro dictionary, CSPro DB, SPSS or Stata file; "
                       "if it is text, name its encoding with --encoding"));
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

bool checkJson(const QString& path, const QTextCodec& codec, bool asWritten)
{
    if (!asWritten) {
        return failInput(path, 0,
            QStringLiteral("is a JSON dictionary of CSPro 8 or later, which --rules established "
                           "does not read"));
    }
    return codec.name() == "UTF-8"
        || failInput(path, 0,
            QStringLiteral("is a JSON dictionary in %1; JSON dictionaries are UTF-8")
                .arg(QString::fromLatin1(codec.name())));
}

bool checkKind(const QString& path, const QString& text, const QTextCodec& codec, bool asWritten)
{
    if (isBinary(text))
        return failBinary(path);
    if (isJsonText(text))
        return checkJson(path, codec, asWritten);
    if (hasDictionaryHeader(text))
        return true;
    failInput(path, 0, QStringLiteral("is no CSPro dictionary, SPSS or Stata file; it begins:"));
    showFirstLines(text);
    return false;
}

// Takes what \a text has for a dictionary in the encoding that is found, or else wanted.
bool examine(const QString& path, const QByteArray& wanted, bool asWritten, DictionaryText& text)
{
    const QTextCodec* const chosen = chooseCodec(text.bytes, wanted);
    const QTextCodec* const codec = checkEncoding(path, text.bytes, chosen, !wanted.isEmpty());
    if (!codec || !checkKind(path, codec->toUnicode(text.bytes), *codec, asWritten))
        return false;
    if (codec != chosen)
        tellAssumedEncoding(path, text.bytes, *chosen);
    text.encoding = codec->name();
    return true;
}

} // namespace

bool readDictionaryText(InputFile& file, const DictionaryOptions& options, DictionaryText& text)
{
    const QString& path = file.path();
    switch (file.kind()) {
    case FileKind::CSProDb: // its texts are UTF-8
        return readDb(path, text) && examine(path, QByteArray(), options.asWritten, text);
    case FileKind::Spss:
    case FileKind::Stata:
        return failInput(path, 0,
            QStringLiteral("is no CSPro dictionary but a file for --type %1")
                .arg(kindName(file.kind())));
    case FileKind::CSPro:
    case FileKind::Unknown:
        break;
    }
    return readFile(file, text.bytes) && examine(path, options.encoding, options.asWritten, text);
}
