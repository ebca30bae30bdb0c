#pragma once

#include <model_Tessel/GenericField.h>

#include <QMetaType>
#include <QStringList>

#include <algorithm>
#include <functional>
#include <string>

constexpr double unset = 2.2250738585072014e-308;

enum Type { None = 0, Integer = 1, Real = 2, String = 3 };

// A field whose answers a test sets, and which notes what it is asked.
class Field : public TGenericField {
public:
    explicit Field(int type = None, int length = 20)
        : TGenericField(nullptr)
    {
        fieldType = type;
        this->length = length;
    }

    bool isMissing() override
    {
        return answer(QStringLiteral("missing"), missing);
    }
    bool isNotApplicable() override
    {
        return answer(QStringLiteral("notApplicable"), notApplicable);
    }
    bool isBlank() override
    {
        return answer(QStringLiteral("blank"), blank);
    }

    // The first characters of the buffer, nulls as dots.
    QString buffer(int size) const
    {
        std::wstring copy(text, text + size);
        std::replace(copy.begin(), copy.end(), L'\0', L'.');
        return QString::fromStdWString(copy);
    }

    bool missing = false;
    bool notApplicable = false;
    bool blank = false;
    QStringList asked;
    QString throwingQuestion;
    std::function<void()> thrower;

private:
    bool answer(const QString& question, bool value)
    {
        asked.append(question);
        if (question == throwingQuestion)
            thrower();
        return value;
    }
};

// The two ways in; what holds for one holds for the other.
enum class Way { Text, WideText };

inline void assign(TGenericField& field, Way way, const QString& value)
{
    if (way == Way::Text)
        field.setAsString(value);
    else
        field.setAsStringChar(value.toStdWString().c_str());
}

Q_DECLARE_METATYPE(Way)
