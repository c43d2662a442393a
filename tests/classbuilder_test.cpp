#include "objectmodel/classbuilder.h"

#include "objectmodel/class.h"
#include "objectmodel/containerclasses.h"
#include "objectmodel/inspector.h"
#include "objectmodel/namespace.h"
#include "objectmodel/wrap.h"

#include <gtest/gtest.h>

#include <stdexcept>

using namespace Vantrel;

namespace {

class Person
{
public:
    explicit Person(const QString &name = QStringLiteral("nobody")) : m_name(name) {}
    virtual ~Person() { ++destroyed; }
    QString name() const noexcept { return m_name; }
    bool setName(const QString &name)
    {
        if (name.isEmpty()) {
            return false;
        }
        m_name = name;
        return true;
    }
    static int destroyed;

private:
    QString m_name;
};

int Person::destroyed = 0;

class Account : public Person
{
public:
    enum Kind { Private, Business = 5 };

    Account(const QString &owner, double balance) : Person(owner), m_balance(balance) {}
    void deposit(double amount) { m_balance += amount; }
    void deposit(const QString &cheque) { m_balance += cheque.size(); }
    double balance() const { return m_balance; }
    Kind kind() const { return m_kind; }
    void setKind(Kind kind) { m_kind = kind; }
    double withdraw(double amount)
    {
        if (amount > m_balance) {
            throw std::runtime_error("insufficient funds");
        }
        return m_balance -= amount;
    }
    Account copied() const { return *this; }
    Account &self() noexcept { return *this; }
    const Account &constSelf() const & { return *this; }
    Person *person(bool wanted) { return wanted ? this : nullptr; }
    double total(const Account &other) const { return m_balance + other.m_balance; }
    bool isSame(const Account *other) const { return other == this; }
    double taken(Account other) { return other.m_balance; }
    int count(int &counter) const { return ++counter; }
    QString joined(const QStringList &texts) const { return texts.join('+'); }
    QStringList notes() const { return m_notes; }
    void setNotes(const QStringList &notes) { m_notes = notes; }
    static QString find(const char *owner, std::string suffix)
    {
        return QLatin1String(owner) + QString::fromStdString(suffix);
    }

private:
    double m_balance;
    Kind m_kind = Private;
    QStringList m_notes;
};

double half(const Account &account)
{
    return account.balance() / 2;
}

Namespace *bank()
{
    static auto *const bank = new Namespace(Inspector::self()->globalNamespace(), "BuilderBank");
    return bank;
}

const Class *personClass()
{
    static const Class *const c = ClassBuilder<Person>("Person", bank())
                                      .constructor()
                                      .method("greet", [](Person *p) { return p->name(); })
                                      .property("name", &Person::name, &Person::setName)
                                      .enumeration("Mood", {{"Calm", 0}})
                                      .event("left")
                                      .add();
    return c;
}

const Class *accountClass()
{
    personClass();
    static const Class *const c =
        ClassBuilder<Account>("Account", bank())
            .superClass<Person>()
            .constructor<QString, double>({"owner", "balance"})
            .method("deposit", qOverload<double>(&Account::deposit), {"amount"})
            .method("deposit", qOverload<const QString &>(&Account::deposit), {"cheque"})
            .method("withdraw", &Account::withdraw, {"amount"})
            .method("half", half)
            .method("copied", &Account::copied)
            .method("self", &Account::self)
            .method("constSelf", &Account::constSelf)
            .method("person", &Account::person)
            .method("total", &Account::total, {"other"})
            .method("isSame", &Account::isSame)
            .method("taken", &Account::taken)
            .method("count", &Account::count, {"counter"})
            .method("joined", &Account::joined)
            .staticMethod("find", &Account::find, {"owner"})
            .deprecated("use lookUp")
            .staticMethod("fail", [] { throw 7; })
            .property("balance", &Account::balance)
            .property("kind", &Account::kind, &Account::setKind)
            .property("notes", &Account::notes, &Account::setNotes)
            .enumeration<Account::Kind>(
                "Kind", {{"Private", Account::Private}, {"Business", Account::Business}})
            .event("overdrawn", {argument<double>("amount"), argument<Account::Kind>("kind")},
                   Event::Sendable)
            .add();
    return c;
}

/** A script's view of one account. */
class ClassBuilderTest : public testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(accountClass());
        object = accountClass()->construct({wrap("Ann"), wrap(100)});
        ASSERT_TRUE(object);
        lastError();
    }
    SharedPtr<Object> call(const char *name, const ObjectList &arguments = {})
    {
        return object->type()->methods(name).invoke(object, arguments, &ok);
    }
    /** Without any conversion. */
    SharedPtr<Object> callDirectly(const char *name, const ObjectList &arguments)
    {
        return object->type()->methods(name).at(0)->invoke(object, arguments);
    }
    SharedPtr<Object> get(const char *name) { return object->type()->property(name)->get(object); }
    bool set(const char *name, const SharedPtr<Object> &value)
    {
        return object->type()->property(name)->set(object, value);
    }
    static QString lastError() { return Inspector::self()->lastError(); }

    SharedPtr<Object> object;
    bool ok = false;
};

} // namespace

