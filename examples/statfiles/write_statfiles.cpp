// write_statfiles DICTIONARY DATA FOLDER: writes the households and the persons of a census, each
// as an SPSS file and as a Stata file. The dictionary is read with the library, the fixed-width
// lines are cut here, and libreadstat writes.
#include <model_Tessel/CSProDataImport.h>
#include <model_Tessel/CSProValueSet.h>
#include <model_Tessel/ErrorManager.h>

#include <QCoreApplication>
#include <QDate>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QLoggingCategory>
#include <QSaveFile>
#include <QSet>
#include <QTextStream>
#include <QVector>

#include <readstat.h>

#include <algorithm>
#include <clocale>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <ctime>
#include <memory>
#include <stdexcept>
#include <vector>

namespace {

// The records that are written and the items that hold a date as year, month and day.
constexpr const char* recordNames[] = { "HOUSEHOLD", "PERSON" };
constexpr const char* dateItems[] = { "VISIT_DATE" };

// One time for all files, so that every run gives the same bytes: 1 October 2023, 12:00 UTC.
constexpr std::time_t timestamp = 1'696'161'600;

// Values of TValueSetItem::type.
enum Special : int { Ordinary = 0, Missing = 1, NotApplicable = 2, Refused = 3 };

std::runtime_error failure(const QString& text)
{
    return std::runtime_error(text.toStdString());
}

void check(readstat_error_t error)
{
    if (error != READSTAT_OK)
        throw std::runtime_error(readstat_error_message(error));
}

template <typename Made> Made* made(Made* object)
{
    if (!object)
        check(READSTAT_ERROR_MALLOC);
    return object;
}

// ---- what the dictionary says

struct Code {
    QByteArray text; // as in the data, without blanks around it; empty: blank
    double number; // of a numeric item
    QByteArray label;
    int special; // a Special
};

enum class Kind { Text, Whole, Decimal, Date };

// A variable of a file in the making.
struct Column {
    const TCSProItem* item;
    bool isId; // one of the identification items
    QByteArray name;
    QString label;
    Kind kind;
    int width; // bytes of a text, columns of a number
    QByteArray setName;
    QVector<Code> codes; // of the item's first value set, without its ranges
};

struct Cell {
    QByteArray text; // without blanks around it
    double number;
    int special; // a Special
};

struct Table {
    QString fileName;
    QByteArray label;
    QString recordType;
    QVector<Column> columns;
    QVector<QVector<Cell>> rows;
};

Kind kindOf(const TCSProVariable& field)
{
    if (field.isString())
        return Kind::Text;
    const auto isName = [&](const char* name) { return field.name == QLatin1String(name); };
    if (std::any_of(std::begin(dateItems), std::end(dateItems), isName))
        return Kind::Date;
    return field.item->decimal > 0 ? Kind::Decimal : Kind::Whole;
}

// An implied point takes a column of its own once it is shown, and so do the dashes of a date.
int widthOf(const TCSProItem& item, Kind kind)
{
    if (kind == Kind::Date)
        return int(sizeof "2023-09-04") - 1;
    return item.len + (item.decimal > 0 && !item.hasDecimalChar ? 1 : 0);
}

QString labelOf(const TCSProVariable& field)
{
    const QString& occurrence = field.item->detail().occurrenceLabel;
    return occurrence.isEmpty() ? field.label
                                : QString(field.label + QLatin1String(": ") + occurrence);
}

Column columnOf(const TCSPro& dictionary, const TCSProVariable& field)
{
    Column column { field.item, field.item->record == dictionary.commonRecord, field.name.toUtf8(),
        labelOf(field), kindOf(field), 0, {}, {} };
    column.width = widthOf(*field.item, column.kind);
    if (!field.item->getHasValueSet())
        return column;
    // Sets that are linked have the same values, so the files have them once.
    const TCSProValueSet* set = field.item->getValueSet(0);
    column.setName = (set->linkedSet() ? set->linkedSet() : set)->name.toUtf8();
    for (const TValueSetItem* entry : qAsConst(*set->items)) {
        if (!set->detail(entry).highCode.isNull())
            continue;
        const QString code = entry->code.trimmed();
        column.codes.append({ code.toUtf8(), code.toDouble(),
            dictionary.labelText(entry->label).toUtf8(), entry->type });
    }
    return column;
}

// The identification items and then the items of the record. Of an item with subitems the subitems
// are taken, which are what people ask for: the year of birth, the given name.
Table tableOf(const TCSProDataImport& importer, const TCSProRecord& record)
{
    const TCSPro& dictionary = *importer.dictionary;
    Table table;
    table.fileName = record.name.toLower();
    table.label = QString(dictionary.label + QLatin1String(": ") + record.label).toUtf8();
    table.recordType = record.recordTypeValue;
    QSet<const TCSProItem*> parents;
    for (const TCSProItem* item : qAsConst(*dictionary.items))
        parents.insert(item->detail().parent);
    for (const TCSProRecord* part :
        { const_cast<const TCSProRecord*>(dictionary.commonRecord), &record }) {
        for (const TGenericField* any : qAsConst(*importer.fields)) {
            const auto& field = static_cast<const TCSProVariable&>(*any);
            if (field.item->record == part && !parents.contains(field.item))
                table.columns.append(columnOf(dictionary, field));
        }
    }
    return table;
}

// ---- what the data say

double numberOf(const TCSProItem& item, const QString& text)
{
    bool isNumber = false;
    const double number = text.toDouble(&isNumber);
    if (!isNumber)
        throw failure(item.name + QLatin1String(": not a number: ") + text);
    const bool hasPoint = item.hasDecimalChar || text.contains(QLatin1Char('.'));
    return hasPoint ? number : number / std::pow(10.0, item.decimal);
}

// Lines are cut behind their last character, so the last values may be short.
Cell cellOf(const Column& column, const QString& line)
{
    const TCSProItem& item = *column.item;
    const QString text = line.mid(item.start - 1, item.len).trimmed();
    const bool hasNumber = column.kind != Kind::Text && !text.isEmpty();
    Cell cell { text.toUtf8(), hasNumber ? numberOf(item, text) : 0, Ordinary };
    for (const Code& code : column.codes) {
        const bool isIt =
            hasNumber ? code.number == cell.number && !code.text.isEmpty() : code.text == cell.text;
        if (isIt)
            cell.special = code.special;
    }
    return cell;
}

QVector<Cell> rowOf(QVector<Column>& columns, const QString& line)
{
    QVector<Cell> row;
    for (Column& column : columns) {
        row.append(cellOf(column, line));
        // The dictionary counts characters; the files count bytes.
        if (column.kind == Kind::Text)
            column.width = std::max(column.width, row.last().text.size());
    }
    return row;
}

// The first character of a line tells its record.
void readRows(const TCSPro& dictionary, const QString& path, QVector<Table>& tables)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
        throw failure(path + QLatin1String(": ") + file.errorString());
    QTextStream lines(&file);
    lines.setCodec("UTF-8");
    int number = 0;
    for (QString line; lines.readLineInto(&line);) {
        ++number;
        const QString type = line.mid(dictionary.recordTypeStart - 1, dictionary.recordTypeLen);
        for (Table& table : tables) {
            try {
                if (table.recordType == type)
                    table.rows.append(rowOf(table.columns, line));
            } catch (const std::exception& error) {
                throw failure(QStringLiteral("%1:%2: %3")
                                  .arg(path)
                                  .arg(number)
                                  .arg(QString::fromUtf8(error.what())));
            }
        }
    }
}

