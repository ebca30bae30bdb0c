#pragma once

#include <tessel_data/BuildFile_p.h>

#include <QStringList>

#include <memory>
#include <vector>

namespace tessel {

/*
 * Files of one folder that are there together or not at all; the folder is made when it is missing.
 * Throws DataError.
 */
class ConvertedFiles {
public:
    ConvertedFiles(const QString& folder, const QStringList& names, bool mayReplace);
    // Removes what was not published, and the folder if it was made for it.
    ~ConvertedFiles();

    // Of the file that is number \a index among the names.
    int descriptor(std::size_t index) const
    {
        return m_files[index]->descriptor();
    }
    // Puts all in their places, or none.
    void publish();

    // What a path to a file in the folder is.
    static QString path(const QString& folder, const QString& name);

private:
    Q_DISABLE_COPY(ConvertedFiles)

    void makeFolder();

    QString m_folder;
    bool m_isMade = false;
    std::vector<std::unique_ptr<BuildFile>> m_files;
};

} // namespace tessel
