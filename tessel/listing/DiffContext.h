#pragma once

#include "listing/Listing.h"

/*! What two dictionaries have in common, which tells what can be compared. */
struct DiffContext {
    DiffContext(const Listing& before, const Listing& after)
        : hadRecords(before.hasRecords())
        , hasRecords(after.hasRecords())
        , isSameKind(before.kind == after.kind)
        , haveFormats((before.kind == ListingKind::Stata) == (after.kind == ListingKind::Stata))
    {
    }

    /*! Both. */
    bool haveRecords() const
    {
        return hadRecords && hasRecords;
    }

    bool hadRecords;
    bool hasRecords;
    bool isSameKind;
    bool haveFormats; /*!< widths of numbers mean the same in both */
};
