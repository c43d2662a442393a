#include "objectmodel/stream_p.h"

#include "objectmodel/class.h"
#include "objectmodel/class_p.h"
#include "objectmodel/delegates.h"
#include "objectmodel/diagnostics_p.h"
#include "objectmodel/inspector.h"
#include "objectmodel/namespace.h"
#include "objectmodel/object.h"

#include <QBuffer>
#include <QStringList>
#include <QtEndian>

#include <algorithm>
#include <cstring>
#include <limits>
#include <memory>
#include <typeinfo>

namespace Vantrel {

namespace {

/** The length that stands for a null text. */
constexpr quint32 nullLength = 0xFFFFFFFFu;

/** What a RecordWriter collects before it hands it over. */
constexpr int flushSize = 1 << 16;

/** The flags of a property that travel. */
constexpr int propertyFlags = Property::Readable | Property::Writable | Property::Static;

/** What stands for the name of something that is missing; not null. */
const QString emptyText = QLatin1String("");

const QString &nameOf(const Class *c)
{
    return c ? ClassPrivate::get(c)->nameText : emptyText;
}

/** -1 for a class that is in no namespace. */
qint32 nameSpaceIdOf(const Class *c)
{
    const Namespace *nameSpace = c->nameSpace();
    return nameSpace ? nameSpace->id() : -1;
}

/** How deep a recursion is, and how many steps it has made since it was entered. */
struct Recursion
{
    int depth = 0;
    int steps = 0;
};

/** The streaming of objects that this thread is busy with. */
struct Progress
{
    const QDataStream *stream = nullptr;
    Recursion payload;
    Recursion children;
};

thread_local Progress progress;

/**
 * One level of a recursion through virtual operations, which have no room for
 * it in their arguments. Another stream, used by some getter on the way, has
 * counts of its own.
 */
class Level
{
public:
    Level(const QDataStream &stream, Recursion Progress::*recursion)
        : m_outer(progress), m_recursion(recursion)
    {
        if (progress.stream != &stream) {
            progress = Progress();
            progress.stream = &stream;
        }
        ++(progress.*m_recursion).depth;
    }

    ~Level()
    {
        if (--(progress.*m_recursion).depth == 0) {
            (progress.*m_recursion).steps = 0;
        }
        if (m_outer.stream != progress.stream) {
            progress = m_outer;
        }
    }

private:
    Q_DISABLE_COPY(Level)
    const Progress m_outer;
    Recursion Progress::*const m_recursion;
};

/**
 * Whether the value of a property goes by its own payload. Writer and reader
 * ask the same questions in the same order, and so come to the same answers.
 */
bool entersPayload(const Object *owner, const Object *value)
{
    Recursion &payload = progress.payload;
    return value->type() != owner->type() && payload.depth <= maxPayloadDepth
        && ++payload.steps <= maxPayloadValues;
}

bool entersChildren()
{
    const Recursion &children = progress.children;
    return children.depth <= maxChildDepth && children.steps < maxChildRecords;
}

/** Calls @p visit with the value of each property in a payload; tells whether there was one. */
template <class Visit>
bool forEachStreamedValue(const SharedPtr<Object> &object, QDataStream &stream, Visit visit)
{
    bool any = false;
    const Class *c = object->type();
    for (int i = 0; i < c->numProperties() && stream.status() == QDataStream::Ok; ++i) {
        const Property *property = c->property(i);
        if (!property || !property->isReadable() || property->isStatic()) {
            continue;
        }
        if (SharedPtr<Object> value = property->get(object)) {
            any = true;
            visit(*value);
        }
    }
    return any;
}

int numStreamedChildren(const Object *object)
{
    return entersChildren() ? object->numChildren() : 0;
}

/** A child that is gone by now still has its place in the stream. */
SharedPtr<Object> streamedChild(Object *object, int index)
{
    ++progress.children.steps;
    SharedPtr<Object> child = object->child(index);
    return child ? child : Object::zombie();
}

void readText(QDataStream &stream, Object *object)
{
    QString text;
    stream >> text;
    if (stream.status() == QDataStream::Ok) {
        object->fromString(text);
    }
}

// What descriptors hold, under the names of the fields of their records.

struct AttributeView
{
    const qint32 flags;
    const qint32 arrayLength;

