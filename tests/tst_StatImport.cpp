// The steps that the importers share, run without a file: the parser calls the handlers with
// made-up labels and variables, also with those that libreadstat does not report today.
#include <model_Tessel/StatImport_p.h>

#include <model_Tessel/GenericField.h>

#include "BareField.h"
#include "StatFiles.h"

#include <QVector>
#include <QtTest>

#include <functional>
#include <memory>
#include <stdexcept>
#include <vector>

namespace {

struct Label {
    const char* setName;
    double number;
    const char* text;
};

struct Variable {
    const char* setName;
    int decimals;
};

struct Shown {
    QString labels;
    QString minValue;
    QString maxValue;
};

bool operator==(const Shown& one, const Shown& other)
{
    return one.labels == other.labels && one.minValue == other.minValue
        && one.maxValue == other.maxValue;
}

// What the parser reports, and what is done on the way.
QVector<Label> labelsToReport;
QVector<Variable> variablesToReport;
QByteArrayList parsedPaths;
QVector<int> handlersOfPasses; // bit 0: value labels, bit 1: variables, bit 2: others
std::function<void()> onStep;

readstat_error_t parseNothing(readstat_parser_t* parser, const char* path, void* context)
{
    const readstat_callbacks_t& handlers = parser->handlers;
    parsedPaths.append(path);
    const bool hasOthers = handlers.metadata || handlers.note || handlers.fweight || handlers.value
        || handlers.error || handlers.progress;
    handlersOfPasses.append(
        (handlers.value_label ? 1 : 0) + (handlers.variable ? 2 : 0) + (hasOthers ? 4 : 0));
    if (handlers.value_label) {
        for (const Label& label : qAsConst(labelsToReport)) {
            // Names come in a buffer that is used again.
            char setName[8];
            std::snprintf(setName, sizeof setName, "%s", label.setName);
            if (handlers.value_label(setName, realValue(label.number), label.text, context)
                != READSTAT_HANDLER_OK)
                return READSTAT_ERROR_USER_ABORT;
        }
    }
    if (handlers.variable) {
        for (const Variable& reported : qAsConst(variablesToReport)) {
            const auto variable = newVariable("V", READSTAT_TYPE_DOUBLE);
            variable->decimals = reported.decimals;
            if (handlers.variable(0, variable.get(), reported.setName, context)
                != READSTAT_HANDLER_OK)
                return READSTAT_ERROR_USER_ABORT;
        }
        return READSTAT_ERROR_PARSE; // of the second pass
    }
    return READSTAT_ERROR_CONVERT;
}

void appendUtf8(QString& text, const char* label, int size)
{
    text += QString::fromUtf8(label, size);
}

int noLength(const readstat_variable_t& variable)
{
    Q_UNUSED(variable)
    return 0;
}

constexpr StatRules turningWhole { "unit", 1, parseNothing, appendUtf8, noLength, true, false };
constexpr StatRules leavingReal { "unit", 1, parseNothing, appendUtf8, noLength, false, false };

struct Importer {
    explicit Importer(const StatRules& rules)
        : import(rules, labelSets)
    {
    }

    StatImport::LabelSets labelSets;
    StatImport import;
    std::vector<Shown> shown;
};

int onValueLabel(const char* setName, readstat_value_t value, const char* label, void* context)
{
    auto* importer = static_cast<Importer*>(context);
    return importer->import.guarded([&] {
        importer->import.addLabel(setName, value, label);
        if (onStep)
            onStep();
    });
}

int onVariable(int index, readstat_variable_t* variable, const char* setName, void* context)
{
    Q_UNUSED(index)
    auto* importer = static_cast<Importer*>(context);
    return importer->import.guarded([&] {
        BareField field(nullptr);
        importer->import.describe(field, *variable, setName);
        importer->shown.push_back({ field.valueLabels, field.minValue, field.maxValue });
        if (onStep)
            onStep();
    });
}

// The same labels and variables, handed over one by one, when nothing is remembered.
std::vector<Shown> shownWithoutRead(const StatRules& rules)
{
    Importer importer(rules);
    for (const Label& label : qAsConst(labelsToReport))
        onValueLabel(label.setName, realValue(label.number), label.text, &importer);
    for (const Variable& reported : qAsConst(variablesToReport)) {
        const auto variable = newVariable("V", READSTAT_TYPE_DOUBLE);
        variable->decimals = reported.decimals;
        onVariable(0, variable.get(), reported.setName, &importer);
    }
    return importer.shown;
}

readstat_error_t read(Importer& importer)
{
    return importer.import.read(QStringLiteral("a file"), &importer, onValueLabel, onVariable);
}

} // namespace

class TestStatImport : public QObject {
    Q_OBJECT

private slots:
    void init();
    void readsLabelsAndThenVariables();
    void rememberedTextsAreThoseOfEachVariable_data();
    void rememberedTextsAreThoseOfEachVariable();
    void setsMayTakeTurns();
    void nothingIsRememberedOutsideARead();
    void textOfManyVariablesIsShared();
    void exceptionEndsTheRead_data();
    void exceptionEndsTheRead();
};

void TestStatImport::init()
{
    labelsToReport = { { "one", 1.5, "x" }, { "one", -1.5, "y" }, { "one", 3, "z" },
        { "two", 7.25, "seven" } };
    variablesToReport.clear();
    parsedPaths.clear();
    handlersOfPasses.clear();
    onStep = nullptr;
}

