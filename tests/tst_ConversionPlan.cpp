// What a plan says before any row is read: names, types, labels, missing values, and what a format
// cannot hold.
#include <tessel_data/ConversionPlan.h>

#include <QtTest>

using namespace tessel;

namespace {

using Column = ConversionColumn;
using Kind = ConversionNote::Kind;
using Reason = ConversionNote::Reason;

// "@START" stands for the column behind the item before.
QByteArray item(const QByteArray& name, int width, const QByteArray& more = QByteArray())
{
    return "\n[Item]\nLabel=" + name + "\nName=" + name
        + "\nStart=@START\nLen=" + QByteArray::number(width)
        + (more.contains("DataType") ? "" : "\nDataType=Numeric") + "\n" + more;
}

QByteArray placed(QByteArray items)
{
    int start = 4;
    for (int at = items.indexOf("@START"); at >= 0; at = items.indexOf("@START")) {
        items.replace(at, 6, QByteArray::number(start));
        const int width = items.indexOf("Len=", at) + 4;
        start += items.mid(width, items.indexOf('\n', width) - width).toInt();
    }
    return items;
}

DataDictionary dictionary(const QByteArray& items)
{
    const QByteArray text =
        "[Dictionary]\nVersion=CSPro 7.7\nLabel=D\nName=D\nRecordTypeStart=1\nRecordTypeLen=1\n"
        "Positions=Relative\nZeroFill=No\nDecimalChar=No\n\n[Languages]\nEN=English\nFR=French\n\n"
        "[Level]\nLabel=Q\nName=Q\n\n[IdItems]\n\n[Item]\nLabel=Place\nName=PLACE\nStart=2\nLen=2\n"
        "DataType=Numeric\n\n[Record]\nLabel=Person|Personne\nName=PERSON\nRecordTypeValue='1'\n"
        "MaxRecords=9\nRecordLen=4000\n"
        + placed(items);
    return DataDictionary::fromBytes(text, "d.dcf");
}

QByteArray values(const QByteArray& lines)
{
    return "\n[ValueSet]\nLabel=V\nName=V_VS1\n" + lines;
}

ConversionPlan planOf(const DataDictionary& read, ConversionFormat format)
{
    ConversionOptions options;
    options.format = format;
    return ConversionPlan(read, options);
}

QVector<const ConversionNote*> notesOf(const ConversionPlan& plan, Kind kind)
{
    QVector<const ConversionNote*> found;
    for (const ConversionNote& note : plan.notes) {
        if (note.kind == kind)
            found.append(&note);
    }
    return found;
}

} // namespace

class tst_ConversionPlan : public QObject {
    Q_OBJECT

private slots:
    void types();
    void formats();
    void labels();
    void cutLabels();
    void kinds();
    void tooManyKinds();
    void languages();
    void measures();
    void longNotes();
    void csvLabels_data();
    void csvLabels();
    void units_data();
    void units();
    void cleanPlan();
};

void tst_ConversionPlan::types()
{
    const DataDictionary read = dictionary(item("FIRST", 2) + item("B", 3) + item("C", 4)
        + item("D", 5) + item("E", 9) + item("F", 10) + item("G", 16) + item("H", 5, "Decimal=2\n")
        + item("T", 7, "DataType=Alpha\n"));
    const ConversionPlan plan = planOf(read, ConversionFormat::Stata);
    QVector<Column::Type> types;
    for (const Column& column : plan.files.at(0).columns)
        types.append(column.type);
    using Type = Column::Type;
    QCOMPARE(types,
        (QVector<Type> { Type::Byte, Type::Byte, Type::Int, Type::Int, Type::Long, Type::Long,
            Type::Double, Type::Double, Type::Double, Type::Text }));
    const auto risks = notesOf(plan, Kind::PrecisionAtRisk);
    QCOMPARE(risks.size(), 1);
    QCOMPARE(risks.first()->variable, QString("G"));
    QCOMPARE(risks.first()->count, 16);
    const ConversionPlan spss = planOf(read, ConversionFormat::Spss);
    for (const Column& column : spss.files.at(0).columns)
        QCOMPARE(column.type, column.name == "T" ? Type::Text : Type::Double);
}

