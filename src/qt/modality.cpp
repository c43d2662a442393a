#include "qt/modality_p.h"

#include <QApplication>
#include <QWidget>
#include <QWindow>

namespace Vantrel::QtWrapper {

namespace {

QWindow *parentOf(const QWindow *window)
{
    return window->parent() ? window->parent() : window->transientParent();
}

bool isSameOrBelow(const QWindow *window, const QWindow *ancestor)
{
    while (window && window != ancestor) {
        window = parentOf(window);
    }
    return window;
}

/** Whether a window that is modal for its parents alone blocks @p window. */
bool blocksParent(const QWindow *modal, const QWindow *window)
{
    for (const QWindow *parent = modal; parent; parent = parentOf(parent)) {
        if (isSameOrBelow(window, parent)) {
            return true;
        }
    }
    return false;
}

bool blocks(const QWindow *modal, const QWindow *window)
{
    return modal->isVisible() && !isSameOrBelow(window, modal)
        && (modal->modality() == Qt::ApplicationModal
            || (modal->modality() == Qt::WindowModal && blocksParent(modal, window)));
}

QWidget *widgetOf(const QWindow *window)
{
    for (QWidget *widget : QApplication::topLevelWidgets()) {
        if (widget->windowHandle() == window) {
            return widget;
        }
    }
    return nullptr;
}

} // namespace

QWindow *blockingWindow(QWindow *window)
{
    // The one that was opened last decides about itself and the windows it opened.
    QWindow *const latest = QGuiApplication::modalWindow();
    if (!latest || window->type() == Qt::ToolTip || isSameOrBelow(window, latest)) {
        return nullptr;
    }
    if (blocks(latest, window)) {
        return latest;
    }
    for (QWindow *other : QGuiApplication::allWindows()) {
        if (blocks(other, window)) {
            return other;
        }
    }
    return nullptr;
}

QString titleOf(const QWindow *window)
{
    const QWidget *widget = widgetOf(window);
    const QObject *object = widget ? static_cast<const QObject *>(widget) : window;
    const QString title = widget ? widget->windowTitle() : window->title();
    const QString kind = QString::fromLatin1(object->metaObject()->className());
    const QString name = title.isEmpty() ? object->objectName() : title;
    return name.isEmpty() ? kind : QStringLiteral("%1 '%2'").arg(kind, name);
}

QString nameOfModalWindow()
{
    const QWidget *popup = QApplication::activePopupWidget();
    const QWindow *window = popup ? popup->windowHandle() : QGuiApplication::modalWindow();
    return window ? titleOf(window) : QStringLiteral("a nested event loop");
}

} // namespace Vantrel::QtWrapper
