#include "streambytes.h"

#include "objectmodel/primitives.h"

#include "objectmodel/inspector.h"

#include <QStringList>

#include <gtest/gtest.h>

#include <cstring>

#include <algorithm>
#include <cmath>
#include <functional>
#include <tuple>
#include <vector>

using namespace Vantrel;

namespace {

using Handle = SharedPtr<Object>;

const char *const names[] = {"short", "int", "long", "bool", "char", "double", "int64"};
const ObjectAttribute value = ObjectAttribute::Value();
const ObjectAttribute pointer = ObjectAttribute::Pointer();
const int listFlags = ObjectAttribute::PointerFlag | ObjectAttribute::ArrayFlag;

const Class *classNamed(const char *name)
{
    return Inspector::self()->type(QLatin1String(name));
}

Handle owned(const char *name, void *data, const ObjectAttribute &attribute = value)
{
    Handle object = classNamed(name)->wrap(data, attribute);
    object->setAutoDelete(true);
    return object;
}

template <class T>
Handle single(const char *name, T v)
{
    return owned(name, new T(v));
}

template <class T>
Handle array(const char *name, const std::vector<T> &elements)
{
    T *data = new T[elements.size()];
    std::copy(elements.begin(), elements.end(), data);
    return owned(name, data, ObjectAttribute::Array(int(elements.size())));
}

Handle character(char c)
{
    return single("char", c);
}

Handle text(const char *utf8)
{
    return Inspector::self()->createPrimitive(utf8);
}

Handle list(const QStringList &texts)
{
    return Inspector::self()->createPrimitive(texts);
}

Handle null(const char *name, const ObjectAttribute &attribute = value)
{
    return classNamed(name)->wrap(nullptr, attribute);
}

template <class T>
T native(const Handle &object)
{
    void *data = nullptr;
    object->get(&data);
    return *static_cast<T *>(data);
}

std::string debugText(const Handle &object)
{
    return object ? object->toDebugString().toStdString() : "no object";
}

QByteArray streamed(const Handle &object)
{
    QByteArray bytes;
    QDataStream stream(&bytes, QIODevice::WriteOnly);
    stream.setVersion(QDataStream::Qt_5_15);
    object->streamObject(stream);
    return bytes;
}

QDataStream::Status read(const Handle &object, QIODevice *device)
{
    QDataStream stream(device);
    stream.setVersion(QDataStream::Qt_5_15);
    object->objectFromStream(stream);
    return stream.status();
}

QDataStream::Status read(const Handle &object, const QByteArray &bytes)
{
    return read(object, QDataStream(bytes).device());
}

/** Holds an int, but is not the class "int". */
class PrimitivesTestCount : public PrimitiveClass
{
public:
    PrimitivesTestCount() : PrimitiveClass("PrimitivesTestCount", 0) {}

private:
    void initSuperClass() override { setSuperClass(classNamed("int")); }
};

class Note : public UserData
{
public:
    UserData *clone() const override { return new Note; }
};

} // namespace

