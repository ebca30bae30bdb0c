#include <model_Tessel/StataStructure_p.h>

#include <model_Tessel/StatBytes_p.h>

#include <array>

namespace {

constexpr int FirstMarkedFormat = 117;
constexpr int FirstUnicodeFormat = 118;
constexpr int ManyVariablesFormat = 119;
constexpr int OldestFormat = 104;
constexpr int OldestJudged = 108;
constexpr int LatestFormat = 119;

// Parts of a marked file, by their places in its map.
enum Part {
    FileStart,
    Map,
    VariableTypes,
    VariableNames,
    SortList,
    Formats,
    ValueLabelNames,
    VariableLabels,
    Characteristics,
    Data,
    Strls,
    ValueLabels,
    FileEnd,
    BehindEnd,
    PartCount
};

QByteArray untilNull(const QByteArray& bytes)
{
    return QByteArray(bytes.constData(), int(qstrnlen(bytes.constData(), uint(bytes.size()))));
}

// One walk through a .dta file, from its start to where it is asked for.
class StataWalk {
public:
    explicit StataWalk(TStatInput& input)
        : m_bytes(input)
    {
    }

    bool isSound();
    QVector<StataCharacteristic> characteristics();

private:
    bool isMarked() const
    {
        return m_format >= FirstMarkedFormat;
    }
    quint64 nameSize() const
    {
        return m_format < 110 ? 9 : m_format < FirstUnicodeFormat ? 33 : 129;
    }

    void walkHeader();
    void walkMarkedHeader();
    void walkOldHeader();
    void walkDescriptors();
    void walkTypes();
    void addType(unsigned type);
    void walkCharacteristics();
    void walkOldCharacteristics();
    void addCharacteristic(quint64 size);
    void walkData();
    void walkStrls();
    void walkValueLabels();
    void walkTable(quint64 size);
    void mark(const char* text, Part part);
    void markEnd(const char* text);

