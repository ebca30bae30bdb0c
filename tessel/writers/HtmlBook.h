#pragma once

#include "writers/Book.h"

#include <QByteArray>
#include <QDate>
#include <QVector>

/*! How a codebook becomes a page. */
struct BookPageOptions {
    bool withScript = true; /*!< folds, search and the choice of a language */
    QDate date {}; /*!< that the page was made on; none: not told */
};

/*! One page of \a books, one book at least, that needs no other file and is whole without script.
 */
QByteArray writeBook(const QVector<Book>& books, const BookPageOptions& options);
