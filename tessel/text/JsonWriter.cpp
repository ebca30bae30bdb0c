#include "text/JsonWriter.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <utility>

namespace {

constexpr int Indent = 2;
constexpr int PieceSize = 65'536;
constexpr ushort AsciiLast = 0x7F;

QByteArray compact(const QJsonObject& object)
{
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

// Appends a text in quotes when it stands in JSON as it is. All of it is looked at and taken for
// ASCII, many characters at once.
bool appendPlain(QByteArray& bytes, const QString& text)
{
    const int start = bytes.size();
    const int size = text.size();
    bytes.resize(start + size + 2);
    char* target = bytes.data() + start;
    *target++ = '"';
    const QChar* const source = text.constData();
    bool isPlain = true;
    ushort bits = 0;
    for (int i = 0; i < size; ++i) {
        const ushort code = source[i].unicode();
        isPlain &= code >= 0x20 && code != '"' && code != '\\' && code != 0x7F
            && (code & 0xF800) != 0xD800; // a surrogate
        bits |= code;
        target[i] = static_cast<char>(code);
    }
    target[size] = '"';
    if (!isPlain)
        bytes.resize(start);
    else if (bits > AsciiLast)
        bytes.replace(start + 1, size, text.toUtf8());
    return isPlain;
}

} // namespace

QJsonValue textOrNull(const QString& text)
{
    return text.isNull() ? QJsonValue() : QJsonValue(text);
}

void appendJsonString(QByteArray& bytes, const QString& text)
{
    if (appendPlain(bytes, text))
        return;
    const QByteArray list = QJsonDocument(QJsonArray { text }).toJson(QJsonDocument::Compact);
    bytes.append(list.constData() + 1, list.size() - 2); // without the brackets
}

JsonWriter::JsonWriter(const ByteSink& sink)
    : m_sink(sink)
{
    m_text.reserve(2 * PieceSize);
}

void JsonWriter::beginObject(const QJsonObject& members, const char* name)
{
    beginEntry(name);
    QByteArray text = compact(members);
    text.chop(1); // the brace, which comes with endObject()
    put(text);
    m_isFirst = members.isEmpty();
    ++m_depth;
}

void JsonWriter::endObject()
{
    --m_depth;
    put("}");
    m_isFirst = false;
}

void JsonWriter::beginList(const char* name)
{
    beginEntry(name);
    put("[");
    m_isFirst = true;
    ++m_depth;
}

void JsonWriter::endList()
{
    --m_depth;
    put("]");
    m_isFirst = false;
}

void JsonWriter::add(const QJsonObject& entry)
{
    beginText() += compact(entry);
}

QByteArray& JsonWriter::beginText()
{
    beginEntry(nullptr);
    return m_text;
}

QByteArray JsonWriter::recorded(const std::function<void()>& write)
{
    const bool isFirst = m_isFirst;
    QByteArray text;
    std::swap(m_text, text);
    m_isRecording = true;
    write();
    m_isRecording = false;
    std::swap(m_text, text);
    m_isFirst = isFirst;
    return text;
}

void JsonWriter::addRecorded(const QByteArray& text)
{
    put(text);
    m_isFirst = m_isFirst && text.isEmpty();
}

void JsonWriter::finish()
{
    m_sink(m_text + '\n');
    m_text.clear();
}

// Millions of small pieces would cost more than what is in them.
void JsonWriter::put(const QByteArray& text)
{
    m_text += text;
    handOut();
}

void JsonWriter::handOut()
{
    if (m_isRecording || m_text.size() < PieceSize)
        return;
    m_sink(m_text);
    m_text.resize(0); // keeps what is reserved
}

// Entries of a list, which have no name, stand on lines of their own.
void JsonWriter::beginEntry(const char* name)
{
    handOut();
    if (!m_isFirst)
        m_text += ',';
    m_isFirst = false;
    if (name) {
        put('"' + QByteArray(name) + "\":");
    } else if (m_depth > 0) {
        m_text += '\n';
        m_text.append(m_depth * Indent, ' ');
    }
}
