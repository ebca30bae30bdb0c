#pragma once

#include <tessel_data/DataSelection.h>
#include <tessel_data/DataSource.h>

#include <memory>

/*! What is to be taken of data, before their dictionary is known. */
struct SelectionRequest {
    tessel::DataSelection selection;
    QStringList records; /*!< in place of those of the selection; empty: as there */
    QStringList variables; /*!< as above */
    bool hasSeed = false; /*!< that of the selection was said */
};

/*!
 * The part of \a source that \a request wants, whose selection then says all of it. Null, with what
 * is wrong in \a mistake, when the data have no such part.
 */
std::unique_ptr<tessel::DataSource> selectedData(
    std::unique_ptr<tessel::DataSource> source, SelectionRequest& request, QString& mistake);
