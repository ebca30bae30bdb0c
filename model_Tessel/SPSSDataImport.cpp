#include <model_Tessel/SPSSDataImport.h>

#include <model_Tessel/Constants.h>
#include <model_Tessel/StatImport_p.h>

namespace {

const QString providerType = QStringLiteral("SPSS"); // clazy:exclude=non-pod-global-static

void appendUtf8(QString& text, const char* label, int size)
{
    text += QString::fromUtf8(label, size);
}

// Kept: the first digit of the format's width alone, so F10.2 gives 1 and DATE11 gives 0.
int firstDigitOfWidth(const readstat_variable_t& variable)
{
    const char digit = variable.format[0] == '\0' ? '\0' : variable.format[1];
    return digit >= '0' && digit <= '9' ? digit - '0' : 0;
}

constexpr StatRules rules {
    /* unit */ "SPSSDataImport",
    /* line */ 304,
    /* parse */ readstat_parse_sav,
    /* appendLabel */ appendUtf8,
    /* length */ firstDigitOfWidth,
    /* wholeWithoutDecimals */ true,
    /* boundsForStrings */ false,
};

} // namespace

int handle_value_label_spss(
    const char* labelSetName, readstat_value_t value, const char* label, void* ctx)
{
    StatImport& import = *static_cast<TSPSSDataImport*>(ctx)->m_import;
    return import.guarded([&] { import.addLabel(labelSetName, value, label); });
}

int handle_variable_spss(
    int index, readstat_variable_t* variable, const char* labelSetName, void* ctx)
{
    Q_UNUSED(index)
    auto* importer = static_cast<TSPSSDataImport*>(ctx);
    return importer->m_import->guarded([&] {
        auto field = std::make_unique<TSPSSVariable>(importer);
        importer->m_import->describe(*field, *variable, labelSetName);
        TSPSSVariable*& entry = importer->variablesByName[variable->name];
        importer->collectedFields.push_back(field.get());
        entry = field.release();
    });
}

int handle_metadata_spss(readstat_metadata_t* metadata, void* ctx)
{
    *static_cast<int*>(ctx) = readstat_get_row_count(metadata);
    return READSTAT_HANDLER_OK;
}

TSPSSDataImport::TSPSSDataImport()
    : m_import(std::make_unique<StatImport>(rules, labelSets))
{
    initDataImport();
}

TSPSSDataImport::TSPSSDataImport(const QString& fileName)
    : TDataImport(fileName)
    , m_import(std::make_unique<StatImport>(rules, labelSets))
{
    initDataImport();
}

// Kept: the fields stay alive for the hosts that hold them.
TSPSSDataImport::~TSPSSDataImport() = default;

QString TSPSSDataImport::getDataProviderId()
{
    return providerType + TokenUnderscore + sourceName;
}

QString TSPSSDataImport::getDataProviderType()
{
    return providerType;
}

// Kept: the collected fields are not emptied, so opening twice doubles them.
bool TSPSSDataImport::openFile()
{
    openDataImport();
    importRatio = 1.0;
    openRead(getSourceName());
    return true;
}

QStringList* TSPSSDataImport::selectLayoutSource()
{
    return TDataImport::selectLayoutSource();
}

// Kept: what libreadstat says of the file is passed over.
void TSPSSDataImport::openRead(const QString& fileName)
{
    m_import->read(fileName, this, handle_value_label_spss, handle_variable_spss);
    for (TGenericField* field : collectedFields)
        addField(field);
}

void TSPSSDataImport::setInput(TStatInput* input)
{
    m_import->setInput(input);
}

TSPSSVariable::TSPSSVariable(TDataImport* owner)
    : TGenericField(owner)
{
    auxFlag = true;
}

TSPSSVariable::~TSPSSVariable() = default;

bool TSPSSVariable::isMissing()
{
    return true;
}

bool TSPSSVariable::isNotApplicable()
{
    return false;
}

bool TSPSSVariable::isBlank()
{
    return isString() && currentText().trimmed().isEmpty();
}
