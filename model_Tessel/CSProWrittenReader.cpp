#include <model_Tessel/CSProWrittenReader_p.h>

#include <model_Tessel/CSProLengthRange_p.h>

#include <algorithm>

void appendNoteLine(QString& note, QStringView line)
{
    QString text = line.toString();
    if (text.startsWith(QLatin1Char('~')))
        text[0] = QLatin1Char(' ');
    text.replace(QLatin1String("\\r\\n"), QLatin1String("\n"));
    if (!note.isEmpty() && !note.endsWith(QLatin1Char('\n')))
        note += QLatin1Char(' ');
    note += text;
}

void CSProWrittenReader::beginLoad()
{
    m_hasBegun = false;
}

void CSProWrittenReader::beginSection()
{
    m_hasBegun = true;
}

// Only lines before the first section are in none; the first of them is told of.
void CSProWrittenReader::readOutside(int line, QStringView text)
{
    if (text.isEmpty() || isComment(text))
        return;
    if (!m_hasBegun)
        m_builder.report(Kind::LineOutsideSection, line, QString(), text.toString());
    m_hasBegun = true;
}

CSProTextReader::Values CSProWrittenReader::find(
    const CSProKeyFinder& keys, const CSProSection& section, std::size_t count)
{
    Values values = keys.findWhole(section, count);
    for (const CSProKeyLine& line : values.repeated)
        m_builder.report(Kind::RepeatedKey, line.number, QString(), line.key.toString());
    return values;
}

CSProTextReader::Values CSProWrittenReader::find(
    const CSProKeyFinder& keys, const CSProSection& section)
{
    return find(keys, section, section.lines.size());
}

CSProTextReader::Defaults CSProWrittenReader::defaults() const
{
    return { 0, 1 };
}

// Quotes go where they are.
QString CSProWrittenReader::recordTypeValue(const QString& text) const
{
    const bool isQuoted = text.size() > 1 && text.startsWith(text.back())
        && (text.startsWith(QLatin1Char('\'')) || text.startsWith(QLatin1Char('"')));
    return isQuoted ? text.mid(1, text.size() - 2) : text;
}

void CSProWrittenReader::reportValue(Kind kind, const Values& values, std::size_t key)
{
    m_builder.report(kind, values.line.at(key), QString(), text(values, key));
}

void CSProWrittenReader::reportMissingStart(const TCSProItem& item)
{
    m_builder.report(Kind::ItemWithoutStart, item.sourceLine, item.name);
}

void CSProWrittenReader::reportOther(
    const CSProKeyLine& line, std::initializer_list<const char*> passedOver)
{
    if (line.key.isEmpty()) {
        m_builder.report(Kind::LineWithoutKey, line.number, QString(), line.value.toString());
        return;
    }
    const bool isKnown = std::any_of(
        passedOver.begin(), passedOver.end(), [&](const char* key) { return line.hasKey(key); });
    if (!isKnown)
        m_builder.report(Kind::UnknownKey, line.number, QString(), line.key.toString());
}

bool CSProWrittenReader::takeNote(const CSProKeyLine& line, QString& note) const
{
    if (!line.hasKey("Note"))
        return false;
    appendNoteLine(note, line.value);
    return true;
}

// "OccurrenceLabel=2,Second wife"; the number may be followed by a colon.
bool CSProWrittenReader::takeOccurrenceLabel(
    const CSProKeyLine& line, int occurrences, QVector<QString>& labels) const
{
    if (!line.hasKey("OccurrenceLabel") && !line.hasKey("OccurenceLabel"))
        return false;
    const auto digits = std::find_if(line.value.begin(), line.value.end(), [](QChar character) {
        return character < QLatin1Char('0') || character > QLatin1Char('9');
    });
    const auto size = digits - line.value.begin();
    const int number = csproNumber(line.value.left(size), 0);
    const int most = std::min(occurrences, CSProMostColumns);
    if (number < 1 || number > most || size == line.value.size()) {
        m_builder.report(Kind::NotANumber, line.number, QString(), line.value.toString());
        return true;
    }
    if (labels.size() < number)
        labels.resize(number);
    labels[number - 1] = line.value.mid(size + 1).trimmed().toString();
    return true;
}

