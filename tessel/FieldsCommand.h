#pragma once

#include <QStringList>

/*!
 * Runs "tessel fields": lists the fields of dictionaries.
 * \param arguments the command's name as a user types it, then what follows it
 * \returns an ExitStatus
 */
int runFields(const QStringList& arguments);
