#include <model_Tessel/MLDB.h>

QString MLDBGetMessage(const QString& key, const QString& defaultText, const QString& arg1,
    const QString& arg2, const QString& arg3, const QString& arg4, const QString& arg5,
    const QString& arg6)
{
    Q_UNUSED(key)
    QString result = defaultText;
    const QString* const arguments[] = { &arg1, &arg2, &arg3, &arg4, &arg5, &arg6 };
    QString placeholder = QStringLiteral("%0");
    for (const QString* argument : arguments) {
        placeholder[1] = QChar(placeholder.at(1).unicode() + 1);
        result.replace(placeholder, *argument);
    }
    return result;
}

QString MLDBGetHelpPage(const QString& key, const QString& defaultPage)
{
    Q_UNUSED(key)
    Q_UNUSED(defaultPage)
    return QString();
}
