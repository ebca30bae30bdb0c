#pragma once

#include <tessel_data/tessel_data_global.h>

#include <QByteArray>
#include <QString>

#include <memory>

namespace tessel {

class SqliteFile;

/*!
 * A CSPro DB file (.csdb): an SQLite file that holds its own dictionary and the cases, which
 * CSProDbSource reads.
 *
 * It is opened read-only and nothing is left beside it, so that it may stand in a read-only folder.
 * A file with changes that are not yet in it is refused, never read without them.
 */
class TESSEL_DATA_EXPORT CSProDb {
public:
    /*! Opens the file \a path and reads what it says of itself; throws DataError. */
    explicit CSProDb(const QString& path);
    ~CSProDb();

    /*! The dictionary in UTF-8, in its text form or as JSON. */
    const QByteArray& dictionary() const;
    /*! Version of the tables: 2 holds the cases as text, 3 as rows. */
    int schemaVersion() const;
    /*! Version of the CSPro that wrote the file, for example "7.4.0". */
    const QString& csproVersion() const;

private:
    Q_DISABLE_COPY(CSProDb)
    friend class CSProDbSource;

    void readMeta();

    std::unique_ptr<SqliteFile> m_file;
    QByteArray m_dictionary;
    int m_schemaVersion = 0;
    QString m_csproVersion;
};

} // namespace tessel
