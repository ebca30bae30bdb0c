#pragma once

#include <QTemporaryFile>
#include <QtGlobal>

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace tessel {

/*
 * Finds the cases that come more than once, in bounded memory: what does not fit is sorted and
 * kept in a temporary file, and all is merged at the end.
 */
class CaseIndex {
public:
    struct Place {
        qint64 line = 0;
        qint64 number = 0; // of the case
        quint64 singles = 0; // records that a case may have once, a bit for each that is there
        int file = 0;
    };
    struct Group {
        std::string_view key; // its end is cut off when it is long
        Place first; // its singles are those of all places before the second
        Place second;
    };
    using Report = std::function<void(const Group&)>;
    using GoesOn = std::function<bool()>;

    // keySize: bytes of most keys, longer ones cost a digest; memory: bytes to use.
    explicit CaseIndex(std::size_t keySize, std::size_t memory = 16'777'216);
    ~CaseIndex();

    void add(std::string_view key, const Place& place);
    // Reports each place after the first of its key, by key and then in the order of the source.
    // False when goesOn, which may be empty, stopped it.
    bool finish(const Report& report, const GoesOn& goesOn = {});

private:
    Q_DISABLE_COPY(CaseIndex)

    class Run;

    void write(char* entry, std::string_view key, const Place& place) const;
    std::string_view shownKey(std::string_view entry) const;
    Place placeOf(const char* entry) const;
    void sortEntries();
    void spill();

    std::size_t m_mostKey; // bytes of a key that an entry holds whole
    std::size_t m_keySize; // bytes of an entry that tell keys apart
    std::size_t m_entrySize;
    std::size_t m_mostEntries;
    std::vector<char> m_entries;
    std::unique_ptr<QTemporaryFile> m_file;
    std::vector<qint64> m_runSizes; // entries of each sorted run in the file
};

} // namespace tessel
