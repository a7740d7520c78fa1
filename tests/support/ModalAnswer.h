#pragma once

// For GUI tests only: needs Qt Widgets.
#include <QApplication>
#include <QTimer>
#include <QWidget>

#include <functional>

namespace fixtures {

// Runs `answer` on the next modal window (or popup menu) of type T once it is
// up, so that a dialog opened inside the code under test does not block the test.
template<typename T = QWidget>
void AnswerNextModal(std::function<void(T*)> answer)
{
    auto* poll = new QTimer(qApp);
    poll->setInterval(10);
    QObject::connect(poll, &QTimer::timeout, poll, [poll, answer] {
        QWidget* up = QApplication::activePopupWidget();
        if (auto* modal = qobject_cast<T*>(up ? up : QApplication::activeModalWidget())) {
            poll->stop();
            poll->deleteLater();
            answer(modal);
        }
    });
    poll->start();
}

} // namespace fixtures
