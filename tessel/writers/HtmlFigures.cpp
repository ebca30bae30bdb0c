#include "writers/HtmlFigures.h"

#include "text/ShownText.h"
#include "writers/HtmlPage.h"

#include <QFileInfo>
#include <QLocale>

#include <algorithm>
#include <cmath>

using namespace tessel;

namespace {

constexpr int MostCodes = 100; // of longer sets those that nobody has are left out

const char hiddenText[] = "<small>hidden</small>";

QString numberText(double number)
{
    constexpr int Digits = 6;
    return QLocale::c().toString(number, 'g', Digits);
}

QString numberText(const std::optional<double>& number)
{
    return number && std::isfinite(*number) ? numberText(*number) : QStringLiteral("\u2013");
}

QString weightText(double weight)
{
    return QLocale(QLocale::English, QLocale::UnitedStates).toString(weight, 'f', 1);
}

QString countText(const StatisticsCell& cell)
{
    return cell.isHidden() ? QLatin1String(hiddenText) : grouped(cell.count().value_or(0));
}

QString weightText(const StatisticsCell& cell)
{
    return cell.isHidden() ? QLatin1String(hiddenText) : weightText(cell.weight().value_or(0));
}

// In hundredths of the whole; nothing where either is hidden.
std::optional<double> shareOf(double part, double whole)
{
    return whole > 0 ? std::optional<double>(100 * part / whole) : std::nullopt;
}

std::optional<double> shareOf(const StatisticsCell& part, const StatisticsCell& whole)
{
    if (part.isHidden() || whole.isHidden())
        return std::nullopt;
    return shareOf(double(part.count().value_or(0)), double(whole.count().value_or(0)));
}

std::optional<double> weightedShareOf(const StatisticsCell& part, const StatisticsCell& whole)
{
    if (part.isHidden() || whole.isHidden())
        return std::nullopt;
    return shareOf(part.weight().value_or(0), whole.weight().value_or(0));
}

QString percentText(const std::optional<double>& share)
{
    return share ? QString::number(*share, 'f', 1) : QString();
}

QString numberCell(const QString& html)
{
    return QLatin1String("<td class=number>") + html;
}

QString kindText(StatisticsKind kind)
{
    switch (kind) {
    case StatisticsKind::Valid:
        return QStringLiteral("Valid");
    case StatisticsKind::Missing:
        return QStringLiteral("Missing");
    case StatisticsKind::NotApplicable:
        return QStringLiteral("Not applicable");
    case StatisticsKind::Refused:
        return QStringLiteral("Refused");
    case StatisticsKind::Default:
        return QStringLiteral("Default");
    case StatisticsKind::Blank:
        return QStringLiteral("Blank");
    case StatisticsKind::NotANumber:
        return QStringLiteral("No number");
    case StatisticsKind::Unfit:
        break;
    }
    return QStringLiteral("Does not fit the item");
}

QString codeOf(const DataCode& code)
{
    return code.highCode.isNull()
        ? shownCode(code.code)
        : QStringLiteral("%1 to %2").arg(shownCode(code.code), shownCode(code.highCode));
}

// What of a long set is worth a row.
bool isShown(const StatisticsCell& cell, std::size_t count)
{
    return count <= MostCodes || !cell.isZero();
}

double highestOf(const std::vector<StatisticsBin>& bins)
{
    double highest = 1;
    for (const StatisticsBin& bin : bins)
        highest = std::max(highest, bin.cell.weight().value_or(0));
    return highest;
}

} // namespace

HtmlFigures::HtmlFigures(
    const DataFigures& figures, int languages, const HtmlTexts& texts, QString& page)
    : m_dictionary(figures.dictionary)
    , m_report(figures.report)
    , m_fields(figures)
    , m_languages(languages)
    , m_texts(texts)
    , m_page(page)
{
}

// ---- records and sources

