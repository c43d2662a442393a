#include "qt/delegates_p.h"

#include "qt/handles_p.h"
#include "qt/modality_p.h"
#include "qt/node_p.h"
#include "qt/script.h"
#include "qt/waiting.h"

#include "objectmodel/delegates.h"
#include "objectmodel/inspector.h"
#include "objectmodel/object.h"
#include "objectmodel/screenvalues.h"

#include <QApplication>
#include <QGraphicsProxyWidget>
#include <QPointer>
#include <QWidget>
#include <QWindow>

#include <algorithm>
#include <memory>

namespace Vantrel::QtWrapper {

namespace {

using Result = FunctionCallResult<void>;

/** How long a script waits for what the window system decides, in milliseconds. */
constexpr int patience = 5000;

QString text(const QSize &size)
{
    return QStringLiteral("%1x%2").arg(QString::number(size.width()),
                                       QString::number(size.height()));
}

/** A widget and a window without one, by the operations that both have. */
class Target
{
public:
    explicit Target(QObject *object)
        : m_object(object), m_widget(qobject_cast<QWidget *>(object)),
          m_window(qobject_cast<QWindow *>(object))
    {}

    QObject *object() const { return m_object; }
    bool isGone() const { return !m_object; }
    QString name() const { return isGone() ? QStringLiteral("window") : summaryOf(Node(m_object)); }

    bool isWindow() const
    {
        return m_widget ? m_widget->isWindow() : m_window && m_window->isTopLevel();
    }
    QObject *enclosingWindow() const
    {
        if (m_widget) {
            return m_widget->window();
        }
        QWindow *window = m_window;
        while (window && window->parent()) {
            window = window->parent();
        }
        return window;
    }
    bool isEmbedded() const { return m_widget && m_widget->graphicsProxyWidget(); }
    QWindow *handle() const { return m_widget ? m_widget->windowHandle() : m_window.data(); }

    bool isVisible() const { return m_widget ? m_widget->isVisible() : m_window->isVisible(); }
    Qt::WindowFlags flags() const { return m_widget ? m_widget->windowFlags() : m_window->flags(); }
    Qt::WindowStates states() const
    {
        return m_widget ? m_widget->windowState() : m_window->windowStates();
    }
    QSize minimumSize() const
    {
        return m_widget ? m_widget->minimumSize() : m_window->minimumSize();
    }
    QSize maximumSize() const
    {
        return m_widget ? m_widget->maximumSize() : m_window->maximumSize();
    }
    bool isFixed() const { return minimumSize() == maximumSize(); }
    QRect frame() const { return m_widget ? m_widget->frameGeometry() : m_window->frameGeometry(); }
    QSize size() const { return m_widget ? m_widget->size() : m_window->size(); }
    QSize frameMargins() const { return frame().size() - size(); }

