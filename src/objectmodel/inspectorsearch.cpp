#include "objectmodel/inspector.h"

#include "objectmodel/delegates.h"
#include "objectmodel/inspector_p.h"
#include "objectmodel/objectmap.h"
#include "objectmodel/objectname.h"
#include "objectmodel/objectsearch_p.h"

#include <utility>

namespace Vantrel {

namespace {

/**
 * The place of the "}." in a name such as "{type='Dialog'}.button", which leads
 * from a multi-property name on by names of children; -1 in any other name.
 */
int prefixEnd(const QString &name)
{
    if (name.size() < 3 || !name.startsWith(QLatin1Char('{'))) {
        return -1;
    }
    const int end = name.lastIndexOf(QLatin1String("}."));
    return name.indexOf(QLatin1Char('}'), end + 1) == -1 ? end : -1;
}

bool isSymbolic(const QString &name)
{
    return name.startsWith(QLatin1Char(':'));
}

QString resolvedName(const QString &name)
{
    if (const ObjectMap *map = ObjectMap::self()) {
        return map->realName(name);
    }
    return isSymbolic(name) ? name.mid(1) : name;
}

/**
 * Where a search along a path of names begins, as in "{type='Dialog'}.button.icon",
 * whose first object has a name of its own, or in "main.form.button".
 */
struct Path
{
    explicit Path(const QString &name)
    {
        const int end = prefixEnd(name);
        hasPrefix = end != -1;
        children = (hasPrefix ? name.mid(end + 2) : normalizedHierarchicalName(name))
                       .split(QLatin1Char('.'));
        first = hasPrefix ? name.left(end + 1) : children.takeFirst();
    }

