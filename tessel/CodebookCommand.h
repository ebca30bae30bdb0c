#pragma once

#include <QStringList>

/*!
 * Runs "tessel codebook": makes a page to read of dictionaries.
 * \param arguments the command's name as a user types it, then what follows it
 * \returns an ExitStatus
 */
int runCodebook(const QStringList& arguments);
