#include "InputOptions.h"

#include "checking/DataInput.h"
#include "process/Console.h"
#include "reading/ReadInput.h"

#include <QCommandLineParser>
#include <QTextCodec>

namespace {

const QCommandLineOption& typeOption()
{
    static const QCommandLineOption option(QStringLiteral("type"),
        QStringLiteral("Kind of the files; found by their content when not given."),
        QStringLiteral("cspro|spss|stata"));
    return option;
}

const QCommandLineOption& rulesOption()
{
    static const QCommandLineOption option(QStringLiteral("rules"),
        QStringLiteral("How to read: as written, or with the established rules, to see what a "
                       "program sees that uses the library's default."),
        QStringLiteral("written|established"), QStringLiteral("written"));
    return option;
}

const QCommandLineOption& languageOption()
{
    static const QCommandLineOption option(QStringLiteral("language"),
        QStringLiteral("Language of the labels, for example FR, where a dictionary has several."),
        QStringLiteral("name"));
    return option;
}

const QCommandLineOption& decimalsOption()
{
    static const QCommandLineOption option(QStringLiteral("decimals"),
        QStringLiteral("With the established rules, value sets with decimal codes: drop them "
                       "(no), keep them with 0 in place of such codes (yes), or ask. On a "
                       "terminal ask is the default, elsewhere no."),
        QStringLiteral("yes|no|ask"));
    return option;
}

const QCommandLineOption& encodingOption()
{
    static const QCommandLineOption option(QStringLiteral("encoding"),
        QStringLiteral("Encoding of CSPro dictionaries without a byte-order mark, for example "
                       "windows-1252; found when not given."),
        QStringLiteral("name"));
    return option;
}

bool readDecimals(const QString& text, DictionaryOptions::Decimals& decimals)
{
    using Decimals = DictionaryOptions::Decimals;
    if (text.isNull())
        decimals = Console::canAsk() ? Decimals::Ask : Decimals::No;
    else if (text == QLatin1String("yes"))
        decimals = Decimals::Yes;
    else if (text == QLatin1String("no"))
        decimals = Decimals::No;
    else if (text == QLatin1String("ask"))
        decimals = Decimals::Ask;
    else
        return false;
    return true;
}

QString readDictionaryOptions(const QCommandLineParser& parser, DictionaryOptions& options)
{
    const QString rules = parser.value(rulesOption());
    options.asWritten = rules == QLatin1String("written");
    if (!options.asWritten && rules != QLatin1String("established"))
        return QStringLiteral("--rules takes written or established, not '%1'").arg(rules);
    const QString decimals =
        parser.isSet(decimalsOption()) ? parser.value(decimalsOption()) : QString();
    if (!readDecimals(decimals, options.decimals))
        return QStringLiteral("--decimals takes yes, no or ask, not '%1'").arg(decimals);
    return readDictionaryTextOptions(parser, options);
}

} // namespace

QList<QCommandLineOption> inputOptions()
{
    return { typeOption(), rulesOption(), languageOption(), decimalsOption(), encodingOption() };
}

QList<QCommandLineOption> dictionaryTextOptions()
{
    return { languageOption(), encodingOption() };
}

QString readInputOptions(const QCommandLineParser& parser, InputOptions& options)
{
    options.kind = kindOfName(parser.value(typeOption()));
    if (parser.isSet(typeOption()) && options.kind == DictionaryFileKind::Unknown) {
        return QStringLiteral("--type takes cspro, spss or stata, not '%1'")
            .arg(parser.value(typeOption()));
    }
    return readDictionaryOptions(parser, options.dictionary);
}

QString readDictionaryTextOptions(const QCommandLineParser& parser, DictionaryOptions& options)
{
    if (parser.isSet(languageOption()))
        options.language = parser.value(languageOption());
    return readEncoding(parser, encodingOption(), options.encoding);
}

const QCommandLineOption& dataEncodingOption()
{
    static const QCommandLineOption option(QStringLiteral("data-encoding"),
        QStringLiteral("Encoding of text data without a byte-order mark, utf-8 or windows-1252; "
                       "found when not given."),
        QStringLiteral("name"));
    return option;
}

QString readDataEncoding(const QCommandLineParser& parser, QString& encoding)
{
    if (!parser.isSet(dataEncodingOption()))
        return QString();
    encoding = parser.value(dataEncodingOption()).toLower();
    return isDataEncoding(encoding)
        ? QString()
        : QStringLiteral("--data-encoding takes utf-8 or windows-1252, not '%1'")
              .arg(parser.value(dataEncodingOption()));
}

QString readEncoding(
    const QCommandLineParser& parser, const QCommandLineOption& option, QByteArray& encoding)
{
    const bool isSet = parser.isSet(option);
    const QString name = isSet ? parser.value(option) : QString::fromLatin1(encoding);
    encoding = name.toLatin1();
    if ((isSet || !name.isEmpty()) && !QTextCodec::codecForName(encoding)) {
        return QStringLiteral("unknown encoding '%1'; names are for example UTF-8, windows-1252, "
                              "ISO-8859-1 and UTF-16")
            .arg(name);
    }
    return QString();
}
