#pragma once

#include <model_Tessel/model_Tessel_global.h>

#include <QList>
#include <QString>

class TOxRecordReference;
class TQuestIndex;

/*!
 * One record definition in a tree of them, linked by first child, next brother and parent.
 *
 * A whole walk, a search and a check take time linear in the records and no deep stack, whatever
 * the shape of the tree.
 *
 * Ownership: a record owns no other; its list of references is never deleted by the library.
 */
class MODEL_TESSEL_EXPORT TOxRecord {
public:
    TOxRecord();
    virtual ~TOxRecord();

    /*! The name, with the label in parentheses where there is one. */
    QString nodeCaption() const;

    /*! Puts \a record behind the last brother of this record, below the same parent. */
    void addBrother(TOxRecord* record);
    /*! Makes \a record the last child of this record. */
    void addChild(TOxRecord* record);
    /*! Puts \a record before \a before; does nothing when that is no child of this record. */
    void insertChild(TOxRecord* before, TOxRecord* record);
    /*!
     * Unlinks the record that retrieveRecord() finds, without deleting it; does nothing when that
     * is no child of this record. \a flag is not used.
     */
    void deleteChild(const QString& name, bool flag);

    /*!
     * The first record of that \a name among this record, the records below it, its next brothers
     * and the records below those, children before brothers; null when there is none. "Common"
     * finds a record named "COMMON" too, but not the other way round.
     */
    TOxRecord* retrieveRecord(const QString& name);

    /*! The next record of the whole tree, parents before children; null after the last. */
    TOxRecord* preOrderNext() const;
    /*! The next brother of this record or of the nearest parent that has one; null without. */
    TOxRecord* preOrderNextBrother() const;

    /*! Empty, always: no line has a key. */
    QString getKeyValue(const QString& line) const;
    /*! Empty, always: no line has a parent key. */
    QString getParentKeyValue(const QString& line) const;

    /*!
     * Empty, always. Sets the status of \a index to 4 when this record has references and more than
     * one line has an empty record-type code.
     */
    QString assembleRecord(TQuestIndex* index) const;
    /*! The text of \a index for one line; \a key is not used. */
    QString assembleRecord(TQuestIndex* index, const QString& key) const;

    /*!
     * Checks the lines of \a index against this record and those below it: the text of the index
     * and a line end for each line of this record's type, each followed by what the check of its
     * children gives. A record looks for the type of its \c keyRecord; without one it finds no
     * line. Empty, with status 6, when this record finds lines of an empty type; also empty when
     * the text of the index is. Throws std::bad_alloc for a result longer than a text can be.
     */
    QString checkQuestionnaire(TQuestIndex* index) const;
    /*!
     * The same for this record, its next brothers and the records below them, without a status. All
     * lines have an empty parent key, so any other \a parentKey finds none.
     */
    QString checkQuestionnaire(TQuestIndex* index, const QString& parentKey) const;

    /*! Appends \a reference, which stays the caller's. */
    void addRecordReferenceToList(TOxRecordReference* reference);
    /*! Removes the first occurrence of \a reference, if there is one. */
    void removeRecordReferenceFromList(TOxRecordReference* reference);

    QString name; /*!< what retrieveRecord() compares */
    QString label; /*!< caption */
    QString recordType; /*!< record-type code in a data line */
    QString recordChar; /*!< the record's code character */
    TOxRecord* firstChild = nullptr;
    TOxRecord* parent = nullptr;
    TOxRecord* nextBrother = nullptr;
    QList<TOxRecordReference*>* references; /*!< attached to this record; not owned */
    TOxRecord* keyRecord = nullptr; /*!< the record whose type a check looks for */

private:
    Q_DISABLE_COPY(TOxRecord)
};
