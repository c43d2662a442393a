#include "objectmodel/inspector.h"
#include "objectmodel/objectmap.h"
#include "objectmodel/objectname.h"

#include <gtest/gtest.h>

#include <QThread>

#include <functional>
#include <memory>
#include <ostream>
#include <random>
#include <tuple>
#include <utility>
#include <vector>

// Found by the test framework, which has to be able to print what differs.
static void PrintTo(const QString &text, std::ostream *stream)
{
    *stream << '"' << text.toStdString() << '"';
}

using namespace Vantrel;

namespace {

using Properties = QMap<QString, PropertyValue>;

QString u(const char *text)
{
    return QString::fromUtf8(text);
}

QString errorOf(const QString &text)
{
    QString error;
    EXPECT_TRUE(parseNameByProperties(text, &error).isEmpty());
    return error;
}

/** The grammar written as one recursive function, which is what the parser must be equal to. */
struct ReferenceParser
{
    enum State { Start, Between, Name, Value, Quoted };

    bool parse(Properties *properties, bool *hasReported)
    {
        QString name;
        QString value;
        auto mode = PropertyValue::Equals;
        State state = Start;
        for (; index < text.size(); ++index) {
            const QChar c = text.at(index);
            const bool isBlank = c == ' ' || c == '\t';
            if (state == Start) {
                if (c != '{') {
                    return unexpected("{", hasReported);
                }
                state = Between;
            } else if (state == Between && c == '}') {
                return true;
            } else if (state == Between) {
                name = isBlank ? QString() : QString(c);
                state = isBlank ? Between : Name;
            } else if (state == Name && (c == '=' || c == '~' || c == '?')) {
                if (c != '=' && text.mid(index + 1, 1) != "=") {
                    return unexpected("=", hasReported);
                }
                index += c == '=' ? 0 : 1;
                mode = c == '=' ? PropertyValue::Equals
                    : c == '~'  ? PropertyValue::RegExp
                                : PropertyValue::Wildcard;
                state = Value;
            } else if (state == Name) {
                name += isBlank ? QString() : QString(c);
            } else if (state == Value && c == '\'') {
                value.clear();
                state = Quoted;
            } else if (state == Value && c == '{') {
                const int begin = index;
                Properties ignored;
                bool nestedReported = false;
                if (!parse(&ignored, &nestedReported)) {
                    if (!nestedReported) {
                        report(QString("Unexpected end of object name: %1. Parsing a nested object "
                                       "name starting at column %2 ended at column %3 which is "
                                       "unexpected.")
                                   .arg(text, QString::number(begin), QString::number(index)));
                    }
                    *hasReported = true;
                    return false;
                }
                (*properties)[name] =
                    PropertyValue(text.mid(begin, index - begin + 1), mode, PropertyValue::Object);
                state = Between;
            } else if (state == Value && !isBlank) {
                return unexpected("either ' or { or whitespace", hasReported);
            } else if (state == Quoted && c == '\'') {
                (*properties)[name] = PropertyValue(value, mode);
                state = Between;
            } else if (state == Quoted && c == '\\' && index == text.size() - 1) {
                *hasReported = true;
                return report(QString("Object name %1 unexpectedly ends in backslash at column %2")
                                  .arg(text, QString::number(index)));
            } else if (state == Quoted) {
                value += c == '\\' ? text.at(++index) : c;
            }
        }
        if (error && error->isEmpty()) {
            *hasReported = true;
            report(QString("Object name '%1' ended unexpectedly at column %2")
                       .arg(text, QString::number(index)));
        }
        return false;
    }

    bool unexpected(const char *expected, bool *hasReported)
    {
        *hasReported = true;
        return report(QString("Parse error while parsing '%1': at column %2: expected %3, got %4\n")
                          .arg(text, QString::number(index + 1), expected, text.mid(index, 1)));
    }

    bool report(const QString &message)
    {
        if (error) {
            *error = message;
        }
        return false;
    }

