#include <tessel_data/ConversionExtras_p.h>

#include <tessel_data/ConversionLimits_p.h>

#include <model_Tessel/StatDictionary.h>

namespace tessel {

namespace {

// A note goes on in the next where it is too long, of SPSS in each line.
void appendLines(QStringList& lines, const QString& note, const ConversionLimits& limits)
{
    const int most = limits.noteBytes;
    if (most == 0) {
        lines.append(note);
        return;
    }
    const QStringList parts =
        limits.hasNoteLines ? note.split(QLatin1Char('\n')) : QStringList { note };
    for (QString rest : parts) {
        do {
            const QString line = statText(rest, { most, true });
            lines.append(line);
            rest = rest.mid(line.size());
        } while (!rest.isEmpty());
    }
}

} // namespace

ConversionNote& ConversionExtras::tell(Kind kind, const QString& text)
{
    ConversionNote note;
    note.kind = kind;
    note.file = m_file;
    note.variable = m_variable;
    note.text = text;
    m_plan.notes.push_back(note);
    return m_plan.notes.back();
}

void ConversionExtras::addFileNotes()
{
    addNote(m_plan.fileNotes, m_dictionary.note);
    if (!m_dictionary.description)
        return;
    for (const QString& note : m_dictionary.description->notes)
        appendLines(m_plan.fileNotes, withoutNulls(note), limitsOf(m_options.format));
    dropSurplus(m_plan.fileNotes, 0);
}

void ConversionExtras::dropSurplus(QStringList& notes, int others)
{
    const int most = limitsOf(m_options.format).notes;
    const int surplus = most == 0 ? 0 : others + notes.size() - most;
    if (surplus <= 0)
        return;
    notes.erase(notes.end() - surplus, notes.end());
    ConversionNote& note = tell(Kind::NotesNotHeld);
    note.count = surplus;
    note.reason = ConversionNote::Reason::TooMany;
}

// True when there is one that was not there before, behind a name if there is one.
bool ConversionExtras::addNote(
    QStringList& notes, const QString& note, const QString& name, const QString& owner)
{
    QString text = withoutNulls(note).trimmed();
    text.remove(QLatin1Char('\r'));
    const QString known = (owner.isEmpty() ? name : owner) + QChar(u'\0') + text;
    if (text.isEmpty() || m_known.contains(known))
        return false;
    m_known.insert(known);
    const QString front = name.isEmpty() ? QString() : name + QLatin1String(": ");
    appendLines(notes, front + text, limitsOf(m_options.format));
    return true;
}

void ConversionExtras::addNotes(ConversionFile& file)
{
    m_known.clear();
    int count = 0;
    for (const int record : qAsConst(file.records)) {
        const DataRecord& source = m_dictionary.records[std::size_t(record)];
        count += addNote(file.notes, source.note, source.name) ? 1 : 0;
    }
    for (const ConversionColumn& column : qAsConst(file.columns)) {
        if (column.variable < 0)
            continue;
        const DataVariable& variable = m_dictionary.variables[std::size_t(column.variable)];
        count += addNote(file.notes, variable.note, column.name, variable.itemName) ? 1 : 0;
        for (const int index : variable.valueSets) {
            const DataValueSet& set = m_dictionary.valueSets[std::size_t(index)];
            for (const QString& note : set.notes)
                count += addNote(file.notes, note, set.name) ? 1 : 0;
        }
        if (!m_dictionary.description)
            continue;
        for (const QString& note : m_dictionary.description->variables.at(column.variable).notes)
            count += addNote(file.notes, note, column.name) ? 1 : 0;
    }
    if (count > 0)
        tell(Kind::NotesMoved).count = count;
    dropSurplus(file.notes, m_plan.fileNotes.size());
}

void ConversionExtras::fill(ConversionFile& file)
{
    m_file = file.name;
    m_variable.clear();
    if (file.records.size() > 1)
        tell(Kind::MergedOnce).count = file.records.size() - 1;
    addNotes(file);
    if (m_dictionary.description)
        addDescribed(file);
}

void ConversionExtras::addDescribed(ConversionFile& file)
{
    const TStatFileDescription& source = *m_dictionary.description;
    const bool isSpss = source.kind == TStatFileKind::Spss;
    int shown = 0;
    for (const ConversionColumn& column : qAsConst(file.columns)) {
        if (column.variable < 0)
            continue;
        tellVariable(column);
        shown += isSpss ? 1 : 0;
    }
    m_variable.clear();
    if (shown > 0 && m_options.format != ConversionFormat::Spss)
        tell(Kind::DisplayNotHeld).count = shown;
    if (!source.characteristics.isEmpty())
        tell(Kind::NotesNotHeld).count = source.characteristics.size();
    if (!source.attributes.isEmpty())
        tell(Kind::AttributesNotHeld, source.attributes.join(QLatin1String(", "))).count =
            source.attributes.size();
    if (!source.responseSets.isEmpty())
        tell(Kind::ResponseSetsNotHeld, source.responseSets.join(QLatin1String(", "))).count =
            source.responseSets.size();
    if (!source.variableSets.isEmpty())
        tell(Kind::VariableSetsNotHeld, source.variableSets.join(QLatin1String(", "))).count =
            source.variableSets.size();
    setWeight(file);
}

void ConversionExtras::tellVariable(const ConversionColumn& column)
{
    const TStatVariableDescription& source =
        m_dictionary.description->variables.at(column.variable);
    m_variable = column.name;
    if (!source.characteristics.isEmpty())
        tell(Kind::NotesNotHeld).count = source.characteristics.size();
    if (!source.attributes.isEmpty())
        tell(Kind::AttributesNotHeld, source.attributes.join(QLatin1String(", "))).count =
            source.attributes.size();
    if (!source.role.isEmpty())
        tell(Kind::RoleNotHeld, source.role);
}

// Only SPSS has one; elsewhere, and without its variable, the rows count alike.
void ConversionExtras::setWeight(ConversionFile& file)
{
    const int weight = m_dictionary.description->weight;
    if (weight < 0)
        return;
    if (m_options.format == ConversionFormat::Spss) {
        for (int c = 0; c < file.columns.size() && file.weight < 0; ++c)
            file.weight = file.columns.at(c).variable == weight ? c : -1;
    }
    if (file.weight < 0)
        tell(Kind::WeightNotHeld, m_dictionary.description->variables.at(weight).name);
}

} // namespace tessel
