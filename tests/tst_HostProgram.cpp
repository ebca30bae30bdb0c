// The program of the example of a host, from its command line on.
#include <QApplication>
#include <QMainWindow>
#include <QMessageBox>
#include <QTimer>
#include <QtTest>

#include <utility>

int hostMain(int argc, char** argv); // main() of the example

namespace {

// What the program has shown.
QString windowTitle;
QString boxText;

// Closes message boxes, then the window.
void useProgram()
{
    auto* timer = new QTimer(QCoreApplication::instance());
    QObject::connect(timer, &QTimer::timeout, timer, [isFirst = true]() mutable {
        if (auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget())) {
            boxText = box->text();
            box->accept();
            return;
        }
        if (std::exchange(isFirst, false)) // the file is opened by an event that may come next
            return;
        for (QWidget* widget : QApplication::topLevelWidgets()) {
            if (qobject_cast<QMainWindow*>(widget) && widget->isVisible()) {
                windowTitle = widget->windowTitle();
                widget->close();
            }
        }
    });
    timer->start(100);
}

} // namespace

Q_COREAPP_STARTUP_FUNCTION(useProgram)

class tst_HostProgram : public QObject {
    Q_OBJECT

private slots:
    void commandLine_data();
    void commandLine();
};

void tst_HostProgram::commandLine_data()
{
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<QString>("title");
    QTest::addColumn<QString>("problem");

    QTest::newRow("no file") << QByteArray() << "Dictionary"
                             << "";
    QTest::newRow("a file") << QByteArray(TESSEL_EXAMPLES "/census.dcf")
                            << "census.dcf - Dictionary"
                            << "";
    QTest::newRow("a missing file") << QByteArray("nowhere.dcf") << "Dictionary"
                                    << "no such file";
}

void tst_HostProgram::commandLine()
{
    QFETCH(QByteArray, file);
    windowTitle.clear();
    boxText.clear();
    QByteArray name = "tessel_host";
    char* arguments[] = { name.data(), file.data(), nullptr };
    QCOMPARE(hostMain(file.isEmpty() ? 1 : 2, arguments), 0);
    QTEST(windowTitle, "title");
    QTEST(boxText.section('\n', 1), "problem");
}

QTEST_APPLESS_MAIN(tst_HostProgram)

#include "tst_HostProgram.moc"