void tst_ConversionPlan::formats()
{
    const DataDictionary read = dictionary(item("FIRST", 4) + item("A", 5, "Decimal=2\n")
        + item("B", 5, "Decimal=2\nDecimalChar=Yes\n") + item("C", 2, "Decimal=2\n")
        + item("T", 7, "DataType=Alpha\n"));
    const auto shown = [&](ConversionFormat format) {
        QStringList formats;
        const ConversionPlan plan = planOf(read, format);
        for (const Column& column : plan.files.at(0).columns)
            formats.append(column.format);
        return formats;
    };
    QCOMPARE(shown(ConversionFormat::Spss),
        (QStringList { "F2.0", "F4.0", "F6.2", "F5.2", "F4.2", QString() }));
    QCOMPARE(shown(ConversionFormat::Stata),
        (QStringList { "%2.0f", "%4.0f", "%6.2f", "%5.2f", "%4.2f", "%-7s" }));
}

// Each code that has no place is told, with the reason.
void tst_ConversionPlan::labels()
{
    const DataDictionary read = dictionary(item("FIRST", 4)
        + item("A", 4,
            "Decimal=1\n" + values("Value=1;One\nValue=2.5;Half\nValue=3:4;Some\nValue=;None\n")
                + "\n[ValueSet]\nLabel=W\nName=W_VS2\nValue=1;Other\n")
        + item("T", 2, "DataType=Alpha\n" + values("Value='a';Letter\n"))
        + item("L", 10, values("Value=2147483620;Last\nValue=2147483621;Behind\n")));
    const ConversionPlan stata = planOf(read, ConversionFormat::Stata);
    QMap<QString, QSet<int>> reasons;
    for (const ConversionNote* note : notesOf(stata, Kind::ValuesUnlabelled))
        reasons[note->variable].insert(int(note->reason));
    QCOMPARE(reasons.value("A"),
        (QSet<int> { int(Reason::DecimalCodes), int(Reason::RangeCodes), int(Reason::BlankCode) }));
    QCOMPARE(reasons.value("T"), QSet<int> { int(Reason::TextCodes) });
    QCOMPARE(reasons.value("L"), QSet<int> { int(Reason::LargeCodes) });
    QCOMPARE(notesOf(stata, Kind::FurtherValueSet).size(), 1);
    QCOMPARE(notesOf(stata, Kind::FurtherValueSet).first()->text, QString("W_VS2"));
    QVERIFY(stata.hasLosses());
    const ConversionPlan spss = planOf(read, ConversionFormat::Spss);
    const Column& decimal = spss.files.at(0).columns.at(2);
    const auto& held = spss.labelSets.at(std::size_t(decimal.labelSet)).labels;
    QCOMPARE(held.size(), std::size_t(2));
    QCOMPARE(held.at(1).number, 2.5);
    QVERIFY(spss.files.at(0).columns.at(3).labelSet >= 0);
}

void tst_ConversionPlan::cutLabels()
{
    const QByteArray accents = QString(QChar(0xE9)).repeated(100).toUtf8();
    const DataDictionary read = dictionary(item("FIRST", 1, values("Value=1;" + accents + "\n")));
    const ConversionPlan plan = planOf(read, ConversionFormat::Spss);
    const auto cut = notesOf(plan, Kind::ValueLabelCut);
    QCOMPARE(cut.size(), 1);
    QCOMPARE(cut.first()->newText, QString(QChar(0xE9)).repeated(60)); // 120 bytes
    QCOMPARE(plan.labelSets.at(0).labels.at(0).label, cut.first()->newText);
    QCOMPARE(notesOf(planOf(read, ConversionFormat::Stata), Kind::ValueLabelCut).size(), 0);
}

void tst_ConversionPlan::kinds()
{
    const DataDictionary read = dictionary(item("FIRST", 2,
        values("Value=1;One\nValue=98;Refused\nName=REFUSED,Special\nValue=97;\n"
               "Name=MISSING,Special\nValue=5;Default\nName=DEFAULT,Special\n")));
    const ConversionPlan plan = planOf(read, ConversionFormat::Stata);
    const Column& column = plan.files.at(0).columns.at(1);
    QCOMPARE(column.missing.size(), std::size_t(2));
    QCOMPARE(column.missing.at(0).low, 98.0);
    QCOMPARE(column.missing.at(0).tag, 'a');
    QCOMPARE(column.missing.at(1).tag, 'b');
    QMap<char, QString> labels;
    for (const ConversionLabel& label : plan.labelSets.at(std::size_t(column.labelSet)).labels) {
        if (label.tag != '\0')
            labels.insert(label.tag, label.label);
    }
    QCOMPARE(labels, (QMap<char, QString> { { 'a', "Refused" }, { 'b', "97" } }));
    QCOMPARE(notesOf(plan, Kind::MissingRecoded).size(), 2);
    QVERIFY(!plan.hasLosses());
}

