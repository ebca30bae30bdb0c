#include "text/JsonWriter.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <algorithm>
#include <utility>

namespace {

constexpr int Indent = 2;
constexpr int PieceSize = 65'536;

QByteArray compact(const QJsonObject& object)
{
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

} // namespace

QJsonValue textOrNull(const QString& text)
{
    return text.isNull() ? QJsonValue() : QJsonValue(text);
}

QByteArray jsonString(const QString& text)
{
    const bool isPlain = std::all_of(text.cbegin(), text.cend(), [](QChar character) {
        const ushort code = character.unicode();
        return code >= 0x20 && code != '"' && code != '\\' && code != 0x7F
            && !character.isSurrogate();
    });
    if (isPlain)
        return '"' + text.toUtf8() + '"';
    const QByteArray list = QJsonDocument(QJsonArray { text }).toJson(QJsonDocument::Compact);
    return list.mid(1, list.size() - 2); // without the brackets
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
        put('\n' + QByteArray(m_depth * Indent, ' '));
    }
}
