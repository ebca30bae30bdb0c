#pragma once

#include <QByteArray>
#include <QString>

namespace tessel {

/*
 * The temporary file beside the place of a file that is being made. A lock tells whether its maker
 * lives; what a dead one left is taken over. Throws DataError.
 */
class BuildFile {
public:
    // What stands at its place, if it may be replaced.
    enum class Kind { Database, AnyFile };

    // mayReplace: the file at its place may be there.
    BuildFile(const QString& path, bool mayReplace, Kind kind = Kind::Database);
    // Removes what was not published.
    ~BuildFile();

    // Refuses when another build is about to replace the file at the path; removes what a dead one
    // left. To be called when others can no longer begin: while the file is locked.
    static void checkNotMade(const QString& path);

    const QByteArray& temporaryPath() const
    {
        return m_temporary;
    }
    int descriptor() const
    {
        return m_file;
    }
    // Has all of it on the disk, and then in its place at once.
    void publish();

    // The same in steps, for several files that belong together. What stood in its place is kept
    // until finish(), so that undo() brings it back.
    void sync();
    void place();
    void undo() noexcept;
    void finish() noexcept;

    void remove() noexcept;

private:
    Q_DISABLE_COPY(BuildFile)

    explicit BuildFile(const QString& path);

    void findPlace();
    void checkPlace() const;
    void checkUnused() const;
    void open();
    bool isStillOurs() const;
    void rename();
    bool exchange();
    void syncFolder() const;
    [[noreturn]] void fail(int error) const;

    QString m_path; // as it was given
    QByteArray m_place;
    QByteArray m_folder;
    QByteArray m_temporary;
    bool m_mayReplace;
    Kind m_kind = Kind::Database;
    bool m_isPlaced = false;
    bool m_hasFormer = false; // under the temporary name
    int m_file = -1;
};

} // namespace tessel
