#pragma once

#include <model_Tessel/CSProProblem.h>

#include <QString>

/*! What a person should know of \a problem: what is wrong, and what became of it. */
QString describeProblem(const CSProProblem& problem);

/*! True for a problem at which reading ended. */
bool endsReading(CSProProblem::Kind kind);
