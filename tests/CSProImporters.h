#pragma once

#include <model_Tessel/CSPro.h>
#include <model_Tessel/CSProDataImport.h>
#include <model_Tessel/CSProValueSet.h>

#include <QFile>
#include <QTemporaryDir>

#include <algorithm>

constexpr double NoValue = 2.2250738585072014e-308;

// A dictionary in a file of its own.
class DictionaryOnDisk {
public:
    explicit DictionaryOnDisk(const QByteArray& text)
    {
        QFile file(path());
        if (!file.open(QIODevice::WriteOnly) || file.write(text) != text.size())
            qFatal("No dictionary could be written");
    }

    QString path() const
    {
        return m_folder.filePath(QStringLiteral("census.dcf"));
    }

private:
    QTemporaryDir m_folder;
};

// An importer that has read a dictionary.
class Opened : public TCSProDataImport {
public:
    explicit Opened(const QByteArray& text)
    {
        const DictionaryOnDisk file(text);
        setSourceName(file.path());
        openFile();
    }

    TCSProVariable* variable(int index) const
    {
        return dynamic_cast<TCSProVariable*>(getField(index));
    }
};

// An importer whose dictionary is made item by item.
class HandMade : public TCSProDataImport {
public:
    HandMade()
    {
        recordTypeLen = 0;
        dictionary = new TCSPro;
    }

    TCSProItem* addItem(const QString& name, int len, bool alpha = false)
    {
        auto* item = new TCSProItem;
        item->setParent(&m_owner);
        item->name = name;
        item->len = len;
        item->isAlpha = alpha ? 1 : 0;
        item->record = dictionary->commonRecord;
        dictionary->items->append(item);
        return item;
    }

    TCSProValueSet* makeSet()
    {
        auto* set = new TCSProValueSet;
        set->setParent(&m_owner);
        return set;
    }

    // Codes and labels; a code that begins with "!" is special.
    TCSProValueSet* addSet(TCSProItem* item, const QStringList& codesAndLabels)
    {
        TCSProValueSet* set = makeSet();
        for (int i = 0; i + 1 < codesAndLabels.size(); i += 2)
            addEntry(set, codesAndLabels.at(i), codesAndLabels.at(i + 1));
        item->valueSets->append(set);
        return set;
    }

    void addEntry(TCSProValueSet* set, const QString& code, const QString& label)
    {
        auto* entry = new TValueSetItem;
        entry->setParent(&m_owner);
        entry->special = code.startsWith(QLatin1Char('!'));
        entry->code = entry->special ? code.mid(1) : code;
        entry->label = label;
        set->addItem(entry);
    }

    TCSProVariable* variable(int index) const
    {
        return dynamic_cast<TCSProVariable*>(getField(index));
    }

private:
    QObject m_owner;
};

inline QString textOf(const TGenericField& field)
{
    const auto* end = std::find(std::begin(field.text), std::end(field.text), L'\0');
    return QString::fromWCharArray(field.text, static_cast<int>(end - field.text));
}
