#pragma once

// What the targets over CSPro dictionaries share: bytes go through the reader, the importer over it
// and the builder of trees, and what they made is torn down as a host does.
#include <model_Tessel/CSProDataImport.h>
#include <model_Tessel/DataProvider.h>
#include <model_Tessel/DictionaryBuilder.h>
#include <model_Tessel/ErrorManager.h>
#include <model_Tessel/Record.h>
#include <model_Tessel/SourceField.h>

#include <QLoggingCategory>
#include <QTemporaryFile>

#include <cstddef>
#include <cstdint>

inline void buildTree(TCSProDataImport& importer)
{
    TOxDataProvider provider;
    provider.genericGetFieldsFrom(&importer);
    const DictionaryPointer tree(buildDictionary(provider));
    qDeleteAll(*provider.fields);
    delete provider.recordTree->references;
    delete provider.recordTree;
}

inline void tearDown(TCSProDataImport& importer)
{
    releaseModel(*importer.dictionary);
    delete importer.dictionary;
    qDeleteAll(*importer.fields);
    delete importer.fields;
    delete importer.groups;
}

/*! Reads the \a size bytes at \a data as a dictionary and forgets it. */
inline void readDictionary(const uint8_t* data, size_t size, CSProReading reading)
{
    static const bool isQuiet = [] {
        QLoggingCategory::setFilterRules(QStringLiteral("default.debug=false"));
        return true;
    }();
    Q_UNUSED(isQuiet)

    QTemporaryFile file;
    if (!file.open() || file.write(reinterpret_cast<const char*>(data), qint64(size)) < 0)
        return;
    file.close();
    TCSProDataImport importer(file.fileName());
    importer.setReading(reading);
    importer.setDecimalQuestion([](const CSProProblem& problem) {
        return int(problem.line % 2 == 0 ? QMessageBox::Yes : QMessageBox::No);
    });
    try {
        importer.openFile();
        buildTree(importer);
    } catch (OxErrorManager* error) {
        delete error;
    }
    tearDown(importer);
}
