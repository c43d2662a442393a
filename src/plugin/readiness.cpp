#include "plugin/readiness_p.h"

#include <QEvent>
#include <QGuiApplication>
#include <QMetaEnum>
#include <QWindow>

#include <algorithm>

namespace Vantrel {

namespace {

// Milliseconds between two looks; a shown window is looked at in each turn of the event loop.
constexpr int pollInterval = 5;
// Below it, an application is only starting.
constexpr int manyTurns = 200;

bool isShownWindow(const QWindow *window)
{
    const Qt::WindowType type = window->type();
    return window->isVisible() && type != Qt::ToolTip && type != Qt::SplashScreen
        && type != Qt::Desktop;
}

bool hasShownWindow()
{
    const QWindowList windows = QGuiApplication::topLevelWindows();
    return std::any_of(windows.begin(), windows.end(), isShownWindow);
}

bool changesNothing(QEvent::Type type)
{
    switch (type) {
    case QEvent::Timer:
    case QEvent::ZeroTimerEvent:
    case QEvent::SockAct:
    case QEvent::UpdateRequest:
    case QEvent::UpdateLater:
    case QEvent::Paint:
    case QEvent::Expose:
        return true;
    default:
        return false;
    }
}

} // namespace

Readiness::Readiness(QObject *parent) : QObject(parent)
{
    m_limit.setSingleShot(true);
    connect(&m_turn, &QTimer::timeout, this, &Readiness::look);
    connect(&m_limit, &QTimer::timeout, this, [this] {
        stop();
        emit timedOut();
    });
}

void Readiness::start(int timeout)
{
    QCoreApplication::instance()->installEventFilter(this);
    m_turn.start(pollInterval);
    if (timeout > 0) {
        m_limit.start(timeout);
    }
    look();
}

void Readiness::stop()
{
    m_turn.stop();
    m_limit.stop();
    QCoreApplication::instance()->removeEventFilter(this);
}

bool Readiness::eventFilter(QObject *receiver, QEvent *event)
{
    if (m_hadWindow && m_lastReceiver.isEmpty() && !changesNothing(event->type())
        && receiver != &m_turn && receiver != &m_limit) {
        m_lastReceiver = QString::fromLatin1(receiver->metaObject()->className());
        m_lastEvent = event->type();
    }
    return false;
}

void Readiness::look()
{
    if (!hasShownWindow()) {
        m_hadWindow = false;
        m_turn.setInterval(pollInterval);
        waitFor(QStringLiteral("a visible top-level window"));
        return;
    }
    const bool isAtRest = m_hadWindow && m_lastReceiver.isEmpty();
    if (isAtRest) {
        stop();
        emit ready();
        return;
    }
    if (!m_hadWindow || ++m_restlessTurns % manyTurns == 0) {
        waitFor(unrest());
    }
    m_hadWindow = true;
    m_lastReceiver.clear();
    m_turn.setInterval(0);
}

void Readiness::waitFor(const QString &text)
{
    if (text != m_waitingFor) {
        m_waitingFor = text;
        emit waitingForChanged(text);
    }
}

QString Readiness::unrest() const
{
    const QString text =
        QStringLiteral("one turn of the event loop without events, in a window that is visible");
    if (m_lastReceiver.isEmpty()) {
        return text;
    }
    const char *type = QMetaEnum::fromType<QEvent::Type>().valueToKey(m_lastEvent);
    return QStringLiteral("%1 (events such as %2 to a %3 keep coming)")
        .arg(text, type ? QString::fromLatin1(type) : QString::number(m_lastEvent), m_lastReceiver);
}

} // namespace Vantrel
