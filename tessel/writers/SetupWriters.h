#pragma once

#include "writers/SetupPlan.h"

#include <QByteArray>

/*!
 * Programs that read the text data of a dictionary as they are, a record type at a time. Nothing of
 * a label, and no name, becomes part of what they do.
 */

/*! A do-file. */
QByteArray writeStataDo(const SetupPlan& plan);

/*! Command syntax of SPSS, which PSPP carries out as well. */
QByteArray writeSpssSyntax(const SetupPlan& plan);

/*! A SAS program. */
QByteArray writeSas(const SetupPlan& plan);

/*! A script for R with the package readr. */
QByteArray writeRScript(const SetupPlan& plan);
