#pragma once

#include <QByteArray>
#include <QString>

#include <memory>

struct sqlite3;

/*!
 * A CSPro DB file (.csdb): an SQLite file that holds its own dictionary and the cases.
 *
 * It is opened read-only and nothing is left beside it, so that it may stand in a read-only folder.
 * A file with changes that are not yet in it is refused, never read without them. What is wrong is
 * told by errorText().
 */
class CSProDb {
public:
    CSProDb();
    ~CSProDb();

    /*! Opens the file \a path and reads what it says of itself; false, with an errorText(), when it
     * cannot be read or is no CSPro DB. */
    bool open(const QString& path);

    /*! What is wrong with the file, to follow its name; null when nothing is. */
    QString errorText() const;

    /*! The dictionary in UTF-8, in its text form or as JSON. */
    QByteArray dictionary() const;
    /*! Version of the tables: 2 holds the cases as text, 3 as rows. */
    int schemaVersion() const;
    /*! Version of the CSPro that wrote the file, for example "7.4.0". */
    QString csproVersion() const;

private:
    Q_DISABLE_COPY(CSProDb)

    struct Closer {
        void operator()(sqlite3* connection) const;
    };

    bool connect(const QByteArray& path);
    bool findMeta();
    bool readMeta();
    bool fail(const QString& text);
    bool failBySQLite();

    std::unique_ptr<sqlite3, Closer> m_connection;
    QString m_error;
    QByteArray m_dictionary;
    int m_schemaVersion = 0;
    QString m_csproVersion;
};
