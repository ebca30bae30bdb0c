#pragma once

#include <QString>
#include <QStringList>

namespace tessel {

// The names that are most like \a name, at most three; fewer or none when they are too different.
QStringList nearestNames(const QString& name, const QStringList& names);

// "; did you mean A or B?", or, where no name is near, the first ones that there are.
QString nearestNamesText(const QString& name, const QStringList& names);

} // namespace tessel
