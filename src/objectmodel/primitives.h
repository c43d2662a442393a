#ifndef VANTREL_PRIMITIVES_H
#define VANTREL_PRIMITIVES_H

#include "objectmodel/class.h"
#include "objectmodel/object.h"

namespace Vantrel {

enum class PrimitiveKind;

class PrimitiveValue;

/**
 * What the classes of the values that every script language has are made of.
 * Each of them stands for one native type; how the value is stored follows from
 * the class and the ObjectAttribute of a handle:
 *
 * - short, int, long, bool, double, int64: a single value is one `new T` with T
 *   being qint16, qint32, qint32, bool, double and qint64. An array, which an
 *   attribute with the array flag or a length above 1 stands for, is one
 *   `new T[n]`, n being the length. Every other attribute, a pointer too, means
 *   a single value.
 * - char: without pointer and array flag a single character, `new char`; those
 *   made by the library have a second byte, so free them through the class. With
 *   both a list of texts, `new char *[n]` of texts; otherwise a text,
 *   `new char[]`. Texts are UTF-8, end in NUL, and may be null in a list.
 * - void and undefined: no storage.
 *
 * Data that a handle does not own can be anywhere, and is never freed. The
 * classes are made by the Inspector, first of all, and have the ids 0 to 8.
 * A class derived from one of them stores its values the same way.
 */
class VANTREL_EXPORT PrimitiveClass : public Class
{
public:
    ~PrimitiveClass() override;

    /** A handle of this type for @p data, which must be stored as described above; not owned. */
    SharedPtr<Object> wrap(void *data, const ObjectAttribute &attribute) override;
    /**
     * Constructor 0 makes zero, false or an empty text, constructor 1 copies
     * the native value that its argument points to; for char that is a text.
     * The result owns its data. Null when the argument is missing.
     */
    SharedPtr<Object> construct(int index, void **arguments) override;
    void deleteObjectData(void *data, const ObjectAttribute &attribute) const override;
    /**
     * Two objects of one class by value: arrays and lists element by element,
     * a character like the text of one letter; NaN equals nothing, null only
     * null. Objects of different classes are compared as by any other class.
     */
    bool compare(SharedPtr<Object> a, SharedPtr<Object> b) const override;

protected:
    /** Registers the class in the global namespace. */
    PrimitiveClass(const char *name, int numConstructors);

private:
    SharedPtr<Object> construct(int index, const ObjectList &arguments,
                                const Constructor *constructor) override;
    Constructor *createConstructor(int index) const override;
    /**
     * Each of the types short, int, long, bool, char, double and int64 converts
     * to each other, and char to char of the other pointer flag. Only the
     * primitive classes themselves are targets, not classes derived from them.
     */
    bool canConvertToInternal(const Class *target, bool sourceIsPointer,
                              bool targetIsPointer) const override;
    /**
     * A new object that owns its value. Integers keep their low bits, real
     * numbers lose their fraction and stay within the range of the target (NaN
     * becomes 0), texts are read like fromString() does. Of an array the first
     * element counts, zero if it is empty; the number of a list of texts is its
     * length, as toInteger() says. A char wanted as a pointer is the text of
     * the value; wanted by value it is one byte: of a number the low 8 bits, of
     * a text its first byte, so that "x" arrives as 'x' where a character is
     * expected. Null when @p object is null or has no data.
     */
    SharedPtr<Object> convertToInternal(SharedPtr<Object> object, const Class *target,
                                        bool targetIsPointer) override;

    /** That of the nearest primitive class, found on first use. */
    PrimitiveKind kind() const;

    mutable signed char m_kind = -1;
    mutable bool m_isKindKnown = false;
};

/**
 * Handle of a primitive value. It always acts by its present class and
 * attribute, because castTo() can turn it from one primitive type into another.
 *
 * The from… operations and objectFromStream() replace the value. A number, or
 * the first element of an array, is written where it is, be it owned or not;
 * texts are replaced by new ones, which the handle owns from then on, and a
 * list of texts becomes a single text. Null data is allocated and owned.
 */
class VANTREL_EXPORT PrimitiveObject : public Object
{
public:
    PrimitiveObject(void *data, const Class *c, const ObjectAttribute &attribute);
    ~PrimitiveObject() override;

    /** 0: a value has no children. */
    int numChildren() const override;

    /**
     * The value, of an array of numbers the first: bool and a single
     * character qint8; short, int and long qint32; int64 qint64; double double;
     * a text an 8-bit C string, which is a quint32 length that counts the
     * closing NUL, then the bytes with the NUL, and for a null text just the
     * length 0. A list is its texts without a count. Null data is written as
     * zero, or null texts.
     */
    void streamObject(QDataStream &stream) const override;
    /**
     * Reads what streamObject() wrote from a handle of the same class and
     * attribute. When the stream ends early the value stays as it was, and the
     * status of the stream tells.
     */
    void objectFromStream(QDataStream &stream) override;