void HtmlFigures::writeRows(const QString& name)
{
    for (std::size_t i = 0; i < m_report.records.size(); ++i) {
        const DataRecord& record = m_dictionary.records[i];
        if (!name.isNull() && record.name != name)
            continue;
        const RecordStatistics& rows = m_report.records[i];
        m_page += QLatin1String("<p>In the data: ") + countText(rows.rows) + QLatin1String(" rows");
        if (rows.isWeighted)
            m_page += QLatin1String(", weight ") + weightText(rows.rows);
        if (rows.isWeighted && rows.withoutWeight() > 0) {
            m_page += QLatin1String("; ") + grouped(rows.withoutWeight())
                + QLatin1String(" rows weigh nothing, as their weight cannot be used");
        }
    }
}

QStringList HtmlFigures::facts() const
{
    QStringList facts;
    for (const SourceFile& file : m_report.files)
        facts.append(QFileInfo(file.path).fileName());
    if (m_report.hasCases && !m_report.cases.isHidden())
        facts.append(QStringLiteral("%1 cases").arg(grouped(m_report.cases.count().value_or(0))));
    if (m_report.weight >= 0)
        facts.append(QStringLiteral("weighted by %1").arg(nameOf(m_report.weight)));
    if (m_report.hiddenBelow > 0) {
        facts.append(QStringLiteral("figures of fewer than %1 values are hidden, with others from "
                                    "which they would follow")
                         .arg(m_report.hiddenBelow));
    }
    return facts;
}

QString HtmlFigures::nameOf(int variable) const
{
    return m_dictionary.variables[std::size_t(variable)].name;
}

QStringList HtmlFigures::labelsOf(const DataCode& code) const
{
    if (m_languages <= 1)
        return { m_dictionary.labelText(code.label) };
    QStringList labels;
    for (int i = 0; i < m_languages; ++i)
        labels.append(m_dictionary.labelText(code.label, i));
    return labels;
}

// ---- variables

void HtmlFigures::writeField(const ListedField& field)
{
    const VariableStatistics* variable = m_fields.of(field);
    if (!variable)
        return;
    writeNumbers(*variable);
    for (std::size_t i = 0; i < variable->valueSets.size(); ++i)
        writeSet(*variable, i);
    if (variable->valueSets.empty()) {
        writeHead(variable->isWeighted);
        writeKinds(*variable);
    }
    writeOutside(*variable);
}

void HtmlFigures::writeSet(const VariableStatistics& variable, std::size_t index)
{
    const StatisticsValueSet& valueSet = variable.valueSets[index];
    writeHead(variable.isWeighted);
    if (variable.valueSets.size() > 1) {
        const QString name = m_dictionary.valueSets[std::size_t(valueSet.valueSet)].name;
        m_page += QLatin1String("<tr><th scope=rowgroup colspan=9>") + htmlText(name);
    }
    writeCodes(variable, valueSet);
    if (index == 0)
        writeKinds(variable);
    else
        m_page += QLatin1String("</table>");
}

void HtmlFigures::writeHead(bool isWeighted)
{
    m_page += QLatin1String("<table class=figures><thead><tr><th scope=col>Value<th scope=col>Label"
                            "<th scope=col class=number>Number<th scope=col class=number>%");
    if (isWeighted) {
        m_page += QLatin1String("<th scope=col class=number>Weighted"
                                "<th scope=col class=number>Weighted %");
    }
    m_page += QLatin1String("<td><tbody>");
}

void HtmlFigures::writeCodes(const VariableStatistics& variable, const StatisticsValueSet& valueSet)
{
    const QVector<DataCode>& codes = m_dictionary.valueSets[std::size_t(valueSet.valueSet)].codes;
    int leftOut = 0;
    for (std::size_t i = 0; i < valueSet.codes.size(); ++i) {
        if (!isShown(valueSet.codes[i], valueSet.codes.size())) {
            ++leftOut;
            continue;
        }
        const DataCode& code = codes.at(int(i));
        m_page += QLatin1String("<tr><th scope=row>") + htmlText(codeOf(code));
        const StatisticsKind kind = valueSet.kinds[i];
        if (kind != StatisticsKind::Valid)
            m_page +=
                QLatin1String(" <small>") + kindText(kind).toLower() + QLatin1String("</small>");
        m_page += QLatin1String("<td>");
        m_texts.write("", labelsOf(code), "");
        writeCells(variable, valueSet.codes[i]);
    }
    if (leftOut > 0) {
        m_page += QStringLiteral("<tr><th scope=row colspan=2>%1 codes that nobody has")
                      .arg(grouped(leftOut));
        writeCells(variable, StatisticsCell());
    }
}

