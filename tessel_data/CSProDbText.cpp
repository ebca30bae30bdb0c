#include <tessel_data/CSProDbText_p.h>

#include <algorithm>

namespace tessel {

CSProDbText::CSProDbText(CSProDbRun& run, const DataDictionary& ofFile)
    : m_run(run)
    , m_comparison(run.dictionary, ofFile)
    , m_parser(run.dictionary)
{
    m_parser.setCasesGiven(true);
}

void CSProDbText::readCase(const SqliteQuery& caseRow, std::string_view key)
{
    m_parser.beginCase(m_run.caseNumber);
    m_key = key;
    m_isDifferenceTold = false;
    std::string_view text = caseRow.text(Questionnaire);
    while (!text.empty() && m_run.isWanted) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        std::string_view line = text.substr(0, end);
        text.remove_prefix(std::min(end + 1, text.size()));
        if (!line.empty() && line.back() == '\r')
            line.remove_suffix(1);
        readLine(line);
    }
}

void CSProDbText::readLine(std::string_view line)
{
    SourceCounts& counts = m_run.counts();
    ++counts.lines;
    const RecordParser::Outcome outcome = m_parser.parse(line, m_run.row, 0, m_run.batch());
    countLine(outcome, counts);
    if (outcome == RecordParser::Outcome::Record)
        compareKey();
}

void CSProDbText::compareKey()
{
    const DataBatch& batch = m_run.sink->batch();
    const quint32 firstCell = batch.records.back().firstCell;
    if (m_isDifferenceTold || !m_comparison.differs(m_key, batch, firstCell))
        return;
    m_isDifferenceTold = true;
    m_run.tell(m_run.told(LineProblem::KeyDiffers), m_comparison.idsText(batch, firstCell));
}

} // namespace tessel
