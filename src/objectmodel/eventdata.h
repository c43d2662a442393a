#ifndef VANTREL_EVENTDATA_H
#define VANTREL_EVENTDATA_H

#include "objectmodel/export.h"
#include "objectmodel/serializable.h"

#include <QString>
#include <QStringList>
#include <QTime>

#include <vector>

namespace Vantrel {

/**
 * One argument of a recorded event: a value in text form, a list of arguments,
 * or the names of an object. Only the fields of the kind travel.
 */
class VANTREL_EXPORT EventDataArg : public Serializable
{
public:
    enum Kind { Value = 0, List = 1, ObjectReference = 2 };

    /** Lists in lists; a record that goes deeper is neither written nor read. */
    static constexpr int maxDepth = 256;

    /** As the event declares it; may be empty. */
    QString name;
    /** How it is passed, see ObjectAttribute::Flag. */
    qint32 attributeFlags = 0;
    /** A Kind; other numbers are kept and have no content. */
    qint32 kind = Value;

    /** Of a Value: its text form. */
    QString value;
    /** Of a Value: the id of its class, as in PrimitiveId for the primitive ones. */
    qint32 classId = -1;

    /** Of a List. */
    std::vector<EventDataArg> items;

    /** Of an ObjectReference: the name by which scripts find the object. */
    QString objectName;
    /** Of an ObjectReference. */
    QString className;
    /** Of an ObjectReference: other names that find it too, best ones first. */
    QStringList alternativeNames;

    EventDataArg();
    EventDataArg(const EventDataArg &other);
    EventDataArg(EventDataArg &&other) noexcept;
    EventDataArg &operator=(const EventDataArg &other);
    EventDataArg &operator=(EventDataArg &&other) noexcept;
    ~EventDataArg() override;

    /** The status of the stream is WriteFailed when lists are nested too deep. */
    void writeObject(QDataStream &stream) const override;
    /** The status of the stream is ReadCorruptData when lists are nested too deep. */
    void readObject(QDataStream &stream) override;

private:
    void write(QDataStream &stream, int depth) const;
    void read(QDataStream &stream, int depth);
};

/** Something that happened in the application while it was recorded. */
class VANTREL_EXPORT EventData : public Serializable
{
public:
    /** Whose event it is: of one object, of any object of a class, of none, of a type itself. */
    enum Kind { ObjectEvent = 0, ClassEvent = 1, GlobalEvent = 2, TypeEvent = 3 };

    /** A Kind; other numbers are kept and have no source. */
    qint32 kind = ObjectEvent;
    /** Of an ObjectEvent: the name by which scripts find the object. */
    QString objectName;
    /** Of a ClassEvent or TypeEvent. */
    QString className;
    QString eventName;
    /** Local time of the application. */
    QTime time;
    /** The name of the top-level object around the source. */
    QString windowName;
    /** Other names that find the source too, best ones first. */
    QStringList alternativeNames;
    std::vector<EventDataArg> arguments;
    /** Of the application. */
    qint32 processId = 0;
    QString applicationName;

    EventData();
    EventData(const EventData &other);
    EventData(EventData &&other) noexcept;
    EventData &operator=(const EventData &other);
    EventData &operator=(EventData &&other) noexcept;
    ~EventData() override;

    void writeObject(QDataStream &stream) const override;
    /** Fields that a truncated stream does not have are empty or 0. */
    void readObject(QDataStream &stream) override;
};

} // namespace Vantrel

#endif // VANTREL_EVENTDATA_H
