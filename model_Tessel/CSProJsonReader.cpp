#include <model_Tessel/CSProJsonReader_p.h>

#include <model_Tessel/CSProLengthRange_p.h>
#include <model_Tessel/CSProWrittenReader_p.h>
#include <model_Tessel/Numbers_p.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <stdexcept>

namespace {

const char utf8Mark[] = "\xEF\xBB\xBF";

QByteArray withoutMark(const QByteArray& bytes)
{
    return bytes.startsWith(utf8Mark) ? bytes.mid(3) : bytes;
}

QString yesOrNo(bool value)
{
    return value ? QStringLiteral("Yes") : QStringLiteral("No");
}

bool isContentType(const QString& name)
{
    for (const char* known : { "numeric", "alpha", "audio", "document", "geometry", "image" }) {
        if (name == QLatin1String(known))
            return true;
    }
    return false;
}

bool isSubItem(const QJsonObject& item)
{
    return item.value(QLatin1String("subitem")).toBool();
}

} // namespace

bool isJson(const QByteArray& bytes)
{
    return withoutMark(bytes.left(4096)).trimmed().startsWith('{');
}

CSProJsonReader::Step::Step(CSProJsonReader& reader, const QJsonObject& object)
    : m_reader(reader)
{
    const QString name = object.value(QLatin1String("name")).toString();
    m_reader.m_path.append(name.isEmpty() ? QStringLiteral("(unnamed)") : name);
}

CSProJsonReader::Step::~Step()
{
    m_reader.m_path.removeLast();
}

CSProJsonReader::CSProJsonReader(CSProModel& model, CSProBuilder& builder)
    : m_model(model)
    , m_builder(builder)
{
}

void CSProJsonReader::read(const QByteArray& bytes, int& line)
{
    const QByteArray json = withoutMark(bytes);
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(json, &error);
    if (error.error != QJsonParseError::NoError) {
        line = json.left(error.offset).count('\n');
        m_builder.report(Kind::InvalidJson, line + 1, QString(), error.errorString());
        throw std::runtime_error("invalid JSON");
    }
    const QJsonObject root = document.object();
    if (!root.value(QLatin1String("levels")).isArray()) {
        m_builder.report(Kind::InvalidJson, 0, QString(),
            QStringLiteral("it has no levels, so it is no CSPro dictionary"));
        throw std::runtime_error("no dictionary");
    }
    readRoot(root);
}

void CSProJsonReader::readRoot(const QJsonObject& root)
{
    reportUnknown(root,
        { "software", "version", "fileType", "editable", "name", "aliases", "labels", "note",
            "languages", "security", "readOptimization", "enableBinaryItems", "recordType",
            "defaults", "relativePositions", "levels", "relations" });
    forEachObject(root, "languages", [&](const QJsonObject& language) {
        const QString name = text(language, "name");
        m_languages.insert(name, m_builder.addLanguage({ name, text(language, "label") }));
    });
    m_model.version = text(root, "software");
    const QJsonValue version = member(root, "version");
    if (version.isDouble())
        m_model.version += QLatin1Char(' ') + QString::number(version.toDouble(), 'f', 1);
    else if (!version.isUndefined())
        reportType("version");
    m_model.name = text(root, "name");
    m_model.label = labels(root);
    m_builder.setNote(text(root, "note"));
    const QJsonObject recordType = object(root, "recordType");
    m_model.recordTypeStart = number(recordType, "start", 0);
    m_model.recordTypeLen = number(recordType, "length", 0);
    const QJsonObject defaults = object(root, "defaults");
    m_zeroFill = flag(defaults, "zeroFill", false);
    m_model.zeroFill = yesOrNo(m_zeroFill);
    m_model.decimalChar = yesOrNo(flag(defaults, "decimalMark", false));
    m_isRelative = flag(root, "relativePositions", true);
    m_model.positions = m_isRelative ? QStringLiteral("Relative") : QStringLiteral("Absolute");
    m_firstColumn = lastFixedColumn(root) + 1;

    forEachObject(root, "levels", [&](const QJsonObject& level) { readLevel(level); });
    forEachObject(root, "relations", [&](const QJsonObject& relation) { readRelation(relation); });
}

