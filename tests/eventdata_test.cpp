#include "streambytes.h"

#include "objectmodel/eventdata.h"

#include <gtest/gtest.h>

#include <limits>
#include <tuple>

using namespace Vantrel;
using namespace VantrelTest;

namespace {

EventDataArg valueArg(const char *name)
{
    EventDataArg argument;
    argument.name = name;
    argument.value = "5";
    argument.classId = 1;
    return argument;
}

EventDataArg referenceArg()
{
    EventDataArg argument;
    argument.name = "target";
    argument.attributeFlags = 2;
    argument.kind = EventDataArg::ObjectReference;
    argument.objectName = "{x}";
    argument.className = "QButton";
    argument.alternativeNames = QStringList{"a", "b"};
    return argument;
}

EventDataArg listArg()
{
    EventDataArg argument;
    argument.name = "items";
    argument.attributeFlags = 16;
    argument.kind = EventDataArg::List;
    argument.items = {valueArg(""), referenceArg()};
    return argument;
}

EventData click(int kind)
{
    EventData event;
    event.kind = kind;
    event.objectName = "{button}";
    event.className = "Button";
    event.eventName = "clicked";
    event.time = QTime(12, 34, 56, 789);
    event.windowName = "{window}";
    event.alternativeNames = QStringList{"other"};
    event.arguments = {valueArg(""), listArg()};
    event.processId = 1234;
    event.applicationName = "shop";
    return event;
}

const QByteArray fiveBytes = text("5") + number(1);
const QByteArray referenceBytes = text("target") + number(2) + number(2) + text("{x}")
    + text("QButton") + number(2) + text("a") + text("b");
const QByteArray listBytes = text("items") + number(16) + number(1) + number(2) + text("")
    + number(0) + number(0) + fiveBytes + referenceBytes;
const QByteArray afterSource = text("clicked") + number(((12 * 60 + 34) * 60 + 56) * 1000 + 789)
    + text("{window}") + number(1) + text("other") + number(2) + text("") + number(0) + number(0)
    + fiveBytes + listBytes + number(1234) + text("shop");

/** A list in a list in a list, the innermost empty. */
QByteArray nestedLists(int depth)
{
    const QByteArray level = nullText() + number(0) + number(1);
    return (level + number(1)).repeated(depth) + level + number(0);
}

} // namespace

TEST(EventDataArg, WritesOnlyTheFieldsOfItsKind)
{
    EventDataArg other = referenceArg();
    other.kind = 9;
    const std::tuple<const char *, EventDataArg, QByteArray, const char *> rows[] = {
        {"a value", valueArg("count"), text("count") + number(0) + number(0) + fiveBytes,
         "eventarg_value.bin"},
        {"a list", listArg(), listBytes, "eventarg_list.bin"},
        {"an object", referenceArg(), referenceBytes, "eventarg_reference.bin"},
        {"an unknown kind", other, text("target") + number(2) + number(9), nullptr},
    };
    for (const auto &[what, argument, bytes, file] : rows) {
        SCOPED_TRACE(what);
        EXPECT_EQ(bytes.toHex(), written(argument).toHex());
        EventDataArg copy = valueArg("left over");
        int unread = 0;
        EXPECT_EQ(QDataStream::Ok, readFrom(bytes + number(1), copy, &unread));
        EXPECT_EQ(4, unread);
        EXPECT_EQ(bytes.toHex(), written(copy).toHex());
        if (file) {
            EXPECT_EQ(bytes.toHex(), keptRecord(file).toHex());
        }
    }
}

TEST(EventData, WritesTheSourceThatItsKindHas)
{
    const std::pair<int, QByteArray> rows[] = {{EventData::ObjectEvent, text("{button}")},
                                               {EventData::ClassEvent, text("Button")},
                                               {EventData::GlobalEvent, QByteArray()},
                                               {EventData::TypeEvent, text("Button")},
                                               {17, QByteArray()}};
    for (const auto &[kind, source] : rows) {
        SCOPED_TRACE(kind);
        const QByteArray bytes = number(kind) + source + afterSource;
        EXPECT_EQ(bytes.toHex(), written(click(kind)).toHex());
        EventData copy;
        EXPECT_EQ(QDataStream::Ok, readFrom(bytes, copy));
        EXPECT_EQ(bytes.toHex(), written(copy).toHex());
        for (int size = 0; size < bytes.size(); ++size) {
            EXPECT_EQ(QDataStream::ReadPastEnd, readFrom(bytes.left(size), copy)) << size;
            EXPECT_TRUE(copy.applicationName.isEmpty());
        }
    }
    EXPECT_EQ(written(click(0)).toHex(), keptRecord("event_data.bin").toHex());
}

TEST(EventData, GivesUpOnCountsThatCannotBe)
{
    const qint32 most = std::numeric_limits<qint32>::max();
    const QByteArray reference = text("t") + number(0) + number(2) + text("") + text("");
    const QByteArray list = text("t") + number(0) + number(1);
    const std::tuple<const char *, QByteArray, QDataStream::Status> rows[] = {
        {"two thousand million names", reference + number(most) + text("a"),
         QDataStream::ReadPastEnd},
        {"a negative number of names", reference + number(-1) + text("a"),
         QDataStream::ReadPastEnd},
        {"two thousand million items", list + number(most) + referenceBytes,
         QDataStream::ReadPastEnd},
        {"a negative number of items", list + number(-1) + referenceBytes,
         QDataStream::ReadCorruptData},
        {"lists in a million lists", nestedLists(1000000), QDataStream::ReadCorruptData},
        {"one list too deep", nestedLists(EventDataArg::maxDepth + 1),
         QDataStream::ReadCorruptData},
        {"lists just deep enough", nestedLists(EventDataArg::maxDepth), QDataStream::Ok},
    };
    for (const auto &[what, bytes, status] : rows) {
        EventDataArg argument;
        EXPECT_EQ(status, readFrom(bytes, argument)) << what;
    }
    EventData event;
    int unread = 0;
    const QByteArray all = number(EventData::ObjectEvent) + text("{button}") + afterSource;
    for (const char *what : {"{button}", "clicked", "{window}", "other", "5", "items", "target", "shop"}) {
        QByteArray bytes = all;
        const int place = bytes.indexOf(text(what));
        bytes.replace(place, 4, number(5));
        EXPECT_EQ(QDataStream::ReadCorruptData, readFrom(bytes, event, &unread)) << what;
        EXPECT_EQ(bytes.size() - place - 4, unread) << what << ": reading stops at half a character";
    }
    EXPECT_EQ(QDataStream::ReadCorruptData,
              readFrom(number(2) + text("e") + number(0) + text("w") + number(0) + number(-1)
                           + number(9) + text("not read"),
                       event, &unread));
    EXPECT_EQ(24, unread) << "reading stops at the count";
    EXPECT_EQ(0, event.processId);
}

TEST(EventDataArg, RefusesToWriteListsThatNobodyReads)
{
    EventDataArg argument = listArg();
    for (int i = 0; i < EventDataArg::maxDepth; ++i) {
        argument.items = {EventDataArg(argument)};
    }
    QByteArray bytes;
    QDataStream stream(&bytes, QIODevice::WriteOnly);
    argument.writeObject(stream);
    EXPECT_EQ(QDataStream::WriteFailed, stream.status());
}
