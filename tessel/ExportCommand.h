#pragma once

#include <QStringList>

/*!
 * Runs "tessel export": writes a dictionary in the form of another program.
 * \param arguments the command's name as a user types it, then what follows it
 * \returns an ExitStatus
 */
int runExport(const QStringList& arguments);
