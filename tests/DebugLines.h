#pragma once

#include <QDebug>
#include <QLoggingCategory>
#include <QString>
#include <QStringList>

// Turns the debug log on while it lives.
class DebugOn {
public:
    DebugOn()
    {
        QLoggingCategory::setFilterRules(QStringLiteral("default.debug=true"));
    }

    ~DebugOn()
    {
        QLoggingCategory::setFilterRules(QStringLiteral("default.debug=false"));
    }

private:
    Q_DISABLE_COPY(DebugOn)
};

// Takes the debug lines away from the log as long as it lives. They belong to Qt's default
// category; a line of another one has that in front, so that it is not taken for one of them.
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
        if (type != QtDebugMsg)
            return;
        const QString category = QString::fromLatin1(context.category);
        taken().append(category == "default" ? text : category + ": " + text);
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
