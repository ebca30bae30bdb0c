#include <model_Tessel/SpssStructure_p.h>

#include <model_Tessel/StatBytes_p.h>

#include <QByteArrayList>

#include <cstdlib>

namespace {

constexpr quint64 ValueSize = 8;

quint64 padded(quint64 size, quint64 unit)
{
    return (size + unit - 1) / unit * unit;
}

// One walk through an SPSS file's dictionary.
class SpssWalk {
public:
    explicit SpssWalk(TStatInput& input)
        : m_bytes(input)
    {
    }

    bool isSound();
    QVector<SpssExtension> extensions();

private:
    enum Record {
        Variable = 2,
        ValueLabels = 3,
        LabelledVariables = 4,
        Documents = 6,
        Extension = 7,
        DictionaryEnd = 999
    };

    quint64 count();
    void walkHeader();
    bool walkRecord();
    void walkVariable();
    void walkValueLabels();
    void walkLabelledVariables();
    void walkExtension();
    void walkLongLabels(qint64 end);
    void keep(int kind, quint64 size);
    void walkRows();

    StatBytes m_bytes;
    bool m_isCompressed = false;
    qint64 m_rows = -1;
    quint64 m_slots = 0; // of eight bytes in a row
    QVector<SpssExtension> m_extensions;
};

// A number of bytes or things, which is never below 0.
quint64 SpssWalk::count()
{
    const auto number = m_bytes.number<qint32>();
    m_bytes.require(number >= 0);
    return m_bytes.isFine() ? quint64(number) : 0;
}

void SpssWalk::walkHeader()
{
    constexpr quint64 HeaderRest = 8 + 9 + 8 + 64 + 3; // bias, date, time, label, padding
    const QByteArray magic = m_bytes.read(4);
    m_bytes.require(magic == "$FL2" || magic == "$FL3");
    m_bytes.skip(60);
    const auto layout = m_bytes.number<quint32>();
    const bool isBigEndian = layout == 0x02000000 || layout == 0x03000000;
    m_bytes.setBigEndian(isBigEndian);
    m_bytes.require(isBigEndian || layout == 2 || layout == 3);
    m_bytes.skip(4);
    m_isCompressed = m_bytes.number<qint32>() != 0;
    m_bytes.skip(4);
    m_rows = m_bytes.number<qint32>();
    m_bytes.skip(HeaderRest);
}

// False at the end of the dictionary, and when there is no record of a known kind.
bool SpssWalk::walkRecord()
{
    switch (m_bytes.number<qint32>()) {
    case Variable:
        walkVariable();
        return m_bytes.isFine();
    case ValueLabels:
        walkValueLabels();
        return m_bytes.isFine();
    case Documents:
        m_bytes.skip(80 * count());
        return m_bytes.isFine();
    case Extension:
        walkExtension();
        return m_bytes.isFine();
    case DictionaryEnd:
        m_bytes.skip(4);
        return false;
    default:
        return m_bytes.require(false);
    }
}

void SpssWalk::walkVariable()
{
    const auto type = m_bytes.number<qint32>();
    m_bytes.require(type >= -1 && type <= 255);
    const auto hasLabel = m_bytes.number<qint32>();
    const auto missing = m_bytes.number<qint32>();
    m_bytes.require((hasLabel == 0 || hasLabel == 1) && missing >= -3 && missing <= 3);
    m_bytes.skip(4 + 4 + 8); // formats and name
    if (m_bytes.isFine() && hasLabel == 1)
        m_bytes.skip(padded(count(), 4));
    m_bytes.skip(m_bytes.isFine() ? ValueSize * quint64(std::abs(missing)) : 0);
    ++m_slots;
}

void SpssWalk::walkValueLabels()
{
    const quint64 labels = count();
    for (quint64 index = 0; index < labels && m_bytes.isFine(); ++index) {
        m_bytes.skip(ValueSize);
        const quint64 size = m_bytes.number<quint8>();
        m_bytes.skip(padded(size + 1, 8) - 1);
    }
    m_bytes.require(m_bytes.number<qint32>() == LabelledVariables);
    walkLabelledVariables();
}

void SpssWalk::walkLabelledVariables()
{
    const quint64 variables = count();
    for (quint64 index = 0; index < variables && m_bytes.isFine(); ++index) {
        const quint64 slot = count();
        m_bytes.require(slot >= 1 && slot <= m_slots);
    }
}

void SpssWalk::walkExtension()
{
    constexpr int LongLabels = 21;
    const auto kind = m_bytes.number<qint32>();
    const quint64 unit = count();
    const quint64 size = unit * count();
    const qint64 end = m_bytes.position() + qint64(size);
    if (kind == LongLabels)
        walkLongLabels(end);
    else
        keep(kind, size);
}

void SpssWalk::keep(int kind, quint64 size)
{
    constexpr int firstAttributes = SpssExtension::FileAttributes;
    const bool isKept = kind == SpssExtension::ResponseSets || kind == SpssExtension::VariableSets
        || (kind >= firstAttributes && kind <= SpssExtension::FurtherResponseSets);
    if (isKept && size <= StatBytes::Most)
        m_extensions.append({ kind, m_bytes.read(size) });
    else
        m_bytes.skip(size);
}

// Names, widths and the labelled values of long texts.
void SpssWalk::walkLongLabels(qint64 end)
{
    while (m_bytes.isFine() && m_bytes.position() < end) {
        m_bytes.skip(count());
        m_bytes.skip(4);
        const quint64 labels = count();
        for (quint64 index = 0; index < 2 * labels && m_bytes.isFine(); ++index)
            m_bytes.skip(count());
    }
    m_bytes.require(m_bytes.position() == end);
}

void SpssWalk::walkRows()
{
    if (m_isCompressed || m_rows < 0)
        return;
    m_bytes.skip(quint64(m_rows) * m_slots * ValueSize);
}

bool SpssWalk::isSound()
{
    walkHeader();
    while (walkRecord()) { }
    walkRows();
    return m_bytes.isFine();
}

QVector<SpssExtension> SpssWalk::extensions()
{
    walkHeader();
    while (walkRecord()) { }
    return m_extensions;
}

// Names with their values in parentheses, each in quotes at the end of a line:
// "a('1'\n'2'\n)b('x'\n)"; those of a variable behind its name and a colon, with a slash between
// variables.
class AttributeText {
public:
    explicit AttributeText(const SpssExtension& extension)
        : m_text(extension.text)
        , m_hasOwners(extension.kind == SpssExtension::VariableAttributes)
    {
    }

