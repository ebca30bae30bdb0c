#pragma once

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QStandardPaths>
#include <QString>
#include <QTemporaryDir>

// A browser without a window that does what it is told. It is spoken to in JSON, each message
// followed by a null character, on descriptors 3 and 4, which are its standard input and output
// here.
class Browser {
public:
    static bool isInstalled()
    {
        return !QStandardPaths::findExecutable(QStringLiteral("chromium")).isEmpty();
    }

    ~Browser()
    {
        m_process.closeWriteChannel();
        m_process.terminate();
        m_process.waitForFinished(10'000);
    }

    bool start()
    {
        m_process.start(QStringLiteral("sh"),
            { QStringLiteral("-c"),
                QStringLiteral("exec chromium --headless --no-sandbox --disable-gpu "
                               "--disable-dev-shm-usage --no-first-run --hide-scrollbars "
                               "--remote-debugging-pipe --user-data-dir=\"$0\" about:blank "
                               "3<&0 4>&1 >/dev/null 2>&1 </dev/null"),
                m_folder.filePath(QStringLiteral("profile")) });
        if (!m_process.waitForStarted())
            return false;
        const QJsonObject target = call(QStringLiteral("Target.createTarget"),
            { { QStringLiteral("url"), QStringLiteral("about:blank") } });
        m_session = call(QStringLiteral("Target.attachToTarget"),
            { { QStringLiteral("targetId"), target.value(QStringLiteral("targetId")) },
                { QStringLiteral("flatten"), true } })
                        .value(QStringLiteral("sessionId"))
                        .toString();
        call(QStringLiteral("Page.enable"));
        return !m_session.isEmpty();
    }

    // The result of a command; nothing when it fails or takes too long.
    QJsonObject call(const QString& method, const QJsonObject& parameters = {})
    {
        const int id = ++m_lastId;
        QJsonObject message { { QStringLiteral("id"), id }, { QStringLiteral("method"), method },
            { QStringLiteral("params"), parameters } };
        if (!m_session.isEmpty())
            message.insert(QStringLiteral("sessionId"), m_session);
        m_process.write(QJsonDocument(message).toJson(QJsonDocument::Compact) + '\0');
        return waitFor([id](const QJsonObject& answer) {
            return answer.value(QStringLiteral("id")).toInt() == id;
        })
            .value(QStringLiteral("result"))
            .toObject();
    }

    void resize(int width, int height = 900)
    {
        call(QStringLiteral("Emulation.setDeviceMetricsOverride"),
            { { QStringLiteral("width"), width }, { QStringLiteral("height"), height },
                { QStringLiteral("deviceScaleFactor"), 1 }, { QStringLiteral("mobile"), false } });
    }

    // "screen" or "print"; "light" or "dark".
    void show(const QString& medium, const QString& scheme)
    {
        call(QStringLiteral("Emulation.setEmulatedMedia"),
            { { QStringLiteral("media"), medium },
                { QStringLiteral("features"),
                    QJsonArray { QJsonObject {
                        { QStringLiteral("name"), QStringLiteral("prefers-color-scheme") },
                        { QStringLiteral("value"), scheme } } } } });
    }

    void setScript(bool isOn)
    {
        call(QStringLiteral("Emulation.setScriptExecutionDisabled"),
            { { QStringLiteral("value"), !isOn } });
    }

    bool open(const QString& path)
    {
        call(QStringLiteral("Page.navigate"), { { QStringLiteral("url"), "file://" + path } });
        return !waitFor([](const QJsonObject& event) {
            return event.value(QStringLiteral("method")) == QLatin1String("Page.loadEventFired");
        }).isEmpty();
    }

    // What an expression gives, also one that has to be waited for.
    QJsonValue evaluate(const QString& expression)
    {
        const QJsonObject result = call(QStringLiteral("Runtime.evaluate"),
            { { QStringLiteral("expression"), expression },
                { QStringLiteral("awaitPromise"), true },
                { QStringLiteral("returnByValue"), true } });
        if (result.contains(QStringLiteral("exceptionDetails")))
            return QString::fromUtf8(QJsonDocument(result).toJson());
        return result.value(QStringLiteral("result")).toObject().value(QStringLiteral("value"));
    }

    // Presses a key and lets it go.
    void press(const QString& key, int code, const QString& text = QString())
    {
        for (const char* type : { "keyDown", "keyUp" }) {
            QJsonObject event { { QStringLiteral("type"), QLatin1String(type) },
                { QStringLiteral("key"), key }, { QStringLiteral("code"), key },
                { QStringLiteral("windowsVirtualKeyCode"), code } };
            if (!text.isEmpty() && qstrcmp(type, "keyDown") == 0)
                event.insert(QStringLiteral("text"), text);
            call(QStringLiteral("Input.dispatchKeyEvent"), event);
        }
    }

    void type(const QString& text)
    {
        call(QStringLiteral("Input.insertText"), { { QStringLiteral("text"), text } });
    }

    // What is in sight, as PNG.
    QByteArray picture()
    {
        return QByteArray::fromBase64(call(QStringLiteral("Page.captureScreenshot"))
                                          .value(QStringLiteral("data"))
                                          .toString()
                                          .toLatin1());
    }

    QByteArray printed()
    {
        return QByteArray::fromBase64(call(QStringLiteral("Page.printToPDF"))
                                          .value(QStringLiteral("data"))
                                          .toString()
                                          .toLatin1());
    }

private:
    template <typename Condition> QJsonObject waitFor(Condition isWanted)
    {
        constexpr int Longest = 120'000;
        while (true) {
            for (int end = m_bytes.indexOf('\0'); end >= 0; end = m_bytes.indexOf('\0')) {
                const QJsonObject message = QJsonDocument::fromJson(m_bytes.left(end)).object();
                m_bytes.remove(0, end + 1);
                if (isWanted(message))
                    return message;
            }
            if (!m_process.waitForReadyRead(Longest))
                return {};
            m_bytes += m_process.readAllStandardOutput();
        }
    }

    QTemporaryDir m_folder;
    QProcess m_process;
    QString m_session;
    QByteArray m_bytes;
    int m_lastId = 0;
};
