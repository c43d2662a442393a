#include "objectmodel/objectsearch.h"

#include "objectmodel/class.h"
#include "objectmodel/delegates.h"
#include "objectmodel/inspector.h"
#include "objectmodel/objectmap.h"
#include "objectmodel/objectnameparser_p.h"
#include "objectmodel/objectsearch_p.h"
#include "objectmodel/primitiveids.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <numeric>

namespace Vantrel {

namespace {

constexpr std::size_t maximumNearMisses = 10;

SearchScope *innermost = nullptr;

/** Longer texts are not compared letter by letter. */
constexpr int maximumTypoLength = 40;
constexpr int maximumTypos = 2;

/** Levenshtein's distance: how many letters have to be changed, added or left out. */
int editDistance(const QString &a, const QString &b)
{
    std::array<int, maximumTypoLength + 1> row;
    std::iota(row.begin(), row.end(), 0);
    for (int i = 1; i <= a.size(); ++i) {
        int diagonal = row[0];
        row[0] = i;
        for (int k = 1; k <= b.size(); ++k) {
            const int changed = diagonal + (a.at(i - 1) != b.at(k - 1));
            diagonal = row[k];
            row[k] = std::min({changed, row[k] + 1, row[k - 1] + 1});
        }
    }
    return row[b.size()];
}

bool isTypo(const QString &a, const QString &b)
{
    return std::max(a.size(), b.size()) <= maximumTypoLength
        && std::min(a.size(), b.size()) > maximumTypos
        && std::abs(a.size() - b.size()) <= maximumTypos && editDistance(a, b) <= maximumTypos;
}

/** A text that somebody may have meant: mistyped, in other case, or a part of the other. */
bool isClose(const NearMiss::Condition &condition)
{
    if (condition.held || condition.actual.isEmpty() || condition.wanted.isEmpty()) {
        return false;
    }
    return condition.actual.contains(condition.wanted, Qt::CaseInsensitive)
        || condition.wanted.contains(condition.actual, Qt::CaseInsensitive)
        || isTypo(condition.actual, condition.wanted);
}

/** What many objects have by chance, such as "true" or "1", tells little. */
bool isSpecific(const NearMiss::Condition &condition)
{
    bool isNumber = false;
    condition.wanted.toDouble(&isNumber);
    return condition.held && !isNumber && condition.wanted != QLatin1String("true")
        && condition.wanted != QLatin1String("false");
}

/** Conditions that hold count most; between equals, telling ones and then almost held ones. */
int nearness(const NearMiss &candidate)
{
    const auto &conditions = candidate.conditions;
    const int base = int(conditions.size()) + 1;
    const auto specific = std::count_if(conditions.begin(), conditions.end(), isSpecific);
    const auto close = std::count_if(conditions.begin(), conditions.end(), isClose);
    return (candidate.numHeld * base + int(specific)) * base + int(close);
}

/** Symbolic names can refer to each other in a circle. */
constexpr int maximumReferences = 32;

/** What a nested or symbolic name stands for; the empty name for a symbol that is not in the map.
 */
ObjectName referredName(const QString &text)
{
    if (!text.startsWith(QLatin1Char(':'))) {
        return ObjectName(text);
    }
    const ObjectMap *map = ObjectMap::self();
    return map ? map->symbolicNames().value(text) : ObjectName();
}

bool isPrimitive(const SharedPtr<Object> &value)
{
    return static_cast<unsigned>(value->type()->id()) < PrimitiveId::Void;
}

/** Whether a text that is empty is one. */
bool hasText(const SharedPtr<Object> &value)
{
    const auto *delegate = DelegateFactory::self()->find<ConversionDelegate>(value->type());
    if (delegate && (delegate->capabilities() & ConversionDelegate::StringCapability)) {
        return true;
    }
    const Class *text = Inspector::self()->type(PrimitiveId::Char);
    return text
        && value->type()->canConvertToTolerant(text, value->objectAttribute().isPointer(), true,
                                               nullptr);
}

/** The key of the value of an enum; null when it has none. */
QString keyOf(const Property &property, const SharedPtr<Object> &value)
{
    const Enum *type = property.argument().enumType();
    const int number = type ? value->toInteger() : 0;
    for (int i = 0; type && i < type->count(); ++i) {
        if (type->value(i) == number) {
            return type->key(i);
        }
    }
    return QString();
}

bool holdsForText(const Property &property, const SharedPtr<Object> &value,
                  const PropertyValue &wanted, QString *actual)
{
    const QString text = value->toString();
    if (text.isEmpty() && !isPrimitive(value) && !hasText(value)) {
        return false;
    }
    const QString key = keyOf(property, value);
    const QString shown = key.isEmpty() ? text : key;
    if (actual) {
        *actual = shown.isNull() ? QLatin1String("") : shown;
    }
    return wanted.matches(text) || (!key.isEmpty() && wanted.matches(key));
}

bool meetsConditions(const SharedPtr<Object> &object, const ObjectName &name, int depth);

/** Whether @p object is the one that @p wanted names, or is as the name says. */
bool isMeant(const SharedPtr<Object> &object, const PropertyValue &wanted, QString *actual,
             int depth)
{
    if (!object || object->isNull()) {
        return false;
    }
    const QString name = object->qualifiedName();
    if (actual) {
        *actual = name.isNull() ? QLatin1String("") : name;
    }
    return wanted.matches(name)
        || (wanted.matchingMode() == PropertyValue::Equals
            && meetsConditions(object, referredName(wanted.stringValue()), depth + 1));
}

/** A property without a value meets no condition, not even on an empty text. */
bool holdsForProperty(const SharedPtr<Object> &object, const QString &name,
                      const PropertyValue &wanted, QString *actual, int depth)
{
    const Property *property = object->type()->property(name);
    const SharedPtr<Object> value =
        property && property->isReadable() ? property->get(object) : nullptr;
    if (!value || value->isNull()) {
        return false;
    }
    const bool isReference = wanted.isObject() || wanted.stringValue().startsWith(QLatin1Char(':'));
    return isReference && !isPrimitive(value) ? isMeant(value, wanted, actual, depth)
                                              : holdsForText(*property, value, wanted, actual);
}

/** An object by itself is the first of those that are like it. */
bool meetsConditions(const SharedPtr<Object> &object, const ObjectName &name, int depth)
{
    if (depth > maximumReferences || !name.isMultiProperty() || name.occurrenceValue() != 1) {
        return false;
    }
    const auto conditions = name.properties();
    return std::all_of(conditions.keyValueBegin(), conditions.keyValueEnd(), [&](const auto &c) {
        return c.first == QLatin1String("occurrence")
            || holdsForProperty(object, c.first, c.second, nullptr, depth);
    });
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

SearchScope::SearchScope(const ObjectName &name)
    : m_outer(innermost), m_name(name), m_hasConditions(isMultiPropertyName(name.qualifiedName())),
      m_depth(m_outer ? m_outer->m_depth + 1 : 1)
{
    if (m_outer) {
        m_notes = m_outer->m_notes;
    }
    innermost = this;
}

/** A script runs on a stack of its own, so the innermost search need not be the first to end. */
SearchScope::~SearchScope()
{
    SearchScope **link = &innermost;
    while (*link != this) {
        link = &(*link)->m_outer;
    }
    *link = m_outer;
}

SearchScope *SearchScope::current()
{
    return innermost;
}

bool SearchScope::isPartOfAnother() const
{
    const SearchScope *outer = m_outer;
    while (outer && !outer->m_hasConditions) {
        outer = outer->m_outer;
    }
    return outer != nullptr;
}

std::shared_ptr<SearchNotes> SearchScope::startNotes()
{
    m_notes = std::make_shared<SearchNotes>();
    m_notes->name = m_name;
    return m_notes;
}

void SearchScope::setUsedMatcher()
{
    for (SearchScope *scope = this; scope; scope = scope->m_outer) {
        scope->m_usedMatcher = true;
    }
}

struct ObjectMatcher::Notes
{
    const std::shared_ptr<SearchNotes> search;
    const ObjectName name;
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
        scope->setUsedMatcher();
        if (scope->notes()) {
            m_notes.reset(new Notes{scope->notes(), name, {}});
        }
    }
}

ObjectMatcher::~ObjectMatcher()
{
    const bool isFound = m_occurrence > 0 && m_seen >= m_occurrence;
    if (m_notes && !isFound) {
        report();
    }
}

void ObjectMatcher::report()
{
    const auto &best = m_notes->best;
    SearchNotes &search = *m_notes->search;
    QStringList &unmatched = search.unmatched[m_notes->name.qualifiedName()];
    unmatched << failedProperties(best.empty() ? unchecked() : best.front());
    unmatched.removeDuplicates();
    if (m_notes->name == search.name) {
        auto &all = search.nearMisses;
        std::copy(best.begin(), best.end(), std::back_inserter(all));
        std::stable_sort(all.begin(), all.end(), [](const NearMiss &a, const NearMiss &b) {
            return nearness(a) > nearness(b);
        });
        all.resize(std::min(all.size(), maximumNearMisses));
    }
}

bool ObjectMatcher::Condition::holds(const SharedPtr<Object> &object, QString *actual) const
{
    return isMeant(object, wanted, actual, 0);
}

bool ObjectMatcher::offer(const SharedPtr<Object> &object)
{
    if (!object || object->isNull()) {
        return false;
    }
    // Held: reading a property may take the caller's handle away.
    const SharedPtr<Object> candidate = object;
    const auto holdsByReflection = [&candidate](const Condition &condition, QString *actual) {
        return holdsForProperty(candidate, condition.name, condition.wanted, actual, 0);
    };
    return offer(holdsByReflection, [&candidate] { return candidate; });
}

bool objectMatches(const SharedPtr<Object> &object, const ObjectName &name)
{
    const ObjectName real = referredName(name.qualifiedName());
    return object && !object->isNull()
        && (ObjectName(object->qualifiedName()) == real || meetsConditions(object, real, 0));
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