// The last column that the record type and the identification items of all levels use.
int CSProJsonReader::lastFixedColumn(const QJsonObject& root)
{
    qint64 last =
        m_model.recordTypeLen > 0 ? qint64(m_model.recordTypeStart) + m_model.recordTypeLen - 1 : 0;
    const QJsonArray levels = root.value(QLatin1String("levels")).toArray();
    for (const QJsonValue& level : levels) {
        const QJsonObject ids = level.toObject().value(QLatin1String("ids")).toObject();
        const QJsonArray items = ids.value(QLatin1String("items")).toArray();
        for (const QJsonValue& value : items) {
            const QJsonObject item = value.toObject();
            if (isSubItem(item))
                continue;
            const qint64 start = item.value(QLatin1String("start")).toInt();
            const qint64 length = item.value(QLatin1String("length")).toInt();
            last = std::max(last, start + length - 1);
        }
    }
    return columnWithin(JsonColumns, last);
}

void CSProJsonReader::readLevel(const QJsonObject& level)
{
    const Step step(*this, level);
    reportUnknown(level, { "name", "aliases", "labels", "note", "ids", "records" });
    m_builder.addLevel({ text(level, "name"), labels(level), text(level, "note") });
    m_model.currentRecord = m_model.commonRecord;
    readItems(array(object(level, "ids"), "items"));
    forEachObject(level, "records", [&](const QJsonObject& record) { readRecord(record); });
}

void CSProJsonReader::readRecord(const QJsonObject& object)
{
    const Step step(*this, object);
    reportUnknown(
        object, { "name", "aliases", "labels", "note", "recordType", "occurrences", "items" });
    auto record = std::make_unique<TCSProRecord>();
    record->name = text(object, "name");
    record->label = labels(object);
    record->note = text(object, "note");
    record->recordTypeValue = text(object, "recordType");
    const QJsonObject occurrences = this->object(object, "occurrences");
    record->required = yesOrNo(flag(occurrences, "required", true));
    record->maxRecords = number(occurrences, "maximum", 1);
    record->occurrenceLabels = occurrenceLabels(occurrences, record->maxRecords);
    TCSProRecord* added = record.get();
    m_builder.addRecord(std::move(record));
    m_nextColumn = m_firstColumn;
    readItems(array(object, "items"));
    qint64 last = m_firstColumn - 1;
    const int count = m_model.items->size();
    for (int i = count - 1; i >= 0 && m_model.items->at(i)->record == added; --i) {
        const TCSProItem* item = m_model.items->at(i);
        last = std::max(last, qint64(item->start) + item->len - 1);
    }
    added->recordLen = columnWithin(JsonColumns, last);
}

void CSProJsonReader::readItems(const QJsonArray& items)
{
    for (const QJsonValue& item : items) {
        if (item.isObject())
            readItem(item.toObject());
        else
            reportType("items");
    }
}

void CSProJsonReader::readItem(const QJsonObject& object)
{
    const Step step(*this, object);
    reportUnknown(object,
        { "name", "aliases", "labels", "note", "contentType", "start", "length", "subitem",
            "subitemOffset", "decimals", "decimalMark", "zeroFill", "occurrences", "capture",
            "valueSets" });
    CSProBuilder::ItemPointer item(new TCSProItem);
    item->name = text(object, "name");
    item->label = labels(object);
    CSProItemDetail& detail = item->editDetail();
    detail.note = text(object, "note");
    const QString contentType = text(object, "contentType").toLower();
    const bool isNumeric = contentType == QLatin1String("numeric");
    item->isAlpha = isNumeric ? 0 : 1;
    if (!isNumeric && contentType != QLatin1String("alpha"))
        detail.contentType = contentType;
    if (!isContentType(contentType))
        reportType("contentType");
    item->isSubItem = flag(object, "subitem", false) ? 1 : 0;
    item->len = number(object, "length", 0);
    item->decimal = number(object, "decimals", 0);
    item->hasDecimalChar = flag(object, "decimalMark", false);
    item->isZeroFill = isNumeric && flag(object, "zeroFill", m_zeroFill);
    const QJsonObject occurrences = this->object(object, "occurrences");
    item->occurrences = number(occurrences, "maximum", 1);
    detail.occurrenceLabels = occurrenceLabels(occurrences, item->occurrences);
    placeItem(object, *item);
    m_itemLength = item->len;
    m_model.lastItemNumeric = isNumeric;
    m_builder.addItem(std::move(item));
    forEachObject(
        object, "valueSets", [&](const QJsonObject& valueSet) { readValueSet(valueSet); });
}

