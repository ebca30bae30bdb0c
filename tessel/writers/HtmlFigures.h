#pragma once

#include "listing/DataFigures.h"
#include "writers/HtmlTexts.h"

#include <QString>

/*! Writes the figures of data into the page of their dictionary. Hidden ones are told as such. */
class HtmlFigures {
public:
    /*!
     * \param languages number of those of the dictionary that the page has
     * \param page takes the text of each function
     */
    HtmlFigures(const DataFigures& figures, int languages, const HtmlTexts& texts, QString& page);

    /*! True when there are figures of \a field. */
    bool has(const ListedField& field) const
    {
        return m_fields.of(field) != nullptr;
    }

    /*! How many rows of the record \a name there are; null: the only one. */
    void writeRows(const QString& name);
    /*! Frequencies, numbers and a histogram of \a field with all its occurrences. */
    void writeField(const ListedField& field);
    /*! A section with the cross tables; nothing when there are none. */
    void writeCrosses();
    /*! What the figures were made of, in pieces of a sentence. */
    QStringList facts() const;

private:
    void writeSet(const tessel::VariableStatistics& variable, std::size_t index);
    void writeHead(bool isWeighted);
    void writeCodes(
        const tessel::VariableStatistics& variable, const tessel::StatisticsValueSet& valueSet);
    void writeKinds(const tessel::VariableStatistics& variable);
    void writeCells(const tessel::VariableStatistics& variable, const tessel::StatisticsCell& cell);
    void writeKind(const tessel::VariableStatistics& variable, const QString& name,
        const tessel::StatisticsCell& cell);
    void writeOutside(const tessel::VariableStatistics& variable);
    void writeNumbers(const tessel::VariableStatistics& variable);
    void writeHistogram(const tessel::VariableStatistics& variable);
    void writeCross(const tessel::CrossTable& cross);
    void writeCrossLine(const tessel::CrossTable& cross, int line);
    void writeCategory(int valueSet, int code, const char* element);
    QStringList labelsOf(const tessel::DataCode& code) const;
    QString nameOf(int variable) const;

    const tessel::DataDictionary& m_dictionary;
    const tessel::StatisticsReport& m_report;
    FieldFigures m_fields;
    int m_languages;
    HtmlTexts m_texts;
    QString& m_page;
};
