#pragma once

#include "listing/Listing.h"

#include <QByteArray>
#include <QVector>

/*! True when the file \a path is a document of DDI-Codebook, as 'tessel export' writes. */
bool isDdiFile(const QString& path);

/*!
 * The dictionary that the document \a path describes, in each of its languages, the first one
 * first; in \a language alone, a tag, unless that is empty. False, and told, when it cannot be
 * read.
 */
bool listDdi(const QString& path, const QString& language, QVector<Listing>& languages);
