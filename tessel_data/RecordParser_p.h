#pragma once

#include <tessel_data/DataBatch.h>
#include <tessel_data/DataDictionary.h>
#include <tessel_data/LineText_p.h>
#include <tessel_data/NumberWord_p.h>

#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace tessel {

// The rule for identification items, of lines and rows alike: a record has no place when one of
// them is no number; a blank one may be.
inline bool isUnreadable(ValueState id)
{
    return id.kind() == ValueKind::NotANumber || id.kind() == ValueKind::Unfit;
}

// Column of the first identification item that is unreadable; -1: none.
int unreadableId(const DataBatch& batch, quint32 firstCell, int idCount);

/*
 * Turns lines of CSPro text into records: finds the record type, cuts the columns, reads the
 * values, and tells where a case begins.
 */
class RecordParser {
public:
    enum class Outcome { Record, Deleted, Blank, Rejected };

    explicit RecordParser(const DataDictionary& dictionary);

    // Adds the line to the batch, as a record or as what is told of it.
    Outcome parse(std::string_view line, qint64 number, int file, DataBatch& batch);
    // The next record begins a case whatever its identification is. An encoding that is known of
    // the file holds for all its lines; else the first line that is not ASCII decides.
    void beginFile(LineEncoding encoding);
    void beginCase(qint64 number);
    // Lines after the first of a case of a database belong to it whatever they say.
    void setCasesGiven(bool areGiven);

    qint64 caseCount() const
    {
        return m_caseNumber + 1;
    }
    // Of the lines since beginFile().
    LineEncoding encoding() const
    {
        return m_encoding;
    }
    // How many of them hold a carriage return.
    qint64 linesWithCr() const
    {
        return m_linesWithCr;
    }

private:
    // A column of a record, with what reading it needs.
    struct Column {
        int start;
        int width;
        DataVariable::Type type;
        int decimals;
        int variable;
        const CodeTable* codes;
        ValueState blank;
        NumberWord word; // of short numbers
        std::vector<ValueState> digits; // of numbers of one digit: by character
    };
    struct Plan {
        std::vector<Column> columns;
        int idCount = 0;
        int width = 0;
        int firstIdsEnd = 0; // where the numbers of its identification end
    };

    // An identification item of the record before.
    struct Id {
        ValueState state;
        qint64 number = 0;
    };

    // Bytes of a line.
    struct Part {
        std::size_t begin;
        std::size_t end;
    };

    void decode(std::string_view line);
    int recordOf() const;
    bool isAcceptable(const Plan& plan, DataBatch& batch, const DataBatch::Told& told);
    Outcome reject(LineProblem problem, DataBatch& batch, DataBatch::Told told);
    TextRef readableKey(DataBatch& batch, quint32 line);
    void readColumns(const Plan& plan, DataBatch& batch, quint32 line);
    static void makeQuick(Column& column);
    static bool readWord(
        const Column& column, std::string_view line, ValueState& state, qint64& number);
    static bool readDigit(
        const Column& column, std::string_view line, ValueState& state, qint64& number);
    void readColumn(const Column& column, DataBatch& batch, quint32 cell, quint32 line);
    void readText(
        const Column& column, std::string_view text, DataBatch& batch, quint32 cell, quint32 line);
    bool continuesCase(const Plan& plan, const DataBatch& batch, quint32 firstCell);
    bool hasSameIds(const DataBatch& batch, quint32 firstCell) const;
    void makeKey(const Plan& plan, const DataBatch& batch, quint32 firstCell);
    void tellOddities(const Plan& plan, DataBatch& batch, DataBatch::Told told);
    void tellEncoding(const Plan* plan, DataBatch& batch, const DataBatch::Told& told);
    void tellPart(
        LineProblem problem, Part part, const Plan* plan, DataBatch& batch, DataBatch::Told told);
    static Part partOf(std::string_view text, bool (*isKind)(char));
    static const Column* itemAt(const Plan& plan, int place);

    const DataDictionary& m_dictionary;
    std::vector<Plan> m_plans;
    std::vector<int> m_types; // record of a type code of one character; -1: none
    std::unordered_map<std::string, int> m_longTypes;
    LineText m_line;
    std::vector<Id> m_ids; // of the first level
    std::string m_key; // the same, written
    std::string m_nextKey;
    int m_firstLevelIds = 0;
    qint64 m_caseNumber = -1;
    bool m_isInCase = false;
    bool m_areCasesGiven = false;
    LineEncoding m_encoding = LineEncoding::Unknown;
    bool m_isEncodingStated = false;
    qint64 m_linesWithCr = 0;
};

// Adds to the counts what became of a line, but for the line itself.
void countLine(RecordParser::Outcome outcome, SourceCounts& counts);

} // namespace tessel
