#pragma once

#include <QByteArray>
#include <QString>
#include <QtTest>

#include <functional>
#include <memory>
#include <type_traits>
#include <vector>

/*! Objects that a new record made, deleted at the end of a test. */
using Owned = std::vector<std::shared_ptr<void>>;

/*! Takes the objects that \a getters of \a record return. */
template <typename Record, typename... Getters>
Owned ownedBy(const Record& record, Getters... getters)
{
    return { std::shared_ptr<void>((record.*getters)())... };
}

/*! A value that no new record has. */
template <typename Value> Value otherValue()
{
    if constexpr (std::is_pointer_v<Value>) {
        static std::aligned_storage_t<16> object; // its address is all that is looked at
        return reinterpret_cast<Value>(&object);
    } else if constexpr (std::is_same_v<Value, bool>) {
        return true;
    } else if constexpr (std::is_same_v<Value, qint64>) {
        return 5'000'000'000;
    } else if constexpr (std::is_same_v<Value, double>) {
        return 0.1;
    } else if constexpr (std::is_same_v<Value, int>) {
        return -77;
    } else {
        return Value(QStringLiteral("other"));
    }
}

/*! The table of a record: its fields with their accessors and the values that they start with. */
template <typename Record> class RecordFields {
public:
    /*! \param own takes the objects that a new record made */
    explicit RecordFields(
        std::function<Owned(const Record&)> own = [](const Record&) { return Owned(); })
        : m_own(std::move(own))
    {
    }

    /*! A field that starts as \a initial, whose getter returns exactly \c Type. */
    template <typename Type, typename Argument>
    void add(const char* name, Type (Record::*get)() const, void (Record::*set)(Argument),
        std::decay_t<Type> initial, std::decay_t<Type> other = otherValue<std::decay_t<Type>>())
    {
        addField<Type>(
            name, get, set, [initial](const std::decay_t<Type>& value) { return value == initial; },
            other);
    }

    /*! A field that starts with an object of its own, for which \a isInitial holds. */
    template <typename Object, typename Predicate>
    void addObject(const char* name, Object* (Record::*get)() const, void (Record::*set)(Object*),
        Predicate isInitial)
    {
        addField<Object*>(
            name, get, set, [isInitial](Object* object) { return object && isInitial(*object); },
            otherValue<Object*>());
        m_isOwnObject.push_back(
            [get](const Record& a, const Record& b) { return (a.*get)() != (b.*get)(); });
    }

    /*! A field that starts with a new empty list. */
    template <typename List>
    void addList(const char* name, List* (Record::*get)() const, void (Record::*set)(List*))
    {
        addObject(name, get, set, [](const List& list) { return list.isEmpty(); });
    }

    /*! Every field has its initial value, and its setter changes it and no other field. */
    void check() const
    {
        for (const Field& changed : m_fields) {
            Record record;
            const Owned owned = m_own(record);
            std::vector<std::function<bool()>> isSame;
            for (const Field& field : m_fields) {
                QVERIFY2(field.isInitial(record), field.name);
                isSame.push_back(field.watch(record));
            }
            changed.change(record);
            QVERIFY2(changed.isChanged(record), changed.name);
            for (std::size_t i = 0; i < m_fields.size(); ++i) {
                const bool isChanged = &m_fields[i] == &changed;
                const QString pair = QString("%1 changes %2").arg(changed.name, m_fields[i].name);
                QVERIFY2(isSame[i]() != isChanged, qPrintable(pair));
            }
        }
        const Record first;
        const Record second;
        const Owned owned[] = { m_own(first), m_own(second) };
        for (const auto& isOwnObject : m_isOwnObject)
            QVERIFY(isOwnObject(first, second));
    }

    /*! A copy and an assigned record have every value of the original, pointers included. */
    void checkCopies() const
    {
        Record original;
        const Owned ownedByOriginal = m_own(original);
        for (const Field& field : m_fields)
            field.change(original);
        const Record copy = original;
        Record assigned;
        const Owned ownedByAssigned = m_own(assigned);
        assigned = original;
        for (const Field& field : m_fields) {
            QVERIFY2(field.isChanged(copy), field.name);
            QVERIFY2(field.isChanged(assigned), field.name);
        }
    }

private:
    struct Field {
        const char* name;
        std::function<bool(const Record&)> isInitial;
        std::function<void(Record&)> change;
        std::function<bool(const Record&)> isChanged;
        // Tells later whether the record still has the value that it has now.
        std::function<std::function<bool()>(const Record&)> watch;
    };

    template <typename Type, typename Get, typename Set, typename Predicate>
    void addField(
        const char* name, Get get, Set set, Predicate isInitial, const std::decay_t<Type>& other)
    {
        using Value = std::decay_t<Type>;
        m_fields.push_back({ name, [=](const Record& record) { return isInitial((record.*get)()); },
            [=](Record& record) { (record.*set)(other); },
            [=](const Record& record) { return (record.*get)() == other; },
            [=](const Record& record) {
                const Value value = (record.*get)();
                return [=, &record] { return (record.*get)() == value; };
            } });
    }

    std::function<Owned(const Record&)> m_own;
    std::vector<Field> m_fields;
    std::vector<std::function<bool(const Record&, const Record&)>> m_isOwnObject;
};
