#pragma once

#include <QRegularExpression>
#include <QSet>
#include <QString>
#include <QStringList>

// What an expression finds in a page, in order.
inline QStringList foundIn(const QByteArray& page, const QString& expression)
{
    QStringList found;
    auto matches = QRegularExpression(expression).globalMatch(QString::fromUtf8(page));
    while (matches.hasNext())
        found.append(matches.next().captured(1));
    return found;
}

inline QStringList idsOf(const QByteArray& page)
{
    return foundIn(page, QStringLiteral("<[a-z0-9]+ id=([^ >]+)"));
}

// Ids that a page has twice, and links to those that it does not have.
inline QStringList brokenIds(const QByteArray& page)
{
    QStringList broken;
    QSet<QString> ids;
    for (const QString& id : idsOf(page)) {
        if (ids.contains(id))
            broken.append(QStringLiteral("twice ") + id);
        ids.insert(id);
    }
    for (const QString& link : foundIn(page, QStringLiteral("href=#([^ >]+)"))) {
        if (!ids.contains(link))
            broken.append(QStringLiteral("no ") + link);
    }
    return broken;
}

// The text of a page: no markup, and characters as they are shown.
inline QString shownText(const QByteArray& page)
{
    QString text = QString::fromUtf8(page);
    text.remove(QRegularExpression(QStringLiteral("<(style|script)>.*?</\\1>"),
        QRegularExpression::DotMatchesEverythingOption));
    text.replace(QRegularExpression(QStringLiteral("<[^>]*>")), QStringLiteral("\n"));
    return text.replace(QLatin1String("&lt;"), QLatin1String("<"))
        .replace(QLatin1String("&gt;"), QLatin1String(">"))
        .replace(QLatin1String("&quot;"), QLatin1String("\""))
        .replace(QLatin1String("&amp;"), QLatin1String("&"));
}
