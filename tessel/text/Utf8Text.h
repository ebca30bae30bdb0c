#pragma once

#include <QByteArray>
#include <QString>

/*! Appends \a text in UTF-8 to \a bytes, at once where it is ASCII, for millions of short texts. */
void appendUtf8(QByteArray& bytes, const QString& text);
