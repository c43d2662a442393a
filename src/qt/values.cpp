#include "qt/values_p.h"

#include "qt/handles_p.h"
#include "qt/metaclass_p.h"
#include "qt/structures_p.h"
#include "qt/types_p.h"

#include "objectmodel/class.h"
#include "objectmodel/containerclasses.h"
#include "objectmodel/containers.h"
#include "objectmodel/inspector.h"
#include "objectmodel/object.h"
#include "objectmodel/primitiveids.h"
#include "objectmodel/wrap.h"

#include <QKeySequence>
#include <QLocale>
#include <QObject>
#include <QSequentialIterable>
#include <QUrl>
#include <QWidget>

#include <limits>
#include <stdexcept>

namespace Vantrel::QtWrapper {

namespace {

/** Scripts can put an array into itself. */
constexpr int maximumDepth = 64;

using Array = std::vector<SharedPtr<Object>>;
using Map = std::map<QString, SharedPtr<Object>>;

QString typeName(int metaType)
{
    const char *name = QMetaType::typeName(metaType);
    return name ? QString::fromUtf8(name) : QStringLiteral("unknown");
}

SharedPtr<Object> failed(const QString &reason, QString *error)
{
    *error = reason;
    return {};
}

[[noreturn]] void refuse(const QString &reason)
{
    NativeTypes::refuse(QString(), reason);
}

qint64 integerOf(const QVariant &value)
{
    switch (value.userType()) {
    case QMetaType::SChar:
        return value.value<signed char>();
    case QMetaType::UChar:
        return value.value<uchar>();
    default:
        return value.toLongLong();
    }
}

SharedPtr<Object> integerObject(const QVariant &value, QString *error)
{
    switch (value.userType()) {
    case QMetaType::Short:
        return wrap(value.value<short>());
    case QMetaType::Int:
    case QMetaType::SChar:
    case QMetaType::UChar:
    case QMetaType::UShort:
        return Inspector::self()->createPrimitive(int(integerOf(value)));
    case QMetaType::ULong:
    case QMetaType::ULongLong:
        if (value.toULongLong() > quint64(std::numeric_limits<qint64>::max())) {
            return failed(QStringLiteral("The number %1 is greater than 64 bits with a sign can "
                                         "hold")
                              .arg(value.toULongLong()),
                          error);
        }
        break;
    default:
        break;
    }
    return Inspector::self()->createPrimitive(integerOf(value));
}

/** Enums can be smaller than an int. */
int enumNumber(const QVariant &value)
{
    switch (QMetaType::sizeOf(value.userType())) {
    case 1:
        return *static_cast<const qint8 *>(value.constData());
    case 2:
        return *static_cast<const qint16 *>(value.constData());
    default:
        return *static_cast<const qint32 *>(value.constData());
    }
}

QString plainText(const QVariant &value)
{
    switch (value.userType()) {
    case QMetaType::QByteArray:
        return QString::fromUtf8(value.toByteArray());
    case QMetaType::QChar:
        return QString(value.toChar());
    case QMetaType::QKeySequence:
        return value.value<QKeySequence>().toString(QKeySequence::PortableText);
    case QMetaType::QLocale:
        return value.toLocale().name();
    default:
        return value.toString();
    }
}

SharedPtr<Object> pointerObject(const QVariant &value, QString *error)
{
    auto *object = *static_cast<QObject *const *>(value.constData());
    if (!object) {
        const QMetaObject *declared = QMetaType::metaObjectForType(value.userType());
        return classOf(declared ? declared : &QObject::staticMetaObject)->createNull();
    }
    SharedPtr<Object> handle = handleOf(object);
    return handle ? handle : failed(Inspector::self()->lastError(), error);
}

/** What holds nothing is a null object within a list, so that the others keep their places. */
SharedPtr<Object> itemObject(const QVariant &value, const QString &place, QString *error)
{
    if (!value.isValid()) {
        return Object::zombie();
    }
    SharedPtr<Object> item = objectOf(value, error);
    return item ? item : failed(QStringLiteral("Item %1: %2").arg(place, *error), error);
}

SharedPtr<Object> listObject(const QVariant &value, QString *error)
{
    Array items;
    for (const QVariant &item : value.value<QSequentialIterable>()) {
        items.push_back(itemObject(item, QString::number(items.size()), error));
        if (!items.back()) {
            return {};
        }
    }
    return ArrayClass::wrapObject(items);
}

template <class Container>
SharedPtr<Object> mapObject(const Container &entries, QString *error)
{
    Map items;
    for (auto it = entries.begin(); it != entries.end(); ++it) {
        SharedPtr<Object> item = itemObject(it.value(), it.key(), error);
        if (!item) {
            return {};
        }
        items.emplace(it.key(), item);
    }
    return MapClass::wrapObject(items);
}

SharedPtr<Object> mapObject(const QVariant &value, QString *error)
{
    return value.userType() == QMetaType::QVariantHash ? mapObject(value.toHash(), error)
                                                       : mapObject(value.toMap(), error);
}

template <class T>
QVariant inRange(qint64 number)
{
    using Limits = std::numeric_limits<T>;
    const bool fits = (std::is_signed_v<T> || number >= 0)
        && (sizeof(T) == sizeof(qint64)
            || (number >= qint64(Limits::min()) && number <= qint64(Limits::max())));
    if (!fits) {
        refuse(QStringLiteral("the number %1 is out of range").arg(number));
    }
    return QVariant::fromValue(T(number));
}

QVariant integerVariant(const SharedPtr<Object> &object, int metaType)
{
    const auto number = NativeTypes::take<qint64>(object);
    switch (metaType) {
    case QMetaType::SChar:
        return inRange<signed char>(number);
    case QMetaType::UChar:
        return inRange<uchar>(number);
    case QMetaType::Short:
        return inRange<short>(number);
    case QMetaType::UShort:
        return inRange<ushort>(number);
    case QMetaType::Int:
        return inRange<int>(number);
    case QMetaType::UInt:
        return inRange<uint>(number);
    case QMetaType::Long:
        return inRange<long>(number);
    case QMetaType::ULong:
        return inRange<ulong>(number);
    case QMetaType::ULongLong:
        return inRange<qulonglong>(number);
    default:
        return number;
    }
}

QVariant textVariant(const SharedPtr<Object> &object, int metaType)
{
    const auto text = NativeTypes::take<QString>(object);
    switch (metaType) {
    case QMetaType::QByteArray:
        return text.toUtf8();
    case QMetaType::QChar:
        if (text.size() != 1) {
            refuse(QStringLiteral("'%1' is no single character").arg(text));
        }
        return text.at(0);
    case QMetaType::QKeySequence: {
        const auto keys = QKeySequence::fromString(text, QKeySequence::PortableText);
        if (keys.isEmpty() != text.isEmpty() || keys[0] == int(Qt::Key_unknown)) {
            refuse(QStringLiteral("'%1' is no key sequence").arg(text));
        }
        return keys;
    }
    case QMetaType::QUrl:
        return QUrl(text);
    case QMetaType::QLocale:
        return QLocale(text);
    default:
        return text;
    }
}

bool isTextList(const SharedPtr<Object> &object)
{
    const ObjectAttribute attribute = object->objectAttribute();
    return object->type()->id() == PrimitiveId::Char && attribute.isPointer()
        && attribute.isArray();
}

bool isText(const SharedPtr<Object> &object)
{
    return object->type()->id() == PrimitiveId::Char && !isTextList(object);
}

bool isArray(const SharedPtr<Object> &object)
{
    return object->isA(ArrayClass::registeredClass());
}

Array itemsOf(const SharedPtr<Object> &object)
{
    if (isTextList(object)) {
        Array items;
        for (const QString &text : NativeTypes::take<QStringList>(object)) {
            items.push_back(wrap(text));
        }
        return items;
    }
    if (!isArray(object)) {
        refuse(QStringLiteral("%1 given, an array was expected").arg(object->className()));
    }
    return ArrayClass::unwrapObject(object);
}

QVariant textsVariant(const SharedPtr<Object> &object)
{
    if (!isArray(object)) {
        return NativeTypes::take<QStringList>(object);
    }
    QStringList texts;
    for (const SharedPtr<Object> &item : ArrayClass::unwrapObject(object)) {
        if (item && isArray(item)) {
            refuse(QStringLiteral("item %1 is an array, a text was expected").arg(texts.size()));
        }
        texts << NativeTypes::take<QString>(item, QString::number(texts.size()));
    }
    return texts;
}

/** The number of an enum whose storage has the size of @p metaType. */
QVariant enumVariant(int number, int metaType)
{
    if (metaType == QMetaType::UnknownType || metaType == QMetaType::Int) {
        return number;
    }
    const qint64 storage = number;
    return QVariant(metaType, &storage);
}

QVariant enumVariant(const SharedPtr<Object> &object, int metaType, const QMetaEnum &enumerator)
{
    if (!isText(object) || object->isNull()) {
        return enumVariant(NativeTypes::take<int>(object), metaType);
    }
    const QString text = object->toString();
    bool ok = false;
    int number = enumerator.isFlag() ? enumerator.keysToValue(text.toUtf8().constData(), &ok)
                                     : enumerator.keyToValue(text.toUtf8().constData(), &ok);
    if (!ok) {
        number = text.toInt(&ok);
    }
    if (!ok) {
        refuse(
            QStringLiteral("'%1' is no key of %2").arg(text, QString::fromUtf8(enumerator.name())));
    }
    return enumVariant(number, metaType);
}

QVariant pointerVariant(const SharedPtr<Object> &object, int metaType)
{
    QObject *pointer = qobjectOf(object);
    if (!pointer && !object->isNull()) {
        refuse(QStringLiteral("%1 given, an object of %2 was expected")
                   .arg(object->className(), typeName(metaType)));
    }
    const QMetaObject *wanted = QMetaType::metaObjectForType(metaType);
    if (pointer && wanted && !pointer->metaObject()->inherits(wanted)) {
        refuse(QStringLiteral("%1 given, %2 expected")
                   .arg(QString::fromUtf8(pointer->metaObject()->className()),
                        QString::fromUtf8(wanted->className())));
    }
    return QVariant(metaType, &pointer);
}

QVariant naturalVariant(const SharedPtr<Object> &object, int depth);

QVariant naturalItem(const SharedPtr<Object> &item, int depth)
{
    return item ? naturalVariant(item, depth) : QVariant();
}

QVariantList naturalList(const SharedPtr<Object> &object, int depth)
{
    QVariantList list;
    for (const SharedPtr<Object> &item : itemsOf(object)) {
        list << naturalItem(item, depth);
    }
    return list;
}

QVariantMap naturalMap(const SharedPtr<Object> &object, int depth)
{
    if (!object->isA(MapClass::registeredClass())) {
        refuse(QStringLiteral("%1 given, a map was expected").arg(object->className()));
    }
    QVariantMap map;
    for (const auto &entry : MapClass::unwrapObject(object)) {
        map.insert(entry.first, naturalItem(entry.second, depth));
    }
    return map;
}

QVariant naturalPrimitive(const SharedPtr<Object> &object)
{
    switch (object->type()->id()) {
    case PrimitiveId::Short:
    case PrimitiveId::Int:
    case PrimitiveId::Long:
        return object->toInteger();
    case PrimitiveId::Bool:
        return object->toBoolean();
    case PrimitiveId::Double:
        return object->toDouble();
    case PrimitiveId::Int64:
        return object->toInt64();
    case PrimitiveId::Char:
        return isTextList(object) ? QVariant(NativeTypes::take<QStringList>(object))
                                  : QVariant(object->toString());
    default:
        refuse(
            QStringLiteral("an object of %1 cannot become a value of Qt").arg(object->className()));
    }
}

/** Where Qt takes whatever there is. */
QVariant naturalVariant(const SharedPtr<Object> &object, int depth)
{
    if (depth > maximumDepth) {
        refuse(QStringLiteral("the value is nested too deep"));
    }
    if (object->isNull()) {
        return QVariant();
    }
    if (QObject *pointer = qobjectOf(object)) {
        return QVariant::fromValue(pointer);
    }
    if (isArray(object)) {
        return naturalList(object, depth + 1);
    }
    if (object->isA(MapClass::registeredClass())) {
        return naturalMap(object, depth + 1);
    }
    if (object->isA(classOfStructure(QMetaType::QDateTime))) {
        return structureOf(object, QMetaType::QDateTime);
    }
    const int structure = structureType(object->type());
    return structure == QMetaType::UnknownType ? naturalPrimitive(object)
                                               : structureOf(object, structure);
}

template <class T>
QVariant listOf(const SharedPtr<Object> &object)
{
    QList<T> list;
    for (const SharedPtr<Object> &item : itemsOf(object)) {
        if constexpr (std::is_pointer_v<T>) {
            list << qobject_cast<T>(pointerVariant(item, qMetaTypeId<T>()).template value<T>());
        } else {
            list << NativeTypes::take<T>(item, QString::number(list.size()));
        }
    }
    return QVariant::fromValue(list);
}

QVariant listVariant(const SharedPtr<Object> &object, int metaType)
{
    if (metaType == QMetaType::QVariantList) {
        return naturalList(object, 0);
    }
    if (metaType == qMetaTypeId<QList<QObject *>>()) {
        return listOf<QObject *>(object);
    }
    if (metaType == qMetaTypeId<QList<QWidget *>>()) {
        return listOf<QWidget *>(object);
    }
    if (metaType == qMetaTypeId<QList<int>>()) {
        return listOf<int>(object);
    }
    if (metaType == qMetaTypeId<QList<double>>()) {
        return listOf<double>(object);
    }
    refuse(QStringLiteral("values of the type %1 can only be read").arg(typeName(metaType)));
}

QVariant mapVariant(const SharedPtr<Object> &object, int metaType)
{
    const QVariantMap map = naturalMap(object, 0);
    if (metaType == QMetaType::QVariantMap) {
        return map;
    }
    QVariantHash hash;
    for (auto it = map.begin(); it != map.end(); ++it) {
        hash.insert(it.key(), it.value());
    }
    return hash;
}

/** Throws std::invalid_argument when the object does not convert. */
QVariant converted(const SharedPtr<Object> &object, int metaType, const QMetaEnum &enumerator)
{
    if (enumerator.isValid()) {
        return enumVariant(object, metaType, enumerator);
    }
    switch (formOf(metaType)) {
    case Form::Any:
        return naturalVariant(object, 0);
    case Form::Bool:
        return NativeTypes::take<bool>(object);
    case Form::Character:
        return QVariant::fromValue(NativeTypes::take<char>(object));
    case Form::Integer:
        return integerVariant(object, metaType);
    case Form::Real:
        return metaType == QMetaType::Float
            ? QVariant::fromValue(float(NativeTypes::take<double>(object)))
            : QVariant(NativeTypes::take<double>(object));
    case Form::Text:
        return textVariant(object, metaType);
    case Form::Texts:
        return textsVariant(object);
    case Form::Date:
    case Form::Structure:
        return structureOf(object, metaType);
    case Form::Enumeration:
        return enumVariant(object, metaType, enumeratorOf(metaType));
    case Form::Object:
        return pointerVariant(object, metaType);
    case Form::List:
        return listVariant(object, metaType);
    case Form::Map:
        return mapVariant(object, metaType);
    case Form::None:
    case Form::Void:
        break;
    }
    refuse(
        QStringLiteral("values of the type %1 cannot cross from scripts").arg(typeName(metaType)));
}

QString enumText(int number, const QMetaEnum &enumerator)
{
    const QByteArray keys = enumerator.isFlag() ? enumerator.valueToKeys(number)
                                                : QByteArray(enumerator.valueToKey(number));
    return keys.isEmpty() ? QString::number(number) : QString::fromUtf8(keys);
}

QString listText(const QVariant &value)
{
    QStringList texts;
    for (const QVariant &item : value.value<QSequentialIterable>()) {
        texts << textOf(item);
    }
    return QLatin1String("[ ") + texts.join(QLatin1String(", ")) + QLatin1String(" ]");
}

QString mapText(const QVariant &value)
{
    // A hash has no order of its own.
    const QVariantMap map = value.userType() == QMetaType::QVariantHash
        ? [](const QVariantHash &hash) {
              QVariantMap sorted;
              for (auto it = hash.begin(); it != hash.end(); ++it) {
                  sorted.insert(it.key(), it.value());
              }
              return sorted;
          }(value.toHash())
        : value.toMap();
    QStringList texts;
    for (auto it = map.begin(); it != map.end(); ++it) {
        texts << it.key() + QLatin1String(": ") + textOf(it.value());
    }
    return QLatin1String("{ ") + texts.join(QLatin1String(", ")) + QLatin1String(" }");
}

} // namespace

void registerValueClasses()
{
    registerContainerClasses();
    registerStructures();
}

const Class *classOfMetaType(int metaType)
{
    const Type type(QMetaType::typeName(metaType), metaType, nullptr);
    return type.crosses() ? type.argument(QString()).type() : nullptr;
}

SharedPtr<Object> objectOf(const QVariant &value, QString *error)
{
    if (!value.isValid()) {
        return failed(QStringLiteral("There is no value (an invalid QVariant)"), error);
    }
    const int metaType = value.userType();
    switch (formOf(metaType)) {
    case Form::Bool:
        return Inspector::self()->createPrimitive(value.toBool());
    case Form::Character:
        return wrap(value.value<char>());
    case Form::Integer:
        return integerObject(value, error);
    case Form::Real:
        return Inspector::self()->createPrimitive(value.toDouble());
    case Form::Text:
        return Inspector::self()->createPrimitive(plainText(value));
    case Form::Texts:
        return Inspector::self()->createPrimitive(value.toStringList());
    case Form::Date:
    case Form::Structure:
        return structureObject(value);
    case Form::Enumeration:
        return Inspector::self()->createPrimitive(enumNumber(value));
    case Form::Object:
        return pointerObject(value, error);
    case Form::List:
        return listObject(value, error);
    case Form::Map:
        return mapObject(value, error);
    case Form::Any:
        return objectOf(*static_cast<const QVariant *>(value.constData()), error);
    case Form::None:
    case Form::Void:
        break;
    }
    return failed(
        QStringLiteral("A value of the type %1 cannot cross to scripts").arg(typeName(metaType)),
        error);
}

QVariant variantOf(const SharedPtr<Object> &object, int metaType, const QMetaEnum &enumerator,
                   QString *error)
{
    if (!object || !object->isValid()) {
        *error =
            object ? QStringLiteral("the object given is gone") : QStringLiteral("no object given");
        return QVariant();
    }
    try {
        return converted(object, metaType, enumerator);
    } catch (const std::exception &exception) {
        *error = QString::fromUtf8(exception.what());
    }
    return QVariant();
}

QString textOf(const QVariant &value, const QMetaEnum &enumerator)
{
    const int metaType = value.userType();
    if (enumerator.isValid() && value.isValid()) {
        return enumText(metaType == QMetaType::Int ? value.toInt() : enumNumber(value), enumerator);
    }
    switch (formOf(metaType)) {
    case Form::Bool:
        return value.toBool() ? QStringLiteral("true") : QStringLiteral("false");
    case Form::Character:
        return QString(QLatin1Char(value.value<char>()));
    case Form::Integer:
        return metaType == QMetaType::ULongLong || metaType == QMetaType::ULong
            ? QString::number(value.toULongLong())
            : QString::number(integerOf(value));
    case Form::Real:
        return QString::number(value.toDouble());
    case Form::Text:
        return plainText(value);
    case Form::Texts:
    case Form::List:
        return listText(value);
    case Form::Map:
        return mapText(value);
    case Form::Date:
    case Form::Structure:
        return structureText(value);
    case Form::Enumeration: {
        const QMetaEnum known = enumeratorOf(metaType);
        return known.isValid() ? enumText(enumNumber(value), known)
                               : QString::number(enumNumber(value));
    }
    case Form::Any:
    case Form::Object:
    case Form::None:
    case Form::Void:
        break;
    }
    return QString();
}

} // namespace Vantrel::QtWrapper
