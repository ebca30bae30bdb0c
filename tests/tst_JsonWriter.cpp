#include "text/JsonWriter.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QtTest>

namespace {

// A writer whose text is gathered.
class GatheringWriter : public JsonWriter {
public:
    GatheringWriter()
        : JsonWriter([this](const QByteArray& bytes) { m_text += bytes; })
    {
    }

    QByteArray text()
    {
        finish();
        return m_text;
    }

private:
    QByteArray m_text;
};

} // namespace

class tst_JsonWriter : public QObject {
    Q_OBJECT

private slots:
    void objects();
    void lists();
    void nesting();
    void textsAreEscaped();
    void nullTexts();
    void stringsAreAsInObjects();
    void recordedTextStandsAgain();
};

void tst_JsonWriter::objects()
{
    GatheringWriter empty;
    empty.beginObject({});
    empty.endObject();
    QCOMPARE(empty.text(), QByteArray("{}\n"));

    GatheringWriter json;
    json.beginObject({ { "a", 1 } });
    json.beginObject({ { "b", 2 } }, "inner");
    json.endObject();
    json.beginObject({}, "last");
    json.endObject();
    json.endObject();
    QCOMPARE(json.text(), QByteArray("{\"a\":1,\"inner\":{\"b\":2},\"last\":{}}\n"));
}

void tst_JsonWriter::lists()
{
    GatheringWriter json;
    json.beginObject({});
    json.beginList("none");
    json.endList();
    json.beginList("some");
    json.add({ { "a", 1 } });
    json.add({});
    json.endList();
    json.endObject();
    QCOMPARE(json.text(), QByteArray("{\"none\":[],\"some\":[\n    {\"a\":1},\n    {}]}\n"));
}

void tst_JsonWriter::nesting()
{
    GatheringWriter json;
    json.beginObject({ { "version", 1 } });
    json.beginList("outer");
    for (int i = 0; i < 2; ++i) {
        json.beginObject({ { "number", i } });
        json.beginList("inner");
        for (int j = 0; j < i; ++j)
            json.add({ { "number", j } });
        json.endList();
        json.endObject();
    }
    json.endList();
    json.beginList("after");
    json.endList();
    json.endObject();
    const QJsonObject expected { { "version", 1 },
        { "outer",
            QJsonArray { QJsonObject { { "number", 0 }, { "inner", QJsonArray() } },
                QJsonObject { { "number", 1 },
                    { "inner", QJsonArray { QJsonObject { { "number", 0 } } } } } } },
        { "after", QJsonArray() } };
    QCOMPARE(QJsonDocument::fromJson(json.text()).object(), expected);
}

void tst_JsonWriter::textsAreEscaped()
{
    const QString text = QString::fromUtf8(u8"\"quoted\"\\ \n\t\u0001 é 漢");
    GatheringWriter json;
    json.beginObject({ { "text", text } });
    json.endObject();
    const QByteArray bytes = json.text();
    QCOMPARE(bytes.count('\n'), 1);
    QCOMPARE(QJsonDocument::fromJson(bytes).object().value("text").toString(), text);
}

void tst_JsonWriter::nullTexts()
{
    QVERIFY(textOrNull(QString()).isNull());
    QCOMPARE(textOrNull("").toString("other"), QString(""));
    QCOMPARE(textOrNull("x").toString(), QString("x"));
}

void tst_JsonWriter::stringsAreAsInObjects()
{
    QStringList texts { QString(), "plain text", "a\"b", "a\\b", "a\nb",
        QString::fromUtf8(u8"é 漢 \U0001F3E0"), QString(QChar(0xD83C)) };
    for (ushort code = 0; code < 0x400; ++code)
        texts.append(QString("x") + QChar(code) + "y");
    for (const QString& text : qAsConst(texts)) {
        const QByteArray object =
            QJsonDocument(QJsonObject { { "a", text } }).toJson(QJsonDocument::Compact);
        QByteArray bytes("{\"a\":");
        appendJsonString(bytes, text);
        QCOMPARE(bytes + '}', object);
    }
}

void tst_JsonWriter::recordedTextStandsAgain()
{
    const auto written = [](bool isRecorded) {
        GatheringWriter json;
        json.beginObject({});
        json.beginList("entries");
        QByteArray text;
        for (int i = 0; i < 3; ++i) {
            json.beginObject({ { "i", i } });
            const auto write = [&] {
                json.beginList("list");
                json.add({ { "x", 1 } });
                json.beginText() += "2";
                json.endList();
            };
            if (i == 0)
                text = json.recorded(write);
            if (isRecorded)
                json.addRecorded(text);
            else
                write();
            json.endObject();
        }
        json.endList();
        json.endObject();
        return json.text();
    };
    QCOMPARE(written(true), written(false));
    QCOMPARE(written(true).count("\"list\":["), 3);
    QVERIFY(QJsonDocument::fromJson(written(true)).isObject());
}

QTEST_APPLESS_MAIN(tst_JsonWriter)

#include "tst_JsonWriter.moc"
