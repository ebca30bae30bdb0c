#pragma once

#include <QString>
#include <QStringList>

/*! Writes the texts of a dictionary into a page, in each of its languages. */
class HtmlTexts {
public:
    /*!
     * \param tags of the languages; empty when there is only one
     * \param page takes what is written
     */
    HtmlTexts(const QStringList& tags, QString& page)
        : m_tags(tags)
        , m_page(page)
    {
    }

    /*!
     * The first language's text, and each other that differs from it, as elements of their own.
     * \param start of an element, up to its attributes; empty: one only where there are languages
     * \param end of it; empty where HTML needs none
     */
    void write(const char* start, const QStringList& texts, const char* end);

    /*! A label behind a name; nothing when there is none. */
    void writeLabel(const QStringList& texts);

private:
    QStringList m_tags;
    QString& m_page;
};
