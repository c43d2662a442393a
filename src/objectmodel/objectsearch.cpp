#include "objectmodel/objectsearch.h"

#include "objectmodel/class.h"
#include "objectmodel/inspector.h"
#include "objectmodel/objectnameparser_p.h"
#include "objectmodel/objectsearch_p.h"
#include "objectmodel/primitiveids.h"

#include <algorithm>

namespace Vantrel {

namespace {

constexpr std::size_t maximumNearMisses = 10;

SearchScope *innermost = nullptr;

/** A text that somebody may have meant: other case, or a part of the other. */
bool isClose(const NearMiss::Condition &condition)
{
    if (condition.held || condition.actual.isEmpty() || condition.wanted.isEmpty()) {
        return false;
    }
    return condition.actual.contains(condition.wanted, Qt::CaseInsensitive)
        || condition.wanted.contains(condition.actual, Qt::CaseInsensitive);
}

/** Conditions that hold count most, and almost held ones decide between equals. */
int nearness(const NearMiss &candidate)
{
    const auto &conditions = candidate.conditions;
    const auto close = std::count_if(conditions.begin(), conditions.end(), isClose);
    return candidate.numHeld * int(conditions.size() + 1) + int(close);
}

QStringList failedProperties(const NearMiss &candidate)
{
    QStringList names;
    for (const NearMiss::Condition &condition : candidate.conditions) {
        if (!condition.held) {
            names << condition.name;
        }
    }
    return names;
}

} // namespace

SearchScope::SearchScope(const QString &name, const QString &error)
    : m_outer(innermost), m_name(name), m_errorBefore(error)
{
    innermost = this;
}

SearchScope::~SearchScope()
{
    innermost = m_outer;
    if (m_outer && usedMatcher) {
        m_outer->usedMatcher = true;
    }
}

SearchScope *SearchScope::current()
{
    return innermost;
}

bool SearchScope::isUnderWay(const SearchScope *scope)
{
    const SearchScope *s = innermost;
    while (s && s != scope) {
        s = s->m_outer;
    }
    return s != nullptr;
}

struct ObjectMatcher::Notes
{
    SearchScope *scope;
    QString name;
    /** Best first, at most maximumNearMisses. */
    std::vector<NearMiss> best;
};

ObjectMatcher::ObjectMatcher(const ObjectName &name)
    : m_occurrence(name.occurrenceValue()), m_usable(name.isMultiProperty() && m_occurrence > 0)
{
    const auto properties = name.properties();
    for (auto it = properties.begin(); it != properties.end(); ++it) {
        if (it.key() != QLatin1String("occurrence")) {
            m_conditions.push_back({it.key(), it.key().toUtf8(), it.value()});
        }
    }
    if (SearchScope *scope = SearchScope::current()) {
        scope->usedMatcher = true;
        if (scope->explaining) {
            m_notes = new Notes{scope, name.qualifiedName(), {}};
        }
    }
}

ObjectMatcher::~ObjectMatcher()
{
    if (!m_notes) {
        return;
    }
    const std::unique_ptr<Notes> notes(m_notes);
    const bool isFound = m_occurrence > 0 && m_seen >= m_occurrence;
    if (isFound || !SearchScope::isUnderWay(notes->scope)) {
        return;
    }
    QStringList unmatched;
    if (!notes->best.empty()) {
        unmatched = failedProperties(notes->best.front());
    } else {
        unmatched = failedProperties(unchecked());
    }
    if (!unmatched.isEmpty()) {
        Inspector::self()->setUnmatchedProperties(notes->name, unmatched);
        notes->scope->reportedNames << notes->name;
    }
    if (qualifiedNamesEqual(notes->name, notes->scope->name())) {
        auto &all = notes->scope->nearMisses;
        std::move(notes->best.begin(), notes->best.end(), std::back_inserter(all));
        std::stable_sort(all.begin(), all.end(), [](const NearMiss &a, const NearMiss &b) {
            return nearness(a) > nearness(b);
        });
        all.resize(std::min(all.size(), maximumNearMisses));
    }
}

bool ObjectMatcher::offer(const SharedPtr<Object> &object)
{
    if (!object || object->isNull()) {
        return false;
    }
    // Held: reading a property may take the caller's handle away.
    const SharedPtr<Object> candidate = object;
    const auto holdsByReflection = [&candidate](const Condition &condition, QString *actual) {
        const Property *property = candidate->type()->property(condition.name);
        const SharedPtr<Object> value =
            property && property->isReadable() ? property->get(candidate) : nullptr;
        if (!value) {
            return false;
        }
        const bool isPrimitive = static_cast<unsigned>(value->type()->id()) < PrimitiveId::Void;
        const bool isName = condition.wanted.isObject() && !isPrimitive;
        return condition.holds(isName ? value->qualifiedName() : value->toString(), actual);
    };
    return offer(holdsByReflection, [&candidate] { return candidate; });
}

NearMiss ObjectMatcher::unchecked() const
{
    NearMiss result;
    for (const Condition &condition : m_conditions) {
        result.conditions.push_back({condition.name, operatorText(condition.wanted.matchingMode()),
                                     condition.wanted.stringValue(), QString(), false});
    }
    return result;
}

void ObjectMatcher::addOccurrence(NearMiss &candidate) const
{
    candidate.conditions.push_back({QStringLiteral("occurrence"), QStringLiteral("="),
                                    QString::number(m_occurrence), QString::number(m_seen), false});
}

bool ObjectMatcher::isWorthNoting(const NearMiss &candidate)
{
    const int near = nearness(candidate);
    return near > 0
        && (m_notes->best.size() < maximumNearMisses || near > nearness(m_notes->best.back()));
}

void ObjectMatcher::keep(NearMiss candidate)
{
    auto &best = m_notes->best;
    const int near = nearness(candidate);
    const auto place = std::find_if(best.begin(), best.end(),
                                    [near](const NearMiss &kept) { return nearness(kept) < near; });
    best.insert(place, std::move(candidate));
    best.resize(std::min(best.size(), maximumNearMisses));
}

} // namespace Vantrel
