#include "writers/SetupWriters.h"

#include "writers/SetupWriter.h"

#include <algorithm>

namespace {

QString rText(const QString& text)
{
    QString result = QStringLiteral("\"");
    for (int i = 0; i < text.size(); ++i) {
        const QChar character = text.at(i);
        const bool isPair = character.isHighSurrogate() && i + 1 < text.size();
        if (character == QLatin1Char('"') || character == QLatin1Char('\\'))
            result += QLatin1Char('\\') + QString(character);
        else if (isPair)
            result += QString(character) + text.at(++i);
        else if (character.isPrint())
            result += character;
        else
            result +=
                QStringLiteral("\\u%1").arg(int(character.unicode()), 4, 16, QLatin1Char('0'));
    }
    return result + QLatin1Char('"');
}

// "c(...)" over several lines, as a line that is too long is hard to read.
QString vector(const QStringList& parts)
{
    return QStringLiteral("c(\n    %1)").arg(parts.join(QLatin1String(",\n    ")));
}

const char functions[] = R"(
counted <- function(count, one, several) paste(count, if (count == 1) one else several)

# The lines without a byte-order mark and carriage returns. What is not UTF-8 is Windows-1252.
read_data_lines <- function(file) {
  bytes <- readr::read_file_raw(file)
  nulls <- grepRaw(as.raw(0), bytes, fixed = TRUE, all = TRUE)
  if (length(nulls) > 0) {
    message(file, ": ", counted(length(nulls), "NUL is", "NULs are"), " read as \"?\"")
    bytes[nulls] <- charToRaw("?")
  }
  lines <- if (length(bytes) > 0) readr::read_lines(bytes, progress = FALSE) else character()
  odd <- !validUTF8(lines)
  if (any(odd)) {
    message(
      file, ": ", counted(sum(odd), "line is no UTF-8 and is", "lines are no UTF-8 and are"),
      " read as Windows-1252"
    )
    lines[odd] <- iconv(lines[odd], "windows-1252", "UTF-8", sub = "?")
  }
  lines <- sub("\r$", "", sub("^\ufeff", "", lines))
  lines[!startsWith(lines, "~") & grepl("[^ \t]", lines)]
}

# readr::read_fwf() counts bytes, which are the columns of lines in ASCII only.
cut_columns <- function(lines, start, end) {
  if (length(lines) == 0) {
    return(lapply(start, function(column) character()))
  }
  if (any(grepl("[^ -~]", lines, useBytes = TRUE))) {
    return(Map(function(first, last) substr(lines, first, last), start, end))
  }
  cells <- readr::read_fwf(I(paste0(lines, "\n", collapse = "")),
    readr::fwf_positions(start, end, paste0("V", seq_along(start))),
    col_types = readr::cols(.default = readr::col_character()),
    trim_ws = FALSE, na = character(), skip_empty_rows = FALSE, progress = FALSE
  )
  lapply(cells, function(cell) ifelse(is.na(cell), "", cell))
}

# Numbers without a point have the last digits behind it. What is no number is missing, and told.
read_number <- function(text, name, decimals) {
  text <- sub(" +$", "", text)
  plain <- sub(",", ".", sub("^ *([-+]?) *", "\\1", text), fixed = TRUE)
  is_number <- grepl("^[-+]?([0-9]+[.]?[0-9]*|[.][0-9]+)$", plain)
  odd <- sum(!is_number & grepl("[^ ]", text))
  if (odd > 0) {
    warning(
      name, ": ",
      counted(odd, "value is no number and is missing", "values are no numbers and are missing"),
      call. = FALSE
    )
  }
  number <- rep(NA_real_, length(text))
  number[is_number] <- as.numeric(plain[is_number])
  implied <- is_number & !grepl(".", plain, fixed = TRUE)
  number[implied] <- number[implied] / 10^decimals
  number
}

# U+2424 stands for a line break.
read_text <- function(text) gsub("\u2424", "\n", sub(" +$", "", text), fixed = TRUE)

# With the package haven as haven::labelled_spss(), else with the same attributes.
label_values <- function(x, label, set) {
  if (is.null(set)) {
    attr(x, "label") <- label
  } else if (requireNamespace("haven", quietly = TRUE)) {
    x <- haven::labelled_spss(x, set$labels, set$na_values, set$na_range, label)
  } else {
    attributes(x) <- c(list(label = label), set)
  }
  x
}

column <- function(name, start, end, decimals, label, set) {
  list(name = name, start = start, end = end, decimals = decimals, label = label, set = set)
}

read_column <- function(text, column) {
  x <- if (is.na(column$decimals)) read_text(text) else read_number(text, column$name, column$decimals)
  label_values(
    x, if (nzchar(column$label)) column$label, if (!is.na(column$set)) value_sets[[column$set]]
  )
}

read_record <- function(lines, columns) {
  part <- function(name) sapply(columns, function(column) column[[name]])
  cells <- Map(read_column, cut_columns(lines, part("start"), part("end")), columns)
  tibble::as_tibble(stats::setNames(cells, part("name")), .name_repair = "minimal")
}
)";

class RWriter : private SetupWriter {
public:
    explicit RWriter(const SetupPlan& plan)
        : SetupWriter(plan)
    {
    }

