#ifndef VANTREL_STREAM_P_H
#define VANTREL_STREAM_P_H

#include "objectmodel/members.h"

#include <QByteArray>
#include <QDataStream>
#include <QString>

#include <algorithm>
#include <array>
#include <cstddef>
#include <vector>

namespace Vantrel {

class Class;
class Namespace;

/** Nesting of property values in a payload, beyond which toString() stands for the value. */
constexpr int maxPayloadDepth = 64;
/** Nested values of one outermost payload, beyond which toString() stands for each. */
constexpr int maxPayloadValues = 65536;
/** Nesting of children in an object record; an object that lies deeper has none. */
constexpr int maxChildDepth = 256;
/** Records below one outermost object record, beyond which objects have no children. */
constexpr int maxChildRecords = 1048576;

/**
 * Composes fields in the encoding of a stream and hands them over in one piece,
 * which is what makes a description cheap: each single write would cost a call
 * of the device. The destructor writes what is left.
 */
class RecordWriter
{
public:
    explicit RecordWriter(QDataStream &stream);
    ~RecordWriter();

    void field(qint32 value);
    void field(const QString &text);
    template <class List>
    void items(const List &list, qint32)
    {
        for (const auto &item : list) {
            write(*this, item);
        }
    }
    /** A writer is only given what is in range. */
    void require(bool) {}

private:
    Q_DISABLE_COPY(RecordWriter)
    char *grow(int size);
    void flush();
    void foreignField(const QString &text);

    QDataStream &m_stream;
    QByteArray m_buffer;
    int m_used = 0;
    const bool m_bigEndian;
    /** Streams of the first versions encode text in another way. */
    const bool m_utf16;
};

/**
 * Reads fields of a stream. When the whole input is in memory, they are taken
 * from there, texts that come again share their data, and the destructor moves
 * the stream behind what was used. Everything after a failure reads as 0 or
 * empty, with the stream's status set.
 */
class RecordReader
{
public:
    explicit RecordReader(QDataStream &stream);
    ~RecordReader();

    void field(qint32 &value);
    void field(QString &text);
    /** Appends @p count records; one that the stream does not hold completely is left out. */
    template <class Record>
    void items(std::vector<Record> &records, qint32 count)
    {
        records.reserve(std::size_t(std::clamp(count, 0, maxReserved)));
        for (qint32 i = 0; i < count && m_ok; ++i) {
            Record record;
            Record::transfer(*this, record);
            if (m_ok) {
                records.push_back(std::move(record));
            }
        }
    }
    /** Gives up on corrupt data unless @p condition holds. */
    void require(bool condition);

private:
    /** Where in the input a text was, to compare with the next ones. */
    struct KnownText
    {
        const char *place = nullptr;
        QString text;
    };
    static constexpr quint32 numKnownTexts = 64;
    /** A count may promise more than there is, so memory for more comes with the records. */
    static constexpr int maxReserved = 256;

    Q_DISABLE_COPY(RecordReader)
    const char *take(quint32 size);
    void decode(const char *place, quint32 size, QString &text);
    KnownText &knownText(const char *place, quint32 size);
    void fail(QDataStream::Status status);

    QDataStream &m_stream;
    const char *m_begin = nullptr;
    const char *m_position = nullptr;
    const char *m_end = nullptr;
    const bool m_bigEndian;
    bool m_ok;
    std::array<KnownText, numKnownTexts> m_knownTexts;
};

template <class Record>
auto write(RecordWriter &writer, const Record &record) -> decltype(Record::transfer(writer, record))
{
    Record::transfer(writer, record);
}

// Descriptors are written as they are, because copying their texts into records
// takes longer than writing them.
void write(RecordWriter &writer, const Argument &argument);
void write(RecordWriter &writer, const Enum *enumerator);
void write(RecordWriter &writer, const Method *method);
void write(RecordWriter &writer, const Property *property);
void write(RecordWriter &writer, const Constructor *constructor);
void write(RecordWriter &writer, const Event *event);

// The records. Each lists its fields once, in the order of the stream, for
// writing and reading alike; a writer may also be given something else with
// fields of the same names. A qint32 is four bytes and a QString its length in
// bytes as a quint32 with the UTF-16 units behind, both in the byte order of
// the stream. The name of something that is missing is an empty text of length
// 0, not a null one.

/** qint32 flags (see ObjectAttribute::Flag), qint32 array length. */
struct AttributeRecord
{
    qint32 flags = 0;
    qint32 arrayLength = 0;

