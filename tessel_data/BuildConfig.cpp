#include <tessel_data/BuildConfig.h>

#include <tessel_data/NearestNames_p.h>
#include <tessel_data/PostgresTarget.h>

#include <model_Tessel/DictionaryRelease.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <utility>

namespace tessel {

namespace {

constexpr int Version = 1;

const QString& versionKey()
{
    static const QString key = QStringLiteral("tessel_build");
    return key;
}

// Takes the keys of one JSON object; the first thing that is wrong is kept.
class ObjectReader {
public:
    ObjectReader(QJsonObject object, const QString& path, QString& mistake)
        : m_object(std::move(object))
        , m_path(path)
        , m_mistake(mistake)
    {
    }

    using TakeText = std::function<void(const QString&)>;
    using TakeFlag = std::function<void(bool)>;
    using TakeNumber = std::function<void(double)>;
    using TakeObject = std::function<void(ObjectReader&)>;

    void text(const QString& key, const TakeText& take)
    {
        value(key, QJsonValue::String, QStringLiteral("a text"),
            [&](const QJsonValue& found) { take(found.toString()); });
    }
    void flag(const QString& key, const TakeFlag& take)
    {
        value(key, QJsonValue::Bool, QStringLiteral("true or false"),
            [&](const QJsonValue& found) { take(found.toBool()); });
    }
    void number(const QString& key, const TakeNumber& take)
    {
        value(key, QJsonValue::Double, QStringLiteral("a number"),
            [&](const QJsonValue& found) { take(found.toDouble()); });
    }
    void texts(const QString& key, const TakeText& take)
    {
        value(key, QJsonValue::Array, QStringLiteral("a list of texts"),
            [&](const QJsonValue& found) {
                const QJsonArray list = found.toArray();
                for (const QJsonValue& one : list) {
                    if (!one.isString())
                        fail(QStringLiteral("'%1' takes a list of texts").arg(pathOf(key)));
                    take(one.toString());
                }
            });
    }
    void object(const QString& key, const TakeObject& take)
    {
        value(key, QJsonValue::Object, QStringLiteral("an object"),
            [&](const QJsonValue& found) { inner(found, pathOf(key), take); });
    }
    void objects(const QString& key, const TakeObject& take)
    {
        value(key, QJsonValue::Array, QStringLiteral("a list of objects"),
            [&](const QJsonValue& found) {
                const QJsonArray list = found.toArray();
                for (int i = 0; i < list.size(); ++i)
                    inner(list.at(i), QStringLiteral("%1[%2]").arg(pathOf(key)).arg(i), take);
            });
    }
    // What was not taken is not known.
    void finish()
    {
        const QStringList keys = m_object.keys();
        for (const QString& key : keys) {
            if (!m_known.contains(key)) {
                fail(QStringLiteral("there is no setting '%1'%2")
                         .arg(pathOf(key), nearestNamesText(key, m_known)));
            }
        }
    }
    void fail(const QString& mistake)
    {
        if (m_mistake.isNull())
            m_mistake = mistake;
    }
    QString pathOf(const QString& key) const
    {
        return m_path.isEmpty() ? key : m_path + QLatin1Char('.') + key;
    }

private:
    template <typename Take>
    void value(const QString& key, QJsonValue::Type type, const QString& what, const Take& take)
    {
        m_known.append(key);
        if (!m_object.contains(key))
            return;
        const QJsonValue found = m_object.value(key);
        if (found.type() == type)
            take(found);
        else
            fail(QStringLiteral("'%1' takes %2").arg(pathOf(key), what));
    }
    void inner(const QJsonValue& value, const QString& path, const TakeObject& take)
    {
        ObjectReader reader(value.toObject(), path, m_mistake);
        if (!value.isObject())
            return fail(QStringLiteral("'%1' takes an object").arg(path));
        take(reader);
        reader.finish();
    }

