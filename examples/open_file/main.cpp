#include <model_Tessel/DictionaryFile.h>
#include <model_Tessel/Entity.h>

#include <QCoreApplication>
#include <QLoggingCategory>
#include <QTextStream>

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    QLoggingCategory::setFilterRules("default.debug=false");
    QTextStream out(stdout);
    const DictionaryFile file = readDictionaryFile(application.arguments().value(1));
    for (const DictionaryFileProblem& problem : file.problems)
        out << "line " << problem.line << ": " << problem.text << '\n';
    if (const DictionaryPointer tree = file.buildTree()) {
        for (const TOxEntity* entity : qAsConst(*tree->getRoot()->getChildren()))
            out << entity->getName() << '\t' << entity->getVariables()->size() << " variables\n";
    }
    return file.isWhole() ? 0 : 1;
}
