#pragma once

#include <QHash>
#include <QString>

#include <functional>

class TOxEntity;
class TOxVariable;
struct DictionaryFile;

/*!
 * What the codes of a variable are besides their labels, by the number of the value label: empty
 * for an ordinary one, else for example "missing".
 */
using CodeKinds = QHash<const TOxVariable*, std::function<QString(int label)>>;

/*! Those of the variables below \a root that have codes; \a root is of the tree of \a file. */
CodeKinds codeKinds(const DictionaryFile& file, const TOxEntity& root);
