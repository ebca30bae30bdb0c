#pragma once

#include <tessel_data/tessel_data_global.h>

#include <QByteArray>
#include <QStringList>

#include <exception>

namespace tessel {

/*! Why a source cannot be opened or read on; thrown by value. */
class TESSEL_DATA_EXPORT DataError : public std::exception {
public:
    /*! What kind of failure it is. */
    enum class Code {
        CannotOpen, /*!< missing, no file, or not allowed */
        CannotRead, /*!< reading failed in the middle */
        NoDictionary, /*!< the dictionary cannot be read or has no records */
        UnfitDictionary, /*!< it does not describe data of this kind */
        NotThisFormat, /*!< the file is of another kind than it was taken for */
        Busy, /*!< another program is writing to it */
        Damaged, /*!< its contents contradict themselves */
        Encrypted,
        CannotWrite, /*!< a database that is made */
        TargetExists, /*!< and is not to be replaced */
        UnfitSelection, /*!< it names what the data do not have; told without a file */
        DoesNotAddUp, /*!< what arrived is not what was read */
    };

    /*! An error on \a file, whose \a text follows its name, and \a items the text. */
    DataError(Code code, const QString& file, const QString& text, const QStringList& items = {});

    /*! File, text and items, in UTF-8. */
    const char* what() const noexcept override;

    Code code; /*!< kind of the failure */
    QString file; /*!< as it was given; "-" for standard input */
    QString text; /*!< what is wrong and what to do, for people; begins after the file's name */
    QStringList items; /*!< what the text is about, one by one; mostly none */

private:
    QByteArray m_what;
};

} // namespace tessel
