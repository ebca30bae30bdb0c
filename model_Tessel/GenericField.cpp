#include <model_Tessel/GenericField.h>

#include <model_Tessel/ErrorManager.h>
#include <model_Tessel/Numbers_p.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <cwchar>
#include <iterator>
#include <string>

TGenericField::TGenericField(TDataImport* owner)
    : owner(owner)
{
}

TGenericField::~TGenericField() = default;

void TGenericField::addValueLabel(QString code, QString label)
{
    Q_UNUSED(code)
    Q_UNUSED(label)
}

QString TGenericField::getGroup()
{
    return QLatin1String("");
}

QString TGenericField::getAsString()
{
    if (isMissing())
        return missingValue;
    if (isNotApplicable())
        return notApplicableValue;
    if (isBlank())
        return QLatin1String("");
    switch (fieldType) {
    case RealType:
        return QString::number(realValue, 'g', 6);
    case IntegerType:
        return shortNumberText(integerValue);
    case StringType:
        return currentText();
    default:
        return QLatin1String("");
    }
}

void TGenericField::setAsString(QString value)
{
    copyText(value.toStdWString().c_str());
    convert(value);
}

void TGenericField::setAsStringChar(const wchar_t* value)
{
    copyText(value ? value : L"");
    convert(value ? QString::fromWCharArray(value).trimmed() : QString());
}

double TGenericField::getAsFloat()
{
    if (isMissing())
        return realOrZero(missingValue);
    switch (fieldType) {
    case RealType:
        return realValue;
    case IntegerType:
        return integerValue;
    case StringType:
        return realOrZero(currentText().trimmed());
    default:
        return 0;
    }
}

void TGenericField::setAsFloat(double value)
{
    realValue = value;
}

int TGenericField::getAsInteger()
{
    if (isMissing())
        return missingValue.toInt();
    switch (fieldType) {
    case RealType:
        return truncatedToInt(realValue);
    case IntegerType:
        return truncatedToInt(integerValue);
    case StringType:
        return currentText().trimmed().toInt();
    default:
        return 0;
    }
}

void TGenericField::setAsInteger(int value)
{
    integerValue = value;
}

bool TGenericField::isString() const
{
    return fieldType == StringType;
}

QString TGenericField::getValueLabel(const QString& code)
{
    valueLabels.replace(QLatin1Char('\t'), QLatin1Char('\n'));
    const int space = valueLabels.indexOf(QLatin1Char(' '));
    if (space < 0)
        return QLatin1String("");
    // Kept: the entry's first character belongs to the label, not to the code.
    const QString key = valueLabels.mid(1, std::max(space - 1, 0)).trimmed();
    if (key != code)
        return QLatin1String("");
    return QString(valueLabels).remove(1, space).trimmed();
}

void TGenericField::copyText(const wchar_t* value)
{
    if (length > TextCapacity) {
        qFatal("Field %s: a length of %d is above the limit of %d characters", qUtf8Printable(name),
            length, TextCapacity);
    }
    std::wcsncpy(text, value, static_cast<std::size_t>(std::max(length, 0)));
}

QString TGenericField::currentText() const
{
    const wchar_t* end = std::find(std::begin(text), std::end(text), L'\0');
    return QString::fromWCharArray(text, static_cast<int>(end - text));
}

void TGenericField::assignNumber(const QString& value, bool scaled)
{
    if (isMissing() || isNotApplicable() || isBlank())
        return;
    switch (fieldType) {
    case RealType:
        realValue = realOrZero(value);
        if (scaled)
            realValue /= std::pow(10.0, realOrZero(decimals));
        break;
    case IntegerType:
        // Kept: an integer overwrites the real value as well.
        realValue = realOrZero(value);
        integerValue = realValue;
        break;
    case StringType:
        break;
    default:
        std::memset(text, 0x15, 8); // kept: tells a field without a known type
    }
}

void TGenericField::convert(const QString& value)
{
    conversionFailed = false;
    try {
        assignNumber(value, !hasDecimalChar && !decimals.isEmpty());
        return;
    } catch (OxErrorManager* error) {
        delete error;
    } catch (...) { // a failed conversion is told by the flag alone
    }
    conversionFailed = true;
    integerValue = 0;
}