TEST_F(ClassBuilderTest, NumbersMembersOverTheWholeHierarchy)
{
    const Class *c = accountClass();
    EXPECT_EQ("BuilderBank::Account", c->fullyQualifiedClassName());
    EXPECT_EQ(personClass(), c->super());
    EXPECT_EQ("greet", c->method(0)->name());
    EXPECT_EQ("void deposit(double amount)", c->method(1)->toString());
    EXPECT_EQ("balance", c->property(1)->name());
    EXPECT_EQ(1, c->enumerator(1)->id());
    EXPECT_EQ(5, c->enumerator("Kind")->value("Business", nullptr));
    const Event *event = c->event(1);
    EXPECT_TRUE(event->isSendable());
    EXPECT_EQ("(double amount, Account::Kind kind)", event->signature().toString());
    const Method *find = c->methods("find").at(0);
    EXPECT_TRUE(find->isStatic());
    EXPECT_EQ("use lookUp", find->deprecationMessage());
    EXPECT_FALSE(c->methods("joined").at(0)->isDeprecated());
}

TEST_F(ClassBuilderTest, DescribesHowParametersAndResultsArePassed)
{
    const std::pair<const char *, const char *> rows[] = {
        {"total", "double total(const Account & other)"},
        {"isSame", "bool isSame(const Account *)"},
        {"taken", "double taken(Account)"},
        {"count", "int count(int & counter)"},
        {"joined", "const char* joined(char * [])"},
        {"find", "const char* find(const char * owner, const char *)"},
        {"self", "Account& self()"},
        {"constSelf", "const Account& constSelf()"},
        {"person", "Person* person(bool)"},
    };
    for (const auto &[name, text] : rows) {
        EXPECT_EQ(text, accountClass()->methods(name).at(0)->toString());
    }
}

TEST_F(ClassBuilderTest, CallsOverloadsWithConvertedArguments)
{
    EXPECT_EQ("void", call("deposit", {wrap(5)})->className());
    EXPECT_EQ(105.0, unwrap<double>(get("balance")));
    call("deposit", {wrap("four")});
    EXPECT_EQ(109.0, unwrap<double>(get("balance")));
    EXPECT_EQ(54.5, unwrap<double>(call("half")));
    EXPECT_EQ("Ann", unwrap<QString>(call("greet")));
    EXPECT_EQ(218.0, unwrap<double>(call("total", {object})));
    EXPECT_EQ(109.0, unwrap<double>(call("taken", {object})));
    EXPECT_TRUE(unwrap<bool>(call("isSame", {object})));
    EXPECT_FALSE(unwrap<bool>(call("isSame", {accountClass()->createNull()})));
    const SharedPtr<Object> counter = wrap(1);
    EXPECT_EQ(2, unwrap<int>(call("count", {counter})));
    EXPECT_EQ(2, counter->toInteger());
    EXPECT_EQ("a++c", unwrap<QString>(call("joined", {wrap(QStringList{"a", QString(), "c"})})));
    object.reset();
    const Method *find = accountClass()->methods("find").at(0);
    EXPECT_EQ("Bob!", unwrap<QString>(find->invoke(nullptr, {wrap("Bob"), wrap("!")})));
}