    /**
     * toString() and the class, for example "7 : int"; "char[]" is a text and
     * "char*[]" a list. Null data reads "0 : int".
     */
    QString toDebugString() override;
    /** Several elements read "[ 1, 2 ]", null data "<null>". A byte above 127 is taken as Latin-1.
     */
    QString toString() override;
    int toInteger() const override;
    qint64 toInt64() const override;
    double toDouble() const override;
    bool toBoolean() const override;
    void fromString(const QString &value) override;
    void fromInteger(int value) override;
    void fromInt64(qint64 value) override;
    void fromDouble(double value) override;
    void fromBoolean(bool value) override;

    /**
     * Between primitive types the bytes of the value are taken as they are, as
     * many as both types have; the rest is zero. A text gives its bytes without
     * the NUL, the texts of a list give none, and a bool is made 0 or 1. When
     * the storage of the types differs, the handle gets and owns a copy, and
     * data it does not own is left alone.
     */
    SharedPtr<Object> castTo(const Class *target) override;
    /** Of a single character whose end as a text is not known, a text of its own. */
    SharedPtr<Object> reference() override;
    /**
     * Of a list of texts a single character of its own, the first of its first
     * text; and a value of its own where there is no known room for one.
     */
    SharedPtr<Object> dereference() override;

private:
    void replaceData(void *data, const Class *former);
    void ensureData(PrimitiveValue *value);
    void setText(char *text);
    template <class T>
    void setValue(const T &value);
    template <class T>
    void readNumber(QDataStream &stream);
    void streamTexts(QDataStream &stream);
};

class VANTREL_EXPORT VantrelClass_short : public PrimitiveClass
{
public:
    VantrelClass_short();
    ~VantrelClass_short() override;
};

class VANTREL_EXPORT VantrelClass_int : public PrimitiveClass
{
public:
    VantrelClass_int();
    ~VantrelClass_int() override;
};

/** 32 bits wide on every platform, whatever the native type of that name is. */
class VANTREL_EXPORT VantrelClass_long : public PrimitiveClass
{
public:
    VantrelClass_long();
    ~VantrelClass_long() override;
};

class VANTREL_EXPORT VantrelClass_bool : public PrimitiveClass
{
public:
    VantrelClass_bool();
    ~VantrelClass_bool() override;
};

/** Characters, texts and lists of texts. */
class VANTREL_EXPORT VantrelClass_char : public PrimitiveClass
{
public:
    VantrelClass_char();
    ~VantrelClass_char() override;
};

class VANTREL_EXPORT VantrelClass_double : public PrimitiveClass
{
public:
    VantrelClass_double();
    ~VantrelClass_double() override;
};

class VANTREL_EXPORT VantrelClass_int64 : public PrimitiveClass
{
public:
    VantrelClass_int64();
    ~VantrelClass_int64() override;
};

/** The result of what has no result. */
class VANTREL_EXPORT VantrelClass_void : public PrimitiveClass
{
public:
    VantrelClass_void();
    ~VantrelClass_void() override;
};

/** Stands where a type is not known. It has no objects except null. */
class VANTREL_EXPORT VantrelClass_undefined : public PrimitiveClass
{
public:
    VantrelClass_undefined();
    ~VantrelClass_undefined() override;

    /** Fatal. */
    SharedPtr<Object> wrap(void *data, const ObjectAttribute &attribute) override;
};

class VANTREL_EXPORT VantrelObject_short : public PrimitiveObject
{
public:
    using PrimitiveObject::PrimitiveObject;
    ~VantrelObject_short() override;
};

class VANTREL_EXPORT VantrelObject_int : public PrimitiveObject
{
public:
    using PrimitiveObject::PrimitiveObject;
    ~VantrelObject_int() override;
};

class VANTREL_EXPORT VantrelObject_long : public PrimitiveObject
{
public:
    using PrimitiveObject::PrimitiveObject;
    ~VantrelObject_long() override;
};

class VANTREL_EXPORT VantrelObject_bool : public PrimitiveObject
{
public:
    using PrimitiveObject::PrimitiveObject;
    ~VantrelObject_bool() override;
};

class VANTREL_EXPORT VantrelObject_char : public PrimitiveObject
{
public:
    using PrimitiveObject::PrimitiveObject;
    ~VantrelObject_char() override;
};

class VANTREL_EXPORT VantrelObject_double : public PrimitiveObject
{
public:
    using PrimitiveObject::PrimitiveObject;
    ~VantrelObject_double() override;
};

class VANTREL_EXPORT VantrelObject_int64 : public PrimitiveObject
{
public:
    using PrimitiveObject::PrimitiveObject;
    ~VantrelObject_int64() override;
};

class VANTREL_EXPORT VantrelObject_void : public PrimitiveObject
{
public:
    using PrimitiveObject::PrimitiveObject;
    ~VantrelObject_void() override;
};

} // namespace Vantrel

#endif // VANTREL_PRIMITIVES_H