    void setStates(Qt::WindowStates states)
    {
        m_widget ? m_widget->setWindowState(states) : m_window->setWindowStates(states);
    }
    void moveFrame(const QPoint &place)
    {
        m_widget ? m_widget->move(place) : m_window->setFramePosition(place);
    }
    void resize(const QSize &size) { m_widget ? m_widget->resize(size) : m_window->resize(size); }
    void raise() { m_widget ? m_widget->raise() : m_window->raise(); }
    void activate() { m_widget ? m_widget->activateWindow() : m_window->requestActivate(); }
    bool close() { return m_widget ? m_widget->close() : m_window->close(); }

private:
    QPointer<QObject> m_object;
    QPointer<QWidget> m_widget;
    QPointer<QWindow> m_window;
};

Result refused(const QString &verb, const Target &target, const QString &reason)
{
    return {QStringLiteral("Can't %1 the %2: %3.").arg(verb, target.name(), reason)};
}

/** Why nothing can be done to the object as a window; empty when something can. */
QString whyNoWindow(const Target &target)
{
    if (target.isGone()) {
        return QStringLiteral("it no longer exists");
    }
    if (!target.isWindow()) {
        return QStringLiteral("it is not a window; its window is the %1")
            .arg(summaryOf(Node(target.enclosingWindow())));
    }
    return QString();
}

/** Why a user could not do something to the window; empty when one could. */
QString whyOutOfReach(const Target &target)
{
    const QString reason = whyNoWindow(target);
    if (!reason.isEmpty()) {
        return reason;
    }
    if (!target.isVisible()) {
        return QStringLiteral("it is hidden");
    }
    QWindow *window = target.handle();
    const QWindow *modal = window ? blockingWindow(window) : nullptr;
    return modal ? QStringLiteral("it is blocked by the modal window %1").arg(titleOf(modal))
                 : QString();
}

/** Why the window system has no say about it; empty when it does. */
QString whyNotManaged(const Target &target)
{
    const QString reason = whyOutOfReach(target);
    if (!reason.isEmpty()) {
        return reason;
    }
    if (target.isEmbedded()) {
        return QStringLiteral("it is embedded in a graphics scene");
    }
    const int type = int(target.flags() & Qt::WindowType_Mask);
    if (type == Qt::Popup || type == Qt::ToolTip || type == Qt::SplashScreen) {
        return QStringLiteral("popups, tool tips and splash screens are not managed");
    }
    return QString();
}

bool isPlatform(std::initializer_list<const char *> prefixes)
{
    const QString name = QGuiApplication::platformName();
    return std::any_of(prefixes.begin(), prefixes.end(), [&name](const char *prefix) {
        return name.startsWith(QLatin1String(prefix));
    });
}

QString platformCannot(const char *what)
{
    return QStringLiteral("the platform \"%1\" %2")
        .arg(QGuiApplication::platformName(), QLatin1String(what));
}

/** What closing came to; shared, as the application may take longer than the script waits. */
struct Closing
{
    bool isAnswered = false;
    bool isClosed = false;
};

Result closeResult(const Closing &closing, const Target &target, const QWindow *modalBefore)
{
    // A dialog that the application opens first is its answer: the user has to go on with that.
    const QWindow *modal = QGuiApplication::modalWindow();
    if (closing.isClosed || target.isGone() || (modal && modal != modalBefore)) {
        return {};
    }
    return refused(QStringLiteral("close"), target,
                   closing.isAnswered ? QStringLiteral("the application refused")
                                      : QStringLiteral("the application did not answer"));
}

/**
 * The question "Save?" is often asked by a dialog within the close event, which
 * does not return before it is answered. A script must answer it, so for a
 * script the application closes the window on its own stack.
 */
Result closeBesideScript(const Target &target)
{
    const QWindow *modalBefore = QGuiApplication::modalWindow();
    const auto closing = std::make_shared<Closing>();
    const auto close = [closing, target = Target(target)]() mutable {
        closing->isClosed = target.close();
        closing->isAnswered = true;
    };
    QMetaObject::invokeMethod(target.object(), close, Qt::QueuedConnection);
    waitFor(
        [&] {
            const QWindow *modal = QGuiApplication::modalWindow();
            return closing->isAnswered || target.isGone() || (modal && modal != modalBefore);
        },
        patience, QStringLiteral("close"));
    Inspector::self()->lastError(); // of the wait; the result says more
    return closeResult(*closing, target, modalBefore);
}

Result closeNow(Target target)
{
    const QWindow *modalBefore = QGuiApplication::modalWindow();
    Closing closing;
    closing.isClosed = target.close();
    closing.isAnswered = true;
    return closeResult(closing, target, modalBefore);
}

Result changeStates(const QString &verb, Target target, Qt::WindowStates add,
                    Qt::WindowStates remove)
{
    const Qt::WindowStates wanted = (target.states() & ~remove) | add;
    target.setStates(wanted);
    if (target.isGone()) {
        return refused(verb, target, QStringLiteral("it was destroyed by that"));
    }
    // Being active is one of the states and the window system's own business.
    const Qt::WindowStates ours = Qt::WindowMinimized | Qt::WindowMaximized | Qt::WindowFullScreen;
    return (target.states() & ours) == (wanted & ours)
        ? Result{}
        : refused(verb, target, QStringLiteral("it did not take the new state"));
}

/** For what makes the window fill the screen. */
Result enlarge(const QString &verb, const Target &target, Qt::WindowState state)
{
    QString reason = whyNotManaged(target);
    if (reason.isEmpty() && target.isFixed()) {
        reason = QStringLiteral("its size is fixed at %1")
                     .arg(text(target.minimumSize() + target.frameMargins()));
    }
    const Qt::WindowStates others =
        Qt::WindowMinimized | Qt::WindowMaximized | Qt::WindowFullScreen;
    return reason.isEmpty() ? changeStates(verb, target, state, others)
                            : refused(verb, target, reason);
}

QString whyNotPlaced(const Target &target)
{
    const QString reason = whyNotManaged(target);
    if (!reason.isEmpty()) {
        return reason;
    }
    const Qt::WindowStates states = target.states();
    if (states & Qt::WindowMinimized) {
        return QStringLiteral("it is minimized");
    }
    if (states & Qt::WindowMaximized) {
        return QStringLiteral("it is maximized");
    }
    return states & Qt::WindowFullScreen ? QStringLiteral("it fills the screen") : QString();
}

/** @p size without the frame; reasons are given with it, as the caller gives sizes. */
QString whyNotOfSize(const Target &target, const QSize &size)
{
    const QSize margins = target.frameMargins();
    const QSize least = target.minimumSize();
    const QSize most = target.maximumSize();
    if (target.isFixed() && size != least) {
        return QStringLiteral("its size is fixed at %1").arg(text(least + margins));
    }
    if (size.expandedTo(least) != size) {
        return QStringLiteral("its minimum size is %1").arg(text(least + margins));
    }
    if (size.boundedTo(most) != size) {
        return QStringLiteral("its maximum size is %1").arg(text(most + margins));
    }
    return size.isEmpty() ? QStringLiteral("its size must be positive") : QString();
}

Result activate(const QString &verb, Target target)
{
    target.activate();
    const QPointer<QWindow> window = target.handle();
    if (!isInScript()) {
        return {}; // The window system answers later, to the event loop.
    }
    const auto isFocused = [window] { return window && QGuiApplication::focusWindow() == window; };
    if (waitFor(isFocused, patience, verb)) {
        return {};
    }
    Inspector::self()->lastError();
    return refused(verb, target, QStringLiteral("the window system did not give it the focus"));
}

/** Beyond this the arithmetic of rectangles overflows; it is the largest size of a widget, too. */
bool isInRange(int first, int second)
{
    const auto isOne = [](int n) { return n >= -QWIDGETSIZE_MAX && n <= QWIDGETSIZE_MAX; };
    return isOne(first) && isOne(second);
}

QString rangeText()
{
    return QStringLiteral("the numbers are out of range, which is %1").arg(QWIDGETSIZE_MAX);
}

class Windows : public WindowInteractionDelegate
{
public:
    using WindowInteractionDelegate::WindowInteractionDelegate;

