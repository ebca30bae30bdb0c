#include <tessel_data/SqlNotes.h>

#include <tessel_data/SqlNames.h>

namespace tessel {

namespace {

QString thingText(const SqlThing& thing)
{
    switch (thing.kind) {
    case SqlThing::Kind::Own:
        break;
    case SqlThing::Kind::Table:
        return QStringLiteral("table %1").arg(thing.name);
    case SqlThing::Kind::Part:
        return QStringLiteral("part %1 of table %2").arg(thing.name, thing.owner);
    case SqlThing::Kind::ValueTable:
        return QStringLiteral("the table of value set %1 of %2").arg(thing.name, thing.owner);
    case SqlThing::Kind::Column:
        return QStringLiteral("column %1 of table %2").arg(thing.name, thing.owner);
    case SqlThing::Kind::Index:
        return QStringLiteral("index %1").arg(thing.name);
    case SqlThing::Kind::KeyIndex:
        return QStringLiteral("the index of table %1").arg(thing.owner);
    case SqlThing::Kind::View:
        return QStringLiteral("view %1").arg(thing.name);
    }
    return thing.name;
}

QString partsText(const SqlNote& note)
{
    const QString parts = note.parts > 0
        ? QStringLiteral("%1 parts, to %2").arg(QString::number(note.parts), note.newName)
        : QStringLiteral("parts");
    const QString columns = note.rowColumns.join(QLatin1String(" and "));
    const QString tell =
        note.rowColumns.size() == 1 ? QStringLiteral("column %1 tells") : QStringLiteral("%1 tell");
    return QStringLiteral("%1 has %2 columns, more than the database takes, and is in %3; %4 which "
                          "rows belong together")
        .arg(thingText(note.thing), QString::number(note.columns), parts, tell.arg(columns));
}

} // namespace

QString reasonText(SqlNote::Reason reason)
{
    switch (reason) {
    case SqlNote::Reason::None:
        break;
    case SqlNote::Reason::NotAllowed:
        return QStringLiteral("the databases do not take its name");
    case SqlNote::Reason::Taken:
        return QStringLiteral("its name is taken");
    case SqlNote::Reason::ReservedWord:
        return QStringLiteral("its name is a reserved word");
    case SqlNote::Reason::OtherCharacters:
        return QStringLiteral("its name has other characters than letters, digits and _");
    }
    return QString();
}

QString noteText(const SqlNote& note)
{
    switch (note.kind) {
    case SqlNote::Kind::Renamed:
        return QStringLiteral("%1 is called %2: %3")
            .arg(thingText(note.thing), sqlIdentifier(note.newName), reasonText(note.reason));
    case SqlNote::Kind::Quoted:
        return QStringLiteral("%1 is quoted, %2: %3")
            .arg(thingText(note.thing), sqlIdentifier(note.newName), reasonText(note.reason));
    case SqlNote::Kind::NoColumns:
        return QStringLiteral("%1 has no columns and is left out").arg(thingText(note.thing));
    case SqlNote::Kind::InParts:
        return partsText(note);
    }
    return QString();
}

} // namespace tessel
