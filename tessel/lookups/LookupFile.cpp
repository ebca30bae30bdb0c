#include "lookups/LookupFile.h"

#include "lookups/SeparatorGuess.h"
#include "process/Console.h"
#include "reading/ReadInput.h"

#include <model_Tessel/TextEncoding.h>

#include <QTextCodec>

#include <algorithm>

namespace {

constexpr int ChunkSize = 1'048'576;

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

Scan scan(const QByteArray& bytes, const QTextCodec& codec)
{
    Scan result;
    QTextCodec::ConverterState state;
    int line = 1;
    for (int start = 0; start < bytes.size(); start += ChunkSize) {
        const int size = std::min(ChunkSize, bytes.size() - start);
        const QString text = codec.toUnicode(bytes.constData() + start, size, &state);
        result.binaryLine = findLine(text, line, isBinaryCharacter);
        if (result.binaryLine > 0)
            return result;
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
    return result;
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
    if (!readInput(path, file.bytes))
        return false;
    const bool isMarked = QTextCodec::codecForUtfText(file.bytes, nullptr);
    const QTextCodec* codec = firstCodec(file.bytes, encoding);
    Scan result = scan(file.bytes, *codec);
    if (result.binaryLine > 0) {
        return failInput(path, result.binaryLine,
            QStringLiteral("is no text; if it is, name its encoding with --encoding, for example "
                           "UTF-16"));
    }
    if (result.invalidLine > 0) {
        if (isMarked || !encoding.isEmpty())
            return failInvalid(path, result.invalidLine, *codec, isMarked);
        Console::tell(path, result.invalidLine, Console::Severity::Warning,
            assumedEncodingText() + QLatin1String(" with --encoding"));
        codec = codecBeforeUtf8();
    }
    file.path = path;
    file.encoding = codec->name();
    file.sampleLines = result.sample.lines();
    return true;
}
