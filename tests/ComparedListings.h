#pragma once

#include "listing/Listing.h"

// A small dictionary made by hand, which tests change and compare.

inline ListedField field(const char* record, const char* name, int start, int length)
{
    ListedField field;
    field.record = QString::fromLatin1(record);
    field.isIdentification = field.record.isNull();
    field.name = field.item = QString::fromLatin1(name);
    field.type = ValueType::Integer;
    field.start = start;
    field.length = length;
    return field;
}

inline Listing survey()
{
    Listing listing;
    listing.kind = ListingKind::CSPro;
    listing.recordTypeStart = 1;
    listing.recordTypeLength = 1;
    listing.records = { { "HOUSE", "House", "1", 1, 1, 30 },
        { "PERSON", "Person", "2", 1, 20, 30 } };
    listing.fields = { field(nullptr, "AREA", 2, 3), field("HOUSE", "ROOMS", 5, 2),
        field("PERSON", "SEX", 5, 1), field("PERSON", "AGE", 6, 3) };
    ListedValueSet sexes { "SEX_VS1", "Sex", { { "1", {}, "Male" }, { "2", {}, "Female" } } };
    listing.fields[2].valueSets.append(sexes);
    ListedField& age = listing.fields[3];
    age.missing = "999";
    age.valueSets.append({ "AGE_VS1", "Age",
        { { "0", "120", "Years" }, { "999", {}, "Unknown", SpecialCode::Missing } } });
    for (int i = 1; i <= 3; ++i) {
        ListedField spoken = field("PERSON", "LANGUAGE", 9 + i, 1);
        spoken.name += "_" + QString::number(i);
        spoken.occurrence = i;
        listing.fields.append(spoken);
    }
    ListedField weight = field("PERSON", "WEIGHT", 20, 6);
    weight.type = ValueType::Real;
    weight.decimals = 2;
    listing.fields.append(weight);
    ListedField place = field("HOUSE", "PLACE", 10, 4);
    place.type = ValueType::String;
    place.valueSets.append({ "PLACE_VS1", "Place", { { "A ", {}, "North" } } });
    listing.fields.append(place);
    return listing;
}

inline Listing variables(ListingKind kind)
{
    Listing listing = survey();
    listing.kind = kind;
    listing.records.clear();
    listing.recordTypeLength = 0;
    for (ListedField& variable : listing.fields) {
        variable.record = QString();
        variable.isIdentification = false;
        variable.start = 0;
        variable.item = variable.name;
    }
    return listing;
}

inline ListedField& named(Listing& listing, const QString& name)
{
    for (ListedField& field : listing.fields) {
        if (field.name == name)
            return field;
    }
    qFatal("no field %s", qPrintable(name));
}
