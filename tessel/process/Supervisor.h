#pragma once

#include <QSet>
#include <QStringList>

#include <functional>

/*!
 * Lets a child process do a command's work over some files, so that a crash, an endless loop or too
 * little memory in it becomes an error that names the file. After each such file the work begins
 * again from the first.
 */
class Supervisor {
public:
    /*! Seconds of processor time that one file may take when nothing else is said. */
    static constexpr int DefaultLimit = 60;

    /*! Whether reading a file may take as long as it does. */
    enum class Time { Limited, Unlimited };

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
    bool beginFile(int index, Time time = Time::Limited);
    void endFile();

private:
    Q_DISABLE_COPY(Supervisor)

    struct Shared;

    [[noreturn]] void runChild(const std::function<int(Supervisor&)>& work);
    int waitFor(int child);
    void tellEnd(int signal);
    QString describeEnd(int signal) const;

    QStringList m_files;
    int m_limit;
    QSet<int> m_bad; // files in which a child ended
    int m_silentFiles = 0; // files whose messages were written by an earlier child
    Shared* m_shared; // with the child
};