    QString text;
    QString *error = nullptr;
    int index = 0;
};

/** Short texts of pieces that keep the parser busy for a while. */
QString randomName(std::mt19937 *random)
{
    static const char *const pieces[] = {"{",  "}",  "=", "'", "\"", "~",   "?",    " ",
                                         "\t", "\\", "a", "b", "a=", "{a=", "b~='", "{a?='b'}"};
    QString text = (*random)() % 4 ? "{" : "";
    for (auto i = (*random)() % 12; i > 0; --i) {
        text += pieces[(*random)() % std::size(pieces)];
    }
    return (*random)() % 2 ? text + '}' : text;
}

} // namespace

TEST(ObjectNameParser, ReportsEachMistakeWithItsColumn)
{
    const QString parseError = "Parse error while parsing '@': at column %1: expected %2, got %3\n";
    const auto unexpected = [&](int column, const char *expected, const char *got) {
        return parseError.arg(QString::number(column), expected, u(got));
    };
    const auto noValue = [&](int column, const char *got) {
        return unexpected(column, "either ' or { or whitespace", got);
    };
    const auto ended = [&](int column) {
        return QString("Object name '@' ended unexpectedly at column %1").arg(column);
    };
    const std::tuple<const char *, const char *, int, int, QString> rows[] = {
        {"blank before the name", " {}", 0, 0, unexpected(1, "{", " ")},
        {"operator without =", "{a~'x'}", 0, 2, unexpected(3, "=", "~")},
        {"operator at the end", "{a?", 0, 2, unexpected(3, "=", "?")},
        {"bare value", "{a=x}", 0, 3, noValue(4, "x")},
        {"no-break space is no blank", "{a=\u00A0'x'}", 0, 3, noValue(4, "\u00A0")},
        {"placeholders in the text", "{%1=%2}", 0, 4, noValue(5, "%")},
        {"columns count UTF-16 units", "{\U0001F600=x}", 0, 4, noValue(5, "x")},
        {"backslash at the end", "{a='x\\", 0, 5,
         "Object name @ unexpectedly ends in backslash at column 5"},
        {"end in a quoted value", "{a='1}", 0, 6, ended(6)},
        {"start after the end", "{}", 5, 5, ended(5)},
        {"start inside", "x{a='1'}y", 1, 7, ""},
        {"start below 0", "{}", -1, 1, ""},
    };
    for (const auto &[what, text, begin, end, expectedError] : rows) {
        SCOPED_TRACE(what);
        QString error;
        int index = begin;
        const Properties properties = parseNameByProperties(u(text), &index, &error);
        EXPECT_EQ(QString(expectedError).replace('@', u(text)), error);
        EXPECT_EQ(end, index);
        EXPECT_TRUE(error.isEmpty() || properties.isEmpty());
    }
}

TEST(ObjectNameParser, TakesOneWholeNameWithWhiteSpaceAround)
{
    EXPECT_EQ(u("Not a multi-property string: %1 }"), errorOf(" %1 } "));
    EXPECT_EQ(u("Not a multi-property string: {a='1'"), errorOf("{a='1'"));
    EXPECT_EQ(u("Error parsing object name  {a='%1'}{b='2'}  (trimmed: {a='%1'}{b='2'}). "
                "Parsed 7 characters, but name still has 7 more to parse"),
              errorOf(" {a='%1'}{b='2'} "));
    QString error = "kept";
    EXPECT_EQ(u("1"), parseNameByProperties(" {a='1'} ", &error).value("a").stringValue());
    EXPECT_TRUE(parseNameByProperties("{}{}", &error).isEmpty());
    EXPECT_EQ(u("kept"), error);
    EXPECT_FALSE(isMultiPropertyName(" {a='1'} "));
    EXPECT_FALSE(isMultiPropertyName("{"));
}

