#pragma once

#include <model_Tessel/model_Tessel_global.h>

#include <QException>
#include <QString>

/*!
 * Codes of the errors that the library raises. The catalogued ones are named after the last
 * component of their catalogue key. Any other number is a legal code too.
 */
enum OxErrorCode : int {
    NotSet = 0,
    CustomText = 1, /*!< the object's text stands in for the catalogue text */
    PlainMessage = 2, /*!< the object's text alone is the whole message */
    DivByZero = 4,
    BadSelectionFile = 7,
    FileNameEmpty = 11,
    FileNotFound = 13,
    FileNotLoad = 14,
    FileNotOpen = 15,
    FileBusy = 16,
    FileNotASCII = 17,
    FileNotDelBak = 18,
    FileReadLine = 19,
    FileInvalidHeader = 20,
    FileUnknowError = 22,
    DirNotFound = 31,
    IncludeNotCheck = 40,
    IncludeNotFound = 41,
    PointerNULL = 101, /*!< a value-set operation failed */
    FeatureNotSupported = 102,
    ToDouble = 103,
    SerializeOut = 104,
    AlreadyRegister = 105,
    RegLoaderNotInit = 106, /*!< the format registry was used before it existed */
    RegLoaderNotReg = 107, /*!< a format is not registered; text: its name */
    ParentNULL = 108,
    ItemNotStored = 211, /*!< a value-set entry could not be stored; text: its position */
    SectionNameEmpty = 212,
    SectionExists = 213,
    ItemNotFound = 216,
    InvalidRecType = 221,
    InvalidVarType = 222,
    InvalidVarLabel = 223,
    InvalidNumMV = 224,
    SelectionNotFound = 231,
    InvalidContents = 242, /*!< a dictionary could not be processed; text: the place */
    InvalidVariableInfo = 243
};

/*!
 * The one error object of the library: who failed, with which code, and where.
 *
 * Ownership: made on the heap and thrown by pointer; whoever catches the pointer owns the object.
 */
class MODEL_TESSEL_EXPORT OxErrorManager : public QException {
public:
    /*! An error without text and line. */
    OxErrorManager(const QString& className, int code);
    /*! An error at \a line. */
    OxErrorManager(const QString& className, int code, int line);
    /*! Also writes the message to the debug log, as the only constructor that does. */
    OxErrorManager(const QString& className, int code, const QString& text);
    /*! An error with \a text, at \a line. */
    OxErrorManager(const QString& className, int code, const QString& text, int line);
    ~OxErrorManager() override;

    /*!
     * Assigns the four fields; every constructor goes through here. By value, as the object's own
     * texts may be given.
     */
    void init(QString className, int code, QString text, int line);

    /*!
     * The composed message, its lines joined by carriage return and line feed. The code and the
     * line appear as the one character with that 16-bit code, not as digits.
     */
    QString getErrorMessage() const;

    /*! Catalogue text of the code; the fallback text for a code without a catalogue row. */
    QString getMLDBMessage() const;

    /*! Writes the message to Qt's debug log; no dialog is shown. */
    void displayMessageBox() const;

    int code = NotSet; /*!< an OxErrorCode or any other number */
    int line = 0; /*!< source line or record number; 0 or less: none */
    QString className; /*!< class or module that raised the error */
    QString text; /*!< completes or, for two codes, replaces the catalogue text */
};

/*! Kept as an exported symbol; opening a data provider sets it to 0. */
extern MODEL_TESSEL_EXPORT int ErrorNumber;
