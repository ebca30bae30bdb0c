#include <tessel_data/CodePlaces_p.h>

namespace tessel {

CodePlaces::CodePlaces(const DataDictionary& dictionary, int valueSet, const DataVariable& variable)
    : m_codes(dictionary.codesOf(valueSet, variable))
{
    const QVector<DataCode>& codes = dictionary.valueSets[std::size_t(valueSet)].codes;
    m_rest = codes.size();
    m_kinds.fill(m_rest);
    for (int i = 0; dictionary.hasMissingKinds && i < codes.size(); ++i) {
        const QString& code = codes.at(i).code;
        const int letter =
            code.size() == 2 && code.at(0) == QLatin1Char('.') ? code.at(1).unicode() - 'a' : -1;
        if (letter >= 0 && letter < int(Letters))
            m_kinds[std::size_t(letter)] = i;
    }
}

// A blank of another special value than that of the code is no such code.
int CodePlaces::ofBlank(Special special) const
{
    const CodeTable::Match& blank = m_codes.blank();
    return blank.special == special ? placeOf(blank) : m_rest;
}

int CodePlaces::of(const DataBatch& batch, quint32 cell) const
{
    const ValueState state = batch.states[cell];
    switch (state.kind()) {
    case ValueKind::Number:
        return of(batch.numbers[cell]);
    case ValueKind::Real:
        return of(batch.realOf(cell));
    case ValueKind::Text:
        return of(batch.textOf(cell));
    case ValueKind::Blank:
        break;
    case ValueKind::NotANumber:
    case ValueKind::Unfit:
        return m_rest;
    }
    const char letter = batch.missingKind(cell);
    const bool isKind = letter >= 'a' && letter <= 'z';
    return isKind ? ofKind(letter) : ofBlank(state.special());
}

} // namespace tessel