TEST(ObjectNameParser, PrintsWhatItReadInCanonicalForm)
{
    const std::pair<const char *, const char *> rows[] = {
        {"{ b='2'   a = '1'}", "{a='1' b='2'}"},
        {"{a='1' a='2'}", "{a='2'}"},
        {"{win dow='x'}", "{window='x'}"},
        {"{a='it\\'s' b='x\\\\y' c='\\n'}", "{a='it\\'s' b='x\\\\y' c='n'}"},
        {"{text?='O*'\toccurrence='2' type~=\t'B.*'}", "{occurrence='2' text?='O*' type~='B.*'}"},
        {"{container = { type='Dialog' } text='OK'}", "{container={ type='Dialog' } text='OK'}"},
        {"{a~={b={c='}\\''}}}", "{a~={b={c='}\\''}}}"},
    };
    for (const auto &[text, printed] : rows) {
        SCOPED_TRACE(text);
        QString error;
        const Properties properties = parseNameByProperties(text, &error);
        EXPECT_EQ(u(printed), qualifiedNameFromProperties(properties));
        EXPECT_EQ(properties, parseNameByProperties(printed, &error));
        EXPECT_EQ(QString(), error);
    }
    const PropertyValue nested = parseNameByProperties("{c={type='Dialog'}}").value("c");
    EXPECT_TRUE(nested.isObject());
    EXPECT_EQ(u("{type='Dialog'}"), nested.stringValue());
}

TEST(ObjectNameParser, EqualsTheRecursiveGrammarOnRandomTexts)
{
    std::mt19937 random(1);
    int numGood = 0;
    for (int i = 0; i < 60000 && !HasFailure(); ++i) {
        const QString text = randomName(&random);
        for (const char *before : {"", "stale", static_cast<const char *>(nullptr)}) {
            QString wanted = before;
            QString actual = before;
            ReferenceParser reference{text, before ? &wanted : nullptr};
            Properties properties;
            bool hasReported = false;
            const bool isGood = reference.parse(&properties, &hasReported);
            int index = 0;
            const Properties parsed =
                parseNameByProperties(text, &index, before ? &actual : nullptr);
            ASSERT_EQ(isGood ? properties : Properties(), parsed) << text.toStdString();
            ASSERT_EQ(reference.index, index) << text.toStdString();
            ASSERT_EQ(wanted, actual) << text.toStdString();
            for (auto it = parsed.cbegin(); it != parsed.cend(); ++it) {
                ASSERT_EQ(properties[it.key()].type(), it->type()) << text.toStdString();
            }
            numGood += isGood;
        }
    }
    EXPECT_GT(numGood, 3000); // the texts are not all rubbish
}

TEST(ObjectNameParser, NestsDeeperThanTheStackAllows)
{
    const int depth = 200000;
    const QString deep = QString("{a=").repeated(depth) + "{}" + QString('}').repeated(depth);
    std::unique_ptr<QThread> thread(QThread::create([&] {
        QString error;
        EXPECT_EQ(deep.mid(3, deep.size() - 4),
                  parseNameByProperties(deep, &error).value("a").stringValue());
        EXPECT_EQ(QString(), error);
        EXPECT_TRUE(parseNameByProperties(deep.left(depth * 3) + '}', &error).isEmpty());
        EXPECT_TRUE(
            error.endsWith(QString("column %1: expected either ' or { or whitespace, got }\n")
                               .arg(depth * 3 + 1)));
        EXPECT_FALSE(ObjectName(deep) < ObjectName(deep));
        for (const char *group : {"(", "[)](", "))(("}) {
            const QString pattern = QString(group).repeated(100000);
            EXPECT_FALSE(PropertyValue(pattern, PropertyValue::RegExp).matches("("));
        }
    }));
    thread->setStackSize(1 << 20);
    thread->start();
    thread->wait();
}

