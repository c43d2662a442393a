#ifndef VANTREL_OBJECTSEARCH_P_H
#define VANTREL_OBJECTSEARCH_P_H

#include "objectmodel/objectsearch.h"

namespace Vantrel {

/**
 * One search that is under way. It tells the matchers made during it whether
 * they have to take notes. Searches nest: a delegate may search for the
 * container of what it looks for.
 */
class SearchScope
{
public:
    explicit SearchScope(const QString &name);
    ~SearchScope();

    static SearchScope *current();

    bool isOutermost() const { return !m_outer; }
    const QString &name() const { return m_name; }
    /** Whether a caller who failed would want to hear of the candidates of this very name. */
    bool isOfInterest() const { return !m_outer || !isMultiPropertyName(m_outer->m_name); }

    bool usedMatcher = false;
    bool explaining = false;
    std::vector<NearMiss> nearMisses;
    /** Names for which unmatched properties were reported. */
    QStringList reportedNames;

private:
    Q_DISABLE_COPY(SearchScope)
    SearchScope *const m_outer;
    const QString m_name;
};

} // namespace Vantrel

#endif // VANTREL_OBJECTSEARCH_P_H
