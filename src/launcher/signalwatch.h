#ifndef VANTREL_SIGNALWATCH_H
#define VANTREL_SIGNALWATCH_H

#include <QObject>

#include <memory>

class QSocketNotifier;

namespace Vantrel {

/** Tells in the event loop of SIGINT, SIGTERM and SIGHUP to this process. One at a time. */
class SignalWatch : public QObject
{
    Q_OBJECT

public:
    SignalWatch();
    ~SignalWatch() override;

signals:
    void received(int signal);

private:
    std::unique_ptr<QSocketNotifier> m_notifier;
};

} // namespace Vantrel

#endif // VANTREL_SIGNALWATCH_H