TEST(Primitives, ConvertBetweenEachOther)
{
    const struct
    {
        const char *what;
        Handle source;
        const char *texts; // short, int, long, bool, double, int64
        int byte;
        const char *text; // null: no conversion, because it is the same class and shape
    } rows[] = {
        {"short", single<qint16>("short", -2), "-2 -2 -2 true -2 -2", -2, "-2"},
        {"int", single("int", 70000), "4464 70000 70000 true 70000 70000", 112, "70000"},
        {"long", single("long", 321), "321 321 321 true 321 321", 65, "321"},
        {"int64", single("int64", qint64(0x100000041)), "65 65 65 true 4.29497e+09 4294967361", 65,
         "4294967361"},
        {"int64, low half empty", single("int64", qint64(1) << 40),
         "0 0 0 true 1.09951e+12 1099511627776", 0, "1099511627776"},
        {"bool", single("bool", true), "1 1 1 true 1 1", 1, "true"},
        {"double", single("double", -2.7), "-2 -2 -2 true -2.7 -2", -2, "-2.7"},
        {"double above int", single("double", 1e10),
         "32767 2147483647 2147483647 true 1e+10 10000000000", -1, "1e+10"},
        {"double at the end of int64", single("double", 9223372036854775808.0),
         "32767 2147483647 2147483647 true 9.22337e+18 9223372036854775807", -1, "9.22337e+18"},
        {"double below all", single("double", -1e300),
         "-32768 -2147483648 -2147483648 true -1e+300 -9223372036854775808", 0, "-1e+300"},
        {"NaN", single("double", std::nan("")), "0 0 0 true nan 0", 0, "nan"},
        {"text", text("12"), "12 12 12 true 12 12", '1', nullptr},
        {"truth in a text", text("TrUe"), "0 0 0 true 0 0", 'T', nullptr},
        {"fraction in a text", text("1.5"), "0 0 0 false 1.5 0", '1', nullptr},
        {"long number in a text", text("99999999999"), "0 0 0 false 1e+11 99999999999", '9',
         nullptr},
        {"empty text", text(""), "0 0 0 false 0 0", 0, nullptr},
        {"character", character('A'), "65 65 65 true 65 65", 65, "A"},
        {"character beyond ASCII", character('\xE9'), "-23 -23 -23 true -23 -23", -23, "\u00e9"},
        {"list", list({"ab", "c"}), "2 2 2 true 2 2", 'a', nullptr},
        {"empty list", list({}), "0 0 0 false 0 0", 0, nullptr},
        {"int array", array<int>("int", {4, 5}), "4 4 4 true 4 4", 4, "4"},
        {"empty array", array<double>("double", {}), "0 0 0 false 0 0", 0, ""},
    };
    const char *const targets[] = {"short", "int", "long", "bool", "double", "int64"};
    for (const auto &row : rows) {
        SCOPED_TRACE(row.what);
        const Class *c = row.source->type();
        const auto converted = [&](const char *target, bool toPointer) {
            Handle result = c->convertTo(row.source, classNamed(target), toPointer);
            EXPECT_TRUE(!result || result->isAutoDelete());
            EXPECT_TRUE(!result || result->objectAttribute() == (toPointer ? pointer : value));
            return result;
        };
        for (int i = 0; i < 6; ++i) {
            SCOPED_TRACE(targets[i]);
            const QString number = QString(row.texts).split(' ').at(i);
            const std::string expected = number.toStdString() + " : " + targets[i];
            if (c != classNamed(targets[i])) {
                EXPECT_EQ(expected, debugText(converted(targets[i], false)));
                EXPECT_EQ(expected, debugText(converted(targets[i], true)));
            }
        }
        const Handle byte = converted("char", false);
        EXPECT_TRUE(!byte || byte->toInteger() == row.byte) << byte->toInteger();
        EXPECT_EQ(byte.isNull(),
                  row.source->objectAttribute() == value && row.source->isA(classNamed("char")));
        const Handle asText = converted("char", true);
        EXPECT_EQ(row.text ? std::string(row.text) + " : char[]" : "no object", debugText(asText));
    }
}

TEST(Primitives, ConvertNothingElse)
{
    for (const char *name : names) {
        SCOPED_TRACE(name);
        const Class *c = classNamed(name);
        for (const char *other : {"void", "undefined"}) {
            EXPECT_FALSE(c->canConvertToTolerant(classNamed(other), false, false, nullptr));
            EXPECT_FALSE(classNamed(other)->canConvertToTolerant(c, false, false, nullptr));
        }
        EXPECT_FALSE(c->canConvertTo(c, true, true, nullptr));
        const Class *target = classNamed(c == classNamed("int") ? "double" : "int");
        EXPECT_TRUE(c->canConvertTo(target, false, false, nullptr));
        EXPECT_FALSE(c->convertTo(null(name), target, false)) << "null has no value";
    }
}

