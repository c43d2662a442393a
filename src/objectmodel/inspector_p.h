#ifndef VANTREL_INSPECTOR_P_H
#define VANTREL_INSPECTOR_P_H

#include "objectmodel/inspector.h"
#include "objectmodel/object.h"
#include "objectmodel/objectsearch.h"

#include <QHash>
#include <QStringView>
#include <QVarLengthArray>

#include <algorithm>
#include <cstring>
#include <optional>

namespace Vantrel {

class Class;
class Namespace;
class SearchScope;

/** A view of a name as a key, with the plain comparison of bytes that equality needs. */
struct NameView
{
    QStringView text;

    friend bool operator==(const NameView &a, const NameView &b)
    {
        const std::size_t bytes = a.text.size() * sizeof(QChar);
        return a.text.size() == b.text.size()
            && (bytes == 0 || std::memcmp(a.text.utf16(), b.text.utf16(), bytes) == 0);
    }
    friend uint qHash(const NameView &name, uint seed) { return qHash(name.text, seed); }
};

/** Things by id, in the order of their registration, and by name. A later one takes over a name. */
template <class T>
class Registry
{
public:
    int add(T *item, const QString &name);
    T *at(int id) const { return id >= 0 && id < m_items.size() ? m_items[id] : nullptr; }
    T *find(QStringView name) const
    {
        const auto found = m_byName.constFind(NameView{name});
        return found == m_byName.constEnd() ? nullptr : found->item;
    }
    int size() const { return m_items.size(); }
    void clear();

private:
    static constexpr int inlineCapacity = 64;
    static constexpr int growth = 8;
    /** The text that a key views lives in its entry, so that a look-up copies no text. */
    struct Entry
    {
        QString name;
        T *item = nullptr;
    };

    QVarLengthArray<T *, inlineCapacity> m_items;
    QHash<NameView, Entry> m_byName;
};

template <class T>
int Registry<T>::add(T *item, const QString &name)
{
    if (m_items.size() == m_items.capacity()) {
        m_items.reserve(m_items.capacity() + growth);
    }
    m_items.append(item);
    const auto known = m_byName.find(NameView{name});
    if (known != m_byName.end()) {
        known->item = item;
    } else {
        m_byName.insert(NameView{name}, Entry{name, item});
    }
    return m_items.size() - 1;
}

template <class T>
void Registry<T>::clear()
{
    m_items.clear();
    m_items.squeeze();
    m_byName.clear();
}

/** What the recorder of events was told, by name. */
struct RecorderSettings
{
    QHash<QString, QString> uniqueProperties;
    QHash<QString, QString> extensionCodes;
    QHash<QString, QString> recorderFilters;
    QHash<QString, bool> mouseTracking;
    QHash<QString, bool> recordMouseDrag;
    QHash<QString, bool> keyEventCompression;
    QHash<QString, bool> eventCompression;
};

/** How far a search along a path of names came. */
struct PathEnd
{
    QStringList resolved;
    QString missing;
};

class InspectorPrivate
{
public:
    /** The sources of objects, collected on first need; none while an implementation answers. */
    const std::vector<ObjectHierarchyDelegate *> &topLevelDelegates();
    /** Calls @p ask with each source until one answers true. Sources may come and go meanwhile. */
    template <class Ask>
    void askTopLevel(Ask ask)
    {
        const std::vector<ObjectHierarchyDelegate *> delegates = topLevelDelegates();
        for (ObjectHierarchyDelegate *delegate : delegates) {
            const auto &current = topLevelDelegates();
            const bool isThere =
                std::find(current.begin(), current.end(), delegate) != current.end();
            if (isThere && ask(delegate)) {
                return;
            }
        }
    }
    /** Top-level child number @p index over all delegates. */
    SharedPtr<Object> topLevelObject(int index);

    bool isEvaluationAllowed() const;
    /** Whether the toolkit of a found object is covered. */
    bool isEditionAllowed(const SharedPtr<Object> &object) const;
    bool isCached(const QString &name) const;
    /** The end of a successful search: @p found goes into the cache. */
    SharedPtr<Object> accept(const QString &name, const SharedPtr<Object> &found,
                             bool checkEdition);
    /** Looks for @p realName; the cache and messages know it as @p name. */
    SharedPtr<Object> search(const QString &name, const ObjectName &realName, bool checkEdition);
    SharedPtr<Object> findByNameOrPath(const ObjectName &realName, bool checkEdition, PathEnd *end);
    SharedPtr<Object> askDelegates(const ObjectName &name);
    SharedPtr<Object> searchPath(const QString &name, bool checkEdition, PathEnd *end);
    /**
     * Asks the delegates again, with matchers that take notes. What else that
     * does to the last error and the unmatched properties is undone.
     */
    void explain(SearchScope &scope, const ObjectName &name);
    QString missText(const QString &name, const QString &realName, const PathEnd &end) const;

    int globalClassId = 9;
    int globalNamespaceId = 0;
    Registry<const Class> classes;
    Registry<Namespace> namespaces;
    std::optional<std::vector<ObjectHierarchyDelegate *>> topLevel;
    InspectorInterface *implementation = nullptr;
    SharedPtr<Object> voidObject;
    SharedPtr<Object> cachedObject;
    QString cachedName;
    bool cacheEnabled = true;
    QString lastError;
    QMap<QString, QStringList> unmatchedProperties;
    std::vector<NearMiss> nearMisses;
    RecorderSettings recorder;
    unsigned long licEditions = 0;
    bool spyingEnabled = false;
};

} // namespace Vantrel

#endif // VANTREL_INSPECTOR_P_H
