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

void TGenericField::setAsString(const QString& value)
{
    const std::wstring wide = value.toStdWString();
    copyText(wide.data(), wide.size());
    convert(value);
}

void TGenericField::setAsStringChar(const wchar_t* value)
{
    const std::size_t size = value ? std::wcslen(value) : 0;
    copyText(value, size);
    convert(QString::fromWCharArray(value, static_cast<int>(size)).trimmed());
}

double TGenericField::getAsFloat()
{
    if (isMissing())
        return missingValue.toDouble();
    switch (fieldType) {
    case RealType:
        return realValue;
    case IntegerType:
        return integerValue;
    case StringType:
        return currentText().trimmed().toDouble();
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

void TGenericField::copyText(const wchar_t* value, std::size_t size)
{
    if (length > TextCapacity) {
        qFatal("Field %s: a length of %d is above the limit of %d characters", qUtf8Printable(name),
            length, TextCapacity);
    }
    const auto limit = static_cast<std::size_t>(std::max(length, 0));
    const std::size_t copied = std::min(size, limit);
    std::copy_n(value, copied, text);
    std::fill(text + copied, text + limit, L'\0');
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
        realValue = value.toDouble();
        if (scaled)
            realValue /= std::pow(10.0, decimals.toDouble());
        break;
    case IntegerType:
        // Kept: an integer overwrites the real value as well.
        realValue = value.toDouble();
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