    ObjectAttribute attribute() const { return ObjectAttribute(flags, arrayLength); }

    template <class Archive, class Self>
    static void transfer(Archive &archive, Self &self)
    {
        archive.field(self.flags);
        archive.field(self.arrayLength);
    }
};

/**
 * QString name; QString class name or empty; qint32 id of the namespace of the
 * class, or 0; attribute; QString name of the class that owns the enum, or
 * empty; QString enum name, or empty.
 */
struct ArgumentRecord
{
    QString name;
    QString className;
    qint32 nameSpaceId = 0;
    AttributeRecord attribute;
    QString enumClassName;
    QString enumName;

    /**
     * Looks class and enum up. What is not known is null in the result.
     * @p context (may be null) is a class that knows itself by its name, even
     * when it is not registered.
     */
    Argument argument(const Class *context = nullptr) const;

    template <class Archive, class Self>
    static void transfer(Archive &archive, Self &self)
    {
        archive.field(self.name);
        archive.field(self.className);
        archive.field(self.nameSpaceId);
        AttributeRecord::transfer(archive, self.attribute);
        archive.field(self.enumClassName);
        archive.field(self.enumName);
    }
};

/** qint32 number of arguments, and each argument. The owner writes the name. */
struct SignatureRecord
{
    qint32 numArguments = 0;
    std::vector<ArgumentRecord> arguments;

    Signature signature(const QString &name, const Class *context = nullptr) const;

    template <class Archive, class Self>
    static void transfer(Archive &archive, Self &self)
    {
        archive.field(self.numArguments);
        archive.require(self.numArguments >= 0);
        archive.items(self.arguments, self.numArguments);
    }
};

/**
 * QString name; QString class name; signature; qint32 id; qint32 static (0 or
 * 1); argument of the return type; QString deprecation message.
 */
struct MethodRecord
{
    QString name;
    QString className;
    SignatureRecord signature;
    qint32 id = -1;
    qint32 isStatic = 0;
    ArgumentRecord returnType;
    QString deprecationMessage;

    template <class Archive, class Self>
    static void transfer(Archive &archive, Self &self)
    {
        archive.field(self.name);
        archive.field(self.className);
        SignatureRecord::transfer(archive, self.signature);
        archive.field(self.id);
        archive.field(self.isStatic);
        ArgumentRecord::transfer(archive, self.returnType);
        archive.field(self.deprecationMessage);
    }
};

/** QString class name; qint32 index within the class; signature. */
struct ConstructorRecord
{
    QString className;
    qint32 id = -1;
    SignatureRecord signature;

    template <class Archive, class Self>
    static void transfer(Archive &archive, Self &self)
    {
        archive.field(self.className);
        archive.field(self.id);
        SignatureRecord::transfer(archive, self.signature);
    }
};

/** QString name; QString class name; qint32 id; qint32 sendable (0 or 1); signature. */
struct EventRecord
{
    QString name;
    QString className;
    qint32 id = -1;
    qint32 isSendable = 0;
    SignatureRecord signature;

    template <class Archive, class Self>
    static void transfer(Archive &archive, Self &self)
    {
        archive.field(self.name);
        archive.field(self.className);
        archive.field(self.id);
        archive.field(self.isSendable);
        SignatureRecord::transfer(archive, self.signature);
    }
};

/**
 * QString name; argument of the type; QString class name; qint32 namespace id
 * of the class; qint32 id; qint32 flags: readable 1, writable 2, static 8.
 */
struct PropertyRecord
{
    QString name;
    ArgumentRecord type;
    QString className;
    qint32 nameSpaceId = 0;
    qint32 id = -1;
    qint32 flags = 0;

    template <class Archive, class Self>
    static void transfer(Archive &archive, Self &self)
    {
        archive.field(self.name);
        ArgumentRecord::transfer(archive, self.type);
        archive.field(self.className);
        archive.field(self.nameSpaceId);
        archive.field(self.id);
        archive.field(self.flags);
    }
};

/** QString key, qint32 value. */
struct EnumItemRecord
{
    QString key;
    qint32 value = 0;

