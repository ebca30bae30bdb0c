#pragma once

#include <tessel_data/ConversionTarget.h>
#include <tessel_data/CsvBytes_p.h>
#include <tessel_data/CsvCodes_p.h>
#include <tessel_data/DataDictionary.h>

#include <QSet>

#include <memory>
#include <string>
#include <vector>

namespace tessel {

/* The labels of a value set as cells, which stand in place of its codes. */
struct CsvLabels {
    // Cells are made as csv has them.
    CsvLabels(const CsvCodes& codes, CodeTable codeTable, const CsvBytes& csv);

    // The cell of a code; null: the code stays.
    const std::string* cell(const CodeTable::Match& match) const
    {
        return match.isCode && !cells[std::size_t(match.entry)].empty()
            ? &cells[std::size_t(match.entry)]
            : nullptr;
    }
    CodeTable table;
    std::vector<std::string> cells; // by code of the set
    QSet<QString> readable; // labels that read like values
    static constexpr int KindsOfMissing = 26;
    std::string missing[KindsOfMissing]; // of the kinds 'a' to 'z'
};

/* Writes the values of a column, and keeps what they say of it. */
class CsvColumn {
public:
    // variable: null for a column that is no value; labels: null for codes.
    CsvColumn(const ConversionColumn& column, const DataVariable* variable,
        std::shared_ptr<const CsvLabels> labels);

    // Number of the row and occurrence stand in columns of their own.
    ConversionColumn::Role role() const
    {
        return m_role;
    }
    // Index among the records that a row is made of.
    int source() const
    {
        return m_source;
    }

    void add(CsvBytes& out, const DataBatch& batch, quint32 cell, ConversionCounts& counts)
    {
        const ValueState state = batch.states[cell];
        if (state == ValueState(ValueKind::Number) && !m_labels)
            return out.addNumber(batch.numbers[cell], m_decimals);
        m_hasOthers |= state.isOutside();
        m_hasSpecials |= state.special() != Special::None;
        if (state.kind() == ValueKind::Blank && state.special() != Special::Missing && !m_labels)
            return addNothing(out);
        addRare(out, batch, cell, counts);
    }
    void addNothing(CsvBytes& out)
    {
        m_hasBlanks = true;
        out.addNothing();
    }

    // No value was blank, or missing by its code.
    bool isComplete() const
    {
        return !m_hasBlanks && !m_hasSpecials;
    }
    // A value was none of the codes.
    bool hasOthers() const
    {
        return m_hasOthers;
    }
    // Characters of the longest text.
    qint64 longest() const
    {
        return m_longest;
    }

private:
    void addRare(CsvBytes& out, const DataBatch& batch, quint32 cell, ConversionCounts& counts);
    void addText(CsvBytes& out, std::string_view text, ConversionCounts& counts);
    void addBlank(CsvBytes& out, char missingKind);
    bool addLabel(CsvBytes& out, const CodeTable::Match& match);
    void countLikeLabel(const QString& cell, ConversionCounts& counts);

    ConversionColumn::Role m_role;
    int m_source;
    int m_decimals;
    std::shared_ptr<const CsvLabels> m_labels;
    bool m_hasBlanks = false;
    bool m_hasSpecials = false;
    bool m_hasOthers = false;
    qint64 m_longest = 0;
};

/* The decimal number that a text of more digits than fit stands for; empty: it is none. */
std::string decimalText(std::string_view text, int decimals);

} // namespace tessel
