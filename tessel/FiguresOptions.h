#pragma once

#include "figures/FiguresRun.h"

#include <QCommandLineOption>
#include <QList>

class QCommandLineParser;

/*! --weight, --cross, --occurrences and --suppress. */
QList<QCommandLineOption> figuresOptions();

/*! True when one of them is given. */
bool hasFiguresOption(const QCommandLineParser& parser);

/*! Reads them into \a request. Null when they make sense, else what is wrong. */
QString readFiguresOptions(const QCommandLineParser& parser, FiguresRequest& request);
