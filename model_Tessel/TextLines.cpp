#include <model_Tessel/TextLines_p.h>

#include <QByteArray>
#include <QIODevice>
#include <QTextCodec>

#include <algorithm>

namespace {

constexpr int ChunkSize = 64 * 1024;

} // namespace

TextLines::TextLines(QIODevice& device, QTextCodec* codec)
{
    const bool hadBytes = decode(device, codec);
    split();
    if (hadBytes && m_lines.empty())
        m_lines.emplace_back(m_text);
}

// False when the device held nothing at all.
bool TextLines::decode(QIODevice& device, QTextCodec* codec)
{
    QByteArray chunk(ChunkSize, Qt::Uninitialized);
    QTextCodec::ConverterState state;
    bool hadBytes = !device.atEnd();
    bool isFirst = true;
    if (!device.isSequential())
        m_text.reserve(static_cast<int>(std::min<qint64>(device.size() + 1, INT_MAX / 4)));
    for (qint64 size = 0; (size = device.read(chunk.data(), ChunkSize)) > 0; isFirst = false) {
        hadBytes = true;
        if (isFirst)
            codec = QTextCodec::codecForUtfText(chunk.left(static_cast<int>(size)), codec);
        m_text += codec->toUnicode(chunk.constData(), static_cast<int>(size), &state);
    }
    return hadBytes;
}

void TextLines::split()
{
    const QStringView text(m_text);
    m_lines.reserve(static_cast<std::size_t>(text.size() / 32));
    for (qsizetype start = 0; start < text.size();) {
        auto end = text.indexOf(QLatin1Char('\n'), start);
        const qsizetype next = end < 0 ? text.size() : end + 1;
        if (end < 0)
            end = text.size();
        else if (end > start && text[end - 1] == QLatin1Char('\r'))
            --end;
        m_lines.push_back(text.mid(start, end - start));
        start = next;
    }
}
