#include <model_Tessel/StructVariableItem.h>

StructVariableItem::StructVariableItem() = default;

// clang-format off
int StructVariableItem::getLevel() const { return m_level; }
void StructVariableItem::setLevel(int value) { m_level = value; }
bool StructVariableItem::getChecked() const { return m_checked; }
void StructVariableItem::setChecked(bool value) { m_checked = value; }
TOxVariable StructVariableItem::getData() const { return m_data; }
void StructVariableItem::setData(const TOxVariable& value) { m_data = value; }
QList<StructVariableItem*>* StructVariableItem::getChildren() const { return m_children; }
void StructVariableItem::setChildren(QList<StructVariableItem*>* value) { m_children = value; }
void StructVariableItem::addChildren(StructVariableItem*& child) { m_children->append(child); }
// clang-format on