void tst_ConversionPlan::tooManyKinds()
{
    QByteArray lines;
    for (int code = 0; code < 30; ++code)
        lines += "Value=" + QByteArray::number(100 + 2 * code) + ";M\nName=MISSING,Special\n";
    const DataDictionary read = dictionary(item("FIRST", 3, values(lines)));
    const ConversionPlan stata = planOf(read, ConversionFormat::Stata);
    QCOMPARE(stata.files.at(0).columns.at(1).missing.size(), std::size_t(26));
    QCOMPARE(stata.files.at(0).columns.at(1).missing.back().tag, 'z');
    QCOMPARE(notesOf(stata, Kind::MissingNotHeld).first()->count, 4);
    const ConversionPlan spss = planOf(read, ConversionFormat::Spss);
    QCOMPARE(spss.files.at(0).columns.at(1).missing.size(), std::size_t(3));
    QCOMPARE(notesOf(spss, Kind::MissingNotHeld).first()->count, 27);
}

void tst_ConversionPlan::languages()
{
    DataDictionary read = dictionary(item("FIRST", 1, values("Value=1;One|Un\n")));
    read.language = 1;
    const ConversionPlan plan = planOf(read, ConversionFormat::Spss);
    QCOMPARE(plan.files.at(0).label, QString("Personne"));
    QCOMPARE(plan.files.at(0).name, QString("PERSON.sav"));
    QCOMPARE(plan.labelSets.at(0).labels.at(0).label, QString("Un"));
}

void tst_ConversionPlan::measures()
{
    const DataDictionary read = dictionary(item("FIRST", 1, values("Value=1;One\n"))
        + item("B", 2, values("Value=1:98;Years\nValue=99;None\nName=MISSING,Special\n"))
        + item("C", 3) + item("T", 2, "DataType=Alpha\n"));
    QVector<Column::Measure> measures;
    const ConversionPlan plan = planOf(read, ConversionFormat::Spss);
    for (const Column& column : plan.files.at(0).columns)
        measures.append(column.measure);
    using Measure = Column::Measure;
    QCOMPARE(measures,
        (QVector<Measure> { Measure::Nominal, Measure::Nominal, Measure::Scale, Measure::Scale,
            Measure::Nominal }));
}

