#pragma once

#include "checking/DataInput.h"

#include <QCommandLineOption>

class QCommandLineParser;

/*! What commands that read data into something else have in common. */

/*! --dictionary, of a CSPro DB. */
const QCommandLineOption& dictionaryOption();

/*! --save-config, of the settings. */
const QCommandLineOption& saveConfigOption();

/*! The sources, as they stand on the command line. */
void addSourceArgument(QCommandLineParser& parser);

/*! Reads the sources and how they are read, over what \a input says already. What is wrong, or
 * null. */
QString readSource(const QCommandLineParser& parser, DataInput& input);

/*! Reads --save-config into \a path, which may be none of \a others. What is wrong, or null. */
QString readSaveConfig(const QCommandLineParser& parser, const QStringList& others, QString& path);
