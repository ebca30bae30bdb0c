#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

/*! A lookup file, read and examined before its import. */
struct LookupFile {
    QString path;
    QByteArray bytes; /*!< all of the file */
    QByteArray encoding; /*!< name of the text codec that it is decoded with */
    QStringList sampleLines; /*!< some of those with something in them */
};

/*!
 * Reads the lookup file \a path and finds out how it is to be decoded. False, and told, when it is
 * no text that can be read. \param encoding name of the text codec; empty: byte-order mark, else
 * UTF-8 when it is valid, else Windows-1252, which is told. A byte-order mark wins over the name,
 * too.
 */
bool examineLookup(const QString& path, const QByteArray& encoding, LookupFile& file);
