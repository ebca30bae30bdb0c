#include "lookups/LookupFile.h"

#include "lookups/SeparatorGuess.h"
#include "process/Console.h"
#include "reading/InputFile.h"

#include <QFile>
#include <QTextCodec>

#include <algorithm>

namespace {

constexpr qint64 ChunkSize = 1'048'576;

// Characters that no text file holds; an end-of-file mark of old and an escape do occur.
bool isBinary(QChar character)
{
    const ushort code = character.unicode();
    return code < 0x20 && (code < 0x08 || (code > 0x0D && code != 0x1A && code != 0x1B));
}

/* What a pass over a file's text finds. */
struct Scan {
    int binaryLine = 0; // line, from 1, of the first character that is in no text; 0: none
    int invalidLine = 0; // of the first that is no valid text in the encoding; 0: none
    LineSample sample; // an invalid byte is one character, so keys have nearly their lengths
};

// Line of the first character in text that a predicate holds for, where the text begins in line;
// 0: none.
template <typename Predicate> int findLine(const QString& text, int line, Predicate predicate)
{
    const auto found = std::find_if(text.cbegin(), text.cend(), predicate);
    return found == text.cend() ? 0
                                : line + int(std::count(text.cbegin(), found, QLatin1Char('\n')));
}

bool scan(const QString& path, const QTextCodec& codec, Scan& result)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return failInput(path, 0, QStringLiteral("cannot be read: %1").arg(file.errorString()));
    QTextCodec::ConverterState state;
    int line = 1;
    while (!file.atEnd()) {
        const QByteArray bytes = file.read(ChunkSize);
        if (bytes.isEmpty())
            return failInput(path, 0, QStringLiteral("cannot be read: %1").arg(file.errorString()));
        const QString text = codec.toUnicode(bytes.constData(), bytes.size(), &state);
        result.binaryLine = findLine(text, line, isBinary);
        if (result.binaryLine > 0)
            return true;
        if (state.invalidChars > 0 && result.invalidLine == 0) {
            const int found = findLine(text, line,
                [](QChar character) { return character == QChar::ReplacementCharacter; });
            result.invalidLine = qMax(found, line);
        }
        line += text.count(QLatin1Char('\n'));
        result.sample.add(text);
    }
    if (state.remainingChars > 0 && result.invalidLine == 0)
        result.invalidLine = line;
    return true;
}

// The codec that a byte-order mark asks for; null: there is none.
QTextCodec* markedCodec(const QString& path)
{
    QFile file(path);
    const QByteArray mark = file.open(QIODevice::ReadOnly) ? file.read(4) : QByteArray();
    return QTextCodec::codecForUtfText(mark, nullptr);
}

bool failInvalid(const QString& path, int line, const QTextCodec& codec, bool isMarked)
{
    const QString name = QString::fromLatin1(codec.name());
    return failInput(path, line,
        isMarked ? QStringLiteral("the text is not valid %1, as its byte-order mark says it is")
                       .arg(name)
                 : QStringLiteral("the text is not valid %1; name another encoding with --encoding")
                       .arg(name));
}

} // namespace

bool examineLookup(const QString& path, const QByteArray& encoding, LookupFile& file)
{
    if (!checkInput(path))
        return false;
    const QTextCodec* const marked = markedCodec(path);
    const QTextCodec* const wanted =
        QTextCodec::codecForName(encoding.isEmpty() ? "UTF-8" : encoding);
    const QTextCodec* codec = marked ? marked : wanted;
    Scan result;
    if (!scan(path, *codec, result))
        return false;
    if (result.binaryLine > 0) {
        return failInput(path, result.binaryLine,
            QStringLiteral("is no text; if it is, name its encoding with --encoding, for example "
                           "UTF-16"));
    }
    if (result.invalidLine > 0) {
        if (marked || !encoding.isEmpty())
            return failInvalid(path, result.invalidLine, *codec, marked != nullptr);
        Console::tell(path, result.invalidLine, Console::Severity::Warning,
            QStringLiteral("the text is not valid UTF-8 and was read as windows-1252; if letters "
                           "look wrong, name its encoding with --encoding"));
        codec = QTextCodec::codecForName("windows-1252");
    }
    file.path = path;
    file.encoding = codec->name();
    file.sampleLines = result.sample.lines();
    return true;
}
