#pragma once

#include <QByteArray>
#include <QString>

/*! What all pages of the command are made with. A page needs no other file and no network. */

/*!
 * \a text, safe between tags and in attributes with double quotes, with characters that cannot be
 * seen, or that turn the direction of writing, made visible.
 */
QString htmlText(const QString& text);

/*! The same of a text of several lines, whose ends stay. */
QString htmlLines(const QString& text);

/*! The style sheet that all pages share, behind which a page's own rules stand. */
QString pageStyle();

/*! The style sheet \a name, or the script, that the program holds. */
QString pagePart(const QString& name);

/*!
 * The start of a page, up to the end of its head; well-formed XML when \a style is.
 * \param title as it is, not as HTML
 * \param style rules of its own
 * \param script the only one that the browser may run; empty: none
 */
QString pageHead(const QString& title, const QString& style, const QString& script = QString());
