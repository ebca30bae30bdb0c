#pragma once

#include <model_Tessel/StatDictionary.h>

#include <QTemporaryFile>

#include <cstddef>
#include <cstdint>

// Reads bytes as an SPSS or Stata file: its dictionary, how the importer's passes end, and the
// importer's fields, all from one open file as the command does, and the rest of what it asks.
template <typename Importer> int fuzzStat(const uint8_t* data, size_t size, TStatFileKind kind)
{
    QTemporaryFile file;
    if (!file.open() || file.write(reinterpret_cast<const char*>(data), qint64(size)) < 0)
        return 0;
    file.close();
    TStatInput input;
    input.open(file.fileName());
    const TStatFileDescription description = readStatDescription(input, kind);
    for (const TStatVariableDescription& variable : description.variables) {
        variable.typeName(kind);
        variable.width(kind);
        variable.decimals();
    }
    readStatOutcome(input, kind);
    Importer importer(file.fileName());
    importer.setInput(&input);
    importer.openFile();
    qDeleteAll(*importer.fields);
    delete importer.fields;
    return 0;
}
