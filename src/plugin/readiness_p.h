#ifndef VANTREL_READINESS_P_H
#define VANTREL_READINESS_P_H

#include <QObject>
#include <QString>
#include <QTimer>

class QEvent;

namespace Vantrel {

/**
 * Tells when an application can be looked at: it shows a window, and for one turn
 * of the event loop nothing was delivered to any object of its thread, so layouts
 * are done and no posted event is pending. Timers, sockets and painting do
 * not count, or an application with an animation would never be ready. Neither do
 * splash screens and tool tips count as windows.
 */
class Readiness : public QObject
{
    Q_OBJECT

public:
    explicit Readiness(QObject *parent);

    /** @p timeout in milliseconds; 0 is without end. */
    void start(int timeout);
    /** What it is that has not come yet. */
    QString waitingFor() const { return m_waitingFor; }

    bool eventFilter(QObject *receiver, QEvent *event) override;

signals:
    void waitingForChanged(const QString &text);
    void ready();
    void timedOut();

private:
    void look();
    void stop();
    void waitFor(const QString &text);
    QString unrest() const;

    QTimer m_turn;
    QTimer m_limit;
    QString m_waitingFor;
    /** The class that an event was delivered to in this turn, and the type of the event. */
    QString m_lastReceiver;
    int m_lastEvent = 0;
    int m_restlessTurns = 0;
    bool m_hadWindow = false;
};

} // namespace Vantrel

#endif // VANTREL_READINESS_P_H