TEST_F(ClassBuilderTest, OwnsResultsThatAreValuesAndNoOthers)
{
    const int before = Person::destroyed;
    SharedPtr<Object> copy = call("copied");
    const int temporaries = Person::destroyed - before;
    EXPECT_TRUE(copy->isAutoDelete());
    EXPECT_NE(unwrap<Account *>(object), unwrap<Account *>(copy));
    copy.reset();
    EXPECT_EQ(before + temporaries + 1, Person::destroyed);

    for (const char *name : {"self", "constSelf"}) {
        const SharedPtr<Object> view = call(name);
        EXPECT_FALSE(view->isAutoDelete());
        EXPECT_TRUE(view->sameAs(object));
    }
    EXPECT_EQ(accountClass(), call("person", {wrap(true)})->type()) << "the class of the object";
    const SharedPtr<Object> null = call("person", {wrap(false)});
    EXPECT_TRUE(ok);
    EXPECT_TRUE(null->isNull());
    EXPECT_EQ(personClass(), null->type());
    EXPECT_EQ(before + temporaries + 1, Person::destroyed);
}

TEST_F(ClassBuilderTest, DeletesAnObjectAsWhatItWasMadeAs)
{
    const int before = Person::destroyed;
    object->castTo(personClass());
    EXPECT_EQ("Ann", unwrap<QString>(get("name")));
    EXPECT_EQ(before, Person::destroyed);
    object.reset();
    EXPECT_EQ(before + 1, Person::destroyed);
}

TEST_F(ClassBuilderTest, ReadsAndWritesProperties)
{
    EXPECT_TRUE(set("name", wrap("Eve")));
    EXPECT_EQ("Eve", unwrap<QString>(get("name")));
    EXPECT_TRUE(set("kind", wrap("Business")));
    EXPECT_EQ(Account::Business, unwrap<Account::Kind>(get("kind")));
    EXPECT_TRUE(set("kind", wrap(0.0)));
    EXPECT_EQ(0, get("kind")->toInteger());
    const QStringList notes{"one", "two"};
    EXPECT_TRUE(set("notes", wrap(notes)));
    EXPECT_EQ(notes, unwrap<QStringList>(get("notes")));
    EXPECT_EQ(accountClass()->property("kind")->argument().enumType(),
              accountClass()->enumerator("Kind"));
}

TEST_F(ClassBuilderTest, RefusesValuesAndLeavesThePropertyAsItIs)
{
    lastError();
    EXPECT_FALSE(set("balance", wrap(1.0)));
    EXPECT_EQ("Cannot write property Account::balance: it is read-only", lastError());
    EXPECT_EQ(100.0, unwrap<double>(get("balance")));
    EXPECT_FALSE(set("name", wrap("")));
    EXPECT_EQ("Person::name: the value was refused", lastError());
    EXPECT_FALSE(set("name", object));
    EXPECT_FALSE(set("kind", wrap("Royal")));
    EXPECT_EQ("Cannot set property Account::kind: 'Royal' is no key of Kind", lastError());
    EXPECT_FALSE(set("kind", nullptr));
    EXPECT_EQ("Cannot set property kind without a value", lastError());
    EXPECT_EQ("Ann", unwrap<QString>(get("name")));
}

