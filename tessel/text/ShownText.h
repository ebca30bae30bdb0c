#pragma once

#include <QString>
#include <QStringList>

/*! How numbers and codes are shown to people, in every table. */

/*! "1 field", "2 fields"; \a several where an "s" does not make the plural. */
QString plural(qint64 count, const QString& one, const QString& several = QString());

/*! \a code, in quotes where blanks in it, or nothing at all, would not be seen. */
QString shownCode(const QString& code);

/*! A code, or several that stand in the text already as joinedCodes() writes them. */
QString shownCodes(const QString& codes);

/*! One code as it is; of several, joined by commas, those with blanks in quotes. Null for none. */
QString joinedCodes(const QStringList& codes);

/*! \a number in digits; empty for 0, which stands for none. */
QString shownNumber(int number);

/*!
 * \a text with control characters and those that turn the direction of writing made visible, so
 * that no file can drive a terminal or seem to say something else.
 */
QString printable(const QString& text);

/*! \a text, which a message quotes from a file, cut to a line's length. */
QString shortened(const QString& text);

/*! \a count in digits, by thousands: "2,997". */
QString grouped(qint64 count);