TEST(Primitives, TakeOverValues)
{
    using Change = std::function<void(Object &)>;
    const std::tuple<const char *, Handle, Change, const char *> rows[] = {
        {"true in any case", single("bool", false), [](Object &o) { o.fromString("TrUe"); },
         "true : bool"},
        {"no whole number", single("bool", true), [](Object &o) { o.fromString("1.5"); },
         "false : bool"},
        {"NaN as truth", single("bool", false), [](Object &o) { o.fromDouble(NAN); },
         "true : bool"},
        {"zero as truth", single("bool", true), [](Object &o) { o.fromDouble(-0.0); },
         "false : bool"},
        {"int clamps", single("int", 3), [](Object &o) { o.fromDouble(-1e99); },
         "-2147483648 : int"},
        {"int leaves int64 to delegates", single("int", 3), [](Object &o) { o.fromInt64(4); },
         "3 : int"},
        {"int64", single("int64", qint64(0)), [](Object &o) { o.fromInt64(qint64(1) << 33); },
         "8589934592 : int64"},
        {"int64 from text", single("int64", qint64(0)),
         [](Object &o) { o.fromString("8589934592"); }, "8589934592 : int64"},
        {"short narrows", single<qint16>("short", 0), [](Object &o) { o.fromInteger(65537); },
         "1 : short"},
        {"short out of range", single<qint16>("short", 1), [](Object &o) { o.fromString("65537"); },
         "0 : short"},
        {"double", single("double", 0.0), [](Object &o) { o.fromString("1234567.0"); },
         "1.23457e+06 : double"},
        {"array", array<int>("int", {4, 5}), [](Object &o) { o.fromBoolean(true); },
         "[ 1, 5 ] : int"},
        {"empty array", array<int>("int", {}), [](Object &o) { o.fromInteger(1); }, " : int"},
        {"null array", null("short", ObjectAttribute::Array(2)),
         [](Object &o) { o.fromInteger(7); }, "[ 7, 0 ] : short"},
        {"character by number", character('x'), [](Object &o) { o.fromInteger(321); }, "A : char"},
        {"character by digits", character('x'), [](Object &o) { o.fromString("65"); }, "A : char"},
        {"character by letter", character('x'), [](Object &o) { o.fromString("A"); }, " : char"},
        {"null character", null("char"), [](Object &o) { o.fromInteger(65); }, "A : char"},
        {"text from truth", text("x"), [](Object &o) { o.fromBoolean(false); }, "false : char[]"},
        {"text from double", text("x"), [](Object &o) { o.fromDouble(0.1); }, "0.1 : char[]"},
        {"null text", null("char", pointer), [](Object &o) { o.fromInteger(-7); }, "-7 : char[]"},
        {"list", list({"a", "b", "c"}), [](Object &o) { o.fromString("\u00e4 b"); },
         "\u00e4 b : char[]"},
        {"null list", null("char", ObjectAttribute(listFlags, 2)),
         [](Object &o) { o.fromBoolean(true); }, "true : char[]"},
    };
    for (const auto &[what, object, change, expected] : rows) {
        SCOPED_TRACE(what);
        auto *note = new Note;
        object->setUserData(note);
        change(*object);
        EXPECT_EQ(expected, debugText(object));
        EXPECT_TRUE(object->isAutoDelete());
        EXPECT_EQ(note, object->userData()) << "a new value is no new thing";
    }
}

