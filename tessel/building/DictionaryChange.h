#pragma once

#include <QByteArray>
#include <QStringList>

/*!
 * What keeps data of the dictionary \a after out of a database that was made with the dictionary
 * \a before, a line for each. The columns that values stand in do not matter there, so new
 * variables may stand anywhere. Both are texts of CSPro dictionaries.
 */
QStringList changesThatBreak(const QByteArray& before, const QByteArray& after);