TEST(PropertyValue, TurnsWildcardsIntoRegularExpressions)
{
    const std::pair<const char *, const char *> rows[] = {
        {"a*b?c", "a.*b.c"},
        {"\\*\\?\\[\\]", "\\*\\?\\[\\]"},
        {"$()+.^{}|", "\\$\\(\\)\\+\\.\\^\\{\\}\\|"},
        {"[a-z]*", "[a-z].*"},
        {"[^]x]?", "[^]x]."},
        {"[]x].", "[]x]\\."},
        {"[\\]*]*", "[\\]*].*"},
        {"[a*", "[a*"},
        {"[\\", "[\\"},
        {"a]b", "a]b"},
        {"\\", "\\\\"},
        {"\\\\", "\\\\\\\\"},
        {"\\a", "\\\\a"},
        {"\\\\a*", "\\\\\\\\a.*"},
        {"", ""},
    };
    for (const auto &[wildcard, regExp] : rows) {
        EXPECT_EQ(u(regExp), PropertyValue::wildcardToRegExp(wildcard)) << wildcard;
    }
}

TEST(PropertyValue, MatchesTextsPatternsAndNames)
{
    ObjectMap map(false);
    map.add(ObjectName("{type='Dialog' text='A'}"), ":Dialog");
    map.add(ObjectName("main.dialog"), ":Main");
    const std::tuple<const char *, const char *, const char *, bool> rows[] = {
        {"equal text", "a='OK'", "OK", true},
        {"case matters", "a='OK'", "ok", false},
        {"the whole text counts", "a='OK'", "OK ", false},
        {"regular expression is a search", "a~='O.'", "Not OK.", true},
        {"regular expression with anchors", "a~='^OK$'", "OKs", false},
        {"broken regular expression", "a~='('", "(", false},
        {"wildcard is a search", "a?='O*'", "Cancel OK button", true},
        {"dot is no wildcard", "a?='a.c'", "abc", false},
        {"nested name as a pattern", "a~={b='1'}", "{b='1'}", false},
        {"respelled nested name", "a={b='1' c='2'}", "{c='2'  b='1'}", true},
        {"nested name and symbol", "a={text='A' type='Dialog'}", ":Dialog", true},
        {"symbol and its respelled real name", "a=':Dialog'", "{text='A' type='Dialog'}", true},
        {"symbol and hierarchical real name", "a=':Main'", "main.dialog", false},
        {"unknown symbol", "a=':None'", "{}", false},
        {"unknown symbol and its own text", "a=':None'", ":None", true},
        {"text against a symbol", "a='Dialog'", ":Dialog", false},
    };
    for (const auto &[what, condition, candidate, matches] : rows) {
        const QString name = '{' + u(condition) + '}';
        const PropertyValue value = ObjectName(name).property("a");
        EXPECT_EQ(matches, value.matches(candidate)) << what;
        EXPECT_EQ(matches, PropertyValue(value).matches(candidate)) << what;
    }
}

TEST(PropertyValue, RefusesPatternsThatMatchingCannotBear)
{
    const struct
    {
        const char *what;
        const char *pattern;
        bool isRefused;
    } rows[] = {
        {"counts in counts", "((a{999}){999}){9}", true},
        {"no upper limit", "((a{999,}){99,}){2}", true},
        {"anything between", "(a?){999}|b", true},
        {"options in options", "((?:[^]a]{0,30}\\)){30})", false},
        {"many options in options", "(([^]a]{0,99}){99})", true},
        {"a group that needs a comma", "^(\\w{0,99},){99}$", false},
        {"one large count", ".{0,999}x", false},
        {"no counts but braces", "([{9}a]\\{9\\}){999}", false},
        {"a long list", nullptr, false},
        {"too many groups", "((((", true},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.what);
        QString pattern =
            row.pattern ? u(row.pattern) : QString("word|").repeated(20000) + "(a|b){2}";
        pattern.replace("((((", QString("(").repeated(501));
        Inspector::self()->lastError();
        EXPECT_FALSE(PropertyValue(pattern, PropertyValue::RegExp).matches("{}"));
        EXPECT_EQ(row.isRefused,
                  Inspector::self()->lastError().startsWith("Cannot match the pattern '" + pattern
                                                            + "': it"));
    }
    EXPECT_FALSE(PropertyValue("a", PropertyValue::Modifiers(3)).matches("a")) << "no such mode";
}

