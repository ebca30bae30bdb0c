#include <QtTest>
class tst_ExportCommand : public QObject { Q_OBJECT };
QTEST_GUILESS_MAIN(tst_ExportCommand)
#include "tst_ExportCommand.moc"