// ---- the files

// One file in the making; subclasses know how its kind describes variables and stores values.
class StatFile {
public:
    explicit StatFile(const QString& path)
        : m_writer(made(readstat_writer_init()))
        , m_file(path)
    {
    }
    virtual ~StatFile() = default;

    void write(const Table& table);

protected:
    readstat_writer_t* writer() const
    {
        return m_writer.get();
    }

    virtual readstat_type_t typeOf(const Column& column) const = 0;
    virtual void describe(readstat_variable_t* variable, const Column& column) = 0;
    // Null when the kind of file has no label for any code of the column.
    virtual readstat_label_set_t* newLabelSet(const Column& column) = 0;
    virtual void begin(int rows) = 0;
    virtual void insert(
        const readstat_variable_t* variable, const Column& column, const Cell& cell) = 0;

private:
    Q_DISABLE_COPY(StatFile)

    struct Free {
        void operator()(readstat_writer_t* writer) const
        {
            readstat_writer_free(writer);
        }
    };

    static ssize_t writeBytes(const void* bytes, size_t size, void* file)
    {
        return static_cast<QSaveFile*>(file)->write(
            static_cast<const char*>(bytes), static_cast<qint64>(size));
    }

    void addVariable(const Column& column);
    void writeRows(const Table& table);

