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

namespace Vantrel {

namespace {

/** The length that stands for a null text. */
constexpr quint32 nullLength = 0xFFFFFFFFu;

/** What a RecordWriter collects before it hands it over. */
constexpr int flushSize = 1 << 16;

/** The flags of a property that travel. */
constexpr int propertyFlags = Property::Readable | Property::Writable | Property::Static;

QString emptyText()
{
    return QLatin1String("");
}

QString nameOf(const Class *c)
{
    return c ? c->className() : emptyText();
}

/** -1 for a class that is in no namespace. */
qint32 nameSpaceIdOf(const Class *c)
{
    const Namespace *nameSpace = c->nameSpace();
    return nameSpace ? nameSpace->id() : -1;
}

Namespace *nameSpaceById(qint32 id)
{
    Inspector *inspector = Inspector::self();
    return id >= 0 && id < inspector->numNamespaces() ? inspector->nameSpace(id) : nullptr;
}

/** Counts one more level, or one more item, for as long as it lives. */
class Level
{
public:
    explicit Level(int &depth) : m_depth(depth) { ++m_depth; }
    ~Level() { --m_depth; }

private:
    Q_DISABLE_COPY(Level)
    int &m_depth;
};

/**
 * Where the streaming of objects stands in this thread. The operations that
 * recurse are virtual and have no room for it in their arguments.
 */
struct Progress
{
    int payloadDepth = 0;
    int payloadValues = 0;
    int childDepth = 0;
    int childRecords = 0;
};

Progress &progress()
{
    static thread_local Progress current;
    return current;
}

/**
 * Whether the value of a property goes by its own payload. Writer and reader
 * ask the same questions in the same order, and so come to the same answers.
 */
bool entersPayload(const Object *owner, const Object *value)
{
    Progress &p = progress();
    if (p.payloadDepth == 0) {
        p.payloadValues = 0;
    }
    return value->type() != owner->type() && p.payloadDepth < maxPayloadDepth
        && ++p.payloadValues <= maxPayloadValues;
}

/** Calls @p visit with the value of each property that is part of a payload; tells if there was
 * any. */
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
    Progress &p = progress();
    if (p.childDepth == 0) {
        p.childRecords = 0;
    }
    const bool exhausted = p.childDepth >= maxChildDepth || p.childRecords >= maxChildRecords;
    return exhausted ? 0 : object->numChildren();
}

/** A child that is gone by now still has its place in the stream. */
SharedPtr<Object> streamedChild(Object *object, int index)
{
    ++progress().childRecords;
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

template <class Record, class Member>
void appendRecords(std::vector<Record> &records, const QVector<const Member *> &members, int count,
                   const Member &missing)
{
    records.reserve(std::max(count, 0));
    for (int i = 0; i < count; ++i) {
        const Member *member = members.value(i);
        records.emplace_back(member ? *member : missing);
    }
}

} // namespace

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
    : m_stream(stream), m_bigEndian(stream.byteOrder() == QDataStream::BigEndian)
{
    const auto *buffer = qobject_cast<QBuffer *>(stream.device());
    if (buffer && buffer->isReadable() && stream.version() > QDataStream::Qt_2_1
        && buffer->pos() <= buffer->data().size()) {
        m_begin = buffer->data().constData();
        m_end = m_begin + buffer->data().size();
        m_begin += buffer->pos();
        m_position = m_begin;
    }
}

RecordReader::~RecordReader()
{
    if (m_position != m_begin) {
        m_stream.device()->seek(m_stream.device()->pos() + (m_position - m_begin));
    }
}

const char *RecordReader::take(quint32 size)
{
    if (!ok() || quint64(m_end - m_position) < size) {
        m_position = ok() ? m_end : m_position;
        m_stream.setStatus(QDataStream::ReadPastEnd);
        return nullptr;
    }
    const char *place = m_position;
    m_position += size;
    return place;
}

void RecordReader::field(qint32 &value)
{
    if (!m_begin) {
        m_stream >> value;
        return;
    }
    const char *place = take(sizeof value);
    if (!place) {
        value = 0;
    } else {
        value = m_bigEndian ? qFromBigEndian<qint32>(place) : qFromLittleEndian<qint32>(place);
    }
}

void RecordReader::field(QString &text)
{
    if (!m_begin) {
        m_stream >> text;
        return;
    }
    qint32 length = 0;
    field(length);
    if (!ok() || quint32(length) == nullLength) {
        text = QString();
        return;
    }
    require(!(length & 1));
    const char *place = take(quint32(length));
    if (!place) {
        text = QString();
        return;
    }
    const int size = int(quint32(length) / sizeof(QChar));
    text = size ? QString(size, Qt::Uninitialized) : emptyText();
    if (m_bigEndian) {
        qFromBigEndian<quint16>(place, size, text.data());
    } else {
        qFromLittleEndian<quint16>(place, size, text.data());
    }
}

void RecordReader::require(bool condition)
{
    if (!condition) {
        m_stream.setStatus(QDataStream::ReadCorruptData);
    }
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
    stream >> count;
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

AttributeRecord::AttributeRecord(const ObjectAttribute &attribute)
    : flags(attribute.getFlags()), arrayLength(attribute.arrayLength())
{}

ArgumentRecord::ArgumentRecord(const Argument &argument)
    : name(argument.name()), className(nameOf(argument.type())),
      nameSpaceId(argument.type() ? nameSpaceIdOf(argument.type()) : 0),
      attribute(argument.attribute()),
      enumClassName(argument.enumType() ? nameOf(argument.enumType()->enumClass()) : emptyText()),
      enumName(argument.enumType() ? argument.enumType()->name() : emptyText())
{}

Argument ArgumentRecord::argument(const Class *context) const
{
    Argument result;
    result.m_name = name;
    result.m_type = classInNameSpace(className, nameSpaceId);
    if (!result.m_type && context && context->className() == className) {
        result.m_type = context;
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

SignatureRecord::SignatureRecord(const Signature &signature)
    : numArguments(signature.numArguments())
{
    arguments.reserve(std::size_t(numArguments));
    for (const Argument &argument : signature.arguments()) {
        arguments.emplace_back(argument);
    }
}

Signature SignatureRecord::signature(const QString &name, const Class *context) const
{
    Signature result(name);
    for (const ArgumentRecord &argument : arguments) {
        result.addArgument(argument.argument(context));
    }
    return result;
}

MethodRecord::MethodRecord(const Method &method)
    : name(method.name()), className(nameOf(method.methodClass())), signature(method.signature()),
      id(method.id()), isStatic(method.isStatic()), returnType(method.returnType()),
      deprecationMessage(method.deprecationMessage())
{}

ConstructorRecord::ConstructorRecord(const Constructor &constructor)
    : className(nameOf(constructor.type())), id(constructor.id()),
      signature(constructor.signature())
{}

EventRecord::EventRecord(const Event &event)
    : name(event.name()), className(nameOf(event.eventClass())), id(event.id()),
      isSendable(event.isSendable()), signature(event.signature())
{}

PropertyRecord::PropertyRecord(const Property &property)
    : name(property.name()), type(property.argument()), id(property.id()),
      flags(property.flags() & propertyFlags)
{
    const PropertyDeclaration *declaration = property.propertyDeclaration();
    const Class *owner = declaration ? declaration->propertyClass() : property.propertyClass();
    className = nameOf(owner);
    nameSpaceId = owner ? nameSpaceIdOf(owner) : 0;
}

EnumRecord::EnumRecord(const Enum &e)
    : name(e.name()), id(e.id()), className(nameOf(e.enumClass())), numItems(e.count()),
      isMask(e.isMask()), items(std::size_t(e.count()))
{
    for (int i = 0; i < numItems; ++i) {
        items[std::size_t(i)].key = e.key(i);
        items[std::size_t(i)].value = e.value(i);
    }
}

const Enum::Item *EnumRecord::createItems() const
{
    auto *table = new Enum::Item[items.size() + 1];
    for (std::size_t i = 0; i < items.size(); ++i) {
        table[i] = {qstrdup(items[i].key.toUtf8().constData()), items[i].value};
    }
    table[items.size()] = {nullptr, 0};
    return table;
}

ClassRecord::ClassRecord(const Class *c)
    : id(c->id()), name(c->className()), nameSpaceId(nameSpaceIdOf(c)),
      natures(qint32(c->natures())), superName(nameOf(c->super())),
      superNameSpaceId(c->super() ? nameSpaceIdOf(c->super()) : 0)
{
    ClassPrivate *d = ClassPrivate::get(c);
    d->buildEnums(c);
    d->buildMethods(c);
    d->buildProperties(c);
    d->buildConstructors(c);
    d->buildEvents(c);
    d->countDelegateProperties();
    numConstructors = d->numOwnConstructors;
    numMethods = d->numOwnMethods;
    // A class that declared no properties does not list those of its delegate either.
    numProperties = d->numOwnProperties < 0 ? -1 : d->numOwnProperties + d->numDelegateProperties;
    numEvents = std::max(d->numOwnEvents, 0);
    numEnums = d->numOwnEnums;
    // A member that the factory did not make keeps its place, so that the counts hold.
    appendRecords(enums, d->enums, numEnums, Enum(c));
    appendRecords(methods, d->methods, numMethods, Method(c));
    appendRecords(properties, d->properties, numProperties, Property(c));
    appendRecords(constructors, d->constructors, numConstructors, Constructor(c));
    appendRecords(events, d->events, numEvents, Event(c));
    for (auto it = d->interfaces.cbegin(); it != d->interfaces.cend(); ++it) {
        interfaces.push_back({it.key(), nameOf(it.value())});
    }
    numInterfaces = qint32(interfaces.size());
}

void ObjectAttribute::writeObject(QDataStream &stream) const
{
    writeRecord(stream, AttributeRecord(*this));
}

void ObjectAttribute::readObject(QDataStream &stream)
{
    *this = readRecord<AttributeRecord>(stream).attribute();
}

void Argument::writeObject(QDataStream &stream) const
{
    writeRecord(stream, ArgumentRecord(*this));
}

void Argument::readObject(QDataStream &stream)
{
    *this = readRecord<ArgumentRecord>(stream).argument();
}

void Signature::writeObject(QDataStream &stream) const
{
    writeRecord(stream, SignatureRecord(*this));
}

void Signature::readObject(QDataStream &stream)
{
    const auto record = readRecord<SignatureRecord>(stream);
    if (int(record.arguments.size()) > std::numeric_limits<int>::max() - numArguments()) {
        stream.setStatus(QDataStream::ReadCorruptData);
        Inspector::self()->setError(QStringLiteral("list<T> too long"));
        return;
    }
    m_arguments.append(FList<Argument>(record.signature(m_name).m_arguments));
}

void Method::writeObject(QDataStream &stream) const
{
    writeRecord(stream, MethodRecord(*this));
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
    writeRecord(stream, ConstructorRecord(*this));
}

void Constructor::readObject(QDataStream &stream)
{
    const auto record = readRecord<ConstructorRecord>(stream);
    m_id = record.id;
    m_signature = record.signature.signature(m_signature.name());
}

void Event::writeObject(QDataStream &stream) const
{
    writeRecord(stream, EventRecord(*this));
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
    writeRecord(stream, PropertyRecord(*this));
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
    writeRecord(stream, EnumRecord(*this));
}

void Enum::readObject(QDataStream &stream)
{
    const auto record = readRecord<EnumRecord>(stream);
    freeItems();
    m_name = record.name;
    m_id = record.id;
    m_items = record.createItems();
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
    writeRecord(stream, ClassRecord(this));
}

void Class::readObject(QDataStream &) {}

/*
 * QString class name; qint32 number of children; the payload; then the record
 * of each child.
 */
void Object::writeObject(QDataStream &stream) const
{
    stream << className() << qint32(numStreamedChildren(this));
    streamObject(stream);
    Object *object = const_cast<Object *>(this);
    for (int i = 0; i < numStreamedChildren(this) && stream.status() == QDataStream::Ok; ++i) {
        const SharedPtr<Object> child = streamedChild(object, i);
        const Level level(progress().childDepth);
        child->writeObject(stream);
    }
}

void Object::readObject(QDataStream &stream)
{
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
    objectFromStream(stream);
    for (int i = 0; i < count && stream.status() == QDataStream::Ok; ++i) {
        const SharedPtr<Object> child = streamedChild(this, i);
        const Level level(progress().childDepth);
        child->readObject(stream);
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
    const SharedPtr<Object> object = self();
    if (const SerializeDelegate *delegate = setupSerializeDelegate()) {
        delegate->streamObject(object, stream);
        return;
    }
    const bool any = forEachStreamedValue(object, stream, [&](Object &value) {
        if (entersPayload(this, &value)) {
            const Level level(progress().payloadDepth);
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
    const SharedPtr<Object> object = self();
    if (const SerializeDelegate *delegate = setupSerializeDelegate()) {
        delegate->objectFromStream(object, stream);
        return;
    }
    const bool any = forEachStreamedValue(object, stream, [&](Object &value) {
        if (entersPayload(this, &value)) {
            const Level level(progress().payloadDepth);
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
