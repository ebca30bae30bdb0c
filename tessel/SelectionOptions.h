#pragma once

#include "checking/SelectedInput.h"

#include <QCommandLineOption>
#include <QList>

class QCommandLineParser;

/*! --records, --variables, --where, --sample, --seed and --every. */
QList<QCommandLineOption> selectionOptions();

/*!
 * Reads them into \a request, over what it says already. Null when they make sense, else what is
 * wrong.
 */
QString readSelectionOptions(const QCommandLineParser& parser, SelectionRequest& request);
