#pragma once

#include <QByteArray>
#include <QStringList>

/*! One line of a CSV file in UTF-8, quoted where needed, with its CR LF. */
QByteArray csvLine(const QStringList& cells);
