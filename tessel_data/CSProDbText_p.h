#pragma once

#include <tessel_data/CSProDbKey_p.h>
#include <tessel_data/CSProDbRun_p.h>
#include <tessel_data/RecordParser_p.h>

namespace tessel {

// Schema 2: a case is text, its lines are those of a text file.
class CSProDbText : public CSProDbCases {
public:
    CSProDbText(CSProDbRun& run, const DataDictionary& ofFile);

    void readCase(const SqliteQuery& caseRow, std::string_view key) override;

private:
    void readLine(std::string_view line);
    void compareKey();

    CSProDbRun& m_run;
    CSProDbKey m_comparison;
    RecordParser m_parser;
    std::string m_key;
    bool m_isDifferenceTold = false; // once for each case
};

} // namespace tessel