    QJsonObject m_object;
    QString m_path;
    QString& m_mistake;
    QStringList m_known;
};

void readDatabase(ObjectReader& reader, ConfigDb& database)
{
    reader.text(QStringLiteral("name"), [&](const QString& text) { database.setName(text); });
    reader.text(QStringLiteral("folder"), [&](const QString& text) { database.setFolder(text); });
    reader.text(
        QStringLiteral("sourceFile"), [&](const QString& text) { database.setSourceFile(text); });
    reader.text(QStringLiteral("generationType"), [&](const QString& text) {
        if (text != QLatin1String("sqlite") && text != QLatin1String("postgresql"))
            reader.fail(QStringLiteral("'%1' takes sqlite or postgresql, not '%2'")
                            .arg(reader.pathOf(QStringLiteral("generationType")), text));
        database.setGenerationType(text);
    });
    reader.text(QStringLiteral("filter"), [&](const QString& text) { database.setFilter(text); });
}

void readEntity(ObjectReader& reader, ConfigEntities& entity)
{
    entity.setAllVariables(true);
    reader.text(QStringLiteral("name"), [&](const QString& text) { entity.setName(text); });
    reader.text(QStringLiteral("recType"), [&](const QString& text) { entity.setRecType(text); });
    reader.flag(QStringLiteral("allVariables"), [&](bool flag) { entity.setAllVariables(flag); });
    reader.texts(
        QStringLiteral("variables"), [&](const QString& text) { entity.addVariables(text); });
    if (entity.getName().isEmpty())
        reader.fail(QStringLiteral("'%1' is missing").arg(reader.pathOf(QStringLiteral("name"))));
}

void readSplit(ObjectReader& reader, ConfigToolsSplit& split)
{
    reader.flag(
        QStringLiteral("optionSampling"), [&](bool flag) { split.setOptionSampling(flag); });
    reader.number(QStringLiteral("factor"), [&](double number) { split.setFactor(number); });
    reader.flag(
        QStringLiteral("radioOutEveryX"), [&](bool flag) { split.setRadioOutEveryX(flag); });
    if (!split.getOptionSampling())
        return;
    const double factor = split.getFactor();
    const bool isFit = split.getRadioOutEveryX()
        ? factor >= 1 && factor <= std::numeric_limits<int>::max() && factor == std::floor(factor)
        : factor > 0 && factor <= 1;
    if (!isFit) {
        reader.fail(QStringLiteral("'%1' takes a share above 0 and up to 1 or, with "
                                   "radioOutEveryX, a whole number from 1 on")
                        .arg(reader.pathOf(QStringLiteral("factor"))));
    }
}

void readConversion(ObjectReader& reader, ConversionConfig& conversion)
{
    const auto choice = [&](const char* key, const QStringList& values) {
        QString found;
        reader.text(QLatin1String(key), [&](const QString& text) {
            found = text;
            if (!values.contains(text))
                reader.fail(QStringLiteral("'%1' takes %2, not '%3'")
                                .arg(reader.pathOf(QLatin1String(key)),
                                    values.join(QLatin1String(" or ")), text));
        });
        return found;
    };
    const auto flag = [&](const char* key, bool& member) {
        reader.flag(QLatin1String(key), [&](bool found) { member = found; });
    };
    conversion.format = choice(
        "format", { QStringLiteral("stata"), QStringLiteral("spss"), QStringLiteral("csv") });
    reader.text(QStringLiteral("folder"), [&](const QString& found) { conversion.folder = found; });
    conversion.keepsMissingCodes =
        choice("missing", { QStringLiteral("kind"), QStringLiteral("code") })
        == QLatin1String("code");
    flag("merge", conversion.isMerged);
    flag("labels", conversion.hasLabels);
    flag("spreadsheet", conversion.forSpreadsheet);
    if (conversion.format.isEmpty())
        reader.fail(QStringLiteral("'%1' is missing").arg(reader.pathOf(QStringLiteral("format"))));
}

// What stands beside the records of Config.h.
void readOwn(ObjectReader& reader, BuildConfig& config)
{
    const auto text = [&](const char* key, QString& member) {
        reader.text(QLatin1String(key), [&](const QString& found) { member = found; });
    };
    reader.texts(QStringLiteral("data"), [&](const QString& found) { config.data.append(found); });
    text("dictionary", config.dictionary);
    text("schema", config.schema);
    text("repeats", config.repeats);
    text("language", config.language);
    text("encoding", config.encoding);
    reader.flag(QStringLiteral("allLanguages"), [&](bool flag) { config.hasAllLanguages = flag; });
    reader.text(QStringLiteral("dataEncoding"), [&](const QString& found) {
        if (!found.isEmpty() && found != QLatin1String("utf-8")
            && found != QLatin1String("windows-1252")) {
            reader.fail(
                QStringLiteral("'dataEncoding' takes utf-8 or windows-1252, not '%1'").arg(found));
        }
        config.dataEncoding = found;
    });
    reader.object(QStringLiteral("conversion"),
        [&](ObjectReader& inner) { readConversion(inner, config.conversion); });
    reader.number(QStringLiteral("seed"), [&](double number) {
        if (number < 0 || number > std::numeric_limits<quint32>::max()
            || number != std::floor(number))
            reader.fail(QStringLiteral("'seed' takes a whole number from 0 to 4294967295"));
        else
            config.seed = quint32(number);
    });
}

// Null when it is one of this version.
QString formMistake(const QJsonObject& object)
{
    if (!object.contains(versionKey()))
        return QStringLiteral("holds no settings of a build: '%1' is missing").arg(versionKey());
    if (object.value(versionKey()) != QJsonValue(Version))
        return QStringLiteral("holds settings of another version; this program reads version %1")
            .arg(Version);
    return QString();
}

QJsonArray arrayOf(const ConfigEntities& entity)
{
    return QJsonArray::fromStringList(*entity.getVariables());
}

QJsonObject objectOf(const ConfigDb& database)
{
    return { { QStringLiteral("name"), database.getName() },
        { QStringLiteral("folder"), database.getFolder() },
        { QStringLiteral("sourceFile"), database.getSourceFile() },
        { QStringLiteral("generationType"), database.getGenerationType() },
        { QStringLiteral("filter"), database.getFilter() } };
}

QJsonObject objectOf(const ConfigEntities& entity)
{
    return { { QStringLiteral("name"), entity.getName() },
        { QStringLiteral("recType"), entity.getRecType() },
        { QStringLiteral("allVariables"), entity.getAllVariables() },
        { QStringLiteral("variables"), arrayOf(entity) } };
}

QJsonObject objectOf(const ConfigToolsSplit& split)
{
    return { { QStringLiteral("optionSampling"), split.getOptionSampling() },
        { QStringLiteral("factor"), split.getFactor() },
        { QStringLiteral("radioOutEveryX"), split.getRadioOutEveryX() } };
}

QJsonObject objectOf(const ConversionConfig& conversion)
{
    return { { QStringLiteral("format"), conversion.format },
        { QStringLiteral("folder"), conversion.folder },
        { QStringLiteral("missing"),
            conversion.keepsMissingCodes ? QStringLiteral("code") : QStringLiteral("kind") },
        { QStringLiteral("merge"), conversion.isMerged },
        { QStringLiteral("labels"), conversion.hasLabels },
        { QStringLiteral("spreadsheet"), conversion.forSpreadsheet } };
}

QString typeCodeOf(const DataDictionary& dictionary, const QString& record)
{
    for (const DataRecord& known : dictionary.records) {
        if (known.name == record)
            return known.typeCode;
    }
    return QString();
}

} // namespace

BuildConfig::~BuildConfig()
{
    clearEntities();
    delete m_config.getDataBase();
    delete m_config.getOptions();
    delete m_config.getEntities();
    for (TOxEntity* entity : { m_split.getEntitySelect(), m_split.getEntitySampling(),
             m_split.getEntityRestartSampling() })
        releaseEntity(entity);
}

void BuildConfig::clearEntities()
{
    for (ConfigEntities* entity : qAsConst(*m_config.getEntities())) {
        delete entity->getVariables();
        delete entity;
    }
    m_config.getEntities()->clear();
}

QString BuildConfig::target() const
{
    const ConfigDb& database = *m_config.getDataBase();
    const QString folder = database.getFolder();
    if (folder.isEmpty())
        return database.getName();
    return folder + (folder.endsWith(QLatin1Char('/')) ? QString() : QStringLiteral("/"))
        + database.getName();
}

void BuildConfig::setTarget(const QString& target)
{
    ConfigDb& database = *m_config.getDataBase();
    if (PostgresTarget::isConnection(target)) {
        database.setName(PostgresTarget::withoutPasswords(target));
        database.setFolder(QString());
        database.setGenerationType(QStringLiteral("postgresql"));
        return;
    }
    const int slash = target.lastIndexOf(QLatin1Char('/'));
    database.setName(target.mid(slash + 1));
    database.setFolder(slash == 0 ? QStringLiteral("/") : target.left(std::max(slash, 0)));
    database.setGenerationType(QStringLiteral("sqlite"));
}

DataSelection BuildConfig::selection() const
{
    DataSelection selection;
    for (const ConfigEntities* entity : qAsConst(*m_config.getEntities()))
        selection.records.append(
            { entity->getName(), entity->getAllVariables(), *entity->getVariables() });
    selection.where = m_config.getDataBase()->getFilter();
    selection.seed = seed;
    if (!m_split.getOptionSampling())
        return selection;
    if (m_split.getRadioOutEveryX())
        selection.every = qint64(m_split.getFactor());
    else
        selection.sample = m_split.getFactor();
    return selection;
}

void BuildConfig::setSelection(const DataSelection& selection, const DataDictionary& dictionary)
{
    clearEntities();
    for (const SelectedRecord& record : selection.records) {
        auto* entity = new ConfigEntities;
        entity->setName(record.name);
        entity->setRecType(typeCodeOf(dictionary, record.name));
        entity->setAllVariables(record.hasAllVariables);
        *entity->getVariables() = record.variables;
        m_config.addEntities(entity);
    }
    m_config.getDataBase()->setFilter(selection.where);
    seed = selection.seed;
    m_split.setOptionSampling(selection.sample > 0 || selection.every > 0);
    m_split.setRadioOutEveryX(selection.every > 0);
    m_split.setFactor(selection.every > 0 ? double(selection.every) : selection.sample);
}

QByteArray BuildConfig::json(bool isIndented) const
{
    QJsonArray entities;
    for (const ConfigEntities* entity : qAsConst(*m_config.getEntities()))
        entities.append(objectOf(*entity));
    QJsonObject object { { versionKey(), Version },
        { QStringLiteral("dataBase"), objectOf(*m_config.getDataBase()) },
        { QStringLiteral("entities"), entities }, { QStringLiteral("split"), objectOf(m_split) },
        { QStringLiteral("data"), QJsonArray::fromStringList(data) },
        { QStringLiteral("dictionary"), dictionary },
        { QStringLiteral("dataEncoding"), dataEncoding }, { QStringLiteral("schema"), schema },
        { QStringLiteral("repeats"), repeats }, { QStringLiteral("language"), language },
        { QStringLiteral("encoding"), encoding },
        { QStringLiteral("allLanguages"), hasAllLanguages },
        { QStringLiteral("seed"), double(seed) } };
    if (!conversion.format.isEmpty())
        object.insert(QStringLiteral("conversion"), objectOf(conversion));
    return QJsonDocument(object).toJson(
        isIndented ? QJsonDocument::Indented : QJsonDocument::Compact);
}

QString BuildConfig::readJson(const QByteArray& json)
{
    QJsonParseError error;
    const QJsonObject object = QJsonDocument::fromJson(json, &error).object();
    if (error.error != QJsonParseError::NoError) {
        return QStringLiteral("is no JSON: %1 in line %2")
            .arg(error.errorString())
            .arg(json.left(error.offset).count('\n') + 1);
    }
    QString mistake = formMistake(object);
    if (!mistake.isNull())
        return mistake;
    ObjectReader reader(object, QString(), mistake);
    reader.number(versionKey(), [](double) {});
    reader.object(QStringLiteral("dataBase"),
        [this](ObjectReader& inner) { readDatabase(inner, *m_config.getDataBase()); });
    reader.objects(QStringLiteral("entities"), [this](ObjectReader& inner) {
        auto* entity = new ConfigEntities;
        m_config.addEntities(entity);
        readEntity(inner, *entity);
    });
    reader.object(
        QStringLiteral("split"), [this](ObjectReader& inner) { readSplit(inner, m_split); });
    readOwn(reader, *this);
    reader.finish();
    return mistake.isNull() ? QString() : QStringLiteral("cannot be used: ") + mistake;
}

} // namespace tessel
