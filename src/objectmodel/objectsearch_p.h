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
    /** @p error is the last error before the search. */
    SearchScope(const QString &name, const QString &error);
    ~SearchScope();

    static SearchScope *current();
    static bool isUnderWay(const SearchScope *scope);

    bool isOutermost() const { return !m_outer; }
    /**
     * A search within another one is explained when that one is, and not
     * before: to do it every time would double the work with each level.
     */
    bool isToBeExplained() const
    {
        return !m_outer || !m_outer->isExplainable || m_outer->explaining;
    }
    const QString &name() const { return m_name; }
    /** Whether a caller who failed would want to hear of the candidates of this very name. */
    bool isOfInterest() const { return !m_outer || !isMultiPropertyName(m_outer->m_name); }

    /**
     * What a message about this search says of the last error. A delegate that
     * searches for the same container with each candidate fails as often, and
     * the error of the one time is no reason for the next.
     */
    QString errorToRepeat(const QString &lastError) const
    {
        const bool isRepeated =
            m_outer && !lastError.isEmpty() && lastError == m_outer->m_nestedError;
        return isRepeated ? m_outer->m_errorBefore : lastError;
    }
    void failed(const QString &error)
    {
        if (m_outer) {
            m_outer->m_nestedError = error;
        }
    }

    /** Whether the name has conditions that may be found not to hold. */
    bool isExplainable = false;
    bool usedMatcher = false;
    bool explaining = false;
    std::vector<NearMiss> nearMisses;
    /** Names for which unmatched properties were reported. */
    QStringList reportedNames;

private:
    Q_DISABLE_COPY(SearchScope)
    SearchScope *const m_outer;
    const QString m_name;
    const QString m_errorBefore;
    /** The error of the last search within this one that failed. */
    QString m_nestedError;
};

} // namespace Vantrel

#endif // VANTREL_OBJECTSEARCH_P_H