void HtmlFigures::writeCells(const VariableStatistics& variable, const StatisticsCell& cell)
{
    const std::optional<double> share = shareOf(cell, variable.total);
    const std::optional<double> weighted = weightedShareOf(cell, variable.total);
    m_page += numberCell(countText(cell)) + numberCell(percentText(share));
    if (variable.isWeighted)
        m_page += numberCell(weightText(cell)) + numberCell(percentText(weighted));
    const std::optional<double> length = variable.isWeighted ? weighted : share;
    m_page += QLatin1String("<td class=bar>");
    if (length && *length > 0)
        m_page += QStringLiteral("<b style=width:%1%></b>").arg(*length, 0, 'f', 1);
    m_page += QLatin1Char('\n');
}

// All that there is, by what it is counted as; ends the table.
void HtmlFigures::writeKinds(const VariableStatistics& variable)
{
    m_page += QLatin1String("<tbody class=kinds>");
    for (std::size_t i = 0; i < StatisticsKindCount; ++i) {
        const StatisticsKind kind = StatisticsKind(i);
        if (kind == StatisticsKind::Valid || !variable.of(kind).isZero())
            writeKind(variable, kindText(kind), variable.of(kind));
        if (kind == StatisticsKind::Valid && !variable.outside.isZero())
            writeKind(variable, QStringLiteral("Of these outside the values"), variable.outside);
    }
    for (const StatisticsCode& missing : variable.missingKinds)
        writeKind(variable, QStringLiteral("Of those missing %1").arg(missing.code), missing.cell);
    writeKind(variable, QStringLiteral("All"), variable.total);
    m_page += QLatin1String("</table>");
}

void HtmlFigures::writeKind(
    const VariableStatistics& variable, const QString& name, const StatisticsCell& cell)
{
    m_page += QLatin1String("<tr><th scope=row colspan=2>") + htmlText(name);
    writeCells(variable, cell);
}

void HtmlFigures::writeOutside(const VariableStatistics& variable)
{
    if (variable.outsideCodes.isEmpty())
        return;
    QStringList codes;
    for (const StatisticsCode& code : variable.outsideCodes) {
        const QString more = code.uncertain > 0 ? QStringLiteral(" or more") : QString();
        codes.append(htmlText(shownCode(code.code)) + QLatin1String(" (") + countText(code.cell)
            + more + QLatin1Char(')'));
    }
    m_page += QLatin1String("<p>Outside the values: ") + codes.join(QLatin1String(", "));
    if (!variable.hasAllOutsideCodes)
        m_page += QLatin1String(" and others");
}

// ---- numbers

void HtmlFigures::writeNumbers(const VariableStatistics& variable)
{
    if (!variable.hasNumbers || !variable.isQuantity)
        return;
    const auto bound = [](const QString& text) {
        return text.isNull() ? QString::fromLatin1(hiddenText) : htmlText(text);
    };
    m_page += QLatin1String("<table class=figures><thead><tr><td>");
    for (const char* name : { "Minimum", "Lower quartile", "Median", "Upper quartile", "Maximum",
             "Mean", "Std. deviation" })
        m_page += QLatin1String("<th scope=col class=number>") + QLatin1String(name);
    m_page += QLatin1String("<tbody>");
    const auto add = [&](const char* name, const StatisticsMoments& moments) {
        m_page += QLatin1String("<tr><th scope=row>") + QLatin1String(name);
        for (const QString& text : { bound(variable.lowest), numberText(moments.lowerQuartile),
                 numberText(moments.median), numberText(moments.upperQuartile),
                 bound(variable.highest), numberText(moments.mean), numberText(moments.deviation) })
            m_page += numberCell(text);
    };
    add("Values", variable.moments);
    if (variable.isWeighted)
        add("Weighted", variable.weightedMoments);
    m_page += QLatin1String("</table>");
    if (variable.moments.quartileError > 0) {
        m_page += QStringLiteral("<p>Quartiles are approximate, by at most %1 % of the values")
                      .arg(100 * variable.moments.quartileError, 0, 'g', 2);
    }
    writeHistogram(variable);
}

