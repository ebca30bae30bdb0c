#pragma once

#include <QDebug>
#include <QString>
#include <QStringList>

// Takes the debug lines of Qt's default category away from the log as long as it lives.
class DebugLines {
public:
    DebugLines()
        : m_previous(qInstallMessageHandler(take))
    {
        taken().clear();
    }
    ~DebugLines()
    {
        qInstallMessageHandler(m_previous);
    }

    const QStringList& lines() const
    {
        return taken();
    }

private:
    Q_DISABLE_COPY(DebugLines)

    static void take(QtMsgType type, const QMessageLogContext& context, const QString& text)
    {
        if (type == QtDebugMsg && qstrcmp(context.category, "default") == 0)
            taken().append(text);
    }
    static QStringList& taken()
    {
        static QStringList lines;
        return lines;
    }

    QtMessageHandler m_previous;
};

// text as a debug line shows it.
inline QString quoted(const QString& text)
{
    QString line;
    QDebug(&line).nospace() << text;
    return line;
}
