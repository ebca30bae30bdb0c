#pragma once

#include <QElapsedTimer>
#include <QString>

/*!
 * A bar on standard error that shows how far a long work is: only on a terminal, and only once the
 * work has taken a moment. It is wiped away at the end.
 */
class Progress {
public:
    /*! \param title what is done, in front of the bar */
    explicit Progress(const QString& title);
    ~Progress();
    Q_DISABLE_COPY(Progress)

    void show(qint64 done, qint64 total);

private:
    QString m_title;
    bool m_isTerminal;
    int m_shownWidth = 0; // columns to wipe away
    QElapsedTimer m_time;
};