void CSProWrittenReader::readMore(const Values& values)
{
    QString note;
    for (const CSProKeyLine& line : values.others) {
        if (!takeNote(line, note))
            reportOther(line, { "Alias", "SecurityOptions", "ValueSetImages" });
    }
    m_builder.setNote(note);
}

void CSProWrittenReader::readMore(const Values& values, TCSProRecord& record)
{
    for (const CSProKeyLine& line : values.others) {
        if (!takeNote(line, record.note)
            && !takeOccurrenceLabel(line, record.maxRecords, record.occurrenceLabels))
            reportOther(line, { "Alias" });
    }
}

void CSProWrittenReader::readMore(const Values& values, TCSProItem& item)
{
    CSProItemDetail& detail = item.editDetail();
    for (const CSProKeyLine& line : values.others) {
        if (!takeNote(line, detail.note)
            && !takeOccurrenceLabel(line, item.occurrences, detail.occurrenceLabels))
            reportOther(line, { "Alias", "CaptureType", "CaptureDateFormat" });
    }
}

void CSProWrittenReader::fillValueSet(const CSProSection& section, TCSProValueSet& valueSet)
{
    const auto firstValue = std::find_if(section.lines.begin(), section.lines.end(),
        [](QStringView line) { return splitKeyLine(line, 0).hasKey("Value"); });
    const auto headSize = static_cast<std::size_t>(firstValue - section.lines.begin());
    const Values values = find(namedKeys(), section, headSize);
    valueSet.label = text(values, NamedLabel);
    valueSet.name = text(values, NamedName);
    QString note;
    for (const CSProKeyLine& line : values.others) {
        if (line.hasKey("Link"))
            valueSet.setLink(line.value.toString());
        else if (!takeNote(line, note))
            reportOther(line, { "Alias" });
    }
    valueSet.setNote(note);
    readWrittenValues(section, headSize, m_builder, valueSet);
}

void CSProWrittenReader::readOther(
    const QString& word, const QString& header, const CSProSection& section)
{
    if (word == QLatin1String("LEVEL"))
        readLevel(section);
    else if (word == QLatin1String("LANGUAGES"))
        readLanguages(section);
    else if (word == QLatin1String("RELATION"))
        readRelation(section);
    else if (word != QLatin1String("IDITEMS") && word != QLatin1String("NOEDIT"))
        m_builder.report(Kind::UnknownSection, section.headerLine, QString(), header);
}

void CSProWrittenReader::readLevel(const CSProSection& section)
{
    const Values values = find(namedKeys(), section);
    CSProLevel level { text(values, NamedName), text(values, NamedLabel), QString() };
    for (const CSProKeyLine& line : values.others) {
        if (!takeNote(line, level.note))
            reportOther(line, { "Alias" });
    }
    m_builder.addLevel(level);
}

void CSProWrittenReader::readLanguages(const CSProSection& section)
{
    for (std::size_t i = 0; i < section.lines.size(); ++i) {
        const CSProKeyLine line = splitKeyLine(section.lines[i], section.lineNumber(i));
        if (line.key.isEmpty())
            reportOther(line, {});
        else
            m_builder.addLanguage({ line.key.toString(), line.value.toString() });
    }
}

// Each "Secondary" begins a link; the "PrimaryLink" before it belongs to it.
void CSProWrittenReader::readRelation(const CSProSection& section)
{
    CSProRelation relation;
    CSProRelationLink link;
    bool isLinkOpen = false;
    const auto closeLink = [&] {
        if (isLinkOpen)
            relation.links.append(link);
        link = {};
        isLinkOpen = false;
    };
    for (std::size_t i = 0; i < section.lines.size(); ++i) {
        const CSProKeyLine line = splitKeyLine(section.lines[i], section.lineNumber(i));
        const QString value = line.value.toString();
        if (line.hasKey("Name")) {
            relation.name = value;
        } else if (line.hasKey("Primary")) {
            relation.primary = value;
        } else if (line.hasKey("PrimaryLink")) {
            closeLink();
            link.primaryLink = value;
        } else if (line.hasKey("Secondary")) {
            if (isLinkOpen)
                closeLink();
            link.secondary = value;
            isLinkOpen = true;
        } else if (line.hasKey("SecondaryLink")) {
            link.secondaryLink = value;
        } else {
            reportOther(line, { "Label" });
        }
    }
    closeLink();
    m_builder.addRelation(relation);
}
