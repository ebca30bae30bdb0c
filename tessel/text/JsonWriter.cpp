#include "text/JsonWriter.h"

#include "text/Utf8Text.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <utility>

namespace {

constexpr int Indent = 2;
constexpr int PieceSize = 65'536;

QByteArray compact(const QJsonObject& object)
{
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

// True for a text that stands in JSON as it is. All of it is looked at, many characters at once.
bool isPlain(const QString& text)
{
    bool isPlain = true;
    for (const QChar character : text) {
        const ushort code = character.unicode();
        isPlain &= code >= 0x20 && code != '"' && code != '\\' && code != 0x7F
            && (code & 0xF800) != 0xD800; // a surrogate
    }
    return isPlain;
}

} // namespace

QJsonValue textOrNull(const QString& text)
{
    return text.isNull() ? QJsonValue() : QJsonValue(text);
}

void appendJsonString(QByteArray& bytes, const QString& text)
{
    if (isPlain(text)) {
        bytes += '"';
        appendUtf8(bytes, text);
        bytes += '"';
        return;
    }
    const QByteArray list = QJsonDocument(QJsonArray { text }).toJson(QJsonDocument::Compact);
    bytes.append(list.constData() + 1, list.size() - 2); // without the brackets
}

JsonWriter::JsonWriter(const ByteSink& sink)
    : m_sink(sink)
{
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
    addText(compact(entry));
}

void JsonWriter::addText(const QByteArray& entry)
{
    beginEntry(nullptr);
    put(entry);
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
    if (m_isRecording || m_text.size() < PieceSize)
        return;
    m_sink(m_text);
    m_text.clear();
}

// Entries of a list, which have no name, stand on lines of their own.
void JsonWriter::beginEntry(const char* name)
{
    if (!m_isFirst)
        put(",");
    m_isFirst = false;
    if (name) {
        put('"' + QByteArray(name) + "\":");
    } else if (m_depth > 0) {
        m_text += '\n';
        m_text.append(m_depth * Indent, ' ');
    }
}
