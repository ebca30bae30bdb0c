#include <model_Tessel/STATADataImport.h>

#include <model_Tessel/Constants.h>
#include <model_Tessel/DebugLog_p.h>
#include <model_Tessel/StatImport_p.h>

#include <cstdint>
#include <cstdio>

namespace {

const QString providerType = QStringLiteral("STATA"); // clazy:exclude=non-pod-global-static

// Kept: libreadstat gives UTF-8, which these labels are not read as.
void appendLatin1(QString& text, const char* label, int size)
{
    text += QLatin1String(label, size);
}

int storageWidth(const readstat_variable_t& variable)
{
    return static_cast<std::int32_t>(readstat_variable_get_storage_width(&variable));
}

constexpr StatRules rules {
    /* unit */ "STATADataImport",
    /* line */ 282,
    /* parse */ readstat_parse_dta,
    /* appendLabel */ appendLatin1,
    /* length */ storageWidth,
    /* wholeWithoutDecimals */ false,
    /* boundsForStrings */ true,
};

} // namespace

int handle_value_label_stata(
    const char* labelSetName, readstat_value_t value, const char* label, void* ctx)
{
    StatImport& import = *static_cast<TSTATADataImport*>(ctx)->m_import;
    return import.guarded([&] { import.addLabel(labelSetName, value, label); });
}

int handle_variable_stata(
    int index, readstat_variable_t* variable, const char* labelSetName, void* ctx)
{
    Q_UNUSED(index)
    auto* importer = static_cast<TSTATADataImport*>(ctx);
    return importer->m_import->guarded([&] {
        auto field = std::make_unique<TSTATAVariable>(importer);
        importer->m_import->describe(*field, *variable, labelSetName);
        TSTATAVariable*& entry = importer->variablesByName[variable->name];
        importer->collectedFields.push_back(field.get());
        entry = field.release();
    });
}

int handle_metadata_stata(readstat_metadata_t* metadata, void* ctx)
{
    auto* importer = static_cast<TSTATADataImport*>(ctx);
    importer->importSlotA = readstat_get_row_count(metadata);
    importer->importSlotB = readstat_get_var_count(metadata);
    return READSTAT_HANDLER_OK;
}

int handle_metadata(readstat_metadata_t* metadata, void* ctx)
{
    Q_UNUSED(metadata)
    Q_UNUSED(ctx)
    return READSTAT_HANDLER_OK;
}

int handle_variable(int index, readstat_variable_t* variable, const char* labelSetName, void* ctx)
{
    Q_UNUSED(index)
    Q_UNUSED(variable)
    Q_UNUSED(labelSetName)
    Q_UNUSED(ctx)
    return READSTAT_HANDLER_OK;
}

int handle_variablexx(int index, readstat_variable_t* variable, const char* labelSetName, void* ctx)
{
    return handle_variable(index, variable, labelSetName, ctx);
}

TSTATADataImport::TSTATADataImport()
    : m_import(std::make_unique<StatImport>(rules, labelSets))
{
    initDataImport();
}

TSTATADataImport::TSTATADataImport(const QString& fileName)
    : TDataImport(fileName)
    , m_import(std::make_unique<StatImport>(rules, labelSets))
{
    initDataImport();
}

// Kept: the fields stay alive for the hosts that hold them.
TSTATADataImport::~TSTATADataImport() = default;

QString TSTATADataImport::getDataProviderId()
{
    return providerType + TokenUnderscore + sourceName;
}

QString TSTATADataImport::getDataProviderType()
{
    return providerType;
}

bool TSTATADataImport::openFile()
{
    openDataImport();
    collectedFields.clear();
    variablesByName.clear();
    importRatio = 1.0;
    openRead(getSourceName());
    return true;
}

QStringList* TSTATADataImport::selectLayoutSource()
{
    TESSEL_DEBUG << "TSTATADataImport - selectLayoutSource";
    return TDataImport::selectLayoutSource();
}

void TSTATADataImport::openRead(const QString& fileName)
{
    const readstat_error_t result =
        m_import->read(fileName, this, handle_value_label_stata, handle_variable_stata);
    for (TGenericField* field : collectedFields)
        addField(field);
    if (result != READSTAT_OK && !m_import->isQuiet()) {
        std::printf("Error processing %s: %d\n", fileName.toLocal8Bit().constData(), result);
        std::fflush(stdout); // before what the host prints by other means
    }
}

void TSTATADataImport::setInput(TStatInput* input)
{
    m_import->setInput(input);
}

void TSTATADataImport::setQuiet(bool isQuiet)
{
    m_import->setQuiet(isQuiet);
}

TSTATAVariable::TSTATAVariable(TDataImport* owner)
    : TGenericField(owner)
{
    auxFlag = true;
}

TSTATAVariable::~TSTATAVariable() = default;

bool TSTATAVariable::isMissing()
{
    return missing;
}

bool TSTATAVariable::isNotApplicable()
{
    return false;
}

bool TSTATAVariable::isBlank()
{
    return isString() && currentText().trimmed().isEmpty();
}
