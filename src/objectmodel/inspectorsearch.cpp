#include "objectmodel/inspector.h"

#include "objectmodel/delegates.h"
#include "objectmodel/inspector_p.h"
#include "objectmodel/objectmap.h"
#include "objectmodel/objectname.h"
#include "objectmodel/objectsearch_p.h"

namespace Vantrel {

namespace {

/** Where the search along a path of names came to. */
struct Path
{
    SharedPtr<Object> object;
    QStringList resolved;
    QString missing;
};

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

void followPath(Path &path, const QStringList &components)
{
    for (const QString &component : components) {
        SharedPtr<Object> next = path.object->childByName(component);
        if (!next) {
            path.missing = component;
            path.object.reset();
            return;
        }
        path.object = next;
        path.resolved << component;
    }
}

/** @p prefixEnd is that of @p name; a name without prefix begins with a top-level object. */
Path searchPath(const QString &name, int prefixEnd, bool checkEdition)
{
    Inspector *inspector = Inspector::self();
    const bool hasPrefix = prefixEnd != -1;
    QStringList components = hasPrefix ? name.mid(prefixEnd + 2).split(QLatin1Char('.'))
                                       : normalizedHierarchicalName(name).split(QLatin1Char('.'));
    const QString first = hasPrefix ? name.left(prefixEnd + 1) : components.takeFirst();
    Path path;
    path.object =
        hasPrefix ? inspector->findObject(first, checkEdition) : inspector->object(first, nullptr);
    if (path.object) {
        path.resolved << first;
        followPath(path, components);
    }
    return path;
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

QString pathText(const QString &name, const Path &path)
{
    if (!path.resolved.isEmpty()) {
        return QLatin1String("\n    Could not find child '") + path.missing
            + QLatin1String("' under '") + path.resolved.join(QLatin1Char('.')) + QLatin1Char('\'');
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
    const QString realName = resolvedName(name);
    if (d->topLevelDelegates().empty()) {
        return {};
    }
    if (d->isCached(name)) {
        return d->cachedObject;
    }
    const int end = prefixEnd(realName);
    const ObjectName objectName(realName);
    if (end == -1 && !objectName.isValid()) {
        setError(QLatin1String("Cannot find object with invalid object name: ")
                 + objectName.errorMessage());
        return {};
    }

    const bool isMultiProperty = isMultiPropertyName(realName);
    SearchScope scope(realName, d->lastError);
    scope.isExplainable = isMultiProperty;
    if (scope.isOutermost()) {
        d->forgetFailedSearch();
    }
    if (const SharedPtr<Object> found = d->askDelegates(objectName)) {
        return d->accept(name, found, checkEdition);
    }
    const Path path = isMultiProperty ? Path() : searchPath(realName, end, checkEdition);
    if (path.object) {
        return d->accept(name, path.object, checkEdition);
    }
    if (isEventRecordingEnabled()) {
        return {};
    }
    if (isMultiProperty && scope.isToBeExplained()) {
        d->explainFailure(scope, objectName);
    }
    QString text = QLatin1String("Object '") + name + QLatin1String("' not found");
    const QString earlier = scope.errorToRepeat(d->lastError);
    text += earlier.isEmpty() ? QStringLiteral(".") : QLatin1String(": ") + earlier;
    d->lastError.clear();
    text += isMultiProperty ? unmatchedText(d->unmatchedProperties) : pathText(name, path);
    setError(text);
    scope.failed(text);
    return {};
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

SharedPtr<Object> InspectorPrivate::askDelegates(const ObjectName &name)
{
    SharedPtr<Object> found;
    askTopLevel([&](ObjectHierarchyDelegate *delegate) {
        found = delegate->objectByQualifiedName({}, name);
        return found || !isEvaluationAllowed();
    });
    return found;
}

void InspectorPrivate::explainFailure(SearchScope &scope, const ObjectName &name)
{
    if (!scope.usedMatcher) {
        return;
    }
    scope.explaining = true;
    askDelegates(name);
    scope.explaining = false;
    reportedNames << scope.reportedNames;
    if (scope.isOfInterest()) {
        nearMisses = std::move(scope.nearMisses);
    }
}

void InspectorPrivate::forgetFailedSearch()
{
    nearMisses.clear();
    for (const QString &name : qAsConst(reportedNames)) {
        unmatchedProperties.remove(name);
    }
    reportedNames.clear();
}

} // namespace Vantrel