    bool hasPrefix;
    QString first;
    QStringList children;
};

/** Why @p name cannot be searched for; a name that leads on by children is not checked. */
QString searchMistake(const ObjectName &name)
{
    const QString text = name.qualifiedName();
    if (prefixEnd(text) != -1) {
        return QString();
    }
    // What is wrong within the braces of a name keeps the text of the parser.
    return isMultiPropertyName(text) ? name.errorMessage() : mistakeIn(name);
}

QString printable(const QString &name)
{
    return ObjectMap::self() ? ObjectMap::printableName(name) : name;
}

QString unmatchedText(const QMap<QString, QStringList> &unmatched)
{
    if (unmatched.isEmpty()) {
        return QString();
    }
    QString text = QStringLiteral(" Could not match properties:");
    for (auto it = unmatched.begin(); it != unmatched.end(); ++it) {
        text += QLatin1String("\n    ") + it->join(QLatin1Char(','))
            + QLatin1String(" for object name: '") + printable(it.key()) + QLatin1Char('\'');
    }
    return text;
}

QString pathText(const QString &name, const PathEnd &end)
{
    if (!end.resolved.isEmpty()) {
        return QLatin1String("\n    Could not find child '") + end.missing
            + QLatin1String("' under '") + end.resolved.join(QLatin1Char('.')) + QLatin1Char('\'');
    }
    return isSymbolic(name) ? QStringLiteral(" Object name not found in Object Map.") : QString();
}

} // namespace

// The product's licensing hooks in here; this edition covers everything.
bool InspectorPrivate::isEvaluationAllowed() const
{
    return true;
}

bool InspectorPrivate::isEditionAllowed(const SharedPtr<Object> &) const
{
    return true;
}

SharedPtr<Object> Inspector::findObject(const QString &name)
{
    return findObject(name, !isEventRecordingEnabled() && d->licEditions == 0);
}

SharedPtr<Object> Inspector::findObject(const QString &name, bool checkEdition)
{
    if (!d->isEvaluationAllowed()) {
        return {};
    }
    if (name.isEmpty()) {
        setError(QStringLiteral("Empty Object Name passed to findObject!"));
        return {};
    }
    if (d->implementation) {
        return d->implementation->findObject(name);
    }
    if (d->topLevelDelegates().empty()) {
        setError(QStringLiteral("Cannot find object '%1': no toolkit has registered an object "
                                "hierarchy")
                     .arg(name));
        return {};
    }
    if (d->isCached(name)) {
        return d->cachedObject;
    }
    const ObjectName realName(resolvedName(name));
    const QString mistake = searchMistake(realName);
    if (!mistake.isEmpty()) {
        setError(QLatin1String("Cannot find object with invalid object name: ") + mistake);
        return {};
    }
    return d->search(name, realName, checkEdition);
}

std::vector<NearMiss> Inspector::nearMisses() const
{
    return d->nearMisses;
}

bool InspectorPrivate::isCached(const QString &name) const
{
    return cacheEnabled && cachedObject && cachedObject->isValid() && name == cachedName;
}

SharedPtr<Object> InspectorPrivate::accept(const QString &name, const SharedPtr<Object> &found,
                                           bool checkEdition)
{
    if (checkEdition && !isEditionAllowed(found)) {
        return {};
    }
    if (cacheEnabled) {
        cachedName = name;
        cachedObject = found;
    }
    return found;
}

SharedPtr<Object> InspectorPrivate::search(const QString &name, const ObjectName &realName,
                                           bool checkEdition)
{
    SearchScope scope(realName);
    if (scope.isTooDeep()) {
        Inspector::self()->setError(
            QStringLiteral("Cannot find object '%1': more than %2 searches are nested")
                .arg(name, QString::number(SearchScope::maximumDepth)));
        return {};
    }
    if (scope.isOutermost()) {
        nearMisses.clear();
    }
    PathEnd end;
    if (const SharedPtr<Object> found = findByNameOrPath(realName, checkEdition, &end)) {
        return accept(name, found, checkEdition);
    }
    if (!Inspector::self()->isEventRecordingEnabled()) {
        if (scope.isToBeExplained()) {
            explain(scope, realName);
        }
        Inspector::self()->setError(missText(name, realName.qualifiedName(), end));
    }
    return {};
}

SharedPtr<Object> InspectorPrivate::findByNameOrPath(const ObjectName &realName, bool checkEdition,
                                                     PathEnd *end)
{
    const SharedPtr<Object> found = askDelegates(realName);
    const QString text = realName.qualifiedName();
    return found || isMultiPropertyName(text) ? found : searchPath(text, checkEdition, end);
}

SharedPtr<Object> InspectorPrivate::askDelegates(const ObjectName &name)
{
    SharedPtr<Object> found;
    askTopLevel([&](ObjectHierarchyDelegate *delegate) {
        found = delegate->objectByQualifiedName({}, name);
        return found || !isEvaluationAllowed();
    });
    return found;
}

SharedPtr<Object> InspectorPrivate::searchPath(const QString &name, bool checkEdition, PathEnd *end)
{
    const Path path(name);
    Inspector *const inspector = Inspector::self();
    SharedPtr<Object> object = path.hasPrefix ? inspector->findObject(path.first, checkEdition)
                                              : inspector->object(path.first, nullptr);
    if (object) {
        end->resolved << path.first;
    }
    for (auto child = path.children.begin(); object && child != path.children.end(); ++child) {
        object = object->childByName(*child);
        if (object) {
            end->resolved << *child;
        } else {
            end->missing = *child;
        }
    }
    return object;
}

QString InspectorPrivate::missText(const QString &name, const QString &realName,
                                   const PathEnd &end) const
{
    const QString reason =
        lastError.isEmpty() ? QStringLiteral(".") : QLatin1String(": ") + lastError;
    return QLatin1String("Object '") + name + QLatin1String("' not found") + reason
        + (isMultiPropertyName(realName) ? unmatchedText(unmatchedProperties)
                                         : pathText(name, end));
}

void InspectorPrivate::explain(SearchScope &scope, const ObjectName &name)
{
    const QString errorBefore = std::exchange(lastError, QString());
    const auto unmatchedBefore = std::exchange(unmatchedProperties, {});
    const std::shared_ptr<SearchNotes> notes = scope.startNotes();
    askDelegates(name);
    lastError = errorBefore;
    unmatchedProperties = unmatchedBefore;
    nearMisses = notes->nearMisses;
    for (auto it = notes->unmatched.cbegin(); it != notes->unmatched.cend(); ++it) {
        for (const QString &property : it.value()) {
            Inspector::self()->addUnmatchedProperty(it.key(), property);
        }
    }
}

} // namespace Vantrel
