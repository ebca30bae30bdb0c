#pragma once

#include "checking/DataInput.h"
#include "checking/SelectedInput.h"
#include "listing/DataFigures.h"

#include <tessel_data/DataStatistics.h>

/*! Which figures are wanted of which data. */
struct FiguresRequest {
    DataInput input; /*!< that was checked */
    SelectionRequest selected;
    tessel::StatisticsOptions options;
    qint64 hiddenBelow = 0; /*!< cells of fewer values are hidden; 0: none */
};

/*!
 * Reads the data and makes their figures; an ExitStatus. What they do not count, as it was not read
 * or has no weight, is told.
 */
int makeFigures(FiguresRequest& request, DataFigures& figures);
