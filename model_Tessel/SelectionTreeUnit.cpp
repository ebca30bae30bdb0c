#include <model_Tessel/SelectionTreeUnit.h>

SelectionTreeUnit::SelectionTreeUnit() = default;

// clang-format off
QList<SelectionTreeUnit*>* SelectionTreeUnit::getChildren() const { return m_children; }
void SelectionTreeUnit::setChildren(QList<SelectionTreeUnit*>* value) { m_children = value; }
void SelectionTreeUnit::addChildren(SelectionTreeUnit* child) { m_children->append(child); }
QList<QPair<QString, int>> SelectionTreeUnit::getInfoProperties() const { return m_infoProperties; }
void SelectionTreeUnit::setInfoProperties(const QList<QPair<QString, int>>& value) { m_infoProperties = value; }
std::vector<std::pair<std::string, std::string>> SelectionTreeUnit::getChildAreas() const { return m_childAreas; }
void SelectionTreeUnit::setChildAreas(const std::vector<std::pair<std::string, std::string>>& value) { m_childAreas = value; }
std::pair<std::string, std::string> SelectionTreeUnit::getArea() const { return m_area; }
void SelectionTreeUnit::setArea(const std::pair<std::string, std::string>& value) { m_area = value; }
TMavEntity* SelectionTreeUnit::getChild() const { return m_child; }
void SelectionTreeUnit::setChild(TMavEntity* value) { m_child = value; }
TMavEntity* SelectionTreeUnit::getParent() const { return m_parent; }
void SelectionTreeUnit::setParent(TMavEntity* value) { m_parent = value; }
QString SelectionTreeUnit::getCode() const { return m_code; }
void SelectionTreeUnit::setCode(const QString& text) { m_code = text; }
QString SelectionTreeUnit::getCodeEntity() const { return m_codeEntity; }
void SelectionTreeUnit::setCodeEntity(const QString& text) { m_codeEntity = text; }
QString SelectionTreeUnit::getName() const { return m_name; }
void SelectionTreeUnit::setName(const QString& text) { m_name = text; }
int SelectionTreeUnit::getLevel() const { return m_level; }
void SelectionTreeUnit::setLevel(int value) { m_level = value; }
int SelectionTreeUnit::getCounter() const { return m_counter; }
void SelectionTreeUnit::setCounter(int value) { m_counter = value; }
Qt::CheckState SelectionTreeUnit::getUnitState() const { return m_unitState; }
void SelectionTreeUnit::setUnitState(const Qt::CheckState& value) { m_unitState = value; }
eSelectionView SelectionTreeUnit::getUnitView() const { return m_unitView; }
void SelectionTreeUnit::setUnitView(const eSelectionView& value) { m_unitView = value; }
bool SelectionTreeUnit::getExpanded() const { return m_expanded; }
void SelectionTreeUnit::setExpanded(bool value) { m_expanded = value; }
QModelIndex SelectionTreeUnit::getIndex() const { return m_index; }
void SelectionTreeUnit::setIndex(const QModelIndex& value) { m_index = value; }
// clang-format on
