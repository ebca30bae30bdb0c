#pragma once

#include <model_Tessel/CSProDataImport.h>
#include <model_Tessel/Constants.h>
#include <model_Tessel/DataProvider.h>
#include <model_Tessel/DictionaryBuilder.h>
#include <model_Tessel/Record.h>
#include <model_Tessel/SourceField.h>
#include <model_Tessel/Variable.h>

#include <QFile>
#include <QTemporaryDir>

#include <memory>

// A provider that deletes what it was filled with.
class Provider : public TOxDataProvider {
public:
    ~Provider() override
    {
        if (fields)
            qDeleteAll(*fields);
        if (recordTree)
            delete recordTree->references;
        delete recordTree;
    }

    TOxSourceField& add(const QString& name, const QString& record = QString(),
        const QString& type = TypeNameInteger)
    {
        auto* field = new TOxSourceField;
        field->fieldName = name;
        field->record = record;
        field->setFieldType(type);
        fields->append(field);
        return *field;
    }
};

// A CSPro dictionary opened the way a host does, and the dictionary built from its fields.
class CSProSource {
public:
    explicit CSProSource(const QString& path, CSProReading reading = CSProReading::AsWritten)
        : importer(path)
    {
        importer.setReading(reading);
        importer.setTextCodec("UTF-8");
        importer.setDecimalQuestion(
            [](const CSProProblem&) { return static_cast<int>(QMessageBox::NoToAll); });
        importer.openFile();
        provider.genericGetFieldsFrom(&importer);
    }

    void build(const QVector<LookupDictionary>& lookups = {})
    {
        dictionary.reset(buildDictionary(provider, lookups));
    }

    TCSProDataImport importer;
    Provider provider;
    DictionaryPointer dictionary;
};

class TemporaryDictionary {
public:
    explicit TemporaryDictionary(const QByteArray& sections)
    {
        QFile file(path());
        if (!file.open(QIODevice::WriteOnly) || file.write(sections) != sections.size())
            qFatal("The dictionary cannot be written");
    }

    QString path() const
    {
        return m_folder.filePath("made.dcf");
    }

private:
    QTemporaryDir m_folder;
};

inline std::unique_ptr<CSProSource> openText(
    const QByteArray& sections, CSProReading reading = CSProReading::AsWritten)
{
    const TemporaryDictionary file(sections);
    auto source = std::make_unique<CSProSource>(file.path(), reading);
    source->build();
    return source;
}

inline const QString census = QStringLiteral(TESSEL_EXAMPLES "/census.dcf");

inline DictionaryPointer build(const TOxDataProvider& provider)
{
    return DictionaryPointer(buildDictionary(provider));
}

inline QStringList names(const QList<TOxEntity*>& entities)
{
    QStringList result;
    for (const TOxEntity* entity : entities)
        result << entity->getName();
    return result;
}

inline QStringList names(const QList<TOxVariable*>& variables)
{
    QStringList result;
    for (const TOxVariable* variable : variables)
        result << variable->getName();
    return result;
}

inline QList<TOxVariable*> allVariables(const Dictionary& dictionary)
{
    QList<TOxVariable*> variables = *dictionary.getRoot()->getVariables();
    for (const TOxEntity* entity : *dictionary.getRoot()->getChildren())
        variables += *entity->getVariables();
    return variables;
}

inline const TOxVariable& variable(const Dictionary& dictionary, const QString& name)
{
    for (const TOxVariable* candidate : allVariables(dictionary)) {
        if (candidate->getName() == name)
            return *candidate;
    }
    qFatal("There is no variable %s", qPrintable(name));
}

inline QString labels(const TOxVariable& variable)
{
    QStringList texts;
    for (const ValueLabelElement* element : *variable.getValueLabelElementList())
        texts << element->getValue() + "=" + element->getLabel();
    return texts.join("|");
}

inline QString ranges(const TOxVariable& variable)
{
    QStringList texts;
    for (const Range* range : *variable.getMetadataVariables()->getRange()) {
        texts << QString("%1..%2")
                     .arg(range->getRangeMin(), 0, 'g', 15)
                     .arg(range->getRangeMax(), 0, 'g', 15);
    }
    return texts.join(" ");
}
