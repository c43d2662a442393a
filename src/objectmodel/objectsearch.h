#ifndef VANTREL_OBJECTSEARCH_H
#define VANTREL_OBJECTSEARCH_H

#include "objectmodel/export.h"
#include "objectmodel/object.h"
#include "objectmodel/objectname.h"

#include <QByteArray>
#include <QString>

#include <memory>
#include <vector>

namespace Vantrel {

/** A candidate that met some conditions of a name that was not found. */
struct NearMiss
{
    struct Condition
    {
        QString name;
        /** "=", "~=" or "?=". */
        QString operatorText;
        QString wanted;
        /** Null when the candidate has no such property. */
        QString actual;
        bool held = false;
    };

    SharedPtr<Object> object;
    int numHeld = 0;
    /** In the order of the property names. */
    std::vector<Condition> conditions;
};

/**
 * Matches candidates against one multi-property name. A hierarchy delegate
 * makes one in objectByQualifiedName() and offers its objects in their order
 * until one is accepted:
 *
 *     ObjectMatcher matcher(name);
 *     for (Widget *widget : widgets) {
 *         const auto holds = [&](const ObjectMatcher::Condition &condition, QString *actual) {
 *             return condition.holds(widget->read(condition.name), actual);
 *         };
 *         if (matcher.offer(holds, [&] { return wrapped(widget); })) {
 *             return wrapped(widget);
 *         }
 *     }
 *
 * That takes care of "occurrence" too. When a search fails, the Inspector asks
 * the delegates a second time and lets their matchers note which properties did
 * not match and which candidates came near; successful searches pay nothing.
 */
class VANTREL_EXPORT ObjectMatcher
{
public:
    struct Condition
    {
        /** Matches @p value and stores it in @p actual unless that is null. */
        bool holds(const QString &value, QString *actual) const
        {
            if (actual) {
                *actual = value.isNull() ? QLatin1String("") : value;
            }
            return wanted.matches(value);
        }
        /**
         * The same for a value that is an object, such as a container: it is the
         * one that the nested or symbolic name stands for, by its qualified name,
         * or objectMatches() that name. A null handle is no value.
         */
        bool holds(const SharedPtr<Object> &object, QString *actual) const;

        QString name;
        /** The name in UTF-8, for toolkits that look properties up by it. */
        QByteArray encodedName;
        PropertyValue wanted;
    };

    /** A name that is invalid, or whose occurrence is no number above 0, accepts nothing. */
    explicit ObjectMatcher(const ObjectName &name);
    /** Reports what was noted. */
    ~ObjectMatcher();

    /**
     * Whether the candidate is the one that is looked for.
     *
     * @p holds is called as `bool holds(const Condition &condition, QString
     * *actual)` and stores the property's text in @p actual unless that is null.
     * @p handle is called without arguments and gives the object, which is only
     * made when the candidate is remembered.
     */
    template <class Holds, class Handle>
    bool offer(Holds holds, Handle handle)
    {
        return m_notes ? note(check(holds), handle) : accepts(holds);
    }
    /**
     * The same for an object whose properties are read by reflection. Nested and
     * symbolic names are matched with properties that are objects; the value of
     * an enum may be given by its key. A property that is not there, cannot be
     * read, is null or has no text is missing, which is not an empty text.
     */
    bool offer(const SharedPtr<Object> &object);

private:
    Q_DISABLE_COPY(ObjectMatcher)
    struct Notes;

    template <class Holds>
    bool accepts(Holds &holds)
    {
        if (!m_usable) {
            return false;
        }
        for (const Condition &condition : m_conditions) {
            if (!holds(condition, nullptr)) {
                return false;
            }
        }
        return ++m_seen == m_occurrence;
    }
    template <class Holds>
    NearMiss check(Holds &holds)
    {
        NearMiss result = unchecked();
        for (std::size_t i = 0; i < m_conditions.size(); ++i) {
            NearMiss::Condition &checked = result.conditions[i];
            checked.held = holds(m_conditions[i], &checked.actual);
            result.numHeld += checked.held;
        }
        return result;
    }
    template <class Handle>
    bool note(NearMiss candidate, Handle &handle)
    {
        if (candidate.numHeld == int(m_conditions.size()) && m_usable) {
            if (++m_seen == m_occurrence) {
                return true;
            }
            addOccurrence(candidate);
        }
        if (isWorthNoting(candidate)) {
            candidate.object = handle();
            keep(std::move(candidate));
        }
        return false;
    }
    NearMiss unchecked() const;
    void addOccurrence(NearMiss &candidate) const;
    bool isWorthNoting(const NearMiss &candidate);
    void keep(NearMiss candidate);
    void report();

    std::vector<Condition> m_conditions;
    int m_occurrence;
    int m_seen = 0;
    bool m_usable;
    /** Set while a failed search is explained. */
    std::unique_ptr<Notes> m_notes;
};

/**
 * Whether @p name, which may be symbolic, is the qualified name of @p object or
 * the properties of the object, read by reflection, are as the name says. An
 * object by itself counts as the first occurrence. Nothing is searched, noted or
 * reported; the names that conditions refer to nest at most 32 levels deep.
 */
VANTREL_EXPORT bool objectMatches(const SharedPtr<Object> &object, const ObjectName &name);

} // namespace Vantrel

#endif // VANTREL_OBJECTSEARCH_H
