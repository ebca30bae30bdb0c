#include <model_Tessel/ProblemText.h>

#include <QSet>
#include <QtTest>

class tst_ProblemText : public QObject {
    Q_OBJECT

private slots:
    void everyKindHasAText();
    void placeholdersAreFilled();
    void textsOfAFileArePlain();
};

void tst_ProblemText::everyKindHasAText()
{
    using Kind = CSProProblem::Kind;
    QSet<QString> texts;
    const int count = int(Kind::WrongJsonType) + 1; // the last kind
    for (int kind = 0; kind < count; ++kind) {
        const QString text = describeProblem({ Kind(kind), 1, "ITEM", "SET", "TEXT" });
        QVERIFY2(text.size() > 20, qPrintable(text));
        QVERIFY2(!text.contains('%'), qPrintable(text));
        texts.insert(text);
    }
    QCOMPARE(texts.size(), count);
}

void tst_ProblemText::placeholdersAreFilled()
{
    QCOMPARE(describeProblem({ CSProProblem::Kind::CodesNotInteger, 7, "SEX", "SEX_VS1", "X" }),
        QString("value set SEX_VS1 of item SEX was dropped: the code 'X' of a numeric item is not "
                "an integer"));
    QCOMPARE(describeProblem({ CSProProblem::Kind::UnknownKey, 7, QString(), QString(), "Colour" }),
        QString("the key 'Colour' is unknown and was passed over"));
}

void tst_ProblemText::textsOfAFileArePlain()
{
    QCOMPARE(describeProblem({ CSProProblem::Kind::UnknownKey, 1, "%3", "%1", "%1 %2" }),
        QString("the key '%1 %2' is unknown and was passed over"));
}

QTEST_APPLESS_MAIN(tst_ProblemText)
#include "tst_ProblemText.moc"
