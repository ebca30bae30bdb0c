#include "building/DictionaryChange.h"

#include "listing/ListingDiff.h"
#include "reading/CSProListing.h"
#include "writers/DiffTexts.h"

#include <model_Tessel/CSProDataImport.h>
#include <model_Tessel/DictionaryFile.h>

#include <QSet>

namespace {

using Kind = DifferenceKind;
using Property = DifferingProperty;

Listing listed(const QByteArray& dictionary)
{
    DictionaryFileOptions options;
    options.reading = CSProReading::AsWritten;
    const DictionaryFile file = readDictionaryFile(QString(), dictionary, options);
    TCSProDataImport* importer = file.csproImporter();
    return importer ? listFields(QString(), *importer) : Listing();
}

bool isNarrower(const Difference& difference)
{
    const int* before = std::get_if<int>(&difference.before);
    const int* after = std::get_if<int>(&difference.after);
    return before && after && *after < *before;
}

// What is said of lines and columns of data says nothing of a database.
bool breaksDatabase(const Difference& difference)
{
    switch (difference.kind) {
    case Kind::DictionaryChanged:
        return false;
    case Kind::Renamed:
        return true;
    case Kind::RecordChanged:
        return difference.property == Property::Name || difference.property == Property::Level;
    case Kind::Moved:
        return difference.property == Property::Record;
    case Kind::Resized:
        return difference.property == Property::Decimals
            || (difference.property != Property::DecimalChar && isNarrower(difference));
    default:
        return difference.breaks;
    }
}

QString keyOf(const Difference& difference, const PropertyValue& label)
{
    return QStringList { difference.record, difference.variable, difference.valueSet,
        textOf(label) }
        .join(QChar(0));
}

// The labels that codes had before and have now, where the two differ.
struct MovedLabels {
    explicit MovedLabels(const QVector<Difference>& differences)
    {
        for (const Difference& difference : differences) {
            const bool isRelabelled = isRelabelledCode(difference);
            if (isRelabelled)
                before.insert(keyOf(difference, difference.before));
            if (isRelabelled || difference.kind == Kind::ValueAdded)
                after.insert(keyOf(difference, difference.after));
        }
    }
    static bool isRelabelledCode(const Difference& difference)
    {
        return difference.kind == Kind::ValueChanged && difference.property == Property::Label;
    }
    // A label that now stands at another code means that the codes changed their meaning; another
    // wording does not.
    bool haveMoved(const Difference& difference) const
    {
        return isRelabelledCode(difference)
            && (before.contains(keyOf(difference, difference.after))
                || after.contains(keyOf(difference, difference.before)));
    }

    QSet<QString> before;
    QSet<QString> after;
};

} // namespace

QStringList changesThatBreak(const QByteArray& before, const QByteArray& after)
{
    const QVector<Difference> differences = compareListings(listed(before), listed(after));
    const MovedLabels labels(differences);
    QStringList breaking;
    for (const Difference& difference : differences) {
        if (breaksDatabase(difference) || labels.haveMoved(difference))
            breaking.append(textOf(difference));
    }
    return breaking;
}
