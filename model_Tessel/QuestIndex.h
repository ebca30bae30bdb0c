#pragma once

#include <model_Tessel/model_Tessel_global.h>

#include <QString>
#include <QStringList>

/*!
 * The lines of a questionnaire, one record each, asked by the record-type code that they hold at a
 * fixed place.
 *
 * Ownership: the list of lines is the index's own.
 */
class MODEL_TESSEL_EXPORT TQuestIndex {
public:
    TQuestIndex();
    virtual ~TQuestIndex();

    /*! Number of lines. */
    int countLines() const;
    /*! Record-type code of \a line, from 0, as far as it reaches; empty outside the lines. */
    QString getRecordValue(int line) const;
    /*! Number of lines whose code is exactly \a type. */
    int countRecords(const QString& type) const;
    /*! The code of the first line whose code is \a type; empty when there is none. */
    QString getRecordString(const QString& type) const;
    /*! The same for matching line \a n, from 0. */
    QString getRecordString(const QString& type, int n) const;

    int recordTypeStart = 0; /*!< first column of the record-type code, from 0 */
    int recordTypeLength = 0; /*!< width of the record-type code */
    int status = 0; /*!< 4 or 6 as TOxRecord set it; never set back */
    QString recordText; /*!< what a check writes for each line it finds */
    QStringList* lines;

private:
    Q_DISABLE_COPY(TQuestIndex)
};
