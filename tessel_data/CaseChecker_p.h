#pragma once

#include <tessel_data/CaseIndex_p.h>
#include <tessel_data/CheckReport.h>
#include <tessel_data/DataDictionary.h>

#include <functional>
#include <map>
#include <string>
#include <vector>

namespace tessel {

/*
 * Checks the shape of cases: records that are missing or too many, levels without their parent,
 * cases that come again.
 */
class CaseChecker {
public:
    using Tell = std::function<void(const DataProblem&)>;

    CaseChecker(const DataDictionary& dictionary, Tell tell);

    void beginCase(const DataBatch& batch, const DataBatch::Case& begun);
    void addRecord(const DataBatch& batch, const DataBatch::Record& record);
    void endCase();
    // Tells of the cases that came more than once.
    // False when goesOn stopped it.
    bool finish(const CaseIndex::GoesOn& goesOn);

    // Identification of the current case.
    const std::string& key() const
    {
        return m_key;
    }
    qint64 caseCount() const
    {
        return m_caseCount;
    }

private:
    // One questionnaire of a level: the case itself is that of level 1.
    struct Node {
        std::string parent;
        qint64 line = 0;
        int level = 1;
        int record = 0; // of its first line
        bool hasRow = false; // of its own, in a database, even without a record of its level
        qint64 touched = 0; // when it was last looked for
        std::map<int, qint64> counts; // by record
    };
    using Nodes = std::map<std::string, Node>;

    DataProblem problem(ProblemKind kind, qint64 line, int record) const;
    void addDeeperRecord(const DataBatch& batch, const DataBatch::Record& record);
    Node& nodeOf(const DataBatch& batch, const DataBatch::Record& record, int level);
    void touchParents(const DataBatch& batch, const DataBatch::Record& record, int level);
    void closeNode(const Node& node);
    void closeOldNodes();
    void countRecord(std::map<int, qint64>& counts, const DataBatch::Record& record);
    void tellMissing(const std::map<int, qint64>& counts, int level, qint64 line);
    std::string nodeKey(const DataBatch& batch, const DataBatch::Record& record, int level) const;
    bool isRequired(int level) const;
    quint64 singles() const;

    const DataDictionary& m_dictionary;
    Tell m_tell;
    CaseIndex m_index;
    qint64 m_caseCount = 0;
    bool m_isInCase = false;
    bool m_isPartlySaved = false;
    bool m_hasRows = false; // cases are rows of a database
    std::string m_key;
    int m_file = 0;
    qint64 m_line = 0;
    std::map<int, qint64> m_counts; // of level 1
    Nodes m_nodes; // of the levels below, by their identification
    qint64 m_touches = 0;
    bool m_identifiesCases = false;
};

} // namespace tessel
