#ifndef VANTREL_OBJECTSEARCH_P_H
#define VANTREL_OBJECTSEARCH_P_H

#include "objectmodel/objectsearch.h"

#include <QMap>
#include <QStringList>

#include <memory>

namespace Vantrel {

/** What matchers find out while a failed search is made once more to explain it. */
struct SearchNotes
{
    /** The name that was not found. */
    ObjectName name;
    /** Candidates for that very name, best first. */
    std::vector<NearMiss> nearMisses;
    /** Properties that did not match, by the name of the object. */
    QMap<QString, QStringList> unmatched;
};

/**
 * One search that is under way. Searches nest: a delegate may search for the
 * container of what it looks for. Only the outermost one that can be explained
 * is, and the searches in it take their notes then, so that an explanation costs
 * as much as the search, however deep it nests.
 */
class SearchScope
{
public:
    explicit SearchScope(const ObjectName &name);
    ~SearchScope();

    static SearchScope *current();

    bool isOutermost() const { return m_depth == 1; }
    bool isTooDeep() const { return m_depth > maximumDepth; }
    bool isToBeExplained() const { return m_hasConditions && m_usedMatcher && !isPartOfAnother(); }
    /** Makes the matchers from now on take notes, into what is returned. */
    std::shared_ptr<SearchNotes> startNotes();
    /** Where matchers take notes at present; null when they do not. */
    const std::shared_ptr<SearchNotes> &notes() const { return m_notes; }
    void setUsedMatcher();

    /** How many searches may be nested through delegates. */
    static constexpr int maximumDepth = 256;

private:
    Q_DISABLE_COPY(SearchScope)
    /** Whether a search around this one can be explained and covers this one then. */
    bool isPartOfAnother() const;

    SearchScope *m_outer;
    const ObjectName m_name;
    const bool m_hasConditions;
    const int m_depth;
    bool m_usedMatcher = false;
    std::shared_ptr<SearchNotes> m_notes;
};

} // namespace Vantrel

#endif // VANTREL_OBJECTSEARCH_P_H