    explicit AttributeView(const ObjectAttribute &a)
        : flags(a.getFlags()), arrayLength(a.arrayLength())
    {}
};

struct ArgumentView
{
    const QString &name;
    const QString &className;
    const qint32 nameSpaceId;
    const AttributeView attribute;
    const QString &enumClassName;
    const QString &enumName;

    explicit ArgumentView(const Argument &a)
        : name(a.name()), className(nameOf(a.type())),
          nameSpaceId(a.type() ? nameSpaceIdOf(a.type()) : 0), attribute(a.attribute()),
          enumClassName(a.enumType() ? nameOf(a.enumType()->enumClass()) : emptyText),
          enumName(a.enumType() ? a.enumType()->name() : emptyText)
    {}
};

struct SignatureView
{
    const qint32 numArguments;
    const FList<Argument> &arguments;

    explicit SignatureView(const Signature &s)
        : numArguments(s.numArguments()), arguments(s.arguments())
    {}
};

struct MethodView
{
    const QString &name;
    const QString &className;
    const SignatureView signature;
    const qint32 id;
    const qint32 isStatic;
    const ArgumentView returnType;
    const QString &deprecationMessage;

    explicit MethodView(const Method &m)
        : name(m.name()), className(nameOf(m.methodClass())), signature(m.signature()), id(m.id()),
          isStatic(m.isStatic()), returnType(m.returnType()),
          deprecationMessage(m.deprecationMessage())
    {}
};

struct ConstructorView
{
    const QString &className;
    const qint32 id;
    const SignatureView signature;

    explicit ConstructorView(const Constructor &c)
        : className(nameOf(c.type())), id(c.id()), signature(c.signature())
    {}
};

struct EventView
{
    const QString &name;
    const QString &className;
    const qint32 id;
    const qint32 isSendable;
    const SignatureView signature;

    explicit EventView(const Event &e)
        : name(e.name()), className(nameOf(e.eventClass())), id(e.id()), isSendable(e.isSendable()),
          signature(e.signature())
    {}
};

const Class *declaringClass(const Property &property)
{
    const PropertyDeclaration *declaration = property.propertyDeclaration();
    return declaration ? declaration->propertyClass() : property.propertyClass();
}

struct PropertyView
{
    const QString &name;
    const ArgumentView type;
    const QString &className;
    const qint32 nameSpaceId;
    const qint32 id;
    const qint32 flags;

