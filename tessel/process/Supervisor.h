#pragma once

#include <QSet>
#include <QStringList>

#include <functional>

/*!
 * Lets a child process do a command's work over some files, so that a crash or an endless loop in
 * it becomes an error that names the file. After each such file the work begins again from the
 * first.
 */
class Supervisor {
public:
    /*! Seconds of processor time that one file may take when nothing else is said. */
    static constexpr int DefaultLimit = 60;

    explicit Supervisor(const QStringList& files, int limitInSeconds = DefaultLimit);
    ~Supervisor();

    /*!
     * Runs \a work in a child and returns its exit status. When the child ends in the middle of a
     * file that file is told of and left out, and another child does the work again for the others,
     * silent about what was told already; the status is InputFailed then, at least.
     */
    int run(const std::function<int(Supervisor&)>& work);

    /*!
     * For the work: true when it is to read file \a index now; false for one that a child ended in.
     * endFile() follows once it is read.
     */
    bool beginFile(int index);
    void endFile();

private:
    Q_DISABLE_COPY(Supervisor)

    int waitFor(int child);
    QString describeEnd(int signal) const;

    QStringList m_files;
    int m_limit;
    QSet<int> m_bad; // files in which a child ended
    int m_silentFiles = 0; // files whose messages were written by an earlier child
    volatile int* m_current; // file that the child is in, shared with it; -1: none
};