TEST(PropertyValue, MatchesAsWithAnEmptyMapWhenThereIsNone)
{
    ObjectMap(false); // was the current map for a moment
    ASSERT_EQ(nullptr, ObjectMap::self());
    EXPECT_FALSE(PropertyValue(":Dialog").matches("{}"));
    const PropertyValue nested("{a='1'}", PropertyValue::Equals, PropertyValue::Object);
    EXPECT_TRUE(nested.matches(":{a = '1'}"));
    EXPECT_FALSE(nested.matches("a"));
}

TEST(ObjectName, TellsWhatIsWrongWithATextWhenAsked)
{
    const std::tuple<const char *, bool, const char *> rows[] = {
        {"main.dialog", false, ""},
        {"{}", true, ""},
        {"{a='1'}", true, ""},
        {"", false, "Empty string is not a valid object name."},
        {"{a='1'} ", false, "Hierarchical names must not start with '{' or end in '}': {a='1'} "},
        {"a%1}", false, "Hierarchical names must not start with '{' or end in '}': a%1}"},
        {"{a='1'}{b='2'}", false,
         "Error parsing object name {a='1'}{b='2'} (trimmed: {a='1'}{b='2'}). Parsed 6 characters, "
         "but name still has 7 more to parse"},
    };
    for (const auto &[text, isMultiProperty, error] : rows) {
        SCOPED_TRACE(text);
        ObjectName name(u(text));
        EXPECT_EQ(isMultiProperty, name.isMultiProperty());
        EXPECT_EQ(u(error), name.errorMessage());
        name.setProperty("b", PropertyValue("2"));
        EXPECT_EQ(u(error), name.errorMessage());
        EXPECT_EQ(u("2"), parseNameByProperties(name.qualifiedName()).value("b").stringValue());
    }
    EXPECT_TRUE(ObjectName().isValid());
}

TEST(ObjectName, TellsPeopleWhatIsMissingAndWhere)
{
    const QString ended = "Object name '@' ended unexpectedly at column %1: %2 missing";
    const std::pair<const char *, QString> rows[] = {
        {"{a='1' b={c='2'", ended.arg(15).arg("'}'")},
        {"{a='1", ended.arg(5).arg("a closing quote and '}'")},
        {"{a~=", ended.arg(4).arg("a value and '}'")},
        {"{a", ended.arg(2).arg("an operator, a value and '}'")},
        {"{a='1'} ", "Object name '@' is complete at column 7, but more text follows"},
        {"{a=x",
         "Parse error while parsing '@': at column 4: expected either ' or { or whitespace, got x"},
        {"{a=x}",
         "Parse error while parsing '@': at column 4: expected either ' or { or whitespace, got x"},
        {"a}", "Hierarchical names must not start with '{' or end in '}': @"},
        {"{a='1'}", ""},
    };
    for (auto [text, mistake] : rows) {
        EXPECT_EQ(mistake.replace('@', u(text)), mistakeIn(ObjectName(u(text))));
    }
}