    explicit PropertyView(const Property &p, const Class *owner)
        : name(p.name()), type(p.argument()), className(nameOf(owner)),
          nameSpaceId(owner ? nameSpaceIdOf(owner) : 0), id(p.id()),
          flags(p.flags() & propertyFlags)
    {}
};

/** @p view has fields with the names of those of @p Record. */
template <class Record, class View>
void writeAs(RecordWriter &writer, const View &view)
{
    Record::transfer(writer, view);
}

/** Exactly @p count members; one that the factory did not make keeps its place as @p missing. */
template <class Member>
QVector<const Member *> members(const QVector<const Member *> &table, int count,
                                const Member *missing)
{
    QVector<const Member *> result(std::max(count, 0), missing);
    for (int i = 0; i < std::min(result.size(), table.size()); ++i) {
        result[i] = table[i] ? table[i] : missing;
    }
    return result;
}

/** Properties that a delegate gives to a class that declared none, and so has no table of them. */
std::vector<std::unique_ptr<Property>> undeclaredProperties(const Class *c, const ClassPrivate &d)
{
    std::vector<std::unique_ptr<Property>> result;
    const int offset = c->superClassOffset(Class::PropertyOffset);
    for (int i = 0; d.numOwnProperties < 0 && i < d.numDelegateProperties; ++i) {
        const PropertyDeclaration *declaration = d.propertyDelegate->propertyDeclaration(i);
        result.push_back(declaration ? std::make_unique<Property>(offset + i, c, declaration)
                                     : std::make_unique<Property>(c));
    }
    return result;
}

QVector<const Property *> tableOf(const std::vector<std::unique_ptr<Property>> &properties)
{
    QVector<const Property *> table;
    for (const auto &property : properties) {
        table << property.get();
    }
    return table;
}

int numDescribedProperties(const ClassPrivate &d)
{
    return d.numDelegateProperties > 0 ? std::max(d.numOwnProperties, 0) + d.numDelegateProperties
                                       : d.numOwnProperties;
}

struct ClassView
{
    const Method missingMethod;
    const Constructor missingConstructor;
    const Property missingProperty;
    const Event missingEvent;
    const Enum missingEnum;
    const std::vector<std::unique_ptr<Property>> undeclared;

    const qint32 id;
    const QString &name;
    const qint32 nameSpaceId;
    const qint32 natures;
    const QString &superName;
    const qint32 superNameSpaceId;
    const qint32 numConstructors;
    const qint32 numMethods;
    const qint32 numProperties;
    const qint32 numEvents;
    const qint32 numEnums;
    const QVector<const Enum *> enums;
    const QVector<const Method *> methods;
    const QVector<const Property *> properties;
    const QVector<const Constructor *> constructors;
    const QVector<const Event *> events;
    const qint32 numInterfaces;
    std::vector<InterfaceRecord> interfaces;

