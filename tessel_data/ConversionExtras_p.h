#pragma once

#include <tessel_data/ConversionPlan.h>

#include <QSet>

namespace tessel {

/*
 * What a source says besides its variables and their labels: notes, the weight of the rows, and
 * what no file takes.
 */
class ConversionExtras {
public:
    ConversionExtras(
        const DataDictionary& dictionary, const ConversionOptions& options, ConversionPlan& plan)
        : m_dictionary(dictionary)
        , m_options(options)
        , m_plan(plan)
    {
    }

    /* The notes that each file has. */
    void addFileNotes();
    /* All of a file whose columns are there. */
    void fill(ConversionFile& file);

private:
    using Kind = ConversionNote::Kind;

    ConversionNote& tell(Kind kind, const QString& text = QString());
    void addNotes(ConversionFile& file);
    void dropSurplus(QStringList& notes, int others);
    bool addNote(QStringList& notes, const QString& note, const QString& name = QString(),
        const QString& owner = QString());
    void addDescribed(ConversionFile& file);
    void setWeight(ConversionFile& file);
    void tellVariable(const ConversionColumn& column);

    const DataDictionary& m_dictionary;
    const ConversionOptions& m_options;
    ConversionPlan& m_plan;
    QString m_file;
    QString m_variable;
    QSet<QString> m_known; // notes of the file with their owners, as occurrences have the same
};

} // namespace tessel
