#include "writers/HtmlPage.h"

#include "text/ShownText.h"
#include "writers/ExportText.h"

#include <QCryptographicHash>
#include <QFile>
#include <QStringList>

// Resources of a static library are asked for, and not from within a namespace.
static void openPageParts() // NOLINT(misc-use-anonymous-namespace)
{
    Q_INIT_RESOURCE(page);
}

namespace {

// Where a label would be a script after all, the browser runs none but the one of this hash.
QString contentPolicy(const QString& script)
{
    QString policy = QStringLiteral("default-src 'none'; style-src 'unsafe-inline'");
    if (script.isEmpty())
        return policy;
    const QByteArray hash = QCryptographicHash::hash(script.toUtf8(), QCryptographicHash::Sha256);
    return policy + QStringLiteral("; script-src 'sha256-%1'").arg(QLatin1String(hash.toBase64()));
}

} // namespace

QString htmlText(const QString& text)
{
    return xmlText(printable(text)).toHtmlEscaped();
}

QString htmlLines(const QString& text)
{
    QStringList lines = text.split(QLatin1Char('\n'));
    for (QString& line : lines) {
        if (line.endsWith(QLatin1Char('\r')))
            line.chop(1);
        line = htmlText(line);
    }
    return lines.join(QLatin1Char('\n'));
}

QString pagePart(const QString& name)
{
    openPageParts();
    QFile file(QStringLiteral(":/page/") + name);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

QString pageStyle()
{
    return pagePart(QStringLiteral("page.css"));
}

QString pageHead(const QString& title, const QString& style, const QString& script)
{
    return QStringLiteral("<!DOCTYPE html>\n"
                          "<html xmlns=\"http://www.w3.org/1999/xhtml\" lang=\"en\">\n<head>\n"
                          "<meta charset=\"utf-8\"/>\n"
                          "<meta http-equiv=\"Content-Security-Policy\" content=\"")
        + contentPolicy(script)
        + QStringLiteral("\"/>\n"
                         "<meta name=\"viewport\" content=\"width=device-width, "
                         "initial-scale=1\"/>\n<title>")
        + htmlText(title) + QStringLiteral("</title>\n<style>\n") + pageStyle() + style
        + QStringLiteral("</style>\n</head>\n");
}
