#include "objectmodel/pattern_p.h"

#include <algorithm>

namespace Vantrel {

namespace {

constexpr int maximumDepth = 500;
/** Compiling so many takes about 0.1 s. */
constexpr int maximumStates = 100000;
/** Some seconds for a candidate of 200 characters that almost matches, at worst. */
constexpr int maximumDetours = 10000;
/** Stands for no upper limit; counts are three digits long. */
constexpr int unlimited = 1000;

/** The automaton of a part of a pattern with all counts written out, in numbers. */
struct Cost
{
    double states = 0;
    /** From one state to the next. */
    double steps = 0;
    /** States with which a match of the part can begin, and end. */
    double first = 0;
    double last = 0;
    bool canBeEmpty = true;
};

const Cost oneCharacter{1, 0, 1, 1, false};

Cost followedBy(const Cost &a, const Cost &b)
{
    Cost result;
    result.states = a.states + b.states;
    result.steps = a.steps + b.steps + a.last * b.first;
    result.first = a.first + (a.canBeEmpty ? b.first : 0);
    result.last = b.last + (b.canBeEmpty ? a.last : 0);
    result.canBeEmpty = a.canBeEmpty && b.canBeEmpty;
    return result;
}

Cost either(const Cost &a, const Cost &b)
{
    return {a.states + b.states, a.steps + b.steps, a.first + b.first, a.last + b.last,
            a.canBeEmpty || b.canBeEmpty};
}

/** Where a copy can be empty, every copy before it leads to every one behind it. */
Cost repeated(const Cost &part, int minimum, int maximum)
{
    const int copies = maximum == unlimited ? std::max(minimum, 1) : maximum;
    const double pairs = part.canBeEmpty ? copies * (copies - 1.0) / 2 : std::max(copies - 1, 0);
    Cost result = part;
    result.states *= copies;
    result.steps = copies * part.steps + pairs * part.last * part.first;
    result.first *= part.canBeEmpty ? copies : 1;
    result.last *= part.canBeEmpty ? copies : copies - std::max(minimum, 1) + 1;
    result.canBeEmpty = part.canBeEmpty || minimum == 0;
    return result;
}

/** Reads a pattern as QRegExp does. Mistakes do not matter: what is invalid matches nothing. */
class CostReader
{
public:
    enum Counts { AsWritten, TakenForOne };

    CostReader(const QString &pattern, Counts counts) : m_pattern(pattern), m_counts(counts)
    {
        while (!isAtEnd() && !m_isTooDeep) {
            m_total = followedBy(m_total, alternatives());
            ++m_index; // a ")" without its "("
        }
    }

    bool isTooDeep() const { return m_isTooDeep; }
    const Cost &total() const { return m_total; }

private:
    bool isAtEnd() const { return m_index >= m_pattern.size(); }
    bool isAt(char c) const { return !isAtEnd() && m_pattern.at(m_index) == QLatin1Char(c); }
    bool take(char c)
    {
        const bool isThere = isAt(c);
        m_index += isThere;
        return isThere;
    }

    Cost alternatives();
    Cost sequence();
    Cost atom();
    Cost group();
    Cost withQuantifiers(Cost part);
    Cost withCount(const Cost &part);
    int number(int otherwise);

    const QString &m_pattern;
    const Counts m_counts;
    int m_index = 0;
    int m_depth = 0;
    bool m_isTooDeep = false;
    Cost m_total;
};

Cost CostReader::alternatives()
{
    Cost result = sequence();
    while (take('|')) {
        result = either(result, sequence());
    }
    return result;
}

Cost CostReader::sequence()
{
    Cost result;
    while (!isAtEnd() && !isAt('|') && !isAt(')') && !m_isTooDeep) {
        result = followedBy(result, withQuantifiers(atom()));
    }
    return result;
}

Cost CostReader::atom()
{
    if (isAt('[')) {
        m_index = endOfBracketExpression(m_pattern, m_index);
        return oneCharacter;
    }
    if (take('(')) {
        return group();
    }
    m_index += isAt('\\') ? 2 : 1;
    return oneCharacter;
}

Cost CostReader::group()
{
    if (take('?')) {
        ++m_index; // ":", "=" or "!"
    }
    m_isTooDeep = m_isTooDeep || m_depth == maximumDepth;
    if (m_isTooDeep) {
        return {};
    }
    ++m_depth;
    const Cost result = alternatives();
    --m_depth;
    take(')');
    return result;
}

Cost CostReader::withQuantifiers(Cost part)
{
    for (;;) {
        if (take('*') || take('?')) {
            part.canBeEmpty = true;
        } else if (take('{')) {
            part = withCount(part);
        } else if (!take('+')) {
            return part;
        }
    }
}

Cost CostReader::withCount(const Cost &part)
{
    const int minimum = number(0);
    const int maximum = take(',') ? number(unlimited) : minimum;
    take('}');
    return m_counts == AsWritten ? repeated(part, minimum, maximum) : part;
}

int CostReader::number(int otherwise)
{
    const int begin = m_index;
    while (!isAtEnd() && m_pattern.at(m_index).isDigit()) {
        ++m_index;
    }
    const int value = m_pattern.mid(begin, std::min(m_index - begin, 4)).toInt();
    return m_index == begin ? otherwise : std::min(value, unlimited);
}

} // namespace

QString patternProblem(const QString &pattern)
{
    const CostReader written(pattern, CostReader::AsWritten);
    if (written.isTooDeep()) {
        return QStringLiteral("it nests more than %1 groups").arg(maximumDepth);
    }
    // What is large without its counts, such as a long list of words, is not their fault.
    const CostReader plain(pattern, CostReader::TakenForOne);
    const double states = written.total().states - plain.total().states;
    const double steps = written.total().steps - plain.total().steps;
    const bool isTooMuch = states > maximumStates || steps - 2 * states > maximumDetours;
    return isTooMuch ? QStringLiteral("its counts multiply to too many possibilities") : QString();
}

int endOfBracketExpression(const QString &pattern, int begin)
{
    int i = begin + 1;
    for (const char skipped : {'^', ']'}) {
        if (i < pattern.size() && pattern.at(i) == QLatin1Char(skipped)) {
            ++i;
        }
    }
    while (i < pattern.size() && pattern.at(i) != QLatin1Char(']')) {
        i += pattern.at(i) == QLatin1Char('\\') ? 2 : 1;
    }
    return qMin(i + 1, pattern.size());
}

} // namespace Vantrel
