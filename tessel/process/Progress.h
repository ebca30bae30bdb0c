#pragma once

#include <QElapsedTimer>
#include <QString>

/*! What is counted while a work goes on. */
enum class WorkUnit { None, Bytes, Rows };

/*!
 * How far a work is, for a line on a terminal: a bar with the share, the rate and the time left, or
 * what is done where the \a total is not known, which is below 0. Without a unit the share alone.
 */
QString progressText(qint64 done, qint64 total, qint64 milliseconds, WorkUnit unit);

/*!
 * A bar on standard error that shows how far a long work is: only on a terminal, and only once the
 * work has taken a moment. It is wiped away at the end.
 */
class Progress {
public:
    /*! \param title what is done, in front of the bar */
    explicit Progress(const QString& title, WorkUnit unit = WorkUnit::None);
    ~Progress();
    Q_DISABLE_COPY(Progress)

    /*! \param total below 0: not known */
    void show(qint64 done, qint64 total);

private:
    QString m_title;
    WorkUnit m_unit;
    bool m_isTerminal;
    int m_shownWidth = 0; // columns to wipe away
    qint64 m_nextShow = 0; // in milliseconds from the beginning
    QElapsedTimer m_time;
};
