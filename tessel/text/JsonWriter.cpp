#include "text/JsonWriter.h"

#include <QJsonDocument>

namespace {

constexpr int Indent = 2;

QByteArray compact(const QJsonObject& object)
{
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

} // namespace

QJsonValue textOrNull(const QString& text)
{
    return text.isNull() ? QJsonValue() : QJsonValue(text);
}

void JsonWriter::beginObject(const QJsonObject& members, const char* name)
{
    beginEntry(name);
    QByteArray text = compact(members);
    text.chop(1); // the brace, which comes with endObject()
    m_text += text;
    m_isFirst = members.isEmpty();
    ++m_depth;
}

void JsonWriter::endObject()
{
    --m_depth;
    m_text += '}';
    m_isFirst = false;
}

void JsonWriter::beginList(const char* name)
{
    beginEntry(name);
    m_text += '[';
    m_isFirst = true;
    ++m_depth;
}

void JsonWriter::endList()
{
    --m_depth;
    m_text += ']';
    m_isFirst = false;
}

void JsonWriter::add(const QJsonObject& entry)
{
    beginEntry(nullptr);
    m_text += compact(entry);
}

QByteArray JsonWriter::text() const
{
    return m_text + '\n';
}

// Entries of a list, which have no name, stand on lines of their own.
void JsonWriter::beginEntry(const char* name)
{
    if (!m_isFirst)
        m_text += ',';
    m_isFirst = false;
    if (name) {
        m_text += '"' + QByteArray(name) + "\":";
    } else if (m_depth > 0) {
        m_text += '\n';
        m_text.append(m_depth * Indent, ' ');
    }
}