    QVector<SpssAttribute> read();

private:
    QByteArray upTo(char mark);
    bool takeValues(SpssAttribute& attribute);

    const QByteArray& m_text;
    bool m_hasOwners;
    int m_place = 0;
};

// All that stands before the mark, which is passed over; null where there is none.
QByteArray AttributeText::upTo(char mark)
{
    const int end = m_text.indexOf(mark, m_place);
    if (end < 0)
        return {};
    const QByteArray found = m_text.mid(m_place, end - m_place);
    m_place = end + 1;
    return found;
}

// False where they do not end as they should.
bool AttributeText::takeValues(SpssAttribute& attribute)
{
    bool isFirst = true;
    while (m_place < m_text.size() && m_text.at(m_place) == '\'') {
        const int end = m_text.indexOf("'\n", m_place + 1);
        if (end < 0)
            return false;
        if (isFirst)
            attribute.value = m_text.mid(m_place + 1, end - m_place - 1);
        isFirst = false;
        m_place = end + 2;
    }
    if (m_place >= m_text.size())
        return false;
    return m_text.at(m_place++) == ')';
}

QVector<SpssAttribute> AttributeText::read()
{
    QVector<SpssAttribute> attributes;
    QByteArray owner;
    while (m_place < m_text.size()) {
        const bool isNext = m_place == 0 || m_text.at(m_place) == '/';
        if (m_hasOwners && isNext) {
            m_place += m_text.at(m_place) == '/' ? 1 : 0;
            owner = upTo(':');
        }
        SpssAttribute attribute { owner, upTo('('), {} };
        if (attribute.name.isEmpty() || !takeValues(attribute))
            break;
        attributes.append(attribute);
    }
    return attributes;
}

} // namespace

bool isSoundSpssFile(TStatInput& input)
{
    return SpssWalk(input).isSound();
}

QVector<SpssExtension> spssExtensions(TStatInput& input)
{
    return SpssWalk(input).extensions();
}

QVector<SpssAttribute> spssAttributes(const SpssExtension& extension)
{
    const bool hasAttributes = extension.kind == SpssExtension::FileAttributes
        || extension.kind == SpssExtension::VariableAttributes;
    return hasAttributes ? AttributeText(extension).read() : QVector<SpssAttribute>();
}

// One in a line, "$name=..."; a label may have lines of its own.
QVector<QByteArray> spssResponseSets(const SpssExtension& extension)
{
    QVector<QByteArray> names;
    if (extension.kind != SpssExtension::ResponseSets
        && extension.kind != SpssExtension::FurtherResponseSets)
        return names;
    const QByteArrayList lines = extension.text.split('\n');
    for (const QByteArray& line : lines) {
        const int end = line.indexOf('=');
        if (line.startsWith('$') && end > 1)
            names.append(line.left(end));
    }
    return names;
}

// One in a line, "name= variables".
QVector<QByteArray> spssVariableSets(const SpssExtension& extension)
{
    QVector<QByteArray> names;
    if (extension.kind != SpssExtension::VariableSets)
        return names;
    const QByteArrayList lines = extension.text.split('\n');
    for (const QByteArray& line : lines) {
        const int end = line.indexOf('=');
        if (end > 0)
            names.append(line.left(end).trimmed());
    }
    return names;
}
