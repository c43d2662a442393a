#ifndef VANTREL_QT_FIBER_P_H
#define VANTREL_QT_FIBER_P_H

#include <QtGlobal>

#include <functional>
#include <memory>

namespace Vantrel::QtWrapper {

/**
 * A function on a stack of its own, in the thread that resumes it. It runs only
 * between resume() and the next suspend() or its end. The stack has a guard
 * page; what the function calls may use the rest of it.
 */
class Fiber
{
public:
    /** @p entry must not throw. */
    explicit Fiber(std::function<void()> entry);
    /** A fiber that has not ended takes its stack with it; nothing on it is destroyed. */
    ~Fiber();

    /** False when there was no memory for the stack; such a fiber cannot be resumed. */
    bool isUsable() const;
    /** To be called outside the fiber: runs it on, until it suspends itself or ends. */
    void resume();
    /** To be called inside the fiber: returns to the caller of resume(). */
    void suspend();
    bool isRunning() const;
    bool hasEnded() const;

private:
    Q_DISABLE_COPY(Fiber)
    struct Private;
    const std::unique_ptr<Private> d;
};

} // namespace Vantrel::QtWrapper

#endif // VANTREL_QT_FIBER_P_H
