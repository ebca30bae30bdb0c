#pragma once

#include <model_Tessel/CSPro.h>

#include <QString>
#include <QStringList>

// Problems of a dictionary as texts that a test compares.

inline QString kindName(CSProProblem::Kind kind)
{
    using Kind = CSProProblem::Kind;
    switch (kind) {
    case Kind::ItemWithoutLength:
        return QStringLiteral("ItemWithoutLength");
    case Kind::ItemWithoutStart:
        return QStringLiteral("ItemWithoutStart");
    case Kind::ItemDropped:
        return QStringLiteral("ItemDropped");
    case Kind::RecordTypeRepeated:
        return QStringLiteral("RecordTypeRepeated");
    case Kind::ValueSetIgnored:
        return QStringLiteral("ValueSetIgnored");
    case Kind::ValueSetWithoutItem:
        return QStringLiteral("ValueSetWithoutItem");
    case Kind::ValueSetOnLastOccurrence:
        return QStringLiteral("ValueSetOnLastOccurrence");
    case Kind::DecimalCodesDropped:
        return QStringLiteral("DecimalCodesDropped");
    case Kind::DecimalCodesConverted:
        return QStringLiteral("DecimalCodesConverted");
    case Kind::CodesNotInteger:
        return QStringLiteral("CodesNotInteger");
    case Kind::TooManyItems:
        return QStringLiteral("TooManyItems");
    case Kind::UnknownSection:
        return QStringLiteral("UnknownSection");
    case Kind::UnknownKey:
        return QStringLiteral("UnknownKey");
    case Kind::LineWithoutKey:
        return QStringLiteral("LineWithoutKey");
    case Kind::LineOutsideSection:
        return QStringLiteral("LineOutsideSection");
    case Kind::RepeatedKey:
        return QStringLiteral("RepeatedKey");
    case Kind::NotANumber:
        return QStringLiteral("NotANumber");
    case Kind::UnknownWord:
        return QStringLiteral("UnknownWord");
    case Kind::UnknownSpecial:
        return QStringLiteral("UnknownSpecial");
    case Kind::UnclosedQuote:
        return QStringLiteral("UnclosedQuote");
    case Kind::RangeReversed:
        return QStringLiteral("RangeReversed");
    case Kind::CodeNotANumber:
        return QStringLiteral("CodeNotANumber");
    case Kind::SubItemWithoutParent:
        return QStringLiteral("SubItemWithoutParent");
    case Kind::LinkWithoutValues:
        return QStringLiteral("LinkWithoutValues");
    case Kind::InvalidJson:
        return QStringLiteral("InvalidJson");
    case Kind::WrongJsonType:
        return QStringLiteral("WrongJsonType");
    }
    return QStringLiteral("another kind");
}

inline QString problemText(const CSProProblem& problem)
{
    const QStringList parts { kindName(problem.kind), QString::number(problem.line), problem.name,
        problem.valueSet, problem.text };
    return parts.join(QLatin1Char('|'));
}

inline QStringList problemTexts(const TCSPro& parser)
{
    QStringList texts;
    for (const CSProProblem& problem : parser.problems())
        texts.append(problemText(problem));
    return texts;
}