    Result closeWindow(SharedPtr<Object> window) override
    {
        const Target target = targetOf(window);
        const QString reason = whyOutOfReach(target);
        if (!reason.isEmpty()) {
            return refused(QStringLiteral("close"), target, reason);
        }
        return isInScript() ? closeBesideScript(target) : closeNow(target);
    }

    Result maximizeWindow(SharedPtr<Object> window) override
    {
        return enlarge(QStringLiteral("maximize"), targetOf(window), Qt::WindowMaximized);
    }

    Result minimizeWindow(SharedPtr<Object> window) override
    {
        const QString verb = QStringLiteral("minimize");
        const Target target = targetOf(window);
        const QString reason = whyNotManaged(target);
        return reason.isEmpty() ? changeStates(verb, target, Qt::WindowMinimized, {})
                                : refused(verb, target, reason);
    }

    Result moveWindowTo(SharedPtr<Object> window, int x, int y) override
    {
        const QString verb = QStringLiteral("move");
        Target target = targetOf(window);
        QString reason = whyNotPlaced(target);
        if (reason.isEmpty() && !isInRange(x, y)) {
            reason = rangeText();
        }
        if (reason.isEmpty() && isPlatform({"wayland"})) {
            reason = platformCannot("does not let applications place their windows");
        }
        if (!reason.isEmpty()) {
            return refused(verb, target, reason);
        }
        target.moveFrame(QPoint(x, y));
        return placeResult(verb, target,
                           target.isGone() || target.frame().topLeft() == QPoint(x, y));
    }

    Result resizeWindowTo(SharedPtr<Object> window, int width, int height) override
    {
        const QString verb = QStringLiteral("resize");
        Target target = targetOf(window);
        QString reason = whyNotPlaced(target);
        QSize size;
        if (reason.isEmpty() && !isInRange(width, height)) {
            reason = rangeText();
        }
        if (reason.isEmpty()) {
            size = QSize(width, height) - target.frameMargins();
            reason = whyNotOfSize(target, size);
        }
        if (!reason.isEmpty()) {
            return refused(verb, target, reason);
        }
        target.resize(size);
        return placeResult(verb, target, target.isGone() || target.size() == size);
    }

