#pragma once

#include <model_Tessel/model_Tessel_global.h>

#include <QList>
#include <QObject>
#include <QString>

class TDataImport;

/*! Description of a format that a host may pass to the registry, which never looks at it. */
struct TDataProviderProperties;

/*!
 * The registry of data formats, which stays empty: hosts construct the importers themselves, and
 * asking the registry for one ends in an error.
 *
 * Ownership: neither managers nor their lists are ever deleted by the library.
 * Threads: the application's main thread.
 */
class MODEL_TESSEL_EXPORT TLoaderManager : public QObject {
public:
    TLoaderManager();
    ~TLoaderManager() override;

    /*! Points \c pLoaderManager at a new manager without formats; the old one stays alive. */
    static void InitDataClassLoader();
    /*! Does nothing. */
    static void DestroyDataClassLoader();

    /*! Stores nothing; throws an error object of code 106 when there is no registry. */
    void RegisterLoader(TDataProviderProperties* properties);

    QList<QString>* formatNames; /*!< names of the registered formats; the library adds none */

private:
    Q_DISABLE_COPY(TLoaderManager)
};

/*! The registry; null until TLoaderManager::InitDataClassLoader() is called. */
extern MODEL_TESSEL_EXPORT TLoaderManager* pLoaderManager;

/*!
 * True when a format of exactly that \a name is registered; throws an error object of code 106 when
 * there is no registry.
 */
MODEL_TESSEL_EXPORT bool IsTypeRegister(const QString& name);

/*!
 * Starts with a new, empty registry, so it always throws an error object of code 107 whose text is
 * \a name; it never returns an importer.
 */
MODEL_TESSEL_EXPORT TDataImport* GetDataClassLoader(const QString& name);
