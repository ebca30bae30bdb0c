#pragma once

#include <QCommandLineOption>
#include <QString>
#include <QStringList>

#include <optional>

class QCommandLineParser;

/*! Exit statuses of the program. */
enum ExitStatus {
    AllRead = 0, /*!< every input was read whole */
    InputFailed = 1, /*!< an input could not be read, or an output not written */
    WrongUsage = 2 /*!< the command line makes no sense */
};

/*! What the program tells and asks a person, all of it on standard error and standard input. */
namespace Console {

enum class Severity { Note, Warning, Error };

/*!
 * Writes "FILE:LINE: warning: TEXT"; of a text longer than a few lines the beginning and the end.
 * \param line from 1; 0 leaves it out
 * \param kind those of one kind in a file are told three times and then counted, unless
 * --all-warnings is given; null: none is like it
 */
void tell(const QString& file, int line, Severity severity, const QString& text,
    const QString& kind = QString());

/*! Tells how many more tell() has only counted, each kind at the place of the last one told. */
void tellCounts();

/*! Keeps tell() and print() from writing, for what was written before. */
void setSilent(bool isSilent);

/*! Writes "tessel: TEXT" and where help is to be had; returns WrongUsage. */
int wrongUsage(const QString& text);

/*! The option -h, --help of every command. */
const QCommandLineOption& helpOption();

/*!
 * Parses a command's \a arguments, --all-warnings among them. The exit status when the command ends
 * with that: help was asked for, and shown, or the arguments make no sense.
 */
std::optional<int> parseArguments(QCommandLineParser& parser, const QStringList& arguments);

/*! Writes \a text, which a person asked for, to standard output; returns an ExitStatus. */
int show(const QString& text);

/*! Writes \a text as it is. */
void print(const QString& text);

/*! True when a person at a terminal can be asked. */
bool canAsk();

/*! Writes \a question and returns the answer's line, trimmed; a null string at the end of input. */
QString ask(const QString& question);

/*! Columns of a table: the terminal's, what COLUMNS says, or 80. */
int tableWidth();

} // namespace Console