    QByteArray write();

private:
    void addHeading();
    void addLocaleCheck(const QString& text);
    void addSets();
    void addSet(const SetupLabels& labels);
    QString code(const SetupLabel& label, const SetupLabels& labels) const;
    void addRecord(const SetupRecord& record);
    QString column(const SetupVariable& variable) const;
};

QByteArray RWriter::write()
{
    addSets();
    QString body;
    std::swap(body, m_text);
    add(QStringLiteral("\nlines <- read_data_lines(file)"));
    if (m_plan.typeWidth > 0) {
        add(QStringLiteral("types <- sub(\" +$\", \"\", substr(lines, %1, %2))")
                .arg(QString::number(m_plan.typeStart),
                    QString::number(m_plan.typeStart + m_plan.typeWidth - 1)));
    }
    add(QLatin1String("records <- list()"));
    for (const SetupRecord& record : m_plan.records)
        addRecord(record);
    body += m_text;
    m_text.clear();
    addHeading();
    addLocaleCheck(m_text + body);
    m_text += QString::fromUtf8(functions) + QLatin1Char('\n');
    return (m_text + body).toUtf8();
}

void RWriter::addHeading()
{
    const QStringList lines =
        m_plan.heading({ QStringLiteral("Carry it out with Rscript PROGRAM DATAFILE, or name the "
                                        "file below and use source() with the encoding UTF-8."),
            QStringLiteral("The list records has a data frame for each record type."),
            QStringLiteral("Needs the package readr; labels are those of the package haven.") });
    for (const QString& line : lines)
        add(QLatin1String("# ") + setupComment(line));
    add(QStringLiteral("\nfile <- \"%1\"").arg(m_plan.dataFile));
    add(QLatin1String("if (length(commandArgs(TRUE)) > 0) file <- commandArgs(TRUE)[1]"));
}

void RWriter::addLocaleCheck(const QString& text)
{
    const bool isAscii = std::all_of(
        text.begin(), text.end(), [](QChar character) { return character.unicode() < 0x80; });
    if (isAscii)
        return;
    add(QStringLiteral("if (!identical(nchar(\"%1\"), 1L)) {").arg(QChar(0xE9)));
    add(QLatin1String(
        "  stop(\"this script is UTF-8: use a UTF-8 locale, or source() with encoding "
        "= \\\"UTF-8\\\"\")\n}"));
}

QString RWriter::code(const SetupLabel& label, const SetupLabels& labels) const
{
    return labels.isText ? rText(label.text) : setupNumber(label.low, labels.decimals);
}

void RWriter::addSets()
{
    add(QLatin1String("value_sets <- list()"));
    for (const SetupLabels& labels : m_plan.labels) {
        if (!labels.labels.isEmpty())
            addSet(labels);
    }
}

void RWriter::addSet(const SetupLabels& labels)
{
    QStringList codes;
    QStringList texts;
    for (const SetupLabel& label : labels.labels) {
        if (!label.label.isEmpty()) {
            codes.append(code(label, labels));
            texts.append(rText(label.label));
        }
    }
    QStringList missing;
    QString range = QStringLiteral("NULL");
    for (const SetupLabel& label : labels.missing) {
        if (label.isRange()) {
            range = QStringLiteral("c(%1, %2)")
                        .arg(code(label, labels), setupNumber(label.high, labels.decimals));
        } else {
            missing.append(code(label, labels));
        }
    }
    add(QStringLiteral("value_sets[[%1]] <- list(").arg(rText(labels.name)));
    add(QStringLiteral("  labels = %1,")
            .arg(codes.isEmpty()
                    ? QStringLiteral("NULL")
                    : QStringLiteral("stats::setNames(%1, %2)").arg(vector(codes), vector(texts))));
    add(QStringLiteral("  na_values = %1,")
            .arg(missing.isEmpty()
                    ? QStringLiteral("NULL")
                    : QStringLiteral("c(%1)").arg(missing.join(QLatin1String(", ")))));
    add(QStringLiteral("  na_range = %1\n)").arg(range));
}

void RWriter::addRecord(const SetupRecord& record)
{
    const QString lines = m_plan.typeWidth > 0
        ? QStringLiteral("lines[types == %1]").arg(rText(record.typeCode))
        : QStringLiteral("lines");
    add(QLatin1String("\n# ") + setupComment(record.name + QLatin1String(": ") + record.label));
    add(QStringLiteral("records[[%1]] <- read_record(%2, list(").arg(rText(record.name), lines));
    QStringList columns;
    for (const SetupVariable& variable : record.variables)
        columns.append(column(variable));
    add(columns.join(QLatin1String(",\n")) + QLatin1String("\n))"));
}

QString RWriter::column(const SetupVariable& variable) const
{
    const QString none = QStringLiteral("NA");
    return QStringLiteral("  column(%1, %2, %3, %4, %5, %6)")
        .arg(rText(variable.name), QString::number(variable.start), QString::number(variable.end()),
            variable.type == SetupType::Text ? none : QString::number(variable.decimals),
            rText(variable.label),
            variable.labels < 0 ? none : rText(m_plan.labels[std::size_t(variable.labels)].name));
}

} // namespace

QByteArray writeRScript(const SetupPlan& plan)
{
    return RWriter(plan).write();
}