TEST(Primitives, ReadByShape)
{
    EXPECT_EQ("[ 4, 5 ] : int", debugText(array<int>("int", {4, 5})));
    EXPECT_EQ("[ true, false ] : bool", debugText(array<bool>("bool", {true, false})));
    EXPECT_EQ("[ a, b ] : char*[]", debugText(list({"a", "b"})));
    EXPECT_EQ("a : char*[]", debugText(list({"a"})));
    EXPECT_EQ("0 : char", debugText(null("char")));
    EXPECT_EQ(3, list({"7", "8", "9"})->toInteger());
    EXPECT_TRUE(list({"", ""})->toBoolean());
    EXPECT_FALSE(list({})->isNull());
    EXPECT_TRUE(text(nullptr)->isNull());
    for (const char *name : {"int", "double", "char", "void"}) {
        EXPECT_EQ("<null>", null(name)->toString().toStdString());
        EXPECT_EQ(0, null(name)->toInteger() + null(name)->toInt64() + null(name)->toDouble());
        EXPECT_EQ(0, null(name)->numChildren());
    }
    const Handle gone = single("int", 1);
    void *data = nullptr;
    gone->get(&data);
    gone->invalidate();
    gone->fromInteger(4);
    gone->castTo(classNamed("char"));
    EXPECT_EQ("<null>", gone->toString().toStdString());
    delete static_cast<int *>(data);
}

TEST(Primitives, LeaveForeignDataToItsOwner)
{
    int number = 3;
    const Handle numberView = classNamed("int")->wrap(&number, pointer);
    numberView->fromInteger(4);
    EXPECT_EQ(4, number) << "a number is written where it is";
    EXPECT_FALSE(numberView->isAutoDelete());

    char letters[] = "abc";
    const Handle textView = classNamed("char")->wrap(letters, pointer);
    textView->fromString("longer than before");
    EXPECT_STREQ("abc", letters);
    EXPECT_EQ("longer than before : char[]", debugText(textView));

    char *lines[] = {letters, nullptr};
    const Handle listView = classNamed("char")->wrap(lines, ObjectAttribute(listFlags, 2));
    EXPECT_EQ("[ abc,  ] : char*[]", debugText(listView));
    EXPECT_EQ(QDataStream::Ok, read(listView, QByteArray::fromHex("00000002780000000000")));
    EXPECT_EQ("[ x,  ] : char*[]", debugText(listView));
    EXPECT_EQ(letters, lines[0]);
    EXPECT_TRUE(textView->isAutoDelete() && listView->isAutoDelete());
}

TEST(Primitives, CompareByValue)
{
    const double nan = std::nan("");
    const Handle same = single("double", nan);
    const std::tuple<const char *, Handle, Handle, bool> rows[] = {
        {"equal numbers", single("int", 4), single("int", 4), true},
        {"NaN, even of one handle", same, same, false},
        {"negative zero", single("double", 0.0), single("double", -0.0), true},
        {"equal arrays", array<int>("int", {4, 5}), array<int>("int", {4, 5}), true},
        {"other last element", array<int>("int", {4, 5}), array<int>("int", {4, 6}), false},
        {"other length", array<int>("int", {4, 5}), array<int>("int", {4}), false},
        {"equal texts", text("a"), text("a"), true},
        {"other texts", text("a"), text("b"), false},
        {"a text and its character", text("a"), character('a'), true},
        {"equal lists", list({"a", "b"}), list({"a", "b"}), true},
        {"other lists", list({"a", "b"}), list({"a", "c"}), false},
        {"a list and its only text", list({"a"}), text("a"), false},
        {"two nulls", null("int"), null("int", pointer), true},
        {"two void objects", null("void"), Inspector::self()->voidObject(), true},
        {"null and zero", null("int"), single("int", 0), false},
        {"zero and null", single("int", 0), null("int"), false},
        {"int and text", single("int", 7), text("7"), true},
        {"text and int: the text of the number decides", text("07"), single("int", 7), false},
        {"int and text: the number in the text decides", single("int", 7), text("07"), true},
        {"two classes without conversion", single("int", 0), null("void"), false},
    };
    for (const auto &[what, a, b, equal] : rows) {
        EXPECT_EQ(equal, a->compare(b)) << what;
    }
}

