#include "MainWindow.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QLoggingCategory>
#include <QTimer>

// A test calls it by another name. NOLINTNEXTLINE(misc-use-internal-linkage)
int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    QLoggingCategory::setFilterRules(QStringLiteral("default.debug=false"));
    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("Shows the dictionary of a CSPro, SPSS or Stata file."));
    parser.addHelpOption();
    parser.addPositionalArgument(
        QStringLiteral("file"), QStringLiteral("The file to open."), QStringLiteral("[file]"));
    parser.process(application);

    MainWindow window;
    window.show();
    const QString path = parser.positionalArguments().value(0);
    if (!path.isEmpty())
        QTimer::singleShot(0, &window, [&window, path] { window.openPath(path); });
    return QApplication::exec();
}
