#pragma once

#include <QStringList>

/*!
 * BCP 47 tags, each different, of the languages that a dictionary calls \a names and \a labels: by
 * the label, in English or the language's own words, else by a name of two letters, which is a code
 * more often than not. A language that is not known by these is "und-x-" and its name.
 */
QStringList languageTags(const QStringList& names, const QStringList& labels);
