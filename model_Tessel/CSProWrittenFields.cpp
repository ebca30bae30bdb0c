#include <model_Tessel/CSProWrittenFields_p.h>

#include <model_Tessel/CSProValueSet.h>
#include <model_Tessel/Constants.h>
#include <model_Tessel/Numbers_p.h>

#include <QStringBuilder>

#include <algorithm>

CSProWrittenFields::CSProWrittenFields(const TCSPro& dictionary)
    : m_dictionary(dictionary)
{
}

void CSProWrittenFields::describe(TCSProVariable& field, const TCSProItem& item)
{
    field.label = m_dictionary.labelText(item.label);
    field.isAsWritten = true;
    field.hasDecimalChar = item.hasDecimalChar; // for assignments through the base
    if (item.isAlpha != 0)
        return;
    field.decimals = QString::number(item.decimal);
    takeLengthRange(field, item);
}

// The texts of one width are shared.
void CSProWrittenFields::takeLengthRange(TCSProVariable& field, const TCSProItem& item)
{
    const auto width = std::make_tuple(item.len, item.decimal, item.hasDecimalChar);
    if (!m_range || width != m_width) {
        m_width = width;
        m_range = CSProLengthRange(item);
    }
    field.minValue = m_range->lowest;
    field.maxValue = m_range->highest;
}

void CSProWrittenFields::summarize(const QList<TCSProValueSet*>& valueSets)
{
    m_min = 0;
    m_max = 0;
    m_hasBounds = false;
    for (const TCSProValueSet* valueSet : valueSets) {
        m_isBounded = m_hasBounds;
        addEntries(*valueSet);
    }
    m_labels.squeeze();
}

void CSProWrittenFields::addEntries(const TCSProValueSet& valueSet)
{
    const bool isNumeric = m_fieldType != TGenericField::StringType;
    for (const TValueSetItem* entry : qAsConst(*valueSet.items)) {
        if (entry->special)
            continue;
        QString code = entry->code;
        QString highCode = valueSet.detail(entry).highCode;
        if (isNumeric && !highCode.isNull() && !isFiniteNumber(highCode))
            continue; // no range, so its low bound is none either
        if (isNumeric && (!takeNumber(code) || (!highCode.isNull() && !takeNumber(highCode))))
            continue;
        if (!highCode.isNull())
            code += TokenColon % highCode;
        m_labels +=
            code % QLatin1Char(' ') % m_dictionary.labelText(entry->label) % QLatin1Char('\t');
    }
}

// Widens the bounds by a code, which takes the form that the field's type has; false for no number.
bool CSProWrittenFields::takeNumber(QString& code)
{
    bool isNumber = false;
    const int integer = integerOf(code, &isNumber);
    const double number = isNumber ? integer : code.toDouble(&isNumber);
    if (!isNumber)
        return false;
    if (!m_isBounded)
        widen(number);
    if (m_fieldType == TGenericField::IntegerType)
        code = shortNumberText(number);
    return true;
}

void CSProWrittenFields::widen(double number)
{
    m_min = m_hasBounds ? std::min(m_min, number) : number;
    m_max = m_hasBounds ? std::max(m_max, number) : number;
    m_hasBounds = true;
}

void CSProWrittenFields::bound(TCSProVariable& field) const
{
    if (m_hasBounds || field.isString())
        field.minValue = shortNumberText(m_min);
    if (m_hasBounds)
        field.maxValue = shortNumberText(m_max);
}
