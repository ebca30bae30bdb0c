#pragma once

#include "writers/FieldWriters.h"

#include <QCommandLineOption>

class QCommandLineParser;

/*! --format, of the commands that list as a table, CSV or JSON. */
const QCommandLineOption& listFormatOption();

/*! Null when the format is one of them, else what is wrong with it. */
QString readListFormat(const QCommandLineParser& parser, ListingFormat::Kind& kind);

/*!
 * Reads it with --spreadsheet and sets the width of tables, for commands that write CSV by this
 * option alone. Null when it makes sense, else what is wrong.
 */
QString readListOptions(const QCommandLineParser& parser, ListingFormat& format);

/*! --format, of the commands that write a text or JSON; \a verb is what they do, for example
 * "print". */
QCommandLineOption textFormatOption(const QString& verb);

/*! Null when the format is text or JSON, else what is wrong with it. */
QString readTextFormat(const QCommandLineParser& parser, bool& asJson);
