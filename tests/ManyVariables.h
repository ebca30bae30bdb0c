#pragma once

#include "ExportRun.h"

#include <QByteArray>

constexpr int ManyVariables = 6000;

// A dictionary of 60 records of 100 variables, V0 to V5999, with labels in six languages; each
// other variable has values.
inline QByteArray manyVariables()
{
    QByteArray dictionary = dictionaryStart();
    dictionary.insert(dictionary.indexOf("[Level]"),
        "[Languages]\nEN=English\nFR=Fran\u00e7ais\nES=Espa\u00f1ol\nPT=Portugu\u00eas\nAR=Arabic\n"
        "AM=Amharic\n\n");
    for (int i = 0; i < ManyVariables; ++i) {
        const QByteArray number = QByteArray::number(i);
        if (i % 100 == 0)
            dictionary += record("R" + number, number, 100000);
        const QByteArray label = "Question on goods " + number + "|Question sur biens " + number
            + "|Pregunta de bienes " + number + "|Pergunta de bens " + number
            + "|\u0633\u0624\u0627\u0644 " + number + "|\u1325\u12eb\u1244 " + number;
        dictionary += "[Item]\nLabel=" + label + "\nName=V" + number
            + "\nStart=" + QByteArray::number(11 + i % 100) + "\nLen=1\n\n";
        if (i % 2 == 0) {
            dictionary += "[ValueSet]\nLabel=Answer\nName=V" + number
                + "_VS1\nValue=1;Yes|Oui\nValue=2;No|Non\nValue=" + QByteArray::number(3 + i % 40)
                + ";Other|Autre\n\n";
        }
    }
    return dictionary;
}
