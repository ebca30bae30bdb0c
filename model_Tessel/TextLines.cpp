#include <model_Tessel/TextLines_p.h>

#include <QByteArray>
#include <QIODevice>
#include <QTextCodec>

#include <algorithm>
#include <limits>

namespace {

constexpr int ChunkSize = 64 * 1024;

} // namespace

TextLines::TextLines(QIODevice& device, QTextCodec* codec)
{
    const bool hadBytes = decode(device, codec);
    if (!split()) {
        m_text.remove(QLatin1Char('\r'));
        split();
    }
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
        m_text.reserve(static_cast<int>(
            std::min<qint64>(device.size() + 1, std::numeric_limits<int>::max() / 4)));
    for (qint64 size = 0; (size = device.read(chunk.data(), ChunkSize)) > 0; isFirst = false) {
        hadBytes = true;
        if (isFirst)
            codec = QTextCodec::codecForUtfText(chunk.left(static_cast<int>(size)), codec);
        m_text += codec->toUnicode(chunk.constData(), static_cast<int>(size), &state);
    }
    return hadBytes;
}

// False when carriage returns stand elsewhere than before a line end; they belong to no line.
bool TextLines::split()
{
    const QStringView text(m_text);
    m_lines.clear();
    m_lines.reserve(static_cast<std::size_t>(text.size() / 32));
    for (qsizetype start = 0; start < text.size();) {
        const auto lineEnd = text.indexOf(QLatin1Char('\n'), start);
        const qsizetype end = lineEnd < 0 ? text.size() : lineEnd;
        QStringView line = text.mid(start, end - start);
        if (line.endsWith(QLatin1Char('\r')))
            line.chop(1);
        if (line.contains(QLatin1Char('\r')))
            return false;
        m_lines.push_back(line);
        start = end + 1;
    }
    return true;
}
