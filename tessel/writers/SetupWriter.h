#pragma once

#include "writers/SetupPlan.h"

#include <QString>

/*! A program that is written line by line. */
class SetupWriter {
protected:
    explicit SetupWriter(const SetupPlan& plan)
        : m_plan(plan)
    {
    }

    void add(const QString& line)
    {
        m_text += line + QLatin1Char('\n');
    }

    const SetupPlan& m_plan;
    QString m_text;
};
