#pragma once

#include <model_Tessel/model_Tessel_global.h>

#include <QList>
#include <QString>

/*! Shortens paths for display and cuts words out of texts. */
class MODEL_TESSEL_EXPORT UtilStrings {
public:
    /*!
     * \a path with native separators, shortened once when it is wider than \a width pixels in Arial
     * of 10 points: what lies between its second and its last backslash becomes "...". Other
     * separators do not count. Needs a QGuiApplication.
     */
    static QString getBetterPathString(const QString& path, int width);
    /*!
     * The word of \a text from \a position, counted from 0, up to the next \a separator, which is
     * one character. A word whose second character is \a marker comes without its first two;
     * an empty marker leaves every word whole. \a position moves behind the separator, or to -1
     * when none follows.
     */
    static QString GetWordSeparator(
        const QString& text, int& position, const QString& separator, const QString& marker);
};

/*! \a count copies of \a character, read as Latin-1; none for a count below 1. */
MODEL_TESSEL_EXPORT QString StringOfChar(char character, int count);

/*! \a text without the blanks at its end, which are padding. */
MODEL_TESSEL_EXPORT QString withoutTrailingBlanks(const QString& text);

/*!
 * A list of texts with a hook for those who watch it.
 *
 * Kept: Notify() is the whole virtual table, so an object of a class derived from this one is
 * deleted as what it is.
 */
QT_WARNING_PUSH
QT_WARNING_DISABLE_GCC("-Wnon-virtual-dtor")
QT_WARNING_DISABLE_CLANG("-Wnon-virtual-dtor")
class MODEL_TESSEL_EXPORT TOxList : public QList<QString> {
public:
    /*! An empty list; \a changed is stored. */
    explicit TOxList(bool changed);
    ~TOxList();

    /*! Tells of \a item; does nothing here. */
    virtual void Notify(void* item);
    /*! Sets \c changed and returns true; removes nothing. */
    bool Remove1(void* item);

    bool changed; /*!< as the constructor got it; true after Remove1() */
};
QT_WARNING_POP
