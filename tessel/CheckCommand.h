#pragma once

#include <QStringList>

/*!
 * Runs "tessel check": checks data against their dictionary.
 * \param arguments the command's name as a user types it, then what follows it
 * \returns an ExitStatus; InputFailed also when something is wrong with the data
 */
int runCheck(const QStringList& arguments);
