#include <model_Tessel/CSProDataImport.h>

#include <QCoreApplication>
#include <QLoggingCategory>
#include <QTextStream>

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    QLoggingCategory::setFilterRules("default.debug=false");
    TCSProDataImport importer(application.arguments().value(1));
    importer.openFile();
    for (const TGenericField* field : qAsConst(*importer.fields))
        QTextStream(stdout) << field->start << '\t' << field->name << '\t' << field->label << '\n';
}