void TestStatImport::readsLabelsAndThenVariables()
{
    variablesToReport = { { "one", 0 } };
    Importer importer(leavingReal);
    importer.labelSets["stale"];
    QCOMPARE(read(importer), READSTAT_ERROR_PARSE);
    QCOMPARE(parsedPaths, QByteArrayList({ "a file", "a file" }));
    QCOMPARE(handlersOfPasses, QVector<int>({ 1, 2 }));
    QCOMPARE(importer.labelSets.size(), std::size_t(2));
    QCOMPARE(importer.labelSets.at("one").size(), std::size_t(3));
    QCOMPARE(importer.labelSets.at("two").size(), std::size_t(1));
    QCOMPARE(importer.shown.at(0).labels, QStringLiteral("1.500000 x\t-1.500000 y\t3.000000 z\t"));
}

void TestStatImport::rememberedTextsAreThoseOfEachVariable_data()
{
    QTest::addColumn<QVector<int>>("decimals"); // of variables that share a set
    using Decimals = QVector<int>;
    QTest::newRow("all with decimals") << Decimals { 2, 1, 2 };
    QTest::newRow("none with decimals") << Decimals { 0, 0, 0 };
    QTest::newRow("whole first") << Decimals { 0, 2, 2, 0 };
    QTest::newRow("whole later") << Decimals { 2, 2, 0, 2, 0 };
    QTest::newRow("in turn") << Decimals { 2, 0, 2, 0, 2 };
}

void TestStatImport::rememberedTextsAreThoseOfEachVariable()
{
    QFETCH(QVector<int>, decimals);
    for (const int count : qAsConst(decimals)) {
        variablesToReport.append({ "one", count });
        variablesToReport.append({ "two", 2 });
        variablesToReport.append({ nullptr, 0 });
        variablesToReport.append({ "none", 0 });
    }
    for (const StatRules& rules : { turningWhole, leavingReal }) {
        Importer importer(rules);
        read(importer);
        QCOMPARE(int(importer.shown.size()), variablesToReport.size());
        QVERIFY(importer.shown == shownWithoutRead(rules));
    }
    Importer importer(turningWhole);
    read(importer);
    bool isWhole = false;
    for (int index = 0; index < decimals.size(); ++index) {
        const auto first = 4 * static_cast<std::size_t>(index);
        isWhole = isWhole || decimals.at(index) == 0;
        const Shown& shown = importer.shown.at(first);
        QCOMPARE(shown.labels,
            isWhole ? QStringLiteral("1 x\t3 z\t")
                    : QStringLiteral("1.500000 x\t-1.500000 y\t3.000000 z\t"));
        QCOMPARE(shown.minValue, isWhole ? QStringLiteral("1") : QStringLiteral("-1.5"));
        QCOMPARE(importer.shown.at(first + 1).labels, QStringLiteral("7.250000 seven\t"));
        QVERIFY(importer.shown.at(first + 2).labels.isEmpty());
        QVERIFY(importer.shown.at(first + 3).labels.isEmpty());
    }
}

void TestStatImport::setsMayTakeTurns()
{
    labelsToReport = { { "one", 1, "a" }, { "two", 2, "b" }, { "one", 3, "c" }, { "two", 4, "d" } };
    variablesToReport = { { "two", 0 }, { "one", 0 } };
    Importer importer(turningWhole);
    read(importer);
    QCOMPARE(importer.shown.at(0).labels, QStringLiteral("2 b\t4 d\t"));
    QCOMPARE(importer.shown.at(1).labels, QStringLiteral("1 a\t3 c\t"));
}

void TestStatImport::nothingIsRememberedOutsideARead()
{
    Importer importer(leavingReal);
    read(importer);
    importer.labelSets.clear();
    const auto variable = newVariable("V", READSTAT_TYPE_DOUBLE);
    onVariable(0, variable.get(), "two", &importer);
    onValueLabel("two", realValue(5), "five", &importer);
    onVariable(0, variable.get(), "two", &importer);
    onValueLabel("two", realValue(6), "six", &importer);
    onVariable(0, variable.get(), "two", &importer);
    QVERIFY(importer.shown.at(0).labels.isEmpty());
    QCOMPARE(importer.shown.at(1).labels, QStringLiteral("5.000000 five\t"));
    QCOMPARE(importer.shown.at(2).labels, QStringLiteral("5.000000 five\t6.000000 six\t"));
}

void TestStatImport::textOfManyVariablesIsShared()
{
    variablesToReport = { { "one", 0 }, { "two", 0 }, { "one", 0 } };
    Importer importer(turningWhole);
    read(importer);
    QVERIFY(importer.shown.at(0).labels.constData() == importer.shown.at(2).labels.constData());
}

void TestStatImport::exceptionEndsTheRead_data()
{
    QTest::addColumn<int>("step");
    QTest::addColumn<int>("passes");
    QTest::newRow("while the labels are read") << 2 << 1;
    QTest::newRow("while the variables are read") << 5 << 2;
}

void TestStatImport::exceptionEndsTheRead()
{
    QFETCH(int, step);
    QFETCH(int, passes);
    variablesToReport = { { "one", 0 }, { "two", 0 } };
    int steps = 0;
    onStep = [&] {
        if (++steps == step)
            throw std::runtime_error("broken");
    };
    Importer importer(turningWhole);
    QVERIFY_EXCEPTION_THROWN(read(importer), std::runtime_error);
    QCOMPARE(steps, step);
    QCOMPARE(handlersOfPasses.size(), passes);

    onStep = nullptr; // as good as new afterwards
    importer.shown.clear();
    QCOMPARE(read(importer), READSTAT_ERROR_PARSE);
    QCOMPARE(int(importer.shown.size()), 2);
    QCOMPARE(importer.labelSets.at("one").size(), std::size_t(3));
}

QTEST_GUILESS_MAIN(TestStatImport)
#include "tst_StatImport.moc"
