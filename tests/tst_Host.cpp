#include "DictionaryModel.h"
#include "MainWindow.h"

#include <model_Tessel/DictionaryFile.h>

#include <QAbstractButton>
#include <QAbstractItemModelTester>
#include <QAction>
#include <QApplication>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QFileDialog>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QLoggingCategory>
#include <QMessageBox>
#include <QMimeData>
#include <QStatusBar>
#include <QTableWidget>
#include <QTemporaryDir>
#include <QTimer>
#include <QTreeView>
#include <QtTest>

#include <sys/stat.h>

namespace {

QString example(const QString& name)
{
    return QString(TESSEL_EXAMPLES "/") + name;
}

QString fixture(const QString& name)
{
    return QString(TESSEL_TEST_DATA "/") + name;
}

// Presses a button of every message box and keeps what the boxes said.
class BoxUser : public QObject {
public:
    explicit BoxUser(QMessageBox::StandardButton button = QMessageBox::Ok)
    {
        connect(&m_timer, &QTimer::timeout, this, [this, button] {
            auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
            if (!box)
                return;
            texts << box->text();
            isPlain = isPlain && box->textFormat() == Qt::PlainText;
            buttons = box->standardButtons();
            if (QAbstractButton* pressed = box->button(button))
                pressed->click();
            else
                box->reject();
        });
        m_timer.start(1);
    }

    QStringList texts;
    bool isPlain = true; // no text is taken for HTML
    QMessageBox::StandardButtons buttons;

private:
    QTimer m_timer;
};

// The window and what a user sees of it.
class Host {
public:
    Host()
    {
        window.show();
    }

    bool open(const QString& path)
    {
        return window.openPath(path);
    }

    template <typename Widget> Widget& get(const char* name)
    {
        return *window.findChild<Widget*>(name);
    }

    QAbstractItemModel& tree()
    {
        return *get<QTreeView>("tree").model();
    }

    QModelIndex root()
    {
        return tree().index(0, 0);
    }

    QModelIndex find(const QString& name)
    {
        return tree()
            .match(root(), Qt::DisplayRole, name, 1, Qt::MatchExactly | Qt::MatchRecursive)
            .value(0);
    }

    // The cells of a row, separated by "|".
    QString row(const QModelIndex& index)
    {
        QStringList cells;
        for (int column = 0; column < tree().columnCount(); ++column)
            cells << index.sibling(index.row(), column).data().toString();
        return cells.join('|');
    }

    QStringList names(const QModelIndex& parent)
    {
        QStringList list;
        for (int row = 0; row < tree().rowCount(parent); ++row)
            list << tree().index(row, 0, parent).data().toString();
        return list;
    }

    void select(const QString& name)
    {
        get<QTreeView>("tree").setCurrentIndex(find(name));
    }

    // The value labels as "code=label".
    QStringList labels()
    {
        const auto& table = get<QTableWidget>("valueLabels");
        QStringList list;
        for (int row = 0; row < table.rowCount(); ++row)
            list << table.item(row, 0)->text() + '=' + table.item(row, 1)->text();
        return list;
    }

    MainWindow window;
};

} // namespace

Q_DECLARE_METATYPE(QMessageBox::StandardButton)

class tst_Host : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void startsEmpty();
    void tree();
    void cells();
    void filter();
    void filterKeepsTheSelection();
    void filterKeepsTheWidths();
    void filterOfManyVariables();
    void valueLabels();
    void markedCodes();
    void longAndMarkedNames();
    void statFiles();
    void openDialog();
    void drop();
    void dropOfOtherThings();
    void problems_data();
    void problems();
    void pipe();
    void damagedStatFile();
    void passedOver();
    void decimalQuestion_data();
    void decimalQuestion();
    void readAgain();
    void model();
    void picture();
};

void tst_Host::initTestCase()
{
    QLoggingCategory::setFilterRules("default.debug=false");
}

void tst_Host::startsEmpty()
{
    Host host;
    QCOMPARE(host.tree().rowCount(), 0);
    QVERIFY(host.labels().isEmpty());
    QVERIFY(host.get<QAction>("asWritten").isChecked());
    host.get<QLineEdit>("filter").setText("age");
    QCOMPARE(host.tree().rowCount(), 0);
}

