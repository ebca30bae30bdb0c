#pragma once

#include <QString>
#include <QStringList>

#include <random>

/*! The names of the separators as a sentence has them: "space, tab or comma". */
QString separatorWords();

/*!
 * Some of the lines of a text that have something in them, spread over all of it: each is as likely
 * to be among them as the others. The same text always gives the same lines.
 */
class LineSample {
public:
    /*! Takes the next piece of the text, which may end within a line. */
    void add(const QString& text);

    /*! The lines, when all pieces were taken; of a long line its start. */
    QStringList lines();

private:
    void addLine(const QStringRef& line);

    QStringList m_lines;
    QString m_rest; // start of the line that a piece ended in
    qint64 m_seen = 0; // lines with something in them
    std::mt19937 m_random;
};

/*!
 * Code of the separator that divides most of \a lines. Of those that divide nearly as many it is
 * one that gives keys of one length, then the one that comes first in the lines. -1: none divides
 * any.
 */
int guessSeparator(const QStringList& lines);
