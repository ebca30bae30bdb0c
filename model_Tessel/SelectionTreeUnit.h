#pragma once

#include <model_Tessel/HostTypes.h>
#include <model_Tessel/model_Tessel_global.h>

#include <QList>
#include <QModelIndex>
#include <QPair>
#include <QString>

#include <string>
#include <utility>
#include <vector>

/*!
 * One node of a selection tree over the host application's entities, as a view shows it.
 *
 * Ownership: the list of children comes with the node and outlives it, as the children do; setters
 * delete nothing, and a copy shares the list.
 */
class MODEL_TESSEL_EXPORT SelectionTreeUnit {
public:
    SelectionTreeUnit();

    QList<SelectionTreeUnit*>* getChildren() const;
    void setChildren(QList<SelectionTreeUnit*>* value);
    void addChildren(SelectionTreeUnit* child);
    QList<QPair<QString, int>> getInfoProperties() const;
    void setInfoProperties(const QList<QPair<QString, int>>& value);
    std::vector<std::pair<std::string, std::string>> getChildAreas() const;
    void setChildAreas(const std::vector<std::pair<std::string, std::string>>& value);
    std::pair<std::string, std::string> getArea() const;
    void setArea(const std::pair<std::string, std::string>& value);
    TMavEntity* getChild() const;
    void setChild(TMavEntity* value);
    TMavEntity* getParent() const;
    void setParent(TMavEntity* value);
    QString getCode() const;
    void setCode(const QString& text);
    QString getCodeEntity() const;
    void setCodeEntity(const QString& text);
    QString getName() const;
    void setName(const QString& text);
    int getLevel() const;
    void setLevel(int value);
    int getCounter() const;
    void setCounter(int value);
    Qt::CheckState getUnitState() const;
    void setUnitState(const Qt::CheckState& value);
    eSelectionView getUnitView() const;
    void setUnitView(const eSelectionView& value);
    bool getExpanded() const;
    void setExpanded(bool value);
    QModelIndex getIndex() const;
    void setIndex(const QModelIndex& value);

private:
    QList<SelectionTreeUnit*>* m_children = new QList<SelectionTreeUnit*>; /*!< in order */
    QList<QPair<QString, int>> m_infoProperties;
    std::vector<std::pair<std::string, std::string>> m_childAreas;
    std::pair<std::string, std::string> m_area;
    TMavEntity* m_child = nullptr; /*!< not owned */
    TMavEntity* m_parent = nullptr; /*!< not owned */
    QString m_code;
    QString m_codeEntity;
    QString m_name;
    int m_level = 0;
    int m_counter = 1;
    Qt::CheckState m_unitState = Qt::Unchecked;
    eSelectionView m_unitView = static_cast<eSelectionView>(1);
    bool m_expanded = false;
    QModelIndex m_index; /*!< in the view's model */
};