    StatBytes m_bytes;
    int m_format = 0;
    quint64 m_variables = 0;
    quint64 m_rows = 0;
    quint64 m_rowSize = 0;
    std::array<quint64, PartCount> m_map {};
    QVector<StataCharacteristic> m_characteristics;
};

// The beginning of a part, which the map has to tell.
void StataWalk::mark(const char* text, Part part)
{
    if (!isMarked())
        return;
    m_bytes.require(m_map[part] == quint64(m_bytes.position()));
    m_bytes.expect(text);
}

void StataWalk::markEnd(const char* text)
{
    if (isMarked())
        m_bytes.expect(text);
}

void StataWalk::walkHeader()
{
    const auto first = m_bytes.number<quint8>();
    if (first == '<') {
        walkMarkedHeader();
        return;
    }
    m_format = first;
    m_bytes.require(m_format >= OldestFormat && m_format < FirstMarkedFormat);
    walkOldHeader();
}

void StataWalk::walkMarkedHeader()
{
    m_bytes.expect("stata_dta><header><release>");
    m_format = m_bytes.read(3).toInt();
    m_bytes.require(m_format >= FirstMarkedFormat && m_format <= LatestFormat);
    m_bytes.expect("</release><byteorder>");
    const QByteArray order = m_bytes.read(3);
    m_bytes.require(order == "MSF" || order == "LSF");
    m_bytes.setBigEndian(order == "MSF");
    m_bytes.expect("</byteorder><K>");
    m_variables =
        m_format >= ManyVariablesFormat ? m_bytes.number<quint32>() : m_bytes.number<quint16>();
    m_bytes.expect("</K><N>");
    m_rows = m_format >= FirstUnicodeFormat ? m_bytes.number<quint64>() : m_bytes.number<quint32>();
    m_bytes.expect("</N><label>");
    m_bytes.skip(
        m_format >= FirstUnicodeFormat ? m_bytes.number<quint16>() : m_bytes.number<quint8>());
    m_bytes.expect("</label><timestamp>");
    m_bytes.skip(m_bytes.number<quint8>());
    m_bytes.expect("</timestamp></header>");
    const auto map = quint64(m_bytes.position());
    m_bytes.expect("<map>");
    for (quint64& position : m_map)
        position = m_bytes.number<quint64>();
    m_bytes.require(m_map[FileStart] == 0 && m_map[Map] == map);
    m_bytes.expect("</map>");
}

void StataWalk::walkOldHeader()
{
    constexpr int BigEndian = 1;
    constexpr quint64 TimestampSize = 18;
    m_bytes.setBigEndian(m_bytes.number<quint8>() == BigEndian);
    m_bytes.skip(2);
    m_variables = m_bytes.number<quint16>();
    m_rows = m_bytes.number<quint32>();
    m_bytes.skip(m_format < 108 ? 32 : 81);
    if (m_format >= 105)
        m_bytes.skip(TimestampSize);
}

void StataWalk::walkDescriptors()
{
    mark("<variable_types>", VariableTypes);
    walkTypes();
    markEnd("</variable_types>");
    mark("<varnames>", VariableNames);
    m_bytes.skip(m_variables * nameSize());
    markEnd("</varnames>");
    mark("<sortlist>", SortList);
    m_bytes.skip((m_variables + 1) * (m_format >= ManyVariablesFormat ? 4 : 2));
    markEnd("</sortlist>");
    mark("<formats>", Formats);
    const quint64 formatSize = m_format < 105 ? 7
        : m_format < 114                      ? 12
        : m_format < FirstUnicodeFormat       ? 49
                                              : 57;
    m_bytes.skip(m_variables * formatSize);
    markEnd("</formats>");
    mark("<value_label_names>", ValueLabelNames);
    m_bytes.skip(m_variables * nameSize());
    markEnd("</value_label_names>");
    mark("<variable_labels>", VariableLabels);
    m_bytes.skip(m_variables * (m_format < 108 ? 32 : m_format < FirstUnicodeFormat ? 81 : 321));
    markEnd("</variable_labels>");
}

void StataWalk::walkTypes()
{
    for (quint64 index = 0; index < m_variables && m_bytes.isFine(); ++index)
        addType(isMarked() ? m_bytes.number<quint16>() : m_bytes.number<quint8>());
}

void StataWalk::addType(unsigned type)
{
    struct TypeSize {
        unsigned type;
        unsigned size;
    };
    static constexpr TypeSize marked[] = { { 32768, 8 }, { 65526, 8 }, { 65527, 4 }, { 65528, 4 },
        { 65529, 2 }, { 65530, 1 } };
    static constexpr TypeSize numbered[] = { { 255, 8 }, { 254, 4 }, { 253, 4 }, { 252, 2 },
        { 251, 1 } };
    static constexpr TypeSize lettered[] = { { 'd', 8 }, { 'f', 4 }, { 'l', 4 }, { 'i', 2 },
        { 'b', 1 } };
    const auto sizeIn = [type](const auto& types) {
        for (const TypeSize& entry : types) {
            if (entry.type == type)
                return entry.size;
        }
        return 0u;
    };
    unsigned size = 0;
    if (isMarked())
        size = type <= 2045 ? type : sizeIn(marked);
    else if (m_format >= 111)
        size = type <= 244 ? type : sizeIn(numbered);
    else
        size = type > 0x7f ? type - 0x7f : sizeIn(lettered);
    m_bytes.require(size > 0);
    m_rowSize += size;
}

void StataWalk::walkCharacteristics()
{
    if (!isMarked()) {
        walkOldCharacteristics();
        return;
    }
    mark("<characteristics>", Characteristics);
    while (m_bytes.isFine()) {
        const QByteArray tag = m_bytes.read(4);
        if (tag == "</ch")
            break;
        m_bytes.require(tag == "<ch>");
        addCharacteristic(m_bytes.number<quint32>());
        m_bytes.expect("</ch>");
    }
    m_bytes.expect("aracteristics>");
}

void StataWalk::walkOldCharacteristics()
{
    while (m_format >= 105 && m_bytes.isFine()) {
        const auto type = m_bytes.number<quint8>();
        const quint64 size = m_format < 110 ? m_bytes.number<quint16>() : m_bytes.number<quint32>();
        if (type == 0 && size == 0)
            return;
        if (type == 1)
            addCharacteristic(size);
        else
            m_bytes.skip(size);
    }
}

void StataWalk::addCharacteristic(quint64 size)
{
    const QByteArray bytes = m_bytes.read(size);
    const int width = int(nameSize());
    if (m_bytes.require(bytes.size() >= 2 * width)) {
        m_characteristics.append({ untilNull(bytes.left(width)), untilNull(bytes.mid(width, width)),
            untilNull(bytes.mid(2 * width)) });
    }
}

void StataWalk::walkData()
{
    mark("<data>", Data);
    quint64 size = 0;
    m_bytes.require(!__builtin_mul_overflow(m_rows, m_rowSize, &size));
    m_bytes.skip(size);
    markEnd("</data>");
}

void StataWalk::walkStrls()
{
    if (!isMarked())
        return;
    mark("<strls>", Strls);
    while (m_bytes.isFine()) {
        const QByteArray tag = m_bytes.read(3);
        if (tag == "</s")
            break;
        m_bytes.require(tag == "GSO");
        m_bytes.skip(m_format >= FirstUnicodeFormat ? 12 : 8); // of which variable and row
        const auto type = m_bytes.number<quint8>();
        m_bytes.require(type == 129 || type == 130);
        m_bytes.skip(m_bytes.number<quint32>());
    }
    m_bytes.expect("trls>");
}

void StataWalk::walkValueLabels()
{
    constexpr quint64 Padding = 3;
    mark("<value_labels>", ValueLabels);
    while (m_bytes.isFine() && !m_bytes.isAtEnd()) {
        if (isMarked()) {
            const QByteArray tag = m_bytes.read(5);
            if (tag == "</val")
                break;
            m_bytes.require(tag == "<lbl>");
        }
        const auto size = m_bytes.number<quint32>();
        m_bytes.skip(nameSize() + Padding);
        walkTable(size);
        markEnd("</lbl>");
    }
    markEnd("ue_labels>");
}

// Numbers of texts and bytes of them, places of the texts, values, texts.
void StataWalk::walkTable(quint64 size)
{
    const quint64 count = m_bytes.number<quint32>();
    const quint64 textSize = m_bytes.number<quint32>();
    m_bytes.require(size == 8 + 8 * count + textSize);
    for (quint64 index = 0; index < count && m_bytes.isFine(); ++index)
        m_bytes.require(m_bytes.number<quint32>() < textSize);
    m_bytes.skip(4 * count + textSize);
}

bool StataWalk::isSound()
{
    walkHeader();
    m_bytes.require(m_format >= OldestJudged);
    walkDescriptors();
    walkCharacteristics();
    walkData();
    walkStrls();
    walkValueLabels();
    mark("</stata_dta>", FileEnd);
    m_bytes.require(!isMarked() || m_map[BehindEnd] == quint64(m_bytes.position()));
    return m_bytes.require(m_bytes.isAtEnd());
}

QVector<StataCharacteristic> StataWalk::characteristics()
{
    walkHeader();
    if (isMarked())
        m_bytes.seek(qint64(m_map[Characteristics]));
    else
        walkDescriptors();
    walkCharacteristics();
    return m_characteristics;
}

} // namespace

QVector<StataCharacteristic> stataCharacteristics(TStatInput& input)
{
    return StataWalk(input).characteristics();
}

bool isSoundStataFile(TStatInput& input)
{
    return StataWalk(input).isSound();
}
