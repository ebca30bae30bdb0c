#pragma once

#include "reading/ReadListing.h"

#include <QCommandLineOption>
#include <QList>

class QCommandLineParser;

/*! The command-line options for reading: --type, --rules, --language, --decimals and --encoding. */
QList<QCommandLineOption> inputOptions();

/*! Two of them, --language and --encoding, for commands that always read as written. */
QList<QCommandLineOption> dictionaryTextOptions();

/*! Null when the options make sense, else what is wrong with them. */
QString readInputOptions(const QCommandLineParser& parser, InputOptions& options);

/*! Reads what dictionaryTextOptions() give, over what \a options say already, likewise. */
QString readDictionaryTextOptions(const QCommandLineParser& parser, DictionaryOptions& options);

/*! --data-encoding, of text data without a byte-order mark. */
const QCommandLineOption& dataEncodingOption();

/*! Reads it into \a encoding, which stays when it is not given. Null when it makes sense, else what
 * is wrong. */
QString readDataEncoding(const QCommandLineParser& parser, QString& encoding);

/*!
 * Reads the name of an encoding that \a option gives, over what \a encoding says already. Null when
 * it makes sense, else what is wrong.
 */
QString readEncoding(
    const QCommandLineParser& parser, const QCommandLineOption& option, QByteArray& encoding);