TEST(Primitives, ConstructDefaultsAndCopies)
{
    for (const char *name : names) {
        SCOPED_TRACE(name);
        const Handle made = classNamed(name)->construct(ObjectList());
        ASSERT_TRUE(made);
        const bool isChar = classNamed("char") == made->type();
        EXPECT_EQ(isChar                            ? ""
                      : name == std::string("bool") ? "false"
                                                    : "0",
                  made->toString().toStdString());
        made->fromInteger(1);
        const Handle copy = classNamed(name)->construct(ObjectList{made});
        ASSERT_TRUE(copy);
        EXPECT_TRUE(copy->compare(made) && !copy->sameAs(made) && copy->isAutoDelete());
        EXPECT_FALSE(classNamed(name)->construct(1, nullptr));
    }
    EXPECT_EQ("12 : int", debugText(classNamed("int")->construct(ObjectList{text("12")})));
    // One byte without a NUL, and no element at all: the bare pointers would be read too far.
    const Class *charClass = classNamed("char");
    EXPECT_EQ("x : char[]", debugText(charClass->construct(ObjectList{character('x')})));
    const Handle empty = array<int>("int", {});
    EXPECT_EQ("0 : int", debugText(classNamed("int")->construct(ObjectList{empty})));
    const Constructor *copy = classNamed("int")->constructor(1);
    EXPECT_FALSE(copy->construct(ObjectList{null("int")})) << "null has no value";
    EXPECT_FALSE(copy->construct(ObjectList{Handle()}));
    EXPECT_EQ(0, classNamed("void")->numConstructors());
}

TEST(Primitives, LetOtherClassesStoreTheSame)
{
    const Class *count = new PrimitivesTestCount;
    const Handle object = count->wrap(new int(7), value);
    object->setAutoDelete(true);
    object->fromString("8");
    EXPECT_EQ("8 : PrimitivesTestCount", debugText(object));
    EXPECT_EQ("8 : double", debugText(count->convertTo(object, classNamed("double"), false)));
    EXPECT_EQ("8 : int", debugText(count->convertTo(object, classNamed("int"), false)));
    EXPECT_TRUE(object->compare(single("double", 8.0)));
    EXPECT_FALSE(classNamed("double")->canConvertToTolerant(count, false, false, nullptr))
        << "what a derived class makes of a value is its own affair";
    object->castTo(classNamed("int"));
    object->castTo(classNamed("short"));
    EXPECT_EQ("8 : short", debugText(object));
}

TEST(PrimitivesDeathTest, NothingIsWrappedToUndefined)
{
    int data = 0;
    EXPECT_DEATH(classNamed("undefined")->wrap(&data, value),
                 "Can't wrap object to undefined type");
    EXPECT_EQ("0 : undefined", debugText(Inspector::self()->createNull(classNamed("undefined"))));
}

// Reinterpretation -------------------------------------------------------------------------------

namespace {

bool isText(const Handle &object)
{
    const ObjectAttribute attribute = object->objectAttribute();
    return object->type() == classNamed("char") && (attribute.isPointer() || attribute.isArray());
}

/** The bytes of a value; none of a list of texts. */
QByteArray bytesOf(const Handle &object)
{
    const int sizes[] = {2, 4, 4, 1, 1, 8, 8};
    const ObjectAttribute attribute = object->objectAttribute();
    void *data = nullptr;
    object->get(&data);
    if (isText(object)) {
        return (attribute.getFlags() & listFlags) == listFlags
            ? QByteArray()
            : QByteArray(static_cast<const char *>(data));
    }
    const int count = attribute.isArray() ? attribute.arrayLength() : 1;
    return QByteArray(static_cast<const char *>(data), count * sizes[object->type()->id()]);
}

/** Data of no zero bytes, from the stream, which makes allocations of the exact size. */
Handle filled(const char *name, const ObjectAttribute &attribute)
{
    Handle object = null(name, attribute);
    const QByteArray bytes = isText(object)
        ? QByteArray::fromHex("00000004616263").append('\0').repeated(3)
        : QByteArray(64, 'A');
    EXPECT_EQ(QDataStream::Ok, read(object, bytes));
    EXPECT_FALSE(object->isNull());
    if (!isText(object)) {
        void *data = nullptr;
        object->get(&data); // of an array the stream gives the first number only
        std::memset(data, object->type() == classNamed("bool") ? 1 : 'A',
                    std::size_t(bytesOf(object).size()));
    }
    return object;
}

void expectReinterpreted(const Handle &object, const QByteArray &before)
{
    const QByteArray after = bytesOf(object);
    const bool isTruth = object->type() == classNamed("bool");
    const int common = std::min(before.size(), after.size());
    for (int i = 0; i < after.size(); ++i) {
        const char expected = i < common ? before[i] : '\0';
        EXPECT_EQ(isTruth ? expected != 0 : expected, after[i]) << "byte " << i;
    }
    if (isText(object)) {
        EXPECT_EQ(before.size() * (after.isEmpty() ? 0 : 1), after.size());
    }
}

} // namespace

