#pragma once

#include <QByteArray>
#include <QString>

/*! Where a command's result goes: standard output, or a file that is written whole or not at all.
 */
class Output {
public:
    /*! \param path empty: standard output */
    explicit Output(const QString& path);

    /*! Writes \a bytes; tells on standard error and returns false when that fails. */
    bool write(const QByteArray& bytes) const;

private:
    QString m_path;
};