TEST_F(ClassBuilderTest, TellsWhyACallFailed)
{
    const SharedPtr<Object> null;
    const auto error = [&](const SharedPtr<Object> &result) {
        EXPECT_FALSE(result);
        return lastError();
    };
    EXPECT_EQ("Account::withdraw: insufficient funds", error(call("withdraw", {wrap(1000)})));
    EXPECT_EQ("Account::fail: unknown exception", error(call("fail")));
    EXPECT_EQ("Found no matching overload", error(call("deposit", {object})));
    // Called as it is, a method gets null handles and foreign objects.
    EXPECT_EQ("Cannot call Account::deposit(): argument 1 is null",
              error(callDirectly("deposit", {null})));
    EXPECT_EQ("Cannot call Account::deposit(): argument 1: int given, double expected",
              error(callDirectly("deposit", {wrap(1)})));
    EXPECT_EQ("Cannot call Account::joined(): argument 1: char given, char expected",
              error(callDirectly("joined", {wrap("text")})));
    EXPECT_EQ("Cannot call Account::taken(): argument 1 is null",
              error(callDirectly("taken", {accountClass()->createNull()})));
    const Constructor *constructor = accountClass()->constructor(0);
    const Signature other("other", {Argument(object->type())});
    EXPECT_EQ("The class Account has no constructor Account(Account)",
              error(Constructor(0, accountClass(), other).construct({object})));
    EXPECT_EQ("The class Account has no constructor Account()",
              error(Constructor(99, accountClass(), Signature()).construct({})));
    const int id = accountClass()->methods("withdraw").at(0)->id();
    EXPECT_EQ("The class Account has no method Account other(Account)",
              error(Method(id, accountClass(), Argument(object->type()), other).invoke(object, {object})));
    EXPECT_EQ("Cannot call Account::Account(): argument 2: int given, double expected",
              error(constructor->construct({wrap("Ann"), wrap(1)})));
    const SharedPtr<Object> gone = wrap(unwrap<Account *>(object));
    gone->invalidate();
    EXPECT_FALSE(accountClass()->property("balance")->get(gone));
    EXPECT_TRUE(lastError().contains("invalidated"));
}

TEST_F(ClassBuilderTest, GuardsTheRawOperations)
{
    const Class *c = accountClass();
    double amount = 1;
    void *arguments[] = {&amount};
    void *account = unwrap<Account *>(object);
    EXPECT_TRUE(c->invoke(1, account, arguments, nullptr));
    EXPECT_EQ(101.0, unwrap<double>(get("balance")));
    EXPECT_FALSE(c->invoke(1, nullptr, arguments, nullptr));
    EXPECT_EQ("Cannot use Account::deposit without an object", lastError());
    for (int id : {-1, 0, 1000}) {
        EXPECT_FALSE(c->invoke(id, account, arguments, nullptr));
        EXPECT_TRUE(lastError().contains("no member of its own"));
        EXPECT_FALSE(c->getProperty(id, account, nullptr));
        EXPECT_FALSE(c->setProperty(id, account, &amount));
        EXPECT_FALSE(c->construct(id, nullptr));
    }
    EXPECT_FALSE(c->setProperty(1, account, &amount));
    EXPECT_TRUE(lastError().contains("read-only"));
    EXPECT_FALSE(c->getProperty(1, nullptr, nullptr));
    EXPECT_FALSE(c->setProperty(2, account, nullptr));
    EXPECT_TRUE(lastError().contains("no null value"));
}

namespace {

struct Left
{
    int left = 1;
};
struct Right
{
    int right = 2;
    int value() const { return right; }
};
struct Both : Left, Right
{
};
struct Ring;
struct Stone
{
    Ring *ring = nullptr;
};
struct Ring
{
    Stone stone;
};
struct Stranger
{
};
enum class StrangeKind { None };

QString errorsOf(const QStringList &errors)
{
    return errors.join('\n');
}

} // namespace

TEST(ClassBuilder, AcceptsOnlyAFirstBaseAsSuperClass)
{
    ASSERT_TRUE(ClassBuilder<Left>("BuilderLeft").property("left", &Left::left).add());
    ASSERT_TRUE(ClassBuilder<Right>("BuilderRight").property("right", &Right::right).add());
    ClassBuilder<Both> wrong("BuilderBoth");
    EXPECT_FALSE(wrong.superClass<Right>().add());
    EXPECT_TRUE(errorsOf(wrong.errors()).contains("must be the first base"));
    EXPECT_FALSE(Inspector::self()->type("BuilderBoth"));
    Inspector::self()->lastError();
    ClassBuilder<Both> tooLate("BuilderBoth");
    EXPECT_FALSE(tooLate.add()) << "the type belongs to the first builder while that exists";
}

