#pragma once

#include <QStringList>

/*!
 * Runs "tessel tree": prints the tree of entities and variables of a dictionary.
 * \return exit status of the program
 */
int runTree(const QStringList& arguments);
