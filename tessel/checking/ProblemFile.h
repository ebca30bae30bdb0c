#pragma once

#include "checking/ProblemTexts.h"
#include "process/Output.h"
#include "text/CsvText.h"
#include "text/JsonWriter.h"

#include <QString>

/*!
 * The file that all problems of a check go to, as CSV or JSON by its name's end: written while the
 * check goes on, and there whole or not at all.
 */
class ProblemFile {
public:
    ProblemFile(const QString& path, bool forSpreadsheet);

    /*! True when the name ends in .csv or .json. */
    static bool isName(const QString& path);
    static bool isCsvName(const QString& path);

    void add(const ShownProblem& problem);
    /*! Puts the file in its place. False, and told, when any of it could not be written. */
    bool finish();

private:
    void addCsv(const ShownProblem& problem);

    bool m_isCsv;
    Output m_output;
    CsvWriter m_csv;
    JsonWriter m_json;
};
