#pragma once

#include <QString>

/*!
 * The same text for the same decimal number, however it is written: no plus, and no zeros that say
 * nothing. It goes digit by digit, so that long codes stay apart. Null for any other text.
 */
QString plainNumber(const QString& text);

/*! plainNumber() of \a code without the blanks at its ends; what is no number stays that text. */
QString numberKey(const QString& code);
