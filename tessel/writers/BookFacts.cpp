#include "writers/BookFacts.h"

#include "text/ShownText.h"
#include "writers/ListingNames.h"

#include <QFileInfo>

namespace {

const ListedField& fieldOf(const Listing& listing, const BookEntry& entry)
{
    return listing.fields.at(entry.first());
}

struct Columns {
    int from = 0;
    int to = 0;
};

// Occurrences that follow each other at once are one piece.
QVector<Columns> piecesOf(const Listing& listing, const BookEntry& entry)
{
    QVector<Columns> pieces;
    for (const int index : entry.fields) {
        const ListedField& field = listing.fields.at(index);
        const int end = field.start + field.length - 1;
        if (!pieces.isEmpty() && pieces.constLast().to + 1 == field.start)
            pieces.last().to = end;
        else
            pieces.append({ field.start, end });
    }
    return pieces;
}

QString textOf(const Columns& columns)
{
    return columns.from == columns.to
        ? QString::number(columns.from)
        : QStringLiteral("%1\u2013%2").arg(columns.from).arg(columns.to);
}

// In the languages of most dictionaries, before a colon.
bool tellsUniverse(const QString& line)
{
    const QString word = line.section(QLatin1Char(':'), 0, 0).trimmed().toLower();
    return line.contains(QLatin1Char(':'))
        && (word == QLatin1String("universe") || word == QLatin1String("univers")
            || word == QLatin1String("universo"));
}

QString decimalsText(const ListedField& field)
{
    QString decimals = plural(field.decimals, QStringLiteral("decimal"));
    switch (field.decimalPoint()) {
    case DecimalPoint::Implied:
        return decimals + QLatin1String(", implied: the point is in no column");
    case DecimalPoint::InData:
        return decimals + QLatin1String(", point in the data");
    case DecimalPoint::Untold:
        break;
    }
    return decimals;
}

} // namespace

QStringList sourceFacts(const Listing& listing)
{
    QStringList facts { QFileInfo(listing.file).fileName(), listing.name, listing.version,
        listing.encoding };
    if (listing.rowCount >= 0)
        facts.append(plural(listing.rowCount, QStringLiteral("row")));
    if (listing.recordTypeLength > 0) {
        facts.append(QStringLiteral("record type at column %1, length %2")
                         .arg(listing.recordTypeStart)
                         .arg(listing.recordTypeLength));
    }
    facts.removeAll(QString());
    return facts;
}

QStringList recordFacts(const Listing& listing, const ListedRecord& record)
{
    QStringList facts;
    if (!record.recordType.isEmpty())
        facts.append(QStringLiteral("record type %1").arg(shownCode(record.recordType)));
    if (record.level > 0 && listing.levels.size() > 1)
        facts.append(QStringLiteral("level %1").arg(record.level));
    facts.append(record.isRequired ? QStringLiteral("required") : QStringLiteral("not required"));
    facts.append(QStringLiteral("at most %1 in a case").arg(record.maxRecords));
    facts.append(QStringLiteral("length %1").arg(record.length));
    return facts;
}

QStringList entryFacts(const Listing& listing, const BookEntry& entry)
{
    const ListedField& field = fieldOf(listing, entry);
    QStringList facts;
    if (field.isIdentification && field.level > 0 && listing.levels.size() > 1)
        facts.append(QStringLiteral("level %1").arg(field.level));
    if (entry.fields.size() > 1) {
        facts.append(QStringLiteral("%1 occurrences, %2 to %3")
                         .arg(QString::number(entry.fields.size()), field.name,
                             listing.fields.at(entry.fields.constLast()).name));
    }
    if (field.decimals > 0)
        facts.append(decimalsText(field));
    if (field.isZeroFilled)
        facts.append(QStringLiteral("filled with zeros"));
    if (field.hasRange())
        facts.append(QLatin1String("range ") + rangeText(field));
    if (!field.parent.isNull())
        facts.append(QStringLiteral("part of %1").arg(field.parent));
    return facts;
}

QString columnsText(const Listing& listing, const BookEntry& entry)
{
    if (!fieldOf(listing, entry).hasColumns())
        return QString();
    constexpr int MostPieces = 4;
    const QVector<Columns> pieces = piecesOf(listing, entry);
    QStringList texts;
    for (int i = 0; i < pieces.size() && i < MostPieces - 1; ++i)
        texts.append(textOf(pieces.at(i)));
    if (pieces.size() > MostPieces)
        texts.append(QStringLiteral("\u2026"));
    if (pieces.size() >= MostPieces)
        texts.append(textOf(pieces.constLast()));
    return texts.join(QLatin1String(", "));
}

// Of several value sets one has the range.
QString rangeText(const ListedField& field)
{
    const QString range = QStringLiteral("%1 to %2").arg(field.min, field.max);
    return field.valueSets.size() > 1 && !field.rangeValueSet.isNull()
        ? QStringLiteral("%1 (%2)").arg(range, field.rangeValueSet)
        : range;
}

QString typeText(const Listing& listing, const BookEntry& entry)
{
    const ListedField& field = fieldOf(listing, entry);
    QStringList texts { nameOf(field.type), field.format, nameOf(field.measure) };
    if (field.decimals > 0 && field.hasColumns())
        texts.append(shownDecimals(field.decimals, field.decimalPoint()));
    if (field.isZeroFilled)
        texts.append(QStringLiteral("zeros"));
    if (entry.fields.size() > 1)
        texts.append(QStringLiteral("\u00d7 %1").arg(entry.fields.size()));
    texts.removeAll(QString());
    return texts.join(QLatin1String(", "));
}

QStringList missingTexts(const ListedField& field)
{
    QStringList texts;
    if (!field.missing.isNull())
        texts.append(QLatin1String("missing ") + shownCodes(field.missing));
    if (!field.notApplicable.isNull())
        texts.append(QLatin1String("n/a ") + shownCodes(field.notApplicable));
    return texts;
}

QString codeText(const ListedCode& code)
{
    return code.isRange()
        ? QStringLiteral("%1 to %2").arg(shownCode(code.code), shownCode(code.highCode))
        : shownCode(code.code);
}

QString nameOf(const Listing& listing, const BookEntry& entry)
{
    const ListedField& field = fieldOf(listing, entry);
    return entry.fields.size() > 1 ? field.item : field.name;
}

BookNote noteOf(const QString& text)
{
    BookNote note;
    QStringList others;
    const QStringList lines = text.split(QLatin1Char('\n'));
    for (const QString& line : lines) {
        if (note.universe.isEmpty() && tellsUniverse(line))
            note.universe = line.section(QLatin1Char(':'), 1).trimmed();
        else
            others.append(line);
    }
    note.text = others.join(QLatin1Char('\n')).trimmed();
    return note;
}
