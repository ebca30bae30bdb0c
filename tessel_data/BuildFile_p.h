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
    // mayReplace: the file at its place may be there.
    BuildFile(const QString& path, bool mayReplace);
    // Removes what was not published.
    ~BuildFile();

    // Refuses when another build is about to replace the file at the path; removes what a dead one
    // left. To be called when others can no longer begin: while the file is locked.
    static void checkNotMade(const QString& path);

    const QByteArray& temporaryPath() const
    {
        return m_temporary;
    }
    // Has all of it on the disk, and then in its place at once.
    void publish();
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
    void syncFolder() const;
    [[noreturn]] void fail(int error) const;

    QString m_path; // as it was given
    QByteArray m_place;
    QByteArray m_folder;
    QByteArray m_temporary;
    bool m_mayReplace;
    int m_file = -1;
};

} // namespace tessel
