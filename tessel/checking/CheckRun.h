#pragma once

#include "checking/DataInput.h"

#include <tessel_data/CheckReport.h>

#include <memory>

class ProblemFile;

/*! What a check found, with the source that it read. */
struct CheckOutcome {
    std::unique_ptr<tessel::DataSource> source;
    tessel::CheckReport report;
    bool isStrict = false;

    bool isClean() const
    {
        return report.isClean(isStrict);
    }
};

/*!
 * Reads the source of \a outcome and checks it. Every problem goes to \a problems, which may be
 * null. How far it is is shown on a terminal. False, and told, when the source cannot be read to
 * its end.
 */
bool checkData(CheckOutcome& outcome, ProblemFile* problems);
