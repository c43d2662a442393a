#include "objectmodel/eventdata.h"

#include "objectmodel/stream_p.h"

#include <QDataStream>

namespace Vantrel {

namespace {

// A QDataStream goes on reading after a failure, so each of these looks at the status.

/** Stops at the end of the data, so that a large count costs nothing. */
template <class ReadItem>
void readArguments(QDataStream &stream, std::vector<EventDataArg> &arguments, ReadItem readItem)
{
    if (stream.status() != QDataStream::Ok) {
        return;
    }
    qint32 count = 0;
    stream >> count;
    if (count < 0) {
        stream.setStatus(QDataStream::ReadCorruptData);
    }
    for (qint32 i = 0; i < count && stream.status() == QDataStream::Ok; ++i) {
        EventDataArg argument;
        readItem(argument);
        if (stream.status() == QDataStream::Ok) {
            arguments.push_back(std::move(argument));
        }
    }
}

/** Reads one field after the other; false, without a look at the rest, when one is broken. */
template <class... Field>
bool readFields(QDataStream &stream, Field &...fields)
{
    const auto isOk = [&stream] { return stream.status() == QDataStream::Ok; };
    return ((isOk() && (stream >> fields, isOk())) && ...);
}

bool hasClassName(qint32 kind)
{
    return kind == EventData::ClassEvent || kind == EventData::TypeEvent;
}

} // namespace

EventDataArg::EventDataArg() = default;

EventDataArg::EventDataArg(const EventDataArg &other) = default;

EventDataArg::EventDataArg(EventDataArg &&other) noexcept = default;

EventDataArg &EventDataArg::operator=(const EventDataArg &other) = default;

EventDataArg &EventDataArg::operator=(EventDataArg &&other) noexcept = default;

EventDataArg::~EventDataArg() = default;

void EventDataArg::writeObject(QDataStream &stream) const
{
    write(stream, 0);
}

void EventDataArg::readObject(QDataStream &stream)
{
    *this = EventDataArg();
    read(stream, 0);
}

/*
 * QString name; qint32 attribute flags; qint32 kind; then by kind. Value:
 * QString value, qint32 class id. List: qint32 count, and each record.
 * ObjectReference: QString object name, QString class name, QStringList
 * alternative names. Any other: nothing.
 */
void EventDataArg::write(QDataStream &stream, int depth) const
{
    if (depth > maxDepth) {
        stream.setStatus(QDataStream::WriteFailed);
        return;
    }
    stream << name << attributeFlags << kind;
    switch (kind) {
    case Value:
        stream << value << classId;
        break;
    case List:
        stream << qint32(items.size());
        for (const EventDataArg &item : items) {
            item.write(stream, depth + 1);
        }
        break;
    case ObjectReference:
        stream << objectName << className << alternativeNames;
        break;
    default:
        break;
    }
}

void EventDataArg::read(QDataStream &stream, int depth)
{
    if (depth > maxDepth) {
        stream.setStatus(QDataStream::ReadCorruptData);
        return;
    }
    if (!readFields(stream, name, attributeFlags, kind)) {
        return;
    }
    switch (kind) {
    case Value:
        readFields(stream, value, classId);
        break;
    case List:
        readArguments(stream, items, [&](EventDataArg &item) { item.read(stream, depth + 1); });
        break;
    case ObjectReference:
        readFields(stream, objectName, className);
        alternativeNames = readStringList(stream);
        break;
    default:
        break;
    }
}

EventData::EventData() = default;

EventData::EventData(const EventData &other) = default;

EventData::EventData(EventData &&other) noexcept = default;

EventData &EventData::operator=(const EventData &other) = default;

EventData &EventData::operator=(EventData &&other) noexcept = default;

EventData::~EventData() = default;

/*
 * qint32 kind; QString object name (ObjectEvent) or class name (ClassEvent,
 * TypeEvent), nothing for other kinds; QString event name; QTime; QString
 * window name; QStringList alternative names; qint32 number of arguments, and
 * each argument; qint32 process id; QString application name.
 */
void EventData::writeObject(QDataStream &stream) const
{
    stream << kind;
    if (kind == ObjectEvent) {
        stream << objectName;
    } else if (hasClassName(kind)) {
        stream << className;
    }
    stream << eventName << time << windowName << alternativeNames << qint32(arguments.size());
    for (const EventDataArg &argument : arguments) {
        argument.writeObject(stream);
    }
    stream << processId << applicationName;
}

void EventData::readObject(QDataStream &stream)
{
    *this = EventData();
    if (!readFields(stream, kind)) {
        return;
    }
    if (kind == ObjectEvent) {
        readFields(stream, objectName);
    } else if (hasClassName(kind)) {
        readFields(stream, className);
    }
    readFields(stream, eventName, time, windowName);
    alternativeNames = readStringList(stream);
    readArguments(stream, arguments, [&](EventDataArg &item) { item.readObject(stream); });
    readFields(stream, processId, applicationName);
}

} // namespace Vantrel
