#pragma once

#include <model_Tessel/DictionaryBuilder.h>

#include <QAbstractItemModel>
#include <QVector>

class TOxEntity;
class TOxVariable;

/*! The tree of a dictionary: below an entity stand its variables, then the entities below it. */
class DictionaryModel : public QAbstractItemModel {
    Q_OBJECT

public:
    enum Column {
        NameColumn,
        LabelColumn,
        TypeColumn,
        StartColumn,
        LengthColumn,
        CodesColumn,
        ColumnCount
    };

    /*! Name and label of a row as one text, for a filter. */
    static constexpr int SearchRole = Qt::UserRole;

    explicit DictionaryModel(QObject* parent = nullptr);

    /*! Shows \a dictionary in place of the one before, which is deleted. */
    void setDictionary(DictionaryPointer dictionary);
    /*! The variable at \a index; null for an entity and an invalid index. */
    const TOxVariable* variable(const QModelIndex& index) const;
    int entityCount() const;
    int variableCount() const;

    QModelIndex index(int row, int column, const QModelIndex& parent = {}) const override;
    QModelIndex parent(const QModelIndex& index) const override;
    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

private:
    // One of the two pointers is null.
    struct Node {
        const TOxEntity* entity = nullptr;
        const TOxVariable* variable = nullptr;
        int parent = -1;
        int row = 0;
        QVector<int> children;
    };

    void addEntity(const TOxEntity* entity, int parent);
    int addNode(Node node);
    const Node& nodeAt(const QModelIndex& index) const;

    DictionaryPointer m_dictionary;
    QVector<Node> m_nodes; // an index has the position of its node
};
