#pragma once

#include <tessel_data/ConversionPlan.h>
#include <tessel_data/StatNames.h>

#include <QString>

namespace tessel {

/* How much the files of a format take; a limit of 0: any number. */
struct ConversionLimits {
    const char* ending;
    StatProgram program; // whose names and labels they have
    StatLimit fileLabel;
    int noteBytes; // of a note, or of a line of it
    bool hasNoteLines;
    int notes; // of a file
    int textBytes; // of a value
    int variables;
};

const ConversionLimits& limitsOf(ConversionFormat format);

/* A text as a file takes it, and why it is another one. */
struct FittedText {
    QString text;
    ConversionNote::Reason reason = ConversionNote::Reason::None;
};
FittedText fitted(const QString& text, StatLimit limit);

/* text with pictures in place of null characters, which end every text of a file. */
QString withoutNulls(QString text);

} // namespace tessel
