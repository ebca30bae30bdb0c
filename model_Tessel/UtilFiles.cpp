#include <model_Tessel/UtilFiles.h>

#include <QFileInfo>

bool UtilFiles::FileExists(const QString& path)
{
    return QFileInfo(path).isFile();
}

bool UtilFiles::DirExists(const QString& path)
{
    return QFileInfo(path).isDir();
}

QString UtilFiles::GetFileDir(const QString& path)
{
    return QFileInfo(path).absolutePath();
}

bool UtilFiles::FileSizeReachedInKB(const QString& path, int limitKB)
{
    return QFileInfo(path).size() / 1024 > limitKB;
}

int UtilFiles::GetFileStatus(const QString& path)
{
    if (path.isEmpty())
        return PathEmpty;
    if (!DirExists(GetFileDir(path)))
        return DirMissing;
    if (!FileExists(path))
        return FileMissing;
    return QFileInfo(path).isWritable() ? FileWritable : FileNotWritable;
}

int UtilFiles::GetFileSaveStatus(const QString& path, const QString& other)
{
    Q_UNUSED(other)
    const int status = GetFileStatus(path);
    return status == FileMissing ? FileWritable : status;
}

int UtilFiles::CheckFileStatus(const QString& path)
{
    return GetFileStatus(path);
}

bool UtilFiles::CheckFileSave(const QString& path, const QString& other)
{
    return GetFileSaveStatus(path, other) == FileWritable;
}
