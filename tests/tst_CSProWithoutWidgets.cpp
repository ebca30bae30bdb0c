// Dictionaries in a program that has no widgets at first: nobody can be asked until it has.
#include <model_Tessel/CSPro.h>
#include <model_Tessel/CSProValueSet.h>

#include <QApplication>
#include <QMessageBox>
#include <QPushButton>
#include <QTimer>
#include <QtTest>

namespace {

void parse(TCSPro& parser, const QString& name)
{
    QStringList lines { "[Item]", "Name=" + name, "Len=3", "[ValueSet]", "Name=V", "Value=1.5;x" };
    parser.loadFromStr(&lines);
}

} // namespace

class tst_CSProWithoutWidgets : public QObject {
    Q_OBJECT

private slots:
    void aSecondLoadMakesTheMessageBox();
};

void tst_CSProWithoutWidgets::aSecondLoadMakesTheMessageBox()
{
    QVERIFY(!QCoreApplication::instance());
    TCSPro parser;
    QVERIFY(!parser.msgBox);
    parse(parser, QStringLiteral("A"));
    QVERIFY(!parser.msgBox);
    QCOMPARE(parser.decimalButton, int(QMessageBox::No));
    QVERIFY(!parser.getItem(0)->getHasValueSet());

    int count = 1;
    char name[] = "tst_CSProWithoutWidgets";
    char* arguments[] = { name, nullptr };
    QApplication application(count, arguments);
    QVERIFY(!parser.msgBox);
    int boxes = 0;
    QTimer user;
    connect(&user, &QTimer::timeout, this, [&] {
        auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        if (!box)
            return;
        ++boxes;
        QCOMPARE(box, parser.msgBox);
        box->button(QMessageBox::Yes)->click();
    });
    user.start(1);
    parse(parser, QStringLiteral("B"));
    QVERIFY(parser.msgBox);
    QVERIFY(!parser.msgBox->parent());
    QCOMPARE(boxes, 1);
    QCOMPARE(parser.getItemsCount(), 2);
    QVERIFY(!parser.getItem(0)->getHasValueSet());
    QVERIFY(parser.getItem(1)->getHasValueSet());
    QCOMPARE(parser.getItem(1)->getValueSet(0)->getValueSetItem(0)->code, QStringLiteral("0"));

    // A box is a widget, so it goes before the application does.
    delete parser.msgBox;
    parser.msgBox = nullptr;
}

QTEST_APPLESS_MAIN(tst_CSProWithoutWidgets)

#include "tst_CSProWithoutWidgets.moc"
