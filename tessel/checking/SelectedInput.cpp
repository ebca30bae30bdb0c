#include "checking/SelectedInput.h"

#include <tessel_data/DataError.h>
#include <tessel_data/SelectedSource.h>

using tessel::DataSource;

std::unique_ptr<DataSource> selectedData(
    std::unique_ptr<DataSource> source, SelectionRequest& request, QString& mistake)
{
    try {
        if (!request.records.isEmpty())
            request.selection.chooseRecords(source->dictionary(), request.records);
        if (!request.variables.isEmpty())
            request.selection.chooseVariables(source->dictionary(), request.variables);
        if (request.selection.isAll())
            return source;
        return std::make_unique<tessel::SelectedSource>(std::move(source), request.selection);
    } catch (const tessel::DataError& error) {
        mistake = error.text;
        return nullptr;
    }
}
