#include "writers/LanguageTag.h"

#include <QHash>
#include <QLocale>

namespace {

QString codeOf(const QLocale& locale)
{
    return locale.bcp47Name().section(QLatin1Char('-'), 0, 0);
}

// Codes of languages by what they are called.
QHash<QString, QString> knownLanguages()
{
    QHash<QString, QString> codes;
    const QList<QLocale> locales =
        QLocale::matchingLocales(QLocale::AnyLanguage, QLocale::AnyScript, QLocale::AnyCountry);
    for (const QLocale& locale : locales) {
        if (locale.language() == QLocale::C)
            continue;
        const QString code = codeOf(locale);
        codes.insert(code, code);
        codes.insert(QLocale::languageToString(locale.language()).toLower(), code);
        codes.insert(QLocale(locale.language()).nativeLanguageName().toLower(), code);
    }
    return codes;
}

QString privateTag(const QString& name)
{
    const QString lower = name.toLower();
    QString letters;
    for (const QChar character : lower) {
        if (character.unicode() < 0x80 && character.isLetterOrNumber())
            letters += character;
    }
    constexpr int Longest = 8; // of a part of a tag
    return QLatin1String("und-x-")
        + (letters.isEmpty() ? QStringLiteral("unnamed") : letters.left(Longest));
}

QString tagOf(const QString& name, const QString& label)
{
    static const QHash<QString, QString> codes = knownLanguages();
    QString byLabel = codes.value(label.trimmed().toLower());
    if (!byLabel.isEmpty())
        return byLabel;
    const QString byName = name.size() == 2 ? codes.value(name.toLower()) : QString();
    return byName.isEmpty() ? privateTag(name) : byName;
}

} // namespace

QStringList languageTags(const QStringList& names, const QStringList& labels)
{
    QStringList tags;
    for (int i = 0; i < names.size(); ++i) {
        const QString tag = tagOf(names.at(i), labels.value(i));
        tags.append(tags.contains(tag) ? QStringLiteral("%1-x-%2").arg(tag).arg(i + 1) : tag);
    }
    return tags;
}
