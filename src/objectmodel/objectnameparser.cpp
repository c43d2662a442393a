#include "objectmodel/objectnameparser_p.h"

#include <QVarLengthArray>

#include <vector>

namespace Vantrel {

namespace {

bool isBlank(QChar c)
{
    return c == QLatin1Char(' ') || c == QLatin1Char('\t');
}

/**
 * The states of one level of a name. Between two conditions all that a level
 * has to remember is where it began, so nesting costs one column per level, and
 * only the condition of the outermost level that a nested name belongs to is
 * kept while the nested name is read.
 */
class NameParser
{
public:
    NameParser(const QString &text, int *index, QString *error, NameVisitor *visitor)
        : m_text(text), m_index(*index), m_error(error), m_visitor(visitor)
    {}

    bool run();

private:
    using Buffer = QVarLengthArray<QChar, 64>;
    enum class State { Start, Between, Name, Value, Quoted };
    enum class Step { On, Done, Failed };
    struct Condition
    {
        Buffer name;
        PropertyValue::Modifiers mode = PropertyValue::Equals;
    };

    Step step(QChar c);
    Step start(QChar c);
    Step between(QChar c);
    Step name(QChar c);
    Step operatorWithEqualSign(PropertyValue::Modifiers mode);
    Step value(QChar c);
    Step quoted();
    Step open();
    Step close();
    void finishText();
    Step fail(const QString &message);
    Step unexpected(const char *expected);
    void reportEnd();

    int level() const { return int(m_opened.size()); }
    Condition &condition() { return level() == 1 ? m_outermost : m_inner; }

    const QString &m_text;
    int &m_index;
    QString *const m_error;
    NameVisitor *const m_visitor;
    State m_state = State::Start;
    std::vector<int> m_opened;
    Condition m_outermost;
    Condition m_inner;
    Buffer m_value;
};

bool NameParser::run()
{
    for (; m_index < m_text.size(); ++m_index) {
        const Step result = step(m_text.at(m_index));
        if (result != Step::On) {
            return result == Step::Done;
        }
    }
    reportEnd();
    return false;
}

NameParser::Step NameParser::step(QChar c)
{
    switch (m_state) {
    case State::Start:
        return start(c);
    case State::Between:
        return between(c);
    case State::Name:
        return name(c);
    case State::Value:
        return value(c);
    case State::Quoted:
        return quoted();
    }
    Q_UNREACHABLE();
}

NameParser::Step NameParser::start(QChar c)
{
    return c == QLatin1Char('{') ? open() : unexpected("{");
}

NameParser::Step NameParser::between(QChar c)
{
    if (isBlank(c)) {
        return Step::On;
    }
    if (c == QLatin1Char('}')) {
        return close();
    }
    condition().name.clear();
    condition().name.append(c);
    m_state = State::Name;
    return Step::On;
}

NameParser::Step NameParser::name(QChar c)
{
    if (c == QLatin1Char('=')) {
        condition().mode = PropertyValue::Equals;
        m_state = State::Value;
    } else if (c == QLatin1Char('~')) {
        return operatorWithEqualSign(PropertyValue::RegExp);
    } else if (c == QLatin1Char('?')) {
        return operatorWithEqualSign(PropertyValue::Wildcard);
    } else if (!isBlank(c)) {
        condition().name.append(c);
    }
    return Step::On;
}

NameParser::Step NameParser::operatorWithEqualSign(PropertyValue::Modifiers mode)
{
    if (m_index + 1 >= m_text.size() || m_text.at(m_index + 1) != QLatin1Char('=')) {
        return unexpected("=");
    }
    ++m_index;
    condition().mode = mode;
    m_state = State::Value;
    return Step::On;
}

NameParser::Step NameParser::value(QChar c)
{
    if (c == QLatin1Char('\'')) {
        m_value.clear();
        m_state = State::Quoted;
        return Step::On;
    }
    if (c == QLatin1Char('{')) {
        return open();
    }
    return isBlank(c) ? Step::On : unexpected("either ' or { or whitespace");
}

/** Takes all it can at once and leaves the index on the last character taken. */
NameParser::Step NameParser::quoted()
{
    const int begin = m_index;
    while (m_index < m_text.size()) {
        const QChar c = m_text.at(m_index);
        if (c == QLatin1Char('\'') || c == QLatin1Char('\\')) {
            break;
        }
        ++m_index;
    }
    m_value.append(m_text.constData() + begin, m_index - begin);
    if (m_index == m_text.size()) {
        --m_index;
        return Step::On;
    }
    if (m_text.at(m_index) == QLatin1Char('\'')) {
        finishText();
        return Step::On;
    }
    if (m_index + 1 == m_text.size()) {
        return fail(QStringLiteral("Object name %1 unexpectedly ends in backslash at column %2")
                        .arg(m_text, QString::number(m_index)));
    }
    m_value.append(m_text.at(++m_index));
    return Step::On;
}

void NameParser::finishText()
{
    const Condition &c = condition();
    m_visitor->visitText(level(), QStringView(c.name.constData(), c.name.size()), c.mode,
                         QStringView(m_value.constData(), m_value.size()));
    m_state = State::Between;
}

NameParser::Step NameParser::open()
{
    m_opened.push_back(m_index);
    m_state = State::Between;
    return Step::On;
}

NameParser::Step NameParser::close()
{
    const int begin = m_opened.back();
    m_opened.pop_back();
    if (m_opened.empty()) {
        return Step::Done;
    }
    if (level() == 1) {
        const Buffer &name = m_outermost.name;
        m_visitor->visitNested(QStringView(name.constData(), name.size()), m_outermost.mode,
                               QStringView(m_text).mid(begin, m_index - begin + 1));
    }
    return Step::On;
}

NameParser::Step NameParser::fail(const QString &message)
{
    if (m_error) {
        *m_error = message;
    }
    return Step::Failed;
}

NameParser::Step NameParser::unexpected(const char *expected)
{
    if (!m_error) {
        return Step::Failed;
    }
    return fail(
        QStringLiteral("Parse error while parsing '%1': at column %2: expected %3, got %4\n")
            .arg(m_text, QString::number(m_index + 1), QLatin1String(expected),
                 QString(m_text.at(m_index))));
}

/**
 * The level that ran out of text speaks only when nothing is in the error text
 * yet. When it kept silent, the level around it sees a nested name that ended
 * early without a reason and does replace what is there.
 */
void NameParser::reportEnd()
{
    if (!m_error) {
        return;
    }
    const QString end = QString::number(m_index);
    if (m_error->isEmpty()) {
        *m_error =
            QStringLiteral("Object name '%1' ended unexpectedly at column %2").arg(m_text, end);
    } else if (level() > 1) {
        *m_error = QStringLiteral("Unexpected end of object name: %1. Parsing a nested object name "
                                  "starting at column %2 ended at column %3 which is unexpected.")
                       .arg(m_text, QString::number(m_opened.back()), end);
    }
}

} // namespace

bool parseName(const QString &text, int *index, QString *error, NameVisitor *visitor)
{
    Q_ASSERT(index);
    *index = qMax(*index, 0);
    return NameParser(text, index, error, visitor).run();
}

} // namespace Vantrel