TEST(PrimitiveCast, ReinterpretsEveryTypeInEveryShape)
{
    const ObjectAttribute shapes[] = {value,
                                      ObjectAttribute::Reference(),
                                      pointer,
                                      ObjectAttribute::Array(3),
                                      ObjectAttribute::Array(0),
                                      ObjectAttribute(listFlags, 3)};
    for (const ObjectAttribute &shape : shapes) {
        for (const char *from : names) {
            for (const char *to : names) {
                SCOPED_TRACE(testing::Message()
                             << from << " to " << to << ", flags " << shape.getFlags() << " length "
                             << shape.arrayLength());
                const Handle object = filled(from, shape);
                void *data = nullptr;
                object->get(&data);
                const Handle view = classNamed(from)->wrap(data, shape);
                const std::string foreign = debugText(object);
                const QByteArray before = bytesOf(object);
                for (const Handle &handle : {view, object}) {
                    EXPECT_EQ(handle, handle->castTo(classNamed(to)));
                    ASSERT_EQ(classNamed(to), handle->type());
                    if (handle->type() != classNamed(from)) {
                        expectReinterpreted(handle, before);
                    }
                    EXPECT_TRUE(handle->compare(handle) || handle->isA(classNamed("double")));
                    handle->castTo(classNamed(from));
                    EXPECT_TRUE(handle == object || foreign == debugText(object));
                }
            }
        }
    }
}

TEST(PrimitiveCast, ActsAsItsPresentClass)
{
    const Handle object = single("int", 0x3ff00000);
    auto *note = new Note;
    object->setUserData(note);
    EXPECT_EQ(object, object->castTo(classNamed("char")));
    EXPECT_EQ(note, object->userData());
    object->castTo(classNamed("int64"));
    object->fromInt64(0x3ff0000000000000);
    object->castTo(classNamed("double"));
    EXPECT_EQ("3ff0000000000000", streamed(object).toHex().toStdString());
    EXPECT_EQ("<null>", null("int")->castTo(classNamed("char"))->toString().toStdString());

    const Handle numbers = filled("int", ObjectAttribute(listFlags, 2));
    numbers->castTo(classNamed("char"));
    EXPECT_EQ("00000001000000000100", streamed(numbers).toHex().toStdString()) << "empty, not null";

    object->castTo(classNamed("void"));
    EXPECT_EQ("double", object->className().toStdString()) << "void holds no value";
}

// Stream -----------------------------------------------------------------------------------------