// A note of Stata has 67,784 bytes and goes on in the next one.
void tst_ConversionPlan::longNotes()
{
    DataDictionary read = dictionary(item("FIRST", 1));
    read.note = QString(70'000, 'x') + "\nmore";
    const ConversionPlan plan = planOf(read, ConversionFormat::Stata);
    QCOMPARE(plan.fileNotes, (QStringList { read.note.left(67'784), read.note.mid(67'784) }));
    QCOMPARE(planOf(read, ConversionFormat::Csv).fileNotes, QStringList { read.note });
}

void tst_ConversionPlan::csvLabels_data()
{
    const QByteArray missing = "Name=MISSING,Special\n";
    QTest::addColumn<QByteArray>("type");
    QTest::addColumn<QByteArray>("lines");
    QTest::addColumn<QStringList>("told");
    QTest::newRow("clean") << QByteArray() << "Value=1;One\nValue=2;2\nValue=9;None\n" + missing
                           << QStringList();
    QTest::newRow("alike") << QByteArray() << QByteArray("Value=1;Yes\nValue=2;No\nValue=3;Yes\n")
                           << QStringList { "alike 1, 3 Yes" };
    QTest::newRow("range") << QByteArray() << QByteArray("Value=0:4;Few\nValue=5:9;Many\n")
                           << QStringList { "alike 0:4 Few", "alike 5:9 Many" };
    QTest::newRow("quantity") << QByteArray() << QByteArray("Value=0:4;Years\nValue=5:9;Years\n")
                              << QStringList();
    QTest::newRow("missing and valid")
        << QByteArray() << "Value=1;None\nValue=2;Two\nValue=9;None\n" + missing
        << QStringList { "shared 1, 9 None" };
    QTest::newRow("blank and valid") << QByteArray() << QByteArray("Value=1;None\nValue=;None\n")
                                     << QStringList { "shared 1, blank None" };
    QTest::newRow("missing alike")
        << QByteArray() << "Value=1;One\nValue=8;None\n" + missing + "Value=9;None\n" + missing
        << QStringList { "alike 8, 9 None" };
    QTest::newRow("like a code") << QByteArray() << QByteArray("Value=1;2\nValue=2;\n")
                                 << QStringList { "code 1 2" };
    QTest::newRow("like a labelled code")
        << QByteArray() << QByteArray("Value=1;2\nValue=2;Two\n") << QStringList();
    QTest::newRow("like a quantity")
        << QByteArray() << QByteArray("Value=1;12\nValue=10:19;Years\n")
        << QStringList { "code 1 12" };
    QTest::newRow("one after another")
        << QByteArray() << QByteArray("Value=1;3\nValue=2;1\nValue=3;\nValue=4;2\n")
        << QStringList { "code 1 3", "code 2 1", "code 4 2" };
    QTest::newRow("decimals") << QByteArray("Decimal=1\n")
                              << QByteArray("Value=1;2.0\nValue=2;\nValue=3;2\n")
                              << QStringList { "code 1.0 2.0" };
    QTest::newRow("texts") << QByteArray("DataType=Alpha\n")
                           << QByteArray("Value='a';b\nValue='b';\nValue='c';b\nValue='d';D\n")
                           << QStringList { "code a b", "code c b" };
}

// What labels in place of codes lose, in the order of the set.
void tst_ConversionPlan::csvLabels()
{
    QFETCH(QByteArray, type);
    QFETCH(QByteArray, lines);
    QFETCH(QStringList, told);
    const DataDictionary read = dictionary(item("FIRST", 2, type + values(lines)));
    ConversionOptions options;
    options.format = ConversionFormat::Csv;
    QVERIFY(!ConversionPlan(read, options).hasLosses());
    options.csv.hasLabels = true;
    const ConversionPlan plan(read, options);
    const QMap<Kind, QString> names { { Kind::LabelsAlike, "alike" },
        { Kind::LabelShared, "shared" }, { Kind::LabelLikeCode, "code" } };
    QStringList found;
    for (const ConversionNote& note : plan.notes) {
        found.append(names.value(note.kind) + ' ' + note.text + ' ' + note.newText);
        QCOMPARE(note.variable, QString("FIRST"));
        QCOMPARE(note.file, QString("PERSON.csv"));
    }
    found.sort();
    QCOMPARE(found, told);
    QCOMPARE(plan.hasLosses(), !told.isEmpty());
}

void tst_ConversionPlan::units_data()
{
    QTest::addColumn<int>("unit");
    QTest::addColumn<double>("number");
    QTest::addColumn<double>("expected");
    QTest::newRow("as is") << int(ConversionUnit::AsIs) << 1.5 << 1.5;
    QTest::newRow("1960-01-01") << int(ConversionUnit::SecondsToDays) << 11903760000.0 << 0.0;
    QTest::newRow("1582-10-14") << int(ConversionUnit::SecondsToDays) << 0.0 << -137775.0;
    QTest::newRow("back") << int(ConversionUnit::DaysToSeconds) << 0.0 << 11903760000.0;
    QTest::newRow("time") << int(ConversionUnit::SecondsToMilliseconds) << 11903760000.25 << 250.0;
    QTest::newRow("time back") << int(ConversionUnit::MillisecondsToSeconds) << 250.0
                               << 11903760000.25;
    QTest::newRow("hour") << int(ConversionUnit::TimeToMilliseconds) << 3600.0 << 3600000.0;
    QTest::newRow("hour back") << int(ConversionUnit::TimeToSeconds) << 3600000.0 << 3600.0;
}

void tst_ConversionPlan::units()
{
    QFETCH(int, unit);
    QFETCH(double, number);
    QFETCH(double, expected);
    QVERIFY(converted(number, ConversionUnit(unit)) == expected);
}

void tst_ConversionPlan::cleanPlan()
{
    const DataDictionary read = dictionary(item("FIRST", 1, values("Value=1;One\n")));
    QVERIFY(!planOf(read, ConversionFormat::Stata).hasLosses());
    QVERIFY(planOf(read, ConversionFormat::Stata).notes.empty());
}

QTEST_GUILESS_MAIN(tst_ConversionPlan)
#include "tst_ConversionPlan.moc"
