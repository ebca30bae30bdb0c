#include "writers/CrosswalkWriter.h"

#include "text/CsvText.h"

namespace {

QString nameOf(CrosswalkRow::Kind kind)
{
    switch (kind) {
    case CrosswalkRow::Kind::Variable:
        return QStringLiteral("variable");
    case CrosswalkRow::Kind::Value:
        return QStringLiteral("value");
    case CrosswalkRow::Kind::Range:
        break;
    }
    return QStringLiteral("range");
}

} // namespace

void writeCrosswalk(const QVector<CrosswalkRow>& rows, bool forSpreadsheet, const ByteSink& sink)
{
    const CsvWriter csv(sink, forSpreadsheet);
    csv.addLine({ QStringLiteral("old_variable"), QStringLiteral("old_code"),
        QStringLiteral("new_variable"), QStringLiteral("new_code"), QStringLiteral("kind"),
        QStringLiteral("old_label"), QStringLiteral("new_label"), QStringLiteral("old_record"),
        QStringLiteral("new_record"), QStringLiteral("old_label_at") });
    for (const CrosswalkRow& row : rows) {
        const CrosswalkSide& before = row.before;
        const CrosswalkSide& after = row.after;
        csv.addLine({ before.variable, before.code, after.variable, after.code, nameOf(row.kind),
            before.label, after.label, before.record, after.record, row.labelAt });
    }
}
