#include <tessel_data/ConvertedFiles_p.h>

#include <tessel_data/DataError.h>

#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <cstring>
#include <sys/stat.h>
#include <unistd.h>

namespace tessel {

ConvertedFiles::ConvertedFiles(const QString& folder, const QStringList& names, bool mayReplace)
    : m_folder(folder)
{
    makeFolder();
    try {
        for (const QString& name : names) {
            m_files.push_back(std::make_unique<BuildFile>(
                path(folder, name), mayReplace, BuildFile::Kind::AnyFile));
        }
    } catch (...) {
        m_files.clear();
        if (m_isMade)
            ::rmdir(QFile::encodeName(m_folder).constData());
        throw;
    }
}

ConvertedFiles::~ConvertedFiles()
{
    m_files.clear();
    if (m_isMade) // not when it holds anything
        ::rmdir(QFile::encodeName(m_folder).constData());
}

void ConvertedFiles::makeFolder()
{
    constexpr int mode = 0777; // less what the user's mask takes away
    const QByteArray name = QFile::encodeName(m_folder);
    m_isMade = ::mkdir(name.constData(), mode) == 0;
    if (m_isMade || (errno == EEXIST && QFileInfo(m_folder).isDir()))
        return;
    throw DataError(DataError::Code::CannotWrite, m_folder,
        errno == EEXIST
            ? QStringLiteral("is no folder; name another")
            : QStringLiteral("cannot be made: ") + QString::fromLocal8Bit(std::strerror(errno)));
}

QString ConvertedFiles::path(const QString& folder, const QString& name)
{
    return folder.endsWith(QLatin1Char('/')) ? folder + name : folder + QLatin1Char('/') + name;
}

void ConvertedFiles::publish()
{
    for (const auto& file : m_files)
        file->sync();
    try {
        for (const auto& file : m_files)
            file->place();
    } catch (...) {
        for (const auto& file : m_files)
            file->undo();
        throw;
    }
    for (const auto& file : m_files)
        file->finish();
    m_isMade = false;
}

} // namespace tessel
