#pragma once

#include <QStringList>

/*!
 * Runs "tessel diff": tells what differs between two dictionaries.
 * \param arguments the command's name as a user types it, then what follows it
 * \returns 0 when they are equal, 1 when they differ, 2 when that cannot be told
 */
int runDiff(const QStringList& arguments);
