#pragma once

#include <model_Tessel/CSPro.h>
#include <model_Tessel/CSProValueSet.h>

// A dictionary of one item with one value set.
inline QString dictionary(const QString& dataType, const QString& valueLines)
{
    return QStringLiteral("[Record]\nName=R\nRecordTypeValue='1'\n[Item]\nName=A\nLen=5\nDataType=")
        + dataType + QStringLiteral("\n[ValueSet]\nLabel=The codes\nName=V\n") + valueLines;
}

// The entries as "code|label".
inline QStringList entriesOf(const TCSProValueSet& set)
{
    QStringList texts;
    for (int i = 0; i < set.getCount(); ++i) {
        const TValueSetItem* entry = set.getValueSetItem(i);
        texts.append(entry->code + QLatin1Char('|') + entry->label);
    }
    return texts;
}

// The entries of the last item's value set; "none" when it has no value set.
inline QStringList entriesOf(const TCSPro& parser)
{
    return parser.lastItem->getHasValueSet() ? entriesOf(*parser.lastItem->getValueSet(0))
                                             : QStringList { "none" };
}

inline QStringList codesOf(const TCSProValueSet& set)
{
    QStringList codes;
    for (const TValueSetItem* entry : qAsConst(*set.items))
        codes.append(entry ? entry->code : QStringLiteral("null"));
    return codes;
}

// A value set whose entries go with it.
class OwnedValueSet : public TCSProValueSet {
public:
    explicit OwnedValueSet(const QStringList& codes = QStringList(), bool numeric = true)
    {
        isNumeric = numeric;
        for (const QString& code : codes)
            add(code);
    }

    TValueSetItem* add(const QString& code)
    {
        auto* entry = new TValueSetItem;
        entry->setParent(this);
        entry->code = code;
        addItem(entry);
        return entry;
    }
};
