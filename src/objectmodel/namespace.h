#ifndef VANTREL_NAMESPACE_H
#define VANTREL_NAMESPACE_H

#include "objectmodel/export.h"
#include "objectmodel/serializable.h"

#include <QHash>
#include <QString>
#include <QVector>

namespace Vantrel {

class Class;

/**
 * A named place for classes and further namespaces. It refers to what it
 * lists and owns none of it. Names are unique per kind: a later class or
 * namespace replaces an earlier one of its name.
 */
class VANTREL_EXPORT Namespace : public Serializable
{
public:
    /** A root of its own: no name, no enclosing namespace, and not registered. */
    Namespace();
    /** Enters itself in @p enclosing (which may be null) and in the Inspector. */
    Namespace(Namespace *enclosing, const QString &name);
    ~Namespace() override;

    Namespace *enclosingNamespace() const { return m_enclosing; }
    const QString &name() const { return m_name; }
    /** The id that the Inspector gave, or -1. */
    int id() const { return m_id; }

    void registerClass(const Class *c);
    void registerNamespace(Namespace *nameSpace);

    /** Null when there is none of that name. */
    const Class *getClass(const QString &name) const;
    Namespace *getNamespace(const QString &name) const;
    /** Child namespaces in the order of their registration; null out of range. */
    Namespace *getNamespace(int index) const;
    int numNamespaces() const { return m_children.size(); }
    /** Whether a class or a namespace of that name is here. */
    bool containsIdentifier(const QString &name) const;

    /** Enclosing namespaces except the root and the own name, separated by "::". */
    QString fullyQualifiedName() const;

    void writeObject(QDataStream &stream) const override;
    void readObject(QDataStream &stream) override;

private:
    Q_DISABLE_COPY(Namespace)
    bool isInside(const Namespace *other) const;

    Namespace *m_enclosing = nullptr;
    QString m_name;
    QVector<Namespace *> m_children;
    QHash<QString, const Class *> m_classes;
    QHash<QString, Namespace *> m_namespaces;
    qint32 m_id = -1;
};

} // namespace Vantrel

#endif // VANTREL_NAMESPACE_H
