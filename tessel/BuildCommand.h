#pragma once

#include <QStringList>

/*!
 * Runs "tessel build": makes a database of data and their dictionary.
 * \param arguments the command's name as a user types it, then what follows it
 * \returns an ExitStatus
 */
int runBuild(const QStringList& arguments);