// With relative positions each item begins behind the one before it, and a subitem in its parent.
void CSProJsonReader::placeItem(const QJsonObject& object, TCSProItem& item)
{
    const bool hasStart = object.contains(QLatin1String("start"));
    if (item.isSubItem != 0) {
        const qint64 offset = number(object, "subitemOffset", 0);
        item.start = columnWithin(JsonColumns, m_parentStart + offset);
        if (hasStart)
            item.start = number(object, "start", item.start);
        return;
    }
    item.start = hasStart ? number(object, "start", m_nextColumn) : m_nextColumn;
    m_parentStart = item.start;
    m_nextColumn = columnWithin(JsonColumns, item.start + qint64(item.len) * item.occurrences);
}

void CSProJsonReader::readValueSet(const QJsonObject& object)
{
    const Step step(*this, object);
    if (m_builder.ignoresValueSets()) {
        m_builder.reportValueSet(Kind::ValueSetIgnored, 0, text(object, "name"));
        return;
    }
    reportUnknown(object, { "name", "aliases", "labels", "note", "link", "values" });
    CSProBuilder::ValueSetPointer valueSet(new TCSProValueSet);
    valueSet->name = text(object, "name");
    valueSet->label = labels(object);
    valueSet->setNote(text(object, "note"));
    valueSet->setLink(text(object, "link"));
    valueSet->isNumeric = m_model.lastItemNumeric;
    forEachObject(object, "values", [&](const QJsonObject& value) { readValue(value, *valueSet); });
    m_builder.addValueSet(std::move(valueSet));
}

void CSProJsonReader::readValue(const QJsonObject& object, TCSProValueSet& valueSet)
{
    reportUnknown(object, { "labels", "pairs", "special", "note", "image", "textColor" });
    const QString special = text(object, "special");
    const CSProSpecial::Type type = csproSpecialType(special);
    if (!special.isEmpty() && type == CSProSpecial::Ordinary)
        m_builder.reportValueSet(Kind::UnknownSpecial, 0, valueSet.name, special);
    const QString label = labels(object);
    CSProValueDetail detail;
    detail.note = text(object, "note");
    detail.image = text(object, "image");
    detail.textColor = text(object, "textColor");
    if (member(object, "pairs").toArray().isEmpty())
        return reportType("pairs");
    forEachObject(object, "pairs", [&](const QJsonObject& pair) {
        reportUnknown(pair, { "value", "range" });
        auto entry = std::make_unique<TValueSetItem>();
        if (!readPair(pair, *entry, detail.highCode))
            return reportType("pairs");
        // The data have a special code as wide as the item; here it stands without trailing blanks.
        if (type != CSProSpecial::Ordinary && (!valueSet.isNumeric || entry->code.isEmpty()))
            entry->code = entry->code.leftJustified(std::min(m_itemLength, CSProMostColumns));
        entry->label = label;
        entry->type = type;
        entry->special = type != CSProSpecial::Ordinary;
        valueSet.setDetail(entry.get(), detail);
        valueSet.addItem(entry.release());
        detail.isFurtherCode = true;
    });
}

// A code or the two bounds of a range, as texts; false for anything else.
bool CSProJsonReader::readPair(const QJsonObject& pair, TValueSetItem& entry, QString& highCode)
{
    const QJsonValue value = member(pair, "value");
    const QJsonArray range = member(pair, "range").toArray();
    if (value.isString()) {
        entry.code = value.toString();
        highCode = QString();
        return true;
    }
    if (range.size() != 2 || !range.at(0).isString() || !range.at(1).isString())
        return false;
    entry.code = range.at(0).toString();
    highCode = range.at(1).toString();
    return true;
}