    std::unique_ptr<readstat_writer_t, Free> m_writer;
    std::vector<const readstat_variable_t*> m_variables;
    QHash<QByteArray, readstat_label_set_t*> m_sets; // by name

protected:
    QSaveFile m_file;
};

void StatFile::write(const Table& table)
{
    if (!m_file.open(QIODevice::WriteOnly))
        throw failure(m_file.errorString());
    check(readstat_set_data_writer(writer(), writeBytes));
    check(readstat_writer_set_file_label(writer(), table.label.constData()));
    check(readstat_writer_set_file_timestamp(writer(), timestamp));
    for (const Column& column : table.columns)
        addVariable(column);
    begin(table.rows.size());
    writeRows(table);
    check(readstat_end_writing(writer()));
    if (!m_file.commit())
        throw failure(m_file.errorString());
}

void StatFile::addVariable(const Column& column)
{
    const bool isText = column.kind == Kind::Text;
    readstat_variable_t* variable = made(readstat_add_variable(writer(), column.name.constData(),
        typeOf(column), isText ? static_cast<size_t>(column.width) : 0));
    describe(variable, column);
    if (!column.codes.isEmpty()) {
        if (!m_sets.contains(column.setName))
            m_sets.insert(column.setName, newLabelSet(column));
        readstat_variable_set_label_set(variable, m_sets.value(column.setName));
    }
    m_variables.push_back(variable);
}

void StatFile::writeRows(const Table& table)
{
    for (const QVector<Cell>& row : table.rows) {
        check(readstat_begin_row(writer()));
        for (int index = 0; index < row.size(); ++index) {
            const Column& column = table.columns.at(index);
            const readstat_variable_t* variable = m_variables.at(static_cast<std::size_t>(index));
            const QByteArray& text = row.at(index).text;
            if (column.kind == Kind::Text)
                check(readstat_insert_string_value(writer(), variable, text.constData()));
            else
                insert(variable, column, row.at(index));
        }
        check(readstat_end_row(writer()));
    }
}

// Days from the date to the one in the cell, which was written as year, month and day.
qint64 daysSince(const QDate& date, const Cell& cell)
{
    const QDate day = QDate::fromString(QString::fromUtf8(cell.text), QStringLiteral("yyyyMMdd"));
    if (!day.isValid())
        throw failure(QLatin1String("not a date: ") + QString::fromUtf8(cell.text));
    return date.daysTo(day);
}

// Numbers are doubles. Codes that mean a missing value stay as they are and are declared as such.
class SavFile : public StatFile {
public:
    using StatFile::StatFile;

private:
    readstat_type_t typeOf(const Column& column) const override
    {
        return column.kind == Kind::Text ? READSTAT_TYPE_STRING : READSTAT_TYPE_DOUBLE;
    }

    void describe(readstat_variable_t* variable, const Column& column) override;
    readstat_label_set_t* newLabelSet(const Column& column) override;
    void begin(int rows) override;
    void insert(
        const readstat_variable_t* variable, const Column& column, const Cell& cell) override;
};

QByteArray savFormat(const Column& column)
{
    const QByteArray width = QByteArray::number(column.width);
    switch (column.kind) {
    case Kind::Text:
        return "A" + width;
    case Kind::Whole:
        return "F" + width + ".0";
    case Kind::Decimal:
        return "F" + width + "." + QByteArray::number(column.item->decimal);
    case Kind::Date:
        break;
    }
    return "SDATE" + width;
}

// Names, categories and identification are no amounts.
readstat_measure_t measureOf(const Column& column)
{
    const bool isCategory = column.kind == Kind::Whole
        && std::any_of(column.codes.cbegin(), column.codes.cend(),
            [](const Code& code) { return code.special == Ordinary; });
    return column.kind == Kind::Text || isCategory || column.isId ? READSTAT_MEASURE_NOMINAL
                                                                  : READSTAT_MEASURE_SCALE;
}

