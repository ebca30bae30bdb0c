// Writes the rows of an SPSS or Stata file once more, for comparison with "tessel convert": the
// values are ready in memory, and a bare loop hands them to libreadstat's writer. Labels are left
// out.
//
// usage: bare_stat_writer FILE.sav|FILE.dta COPY
#include <readstat.h>

#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <deque>
#include <fcntl.h>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

union Cell {
    double number;
    const char* text;
};

struct Variable {
    std::string name;
    std::string format;
    readstat_type_t type;
    std::size_t width;
};

struct Rows {
    std::vector<Variable> variables;
    std::vector<Cell> cells;
    std::deque<std::string> texts;
};

Rows& of(void* context)
{
    return *static_cast<Rows*>(context);
}

int onVariable(int, readstat_variable_t* variable, const char*, void* context)
{
    const readstat_type_t type = readstat_variable_get_type(variable);
    const bool isText = type == READSTAT_TYPE_STRING;
    of(context).variables.push_back(
        { readstat_variable_get_name(variable), readstat_variable_get_format(variable), type,
            isText ? readstat_variable_get_storage_width(variable) : 0 });
    return READSTAT_HANDLER_OK;
}

int onValue(int, readstat_variable_t*, readstat_value_t value, void* context)
{
    Rows& rows = of(context);
    Cell cell {};
    if (readstat_value_type(value) == READSTAT_TYPE_STRING) {
        rows.texts.emplace_back(readstat_string_value(value));
        cell.text = rows.texts.back().c_str();
    } else {
        cell.number = readstat_double_value(value);
    }
    rows.cells.push_back(cell);
    return READSTAT_HANDLER_OK;
}

struct File {
    int descriptor;
    std::string buffer;

    bool flush()
    {
        const bool isWhole =
            write(descriptor, buffer.data(), buffer.size()) == ssize_t(buffer.size());
        buffer.clear();
        return isWhole;
    }
};

ssize_t onData(const void* data, std::size_t size, void* context)
{
    constexpr std::size_t most = 1 << 20;
    auto& file = *static_cast<File*>(context);
    file.buffer.append(static_cast<const char*>(data), size);
    return file.buffer.size() < most || file.flush() ? ssize_t(size) : -1;
}

readstat_error_t insert(readstat_writer_t* writer, const readstat_variable_t* variable, Cell cell)
{
    if (variable->type == READSTAT_TYPE_STRING)
        return readstat_insert_string_value(writer, variable, cell.text);
    if (std::isnan(cell.number))
        return readstat_insert_missing_value(writer, variable);
    switch (variable->type) {
    case READSTAT_TYPE_INT8:
        return readstat_insert_int8_value(writer, variable, int8_t(cell.number));
    case READSTAT_TYPE_INT16:
        return readstat_insert_int16_value(writer, variable, int16_t(cell.number));
    case READSTAT_TYPE_INT32:
        return readstat_insert_int32_value(writer, variable, int32_t(cell.number));
    case READSTAT_TYPE_FLOAT:
        return readstat_insert_float_value(writer, variable, float(cell.number));
    default:
        return readstat_insert_double_value(writer, variable, cell.number);
    }
}

bool writeRows(const Rows& rows, bool isStata, const char* path)
{
    File file { open(path, O_CREAT | O_TRUNC | O_WRONLY, 0600), {} };
    readstat_writer_t* writer = readstat_writer_init();
    readstat_set_data_writer(writer, onData);
    std::vector<readstat_variable_t*> variables;
    for (const Variable& source : rows.variables) {
        variables.push_back(
            readstat_add_variable(writer, source.name.c_str(), source.type, source.width));
        readstat_variable_set_format(variables.back(), source.format.c_str());
    }
    const long count = long(rows.cells.size() / rows.variables.size());
    readstat_error_t error = READSTAT_OK;
    if (isStata) {
        readstat_writer_set_file_format_version(writer, 118);
        error = readstat_begin_writing_dta(writer, &file, count);
    } else {
        readstat_writer_set_compression(writer, READSTAT_COMPRESS_ROWS);
        error = readstat_begin_writing_sav(writer, &file, count);
    }
    const Cell* cell = rows.cells.data();
    for (long row = 0; row < count && error == READSTAT_OK; ++row) {
        readstat_begin_row(writer);
        for (readstat_variable_t* variable : variables)
            error = error == READSTAT_OK ? insert(writer, variable, *cell++) : error;
        error = error == READSTAT_OK ? readstat_end_row(writer) : error;
    }
    error = error == READSTAT_OK ? readstat_end_writing(writer) : error;
    readstat_writer_free(writer);
    const bool isWritten = file.flush() && fsync(file.descriptor) == 0;
    close(file.descriptor);
    return isWritten && error == READSTAT_OK;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 3)
        return std::fprintf(stderr, "usage: bare_stat_writer FILE.sav|FILE.dta COPY\n"), 2;
    const std::string path = argv[1];
    const bool isStata = path.size() > 4 && path.substr(path.size() - 4) == ".dta";
    Rows rows;
    readstat_parser_t* parser = readstat_parser_init();
    readstat_set_variable_handler(parser, onVariable);
    readstat_set_value_handler(parser, onValue);
    const auto parse = isStata ? readstat_parse_dta : readstat_parse_sav;
    const readstat_error_t error = parse(parser, path.c_str(), &rows);
    readstat_parser_free(parser);
    if (error != READSTAT_OK || rows.cells.empty())
        return std::fprintf(stderr, "%s cannot be read or has no rows\n", argv[1]), 1;
    const auto begin = std::chrono::steady_clock::now();
    if (!writeRows(rows, isStata, argv[2]))
        return std::fprintf(stderr, "%s cannot be written\n", argv[2]), 1;
    const std::chrono::duration<double> time = std::chrono::steady_clock::now() - begin;
    std::printf("%.3f\n", time.count());
    return 0;
}