void tst_Host::tree()
{
    Host host;
    QVERIFY(host.open(example("census.dcf")));
    QCOMPARE(host.window.windowTitle(), QString("census.dcf - Dictionary"));
    QCOMPARE(host.tree().rowCount(), 1);
    QCOMPARE(
        host.row(host.root()), QString("CENSUS_DICT|Population and housing census of Velmora||||"));
    QCOMPARE(host.names(host.root()),
        QStringList({ "PROVINCE", "DISTRICT", "EA", "HOUSEHOLD_NUMBER", "HOUSEHOLD", "PERSON",
            "LIVESTOCK" }));
    QCOMPARE(host.row(host.find("PERSON")), QString("PERSON|Person|record 2|||"));
    QCOMPARE(host.row(host.find("PROVINCE")), QString("PROVINCE|Province|integer|2|2|6"));
    QCOMPARE(host.row(host.find("EA")), QString("EA|Enumeration area|integer|7|4|"));
    QCOMPARE(host.find("SEX").parent(), host.find("PERSON"));
    QVERIFY(host.get<QTreeView>("tree").isExpanded(host.find("PERSON")));
}

void tst_Host::cells()
{
    Host host;
    QVERIFY(host.open(example("census.dcf")));
    QStringList titles;
    for (int column = 0; column < host.tree().columnCount(); ++column)
        titles << host.tree().headerData(column, Qt::Horizontal).toString();
    QCOMPARE(titles, QStringList({ "Name", "Label", "Type", "Start", "Length", "Codes" }));
    const QModelIndex name = host.find("EA");
    const QModelIndex start = name.sibling(name.row(), 3);
    QCOMPARE(start.data(Qt::TextAlignmentRole).toInt(), int(Qt::AlignRight | Qt::AlignVCenter));
    QVERIFY(!name.data(Qt::TextAlignmentRole).isValid());
    QCOMPARE(name.sibling(name.row(), 1).data(Qt::ToolTipRole).toString(),
        QString("Enumeration area")); // where the column is too narrow
}

void tst_Host::filter()
{
    Host host;
    QVERIFY(host.open(example("census.dcf")));
    auto& filter = host.get<QLineEdit>("filter");
    QTest::keyClicks(&filter, "birth_y");
    QCOMPARE(host.names(host.root()), QStringList({ "PERSON" }));
    QCOMPARE(host.names(host.find("PERSON")), QStringList({ "BIRTH_YEAR" }));
    QVERIFY(host.get<QTreeView>("tree").isExpanded(host.find("PERSON")));
    filter.clear();
    QTest::keyClicks(&filter, "OUTER WALLS"); // of a label
    QCOMPARE(host.names(host.root()), QStringList({ "HOUSEHOLD" }));
    QCOMPARE(host.names(host.find("HOUSEHOLD")), QStringList({ "WALLS" }));
    filter.setText("integer"); // is in another column
    QCOMPARE(host.tree().rowCount(), 0);
    filter.setText("[");
    QCOMPARE(host.tree().rowCount(), 0);
    filter.clear();
    QCOMPARE(host.names(host.root()).size(), 7);
}

void tst_Host::filterKeepsTheSelection()
{
    Host host;
    QVERIFY(host.open(example("census.dcf")));
    host.select("WALLS");
    auto& filter = host.get<QLineEdit>("filter");
    filter.setText("walls");
    QCOMPARE(host.get<QTreeView>("tree").currentIndex(), host.find("WALLS"));
    QVERIFY(!host.labels().isEmpty());
    filter.setText("birth_year"); // its row is gone
    QVERIFY(!host.get<QTreeView>("tree").currentIndex().isValid());
    QVERIFY(host.labels().isEmpty());
}

