// replay FILE|FOLDER...: calls a fuzz target once for each file, with any compiler.
#include <QDir>
#include <QDirIterator>
#include <QFileInfo>
#include <QGuiApplication>

#include <cstdint>
#include <cstdio>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace {

bool replay(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        std::fprintf(stderr, "%s: cannot be read\n", qPrintable(path));
        return false;
    }
    const QByteArray bytes = file.readAll();
    LLVMFuzzerTestOneInput(
        reinterpret_cast<const uint8_t*>(bytes.constData()), size_t(bytes.size()));
    return true;
}

QStringList filesOf(const QString& path)
{
    if (!QFileInfo(path).isDir())
        return { path };
    QStringList files;
    QDirIterator entries(path, QDir::Files, QDirIterator::Subdirectories);
    while (entries.hasNext())
        files.append(entries.next());
    files.sort();
    return files;
}

} // namespace

int main(int argc, char** argv)
{
    int count = 0;
    for (int i = 1; i < argc; ++i) {
        const QStringList files = filesOf(QFile::decodeName(argv[i]));
        for (const QString& file : files) {
            if (!replay(file))
                return 1;
            ++count;
        }
    }
    std::printf("%d inputs replayed\n", count);
    return count > 0 ? 0 : 1;
}
