#ifndef VANTREL_PATTERN_P_H
#define VANTREL_PATTERN_P_H

#include <QString>

namespace Vantrel {

/**
 * Why a regular expression must not be compiled; empty when it may be, be it
 * valid or not. Compiling recurses at each "(" and writes out everything that
 * has a count, which for counts within counts takes all time and memory.
 */
QString patternProblem(const QString &pattern);

/** Index after the bracket expression that begins at @p begin. */
int endOfBracketExpression(const QString &pattern, int begin);

} // namespace Vantrel

#endif // VANTREL_PATTERN_P_H
