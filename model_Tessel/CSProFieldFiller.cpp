#include <model_Tessel/CSProFieldFiller_p.h>

#include <model_Tessel/CSProEstablishedFields_p.h>
#include <model_Tessel/CSProWrittenFields_p.h>

namespace {

// Codes of up to nine digits fit an int; longer numbers become real fields.
constexpr int LongestInteger = 9;

TGenericField::FieldType fieldTypeOf(const TCSProItem& item)
{
    if (item.isAlpha != 0)
        return TGenericField::StringType;
    return item.decimal != 0 || item.len > LongestInteger ? TGenericField::RealType
                                                          : TGenericField::IntegerType;
}

} // namespace

std::unique_ptr<CSProFieldFiller> CSProFieldFiller::create(const TCSPro& dictionary)
{
    if (dictionary.reading() == CSProReading::AsWritten)
        return std::make_unique<CSProWrittenFields>(dictionary);
    return std::make_unique<CSProEstablishedFields>();
}

CSProFieldFiller::~CSProFieldFiller() = default;

void CSProFieldFiller::fill(TCSProVariable& field, const TCSProItem& item)
{
    field.name = item.name;
    field.label = item.label;
    field.length = item.len;
    field.start = item.start;
    field.fieldType = fieldTypeOf(item);
    describe(field, item);
    if (!item.getHasValueSet())
        return;
    if (*item.valueSets != m_valueSets || field.fieldType != m_fieldType) {
        m_valueSets = *item.valueSets;
        m_fieldType = field.fieldType;
        m_labels = QString();
        summarize(m_valueSets);
    }
    field.valueLabels = m_labels;
    bound(field);
}