TEST(ObjectName, ConvertsBetweenTextAndPropertiesWhenNeeded)
{
    ObjectName name("{b='2'  a='1'}");
    const ObjectName copy = name;
    EXPECT_EQ(u("2"), name.property("b").stringValue());
    EXPECT_EQ(u("{b='2'  a='1'}"), name.qualifiedName());
    name.removeProperty("none");
    EXPECT_EQ(u("{a='1' b='2'}"), name.qualifiedName());
    name.setProperty("c", PropertyValue("{}", PropertyValue::RegExp, PropertyValue::Object));
    EXPECT_EQ(u("{a='1' b='2' c~={}}"), name.qualifiedName());
    EXPECT_EQ(u("{b='2'  a='1'}"), copy.qualifiedName());
    EXPECT_EQ(PropertyValue(), copy.property("c"));

    const ObjectName hierarchical("a.b");
    EXPECT_FALSE(hierarchical.isEmpty());
    EXPECT_TRUE(hierarchical.properties().isEmpty());
    EXPECT_TRUE(hierarchical.isEmpty());
    EXPECT_TRUE(ObjectName("").isEmpty());
    EXPECT_FALSE(ObjectName("{}").isEmpty());
}

TEST(ObjectName, CountsOccurrencesFromOne)
{
    EXPECT_EQ(1, ObjectName("{a='1'}").occurrenceValue());
    const std::pair<const char *, int> rows[] = {
        {"", 1}, {"3", 3}, {"0", -1}, {"-2", -1}, {"0x2", -1}, {"99999999999", -1},
    };
    for (const auto &[text, value] : rows) {
        ObjectName name;
        name.setProperty("occurrence", PropertyValue(text));
        EXPECT_EQ(value, name.occurrenceValue()) << text;
    }
}

TEST(ObjectName, ComparesNamesAndNotSpellings)
{
    const std::tuple<const char *, const char *, bool> rows[] = {
        {"{a='1' b='2'}", "{ b = '2'a='1' }", true},
        {"{a='1'}", "{a='0' a='1'}", true},
        {"{a={}}", "{a='{}'}", true},
        {"{a='1'}", "{a~='1'}", false},
        {"{a='1'}", "{a='1' b=''}", false},
        {"a.b", "A.b", false},
        {"{a='1'}", " {a='1'}", false},
    };
    for (const auto &[a, b, equal] : rows) {
        SCOPED_TRACE(a);
        EXPECT_EQ(equal, ObjectName(a) == ObjectName(b));
        EXPECT_EQ(equal, qualifiedNamesEqual(a, b));
    }
    EXPECT_FALSE(ObjectName("{a=b}") == ObjectName("{a=c}"));
    EXPECT_TRUE(qualifiedNamesEqual("{a=b}", "{a=c}"));
}

TEST(ObjectName, HasOnePlaceInTheOrderForEachName)
{
    const QString names[] = {
        "",           "main",     "main.dialog",   "{a=b}",         "{}",
        "{ }",        "{a='1'}",  "{a='1' b='0'}", "{b='0' a='1'}", "{a='1' b={c='1'}}",
        "{a='1\\''}", "{a='1@'}", "{a='1#'}",      "{a='10'}",      "{a~='0'}",
        "{a@='1'}",   "{ab='0'}", "{b='0'}",       "{b='0' b='1'}", "{b='1'}",
    };
    const auto wanted = [](const ObjectName &name) {
        std::vector<std::tuple<QString, int, QString>> conditions;
        const Properties properties = name.properties();
        for (auto it = properties.cbegin(); it != properties.cend(); ++it) {
            conditions.emplace_back(it.key(), it->matchingMode(), it->stringValue());
        }
        const bool isMulti = name.isMultiProperty();
        return std::make_tuple(isMulti, isMulti ? QString() : name.qualifiedName(), conditions);
    };
    for (QString a : names) {
        for (QString b : names) {
            SCOPED_TRACE((a + " < " + b).toStdString());
            const ObjectName left(a.replace('@', QChar(0)).replace('#', QChar(1)));
            const ObjectName right(b.replace('@', QChar(0)).replace('#', QChar(1)));
            const bool isLess = left < right;
            EXPECT_EQ(wanted(ObjectName(a)) < wanted(ObjectName(b)), isLess);
            EXPECT_EQ(left == right, !isLess && !(right < left));
            EXPECT_EQ(isLess, left < right); // both have converted by now
        }
    }
}
