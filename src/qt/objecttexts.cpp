#include "qt/delegates_p.h"

#include "qt/geometry_p.h"
#include "qt/handles_p.h"
#include "qt/names_p.h"
#include "qt/propertytexts_p.h"

#include "objectmodel/class.h"
#include "objectmodel/delegates.h"
#include "objectmodel/inspector.h"
#include "objectmodel/object.h"

#include <QDataStream>

namespace Vantrel::QtWrapper {

namespace {

/** Longer labels, such as the text of a whole page, say no more in a message. */
constexpr int maximumLabel = 40;

QString quoted(const QString &text)
{
    const QString line = text.simplified();
    const QString start =
        line.size() > maximumLabel ? line.left(maximumLabel - 1) + QChar(0x2026) : line;
    return QLatin1Char('\'') + start + QLatin1Char('\'');
}

QString placeText(const Node &node)
{
    const QRect bounds = boundsOf(node);
    return bounds.isNull()
        ? QStringLiteral("nowhere")
        : QStringLiteral("%1x%2 at %3, %4")
              .arg(QString::number(bounds.width()), QString::number(bounds.height()),
                   QString::number(bounds.x()), QString::number(bounds.y()));
}

class Serialize : public SerializeDelegate
{
public:
    using SerializeDelegate::SerializeDelegate;

    // text realName; int number of properties; for each text name, text value,
    // in the order of the names. No object: an empty realName and 0.
    void streamObject(SharedPtr<Object> object, QDataStream &stream) const override
    {
        const Node node = nodeOf(object);
        const QString name = node ? nameOf(node) : QString();
        const PropertyTexts texts = propertyTexts(object);
        stream << (name.isNull() ? QStringLiteral("") : name) << qint32(texts.values.size());
        for (const auto &property : texts.values) {
            stream << property.first << property.second;
        }
    }

    /** What the record says was true when it was written, and is nothing to apply. */
    void objectFromStream(SharedPtr<Object> object, QDataStream &stream) const override
    {
        QString name;
        qint32 numProperties = 0;
        stream >> name >> numProperties;
        for (qint32 i = 0; i < numProperties && stream.status() == QDataStream::Ok; ++i) {
            QString value;
            stream >> name >> value;
        }
        if (numProperties < 0) {
            stream.setStatus(QDataStream::ReadCorruptData);
        }
        Inspector::self()->setError(
            QStringLiteral("Reading an object of type %1 from a stream does not change it: "
                           "it belongs to the application")
                .arg(object->className()));
    }

    QString toDebugString(SharedPtr<Object> object) const override
    {
        const Node node = nodeOf(object);
        if (!node) {
            return QStringLiteral("0 : ") + object->className();
        }
        return QStringLiteral("{ %1, %2, %3, %4 } : %5")
            .arg(summaryOf(node), placeText(node),
                 isShown(node) ? QStringLiteral("visible") : QStringLiteral("hidden"),
                 isEnabled(node) ? QStringLiteral("enabled") : QStringLiteral("disabled"),
                 object->className());
    }
};

class Conversion : public ConversionDelegate
{
public:
    using ConversionDelegate::ConversionDelegate;

    int capabilities() const override { return StringCapability; }

    QString toString(SharedPtr<Object> object) override
    {
        const Node node = nodeOf(object);
        return node ? summaryOf(node) : QStringLiteral("<null>");
    }
};

} // namespace

QString summaryOf(const Node &node)
{
    const QString label = labelOf(node);
    const QString name = label.isEmpty() ? objectNameOf(node) : label;
    return name.isEmpty() ? typeName(node) : typeName(node) + QLatin1Char(' ') + quoted(name);
}

QStringList wrappedClassNames()
{
    return {QStringLiteral("QObject"), QStringLiteral("QtItem")};
}

void registerObjectTexts()
{
    for (const QString &name : wrappedClassNames()) {
        new Serialize(name);
        new Conversion(name);
    }
}

} // namespace Vantrel::QtWrapper
