#pragma once

#include "lookups/LookupCheck.h"

#include <QByteArray>

class ReportLookup;

/*!
 * A page of its own, without scripts and without anything from elsewhere, that shows the outcome
 * under the captions and identification of \a report. It is well-formed XML, and no text of the
 * lookup is markup in it.
 */
QByteArray lookupPage(const ReportLookup& report, const LookupOutcome& outcome);
