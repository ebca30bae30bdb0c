#pragma once

#include <model_Tessel/StatDictionary.h>

#include <QByteArray>
#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QString>
#include <QStringList>

#include <readstat.h>

#include <cmath>
#include <cstdio>
#include <cstring>
#include <memory>

// What the tests of SPSS and Stata files share: values as libreadstat hands them over, files
// written with its writer, and children of the test program for what ends a process.

inline readstat_value_t integerValue(int number, readstat_type_t type = READSTAT_TYPE_INT32)
{
    readstat_value_t value = {};
    value.type = type;
    switch (type) {
    case READSTAT_TYPE_INT8:
        value.v.i8_value = static_cast<std::int8_t>(number);
        break;
    case READSTAT_TYPE_INT16:
        value.v.i16_value = static_cast<std::int16_t>(number);
        break;
    default:
        value.v.i32_value = number;
    }
    return value;
}

inline readstat_value_t realValue(double number)
{
    readstat_value_t value = {};
    value.type = READSTAT_TYPE_DOUBLE;
    value.v.double_value = number;
    return value;
}

inline readstat_value_t textValue(const char* text)
{
    readstat_value_t value = {};
    value.type = READSTAT_TYPE_STRING;
    value.v.string_value = text;
    return value;
}

inline readstat_value_t valueOfType(int type)
{
    readstat_value_t value = {};
    std::memcpy(&value.type, &type, sizeof value.type);
    return value;
}

inline std::unique_ptr<readstat_variable_t> newVariable(const char* name, readstat_type_t type)
{
    auto variable = std::make_unique<readstat_variable_t>();
    std::snprintf(variable->name, sizeof variable->name, "%s", name);
    variable->type = type;
    return variable;
}

inline void setFormat(readstat_variable_t& variable, const char* format)
{
    std::snprintf(variable.format, sizeof variable.format, "%s", format);
}

inline void setLabel(readstat_variable_t& variable, const char* label)
{
    std::snprintf(variable.label, sizeof variable.label, "%s", label);
}

// A file in the making: variables and label sets are added with libreadstat's own functions.
class StatFileWriter {
public:
    StatFileWriter()
        : m_writer(readstat_writer_init())
    {
        readstat_set_data_writer(m_writer.get(), writeBytes);
        readstat_writer_set_file_timestamp(m_writer.get(), 1'500'000'000);
    }

    readstat_writer_t* get() const
    {
        return m_writer.get();
    }

    readstat_variable_t* add(const char* name, readstat_type_t type, const char* format,
        readstat_label_set_t* labels = nullptr, std::size_t width = 0) const
    {
        readstat_variable_t* variable = readstat_add_variable(get(), name, type, width);
        if (format)
            readstat_variable_set_format(variable, format);
        if (labels)
            readstat_variable_set_label_set(variable, labels);
        return variable;
    }

    readstat_label_set_t* addLabels(const char* name, readstat_type_t type) const
    {
        return readstat_add_label_set(get(), type, name);
    }

    // Of all numeric variables in the rows, instead of a missing value.
    void setNumber(double number)
    {
        m_number = number;
    }

    // Of all text variables in the first row, instead of an empty text.
    void setFirstText(const char* text)
    {
        m_firstText = text;
    }

    // Writes the file with that many rows of missing values and empty strings.
    bool write(const QString& path, TStatFileKind kind, int rows = 0) const
    {
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly))
            return false;
        const auto begin =
            kind == TStatFileKind::Spss ? readstat_begin_writing_sav : readstat_begin_writing_dta;
        if (begin(get(), &file, rows) != READSTAT_OK)
            return false;
        for (int row = 0; row < rows; ++row) {
            if (!writeRow(row == 0))
                return false;
        }
        return readstat_end_writing(get()) == READSTAT_OK;
    }