    template <class Archive, class Self>
    static void transfer(Archive &archive, Self &self)
    {
        archive.field(self.key);
        archive.field(self.value);
    }
};

/**
 * QString name; qint32 id; QString class name; qint32 number of items; qint32
 * mask (0 or 1); each item.
 */
struct EnumRecord
{
    QString name;
    qint32 id = -1;
    QString className;
    qint32 numItems = 0;
    qint32 isMask = 0;
    std::vector<EnumItemRecord> items;

    template <class Archive, class Self>
    static void transfer(Archive &archive, Self &self)
    {
        archive.field(self.name);
        archive.field(self.id);
        archive.field(self.className);
        archive.field(self.numItems);
        archive.field(self.isMask);
        archive.require(self.numItems >= 0);
        archive.items(self.items, self.numItems);
    }
};

/** QString interface name, QString class name of the interface. */
struct InterfaceRecord
{
    QString name;
    QString className;

    template <class Archive, class Self>
    static void transfer(Archive &archive, Self &self)
    {
        archive.field(self.name);
        archive.field(self.className);
    }
};

/**
 * qint32 id; QString name; qint32 namespace id; qint32 natures; QString name of
 * the super class or empty; qint32 namespace id of the super class or 0; qint32
 * own constructors, methods, properties, events and enums; then the enums,
 * methods, properties, constructors and events, which is another order than
 * that of the counts; qint32 number of interfaces, and each interface in the
 * order of the names. Inherited members are not part of it. A count of -1 was
 * never declared and has no records; events that were not declared count 0.
 */
struct ClassRecord
{
    qint32 id = -1;
    QString name;
    qint32 nameSpaceId = -1;
    qint32 natures = 0;
    QString superName;
    qint32 superNameSpaceId = 0;
    qint32 numConstructors = -1;
    qint32 numMethods = -1;
    qint32 numProperties = -1;
    qint32 numEvents = 0;
    qint32 numEnums = -1;
    std::vector<EnumRecord> enums;
    std::vector<MethodRecord> methods;
    std::vector<PropertyRecord> properties;
    std::vector<ConstructorRecord> constructors;
    std::vector<EventRecord> events;
    qint32 numInterfaces = 0;
    std::vector<InterfaceRecord> interfaces;

    template <class Archive, class Self>
    static void transfer(Archive &archive, Self &self)
    {
        archive.field(self.id);
        archive.field(self.name);
        archive.field(self.nameSpaceId);
        archive.field(self.natures);
        archive.field(self.superName);
        archive.field(self.superNameSpaceId);
        archive.field(self.numConstructors);
        archive.field(self.numMethods);
        archive.field(self.numProperties);
        archive.field(self.numEvents);
        archive.field(self.numEnums);
        archive.require(self.numConstructors >= -1 && self.numMethods >= -1
                        && self.numProperties >= -1 && self.numEvents >= 0 && self.numEnums >= -1);
        archive.items(self.enums, self.numEnums);
        archive.items(self.methods, self.numMethods);
        archive.items(self.properties, self.numProperties);
        archive.items(self.constructors, self.numConstructors);
        archive.items(self.events, self.numEvents);
        archive.field(self.numInterfaces);
        archive.require(self.numInterfaces >= 0);
        archive.items(self.interfaces, self.numInterfaces);
    }
};

/** qint32 id; QString name; qint32 id of the enclosing namespace, or -1. */
struct NameSpaceRecord
{
    qint32 id = -1;
    QString name;
    qint32 enclosingId = -1;

    template <class Archive, class Self>
    static void transfer(Archive &archive, Self &self)
    {
        archive.field(self.id);
        archive.field(self.name);
        archive.field(self.enclosingId);
    }
};

template <class Item>
void writeRecord(QDataStream &stream, const Item &item)
{
    RecordWriter writer(stream);
    write(writer, item);
}

/** A record whose end is missing has the fields that were there, and 0 or empty after them. */
template <class Record>
Record readRecord(QDataStream &stream)
{
    Record record;
    RecordReader reader(stream);
    Record::transfer(reader, record);
    return record;
}

/** The namespace that the Inspector knows by that id, or null; any number will do. */
Namespace *nameSpaceById(qint32 id);

/** The class of that name in the namespace that the Inspector knows by that id, or null. */
const Class *classInNameSpace(const QString &name, qint32 nameSpaceId);

/**
 * Reads a list of texts one by one, so that a count larger than the stream does
 * not reserve memory.
 */
QStringList readStringList(QDataStream &stream);

} // namespace Vantrel

#endif // VANTREL_STREAM_P_H
