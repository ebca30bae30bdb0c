#pragma once

#include <tessel_data/DataDictionary.h>
#include <tessel_data/DataBatch.h>

#include <QString>

#include <functional>

namespace tessel {

/*
 * Puts cases together that begin in one batch and end in a later one: records of a case may follow
 * in any order, so that it is complete only when the next one begins.
 */
class WholeCases {
public:
    // What is done with the records from first to before end, which are one case.
    using Take = std::function<void(const DataBatch& batch, std::size_t first, std::size_t end)>;
    // What is done before the first case of a batch, and behind its last.
    using Frame = std::function<void(const DataBatch& batch)>;

    // tooLarge says what becomes of a case that does not fit the memory; it throws.
    WholeCases(const DataDictionary& dictionary, Take take, std::function<void()> tooLarge,
        Frame before = {}, Frame behind = {});

    void add(const DataBatch& batch);
    // The last case is complete.
    void finish();

private:
    void keep(const DataBatch& batch, const DataBatch::Record& record);
    void frame(const Frame& what, const DataBatch& batch) const;

    const DataDictionary& m_dictionary;
    Take m_take;
    std::function<void()> m_tooLarge;
    Frame m_before;
    Frame m_behind;
    DataBatch m_kept; // records of a case that goes on in the next batch
};

} // namespace tessel
