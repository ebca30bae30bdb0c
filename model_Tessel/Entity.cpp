#include <model_Tessel/Entity.h>

#include <vector>

namespace {

const QString notFoundName = QStringLiteral("nullEntity"); // clazy:exclude=non-pod-global-static

// How far a search has come in a list of entities.
struct Walk {
    const QList<TOxEntity*>* entities;
    int next;
};

} // namespace

TOxEntity::TOxEntity() = default;

// Kept: hosts hold the lists, and copies of the entity share them.
TOxEntity::~TOxEntity() = default;

std::string TOxEntity::toString() const
{
    return m_name.toStdString();
}

TOxEntity* TOxEntity::findEntity(const QString& name)
{
    if (m_name == name)
        return this;
    std::vector<Walk> walks = { { m_children, 0 } };
    while (!walks.empty()) {
        Walk& walk = walks.back();
        if (walk.next < walk.entities->size()) {
            TOxEntity* entity = walk.entities->at(walk.next++);
            if (entity->m_name == name)
                return entity;
            walks.push_back({ entity->m_children, 0 });
            continue;
        }
        // Kept: an entity without a match answers with one of this name, so the first that has no
        // children ends a search for it.
        if (name == notFoundName)
            break;
        walks.pop_back();
    }
    auto* notFound = new TOxEntity;
    notFound->setName(notFoundName);
    return notFound;
}

// clang-format off
QString TOxEntity::getName() const { return m_name; }
void TOxEntity::setName(const QString& text) { m_name = text; }
QString TOxEntity::getAlias() const { return m_alias; }
void TOxEntity::setAlias(const QString& text) { m_alias = text; }
QString TOxEntity::getLabel() const { return m_label; }
void TOxEntity::setLabel(const QString& text) { m_label = text; }
bool TOxEntity::getSelectable() const { return m_selectable; }
void TOxEntity::setSelectable(bool value) { m_selectable = value; }
QString TOxEntity::getRefCode() const { return m_refCode; }
void TOxEntity::setRefCode(const QString& text) { m_refCode = text; }
QString TOxEntity::getRefLabel() const { return m_refLabel; }
void TOxEntity::setRefLabel(const QString& text) { m_refLabel = text; }
int TOxEntity::getTag() const { return m_tag; }
void TOxEntity::setTag(int value) { m_tag = value; }
QList<TOxEntity*>* TOxEntity::getChildren() const { return m_children; }
void TOxEntity::setChildren(QList<TOxEntity*>* value) { m_children = value; }
void TOxEntity::addChildren(TOxEntity* child) { m_children->append(child); }
QList<TOxVariable*>* TOxEntity::getVariables() const { return m_variables; }
void TOxEntity::setVariables(QList<TOxVariable*>* value) { m_variables = value; }
void TOxEntity::addVariables(TOxVariable* variable) { m_variables->append(variable); }
int TOxEntity::getLevel() const { return m_level; }
void TOxEntity::setLevel(int value) { m_level = value; }
bool TOxEntity::getCompound() const { return m_compound; }
void TOxEntity::setCompound(bool value) { m_compound = value; }
bool TOxEntity::getSequence() const { return m_sequence; }
void TOxEntity::setSequence(bool value) { m_sequence = value; }
bool TOxEntity::getSdc() const { return m_sdc; }
void TOxEntity::setSdc(bool value) { m_sdc = value; }
QString TOxEntity::getRecType() const { return m_recType; }
void TOxEntity::setRecType(const QString& text) { m_recType = text; }
QString TOxEntity::getDocumentationEntity() const { return m_documentationEntity; }
void TOxEntity::setDocumentationEntity(const QString& text) { m_documentationEntity = text; }
QString TOxEntity::getWeightVariable() const { return m_weightVariable; }
void TOxEntity::setWeightVariable(const QString& text) { m_weightVariable = text; }
bool TOxEntity::getSensitiveEntity() const { return m_sensitiveEntity; }
void TOxEntity::setSensitiveEntity(bool value) { m_sensitiveEntity = value; }
bool TOxEntity::getIsvirtual() const { return m_isvirtual; }
void TOxEntity::setIsvirtual(bool value) { m_isvirtual = value; }
const QString& TOxEntity::parent() const { return m_parent; }
void TOxEntity::setParent(const QString& text) { m_parent = text; }
const QString& TOxEntity::getPath() const { return m_path; }
void TOxEntity::setPath(const QString& text) { m_path = text; }
qint64 TOxEntity::getNrElements() const { return m_nrElements; }
void TOxEntity::setNrElements(qint64 value) { m_nrElements = value; }
bool TOxEntity::getCheckDelete() const { return m_checkDelete; }
void TOxEntity::setCheckDelete(bool value) { m_checkDelete = value; }
// clang-format on