    /** As the button of a task bar: what was minimized goes back to what it was before. */
    Result restoreWindow(SharedPtr<Object> window) override
    {
        const QString verb = QStringLiteral("restore");
        const Target target = targetOf(window);
        const QString reason = whyNotManaged(target);
        if (!reason.isEmpty()) {
            return refused(verb, target, reason);
        }
        const Qt::WindowStates enlarged = Qt::WindowMaximized | Qt::WindowFullScreen;
        return changeStates(verb, target, {},
                            target.states() & Qt::WindowMinimized
                                ? Qt::WindowStates(Qt::WindowMinimized)
                                : enlarged);
    }

    Result setFullscreenWindow(SharedPtr<Object> window) override
    {
        return enlarge(QStringLiteral("set fullscreen"), targetOf(window), Qt::WindowFullScreen);
    }

    Result setForegroundWindow(SharedPtr<Object> window) override
    {
        const QString verb = QStringLiteral("set foreground");
        Target target = targetOf(window);
        QString reason = whyNotManaged(target);
        if (reason.isEmpty() && isPlatform({"offscreen", "minimal", "wayland"})) {
            reason = platformCannot("does not let applications order their windows");
        }
        if (!reason.isEmpty()) {
            return refused(verb, target, reason);
        }
        if (target.states() & Qt::WindowMinimized) {
            target.setStates(target.states() & ~Qt::WindowMinimized);
        }
        if (!target.isGone()) {
            target.raise();
        }
        return target.isGone() ? Result{} : activate(verb, target);
    }

    Result setFocusedWindow(SharedPtr<Object> window) override
    {
        const QString verb = QStringLiteral("focus");
        const Target target = targetOf(window);
        QString reason = whyOutOfReach(target);
        if (reason.isEmpty() && target.states() & Qt::WindowMinimized) {
            reason = QStringLiteral("it is minimized");
        }
        if (reason.isEmpty() && target.flags() & Qt::WindowDoesNotAcceptFocus) {
            reason = QStringLiteral("it does not accept the focus");
        }
        return reason.isEmpty() ? activate(verb, target) : refused(verb, target, reason);
    }

    FunctionCallResult<ScreenRectangle> windowGeometry(SharedPtr<Object> window) override
    {
        const Target target = targetOf(window);
        const QString reason = whyNoWindow(target);
        if (!reason.isEmpty()) {
            const QString verb = QStringLiteral("fetch geometry for");
            return {ScreenRectangle(), refused(verb, target, reason).errorMessage};
        }
        const QRect frame = target.frame();
        return {ScreenRectangle{frame.x(), frame.y(), frame.width(), frame.height()}, QString()};
    }

private:
    static Target targetOf(const SharedPtr<Object> &window) { return Target(qobjectOf(window)); }

    static Result placeResult(const QString &verb, const Target &target, bool isPlaced)
    {
        if (isPlaced) {
            return {};
        }
        const QRect frame = target.frame();
        return refused(
            verb, target,
            QStringLiteral("it is now at %1, %2 with the size %3")
                .arg(QString::number(frame.x()), QString::number(frame.y()), text(frame.size())));
    }
};

class WidgetWindows : public Windows
{
public:
    WidgetWindows() : Windows(QStringLiteral("QWidget")) {}

    FunctionCallResult<SharedPtr<Object>> focusedWindow() override
    {
        QWidget *window = QApplication::activeWindow();
        return {window ? handleOf(static_cast<QObject *>(window)) : nullptr, QString()};
    }
};

class PlainWindows : public Windows
{
public:
    PlainWindows() : Windows(QStringLiteral("QWindow")) {}

    FunctionCallResult<SharedPtr<Object>> focusedWindow() override
    {
        QWindow *window = QGuiApplication::focusWindow();
        const QWidgetList widgets = QApplication::topLevelWidgets();
        const bool isOfWidget =
            std::any_of(widgets.begin(), widgets.end(), [window](const QWidget *widget) {
                return widget->windowHandle() == window;
            });
        return {window && !isOfWidget ? handleOf(static_cast<QObject *>(window)) : nullptr,
                QString()};
    }
};

} // namespace

void registerWindows()
{
    new WidgetWindows;
    new PlainWindows;
}

} // namespace Vantrel::QtWrapper