TEST(PrimitiveStream, WritesTheRecordAndReadsItBack)
{
    const std::tuple<const char *, Handle, const char *> rows[] = {
        {"short", single<qint16>("short", -2), "fffffffe"},
        {"int", single("int", 258), "00000102"},
        {"long", single("long", -1), "ffffffff"},
        {"bool", single("bool", true), "01"},
        {"int64", single("int64", qint64(1) << 32), "0000000100000000"},
        {"double", single("double", 0.5), "3fe0000000000000"},
        {"array, its first", array<qint16>("short", {1, -1}), "00000001"},
        {"empty array", array<qint16>("short", {}), "00000000"},
        {"character", character('A'), "41"},
        {"text in UTF-8", text("\u00e9"), "00000003c3a900"},
        {"empty text", text(""), "0000000100"},
        {"null text", text(nullptr), "00000000"},
        {"list", list({"a", ""}), "0000000261000000000100"},
        {"empty list", list({}), ""},
        {"null array", null("int", ObjectAttribute::Array(2)), "00000000"},
    };
    for (const auto &[what, object, hex] : rows) {
        SCOPED_TRACE(what);
        const QByteArray bytes = streamed(object);
        EXPECT_EQ(hex, bytes.toHex().toStdString());
        const Handle copy = object->type()->wrap(nullptr, object->objectAttribute());
        EXPECT_EQ(QDataStream::Ok, read(copy, bytes));
        EXPECT_EQ(bytes, streamed(copy));
        for (int length = 0; length < bytes.size(); ++length) {
            SCOPED_TRACE(length);
            const std::string before = debugText(object);
            EXPECT_EQ(QDataStream::ReadPastEnd, read(object, bytes.left(length)));
            EXPECT_EQ(before, debugText(object));
        }
    }
}

TEST(PrimitiveStream, MistrustsWhatItReads)
{
    const std::tuple<const char *, const char *, QDataStream::Status, const char *> rows[] = {
        {"more than can be", "ffffffff6100", QDataStream::ReadCorruptData, "old : char[]"},
        {"more than there is", "300000006100", QDataStream::ReadPastEnd, "old : char[]"},
        {"text without NUL", "000000026162", QDataStream::Ok, "ab : char[]"},
        {"NUL inside", "000000046100620000", QDataStream::Ok, "a : char[]"},
        {"no UTF-8", "00000003ff6200", QDataStream::Ok, "\ufffdb : char[]"},
    };
    for (const auto &[what, hex, status, expected] : rows) {
        SCOPED_TRACE(what);
        const Handle object = text("old");
        VantrelTest::Pipe pipe(QByteArray::fromHex(hex));
        EXPECT_EQ(status, read(object, &pipe));
        EXPECT_EQ(expected, debugText(object));
        EXPECT_LE(pipe.largestRead(), 1 << 20);
    }
    const Handle truth = single("bool", false);
    EXPECT_EQ(QDataStream::Ok, read(truth, QByteArray("\x07")));
    EXPECT_EQ(1, native<char>(truth)) << "native code relies on 0 or 1";
    const Handle lines = list({"a", "b"});
    EXPECT_EQ(QDataStream::ReadPastEnd, read(lines, QByteArray::fromHex("000000027800")));
    EXPECT_EQ("[ a, b ] : char*[]", debugText(lines));
}

TEST(Primitives, LeaveOldValuesToTheViewsOfThem)
{
    const Handle word = text("abc");
    const Handle letter = word->dereference();
    word->fromString("another text");
    EXPECT_EQ("a : char", debugText(letter));
    const Handle number = single("int", 5);
    const Handle view = number->reference();
    number->castTo(classNamed("double"));
    EXPECT_EQ("5 : int", debugText(view));
    const Handle none = null("int", ObjectAttribute(listFlags));
    none->fromInteger(1);
    EXPECT_EQ("0 : int", debugText(none->dereference())) << "an array without elements";
}

TEST(Primitives, ConstructNothingWhereNothingIsWrapped)
{
    class Unwrapped : public PrimitiveClass
    {
    public:
        Unwrapped() : PrimitiveClass("PrimitivesTestUnwrapped", 2) {}
        Handle wrap(void *, const ObjectAttribute &) override { return {}; }

    private:
        void initSuperClass() override { setSuperClass(classNamed("char")); }
    };
    const Class *c = new Unwrapped;
    EXPECT_TRUE(c->construct(ObjectList()).isNull());
    EXPECT_TRUE(c->construct(ObjectList{text("x")}).isNull());
}
