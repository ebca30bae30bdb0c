#pragma once

#include <model_Tessel/model_Tessel_global.h>

#include <QList>
#include <QString>

#include <string>

class TOxVariable;

/*!
 * One level of a dictionary's hierarchy, with its variables and the entities below it.
 *
 * Ownership: the lists come with the entity and outlive it, as what they hold does; setters delete
 * nothing, and a copy shares the lists. releaseEntity() deletes a tree with all that it holds.
 *
 * Kept: toString() is the whole virtual table, so an object of a class derived from this one is
 * deleted as what it is.
 */
QT_WARNING_PUSH
QT_WARNING_DISABLE_GCC("-Wnon-virtual-dtor")
QT_WARNING_DISABLE_CLANG("-Wnon-virtual-dtor")
class MODEL_TESSEL_EXPORT TOxEntity {
public:
    TOxEntity();
    /*! The name, in UTF-8. */
    virtual std::string toString() const;
    ~TOxEntity();

    /*!
     * The first entity of exactly that name among this one and those below it, parents before
     * children. Without one a new entity named "nullEntity", which the caller owns with its lists;
     * a search for that very name looks no further than the first child, its first child and so on.
     */
    TOxEntity* findEntity(const QString& name);

    QString getName() const;
    void setName(const QString& text);
    QString getAlias() const;
    void setAlias(const QString& text);
    QString getLabel() const;
    void setLabel(const QString& text);
    bool getSelectable() const;
    void setSelectable(bool value);
    QString getRefCode() const;
    void setRefCode(const QString& text);
    QString getRefLabel() const;
    void setRefLabel(const QString& text);
    int getTag() const;
    void setTag(int value);
    QList<TOxEntity*>* getChildren() const;
    void setChildren(QList<TOxEntity*>* value);
    void addChildren(TOxEntity* child);
    QList<TOxVariable*>* getVariables() const;
    void setVariables(QList<TOxVariable*>* value);
    void addVariables(TOxVariable* variable);
    int getLevel() const;
    void setLevel(int value);
    bool getCompound() const;
    void setCompound(bool value);
    bool getSequence() const;
    void setSequence(bool value);
    bool getSdc() const;
    void setSdc(bool value);
    QString getRecType() const;
    void setRecType(const QString& text);
    QString getDocumentationEntity() const;
    void setDocumentationEntity(const QString& text);
    QString getWeightVariable() const;
    void setWeightVariable(const QString& text);
    bool getSensitiveEntity() const;
    void setSensitiveEntity(bool value);
    bool getIsvirtual() const;
    void setIsvirtual(bool value);
    const QString& parent() const;
    void setParent(const QString& text);
    const QString& getPath() const;
    void setPath(const QString& text);
    qint64 getNrElements() const;
    void setNrElements(qint64 value);
    bool getCheckDelete() const;
    void setCheckDelete(bool value);

private:
    QString m_name; /*!< what findEntity() compares */
    QString m_alias;
    QString m_label;
    bool m_selectable = false;
    QString m_refCode;
    QString m_refLabel;
    int m_tag = 0; /*!< the application's */
    QList<TOxEntity*>* m_children = new QList<TOxEntity*>; /*!< child entities, in order */
    QList<TOxVariable*>* m_variables = new QList<TOxVariable*>; /*!< the entity's own, in order */
    int m_level = 0;
    bool m_compound = false;
    bool m_sequence = false;
    bool m_sdc = false;
    QString m_recType; /*!< record type in the source */
    QString m_documentationEntity;
    QString m_weightVariable;
    bool m_sensitiveEntity = false;
    bool m_isvirtual = false;
    QString m_parent; /*!< name of the parent */
    QString m_path;
    qint64 m_nrElements = 0;
    bool m_checkDelete = false;
};
QT_WARNING_POP
