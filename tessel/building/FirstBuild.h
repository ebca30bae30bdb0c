#pragma once

#include "building/BuildRun.h"

#include <QStringList>

/*!
 * What the first build of a database chose. It holds for all that is added: what an addition does
 * not say is taken from there, what it says otherwise does not fit.
 */
class FirstBuild {
public:
    /*! Takes the settings \a json of the first build; what is wrong with them, or null. */
    QString read(const QByteArray& json);

    /*! Completes \a settings with all that needs no dictionary. */
    void complete(BuildSettings& settings);
    /*! Completes \a settings of data with the dictionary \a dictionary. */
    void complete(BuildSettings& settings, const tessel::DataDictionary& dictionary);

    /*! What does not fit, a line for each option. */
    const QStringList& unfit() const
    {
        return m_unfit;
    }

private:
    void completeText(const char* option, QString& given, const QString& first);
    void completeSample(SelectionRequest& given);
    void completeColumns(SelectionRequest& given, const tessel::DataDictionary& dictionary);
    void compareColumns(
        const tessel::DataSelection& given, const tessel::DataDictionary& dictionary);
    void addUnfit(const char* option, const QString& given, const QString& first);

    BuildSettings m_first;
    QStringList m_unfit;
};
