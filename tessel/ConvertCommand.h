#pragma once

#include <QStringList>

/*! tessel convert: data for Stata, SPSS, R and spreadsheets. */
int runConvert(const QStringList& arguments);