void SavFile::describe(readstat_variable_t* variable, const Column& column)
{
    readstat_variable_set_label(variable, column.label.toUtf8().constData());
    readstat_variable_set_format(variable, savFormat(column).constData());
    readstat_variable_set_measure(variable, measureOf(column));
    readstat_variable_set_display_width(variable, std::clamp(column.width, 8, 40));
    for (const Code& code : column.codes) {
        if (code.special == Ordinary)
            continue;
        if (column.kind == Kind::Text)
            check(readstat_variable_add_missing_string_value(variable, code.text.constData()));
        else if (!code.text.isEmpty())
            check(readstat_variable_add_missing_double_value(variable, code.number));
    }
}

// A blank number has no code that could have a label.
readstat_label_set_t* SavFile::newLabelSet(const Column& column)
{
    readstat_label_set_t* set =
        made(readstat_add_label_set(writer(), typeOf(column), column.setName.constData()));
    for (const Code& code : column.codes) {
        if (column.kind == Kind::Text)
            readstat_label_string_value(set, code.text.constData(), code.label.constData());
        else if (!code.text.isEmpty())
            readstat_label_double_value(set, code.number, code.label.constData());
    }
    return set;
}

void SavFile::begin(int rows)
{
    check(readstat_writer_set_compression(writer(), READSTAT_COMPRESS_ROWS));
    check(readstat_begin_writing_sav(writer(), &m_file, rows));
}

void SavFile::insert(const readstat_variable_t* variable, const Column& column, const Cell& cell)
{
    constexpr double secondsOfDay = 86'400;
    const QDate firstDay(1582, 10, 14);
    if (cell.text.isEmpty())
        check(readstat_insert_missing_value(writer(), variable));
    else if (column.kind == Kind::Date)
        check(readstat_insert_double_value(
            writer(), variable, static_cast<double>(daysSince(firstDay, cell)) * secondsOfDay));
    else
        check(readstat_insert_double_value(writer(), variable, cell.number));
}

// Whole numbers take as few bytes as they can. Missing values have tags, whatever their code was.
class DtaFile : public StatFile {
public:
    using StatFile::StatFile;

private:
    readstat_type_t typeOf(const Column& column) const override;
    void describe(readstat_variable_t* variable, const Column& column) override;
    readstat_label_set_t* newLabelSet(const Column& column) override;
    void begin(int rows) override;
    void insert(
        const readstat_variable_t* variable, const Column& column, const Cell& cell) override;
};

// The upper ends of the types are missing values: a byte holds numbers up to 100.
readstat_type_t DtaFile::typeOf(const Column& column) const
{
    if (column.kind == Kind::Text)
        return READSTAT_TYPE_STRING;
    if (column.kind == Kind::Date)
        return READSTAT_TYPE_INT32;
    if (column.kind == Kind::Decimal || column.width > 9)
        return READSTAT_TYPE_DOUBLE;
    if (column.width > 4)
        return READSTAT_TYPE_INT32;
    return column.width > 2 ? READSTAT_TYPE_INT16 : READSTAT_TYPE_INT8;
}

// Of whole numbers the usual ones, which leave room for value labels.
QByteArray dtaFormat(const Column& column, readstat_type_t type)
{
    const QByteArray width = QByteArray::number(column.width);
    switch (column.kind) {
    case Kind::Text:
        return "%-" + width + "s";
    case Kind::Whole:
        if (type == READSTAT_TYPE_DOUBLE)
            return "%" + width + ".0f";
        return type == READSTAT_TYPE_INT32 ? "%12.0g" : "%8.0g";
    case Kind::Decimal:
        return "%" + width + "." + QByteArray::number(column.item->decimal) + "f";
    case Kind::Date:
        break;
    }
    return "%td";
}

char tagOf(int special)
{
    switch (special) {
    case Missing:
        return 'a';
    case NotApplicable:
        return 'b';
    case Refused:
        return 'c';
    default:
        return '\0';
    }
}

void DtaFile::describe(readstat_variable_t* variable, const Column& column)
{
    constexpr int longestLabel = 80;
    const QByteArray label = column.label.left(longestLabel).toUtf8();
    readstat_variable_set_label(variable, label.constData());
    readstat_variable_set_format(variable, dtaFormat(column, typeOf(column)).constData());
}