void tst_Host::filterKeepsTheWidths()
{
    Host host;
    QVERIFY(host.open(example("census.dcf")));
    QHeaderView& header = *host.get<QTreeView>("tree").header();
    header.resizeSection(DictionaryModel::NameColumn, 333);
    header.resizeSection(DictionaryModel::TypeColumn, 123);
    const auto widths = [&] {
        QVector<int> sizes;
        for (int column = 0; column < header.count(); ++column)
            sizes.append(header.sectionSize(column));
        return sizes;
    };
    const QVector<int> before = widths();
    for (const QString text : { "walls", "nothing has this name", "" }) {
        host.get<QLineEdit>("filter").setText(text);
        QCOMPARE(widths(), before);
        QCOMPARE(header.sectionResizeMode(DictionaryModel::LabelColumn), QHeaderView::Stretch);
    }
}

// Were the rows that a filter hides taken away one by one, this would not end.
void tst_Host::filterOfManyVariables()
{
    QTemporaryDir folder;
    QFile file(folder.filePath("many.dcf"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("[Dictionary]\nName=D\nRecordTypeStart=1\nRecordTypeLen=1\n"
               "[Record]\nName=R\nRecordTypeValue='1'\n");
    for (int i = 0; i < 50'000; ++i)
        file.write("[Item]\nName=V" + QByteArray::number(i)
            + "\nStart=2\nLen=1\nLabel=" + (i % 2 == 0 ? "even" : "odd") + '\n');
    file.close();
    Host host;
    QVERIFY(host.open(file.fileName()));
    auto& filter = host.get<QLineEdit>("filter");
    for (const QString text : { "even", "odd", "9", "" })
        filter.setText(text);
    QCOMPARE(host.names(host.find("R")).size(), 50'000);
}

void tst_Host::valueLabels()
{
    Host host;
    QVERIFY(host.open(example("census.dcf")));
    host.select("URBAN_RURAL");
    QCOMPARE(host.labels(), QStringList({ "1=Urban", "2=Rural" }));
    QCOMPARE(host.get<QLabel>("labelsTitle").text(), QString("Value labels of URBAN_RURAL"));
    host.select("PERSONS");
    QCOMPARE(host.labels(), QStringList({ "1:20=Persons" }));
    host.select("EA");
    QVERIFY(host.labels().isEmpty());
    QCOMPARE(host.get<QTableWidget>("valueLabels").editTriggers(),
        QAbstractItemView::EditTriggers(QAbstractItemView::NoEditTriggers));
    host.select("URBAN_RURAL");
    host.select("PERSON");
    QVERIFY(host.labels().isEmpty());
    QCOMPARE(host.get<QLabel>("labelsTitle").text(), QString("Value labels"));
    host.select("URBAN_RURAL");
    QVERIFY(host.open(example("census.dcf")));
    QVERIFY(host.labels().isEmpty());
}

void tst_Host::markedCodes()
{
    Host host;
    const auto& table = host.get<QTableWidget>("valueLabels");
    const auto kinds = [&] {
        QStringList list;
        for (int row = 0; row < table.rowCount(); ++row) {
            const QString kind = table.item(row, 2)->text();
            for (int column = 0; column < 3; ++column) {
                if (table.item(row, column)->font().italic() == kind.isEmpty())
                    list << "not as the others of its row";
            }
            if (!kind.isEmpty())
                list << table.item(row, 0)->text() + '=' + kind;
        }
        return list;
    };
    QVERIFY(host.open(example("census.dcf")));
    host.select("BIRTH_YEAR");
    QCOMPARE(kinds(), QStringList({ "9999=missing" }));
    QVERIFY(!table.isColumnHidden(2));
    host.select("URBAN_RURAL");
    QCOMPARE(kinds(), QStringList());
    QVERIFY(table.isColumnHidden(2));

    QTemporaryDir folder;
    QFile file(folder.filePath("kinds.dcf"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("[Dictionary]\nName=D\n[Record]\nName=R\n[Item]\nName=N\nStart=1\nLen=2\n"
               "[ValueSet]\nName=N_VS1\nValue=0;None\nValue=1;One\nValue=98;Unasked\n"
               "Name=NOTAPPL ,Special\nValue=99;Unknown\nName=MISSING ,Special\n"
               "Value=97;Forgotten\nName=MISSING ,Special\n"
               "[Item]\nName=Z\nStart=5\nLen=1\nOccurrences=2\n[ValueSet]\nName=Z_VS1\n"
               "Value=0;Unknown\nName=MISSING ,Special\nValue=1;One\n"
               "[Item]\nName=T\nStart=3\nLen=2\nDataType=Alpha\n"
               "[ValueSet]\nName=T_VS1\nValue='99';Ninety-nine\nValue='0';Nought\n");
    file.close();
    QVERIFY(host.open(file.fileName()));
    host.select("N");
    QCOMPARE(kinds(), QStringList({ "98=not applicable", "99=missing", "97=missing" }));
    host.select("Z_2");
    QCOMPARE(kinds(), QStringList({ "0=missing" }));
    host.select("T");
    QCOMPARE(kinds(), QStringList());
    QVERIFY(host.open(example("household.sav")));
    host.select("WATER_HOURS");
    QCOMPARE(kinds(), QStringList({ "99.9=missing" }));
}

void tst_Host::longAndMarkedNames()
{
    QTemporaryDir folder;
    QFile file(folder.filePath("names.dcf"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    const QByteArray name = "<b>" + QByteArray(100'000, 'N');
    file.write("[Dictionary]\nName=D\n[Record]\nName=R\n[Item]\nLen=1\nName=" + name + '\n');
    file.close();
    Host host;
    QVERIFY(host.open(file.fileName()));
    const QSize size = host.window.size();
    const int width = host.window.minimumSizeHint().width();
    host.select(name);
    auto& title = host.get<QLabel>("labelsTitle");
    QVERIFY(title.text().endsWith(name));
    QCOMPARE(title.textFormat(), Qt::PlainText);
    QCoreApplication::processEvents();
    QCOMPARE(host.window.size(), size);
    QCOMPARE(host.window.minimumSizeHint().width(), width);
}

void tst_Host::statFiles()
{
    Host host;
    QVERIFY(host.open(example("household.sav")));
    QCOMPARE(host.tree().rowCount(), 1);
    QVERIFY(host.find("URBAN_RURAL").isValid());
    host.select("URBAN_RURAL");
    QCOMPARE(host.labels().size(), 2);
    QVERIFY(host.labels().first().endsWith("=Urban"));
    host.select("WATER_HOURS");
    QVERIFY(host.labels().contains("99.9=Not stated"));
    QCOMPARE(host.row(host.find("HOUSEHOLD_WEIGHT")),
        QString("HOUSEHOLD_WEIGHT|Weight of the household|real||8|"));
    QVERIFY(host.open(example("person.dta")));
    QVERIFY(!host.find("URBAN_RURAL").isValid());
    QVERIFY(host.labels().isEmpty());
    host.select("SEX");
    QVERIFY(host.labels().size() >= 2);
}

void tst_Host::openDialog()
{
    Host host;
    QTimer user;
    QStringList filters;
    connect(&user, &QTimer::timeout, &host.window, [&filters] {
        auto* dialog = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
        if (!dialog)
            return;
        filters = dialog->nameFilters();
        if (auto* name = dialog->findChild<QLineEdit*>("fileNameEdit"))
            name->setText(example("census.dcf"));
        QMetaObject::invokeMethod(dialog, "accept");
    });
    user.start(20);
    QApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    host.get<QAction>("open").trigger();
    QVERIFY(host.find("SEX").isValid());
    QCOMPARE(filters.size(), 2);
    for (const QString ending : { "*.dcf", "*.sav", "*.zsav", "*.dta" })
        QVERIFY(filters.first().contains(ending));
}

void tst_Host::drop()
{
    Host host;
    QVERIFY(!host.get<QLineEdit>("filter").acceptDrops()); // it would take the file for text
    QMimeData data;
    data.setUrls(
        { QUrl("https://velmora.example/census.dcf"), QUrl::fromLocalFile(example("census.dcf")) });
    QDragEnterEvent enter({ 9, 9 }, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(&host.window, &enter);
    QVERIFY(enter.isAccepted());
    QDropEvent drop({ 9, 9 }, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(&host.window, &drop);
    QVERIFY(drop.isAccepted());
    QTRY_VERIFY(host.find("SEX").isValid());
}

void tst_Host::dropOfOtherThings()
{
    Host host;
    QMimeData data;
    data.setText("census.dcf");
    data.setUrls({ QUrl("https://velmora.example/census.dcf") });
    QDragEnterEvent enter({ 9, 9 }, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    enter.ignore();
    QApplication::sendEvent(&host.window, &enter);
    QVERIFY(!enter.isAccepted());
}

void tst_Host::problems_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("problem");

    QTest::newRow("missing") << fixture("nowhere.dcf") << "no such file";
    QTest::newRow("folder") << fixture("") << "is a directory, a pipe or a device";
    QTest::newRow("empty") << fixture("empty.dcf") << "is empty";
    QTest::newRow("text") << fixture("not_a_dictionary.txt")
                          << "is no CSPro dictionary, SPSS or Stata file; it begins:\n";
    QTest::newRow("data") << example("census.dat") << "is no CSPro dictionary";
    QTest::newRow("damaged JSON") << "{\n\"name\": "
                                  << "the JSON cannot be read: ";
    QTest::newRow("encrypted") << "12345678ENCRYPTEDSAV"
                               << "is encrypted";
    QTest::newRow("CSPro DB") << QString::fromLatin1("SQLite format 3\0", 16)
                              << "is a CSPro DB or other SQLite file, which this program does not "
                                 "read; open its dictionary (.dcf) instead";
    QTest::newRow("SPSS header alone") << "$FL2"
                                       << "cannot be read as SPSS file";
    QTest::newRow("header alone, compressed") << "$FL3"
                                              << "cannot be read as SPSS file";
    QTest::newRow("Stata header alone") << "\x72\x02\x01\x01"
                                        << "cannot be read as Stata file";
}

// A path without a slash is the content of a file.
void tst_Host::problems()
{
    QFETCH(QString, path);
    QFETCH(QString, problem);
    QTemporaryDir folder;
    if (!path.contains('/')) {
        QFile file(folder.filePath("file"));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(path.toLatin1());
        path = file.fileName();
    }
    Host host;
    QVERIFY(host.open(example("census.dcf")));
    BoxUser user;
    QVERIFY(!host.open(path));
    QCOMPARE(user.texts.size(), 1);
    QVERIFY2(user.texts.first().startsWith(path), qPrintable(user.texts.first()));
    QVERIFY2(user.texts.first().contains(problem), qPrintable(user.texts.first()));
    QVERIFY(!user.texts.first().contains('\r'));
    QVERIFY(user.isPlain);
    QVERIFY(host.find("SEX").isValid()); // what was open stays
}

// A pipe that nobody writes to would be waited for.
void tst_Host::pipe()
{
    QTemporaryDir folder;
    const QString path = folder.filePath("pipe.dcf");
    QCOMPARE(mkfifo(QFile::encodeName(path).constData(), 0600), 0);
    Host host;
    BoxUser user;
    QVERIFY(!host.open(path));
    QVERIFY(user.texts.value(0).contains("is a directory, a pipe or a device"));
}

void tst_Host::damagedStatFile()
{
    QFile whole(example("person.dta"));
    QVERIFY(whole.open(QIODevice::ReadOnly));
    const QByteArray bytes = whole.readAll();
    QTemporaryDir folder;
    QFile cut(folder.filePath("cut.dta"));
    QVERIFY(cut.open(QIODevice::WriteOnly));
    cut.write(bytes.left(bytes.indexOf("<value_labels>") + 40));
    cut.close();
    Host host;
    BoxUser user;
    QVERIFY(host.open(cut.fileName()));
    QCOMPARE(user.texts.size(), 1);
    QVERIFY2(user.texts.first().contains("the value labels cannot be read"),
        qPrintable(user.texts.first()));
    QVERIFY(host.find("SEX").isValid());
}

void tst_Host::passedOver()
{
    Host host;
    QVERIFY(host.open(example("census.dcf")));
    QCOMPARE(host.window.statusBar()->currentMessage(), QString("4 entities, 65 variables"));
    QTemporaryDir folder;
    QFile file(folder.filePath("odd.dcf"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("[Dictionary]\nName=D\nColour=red\n[Record]\nName=R\n[Item]\nName=A\nLen=1\n");
    file.close();
    QVERIFY(host.open(file.fileName()));
    QVERIFY2(host.window.statusBar()->currentMessage().startsWith(
                 "2 entities, 1 variables; not read as written: "),
        qPrintable(host.window.statusBar()->currentMessage()));
}

void tst_Host::decimalQuestion_data()
{
    QTest::addColumn<QMessageBox::StandardButton>("button");
    QTest::addColumn<int>("questions");
    QTest::addColumn<QStringList>("labels");

    QTest::newRow("yes to all") << QMessageBox::YesToAll << 1
                                << QStringList({ "0=Half an hour", "1=An hour" });
    QTest::newRow("no to all") << QMessageBox::NoToAll << 1 << QStringList();
    QTest::newRow("no") << QMessageBox::No << 2 << QStringList();
}

void tst_Host::decimalQuestion()
{
    QFETCH(QMessageBox::StandardButton, button);
    QFETCH(int, questions);
    Host host;
    host.get<QAction>("asWritten").trigger();
    QVERIFY(!host.get<QAction>("asWritten").isChecked());
    BoxUser user(button);
    QVERIFY(host.open(fixture("decimals.dcf")));
    QCOMPARE(user.texts.size(), questions);
    QCOMPARE(user.buttons,
        QMessageBox::Yes | QMessageBox::YesToAll | QMessageBox::No | QMessageBox::NoToAll);
    host.select("HOURS");
    QTEST(host.labels(), "labels");
    for (const QWidget* widget : QApplication::topLevelWidgets())
        QVERIFY2(!qobject_cast<const QMessageBox*>(widget), "the reader's box is still there");
}

void tst_Host::readAgain()
{
    Host host;
    BoxUser user(QMessageBox::NoToAll);
    QVERIFY(host.open(fixture("decimals.dcf")));
    QVERIFY(user.texts.isEmpty());
    host.select("HOURS");
    QCOMPARE(host.labels(), QStringList({ "0.5=Half an hour", "1=An hour" }));
    host.get<QAction>("asWritten").trigger();
    QCOMPARE(user.texts.size(), 1);
    host.select("HOURS");
    QVERIFY(host.labels().isEmpty());

    host.get<QAction>("asWritten").trigger();
    QVERIFY(host.open(fixture("json_household.dcf")));
    user.texts.clear();
    host.select("ROOF");
    host.get<QAction>("asWritten").trigger(); // the established rules read no JSON
    QCOMPARE(user.texts.size(), 1);
    QVERIFY(host.get<QAction>("asWritten").isChecked());
    QCOMPARE(host.get<QTreeView>("tree").currentIndex(), host.find("ROOF")); // nothing was read
}

void tst_Host::model()
{
    DictionaryModel model;
    QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
    for (const QString name : { "census.dcf", "person.sav" }) {
        DictionaryFileOptions options;
        options.reading = CSProReading::AsWritten;
        const DictionaryFile file = readDictionaryFile(example(name), options);
        QVERIFY(file.isWhole());
        model.setDictionary(file.buildTree());
        QVERIFY(!model.variable(model.index(0, 0)));
        QVERIFY(model.variable(model.index(0, 0, model.index(0, 0))));
    }
    QCOMPARE(model.entityCount(), 1);
    model.setDictionary(nullptr);
    QCOMPARE(model.rowCount(), 0);
}

// The picture that the documentation shows; TESSEL_HOST_PICTURE names another file for it.
void tst_Host::picture()
{
    QTemporaryDir folder;
    const QString path = qEnvironmentVariable("TESSEL_HOST_PICTURE", folder.filePath("host.png"));
    Host host;
    QVERIFY(QTest::qWaitForWindowExposed(&host.window));
    QVERIFY(host.open(example("census.dcf")));
    host.select("WALLS");
    const QImage image =
        host.window.grab().toImage().convertToFormat(QImage::Format_Indexed8, Qt::ThresholdDither);
    QVERIFY(image.colorCount() > 10);
    QVERIFY(image.save(path, "PNG", 0));
    QCOMPARE(image.size(), QImage(TESSEL_DOCS "/host.png").size());
}

QTEST_MAIN(tst_Host)

#include "tst_Host.moc"