void CSProJsonReader::readRelation(const QJsonObject& object)
{
    const Step step(*this, object);
    reportUnknown(object, { "name", "primary", "links" });
    const auto link = [this](const QJsonObject& parent, const char* name) {
        const QString item = text(parent, name);
        return item == QLatin1String("(occurrence)") ? QString() : item;
    };
    CSProRelation relation { text(object, "name"), text(object, "primary"), {} };
    forEachObject(object, "links", [&](const QJsonObject& entry) {
        reportUnknown(entry, { "primaryLink", "secondary", "secondaryLink" });
        relation.links.append(
            { link(entry, "primaryLink"), text(entry, "secondary"), link(entry, "secondaryLink") });
    });
    m_builder.addRelation(relation);
}

// The texts of all languages joined by "|", as the text form has them.
QString CSProJsonReader::labels(const QJsonObject& object)
{
    QStringList texts;
    forEachObject(object, "labels", [&](const QJsonObject& label) {
        const QJsonValue name = member(label, "language");
        const int language = name.isUndefined() ? 0 : m_languages.value(name.toString(), -1);
        if (language < 0)
            return reportType("language");
        while (texts.size() <= language)
            texts.append(QString());
        texts[language] = text(label, "text");
    });
    return texts.join(QLatin1Char('|'));
}

QVector<QString> CSProJsonReader::occurrenceLabels(const QJsonObject& occurrences, int maximum)
{
    const int most = std::min(maximum, CSProMostColumns);
    QVector<QString> texts;
    forEachObject(occurrences, "labels", [&](const QJsonObject& label) {
        const int occurrence = number(label, "occurrence", 0);
        if (occurrence < 1 || occurrence > most)
            return reportType("occurrence");
        if (texts.size() < occurrence)
            texts.resize(occurrence);
        texts[occurrence - 1] = labels(label);
    });
    return texts;
}

QJsonValue CSProJsonReader::member(const QJsonObject& object, const char* name)
{
    return object.value(QLatin1String(name));
}

QString CSProJsonReader::text(const QJsonObject& object, const char* name)
{
    const QJsonValue value = member(object, name);
    if (!value.isString() && !value.isUndefined())
        reportType(name);
    return value.toString();
}

int CSProJsonReader::number(const QJsonObject& object, const char* name, int defaultValue)
{
    const QJsonValue value = member(object, name);
    if (value.isUndefined())
        return defaultValue;
    constexpr int unset = -1;
    if (!value.isDouble() || (value.toInt(unset) == unset && value.toDouble() != unset)) {
        reportType(name);
        return defaultValue;
    }
    return value.toInt();
}

bool CSProJsonReader::flag(const QJsonObject& object, const char* name, bool defaultValue)
{
    const QJsonValue value = member(object, name);
    if (!value.isBool() && !value.isUndefined())
        reportType(name);
    return value.toBool(defaultValue);
}

QJsonObject CSProJsonReader::object(const QJsonObject& parent, const char* name)
{
    const QJsonValue value = member(parent, name);
    if (!value.isObject() && !value.isUndefined())
        reportType(name);
    return value.toObject();
}

QJsonArray CSProJsonReader::array(const QJsonObject& parent, const char* name)
{
    const QJsonValue value = member(parent, name);
    if (!value.isArray() && !value.isUndefined())
        reportType(name);
    return value.toArray();
}

template <typename Read>
void CSProJsonReader::forEachObject(const QJsonObject& parent, const char* name, Read read)
{
    const QJsonArray elements = array(parent, name);
    for (const QJsonValue& element : elements) {
        if (element.isObject())
            read(element.toObject());
        else
            reportType(name);
    }
}

void CSProJsonReader::reportType(const char* name)
{
    const QStringList path = m_path + QStringList(QLatin1String(name));
    m_builder.report(
        Kind::WrongJsonType, 0, m_path.value(m_path.size() - 1), path.join(QLatin1Char('/')));
}

void CSProJsonReader::reportUnknown(
    const QJsonObject& object, std::initializer_list<const char*> known)
{
    for (auto entry = object.begin(); entry != object.end(); ++entry) {
        const bool isKnown = std::any_of(known.begin(), known.end(),
            [&](const char* name) { return entry.key() == QLatin1String(name); });
        if (!isKnown) {
            m_builder.report(Kind::UnknownKey, 0, m_path.join(QLatin1Char('/')), entry.key());
        }
    }
}
