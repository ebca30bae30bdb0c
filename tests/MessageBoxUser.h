#pragma once

#include <QApplication>
#include <QEvent>
#include <QList>
#include <QMessageBox>
#include <QObject>
#include <QPushButton>
#include <QTimer>

// Answers every modal message box with the next of its buttons, then with "No", and keeps what the
// latest box showed.
class BoxUser : public QObject {
public:
    explicit BoxUser(const QList<int>& buttonsToPress)
        : m_buttons(buttonsToPress)
    {
        m_timer.setInterval(1);
        connect(&m_timer, &QTimer::timeout, this, &BoxUser::answer);
        m_timer.start();
        qApp->installEventFilter(this);
    }

    // A message box fixes its size once it is shown, so the minimum is read just before.
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        const auto* shownBox = qobject_cast<QMessageBox*>(watched);
        if (shownBox && event->type() == QEvent::Show)
            minimumSize = shownBox->minimumSize();
        return QObject::eventFilter(watched, event);
    }

    // The whole question: four answers, of which "No" is the one that Enter gives.
    bool isWholeQuestion() const
    {
        return format == Qt::RichText
            && buttons
            == (QMessageBox::Yes | QMessageBox::YesToAll | QMessageBox::No | QMessageBox::NoToAll)
            && defaultButton == QMessageBox::No;
    }

    int boxes = 0;
    QMessageBox* box = nullptr;
    QString text;
    QString informativeText;
    QString title;
    QMessageBox::Icon icon = QMessageBox::NoIcon;
    Qt::TextFormat format = Qt::PlainText;
    QMessageBox::StandardButtons buttons;
    QMessageBox::StandardButton defaultButton = QMessageBox::NoButton;
    bool isModal = false;
    QSize minimumSize;

private:
    void answer()
    {
        auto* shownBox = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        if (!shownBox)
            return;
        box = shownBox;
        text = box->text();
        informativeText = box->informativeText();
        title = box->windowTitle();
        icon = box->icon();
        format = box->textFormat();
        buttons = box->standardButtons();
        defaultButton = box->standardButton(box->defaultButton());
        isModal = box->isModal();
        const int button = m_buttons.value(boxes, QMessageBox::No);
        ++boxes;
        box->button(static_cast<QMessageBox::StandardButton>(button))->click();
    }

    QList<int> m_buttons;
    QTimer m_timer;
};
