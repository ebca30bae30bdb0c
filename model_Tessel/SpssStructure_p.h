#pragma once

#include <QByteArray>
#include <QVector>

class TStatInput;

// True when every record of an SPSS file's dictionary is whole and of a known kind, and the file
// has the rows that it tells of, where they are not compressed.
bool isSoundSpssFile(TStatInput& input);

// A text that an SPSS file's dictionary has besides variables and labels.
struct SpssExtension {
    enum Kind {
        VariableSets = 5,
        ResponseSets = 7,
        FileAttributes = 17,
        VariableAttributes = 18,
        FurtherResponseSets = 19
    };

    int kind = 0;
    QByteArray text;
};

// Those of the kinds above, in the order of the file, before any damage.
QVector<SpssExtension> spssExtensions(TStatInput& input);

// A name with one or several values, of a variable or of the file itself.
struct SpssAttribute {
    QByteArray owner; // empty: the file
    QByteArray name;
    QByteArray value; // the first one
};

// What the text of attributes says; none of another kind.
QVector<SpssAttribute> spssAttributes(const SpssExtension& extension);

// The names of the sets in the text of response sets; none of another kind.
QVector<QByteArray> spssResponseSets(const SpssExtension& extension);

// The same of sets of variables.
QVector<QByteArray> spssVariableSets(const SpssExtension& extension);
