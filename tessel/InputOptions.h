#pragma once

#include "DictionaryFile.h"
#include "FieldListing.h"
#include "InputFile.h"

#include <QCommandLineOption>
#include <QList>

class QCommandLineParser;

/*! How files are read, the same in every command that reads dictionaries. */
struct InputOptions {
    FileKind kind = FileKind::Unknown; /*!< Unknown: as the content says */
    DictionaryOptions dictionary;
};

/*! The command-line options for it: --type, --rules, --language, --decimals and --encoding. */
QList<QCommandLineOption> inputOptions();

/*! Null when the options make sense, else what is wrong with them. */
QString readInputOptions(const QCommandLineParser& parser, InputOptions& options);

/*! Reads the name of an encoding that \a option gives. Null when it makes sense, else what is
 * wrong. */
QString readEncoding(
    const QCommandLineParser& parser, const QCommandLineOption& option, QByteArray& encoding);

/*! The kind of the file \a path. Options that are not for this kind are told. */
FileKind kindOfInput(const QString& path, const InputOptions& options);

/*!
 * Lists the fields of the file \a path, whatever kind it is. False, and told on standard error,
 * when it cannot be read; Listing::isPartial when something of it cannot.
 */
bool readListing(const QString& path, const InputOptions& options, Listing& listing);
