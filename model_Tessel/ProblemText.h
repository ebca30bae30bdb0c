#pragma once

#include <model_Tessel/CSProProblem.h>
#include <model_Tessel/model_Tessel_global.h>

#include <QString>

/*!
 * \file ProblemText.h
 * What messages on files say to people.
 */

/*! What a person should know of \a problem: what is wrong, and what became of it. */
MODEL_TESSEL_EXPORT QString describeProblem(const CSProProblem& problem);

/*! True for a problem at which reading ended. */
MODEL_TESSEL_EXPORT bool endsReading(CSProProblem::Kind kind);

/*! \a text, which a message quotes from a file, cut to a line's length. */
MODEL_TESSEL_EXPORT QString quotedText(const QString& text);