TEST(ClassBuilder, CallsMembersOfAnyBaseWithTheRightPointer)
{
    struct Pair : Left, Right
    {
    };
    const Class *c = ClassBuilder<Pair>("BuilderPair")
                         .method("value", &Pair::value)
                         .property("right", &Pair::right)
                         .add();
    ASSERT_TRUE(c);
    Pair pair;
    const SharedPtr<Object> object = wrap(&pair);
    EXPECT_EQ(2, unwrap<int>(c->method(0)->invoke(object, {})));
    EXPECT_EQ(2, unwrap<int>(c->property(0)->get(object)));
}

TEST(ClassBuilder, LetsTwoClassesNameEachOther)
{
    ClassBuilder<Ring> ring("BuilderRing");
    ClassBuilder<Stone> stone("BuilderStone");
    EXPECT_TRUE(ring.property("stone", &Ring::stone, &Ring::stone).add());
    EXPECT_TRUE(stone.property("ring", &Stone::ring, &Stone::ring).add());
    Ring value;
    value.stone.ring = &value;
    const SharedPtr<Object> object = wrap(&value);
    const SharedPtr<Object> inner = object->type()->property(0)->get(object);
    EXPECT_TRUE(inner->type()->property(0)->get(inner)->sameAs(object));
}

TEST(ClassBuilder, RefusesWrongMembersByNameAndKeepsTheOthers)
{
    struct Host
    {
        Host() = default;
        explicit Host(const Stranger &) {}
        void meet(int, Stranger &) {}
        Stranger *stranger() const { return nullptr; }
        int one() const { return 1; }
    };
    accountClass(); // has the type of the enum
    ClassBuilder<Host> builder("BuilderHost");
    testing::internal::CaptureStderr();
    const Class *c = builder.constructor<Stranger>()
                         .method("meet", &Host::meet)
                         .method("stranger", &Host::stranger)
                         .method("many", &Host::one, {"one", "two"})
                         .method("", &Host::one)
                         .method("one", &Host::one)
                         .property("kind", [](Host &) { return StrangeKind::None; })
                         .property("one", &Host::one)
                         .property("one", &Host::one)
                         .enumeration("Twice", {{"A", 1}})
                         .enumeration("Twice", {{"B", 1}})
                         .enumeration<Account::Kind>("Kind", {})
                         .event("met", {argument<const Stranger &>("who")})
                         .add();
    const QString report = QString::fromStdString(testing::internal::GetCapturedStderr());
    ASSERT_TRUE(c);
    const char *const reasons[] = {
        "BuilderHost::constructor: argument 1: the type (anonymous namespace)::Stranger is not",
        "BuilderHost::meet: argument 2: the type (anonymous namespace)::Stranger is not registered",
        "BuilderHost::stranger: result: the type (anonymous namespace)::Stranger is not",
        "BuilderHost::many: 2 argument names for 0 arguments",
        "BuilderHost: a method needs a name",
        "BuilderHost::kind: the type (anonymous namespace)::StrangeKind is not registered",
        "BuilderHost::one: a property of that name is there already",
        "BuilderHost::Twice: an enum of that name is there already",
        "BuilderHost::Kind: the type (anonymous namespace)::Account::Kind belongs to the enum Kind",
        "BuilderHost::met: argument 'who': the type (anonymous namespace)::Stranger is not",
    };
    const QString lastError = Inspector::self()->lastError();
    for (const char *reason : reasons) {
        EXPECT_TRUE(report.contains(reason)) << reason;
        EXPECT_TRUE(errorsOf(builder.errors()).contains(reason)) << reason;
        EXPECT_TRUE(lastError.contains(reason)) << reason;
    }
    EXPECT_EQ(10, builder.errors().size());
    EXPECT_EQ(1, c->numMethods());
    EXPECT_EQ(1, c->numProperties());
    EXPECT_EQ(1, c->numEnums());
    EXPECT_EQ(0, c->numEvents());
    EXPECT_EQ(0, c->numConstructors());
    Host host;
    EXPECT_EQ(1, unwrap<int>(c->method(0)->invoke(wrap(&host), {})));
}

