#ifndef VANTREL_UIELEMENT_H
#define VANTREL_UIELEMENT_H

#include "objectmodel/export.h"
#include "objectmodel/screenvalues.h"

#include <QByteArray>
#include <QString>

#include <memory>
#include <utility>
#include <vector>

namespace Vantrel {

class Object;
template <class T>
class SharedPtr;

/**
 * One object in a tree dump, filled by the DumpObjectTreeDelegate of its class.
 * An element owns its children.
 */
class VANTREL_EXPORT UiElement
{
public:
    UiElement();
    ~UiElement();

    /** A new last child, owned by this element. */
    UiElement *addChild();
    const std::vector<std::unique_ptr<UiElement>> &children() const { return m_children; }

    /** Adds a property behind the others, or replaces the value of one that is there. */
    void setProperty(const QString &property, const QString &value);
    /** In the order in which they were added. */
    const std::vector<std::pair<QString, QString>> &properties() const { return m_properties; }

    /** The class as the dump shows it. */
    QString type;
    QString name;
    /** In global screen coordinates, in pixels. */
    ScreenRectangle bounds;
    /** PNG data; empty when no picture was taken. */
    QByteArray screenshot;

private:
    Q_DISABLE_COPY(UiElement)
    std::vector<std::unique_ptr<UiElement>> m_children;
    std::vector<std::pair<QString, QString>> m_properties;
};

/** Tells which objects go into a tree dump. Delegates look filters up by their names. */
class VANTREL_EXPORT DumpFilter
{
public:
    virtual ~DumpFilter();
    /** False leaves the object and everything below it out. */
    virtual bool accepts(const SharedPtr<Object> &object) const = 0;
};

} // namespace Vantrel

#endif // VANTREL_UIELEMENT_H
