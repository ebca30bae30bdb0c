#include "DictionaryModel.h"

#include <model_Tessel/Entity.h>
#include <model_Tessel/Variable.h>

#include <algorithm>

namespace {

// A file without columns, such as one of SPSS, has no positions.
QVariant positive(int number)
{
    return number > 0 ? QVariant(number) : QVariant();
}

QVariant entityText(const TOxEntity& entity, int column)
{
    switch (column) {
    case DictionaryModel::NameColumn:
        return entity.getName();
    case DictionaryModel::LabelColumn:
        return entity.getLabel();
    case DictionaryModel::TypeColumn:
        return entity.getRecType().isEmpty()
            ? QVariant()
            : DictionaryModel::tr("record %1").arg(entity.getRecType());
    default:
        return {};
    }
}

QVariant variableText(const TOxVariable& variable, int column)
{
    switch (column) {
    case DictionaryModel::NameColumn:
        return variable.getName();
    case DictionaryModel::LabelColumn:
        return variable.getLabel();
    case DictionaryModel::TypeColumn:
        return variable.getVarType().toLower();
    case DictionaryModel::StartColumn:
        return positive(variable.getStart());
    case DictionaryModel::LengthColumn:
        return positive(variable.getSize());
    case DictionaryModel::CodesColumn:
        return positive(variable.getValueLabelElementList()->size());
    default:
        return {};
    }
}

} // namespace

DictionaryModel::DictionaryModel(QObject* parent)
    : QAbstractItemModel(parent)
{
}

void DictionaryModel::setDictionary(DictionaryPointer dictionary)
{
    beginResetModel();
    m_nodes.clear();
    m_dictionary = std::move(dictionary);
    if (m_dictionary)
        addEntity(m_dictionary->getRoot(), -1);
    endResetModel();
}

void DictionaryModel::addEntity(const TOxEntity* entity, int parent)
{
    Node node;
    node.entity = entity;
    node.parent = parent;
    const int position = addNode(node);
    for (const TOxVariable* variable : qAsConst(*entity->getVariables())) {
        Node child;
        child.variable = variable;
        child.parent = position;
        addNode(child);
    }
    for (const TOxEntity* child : qAsConst(*entity->getChildren()))
        addEntity(child, position);
}

int DictionaryModel::addNode(Node node)
{
    const int position = m_nodes.size();
    if (node.parent >= 0) {
        QVector<int>& siblings = m_nodes[node.parent].children;
        node.row = siblings.size();
        siblings.append(position);
    }
    m_nodes.append(node);
    return position;
}

const DictionaryModel::Node& DictionaryModel::nodeAt(const QModelIndex& index) const
{
    return m_nodes.at(int(index.internalId()));
}

const TOxVariable* DictionaryModel::variable(const QModelIndex& index) const
{
    return index.isValid() ? nodeAt(index).variable : nullptr;
}

int DictionaryModel::variableCount() const
{
    return int(std::count_if(m_nodes.cbegin(), m_nodes.cend(),
        [](const Node& node) { return node.variable != nullptr; }));
}

int DictionaryModel::entityCount() const
{
    return m_nodes.size() - variableCount();
}

QModelIndex DictionaryModel::index(int row, int column, const QModelIndex& parent) const
{
    if (!hasIndex(row, column, parent))
        return {};
    const int position = parent.isValid() ? nodeAt(parent).children.at(row) : 0;
    return createIndex(row, column, quintptr(position));
}

QModelIndex DictionaryModel::parent(const QModelIndex& index) const
{
    const int position = index.isValid() ? nodeAt(index).parent : -1;
    return position < 0 ? QModelIndex()
                        : createIndex(m_nodes.at(position).row, NameColumn, quintptr(position));
}

int DictionaryModel::rowCount(const QModelIndex& parent) const
{
    if (!parent.isValid())
        return m_nodes.isEmpty() ? 0 : 1;
    return parent.column() == NameColumn ? nodeAt(parent).children.size() : 0;
}

int DictionaryModel::columnCount(const QModelIndex&) const
{
    return ColumnCount;
}

QVariant DictionaryModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid())
        return {};
    const Node& node = nodeAt(index);
    const auto text = [&node](int column) {
        return node.entity ? entityText(*node.entity, column)
                           : variableText(*node.variable, column);
    };
    if (role == SearchRole)
        return QString(
            text(NameColumn).toString() + QLatin1Char('\n') + text(LabelColumn).toString());
    if (role == Qt::TextAlignmentRole && index.column() >= StartColumn)
        return int(Qt::AlignRight | Qt::AlignVCenter);
    return role == Qt::DisplayRole || role == Qt::ToolTipRole ? text(index.column()) : QVariant();
}

QVariant DictionaryModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return {};
    const QStringList titles = { tr("Name"), tr("Label"), tr("Type"), tr("Start"), tr("Length"),
        tr("Codes") };
    return titles.value(section);
}
