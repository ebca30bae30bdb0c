#pragma once

#include "writers/SetupPlan.h"

/*! Of \a all missing values of \a labels, those that the program takes. */
QVector<SetupLabel> missingFor(
    tessel::StatProgram program, const QVector<SetupLabel>& all, const SetupLabels& labels);

/*! True when \a missing has what \a label stands for. */
bool isAmong(const SetupLabel& label, const QVector<SetupLabel>& missing);
