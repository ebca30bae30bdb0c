#pragma once

#include <tessel_data/DataBatch.h>
#include <tessel_data/DataDictionary.h>

#include <vector>

namespace tessel {

/*
 * A number that tells the content of a case: another one as good as always where a value, the order
 * of the records of a type, or the partial save is another. What is blank has no part in it, so
 * that new variables without values leave it as it is; nor has the order of record types, which
 * kinds of sources choose themselves.
 */
class CaseContent {
public:
    explicit CaseContent(const DataDictionary& dictionary);

    // key: tells cases without records apart.
    void begin(bool isPartlySaved, std::string_view key);
    // number: of the record among those of its type in the case.
    void add(const DataBatch& batch, const DataBatch::Record& record, qint64 number);
    qint64 value() const;

private:
    const DataDictionary& m_dictionary;
    std::vector<quint64> m_records; // by record
    std::vector<quint64> m_columns; // by column of all records
    std::vector<int> m_decimals; // the same
    quint64 m_start = 0;
    quint64 m_key = 0;
    quint64 m_sum = 0;
    bool m_hasRecords = false;
};

} // namespace tessel
