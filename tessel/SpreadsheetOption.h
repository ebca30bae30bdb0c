#pragma once

#include <QCommandLineOption>

class QCommandLineParser;

/*! --spreadsheet, of every command that writes CSV. */
const QCommandLineOption& spreadsheetOption();

/*!
 * Reads it.
 * \param csv how the command is told to write CSV, for example "--format csv"
 * \return null when it makes sense, else what is wrong with it
 */
QString readSpreadsheetOption(
    const QCommandLineParser& parser, const char* csv, bool writesCsv, bool& forSpreadsheet);
