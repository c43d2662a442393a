#ifndef VANTREL_QT_MATCHING_P_H
#define VANTREL_QT_MATCHING_P_H

#include "qt/node_p.h"
#include "qt/relations_p.h"

#include "objectmodel/objectname.h"

#include <QPointer>
#include <QByteArray>
#include <QHash>

#include <memory>
#include <vector>

class QMetaProperty;

namespace Vantrel::QtWrapper {

/**
 * Tells which nodes meet the conditions of a name, "occurrence" left out. Keeps
 * what it finds out about classes and neighbours on the way, so one is made for
 * each search and not kept.
 */
class Matcher
{
public:
    explicit Matcher(const ObjectName &name);
    ~Matcher();
    Q_DISABLE_COPY(Matcher)

    /** Why the name cannot be searched for; empty when it can. */
    QString error() const { return m_error; }
    bool matches(const Node &node);
    /** One condition, by its place in the order of property names. */
    bool matches(int condition, const Node &node, QString *actual);
    /** Whether the node of the last question outlived it, or what shows the node did. */
    bool isNodeThere() const { return !m_watched.isNull(); }
    /** False when no item of a model can match. */
    bool canMatchModelItems() const;

private:
    enum class Kind {
        // In the order of their costs.
        Type,
        Name,
        Property,
        Row,
        Column,
        Enabled,
        Visible,
        Text,
        Window,
        Container,
        LeftWidget,
        AboveWidget,
        Buddy
    };
    struct Condition;
    struct Context;

    Matcher(const ObjectName &name, const std::shared_ptr<Context> &context, int depth);
    void compile(const ObjectName &name, int depth);
    void compileNested(Condition &condition, int depth);
    static Kind kindOf(const QString &name);
    void watch(const Node &node);

    bool holds(Condition &condition, const Node &node, QString *actual);
    bool holdsForType(Condition &condition, const Node &node, QString *actual);
    bool holdsForText(const Condition &condition, const Node &node, QString *actual);
    bool holdsForProperty(Condition &condition, const Node &node, QString *actual);
    bool holdsForValue(Condition &condition, const QVariant &value, const QMetaProperty &property,
                       QString *actual);
    bool holdsForRelated(Condition &condition, const Node &related, QString *actual);
    bool holdsForContainer(Condition &condition, const Node &node, QString *actual);
    bool holdsCheaply(const Node &node);

    std::vector<Condition> m_conditions;
    /** The indices of the conditions, cheap ones first. */
    std::vector<int> m_order;
    const std::shared_ptr<Context> m_context;
    QString m_error;
    QPointer<QObject> m_watched;
};

} // namespace Vantrel::QtWrapper

#endif // VANTREL_QT_MATCHING_P_H
