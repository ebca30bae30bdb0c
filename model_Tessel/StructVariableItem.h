#pragma once

#include <model_Tessel/Variable.h>
#include <model_Tessel/model_Tessel_global.h>

#include <QList>

/*!
 * One node of a tree of variables, as a view shows it.
 *
 * Ownership: the list of children comes with the node and outlives it, as the children do; setters
 * delete nothing, and a copy shares the list. The variable is a copy, so its value labels and
 * metadata are those of the original.
 */
class MODEL_TESSEL_EXPORT StructVariableItem {
public:
    StructVariableItem();

    int getLevel() const;
    void setLevel(int value);
    bool getChecked() const;
    void setChecked(bool value);
    TOxVariable getData() const;
    void setData(const TOxVariable& value);
    QList<StructVariableItem*>* getChildren() const;
    void setChildren(QList<StructVariableItem*>* value);
    void addChildren(StructVariableItem*& child);

private:
    int m_level = 0;
    bool m_checked = false;
    TOxVariable m_data;
    QList<StructVariableItem*>* m_children = new QList<StructVariableItem*>; /*!< in order */
};
