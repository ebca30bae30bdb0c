#pragma once

#include <tessel_data/DataSelection.h>

#include <model_Tessel/Config.h>

#include <QByteArray>
#include <QString>
#include <QStringList>

namespace tessel {

/*! Settings of a conversion into files, beside those that it shares with a build. */
struct ConversionConfig {
    QString format; /*!< "stata", "spss" or "csv"; empty: the settings are of no conversion */
    QString folder; /*!< that the files go to */
    bool isMerged = false; /*!< variables of records that a case has once on each row of others */
    bool keepsMissingCodes = false; /*!< Stata: missing codes stay what they are */
    bool hasLabels = false; /*!< CSV: labels in place of codes */
    bool forSpreadsheet = false; /*!< CSV for spreadsheets */
};

/*!
 * The settings of one build, in the library's records and, where these have no place, beside them.
 * Owns the records and what they point to.
 */
class TESSEL_DATA_EXPORT BuildConfig {
public:
    BuildConfig() = default;
    ~BuildConfig();

    /*! Database, source, conditions and entities. */
    Config& config()
    {
        return m_config;
    }
    /*! As above. */
    const Config& config() const
    {
        return m_config;
    }
    /*! The sample: \c factor is its share, or, with \c radioOutEveryX, each so many-th case. */
    ConfigToolsSplit& split()
    {
        return m_split;
    }
    /*! As above. */
    const ConfigToolsSplit& split() const
    {
        return m_split;
    }

    /*! \name The database: a file, or the address of one on a server, without its password. */
    /*! @{ */
    /*! Empty: not said. */
    QString target() const;
    /*! A password in \a target is not kept. */
    void setTarget(const QString& target);
    /*! @} */

    /*! \name What is taken of the data. */
    /*! @{ */
    /*! All of them, when nothing was set. */
    DataSelection selection() const;
    /*! The record types of the entities are those of \a dictionary. */
    void setSelection(const DataSelection& selection, const DataDictionary& dictionary);
    /*! @} */

    /*! As a text that readJson() reads. */
    QByteArray json(bool isIndented) const;
    /*!
     * Takes the settings of \a json, into an object that has none yet; what is wrong with them, or
     * null.
     */
    QString readJson(const QByteArray& json);

    /*! \name What the records have no place for. */
    /*! @{ */
    QStringList data; /*!< files that the source, a dictionary, describes */
    QString dictionary; /*!< of a CSPro DB, in place of its own; empty: its own */
    QString dataEncoding; /*!< of text data: "utf-8" or "windows-1252"; empty: found */
    ConversionConfig conversion;
    QString schema; /*!< on a server; empty: the first of the search path */
    QString repeats; /*!< "columns" or "tables"; empty: not said */
    QString language; /*!< of the labels; empty: the first */
    QString encoding; /*!< of the dictionary, name of the codec; empty: it is found */
    bool hasAllLanguages = false;
    quint32 seed = 1; /*!< of the sample */
    /*! @} */

private:
    Q_DISABLE_COPY(BuildConfig)

    void clearEntities();

    Config m_config;
    ConfigToolsSplit m_split;
};

} // namespace tessel
