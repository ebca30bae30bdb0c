#include <model_Tessel/TextLines_p.h>

#include <QByteArray>
#include <QTextCodec>

#include <algorithm>

namespace {

// What QTextStream decodes at once: how many characters stand for broken UTF-8 depends on it.
constexpr int PieceSize = 16'384;

constexpr QLatin1Char lineFeed('\n');
constexpr QLatin1Char carriageReturn('\r');

bool hasText(const QString& piece)
{
    return std::any_of(
        piece.begin(), piece.end(), [](QChar character) { return character != carriageReturn; });
}

bool isAtLineStart(QStringView text)
{
    while (text.endsWith(carriageReturn))
        text.chop(1);
    return text.isEmpty() || text.endsWith(lineFeed);
}

} // namespace

TextLines::TextLines(const QByteArray& bytes, const QTextCodec& codec, Ends ends)
{
    const bool endsInText = decode(bytes, codec);
    if (!split(ends)) {
        m_text.remove(carriageReturn);
        split(ends);
    }
    // The stream was not at its end before the bytes behind the text, and found no line there.
    if (!endsInText && isAtLineStart(m_text))
        m_lines.emplace_back(QStringView(m_text).right(0));
}

// False when the last piece has no text, which a byte-order mark and half a character are not.
bool TextLines::decode(const QByteArray& bytes, const QTextCodec& codec)
{
    QTextCodec::ConverterState state;
    bool endsInText = true;
    m_text.reserve(bytes.size());
    for (int start = 0; start < bytes.size(); start += PieceSize) {
        const int size = std::min(PieceSize, bytes.size() - start);
        const QString piece = codec.toUnicode(bytes.constData() + start, size, &state);
        endsInText = hasText(piece);
        m_text += piece;
    }
    return endsInText;
}

// False when carriage returns that are to go stand elsewhere than before a line feed.
bool TextLines::split(Ends ends)
{
    const QStringView text(m_text);
    m_lines.clear();
    m_lines.reserve(static_cast<std::size_t>(text.size() / 32));
    for (qsizetype start = 0; start < text.size();) {
        const auto found = text.indexOf(lineFeed, start);
        const qsizetype end = found < 0 ? text.size() : found;
        QStringView line = text.mid(start, end - start);
        start = end + 1;
        if (line.endsWith(carriageReturn))
            line.chop(1);
        if (line.isEmpty() && found < 0)
            break; // a carriage return behind the last line
        if (!line.contains(carriageReturn))
            m_lines.push_back(line);
        else if (ends == Ends::All)
            splitAtReturns(line);
        else
            return false;
    }
    return true;
}

void TextLines::splitAtReturns(QStringView text)
{
    for (qsizetype start = 0; start <= text.size();) {
        const auto found = text.indexOf(carriageReturn, start);
        const qsizetype end = found < 0 ? text.size() : found;
        m_lines.push_back(text.mid(start, end - start));
        start = end + 1;
    }
}
