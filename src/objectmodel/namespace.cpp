#include "objectmodel/namespace.h"

#include "objectmodel/class.h"
#include "objectmodel/inspector.h"

namespace Vantrel {

Namespace::Namespace() = default;

Namespace::Namespace(Namespace *enclosing, const QString &name)
    : m_enclosing(enclosing), m_name(name)
{
    if (m_enclosing) {
        m_enclosing->registerNamespace(this);
    }
    m_id = Inspector::self()->registerNamespace(this);
}

Namespace::~Namespace() = default;

void Namespace::registerClass(const Class *c)
{
    if (c) {
        m_classes.insert(c->className(), c);
    }
}

void Namespace::registerNamespace(Namespace *nameSpace)
{
    if (nameSpace) {
        m_namespaces.insert(nameSpace->name(), nameSpace);
        m_children.append(nameSpace);
    }
}

const Class *Namespace::getClass(const QString &name) const
{
    return m_classes.value(name);
}

Namespace *Namespace::getNamespace(const QString &name) const
{
    return m_namespaces.value(name);
}

Namespace *Namespace::getNamespace(int index) const
{
    return m_children.value(index);
}

bool Namespace::containsIdentifier(const QString &name) const
{
    return getClass(name) || getNamespace(name);
}

QString Namespace::fullyQualifiedName() const
{
    if (m_enclosing && m_enclosing->enclosingNamespace()) {
        return m_enclosing->fullyQualifiedName() + QLatin1String("::") + m_name;
    }
    return m_name;
}

bool Namespace::isInside(const Namespace *other) const
{
    for (const Namespace *n = this; n; n = n->m_enclosing) {
        if (n == other) {
            return true;
        }
    }
    return false;
}

} // namespace Vantrel
