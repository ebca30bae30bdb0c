#include "writers/HtmlTexts.h"

#include "writers/HtmlPage.h"

#include <algorithm>

namespace {

bool isBlank(const QStringList& texts)
{
    return std::all_of(
        texts.cbegin(), texts.cend(), [](const QString& text) { return text.trimmed().isEmpty(); });
}

} // namespace

void HtmlTexts::write(const char* start, const QStringList& texts, const char* end)
{
    if (m_tags.isEmpty() && !*start) {
        m_page += htmlText(texts.constFirst());
        return;
    }
    for (int i = 0; i < texts.size(); ++i) {
        if (i > 0 && (texts.at(i).isEmpty() || texts.at(i) == texts.constFirst()))
            continue;
        m_page += QLatin1String(*start ? start : "<i");
        if (!m_tags.isEmpty())
            m_page += QLatin1String(" lang=") + m_tags.at(i);
        m_page += QLatin1Char('>') + htmlText(texts.at(i)) + QLatin1String(*start ? end : "</i>");
    }
}

void HtmlTexts::writeLabel(const QStringList& texts)
{
    if (isBlank(texts))
        return;
    m_page += QLatin1Char(' ');
    write("<i", texts, "</i>");
}
