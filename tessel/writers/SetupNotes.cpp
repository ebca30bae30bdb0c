#include "writers/SetupPlan.h"

#include "text/ShownText.h"

using tessel::StatProgram;

namespace {

using Kind = SetupNote::Kind;

QString placeOf(const SetupNote& note)
{
    return note.record.isNull() ? note.thing
                                : QStringLiteral("%1 of %2").arg(note.thing, note.record);
}

// Why labels are left out.
QString labelsReason(const SetupNote& note, const QString& program)
{
    switch (note.kind) {
    case Kind::LabelsOfTexts:
        return QStringLiteral("as %1 has none for texts").arg(program);
    case Kind::LabelsOfDecimals:
        return QStringLiteral("as %1 has none for numbers with decimals").arg(program);
    case Kind::LabelsOfRanges:
        return QStringLiteral("as %1 has none for ranges").arg(program);
    case Kind::LabelOfBlank:
        return QStringLiteral("as %1 has none for blank numbers").arg(program);
    case Kind::LabelsTooLarge:
        return QStringLiteral("as %1 has none for numbers so large").arg(program);
    case Kind::RepeatedCodes:
        return QStringLiteral("as an earlier one has the same value");
    default:
        return note.count == 1 ? QStringLiteral("as its code is no value of the variable")
                               : QStringLiteral("as their codes are no values of the variable");
    }
}

QString labelsText(const SetupNote& note, const QString& program)
{
    return QStringLiteral("value set %1: %2 left out, %3")
        .arg(note.thing, plural(note.count, QStringLiteral("label")), labelsReason(note, program));
}

} // namespace

QString noteText(const SetupNote& note, StatProgram program)
{
    const QString name = statProgramName(program);
    switch (note.kind) {
    case Kind::Renamed:
        return QStringLiteral("%1 is called %2: %3")
            .arg(placeOf(note), note.newName, reasonText(note.reasons, program));
    case Kind::LabelCut:
        return QStringLiteral("the label of %1 is cut, as %2 takes no longer one")
            .arg(placeOf(note), name);
    case Kind::ValueLabelsCut:
        return QStringLiteral("value set %1: %2 cut, as %3 takes no longer %4")
            .arg(note.thing, plural(note.count, QStringLiteral("label")), name,
                note.count == 1 ? QStringLiteral("one") : QStringLiteral("ones"));
    case Kind::CharactersReplaced:
        return QStringLiteral("characters in labels of %1 that %2 does not take are replaced")
            .arg(placeOf(note), name);
    case Kind::LabelsOfTexts:
    case Kind::LabelsOfDecimals:
    case Kind::LabelsOfRanges:
    case Kind::LabelOfBlank:
    case Kind::LabelsTooLarge:
    case Kind::RepeatedCodes:
    case Kind::UnreadableCodes:
        return labelsText(note, name);
    case Kind::FurtherSets:
        return QStringLiteral("%1 has %2 that the program does not have, as %3 takes one")
            .arg(placeOf(note), plural(note.count, QStringLiteral("further value set")), name);
    case Kind::MissingOfTexts:
        return QStringLiteral("value set %1: %2 not declared, as %3 has no missing texts but blank")
            .arg(note.thing, plural(note.count, QStringLiteral("missing text")), name);
    case Kind::MissingTooMany:
        return QStringLiteral("value set %1: %2 not declared, as %3 takes no more of them")
            .arg(note.thing, plural(note.count, QStringLiteral("missing value")), name);
    case Kind::WideNumber:
        return QStringLiteral("%1 is read as text, without value labels, as numbers of %2 hold 15 "
                              "digits")
            .arg(placeOf(note), name);
    case Kind::WideText:
        return QStringLiteral("%1 is cut after %2 bytes, as %3 takes no longer texts")
            .arg(placeOf(note), QString::number(note.count), name);
    case Kind::Binary:
        return QStringLiteral("%1 is left out, as text data do not hold it").arg(placeOf(note));
    case Kind::NoColumns:
        return QStringLiteral("%1 has no columns and is left out").arg(placeOf(note));
    case Kind::Bytes:
        return QStringLiteral("%1 has texts, and %2 counts bytes: in a line of UTF-8 with other "
                              "characters than ASCII its columns are not found; for such data use "
                              "'tessel convert'")
            .arg(placeOf(note), name);
    case Kind::NoRecords:
        return QStringLiteral("no record has columns, so the program reads nothing");
    }
    return QString();
}

QString groupOf(const SetupNote& note)
{
    return QStringLiteral("setup %1").arg(int(note.kind));
}