// Bars from the left to the right; what they show is told in words as well.
void HtmlFigures::writeHistogram(const VariableStatistics& variable)
{
    const std::vector<StatisticsBin>& bins = variable.histogram;
    if (bins.empty())
        return;
    constexpr int Width = 10;
    constexpr int Height = 50;
    const double highest = highestOf(bins);
    QStringList words;
    QString bars;
    for (std::size_t i = 0; i < bins.size(); ++i) {
        const StatisticsBin& bin = bins[i];
        const double height = Height * bin.cell.weight().value_or(0) / highest;
        words.append(QStringLiteral("%1 to %2: %3")
                         .arg(numberText(bin.low), numberText(bin.high),
                             bin.cell.isHidden() ? QStringLiteral("hidden")
                                                 : grouped(bin.cell.count().value_or(0))));
        bars +=
            QStringLiteral("<rect x=%1 y=%2 width=%3 height=%4><title>%5</title></rect>")
                .arg(QString::number(Width * int(i)), QString::number(Height - height, 'f', 1),
                    QString::number(Width - 1), QString::number(height, 'f', 1), words.constLast());
    }
    m_page += QStringLiteral("<svg role=img viewBox=\"0 0 %1 %2\" preserveAspectRatio=none "
                             "aria-label=\"Histogram. %3\">%4</svg>")
                  .arg(QString::number(Width * int(bins.size())), QString::number(Height),
                      words.join(QLatin1String("; ")), bars);
    m_page += QStringLiteral("<p class=ends><span>%1</span> <span>%2</span>")
                  .arg(numberText(bins.front().low), numberText(bins.back().high));
}

// ---- cross tables

void HtmlFigures::writeCrosses()
{
    for (const CrossTable& cross : m_report.crosses)
        writeCross(cross);
}

void HtmlFigures::writeCategory(int valueSet, int code, const char* element)
{
    const QVector<DataCode>& codes = m_dictionary.valueSets[std::size_t(valueSet)].codes;
    m_page += QLatin1String(element);
    if (code >= codes.size()) {
        m_page += QLatin1String("Without a code");
        return;
    }
    m_page += htmlText(codeOf(codes.at(code)));
    m_texts.writeLabel(labelsOf(codes.at(code)));
}

void HtmlFigures::writeCross(const CrossTable& cross)
{
    const QString names =
        htmlText(nameOf(cross.first)) + QLatin1String(" by ") + htmlText(nameOf(cross.second));
    m_page += QLatin1String("<h3>") + names + QLatin1String(cross.isWeighted ? ", weighted" : "")
        + QLatin1String("</h3><div class=wide tabindex=0 role=region aria-label=\"") + names
        + QLatin1String("\"><table class=cross><thead><tr><td>");
    for (int column = 0; column < cross.columnCount; ++column)
        writeCategory(cross.secondValueSet, column, "<th scope=col>");
    m_page += QLatin1String("<th scope=col>All<tbody>");
    for (int line = 0; line < cross.lineCount; ++line)
        writeCrossLine(cross, line);
    m_page += QLatin1String("<tr><th scope=row>All");
    const auto text = [&cross](const StatisticsCell& cell) {
        return cross.isWeighted ? weightText(cell) : countText(cell);
    };
    for (const StatisticsCell& cell : cross.columnTotals)
        m_page += numberCell(text(cell));
    m_page += numberCell(text(cross.total)) + QLatin1String("</table></div>\n");
}

void HtmlFigures::writeCrossLine(const CrossTable& cross, int line)
{
    m_page += QLatin1String("<tr>");
    writeCategory(cross.firstValueSet, line, "<th scope=row>");
    const auto text = [&cross](const StatisticsCell& cell) {
        return cross.isWeighted ? weightText(cell) : countText(cell);
    };
    for (int column = 0; column < cross.columnCount; ++column)
        m_page += numberCell(text(cross.cell(line, column)));
    m_page += numberCell(text(cross.lineTotals[std::size_t(line)])) + QLatin1Char('\n');
}
