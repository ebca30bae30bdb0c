#pragma once

#include <model_Tessel/CSProBuilder_p.h>

#include <QByteArray>
#include <QHash>
#include <QStringList>

#include <initializer_list>

class QJsonArray;
class QJsonObject;
class QJsonValue;

/*
 * Reads a dictionary in the JSON form of CSPro 8 and later and hands what it says to the builder.
 *
 * Members of another type than the format has are told of and passed over; JSON that cannot be
 * parsed ends the load. Places of JSON nodes are unknown, so problems name them by their path.
 */
class CSProJsonReader {
public:
    CSProJsonReader(CSProModel& model, CSProBuilder& builder);

    // Throws when the bytes are no JSON object; line is then the index of the line at fault.
    void read(const QByteArray& bytes, int& line);

private:
    using Kind = CSProProblem::Kind;

    // The path to the node that is being read, for problems; a step lasts as long as its object.
    class Step {
    public:
        Step(CSProJsonReader& reader, const QJsonObject& object);
        ~Step();

    private:
        Q_DISABLE_COPY(Step)
        CSProJsonReader& m_reader;
    };

    void readRoot(const QJsonObject& root);
    void readLevel(const QJsonObject& level);
    void readRecord(const QJsonObject& object);
    void readItems(const QJsonArray& items);
    void readItem(const QJsonObject& object);
    void readValueSet(const QJsonObject& object);
    void readValue(const QJsonObject& object, TCSProValueSet& valueSet);
    bool readPair(const QJsonObject& pair, TValueSetItem& entry, QString& highCode);
    void readRelation(const QJsonObject& object);
    void placeItem(const QJsonObject& object, TCSProItem& item);
    int lastFixedColumn(const QJsonObject& root);

    QString text(const QJsonObject& object, const char* name);
    int number(const QJsonObject& object, const char* name, int defaultValue);
    bool flag(const QJsonObject& object, const char* name, bool defaultValue);
    QJsonObject object(const QJsonObject& parent, const char* name);
    QJsonArray array(const QJsonObject& parent, const char* name);
    QString labels(const QJsonObject& object);
    QVector<QString> occurrenceLabels(const QJsonObject& occurrences, int maximum);
    template <typename Read>
    void forEachObject(const QJsonObject& parent, const char* name, Read read);
    QJsonValue member(const QJsonObject& object, const char* name);
    void reportType(const char* name);
    void reportUnknown(const QJsonObject& object, std::initializer_list<const char*> known);

    CSProModel& m_model;
    CSProBuilder& m_builder;
    QStringList m_path;
    QHash<QString, int> m_languages; // places in a label by name
    bool m_isRelative = true;
    bool m_zeroFill = false; // what numeric items without the member have
    int m_firstColumn = 1; // of a record's first item when positions are relative
    int m_nextColumn = 1;
    int m_parentStart = 1;
    int m_itemLength = 0; // of the item whose value sets are read
};

// True for bytes that begin, behind a byte-order mark and white space, with "{".
bool isJson(const QByteArray& bytes);