// Stata labels whole numbers and tags.
readstat_label_set_t* DtaFile::newLabelSet(const Column& column)
{
    if (column.kind == Kind::Text)
        return nullptr;
    readstat_label_set_t* set =
        made(readstat_add_label_set(writer(), READSTAT_TYPE_INT32, column.setName.constData()));
    for (const Code& code : column.codes) {
        const auto number = static_cast<std::int32_t>(code.number);
        if (const char tag = tagOf(code.special))
            readstat_label_tagged_value(set, tag, code.label.constData());
        else if (code.number == number)
            readstat_label_int32_value(set, number, code.label.constData());
    }
    return set;
}

void DtaFile::begin(int rows)
{
    constexpr std::uint8_t firstVersionInUtf8 = 118;
    check(readstat_writer_set_file_format_version(writer(), firstVersionInUtf8));
    check(readstat_begin_writing_dta(writer(), &m_file, rows));
}

void DtaFile::insert(const readstat_variable_t* variable, const Column& column, const Cell& cell)
{
    if (const char tag = tagOf(cell.special)) {
        check(readstat_insert_tagged_missing_value(writer(), variable, tag));
        return;
    }
    if (cell.text.isEmpty()) {
        check(readstat_insert_missing_value(writer(), variable));
        return;
    }
    const QDate firstDay(1960, 1, 1);
    const auto number =
        column.kind == Kind::Date ? static_cast<double>(daysSince(firstDay, cell)) : cell.number;
    switch (typeOf(column)) {
    case READSTAT_TYPE_INT8:
        check(readstat_insert_int8_value(writer(), variable, static_cast<std::int8_t>(number)));
        break;
    case READSTAT_TYPE_INT16:
        check(readstat_insert_int16_value(writer(), variable, static_cast<std::int16_t>(number)));
        break;
    case READSTAT_TYPE_INT32:
        check(readstat_insert_int32_value(writer(), variable, static_cast<std::int32_t>(number)));
        break;
    default:
        check(readstat_insert_double_value(writer(), variable, number));
    }
}

// ---- the program

QVector<Table> readTables(const QString& dictionaryPath, const QString& dataPath)
{
    if (!QFileInfo(dictionaryPath).isReadable())
        throw failure(dictionaryPath + QLatin1String(": cannot be read"));
    TCSProDataImport importer(dictionaryPath);
    importer.setReading(CSProReading::AsWritten);
    importer.openFile();
    QVector<Table> tables;
    for (const char* name : recordNames) {
        const auto& records = *importer.dictionary->records;
        const auto found = std::find_if(records.cbegin(), records.cend(),
            [&](const TCSProRecord* record) { return record->name == QLatin1String(name); });
        if (found == records.cend())
            throw failure(dictionaryPath + QLatin1String(": has no record ") + QLatin1String(name));
        tables.append(tableOf(importer, **found));
    }
    readRows(*importer.dictionary, dataPath, tables);
    return tables;
}

template <typename File> void writeFile(const Table& table, const QString& path)
{
    try {
        File(path).write(table);
    } catch (const std::exception& error) {
        throw failure(path + QLatin1String(": ") + QString::fromUtf8(error.what()));
    }
}

void writeFiles(const QString& dictionaryPath, const QString& dataPath, const QDir& folder)
{
    const QVector<Table> tables = readTables(dictionaryPath, dataPath);
    for (const Table& table : tables) {
        writeFile<SavFile>(table, folder.filePath(table.fileName + QLatin1String(".sav")));
        writeFile<DtaFile>(table, folder.filePath(table.fileName + QLatin1String(".dta")));
    }
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    QLoggingCategory::setFilterRules(QStringLiteral("default.debug=false"));
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() != 4) {
        std::fputs("usage: write_statfiles DICTIONARY DATA FOLDER\n", stderr);
        return 2;
    }
    // The time in the files is the same text in every place.
    qputenv("TZ", "UTC");
    std::setlocale(LC_TIME, "C");
    try {
        writeFiles(arguments.at(1), arguments.at(2), QDir(arguments.at(3)));
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "write_statfiles: %s\n", error.what());
    } catch (OxErrorManager* error) { // the library throws pointers
        std::fprintf(stderr, "write_statfiles: %s\n", qUtf8Printable(error->getErrorMessage()));
        delete error;
    }
    return 1;
}