TEST(ClassBuilder, RefusesAWholeClass)
{
    struct First
    {
    };
    struct Second
    {
    };
    struct Base
    {
    };
    struct Derived : Base
    {
    };
    const auto failure = [](auto &&builder) {
        EXPECT_FALSE(builder.add());
        return errorsOf(builder.errors());
    };
    ClassBuilder<First> first("BuilderFirst");
    ASSERT_TRUE(first.add());
    EXPECT_TRUE(failure(first).contains("already added"));
    EXPECT_TRUE(failure(ClassBuilder<First>("BuilderOther")).contains("belongs to"));
    EXPECT_TRUE(failure(ClassBuilder<Second>("BuilderFirst")).contains("that name"));
    EXPECT_TRUE(failure(ClassBuilder<Second>("")).contains("needs a name"));
    EXPECT_TRUE(failure(ClassBuilder<Derived>("BuilderDerived").superClass<Base>())
                    .contains("is not registered"));
    EXPECT_TRUE(failure(ClassBuilder<Second>("BuilderFirst").deprecated("no method"))
                    .contains("no method to deprecate"));
    Inspector::self()->lastError();
    // What was refused leaves nothing behind.
    EXPECT_FALSE(wrap(Second()));
    EXPECT_TRUE(ClassBuilder<Second>("BuilderSecond").add());
}

TEST(ClassBuilder, KnowsClassesThatWereWrittenByHand)
{
    struct Manual
    {
        int number = 6;
    };
    struct User
    {
        int number(const Manual &manual) const { return manual.number; }
    };
    EXPECT_TRUE(registerNativeClass<Manual>(new Class("BuilderManual", true)));
    EXPECT_FALSE(registerNativeClass<Manual>(personClass()));
    const Class *c = ClassBuilder<User>("BuilderUser").method("number", &User::number).add();
    ASSERT_TRUE(c);
    Manual manual;
    User user;
    EXPECT_EQ(6, unwrap<int>(c->method(0)->invoke(wrap(&user), {wrap(&manual)})));
}

TEST(ClassBuilder, PassesContainers)
{
    struct Series
    {
        double sum(const std::vector<double> &values) const
        {
            double sum = 0;
            for (double value : values) {
                sum += value;
            }
            return sum;
        }
        std::map<QString, QString> tags() const { return m_tags; }
        void setTags(const std::map<QString, QString> &tags) { m_tags = tags; }
        std::map<QString, QString> m_tags;
    };
    registerContainerClasses();
    const Class *c = ClassBuilder<Series>("BuilderSeries")
                         .method("sum", &Series::sum, {"values"})
                         .property("tags", &Series::tags, &Series::setTags)
                         .add();
    ASSERT_TRUE(c);
    Series series;
    const SharedPtr<Object> object = wrap(&series);
    const Method *sum = c->method(0);
    EXPECT_EQ("double sum(const Vantrel_Array & values)", sum->toString());
    EXPECT_EQ(6.0, unwrap<double>(sum->invoke(object, {wrap(std::vector<int>{1, 2, 3})})));
    Inspector::self()->lastError();
    EXPECT_FALSE(sum->invoke(object, {wrap(std::vector<Series *>{&series})}));
    EXPECT_EQ("BuilderSeries::sum: element 0: BuilderSeries cannot convert to double",
              Inspector::self()->lastError());
    const std::map<QString, int> tags{{"a", 1}};
    EXPECT_TRUE(c->property(0)->set(object, wrap(tags)));
    EXPECT_EQ(tags, (unwrap<std::map<QString, int>>(c->property(0)->get(object))));
}
