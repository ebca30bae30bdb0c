#pragma once

#include <tessel_data/ConversionPlan.h>

#include <model_Tessel/StatDictionary.h>

#include <QHash>
#include <QPair>
#include <QString>

#include <memory>
#include <vector>

namespace tessel {

/*
 * A text as it stands in a cell, but for quotes: with pictures in place of null characters and, for
 * spreadsheets, an apostrophe before what would run as a formula.
 */
QString csvText(const QString& text, bool forSpreadsheet);

/* A code, or a range, that stands for values no earlier one of its set stands for. */
struct CsvCode {
    int entry = 0; // its place in the set
    QString low; // as a cell has it; empty: blanks
    QString high; // of a range, else null
    qint64 number = 0;
    bool isMissing = false;
    char kind = '\0'; // 'a' to 'z' for a kind of missing values
};

/*
 * What stands in the cells of a variable for the codes of its first value set. A label takes the
 * place of its codes when the cell cannot be taken for one that means something else: no label of
 * missing values and others, and none that reads like a code without a label.
 */
class CsvCodes {
public:
    CsvCodes(const DataDictionary& dictionary, int variable, const CsvForm& form);

    // In the order of the set.
    const std::vector<CsvCode>& codes() const
    {
        return m_codes;
    }
    // Of the set, as the dictionary has it; null: none.
    QString labelOf(const CsvCode& code) const
    {
        return m_labels[std::size_t(code.entry)].text;
    }
    // The label as it stands in place of code; null: the code stays.
    QString labelCell(const CsvCode& code) const
    {
        const Label& label = m_labels[std::size_t(code.entry)];
        return label.isUsed ? label.cell : QString();
    }
    QString cell(const CsvCode& code) const
    {
        return m_labels[std::size_t(code.entry)].isUsed ? labelCell(code) : code.low;
    }
    // True for what would be read as a value of the variable.
    bool isReadable(const QString& cell) const;
    // What is lost by labels, without the names of file and variable.
    const std::vector<ConversionNote>& notes() const
    {
        return m_notes;
    }

private:
    // That of an entry of the set.
    struct Label {
        QString text;
        QString cell;
        QStringList codes; // that it stands for
        bool isSeveral = false; // values, as of a range
        bool isMissing = false;
        bool isUsed = false;
    };

    void addCodes(const DataDictionary& dictionary, const DataVariable& variable);
    void addKinds(const DataValueSet& set);
    void setLabels(const DataDictionary& dictionary, const DataValueSet& set);
    void markMissing(const DataDictionary& dictionary, int variable);
    void dropShared();
    void dropReadable();
    void tellAlike();
    std::vector<std::vector<int>> alike() const;
    int entryOf(const QString& cell) const;
    bool isMissingInFile(const QString& cell) const;
    QString codesOf(const std::vector<int>& entries) const;
    void tell(ConversionNote::Kind kind, const std::vector<int>& entries);

    const CsvForm m_form;
    bool m_hasKinds; // of missing values
    DataVariable::Type m_type;
    int m_decimals;
    CodeTable m_table;
    QVector<TStatMissingRange> m_missing; // of a file of SPSS
    QHash<QString, int> m_texts; // entries of texts and kinds by their cells
    std::vector<CsvCode> m_codes;
    std::vector<Label> m_labels; // by entry of the set
    std::vector<ConversionNote> m_notes;
};

/* The codes of variables, made once for those that share them. */
class CsvCodeSets {
public:
    CsvCodeSets(const DataDictionary& dictionary, const CsvForm& form)
        : m_dictionary(dictionary)
        , m_form(form)
    {
    }

    std::shared_ptr<const CsvCodes> of(int variable);

private:
    const DataDictionary& m_dictionary;
    const CsvForm m_form;
    QHash<QPair<int, int>, std::shared_ptr<const CsvCodes>> m_known;
};

} // namespace tessel
