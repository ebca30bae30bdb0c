#pragma once

#include "text/ByteSink.h"

#include <QByteArray>
#include <QJsonObject>
#include <QJsonValue>
#include <QString>

/*! A null for a null text. */
QJsonValue textOrNull(const QString& text);

/*! Appends \a text as JSON, in quotes, to \a bytes. */
void appendJsonString(QByteArray& bytes, const QString& text);

/*!
 * Writes JSON with one entry of a list on each line. A QJsonDocument of a long list would take many
 * times the memory of its text.
 */
class JsonWriter {
public:
    /*! \param sink takes what is written, piece by piece */
    explicit JsonWriter(const ByteSink& sink);

    /*!
     * Begins an object with \a members, and with further lists and objects until endObject().
     * \param name of the member that it is; null for an entry of a list and for the first object
     */
    void beginObject(const QJsonObject& members, const char* name = nullptr);
    void endObject();
    /*! Begins a list as the member \a name of the object. */
    void beginList(const char* name);
    void endList();
    /*! An entry of the list. */
    void add(const QJsonObject& entry);

    /*! Begins an entry of the list; the caller appends its JSON text, where there are millions. */
    QByteArray& beginText();

    /*! What \a write writes, for addRecorded() to write it as often as wanted. */
    QByteArray recorded(const std::function<void()>& write);
    /*! Writes \a text, recorded as deep and behind as many entries, one or more or none. */
    void addRecorded(const QByteArray& text);

    /*! Ends the text with a line end. */
    void finish();

private:
    void beginEntry(const char* name);
    void put(const QByteArray& text);
    void handOut();

    ByteSink m_sink;
    QByteArray m_text; // not yet handed out, or what is recorded
    bool m_isRecording = false;
    int m_depth = 0;
    bool m_isFirst = true; // entry of a list, or member of an object
};