    /** The tables of @p c must be there. */
    ClassView(const Class *c, const ClassPrivate &d)
        : missingMethod(c), missingConstructor(c), missingProperty(c), missingEvent(c),
          missingEnum(c), undeclared(undeclaredProperties(c, d)), id(d.id), name(d.nameText),
          nameSpaceId(nameSpaceIdOf(c)), natures(qint32(d.natures)), superName(nameOf(c->super())),
          superNameSpaceId(c->super() ? nameSpaceIdOf(c->super()) : 0),
          numConstructors(d.numOwnConstructors), numMethods(d.numOwnMethods),
          numProperties(numDescribedProperties(d)), numEvents(std::max(d.numOwnEvents, 0)),
          numEnums(d.numOwnEnums), enums(members(d.enums, numEnums, &missingEnum)),
          methods(members(d.methods, numMethods, &missingMethod)),
          properties(members(undeclared.empty() ? d.properties : tableOf(undeclared), numProperties,
                             &missingProperty)),
          constructors(members(d.constructors, numConstructors, &missingConstructor)),
          events(members(d.events, numEvents, &missingEvent)), numInterfaces(d.interfaces.size())
    {
        for (auto it = d.interfaces.cbegin(); it != d.interfaces.cend(); ++it) {
            interfaces.push_back({it.key(), nameOf(it.value())});
        }
    }
};

/** A table as an enum owns it. */
const Enum::Item *newItems(const std::vector<EnumItemRecord> &records)
{
    auto *items = new Enum::Item[records.size() + 1];
    Enum::Item *next = items;
    for (const EnumItemRecord &record : records) {
        *next++ = {qstrdup(record.key.toUtf8().constData()), record.value};
    }
    *next = {nullptr, 0};
    return items;
}

EnumRecord recordOf(const Enum &e)
{
    EnumRecord record;
    record.name = e.name();
    record.id = e.id();
    record.className = nameOf(e.enumClass());
    record.numItems = e.count();
    record.isMask = e.isMask();
    for (int i = 0; i < e.count(); ++i) {
        record.items.push_back({e.key(i), e.value(i)});
    }
    return record;
}

} // namespace

void write(RecordWriter &writer, const Argument &argument)
{
    writeAs<ArgumentRecord>(writer, ArgumentView(argument));
}

void write(RecordWriter &writer, const Enum *enumerator)
{
    writeAs<EnumRecord>(writer, recordOf(*enumerator));
}

void write(RecordWriter &writer, const Method *method)
{
    writeAs<MethodRecord>(writer, MethodView(*method));
}

void write(RecordWriter &writer, const Property *property)
{
    writeAs<PropertyRecord>(writer, PropertyView(*property, declaringClass(*property)));
}

void write(RecordWriter &writer, const Constructor *constructor)
{
    writeAs<ConstructorRecord>(writer, ConstructorView(*constructor));
}

void write(RecordWriter &writer, const Event *event)
{
    writeAs<EventRecord>(writer, EventView(*event));
}

RecordWriter::RecordWriter(QDataStream &stream)
    : m_stream(stream), m_bigEndian(stream.byteOrder() == QDataStream::BigEndian),
      m_utf16(stream.version() > QDataStream::Qt_2_1)
{}

RecordWriter::~RecordWriter()
{
    flush();
}

void RecordWriter::flush()
{
    if (m_used > 0) {
        m_stream.writeRawData(m_buffer.constData(), m_used);
        m_used = 0;
    }
}

char *RecordWriter::grow(int size)
{
    if (m_used > 0 && m_used > flushSize - size) {
        flush();
    }
    if (m_buffer.size() - m_used < size) {
        m_buffer.resize(std::max({256, m_used + size, 2 * m_buffer.size()}));
    }
    char *place = m_buffer.data() + m_used;
    m_used += size;
    return place;
}

void RecordWriter::field(qint32 value)
{
    char *place = grow(int(sizeof value));
    if (m_bigEndian) {
        qToBigEndian(value, place);
    } else {
        qToLittleEndian(value, place);
    }
}

void RecordWriter::field(const QString &text)
{
    if (!m_utf16) {
        foreignField(text);
        return;
    }
    if (text.isNull()) {
        field(qint32(nullLength));
        return;
    }
    field(text.size() * int(sizeof(QChar)));
    char *place = grow(text.size() * int(sizeof(QChar)));
    if (m_bigEndian) {
        qToBigEndian<quint16>(text.utf16(), text.size(), place);
    } else {
        qToLittleEndian<quint16>(text.utf16(), text.size(), place);
    }
}

void RecordWriter::foreignField(const QString &text)
{
    flush();
    m_stream << text;
}

RecordReader::RecordReader(QDataStream &stream)
    : m_stream(stream), m_bigEndian(stream.byteOrder() == QDataStream::BigEndian),
      m_ok(stream.status() == QDataStream::Ok)
{
    // A derived class may give other bytes than it holds.
    const QIODevice *device = stream.device();
    const auto *buffer = device && typeid(*device) == typeid(QBuffer)
        ? static_cast<const QBuffer *>(device)
        : nullptr;
    if (buffer && buffer->isReadable() && stream.version() > QDataStream::Qt_2_1
        && buffer->pos() <= buffer->data().size()) {
        m_begin = buffer->data().constData() + buffer->pos();
        m_end = buffer->data().constData() + buffer->data().size();
        m_position = m_begin;
    }
}

RecordReader::~RecordReader()
{
    if (m_position != m_begin) {
        m_stream.device()->seek(m_stream.device()->pos() + (m_position - m_begin));
    }
}

void RecordReader::fail(QDataStream::Status status)
{
    m_stream.setStatus(status);
    m_ok = false;
}

void RecordReader::require(bool condition)
{
    if (!condition) {
        fail(QDataStream::ReadCorruptData);
    }
}

/** The next bytes of the input in memory, or null when they are not there. */
const char *RecordReader::take(quint32 size)
{
    if (!m_ok) {
        return nullptr;
    }
    if (quint64(m_end - m_position) < size) {
        m_position = m_end;
        fail(QDataStream::ReadPastEnd);
        return nullptr;
    }
    const char *place = m_position;
    m_position += size;
    return place;
}

void RecordReader::field(qint32 &value)
{
    value = 0;
    if (!m_begin) {
        if (m_ok) {
            m_stream >> value;
            m_ok = m_stream.status() == QDataStream::Ok;
        }
    } else if (const char *place = take(sizeof value)) {
        value = m_bigEndian ? qFromBigEndian<qint32>(place) : qFromLittleEndian<qint32>(place);
    }
}

void RecordReader::field(QString &text)
{
    text = QString();
    if (!m_begin) {
        if (m_ok) {
            m_stream >> text;
            m_ok = m_stream.status() == QDataStream::Ok;
        }
        return;
    }
    qint32 length = 0;
    field(length);
    if (!m_ok || quint32(length) == nullLength) {
        return;
    }
    require(!(length & 1));
    if (const char *place = take(quint32(length))) {
        decode(place, quint32(length), text);
    }
}

/** The names of classes come again and again, so it pays to look before making a new text. */
void RecordReader::decode(const char *place, quint32 size, QString &text)
{
    KnownText &known = knownText(place, size);
    if (known.place && quint32(known.text.size()) * sizeof(QChar) == size
        && std::memcmp(known.place, place, size) == 0) {
        text = known.text;
        return;
    }
    const auto length = int(size / sizeof(QChar));
    if (length == 0) {
        text = emptyText;
    } else if (m_bigEndian) {
        text = QString(length, Qt::Uninitialized);
        qFromBigEndian<quint16>(place, length, text.data());
    } else {
        text = QString(length, Qt::Uninitialized);
        qFromLittleEndian<quint16>(place, length, text.data());
    }
    known = {place, text};
}

/** One place for each length and last character. */
RecordReader::KnownText &RecordReader::knownText(const char *place, quint32 size)
{
    const quint32 last = size > 0 ? quint8(place[size - 1]) ^ quint8(place[size - 2]) : 0;
    return m_knownTexts[(size * 5 + last) % numKnownTexts];
}

Namespace *nameSpaceById(qint32 id)
{
    return id >= 0 ? Inspector::self()->nameSpace(id) : nullptr;
}

const Class *classInNameSpace(const QString &name, qint32 nameSpaceId)
{
    const Namespace *nameSpace = name.isEmpty() ? nullptr : nameSpaceById(nameSpaceId);
    return nameSpace ? nameSpace->getClass(name) : nullptr;
}

QStringList readStringList(QDataStream &stream)
{
    QStringList list;
    quint32 count = 0;
    if (stream.status() == QDataStream::Ok) {
        stream >> count;
    }
    for (quint32 i = 0; i < count; ++i) {
        QString text;
        stream >> text;
        if (stream.status() != QDataStream::Ok) {
            break;
        }
        list.append(text);
    }
    return list;
}

Argument ArgumentRecord::argument(const Class *context) const
{
    Argument result;
    result.m_name = name;
    result.m_type = classInNameSpace(className, nameSpaceId);
    // One of the same name in another namespace is another class.
    const Namespace *place = context ? context->nameSpace() : nullptr;
    if (!result.m_type && context && context->className() == className
        && (!place || place == nameSpaceById(nameSpaceId))) {
        result.m_type = context;
    }
    // It is in no namespace, so no look-up finds it; a description needs it for its members.
    const Argument any = Argument::AnyObject();
    if (!result.m_type && context && nameSpaceId == -1 && className == any.type()->className()) {
        result.m_type = any.type();
    }
    result.m_attribute = attribute.attribute();
    if (!enumName.isEmpty()) {
        const Class *owner = context && context->className() == enumClassName
            ? context
            : Inspector::self()->type(enumClassName);
        result.m_enumType = owner ? owner->enumerator(enumName) : nullptr;
    }
    return result;
}

Signature SignatureRecord::signature(const QString &name, const Class *context) const
{
    Signature result(name);
    for (const ArgumentRecord &argument : arguments) {
        result.addArgument(argument.argument(context));
    }
    return result;
}

void ObjectAttribute::writeObject(QDataStream &stream) const
{
    RecordWriter writer(stream);
    writeAs<AttributeRecord>(writer, AttributeView(*this));
}

void ObjectAttribute::readObject(QDataStream &stream)
{
    *this = readRecord<AttributeRecord>(stream).attribute();
}

void Argument::writeObject(QDataStream &stream) const
{
    writeRecord(stream, *this);
}

void Argument::readObject(QDataStream &stream)
{
    *this = readRecord<ArgumentRecord>(stream).argument();
}

void Signature::writeObject(QDataStream &stream) const
{
    RecordWriter writer(stream);
    writeAs<SignatureRecord>(writer, SignatureView(*this));
}

void Signature::readObject(QDataStream &stream)
{
    const auto record = readRecord<SignatureRecord>(stream);
    if (record.numArguments > std::numeric_limits<int>::max() - numArguments()) {
        stream.setStatus(QDataStream::ReadCorruptData);
        Inspector::self()->setError(QStringLiteral("list<T> too long"));
        return;
    }
    m_arguments.append(FList<Argument>(record.signature(m_name).m_arguments));
}

void Method::writeObject(QDataStream &stream) const
{
    writeRecord(stream, this);
}

void Method::readObject(QDataStream &stream)
{
    const auto record = readRecord<MethodRecord>(stream);
    m_signature = record.signature.signature(record.name);
    m_id = record.id;
    m_flags = record.isStatic ? Static : NoFlags;
    m_returnType = record.returnType.argument();
    m_deprecationMessage = record.deprecationMessage;
}

void Constructor::writeObject(QDataStream &stream) const
{
    writeRecord(stream, this);
}

void Constructor::readObject(QDataStream &stream)
{
    const auto record = readRecord<ConstructorRecord>(stream);
    m_id = record.id;
    m_signature = record.signature.signature(m_signature.name());
}

void Event::writeObject(QDataStream &stream) const
{
    writeRecord(stream, this);
}

void Event::readObject(QDataStream &stream)
{
    const auto record = readRecord<EventRecord>(stream);
    m_id = record.id;
    m_flags = record.isSendable ? Sendable : NoFlags;
    m_signature = record.signature.signature(record.name);
}

void Property::writeObject(QDataStream &stream) const
{
    writeRecord(stream, this);
}

void Property::readObject(QDataStream &stream)
{
    const auto record = readRecord<PropertyRecord>(stream);
    m_declaration = nullptr;
    m_name = record.name;
    m_type = record.type.argument();
    m_owner = classInNameSpace(record.className, record.nameSpaceId);
    m_id = record.id;
    m_flags = record.flags;
}

void Enum::writeObject(QDataStream &stream) const
{
    writeRecord(stream, this);
}

void Enum::readObject(QDataStream &stream)
{
    const auto record = readRecord<EnumRecord>(stream);
    freeItems();
    m_name = record.name;
    m_id = record.id;
    m_items = newItems(record.items);
    m_count = int(record.items.size());
    m_ownsItems = true;
    m_isMask = record.isMask != 0;
}

void Namespace::writeObject(QDataStream &stream) const
{
    NameSpaceRecord record;
    record.id = m_id;
    record.name = m_name;
    record.enclosingId = m_enclosing ? m_enclosing->id() : -1;
    writeRecord(stream, record);
}

void Namespace::readObject(QDataStream &stream)
{
    const auto record = readRecord<NameSpaceRecord>(stream);
    if (stream.status() != QDataStream::Ok) {
        return;
    }
    // Left where it was as well, it could come to contain what contains it.
    if (m_enclosing) {
        m_enclosing->m_children.removeAll(this);
        if (m_enclosing->getNamespace(m_name) == this) {
            m_enclosing->m_namespaces.remove(m_name);
        }
    }
    m_id = record.id;
    m_name = record.name;
    m_enclosing = nullptr;
    Namespace *enclosing = nameSpaceById(record.enclosingId);
    if (enclosing && !enclosing->isInside(this)) {
        m_enclosing = enclosing;
        enclosing->registerNamespace(this);
    }
    // The Inspector's own number for it is not kept: records refer to the one that was sent.
    Inspector::self()->registerNamespace(this);
}

void Class::writeObject(QDataStream &stream) const
{
    ClassPrivate *c = ClassPrivate::get(this);
    c->buildEnums(this);
    c->buildMethods(this);
    c->buildProperties(this);
    c->buildConstructors(this);
    c->buildEvents(this);
    c->countDelegateProperties();
    RecordWriter writer(stream);
    writeAs<ClassRecord>(writer, ClassView(this, *c));
}

void Class::readObject(QDataStream &) {}

/*
 * QString class name; qint32 number of children; the payload; then the record
 * of each child.
 */
void Object::writeObject(QDataStream &stream) const
{
    const Level level(stream, &Progress::children);
    stream << className() << qint32(numStreamedChildren(this));
    streamObject(stream);
    Object *object = const_cast<Object *>(this);
    // Streaming may run code of the application, so there may be fewer children after each.
    for (int i = 0; i < numStreamedChildren(this) && stream.status() == QDataStream::Ok; ++i) {
        streamedChild(object, i)->writeObject(stream);
    }
}

void Object::readObject(QDataStream &stream)
{
    const Level level(stream, &Progress::children);
    QString name;
    stream >> name;
    if (name != className()) {
        printDiagnostic("Object::readObject: trying to read an object of type %s, but object is of "
                        "type %s\n",
                        qUtf8Printable(name), qUtf8Printable(className()));
        return;
    }
    qint32 count = 0;
    stream >> count;
    const int expected = numStreamedChildren(this);
    if (count != expected) {
        printDiagnostic("Object::readObject: number of children mismatches: have %d, read %d\n",
                        expected, count);
        return;
    }
    if (stream.status() == QDataStream::Ok) {
        objectFromStream(stream);
    }
    for (int i = 0; i < count && entersChildren() && stream.status() == QDataStream::Ok; ++i) {
        streamedChild(this, i)->readObject(stream);
    }
}

/*
 * Whatever the serialize delegate of the class writes; without one, for each
 * value of a readable property that is not static, in the order of the ids: the
 * value's own payload, or its text as a QString when it has the class of this
 * object. The text of this object as a QString when there is no such value.
 */
void Object::streamObject(QDataStream &stream) const
{
    const Level level(stream, &Progress::payload);
    const SharedPtr<Object> object = self();
    if (const SerializeDelegate *delegate = setupSerializeDelegate()) {
        delegate->streamObject(object, stream);
        return;
    }
    const bool any = forEachStreamedValue(object, stream, [&](Object &value) {
        if (entersPayload(this, &value)) {
            value.streamObject(stream);
        } else {
            stream << value.toString();
        }
    });
    if (!any) {
        stream << object->toString();
    }
}

void Object::objectFromStream(QDataStream &stream)
{
    const Level level(stream, &Progress::payload);
    const SharedPtr<Object> object = self();
    if (const SerializeDelegate *delegate = setupSerializeDelegate()) {
        delegate->objectFromStream(object, stream);
        return;
    }
    const bool any = forEachStreamedValue(object, stream, [&](Object &value) {
        if (entersPayload(this, &value)) {
            value.objectFromStream(stream);
        } else {
            readText(stream, &value);
        }
    });
    if (!any) {
        readText(stream, this);
    }
}

} // namespace Vantrel