private:
    struct Free {
        void operator()(readstat_writer_t* writer) const
        {
            readstat_writer_free(writer);
        }
    };

    static ssize_t writeBytes(const void* bytes, size_t size, void* context)
    {
        return static_cast<QFile*>(context)->write(
            static_cast<const char*>(bytes), static_cast<qint64>(size));
    }

    bool writeRow(bool isFirst) const
    {
        if (readstat_begin_row(get()) != READSTAT_OK)
            return false;
        for (int index = 0; index < get()->variables_count; ++index) {
            const readstat_variable_t* variable = readstat_get_variable(get(), index);
            const bool hasNumber = !std::isnan(m_number) && variable->type == READSTAT_TYPE_DOUBLE;
            const bool hasText = isFirst && m_firstText && variable->type == READSTAT_TYPE_STRING;
            readstat_error_t error = READSTAT_OK;
            if (hasNumber)
                error = readstat_insert_double_value(get(), variable, m_number);
            else if (hasText)
                error = readstat_insert_string_value(get(), variable, m_firstText);
            else
                error = readstat_insert_missing_value(get(), variable);
            if (error != READSTAT_OK)
                return false;
        }
        return readstat_end_row(get()) == READSTAT_OK;
    }

    std::unique_ptr<readstat_writer_t, Free> m_writer;
    double m_number = NAN;
    const char* m_firstText = nullptr;
};

// The bytes of an SPSS file with a further record of texts at the end of its dictionary.
inline QByteArray withSpssRecord(QByteArray bytes, int kind, const QByteArray& text)
{
    const qint32 end[] = { 999, 0 };
    const qint32 head[] = { 7, kind, 1, text.size() };
    const int place = bytes.indexOf(QByteArray(reinterpret_cast<const char*>(end), sizeof end));
    return bytes.insert(place, QByteArray(reinterpret_cast<const char*>(head), sizeof head) + text);
}

// ---- samples

// The sub-folder of TESSEL_CORPUS, which is kept apart from the sources.
inline QDir sampleFolder(const QString& folder)
{
    return QDir(qEnvironmentVariable("TESSEL_CORPUS") + QLatin1Char('/') + folder);
}

inline TStatFileKind kindOf(const QString& path)
{
    return path.endsWith(QLatin1String(".dta")) ? TStatFileKind::Stata : TStatFileKind::Spss;
}

// Paths of all sample files of both kinds; none when TESSEL_CORPUS is not set.
inline QStringList samplePaths()
{
    QStringList paths;
    if (!qEnvironmentVariableIsSet("TESSEL_CORPUS"))
        return paths;
    for (const QString& folder : { QStringLiteral("sav"), QStringLiteral("dta") }) {
        const QDir samples = sampleFolder(folder);
        const QStringList names = samples.entryList(QDir::Files, QDir::Name);
        for (const QString& name : names)
            paths.append(samples.filePath(name));
    }
    return paths;
}

#define SKIP_WITHOUT_SAMPLES()                                                                     \
    do {                                                                                           \
        if (!qEnvironmentVariableIsSet("TESSEL_CORPUS"))                                           \
            QSKIP("TESSEL_CORPUS does not name the folder of the sample files");                   \
    } while (false)

// ---- children

struct ChildResult {
    bool hasFinished = false; // within its time
    bool hasCrashed = false;
    int exitCode = -1;
    QByteArray output;
    QByteArray errors;
};

// Runs the test program itself with "--child" and the arguments; see STAT_TEST_MAIN.
inline ChildResult runChild(const QStringList& arguments, int milliseconds = 120'000)
{
    QProcess process;
    process.start(QCoreApplication::applicationFilePath(),
        QStringList(QStringLiteral("--child")) + arguments);
    ChildResult result;
    result.hasFinished = process.waitForFinished(milliseconds);
    if (!result.hasFinished) {
        process.kill();
        process.waitForFinished();
    }
    result.hasCrashed = process.exitStatus() != QProcess::NormalExit;
    result.exitCode = process.exitCode();
    result.output = process.readAllStandardOutput();
    result.errors = process.readAllStandardError();
    return result;
}

// The main function of a test whose children run childMain(arguments).
#define STAT_TEST_MAIN(Test, childMain)                                                            \
    int main(int argc, char* argv[])                                                               \
    {                                                                                              \
        QCoreApplication application(argc, argv);                                                  \
        const QStringList arguments = QCoreApplication::arguments();                               \
        if (arguments.value(1) == QLatin1String("--child"))                                        \
            return childMain(arguments.mid(2));                                                    \
        Test test;                                                                                 \
        return QTest::qExec(&test, argc, argv);                                                    \
    }
