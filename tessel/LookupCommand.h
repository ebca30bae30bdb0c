#pragma once

#include <QStringList>

/*!
 * Runs "tessel lookup": checks a lookup file.
 * \param arguments the command's name as a user types it, then what follows it
 * \returns an ExitStatus; InputFailed also for a lookup that is not consistent
 */
int runLookup(const QStringList& arguments);
