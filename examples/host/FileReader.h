#pragma once

#include <model_Tessel/DictionaryBuilder.h>

#include <QHash>
#include <QString>

#include <functional>

class TOxVariable;

/*!
 * What the codes of a variable are besides their labels, by the number of the value label: empty
 * for an ordinary one, else for example "missing".
 */
using CodeKinds = QHash<const TOxVariable*, std::function<QString(int label)>>;

/*! What became of reading a file; either may stand alone, or both. */
struct ReadFile {
    DictionaryPointer dictionary; /*!< null when there is nothing to show */
    QString problem; /*!< what the user must know; empty when all went well */
    int passedOver = 0; /*!< places of the dictionary that were not read as written */
    CodeKinds kinds; /*!< of the variables that have codes */
};

/*!
 * Reads the dictionary of \a path; what kind of file it is, its content tells.
 *
 * \param asWritten a CSPro dictionary is read as it says, and not by the established rules, which
 * may ask the user
 */
ReadFile readFile(const QString& path, bool asWritten);
